// Two entities on one table: the model check (whole and item by item), the SQL export and
// migrate all refuse it, naming both entities.

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "model/entity.h"
#include "model/project.h"
#include "model/schema_check.h"
#include "sql_test_support.h"
#include "test_support.h"

namespace {

// Plant keeps table "plant"; the second entity's table and kind vary.
QByteArray gardenWith(const QString & sSecond)
{
   return QString(R"({ "name": "GARDEN", "entities": [
      {"name": "Plant", "table": "plant", "properties": [ {"name": "id", "type": "long", "primary_key": true} ]},
      %1 ] })").arg(sSecond).toUtf8();
}

const char * const k_sShrub = R"({"name": "Shrub", "table": "%1", "abstract": %2, "properties": [ {"name": "id", "type": "long", "primary_key": true} ]})";

QStringList messagesOf(const zy::ZyInvalidValueX & lst)
{
   QStringList lstResult;
   for (const auto & e : lst) { lstResult.append(e.getMessage()); }
   return lstResult.filter("is also the table of");
}

} // namespace

TEST(SqlSharedTables, CheckReportsTwoEntitiesOnOneTable)
{
   const model::project_ptr p = sql_test::modelFromJson(gardenWith(QString(k_sShrub).arg("PLANT", "false")));
   ASSERT_TRUE(p);
   const QStringList lstExpected { "Entity 'Shrub' : table 'PLANT' is also the table of Entity 'Plant'" };
   EXPECT_EQ(messagesOf(p->checkSchema()), lstExpected);
   // The desktop's check, item by item, says the same, on a first run and on a run that keeps.
   model::schema_check check;
   EXPECT_EQ(messagesOf(check.run(* p)), lstExpected);
   EXPECT_EQ(messagesOf(check.run(* p)), lstExpected);
   // An edit that removes the second user: its kept entries do not keep the clash, and putting
   // it back reports it again without checking the entity anew.
   const model::entity_ptr pShrub = p->getListOfAllEntities()->takeLast();
   EXPECT_TRUE(messagesOf(check.run(* p)).isEmpty());
   EXPECT_EQ(check.checkedItems(), 0);
   p->getListOfAllEntities()->append(pShrub);
   EXPECT_EQ(messagesOf(check.run(* p)), lstExpected);
}

TEST(SqlSharedTables, AbstractEntityAndOtherTablesAreNoClash)
{
   for (const QString & sSecond : { QString(k_sShrub).arg("plant", "true"), QString(k_sShrub).arg("shrub", "false") })
   {
      const model::project_ptr p = sql_test::modelFromJson(gardenWith(sSecond));
      ASSERT_TRUE(p);
      EXPECT_TRUE(messagesOf(p->checkSchema()).isEmpty()) << sSecond.toStdString();
   }
}

TEST(SqlSharedTables, JoinTableOnAnEntityTableIsReported)
{
   const model::project_ptr p = sql_test::modelFromJson(gardenWith(R"({"name": "Bed", "table": "bed", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "plants", "relation": {"kind": "many_to_many", "target": "Plant", "extra_table": "plant", "foreign_key": "bed_id", "foreign_key_owner": "plant_id"}} ]})"));
   ASSERT_TRUE(p);
   EXPECT_EQ(messagesOf(p->checkSchema()), QStringList("Entity 'Bed' : join table 'plant' of 'plants' is also the table of Entity 'Plant'"));
}

TEST(SqlSharedTables, CheckExportAndMigrateRefuse)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sShared = dir.filePath("shared.json"), sPlain = dir.filePath("plain.json");
   ASSERT_TRUE(test_support::writeAll(sShared, gardenWith(QString(k_sShrub).arg("plant", "false"))));
   ASSERT_TRUE(test_support::writeAll(sPlain, gardenWith(QString(k_sShrub).arg("shrub", "false"))));
   const QString sMessage = "Entity 'Shrub' : table 'plant' is also the table of Entity 'Plant'";

   test_support::cli_result r = test_support::runTavrel({ "check", sShared });
   EXPECT_EQ(r.code, 1) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("error: " + sMessage)) << r.out.toStdString();

   r = test_support::runTavrel({ "export", sShared, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=sqlite", "--TavrelSqlExport_path=shared.sql" });
   EXPECT_NE(r.code, 0);
   EXPECT_TRUE((r.out + r.err).contains(sMessage)) << (r.out + r.err).toStdString();
   EXPECT_FALSE(QFile::exists(dir.filePath("shared.sql")));

   for (const QStringList & lstPair : { QStringList { sPlain, sShared }, QStringList { sShared, sPlain } })
   {
      r = test_support::runTavrel(QStringList { "migrate" } + lstPair + QStringList { "--dialect", "postgresql", "-o", dir.filePath("m.sql") });
      EXPECT_EQ(r.code, 1);
      EXPECT_TRUE(r.err.contains(sMessage)) << r.err.toStdString();
      EXPECT_FALSE(QFile::exists(dir.filePath("m.sql")));
   }
}
