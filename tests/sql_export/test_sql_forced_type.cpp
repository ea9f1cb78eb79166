// A forced SQL type is written into the column definition as it is: only a type passes the
// JSON import, the project-file reader and the schema check.

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "model/entity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "sql_test_support.h"
#include "test_support.h"

namespace {

const char * const k_sInjected = "INT, PRIMARY KEY (id)); DROP TABLE victim; CREATE TABLE zz (id INT";

QByteArray modelWithType(const QString & sType)
{
   return QString(R"({ "name": "Vault", "entities": [
  {"name": "Coin", "table": "coin", "properties": [
    {"name": "id", "type": "long", "primary_key": true},
    {"name": "weight", "type": "int", "force_sql_type": "%1"} ]} ] })").arg(sType).toUtf8();
}

} // namespace

TEST(SqlForcedType, TypesPassAndAnythingElseIsRefused)
{
   for (const char * s : { "TEXT", "BLOB", "VARCHAR(190)", "NUMERIC(10, 2)", "numeric( 10 ,2 )", "DOUBLE PRECISION", "CHARACTER VARYING(40)",
                           "TIMESTAMP(3) WITH TIME ZONE", "time without time zone", "INT UNSIGNED ZEROFILL", "integer[]", "text[3][]",
                           "UNSIGNED BIG INT", "int8" })
   { EXPECT_EQ(model::model_text_rules::sqlTypeProblem(s).toStdString(), "") << s; }
   for (const char * s : { k_sInjected, "INT; DROP TABLE victim", "INT -- x", "INT /* x */", "VARCHAR('a')", "VARCHAR(10", "VARCHAR(10))",
                           "INT REFERENCES victim (id) ON DELETE CASCADE", "INT DEFAULT 1", "INT NOT NULL", "INT PRIMARY KEY",
                           "INT GENERATED ALWAYS AS (1) STORED", "TEXT COLLATE x", "INT CHECK (1)", "ENUM('a','b')", "INT, x INT",
                           "INT\nx", "INT\"", "INT`", "(10)", "[]", " ", "VARCHAR(1)(2)", "NUMERIC(1,2,3,4)", "NUMERIC(-1)",
                           "INT[] x", "a b c d e f g", "INT\\" })
   { EXPECT_NE(model::model_text_rules::sqlTypeProblem(s).toStdString(), "") << s; }
}

// The import of a JSON model refuses it, naming the entity, the property and the value.
TEST(SqlForcedType, JsonImportRefusesAStatementInAForcedType)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sModel = dir.filePath("vault.json");
   ASSERT_TRUE(test_support::writeAll(sModel, modelWithType(k_sInjected)));
   const test_support::cli_result r = test_support::runTavrel({ "import", sModel, dir.filePath("vault.tavrel") });
   EXPECT_NE(r.code, 0);
   EXPECT_TRUE(r.err.contains("Coin") && r.err.contains("weight") && r.err.contains("DROP TABLE victim") && r.err.contains("forced SQL type"))
      << r.err.toStdString();
   EXPECT_FALSE(QFile::exists(dir.filePath("vault.tavrel")));
   // The SQL export never writes it either.
   const test_support::cli_result e = test_support::runTavrel({ "export", sModel, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=sqlite",
                                                                "--TavrelSqlExport_path=vault.sql" });
   EXPECT_NE(e.code, 0);
   EXPECT_FALSE(QFile::exists(dir.filePath("vault.sql")));
   // A real type still passes.
   ASSERT_TRUE(test_support::writeAll(sModel, modelWithType("NUMERIC(10, 2)")));
   EXPECT_EQ(test_support::runTavrel({ "import", sModel, dir.filePath("vault.tavrel") }).code, 0);
}

// A project file changed behind the program's back is refused when it is read.
TEST(SqlForcedType, ProjectFileReaderRefusesAStatementInAForcedType)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sModel = dir.filePath("vault.json"), sProject = dir.filePath("vault.tavrel");
   ASSERT_TRUE(test_support::writeAll(sModel, modelWithType("INT")));
   ASSERT_EQ(test_support::runTavrel({ "import", sModel, sProject }).code, 0);
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "forced_type_edit");
      db.setDatabaseName(sProject);
      ASSERT_TRUE(db.open());
      QSqlQuery q(db);
      ASSERT_TRUE(q.prepare("UPDATE t_property SET force_sql_type = ? WHERE force_sql_type = 'INT'"));
      q.addBindValue(QString(k_sInjected));
      ASSERT_TRUE(q.exec());
      ASSERT_EQ(q.numRowsAffected(), 1);
      db.close();
   }
   QSqlDatabase::removeDatabase("forced_type_edit");
   const test_support::cli_result r = test_support::runTavrel({ "check", sProject });
   EXPECT_EQ(r.code, 1);
   const QString sAll = r.out + r.err;
   EXPECT_TRUE(sAll.contains("Coin") && sAll.contains("weight") && sAll.contains("DROP TABLE victim")) << sAll.toStdString();
   const test_support::cli_result e = test_support::runTavrel({ "export", sProject, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=sqlite",
                                                                "--TavrelSqlExport_path=vault.sql" });
   EXPECT_NE(e.code, 0);
   EXPECT_FALSE(QFile::exists(dir.filePath("vault.sql")));
}

// The schema check of a model edited in memory (the desktop host's path) refuses it too.
TEST(SqlForcedType, SchemaCheckRefusesAStatementInAForcedType)
{
   const model::project_ptr p = sql_test::modelFromJson(modelWithType("INT"));
   ASSERT_TRUE(p);
   EXPECT_TRUE(p->checkSchema().isEmpty());
   const model::entity_ptr pEntity = p->getListOfAllEntities()->first();
   model::property_ptr pWeight;
   for (const model::property_ptr & x : pEntity->getOwnProperties()) { if (x && (x->getName() == "weight")) { pWeight = x; } }
   ASSERT_TRUE(pWeight);
   pWeight->setForceSqlType(k_sInjected);
   QStringList lst;
   for (const auto & e : p->checkSchema()) { lst.append(e.getMessage()); }
   const QString sAll = lst.join('\n');
   EXPECT_TRUE(sAll.contains("Entity 'Coin' : property 'weight' : forced SQL type of 'Coin.weight' 'INT, PRIMARY KEY (id)); DROP TABLE victim;")) << sAll.toStdString();
}
