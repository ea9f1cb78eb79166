// The entity editor.

#include "desktop/entity_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>

#include "model/entity.h"
#include "model/enumeration.h"

namespace desktop {

namespace {

typedef void (model::entity::* trigger_setter)(bool);
typedef bool (model::entity::* trigger_getter)() const;
struct trigger_field { const char * szName; const char * szLabel; trigger_getter get; trigger_setter set; };

const trigger_field k_triggers[] = {
   { "m_chkBeforeFetch", "before fetch", & model::entity::isTriggerBeforeFetch, & model::entity::setTriggerBeforeFetch },
   { "m_chkAfterFetch", "after fetch", & model::entity::isTriggerAfterFetch, & model::entity::setTriggerAfterFetch },
   { "m_chkBeforeInsert", "before insert", & model::entity::isTriggerBeforeInsert, & model::entity::setTriggerBeforeInsert },
   { "m_chkAfterInsert", "after insert", & model::entity::isTriggerAfterInsert, & model::entity::setTriggerAfterInsert },
   { "m_chkBeforeUpdate", "before update", & model::entity::isTriggerBeforeUpdate, & model::entity::setTriggerBeforeUpdate },
   { "m_chkAfterUpdate", "after update", & model::entity::isTriggerAfterUpdate, & model::entity::setTriggerAfterUpdate },
   { "m_chkBeforeDelete", "before delete", & model::entity::isTriggerBeforeDelete, & model::entity::setTriggerBeforeDelete },
   { "m_chkAfterDelete", "after delete", & model::entity::isTriggerAfterDelete, & model::entity::setTriggerAfterDelete },
};

QString joinKey(const QString & sNamespace, const QString & sName) { return (sNamespace.isEmpty() ? sName : (sNamespace + "::" + sName)); }

} // namespace

entity_dialog::entity_dialog(const model::entity & e, const model_state & state, const QString & sOwnKey, QWidget * parent)
   : item_dialog(sOwnKey.isEmpty() ? tr("New entity") : tr("Entity %1").arg(sOwnKey), parent)
{
   setObjectName("entity_dialog");
   QStringList lstParents { QString() };
   for (const model::entity_ptr & p : state.entities)
   {
      if (! p || (p->getKey() == sOwnKey)) { continue; }
      m_lstTakenKeys.append(p->getKey());
      lstParents.append(p->getKey());
   }
   for (const model::enumeration_ptr & p : state.enumerations) { if (p) { m_lstTakenKeys.append(p->getKey()); } }

   // A key taken by another item frames the name, as any other problem of the field does.
   m_txtName = addLine(m_pForm, "m_txtName", tr("Name"), e.getName(), [this](const QString & s) {
      const QString sProblem = field_rules::name(s);
      if (! sProblem.isEmpty() || ! m_txtNamespace || ! m_lstTakenKeys.contains(key())) { return sProblem; }
      return tr("'%1' is already used by another entity or an enumeration").arg(key()); });
   m_txtNamespace = addLine(m_pForm, "m_txtNamespace", tr("Namespace"), e.getNamespace(), & field_rules::namespaceName);
   m_cboParent = addCombo(m_pForm, "m_cboParent", tr("Parent entity"), lstParents, false);
   m_cboParent->setCurrentIndex(qMax(0, static_cast<int>(lstParents.indexOf(e.getParentKey()))));
   m_txtTable = addLine(m_pForm, "m_txtTable", tr("Table"), e.getTableName(), & field_rules::tableName);
   m_txtTable->setPlaceholderText(tr("the entity's name"));
   m_txtDescription = addLine(m_pForm, "m_txtDescription", tr("Description"), e.getDescription(), & field_rules::blockComment);
   m_txtSoftDelete = addLine(m_pForm, "m_txtSoftDelete", tr("Soft delete column"), e.getSoftDeleteColumn(), & field_rules::literal);
   m_txtValidator = addLine(m_pForm, "m_txtValidator", tr("Validator method"), e.getValidatorMethod(), & field_rules::optionalName);
   m_txtVersion = addLine(m_pForm, "m_txtVersion", tr("Version"), QString::number(e.getVersion()), [](const QString & s) {
      bool bOk = false; s.toLong(& bOk); return (bOk ? QString() : tr("is not a whole number")); });
   m_chkAbstract = addCheck(m_pForm, "m_chkAbstract", tr("Abstract"), e.isAbstract());
   m_chkReadOnly = addCheck(m_pForm, "m_chkReadOnly", tr("Read only"), e.isReadOnly());

   QGroupBox * pTriggers = new QGroupBox(tr("Triggers"), this);
   QGridLayout * pGrid = new QGridLayout(pTriggers);
   int i = 0;
   for (const trigger_field & t : k_triggers)
   {
      QCheckBox * chk = new QCheckBox(tr(t.szLabel), pTriggers);
      chk->setObjectName(t.szName);
      chk->setChecked((e.*t.get)());
      pGrid->addWidget(chk, i % 2, i / 2);
      m_lstTriggers.append(chk);
      ++i;
   }
   m_pLayout->addWidget(pTriggers);
   addMetaTable(e.getAllMetaData());
   finish();
}

QString entity_dialog::key() const { return joinKey(m_txtNamespace->text().trimmed(), m_txtName->text().trimmed()); }

void entity_dialog::applyTo(model::entity & e) const
{
   e.setName(m_txtName->text().trimmed());
   e.setNamespace(m_txtNamespace->text().trimmed());
   e.setParentKey(m_cboParent->currentText());
   e.setTableName(m_txtTable->text().trimmed());
   e.setDescription(m_txtDescription->text());
   e.setSoftDeleteColumn(m_txtSoftDelete->text().trimmed());
   e.setValidatorMethod(m_txtValidator->text().trimmed());
   e.setVersion(m_txtVersion->text().toLong());
   e.setAbstract(m_chkAbstract->isChecked());
   e.setReadOnly(m_chkReadOnly->isChecked());
   qsizetype i = 0;
   for (const trigger_field & t : k_triggers)
   {
      if (i < m_lstTriggers.size()) { (e.*t.set)(m_lstTriggers.at(i)->isChecked()); }
      ++i;
   }
   e.setAllMetaData(metaData());
}

} // namespace desktop
