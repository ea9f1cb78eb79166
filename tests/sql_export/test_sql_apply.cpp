// Migrations applied to databases holding rows, on SQLite, PostgreSQL and MariaDB: renames given
// on the command line keep their values, a failing step leaves the database as it was, tables
// of another schema are named by schema and table.

#include <gtest/gtest.h>

#include "model/project.h"
#include "sql_apply_target.h"
#include "sql_export/schema/schema_migration.h"
#include "test_support.h"

using namespace sql_test;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// Two versions without ids: the customer becomes a client, its city a town, its score goes, an
// e-mail and a purchase note come.
const char * const k_sShopBefore = R"({ "name": "SHOP", "entities": [
   {"name": "Customer", "table": "customer", "properties": [
     {"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString", "max_length": 60},
     {"name": "city", "type": "QString", "max_length": 40}, {"name": "score", "type": "int"} ]},
   {"name": "Purchase", "table": "purchase", "properties": [
     {"name": "id", "type": "long", "primary_key": true}, {"name": "total", "type": "int"},
     {"name": "customer", "relation": {"kind": "many_to_one", "target": "Customer"}} ]} ] })";
const char * const k_sShopAfter = R"({ "name": "SHOP", "entities": [
   {"name": "Client", "table": "client", "properties": [
     {"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString", "max_length": 60},
     {"name": "town", "type": "QString", "max_length": 40}, {"name": "email", "type": "QString", "max_length": 80} ]},
   {"name": "Purchase", "table": "purchase", "properties": [
     {"name": "id", "type": "long", "primary_key": true}, {"name": "total", "type": "int"},
     {"name": "note", "type": "QString"},
     {"name": "customer", "relation": {"kind": "many_to_one", "target": "Client"}} ]} ] })";

class SqlApply : public sql_apply_test
{
protected:
   QString write(const QString & sName, const QByteArray & json)
   {
      const QString s = m_dir.filePath(sName);
      EXPECT_TRUE(test_support::writeAll(s, json));
      return s;
   }

   // The SQL of "tavrel migrate" for this database, or empty with the failure.
   QString migrate(const QStringList & args)
   {
      const test_support::cli_result r = test_support::runTavrel(QStringList { "migrate" } + args + QStringList { "--dialect", dialectName() });
      EXPECT_EQ(r.code, 0) << r.err.toStdString();
      return ((r.code == 0) ? r.out : QString());
   }
};

using SqlApplyInOneTransaction = SqlApply;
using SqlApplyDescriptions = SqlApply;
using SqlApplyChecked = SqlApply;
using SqlApplyDropsLast = SqlApply;
using SqlApplySchemas = SqlApply;

} // namespace

TEST_P(SqlApply, RenameAddAndDropKeepRowsAndRenamedValues)
{
   QString sError;
   ASSERT_TRUE(freshDatabase("sqlx_apply_shop", sError)) << sError.toStdString();
   const QString sEmpty = write("empty.json", R"({"name": "SHOP", "entities": []})");
   const QString sBefore = write("before.json", k_sShopBefore), sAfter = write("after.json", k_sShopAfter);
   const QString sCreate = migrate({ sEmpty, sBefore });
   ASSERT_FALSE(sCreate.isEmpty());
   ASSERT_TRUE(run(sCreate, sError)) << sError.toStdString();
   QString sRows;
   QStringList lstCities, lstCustomers;
   for (int i = 1; i <= 40; ++i)
   {
      lstCities.append(QString("Town %1").arg(i % 7));
      sRows += QString("INSERT INTO customer (id, name, city, score) VALUES (%1, 'C%1', '%2', %3);\n").arg(i).arg(lstCities.last()).arg(i * 3);
   }
   for (int i = 1; i <= 120; ++i)
   {
      lstCustomers.append(QString::number(1 + (i % 40)));
      sRows += QString("INSERT INTO purchase (id, total, customer) VALUES (%1, %2, %3);\n").arg(i).arg(i * 10).arg(lstCustomers.last());
   }
   ASSERT_TRUE(run(sRows, sError)) << sError.toStdString();

   const QString sMigration = migrate({ sBefore, sAfter, "--rename", "Customer=Client", "--rename", "Client.city=town", "--allow-destructive" });
   ASSERT_FALSE(sMigration.isEmpty());
   ASSERT_TRUE(run(sMigration, sError)) << sError.toStdString() << "\n" << sMigration.toStdString();
   EXPECT_EQ(values("SELECT COUNT(*) FROM client"), QStringList("40"));
   EXPECT_EQ(values("SELECT COUNT(*) FROM purchase"), QStringList("120"));
   EXPECT_EQ(values("SELECT town FROM client ORDER BY id"), lstCities);
   EXPECT_EQ(values("SELECT name FROM client WHERE id = 17"), QStringList("C17"));
   EXPECT_EQ(values("SELECT customer FROM purchase ORDER BY id"), lstCustomers);
   EXPECT_EQ(values("SELECT COUNT(email) FROM client"), QStringList("0"));
   EXPECT_EQ(values("SELECT COUNT(note) FROM purchase"), QStringList("0"));
   EXPECT_TRUE(values("SELECT score FROM client").value(0).startsWith("error:"));
   EXPECT_TRUE(values("SELECT COUNT(*) FROM customer").value(0).startsWith("error:"));
   // The key still guards the renamed table.
   EXPECT_FALSE(run("INSERT INTO purchase (id, total, customer) VALUES (999, 1, 4242);\n", sError));
}

// The table is renamed and gets a column before its code becomes unique, which the rows there
// refuse: nothing of it may stay.
TEST_P(SqlApplyInOneTransaction, FailingStepLeavesTheDatabaseUnchanged)
{
   const QString sModel = R"({ "name": "STORE", "entities": [ {"id": 1, "name": "Item", "table": "%1", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "code", "type": "QString", "max_length": 20%2}%3 ]} ] })";
   const model::project_ptr pBefore = modelFromJson(sModel.arg("item", "", "").toUtf8());
   const model::project_ptr pAfter = modelFromJson(sModel.arg("article", R"(, "unique": true)", R"(, {"id": 3, "name": "colour", "type": "QString"})").toUtf8());
   ASSERT_TRUE(pBefore && pAfter);
   QString sError;
   ASSERT_TRUE(freshDatabase("sqlx_apply_atomic", sError)) << sError.toStdString();
   ASSERT_TRUE(run(scriptOf(* pBefore, dialect()) + "INSERT INTO item (id, code) VALUES (1, 'A');\nINSERT INTO item (id, code) VALUES (2, 'A');\n", sError)) << sError.toStdString();
   const sql_export::sql_dialect d(dialect());
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* pBefore, d, {}),
                                                                              sql_export::schema_builder::build(* pAfter, d, {}), d);
   const QString sScript = sql_export::schema_migration::write(plan, d, { "STORE", "a" }, { "STORE", "b" });
   ASSERT_TRUE(sScript.contains("RENAME TO article"));
   EXPECT_FALSE(run(sScript, sError));
   EXPECT_EQ(values("SELECT COUNT(*) FROM item"), QStringList("2"));
   EXPECT_TRUE(values("SELECT COUNT(*) FROM article").value(0).startsWith("error:"));
   EXPECT_TRUE(values("SELECT colour FROM item").value(0).startsWith("error:"));
}

// Tables of the schema "sales": made, renamed, one moved to another schema, an index dropped.
TEST_P(SqlApplySchemas, TablesOfAnotherSchemaAreNamedBySchemaAndTable)
{
   const QString sModel = R"({ "name": "SALES", "entities": [
      {"id": 1, "name": "Order", "table": "%1", "description": "%3", "properties": [
        {"id": 1, "name": "id", "type": "long", "primary_key": true},
        {"id": 2, "name": "reference", "type": "QString", "max_length": 20, "unique": true},
        {"id": 3, "name": "placed", "type": "int", "index": %4} ]},
      {"id": 2, "name": "OrderLine", "table": "%2", "properties": [
        {"id": 10, "name": "id", "type": "long", "primary_key": true},
        {"id": 11, "name": "quantity", "type": "int", "description": "%3"},
        {"id": 12, "name": "owner", "relation": {"kind": "many_to_one", "target": "Order"}} ]} ] })";
   const model::project_ptr pBefore = modelFromJson(sModel.arg("sales.orders", "sales.order_line", "first", "true").toUtf8());
   const model::project_ptr pAfter = modelFromJson(sModel.arg("sales.purchase", "archive.order_line", "second", "false").toUtf8());
   ASSERT_TRUE(pBefore && pAfter);
   QString sError;
   ASSERT_TRUE(freshDatabase("sqlx_apply_schemas", sError)) << sError.toStdString();
   const QString sScript = scriptOf(* pBefore, dialect());
   EXPECT_TRUE(sScript.contains("CREATE TABLE sales.orders (")) << sScript.toStdString();
   ASSERT_TRUE(run(sScript, sError)) << sError.toStdString() << "\n" << sScript.toStdString();
   ASSERT_TRUE(run("INSERT INTO sales.orders (id, reference, placed) VALUES (1, 'R1', 5);\nINSERT INTO sales.order_line (id, quantity, owner) VALUES (1, 3, 1);\n", sError)) << sError.toStdString();
   const QString sTables = "SELECT table_schema || '.' || table_name FROM information_schema.tables WHERE table_schema IN ('sales', 'archive', 'public') ORDER BY 1";
   EXPECT_EQ(values(sTables), QStringList({ "sales.order_line", "sales.orders" }));
   const sql_export::sql_dialect d(dialect());
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* pBefore, d, {}),
                                                                              sql_export::schema_builder::build(* pAfter, d, {}), d);
   const QString sMigration = sql_export::schema_migration::write(plan, d, { "SALES", "a" }, { "SALES", "b" });
   ASSERT_TRUE(run(sMigration, sError)) << sError.toStdString() << "\n" << sMigration.toStdString();
   EXPECT_EQ(values(sTables), QStringList({ "archive.order_line", "sales.purchase" }));
   EXPECT_EQ(values("SELECT indexname FROM pg_indexes WHERE schemaname = 'sales' ORDER BY 1"), QStringList({ "purchase_pkey", "ux_sales_purchase_reference" }));
   EXPECT_EQ(values("SELECT owner FROM archive.order_line"), QStringList("1"));
   EXPECT_FALSE(run("INSERT INTO archive.order_line (id, quantity, owner) VALUES (2, 1, 77);\n", sError));
}

// A view reading a table SQLite rebuilds still reads it, with the rows and the new column.
TEST(SqlApplySqlite, ViewOfARebuiltTableStillReadsIt)
{
   const QString sModel = R"({ "name": "STORE", "entities": [ {"id": 1, "name": "Item", "table": "item", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "code", "type": "QString"}%1 ]} ] })";
   const model::project_ptr pBefore = modelFromJson(sModel.arg("").toUtf8());
   const model::project_ptr pAfter = modelFromJson(sModel.arg(R"(, {"id": 3, "name": "stock", "type": "int", "allow_null": false})").toUtf8());
   ASSERT_TRUE(pBefore && pAfter);
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sDb = dir.filePath("view.db");
   QString sError;
   ASSERT_TRUE(runOnSqlite(sDb, scriptOf(* pBefore, sql_export::dialect_sqlite) + "INSERT INTO item (id, code) VALUES (1, 'A');\nCREATE VIEW item_codes AS SELECT code FROM item;\n", sError)) << sError.toStdString();
   const sql_export::sql_dialect d(sql_export::dialect_sqlite);
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* pBefore, d, {}),
                                                                              sql_export::schema_builder::build(* pAfter, d, {}), d);
   const QString sScript = sql_export::schema_migration::write(plan, d, { "STORE", "a" }, { "STORE", "b" });
   ASSERT_TRUE(sScript.contains("rebuild table item"));
   ASSERT_TRUE(runOnSqlite(sDb, sScript + "INSERT INTO item (id, code, stock) VALUES (2, 'B', 4);\n", sError)) << sError.toStdString();
   QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "sqlx_view");
   {
      db.setDatabaseName(sDb);
      ASSERT_TRUE(db.open());
      QSqlQuery q(db);
      QStringList lst;
      ASSERT_TRUE(q.exec("SELECT code FROM item_codes ORDER BY code"));
      while (q.next()) { lst.append(q.value(0).toString()); }
      EXPECT_EQ(lst, QStringList({ "A", "B" }));
      db.close();
   }
   db = QSqlDatabase();
   QSqlDatabase::removeDatabase("sqlx_view");
}

// A table SQLite rebuilds, with an index, a trigger and a CHECK the model does not know: read from
// the database (--database), the index and the trigger are made again; the CHECK is named and
// refused unless --allow-destructive.
TEST(SqlApplySqlite, RebuildKeepsOrNamesWhatTheModelDoesNotKnow)
{
   const QString sModel = R"({ "name": "STORE", "entities": [ {"id": 1, "name": "Item", "table": "item", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "code", "type": "QString"}%1 ]} ] })";
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sBefore = dir.filePath("before.json"), sAfter = dir.filePath("after.json"), sDb = dir.filePath("store.db");
   ASSERT_TRUE(test_support::writeAll(sBefore, sModel.arg("").toUtf8()));
   ASSERT_TRUE(test_support::writeAll(sAfter, sModel.arg(R"(, {"id": 3, "name": "stock", "type": "int", "allow_null": false})").toUtf8()));
   QString sError;
   ASSERT_TRUE(runOnSqlite(sDb, "CREATE TABLE item (id INTEGER NOT NULL, code TEXT, PRIMARY KEY (id));\nCREATE TABLE log (id INTEGER);\n"
                                "CREATE INDEX item_code_extra ON item (code);\n"
                                "CREATE TRIGGER item_log AFTER INSERT ON item BEGIN INSERT INTO log VALUES (NEW.id); END;\n"
                                "INSERT INTO item (id, code) VALUES (1, 'A');\n", sError)) << sError.toStdString();
   const QStringList lstArgs { "migrate", sBefore, sAfter, "--dialect", "sqlite" };
   test_support::cli_result r = test_support::runTavrel(lstArgs);
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("-- A rebuilt table loses what the model does not know of it"));
   r = test_support::runTavrel(lstArgs + QStringList { "--database", sDb });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("make index item_code_extra of table item again")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("make trigger item_log of table item again")) << r.out.toStdString();
   ASSERT_TRUE(runOnSqlite(sDb, r.out + "INSERT INTO item (id, code, stock) VALUES (2, 'B', 1);\n", sError)) << sError.toStdString();
   ASSERT_TRUE(runOnSqlite(sDb, "CREATE TABLE seen AS SELECT (SELECT COUNT(*) FROM log) AS n, (SELECT COUNT(*) FROM sqlite_master WHERE name IN ('item_code_extra', 'item_log')) AS k;\n", sError));

   // The same table with a CHECK: named, refused, then written with the step that loses it.
   const QString sChecked = dir.filePath("checked.db");
   ASSERT_TRUE(runOnSqlite(sChecked, "CREATE TABLE item (id INTEGER NOT NULL, code TEXT CHECK (length(code) < 10), PRIMARY KEY (id));\n", sError));
   r = test_support::runTavrel(lstArgs + QStringList { "--database", sChecked });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("lose CHECK constraint of table item (the model does not know it)")) << r.err.toStdString();
   r = test_support::runTavrel(lstArgs + QStringList { "--database", sChecked, "--allow-destructive" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   // A database of another kind than the script's.
   r = test_support::runTavrel(QStringList { "migrate", sBefore, sAfter, "--dialect", "postgresql", "--database", "sqlite:" + sChecked });
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("is no postgresql database")) << r.err.toStdString();
   r = test_support::runTavrel(lstArgs + QStringList { "--database", dir.filePath("missing.db") });
   EXPECT_EQ(r.code, 1);
   EXPECT_FALSE(QFile::exists(dir.filePath("missing.db")));

   QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "sqlx_keep");
   {
      db.setDatabaseName(sDb);
      ASSERT_TRUE(db.open());
      QSqlQuery q(db);
      ASSERT_TRUE(q.exec("SELECT n, k FROM seen") && q.next());
      EXPECT_EQ(q.value(0).toInt(), 2);   // the trigger fired for the row before and the row after the migration
      EXPECT_EQ(q.value(1).toInt(), 2);
      db.close();
   }
   db = QSqlDatabase();
   QSqlDatabase::removeDatabase("sqlx_keep");
}

// Descriptions changed and removed reach the database's catalog; a column added between two
// others goes there in MariaDB, at the end elsewhere, and the script says so.
TEST_P(SqlApplyDescriptions, DescriptionsAndPlacesOfNewColumnsFollowTheModel)
{
   const QString sModel = R"({ "name": "NOTES", "entities": [ {"id": 1, "name": "Note", "table": "note", "description": "%1", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "title", "type": "QString", "description": "%2"}%3,
      {"id": 3, "name": "body", "type": "QString", "description": "%4"} ]} ] })";
   const model::project_ptr pBefore = modelFromJson(sModel.arg("old note", "old title", "", "old body").toUtf8());
   const model::project_ptr pAfter = modelFromJson(sModel.arg("new note", "it's new", R"(, {"id": 4, "name": "subtitle", "type": "QString"})", "").toUtf8());
   ASSERT_TRUE(pBefore && pAfter);
   QString sError;
   ASSERT_TRUE(freshDatabase("sqlx_apply_notes", sError)) << sError.toStdString();
   ASSERT_TRUE(run(scriptOf(* pBefore, dialect()), sError)) << sError.toStdString();
   const sql_export::sql_dialect d(dialect());
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* pBefore, d, {}),
                                                                              sql_export::schema_builder::build(* pAfter, d, {}), d);
   const QString sMigration = sql_export::schema_migration::write(plan, d, { "NOTES", "a" }, { "NOTES", "b" });
   ASSERT_TRUE(run(sMigration, sError)) << sError.toStdString() << "\n" << sMigration.toStdString();
   const bool bPg = (GetParam() == apply_postgresql);
   if (bPg)
   {
      EXPECT_EQ(values("SELECT obj_description('note'::regclass, 'pg_class')"), QStringList("new note"));
      const QString sColumn = "SELECT COALESCE(col_description('note'::regclass, attnum), '(none)') FROM pg_attribute WHERE attrelid = 'note'::regclass AND attname = '%1'";
      EXPECT_EQ(values(sColumn.arg("title")), QStringList("it's new"));
      EXPECT_EQ(values(sColumn.arg("body")), QStringList("(none)"));
      EXPECT_TRUE(sMigration.contains("add column note.subtitle (at the end of the table, not before body: postgresql adds no column in between)"));
   }
   else
   {
      EXPECT_EQ(values("SELECT TABLE_COMMENT FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = 'note'"), QStringList("new note"));
      const QString sColumn = "SELECT COLUMN_COMMENT FROM information_schema.COLUMNS WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = 'note' AND COLUMN_NAME = '%1'";
      EXPECT_EQ(values(sColumn.arg("title")), QStringList("it's new"));
      EXPECT_EQ(values(sColumn.arg("body")), QStringList(""));
   }
   const QString sOrder = "SELECT column_name FROM information_schema.columns WHERE table_name = 'note' AND table_schema = " + QString(bPg ? "current_schema()" : "DATABASE()") + " ORDER BY ordinal_position";
   EXPECT_EQ(values(sOrder), bPg ? QStringList({ "id", "title", "body", "subtitle" }) : QStringList({ "id", "title", "subtitle", "body" }));
}

// --database: the database must hold the old model and none of what the script makes, and in
// MariaDB a new key must be of the integer type of the column it points at; else nothing is
// written and every problem is named.
TEST_P(SqlApplyChecked, DatabaseIsCheckedBeforeAnythingIsWritten)
{
   const char * const k_sAuthor = R"({"name": "Author", "table": "author", "properties": [
      {"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString"}%1 ]})";
   const QString sBefore = write("before.json", QString(R"({ "name": "LIB", "entities": [ %1 ] })").arg(QString(k_sAuthor).arg("")).toUtf8());
   const QString sAfter = write("after.json", QString(R"({ "name": "LIB", "entities": [ %1, {"name": "Book", "table": "book", "properties": [
      {"name": "id", "type": "long", "primary_key": true}, {"name": "author", "relation": {"kind": "many_to_one", "target": "Author"}} ]} ] })")
      .arg(QString(k_sAuthor).arg(R"(, {"name": "born", "type": "int"})")).toUtf8());
   const QString sOut = m_dir.filePath("m.sql");
   const auto migrateTo = [&](const QString & sDatabase) {
      const QString sTarget = ((GetParam() == apply_sqlite) ? m_dir.filePath(sDatabase + ".db") : m_pServer->getUrl(sDatabase));
      return test_support::runTavrel({ "migrate", sBefore, sAfter, "--dialect", dialectName(), "--database", sTarget, "-o", sOut });
   };
   const QString sOldScript = migrate({ write("empty.json", R"({"name": "LIB", "entities": []})"), sBefore });
   QString sError;
   ASSERT_TRUE(freshDatabase("sqlx_check_bare", sError)) << sError.toStdString();
   ASSERT_TRUE(run("CREATE TABLE unrelated (id INT);\n", sError)) << sError.toStdString();
   test_support::cli_result r = migrateTo("sqlx_check_bare");
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("table author of the old model is not in the database")) << r.err.toStdString();
   EXPECT_FALSE(QFile::exists(sOut));

   ASSERT_TRUE(freshDatabase("sqlx_check_taken", sError)) << sError.toStdString();
   ASSERT_TRUE(run(sOldScript + "CREATE TABLE book (id INT);\nALTER TABLE author ADD COLUMN born INT;\n", sError)) << sError.toStdString();
   r = migrateTo("sqlx_check_taken");
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("table book, which the script makes, is in the database already")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("column author.born, which the script adds, is in the database already")) << r.err.toStdString();
   EXPECT_FALSE(QFile::exists(sOut));

   if (GetParam() == apply_mariadb)
   {
      ASSERT_TRUE(freshDatabase("sqlx_check_types", sError)) << sError.toStdString();
      ASSERT_TRUE(run("CREATE TABLE author (id INT NOT NULL, name TEXT, PRIMARY KEY (id));\n", sError)) << sError.toStdString();
      r = migrateTo("sqlx_check_types");
      EXPECT_EQ(r.code, 1);
      EXPECT_TRUE(r.err.contains("key book.author is BIGINT but author.id in the database is int")) << r.err.toStdString();
   }

   ASSERT_TRUE(freshDatabase("sqlx_check_ready", sError)) << sError.toStdString();
   ASSERT_TRUE(run(sOldScript, sError)) << sError.toStdString();
   r = migrateTo("sqlx_check_ready");
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   QFile file(sOut);
   ASSERT_TRUE(file.open(QIODevice::ReadOnly));
   EXPECT_TRUE(run(QString::fromUtf8(file.readAll()), sError)) << sError.toStdString();
}

// MariaDB commits each step: when one fails, the columns and tables the old version reads are
// still there with their rows, since drops come last.
TEST_P(SqlApplyDropsLast, FailingStepLeavesWhatTheOldVersionReads)
{
   const QString sModel = R"({ "name": "STORE", "entities": [ {"id": 1, "name": "Item", "table": "item", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "code", "type": "QString", "max_length": 20%1}%2 ]}%3 ] })";
   const model::project_ptr pBefore = modelFromJson(sModel.arg("", R"(, {"id": 3, "name": "legacy", "type": "int"})",
      R"(, {"id": 2, "name": "Old", "table": "old_rows", "properties": [ {"id": 10, "name": "id", "type": "long", "primary_key": true} ]})").toUtf8());
   const model::project_ptr pAfter = modelFromJson(sModel.arg(R"(, "unique": true)", R"(, {"id": 4, "name": "colour", "type": "QString"})", "").toUtf8());
   ASSERT_TRUE(pBefore && pAfter);
   QString sError;
   ASSERT_TRUE(freshDatabase("sqlx_apply_order", sError)) << sError.toStdString();
   ASSERT_TRUE(run(scriptOf(* pBefore, dialect()) + "INSERT INTO item (id, code, legacy) VALUES (1, 'A', 10);\nINSERT INTO item (id, code, legacy) VALUES (2, 'A', 20);\n"
                   "INSERT INTO old_rows (id) VALUES (7);\n", sError)) << sError.toStdString();
   const sql_export::sql_dialect d(dialect());
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* pBefore, d, {}),
                                                                              sql_export::schema_builder::build(* pAfter, d, {}), d);
   const QString sScript = sql_export::schema_migration::write(plan, d, { "STORE", "a" }, { "STORE", "b" });
   EXPECT_FALSE(run(sScript, sError)) << sScript.toStdString();
   EXPECT_EQ(values("SELECT legacy FROM item ORDER BY id"), QStringList({ "10", "20" }));
   EXPECT_EQ(values("SELECT id FROM old_rows"), QStringList("7"));
}

INSTANTIATE_TEST_SUITE_P(SQLite, SqlApply, ::testing::Values(apply_sqlite), applyKindName);
INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlApply, ::testing::Values(apply_postgresql), applyKindName);
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlApply, ::testing::Values(apply_mariadb), applyKindName);
// MariaDB commits each schema change on its own: no one transaction to check there.
INSTANTIATE_TEST_SUITE_P(SQLite, SqlApplyInOneTransaction, ::testing::Values(apply_sqlite), applyKindName);
INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlApplyInOneTransaction, ::testing::Values(apply_postgresql), applyKindName);
INSTANTIATE_TEST_SUITE_P(SQLite, SqlApplyChecked, ::testing::Values(apply_sqlite), applyKindName);
INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlApplyChecked, ::testing::Values(apply_postgresql), applyKindName);
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlApplyChecked, ::testing::Values(apply_mariadb), applyKindName);
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlApplyDropsLast, ::testing::Values(apply_mariadb), applyKindName);
INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlApplyDescriptions, ::testing::Values(apply_postgresql), applyKindName);
INSTANTIATE_TEST_SUITE_P(MariaDB, SqlApplyDescriptions, ::testing::Values(apply_mariadb), applyKindName);
INSTANTIATE_TEST_SUITE_P(PostgreSQL, SqlApplySchemas, ::testing::Values(apply_postgresql), applyKindName);
