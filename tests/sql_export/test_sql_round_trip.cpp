#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "catalog_compare.h"
#include "db_import/import_options.h"
#include "db_import/model_merger.h"
#include "model/entity.h"
#include "model/property.h"
#include "db_environment.h"
#include "model/project.h"
#include "sql_test_support.h"
#include "storage/project_storage.h"
#include "test_support.h"

namespace {


// tests/sql_export/round_trip/DIALECT.sql: the tables, then after the line "-- rows" their rows.
struct round_trip_script
{
   QString sTables;
   QString sRows;
};

round_trip_script roundTripScript(const QString & sDialect)
{
   const QString s = QString::fromUtf8(test_support::readAll(test_support::sourceDir() + "/tests/sql_export/round_trip/" + sDialect + ".sql"));
   const qsizetype i = s.indexOf("\n-- rows\n");
   return round_trip_script { s.left(i), ((i < 0) ? QString() : s.mid(i)) };
}

// The model as a user keeps it: saved to a project file, opened, written as JSON and read back.
model::project_ptr storedAndReadBack(const model::project & project, const QString & sFolder)
{
   const QString sFile = sFolder + "/model.tavrel";
   model::project_ptr pOpened;
   if (! storage::project_storage::saveProject(project, sFile) || ! storage::project_storage::loadProject(sFile, pOpened)) { return nullptr; }
   model::project_ptr pBack;
   return (storage::project_storage::parseJson(storage::project_storage::toJson(* pOpened), "model.json", pBack) ? pBack : nullptr);
}

class SqlRoundTripOnServer : public ::testing::TestWithParam<db_support::db_server::enum_kind>
{
protected:
   bool postgresql() const { return (GetParam() == db_support::db_server::kind_postgresql); }
   sql_export::enum_dialect dialect() const { return (postgresql() ? sql_export::dialect_postgresql : sql_export::dialect_mariadb); }
};

} // namespace

// A database imported, its model stored, exported and run on an empty database, gives the same
// catalog, and the source's rows go into the copy as they are.
TEST(SqlRoundTrip, SqliteCatalogComesBackTheSame)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const round_trip_script script = roundTripScript("sqlite");
   const QString sSource = dir.filePath("source.db"), sCopy = dir.filePath("copy.db");
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(sSource, script.sTables + script.sRows, sError)) << sError.toStdString();
   const model::project_ptr pImported = sql_test::importFrom("sqlite:" + sSource, "RoundTrip", sError);
   ASSERT_TRUE(pImported) << sError.toStdString();
   const model::project_ptr pModel = storedAndReadBack(* pImported, dir.path());
   ASSERT_TRUE(pModel);
   QStringList lstWarnings;
   const QString sScript = sql_test::scriptOf(* pModel, sql_export::dialect_sqlite, false, & lstWarnings);
   EXPECT_TRUE(lstWarnings.isEmpty()) << lstWarnings.join('\n').toStdString();
   ASSERT_TRUE(sql_test::runOnSqlite(sCopy, sScript, sError)) << sError.toStdString() << "\n" << sScript.toStdString();
   EXPECT_TRUE(sql_test::runOnSqlite(sCopy, script.sRows, sError)) << sError.toStdString();
   db_import::db_catalog source, copy;
   ASSERT_TRUE(sql_test::readCatalog("sqlite:" + sSource, source, sError)) << sError.toStdString();
   ASSERT_TRUE(sql_test::readCatalog("sqlite:" + sCopy, copy, sError)) << sError.toStdString();
   EXPECT_GE(source.lstTables.size(), 15);
   const QStringList lstDifferences = sql_test::catalogDifferences(source, copy);
   EXPECT_TRUE(lstDifferences.isEmpty()) << lstDifferences.join('\n').toStdString() << "\n" << sScript.toStdString();
}

TEST_P(SqlRoundTripOnServer, CatalogComesBackTheSame)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const round_trip_script script = roundTripScript(postgresql() ? "postgresql" : "mariadb");
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase("round_source", sError)) << sError.toStdString();
   ASSERT_TRUE(pServer->recreateDatabase("round_copy", sError)) << sError.toStdString();
   ASSERT_TRUE(pServer->execScript(script.sTables + script.sRows, sError, "round_source")) << sError.toStdString();
   const model::project_ptr pImported = sql_test::importFrom(pServer->getUrl("round_source"), "RoundTrip", sError);
   ASSERT_TRUE(pImported) << sError.toStdString();
   const model::project_ptr pModel = storedAndReadBack(* pImported, dir.path());
   ASSERT_TRUE(pModel);
   QStringList lstWarnings;
   const QString sScript = sql_test::scriptOf(* pModel, dialect(), false, & lstWarnings);
   EXPECT_TRUE(lstWarnings.isEmpty()) << lstWarnings.join('\n').toStdString();
   ASSERT_TRUE(pServer->execScript(sScript, sError, "round_copy")) << sError.toStdString() << "\n" << sScript.toStdString();
   EXPECT_TRUE(pServer->execScript(script.sRows, sError, "round_copy")) << sError.toStdString();
   db_import::db_catalog source, copy;
   ASSERT_TRUE(sql_test::readCatalog(pServer->getUrl("round_source"), source, sError)) << sError.toStdString();
   ASSERT_TRUE(sql_test::readCatalog(pServer->getUrl("round_copy"), copy, sError)) << sError.toStdString();
   EXPECT_GE(source.lstTables.size(), 15);
   const QStringList lstDifferences = sql_test::catalogDifferences(source, copy);
   EXPECT_TRUE(lstDifferences.isEmpty()) << lstDifferences.join('\n').toStdString() << "\n" << sScript.toStdString();
}


namespace {

// The round-trip database of one server, imported, stored and read back; its catalog in source.
model::project_ptr importedFromServer(const db_support::db_server & server, const QString & sFolder, db_import::db_catalog & source, QString & sError)
{
   const round_trip_script script = roundTripScript((server.getKind() == db_support::db_server::kind_postgresql) ? "postgresql" : "mariadb");
   if (! server.recreateDatabase("round_source", sError) || ! server.execScript(script.sTables + script.sRows, sError, "round_source")) { return nullptr; }
   if (! sql_test::readCatalog(server.getUrl("round_source"), source, sError)) { return nullptr; }
   const model::project_ptr pImported = sql_test::importFrom(server.getUrl("round_source"), "RoundTrip", sError);
   return (pImported ? storedAndReadBack(* pImported, sFolder) : nullptr);
}

} // namespace

// Exported to the other databases, the same model makes the same tables, columns, keys, numbered
// keys and indexes there: each type is written in that database's spelling.
TEST_P(SqlRoundTripOnServer, ModelGoesToTheOtherDatabases)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   const db_support::db_server::enum_kind eOther = (postgresql() ? db_support::db_server::kind_mariadb : db_support::db_server::kind_postgresql);
   TAVREL_REQUIRE_DB_SERVER(pOther, eOther);
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   db_import::db_catalog source, copy;
   QString sError;
   const model::project_ptr pModel = importedFromServer(* pServer, dir.path(), source, sError);
   ASSERT_TRUE(pModel) << sError.toStdString();

   const QString sSqlite = sql_test::scriptOf(* pModel, sql_export::dialect_sqlite, false);
   ASSERT_TRUE(sql_test::runOnSqlite(dir.filePath("copy.db"), sSqlite, sError)) << sError.toStdString() << "\n" << sSqlite.toStdString();
   ASSERT_TRUE(sql_test::readCatalog("sqlite:" + dir.filePath("copy.db"), copy, sError)) << sError.toStdString();
   QStringList lstDifferences = sql_test::catalogDifferences(source, copy, true);
   EXPECT_TRUE(lstDifferences.isEmpty()) << lstDifferences.join('\n').toStdString() << "\n" << sSqlite.toStdString();

   const sql_export::enum_dialect eOtherDialect = (postgresql() ? sql_export::dialect_mariadb : sql_export::dialect_postgresql);
   const QString sScript = sql_test::scriptOf(* pModel, eOtherDialect, false);
   ASSERT_TRUE(pOther->recreateDatabase("round_copy", sError)) << sError.toStdString();
   ASSERT_TRUE(pOther->execScript(sScript, sError, "round_copy")) << sError.toStdString() << "\n" << sScript.toStdString();
   ASSERT_TRUE(sql_test::readCatalog(pOther->getUrl("round_copy"), copy, sError)) << sError.toStdString();
   lstDifferences = sql_test::catalogDifferences(source, copy, true);
   EXPECT_TRUE(lstDifferences.isEmpty()) << lstDifferences.join('\n').toStdString() << "\n" << sScript.toStdString();
}

// A refresh brings the database's own type, numbering, defaults and indexes along as it brings
// the C++ type; a type the user forced stays; a second refresh changes nothing.
TEST(SqlRoundTrip, RefreshFollowsTheDatabase)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(dir.filePath("before.db"), "CREATE TABLE tally (id INTEGER PRIMARY KEY AUTOINCREMENT, amount SMALLINT, "
                                     "mine INT, note TEXT DEFAULT '');\nCREATE INDEX tally_pair ON tally (amount, note);\n", sError)) << sError.toStdString();
   ASSERT_TRUE(sql_test::runOnSqlite(dir.filePath("after.db"), "CREATE TABLE tally (id INTEGER PRIMARY KEY, amount BIGINT, mine INT, note TEXT);\n", sError)) << sError.toStdString();
   const model::project_ptr pProject = sql_test::importFrom("sqlite:" + dir.filePath("before.db"), "Tally", sError);
   ASSERT_TRUE(pProject) << sError.toStdString();
   const model::entity_ptr pTally = pProject->getListOfAllEntities()->first();
   ASSERT_EQ(pTally->getPropertyByName("amount")->getForceSqlType(), "SMALLINT");
   pTally->getPropertyByName("mine")->setForceSqlType("MEDIUMINT");
   const model::project_ptr pFresh = sql_test::importFrom("sqlite:" + dir.filePath("after.db"), "Tally", sError);
   ASSERT_TRUE(pFresh) << sError.toStdString();
   const db_import::import_options options;
   const QStringList lstChanges = db_import::model_merger(pProject, options).merge(* pFresh);
   EXPECT_TRUE(pTally->getPropertyByName("amount")->getForceSqlType().isEmpty());
   EXPECT_TRUE(pTally->getPropertyByName("amount")->getAllMetaData().isEmpty());
   EXPECT_TRUE(pTally->getPropertyByName("id")->getAllMetaData().isEmpty());
   EXPECT_TRUE(pTally->getPropertyByName("note")->getAllMetaData().isEmpty());
   EXPECT_EQ(pTally->getPropertyByName("mine")->getForceSqlType(), "MEDIUMINT");
   EXPECT_TRUE(pTally->getAllMetaData().isEmpty());
   EXPECT_EQ(lstChanges.filter("kept for the SQL export").size(), 4) << lstChanges.join('\n').toStdString();
   EXPECT_TRUE(db_import::model_merger(pProject, options).merge(* pFresh).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlRoundTripOnServer, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlRoundTripOnServer, ::testing::Values(db_support::db_server::kind_mariadb));
