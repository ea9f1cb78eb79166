// What import-db makes of names that would shadow a class, keys over several columns, tables and
// views without a key, a view over a missing table and the project's name; through the real
// program where the user would meet it. The compile check of the same schema is the CTest test
// compile_check.import.keys.* (tests/db_import/CMakeLists.txt).

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "db_environment.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_storage.h"
#include "test_support.h"

using import_test::propertyOf;
using test_support::cli_result;
using test_support::runTavrel;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

QString keysSchema() { return test_support::sourceDir() + "/tests/db_import/schemas/keys.sqlite.sql"; }

QString typeOf(const model::property_ptr & p) { return ((p && p->getType()) ? p->getType()->getPrimitiveType() : QString("<none>")); }

int kindOf(const model::property_ptr & p) { return ((p && p->getRelation()) ? p->getRelation()->getType() : -1); }

model::project_ptr readModel(const QString & sFile)
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::readJsonFile(sFile, p);
   EXPECT_TRUE(bool(ok)) << ok.getDesc().toStdString();
   return p;
}

bool writeModel(const model::project & project, const QString & sFile)
{
   return test_support::writeAll(sFile, storage::project_storage::toJson(project));
}

TEST(ImportKeys, RelationsAreNeverNamedLikeAClass)
{
   const import_test::import_run r = import_test::importDdl(keysSchema());
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Author", "Books")), model::relationship::one_to_many);
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Book", "author")), model::relationship::many_to_one);
   EXPECT_EQ(propertyOf(r.pProject, "Book", "author")->getColumnName(), "AuthorId");
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Employee", "ReportsTo")), model::relationship::many_to_one);
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Employee", "Employees")), model::relationship::one_to_many);
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Book", "Tags")), model::relationship::many_to_many);
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Tag", "Books")), model::relationship::many_to_many);
   // Columns named like a class: the relation and the plain column alike.
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Review", "book")), model::relationship::many_to_one);
   EXPECT_EQ(propertyOf(r.pProject, "Review", "author")->getColumnName(), "Author");
   for (const model::entity_ptr & e : (* r.pProject->getListOfAllEntities()))
   {
      for (const model::property_ptr & p : e->getOwnProperties()) { EXPECT_FALSE(r.pProject->getEntityByKey(p->getName())) << p->getName().toStdString(); }
   }
   EXPECT_TRUE(r.pProject->checkSchema().isEmpty());

   db_import::import_options camel;
   camel.ePropertyNames = db_import::import_options::property_names_camel;
   const import_test::import_run c = import_test::importDdl(keysSchema(), camel);
   ASSERT_TRUE(c.bOk) << c.sError.toStdString();
   EXPECT_EQ(kindOf(propertyOf(c.pProject, "Author", "books")), model::relationship::one_to_many);
   EXPECT_EQ(kindOf(propertyOf(c.pProject, "Employee", "reportsTo")), model::relationship::many_to_one);
   EXPECT_EQ(kindOf(propertyOf(c.pProject, "Employee", "employees")), model::relationship::one_to_many);
   EXPECT_EQ(kindOf(propertyOf(c.pProject, "OrderItem", "orderId")), -1);
}

TEST(ImportKeys, CompositeKeyIsOneKeyOfAPairOrTupleType)
{
   const import_test::import_run r = import_test::importDdl(keysSchema());
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   const model::property_ptr pPair = propertyOf(r.pProject, "OrderItem", "id");
   ASSERT_TRUE(pPair);
   EXPECT_TRUE(pPair->isPrimaryKey());
   EXPECT_EQ(typeOf(pPair), "std::pair<long, long>");
   EXPECT_EQ(pPair->getColumnName(), "order_id|item_no");
   EXPECT_EQ(r.pProject->getEntityByKey("OrderItem")->getPropertyId(false), pPair);
   // The key's columns stay, with their own facts, for the SQL export.
   ASSERT_TRUE(propertyOf(r.pProject, "OrderItem", "order_id"));
   EXPECT_FALSE(propertyOf(r.pProject, "OrderItem", "order_id")->isPrimaryKey());
   EXPECT_FALSE(propertyOf(r.pProject, "OrderItem", "item_no")->getAllowNull());
   const model::property_ptr pTuple = propertyOf(r.pProject, "Loan", "id");
   ASSERT_TRUE(pTuple);
   EXPECT_EQ(typeOf(pTuple), "std::tuple<long, QString, QDate>");
   EXPECT_EQ(pTuple->getColumnName(), "book_id|member_code|day");
   EXPECT_EQ(kindOf(propertyOf(r.pProject, "Loan", "book")), model::relationship::many_to_one);
   EXPECT_FALSE(import_test::hasWarning(r.lstWarnings, { "composite primary key" }));
}

// A view over a table the script never made is reported and left out; strict, it fails.
TEST(ImportKeysCli, ViewOverAMissingTableIsLeftOutOrFailsWhenStrict)
{
   QTemporaryDir dir;
   const QString sDb = dir.path() + "/keys.db";
   QString sUrl, sError;
   ASSERT_TRUE(import_test::prepareSource(db_import::dialect_sqlite, "keys", dir.path(), sUrl, sError)) << sError.toStdString();
   for (const QStringList & lstSource : { QStringList { "--ddl", keysSchema() }, QStringList { sUrl } })
   {
      const cli_result r = runTavrel(QStringList("import-db") + lstSource + QStringList(dir.path() + "/loose.json"));
      EXPECT_EQ(r.code, 0) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains("view dangling cannot be read")) << r.err.toStdString();
      const cli_result s = runTavrel(QStringList("import-db") + lstSource + QStringList { dir.path() + "/strict.json", "--strict" });
      EXPECT_EQ(s.code, 1) << s.err.toStdString();
      EXPECT_TRUE(s.err.contains("dangling")) << s.err.toStdString();
      EXPECT_FALSE(QFile::exists(dir.path() + "/strict.json"));
   }
}

TEST(ImportKeysCli, KeylessTablesAndViewsGetAKeyTheSummaryNamesAndARefreshKeeps)
{
   QTemporaryDir dir;
   const QString sModel = dir.path() + "/library.json";
   const cli_result r = runTavrel({ "import-db", "--ddl", keysSchema(), sModel });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("table event_log has no primary key: column at (its first column that is no foreign key) is its key")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("table country has no primary key: column iso (its first unique not-null column) is its key")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("view book_list has no primary key: column BookId")) << r.out.toStdString();
   model::project_ptr p = readModel(sModel);
   ASSERT_TRUE(p);
   EXPECT_TRUE(propertyOf(p, "EventLog", "at")->isPrimaryKey());
   EXPECT_TRUE(propertyOf(p, "BookList", "BookId")->isPrimaryKey());
   EXPECT_TRUE(p->getEntityByKey("BookList")->isReadOnly());
   EXPECT_EQ(p->getEntityByKey("BookList")->getMetaData("TAVREL_VIEW").toString(), "true");
   EXPECT_FALSE(p->getEntityByKey("Book")->getMetaData("TAVREL_VIEW").isValid());

   // The user moves the key; the refresh leaves it there and changes nothing.
   propertyOf(p, "EventLog", "at")->setPrimaryKey(false);
   propertyOf(p, "EventLog", "message")->setPrimaryKey(true);
   ASSERT_TRUE(writeModel(* p, sModel));
   const cli_result again = runTavrel({ "import-db", "--ddl", keysSchema(), sModel });
   ASSERT_EQ(again.code, 0) << again.err.toStdString();
   EXPECT_TRUE(again.out.contains("(0 change(s))")) << again.out.toStdString();
   p = readModel(sModel);
   EXPECT_TRUE(propertyOf(p, "EventLog", "message")->isPrimaryKey());
   EXPECT_FALSE(propertyOf(p, "EventLog", "at")->isPrimaryKey());
}

TEST(ImportKeysCli, KeylessNoneKeepsTablesWithoutAKey)
{
   QTemporaryDir dir;
   const QString sModel = dir.path() + "/library.json";
   const cli_result r = runTavrel({ "import-db", "--ddl", keysSchema(), sModel, "--keyless", "none" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_FALSE(r.out.contains("has no primary key")) << r.out.toStdString();
   const model::project_ptr p = readModel(sModel);
   ASSERT_TRUE(p);
   EXPECT_FALSE(p->getEntityByKey("EventLog")->getPropertyId(false));
   EXPECT_FALSE(p->getEntityByKey("BookList")->getPropertyId(false));
   EXPECT_EQ(runTavrel({ "import-db", "--ddl", keysSchema(), sModel, "--keyless", "some" }).code, 2);
}

TEST(ImportKeysCli, ProjectNamedSoThatItsCMakeProjectBuilds)
{
   QTemporaryDir dir;
   const QString sModel = dir.path() + "/books.json";
   const cli_result r = runTavrel({ "import-db", "--ddl", keysSchema(), sModel });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("Project name: BOOKS (from the file name, in upper case")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("--name NAME")) << r.out.toStdString();
   const cli_result check = runTavrel({ "check", sModel });
   EXPECT_EQ(check.code, 0) << check.err.toStdString();
   EXPECT_TRUE(check.out.contains("0 error(s), 0 warning(s)")) << check.out.toStdString() << check.err.toStdString();
}

TEST(ImportKeysCli, CheckRefusesAPropertyNamedLikeAClass)
{
   QTemporaryDir dir;
   const QString sModel = dir.path() + "/books.json";
   ASSERT_EQ(runTavrel({ "import-db", "--ddl", keysSchema(), sModel }).code, 0);
   model::project_ptr p = readModel(sModel);
   ASSERT_TRUE(p);
   propertyOf(p, "Book", "author")->setName("Author");
   propertyOf(p, "Employee", "Employees")->setName("Employee");
   ASSERT_TRUE(writeModel(* p, sModel));
   const cli_result check = runTavrel({ "check", sModel });
   EXPECT_EQ(check.code, 1);
   const QString sAll = check.out + check.err;
   EXPECT_TRUE(sAll.contains("Entity 'Book' : property 'Author' is named like the class 'Author' of its namespace")) << sAll.toStdString();
   EXPECT_TRUE(sAll.contains("Entity 'Employee' : property 'Employee' is named like its own class")) << sAll.toStdString();
}

// The new table's inverse relation is added once and stays: one refresh gives the final state.
TEST(ImportKeysCli, RefreshAddingATableWithAForeignKeyIsFinal)
{
   QTemporaryDir dir;
   const QString sModel = dir.path() + "/shop.json";
   const QString sBefore = "CREATE TABLE customer (id INTEGER PRIMARY KEY, name TEXT);\n";
   const QString sAfter = sBefore + "CREATE TABLE invoice (id INTEGER PRIMARY KEY, customer_id INTEGER REFERENCES customer (id));\n";
   test_support::writeAll(dir.path() + "/before.sql", sBefore.toUtf8());
   test_support::writeAll(dir.path() + "/after.sql", sAfter.toUtf8());
   ASSERT_EQ(runTavrel({ "import-db", "--ddl", dir.path() + "/before.sql", sModel }).code, 0);
   const cli_result r = runTavrel({ "import-db", "--ddl", dir.path() + "/after.sql", sModel });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("+ property Customer.invoices")) << r.out.toStdString();
   EXPECT_FALSE(r.out.contains("obsolete")) << r.out.toStdString();
   const model::project_ptr p = readModel(sModel);
   ASSERT_TRUE(propertyOf(p, "Customer", "invoices"));
   EXPECT_FALSE(propertyOf(p, "Customer", "invoices")->isObsolete());
   const cli_result again = runTavrel({ "import-db", "--ddl", dir.path() + "/after.sql", sModel });
   ASSERT_EQ(again.code, 0) << again.err.toStdString();
   EXPECT_TRUE(again.out.contains("(0 change(s))")) << again.out.toStdString();
}

// MariaDB keeps a view whose table was dropped; its catalog lists the view without columns.
class ImportBrokenView : public ::testing::TestWithParam<db_import::enum_dialect> { };

TEST_P(ImportBrokenView, ViewOverADroppedTableIsReportedAndLeftOut)
{
   QTemporaryDir dir;
   QString sUrl, sError;
   ASSERT_TRUE(import_test::prepareSource(GetParam(), "shop", dir.path(), sUrl, sError)) << sError.toStdString();
   ASSERT_TRUE(import_test::execOnSource(GetParam(), sUrl, "CREATE TABLE doomed (id INT PRIMARY KEY);\n"
                                                         "CREATE VIEW doomed_view AS SELECT id FROM doomed;\n"
                                                         "DROP TABLE doomed;\n", sError)) << sError.toStdString();
   const cli_result r = runTavrel({ "import-db", sUrl, dir.path() + "/shop.json" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("view doomed_view cannot be read")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("left out")) << r.err.toStdString();
   const cli_result s = runTavrel({ "import-db", sUrl, dir.path() + "/strict.json", "--strict" });
   EXPECT_EQ(s.code, 1) << s.err.toStdString();
   EXPECT_TRUE(s.err.contains("view doomed_view cannot be read")) << s.err.toStdString();
   EXPECT_FALSE(QFile::exists(dir.path() + "/strict.json"));
}

INSTANTIATE_TEST_SUITE_P(MariaDB, ImportBrokenView, ::testing::Values(db_import::dialect_mariadb));

class ImportPartitions : public ::testing::TestWithParam<db_import::enum_dialect> { };

TEST_P(ImportPartitions, ThePartitionedTableIsTheEntityItsPartitionsAreNone)
{
   QTemporaryDir dir;
   QString sUrl, sError;
   ASSERT_TRUE(import_test::prepareSource(GetParam(), "corpus", dir.path(), sUrl, sError)) << sError.toStdString();
   const import_test::import_run r = import_test::importSource(sUrl);
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   ASSERT_TRUE(r.pProject->getEntityByKey("Measurement"));
   EXPECT_EQ(typeOf(propertyOf(r.pProject, "Measurement", "id")), "std::pair<int, QDateTime>");
   for (const model::entity_ptr & e : (* r.pProject->getListOfAllEntities()))
   { EXPECT_FALSE(e->getName().startsWith("Measurement2")) << e->getName().toStdString(); }
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportPartitions, ::testing::Values(db_import::dialect_postgresql));

} // namespace
