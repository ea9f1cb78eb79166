#include <QThread>

#include "builder_test_support.h"

using namespace builder_test;

namespace {

const QByteArray k_shopJson = R"json({
  "name": "Shop",
  "entities": [
    {"name": "Order", "namespace": "sales", "properties": [{"name": "id", "type": "long", "primary_key": true}]}
  ]
})json";

const QString k_date = "2024/05/06 07:08";

class ProjectFiles : public export_fixture { };

} // namespace

TEST_F(ProjectFiles, ProjectNamedShopYieldsItsFiles)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   for (const char * file : { "Shop.gen.pri", "Shop.gen.pro", "CMakeLists.txt", "src/Shop_all.gen.cpp", "src/Shop_main.gen.cpp",
                              "include/Shop_precompiled_header.gen.h", "include/Shop_export.gen.h", "include/Shop_all_include.gen.h",
                              "custom/Shop.pri", "custom/include/Shop_precompiled_header.h" })
   { EXPECT_TRUE(QFileInfo(out(file)).isFile()) << file; }
}

TEST_F(ProjectFiles, QmakeIncludeFile)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(outText("Shop.gen.pri"),
             hashBanner(k_date) +
             "\n"
             "!contains(DEFINES, _ZY_NO_PRECOMPILED_HEADER) {\n"
             "PRECOMPILED_HEADER += $$PWD/include/Shop_precompiled_header.gen.h\n"
             "} # !contains(DEFINES, _ZY_NO_PRECOMPILED_HEADER)\n"
             "\n"
             "HEADERS += $$PWD/include/Shop_precompiled_header.gen.h\n"
             "HEADERS += $$PWD/include/Shop_export.gen.h\n"
             "\n"
             "HEADERS += $$PWD/include/sales_Order.gen.h\n"
             "\n"
             "HEADERS += $$PWD/custom/include/sales_Order.h\n"
             "\n"
             "contains(DEFINES, _ZY_UNITY_BUILD) {\n"
             "\n"
             "SOURCES += $$PWD/src/Shop_all.gen.cpp\n"
             "\n"
             "} else {\n"
             "\n"
             "SOURCES += $$PWD/src/sales_Order.gen.cpp\n"
             "\n"
             "SOURCES += $$PWD/custom/src/sales_Order.cpp\n"
             "\n"
             "} # contains(DEFINES, _ZY_UNITY_BUILD)\n"
             "\n"
             "include($$PWD/custom/Shop.pri)\n");
}

TEST_F(ProjectFiles, QmakeIncludeFileWithoutCustomFiles)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   m_plugin.setGenerateCustomFiles(false);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString pri = outText("Shop.gen.pri");
   EXPECT_TRUE(pri.contains("HEADERS += $$PWD/include/Shop_export.gen.h\n"
                            "\n"
                            "HEADERS += $$PWD/include/sales_Order.gen.h\n"
                            "\n"
                            "contains(DEFINES, _ZY_UNITY_BUILD) {\n"
                            "\n"
                            "SOURCES += $$PWD/src/Shop_all.gen.cpp\n"
                            "\n"
                            "} else {\n"
                            "\n"
                            "SOURCES += $$PWD/src/sales_Order.gen.cpp\n"
                            "\n"
                            "} # contains(DEFINES, _ZY_UNITY_BUILD)\n")) << pri.toStdString();
   EXPECT_FALSE(pri.contains("custom/include"));
   EXPECT_TRUE(pri.endsWith("include($$PWD/custom/Shop.pri)\n"));
}

TEST_F(ProjectFiles, UnityBuildSource)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   // No banner in this one.
   EXPECT_EQ(outText("src/Shop_all.gen.cpp"),
             QString("#ifdef _ZY_UNITY_BUILD\n"
                     "\n"
                     "#include \"../src/sales_Order.gen.cpp\"\n"
                     "\n"
                     "#include \"../custom/src/sales_Order.cpp\"\n"
                     "\n"
                     "#include \"../src/Shop_main.gen.cpp\"\n"
                     "\n"
                     "#endif // _ZY_UNITY_BUILD\n"));
}

TEST_F(ProjectFiles, AllIncludesHeader)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(outText("include/Shop_all_include.gen.h"),
             cppBanner(k_date) +
             "\n"
             "#ifndef _SHOP_ALL_INCLUDE_H_\n"
             "#define _SHOP_ALL_INCLUDE_H_\n"
             "\n"
             "#ifdef _MSC_VER\n"
             "#pragma once\n"
             "#endif\n"
             "\n"
             "#include \"../include/Shop_precompiled_header.gen.h\"\n"
             "\n"
             "#include \"../include/sales_Order.gen.h\"\n"
             "\n"
             "#endif // _SHOP_ALL_INCLUDE_H_\n");
}

TEST_F(ProjectFiles, PrecompiledHeaderAndItsCompanion)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(outText("include/Shop_precompiled_header.gen.h"),
             cppBanner(k_date) +
             "\n"
             "#ifndef _SHOP_PRECOMPILED_HEADER_H_\n"
             "#define _SHOP_PRECOMPILED_HEADER_H_\n"
             "\n"
             "#ifdef _MSC_VER\n"
             "#pragma once\n"
             "#endif\n"
             "\n"
             "#include <Lumor.h>\n"
             "\n"
             "#include \"../include/Shop_export.gen.h\"\n"
             "\n"
             "#include \"../custom/include/Shop_precompiled_header.h\"\n"
             "\n"
             "#endif // _SHOP_PRECOMPILED_HEADER_H_\n");
   EXPECT_EQ(outText("custom/include/Shop_precompiled_header.h"),
             QString("#ifndef _SHOP_PRECOMPILED_HEADER_H_CUSTOM\n"
                     "#define _SHOP_PRECOMPILED_HEADER_H_CUSTOM\n"
                     "\n"
                     "#ifdef _MSC_VER\n"
                     "#pragma once\n"
                     "#endif\n"
                     "\n"
                     "/* -- Put your custom code here -- */\n"
                     "\n"
                     "#endif // _SHOP_PRECOMPILED_HEADER_H_CUSTOM\n"));
   EXPECT_EQ(outText("custom/Shop.pri"), QString("## -- Put your custom code here -- ##\n"));
}

TEST_F(ProjectFiles, QmakeProjectFileWithAbsoluteLibraryPath)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString L = m_sLumorDir + "/";
   EXPECT_EQ(outText("Shop.gen.pro"),
             hashBanner(k_date) +
             "\n"
             "include(" + L + "Lumor.pri)\n"
             "\n"
             "TEMPLATE = lib\n"
             "CONFIG += dll\n"
             "DEFINES += _BUILDING_SHOP\n"
             "INCLUDEPATH += " + L + "include\n"
             "DESTDIR = $$PWD/bin/\n"
             "\n"
             "CONFIG(debug, debug|release) {\n"
             "TARGET = Shopd\n"
             "} else {\n"
             "TARGET = Shop\n"
             "} # CONFIG(debug, debug|release)\n"
             "\n"
             "LIBS += -L\"" + L + "lib\"\n"
             "\n"
             "CONFIG(debug, debug|release) {\n"
             "LIBS += -l\"Lumord\"\n"
             "} else {\n"
             "LIBS += -l\"Lumor\"\n"
             "} # CONFIG(debug, debug|release)\n"
             "\n"
             "include($$PWD/Shop.gen.pri)\n"
             "\n"
             "!contains(DEFINES, _ZY_UNITY_BUILD) {\n"
             "SOURCES += $$PWD/src/Shop_main.gen.cpp\n"
             "} # !contains(DEFINES, _ZY_UNITY_BUILD)\n");
}

TEST_F(ProjectFiles, CMakeFileListsAndLibraryPath)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString cmake = outText("CMakeLists.txt");
   EXPECT_TRUE(cmake.startsWith(hashBanner(k_date) + "\ncmake_minimum_required(VERSION 3.15)\n\nproject(Shop LANGUAGES CXX)\n"));
   EXPECT_TRUE(cmake.contains("   add_subdirectory(\"" + m_sLumorDir + "/\" ./Lumor)\n"));
   EXPECT_TRUE(cmake.contains("include(\"" + m_sLumorDir + "/Lumor.cmake\")\n"));
   EXPECT_TRUE(cmake.contains("set(CMAKE_DEBUG_POSTFIX \"d\")\n"
                              "\n"
                              "set(Shop_HEADERS\n"
                              "    ./include/Shop_precompiled_header.gen.h\n"
                              "    ./include/Shop_export.gen.h\n"
                              "    ./include/sales_Order.gen.h\n"
                              "    ./custom/include/sales_Order.h\n"
                              "   )\n"
                              "\n"
                              "if(_ZY_UNITY_BUILD)\n"
                              "\n"
                              "   set(Shop_SRCS ./src/Shop_all.gen.cpp)\n"
                              "\n"
                              "else() # _ZY_UNITY_BUILD\n"
                              "\n"
                              "   set(Shop_SRCS\n"
                              "       ./src/sales_Order.gen.cpp\n"
                              "       ./custom/src/sales_Order.cpp\n"
                              "       ./src/Shop_main.gen.cpp\n"
                              "      )\n"
                              "\n"
                              "endif() # _ZY_UNITY_BUILD\n"
                              "\n"
                              "add_library(Shop SHARED ${SHOP_SRCS} ${SHOP_HEADERS})\n")) << cmake.toStdString();
}

TEST_F(ProjectFiles, ExportHeaderAndMainSource)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString exportHeader = outText("include/Shop_export.gen.h");
   EXPECT_TRUE(exportHeader.startsWith(cppBanner(k_date) + "\n#ifndef _SHOP_EXPORT_H_\n#define _SHOP_EXPORT_H_\n"));
   EXPECT_TRUE(exportHeader.contains("#define SHOP_EXPORT ZY_DLL_EXPORT_HELPER\n"));
   EXPECT_TRUE(exportHeader.contains("#define ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_EXPORT_DLL\n"));
   EXPECT_TRUE(exportHeader.endsWith("#endif // _SHOP_EXPORT_H_\n"));
   EXPECT_FALSE(exportHeader.contains("@@"));

   const QString mainSource = outText("src/Shop_main.gen.cpp");
   EXPECT_TRUE(mainSource.startsWith(cppBanner(k_date) + "\n#ifdef _MSC_VER\n"));
   EXPECT_TRUE(mainSource.contains("::OutputDebugStringA(\"Shop.DllMain() ---> DLL_PROCESS_ATTACH\\n\");"));
   EXPECT_TRUE(mainSource.endsWith("#endif // _MSC_VER\n"));
}

TEST_F(ProjectFiles, CompanionsAreCreatedEvenWithCustomFilesOff)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   m_plugin.setGenerateCustomFiles(false);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(QFileInfo(out("custom/Shop.pri")).isFile());
   EXPECT_TRUE(QFileInfo(out("custom/include/Shop_precompiled_header.h")).isFile());
   EXPECT_FALSE(QFileInfo::exists(out("custom/include/sales_Order.h")));
   EXPECT_FALSE(QFileInfo::exists(out("custom/src")));
}

TEST_F(ProjectFiles, DeletedCompanionIsRecreatedAndEditedOneSurvives)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QByteArray mine = "LIBS += -lmine\n";
   ASSERT_TRUE(test_support::writeAll(out("custom/Shop.pri"), mine));
   ASSERT_TRUE(test_support::writeAll(out("custom/include/Shop_precompiled_header.h"), "#include <mine.h>\n"));
   const qint64 before = QFileInfo(out("custom/Shop.pri")).lastModified().toMSecsSinceEpoch();
   QThread::msleep(1100);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(test_support::readAll(out("custom/Shop.pri")), mine);
   EXPECT_EQ(test_support::readAll(out("custom/include/Shop_precompiled_header.h")), QByteArray("#include <mine.h>\n"));
   EXPECT_EQ(QFileInfo(out("custom/Shop.pri")).lastModified().toMSecsSinceEpoch(), before);

   ASSERT_TRUE(QFile::remove(out("custom/Shop.pri")));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(outText("custom/Shop.pri"), QString("## -- Put your custom code here -- ##\n"));
   EXPECT_EQ(test_support::readAll(out("custom/include/Shop_precompiled_header.h")), QByteArray("#include <mine.h>\n"));
}

TEST_F(ProjectFiles, ProjectNameThatIsNoFileNameFailsOpeningTheFile)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   p->setName("no/such");
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred opening file : " + out("no/such.gen.pri"));
   // The class files were written before.
   EXPECT_TRUE(QFileInfo::exists(out("include/sales_Order.gen.h")));
   EXPECT_FALSE(QFileInfo::exists(out("no")));
}

TEST_F(ProjectFiles, EveryOperationNeedsThePlugin)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   builder_probe alone(nullptr);
   typedef zy::ZyBool (builder_probe::*operation)(model::project &);
   for (operation op : { & builder_probe::build_PriFile, & builder_probe::build_ProFile, & builder_probe::build_CMakeListsFile,
                         & builder_probe::build_AllCppFile, & builder_probe::build_PrecompiledHeader, & builder_probe::build_ExportFile,
                         & builder_probe::build_MainFile, & builder_probe::build_AllIcludes })
   {
      zy::ZyBool ok = (alone.*op)(* p);
      EXPECT_FALSE(static_cast<bool>(ok));
      EXPECT_EQ(ok.getDesc(), QString("There is no plugin associated to the C++ builder class"));
   }
}

TEST_F(ProjectFiles, OperationsWriteTheirFileAlone)
{
   model::project_ptr p = parseModel(k_shopJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(QDir().mkpath(out("include")));
   ASSERT_TRUE(QDir().mkpath(out("src")));
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_AllIcludes(* p)));
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_MainFile(* p)));
   EXPECT_EQ(fileTimes(m_sExportDir).keys(), QStringList({ "include/Shop_all_include.gen.h", "src/Shop_main.gen.cpp" }));
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_PrecompiledHeader(* p)));
   EXPECT_TRUE(QFileInfo(out("custom/include/Shop_precompiled_header.h")).isFile());
   EXPECT_FALSE(QFileInfo::exists(out("custom/Shop.pri")));
}
