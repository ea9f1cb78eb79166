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

zy::ZyBool main_window::doActExport()
{
   const QString sTitle = context::ctx_global::getAppName() + " - " + (m_pPlugin ? m_pPlugin->getName() : tr("Export"));
   QString sError;
   if (! m_pPlugin) { sError = tr("No export plug-in found in '%1'").arg(QDir::toNativeSeparators(m_sPluginDir)); }
   else if (! m_pProject) { sError = tr("Please open a project before exporting it"); }
   else if (isExecutingPlugin()) { sError = tr("An export is already running"); }
   else
   {
      // Text that would break out of the generated code is refused whatever the user answers.
      const QString sTextProblems = model::model_text_rules::problemText(* m_pProject);
      if (! sTextProblems.isEmpty()) { sError = tr("Export refused, the model holds text that would break out of the generated code :\n%1").arg(sTextProblems); }
   }
   if (! sError.isEmpty())
   {
      tools::message_box::critical(this, sTitle, sError);
      return zy::ZyBool(false, sError);
   }

   attachRunningDebugger();
   addMessage(tr("Export of project '%1' with plug-in '%2' started").arg(m_pProject->getName(), m_pPlugin->getName()), 1);
   statusBar()->showMessage(tr("Exporting..."));
   zy::ZyBool result;
   plugin::export_files files;
   const qint64 iStartMs = QDateTime::currentMSecsSinceEpoch();
   {
      // Holding Shift makes the plug-in start debugging its script inside exportProject.
      script_watcher watcher;
      connect(& watcher, & script_watcher::debuggingStarted, this, & main_window::doShowDebugger);
      tools::wait_cursor wait; Q_UNUSED(wait);
      qApp->installEventFilter(this);
      setExecutingPlugin(true);
      m_pPlugin->setExportFiles(& files);
      result = m_pPlugin->exportProject(* m_pProject);
      m_pPlugin->setExportFiles(nullptr);
      setExecutingPlugin(false);
      qApp->removeEventFilter(this);
      for (qsizetype i = 0; i < m_lstExportDialogs.size(); ++i) { QApplication::restoreOverrideCursor(); }
      m_lstExportDialogs.clear();
   }
   attachRunningDebugger();

   if (! result)
   {
      const QString sText = (result.getDesc().isEmpty() ? tr("The export failed") : result.getDesc());
      addMessage(sText, 3);
      statusBar()->showMessage(tr("Export failed"), 10000);
      tools::message_box::critical(this, sTitle, sText);
   }
   else
   {
      if (! result.getDesc().isEmpty()) { addMessage(result.getDesc(), 1); }
      addMessage(tr("Export ended"), 1);
      showExportSummary(files, iStartMs);
   }
   refreshPluginViews();
   return result;
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

} // namespace desktop
