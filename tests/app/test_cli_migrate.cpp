// "tavrel migrate": the script between two model versions, its refusals, --check, the file it
// writes and its messages on bad input.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

const char * const k_sOld = R"({ "name": "LIB", "entities": [
  { "id": 1, "name": "Author", "table": "author", "properties": [
    {"id": 1, "name": "id", "type": "long", "primary_key": true},
    {"id": 2, "name": "name", "type": "QString"},
    {"id": 3, "name": "born", "type": "int"} ] } ] })";
// Renamed table and column, the column "born" dropped.
const char * const k_sNew = R"({ "name": "LIB", "entities": [
  { "id": 1, "name": "Writer", "table": "writer", "properties": [
    {"id": 1, "name": "id", "type": "long", "primary_key": true},
    {"id": 2, "name": "full_name", "type": "QString"} ] } ] })";
const char * const k_sOther = R"({ "name": "OTHER", "entities": [
  { "id": 7, "name": "Thing", "properties": [ {"id": 70, "name": "id", "type": "long", "primary_key": true} ] } ] })";

class CliMigrate : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   const QString m_sOld = m_dir.filePath("old.json");
   const QString m_sNew = m_dir.filePath("new.json");

   void SetUp() override { ASSERT_TRUE(m_dir.isValid() && test_support::writeAll(m_sOld, k_sOld) && test_support::writeAll(m_sNew, k_sNew)); }

   test_support::cli_result migrate(const QStringList & args) { return test_support::runTavrel(QStringList { "migrate" } + args); }
};

} // namespace

TEST_F(CliMigrate, WritesTheScriptOnStandardOutputAndNoProjectFile)
{
   const QStringList lstBefore = test_support::treeState(m_dir.path());
   const test_support::cli_result r = migrate({ m_sOld, m_sNew, "--dialect", "postgresql", "--allow-destructive" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.startsWith("-- Migration of a database for postgresql, written by Tavrel\n-- From: model 'LIB' (old.json)\n-- To:   model 'LIB' (new.json)\n-- Steps:\n")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("--   1. rename table author to writer\n--   2. drop column writer.born (loses data)\n--   3. rename column writer.name to full_name\n"));
   EXPECT_TRUE(r.out.contains("ALTER TABLE author RENAME TO writer;\n"));
   EXPECT_TRUE(r.out.contains("ALTER TABLE writer RENAME COLUMN name TO full_name;\n"));
   EXPECT_FALSE(r.out.contains("DROP TABLE"));
   // A JSON model is read in memory: no project file appears beside it.
   EXPECT_EQ(test_support::treeState(m_dir.path()), lstBefore);
}

TEST_F(CliMigrate, ReadsProjectFilesAsWellAsJson)
{
   const QString sProject = m_dir.filePath("old.tavrel");
   ASSERT_EQ(test_support::runTavrel({ "import", m_sOld, sProject }).code, 0);
   const test_support::cli_result fromJson = migrate({ m_sOld, m_sNew, "--dialect", "sqlite", "--allow-destructive" });
   const test_support::cli_result fromProject = migrate({ sProject, m_sNew, "--dialect", "sqlite", "--allow-destructive" });
   ASSERT_EQ(fromProject.code, 0) << fromProject.err.toStdString();
   EXPECT_EQ(QString(fromProject.out).replace("(old.tavrel)", "(old.json)"), fromJson.out);
}

TEST_F(CliMigrate, RefusesStepsThatLoseDataWithAList)
{
   for (const QString & sDialect : { QString("sqlite"), QString("postgresql"), QString("mariadb") })
   {
      const test_support::cli_result r = migrate({ m_sOld, m_sNew, "--dialect", sDialect });
      EXPECT_EQ(r.code, 1) << sDialect.toStdString();
      EXPECT_TRUE(r.out.isEmpty());
      EXPECT_TRUE(r.err.contains("refused: these steps lose data (give --allow-destructive to write them):\n  drop column writer.born\n")) << r.err.toStdString();
   }
   // Adding back is no loss.
   const test_support::cli_result back = migrate({ m_sNew, m_sOld, "--dialect", "mariadb" });
   EXPECT_EQ(back.code, 0) << back.err.toStdString();
   // MariaDB puts it back where the model has it.
   EXPECT_TRUE(back.out.contains("ALTER TABLE author ADD COLUMN born INT AFTER name;")) << back.out.toStdString();
}

TEST_F(CliMigrate, CheckTellsWhetherAMigrationIsNeededAndWritesNothing)
{
   const QString sOut = m_dir.filePath("m.sql");
   const test_support::cli_result needed = migrate({ m_sOld, m_sNew, "--dialect", "sqlite", "--check", "-o", sOut });
   EXPECT_EQ(needed.code, 1);
   EXPECT_TRUE(needed.out.contains("A migration of 4 steps is needed")) << needed.out.toStdString();
   const test_support::cli_result none = migrate({ m_sNew, m_sNew, "--dialect", "sqlite", "--check", "-o", sOut });
   EXPECT_EQ(none.code, 0);
   EXPECT_TRUE(none.out.contains("No migration needed"));
   EXPECT_FALSE(QFile::exists(sOut));
}

TEST_F(CliMigrate, WritesTheFileItIsGivenAndNothingThroughALink)
{
   const QString sOut = m_dir.filePath("m.sql");
   const test_support::cli_result r = migrate({ m_sOld, m_sNew, "--dialect", "postgresql", "--allow-destructive", "-o", sOut });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(QString::fromUtf8(test_support::readAll(sOut)), migrate({ m_sOld, m_sNew, "--dialect", "postgresql", "--allow-destructive" }).out);
   // A refused run leaves the former script whole.
   ASSERT_TRUE(test_support::writeAll(sOut, "old"));
   EXPECT_EQ(migrate({ m_sOld, m_sNew, "--dialect", "postgresql", "-o", sOut }).code, 1);
   EXPECT_EQ(test_support::readAll(sOut), QByteArray("old"));

   const QString sTarget = m_dir.filePath("target.sql");
   ASSERT_TRUE(test_support::writeAll(sTarget, "kept"));
   ASSERT_TRUE(QFile::link(sTarget, m_dir.filePath("link.sql")));
   ASSERT_TRUE(QDir(m_dir.path()).mkdir("real"));
   ASSERT_TRUE(QFile::link(m_dir.filePath("real"), m_dir.filePath("linked")));
   struct bad { QString sFile; const char * message; };
   for (const bad & b : { bad { m_dir.filePath("link.sql"), "symbolic link" }, bad { m_dir.filePath("linked/m.sql"), "symbolic link" },
                          bad { m_dir.filePath("missing/m.sql"), "does not exist" }, bad { m_dir.filePath("real"), "is a directory" } })
   {
      const test_support::cli_result refused = migrate({ m_sOld, m_sNew, "--dialect", "sqlite", "--allow-destructive", "-o", b.sFile });
      EXPECT_EQ(refused.code, 1) << b.sFile.toStdString();
      EXPECT_TRUE(refused.err.contains(b.message)) << refused.err.toStdString();
   }
   EXPECT_EQ(test_support::readAll(sTarget), QByteArray("kept"));
   EXPECT_TRUE(QDir(m_dir.filePath("real")).isEmpty());
   EXPECT_FALSE(QFile::exists(m_dir.filePath("missing")));
}

TEST_F(CliMigrate, BadInputGetsAClearMessage)
{
   const QString sOther = m_dir.filePath("other.json");
   const QString sBroken = m_dir.filePath("broken.json");
   ASSERT_TRUE(test_support::writeAll(sOther, k_sOther));
   ASSERT_TRUE(test_support::writeAll(sBroken, "{ \"name\": \"X\", \"entities\": [ { \"name\": 3 } ] }"));
   struct bad { QStringList args; int code; QString message; };
   const QList<bad> cases = {
      { { m_sOld, m_sNew, "--dialect", "oracle" }, 2, "unknown dialect 'oracle' (sqlite, postgresql, mariadb)" },
      { { m_sOld, m_sNew }, 2, "migrate needs --dialect" },
      { { m_sOld, "--dialect", "sqlite" }, 2, "migrate needs OLD and NEW" },
      { { m_sOld, m_sNew, "--dialect", "sqlite", "--frobnicate" }, 2, "frobnicate" },
      { { m_dir.filePath("missing.json"), m_sNew, "--dialect", "sqlite" }, 1, "no such project file" },
      { { m_sOld, sBroken, "--dialect", "sqlite" }, 1, "broken.json" },
      { { m_sOld, sOther, "--dialect", "sqlite" }, 1, "'" + m_sOld + "' and '" + sOther + "' are not versions of one model" },
   };
   for (const bad & c : cases)
   {
      const test_support::cli_result r = migrate(c.args);
      EXPECT_EQ(r.code, c.code) << c.args.join(' ').toStdString();
      EXPECT_TRUE(r.err.contains(c.message)) << r.err.toStdString();
      EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
   }
}

// A file name that holds a line break stays inside the comment at the script's top.
TEST_F(CliMigrate, FileNamesStayInsideTheirComment)
{
   const QString sHostile = m_dir.filePath("v2\nDROP TABLE author;.json");
   ASSERT_TRUE(test_support::writeAll(sHostile, k_sOld));
   const test_support::cli_result r = migrate({ m_sNew, sHostile, "--dialect", "postgresql" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QString sTop = r.out.left(r.out.indexOf("BEGIN;"));
   ASSERT_TRUE(sTop.contains("(v2 DROP TABLE author;.json)")) << r.out.toStdString();
   for (const QString & sLine : sTop.trimmed().split('\n')) { EXPECT_TRUE(sLine.startsWith("--")) << sLine.toStdString(); }
}

TEST_F(CliMigrate, RunsWithoutAGuiApplication)
{
   test_support::cli_options noDisplay;
   noDisplay.env.insert("QT_QPA_PLATFORM", "tavrel-no-such-platform");
   const test_support::cli_result r = test_support::runTavrel({ "migrate", m_sOld, m_sNew, "--dialect", "sqlite", "--check" }, noDisplay);
   EXPECT_EQ(r.code, 1) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("is needed"));
}

TEST_F(CliMigrate, HelpNamesEveryOption)
{
   const test_support::cli_result r = migrate({ "--help" });
   EXPECT_EQ(r.code, 0);
   EXPECT_TRUE(r.out.startsWith("Usage: tavrel migrate OLD NEW --dialect sqlite|postgresql|mariadb")) << r.out.toStdString();
   for (const char * s : { "--dialect", "--output", "--allow-destructive", "--check", "--include-obsolete" }) { EXPECT_TRUE(r.out.contains(s)) << s; }
   EXPECT_TRUE(test_support::runTavrel({ "--help" }).out.contains("migrate OLD NEW --dialect sqlite|postgresql|mariadb"));
}

// A type without SQL form is written as text, and said so, never dropped.
TEST_F(CliMigrate, TypeWithoutSqlFormIsAWarningNamingTheProperty)
{
   const QString sOdd = m_dir.filePath("odd.json");
   ASSERT_TRUE(test_support::writeAll(sOdd, QByteArray(k_sOld).replace(R"({"id": 3, "name": "born", "type": "int"})", R"({"id": 3, "name": "born", "type": "QVariant"})")));
   const test_support::cli_result r = migrate({ m_sOld, sOdd, "--dialect", "postgresql" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("warning: Author.born: type 'QVariant' has no SQL mapping, written as text")) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("ALTER TABLE author ALTER COLUMN born TYPE text USING born::text;")) << r.out.toStdString();
}
