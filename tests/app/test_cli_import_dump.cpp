// What the import stores, read back by "tavrel dump", is pinned byte for byte: changes made to
// the import for speed or memory must not change a single stored value.

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

QByteArray runTavrelOut(const QStringList & args, int & code)
{
   const test_support::cli_result r = test_support::runTavrel(args);
   code = r.code;
   return r.out.toUtf8();
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

// Import and dump start no GUI application: a display platform that cannot start stops the
// commands that load plug-ins, not these.
TEST(CliImportDump, ImportAndDumpRunWithoutAGuiApplication)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   test_support::cli_options noDisplay;
   noDisplay.env.insert("QT_QPA_PLATFORM", "tavrel-no-such-platform");
   const QString project = tmp.filePath("shop.tavrel");
   EXPECT_EQ(test_support::runTavrel({ "import", test_support::examplePath("shop.json"), project }, noDisplay).code, 0);
   const test_support::cli_result dump = test_support::runTavrel({ "dump", project }, noDisplay);
   EXPECT_EQ(dump.code, 0);
   EXPECT_TRUE(dump.out.contains("\"SHOP\"")) << dump.out.toStdString();
   EXPECT_EQ(test_support::runTavrel({ "--version" }, noDisplay).code, 0);
   EXPECT_NE(test_support::runTavrel({ "plugins" }, noDisplay).code, 0);
}
