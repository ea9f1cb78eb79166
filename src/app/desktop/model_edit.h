#pragma once

#include <functional>

#include <QString>
#include <QStringList>
#include <QUndoCommand>

#include "model/model_fwd.h"

namespace desktop {

// The model's item lists at one moment. Items in a state are never changed in place: an edit
// clones the items it touches, so two states share every item the edit left alone and an undo
// only puts the older lists back.
struct model_state
{
   model::list_of_entity entities;
   model::list_of_enumeration enumerations;
};

// Where the window shows an edit: the key of the entity or enumeration, and a property name.
struct model_place
{
   QString key;
   QString property;
};

namespace model_edit {

model_state stateOf(const model::project & p);
// Puts the lists of a state into the project and links parents, targets and types again.
void restore(model::project & p, const model_state & s);

model::property_ptr cloneProperty(const model::property & p);
model::entity_ptr cloneEntity(const model::entity & e);
model::enumeration_ptr cloneEnumeration(const model::enumeration & e);

// Ids for new items: one above the highest in use (property ids are unique in the project).
long nextEntityId(const model_state & s);
long nextEnumerationId(const model_state & s);
long nextPropertyId(const model_state & s);

// Parents and relation targets naming the old key follow an entity's new key.
void renameEntityReferences(model_state & s, const QString & sOld, const QString & sNew);
// Properties naming the old key follow an enumeration's new key.
void renameEnumerationReferences(model_state & s, const QString & sOld, const QString & sNew);

// sBase followed by the first number that makes it a name not in lstTaken.
QString freeName(const QStringList & lstTaken, const QString & sBase);

qsizetype indexOfEntity(const model_state & s, const QString & sKey);
qsizetype indexOfEnumeration(const model_state & s, const QString & sKey);

} // namespace model_edit

// One edit of the model for the undo stack: the states before and after, and the place each
// shows. The window applies a state through the given function.
class model_command : public QUndoCommand
{
public:
   typedef std::function<void(const model_state &, const model_place &)> applier;

private:
   model_state m_before;
   model_state m_after;
   model_place m_placeBefore;
   model_place m_placeAfter;
   applier m_fnApply;

public:
   model_command(const QString & sText, const model_state & before, const model_state & after,
                 const model_place & placeBefore, const model_place & placeAfter, const applier & fnApply);
   void undo() override;
   void redo() override;
};

} // namespace desktop
