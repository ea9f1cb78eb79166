#include <gtest/gtest.h>

#include <QMap>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "db_environment.h"
#include "db_import/model_mapper.h"
#include "db_server.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_storage.h"
#include "test_support.h"

using db_import::enum_dialect;
using import_test::propertyOf;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// A table added, a column added, a type changed, a column dropped; as each database writes it.
QString changeScript(enum_dialect eDialect)
{
   if (eDialect == db_import::dialect_postgresql)
   {
      return "ALTER TABLE product ADD COLUMN weight DOUBLE PRECISION;\n"
             "CREATE TABLE supplier (id BIGINT PRIMARY KEY, name VARCHAR(40));\n"
             "ALTER TABLE customer DROP COLUMN created_at;\n"
             "ALTER TABLE customer ALTER COLUMN vip DROP DEFAULT;\n"
             "ALTER TABLE customer ALTER COLUMN vip TYPE INTEGER USING vip::integer;\n";
   }
   if (eDialect == db_import::dialect_mariadb)
   {
      return "ALTER TABLE product ADD COLUMN weight DOUBLE;\n"
             "CREATE TABLE supplier (id BIGINT PRIMARY KEY, name VARCHAR(40));\n"
             "ALTER TABLE customer DROP COLUMN created_at;\n"
             "ALTER TABLE customer MODIFY vip INT NOT NULL DEFAULT 0;\n";
   }
   // SQLite changes a column's type by building the table anew.
   return "ALTER TABLE product ADD COLUMN weight REAL;\n"
          "CREATE TABLE supplier (id BIGINT PRIMARY KEY, name VARCHAR(40));\n"
          "CREATE TABLE customer_new (id BIGINT PRIMARY KEY, name VARCHAR(80) NOT NULL, email VARCHAR(120) UNIQUE, vip INT NOT NULL DEFAULT 0);\n"
          "INSERT INTO customer_new (id, name, email, vip) SELECT id, name, email, vip FROM customer;\n"
          "DROP TABLE customer;\n"
          "ALTER TABLE customer_new RENAME TO customer;\n";
}

// Every entity and property id by what it stands for in the database.
QMap<QString, long> idsOf(const model::project & project)
{
   QMap<QString, long> map;
   for (const model::entity_ptr & e : (* project.getListOfAllEntities()))
   {
      const QString sTable = db_import::model_mapper::tableOf(* e);
      map.insert(sTable, e->getId());
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         const QString sColumn = (p->getRelation() ? (p->getRelation()->getForeignKey() + "/" + QString::number(p->getRelation()->getType()))
                                                   : (p->getColumnName().isEmpty() ? p->getName() : p->getColumnName()));
         map.insert(sTable + "." + sColumn, p->getId());
      }
   }
   return map;
}

// What a user does to an imported project in the desktop host.
void editLikeAUser(const model::project_ptr & pProject)
{
   const model::entity_ptr pCustomer = pProject->getEntityByKey("Customer");
   pCustomer->setName("Client");
   for (const model::entity_ptr & e : (* pProject->getListOfAllEntities()))
   {
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (p->getRelation() && (p->getRelation()->getTargetKey() == "Customer")) { p->getRelation()->setTargetKey("Client"); }
      }
   }
   const model::property_ptr pTitle = propertyOf(pProject, "Product", "title");
   pTitle->setName("label");
   pTitle->setColumnName("title");
   pProject->getEntityByKey("Product")->setDescription("Things we sell");
   pProject->getEntityByKey("Order")->setMetaData("audit", "true");
   pProject->getEntityByKey("Order")->setTriggerBeforeInsert(true);
   propertyOf(pProject, "Order", "customer")->setName("buyer");
   propertyOf(pProject, "Order", "number")->setAccessibility(model::property::access_private);
   auto pDisplay = std::make_shared<model::property>();
   pDisplay->setId(1000);
   pDisplay->setName("display");
   pDisplay->setTransient(true);
   auto pType = std::make_shared<model::property_type>();
   pType->setId(1000);
   pType->setPrimitiveType("QString");
   pDisplay->setType(pType);
   pProject->getEntityByKey("Order")->addProperty(pDisplay);
   pProject->invalidateIndex();
   pProject->resolveLinks();
}

class ImportRefresh : public ::testing::TestWithParam<enum_dialect>
{
protected:
   QTemporaryDir m_dir;
   QString m_sUrl;
   QString m_sProject;

   test_support::cli_result importDb(const QStringList & lstExtra = QStringList())
   {
      test_support::cli_options options;
      options.env.insert("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
      return test_support::runTavrel(QStringList { "import-db", m_sUrl, m_sProject } + lstExtra, options);
   }

   model::project_ptr load()
   {
      model::project_ptr p;
      const zy::ZyBool ok = storage::project_storage::loadProject(m_sProject, p);
      EXPECT_TRUE(bool(ok)) << ok.getDesc().toStdString();
      return p;
   }

   void SetUp() override
   {
      QString sError;
      ASSERT_TRUE(import_test::prepareSource(GetParam(), "shop", m_dir.path(), m_sUrl, sError)) << sError.toStdString();
      m_sProject = m_dir.path() + "/shop.tavrel";
      const test_support::cli_result r = importDb();
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      const model::project_ptr p = load();
      ASSERT_TRUE(p);
      editLikeAUser(p);
      const zy::ZyBool ok = storage::project_storage::saveProject(* p, m_sProject);
      ASSERT_TRUE(bool(ok)) << ok.getDesc().toStdString();
      ASSERT_TRUE(test_support::execOnProject(m_sProject, "INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) VALUES ('{guid}', 'style', ?, 10)", "kept"));
      ASSERT_TRUE(import_test::execOnSource(GetParam(), m_sUrl, changeScript(GetParam()), sError)) << sError.toStdString();
   }
};

TEST_P(ImportRefresh, KeepsEveryEditAndListsExactlyTheDatabaseChanges)
{
   const QMap<QString, long> mapBefore = idsOf(* load());
   const test_support::cli_result r = importDb();
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QStringList lstExpected { "~ Client.vip: bool -> int", "- column customer.created_at (marked obsolete)",
                                   "+ property Product.weight (column weight)", "+ entity Supplier (table supplier)" };
   QStringList lstOut = r.out.split('\n', Qt::SkipEmptyParts);
   ASSERT_FALSE(lstOut.isEmpty());
   EXPECT_TRUE(lstOut.takeLast().startsWith("Imported 7 entities")) << r.out.toStdString();
   EXPECT_EQ(lstOut, lstExpected);

   const model::project_ptr p = load();
   ASSERT_TRUE(p);
   EXPECT_TRUE(p->getEntityByKey("Client"));
   EXPECT_FALSE(p->getEntityByKey("Customer"));
   EXPECT_EQ(propertyOf(p, "Product", "label")->getColumnName(), "title");
   EXPECT_EQ(p->getEntityByKey("Product")->getDescription(), "Things we sell");
   EXPECT_EQ(p->getEntityByKey("Order")->getMetaData("audit").toString(), "true");
   EXPECT_TRUE(p->getEntityByKey("Order")->isTriggerBeforeInsert());
   EXPECT_EQ(propertyOf(p, "Order", "buyer")->getRelation()->getTargetKey(), "Client");
   EXPECT_EQ(propertyOf(p, "Order", "number")->getAccessibility(), int(model::property::access_private));
   ASSERT_TRUE(propertyOf(p, "Order", "display"));
   EXPECT_TRUE(propertyOf(p, "Order", "display")->isTransient());
   EXPECT_FALSE(propertyOf(p, "Order", "display")->isObsolete());
   EXPECT_EQ(propertyOf(p, "Client", "vip")->getType()->getPrimitiveType(), "int");
   EXPECT_TRUE(propertyOf(p, "Client", "created_at")->isObsolete());
   EXPECT_EQ(propertyOf(p, "Product", "weight")->getType()->getPrimitiveType(), "double");
   EXPECT_TRUE(p->getEntityByKey("Supplier"));
   EXPECT_TRUE(p->checkSchema().isEmpty());
   QSqlDatabase db;
   ASSERT_TRUE(bool(storage::project_storage::openDatabase(m_sProject, db)));
   {
      QSqlQuery q(db);
      ASSERT_TRUE(q.exec("SELECT param_value FROM t_plugin_params WHERE param_key = 'style'"));
      ASSERT_TRUE(q.next());
      EXPECT_EQ(q.value(0).toString(), "kept");
   }
   storage::project_storage::closeDatabase(db);

   // Kept items keep their ids; new ones come after the highest.
   const QMap<QString, long> mapAfter = idsOf(* p);
   long lMaxBefore = 0;
   for (auto it = mapBefore.cbegin(); it != mapBefore.cend(); ++it)
   {
      EXPECT_EQ(mapAfter.value(it.key(), -1), it.value()) << it.key().toStdString();
      if (it.key().contains('.')) { lMaxBefore = qMax(lMaxBefore, it.value()); }
   }
   EXPECT_GT(propertyOf(p, "Product", "weight")->getId(), lMaxBefore);
}

TEST_P(ImportRefresh, AnUnchangedDatabaseListsNothingAndPruneRemovesWhatIsObsolete)
{
   ASSERT_EQ(importDb().code, 0);
   test_support::cli_result r = importDb();
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(r.out.split('\n', Qt::SkipEmptyParts).size(), 1) << r.out.toStdString();
   r = importDb({ "--prune" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(r.out.split('\n', Qt::SkipEmptyParts).first(), "- column customer.created_at (removed)");
   const model::project_ptr p = load();
   EXPECT_FALSE(propertyOf(p, "Client", "created_at"));
   EXPECT_TRUE(propertyOf(p, "Order", "display"));
}

TEST_P(ImportRefresh, DryRunPrintsTheChangesAndWritesNothing)
{
   const QStringList lstBefore = test_support::treeState(m_dir.path(), { "shop.db" });
   const test_support::cli_result r = importDb({ "--dry-run" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("+ entity Supplier (table supplier)")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("nothing written")) << r.out.toStdString();
   EXPECT_EQ(test_support::treeState(m_dir.path(), { "shop.db" }), lstBefore);
}

INSTANTIATE_TEST_SUITE_P(Sqlite, ImportRefresh, ::testing::Values(db_import::dialect_sqlite));
INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportRefresh, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportRefresh, ::testing::Values(db_import::dialect_mariadb));

} // namespace
