// What the window remembers between runs (size, docks, splitter, last selection) and the
// search field of the model tree.

#include "desktop/main_window.h"

#include <QLineEdit>
#include <QSettings>
#include <QScreen>
#include <QSplitter>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include "context/ctx_global.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"

namespace desktop {

namespace {

std::unique_ptr<QSettings> openSettings()
{
   const QString sFile = context::ctx_global::getSettingsFile();
   if (sFile.isEmpty()) { return std::make_unique<QSettings>(QStringLiteral("Tavrel"), QStringLiteral("Tavrel")); }
   return std::make_unique<QSettings>(sFile, QSettings::IniFormat);
}

bool matches(const model::entity & e, const QString & s)
{
   if (e.getKey().contains(s, Qt::CaseInsensitive) || e.getTableName().contains(s, Qt::CaseInsensitive)) { return true; }
   for (const model::property_ptr & p : e.getOwnProperties())
   {
      if (p && (p->getName().contains(s, Qt::CaseInsensitive) || p->getColumnName().contains(s, Qt::CaseInsensitive))) { return true; }
   }
   return false;
}

bool matches(const model::enumeration & e, const QString & s)
{
   if (e.getKey().contains(s, Qt::CaseInsensitive)) { return true; }
   for (const auto & kv : e.getAllKeyValue()) { if (kv.first.contains(s, Qt::CaseInsensitive)) { return true; } }
   return false;
}

} // namespace

void main_window::saveWindowState() const
{
   auto settings = openSettings();
   settings->setValue("window/geometry", saveGeometry());
   settings->setValue("window/state", saveState());
   if (QSplitter * pSplitter = findChild<QSplitter *>("m_splitterModel")) { settings->setValue("window/model_splitter", pSplitter->saveState()); }
   settings->setValue("window/project", m_sProjectPath);
   QTreeWidgetItem * pCurrent = m_treeModel->currentItem();
   settings->setValue("window/selection", pCurrent ? pCurrent->data(0, k_roleKey).toString() : QString());
   settings->sync();
}

void main_window::restoreWindowState()
{
   auto settings = openSettings();
   if (settings->contains("window/geometry")) { restoreGeometry(settings->value("window/geometry").toByteArray()); }
   if (settings->contains("window/state")) { restoreState(settings->value("window/state").toByteArray()); }
   QSplitter * pSplitter = findChild<QSplitter *>("m_splitterModel");
   if (pSplitter && settings->contains("window/model_splitter")) { pSplitter->restoreState(settings->value("window/model_splitter").toByteArray()); }
   // A scaled display (QT_SCALE_FACTOR=2) or a small screen has less room than the default size.
   if (QScreen * pScreen = screen())
   {
      const QRect avail = pScreen->availableGeometry();
      if ((width() > avail.width()) || (height() > avail.height()))
      {
         resize(size().boundedTo(avail.size() * 9 / 10));
         move(avail.topLeft() + QPoint((avail.width() - width()) / 2, (avail.height() - height()) / 2));
      }
   }
}

QString main_window::rememberedSelection(const QString & sProjectPath) const
{
   auto settings = openSettings();
   if (settings->value("window/project").toString() != sProjectPath) { return QString(); }
   return settings->value("window/selection").toString();
}

void main_window::doFilterChanged(const QString & text)
{
   const QString s = text.trimmed();
   QTreeWidgetItemIterator itr(m_treeModel);
   for (; * itr; ++itr)
   {
      QTreeWidgetItem * pItem = (* itr);
      const int kind = pItem->data(0, k_roleKind).toInt();
      if ((kind == item_group) || ! m_pProject) { continue; }
      const int index = pItem->data(0, k_roleIndex).toInt();
      bool bShown = s.isEmpty();
      if (! bShown && (kind == item_entity)) { bShown = matches(* m_pProject->getListOfAllEntities()->at(index), s); }
      if (! bShown && (kind == item_enumeration)) { bShown = matches(* m_pProject->getListOfAllEnums()->at(index), s); }
      pItem->setHidden(! bShown);
   }
   // A namespace or group without a shown item is hidden too (deepest first).
   QList<QTreeWidgetItem *> lstGroups;
   for (QTreeWidgetItemIterator it(m_treeModel); * it; ++it) { if ((* it)->data(0, k_roleKind).toInt() == item_group) { lstGroups.prepend(* it); } }
   for (QTreeWidgetItem * pGroup : std::as_const(lstGroups))
   {
      bool bAny = false;
      for (int i = 0; (i < pGroup->childCount()) && ! bAny; ++i) { bAny = ! pGroup->child(i)->isHidden(); }
      pGroup->setHidden(! bAny && ! s.isEmpty());
   }
}

} // namespace desktop
