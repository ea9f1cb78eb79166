#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "test_support.h"
#include "test_model_helpers.h"

using namespace model_test;

namespace {

// A document with one valid entity around the piece under test.
QByteArray withProperty(const QByteArray & property)
{
   return "{\"name\": \"Shop\", \"entities\": [{\"name\": \"Order\", \"namespace\": \"shop\", \"properties\": [" + property + "]}]}";
}

model::property_ptr onlyProperty(const model::project_ptr & p)
{
   if (! p || p->getListOfAllEntities()->isEmpty() || p->getListOfAllEntities()->at(0)->getOwnProperties().isEmpty()) { return model::property_ptr(); }
   return p->getListOfAllEntities()->at(0)->getOwnProperties().at(0);
}

} // namespace

TEST(StorageJson, EntityFields)
{
   model::project_ptr p = parseModel(R"J({
      "name": "Shop",
      "entities": [
        {"name": "Base", "namespace": "shop", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
        {"id": 12, "name": "Order", "namespace": "shop::sales", "version": 3, "description": "A customer order",
         "table": "t_order", "parent": "shop::Base", "abstract": true, "read_only": true,
         "soft_delete_column": "deleted_at", "validator_method": "validateOrder",
         "triggers": ["after_delete", "before_fetch", "after_update"],
         "meta": {"b": "2", "a": "1"}}
      ]})J");
   ASSERT_NE(p, nullptr);
   EXPECT_EQ(str(p->getName()), "Shop");
   ASSERT_EQ(p->getListOfAllEntities()->size(), 2);
   model::entity_ptr e = p->getListOfAllEntities()->at(1);
   EXPECT_EQ(e->getId(), 12);
   EXPECT_EQ(str(e->getKey()), "shop::sales::Order");
   EXPECT_EQ(e->getVersion(), 3);
   EXPECT_EQ(str(e->getDescription()), "A customer order");
   EXPECT_EQ(str(e->getTableName()), "t_order");
   EXPECT_EQ(str(e->getParentKey()), "shop::Base");
   EXPECT_EQ(e->getParent(), p->getListOfAllEntities()->at(0));
   EXPECT_TRUE(e->isAbstract());
   EXPECT_TRUE(e->isReadOnly());
   EXPECT_EQ(str(e->getSoftDeleteColumn()), "deleted_at");
   EXPECT_EQ(str(e->getValidatorMethod()), "validateOrder");
   EXPECT_TRUE(e->isTriggerBeforeFetch());
   EXPECT_FALSE(e->isTriggerAfterFetch());
   EXPECT_FALSE(e->isTriggerBeforeInsert());
   EXPECT_FALSE(e->isTriggerAfterInsert());
   EXPECT_FALSE(e->isTriggerBeforeUpdate());
   EXPECT_TRUE(e->isTriggerAfterUpdate());
   EXPECT_FALSE(e->isTriggerBeforeDelete());
   EXPECT_TRUE(e->isTriggerAfterDelete());
   EXPECT_EQ(e->getAllMetaDataKeys(), QStringList({ "a", "b" }));
   EXPECT_EQ(str(e->getMetaData("b").toString()), "2");

   model::entity_ptr pBase = p->getListOfAllEntities()->at(0);
   EXPECT_FALSE(pBase->isAbstract());
   EXPECT_FALSE(pBase->hasTriggers());
   EXPECT_TRUE(pBase->getTableName().isEmpty());
   EXPECT_EQ(pBase->getVersion(), 0);
}

TEST(StorageJson, PropertyFieldsAndDefaults)
{
   model::project_ptr p = parseModel(withProperty(R"J({"name": "plain"}, {"id": 40, "name": "full", "type": "QString", "primary_key": true,
      "column": "full_col", "description": "d", "version": 2, "accessibility": "public", "write_accessors": false, "obsolete": true,
      "read_only": true, "get_method": "fullValue", "set_method": "putFull", "transient": true, "serializable": false,
      "index": true, "unique": true, "allow_null": false, "min_value": -5, "max_value": "zzz", "min_length": 1, "max_length": 80,
      "reg_exp": "^a+$", "force_sql_type": "VARCHAR(80)", "force_sql_alias": "f", "format": "%1", "default": "say \"hi\"",
      "decoration": "shared_ptr", "collection": "std_vector", "meta": {"TAVREL_NO_ID": "true"}})J"));
   ASSERT_NE(p, nullptr);
   const model::list_of_property & lst = p->getListOfAllEntities()->at(0)->getOwnProperties();
   ASSERT_EQ(lst.size(), 2);

   model::property_ptr d = lst.at(0);
   EXPECT_EQ(d->getType(), nullptr);
   EXPECT_FALSE(d->hasRelationship());
   EXPECT_FALSE(d->isPrimaryKey());
   EXPECT_TRUE(d->getColumnName().isEmpty());
   EXPECT_EQ(d->getAccessibility(), int(model::property::access_protected));
   EXPECT_TRUE(d->getWriteAccessors());
   EXPECT_FALSE(d->isObsolete());
   EXPECT_FALSE(d->isReadOnly());
   EXPECT_FALSE(d->isTransient());
   EXPECT_TRUE(d->isSerializable());
   EXPECT_FALSE(d->isIndex());
   EXPECT_FALSE(d->getUnique());
   EXPECT_TRUE(d->getAllowNull());
   EXPECT_FALSE(d->getMinValue().isValid());
   EXPECT_FALSE(d->getMaxLength().isValid());
   EXPECT_EQ(d->getEntity(), p->getListOfAllEntities()->at(0));

   model::property_ptr f = lst.at(1);
   EXPECT_EQ(f->getId(), 40);
   ASSERT_NE(f->getType(), nullptr);
   EXPECT_EQ(str(f->getType()->getPrimitiveType()), "QString");
   EXPECT_EQ(f->getType()->getDecoration(), int(model::property_type::decoration_shared_ptr));
   EXPECT_EQ(f->getType()->getCollection(), int(model::property_type::collection_std_vector));
   EXPECT_EQ(str(f->getType()->getDefaultValue()), "say \"hi\"");
   EXPECT_EQ(str(f->getTypeDesc(false, false)), "std::vector<std::shared_ptr<QString> >");
   EXPECT_TRUE(f->isPrimaryKey());
   EXPECT_EQ(str(f->getColumnName()), "full_col");
   EXPECT_EQ(str(f->getDescription()), "d");
   EXPECT_EQ(f->getVersion(), 2);
   EXPECT_EQ(f->getAccessibility(), int(model::property::access_public));
   EXPECT_FALSE(f->getWriteAccessors());
   EXPECT_TRUE(f->isObsolete());
   EXPECT_TRUE(f->isReadOnly());
   EXPECT_EQ(str(f->getGetMethod()), "fullValue");
   EXPECT_EQ(str(f->getSetMethod()), "putFull");
   EXPECT_TRUE(f->isTransient());
   EXPECT_FALSE(f->isSerializable());
   EXPECT_TRUE(f->isIndex());
   EXPECT_TRUE(f->getUnique());
   EXPECT_FALSE(f->getAllowNull());
   EXPECT_EQ(f->getMinValue().toLongLong(), -5);
   EXPECT_EQ(str(f->getMaxValue().toString()), "zzz");
   EXPECT_EQ(f->getMaxValue().metaType().id(), QMetaType::QString);
   EXPECT_EQ(f->getMinLength().toInt(), 1);
   EXPECT_EQ(f->getMaxLength().toInt(), 80);
   EXPECT_EQ(str(f->getRegExp()), "^a+$");
   EXPECT_EQ(str(f->getForceSqlType()), "VARCHAR(80)");
   EXPECT_EQ(str(f->getForceSqlAlias()), "f");
   EXPECT_EQ(str(f->getFormat()), "%1");
   EXPECT_TRUE(f->getMetaData("TAVREL_NO_ID").toBool());
}

TEST(StorageJson, CodedValuesByNameOrCode)
{
   model::project_ptr p = parseModel(withProperty(R"J(
      {"name": "a", "type": "int", "accessibility": 0, "decoration": 1, "collection": 1},
      {"name": "b", "type": "int", "accessibility": "private", "decoration": "qsharedpointer", "collection": "qlist"},
      {"name": "c", "type": "int", "accessibility": 2, "decoration": "optional", "collection": 2},
      {"name": "d", "type": "int", "accessibility": "protected", "decoration": 3, "collection": "none"},
      {"name": "e", "type": "int", "decoration": "none", "collection": 0},
      {"name": "r0", "relation": {"kind": "one_to_one", "target": "shop::Order"}},
      {"name": "r1", "relation": {"kind": 1, "target": "shop::Order"}},
      {"name": "r2", "relation": {"kind": "many_to_one", "target": "shop::Order"}},
      {"name": "r3", "relation": {"kind": 3, "target": "shop::Order", "foreign_key": "a_id", "foreign_key_owner": "b_id", "extra_table": "t_ab"}})J"));
   ASSERT_NE(p, nullptr);
   model::entity_ptr e = p->getListOfAllEntities()->at(0);
   auto type = [& e](const char * sz) { return e->getPropertyByName(sz)->getType(); };
   EXPECT_EQ(e->getPropertyByName("a")->getAccessibility(), 0);
   EXPECT_EQ(e->getPropertyByName("b")->getAccessibility(), 2);
   EXPECT_EQ(e->getPropertyByName("c")->getAccessibility(), 2);
   EXPECT_EQ(e->getPropertyByName("d")->getAccessibility(), 1);
   EXPECT_EQ(type("a")->getDecoration(), 1);
   EXPECT_EQ(type("b")->getDecoration(), 2);
   EXPECT_EQ(type("c")->getDecoration(), 3);
   EXPECT_EQ(type("d")->getDecoration(), 3);
   EXPECT_EQ(type("e")->getDecoration(), 0);
   EXPECT_EQ(type("a")->getCollection(), 1);
   EXPECT_EQ(type("b")->getCollection(), 1);
   EXPECT_EQ(type("c")->getCollection(), 2);
   EXPECT_EQ(type("d")->getCollection(), 0);
   EXPECT_EQ(type("e")->getCollection(), 0);
   for (int i = 0; i < 4; ++i)
   {
      model::property_ptr pRel = e->getPropertyByName(QString("r%1").arg(i));
      ASSERT_TRUE(pRel->hasRelationship());
      EXPECT_EQ(pRel->getRelation()->getType(), i);
      EXPECT_EQ(pRel->getRelation()->getEntityTarget(), e);
      EXPECT_EQ(pRel->getRelation()->getProperty(), pRel);
      EXPECT_EQ(pRel->getType(), nullptr);
   }
   model::relationship_ptr r3 = e->getPropertyByName("r3")->getRelation();
   EXPECT_EQ(str(r3->getForeignKey()), "a_id");
   EXPECT_EQ(str(r3->getForeignKeyOwner()), "b_id");
   EXPECT_EQ(str(r3->getExtraTable()), "t_ab");
}

TEST(StorageJson, IdsAssignedPerKindInDocumentOrder)
{
   model::project_ptr p = parseModel(R"J({"name": "Shop",
      "entities": [
        {"name": "A", "properties": [{"name": "a1", "type": "int"}, {"name": "a2", "type": "int", "id": 2}]},
        {"name": "B", "id": 2, "properties": [{"name": "b1", "type": "int"}]},
        {"name": "C", "properties": [{"name": "c1", "type": "int", "id": 0}, {"name": "c2", "type": "int"}]},
        {"name": "D", "id": 0}, {"name": "E", "id": 0}],
      "enumerations": [{"name": "E1", "values": []}, {"name": "E2", "id": 0}, {"name": "E3"}]})J");
   ASSERT_NE(p, nullptr);
   const model::list_of_entity & lst = (* p->getListOfAllEntities());
   EXPECT_EQ(lst.at(0)->getId(), 1);
   EXPECT_EQ(lst.at(1)->getId(), 2);
   EXPECT_EQ(lst.at(2)->getId(), 3);  // 2 is taken by B
   EXPECT_EQ(lst.at(3)->getId(), 0);
   EXPECT_EQ(lst.at(4)->getId(), 0);
   // Property ids are unique across the project.
   EXPECT_EQ(lst.at(0)->getOwnProperties().at(0)->getId(), 1);
   EXPECT_EQ(lst.at(0)->getOwnProperties().at(1)->getId(), 2);
   EXPECT_EQ(lst.at(1)->getOwnProperties().at(0)->getId(), 3);
   EXPECT_EQ(lst.at(2)->getOwnProperties().at(0)->getId(), 0);
   EXPECT_EQ(lst.at(2)->getOwnProperties().at(1)->getId(), 4);
   const model::list_of_enumeration & lstEnums = (* p->getListOfAllEnums());
   EXPECT_EQ(lstEnums.at(0)->getId(), 1);
   EXPECT_EQ(lstEnums.at(1)->getId(), 0);
   EXPECT_EQ(lstEnums.at(2)->getId(), 2);
   EXPECT_EQ(p->getEntityById(0), lst.at(3));
   EXPECT_EQ(p->getEntityById(3), lst.at(2));
}

TEST(StorageJson, EnumerationFieldsAndDerivedType)
{
   model::project_ptr p = parseModel(R"J({"name": "Shop",
      "entities": [{"name": "Order", "namespace": "shop", "properties": [
         {"name": "status", "enumeration": "shop::Status", "decoration": "optional", "default": "shop::Status::New"},
         {"name": "code", "type": "int", "enumeration": "Plain"}]}],
      "enumerations": [
         {"name": "Status", "namespace": "shop", "use_qt_enum": true, "description": "Order state", "version": 4,
          "values": [{"key": "New", "value": "0"}, {"key": "Paid", "value": "1"}, {"key": "Later"}]},
         {"name": "Plain", "enum_name": "PlainValues", "meta": {"x": "y"}}]})J");
   ASSERT_NE(p, nullptr);
   model::enumeration_ptr pStatus = p->getEnumerationByKey("shop::Status");
   ASSERT_NE(pStatus, nullptr);
   EXPECT_TRUE(pStatus->getUseQtEnum());
   EXPECT_EQ(str(pStatus->getEnumName()), "enum_Status");
   EXPECT_EQ(str(pStatus->getDescription()), "Order state");
   EXPECT_EQ(pStatus->getVersion(), 4);
   ASSERT_EQ(pStatus->getAllKeyValue().size(), 3);
   EXPECT_EQ(str(pStatus->getAllKeyValue().getKeyByIndex(1)), "Paid");
   EXPECT_EQ(str(pStatus->getAllKeyValue().getByIndex(1)), "1");
   EXPECT_TRUE(pStatus->getAllKeyValue().getByIndex(2).isEmpty());
   model::enumeration_ptr pPlain = p->getEnumerationByKey("Plain");
   EXPECT_FALSE(pPlain->getUseQtEnum());
   EXPECT_EQ(str(pPlain->getEnumName()), "PlainValues");
   EXPECT_EQ(str(pPlain->getMetaData("x").toString()), "y");

   model::entity_ptr e = p->getListOfAllEntities()->at(0);
   model::property_ptr pProp = e->getPropertyByName("status");
   ASSERT_NE(pProp->getType(), nullptr);
   EXPECT_EQ(str(pProp->getType()->getPrimitiveType()), "shop::Status::enum_Status");
   EXPECT_EQ(str(pProp->getTypeDesc(false, false)), "std::optional<shop::Status::enum_Status>");
   EXPECT_EQ(pProp->getType()->getEnumeration(), pStatus);
   EXPECT_EQ(str(pProp->getType()->getDefaultValue()), "shop::Status::New");
   model::property_ptr pCode = e->getPropertyByName("code");
   EXPECT_EQ(str(pCode->getType()->getPrimitiveType()), "int");
   EXPECT_EQ(pCode->getType()->getEnumeration(), pPlain);
}

TEST(StorageJson, NamespaceWithEmptyPartsIsKept)
{
   model::project_ptr p = parseModel(R"J({"name": "Shop", "entities": [{"name": "X", "namespace": "a::::b"}, {"name": "Y", "namespace": "::a"}]})J");
   ASSERT_NE(p, nullptr);
   EXPECT_EQ(str(p->getListOfAllEntities()->at(0)->getKey()), "a::::b::X");
   EXPECT_EQ(str(p->getListOfAllEntities()->at(1)->getKey()), "::a::Y");
}

TEST(StorageJson, SyntaxErrorGivesLineAndColumn)
{
   EXPECT_EQ(str(parseError("{\n  \"name\": \"Shop\",\n  \"entities\": [\n    {\"name\": \"A\" \"namespace\": \"x\"}\n  ]\n}\n")),
             "model.json:4:18: JSON syntax error: unterminated object");
   EXPECT_EQ(str(parseError("{\n  \"name\": \"Shop\",\n  \"entities\": [\n    {\"name\": \"A\", }\n  ]\n}\n", "dir/other.json")),
             "dir/other.json:4:19: JSON syntax error: object is missing after a comma");
   // Reported past the blanks that follow the wrong character: the position is still that character's.
   EXPECT_EQ(str(parseError("{\n  \"name\": \"Shop\",\n  \"entities\": [\n    {\"name\": \"A\" }}\n  ]\n}")),
             "model.json:4:19: JSON syntax error: missing value separator");
}

TEST(StorageJson, SyntaxErrorColumnCountsCharacters)
{
   EXPECT_EQ(str(parseError("{\"name\": \"Shop\", \"entities\": [\n{\"description\": \"K\xc3\xbc" "che\", \"name\": \"A\" \"x\": 1}]}")),
             "model.json:2:38: JSON syntax error: unterminated object");
}

TEST(StorageJson, DocumentMustBeAnObject)
{
   EXPECT_EQ(str(parseError("[1, 2]")), "model.json: the document must be a JSON object with \"name\", \"entities\" and \"enumerations\"");
}

TEST(StorageJson, ByteOrderMarkIsAccepted)
{
   model::project_ptr p = parseModel("\xEF\xBB\xBF{\"name\": \"Shop\"}");
   ASSERT_NE(p, nullptr);
   EXPECT_EQ(str(p->getName()), "Shop");
}

TEST(StorageJson, UnknownFields)
{
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "author": "me"})J")), "model.json: author: unknown field");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A"}, {"name": "B", "colour": "red"}]})J")),
             "model.json: entities[1].colour: unknown field");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int"}, {"name": "b", "type": "int", "nullable": true})J"))),
             "model.json: entities[0].properties[1].nullable: unknown field");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "relation": {"kind": "one_to_one", "target": "shop::Order", "cascade": true}})J"))),
             "model.json: entities[0].properties[0].relation.cascade: unknown field");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "E", "values": [{"key": "A", "value": "1", "label": "a"}]}]})J")),
             "model.json: enumerations[0].values[0].label: unknown field");
}

TEST(StorageJson, WrongTypes)
{
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "abstract": "yes"}]})J")),
             "model.json: entities[0].abstract: expected a boolean, got a string");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "version": 1.5}]})J")),
             "model.json: entities[0].version: expected an integer, got a number");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "properties": {}}]})J")),
             "model.json: entities[0].properties: expected an array, got an object");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "meta": {"k": 1}}]})J")),
             "model.json: entities[0].meta.k: expected a string, got a number");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": {"name": "A"}})J")),
             "model.json: entities: expected an array, got an object");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": ["A"]})J")),
             "model.json: entities[0]: expected an object, got a string");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": 5})J"))),
             "model.json: entities[0].properties[0].type: expected a string, got a number");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int", "min_length": 1.5})J"))),
             "model.json: entities[0].properties[0].min_length: expected an integer, got a number");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int", "max_value": true})J"))),
             "model.json: entities[0].properties[0].max_value: expected a number or a string, got a boolean");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "id": -1}]})J")),
             "model.json: entities[0].id: -1 is out of range");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "E", "values": [{"key": "A", "value": 1}]}]})J")),
             "model.json: enumerations[0].values[0].value: expected a string, got a number");
}

TEST(StorageJson, UnknownCodedValues)
{
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int", "decoration": "unique_ptr"})J"))),
             "model.json: entities[0].properties[0].decoration: unknown value 'unique_ptr', expected one of \"none\", \"shared_ptr\", "
             "\"qsharedpointer\", \"optional\" (or a code from 0 to 3)");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int", "collection": 3})J"))),
             "model.json: entities[0].properties[0].collection: unknown code 3, expected one of \"none\", \"qlist\", \"std_vector\" "
             "(or a code from 0 to 2)");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int", "accessibility": "friend"})J"))),
             "model.json: entities[0].properties[0].accessibility: unknown value 'friend', expected one of \"public\", \"protected\", "
             "\"private\" (or a code from 0 to 2)");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "relation": {"kind": "many_to_few", "target": "shop::Order"}})J"))),
             "model.json: entities[0].properties[0].relation.kind: unknown value 'many_to_few', expected one of \"one_to_one\", "
             "\"one_to_many\", \"many_to_one\", \"many_to_many\" (or a code from 0 to 3)");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "triggers": ["before_save"]}]})J")),
             "model.json: entities[0].triggers[0]: unknown trigger 'before_save', expected one of before_fetch, after_fetch, "
             "before_insert, after_insert, before_update, after_update, before_delete, after_delete");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "triggers": ["after_fetch", "after_fetch"]}]})J")),
             "model.json: entities[0].triggers[1]: trigger 'after_fetch' given more than once");
}

TEST(StorageJson, MissingRequiredFields)
{
   EXPECT_EQ(str(parseError(R"J({"entities": []})J")), "model.json: missing field 'name'");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"namespace": "shop"}]})J")), "model.json: entities[0]: missing field 'name'");
   EXPECT_EQ(str(parseError(withProperty(R"J({"type": "int"})J"))), "model.json: entities[0].properties[0]: missing field 'name'");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "relation": {"target": "shop::Order"}})J"))),
             "model.json: entities[0].properties[0].relation: missing field 'kind'");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "relation": {"kind": 0}})J"))),
             "model.json: entities[0].properties[0].relation: missing field 'target'");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "E", "values": [{"value": "1"}]}]})J")),
             "model.json: enumerations[0].values[0]: missing field 'key'");
}

TEST(StorageJson, DanglingReferences)
{
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A"}, {"name": "B", "parent": "shop::A"}]})J")),
             "model.json: entities[1].parent: parent 'shop::A' is not an entity of the document");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "relation": {"kind": "one_to_many", "target": "shop::Item"}})J"))),
             "model.json: entities[0].properties[0].relation.target: relation target 'shop::Item' is not an entity of the document");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "enumeration": "shop::Status"})J"))),
             "model.json: entities[0].properties[0].enumeration: enumeration 'shop::Status' is not an enumeration of the document");
   // An entity key is not an enumeration, and the other way round.
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "parent": "E"}], "enumerations": [{"name": "E"}]})J")),
             "model.json: entities[0].parent: parent 'E' is not an entity of the document");
}

TEST(StorageJson, NamesMustBeIdentifiers)
{
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "../x"}]})J")),
             "model.json: entities[0].name: '../x' is not a valid C++ identifier");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a b", "type": "int"})J"))),
             "model.json: entities[0].properties[0].name: 'a b' is not a valid C++ identifier");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "X", "namespace": "../x"}]})J")),
             "model.json: entities[0].namespace: namespace '../x' : part '../x' is not a valid C++ identifier");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "X", "namespace": "a::b c"}]})J")),
             "model.json: entities[0].namespace: namespace 'a::b c' : part 'b c' is not a valid C++ identifier");
   EXPECT_EQ(str(parseError(R"J({"name": "../Shop"})J")), "model.json: name: '../Shop' is not a valid C++ identifier");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "E", "values": [{"key": "1st"}]}]})J")),
             "model.json: enumerations[0].values[0].key: '1st' is not a valid C++ identifier");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "enum"}]})J")),
             "model.json: enumerations[0].name: 'enum' is a C++ keyword");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": ""}]})J")), "model.json: entities[0].name: must not be empty");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "validator_method": "check it"}]})J")),
             "model.json: entities[0].validator_method: 'check it' is not a valid C++ identifier");
}

TEST(StorageJson, DuplicateKeys)
{
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "namespace": "s"}, {"name": "A", "namespace": "s"}]})J")),
             "model.json: entities[1]: key 's::A' is already used by entities[0]");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "E"}, {"name": "E"}]})J")),
             "model.json: enumerations[1]: key 'E' is already used by enumerations[0]");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "E"}], "enumerations": [{"name": "E"}]})J")),
             "model.json: entities[0]: key 'E' is already used by enumerations[0]");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int"}, {"name": "a", "type": "QString"})J"))),
             "model.json: entities[0].properties[1].name: property 'a' is already defined by properties[0]");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "enumerations": [{"name": "E", "values": [{"key": "A"}, {"key": "B"}, {"key": "A"}]}]})J")),
             "model.json: enumerations[0].values[2].key: key 'A' is already used by values[0]");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "id": 4}, {"name": "B", "id": 4}]})J")),
             "model.json: entities[1].id: id 4 is already used by entities[0] (ids of entities must be unique)");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "properties": [{"name": "a", "type": "int", "id": 9}]},
                                                             {"name": "B", "properties": [{"name": "b", "type": "int", "id": 9}]}]})J")),
             "model.json: entities[1].properties[0].id: id 9 is already used by entities[0].properties[0] (ids of properties must be unique)");
}

TEST(StorageJson, RepeatedMembersOfAnObject)
{
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "entities": [{"name": "A", "table": "t1", "table": "t2"}]})J")),
             "model.json: entities[0].table: field given more than once");
   EXPECT_EQ(str(parseError(R"J({"name": "Shop", "name": "Shop"})J")), "model.json: name: field given more than once");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "type": "int", "meta": {"k\u0041": "1", "kA": "2"}})J"))),
             "model.json: entities[0].properties[0].meta.kA: field given more than once");
}

TEST(StorageJson, TypeDetailsNeedAType)
{
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "decoration": "optional"})J"))),
             "model.json: entities[0].properties[0].decoration: needs a type: give \"type\" or \"enumeration\"");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "a", "relation": {"kind": 0, "target": "shop::Order"}, "default": "x"})J"))),
             "model.json: entities[0].properties[0].default: needs a type: give \"type\" or \"enumeration\"");
   // Values equal to the defaults say nothing and are accepted.
   model::project_ptr p = parseModel(withProperty(R"J({"name": "a", "decoration": "none", "collection": 0, "default": ""})J"));
   ASSERT_NE(p, nullptr);
   EXPECT_EQ(onlyProperty(p)->getType(), nullptr);
}

TEST(StorageJson, EveryErrorIsReportedOnItsOwnLine)
{
   const QString sError = parseError(R"J({"name": "Shop", "entities": [{"name": "a b", "colour": 1, "parent": "Nope"}]})J");
   EXPECT_EQ(str(sError), "model.json: entities[0].colour: unknown field\n"
                          "model.json: entities[0].name: 'a b' is not a valid C++ identifier\n"
                          "model.json: entities[0].parent: parent 'Nope' is not an entity of the document");
}

TEST(StorageJson, ReadJsonFileNamesTheFile)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sFile = dir.filePath("bad.json");
   ASSERT_TRUE(test_support::writeAll(sFile, R"J({"name": "Shop", "entities": [{"name": "A", "parent": "B"}]})J"));
   model::project_ptr p;
   zy::ZyBool ok = storage::project_storage::readJsonFile(sFile, p);
   EXPECT_FALSE(ok.getValue());
   EXPECT_EQ(str(ok.getDesc()), str(sFile + ": entities[0].parent: parent 'B' is not an entity of the document"));
   EXPECT_EQ(p, nullptr);

   ok = storage::project_storage::readJsonFile(dir.filePath("missing.json"), p);
   EXPECT_FALSE(ok.getValue());
   EXPECT_TRUE(ok.getDesc().startsWith(dir.filePath("missing.json") + ": cannot read the file: ")) << str(ok.getDesc());

   ASSERT_TRUE(test_support::writeAll(sFile, R"J({"name": "Shop"})J"));
   ok = storage::project_storage::readJsonFile(sFile, p);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   EXPECT_EQ(str(p->getLocation()), str(dir.path()));
   EXPECT_TRUE(p->getFilePath().isEmpty());
}

TEST(StorageJson, DumpOfShopExampleRoundTrips)
{
   model::project_ptr p;
   zy::ZyBool ok = storage::project_storage::readJsonFile(test_support::examplePath("shop.json"), p);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   const QByteArray dump = storage::project_storage::toJson(* p);
   model::project_ptr q = parseModel(dump);
   ASSERT_NE(q, nullptr);
   EXPECT_EQ(str(QString::fromUtf8(storage::project_storage::toJson(* q))), str(QString::fromUtf8(dump)));
   // Stable: the same model gives the same text.
   EXPECT_EQ(storage::project_storage::toJson(* p), dump);

   EXPECT_EQ(str(q->getName()), "SHOP");
   EXPECT_EQ(q->getListOfAllEntities()->size(), 8);
   EXPECT_EQ(q->getListOfAllEnums()->size(), 2);
   for (qsizetype i = 0; i < p->getListOfAllEntities()->size(); ++i)
   {
      model::entity_ptr a = p->getListOfAllEntities()->at(i);
      model::entity_ptr b = q->getListOfAllEntities()->at(i);
      EXPECT_EQ(str(a->getKey()), str(b->getKey()));
      EXPECT_EQ(a->getId(), b->getId());
      ASSERT_EQ(a->getOwnProperties().size(), b->getOwnProperties().size());
      for (qsizetype j = 0; j < a->getOwnProperties().size(); ++j)
      {
         EXPECT_EQ(str(a->getOwnProperties().at(j)->getTypeDesc(false, false)), str(b->getOwnProperties().at(j)->getTypeDesc(false, false)));
         EXPECT_EQ(a->getOwnProperties().at(j)->getId(), b->getOwnProperties().at(j)->getId());
      }
   }
}

TEST(StorageJson, DumpKeepsEveryField)
{
   const QByteArray json = R"J({"name": "Shop",
      "entities": [
        {"id": 0, "name": "Base", "namespace": "a::::b", "version": 1, "description": "multi\nline \"quoted\" \\ text",
         "table": "t_base", "abstract": true, "read_only": true, "soft_delete_column": "gone", "validator_method": "check",
         "triggers": ["before_fetch", "after_fetch", "before_insert", "after_insert", "before_update", "after_update", "before_delete", "after_delete"],
         "meta": {"k1": "v1", "k0": ""},
         "properties": [
           {"id": 0, "name": "id", "type": "unsigned long long", "primary_key": true, "column": "c", "description": "tab\there",
            "version": 5, "accessibility": "private", "write_accessors": false, "obsolete": true, "read_only": true,
            "get_method": "g", "set_method": "s", "transient": true, "serializable": false, "index": true, "unique": true,
            "allow_null": false, "min_value": 1.5, "max_value": "9", "min_length": 0, "max_length": 7, "reg_exp": "[a-z]",
            "force_sql_type": "BIGINT", "force_sql_alias": "al", "format": "%L1", "default": "42", "decoration": 2, "collection": 1,
            "meta": {"m": "n"}},
           {"name": "e", "enumeration": "E", "collection": "std_vector", "default": "E::A"},
           {"name": "r", "relation": {"kind": "many_to_many", "target": "a::::b::Base", "foreign_key": "x", "foreign_key_owner": "y", "extra_table": "z"}},
           {"name": "ut", "type": "QString", "enumeration": "E"}
         ]},
        {"name": "Child", "parent": "a::::b::Base"}
      ],
      "enumerations": [{"id": 7, "name": "E", "enum_name": "EE", "use_qt_enum": true, "description": "d", "version": 2,
                        "meta": {"q": "r"}, "values": [{"key": "A", "value": "1"}, {"key": "B", "value": ""}]}]})J";
   model::project_ptr p = parseModel(json);
   ASSERT_NE(p, nullptr);
   const QByteArray dump = storage::project_storage::toJson(* p);
   model::project_ptr q = parseModel(dump);
   ASSERT_NE(q, nullptr);
   EXPECT_EQ(str(QString::fromUtf8(storage::project_storage::toJson(* q))), str(QString::fromUtf8(dump)));

   model::entity_ptr e = q->getListOfAllEntities()->at(0);
   EXPECT_EQ(e->getId(), 0);
   EXPECT_EQ(str(e->getNamespace()), "a::::b");
   EXPECT_EQ(str(e->getDescription()), "multi\nline \"quoted\" \\ text");
   EXPECT_EQ(str(e->getSoftDeleteColumn()), "gone");
   EXPECT_TRUE(e->isTriggerBeforeFetch() && e->isTriggerAfterFetch() && e->isTriggerBeforeInsert() && e->isTriggerAfterInsert() &&
               e->isTriggerBeforeUpdate() && e->isTriggerAfterUpdate() && e->isTriggerBeforeDelete() && e->isTriggerAfterDelete());
   EXPECT_EQ(e->getAllMetaDataKeys(), QStringList({ "k0", "k1" }));
   EXPECT_EQ(e->getMetaData("k0").metaType().id(), QMetaType::QString);

   model::property_ptr pId = e->getOwnProperties().at(0);
   EXPECT_EQ(pId->getId(), 0);
   EXPECT_EQ(str(pId->getTypeDesc(false, false)), "QList<QSharedPointer<unsigned long long> >");
   EXPECT_EQ(pId->getMinValue().metaType().id(), QMetaType::Double);
   EXPECT_EQ(pId->getMinValue().toDouble(), 1.5);
   EXPECT_EQ(pId->getMaxValue().metaType().id(), QMetaType::QString);
   EXPECT_EQ(pId->getMinLength().toInt(), 0);
   EXPECT_TRUE(pId->getMinLength().isValid());
   EXPECT_EQ(str(pId->getDescription()), "tab\there");
   EXPECT_EQ(str(pId->getType()->getDefaultValue()), "42");
   EXPECT_EQ(pId->getAccessibility(), 2);

   model::property_ptr pEnum = e->getOwnProperties().at(1);
   EXPECT_EQ(str(pEnum->getTypeDesc(false, false)), "std::vector<E::enum_E>");
   EXPECT_TRUE(pEnum->getType()->isFromEnumeration());
   model::property_ptr pTyped = e->getOwnProperties().at(3);
   EXPECT_EQ(str(pTyped->getType()->getPrimitiveType()), "QString");
   EXPECT_FALSE(pTyped->getType()->isFromEnumeration());

   model::property_ptr pRel = e->getOwnProperties().at(2);
   EXPECT_EQ(str(pRel->getTypeDesc(false, false)), "zy::ZyCollection<QList<QSharedPointer<unsigned long long> >, std::shared_ptr<a::::b::Base> >");

   model::enumeration_ptr pE = q->getListOfAllEnums()->at(0);
   EXPECT_EQ(pE->getId(), 7);
   EXPECT_EQ(str(pE->getEnumName()), "EE");
   EXPECT_EQ(str(pE->getMetaData("q").toString()), "r");
   EXPECT_EQ(pE->getAllKeyValue().size(), 2);
   EXPECT_EQ(q->getListOfAllEntities()->at(1)->getParent(), e);
}
