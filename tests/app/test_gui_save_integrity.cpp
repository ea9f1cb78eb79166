// The desktop host never writes a project file its readers refuse: deleting an item others name
// takes the references along (or nothing), and Save refuses a model that breaks a reader's rule.
// Each case ends with the command-line host reading the file Save left.

#include <QTreeWidget>

#include <gtest/gtest.h>

#include "desktop/entity_dialog.h"
#include "desktop/enumeration_dialog.h"
#include "test_gui_editing.h"

namespace {

using desktop::entity_dialog;
using desktop::enumeration_dialog;

class GuiSaveIntegrity : public gui_test::GuiEditing
{
protected:
   void save() { key(m_pWnd->getModelTree(), Qt::Key_S, Qt::ControlModifier); }

   static QString projectFile() { return context::ctx_project::getProjectFile(); }

   // `tavrel dump` of the project file: its exit code, and the reason when it failed.
   static testing::AssertionResult dumpReads(const QString & sFile)
   {
      const test_support::cli_result r = test_support::runTavrel({ "dump", sFile });
      if (r.code == 0) { return testing::AssertionSuccess(); }
      return testing::AssertionFailure() << "tavrel dump exit " << r.code << ": " << r.err.toStdString();
   }

   QString lastQuestion() const
   {
      const QList<tools::message_box::record> lst = tools::message_box::history();
      for (qsizetype i = lst.size() - 1; i >= 0; --i) { if (lst.at(i).kind == tools::message_box::kind_question) { return lst.at(i).text; } }
      return QString();
   }

   // Picks a parent for the selected entity in its editor (F2).
   void setParent(const QString & sKey, const QString & sParent)
   {
      ASSERT_TRUE(m_pWnd->selectItem(sKey));
      onNextDialog<entity_dialog>([sParent](entity_dialog * d) { pick(d, "m_cboParent", sParent); ok(d); });
      key(m_pWnd->getModelTree(), Qt::Key_F2);
      ASSERT_EQ(entity(sKey)->getParentKey(), sParent);
   }
};

} // namespace

TEST_F(GuiSaveIntegrity, DeletingAnEntityARelationAimsAtAsksAndCancelKeepsIt)
{
   openShop("shop::CustomerProfile");
   // Unattended, the question gets its default button: Cancel.
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   ASSERT_TRUE(entity("shop::CustomerProfile"));
   EXPECT_TRUE(lastQuestion().contains("shop::Customer::profile (relation)")) << lastQuestion().toStdString();
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
   EXPECT_FALSE(m_pWnd->isWindowModified());
}

TEST_F(GuiSaveIntegrity, DeletedRelationTargetTakesItsRelationsAlongAndTheSavedFileReads)
{
   openShop("shop::sales::Order");
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   ASSERT_FALSE(entity("shop::sales::Order"));
   const QString sQuestion = lastQuestion();
   for (const char * sz : { "shop::Customer::orders", "shop::sales::OrderItem::order", "shop::sales::Invoice::order" })
   { EXPECT_TRUE(sQuestion.contains(sz)) << sz; }
   EXPECT_FALSE(entity("shop::Customer")->getPropertyByName("orders"));
   EXPECT_FALSE(entity("shop::sales::Invoice")->getPropertyByName("order"));
   EXPECT_TRUE(entity("shop::sales::Invoice")->getPropertyByName("amount"));
   EXPECT_EQ(messagesWith("Schema error"), 0);
   save();
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_TRUE(dumpReads(projectFile()));

   // One undo step puts the entity and its relations back.
   undo();
   ASSERT_TRUE(entity("shop::sales::Order"));
   ASSERT_TRUE(entity("shop::Customer")->getPropertyByName("orders"));
   EXPECT_EQ(entity("shop::Customer")->getPropertyByName("orders")->getRelation()->getEntityTarget(), entity("shop::sales::Order"));
   EXPECT_TRUE(entity("shop::sales::Invoice")->getPropertyByName("order"));
}

TEST_F(GuiSaveIntegrity, DeletedParentLeavesItsDerivedEntitiesWithoutParentAndTheSavedFileReads)
{
   openShop("shop::Base");
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   ASSERT_FALSE(entity("shop::Base"));
   EXPECT_TRUE(lastQuestion().contains("shop::Customer (derived entity)")) << lastQuestion().toStdString();
   EXPECT_TRUE(entity("shop::Customer")->getParentKey().isEmpty());
   EXPECT_TRUE(entity("shop::sales::OrderItem")->getParentKey().isEmpty());
   save();
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_TRUE(dumpReads(projectFile()));
}

TEST_F(GuiSaveIntegrity, DeletedEnumerationTakesItsPropertiesAlongAndTheSavedFileReads)
{
   openShop("shop::ProductStatus");
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   ASSERT_FALSE(enumeration("shop::ProductStatus"));
   EXPECT_TRUE(lastQuestion().contains("shop::Product::status (property)")) << lastQuestion().toStdString();
   EXPECT_FALSE(entity("shop::Product")->getPropertyByName("status"));
   EXPECT_TRUE(entity("shop::sales::Order")->getPropertyByName("status"));
   save();
   EXPECT_TRUE(dumpReads(projectFile()));
}

TEST_F(GuiSaveIntegrity, DeletingAnEnumerationOthersUseIsCancelledByDefault)
{
   openShop("shop::sales::OrderStatus");
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   EXPECT_TRUE(enumeration("shop::sales::OrderStatus"));
   EXPECT_TRUE(entity("shop::sales::Order")->getPropertyByName("status"));
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
}

TEST_F(GuiSaveIntegrity, RepeatedKeysAreRefusedByTheEditorsAndTheSavedFileReads)
{
   openShop("shop::sales::Invoice");
   onNextDialog<entity_dialog>([](entity_dialog * d) {
      type(d, "m_txtName", "Order");
      EXPECT_FALSE(okButton(d)->isEnabled());
      // The name is framed with the reason, like any other field's problem.
      EXPECT_TRUE(problemOf(d, "m_txtName").contains("already used")) << problemOf(d, "m_txtName").toStdString();
      QTest::keyClick(d, Qt::Key_Return);
      EXPECT_TRUE(d->isVisible());
      d->reject();
   });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   onNextDialog<enumeration_dialog>([](enumeration_dialog * d) {
      type(d, "m_txtNamespace", "shop");
      type(d, "m_txtName", "Customer");
      EXPECT_FALSE(okButton(d)->isEnabled());
      EXPECT_TRUE(problemOf(d, "m_txtName").contains("already used")) << problemOf(d, "m_txtName").toStdString();
      d->reject();
   });
   m_pWnd->doActNewEnumeration();
   EXPECT_TRUE(entity("shop::sales::Invoice"));
   save();
   EXPECT_TRUE(dumpReads(projectFile()));
}

TEST_F(GuiSaveIntegrity, ParentCycleIsNotSavedAndTheFileStaysAsItWas)
{
   openShop("shop::Customer");
   save();
   const QByteArray before = test_support::readAll(projectFile());
   ASSERT_FALSE(before.isEmpty());
   setParent("shop::Base", "shop::Customer");
   save();
   EXPECT_TRUE(m_pWnd->isWindowModified());
   EXPECT_GE(messagesWith("Not saved : Entity 'shop::Base' : inheritance cycle"), 1);
   EXPECT_EQ(test_support::readAll(projectFile()), before);
   EXPECT_TRUE(dumpReads(projectFile()));

   // Quitting offers Save first (its default): refused, the window stays open.
   tools::message_box::clearHistory();
   key(m_pWnd->getModelTree(), Qt::Key_Q, Qt::ControlModifier);
   EXPECT_TRUE(m_pWnd->isVisible());
   EXPECT_EQ(test_support::readAll(projectFile()), before);

   // Undone, the model saves again.
   undo();
   save();
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_TRUE(dumpReads(projectFile()));
}

TEST_F(GuiSaveIntegrity, RenamedParentAndTargetsStillSaveAFileThatReads)
{
   openShop("shop::Base");
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtName", "Root"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   ASSERT_TRUE(entity("shop::Root"));
   EXPECT_EQ(entity("shop::Customer")->getParentKey(), "shop::Root");
   save();
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_TRUE(dumpReads(projectFile()));
}

TEST_F(GuiSaveIntegrity, AfterADeleteTheSelectionStaysInTheNamespace)
{
   openShop("shop::Product");
   tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
   key(m_pWnd->getModelTree(), Qt::Key_Delete);
   ASSERT_FALSE(entity("shop::Product"));
   // The last entity of its namespace: the one above it, not the next namespace's first.
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Category");
   // Undone, the deleted entity is selected again.
   undo();
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Product");
}
