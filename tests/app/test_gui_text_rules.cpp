// The desktop host refuses model text that would break out of the generated code: in its edit
// panel and at the start of an export.

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <gtest/gtest.h>

#include "desktop/global_settings.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "storage/project_storage.h"
#include "test_gui_support.h"

namespace {

using gui_test::GuiFixture;

class GuiTextRules : public GuiFixture
{
protected:
   // Types a table name and a description into the edit panel of shop::Customer and applies them.
   void applyDetails(const QString & sTable, const QString & sDescription)
   {
      ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
      QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
      QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
      QPushButton * pApply = m_pWnd->findChild<QPushButton *>("m_btnApply");
      ASSERT_TRUE(pTable && pDescription && pApply);
      pTable->setText(sTable);
      pDescription->setText(sDescription);
      Q_EMIT pTable->textEdited(sTable);
      pApply->click();
   }
};

TEST_F(GuiTextRules, EditPanelRefusesATableNameOrDescriptionThatBreaksOut)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   const QByteArray before = test_support::readAll(context::ctx_project::getProjectFile());

   applyDetails("t\"); system(\"id\"); //", "A person who buys in the shop");
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getTableName(), "t_customer");
   ASSERT_FALSE(tools::message_box::history().isEmpty());
   EXPECT_EQ(tools::message_box::history().last().kind, tools::message_box::kind_warning);
   EXPECT_TRUE(tools::message_box::history().last().text.contains("table name 't\"); system(\"id\"); //' holds a double quote"))
      << tools::message_box::history().last().text.toStdString();

   // Refused by the same rule as the JSON import.
   applyDetails("t order; drop", "A person who buys in the shop");
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getTableName(), "t_customer");
   EXPECT_TRUE(tools::message_box::history().last().text.contains("table name 't order; drop' holds ';'"))
      << tools::message_box::history().last().text.toStdString();

   applyDetails("t_customer", "ends here */ int injected;");
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getDescription(), "A person who buys in the shop");
   EXPECT_TRUE(tools::message_box::history().last().text.contains("description 'ends here */ int injected;' holds \"*/\""))
      << tools::message_box::history().last().text.toStdString();
   EXPECT_EQ(test_support::readAll(context::ctx_project::getProjectFile()), before);

   // A harmless edit is still stored.
   applyDetails("t_client", "A person who buys in the shop");
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getTableName(), "t_client");
}

TEST_F(GuiTextRules, ExportRefusesAModelHoldingBreakOutText)
{
   ASSERT_NE(plugin(), nullptr);
   const QString lumor = m_tmp.filePath("lumor");
   QDir().mkpath(lumor);
   QDir().mkpath(m_tmp.filePath("p/out"));
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("out") } }));
   context::ctx_global::initGlobalParams(lumor);

   // Changed in memory, as a plug-in or a script could: the export itself must refuse it.
   model::entity_ptr pEntity = m_pWnd->getProject()->getEntityByKey("shop::CustomerProfile");
   ASSERT_TRUE(pEntity);
   pEntity->getPropertyByName("bio")->setDescription("bio\n#error injected");
   zy::ZyBool result = m_pWnd->doActExport();
   EXPECT_FALSE(result.getValue());
   EXPECT_TRUE(result.getDesc().contains("Entity 'shop::CustomerProfile' : property 'bio' : description")) << result.getDesc().toStdString();
   ASSERT_FALSE(tools::message_box::history().isEmpty());
   EXPECT_EQ(tools::message_box::history().last().kind, tools::message_box::kind_critical);
   EXPECT_TRUE(QDir(m_tmp.filePath("p/out")).isEmpty());

   // The same project without the hostile text exports.
   pEntity->getPropertyByName("bio")->setDescription("Free text");
   result = m_pWnd->doActExport();
   EXPECT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_FALSE(QDir(m_tmp.filePath("p/out")).isEmpty());
}

} // namespace

namespace {

TEST_F(GuiTextRules, GlobalSettingsWarnAboutALumorPathAnExportRefuses)
{
   qunsetenv("TAVREL_TEST_GUI_UNSET");
   desktop::global_settings dlg(QString(), m_pWnd.get());
   dlg.getLumorPathEdit()->setText("${TAVREL_TEST_GUI_UNSET}/lumor");
   dlg.doBtnOk();
   EXPECT_EQ(dlg.result(), QDialog::Accepted);
   ASSERT_EQ(tools::message_box::history().size(), 1);
   EXPECT_EQ(tools::message_box::history().first().kind, tools::message_box::kind_warning);
   EXPECT_TRUE(tools::message_box::history().first().text.contains("environment variable 'TAVREL_TEST_GUI_UNSET', which is not set"))
      << tools::message_box::history().first().text.toStdString();
}

} // namespace
