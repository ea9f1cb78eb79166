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

class GenProperties : public ::testing::Test
{
protected:
   plugin::cpp_export m_plugin;
   plugin::cpp_builder m_builder { & m_plugin };
   test_model m;

   // As a standard string, so that a failing comparison prints readable text.
   std::string run(generator fct, const model::entity_ptr & e)
   {
      m.project->resolveLinks();
      QString out;
      fct(m_builder, out, * m.project, * e);
      return out.toStdString();
   }
};

TEST_F(GenProperties, NullableIntegerGetterReturnsValueOrZero)
{
   auto person = m.addEntity("Person");
   m.addProperty(person, "age", "int", QString(), 3);
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, person),
             "int Person::getage() const { return (m_age ? (* m_age) : int(0)); }\n\n"
             "std::optional<int> Person::getage_() const { return m_age; }\n\n");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, person),
             "   int getage() const;\n"
             "   std::optional<int> getage_() const;\n");
}

TEST_F(GenProperties, NullableFallbackFollowsTheKindOfValue)
{
   auto e = m.addEntity("Item");
   m.addProperty(e, "done", "bool", QString(), 3);
   m.addProperty(e, "price", "double", QString(), 3);
   m.addProperty(e, "label", "QString", QString(), 3);
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, e),
             "bool Item::getdone() const { return (m_done ? (* m_done) : bool(false)); }\n\n"
             "std::optional<bool> Item::getdone_() const { return m_done; }\n\n"
             "double Item::getprice() const { return (m_price ? (* m_price) : double(0.0)); }\n\n"
             "std::optional<double> Item::getprice_() const { return m_price; }\n\n"
             "QString Item::getlabel() const { return (m_label ? (* m_label) : QString()); }\n\n"
             "std::optional<QString> Item::getlabel_() const { return m_label; }\n\n");
}

TEST_F(GenProperties, CollectionOfOptionalsIsAnOrdinaryProperty)
{
   auto e = m.addEntity("Item");
   m.addProperty(e, "marks", "int", QString(), 3, 1);
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, e), "   QList<std::optional<int> > getmarks() const;\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, e),
             "QList<std::optional<int> > Item::getmarks() const { return m_marks; }\n\n");
}

TEST_F(GenProperties, ReadOnlyObsoleteAndNoWriteAccessors)
{
   auto e = m.addEntity("Doc");
   m.addProperty(e, "title", "QString")->setReadOnly(true);
   m.addProperty(e, "old", "int")->setObsolete(true);
   m.addProperty(e, "hidden", "int")->setWriteAccessors(false);
   m.addProperty(e, "size", "long");

   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e),
             "protected:\n\n"
             "   QString m_title;\n"
             "   int m_old;\n"
             "   int m_hidden;\n"
             "   long m_size;\n");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, e),
             "   QString gettitle() const;\n"
             "   long getsize() const;\n");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_SETTER, e), "   void setsize(const long & val);\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, e),
             "QString Doc::gettitle() const { return m_title; }\n\n"
             "long Doc::getsize() const { return m_size; }\n\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_SETTER, e), "void Doc::setsize(const long & val) { m_size = val; }\n\n");
}

TEST_F(GenProperties, AccessLabelsFollowPropertyOrder)
{
   auto e = m.addEntity("Mix");
   m.addProperty(e, "a", "int")->setAccessibility(1);
   m.addProperty(e, "b", "int")->setAccessibility(0);
   m.addProperty(e, "c", "int")->setAccessibility(1);
   m.addProperty(e, "d", "int")->setAccessibility(2);
   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e),
             "protected:\n\n"
             "   int m_a;\n"
             "\npublic:\n\n"
             "   int m_b;\n"
             "\nprotected:\n\n"
             "   int m_c;\n"
             "\nprivate:\n\n"
             "   int m_d;\n");
}

TEST_F(GenProperties, FirstPublicPropertyLeavesAnEmptyProtectedSection)
{
   auto e = m.addEntity("Pub");
   m.addProperty(e, "x", "int")->setAccessibility(0);
   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e), "protected:\n\n\npublic:\n\n   int m_x;\n");
}

TEST_F(GenProperties, UnknownAccessibilityWritesNoLabelButBecomesCurrent)
{
   auto e = m.addEntity("Odd");
   m.addProperty(e, "a", "int");
   m.addProperty(e, "b", "int")->setAccessibility(7);
   m.addProperty(e, "c", "int")->setAccessibility(7);
   m.addProperty(e, "d", "int");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e),
             "protected:\n\n   int m_a;\n   int m_b;\n   int m_c;\n\nprotected:\n\n   int m_d;\n");
}

TEST_F(GenProperties, DescriptionStaysOnTheMemberLineUnchanged)
{
   auto e = m.addEntity("Note");
   m.addProperty(e, "text", "QString")->setDescription("first line\nsecond \"line\"");
   m.addProperty(e, "n", "int")->setDescription("count");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e),
             "protected:\n\n"
             "   QString m_text; //!< first line\nsecond \"line\"\n"
             "   int m_n; //!< count\n");
}

TEST_F(GenProperties, EntityWithoutPropertiesGivesNothing)
{
   auto e = m.addEntity("Empty");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e), "");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, e), "");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_SETTER, e), "");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, e), "");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_SETTER, e), "");
}

TEST_F(GenProperties, PImplWritesTheNoticeAndReachesMembersThroughTheStructure)
{
   m_plugin.setPImpl(true);
   auto e = m.addEntity("Order");
   m.addProperty(e, "paid", "bool");
   m.addProperty(e, "note", "QString", QString(), 3);
   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, e),
             "/* 'PIMPL idiom' setting is enabled : properties will be defined in the private implementation structure */");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, e),
             "   bool getpaid() const;\n"
             "   QString getnote() const;\n"
             "   std::optional<QString> getnote_() const;\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, e),
             "bool Order::getpaid() const { return m_pImpl->m_paid; }\n\n"
             "QString Order::getnote() const { return (m_pImpl->m_note ? (* m_pImpl->m_note) : QString()); }\n\n"
             "std::optional<QString> Order::getnote_() const { return m_pImpl->m_note; }\n\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_SETTER, e),
             "void Order::setpaid(const bool & val) { m_pImpl->m_paid = val; }\n\n"
             "void Order::setnote(const std::optional<QString> & val) { m_pImpl->m_note = val; }\n\n");
}

TEST_F(GenProperties, WithoutPluginObjectPImplIsOff)
{
   plugin::cpp_builder builder(nullptr);
   auto e = m.addEntity("Solo");
   m.addProperty(e, "x", "int");
   m.project->resolveLinks();
   QString out;
   gen::LIST_PROPERTIES_DEFINITION(builder, out, * m.project, * e);
   gen::IMPLEMENT_LIST_PROPERTIES_SETTER(builder, out, * m.project, * e);
   EXPECT_EQ(out.toStdString(), "protected:\n\n   int m_x;\nvoid Solo::setx(const int & val) { m_x = val; }\n\n");
}

TEST_F(GenProperties, CollectionRelationsGetReferenceAccessors)
{
   m.addEntity("Item", "shop");
   m.addEntity("Tag", "shop");
   m.addEntity("Customer", "shop");
   auto order = m.addEntity("Order", "shop");
   m.addRelation(order, "items", 1, "shop::Item");
   m.addRelation(order, "tags", 3, "shop::Tag");
   m.addRelation(order, "customer", 2, "shop::Customer");

   EXPECT_EQ(run(gen::LIST_PROPERTIES_DEFINITION, order),
             "protected:\n\n"
             "   Order::type_items m_items;\n"
             "   Order::type_tags m_tags;\n"
             "   Order::type_customer m_customer;\n");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, order),
             "   Order::type_items getitems() const;\n"
             "   Order::type_items & items();\n"
             "   const Order::type_items & items() const;\n"
             "   Order::type_tags gettags() const;\n"
             "   Order::type_tags & tags();\n"
             "   const Order::type_tags & tags() const;\n"
             "   Order::type_customer getcustomer() const;\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, order),
             "Order::type_items Order::getitems() const { return m_items; }\n\n"
             "Order::type_items & Order::items() { return m_items; }\n\n"
             "const Order::type_items & Order::items() const { return m_items; }\n\n"
             "Order::type_tags Order::gettags() const { return m_tags; }\n\n"
             "Order::type_tags & Order::tags() { return m_tags; }\n\n"
             "const Order::type_tags & Order::tags() const { return m_tags; }\n\n"
             "Order::type_customer Order::getcustomer() const { return m_customer; }\n\n");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_SETTER, order),
             "   void setitems(const Order::type_items & val);\n"
             "   void settags(const Order::type_tags & val);\n"
             "   void setcustomer(const Order::type_customer & val);\n");
}

TEST_F(GenProperties, UserBodiesReplaceOnlyTheMainAccessors)
{
   m.addEntity("Item");
   auto e = m.addEntity("Box");
   auto items = m.addRelation(e, "items", 1, "Item");
   items->setGetMethod("return filtered();");
   auto age = m.addProperty(e, "age", "int", QString(), 3);
   age->setGetMethod("return 42;");
   auto name = m.addProperty(e, "name", "QString");
   name->setGetMethod("return m_name.trimmed();");
   name->setSetMethod("m_name = val.toUpper();");

   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_GETTER, e),
             "Box::type_items Box::getitems() const { return filtered(); }\n\n"
             "Box::type_items & Box::items() { return m_items; }\n\n"
             "const Box::type_items & Box::items() const { return m_items; }\n\n"
             "int Box::getage() const { return 42; }\n\n"
             "std::optional<int> Box::getage_() const { return m_age; }\n\n"
             "QString Box::getname() const { return m_name.trimmed(); }\n\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_SETTER, e),
             "void Box::setitems(const Box::type_items & val) { m_items = val; }\n\n"
             "void Box::setage(const std::optional<int> & val) { m_age = val; }\n\n"
             "void Box::setname(const QString & val) { m_name = val.toUpper(); }\n\n");
}

TEST_F(GenProperties, InheritedPropertiesBelongToTheBaseClass)
{
   auto base = m.addEntity("Base");
   m.addProperty(base, "id", "long")->setPrimaryKey(true);
   auto child = m.addEntity("Child");
   child->setParentKey("Base");
   m.addProperty(child, "flag", "bool");
   EXPECT_EQ(run(gen::LIST_PROPERTIES_GETTER, child), "   bool getflag() const;\n");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_PROPERTIES_SETTER, child), "void Child::setflag(const bool & val) { m_flag = val; }\n\n");
}

} // namespace
