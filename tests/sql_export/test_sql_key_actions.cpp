// What a foreign key does when the row it points at is deleted or its key changed (ON DELETE,
// ON UPDATE): kept by import-db as meta data, written back by the SQL export and by migrations,
// and nothing but the SQL words ever written from that meta data.

#include <gtest/gtest.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/sql_meta.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_test_support.h"

namespace {

using sql_export::dialect_mariadb;
using sql_export::dialect_postgresql;
using sql_export::dialect_sqlite;

const char * const k_sSource =
   "CREATE TABLE shelf (id INTEGER PRIMARY KEY);\n"
   "CREATE TABLE bin (shelf_id INTEGER NOT NULL, slot INTEGER NOT NULL, PRIMARY KEY (shelf_id, slot));\n"
   "CREATE TABLE book (id INTEGER PRIMARY KEY, shelf_id INTEGER REFERENCES shelf (id) ON DELETE CASCADE ON UPDATE SET NULL,\n"
   "  keeper_id INTEGER REFERENCES shelf (id) ON DELETE RESTRICT, plain_id INTEGER REFERENCES shelf (id) ON DELETE NO ACTION);\n"
   "CREATE TABLE tag (id INTEGER PRIMARY KEY, shelf_id INTEGER, slot INTEGER,\n"
   "  FOREIGN KEY (shelf_id, slot) REFERENCES bin (shelf_id, slot) ON UPDATE CASCADE);\n";

// The relation property of an entity that reads the given column.
model::property_ptr relationOf(const model::project & project, const QString & sEntity, const QString & sColumn)
{
   const model::entity_ptr pEntity = project.getEntityByKey(sEntity);
   if (! pEntity) { return nullptr; }
   for (const model::property_ptr & p : pEntity->getListOfProperty(false, true, false))
   {
      if (p->getRelation() && ((p->getColumnName() == sColumn) || (p->getName() + "_id" == sColumn) || (p->getName() == sColumn))) { return p; }
   }
   return nullptr;
}

const char * const k_sModel = R"J({ "name": "Shelves", "entities": [
  {"id": 1, "name": "Shelf", "table": "shelf", "properties": [ {"id": 1, "name": "id", "type": "long", "primary_key": true} ]},
  {"id": 2, "name": "Book", "table": "book", ENTITY_META "properties": [
    {"id": 2, "name": "id", "type": "long", "primary_key": true},
    {"id": 3, "name": "shelf", "relation": {"kind": "many_to_one", "target": "Shelf"}, "column": "shelf_id" PROPERTY_META},
    {"id": 4, "name": "spare", "type": "long"} ]} ] })J";

model::project_ptr shelvesModel(const QByteArray & propertyMeta, const QByteArray & entityMeta = QByteArray())
{
   return sql_test::modelFromJson(QByteArray(k_sModel).replace("PROPERTY_META", propertyMeta).replace("ENTITY_META", entityMeta));
}

QString migrationOf(const model::project & from, const model::project & to, sql_export::enum_dialect e)
{
   const sql_export::sql_dialect d(e);
   const sql_export::schema_options options;
   return sql_export::schema_migration::write(
      sql_export::schema_migration::plan(sql_export::schema_builder::build(from, d, options), sql_export::schema_builder::build(to, d, options), d), d,
      { "from", "from.json" }, { "to", "to.json" });
}

} // namespace

// The actions are read from the catalog (NO ACTION kept by nothing), written back in all three
// dialects, and the rebuilt SQLite database acts on them.
TEST(SqlKeptKeys, ForeignKeyActionsGoBack)
{
   QTemporaryDir dir;
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(dir.filePath("source.db"), k_sSource, sError)) << sError.toStdString();
   const model::project_ptr p = sql_test::importFrom("sqlite:" + dir.filePath("source.db"), "Kept", sError);
   ASSERT_TRUE(p) << sError.toStdString();
   const model::property_ptr pShelf = relationOf(* p, "Book", "shelf_id");
   const model::property_ptr pKeeper = relationOf(* p, "Book", "keeper_id");
   const model::property_ptr pPlain = relationOf(* p, "Book", "plain_id");
   ASSERT_TRUE(pShelf && pKeeper && pPlain);
   EXPECT_EQ(pShelf->getMetaData(model::sql_meta::k_sOnDelete).toString(), "CASCADE");
   EXPECT_EQ(pShelf->getMetaData(model::sql_meta::k_sOnUpdate).toString(), "SET NULL");
   EXPECT_EQ(pKeeper->getMetaData(model::sql_meta::k_sOnDelete).toString(), "RESTRICT");
   EXPECT_FALSE(pKeeper->getAllMetaData().contains(model::sql_meta::k_sOnUpdate));
   EXPECT_FALSE(pPlain->getAllMetaData().contains(model::sql_meta::k_sOnDelete));
   EXPECT_EQ(p->getEntityByKey("Tag")->getMetaData(model::sql_meta::k_sForeignKeys).toString(),
             R"([{"columns":["shelf_id","slot"],"on_update":"CASCADE","table":"bin","targets":["shelf_id","slot"]}])");
   for (const sql_export::enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb })
   {
      const QString s = sql_test::scriptOf(* p, e, false);
      EXPECT_TRUE(s.contains("REFERENCES shelf (id) ON DELETE CASCADE ON UPDATE SET NULL")) << s.toStdString();
      EXPECT_TRUE(s.contains("REFERENCES shelf (id) ON DELETE RESTRICT")) << s.toStdString();
      EXPECT_TRUE(s.contains("REFERENCES bin (shelf_id, slot) ON UPDATE CASCADE")) << s.toStdString();
      EXPECT_EQ(s.count("ON DELETE"), 2) << s.toStdString();
   }
   const QString sCopy = dir.filePath("copy.db");
   ASSERT_TRUE(sql_test::runOnSqlite(sCopy, sql_test::scriptOf(* p, dialect_sqlite, false), sError)) << sError.toStdString();
   QString sLeft;
   ASSERT_TRUE(sql_test::runStatements(sCopy, { "PRAGMA foreign_keys = ON", "INSERT INTO shelf (id) VALUES (1)", "INSERT INTO book (id, shelf_id) VALUES (5, 1)",
                                "DELETE FROM shelf WHERE id = 1", "SELECT count(*) FROM book" }, & sLeft));
   EXPECT_EQ(sLeft, "0");
}

// A kept action is one of the SQL words: anything else (a statement smuggled in) is left out
// with a warning naming it, in the relation's meta data and in an entry of the entity's keys.
// The model readers refuse such a model; one made in memory reaches the export all the same.
TEST(SqlKeptKeys, ForeignKeyActionOtherThanTheSqlWordsIsRefused)
{
   EXPECT_EQ(model::sql_meta::foreignKeyAction(" set  null "), "SET NULL");
   EXPECT_EQ(model::sql_meta::foreignKeyAction("NO ACTION"), "");
   EXPECT_TRUE(model::sql_meta::isForeignKeyAction("no action"));
   EXPECT_FALSE(model::sql_meta::isForeignKeyAction("CASCADE; DROP TABLE x"));
   const model::project_ptr p = shelvesModel(R"J(, "meta": {"TAVREL_SQL_ON_UPDATE": "restrict"})J");
   ASSERT_TRUE(p);
   const model::entity_ptr pBook = p->getEntityByKey("Book");
   ASSERT_TRUE(pBook && pBook->getPropertyByName("shelf"));
   pBook->getPropertyByName("shelf")->setMetaData(model::sql_meta::k_sOnDelete, "CASCADE; DROP TABLE x");
   pBook->setMetaData(model::sql_meta::k_sForeignKeys, R"([{"column":"spare","table":"shelf","target":"id","on_delete":"SET NULL) ; DROP TABLE x; --"}])");
   for (const sql_export::enum_dialect e : { dialect_sqlite, dialect_postgresql, dialect_mariadb })
   {
      QStringList lstWarnings;
      const QString s = sql_test::scriptOf(* p, e, false, & lstWarnings);
      EXPECT_FALSE(s.contains("DROP")) << s.toStdString();
      EXPECT_FALSE(s.contains("ON DELETE")) << s.toStdString();
      EXPECT_TRUE(s.contains("REFERENCES shelf (id) ON UPDATE RESTRICT")) << s.toStdString();
      EXPECT_TRUE(s.contains("FOREIGN KEY (spare) REFERENCES shelf (id)")) << s.toStdString();
      EXPECT_EQ(lstWarnings.filter("is not an SQL action").size(), 2) << lstWarnings.join('\n').toStdString();
   }
}

// InnoDB makes no table with SET DEFAULT: MariaDB's script leaves it out and says so.
TEST(SqlKeptKeys, SetDefaultIsLeftOutForMariadb)
{
   const model::project_ptr p = shelvesModel(R"J(, "meta": {"TAVREL_SQL_ON_DELETE": "SET DEFAULT"})J");
   ASSERT_TRUE(p);
   QStringList lstWarnings;
   const QString sMariadb = sql_test::scriptOf(* p, dialect_mariadb, false, & lstWarnings);
   EXPECT_FALSE(sMariadb.contains("ON DELETE")) << sMariadb.toStdString();
   EXPECT_EQ(lstWarnings.filter("SET DEFAULT has no form").size(), 1) << lstWarnings.join('\n').toStdString();
   const QString sPostgresql = sql_test::scriptOf(* p, dialect_postgresql, false);
   EXPECT_TRUE(sPostgresql.contains("REFERENCES shelf (id) ON DELETE SET DEFAULT")) << sPostgresql.toStdString();
}

// A migration makes a key whose action changed again: PostgreSQL and MariaDB drop and add it,
// SQLite rebuilds the table.
TEST(SqlKeptKeys, ChangedForeignKeyActionIsMigrated)
{
   const model::project_ptr pBefore = shelvesModel(QByteArray());
   const model::project_ptr pAfter = shelvesModel(R"J(, "meta": {"TAVREL_SQL_ON_DELETE": "CASCADE"})J");
   ASSERT_TRUE(pBefore && pAfter);
   const QString sPostgresql = migrationOf(* pBefore, * pAfter, dialect_postgresql);
   EXPECT_TRUE(sPostgresql.contains("DROP CONSTRAINT IF EXISTS fk_book_shelf_id")) << sPostgresql.toStdString();
   EXPECT_TRUE(sPostgresql.contains("ALTER TABLE book ADD CONSTRAINT fk_book_shelf_id FOREIGN KEY (shelf_id) REFERENCES shelf (id) ON DELETE CASCADE;")) << sPostgresql.toStdString();
   const QString sMariadb = migrationOf(* pBefore, * pAfter, dialect_mariadb);
   EXPECT_TRUE(sMariadb.contains("DROP FOREIGN KEY IF EXISTS fk_book_shelf_id")) << sMariadb.toStdString();
   EXPECT_TRUE(sMariadb.contains("REFERENCES shelf (id) ON DELETE CASCADE;")) << sMariadb.toStdString();
   const QString sSqlite = migrationOf(* pBefore, * pAfter, dialect_sqlite);
   EXPECT_TRUE(sSqlite.contains("REFERENCES shelf (id) ON DELETE CASCADE")) << sSqlite.toStdString();
   // And back: the key is made without it.
   const QString sBack = migrationOf(* pAfter, * pBefore, dialect_postgresql);
   EXPECT_TRUE(sBack.contains("ALTER TABLE book ADD CONSTRAINT fk_book_shelf_id FOREIGN KEY (shelf_id) REFERENCES shelf (id);")) << sBack.toStdString();
}
