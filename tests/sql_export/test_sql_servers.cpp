#include <gtest/gtest.h>

#include <QSqlQuery>

#include "db_environment.h"
#include "migration_series.h"
#include "model/project.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_test_support.h"

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

class SqlOnServer : public ::testing::TestWithParam<db_support::db_server::enum_kind>
{
protected:
   sql_export::enum_dialect dialect() const
   { return ((GetParam() == db_support::db_server::kind_postgresql) ? sql_export::dialect_postgresql : sql_export::dialect_mariadb); }
};

// Each example's script runs on the server, and the database read back gives the same script; so
// does the migration from an empty model.
TEST_P(SqlOnServer, ExampleScriptsRunAndComeBackTheSame)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   for (const QString & sName : { QString("shop"), QString("library") })
   {
      const model::project_ptr pProject = sql_test::exampleModel(sName);
      ASSERT_TRUE(pProject);
      // A forced type is written as given and read back as the server spells it.
      sql_test::clearForcedTypes(* pProject);
      const QString sDatabase = "sqlx_" + sName;
      QString sError;
      ASSERT_TRUE(pServer->recreateDatabase(sDatabase, sError)) << sError.toStdString();
      // With its comments first: they must run too.
      ASSERT_TRUE(pServer->execScript(sql_test::scriptOf(* pProject, dialect()), sError, sDatabase)) << sError.toStdString();
      ASSERT_TRUE(pServer->recreateDatabase(sDatabase, sError)) << sError.toStdString();
      const QString sFirst = sql_test::scriptOf(* pProject, dialect(), false);
      ASSERT_TRUE(pServer->execScript(sFirst, sError, sDatabase)) << sError.toStdString();
      const model::project_ptr pBack = sql_test::importFrom(pServer->getUrl(sDatabase), pProject->getName(), sError);
      ASSERT_TRUE(pBack) << sError.toStdString();
      EXPECT_EQ(sql_test::scriptOf(* pBack, dialect(), false).toStdString(), sFirst.toStdString()) << sName.toStdString();
      // A migration from an empty model makes the same tables (their keys added after them).
      const sql_export::sql_dialect d(dialect());
      const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::sql_schema(), sql_export::schema_builder::build(* pProject, d, sql_export::schema_options()), d);
      ASSERT_TRUE(pServer->recreateDatabase(sDatabase, sError)) << sError.toStdString();
      ASSERT_TRUE(pServer->execScript(sql_export::schema_migration::write(plan, d, { "EMPTY", "empty.json" }, { sName, sName + ".json" }), sError, sDatabase)) << sError.toStdString();
      const model::project_ptr pMigrated = sql_test::importFrom(pServer->getUrl(sDatabase), pProject->getName(), sError);
      ASSERT_TRUE(pMigrated) << sError.toStdString();
      EXPECT_EQ(sql_test::scriptOf(* pMigrated, dialect(), false).toStdString(), sFirst.toStdString()) << sName.toStdString();
   }
}

// Tables that point at each other are created, then their keys added.
TEST_P(SqlOnServer, KeysOfACycleAreAddedAtTheEnd)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   const model::project_ptr pProject = sql_test::modelFromJson(R"({ "name": "CYCLE", "entities": [
      { "name": "Alpha", "table": "alpha", "properties": [ {"name": "id", "type": "long", "primary_key": true},
        {"name": "order", "type": "int"}, {"name": "beta", "relation": {"kind": "many_to_one", "target": "Beta"}} ] },
      { "name": "Beta", "table": "beta", "properties": [ {"name": "id", "type": "long", "primary_key": true},
        {"name": "Note", "type": "QString", "description": "a \\ b's"},
        {"name": "alpha", "relation": {"kind": "many_to_one", "target": "Alpha"}} ] } ] })");
   ASSERT_TRUE(pProject);
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase("sqlx_cycle", sError)) << sError.toStdString();
   EXPECT_TRUE(pServer->execScript(sql_test::scriptOf(* pProject, dialect()), sError, "sqlx_cycle")) << sError.toStdString();
}

// The series of model versions migrated step by step on a database holding rows.
TEST_P(SqlOnServer, MigrationSeriesKeepsRowsAndReadsBackAsTheNewModel)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   const QString sDatabase = "sqlx_series";
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase(sDatabase, sError)) << sError.toStdString();
   sql_test::migration_target target;
   target.sUrl = pServer->getUrl(sDatabase);
   target.run = [pServer, sDatabase](const QString & sScript, QString & sErr) { return pServer->execScript(sScript, sErr, sDatabase); };
   target.values = [pServer, sDatabase](const QString & sQuery) {
      QStringList lst;
      {
         QSqlDatabase db = pServer->connect("sqlx_series_values", sDatabase);
         QSqlQuery q(db);
         if (db.open() && q.exec(sQuery)) { while (q.next()) { lst.append(q.value(0).toString()); } }
      }
      QSqlDatabase::removeDatabase("sqlx_series_values");
      return lst;
   };
   sql_test::runMigrationSeries(dialect(), target);
}

TEST_P(SqlOnServer, GeneratedModelMigratedReadsBackLikeItsNextVersion)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   QList<sql_test::migration_target> lstTargets;
   for (const QString & sDatabase : { QString("sqlx_migrated"), QString("sqlx_fresh") })
   {
      QString sError;
      ASSERT_TRUE(pServer->recreateDatabase(sDatabase, sError)) << sError.toStdString();
      sql_test::migration_target t;
      t.sUrl = pServer->getUrl(sDatabase);
      t.run = [pServer, sDatabase](const QString & sScript, QString & sErr) { return pServer->execScript(sScript, sErr, sDatabase); };
      lstTargets.append(t);
   }
   sql_test::runGeneratedMigration(dialect(), lstTargets.at(0), lstTargets.at(1));
}

// A table renamed, then its primary key moved to another column.
TEST_P(SqlOnServer, PrimaryKeyOfARenamedTableChanges)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   const QString sVersion = R"({ "name": "KEYS", "entities": [ { "id": 1, "name": "Book", "table": "%1", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": %2}, {"id": 2, "name": "code", "type": "QString", "max_length": 20, "primary_key": %3} ] } ] })";
   const QList<model::project_ptr> lstVersions { sql_test::modelFromJson(sVersion.arg("book", "true", "false").toUtf8()),
                                                 sql_test::modelFromJson(sVersion.arg("volume", "true", "false").toUtf8()),
                                                 sql_test::modelFromJson(sVersion.arg("volume", "false", "true").toUtf8()) };
   const sql_export::sql_dialect d(dialect());
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase("sqlx_keys", sError)) << sError.toStdString();
   ASSERT_TRUE(lstVersions.at(0) && lstVersions.at(1) && lstVersions.at(2));
   ASSERT_TRUE(pServer->execScript(sql_test::scriptOf(* lstVersions.at(0), dialect()), sError, "sqlx_keys")) << sError.toStdString();
   for (int i = 1; i < lstVersions.size(); ++i)
   {
      const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* lstVersions.at(i - 1), d, {}),
                                                                                 sql_export::schema_builder::build(* lstVersions.at(i), d, {}), d);
      ASSERT_TRUE(pServer->execScript(sql_export::schema_migration::write(plan, d, { "KEYS", "a" }, { "KEYS", "b" }), sError, "sqlx_keys")) << sError.toStdString();
   }
   const model::project_ptr pBack = sql_test::importFrom(pServer->getUrl("sqlx_keys"), "KEYS", sError);
   ASSERT_TRUE(pBack) << sError.toStdString();
   EXPECT_EQ(sql_test::scriptOf(* pBack, dialect(), false).toStdString(), sql_test::scriptOf(* lstVersions.at(2), dialect(), false).toStdString());
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlOnServer, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlOnServer, ::testing::Values(db_support::db_server::kind_mariadb));

} // namespace
