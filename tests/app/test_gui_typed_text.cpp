// Text typed into the edit panel and not applied yet: an export takes it first, and applying
// text that changes nothing makes no undo step.

#include <QDirIterator>

#include <gtest/gtest.h>

#include "test_gui_editing.h"

namespace {

class GuiTypedText : public gui_test::GuiEditing
{
protected:
   // Files below the folder holding the text.
   static int filesWith(const QString & sDir, const QByteArray & text)
   {
      int n = 0;
      QDirIterator itr(sDir, QDir::Files, QDirIterator::Subdirectories);
      while (itr.hasNext()) { n += (test_support::readAll(itr.next()).contains(text) ? 1 : 0); }
      return n;
   }
};

} // namespace

TEST_F(GuiTypedText, CtrlEAppliesTheTypedTextBeforeItExports)
{
   openShop("shop::Customer");
   const QString sDir = QFileInfo(context::ctx_project::getProjectFile()).absolutePath();
   QDir().mkpath(sDir + "/out");
   QDir().mkpath(m_tmp.filePath("lumor"));
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("out") } }));
   context::ctx_global::initGlobalParams(m_tmp.filePath("lumor"));

   QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
   pTable->setFocus();
   pTable->selectAll();
   QTest::keyClicks(pTable, "t_buyer");
   QTest::keyClick(pTable, Qt::Key_E, Qt::ControlModifier);
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_buyer");
   EXPECT_EQ(m_pWnd->getUndoStack()->undoText(), "Edit shop::Customer");
   EXPECT_GE(messagesWith("Export of project 'SHOP'"), 1);
   EXPECT_GE(filesWith(sDir + "/out", "\"t_buyer\""), 1);
}

TEST_F(GuiTypedText, TypedTextThatCannotBeAppliedStopsTheExport)
{
   openShop("shop::Customer");
   QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
   pTable->setFocus();
   pTable->selectAll();
   QTest::keyClicks(pTable, "t\"x");
   QTest::keyClick(pTable, Qt::Key_E, Qt::ControlModifier);
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
   EXPECT_EQ(messagesWith("Export of project"), 0);
}

TEST_F(GuiTypedText, ApplyingTextThatChangesNothingMakesNoUndoStep)
{
   openShop("shop::CustomerProfile");
   QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
   pDescription->setFocus();
   pDescription->end(false);
   QTest::keyClick(pDescription, Qt::Key_X);
   QTest::keyClick(pDescription, Qt::Key_Backspace);
   QTest::keyClick(pDescription, Qt::Key_Return);
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_FALSE(m_pWnd->findChild<QPushButton *>("m_btnApply")->isEnabled());
}

TEST_F(GuiTypedText, EnumerationValuesShowOnlyTheirOwnColumns)
{
   openShop("shop::Customer");
   QTreeWidget * pTable = m_pWnd->getPropertyTable();
   EXPECT_EQ(pTable->columnCount(), 6);
   ASSERT_TRUE(m_pWnd->selectItem("shop::ProductStatus"));
   EXPECT_EQ(pTable->columnCount(), 2);
   EXPECT_EQ(pTable->headerItem()->text(0), "Key");
   EXPECT_EQ(pTable->headerItem()->text(1), "Value");
}
