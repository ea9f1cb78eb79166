// The export on several threads against the export on one: same bytes, same reports, same
// messages in the same order, and the same failure.

#include "builder_test_support.h"

#include <QThread>

#include "gui/plugin/export_files.h"

using namespace builder_test;

namespace {

// A model large enough that every worker gets items: entities in five namespaces, each with a
// parent or not, references to earlier entities of all kinds, and enumerations.
QByteArray greenhouseJson(int iEntities)
{
   QByteArray json = R"({ "name": "Greenhouse", "entities": [)";
   for (int i = 0; i < iEntities; ++i)
   {
      const QByteArray ns = "garden::bed" + QByteArray::number(i % 5);
      const QByteArray name = "Plant" + QByteArray::number(i);
      json += (i ? "," : "") + QByteArray(R"({"name": ")") + name + R"(", "namespace": ")" + ns + R"(")";
      if ((i % 7) == 0) { json += R"(, "abstract": true)"; }
      if ((i > 7) && ((i % 3) == 0) && ((i % 7) != 0)) { json += R"(, "parent": "garden::bed)" + QByteArray::number((i / 7 * 7) % 5) + "::Plant" + QByteArray::number(i / 7 * 7) + "\""; }
      json += R"(, "properties": [{"name": "id", "type": "long", "primary_key": true},)";
      json += R"({"name": "label", "type": "QString", "default": "sprout \"no.)" + QByteArray::number(i) + R"(\""},)";
      json += R"({"name": "height", "type": "double", "default": "1.5"}, {"name": "watered", "type": "QDateTime", "decoration": "optional"})";
      if (i > 0)
      {
         static const char * const k_sKinds[4] = { "many_to_one", "one_to_many", "one_to_one", "many_to_many" };
         const int t = (i * 5) % i;
         const QByteArray target = "garden::bed" + QByteArray::number(t % 5) + "::Plant" + QByteArray::number(t);
         json += R"(, {"name": "neighbour", "relation": {"kind": ")" + QByteArray(k_sKinds[i % 4]) + R"(", "target": ")" + target + "\"";
         if ((i % 4) == 3) { json += R"(, "extra_table": "t_pair)" + QByteArray::number(i) + R"(", "foreign_key": "a_id", "foreign_key_owner": "b_id")"; }
         else { json += R"(, "foreign_key": "neighbour_id")"; }
         json += "}}";
      }
      json += "]}";
   }
   json += R"(], "enumerations": [)";
   for (int i = 0; i < 6; ++i)
   {
      json += (i ? "," : "") + QByteArray(R"({"name": "Season)") + QByteArray::number(i) + R"(", "namespace": "garden",)"
              R"( "values": [{"key": "Spring", "value": "0"}, {"key": "Autumn", "value": "1"}]})";
   }
   json += "]}";
   return json;
}

struct run_result
{
   zy::ZyBool ok = zy::ZyBool(true);
   QString sReason;
   QMap<QString, QByteArray> tree;
   QStringList lstMessages;
   QStringList lstReports;   // relative path, status and hash of every reported file, in order
   // What a host would record of the run.
   plugin::export_files::recorded_files record;
   QByteArray fingerprint;
};

class ExportThreads : public export_fixture
{
protected:
   void TearDown() override
   {
      qunsetenv("TAVREL_EXPORT_THREADS");
      export_fixture::TearDown();
   }

   // One export into out/<dir> with that many threads, through a new builder, reported to an
   // export_files as the hosts do.
   // With pPrevious, the host's record is that run's.
   run_result exportWith(model::project & project, int iThreads, const QString & dir, bool bDryRun = false, const run_result * pPrevious = nullptr)
   {
      qputenv("TAVREL_EXPORT_THREADS", QByteArray::number(iThreads));
      const QString sDir = out(dir);
      EXPECT_TRUE(QDir().mkpath(sDir));
      m_plugin.setCppExportPath(sDir);
      plugin::export_files files;
      files.setDryRun(bDryRun);
      if (pPrevious)
      {
         plugin::export_files * pFiles = & files;
         files.setRecordReader([pPrevious, pFiles](const QString &, plugin::export_files::recorded_files & result)
         {
            result = pPrevious->record;
            pFiles->setPreviousFingerprint(pPrevious->fingerprint);
            return zy::ZyBool(true);
         });
         files.setFingerprintReader([pPrevious](const QString &) { return pPrevious->fingerprint; });
      }
      m_plugin.setExportFiles(& files);
      plugin::cpp_builder builder(& m_plugin);
      run_result r;
      QObject::connect(& builder, & plugin::cpp_builder::onMessage, [&](const QString & text, int, int)
                       { r.lstMessages.append(QString(text).replace(sDir, "<dir>")); });
      r.ok = builder.build(project);
      m_plugin.setExportFiles(nullptr);
      r.sReason = QString(builder.getLastFailureReason()).replace(sDir, "<dir>");
      r.tree = fileContents(sDir);
      for (const plugin::export_files::file & f : files.files())
      {
         r.lstReports.append(files.relativePath(f.path) + " " + QString::number(f.status) + " " + QString::fromLatin1(f.hash.toHex()));
         r.record.insert(files.relativePath(f.path), f.hash);
      }
      r.fingerprint = files.fingerprint();
      return r;
   }

   model::project_ptr greenhouse(int iEntities = 60) { return parseModel(greenhouseJson(iEntities)); }
};

} // namespace

TEST_F(ExportThreads, ThreadCountComesFromTheEnvironment)
{
   qputenv("TAVREL_EXPORT_THREADS", "1");
   EXPECT_EQ(plugin::cpp_builder::exportThreads(), 1);
   qputenv("TAVREL_EXPORT_THREADS", "3");
   EXPECT_EQ(plugin::cpp_builder::exportThreads(), 3);
   const int iCores = qBound(1, QThread::idealThreadCount(), 64);
   for (const char * sBad : { "0", "-2", "many", "65", "" })
   {
      qputenv("TAVREL_EXPORT_THREADS", sBad);
      EXPECT_EQ(plugin::cpp_builder::exportThreads(), iCores) << sBad;
   }
}

TEST_F(ExportThreads, EveryStyleGivesTheSameTreeOnOneOrFourThreads)
{
   model::project_ptr p = greenhouse();
   ASSERT_TRUE(p);
   model::project_ptr pShop = loadShop();
   ASSERT_TRUE(pShop);
   int iRun = 0;
   for (int iStyle = 0; iStyle < 4; ++iStyle)
   {
      for (bool bPImpl : { false, true })
      {
         for (bool bCustom : { true, false })
         {
            m_plugin.setCppTemplate(static_cast<plugin::cpp_template::enum_template>(iStyle));
            m_plugin.setPImpl(bPImpl);
            m_plugin.setGenerateCustomFiles(bCustom);
            for (model::project * pModel : { p.get(), pShop.get() })
            {
               const QString sCase = QString("style %1, PIMPL %2, custom files %3, %4").arg(iStyle).arg(bPImpl).arg(bCustom).arg(pModel->getName());
               const run_result one = exportWith(* pModel, 1, QString("one%1").arg(iRun));
               const run_result four = exportWith(* pModel, 4, QString("four%1").arg(iRun));
               ++iRun;
               ASSERT_TRUE(static_cast<bool>(one.ok)) << one.ok.getDesc().toStdString();
               ASSERT_TRUE(static_cast<bool>(four.ok)) << four.ok.getDesc().toStdString();
               EXPECT_GT(one.tree.size(), 20) << sCase.toStdString();
               EXPECT_EQ(one.tree.contains("custom/include/garden_bed0_Plant0.h") || one.tree.contains("custom/include/shop_Customer.h"), bCustom) << sCase.toStdString();
               EXPECT_TRUE(one.tree == four.tree) << sCase.toStdString();
               EXPECT_EQ(one.lstReports, four.lstReports) << sCase.toStdString();
               EXPECT_EQ(one.lstMessages, four.lstMessages) << sCase.toStdString();
            }
         }
      }
   }
}

TEST_F(ExportThreads, MessagesFollowTheModelOrder)
{
   model::project_ptr p = greenhouse(90);
   ASSERT_TRUE(p);
   const run_result r = exportWith(* p, 4, "ordered");
   ASSERT_TRUE(static_cast<bool>(r.ok)) << r.ok.getDesc().toStdString();
   QStringList lstExpected;
   for (const model::entity_ptr & e : * p->getListOfAllEntities()) { lstExpected.append("Entity '" + e->getKey() + "' exported to C++ class : '<dir>'"); }
   for (const model::enumeration_ptr & e : * p->getListOfAllEnums()) { lstExpected.append("Enumeration '" + e->getKey() + "' exported to C++ class : '<dir>'"); }
   ASSERT_GE(r.lstMessages.size(), lstExpected.size());
   EXPECT_EQ(r.lstMessages.mid(0, lstExpected.size()), lstExpected);
   // The reports follow the same order: each item's header, source and custom files together.
   QStringList lstFirst;
   for (int i = 0; i < 8; ++i) { lstFirst.append(r.lstReports.at(i).section(' ', 0, 0)); }
   EXPECT_EQ(lstFirst, QStringList({ "include/garden_bed0_Plant0.gen.h", "src/garden_bed0_Plant0.gen.cpp", "custom/include/garden_bed0_Plant0.h",
                                     "custom/src/garden_bed0_Plant0.cpp", "include/garden_bed1_Plant1.gen.h", "src/garden_bed1_Plant1.gen.cpp",
                                     "custom/include/garden_bed1_Plant1.h", "custom/src/garden_bed1_Plant1.cpp" }));
}

TEST_F(ExportThreads, FileErrorInAWorkerStopsTheExportAsOnOneThread)
{
   model::project_ptr p = greenhouse();
   ASSERT_TRUE(p);
   // A folder where the 31st entity's source goes: its write fails whichever thread makes it.
   for (const char * sDir : { "one", "four" }) { ASSERT_TRUE(QDir().mkpath(out(QString(sDir) + "/src/garden_bed0_Plant30.gen.cpp"))); }
   const run_result one = exportWith(* p, 1, "one");
   const run_result four = exportWith(* p, 4, "four");
   EXPECT_FALSE(static_cast<bool>(four.ok));
   EXPECT_EQ(four.ok.getDesc(), "An error occurred opening source file : " + out("four/src/garden_bed0_Plant30.gen.cpp"));
   EXPECT_EQ(four.sReason, "Is a directory : <dir>/src/garden_bed0_Plant30.gen.cpp");
   EXPECT_EQ(four.lstMessages.size(), 30);
   EXPECT_EQ(four.lstMessages.last(), "Entity 'garden::bed4::Plant29' exported to C++ class : '<dir>'");
   EXPECT_EQ(QString(one.ok.getDesc()).replace(out("one"), out("four")), four.ok.getDesc());
   EXPECT_EQ(one.sReason, four.sReason);
   EXPECT_EQ(one.lstMessages, four.lstMessages);
   EXPECT_EQ(one.lstReports, four.lstReports);
   // No project file comes after a failed item.
   EXPECT_FALSE(four.tree.contains("Greenhouse.gen.pro"));
}

TEST_F(ExportThreads, TwoRunsGiveTheSameTree)
{
   model::project_ptr p = greenhouse();
   ASSERT_TRUE(p);
   const run_result a = exportWith(* p, 4, "a");
   const run_result b = exportWith(* p, 4, "b");
   ASSERT_TRUE(static_cast<bool>(a.ok) && static_cast<bool>(b.ok));
   EXPECT_GT(a.tree.size(), 240);
   EXPECT_TRUE(a.tree == b.tree);
   EXPECT_EQ(a.lstReports, b.lstReports);
}

TEST_F(ExportThreads, UnchangedAndDryRunsOnFourThreadsWriteNothing)
{
   model::project_ptr p = greenhouse();
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportWith(* p, 4, "tree").ok));
   const QMap<QString, qint64> before = fileTimes(out("tree"));
   // One file changed by hand: the dry run reports it as changed, on one thread as on four.
   ASSERT_TRUE(writeText(out("tree/include/garden_bed2_Plant7.gen.h"), "edited"));
   const run_result dryOne = exportWith(* p, 1, "tree", true);
   const run_result dryFour = exportWith(* p, 4, "tree", true);
   EXPECT_EQ(dryOne.lstReports, dryFour.lstReports);
   EXPECT_TRUE(dryFour.lstReports.contains("include/garden_bed2_Plant7.gen.h 2 "));
   EXPECT_EQ(dryFour.tree.value("include/garden_bed2_Plant7.gen.h"), QByteArray("edited"));
   const run_result again = exportWith(* p, 4, "tree");
   ASSERT_TRUE(static_cast<bool>(again.ok));
   QMap<QString, qint64> after = fileTimes(out("tree"));
   after.remove("include/garden_bed2_Plant7.gen.h");
   QMap<QString, qint64> expected = before;
   expected.remove("include/garden_bed2_Plant7.gen.h");
   EXPECT_EQ(after, expected);
   EXPECT_NE(again.tree.value("include/garden_bed2_Plant7.gen.h"), QByteArray("edited"));
}

TEST_F(ExportThreads, CustomFilesAlreadyThereAreKeptOnOneOrFourThreads)
{
   model::project_ptr p = greenhouse();
   ASSERT_TRUE(p);
   const QString sOutside = out("outside.cpp");
   ASSERT_TRUE(writeText(sOutside, "outside"));
   for (const char * sDir : { "one", "four" })
   {
      const QString sRoot = out(sDir);
      ASSERT_TRUE(QDir().mkpath(sRoot + "/custom/include") && QDir().mkpath(sRoot + "/custom/src"));
      ASSERT_TRUE(writeText(sRoot + "/custom/include/garden_bed0_Plant0.h", "// mine"));
      ASSERT_TRUE(QFile::link(sOutside, sRoot + "/custom/src/garden_bed1_Plant1.cpp"));
   }
   const run_result one = exportWith(* p, 1, "one");
   const run_result four = exportWith(* p, 4, "four");
   ASSERT_TRUE(static_cast<bool>(one.ok)) << one.ok.getDesc().toStdString();
   ASSERT_TRUE(static_cast<bool>(four.ok)) << four.ok.getDesc().toStdString();
   EXPECT_EQ(one.lstReports, four.lstReports);
   for (const run_result * r : { & one, & four })
   {
      EXPECT_EQ(r->tree.value("custom/include/garden_bed0_Plant0.h"), QByteArray("// mine"));
      EXPECT_TRUE(r->tree.value("custom/src/garden_bed0_Plant0.cpp").contains("Plant0"));
      EXPECT_TRUE(r->tree.value("custom/include/garden_bed1_Plant1.h").contains("GARDEN_BED1_PLANT1_H_CUSTOM"));
   }
   EXPECT_EQ(readText(sOutside), QString("outside"));
   EXPECT_TRUE(QFileInfo(out("four/custom/src/garden_bed1_Plant1.cpp")).isSymLink());
}

// A record with the export's own fingerprint: on four threads the files that still have their
// recorded hash are reported as generating them would, and are not even generated.
TEST_F(ExportThreads, TrustedRecordOnFourThreadsSaysWhatGeneratingSays)
{
   model::project_ptr p = greenhouse();
   ASSERT_TRUE(p);
   const run_result first = exportWith(* p, 4, "tree");
   ASSERT_TRUE(static_cast<bool>(first.ok)) << first.ok.getDesc().toStdString();
   ASSERT_FALSE(first.fingerprint.isEmpty());
   const QMap<QString, qint64> before = fileTimes(out("tree"));
   const run_result full = exportWith(* p, 4, "tree");
   const run_result trusted = exportWith(* p, 4, "tree", false, & first);
   ASSERT_TRUE(static_cast<bool>(trusted.ok)) << trusted.ok.getDesc().toStdString();
   EXPECT_EQ(trusted.lstMessages, full.lstMessages);
   EXPECT_EQ(trusted.lstReports, full.lstReports);
   EXPECT_EQ(trusted.fingerprint, first.fingerprint);
   EXPECT_EQ(fileTimes(out("tree")), before);
   // A file edited behind the record (its hash recorded too) is taken on trust: not generated.
   const QString sRel = "include/garden_bed3_Plant8.gen.h";
   const QString sEdited = readText(out("tree/" + sRel)) + "// edited\n";
   ASSERT_TRUE(writeText(out("tree/" + sRel), sEdited));
   run_result edited = first;
   edited.record.insert(sRel, plugin::export_files::hashOf(sEdited));
   const run_result again = exportWith(* p, 4, "tree", false, & edited);
   ASSERT_TRUE(static_cast<bool>(again.ok));
   EXPECT_EQ(readText(out("tree/" + sRel)), sEdited);
   // Without the fingerprint it is generated again.
   edited.fingerprint.clear();
   const run_result untrusted = exportWith(* p, 4, "tree", false, & edited);
   ASSERT_TRUE(static_cast<bool>(untrusted.ok));
   EXPECT_NE(readText(out("tree/" + sRel)), sEdited);
}
