#include <QAction>
#include <QDockWidget>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextEdit>
#include <QUrl>

#include <QTest>

#include <gtest/gtest.h>

#include "desktop/global_settings.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "test_gui_support.h"
#include "gui/view/main_wnd.h"

namespace {

using gui_test::GuiFixture;

class GuiMainWindow : public GuiFixture { };

TEST_F(GuiMainWindow, IsTheHostsMainWindowAndFindsThePlugin)
{
   EXPECT_EQ(context::ctx_global::getMainWnd(), m_pWnd.get());
   ASSERT_NE(plugin(), nullptr);
   EXPECT_EQ(plugin()->getName(), "TavrelCppExport");
   // Nothing to export before a project is open.
   EXPECT_FALSE(m_pWnd->getExportAction()->isEnabled());
}

TEST_F(GuiMainWindow, TreeListsTheEntitiesByNamespaceAndTheEnumerations)
{
   zy::ZyBool ok = m_pWnd->openProject(copyShop("p"));
   ASSERT_TRUE(ok.getValue()) << ok.getDesc().toStdString();

   const QStringList entities = treeKeys(desktop::main_window::item_entity);
   EXPECT_EQ(entities, QStringList({ "shop::Base", "shop::Customer", "shop::CustomerProfile", "shop::Category", "shop::Product",
                                     "shop::sales::Order", "shop::sales::OrderItem", "shop::sales::Invoice" }));
   EXPECT_EQ(treeKeys(desktop::main_window::item_enumeration), QStringList({ "shop::ProductStatus", "shop::sales::OrderStatus" }));

   // Entities sit under their namespace's group, under "Entities".
   QTreeWidget * pTree = m_pWnd->getModelTree();
   ASSERT_EQ(pTree->topLevelItemCount(), 2);
   QTreeWidgetItem * pEntities = pTree->topLevelItem(0);
   EXPECT_EQ(pEntities->text(0), "Entities");
   ASSERT_EQ(pEntities->childCount(), 2);
   EXPECT_EQ(pEntities->child(0)->text(0), "shop");
   EXPECT_EQ(pEntities->child(0)->childCount(), 5);
   EXPECT_EQ(pEntities->child(1)->text(0), "shop::sales");
   EXPECT_EQ(pEntities->child(1)->childCount(), 3);
   EXPECT_TRUE(m_pWnd->getExportAction()->isEnabled());
}

TEST_F(GuiMainWindow, SelectingEmitsTheSelectionSignals)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   int iEntity = 0;
   int iEnumeration = 0;
   QString sLastEntity;
   QObject::connect(m_pWnd.get(), & view::main_wnd::onSelectEntity, [&](model::entity_ptr p) { ++iEntity; sLastEntity = (p ? p->getKey() : QString()); });
   QObject::connect(m_pWnd.get(), & view::main_wnd::onSelectEnumeration, [&](model::enumeration_ptr p) { if (p) { ++iEnumeration; } });

   ASSERT_TRUE(m_pWnd->selectItem("shop::sales::Order"));
   EXPECT_EQ(iEntity, 1);
   EXPECT_EQ(sLastEntity, "shop::sales::Order");
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::sales::Order");

   ASSERT_TRUE(m_pWnd->selectItem("shop::ProductStatus"));
   EXPECT_EQ(iEnumeration, 1);
   EXPECT_FALSE(m_pWnd->getSelectedEntity());
   EXPECT_FALSE(m_pWnd->selectItem("shop::Missing"));
}

TEST_F(GuiMainWindow, PreviewDockShowsTheCodeOfTheSelection)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   QDockWidget * pDock = m_pWnd->getPreviewDock();
   ASSERT_NE(pDock, nullptr);
   ASSERT_TRUE(pDock->isAncestorOf(plugin()->getPreviewWidget()));
   EXPECT_EQ(pDock->windowTitle(), "C++ preview");

   ASSERT_TRUE(m_pWnd->selectItem("shop::sales::Order"));
   QTextEdit * pHeader = pDock->findChild<QTextEdit *>("m_txtCppTemplateHeader");
   QTextEdit * pSource = pDock->findChild<QTextEdit *>("m_txtCppTemplateSource");
   ASSERT_NE(pHeader, nullptr);
   ASSERT_NE(pSource, nullptr);
   EXPECT_TRUE(pHeader->toPlainText().contains("class")) << pHeader->toPlainText().toStdString();
   EXPECT_TRUE(pHeader->toPlainText().contains("Order"));
   EXPECT_TRUE(pSource->toPlainText().contains("shop_sales_Order.gen.h")) << pSource->toPlainText().toStdString();

   ASSERT_TRUE(m_pWnd->selectItem("shop::sales::OrderStatus"));
   EXPECT_TRUE(pHeader->toPlainText().contains("OrderStatus"));
}

TEST_F(GuiMainWindow, ASecondWindowGetsThePreviewAgain)
{
   m_pWnd.reset();
   m_pWnd = std::make_unique<desktop::main_window>();
   m_pWnd->show();
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   ASSERT_NE(m_pWnd->getPreviewDock(), nullptr);
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   QTextEdit * pHeader = m_pWnd->getPreviewDock()->findChild<QTextEdit *>("m_txtCppTemplateHeader");
   ASSERT_NE(pHeader, nullptr);
   EXPECT_TRUE(pHeader->toPlainText().contains("Customer"));
}

TEST_F(GuiMainWindow, ApplyingAnEditStoresItAndEmitsOnUpdateEntity)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   int iUpdates = 0;
   QObject::connect(m_pWnd.get(), & view::main_wnd::onUpdateEntity, [&](model::entity_ptr p) { if (p && (p->getKey() == "shop::Customer")) { ++iUpdates; } });

   QLineEdit * pTable = m_pWnd->findChild<QLineEdit *>("m_txtTable");
   QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
   QPushButton * pApply = m_pWnd->findChild<QPushButton *>("m_btnApply");
   ASSERT_TRUE(pTable && pDescription && pApply);
   EXPECT_EQ(pTable->text(), "t_customer");
   EXPECT_FALSE(pApply->isEnabled());
   pTable->setText("t_client");
   Q_EMIT pTable->textEdited("t_client");
   pDescription->setText("A person who buys, renamed");
   EXPECT_TRUE(pApply->isEnabled());
   pApply->click();
   EXPECT_EQ(iUpdates, 1);
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getTableName(), "t_client");
   EXPECT_TRUE(m_pWnd->isWindowModified());

   // Kept in memory until Save (Ctrl+S), then stored in the project file.
   model::project_ptr reread;
   ASSERT_TRUE(storage::project_storage::loadProject(context::ctx_project::getProjectFile(), reread).getValue());
   EXPECT_EQ(reread->getEntityByKey("shop::Customer")->getTableName(), "t_customer");
   m_pWnd->activateWindow();
   ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
   m_pWnd->getModelTree()->setFocus();
   QTest::keyClick(m_pWnd->getModelTree(), Qt::Key_S, Qt::ControlModifier);
   EXPECT_FALSE(m_pWnd->isWindowModified());
   ASSERT_TRUE(storage::project_storage::loadProject(context::ctx_project::getProjectFile(), reread).getValue());
   model::entity_ptr p = reread->getEntityByKey("shop::Customer");
   ASSERT_TRUE(p);
   EXPECT_EQ(p->getTableName(), "t_client");
   EXPECT_EQ(p->getDescription(), "A person who buys, renamed");

   // And the preview follows.
   QTextEdit * pSource = m_pWnd->getPreviewDock()->findChild<QTextEdit *>("m_txtCppTemplateSource");
   ASSERT_NE(pSource, nullptr);
   EXPECT_TRUE(pSource->toPlainText().contains("t_client")) << pSource->toPlainText().toStdString();
}

TEST_F(GuiMainWindow, ReloadReadsTheModelAgain)
{
   const QString model = copyShop("p");
   ASSERT_TRUE(m_pWnd->openProject(model).getValue());
   ASSERT_TRUE(m_pWnd->selectItem("shop::Product"));
   int iLoads = 0;
   QObject::connect(m_pWnd.get(), & view::main_wnd::onLoadProject, [&](model::project_ptr p) { if (p) { ++iLoads; } });

   // The JSON model changes on disk: the reload imports it again and keeps the selection.
   QByteArray json = test_support::readAll(model);
   json.replace("\"An article for sale\"", "\"An article, reloaded\"");
   ASSERT_TRUE(test_support::writeAll(model, json));
   m_pWnd->doActReloadProject();
   EXPECT_EQ(iLoads, 1);
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Product");
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getDescription(), "An article, reloaded");
}

TEST_F(GuiMainWindow, OpeningAMissingFileLeavesTheWindowAsItWas)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   zy::ZyBool ok = m_pWnd->openProject(m_tmp.filePath("missing.tavrel"));
   EXPECT_FALSE(ok.getValue());
   EXPECT_TRUE(ok.getDesc().contains("doesn't exist")) << ok.getDesc().toStdString();
   EXPECT_EQ(treeKeys(desktop::main_window::item_entity).size(), 8);
}

TEST_F(GuiMainWindow, PluginMessagesAreListedWithTheirKind)
{
   ASSERT_NE(plugin(), nullptr);
   QListWidget * pList = m_pWnd->getMessageList();
   const int iBefore = pList->count();
   Q_EMIT plugin()->onMessage("first step done", 1, 1000);
   Q_EMIT plugin()->onMessage("something odd", 2, 1000);
   Q_EMIT plugin()->onMessage("something broke", 3, 1000);
   ASSERT_EQ(pList->count(), iBefore + 3);
   QListWidgetItem * pProgress = pList->item(iBefore);
   QListWidgetItem * pWarning = pList->item(iBefore + 1);
   QListWidgetItem * pError = pList->item(iBefore + 2);
   EXPECT_TRUE(pProgress->text().endsWith("first step done"));
   EXPECT_EQ(pWarning->data(Qt::UserRole).toInt(), 2);
   EXPECT_EQ(pError->data(Qt::UserRole).toInt(), 3);
   // Errors in red, warnings in another colour than the progress lines.
   EXPECT_EQ(pError->foreground().color(), QColor(200, 0, 0));
   EXPECT_NE(pWarning->foreground().color(), pProgress->foreground().color());
   EXPECT_NE(pWarning->foreground().color(), pError->foreground().color());
}

TEST_F(GuiMainWindow, ExportFailureIsShownInACriticalBox)
{
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   QDir().mkpath(m_tmp.filePath("p/out"));
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("out") } }));
   // No Lumor library path anywhere.
   zy::ZyBool result = m_pWnd->doActExport();
   EXPECT_FALSE(result.getValue());
   EXPECT_FALSE(m_pWnd->isExecutingPlugin());
   const QList<tools::message_box::record> history = tools::message_box::history();
   ASSERT_FALSE(history.isEmpty());
   EXPECT_EQ(history.last().kind, tools::message_box::kind_critical);
   EXPECT_EQ(history.last().title, "Tavrel - TavrelCppExport");
   EXPECT_TRUE(history.last().text.contains("Lumor library path")) << history.last().text.toStdString();
   EXPECT_EQ(m_pWnd->getMessageList()->item(m_pWnd->getMessageList()->count() - 1)->data(Qt::UserRole).toInt(), 3);
}

TEST_F(GuiMainWindow, ExportWithoutProjectSaysSo)
{
   zy::ZyBool result = m_pWnd->doActExport();
   EXPECT_FALSE(result.getValue());
   ASSERT_FALSE(tools::message_box::history().isEmpty());
   EXPECT_EQ(tools::message_box::history().last().kind, tools::message_box::kind_critical);
   EXPECT_TRUE(tools::message_box::history().last().text.contains("open a project"));
}

TEST_F(GuiMainWindow, GlobalSettingsSaveTheLumorPath)
{
   const QString lumor = m_tmp.filePath("lumor");
   QDir().mkpath(lumor);
   desktop::global_settings dlg(QString(), m_pWnd.get());
   dlg.getLumorPathEdit()->setText(lumor);
   dlg.doBtnOk();
   EXPECT_EQ(dlg.result(), QDialog::Accepted);
   EXPECT_EQ(context::ctx_global::getSavedLumorPath(), lumor);
   if (qEnvironmentVariableIsEmpty("LUMOR_DIR"))
   {
      EXPECT_EQ(context::ctx_global::getGlobalParams()->getLumorPath(false), lumor);
   }
   // An existing directory: no warning.
   EXPECT_TRUE(tools::message_box::history().isEmpty());
}

TEST_F(GuiMainWindow, GlobalSettingsWarnAboutAMissingDirectory)
{
   desktop::global_settings dlg(QString(), m_pWnd.get());
   dlg.getLumorPathEdit()->setText(m_tmp.filePath("nowhere"));
   dlg.doBtnOk();
   EXPECT_EQ(dlg.result(), QDialog::Accepted);
   ASSERT_EQ(tools::message_box::history().size(), 1);
   EXPECT_EQ(tools::message_box::history().first().kind, tools::message_box::kind_warning);
}

} // namespace

namespace {

TEST(GuiUserGuide, IsFoundByTheHostAndExplainsEverySetting)
{
   const QUrl url(context::ctx_global::getAppHelpManualUrl());
   ASSERT_TRUE(url.isLocalFile()) << url.toString().toStdString();
   const QString html = QString::fromUtf8(test_support::readAll(url.toLocalFile()));
   ASSERT_FALSE(html.isEmpty()) << url.toLocalFile().toStdString();
   // The settings dialog opens the guide at this anchor.
   const qsizetype iSection = html.indexOf("id=\"cpp_export_settings\"");
   ASSERT_GE(iSection, 0);
   const QString section = html.mid(iSection, html.indexOf("id=\"templates\"") - iSection);
   const QStringList labels = { "C++ project location", "Relative path to Lumor library",
                                "Generate a custom directory with custom files for each entity",
                                "Generate all persistent classes using the PIMPL idiom", "Custom script file",
                                "Debug custom javascript file", "No inheritance", "zy::IxPersistable + QObject", "Custom" };
   for (const QString & label : labels) { EXPECT_TRUE(section.contains(label)) << label.toStdString(); }
   for (const QString & word : { "PLUGIN_EXPORT_START", "BEFORE_CLOSING_FILE", "AFTER_CLOSING_FILE", "PLUGIN_EXPORT_END",
                                 "tavrel.log", "tavrel.breakpoint", "@@CUSTOM_", "m_pImpl-&gt;", "Shift" })
   {
      EXPECT_TRUE(html.contains(word)) << word.toStdString();
   }
   // Every picture it shows ships beside it.
   static const QRegularExpression rxImage("<img src=\"([^\"]+)\"");
   int iImages = 0;
   for (auto itr = rxImage.globalMatch(html); itr.hasNext(); ++iImages)
   {
      const QString file = QFileInfo(url.toLocalFile()).absoluteDir().filePath(itr.next().captured(1));
      EXPECT_TRUE(QFileInfo(file).isFile()) << file.toStdString();
   }
   EXPECT_GE(iImages, 2);
}

} // namespace
