#include <QApplication>
#include <QBoxLayout>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTextEdit>

#include <gtest/gtest.h>

#include <memory>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "cpp_export/plugin/cpp_export.h"
#include "test_support.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "cpp_export/view/cpp_export_settings.h"

// Shortcut delivery as the platform does it (exported by Qt GUI, the entry point of Qt's own
// key-simulation helpers).
Q_GUI_EXPORT bool qt_sendShortcutOverrideEvent(QObject * o, ulong timestamp, int k, Qt::KeyboardModifiers mods,
                                               const QString & text = QString(), bool autorep = false, ushort count = 1);

namespace {

using plugin::cpp_export;
using plugin::cpp_template;
using view::cpp_export_settings;

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

const char * const k_sHeaderPlaceholder = "<Please put your custom code here (header file : .h)>";
const char * const k_sSourcePlaceholder = "<Please put your custom code here (source file : .cpp)>";

// A built-in template as the editors must show it: the resource text with LF line ends.
QString resourceText(const QString & name)
{
   QFile file(":/cpp_export/documents/" + name);
   if (! file.open(QIODevice::ReadOnly)) { return QString(); }
   return QString::fromUtf8(file.readAll()).replace("\r\n", "\n");
}

// Types through key events, so a read-only editor refuses the text as it does for a user.
void typeText(QWidget * w, const QString & text)
{
   for (QChar c : text)
   {
      QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
      QApplication::sendEvent(w, & press);
      QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(c));
      QApplication::sendEvent(w, & release);
   }
}

class ViewSettings : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   std::unique_ptr<cpp_export> m_pPlugin;
   std::unique_ptr<cpp_export_settings> m_pDlg;
   QString m_sSavedCwd;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      ASSERT_TRUE(test_support::writeAll(m_dir.filePath("library.json"), QByteArray(k_sModel)));
      zy::ZyBool opened = context::ctx_project::openProject(m_dir.filePath("library.json"));
      ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
      // Relative paths must be resolved against the project file, never the working directory.
      m_sSavedCwd = QDir::currentPath();
      QDir::setCurrent(QDir::tempPath());
      tools::message_box::clearHistory();
      m_pPlugin = std::make_unique<cpp_export>();
      m_pDlg = std::make_unique<cpp_export_settings>(nullptr, Qt::WindowFlags());
   }

   void TearDown() override
   {
      m_pDlg.reset();
      m_pPlugin.reset();
      cpp_export_settings::setOpenUrlHandler(cpp_export_settings::type_fct_open_url());
      cpp_export_settings::setDirectoryChooser(cpp_export_settings::type_fct_choose_path());
      cpp_export_settings::setFileChooser(cpp_export_settings::type_fct_choose_path());
      tools::message_box::clearHistory();
      context::ctx_project::closeProject();
      if (! m_sSavedCwd.isEmpty()) { QDir::setCurrent(m_sSavedCwd); }
   }

   template <typename T> T * child(const char * name) const
   {
      T * p = m_pDlg->findChild<T *>(QString::fromLatin1(name));
      EXPECT_NE(p, nullptr) << name;
      return p;
   }

   QString header() const { return child<QTextEdit>("m_txtCppTemplateHeader")->toPlainText(); }
   QString source() const { return child<QTextEdit>("m_txtCppTemplateSource")->toPlainText(); }

   // Stores the plug-in's current settings, as a previous session would have.
   void saveStored()
   {
      QSqlError err = m_pPlugin->saveSettings();
      ASSERT_FALSE(err.isValid()) << err.text().toStdString();
   }

   // What the project file holds, read by a fresh plug-in.
   std::unique_ptr<cpp_export> reloaded() const
   {
      auto p = std::make_unique<cpp_export>();
      p->loadSettings();
      return p;
   }

   QString existingDir(const QString & name)
   {
      QDir(m_dir.path()).mkpath(name);
      return QDir(m_dir.path()).absoluteFilePath(name);
   }

   void openWith(const QString & exportPath)
   {
      m_pPlugin->setCppExportPath(exportPath);
      saveStored();
      m_pDlg->setPlugin(m_pPlugin.get());
      m_pDlg->show();
   }

   QList<tools::message_box::record> warnings() const
   {
      QList<tools::message_box::record> lst;
      for (const auto & r : tools::message_box::history()) { if (r.kind == tools::message_box::kind_warning) { lst.append(r); } }
      return lst;
   }
};

TEST_F(ViewSettings, FormHasTheDesignedLayout)
{
   EXPECT_EQ(m_pDlg->objectName(), QString("wnd_cpp_export_settings"));
   EXPECT_EQ(m_pDlg->size(), QSize(694, 684));
   EXPECT_EQ(child<QGroupBox>("m_grpCppExportSettings")->title(), QString("C++ export settings"));
   EXPECT_EQ(child<QGroupBox>("m_grpCustomScript")->title(), QString("Custom script (javascript file) to change the default behaviour of the export process"));
   EXPECT_EQ(child<QGroupBox>("m_grpCppTemplate")->title(), QString("C++ template files"));
   for (const char * grp : { "m_grpCppExportSettings", "m_grpCustomScript", "m_grpCppTemplate" })
   { EXPECT_TRUE(child<QGroupBox>(grp)->styleSheet().isEmpty()) << grp; }   // titles in the palette's colours

   EXPECT_EQ(child<QLabel>("m_lblFileLocation")->text(), QString("C++ project location :"));
   EXPECT_EQ(child<QLabel>("m_lblCustomScript")->text(), QString("Custom script file :"));
   EXPECT_EQ(child<QPushButton>("m_btnFileLocation")->text(), QString("..."));
   EXPECT_EQ(child<QPushButton>("m_btnCustomScriptLocation")->text(), QString("..."));
   const QString sRelativeNote = "<html><head/><body><p><span style=\" font-weight:600; text-decoration: underline;\">Note :</span> you can put in this field a relative path to your Tavrel project file (<span style=\" font-style:italic;\">*.tavrel</span> file).</p></body></html>";
   EXPECT_EQ(child<QLineEdit>("m_txtFileLocation")->toolTip(), sRelativeNote);
   EXPECT_EQ(child<QLineEdit>("m_txtCustomScript")->toolTip(), sRelativeNote);

   EXPECT_EQ(child<QCheckBox>("m_chkRelativePathLumor")->text(), QString("Relative path to Lumor library"));
   EXPECT_EQ(child<QCheckBox>("m_chkRelativePathLumor")->toolTip(), QString("It is recommended to use an environment variable to define Lumor library location (for example $$(LUMOR_DIR)) instead of using this option"));
   EXPECT_EQ(child<QCheckBox>("m_chkGenerateCustomFiles")->text(), QString("Generate a custom directory with custom files for each entity"));
   EXPECT_EQ(child<QCheckBox>("m_chkGenerateCustomFiles")->toolTip(), QString("The custom directory is the right place to implement your triggers and validators.\nCustom files for each entity are created once, then you can write your own code : it will never be deleted by an export process."));
   EXPECT_EQ(child<QCheckBox>("m_chkPImpl")->text(), QString("Generate all persistent classes using the PIMPL (Private Implementation) idiom"));
   EXPECT_TRUE(child<QCheckBox>("m_chkPImpl")->toolTip().contains("The PIMPL idiom moves the private implementation details of a class into a separate structure. That includes private data as well as non-virtual private methods."));

   QLabel * pDetails = child<QLabel>("m_lblCustomScriptDetails");
   QTextDocument doc; doc.setHtml(pDetails->text());
   EXPECT_TRUE(doc.toPlainText().startsWith("Note : to change the default behaviour of the export process, you can write your own custom javascript file.")) << doc.toPlainText().toStdString();
   EXPECT_TRUE(doc.toPlainText().contains("./samples/custom_script.js"));
   EXPECT_TRUE(doc.toPlainText().trimmed().endsWith("You can define your own placeholder in the template, it must start with @@CUSTOM_, for example : @@CUSTOM_MY_ACTION@@"));

   EXPECT_EQ(child<QPushButton>("m_btnDebugCustomScript")->text(), QString("Debug custom javascript file"));
   EXPECT_FALSE(child<QPushButton>("m_btnDebugCustomScript")->icon().isNull());
   EXPECT_TRUE(child<QPushButton>("m_btnHelpManual")->text().isEmpty());
   EXPECT_FALSE(child<QPushButton>("m_btnHelpManual")->icon().isNull());
   EXPECT_EQ(child<QPushButton>("m_btnHelpManual")->toolTip(), QString("Documentation - Manual - User guide"));
   EXPECT_EQ(child<QPushButton>("m_btnOk")->text(), QString("Ok"));
   EXPECT_TRUE(child<QPushButton>("m_btnOk")->isDefault());
   EXPECT_FALSE(child<QPushButton>("m_btnOk")->icon().isNull());
   EXPECT_EQ(child<QPushButton>("m_btnCancel")->text(), QString("Cancel"));
   EXPECT_FALSE(child<QPushButton>("m_btnCancel")->icon().isNull());

   // One row of options in the designed order; style 2 is never offered.
   const char * opts[] = { "m_optNoInheritance", "m_optIxPersistable", "m_optIxPersistableAndQObject", "m_optZyPersistable", "m_optCustomCppTemplate" };
   const char * texts[] = { "No inheritance", "zy::IxPersistable", "zy::IxPersistable + QObject", "zy::ZyPersistable", "Custom" };
   QLayout * pRow = nullptr;
   for (QBoxLayout * l : child<QGroupBox>("m_grpCppTemplate")->findChildren<QBoxLayout *>())
   { if (l->indexOf(child<QRadioButton>(opts[0])) >= 0) { pRow = l; } }
   ASSERT_NE(pRow, nullptr);
   for (int i = 0; i < 5; ++i)
   {
      EXPECT_EQ(child<QRadioButton>(opts[i])->text(), QString(texts[i]));
      EXPECT_EQ(pRow->indexOf(child<QRadioButton>(opts[i])), i) << opts[i];
   }
   EXPECT_TRUE(child<QRadioButton>("m_optZyPersistable")->isHidden());
   for (const char * o : { "m_optNoInheritance", "m_optIxPersistable", "m_optIxPersistableAndQObject", "m_optCustomCppTemplate" })
   { EXPECT_FALSE(child<QRadioButton>(o)->isHidden()) << o; }
   EXPECT_EQ(child<QRadioButton>("m_optNoInheritance")->toolTip(), QString("<html><head/><body><p>C++ class generated without any base class.</p></body></html>"));
   EXPECT_EQ(child<QRadioButton>("m_optCustomCppTemplate")->toolTip(), QString("<html><head/><body><p>Define your own C++ template to generate all C++ classes.</p></body></html>"));
   QTextDocument tip;
   tip.setHtml(child<QRadioButton>("m_optIxPersistable")->toolTip());
   EXPECT_TRUE(tip.toPlainText().startsWith("C++ class generated implements zy::IxPersistable interface."));
   tip.setHtml(child<QRadioButton>("m_optIxPersistableAndQObject")->toolTip());
   EXPECT_TRUE(tip.toPlainText().startsWith("C++ class generated implements zy::IxPersistable interface and inherits from QObject."));
   tip.setHtml(child<QRadioButton>("m_optZyPersistable")->toolTip());
   EXPECT_TRUE(tip.toPlainText().startsWith("C++ class generated is a base class of zy::ZyPersistable class."));

   QTabWidget * pTabs = child<QTabWidget>("m_tabCppTemplate");
   ASSERT_EQ(pTabs->count(), 2);
   EXPECT_EQ(pTabs->widget(0)->objectName(), QString("m_tabCppTemplateHeader"));
   EXPECT_EQ(pTabs->tabText(0), QString("Header (.h)"));
   EXPECT_EQ(pTabs->widget(1)->objectName(), QString("m_tabCppTemplateSource"));
   EXPECT_EQ(pTabs->tabText(1), QString("Source (.cpp)"));
   for (const char * e : { "m_txtCppTemplateHeader", "m_txtCppTemplateSource" })
   {
      EXPECT_EQ(child<QTextEdit>(e)->frameShape(), QFrame::NoFrame) << e;
      EXPECT_EQ(child<QTextEdit>(e)->lineWrapMode(), QTextEdit::NoWrap) << e;
   }

   // Bottom row: help, spacer, OK, Cancel.
   QBoxLayout * pBottom = nullptr;
   for (QBoxLayout * l : m_pDlg->findChildren<QBoxLayout *>())
   { if (l->indexOf(child<QPushButton>("m_btnOk")) >= 0) { pBottom = l; } }
   ASSERT_NE(pBottom, nullptr);
   ASSERT_EQ(pBottom->count(), 4);
   EXPECT_EQ(pBottom->indexOf(child<QPushButton>("m_btnHelpManual")), 0);
   ASSERT_NE(pBottom->itemAt(1)->spacerItem(), nullptr);
   EXPECT_EQ(pBottom->itemAt(1)->spacerItem()->sizeHint(), QSize(40, 20));
   EXPECT_TRUE(pBottom->itemAt(1)->expandingDirections() & Qt::Horizontal);
   EXPECT_EQ(pBottom->indexOf(child<QPushButton>("m_btnOk")), 2);
   EXPECT_EQ(pBottom->indexOf(child<QPushButton>("m_btnCancel")), 3);
}

TEST_F(ViewSettings, SetPluginShowsStoredSettings)
{
   m_pPlugin->setCppExportPath("out/cpp");
   m_pPlugin->setCppTemplate(cpp_template::ix_persistable);
   m_pPlugin->setRelativePathLumor(true);
   m_pPlugin->setGenerateCustomFiles(false);
   m_pPlugin->setPImpl(true);
   m_pPlugin->setCustomScriptFile("scripts/hook.js");
   saveStored();
   // Values that were never saved are replaced by the stored ones.
   m_pPlugin->clearSettings();

   m_pDlg->setPlugin(m_pPlugin.get());
   EXPECT_EQ(m_pDlg->getPlugin(), m_pPlugin.get());
   EXPECT_EQ(child<QLineEdit>("m_txtFileLocation")->text(), QDir::toNativeSeparators("out/cpp"));
   EXPECT_EQ(child<QLineEdit>("m_txtCustomScript")->text(), QDir::toNativeSeparators("scripts/hook.js"));
   EXPECT_TRUE(child<QRadioButton>("m_optIxPersistable")->isChecked());
   EXPECT_TRUE(child<QCheckBox>("m_chkRelativePathLumor")->isChecked());
   EXPECT_FALSE(child<QCheckBox>("m_chkGenerateCustomFiles")->isChecked());
   EXPECT_TRUE(child<QCheckBox>("m_chkPImpl")->isChecked());
   EXPECT_EQ(header(), resourceText("template_ix_persistable_pimpl.h"));
   EXPECT_EQ(source(), resourceText("template_ix_persistable_pimpl.cpp"));
   EXPECT_TRUE(child<QTextEdit>("m_txtCppTemplateHeader")->isReadOnly());
   EXPECT_TRUE(child<QTextEdit>("m_txtCppTemplateSource")->isReadOnly());
}

TEST_F(ViewSettings, WithoutPluginTheDefaultsAreShown)
{
   m_pPlugin->setCppTemplate(cpp_template::custom);
   m_pPlugin->setPImpl(true);
   m_pPlugin->setCppExportPath("x");
   saveStored();
   m_pDlg->setPlugin(m_pPlugin.get());
   m_pDlg->setPlugin(nullptr);
   EXPECT_EQ(m_pDlg->getPlugin(), nullptr);
   EXPECT_TRUE(child<QRadioButton>("m_optNoInheritance")->isChecked());
   EXPECT_FALSE(child<QCheckBox>("m_chkRelativePathLumor")->isChecked());
   EXPECT_FALSE(child<QCheckBox>("m_chkGenerateCustomFiles")->isChecked());
   EXPECT_FALSE(child<QCheckBox>("m_chkPImpl")->isChecked());
   EXPECT_TRUE(child<QLineEdit>("m_txtFileLocation")->text().isEmpty());
   EXPECT_TRUE(child<QLineEdit>("m_txtCustomScript")->text().isEmpty());
   EXPECT_EQ(header(), resourceText("template_no_inheritance.h"));
   EXPECT_EQ(source(), resourceText("template_no_inheritance.cpp"));

   // OK does nothing without a plug-in.
   m_pDlg->show();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(m_pDlg->isVisible());
   EXPECT_TRUE(tools::message_box::history().isEmpty());
}

TEST_F(ViewSettings, OutOfRangeStyleChecksNoButton)
{
   m_pPlugin->setCppTemplate(cpp_template::ix_persistable);
   saveStored();
   m_pDlg->setPlugin(m_pPlugin.get());
   ASSERT_TRUE(child<QRadioButton>("m_optIxPersistable")->isChecked());

   m_pPlugin->setCppTemplate(static_cast<cpp_template::enum_template>(7));
   saveStored();
   m_pDlg->setPlugin(m_pPlugin.get());
   for (const char * o : { "m_optNoInheritance", "m_optIxPersistable", "m_optIxPersistableAndQObject", "m_optZyPersistable", "m_optCustomCppTemplate" })
   { EXPECT_FALSE(child<QRadioButton>(o)->isChecked()) << o; }
   EXPECT_TRUE(child<QTextEdit>("m_txtCppTemplateHeader")->isReadOnly());

   // None checked is stored as style 0.
   QString sOut = existingDir("out");
   child<QLineEdit>("m_txtFileLocation")->setText(sOut);
   m_pDlg->show();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::no_inheritance);
}

TEST_F(ViewSettings, StoredStyleTwoChecksTheHiddenButton)
{
   m_pPlugin->setCppTemplate(cpp_template::zy_persistable);
   saveStored();
   m_pDlg->setPlugin(m_pPlugin.get());
   EXPECT_TRUE(child<QRadioButton>("m_optZyPersistable")->isChecked());
   EXPECT_TRUE(child<QRadioButton>("m_optZyPersistable")->isHidden());
   EXPECT_EQ(header(), resourceText("template_zy_persistable.h"));
   EXPECT_EQ(source(), resourceText("template_zy_persistable.cpp"));

   child<QLineEdit>("m_txtFileLocation")->setText(existingDir("out"));
   m_pDlg->show();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(reloaded()->getCppTemplate(), cpp_template::zy_persistable);
}

TEST_F(ViewSettings, EachBuiltInStyleShowsItsTemplatesAndPImplSwapsThem)
{
   m_pDlg->setPlugin(m_pPlugin.get());
   m_pDlg->show();
   struct { const char * opt; const char * style; } lst[] = {
      { "m_optIxPersistable", "ix_persistable" },
      { "m_optIxPersistableAndQObject", "ix_persistable_and_q_object" },
      { "m_optNoInheritance", "no_inheritance" },
   };
   QCheckBox * pPImpl = child<QCheckBox>("m_chkPImpl");
   for (const auto & item : lst)
   {
      pPImpl->setChecked(false);
      child<QRadioButton>(item.opt)->click();
      const QString sBase = QString("template_") + item.style;
      EXPECT_EQ(header(), resourceText(sBase + ".h")) << item.style;
      EXPECT_EQ(source(), resourceText(sBase + ".cpp")) << item.style;
      EXPECT_TRUE(child<QTextEdit>("m_txtCppTemplateHeader")->isReadOnly());

      pPImpl->click();
      EXPECT_EQ(header(), resourceText(sBase + "_pimpl.h")) << item.style;
      EXPECT_EQ(source(), resourceText(sBase + "_pimpl.cpp")) << item.style;
      pPImpl->click();
      EXPECT_EQ(header(), resourceText(sBase + ".h")) << item.style;
      EXPECT_EQ(source(), resourceText(sBase + ".cpp")) << item.style;
   }
   EXPECT_FALSE(resourceText("template_no_inheritance_pimpl.h").isEmpty());
}

TEST_F(ViewSettings, CustomTextSurvivesAVisitToABuiltInStyle)
{
   m_pPlugin->setCustomCppTemplate_HPP("// stored header\n");
   m_pPlugin->setCustomCppTemplate_CPP("// stored source\n");
   saveStored();
   m_pDlg->setPlugin(m_pPlugin.get());
   m_pDlg->show();

   child<QRadioButton>("m_optCustomCppTemplate")->click();
   QTextEdit * pHeader = child<QTextEdit>("m_txtCppTemplateHeader");
   QTextEdit * pSource = child<QTextEdit>("m_txtCppTemplateSource");
   EXPECT_FALSE(pHeader->isReadOnly());
   EXPECT_FALSE(pSource->isReadOnly());
   EXPECT_EQ(header(), QString("// stored header\n"));
   pHeader->moveCursor(QTextCursor::End);
   typeText(pHeader, "class @@CLASS_NAME@@;");
   pSource->moveCursor(QTextCursor::End);
   typeText(pSource, "// typed");
   const QString sTypedHeader = "// stored header\nclass @@CLASS_NAME@@;";
   const QString sTypedSource = "// stored source\n// typed";
   ASSERT_EQ(header(), sTypedHeader);
   ASSERT_EQ(source(), sTypedSource);

   child<QRadioButton>("m_optIxPersistable")->click();
   EXPECT_EQ(header(), resourceText("template_ix_persistable.h"));
   EXPECT_TRUE(pHeader->isReadOnly());
   // Typing into a built-in template does nothing, and a PIMPL switch is no custom text either.
   typeText(pHeader, "x");
   EXPECT_EQ(header(), resourceText("template_ix_persistable.h"));
   child<QCheckBox>("m_chkPImpl")->click();
   EXPECT_EQ(header(), resourceText("template_ix_persistable_pimpl.h"));

   child<QRadioButton>("m_optCustomCppTemplate")->click();
   EXPECT_EQ(header(), sTypedHeader);
   EXPECT_EQ(source(), sTypedSource);
   EXPECT_FALSE(pHeader->isReadOnly());

   child<QLineEdit>("m_txtFileLocation")->setText(existingDir("out"));
   child<QPushButton>("m_btnOk")->click();
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   auto pStored = reloaded();
   EXPECT_EQ(pStored->getCppTemplate(), cpp_template::custom);
   EXPECT_EQ(pStored->getCustomCppTemplate_HPP(), sTypedHeader);
   EXPECT_EQ(pStored->getCustomCppTemplate_CPP(), sTypedSource);
   EXPECT_TRUE(pStored->getPImpl());
}

TEST_F(ViewSettings, CustomWithoutStoredTextsShowsAndStoresThePlaceholders)
{
   openWith(existingDir("out"));
   EXPECT_TRUE(child<QRadioButton>("m_optNoInheritance")->isChecked());
   child<QRadioButton>("m_optCustomCppTemplate")->click();
   EXPECT_EQ(header(), QString(k_sHeaderPlaceholder));
   EXPECT_EQ(source(), QString(k_sSourcePlaceholder));

   child<QPushButton>("m_btnOk")->click();
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_FALSE(m_pDlg->isVisible());
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_HPP(), QString(k_sHeaderPlaceholder));
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_CPP(), QString(k_sSourcePlaceholder));
   auto pStored = reloaded();
   EXPECT_EQ(pStored->getCppTemplate(), cpp_template::custom);
   EXPECT_EQ(pStored->getCustomCppTemplate_HPP(), QString(k_sHeaderPlaceholder));
}

TEST_F(ViewSettings, OkWithBuiltInStyleKeepsTheCustomTexts)
{
   m_pPlugin->setCustomCppTemplate_HPP("H");
   m_pPlugin->setCustomCppTemplate_CPP("S");
   openWith(existingDir("out"));
   child<QRadioButton>("m_optIxPersistableAndQObject")->click();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable_and_q_object);
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_HPP(), QString("H"));
   EXPECT_EQ(m_pPlugin->getCustomCppTemplate_CPP(), QString("S"));
}

TEST_F(ViewSettings, OkWithMissingDirectoryOffersToCreateItAndNoStaysOpen)
{
   QString sGood = existingDir("out");
   openWith(sGood);
   const QString sMissing = QDir(m_dir.path()).absoluteFilePath("no_such_dir");
   child<QLineEdit>("m_txtFileLocation")->setText(sMissing);
   child<QCheckBox>("m_chkPImpl")->setChecked(true);
   tools::message_box::pushScriptedAnswer(QMessageBox::No);
   child<QPushButton>("m_btnOk")->click();

   const QList<tools::message_box::record> lst = tools::message_box::history();
   ASSERT_EQ(lst.size(), 1);
   EXPECT_EQ(lst.first().kind, tools::message_box::kind_question);
   EXPECT_TRUE(lst.first().text.contains("does not exist. Create it?")) << lst.first().text.toStdString();
   EXPECT_FALSE(QFileInfo(sMissing).exists());
   EXPECT_TRUE(m_pDlg->isVisible());
   EXPECT_NE(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), sGood);
   EXPECT_FALSE(m_pPlugin->getPImpl());
   EXPECT_FALSE(reloaded()->getPImpl());

   // Yes creates it and the settings are saved.
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(QFileInfo(sMissing).isDir());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_TRUE(reloaded()->getPImpl());
}

TEST_F(ViewSettings, EmptyDirectoryIsAcceptedForTheExportToAskLater)
{
   openWith(existingDir("out"));
   child<QLineEdit>("m_txtFileLocation")->clear();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(tools::message_box::history().isEmpty());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_TRUE(m_pPlugin->getCppExportPath(false).isEmpty());
}

TEST_F(ViewSettings, RelativePathExistingBesideTheProjectFilePasses)
{
   existingDir("generated_view_cpp");
   ASSERT_FALSE(QFileInfo(QDir::current().absoluteFilePath("generated_view_cpp")).exists());
   openWith(QString());

   QStringList lstStartDirs;
   cpp_export_settings::setDirectoryChooser([&](QWidget *, const QString & start) { lstStartDirs << start; return QString(); });
   child<QLineEdit>("m_txtFileLocation")->setText("generated_view_cpp");
   child<QPushButton>("m_btnFileLocation")->click();
   // The typed text is a folder beside the project file: the chooser starts there.
   ASSERT_EQ(lstStartDirs.size(), 1);
   EXPECT_EQ(QFileInfo(lstStartDirs.first()).canonicalFilePath(), QFileInfo(existingDir("generated_view_cpp")).canonicalFilePath());
   EXPECT_EQ(child<QLineEdit>("m_txtFileLocation")->text(), QString("generated_view_cpp"));

   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(warnings().isEmpty());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), QString("generated_view_cpp"));
   EXPECT_EQ(reloaded()->getCppExportPath(false), QString("generated_view_cpp"));
}

TEST_F(ViewSettings, MissingScriptWarnsButTheNewPathStaysInMemory)
{
   QString sOld = existingDir("old");
   QString sNew = existingDir("new");
   openWith(sOld);
   child<QLineEdit>("m_txtFileLocation")->setText(sNew);
   child<QLineEdit>("m_txtCustomScript")->setText("missing_hook.js");
   child<QPushButton>("m_btnOk")->click();

   ASSERT_EQ(warnings().size(), 1);
   EXPECT_EQ(warnings().first().title, QString("TavrelCppExport"));
   EXPECT_EQ(warnings().first().text, QString("Custom script file doesn't exist : 'missing_hook.js'"));
   EXPECT_TRUE(m_pDlg->isVisible());
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), sNew);
   EXPECT_TRUE(m_pPlugin->getCustomScriptFile().isEmpty());
   EXPECT_EQ(reloaded()->getCppExportPath(false), sOld);
}

TEST_F(ViewSettings, ScriptRelativeToTheProjectFileIsAccepted)
{
   ASSERT_TRUE(test_support::writeAll(m_dir.filePath("hooks/hook.js"), "function execute(params) { return undefined; }\n"));
   openWith(existingDir("out"));
   child<QLineEdit>("m_txtCustomScript")->setText(QDir::toNativeSeparators("hooks/hook.js"));
   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(warnings().isEmpty());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(reloaded()->getCustomScriptFile(), QString("hooks/hook.js"));
}

TEST_F(ViewSettings, OkWithEmptyScriptStoresAnEmptyPath)
{
   ASSERT_TRUE(test_support::writeAll(m_dir.filePath("hook.js"), "function execute(params) { return undefined; }\n"));
   m_pPlugin->setCustomScriptFile(m_dir.filePath("hook.js"));
   openWith(existingDir("out"));
   EXPECT_EQ(child<QLineEdit>("m_txtCustomScript")->text(), QDir::toNativeSeparators(m_dir.filePath("hook.js")));
   child<QLineEdit>("m_txtCustomScript")->clear();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(warnings().isEmpty());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_TRUE(m_pPlugin->getCustomScriptFile().isEmpty());
   EXPECT_TRUE(reloaded()->getCustomScriptFile().isEmpty());
}

TEST_F(ViewSettings, OkStoresEveryFlagAndSaves)
{
   QString sOut = existingDir("out");
   openWith(sOut);
   child<QCheckBox>("m_chkRelativePathLumor")->setChecked(true);
   child<QCheckBox>("m_chkGenerateCustomFiles")->setChecked(false);
   child<QCheckBox>("m_chkPImpl")->setChecked(true);
   child<QRadioButton>("m_optIxPersistable")->click();
   child<QPushButton>("m_btnOk")->click();
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));

   auto pStored = reloaded();
   EXPECT_EQ(pStored->getCppExportPath(false), sOut);
   EXPECT_EQ(pStored->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_TRUE(pStored->getRelativePathLumor());
   EXPECT_FALSE(pStored->getGenerateCustomFiles());
   EXPECT_TRUE(pStored->getPImpl());
}

TEST_F(ViewSettings, WithoutProjectOkSucceedsInMemory)
{
   context::ctx_project::closeProject();
   QString sOut = existingDir("out");
   m_pDlg->setPlugin(m_pPlugin.get());
   m_pDlg->show();
   child<QLineEdit>("m_txtFileLocation")->setText(sOut);
   child<QPushButton>("m_btnOk")->click();
   EXPECT_TRUE(warnings().isEmpty());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Accepted));
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), sOut);
}

TEST_F(ViewSettings, CancelRejectsAndChangesNothing)
{
   QString sOut = existingDir("out");
   openWith(sOut);
   child<QLineEdit>("m_txtFileLocation")->setText(existingDir("other"));
   child<QCheckBox>("m_chkPImpl")->setChecked(true);
   child<QPushButton>("m_btnCancel")->click();
   EXPECT_FALSE(m_pDlg->isVisible());
   EXPECT_EQ(m_pDlg->result(), int(QDialog::Rejected));
   EXPECT_EQ(m_pPlugin->getCppExportPath(false), sOut);
   EXPECT_FALSE(m_pPlugin->getPImpl());
}

TEST_F(ViewSettings, DirectoryChooserStartsInTheTypedDirectoryAndFillsTheField)
{
   QString sTyped = existingDir("typed");
   QString sChosen = existingDir("chosen/sub");
   openWith(sTyped);
   QStringList lstStartDirs;
   cpp_export_settings::setDirectoryChooser([&](QWidget * parent, const QString & start)
   {
      EXPECT_EQ(parent, m_pDlg.get());
      lstStartDirs << start;
      return sChosen;
   });
   child<QPushButton>("m_btnFileLocation")->click();
   ASSERT_EQ(lstStartDirs.size(), 1);
   EXPECT_EQ(lstStartDirs.first(), QDir::toNativeSeparators(sTyped));
   EXPECT_EQ(child<QLineEdit>("m_txtFileLocation")->text(), QDir::toNativeSeparators(sChosen));

   // Cancelled: the field stays.
   cpp_export_settings::setDirectoryChooser([](QWidget *, const QString &) { return QString(); });
   child<QPushButton>("m_btnFileLocation")->click();
   EXPECT_EQ(child<QLineEdit>("m_txtFileLocation")->text(), QDir::toNativeSeparators(sChosen));
}

TEST_F(ViewSettings, ScriptChooserFillsTheField)
{
   openWith(existingDir("out"));
   const QString sFile = m_dir.filePath("hook.js");
   int iCalls = 0;
   cpp_export_settings::setFileChooser([&](QWidget *, const QString &) { ++iCalls; return sFile; });
   child<QPushButton>("m_btnCustomScriptLocation")->click();
   EXPECT_EQ(iCalls, 1);
   EXPECT_EQ(child<QLineEdit>("m_txtCustomScript")->text(), QDir::toNativeSeparators(sFile));

   cpp_export_settings::setFileChooser([&](QWidget *, const QString &) { ++iCalls; return QString(); });
   child<QPushButton>("m_btnCustomScriptLocation")->click();
   EXPECT_EQ(iCalls, 2);
   EXPECT_EQ(child<QLineEdit>("m_txtCustomScript")->text(), QDir::toNativeSeparators(sFile));
}

TEST_F(ViewSettings, DebugWithEmptyScriptFieldWarns)
{
   openWith(existingDir("out"));
   child<QPushButton>("m_btnDebugCustomScript")->click();
   ASSERT_EQ(tools::message_box::history().size(), 1);
   EXPECT_EQ(tools::message_box::history().first().kind, tools::message_box::kind_warning);
   EXPECT_EQ(tools::message_box::history().first().title, QString("TavrelCppExport"));
   EXPECT_EQ(tools::message_box::history().first().text, QString("Cannot debug custom script : custom script file location is empty"));
   EXPECT_EQ(m_pPlugin->getCustomScript(), nullptr);
}

TEST_F(ViewSettings, DebugWithMissingScriptWarns)
{
   openWith(existingDir("out"));
   child<QLineEdit>("m_txtCustomScript")->setText("nowhere.js");
   child<QPushButton>("m_btnDebugCustomScript")->click();
   ASSERT_EQ(warnings().size(), 1);
   EXPECT_EQ(warnings().first().text, QString("Cannot debug custom script : custom script file 'nowhere.js' doesn't exist"));
   EXPECT_EQ(m_pPlugin->getCustomScript(), nullptr);
}

TEST_F(ViewSettings, DebugAttachesANewEngineToThePlugin)
{
   const QString sFile = m_dir.filePath("hook.js");
   ASSERT_TRUE(test_support::writeAll(sFile, "function execute(params) { return undefined; }\n"));
   openWith(existingDir("out"));
   auto pEarlier = std::make_shared<tools::custom_javascript>();
   m_pPlugin->setCustomScript(pEarlier);
   child<QLineEdit>("m_txtCustomScript")->setText(QDir::toNativeSeparators(sFile));
   child<QPushButton>("m_btnDebugCustomScript")->click();

   EXPECT_TRUE(warnings().isEmpty());
   ASSERT_EQ(tools::message_box::history().size(), 1);
   const auto info = tools::message_box::history().first();
   EXPECT_EQ(info.kind, tools::message_box::kind_information);
   EXPECT_EQ(info.title, QString("TavrelCppExport"));
   EXPECT_EQ(info.text, QString(
      "A new debugger window has been attached to the C++ export process ('TavrelCppExport' plugin) :\n"
      "  1- save your settings and close this settings window ;\n"
      "  2- execute the export process : you will be able to debug your custom javascript (putting a breakpoint for example).\n\n"
      "Note : debugger process is automatically detached from the C++ export process when closing the debugger window."
      "\n\nOther note : another way to start the debugger is to press the SHIFT key on the keyboard when executing the export process."));

   auto pScript = m_pPlugin->getCustomScript();
   ASSERT_NE(pScript, nullptr);
   EXPECT_NE(pScript, pEarlier);
   EXPECT_TRUE(pScript->isDebugging());
   // The plug-in's reference keeps the engine alive after the dialog.
   m_pDlg.reset();
   EXPECT_TRUE(m_pPlugin->getCustomScript()->isDebugging());
}

TEST_F(ViewSettings, DebugOfABrokenScriptWarnsAndEndsTheEarlierSession)
{
   const QString sFile = m_dir.filePath("broken.js");
   ASSERT_TRUE(test_support::writeAll(sFile, "function execute(params) { return ; \n"));
   openWith(existingDir("out"));
   m_pPlugin->setCustomScript(std::make_shared<tools::custom_javascript>());
   child<QLineEdit>("m_txtCustomScript")->setText(sFile);
   child<QPushButton>("m_btnDebugCustomScript")->click();

   ASSERT_EQ(tools::message_box::history().size(), 1);
   EXPECT_EQ(tools::message_box::history().first().kind, tools::message_box::kind_warning);
   EXPECT_FALSE(tools::message_box::history().first().text.isEmpty());
   EXPECT_EQ(m_pPlugin->getCustomScript(), nullptr);
}

TEST_F(ViewSettings, HelpButtonOpensTheManualAtTheSettingsSection)
{
   QList<QUrl> lstUrls;
   cpp_export_settings::setOpenUrlHandler([&](const QUrl & url) { lstUrls << url; });
   m_pDlg->setPlugin(m_pPlugin.get());
   child<QPushButton>("m_btnHelpManual")->click();
   ASSERT_EQ(lstUrls.size(), 1);
   EXPECT_EQ(lstUrls.first().fragment(), QString("cpp_export_settings"));
   EXPECT_EQ(lstUrls.first(), QUrl(context::ctx_global::getAppHelpManualUrl() + "#cpp_export_settings"));
}

TEST_F(ViewSettings, F1OpensTheManual)
{
   QList<QUrl> lstUrls;
   cpp_export_settings::setOpenUrlHandler([&](const QUrl & url) { lstUrls << url; });
   m_pDlg->setPlugin(m_pPlugin.get());
   m_pDlg->show();
   m_pDlg->activateWindow();
   QApplication::setActiveWindow(m_pDlg.get());
   QApplication::processEvents();
   ASSERT_EQ(QApplication::activeWindow(), m_pDlg.get());

   QWidget * pFocus = child<QLineEdit>("m_txtFileLocation");
   pFocus->setFocus();
   EXPECT_TRUE(qt_sendShortcutOverrideEvent(pFocus, 0, Qt::Key_F1, Qt::NoModifier));
   ASSERT_EQ(lstUrls.size(), 1);
   EXPECT_EQ(lstUrls.first().toString(), QUrl(context::ctx_global::getAppHelpManualUrl() + "#cpp_export_settings").toString());
   EXPECT_TRUE(lstUrls.first().toString().endsWith("#cpp_export_settings"));
}

} // namespace
