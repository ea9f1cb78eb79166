#pragma once

#include <QStringList>

#include "desktop/item_dialog.h"
#include "desktop/model_edit.h"

class QGroupBox;

namespace desktop {

// The editor of every field of a property: name, type (common C++ types or free text),
// decoration and collection, enumeration, default, key and column flags, accessibility,
// accessors, limits, SQL overrides, the relation (kind, target, foreign key, owner, extra
// table) and the meta data.
class property_dialog : public item_dialog
{
   Q_OBJECT

   QLineEdit * m_txtName = nullptr;
   QComboBox * m_cboType = nullptr;
   QComboBox * m_cboDecoration = nullptr;
   QComboBox * m_cboCollection = nullptr;
   QComboBox * m_cboEnumeration = nullptr;
   QLineEdit * m_txtDefault = nullptr;
   QLineEdit * m_txtColumn = nullptr;
   QLineEdit * m_txtDescription = nullptr;
   QComboBox * m_cboAccess = nullptr;
   QMap<QString, QCheckBox *> m_mapFlags;
   QMap<QString, QLineEdit *> m_mapTexts;
   QGroupBox * m_grpRelation = nullptr;
   QComboBox * m_cboKind = nullptr;
   QComboBox * m_cboTarget = nullptr;
   QLineEdit * m_txtForeignKey = nullptr;
   QLineEdit * m_txtOwner = nullptr;
   QLineEdit * m_txtExtraTable = nullptr;
   QStringList m_lstTakenNames;

public:
   // lstTaken: names of the entity's other properties.
   property_dialog(const model::property & p, const model_state & state, const QStringList & lstTaken, QWidget * parent);
   void applyTo(model::property & p) const;
   // The C++ types offered in the type list.
   static QStringList commonTypes();

private:
   QWidget * createGeneralPage(const model::property & p, const model_state & state);
   QWidget * createRelationPage(const model::property & p, const model_state & state);
   QWidget * createMorePage(const model::property & p);
   QString defaultProblem(const QString & s) const;
   QString crossFieldProblem() const;
   void doRelationToggled(bool bOn);
};

} // namespace desktop
