// The migration between two model versions: the steps of each change kind per database, what
// is refused as destructive, and the series run on a real SQLite database with rows.

#include <gtest/gtest.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "migration_series.h"
#include "model/project.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_export/schema/schema_script.h"
#include "sql_test_support.h"

using namespace sql_export;

namespace {

const char * const k_sTitle = R"({"id": 11, "name": "title", "type": "QString"})";
const char * const k_sPages = R"({"id": 12, "name": "pages", "type": "int"})";

// Two tables; the book's properties and further entities vary.
QByteArray library(const QString & sBook, const QString & sMore = QString(), const QString & sAuthorTable = "author")
{
   return QString(R"({ "name": "LIB", "entities": [
      { "id": 1, "name": "Author", "table": "%3", "properties": [
        {"id": 1, "name": "id", "type": "long", "primary_key": true},
        {"id": 2, "name": "name", "type": "QString", "max_length": 80} ] },
      { "id": 2, "name": "Book", "table": "book", "properties": [
        {"id": 10, "name": "id", "type": "long", "primary_key": true}, %1 ] }%2 ] })").arg(sBook, sMore, sAuthorTable).toUtf8();
}

QString bookWith(const QString & sTitle, const QString & sPages = k_sPages) { return sTitle + ", " + sPages; }

migration_plan planOf(const QByteArray & from, const QByteArray & to, enum_dialect e)
{
   const model::project_ptr pFrom = sql_test::modelFromJson(from);
   const model::project_ptr pTo = sql_test::modelFromJson(to);
   EXPECT_TRUE(pFrom && pTo);
   if (! pFrom || ! pTo) { return migration_plan(); }
   const sql_dialect d(e);
   return schema_migration::plan(schema_builder::build(* pFrom, d, schema_options()), schema_builder::build(* pTo, d, schema_options()), d);
}

QString sqlOf(const migration_plan & plan)
{
   QString s;
   for (const migration_step & step : plan.lstSteps) { s += step.sSql; }
   return s;
}

QStringList textsOf(const migration_plan & plan)
{
   QStringList lst;
   for (const migration_step & step : plan.lstSteps) { lst.append(step.sText); }
   return lst;
}

const QByteArray s_base = library(bookWith(k_sTitle));

} // namespace

TEST(SqlMigration, SameModelNeedsNoStep)
{
   for (enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb }) { EXPECT_TRUE(planOf(s_base, s_base, e).isEmpty()) << e; }
}

TEST(SqlMigration, RenamedEntityAndPropertyAreRenamedInPlace)
{
   const QByteArray renamed = library(bookWith(R"({"id": 11, "name": "headline", "type": "QString"})"), QString(), "writer");
   for (enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb })
   {
      const migration_plan plan = planOf(s_base, renamed, e);
      EXPECT_EQ(textsOf(plan), QStringList({ "rename column book.title to headline", "rename table author to writer" })) << e;
      EXPECT_TRUE(sqlOf(plan).contains("ALTER TABLE author RENAME TO writer;")) << e;
      EXPECT_TRUE(sqlOf(plan).contains("ALTER TABLE book RENAME COLUMN title TO headline;")) << e;
      EXPECT_TRUE(plan.destructiveSteps().isEmpty());
   }
}

TEST(SqlMigration, AddedColumnWithoutValueIsFilledForTheRowsThere)
{
   const QByteArray added = library(bookWith(k_sTitle) + R"(, {"id": 14, "name": "isbn", "type": "QString"}, {"id": 15, "name": "copies", "type": "int", "allow_null": false})");
   const migration_plan pg = planOf(s_base, added, dialect_postgresql);
   EXPECT_EQ(textsOf(pg), QStringList({ "add column book.isbn", "add column book.copies" }));
   EXPECT_TRUE(sqlOf(pg).contains("ALTER TABLE book ADD COLUMN isbn text;"));
   EXPECT_TRUE(sqlOf(pg).contains("ALTER TABLE book ADD COLUMN copies integer NOT NULL DEFAULT 0;\nALTER TABLE book ALTER COLUMN copies DROP DEFAULT;"));
   // SQLite adds no NOT NULL column without default: the table is rebuilt.
   const migration_plan lite = planOf(s_base, added, dialect_sqlite);
   EXPECT_TRUE(textsOf(lite).last().startsWith("rebuild table book"));
   EXPECT_TRUE(sqlOf(lite).contains("INSERT INTO tavrel_new_book (id, title, pages, copies) SELECT id, title, pages, 0 FROM book;"));
}

TEST(SqlMigration, TypeChangesPerDatabase)
{
   const QByteArray wider = library(bookWith(k_sTitle, R"({"id": 12, "name": "pages", "type": "long"})"));
   const migration_plan pg = planOf(s_base, wider, dialect_postgresql);
   EXPECT_TRUE(sqlOf(pg).contains("ALTER TABLE book ALTER COLUMN pages TYPE bigint USING pages::bigint;"));
   EXPECT_TRUE(pg.destructiveSteps().isEmpty());
   EXPECT_TRUE(sqlOf(planOf(s_base, wider, dialect_mariadb)).contains("ALTER TABLE book MODIFY COLUMN pages BIGINT;"));
   const migration_plan lite = planOf(s_base, wider, dialect_sqlite);
   EXPECT_EQ(textsOf(lite), QStringList({ "change column book.pages: type INT to INTEGER", "rebuild table book with its rows (SQLite alters no column in place)" }));
   EXPECT_TRUE(sqlOf(lite).contains("DROP TABLE book;\nPRAGMA legacy_alter_table = ON;\nALTER TABLE tavrel_new_book RENAME TO book;\nPRAGMA legacy_alter_table = OFF;"));
}

TEST(SqlMigration, NarrowingTypeIsDestructive)
{
   const QByteArray longTitle = library(bookWith(R"({"id": 11, "name": "title", "type": "QString", "max_length": 200})"));
   const QByteArray shortTitle = library(bookWith(R"({"id": 11, "name": "title", "type": "QString", "max_length": 20})"));
   for (enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb })
   {
      EXPECT_EQ(planOf(longTitle, shortTitle, e).destructiveSteps().size(), 1) << e;
      EXPECT_TRUE(planOf(shortTitle, longTitle, e).destructiveSteps().isEmpty()) << e;
      EXPECT_FALSE(planOf(shortTitle, longTitle, e).isEmpty()) << e;
   }
   const QByteArray textPages = library(bookWith(k_sTitle, R"({"id": 12, "name": "pages", "type": "QString"})"));
   EXPECT_TRUE(planOf(s_base, textPages, dialect_postgresql).destructiveSteps().isEmpty());
   EXPECT_EQ(planOf(textPages, s_base, dialect_postgresql).destructiveSteps(), QStringList({ "change column book.pages: type text to integer (narrowing)" }));
}

TEST(SqlMigration, NullabilityAndDefaults)
{
   const QByteArray strict = library(bookWith(R"({"id": 11, "name": "title", "type": "QString", "allow_null": false})",
                                              R"({"id": 12, "name": "pages", "type": "int", "default": "10"})"));
   const QString pg = sqlOf(planOf(s_base, strict, dialect_postgresql));
   EXPECT_TRUE(pg.contains("UPDATE book SET title = '' WHERE title IS NULL;\nALTER TABLE book ALTER COLUMN title SET NOT NULL;"));
   EXPECT_TRUE(pg.contains("ALTER TABLE book ALTER COLUMN pages SET DEFAULT 10;"));
   const QString back = sqlOf(planOf(strict, s_base, dialect_postgresql));
   EXPECT_TRUE(back.contains("ALTER TABLE book ALTER COLUMN title DROP NOT NULL;"));
   EXPECT_TRUE(back.contains("ALTER TABLE book ALTER COLUMN pages DROP DEFAULT;"));
   EXPECT_TRUE(sqlOf(planOf(s_base, strict, dialect_mariadb)).contains("ALTER TABLE book MODIFY COLUMN title TEXT NOT NULL;"));
   EXPECT_TRUE(sqlOf(planOf(s_base, strict, dialect_sqlite)).contains("SELECT id, COALESCE(title, ''), pages FROM book;"));
}

TEST(SqlMigration, UniqueAndIndexChanges)
{
   const QByteArray indexed = library(bookWith(R"({"id": 11, "name": "title", "type": "QString", "unique": true})",
                                               R"({"id": 12, "name": "pages", "type": "int", "index": true})"));
   for (enum_dialect e : { dialect_sqlite, dialect_postgresql })
   {
      EXPECT_EQ(sqlOf(planOf(s_base, indexed, e)), "CREATE UNIQUE INDEX ux_book_title ON book (title);\nCREATE INDEX ix_book_pages ON book (pages);\n") << e;
      EXPECT_EQ(sqlOf(planOf(indexed, s_base, e)), "DROP INDEX IF EXISTS ux_book_title;\nDROP INDEX IF EXISTS ix_book_pages;\n") << e;
   }
   EXPECT_TRUE(sqlOf(planOf(indexed, s_base, dialect_mariadb)).contains("DROP INDEX IF EXISTS ux_book_title ON book;"));
   // A renamed column renames its index: dropped under the old name, made under the new one.
   const QByteArray renamed = library(bookWith(R"({"id": 11, "name": "headline", "type": "QString", "unique": true})",
                                               R"({"id": 12, "name": "pages", "type": "int", "index": true})"));
   const QString s = sqlOf(planOf(indexed, renamed, dialect_postgresql));
   EXPECT_TRUE(s.contains("DROP INDEX IF EXISTS ux_book_title;") && s.contains("CREATE UNIQUE INDEX ux_book_headline ON book (headline);")) << s.toStdString();
}

TEST(SqlMigration, ForeignKeysAddedAndRemoved)
{
   const QByteArray linked = library(bookWith(k_sTitle) + R"(, {"id": 13, "name": "author", "relation": {"kind": "many_to_one", "target": "Author"}})");
   const migration_plan pg = planOf(s_base, linked, dialect_postgresql);
   EXPECT_EQ(textsOf(pg), QStringList({ "add column book.author", "add foreign key fk_book_author of table book to author" }));
   EXPECT_TRUE(sqlOf(pg).contains("ALTER TABLE book ADD CONSTRAINT fk_book_author FOREIGN KEY (author) REFERENCES author (id);"));
   EXPECT_TRUE(sqlOf(planOf(linked, s_base, dialect_postgresql)).startsWith("ALTER TABLE book DROP CONSTRAINT IF EXISTS fk_book_author;\n"));
   EXPECT_TRUE(sqlOf(planOf(linked, s_base, dialect_mariadb)).startsWith("ALTER TABLE book DROP FOREIGN KEY IF EXISTS fk_book_author;\n"));
   // SQLite changes no key in place.
   EXPECT_TRUE(textsOf(planOf(s_base, linked, dialect_sqlite)).contains("change the foreign keys of table book"));
   EXPECT_TRUE(sqlOf(planOf(s_base, linked, dialect_sqlite)).contains("CONSTRAINT fk_book_author FOREIGN KEY (author) REFERENCES author (id)"));
}

TEST(SqlMigration, TablesAndJoinTablesAddedAndDropped)
{
   const QByteArray withShelf = library(bookWith(k_sTitle), R"(, { "id": 3, "name": "Shelf", "table": "shelf", "properties": [
        {"id": 20, "name": "id", "type": "long", "primary_key": true},
        {"id": 21, "name": "books", "relation": {"kind": "many_to_many", "target": "Book", "extra_table": "shelf_book",
                                                  "foreign_key": "shelf_id", "foreign_key_owner": "book_id"}} ] })");
   const migration_plan pg = planOf(s_base, withShelf, dialect_postgresql);
   EXPECT_EQ(textsOf(pg), QStringList({ "create table shelf", "create table shelf_book", "add foreign key fk_shelf_book_shelf_id of table shelf_book to shelf",
                                        "add foreign key fk_shelf_book_book_id of table shelf_book to book" }));
   const migration_plan back = planOf(withShelf, s_base, dialect_postgresql);
   EXPECT_EQ(back.destructiveSteps(), QStringList({ "drop table shelf", "drop table shelf_book" }));
   // The keys to a dropped table go first.
   EXPECT_TRUE(sqlOf(back).startsWith("ALTER TABLE shelf_book DROP CONSTRAINT IF EXISTS fk_shelf_book_shelf_id;"));
   const migration_plan dropped = planOf(s_base, library(k_sTitle), dialect_mariadb);
   EXPECT_EQ(dropped.destructiveSteps(), QStringList({ "drop column book.pages" }));
   EXPECT_EQ(sqlOf(dropped), "ALTER TABLE book DROP COLUMN pages;\n");
}

TEST(SqlMigration, ScriptNamesBothVersionsAndListsEverySteps)
{
   const sql_dialect d(dialect_postgresql);
   const migration_plan plan = planOf(s_base, library(k_sTitle), dialect_postgresql);
   const QString s = schema_migration::write(plan, d, { "LIB", "old.json" }, { "LIB 2", "new.tavrel" });
   EXPECT_TRUE(s.startsWith("-- Migration of a database for postgresql, written by Tavrel\n-- From: model 'LIB' (old.json)\n-- To:   model 'LIB 2' (new.tavrel)\n"
                            "-- Steps:\n--   1. drop column book.pages (loses data)\n"
                            "-- If a step fails, the transaction is rolled back and the database is left as it was\n"
                            "-- (psql -v ON_ERROR_STOP=1 stops there).\nBEGIN;\n")) << s.toStdString();
   // MariaDB's header says what a failed step leaves; SQLite's what a rebuild loses.
   EXPECT_TRUE(schema_migration::write(plan, sql_dialect(dialect_mariadb), { "LIB", "a" }, { "LIB", "b" }).contains("-- If a step fails: MariaDB has committed the steps before it"));
   const QString sLite = schema_migration::write(planOf(s_base, library(k_sTitle), dialect_sqlite), sql_dialect(dialect_sqlite), { "LIB", "a" }, { "LIB", "b" });
   EXPECT_TRUE(sLite.contains("sqlite3 -bail")) << sLite.toStdString();
   EXPECT_TRUE(sLite.contains("-- A rebuilt table loses what the model does not know of it")) << sLite.toStdString();
   EXPECT_TRUE(s.endsWith("\n-- 1. drop column book.pages (loses data)\nALTER TABLE book DROP COLUMN pages;\n\nCOMMIT;\n")) << s.toStdString();
   const QString none = schema_migration::write(migration_plan(), d, { "LIB", "a.json" }, { "LIB", "b.json" });
   EXPECT_TRUE(none.endsWith("-- Nothing to change: both versions have the same schema.\n"));
   EXPECT_FALSE(none.contains("BEGIN"));
}

TEST(SqlMigration, ModelsWithoutCommonIdsAreNoVersionsOfOneAnother)
{
   const model::project_ptr pA = sql_test::modelFromJson(s_base);
   const model::project_ptr pOther = sql_test::modelFromJson(R"({ "name": "X", "entities": [ { "id": 50, "name": "Thing", "properties": [
      {"id": 60, "name": "id", "type": "long", "primary_key": true} ] } ] })");
   const model::project_ptr pEmpty = sql_test::modelFromJson(R"({ "name": "X", "entities": [] })");
   ASSERT_TRUE(pA && pOther && pEmpty);
   EXPECT_FALSE(schema_migration::shareIds(* pA, * pOther));
   EXPECT_TRUE(schema_migration::shareIds(* pA, * pA));
   EXPECT_TRUE(schema_migration::shareIds(* pEmpty, * pA));
}

// Names stay inside their quotes and comments, even those the model reader would refuse: the
// table that a name tries to drop is still there after the migration ran.
TEST(SqlMigration, ModelTextNeverLeavesItsIdentifierOrComment)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sFile = dir.filePath("hostile.db");
   const sql_dialect d(dialect_sqlite);
   sql_schema from;
   from.lstTables.append(sql_table { "e2", "book", QString(), { sql_column { "p10", "id", "INTEGER", true }, sql_column { "p12", "pages", "INT" } }, { "id" }, {} });
   sql_schema to = from;
   to.lstTables[0].sName = "a\nDROP TABLE victim;--";
   to.lstTables[0].lstColumns[1].sName = "p\";\nDROP TABLE victim;--";
   to.lstTables[0].lstColumns.append(sql_column { "p13", "n'); DROP TABLE victim; --", "TEXT", true, true, true, d.literal("x'); DROP TABLE victim; --") });
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(sFile, "CREATE TABLE victim (id INTEGER);\nINSERT INTO victim VALUES (1);\n" + schema_script::write(from, d, "x"), sError)) << sError.toStdString();
   const QString sScript = schema_migration::write(schema_migration::plan(from, to, d), d, { "x\nDROP TABLE victim;", "f\n;" }, { "LIB", "b\u2028DROP TABLE victim;" });
   // Every line of the top is a comment.
   const QString sTop = sScript.left(sScript.indexOf("PRAGMA foreign_keys = OFF;"));
   ASSERT_FALSE(sTop.isEmpty());
   for (const QString & sLine : sTop.trimmed().split('\n')) { EXPECT_TRUE(sLine.startsWith("--")) << sLine.toStdString(); }
   ASSERT_TRUE(sql_test::runOnSqlite(sFile, sScript, sError)) << sError.toStdString();
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "hostile");
      db.setDatabaseName(sFile);
      ASSERT_TRUE(db.open());
      QSqlQuery q(db);
      EXPECT_TRUE(q.exec("SELECT id FROM victim") && q.next());
      EXPECT_TRUE(q.exec("SELECT \"p\"\";\nDROP TABLE victim;--\" FROM \"a\nDROP TABLE victim;--\"")) << sScript.toStdString();
   }
   QSqlDatabase::removeDatabase("hostile");
}

TEST(SqlMigration, SeriesOnSqliteKeepsRowsAndReadsBackAsTheNewModel)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sFile = dir.filePath("series.db");
   sql_test::migration_target target;
   target.sUrl = "sqlite:" + sFile;
   target.run = [sFile](const QString & sScript, QString & sError) { return sql_test::runOnSqlite(sFile, sScript, sError); };
   target.values = [sFile](const QString & sQuery) {
      QStringList lst;
      {
         QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "series");
         db.setDatabaseName(sFile);
         QSqlQuery q(db);
         if (db.open() && q.exec(sQuery)) { while (q.next()) { lst.append(q.value(0).toString()); } }
      }
      QSqlDatabase::removeDatabase("series");
      return lst;
   };
   sql_test::runMigrationSeries(dialect_sqlite, target);
}

TEST(SqlMigration, PrimaryKeyChangePerDatabase)
{
   const QByteArray otherKey = library(R"({"id": 11, "name": "title", "type": "QString", "primary_key": true, "max_length": 40}, )" + QString(k_sPages))
                                  .replace(R"({"id": 10, "name": "id", "type": "long", "primary_key": true}, )", "");
   const QStringList lstTexts = textsOf(planOf(s_base, otherKey, dialect_postgresql));
   EXPECT_EQ(lstTexts.first(), "drop the primary key of table book");
   EXPECT_EQ(lstTexts.last(), "add the primary key of table book");
   EXPECT_TRUE(sqlOf(planOf(s_base, otherKey, dialect_postgresql)).startsWith("ALTER TABLE book DROP CONSTRAINT IF EXISTS book_pkey;\n"));
   EXPECT_TRUE(sqlOf(planOf(s_base, otherKey, dialect_postgresql)).endsWith("ALTER TABLE book ADD PRIMARY KEY (title);\n"));
   EXPECT_TRUE(sqlOf(planOf(s_base, otherKey, dialect_mariadb)).startsWith("ALTER TABLE book DROP PRIMARY KEY;\n"));
   EXPECT_TRUE(sqlOf(planOf(s_base, otherKey, dialect_sqlite)).contains("   PRIMARY KEY (title)\n);\nINSERT INTO tavrel_new_book (title, pages) SELECT COALESCE(title, ''), pages FROM book;")) << sqlOf(planOf(s_base, otherKey, dialect_sqlite)).toStdString();
}

// The join table goes by its relation properties' ids: the side that declares it may change.
TEST(SqlMigration, JoinTableKeepsItsRowsWhenTheOtherSideDeclaresIt)
{
   const QString sShelf = R"(, { "id": 3, "name": "Shelf", "table": "shelf", "properties": [
        {"id": 20, "name": "id", "type": "long", "primary_key": true}%1 ] })";
   const QString sOnShelf = R"(, {"id": 21, "name": "books", "relation": {"kind": "many_to_many", "target": "Book", "extra_table": "shelf_book",
        "foreign_key": "shelf_id", "foreign_key_owner": "book_id"}})";
   const QString sOnBook = R"(, {"id": 15, "name": "shelves", "relation": {"kind": "many_to_many", "target": "Shelf", "extra_table": "shelf_book",
        "foreign_key": "book_id", "foreign_key_owner": "shelf_id"}})";
   const QByteArray both = library(bookWith(k_sTitle) + sOnBook, sShelf.arg(sOnShelf));
   const QByteArray onBook = library(bookWith(k_sTitle) + sOnBook, sShelf.arg(QString()));
   const QByteArray onShelf = library(bookWith(k_sTitle), sShelf.arg(sOnShelf));
   for (enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb })
   {
      EXPECT_TRUE(planOf(both, onShelf, e).destructiveSteps().isEmpty()) << textsOf(planOf(both, onShelf, e)).join("; ").toStdString();
      EXPECT_FALSE(sqlOf(planOf(both, onBook, e)).contains("DROP TABLE")) << e;
   }
}

// From nothing to each example: the migration creates what the schema script creates.
TEST(SqlMigration, ExamplesMigrateFromAnEmptyModelOnSqlite)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const sql_dialect d(dialect_sqlite);
   for (const QString & sName : { QString("shop"), QString("library") })
   {
      const model::project_ptr pProject = sql_test::exampleModel(sName);
      ASSERT_TRUE(pProject);
      const sql_schema to = schema_builder::build(* pProject, d, schema_options());
      const migration_plan plan = schema_migration::plan(sql_schema(), to, d);
      EXPECT_TRUE(plan.destructiveSteps().isEmpty());
      const QString sFile = dir.filePath(sName + ".db");
      QString sError;
      ASSERT_TRUE(sql_test::runOnSqlite(sFile, schema_migration::write(plan, d, { "EMPTY", "empty.json" }, { sName, sName + ".json" }), sError)) << sError.toStdString();
      const model::project_ptr pBack = sql_test::importFrom("sqlite:" + sFile, pProject->getName(), sError);
      ASSERT_TRUE(pBack) << sError.toStdString();
      EXPECT_EQ(sql_test::scriptOf(* pBack, dialect_sqlite, false).toStdString(), sql_test::scriptOf(* pProject, dialect_sqlite, false).toStdString());
      // And nothing left to do afterwards.
      EXPECT_TRUE(schema_migration::plan(to, to, d).isEmpty());
   }
}

TEST(SqlMigration, GeneratedModelMigratedReadsBackLikeItsNextVersionOnSqlite)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   QList<sql_test::migration_target> lstTargets;
   for (const QString & sName : { QString("migrated.db"), QString("fresh.db") })
   {
      const QString sFile = dir.filePath(sName);
      sql_test::migration_target t;
      t.sUrl = "sqlite:" + sFile;
      t.run = [sFile](const QString & sScript, QString & sError) { return sql_test::runOnSqlite(sFile, sScript, sError); };
      lstTargets.append(t);
   }
   sql_test::runGeneratedMigration(dialect_sqlite, lstTargets.at(0), lstTargets.at(1));
}
