#include "builder_test_support.h"

using namespace builder_test;
namespace gen = plugin::generators;

namespace {

const QByteArray k_statusJson = R"json({
  "name": "shop",
  "entities": [{"name": "Order", "namespace": "sales"}],
  "enumerations": [
    {"name": "Status", "namespace": "sales", "version": 2,
     "values": [{"key": "New", "value": "0"}, {"key": "Paid", "value": "1"}]},
    {"name": "Flags", "use_qt_enum": true, "enum_name": "eFlags", "description": "Bits",
     "values": [{"key": "None", "value": "0"}, {"key": "Read", "value": "1 << 0"}, {"key": "Write", "value": "READ_BIT*2"}]},
    {"name": "Nothing"}
  ]
})json";

class GenEnumeration : public export_fixture
{
protected:
   model::project_ptr m_pProject;

   void SetUp() override
   {
      export_fixture::SetUp();
      m_pProject = parseModel(k_statusJson);
      ASSERT_TRUE(m_pProject);
   }

   model::enumeration_ptr item(const QString & key)
   {
      model::enumeration_ptr e = m_pProject->getEnumerationByKey(key);
      EXPECT_TRUE(e) << key.toStdString();
      return e;
   }

   // Expands a template for an enumeration through the builder's enumeration keywords.
   QString expand(const model::enumeration_ptr & e, const QString & templateText)
   {
      const QString file = m_tmp.path() + "/expanded.txt";
      QFile::remove(file);
      zy::ZyBool ok = m_pBuilder->build_Generic(* m_pProject, std::make_shared<tools::template_parser>(templateText), file, nullptr, e.get());
      EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
      return readText(file);
   }
};

} // namespace

TEST_F(GenEnumeration, IncludeGuard)
{
   QString out;
   gen::ENUM_INCLUDE_MACRO_GUARD(out, * m_pProject, * item("sales::Status"));
   EXPECT_EQ(out, QString("_SHOP_SALES_STATUS_H_"));
   EXPECT_EQ(expand(item("Flags"), "@@INCLUDE_MACRO_GUARD@@"), QString("_SHOP_FLAGS_H_"));
}

TEST_F(GenEnumeration, NamespaceLines)
{
   model::enumeration_ptr e = item("sales::Status");
   QString begin, end;
   gen::ENUM_NAMESPACE_BEGIN(begin, * e);
   gen::ENUM_NAMESPACE_END(end, * e);
   EXPECT_EQ(begin, QString("namespace sales {"));
   EXPECT_EQ(end, QString("} // namespace sales"));

   e->setNamespace("a::b");
   EXPECT_EQ(expand(e, "@@NAMESPACE_BEGIN@@|@@NAMESPACE_END@@"), QString("namespace a {\nnamespace b {|} // namespace b\n} // namespace a"));
   EXPECT_EQ(expand(item("Flags"), "[@@NAMESPACE_BEGIN@@|@@NAMESPACE_END@@]"), QString("[|]"));
}

TEST_F(GenEnumeration, NamespaceDropsEmptyParts)
{
   model::enumeration_ptr e = item("sales::Status");
   e->setNamespace("::a::::b");
   QString begin, end;
   gen::ENUM_NAMESPACE_BEGIN(begin, * e);
   gen::ENUM_NAMESPACE_END(end, * e);
   EXPECT_EQ(begin, QString("namespace a {\nnamespace b {"));
   EXPECT_EQ(end, QString("} // namespace b\n} // namespace a"));
   e->setNamespace("a::::b");
   EXPECT_EQ(expand(e, "@@NAMESPACE_BEGIN@@|@@NAMESPACE_END@@"), QString("namespace a {\nnamespace b {|} // namespace b\n} // namespace a"));
}

TEST_F(GenEnumeration, EnumDefinitionWithValues)
{
   QString out;
   gen::TYPEDEF_ENUM_ALL_VALUES(out, * item("sales::Status"));
   EXPECT_EQ(out, QString("   enum enum_Status\n   {\n      New = 0,\n      Paid = 1\n   };\n"));
   out.clear();
   // Keys and values as they read; the enum is named after the enumeration, not its enum name.
   gen::TYPEDEF_ENUM_ALL_VALUES(out, * item("Flags"));
   EXPECT_EQ(out, QString("   enum enum_Flags\n   {\n      None = 0,\n      Read = 1 << 0,\n      Write = READ_BIT*2\n   };\n"));
}

TEST_F(GenEnumeration, EnumDefinitionWithoutValues)
{
   QString out;
   gen::TYPEDEF_ENUM_ALL_VALUES(out, * item("Nothing"));
   EXPECT_EQ(out, QString("   enum enum_Nothing\n   {\n   };\n"));
}

TEST_F(GenEnumeration, InheritFromAndQtMacros)
{
   model::enumeration_ptr flags = item("Flags");
   EXPECT_EQ(expand(flags, "class F : public @@INHERIT_FROM@@\n@@MACRO_Q_OBJECT@@\n@@MACRO_Q_ENUMS@@\n"),
             QString("class F : public QObject\n   Q_OBJECT\n   Q_ENUMS(eFlags)\n"));
   model::enumeration_ptr status = item("sales::Status");
   EXPECT_EQ(expand(status, "class S : public @@INHERIT_FROM@@\n[@@MACRO_Q_OBJECT@@][@@MACRO_Q_ENUMS@@]\n"), QString("class S\n[][]\n"));

   QString out = "class S: public ";
   gen::ENUM_INHERIT_FROM(out, * status);
   EXPECT_EQ(out, QString("class S"));
   out = "class S : public A, public ";
   gen::ENUM_INHERIT_FROM(out, * status);
   EXPECT_EQ(out, QString("class S : public A"));
   out = "class S : Public ";
   gen::ENUM_INHERIT_FROM(out, * status);
   EXPECT_EQ(out, QString("class S : Public "));

   status->setUseQtEnum(true);
   out.clear();
   gen::ENUM_MACRO_Q_ENUMS(out, * status);
   EXPECT_EQ(out, QString("   Q_ENUMS(enum_Status)"));
}

TEST_F(GenEnumeration, InlineKeywords)
{
   EXPECT_EQ(expand(item("sales::Status"),
                    "@@CLASS_NAME@@|@@FULL_CLASS_NAME@@|@@COMPLEX_CLASS_NAME_HELPER@@|@@CLASS_MACRO_EXPORT@@|@@IMPLEMENT_DESTRUCTOR@@|"
                    "@@CLASS_VERSION@@|[@@COMMENT_CLASS_DESCRIPTION@@]|@@MACRO_ZY_REGISTER_CLASS_HPP@@|@@PROJECT_NAME@@|"
                    "@@INCLUDE_ITEM_HEADER@@@@INCLUDE_ITEM_HEADER_CUSTOM@@"),
             QString("Status|sales::Status|sales_Status|SHOP_EXPORT|Status::~Status() { ; }|2|[]|ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP|shop|"
                     "#include \"../../include/sales_Status.gen.h\"\n#include \"../custom/include/sales_Status.h\"\n"));
   EXPECT_EQ(expand(item("Flags"), "@@COMMENT_CLASS_DESCRIPTION@@"), QString("/*!\n * \\brief Bits\n */"));
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(expand(item("Flags"), "[@@INCLUDE_ITEM_HEADER_CUSTOM@@]"), QString("[]"));
}

TEST_F(GenEnumeration, EntityKeywordsGiveNothing)
{
   EXPECT_EQ(expand(item("sales::Status"),
                    "[@@LIST_PROPERTIES_DEFINITION@@|@@CONSTRUCTOR_WITH_PRIMARY_KEY@@|@@ZY_REGISTER_BASE_CLASS@@|@@PRIMARY_KEY_TYPE@@|"
                    "@@MACRO_ZY_PERSISTABLE_HPP@@|@@LIST_INCLUDE_DEPENDENCIES@@|@@IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY@@|@@TYPEDEF_CLASS_PTR@@]"),
             QString("[|||||||]"));
}

TEST_F(GenEnumeration, HeaderWithoutQtEnums)
{
   model::enumeration_ptr e = item("sales::Status");
   const QString header = m_pBuilder->buildHeader(* m_pProject, * e);
   EXPECT_EQ(header,
             cppBanner("2024/05/06 07:08") +
             "\n"
             "#ifndef _SHOP_SALES_STATUS_H_\n"
             "#define _SHOP_SALES_STATUS_H_\n"
             "\n"
             "#ifdef _ZY_NO_PRECOMPILED_HEADER\n"
             "#ifndef Q_MOC_RUN\n"
             "#include \"../include/shop_precompiled_header.gen.h\" // Need to include precompiled header for the generated moc file\n"
             "#endif // Q_MOC_RUN\n"
             "#endif // _ZY_NO_PRECOMPILED_HEADER\n"
             "\n"
             "namespace sales {\n"
             "\n"
             "class SHOP_EXPORT Status\n"
             "{\n"
             "\n"
             "public:\n"
             "\n"
             "   enum enum_Status\n"
             "   {\n"
             "      New = 0,\n"
             "      Paid = 1\n"
             "   };\n"
             "\n"
             "private:\n"
             "\n"
             "   Status();\n"
             "   virtual ~Status();\n"
             "\n"
             "};\n"
             "\n"
             "} // namespace sales\n"
             "\n"
             "#include \"../custom/include/sales_Status.h\"\n"
             "\n"
             "#endif // _SHOP_SALES_STATUS_H_\n");
   EXPECT_FALSE(header.contains("Q_OBJECT"));
   EXPECT_FALSE(header.contains("Q_ENUMS"));
   EXPECT_FALSE(header.contains("QObject"));
}

TEST_F(GenEnumeration, HeaderWithQtEnums)
{
   model::enumeration_ptr e = item("Flags");
   const QString header = m_pBuilder->buildHeader(* m_pProject, * e);
   EXPECT_TRUE(header.contains("#endif // _ZY_NO_PRECOMPILED_HEADER\n"
                               "\n"
                               "/*!\n"
                               " * \\brief Bits\n"
                               " */\n"
                               "class SHOP_EXPORT Flags : public QObject\n"
                               "{\n"
                               "\n"
                               "   Q_OBJECT\n"
                               "   Q_ENUMS(eFlags)\n"
                               "\n"
                               "public:\n"
                               "\n"
                               "   enum enum_Flags\n")) << header.toStdString();
   EXPECT_TRUE(header.endsWith("};\n\n#include \"../custom/include/Flags.h\"\n\n#endif // _SHOP_FLAGS_H_\n"));
}

TEST_F(GenEnumeration, Source)
{
   EXPECT_EQ(m_pBuilder->buildSource(* m_pProject, * item("sales::Status")),
             cppBanner("2024/05/06 07:08") +
             "\n"
             "#include \"../include/shop_precompiled_header.gen.h\"\n"
             "\n"
             "#include \"../include/sales_Status.gen.h\"\n"
             "\n"
             "#include <Lumor_Impl.h>\n"
             "\n"
             "namespace sales {\n"
             "\n"
             "Status::Status() { ; }\n"
             "\n"
             "Status::~Status() { ; }\n"
             "\n"
             "} // namespace sales\n");
}

TEST_F(GenEnumeration, ExportedFilesWithoutCustomFiles)
{
   m_plugin.setGenerateCustomFiles(false);
   ASSERT_TRUE(static_cast<bool>(exportProject(* m_pProject)));
   const QString header = outText("include/Nothing.gen.h");
   EXPECT_TRUE(header.contains("class SHOP_EXPORT Nothing\n{\n\npublic:\n\n   enum enum_Nothing\n   {\n   };\n\nprivate:\n")) << header.toStdString();
   EXPECT_TRUE(header.endsWith("};\n\n#endif // _SHOP_NOTHING_H_\n"));
   EXPECT_TRUE(QFileInfo::exists(out("src/Nothing.gen.cpp")));
   EXPECT_FALSE(QFileInfo::exists(out("custom/include/Nothing.h")));
}
