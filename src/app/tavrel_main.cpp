#include <QApplication>
#include <QDir>
#include <QFile>

#include <unistd.h>

#include "cli_host.h"

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
   QApplication app(argc, argv);
   QApplication::setApplicationName("tavrel");
   QApplication::setApplicationVersion(QString::fromUtf8(TAVREL_VERSION_STR));

   app::cli_host host;
   return host.run(QApplication::arguments());
}
