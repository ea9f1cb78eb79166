// File > New project, Save as and Rename project, the Plug-in menu's choice of export plug-in,
// and the type of a property given an enumeration: each driven through menus, keys and dialogs.

#include <QDockWidget>
#include <QFileDialog>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QTextBrowser>

#include <gtest/gtest.h>

#include "desktop/help_window.h"
#include "desktop/property_dialog.h"
#include "model/property_type.h"
#include "test_gui_editing.h"

namespace {

using desktop::property_dialog;

class GuiProjectCommands : public gui_test::GuiEditing
{
protected:
   // Opens a menu of the menu bar with the mouse and clicks one of its entries.
   void menuClick(const char * szMenu, const QString & sAction)
   {
      QMenu * pMenu = m_pWnd->menuBar()->findChild<QMenu *>(szMenu);
      QAction * pAction = m_pWnd->findChild<QAction *>(sAction);
      ASSERT_TRUE(pMenu) << szMenu;
      ASSERT_TRUE(pAction) << sAction.toStdString();
      ASSERT_TRUE(pMenu->actions().contains(pAction)) << sAction.toStdString();
      m_pWnd->activateWindow();
      ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
      QTest::mouseClick(m_pWnd->menuBar(), Qt::LeftButton, Qt::NoModifier, m_pWnd->menuBar()->actionGeometry(pMenu->menuAction()).center());
      ASSERT_TRUE(QTest::qWaitFor([pMenu]() { return pMenu->isVisible(); }, 5000));
      QTest::mouseClick(pMenu, Qt::LeftButton, Qt::NoModifier, pMenu->actionGeometry(pAction).center());
   }

   static void typeInto(QWidget * pDialog, const char * szName, const QString & sText) { type(pDialog, szName, sText); }

   static QPushButton * dialogOk(QWidget * pDialog)
   {
      QDialogButtonBox * pBox = pDialog->findChild<QDialogButtonBox *>();
      return (pBox ? pBox->button(QDialogButtonBox::Ok) : nullptr);
   }

   // Types a file name into Qt's file dialog and clicks its Save button.
   static void chooseFile(QFileDialog * d, const QString & sPath)
   {
      QLineEdit * txt = d->findChild<QLineEdit *>("fileNameEdit");
      QDialogButtonBox * pButtons = d->findChild<QDialogButtonBox *>("buttonBox");
      if (! txt || ! pButtons || ! pButtons->button(QDialogButtonBox::Save)) { d->reject(); FAIL() << "not Qt's save dialog"; }
      txt->setFocus();
      txt->selectAll();
      QTest::keyClicks(txt, sPath);
      // A first click may only close the completer's list, as it does for a user.
      QTest::mouseClick(pButtons->button(QDialogButtonBox::Save), Qt::LeftButton);
      if (d->isVisible()) { QTest::mouseClick(pButtons->button(QDialogButtonBox::Save), Qt::LeftButton); }
      if (d->isVisible()) { const QString sTyped = txt->text(); d->reject(); FAIL() << "the file dialog did not take " << sTyped.toStdString() << " enabled " << pButtons->button(QDialogButtonBox::Save)->isEnabled(); }
   }

   static testing::AssertionResult dumpHas(const QString & sFile, const QString & sText)
   {
      const test_support::cli_result r = test_support::runTavrel({ "dump", sFile });
      if (r.code != 0) { return testing::AssertionFailure() << "tavrel dump exit " << r.code << ": " << r.err.toStdString(); }
      if (! r.out.contains(sText)) { return testing::AssertionFailure() << "no '" << sText.toStdString() << "' in the dump"; }
      return testing::AssertionSuccess();
   }
};

} // namespace

TEST_F(GuiProjectCommands, NewProjectAsksNameAndFileAndOpensTheEmptyProject)
{
   openShop("shop::Customer");
   const QString sExisting = context::ctx_project::getProjectFile();
   const QString sFile = m_tmp.filePath("garden");
   onNextDialog<QDialog>([&](QDialog * d) {
      ASSERT_EQ(d->objectName(), "new_project_dialog");
      typeInto(d, "m_txtProjectName", "2garden");
      typeInto(d, "m_txtProjectFile", sFile);
      EXPECT_FALSE(dialogOk(d)->isEnabled());
      EXPECT_TRUE(d->findChild<QLabel *>("m_lblProblem")->text().startsWith("Name"));
      typeInto(d, "m_txtProjectName", "garden");
      typeInto(d, "m_txtProjectFile", sExisting);
      EXPECT_FALSE(dialogOk(d)->isEnabled());
      EXPECT_TRUE(d->findChild<QLabel *>("m_lblProblem")->text().contains("already exists"));
      typeInto(d, "m_txtProjectFile", sFile);
      ASSERT_TRUE(dialogOk(d)->isEnabled());
      QTest::mouseClick(dialogOk(d), Qt::LeftButton);
   });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuFile", "m_actNewProject"));
   ASSERT_TRUE(m_pWnd->getProject());
   EXPECT_EQ(m_pWnd->getProject()->getName(), "garden");
   EXPECT_TRUE(m_pWnd->getProject()->getListOfAllEntities()->isEmpty());
   EXPECT_EQ(context::ctx_project::getProjectFile(), QFileInfo(sFile + ".tavrel").absoluteFilePath());
   EXPECT_TRUE(m_pWnd->windowTitle().contains("garden"));
   EXPECT_TRUE(dumpHas(sFile + ".tavrel", "\"garden\""));
}

TEST_F(GuiProjectCommands, SaveAsWritesAnotherFileWithThePluginSettingsAndGoesOnThere)
{
   openShop("shop::Customer");
   const QString sOld = context::ctx_project::getProjectFile();
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("generated") } }));
   key(m_pWnd->getModelTree(), Qt::Key_F5);
   editDescription("shop::Customer", "Buyers of the shop");
   const QString sNew = m_tmp.filePath("copy.tavrel");
   onNextDialog<QFileDialog>([&](QFileDialog * d) { chooseFile(d, sNew); });
   key(m_pWnd->getModelTree(), Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
   EXPECT_EQ(context::ctx_project::getProjectFile(), QFileInfo(sNew).absoluteFilePath());
   EXPECT_FALSE(m_pWnd->isWindowModified());
   EXPECT_TRUE(dumpHas(sNew, "Buyers of the shop"));
   EXPECT_FALSE(dumpHas(sOld, "Buyers of the shop"));
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Customer");
   // The plug-in's settings went along into the new file.
   context::ctx_scoped scope;
   model::plugin_params::list_of_plugin_params lst;
   ASSERT_FALSE(model::plugin_params::fetchByGuid(plugin()->getGuid(), lst, scope.database()).isValid());
   QString sPath;
   for (const auto & item : lst) { if (item.second && (item.second->getParamKey() == "CPP_EXPORT_PATH")) { sPath = item.second->getParamValue().toString(); } }
   EXPECT_EQ(sPath, "generated");
}

TEST_F(GuiProjectCommands, RenameProjectIsOneUndoStepAndSaved)
{
   openShop("shop::Customer");
   onNextDialog<QInputDialog>([](QInputDialog * d) {
      QLineEdit * txt = d->findChild<QLineEdit *>();
      ASSERT_TRUE(txt);
      txt->selectAll();
      QTest::keyClicks(txt, "Boutique");
      QTest::keyClick(txt, Qt::Key_Return);
   });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuFile", "m_actRenameProject"));
   EXPECT_EQ(m_pWnd->getProject()->getName(), "Boutique");
   EXPECT_TRUE(m_pWnd->windowTitle().contains("Boutique"));
   EXPECT_TRUE(m_pWnd->isWindowModified());
   undo();
   EXPECT_EQ(m_pWnd->getProject()->getName(), "SHOP");
   redo();
   key(m_pWnd->getModelTree(), Qt::Key_S, Qt::ControlModifier);
   EXPECT_TRUE(dumpHas(context::ctx_project::getProjectFile(), "\"Boutique\""));

   // A name that is no identifier is refused.
   onNextDialog<QInputDialog>([](QInputDialog * d) {
      QLineEdit * txt = d->findChild<QLineEdit *>();
      txt->selectAll();
      QTest::keyClicks(txt, "my shop");
      QTest::keyClick(txt, Qt::Key_Return);
   });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuFile", "m_actRenameProject"));
   EXPECT_EQ(m_pWnd->getProject()->getName(), "Boutique");
   EXPECT_GE(messagesWith("The project is not renamed"), 1);
}

TEST_F(GuiProjectCommands, EveryExportPluginIsChosenFromThePluginMenu)
{
   openShop("shop::Customer");
   ASSERT_EQ(plugin()->getName(), "TavrelCppExport");
   QMenu * pMenu = m_pWnd->menuBar()->findChild<QMenu *>("m_mnuPlugin");
   ASSERT_TRUE(pMenu);
   for (const app::plugin_info & info : m_pWnd->getPlugins())
   {
      if (info.exportPlugin) { EXPECT_TRUE(m_pWnd->findChild<QAction *>("m_actPlugin_" + info.exportPlugin->getName())) << info.exportPlugin->getName().toStdString(); }
   }
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuPlugin", "m_actPlugin_TavrelSqlExport"));
   ASSERT_TRUE(plugin());
   EXPECT_EQ(plugin()->getName(), "TavrelSqlExport");
   EXPECT_TRUE(m_pWnd->findChild<QAction *>("m_actPlugin_TavrelSqlExport")->isChecked());
   // Its preview is in the dock, its settings dialog opens from the menu.
   QScrollArea * pScroll = m_pWnd->getPreviewDock()->findChild<QScrollArea *>("m_scrollPreview");
   ASSERT_TRUE(pScroll);
   EXPECT_EQ(pScroll->widget(), plugin()->getPreviewWidget());
   EXPECT_TRUE(m_pWnd->getPreviewDock()->isVisible());
   QString sSettingsTitle;
   onNextDialog<QDialog>([&sSettingsTitle](QDialog * d) { sSettingsTitle = d->windowTitle(); d->reject(); });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuPlugin", "m_actPluginSettings"));
   EXPECT_FALSE(sSettingsTitle.isEmpty());
   EXPECT_TRUE(m_pWnd->getExportAction()->text().contains("TavrelSqlExport"));
   EXPECT_TRUE(m_pWnd->getExportPreviewAction()->isEnabled());

   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuPlugin", "m_actPlugin_TavrelCppExport"));
   EXPECT_EQ(plugin()->getName(), "TavrelCppExport");
   EXPECT_EQ(pScroll->widget(), plugin()->getPreviewWidget());
}

TEST_F(GuiProjectCommands, ChosenEnumerationGivesThePropertyItsType)
{
   openShop("shop::Customer");
   m_pWnd->getPropertyTable()->setCurrentItem(m_pWnd->getPropertyTable()->topLevelItem(0));
   QString sTypeShown = "<none>";
   QString sHint;
   onNextDialog<property_dialog>([&](property_dialog * d) {
      type(d, "m_txtName", "level");
      pick(d, "m_cboEnumeration", "shop::ProductStatus");
      QComboBox * cbo = d->findChild<QComboBox *>("m_cboType");
      sTypeShown = cbo->currentText();
      sHint = cbo->lineEdit()->placeholderText();
      ok(d);
   });
   key(m_pWnd->getPropertyTable(), Qt::Key_Insert);
   EXPECT_EQ(sTypeShown, "");
   EXPECT_EQ(sHint, "shop::ProductStatus::enum_ProductStatus");
   const model::property_ptr p = entity("shop::Customer")->getPropertyByName("level");
   ASSERT_TRUE(p);
   EXPECT_EQ(p->getEnumerationKey(), "shop::ProductStatus");
   ASSERT_TRUE(p->getType());
   EXPECT_TRUE(p->getType()->isFromEnumeration());
   EXPECT_EQ(p->getTypeDesc(false, false), "shop::ProductStatus::enum_ProductStatus");
}

TEST_F(GuiProjectCommands, ViewMenuHidesAndShowsThePreviewAndTheMessages)
{
   openShop("shop::Customer");
   for (QDockWidget * pDock : { m_pWnd->getPreviewDock(), m_pWnd->findChild<QDockWidget *>("m_dockMessages") })
   {
      ASSERT_TRUE(pDock);
      QAction * pToggle = pDock->toggleViewAction();
      pToggle->setObjectName("m_actView_" + pDock->objectName());
      EXPECT_TRUE(pToggle->isEnabled()) << pDock->objectName().toStdString();
      ASSERT_TRUE(pDock->isVisible());
      ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuView", pToggle->objectName()));
      EXPECT_FALSE(pDock->isVisible()) << pDock->objectName().toStdString();
      ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuView", pToggle->objectName()));
      EXPECT_TRUE(pDock->isVisible()) << pDock->objectName().toStdString();
   }
}

TEST_F(GuiProjectCommands, HelpOfTheSettingsDialogShowsTheGuideInFrontOfIt)
{
   openShop("shop::Customer");
   bool bShown = false;
   bool bUsable = false;
   QString sFragment;
   onNextDialog<QDialog>([&](QDialog * d) {
      QTest::mouseClick(d->findChild<QPushButton *>("m_btnHelpManual"), Qt::LeftButton);
      desktop::help_window * pHelp = m_pWnd->getHelpOpener()->getWindow();
      if (pHelp)
      {
         bShown = pHelp->isVisible();
         // A window outside the modal dialog takes no input while the dialog is open.
         bUsable = (pHelp->parentWidget() == d) || (pHelp->windowModality() != Qt::NonModal);
         sFragment = pHelp->getBrowser()->source().fragment();
      }
      d->reject();
   });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuPlugin", "m_actPluginSettings"));
   EXPECT_TRUE(bShown);
   EXPECT_TRUE(bUsable);
   EXPECT_EQ(sFragment, "cpp_export_settings");
   // Opened again without a dialog, the guide is a window of its own.
   key(m_pWnd->getModelTree(), Qt::Key_F1);
   ASSERT_TRUE(m_pWnd->getHelpOpener()->getWindow());
   EXPECT_TRUE(m_pWnd->getHelpOpener()->getWindow()->isVisible());
   EXPECT_FALSE(m_pWnd->getHelpOpener()->getWindow()->parentWidget());
}

TEST_F(GuiProjectCommands, WindowOpensWithinTheScreen)
{
   QScreen * pScreen = m_pWnd->screen();
   ASSERT_TRUE(pScreen);
   const QRect avail = pScreen->availableGeometry();
   EXPECT_LE(m_pWnd->width(), avail.width());
   EXPECT_LE(m_pWnd->height(), avail.height());
   EXPECT_TRUE(avail.contains(m_pWnd->geometry().topLeft()));
}

TEST_F(GuiProjectCommands, ExportSettingsTakeNoFolderOrCreateAMissingOne)
{
   openShop("shop::Customer");
   const QString sProjectDir = QFileInfo(context::ctx_project::getProjectFile()).absolutePath();
   QString sStart;
   bool bClosedEmpty = false;
   onNextDialog<QDialog>([&](QDialog * d) {
      type(d, "m_txtFileLocation", QString());
      // The folder chooser starts in the project's folder.
      onNextDialog<QFileDialog>([&sStart](QFileDialog * f) { sStart = f->directory().absolutePath(); f->reject(); });
      QTest::mouseClick(d->findChild<QPushButton *>("m_btnFileLocation"), Qt::LeftButton);
      QTest::mouseClick(d->findChild<QPushButton *>("m_btnOk"), Qt::LeftButton);
      bClosedEmpty = ! d->isVisible();
      if (d->isVisible()) { d->reject(); }
   });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuPlugin", "m_actPluginSettings"));
   EXPECT_EQ(sStart, sProjectDir);
   EXPECT_TRUE(bClosedEmpty);

   bool bClosedCreated = false;
   onNextDialog<QDialog>([&](QDialog * d) {
      type(d, "m_txtFileLocation", "gen/out");
      tools::message_box::pushScriptedAnswer(QMessageBox::Yes);
      QTest::mouseClick(d->findChild<QPushButton *>("m_btnOk"), Qt::LeftButton);
      bClosedCreated = ! d->isVisible();
      if (d->isVisible()) { d->reject(); }
   });
   ASSERT_NO_FATAL_FAILURE(menuClick("m_mnuPlugin", "m_actPluginSettings"));
   EXPECT_TRUE(bClosedCreated);
   EXPECT_TRUE(QFileInfo(sProjectDir + "/gen/out").isDir());
}
