#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QTemporaryDir>

#include <memory>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "gui/view/main_wnd.h"
#include "model/project.h"
#include "sql_export/plugin/sql_schema_export.h"
#include "sql_export/view/sql_export_preview.h"
#include "sql_export/view/sql_export_settings.h"
#include "sql_test_support.h"
#include "test_support.h"

namespace {

// A main window of its own registered for the test, the former one put back afterwards.
class SqlView : public ::testing::Test
{
protected:
   QPointer<view::main_wnd> m_pPrevious;
   std::unique_ptr<view::main_wnd> m_pMainWnd;

   void SetUp() override
   {
      m_pPrevious = context::ctx_global::getMainWnd();
      m_pMainWnd = std::make_unique<view::main_wnd>();
      context::ctx_global::setMainWnd(m_pMainWnd.get());
   }

   void TearDown() override
   {
      context::ctx_global::setMainWnd(m_pPrevious);
      m_pMainWnd.reset();
   }
};

} // namespace

TEST_F(SqlView, PreviewShowsTheTableOfTheSelectedEntity)
{
   const model::project_ptr pProject = sql_test::exampleModel("shop");
   ASSERT_TRUE(pProject);
   plugin::sql_schema_export plugin;
   plugin.setDialect("postgresql");
   QWidget * pWidget = plugin.getPreviewWidget();
   auto * pPreview = qobject_cast<view::sql_export_preview *>(pWidget);
   ASSERT_NE(pPreview, nullptr);
   EXPECT_TRUE(pPreview->getText().contains("Select an entity"));
   Q_EMIT m_pMainWnd->onSelectEntity(pProject->getEntityByKey("shop::sales::OrderItem"));
   const QString sText = pPreview->getText();
   EXPECT_TRUE(sText.startsWith("CREATE TABLE t_order_item (\n   id bigint NOT NULL,")) << sText.toStdString();
   EXPECT_TRUE(sText.contains("FOREIGN KEY (\"order\") REFERENCES t_order (id)")) << sText.toStdString();
   pPreview->setDialect("mariadb");
   EXPECT_TRUE(pPreview->getText().contains("id BIGINT NOT NULL")) << pPreview->getText().toStdString();
   Q_EMIT m_pMainWnd->onSelectEntity(pProject->getEntityByKey("shop::Base"));
   EXPECT_TRUE(pPreview->getText().contains("abstract")) << pPreview->getText().toStdString();
   plugin.terminate();
   EXPECT_EQ(plugin.getPreviewWidget(), nullptr);
}

TEST_F(SqlView, SettingsDialogShowsAndSavesTheSettings)
{
   QTemporaryDir dir;
   ASSERT_TRUE(test_support::writeAll(dir.filePath("shop.json"), test_support::readAll(test_support::examplePath("shop.json"))));
   const zy::ZyBool opened = context::ctx_project::openProject(dir.filePath("shop.json"));
   ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
   plugin::sql_schema_export plugin;
   plugin.setDialect("mariadb");
   plugin.setScriptPath("db/old.sql");
   {
      view::sql_export_settings dlg;
      dlg.setPlugin(& plugin);
      EXPECT_EQ(dlg.dialectBox()->currentData().toString(), "mariadb");
      EXPECT_EQ(dlg.scriptPathEdit()->text(), "db/old.sql");
      EXPECT_FALSE(dlg.includeObsoleteBox()->isChecked());
      dlg.dialectBox()->setCurrentIndex(dlg.dialectBox()->findData("postgresql"));
      dlg.scriptPathEdit()->setText("db/schema.sql");
      dlg.includeObsoleteBox()->setChecked(true);
      dlg.accept();
      EXPECT_EQ(dlg.result(), int(QDialog::Accepted));
   }
   plugin::sql_schema_export reloaded;
   ASSERT_FALSE(reloaded.loadSettings().isValid());
   EXPECT_EQ(reloaded.getDialect(), "postgresql");
   EXPECT_EQ(reloaded.getScriptPath(false), "db/schema.sql");
   EXPECT_TRUE(reloaded.getIncludeObsolete());
   context::ctx_project::closeProject();
}
