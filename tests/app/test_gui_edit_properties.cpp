// The property editor of the desktop host: data members, enumeration members and relations,
// created, edited and deleted from the property table's keys, with undo and redo of each.

#include <QDir>
#include <QGroupBox>
#include <QTabWidget>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "desktop/entity_dialog.h"
#include "desktop/property_dialog.h"
#include "model/property_type.h"
#include "test_gui_editing.h"

namespace {

using desktop::property_dialog;

class GuiEditProperties : public gui_test::GuiEditing
{
protected:
   QTreeWidget * table() const { return m_pWnd->getPropertyTable(); }

   // Makes the row of that property the table's current one.
   void selectProperty(const QString & sName)
   {
      for (int i = 0; i < table()->topLevelItemCount(); ++i)
      {
         if (table()->topLevelItem(i)->text(0) == sName) { table()->setCurrentItem(table()->topLevelItem(i)); return; }
      }
      ADD_FAILURE() << "no property " << sName.toStdString();
   }

   model::property_ptr property(const QString & sEntity, const QString & sName) const
   {
      model::entity_ptr p = entity(sEntity);
      return (p ? p->getPropertyByName(sName) : model::property_ptr());
   }
};

} // namespace

TEST_F(GuiEditProperties, InsertAddsADataMemberWithEveryField)
{
   openShop("shop::Customer");
   onNextDialog<property_dialog>([](property_dialog * d) {
      type(d, "m_txtName", "loyalty_points");
      pick(d, "m_cboType", "int");
      pick(d, "m_cboDecoration", "std::optional<T>");
      type(d, "m_txtDefault", "0");
      type(d, "m_txtColumn", "points");
      type(d, "m_txtDescription", "Points collected");
      pick(d, "m_cboAccess", "private");
      check(d, "m_chkAllowNull", false);
      check(d, "m_chkIndex", true);
      type(d, "m_txtMinValue", "0");
      type(d, "m_txtMaxValue", "100000");
      type(d, "m_txtForceSqlType", "INTEGER");
      addRow(d, "m_tblMeta", "ui_label", "Points");
      ok(d);
   });
   key(table(), Qt::Key_Insert);
   model::property_ptr p = property("shop::Customer", "loyalty_points");
   ASSERT_TRUE(p);
   EXPECT_EQ(p->getTypeDesc(false, false), "std::optional<int>");
   EXPECT_EQ(p->getType()->getDefaultValue(), "0");
   EXPECT_EQ(p->getColumnName(), "points");
   EXPECT_EQ(p->getDescription(), "Points collected");
   EXPECT_EQ(p->getAccessibility(), model::property::access_private);
   EXPECT_FALSE(p->getAllowNull());
   EXPECT_TRUE(p->isIndex());
   EXPECT_EQ(p->getMinValue().toString(), "0");
   EXPECT_EQ(p->getMaxValue().toString(), "100000");
   EXPECT_EQ(p->getForceSqlType(), "INTEGER");
   EXPECT_EQ(p->getMetaData("ui_label").toString(), "Points");
   EXPECT_GT(p->getId(), 0);
   // The table shows it, selected.
   ASSERT_TRUE(table()->currentItem());
   EXPECT_EQ(table()->currentItem()->text(0), "loyalty_points");
   EXPECT_EQ(table()->currentItem()->text(2), "points");

   undo();
   EXPECT_FALSE(property("shop::Customer", "loyalty_points"));
   redo();
   ASSERT_TRUE(property("shop::Customer", "loyalty_points"));
   EXPECT_EQ(property("shop::Customer", "loyalty_points")->getColumnName(), "points");
}

TEST_F(GuiEditProperties, RelationEditorSetsKindTargetForeignKeyAndExtraTable)
{
   openShop("shop::Customer");
   onNextDialog<property_dialog>([](property_dialog * d) {
      type(d, "m_txtName", "favourites");
      d->findChild<QTabWidget *>("m_tabProperty")->setCurrentIndex(1);
      d->findChild<QGroupBox *>("m_grpRelation")->setChecked(true);
      // No target yet: cannot apply.
      EXPECT_FALSE(okButton(d)->isEnabled());
      pick(d, "m_cboKind", "many-to-many");
      pick(d, "m_cboTarget", "shop::Product");
      type(d, "m_txtForeignKey", "customer_id");
      type(d, "m_txtOwner", "product_id");
      type(d, "m_txtExtraTable", "t_favourite; drop");
      EXPECT_FALSE(problemOf(d, "m_txtExtraTable").isEmpty());
      type(d, "m_txtExtraTable", "t_favourite");
      ok(d);
   });
   key(table(), Qt::Key_Insert);
   model::property_ptr p = property("shop::Customer", "favourites");
   ASSERT_TRUE(p && p->getRelation());
   EXPECT_EQ(p->getRelation()->getType(), model::relationship::many_to_many);
   EXPECT_EQ(p->getRelation()->getTargetKey(), "shop::Product");
   EXPECT_EQ(p->getRelation()->getEntityTarget(), entity("shop::Product"));
   EXPECT_EQ(p->getRelation()->getForeignKey(), "customer_id");
   EXPECT_EQ(p->getRelation()->getForeignKeyOwner(), "product_id");
   EXPECT_EQ(p->getRelation()->getExtraTable(), "t_favourite");
   EXPECT_FALSE(p->getType());

   // F2 edits the relation: another kind and target.
   selectProperty("favourites");
   onNextDialog<property_dialog>([](property_dialog * d) {
      pick(d, "m_cboKind", "one-to-many");
      pick(d, "m_cboTarget", "shop::sales::Order");
      ok(d);
   });
   key(table(), Qt::Key_F2);
   EXPECT_EQ(property("shop::Customer", "favourites")->getRelation()->getType(), model::relationship::one_to_many);
   EXPECT_EQ(property("shop::Customer", "favourites")->getRelation()->getTargetKey(), "shop::sales::Order");
   undo();
   EXPECT_EQ(property("shop::Customer", "favourites")->getRelation()->getTargetKey(), "shop::Product");
   redo();
   EXPECT_EQ(property("shop::Customer", "favourites")->getRelation()->getTargetKey(), "shop::sales::Order");
}

TEST_F(GuiEditProperties, EnumerationPickerAndRenameAndDelete)
{
   openShop("shop::Customer");
   selectProperty("vip");
   onNextDialog<property_dialog>([](property_dialog * d) {
      type(d, "m_txtName", "status");
      pick(d, "m_cboType", "");
      pick(d, "m_cboEnumeration", "shop::ProductStatus");
      type(d, "m_txtDefault", "");
      ok(d);
   });
   key(table(), Qt::Key_F2);
   EXPECT_FALSE(property("shop::Customer", "vip"));
   model::property_ptr p = property("shop::Customer", "status");
   ASSERT_TRUE(p);
   EXPECT_EQ(p->getEnumerationKey(), "shop::ProductStatus");
   EXPECT_EQ(p->getTypeDesc(false, false), "shop::ProductStatus::enum_ProductStatus");
   EXPECT_EQ(m_pWnd->getUndoStack()->undoText(), "Edit property shop::Customer::status");

   selectProperty("status");
   key(table(), Qt::Key_Delete);
   EXPECT_FALSE(property("shop::Customer", "status"));
   undo();
   EXPECT_TRUE(property("shop::Customer", "status"));
   undo();
   ASSERT_TRUE(property("shop::Customer", "vip"));
   EXPECT_EQ(property("shop::Customer", "vip")->getTypeDesc(false, false), "bool");
}

TEST_F(GuiEditProperties, FieldsAreMarkedByTheRulesOfWhereTheyAreWritten)
{
   openShop("shop::Customer");
   selectProperty("greeting");
   bool bChecked = false;
   onNextDialog<property_dialog>([&bChecked](property_dialog * d) {
      type(d, "m_txtName", "name");
      EXPECT_TRUE(d->getProblemLabel()->text().contains("already has a property 'name'"));
      EXPECT_FALSE(okButton(d)->isEnabled());
      type(d, "m_txtName", "greeting");
      // A text default is escaped: quotes are fine. As code, no literal may stay open.
      type(d, "m_txtDefault", "it's");
      EXPECT_TRUE(problemOf(d, "m_txtDefault").isEmpty());
      pick(d, "m_cboType", "int");
      EXPECT_FALSE(problemOf(d, "m_txtDefault").isEmpty());
      type(d, "m_txtDefault", "1 + 2");
      EXPECT_TRUE(problemOf(d, "m_txtDefault").isEmpty());
      type(d, "m_txtColumn", "a\"b");
      EXPECT_TRUE(problemOf(d, "m_txtColumn").contains("double quote")) << problemOf(d, "m_txtColumn").toStdString();
      type(d, "m_txtGetMethod", "return 1; } void f() {");
      EXPECT_FALSE(problemOf(d, "m_txtGetMethod").isEmpty());
      type(d, "m_txtMaxLength", "12; x");
      EXPECT_FALSE(problemOf(d, "m_txtMaxLength").isEmpty());
      // A type is a C++ type, a forced SQL type an SQL type: no statement rides along.
      pick(d, "m_cboType", "int; } void evil() { system(\"id\"); } struct Z { int");
      EXPECT_FALSE(problemOf(d, "m_cboType").isEmpty());
      pick(d, "m_cboType", "std::pair<long, QString>");
      EXPECT_TRUE(problemOf(d, "m_cboType").isEmpty()) << problemOf(d, "m_cboType").toStdString();
      type(d, "m_txtForceSqlType", "INT, PRIMARY KEY (id)); DROP TABLE victim; CREATE TABLE zz (id INT");
      EXPECT_FALSE(problemOf(d, "m_txtForceSqlType").isEmpty());
      type(d, "m_txtForceSqlType", "NUMERIC(10, 2)");
      EXPECT_TRUE(problemOf(d, "m_txtForceSqlType").isEmpty()) << problemOf(d, "m_txtForceSqlType").toStdString();
      EXPECT_FALSE(okButton(d)->isEnabled());
      bChecked = true;
      d->reject();
   });
   key(table(), Qt::Key_F2);
   EXPECT_TRUE(bChecked);
   EXPECT_EQ(m_pWnd->getUndoStack()->count(), 0);
}

// A column renamed in the editor: the indexes and foreign keys import-db kept of the table (meta
// data) follow it, in its entity and in those whose keys point at it; so do the keys that point
// at a renamed table; undo puts them back.
TEST_F(GuiEditProperties, RenamedColumnIsFollowedByTheKeptIndexesAndKeys)
{
   const QString sModel = m_tmp.filePath("k/depot.json");
   QDir().mkpath(m_tmp.filePath("k"));
   ASSERT_TRUE(test_support::writeAll(sModel, R"({"name": "DEPOT", "entities": [
      {"id": 1, "name": "Parcel", "namespace": "depot", "table": "parcel",
       "meta": {"TAVREL_SQL_INDEXES": "[{\"columns\":[\"code\",\"weight\"],\"lengths\":[0,0],\"unique\":true}]"},
       "properties": [{"id": 1, "name": "id", "type": "long", "primary_key": true},
                      {"id": 2, "name": "code", "type": "QString"}, {"id": 3, "name": "weight", "type": "int"}]},
      {"id": 2, "name": "Label", "namespace": "depot", "table": "label",
       "meta": {"TAVREL_SQL_FOREIGN_KEYS": "[{\"column\":\"parcel_code\",\"table\":\"parcel\",\"target\":\"code\"}]"},
       "properties": [{"id": 4, "name": "id", "type": "long", "primary_key": true}, {"id": 5, "name": "parcel_code", "type": "QString"}]},
      {"id": 3, "name": "Shelf", "namespace": "depot", "table": "shelf",
       "meta": {"TAVREL_SQL_FOREIGN_KEYS": "[{\"column\":\"code\",\"table\":\"bin\",\"target\":\"code\"}]"},
       "properties": [{"id": 6, "name": "id", "type": "long", "primary_key": true}, {"id": 7, "name": "code", "type": "QString"}]}]})"));
   const zy::ZyBool opened = m_pWnd->openProject(sModel);
   ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
   ASSERT_TRUE(m_pWnd->selectItem("depot::Parcel"));
   const model::entity_ptr pShelfBefore = entity("depot::Shelf");
   selectProperty("code");
   onNextDialog<property_dialog>([](property_dialog * d) { type(d, "m_txtColumn", "parcel_code"); ok(d); });
   key(table(), Qt::Key_F2);
   ASSERT_EQ(property("depot::Parcel", "code")->getColumnName(), "parcel_code");
   EXPECT_EQ(entity("depot::Parcel")->getMetaData("TAVREL_SQL_INDEXES").toString(),
             R"([{"columns":["parcel_code","weight"],"lengths":[0,0],"unique":true}])");
   EXPECT_EQ(entity("depot::Label")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"column":"parcel_code","table":"parcel","target":"parcel_code"}])");
   // A key to another table's column of that name is not touched, nor its entity replaced.
   EXPECT_EQ(entity("depot::Shelf"), pShelfBefore);
   undo();
   EXPECT_EQ(entity("depot::Parcel")->getMetaData("TAVREL_SQL_INDEXES").toString(),
             R"([{"columns":["code","weight"],"lengths":[0,0],"unique":true}])");
   EXPECT_EQ(entity("depot::Label")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"column":"parcel_code","table":"parcel","target":"code"}])");
   // The table renamed in the entity editor: the keys that point at it follow.
   onNextDialog<desktop::entity_dialog>([](desktop::entity_dialog * d) { type(d, "m_txtTable", "t_parcel"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_F2);
   ASSERT_EQ(entity("depot::Parcel")->getTableName(), "t_parcel");
   EXPECT_EQ(entity("depot::Label")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"column":"parcel_code","table":"t_parcel","target":"code"}])");
   EXPECT_EQ(entity("depot::Shelf"), pShelfBefore);
   undo();
   EXPECT_EQ(entity("depot::Label")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"column":"parcel_code","table":"parcel","target":"code"}])");
}
