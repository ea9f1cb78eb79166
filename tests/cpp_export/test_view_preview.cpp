#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFrame>
#include <QGraphicsDropShadowEffect>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMetaType>
#include <QPointer>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextEdit>

#include <gtest/gtest.h>

#include <memory>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "test_support.h"
#include "cpp_export/view/cpp_export_preview.h"
#include "gui/view/main_wnd.h"

namespace {

using plugin::cpp_export;
using plugin::cpp_template;
using view::cpp_export_preview;

const char * const k_sModel = R"({
  "name": "Library",
  "entities": [
    {"name": "Book", "namespace": "lib", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "title", "type": "QString"}
    ]},
    {"name": "Author", "namespace": "lib", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "name", "type": "QString"}
    ]}
  ],
  "enumerations": [
    {"name": "Genre", "namespace": "lib", "values": [{"key": "Novel", "value": "0"}, {"key": "Essay", "value": "1"}]}
  ]
})";

const char * const k_opts[] = { "m_optNoInheritance", "m_optIxPersistable", "m_optIxPersistableAndQObject", "m_optZyPersistable", "m_optCustomCppTemplate" };

class ViewPreview : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QPointer<view::main_wnd> m_pPreviousMainWnd;
   std::unique_ptr<view::main_wnd> m_pMainWnd;
   std::unique_ptr<cpp_export> m_pPlugin;
   std::unique_ptr<cpp_export_preview> m_pPreview;
   model::project_ptr m_pProject;
   model::entity_ptr m_pBook;
   model::entity_ptr m_pAuthor;
   model::enumeration_ptr m_pGenre;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      ASSERT_TRUE(test_support::writeAll(m_dir.filePath("library.json"), QByteArray(k_sModel)));
      zy::ZyBool opened = context::ctx_project::openProject(m_dir.filePath("library.json"));
      ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
      m_pProject = context::ctx_project::getProject();
      ASSERT_NE(m_pProject, nullptr);
      m_pBook = m_pProject->getEntityByKey("lib::Book");
      m_pAuthor = m_pProject->getEntityByKey("lib::Author");
      m_pGenre = m_pProject->getEnumerationByKey("lib::Genre");
      ASSERT_NE(m_pBook, nullptr);
      ASSERT_NE(m_pAuthor, nullptr);
      ASSERT_NE(m_pGenre, nullptr);
      ASSERT_NE(m_pBook->getId(), 0);
      ASSERT_NE(m_pGenre->getId(), 0);

      m_pPreviousMainWnd = context::ctx_global::getMainWnd();
      context::ctx_global::setMainWnd(nullptr);
      m_pPlugin = std::make_unique<cpp_export>();
   }

   void TearDown() override
   {
      m_pPreview.reset();
      m_pPlugin.reset();
      m_pMainWnd.reset();
      context::ctx_global::setMainWnd(m_pPreviousMainWnd);
      m_pProject.reset();
      context::ctx_project::closeProject();
   }

   // The host's main window exists before the widget, as in the desktop host.
   void createMainWnd()
   {
      m_pMainWnd = std::make_unique<view::main_wnd>();
      context::ctx_global::setMainWnd(m_pMainWnd.get());
   }

   void createPreview(bool bShow = true)
   {
      m_pPreview = std::make_unique<cpp_export_preview>();
      m_pPreview->setPlugin(m_pPlugin.get());
      m_pPreview->doLoadProject(m_pProject);
      if (bShow) { m_pPreview->show(); }
   }

   void saveStored()
   {
      QSqlError err = m_pPlugin->saveSettings();
      ASSERT_FALSE(err.isValid()) << err.text().toStdString();
   }

   std::unique_ptr<cpp_export> reloaded() const
   {
      auto p = std::make_unique<cpp_export>();
      p->loadSettings();
      return p;
   }

   template <typename T> T * child(const char * name) const
   {
      T * p = m_pPreview->findChild<T *>(QString::fromLatin1(name));
      EXPECT_NE(p, nullptr) << name;
      return p;
   }

   // Compared across regenerations, so the banner's minute must not count.
   QString header() const { return test_support::withoutBannerDate(child<QTextEdit>("m_txtCppTemplateHeader")->toPlainText()); }
   QString source() const { return test_support::withoutBannerDate(child<QTextEdit>("m_txtCppTemplateSource")->toPlainText()); }
   void clearTexts()
   {
      child<QTextEdit>("m_txtCppTemplateHeader")->clear();
      child<QTextEdit>("m_txtCppTemplateSource")->clear();
   }
   QWidget * page() const { return child<QStackedWidget>("m_stackedWidget")->currentWidget(); }
   QWidget * pageNoEntity() const { return child<QWidget>("m_widgetNoEntity"); }
   QWidget * pageEntity() const { return child<QWidget>("m_widgetEntity"); }
   bool optionsShown() const { return ! child<QWidget>("m_widgetOptCppTemplate")->isHidden(); }
};

TEST_F(ViewPreview, FormHasTheDesignedLayout)
{
   m_pPreview = std::make_unique<cpp_export_preview>();
   EXPECT_EQ(m_pPreview->objectName(), QString("wnd_cpp_export_preview"));
   EXPECT_EQ(m_pPreview->size(), QSize(700, 600));
   EXPECT_EQ(m_pPreview->windowTitle(), QString("C++ preview"));
   EXPECT_EQ(m_pPreview->getPlugin(), nullptr);

   QGridLayout * pMain = qobject_cast<QGridLayout *>(m_pPreview->layout());
   ASSERT_NE(pMain, nullptr);
   EXPECT_EQ(pMain->objectName(), QString("gridLayout"));
   EXPECT_EQ(pMain->contentsMargins(), QMargins(2, 2, 2, 2));
   EXPECT_GE(pMain->indexOf(child<QStackedWidget>("m_stackedWidget")), 0);

   QStackedWidget * pStack = child<QStackedWidget>("m_stackedWidget");
   ASSERT_EQ(pStack->count(), 2);
   EXPECT_EQ(pStack->widget(0), pageNoEntity());
   EXPECT_EQ(pStack->widget(1), pageEntity());
   // Nothing selected: the page is chosen by the preview logic, not left as the form had it.
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_EQ(pageNoEntity()->layout()->objectName(), QString("gridLayout_7"));
   EXPECT_EQ(pageEntity()->layout()->objectName(), QString("gridLayout_2"));

   QLabel * pLabel = child<QLabel>("m_lblNoEntity");
   EXPECT_EQ(pLabel->text(), QString("<html><head/><body><p><img src=':/cpp_export/images/cpp_export.png' width='32' height='32' /> Please select an entity or an enumeration to display C++ preview</p></body></html>"));
   EXPECT_EQ(pLabel->textFormat(), Qt::RichText);
   EXPECT_TRUE(pLabel->wordWrap());
   EXPECT_EQ(pLabel->alignment() & (Qt::AlignHorizontal_Mask | Qt::AlignVertical_Mask), Qt::AlignHCenter | Qt::AlignVCenter);
   QGraphicsDropShadowEffect * pShadow = qobject_cast<QGraphicsDropShadowEffect *>(pLabel->graphicsEffect());
   ASSERT_NE(pShadow, nullptr);
   EXPECT_EQ(pShadow->color(), QColor(63, 63, 63, 100));
   EXPECT_DOUBLE_EQ(pShadow->blurRadius(), 10.0);
   EXPECT_EQ(pShadow->offset(), QPointF(5.0, 5.0));

   QGroupBox * pGroup = child<QGroupBox>("m_grpCppTemplate");
   // The title takes the palette's colours (a fixed blue was unreadable on a dark palette).
   EXPECT_TRUE(pGroup->styleSheet().isEmpty());
   EXPECT_EQ(pGroup->layout()->objectName(), QString("gridLayout_3"));
   QWidget * pOptions = child<QWidget>("m_widgetOptCppTemplate");
   QGridLayout * pRow = qobject_cast<QGridLayout *>(pOptions->layout());
   ASSERT_NE(pRow, nullptr);
   EXPECT_EQ(pRow->objectName(), QString("m_grdOptCppTemplate"));
   EXPECT_EQ(pRow->contentsMargins(), QMargins(0, 0, 0, 0));
   const char * texts[] = { "No inheritance", "zy::IxPersistable", "zy::IxPersistable + QObject", "zy::ZyPersistable", "Custom" };
   // Two styles a row and the PIMPL box below them: all of it in view in a narrow dock.
   const int places[5][2] = { { 0, 0 }, { 0, 1 }, { 1, 0 }, { 2, 0 }, { 1, 1 } };
   int row = -1, col = -1, rs = 0, cs = 0;
   for (int i = 0; i < 5; ++i)
   {
      QRadioButton * pOpt = child<QRadioButton>(k_opts[i]);
      EXPECT_EQ(pOpt->text(), QString(texts[i]));
      pRow->getItemPosition(pRow->indexOf(pOpt), & row, & col, & rs, & cs);
      EXPECT_EQ(row, places[i][0]) << k_opts[i];
      EXPECT_EQ(col, places[i][1]) << k_opts[i];
   }
   EXPECT_TRUE(child<QRadioButton>("m_optZyPersistable")->isHidden());
   EXPECT_EQ(child<QRadioButton>("m_optNoInheritance")->toolTip(), QString("<html><head/><body><p>C++ class generated without any base class.</p></body></html>"));
   EXPECT_EQ(child<QRadioButton>("m_optCustomCppTemplate")->toolTip(), QString("<html><head/><body><p>Define your own C++ template to generate all C++ classes.</p></body></html>"));
   EXPECT_TRUE(child<QRadioButton>("m_optIxPersistable")->toolTip().contains("implements"));
   QCheckBox * pPImpl = child<QCheckBox>("m_chkPImpl");
   pRow->getItemPosition(pRow->indexOf(pPImpl), & row, & col, & rs, & cs);
   EXPECT_EQ(row, 3);
   EXPECT_EQ(col, 0);
   EXPECT_EQ(cs, 2);
   EXPECT_EQ(pPImpl->text(), QString("PIMPL idiom"));
   EXPECT_TRUE(pPImpl->toolTip().contains("The PIMPL idiom moves the private implementation details of a class into a separate structure."));

   QTabWidget * pTabs = child<QTabWidget>("m_tabCppTemplate");
   ASSERT_EQ(pTabs->count(), 2);
   EXPECT_EQ(pTabs->currentIndex(), 0);
   EXPECT_EQ(pTabs->widget(0)->objectName(), QString("m_tabCppTemplateHeader"));
   EXPECT_EQ(pTabs->tabText(0), QString("Header (.h)"));
   EXPECT_EQ(pTabs->widget(0)->layout()->objectName(), QString("gridLayout_5"));
   EXPECT_EQ(pTabs->widget(1)->objectName(), QString("m_tabCppTemplateSource"));
   EXPECT_EQ(pTabs->tabText(1), QString("Source (.cpp)"));
   EXPECT_EQ(pTabs->widget(1)->layout()->objectName(), QString("gridLayout_6"));
   for (const char * e : { "m_txtCppTemplateHeader", "m_txtCppTemplateSource" })
   {
      QTextEdit * pEdit = child<QTextEdit>(e);
      EXPECT_EQ(pEdit->frameShape(), QFrame::NoFrame) << e;
      EXPECT_EQ(pEdit->lineWrapMode(), QTextEdit::NoWrap) << e;
      EXPECT_TRUE(pEdit->isReadOnly()) << e;
   }
}

TEST_F(ViewPreview, PointerTypesAreRegisteredUnderTheirNames)
{
   m_pPreview = std::make_unique<cpp_export_preview>();
   EXPECT_EQ(QMetaType::fromName("model::project_ptr"), QMetaType::fromType<model::project_ptr>());
   EXPECT_EQ(QMetaType::fromName("model::entity_ptr"), QMetaType::fromType<model::entity_ptr>());
   EXPECT_EQ(QMetaType::fromName("model::enumeration_ptr"), QMetaType::fromType<model::enumeration_ptr>());
}

TEST_F(ViewPreview, SelectingAnEntityShowsItsGeneratedFiles)
{
   createPreview();
   EXPECT_EQ(m_pPreview->getPlugin(), m_pPlugin.get());
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_EQ(m_pPreview->getCppBuilder(), nullptr);

   m_pPreview->doSelectEntity(m_pBook);
   EXPECT_EQ(page(), pageEntity());
   EXPECT_TRUE(optionsShown());
   EXPECT_EQ(m_pPreview->getEntity(), m_pBook);
   EXPECT_TRUE(header().contains("Book"));
   EXPECT_TRUE(source().contains("Book"));
   ASSERT_NE(m_pPreview->getCppBuilder(), nullptr);
   EXPECT_EQ(m_pPreview->getCppBuilder()->getPlugin(), m_pPlugin.get());
   // The export's builder is not involved.
   EXPECT_EQ(m_pPlugin->getCppBuilder(), nullptr);

   plugin::cpp_builder * pBuilder = m_pPreview->getCppBuilder();
   m_pPreview->doSelectEntity(m_pAuthor);
   EXPECT_EQ(m_pPreview->getCppBuilder(), pBuilder);
   EXPECT_TRUE(header().contains("Author"));
   EXPECT_FALSE(header().contains("Book"));
}

TEST_F(ViewPreview, UnsavedEntityShowsTheNoEntityPage)
{
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   ASSERT_EQ(page(), pageEntity());

   auto pDraft = std::make_shared<model::entity>();
   pDraft->setName("Draft");
   pDraft->setNamespace("lib");
   ASSERT_EQ(pDraft->getId(), 0);
   m_pPreview->doSelectEntity(pDraft);
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_EQ(m_pPreview->getEntity(), nullptr);
   EXPECT_FALSE(header().contains("Draft"));

   auto pDraftEnum = std::make_shared<model::enumeration>();
   pDraftEnum->setName("DraftEnum");
   m_pPreview->doSelectEnumeration(pDraftEnum);
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_EQ(m_pPreview->getEnumeration(), nullptr);
}

TEST_F(ViewPreview, EnumerationHidesTheStyleOptions)
{
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   ASSERT_TRUE(optionsShown());

   m_pPreview->doSelectEnumeration(m_pGenre);
   EXPECT_EQ(page(), pageEntity());
   EXPECT_FALSE(optionsShown());
   EXPECT_EQ(m_pPreview->getEntity(), nullptr);
   EXPECT_EQ(m_pPreview->getEnumeration(), m_pGenre);
   EXPECT_TRUE(header().contains("Genre"));
   EXPECT_FALSE(source().isEmpty());

   m_pPreview->doSelectEntity(m_pBook);
   EXPECT_TRUE(optionsShown());
   EXPECT_EQ(m_pPreview->getEnumeration(), nullptr);
   EXPECT_TRUE(header().contains("Book"));

   // An empty selection keeps the other kind.
   m_pPreview->doSelectEnumeration(model::enumeration_ptr());
   EXPECT_EQ(m_pPreview->getEntity(), m_pBook);
   EXPECT_EQ(page(), pageEntity());
}

TEST_F(ViewPreview, WhileHiddenNothingIsGeneratedAndShowingCatchesUp)
{
   createPreview(false);
   m_pPreview->doSelectEntity(m_pBook);
   EXPECT_EQ(m_pPreview->getEntity(), m_pBook);
   EXPECT_EQ(page(), pageEntity());
   EXPECT_TRUE(header().isEmpty());
   EXPECT_TRUE(source().isEmpty());
   EXPECT_EQ(m_pPreview->getCppBuilder(), nullptr);

   m_pPreview->show();
   EXPECT_TRUE(header().contains("Book"));
   EXPECT_TRUE(source().contains("Book"));

   m_pPreview->hide();
   m_pPreview->doSelectEnumeration(m_pGenre);
   EXPECT_TRUE(header().contains("Book"));
   EXPECT_FALSE(optionsShown());
   m_pPreview->show();
   EXPECT_TRUE(header().contains("Genre"));
}

TEST_F(ViewPreview, ClickingAnotherStyleSavesAndRegenerates)
{
   saveStored();
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   const QString sPlain = header();
   ASSERT_TRUE(child<QRadioButton>("m_optNoInheritance")->isChecked());

   child<QRadioButton>("m_optIxPersistable")->click();
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_EQ(reloaded()->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_TRUE(header().contains("Book"));
   EXPECT_NE(header(), sPlain);

   child<QRadioButton>("m_optNoInheritance")->click();
   EXPECT_EQ(reloaded()->getCppTemplate(), cpp_template::no_inheritance);
   EXPECT_EQ(header(), sPlain);
}

TEST_F(ViewPreview, ClickingThePluginsOwnStyleRegeneratesWithoutSaving)
{
   saveStored();
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   ASSERT_TRUE(child<QRadioButton>("m_optNoInheritance")->isChecked());

   // Changed elsewhere in memory (not saved): the preview's buttons don't know yet.
   m_pPlugin->setCppTemplate(cpp_template::ix_persistable);
   m_pPlugin->setCustomScriptFile("unsaved.js");
   clearTexts();
   child<QRadioButton>("m_optIxPersistable")->click();
   EXPECT_TRUE(header().contains("Book"));
   EXPECT_TRUE(source().contains("Book"));
   auto pStored = reloaded();
   EXPECT_EQ(pStored->getCppTemplate(), cpp_template::no_inheritance);
   EXPECT_TRUE(pStored->getCustomScriptFile().isEmpty());
}

TEST_F(ViewPreview, PImplBoxSavesAndRegenerates)
{
   saveStored();
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   const QString sPlain = source();
   ASSERT_FALSE(child<QCheckBox>("m_chkPImpl")->isChecked());

   child<QCheckBox>("m_chkPImpl")->click();
   EXPECT_TRUE(m_pPlugin->getPImpl());
   EXPECT_TRUE(reloaded()->getPImpl());
   EXPECT_TRUE(source().contains("Book"));
   EXPECT_NE(source(), sPlain);

   child<QCheckBox>("m_chkPImpl")->click();
   EXPECT_FALSE(reloaded()->getPImpl());
   EXPECT_EQ(source(), sPlain);
}

TEST_F(ViewPreview, SetPluginShowsTheStoredStyleAndFlag)
{
   m_pPlugin->setCppTemplate(cpp_template::ix_persistable_and_q_object);
   m_pPlugin->setPImpl(true);
   saveStored();
   m_pPlugin->clearSettings();
   createPreview();
   EXPECT_TRUE(child<QRadioButton>("m_optIxPersistableAndQObject")->isChecked());
   EXPECT_TRUE(child<QCheckBox>("m_chkPImpl")->isChecked());
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable_and_q_object);

   m_pPlugin->setCppTemplate(cpp_template::custom);
   saveStored();
   m_pPreview->setPlugin(m_pPlugin.get());
   EXPECT_TRUE(child<QRadioButton>("m_optCustomCppTemplate")->isChecked());
}

TEST_F(ViewPreview, StyleTwoChecksNoVisibleButton)
{
   m_pPlugin->setCppTemplate(cpp_template::zy_persistable);
   saveStored();
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   for (const char * o : { "m_optNoInheritance", "m_optIxPersistable", "m_optIxPersistableAndQObject", "m_optCustomCppTemplate" })
   { EXPECT_FALSE(child<QRadioButton>(o)->isChecked()) << o; }
   EXPECT_TRUE(child<QRadioButton>("m_optZyPersistable")->isChecked());
   EXPECT_TRUE(child<QRadioButton>("m_optZyPersistable")->isHidden());
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::zy_persistable);
   EXPECT_EQ(reloaded()->getCppTemplate(), cpp_template::zy_persistable);
   EXPECT_TRUE(header().contains("Book"));
}

TEST_F(ViewPreview, DuringAnExportEntitySelectionsAreIgnoredButNotEnumerations)
{
   createMainWnd();
   createPreview();
   m_pMainWnd->setExecutingPlugin(true);
   Q_EMIT m_pMainWnd->onSelectEntity(m_pBook);
   EXPECT_EQ(m_pPreview->getEntity(), nullptr);
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_TRUE(header().isEmpty());

   Q_EMIT m_pMainWnd->onSelectEnumeration(m_pGenre);
   EXPECT_EQ(m_pPreview->getEnumeration(), m_pGenre);
   EXPECT_EQ(page(), pageEntity());
   EXPECT_TRUE(header().contains("Genre"));

   Q_EMIT m_pMainWnd->onUpdateEntity(m_pBook);
   EXPECT_EQ(m_pPreview->getEntity(), nullptr);
   EXPECT_EQ(m_pPreview->getEnumeration(), m_pGenre);

   m_pMainWnd->setExecutingPlugin(false);
   Q_EMIT m_pMainWnd->onSelectEntity(m_pBook);
   EXPECT_EQ(m_pPreview->getEntity(), m_pBook);
   EXPECT_TRUE(header().contains("Book"));
}

TEST_F(ViewPreview, FollowsTheMainWindowSignals)
{
   createMainWnd();
   m_pPreview = std::make_unique<cpp_export_preview>();
   m_pPreview->setPlugin(m_pPlugin.get());
   m_pPreview->show();

   Q_EMIT m_pMainWnd->onLoadProject(m_pProject);
   EXPECT_EQ(m_pPreview->getProject(), m_pProject);

   Q_EMIT m_pMainWnd->onSelectEntity(m_pBook);
   EXPECT_TRUE(header().contains("Book"));
   Q_EMIT m_pMainWnd->onUpdateEntity(m_pAuthor);
   EXPECT_TRUE(header().contains("Author"));
   Q_EMIT m_pMainWnd->onSelectEnumeration(m_pGenre);
   EXPECT_EQ(m_pPreview->getEnumeration(), m_pGenre);
   clearTexts();
   Q_EMIT m_pMainWnd->onUpdateEnumeration(m_pGenre);
   EXPECT_TRUE(header().contains("Genre"));
}

TEST_F(ViewPreview, WithoutMainWindowAtCreationNothingIsFollowed)
{
   createPreview();
   createMainWnd();
   Q_EMIT m_pMainWnd->onSelectEntity(m_pBook);
   EXPECT_EQ(m_pPreview->getEntity(), nullptr);
   EXPECT_EQ(page(), pageNoEntity());
}

TEST_F(ViewPreview, LoadProjectClearsTheSelectionAndReloadsSettings)
{
   saveStored();
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   ASSERT_EQ(page(), pageEntity());

   // Another session stored a new style.
   auto pOther = std::make_unique<cpp_export>();
   pOther->setCppTemplate(cpp_template::ix_persistable);
   ASSERT_FALSE(pOther->saveSettings().isValid());

   m_pPreview->doLoadProject(m_pProject);
   EXPECT_EQ(m_pPreview->getEntity(), nullptr);
   EXPECT_EQ(m_pPreview->getEnumeration(), nullptr);
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_TRUE(child<QRadioButton>("m_optIxPersistable")->isChecked());
}

TEST_F(ViewPreview, WithoutProjectNothingIsGenerated)
{
   m_pPreview = std::make_unique<cpp_export_preview>();
   m_pPreview->setPlugin(m_pPlugin.get());
   m_pPreview->show();
   m_pPreview->doSelectEntity(m_pBook);
   EXPECT_EQ(page(), pageEntity());
   EXPECT_TRUE(header().isEmpty());
   EXPECT_EQ(m_pPreview->getCppBuilder(), nullptr);
}

TEST_F(ViewPreview, DetachedWidgetShowsTheNoEntityPage)
{
   saveStored();
   createPreview();
   m_pPreview->doSelectEntity(m_pBook);
   child<QRadioButton>("m_optIxPersistable")->click();
   ASSERT_EQ(page(), pageEntity());

   m_pPreview->setPlugin(nullptr);
   EXPECT_EQ(m_pPreview->getPlugin(), nullptr);
   EXPECT_EQ(page(), pageNoEntity());
   EXPECT_TRUE(child<QRadioButton>("m_optNoInheritance")->isChecked());
   EXPECT_FALSE(child<QCheckBox>("m_chkPImpl")->isChecked());
   // Detaching never writes into the former plug-in.
   EXPECT_EQ(m_pPlugin->getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_EQ(reloaded()->getCppTemplate(), cpp_template::ix_persistable);

   // Late selections and clicks do nothing.
   m_pPreview->doSelectEntity(m_pAuthor);
   EXPECT_EQ(page(), pageNoEntity());
   child<QCheckBox>("m_chkPImpl")->click();
   EXPECT_FALSE(m_pPlugin->getPImpl());
   EXPECT_FALSE(reloaded()->getPImpl());
}

TEST_F(ViewPreview, PluginHandsOutAnAttachedPreview)
{
   QWidget * pWidget = m_pPlugin->getPreviewWidget();
   cpp_export_preview * pPreview = qobject_cast<cpp_export_preview *>(pWidget);
   ASSERT_NE(pPreview, nullptr);
   EXPECT_EQ(pPreview->getPlugin(), m_pPlugin.get());
   EXPECT_EQ(pPreview->windowTitle(), QString("C++ preview"));

   QPointer<cpp_export_preview> pGuard(pPreview);
   m_pPlugin->terminate();
   ASSERT_FALSE(pGuard.isNull());
   EXPECT_EQ(pGuard->getPlugin(), nullptr);
   EXPECT_EQ(pGuard->findChild<QStackedWidget *>("m_stackedWidget")->currentWidget(), pGuard->findChild<QWidget *>("m_widgetNoEntity"));
   delete pGuard.data();
}

} // namespace
