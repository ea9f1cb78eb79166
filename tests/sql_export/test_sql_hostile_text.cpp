// Model texts that would end an SQL name, literal, comment or statement: the schema scripts and
// migrations the real program writes run with each database's own client, and a table made
// beforehand keeps its rows.

#include <QProcess>
#include <QProcessEnvironment>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "db_environment.h"
#include "test_support.h"

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// Version 1 and 2 of a model whose every text SQL could trip on: names with quotes of each
// database, ';', comment openers and closers, parentheses and dots; descriptions and defaults
// with backslashes before quotes, line breaks, "*/"; forced types that are types.
QByteArray hostileModel(int iVersion)
{
   const bool b2 = (iVersion == 2);
   QString s = QString::fromUtf8(R"json({ "name": "Hostile", "entities": [
  {"id": 1, "name": "Note", "table": "%1", "description": "x'); DROP TABLE victim; --\n\\'); DROP TABLE victim; -- /* end",
   "soft_delete_column": "gone'); DROP TABLE victim; --",
   "properties": [
    {"id": 1, "name": "id", "type": "long", "primary_key": true, "description": "\\'); DROP TABLE victim; -- \\ x"},
    {"id": 2, "name": "body", "type": "QString", "column": "%2", "default": "d'); DROP TABLE victim; --\\",
     "description": "*/ DROP TABLE victim; /* -- ;", "index": true},
    {"id": 3, "name": "price", "type": "double", "force_sql_type": "%3", "default": "1.5"},
    {"id": 4, "name": "tags", "relation": {"kind": "many_to_many", "target": "Tag", "extra_table": "note tag (join)",
     "foreign_key": "n'); DROP TABLE victim; --", "foreign_key_owner": "t`; DROP TABLE victim; --"}}%4 ]},
  {"id": 2, "name": "Tag", "table": "tag", "description": "\\\\'; DROP TABLE victim; --", "properties": [
    {"id": 6, "name": "id", "type": "long", "primary_key": true},
    {"id": 7, "name": "label", "type": "QString", "column": "l'; DROP TABLE victim; --", "unique": true, "max_length": 40,
     "default": "\\\\'; DROP TABLE victim; -- ", "description": "%5"},
    {"id": 8, "name": "note", "relation": {"kind": "many_to_one", "target": "Note"}, "column": "n`'x"} ]} ] })json");
   s = s.arg(b2 ? "note 2 (x) . y" : "note (x) . y", b2 ? "b2'); DROP TABLE victim; -- `y` */ ;" : "b'); DROP TABLE victim; -- `x` */ ;",
             b2 ? "DOUBLE PRECISION" : "NUMERIC(10, 2)",
             b2 ? R"json(, {"id": 9, "name": "extra", "type": "QString", "column": "e'`; DROP TABLE victim; --", "default": "\\'; DROP TABLE victim; --"})json" : "",
             b2 ? "two\\\\'); DROP TABLE victim; --" : "one");
   return s.toUtf8();
}

// The scripts the program writes for one database: the schema of version 1, then the migration
// from version 1 to 2.
struct scripts
{
   QString sSchema;
   QString sMigration;
};

bool writeScripts(const QTemporaryDir & dir, const QString & sDialect, scripts & result, QString & sError)
{
   const QString sV1 = dir.filePath("v1.json"), sV2 = dir.filePath("v2.json");
   if (! test_support::writeAll(sV1, hostileModel(1)) || ! test_support::writeAll(sV2, hostileModel(2))) { sError = "cannot write the models"; return false; }
   result.sSchema = dir.filePath(sDialect + ".schema.sql");
   result.sMigration = dir.filePath(sDialect + ".migration.sql");
   const test_support::cli_result e = test_support::runTavrel({ "export", sV1, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=" + sDialect,
                                                                "--TavrelSqlExport_path=" + result.sSchema });
   if (e.code != 0) { sError = "export: " + e.err; return false; }
   const test_support::cli_result m = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", sDialect, "--allow-destructive", "-o", result.sMigration });
   if (m.code != 0) { sError = "migrate: " + m.err; return false; }
   return true;
}

// A database client run on a script file; false with its output.
bool runClient(const QString & sProgram, const QStringList & args, const QString & sScript, const QMap<QString, QString> & env, QString & sError)
{
   QProcess proc;
   proc.setProgram(sProgram);
   proc.setArguments(args);
   proc.setStandardInputFile(sScript);
   QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
   for (auto itr = env.cbegin(); itr != env.cend(); ++itr) { e.insert(itr.key(), itr.value()); }
   proc.setProcessEnvironment(e);
   proc.start();
   if (! proc.waitForFinished(120000)) { proc.kill(); proc.waitForFinished(); sError = sProgram + " did not finish"; return false; }
   const QString sOutput = QString::fromUtf8(proc.readAllStandardOutput() + proc.readAllStandardError());
   if ((proc.exitStatus() != QProcess::NormalExit) || (proc.exitCode() != 0)) { sError = sProgram + " failed on " + sScript + ":\n" + sOutput; return false; }
   return true;
}

// The rows of the sentinel table and whether the column the migration added is there.
void checkDatabase(QSqlDatabase db, const QString & sExtraQuery)
{
   ASSERT_TRUE(db.open());
   QSqlQuery q(db);
   ASSERT_TRUE(q.exec("SELECT count(*), sum(id) FROM victim"));
   ASSERT_TRUE(q.next());
   EXPECT_EQ(q.value(0).toInt(), 3);
   EXPECT_EQ(q.value(1).toInt(), 6);
   // The migration did run: the renamed table holds the added column.
   EXPECT_TRUE(q.exec(sExtraQuery)) << sExtraQuery.toStdString();
}

const char * const k_sSentinel = "CREATE TABLE victim (id INT);\nINSERT INTO victim VALUES (1);\nINSERT INTO victim VALUES (2);\nINSERT INTO victim VALUES (3);\n";

} // namespace

TEST(SqlHostileText, ScriptsRunOnSqliteAndTheSentinelSurvives)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   scripts s;
   QString sError;
   ASSERT_TRUE(writeScripts(dir, "sqlite", s, sError)) << sError.toStdString();
   const QString sDb = dir.filePath("hostile.db");
   const QString sSentinel = dir.filePath("sentinel.sql");
   ASSERT_TRUE(test_support::writeAll(sSentinel, k_sSentinel));
   for (const QString & sScript : { sSentinel, s.sSchema, s.sMigration })
   { ASSERT_TRUE(runClient("sqlite3", { "-bail", sDb }, sScript, {}, sError)) << sError.toStdString(); }
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "hostile_sqlite");
      db.setDatabaseName(sDb);
      checkDatabase(db, "SELECT \"e'`; DROP TABLE victim; --\" FROM \"note 2 (x) . y\"");
   }
   QSqlDatabase::removeDatabase("hostile_sqlite");
}

class SqlHostileOnServer : public ::testing::TestWithParam<db_support::db_server::enum_kind>
{
};

TEST_P(SqlHostileOnServer, ScriptsRunAndTheSentinelSurvives)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   const bool bPostgres = (GetParam() == db_support::db_server::kind_postgresql);
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   scripts s;
   QString sError;
   ASSERT_TRUE(writeScripts(dir, bPostgres ? "postgresql" : "mariadb", s, sError)) << sError.toStdString();
   const QString sDatabase = "sqlx_hostile";
   ASSERT_TRUE(pServer->recreateDatabase(sDatabase, sError)) << sError.toStdString();
   ASSERT_TRUE(pServer->execScript(k_sSentinel, sError, sDatabase)) << sError.toStdString();
   const QString sPort = QString::number(pServer->getPort());
   for (const QString & sScript : { s.sSchema, s.sMigration })
   {
      if (bPostgres)
      {
         // Also with backslashes read as escapes in plain literals, as older servers did.
         ASSERT_TRUE(runClient("psql", { "-X", "-q", "-v", "ON_ERROR_STOP=1", "-h", "127.0.0.1", "-p", sPort, "-U", db_support::db_server::k_sUser, "-d", sDatabase },
                               sScript, { { "PGPASSWORD", db_support::db_server::k_sPassword }, { "PGOPTIONS", "-c standard_conforming_strings=off" } }, sError))
            << sError.toStdString();
      }
      else
      {
         ASSERT_TRUE(runClient("mariadb", { "--protocol=TCP", "-h", "127.0.0.1", "-P", sPort, "-u", db_support::db_server::k_sUser,
                                            QString("--password=") + db_support::db_server::k_sPassword, sDatabase },
                               sScript, {}, sError)) << sError.toStdString();
      }
   }
   {
      QSqlDatabase db = pServer->connect("hostile_server", sDatabase);
      checkDatabase(db, bPostgres ? "SELECT \"e'`; DROP TABLE victim; --\" FROM \"note 2 (x) . y\""
                                  : "SELECT `e'``; DROP TABLE victim; --` FROM `note 2 (x) . y`");
   }
   QSqlDatabase::removeDatabase("hostile_server");
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlHostileOnServer, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlHostileOnServer, ::testing::Values(db_support::db_server::kind_mariadb));
