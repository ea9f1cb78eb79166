#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "storage/export_record.h"
#include "storage/project_storage.h"
#include "test_support.h"

using storage::export_record;
using storage::project_storage;

namespace {

// A record of n files in nested folders, each with its own hash (files left to the user have none).
export_record::files recordOf(int n, const QString & sTag)
{
   export_record::files record;
   for (int i = 0; i < n; ++i)
   {
      const QString sPath = QString("include/part%1/file%2.gen.h").arg(i % 7).arg(i);
      record.insert(sPath, (i % 50 == 0) ? QByteArray() : (sTag + QString::number(i, 16)).toLatin1());
   }
   return record;
}

class StorageExportRecord : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QSqlDatabase m_db;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      const QString sProject = m_dir.filePath("garden.tavrel");
      ASSERT_TRUE(test_support::writeAll(m_dir.filePath("garden.json"), R"({ "name": "Garden", "entities": [] })"));
      ASSERT_TRUE(project_storage::importJson(m_dir.filePath("garden.json"), sProject).getValue());
      ASSERT_TRUE(project_storage::openDatabase(sProject, m_db).getValue());
   }

   void TearDown() override { project_storage::closeDatabase(m_db); }
};

} // namespace

// Thousands of files are written many rows per statement: none may be lost at a batch's edge.
TEST_F(StorageExportRecord, WritesAndReadsBackEveryRowOfALargeExport)
{
   for (int n : { 0, 1, 199, 200, 201, 4170 })
   {
      const export_record::files written = recordOf(n, "a");
      ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", written).getValue()) << n;
      export_record::files read;
      ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read).getValue()) << n;
      EXPECT_EQ(read, written) << n;
   }
}

TEST_F(StorageExportRecord, EachPluginAndDirectoryHasItsOwnRecord)
{
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(300, "a")).getValue());
   ASSERT_TRUE(export_record::write(m_db, "TavrelSqlExport", "/tmp/out", recordOf(3, "b")).getValue());
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/other", recordOf(5, "c")).getValue());
   // Writing a record again replaces it whole.
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(250, "d")).getValue());
   export_record::files read;
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read).getValue());
   EXPECT_EQ(read, recordOf(250, "d"));
   ASSERT_TRUE(export_record::read(m_db, "TavrelSqlExport", "/tmp/out", read).getValue());
   EXPECT_EQ(read, recordOf(3, "b"));
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/other", read).getValue());
   EXPECT_EQ(read, recordOf(5, "c"));
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/none", read).getValue());
   EXPECT_TRUE(read.isEmpty());
}
