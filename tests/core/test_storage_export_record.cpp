#include <gtest/gtest.h>

#include <QSqlError>
#include <QSqlQuery>
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

// Records of any size read back whole, the empty one included.
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

TEST_F(StorageExportRecord, PathsWithAnyCharacterReadBack)
{
   export_record::files written;
   written.insert(QString::fromUtf8("sch\xc3\xa9ma/a b\tc\nd.sql"), "00000000000000ff");
   written.insert("custom/kept.h", QByteArray());
   ASSERT_TRUE(export_record::write(m_db, "TavrelSqlExport", "/tmp/out", written).getValue());
   export_record::files read;
   ASSERT_TRUE(export_record::read(m_db, "TavrelSqlExport", "/tmp/out", read).getValue());
   EXPECT_EQ(read, written);
}

// A value damaged by hand counts as no record: the export goes on, removes nothing, and the
// next write replaces it.
TEST_F(StorageExportRecord, DamagedRecordReadsAsNoneAndIsReplaced)
{
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(40, "a")).getValue());
   QSqlQuery query(m_db);
   ASSERT_TRUE(query.exec("UPDATE t_export_record SET files = substr(files, 1, 30)"));
   export_record::files read = recordOf(1, "x");
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read).getValue());
   EXPECT_TRUE(read.isEmpty());
   ASSERT_TRUE(query.exec("UPDATE t_export_record SET files = X'00000002'"));
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read).getValue());
   EXPECT_TRUE(read.isEmpty());
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(7, "b")).getValue());
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read).getValue());
   EXPECT_EQ(read, recordOf(7, "b"));
   ASSERT_TRUE(query.exec("SELECT COUNT(*) FROM t_export_record"));
   ASSERT_TRUE(query.next());
   EXPECT_EQ(query.value(0).toInt(), 1);
}

// The fingerprint goes with its record, and a record written without one reads back without one.
TEST_F(StorageExportRecord, FingerprintReadsBackWithItsRecord)
{
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(120, "a"), "0123456789abcdef0123456789abcdef").getValue());
   export_record::files read;
   QByteArray fingerprint;
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
   EXPECT_EQ(read, recordOf(120, "a"));
   EXPECT_EQ(fingerprint, QByteArray("0123456789abcdef0123456789abcdef"));
   // Read as before, the files alone.
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read).getValue());
   EXPECT_EQ(read, recordOf(120, "a"));

   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(3, "b")).getValue());
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
   EXPECT_EQ(read, recordOf(3, "b"));
   EXPECT_TRUE(fingerprint.isEmpty());

   // No files but a fingerprint.
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", export_record::files(), "ff").getValue());
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
   EXPECT_TRUE(read.isEmpty());
   EXPECT_EQ(fingerprint, QByteArray("ff"));
}

TEST_F(StorageExportRecord, FingerprintOfNoRecordOrAnotherDirectoryIsEmpty)
{
   export_record::files read;
   QByteArray fingerprint("stale");
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
   EXPECT_TRUE(fingerprint.isEmpty());
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(40, "a"), "00ff").getValue());
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
   EXPECT_EQ(fingerprint, QByteArray("00ff"));
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/other", read, & fingerprint).getValue());
   EXPECT_TRUE(fingerprint.isEmpty());
   ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", recordOf(40, "a")).getValue());
   ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
   EXPECT_TRUE(fingerprint.isEmpty());
}

// A record of an older version: its hashes were of the text as held in memory, and read back
// marked so; written again it is of the current kind.
TEST_F(StorageExportRecord, OlderRecordsReadWithTheirHashesMarked)
{
   for (bool bFingerprint : { false, true })
   {
      QByteArray old = (bFingerprint ? QByteArray("2") + '\0' + "00ff" + '\0' : QByteArray("1") + '\0');
      old += QByteArray("0123456789abcdef") + '\0' + "include/a.gen.h" + '\0' + QByteArray() + '\0' + "custom/a.h" + '\0';
      QSqlQuery query(m_db);
      ASSERT_TRUE(query.prepare("INSERT OR REPLACE INTO t_export_record (plugin_name, export_dir, files) VALUES (?, ?, ?)"));
      query.addBindValue(QString("TavrelCppExport"));
      query.addBindValue(QString("/tmp/out"));
      query.addBindValue(qCompress(old, 1));
      ASSERT_TRUE(query.exec()) << query.lastError().text().toStdString();
      export_record::files read;
      QByteArray fingerprint;
      ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", read, & fingerprint).getValue());
      EXPECT_EQ(read, export_record::files({ { "include/a.gen.h", "u16:0123456789abcdef" }, { "custom/a.h", "" } })) << bFingerprint;
      EXPECT_EQ(fingerprint, (bFingerprint ? QByteArray("00ff") : QByteArray()));
      // Written back and read again, the marks stay: they still say what the hash is of.
      ASSERT_TRUE(export_record::write(m_db, "TavrelCppExport", "/tmp/out", read, fingerprint).getValue());
      export_record::files again;
      ASSERT_TRUE(export_record::read(m_db, "TavrelCppExport", "/tmp/out", again).getValue());
      EXPECT_EQ(again, read);
   }
}
