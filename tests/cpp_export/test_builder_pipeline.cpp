#include <QThread>

#include "builder_test_support.h"

using namespace builder_test;

namespace {

const QStringList k_projectMessages = {
   "C++ project file *.pri created",
   "C++ project file *.pro created",
   "C++ project file CMakeLists.txt created",
   "C++ unity build 'all.cpp' file created",
   "C++ precompiled header file created",
   "C++ 'export.h' file created",
   "C++ 'main.cpp' file created",
   "C++ all includes project header file created" };

class Builder : public export_fixture { };

} // namespace

TEST_F(Builder, EmptyProjectCreatesDirectoriesProjectFilesAndFinalMessage)
{
   model::project_ptr p = parseModel(R"json({"name": "Empty"})json");
   ASSERT_TRUE(p);
   zy::ZyBool ok = exportProject(* p);
   ASSERT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   EXPECT_EQ(ok.getDesc(), QString());
   for (const char * dir : { "include", "src", "bin", "build", "custom", "custom/include" })
   { EXPECT_TRUE(QFileInfo(out(dir)).isDir()) << dir; }
   EXPECT_TRUE(QDir(out("bin")).isEmpty());
   EXPECT_TRUE(QDir(out("build")).isEmpty());
   for (const char * file : { "Empty.gen.pri", "Empty.gen.pro", "CMakeLists.txt", "src/Empty_all.gen.cpp", "src/Empty_main.gen.cpp",
                              "include/Empty_precompiled_header.gen.h", "include/Empty_export.gen.h", "include/Empty_all_include.gen.h",
                              "custom/Empty.pri", "custom/include/Empty_precompiled_header.h" })
   { EXPECT_TRUE(QFileInfo(out(file)).isFile()) << file; }

   QStringList expected = k_projectMessages;
   expected.append("All entities have been exported to a C++ project : '" + m_sExportDir + "'");
   EXPECT_EQ(messageTexts(), expected);
   for (const message & m : m_lstMessages) { EXPECT_EQ(m.kind, 1); EXPECT_EQ(m.duration, 10000); }
}

TEST_F(Builder, NamespacedKeyNamesTheFilesAndTheMessageQuotesKeyAndDirectory)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(QFileInfo(out("include/ns_Person.gen.h")).isFile());
   EXPECT_TRUE(QFileInfo(out("src/ns_Person.gen.cpp")).isFile());
   EXPECT_TRUE(QFileInfo(out("custom/include/ns_Person.h")).isFile());
   EXPECT_TRUE(QFileInfo(out("custom/src/ns_Person.cpp")).isFile());
   ASSERT_FALSE(m_lstMessages.isEmpty());
   EXPECT_EQ(m_lstMessages.first().text, "Entity 'ns::Person' exported to C++ class : '" + m_sExportDir + "'");
   EXPECT_EQ(m_lstMessages.first().kind, 1);
   EXPECT_EQ(m_lstMessages.first().duration, 10000);
   // The builder remembers the files of the last item.
   EXPECT_EQ(m_pBuilder->getCurrentHeaderFile(), out("include/ns_Person.gen.h"));
   EXPECT_EQ(m_pBuilder->getCurrentSourceFile(), out("src/ns_Person.gen.cpp"));
}

TEST_F(Builder, EntityWithoutIdProducesNoFileAndNoMessage)
{
   model::project_ptr p = parseModel(R"json({
     "name": "shop",
     "entities": [
       {"id": 0, "name": "Ghost"},
       {"id": 7, "name": "Person"}
     ],
     "enumerations": [{"id": 0, "name": "Phantom"}]
   })json");
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_FALSE(QFileInfo::exists(out("include/Ghost.gen.h")));
   EXPECT_FALSE(QFileInfo::exists(out("src/Ghost.gen.cpp")));
   EXPECT_FALSE(QFileInfo::exists(out("custom/include/Ghost.h")));
   EXPECT_FALSE(QFileInfo::exists(out("include/Phantom.gen.h")));
   EXPECT_TRUE(QFileInfo::exists(out("include/Person.gen.h")));
   for (const QString & text : messageTexts())
   {
      EXPECT_FALSE(text.contains("Ghost")) << text.toStdString();
      EXPECT_FALSE(text.contains("Phantom")) << text.toStdString();
   }
   EXPECT_EQ(m_lstMessages.first().text, "Entity 'Person' exported to C++ class : '" + m_sExportDir + "'");
   EXPECT_FALSE(outText("include/shop_all_include.gen.h").contains("Ghost"));
}

TEST_F(Builder, ShopExportEmitsEveryMessageInOrder)
{
   model::project_ptr p = loadShop();
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString D = "'" + m_sExportDir + "'";
   QStringList expected;
   for (const char * key : { "shop::Base", "shop::Customer", "shop::CustomerProfile", "shop::Category", "shop::Product",
                             "shop::sales::Order", "shop::sales::OrderItem", "shop::sales::Invoice" })
   { expected.append(QString("Entity '") + key + "' exported to C++ class : " + D); }
   expected.append("Enumeration 'shop::ProductStatus' exported to C++ class : " + D);
   expected.append("Enumeration 'shop::sales::OrderStatus' exported to C++ class : " + D);
   expected.append(k_projectMessages);
   expected.append("All entities have been exported to a C++ project : " + D);
   EXPECT_EQ(messageTexts(), expected);
}

TEST_F(Builder, ShopOutputTreeHasEveryFile)
{
   model::project_ptr p = loadShop();
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   QStringList expected = { "Shop.gen.pri", "Shop.gen.pro", "CMakeLists.txt",
                            "include/Shop_all_include.gen.h", "include/Shop_export.gen.h", "include/Shop_precompiled_header.gen.h",
                            "src/Shop_all.gen.cpp", "src/Shop_main.gen.cpp",
                            "custom/Shop.pri", "custom/include/Shop_precompiled_header.h" };
   for (const char * key : { "shop_Base", "shop_Customer", "shop_CustomerProfile", "shop_Category", "shop_Product",
                             "shop_sales_Order", "shop_sales_OrderItem", "shop_sales_Invoice", "shop_ProductStatus", "shop_sales_OrderStatus" })
   {
      expected.append(QString("include/") + key + ".gen.h");
      expected.append(QString("src/") + key + ".gen.cpp");
      expected.append(QString("custom/include/") + key + ".h");
      expected.append(QString("custom/src/") + key + ".cpp");
   }
   expected.sort();
   QStringList actual = fileTimes(m_sExportDir).keys();
   actual.sort();
   EXPECT_EQ(actual, expected);
   EXPECT_TRUE(QFileInfo(out("bin")).isDir());
   EXPECT_TRUE(QFileInfo(out("build")).isDir());
}

TEST_F(Builder, FailsWithoutPlugin)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   plugin::cpp_builder builder(nullptr);
   zy::ZyBool ok = builder.build(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("There is no plugin associated to the C++ builder class"));
}

TEST_F(Builder, MissingExportDirectoryFailsAndIsNotCreated)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   const QString missing = m_tmp.path() + "/nowhere/out";
   m_plugin.setCppExportPath(missing);
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "Directory to export entities doesn't exist : " + missing);
   EXPECT_FALSE(QFileInfo::exists(missing));
   EXPECT_FALSE(QFileInfo::exists(m_tmp.path() + "/nowhere"));
   EXPECT_TRUE(m_lstMessages.isEmpty());
}

TEST_F(Builder, EmptyAndMissingLumorPathsGiveDifferentMessages)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   m_pParams->setLumorPath(QString());
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("You must define a Lumor library path in Tavrel global settings (menu 'Tools >> Global settings') before exporting to C++ project"));

   const QString missing = m_tmp.path() + "/no_lumor";
   m_pParams->setLumorPath(missing);
   ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "Lumor library path is not valid : " + missing);
   EXPECT_TRUE(QDir(m_sExportDir).isEmpty());
}

TEST_F(Builder, MissingGlobalParametersFail)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   context::ctx_global::setGlobalParams(nullptr);
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("Cannot access to global parameters"));
   EXPECT_TRUE(QDir(m_sExportDir).isEmpty());
}

TEST_F(Builder, SchemaQuestionAnsweredNoWritesNothing)
{
   model::project_ptr p = parseModel(R"json({
     "name": "shop",
     "entities": [{"name": "Person", "properties": [{"name": "age"}]}]
   })json");
   ASSERT_TRUE(p);
   const zy::ZyInvalidValueX problems = p->checkSchema();
   ASSERT_FALSE(problems.isEmpty());
   QString question = "Some errors have been detected in current project :";
   for (const auto & problem : problems) { question += "\n- " + problem.getMessage(); }
   question += "\n\nDo you want to continue the export process anyway ?";

   tools::message_box::pushScriptedAnswer(QMessageBox::No);
   zy::ZyBool ok = exportProject(* p);
   EXPECT_TRUE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString());
   EXPECT_TRUE(QDir(m_sExportDir).isEmpty());
   EXPECT_TRUE(m_lstMessages.isEmpty());

   const QList<tools::message_box::record> history = tools::message_box::history();
   ASSERT_EQ(history.size(), 1);
   EXPECT_EQ(history.first().kind, tools::message_box::kind_question);
   EXPECT_EQ(history.first().title, QString("Tavrel - TavrelCppExport"));
   EXPECT_EQ(history.first().text, question);
}

TEST_F(Builder, SchemaQuestionAnsweredYesExports)
{
   model::project_ptr p = parseModel(R"json({
     "name": "shop",
     "entities": [{"name": "Person", "properties": [{"name": "age"}]}]
   })json");
   ASSERT_TRUE(p);
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(QFileInfo::exists(out("include/Person.gen.h")));
   EXPECT_EQ(tools::message_box::history().size(), 1);
}

TEST_F(Builder, ReExportOfUnchangedProjectRewritesNoFile)
{
   model::project_ptr p = loadShop();
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QMap<QString, qint64> before = fileTimes(m_sExportDir);
   const QMap<QString, QByteArray> contentBefore = fileContents(m_sExportDir);
   ASSERT_FALSE(before.isEmpty());

   // A rewrite would be seen in the modification time.
   QThread::msleep(1100);
   plugin::generators::setBannerClock([] { return fixedClock().addSecs(60); });
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(fileTimes(m_sExportDir), before);

   QThread::msleep(1100);
   plugin::generators::setBannerClock([] { return fixedClock().addDays(1); });
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(fileTimes(m_sExportDir), before);
   // The files keep their old date too.
   EXPECT_EQ(fileContents(m_sExportDir), contentBefore);
   EXPECT_TRUE(outText("include/shop_Customer.gen.h").contains("(2024/05/06 07:08)"));
}

TEST_F(Builder, ChangedEntityRewritesOnlyItsTwoFiles)
{
   model::project_ptr p = loadShop();
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QMap<QString, qint64> before = fileTimes(m_sExportDir);

   model::entity_ptr category = p->getEntityByKey("shop::Category");
   ASSERT_TRUE(category);
   auto type = std::make_shared<model::property_type>();
   type->setPrimitiveType("int");
   auto rank = std::make_shared<model::property>();
   rank->setId(1000);
   rank->setName("rank");
   rank->setType(type);
   category->addProperty(rank);
   p->resolveLinks();

   QThread::msleep(1100);
   plugin::generators::setBannerClock([] { return fixedClock().addDays(1); });
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QMap<QString, qint64> after = fileTimes(m_sExportDir);
   ASSERT_EQ(after.keys(), before.keys());
   QStringList changed;
   for (auto it = after.cbegin(); it != after.cend(); ++it) { if (it.value() != before.value(it.key())) { changed.append(it.key()); } }
   EXPECT_EQ(changed, QStringList({ "include/shop_Category.gen.h", "src/shop_Category.gen.cpp" }));
   EXPECT_TRUE(outText("include/shop_Category.gen.h").contains("(2024/05/07 07:08)"));
   EXPECT_TRUE(outText("include/shop_Category.gen.h").contains("m_rank"));
}

TEST_F(Builder, NewEntityWritesItsFilesAndRewritesOnlyTheListsThatNameIt)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QMap<QString, qint64> before = fileTimes(m_sExportDir);

   auto pet = std::make_shared<model::entity>();
   pet->setId(50);
   pet->setName("Pet");
   p->addEntity(pet);
   p->resolveLinks();

   QThread::msleep(1100);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QMap<QString, qint64> after = fileTimes(m_sExportDir);
   QStringList added, changed;
   for (auto it = after.cbegin(); it != after.cend(); ++it)
   {
      if (! before.contains(it.key())) { added.append(it.key()); }
      else if (it.value() != before.value(it.key())) { changed.append(it.key()); }
   }
   EXPECT_EQ(added, QStringList({ "custom/include/Pet.h", "custom/src/Pet.cpp", "include/Pet.gen.h", "src/Pet.gen.cpp" }));
   EXPECT_EQ(changed, QStringList({ "CMakeLists.txt", "include/shop_all_include.gen.h", "shop.gen.pri", "src/shop_all.gen.cpp" }));
}

TEST_F(Builder, FileWithWindowsLineEndsComparesEqual)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));

   // The same texts, as an editor on Windows would save them.
   const QStringList files = { "include/ns_Person.gen.h", "src/ns_Person.gen.cpp", "CMakeLists.txt", "shop.gen.pri" };
   QMap<QString, QByteArray> crlf;
   for (const QString & f : files)
   {
      QByteArray bytes = test_support::readAll(out(f));
      ASSERT_FALSE(bytes.contains('\r'));
      bytes.replace("\n", "\r\n");
      ASSERT_TRUE(test_support::writeAll(out(f), bytes));
      crlf.insert(f, bytes);
   }
   const QMap<QString, qint64> before = fileTimes(m_sExportDir);

   QThread::msleep(1100);
   plugin::generators::setBannerClock([] { return fixedClock().addDays(1); });
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(fileTimes(m_sExportDir), before);
   for (const QString & f : files) { EXPECT_EQ(test_support::readAll(out(f)), crlf.value(f)) << f.toStdString(); }
}

TEST_F(Builder, ChangedFileOnDiskIsRewrittenWithLineFeeds)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QByteArray generated = test_support::readAll(out("include/ns_Person.gen.h"));
   ASSERT_TRUE(test_support::writeAll(out("include/ns_Person.gen.h"), "edited by hand\r\n"));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(test_support::readAll(out("include/ns_Person.gen.h")), generated);
}

TEST_F(Builder, GetFileTextReadsWholeFileOrNothing)
{
   EXPECT_EQ(m_pBuilder->getFileText(m_tmp.path() + "/missing.txt"), QString());
   ASSERT_TRUE(writeText(m_tmp.path() + "/a.txt", "line 1\nline 2\n"));
   EXPECT_EQ(m_pBuilder->getFileText(m_tmp.path() + "/a.txt"), QString("line 1\nline 2\n"));
   EXPECT_EQ(m_pBuilder->getFileText(m_tmp.path()), QString());
}

TEST_F(Builder, IsSameIgnoresTheCppBanner)
{
   const QString body = "#ifndef X\n#define X\n#endif\n";
   const QString a = cppBanner("2024/01/01 10:00") + "\n" + body;
   const QString b = cppBanner("2025/12/31 23:59") + "\n" + body;
   EXPECT_TRUE(m_pBuilder->isSame(a, b));
   EXPECT_TRUE(m_pBuilder->isSame(a, a));
   EXPECT_FALSE(m_pBuilder->isSame(a, cppBanner("2025/12/31 23:59") + "\n" + body + "// more\n"));
   EXPECT_FALSE(m_pBuilder->isSame(QString(), b));
}

TEST_F(Builder, IsSameIgnoresTheHashBanner)
{
   const QString body = "TEMPLATE = lib\n";
   EXPECT_TRUE(m_pBuilder->isSame(hashBanner("2024/01/01 10:00") + "\n" + body, hashBanner("2024/01/02 10:00") + "\n" + body));
   EXPECT_FALSE(m_pBuilder->isSame(hashBanner("2024/01/01 10:00") + "\n" + body, hashBanner("2024/01/02 10:00") + "\n" + body + "X\n"));
}

TEST_F(Builder, IsSameWithoutMarkerComparesWholeTexts)
{
   EXPECT_TRUE(m_pBuilder->isSame("abc", "abc"));
   EXPECT_FALSE(m_pBuilder->isSame("abc", "abd"));
   EXPECT_FALSE(m_pBuilder->isSame("a\nb", "a\r\nb"));
   // The marker must be followed by an empty line.
   EXPECT_FALSE(m_pBuilder->isSame("x ****/\nbody", "y ****/\nbody"));
   // Only the text before the first marker is dropped.
   EXPECT_TRUE(m_pBuilder->isSame("one ****/\n\nbody", "two ****/\n\nbody"));
   EXPECT_FALSE(m_pBuilder->isSame("one ****/\n\nbody ****/\n\nA", "one ****/\n\nbody ****/\n\nB"));
}

TEST_F(Builder, IsSameAlsoDropsTextUpToHashMarkerInCppFile)
{
   // The second cut runs on the result of the first one.
   const QString a = cppBanner("2024/01/01 10:00") + "\n// old text\n// #####\n\nint x;\n";
   const QString b = cppBanner("2024/01/01 10:00") + "\n// new text\n// #####\n\nint x;\n";
   EXPECT_TRUE(m_pBuilder->isSame(a, b));
}

TEST_F(Builder, LumorPathRelativeToExportDirectoryWithPwdPrefix)
{
   const QString work = m_tmp.path() + "/work/out";
   const QString lumor = m_tmp.path() + "/libs/lumor";
   ASSERT_TRUE(QDir().mkpath(work));
   ASSERT_TRUE(QDir().mkpath(lumor));
   m_plugin.setCppExportPath(work);
   m_pParams->setLumorPath(lumor);
   m_plugin.setRelativePathLumor(true);
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), QString("$$PWD/../../libs/lumor/"));
   EXPECT_EQ(m_pBuilder->getLumorPath(false, false), QString("../../libs/lumor/"));
   EXPECT_EQ(m_pBuilder->getLumorPath(true, false), QString("../../libs/lumor/"));

   m_plugin.setRelativePathLumor(false);
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), lumor + "/");
   EXPECT_EQ(m_pBuilder->getLumorPath(true, false), lumor + "/");
}

TEST_F(Builder, LumorPathThatDoesNotExist)
{
   const QString missing = m_tmp.path() + "/libs/none";
   m_pParams->setLumorPath(missing);
   m_plugin.setRelativePathLumor(false);
   // Not checked: given back as written.
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), missing + "/");
   EXPECT_EQ(m_pBuilder->getLumorPath(true, false), QString());
   m_plugin.setRelativePathLumor(true);
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), QString());
}

TEST_F(Builder, LumorPathEmptyOrWithoutPlugin)
{
   m_pParams->setLumorPath(QString());
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), QString());
   EXPECT_EQ(m_pBuilder->getLumorPath(true, true), QString());

   m_pParams->setLumorPath(m_sLumorDir + "/");
   plugin::cpp_builder alone(nullptr);
   EXPECT_EQ(alone.getLumorPath(false, true), m_sLumorDir + "/");

   context::ctx_global::setGlobalParams(nullptr);
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), QString());
}

TEST_F(Builder, LumorPathWithBackslashesAndMissingExportDirectory)
{
   m_pParams->setLumorPath("C:\\libs\\lumor");
   m_plugin.setRelativePathLumor(false);
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), QString("C:/libs/lumor/"));

   // Relative wanted but the export directory is missing: the absolute path.
   m_pParams->setLumorPath(m_sLumorDir);
   m_plugin.setRelativePathLumor(true);
   m_plugin.setCppExportPath(m_tmp.path() + "/not_there");
   EXPECT_EQ(m_pBuilder->getLumorPath(false, true), m_sLumorDir + "/");
}

TEST_F(Builder, RelativeLumorPathReachesTheQmakeAndCMakeFiles)
{
   const QString work = m_tmp.path() + "/work/out";
   const QString lumor = m_tmp.path() + "/libs/lumor";
   ASSERT_TRUE(QDir().mkpath(work));
   ASSERT_TRUE(QDir().mkpath(lumor));
   m_plugin.setCppExportPath(work);
   m_pParams->setLumorPath(lumor);
   m_plugin.setRelativePathLumor(true);
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   const QString pro = readText(work + "/shop.gen.pro");
   EXPECT_TRUE(pro.contains("include($$PWD/../../libs/lumor/Lumor.pri)\n")) << pro.toStdString();
   EXPECT_TRUE(pro.contains("INCLUDEPATH += $$PWD/../../libs/lumor/include\n"));
   EXPECT_TRUE(pro.contains("LIBS += -L\"$$PWD/../../libs/lumor/lib\"\n"));
   const QString cmake = readText(work + "/CMakeLists.txt");
   EXPECT_TRUE(cmake.contains("   add_subdirectory(\"../../libs/lumor/\" ./Lumor)\n")) << cmake.toStdString();
   EXPECT_TRUE(cmake.contains("include(\"../../libs/lumor/Lumor.cmake\")\n"));
}

TEST_F(Builder, EmptyExportPathIsNoDirectory)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   // Whatever happens, nothing may land in the directory the tests run from.
   const QString previous = QDir::currentPath();
   ASSERT_TRUE(QDir().mkpath(m_tmp.path() + "/cwd"));
   ASSERT_TRUE(QDir::setCurrent(m_tmp.path() + "/cwd"));
   m_plugin.setCppExportPath(QString());
   zy::ZyBool ok = exportProject(* p);
   QDir::setCurrent(previous);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("Directory to export entities doesn't exist : "));
   EXPECT_TRUE(QDir(m_tmp.path() + "/cwd").isEmpty());
}

TEST_F(Builder, DirectoryThatCannotBeMadeStopsTheExport)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   const struct { const char * blocker; const char * message; } cases[] = {
      { "include", "Cannot create 'include' directory" },
      { "src", "Cannot create 'src' directory" },
      { "bin", "Cannot create 'bin' directory" },
      { "build", "Cannot create 'build' directory" },
      { "custom", "Cannot create 'custom' directory" },
      { "custom/include", "Cannot create 'custom/include' directory" },
      { "custom/src", "Cannot create 'custom/src' directory" } };
   for (const auto & c : cases)
   {
      ASSERT_TRUE(QDir(m_sExportDir).removeRecursively());
      ASSERT_TRUE(QDir().mkpath(m_sExportDir));
      // A plain file where the directory should be.
      ASSERT_TRUE(test_support::writeAll(out(c.blocker), "x"));
      zy::ZyBool ok = exportProject(* p);
      EXPECT_FALSE(static_cast<bool>(ok)) << c.blocker;
      EXPECT_EQ(ok.getDesc(), QString(c.message));
   }
}

TEST_F(Builder, ProjectCompanionDirectoriesThatCannotBeMade)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   m_plugin.setGenerateCustomFiles(false);
   ASSERT_TRUE(test_support::writeAll(out("custom"), "x"));
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("Cannot create 'custom' directory"));
   // The generated qmake file was written before its companion failed.
   EXPECT_TRUE(QFileInfo::exists(out("shop.gen.pri")));
   EXPECT_FALSE(QFileInfo::exists(out("shop.gen.pro")));

   ASSERT_TRUE(QFile::remove(out("custom")));
   ASSERT_TRUE(test_support::writeAll(out("custom/include"), "x"));
   ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("Cannot create 'custom/include' directory"));
   EXPECT_TRUE(QFileInfo::exists(out("include/shop_precompiled_header.gen.h")));
   EXPECT_FALSE(QFileInfo::exists(out("include/shop_export.gen.h")));
}

TEST_F(Builder, ClassFileThatCannotBeOpenedStopsTheExport)
{
   model::project_ptr p = parseModel(k_personJson);
   ASSERT_TRUE(p);
   ASSERT_TRUE(QDir().mkpath(out("include/ns_Person.gen.h")));
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred opening header file : " + out("include/ns_Person.gen.h"));
   EXPECT_FALSE(QFileInfo::exists(out("src/ns_Person.gen.cpp")));

   ASSERT_TRUE(QDir(out("include/ns_Person.gen.h")).removeRecursively());
   ASSERT_TRUE(QDir().mkpath(out("src/ns_Person.gen.cpp")));
   ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred opening source file : " + out("src/ns_Person.gen.cpp"));
   // The header written before stays.
   EXPECT_TRUE(QFileInfo(out("include/ns_Person.gen.h")).isFile());
   EXPECT_TRUE(m_lstMessages.isEmpty());
}
