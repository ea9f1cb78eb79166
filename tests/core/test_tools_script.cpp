#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "context/ctx_project.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "test_support.h"
#include "script/custom_javascript.h"

using tools::custom_javascript;

namespace {

class ToolsScript : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;

   void SetUp() override { ASSERT_TRUE(m_dir.isValid()); context::ctx_project::closeProject(); }
   void TearDown() override { context::ctx_project::closeProject(); }

   QString writeScript(const QString & name, const QString & code)
   {
      const QString path = m_dir.filePath(name);
      EXPECT_TRUE(test_support::writeAll(path, code.toUtf8()));
      return path;
   }

   static QHash<QString, QVariant> params(const QString & action, const QString & defaultValue)
   {
      QHash<QString, QVariant> h;
      h.insert("plugin_name", "TavrelCppExport");
      h.insert("output_location", "/tmp/out");
      h.insert("current_file", "/tmp/out/include/Order.gen.h");
      h.insert("default_value", defaultValue);
      h.insert("action", action);
      return h;
   }
};

} // namespace

TEST_F(ToolsScript, ReturnedTextIsTheAnswer)
{
   custom_javascript js;
   const QString file = writeScript("a.js", "function execute(params) {\n"
                                            "   if (params.action === 'CLASS_NAME') { return 'My' + params.default_value; }\n"
                                            "   return 42;\n"
                                            "}\n");
   const zy::ZyBool init = js.initEngine(file, nullptr);
   ASSERT_TRUE(init.getValue()) << init.getDesc().toStdString();
   EXPECT_TRUE(js.isLoaded());

   zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("CLASS_NAME", "Order"));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("MyOrder"));

   r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("OTHER", "x"));
   ASSERT_TRUE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("42"));
}

TEST_F(ToolsScript, UndefinedKeepsTheDefaultValue)
{
   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("b.js", "function execute(params) { var unused = 1; }\n"), nullptr).getValue());
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("CLASS_NAME", "class Order {};"));
   ASSERT_TRUE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("class Order {};"));
}

TEST_F(ToolsScript, ThrownErrorFailsWithItsLine)
{
   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("c.js", "function execute(params) {\n"
                                                 "   var a = 1;\n"
                                                 "   throw new Error('no way for ' + params.action);\n"
                                                 "}\n"), nullptr).getValue());
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("CLASS_NAME", "x"));
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Error: no way for CLASS_NAME (line 3)"));
}

TEST_F(ToolsScript, RuntimeTypeErrorNamesItsKind)
{
   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("c2.js", "function execute(params) {\n"
                                                  "   return params.nothing.deeper;\n"
                                                  "}\n"), nullptr).getValue());
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("A", "x"));
   EXPECT_FALSE(r.getValue());
   EXPECT_TRUE(r.getDesc().startsWith("TypeError: ")) << r.getDesc().toStdString();
   EXPECT_TRUE(r.getDesc().endsWith(" (line 2)")) << r.getDesc().toStdString();
}

TEST_F(ToolsScript, ThrownPlainValueIsAFailureToo)
{
   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("c3.js", "function execute(params) { throw 'plain text'; }\n"), nullptr).getValue());
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("A", "x"));
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("plain text"));
}

TEST_F(ToolsScript, EndlessRecursionFailsCleanly)
{
   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("c4.js", "function deeper(n) { return deeper(n + 1) + 1; }\n"
                                                  "function execute(params) {\n"
                                                  "   if (params.action === 'B') { return 'fine'; }\n"
                                                  "   return deeper(0);\n"
                                                  "}\n"), nullptr).getValue());
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("A", "x"));
   EXPECT_FALSE(r.getValue());
   EXPECT_TRUE(r.getDesc().startsWith("RangeError: ")) << r.getDesc().toStdString();
   // The engine is still fine afterwards.
   const zy::ZyBool next = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("B", "x"));
   EXPECT_TRUE(next.getValue());
   EXPECT_EQ(next.getDesc(), QString("fine"));
}

TEST_F(ToolsScript, SyntaxErrorAtLoadGivesItsLine)
{
   custom_javascript js;
   const QString file = writeScript("d.js", "function execute(params) {\n"
                                            "   var x = 1;\n"
                                            "   return x +* 2;\n"
                                            "}\n");
   const zy::ZyBool r = js.initEngine(file, nullptr);
   EXPECT_FALSE(r.getValue());
   const QString prefix = QString("Custom javascript error in '%1' at line 3 : SyntaxError").arg(file);
   EXPECT_TRUE(r.getDesc().startsWith(prefix)) << r.getDesc().toStdString();
   EXPECT_FALSE(js.isLoaded());
}

TEST_F(ToolsScript, MissingFileCannotBeRead)
{
   custom_javascript js;
   const QString file = m_dir.filePath("missing.js");
   const zy::ZyBool r = js.initEngine(file, nullptr);
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Cannot read custom javascript file : %1").arg(QDir::cleanPath(file)));
}

TEST_F(ToolsScript, RelativeFileIsReadFromTheProjectDirectory)
{
   writeScript("rel.js", "function execute(params) { return 'rel'; }\n");
   auto project = std::make_shared<model::project>();
   project->setName("P");
   project->setFilePath(m_dir.filePath("p.tavrel"));
   project->setLocation(m_dir.path());
   context::ctx_project::setProject(project);

   custom_javascript js;
   ASSERT_TRUE(js.initEngine("rel.js", nullptr).getValue());
   EXPECT_EQ(js.getFile(), QString("rel.js"));
   EXPECT_EQ(js.executeScript(nullptr, nullptr, nullptr, nullptr, params("A", "x")).getDesc(), QString("rel"));
}

TEST_F(ToolsScript, ScriptWithoutExecuteIsRefused)
{
   custom_javascript js;
   const QString file = writeScript("e.js", "var execute = 12;\n");
   const zy::ZyBool r = js.initEngine(file, nullptr);
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("No function 'execute(params)' defined in custom javascript file : %1").arg(file));
}

TEST_F(ToolsScript, CallWithoutEngineFails)
{
   custom_javascript js;
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("CLASS_NAME", "x"));
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("No custom javascript loaded : cannot execute action 'CLASS_NAME'"));
}

TEST_F(ToolsScript, RunawayLoopIsStoppedAndTheEngineDroppedUntilReloaded)
{
   custom_javascript js;
   js.setTimeLimit(300);
   const QString file = writeScript("f.js", "function execute(params) {\n"
                                            "   tavrel.log('entered');\n"
                                            "   if (params.action === 'LOOP') { while (true) { try { } catch (e) { } } }\n"
                                            "   return 'done ' + params.action;\n"
                                            "}\n");
   ASSERT_TRUE(js.initEngine(file, nullptr).getValue());
   QStringList entered;
   QObject::connect(& js, & custom_javascript::onScriptLog, [& entered](const QString & action, const QString &) { entered.append(action); });
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("LOOP", "x"));
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Custom javascript execution interrupted : time limit of 300 ms exceeded for action 'LOOP'"));

   // Later calls never reach the script: they fail at once, saying why.
   for (const QString & action : { QString("CLASS_NAME"), QString("LOOP"), QString("PROJECT_NAME") })
   {
      const zy::ZyBool next = js.executeScript(nullptr, nullptr, nullptr, nullptr, params(action, "x"));
      EXPECT_FALSE(next.getValue());
      EXPECT_EQ(next.getDesc(), QString("Custom javascript stopped earlier (time limit of 300 ms exceeded for action 'LOOP') : cannot execute action '%1'").arg(action));
   }
   EXPECT_EQ(entered, QStringList({ "LOOP" }));
   EXPECT_FALSE(js.isLoaded());

   // Loading the file again gives a working engine.
   ASSERT_TRUE(js.initEngine(file, nullptr).getValue());
   const zy::ZyBool again = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("CLASS_NAME", "x"));
   ASSERT_TRUE(again.getValue()) << again.getDesc().toStdString();
   EXPECT_EQ(again.getDesc(), QString("done CLASS_NAME"));
}

TEST_F(ToolsScript, RunawayTopLevelIsStoppedAtLoad)
{
   custom_javascript js;
   js.setTimeLimit(300);
   const QString file = writeScript("g.js", "for (;;) { }\nfunction execute(params) { return 1; }\n");
   const zy::ZyBool r = js.initEngine(file, nullptr);
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Custom javascript execution interrupted : time limit of 300 ms exceeded while loading '%1'").arg(file));
}

TEST_F(ToolsScript, ParamsAndReadOnlyViewsAreReachable)
{
   auto project = std::make_shared<model::project>();
   project->setName("Shop");
   auto order = std::make_shared<model::entity>();
   order->setName("Order");
   order->setNamespace("shop");
   order->setTableName("t_order");
   order->setDescription("A customer order");
   order->setId(7);
   order->setMetaData("color", "blue");
   auto id = std::make_shared<model::property>();
   id->setName("id");
   id->setPrimaryKey(true);
   auto idType = std::make_shared<model::property_type>();
   idType->setPrimitiveType("long");
   id->setType(idType);
   id->setEntity(order);
   auto note = std::make_shared<model::property>();
   note->setName("note");
   note->setEntity(order);
   order->addProperty(id);
   order->addProperty(note);
   project->addEntity(order);
   auto status = std::make_shared<model::enumeration>();
   status->setName("Status");
   status->setNamespace("shop");
   status->addKeyValue("New", "0");
   status->addKeyValue("Paid", "1");
   project->addEnumeration(status);

   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("h.js",
      "var kept = null;\n"
      "function strictWrite(e) { 'use strict'; e.name = 'Hacked'; }\n"
      "function execute(params) {\n"
      "   if (params.action === 'VIEWS') {\n"
      "      return [params.plugin_name, params.output_location, params.current_file, params.default_value,\n"
      "              params.project.name, params.project.entities.join(','), params.project.enumerations.join(','),\n"
      "              params.entity.key, params.entity.id, params.entity.table_name, params.entity.description,\n"
      "              params.entity.properties.join(','), params.entity.primary_key, params.entity.meta.color,\n"
      "              params.property === null, params.enumeration === null].join('|');\n"
      "   }\n"
      "   if (params.action === 'ENUM') {\n"
      "      return params.enumeration.key + ':' + params.enumeration.values.map(function (v) { return v.key + '=' + v.value; }).join(',')\n"
      "             + ':' + (params.entity === null) + ':' + (params.project === null);\n"
      "   }\n"
      "   if (params.action === 'PROP') { return params.property.name + ':' + params.property.primitive_type + ':' + params.property.primary_key; }\n"
      "   if (params.action === 'KEEP') { kept = params.entity; return 'kept'; }\n"
      "   if (params.action === 'KEPT') { return kept.name + ':' + params.entity.name; }\n"
      "   if (params.action === 'JSON') { return JSON.stringify(params.enumeration); }\n"
      "   if (params.action === 'STRICT') { strictWrite(params.entity); return 'written'; }\n"
      "   params.entity.name = 'Hacked';\n"
      "   params.project.name = 'Hacked';\n"
      "   params.project.entities.push('x');\n"
      "   params.entity.meta.color = 'red';\n"
      "   return params.entity.name + ':' + params.project.name + ':' + params.entity.meta.color;\n"
      "}\n"), nullptr).getValue());

   zy::ZyBool r = js.executeScript(project.get(), order.get(), nullptr, nullptr, params("VIEWS", "dv"));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("TavrelCppExport|/tmp/out|/tmp/out/include/Order.gen.h|dv|Shop|shop::Order|shop::Status|"
                                  "shop::Order|7|t_order|A customer order|id,note|id|blue|true|true"));

   r = js.executeScript(nullptr, nullptr, nullptr, status.get(), params("ENUM", ""));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("shop::Status:New=0,Paid=1:true:true"));

   r = js.executeScript(nullptr, nullptr, nullptr, status.get(), params("JSON", ""));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString(R"({"id":0,"name":"Status","namespace":"shop","key":"shop::Status","enum_name":"enum_Status",)"
                                  R"("use_qt_enum":false,"description":"","version":0,"values":[{"key":"New","value":"0"},)"
                                  R"({"key":"Paid","value":"1"}],"meta":{}})"));

   r = js.executeScript(project.get(), order.get(), id.get(), nullptr, params("PROP", ""));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("id:long:true"));

   // Writes are ignored outside strict code...
   r = js.executeScript(project.get(), order.get(), nullptr, nullptr, params("SLOPPY", ""));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("Order:Shop:blue"));
   // ...and fail in strict code...
   r = js.executeScript(project.get(), order.get(), nullptr, nullptr, params("STRICT", ""));
   EXPECT_FALSE(r.getValue());
   EXPECT_TRUE(r.getDesc().startsWith("TypeError")) << r.getDesc().toStdString();
   // ...a view kept from an earlier call reads nothing...
   r = js.executeScript(project.get(), order.get(), nullptr, nullptr, params("KEEP", ""));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   r = js.executeScript(project.get(), order.get(), nullptr, nullptr, params("KEPT", ""));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("undefined:Order"));
   // ...the next call sees the project as it is...
   r = js.executeScript(project.get(), order.get(), nullptr, nullptr, params("VIEWS", "dv"));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_TRUE(r.getDesc().contains("|Shop|shop::Order|shop::Status|")) << r.getDesc().toStdString();
   // ...and the model itself never changes.
   EXPECT_EQ(order->getName(), QString("Order"));
   EXPECT_EQ(order->getOwnProperties().size(), 2);
}

TEST_F(ToolsScript, DebuggerNeedsAnEngine)
{
   custom_javascript js;
   const zy::ZyBool r = js.runDebugger();
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("No custom javascript loaded : cannot start debugger"));
   EXPECT_FALSE(js.isDebugging());
}

TEST_F(ToolsScript, DebuggerReportsEveryCall)
{
   custom_javascript js;
   ASSERT_TRUE(js.initEngine(writeScript("i.js", "function execute(params) {\n"
                                                 "   if (params.action === 'BAD') { throw new Error('bad'); }\n"
                                                 "   return params.default_value + '!';\n"
                                                 "}\n"), nullptr).getValue());
   QList<bool> states;
   QStringList calls;
   QObject::connect(& js, & custom_javascript::onDebuggerStateChanged, [& states](bool b) { states.append(b); });
   QObject::connect(& js, & custom_javascript::onScriptCall,
                    [& calls](const QString & action, const QString & input, const QString & answer, bool ok)
                    { calls.append(QString("%1|%2|%3|%4").arg(action, input, answer, ok ? "ok" : "failed")); });

   // Not watched before the debugger starts.
   js.executeScript(nullptr, nullptr, nullptr, nullptr, params("BEFORE", "a"));
   EXPECT_TRUE(calls.isEmpty());

   ASSERT_TRUE(js.runDebugger().getValue());
   EXPECT_TRUE(js.isDebugging());
   js.executeScript(nullptr, nullptr, nullptr, nullptr, params("CLASS_NAME", "Order"));
   js.executeScript(nullptr, nullptr, nullptr, nullptr, params("BAD", "x"));
   js.stopDebugger();
   EXPECT_FALSE(js.isDebugging());
   js.executeScript(nullptr, nullptr, nullptr, nullptr, params("AFTER", "z"));

   EXPECT_EQ(states, (QList<bool>{true, false}));
   EXPECT_EQ(calls, (QStringList{"CLASS_NAME|Order|Order!|ok", "BAD|x|Error: bad (line 2)|failed"}));
   const QList<custom_javascript::call_record> history = js.getCallHistory();
   ASSERT_EQ(history.size(), 2);
   EXPECT_EQ(history.at(0).action, QString("CLASS_NAME"));
   EXPECT_EQ(history.at(0).answer, QString("Order!"));
   EXPECT_FALSE(history.at(1).ok);
}

TEST_F(ToolsScript, LogAndBreakpointReachTheWatcher)
{
   custom_javascript js;
   // Far beyond what these calls take even when the machine is busy: an overrun would drop the
   // engine and fail the calls below.
   js.setTimeLimit(120000);
   ASSERT_TRUE(js.initEngine(writeScript("j.js", "function execute(params) {\n"
                                                 "   tavrel.log('value', params.default_value, 3);\n"
                                                 "   tavrel.breakpoint('stop here');\n"
                                                 "   return 'after';\n"
                                                 "}\n"), nullptr).getValue());
   QStringList logs, breaks;
   QObject::connect(& js, & custom_javascript::onScriptLog,
                    [& logs](const QString & action, const QString & text) { logs.append(action + ":" + text); });
   QObject::connect(& js, & custom_javascript::onScriptBreakpoint,
                    [& breaks](const QString & action, const QString & text) { breaks.append(action + ":" + text); });

   // Breakpoints only hold while debugging.
   EXPECT_TRUE(js.executeScript(nullptr, nullptr, nullptr, nullptr, params("FIRST", "v1")).getValue());
   ASSERT_TRUE(js.runDebugger().getValue());
   const zy::ZyBool r = js.executeScript(nullptr, nullptr, nullptr, nullptr, params("SECOND", "v2"));
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();
   EXPECT_EQ(r.getDesc(), QString("after"));

   EXPECT_EQ(logs, (QStringList{"FIRST:value v1 3", "SECOND:value v2 3"}));
   EXPECT_EQ(breaks, (QStringList{"SECOND:stop here"}));
}
