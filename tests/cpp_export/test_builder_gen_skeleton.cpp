#include "builder_test_support.h"

using namespace builder_test;
namespace gen = plugin::generators;

namespace {

typedef void (* generator)(const plugin::cpp_builder &, QString &, model::project &, model::entity &);

class GenSkeleton : public export_fixture
{
protected:
   model::project_ptr m_pProject;

   model::entity_ptr load(const QByteArray & json, const QString & key)
   {
      m_pProject = parseModel(json);
      if (! m_pProject) { return nullptr; }
      model::entity_ptr e = m_pProject->getEntityByKey(key);
      EXPECT_TRUE(e) << key.toStdString();
      return e;
   }

   QString run(generator fct, const model::entity_ptr & e, const QString & before = QString())
   {
      QString out = before;
      fct(* m_pBuilder, out, * m_pProject, * e);
      return out;
   }
};

const QByteArray k_orderJson = R"json({
  "name": "shop",
  "entities": [
    {"name": "Order", "namespace": "sales", "version": 3, "description": "A customer order",
     "properties": [{"name": "id", "type": "long", "primary_key": true}]}
  ]
})json";

// Base with id 0 (never saved), Child that derives from it, and a saved parent for Heir.
const QByteArray k_parentsJson = R"json({
  "name": "shop",
  "entities": [
    {"id": 0, "name": "Unsaved"},
    {"id": 1, "name": "Base", "namespace": "core", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
    {"id": 2, "name": "Child", "parent": "Unsaved"},
    {"id": 3, "name": "Heir", "parent": "core::Base", "properties": [{"name": "x", "type": "int"}]},
    {"id": 4, "name": "Alone"}
  ]
})json";

} // namespace

TEST_F(GenSkeleton, IncludeGuardUsesProjectAndFlattenedKeyInUpperCase)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::INCLUDE_MACRO_GUARD, e), QString("_SHOP_SALES_ORDER_H_"));
   e->setNamespace(QString());
   EXPECT_EQ(run(gen::INCLUDE_MACRO_GUARD, e), QString("_SHOP_ORDER_H_"));
   e->setNamespace("a::b::c");
   EXPECT_EQ(run(gen::INCLUDE_MACRO_GUARD, e), QString("_SHOP_A_B_C_ORDER_H_"));
}

TEST_F(GenSkeleton, NamespaceLinesOutermostFirstAndInnermostFirst)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   e->setNamespace("a::b");
   EXPECT_EQ(run(gen::NAMESPACE_BEGIN, e), QString("namespace a {\nnamespace b {"));
   EXPECT_EQ(run(gen::NAMESPACE_END, e), QString("} // namespace b\n} // namespace a"));
   e->setNamespace("sales");
   EXPECT_EQ(run(gen::NAMESPACE_BEGIN, e), QString("namespace sales {"));
   EXPECT_EQ(run(gen::NAMESPACE_END, e), QString("} // namespace sales"));
}

TEST_F(GenSkeleton, EntityNamespaceKeepsEmptyInnerPart)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   e->setNamespace("a::::b");
   EXPECT_EQ(run(gen::NAMESPACE_BEGIN, e), QString("namespace a {\nnamespace  {\nnamespace b {"));
   EXPECT_EQ(run(gen::NAMESPACE_END, e), QString("} // namespace b\n} // namespace \n} // namespace a"));
   // A leading empty part gives nothing at all.
   e->setNamespace("::a");
   EXPECT_EQ(run(gen::NAMESPACE_BEGIN, e), QString());
   EXPECT_EQ(run(gen::NAMESPACE_END, e), QString());
}

TEST_F(GenSkeleton, NoNamespaceGivesNoLinesAndBlankLinesStay)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   e->setNamespace(QString());
   EXPECT_EQ(run(gen::NAMESPACE_BEGIN, e, "x"), QString("x"));
   EXPECT_EQ(run(gen::NAMESPACE_END, e, "x"), QString("x"));
   EXPECT_EQ(expandHeader(* m_pProject, * e, "#define X\n\n@@NAMESPACE_BEGIN@@\n\nclass @@CLASS_NAME@@;\n\n@@NAMESPACE_END@@\n\n#endif\n"),
             QString("#define X\n\nclass Order;\n\n#endif\n"));
}

TEST_F(GenSkeleton, InlineKeywordsOfTheEntity)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(expandHeader(* m_pProject, * e,
                          "@@CLASS_NAME@@|@@FULL_CLASS_NAME@@|@@COMPLEX_CLASS_NAME_HELPER@@|@@CLASS_MACRO_EXPORT@@|@@CLASS_VERSION@@|"
                          "@@IMPLEMENT_DESTRUCTOR@@|@@MACRO_ZY_REGISTER_CLASS_HPP@@|@@MACRO_ZY_REGISTER_CLASS_CPP@@|"
                          "@@PROJECT_NAME@@|@@PROJECT_NAME_UPPER@@|@@MACRO_Q_OBJECT@@|@@MACRO_Q_ENUMS@@|@@TYPEDEF_ENUM_ALL_VALUES@@|"
                          "@@CONSTRUCTOR_WITH_PRIMARY_KEY@@|@@PRIMARY_KEY_TYPE@@"),
             QString("Order|sales::Order|sales_Order|SHOP_EXPORT|3|Order::~Order() { ; }|ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP|"
                     "ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_SHOP|shop|SHOP||||Order(const long & id);|long"));
}

TEST_F(GenSkeleton, ItemHeaderIncludesAndCustomHeaderSwitch)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@INCLUDE_ITEM_HEADER@@@@INCLUDE_ITEM_HEADER_CUSTOM@@"),
             QString("#include \"../../include/sales_Order.gen.h\"\n#include \"../custom/include/sales_Order.h\"\n"));
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@INCLUDE_ITEM_HEADER@@@@INCLUDE_ITEM_HEADER_CUSTOM@@"),
             QString("#include \"../../include/sales_Order.gen.h\"\n"));
}

TEST_F(GenSkeleton, ClassDescriptionComment)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@COMMENT_CLASS_DESCRIPTION@@"), QString("/*!\n * \\brief A customer order\n */"));
   e->setDescription("First line\nsecond line with \"quotes\"");
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@COMMENT_CLASS_DESCRIPTION@@"),
             QString("/*!\n * \\brief First line\nsecond line with \"quotes\"\n */"));
   e->setDescription(QString());
   EXPECT_EQ(expandHeader(* m_pProject, * e, "[@@COMMENT_CLASS_DESCRIPTION@@]"), QString("[]"));
}

TEST_F(GenSkeleton, BannersCarryApplicationAndDate)
{
   QString out = "x";
   gen::COMMENT_FILE_CREATED_BY(out);
   EXPECT_EQ(out, "x" + cppBanner("2024/05/06 07:08"));
   out.clear();
   gen::COMMENT_PRO_FILE_CREATED_BY(out);
   EXPECT_EQ(out, hashBanner("2024/05/06 07:08"));

   // The two banners, written out for the host's name.
   const QString app = context::ctx_global::getAppName() + " " + context::ctx_global::getAppVersionStr();
   EXPECT_EQ(context::ctx_global::getAppName(), QString("Tavrel"));
   out.clear();
   gen::COMMENT_FILE_CREATED_BY(out);
   EXPECT_EQ(out, "/************************************************************************************************\n"
                  "** File created by " + app + " (2024/05/06 07:08) : please, do NOT modify this file ! **\n"
                  "************************************************************************************************/\n");
   out.clear();
   gen::COMMENT_PRO_FILE_CREATED_BY(out);
   EXPECT_EQ(out, "#################################################################################################\n"
                  "## File created by " + app + " (2024/05/06 07:08) : please, do NOT modify this file ! ##\n"
                  "#################################################################################################\n");

   plugin::generators::setBannerClock([] { return QDateTime(QDate(1999, 12, 31), QTime(23, 59, 58)); });
   out.clear();
   gen::COMMENT_FILE_CREATED_BY(out);
   EXPECT_TRUE(out.contains("(1999/12/31 23:59) :"));
}

TEST_F(GenSkeleton, CMakeBannerIsTheQmakeOne)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@COMMENT_CMAKE_FILE_CREATED_BY@@@@COMMENT_PRO_FILE_CREATED_BY@@"),
             hashBanner("2024/05/06 07:08") + hashBanner("2024/05/06 07:08"));
}

TEST_F(GenSkeleton, InheritFromRemovesTheInheritanceTextWithoutParent)
{
   model::entity_ptr e = load(k_parentsJson, "Alone");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::INHERIT_FROM, e, "class X : public "), QString("class X"));
   EXPECT_EQ(run(gen::INHERIT_FROM, e, "class X: public "), QString("class X"));
   EXPECT_EQ(run(gen::INHERIT_FROM, e, "class X : public A, public "), QString("class X : public A"));
   EXPECT_EQ(run(gen::INHERIT_FROM, e, "class X : "), QString("class X : "));
   EXPECT_EQ(run(gen::INHERIT_FROM, e, "class X : PUBLIC "), QString("class X : PUBLIC "));
   EXPECT_EQ(expandHeader(* m_pProject, * e, "class @@CLASS_NAME@@ : public @@INHERIT_FROM@@\n{\n};\n"), QString("class Alone\n{\n};\n"));
}

TEST_F(GenSkeleton, InheritFromNamesTheSavedParent)
{
   model::entity_ptr e = load(k_parentsJson, "Heir");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::INHERIT_FROM, e, "class Heir : public "), QString("class Heir : public core::Base"));
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE, e), QString("core::Base"));
   EXPECT_EQ(run(gen::INHERIT_FROM_ZY_PERSISTABLE, e), QString("core::Base"));
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT, e), QString("core::Base"));
   EXPECT_EQ(run(gen::ZY_REGISTER_BASE_CLASS, e, "   Q_OBJECT\n"), QString("   Q_OBJECT\ncore::Base"));
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES, e), QString("#include \"../include/core_Base.gen.h\"\n"));
}

TEST_F(GenSkeleton, BaseTextsWithoutParentNeverShorten)
{
   model::entity_ptr e = load(k_parentsJson, "Alone");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE, e, "class Alone : public "), QString("class Alone : public zy::IxPersistable"));
   EXPECT_EQ(run(gen::INHERIT_FROM_ZY_PERSISTABLE, e, "class Alone : public "), QString("class Alone : public zy::ZyPersistable"));
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT, e, "class Alone : public "),
             QString("class Alone : public QObject, public zy::IxPersistable"));
}

TEST_F(GenSkeleton, RegisteredBaseClassDependsOnQObjectLine)
{
   model::entity_ptr e = load(k_parentsJson, "Alone");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::ZY_REGISTER_BASE_CLASS, e, "{\n   Q_OBJECT\n};\nX("), QString("{\n   Q_OBJECT\n};\nX(QObject"));
   EXPECT_EQ(run(gen::ZY_REGISTER_BASE_CLASS, e, "// Q_OBJECT X("), QString("// Q_OBJECT X(zy::trait::no_base_class_defined"));
   EXPECT_EQ(run(gen::ZY_REGISTER_BASE_CLASS, e, "q_object\n"), QString("q_object\nzy::trait::no_base_class_defined"));
   // A custom template that writes the macro gets the Qt base too.
   EXPECT_EQ(expandHeader(* m_pProject, * e, "class @@CLASS_NAME@@ {\nQ_OBJECT\n};\nREG(@@ZY_REGISTER_BASE_CLASS@@)"),
             QString("class Alone {\nQ_OBJECT\n};\nREG(QObject)"));
}

TEST_F(GenSkeleton, BuiltInStylesRegisterTheirBaseClass)
{
   model::entity_ptr e = load(k_parentsJson, "Alone");
   ASSERT_TRUE(e);
   m_plugin.setCppTemplate(plugin::cpp_template::no_inheritance);
   EXPECT_TRUE(m_pBuilder->buildHeader(* m_pProject, * e).contains("ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP(Alone, zy::trait::no_base_class_defined, 0, Alone)\n"));
   EXPECT_TRUE(m_pBuilder->buildHeader(* m_pProject, * e).contains("\nclass SHOP_EXPORT Alone\n{\n"));
   m_plugin.setCppTemplate(plugin::cpp_template::ix_persistable_and_q_object);
   const QString header = m_pBuilder->buildHeader(* m_pProject, * e);
   EXPECT_TRUE(header.contains("ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP(Alone, QObject, 0, Alone)\n")) << header.toStdString();
   EXPECT_TRUE(header.contains("\nclass SHOP_EXPORT Alone : public QObject, public zy::IxPersistable\n{\n"));
}

TEST_F(GenSkeleton, UnsavedParentCountsAsNoParent)
{
   model::entity_ptr child = load(k_parentsJson, "Child");
   ASSERT_TRUE(child);
   ASSERT_TRUE(child->getParent());
   EXPECT_EQ(run(gen::INHERIT_FROM, child, "class Child : public "), QString("class Child"));
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE, child), QString("zy::IxPersistable"));
   EXPECT_EQ(run(gen::INHERIT_FROM_ZY_PERSISTABLE, child), QString("zy::ZyPersistable"));
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT, child), QString("QObject, public zy::IxPersistable"));
   EXPECT_EQ(run(gen::ZY_REGISTER_BASE_CLASS, child), QString("zy::trait::no_base_class_defined"));
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES, child), QString());
   // The constructor forwards the id to any parent the project returns.
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, child), QString("Child::Child(const long & id) : Unsaved(id) { ; }"));
}

TEST_F(GenSkeleton, ParentTheProjectDoesNotHoldCountsAsNoParent)
{
   model::entity_ptr child = load(k_parentsJson, "Child");
   ASSERT_TRUE(child);
   auto stranger = std::make_shared<model::entity>();
   stranger->setId(99);
   stranger->setName("Stranger");
   child->setParent(stranger);
   EXPECT_EQ(run(gen::INHERIT_FROM, child, "class Child : public "), QString("class Child"));
   EXPECT_EQ(run(gen::INHERIT_FROM_IX_PERSISTABLE, child), QString("zy::IxPersistable"));
   EXPECT_EQ(run(gen::ZY_REGISTER_BASE_CLASS, child), QString("zy::trait::no_base_class_defined"));
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES, child), QString());
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, child), QString("Child::Child(const long & id) { ; }"));
}

TEST_F(GenSkeleton, PrimaryKeyOfTypeLongIsNotRegistered)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::ZY_REGISTER_PRIMARY_KEY_TYPE, e), QString());
}

TEST_F(GenSkeleton, PrimaryKeyWithCommaGetsTypedefAndAlias)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [{"name": "Order", "namespace": "sales", "properties": [{"name": "id", "type": "std::pair<long, QString>", "primary_key": true}]}]
   })json", "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::ZY_REGISTER_PRIMARY_KEY_TYPE, e),
             QString("typedef std::pair<long, QString> type_sales_Order_primary_key;\n"
                     "ZY_REGISTER_PRIMARY_KEY(sales::Order, type_sales_Order_primary_key)"));
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@CONSTRUCTOR_WITH_PRIMARY_KEY@@|@@PRIMARY_KEY_TYPE@@"),
             QString("Order(const std::pair<long, QString> & id);|std::pair<long, QString>"));
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Order::Order(const std::pair<long, QString> & id) : m_id(id) { ; }"));
}

TEST_F(GenSkeleton, PrimaryKeyOfOtherTypeIsRegistered)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [{"name": "Invoice", "properties": [{"name": "no", "type": "QString", "primary_key": true}]}]
   })json", "Invoice");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::ZY_REGISTER_PRIMARY_KEY_TYPE, e), QString("ZY_REGISTER_PRIMARY_KEY(Invoice, QString)"));
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Invoice::Invoice(const QString & id) : m_no(id) { ; }"));
}

TEST_F(GenSkeleton, NoPrimaryKeyGivesNoRegistrationNoConstructorDeclarationAndLongId)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [{"name": "Log", "properties": [{"name": "n", "type": "int"}]}, {"name": "Empty"}]
   })json", "Log");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::ZY_REGISTER_PRIMARY_KEY_TYPE, e), QString());
   EXPECT_EQ(expandHeader(* m_pProject, * e, "[@@CONSTRUCTOR_WITH_PRIMARY_KEY@@|@@PRIMARY_KEY_TYPE@@]"), QString("[|]"));
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Log::Log(const long & id) : m_n(0) { ; }"));
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, m_pProject->getEntityByKey("Empty")), QString("Empty::Empty(const long & id) { ; }"));
}

TEST_F(GenSkeleton, InheritedPrimaryKeyGivesTheConstructorType)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [
       {"name": "Base", "properties": [{"name": "code", "type": "QString", "primary_key": true}]},
       {"name": "Heir", "parent": "Base", "properties": [{"name": "x", "type": "int"}]}
     ]
   })json", "Heir");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Heir::Heir(const QString & id) : Base(id), m_x(0) { ; }"));
   EXPECT_EQ(expandHeader(* m_pProject, * e, "@@CONSTRUCTOR_WITH_PRIMARY_KEY@@"), QString("Heir(const QString & id);"));
   EXPECT_EQ(run(gen::ZY_REGISTER_PRIMARY_KEY_TYPE, e), QString("ZY_REGISTER_PRIMARY_KEY(Heir, QString)"));
}

TEST_F(GenSkeleton, ConstructorInitialisersFollowTheKindOfEachProperty)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [{"name": "Order", "properties": [
       {"name": "id", "type": "long", "primary_key": true},
       {"name": "title", "type": "QString", "default": "Say \"hi\"\n"},
       {"name": "note", "type": "QString"},
       {"name": "paid", "type": "bool"},
       {"name": "vip", "type": "bool", "default": "true"},
       {"name": "price", "type": "double"},
       {"name": "rate", "type": "float", "default": "1.5f"},
       {"name": "qty", "type": "int"},
       {"name": "big", "type": "qint64", "default": "7"},
       {"name": "when", "type": "QDateTime"},
       {"name": "day", "type": "QDate", "default": "QDate::currentDate()"},
       {"name": "legacy", "type": "unsigned short", "obsolete": true},
       {"name": "customer", "relation": {"kind": "many_to_one", "target": "Customer"}}
     ]}, {"name": "Customer"}]
   })json", "Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e),
             QString("Order::Order(const long & id) : m_id(id), m_title(\"Say \\\"hi\\\"\\n\"), m_paid(false), m_vip(true), m_price(0.0), "
                     "m_rate(1.5f), m_qty(0), m_big(7), m_day(QDate::currentDate()), m_legacy(0) { ; }"));
}

TEST_F(GenSkeleton, FirstInitialiserAfterPropertyWithoutOne)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [{"name": "Note", "properties": [
       {"name": "text", "type": "QString"},
       {"name": "id", "type": "long", "primary_key": true},
       {"name": "size", "type": "size_t"}
     ]}]
   })json", "Note");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Note::Note(const long & id) : m_id(id), m_size(0) { ; }"));
}

TEST_F(GenSkeleton, ConstructorWithPImplCreatesThePrivateStructure)
{
   model::entity_ptr e = load(k_parentsJson, "Heir");
   ASSERT_TRUE(e);
   m_plugin.setPImpl(true);
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Heir::Heir(const long & id) : core::Base(id), m_pImpl(new Heir_impl(id)) { ; }"));
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, m_pProject->getEntityByKey("Alone")),
             QString("Alone::Alone(const long & id) : m_pImpl(new Alone_impl(id)) { ; }"));
   m_plugin.setPImpl(false);
   EXPECT_EQ(run(gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, e), QString("Heir::Heir(const long & id) : core::Base(id), m_x(0) { ; }"));
}

TEST_F(GenSkeleton, AbstractEntityRegistersAbstractClassAndNoPersistableMacros)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   const QString tpl = "[@@REGISTER_ABSTRACT_CLASS@@|@@MACRO_ZY_PERSISTABLE_HPP@@|@@MACRO_ZY_PERSISTABLE_CPP@@]";
   EXPECT_EQ(expandHeader(* m_pProject, * e, tpl), QString("[|ZY_PERSISTABLE_HPP(sales::Order)|ZY_PERSISTABLE_CPP(Order)]"));
   e->setAbstract(true);
   EXPECT_EQ(expandHeader(* m_pProject, * e, tpl), QString("[ZY_REGISTER_ABSTRACT_CLASS(sales::Order)||]"));
}

TEST_F(GenSkeleton, PersistableMacrosInBuiltInZyStyle)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   m_plugin.setCppTemplate(plugin::cpp_template::zy_persistable);
   EXPECT_TRUE(m_pBuilder->buildHeader(* m_pProject, * e).contains("\n   ZY_PERSISTABLE_HPP(sales::Order)\n"));
   EXPECT_TRUE(m_pBuilder->buildSource(* m_pProject, * e).contains("\nZY_PERSISTABLE_CPP(Order)\n"));
}

TEST_F(GenSkeleton, IncludeListsOfHeaderAndSource)
{
   model::entity_ptr e = load(R"json({
     "name": "shop",
     "entities": [
       {"name": "Base", "namespace": "core", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
       {"name": "Order", "namespace": "sales", "parent": "core::Base", "properties": [
         {"name": "status", "enumeration": "sales::Status"},
         {"name": "customer", "relation": {"kind": "many_to_one", "target": "Customer"}},
         {"name": "status2", "enumeration": "sales::Status"},
         {"name": "kind", "enumeration": "Kind"},
         {"name": "old", "enumeration": "Old", "obsolete": true},
         {"name": "ghost", "enumeration": "Ghost"},
         {"name": "again", "relation": {"kind": "many_to_one", "target": "Customer"}},
         {"name": "self", "relation": {"kind": "many_to_one", "target": "sales::Order"}},
         {"name": "items", "relation": {"kind": "one_to_many", "target": "sales::Item"}},
         {"name": "gone", "relation": {"kind": "many_to_one", "target": "Lost"}, "obsolete": true}
       ]},
       {"name": "Customer", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
       {"name": "Item", "namespace": "sales", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
       {"name": "Lost"}
     ],
     "enumerations": [{"name": "Status", "namespace": "sales"}, {"name": "Kind"}, {"name": "Old"}, {"id": 0, "name": "Ghost"}]
   })json", "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES, e),
             QString("#include \"../include/core_Base.gen.h\"\n"
                     "#include \"../include/sales_Status.gen.h\"\n"
                     "#include \"../include/Kind.gen.h\"\n"));
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES_CPP, e),
             QString("#include \"../include/sales_Order.gen.h\"\n"
                     "#include \"../include/Customer.gen.h\"\n"
                     "#include \"../include/sales_Item.gen.h\"\n"));
   // At the end of the header even a relation to the class itself is included.
   EXPECT_EQ(run(gen::INCLUDE_FORWARD_DECLARATION, e),
             QString("#include \"../include/Customer.gen.h\"\n"
                     "#include \"../include/sales_Order.gen.h\"\n"
                     "#include \"../include/sales_Item.gen.h\"\n"));
}

TEST_F(GenSkeleton, IncludeListsOfPlainEntity)
{
   model::entity_ptr e = load(k_orderJson, "sales::Order");
   ASSERT_TRUE(e);
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES, e), QString());
   EXPECT_EQ(run(gen::LIST_INCLUDE_DEPENDENCIES_CPP, e), QString("#include \"../include/sales_Order.gen.h\"\n"));
   EXPECT_EQ(run(gen::INCLUDE_FORWARD_DECLARATION, e), QString());
}

TEST_F(GenSkeleton, WithoutPluginCustomFilesCountAsOnAndPImplAsOff)
{
   model::entity_ptr e = load(k_parentsJson, "Heir");
   ASSERT_TRUE(e);
   builder_probe alone(nullptr);
   QString out;
   gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY(alone, out, * m_pProject, * e);
   EXPECT_EQ(out, QString("Heir::Heir(const long & id) : core::Base(id), m_x(0) { ; }"));
   EXPECT_TRUE(gen::isCustomFilesOn(alone));
   EXPECT_FALSE(gen::isPImpl(alone));
}
