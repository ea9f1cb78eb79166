// File > Export model as JSON, and the warning before a reload replaces edits applied to a
// model that was imported from JSON.

#include "desktop/main_window.h"

#include <QFileDialog>
#include <QFileInfo>

#include "context/ctx_global.h"
#include "gui/tools/message_box.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "tools/file_writer.h"

namespace desktop {

bool main_window::exportModelJson(const QString & path, QString & sError) const
{
   if (! m_pProject) { sError = tr("No project is open"); return false; }
   return tools::file_writer::write(path, storage::project_storage::toJson(* m_pProject), sError);
}

QString main_window::askJsonPath() const
{
   // Proposed beside the opened model, never over it.
   const QFileInfo opened(m_sProjectPath);
   const QString sProposed = opened.absolutePath() + "/" + opened.completeBaseName() + "-edited.json";
   if (tools::message_box::isUnattended()) { return sProposed; }
   return QFileDialog::getSaveFileName(const_cast<main_window *>(this), tr("Export model as JSON"), sProposed, tr("JSON models (*.json)"));
}

bool main_window::doActExportJson()
{
   const QString sPath = askJsonPath();
   if (sPath.isEmpty()) { return false; }
   QString sError;
   if (! exportModelJson(sPath, sError))
   {
      addMessage(sError, 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), sError);
      return false;
   }
   addMessage(tr("Model exported as JSON : %1").arg(sPath), 1);
   return true;
}

bool main_window::confirmReload()
{
   if (! m_bEditsApplied || (QFileInfo(m_sProjectPath).suffix().toLower() != "json")) { return true; }
   const QMessageBox::StandardButton answer = tools::message_box::question(this, context::ctx_global::getAppName(),
      tr("The project was imported from '%1'. Reloading imports that file again and replaces the edits applied since.\n\n"
         "Export the edited model as JSON first?").arg(QFileInfo(m_sProjectPath).fileName()),
      QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
   if (answer == QMessageBox::Discard) { return true; }
   if (answer == QMessageBox::Save) { return doActExportJson(); }
   return false;
}

} // namespace desktop
