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

const char * const kNotEnabled = "/* 'PIMPL idiom' setting is not enabled */";

class GenPimpl : public ::testing::Test
{
protected:
   plugin::cpp_export m_plugin;
   plugin::cpp_builder m_builder { & m_plugin };
   test_model m;

   void SetUp() override { m_plugin.setPImpl(true); }

   // As a standard string, so that a failing comparison prints readable text.
   std::string run(generator fct, const model::entity_ptr & e)
   {
      m.project->resolveLinks();
      QString out;
      fct(m_builder, out, * m.project, * e);
      return out.toStdString();
   }
};

TEST_F(GenPimpl, SettingOffGivesTheNoticeForAllSix)
{
   m_plugin.setPImpl(false);
   auto e = m.addEntity("Order");
   m.addProperty(e, "id", "long")->setPrimaryKey(true);
   const generator all[] = { gen::PIMPL_DEFINITION, gen::PIMPL_IMPLEMENTATION, gen::PIMPL_COPYABLE_DEFINITION,
                             gen::PIMPL_COPYABLE_IMPLEMENTATION, gen::PIMPL_MOVABLE_DEFINITION, gen::PIMPL_MOVABLE_IMPLEMENTATION };
   for (generator fct : all) { EXPECT_EQ(run(fct, e), kNotEnabled); }
}

TEST_F(GenPimpl, WithoutPluginObjectTheSettingIsOff)
{
   plugin::cpp_builder builder(nullptr);
   auto e = m.addEntity("Order");
   m.project->resolveLinks();
   QString out;
   gen::PIMPL_DEFINITION(builder, out, * m.project, * e);
   EXPECT_EQ(out.toStdString(), kNotEnabled);
}

TEST_F(GenPimpl, Definition)
{
   auto e = m.addEntity("Order", "shop");
   EXPECT_EQ(run(gen::PIMPL_DEFINITION, e),
             "\nprivate:\n"
             "\n"
             "   struct Order_impl;\n"
             "   std::unique_ptr<Order_impl> m_pImpl; //!< Private implementation idiom\n");
}

TEST_F(GenPimpl, EntityWithoutPropertiesHasNoStructureDefinition)
{
   auto e = m.addEntity("Empty");
   EXPECT_EQ(run(gen::PIMPL_IMPLEMENTATION, e), "");
   EXPECT_EQ(run(gen::PIMPL_DEFINITION, e),
             "\nprivate:\n\n   struct Empty_impl;\n   std::unique_ptr<Empty_impl> m_pImpl; //!< Private implementation idiom\n");
}

TEST_F(GenPimpl, StructureWithPrimaryKey)
{
   auto e = m.addEntity("Order", "shop");
   m.addProperty(e, "id", "long")->setPrimaryKey(true);
   m.addProperty(e, "paid", "bool");
   EXPECT_EQ(run(gen::PIMPL_IMPLEMENTATION, e),
             "struct Q_DECL_HIDDEN Order::Order_impl\n"
             "{\n"
             "   long m_id;\n"
             "   bool m_paid;\n"
             "\n   Order_impl() : m_id(0), m_paid(false) { ; }\n"
             "   Order_impl(const long & id) : m_id(id), m_paid(false) { ; }\n"
             "   ~Order_impl() { ; }\n"
             "};");
}

TEST_F(GenPimpl, StructureMembersDefaultsAndRelations)
{
   m.addEntity("Item");
   auto e = m.addEntity("Cart");
   m.addProperty(e, "label", "QString", "new \"cart\"")->setDescription("shown name");
   m.addProperty(e, "note", "QString");
   m.addProperty(e, "code", "QString")->setPrimaryKey(true);
   m.addProperty(e, "old", "int", "7")->setObsolete(true);
   m.addRelation(e, "items", 1, "Item")->setDescription("content");
   EXPECT_EQ(run(gen::PIMPL_IMPLEMENTATION, e),
             "struct Q_DECL_HIDDEN Cart::Cart_impl\n"
             "{\n"
             "   QString m_label; //!< shown name\n"
             "   QString m_note;\n"
             "   QString m_code;\n"
             "   int m_old;\n"
             "   Cart::type_items m_items; //!< content\n"
             "\n   Cart_impl() : m_label(\"new \\\"cart\\\"\"), m_old(7) { ; }\n"
             "   Cart_impl(const QString & id) : m_label(\"new \\\"cart\\\"\"), m_code(id), m_old(7) { ; }\n"
             "   ~Cart_impl() { ; }\n"
             "};");
}

TEST_F(GenPimpl, StructureWithoutPrimaryKeyTakesALongId)
{
   auto e = m.addEntity("Log");
   m.addProperty(e, "text", "QString");
   EXPECT_EQ(run(gen::PIMPL_IMPLEMENTATION, e),
             "struct Q_DECL_HIDDEN Log::Log_impl\n"
             "{\n"
             "   QString m_text;\n"
             "\n   Log_impl() { ; }\n"
             "   Log_impl(const long & id) { ; }\n"
             "   ~Log_impl() { ; }\n"
             "};");
}

TEST_F(GenPimpl, CopyPieces)
{
   auto e = m.addEntity("Order", "shop");
   EXPECT_EQ(run(gen::PIMPL_COPYABLE_DEFINITION, e),
             "   Order(const Order & other);\n"
             "   Order & operator=(const Order & other);");
   EXPECT_EQ(run(gen::PIMPL_COPYABLE_IMPLEMENTATION, e),
             "Order::Order(const Order & other) : m_pImpl(new Order_impl(* other.m_pImpl)) { ; }\n"
             "\n"
             "Order & Order::operator=(const Order & other)\n"
             "{\n"
             "   if (this != (& other)) { (* m_pImpl) = (* other.m_pImpl); }\n"
             "   return (* this);\n"
             "}");
}

TEST_F(GenPimpl, MovePieces)
{
   auto e = m.addEntity("Order", "shop");
   EXPECT_EQ(run(gen::PIMPL_MOVABLE_DEFINITION, e),
             "\n#ifdef Q_COMPILER_RVALUE_REFS\n"
             "   Order(Order && other) Q_DECL_NOEXCEPT;\n"
             "   Order & operator=(Order && other) Q_DECL_NOEXCEPT;\n"
             "#endif // Q_COMPILER_RVALUE_REFS");
   EXPECT_EQ(run(gen::PIMPL_MOVABLE_IMPLEMENTATION, e),
             "\n#ifdef Q_COMPILER_RVALUE_REFS\n"
             "Order::Order(Order && other) Q_DECL_NOEXCEPT : m_pImpl(std::move(other.m_pImpl)) { ; }\n"
             "Order & Order::operator=(Order && other) Q_DECL_NOEXCEPT { if (this != (& other)) { m_pImpl = std::move(other.m_pImpl); }; return (* this); }\n"
             "#endif // Q_COMPILER_RVALUE_REFS");
}

} // namespace
