// Loading the export plug-ins and docking the preview of the current one.

#include "desktop/main_window.h"

#include <QAction>
#include <QDir>
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
}

void main_window::setCurrentPlugin(plugin::export_interface * pPlugin)
{
   m_pPlugin = pPlugin;
   if (! m_pPlugin) { return; }
   addMessage(tr("Plug-in '%1' %2 loaded : %3").arg(m_pPlugin->getName(), m_pPlugin->getVersion(), m_pPlugin->getShortDesc()), 1);
   m_actExport->setIcon(m_pPlugin->getIcon());
   m_actExport->setText(tr("&Export (%1)").arg(m_pPlugin->getName()));
   m_actPluginSettings->setIcon(m_pPlugin->getIconSettings());
   m_actPluginSettings->setEnabled(m_pPlugin->hasSettings());

   QWidget * pPreview = m_pPlugin->getPreviewWidget();
   m_pPreviewWidget = pPreview;
   if (! pPreview) { return; }
   m_dockPreview = new QDockWidget(pPreview->windowTitle(), this);
   m_dockPreview->setObjectName("m_dockPreview");
   m_dockPreview->setWindowIcon(pPreview->windowIcon());
   m_dockPreview->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
   // The preview's row of style buttons is wider than a small screen: it scrolls instead of
   // setting the window's minimum width.
   QScrollArea * pScroll = new QScrollArea(m_dockPreview);
   pScroll->setObjectName("m_scrollPreview");
   pScroll->setWidgetResizable(true);
   pScroll->setFrameShape(QFrame::NoFrame);
   pScroll->setWidget(pPreview);
   m_dockPreview->setWidget(pScroll);
   addDockWidget(Qt::RightDockWidgetArea, m_dockPreview);

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
}

void main_window::terminatePlugins()
{
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (info.exportPlugin) { info.exportPlugin->terminate(); }
   }
}

} // namespace desktop
