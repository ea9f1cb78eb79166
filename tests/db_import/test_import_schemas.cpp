#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "db_environment.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_storage.h"

using db_import::enum_dialect;
using import_test::propertyOf;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// The test schemas, each written in the dialect of the instantiation and imported from there.
class ImportSchemas : public ::testing::TestWithParam<enum_dialect>
{
protected:
   QTemporaryDir m_dir;

   import_test::import_run import(const QString & sSchema, const db_import::import_options & options = db_import::import_options())
   {
      QString sUrl, sError;
      EXPECT_TRUE(import_test::prepareSource(GetParam(), sSchema, m_dir.path(), sUrl, sError)) << sError.toStdString();
      import_test::import_run r = import_test::importSource(sUrl, options);
      EXPECT_TRUE(r.bOk) << r.sError.toStdString();
      return r;
   }
};

QString typeOf(const model::property_ptr & p) { return ((p && p->getType()) ? p->getType()->getPrimitiveType() : QString("<none>")); }

void expectRelation(const model::property_ptr & p, int iKind, const QString & sTarget, const QString & sForeignKey)
{
   ASSERT_TRUE(p && p->getRelation());
   EXPECT_EQ(p->getRelation()->getType(), iKind) << p->getName().toStdString();
   EXPECT_EQ(p->getRelation()->getTargetKey(), sTarget) << p->getName().toStdString();
   EXPECT_EQ(p->getRelation()->getForeignKey(), sForeignKey) << p->getName().toStdString();
}

TEST_P(ImportSchemas, ShopTablesBecomeEntitiesAndTheViewIsReadOnly)
{
   const import_test::import_run r = import("shop");
   ASSERT_TRUE(r.bOk);
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "Category", "Customer", "Order", "OrderItem", "OrderTotal", "Product" }));
   EXPECT_EQ(r.pProject->getEntityByKey("Order")->getTableName(), "order");
   EXPECT_TRUE(r.pProject->getEntityByKey("OrderTotal")->isReadOnly());
   EXPECT_FALSE(r.pProject->getEntityByKey("Order")->isReadOnly());
   EXPECT_TRUE(r.pProject->checkSchema().isEmpty());
}

TEST_P(ImportSchemas, ShopColumnsKeepTypesKeysNullabilityDefaultsAndIndexes)
{
   const import_test::import_run r = import("shop");
   ASSERT_TRUE(r.bOk);
   const model::property_ptr pId = propertyOf(r.pProject, "Customer", "id");
   ASSERT_TRUE(pId);
   EXPECT_TRUE(pId->isPrimaryKey());
   EXPECT_EQ(typeOf(pId), "qlonglong");
   const model::property_ptr pName = propertyOf(r.pProject, "Customer", "name");
   EXPECT_EQ(typeOf(pName), "QString");
   EXPECT_FALSE(pName->getAllowNull());
   EXPECT_EQ(pName->getMaxLength().toInt(), 80);
   EXPECT_TRUE(propertyOf(r.pProject, "Customer", "email")->getUnique());
   EXPECT_TRUE(propertyOf(r.pProject, "Customer", "email")->getAllowNull());
   EXPECT_EQ(propertyOf(r.pProject, "Customer", "vip")->getType()->getDefaultValue(), "false");
   EXPECT_EQ(typeOf(propertyOf(r.pProject, "Customer", "created_at")), "QDateTime");
   EXPECT_TRUE(propertyOf(r.pProject, "Customer", "created_at")->getType()->getDefaultValue().isEmpty());
   EXPECT_EQ(propertyOf(r.pProject, "Category", "position")->getType()->getDefaultValue(), "100");
   EXPECT_TRUE(propertyOf(r.pProject, "Product", "sku")->getUnique());
   EXPECT_EQ(propertyOf(r.pProject, "Product", "sku")->getMaxLength().toInt(), 12);
   EXPECT_TRUE(propertyOf(r.pProject, "Product", "title")->isIndex());
   EXPECT_FALSE(propertyOf(r.pProject, "Product", "title")->getUnique());
   EXPECT_EQ(typeOf(propertyOf(r.pProject, "Product", "price")), "double");
   EXPECT_EQ(propertyOf(r.pProject, "Product", "note")->getType()->getDefaultValue(), "none yet");
   EXPECT_EQ(typeOf(propertyOf(r.pProject, "OrderItem", "unit_price")), "double");
}

TEST_P(ImportSchemas, ShopForeignKeysBecomeRelationsBothWays)
{
   const import_test::import_run r = import("shop");
   ASSERT_TRUE(r.bOk);
   const model::property_ptr pCustomer = propertyOf(r.pProject, "Order", "customer");
   expectRelation(pCustomer, model::relationship::many_to_one, "Customer", "customer_id");
   EXPECT_FALSE(pCustomer->getAllowNull());
   EXPECT_FALSE(propertyOf(r.pProject, "Order", "customer_id"));
   expectRelation(propertyOf(r.pProject, "Customer", "orders"), model::relationship::one_to_many, "Order", "customer_id");
   expectRelation(propertyOf(r.pProject, "OrderItem", "order"), model::relationship::many_to_one, "Order", "order_id");
   expectRelation(propertyOf(r.pProject, "OrderItem", "product"), model::relationship::many_to_one, "Product", "product_id");
   EXPECT_TRUE(propertyOf(r.pProject, "OrderItem", "product")->getAllowNull());
   expectRelation(propertyOf(r.pProject, "Order", "order_items"), model::relationship::one_to_many, "OrderItem", "order_id");
}

TEST_P(ImportSchemas, ShopJoinTableBecomesManyToManyOnBothSides)
{
   const import_test::import_run r = import("shop");
   ASSERT_TRUE(r.bOk);
   EXPECT_FALSE(r.pProject->getEntityByKey("CategoryProduct"));
   const model::property_ptr pProducts = propertyOf(r.pProject, "Category", "products");
   expectRelation(pProducts, model::relationship::many_to_many, "Product", "category_id");
   EXPECT_EQ(pProducts->getRelation()->getExtraTable(), "category_product");
   EXPECT_EQ(pProducts->getRelation()->getForeignKeyOwner(), "product_id");
   const model::property_ptr pCategories = propertyOf(r.pProject, "Product", "categories");
   expectRelation(pCategories, model::relationship::many_to_many, "Category", "product_id");
   EXPECT_EQ(pCategories->getRelation()->getForeignKeyOwner(), "category_id");
}

TEST_P(ImportSchemas, EveryTypeMapsByTheTypeTable)
{
   const import_test::import_run r = import("types");
   ASSERT_TRUE(r.bOk);
   const QString sId = ((GetParam() == db_import::dialect_sqlite) ? "long" : "int");
   const QList<QPair<QString, QString> > lstExpected {
      { "id", sId }, { "c_small", "int" }, { "c_int", "int" }, { "c_big", "qlonglong" }, { "c_bool", "bool" }, { "c_real", "double" },
      { "c_double", "double" }, { "c_numeric", "double" }, { "c_text", "QString" }, { "c_varchar", "QString" }, { "c_char", "QString" },
      { "c_blob", "QByteArray" }, { "c_date", "QDate" }, { "c_time", "QTime" }, { "c_timestamp", "QDateTime" }, { "c_uuid", "QUuid" },
      { "c_json", "QString" }, { "c_other", "QString" } };
   for (const auto & e : lstExpected) { EXPECT_EQ(typeOf(propertyOf(r.pProject, "AllTypes", e.first)), e.second) << e.first.toStdString(); }
   EXPECT_EQ(propertyOf(r.pProject, "AllTypes", "c_varchar")->getMaxLength().toInt(), 30);
   EXPECT_EQ(propertyOf(r.pProject, "AllTypes", "c_char")->getMaxLength().toInt(), 3);
   EXPECT_FALSE(propertyOf(r.pProject, "AllTypes", "c_text")->getMaxLength().isValid());
   EXPECT_EQ(propertyOf(r.pProject, "AllTypes", "c_varchar")->getType()->getDefaultValue(), "it's");
   EXPECT_TRUE(import_test::hasWarning(r.lstWarnings, { "all_types.c_other", "mapped to QString" })) << r.lstWarnings.join("\n").toStdString();
   EXPECT_EQ(r.lstWarnings.size(), 1) << r.lstWarnings.join("\n").toStdString();
}

TEST_P(ImportSchemas, NumericAsStringWhenAsked)
{
   db_import::import_options options;
   options.bDecimalAsString = true;
   const import_test::import_run r = import("types", options);
   ASSERT_TRUE(r.bOk);
   EXPECT_EQ(typeOf(propertyOf(r.pProject, "AllTypes", "c_numeric")), "QString");
   EXPECT_EQ(typeOf(propertyOf(r.pProject, "AllTypes", "c_double")), "double");
}

TEST_P(ImportSchemas, OddNamesBecomeIdentifiersKeepingTheOriginal)
{
   const import_test::import_run r = import("odd");
   ASSERT_TRUE(r.bOk);
   EXPECT_EQ(r.pProject->getEntityByKey("Class")->getTableName(), "class");
   const QList<QPair<QString, QString> > lstColumns { { "namespace_", "namespace" }, { "c2fa", "2fa" }, { "unit_price", "unit price" }, { "cafe", QString::fromUtf8("café") } };
   for (const auto & e : lstColumns)
   {
      const model::property_ptr p = propertyOf(r.pProject, "Class", e.first);
      ASSERT_TRUE(p) << e.first.toStdString();
      EXPECT_EQ(p->getColumnName(), e.second);
   }
   EXPECT_EQ(r.pProject->getEntityByKey("UserGroup")->getTableName(), "user group");
   EXPECT_EQ(r.pProject->getEntityByKey("UserGroup2")->getTableName(), "user_group");
   EXPECT_TRUE(import_test::hasWarning(r.lstWarnings, { "user_group", "UserGroup2" })) << r.lstWarnings.join("\n").toStdString();
   EXPECT_TRUE(r.pProject->checkSchema().isEmpty());
}

TEST_P(ImportSchemas, SelfAndCyclicForeignKeys)
{
   const import_test::import_run r = import("odd");
   ASSERT_TRUE(r.bOk);
   expectRelation(propertyOf(r.pProject, "Employee", "manager"), model::relationship::many_to_one, "Employee", "manager_id");
   expectRelation(propertyOf(r.pProject, "Employee", "mentor"), model::relationship::many_to_one, "Employee", "mentor_id");
   expectRelation(propertyOf(r.pProject, "Employee", "employee_manager"), model::relationship::one_to_many, "Employee", "manager_id");
   expectRelation(propertyOf(r.pProject, "Employee", "employee_mentor"), model::relationship::one_to_many, "Employee", "mentor_id");
   expectRelation(propertyOf(r.pProject, "Team", "lead"), model::relationship::many_to_one, "Person", "lead_id");
   expectRelation(propertyOf(r.pProject, "Person", "team"), model::relationship::many_to_one, "Team", "team_id");
   expectRelation(propertyOf(r.pProject, "Person", "teams"), model::relationship::one_to_many, "Team", "lead_id");
   expectRelation(propertyOf(r.pProject, "Team", "persons"), model::relationship::one_to_many, "Person", "team_id");
}

TEST_P(ImportSchemas, CompositeKeysBecomeOneKeyAndKeylessTablesGetOne)
{
   const import_test::import_run r = import("odd");
   ASSERT_TRUE(r.bOk);
   const model::property_ptr pKey = propertyOf(r.pProject, "OrderLine", "id");
   ASSERT_TRUE(pKey);
   EXPECT_TRUE(pKey->isPrimaryKey());
   EXPECT_EQ(pKey->getColumnName(), "order_no|line_no");
   EXPECT_TRUE(typeOf(pKey).startsWith("std::pair<"));
   for (const QString & s : { "order_no", "line_no" })
   {
      EXPECT_FALSE(propertyOf(r.pProject, "OrderLine", s)->isPrimaryKey());
      EXPECT_FALSE(propertyOf(r.pProject, "Shipment", s)->hasRelationship());
   }
   EXPECT_FALSE(import_test::hasWarning(r.lstWarnings, { "order_line", "composite primary key" }));
   EXPECT_TRUE(import_test::hasWarning(r.lstWarnings, { "shipment", "several columns" }));
   EXPECT_TRUE(r.pProject->getEntityByKey("LogEntry")->getPropertyId(false));
   EXPECT_TRUE(r.pProject->checkSchema().isEmpty());
}

// The same schema gives the same model from every database (the view's computed column aside,
// whose type each database derives its own way; the type table has its own test), so the
// compile check of the SQLite import holds for all three. What each database keeps for the SQL
// export in its own spelling (own types, numbering, defaults) is left out of the comparison.
class ImportSameModel : public ImportSchemas
{
protected:
   static void leaveOutSqlForms(model::project & project)
   {
      for (const model::entity_ptr & pEntity : * project.getListOfAllEntities())
      {
         for (const model::property_ptr & p : pEntity->getOwnProperties())
         {
            if (! p->getMetaData("TAVREL_SQL_DIALECT").toString().isEmpty()) { p->setForceSqlType(QString()); }
            QMap<QString, QString> map = p->getAllMetaData();
            map.removeIf([](const auto & it) { return it.key().startsWith("TAVREL_SQL_") || (it.key() == "TAVREL_AUTO_INCREMENT"); });
            p->setAllMetaData(map);
         }
      }
   }
};

TEST_P(ImportSameModel, AsFromSqlite)
{
   db_import::import_options options;
   options.lstExclude = QStringList { "order_total" };
   for (const QString & sSchema : { "shop", "odd" })
   {
      QString sUrl, sError;
      ASSERT_TRUE(import_test::prepareSource(db_import::dialect_sqlite, sSchema, m_dir.path(), sUrl, sError)) << sError.toStdString();
      const import_test::import_run fromSqlite = import_test::importSource(sUrl, options);
      const import_test::import_run r = import(sSchema, options);
      ASSERT_TRUE(r.bOk && fromSqlite.bOk);
      leaveOutSqlForms(* r.pProject);
      leaveOutSqlForms(* fromSqlite.pProject);
      EXPECT_EQ(storage::project_storage::toJson(* r.pProject).toStdString(), storage::project_storage::toJson(* fromSqlite.pProject).toStdString()) << sSchema.toStdString();
   }
}

INSTANTIATE_TEST_SUITE_P(Sqlite, ImportSchemas, ::testing::Values(db_import::dialect_sqlite));
INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportSchemas, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportSchemas, ::testing::Values(db_import::dialect_mariadb));
INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportSameModel, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportSameModel, ::testing::Values(db_import::dialect_mariadb));

// Schemas (databases for MariaDB) other than the default one become namespaces.
class ImportSeveralSchemas : public ImportSchemas { };

TEST_P(ImportSeveralSchemas, OtherSchemasBecomeNamespaces)
{
   QString sUrl, sError;
   ASSERT_TRUE(import_test::prepareSource(GetParam(), "schemas", m_dir.path(), sUrl, sError)) << sError.toStdString();
   import_test::import_run r = import_test::importSource(sUrl + "?schema=sales,stock");
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   const bool bPostgres = (GetParam() == db_import::dialect_postgresql);
   const QString sInvoice = (bPostgres ? "sales::Invoice" : "Invoice");
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ sInvoice, "stock::Item" }));
   EXPECT_EQ(r.pProject->getEntityByKey("stock::Item")->getTableName(), "stock.item");
   expectRelation(propertyOf(r.pProject, sInvoice, "item"), model::relationship::many_to_one, "stock::Item", "item_id");
   expectRelation(propertyOf(r.pProject, "stock::Item", "invoices"), model::relationship::one_to_many, sInvoice, "item_id");

   // Without a schema list PostgreSQL reads every schema of the user.
   r = import_test::importSource(sUrl);
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   if (bPostgres) { EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "Note", "sales::Invoice", "stock::Item" })); }
   else { EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "Invoice" })); }
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportSeveralSchemas, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportSeveralSchemas, ::testing::Values(db_import::dialect_mariadb));

} // namespace
