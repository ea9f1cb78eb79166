// Editing the model: the undo stack, Save, the questions before unsaved edits are dropped, and
// the edit commands of the model tree and the property table.

#include "desktop/main_window.h"
#include "desktop/diagram_view.h"

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>
#include <QTreeWidget>
#include <QUndoStack>
#include <QUndoView>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "gui/tools/message_box.h"
#include "gui/tools/wait_cursor.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "storage/project_storage.h"

namespace desktop {

namespace {

// An action whose shortcut only works while the widget has the focus (Delete in a text field
// stays the text field's).
QAction * widgetAction(QWidget * pOwner, const QString & sName, const QString & sText, const QKeySequence & key)
{
   QAction * pAction = new QAction(sText, pOwner);
   pAction->setObjectName(sName);
   pAction->setShortcut(key);
   pAction->setShortcutContext(Qt::WidgetShortcut);
   return pAction;
}

} // namespace

void main_window::createEditActions()
{
   QStyle * pStyle = style();
   m_pUndo = new QUndoStack(this);
   m_pUndo->setObjectName("m_undoStack");
   m_actUndo = m_pUndo->createUndoAction(this, tr("&Undo"));
   m_actUndo->setObjectName("m_actUndo");
   m_actUndo->setShortcut(QKeySequence::Undo);
   m_actUndo->setIcon(pStyle->standardIcon(QStyle::SP_ArrowBack));
   m_actRedo = m_pUndo->createRedoAction(this, tr("&Redo"));
   m_actRedo->setObjectName("m_actRedo");
   // The platform's redo keys, and both usual ones: each once (a key bound twice does nothing).
   QList<QKeySequence> lstRedo = QKeySequence::keyBindings(QKeySequence::Redo);
   for (const QKeySequence & k : { QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y) }) { if (! lstRedo.contains(k)) { lstRedo.append(k); } }
   m_actRedo->setShortcuts(lstRedo);
   m_actRedo->setIcon(pStyle->standardIcon(QStyle::SP_ArrowForward));
   m_actSave = new QAction(pStyle->standardIcon(QStyle::SP_DriveFDIcon), tr("&Save"), this);
   m_actSave->setObjectName("m_actSave");
   m_actSave->setShortcut(QKeySequence::Save);
   m_actSave->setStatusTip(tr("Write the edited model into the project file"));
   m_actNewEntity = new QAction(pStyle->standardIcon(QStyle::SP_FileIcon), tr("New &entity..."), this);
   m_actNewEntity->setObjectName("m_actNewEntity");
   m_actNewEnumeration = new QAction(pStyle->standardIcon(QStyle::SP_FileDialogListView), tr("New e&numeration..."), this);
   m_actNewEnumeration->setObjectName("m_actNewEnumeration");
   m_actEditItem = new QAction(tr("&Edit item...\tF2"), this);
   m_actEditItem->setObjectName("m_actEditItem");
   m_actDeleteItem = new QAction(pStyle->standardIcon(QStyle::SP_TrashIcon), tr("&Delete item\tDel"), this);
   m_actDeleteItem->setObjectName("m_actDeleteItem");
   m_actNewProperty = new QAction(tr("New &property..."), this);
   m_actNewProperty->setObjectName("m_actNewProperty");
   m_actEditProperty = new QAction(tr("Edit p&roperty..."), this);
   m_actEditProperty->setObjectName("m_actEditProperty");
   m_actDeleteProperty = new QAction(tr("Delete pr&operty"), this);
   m_actDeleteProperty->setObjectName("m_actDeleteProperty");

   connect(m_actSave, & QAction::triggered, this, & main_window::doActSave);
   connect(m_actNewEntity, & QAction::triggered, this, & main_window::doActNewEntity);
   connect(m_actNewEnumeration, & QAction::triggered, this, & main_window::doActNewEnumeration);
   connect(m_actEditItem, & QAction::triggered, this, & main_window::doActEditItem);
   connect(m_actDeleteItem, & QAction::triggered, this, & main_window::doActDeleteItem);
   connect(m_actNewProperty, & QAction::triggered, this, & main_window::doActNewProperty);
   connect(m_actEditProperty, & QAction::triggered, this, & main_window::doActEditProperty);
   connect(m_actDeleteProperty, & QAction::triggered, this, & main_window::doActDeleteProperty);
   connect(m_pUndo, & QUndoStack::cleanChanged, this, [this]() { updateTitle(); });
}

void main_window::createEditMenu()
{
   QMenu * pEdit = menuBar()->addMenu(tr("&Edit"));
   pEdit->setObjectName("m_mnuEdit");
   pEdit->addActions({ m_actUndo, m_actRedo });
   pEdit->addSeparator();
   pEdit->addActions({ m_actNewEntity, m_actNewEnumeration, m_actEditItem, m_actDeleteItem });
   pEdit->addSeparator();
   pEdit->addActions({ m_actNewProperty, m_actEditProperty, m_actDeleteProperty });
}

void main_window::createUndoDock()
{
   m_dockUndo = new QDockWidget(tr("Undo history"), this);
   m_dockUndo->setObjectName("m_dockUndo");
   QUndoView * pView = new QUndoView(m_pUndo, m_dockUndo);
   pView->setObjectName("m_viewUndo");
   pView->setEmptyLabel(tr("<opened>"));
   m_dockUndo->setWidget(pView);
   addDockWidget(Qt::LeftDockWidgetArea, m_dockUndo);
   m_dockUndo->hide();
   m_mnuView->addAction(m_dockUndo->toggleViewAction());

   // Insert, F2 and Delete where the focus is: the model tree or the property table.
   m_actInsertItem = widgetAction(m_treeModel, "m_actInsertItem", tr("New..."), QKeySequence(Qt::Key_Insert));
   QAction * pEdit = widgetAction(m_treeModel, "m_actEditItemKey", tr("Edit..."), QKeySequence(Qt::Key_F2));
   QAction * pDelete = widgetAction(m_treeModel, "m_actDeleteItemKey", tr("Delete"), QKeySequence(QKeySequence::Delete));
   connect(m_actInsertItem, & QAction::triggered, this, & main_window::doActInsertItem);
   connect(pEdit, & QAction::triggered, this, & main_window::doActEditItem);
   connect(pDelete, & QAction::triggered, this, & main_window::doActDeleteItem);
   m_treeModel->addActions({ m_actInsertItem, pEdit, pDelete });
   QAction * pNewProperty = widgetAction(m_treeItemDetails, "m_actNewPropertyKey", tr("New property..."), QKeySequence(Qt::Key_Insert));
   QAction * pEditProperty = widgetAction(m_treeItemDetails, "m_actEditPropertyKey", tr("Edit property..."), QKeySequence(Qt::Key_F2));
   QAction * pDeleteProperty = widgetAction(m_treeItemDetails, "m_actDeletePropertyKey", tr("Delete property"), QKeySequence(QKeySequence::Delete));
   connect(pNewProperty, & QAction::triggered, this, & main_window::doActNewProperty);
   connect(pEditProperty, & QAction::triggered, this, & main_window::doActEditProperty);
   connect(pDeleteProperty, & QAction::triggered, this, & main_window::doActDeleteProperty);
   m_treeItemDetails->addActions({ pNewProperty, pEditProperty, pDeleteProperty });

   m_treeModel->setContextMenuPolicy(Qt::CustomContextMenu);
   connect(m_treeModel, & QWidget::customContextMenuRequested, this, [this](const QPoint & pos) {
      QMenu menu(this);
      menu.addActions({ m_actNewEntity, m_actNewEnumeration, m_actEditItem, m_actDeleteItem });
      menu.exec(m_treeModel->viewport()->mapToGlobal(pos));
   });
   m_treeItemDetails->setContextMenuPolicy(Qt::CustomContextMenu);
   connect(m_treeItemDetails, & QWidget::customContextMenuRequested, this, [this](const QPoint & pos) {
      QMenu menu(this);
      menu.addActions({ m_actNewProperty, m_actEditProperty, m_actDeleteProperty });
      menu.exec(m_treeItemDetails->viewport()->mapToGlobal(pos));
   });
   connect(m_treeModel, & QTreeWidget::itemDoubleClicked, this, & main_window::doActEditItem);
   connect(m_treeItemDetails, & QTreeWidget::itemDoubleClicked, this, & main_window::doActEditProperty);
   updateActions();
}

bool main_window::isModelModified() const { return (m_pUndo && ! m_pUndo->isClean()); }

void main_window::pushEdit(const QString & sText, const model_state & after, const model_place & place)
{
   if (! m_pProject) { return; }
   model_place before;
   if (m_pEntity) { before.key = m_pEntity->getKey(); }
   else if (m_pEnumeration) { before.key = m_pEnumeration->getKey(); }
   if (model::property_ptr p = getSelectedProperty()) { before.property = p->getName(); }
   m_pUndo->push(new model_command(sText, model_edit::stateOf(* m_pProject), after, before, place,
                                   [this](const model_change & change, bool bForward, const model_place & where) { applyChange(change, bForward, where); }));
}

void main_window::applyChange(const model_change & change, bool bForward, const model_place & place)
{
   model_state state = model_edit::stateOf(* m_pProject);
   change.apply(state, bForward);
   model_edit::restore(* m_pProject, state);
   m_bEditsApplied = true;
   // Most edits keep every key: the tree stays as it is (a 5,000-entity tree is not rebuilt)
   // and only the items the change put in are shown again.
   const bool bSameItems = (treeKeys() == m_lstTreeKeys);
   if (bSameItems) { refreshTreeItems(change.itemsPut(bForward)); }
   else { fillModelTree(); }
   if (! m_bSwitching) { showPlace(place); }
   if (m_viewDiagram) { m_viewDiagram->setProject(m_pProject); }
   listSchemaProblems();
   updateActions();
   updateTitle();
}

void main_window::showPlace(const model_place & place)
{
   QTreeWidgetItem * pCurrent = m_treeModel->currentItem();
   const QString sKeyBefore = (pCurrent ? pCurrent->data(0, k_roleKey).toString() : QString());
   const bool bAtPlace = (pCurrent && (sKeyBefore == place.key));
   m_pEntity.reset();
   m_pEnumeration.reset();
   // The plug-ins hear of the edit once below: each signal makes a preview again.
   const bool bQuiet = m_bQuietSelection;
   m_bQuietSelection = true;
   if (bAtPlace || place.key.isEmpty() || ! selectItem(place.key)) { doTreeCurrentItemChanged(m_treeModel->currentItem()); }
   m_bQuietSelection = bQuiet;
   for (int i = 0; ! place.property.isEmpty() && (i < m_treeItemDetails->topLevelItemCount()); ++i)
   {
      if (m_treeItemDetails->topLevelItem(i)->text(0) == place.property) { m_treeItemDetails->setCurrentItem(m_treeItemDetails->topLevelItem(i)); }
   }
   pCurrent = m_treeModel->currentItem();
   const bool bSameItem = (pCurrent && (pCurrent->data(0, k_roleKey).toString() == sKeyBefore));
   if (! bSameItem) { emitSelection(); }
   else if (m_pEntity) { Q_EMIT onUpdateEntity(m_pEntity); }
   else if (m_pEnumeration) { Q_EMIT onUpdateEnumeration(m_pEnumeration); }
   else { emitSelection(); }
}

void main_window::listSchemaProblems()
{
   QStringList lst;
   for (const auto & e : m_checkSchema.run(* m_pProject)) { lst.append(e.getMessage()); }
   if (lst == m_lstSchemaProblems) { return; }
   for (const QString & s : std::as_const(lst))
   {
      if (! m_lstSchemaProblems.contains(s)) { addMessage(tr("Schema error : %1").arg(s), 3); }
   }
   if (lst.isEmpty()) { addMessage(tr("The model has no schema error"), 1); }
   m_lstSchemaProblems = lst;
}

QStringList main_window::saveProblems() const
{
   // The rules the project file reader applies: a file that breaks one could not be opened again.
   QStringList lst = model::model_integrity::problems(* m_pProject);
   for (const auto & problem : model::model_text_rules::projectProblems(* m_pProject, false)) { lst.append(problem.message()); }
   return lst;
}

bool main_window::doActSave()
{
   if (! m_pProject) { return false; }
   return saveProjectAs(context::ctx_project::getProjectFile());
}

bool main_window::saveProjectAs(const QString & sFile)
{
   const QStringList lstProblems = saveProblems();
   if (! lstProblems.isEmpty())
   {
      for (const QString & s : lstProblems) { addMessage(tr("Not saved : %1").arg(s), 3); }
      const int k_iShown = 20;
      QStringList lstShown = lstProblems.mid(0, k_iShown);
      if (lstProblems.size() > k_iShown) { lstShown.append(tr("... and %1 more").arg(lstProblems.size() - k_iShown)); }
      tools::message_box::critical(this, context::ctx_global::getAppName(),
                                   tr("The project is not saved: it could not be opened again.\n\n%1").arg(lstShown.join('\n')));
      return false;
   }
   zy::ZyBool ok;
   {
      tools::wait_cursor wait; Q_UNUSED(wait);
      ok = storage::project_storage::saveProject(* m_pProject, sFile);
   }
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), tr("Cannot save the project : %1").arg(ok.getDesc()));
      return false;
   }
   m_pUndo->setClean();
   addMessage(tr("Project saved : %1").arg(QDir::toNativeSeparators(sFile)), 1);
   updateTitle();
   return true;
}

bool main_window::confirmDiscard()
{
   if (! isModelModified()) { return true; }
   const QMessageBox::StandardButton answer = tools::message_box::question(this, context::ctx_global::getAppName(),
      tr("The model has edits that are not saved. Save them into '%1' first?").arg(QDir::toNativeSeparators(context::ctx_project::getProjectFile())),
      QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
   if (answer == QMessageBox::Save) { return doActSave(); }
   return (answer == QMessageBox::Discard);
}

model::property_ptr main_window::getSelectedProperty() const
{
   QTreeWidgetItem * pItem = m_treeItemDetails->currentItem();
   if (! m_pEntity || ! pItem) { return model::property_ptr(); }
   return m_pEntity->getPropertyByName(pItem->text(0));
}

QString main_window::currentNamespace() const
{
   if (m_pEntity) { return m_pEntity->getNamespace(); }
   if (m_pEnumeration) { return m_pEnumeration->getNamespace(); }
   return QString();
}

void main_window::doActNewEntity() { if (m_pProject) { editEntity(model::entity_ptr()); } }
void main_window::doActNewEnumeration() { if (m_pProject) { editEnumeration(model::enumeration_ptr()); } }

void main_window::doActInsertItem()
{
   QTreeWidgetItem * pItem = m_treeModel->currentItem();
   const bool bEnumerations = (m_pEnumeration || (pItem && (m_treeModel->indexOfTopLevelItem(pItem) == 1)));
   if (bEnumerations) { doActNewEnumeration(); }
   else { doActNewEntity(); }
}

void main_window::doActEditItem()
{
   if (m_pEntity) { editEntity(m_pEntity); }
   else if (m_pEnumeration) { editEnumeration(m_pEnumeration); }
}

void main_window::doActDeleteItem()
{
   if (m_pEntity) { deleteEntity(m_pEntity); }
   else if (m_pEnumeration) { deleteEnumeration(m_pEnumeration); }
}

void main_window::doActNewProperty() { if (m_pEntity) { editProperty(m_pEntity, model::property_ptr()); } }
void main_window::doActEditProperty() { if (model::property_ptr p = getSelectedProperty()) { editProperty(m_pEntity, p); } }
void main_window::doActDeleteProperty() { if (model::property_ptr p = getSelectedProperty()) { deleteProperty(m_pEntity, p); } }

void main_window::deleteEntity(const model::entity_ptr & pEntity)
{
   model_state after = model_edit::stateOf(* m_pProject);
   const QString sKey = pEntity->getKey();
   if (! confirmDropReferences(tr("entity"), sKey, model_edit::entityReferences(after, sKey))) { return; }
   model_edit::dropEntityReferences(after, sKey);
   const qsizetype i = after.entities.indexOf(pEntity);
   if (i < 0) { return; }
   after.entities.removeAt(i);
   const qsizetype iNext = qMin(i, after.entities.size() - 1);
   QString sNext = siblingKey(sKey);
   if (sNext.isEmpty() && (iNext >= 0)) { sNext = after.entities.at(iNext)->getKey(); }
   pushEdit(tr("Delete entity %1").arg(sKey), after, model_place { sNext, QString() });
}

void main_window::deleteEnumeration(const model::enumeration_ptr & pEnumeration)
{
   model_state after = model_edit::stateOf(* m_pProject);
   const QString sKey = pEnumeration->getKey();
   if (! confirmDropReferences(tr("enumeration"), sKey, model_edit::enumerationReferences(after, sKey))) { return; }
   model_edit::dropEnumerationReferences(after, sKey);
   const qsizetype i = after.enumerations.indexOf(pEnumeration);
   if (i < 0) { return; }
   after.enumerations.removeAt(i);
   const qsizetype iNext = qMin(i, after.enumerations.size() - 1);
   QString sNext = siblingKey(sKey);
   if (sNext.isEmpty() && (iNext >= 0)) { sNext = after.enumerations.at(iNext)->getKey(); }
   pushEdit(tr("Delete enumeration %1").arg(sKey), after, model_place { sNext, QString() });
}

bool main_window::confirmDropReferences(const QString & sKind, const QString & sKey, const QStringList & lstReferences)
{
   if (lstReferences.isEmpty()) { return true; }
   // A dangling reference makes a file no reader opens: the references go with the item or nothing goes.
   const int k_iShown = 20;
   QStringList lstShown = lstReferences.mid(0, k_iShown);
   if (lstReferences.size() > k_iShown) { lstShown.append(tr("... and %1 more").arg(lstReferences.size() - k_iShown)); }
   const QString sText = tr("The %1 '%2' is referenced by:\n%3\n\nDelete these references with it (relations and properties "
                            "are deleted, derived entities lose their parent)?").arg(sKind, sKey, lstShown.join('\n'));
   const QMessageBox::StandardButton answer = tools::message_box::question(this, tr("Delete %1").arg(sKind), sText,
                                                                           QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
   if (answer == QMessageBox::Yes) { return true; }
   addMessage(tr("Nothing deleted : %1 '%2' is still referenced").arg(sKind, sKey), 2);
   return false;
}

void main_window::deleteProperty(const model::entity_ptr & pEntity, const model::property_ptr & pProperty)
{
   model_state after = model_edit::stateOf(* m_pProject);
   const qsizetype i = after.entities.indexOf(pEntity);
   const qsizetype j = pEntity->getOwnProperties().indexOf(pProperty);
   if ((i < 0) || (j < 0)) { return; }
   model::entity_ptr pCopy = model_edit::cloneEntity(* pEntity);
   model::list_of_property lst = pCopy->getOwnProperties();
   lst.removeAt(j);
   pCopy->clearProperties();
   for (const model::property_ptr & p : std::as_const(lst)) { pCopy->addProperty(p); }
   after.entities[i] = pCopy;
   pushEdit(tr("Delete property %1::%2").arg(pEntity->getKey(), pProperty->getName()), after, model_place { pEntity->getKey(), QString() });
}

} // namespace desktop
