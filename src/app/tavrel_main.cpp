#include <QApplication>
#include <QDir>
#include <QFile>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "cli_host.h"
#include "context/ctx_global.h"
#include "context/ctx_project.h"

int main(int argc, char ** argv)
{
   // The plug-ins build widgets (preview, settings dialog), so a GUI application is needed,
   // but an unattended run must not depend on a display.
   if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) { qputenv("QT_QPA_PLATFORM", "offscreen"); }
   // Without a desktop session Qt warns about a missing runtime directory on every start.
   if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
   {
      QString dir = QDir::tempPath() + "/tavrel-runtime-" + QString::number(getuid());
      QDir().mkpath(dir);
      QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
      qputenv("XDG_RUNTIME_DIR", dir.toLocal8Bit());
   }
   // Qt's own option "-plugin" would swallow the host's "--plugin NAME": the application object
   // gets the command line without it, the host the whole of it.
   QStringList args;
   std::vector<char *> qtArgv;
   for (int i = 0; i < argc; ++i)
   {
      args.append(QString::fromLocal8Bit(argv[i]));
      const QByteArray a(argv[i]);
      if ((i > 0) && ((a == "--plugin") || (a == "-plugin"))) { if ((i + 1) < argc) { args.append(QString::fromLocal8Bit(argv[++i])); } continue; }
      if ((i > 0) && (a.startsWith("--plugin=") || a.startsWith("-plugin="))) { continue; }
      qtArgv.push_back(argv[i]);
   }
   int qtArgc = static_cast<int>(qtArgv.size());
   qtArgv.push_back(nullptr);
   // Import and dump run no widget code: a core application is enough for them.
   std::unique_ptr<QCoreApplication> pApp;
   if (app::cli_host::needsWidgets(args)) { pApp = std::make_unique<QApplication>(qtArgc, qtArgv.data()); }
   else { pApp = std::make_unique<QCoreApplication>(qtArgc, qtArgv.data()); }
   QCoreApplication::setApplicationName("tavrel");
   QCoreApplication::setApplicationVersion(context::ctx_global::getAppVersionStr());

   int iCode = 0;
   {
      app::cli_host host;
      iCode = host.run(args);
   }
   // The widgets application is not torn down: its font database's destructor loads the whole
   // font configuration only to free it, half the time of a one-entity export. The host is gone,
   // the project closed and the output flushed; the system frees the rest.
   if (qobject_cast<QApplication *>(pApp.get()))
   {
      context::ctx_project::closeProject();
      std::fflush(stdout);
      std::fflush(stderr);
      std::_Exit(iCode);
   }
   return iCode;
}
