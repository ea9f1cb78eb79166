// Undo steps keep only the items an edit replaced and the window re-checks only those: a series
// of edits undone and redone gives back each model exactly, and the cross-item errors the whole
// check finds are listed after every step.

#include <QDockWidget>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTextEdit>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "desktop/entity_dialog.h"
#include "storage/project_storage.h"
#include "test_gui_editing.h"

namespace {

using desktop::entity_dialog;

class GuiEditUndo : public gui_test::GuiEditing
{
protected:
   QByteArray dump() const { return storage::project_storage::toJson(* m_pWnd->getProject()); }

   // Every problem of the whole schema check is in the message area.
   void expectProblemsListed()
   {
      for (const auto & e : m_pWnd->getProject()->checkSchema())
      {
         EXPECT_GE(messagesWith(e.getMessage()), 1) << e.getMessage().toStdString();
      }
   }
};

} // namespace

TEST_F(GuiEditUndo, EveryStepUndoesAndRedoesToTheSameModel)
{
   openShop("shop::Customer");
   QList<QByteArray> lstDumps { dump() };
   editDescription("shop::Customer", "People who buy");
   lstDumps.append(dump());
   // A property deleted from the property table.
   m_pWnd->getPropertyTable()->setCurrentItem(m_pWnd->getPropertyTable()->topLevelItem(1));
   key(m_pWnd->getPropertyTable(), Qt::Key_Delete);
   lstDumps.append(dump());
   // A rename that takes the relation naming it along, in another entity.
   ASSERT_TRUE(m_pWnd->selectItem("shop::CustomerProfile"));
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtName", "Profile"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   lstDumps.append(dump());
   // An entity in the middle of the list deleted, with the relation to it in another entity.
   ASSERT_TRUE(m_pWnd->selectItem("shop::Profile"));
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   lstDumps.append(dump());
   EXPECT_FALSE(entity("shop::Customer")->getPropertyByName("profile"));
   expectProblemsListed();
   // A new entity at the end.
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtName", "Coupon"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_Insert);
   lstDumps.append(dump());
   ASSERT_EQ(m_pWnd->getUndoStack()->count(), lstDumps.size() - 1);
   for (int i = 1; i < lstDumps.size(); ++i) { EXPECT_NE(lstDumps.at(i), lstDumps.at(i - 1)) << "step " << i << " changed nothing"; }

   for (qsizetype i = lstDumps.size() - 2; i >= 0; --i)
   {
      undo();
      EXPECT_EQ(dump(), lstDumps.at(i)) << "undone to step " << i;
      expectProblemsListed();
   }
   for (qsizetype i = 1; i < lstDumps.size(); ++i)
   {
      redo();
      EXPECT_EQ(dump(), lstDumps.at(i)) << "redone to step " << i;
      expectProblemsListed();
   }
}

TEST_F(GuiEditUndo, CrossItemErrorsOfIncrementalEditsAreListedAndGo)
{
   openShop("shop::Base");
   editDescription("shop::Base", "Every row");
   // A parent cycle made by an edit of an entity whose problems were kept until now.
   onNextDialog<entity_dialog>([](entity_dialog * d) { pick(d, "m_cboParent", "shop::Customer"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   EXPECT_GE(messagesWith("inheritance cycle"), 1);
   expectProblemsListed();
   // Two keys that flatten to one file name.
   ASSERT_TRUE(m_pWnd->selectItem("shop::Category"));
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtNamespace", QString()); type(d, "m_txtName", "shop_Customer"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   EXPECT_GE(messagesWith("give the same generated files"), 1);
   expectProblemsListed();
   undo();
   undo();
   EXPECT_TRUE(m_pWnd->getProject()->checkSchema().isEmpty());
   EXPECT_GE(messagesWith("The model has no schema error"), 1);
}

TEST_F(GuiEditUndo, PreviewIsMadeOnceForEachStep)
{
   openShop("shop::Customer");
   ASSERT_TRUE(m_pWnd->getPreviewDock());
   QTextEdit * pHeader = m_pWnd->getPreviewDock()->findChild<QTextEdit *>("m_txtCppTemplateHeader");
   ASSERT_TRUE(pHeader);
   QSignalSpy spySelect(m_pWnd.get(), & view::main_wnd::onSelectEntity);
   QSignalSpy spyUpdate(m_pWnd.get(), & view::main_wnd::onUpdateEntity);
   editDescription("shop::Customer", "People who buy");
   EXPECT_TRUE(pHeader->toPlainText().contains("People who buy"));
   EXPECT_EQ(spySelect.count() + spyUpdate.count(), 1);
   undo();
   EXPECT_FALSE(pHeader->toPlainText().contains("People who buy"));
   EXPECT_EQ(spySelect.count() + spyUpdate.count(), 2);
   // A step that selects another entity tells the new selection, once.
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   EXPECT_EQ(spySelect.count() + spyUpdate.count(), 3);
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(spySelect.last().at(0).value<model::entity_ptr>(), m_pWnd->getSelectedEntity());
}
