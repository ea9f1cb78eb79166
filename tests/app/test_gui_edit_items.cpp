// Creating, renaming, moving and deleting entities and enumerations in the desktop host, from
// the keyboard, with undo and redo of each.

#include <QTreeWidget>

#include <gtest/gtest.h>

#include "desktop/entity_dialog.h"
#include "desktop/enumeration_dialog.h"
#include "test_gui_editing.h"

namespace {

using desktop::entity_dialog;
using desktop::enumeration_dialog;

class GuiEditItems : public gui_test::GuiEditing { };

} // namespace

TEST_F(GuiEditItems, InsertCreatesAnEntityThenUndoAndRedo)
{
   openShop("shop::Customer");
   const qsizetype iBefore = m_pWnd->getProject()->getListOfAllEntities()->size();
   EXPECT_FALSE(m_pWnd->isWindowModified());
   onNextDialog<entity_dialog>([](entity_dialog * d) {
      type(d, "m_txtName", "Coupon");
      type(d, "m_txtTable", "t_coupon");
      check(d, "m_chkBeforeInsert", true);
      addRow(d, "m_tblMeta", "ui_icon", "coupon.png");
      ok(d);
   });
   key(m_pWnd->getModelTree(), Qt::Key_Insert);
   model::entity_ptr p = entity("shop::Coupon");
   ASSERT_TRUE(p);
   EXPECT_EQ(p->getTableName(), "t_coupon");
   EXPECT_TRUE(p->isTriggerBeforeInsert());
   EXPECT_FALSE(p->isTriggerAfterInsert());
   EXPECT_EQ(p->getMetaData("ui_icon").toString(), "coupon.png");
   // A stored id after the highest in use, so the export writes it.
   EXPECT_EQ(p->getId(), iBefore + 1);
   EXPECT_EQ(m_pWnd->getSelectedEntity(), p);
   EXPECT_TRUE(m_pWnd->isWindowModified());
   EXPECT_EQ(m_pWnd->getUndoStack()->undoText(), "New entity shop::Coupon");

   undo();
   EXPECT_FALSE(entity("shop::Coupon"));
   EXPECT_EQ(m_pWnd->getProject()->getListOfAllEntities()->size(), iBefore);
   EXPECT_FALSE(m_pWnd->isWindowModified());
   redo();
   ASSERT_TRUE(entity("shop::Coupon"));
   EXPECT_TRUE(entity("shop::Coupon")->isTriggerBeforeInsert());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Coupon");
}

TEST_F(GuiEditItems, CancelledEditorChangesNothing)
{
   openShop("shop::Customer");
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtName", "Nobody"); d->reject(); });
   m_pWnd->doActNewEntity();
   EXPECT_FALSE(entity("shop::Nobody"));
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
   EXPECT_FALSE(m_pWnd->isWindowModified());
}

TEST_F(GuiEditItems, F2RenamesAndMovesAnEntityAndItsReferencesFollow)
{
   openShop("shop::CustomerProfile");
   onNextDialog<entity_dialog>([](entity_dialog * d) {
      type(d, "m_txtName", "Profile");
      type(d, "m_txtNamespace", "shop::people");
      ok(d);
   });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   ASSERT_TRUE(entity("shop::people::Profile"));
   EXPECT_FALSE(entity("shop::CustomerProfile"));
   const model::property_ptr pProfile = entity("shop::Customer")->getPropertyByName("profile");
   EXPECT_EQ(pProfile->getRelation()->getTargetKey(), "shop::people::Profile");
   EXPECT_EQ(pProfile->getRelation()->getEntityTarget(), entity("shop::people::Profile"));
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::people::Profile");
   // The tree shows it under its new namespace.
   const QList<QTreeWidgetItem *> lst = m_pWnd->getModelTree()->findItems("shop::people", Qt::MatchExactly | Qt::MatchRecursive);
   ASSERT_EQ(lst.size(), 1);
   EXPECT_EQ(lst.first()->child(0)->text(0), "Profile");

   undo();
   ASSERT_TRUE(entity("shop::CustomerProfile"));
   EXPECT_EQ(entity("shop::Customer")->getPropertyByName("profile")->getRelation()->getTargetKey(), "shop::CustomerProfile");
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::CustomerProfile");
   redo();
   EXPECT_TRUE(entity("shop::people::Profile"));
}

TEST_F(GuiEditItems, DeleteKeyRemovesAnEntityWithTheRelationsToIt)
{
   openShop("shop::CustomerProfile");
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   EXPECT_FALSE(entity("shop::CustomerProfile"));
   // The relation aiming at it went with it: nothing dangles.
   EXPECT_FALSE(entity("shop::Customer")->getPropertyByName("profile"));
   EXPECT_EQ(messagesWith("Schema error"), 0);
   EXPECT_EQ(m_pWnd->getUndoStack()->undoText(), "Delete entity shop::CustomerProfile");
   undo();
   ASSERT_TRUE(entity("shop::CustomerProfile"));
   EXPECT_EQ(entity("shop::Customer")->getPropertyByName("profile")->getRelation()->getEntityTarget(), entity("shop::CustomerProfile"));
   redo();
   EXPECT_FALSE(entity("shop::CustomerProfile"));
   EXPECT_FALSE(entity("shop::Customer")->getPropertyByName("profile"));
}

TEST_F(GuiEditItems, DeleteInATextFieldStaysTheFieldsKey)
{
   openShop("shop::CustomerProfile");
   QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
   pTable->setFocus();
   pTable->setCursorPosition(0);
   QTest::keyClick(pTable, Qt::Key_Delete);
   EXPECT_EQ(pTable->text(), "_customer_profile");
   EXPECT_TRUE(entity("shop::CustomerProfile"));
}

TEST_F(GuiEditItems, EnumerationWithValuesIsCreatedRenamedAndDeleted)
{
   openShop("shop::ProductStatus");
   onNextDialog<enumeration_dialog>([](enumeration_dialog * d) {
      type(d, "m_txtName", "Colour");
      addRow(d, "m_tblValues", "Red", "1");
      addRow(d, "m_tblValues", "Green", "2");
      ok(d);
   });
   // Insert on an enumeration makes an enumeration, in its namespace.
   key(m_pWnd->getModelTree(), Qt::Key_Insert);
   model::enumeration_ptr pColour = enumeration("shop::Colour");
   ASSERT_TRUE(pColour);
   ASSERT_EQ(pColour->getAllKeyValue().size(), 2);
   EXPECT_EQ(pColour->getAllKeyValue().getKeyByIndex(1), "Green");
   EXPECT_EQ(pColour->getAllKeyValue().getByIndex(1), "2");

   // A rename takes the properties naming it along, their type text too.
   ASSERT_TRUE(m_pWnd->selectItem("shop::ProductStatus"));
   onNextDialog<enumeration_dialog>([](enumeration_dialog * d) { type(d, "m_txtName", "ArticleStatus"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   const model::property_ptr pStatus = entity("shop::Product")->getPropertyByName("status");
   EXPECT_EQ(pStatus->getEnumerationKey(), "shop::ArticleStatus");
   EXPECT_EQ(pStatus->getTypeDesc(false, false), "shop::ArticleStatus::enum_ArticleStatus");

   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   EXPECT_FALSE(enumeration("shop::ArticleStatus"));
   EXPECT_FALSE(entity("shop::Product")->getPropertyByName("status"));

   undo();
   EXPECT_TRUE(enumeration("shop::ArticleStatus"));
   EXPECT_TRUE(entity("shop::Product")->getPropertyByName("status"));
   undo();
   EXPECT_TRUE(enumeration("shop::ProductStatus"));
   EXPECT_EQ(entity("shop::Product")->getPropertyByName("status")->getTypeDesc(false, false), "shop::ProductStatus::enum_ProductStatus");
   undo();
   EXPECT_FALSE(enumeration("shop::Colour"));
   redo();
   EXPECT_TRUE(enumeration("shop::Colour"));
}

TEST_F(GuiEditItems, EditorsMarkInvalidFieldsWhileTypingAndCannotApply)
{
   openShop("shop::Customer");
   bool bChecked = false;
   onNextDialog<entity_dialog>([&bChecked](entity_dialog * d) {
      type(d, "m_txtTable", "t order; drop");
      EXPECT_TRUE(problemOf(d, "m_txtTable").contains("';'")) << problemOf(d, "m_txtTable").toStdString();
      EXPECT_FALSE(okButton(d)->isEnabled());
      EXPECT_TRUE(d->getProblemLabel()->text().contains("Table")) << d->getProblemLabel()->text().toStdString();
      // Enter does not apply either.
      QTest::keyClick(d->findChild<QLineEdit *>("m_txtTable"), Qt::Key_Return);
      EXPECT_TRUE(d->isVisible());
      type(d, "m_txtTable", "t_client");
      EXPECT_TRUE(problemOf(d, "m_txtTable").isEmpty());
      EXPECT_TRUE(okButton(d)->isEnabled());
      type(d, "m_txtName", "class");
      EXPECT_TRUE(problemOf(d, "m_txtName").contains("keyword")) << problemOf(d, "m_txtName").toStdString();
      // A key another item has.
      type(d, "m_txtName", "Product");
      EXPECT_FALSE(okButton(d)->isEnabled());
      EXPECT_TRUE(d->getProblemLabel()->text().contains("already used"));
      type(d, "m_txtName", "Customer");
      type(d, "m_txtDescription", "ends */ here");
      EXPECT_FALSE(problemOf(d, "m_txtDescription").isEmpty());
      bChecked = true;
      d->reject();
   });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   EXPECT_TRUE(bChecked);
   EXPECT_EQ(entity("shop::Customer")->getTableName(), "t_customer");
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
}

TEST_F(GuiEditItems, ParentCycleIsListedAndUndone)
{
   openShop("shop::Base");
   onNextDialog<entity_dialog>([](entity_dialog * d) { pick(d, "m_cboParent", "shop::Customer"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   EXPECT_EQ(entity("shop::Base")->getParentKey(), "shop::Customer");
   EXPECT_GE(messagesWith("inheritance cycle"), 1);
   undo();
   EXPECT_TRUE(entity("shop::Base")->getParentKey().isEmpty());
}
