// A column renamed in the model: the indexes and foreign keys import-db kept of its table follow
// the new name, and nothing else in that meta data moves.

#include <gtest/gtest.h>

#include <QJsonDocument>

#include "model/sql_meta.h"
#include "model/sql_meta_edit.h"
#include "test_model_helpers.h"

using namespace model_test;
namespace sql_meta = model::sql_meta;

namespace {

QString meta(const model::entity_ptr & p, const QString & sKey) { return p->getMetaData(sKey).toString(); }

// The same JSON, whatever its spacing and key order.
QByteArray normal(const QString & s) { return QJsonDocument::fromJson(s.toUtf8()).toJson(QJsonDocument::Compact); }

} // namespace

TEST(SqlMetaEdit, IndexesAndKeysOfTheTableFollowARenamedColumn)
{
   auto p = makeEntity("shop", "Parcel");
   p->setTableName("parcel");
   p->setMetaData(sql_meta::k_sIndexes, R"([{"unique": true, "columns": ["code", "weight"], "lengths": [0, 0]},
                                            {"unique": false, "columns": ["weight_class"], "lengths": [4]}])");
   p->setMetaData(sql_meta::k_sForeignKeys, R"([{"column": "code", "table": "depot", "target": "code"},
                                                {"columns": ["depot_id", "code"], "table": "slot", "targets": ["depot_id", "code"], "on_delete": "CASCADE"}])");
   EXPECT_TRUE(sql_meta::renameColumn(* p, "code", "parcel_code"));
   EXPECT_EQ(normal(meta(p, sql_meta::k_sIndexes)),
             normal(R"([{"unique": true, "columns": ["parcel_code", "weight"], "lengths": [0, 0]}, {"unique": false, "columns": ["weight_class"], "lengths": [4]}])"));
   // The key's own columns follow; the columns of the tables it points at are another table's.
   EXPECT_EQ(normal(meta(p, sql_meta::k_sForeignKeys)),
             normal(R"([{"column": "parcel_code", "table": "depot", "target": "code"},
                        {"columns": ["depot_id", "parcel_code"], "table": "slot", "targets": ["depot_id", "code"], "on_delete": "CASCADE"}])"));
   // A name no entry holds, the same name, or an empty one change nothing.
   const QString sBefore = meta(p, sql_meta::k_sIndexes) + meta(p, sql_meta::k_sForeignKeys);
   EXPECT_FALSE(sql_meta::renameColumn(* p, "weight_clas", "w"));
   EXPECT_FALSE(sql_meta::renameColumn(* p, "weight", "weight"));
   EXPECT_FALSE(sql_meta::renameColumn(* p, "weight", ""));
   EXPECT_EQ(meta(p, sql_meta::k_sIndexes) + meta(p, sql_meta::k_sForeignKeys), sBefore);
}

TEST(SqlMetaEdit, KeysPointingAtTheColumnFollowItOnlyForThatTable)
{
   auto p = makeEntity("shop", "Slot");
   p->setMetaData(sql_meta::k_sForeignKeys, R"([{"column": "parcel", "table": "parcel", "target": "code"},
                                                {"column": "other", "table": "depot", "target": "code"},
                                                {"columns": ["a", "b"], "table": "parcel", "targets": ["id", "code"]}])");
   EXPECT_TRUE(sql_meta::renameTargetColumn(* p, "parcel", "code", "parcel_code"));
   EXPECT_EQ(normal(meta(p, sql_meta::k_sForeignKeys)),
             normal(R"([{"column": "parcel", "table": "parcel", "target": "parcel_code"},
                        {"column": "other", "table": "depot", "target": "code"},
                        {"columns": ["a", "b"], "table": "parcel", "targets": ["id", "parcel_code"]}])"));
   EXPECT_FALSE(sql_meta::renameTargetColumn(* p, "crate", "id", "crate_id"));
}

TEST(SqlMetaEdit, MetaDataThatIsNoArrayOfObjectsIsLeftAsItIs)
{
   auto p = makeEntity("shop", "Parcel");
   for (const QString & sText : { QString("not json"), QString(R"({"columns": ["code"]})"), QString(R"(["code", 3])") })
   {
      p->setMetaData(sql_meta::k_sIndexes, sText);
      EXPECT_FALSE(sql_meta::renameColumn(* p, "code", "x")) << sText.toStdString();
      EXPECT_EQ(meta(p, sql_meta::k_sIndexes), sText);
   }
}

TEST(SqlMetaEdit, ColumnAndTableOfTheSqlExport)
{
   auto p = makeEntity("shop", "Parcel");
   EXPECT_EQ(sql_meta::tableOf(* p), "Parcel");
   p->setTableName("t_parcel");
   EXPECT_EQ(sql_meta::tableOf(* p), "t_parcel");
   auto pCode = addProperty(p, "code", "QString");
   EXPECT_EQ(sql_meta::columnOf(* pCode), "code");
   pCode->setColumnName("parcel_code");
   EXPECT_EQ(sql_meta::columnOf(* pCode), "parcel_code");
   pCode->setTransient(true);
   EXPECT_EQ(sql_meta::columnOf(* pCode), "");
}

TEST(SqlMetaEdit, KeysPointingAtARenamedTableFollowIt)
{
   auto p = makeEntity("shop", "Label");
   p->setMetaData(sql_meta::k_sForeignKeys, R"([{"column": "parcel_code", "table": "parcel", "target": "code"},
                                                {"column": "bin", "table": "parcel_bin", "target": "id"}])");
   EXPECT_TRUE(sql_meta::renameTargetTable(* p, "parcel", "t_parcel"));
   EXPECT_EQ(normal(meta(p, sql_meta::k_sForeignKeys)),
             normal(R"([{"column": "parcel_code", "table": "t_parcel", "target": "code"}, {"column": "bin", "table": "parcel_bin", "target": "id"}])"));
   EXPECT_FALSE(sql_meta::renameTargetTable(* p, "crate", "t_crate"));
   EXPECT_FALSE(sql_meta::renameTargetTable(* p, "t_parcel", "t_parcel"));
}
