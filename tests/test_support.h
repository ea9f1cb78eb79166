#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace test_support {

QString sourceDir();
QString binaryDir();
QString examplePath(const QString & name);
QByteArray readAll(const QString & path);
bool writeAll(const QString & path, const QByteArray & data);

// One run of the real `tavrel` program.
struct cli_result
{
   int code = -1;   // -1: did not finish in time, -2: crashed
   QString out;
   QString err;
};

// How the program is run. By default: no LUMOR_DIR, offscreen, and a settings folder of its own
// so that the machine's saved global settings stay out of the tests.
struct cli_options
{
   QString workDir;
   QString configHome;
   QMap<QString, QString> env;   // set (or replaced)
   QStringList unset;            // removed
};

cli_result runTavrel(const QStringList & args, const cli_options & options = cli_options());

} // namespace test_support
