// Rough edges of the desktop host a user met on a first walk through it: help from a modal
// dialog, the messages of cancelled and dry-run exports, the tree after a delete, the preview's
// colours on a dark palette.

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDockWidget>
#include <QGroupBox>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QScrollArea>
#include <QScrollBar>
#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextImageFormat>
#include <QTextBrowser>
#include <QTextEdit>
#include <QTextLayout>
#include <QToolBar>

#include <cmath>

#include "desktop/help_window.h"
#include "desktop/import_db_dialog.h"
#include "test_gui_editing.h"

namespace {

class GuiRoughEdges : public gui_test::GuiEditing
{
protected:
   QStringList messages() const
   {
      QStringList lst;
      for (int i = 0; i < m_pWnd->getMessageList()->count(); ++i) { lst << m_pWnd->getMessageList()->item(i)->text(); }
      return lst;
   }

   // A modal dialog is active before keys go to it (the offscreen platform does not activate it).
   static void activate(QWidget * pDialog)
   {
      pDialog->activateWindow();
      static_cast<void>(QTest::qWaitFor([pDialog] { return pDialog->isActiveWindow(); }, 5000));
      ASSERT_TRUE(pDialog->isActiveWindow());
   }

   QString writeModel(const QString & sText)
   {
      const QString dir = m_tmp.filePath("m");
      QDir().mkpath(dir);
      test_support::writeAll(dir + "/m.json", sText.toUtf8());
      return dir + "/m.json";
   }
};

QStringList childTexts(QTreeWidgetItem * pItem)
{
   QStringList lst;
   for (int i = 0; pItem && (i < pItem->childCount()); ++i) { lst << pItem->child(i)->text(0); }
   return lst;
}

TEST_F(GuiRoughEdges, F1InTheSettingsDialogOpensTheGuideInFrontOfItAndOnScreen)
{
   openShop("shop::Customer");
   bool bChecked = false;
   onNextDialog<QDialog>([&](QDialog * d) {
      activate(d);
      QWidget * pFocus = (d->focusWidget() ? d->focusWidget() : d);
      QTest::keyClick(pFocus, Qt::Key_F1);
      desktop::help_window * pHelp = m_pWnd->getHelpOpener()->getWindow();
      bChecked = (pHelp != nullptr);
      if (pHelp)
      {
         EXPECT_TRUE(pHelp->isVisible());
         // A window of the dialog's own: above it and not blocked by it.
         EXPECT_EQ(pHelp->parentWidget(), d);
         EXPECT_EQ(pHelp->getBrowser()->source().fragment(), "cpp_export_settings");
         const QRect avail = d->screen()->availableGeometry();
         EXPECT_TRUE(avail.contains(pHelp->frameGeometry())) << pHelp->frameGeometry().width() << "x" << pHelp->frameGeometry().height();
         EXPECT_GT(pHelp->getBrowser()->verticalScrollBar()->maximum(), 0);
         pHelp->close();
      }
      QTest::mouseClick(d->findChild<QPushButton *>("m_btnCancel"), Qt::LeftButton);
   });
   QTest::mouseClick(m_pWnd->findChild<QToolBar *>("m_toolBar")->widgetForAction(m_pWnd->findChild<QAction *>("m_actPluginSettings")), Qt::LeftButton);
   EXPECT_TRUE(bChecked);
}

TEST_F(GuiRoughEdges, CancellingTheSettingsAnExportAsksForLogsNoSummary)
{
   openShop("shop::Customer");
   onNextDialog<QDialog>([&](QDialog * d) { QTest::mouseClick(d->findChild<QPushButton *>("m_btnCancel"), Qt::LeftButton); });
   key(m_pWnd->getModelTree(), Qt::Key_E, Qt::ControlModifier);
   const QString sLog = messages().join('\n');
   EXPECT_TRUE(sLog.contains("Export cancelled : nothing was exported")) << sLog.toStdString();
   EXPECT_FALSE(sLog.contains("Export ended")) << sLog.toStdString();
   EXPECT_FALSE(sLog.contains("0 files")) << sLog.toStdString();
}

TEST_F(GuiRoughEdges, CancellingTheSettingsADryRunAsksForShowsNoPreview)
{
   openShop("shop::Customer");
   onNextDialog<QDialog>([&](QDialog * d) { QTest::mouseClick(d->findChild<QPushButton *>("m_btnCancel"), Qt::LeftButton); });
   m_pWnd->getExportPreviewAction()->trigger();
   EXPECT_FALSE(m_pWnd->getExportPreview());
   const QString sLog = messages().join('\n');
   EXPECT_TRUE(sLog.contains("Export preview cancelled")) << sLog.toStdString();
   EXPECT_FALSE(sLog.contains("0 files")) << sLog.toStdString();
}

TEST_F(GuiRoughEdges, DryRunLogsWhatItDidNotWhatAnExportWrites)
{
   openShop("shop::Customer");
   QDir().mkpath(m_tmp.filePath("lumor"));
   context::ctx_global::initGlobalParams(m_tmp.filePath("lumor"));
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("out") } }));
   m_pWnd->getExportPreviewAction()->trigger();
   ASSERT_TRUE(m_pWnd->getExportPreview());
   const QString sLog = messages().join('\n');
   EXPECT_FALSE(sLog.contains("have been exported")) << sLog.toStdString();
   EXPECT_FALSE(sLog.contains("file created")) << sLog.toStdString();
   EXPECT_TRUE(sLog.contains("dry run, no file written")) << sLog.toStdString();
   EXPECT_TRUE(sLog.contains("a dry run does not create it")) << sLog.toStdString();
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("e/out")));
}

TEST_F(GuiRoughEdges, DeleteKeepsTheNamespacesInPlaceAndSelectsANeighbour)
{
   const QString sEntity = R"({"name":"%1","namespace":"%2","properties":[{"name":"id","type":"long","primary_key":true}]})";
   const QString sModel = QString(R"({"name":"m","entities":[%1,%2,%3,%4]})")
      .arg(sEntity.arg("A1", "a"), sEntity.arg("B1", "b"), sEntity.arg("A2", "a"), sEntity.arg("A3", "a"));
   ASSERT_TRUE(m_pWnd->openProject(writeModel(sModel)).getValue());
   QTreeWidgetItem * pEntities = m_pWnd->getModelTree()->topLevelItem(0);
   ASSERT_EQ(childTexts(pEntities), QStringList({ "a", "b" }));
   ASSERT_TRUE(m_pWnd->selectItem("a::A1"));
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   ASSERT_FALSE(m_pWnd->getProject()->getEntityByKey("a::A1"));
   pEntities = m_pWnd->getModelTree()->topLevelItem(0);
   EXPECT_EQ(childTexts(pEntities), QStringList({ "a", "b" }));
   ASSERT_TRUE(m_pWnd->getModelTree()->currentItem());
   EXPECT_EQ(m_pWnd->getModelTree()->currentItem()->data(0, desktop::main_window::k_roleKey).toString(), "a::A2");
   // The only entity of a namespace goes and comes back with undo: the namespace too, in place.
   ASSERT_TRUE(m_pWnd->selectItem("b::B1"));
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   EXPECT_EQ(childTexts(m_pWnd->getModelTree()->topLevelItem(0)), QStringList({ "a" }));
   undo();
   EXPECT_EQ(childTexts(m_pWnd->getModelTree()->topLevelItem(0)), QStringList({ "a", "b" }));
}

// Contrast ratio of two colours, from their relative luminance (text reads from 4.5).
double contrast(const QColor & a, const QColor & b)
{
   auto luminance = [](const QColor & c) {
      auto channel = [](double v) { return ((v <= 0.03928) ? (v / 12.92) : std::pow((v + 0.055) / 1.055, 2.4)); };
      return ((0.2126 * channel(c.redF())) + (0.7152 * channel(c.greenF())) + (0.0722 * channel(c.blueF())));
   };
   const double la = luminance(a);
   const double lb = luminance(b);
   return ((std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05));
}

// The colour of the first "class" keyword of a highlighted editor.
QColor keywordColour(QTextEdit * pEdit)
{
   for (QTextBlock block = pEdit->document()->begin(); block.isValid(); block = block.next())
   {
      const int iAt = static_cast<int>(block.text().indexOf(QRegularExpression("\\bclass\\b")));
      if (iAt < 0) { continue; }
      for (const QTextLayout::FormatRange & range : block.layout()->formats())
      {
         if ((range.start <= iAt) && (iAt < range.start + range.length)) { return range.format.foreground().color(); }
      }
   }
   return QColor();
}

TEST_F(GuiRoughEdges, PreviewKeywordsReadOnADarkPalette)
{
   const QPalette before = QApplication::palette();
   QPalette dark = before;
   dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
   dark.setColor(QPalette::Text, QColor(0xdd, 0xdd, 0xdd));
   dark.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2b));
   dark.setColor(QPalette::WindowText, QColor(0xdd, 0xdd, 0xdd));
   // The desktop's palette is there before the window.
   m_pWnd.reset();
   QApplication::setPalette(dark);
   struct restore { QPalette p; ~restore() { QApplication::setPalette(p); } } restorePalette{ before };
   m_pWnd = std::make_unique<desktop::main_window>();
   m_pWnd->show();
   openShop("shop::sales::Order");
   m_pWnd->getPreviewDock()->raise();
   QCoreApplication::processEvents();
   QTextEdit * pHeader = m_pWnd->getPreviewDock()->findChild<QTextEdit *>("m_txtCppTemplateHeader");
   ASSERT_TRUE(pHeader);
   const QColor keyword = keywordColour(pHeader);
   ASSERT_TRUE(keyword.isValid());
   const QColor base = pHeader->palette().color(QPalette::Base);
   ASSERT_EQ(base, dark.color(QPalette::Base));
   EXPECT_GE(contrast(keyword, base), 4.5) << keyword.name().toStdString() << " on " << base.name().toStdString();
   // The titles of the preview's boxes too.
   QGroupBox * pBox = m_pWnd->getPreviewDock()->findChild<QGroupBox *>("m_grpCppTemplate");
   ASSERT_TRUE(pBox);
   EXPECT_GE(contrast(pBox->palette().color(QPalette::WindowText), pBox->palette().color(QPalette::Window)), 4.5);
   EXPECT_TRUE(pBox->styleSheet().isEmpty()) << pBox->styleSheet().toStdString();
}

} // namespace

namespace {

// Custom class style with PIMPL and no custom template yet: the preview says why it shows no
// code, in one message above the code, without a modal box per file.
TEST_F(GuiRoughEdges, CustomStyleWithPimplExplainsTheEmptyPreviewInline)
{
   openShop("shop::sales::Order");
   QDockWidget * pDock = m_pWnd->getPreviewDock();
   pDock->raise();
   QCoreApplication::processEvents();
   QCheckBox * pPImpl = pDock->findChild<QCheckBox *>("m_chkPImpl");
   QRadioButton * pCustom = pDock->findChild<QRadioButton *>("m_optCustomCppTemplate");
   QLabel * pProblem = pDock->findChild<QLabel *>("m_lblPreviewProblem");
   ASSERT_TRUE(pPImpl && pCustom && pProblem);
   EXPECT_TRUE(pProblem->isHidden());
   tools::message_box::clearHistory();
   QTest::mouseClick(pPImpl, Qt::LeftButton, Qt::NoModifier, QPoint(5, pPImpl->height() / 2));
   ASSERT_TRUE(pPImpl->isChecked());
   QTest::mouseClick(pCustom, Qt::LeftButton, Qt::NoModifier, QPoint(5, pCustom->height() / 2));
   ASSERT_TRUE(pCustom->isChecked());
   EXPECT_TRUE(tools::message_box::history().isEmpty()) << tools::message_box::history().first().text.toStdString();
   EXPECT_FALSE(pProblem->isHidden());
   EXPECT_TRUE(pProblem->text().contains("@@PIMPL_DEFINITION@@")) << pProblem->text().toStdString();
   EXPECT_TRUE(pProblem->text().contains("custom templates are empty")) << pProblem->text().toStdString();
   // Shown again for another entity, still without a box.
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   EXPECT_TRUE(tools::message_box::history().isEmpty());
   EXPECT_TRUE(pProblem->text().contains("@@PIMPL_DEFINITION@@")) << pProblem->text().toStdString();
   // A built-in style has code again and nothing to say.
   QRadioButton * pNoInheritance = pDock->findChild<QRadioButton *>("m_optNoInheritance");
   QTest::mouseClick(pNoInheritance, Qt::LeftButton, Qt::NoModifier, QPoint(5, pNoInheritance->height() / 2));
   EXPECT_TRUE(pProblem->isHidden()) << pProblem->text().toStdString();
}

} // namespace
namespace {

// A 1024 x 768 screen: the preview dock beside the tree shows the PIMPL box, no scrolling needed.
TEST_F(GuiRoughEdges, PreviewShowsThePimplBoxAtTenTwentyFourBySevenSixtyEight)
{
   openShop("shop::sales::Order");
   m_pWnd->resize(1024, 768);
   m_pWnd->getPreviewDock()->raise();
   QCoreApplication::processEvents();
   QCheckBox * pPImpl = m_pWnd->getPreviewDock()->findChild<QCheckBox *>("m_chkPImpl");
   ASSERT_TRUE(pPImpl);
   // The box and its text lie inside the part of the dock's scroll area in view.
   QScrollArea * pArea = m_pWnd->getPreviewDock()->findChild<QScrollArea *>();
   ASSERT_TRUE(pArea);
   const QRect box(pPImpl->mapTo(pArea->viewport(), QPoint(0, 0)), pPImpl->sizeHint());
   EXPECT_TRUE(pArea->viewport()->rect().contains(box)) << box.x() << "," << box.y() << " " << box.width() << "x" << box.height()
                                                        << " in " << pArea->viewport()->width() << "x" << pArea->viewport()->height();
   // It answers a click where the user sees it.
   const bool bBefore = pPImpl->isChecked();
   QTest::mouseClick(pPImpl, Qt::LeftButton, Qt::NoModifier, QPoint(5, pPImpl->height() / 2));
   EXPECT_NE(pPImpl->isChecked(), bBefore);
}

} // namespace
namespace {

// The guide's pictures read without blank gaps: each as wide as the text at most, in a block of
// its own no taller than the picture.
TEST_F(GuiRoughEdges, GuidePicturesFitTheHelpWindowWithoutGaps)
{
   m_pWnd->activateWindow();
   ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
   QTest::keyClick(m_pWnd.get(), Qt::Key_F1);
   desktop::help_window * pHelp = m_pWnd->getHelpOpener()->getWindow();
   ASSERT_TRUE(pHelp);
   pHelp->resize(700, 600);
   QCoreApplication::processEvents();
   QTextBrowser * pBrowser = pHelp->getBrowser();
   QTextDocument * pDoc = pBrowser->document();
   int iPictures = 0;
   for (QTextBlock block = pDoc->begin(); block.isValid(); block = block.next())
   {
      for (QTextBlock::iterator itr = block.begin(); ! itr.atEnd(); ++itr)
      {
         if (! itr.fragment().charFormat().isImageFormat()) { continue; }
         ++iPictures;
         const QTextImageFormat fmt = itr.fragment().charFormat().toImageFormat();
         const QRectF rect = pDoc->documentLayout()->blockBoundingRect(block);
         EXPECT_LE(rect.left() + fmt.width(), pBrowser->viewport()->width()) << fmt.name().toStdString();
         EXPECT_GT(fmt.width(), 200) << fmt.name().toStdString();
         EXPECT_TRUE(block.text().trimmed() == QString(QChar::ObjectReplacementCharacter)) << block.text().toStdString();
         EXPECT_LE(rect.height(), fmt.height() + 30) << fmt.name().toStdString();
      }
   }
   EXPECT_GE(iPictures, 4);
}

} // namespace

namespace {

// A project file that refuses writes: a class style or PIMPL click says so and the buttons go
// back to the stored choice.
TEST_F(GuiRoughEdges, StyleClickOnAProjectThatRefusesWritesIsToldAndUndone)
{
   openShop("shop::sales::Order");
   QDockWidget * pDock = m_pWnd->getPreviewDock();
   pDock->raise();
   QCoreApplication::processEvents();
   {
      // The plug-in settings table refuses every change from now on.
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "refusing_writes");
      db.setDatabaseName(m_tmp.filePath("e/shop.tavrel"));
      ASSERT_TRUE(db.open());
      QSqlQuery query(db);
      for (const char * sql : { "CREATE TRIGGER refuse_insert BEFORE INSERT ON t_plugin_params BEGIN SELECT RAISE(ABORT, 'the file is read-only'); END",
                                "CREATE TRIGGER refuse_delete BEFORE DELETE ON t_plugin_params BEGIN SELECT RAISE(ABORT, 'the file is read-only'); END" })
      { ASSERT_TRUE(query.exec(sql)) << query.lastError().text().toStdString(); }
      query.clear();
      db.close();
   }
   QSqlDatabase::removeDatabase("refusing_writes");
   QRadioButton * pIx = pDock->findChild<QRadioButton *>("m_optIxPersistable");
   QCheckBox * pPImpl = pDock->findChild<QCheckBox *>("m_chkPImpl");
   ASSERT_TRUE(pIx && pPImpl);
   ASSERT_FALSE(pIx->isChecked());
   ASSERT_FALSE(pPImpl->isChecked());
   tools::message_box::clearHistory();
   QTest::mouseClick(pIx, Qt::LeftButton, Qt::NoModifier, QPoint(5, pIx->height() / 2));
   ASSERT_EQ(tools::message_box::history().size(), 1);
   EXPECT_EQ(tools::message_box::history().first().kind, tools::message_box::kind_warning);
   EXPECT_TRUE(tools::message_box::history().first().text.contains("class style cannot be stored")) << tools::message_box::history().first().text.toStdString();
   EXPECT_FALSE(pIx->isChecked());
   QTest::mouseClick(pPImpl, Qt::LeftButton, Qt::NoModifier, QPoint(5, pPImpl->height() / 2));
   ASSERT_EQ(tools::message_box::history().size(), 2);
   EXPECT_TRUE(tools::message_box::history().last().text.contains("PIMPL choice cannot be stored")) << tools::message_box::history().last().text.toStdString();
   EXPECT_FALSE(pPImpl->isChecked());
}

} // namespace

namespace {

// A new import clears the last one's error at once, and Cancel import stops it before the
// project file is written.
TEST_F(GuiRoughEdges, ImportDialogClearsTheLastErrorAndCancelLeavesTheProjectAsItWas)
{
   openShop("shop::Customer");
   const QString sProject = m_tmp.filePath("e/shop.tavrel");
   const QByteArray before = test_support::readAll(sProject);
   const QString sDdl = m_tmp.filePath("schema.sql");
   test_support::writeAll(sDdl, "CREATE TABLE parcel (id BIGINT PRIMARY KEY, weight INTEGER);\n");
   desktop::import_db_dialog dlg(sProject, m_pWnd.get());
   dlg.show();
   dlg.getSourceBox()->setCurrentIndex(desktop::import_db_dialog::source_ddl);
   dlg.getFileEdit()->setText(m_tmp.filePath("missing.sql"));
   QPushButton * pCancel = dlg.getCancelImportButton();
   ASSERT_TRUE(pCancel);
   EXPECT_FALSE(pCancel->isEnabled());
   QTest::mouseClick(dlg.getPreviewButton(), Qt::LeftButton);
   ASSERT_TRUE(dlg.getPreview()->toPlainText().contains("error:")) << dlg.getPreview()->toPlainText().toStdString();

   dlg.getFileEdit()->setText(sDdl);
   bool bSeen = false;
   // The user's click once the import runs.
   QTimer::singleShot(0, &dlg, [&]() {
      bSeen = true;
      EXPECT_TRUE(dlg.getPreview()->toPlainText().isEmpty()) << dlg.getPreview()->toPlainText().toStdString();
      EXPECT_TRUE(pCancel->isEnabled());
      EXPECT_FALSE(dlg.getImportButton()->isEnabled());
      QTest::mouseClick(pCancel, Qt::LeftButton);
   });
   QTest::mouseClick(dlg.getImportButton(), Qt::LeftButton);
   EXPECT_TRUE(bSeen);
   EXPECT_TRUE(dlg.isVisible());
   EXPECT_EQ(dlg.result(), int(QDialog::Rejected));
   EXPECT_TRUE(dlg.getPreview()->toPlainText().contains("Import cancelled")) << dlg.getPreview()->toPlainText().toStdString();
   EXPECT_FALSE(dlg.getPreview()->toPlainText().contains("missing.sql"));
   EXPECT_TRUE(dlg.getSummary().isEmpty());
   EXPECT_FALSE(pCancel->isEnabled());
   EXPECT_EQ(test_support::readAll(sProject), before);
   // Not cancelled, the same import goes through.
   QTest::mouseClick(dlg.getImportButton(), Qt::LeftButton);
   EXPECT_NE(test_support::readAll(sProject), before);
}

// A dump file's statements skipped on purpose are counted in the window, as on the command line;
// the next import does not show them again.
TEST_F(GuiRoughEdges, ImportDialogSaysWhatADumpFileHeldThatWasSkipped)
{
   openShop("shop::Customer");
   const QString sProject = m_tmp.filePath("e/shop.tavrel");
   desktop::import_db_dialog dlg(sProject, m_pWnd.get());
   dlg.show();
   dlg.getSourceBox()->setCurrentIndex(desktop::import_db_dialog::source_ddl);
   dlg.getFileEdit()->setText(test_support::sourceDir() + "/tests/db_import/dumps/lending.postgresql.full.sql");
   QTest::mouseClick(dlg.getPreviewButton(), Qt::LeftButton);
   const QString sShown = dlg.getPreview()->toPlainText();
   EXPECT_FALSE(sShown.contains("error:")) << sShown.toStdString();
   EXPECT_TRUE(sShown.contains("note: lending.postgresql.full.sql: skipped 6 data statements (COPY, INSERT, LOCK TABLES)")) << sShown.toStdString();
   EXPECT_TRUE(sShown.contains("note: lending.postgresql.full.sql: skipped 2 functions and procedures")) << sShown.toStdString();
   EXPECT_FALSE(dlg.getNotes().isEmpty());

   const QString sDdl = m_tmp.filePath("schema.sql");
   test_support::writeAll(sDdl, "CREATE TABLE parcel (id BIGINT PRIMARY KEY, weight INTEGER);\n");
   dlg.getFileEdit()->setText(sDdl);
   QTest::mouseClick(dlg.getPreviewButton(), Qt::LeftButton);
   EXPECT_FALSE(dlg.getPreview()->toPlainText().contains("note:")) << dlg.getPreview()->toPlainText().toStdString();
   EXPECT_TRUE(dlg.getNotes().isEmpty());
}

} // namespace

namespace {

// The settings dialog says under the custom templates what PIMPL needs of them, as they are typed.
TEST_F(GuiRoughEdges, SettingsDialogSaysWhatCustomTemplatesLackForPimpl)
{
   openShop("shop::Customer");
   bool bChecked = false;
   tools::message_box::clearHistory();
   onNextDialog<QDialog>([&](QDialog * d) {
      activate(d);
      QCheckBox * pPImpl = d->findChild<QCheckBox *>("m_chkPImpl");
      QRadioButton * pCustom = d->findChild<QRadioButton *>("m_optCustomCppTemplate");
      QLabel * pProblem = d->findChild<QLabel *>("m_lblTemplateProblem");
      QTextEdit * pHeader = d->findChild<QTextEdit *>("m_txtCppTemplateHeader");
      QTextEdit * pSource = d->findChild<QTextEdit *>("m_txtCppTemplateSource");
      bChecked = (pPImpl && pCustom && pProblem && pHeader && pSource);
      if (! bChecked) { d->reject(); return; }
      EXPECT_TRUE(pProblem->isHidden());
      QTest::mouseClick(pPImpl, Qt::LeftButton, Qt::NoModifier, QPoint(5, pPImpl->height() / 2));
      QTest::mouseClick(pCustom, Qt::LeftButton, Qt::NoModifier, QPoint(5, pCustom->height() / 2));
      EXPECT_FALSE(pProblem->isHidden());
      EXPECT_TRUE(pProblem->text().contains("@@PIMPL_DEFINITION@@")) << pProblem->text().toStdString();
      EXPECT_TRUE(pProblem->text().contains("@@PIMPL_IMPLEMENTATION@@")) << pProblem->text().toStdString();
      pHeader->setFocus();
      pHeader->moveCursor(QTextCursor::End);
      QTest::keyClicks(pHeader, "@@PIMPL_DEFINITION@@");
      EXPECT_FALSE(pProblem->text().contains("@@PIMPL_DEFINITION@@")) << pProblem->text().toStdString();
      pSource->setFocus();
      pSource->moveCursor(QTextCursor::End);
      QTest::keyClicks(pSource, "@@PIMPL_IMPLEMENTATION@@");
      EXPECT_TRUE(pProblem->isHidden()) << pProblem->text().toStdString();
      QTest::mouseClick(d->findChild<QPushButton *>("m_btnCancel"), Qt::LeftButton);
   });
   m_pWnd->doActPluginSettings();
   EXPECT_TRUE(bChecked);
   EXPECT_TRUE(tools::message_box::history().isEmpty());
}

} // namespace
