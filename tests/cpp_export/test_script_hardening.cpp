// A user script that never ends, fills memory or fails everywhere must end the export with a
// message saying so, and must never leave a generated file half-written.

#include "builder_test_support.h"

using namespace builder_test;

namespace {

const QByteArray k_model = R"json({
  "name": "shop",
  "entities": [
    {"name": "Person", "properties": [{"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString"}]}
  ],
  "enumerations": [{"name": "Color", "values": [{"key": "Red", "value": "1"}]}]
})json";

// Short, for the scripts that never end: they overrun it however busy the machine is.
const int k_timeLimitMs = 300;
// For the scripts that do end: a wall-clock limit as short as the one above is overrun by a
// plain call when the test process waits for a processor on a loaded machine.
const int k_roomyTimeLimitMs = 120000;

const char * const k_loopScript = "function execute(params) { for (;;) { } }\n";
const char * const k_throwScript = "function execute(params) { throw new Error('refused ' + params.action); }\n";
// Keeps everything it makes, so that the garbage collector can't help.
const char * const k_hoardScript =
   "var kept = [];\n"
   "function execute(params) { for (var i = 0; ; ++i) { kept.push('fragment ' + params.action + ' ' + i); } }\n";

QString interruptedByTime(const QString & action)
{
   return QString("Custom javascript execution interrupted : time limit of %1 ms exceeded for action '%2'").arg(k_timeLimitMs).arg(action);
}

// A call after the engine was dropped for a time overrun in the action given first.
QString stoppedByTime(const QString & overrunAction, const QString & action)
{
   return QString("Custom javascript stopped earlier (time limit of %1 ms exceeded for action '%2') : cannot execute action '%3'")
      .arg(k_timeLimitMs).arg(overrunAction, action);
}

class ScriptHardening : public export_fixture
{
protected:
   model::project_ptr m_pProject;
   // The generated files before the export under test (empty for a first export).
   QMap<QString, QByteArray> m_mapBefore;

   void SetUp() override
   {
      export_fixture::SetUp();
      m_pProject = parseModel(k_model);
      ASSERT_TRUE(m_pProject);
   }

   // The time limit is set before loading since the top level runs under it.
   std::shared_ptr<tools::custom_javascript> loadScript(const QString & source, int timeLimitMs, int memoryLimitMb = 512)
   {
      const QString path = m_tmp.path() + "/script.js";
      EXPECT_TRUE(writeText(path, source));
      auto pScript = std::make_shared<tools::custom_javascript>();
      pScript->setTimeLimit(timeLimitMs);
      pScript->setMemoryLimit(memoryLimitMb);
      const zy::ZyBool ok = pScript->initEngine(path, & m_plugin);
      EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
      m_plugin.setCustomScript(pScript);
      return pScript;
   }

   // A complete export without script, whose files the failing export must leave alone.
   void exportOnceWithoutScript()
   {
      m_plugin.setCustomScript(nullptr);
      const zy::ZyBool ok = exportProject(* m_pProject);
      ASSERT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
      m_mapBefore = fileContents(m_sExportDir);
      ASSERT_TRUE(m_mapBefore.contains("include/Person.gen.h"));
      ASSERT_TRUE(m_mapBefore.contains("shop.gen.pri"));
      m_lstMessages.clear();
   }

   QStringList errorMessages() const
   {
      QStringList lst;
      for (const message & m : m_lstMessages) { if (m.kind != 1) { lst.append(m.text); } }
      return lst;
   }

   // Every file is as before the export, or is a class file holding exactly the error the
   // builder reported for it (the pipeline's rule for class files): nothing in between, and no
   // temporary file left beside them.
   void expectNoPartialFile(const QStringList & classFilesWithError)
   {
      const QMap<QString, QByteArray> after = fileContents(m_sExportDir);
      const QStringList errors = errorMessages();
      for (auto itr = after.cbegin(); itr != after.cend(); ++itr)
      {
         const QString & file = itr.key();
         if (classFilesWithError.contains(file))
         {
            EXPECT_TRUE(errors.contains(QString::fromUtf8(itr.value()))) << file.toStdString() << " holds: " << itr.value().left(200).toStdString();
            continue;
         }
         ASSERT_TRUE(m_mapBefore.contains(file)) << "new file " << file.toStdString();
         EXPECT_EQ(itr.value(), m_mapBefore.value(file)) << file.toStdString();
      }
      for (auto itr = m_mapBefore.cbegin(); itr != m_mapBefore.cend(); ++itr)
      { EXPECT_TRUE(after.contains(itr.key())) << "lost file " << itr.key().toStdString(); }
      for (const QString & file : classFilesWithError) { EXPECT_TRUE(after.contains(file)) << file.toStdString(); }
   }
};

} // namespace

TEST_F(ScriptHardening, EndlessLoopStopsAFirstExportAtTheFirstCustomFile)
{
   std::shared_ptr<tools::custom_javascript> pScript = loadScript(k_loopScript, k_timeLimitMs);
   const zy::ZyBool ok = exportProject(* m_pProject);
   ASSERT_FALSE(static_cast<bool>(ok));
   // The export's start notice overran (its answer is not used); the engine was dropped then.
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("custom/include/Person.h") + "' :\n"
                            + stoppedByTime("PLUGIN_EXPORT_START", "INCLUDE_MACRO_GUARD"));
   // Class files hold the error, as the pipeline writes it; nothing else was written.
   EXPECT_EQ(outText("include/Person.gen.h"), stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY"));
   EXPECT_EQ(outText("src/Person.gen.cpp"), stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY"));
   expectNoPartialFile({ "include/Person.gen.h", "src/Person.gen.cpp" });
   EXPECT_EQ(errorMessages(), QStringList({ stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY"),
                                            stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY") }));
   EXPECT_FALSE(pScript->isLoaded());
}

// An endless loop costs one time limit per export, not one per generated fragment: only the
// first call reaches the script, every later one fails at once with the reason.
TEST_F(ScriptHardening, EndlessLoopIsRunOnceAndTheEngineDropped)
{
   exportOnceWithoutScript();
   std::shared_ptr<tools::custom_javascript> pScript =
      loadScript("function execute(params) { tavrel.log('entered ' + params.action); for (;;) { } }\n", k_timeLimitMs);
   QStringList lstEntered;
   QObject::connect(pScript.get(), & tools::custom_javascript::onScriptLog,
                    [& lstEntered](const QString & action, const QString & text) { lstEntered.append(action + " : " + text); });
   const zy::ZyBool ok = exportProject(* m_pProject);
   ASSERT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(lstEntered, QStringList({ "PLUGIN_EXPORT_START : entered PLUGIN_EXPORT_START" }));
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("shop.gen.pri") + "' :\n"
                            + stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_PRO_FILE_CREATED_BY"));
   EXPECT_EQ(errorMessages(), QStringList({ stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY"),
                                            stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY"),
                                            stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY"),
                                            stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_FILE_CREATED_BY") }));
   expectNoPartialFile({ "include/Person.gen.h", "src/Person.gen.cpp", "include/Color.gen.h", "src/Color.gen.cpp" });
   EXPECT_FALSE(pScript->isLoaded());
}

TEST_F(ScriptHardening, EndlessLoopLeavesTheFilesOfAnEarlierExportWhole)
{
   exportOnceWithoutScript();
   loadScript(k_loopScript, k_timeLimitMs);
   const zy::ZyBool ok = exportProject(* m_pProject);
   ASSERT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("shop.gen.pri") + "' :\n"
                            + stoppedByTime("PLUGIN_EXPORT_START", "COMMENT_PRO_FILE_CREATED_BY"));
   expectNoPartialFile({ "include/Person.gen.h", "src/Person.gen.cpp", "include/Color.gen.h", "src/Color.gen.cpp" });
   EXPECT_NE(m_lstMessages.last().text, "All entities have been exported to a C++ project : '" + m_sExportDir + "'");
}

TEST_F(ScriptHardening, ThrowingInEveryActionEndsTheExportWithTheScriptError)
{
   exportOnceWithoutScript();
   loadScript(k_throwScript, k_roomyTimeLimitMs);
   const zy::ZyBool ok = exportProject(* m_pProject);
   ASSERT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("shop.gen.pri") + "' :\n"
                            "Error: refused COMMENT_PRO_FILE_CREATED_BY (line 1)");
   EXPECT_EQ(outText("include/Person.gen.h"), QString("Error: refused COMMENT_FILE_CREATED_BY (line 1)"));
   expectNoPartialFile({ "include/Person.gen.h", "src/Person.gen.cpp", "include/Color.gen.h", "src/Color.gen.cpp" });
}

TEST_F(ScriptHardening, UnboundedAllocationIsStoppedByTheMemoryLimitAndTheEngineDropped)
{
   exportOnceWithoutScript();
   // The time limit is far off: only the memory check can end the first call this early.
   std::shared_ptr<tools::custom_javascript> pScript = loadScript(k_hoardScript, k_roomyTimeLimitMs, 64);
   const zy::ZyBool ok = exportProject(* m_pProject);
   ASSERT_FALSE(static_cast<bool>(ok));
   // The first call is the export's start notice; every later call fails at once, saying why.
   const QString reason = "memory limit of 64 MB exceeded for action 'PLUGIN_EXPORT_START'";
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("shop.gen.pri") + "' :\n"
                            "Custom javascript stopped earlier (" + reason + ") : cannot execute action 'COMMENT_PRO_FILE_CREATED_BY'");
   EXPECT_EQ(outText("include/Person.gen.h"),
             "Custom javascript stopped earlier (" + reason + ") : cannot execute action 'COMMENT_FILE_CREATED_BY'");
   expectNoPartialFile({ "include/Person.gen.h", "src/Person.gen.cpp", "include/Color.gen.h", "src/Color.gen.cpp" });
   EXPECT_FALSE(pScript->isLoaded());
}

TEST_F(ScriptHardening, AnswerLongerThanTheCapIsRefused)
{
   exportOnceWithoutScript();
   loadScript(QString("function execute(params) {\n"
                      "   if (params.action === 'PROJECT_NAME') { return 'x'.repeat(%1); }\n"
                      "}\n").arg(tools::custom_javascript::maxResultLength() + 1), k_roomyTimeLimitMs);
   const zy::ZyBool ok = exportProject(* m_pProject);
   ASSERT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), "An error occurred with custom javascript for file '" + out("shop.gen.pri") + "' :\n"
                            + QString("Custom javascript answer too long for action 'PROJECT_NAME' : %1 characters (at most %2)")
                                 .arg(tools::custom_javascript::maxResultLength() + 1).arg(tools::custom_javascript::maxResultLength()));
   expectNoPartialFile({ "src/Person.gen.cpp", "include/Color.gen.h", "src/Color.gen.cpp" });
}

TEST(ScriptHardeningEngine, UnboundedAllocationAtLoadIsStopped)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString path = tmp.path() + "/hoard.js";
   ASSERT_TRUE(writeText(path, "var kept = [];\nfor (var i = 0; ; ++i) { kept.push('line ' + i); }\nfunction execute(params) { }\n"));
   tools::custom_javascript js;
   js.setTimeLimit(k_roomyTimeLimitMs);
   js.setMemoryLimit(64);
   const zy::ZyBool ok = js.initEngine(path, nullptr);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(ok.getDesc(), QString("Custom javascript execution interrupted : memory limit of 64 MB exceeded while loading '%1'").arg(path));
   EXPECT_FALSE(js.isLoaded());
}

TEST(ScriptHardeningEngine, ReloadAfterTheMemoryLimitGivesAWorkingEngine)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString path = tmp.path() + "/hoard.js";
   ASSERT_TRUE(writeText(path, "var kept = [];\n"
                               "function execute(params) {\n"
                               "   if (params.action === 'HOARD') { for (var i = 0; ; ++i) { kept.push('line ' + i); } }\n"
                               "   return 'kept ' + kept.length;\n"
                               "}\n"));
   tools::custom_javascript js;
   js.setTimeLimit(k_roomyTimeLimitMs);
   js.setMemoryLimit(64);
   ASSERT_TRUE(static_cast<bool>(js.initEngine(path, nullptr)));
   QHash<QString, QVariant> params;
   params.insert("action", "HOARD");
   EXPECT_EQ(js.executeScript(nullptr, nullptr, nullptr, nullptr, params).getDesc(),
             QString("Custom javascript execution interrupted : memory limit of 64 MB exceeded for action 'HOARD'"));
   params.insert("action", "NEXT");
   EXPECT_EQ(js.executeScript(nullptr, nullptr, nullptr, nullptr, params).getDesc(),
             QString("Custom javascript stopped earlier (memory limit of 64 MB exceeded for action 'HOARD') : cannot execute action 'NEXT'"));

   // A new load starts from a fresh engine, with nothing kept.
   ASSERT_TRUE(static_cast<bool>(js.initEngine(path, nullptr)));
   const zy::ZyBool next = js.executeScript(nullptr, nullptr, nullptr, nullptr, params);
   ASSERT_TRUE(static_cast<bool>(next)) << next.getDesc().toStdString();
   EXPECT_EQ(next.getDesc(), QString("kept 0"));
}

// Calls that each stay under their own limits still add up to a limit for the whole export.
TEST(ScriptHardeningEngine, ManyCallsUnderTheirLimitStopAtTheTotalTime)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString path = tmp.path() + "/slow.js";
   ASSERT_TRUE(writeText(path, "function execute(params) {\n"
                               "   var end = Date.now() + 100;\n"
                               "   while (Date.now() < end) { }\n"
                               "   return 'slow';\n"
                               "}\n"));
   tools::custom_javascript js;
   js.setTimeLimit(k_roomyTimeLimitMs);
   js.setTotalTimeLimit(350);
   ASSERT_TRUE(static_cast<bool>(js.initEngine(path, nullptr)));
   QHash<QString, QVariant> params;
   int iCalls = 0;
   zy::ZyBool last(true);
   // Each call takes at least 100 ms, so the fifth cannot start within 350 ms.
   for (; (iCalls < 10) && last; ++iCalls)
   {
      params.insert("action", QString("CALL_%1").arg(iCalls));
      last = js.executeScript(nullptr, nullptr, nullptr, nullptr, params);
   }
   ASSERT_FALSE(static_cast<bool>(last));
   EXPECT_LE(iCalls, 5);
   EXPECT_TRUE(last.getDesc().startsWith("Custom javascript execution interrupted : total time limit of 350 ms for the calls of one export exceeded at action 'CALL_"))
      << last.getDesc().toStdString();
   EXPECT_FALSE(js.isLoaded());
   // A new load (the next export) starts with the whole total again.
   ASSERT_TRUE(static_cast<bool>(js.initEngine(path, nullptr)));
   EXPECT_TRUE(static_cast<bool>(js.executeScript(nullptr, nullptr, nullptr, nullptr, params)));
}

TEST(ScriptHardeningEngine, MemoryKeptAcrossCallsStopsAtTheTotalMemory)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString path = tmp.path() + "/keep.js";
   // About 40 MB more at each call, kept in a global: each call is under its own limit.
   ASSERT_TRUE(writeText(path, "var kept = [];\n"
                               "function execute(params) {\n"
                               "   var a = new Array(5 * 1024 * 1024);\n"
                               "   for (var i = 0; i < a.length; ++i) { a[i] = i + 0.5; }\n"
                               "   kept.push(a);\n"
                               "   return 'kept ' + kept.length;\n"
                               "}\n"));
   tools::custom_javascript js;
   js.setTimeLimit(k_roomyTimeLimitMs);
   js.setMemoryLimit(200);
   js.setTotalMemoryLimit(150);
   ASSERT_TRUE(static_cast<bool>(js.initEngine(path, nullptr)));
   QHash<QString, QVariant> params;
   int iCalls = 0;
   zy::ZyBool last(true);
   for (; (iCalls < 40) && last; ++iCalls)
   {
      params.insert("action", QString("CALL_%1").arg(iCalls));
      last = js.executeScript(nullptr, nullptr, nullptr, nullptr, params);
   }
   ASSERT_FALSE(static_cast<bool>(last)) << "40 calls kept about 1.6 GB without a stop";
   EXPECT_TRUE(last.getDesc().startsWith("Custom javascript execution interrupted : total memory limit of 150 MB for one export exceeded at action 'CALL_"))
      << last.getDesc().toStdString();
   EXPECT_FALSE(js.isLoaded());
}

namespace {

// Loads a script with the short time limit; the load's own result.
zy::ZyBool loadEngine(tools::custom_javascript & js, const QTemporaryDir & tmp, const QString & source)
{
   const QString path = tmp.path() + "/script.js";
   EXPECT_TRUE(writeText(path, source));
   js.setTimeLimit(k_timeLimitMs);
   return js.initEngine(path, nullptr);
}

QString callAction(tools::custom_javascript & js, const QString & action)
{
   QHash<QString, QVariant> params;
   params.insert("action", action);
   params.insert("default_value", "kept");
   return js.executeScript(nullptr, nullptr, nullptr, nullptr, params).getDesc();
}

} // namespace

// Turning the answer or a thrown value into text runs script code too: it must not escape the
// time limit and hang the export.
TEST(ScriptHardeningEngine, AnswerWhoseTextNeverEndsIsStopped)
{
   QTemporaryDir tmp;
   tools::custom_javascript js;
   ASSERT_TRUE(static_cast<bool>(loadEngine(js, tmp, "function execute(params) { return { toString: function () { for (;;) { } } }; }\n")));
   EXPECT_EQ(callAction(js, "CLASS_NAME"), interruptedByTime("CLASS_NAME"));
}

TEST(ScriptHardeningEngine, ThrownValueWhoseTextNeverEndsIsStopped)
{
   QTemporaryDir tmp;
   tools::custom_javascript js;
   ASSERT_TRUE(static_cast<bool>(loadEngine(js, tmp, "function execute(params) {\n"
                                                     "   if (params.action === 'A') { throw { toString: function () { for (;;) { } } }; }\n"
                                                     "   throw { toString: function () { return 'plain'; }, get lineNumber() { for (;;) { } } };\n"
                                                     "}\n")));
   EXPECT_EQ(callAction(js, "A"), interruptedByTime("A"));
   // The overrun dropped the engine: a fresh one for the second case.
   ASSERT_TRUE(static_cast<bool>(loadEngine(js, tmp, "function execute(params) {\n"
                                                     "   throw { toString: function () { return 'plain'; }, get lineNumber() { for (;;) { } } };\n"
                                                     "}\n")));
   EXPECT_EQ(callAction(js, "B"), interruptedByTime("B"));
}

TEST(ScriptHardeningEngine, LoadWhoseErrorTextOrExecuteNeverEndsIsStopped)
{
   QTemporaryDir tmp;
   const QString path = tmp.path() + "/script.js";
   const QString timeout = QString("Custom javascript execution interrupted : time limit of %1 ms exceeded while loading '%2'").arg(k_timeLimitMs).arg(path);
   tools::custom_javascript js;
   EXPECT_EQ(loadEngine(js, tmp, "throw { toString: function () { for (;;) { } } };\n").getDesc(), timeout);
   EXPECT_EQ(loadEngine(js, tmp, "Object.defineProperty(this, 'execute', { get: function () { for (;;) { } } });\n").getDesc(), timeout);
   EXPECT_FALSE(js.isLoaded());
}
