#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "context/ctx_project.h"
#include "cpp_export/plugin/cpp_export.h"
#include "test_support.h"
#include "cpp_export/view/cpp_export_preview.h"

namespace {

// Exposes the protected operations for the tests.
class cpp_export_probe : public plugin::cpp_export
{
public:
   using plugin::cpp_export::readFile;
   using plugin::cpp_export::resetPreviewWidget;
};

} // namespace

TEST(PluginObject, IdentityTexts)
{
   plugin::cpp_export p;
   EXPECT_EQ(p.getName(), QString("TavrelCppExport"));
   EXPECT_EQ(p.getShortDesc(), QString("Export to C++ project"));
   EXPECT_EQ(p.getDescription(), QString("This plugin exports current opened project to a C++ project."));
   EXPECT_EQ(p.getVersion(), QString("1.2.3"));
   EXPECT_TRUE(p.hasSettings());
   EXPECT_FALSE(p.getIcon().isNull());
   EXPECT_FALSE(p.getIconSettings().isNull());
   const QString guid = p.getGuid();
   EXPECT_TRUE(QRegularExpression("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$").match(guid).hasMatch()) << guid.toStdString();
   EXPECT_EQ(plugin::cpp_export().getGuid(), guid);
   EXPECT_STREQ(p.metaObject()->className(), "plugin::cpp_export");
}

TEST(PluginObject, CommandLineHelpTextWhole)
{
   const QString expected = QString::fromUtf8(
      "\n  !!! Note : this plugin loads automatically previous parameters values before starting the export process, but you can use following parameters to override them !!!"
      "\n  --TavrelCppExport_path=\"<Export Path>\" : [Optional] C++ export path parameter"
      "\n  --TavrelCppExport_template_type=<numeric value> : [Optional] C++ template type selected to build C++ files (0=no_inheritance, 1=ix_persistable, 2=zy_persistable, 3=ix_persistable_and_q_object, 4=custom)"
      "\n  --TavrelCppExport_template_header=\"<Template Header>\" : [Optional] Custom C++ template header file path (TavrelCppExport_template_type parameter must be equal to 4, which means custom)"
      "\n  --TavrelCppExport_template_source=\"<Template Source>\" : [Optional] Custom C++ template source file path (TavrelCppExport_template_type parameter must be equal to 4, which means custom)"
      "\n  --TavrelCppExport_lumor_relative_path=0/1 : [Optional] Relative path to Lumor library"
      "\n  --TavrelCppExport_generate_custom_files=0/1 : [Optional] Generate a custom directory with custom files for each entity"
      "\n  --TavrelCppExport_generate_pimpl=0/1 : [Optional] Generate all persistent classes using the PIMPL (Private Implementation) idiom"
      "\n  --TavrelCppExport_custom_javacript=\"<Custom JS>\" : [Optional] Custom script (javascript file) to change the default behaviour of the export process");
   EXPECT_EQ(plugin::cpp_export().getCommandLineInfos(), expected);
}

TEST(PluginObject, DefaultsAndClearSettings)
{
   plugin::cpp_export p;
   EXPECT_EQ(p.getCppExportPath(false), QString());
   EXPECT_EQ(p.getCppTemplate(), plugin::cpp_template::no_inheritance);
   EXPECT_EQ(p.getCustomCppTemplate_HPP(), QString());
   EXPECT_EQ(p.getCustomCppTemplate_CPP(), QString());
   EXPECT_FALSE(p.getRelativePathLumor());
   EXPECT_TRUE(p.getGenerateCustomFiles());
   EXPECT_FALSE(p.getPImpl());
   EXPECT_EQ(p.getCustomScriptFile(), QString());
   EXPECT_EQ(p.getCppBuilder(), nullptr);

   p.setCppExportPath("out");
   p.setCppTemplate(plugin::cpp_template::custom);
   p.setCustomCppTemplate_HPP("h");
   p.setCustomCppTemplate_CPP("c");
   p.setRelativePathLumor(true);
   p.setGenerateCustomFiles(false);
   p.setPImpl(true);
   p.setCustomScriptFile("s.js");
   EXPECT_EQ(p.getCppTemplate(), plugin::cpp_template::custom);
   EXPECT_FALSE(p.getGenerateCustomFiles());

   p.clearSettings();
   EXPECT_EQ(p.getCppExportPath(false), QString());
   EXPECT_EQ(p.getCppTemplate(), plugin::cpp_template::no_inheritance);
   EXPECT_EQ(p.getCustomCppTemplate_HPP(), QString());
   EXPECT_EQ(p.getCustomCppTemplate_CPP(), QString());
   EXPECT_FALSE(p.getRelativePathLumor());
   EXPECT_TRUE(p.getGenerateCustomFiles());
   EXPECT_FALSE(p.getPImpl());
   EXPECT_EQ(p.getCustomScriptFile(), QString());
}

TEST(PluginObject, OutOfRangeStyleIsKept)
{
   plugin::cpp_export p;
   p.setCppTemplate(static_cast<plugin::cpp_template::enum_template>(17));
   EXPECT_EQ(static_cast<int>(p.getCppTemplate()), 17);
}

TEST(PluginObject, ExportPathResolvedAgainstTheProjectFile)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString json = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(json, R"({"name": "P", "entities": [], "enumerations": []})"));
   ASSERT_TRUE(context::ctx_project::openProject(json).getValue());

   plugin::cpp_export p;
   p.setCppExportPath("gen/out");
   EXPECT_EQ(p.getCppExportPath(false), QString("gen/out"));
   EXPECT_EQ(p.getCppExportPath(true), QDir(tmp.path()).absoluteFilePath("gen/out"));
   EXPECT_EQ(p.getCppExportPath(true), context::ctx_project::getPathFromProjectFile("gen/out"));
   p.setCppExportPath("/abs/dir");
   EXPECT_EQ(p.getCppExportPath(true), QString("/abs/dir"));
   context::ctx_project::closeProject();
}

TEST(PluginObject, ReadFileKeepsTextOfMissingOrEmptyFile)
{
   QTemporaryDir tmp;
   cpp_export_probe p;
   QString target = "previous";
   p.readFile(tmp.filePath("missing.h"), target);
   EXPECT_EQ(target, QString("previous"));

   ASSERT_TRUE(test_support::writeAll(tmp.filePath("empty.h"), QByteArray()));
   p.readFile(tmp.filePath("empty.h"), target);
   EXPECT_EQ(target, QString("previous"));

   ASSERT_TRUE(test_support::writeAll(tmp.filePath("t.h"), "class @@CLASS_NAME@@;\n"));
   p.readFile(tmp.filePath("t.h"), target);
   EXPECT_EQ(target, QString("class @@CLASS_NAME@@;\n"));
}

TEST(PluginObject, PreviewWidgetIsCreatedOnceAndRefusedAfterTerminate)
{
   plugin::cpp_export p;
   QWidget * w1 = p.getPreviewWidget();
   ASSERT_NE(w1, nullptr);
   EXPECT_EQ(p.getPreviewWidget(), w1);
   EXPECT_EQ(w1->windowTitle(), QString("C++ preview"));
   EXPECT_FALSE(w1->windowIcon().isNull());
   auto * pPreview = qobject_cast<view::cpp_export_preview *>(w1);
   ASSERT_NE(pPreview, nullptr);
   EXPECT_EQ(pPreview->getPlugin(), & p);

   QPointer<QWidget> guard(w1);
   p.terminate();
   EXPECT_EQ(p.getPreviewWidget(), nullptr);
   // Disposal is deferred to the event loop.
   EXPECT_FALSE(guard.isNull());
   QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
   EXPECT_TRUE(guard.isNull());
}

TEST(PluginObject, TerminateWithoutPreviewRefusesOne)
{
   plugin::cpp_export p;
   p.terminate();
   EXPECT_EQ(p.getPreviewWidget(), nullptr);
}

TEST(PluginObject, ResetPreviewDetachesThePlugin)
{
   cpp_export_probe p;
   auto * pPreview = qobject_cast<view::cpp_export_preview *>(p.getPreviewWidget());
   ASSERT_NE(pPreview, nullptr);
   QWidget parent;
   pPreview->setParent(& parent);
   QPointer<view::cpp_export_preview> guard(pPreview);
   p.resetPreviewWidget();
   ASSERT_FALSE(guard.isNull());
   EXPECT_EQ(guard->getPlugin(), nullptr);
   EXPECT_EQ(guard->parent(), nullptr);
   // A new one is handed out afterwards (the plug-in is not terminated).
   QWidget * pNew = p.getPreviewWidget();
   EXPECT_NE(pNew, nullptr);
   EXPECT_NE(pNew, guard.data());
   QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
   EXPECT_TRUE(guard.isNull());
}
