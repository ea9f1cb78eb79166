#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/generators/generators.h"

#include "gen_test_model.h"

namespace {

namespace gen = plugin::generators;

typedef gen_test_model test_model;
typedef entity_generator generator;

class GenKeysTriggers : public ::testing::Test
{
protected:
   plugin::cpp_export m_plugin;
   plugin::cpp_builder m_builder { & m_plugin };
   test_model m;

   // As a standard string, so that a failing comparison prints readable text.
   std::string run(generator fct, const model::entity_ptr & e, const QString & before = QString())
   {
      m.project->resolveLinks();
      QString out = before;
      fct(m_builder, out, * m.project, * e);
      return out.toStdString();
   }
};

TEST_F(GenKeysTriggers, TableKeyWithoutTableNameGivesTheClassName)
{
   auto e = m.addEntity("Order", "shop");
   EXPECT_EQ(run(gen::STATIC_TABLE_KEY, e),
             "\npublic:\n\n   static QString table_name(bool key = false) { Q_UNUSED(key); return \"Order\"; }");
   e->setTableName("Order");
   EXPECT_EQ(run(gen::STATIC_TABLE_KEY, e),
             "\npublic:\n\n   static QString table_name(bool key = false) { Q_UNUSED(key); return \"Order\"; }");
}

TEST_F(GenKeysTriggers, TableKeyWithOtherTableNameGivesEither)
{
   auto e = m.addEntity("Order", "shop");
   e->setTableName("t_order");
   EXPECT_EQ(run(gen::STATIC_TABLE_KEY, e),
             "\npublic:\n\n   static QString table_name(bool key = false) { return (key ? QString(\"Order\") : QString(\"t_order\")); }");
}

TEST_F(GenKeysTriggers, ColumnKeysSkipMarkedRelationAndObsoleteProperties)
{
   auto base = m.addEntity("Base");
   m.addProperty(base, "id", "long")->setPrimaryKey(true);
   m.addEntity("Other");
   auto e = m.addEntity("Row");
   e->setParentKey("Base");
   m.addProperty(e, "name", "QString")->setColumnName("c_name");
   m.addProperty(e, "noid", "int")->setMetaData("TAVREL_NO_ID", "true");
   m.addProperty(e, "dummy", "int")->setMetaData("TAVREL_DUMMY_COLUMN", "1");
   m.addProperty(e, "kept", "int")->setMetaData("TAVREL_DUMMY_COLUMN", "false");
   m.addProperty(e, "old", "int")->setObsolete(true);
   m.addRelation(e, "other", 2, "Other");
   m.addProperty(e, "qty", "int")->setColumnName("qty");
   EXPECT_EQ(run(gen::LIST_STATIC_COLUMNS_KEYS, e),
             "\npublic:\n"
             "\n   static QString column_id(bool key = false) { Q_UNUSED(key); return \"id\"; }"
             "\n   static QString column_name(bool key = false) { return (key ? QString(\"name\") : QString(\"c_name\")); }"
             "\n   static QString column_kept(bool key = false) { Q_UNUSED(key); return \"kept\"; }"
             "\n   static QString column_qty(bool key = false) { Q_UNUSED(key); return \"qty\"; }");
}

TEST_F(GenKeysTriggers, ColumnKeysOfAnEntityWithoutPropertiesAreEmpty)
{
   m.addEntity("Other");
   auto e = m.addEntity("Bare");
   m.addRelation(e, "other", 0, "Other");
   EXPECT_EQ(run(gen::LIST_STATIC_COLUMNS_KEYS, e), "");
}

TEST_F(GenKeysTriggers, ColumnKeysHeaderStaysWhenEveryPropertyIsSkipped)
{
   auto e = m.addEntity("Marked");
   m.addProperty(e, "x", "int")->setMetaData("TAVREL_DUMMY_COLUMN", "yes");
   EXPECT_EQ(run(gen::LIST_STATIC_COLUMNS_KEYS, e), "\npublic:\n");
}

TEST_F(GenKeysTriggers, ClassTypedefs)
{
   auto e = m.addEntity("Order", "shop");
   m.addProperty(e, "id", "qint64")->setPrimaryKey(true);
   EXPECT_EQ(run(gen::TYPEDEF_CLASS_PTR, e), "typedef std::shared_ptr<Order> Order_ptr;");
   EXPECT_EQ(run(gen::TYPEDEF_LIST_OF_CLASS, e), "typedef zy::ZyCollection<qint64, Order_ptr> list_of_Order;");
   EXPECT_EQ(run(gen::TYPEDEF_LIST_OF_CLASS_PTR, e), "typedef std::shared_ptr<list_of_Order> list_of_Order_ptr;");
}

TEST_F(GenKeysTriggers, ListTypedefKeyedByInheritedPrimaryKey)
{
   auto base = m.addEntity("Base");
   m.addProperty(base, "id", "long")->setPrimaryKey(true);
   auto child = m.addEntity("Child");
   child->setParentKey("Base");
   EXPECT_EQ(run(gen::TYPEDEF_LIST_OF_CLASS, child), "typedef zy::ZyCollection<long, Child_ptr> list_of_Child;");
}

TEST_F(GenKeysTriggers, ListTypedefWithoutUsableKeyIsAPlainList)
{
   auto loose = m.addEntity("Loose");
   m.addProperty(loose, "x", "int");
   EXPECT_EQ(run(gen::TYPEDEF_LIST_OF_CLASS, loose), "typedef QList<Loose_ptr> list_of_Loose;");

   auto marked = m.addEntity("Marked");
   m.addProperty(marked, "id", "long")->setPrimaryKey(true);
   marked->getPropertyByName("id")->setMetaData("TAVREL_NO_ID", "true");
   EXPECT_EQ(run(gen::TYPEDEF_LIST_OF_CLASS, marked), "typedef QList<Marked_ptr> list_of_Marked;");
}

TEST_F(GenKeysTriggers, ValidatorMethodDeclaration)
{
   auto e = m.addEntity("Order");
   EXPECT_EQ(run(gen::ZY_VALIDATOR_METHOD, e), "");
   e->setValidatorMethod("checkOrder");
   EXPECT_EQ(run(gen::ZY_VALIDATOR_METHOD, e),
             "private:\n"
             "\n   // The following validator method must be implemented in a custom code"
             "\n   void checkOrder(zy::ZyInvalidValueX & invalidValues);");
}

TEST_F(GenKeysTriggers, TriggerMethodsInFixedOrder)
{
   auto e = m.addEntity("Order");
   e->setTriggerAfterDelete(true);
   e->setTriggerBeforeFetch(true);
   e->setTriggerAfterUpdate(true);
   EXPECT_EQ(run(gen::LIST_TRIGGERS_METHODS, e),
             "protected:\n"
             "\n   // The following triggers methods must be implemented in a custom code"
             "\n   virtual void onBeforeFetch(zy::dao::detail::IxDao_Helper * dao);"
             "\n   virtual void onAfterUpdate(zy::dao::detail::IxDao_Helper * dao);"
             "\n   virtual void onAfterDelete(zy::dao::detail::IxDao_Helper * dao);");
}

TEST_F(GenKeysTriggers, WithoutTriggersNothingButTheFriendMarkerTrimming)
{
   auto e = m.addEntity("Order", "shop");
   EXPECT_EQ(run(gen::LIST_TRIGGERS_METHODS, e), "");
   EXPECT_EQ(run(gen::FORWARD_DECLARATION_FOR_TRIGGERS, e), "");
   EXPECT_EQ(run(gen::LIST_TRIGGERS_SPECIALIZATIONS, e), "");
   // The template line "   @@FRIEND_FOR_TRIGGERS@@" becomes an empty line.
   EXPECT_EQ(run(gen::FRIEND_FOR_TRIGGERS, e, "{\n\t   "), "{\n\t");
   EXPECT_EQ(run(gen::FRIEND_FOR_TRIGGERS, e, "   "), "");
   EXPECT_EQ(run(gen::FRIEND_FOR_TRIGGERS, e, "{\n"), "{\n");
}

TEST_F(GenKeysTriggers, FriendDeclarationWithTriggers)
{
   auto e = m.addEntity("Order", "shop");
   e->setTriggerBeforeInsert(true);
   EXPECT_EQ(run(gen::FRIEND_FOR_TRIGGERS, e, "{\n   "), "{\n   friend struct zy::dao::detail::ZyDao_Trigger<shop::Order>;");
}

TEST_F(GenKeysTriggers, ForwardDeclarationInsideNamespaces)
{
   auto e = m.addEntity("Order", "a::b");
   e->setTriggerAfterFetch(true);
   EXPECT_EQ(run(gen::FORWARD_DECLARATION_FOR_TRIGGERS, e),
             "namespace a {\nnamespace b {\n"
             "class Order;\n"
             "} // namespace b\n} // namespace a\n"
             "\nnamespace zy {\nnamespace dao {\nnamespace detail {\n"
             "\ntemplate <>\nstruct ZyDao_Trigger<a::b::Order>;\n"
             "\n} // namespace detail\n} // namespace dao\n} // namespace zy");
}

TEST_F(GenKeysTriggers, ForwardDeclarationWithoutNamespace)
{
   auto e = m.addEntity("Order");
   e->setTriggerAfterFetch(true);
   EXPECT_EQ(run(gen::FORWARD_DECLARATION_FOR_TRIGGERS, e),
             "class Order;\n"
             "\nnamespace zy {\nnamespace dao {\nnamespace detail {\n"
             "\ntemplate <>\nstruct ZyDao_Trigger<Order>;\n"
             "\n} // namespace detail\n} // namespace dao\n} // namespace zy");
}

TEST_F(GenKeysTriggers, DerivedEntityForwardsUnhandledEventsToItsBase)
{
   m.addEntity("Base", "ns");
   auto child = m.addEntity("Child", "ns");
   child->setParentKey("ns::Base");
   child->setTriggerBeforeInsert(true);
   const char * forward = " * t, zy::dao::detail::IxDao_Helper * dao)  { zy::dao::detail::ZyDao_Trigger<ns::Base>::on";
   const std::string expected =
         std::string("\nnamespace zy {\nnamespace dao {\nnamespace detail {\n"
                     "\ntemplate <>\nstruct ZyDao_Trigger<ns::Child>\n{\n") +
         "\n   static inline void onBeforeFetch(ns::Child" + forward + "BeforeFetch(static_cast<ns::Base *>(t), dao); }" +
         "\n   static inline void onAfterFetch(ns::Child" + forward + "AfterFetch(static_cast<ns::Base *>(t), dao); }" +
         "\n   static inline void onBeforeInsert(ns::Child * t, zy::dao::detail::IxDao_Helper * dao)  { if (t) { t->onBeforeInsert(dao); } }" +
         "\n   static inline void onAfterInsert(ns::Child" + forward + "AfterInsert(static_cast<ns::Base *>(t), dao); }" +
         "\n   static inline void onBeforeUpdate(ns::Child" + forward + "BeforeUpdate(static_cast<ns::Base *>(t), dao); }" +
         "\n   static inline void onAfterUpdate(ns::Child" + forward + "AfterUpdate(static_cast<ns::Base *>(t), dao); }" +
         "\n   static inline void onBeforeDelete(ns::Child" + forward + "BeforeDelete(static_cast<ns::Base *>(t), dao); }" +
         "\n   static inline void onAfterDelete(ns::Child" + forward + "AfterDelete(static_cast<ns::Base *>(t), dao); }" +
         "\n\n};\n\n} // namespace detail\n} // namespace dao\n} // namespace zy";
   EXPECT_EQ(run(gen::LIST_TRIGGERS_SPECIALIZATIONS, child), expected);
}

TEST_F(GenKeysTriggers, BaseEntityIgnoresUnhandledEvents)
{
   auto e = m.addEntity("Base", "ns");
   e->setTriggerBeforeInsert(true);
   const char * ignore = " * t, zy::dao::detail::IxDao_Helper * dao)  { Q_UNUSED(t); Q_UNUSED(dao); }";
   const std::string expected =
         std::string("\nnamespace zy {\nnamespace dao {\nnamespace detail {\n"
                     "\ntemplate <>\nstruct ZyDao_Trigger<ns::Base>\n{\n") +
         "\n   static inline void onBeforeFetch(ns::Base" + ignore +
         "\n   static inline void onAfterFetch(ns::Base" + ignore +
         "\n   static inline void onBeforeInsert(ns::Base * t, zy::dao::detail::IxDao_Helper * dao)  { if (t) { t->onBeforeInsert(dao); } }" +
         "\n   static inline void onAfterInsert(ns::Base" + ignore +
         "\n   static inline void onBeforeUpdate(ns::Base" + ignore +
         "\n   static inline void onAfterUpdate(ns::Base" + ignore +
         "\n   static inline void onBeforeDelete(ns::Base" + ignore +
         "\n   static inline void onAfterDelete(ns::Base" + ignore +
         "\n\n};\n\n} // namespace detail\n} // namespace dao\n} // namespace zy";
   EXPECT_EQ(run(gen::LIST_TRIGGERS_SPECIALIZATIONS, e), expected);
}

TEST_F(GenKeysTriggers, UnsavedParentCountsAsNoParentForTriggers)
{
   auto base = m.addEntity("Base");
   base->setId(0);
   auto child = m.addEntity("Child");
   child->setParentKey("Base");
   child->setTriggerBeforeFetch(true);
   child->setTriggerAfterFetch(true);
   child->setTriggerBeforeInsert(true);
   child->setTriggerAfterInsert(true);
   child->setTriggerBeforeUpdate(true);
   child->setTriggerAfterUpdate(true);
   child->setTriggerBeforeDelete(true);
   const std::string text = run(gen::LIST_TRIGGERS_SPECIALIZATIONS, child);
   const std::string lastLines =
         "\n   static inline void onBeforeDelete(Child * t, zy::dao::detail::IxDao_Helper * dao)  { if (t) { t->onBeforeDelete(dao); } }"
         "\n   static inline void onAfterDelete(Child * t, zy::dao::detail::IxDao_Helper * dao)  { Q_UNUSED(t); Q_UNUSED(dao); }"
         "\n\n};\n\n} // namespace detail\n} // namespace dao\n} // namespace zy";
   ASSERT_GE(text.size(), lastLines.size());
   EXPECT_EQ(text.substr(text.size() - lastLines.size()), lastLines);
   EXPECT_EQ(text.find("ZyDao_Trigger<Base>"), std::string::npos);
}

} // namespace
