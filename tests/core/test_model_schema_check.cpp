// The schema check that keeps the problems of items an edit left alone: after every kind of
// edit it lists exactly what project::checkSchema lists, paths included.

#include <gtest/gtest.h>

#include "model/schema_check.h"
#include "model/schema_items.h"
#include "test_model_helpers.h"

using namespace model_test;

namespace {

// "message @ path" of every problem, in order.
std::string full(const zy::ZyInvalidValueX & lst)
{
   QStringList lstLines;
   for (const auto & x : lst) { lstLines.append(x.getMessage() + " @ " + x.getPath()); }
   return lstLines.join("\n").toStdString();
}

// A model of a few entities, edited as the desktop host does: items are replaced, never
// changed in place, and the links are resolved again.
struct edited_model
{
   model::project_ptr pProject = std::make_shared<model::project>();
   model::schema_check check;

   edited_model()
   {
      pProject->setName("SHOP");
      auto pStatus = makeEnumeration("shop", "Status");
      pStatus->addKeyValue("New", "0");
      pProject->addEnumeration(pStatus);
      for (const QString & sName : { "Base", "Order", "Item", "Client" })
      {
         auto p = makeEntity("shop", sName, (sName == "Base") ? QString() : QString("shop::Base"));
         addProperty(p, "id", "long", true);
         addProperty(p, "status", "")->setEnumerationKey("shop::Status");
         addRelation(p, "next", model::relationship::many_to_one, "shop::Order");
         pProject->addEntity(p);
      }
      pProject->resolveLinks();
   }

   model::list_of_entity & entities() { return * pProject->getListOfAllEntities(); }

   // A new entity in place of the one at index i, as an edit makes it.
   model::entity_ptr replace(qsizetype i, const QString & sName, const QString & sParent)
   {
      auto p = makeEntity("shop", sName, sParent);
      addProperty(p, "id", "long", true);
      addRelation(p, "next", model::relationship::many_to_one, "shop::Order");
      entities()[i] = p;
      pProject->resolveLinks();
      return p;
   }

   void remove(qsizetype i)
   {
      entities().removeAt(i);
      pProject->resolveLinks();
   }

   // The kept check and the whole check agree; the kept one is returned.
   std::string both()
   {
      const std::string sKept = full(check.run(* pProject));
      EXPECT_EQ(sKept, full(pProject->checkSchema()));
      return sKept;
   }
};

} // namespace

TEST(ModelSchemaCheck, KeepsTheItemsAnEditLeftAlone)
{
   edited_model m;
   EXPECT_EQ(m.both(), "");
   EXPECT_EQ(m.check.checkedItems(), 5);
   EXPECT_EQ(m.both(), "");
   EXPECT_EQ(m.check.checkedItems(), 0);
   // One entity replaced with a description that would close the generated comment.
   m.replace(2, "Item", "shop::Base")->setDescription("a */ b");
   m.pProject->resolveLinks();
   EXPECT_EQ(m.both(), "Entity 'shop::Item' : description 'a */ b' holds \"*/\", which would end the comment it is written in @ entities[2].description");
   EXPECT_EQ(m.check.checkedItems(), 1);
}

TEST(ModelSchemaCheck, RelationToADeletedEntity)
{
   edited_model m;
   m.both();
   m.remove(1);
   const std::string s = m.both();
   EXPECT_NE(s.find("Entity 'shop::Base' : property 'next' has relation target 'shop::Order' which does not exist @ entities[0].properties[2]"), std::string::npos) << s;
   EXPECT_NE(s.find("Entity 'shop::Client' : property 'next' has relation target 'shop::Order' which does not exist @ entities[2].properties[2]"), std::string::npos) << s;
   // The entity that named it comes back with the undo: the problems go.
   m.replace(1, "Order", "shop::Base");
   m.both();
}

TEST(ModelSchemaCheck, ParentCycleOfAnEditedEntity)
{
   edited_model m;
   m.both();
   m.replace(0, "Base", "shop::Order");
   EXPECT_EQ(m.both(), "Entity 'shop::Base' : inheritance cycle shop::Base -> shop::Order -> shop::Base @ entities[0]");
   m.replace(0, "Base", QString());
   EXPECT_EQ(m.both(), "");
}

TEST(ModelSchemaCheck, KeysThatFlattenToOneFileName)
{
   edited_model m;
   m.both();
   m.entities().append(makeEntity(QString(), "shop_Order"));
   addProperty(m.entities().last(), "id", "long", true);
   m.pProject->resolveLinks();
   EXPECT_EQ(m.both(), "Entity 'shop::Order' and entity 'shop_Order' all give the same generated files 'include/shop_Order.gen.h' and 'src/shop_Order.gen.cpp' @ name");
   EXPECT_EQ(m.check.checkedItems(), 1);
}

TEST(ModelSchemaCheck, KeptProblemsFollowTheirItemsPlace)
{
   edited_model m;
   m.replace(3, "Client", "shop::Base")->setTableName("t order; drop");
   m.entities().append(makeEntity("shop", QString()));
   m.pProject->resolveLinks();
   m.both();
   // Removing the first entity moves the others up: paths and the unnamed label follow.
   m.remove(0);
   const std::string s = m.both();
   EXPECT_NE(s.find("@ entities[2].table"), std::string::npos) << s;
   EXPECT_NE(s.find("Entity #4 has no name @ entities[3]"), std::string::npos) << s;
}

TEST(ModelSchemaCheck, RepeatedKeysAndEnumerationsFollowTheirReferences)
{
   edited_model m;
   m.both();
   m.replace(3, "Order", "shop::Base");
   EXPECT_NE(m.both().find("is defined more than once (first as entity #2)"), std::string::npos);
   // A removed enumeration: every property naming it is reported, an entity key it shares too.
   m.pProject->getListOfAllEnums()->clear();
   m.pProject->resolveLinks();
   EXPECT_NE(m.both().find("refers to enumeration 'shop::Status' which does not exist"), std::string::npos);
   auto pSame = makeEnumeration("shop", "Item");
   m.pProject->addEnumeration(pSame);
   m.pProject->resolveLinks();
   EXPECT_NE(m.both().find("Enumeration 'shop::Item' has the same key as entity #3"), std::string::npos);
}

// The key table the checks look keys up in: the first index of each key, nothing for a key no
// item has, and null items skipped, however many keys share a hash bucket.
TEST(SchemaKeyTable, FirstIndexOfEachKeyAndNothingElse)
{
   model::list_of_entity lst;
   lst.append(makeEntity("shop", "Order"));
   lst.append(nullptr);
   lst.append(makeEntity("shop", "Item"));
   lst.append(makeEntity("shop", "Order"));
   lst.append(makeEntity("", "Order"));
   for (int i = 0; i < 2000; ++i) { lst.append(makeEntity("bulk", QString("E%1").arg(i))); }
   const model::schema_items::key_table keys = model::schema_items::firstIndexOfKeys(lst);

   EXPECT_EQ(keys.value("shop::Order"), 0);
   EXPECT_EQ(keys.value("shop::Item"), 2);
   EXPECT_EQ(keys.value("Order"), 4);
   EXPECT_EQ(keys.value("bulk::E1999"), 2004);
   EXPECT_FALSE(keys.contains("shop::Client"));
   EXPECT_FALSE(keys.contains("shop::order"));
   EXPECT_FALSE(keys.contains("bulk::E2000"));
   EXPECT_EQ(keys.value("missing", 7), 7);
   for (int i = 0; i < 2000; ++i) { ASSERT_EQ(keys.value(QString("bulk::E%1").arg(i)), 5 + i); }
}

TEST(ModelSchemaCheck, PropertyNamedLikeAClassOfItsNamespace)
{
   edited_model m;
   m.both();
   auto pItem = m.replace(2, "Item", "shop::Base");
   addProperty(pItem, "Client", "QString");
   addProperty(pItem, "Item", "QString");
   addProperty(pItem, "Status", "long");
   m.pProject->resolveLinks();
   EXPECT_EQ(m.both(),
             "Entity 'shop::Item' : property 'Client' is named like the class 'Client' of its namespace; the generated class does not "
             "compile (rename the property, for instance to 'client') @ entities[2].properties[2]\n"
             "Entity 'shop::Item' : property 'Item' is named like its own class; the generated class does not compile (rename the "
             "property, for instance to 'item') @ entities[2].properties[3]\n"
             "Entity 'shop::Item' : property 'Status' is named like the enumeration 'Status' of its namespace; the generated class "
             "does not compile (rename the property, for instance to 'status') @ entities[2].properties[4]");
   // Another item's edit decides: the class renamed, the problem goes though its entity was kept.
   m.replace(3, "Customer", "shop::Base");
   (* m.pProject->getListOfAllEnums())[0] = makeEnumeration("shop", "State");
   m.pProject->resolveLinks();
   const std::string s = m.both();
   EXPECT_EQ(s.find("property 'Client'"), std::string::npos) << s;
   EXPECT_EQ(s.find("property 'Status'"), std::string::npos) << s;
   EXPECT_NE(s.find("property 'Item' is named like its own class"), std::string::npos) << s;
}

TEST(ModelSchemaCheck, ClassNamedLikeAPropertyAfterAnEditOfTheClassOnly)
{
   edited_model m;
   auto pItem = m.replace(2, "Item", "shop::Base");
   addProperty(pItem, "Invoice", "QString");
   m.pProject->resolveLinks();
   EXPECT_EQ(m.both(), "");
   // Only the other entity is replaced, under the name the property has.
   m.replace(3, "Invoice", "shop::Base");
   EXPECT_NE(m.both().find("property 'Invoice' is named like the class 'Invoice' of its namespace"), std::string::npos);
   EXPECT_EQ(m.check.checkedItems(), 1);
}

// A model large enough that the whole check reads its texts and file names on a second thread:
// the same problems in the same order as the check that goes item by item.
TEST(ModelSchemaCheck, LargeModelListsWhatTheItemByItemCheckLists)
{
   edited_model m;
   for (int i = 0; i < 80; ++i)
   {
      auto p = makeEntity("shop::bulk", QString("Part%1").arg(i), (i % 9 == 4) ? QString("shop::bulk::Part%1").arg(i + 1) : QString());
      addProperty(p, "id", "long", true);
      if (i % 11 == 3) { addProperty(p, QString("Part%1").arg(i + 1), "QString"); }
      if (i % 13 == 5) { p->setDescription(QString("line\x01") + QString::number(i)); }
      if (i % 17 == 2) { p->setTableName("t_shared"); }
      m.pProject->addEntity(p);
   }
   // Two keys that flatten to one file name, and a parent cycle.
   m.pProject->addEntity(makeEntity(QString(), "shop_bulk_Part7", QString()));
   (* m.pProject->getListOfAllEntities())[10]->setParentKey("shop::bulk::Part5");
   m.pProject->resolveLinks();
   const std::string s = m.both();
   for (const char * szExpected : { "is named like the class", "control character", "is also the table of", "shop_bulk_Part7" })
   { EXPECT_NE(s.find(szExpected), std::string::npos) << szExpected << "\n" << s; }
}
