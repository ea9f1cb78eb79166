#include <QApplication>
#include <QCommandLineParser>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QScreen>
#include <QTabWidget>
#include <QTimer>

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "context/ctx_global.h"
#include "desktop/import_db_dialog.h"
#include "desktop/main_window.h"
#include "desktop/script_debugger.h"
#include "gui/plugin/export_interface.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "tools/terminal_text.h"

namespace {

// Plug-in parameters are "--<plug-in>_<name>[=value]": the plug-in reads them itself at its
// first export, the option parser must not see them.
bool isPluginParameter(const QString & arg)
{
   if (! arg.startsWith("--")) { return false; }
   return arg.mid(2).section('=', 0, 0).contains('_');
}

bool saveGrab(QWidget * pWidget, const QString & file)
{
   const bool ok = pWidget->grab().save(file, "PNG");
   std::fprintf(stderr, "tavrel-gui: %s '%s'\n", (ok ? "saved" : "cannot save"), qPrintable(QDir::toNativeSeparators(file)));
   return ok;
}

struct dialog_catcher
{
   QString file;
   QWidget * pBackdrop = nullptr;   // also shown: the picture is the screen around both
   QString tab;                     // the dialog's tab in front, when it has tabs
   bool grabbed = false;
   bool done = false;   // the dialog's call has returned: stop looking
};

// The screen where a dialog stands over its window, as a user sees it.
bool saveScreenArea(QWidget * pDialog, QWidget * pBackdrop, const QString & file)
{
   QScreen * pScreen = pBackdrop->screen();
   const QRect area = pBackdrop->frameGeometry().united(pDialog->frameGeometry());
   const bool ok = pScreen->grabWindow(0, area.x(), area.y(), area.width(), area.height()).save(file, "PNG");
   std::fprintf(stderr, "tavrel-gui: %s '%s'\n", (ok ? "saved" : "cannot save"), qPrintable(QDir::toNativeSeparators(file)));
   return ok;
}

void catchDialog(const std::shared_ptr<dialog_catcher> & pCatch, int attempts)
{
   if (pCatch->done) { return; }
   QDialog * pDialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
   if (! pDialog)
   {
      if (attempts > 0) { QTimer::singleShot(100, [pCatch, attempts]() { catchDialog(pCatch, attempts - 1); }); }
      return;
   }
   if (QTabWidget * pTabs = pDialog->findChild<QTabWidget *>(); pTabs && ! pCatch->tab.isEmpty())
   {
      for (int i = 0; i < pTabs->count(); ++i) { if (pTabs->tabText(i).remove('&') == pCatch->tab) { pTabs->setCurrentIndex(i); } }
   }
   if (pCatch->pBackdrop)
   {
      // Without a window manager the dialog opens in a corner: it is centred over the window,
      // painted and placed before the screen is read.
      pDialog->move(pCatch->pBackdrop->frameGeometry().center() - pDialog->rect().center());
      for (int i = 0; i < 5; ++i) { QCoreApplication::processEvents(); }
      pCatch->grabbed = saveScreenArea(pDialog, pCatch->pBackdrop, pCatch->file);
   }
   else { pCatch->grabbed = saveGrab(pDialog, pCatch->file); }
   pDialog->reject();
}

// The property editor open on the selected entity's first relation, over the main window.
bool grabRelationEditor(desktop::main_window & w, const QString & dir, const QString & key)
{
   const model::entity_ptr pEntity = (w.getProject() ? w.getProject()->getEntityByKey(key) : model::entity_ptr());
   if (! pEntity) { return true; }
   model::property_ptr pRelation;
   for (const model::property_ptr & p : pEntity->getListOfProperty(false, true, false))
   {
      if (p && p->getRelation()) { pRelation = p; break; }
   }
   if (! pRelation) { return true; }
   auto pCatch = std::make_shared<dialog_catcher>();
   pCatch->file = QDir(dir).absoluteFilePath("property_editor.png");
   pCatch->pBackdrop = & w;
   pCatch->tab = QStringLiteral("Relation");
   QTimer::singleShot(300, [pCatch]() { catchDialog(pCatch, 50); });
   w.editProperty(pEntity, pRelation);
   pCatch->done = true;
   return pCatch->grabbed;
}

// Documentation pictures: the main window after an export with the selection shown, the
// plug-in's settings dialog, and the script debugger during a second export when the settings
// name a user script. Runs unattended: every question gets its default answer.
int takeScreenshots(desktop::main_window & w, const QString & dir, const QString & key)
{
   QDir().mkpath(dir);
   if (w.getPlugin() && w.getProject()) { w.doActExport(); }
   if (! key.isEmpty()) { w.selectItem(key); }
   for (int i = 0; i < 5; ++i) { QCoreApplication::processEvents(); }
   bool ok = saveGrab(& w, QDir(dir).absoluteFilePath("main_window.png"));
   if (QDockWidget * pDiagram = w.getDiagramDock())
   {
      // The Diagram tab in front, the selected entity's box centred.
      pDiagram->raise();
      if (! key.isEmpty()) { w.selectItem(key); }
      for (int i = 0; i < 5; ++i) { QCoreApplication::processEvents(); }
      ok = (saveGrab(& w, QDir(dir).absoluteFilePath("diagram_view.png")) && ok);
      if (w.getPreviewDock()) { w.getPreviewDock()->raise(); }
   }
   ok = (grabRelationEditor(w, dir, key) && ok);

   if (w.getPlugin() && w.getProject())
   {
      // The dialog is modal: it is caught once its own event loop runs, grabbed and dismissed.
      auto pCatch = std::make_shared<dialog_catcher>();
      pCatch->file = QDir(dir).absoluteFilePath("settings_dialog.png");
      QTimer::singleShot(300, [pCatch]() { catchDialog(pCatch, 50); });
      w.doActPluginSettings();
      pCatch->done = true;
      const bool bGrabbed = pCatch->grabbed;
      ok = (ok && bGrabbed);

      // The script engine of the first export, debugged as holding Shift would do it.
      const std::shared_ptr<tools::custom_javascript> pScript = w.getPlugin()->getCustomScript();
      if (pScript && pScript->isLoaded() && pScript->runDebugger().getValue())
      {
         w.doActExport();
         desktop::script_debugger * pDebugger = w.getDebugger();
         if (pDebugger)
         {
            pDebugger->resize(1100, 720);
            pDebugger->selectCall("BEFORE_CLOSING_FILE", true);
            for (int i = 0; i < 5; ++i) { QCoreApplication::processEvents(); }
            ok = (saveGrab(pDebugger, QDir(dir).absoluteFilePath("script_debugger.png")) && ok);
            pDebugger->close();
         }
      }
   }
   return (ok ? 0 : 1);
}

} // namespace

int main(int argc, char ** argv)
{
   // Without a desktop session Qt warns about a missing runtime directory on every start.
   if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
   {
      QString dir = QDir::tempPath() + "/tavrel-runtime-" + QString::number(getuid());
      QDir().mkpath(dir);
      QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
      qputenv("XDG_RUNTIME_DIR", dir.toLocal8Bit());
   }
   QApplication app(argc, argv);
   QApplication::setApplicationName("tavrel-gui");
   QApplication::setApplicationVersion(context::ctx_global::getAppVersionStr());

   QStringList parserArgs;
   for (const QString & a : QCoreApplication::arguments()) { if (! isPluginParameter(a)) { parserArgs.append(a); } }
   QCommandLineParser parser;
   parser.setApplicationDescription("Tavrel desktop host: browse an entity model, preview and export it with the plug-ins.\n\n"
                                    "PROJECT is a .tavrel project file, or a .json model that is first imported into the\n"
                                    ".tavrel file of the same base name beside it. Plug-in parameters\n"
                                    "(--PluginName_parameter=value, see 'tavrel plugins') apply to the first export.");
   parser.addHelpOption();
   parser.addVersionOption();
   QCommandLineOption optLumor("lumor-path", "Lumor library directory (else $LUMOR_DIR, else the saved global settings).", "DIR");
   QCommandLineOption optSelect("select", "Select the entity or enumeration KEY (e.g. shop::sales::Order) once the project is open.", "KEY");
   QCommandLineOption optShots("screenshots", "Save the documentation screenshots into DIR, then quit.", "DIR");
   optShots.setFlags(QCommandLineOption::HiddenFromHelp);
   parser.addOptions({ optLumor, optSelect, optShots });
   parser.addPositionalArgument("PROJECT", "Project to open.", "[PROJECT]");
   parser.process(parserArgs);
   if (parser.positionalArguments().size() > 1)
   {
      std::fprintf(stderr, "tavrel-gui: only one PROJECT may be given\n");
      return 2;
   }

   const QString sLumorPath = parser.value(optLumor);
   const bool bScreenshots = parser.isSet(optShots);
   context::ctx_global::initGlobalParams(sLumorPath);
   if (bScreenshots)
   {
      tools::message_box::setUnattended(true);
      tools::message_box::setFixedAnswer(QMessageBox::Yes);
   }

   int rc = 0;
   {
      desktop::main_window w;
      w.setLumorPathOption(sLumorPath);
      desktop::import_db_dialog::installMenuEntry(& w);
      w.show();
      if (! parser.positionalArguments().isEmpty())
      {
         zy::ZyBool ok = w.openProject(parser.positionalArguments().first());
         if (! ok)
         {
            w.addMessage(ok.getDesc(), 3);
            if (bScreenshots) { std::fprintf(stderr, "tavrel-gui: %s\n", qPrintable(tools::terminal_text::escape(ok.getDesc()))); return 1; }
            tools::message_box::critical(& w, context::ctx_global::getAppName(), ok.getDesc());
         }
      }
      const QString sKey = parser.value(optSelect);
      if (! sKey.isEmpty() && ! w.selectItem(sKey)) { w.addMessage(QObject::tr("No entity or enumeration '%1' in the project").arg(sKey), 2); }

      if (bScreenshots)
      {
         const QString sDir = parser.value(optShots);
         QTimer::singleShot(0, & w, [&]() { QCoreApplication::exit(takeScreenshots(w, sDir, sKey)); });
      }
      rc = app.exec();
      w.terminatePlugins();
      // The plug-ins hand their widgets back for deferred deletion, which must happen while Qt runs.
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
   }
   return rc;
}
