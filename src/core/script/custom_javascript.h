#pragma once

#include <QHash>
#include <QJSEngine>
#include <QList>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace plugin { class base_interface; }

namespace tools {

class script_watchdog;
class script_host_api;

// The user's export script, run in a QJSEngine. The script defines "function execute(params)";
// its return value, as text, replaces params.default_value ("undefined" keeps it).
// params.project, .entity, .property and .enumeration are read-only views (null without the
// item) whose fields are read from the model when the script uses them; JSON.stringify gives
// all their fields. A call running longer than the time limit is interrupted, and so is a call
// that makes the process grow by more than the memory limit (resident size, polled every few
// milliseconds; 0 turns the check off). Either way the engine is then dropped (an endless loop
// would overrun again at every call, what the script keeps in its globals would fill memory
// again) and every later call fails at once with the reason, until the file is loaded again.
// An answer longer than maxResultLength() characters is refused. The script also sees a global
// "tavrel" object: tavrel.log(...) reports a line (onScriptLog, and the plug-in's onMessage),
// tavrel.breakpoint(text) pauses the call while debugging (onScriptBreakpoint; the time limit
// doesn't run while the slot holds the call).
class TAVRELCORE_EXPORT custom_javascript : public QObject
{
   Q_OBJECT

   friend class script_host_api;

public:
   struct call_record { QString action; QString input; QString answer; bool ok; };

private:
   std::unique_ptr<QJSEngine> m_pEngine;
   QJSValue m_fctExecute;
   QString m_sFile;
   plugin::base_interface * m_pPlugin = nullptr;
   int m_iTimeLimitMs = 10000;
   int m_iMemoryLimitMb = 512;
   // What one load of the file (one export) may use over all its calls: many calls each
   // under the limits above must not add up without end.
   int m_iTotalTimeLimitMs = 120000;
   int m_iTotalMemoryLimitMb = 1024;
   qint64 m_iUsedMs = 0;
   qint64 m_iEngineBaseBytes = -1;
   QElapsedTimer m_callTimer;
   qint64 m_iPausedMs = 0;
   bool m_bDeadlineIsTotal = false;
   // Why the engine was dropped during a call (time or memory); empty while it is usable.
   QString m_sStopReason;
   bool m_bDebugging = false;

   QJSValue m_fctRun;
   QJSValue m_fctMakeParams;
   QJSValue m_objHostApi;
   std::unique_ptr<script_watchdog> m_pWatchdog;
   script_host_api * m_pHostApi = nullptr;
   QPointer<QObject> m_pPluginGuard;
   QString m_sCurrentAction;
   bool m_bRunning = false;
   QList<call_record> m_lstCalls;
   // Calls of this engine that failed, and the message of the last one (a host that runs
   // unattended tells from them that the export is incomplete).
   int m_iFailedCalls = 0;
   QString m_sLastFailure;
   // The items of the running call, read by the script's views; a view of an earlier call
   // (kept by the script in a global) reads nothing.
   int m_iCallSerial = 0;
   model::project * m_pCurProject = nullptr;
   model::entity * m_pCurEntity = nullptr;
   model::property * m_pCurProperty = nullptr;
   model::enumeration * m_pCurEnumeration = nullptr;

public:
   // Gives a plug-in's QObject. The plug-in interface is defined in a layer above the engine,
   // which registers this (its base class constructor does) so the engine needs only its name.
   typedef QObject * (* plugin_object_fct)(plugin::base_interface * pPlugin);
   static void setPluginObjectFct(plugin_object_fct fct);

   explicit custom_javascript(QObject * parent = nullptr);
   virtual ~custom_javascript();

   // Loads and evaluates the file; fails when it can't be read, has a syntax error (with its
   // line) or defines no function "execute".
   zy::ZyBool initEngine(const QString & file, plugin::base_interface * plugin);
   zy::ZyBool executeScript(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                            model::enumeration * pEnumeration, const QHash<QString, QVariant> & params);

   // Starts watching the script: every later call is reported through onScriptCall.
   zy::ZyBool runDebugger();
   void stopDebugger();
   bool isDebugging() const { return m_bDebugging; }

   int getTimeLimit() const { return m_iTimeLimitMs; }
   void setTimeLimit(int ms) { m_iTimeLimitMs = ms; }
   // Growth of the process allowed to one call, in MB (0: no check); read when a call starts.
   int getMemoryLimit() const { return m_iMemoryLimitMb; }
   void setMemoryLimit(int mb) { m_iMemoryLimitMb = mb; }
   // Time of all calls of one load of the file, in ms, and the growth of the process since
   // the engine was made, in MB (0: no check).
   int getTotalTimeLimit() const { return m_iTotalTimeLimitMs; }
   void setTotalTimeLimit(int ms) { m_iTotalTimeLimitMs = ms; }
   int getTotalMemoryLimit() const { return m_iTotalMemoryLimitMb; }
   void setTotalMemoryLimit(int mb) { m_iTotalMemoryLimitMb = mb; }
   // Longest answer accepted from the script, in characters (16 Mi).
   static int maxResultLength() { return 16 * 1024 * 1024; }
   QString getFile() const { return m_sFile; }
   plugin::base_interface * getPlugin() const { return m_pPlugin; }
   // True once initEngine succeeded.
   bool isLoaded() const;
   // The calls made while debugging, oldest first (the last 10000 are kept).
   QList<call_record> getCallHistory() const { return m_lstCalls; }
   void clearCallHistory() { m_lstCalls.clear(); }
   int getFailedCallCount() const { return m_iFailedCalls; }
   QString getLastFailure() const { return m_sLastFailure; }

Q_SIGNALS:
   // Emitted for every call while debugging: the action, the default value and the answer.
   void onScriptCall(const QString & action, const QString & input, const QString & answer, bool ok);
   void onDebuggerStateChanged(bool debugging);
   // tavrel.log(...) of the script, with the action of the running call.
   void onScriptLog(const QString & action, const QString & text);
   // tavrel.breakpoint(text) while debugging: the call waits until the slots return.
   void onScriptBreakpoint(const QString & action, const QString & text);

private:
   void releaseEngine();
   // The per-call deadline, shortened to what is left of the total.
   int callTimeLimit() const;
   bool totalTimeUsed() const;
   void armWatchdog();
   void countCallTime(bool bStoppedByTime);
   QString timeStopReason(const QString & sAction) const;
   // The steps of initEngine: the engine with its setup, then the file's top level.
   bool createEngine();
   zy::ZyBool evaluateFile(const QString & code, const QString & path);
   zy::ZyBool runExecute(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                         model::enumeration * pEnumeration, const QHash<QString, QVariant> & params);
   QVariant viewField(int serial, const QString & kind, const QString & name) const;
   void scriptLog(const QString & text);
   void scriptBreakpoint(const QString & text);
};

} // namespace tools
