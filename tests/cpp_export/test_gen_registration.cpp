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

const char * const kDeclarations =
      "   zy::IxDataMember * pData = NULL; Q_UNUSED(pData);\n"
      "   zy::IxSqlRelation * pRelation = NULL; Q_UNUSED(pRelation);\n"
      "   zy::IxFunction * pFct = NULL; Q_UNUSED(pFct);\n"
      "   zy::IxValidator * pValidator = NULL; Q_UNUSED(pValidator);\n";

class GenRegistration : public ::testing::Test
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

TEST_F(GenRegistration, EmptyEntity)
{
   auto e = m.addEntity("Empty");
   EXPECT_EQ(run(gen::IMPLEMENT_ZY_REGISTER_CLASS, e),
             std::string(kDeclarations) +
             "\n   t.setName(\"Empty\");\n"
             "\n\n   zy::ZyValidatorX<Empty> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);");
}

TEST_F(GenRegistration, FullEntity)
{
   auto e = m.addEntity("Order", "shop");
   e->setTableName("t_order");
   e->setDescription("A \"big\" order");
   e->setSoftDeleteColumn("deleted_at");
   e->setReadOnly(true);
   e->setMetaData("zeta", "z");
   e->setMetaData("alpha", "say \"hi\"");
   e->setValidatorMethod("checkOrder");

   auto id = m.addProperty(e, "id", "long");
   id->setPrimaryKey(true);
   id->setVersion(2);
   id->setColumnName("ID");
   id->setDescription("key");
   id->setMetaData("TAVREL_NO_ID", "false");
   id->setForceSqlType("BIGINT");
   id->setForceSqlAlias("oid");
   id->setFormat("%d");
   id->setAllowNull(false);
   id->setIndex(true);
   id->setUnique(true);
   id->setMinValue(QVariant(QString("1")));

   auto paid = m.addProperty(e, "paid", "bool");
   paid->setColumnName("paid");
   paid->setIndex(true);
   paid->setUnique(true);
   paid->setAllowNull(false);

   auto note = m.addProperty(e, "note", "QString");
   note->setVersion(1);
   note->setTransient(true);
   note->setSerializable(false);
   note->setMinLength(QVariant(QString("2")));
   note->setMaxLength(QVariant(QString("10")));
   note->setRegExp("^\\w+$");

   m.addProperty(e, "legacy", "int")->setObsolete(true);

   auto amount = m.addProperty(e, "amount", "double");
   amount->setColumnName("Amount");
   amount->setMinValue(QVariant(QString("0")));
   amount->setMaxValue(QVariant(QString("99.5")));

   m.addEntity("Item", "shop");
   m.addRelation(e, "items", 1, "shop::Item")->getRelation()->setForeignKey("order_id");

   EXPECT_EQ(run(gen::IMPLEMENT_ZY_REGISTER_CLASS, e),
             std::string(kDeclarations) +
             "\n   t.setName(\"t_order\");\n"
             "   t.setDescription(\"A \\\"big\\\" order\");\n"
             "   t.setSoftDelete(zy::ZySoftDelete(\"deleted_at\"));\n"
             "   t.setDaoReadOnly(true);\n"
             "   t.setPropertyBag(\"alpha\", \"say \\\"hi\\\"\");\n"
             "   t.setPropertyBag(\"zeta\", \"z\");\n"
             "\n   pData = t.id(& shop::Order::m_id, \"id\", 2);"
             "\n   pData->setName(\"ID\");"
             "\n   pData->setDescription(\"key\");"
             "\n   pData->setPropertyBag(\"TAVREL_NO_ID\", \"false\");"
             "\n   pData->setSqlType(\"BIGINT\");"
             "\n   pData->setSqlAlias(\"oid\");"
             "\n   pData->setFormat(\"%d\");"
             "\n"
             "\n   pData = t.data(& shop::Order::m_paid, \"paid\", 0, true, true);"
             "\n   pData->setIsIndex(true);"
             "\n   pData->setIsUnique(true);"
             "\n   pData = t.data(& shop::Order::m_note, \"note\", 1, false, false);"
             "\n   pData = t.data(& shop::Order::m_amount, \"amount\", 0, true, true);"
             "\n   pData->setName(\"Amount\");"
             "\n"
             "\n   pRelation = t.relationOneToMany(& shop::Order::m_items, \"items\", \"order_id\", 0);"
             "\n\n   zy::ZyValidatorX<shop::Order> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);"
             "\n   pAllValidator->add_CustomValidator(std::mem_fn(& shop::Order::checkOrder));"
             "\n   pAllValidator->add_MinDecimal(\"id\", 1);"
             "\n   pAllValidator->add_NotNull(\"paid\");"
             "\n   pAllValidator->add_MinLength(\"note\", 2);"
             "\n   pAllValidator->add_MaxLength(\"note\", 10);"
             "\n   pAllValidator->add_RegExp(\"note\", \"^\\\\w+$\");"
             "\n   pAllValidator->add_MinDecimal(\"amount\", 0);"
             "\n   pAllValidator->add_MaxDecimal(\"amount\", 99.5);");
}

TEST_F(GenRegistration, SerializableAndTransientFlags)
{
   auto e = m.addEntity("Flags");
   m.addProperty(e, "plain", "int");
   m.addProperty(e, "cache", "int")->setTransient(true);
   m.addProperty(e, "secret", "int")->setSerializable(false);
   EXPECT_EQ(run(gen::IMPLEMENT_ZY_REGISTER_CLASS, e),
             std::string(kDeclarations) +
             "\n   t.setName(\"Flags\");\n"
             "\n"
             "\n   pData = t.data(& Flags::m_plain, \"plain\", 0, true, true);"
             "\n   pData = t.data(& Flags::m_cache, \"cache\", 0, true, false);"
             "\n   pData = t.data(& Flags::m_secret, \"secret\", 0, false, true);"
             "\n\n   zy::ZyValidatorX<Flags> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);");
}

TEST_F(GenRegistration, PrimaryKeyMarkedNoIdIsNotMapped)
{
   auto e = m.addEntity("View");
   auto id = m.addProperty(e, "id", "long");
   id->setPrimaryKey(true);
   id->setMetaData("TAVREL_NO_ID", "true");
   id->setAllowNull(false);
   id->setMaxLength(QVariant(QString("20")));
   m.addProperty(e, "label", "QString");
   EXPECT_EQ(run(gen::IMPLEMENT_ZY_REGISTER_CLASS, e),
             std::string(kDeclarations) +
             "\n   t.setName(\"View\");\n"
             "\n"
             "\n   pData = t.data(& View::m_label, \"label\", 0, true, true);"
             "\n\n   zy::ZyValidatorX<View> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);"
             "\n   pAllValidator->add_MaxLength(\"id\", 20);");
}

TEST_F(GenRegistration, PImplNamesMembersThroughTheStructure)
{
   m_plugin.setPImpl(true);
   m.addEntity("Other", "ns");
   auto e = m.addEntity("Class", "ns");
   m.addProperty(e, "id", "long")->setPrimaryKey(true);
   m.addProperty(e, "x", "int");
   m.addRelation(e, "r", 2, "ns::Other");
   EXPECT_EQ(run(gen::IMPLEMENT_ZY_REGISTER_CLASS, e),
             std::string(kDeclarations) +
             "   zy::IxDataMember * pImpl = NULL; Q_UNUSED(pImpl);\n"
             "\n"
             "   pImpl = t.pimpl(& ns::Class::m_pImpl);\n"
             "\n"
             "\n   t.setName(\"Class\");\n"
             "\n   pData = t.id(& ns::Class::Class_impl::m_id, \"id\", 0, pImpl);"
             "\n"
             "\n   pData = t.data(& ns::Class::Class_impl::m_x, \"x\", 0, true, true, pImpl);"
             "\n"
             "\n   pRelation = t.relationManyToOne(& ns::Class::Class_impl::m_r, \"r\", 0, pImpl);"
             "\n\n   zy::ZyValidatorX<ns::Class> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);");
}

TEST_F(GenRegistration, RelationKindsAndFollowUpLines)
{
   m.addEntity("Person");
   m.addEntity("Tag");
   auto e = m.addEntity("Shop");
   m.addRelation(e, "manager", 0, "Person");
   model::property_ptr pManager = e->getPropertyByName("manager");
   pManager->setVersion(1);
   pManager->setColumnName("mgr_id");
   pManager->setDescription("boss");
   pManager->setMetaData("k", "v");
   pManager->setSerializable(false);
   pManager->setIndex(true);
   auto tags = m.addRelation(e, "tags", 3, "Tag")->getRelation();
   tags->setExtraTable("t_shop_tag");
   tags->setForeignKey("tag_id");
   tags->setForeignKeyOwner("shop_id");
   m.addRelation(e, "weird", 9, "Tag");
   e->getPropertyByName("weird")->setColumnName("w");

   EXPECT_EQ(run(gen::IMPLEMENT_ZY_REGISTER_CLASS, e),
             std::string(kDeclarations) +
             "\n   t.setName(\"Shop\");\n"
             "\n"
             "\n   pRelation = t.relationOneToOne(& Shop::m_manager, \"manager\", 1);"
             "\n   pRelation->getDataMember()->setName(\"mgr_id\");"
             "\n   pRelation->getDataMember()->setDescription(\"boss\");"
             "\n   pRelation->setPropertyBag(\"k\", \"v\");"
             "\n   pRelation->getDataMember()->setSerialize(false);"
             "\n   pRelation->getDataMember()->setIsIndex(true);"
             "\n   pRelation = t.relationManyToMany(& Shop::m_tags, \"tags\", \"t_shop_tag\", \"tag_id\", \"shop_id\", 0);"
             "\n   pRelation->getDataMember()->setName(\"w\");"
             "\n\n   zy::ZyValidatorX<Shop> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);");
}

TEST_F(GenRegistration, DerivedDefaultConstructor)
{
   m.addEntity("Base", "ns");
   auto child = m.addEntity("Child");
   child->setParentKey("ns::Base");
   m.addProperty(child, "flag", "bool");
   EXPECT_EQ(run(gen::IMPLEMENT_CONSTRUCTOR, child), "Child::Child() : ns::Base(), m_flag(false) { ; }");
}

TEST_F(GenRegistration, DefaultConstructorInitialisers)
{
   m.addEntity("Other");
   auto e = m.addEntity("Item");
   m.addProperty(e, "id", "long")->setPrimaryKey(true);
   m.addProperty(e, "name", "QString");
   m.addProperty(e, "title", "QString", "say \"x\"");
   m.addProperty(e, "done", "bool", "true");
   m.addProperty(e, "ratio", "double");
   m.addProperty(e, "count", "int", "5");
   m.addProperty(e, "when", "QDateTime");
   m.addProperty(e, "status", "Status::enum_Status", "Status::New");
   m.addProperty(e, "untyped", QString());
   m.addRelation(e, "other", 2, "Other");
   EXPECT_EQ(run(gen::IMPLEMENT_CONSTRUCTOR, e),
             "Item::Item() : m_id(0), m_title(\"say \\\"x\\\"\"), m_done(true), m_ratio(0.0), m_count(5), m_status(Status::New) { ; }");
}

TEST_F(GenRegistration, DefaultConstructorWithNothingToInitialise)
{
   auto e = m.addEntity("Bare");
   m.addProperty(e, "name", "QString");
   EXPECT_EQ(run(gen::IMPLEMENT_CONSTRUCTOR, e), "Bare::Bare() { ; }");
}

TEST_F(GenRegistration, UnsavedParentGivesNoBaseConstructorCall)
{
   auto base = m.addEntity("Base");
   base->setId(0);
   auto child = m.addEntity("Child");
   child->setParentKey("Base");
   m.addProperty(child, "n", "int");
   EXPECT_EQ(run(gen::IMPLEMENT_CONSTRUCTOR, child), "Child::Child() : m_n(0) { ; }");
}

TEST_F(GenRegistration, PImplDefaultConstructorAllocatesTheStructure)
{
   m_plugin.setPImpl(true);
   m.addEntity("Base", "ns");
   auto order = m.addEntity("Order");
   m.addProperty(order, "paid", "bool");
   EXPECT_EQ(run(gen::IMPLEMENT_CONSTRUCTOR, order), "Order::Order() : m_pImpl(new Order_impl()) { ; }");
   auto child = m.addEntity("Child");
   child->setParentKey("ns::Base");
   m.addProperty(child, "flag", "bool");
   EXPECT_EQ(run(gen::IMPLEMENT_CONSTRUCTOR, child), "Child::Child() : ns::Base(), m_pImpl(new Child_impl()) { ; }");
}

TEST_F(GenRegistration, ForwardDeclarationsOncePerTarget)
{
   m.addEntity("Item", "shop");
   m.addEntity("Customer", "crm::people");
   m.addEntity("Tag");
   m.addEntity("Legacy");
   auto order = m.addEntity("Order", "shop");
   m.addProperty(order, "id", "long")->setPrimaryKey(true);
   m.addRelation(order, "items", 1, "shop::Item");
   m.addRelation(order, "customer", 2, "crm::people::Customer");
   m.addRelation(order, "lines", 1, "shop::Item");
   m.addRelation(order, "parent", 2, "shop::Order");
   m.addRelation(order, "tag", 2, "Tag");
   m.addRelation(order, "old", 2, "Legacy");
   order->getPropertyByName("old")->setObsolete(true);
   m.addRelation(order, "ghost", 2, "Ghost");
   EXPECT_EQ(run(gen::LIST_FORWARD_DECLARATION, order),
             "namespace shop {\nclass Item;\n} // namespace shop\n"
             "namespace crm {\nnamespace people {\nclass Customer;\n} // namespace people\n} // namespace crm\n"
             "namespace shop {\nclass Order;\n} // namespace shop\n"
             "class Tag;\n");
}

TEST_F(GenRegistration, NoForwardDeclarationWithoutRelations)
{
   auto e = m.addEntity("Plain");
   m.addProperty(e, "x", "int");
   EXPECT_EQ(run(gen::LIST_FORWARD_DECLARATION, e), "");
}

} // namespace
