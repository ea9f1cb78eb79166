// Faults of the desktop host found by trying it as a new user: the export shortcut inside a text
// field, the property table's columns, the user guide without a web browser.

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDockWidget>
#include <QHeaderView>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>
#include <QTextEdit>

#include <gtest/gtest.h>

#include "desktop/help_window.h"
#include "test_gui_support.h"

namespace {

class GuiHostFixes : public gui_test::GuiFixture
{
protected:
   void openShop(const QString & key)
   {
      const zy::ZyBool ok = m_pWnd->openProject(copyShop("f"));
      ASSERT_TRUE(ok) << ok.getDesc().toStdString();
      ASSERT_TRUE(m_pWnd->selectItem(key));
      m_pWnd->activateWindow();
      ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
   }
};

} // namespace

TEST_F(GuiHostFixes, CtrlEExportsWhileATextFieldHasTheCursor)
{
   openShop("shop::Customer");
   QAction * pExport = m_pWnd->getExportAction();
   ASSERT_TRUE(pExport->isEnabled());
   // The action is watched, not run: the export itself is tested elsewhere.
   QObject::disconnect(pExport, & QAction::triggered, m_pWnd.get(), nullptr);
   QSignalSpy spy(pExport, & QAction::triggered);
   for (const char * name : { "m_txtTable", "m_txtDescription" })
   {
      QLineEdit * pField = m_pWnd->findChild<QLineEdit *>(name);
      ASSERT_TRUE(pField);
      pField->setFocus();
      QTest::keyClick(pField, Qt::Key_E, Qt::ControlModifier);
   }
   EXPECT_EQ(spy.count(), 2);
   // Other keys still edit the field.
   QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
   pTable->setFocus();
   pTable->clear();
   QTest::keyClicks(pTable, "t_x");
   EXPECT_EQ(pTable->text(), "t_x");
}

TEST_F(GuiHostFixes, PropertyTableShowsColumnKeyNullAndDescriptionInView)
{
   openShop("shop::sales::Invoice");
   QTreeWidget * pTable = m_pWnd->findChild<QTreeWidget *>("m_treeItemDetails");
   ASSERT_TRUE(pTable);
   QStringList headers;
   for (int i = 0; i < pTable->columnCount(); ++i) { headers << pTable->headerItem()->text(i); }
   EXPECT_EQ(headers, QStringList({ "Property", "Type", "Column", "Key", "Null", "Description" }));
   QTreeWidgetItem * pKey = pTable->topLevelItem(0);
   ASSERT_TRUE(pKey);
   EXPECT_EQ(pKey->text(0), "invoice_no");
   EXPECT_EQ(pKey->text(3), "PK");
   bool bRelation = false;
   for (int i = 0; i < pTable->topLevelItemCount(); ++i) { bRelation = bRelation || (pTable->topLevelItem(i)->text(3) == "FK"); }
   EXPECT_TRUE(bRelation);
   // The columns before the description fit in a narrow table and can be resized.
   int iWidth = 0;
   for (int i = 0; i < pTable->columnCount() - 1; ++i) { iWidth += pTable->columnWidth(i); }
   EXPECT_LE(iWidth, 6 * 150);
   EXPECT_EQ(pTable->header()->sectionResizeMode(1), QHeaderView::Interactive);
}

// The offscreen platform starts no browser: the guide opens in the program's own window, at
// the place asked for, from Help and from anything else that opens the guide.
TEST_F(GuiHostFixes, UserGuideOpensInAHelpWindowWithoutABrowser)
{
   m_pWnd->activateWindow();
   ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
   QTest::keyClick(m_pWnd.get(), Qt::Key_F1);
   desktop::help_window * pHelp = m_pWnd->getHelpOpener()->getWindow();
   ASSERT_TRUE(pHelp);
   EXPECT_TRUE(pHelp->isVisible());
   EXPECT_TRUE(pHelp->getBrowser()->source().toLocalFile().endsWith("user_guide.html"));
   EXPECT_TRUE(pHelp->getBrowser()->toPlainText().contains("Starting the desktop host"));
   pHelp->hide();
   const QUrl settings(context::ctx_global::getAppHelpManualUrl() + "#cpp_export_settings");
   EXPECT_TRUE(QDesktopServices::openUrl(settings));
   EXPECT_EQ(m_pWnd->getHelpOpener()->getWindow(), pHelp);
   EXPECT_TRUE(pHelp->isVisible());
   EXPECT_EQ(pHelp->getBrowser()->source().fragment(), "cpp_export_settings");
}

// With an entity selected (the preview shows its style buttons) the window fits 800 x 600.
TEST_F(GuiHostFixes, WindowFitsEightHundredBySixHundred)
{
   openShop("shop::sales::Order");
   m_pWnd->resize(800, 600);
   QCoreApplication::processEvents();
   EXPECT_LE(m_pWnd->minimumSizeHint().width(), 800);
   EXPECT_LE(m_pWnd->minimumSize().width(), 800);
   EXPECT_LE(m_pWnd->width(), 800);
   EXPECT_LE(m_pWnd->height(), 600);
}

// Another class style shows the same entity again: the preview stays where the reader was.
TEST_F(GuiHostFixes, PreviewKeepsItsPlaceWhenTheClassStyleChanges)
{
   openShop("shop::sales::Order");
   QTextEdit * pHeader = m_pWnd->getPreviewDock()->findChild<QTextEdit *>("m_txtCppTemplateHeader");
   ASSERT_TRUE(pHeader);
   m_pWnd->getPreviewDock()->raise();
   QCoreApplication::processEvents();
   QScrollBar * pBar = pHeader->verticalScrollBar();
   ASSERT_GT(pBar->maximum(), 40);
   pBar->setValue(pBar->maximum() / 2);
   const int iPlace = pBar->value();
   ASSERT_GT(iPlace, 0);
   for (const char * name : { "m_optIxPersistable", "m_optNoInheritance" })
   {
      QRadioButton * pStyle = m_pWnd->getPreviewDock()->findChild<QRadioButton *>(name);
      ASSERT_TRUE(pStyle);
      ASSERT_FALSE(pStyle->isChecked());
      const QString before = pHeader->toPlainText();
      QTest::mouseClick(pStyle, Qt::LeftButton);
      ASSERT_NE(pHeader->toPlainText(), before) << name;
      EXPECT_NEAR(pBar->value(), iPlace, 2) << name;
   }
   // Another entity starts at the top.
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   EXPECT_EQ(pBar->value(), 0);
}
