// Loading the export plug-ins and docking the preview of the current one.

#include "desktop/main_window.h"

#include <QAction>
#include <QActionGroup>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QDockWidget>
#include <QScrollArea>
#include <QMetaMethod>

#include "gui/plugin/export_interface.h"

namespace desktop {

void main_window::loadPlugins()
{
   m_sPluginDir = app::plugin_finder::pluginDirectories().join(QDir::listSeparator());
   m_lstPlugins = app::plugin_finder::findPlugins();
   plugin::export_interface * pFirst = nullptr;
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (! info.exportPlugin)
      {
         addMessage(tr("Plug-in '%1' not loaded : %2").arg(QDir::toNativeSeparators(info.file), info.error), 2);
         continue;
      }
      connect(info.exportPlugin, & plugin::base_interface::onMessage, this, & main_window::doPluginMessage, Qt::UniqueConnection);
      if (! pFirst) { pFirst = info.exportPlugin; }
   }
   if (! pFirst) { addMessage(tr("No export plug-in found in '%1'").arg(QDir::toNativeSeparators(m_sPluginDir)), 2); }
   setCurrentPlugin(pFirst);
   addPluginChoices();
}

void main_window::addPluginChoices()
{
   // Every loaded export plug-in is chosen here; settings, export and preview act on the chosen one.
   QMenu * pMenu = menuBar()->findChild<QMenu *>("m_mnuPlugin");
   if (! pMenu) { return; }
   QActionGroup * pGroup = new QActionGroup(this);
   pGroup->setExclusive(true);
   QAction * pFirstAction = pMenu->actions().value(0);
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (! info.exportPlugin) { continue; }
      QPointer<plugin::export_interface> pPlugin = info.exportPlugin;
      QAction * pChoice = new QAction(info.exportPlugin->getIcon(), info.exportPlugin->getName(), pGroup);
      pChoice->setObjectName("m_actPlugin_" + info.exportPlugin->getName());
      pChoice->setStatusTip(info.exportPlugin->getShortDesc());
      pChoice->setCheckable(true);
      pChoice->setChecked(info.exportPlugin == m_pPlugin);
      connect(pChoice, & QAction::triggered, this, [this, pPlugin]() { if (pPlugin && (pPlugin != m_pPlugin)) { setCurrentPlugin(pPlugin); } });
      pMenu->insertAction(pFirstAction, pChoice);
   }
   if (! pGroup->actions().isEmpty()) { pMenu->insertSeparator(pFirstAction); }
}

void main_window::setCurrentPlugin(plugin::export_interface * pPlugin)
{
   // The preview of the plug-in left belongs to it: it leaves the dock, unplugged from this window.
   if (m_pPreviewWidget && m_dockPreview)
   {
      QObject::disconnect(this, nullptr, m_pPreviewWidget, nullptr);
      if (QScrollArea * pScroll = qobject_cast<QScrollArea *>(m_dockPreview->widget())) { pScroll->takeWidget(); }
      m_pPreviewWidget->hide();
      m_pPreviewWidget->setParent(nullptr);
      m_pPreviewWidget = nullptr;
   }
   m_pPlugin = pPlugin;
   if (! m_pPlugin) { return; }
   addMessage(tr("Plug-in '%1' %2 loaded : %3").arg(m_pPlugin->getName(), m_pPlugin->getVersion(), m_pPlugin->getShortDesc()), 1);
   m_actExport->setIcon(m_pPlugin->getIcon());
   m_actExport->setText(tr("&Export (%1)").arg(m_pPlugin->getName()));
   m_actPluginSettings->setIcon(m_pPlugin->getIconSettings());
   m_actPluginSettings->setText(tr("&Settings (%1)...").arg(m_pPlugin->getName()));
   // The tool bar keeps its short word: the menu names the plug-in.
   m_actPluginSettings->setIconText(tr("Settings"));
   m_actPluginSettings->setEnabled(m_pPlugin->hasSettings());

   QWidget * pPreview = m_pPlugin->getPreviewWidget();
   m_pPreviewWidget = pPreview;
   if (! pPreview) { if (m_dockPreview) { m_dockPreview->hide(); } return; }
   if (! m_dockPreview)
   {
      m_dockPreview = new QDockWidget(pPreview->windowTitle(), this);
      m_dockPreview->setObjectName("m_dockPreview");
      // Closable, or View's entry for it is greyed out.
      m_dockPreview->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable | QDockWidget::DockWidgetClosable);
      // The preview's row of style buttons is wider than a small screen: it scrolls instead of
      // setting the window's minimum width.
      QScrollArea * pScroll = new QScrollArea(m_dockPreview);
      pScroll->setObjectName("m_scrollPreview");
      pScroll->setWidgetResizable(true);
      pScroll->setFrameShape(QFrame::NoFrame);
      m_dockPreview->setWidget(pScroll);
      addDockWidget(Qt::RightDockWidgetArea, m_dockPreview);
   }
   m_dockPreview->setWindowTitle(pPreview->windowTitle());
   m_dockPreview->setWindowIcon(pPreview->windowIcon());
   static_cast<QScrollArea *>(m_dockPreview->widget())->setWidget(pPreview);
   pPreview->show();
   m_dockPreview->show();

   // The preview follows the main window it found when it was built; one it was built for an
   // earlier window must be wired to this one. Made here for both cases, so never twice.
   QObject::disconnect(this, nullptr, pPreview, nullptr);
   const QMetaObject * pMeta = pPreview->metaObject();
   const struct { const char * signal; const char * slot; } lstLinks[] = {
      { SIGNAL(onLoadProject(model::project_ptr)), "doLoadProject(model::project_ptr)" },
      { SIGNAL(onSelectEntity(model::entity_ptr)), "doSelectEntity(model::entity_ptr)" },
      { SIGNAL(onUpdateEntity(model::entity_ptr)), "doSelectEntity(model::entity_ptr)" },
      { SIGNAL(onSelectEnumeration(model::enumeration_ptr)), "doSelectEnumeration(model::enumeration_ptr)" },
      { SIGNAL(onUpdateEnumeration(model::enumeration_ptr)), "doSelectEnumeration(model::enumeration_ptr)" } };
   for (const auto & link : lstLinks)
   {
      if (pMeta->indexOfSlot(link.slot) < 0) { continue; }
      const QByteArray slot = QByteArray("1") + link.slot;   // what SLOT() would make
      QObject::connect(this, link.signal, pPreview, slot.constData());
   }
   // A plug-in chosen later shows the open project and the selection at once.
   if (m_pProject)
   {
      Q_EMIT onLoadProject(m_pProject);
      emitSelection();
   }
   updateActions();
}

void main_window::terminatePlugins()
{
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (info.exportPlugin) { info.exportPlugin->terminate(); }
   }
}

} // namespace desktop
