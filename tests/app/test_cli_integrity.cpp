#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

// Hand-edited and half-written project files, file-name clashes and the PIMPL warnings, through
// the real command-line host.

namespace {

using run_result = test_support::cli_result;
using test_support::runTavrel;

std::string str(const QString & s) { return s.toStdString(); }

bool execSql(const QString & sFile, const QStringList & lstSql)
{
   const QString sName = "cli_integrity_edit";
   bool bOk = true;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sName);
      db.setDatabaseName(sFile);
      bOk = db.open();
      for (const QString & sql : lstSql)
      {
         QSqlQuery q(db);
         if (bOk && ! q.exec(sql)) { bOk = false; }
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return bOk;
}

// Every file below a directory with its content's hash, except those under the given paths.
QStringList filesUnder(const QString & sDir)
{
   QStringList lst;
   QDirIterator itr(sDir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
   while (itr.hasNext()) { lst.append(itr.next()); }
   return lst;
}

class HandEditedProject : public ::testing::Test
{
protected:
   QTemporaryDir m_tmp;
   QString m_sProject, m_sOut;

   void SetUp() override
   {
      ASSERT_TRUE(m_tmp.isValid());
      QDir().mkpath(m_tmp.filePath("lumor"));
      QDir().mkpath(m_tmp.filePath("proj"));
      // Deep enough that "../../../.." from the output stays inside the temporary directory.
      m_sOut = m_tmp.filePath("x1/x2/x3/x4/out");
      QDir().mkpath(m_sOut);
      m_sProject = m_tmp.filePath("proj/shop.tavrel");
      const run_result r = runTavrel({ "import", test_support::examplePath("shop.json"), m_sProject });
      ASSERT_EQ(r.code, 0) << str(r.err);
   }

   // check, dump and export --yes all refuse the file with the reason; nothing is written anywhere.
   void expectRefusedEverywhere(const QString & sReason)
   {
      const QStringList lstBefore = test_support::treeState(m_tmp.path(), { QDir(m_tmp.path()).relativeFilePath(m_sProject) });
      run_result r = runTavrel({ "check", m_sProject });
      EXPECT_EQ(r.code, 1);
      EXPECT_TRUE(r.err.contains(sReason)) << str(r.out + r.err);
      r = runTavrel({ "dump", m_sProject });
      EXPECT_EQ(r.code, 1);
      EXPECT_TRUE(r.err.contains(sReason)) << str(r.err);
      EXPECT_TRUE(r.out.isEmpty()) << str(r.out);
      r = runTavrel({ "export", m_sProject, "--yes", "--lumor-path", m_tmp.filePath("lumor"), "--TavrelCppExport_path=" + m_sOut });
      EXPECT_EQ(r.code, 1);
      EXPECT_TRUE(r.err.contains(sReason)) << str(r.err);
      EXPECT_EQ(test_support::treeState(m_tmp.path(), { QDir(m_tmp.path()).relativeFilePath(m_sProject) }), lstBefore);
      EXPECT_EQ(filesUnder(m_sOut), QStringList());
   }
};

} // namespace

TEST_F(HandEditedProject, EntityNameThatIsAPathIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_entity SET name = '../../../../tmp/victim', namespace = '' WHERE name = 'CustomerProfile'" }));
   expectRefusedEverywhere("Entity '../../../../tmp/victim' : name '../../../../tmp/victim' is not a valid C++ identifier");
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("x1/x2/tmp/victim.gen.h")));
}

TEST_F(HandEditedProject, ProjectNameThatIsAPathIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_project SET name = '../../x'" }));
   expectRefusedEverywhere("Project name '../../x' is not a valid C++ identifier");
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("x1/x2/x3/x.gen.pri")));
}

TEST_F(HandEditedProject, ParentCycleIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_entity SET parent_key = 'shop::Customer' WHERE name = 'Base'" }));
   expectRefusedEverywhere("Entity 'shop::Base' : inheritance cycle shop::Base -> shop::Customer -> shop::Base");
}

TEST_F(HandEditedProject, PropertyOfAMissingEntityIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_property SET entity_seq = 9999 WHERE name = 'bio'" }));
   expectRefusedEverywhere("property 'bio' belongs to entity 9999, which the file does not hold");
}

TEST_F(HandEditedProject, ValueOfAMissingEnumerationIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_enumeration_value SET enumeration_seq = 9999 WHERE value_key = 'Paid'" }));
   expectRefusedEverywhere("enumeration value 'Paid' belongs to enumeration 9999, which the file does not hold");
}

TEST_F(HandEditedProject, MetaDataOfAMissingItemIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "INSERT INTO t_meta_data (seq, owner_kind, owner_seq, meta_key, meta_value) VALUES (99999, 'entity', 9999, 'lost', 'x')" }));
   expectRefusedEverywhere("meta data 'lost' belongs to entity 9999, which the file does not hold");
}

TEST_F(HandEditedProject, LengthThatIsNoNumberIsRefused)
{
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_property SET min_length = 'abc' WHERE name = 'bio'" }));
   expectRefusedEverywhere("Entity 'shop::CustomerProfile' : property 'bio' : min length stored value 'abc' is not a whole number of at least 0 or a text");
   ASSERT_TRUE(execSql(m_sProject, { "UPDATE t_property SET min_length = '2.5' WHERE name = 'bio'" }));
   expectRefusedEverywhere("min length stored value '2.5' is not a whole number of at least 0 or a text");
}

TEST(CliProjectLink, ProjectFileBesideAModelIsNotWrittenThroughALink)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString victim = tmp.filePath("other/victim.tavrel");
   QDir().mkpath(tmp.filePath("other"));
   run_result r = runTavrel({ "import", test_support::examplePath("shop.json"), victim });
   ASSERT_EQ(r.code, 0) << str(r.err);
   const QByteArray before = test_support::readAll(victim);
   ASSERT_FALSE(before.isEmpty());

   QDir().mkpath(tmp.filePath("work"));
   ASSERT_TRUE(QFile::copy(test_support::examplePath("library.json"), tmp.filePath("work/m.json")));
   ASSERT_TRUE(QFile::link(victim, tmp.filePath("work/m.tavrel")));
   for (const QStringList & args : { QStringList { "check", tmp.filePath("work/m.json") },
                                     QStringList { "import", tmp.filePath("work/m.json"), tmp.filePath("work/m.tavrel") },
                                     QStringList { "export", tmp.filePath("work/m.json"), "--yes", "--TavrelCppExport_path=" + tmp.filePath("out") } })
   {
      r = runTavrel(args);
      EXPECT_NE(r.code, 0) << str(args.join(' '));
      EXPECT_TRUE(r.err.contains("m.tavrel' is a symbolic link")) << str(r.err);
      EXPECT_EQ(test_support::readAll(victim), before) << str(args.join(' '));
   }
   // A link beside the project file, where SQLite writes its journal, is refused too.
   QFile::remove(tmp.filePath("work/m.tavrel"));
   ASSERT_TRUE(QFile::link(victim, tmp.filePath("work/m.tavrel-journal")));
   r = runTavrel({ "import", tmp.filePath("work/m.json"), tmp.filePath("work/m.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("m.tavrel-journal' is a symbolic link")) << str(r.err);
   EXPECT_EQ(test_support::readAll(victim), before);
}

TEST(CliFileCollisions, FlattenedKeysThatMeetAreRefusedByCheckAndExport)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("out"));
   const QString sModel = tmp.filePath("clash.json");
   ASSERT_TRUE(test_support::writeAll(sModel, R"J({"name": "CLASH", "entities": [
      {"name": "b_C", "namespace": "a", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
      {"name": "C", "namespace": "a_b", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
      {"name": "Foo", "namespace": "ns", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
      {"name": "foo", "namespace": "ns", "properties": [{"name": "id", "type": "long", "primary_key": true}]}],
      "enumerations": [{"name": "C", "namespace": "a::b", "values": [{"key": "X", "value": "0"}]}]})J"));
   const QString sFlat = "Entity 'a::b_C', entity 'a_b::C' and enumeration 'a::b::C' all give the same generated files "
                         "'include/a_b_C.gen.h' and 'src/a_b_C.gen.cpp'";
   const QString sCase = "Entity 'ns::Foo' and entity 'ns::foo' give generated files whose names differ only in letter case";

   run_result r = runTavrel({ "check", sModel });
   EXPECT_EQ(r.code, 1) << str(r.out);
   EXPECT_TRUE(r.out.contains("error: " + sFlat)) << str(r.out);
   EXPECT_TRUE(r.out.contains("error: " + sCase)) << str(r.out);

   // Answering Yes to "export in spite of the errors" does not make them share a file.
   r = runTavrel({ "export", sModel, "--yes", "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=" + tmp.filePath("out") });
   EXPECT_EQ(r.code, 1) << str(r.err);
   EXPECT_TRUE(r.err.contains("- " + sFlat)) << str(r.err);
   EXPECT_TRUE(r.err.contains("- " + sCase)) << str(r.err);
   EXPECT_EQ(filesUnder(tmp.filePath("out")), QStringList());
}

TEST(CliPimplWarnings, ShownOnlyWhenTheExportWouldUsePimpl)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString sProject = tmp.filePath("shop.tavrel");
   ASSERT_EQ(runTavrel({ "import", test_support::examplePath("shop.json"), sProject }).code, 0);

   // PIMPL off (nothing stored): the example checks clean.
   run_result r = runTavrel({ "check", sProject });
   EXPECT_EQ(r.code, 0) << str(r.err);
   EXPECT_FALSE(r.out.contains("warning:")) << str(r.out);
   EXPECT_TRUE(r.out.contains(", 0 warning(s)")) << str(r.out);

   r = runTavrel({ "check", sProject, "--TavrelCppExport_generate_pimpl=1" });
   EXPECT_EQ(r.code, 0) << str(r.err);
   EXPECT_EQ(r.out.count("warning: "), 5) << str(r.out);
   EXPECT_EQ(r.out.count("with the PIMPL idiom on"), 5) << str(r.out);

   // The project's own setting, and the command line over it.
   ASSERT_TRUE(execSql(sProject, { "INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) "
                                   "VALUES ('7C3E9A52-4B1D-4F86-9E27-5D0A8C61B3F4', 'GENERATE_PIMPL', 1, 1)" }));
   r = runTavrel({ "check", sProject });
   EXPECT_EQ(r.out.count("with the PIMPL idiom on"), 5) << str(r.out);
   r = runTavrel({ "check", sProject, "--TavrelCppExport_generate_pimpl=0" });
   EXPECT_FALSE(r.out.contains("warning:")) << str(r.out);

   // The other plug-in parameters still belong to the export.
   r = runTavrel({ "check", sProject, "--TavrelCppExport_template_type=1" });
   EXPECT_EQ(r.code, 2);
}

TEST(CliProjectName, ExamplesNameTheirProjectsForCMake)
{
   for (const char * szModel : { "shop.json", "library.json" })
   {
      QTemporaryDir tmp;
      ASSERT_TRUE(tmp.isValid());
      const QString sModel = tmp.filePath(szModel);
      ASSERT_TRUE(test_support::writeAll(sModel, test_support::readAll(test_support::examplePath(szModel))));
      const run_result r = runTavrel({ "check", sModel, "--TavrelCppExport_generate_pimpl=0" });
      EXPECT_EQ(r.code, 0) << str(r.out + r.err);
      EXPECT_FALSE(r.out.contains("CMakeLists.txt")) << szModel << ": " << str(r.out);
   }

   // A model named otherwise is told the name to use.
   QTemporaryDir tmp;
   const QString sModel = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(sModel, R"J({"name": "Shop", "entities": [
      {"name": "A", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})J"));
   const run_result r = runTavrel({ "check", sModel });
   EXPECT_TRUE(r.out.contains("rename the project from 'Shop' to 'SHOP'")) << str(r.out);
}

namespace {

// A write to a project file caught in the middle: the file and its rollback journal as a killed
// process leaves them (copied while the transaction is open, so no process holds a lock on them).
bool captureInterruptedWrite(const QString & sLive, const QString & sCopy, const QStringList & lstMore)
{
   const QString sName = "cli_integrity_interrupted";
   bool bOk = false;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sName);
      db.setDatabaseName(sLive);
      if (db.open())
      {
         QSqlQuery q(db);
         // A small page cache, so that the write spills changed pages into the file itself.
         bOk = q.exec("PRAGMA cache_size = 10") && db.transaction() && q.exec("CREATE TABLE IF NOT EXISTS t_filler (x TEXT)");
         const QString sBlock(4000, QLatin1Char('z'));
         for (int i = 0; bOk && (i < 400); ++i)
         {
            q.prepare("INSERT INTO t_filler (x) VALUES (?)");
            q.addBindValue(sBlock + QString::number(i));
            bOk = q.exec();
         }
         for (const QString & sql : lstMore) { bOk = bOk && q.exec(sql); }
         bOk = bOk && QFileInfo::exists(sLive + "-journal");
         bOk = bOk && QFile::copy(sLive, sCopy) && QFile::copy(sLive + "-journal", sCopy + "-journal");
         db.rollback();
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return bOk;
}

} // namespace

TEST(CliInterruptedWrite, ReadCommandsRollTheJournalBack)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString sLive = tmp.filePath("live.tavrel");
   ASSERT_EQ(runTavrel({ "import", test_support::examplePath("shop.json"), sLive }).code, 0);
   const run_result rExpected = runTavrel({ "dump", sLive });
   ASSERT_EQ(rExpected.code, 0);

   const QString sCrashed = tmp.filePath("crashed.tavrel");
   ASSERT_TRUE(captureInterruptedWrite(sLive, sCrashed, { "DELETE FROM t_entity", "UPDATE t_project SET name = 'GONE'" }));
   ASSERT_TRUE(QFileInfo::exists(sCrashed + "-journal"));

   run_result r = runTavrel({ "dump", sCrashed });
   EXPECT_EQ(r.code, 0) << str(r.err);
   EXPECT_EQ(r.out, rExpected.out);
   EXPECT_FALSE(QFileInfo::exists(sCrashed + "-journal"));
   r = runTavrel({ "check", sCrashed });
   EXPECT_EQ(r.code, 0) << str(r.err);
   EXPECT_TRUE(r.out.contains("Project 'SHOP' : ")) << str(r.out);
}

TEST(CliInterruptedWrite, KilledFirstImportIsExplained)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   // The first import into a new file, cut before its commit.
   const QString sLive = tmp.filePath("live.tavrel");
   const QString sCrashed = tmp.filePath("crashed.tavrel");
   ASSERT_TRUE(captureInterruptedWrite(sLive, sCrashed, { "CREATE TABLE t_project (seq INTEGER PRIMARY KEY, name TEXT)" }));
   ASSERT_TRUE(QFileInfo::exists(sCrashed + "-journal"));

   const run_result r = runTavrel({ "check", sCrashed });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("project file '" + sCrashed + "' is empty: its first import did not finish")) << str(r.err);
   EXPECT_TRUE(r.err.contains("import the model into it again")) << str(r.err);
   EXPECT_FALSE(QFileInfo::exists(sCrashed + "-journal"));
   // Which then works.
   EXPECT_EQ(runTavrel({ "import", test_support::examplePath("shop.json"), sCrashed }).code, 0);
   EXPECT_EQ(runTavrel({ "dump", sCrashed }).code, 0);
}

TEST(CliImportRules, ParentCyclesAreRefused)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString sModel = tmp.filePath("cycle.json");
   ASSERT_TRUE(test_support::writeAll(sModel, R"J({"name": "P", "entities": [
      {"name": "A", "parent": "B", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
      {"name": "B", "parent": "A"}, {"name": "S", "parent": "S"}]})J"));
   const run_result r = runTavrel({ "import", sModel, tmp.filePath("cycle.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains(sModel + ": entities[0].parent: inheritance cycle A -> B -> A")) << str(r.err);
   EXPECT_TRUE(r.err.contains(sModel + ": entities[2].parent: inheritance cycle S -> S")) << str(r.err);
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("cycle.tavrel")));
}
