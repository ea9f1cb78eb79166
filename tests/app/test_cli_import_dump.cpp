// What the import stores, read back by "tavrel dump", is pinned byte for byte: changes made to
// the import for speed or memory must not change a single stored value.

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

QByteArray runTavrelOut(const QStringList & args, int & code)
{
   QProcess proc;
   proc.setProgram(test_support::binaryDir() + "/bin/tavrel");
   proc.setArguments(args);
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.insert("QT_QPA_PLATFORM", "offscreen");
   env.insert("XDG_CONFIG_HOME", QDir::tempPath() + "/tavrel-test-config");
   proc.setProcessEnvironment(env);
   proc.start();
   code = -1;
   if (! proc.waitForFinished(120000)) { proc.kill(); proc.waitForFinished(); return QByteArray(); }
   code = ((proc.exitStatus() == QProcess::NormalExit) ? proc.exitCode() : -2);
   return proc.readAllStandardOutput();
}

} // namespace

TEST(CliImportDump, StoredModelIsReadBackByteForByte)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString data = test_support::sourceDir() + "/tests/app/data/";
   const QString project = tmp.filePath("model.tavrel");
   int code = -1;
   runTavrelOut({ "import", data + "import_dump_model.json", project }, code);
   ASSERT_EQ(code, 0);
   const QByteArray dump = runTavrelOut({ "dump", project }, code);
   ASSERT_EQ(code, 0);
   EXPECT_EQ(dump, test_support::readAll(data + "import_dump_model.dump.json"));

   // A second import into the same file replaces the model with the same one.
   runTavrelOut({ "import", data + "import_dump_model.json", project }, code);
   ASSERT_EQ(code, 0);
   EXPECT_EQ(runTavrelOut({ "dump", project }, code), dump);
}
