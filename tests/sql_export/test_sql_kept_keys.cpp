// Keys, defaults and column forms of real schemas that import-db keeps so that the SQL export
// makes the same database again: foreign keys of several columns, the key order of a join table,
// SQLite's TRUE and FALSE, the unique index of a chosen key, enumeration defaults with a cast,
// MariaDB's SET columns and a prefix index beside the whole column's.

#include <gtest/gtest.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "db_import/type_mapping.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_test_support.h"

namespace {

using sql_export::dialect_mariadb;
using sql_export::dialect_postgresql;
using sql_export::dialect_sqlite;
using sql_test::runStatements;

// An SQLite database made from a script, imported as import-db imports it.
model::project_ptr importedSqlite(const QTemporaryDir & dir, const QString & sScript)
{
   QString sError;
   const QString sFile = dir.filePath("source.db");
   EXPECT_TRUE(sql_test::runOnSqlite(sFile, sScript, sError)) << sError.toStdString();
   const model::project_ptr p = sql_test::importFrom("sqlite:" + sFile, "Kept", sError);
   EXPECT_TRUE(p) << sError.toStdString();
   return p;
}

const char * const k_sLines = R"J({ "name": "Lines", "entities": [
  {"id": 1, "name": "OrderLine", "table": "order_line", "properties": [
    {"id": 1, "name": "id", "type": "std::pair<long, long>", "primary_key": true, "column": "order_no|line_no"},
    {"id": 2, "name": "order_no", "type": "long", "allow_null": false}, {"id": 3, "name": "line_no", "type": "long", "allow_null": false} ]},
  {"id": 2, "name": "Parcel", "table": "parcel", META
   "properties": [
    {"id": 4, "name": "id", "type": "long", "primary_key": true},
    {"id": 5, "name": "order_no", "type": "long", "allow_null": false}, {"id": 6, "name": "line_no", "type": "long", "allow_null": false} ]} ] })J";

model::project_ptr linesModel(const QByteArray & meta)
{
   return sql_test::modelFromJson(QByteArray(k_sLines).replace("META", meta));
}

} // namespace

// A foreign key of several columns is kept as entity meta data on import and written back with
// all its columns, by the script and by a migration; one naming a column the table lacks is not.
TEST(SqlKeptKeys, ForeignKeyOfSeveralColumnsGoesBack)
{
   QTemporaryDir dir;
   const model::project_ptr pImported = importedSqlite(dir, "CREATE TABLE order_line (order_no INTEGER NOT NULL, line_no INTEGER NOT NULL, PRIMARY KEY (order_no, line_no));\n"
      "CREATE TABLE parcel (id INTEGER PRIMARY KEY, order_no INTEGER NOT NULL, line_no INTEGER NOT NULL, FOREIGN KEY (order_no, line_no) REFERENCES order_line);\n");
   ASSERT_TRUE(pImported);
   EXPECT_EQ(pImported->getEntityByKey("Parcel")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"columns":["order_no","line_no"],"table":"order_line","targets":["order_no","line_no"]}])");
   const QString sSqlite = sql_test::scriptOf(* pImported, dialect_sqlite, false);
   EXPECT_TRUE(sSqlite.contains("FOREIGN KEY (order_no, line_no) REFERENCES order_line (order_no, line_no)")) << sSqlite.toStdString();
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(dir.filePath("copy.db"), sSqlite, sError)) << sError.toStdString();
   EXPECT_FALSE(runStatements(dir.filePath("copy.db"), { "PRAGMA foreign_keys = ON", "INSERT INTO parcel VALUES (1, 7, 7)" }));

   const model::project_ptr pWith = linesModel(R"J("meta": {"TAVREL_SQL_FOREIGN_KEYS": "[{\"columns\":[\"order_no\",\"line_no\"],\"table\":\"order_line\",\"targets\":[\"order_no\",\"line_no\"]},{\"columns\":[\"order_no\",\"gone\"],\"table\":\"order_line\",\"targets\":[\"order_no\",\"line_no\"]}]"},)J");
   const model::project_ptr pWithout = linesModel("");
   ASSERT_TRUE(pWith && pWithout);
   const QString sMariadb = sql_test::scriptOf(* pWith, dialect_mariadb, false);
   EXPECT_EQ(sMariadb.count("FOREIGN KEY"), 1) << sMariadb.toStdString();
   EXPECT_TRUE(sMariadb.contains("CONSTRAINT fk_parcel_order_no_line_no FOREIGN KEY (order_no, line_no) REFERENCES order_line (order_no, line_no)")) << sMariadb.toStdString();
   const sql_export::sql_dialect d(dialect_postgresql);
   const sql_export::schema_options options;
   const QString sAdd = sql_export::schema_migration::write(
      sql_export::schema_migration::plan(sql_export::schema_builder::build(* pWithout, d, options), sql_export::schema_builder::build(* pWith, d, options), d), d,
      { "without", "without.json" }, { "with", "with.json" });
   EXPECT_TRUE(sAdd.contains("ALTER TABLE parcel ADD CONSTRAINT fk_parcel_order_no_line_no FOREIGN KEY (order_no, line_no) REFERENCES order_line (order_no, line_no);")) << sAdd.toStdString();
}

// A join table's key keeps its column order, whichever of the two entities comes first in the model.
TEST(SqlKeptKeys, JoinTableKeepsItsKeyOrder)
{
   QTemporaryDir dir;
   const model::project_ptr p = importedSqlite(dir, "CREATE TABLE duty (id INTEGER PRIMARY KEY);\nCREATE TABLE crew (id INTEGER PRIMARY KEY);\n"
      "CREATE TABLE crew_duty (crew_id INTEGER NOT NULL REFERENCES crew (id), duty_id INTEGER NOT NULL REFERENCES duty (id), PRIMARY KEY (crew_id, duty_id));\n"
      "CREATE TABLE duty_grant (duty_id INTEGER NOT NULL REFERENCES duty (id), crew_id INTEGER NOT NULL REFERENCES crew (id), PRIMARY KEY (duty_id, crew_id));\n");
   ASSERT_TRUE(p);
   for (const sql_export::enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb })
   {
      const QString s = sql_test::scriptOf(* p, e, false);
      EXPECT_TRUE(s.contains("CREATE TABLE crew_duty (\n   crew_id")) << s.toStdString();
      EXPECT_TRUE(s.contains("PRIMARY KEY (crew_id, duty_id)")) << s.toStdString();
      EXPECT_TRUE(s.contains("PRIMARY KEY (duty_id, crew_id)")) << s.toStdString();
   }
}

// SQLite's catalog keeps a default as written: TRUE and FALSE come back as words, 0 as 0. A
// table without a key keeps the unique index of the column chosen as the model's key.
TEST(SqlKeptKeys, SqliteBooleanWordsAndTheChosenKeysIndex)
{
   QTemporaryDir dir;
   const model::project_ptr p = importedSqlite(dir, "CREATE TABLE flag (code VARCHAR(8) NOT NULL UNIQUE, shown BOOLEAN NOT NULL DEFAULT TRUE, "
                                                    "hidden BOOLEAN NOT NULL DEFAULT false, plain BOOLEAN DEFAULT 0);\n");
   ASSERT_TRUE(p);
   const QString s = sql_test::scriptOf(* p, dialect_sqlite, false);
   EXPECT_TRUE(s.contains("shown BOOLEAN NOT NULL DEFAULT TRUE,")) << s.toStdString();
   EXPECT_TRUE(s.contains("hidden BOOLEAN NOT NULL DEFAULT FALSE,")) << s.toStdString();
   EXPECT_TRUE(s.contains("plain BOOLEAN DEFAULT 0")) << s.toStdString();
   EXPECT_TRUE(s.contains("CREATE UNIQUE INDEX ux_flag_code ON flag (code);")) << s.toStdString();
   EXPECT_FALSE(s.contains("PRIMARY KEY")) << s.toStdString();
}

// A default cast to a type of the database's own (an enumeration type) is a default all the same.
TEST(SqlKeptKeys, DefaultCastToANamedTypeIsRead)
{
   EXPECT_EQ(db_import::type_mapping::defaultValue("'open'::ticket_state", "QString"), "open");
   EXPECT_EQ(db_import::type_mapping::defaultValue("'calm'::\"Mood\"", "QString"), "calm");
   EXPECT_EQ(db_import::type_mapping::portableDefault("'open'::hr.ticket_state"), "'open'");
   // PostgreSQL's 'now' cast to a date is today's date when the row is written, not a text.
   EXPECT_EQ(db_import::type_mapping::portableDefault("('now'::text)::date"), "CURRENT_DATE");
   EXPECT_EQ(db_import::type_mapping::portableDefault("('now'::text)::timestamp without time zone"), "CURRENT_TIMESTAMP");
   EXPECT_EQ(db_import::type_mapping::portableDefault("'now'::text"), "'now'");
   // SQLite's functions of 'now' are the three words.
   EXPECT_EQ(db_import::type_mapping::portableDefault("(datetime('now'))"), "CURRENT_TIMESTAMP");
   EXPECT_EQ(db_import::type_mapping::portableDefault("date('now')"), "CURRENT_DATE");
}

// A default that calls a function without arguments goes back to its own database only (another
// may have no such function).
TEST(SqlKeptKeys, FunctionDefaultStaysInItsDatabase)
{
   model::property property;
   auto pType = std::make_shared<model::property_type>();
   pType->setPrimitiveType("QString");
   property.setType(pType);
   db_import::db_column column;
   column.sName = "token";
   column.sDeclared = "uuid";
   column.sDefault = "gen_random_uuid()";
   db_import::type_mapping::keepColumnForm(db_import::dialect_postgresql, column, property);
   EXPECT_EQ(property.getMetaData("TAVREL_SQL_DEFAULT").toString(), "gen_random_uuid()");
   EXPECT_EQ(property.getMetaData("TAVREL_SQL_DEFAULT_DIALECT").toString(), "postgresql");
   const model::project_ptr p = sql_test::modelFromJson(R"J({ "name": "Calls", "entities": [
     {"name": "Batch", "table": "batch", "properties": [ {"name": "id", "type": "long", "primary_key": true},
       {"name": "token", "type": "QString", "meta": {"TAVREL_SQL_DEFAULT": "gen_random_uuid()", "TAVREL_SQL_DEFAULT_DIALECT": "postgresql"}},
       {"name": "other", "type": "QString", "meta": {"TAVREL_SQL_DEFAULT": "now(); DROP TABLE batch", "TAVREL_SQL_DEFAULT_DIALECT": "postgresql"}} ]} ] })J");
   ASSERT_TRUE(p);
   const QString sPostgresql = sql_test::scriptOf(* p, dialect_postgresql, false);
   EXPECT_TRUE(sPostgresql.contains("token text DEFAULT (gen_random_uuid())")) << sPostgresql.toStdString();
   EXPECT_FALSE(sPostgresql.contains("DROP")) << sPostgresql.toStdString();
   const QString sMariadb = sql_test::scriptOf(* p, dialect_mariadb, false);
   EXPECT_FALSE(sMariadb.contains("gen_random_uuid")) << sMariadb.toStdString();
}

// MariaDB's SET column goes back as a SET; other databases get the C++ type's column, no check.
TEST(SqlKeptKeys, SetColumnGoesBackToMariaDB)
{
   const model::project_ptr p = sql_test::modelFromJson(R"J({ "name": "Sets", "entities": [
     {"name": "Ticket", "table": "ticket", "properties": [ {"name": "id", "type": "long", "primary_key": true},
       {"name": "flags", "type": "QString", "meta": {"TAVREL_SQL_SET_VALUES": "urgent\nit's", "TAVREL_SQL_DEFAULT": "''"}} ]} ] })J");
   ASSERT_TRUE(p);
   const QString sMariadb = sql_test::scriptOf(* p, dialect_mariadb, false);
   EXPECT_TRUE(sMariadb.contains("flags SET('urgent', 'it''s') DEFAULT ''")) << sMariadb.toStdString();
   const QString sPostgresql = sql_test::scriptOf(* p, dialect_postgresql, false);
   EXPECT_TRUE(sPostgresql.contains("flags text DEFAULT ''")) << sPostgresql.toStdString();
   EXPECT_FALSE(sPostgresql.contains("CHECK")) << sPostgresql.toStdString();
}

// A prefix index beside the whole column's index gets a name of its own.
TEST(SqlKeptKeys, PrefixIndexBesideTheWholeColumnsIndex)
{
   const model::project_ptr p = sql_test::modelFromJson(R"J({ "name": "Names", "entities": [
     {"name": "Product", "table": "product", "meta": {"TAVREL_SQL_INDEXES": "[{\"unique\":false,\"columns\":[\"name\"],\"lengths\":[8]}]"},
      "properties": [ {"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString", "max_length": 80, "index": true} ]} ] })J");
   ASSERT_TRUE(p);
   const QString s = sql_test::scriptOf(* p, dialect_mariadb, false);
   EXPECT_TRUE(s.contains("CREATE INDEX ix_product_name ON product (name);")) << s.toStdString();
   EXPECT_TRUE(s.contains("CREATE INDEX ix_product_name_8 ON product (name(8));")) << s.toStdString();
}
