// import-db against hostile and careless input: DDL scripts that reach for other files or run
// forever, broken comments and quotes, names the model cannot hold, broken views, SQLite's own
// tables, odd project file names and a source database left half-written.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>

#include "db_import/ddl_loader.h"
#include "model/entity.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "test_support.h"

using test_support::cli_result;
using test_support::runTavrel;

namespace {

class ImportDbGuard : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sVictim;

   QString path(const QString & sName) const { return m_dir.path() + "/" + sName; }

   QString write(const QString & sName, const QString & sText)
   {
      const QString sFile = path(sName);
      test_support::writeAll(sFile, sText.toUtf8());
      return sFile;
   }

   void SetUp() override
   {
      m_sVictim = path("victim.tavrel");
      const cli_result r = runTavrel({ "import-db", "--ddl", write("victim.sql", "CREATE TABLE pet (id INTEGER PRIMARY KEY, name TEXT);\n"), m_sVictim });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
   }

   // The script fails, in a dry run as in a real one, with the message, and leaves every file
   // as it was (no project written, nothing created beside).
   void expectRefused(const QString & sScript, const QString & sMessage)
   {
      const QString sDdl = write("attack.sql", sScript);
      const QStringList lstBefore = test_support::treeState(m_dir.path());
      for (const bool bDry : { true, false })
      {
         QStringList args { "import-db", "--ddl", sDdl, path("out.tavrel") };
         if (bDry) { args.append("--dry-run"); }
         const cli_result r = runTavrel(args);
         EXPECT_EQ(r.code, 1) << r.err.toStdString();
         EXPECT_TRUE(r.err.contains(sMessage)) << r.err.toStdString();
         EXPECT_EQ(test_support::treeState(m_dir.path()), lstBefore);
      }
   }

   QStringList entities(const QString & sProject) const
   {
      model::project_ptr p;
      const bool bJson = sProject.endsWith(".json");
      if (! (bJson ? bool(storage::project_storage::readJsonFile(sProject, p)) : bool(storage::project_storage::loadProject(sProject, p)))) { return { "unreadable" }; }
      QStringList lst;
      for (const auto & e : * p->getListOfAllEntities()) { lst.append(e->getName()); }
      lst.sort();
      return lst;
   }
};

TEST_F(ImportDbGuard, AttachingAnotherProjectIsRefusedAndItStaysIntact)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\n\n  ATTACH DATABASE '" + m_sVictim + "' AS v;\nDELETE FROM v.t_entity;\n",
                 "attack.sql:3:3: statement refused: ATTACH DATABASE '" + m_sVictim + "' AS v (");
   EXPECT_EQ(entities(m_sVictim), QStringList { "Pet" });
}

TEST_F(ImportDbGuard, AttachingANewFileCreatesNothing)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nATTACH '" + path("new.db") + "' AS x; CREATE TABLE x.t (id INTEGER);\n",
                 "attack.sql:2:1: statement refused: ATTACH '");
   EXPECT_FALSE(QFileInfo::exists(path("new.db")));
}

TEST_F(ImportDbGuard, VacuumIntoCreatesNothing)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nVACUUM INTO '" + path("copy.db") + "';\n", "attack.sql:2:1: statement refused: VACUUM INTO");
   EXPECT_FALSE(QFileInfo::exists(path("copy.db")));
}

TEST_F(ImportDbGuard, PragmasSelectsAndChangesOfRowsAreRefused)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nPRAGMA writable_schema = ON;\n", "attack.sql:2:1: statement refused: PRAGMA writable_schema = ON");
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nSELECT * FROM item;\n", "attack.sql:2:1: statement refused: SELECT * FROM item");
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nDELETE FROM item;\n", "attack.sql:2:1: statement refused: DELETE FROM item");
}

TEST_F(ImportDbGuard, LoadExtensionIsRefusedWhereverItHides)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nCREATE TABLE x AS SELECT load_extension('" + path("evil.so") + "') AS y;\n",
                 "attack.sql:2:1: statement refused: CREATE TABLE x AS SELECT load_extension(");
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY, n TEXT DEFAULT 'a');\nINSERT INTO item VALUES (1, load_extension('x'));\n",
                 "load_extension() is not allowed");
}

TEST_F(ImportDbGuard, TemporaryTablesAreRefused)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\nCREATE TEMP TABLE scratch (id INTEGER);\n", "attack.sql:2:1: statement refused: CREATE TEMP TABLE scratch");
}

TEST_F(ImportDbGuard, ARecursiveQueryThatNeverEndsIsStopped)
{
   expectRefused("CREATE TABLE item (id INTEGER PRIMARY KEY);\n"
                 "CREATE TABLE n AS WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT max(x) FROM c;\n",
                 QString("attack.sql:2:1: statement stopped: %1 ... (it ran %2 SQLite steps")
                    .arg(QString("CREATE TABLE n AS WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c)").left(70))
                    .arg(db_import::ddl_loader::k_iStepLimit));
}

// Each statement some 90 million steps (18 a row), under the limit of one; six are over the
// script's.
TEST_F(ImportDbGuard, ManyLongStatementsAreStoppedByTheScriptsLimit)
{
   QString sScript = "CREATE TABLE item (id INTEGER PRIMARY KEY);\n";
   for (int i = 1; i <= 6; ++i)
   { sScript += QString("CREATE TABLE n%1 AS WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c LIMIT 5000000) SELECT max(x) FROM c;\n").arg(i); }
   expectRefused(sScript, QString("attack.sql:7:1: statement stopped: %1 ... (the script ran %2 SQLite steps in all")
                             .arg(QString("CREATE TABLE n6 AS WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c LIMIT 5000000)").left(70))
                             .arg(db_import::ddl_loader::k_iScriptStepLimit));
}

TEST_F(ImportDbGuard, ADumpsForeignKeysPragmaAndItsTransactionStillLoad)
{
   const cli_result r = runTavrel({ "import-db", "--ddl", write("dump.sql", "PRAGMA foreign_keys=OFF;\nBEGIN TRANSACTION;\nCREATE TABLE item (id INTEGER PRIMARY KEY);\n"
                                                                         "INSERT INTO item VALUES (1);\nCOMMIT;\n"), path("dump.json") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(entities(path("dump.json")), QStringList { "Item" });
}

// Rows rather than tables: SQLite's own time for many tables would make the test slow.
TEST_F(ImportDbGuard, ALongScriptSaysHowFarItIs)
{
   QString sScript = "CREATE TABLE item (id INTEGER PRIMARY KEY);\n";
   const qsizetype iRows = db_import::ddl_loader::k_iProgressStatements + 1;
   for (qsizetype i = 0; i < iRows; ++i) { sScript += QString("INSERT INTO item VALUES (%1);\n").arg(i); }
   const cli_result r = runTavrel({ "import-db", "--ddl", write("long.sql", sScript), path("long.json") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains(QString("tavrel: ran %1 of %2 statements...\n").arg(db_import::ddl_loader::k_iProgressStatements).arg(iRows + 1))) << r.err.toStdString();
   EXPECT_EQ(r.err.count("statements..."), 1) << r.err.toStdString();
}

TEST_F(ImportDbGuard, AFailingStatementNamesItsLineAndColumn)
{
   const QString sDdl = write("bad.sql", "CREATE TABLE a (id INTEGER PRIMARY KEY);\n\nCREATE TABLE b (\n   id INTEGER PRIMARY KEY,, x);\n");
   cli_result r = runTavrel({ "import-db", "--strict", "--ddl", sDdl, path("out.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("bad.sql:4:27: statement failed: near \",\": syntax error: CREATE TABLE b ( ...")) << r.err.toStdString();
   r = runTavrel({ "import-db", "--ddl", sDdl, path("out.tavrel") });
   EXPECT_EQ(r.code, 0);
   EXPECT_TRUE(r.err.contains("warning: bad.sql:4:27: statement skipped: near \",\": syntax error")) << r.err.toStdString();
}

TEST_F(ImportDbGuard, AnUnclosedCommentOrQuoteIsAnError)
{
   expectRefused("CREATE TABLE a (id INTEGER PRIMARY KEY);\n  /* the rest\nCREATE TABLE b (id INTEGER PRIMARY KEY);\n",
                 "attack.sql:2:3: comment opened here is never closed");
   expectRefused("CREATE TABLE a (id INTEGER PRIMARY KEY, n TEXT DEFAULT 'x);\nCREATE TABLE b (id INTEGER PRIMARY KEY);\n",
                 "attack.sql:1:56: string literal opened here is never closed");
   expectRefused("CREATE TABLE \"a (id INTEGER PRIMARY KEY);\n", "attack.sql:1:14: quoted name (\") opened here is never closed");
}

TEST(DdlSplit, PlacesStatementsAndSplitsTriggersOnce)
{
   db_import::ddl_loader::split_error error;
   const auto lst = db_import::ddl_loader::split("CREATE TABLE a (x);\n  -- note\n   CREATE TRIGGER t AFTER INSERT ON a BEGIN\n  UPDATE a SET x = 1; END;\n[b;c]", & error);
   ASSERT_EQ(lst.size(), 3);
   EXPECT_EQ(lst.at(1).iLine, 3);
   EXPECT_EQ(lst.at(1).iColumn, 4);
   EXPECT_TRUE(lst.at(1).sText.endsWith("END"));
   EXPECT_EQ(lst.at(2).sText, "[b;c]");
   EXPECT_TRUE(error.sWhat.isEmpty());
   db_import::ddl_loader::split("a; `b", & error);
   EXPECT_EQ(error.iColumn, 4);
   EXPECT_EQ(error.sWhat, "quoted name (`) opened here is never closed");
}

TEST_F(ImportDbGuard, ANameTheModelCannotHoldIsLeftOutOrFailsWhenStrict)
{
   const QString sDdl = write("names.sql", "CREATE TABLE item (id INTEGER PRIMARY KEY, \"col\"\"q\" TEXT, ok TEXT);\n"
                                          "CREATE TABLE \"a;b\" (id INTEGER PRIMARY KEY);\n");
   const QString sOut = path("names.tavrel");
   for (const bool bDry : { true, false })
   {
      QStringList args { "import-db", "--ddl", sDdl, sOut };
      if (bDry) { args.append("--dry-run"); }
      const cli_result r = runTavrel(args);
      EXPECT_EQ(r.code, 0) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains("warning: column col\"q of table item left out: its name holds a double quote")) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains("warning: table a;b left out: its name holds ';'")) << r.err.toStdString();
      EXPECT_EQ(QFileInfo::exists(sOut), ! bDry);
   }
   EXPECT_EQ(entities(sOut), QStringList { "Item" });
   EXPECT_EQ(runTavrel({ "check", sOut }).code, 0);
   const QStringList lstBefore = test_support::treeState(m_dir.path());
   for (const bool bDry : { true, false })
   {
      QStringList args { "import-db", "--strict", "--ddl", sDdl, path("strict.tavrel") };
      if (bDry) { args.append("--dry-run"); }
      const cli_result r = runTavrel(args);
      EXPECT_EQ(r.code, 1) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains("column col\"q of table item left out")) << r.err.toStdString();
   }
   EXPECT_EQ(test_support::treeState(m_dir.path()), lstBefore);
}

TEST_F(ImportDbGuard, ABrokenViewIsNamedAndLeftOutUnlessStrictAndNeverReadWhenExcluded)
{
   const QString sDdl = write("views.sql", "CREATE TABLE item (id INTEGER PRIMARY KEY);\nCREATE VIEW lost AS SELECT * FROM missing;\n"
                                          "CREATE VIEW fine AS SELECT id FROM item;\n");
   cli_result r = runTavrel({ "import-db", "--ddl", sDdl, path("views.json") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("warning: view lost cannot be read: ") && r.err.contains("missing")) << r.err.toStdString();
   EXPECT_EQ(entities(path("views.json")), (QStringList { "Fine", "Item" }));
   r = runTavrel({ "import-db", "--strict", "--ddl", sDdl, path("strict.json") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("tavrel: view lost cannot be read")) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(path("strict.json")));
   r = runTavrel({ "import-db", "--strict", "--exclude", "lost", "--ddl", sDdl, path("excluded.json") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("lost")) << r.err.toStdString();
}

TEST_F(ImportDbGuard, SqliteInternalVirtualAndShadowTablesAreLeftOut)
{
   const QString sDdl = write("fts.sql", "CREATE VIRTUAL TABLE docs USING fts5(title, body);\nCREATE VIRTUAL TABLE old_docs USING fts4(body);\n"
                                        "CREATE VIRTUAL TABLE places USING rtree(id, x0, x1);\n"
                                        "CREATE TABLE item (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT);\nINSERT INTO item (name) VALUES ('a');\n"
                                        "INSERT INTO docs VALUES ('t', 'b');\nCREATE TABLE docs_extra (id INTEGER PRIMARY KEY);\n");
   const cli_result r = runTavrel({ "import-db", "--ddl", sDdl, path("fts.json") });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(entities(path("fts.json")), (QStringList { "DocsExtra", "Item" }));
   for (const char * s : { "virtual table docs (fts5) left out", "virtual table old_docs (fts4) left out", "virtual table places (rtree) left out" })
   { EXPECT_TRUE(r.err.contains(s)) << s << "\n" << r.err.toStdString(); }
}

TEST_F(ImportDbGuard, TheProjectNameIsMadeFromTheFileNameOrGiven)
{
   cli_result r = runTavrel({ "import-db", "--ddl", path("victim.sql"), path("my-project.tavrel") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("Project name: MY_PROJECT (from the file name")) << r.out.toStdString();
   r = runTavrel({ "import-db", "--ddl", path("victim.sql"), path("2024 shop.json") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("Project name: PROJECT_2024_SHOP")) << r.out.toStdString();
   r = runTavrel({ "import-db", "--ddl", path("victim.sql"), path("x-y.tavrel"), "--name", "Shop" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   model::project_ptr p;
   ASSERT_TRUE(bool(storage::project_storage::loadProject(path("x-y.tavrel"), p)));
   EXPECT_EQ(p->getName(), "Shop");
   r = runTavrel({ "import-db", "--ddl", path("victim.sql"), path("z.tavrel"), "--name", "not-a-name" });
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("--name takes a C++ identifier, not 'not-a-name'")) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(path("z.tavrel")));
}

// A database with a transaction open while its file and journal are copied: the copies are
// what a writer that crashed leaves behind. A cache of two pages makes the writer write changed
// pages into the file before its commit, so the journal must be played back.
TEST_F(ImportDbGuard, ASourceWithAHotJournalIsLeftAsItWasAndTheMessageSaysWhatToDo)
{
   const QString sLive = path("live.db");
   const QString sConnection = "hot_" + QUuid::createUuid().toString(QUuid::Id128);
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sConnection);
      db.setDatabaseName(sLive);
      ASSERT_TRUE(db.open());
      QSqlQuery q(db);
      ASSERT_TRUE(q.exec("PRAGMA journal_mode = DELETE"));
      ASSERT_TRUE(q.exec("CREATE TABLE item (id INTEGER PRIMARY KEY, name TEXT)"));
      ASSERT_TRUE(q.exec("BEGIN"));
      for (int i = 0; i < 200; ++i) { ASSERT_TRUE(q.exec("INSERT INTO item (name) VALUES ('" + QString(500, 'x') + "')")); }
      ASSERT_TRUE(q.exec("COMMIT"));
      ASSERT_TRUE(q.exec("PRAGMA cache_size = 2"));
      ASSERT_TRUE(q.exec("BEGIN"));
      ASSERT_TRUE(q.exec("UPDATE item SET name = 'changed'"));
      ASSERT_TRUE(QFileInfo::exists(sLive + "-journal"));
      ASSERT_TRUE(QFile::copy(sLive, path("crashed.db")));
      ASSERT_TRUE(QFile::copy(sLive + "-journal", path("crashed.db-journal")));
      q.exec("ROLLBACK");
      q.finish();
      db.close();
   }
   QSqlDatabase::removeDatabase(sConnection);
   const QStringList lstBefore = test_support::treeState(m_dir.path());
   cli_result r = runTavrel({ "import-db", "sqlite:" + path("crashed.db"), path("crashed.json") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("crashed.db-journal' was left by a program that stopped while writing")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("PRAGMA quick_check")) << r.err.toStdString();
   EXPECT_EQ(test_support::treeState(m_dir.path()), lstBefore);

   // A sound source is read and left byte for byte as it was, with nothing created beside it.
   r = runTavrel({ "import-db", "sqlite:" + sLive, path("live.json") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(test_support::treeState(m_dir.path(), { "live.json" }), lstBefore);
}

} // namespace
