// The enumeration editor.

#include "desktop/enumeration_dialog.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QTableWidget>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_text_rules.h"

namespace desktop {

enumeration_dialog::enumeration_dialog(const model::enumeration & e, const model_state & state, const QString & sOwnKey, QWidget * parent)
   : item_dialog(sOwnKey.isEmpty() ? tr("New enumeration") : tr("Enumeration %1").arg(sOwnKey), parent)
{
   setObjectName("enumeration_dialog");
   for (const model::entity_ptr & p : state.entities) { if (p) { m_lstTakenKeys.append(p->getKey()); } }
   for (const model::enumeration_ptr & p : state.enumerations) { if (p && (p->getKey() != sOwnKey)) { m_lstTakenKeys.append(p->getKey()); } }

   m_txtName = addLine(m_pForm, "m_txtName", tr("Name"), e.getName(), [this](const QString & s) {
      const QString sProblem = field_rules::name(s);
      if (! sProblem.isEmpty() || ! m_txtNamespace || ! m_lstTakenKeys.contains(key())) { return sProblem; }
      return tr("'%1' is already used by an entity or another enumeration").arg(key()); });
   m_txtNamespace = addLine(m_pForm, "m_txtNamespace", tr("Namespace"), e.getNamespace(), & field_rules::namespaceName);
   // Empty: "enum_" and the name.
   m_txtEnumName = addLine(m_pForm, "m_txtEnumName", tr("C++ enum name"), (e.getEnumName() == "enum_" + e.getName()) ? QString() : e.getEnumName(), & field_rules::optionalName);
   m_txtEnumName->setPlaceholderText(tr("enum_ and the name"));
   m_txtDescription = addLine(m_pForm, "m_txtDescription", tr("Description"), e.getDescription(), & field_rules::blockComment);
   m_chkQtEnum = addCheck(m_pForm, "m_chkQtEnum", tr("Registered as a Qt enum"), e.getUseQtEnum());
   QList<QPair<QString, QString> > lstValues;
   const auto & kv = e.getAllKeyValue();
   for (qsizetype i = 0; i < kv.size(); ++i) { lstValues.append({ kv.getKeyByIndex(i), kv.getByIndex(i) }); }
   m_tblValues = addKeyValueTable("m_tblValues", tr("Values"), { tr("Name"), tr("Number") }, lstValues);
   addMetaTable(e.getAllMetaData());
   m_pMarks->addCheck([this]() { return valuesProblem(); });
   finish();
}

QString enumeration_dialog::key() const
{
   const QString sNamespace = m_txtNamespace->text().trimmed();
   return (sNamespace.isEmpty() ? m_txtName->text().trimmed() : (sNamespace + "::" + m_txtName->text().trimmed()));
}

QString enumeration_dialog::valuesProblem() const
{
   const QString sRepeated = keysProblem(m_tblValues, tr("value"));
   if (! sRepeated.isEmpty()) { return sRepeated; }
   for (const auto & kv : rowsOf(m_tblValues))
   {
      const QString sName = field_rules::name(kv.first);
      if (! sName.isEmpty()) { return tr("value name '%1' %2").arg(model::model_text_rules::shown(kv.first), sName); }
      const QString sNumber = field_rules::wholeNumber(kv.second);
      if (! sNumber.isEmpty()) { return tr("value of '%1' '%2' %3").arg(kv.first, model::model_text_rules::shown(kv.second), sNumber); }
   }
   return QString();
}

void enumeration_dialog::applyTo(model::enumeration & e) const
{
   e.setName(m_txtName->text().trimmed());
   e.setNamespace(m_txtNamespace->text().trimmed());
   e.setEnumName(m_txtEnumName->text().trimmed());
   e.setDescription(m_txtDescription->text());
   e.setUseQtEnum(m_chkQtEnum->isChecked());
   e.clearKeyValues();
   for (const auto & kv : rowsOf(m_tblValues)) { e.addKeyValue(kv.first, kv.second); }
   e.setAllMetaData(metaData());
}

} // namespace desktop
