// The model tree: entities and enumerations by namespace, and the selection the plug-ins follow.

#include "desktop/main_window.h"
#include "desktop/diagram_view.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QStyle>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include "context/ctx_global.h"
#include "gui/tools/message_box.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"

namespace desktop {

namespace {

QString namespaceLabel(const QString & ns) { return (ns.isEmpty() ? QObject::tr("(global namespace)") : ns); }

// The group item of a namespace under a top-level item, created on first use.
QTreeWidgetItem * namespaceItem(QTreeWidgetItem * pParent, const QString & ns)
{
   const QString label = namespaceLabel(ns);
   QTreeWidgetItem * pItem = nullptr;
   for (int i = 0; (i < pParent->childCount()) && ! pItem; ++i)
   {
      if (pParent->child(i)->text(0) == label) { pItem = pParent->child(i); }
   }
   // A place kept from the tree before it was filled again is made a group on first use.
   if (pItem && (pItem->childCount() > 0)) { return pItem; }
   if (! pItem) { pItem = new QTreeWidgetItem(pParent, QStringList(label)); }
   pItem->setData(0, main_window::k_roleKind, main_window::item_group);
   pItem->setIcon(0, QApplication::style()->standardIcon(QStyle::SP_DirIcon));
   return pItem;
}

// A top-level group of the model tree.
QTreeWidgetItem * groupItem(QTreeWidget * pTree, QStyle * pStyle, const QString & label)
{
   QTreeWidgetItem * pGroup = new QTreeWidgetItem(pTree, QStringList(label));
   pGroup->setData(0, main_window::k_roleKind, main_window::item_group);
   pGroup->setIcon(0, pStyle->standardIcon(QStyle::SP_DriveHDIcon));
   return pGroup;
}

// The entities or enumerations of a project's list under their group, each remembering its place
// in the list and its key.
template <typename T>
void addItems(QTreeWidgetItem * pGroup, const T & pList, main_window::enum_item_kind kind, const QIcon & icon)
{
   for (qsizetype i = 0; pList && (i < pList->size()); ++i)
   {
      const auto & p = pList->at(i);
      if (! p) { continue; }
      QTreeWidgetItem * pItem = new QTreeWidgetItem(namespaceItem(pGroup, p->getNamespace()), QStringList(p->getName()));
      pItem->setData(0, main_window::k_roleKind, kind);
      pItem->setData(0, main_window::k_roleIndex, static_cast<int>(i));
      pItem->setData(0, main_window::k_roleKey, p->getKey());
      pItem->setIcon(0, icon);
      pItem->setToolTip(0, main_window::itemToolTip(p->getKey(), p->getDescription()));
   }
}

} // namespace

void main_window::createModelTree()
{
   m_treeModel = new QTreeWidget(this);
   m_treeModel->setObjectName("m_treeModel");
   m_treeModel->setHeaderLabel(tr("Model"));
   m_treeModel->setUniformRowHeights(true);
   connect(m_treeModel, & QTreeWidget::currentItemChanged, this, & main_window::doTreeCurrentItemChanged);
}

QString main_window::itemToolTip(const QString & key, const QString & description)
{
   return key + (description.isEmpty() ? QString() : ("\n" + description));
}

void main_window::fillModelTree()
{
   const QSignalBlocker block(m_treeModel);
   m_treeModel->clear();
   m_lstTreeKeys = treeKeys();
   if (! m_pProject) { return; }
   QStyle * pStyle = style();
   QTreeWidgetItem * pEntities = groupItem(m_treeModel, pStyle, tr("Entities"));
   QTreeWidgetItem * pEnums = groupItem(m_treeModel, pStyle, tr("Enumerations"));
   // The namespaces keep the places they were first shown at: an edit, a delete or its undo
   // that changes which item of the project's list comes first in a namespace moves nothing.
   for (const QString & sPlace : std::as_const(m_lstNamespaceOrder))
   { new QTreeWidgetItem(sPlace.startsWith('E') ? pEntities : pEnums, QStringList(sPlace.mid(1))); }
   addItems(pEntities, m_pProject->getListOfAllEntities(), item_entity, pStyle->standardIcon(QStyle::SP_FileIcon));
   addItems(pEnums, m_pProject->getListOfAllEnums(), item_enumeration, pStyle->standardIcon(QStyle::SP_FileDialogListView));
   m_lstNamespaceOrder.clear();
   for (QTreeWidgetItem * pGroup : { pEntities, pEnums })
   {
      for (int j = 0; j < pGroup->childCount(); ++j) { m_lstNamespaceOrder.append(QString((pGroup == pEntities) ? "E" : "N") + pGroup->child(j)->text(0)); }
      // Namespaces without items are not shown, but keep their places.
      for (int j = pGroup->childCount() - 1; j >= 0; --j) { if (pGroup->child(j)->childCount() == 0) { delete pGroup->takeChild(j); } }
   }
   m_treeModel->expandAll();
   if (m_txtFilter && ! m_txtFilter->text().isEmpty()) { doFilterChanged(m_txtFilter->text()); }
}

QString main_window::siblingKey(const QString & sKey) const
{
   // The item below the deleted one in its namespace, else the one above: the selection stays
   // where the user looks instead of jumping to the next item of the project's list.
   for (QTreeWidgetItemIterator itr(m_treeModel); * itr; ++itr)
   {
      if ((* itr)->data(0, k_roleKey).toString() != sKey) { continue; }
      QTreeWidgetItem * pParent = (* itr)->parent();
      if (! pParent) { return QString(); }
      const int i = pParent->indexOfChild(* itr);
      for (int j : { i + 1, i - 1 })
      {
         QTreeWidgetItem * pSibling = pParent->child(j);
         if (pSibling && (pSibling->data(0, k_roleKind).toInt() != item_group)) { return pSibling->data(0, k_roleKey).toString(); }
      }
      return QString();
   }
   return QString();
}

bool main_window::selectItem(const QString & key)
{
   QTreeWidgetItemIterator itr(m_treeModel);
   for (; * itr; ++itr)
   {
      if ((* itr)->data(0, k_roleKey).toString() != key) { continue; }
      // Selecting may edit the model (typed text applied), which may rebuild the tree.
      m_treeModel->setCurrentItem(* itr);
      QTreeWidgetItem * pCurrent = m_treeModel->currentItem();
      if (pCurrent) { m_treeModel->scrollToItem(pCurrent); }
      return (pCurrent && (pCurrent->data(0, k_roleKey).toString() == key));
   }
   return false;
}

void main_window::doTreeCurrentItemChanged(QTreeWidgetItem * current)
{
   // Text typed into the edit panel is never dropped without a word.
   if (m_btnApply->isEnabled() && (m_pEntity || m_pEnumeration))
   {
      const QString sKey = (m_pEntity ? m_pEntity->getKey() : m_pEnumeration->getKey());
      const QMessageBox::StandardButton answer = tools::message_box::question(this, context::ctx_global::getAppName(),
         tr("The changes typed for '%1' are not applied yet. Apply them?").arg(sKey), QMessageBox::Apply | QMessageBox::Discard, QMessageBox::Apply);
      if (answer == QMessageBox::Apply)
      {
         m_bSwitching = true;
         doBtnApplyDetails();
         m_bSwitching = false;
      }
   }
   m_pEntity.reset();
   m_pEnumeration.reset();
   const int kind = (current ? current->data(0, k_roleKind).toInt() : static_cast<int>(item_group));
   const int index = (current ? current->data(0, k_roleIndex).toInt() : -1);
   if (m_pProject && (kind == item_entity))
   {
      const model::list_of_entity_ptr p = m_pProject->getListOfAllEntities();
      if (p && (index >= 0) && (index < p->size())) { m_pEntity = p->at(index); }
   }
   else if (m_pProject && (kind == item_enumeration))
   {
      const model::list_of_enumeration_ptr p = m_pProject->getListOfAllEnums();
      if (p && (index >= 0) && (index < p->size())) { m_pEnumeration = p->at(index); }
   }
   showItemDetails();
   if (m_viewDiagram && m_pEntity) { m_viewDiagram->selectEntity(m_pEntity->getKey()); }
   updateActions();
   emitSelection();
}

QStringList main_window::treeKeys() const
{
   QStringList lst;
   if (! m_pProject) { return lst; }
   for (const model::entity_ptr & p : * m_pProject->getListOfAllEntities()) { lst.append(p ? p->getKey() : QString()); }
   lst.append(QString());
   for (const model::enumeration_ptr & p : * m_pProject->getListOfAllEnums()) { lst.append(p ? p->getKey() : QString()); }
   return lst;
}

void main_window::refreshTreeItems(const QList<const void *> & lstChanged)
{
   const model::list_of_entity & lstEntities = * m_pProject->getListOfAllEntities();
   const model::list_of_enumeration & lstEnums = * m_pProject->getListOfAllEnums();
   const QSet<const void *> setChanged(lstChanged.cbegin(), lstChanged.cend());
   for (QTreeWidgetItemIterator itr(m_treeModel); * itr; ++itr)
   {
      const int kind = (* itr)->data(0, k_roleKind).toInt();
      const int i = (* itr)->data(0, k_roleIndex).toInt();
      if ((kind == item_entity) && setChanged.contains(lstEntities.at(i).get()))
      { (* itr)->setToolTip(0, itemToolTip(lstEntities.at(i)->getKey(), lstEntities.at(i)->getDescription())); }
      else if ((kind == item_enumeration) && setChanged.contains(lstEnums.at(i).get()))
      { (* itr)->setToolTip(0, itemToolTip(lstEnums.at(i)->getKey(), lstEnums.at(i)->getDescription())); }
   }
   if (m_txtFilter && ! m_txtFilter->text().isEmpty()) { doFilterChanged(m_txtFilter->text()); }
}

void main_window::emitSelection()
{
   if (m_bQuietSelection) { return; }
   if (m_pEntity) { Q_EMIT onSelectEntity(m_pEntity); }
   else if (m_pEnumeration) { Q_EMIT onSelectEnumeration(m_pEnumeration); }
   else
   {
      // Nothing selected: both kinds are cleared in the plug-ins' views.
      Q_EMIT onSelectEntity(model::entity_ptr());
      Q_EMIT onSelectEnumeration(model::enumeration_ptr());
   }
}

} // namespace desktop
