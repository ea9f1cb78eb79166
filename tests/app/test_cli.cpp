#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

using run_result = test_support::cli_result;

run_result runTavrel(const QStringList & args, const QString & workDir = QString())
{
   test_support::cli_options options;
   options.workDir = workDir;
   return test_support::runTavrel(args, options);
}

} // namespace

TEST(Cli, HelpAndVersion)
{
   run_result r = runTavrel({ "--help" });
   EXPECT_EQ(r.code, 0);
   EXPECT_TRUE(r.out.contains("import MODEL.json PROJECT.tavrel"));
   EXPECT_TRUE(r.out.contains("--lumor-path"));
   r = runTavrel({ "--version" });
   EXPECT_EQ(r.code, 0);
   EXPECT_TRUE(r.out.startsWith("tavrel ")) << r.out.toStdString();
}

TEST(Cli, UsageErrorsExitWithTwo)
{
   run_result r = runTavrel({ "bogus" });
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("unknown command 'bogus'")) << r.err.toStdString();
   r = runTavrel({});
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("no command given"));
   r = runTavrel({ "import", "only-one.json" });
   EXPECT_EQ(r.code, 2);
   r = runTavrel({ "check", "x.tavrel", "--yes" });
   EXPECT_EQ(r.code, 2);
   r = runTavrel({ "export", "x.tavrel", "--yes", "--no" });
   EXPECT_EQ(r.code, 2);
   r = runTavrel({ "--frobnicate" });
   EXPECT_EQ(r.code, 2);
}

TEST(Cli, MissingFileDirectoryAndCorruptProject)
{
   QTemporaryDir tmp;
   run_result r = runTavrel({ "check", tmp.filePath("missing.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("missing.tavrel")) << r.err.toStdString();

   r = runTavrel({ "dump", tmp.path() });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains(QFileInfo(tmp.path()).fileName())) << r.err.toStdString();

   ASSERT_TRUE(test_support::writeAll(tmp.filePath("corrupt.tavrel"), QByteArray("this is not a database at all\n").repeated(40)));
   r = runTavrel({ "check", tmp.filePath("corrupt.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("corrupt.tavrel")) << r.err.toStdString();
   // A failed open leaves the file as it was.
   EXPECT_EQ(test_support::readAll(tmp.filePath("corrupt.tavrel")), QByteArray("this is not a database at all\n").repeated(40));
}

TEST(Cli, ImportDumpCheckRoundTrip)
{
   QTemporaryDir tmp;
   const QString project = tmp.filePath("shop.tavrel");
   run_result r = runTavrel({ "import", test_support::examplePath("shop.json"), project });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(QFileInfo::exists(project));

   r = runTavrel({ "dump", project });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   ASSERT_TRUE(test_support::writeAll(tmp.filePath("again.json"), r.out.toUtf8()));
   run_result r2 = runTavrel({ "import", tmp.filePath("again.json"), tmp.filePath("again.tavrel") });
   ASSERT_EQ(r2.code, 0) << r2.err.toStdString();
   r2 = runTavrel({ "dump", tmp.filePath("again.tavrel") });
   EXPECT_EQ(r2.out, r.out);

   r = runTavrel({ "check", project });
   EXPECT_EQ(r.code, 0) << r.out.toStdString() << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("Project 'SHOP'")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("0 error(s)"));
}

TEST(Cli, CheckReportsSchemaErrorsWithExitOne)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("bad.json");
   ASSERT_TRUE(test_support::writeAll(model, R"({"name": "Bad", "entities": [
      {"name": "A", "properties": [{"name": "x"}, {"name": "id", "type": "long", "primary_key": true}]}]})"));
   run_result r = runTavrel({ "check", model });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.out.contains("error: ")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("'x'")) << r.out.toStdString();
   EXPECT_TRUE(QFileInfo::exists(tmp.filePath("bad.tavrel")));
}

TEST(Cli, ImportErrorNamesFileAndPlaceAndKeepsProject)
{
   QTemporaryDir tmp;
   const QString project = tmp.filePath("p.tavrel");
   ASSERT_EQ(runTavrel({ "import", test_support::examplePath("shop.json"), project }).code, 0);
   const QByteArray before = test_support::readAll(project);

   ASSERT_TRUE(test_support::writeAll(tmp.filePath("broken.json"), "{\n  \"name\": \"X\",\n  \"entities\": [ }\n"));
   run_result r = runTavrel({ "import", tmp.filePath("broken.json"), project });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("broken.json")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("broken.json:3:17: JSON syntax error")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(project), before);
}

TEST(Cli, PluginsListsTheCppExport)
{
   run_result r = runTavrel({ "plugins" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("Name : TavrelCppExport"));
   EXPECT_TRUE(r.out.contains("Version : 1.2.3"));
   EXPECT_TRUE(r.out.contains("Short description : Export to C++ project"));
   EXPECT_TRUE(r.out.contains("Description : This plugin exports current opened project to a C++ project."));
   EXPECT_TRUE(r.out.contains("  --TavrelCppExport_custom_javacript=\"<Custom JS>\" : [Optional] Custom script (javascript file) to change the default behaviour of the export process"));
   EXPECT_TRUE(r.out.contains("IID : TavrelCppExport"));
}
