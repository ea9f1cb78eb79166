#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>

#include "context/ctx_global.h"
#include "db_environment.h"
#include "context/ctx_project.h"
#include "desktop/import_db_dialog.h"
#include "desktop/main_window.h"
#include "model/entity.h"
#include "model/global_params.h"
#include "model/project.h"
#include "test_support.h"
#include "gui/tools/message_box.h"

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

const char * const k_sDdl =
   "CREATE TABLE customer (id BIGINT PRIMARY KEY, name VARCHAR(40) NOT NULL);\n"
   "CREATE TABLE invoice (id BIGINT PRIMARY KEY, customer_id BIGINT REFERENCES customer (id));\n";

class ImportDialog : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sDdl;

   void SetUp() override
   {
      m_sDdl = m_dir.filePath("schema.sql");
      test_support::writeAll(m_sDdl, k_sDdl);
      tools::message_box::setUnattended(true);
      context::ctx_global::setSettingsFile(m_dir.filePath("settings.ini"));
      context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());
   }

   void TearDown() override
   {
      context::ctx_project::closeProject();
      context::ctx_global::setSettingsFile(QString());
   }

   void useDdl(desktop::import_db_dialog & dlg, const QString & sFile, const QString & sProject)
   {
      dlg.getSourceBox()->setCurrentIndex(desktop::import_db_dialog::source_ddl);
      dlg.getFileEdit()->setText(sFile);
      dlg.getProjectEdit()->setText(sProject);
   }
};

TEST_F(ImportDialog, PreviewListsTheChangesAndWritesNothing)
{
   desktop::import_db_dialog dlg { QString() };
   const QString sProject = m_dir.filePath("shop.tavrel");
   useDdl(dlg, m_sDdl, sProject);
   dlg.getPreviewButton()->click();
   EXPECT_EQ(dlg.getSummary(), QStringList({ "+ entity Customer (table customer)", "+ entity Invoice (table invoice)" }));
   EXPECT_TRUE(dlg.getPreview()->toPlainText().contains("+ entity Invoice (table invoice)"));
   EXPECT_FALSE(QFileInfo::exists(sProject));
}

TEST_F(ImportDialog, AFailureIsShownAndNothingWritten)
{
   desktop::import_db_dialog dlg { QString() };
   const QString sBad = m_dir.filePath("bad.sql");
   test_support::writeAll(sBad, "CREATE TABLE order (id BIGINT PRIMARY KEY);\n");
   const QString sProject = m_dir.filePath("shop.json");
   useDdl(dlg, sBad, sProject);
   dlg.getImportButton()->click();
   EXPECT_TRUE(dlg.getPreview()->toPlainText().contains("error: ")) << dlg.getPreview()->toPlainText().toStdString();
   EXPECT_NE(dlg.result(), int(QDialog::Accepted));
   EXPECT_FALSE(QFileInfo::exists(sProject));
}

// The menu entry of the desktop host: the dialog, then the project opened and the changes listed.
TEST_F(ImportDialog, TheFileMenuEntryImportsAndOpensTheProject)
{
   qputenv("TAVREL_PLUGIN_DIR", (test_support::binaryDir() + "/bin/plugins").toLocal8Bit());
   desktop::main_window wnd;
   QAction * pAction = desktop::import_db_dialog::installMenuEntry(& wnd);
   QMenu * pFile = wnd.menuBar()->actions().first()->menu();
   ASSERT_TRUE(pFile);
   const QList<QAction *> lst = pFile->actions();
   ASSERT_GE(lst.size(), 3);
   EXPECT_EQ(lst.at(lst.size() - 3), pAction);
   const QString sProject = m_dir.filePath("shop.tavrel");
   bool bSeen = false;
   QTimer::singleShot(0, [&]()
   {
      auto * pDialog = qobject_cast<desktop::import_db_dialog *>(QApplication::activeModalWidget());
      if (! pDialog) { return; }
      bSeen = true;
      useDdl(* pDialog, m_sDdl, sProject);
      pDialog->getImportButton()->click();
   });
   pAction->trigger();
   ASSERT_TRUE(bSeen);
   ASSERT_TRUE(wnd.getProject());
   EXPECT_EQ(QFileInfo(wnd.getProject()->getFilePath()).canonicalFilePath(), QFileInfo(sProject).canonicalFilePath());
   EXPECT_TRUE(wnd.getProject()->getEntityByKey("Invoice"));
   QStringList lstMessages;
   for (int i = 0; i < wnd.getMessageList()->count(); ++i) { lstMessages.append(wnd.getMessageList()->item(i)->text()); }
   EXPECT_TRUE(lstMessages.join('\n').contains("+ entity Invoice (table invoice)")) << lstMessages.join('\n').toStdString();
}

// The connection fields and the password field reach the server (no password in the environment).
class ImportDialogServer : public ImportDialog, public ::testing::WithParamInterface<db_support::db_server::enum_kind> { };

TEST_P(ImportDialogServer, ConnectionFieldsAndThePasswordFieldAreUsed)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase("dialog", sError)) << sError.toStdString();
   ASSERT_TRUE(pServer->execScript("CREATE TABLE item (id BIGINT PRIMARY KEY);\n", sError, "dialog")) << sError.toStdString();
   for (const char * s : { "TAVREL_DB_PASSWORD", "PGPASSWORD", "MYSQL_PWD" }) { qunsetenv(s); }
   desktop::import_db_dialog dlg { QString() };
   const bool bPostgres = (GetParam() == db_support::db_server::kind_postgresql);
   dlg.getSourceBox()->setCurrentIndex(bPostgres ? desktop::import_db_dialog::source_postgresql : desktop::import_db_dialog::source_mariadb);
   dlg.findChild<QLineEdit *>("m_txtHost")->setText("127.0.0.1");
   dlg.findChild<QSpinBox *>("m_spnPort")->setValue(pServer->getPort());
   dlg.findChild<QLineEdit *>("m_txtDatabase")->setText("dialog");
   dlg.findChild<QLineEdit *>("m_txtUser")->setText(db_support::db_server::k_sUser);
   dlg.findChild<QLineEdit *>("m_txtPassword")->setText("wrong");
   dlg.getProjectEdit()->setText(m_dir.filePath("item.tavrel"));
   dlg.getPreviewButton()->click();
   EXPECT_TRUE(dlg.getPreview()->toPlainText().contains("error: cannot connect")) << dlg.getPreview()->toPlainText().toStdString();
   dlg.findChild<QLineEdit *>("m_txtPassword")->setText(db_support::db_server::k_sPassword);
   dlg.getPreviewButton()->click();
   EXPECT_EQ(dlg.getSummary(), QStringList({ "+ entity Item (table item)" })) << dlg.getPreview()->toPlainText().toStdString();
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportDialogServer, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportDialogServer, ::testing::Values(db_support::db_server::kind_mariadb));

} // namespace
