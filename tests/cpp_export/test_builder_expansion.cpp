#include <QThread>

#include "builder_test_support.h"

using namespace builder_test;

namespace {

const QByteArray k_plainJson = R"json({
  "name": "shop",
  "entities": [
    {"name": "Person", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
    {"name": "Pet", "properties": [{"name": "id", "type": "long", "primary_key": true}]}
  ],
  "enumerations": [{"name": "Color", "values": [{"key": "Red", "value": "1"}]}]
})json";

// Keeps every default text: returning it or returning nothing.
const char * const k_identityScript = "function execute(params) { return params.default_value; }\n";
const char * const k_undefinedScript = "function execute(params) { }\n";

class Expansion : public export_fixture { };

} // namespace

TEST_F(Expansion, TemplateWithoutKeywordsIsCopiedButLongRunsOfLineFeedsCollapse)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(expandHeader(* p, * person, "line 1\nline 2\n\nline 3\n\n\nline 4\n\n\n\n\nend"),
             QString("line 1\nline 2\n\nline 3\n\nline 4\n\nend"));
   EXPECT_EQ(expandHeader(* p, * person, "a\r\n\r\n\r\n\r\nb\r\n"), QString("a\n\nb\n"));
   EXPECT_EQ(expandHeader(* p, * person, "  spaces \t kept  \n"), QString("  spaces \t kept  \n"));
}

TEST_F(Expansion, GeneratorEmittingNothingBetweenEmptyLinesLeavesOne)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(expandHeader(* p, * person, "A\n\n@@COMMENT_CLASS_DESCRIPTION@@\n\nB\n"), QString("A\n\nB\n"));
   EXPECT_EQ(expandHeader(* p, * person, "A\n\n@@NAMESPACE_BEGIN@@\n\n@@NAMESPACE_END@@\n\nB\n"), QString("A\n\nB\n"));
}

TEST_F(Expansion, UserKeywordWithoutScriptProducesNothing)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(expandHeader(* p, * person, "// [@@CUSTOM_AUTHOR@@]\nclass @@CLASS_NAME@@;\n"), QString("// []\nclass Person;\n"));
}

TEST_F(Expansion, IdentityScriptGivesTheSameFilesAsNoScript)
{
   model::project_ptr p = loadShop();
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QMap<QString, QByteArray> plain = fileContents(m_sExportDir);

   int run = 0;
   for (const char * script : { k_identityScript, k_undefinedScript })
   {
      const QString other = m_tmp.path() + "/out_" + QString::number(++run);
      ASSERT_TRUE(QDir().mkpath(other));
      m_plugin.setCppExportPath(other);
      useScript("identity.js", script);
      ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
      EXPECT_EQ(fileContents(other), plain) << script;
      m_plugin.setCustomScript(nullptr);
   }
}

TEST_F(Expansion, ScriptFailingOnClassNameMakesTheHeaderTheErrorTextAndTheExportGoesOn)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   useScript("fail_class_name.js",
             "function execute(params) {\n"
             "   var f = params.current_file;\n"
             "   if ((params.action === 'CLASS_NAME') && (f.substring(f.length - 13) === '/Person.gen.h')) { throw 'no class name here'; }\n"
             "   return params.default_value;\n"
             "}\n");
   zy::ZyBool ok = exportProject(* p);
   ASSERT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   EXPECT_EQ(outText("include/Person.gen.h"), QString("no class name here"));
   // The other files are generated as usual.
   EXPECT_TRUE(outText("src/Person.gen.cpp").contains("Person::Person(const long & id) : m_id(id) { ; }\n"));
   EXPECT_TRUE(outText("include/Pet.gen.h").contains("class SHOP_EXPORT Pet\n"));
   EXPECT_TRUE(QFileInfo::exists(out("CMakeLists.txt")));

   QList<message> errors;
   for (const message & m : m_lstMessages) { if (m.kind != 1) { errors.append(m); } }
   ASSERT_EQ(errors.size(), 1);
   EXPECT_EQ(errors.first().text, QString("no class name here"));
   EXPECT_EQ(errors.first().kind, 3);
   EXPECT_EQ(errors.first().duration, 10000);
   EXPECT_EQ(m_lstMessages.last().text, "All entities have been exported to a C++ project : '" + m_sExportDir + "'");
}

TEST_F(Expansion, ScriptFailingBeforeClosingAnEnumerationHeaderWritesTheErrorText)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   useScript("fail_closing.js",
             "function execute(params) {\n"
             "   if ((params.action === 'BEFORE_CLOSING_FILE') && (params.current_file.indexOf('Color.gen.h') >= 0)) { throw 'closing refused'; }\n"
             "}\n");
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(outText("include/Color.gen.h"), QString("closing refused"));
   EXPECT_TRUE(outText("src/Color.gen.cpp").contains("Color::~Color() { ; }"));
}

TEST_F(Expansion, ScriptFailingInProjectFileStopsTheExport)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   useScript("fail_cmake.js",
             "function execute(params) {\n"
             "   var f = params.current_file;\n"
             "   if (f.substring(f.length - 14) === 'CMakeLists.txt') { throw 'cmake refused'; }\n"
             "}\n");
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("CMakeLists.txt") + "' :\ncmake refused");
   // Nothing is written for the failing file; the files before it stay.
   EXPECT_FALSE(QFileInfo::exists(out("CMakeLists.txt")));
   EXPECT_TRUE(QFileInfo::exists(out("shop.gen.pro")));
   EXPECT_FALSE(QFileInfo::exists(out("src/shop_all.gen.cpp")));
   EXPECT_NE(m_lstMessages.last().text, "All entities have been exported to a C++ project : '" + m_sExportDir + "'");
   EXPECT_EQ(m_lstMessages.last().text, QString("C++ project file *.pro created"));
}

TEST_F(Expansion, ScriptFillsUserKeywordOfCustomTemplate)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   useScript("author.js",
             "function execute(params) {\n"
             "   if (params.action === 'CUSTOM_AUTHOR') { return 'Jane ' + params.entity.name + ' [' + params.default_value + ']'; }\n"
             "}\n");
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(expandHeader(* p, * person, "// @@CUSTOM_AUTHOR@@\nclass @@CLASS_NAME@@;\n"), QString("// Jane Person []\nclass Person;\n"));
}

TEST_F(Expansion, ScriptReceivesTheParametersOfEachKeyword)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   useScript("params.js",
             "function execute(params) {\n"
             "   if (params.action === 'BEFORE_CLOSING_FILE') { return '{' + params.default_value + '}'; }\n"
             "   return '<' + [params.action, params.plugin_name, params.output_location, params.current_file, params.default_value].join('|') + '>';\n"
             "}\n");
   m_plugin.setCppTemplate(plugin::cpp_template::custom);
   m_plugin.setCustomCppTemplate_HPP("class @@CLASS_NAME@@ in @@NAMESPACE_BEGIN@@;\n");
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString header = out("include/ns_Person.gen.h");
   EXPECT_EQ(readText(header), "{class <CLASS_NAME|TavrelCppExport|" + m_sExportDir + "|" + header + "|Person> in "
                               "<NAMESPACE_BEGIN|TavrelCppExport|" + m_sExportDir + "|" + header + "|namespace ns {>;\n}");
}

TEST_F(Expansion, ScriptAfterShorteningGeneratorGetsAnEmptyFragment)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   useScript("fragment.js",
             "function execute(params) {\n"
             "   if (params.action === 'INHERIT_FROM') { return '[' + params.default_value + ']'; }\n"
             "}\n");
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(expandHeader(* p, * person, "class X : public @@INHERIT_FROM@@;\n"), QString("class X[];\n"));
}

TEST_F(Expansion, ScriptIsCalledAtStartAfterEachFileAndAtEnd)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   std::shared_ptr<tools::custom_javascript> pScript = useScript("record.js",
      "var calls = [];\n"
      "function execute(params) {\n"
      "   var a = params.action;\n"
      "   if (a === 'REPORT') { return calls.join('\\n'); }\n"
      "   if ((a === 'PLUGIN_EXPORT_START') || (a === 'PLUGIN_EXPORT_END') || (a === 'AFTER_CLOSING_FILE')) {\n"
      "      var who = (params.entity ? params.entity.key : (params.enumeration ? params.enumeration.key : '-'));\n"
      "      calls.push(a + '|' + params.current_file + '|' + who + '|' + params.default_value.length);\n"
      "   }\n"
      "}\n");
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));

   QHash<QString, QVariant> params;
   params.insert("action", "REPORT");
   params.insert("default_value", QString());
   zy::ZyBool report = pScript->executeScript(p.get(), nullptr, nullptr, nullptr, params);
   ASSERT_TRUE(static_cast<bool>(report));

   auto size = [this](const QString & f) { return QString::number(outText(f).size()); };
   auto after = [&](const QString & f, const QString & who) { return "AFTER_CLOSING_FILE|" + out(f) + "|" + who + "|" + size(f); };
   const QStringList expected = {
      "PLUGIN_EXPORT_START||-|0",
      after("include/ns_Person.gen.h", "ns::Person"),
      after("src/ns_Person.gen.cpp", "ns::Person"),
      after("custom/include/ns_Person.h", "ns::Person"),
      after("custom/src/ns_Person.cpp", "ns::Person"),
      after("shop.gen.pri", "-"),
      after("custom/shop.pri", "-"),
      after("shop.gen.pro", "-"),
      after("CMakeLists.txt", "-"),
      after("src/shop_all.gen.cpp", "-"),
      after("include/shop_precompiled_header.gen.h", "-"),
      after("custom/include/shop_precompiled_header.h", "-"),
      after("include/shop_export.gen.h", "-"),
      after("src/shop_main.gen.cpp", "-"),
      after("include/shop_all_include.gen.h", "-"),
      "PLUGIN_EXPORT_END||-|0" };
   EXPECT_EQ(report.getDesc().split('\n'), expected);
}

TEST_F(Expansion, AfterClosingFileRunsAlsoForUnchangedFiles)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   std::shared_ptr<tools::custom_javascript> pScript = useScript("count.js",
      "var n = 0;\n"
      "function execute(params) {\n"
      "   if (params.action === 'REPORT') { return String(n); }\n"
      "   if (params.action === 'AFTER_CLOSING_FILE') { n = n + 1; }\n"
      "}\n");
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   QHash<QString, QVariant> params;
   params.insert("action", "REPORT");
   // 14 files the first time; the second time the 4 custom files already exist.
   EXPECT_EQ(pScript->executeScript(p.get(), nullptr, nullptr, nullptr, params).getDesc(), QString("24"));
}

TEST_F(Expansion, ExecuteScriptWithoutPluginOrScript)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   builder_probe alone(nullptr);
   zy::ZyBool ok = alone.executeScript(p.get(), nullptr, nullptr, nullptr, "PLUGIN_EXPORT_START", QString(), QString());
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("There is no plugin associated to the C++ builder class"));

   ok = m_pBuilder->executeScript(p.get(), nullptr, nullptr, nullptr, "CLASS_NAME", "default", QString());
   EXPECT_TRUE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString());
}

TEST_F(Expansion, BuildGenericFailures)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   const QString file = out("x.txt");
   zy::ZyBool ok = m_pBuilder->build_Generic(* p, nullptr, file, nullptr, nullptr);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "No template parser defined to create file : " + file);
   EXPECT_FALSE(QFileInfo::exists(file));

   const QString unreachable = out("no_dir/x.txt");
   ok = m_pBuilder->build_Generic(* p, std::make_shared<tools::template_parser>(QString("text")), unreachable, nullptr, nullptr);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred opening file : " + unreachable);
}

TEST_F(Expansion, BuildGenericExpandsProjectKeywordsAndKeepsUnchangedFile)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   const QString file = out("project.txt");
   auto parser = std::make_shared<tools::template_parser>(QString("@@COMMENT_PRO_FILE_CREATED_BY@@\n\n@@PROJECT_NAME@@ @@PROJECT_NAME_UPPER@@ [@@CLASS_NAME@@]\n"));
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* p, parser, file, nullptr, nullptr)));
   EXPECT_EQ(readText(file), hashBanner("2024/05/06 07:08") + "\nshop SHOP []\n");

   const qint64 before = QFileInfo(file).lastModified().toMSecsSinceEpoch();
   QThread::msleep(1100);
   plugin::generators::setBannerClock([] { return fixedClock().addDays(3); });
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* p, parser, file, nullptr, nullptr)));
   EXPECT_EQ(QFileInfo(file).lastModified().toMSecsSinceEpoch(), before);
   EXPECT_EQ(readText(file), hashBanner("2024/05/06 07:08") + "\nshop SHOP []\n");
}

TEST_F(Expansion, BuildGenericWithEntityOrEnumeration)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   auto parser = std::make_shared<tools::template_parser>(QString("@@CLASS_NAME@@ @@TYPEDEF_ENUM_ALL_VALUES@@"));
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* p, parser, out("a.txt"), p->getEntityByKey("Person").get(), nullptr)));
   EXPECT_EQ(outText("a.txt"), QString("Person "));
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* p, parser, out("b.txt"), nullptr, p->getEnumerationByKey("Color").get())));
   EXPECT_EQ(outText("b.txt"), QString("Color    enum enum_Color\n   {\n      Red = 1\n   };\n"));
}

TEST_F(Expansion, CustomFilesAreCreatedFromTheirTemplates)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(outText("custom/include/ns_Person.h"),
             QString("#ifndef _SHOP_NS_PERSON_H_CUSTOM\n"
                     "#define _SHOP_NS_PERSON_H_CUSTOM\n"
                     "\n"
                     "#ifdef _MSC_VER\n"
                     "#pragma once\n"
                     "#endif\n"
                     "\n"
                     "namespace ns {\n"
                     "\n"
                     "/* -- Put your custom code here -- */\n"
                     "\n"
                     "} // namespace ns\n"
                     "\n"
                     "#endif // _SHOP_NS_PERSON_H_CUSTOM\n"));
   EXPECT_EQ(outText("custom/src/ns_Person.cpp"),
             QString("#include \"../../include/shop_precompiled_header.gen.h\"\n"
                     "\n"
                     "#include \"../../include/ns_Person.gen.h\"\n"
                     "\n"
                     "#include <Lumor_Impl.h>\n"
                     "\n"
                     "namespace ns {\n"
                     "\n"
                     "/* -- Put your custom code here -- */\n"
                     "\n"
                     "} // namespace ns\n"));
   // The class header includes its custom header at its end.
   EXPECT_TRUE(outText("include/ns_Person.gen.h").contains("#include \"../custom/include/ns_Person.h\"\n"));
}

TEST_F(Expansion, UserEditOfCustomFileSurvivesExports)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QByteArray mine = "// my own code\nint answer() { return 42; }\n";
   ASSERT_TRUE(test_support::writeAll(out("custom/include/ns_Person.h"), mine));
   ASSERT_TRUE(test_support::writeAll(out("custom/src/ns_Person.cpp"), "\r\n"));
   const qint64 before = QFileInfo(out("custom/include/ns_Person.h")).lastModified().toMSecsSinceEpoch();
   QThread::msleep(1100);
   for (int i = 0; i < 3; ++i) { ASSERT_TRUE(static_cast<bool>(exportProject(* p))); }
   EXPECT_EQ(test_support::readAll(out("custom/include/ns_Person.h")), mine);
   EXPECT_EQ(test_support::readAll(out("custom/src/ns_Person.cpp")), QByteArray("\r\n"));
   EXPECT_EQ(QFileInfo(out("custom/include/ns_Person.h")).lastModified().toMSecsSinceEpoch(), before);

   // A deleted one is created again, the other one is left alone.
   ASSERT_TRUE(QFile::remove(out("custom/src/ns_Person.cpp")));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(outText("custom/src/ns_Person.cpp").contains("/* -- Put your custom code here -- */"));
   EXPECT_EQ(test_support::readAll(out("custom/include/ns_Person.h")), mine);
}

TEST_F(Expansion, CustomFilesOffCreatesNoCustomDirectoryForTheItems)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   m_plugin.setGenerateCustomFiles(false);
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_CustomFile(* p, p->getEntityByKey("ns::Person").get(), nullptr)));
   EXPECT_FALSE(QFileInfo::exists(out("custom")));

   // The project's own companions still live there after a whole export.
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   QStringList custom = fileTimes(out("custom")).keys();
   EXPECT_EQ(custom, QStringList({ "include/shop_precompiled_header.h", "shop.pri" }));
   EXPECT_FALSE(QFileInfo::exists(out("custom/src")));
   EXPECT_FALSE(outText("include/ns_Person.gen.h").contains("custom/include/ns_Person.h"));
}

TEST_F(Expansion, CustomFileOfEnumerationAndWithoutPlugin)
{
   model::project_ptr p = parseModel(k_plainJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_CustomFile(* p, nullptr, p->getEnumerationByKey("Color").get())));
   EXPECT_EQ(outText("custom/include/Color.h"),
             QString("#ifndef _SHOP_COLOR_H_CUSTOM\n#define _SHOP_COLOR_H_CUSTOM\n\n#ifdef _MSC_VER\n#pragma once\n#endif\n\n"
                     "/* -- Put your custom code here -- */\n\n#endif // _SHOP_COLOR_H_CUSTOM\n"));
   EXPECT_EQ(outText("custom/src/Color.cpp"),
             QString("#include \"../../include/shop_precompiled_header.gen.h\"\n\n#include \"../../include/Color.gen.h\"\n\n"
                     "#include <Lumor_Impl.h>\n\n/* -- Put your custom code here -- */\n\n"));
}

TEST_F(Expansion, UserScriptExampleFillsAuthorAndClosesHeaders)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   auto pScript = std::make_shared<tools::custom_javascript>();
   zy::ZyBool loaded = pScript->initEngine(test_support::examplePath("user_script.js"), & m_plugin);
   ASSERT_TRUE(static_cast<bool>(loaded)) << loaded.getDesc().toStdString();
   m_plugin.setCustomScript(pScript);
   m_plugin.setCppTemplate(plugin::cpp_template::custom);
   m_plugin.setCustomCppTemplate_HPP(readText(test_support::examplePath("custom_template.h")));
   m_plugin.setCustomCppTemplate_CPP(readText(test_support::examplePath("custom_template.cpp")));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));

   const QString header = outText("include/ns_Person.gen.h");
   EXPECT_TRUE(header.startsWith(cppBanner("2024/05/06 07:08") + "\n// Author of ns::Person : Tavrel example team\n\n#ifndef _SHOP_NS_PERSON_H_\n"))
      << header.toStdString();
   EXPECT_TRUE(header.endsWith("#endif // _SHOP_NS_PERSON_H_\n// End of generated header ns_Person.gen.h\n")) << header.toStdString();
   EXPECT_TRUE(header.contains("\nclass SHOP_EXPORT Person\n{\n"));

   const QString source = outText("src/ns_Person.gen.cpp");
   EXPECT_TRUE(source.startsWith(cppBanner("2024/05/06 07:08") + "\n// Author of ns::Person : Tavrel example team\n\n#include \"../include/shop_precompiled_header.gen.h\"\n"))
      << source.toStdString();
   EXPECT_FALSE(source.contains("// End of generated header"));
   EXPECT_TRUE(source.contains("Person::Person(const long & id) : m_id(id) { ; }\n"));

   // Every generated header gets the closing line, the project ones too; the other files don't.
   EXPECT_TRUE(outText("include/shop_export.gen.h").endsWith("// End of generated header shop_export.gen.h\n"));
   EXPECT_TRUE(outText("include/shop_all_include.gen.h").endsWith("// End of generated header shop_all_include.gen.h\n"));
   EXPECT_FALSE(outText("custom/include/ns_Person.h").contains("// End of generated header"));
   EXPECT_FALSE(outText("CMakeLists.txt").contains("// End of generated header"));

   // Without the script the user keyword leaves nothing, not even an empty line.
   m_plugin.setCustomScript(nullptr);
   const QString plain = m_pBuilder->buildHeader(* p, * p->getEntityByKey("ns::Person"));
   EXPECT_TRUE(plain.startsWith(cppBanner("2024/05/06 07:08") + "\n#ifndef _SHOP_NS_PERSON_H_\n")) << plain.toStdString();
   EXPECT_TRUE(plain.endsWith("#endif // _SHOP_NS_PERSON_H_\n"));
}
