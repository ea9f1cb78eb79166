#include "builder_test_support.h"

using namespace builder_test;
namespace gen = plugin::generators;

namespace {

typedef void (* list_generator)(const plugin::cpp_builder &, QString &, model::project &);

// Two saved entities around an unsaved one, and two enumerations.
const QByteArray k_listsJson = R"json({
  "name": "shop",
  "entities": [
    {"id": 1, "name": "Order", "namespace": "sales"},
    {"id": 0, "name": "Ghost"},
    {"id": 2, "name": "Customer"}
  ],
  "enumerations": [
    {"id": 1, "name": "Status", "namespace": "sales"},
    {"id": 2, "name": "Color"}
  ]
})json";

class GenProjectLists : public export_fixture
{
protected:
   model::project_ptr m_pProject;

   QString run(list_generator fct, const plugin::cpp_builder * pBuilder = nullptr)
   {
      QString out;
      fct(pBuilder ? * pBuilder : * m_pBuilder, out, * m_pProject);
      return out;
   }

   void load(const QByteArray & json)
   {
      m_pProject = parseModel(json);
      ASSERT_TRUE(m_pProject);
   }
};

} // namespace

TEST_F(GenProjectLists, QmakeHeadersWithCustomFiles)
{
   load(k_listsJson);
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE),
             QString("HEADERS += $$PWD/include/sales_Order.gen.h\n"
                     "HEADERS += $$PWD/include/Customer.gen.h\n"
                     "\n"
                     "HEADERS += $$PWD/custom/include/sales_Order.h\n"
                     "HEADERS += $$PWD/custom/include/Customer.h\n"
                     "\n"
                     "HEADERS += $$PWD/include/sales_Status.gen.h\n"
                     "HEADERS += $$PWD/include/Color.gen.h\n"
                     "\n"
                     "HEADERS += $$PWD/custom/include/sales_Status.h\n"
                     "HEADERS += $$PWD/custom/include/Color.h\n"));
}

TEST_F(GenProjectLists, QmakeHeadersWithoutCustomFilesKeepTheBlankLines)
{
   load(k_listsJson);
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE),
             QString("HEADERS += $$PWD/include/sales_Order.gen.h\n"
                     "HEADERS += $$PWD/include/Customer.gen.h\n"
                     "\n"
                     "\n"
                     "HEADERS += $$PWD/include/sales_Status.gen.h\n"
                     "HEADERS += $$PWD/include/Color.gen.h\n"
                     "\n"));
}

TEST_F(GenProjectLists, QmakeSourcesWithCustomFiles)
{
   load(k_listsJson);
   EXPECT_EQ(run(gen::LIST_PRI_SOURCES_FILE),
             QString("contains(DEFINES, _ZY_UNITY_BUILD) {\n"
                     "\n"
                     "SOURCES += $$PWD/src/shop_all.gen.cpp\n"
                     "\n"
                     "} else {\n"
                     "\n"
                     "SOURCES += $$PWD/src/sales_Order.gen.cpp\n"
                     "SOURCES += $$PWD/src/Customer.gen.cpp\n"
                     "\n"
                     "SOURCES += $$PWD/custom/src/sales_Order.cpp\n"
                     "SOURCES += $$PWD/custom/src/Customer.cpp\n"
                     "\n"
                     "SOURCES += $$PWD/src/sales_Status.gen.cpp\n"
                     "SOURCES += $$PWD/src/Color.gen.cpp\n"
                     "\n"
                     "SOURCES += $$PWD/custom/src/sales_Status.cpp\n"
                     "SOURCES += $$PWD/custom/src/Color.cpp\n"
                     "\n"
                     "} # contains(DEFINES, _ZY_UNITY_BUILD)"));
}

TEST_F(GenProjectLists, QmakeSourcesWithoutCustomFiles)
{
   load(k_listsJson);
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(run(gen::LIST_PRI_SOURCES_FILE),
             QString("contains(DEFINES, _ZY_UNITY_BUILD) {\n"
                     "\n"
                     "SOURCES += $$PWD/src/shop_all.gen.cpp\n"
                     "\n"
                     "} else {\n"
                     "\n"
                     "SOURCES += $$PWD/src/sales_Order.gen.cpp\n"
                     "SOURCES += $$PWD/src/Customer.gen.cpp\n"
                     "\n"
                     "\n"
                     "SOURCES += $$PWD/src/sales_Status.gen.cpp\n"
                     "SOURCES += $$PWD/src/Color.gen.cpp\n"
                     "\n"
                     "\n"
                     "} # contains(DEFINES, _ZY_UNITY_BUILD)"));
}

TEST_F(GenProjectLists, UnityBuildIncludes)
{
   load(k_listsJson);
   EXPECT_EQ(run(gen::INCLUDE_ALL_CPP),
             QString("#include \"../src/sales_Order.gen.cpp\"\n"
                     "#include \"../src/Customer.gen.cpp\"\n"
                     "\n"
                     "#include \"../custom/src/sales_Order.cpp\"\n"
                     "#include \"../custom/src/Customer.cpp\"\n"
                     "\n"
                     "#include \"../src/sales_Status.gen.cpp\"\n"
                     "#include \"../src/Color.gen.cpp\"\n"
                     "\n"
                     "#include \"../custom/src/sales_Status.cpp\"\n"
                     "#include \"../custom/src/Color.cpp\"\n"
                     "\n"
                     "#include \"../src/shop_main.gen.cpp\"\n"));
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(run(gen::INCLUDE_ALL_CPP),
             QString("#include \"../src/sales_Order.gen.cpp\"\n"
                     "#include \"../src/Customer.gen.cpp\"\n"
                     "\n"
                     "\n"
                     "#include \"../src/sales_Status.gen.cpp\"\n"
                     "#include \"../src/Color.gen.cpp\"\n"
                     "\n"
                     "\n"
                     "#include \"../src/shop_main.gen.cpp\"\n"));
}

TEST_F(GenProjectLists, AllIncludeListHasNoBlankLinesNorCustomHeaders)
{
   load(k_listsJson);
   const QString expected = "#include \"../include/sales_Order.gen.h\"\n"
                            "#include \"../include/Customer.gen.h\"\n"
                            "#include \"../include/sales_Status.gen.h\"\n"
                            "#include \"../include/Color.gen.h\"\n";
   EXPECT_EQ(run(gen::LIST_PROJECT_ALL_INCLUDE), expected);
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(run(gen::LIST_PROJECT_ALL_INCLUDE), expected);
}

TEST_F(GenProjectLists, CMakeHeadersIndentation)
{
   load(k_listsJson);
   EXPECT_EQ(run(gen::LIST_CMAKE_HEADERS_FILE),
             QString("set(shop_HEADERS\n"
                     "    ./include/shop_precompiled_header.gen.h\n"
                     "    ./include/shop_export.gen.h\n"
                     "    ./include/sales_Order.gen.h\n"
                     "    ./include/Customer.gen.h\n"
                     "    ./custom/include/sales_Order.h\n"
                     "    ./custom/include/Customer.h\n"
                     "    ./include/sales_Status.gen.h\n"
                     "    ./include/Color.gen.h\n"
                     "    ./custom/include/sales_Status.h\n"
                     "    ./custom/include/Color.h\n"
                     "   )"));
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(run(gen::LIST_CMAKE_HEADERS_FILE),
             QString("set(shop_HEADERS\n"
                     "    ./include/shop_precompiled_header.gen.h\n"
                     "    ./include/shop_export.gen.h\n"
                     "    ./include/sales_Order.gen.h\n"
                     "    ./include/Customer.gen.h\n"
                     "    ./include/sales_Status.gen.h\n"
                     "    ./include/Color.gen.h\n"
                     "   )"));
}

TEST_F(GenProjectLists, CMakeSourcesIndentation)
{
   load(k_listsJson);
   EXPECT_EQ(run(gen::LIST_CMAKE_SOURCES_FILE),
             QString("if(_ZY_UNITY_BUILD)\n"
                     "\n"
                     "   set(shop_SRCS ./src/shop_all.gen.cpp)\n"
                     "\n"
                     "else() # _ZY_UNITY_BUILD\n"
                     "\n"
                     "   set(shop_SRCS\n"
                     "       ./src/sales_Order.gen.cpp\n"
                     "       ./src/Customer.gen.cpp\n"
                     "       ./custom/src/sales_Order.cpp\n"
                     "       ./custom/src/Customer.cpp\n"
                     "       ./src/sales_Status.gen.cpp\n"
                     "       ./src/Color.gen.cpp\n"
                     "       ./custom/src/sales_Status.cpp\n"
                     "       ./custom/src/Color.cpp\n"
                     "       ./src/shop_main.gen.cpp\n"
                     "      )\n"
                     "\n"
                     "endif() # _ZY_UNITY_BUILD"));
   m_plugin.setGenerateCustomFiles(false);
   EXPECT_EQ(run(gen::LIST_CMAKE_SOURCES_FILE),
             QString("if(_ZY_UNITY_BUILD)\n"
                     "\n"
                     "   set(shop_SRCS ./src/shop_all.gen.cpp)\n"
                     "\n"
                     "else() # _ZY_UNITY_BUILD\n"
                     "\n"
                     "   set(shop_SRCS\n"
                     "       ./src/sales_Order.gen.cpp\n"
                     "       ./src/Customer.gen.cpp\n"
                     "       ./src/sales_Status.gen.cpp\n"
                     "       ./src/Color.gen.cpp\n"
                     "       ./src/shop_main.gen.cpp\n"
                     "      )\n"
                     "\n"
                     "endif() # _ZY_UNITY_BUILD"));
}

TEST_F(GenProjectLists, EmptyProject)
{
   load(R"json({"name": "Empty"})json");
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE), QString());
   EXPECT_EQ(run(gen::LIST_PROJECT_ALL_INCLUDE), QString());
   EXPECT_EQ(run(gen::LIST_PRI_SOURCES_FILE),
             QString("contains(DEFINES, _ZY_UNITY_BUILD) {\n"
                     "\n"
                     "SOURCES += $$PWD/src/Empty_all.gen.cpp\n"
                     "\n"
                     "} else {\n"
                     "\n"
                     "\n"
                     "} # contains(DEFINES, _ZY_UNITY_BUILD)"));
   EXPECT_EQ(run(gen::INCLUDE_ALL_CPP), QString("\n#include \"../src/Empty_main.gen.cpp\"\n"));
   EXPECT_EQ(run(gen::LIST_CMAKE_HEADERS_FILE),
             QString("set(Empty_HEADERS\n    ./include/Empty_precompiled_header.gen.h\n    ./include/Empty_export.gen.h\n   )"));
   EXPECT_EQ(run(gen::LIST_CMAKE_SOURCES_FILE),
             QString("if(_ZY_UNITY_BUILD)\n\n   set(Empty_SRCS ./src/Empty_all.gen.cpp)\n\nelse() # _ZY_UNITY_BUILD\n\n"
                     "   set(Empty_SRCS\n       ./src/Empty_main.gen.cpp\n      )\n\nendif() # _ZY_UNITY_BUILD"));
}

TEST_F(GenProjectLists, UnsavedItemsAreListedNowhereButCountForBlankLines)
{
   load(R"json({
     "name": "shop",
     "entities": [{"id": 0, "name": "Ghost"}],
     "enumerations": [{"id": 0, "name": "Phantom"}]
   })json");
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE), QString("\n\n\n"));
   EXPECT_EQ(run(gen::INCLUDE_ALL_CPP), QString("\n\n\n\n#include \"../src/shop_main.gen.cpp\"\n"));
   EXPECT_EQ(run(gen::LIST_PROJECT_ALL_INCLUDE), QString());
   EXPECT_EQ(run(gen::LIST_CMAKE_HEADERS_FILE),
             QString("set(shop_HEADERS\n    ./include/shop_precompiled_header.gen.h\n    ./include/shop_export.gen.h\n   )"));
   EXPECT_FALSE(run(gen::LIST_CMAKE_SOURCES_FILE).contains("Ghost"));
}

TEST_F(GenProjectLists, EntitiesOnlyAndEnumerationsOnly)
{
   load(R"json({"name": "shop", "entities": [{"name": "Order", "namespace": "sales"}]})json");
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE),
             QString("HEADERS += $$PWD/include/sales_Order.gen.h\n\nHEADERS += $$PWD/custom/include/sales_Order.h\n"));
   load(R"json({"name": "shop", "enumerations": [{"name": "Color"}]})json");
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE),
             QString("\nHEADERS += $$PWD/include/Color.gen.h\n\nHEADERS += $$PWD/custom/include/Color.h\n"));
}

TEST_F(GenProjectLists, WithoutPluginCustomEntriesAreWritten)
{
   load(R"json({"name": "shop", "entities": [{"name": "Order", "namespace": "sales"}]})json");
   m_plugin.setGenerateCustomFiles(false);
   plugin::cpp_builder alone(nullptr);
   EXPECT_EQ(run(gen::LIST_PRI_HEADERS_FILE, & alone),
             QString("HEADERS += $$PWD/include/sales_Order.gen.h\n\nHEADERS += $$PWD/custom/include/sales_Order.h\n"));
}

TEST_F(GenProjectLists, SameTextsThroughEntityAndEnumerationTemplates)
{
   load(k_listsJson);
   const QString tpl = "@@LIST_PROJECT_ALL_INCLUDE@@";
   const QString expected = "#include \"../include/sales_Order.gen.h\"\n"
                            "#include \"../include/Customer.gen.h\"\n"
                            "#include \"../include/sales_Status.gen.h\"\n"
                            "#include \"../include/Color.gen.h\"\n";
   EXPECT_EQ(expandHeader(* m_pProject, * m_pProject->getEntityByKey("Customer"), tpl), expected);
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* m_pProject, std::make_shared<tools::template_parser>(tpl), out("e.txt"),
                                                           nullptr, m_pProject->getEnumerationByKey("Color").get())));
   EXPECT_EQ(outText("e.txt"), expected);
}
