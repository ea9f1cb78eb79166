// Save, the questions before unsaved edits are dropped, the undo history, the search field and
// what the window remembers.

#include <QCloseEvent>
#include <QScreen>
#include <QSplitter>
#include <QTreeWidgetItemIterator>
#include <QUndoView>

#include <gtest/gtest.h>

#include "desktop/entity_dialog.h"
#include "storage/project_storage.h"
#include "test_gui_editing.h"

namespace {

using desktop::entity_dialog;

class GuiEditFile : public gui_test::GuiEditing
{
protected:
   // Changes shop::Customer's table name through the edit panel (one undo step, not saved).
   void editTable(const QString & sTable)
   {
      ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
      QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
      pTable->setFocus();
      pTable->selectAll();
      QTest::keyClicks(pTable, sTable);
      QTest::keyClick(pTable, Qt::Key_Return);
      ASSERT_EQ(entity("shop::Customer")->getTableName(), sTable);
   }

   QString storedTable() const
   {
      model::project_ptr p;
      if (! storage::project_storage::loadProject(context::ctx_project::getProjectFile(), p).getValue()) { return "<unreadable>"; }
      return p->getEntityByKey("shop::Customer")->getTableName();
   }

   int questions() const
   {
      int n = 0;
      for (const auto & r : tools::message_box::history()) { n += (r.kind == tools::message_box::kind_question) ? 1 : 0; }
      return n;
   }

   QStringList shownEntities() const
   {
      QStringList lst;
      for (QTreeWidgetItemIterator itr(m_pWnd->getModelTree()); * itr; ++itr)
      {
         const bool bShown = ! (* itr)->isHidden() && (! (* itr)->parent() || ! (* itr)->parent()->isHidden());
         if (bShown && ((* itr)->data(0, desktop::main_window::k_roleKind).toInt() == desktop::main_window::item_entity)) { lst.append((* itr)->data(0, desktop::main_window::k_roleKey).toString()); }
      }
      return lst;
   }
};

} // namespace

TEST_F(GuiEditFile, SaveWritesEveryEditAtOnceAndReopens)
{
   openShop("shop::Customer");
   editTable("t_client");
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtName", "Coupon"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_Insert);
   EXPECT_TRUE(m_pWnd->isWindowModified());
   EXPECT_TRUE(m_pWnd->windowTitle().contains("[*]"));
   EXPECT_EQ(storedTable(), "t_customer");

   key(m_pWnd->getModelTree(), Qt::Key_S, Qt::ControlModifier);
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_EQ(storedTable(), "t_client");
   // Undo after a save makes the window modified again.
   undo();
   EXPECT_TRUE(m_pWnd->isWindowModified());
   redo();
   EXPECT_FALSE(m_pWnd->isWindowModified());

   const QString sFile = context::ctx_project::getProjectFile();
   m_pWnd.reset();
   m_pWnd = std::make_unique<desktop::main_window>();
   m_pWnd->show();
   ASSERT_TRUE(m_pWnd->openProject(sFile).getValue());
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_client");
   EXPECT_TRUE(entity("shop::Coupon"));
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
}

TEST_F(GuiEditFile, ReloadWithUnsavedEditsAsks)
{
   openShop();
   // Reopened from its project file: a reload reads that file.
   ASSERT_TRUE(m_pWnd->openProject(context::ctx_project::getProjectFile()).getValue());
   editTable("t_client");
   tools::message_box::clearHistory();
   tools::message_box::pushScriptedAnswer(QMessageBox::Cancel);
   m_pWnd->doActReloadProject();
   EXPECT_EQ(questions(), 1);
   EXPECT_TRUE(tools::message_box::history().first().text.contains("not saved"));
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_client");

   tools::message_box::pushScriptedAnswer(QMessageBox::Discard);
   m_pWnd->doActReloadProject();
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_customer");
   EXPECT_FALSE(m_pWnd->isWindowModified());

   editTable("t_buyer");
   tools::message_box::pushScriptedAnswer(QMessageBox::Save);
   m_pWnd->doActReloadProject();
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_buyer");
   EXPECT_EQ(storedTable(), "t_buyer");

   // Nothing unsaved: no question.
   tools::message_box::clearHistory();
   m_pWnd->doActReloadProject();
   EXPECT_EQ(questions(), 0);
}

TEST_F(GuiEditFile, OpenAndCloseWithUnsavedEditsAsk)
{
   openShop();
   editTable("t_client");
   tools::message_box::clearHistory();
   tools::message_box::pushScriptedAnswer(QMessageBox::Cancel);
   m_pWnd->doActOpenProject();
   EXPECT_EQ(questions(), 1);
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_client");

   tools::message_box::pushScriptedAnswer(QMessageBox::Cancel);
   EXPECT_FALSE(m_pWnd->close());
   EXPECT_TRUE(m_pWnd->isVisible());
   EXPECT_EQ(questions(), 2);

   tools::message_box::pushScriptedAnswer(QMessageBox::Save);
   EXPECT_TRUE(m_pWnd->close());
   EXPECT_EQ(storedTable(), "t_client");
}

TEST_F(GuiEditFile, CloseCanDiscardTheEdits)
{
   openShop();
   editTable("t_client");
   tools::message_box::pushScriptedAnswer(QMessageBox::Discard);
   EXPECT_TRUE(m_pWnd->close());
   EXPECT_EQ(storedTable(), "t_customer");
}

TEST_F(GuiEditFile, UndoHistoryListsTheEditsAndJumpsBack)
{
   openShop();
   editTable("t_one");
   editTable("t_two");
   QUndoView * pView = m_pWnd->findChild<QUndoView *>("m_viewUndo");
   ASSERT_TRUE(pView);
   // The opened state, then one row per edit.
   EXPECT_EQ(pView->model()->rowCount(), 3);
   EXPECT_EQ(pView->model()->index(2, 0).data().toString(), "Edit shop::Customer");
   pView->setCurrentIndex(pView->model()->index(0, 0));
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_customer");
   EXPECT_FALSE(m_pWnd->isWindowModified());
}

TEST_F(GuiEditFile, SearchFieldFiltersByNamePropertyTableAndColumn)
{
   openShop();
   QLineEdit * pFilter = m_pWnd->getFilterField();
   ASSERT_TRUE(pFilter);
   const QStringList lstAll = shownEntities();
   EXPECT_EQ(lstAll.size(), 8);
   key(m_pWnd->getModelTree(), Qt::Key_F, Qt::ControlModifier);
   EXPECT_TRUE(pFilter->hasFocus());
   QTest::keyClicks(pFilter, "avatar");   // a column
   EXPECT_EQ(shownEntities(), QStringList({ "shop::CustomerProfile" }));
   pFilter->clear();
   QTest::keyClicks(pFilter, "t_product");   // a table
   EXPECT_EQ(shownEntities(), QStringList({ "shop::Product" }));
   pFilter->clear();
   QTest::keyClicks(pFilter, "birth_date");   // a property
   EXPECT_EQ(shownEntities(), QStringList({ "shop::Customer" }));
   pFilter->clear();
   EXPECT_EQ(shownEntities(), lstAll);
}

TEST_F(GuiEditFile, WindowRemembersItsSizeSplitterAndSelection)
{
   openShop("shop::Product");
   const QString sModel = m_tmp.filePath("e/shop.json");
   // A size the screen holds (a larger one is fitted to the screen when the window opens).
   const QSize size = m_pWnd->screen()->availableGeometry().size() - QSize(100, 100);
   m_pWnd->resize(size);
   QSplitter * pSplitter = m_pWnd->findChild<QSplitter *>("m_splitterModel");
   ASSERT_TRUE(pSplitter);
   pSplitter->setSizes({ 150, 400 });
   const QList<int> lstSizes = pSplitter->sizes();
   EXPECT_TRUE(m_pWnd->close());

   m_pWnd = std::make_unique<desktop::main_window>();
   m_pWnd->show();
   EXPECT_EQ(m_pWnd->size(), size);
   EXPECT_EQ(m_pWnd->findChild<QSplitter *>("m_splitterModel")->sizes(), lstSizes);
   ASSERT_TRUE(m_pWnd->openProject(sModel).getValue());
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Product");
}
