// The edit panel of the selected item: what it shows, and storing the fields it lets the user change.

#include "desktop/main_window.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "storage/project_storage.h"
#include "gui/tools/message_box.h"
#include "gui/tools/wait_cursor.h"

namespace desktop {

QGroupBox * main_window::createDetailsPanel()
{
   // The editor of the selected item: a few fields, the rest of the model is read-only here.
   QGroupBox * pDetails = new QGroupBox(tr("Selected item"), this);
   pDetails->setObjectName("m_grpDetails");
   m_lblItemKey = new QLabel(pDetails);
   m_lblItemKey->setObjectName("m_lblItemKey");
   m_lblItemKey->setTextInteractionFlags(Qt::TextSelectableByMouse);
   m_txtTable = new QLineEdit(pDetails);
   m_txtTable->setObjectName("m_txtTable");
   m_txtDescription = new QLineEdit(pDetails);
   m_txtDescription->setObjectName("m_txtDescription");
   m_btnApply = new QPushButton(tr("Apply"), pDetails);
   m_btnApply->setObjectName("m_btnApply");
   m_btnApply->setToolTip(tr("Store the changes in the project file and refresh the preview"));
   m_treeItemDetails = new QTreeWidget(pDetails);
   m_treeItemDetails->setObjectName("m_treeItemDetails");
   m_treeItemDetails->setRootIsDecorated(false);
   m_treeItemDetails->setAlternatingRowColors(true);
   m_treeItemDetails->setUniformRowHeights(true);
   QFormLayout * pForm = new QFormLayout();
   pForm->addRow(tr("Item :"), m_lblItemKey);
   pForm->addRow(tr("Table :"), m_txtTable);
   pForm->addRow(tr("Description :"), m_txtDescription);
   QHBoxLayout * pApply = new QHBoxLayout();
   pApply->addStretch(1);
   pApply->addWidget(m_btnApply);
   QVBoxLayout * pDetailsLayout = new QVBoxLayout(pDetails);
   pDetailsLayout->addLayout(pForm);
   pDetailsLayout->addLayout(pApply);
   pDetailsLayout->addWidget(m_treeItemDetails, 1);
   // The window's shortcuts (Ctrl+E) reach it while a field has the cursor.
   m_txtTable->installEventFilter(this);
   m_txtDescription->installEventFilter(this);
   connect(m_txtTable, & QLineEdit::textEdited, this, & main_window::doDetailsEdited);
   connect(m_txtDescription, & QLineEdit::textEdited, this, & main_window::doDetailsEdited);
   connect(m_txtTable, & QLineEdit::returnPressed, this, & main_window::doBtnApplyDetails);
   connect(m_txtDescription, & QLineEdit::returnPressed, this, & main_window::doBtnApplyDetails);
   connect(m_btnApply, & QPushButton::clicked, this, & main_window::doBtnApplyDetails);
   return pDetails;
}

void main_window::showItemDetails()
{
   m_treeItemDetails->clear();
   // setHeaderLabels() never removes columns: each kind sets its count first.
   m_btnApply->setEnabled(false);
   const bool bItem = (m_pEntity || m_pEnumeration);
   m_txtTable->setEnabled(m_pEntity != nullptr);
   m_txtDescription->setEnabled(bItem);
   if (m_pEntity)
   {
      QString sText = "<b>" + tr("Entity") + " " + m_pEntity->getKey().toHtmlEscaped() + "</b>";
      if (! m_pEntity->getParentKey().isEmpty()) { sText += " : " + m_pEntity->getParentKey().toHtmlEscaped(); }
      if (m_pEntity->isAbstract()) { sText += " <i>(" + tr("abstract") + ")</i>"; }
      m_lblItemKey->setText(sText);
      m_txtTable->setText(m_pEntity->getTableName());
      m_txtTable->setPlaceholderText(m_pEntity->getName());
      m_txtDescription->setText(m_pEntity->getDescription());
      m_treeItemDetails->setColumnCount(6);
      m_treeItemDetails->setHeaderLabels({ tr("Property"), tr("Type"), tr("Column"), tr("Key"), tr("Null"), tr("Description") });
      for (const model::property_ptr & p : m_pEntity->getOwnProperties())
      {
         if (! p) { continue; }
         const QString sColumn = (p->getColumnName().isEmpty() ? p->getName() : p->getColumnName());
         const QString sKey = (p->isPrimaryKey() ? QStringLiteral("PK") : (p->hasRelationship() ? QStringLiteral("FK") : QString()));
         const QString sNull = (p->hasRelationship() ? QString() : (p->getAllowNull() ? tr("yes") : tr("no")));
         const QString sType = p->getTypeDesc(false, false);
         QTreeWidgetItem * pItem = new QTreeWidgetItem(m_treeItemDetails, { p->getName(), sType, sColumn, sKey, sNull, p->getDescription() });
         pItem->setToolTip(1, sType);
         pItem->setToolTip(5, p->getDescription());
      }
   }
   else if (m_pEnumeration)
   {
      m_lblItemKey->setText("<b>" + tr("Enumeration") + " " + m_pEnumeration->getKey().toHtmlEscaped() + "</b> (" + m_pEnumeration->getEnumName().toHtmlEscaped() + ")");
      m_txtTable->clear();
      m_txtTable->setPlaceholderText(QString());
      m_txtDescription->setText(m_pEnumeration->getDescription());
      m_treeItemDetails->setColumnCount(2);
      m_treeItemDetails->setHeaderLabels({ tr("Key"), tr("Value") });
      const auto & kv = m_pEnumeration->getAllKeyValue();
      for (qsizetype i = 0; i < kv.size(); ++i) { new QTreeWidgetItem(m_treeItemDetails, { kv.getKeyByIndex(i), kv.getByIndex(i) }); }
   }
   else
   {
      m_lblItemKey->setText(tr("<i>Select an entity or an enumeration in the tree</i>"));
      m_txtTable->clear();
      m_txtTable->setPlaceholderText(QString());
      m_txtDescription->clear();
      m_treeItemDetails->setColumnCount(1);
      m_treeItemDetails->setHeaderLabels({ QString() });
   }
   // Every column in view: a long type is cut (its tool tip has it whole); widths stay resizable.
   for (int i = 0; i < m_treeItemDetails->columnCount() - 1; ++i)
   {
      m_treeItemDetails->resizeColumnToContents(i);
      m_treeItemDetails->setColumnWidth(i, qMin(m_treeItemDetails->columnWidth(i), 150));
   }
}

// The table name and description as the edit panel would store them, checked by the rules of
// the place where the export writes them; empty when they can be stored.
QString main_window::detailsProblem() const
{
   typedef model::model_text_rules rules;
   QString sField, sValue, sReason;
   const QString sDescription = m_txtDescription->text();
   if (m_pEntity)
   {
      sValue = m_txtTable->text().trimmed();
      sReason = rules::sqlNameProblem(sValue);
      sField = tr("table name");
   }
   if (sReason.isEmpty())
   {
      sValue = sDescription;
      sReason = rules::blockCommentProblem(sValue);
      sField = tr("description");
   }
   if (sReason.isEmpty()) { return QString(); }
   const QString sKey = (m_pEntity ? m_pEntity->getKey() : m_pEnumeration->getKey());
   return tr("'%1' not updated : %2 '%3' %4").arg(sKey, sField, rules::shown(sValue), sReason);
}

void main_window::closeEvent(QCloseEvent * event)
{
   if (m_btnApply->isEnabled() && (m_pEntity || m_pEnumeration))
   {
      const QString sKey = (m_pEntity ? m_pEntity->getKey() : m_pEnumeration->getKey());
      const QMessageBox::StandardButton answer = tools::message_box::question(this, context::ctx_global::getAppName(),
         tr("The changes typed for '%1' are not applied yet. Apply them before closing?").arg(sKey),
         QMessageBox::Apply | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Apply);
      if (answer == QMessageBox::Cancel) { event->ignore(); return; }
      if (answer == QMessageBox::Apply) { doBtnApplyDetails(); }
   }
   if (! confirmDiscard()) { event->ignore(); return; }
   saveWindowState();
   view::main_wnd::closeEvent(event);
}

bool main_window::applyTypedDetails()
{
   // Text typed but not applied is what the user sees: an export takes it, or does not start.
   if (! m_btnApply->isEnabled() || (! m_pEntity && ! m_pEnumeration)) { return true; }
   doBtnApplyDetails();
   return ! m_btnApply->isEnabled();
}

void main_window::doDetailsEdited() { m_btnApply->setEnabled(m_pEntity || m_pEnumeration); }

void main_window::doBtnApplyDetails()
{
   if (! m_pProject || (! m_pEntity && ! m_pEnumeration)) { return; }
   const QString sProblem = detailsProblem();
   if (! sProblem.isEmpty())
   {
      addMessage(sProblem, 3);
      tools::message_box::warning(this, context::ctx_global::getAppName(), sProblem);
      return;
   }
   // Texts as they are (an empty field applied again, say) change nothing: no undo step.
   const bool bSame = (m_txtDescription->text() == (m_pEntity ? m_pEntity->getDescription() : m_pEnumeration->getDescription()))
                      && (! m_pEntity || (m_txtTable->text().trimmed() == m_pEntity->getTableName()));
   if (bSame) { m_btnApply->setEnabled(false); return; }
   // An edit of the model like any other: one undo step, saved with the rest.
   model_state after = model_edit::stateOf(* m_pProject);
   QString sKey;
   if (m_pEntity)
   {
      sKey = m_pEntity->getKey();
      model::entity_ptr pCopy = model_edit::cloneEntity(* m_pEntity);
      pCopy->setTableName(m_txtTable->text().trimmed());
      pCopy->setDescription(m_txtDescription->text());
      after.entities.replace(after.entities.indexOf(m_pEntity), pCopy);
   }
   else
   {
      sKey = m_pEnumeration->getKey();
      model::enumeration_ptr pCopy = model_edit::cloneEnumeration(* m_pEnumeration);
      pCopy->setDescription(m_txtDescription->text());
      after.enumerations.replace(after.enumerations.indexOf(m_pEnumeration), pCopy);
   }
   m_btnApply->setEnabled(false);
   pushEdit(tr("Edit %1").arg(sKey), after, model_place { sKey, QString() });
   addMessage(tr("'%1' updated").arg(sKey), 1);
}

} // namespace desktop
