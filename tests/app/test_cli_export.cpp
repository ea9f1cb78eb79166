#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

using export_run = test_support::cli_result;

export_run runExport(const QStringList & args, const QString & lumorEnv = QString())
{
   test_support::cli_options options;
   if (! lumorEnv.isEmpty()) { options.env.insert("LUMOR_DIR", lumorEnv); }
   return test_support::runTavrel(QStringList() << "export" << args, options);
}

// A copy of the example model in a fresh directory, so that its project file lands there.
QString copyShop(const QTemporaryDir & tmp)
{
   const QString model = tmp.filePath("shop.json");
   test_support::writeAll(model, test_support::readAll(test_support::examplePath("shop.json")));
   return model;
}

} // namespace

TEST(CliExport, EveryParameterIntoANewDirectoryAnsweredYes)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   export_run r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--yes",
                              "--TavrelCppExport_path=out/gen", "--TavrelCppExport_template_type=1",
                              "--TavrelCppExport_lumor_relative_path=1", "--TavrelCppExport_generate_custom_files=1",
                              "--TavrelCppExport_generate_pimpl=0" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QString out = tmp.filePath("out/gen");
   EXPECT_TRUE(r.err.contains("Export directory '" + out + "' doesn't exist.")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("All entities have been exported to a C++ project : '" + out + "'")) << r.err.toStdString();
   EXPECT_TRUE(QFileInfo::exists(out + "/include/shop_sales_Order.gen.h"));
   EXPECT_TRUE(QFileInfo::exists(out + "/src/shop_sales_Order.gen.cpp"));
   EXPECT_TRUE(QFileInfo::exists(out + "/CMakeLists.txt"));
   EXPECT_TRUE(QFileInfo::exists(out + "/custom/SHOP.pri"));
   // Relative library path in the qmake project file.
   EXPECT_TRUE(test_support::readAll(out + "/SHOP.gen.pro").contains("$$PWD/../../lumor/")) << test_support::readAll(out + "/SHOP.gen.pro").constData();
   // Style 1 derives the root class from the persistable interface.
   EXPECT_TRUE(test_support::readAll(out + "/include/shop_Base.gen.h").contains("public zy::IxPersistable"));
}

TEST(CliExport, AnsweredNoEndsWithAClearMessage)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   export_run r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--no", "--TavrelCppExport_path=missing" });
   EXPECT_EQ(r.code, 1);
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("missing")));
   EXPECT_TRUE(r.err.contains("export cancelled")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("dismissed")) << r.err.toStdString();
}

TEST(CliExport, MissingLumorPathFails)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("out"));
   export_run r = runExport({ model, "--TavrelCppExport_path=" + tmp.filePath("out") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("You must define a Lumor library path in Tavrel global settings (menu 'Tools >> Global settings') before exporting to C++ project")) << r.err.toStdString();

   r = runExport({ model, "--lumor-path", tmp.filePath("nowhere"), "--TavrelCppExport_path=" + tmp.filePath("out") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("Lumor library path is not valid : ")) << r.err.toStdString();

   // The environment variable is the fallback of the option.
   QDir().mkpath(tmp.filePath("lumor"));
   r = runExport({ model, "--TavrelCppExport_path=" + tmp.filePath("out") }, tmp.filePath("lumor"));
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
}

TEST(CliExport, CustomTemplatePairAndScriptFromFiles)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("out"));
   test_support::writeAll(tmp.filePath("t.h"), "// header of @@FULL_CLASS_NAME@@ @@CUSTOM_TAG@@\r\n");
   test_support::writeAll(tmp.filePath("t.cpp"), "// source of @@CLASS_NAME@@\r\n");
   test_support::writeAll(tmp.filePath("s.js"),
      "function execute(params) {\n"
      "  if (params.action === 'CUSTOM_TAG') { return 'tagged'; }\n"
      "  return undefined;\n"
      "}\n");
   export_run r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=out",
                              "--TavrelCppExport_template_type=4", "--TavrelCppExport_template_header=" + tmp.filePath("t.h"),
                              "--TavrelCppExport_template_source=" + tmp.filePath("t.cpp"),
                              "--TavrelCppExport_custom_javacript=" + tmp.filePath("s.js") });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(tmp.filePath("out/include/shop_sales_Order.gen.h")), QByteArray("// header of shop::sales::Order tagged\n"));
   EXPECT_EQ(test_support::readAll(tmp.filePath("out/src/shop_sales_Order.gen.cpp")), QByteArray("// source of Order\n"));
}

TEST(CliExport, UnknownPluginAndMissingProject)
{
   QTemporaryDir tmp;
   export_run r = runExport({ tmp.filePath("none.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("none.tavrel")) << r.err.toStdString();
   r = runExport({ copyShop(tmp), "--plugin", "NoSuchPlugin" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("no export plug-in named 'NoSuchPlugin'")) << r.err.toStdString();
}

namespace {

// The files of a custom template pair with the PIMPL placeholders, and a script that tags the headers.
void writeCustomPair(const QTemporaryDir & tmp)
{
   test_support::writeAll(tmp.filePath("tpl/t.h"), "// header of @@FULL_CLASS_NAME@@ @@CUSTOM_TAG@@\r\n@@PIMPL_DEFINITION@@\r\n");
   test_support::writeAll(tmp.filePath("tpl/t.cpp"), "// source of @@CLASS_NAME@@\r\n@@PIMPL_IMPLEMENTATION@@\r\n");
   test_support::writeAll(tmp.filePath("hooks/s.js"),
      "function execute(params) {\n"
      "  if (params.action === 'CUSTOM_TAG') { return 'tagged'; }\n"
      "  return undefined;\n"
      "}\n");
}

// Every parameter of the plug-in; export path and script relative to the project file.
QStringList allParameters(const QTemporaryDir & tmp, const QString & exportPath)
{
   return { "--TavrelCppExport_path=" + exportPath, "--TavrelCppExport_template_type=4",
            "--TavrelCppExport_template_header=" + tmp.filePath("tpl/t.h"), "--TavrelCppExport_template_source=" + tmp.filePath("tpl/t.cpp"),
            "--TavrelCppExport_lumor_relative_path=1", "--TavrelCppExport_generate_custom_files=1",
            "--TavrelCppExport_generate_pimpl=1", "--TavrelCppExport_custom_javacript=hooks/s.js" };
}

} // namespace

TEST(CliExport, AllParametersIntoANewNestedDirectoryAnsweredYes)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("tpl"));
   QDir().mkpath(tmp.filePath("hooks"));
   writeCustomPair(tmp);
   export_run r = runExport(QStringList({ model, "--lumor-path", tmp.filePath("lumor"), "--yes" })
                            + allParameters(tmp, "deep/new/out"));
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QString out = tmp.filePath("deep/new/out");
   EXPECT_TRUE(r.err.contains("[question] Tavrel - TavrelCppExport: Export directory '" + out +
                              "' doesn't exist.\nDo you want to create it and start the export process ? -> Yes")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("All entities have been exported to a C++ project : '" + out + "'")) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("error: ")) << r.err.toStdString();

   const QByteArray header = test_support::readAll(out + "/include/shop_sales_Order.gen.h");
   EXPECT_TRUE(header.startsWith("// header of shop::sales::Order tagged\n")) << header.constData();
   EXPECT_TRUE(header.contains("std::unique_ptr<Order_impl> m_pImpl;")) << header.constData();
   const QByteArray source = test_support::readAll(out + "/src/shop_sales_Order.gen.cpp");
   EXPECT_TRUE(source.startsWith("// source of Order\n")) << source.constData();
   EXPECT_TRUE(source.contains("Order_impl")) << source.constData();
   EXPECT_TRUE(QFileInfo::exists(out + "/custom/SHOP.pri"));
   EXPECT_TRUE(test_support::readAll(out + "/SHOP.gen.pro").contains("$$PWD/../../../lumor/"));

   // Command-line values are not kept: a later run without them has no export directory.
   r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--yes" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("tavrel: export cancelled : the plug-in needed its dialog")) << r.err.toStdString();
}

TEST(CliExport, AllParametersIntoANewDirectoryAnsweredNo)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("tpl"));
   QDir().mkpath(tmp.filePath("hooks"));
   writeCustomPair(tmp);
   export_run r = runExport(QStringList({ model, "--lumor-path", tmp.filePath("lumor"), "--no" })
                            + allParameters(tmp, "deep/new/out"));
   EXPECT_EQ(r.code, 1);
   const QString out = tmp.filePath("deep/new/out");
   EXPECT_TRUE(r.err.contains("[question] Tavrel - TavrelCppExport: Export directory '" + out +
                              "' doesn't exist.\nDo you want to create it and start the export process ? -> No")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("dismissed (unattended run)")) << r.err.toStdString();
   // The declined question is the cause, not the dialog that followed it.
   EXPECT_TRUE(r.err.contains("tavrel: export cancelled : the question 'Export directory '" + out + "' doesn't exist.' was answered No"))
      << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("the plug-in needed its dialog")) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("deep")));
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("include")));
   EXPECT_FALSE(r.err.contains("All entities have been exported")) << r.err.toStdString();
}

TEST(CliExport, ScriptFailingAtLoadEndsWithItsMessage)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("out"));
   test_support::writeAll(tmp.filePath("bad.js"), "throw new Error('settings file missing');\nfunction execute(params) { return undefined; }\n");
   export_run r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=out",
                              "--TavrelCppExport_custom_javacript=bad.js" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("tavrel: Custom javascript error in '" + tmp.filePath("bad.js") + "' at line 1 : Error: settings file missing"))
      << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("out/include")));

   // A script file that isn't there is named with the place where it was looked for.
   r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=out",
                   "--TavrelCppExport_custom_javacript=hooks/none.js" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("tavrel: Cannot read custom javascript file : " + tmp.filePath("hooks/none.js"))) << r.err.toStdString();
}

TEST(CliExport, SuccessIsQuietOnStandardOutput)
{
   QTemporaryDir tmp;
   const QString model = copyShop(tmp);
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("out"));
   export_run r = runExport({ model, "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=out" });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   // Only the host's summary line.
   EXPECT_EQ(r.out.count('\n'), 1) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains(" files: ")) << r.out.toStdString();
   EXPECT_TRUE(r.err.contains("Entity 'shop::sales::Order' exported to C++ class : '" + tmp.filePath("out") + "'")) << r.err.toStdString();
   EXPECT_TRUE(r.err.endsWith("All entities have been exported to a C++ project : '" + tmp.filePath("out") + "'\n")) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("tavrel:")) << r.err.toStdString();
}
