#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "model/project.h"
#include "sql_export/schema/schema_script.h"
#include "sql_export/schema/sql_types.h"
#include "sql_test_support.h"

using namespace sql_export;

namespace {

const sql_dialect s_sqlite(dialect_sqlite);
const sql_dialect s_postgresql(dialect_postgresql);
const sql_dialect s_mariadb(dialect_mariadb);

// Two tables pointing at each other, a keyword as a column, a type without SQL form.
const char * const k_sCycle = R"({ "name": "CYCLE", "entities": [
  { "name": "Alpha", "table": "alpha", "properties": [
    {"name": "id", "type": "long", "primary_key": true},
    {"name": "order", "type": "int", "allow_null": false, "default": "7"},
    {"name": "odd", "type": "QVariant"},
    {"name": "beta", "relation": {"kind": "many_to_one", "target": "Beta"}} ] },
  { "name": "Beta", "table": "beta", "properties": [
    {"name": "id", "type": "long", "primary_key": true},
    {"name": "Label", "type": "QString", "unique": true, "description": "it's; -- here"},
    {"name": "alpha", "relation": {"kind": "many_to_one", "target": "Alpha"}} ] } ] })";

} // namespace

TEST(SqlDialect, KnowsThreeDatabasesAndRefusesOthers)
{
   enum_dialect e = dialect_sqlite;
   EXPECT_TRUE(sql_dialect::parse("PostgreSQL", e));
   EXPECT_EQ(e, dialect_postgresql);
   EXPECT_TRUE(sql_dialect::parse("mysql", e));
   EXPECT_EQ(e, dialect_mariadb);
   EXPECT_TRUE(sql_dialect::parse("sqlite", e));
   EXPECT_EQ(e, dialect_sqlite);
   EXPECT_FALSE(sql_dialect::parse("oracle", e));
   EXPECT_FALSE(sql_dialect::parse("", e));
}

TEST(SqlDialect, QuotesKeywordsAndNamesThatAreNotPlain)
{
   EXPECT_EQ(s_postgresql.quote("customer"), "customer");
   EXPECT_EQ(s_postgresql.quote("order"), "\"order\"");
   EXPECT_EQ(s_postgresql.quote("Label"), "\"Label\"");
   EXPECT_EQ(s_sqlite.quote("Label"), "Label");
   EXPECT_EQ(s_mariadb.quote("group"), "`group`");
   EXPECT_EQ(s_mariadb.quote("a`b"), "`a``b`");
   EXPECT_EQ(s_sqlite.quote("a\"b c"), "\"a\"\"b c\"");
}

TEST(SqlDialect, TextNeverLeavesItsLiteral)
{
   EXPECT_EQ(s_postgresql.literal("it's"), "'it''s'");
   // MariaDB reads a backslash as an escape: a trailing one must not swallow the closing quote.
   EXPECT_EQ(s_mariadb.literal("a\\"), "'a\\\\'");
   EXPECT_EQ(s_mariadb.literal("x\\'); DROP TABLE t; --"), "'x\\\\''); DROP TABLE t; --'");
   EXPECT_EQ(schema_script::commentText("one\ntwo\rthree"), "one two three");
}

TEST(SqlDialect, LongNamesAreShortenedApart)
{
   const QString sLong(80, 'x');
   const QString a = s_postgresql.objectName("fk", sLong, "a");
   const QString b = s_postgresql.objectName("fk", sLong, "b");
   EXPECT_LE(a.size(), 63);
   EXPECT_NE(a, b);
   EXPECT_EQ(s_postgresql.objectName("fk", "t", "c"), "fk_t_c");
}

TEST(SqlTypes, FollowTheTablePerDatabase)
{
   EXPECT_EQ(sql_types::map(s_sqlite, "long", 0, false).sType, "INTEGER");
   EXPECT_EQ(sql_types::map(s_sqlite, "int", 0, false).sType, "INT");
   EXPECT_EQ(sql_types::map(s_postgresql, "qlonglong", 0, false).sType, "bigint");
   EXPECT_EQ(sql_types::map(s_postgresql, "QString", 40, false).sType, "character varying(40)");
   EXPECT_EQ(sql_types::map(s_postgresql, "QDateTime", 0, false).sType, "timestamp");
   EXPECT_EQ(sql_types::map(s_mariadb, "QString", 0, false).sType, "TEXT");
   EXPECT_EQ(sql_types::map(s_mariadb, "QString", 0, true).sType, "VARCHAR(255)");
   EXPECT_EQ(sql_types::map(s_mariadb, "QByteArray", 0, false).sType, "LONGBLOB");
   EXPECT_EQ(sql_types::map(s_mariadb, "bool", 0, false).sType, "BOOLEAN");
   const sql_types::result r = sql_types::map(s_postgresql, "QVariant", 0, false);
   EXPECT_FALSE(r.bKnown);
   EXPECT_EQ(r.sType, "text");
}

TEST(SqlTypes, DefaultsOnlyWhenSqlCanHoldThem)
{
   EXPECT_EQ(sql_types::defaultLiteral(s_postgresql, "bool", "true"), "true");
   EXPECT_EQ(sql_types::defaultLiteral(s_mariadb, "bool", "false"), "0");
   EXPECT_EQ(sql_types::defaultLiteral(s_sqlite, "int", "12"), "12");
   EXPECT_EQ(sql_types::defaultLiteral(s_sqlite, "int", "MAX_SIZE"), "");
   EXPECT_EQ(sql_types::defaultLiteral(s_sqlite, "double", "0.0"), "0");
   EXPECT_EQ(sql_types::defaultLiteral(s_sqlite, "QString", "it's"), "'it''s'");
   EXPECT_EQ(sql_types::defaultLiteral(s_sqlite, "QDate", "QDate::currentDate()"), "");
}

TEST(SqlSchema, ColumnsFollowWhatTheClassesStore)
{
   const model::project_ptr pProject = sql_test::exampleModel("library");
   ASSERT_TRUE(pProject);
   const sql_schema schema = schema_builder::build(* pProject, s_sqlite, schema_options());
   const sql_table * pAuthor = nullptr;
   const sql_table * pBook = nullptr;
   QStringList lstTables;
   for (const sql_table & t : schema.lstTables)
   {
      lstTables.append(t.sName);
      if (t.sName == "t_author") { pAuthor = & t; }
      if (t.sName == "Book" || t.sName == "t_book") { pBook = & t; }
   }
   // The abstract person has no table; its columns come first in each child's.
   EXPECT_FALSE(lstTables.contains("t_person"));
   ASSERT_TRUE(pAuthor);
   EXPECT_EQ(pAuthor->lstColumns.first().sName, "id");
   EXPECT_EQ(pAuthor->lstPrimaryKey, QStringList { "id" });
   ASSERT_TRUE(pBook) << lstTables.join(' ').toStdString();
   QStringList lstColumns;
   for (const sql_column & c : pBook->lstColumns) { lstColumns.append(c.sName); }
   EXPECT_FALSE(lstColumns.contains("keywords"));    // transient
   EXPECT_FALSE(lstColumns.contains("legacy_id"));   // obsolete
   EXPECT_FALSE(lstColumns.contains("shelves"));     // many-to-many
   EXPECT_TRUE(lstTables.contains("t_book_shelf"));
   EXPECT_EQ(lstTables.count("t_book_shelf"), 1);
   schema_options withObsolete;
   withObsolete.bIncludeObsolete = true;
   const QString sScript = schema_script::write(schema_builder::build(* pProject, s_sqlite, withObsolete), s_sqlite, "x");
   EXPECT_TRUE(sScript.contains("legacy_id"));
}

TEST(SqlSchema, UnmappedTypeIsTextWithAWarningNamingIt)
{
   const model::project_ptr pProject = sql_test::modelFromJson(k_sCycle);
   ASSERT_TRUE(pProject);
   QStringList lstWarnings;
   const QString sScript = sql_test::scriptOf(* pProject, dialect_postgresql, true, & lstWarnings);
   ASSERT_EQ(lstWarnings.size(), 1);
   EXPECT_TRUE(lstWarnings.first().startsWith("Alpha.odd: type 'QVariant'")) << lstWarnings.first().toStdString();
   EXPECT_TRUE(sScript.contains("   odd text,\n")) << sScript.toStdString();
}

TEST(SqlSchema, CycleKeysAreAddedOnceBothTablesExist)
{
   const model::project_ptr pProject = sql_test::modelFromJson(k_sCycle);
   ASSERT_TRUE(pProject);
   const QString sScript = sql_test::scriptOf(* pProject, dialect_postgresql);
   const int iAlpha = sScript.indexOf("CREATE TABLE alpha");
   const int iBeta = sScript.indexOf("CREATE TABLE beta");
   const int iLater = sScript.indexOf("ALTER TABLE alpha ADD CONSTRAINT fk_alpha_beta FOREIGN KEY (beta) REFERENCES beta (id);");
   ASSERT_GE(iAlpha, 0);
   EXPECT_GT(iBeta, iAlpha);
   EXPECT_GT(iLater, iBeta) << sScript.toStdString();
   EXPECT_TRUE(sScript.contains("CONSTRAINT fk_beta_alpha FOREIGN KEY (alpha) REFERENCES alpha (id)"));
   EXPECT_TRUE(sScript.contains("\"order\" integer NOT NULL DEFAULT 7"));
   EXPECT_TRUE(sScript.contains("COMMENT ON COLUMN beta.\"Label\" IS 'it''s; -- here';"));
   EXPECT_TRUE(sScript.startsWith("-- Schema of the model 'CYCLE' for postgresql"));
   EXPECT_TRUE(sScript.contains("\nBEGIN;\n"));
   EXPECT_TRUE(sScript.endsWith("\nCOMMIT;\n"));
}

TEST(SqlSchema, MariaDbScriptHasNoTransactionAndInlineComments)
{
   const model::project_ptr pProject = sql_test::modelFromJson(k_sCycle);
   ASSERT_TRUE(pProject);
   const QString sScript = sql_test::scriptOf(* pProject, dialect_mariadb);
   EXPECT_FALSE(sScript.contains("BEGIN;"));
   EXPECT_TRUE(sScript.contains("   Label VARCHAR(255) COMMENT 'it''s; -- here'")) << sScript.toStdString();
   EXPECT_TRUE(sScript.contains("ALTER TABLE alpha ADD CONSTRAINT"));
}

TEST(SqlSchema, ExampleScriptsRunOnSqlite)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   for (const QString & sName : { QString("shop"), QString("library") })
   {
      const model::project_ptr pProject = sql_test::exampleModel(sName);
      ASSERT_TRUE(pProject);
      QString sError;
      EXPECT_TRUE(sql_test::runOnSqlite(dir.filePath(sName + ".db"), sql_test::scriptOf(* pProject, dialect_sqlite), sError)) << sError.toStdString();
   }
   QString sError;
   const model::project_ptr pCycle = sql_test::modelFromJson(k_sCycle);
   EXPECT_TRUE(sql_test::runOnSqlite(dir.filePath("cycle.db"), sql_test::scriptOf(* pCycle, dialect_sqlite), sError)) << sError.toStdString();
}

TEST(SqlSchema, SqliteRoundTripGivesTheSameScript)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   for (const QString & sName : { QString("shop"), QString("library") })
   {
      const model::project_ptr pProject = sql_test::exampleModel(sName);
      ASSERT_TRUE(pProject);
      const QString sFirst = sql_test::scriptOf(* pProject, dialect_sqlite, false);
      const QString sFile = dir.filePath(sName + ".db");
      QString sError;
      ASSERT_TRUE(sql_test::runOnSqlite(sFile, sFirst, sError)) << sError.toStdString();
      const model::project_ptr pBack = sql_test::importFrom("sqlite:" + sFile, pProject->getName(), sError);
      ASSERT_TRUE(pBack) << sError.toStdString();
      EXPECT_EQ(sql_test::scriptOf(* pBack, dialect_sqlite, false).toStdString(), sFirst.toStdString());
   }
}

TEST(SqlSchema, TablesComeAfterTheTablesTheyPointAt)
{
   const model::project_ptr pProject = sql_test::modelFromJson(R"({ "name": "ORDER", "entities": [
      { "name": "Item", "table": "a_item", "properties": [ {"name": "id", "type": "long", "primary_key": true},
        {"name": "box", "relation": {"kind": "many_to_one", "target": "Box"}} ] },
      { "name": "Box", "table": "m_box", "properties": [ {"name": "id", "type": "long", "primary_key": true},
        {"name": "owner", "relation": {"kind": "many_to_one", "target": "Owner"}} ] },
      { "name": "Owner", "table": "z_owner", "properties": [ {"name": "id", "type": "long", "primary_key": true} ] } ] })");
   ASSERT_TRUE(pProject);
   const QString sScript = sql_test::scriptOf(* pProject, dialect_postgresql);
   const int iOwner = sScript.indexOf("CREATE TABLE z_owner");
   const int iBox = sScript.indexOf("CREATE TABLE m_box");
   const int iItem = sScript.indexOf("CREATE TABLE a_item");
   ASSERT_GE(iOwner, 0);
   EXPECT_LT(iOwner, iBox);
   EXPECT_LT(iBox, iItem);
   EXPECT_FALSE(sScript.contains("ALTER TABLE"));
}
