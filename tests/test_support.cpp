#include "test_support.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

namespace test_support {

QString sourceDir() { return QString::fromUtf8(TAVREL_SOURCE_DIR); }
QString binaryDir() { return QString::fromUtf8(TAVREL_BINARY_DIR); }
QString examplePath(const QString & name) { return sourceDir() + "/examples/" + name; }

QByteArray readAll(const QString & path)
{
   QFile f(path);
   if (! f.open(QIODevice::ReadOnly)) { return QByteArray(); }
   return f.readAll();
}

bool writeAll(const QString & path, const QByteArray & data)
{
   QDir().mkpath(QFileInfo(path).absolutePath());
   QFile f(path);
   if (! f.open(QIODevice::WriteOnly | QIODevice::Truncate)) { return false; }
   return (f.write(data) == data.size());
}

cli_result runTavrel(const QStringList & args, const cli_options & options)
{
   QProcess proc;
   proc.setProgram(binaryDir() + "/bin/tavrel");
   proc.setArguments(args);
   if (! options.workDir.isEmpty()) { proc.setWorkingDirectory(options.workDir); }
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.remove("LUMOR_DIR");
   env.insert("QT_QPA_PLATFORM", "offscreen");
   env.insert("XDG_CONFIG_HOME", options.configHome.isEmpty() ? (QDir::tempPath() + "/tavrel-test-config") : options.configHome);
   for (const QString & name : options.unset) { env.remove(name); }
   for (auto itr = options.env.cbegin(); itr != options.env.cend(); ++itr) { env.insert(itr.key(), itr.value()); }
   proc.setProcessEnvironment(env);
   proc.start();
   cli_result r;
   // Generous: a loaded machine may take long, and a hang must still end the test.
   if (! proc.waitForFinished(180000)) { proc.kill(); proc.waitForFinished(); return r; }
   r.code = ((proc.exitStatus() == QProcess::NormalExit) ? proc.exitCode() : -2);
   r.out = QString::fromUtf8(proc.readAllStandardOutput());
   r.err = QString::fromUtf8(proc.readAllStandardError());
   return r;
}

} // namespace test_support
