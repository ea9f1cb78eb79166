// Times the desktop host's export, export preview and Diagram layout on a generated model,
// offscreen, beside the command-line export of the same model with the same settings, and how
// long the window's event loop went without a turn meanwhile (the longest gap between ticks of a
// 10 ms timer). A plain program: figures are printed, nothing is asserted.

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QFile>
#include <QListWidget>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "desktop/diagram_view.h"
#include "desktop/export_preview_dialog.h"
#include "desktop/main_window.h"
#include "gui/tools/message_box.h"
#include "model/global_params.h"
#include "model/plugin_params.h"
#include "model_generator.h"

namespace {

// The longest wait between two ticks of a 10 ms timer while fn runs, and fn's duration.
struct tick_figures { double ms = 0; double maxGapMs = 0; int ticks = 0; };

template <typename Fn> tick_figures ticked(Fn fn)
{
   tick_figures f;
   QElapsedTimer clock;
   qint64 iLast = 0;
   QTimer timer;
   timer.setInterval(10);
   QObject::connect(& timer, & QTimer::timeout, [&] {
      const qint64 iNow = clock.nsecsElapsed();
      f.maxGapMs = std::max(f.maxGapMs, (iNow - iLast) / 1e6);
      iLast = iNow;
      ++f.ticks;
   });
   clock.start();
   timer.start();
   fn();
   f.ms = clock.nsecsElapsed() / 1e6;
   // The wait from the last tick to the end counts as a gap too.
   f.maxGapMs = std::max(f.maxGapMs, (clock.nsecsElapsed() - iLast) / 1e6);
   timer.stop();
   return f;
}

// The export settings both hosts read from their project file.
bool storeSettings(const QString & guid)
{
   context::ctx_scoped scope;
   model::plugin_params::list_of_plugin_params lst;
   const QList<QPair<QString, QVariant>> values = { { "CPP_EXPORT_PATH", QString("out") }, { "GENERATE_CUSTOM_FILES", true } };
   for (const auto & v : values)
   {
      auto p = std::make_shared<model::plugin_params>();
      p->setGuid(guid);
      p->setParamKey(v.first);
      p->setParamValue(v.second);
      lst.insert(lst.count() + 1, p);
   }
   if (model::plugin_params::deleteByGuid(guid, scope.database()).isValid()) { return false; }
   return ! model::plugin_params::insert(lst, scope.database()).isValid();
}

double cliExport(const QString & sProject, const QString & sLumor)
{
   QProcess proc;
   proc.setStandardOutputFile(QProcess::nullDevice());
   proc.setStandardErrorFile(QProcess::nullDevice());
   QElapsedTimer t;
   t.start();
   proc.start(QCoreApplication::applicationDirPath() + "/tavrel", { "export", sProject, "--lumor-path", sLumor, "--yes" });
   if (! proc.waitForFinished(-1) || (proc.exitCode() != 0)) { qFatal("tavrel export of %s failed", qPrintable(sProject)); }
   return t.nsecsElapsed() / 1e6;
}

int countFiles(const QString & sRoot)
{
   QProcess find;
   find.start("find", { sRoot, "-type", "f" });
   find.waitForFinished(-1);
   return int(find.readAllStandardOutput().count('\n'));
}

void writeModel(const QString & sPath, const QByteArray & json)
{
   QDir().mkpath(QFileInfo(sPath).path());
   QFile file(sPath);
   if (! file.open(QIODevice::WriteOnly) || (file.write(json) != json.size())) { qFatal("cannot write %s", qPrintable(sPath)); }
}

void printRow(const char * sWhat, const tick_figures & f, double dCliMs)
{
   std::printf("| %s | %.0f | %.0f | %.2f | %.1f | %d |\n", sWhat, f.ms, dCliMs, (dCliMs > 0) ? f.ms / dCliMs : 0.0, f.maxGapMs, f.ticks);
   std::fflush(stdout);
}

void runExports(desktop::main_window & w, const QString & sWork, const QString & sLumor, int iRepeat)
{
   const QString sGuid = w.getPlugin()->getGuid();
   const QString sCli = sWork + "/cli/model.json";
   if (! context::ctx_project::openProject(sCli).getValue() || ! storeSettings(sGuid)) { qFatal("cannot prepare the command-line project"); }
   context::ctx_project::closeProject();
   const QString sCliProject = sWork + "/cli/model.tavrel";
   if (! w.openProject(sWork + "/gui/model.json") || ! storeSettings(sGuid)) { qFatal("cannot open the desktop project"); }

   std::printf("| run | desktop ms | command line ms | desktop / command line | longest gap between ticks ms | ticks |\n");
   std::printf("|---|---:|---:|---:|---:|---:|\n");
   const double dCliCold = cliExport(sCliProject, sLumor);
   const tick_figures cold = ticked([&] { if (! w.doActExport()) { qFatal("the desktop export failed"); } });
   printRow("cold export", cold, dCliCold);
   for (int r = 0; r < iRepeat; ++r)
   {
      // The messages of the earlier exports stay: the list grows as a user's does.
      const double dCli = cliExport(sCliProject, sLumor);
      const tick_figures again = ticked([&] { if (! w.doActExport()) { qFatal("the desktop export failed"); } });
      printRow("unchanged re-export", again, dCli);
   }
   const tick_figures preview = ticked([&] { if (! w.doActExportPreview()) { qFatal("the preview failed"); } });
   if (w.getExportPreview()) { w.getExportPreview()->close(); }
   // The command line's dry run of the same tree.
   QProcess proc;
   proc.setStandardOutputFile(QProcess::nullDevice());
   proc.setStandardErrorFile(QProcess::nullDevice());
   QElapsedTimer t;
   t.start();
   proc.start(QCoreApplication::applicationDirPath() + "/tavrel", { "export", sCliProject, "--lumor-path", sLumor, "--yes", "--dry-run" });
   proc.waitForFinished(-1);
   printRow("preview (dry run)", preview, t.nsecsElapsed() / 1e6);
   std::printf("\n%d files in the desktop's tree, %d in the command line's; %d message lines\n\n", countFiles(sWork + "/gui/out"),
               countFiles(sWork + "/cli/out"), w.getMessageList()->count());
}

void runDiagram(desktop::main_window & w)
{
   w.getDiagramDock()->show();
   w.getDiagramDock()->raise();
   desktop::diagram_view * pView = w.getDiagramView();
   for (int i = 0; (i < 200) && ! pView->isShown(); ++i) { QCoreApplication::processEvents(QEventLoop::AllEvents, 10); }
   if (! pView->isShown()) { qFatal("the Diagram did not come to the front"); }
   // The first layout (of every namespace) fills the namespace list.
   QElapsedTimer first;
   first.start();
   while ((pView->getLayoutCount() == 0) && (first.elapsed() < 300000)) { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); }
   QComboBox * pNamespaces = pView->getNamespaceFilter();
   std::printf("| diagram | boxes | layout ms | longest gap between ticks ms | ticks |\n|---|---:|---:|---:|---:|\n");
   // Every namespace in turn, then all of them (past the layout's bound: refused at once).
   for (int i = 1; i <= pNamespaces->count(); ++i)
   {
      const int iIndex = (i % pNamespaces->count());
      const int iBefore = pView->getLayoutCount();
      const tick_figures f = ticked([&] {
         pNamespaces->setCurrentIndex(iIndex);
         QElapsedTimer wait;
         wait.start();
         while ((pView->getLayoutCount() == iBefore) && (wait.elapsed() < 300000)) { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); }
      });
      std::printf("| %s | %d | %.0f | %.1f | %d |\n", qPrintable(pNamespaces->itemText(iIndex)), int(pView->getBoxKeys().size()), f.ms, f.maxGapMs, f.ticks);
      std::fflush(stdout);
   }
}

} // namespace

int main(int argc, char ** argv)
{
   QApplication app(argc, argv);
   QCoreApplication::setApplicationName("tavrel_desktop_bench");
   tools::message_box::setUnattended(true);
   tools::message_box::setPrintUnattended(false);

   QCommandLineParser parser;
   parser.setApplicationDescription("Desktop export, preview and Diagram layout on a synthetic model, beside the command line.");
   parser.addHelpOption();
   QCommandLineOption optEntities("entities", "Entities of the model (default 2000).", "n");
   QCommandLineOption optRepeat("repeat", "Unchanged re-exports after the first export (default 2).", "n");
   QCommandLineOption optNoDiagram("no-diagram", "Leave the Diagram out.");
   QCommandLineOption optNoExport("no-export", "Leave the exports out.");
   parser.addOptions({ optEntities, optRepeat, optNoDiagram, optNoExport });
   parser.process(app);
   const int iEntities = (parser.isSet(optEntities) ? std::max(1, parser.value(optEntities).toInt()) : 2000);
   const int iRepeat = (parser.isSet(optRepeat) ? std::max(0, parser.value(optRepeat).toInt()) : 2);

   QTemporaryDir tmp;
   const QString sLumor = tmp.filePath("lumor");
   QDir().mkpath(sLumor);
   qputenv("TAVREL_PLUGIN_DIR", (QCoreApplication::applicationDirPath() + "/plugins").toLocal8Bit());
   // The command-line host keeps its settings out of the user's too.
   qputenv("XDG_CONFIG_HOME", tmp.filePath("config").toLocal8Bit());
   context::ctx_global::setSettingsFile(tmp.filePath("settings.ini"));
   context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());
   context::ctx_global::initGlobalParams(sLumor);

   bench::model_options opt;
   opt.entities = iEntities;
   const QByteArray json = bench::generateModelJson(opt);
   writeModel(tmp.filePath("cli/model.json"), json);
   writeModel(tmp.filePath("gui/model.json"), json);

   desktop::main_window w;
   w.resize(1280, 800);
   w.show();
   QCoreApplication::processEvents();
   if (! w.getPlugin()) { qFatal("no plug-in beside the program"); }
   std::printf("%d entities\n\n", iEntities);
   if (! parser.isSet(optNoExport)) { runExports(w, tmp.path(), sLumor, iRepeat); }
   else if (! w.openProject(tmp.filePath("gui/model.json"))) { qFatal("cannot open the model"); }
   if (! parser.isSet(optNoDiagram)) { runDiagram(w); }
   w.getUndoStack()->clear();
   return 0;
}
