#include <gtest/gtest.h>

#include "test_model_helpers.h"

using namespace model_test;

namespace {

// shop::Root <- shop::Base <- shop::Order, each with a few properties.
struct three_levels
{
   model::project_ptr pProject = std::make_shared<model::project>();
   model::entity_ptr pRoot = makeEntity("shop", "Root");
   model::entity_ptr pBase = makeEntity("shop", "Base", "shop::Root");
   model::entity_ptr pOrder = makeEntity("shop", "Order", "shop::Base");

   three_levels()
   {
      addProperty(pRoot, "root_id", "qlonglong", true);
      addProperty(pRoot, "root_old", "int")->setObsolete(true);
      addProperty(pBase, "created", "QDateTime");
      addRelation(pBase, "owner", model::relationship::many_to_one, "shop::Root");
      addProperty(pOrder, "number", "QString");
      addRelation(pOrder, "items", model::relationship::one_to_many, "shop::Base");
      addProperty(pOrder, "legacy", "QString")->setObsolete(true);
      addProperty(pOrder, "paid", "bool");
      pProject->addEntity(pRoot);
      pProject->addEntity(pBase);
      pProject->addEntity(pOrder);
      pProject->resolveLinks();
   }
};

QStringList names(const model::list_of_property & lst)
{
   QStringList lstResult;
   for (const model::property_ptr & p : lst) { lstResult.append(p->getName()); }
   return lstResult;
}

model::property_ptr typedProperty(const QString & sType, int iDecoration = 0, int iCollection = 0)
{
   auto p = std::make_shared<model::property>();
   p->setName("x");
   auto pType = std::make_shared<model::property_type>();
   pType->setPrimitiveType(sType);
   pType->setDecoration(iDecoration);
   pType->setCollection(iCollection);
   p->setType(pType);
   return p;
}

} // namespace

TEST(ModelKey, EntityKeyJoinsNamespaceAndName)
{
   EXPECT_EQ(str(makeEntity("shop", "Order")->getKey()), "shop::Order");
   EXPECT_EQ(str(makeEntity("shop::sales", "Order")->getKey()), "shop::sales::Order");
   EXPECT_EQ(str(makeEntity("", "Order")->getKey()), "Order");
}

TEST(ModelKey, EnumerationKeyJoinsNamespaceAndName)
{
   EXPECT_EQ(str(makeEnumeration("shop", "Status")->getKey()), "shop::Status");
   EXPECT_EQ(str(makeEnumeration("", "Status")->getKey()), "Status");
}

TEST(ModelEnumeration, EnumNameDefaultsToPrefixedName)
{
   auto pEnum = makeEnumeration("shop", "Status");
   EXPECT_EQ(str(pEnum->getEnumName()), "enum_Status");
   pEnum->setEnumName("StatusValues");
   EXPECT_EQ(str(pEnum->getEnumName()), "StatusValues");
}

TEST(ModelEnumeration, CppEnumTypeIsKeyPlusPrefixedName)
{
   auto pEnum = makeEnumeration("shop", "Status");
   EXPECT_EQ(str(pEnum->getCppEnumType()), "shop::Status::enum_Status");
   // The C++ type follows the name, not an explicit enum name.
   pEnum->setEnumName("Other");
   EXPECT_EQ(str(pEnum->getCppEnumType()), "shop::Status::enum_Status");
   EXPECT_EQ(str(makeEnumeration("", "Color")->getCppEnumType()), "Color::enum_Color");
}

TEST(ModelEnumeration, KeyValuesKeepOrderAndRefuseRepeatedKeys)
{
   auto pEnum = makeEnumeration("shop", "Status");
   EXPECT_TRUE(pEnum->addKeyValue("Paid", "1"));
   EXPECT_TRUE(pEnum->addKeyValue("New", "0"));
   EXPECT_FALSE(pEnum->addKeyValue("Paid", "7"));
   ASSERT_EQ(pEnum->getAllKeyValue().size(), 2);
   EXPECT_EQ(str(pEnum->getAllKeyValue().getKeyByIndex(0)), "Paid");
   EXPECT_EQ(str(pEnum->getAllKeyValue().getByIndex(0)), "1");
   EXPECT_EQ(str(pEnum->getAllKeyValue().getKeyByIndex(1)), "New");
}

TEST(ModelPropertyId, OwnPrimaryKey)
{
   three_levels m;
   ASSERT_NE(m.pRoot->getPropertyId(false), nullptr);
   EXPECT_EQ(str(m.pRoot->getPropertyId(false)->getName()), "root_id");
   EXPECT_EQ(m.pRoot->getPropertyId(true), m.pRoot->getPropertyId(false));
}

TEST(ModelPropertyId, InheritedPrimaryKeyOnlyWithParents)
{
   three_levels m;
   EXPECT_EQ(m.pOrder->getPropertyId(false), nullptr);
   ASSERT_NE(m.pOrder->getPropertyId(true), nullptr);
   EXPECT_EQ(str(m.pOrder->getPropertyId(true)->getName()), "root_id");
   EXPECT_EQ(m.pOrder->getPropertyId(true)->getEntity(), m.pRoot);
}

TEST(ModelPropertyId, NearestAncestorWins)
{
   three_levels m;
   addProperty(m.pBase, "base_id", "long", true);
   ASSERT_NE(m.pOrder->getPropertyId(true), nullptr);
   EXPECT_EQ(str(m.pOrder->getPropertyId(true)->getName()), "base_id");
}

TEST(ModelPropertyId, NoneAnywhere)
{
   auto pProject = std::make_shared<model::project>();
   auto pA = makeEntity("", "A");
   auto pB = makeEntity("", "B", "A");
   addProperty(pA, "x", "int");
   pProject->addEntity(pA);
   pProject->addEntity(pB);
   pProject->resolveLinks();
   EXPECT_EQ(pB->getPropertyId(true), nullptr);
   EXPECT_EQ(pA->getPropertyId(true), nullptr);
}

TEST(ModelPropertyId, InheritanceCycleDoesNotHang)
{
   auto pProject = std::make_shared<model::project>();
   auto pA = makeEntity("", "A", "B");
   auto pB = makeEntity("", "B", "A");
   auto pC = makeEntity("", "C", "C");
   addProperty(pA, "a", "int");
   addProperty(pB, "b", "int");
   addProperty(pC, "c", "int");
   pProject->addEntity(pA);
   pProject->addEntity(pB);
   pProject->addEntity(pC);
   pProject->resolveLinks();
   EXPECT_EQ(pA->getPropertyId(true), nullptr);
   EXPECT_EQ(pC->getPropertyId(true), nullptr);
   // Each ancestor once, the entity's own properties last.
   EXPECT_EQ(names(pA->getListOfProperty(true, true, true)), QStringList({ "b", "a" }));
   EXPECT_EQ(names(pC->getListOfProperty(true, true, true)), QStringList({ "c" }));

   addProperty(pB, "b_id", "long", true);
   ASSERT_NE(pA->getPropertyId(true), nullptr);
   EXPECT_EQ(str(pA->getPropertyId(true)->getName()), "b_id");
}

TEST(ModelListOfProperty, OwnPropertiesInDocumentOrder)
{
   three_levels m;
   EXPECT_EQ(names(m.pOrder->getListOfProperty(false, true, true)), QStringList({ "number", "items", "legacy", "paid" }));
}

TEST(ModelListOfProperty, WithParentsPutsOutermostAncestorFirst)
{
   three_levels m;
   EXPECT_EQ(names(m.pOrder->getListOfProperty(true, true, true)),
             QStringList({ "root_id", "root_old", "created", "owner", "number", "items", "legacy", "paid" }));
}

TEST(ModelListOfProperty, WithoutRelationsDropsRelationshipProperties)
{
   three_levels m;
   EXPECT_EQ(names(m.pOrder->getListOfProperty(false, false, true)), QStringList({ "number", "legacy", "paid" }));
   EXPECT_EQ(names(m.pOrder->getListOfProperty(true, false, true)), QStringList({ "root_id", "root_old", "created", "number", "legacy", "paid" }));
}

TEST(ModelListOfProperty, WithoutObsoleteDropsObsoleteProperties)
{
   three_levels m;
   EXPECT_EQ(names(m.pOrder->getListOfProperty(false, true, false)), QStringList({ "number", "items", "paid" }));
   EXPECT_EQ(names(m.pOrder->getListOfProperty(true, false, false)), QStringList({ "root_id", "created", "number", "paid" }));
}

TEST(ModelListOfRelation, OwnRelationshipsInPropertyOrder)
{
   auto pProject = std::make_shared<model::project>();
   auto pEntity = makeEntity("shop", "Order");
   auto pFirst = addRelation(pEntity, "customer", model::relationship::many_to_one, "shop::Customer");
   addProperty(pEntity, "paid", "bool");
   auto pSecond = addRelation(pEntity, "items", model::relationship::one_to_many, "shop::Item");
   pProject->addEntity(pEntity);
   pProject->resolveLinks();

   const model::list_of_relationship lst = pEntity->getListOfRelation();
   ASSERT_EQ(lst.size(), 2);
   EXPECT_EQ(lst.at(0), pFirst->getRelation());
   EXPECT_EQ(lst.at(1), pSecond->getRelation());
   EXPECT_EQ(lst.at(0)->getProperty(), pFirst);
   EXPECT_EQ(lst.at(1)->getProperty(), pSecond);

   three_levels m;
   ASSERT_EQ(m.pOrder->getListOfRelation().size(), 1);
   EXPECT_EQ(str(m.pOrder->getListOfRelation().at(0)->getProperty()->getName()), "items");
}

TEST(ModelTriggers, HasTriggersWhenAnyIsSet)
{
   auto pEntity = makeEntity("", "A");
   EXPECT_FALSE(pEntity->hasTriggers());
   pEntity->setTriggerAfterDelete(true);
   EXPECT_TRUE(pEntity->hasTriggers());
   pEntity->setTriggerAfterDelete(false);
   pEntity->setTriggerBeforeFetch(true);
   EXPECT_TRUE(pEntity->hasTriggers());
}

TEST(ModelTypeDesc, PlainTypeWhateverTheFlags)
{
   auto p = typedProperty("int");
   EXPECT_EQ(str(p->getTypeDesc(false, false)), "int");
   EXPECT_EQ(str(p->getTypeDesc(true, false)), "int");
   EXPECT_EQ(str(p->getTypeDesc(false, true)), "int");
   EXPECT_EQ(str(p->getTypeDesc(true, true, "ignored")), "int");
}

TEST(ModelTypeDesc, Decorations)
{
   EXPECT_EQ(str(typedProperty("QString", model::property_type::decoration_shared_ptr)->getTypeDesc(false, false)), "std::shared_ptr<QString>");
   EXPECT_EQ(str(typedProperty("QString", model::property_type::decoration_qsharedpointer)->getTypeDesc(false, false)), "QSharedPointer<QString>");
   EXPECT_EQ(str(typedProperty("int", model::property_type::decoration_optional)->getTypeDesc(false, false)), "std::optional<int>");
   EXPECT_EQ(str(typedProperty("int", model::property_type::decoration_optional)->getTypeDesc(true, true)), "std::optional<int>");
}

TEST(ModelTypeDesc, CollectionsWrapTheDecoratedType)
{
   EXPECT_EQ(str(typedProperty("QString", 0, model::property_type::collection_qlist)->getTypeDesc(false, false)), "QList<QString>");
   EXPECT_EQ(str(typedProperty("double", 0, model::property_type::collection_std_vector)->getTypeDesc(false, false)), "std::vector<double>");
   EXPECT_EQ(str(typedProperty("int", model::property_type::decoration_optional, model::property_type::collection_qlist)->getTypeDesc(false, false)),
             "QList<std::optional<int> >");
   EXPECT_EQ(str(typedProperty("QString", model::property_type::decoration_shared_ptr, model::property_type::collection_std_vector)->getTypeDesc(false, false)),
             "std::vector<std::shared_ptr<QString> >");
   // A template primitive type gets the blank too.
   EXPECT_EQ(str(typedProperty("QMap<QString, int>", model::property_type::decoration_optional)->getTypeDesc(false, false)),
             "std::optional<QMap<QString, int> >");
}

TEST(ModelTypeDesc, PropertyWithoutTypeGivesEmptyText)
{
   auto p = std::make_shared<model::property>();
   p->setName("x");
   EXPECT_TRUE(p->getTypeDesc(false, false).isEmpty());
}

TEST(ModelTypeDesc, OneToOneAndManyToOneAreSharedPointers)
{
   auto pProject = std::make_shared<model::project>();
   auto pCustomer = makeEntity("shop", "Customer");
   addProperty(pCustomer, "id", "long", true);
   auto pProfile = addRelation(pCustomer, "profile", model::relationship::one_to_one, "shop::Profile");
   auto pTarget = makeEntity("shop", "Profile");
   addProperty(pTarget, "id", "QString", true);
   auto pBack = addRelation(pTarget, "customer", model::relationship::many_to_one, "shop::Customer");
   pProject->addEntity(pCustomer);
   pProject->addEntity(pTarget);
   pProject->resolveLinks();

   EXPECT_EQ(str(pProfile->getTypeDesc(false, false)), "std::shared_ptr<shop::Profile>");
   EXPECT_EQ(str(pProfile->getTypeDesc(true, false)), "typedef std::shared_ptr<shop::Profile> type_profile;");
   EXPECT_EQ(str(pProfile->getTypeDesc(false, true)), "Customer::type_profile");
   EXPECT_EQ(str(pBack->getTypeDesc(false, false)), "std::shared_ptr<shop::Customer>");
   EXPECT_EQ(str(pBack->getTypeDesc(true, false)), "typedef std::shared_ptr<shop::Customer> type_customer;");
   EXPECT_EQ(str(pBack->getTypeDesc(false, true)), "Profile::type_customer");
}

TEST(ModelTypeDesc, OneToManyAndManyToManyAreKeyedCollections)
{
   auto pProject = std::make_shared<model::project>();
   auto pOrder = makeEntity("shop::sales", "Order");
   addProperty(pOrder, "id", "long", true);
   auto pItems = addRelation(pOrder, "items", model::relationship::one_to_many, "shop::sales::Item");
   auto pTags = addRelation(pOrder, "tags", model::relationship::many_to_many, "shop::Tag");
   auto pItem = makeEntity("shop::sales", "Item");
   addProperty(pItem, "item_no", "qint64", true);
   auto pTag = makeEntity("shop", "Tag");
   addProperty(pTag, "label", "QString", true);
   pProject->addEntity(pOrder);
   pProject->addEntity(pItem);
   pProject->addEntity(pTag);
   pProject->resolveLinks();

   EXPECT_EQ(str(pItems->getTypeDesc(false, false)), "zy::ZyCollection<qint64, std::shared_ptr<shop::sales::Item> >");
   EXPECT_EQ(str(pItems->getTypeDesc(true, false)), "typedef zy::ZyCollection<qint64, std::shared_ptr<shop::sales::Item> > type_items;");
   EXPECT_EQ(str(pItems->getTypeDesc(false, true)), "Order::type_items");
   EXPECT_EQ(str(pTags->getTypeDesc(false, false)), "zy::ZyCollection<QString, std::shared_ptr<shop::Tag> >");
   EXPECT_EQ(str(pTags->getTypeDesc(true, false)), "typedef zy::ZyCollection<QString, std::shared_ptr<shop::Tag> > type_tags;");
   EXPECT_EQ(str(pTags->getTypeDesc(false, true)), "Order::type_tags");
}

TEST(ModelTypeDesc, CollectionKeyTypeIsInheritedOrLong)
{
   auto pProject = std::make_shared<model::project>();
   auto pBase = makeEntity("shop", "Base");
   addProperty(pBase, "id", "qlonglong", true);
   auto pItem = makeEntity("shop", "Item", "shop::Base");
   auto pNote = makeEntity("shop", "Note");
   addProperty(pNote, "text", "QString");
   auto pOrder = makeEntity("shop", "Order");
   auto pItems = addRelation(pOrder, "items", model::relationship::one_to_many, "shop::Item");
   auto pNotes = addRelation(pOrder, "notes", model::relationship::many_to_many, "shop::Note");
   auto pGhosts = addRelation(pOrder, "ghosts", model::relationship::one_to_many, "shop::Ghost");
   for (auto p : { pBase, pItem, pNote, pOrder }) { pProject->addEntity(p); }
   pProject->resolveLinks();

   EXPECT_EQ(str(pItems->getTypeDesc(false, false)), "zy::ZyCollection<qlonglong, std::shared_ptr<shop::Item> >");
   EXPECT_EQ(str(pNotes->getTypeDesc(false, false)), "zy::ZyCollection<long, std::shared_ptr<shop::Note> >");
   // An unknown target keeps its key text.
   EXPECT_EQ(str(pGhosts->getTypeDesc(false, false)), "zy::ZyCollection<long, std::shared_ptr<shop::Ghost> >");
}

TEST(ModelTypeDesc, AliasWinsWhenBothFlagsAreSet)
{
   auto pProject = std::make_shared<model::project>();
   auto pOrder = makeEntity("shop", "Order");
   auto pCustomer = addRelation(pOrder, "customer", model::relationship::many_to_one, "shop::Order");
   pProject->addEntity(pOrder);
   pProject->resolveLinks();
   EXPECT_EQ(str(pCustomer->getTypeDesc(true, true)), "Order::type_customer");
}

TEST(ModelTypeDesc, RelationKeyOfARelationDoesNotRecurse)
{
   // Two entities whose primary keys are relations to each other: the key type falls back to long.
   auto pProject = std::make_shared<model::project>();
   auto pA = makeEntity("", "A");
   auto pB = makeEntity("", "B");
   addRelation(pA, "b", model::relationship::one_to_many, "B")->setPrimaryKey(true);
   addRelation(pB, "a", model::relationship::one_to_many, "A")->setPrimaryKey(true);
   pProject->addEntity(pA);
   pProject->addEntity(pB);
   pProject->resolveLinks();
   EXPECT_EQ(str(pA->getPropertyByName("b")->getTypeDesc(false, false)), "zy::ZyCollection<long, std::shared_ptr<B> >");
}

TEST(ModelKindTests, Strings)
{
   for (const char * sz : { "QString", "std::string", "std::wstring", "QByteArray" })
   {
      auto p = typedProperty(sz);
      EXPECT_TRUE(p->isString(true, -1)) << sz;
      EXPECT_FALSE(p->isNumber(true, -1)) << sz;
      EXPECT_FALSE(p->isBoolean(true, -1)) << sz;
      EXPECT_FALSE(p->isDecimal(true, -1)) << sz;
   }
   for (const char * sz : { "QStringList", "string", "const QString", "QString " })
   {
      EXPECT_FALSE(typedProperty(sz)->isString(true, -1)) << sz;
   }
}

TEST(ModelKindTests, Booleans)
{
   EXPECT_TRUE(typedProperty("bool")->isBoolean(true, -1));
   EXPECT_FALSE(typedProperty("bool")->isNumber(true, -1));
   EXPECT_FALSE(typedProperty("Bool")->isBoolean(true, -1));
   EXPECT_FALSE(typedProperty("int")->isBoolean(true, -1));
}

TEST(ModelKindTests, DecimalsAreNumbers)
{
   for (const char * sz : { "float", "double", "long double", "qreal" })
   {
      auto p = typedProperty(sz);
      EXPECT_TRUE(p->isDecimal(true, -1)) << sz;
      EXPECT_TRUE(p->isNumber(true, -1)) << sz;
      EXPECT_FALSE(p->isString(true, -1)) << sz;
   }
}

TEST(ModelKindTests, IntegersAreNumbersNotDecimals)
{
   for (const char * sz : { "short", "int", "long", "long long", "unsigned", "unsigned short", "unsigned int", "unsigned long",
                            "unsigned long long", "qlonglong", "qulonglong", "size_t", "std::size_t", "qint8", "qint16", "qint32",
                            "qint64", "quint8", "quint16", "quint32", "quint64", "int8_t", "int16_t", "int32_t", "int64_t",
                            "uint8_t", "uint16_t", "uint32_t", "uint64_t" })
   {
      auto p = typedProperty(sz);
      EXPECT_TRUE(p->isNumber(true, -1)) << sz;
      EXPECT_FALSE(p->isDecimal(true, -1)) << sz;
      EXPECT_FALSE(p->isString(true, -1)) << sz;
      EXPECT_FALSE(p->isBoolean(true, -1)) << sz;
   }
   // Compared as written.
   for (const char * sz : { "const int", "std::int32_t", "signed char", "char", "long int", "Int", " int" })
   {
      EXPECT_FALSE(typedProperty(sz)->isNumber(true, -1)) << sz;
   }
}

TEST(ModelKindTests, DecorationDoesNotChangeTheKind)
{
   EXPECT_TRUE(typedProperty("int", model::property_type::decoration_optional)->isNumber(true, -1));
   EXPECT_TRUE(typedProperty("QString", 0, model::property_type::collection_qlist)->isString(true, -1));
}

TEST(ModelKindTests, NoTypeMeansEveryTestIsFalse)
{
   auto p = std::make_shared<model::property>();
   p->setName("x");
   EXPECT_EQ(p->getType(), nullptr);
   EXPECT_FALSE(p->isString(true, -1));
   EXPECT_FALSE(p->isBoolean(true, -1));
   EXPECT_FALSE(p->isDecimal(true, -1));
   EXPECT_FALSE(p->isNumber(true, -1));
}

TEST(ModelMetaData, KeysInAscendingOrder)
{
   auto pEntity = makeEntity("", "A");
   pEntity->setMetaData("zeta", "1");
   pEntity->setMetaData("alpha", "2");
   pEntity->setMetaData("Beta", "3");
   pEntity->setMetaData("TAVREL_NO_ID", "true");
   EXPECT_EQ(pEntity->getAllMetaDataKeys(), QStringList({ "Beta", "TAVREL_NO_ID", "alpha", "zeta" }));
}

TEST(ModelMetaData, ValuesAreTextAndReadAsBooleans)
{
   auto p = makeEntity("", "A");
   p->setMetaData("empty", "");
   p->setMetaData("zero", "0");
   p->setMetaData("false", "false");
   p->setMetaData("one", "1");
   p->setMetaData("true", "true");
   p->setMetaData("yes", "yes");
   p->setMetaData("text", "some text");

   EXPECT_EQ(p->getMetaData("text").metaType().id(), QMetaType::QString);
   EXPECT_EQ(str(p->getMetaData("text").toString()), "some text");
   EXPECT_FALSE(p->getMetaData("empty").toBool());
   EXPECT_FALSE(p->getMetaData("zero").toBool());
   EXPECT_FALSE(p->getMetaData("false").toBool());
   EXPECT_TRUE(p->getMetaData("one").toBool());
   EXPECT_TRUE(p->getMetaData("true").toBool());
   EXPECT_TRUE(p->getMetaData("yes").toBool());
   EXPECT_TRUE(p->getMetaData("text").toBool());
   // Absent: invalid, so false and empty.
   EXPECT_FALSE(p->getMetaData("missing").isValid());
   EXPECT_FALSE(p->getMetaData("missing").toBool());
   EXPECT_TRUE(p->getMetaData("missing").toString().isEmpty());
}

TEST(ModelLookup, ByIdGivesFirstInDocumentOrderAlsoForZero)
{
   auto pProject = std::make_shared<model::project>();
   auto pA = makeEntity("", "A"); pA->setId(0);
   auto pB = makeEntity("", "B"); pB->setId(7);
   auto pC = makeEntity("", "C"); pC->setId(0);
   auto pD = makeEntity("", "D"); pD->setId(7);
   for (auto p : { pA, pB, pC, pD }) { pProject->addEntity(p); }
   EXPECT_EQ(pProject->getEntityById(0), pA);
   EXPECT_EQ(pProject->getEntityById(7), pB);
   EXPECT_EQ(pProject->getEntityById(3), nullptr);

   auto pE0 = makeEnumeration("", "E0"); pE0->setId(0);
   auto pE1 = makeEnumeration("", "E1"); pE1->setId(2);
   auto pE2 = makeEnumeration("", "E2"); pE2->setId(0);
   for (auto p : { pE0, pE1, pE2 }) { pProject->addEnumeration(p); }
   EXPECT_EQ(pProject->getEnumerationById(0), pE0);
   EXPECT_EQ(pProject->getEnumerationById(2), pE1);
   EXPECT_EQ(pProject->getEnumerationById(1), nullptr);
}

TEST(ModelLookup, ByKey)
{
   auto pProject = std::make_shared<model::project>();
   auto pA = makeEntity("shop", "A");
   auto pA2 = makeEntity("shop", "A");
   pProject->addEntity(pA);
   pProject->addEntity(pA2);
   auto pEnum = makeEnumeration("shop", "Status");
   pProject->addEnumeration(pEnum);
   EXPECT_EQ(pProject->getEntityByKey("shop::A"), pA);
   EXPECT_EQ(pProject->getEntityByKey("A"), nullptr);
   EXPECT_EQ(pProject->getEnumerationByKey("shop::Status"), pEnum);
   EXPECT_EQ(pProject->getEnumerationByKey("shop::A"), nullptr);
   EXPECT_EQ(pProject->getEntityByKey("shop::Status"), nullptr);
}

TEST(ModelLookup, FollowsEditsAfterAFirstLookup)
{
   auto pProject = std::make_shared<model::project>();
   auto pA = makeEntity("shop", "A"); pA->setId(1);
   pProject->addEntity(pA);
   EXPECT_EQ(pProject->getEntityById(1), pA);

   // Added through the shared list, renamed and renumbered in place.
   auto pB = makeEntity("shop", "B"); pB->setId(2);
   pProject->getListOfAllEntities()->append(pB);
   EXPECT_EQ(pProject->getEntityById(2), pB);
   pA->setId(5);
   pA->setName("Renamed");
   EXPECT_EQ(pProject->getEntityById(1), nullptr);
   EXPECT_EQ(pProject->getEntityById(5), pA);
   EXPECT_EQ(pProject->getEntityByKey("shop::A"), nullptr);
   EXPECT_EQ(pProject->getEntityByKey("shop::Renamed"), pA);
}

TEST(ModelLookup, ManyEntitiesAreAllFound)
{
   auto pProject = std::make_shared<model::project>();
   const int iCount = 5000;
   for (int i = 0; i < iCount; ++i)
   {
      auto p = makeEntity("big", QString("E%1").arg(i));
      p->setId(i + 1);
      pProject->addEntity(p);
   }
   for (int i = 0; i < iCount; ++i)
   {
      model::entity_ptr p = pProject->getEntityById(i + 1);
      ASSERT_NE(p, nullptr);
      ASSERT_EQ(str(p->getName()), str(QString("E%1").arg(i)));
      ASSERT_EQ(pProject->getEntityByKey(QString("big::E%1").arg(i)), p);
   }
}

TEST(ModelResolveLinks, ParentsTargetsAndBackPointers)
{
   three_levels m;
   EXPECT_EQ(m.pOrder->getParent(), m.pBase);
   EXPECT_EQ(m.pBase->getParent(), m.pRoot);
   EXPECT_EQ(m.pRoot->getParent(), nullptr);
   for (const model::entity_ptr & pEntity : (* m.pProject->getListOfAllEntities()))
   {
      for (const model::property_ptr & p : pEntity->getOwnProperties()) { EXPECT_EQ(p->getEntity(), pEntity) << str(p->getName()); }
   }
   model::property_ptr pItems = m.pOrder->getPropertyByName("items");
   ASSERT_NE(pItems, nullptr);
   EXPECT_EQ(pItems->getRelation()->getEntityTarget(), m.pBase);
   EXPECT_EQ(pItems->getRelation()->getProperty(), pItems);
}

TEST(ModelResolveLinks, EnumerationGivesTheTypeWhenNoneIsWritten)
{
   auto pProject = std::make_shared<model::project>();
   auto pEnum = makeEnumeration("shop", "Status");
   pProject->addEnumeration(pEnum);
   auto pOrder = makeEntity("shop", "Order");
   auto pStatus = addProperty(pOrder, "status", "");
   pStatus->setEnumerationKey("shop::Status");
   auto pCode = addProperty(pOrder, "code", "int");
   pCode->setEnumerationKey("shop::Status");
   pProject->addEntity(pOrder);
   pProject->resolveLinks();

   ASSERT_NE(pStatus->getType(), nullptr);
   EXPECT_EQ(str(pStatus->getType()->getPrimitiveType()), "shop::Status::enum_Status");
   EXPECT_EQ(str(pStatus->getTypeDesc(false, false)), "shop::Status::enum_Status");
   EXPECT_EQ(pStatus->getType()->getEnumeration(), pEnum);
   EXPECT_FALSE(pStatus->isNumber(true, -1));
   // An explicit type is kept and still linked to the enumeration.
   EXPECT_EQ(str(pCode->getType()->getPrimitiveType()), "int");
   EXPECT_EQ(pCode->getType()->getEnumeration(), pEnum);

   // A derived type follows a rename of the enumeration.
   pEnum->setName("State");
   pStatus->setEnumerationKey("shop::State");
   pCode->setEnumerationKey("shop::State");
   pProject->resolveLinks();
   EXPECT_EQ(str(pStatus->getType()->getPrimitiveType()), "shop::State::enum_State");
   EXPECT_EQ(str(pCode->getType()->getPrimitiveType()), "int");
}

TEST(ModelResolveLinks, UnknownReferencesGiveNullLinks)
{
   auto pProject = std::make_shared<model::project>();
   auto pOrder = makeEntity("shop", "Order", "shop::Missing");
   auto pRel = addRelation(pOrder, "x", model::relationship::one_to_one, "shop::Nowhere");
   auto pEnumProp = addProperty(pOrder, "e", "");
   pEnumProp->setEnumerationKey("shop::NoEnum");
   pProject->addEntity(pOrder);
   pProject->resolveLinks();
   EXPECT_EQ(pOrder->getParent(), nullptr);
   EXPECT_EQ(pRel->getRelation()->getEntityTarget(), nullptr);
   EXPECT_EQ(pEnumProp->getType(), nullptr);
}
