// Opening, importing and reloading a project.

#include "desktop/main_window.h"
#include "desktop/diagram_view.h"
#include "pimpl_setting.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QTreeWidget>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/project.h"
#include "gui/tools/message_box.h"
#include "gui/tools/wait_cursor.h"
#include "zy/ZyInvalidValue.h"

namespace desktop {

zy::ZyBool main_window::openProject(const QString & path)
{
   tools::wait_cursor wait; Q_UNUSED(wait);
   zy::ZyBool ok = context::ctx_project::openProject(path);
   if (! ok) { return ok; }
   m_pProject = context::ctx_project::getProject();
   if (! m_pProject) { return zy::ZyBool(false, tr("Cannot open project '%1'").arg(path)); }
   m_sProjectPath = QFileInfo(path).absoluteFilePath();
   m_bEditsApplied = false;
   m_pUndo->clear();
   m_lstSchemaProblems.clear();
   m_checkSchema.clear();
   m_pEntity.reset();
   m_pEnumeration.reset();

   // The plug-ins' settings are per project: none may survive from the previous one.
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (! info.exportPlugin) { continue; }
      info.exportPlugin->clearSettings();
      info.exportPlugin->loadSettings();
   }

   fillModelTree();
   showItemDetails();
   if (m_viewDiagram) { m_viewDiagram->setProject(m_pProject); }
   Q_EMIT onLoadProject(m_pProject);

   addMessage(tr("Project '%1' opened : %2 entities, %3 enumerations (%4)")
                 .arg(m_pProject->getName()).arg(m_pProject->getListOfAllEntities()->size())
                 .arg(m_pProject->getListOfAllEnums()->size()).arg(QDir::toNativeSeparators(context::ctx_project::getProjectFile())), 1);
   for (const auto & e : m_checkSchema.run(* m_pProject))
   {
      addMessage(tr("Schema error : %1").arg(e.getMessage()), 3);
      m_lstSchemaProblems.append(e.getMessage());
   }
   for (const QString & w : m_pProject->checkWarnings(app::pimpl_setting::isOn(m_lstPlugins, getAppArgs()))) { addMessage(tr("Schema warning : %1").arg(w), 2); }
   const QString sRemembered = rememberedSelection(m_sProjectPath);
   if (! sRemembered.isEmpty()) { selectItem(sRemembered); }
   updateActions();
   updateTitle();
   return ok;
}

void main_window::doActOpenProject()
{
   if (! confirmDiscard()) { return; }
   const QString sStart = (m_sProjectPath.isEmpty() ? QDir::currentPath() : QFileInfo(m_sProjectPath).absolutePath());
   const QString sPath = QFileDialog::getOpenFileName(this, tr("Open project"), sStart,
                                                      tr("Tavrel projects and models (*.tavrel *.json);;Tavrel project files (*.tavrel);;JSON models (*.json);;All files (*)"));
   if (sPath.isEmpty()) { return; }
   zy::ZyBool ok = openProject(sPath);
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), ok.getDesc());
   }
}

void main_window::doActReloadProject()
{
   if (m_sProjectPath.isEmpty()) { return; }
   // A JSON model is imported again, which drops saved edits too: offered as JSON first.
   const bool bJson = (QFileInfo(m_sProjectPath).suffix().toLower() == "json");
   if (bJson ? ! confirmReload() : ! confirmDiscard()) { return; }
   QTreeWidgetItem * pCurrent = m_treeModel->currentItem();
   const QString sKey = (pCurrent ? pCurrent->data(0, k_roleKey).toString() : QString());
   zy::ZyBool ok = openProject(m_sProjectPath);
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), ok.getDesc());
      return;
   }
   if (! sKey.isEmpty()) { selectItem(sKey); }
}

} // namespace desktop
