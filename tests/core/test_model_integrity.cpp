#include <gtest/gtest.h>

#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "model/model_integrity.h"
#include "test_support.h"
#include "test_model_helpers.h"

// The rules that the JSON import applies hold for a project file edited by hand, and both
// refuse parent cycles; two classes never share a generated file.

using namespace model_test;
using storage::project_storage;

namespace {

const QByteArray k_sModel = R"J({"name": "SHOP",
   "entities": [
      {"name": "Base", "namespace": "shop", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
      {"name": "Order", "namespace": "shop", "parent": "shop::Base", "properties": [
         {"name": "status", "enumeration": "shop::Status"},
         {"name": "lines", "relation": {"kind": "one_to_many", "target": "shop::Base"}}]}],
   "enumerations": [{"name": "Status", "namespace": "shop", "values": [{"key": "New", "value": "0"}, {"key": "Paid", "value": "1"}]}]})J";

class ProjectFileRules : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sProject;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      const QString sJson = m_dir.filePath("model.json");
      ASSERT_TRUE(test_support::writeAll(sJson, k_sModel));
      m_sProject = m_dir.filePath("model.tavrel");
      const zy::ZyBool ok = project_storage::importJson(sJson, m_sProject);
      ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   }

   // An edit as a user would make it with any SQLite tool.
   void edit(const QString & sql)
   {
      const QString sName = "integrity_edit";
      {
         QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sName);
         db.setDatabaseName(m_sProject);
         ASSERT_TRUE(db.open());
         QSqlQuery q(db);
         ASSERT_TRUE(q.exec(sql)) << str(sql);
         db.close();
      }
      QSqlDatabase::removeDatabase(sName);
   }

   // The load's message, empty when the file was accepted.
   QString loadError()
   {
      model::project_ptr p;
      const zy::ZyBool ok = project_storage::loadProject(m_sProject, p);
      if (ok.getValue()) { return QString(); }
      EXPECT_FALSE(p);
      return ok.getDesc();
   }

   void expectRefused(const QString & sql, const QString & sReason)
   {
      edit(sql);
      const QString sError = loadError();
      EXPECT_TRUE(sError.contains(m_sProject + ": " + sReason)) << str(sql) << "\n" << str(sError);
   }
};

} // namespace

TEST_F(ProjectFileRules, UneditedFileLoads)
{
   EXPECT_EQ(str(loadError()), "");
}

TEST_F(ProjectFileRules, EntityNameThatIsAPathIsRefused)
{
   expectRefused("UPDATE t_entity SET name = '../../../../tmp/victim' WHERE name = 'Order'",
                 "Entity 'shop::../../../../tmp/victim' : name '../../../../tmp/victim' is not a valid C++ identifier");
}

TEST_F(ProjectFileRules, ProjectNameThatIsAPathIsRefused)
{
   expectRefused("UPDATE t_project SET name = '../../x'", "Project name '../../x' is not a valid C++ identifier");
}

TEST_F(ProjectFileRules, NamesOfEveryKindAreChecked)
{
   expectRefused("UPDATE t_entity SET namespace = 'shop::a b' WHERE name = 'Base'",
                 "Entity 'shop::a b::Base' : namespace 'shop::a b' : part 'a b' is not a valid C++ identifier");
}

TEST_F(ProjectFileRules, PropertyNameIsChecked)
{
   expectRefused("UPDATE t_property SET name = 'class' WHERE name = 'status'",
                 "Entity 'shop::Order' : property 'class' : name 'class' is a C++ keyword");
}

TEST_F(ProjectFileRules, EnumerationValueKeyIsChecked)
{
   expectRefused("UPDATE t_enumeration_value SET value_key = 'New\"' WHERE value_key = 'New'",
                 "Enumeration 'shop::Status' : value key 'New\"' is not a valid C++ identifier");
}

TEST_F(ProjectFileRules, RepeatedEnumerationValueKeyIsRefused)
{
   edit("UPDATE t_enumeration_value SET value_key = 'New'");
   EXPECT_TRUE(loadError().contains("Enumeration 'shop::Status' : value key 'New' is given more than once")) << str(loadError());
}

TEST_F(ProjectFileRules, RepeatedIdsAndKeysAreRefused)
{
   edit("UPDATE t_entity SET id = 7");
   EXPECT_TRUE(loadError().contains("Entity 'shop::Order' : id 7 is already used by Entity 'shop::Base' (ids of entities must be unique)"))
      << str(loadError());
   edit("UPDATE t_entity SET id = seq, name = 'Base'");
   EXPECT_TRUE(loadError().contains("Entity 'shop::Base' is defined more than once")) << str(loadError());
}

TEST_F(ProjectFileRules, DanglingReferencesAreRefused)
{
   expectRefused("UPDATE t_entity SET parent_key = 'shop::Nowhere' WHERE name = 'Order'",
                 "Entity 'shop::Order' : parent 'shop::Nowhere' is not an entity of the project");
   expectRefused("UPDATE t_property SET enumeration_key = 'shop::Gone' WHERE name = 'status'",
                 "Entity 'shop::Order' : property 'status' : enumeration 'shop::Gone' is not an enumeration of the project");
   expectRefused("UPDATE t_relationship SET target_key = 'shop::Lost'",
                 "Entity 'shop::Order' : property 'lines' : relation target 'shop::Lost' is not an entity of the project");
}

TEST_F(ProjectFileRules, ParentCyclesAreRefused)
{
   expectRefused("UPDATE t_entity SET parent_key = 'shop::Order' WHERE name = 'Base'",
                 "Entity 'shop::Base' : inheritance cycle shop::Base -> shop::Order -> shop::Base");
}

TEST_F(ProjectFileRules, SelfParentIsRefused)
{
   expectRefused("UPDATE t_entity SET parent_key = 'shop::Base' WHERE name = 'Base'",
                 "Entity 'shop::Base' : inheritance cycle shop::Base -> shop::Base");
}

TEST(JsonImportRules, ParentCyclesAreRefused)
{
   model::project_ptr p;
   zy::ZyBool ok = project_storage::parseJson(R"J({"name": "P", "entities": [
      {"name": "A", "parent": "B"}, {"name": "B", "parent": "A"}, {"name": "C", "parent": "C"}, {"name": "D", "parent": "A"}]})J", "m.json", p);
   EXPECT_FALSE(ok.getValue());
   EXPECT_FALSE(p);
   EXPECT_EQ(str(ok.getDesc()), "m.json: entities[0].parent: inheritance cycle A -> B -> A\n"
                                "m.json: entities[2].parent: inheritance cycle C -> C");
}

TEST(ModelFileCollisions, FlattenedKeysThatMeetAreSchemaErrors)
{
   auto p = std::make_shared<model::project>();
   p->setName("P");
   p->addEntity(makeEntity("a", "b_C"));
   p->addEntity(makeEntity("a_b", "C"));
   auto pEnum = std::make_shared<model::enumeration>();
   pEnum->setNamespace("a::b");
   pEnum->setName("C");
   p->addEnumeration(pEnum);
   p->resolveLinks();
   const QStringList lst = model::model_integrity::fileCollisions(* p, false);
   ASSERT_EQ(lst.size(), 1) << str(lst.join("\n"));
   EXPECT_EQ(str(lst.at(0)), "Entity 'a::b_C', entity 'a_b::C' and enumeration 'a::b::C' all give the same generated files "
                             "'include/a_b_C.gen.h' and 'src/a_b_C.gen.cpp'");
   QStringList lstSchema;
   for (const auto & e : p->checkSchema()) { lstSchema.append(e.getMessage()); }
   EXPECT_TRUE(lstSchema.contains(lst.at(0))) << str(lstSchema.join("\n"));
}

TEST(ModelFileCollisions, KeysThatDifferInCaseOnlyAreSchemaErrors)
{
   auto p = std::make_shared<model::project>();
   p->setName("P");
   p->addEntity(makeEntity("ns", "Foo"));
   p->addEntity(makeEntity("ns", "foo"));
   p->addEntity(makeEntity("ns", "Bar"));
   QStringList lstSchema;
   for (const auto & e : p->checkSchema()) { lstSchema.append(e.getMessage()); }
   EXPECT_TRUE(lstSchema.contains("Entity 'ns::Foo' and entity 'ns::foo' give generated files whose names differ only in letter case "
                                  "('ns_Foo', 'ns_foo'): they share an include guard and are one file on a case-insensitive disk"))
      << str(lstSchema.join("\n"));
}

TEST(ModelFileCollisions, ProjectFilesCountToo)
{
   auto p = std::make_shared<model::project>();
   p->setName("P");
   p->addEntity(makeEntity("", "P_export"));
   EXPECT_EQ(model::model_integrity::fileCollisions(* p, false),
             QStringList("Entity 'P_export' gives a generated file of the same name as the project file 'include/P_export.gen.h'"));
}

TEST(ModelFileCollisions, ExportLeavesOutUnsavedItemsAndCountsRepeatedKeys)
{
   auto p = std::make_shared<model::project>();
   p->setName("P");
   auto pA = makeEntity("ns", "Foo");
   auto pB = makeEntity("ns", "foo");
   pA->setId(1);
   p->addEntity(pA);
   p->addEntity(pB);
   // id 0: never exported.
   EXPECT_EQ(model::model_integrity::fileCollisions(* p, true), QStringList());
   EXPECT_EQ(model::model_integrity::fileCollisions(* p, false).size(), 1);
   pB->setId(2);
   pB->setName("Foo");
   // The same key twice is a schema error of its own, and a lost file for the export.
   EXPECT_EQ(model::model_integrity::fileCollisions(* p, false), QStringList());
   EXPECT_EQ(model::model_integrity::fileCollisions(* p, true).size(), 1);
}
