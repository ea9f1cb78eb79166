#pragma once

#include <QStringList>

#include "desktop/item_dialog.h"
#include "desktop/model_edit.h"

namespace desktop {

// The editor of an enumeration: name and namespace, C++ enum name, Qt enum flag, description,
// the values (name and number, in order) and the meta data.
class enumeration_dialog : public item_dialog
{
   Q_OBJECT

   QLineEdit * m_txtName = nullptr;
   QLineEdit * m_txtNamespace = nullptr;
   QLineEdit * m_txtEnumName = nullptr;
   QLineEdit * m_txtDescription = nullptr;
   QCheckBox * m_chkQtEnum = nullptr;
   QTableWidget * m_tblValues = nullptr;
   QStringList m_lstTakenKeys;

public:
   enumeration_dialog(const model::enumeration & e, const model_state & state, const QString & sOwnKey, QWidget * parent);
   QString key() const;
   void applyTo(model::enumeration & e) const;

private:
   // The first value whose name is not an identifier or whose number is not a constant.
   QString valuesProblem() const;
};

} // namespace desktop
