#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "model/plugin_params.h"
#include "test_support.h"
#include "test_model_helpers.h"

using namespace model_test;
using storage::project_storage;

namespace {

const QByteArray k_smallModel = R"J({"name": "SHOP",
   "entities": [{"name": "Order", "namespace": "shop", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})J";

QString dumpOf(const model::project & p) { return QString::fromUtf8(project_storage::toJson(p)); }

// Runs one statement on a project file through a connection of its own.
bool execOn(const QString & sFile, const QString & sql)
{
   QSqlDatabase db;
   if (! project_storage::openDatabase(sFile, db).getValue()) { return false; }
   bool bOk = false;
   {
      QSqlQuery q(db);
      bOk = q.exec(sql);
   }
   project_storage::closeDatabase(db);
   return bOk;
}

QStringList tablesOf(QSqlDatabase & db)
{
   QStringList lst;
   QSqlQuery q(db);
   q.exec("SELECT name FROM sqlite_master WHERE type = 'table' AND name LIKE 't_%' ORDER BY name");
   while (q.next()) { lst.append(q.value(0).toString()); }
   return lst;
}

} // namespace

TEST(StorageProject, ImportThenLoadGivesTheSameModel)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = test_support::examplePath("shop.json");
   const QString sProject = dir.filePath("shop.tavrel");
   zy::ZyBool ok = project_storage::importJson(sJson, sProject);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());

   model::project_ptr pParsed, pLoaded;
   ASSERT_TRUE(project_storage::readJsonFile(sJson, pParsed).getValue());
   ok = project_storage::loadProject(sProject, pLoaded);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   EXPECT_EQ(str(dumpOf(* pLoaded)), str(dumpOf(* pParsed)));

   EXPECT_EQ(str(pLoaded->getName()), "SHOP");
   EXPECT_EQ(str(pLoaded->getLocation()), str(QFileInfo(dir.path()).absoluteFilePath()));
   EXPECT_EQ(str(pLoaded->getFilePath()), str(QFileInfo(sProject).absoluteFilePath()));

   // Links are resolved on load.
   model::entity_ptr pOrder = pLoaded->getEntityByKey("shop::sales::Order");
   ASSERT_NE(pOrder, nullptr);
   EXPECT_EQ(pOrder->getParent(), pLoaded->getEntityByKey("shop::Base"));
   EXPECT_EQ(str(pOrder->getPropertyId(true)->getName()), "id");
   model::property_ptr pStatus = pOrder->getPropertyByName("status");
   EXPECT_EQ(str(pStatus->getTypeDesc(false, false)), "shop::sales::OrderStatus::enum_OrderStatus");
   EXPECT_EQ(pStatus->getType()->getEnumeration(), pLoaded->getEnumerationByKey("shop::sales::OrderStatus"));
   EXPECT_EQ(str(pOrder->getPropertyByName("items")->getTypeDesc(false, false)),
             "zy::ZyCollection<long, std::shared_ptr<shop::sales::OrderItem> >");
   EXPECT_EQ(pOrder->getPropertyByName("customer")->getRelation()->getEntityTarget(), pLoaded->getEntityByKey("shop::Customer"));
   EXPECT_TRUE(pOrder->getMetaData("audit").toBool());
}

TEST(StorageProject, SaveAndLoadKeepEveryField)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   model::project_ptr p = parseModel(R"J({"name": "Shop",
      "entities": [
        {"id": 0, "name": "Base", "namespace": "a::::b", "version": 1, "description": "multi\nline \"quoted\"",
         "table": "t_base", "abstract": true, "read_only": true, "soft_delete_column": "gone", "validator_method": "check",
         "triggers": ["before_fetch", "after_delete"], "meta": {"k1": "v1", "k0": ""},
         "properties": [
           {"id": 0, "name": "id", "type": "unsigned long long", "primary_key": true, "column": "c", "description": "tab\there",
            "version": 5, "accessibility": "public", "write_accessors": false, "obsolete": true, "read_only": true,
            "get_method": "g", "set_method": "s", "transient": true, "serializable": false, "index": true, "unique": true,
            "allow_null": false, "min_value": 1.5, "max_value": "9", "min_length": 0, "max_length": 7, "reg_exp": "[a-z]",
            "force_sql_type": "BIGINT", "force_sql_alias": "al", "format": "%L1", "default": "", "decoration": "optional",
            "meta": {"m": "n"}},
           {"name": "e", "enumeration": "E", "collection": "std_vector", "default": "E::A"},
           {"name": "r", "relation": {"kind": "one_to_many", "target": "Child", "foreign_key": "x", "foreign_key_owner": "y", "extra_table": "z"}},
           {"name": "nothing"}
         ]},
        {"name": "Child", "parent": "a::::b::Base"}
      ],
      "enumerations": [{"id": 7, "name": "E", "enum_name": "EE", "use_qt_enum": true, "description": "d", "version": 2,
                        "meta": {"q": "r"}, "values": [{"key": "A", "value": "1"}, {"key": "B", "value": ""}]}]})J");
   ASSERT_NE(p, nullptr);
   const QString sProject = dir.filePath("all.tavrel");
   zy::ZyBool ok = project_storage::saveProject(* p, sProject);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   model::project_ptr q;
   ok = project_storage::loadProject(sProject, q);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   EXPECT_EQ(str(dumpOf(* q)), str(dumpOf(* p)));
   model::property_ptr pId = q->getListOfAllEntities()->at(0)->getOwnProperties().at(0);
   EXPECT_EQ(pId->getMinValue().metaType().id(), QMetaType::Double);
   EXPECT_EQ(pId->getMaxValue().metaType().id(), QMetaType::QString);
   EXPECT_TRUE(pId->getMinLength().isValid());
   EXPECT_FALSE(q->getListOfAllEntities()->at(0)->getOwnProperties().at(1)->getMinLength().isValid());
   EXPECT_EQ(q->getListOfAllEntities()->at(0)->getOwnProperties().at(3)->getType(), nullptr);
}

TEST(StorageProject, ModelBuiltInMemorySavesAndLoads)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   model::project p;
   p.setName("MEMO");
   auto pEntity = makeEntity("m", "Note");
   addProperty(pEntity, "id", "QString", true)->setId(3);
   addProperty(pEntity, "body", "QString")->getType()->setDecoration(model::property_type::decoration_optional);
   pEntity->setId(0);
   p.addEntity(pEntity);
   p.resolveLinks();
   const QString sProject = dir.filePath("memo.tavrel");
   ASSERT_TRUE(project_storage::saveProject(p, sProject).getValue());
   model::project_ptr q;
   ASSERT_TRUE(project_storage::loadProject(sProject, q).getValue());
   EXPECT_EQ(str(dumpOf(* q)), str(dumpOf(p)));
   EXPECT_EQ(q->getEntityById(0), q->getListOfAllEntities()->at(0));
   EXPECT_EQ(str(q->getListOfAllEntities()->at(0)->getOwnProperties().at(1)->getTypeDesc(false, false)), "std::optional<QString>");
}

TEST(StorageProject, RefreshReplacesTheModelAndKeepsPluginParams)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = dir.filePath("model.json");
   const QString sProject = dir.filePath("model.tavrel");
   ASSERT_TRUE(test_support::writeAll(sJson, test_support::readAll(test_support::examplePath("shop.json"))));
   ASSERT_TRUE(project_storage::importJson(sJson, sProject).getValue());

   QSqlDatabase db;
   ASSERT_TRUE(project_storage::openDatabase(sProject, db).getValue());
   model::plugin_params::list_of_plugin_params lst;
   auto pParam = std::make_shared<model::plugin_params>();
   pParam->setGuid("GUID-1");
   pParam->setParamKey("CPP_EXPORT_PATH");
   pParam->setParamValue(QString("out/cpp"));
   lst.insert(0, pParam);
   ASSERT_FALSE(model::plugin_params::insert(lst, & db).isValid());
   project_storage::closeDatabase(db);

   ASSERT_TRUE(test_support::writeAll(sJson, k_smallModel));
   zy::ZyBool ok = project_storage::importJson(sJson, sProject);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());

   model::project_ptr q;
   ASSERT_TRUE(project_storage::loadProject(sProject, q).getValue());
   EXPECT_EQ(str(q->getName()), "SHOP");
   ASSERT_EQ(q->getListOfAllEntities()->size(), 1);
   EXPECT_EQ(str(q->getListOfAllEntities()->at(0)->getKey()), "shop::Order");
   EXPECT_TRUE(q->getListOfAllEnums()->isEmpty());

   ASSERT_TRUE(project_storage::openDatabase(sProject, db).getValue());
   model::plugin_params::list_of_plugin_params lstFetched;
   EXPECT_FALSE(model::plugin_params::fetchByGuid("GUID-1", lstFetched, & db).isValid());
   ASSERT_EQ(lstFetched.size(), 1);
   EXPECT_EQ(str(lstFetched.getByIndex(0)->getParamValue().toString()), "out/cpp");
   project_storage::closeDatabase(db);
}

TEST(StorageProject, FailedImportLeavesTheProjectFileUnchanged)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = dir.filePath("model.json");
   const QString sProject = dir.filePath("model.tavrel");
   ASSERT_TRUE(test_support::writeAll(sJson, test_support::readAll(test_support::examplePath("shop.json"))));
   ASSERT_TRUE(project_storage::importJson(sJson, sProject).getValue());
   const QByteArray before = test_support::readAll(sProject);
   ASSERT_FALSE(before.isEmpty());

   const QList<QPair<QByteArray, QString> > lstCases = {
      { "{\n  \"name\": \"Shop\",\n  \"entities\": [\n    {\"name\": \"A\" }}\n  ]\n}", ":4:19: JSON syntax error: " },
      { R"J({"name": "Shop", "entities": [{"name": "A", "colour": "red"}]})J", ": entities[0].colour: unknown field" },
      { R"J({"name": "Shop", "entities": [{"name": "A", "parent": "Z"}]})J", ": entities[0].parent: parent 'Z' is not an entity of the document" },
      { R"J({"name": "Shop", "entities": [{"name": "A", "properties": [{"name": "r", "relation": {"kind": 0, "target": "Z"}}]}]})J",
        ": entities[0].properties[0].relation.target: relation target 'Z' is not an entity of the document" },
      { R"J({"name": "Shop", "entities": [{"name": "A", "properties": [{"name": "e", "enumeration": "Z"}]}]})J",
        ": entities[0].properties[0].enumeration: enumeration 'Z' is not an enumeration of the document" },
      { R"J({"name": "Shop", "entities": [{"name": "../x"}]})J", ": entities[0].name: '../x' is not a valid C++ identifier" },
      { R"J({"name": "Shop", "entities": [{"name": "a b"}]})J", ": entities[0].name: 'a b' is not a valid C++ identifier" },
      { R"J({"name": "Shop", "entities": [{"name": "A"}, {"name": "A"}]})J", ": entities[1]: key 'A' is already used by entities[0]" } };

   for (const auto & oneCase : lstCases)
   {
      ASSERT_TRUE(test_support::writeAll(sJson, oneCase.first));
      const zy::ZyBool ok = project_storage::importJson(sJson, sProject);
      EXPECT_FALSE(ok.getValue()) << oneCase.first.constData();
      EXPECT_TRUE(ok.getDesc().startsWith(sJson + oneCase.second)) << str(ok.getDesc());
      EXPECT_TRUE(test_support::readAll(sProject) == before) << "project file changed by: " << oneCase.first.constData();
   }
   EXPECT_FALSE(QFileInfo::exists(sProject + "-journal"));
}

TEST(StorageProject, FailureWhileWritingRollsBackEverything)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = dir.filePath("model.json");
   const QString sProject = dir.filePath("model.tavrel");
   ASSERT_TRUE(test_support::writeAll(sJson, k_smallModel));
   ASSERT_TRUE(project_storage::importJson(sJson, sProject).getValue());
   // A trigger stands for any database failure in the middle of the write.
   ASSERT_TRUE(execOn(sProject, "CREATE TRIGGER refuse_boom BEFORE INSERT ON t_entity WHEN NEW.name = 'Boom' "
                                "BEGIN SELECT RAISE(ABORT, 'boom refused'); END"));
   const QByteArray before = test_support::readAll(sProject);

   ASSERT_TRUE(test_support::writeAll(sJson, R"J({"name": "SHOP", "entities": [{"name": "First"}, {"name": "Boom"}],
                                                 "enumerations": [{"name": "E", "values": [{"key": "A"}]}]})J"));
   const zy::ZyBool ok = project_storage::importJson(sJson, sProject);
   EXPECT_FALSE(ok.getValue());
   EXPECT_EQ(str(ok.getDesc()), str("cannot write project file '" + QFileInfo(sProject).absoluteFilePath() + "': boom refused"));
   EXPECT_TRUE(test_support::readAll(sProject) == before);

   model::project_ptr q;
   ASSERT_TRUE(project_storage::loadProject(sProject, q).getValue());
   ASSERT_EQ(q->getListOfAllEntities()->size(), 1);
   EXPECT_EQ(str(q->getListOfAllEntities()->at(0)->getKey()), "shop::Order");
}

TEST(StorageProject, FailedImportCreatesNoFile)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = dir.filePath("model.json");
   const QString sProject = dir.filePath("new.tavrel");
   ASSERT_TRUE(test_support::writeAll(sJson, R"J({"name": "Shop", "entities": [{"name": "A", "parent": "Z"}]})J"));
   EXPECT_FALSE(project_storage::importJson(sJson, sProject).getValue());
   EXPECT_FALSE(QFileInfo::exists(sProject));
}

TEST(StorageProject, FileThatIsNotSQLiteIsRefused)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sProject = QFileInfo(dir.filePath("broken.tavrel")).absoluteFilePath();
   const QByteArray garbage("This is not a database at all, just some text that someone saved with the wrong name.\n");
   ASSERT_TRUE(test_support::writeAll(sProject, garbage));
   const QString sExpected = "'" + sProject + "' is not a Tavrel project file (not an SQLite database)";

   model::project_ptr p;
   zy::ZyBool ok = project_storage::loadProject(sProject, p);
   EXPECT_FALSE(ok.getValue());
   EXPECT_EQ(str(ok.getDesc()), str(sExpected));
   EXPECT_EQ(p, nullptr);

   const QString sJson = dir.filePath("model.json");
   ASSERT_TRUE(test_support::writeAll(sJson, k_smallModel));
   ok = project_storage::importJson(sJson, sProject);
   EXPECT_FALSE(ok.getValue());
   EXPECT_EQ(str(ok.getDesc()), str(sExpected));

   QSqlDatabase db;
   ok = project_storage::openDatabase(sProject, db);
   EXPECT_FALSE(ok.getValue());
   EXPECT_EQ(str(ok.getDesc()), str(sExpected));
   EXPECT_FALSE(db.isValid());
   EXPECT_TRUE(test_support::readAll(sProject) == garbage);
}

TEST(StorageProject, DamagedSQLiteFileFailsCleanly)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = dir.filePath("model.json");
   const QString sProject = QFileInfo(dir.filePath("damaged.tavrel")).absoluteFilePath();
   ASSERT_TRUE(test_support::writeAll(sJson, test_support::readAll(test_support::examplePath("shop.json"))));
   ASSERT_TRUE(project_storage::importJson(sJson, sProject).getValue());
   // Keep the SQLite header, overwrite the rest of the first page and everything after it.
   QByteArray data = test_support::readAll(sProject);
   ASSERT_GT(data.size(), 200);
   for (qsizetype i = 100; i < data.size(); ++i) { data[i] = char(0xA5 ^ (i & 0xFF)); }
   ASSERT_TRUE(test_support::writeAll(sProject, data));

   model::project_ptr p;
   const zy::ZyBool ok = project_storage::loadProject(sProject, p);
   EXPECT_FALSE(ok.getValue());
   EXPECT_TRUE(ok.getDesc().startsWith("cannot read project file '" + sProject + "': ")) << str(ok.getDesc());
   EXPECT_EQ(p, nullptr);
   EXPECT_TRUE(test_support::readAll(sProject) == data);
}

TEST(StorageProject, OtherSQLiteDatabaseIsRefused)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sProject = QFileInfo(dir.filePath("other.tavrel")).absoluteFilePath();
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "test_storage_other_db");
      db.setDatabaseName(sProject);
      ASSERT_TRUE(db.open());
      QSqlQuery q(db);
      ASSERT_TRUE(q.exec("CREATE TABLE invoices (id INTEGER PRIMARY KEY, amount REAL)"));
      q.finish();
      db.close();
   }
   QSqlDatabase::removeDatabase("test_storage_other_db");
   const QByteArray before = test_support::readAll(sProject);
   const QString sExpected = "'" + sProject + "' is not a Tavrel project file (an SQLite database without the project tables)";

   model::project_ptr p;
   zy::ZyBool ok = project_storage::loadProject(sProject, p);
   EXPECT_EQ(str(ok.getDesc()), str(sExpected));
   const QString sJson = dir.filePath("model.json");
   ASSERT_TRUE(test_support::writeAll(sJson, k_smallModel));
   ok = project_storage::importJson(sJson, sProject);
   EXPECT_FALSE(ok.getValue());
   EXPECT_EQ(str(ok.getDesc()), str(sExpected));
   EXPECT_TRUE(test_support::readAll(sProject) == before);
}

TEST(StorageProject, MissingOrEmptyFile)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sMissing = QFileInfo(dir.filePath("missing.tavrel")).absoluteFilePath();
   model::project_ptr p;
   zy::ZyBool ok = project_storage::loadProject(sMissing, p);
   EXPECT_EQ(str(ok.getDesc()), str("project file '" + sMissing + "' does not exist"));
   EXPECT_FALSE(QFileInfo::exists(sMissing));

   const QString sEmpty = QFileInfo(dir.filePath("empty.tavrel")).absoluteFilePath();
   ASSERT_TRUE(test_support::writeAll(sEmpty, QByteArray()));
   ok = project_storage::loadProject(sEmpty, p);
   EXPECT_EQ(str(ok.getDesc()), str("'" + sEmpty + "' is not a Tavrel project file (the file is empty)"));
}

TEST(StorageProject, OpenDatabaseCreatesTheTables)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sProject = dir.filePath("fresh.tavrel");
   QSqlDatabase db1, db2;
   ASSERT_TRUE(project_storage::openDatabase(sProject, db1).getValue());
   ASSERT_TRUE(project_storage::openDatabase(sProject, db2).getValue());
   EXPECT_NE(str(db1.connectionName()), str(db2.connectionName()));
   EXPECT_EQ(tablesOf(db1), QStringList({ "t_entity", "t_enumeration", "t_enumeration_value", "t_export_record", "t_meta_data", "t_plugin_params",
                                          "t_project", "t_property", "t_relationship" }));
   const QString sName = db1.connectionName();
   project_storage::closeDatabase(db1);
   EXPECT_FALSE(QSqlDatabase::contains(sName));
   EXPECT_FALSE(db1.isValid());
   project_storage::closeDatabase(db2);

   // A file with only the tables loads as an empty project named after the file.
   model::project_ptr p;
   ASSERT_TRUE(project_storage::loadProject(sProject, p).getValue());
   EXPECT_EQ(str(p->getName()), "fresh");
   EXPECT_TRUE(p->getListOfAllEntities()->isEmpty());
}

TEST(StorageProject, LargeModelRoundTrips)
{
   QByteArray json = "{\"name\": \"BIG\", \"entities\": [";
   const int iCount = 2000;
   for (int i = 0; i < iCount; ++i)
   {
      if (i > 0) { json += ",\n"; }
      json += QString("{\"name\": \"E%1\", \"namespace\": \"big\"%2, \"properties\": [{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}, "
                      "{\"name\": \"label\", \"type\": \"QString\"}, {\"name\": \"next\", \"relation\": {\"kind\": \"one_to_many\", "
                      "\"target\": \"big::E%3\"}}]}")
                 .arg(i).arg((i > 0) ? QString(", \"parent\": \"big::E%1\"").arg(i - 1) : QString()).arg((i + 1) % iCount).toUtf8();
   }
   json += "]}";
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sJson = dir.filePath("big.json");
   const QString sProject = dir.filePath("big.tavrel");
   ASSERT_TRUE(test_support::writeAll(sJson, json));
   zy::ZyBool ok = project_storage::importJson(sJson, sProject);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   model::project_ptr p, q;
   ASSERT_TRUE(project_storage::readJsonFile(sJson, p).getValue());
   ASSERT_TRUE(project_storage::loadProject(sProject, q).getValue());
   EXPECT_EQ(project_storage::toJson(* p), project_storage::toJson(* q));
   ASSERT_EQ(q->getListOfAllEntities()->size(), iCount);
   EXPECT_EQ(q->getEntityById(iCount)->getListOfProperty(true, true, true).size(), 3 * iCount);
   EXPECT_TRUE(q->checkSchema().isEmpty());
}
