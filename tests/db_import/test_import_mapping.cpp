#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "db_import/catalog_reader.h"
#include "db_import/ddl_loader.h"
#include "db_import/name_rules.h"
#include "db_import/type_mapping.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

using db_import::name_rules;
using import_test::propertyOf;

namespace {

const char * const k_sShopDdl =
   "CREATE TABLE customer (id BIGINT PRIMARY KEY, full_name VARCHAR(40) NOT NULL, nick_name TEXT);\n"
   "CREATE TABLE purchase_order (id BIGINT PRIMARY KEY, customer_id BIGINT REFERENCES customer (id), unit_price DOUBLE);\n"
   "CREATE TABLE audit_log (id BIGINT PRIMARY KEY, message TEXT);\n";

class ImportMapping : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;

   import_test::import_run import(const db_import::import_options & options, const QString & sDdl = QString(k_sShopDdl))
   {
      import_test::import_run r = import_test::importDdlText(m_dir.path(), sDdl, options);
      EXPECT_TRUE(r.bOk) << r.sError.toStdString();
      return r;
   }
};

TEST(ImportNames, ClassAndPropertyRules)
{
   EXPECT_EQ(name_rules::className("order_item", name_rules::style_pascal), "OrderItem");
   EXPECT_EQ(name_rules::className("order_item", name_rules::style_keep), "order_item");
   EXPECT_EQ(name_rules::className("class", name_rules::style_keep), "class_");
   EXPECT_EQ(name_rules::className("class", name_rules::style_pascal), "Class");
   EXPECT_EQ(name_rules::className("2fa codes", name_rules::style_pascal), "T2faCodes");
   EXPECT_EQ(name_rules::className("***", name_rules::style_pascal), "Table");
   EXPECT_EQ(name_rules::propertyName("unit_price", name_rules::style_camel), "unitPrice");
   EXPECT_EQ(name_rules::propertyName("unit price", name_rules::style_keep), "unit_price");
   EXPECT_EQ(name_rules::propertyName("__weird__", name_rules::style_keep), "__weird__");
   EXPECT_EQ(name_rules::propertyName(QString::fromUtf8("Größe"), name_rules::style_keep), "Gro_e");
   EXPECT_EQ(name_rules::propertyName("9lives", name_rules::style_keep), "c9lives");
   EXPECT_EQ(name_rules::propertyName("delete", name_rules::style_camel), "delete_");
   EXPECT_EQ(name_rules::relationBase("customer_id"), "customer");
   EXPECT_EQ(name_rules::relationBase("authorId"), "author");
   EXPECT_EQ(name_rules::relationBase("parent"), "parent");
   QSet<QString> setTaken { "name" };
   EXPECT_EQ(name_rules::unique("name", setTaken), "name2");
   EXPECT_EQ(name_rules::unique("name", setTaken), "name3");
}

TEST(ImportTypes, DefaultsKeptOnlyAsLiteralsOfTheType)
{
   using db_import::type_mapping;
   EXPECT_EQ(type_mapping::defaultValue("'abc'::character varying", "QString"), "abc");
   EXPECT_EQ(type_mapping::defaultValue("'it''s'", "QString"), "it's");
   EXPECT_EQ(type_mapping::defaultValue("(-1)", "int"), "-1");
   EXPECT_EQ(type_mapping::defaultValue("'7'::integer", "qlonglong"), "7");
   EXPECT_EQ(type_mapping::defaultValue("2.5", "double"), "2.5");
   EXPECT_EQ(type_mapping::defaultValue("0.00", "double"), "0");
   EXPECT_EQ(type_mapping::defaultValue("19.990", "double"), "19.99");
   EXPECT_EQ(type_mapping::defaultValue("true", "bool"), "true");
   EXPECT_EQ(type_mapping::defaultValue("0", "bool"), "false");
   EXPECT_TRUE(type_mapping::defaultValue("nextval('t_id_seq'::regclass)", "int").isNull());
   EXPECT_TRUE(type_mapping::defaultValue("CURRENT_TIMESTAMP", "QDateTime").isNull());
   EXPECT_TRUE(type_mapping::defaultValue("now()", "QString").isNull());
   EXPECT_TRUE(type_mapping::defaultValue("'x'", "int").isNull());
}

// A SQLite column declared with a name the type table does not list is read by SQLite's own rule
// (the words in the name), as SQLite stores its values; only names of no such word stay unknown.
TEST(ImportTypes, SqliteTypesOutsideTheTableFollowSqlitesOwnRule)
{
   using db_import::type_mapping;
   auto mapped = [](const QString & sDeclared)
   {
      db_import::db_column c;
      db_import::catalog_reader::setDeclaredType(c, sDeclared);
      const type_mapping::result r = type_mapping::map(db_import::dialect_sqlite, c, db_import::import_options());
      return (r.bKnown ? r.sType : ("unknown " + r.sType)).toStdString();
   };
   EXPECT_EQ(mapped("BIGINT UNSIGNED"), type_mapping::map(db_import::dialect_sqlite, [] { db_import::db_column c; c.sType = "bigint"; return c; }(),
                                                          db_import::import_options()).sType.toStdString());
   EXPECT_EQ(mapped("INT UNSIGNED"), mapped("integer"));
   EXPECT_EQ(mapped("MEDIUMINT(8) UNSIGNED"), mapped("integer"));
   EXPECT_EQ(mapped("NVARCHAR2(30)"), "QString");
   EXPECT_EQ(mapped("LONGTEXT"), "QString");
   EXPECT_EQ(mapped("MEDIUMBLOB"), "QByteArray");
   EXPECT_EQ(mapped("FLOAT8"), "double");
   EXPECT_EQ(mapped("DOUBLE UNSIGNED"), "double");
   EXPECT_EQ(mapped("MONEY"), "unknown QString");
   EXPECT_EQ(mapped("XML"), "unknown QString");
}

TEST(ImportDdl, StatementsSplitOutsideQuotesCommentsAndTriggers)
{
   const QString sScript = "-- head; comment\nCREATE TABLE a (x TEXT DEFAULT 'a;b');\n\n/* block; */ CREATE TABLE \"b;c\" (y INT);\n"
                           "CREATE TRIGGER t AFTER INSERT ON a BEGIN INSERT INTO a VALUES ('1'); DELETE FROM a; END;\nCREATE TABLE d (z INT)";
   const QList<db_import::ddl_loader::statement> lst = db_import::ddl_loader::split(sScript);
   ASSERT_EQ(lst.size(), 4);
   EXPECT_EQ(lst.at(0).iLine, 2);
   EXPECT_TRUE(lst.at(0).sText.startsWith("CREATE TABLE a"));
   EXPECT_TRUE(lst.at(0).sText.endsWith("DEFAULT 'a;b')"));
   EXPECT_EQ(lst.at(1).iLine, 4);
   EXPECT_TRUE(lst.at(1).sText.startsWith("CREATE TABLE \"b;c\""));
   EXPECT_TRUE(lst.at(2).sText.endsWith("END"));
   EXPECT_EQ(lst.at(2).iLine, 5);
   EXPECT_EQ(lst.at(3).sText, "CREATE TABLE d (z INT)");
}

TEST_F(ImportMapping, ClassNamesKeptAndPropertyNamesInCamelCase)
{
   db_import::import_options options;
   options.eClassNames = db_import::import_options::class_names_keep;
   options.ePropertyNames = db_import::import_options::property_names_camel;
   const import_test::import_run r = import(options);
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "audit_log", "customer", "purchase_order" }));
   EXPECT_TRUE(r.pProject->getEntityByKey("customer")->getTableName().isEmpty());
   const model::property_ptr p = propertyOf(r.pProject, "customer", "fullName");
   ASSERT_TRUE(p);
   EXPECT_EQ(p->getColumnName(), "full_name");
   EXPECT_TRUE(propertyOf(r.pProject, "purchase_order", "unitPrice"));
   EXPECT_TRUE(propertyOf(r.pProject, "customer", "purchaseOrders"));
}

TEST_F(ImportMapping, FixedNamespaceAndOptionalNullables)
{
   db_import::import_options options;
   options.sNamespace = "shop::db";
   options.bFixedNamespace = true;
   options.bNullableOptional = true;
   const import_test::import_run r = import(options);
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "shop::db::AuditLog", "shop::db::Customer", "shop::db::PurchaseOrder" }));
   EXPECT_EQ(propertyOf(r.pProject, "shop::db::Customer", "nick_name")->getType()->getDecoration(), int(model::property_type::decoration_optional));
   EXPECT_EQ(propertyOf(r.pProject, "shop::db::Customer", "full_name")->getType()->getDecoration(), int(model::property_type::decoration_none));
   EXPECT_EQ(propertyOf(r.pProject, "shop::db::Customer", "id")->getType()->getDecoration(), int(model::property_type::decoration_none));
   EXPECT_EQ(propertyOf(r.pProject, "shop::db::PurchaseOrder", "customer")->getRelation()->getTargetKey(), "shop::db::Customer");
}

TEST_F(ImportMapping, NoInverseLeavesTheTargetAlone)
{
   db_import::import_options options;
   options.bInverse = false;
   const import_test::import_run r = import(options);
   EXPECT_TRUE(propertyOf(r.pProject, "PurchaseOrder", "customer"));
   EXPECT_EQ(r.pProject->getEntityByKey("Customer")->getOwnProperties().size(), 3);
}

TEST_F(ImportMapping, TablesAndExcludeFilters)
{
   db_import::import_options options;
   options.lstTables = QStringList { "*customer*", "purchase_*" };
   options.lstExclude = QStringList { "purchase_order" };
   import_test::import_run r = import(options);
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "Customer" }));
   options.lstTables = QStringList { "nothing*" };
   options.lstExclude.clear();
   r = import_test::importDdlText(m_dir.path(), k_sShopDdl, options);
   EXPECT_FALSE(r.bOk);
   EXPECT_TRUE(r.sError.contains("no table matches")) << r.sError.toStdString();
}

TEST_F(ImportMapping, AForeignKeyToAFilteredTableStaysAPlainColumn)
{
   db_import::import_options options;
   options.lstExclude = QStringList { "customer" };
   const import_test::import_run r = import(options);
   const model::property_ptr p = propertyOf(r.pProject, "PurchaseOrder", "customer_id");
   ASSERT_TRUE(p);
   EXPECT_FALSE(p->hasRelationship());
   EXPECT_EQ(p->getType()->getPrimitiveType(), "qlonglong");
}

// The merge rules that the database refresh tests do not reach.
class ImportMerge : public ImportMapping
{
protected:
   import_test::import_run refresh(const model::project_ptr & pProject, const QString & sDdl, const db_import::import_options & options = db_import::import_options())
   {
      import_test::import_run r = import_test::importDdlText(m_dir.path(), sDdl, options, pProject);
      EXPECT_TRUE(r.bOk) << r.sError.toStdString();
      return r;
   }
};

const char * const k_sWithoutCustomer =
   "CREATE TABLE purchase_order (id BIGINT PRIMARY KEY, unit_price DOUBLE);\n"
   "CREATE TABLE audit_log (id BIGINT PRIMARY KEY, message TEXT);\n";

TEST_F(ImportMerge, ATableThatDisappearedIsMarkedObsolete)
{
   const model::project_ptr p = import(db_import::import_options()).pProject;
   const import_test::import_run r = refresh(p, k_sWithoutCustomer);
   EXPECT_EQ(r.lstSummary, QStringList({ "- column purchase_order.customer_id (marked obsolete)", "- table customer (marked obsolete)" }));
   for (const model::property_ptr & pProperty : p->getEntityByKey("Customer")->getOwnProperties()) { EXPECT_TRUE(pProperty->isObsolete()); }
   EXPECT_TRUE(propertyOf(p, "PurchaseOrder", "customer")->isObsolete());
   // Already obsolete: not listed again.
   EXPECT_TRUE(refresh(p, k_sWithoutCustomer).lstSummary.isEmpty());
}

TEST_F(ImportMerge, PruneRemovesTheTableAndTheRelationsToIt)
{
   const model::project_ptr p = import(db_import::import_options()).pProject;
   db_import::import_options options;
   options.bPrune = true;
   const import_test::import_run r = refresh(p, k_sWithoutCustomer, options);
   EXPECT_EQ(r.lstSummary, QStringList({ "- column purchase_order.customer_id (removed)", "- table customer (removed)" }));
   EXPECT_FALSE(p->getEntityByKey("Customer"));
   EXPECT_FALSE(propertyOf(p, "PurchaseOrder", "customer"));
   EXPECT_TRUE(p->checkSchema().isEmpty());
}

TEST_F(ImportMerge, EnumerationTypedPropertiesKeepTheirType)
{
   const model::project_ptr p = import(db_import::import_options()).pProject;
   auto pEnum = std::make_shared<model::enumeration>();
   pEnum->setName("Nick");
   p->addEnumeration(pEnum);
   propertyOf(p, "Customer", "nick_name")->setEnumerationKey("Nick");
   p->resolveLinks();
   const QString sDdl = QString(k_sShopDdl).replace("nick_name TEXT", "nick_name INT");
   const import_test::import_run r = refresh(p, sDdl);
   EXPECT_TRUE(r.lstSummary.isEmpty()) << r.lstSummary.join("\n").toStdString();
   EXPECT_EQ(propertyOf(p, "Customer", "nick_name")->getEnumerationKey(), "Nick");
   EXPECT_EQ(propertyOf(p, "Customer", "nick_name")->getType()->getPrimitiveType(), "QString");
}

TEST_F(ImportMerge, ANewTableWhoseClassNameIsTakenGetsANumber)
{
   const model::project_ptr p = import(db_import::import_options()).pProject;
   p->getEntityByKey("AuditLog")->setName("Supplier");
   p->invalidateIndex();
   const import_test::import_run r = refresh(p, QString(k_sShopDdl) + "CREATE TABLE supplier (id BIGINT PRIMARY KEY);\n");
   EXPECT_EQ(r.lstSummary, QStringList({ "+ entity Supplier2 (table supplier)" }));
   EXPECT_EQ(p->getEntityByKey("Supplier")->getTableName(), "audit_log");
   EXPECT_EQ(p->getEntityByKey("Supplier2")->getTableName(), "supplier");
}

TEST_F(ImportMerge, AbstractEntitiesAndFilteredTablesAreLeftAlone)
{
   const model::project_ptr p = import(db_import::import_options()).pProject;
   auto pBase = std::make_shared<model::entity>();
   pBase->setId(99);
   pBase->setName("Base");
   pBase->setAbstract(true);
   p->addEntity(pBase);
   db_import::import_options options;
   options.lstTables = QStringList { "purchase_*" };
   const import_test::import_run r = refresh(p, k_sShopDdl, options);
   EXPECT_TRUE(r.lstSummary.isEmpty()) << r.lstSummary.join("\n").toStdString();
   EXPECT_FALSE(propertyOf(p, "Customer", "full_name")->isObsolete());
   EXPECT_TRUE(p->getEntityByKey("Base"));
}

TEST_F(ImportMerge, AColumnThatCameBackIsNoLongerObsolete)
{
   const model::project_ptr p = import(db_import::import_options()).pProject;
   refresh(p, QString(k_sShopDdl).replace(", nick_name TEXT", ""));
   ASSERT_TRUE(propertyOf(p, "Customer", "nick_name")->isObsolete());
   const import_test::import_run r = refresh(p, k_sShopDdl);
   EXPECT_EQ(r.lstSummary, QStringList({ "+ column customer.nick_name (back, no longer obsolete)" }));
   EXPECT_FALSE(propertyOf(p, "Customer", "nick_name")->isObsolete());
}

} // namespace
