#include <QDirIterator>
#include <QFile>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QStatusBar>

#include <gtest/gtest.h>

#include "desktop/script_debugger.h"
#include "test_gui_support.h"
#include "script/custom_javascript.h"

namespace {

using gui_test::GuiFixture;

class GuiExport : public GuiFixture { };

// Every file under root by relative path, with the dated banner line made comparable.
QMap<QString, QString> readTree(const QString & root)
{
   static const QRegularExpression rxDate("\\(\\d{4}/\\d{2}/\\d{2} \\d{2}:\\d{2}\\)");
   QMap<QString, QString> files;
   QDirIterator itr(root, QDir::Files, QDirIterator::Subdirectories);
   while (itr.hasNext())
   {
      const QString path = itr.next();
      QStringList lines = QString::fromUtf8(test_support::readAll(path)).split('\n');
      for (QString & line : lines) { if (line.contains("File created by ")) { line.replace(rxDate, "(DATE)"); } }
      files.insert(QDir(root).relativeFilePath(path), lines.join('\n'));
   }
   return files;
}

QMap<QString, QVariant> exportSettings()
{
   return { { "CPP_EXPORT_PATH", QString("out") },
            { "CPP_TEMPLATE", QVariant(static_cast<qint32>(1)) },
            { "RELATIVE_PATH_LUMOR", false },
            { "GENERATE_CUSTOM_FILES", true },
            { "GENERATE_PIMPL", true },
            { "CUSTOM_JAVASCRIPT", QString("user_script.js") } };
}

TEST_F(GuiExport, WritesTheSameTreeAsTheCommandLineHost)
{
   ASSERT_NE(plugin(), nullptr);
   const QString guid = plugin()->getGuid();
   const QString lumor = m_tmp.filePath("lumor");
   QDir().mkpath(lumor);
   const QString modelCli = copyShop("cli");
   const QString modelGui = copyShop("gui");
   const QByteArray script = test_support::readAll(test_support::examplePath("user_script.js"));
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("cli/user_script.js"), script));
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("gui/user_script.js"), script));

   // The same stored settings in both projects.
   ASSERT_TRUE(context::ctx_project::openProject(modelCli).getValue());
   ASSERT_TRUE(storeSettings(guid, exportSettings()));
   context::ctx_project::closeProject();
   ASSERT_TRUE(m_pWnd->openProject(modelGui).getValue());
   ASSERT_TRUE(storeSettings(guid, exportSettings()));

   context::ctx_global::initGlobalParams(lumor);
   zy::ZyBool result = m_pWnd->doActExport();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();
   EXPECT_FALSE(m_pWnd->isExecutingPlugin());
   // The missing export directory was offered for creation and the default (Yes) taken.
   ASSERT_FALSE(tools::message_box::history().isEmpty());
   EXPECT_EQ(tools::message_box::history().first().kind, tools::message_box::kind_question);
   EXPECT_EQ(tools::message_box::history().first().answer, QMessageBox::Yes);

   test_support::cli_options options;
   options.configHome = m_tmp.filePath("config");
   const test_support::cli_result run = test_support::runTavrel({ "export", m_tmp.filePath("cli/shop.tavrel"), "--lumor-path", lumor, "--yes" }, options);
   ASSERT_EQ(run.code, 0) << run.err.toStdString();

   const QMap<QString, QString> gui = readTree(m_tmp.filePath("gui/out"));
   const QMap<QString, QString> cli = readTree(m_tmp.filePath("cli/out"));
   EXPECT_EQ(gui.keys(), cli.keys());
   // One header and one source per entity and enumeration, their custom files, the project files.
   EXPECT_GE(gui.size(), 40);
   EXPECT_TRUE(gui.contains("include/shop_sales_Order.gen.h"));
   EXPECT_TRUE(gui.contains("custom/src/shop_sales_Order.cpp"));
   for (auto itr = gui.cbegin(); itr != gui.cend(); ++itr)
   {
      EXPECT_EQ(itr.value().toStdString(), cli.value(itr.key()).toStdString()) << itr.key().toStdString();
   }
   // The user script ran in both.
   EXPECT_TRUE(gui.value("include/shop_sales_Order.gen.h").contains("// End of generated header shop_sales_Order.gen.h"));
   // The progress lines reached the message area.
   bool bExported = false;
   QListWidget * pList = m_pWnd->getMessageList();
   for (int i = 0; i < pList->count(); ++i) { if (pList->item(i)->text().contains("All entities have been exported")) { bExported = true; } }
   EXPECT_TRUE(bExported);
   // The host's summary reaches the message area and the status bar.
   const QRegularExpression rxSummary("^\\d+ files: \\d+ written, 0 unchanged, 0 removed \\(\\d+\\.\\d\\d s\\)$");
   bool bSummary = false;
   for (int i = 0; i < pList->count(); ++i) { if (rxSummary.match(pList->item(i)->toolTip()).hasMatch()) { bSummary = true; } }
   EXPECT_TRUE(bSummary);
   EXPECT_TRUE(rxSummary.match(m_pWnd->statusBar()->currentMessage()).hasMatch()) << m_pWnd->statusBar()->currentMessage().toStdString();
}

class GuiDebugger : public GuiFixture { };

const char * const k_sDebugScript =
   "function execute(params) {\n"
   "   if (params.action === 'PLUGIN_EXPORT_START') { tavrel.log('start of ' + params.project.name); }\n"
   "   if (params.action === 'PLUGIN_EXPORT_END') { tavrel.breakpoint('end of export'); }\n"
   "   return undefined;\n"
   "}\n";

TEST_F(GuiDebugger, ListsEveryCallOfAnExportAsItHappens)
{
   ASSERT_NE(plugin(), nullptr);
   ASSERT_TRUE(m_pWnd->openProject(copyShop("p")).getValue());
   QDir().mkpath(m_tmp.filePath("p/out"));
   QDir().mkpath(m_tmp.filePath("lumor"));
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "CPP_EXPORT_PATH", QString("out") } }));
   context::ctx_global::initGlobalParams(m_tmp.filePath("lumor"));
   const QString file = m_tmp.filePath("debug.js");
   ASSERT_TRUE(test_support::writeAll(file, k_sDebugScript));

   // As the settings dialog's debug button leaves it.
   auto pScript = std::make_shared<tools::custom_javascript>();
   ASSERT_TRUE(pScript->initEngine(file, plugin()).getValue());
   ASSERT_TRUE(pScript->runDebugger().getValue());
   plugin()->setCustomScript(pScript);

   zy::ZyBool result = m_pWnd->doActExport();
   ASSERT_TRUE(result.getValue()) << result.getDesc().toStdString();

   desktop::script_debugger * pDebugger = m_pWnd->getDebugger();
   ASSERT_NE(pDebugger, nullptr);
   EXPECT_TRUE(pDebugger->isVisible());
   EXPECT_EQ(pDebugger->getScript(), pScript.get());
   const int iCalls = pDebugger->getCallCount();
   EXPECT_GT(iCalls, 100);
   EXPECT_EQ(iCalls, pScript->getCallHistory().size());
   QTreeWidget * pCalls = pDebugger->getCallList();
   EXPECT_EQ(pCalls->topLevelItem(0)->text(1), "PLUGIN_EXPORT_START");
   EXPECT_EQ(pCalls->topLevelItem(iCalls - 1)->text(1), "PLUGIN_EXPORT_END");
   EXPECT_TRUE(pDebugger->getLogText().contains("start of SHOP")) << pDebugger->getLogText().toStdString();

   // The breakpoint held the export in a prompt while every earlier call was already listed.
   EXPECT_EQ(pDebugger->getBreakpointCount(), 1);
   bool bPrompt = false;
   for (const auto & r : tools::message_box::history())
   {
      if (r.text.contains("end of export"))
      {
         bPrompt = true;
         EXPECT_TRUE(r.text.contains("Calls so far : " + QString::number(iCalls - 1))) << r.text.toStdString();
      }
   }
   EXPECT_TRUE(bPrompt);

   // Closing the window ends debugging: the next export runs the script normally.
   pDebugger->close();
   EXPECT_FALSE(pScript->isDebugging());
}

TEST_F(GuiDebugger, ShowsTheCallsMadeBeforeItWasAttached)
{
   const QString file = m_tmp.filePath("debug.js");
   ASSERT_TRUE(test_support::writeAll(file, "function execute(params) { return params.default_value + '!'; }\n"));
   tools::custom_javascript script;
   ASSERT_TRUE(script.initEngine(file, nullptr).getValue());
   ASSERT_TRUE(script.runDebugger().getValue());
   ASSERT_TRUE(script.executeScript(nullptr, nullptr, nullptr, nullptr, { { "action", "CLASS_NAME" }, { "default_value", "Order" } }).getValue());

   desktop::script_debugger debugger;
   debugger.attach(& script);
   ASSERT_EQ(debugger.getCallCount(), 1);
   ASSERT_TRUE(script.executeScript(nullptr, nullptr, nullptr, nullptr, { { "action", "NAMESPACE_BEGIN" }, { "default_value", "ns" } }).getValue());
   ASSERT_EQ(debugger.getCallCount(), 2);
   QTreeWidgetItem * pItem = debugger.getCallList()->topLevelItem(0);
   EXPECT_EQ(pItem->text(1), "CLASS_NAME");
   EXPECT_EQ(pItem->text(2), "Order");
   EXPECT_EQ(pItem->text(3), "Order!");
   EXPECT_EQ(pItem->text(4), "ok");

   // Selecting a call shows its whole texts, at the first place where the answer differs.
   ASSERT_TRUE(debugger.selectCall("NAMESPACE_BEGIN", true));
   QPlainTextEdit * pInput = debugger.findChild<QPlainTextEdit *>("m_txtInput");
   QPlainTextEdit * pAnswer = debugger.findChild<QPlainTextEdit *>("m_txtAnswer");
   ASSERT_TRUE(pInput && pAnswer);
   EXPECT_EQ(pInput->toPlainText(), "ns");
   EXPECT_EQ(pAnswer->toPlainText(), "ns!");
   EXPECT_EQ(pAnswer->textCursor().position(), 2);
   EXPECT_FALSE(debugger.selectCall("FULL_CLASS_NAME", false));
}

TEST(GuiScriptWatcher, ReportsEnginesThatStartDebuggingWhileItLives)
{
   QTemporaryDir tmp;
   const QString file = tmp.filePath("w.js");
   ASSERT_TRUE(test_support::writeAll(file, "function execute(params) { return undefined; }\n"));
   QList<tools::custom_javascript *> lstSeen;
   {
      desktop::script_watcher watcher;
      QObject::connect(& watcher, & desktop::script_watcher::debuggingStarted, [&](tools::custom_javascript * p) { lstSeen << p; });
      auto pCreatedWhileWatching = std::make_shared<tools::custom_javascript>();
      ASSERT_TRUE(pCreatedWhileWatching->initEngine(file, nullptr).getValue());
      EXPECT_TRUE(lstSeen.isEmpty());
      ASSERT_TRUE(pCreatedWhileWatching->runDebugger().getValue());
      ASSERT_EQ(lstSeen.size(), 1);
      EXPECT_EQ(lstSeen.first(), pCreatedWhileWatching.get());
   }
   auto pLater = std::make_shared<tools::custom_javascript>();
   ASSERT_TRUE(pLater->initEngine(file, nullptr).getValue());
   ASSERT_TRUE(pLater->runDebugger().getValue());
   EXPECT_EQ(lstSeen.size(), 1);
}

} // namespace
