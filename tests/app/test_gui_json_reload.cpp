// File > Export model as JSON, and the question before a reload of a JSON model replaces the
// edits applied since it was opened.

#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include "model/entity.h"
#include "model/project.h"
#include "test_gui_support.h"

namespace {

class GuiJsonReload : public gui_test::GuiFixture
{
protected:
   QString m_sModel;

   void openAndEdit()
   {
      m_sModel = copyShop("r");
      ASSERT_TRUE(m_pWnd->openProject(m_sModel).getValue());
      ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
      QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
      ASSERT_TRUE(pDescription);
      pDescription->setFocus();
      pDescription->selectAll();
      QTest::keyClicks(pDescription, "Edited in the window");
      QTest::mouseClick(m_pWnd->findChild<QPushButton *>("m_btnApply"), Qt::LeftButton);
      ASSERT_EQ(m_pWnd->getProject()->getEntityByKey("shop::Customer")->getDescription(), "Edited in the window");
   }

   QString customerDescription() const { return m_pWnd->getProject()->getEntityByKey("shop::Customer")->getDescription(); }

   int questions() const
   {
      int n = 0;
      for (const auto & r : tools::message_box::history()) { n += (r.kind == tools::message_box::kind_question) ? 1 : 0; }
      return n;
   }
};

} // namespace

TEST_F(GuiJsonReload, CancelKeepsTheEdits)
{
   openAndEdit();
   tools::message_box::clearHistory();
   tools::message_box::pushScriptedAnswer(QMessageBox::Cancel);
   m_pWnd->doActReloadProject();
   EXPECT_EQ(questions(), 1);
   EXPECT_TRUE(tools::message_box::history().first().text.contains("replaces the edits"));
   EXPECT_EQ(customerDescription(), "Edited in the window");
}

TEST_F(GuiJsonReload, SaveExportsTheEditedModelThenReloads)
{
   openAndEdit();
   tools::message_box::pushScriptedAnswer(QMessageBox::Save);
   const QByteArray original = test_support::readAll(m_sModel);
   m_pWnd->doActReloadProject();
   const QString exported = QFileInfo(m_sModel).absolutePath() + "/shop-edited.json";
   ASSERT_TRUE(QFile::exists(exported));
   EXPECT_TRUE(test_support::readAll(exported).contains("Edited in the window"));
   // The opened model is untouched and read again.
   EXPECT_EQ(test_support::readAll(m_sModel), original);
   EXPECT_NE(customerDescription(), "Edited in the window");
   // The exported document is the one "tavrel dump" prints of the saved project.
   const test_support::cli_result dump = test_support::runTavrel({ "dump", exported });
   ASSERT_EQ(dump.code, 0) << dump.err.toStdString();
   EXPECT_EQ(dump.out.toUtf8(), test_support::readAll(exported));
}

TEST_F(GuiJsonReload, DiscardReloadsAndNoEditsMeansNoQuestion)
{
   openAndEdit();
   tools::message_box::pushScriptedAnswer(QMessageBox::Discard);
   m_pWnd->doActReloadProject();
   EXPECT_NE(customerDescription(), "Edited in the window");
   tools::message_box::clearHistory();
   m_pWnd->doActReloadProject();
   EXPECT_EQ(questions(), 0);
}

TEST_F(GuiJsonReload, ExportRefusesALinkAndLeavesItsTarget)
{
   openAndEdit();
   const QString target = m_tmp.filePath("target.json");
   ASSERT_TRUE(test_support::writeAll(target, "kept"));
   ASSERT_TRUE(QFile::link(target, m_tmp.filePath("link.json")));
   QString sError;
   EXPECT_FALSE(m_pWnd->exportModelJson(m_tmp.filePath("link.json"), sError));
   EXPECT_TRUE(sError.contains("symbolic link"));
   EXPECT_EQ(test_support::readAll(target), QByteArray("kept"));
   EXPECT_TRUE(m_pWnd->exportModelJson(m_tmp.filePath("model.json"), sError)) << sError.toStdString();
}

// Selecting another item with text typed but not applied asks first.
TEST_F(GuiJsonReload, SwitchingSelectionAsksForTypedText)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("s")).getValue());
   QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
   for (const QMessageBox::StandardButton answer : { QMessageBox::Discard, QMessageBox::Apply })
   {
      ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
      const QString before = customerDescription();
      pDescription->setFocus();
      pDescription->selectAll();
      QTest::keyClicks(pDescription, "Half typed");
      tools::message_box::clearHistory();
      tools::message_box::pushScriptedAnswer(answer);
      ASSERT_TRUE(m_pWnd->selectItem("shop::Product"));
      EXPECT_EQ(questions(), 1);
      EXPECT_EQ(customerDescription(), (answer == QMessageBox::Apply) ? QString("Half typed") : before);
      EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Product");
   }
   // Nothing typed: no question.
   tools::message_box::clearHistory();
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   EXPECT_EQ(questions(), 0);
}

// Closing the window with typed text asks: Cancel keeps it open, Apply stores the text.
TEST_F(GuiJsonReload, ClosingAsksForTypedText)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("c")).getValue());
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
   pDescription->setFocus();
   pDescription->selectAll();
   QTest::keyClicks(pDescription, "Typed before closing");
   tools::message_box::clearHistory();
   tools::message_box::pushScriptedAnswer(QMessageBox::Cancel);
   EXPECT_FALSE(m_pWnd->close());
   EXPECT_TRUE(m_pWnd->isVisible());
   EXPECT_EQ(questions(), 1);
   tools::message_box::pushScriptedAnswer(QMessageBox::Apply);
   EXPECT_TRUE(m_pWnd->close());
   EXPECT_EQ(customerDescription(), "Typed before closing");
}
