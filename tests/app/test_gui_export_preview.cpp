#include <QCheckBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

#include <gtest/gtest.h>

#include "desktop/export_preview_dialog.h"
#include "test_gui_support.h"

namespace {

using desktop::export_preview_dialog;

class GuiExportPreview : public gui_test::GuiFixture
{
protected:
   QString m_sModel;
   QString m_sOut;

   void SetUp() override
   {
      GuiFixture::SetUp();
      ASSERT_NE(plugin(), nullptr);
      m_sModel = copyShop("shop");
      m_sOut = m_tmp.filePath("shop/out");
      QDir().mkpath(m_sOut);
      QDir().mkpath(m_tmp.filePath("lumor"));
      context::ctx_global::initGlobalParams(m_tmp.filePath("lumor"));
      ASSERT_TRUE(m_pWnd->openProject(m_sModel).getValue());
      ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("out") }, { "GENERATE_CUSTOM_FILES", true } }));
   }

   export_preview_dialog * preview()
   {
      EXPECT_TRUE(m_pWnd->doActExportPreview());
      export_preview_dialog * p = m_pWnd->getExportPreview();
      EXPECT_NE(p, nullptr);
      return p;
   }

   // Listed rows as "letter path", hidden ones included.
   static QStringList rows(const export_preview_dialog * p, bool bVisibleOnly)
   {
      QStringList lst;
      for (int i = 0; i < p->getFileList()->topLevelItemCount(); ++i)
      {
         const QTreeWidgetItem * pItem = p->getFileList()->topLevelItem(i);
         if (bVisibleOnly && pItem->isHidden()) { continue; }
         lst << pItem->data(export_preview_dialog::col_status, Qt::UserRole).toString() + " " + pItem->text(export_preview_dialog::col_path);
      }
      return lst;
   }

   void selectRow(export_preview_dialog * p, const QString & sPath)
   {
      const QList<QTreeWidgetItem *> found = p->getFileList()->findItems(sPath, Qt::MatchExactly, export_preview_dialog::col_path);
      ASSERT_EQ(found.size(), 1) << sPath.toStdString();
      p->getFileList()->setCurrentItem(found.first());
   }
};

} // namespace

TEST_F(GuiExportPreview, ListsTheNewFilesWritesNothingAndExportsFromTheDialog)
{
   const QStringList before = test_support::treeState(m_tmp.filePath("shop"), { "shop.tavrel" });
   export_preview_dialog * p = preview();
   ASSERT_NE(p, nullptr);
   EXPECT_TRUE(p->isVisible());
   EXPECT_EQ(test_support::treeState(m_tmp.filePath("shop"), { "shop.tavrel" }), before);
   const QStringList listed = rows(p, true);
   EXPECT_TRUE(listed.contains("A include/shop_sales_Order.gen.h")) << listed.join('\n').toStdString();
   EXPECT_TRUE(listed.contains("A custom/include/shop_sales_Order.h")) << listed.join('\n').toStdString();
   for (const QString & row : listed) { EXPECT_TRUE(row.startsWith("A ")) << row.toStdString(); }
   EXPECT_TRUE(p->getSummaryLabel()->text().contains(" to write, 0 unchanged, 0 to remove")) << p->getSummaryLabel()->text().toStdString();

   selectRow(p, "include/shop_sales_Order.gen.h");
   const QString diff = p->getDiffView()->toPlainText();
   EXPECT_TRUE(diff.contains("+++ b/include/shop_sales_Order.gen.h")) << diff.toStdString();
   EXPECT_TRUE(diff.contains("\n+class SHOP_EXPORT Order")) << diff.toStdString();

   QTest::mouseClick(p->getExportButton(), Qt::LeftButton);
   EXPECT_FALSE(p->isVisible());
   EXPECT_TRUE(QFileInfo::exists(m_sOut + "/include/shop_sales_Order.gen.h"));
   EXPECT_TRUE(m_pWnd->statusBar()->currentMessage().contains(" written, 0 unchanged, 0 removed")) << m_pWnd->statusBar()->currentMessage().toStdString();

   // Now up to date: nothing is listed until the unchanged files are asked for.
   p = preview();
   ASSERT_NE(p, nullptr);
   EXPECT_TRUE(rows(p, true).isEmpty()) << rows(p, true).join('\n').toStdString();
   EXPECT_TRUE(p->getSummaryLabel()->text().startsWith("The generated files are up to date with the model.")) << p->getSummaryLabel()->text().toStdString();
   p->getUnchangedBox()->click();
   EXPECT_EQ(rows(p, true), rows(p, false));
   EXPECT_TRUE(rows(p, true).contains("  include/shop_sales_Order.gen.h"));
}

TEST_F(GuiExportPreview, ShowsTheDiffOfAnEditedFileAndTheFilesAModelEditRemoves)
{
   ASSERT_TRUE(m_pWnd->doActExport().getValue());
   const QString sHeader = m_sOut + "/include/shop_Product.gen.h";
   QByteArray text = test_support::readAll(sHeader);
   ASSERT_FALSE(text.isEmpty());
   ASSERT_TRUE(test_support::writeAll(sHeader, text + "// a line of mine\n"));

   // The model loses an entity: opening the edited JSON again keeps the export record.
   QJsonObject doc = QJsonDocument::fromJson(test_support::readAll(m_sModel)).object();
   QJsonArray entities = doc.value("entities").toArray();
   for (int i = entities.size() - 1; i >= 0; --i) { if (entities.at(i).toObject().value("name").toString() == "Invoice") { entities.removeAt(i); } }
   doc.insert("entities", entities);
   ASSERT_TRUE(test_support::writeAll(m_sModel, QJsonDocument(doc).toJson()));
   ASSERT_TRUE(m_pWnd->openProject(m_sModel).getValue());

   const QStringList before = test_support::treeState(m_sOut);
   export_preview_dialog * p = preview();
   ASSERT_NE(p, nullptr);
   const QStringList listed = rows(p, true);
   EXPECT_TRUE(listed.contains("M include/shop_Product.gen.h")) << listed.join('\n').toStdString();
   EXPECT_TRUE(listed.contains("D include/shop_sales_Invoice.gen.h")) << listed.join('\n').toStdString();
   EXPECT_TRUE(listed.contains("D src/shop_sales_Invoice.gen.cpp")) << listed.join('\n').toStdString();
   EXPECT_EQ(test_support::treeState(m_sOut), before);

   selectRow(p, "include/shop_Product.gen.h");
   EXPECT_TRUE(p->getDiffView()->toPlainText().contains("\n-// a line of mine")) << p->getDiffView()->toPlainText().toStdString();
   selectRow(p, "include/shop_sales_Invoice.gen.h");
   EXPECT_TRUE(p->getDiffView()->toPlainText().contains("\n-class SHOP_EXPORT Invoice")) << p->getDiffView()->toPlainText().toStdString();

   QTest::mouseClick(p->getExportButton(), Qt::LeftButton);
   EXPECT_FALSE(QFileInfo::exists(m_sOut + "/include/shop_sales_Invoice.gen.h"));
   EXPECT_TRUE(QFileInfo::exists(m_sOut + "/custom/include/shop_sales_Invoice.h"));
   EXPECT_FALSE(test_support::readAll(sHeader).contains("a line of mine"));
}

class GuiExportPreviewNoProject : public gui_test::GuiFixture { };

TEST_F(GuiExportPreviewNoProject, IsRefusedWithAMessage)
{
   EXPECT_FALSE(m_pWnd->getExportPreviewAction()->isEnabled());
   EXPECT_FALSE(m_pWnd->doActExportPreview());
   EXPECT_EQ(m_pWnd->getExportPreview(), nullptr);
   ASSERT_FALSE(tools::message_box::history().isEmpty());
   EXPECT_EQ(tools::message_box::history().last().kind, tools::message_box::kind_critical);
}
