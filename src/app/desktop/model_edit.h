#pragma once

#include <functional>

#include <QString>
#include <QStringList>
#include <QUndoCommand>

#include "model/model_fwd.h"

namespace desktop {

// The model's item lists at one moment. Items in a state are never changed in place: an edit
// clones the items it touches, so two states share every item the edit left alone and an undo
// only puts the older items back (model_change).
struct model_state
{
   model::list_of_entity entities;
   model::list_of_enumeration enumerations;
};

// What an edit changed in the item lists: each run of items it replaced, with the items before
// and after. An undo step keeps this, not the whole lists of a large model.
struct model_change
{
   template <typename T> struct piece
   {
      qsizetype at = 0;
      QList<T> before;
      QList<T> after;
   };
   QList<piece<model::entity_ptr> > entities;
   QList<piece<model::enumeration_ptr> > enumerations;

   static model_change between(const model_state & before, const model_state & after);
   // Turns a state like "before" into one like "after" (forward), or back.
   void apply(model_state & s, bool bForward) const;
   // The entities and enumerations the change put in when applied that way.
   QList<const void *> itemsPut(bool bForward) const;
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
// What import-db kept of the tables (indexes and foreign keys in meta data) follows a column
// renamed in entity iEntity, which the edit already replaced by its copy: its own indexes and
// keys, and the keys of any entity that point at that column.
void renameColumnReferences(model_state & s, qsizetype iEntity, const QString & sOld, const QString & sNew);
// The kept foreign keys (meta data) that point at a renamed table follow it.
void renameTableReferences(model_state & s, const QString & sOld, const QString & sNew);
// Properties naming the old key follow an enumeration's new key.
void renameEnumerationReferences(model_state & s, const QString & sOld, const QString & sNew);

// What names an entity other than itself: relation properties aiming at it and entities derived
// from it, one line each ("shop::Order::customer (relation)").
QStringList entityReferences(const model_state & s, const QString & sKey);
// Takes those references out: the relation properties go, derived entities lose their parent.
void dropEntityReferences(model_state & s, const QString & sKey);
// The properties typed by an enumeration, one line each; dropping them deletes the properties.
QStringList enumerationReferences(const model_state & s, const QString & sKey);
void dropEnumerationReferences(model_state & s, const QString & sKey);

// sBase followed by the first number that makes it a name not in lstTaken.
QString freeName(const QStringList & lstTaken, const QString & sBase);

qsizetype indexOfEntity(const model_state & s, const QString & sKey);
qsizetype indexOfEnumeration(const model_state & s, const QString & sKey);

} // namespace model_edit

// One edit of the model for the undo stack: what it changed, and the place each side shows.
// The window applies the change (forward for redo) through the given function.
class model_command : public QUndoCommand
{
public:
   typedef std::function<void(const model_change &, bool, const model_place &)> applier;

private:
   model_change m_change;
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
