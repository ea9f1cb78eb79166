#include <gtest/gtest.h>

#include <QDir>

#include "gui/plugin/export_files.h"

using plugin::export_files;

namespace {

const QString k_sRoot = QStringLiteral("/tmp/garden-out");

// A report set up as a host does: the record of the last export is read when the plug-in begins.
void beginWithRecord(export_files & files, const export_files::recorded_files & record, int * pReads = nullptr)
{
   files.setRecordReader([record, pReads](const QString & key, export_files::recorded_files & result)
   {
      EXPECT_EQ(key, k_sRoot);
      if (pReads) { ++(* pReads); }
      result = record;
      return zy::ZyBool(true);
   });
   files.begin(k_sRoot, QString());
}

} // namespace

TEST(ExportFiles, UnchangedFileKeepsTheHashOfTheLastExport)
{
   export_files files;
   int iReads = 0;
   beginWithRecord(files, { { "include/tree.gen.h", "00000000000000aa" } }, & iReads);
   EXPECT_EQ(iReads, 1);
   EXPECT_FALSE(files.report(k_sRoot + "/include/tree.gen.h", true, "old text", "old text", true));
   ASSERT_EQ(files.files().size(), 1);
   EXPECT_EQ(files.files().at(0).hash, QByteArray("00000000000000aa"));
   EXPECT_TRUE(files.previousRecordRead().getValue());
   EXPECT_EQ(files.previousRecord().size(), 1);
}

TEST(ExportFiles, FilesTheRecordLacksOrThatChangedAreHashed)
{
   export_files files;
   beginWithRecord(files, { { "include/tree.gen.h", "00000000000000aa" }, { "custom/tree.h", "" } });
   EXPECT_TRUE(files.report(k_sRoot + "/include/tree.gen.h", true, "old text", "new text", false));
   EXPECT_FALSE(files.report(k_sRoot + "/src/tree.gen.cpp", true, "same text", "same text", true));
   // A file recorded without a hash (left to the user) has its text hashed.
   EXPECT_FALSE(files.report(k_sRoot + "/custom/tree.h", true, "user text", "user text", true));
   ASSERT_EQ(files.files().size(), 3);
   EXPECT_EQ(files.files().at(0).hash, export_files::hashOf("new text"));
   EXPECT_EQ(files.files().at(1).hash, export_files::hashOf("same text"));
   EXPECT_EQ(files.files().at(2).hash, export_files::hashOf("user text"));
}

TEST(ExportFiles, DryRunHashesNothingAndWritesNothing)
{
   export_files files;
   files.setDryRun(true);
   beginWithRecord(files, {});
   EXPECT_FALSE(files.report(k_sRoot + "/include/tree.gen.h", false, QString(), "new text", false));
   EXPECT_FALSE(files.report(k_sRoot + "/include/bush.gen.h", true, "old", "new", false));
   ASSERT_EQ(files.files().size(), 2);
   EXPECT_EQ(files.files().at(0).status, export_files::status_created);
   EXPECT_EQ(files.files().at(1).status, export_files::status_changed);
   EXPECT_TRUE(files.files().at(0).hash.isEmpty());
   EXPECT_TRUE(files.files().at(1).hash.isEmpty());
}

TEST(ExportFiles, WithoutAReaderNoRecordCountsAsRead)
{
   export_files files;
   files.begin(k_sRoot, QString());
   EXPECT_FALSE(files.previousRecordRead().getValue());
   EXPECT_TRUE(files.previousRecord().isEmpty());
   EXPECT_EQ(files.relativePath(k_sRoot + "/src/a.cpp"), QString("src/a.cpp"));
}

TEST(ExportFiles, AfterAStopNothingIsWrittenNorListedUntilCleared)
{
   export_files files;
   beginWithRecord(files, {});
   EXPECT_TRUE(files.report(k_sRoot + "/include/a.gen.h", false, QString(), "new a", false));
   files.stop();
   EXPECT_TRUE(files.isStopped());
   // The plug-in is told not to write, and the file is not listed as handled.
   EXPECT_FALSE(files.report(k_sRoot + "/include/b.gen.h", false, QString(), "new b", false));
   files.reportKept(k_sRoot + "/custom/b.h");
   ASSERT_EQ(files.files().size(), 1);
   EXPECT_EQ(files.relativePath(files.files().at(0).path), "include/a.gen.h");
   files.clear();
   EXPECT_FALSE(files.isStopped());
   beginWithRecord(files, {});
   EXPECT_TRUE(files.report(k_sRoot + "/include/b.gen.h", false, QString(), "new b", false));
}

// A reported path keeps its text when it is clean, and is cleaned when it holds a step to fold,
// wherever the step is.
TEST(ExportFiles, ReportedPathsAreCleanedOnlyWhereTheyHoldAStepToFold)
{
   export_files files;
   beginWithRecord(files, {});
   const QStringList lstReported {
      k_sRoot + "/include/tree.gen.h", k_sRoot + "/include/.hidden/a.h", k_sRoot + "/include/..x/b.h", k_sRoot + "/src/c.d.cpp",
      k_sRoot + "//include/d.h", k_sRoot + "/include/./e.h", k_sRoot + "/src/../include/f.h", k_sRoot + "/include/g/.",
      k_sRoot + "/include/g/..", k_sRoot + "/include/", k_sRoot + "\\include\\h.h" };
   for (const QString & s : lstReported) { files.report(s, false, QString(), "text", false); }
   ASSERT_EQ(files.files().size(), lstReported.size());
   for (qsizetype i = 0; i < lstReported.size(); ++i)
   {
      EXPECT_EQ(files.files().at(i).path, QDir::cleanPath(lstReported.at(i))) << lstReported.at(i).toStdString();
   }
   EXPECT_EQ(files.files().at(4).path, k_sRoot + "/include/d.h");
   EXPECT_EQ(files.files().at(6).path, k_sRoot + "/include/f.h");
   EXPECT_EQ(files.files().at(8).path, k_sRoot + "/include");
}

TEST(ExportFiles, HashIsOfTheBytesWrittenAndAnOlderKindStillTells)
{
   const QString sText = QString::fromUtf8("caf\xc3\xa9 \xe2\x82\xac\n");
   EXPECT_EQ(export_files::hashOf(sText), export_files::hashOfBytes(sText.toUtf8()));
   EXPECT_NE(export_files::hashOf(sText), export_files::hashOf(sText + " "));
   EXPECT_EQ(export_files::hashOf(sText).size(), 16);
   EXPECT_TRUE(export_files::hasHash(sText, export_files::hashOf(sText)));
   EXPECT_FALSE(export_files::hasHash(sText + "x", export_files::hashOf(sText)));
   // A hash of an older record: of the text's UTF-16 units, marked as such.
   export_files files;
   beginWithRecord(files, { { "include/tree.gen.h", "u16:0123456789abcdef" } });
   EXPECT_FALSE(export_files::hasHash(sText, "u16:0123456789abcdef"));
   EXPECT_FALSE(export_files::hasHash(sText, export_files::hashOf(sText).prepend("u16:")));
   // An unchanged file recorded with such a hash gets one of its bytes.
   EXPECT_FALSE(files.report(k_sRoot + "/include/tree.gen.h", true, sText, sText, true));
   ASSERT_EQ(files.files().size(), 1);
   EXPECT_EQ(files.files().at(0).hash, export_files::hashOf(sText));
   // A hash handed over by the plug-in is taken as it is.
   EXPECT_TRUE(files.report(k_sRoot + "/src/tree.gen.cpp", false, QString(), sText, false, "00000000000000bb"));
   EXPECT_EQ(files.files().at(1).hash, QByteArray("00000000000000bb"));
}
