#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

// A shop model in a fresh directory, with its Lumor folder and an export folder "out".
struct shop_tree
{
   QTemporaryDir tmp;
   QString model;
   QString out;

   shop_tree()
   {
      model = tmp.filePath("shop.json");
      test_support::writeAll(model, test_support::readAll(test_support::examplePath("shop.json")));
      QDir().mkpath(tmp.filePath("lumor"));
      out = tmp.filePath("out");
      QDir().mkpath(out);
   }

   test_support::cli_result run(const QStringList & extra = QStringList()) const
   {
      return test_support::runTavrel(QStringList() << "export" << model << "--lumor-path" << tmp.filePath("lumor")
                                                   << "--TavrelCppExport_path=out" << extra);
   }

   // Applies change to the model's entities and writes it back.
   void editEntities(const std::function<void(QJsonArray &)> & change) const
   {
      QJsonObject doc = QJsonDocument::fromJson(test_support::readAll(model)).object();
      QJsonArray entities = doc.value("entities").toArray();
      change(entities);
      doc.insert("entities", entities);
      test_support::writeAll(model, QJsonDocument(doc).toJson());
   }

   void setEntityField(const QString & name, const QString & key, const QString & value) const
   {
      editEntities([&](QJsonArray & entities)
      {
         for (int i = 0; i < entities.size(); ++i)
         {
            QJsonObject e = entities.at(i).toObject();
            if (e.value("name").toString() == name) { e.insert(key, value); entities.replace(i, e); }
         }
      });
   }

   void removeEntity(const QString & name) const
   {
      editEntities([&](QJsonArray & entities)
      {
         for (int i = entities.size() - 1; i >= 0; --i) { if (entities.at(i).toObject().value("name").toString() == name) { entities.removeAt(i); } }
      });
   }
};

const QRegularExpression k_summary("^(\\d+) files: (\\d+) (written|to write), (\\d+) unchanged, (\\d+) (removed|to remove) \\(\\d+\\.\\d\\d s\\)$");

// The lines of standard output but the summary (the last one), which must be there.
QStringList listedLines(const test_support::cli_result & r)
{
   QStringList lst = r.out.split('\n', Qt::SkipEmptyParts);
   if (lst.isEmpty() || ! k_summary.match(lst.last()).hasMatch()) { ADD_FAILURE() << "no summary line : " << r.out.toStdString(); return lst; }
   lst.removeLast();
   return lst;
}

QMap<QString, qint64> modificationTimes(const QString & root)
{
   QMap<QString, qint64> times;
   QDir dir(root);
   for (const QString & line : test_support::treeState(root))
   {
      const QString path = line.section('|', 0, 0);
      if (line.section('|', 1, 1) == "file") { times.insert(path, QFileInfo(dir.filePath(path)).lastModified().toMSecsSinceEpoch()); }
   }
   EXPECT_FALSE(times.isEmpty());
   return times;
}

} // namespace

TEST(CliExportLifecycle, EveryExportEndsWithTheSummary)
{
   shop_tree t;
   test_support::cli_result r = t.run();
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QRegularExpressionMatch m = k_summary.match(r.out.trimmed());
   ASSERT_TRUE(m.hasMatch()) << r.out.toStdString();
   EXPECT_EQ(m.captured(3), "written");
   const int iFiles = test_support::treeState(t.out).filter("|file|").size();
   EXPECT_EQ(m.captured(1).toInt(), iFiles);
   EXPECT_EQ(m.captured(2).toInt(), iFiles);
   EXPECT_EQ(m.captured(4).toInt(), 0);

   r = t.run();
   const QRegularExpressionMatch again = k_summary.match(r.out.trimmed());
   ASSERT_TRUE(again.hasMatch()) << r.out.toStdString();
   EXPECT_EQ(again.captured(2).toInt(), 0);
   EXPECT_EQ(again.captured(4).toInt(), iFiles);
}

TEST(CliExportLifecycle, CheckOfAnUpToDateTreePrintsOnlyTheSummary)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   const test_support::cli_result r = t.run({ "--check" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(listedLines(r).isEmpty()) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains(" 0 to write, ") && r.out.contains(" 0 to remove ")) << r.out.toStdString();
}

TEST(CliExportLifecycle, CheckAfterAModelEditListsExactlyTheChangedFiles)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   t.setEntityField("Category", "description", "Shelf of the shop, renamed");
   const test_support::cli_result r = t.run({ "--check" });
   EXPECT_EQ(r.code, 1) << r.err.toStdString();
   EXPECT_EQ(listedLines(r), QStringList({ "M include/shop_Category.gen.h", "M src/shop_Category.gen.cpp" })) << r.out.toStdString();
   EXPECT_TRUE(r.err.contains("not up to date")) << r.err.toStdString();
}

TEST(CliExportLifecycle, DryRunWritesNothing)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   t.setEntityField("Category", "description", "Changed");
   t.removeEntity("Invoice");
   const QStringList before = test_support::treeState(t.out);
   const QMap<QString, qint64> beforeTimes = modificationTimes(t.out);
   const test_support::cli_result r = t.run({ "--dry-run" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   const QStringList lines = listedLines(r);
   EXPECT_TRUE(lines.contains("M include/shop_Category.gen.h")) << r.out.toStdString();
   EXPECT_TRUE(lines.contains("D include/shop_sales_Invoice.gen.h")) << r.out.toStdString();
   EXPECT_EQ(test_support::treeState(t.out), before);
   EXPECT_EQ(modificationTimes(t.out), beforeTimes);

   // Into an empty directory: every file listed as added, no folder made.
   QDir().mkpath(t.tmp.filePath("fresh"));
   const test_support::cli_result fresh = test_support::runTavrel(QStringList() << "export" << t.model << "--lumor-path" << t.tmp.filePath("lumor")
                                                                                << "--TavrelCppExport_path=fresh" << "--dry-run");
   EXPECT_EQ(fresh.code, 0) << fresh.err.toStdString();
   EXPECT_TRUE(listedLines(fresh).contains("A include/shop_Customer.gen.h")) << fresh.out.toStdString();
   EXPECT_TRUE(test_support::treeState(t.tmp.filePath("fresh"), { ".tavrel_export.lock" }).isEmpty());
}

TEST(CliExportLifecycle, DeletedEntityLosesItsGeneratedFilesOnly)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   const QString edited = t.out + "/src/shop_sales_Invoice.gen.cpp";
   const QString mine = t.out + "/include/notes.h";
   ASSERT_TRUE(test_support::writeAll(edited, test_support::readAll(edited) + "// kept by hand\n"));
   ASSERT_TRUE(test_support::writeAll(mine, "// not generated\n"));
   t.removeEntity("Invoice");
   const test_support::cli_result r = t.run();
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(listedLines(r), QStringList({ "D include/shop_sales_Invoice.gen.h" })) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains(" 1 removed ")) << r.out.toStdString();
   EXPECT_FALSE(QFileInfo::exists(t.out + "/include/shop_sales_Invoice.gen.h"));
   EXPECT_TRUE(test_support::readAll(edited).endsWith("// kept by hand\n"));
   EXPECT_TRUE(QFileInfo::exists(mine));
   EXPECT_TRUE(QFileInfo::exists(t.out + "/custom/include/shop_sales_Invoice.h"));
   EXPECT_TRUE(QFileInfo::exists(t.out + "/custom/src/shop_sales_Invoice.cpp"));
   EXPECT_TRUE(r.err.contains("kept: custom/src/shop_sales_Invoice.cpp : user file no longer used by the model")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("kept: src/shop_sales_Invoice.gen.cpp : no longer generated but changed since the last export")) << r.err.toStdString();

   // Once dealt with, they are no longer reported.
   const test_support::cli_result again = t.run({ "--check" });
   EXPECT_EQ(again.code, 0) << again.out.toStdString();
   EXPECT_FALSE(again.err.contains("kept:")) << again.err.toStdString();
}

TEST(CliExportLifecycle, RenamedEntityIsRemovedAndAdded)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   t.setEntityField("Invoice", "name", "Bill");
   const test_support::cli_result dry = t.run({ "--dry-run" });
   const QStringList lines = listedLines(dry);
   EXPECT_TRUE(lines.contains("D include/shop_sales_Invoice.gen.h")) << dry.out.toStdString();
   EXPECT_TRUE(lines.contains("D src/shop_sales_Invoice.gen.cpp")) << dry.out.toStdString();
   EXPECT_TRUE(lines.contains("A include/shop_sales_Bill.gen.h")) << dry.out.toStdString();
   EXPECT_TRUE(lines.contains("A src/shop_sales_Bill.gen.cpp")) << dry.out.toStdString();

   const test_support::cli_result r = t.run();
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(t.out + "/include/shop_sales_Invoice.gen.h"));
   EXPECT_FALSE(QFileInfo::exists(t.out + "/src/shop_sales_Invoice.gen.cpp"));
   EXPECT_TRUE(QFileInfo::exists(t.out + "/include/shop_sales_Bill.gen.h"));
}

TEST(CliExportLifecycle, KeepStaleRemovesNothing)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   t.removeEntity("Invoice");
   const test_support::cli_result r = t.run({ "--keep-stale" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(QFileInfo::exists(t.out + "/include/shop_sales_Invoice.gen.h"));
   EXPECT_TRUE(r.err.contains("kept: include/shop_sales_Invoice.gen.h : no longer generated, kept (--keep-stale)")) << r.err.toStdString();
   // Still recorded: the next export without the option removes it.
   const test_support::cli_result later = t.run();
   EXPECT_TRUE(listedLines(later).contains("D include/shop_sales_Invoice.gen.h")) << later.out.toStdString();
   EXPECT_FALSE(QFileInfo::exists(t.out + "/include/shop_sales_Invoice.gen.h"));
}

TEST(CliExportLifecycle, StaleFileReachedThroughALinkStays)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   // The user moves the headers elsewhere and links them back.
   const QString elsewhere = t.tmp.filePath("elsewhere");
   ASSERT_TRUE(QDir().rename(t.out + "/include", elsewhere));
   ASSERT_TRUE(QFile::link(elsewhere, t.out + "/include"));
   t.removeEntity("Invoice");
   test_support::runTavrel(QStringList() << "export" << t.model << "--lumor-path" << t.tmp.filePath("lumor") << "--TavrelCppExport_path=out");
   EXPECT_TRUE(QFileInfo::exists(elsewhere + "/shop_sales_Invoice.gen.h"));
}

TEST(CliExportLifecycle, DiffShowsTheChangeWithoutTheBanner)
{
   shop_tree t;
   ASSERT_EQ(t.run().code, 0);
   t.setEntityField("Category", "description", "Shelf of the shop, renamed");
   const test_support::cli_result r = t.run({ "--check", "--diff" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.out.contains("--- a/include/shop_Category.gen.h\n+++ b/include/shop_Category.gen.h\n")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("\n+") && r.out.contains("Shelf of the shop, renamed")) << r.out.toStdString();
   EXPECT_FALSE(r.out.contains("File created by Tavrel")) << r.out.toStdString();

   const test_support::cli_result alone = t.run({ "--diff" });
   EXPECT_EQ(alone.code, 2);
   EXPECT_TRUE(alone.err.contains("--diff goes with --dry-run or --check")) << alone.err.toStdString();
}
