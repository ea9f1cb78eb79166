// "tavrel migrate" between models without ids: tables and columns go by name, a rename only
// when the user gives it, and the rows of the database stay where they belong.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "sql_test_support.h"
#include "test_support.h"

namespace {

QByteArray stock(const QString & sTable, const QString & sProperties)
{
   return QString(R"({ "name": "STOCK", "entities": [ {"name": "Item", "table": "%1", "properties": [
      {"name": "id", "type": "long", "primary_key": true}, %2 ]} ] })").arg(sTable, sProperties).toUtf8();
}

const char * const k_sPriceQty = R"({"name": "price", "type": "int"}, {"name": "qty", "type": "int"})";

class SqlMigrateByName : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sDb;

   void SetUp() override { ASSERT_TRUE(m_dir.isValid()); m_sDb = m_dir.filePath("stock.db"); }

   QString file(const QString & sName, const QByteArray & json)
   {
      const QString s = m_dir.filePath(sName);
      EXPECT_TRUE(test_support::writeAll(s, json));
      return s;
   }

   // The schema of sModel with one row (1, 100, 7) in table sTable.
   void createWithRow(const QString & sModel, const QString & sTable)
   {
      const test_support::cli_result r = test_support::runTavrel({ "migrate", file("empty.json", R"({"name": "STOCK", "entities": []})"), sModel, "--dialect", "sqlite" });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      QString sError;
      ASSERT_TRUE(sql_test::runOnSqlite(m_sDb, r.out, sError)) << sError.toStdString();
      ASSERT_TRUE(exec("INSERT INTO " + sTable + " (id, price, qty) VALUES (1, 100, 7)").isEmpty());
   }

   QString exec(const QString & sSql, QStringList * pRow = nullptr)
   {
      QString sError;
      {
         QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "migrate_names");
         db.setDatabaseName(m_sDb);
         if (! db.open()) { sError = "cannot open"; }
         QSqlQuery q(db);
         if (sError.isEmpty() && ! q.exec(sSql)) { sError = sSql + " failed"; }
         if (sError.isEmpty() && pRow)
         {
            if (! q.next()) { sError = "no row"; }
            else { for (int i = 0; i < q.record().count(); ++i) { pRow->append(q.value(i).isNull() ? QString("NULL") : q.value(i).toString()); } }
         }
      }
      QSqlDatabase::removeDatabase("migrate_names");
      return sError;
   }
};

} // namespace

// A column inserted before others is added: no column takes its neighbour's name and rows.
TEST_F(SqlMigrateByName, InsertedColumnIsAddedAndTheRowKeepsItsValues)
{
   const QString sV1 = file("v1.json", stock("item", k_sPriceQty));
   const QString sV2 = file("v2.json", stock("item", QString(R"({"name": "discount", "type": "int"}, )") + k_sPriceQty));
   createWithRow(sV1, "item");
   const test_support::cli_result r = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", "sqlite" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_FALSE(r.out.contains("rename")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("add column item.discount")) << r.out.toStdString();
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(m_sDb, r.out, sError)) << sError.toStdString();
   QStringList lstRow;
   ASSERT_EQ(exec("SELECT price, qty, discount FROM item WHERE id = 1", & lstRow).toStdString(), "");
   EXPECT_EQ(lstRow, QStringList({ "100", "7", "NULL" }));
}

// Without ids a changed name is a drop and an add, which loses data; --rename makes it a rename.
TEST_F(SqlMigrateByName, RenameOnlyWhenTheUserSaysSo)
{
   const QString sV1 = file("v1.json", stock("item", k_sPriceQty));
   const QString sV2 = file("v2.json", stock("goods", R"({"name": "cost", "type": "int"}, {"name": "qty", "type": "int"})"));
   createWithRow(sV1, "item");
   const test_support::cli_result refused = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", "sqlite" });
   EXPECT_EQ(refused.code, 1);
   EXPECT_TRUE(refused.err.contains("drop table item")) << refused.err.toStdString();
   // The entity keeps its name and changes its table; its property changes its name.
   const test_support::cli_result r = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", "sqlite", "--rename", "Item=Item", "--rename", "Item.price=cost" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("rename table item to goods") && r.out.contains("rename column goods.price to cost")) << r.out.toStdString();
   QString sError;
   ASSERT_TRUE(sql_test::runOnSqlite(m_sDb, r.out, sError)) << sError.toStdString();
   QStringList lstRow;
   ASSERT_EQ(exec("SELECT cost, qty FROM goods WHERE id = 1", & lstRow).toStdString(), "");
   EXPECT_EQ(lstRow, QStringList({ "100", "7" }));
   // A rename naming nothing of the models is a usage error.
   const test_support::cli_result bad = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", "sqlite", "--rename", "Item.nothing=cost" });
   EXPECT_EQ(bad.code, 2);
   EXPECT_TRUE(bad.err.contains("Item.nothing=cost")) << bad.err.toStdString();
   // Nor may two old columns end with one name.
   const test_support::cli_result twice = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", "sqlite", "--rename", "Item=Item", "--rename", "Item.price=qty" });
   EXPECT_EQ(twice.code, 2);
   EXPECT_TRUE(twice.err.contains("would both become column qty")) << twice.err.toStdString();
}

// Models that carry their ids still match by id: a rename needs no option.
TEST_F(SqlMigrateByName, ModelsWithIdsStillMatchById)
{
   const QString sV1 = file("v1.json", R"({ "name": "STOCK", "entities": [ {"id": 1, "name": "Item", "table": "item", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "price", "type": "int"}, {"id": 3, "name": "qty", "type": "int"} ]} ] })");
   const QString sV2 = file("v2.json", R"({ "name": "STOCK", "entities": [ {"id": 1, "name": "Item", "table": "item", "properties": [
      {"id": 1, "name": "id", "type": "long", "primary_key": true}, {"id": 2, "name": "cost", "type": "int"}, {"id": 3, "name": "qty", "type": "int"} ]} ] })");
   const test_support::cli_result r = test_support::runTavrel({ "migrate", sV1, sV2, "--dialect", "sqlite" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("rename column item.price to cost")) << r.out.toStdString();
}
