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

const char * const kDeclParams = "(bool bLoadFromDatabase, const QString & sAppendRelations = QString(), QSqlDatabase * pDatabase = NULL, QSqlError * pDaoError = NULL);\n";
const char * const kImplParams = "(bool bLoadFromDatabase, const QString & sAppendRelations /* = QString() */, QSqlDatabase * pDatabase /* = NULL */, QSqlError * pDaoError /* = NULL */)\n";
const char * const kAppendLines =
      "   if (! sAppendRelations.isEmpty() && ! sAppendRelations.startsWith(\"->\") && ! sAppendRelations.startsWith(\">>\")) { sRelation += \"->\" + sAppendRelations; }\n"
      "   else if (! sAppendRelations.isEmpty()) { sRelation += sAppendRelations; }\n";

class GenRelations : public ::testing::Test
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

   // shop::Order with a primary key, a one-to-many "items" and a many-to-one "customer".
   model::entity_ptr makeOrder()
   {
      m.addEntity("Item", "shop");
      m.addEntity("Customer", "shop");
      auto order = m.addEntity("Order", "shop");
      auto id = m.addProperty(order, "id", "long");
      id->setPrimaryKey(true);
      m.addRelation(order, "items", 1, "shop::Item");
      m.addRelation(order, "customer", 2, "shop::Customer");
      return order;
   }
};

TEST_F(GenRelations, TypedefLinesFollowTheRelations)
{
   auto order = makeOrder();
   EXPECT_EQ(run(gen::LIST_RELATIONS_TYPEDEF, order),
             "public:\n"
             "\n   typedef zy::ZyCollection<long, std::shared_ptr<shop::Item> > type_items;"
             "\n   typedef std::shared_ptr<shop::Customer> type_customer;"
             "\n\n");
}

TEST_F(GenRelations, EntityWithoutRelationsGivesNothing)
{
   auto e = m.addEntity("Plain");
   m.addProperty(e, "id", "long")->setPrimaryKey(true);
   m.addProperty(e, "name", "QString");
   EXPECT_EQ(run(gen::LIST_RELATIONS_TYPEDEF, e), "");
   EXPECT_EQ(run(gen::LIST_RELATIONS_GETTER_WITH_FETCH, e), "");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, e), "");
   EXPECT_EQ(run(gen::LIST_STATIC_RELATIONS_KEYS, e), "");
}

TEST_F(GenRelations, FetchingGetterDeclarations)
{
   auto order = makeOrder();
   m.addEntity("Tag", "shop");
   m.addRelation(order, "tags", 3, "shop::Tag");
   EXPECT_EQ(run(gen::LIST_RELATIONS_GETTER_WITH_FETCH, order),
             std::string("   Order::type_items getitems") + kDeclParams +
             "   Order::type_items & items" + kDeclParams +
             "   Order::type_customer getcustomer" + kDeclParams +
             "   Order::type_tags gettags" + kDeclParams +
             "   Order::type_tags & tags" + kDeclParams);
}

TEST_F(GenRelations, FetchingGetterDefinitionsWithPrimaryKey)
{
   auto order = makeOrder();
   const std::string fetchItems = std::string(
         "   QString sRelation = \"{id} | items\";\n") + kAppendLines +
         "   shop::Order tmp;\n"
         "   tmp.m_id = this->m_id;\n"
         "   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);\n"
         "   if (! daoError.isValid()) { this->m_items = tmp.m_items; }\n"
         "   if (pDaoError) { (* pDaoError) = daoError; }\n";
   const std::string fetchCustomer = std::string(
         "   QString sRelation = \"{id} | customer\";\n") + kAppendLines +
         "   shop::Order tmp;\n"
         "   tmp.m_id = this->m_id;\n"
         "   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);\n"
         "   if (! daoError.isValid()) { this->m_customer = tmp.m_customer; }\n"
         "   if (pDaoError) { (* pDaoError) = daoError; }\n";

   EXPECT_EQ(run(gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, order),
             std::string("Order::type_items Order::getitems") + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return getitems(); }\n" +
             fetchItems +
             "   return m_items;\n"
             "}\n\n"
             "Order::type_items & Order::items" + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return items(); }\n" +
             fetchItems +
             "   return m_items;\n"
             "}\n\n"
             "Order::type_customer Order::getcustomer" + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return getcustomer(); }\n" +
             fetchCustomer +
             "   return m_customer;\n"
             "}\n\n");
}

TEST_F(GenRelations, WithoutPrimaryKeyTheGetterOnlyReturnsTheMember)
{
   m.addEntity("Customer");
   auto note = m.addEntity("Note");
   m.addRelation(note, "author", 0, "Customer");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, note),
             std::string("Note::type_author Note::getauthor") + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return getauthor(); }\n"
             "   return m_author;\n"
             "}\n\n");
}

TEST_F(GenRelations, PrimaryKeyOfTheBaseClassIsUsedToFetch)
{
   auto base = m.addEntity("Base");
   m.addProperty(base, "uid", "QString")->setPrimaryKey(true);
   m.addEntity("Piece");
   auto child = m.addEntity("Child", "ns");
   child->setParentKey("Base");
   m.addRelation(child, "piece", 2, "Piece");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, child),
             std::string("Child::type_piece Child::getpiece") + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return getpiece(); }\n"
             "   QString sRelation = \"{uid} | piece\";\n" + kAppendLines +
             "   ns::Child tmp;\n"
             "   tmp.m_uid = this->m_uid;\n"
             "   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);\n"
             "   if (! daoError.isValid()) { this->m_piece = tmp.m_piece; }\n"
             "   if (pDaoError) { (* pDaoError) = daoError; }\n"
             "   return m_piece;\n"
             "}\n\n");
}

TEST_F(GenRelations, PImplFetchBlockGoesThroughTheStructure)
{
   m_plugin.setPImpl(true);
   m.addEntity("Tag");
   auto post = m.addEntity("Post");
   m.addProperty(post, "id", "long")->setPrimaryKey(true);
   m.addRelation(post, "tags", 3, "Tag");
   const std::string fetch = std::string(
         "   QString sRelation = \"{id} | tags\";\n") + kAppendLines +
         "   Post tmp;\n"
         "   tmp.m_pImpl->m_id = this->m_pImpl->m_id;\n"
         "   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);\n"
         "   if (! daoError.isValid()) { this->m_pImpl->m_tags = tmp.m_pImpl->m_tags; }\n"
         "   if (pDaoError) { (* pDaoError) = daoError; }\n";
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, post),
             std::string("Post::type_tags Post::gettags") + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return gettags(); }\n" +
             fetch +
             "   return m_pImpl->m_tags;\n"
             "}\n\n"
             "Post::type_tags & Post::tags" + kImplParams +
             "{\n"
             "   if (pDaoError) { (* pDaoError) = QSqlError(); }\n"
             "   if (! bLoadFromDatabase) { return tags(); }\n" +
             fetch +
             "   return m_pImpl->m_tags;\n"
             "}\n\n");
}

TEST_F(GenRelations, ObsoleteOrNoWriteAccessorsKeepTypedefAndKeyButNoFetchingGetter)
{
   m.addEntity("Item");
   auto e = m.addEntity("Cart");
   m.addProperty(e, "id", "long")->setPrimaryKey(true);
   m.addRelation(e, "old", 1, "Item")->setObsolete(true);
   m.addRelation(e, "fixed", 2, "Item")->setWriteAccessors(false);

   EXPECT_EQ(run(gen::LIST_RELATIONS_TYPEDEF, e),
             "public:\n"
             "\n   typedef zy::ZyCollection<long, std::shared_ptr<Item> > type_old;"
             "\n   typedef std::shared_ptr<Item> type_fixed;"
             "\n\n");
   EXPECT_EQ(run(gen::LIST_STATIC_RELATIONS_KEYS, e),
             "public:\n"
             "\n   static QString relation_old(bool key = false) { Q_UNUSED(key); return \"old\"; }"
             "\n   static QString relation_fixed(bool key = false) { Q_UNUSED(key); return \"fixed\"; }");
   EXPECT_EQ(run(gen::LIST_RELATIONS_GETTER_WITH_FETCH, e), "");
   EXPECT_EQ(run(gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, e), "");
}

TEST_F(GenRelations, RelationKeyGivesTheColumnWhenItDiffers)
{
   m.addEntity("Item");
   auto e = m.addEntity("Cart");
   m.addRelation(e, "items", 1, "Item")->setColumnName("cart_id");
   m.addRelation(e, "owner", 2, "Item")->setColumnName("owner");
   m.addRelation(e, "Size", 2, "Item")->setColumnName("size");
   EXPECT_EQ(run(gen::LIST_STATIC_RELATIONS_KEYS, e),
             "public:\n"
             "\n   static QString relation_items(bool key = false) { return (key ? QString(\"items\") : QString(\"cart_id\")); }"
             "\n   static QString relation_owner(bool key = false) { Q_UNUSED(key); return \"owner\"; }"
             "\n   static QString relation_Size(bool key = false) { return (key ? QString(\"Size\") : QString(\"size\")); }");
}

} // namespace
