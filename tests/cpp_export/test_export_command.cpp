#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/global_params.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "test_support.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "gui/view/main_wnd.h"

// Readable texts in the failure reports of this file.
static inline void PrintTo(const QString & text, std::ostream * os) { * os << '"' << text.toStdString() << '"'; }

namespace {

using plugin::cpp_export;
using plugin::cpp_template;

const char * const k_sModel = R"({
  "name": "Library",
  "entities": [
    {"name": "Book", "namespace": "lib", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "title", "type": "QString"}
    ]}
  ],
  "enumerations": [
    {"name": "Genre", "namespace": "lib", "values": [{"key": "Novel", "value": "0"}]}
  ]
})";

const char * const k_sNoLumor = "You must define a Lumor library path in Tavrel global settings (menu 'Tools >> Global settings') before exporting to C++ project";
const char * const k_sQuestionTitle = "Tavrel - TavrelCppExport";
const char * const k_sScript = "function execute(params) { return undefined; }\n";

// The plug-in with its two settings operations observable and, on demand, replaced.
class export_probe : public cpp_export
{
public:
   std::function<bool (export_probe &)> fctShowSettings;   // empty: the real dialog
   std::function<QSqlError ()> fctLoadSettings;            // empty: the real loading
   int iShowSettings = 0;
   QString sPathAtShowSettings;

   bool showSettings() override
   {
      ++iShowSettings;
      sPathAtShowSettings = getCppExportPath(false);
      return (fctShowSettings ? fctShowSettings(* this) : cpp_export::showSettings());
   }

   QSqlError loadSettings() override { return (fctLoadSettings ? fctLoadSettings() : cpp_export::loadSettings()); }
};

struct message
{
   QString text;
   int kind = 0;
};

class ExportCommand : public ::testing::Test
{
protected:
   QTemporaryDir m_tmp;
   QTemporaryDir m_cwd;
   QString m_sSavedCwd;
   QString m_sProjectDir;
   QString m_sLumorDir;
   model::global_params_ptr m_pSavedParams;
   model::global_params_ptr m_pParams;
   std::unique_ptr<view::main_wnd> m_pMainWnd;
   std::unique_ptr<export_probe> m_pPlugin;
   std::unique_ptr<QTimer> m_pDialogTimer;
   QList<message> m_lstMessages;

   void SetUp() override
   {
      ASSERT_TRUE(m_tmp.isValid());
      ASSERT_TRUE(m_cwd.isValid());
      m_sProjectDir = QDir::cleanPath(m_tmp.path());
      ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("library.json"), QByteArray(k_sModel)));
      zy::ZyBool opened = context::ctx_project::openProject(m_tmp.filePath("library.json"));
      ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
      // Relative paths must follow the project file, not the working directory.
      m_sSavedCwd = QDir::currentPath();
      QDir::setCurrent(m_cwd.path());

      m_sLumorDir = m_sProjectDir + "/lumor";
      ASSERT_TRUE(QDir().mkpath(m_sLumorDir));
      m_pSavedParams = context::ctx_global::getGlobalParams();
      m_pParams = std::make_shared<model::global_params>();
      m_pParams->setLumorPath(m_sLumorDir);
      context::ctx_global::setGlobalParams(m_pParams);

      m_pMainWnd = std::make_unique<view::main_wnd>();
      m_pMainWnd->setAppArgs(QStringList() << "tavrel-test");
      context::ctx_global::setMainWnd(m_pMainWnd.get());

      tools::message_box::reset();
      tools::message_box::clearHistory();
      cpp_export::setFirstExport(true);
      cpp_export::setKeyboardModifiersProvider([] { return Qt::KeyboardModifiers(Qt::NoModifier); });

      m_pPlugin = std::make_unique<export_probe>();
      QObject::connect(m_pPlugin.get(), & plugin::base_interface::onMessage,
                       [this](const QString & text, int kind, int) { m_lstMessages.append({ text, kind }); });
   }

   void TearDown() override
   {
      if (m_pDialogTimer) { m_pDialogTimer->stop(); }
      m_pDialogTimer.reset();
      m_pPlugin.reset();
      cpp_export::setKeyboardModifiersProvider(cpp_export::type_fct_keyboard_modifiers());
      cpp_export::setFirstExport(true);
      context::ctx_global::setMainWnd(nullptr);
      m_pMainWnd.reset();
      context::ctx_global::setGlobalParams(m_pSavedParams);
      tools::message_box::reset();
      tools::message_box::clearHistory();
      context::ctx_project::closeProject();
      if (! m_sSavedCwd.isEmpty()) { QDir::setCurrent(m_sSavedCwd); }
   }

   model::project & project() { return * context::ctx_project::getProject(); }

   void setArgs(const QStringList & args) { m_pMainWnd->setAppArgs(QStringList() << "tavrel-test" << args); }

   QString existingDir(const QString & relative)
   {
      const QString path = m_sProjectDir + "/" + relative;
      EXPECT_TRUE(QDir().mkpath(path));
      return path;
   }

   QString writeFile(const QString & relative, const QByteArray & data)
   {
      const QString path = m_sProjectDir + "/" + relative;
      EXPECT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
      EXPECT_TRUE(test_support::writeAll(path, data));
      return path;
   }

   // Stores settings as an earlier session would have.
   void store(const std::function<void (cpp_export &)> & fct)
   {
      cpp_export p;
      fct(p);
      QSqlError err = p.saveSettings();
      ASSERT_FALSE(err.isValid()) << err.text().toStdString();
   }

   zy::ZyBool run() { return m_pPlugin->exportProject(project()); }

   // The next modal dialog, as soon as it runs, is handed to the function (which must close it).
   void onNextModalDialog(const std::function<void (QDialog *)> & fct)
   {
      m_pDialogTimer = std::make_unique<QTimer>();
      m_pDialogTimer->setInterval(0);
      QTimer * pTimer = m_pDialogTimer.get();
      QObject::connect(pTimer, & QTimer::timeout, [pTimer, fct]()
      {
         QDialog * pDialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
         if (! pDialog) { return; }
         pTimer->stop();
         fct(pDialog);
      });
      pTimer->start();
   }

   QList<tools::message_box::record> questions() const
   {
      QList<tools::message_box::record> lst;
      for (const auto & r : tools::message_box::history()) { if (r.kind == tools::message_box::kind_question) { lst.append(r); } }
      return lst;
   }

   int countMessages(const QString & text) const
   {
      int n = 0;
      for (const message & m : m_lstMessages) { if (m.text == text) { ++n; } }
      return n;
   }

   static QString doneMessage(const QString & dir) { return "All entities have been exported to a C++ project : '" + dir + "'"; }
};

} // namespace

// Settings and project name ---------------------------------------------------------------------

TEST_F(ExportCommand, DatabaseFailureWhileLoadingSettingsIsReported)
{
   QSqlQuery query(context::ctx_project::getDatabase());
   ASSERT_TRUE(query.exec("DROP TABLE t_plugin_params")) << query.lastError().text().toStdString();
   setArgs({ "--TavrelCppExport_path=" + existingDir("out") });

   zy::ZyBool result = run();
   EXPECT_FALSE(result.getValue());
   EXPECT_TRUE(result.getDesc().startsWith("Error loading plugin settings : ")) << result.getDesc().toStdString();
   EXPECT_TRUE(result.getDesc().contains("t_plugin_params")) << result.getDesc().toStdString();
   // Stopped before anything else: command line untouched, nothing asked, no builder.
   EXPECT_TRUE(cpp_export::isFirstExport());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), QString());
   EXPECT_TRUE(tools::message_box::history().isEmpty());
   EXPECT_EQ(m_pPlugin->iShowSettings, 0);
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);
}

TEST_F(ExportCommand, LoadFailureTextIsThePrefixAndTheErrorText)
{
   m_pPlugin->fctLoadSettings = [] { return QSqlError("driver says no", "database says no", QSqlError::ConnectionError); };
   zy::ZyBool result = run();
   EXPECT_FALSE(result.getValue());
   EXPECT_EQ(result.getDesc(), QString("Error loading plugin settings : database says no driver says no"));
   EXPECT_EQ(result.getCode(), 0);
}

TEST_F(ExportCommand, EmptyProjectNameFails)
{
   setArgs({ "--TavrelCppExport_path=" + existingDir("out") });
   model::project unnamed;
   ASSERT_TRUE(unnamed.getName().isEmpty());
   zy::ZyBool result = m_pPlugin->exportProject(unnamed);
   EXPECT_EQ(result, zy::ZyBool(false, "Cannot export project to C++ files : project name is empty"));
   EXPECT_TRUE(cpp_export::isFirstExport());
   EXPECT_TRUE(tools::message_box::history().isEmpty());
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);
}

// Command-line overrides ------------------------------------------------------------------------

TEST_F(ExportCommand, FirstExportAppliesEveryParameter)
{
   const QString out = existingDir("out");
   const QString header = writeFile("tpl/t.h", "// h @@CLASS_NAME@@\n");
   const QString source = writeFile("tpl/t.cpp", "// s @@CLASS_NAME@@\n");
   const QString script = writeFile("hook.js", k_sScript);
   setArgs({ "--TavrelCppExport_path=" + out, "--TavrelCppExport_template_type=3",
             "--TavrelCppExport_template_header=" + header, "--TavrelCppExport_template_source=" + source,
             "--TavrelCppExport_lumor_relative_path=1", "--TavrelCppExport_generate_custom_files=0",
             "--TavrelCppExport_generate_pimpl=1", "--TavrelCppExport_custom_javacript=" + script });

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_FALSE(cpp_export::isFirstExport());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), out);
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable_and_q_object);
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_HPP(), QString("// h @@CLASS_NAME@@\n"));
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_CPP(), QString("// s @@CLASS_NAME@@\n"));
   EXPECT_TRUE(m_pPlugin->getRelativePathLumor());
   EXPECT_FALSE(m_pPlugin->getGenerateCustomFiles());
   EXPECT_TRUE(m_pPlugin->getPImpl());
   EXPECT_EQ(m_pPlugin->getCustomScriptFile(), script);
   EXPECT_TRUE(QFileInfo::exists(out + "/include/lib_Book.gen.h"));
   // No companion files per entity without the custom-files flag.
   EXPECT_FALSE(QFileInfo::exists(out + "/custom/include/lib_Book.h"));
   EXPECT_FALSE(QFileInfo::exists(out + "/custom/src/lib_Book.cpp"));
   EXPECT_EQ(m_pPlugin->iShowSettings, 0);
   EXPECT_TRUE(questions().isEmpty());

   // Overrides are not saved.
   cpp_export stored;
   ASSERT_FALSE(stored.loadSettings().isValid());
   EXPECT_EQ(stored.getCppExportPath(false), QString());
   EXPECT_FALSE(stored.getPImpl());
}

TEST_F(ExportCommand, SecondExportIgnoresTheCommandLine)
{
   const QString first = existingDir("first");
   const QString stored = existingDir("stored");
   setArgs({ "--TavrelCppExport_path=" + first, "--TavrelCppExport_generate_pimpl=1", "--TavrelCppExport_template_type=1" });
   ASSERT_TRUE(run().getValue());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), first);
   EXPECT_TRUE(m_pPlugin->getPImpl());

   store([&](cpp_export & p) { p.setCppExportPath(stored); p.setPImpl(false); p.setCppTemplate(cpp_template::zy_persistable); });

   // The same object, then a new one: the command line stays what it was, and is not read.
   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), stored);
   EXPECT_FALSE(m_pPlugin->getPImpl());
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::zy_persistable);
   EXPECT_TRUE(QFileInfo::exists(stored + "/include/lib_Book.gen.h"));

   export_probe other;
   result = other.exportProject(project());
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_EQ(other.getCppExportPath(false), stored);
   EXPECT_FALSE(other.getPImpl());
   EXPECT_EQ(other.getCppTemplate(), cpp_template::zy_persistable);
}

TEST_F(ExportCommand, OnlyTheTextOneSwitchesAFlagOn)
{
   const QString out = existingDir("out");
   struct flag_case { QString value; bool expected; };
   const QList<flag_case> lstCases = { { "true", false }, { "TRUE", false }, { "yes", false }, { "2", false },
                                       { "01", false }, { " 1", false }, { "0", false }, { "1", true } };
   for (const flag_case & c : lstCases)
   {
      SCOPED_TRACE(c.value.toStdString());
      // Every flag starts from the opposite of what the value must give.
      store([&](cpp_export & p)
      {
         p.setCppExportPath(out);
         p.setPImpl(! c.expected);
         p.setRelativePathLumor(! c.expected);
         p.setGenerateCustomFiles(! c.expected);
      });
      cpp_export::setFirstExport(true);
      setArgs({ "--TavrelCppExport_generate_pimpl=" + c.value, "--TavrelCppExport_lumor_relative_path=" + c.value,
                "--TavrelCppExport_generate_custom_files=" + c.value });
      export_probe p;
      zy::ZyBool result = p.exportProject(project());
      EXPECT_TRUE(result.getValue()) << result.getDesc().toStdString();
      EXPECT_EQ(p.getPImpl(), c.expected);
      EXPECT_EQ(p.getRelativePathLumor(), c.expected);
      EXPECT_EQ(p.getGenerateCustomFiles(), c.expected);
   }
}

TEST_F(ExportCommand, EmptyValuesLeaveTheLoadedSettings)
{
   const QString out = existingDir("out");
   const QString script = writeFile("hook.js", k_sScript);
   store([&](cpp_export & p)
   {
      p.setCppExportPath(out);
      p.setCppTemplate(cpp_template::ix_persistable);
      p.setCustomCppTemplate_HPP("stored header");
      p.setCustomCppTemplate_CPP("stored source");
      p.setRelativePathLumor(true);
      p.setGenerateCustomFiles(false);
      p.setPImpl(true);
      p.setCustomScriptFile(script);
   });
   // "--name=" and "--name" followed by another option both give an empty value.
   setArgs({ "--TavrelCppExport_path=", "--TavrelCppExport_template_type=", "--TavrelCppExport_template_header=",
             "--TavrelCppExport_template_source=", "--TavrelCppExport_lumor_relative_path=",
             "--TavrelCppExport_generate_custom_files=", "--TavrelCppExport_generate_pimpl",
             "--TavrelCppExport_custom_javacript=" });

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_FALSE(cpp_export::isFirstExport());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), out);
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_HPP(), QString("stored header"));
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_CPP(), QString("stored source"));
   EXPECT_TRUE(m_pPlugin->getRelativePathLumor());
   EXPECT_FALSE(m_pPlugin->getGenerateCustomFiles());
   EXPECT_TRUE(m_pPlugin->getPImpl());
   EXPECT_EQ(m_pPlugin->getCustomScriptFile(), script);
}

TEST_F(ExportCommand, TemplateTypeIsADecimalNumberWithoutRangeCheck)
{
   store([&](cpp_export & p) { p.setCppTemplate(cpp_template::ix_persistable_and_q_object); });
   context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());
   const QString out = existingDir("out");
   struct type_case { QString value; int expected; };
   const QList<type_case> lstCases = { { "abc", 0 }, { "0x4", 0 }, { "2abc", 0 }, { "2", 2 }, { "7", 7 } };
   for (const type_case & c : lstCases)
   {
      SCOPED_TRACE(c.value.toStdString());
      cpp_export::setFirstExport(true);
      setArgs({ "--TavrelCppExport_path=" + out, "--TavrelCppExport_template_type=" + c.value });
      export_probe p;
      // Without a library path the build stops at once: the export got that far.
      EXPECT_EQ(p.exportProject(project()), zy::ZyBool(false, k_sNoLumor));
      EXPECT_EQ(static_cast<int>(p.getCppTemplate()), c.expected);
   }
}

TEST_F(ExportCommand, OnlyTheFirstOfRepeatedValuesCounts)
{
   const QString first = existingDir("first");
   const QString second = existingDir("second");
   const QString script = writeFile("hook.js", k_sScript);
   store([&](cpp_export & p) { p.setCustomScriptFile(script); });
   setArgs({ "--TavrelCppExport_path=" + first, "--TavrelCppExport_path=" + second,
             "--TavrelCppExport_template_type=1", "--TavrelCppExport_template_type=3",
             "--TavrelCppExport_generate_pimpl=1", "--TavrelCppExport_generate_pimpl=0",
             // An empty first value leaves the setting, whatever follows.
             "--TavrelCppExport_custom_javacript=", "--TavrelCppExport_custom_javacript=other.js" });

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), first);
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_TRUE(m_pPlugin->getPImpl());
   EXPECT_EQ(m_pPlugin->getCustomScriptFile(), script);
   EXPECT_TRUE(QFileInfo::exists(first + "/include/lib_Book.gen.h"));
   EXPECT_FALSE(QFileInfo::exists(second + "/include"));
}

TEST_F(ExportCommand, TemplateFilesAreReadAsWrittenAndUnreadableOnesKeepTheText)
{
   const QString out = existingDir("out");
   store([&](cpp_export & p)
   {
      p.setCppExportPath(out);
      p.setCustomCppTemplate_HPP("stored header");
      p.setCustomCppTemplate_CPP("stored source");
   });
   // Line ends stay as in the file.
   const QString header = writeFile("tpl/win.h", "// line 1\r\n// line 2\r\n\xc3\xa9\n");
   setArgs({ "--TavrelCppExport_template_header=" + header,
             "--TavrelCppExport_template_source=" + m_sProjectDir + "/tpl/missing.cpp" });
   ASSERT_TRUE(run().getValue());
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_HPP(), QString::fromUtf8("// line 1\r\n// line 2\r\n\xc3\xa9\n"));
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_CPP(), QString("stored source"));

   // An empty file keeps the text as well.
   const QString empty = writeFile("tpl/empty.cpp", QByteArray());
   cpp_export::setFirstExport(true);
   setArgs({ "--TavrelCppExport_template_header=" + empty, "--TavrelCppExport_template_source=" + empty });
   export_probe p;
   ASSERT_TRUE(p.exportProject(project()).getValue());
   EXPECT_EQ(p.getCustomCppTemplate_HPP(), QString("stored header"));
   EXPECT_EQ(p.getCustomCppTemplate_CPP(), QString("stored source"));
}

TEST_F(ExportCommand, WithoutMainWindowNothingIsReadAndTheFlagStays)
{
   const QString stored = existingDir("stored");
   const QString given = existingDir("given");
   store([&](cpp_export & p) { p.setCppExportPath(stored); });
   setArgs({ "--TavrelCppExport_path=" + given, "--TavrelCppExport_generate_pimpl=1" });
   context::ctx_global::setMainWnd(nullptr);

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_TRUE(cpp_export::isFirstExport());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), stored);
   EXPECT_FALSE(m_pPlugin->getPImpl());

   // The first export that has a main window applies them.
   context::ctx_global::setMainWnd(m_pMainWnd.get());
   result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_FALSE(cpp_export::isFirstExport());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), given);
   EXPECT_TRUE(m_pPlugin->getPImpl());
}

// Export directory ------------------------------------------------------------------------------

TEST_F(ExportCommand, MissingRelativeDirectoryIsCreatedOnTheDefaultAnswer)
{
   setArgs({ "--TavrelCppExport_path=gen/new" });
   const QString resolved = m_sProjectDir + "/gen/new";

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   const QList<tools::message_box::record> lst = questions();
   ASSERT_EQ(lst.size(), 1);
   EXPECT_EQ(lst.at(0).title, QString(k_sQuestionTitle));
   EXPECT_EQ(lst.at(0).text, "Export directory '" + resolved + "' doesn't exist.\nDo you want to create it and start the export process ?");
   EXPECT_EQ(lst.at(0).answer, QMessageBox::Yes);
   EXPECT_TRUE(QFileInfo::exists(resolved + "/include/lib_Book.gen.h"));
   EXPECT_FALSE(QFileInfo::exists(m_cwd.path() + "/gen"));
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), QString("gen/new"));
   EXPECT_EQ(m_pPlugin->iShowSettings, 0);
   EXPECT_EQ(countMessages(doneMessage(resolved)), 1);
}

TEST_F(ExportCommand, AnsweredNoAndDialogCancelledEndsWithoutError)
{
   setArgs({ "--TavrelCppExport_path=gen/missing" });
   tools::message_box::pushScriptedAnswer(QMessageBox::No);
   QString sShownPath;
   bool bDialogSeen = false;
   onNextModalDialog([&](QDialog * pDialog)
   {
      bDialogSeen = true;
      if (QLineEdit * pEdit = pDialog->findChild<QLineEdit *>("m_txtFileLocation")) { sShownPath = pEdit->text(); }
      pDialog->reject();
   });

   zy::ZyBool result = run();
   EXPECT_EQ(result, zy::ZyBool(true, QString()));
   EXPECT_TRUE(bDialogSeen);
   // The dialog was offered the project's directory.
   EXPECT_EQ(m_pPlugin->sPathAtShowSettings, m_sProjectDir);
   EXPECT_EQ(sShownPath, QDir::toNativeSeparators(m_sProjectDir));
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), QString());
   const QList<tools::message_box::record> lst = questions();
   ASSERT_EQ(lst.size(), 1);
   EXPECT_EQ(lst.at(0).text, "Export directory '" + m_sProjectDir + "/gen/missing' doesn't exist.\nDo you want to create it and start the export process ?");
   EXPECT_EQ(lst.at(0).answer, QMessageBox::No);
   EXPECT_FALSE(QFileInfo::exists(m_sProjectDir + "/gen"));
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);
   EXPECT_FALSE(QFileInfo::exists(m_sProjectDir + "/include"));
}

TEST_F(ExportCommand, StillMissingAfterTheDialogFailsWithThePathAsTyped)
{
   setArgs({ "--TavrelCppExport_path=gen/missing" });
   tools::message_box::pushScriptedAnswer(QMessageBox::No);
   m_pPlugin->fctShowSettings = [](export_probe & p) { p.setCppExportPath("gen/missing"); return true; };

   zy::ZyBool result = run();
   EXPECT_EQ(result, zy::ZyBool(false, "Export path to create C++ files doesn't exist : 'gen/missing'"));
   EXPECT_EQ(m_pPlugin->iShowSettings, 1);
   EXPECT_EQ(m_pPlugin->sPathAtShowSettings, m_sProjectDir);
   ASSERT_EQ(questions().size(), 1);
   EXPECT_TRUE(questions().at(0).text.contains("'" + m_sProjectDir + "/gen/missing'"));
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);

   // An accepted dialog that leaves no path fails the same way, with an empty path.
   tools::message_box::pushScriptedAnswer(QMessageBox::No);
   m_pPlugin->fctShowSettings = [](export_probe & p) { p.setCppExportPath(QString()); return true; };
   result = run();
   EXPECT_EQ(result, zy::ZyBool(false, "Export path to create C++ files doesn't exist : ''"));
}

TEST_F(ExportCommand, WithoutPathTheDialogIsOfferedWithoutQuestion)
{
   m_pPlugin->fctShowSettings = [](export_probe &) { return false; };
   zy::ZyBool result = run();
   EXPECT_EQ(result, zy::ZyBool(true, QString()));
   EXPECT_EQ(m_pPlugin->iShowSettings, 1);
   EXPECT_EQ(m_pPlugin->sPathAtShowSettings, m_sProjectDir);
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), QString());
   EXPECT_TRUE(questions().isEmpty());
}

TEST_F(ExportCommand, DirectoryChosenInTheDialogIsUsed)
{
   setArgs({ "--TavrelCppExport_path=gen/missing" });
   tools::message_box::pushScriptedAnswer(QMessageBox::No);
   const QString chosen = existingDir("chosen");
   onNextModalDialog([&](QDialog * pDialog)
   {
      QLineEdit * pEdit = pDialog->findChild<QLineEdit *>("m_txtFileLocation");
      QPushButton * pOk = pDialog->findChild<QPushButton *>("m_btnOk");
      if (! pEdit || ! pOk) { pDialog->reject(); return; }
      pEdit->setText("chosen");
      pOk->click();
   });

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), QString("chosen"));
   EXPECT_TRUE(QFileInfo::exists(chosen + "/include/lib_Book.gen.h"));
   EXPECT_EQ(countMessages(doneMessage(chosen)), 1);
}

// Script engine and debugger --------------------------------------------------------------------

TEST_F(ExportCommand, ShiftAloneStartsTheDebuggerOfTheScript)
{
   const QString out = existingDir("out");
   const QString script = writeFile("hook.js", k_sScript);
   store([&](cpp_export & p) { p.setCppExportPath(out); p.setCustomScriptFile(script); });
   cpp_export::setKeyboardModifiersProvider([] { return Qt::KeyboardModifiers(Qt::ShiftModifier); });

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   std::shared_ptr<tools::custom_javascript> pScript = m_pPlugin->getCustomScript();
   ASSERT_TRUE(pScript);
   EXPECT_TRUE(pScript->isDebugging());
   EXPECT_EQ(pScript->getFile(), script);
   EXPECT_EQ(pScript->getPlugin(), m_pPlugin.get());
   // The debugger watched this very export.
   bool bStartSeen = false;
   for (const auto & call : pScript->getCallHistory()) { if (call.action == "PLUGIN_EXPORT_START") { bStartSeen = true; } }
   EXPECT_TRUE(bStartSeen);
   pScript->stopDebugger();
}

TEST_F(ExportCommand, ShiftWithAnotherModifierDoesNotStartTheDebugger)
{
   const QString out = existingDir("out");
   const QString script = writeFile("hook.js", k_sScript);
   store([&](cpp_export & p) { p.setCppExportPath(out); p.setCustomScriptFile(script); });
   const QList<Qt::KeyboardModifiers> lstMods = { Qt::ShiftModifier | Qt::ControlModifier, Qt::ShiftModifier | Qt::AltModifier,
                                                  Qt::ShiftModifier | Qt::MetaModifier, Qt::ControlModifier, Qt::NoModifier };
   for (Qt::KeyboardModifiers mods : lstMods)
   {
      SCOPED_TRACE(int(mods));
      cpp_export::setKeyboardModifiersProvider([mods] { return mods; });
      zy::ZyBool result = run();
      ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
      ASSERT_TRUE(m_pPlugin->getCustomScript());
      EXPECT_FALSE(m_pPlugin->getCustomScript()->isDebugging());
      EXPECT_EQ(m_pPlugin->getCustomScript()->getFile(), script);
   }
}

TEST_F(ExportCommand, ShiftWithoutScriptFileHasNothingToDebug)
{
   const QString out = existingDir("out");
   const QString script = writeFile("hook.js", k_sScript);
   store([&](cpp_export & p) { p.setCppExportPath(out); });
   // An engine left from earlier, not under the debugger, is released.
   auto pLeftOver = std::make_shared<tools::custom_javascript>();
   ASSERT_TRUE(pLeftOver->initEngine(script, m_pPlugin.get()).getValue());
   m_pPlugin->setCustomScript(pLeftOver);
   cpp_export::setKeyboardModifiersProvider([] { return Qt::KeyboardModifiers(Qt::ShiftModifier); });

   zy::ZyBool result = run();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_FALSE(m_pPlugin->getCustomScript());
   EXPECT_FALSE(pLeftOver->isDebugging());
   EXPECT_EQ(pLeftOver.use_count(), 1);
}

TEST_F(ExportCommand, EachExportLoadsAFreshEngine)
{
   const QString out = existingDir("out");
   const QString script = writeFile("hook.js", k_sScript);
   store([&](cpp_export & p) { p.setCppExportPath(out); p.setCustomScriptFile(script); });
   auto pEarlier = std::make_shared<tools::custom_javascript>();
   ASSERT_TRUE(pEarlier->initEngine(script, m_pPlugin.get()).getValue());
   m_pPlugin->setCustomScript(pEarlier);

   ASSERT_TRUE(run().getValue());
   std::shared_ptr<tools::custom_javascript> pFirst = m_pPlugin->getCustomScript();
   ASSERT_TRUE(pFirst);
   EXPECT_NE(pFirst.get(), pEarlier.get());
   EXPECT_TRUE(pFirst->isLoaded());
   ASSERT_TRUE(run().getValue());
   ASSERT_TRUE(m_pPlugin->getCustomScript());
   EXPECT_NE(m_pPlugin->getCustomScript().get(), pFirst.get());
}

TEST_F(ExportCommand, EngineUnderTheDebuggerIsKept)
{
   const QString out = existingDir("out");
   const QString debugged = writeFile("debugged.js", k_sScript);
   const QString configured = writeFile("configured.js", k_sScript);
   store([&](cpp_export & p) { p.setCppExportPath(out); p.setCustomScriptFile(configured); });

   auto pEngine = std::make_shared<tools::custom_javascript>();
   ASSERT_TRUE(pEngine->initEngine(debugged, m_pPlugin.get()).getValue());
   ASSERT_TRUE(pEngine->runDebugger().getValue());
   m_pPlugin->setCustomScript(pEngine);
   int iStateChanges = 0;
   QObject::connect(pEngine.get(), & tools::custom_javascript::onDebuggerStateChanged, [&](bool) { ++iStateChanges; });

   for (Qt::KeyboardModifiers mods : { Qt::KeyboardModifiers(Qt::ShiftModifier), Qt::KeyboardModifiers(Qt::NoModifier) })
   {
      cpp_export::setKeyboardModifiersProvider([mods] { return mods; });
      pEngine->clearCallHistory();
      zy::ZyBool result = run();
      ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
      EXPECT_EQ(m_pPlugin->getCustomScript().get(), pEngine.get());
      EXPECT_TRUE(pEngine->isDebugging());
      EXPECT_EQ(pEngine->getFile(), debugged);
      EXPECT_EQ(iStateChanges, 0);
      EXPECT_FALSE(pEngine->getCallHistory().isEmpty());
   }

   // Once debugging ends, the next export loads the configured script again.
   pEngine->stopDebugger();
   ASSERT_TRUE(run().getValue());
   ASSERT_TRUE(m_pPlugin->getCustomScript());
   EXPECT_NE(m_pPlugin->getCustomScript().get(), pEngine.get());
   EXPECT_EQ(m_pPlugin->getCustomScript()->getFile(), configured);
}

TEST_F(ExportCommand, ScriptFailuresAreReturnedUnchanged)
{
   const QString out = existingDir("out");
   store([&](cpp_export & p) { p.setCppExportPath(out); p.setCustomScriptFile("hooks/missing.js"); });
   zy::ZyBool result = run();
   EXPECT_EQ(result, zy::ZyBool(false, "Cannot read custom javascript file : " + m_sProjectDir + "/hooks/missing.js"));
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);
   EXPECT_FALSE(QFileInfo::exists(out + "/include"));

   const QString broken = writeFile("broken.js", "function execute(params) {\n  return ;;; )\n}\n");
   store([&](cpp_export & p) { p.setCppExportPath(out); p.setCustomScriptFile(broken); });
   tools::custom_javascript reference;
   const zy::ZyBool expected = reference.initEngine(broken, m_pPlugin.get());
   ASSERT_FALSE(expected.getValue());
   ASSERT_TRUE(expected.getDesc().startsWith("Custom javascript error in '" + broken + "' at line 2")) << expected.getDesc().toStdString();
   result = run();
   EXPECT_EQ(result, expected);
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);
}

// Builder ---------------------------------------------------------------------------------------

TEST_F(ExportCommand, BuilderIsCreatedOnceAndItsMessagesReachTheHost)
{
   const QString out = existingDir("out");
   store([&](cpp_export & p) { p.setCppExportPath(out); });
   ASSERT_EQ(m_pPlugin->getCppBuilder(), nullptr);

   ASSERT_TRUE(run().getValue());
   plugin::cpp_builder * pBuilder = m_pPlugin->getCppBuilder();
   ASSERT_NE(pBuilder, nullptr);
   EXPECT_EQ(pBuilder->getPlugin(), m_pPlugin.get());
   EXPECT_EQ(countMessages(doneMessage(out)), 1);
   EXPECT_EQ(countMessages("Entity 'lib::Book' exported to C++ class : '" + out + "'"), 1);
   for (const message & m : m_lstMessages) { EXPECT_EQ(m.kind, 1) << m.text.toStdString(); }

   // The same builder, connected once: every message arrives once per export.
   ASSERT_TRUE(run().getValue());
   EXPECT_EQ(m_pPlugin->getCppBuilder(), pBuilder);
   EXPECT_EQ(countMessages(doneMessage(out)), 2);

   // A message of the builder is a message of the plug-in.
   const int iBefore = m_lstMessages.size();
   Q_EMIT pBuilder->onMessage("relayed", 2, 1234);
   ASSERT_EQ(m_lstMessages.size(), iBefore + 1);
   EXPECT_EQ(m_lstMessages.last().text, QString("relayed"));
   EXPECT_EQ(m_lstMessages.last().kind, 2);
}

TEST_F(ExportCommand, BuildResultIsTheResult)
{
   const QString out = existingDir("out");
   store([&](cpp_export & p) { p.setCppExportPath(out); });
   context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());
   EXPECT_EQ(run(), zy::ZyBool(false, k_sNoLumor));
   ASSERT_NE(m_pPlugin->getCppBuilder(), nullptr);

   m_pParams->setLumorPath(m_sProjectDir + "/nowhere");
   context::ctx_global::setGlobalParams(m_pParams);
   EXPECT_EQ(run(), zy::ZyBool(false, "Lumor library path is not valid : " + m_sProjectDir + "/nowhere"));

   m_pParams->setLumorPath(m_sLumorDir);
   EXPECT_EQ(run(), zy::ZyBool(true));
   EXPECT_TRUE(QFileInfo::exists(out + "/include/lib_Genre.gen.h"));
}
