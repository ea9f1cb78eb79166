#include "migration_series.h"

#include <gtest/gtest.h>

#include "model/project.h"
#include "model_generator.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_export/schema/schema_script.h"
#include "sql_test_support.h"

namespace sql_test {

namespace {

QByteArray version(const QString & sAuthorName, const QString & sBook, const QString & sMore, const QString & sBookTable = "book")
{
   return QString(R"({ "name": "SERIES", "entities": [
      { "id": 1, "name": "Author", "table": "author", "properties": [
        {"id": 1, "name": "id", "type": "long", "primary_key": true},
        {"id": 2, "name": "name", "type": "QString", "allow_null": false, "max_length": %1} ] },
      { "id": 2, "name": "Book", "table": "%4", "properties": [
        {"id": 10, "name": "id", "type": "long", "primary_key": true}, %2,
        {"id": 13, "name": "author", "relation": {"kind": "many_to_one", "target": "Author"}} ] }%3 ] })")
      .arg(sAuthorName, sBook, sMore, sBookTable).toUtf8();
}

const char * const k_sPublisher = R"(, { "id": 3, "name": "Publisher", "table": "publisher", "properties": [
        {"id": 20, "name": "id", "type": "long", "primary_key": true},
        {"id": 21, "name": "name", "type": "QString", "max_length": 60} ] })";
// On the side the import gives it back on (the first table by name).
const char * const k_sPublishers = R"(, {"id": 22, "name": "publishers", "relation": {"kind": "many_to_many", "target": "Publisher",
        "extra_table": "book_publisher", "foreign_key": "book_id", "foreign_key_owner": "publisher_id"}})";

QString book(const QString & sTitle, const QString & sPagesType, bool bPages, bool bPublishers = false, const QString & sTitleMore = QString())
{
   return QString(R"({"id": 11, "name": "%1", "type": "QString", "max_length": 100%2})").arg(sTitle, sTitleMore)
          + (bPages ? QString(R"(, {"id": 12, "name": "pages", "type": "%1"})").arg(sPagesType) : QString())
          + (bPublishers ? QString(k_sPublishers) : QString());
}

// What the rows hold after each version: titles, pages of the first book, author names.
struct expected_rows
{
   QString sTitleColumn;
   bool bPages;
   QString sBookTable = "book";
};

void checkRows(const migration_target & target, const expected_rows & e, int iVersion)
{
   EXPECT_EQ(target.values("SELECT " + e.sTitleColumn + " FROM " + e.sBookTable + " ORDER BY id"), QStringList({ "T1", "T2", "T3" })) << "version " << iVersion;
   EXPECT_EQ(target.values("SELECT name FROM author ORDER BY id"), QStringList({ "Ann", "Bob" })) << "version " << iVersion;
   EXPECT_EQ(target.values("SELECT author FROM " + e.sBookTable + " ORDER BY id"), QStringList({ "1", "2", "1" })) << "version " << iVersion;
   if (e.bPages) { EXPECT_EQ(target.values("SELECT pages FROM " + e.sBookTable + " WHERE id = 1"), QStringList({ "100" })) << "version " << iVersion; }
}

} // namespace

QList<QByteArray> migrationSeries()
{
   const QString sPublisher = k_sPublisher;
   return {
      version("80", book("title", "int", true), QString()),
      version("80", book("title", "int", true), sPublisher),
      version("80", book("headline", "int", true), sPublisher),
      version("200", book("headline", "long", true), sPublisher),
      version("200", book("headline", "long", true, true), sPublisher),
      version("200", book("headline", "long", false, true), sPublisher),
      // Constraints: NOT NULL and unique, a default, an index.
      version(R"(200, "index": true)", book("headline", "long", false, true, R"(, "allow_null": false, "unique": true)"),
              QString(sPublisher).replace(R"("max_length": 60)", R"("max_length": 60, "default": "none")")),
      // A renamed table with keys and a unique index: they are made again under its new name (a name
      // before "publisher", the side the import gives the many-to-many relation back on).
      version(R"(200, "index": true)", book("headline", "long", false, true, R"(, "allow_null": false, "unique": true)"),
              QString(sPublisher).replace(R"("max_length": 60)", R"("max_length": 60, "default": "none")"), "item"),
      // An entity and its many-to-many relation removed: both tables dropped, their keys first.
      version(R"(200, "index": true)", book("headline", "long", false, false, R"(, "allow_null": false, "unique": true)"), QString(), "item") };
}

void runMigrationSeries(sql_export::enum_dialect eDialect, const migration_target & target)
{
   const sql_export::sql_dialect dialect(eDialect);
   const QList<QByteArray> lstVersions = migrationSeries();
   const QList<expected_rows> lstRows { { "title", true }, { "title", true }, { "headline", true }, { "headline", true }, { "headline", true }, { "headline", false }, { "headline", false }, { "headline", false, "item" }, { "headline", false, "item" } };
   model::project_ptr pOld = modelFromJson(lstVersions.first());
   ASSERT_TRUE(pOld);
   QString sError;
   ASSERT_TRUE(target.run(scriptOf(* pOld, eDialect), sError)) << sError.toStdString();
   ASSERT_TRUE(target.run("INSERT INTO author (id, name) VALUES (1, 'Ann');\nINSERT INTO author (id, name) VALUES (2, 'Bob');\n"
                          "INSERT INTO book (id, title, pages, author) VALUES (1, 'T1', 100, 1);\n"
                          "INSERT INTO book (id, title, pages, author) VALUES (2, 'T2', NULL, 2);\n"
                          "INSERT INTO book (id, title, pages, author) VALUES (3, 'T3', 50, 1);\n", sError)) << sError.toStdString();
   for (int i = 1; i < lstVersions.size(); ++i)
   {
      const model::project_ptr pNew = modelFromJson(lstVersions.at(i));
      ASSERT_TRUE(pNew);
      const sql_export::schema_options options;
      const sql_export::migration_plan plan = sql_export::schema_migration::plan(sql_export::schema_builder::build(* pOld, dialect, options),
                                                                                 sql_export::schema_builder::build(* pNew, dialect, options), dialect);
      ASSERT_FALSE(plan.isEmpty()) << "version " << i;
      // Only the versions without pages and without publishers drop anything.
      EXPECT_EQ(plan.destructiveSteps().isEmpty(), (i != 5) && (i != 8)) << plan.destructiveSteps().join("; ").toStdString();
      const QString sScript = sql_export::schema_migration::write(plan, dialect, { "SERIES", QString("v%1.json").arg(i - 1) }, { "SERIES", QString("v%1.json").arg(i) });
      ASSERT_TRUE(target.run(sScript, sError)) << "version " << i << ": " << sError.toStdString() << "\n" << sScript.toStdString();
      const model::project_ptr pBack = importFrom(target.sUrl, "SERIES", sError);
      ASSERT_TRUE(pBack) << sError.toStdString();
      EXPECT_EQ(scriptOf(* pBack, eDialect, false).toStdString(), scriptOf(* pNew, eDialect, false).toStdString()) << "version " << i;
      checkRows(target, lstRows.at(i), i);
      pOld = pNew;
   }
}

void runGeneratedMigration(sql_export::enum_dialect eDialect, const migration_target & migrated, const migration_target & fresh)
{
   const sql_export::sql_dialect dialect(eDialect);
   bench::model_options options;
   options.entities = 30;
   const model::project_ptr pOld = bench::generateModel(options);
   const model::project_ptr pNew = bench::generateModel(options);
   ASSERT_GT(bench::editModel(* pNew, 4), 20);
   const sql_export::sql_schema from = sql_export::schema_builder::build(* pOld, dialect, sql_export::schema_options());
   const sql_export::sql_schema to = sql_export::schema_builder::build(* pNew, dialect, sql_export::schema_options());
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(from, to, dialect);
   ASSERT_GT(plan.lstSteps.size(), 20);
   QString sError;
   ASSERT_TRUE(migrated.run(sql_export::schema_script::write(from, dialect, "OLD"), sError)) << sError.toStdString();
   ASSERT_TRUE(migrated.run(sql_export::schema_migration::write(plan, dialect, { "OLD", "old" }, { "NEW", "new" }), sError)) << sError.toStdString();
   ASSERT_TRUE(fresh.run(sql_export::schema_script::write(to, dialect, "NEW"), sError)) << sError.toStdString();
   const model::project_ptr pMigrated = importFrom(migrated.sUrl, "BENCH", sError);
   ASSERT_TRUE(pMigrated) << sError.toStdString();
   const model::project_ptr pFresh = importFrom(fresh.sUrl, "BENCH", sError);
   ASSERT_TRUE(pFresh) << sError.toStdString();
   EXPECT_EQ(scriptOf(* pMigrated, eDialect, false).toStdString(), scriptOf(* pFresh, eDialect, false).toStdString());
}

} // namespace sql_test
