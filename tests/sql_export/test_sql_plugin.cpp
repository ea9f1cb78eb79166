#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>

#include "context/ctx_project.h"
#include "sql_export/schema/script_file.h"
#include "sql_export/plugin/sql_schema_export.h"
#include "sql_cli_fixture.h"
#include "test_support.h"

namespace {

using sql_export::script_file;

const char * const k_sModel = sql_test::k_sGardenModel;

ino_t inodeOf(const QString & sFile)
{
   struct stat info;
   return ((::stat(QFile::encodeName(sFile).constData(), & info) == 0) ? info.st_ino : 0);
}

class SqlPluginCli : public sql_test::sql_cli_fixture { };

} // namespace

TEST(SqlPlugin, ListedWithItsParameters)
{
   const test_support::cli_result r = test_support::runTavrel({ "plugins" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("Name : TavrelSqlExport"));
   EXPECT_TRUE(r.out.contains("--TavrelSqlExport_dialect="));
   EXPECT_TRUE(r.out.contains("--TavrelSqlExport_path="));
   EXPECT_TRUE(r.out.contains("--TavrelSqlExport_include_obsolete=0/1"));
}

TEST(SqlPlugin, SettingsAreKeptInTheProject)
{
   QTemporaryDir dir;
   ASSERT_TRUE(test_support::writeAll(dir.filePath("garden.json"), QByteArray(k_sModel)));
   const zy::ZyBool opened = context::ctx_project::openProject(dir.filePath("garden.json"));
   ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
   {
      plugin::sql_schema_export p;
      p.setDialect("mariadb");
      p.setScriptPath("db/schema.sql");
      p.setIncludeObsolete(true);
      ASSERT_FALSE(p.saveSettings().isValid());
   }
   plugin::sql_schema_export q;
   ASSERT_FALSE(q.loadSettings().isValid());
   EXPECT_EQ(q.getDialect(), "mariadb");
   EXPECT_EQ(q.getScriptPath(false), "db/schema.sql");
   EXPECT_TRUE(q.getIncludeObsolete());
   q.clearSettings();
   EXPECT_EQ(q.getDialect(), "sqlite");
   context::ctx_project::closeProject();
}

TEST_F(SqlPluginCli, WritesTheScriptAndLeavesAnUnchangedOneAlone)
{
   const QString sFile = m_dir.filePath("garden.sql");
   test_support::cli_result r = exportSql("garden.sql");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QByteArray text = test_support::readAll(sFile);
   EXPECT_TRUE(text.contains("CREATE TABLE plant (\n   id bigint NOT NULL,\n   label text NOT NULL,\n   PRIMARY KEY (id)\n);"));
   const ino_t iBefore = inodeOf(sFile);
   ASSERT_NE(iBefore, 0u);
   r = exportSql("garden.sql");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("Unchanged")) << r.err.toStdString();
   // A replaced file would have a new inode (the write goes through a renamed temporary file).
   EXPECT_EQ(inodeOf(sFile), iBefore);
   r = exportSql("garden.sql", "sqlite");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(test_support::readAll(sFile).contains("id INTEGER NOT NULL"));
}

TEST_F(SqlPluginCli, UnknownDialectIsRefusedAndTouchesNothing)
{
   const QString sFile = m_dir.filePath("garden.sql");
   ASSERT_TRUE(test_support::writeAll(sFile, "kept\n"));
   const test_support::cli_result r = exportSql("garden.sql", "oracle");
   EXPECT_NE(r.code, 0);
   EXPECT_TRUE(r.err.contains("Unknown SQL dialect 'oracle' (known : sqlite, postgresql, mariadb)")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(sFile), QByteArray("kept\n"));
}

TEST_F(SqlPluginCli, NeverWritesThroughASymbolicLink)
{
   QTemporaryDir elsewhere;
   const QString sTarget = elsewhere.filePath("victim.sql");
   ASSERT_TRUE(test_support::writeAll(sTarget, "victim\n"));
   ASSERT_TRUE(QFile::link(sTarget, m_dir.filePath("linked.sql")));
   test_support::cli_result r = exportSql("linked.sql");
   EXPECT_NE(r.code, 0);
   EXPECT_TRUE(r.err.contains("symbolic link")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(sTarget), QByteArray("victim\n"));

   ASSERT_TRUE(QFile::link(elsewhere.path(), m_dir.filePath("out")));
   r = exportSql("out/schema.sql");
   EXPECT_NE(r.code, 0);
   EXPECT_TRUE(r.err.contains("symbolic link")) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(elsewhere.filePath("schema.sql")));
}

TEST(SqlScriptFile, RefusesAMissingFolderAndADirectory)
{
   QTemporaryDir dir;
   QString sReason;
   EXPECT_EQ(script_file::write(dir.filePath("none/schema.sql"), "x", sReason), script_file::outcome_refused);
   EXPECT_TRUE(sReason.contains("does not exist")) << sReason.toStdString();
   ASSERT_TRUE(QDir(dir.path()).mkdir("sub"));
   EXPECT_EQ(script_file::write(dir.filePath("sub"), "x", sReason), script_file::outcome_refused);
   EXPECT_TRUE(sReason.contains("is a directory")) << sReason.toStdString();
   EXPECT_EQ(script_file::write(dir.filePath("a.sql"), "x", sReason), script_file::outcome_written);
   EXPECT_EQ(script_file::write(dir.filePath("a.sql"), "x", sReason), script_file::outcome_unchanged);
}
