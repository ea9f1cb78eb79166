// Runs random bytes as a DDL script in the loader's scratch database. Whatever the input, the
// load must end with a database or an error text, no file may appear (the scratch database
// lives in memory, so any file is outside it), and a statement that reaches past the scratch
// database or is no schema statement must never be accepted.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <unistd.h>

#include "db_import/ddl_loader.h"
#include "fuzz_support.h"

namespace {

// The seeds aim their files here and at the working folder.
const char * const k_sTarget = "/tmp/tavrel_fuzz_ddl_target.db";

QTemporaryDir * s_pDir = nullptr;

QStringList entriesOf(const QString & sDir)
{
   return QDir(sDir).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// The statements the loader must refuse, by their first word.
bool isAttack(const QString & sStatement)
{
   static const QRegularExpression re("^(attach|detach|vacuum|select|update|delete|with|analyze|reindex|pragma(?!\\s+(main\\s*\\.\\s*)?foreign_keys\\b))\\b",
                                      QRegularExpression::CaseInsensitiveOption);
   return re.match(sStatement).hasMatch();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
   fuzz_support::ensureApplication();
   s_pDir = new QTemporaryDir();
   fuzz_support::check(s_pDir->isValid() && (::chdir(s_pDir->path().toLocal8Bit().constData()) == 0), "no working folder");
   QFile::remove(k_sTarget);
   return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t * data, size_t size)
{
   const QString sScript = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
   bool bLoaded = false;
   QString sError;
   {
      db_import::ddl_loader loader;
      bLoaded = loader.loadText(sScript, "fuzz.sql", false, sError);
      fuzz_support::check(bLoaded || ! sError.isEmpty(), "failed load without a message");
   }
   fuzz_support::check(entriesOf(s_pDir->path()).isEmpty(), "the script created a file", entriesOf(s_pDir->path()).join('\n') + "\n--- script ---\n" + sScript);
   fuzz_support::check(! QFileInfo::exists(k_sTarget), "the script created a file", QString(k_sTarget) + "\n--- script ---\n" + sScript);
   if (! bLoaded) { return 0; }
   for (const db_import::ddl_loader::statement & s : db_import::ddl_loader::split(sScript))
   {
      fuzz_support::check(! isAttack(s.sText), "a statement that is no schema statement was accepted", s.sText);
   }
   return 0;
}
