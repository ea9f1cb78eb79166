#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include "sql_cli_fixture.h"
#include "test_support.h"

namespace {

// The same model with one more column.
const char * const k_sGrown = R"({ "name": "Garden", "entities": [
  {"name": "Plant", "table": "plant", "properties": [
    {"name": "id", "type": "long", "primary_key": true},
    {"name": "label", "type": "QString", "allow_null": false},
    {"name": "height", "type": "double"} ]} ] })";

class SqlLifecycle : public sql_test::sql_cli_fixture { };

} // namespace

TEST_F(SqlLifecycle, CheckDryRunAndDiffFollowTheScript)
{
   const QString sFile = m_dir.filePath("garden.sql");
   test_support::cli_result r = exportSql("garden.sql");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.startsWith("1 files: 1 written, 0 unchanged, 0 removed (")) << r.out.toStdString();

   r = exportSql("garden.sql", "postgresql", { "--check" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.startsWith("1 files: 0 to write, 1 unchanged, 0 to remove (")) << r.out.toStdString();
   EXPECT_EQ(r.out.count('\n'), 1) << r.out.toStdString();

   ASSERT_TRUE(test_support::writeAll(m_sModel, QByteArray(k_sGrown)));
   const QByteArray before = test_support::readAll(sFile);
   const QDateTime modified = QFileInfo(sFile).lastModified();
   r = exportSql("garden.sql", "postgresql", { "--dry-run", "--diff" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.startsWith("M garden.sql\n")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("+++ b/garden.sql")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("\n+   height double precision")) << r.out.toStdString();
   EXPECT_EQ(test_support::readAll(sFile), before);
   EXPECT_EQ(QFileInfo(sFile).lastModified(), modified);

   r = exportSql("garden.sql", "postgresql", { "--check" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("not up to date")) << r.err.toStdString();
   r = exportSql("garden.sql");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(test_support::readAll(sFile).contains("height double precision"));
   EXPECT_EQ(exportSql("garden.sql", "postgresql", { "--check" }).code, 0);
}

TEST_F(SqlLifecycle, AnotherScriptInTheSameFolderIsNoStaleFile)
{
   ASSERT_EQ(exportSql("garden.pg.sql").code, 0);
   const test_support::cli_result r = exportSql("garden.lite.sql", "sqlite");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_FALSE(r.out.contains("D garden.pg.sql")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains(" 0 removed")) << r.out.toStdString();
   EXPECT_TRUE(QFileInfo::exists(m_dir.filePath("garden.pg.sql")));
   EXPECT_TRUE(QFileInfo::exists(m_dir.filePath("garden.lite.sql")));
}
