#include <gtest/gtest.h>

#include "test_support.h"
#include "test_model_helpers.h"

using namespace model_test;

namespace {

// A small valid model the tests break one piece at a time.
struct valid_model
{
   model::project_ptr pProject = std::make_shared<model::project>();
   model::entity_ptr pBase = makeEntity("shop", "Base");
   model::entity_ptr pOrder = makeEntity("shop", "Order", "shop::Base");
   model::enumeration_ptr pStatus = makeEnumeration("shop", "Status");

   valid_model()
   {
      pProject->setName("SHOP");
      addProperty(pBase, "id", "long", true);
      addProperty(pOrder, "paid", "bool");
      addProperty(pOrder, "status", "")->setEnumerationKey("shop::Status");
      addRelation(pBase, "owner", model::relationship::many_to_one, "shop::Order");
      pStatus->addKeyValue("New", "0");
      pStatus->addKeyValue("Paid", "1");
      pProject->addEntity(pBase);
      pProject->addEntity(pOrder);
      pProject->addEnumeration(pStatus);
      pProject->resolveLinks();
   }

   QStringList check() const { return messages(pProject->checkSchema()); }
};

} // namespace

TEST(ModelCheckSchema, ValidModelHasNoProblem)
{
   valid_model m;
   EXPECT_EQ(lines(m.check()), lines(QStringList()));
}

TEST(ModelCheckSchema, ShopExampleHasNoProblem)
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::readJsonFile(test_support::examplePath("shop.json"), p);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   EXPECT_EQ(lines(messages(p->checkSchema())), lines(QStringList()));
}

TEST(ModelCheckSchema, PropertyWithoutType)
{
   valid_model m;
   addProperty(m.pOrder, "x", "");
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Entity 'shop::Order' : property 'x' has no type" })));
   EXPECT_EQ(str(m.pProject->checkSchema().at(0).getPath()), "entities[1].properties[2]");
}

TEST(ModelCheckSchema, TypeWithEmptyTextCountsAsMissing)
{
   valid_model m;
   auto p = addProperty(m.pOrder, "x", "");
   p->setType(std::make_shared<model::property_type>());
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Entity 'shop::Order' : property 'x' has no type" })));
}

TEST(ModelCheckSchema, InvalidNames)
{
   valid_model m;
   m.pOrder->setName("Or der");
   addProperty(m.pBase, "../x", "int");
   addProperty(m.pBase, "class", "int");
   addProperty(m.pBase, "", "int");
   m.pStatus->addKeyValue("a b", "2");
   m.pStatus->setName("1Status");
   m.pStatus->setEnumName("bad name");
   // Keep the references consistent with the renamed items.
   m.pProject->getListOfAllEntities()->at(1)->getPropertyByName("status")->setEnumerationKey("shop::1Status");
   m.pBase->getPropertyByName("owner")->getRelation()->setTargetKey("shop::Or der");
   EXPECT_EQ(lines(m.check()), lines(QStringList({
      "Entity 'shop::Base' : property '../x' : name is not a valid C++ identifier",
      "Entity 'shop::Base' : property 'class' : name is a C++ keyword",
      "Entity 'shop::Base' : property #5 has no name",
      "Entity 'shop::Or der' : name 'Or der' is not a valid C++ identifier",
      "Enumeration 'shop::1Status' : name '1Status' is not a valid C++ identifier",
      "Enumeration 'shop::1Status' : enum name 'bad name' is not a valid C++ identifier",
      "Enumeration 'shop::1Status' : value key 'a b' is not a valid C++ identifier" })));
}

TEST(ModelCheckSchema, ItemsWithoutName)
{
   valid_model m;
   m.pProject->addEntity(makeEntity("", ""));
   m.pProject->addEnumeration(makeEnumeration("", ""));
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Entity #3 has no name", "Enumeration #2 has no name" })));
}

TEST(ModelCheckSchema, ProjectName)
{
   valid_model m;
   m.pProject->setName("");
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Project has no name" })));
   m.pProject->setName("../shop");
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Project name '../shop' is not a valid C++ identifier" })));
}

TEST(ModelCheckSchema, InvalidNamespaces)
{
   valid_model m;
   m.pProject->addEntity(makeEntity("a::::b", "X"));
   m.pProject->addEntity(makeEntity("::a", "Y"));
   m.pProject->addEntity(makeEntity("a::", "Z"));
   m.pProject->addEntity(makeEntity("a::1b", "W"));
   m.pProject->addEntity(makeEntity("a:b", "V"));
   auto pEnum = makeEnumeration("x::::y", "E");
   m.pProject->addEnumeration(pEnum);
   for (const auto & p : (* m.pProject->getListOfAllEntities())) { if (p->getOwnProperties().isEmpty()) { addProperty(p, "id", "long", true); } }
   EXPECT_EQ(lines(m.check()), lines(QStringList({
      "Entity 'a::::b::X' : namespace 'a::::b' has an empty part",
      "Entity '::a::Y' : namespace '::a' has an empty part",
      "Entity 'a::::Z' : namespace 'a::' has an empty part",
      "Entity 'a::1b::W' : namespace 'a::1b' part '1b' is not a valid C++ identifier",
      "Entity 'a:b::V' : namespace 'a:b' part 'a:b' is not a valid C++ identifier",
      "Enumeration 'x::::y::E' : namespace 'x::::y' has an empty part" })));
}

TEST(ModelCheckSchema, DuplicateKeysAndNames)
{
   valid_model m;
   auto pAgain = makeEntity("shop", "Order");
   addProperty(pAgain, "id", "long", true);
   m.pProject->addEntity(pAgain);
   m.pProject->addEnumeration(makeEnumeration("shop", "Status"));
   m.pProject->addEnumeration(makeEnumeration("shop", "Base"));
   addProperty(m.pOrder, "paid", "int");
   EXPECT_EQ(lines(m.check()), lines(QStringList({
      "Entity 'shop::Order' : property 'paid' is defined more than once",
      "Entity 'shop::Order' is defined more than once (first as entity #2)",
      "Enumeration 'shop::Status' is defined more than once (first as enumeration #1)",
      "Enumeration 'shop::Base' has the same key as entity #1" })));
}

TEST(ModelCheckSchema, DanglingReferences)
{
   valid_model m;
   m.pBase->setParentKey("shop::Root");
   m.pOrder->getPropertyByName("status")->setEnumerationKey("shop::Nope");
   m.pBase->getPropertyByName("owner")->getRelation()->setTargetKey("shop::Gone");
   addRelation(m.pOrder, "empty", model::relationship::one_to_one, "");
   EXPECT_EQ(lines(m.check()), lines(QStringList({
      "Entity 'shop::Base' : parent 'shop::Root' does not exist",
      "Entity 'shop::Base' : property 'owner' has relation target 'shop::Gone' which does not exist",
      "Entity 'shop::Order' : property 'status' refers to enumeration 'shop::Nope' which does not exist",
      "Entity 'shop::Order' : property 'empty' has a relation without target" })));
}

TEST(ModelCheckSchema, MoreThanOnePrimaryKey)
{
   valid_model m;
   addProperty(m.pBase, "code", "QString", true);
   addProperty(m.pBase, "other", "QString", true);
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Entity 'shop::Base' has more than one primary key ('id', 'code', 'other')" })));
}

TEST(ModelCheckSchema, InheritanceCyclesOncePerCycle)
{
   valid_model m;
   auto pA = makeEntity("c", "A", "c::C");
   auto pB = makeEntity("c", "B", "c::A");
   auto pC = makeEntity("c", "C", "c::B");
   auto pD = makeEntity("c", "D", "c::B");  // leads into the cycle, not part of it
   auto pSelf = makeEntity("c", "Self", "c::Self");
   for (auto p : { pD, pB, pA, pC, pSelf }) { addProperty(p, "x", "int"); m.pProject->addEntity(p); }
   m.pProject->resolveLinks();
   EXPECT_EQ(lines(m.check()), lines(QStringList({ "Entity 'c::B' : inheritance cycle c::B -> c::A -> c::C -> c::B",
                                      "Entity 'c::Self' : inheritance cycle c::Self -> c::Self" })));
}

TEST(ModelCheckSchema, InvalidCodesAndMethodNames)
{
   valid_model m;
   auto p = addProperty(m.pOrder, "x", "int");
   p->getType()->setDecoration(9);
   p->getType()->setCollection(-1);
   p->setAccessibility(3);
   p->setGetMethod("return m_x; }");
   p->setSetMethod("m_x = val;");
   addRelation(m.pOrder, "r", 4, "shop::Base");
   m.pOrder->setValidatorMethod("validate()");
   EXPECT_EQ(lines(m.check()), lines(QStringList({
      "Entity 'shop::Order' : validator method 'validate()' is not a valid C++ identifier",
      "Entity 'shop::Order' : property 'x' has an invalid decoration code 9",
      "Entity 'shop::Order' : property 'x' has an invalid collection code -1",
      "Entity 'shop::Order' : property 'x' has an invalid accessibility code 3",
      "Entity 'shop::Order' : property 'r' has an invalid relation kind 4",
      "Entity 'shop::Order' : property 'x' : get method 'return m_x; }' has a '}' that does not close a bracket of its own, which would end the code it is written in early" })));
}

TEST(ModelCheckWarnings, ProjectNameNotUpperCase)
{
   valid_model m;
   EXPECT_EQ(lines(m.pProject->checkWarnings()), lines(QStringList()));
   m.pProject->setName("Shop");
   const QStringList lst = m.pProject->checkWarnings();
   ASSERT_EQ(lst.size(), 1);
   EXPECT_EQ(str(lst.at(0)), "Project 'Shop' : the generated CMakeLists.txt sets its file lists as Shop_HEADERS and Shop_SRCS but "
                             "reads them as SHOP_HEADERS and SHOP_SRCS (the upper-cased project name), so the CMake build of the "
                             "generated code finds no files; rename the project from 'Shop' to 'SHOP' (the \"name\" of the JSON "
                             "model) to build with CMake");

   auto pEmpty = std::make_shared<model::project>();
   pEmpty->setName("Shop");
   EXPECT_EQ(lines(pEmpty->checkWarnings()), lines(QStringList()));
}

TEST(ModelCheckWarnings, EntityWithoutPrimaryKey)
{
   valid_model m;
   auto pNote = makeEntity("shop", "Note");
   addProperty(pNote, "text", "QString");
   m.pProject->addEntity(pNote);
   m.pProject->resolveLinks();
   EXPECT_EQ(lines(m.pProject->checkWarnings()), lines(QStringList({
      "Entity 'shop::Note' has no primary key, neither its own nor inherited: the generated persistence code (keyed lists, "
      "fetch by id, relation loading) needs one" })));
}

TEST(ModelCheckWarnings, RelationWithInheritedKeyUnderPimpl)
{
   valid_model m;
   addRelation(m.pOrder, "parent_order", model::relationship::many_to_one, "shop::Order");
   addRelation(m.pOrder, "children", model::relationship::one_to_many, "shop::Order");
   const QStringList lst = m.pProject->checkWarnings();
   EXPECT_EQ(lines(lst), lines(QStringList({
      "Entity 'shop::Order' : with the PIMPL idiom on, the generated relation code of 'parent_order', 'children' uses the primary "
      "key 'id' inherited from 'shop::Base', which is not a member of this class's private implementation; the generated code "
      "does not compile with PIMPL (it does without)" })));

   // An own key removes the warning.
   addProperty(m.pOrder, "order_id", "long", true);
   EXPECT_EQ(lines(m.pProject->checkWarnings()), lines(QStringList()));
}

TEST(ModelCheckWarnings, ShopExample)
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::readJsonFile(test_support::examplePath("shop.json"), p);
   ASSERT_TRUE(ok.getValue()) << str(ok.getDesc());
   // The example is named so that its CMake project builds: only the PIMPL warnings remain.
   const QStringList lst = p->checkWarnings();
   ASSERT_EQ(lst.size(), 5) << str(lst.join("\n"));
   const char * aszRelated[] = { "shop::Customer", "shop::Category", "shop::Product", "shop::sales::Order", "shop::sales::OrderItem" };
   for (int i = 0; i < 5; ++i)
   {
      EXPECT_TRUE(lst.at(i).startsWith(QString("Entity '%1' : with the PIMPL idiom on").arg(aszRelated[i]))) << str(lst.at(i));
   }
   EXPECT_EQ(lst, p->checkWarnings(true));
   // Without PIMPL the example opens without a warning.
   EXPECT_EQ(lines(p->checkWarnings(false)), lines(QStringList()));
}

TEST(ModelCheckWarnings, PimplOnlyWarningsLeftOutWithoutPimpl)
{
   valid_model m;
   addRelation(m.pOrder, "next", model::relationship::many_to_one, "shop::Order");
   m.pProject->addEntity(makeEntity("shop", "Marker", "shop::Base"));
   m.pProject->resolveLinks();
   ASSERT_EQ(m.pProject->checkWarnings(true).size(), 2) << str(m.pProject->checkWarnings(true).join("\n"));
   EXPECT_EQ(lines(m.pProject->checkWarnings(false)), lines(QStringList()));
   // A warning that holds either way stays.
   m.pProject->setName("Shop");
   ASSERT_EQ(m.pProject->checkWarnings(false).size(), 1);
   EXPECT_TRUE(m.pProject->checkWarnings(false).at(0).startsWith("Project 'Shop' : "));
}

TEST(ModelCheckWarnings, DefaultOnWrappedTypeAndSeveralWordNullable)
{
   valid_model m;
   auto pFlag = addProperty(m.pOrder, "flags", "bool");
   pFlag->getType()->setDecoration(1);
   pFlag->getType()->setDefaultValue("false");
   auto pCount = addProperty(m.pOrder, "count", "long long");
   pCount->getType()->setDecoration(3);
   // std::optional takes the default as written: the compile check of imported models builds it.
   for (const char * szType : { "long", "QString", "double" })
   {
      auto pOptional = addProperty(m.pOrder, QString("optional_") + szType, szType);
      pOptional->getType()->setDecoration(model::property_type::decoration_optional);
      pOptional->getType()->setDefaultValue((QString(szType) == "QString") ? "none" : "2");
   }
   EXPECT_EQ(lines(m.pProject->checkWarnings()), lines(QStringList({
      "Entity 'shop::Order' : property 'flags' has a default value but a wrapped or collection type ('std::shared_ptr<bool>'); the "
      "generated constructors initialise the member with the default as written, which does not compile",
      "Entity 'shop::Order' : nullable property 'count' has the type 'long long' of several words; the generated getter's fallback "
      "'long long(...)' does not compile (use a one-word type such as qlonglong or uint)" })));
}

TEST(ModelCheckWarnings, EntityWithoutOwnPropertyUnderPimpl)
{
   valid_model m;
   auto pEmpty = makeEntity("shop", "Marker", "shop::Base");
   m.pProject->addEntity(pEmpty);
   m.pProject->resolveLinks();
   EXPECT_EQ(lines(m.pProject->checkWarnings()), lines(QStringList({
      "Entity 'shop::Marker' has no property of its own: with the PIMPL idiom on, its private implementation structure is "
      "declared but never defined, so the generated code does not compile" })));
}

TEST(ModelCheckWarnings, PrivateInheritedKeyWithRelations)
{
   valid_model m;
   m.pBase->getPropertyId(false)->setAccessibility(model::property::access_private);
   addRelation(m.pOrder, "next", model::relationship::many_to_one, "shop::Order");
   const QStringList lst = m.pProject->checkWarnings();
   ASSERT_EQ(lst.size(), 2) << str(lst.join("\n"));
   EXPECT_EQ(str(lst.at(0)), "Entity 'shop::Order' : the generated relation code of 'next' copies the primary key 'id', which is "
                             "private in 'shop::Base'; the generated code does not compile (make the key protected or public)");
}
