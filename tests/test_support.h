#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

namespace test_support {

QString sourceDir();
QString binaryDir();
QString examplePath(const QString & name);
QByteArray readAll(const QString & path);
bool writeAll(const QString & path, const QByteArray & data);

// Generated text with the banner's date replaced by a fixed mark: two generations a minute
// apart differ there and nowhere else.
QString withoutBannerDate(QString text);

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

// Every entry below sRoot but those at or below the skipped paths (relative to sRoot), one line
// each, sorted: relative path, kind (dir, file, or link and its target) and a file's SHA-256.
// Two equal states mean nothing below sRoot was created, removed, replaced or written.
QStringList treeState(const QString & sRoot, const QStringList & lstSkip = QStringList());

// Runs one statement with one bound value on a project file, as a hand edit would; true when
// it changed exactly one row.
bool execOnProject(const QString & sFile, const QString & sql, const QVariant & value);

// A value a careless or hostile user writes into a project file with SQL, and what the refusal
// must name.
struct hostile_value
{
   const char * sql;
   QString value;
   const char * expected;
};

// One for each way model text could break out of generated code (the shop example's items).
QList<hostile_value> hostileValues();

} // namespace test_support
