#pragma once

#include <QStringList>

#include "desktop/item_dialog.h"
#include "desktop/model_edit.h"

namespace desktop {

// The editor of every field of an entity: name and namespace (rename and move), parent,
// table, description, flags, the eight triggers and the meta data.
class entity_dialog : public item_dialog
{
   Q_OBJECT

   QLineEdit * m_txtName = nullptr;
   QLineEdit * m_txtNamespace = nullptr;
   QComboBox * m_cboParent = nullptr;
   QLineEdit * m_txtTable = nullptr;
   QLineEdit * m_txtDescription = nullptr;
   QLineEdit * m_txtSoftDelete = nullptr;
   QLineEdit * m_txtValidator = nullptr;
   QLineEdit * m_txtVersion = nullptr;
   QCheckBox * m_chkAbstract = nullptr;
   QCheckBox * m_chkReadOnly = nullptr;
   QList<QCheckBox *> m_lstTriggers;
   QStringList m_lstTakenKeys;   // keys of the other entities and of the enumerations

public:
   // sOwnKey: the entity's key before the edit (empty for a new one).
   entity_dialog(const model::entity & e, const model_state & state, const QString & sOwnKey, QWidget * parent);
   // The key the fields give.
   QString key() const;
   void applyTo(model::entity & e) const;
};

} // namespace desktop
