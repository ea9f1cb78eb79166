// Running the plug-in: its settings dialog, the export, and the script debugger they may start.

#include "desktop/main_window.h"

#include <QApplication>
#include <QLineEdit>
#include <QKeyEvent>
#include <QDialog>
#include <QDateTime>
#include <QDir>
#include <QStatusBar>

#include "context/ctx_global.h"
#include "desktop/export_preview_dialog.h"
#include "desktop/export_progress.h"
#include "desktop/script_debugger.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "export_lifecycle.h"
#include "gui/plugin/export_files.h"
#include "gui/plugin/export_interface.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "gui/tools/wait_cursor.h"

namespace desktop {

bool main_window::doActPluginSettings()
{
   if (! m_pPlugin) { return false; }
   if (! m_pProject)
   {
      tools::message_box::information(this, context::ctx_global::getAppName() + " - " + m_pPlugin->getName(),
                                      tr("Please open a project first : the plug-in's settings are stored in the project file."));
      return false;
   }
   bool bAccepted = false;
   {
      // The dialog can start the script debugger (its debug button).
      script_watcher watcher;
      connect(& watcher, & script_watcher::debuggingStarted, this, & main_window::doShowDebugger);
      bAccepted = m_pPlugin->showSettings();
   }
   attachRunningDebugger();
   if (bAccepted)
   {
      addMessage(tr("Settings of plug-in '%1' saved").arg(m_pPlugin->getName()), 1);
      refreshPluginViews();
   }
   return bAccepted;
}

QString main_window::exportRefusal() const
{
   if (! m_pPlugin) { return tr("No export plug-in found in '%1'").arg(QDir::toNativeSeparators(m_sPluginDir)); }
   if (! m_pProject) { return tr("Please open a project before exporting it"); }
   if (isExecutingPlugin()) { return tr("An export is already running"); }
   // Text that would break out of the generated code is refused whatever the user answers.
   const QString sTextProblems = model::model_text_rules::problemText(* m_pProject);
   if (! sTextProblems.isEmpty()) { return tr("Export refused, the model holds text that would break out of the generated code :\n%1").arg(sTextProblems); }
   return QString();
}

zy::ZyBool main_window::runPlugin(plugin::export_files & files)
{
   attachRunningDebugger();
   zy::ZyBool result;
   {
      // Holding Shift makes the plug-in start debugging its script inside exportProject.
      script_watcher watcher;
      connect(& watcher, & script_watcher::debuggingStarted, this, & main_window::doShowDebugger);
      tools::wait_cursor wait; Q_UNUSED(wait);
      qApp->installEventFilter(this);
      setExecutingPlugin(true);
      m_pPlugin->setExportFiles(& files);
      {
         const model::list_of_enumeration_ptr pEnums = m_pProject->getListOfAllEnums();
         const int iItems = int(m_pProject->getListOfAllEntities()->size() + (pEnums ? pEnums->size() : 0));
         export_progress progress(this, files, iItems, [this]() { flushMessages(); });
         m_pExportProgress = & progress;
         // A turn before the plug-in checks the model, and one once it has.
         app::export_lifecycle::attachRecord(m_pPlugin->getName(), files, [&progress]() { progress.step(); });
         progress.turn();
         result = m_pPlugin->exportProject(* m_pProject);
         m_pExportProgress = nullptr;
      }
      m_pPlugin->setExportFiles(nullptr);
      setExecutingPlugin(false);
      flushMessages();
      qApp->removeEventFilter(this);
      for (qsizetype i = 0; i < m_lstExportDialogs.size(); ++i) { QApplication::restoreOverrideCursor(); }
      m_lstExportDialogs.clear();
   }
   attachRunningDebugger();
   return result;
}

QString main_window::exportTitle() const
{
   return context::ctx_global::getAppName() + " - " + (m_pPlugin ? m_pPlugin->getName() : tr("Export"));
}

zy::ZyBool main_window::doActExport()
{
   if (! applyTypedDetails()) { return zy::ZyBool(false, tr("The typed changes cannot be applied : nothing exported")); }
   const QString sError = exportRefusal();
   if (! sError.isEmpty())
   {
      tools::message_box::critical(this, exportTitle(), sError);
      return zy::ZyBool(false, sError);
   }
   if (m_pExportPreview) { m_pExportPreview->close(); }

   addMessage(tr("Export of project '%1' with plug-in '%2' started").arg(m_pProject->getName(), m_pPlugin->getName()), 1);
   statusBar()->showMessage(tr("Exporting..."));
   plugin::export_files files;
   const qint64 iStartMs = QDateTime::currentMSecsSinceEpoch();
   const zy::ZyBool result = runPlugin(files);
   if (result && files.isStopped()) { return reportStoppedExport(files, iStartMs); }
   // The plug-in began no export (its settings dialog cancelled, its question declined).
   if (result && files.root().isEmpty() && files.files().isEmpty())
   {
      addMessage(tr("Export cancelled : nothing was exported"), 2);
      statusBar()->showMessage(tr("Export cancelled"), 10000);
      return zy::ZyBool(false, tr("Export cancelled : nothing was exported"));
   }
   if (! result) { reportFailedExport(result); }
   else
   {
      if (! result.getDesc().isEmpty()) { addMessage(result.getDesc(), 1); }
      addMessage(tr("Export ended"), 1);
      showExportSummary(files, iStartMs);
   }
   refreshPluginViews();
   return result;
}

bool main_window::doActExportPreview()
{
   if (! applyTypedDetails()) { return false; }
   const QString sError = exportRefusal();
   if (! sError.isEmpty())
   {
      tools::message_box::critical(this, exportTitle(), sError);
      return false;
   }
   statusBar()->showMessage(tr("Preparing the export preview..."));
   plugin::export_files files;
   files.setDryRun(true);
   files.setKeepTexts(true);
   const qint64 iStartMs = QDateTime::currentMSecsSinceEpoch();
   m_bDryRunning = true;
   zy::ZyBool result = runPlugin(files);
   m_bDryRunning = false;
   // Stopped, or nothing begun (the plug-in's settings dialog cancelled): no preview to show.
   if (result && (files.isStopped() || (files.root().isEmpty() && files.files().isEmpty())))
   {
      addMessage(tr("Export preview cancelled"), 2);
      statusBar()->showMessage(tr("Export preview cancelled"), 10000);
      return false;
   }
   app::export_outcome outcome;
   if (result) { result = app::export_lifecycle::finish(m_pPlugin->getName(), files, true, false, outcome); }
   if (! result)
   {
      reportFailedExport(result);
      return false;
   }
   const QString sSummary = app::export_lifecycle::summary(outcome, (QDateTime::currentMSecsSinceEpoch() - iStartMs) / 1000.0, true);
   addMessage(tr("Export preview (dry run, no file written) : %1").arg(sSummary), 1);
   statusBar()->showMessage(sSummary, 10000);
   if (! m_pExportPreview)
   {
      m_pExportPreview = new export_preview_dialog(this);
      m_pExportPreview->setWindowModality(Qt::WindowModal);
      connect(m_pExportPreview, & export_preview_dialog::exportRequested, this, & main_window::doActExport);
   }
   m_pExportPreview->setPreview(files, outcome, sSummary);
   m_pExportPreview->show();
   m_pExportPreview->raise();
   return true;
}

zy::ZyBool main_window::reportStoppedExport(const plugin::export_files & files, qint64 iStartMs)
{
   app::export_outcome outcome;
   const zy::ZyBool ok = app::export_lifecycle::finishStopped(m_pPlugin->getName(), files, outcome);
   if (! ok) { addMessage(ok.getDesc(), 3); }
   const QString sText = tr("Export cancelled : %1; every other file is as it was").arg(
      app::export_lifecycle::summary(outcome, (QDateTime::currentMSecsSinceEpoch() - iStartMs) / 1000.0, false));
   addMessage(sText, 2);
   statusBar()->showMessage(tr("Export cancelled"), 10000);
   refreshPluginViews();
   return zy::ZyBool(false, sText);
}

void main_window::reportFailedExport(const zy::ZyBool & result)
{
   const QString sText = (result.getDesc().isEmpty() ? tr("The export failed") : result.getDesc());
   addMessage(sText, 3);
   statusBar()->showMessage(tr("Export failed"), 10000);
   tools::message_box::critical(this, exportTitle(), sText);
}

bool main_window::eventFilter(QObject * watched, QEvent * event)
{
   // A line edit claims Ctrl+E (end of line) before the shortcut is looked up: the export's
   // shortcut is left to the window.
   if ((event->type() == QEvent::ShortcutOverride) && qobject_cast<QLineEdit *>(watched))
   {
      const QKeyEvent * pKey = static_cast<QKeyEvent *>(event);
      if (QKeySequence(pKey->keyCombination()) == m_actExport->shortcut()) { return true; }
   }
   // A question, the plug-in's settings or a breakpoint prompt during an export waits for the
   // user: it gets the normal cursor, not the busy one of the export.
   if (isExecutingPlugin() && qobject_cast<QDialog *>(watched))
   {
      if ((event->type() == QEvent::Show) && ! m_lstExportDialogs.contains(watched))
      {
         m_lstExportDialogs.append(watched);
         QApplication::setOverrideCursor(Qt::ArrowCursor);
      }
      else if ((event->type() == QEvent::Hide) && m_lstExportDialogs.removeOne(watched)) { QApplication::restoreOverrideCursor(); }
   }
   return view::main_wnd::eventFilter(watched, event);
}

void main_window::showExportSummary(const plugin::export_files & files, qint64 iStartMs)
{
   app::export_outcome outcome;
   const zy::ZyBool ok = app::export_lifecycle::finish(m_pPlugin->getName(), files, false, false, outcome);
   if (! ok) { addMessage(ok.getDesc(), 3); }
   for (const QString & sLine : outcome.lines) { if (sLine.startsWith('D')) { addMessage(tr("Removed : %1").arg(sLine.mid(2)), 1); } }
   for (const QString & sKept : outcome.kept) { addMessage(tr("Kept : %1").arg(sKept), 2); }
   const QString sSummary = app::export_lifecycle::summary(outcome, (QDateTime::currentMSecsSinceEpoch() - iStartMs) / 1000.0, false);
   addMessage(sSummary, 1);
   statusBar()->showMessage(sSummary, 10000);
}

void main_window::refreshPluginViews()
{
   if (! m_pProject) { return; }
   Q_EMIT onLoadProject(m_pProject);
   emitSelection();
}

void main_window::attachRunningDebugger()
{
   if (! m_pPlugin) { return; }
   const std::shared_ptr<tools::custom_javascript> pScript = m_pPlugin->getCustomScript();
   if (pScript && pScript->isDebugging()) { doShowDebugger(pScript.get()); }
}

void main_window::doShowDebugger(tools::custom_javascript * pScript)
{
   if (! pScript) { return; }
   if (! m_pDebugger) { m_pDebugger = new script_debugger(this); }
   // Called for every message of an export: only a new engine or a hidden window needs work.
   const bool bNewScript = (m_pDebugger->getScript() != pScript);
   if (! bNewScript && m_pDebugger->isVisible()) { return; }
   if (bNewScript) { m_pDebugger->attach(pScript); }
   m_pDebugger->show();
   m_pDebugger->raise();
   // Shown in the middle of an export: it must be drawn before the export goes on.
   if (isExecutingPlugin()) { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }
}

void main_window::doActShowDebugger()
{
   attachRunningDebugger();
   if (! m_pDebugger)
   {
      tools::message_box::information(this, context::ctx_global::getAppName() + " - Script debugger",
                                      tr("No custom script is being debugged.\n\nTo debug one, use the button 'Debug custom javascript file' of the plug-in's settings, "
                                         "or hold the Shift key when you start the export."));
      return;
   }
   m_pDebugger->show();
   m_pDebugger->raise();
}

script_debugger * main_window::getDebugger() const { return m_pDebugger.data(); }
export_preview_dialog * main_window::getExportPreview() const { return m_pExportPreview.data(); }

} // namespace desktop
