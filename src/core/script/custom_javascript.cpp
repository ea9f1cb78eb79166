#include "script/custom_javascript.h"

#include <QElapsedTimer>

#include <QFile>
#include <QFileInfo>
#include <QMetaObject>

#include <atomic>
#include <new>

#include "context/ctx_project.h"
#include "script/script_host_api.h"
#include "script/script_model_views.h"
#include "script/script_watchdog.h"

namespace tools {

namespace {

const int k_maxCallHistory = 10000;

std::atomic<custom_javascript::plugin_object_fct> g_pluginObjectFct{nullptr};

QObject * pluginObject(plugin::base_interface * pPlugin)
{
   const custom_javascript::plugin_object_fct fct = g_pluginObjectFct.load();
   return ((pPlugin && fct) ? fct(pPlugin) : nullptr);
}

// Sets up the engine side once per engine: the call wrapper, the read-only views and the
// "tavrel" object. A view holds no data: each field is read from the model when used, so that
// a call costs the same whatever the size of the project.
const char * const k_setup =
   "(function (api, fields) {\n"
   "   var protos = {};\n"
   "   Object.keys(fields).forEach(function (kind) {\n"
   "      var proto = {};\n"
   "      fields[kind].forEach(function (name) {\n"
   "         Object.defineProperty(proto, name, { enumerable: true,\n"
   "            get: function () { return api.field(this.__call__, kind, name); } });\n"
   "      });\n"
   "      Object.defineProperty(proto, 'toJSON', { value: function () {\n"
   "         var o = {}, self = this;\n"
   "         fields[kind].forEach(function (name) { o[name] = self[name]; });\n"
   "         return o;\n"
   "      } });\n"
   "      protos[kind] = Object.freeze(proto);\n"
   "   });\n"
   "   function view(kind, serial) {\n"
   "      return Object.freeze(Object.create(protos[kind], { __call__: { value: serial } }));\n"
   "   }\n"
   "   return {\n"
   "      host: Object.freeze({\n"
   "         log: function () { api.log(Array.prototype.map.call(arguments, String).join(' ')); },\n"
   "         breakpoint: function (text) { api.breakpoint((text === undefined) ? '' : String(text)); }\n"
   "      }),\n"
   "      makeParams: function (serial, values, flags) {\n"
   "         values.project = (flags & 1) ? view('project', serial) : null;\n"
   "         values.entity = (flags & 2) ? view('entity', serial) : null;\n"
   "         values.property = (flags & 4) ? view('property', serial) : null;\n"
   "         values.enumeration = (flags & 8) ? view('enumeration', serial) : null;\n"
   "         return values;\n"
   "      },\n"
   // A thrown value, even a plain string, must be told apart from a returned one.
   "      run: function (fct, params, maxLength) {\n"
   "         var value;\n"
   "         try {\n"
   "            value = fct(params);\n"
   // Turned into text here, under the watchdog, and measured before the host copies it.
   "            if (value !== undefined) { value = String(value); }\n"
   "         }\n"
   "         catch (e) { return { ok: false, error: e }; }\n"
   "         if ((value !== undefined) && (value.length > maxLength)) { return { ok: false, tooLong: value.length }; }\n"
   "         return { ok: true, value: value };\n"
   "      }\n"
   "   };\n"
   "})";

QString describeError(const QJSValue & error)
{
   QString text = error.toString();
   if (error.isObject())
   {
      const QJSValue line = error.property(QStringLiteral("lineNumber"));
      if (line.isNumber() && (line.toInt() > 0)) { text += QString(" (line %1)").arg(line.toInt()); }
   }
   return text;
}

// What the call wrapper of the setup gave: the answer as text, or the failure as a message.
zy::ZyBool readOutcome(const QJSValue & result, const QString & action, const QString & defaultValue)
{
   if (result.isError()) { return zy::ZyBool(false, describeError(result)); }
   if (! result.property("ok").toBool())
   {
      const QJSValue tooLong = result.property("tooLong");
      if (tooLong.isNumber())
      {
         return zy::ZyBool(false, custom_javascript::tr("Custom javascript answer too long for action '%1' : %2 characters (at most %3)")
                                     .arg(action).arg(static_cast<qint64>(tooLong.toNumber())).arg(custom_javascript::maxResultLength()));
      }
      return zy::ZyBool(false, describeError(result.property("error")));
   }
   const QJSValue value = result.property("value");
   if (value.isUndefined()) { return zy::ZyBool(true, defaultValue); }
   return zy::ZyBool(true, value.toString());
}

} // namespace

void custom_javascript::setPluginObjectFct(plugin_object_fct fct) { g_pluginObjectFct.store(fct); }

custom_javascript::custom_javascript(QObject * parent) : QObject(parent)
{
   m_pHostApi = new script_host_api(this);
}

custom_javascript::~custom_javascript()
{
   releaseEngine();
}

bool custom_javascript::isLoaded() const { return (m_pEngine && m_fctExecute.isCallable()); }

void custom_javascript::releaseEngine()
{
   // The watchdog goes first (it holds the engine), script values before their engine.
   m_pWatchdog.reset();
   m_fctExecute = QJSValue();
   m_fctRun = QJSValue();
   m_fctMakeParams = QJSValue();
   m_objHostApi = QJSValue();
   m_pEngine.reset();
}

zy::ZyBool custom_javascript::initEngine(const QString & file, plugin::base_interface * plugin)
{
   if (m_bRunning) { return zy::ZyBool(false, tr("Custom javascript is running : cannot load file '%1'").arg(file)); }
   releaseEngine();
   m_sStopReason.clear();
   m_sFile = file;
   m_pPlugin = plugin;
   m_pPluginGuard = pluginObject(plugin);

   // A relative path is read from the project's directory, like every path of the settings.
   const QString path = (file.trimmed().isEmpty() ? QString() : context::ctx_project::getPathFromProjectFile(file));
   QFile f(path);
   if (path.isEmpty() || ! QFileInfo(path).isFile() || ! f.open(QIODevice::ReadOnly))
   { return zy::ZyBool(false, tr("Cannot read custom javascript file : %1").arg(path.isEmpty() ? file : path)); }
   const QString code = QString::fromUtf8(f.readAll());
   f.close();

   if (! createEngine())
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Cannot initialise the custom javascript engine"));
   }
   const zy::ZyBool loaded = evaluateFile(code, path);
   if (! loaded) { releaseEngine(); }
   return loaded;
}

bool custom_javascript::createEngine()
{
   m_pEngine = std::make_unique<QJSEngine>();
   m_pEngine->installExtensions(QJSEngine::ConsoleExtension);
   const QJSValue setup = m_pEngine->evaluate(QString::fromLatin1(k_setup));
   const QJSValue tools = setup.call(QJSValueList() << m_pEngine->newQObject(m_pHostApi)
                                                    << m_pEngine->toScriptValue(script_views::fieldNames()));
   m_fctRun = tools.property("run");
   m_fctMakeParams = tools.property("makeParams");
   m_objHostApi = tools.property("host");
   if (! m_fctRun.isCallable() || ! m_fctMakeParams.isCallable() || ! m_objHostApi.isObject()) { return false; }
   m_pEngine->globalObject().setProperty("tavrel", m_objHostApi);
   m_pWatchdog = std::make_unique<script_watchdog>();
   m_iUsedMs = 0;
   m_iEngineBaseBytes = script_watchdog::residentBytes();
   return true;
}

int custom_javascript::callTimeLimit() const
{
   if (m_iTotalTimeLimitMs <= 0) { return m_iTimeLimitMs; }
   const qint64 iLeft = qMax<qint64>(1, m_iTotalTimeLimitMs - m_iUsedMs);
   return ((m_iTimeLimitMs > 0) ? int(qMin<qint64>(m_iTimeLimitMs, iLeft)) : int(iLeft));
}

bool custom_javascript::totalTimeUsed() const { return ((m_iTotalTimeLimitMs > 0) && (m_iUsedMs >= m_iTotalTimeLimitMs)); }

void custom_javascript::armWatchdog()
{
   const qint64 iTotal = ((m_iTotalMemoryLimitMb > 0) ? (qint64(m_iTotalMemoryLimitMb) * 1024 * 1024) : 0);
   const int iLimit = callTimeLimit();
   // A deadline cut short by the total ends the export's time, whatever the clocks read.
   m_bDeadlineIsTotal = ((m_iTotalTimeLimitMs > 0) && ((m_iTimeLimitMs <= 0) || (iLimit < m_iTimeLimitMs)));
   m_iPausedMs = 0;
   m_callTimer.start();
   m_pWatchdog->arm(m_pEngine.get(), iLimit, m_iMemoryLimitMb, m_iEngineBaseBytes, iTotal);
}

void custom_javascript::countCallTime(bool bStoppedByTime)
{
   m_iUsedMs += qMax<qint64>(0, m_callTimer.elapsed() - m_iPausedMs);
   if (bStoppedByTime && m_bDeadlineIsTotal) { m_iUsedMs = qMax<qint64>(m_iUsedMs, m_iTotalTimeLimitMs); }
}

QString custom_javascript::timeStopReason(const QString & sAction) const
{
   if (totalTimeUsed())
   { return tr("total time limit of %1 ms for the calls of one export exceeded at action '%2'").arg(m_iTotalTimeLimitMs).arg(sAction); }
   return tr("time limit of %1 ms exceeded for action '%2'").arg(m_iTimeLimitMs).arg(sAction);
}

zy::ZyBool custom_javascript::evaluateFile(const QString & code, const QString & path)
{
   // The file's top level runs under the limits too, and so does the reading of its error or of
   // "execute": a thrown object's toString, or a getter, is script code that may never end.
   QStringList stack;
   bool outOfMemory = false;
   bool failed = false;
   int line = 0;
   QString message;
   m_bRunning = true;
   m_sCurrentAction.clear();
   armWatchdog();
   try
   {
      const QJSValue result = m_pEngine->evaluate(code, path, 1, & stack);
      failed = (result.isError() || ! stack.isEmpty());
      if (failed)
      {
         if (result.isObject()) { line = result.property("lineNumber").toInt(); }
         message = result.toString();
      }
      else { m_fctExecute = m_pEngine->globalObject().property("execute"); }
   }
   catch (const std::bad_alloc &) { outOfMemory = true; }
   const script_watchdog::enum_stop stop = m_pWatchdog->disarm();
   countCallTime(stop == script_watchdog::stop_time);
   m_bRunning = false;

   if (stop == script_watchdog::stop_total_memory)
   { return zy::ZyBool(false, tr("Custom javascript execution interrupted : total memory limit of %1 MB for one export exceeded while loading '%2'").arg(m_iTotalMemoryLimitMb).arg(path)); }
   if (stop == script_watchdog::stop_memory)
   { return zy::ZyBool(false, tr("Custom javascript execution interrupted : memory limit of %1 MB exceeded while loading '%2'").arg(m_iMemoryLimitMb).arg(path)); }
   if ((stop == script_watchdog::stop_time) || m_pEngine->isInterrupted())
   { return zy::ZyBool(false, tr("Custom javascript execution interrupted : time limit of %1 ms exceeded while loading '%2'").arg(m_iTimeLimitMs).arg(path)); }
   if (outOfMemory) { return zy::ZyBool(false, tr("Custom javascript ran out of memory while loading '%1'").arg(path)); }
   if (failed)
   {
      // Entries of the stack read "function:line:file".
      const QStringList parts = (stack.isEmpty() ? QStringList() : stack.first().split(QLatin1Char(':')));
      if ((line <= 0) && (parts.size() > 1)) { line = parts.at(1).toInt(); }
      return zy::ZyBool(false, tr("Custom javascript error in '%1' at line %2 : %3").arg(path).arg(line).arg(message));
   }
   if (! m_fctExecute.isCallable())
   { return zy::ZyBool(false, tr("No function 'execute(params)' defined in custom javascript file : %1").arg(path)); }
   return zy::ZyBool(true);
}

zy::ZyBool custom_javascript::executeScript(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                                            model::enumeration * pEnumeration, const QHash<QString, QVariant> & params)
{
   const zy::ZyBool result = runExecute(pProject, pEntity, pProperty, pEnumeration, params);
   if (! result) { ++m_iFailedCalls; m_sLastFailure = result.getDesc(); }
   if (m_bDebugging)
   {
      const QString action = params.value("action").toString();
      const QString input = params.value("default_value").toString();
      if (m_lstCalls.size() >= k_maxCallHistory) { m_lstCalls.removeFirst(); }
      m_lstCalls.append(call_record{action, input, result.getDesc(), result.getValue()});
      Q_EMIT onScriptCall(action, input, result.getDesc(), result.getValue());
   }
   return result;
}

zy::ZyBool custom_javascript::runExecute(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                                         model::enumeration * pEnumeration, const QHash<QString, QVariant> & params)
{
   const QString action = params.value("action").toString();
   if (! m_sStopReason.isEmpty())
   { return zy::ZyBool(false, tr("Custom javascript stopped earlier (%1) : cannot execute action '%2'").arg(m_sStopReason, action)); }
   if (! isLoaded()) { return zy::ZyBool(false, tr("No custom javascript loaded : cannot execute action '%1'").arg(action)); }
   if (m_bRunning) { return zy::ZyBool(false, tr("Custom javascript is already running : cannot execute action '%1'").arg(action)); }
   if (totalTimeUsed())
   {
      m_sStopReason = timeStopReason(action);
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : %1").arg(m_sStopReason));
   }

   QJSEngine & engine = (* m_pEngine);
   QJSValue result;
   zy::ZyBool outcome(false);
   bool outOfMemory = false;
   script_watchdog::enum_stop stop = script_watchdog::stop_none;
   m_bRunning = true;
   m_sCurrentAction = action;
   m_iCallSerial = ((m_iCallSerial >= 0x3fffffff) ? 1 : (m_iCallSerial + 1));
   m_pCurProject = pProject;
   m_pCurEntity = pEntity;
   m_pCurProperty = pProperty;
   m_pCurEnumeration = pEnumeration;
   try
   {
      QVariantMap values;
      for (auto itr = params.cbegin(); itr != params.cend(); ++itr) { values.insert(itr.key(), itr.value()); }
      const int flags = (pProject ? 1 : 0) | (pEntity ? 2 : 0) | (pProperty ? 4 : 0) | (pEnumeration ? 8 : 0);
      const QJSValue jsParams = m_fctMakeParams.call(QJSValueList() << m_iCallSerial << engine.toScriptValue(values) << flags);

      armWatchdog();
      result = m_fctRun.call(QJSValueList() << m_fctExecute << jsParams << maxResultLength());
      // Reading a thrown value may run script code (its toString, a getter): still watched.
      outcome = readOutcome(result, action, params.value("default_value").toString());
      stop = m_pWatchdog->disarm();
      countCallTime(stop == script_watchdog::stop_time);
   }
   catch (const std::bad_alloc &)
   {
      stop = m_pWatchdog->disarm();
      countCallTime(stop == script_watchdog::stop_time);
      outOfMemory = true;
   }
   m_bRunning = false;
   m_sCurrentAction.clear();
   m_pCurProject = nullptr;
   m_pCurEntity = nullptr;
   m_pCurProperty = nullptr;
   m_pCurEnumeration = nullptr;

   if (stop == script_watchdog::stop_total_memory)
   {
      m_sStopReason = tr("total memory limit of %1 MB for one export exceeded at action '%2'").arg(m_iTotalMemoryLimitMb).arg(action);
      result = QJSValue();
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : %1").arg(m_sStopReason));
   }
   if ((stop == script_watchdog::stop_memory) || outOfMemory)
   {
      // What the script keeps in its globals would fill memory again at the next call, and an
      // allocation failure may have left the engine half-way: drop it, and say why later on.
      const bool overLimit = (stop == script_watchdog::stop_memory);
      m_sStopReason = (overLimit ? tr("memory limit of %1 MB exceeded for action '%2'").arg(m_iMemoryLimitMb).arg(action)
                                 : tr("ran out of memory for action '%1'").arg(action));
      result = QJSValue();
      releaseEngine();
      return zy::ZyBool(false, overLimit ? tr("Custom javascript execution interrupted : %1").arg(m_sStopReason)
                                         : tr("Custom javascript %1").arg(m_sStopReason));
   }
   if ((stop == script_watchdog::stop_time) || engine.isInterrupted())
   {
      // A script that overran once will most likely overrun at every call (an endless loop):
      // drop it, so that an export costs one time limit and not one per generated fragment.
      m_sStopReason = timeStopReason(action);
      result = QJSValue();
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : %1").arg(m_sStopReason));
   }
   return outcome;
}

QVariant custom_javascript::viewField(int serial, const QString & kind, const QString & name) const
{
   if (! m_bRunning || (serial != m_iCallSerial)) { return QVariant(); }
   if ((kind == QLatin1String("project")) && m_pCurProject) { return script_views::field(* m_pCurProject, name); }
   if ((kind == QLatin1String("entity")) && m_pCurEntity) { return script_views::field(* m_pCurEntity, name); }
   if ((kind == QLatin1String("property")) && m_pCurProperty) { return script_views::field(* m_pCurProperty, name); }
   if ((kind == QLatin1String("enumeration")) && m_pCurEnumeration) { return script_views::field(* m_pCurEnumeration, name); }
   return QVariant();
}

zy::ZyBool custom_javascript::runDebugger()
{
   if (! isLoaded()) { return zy::ZyBool(false, tr("No custom javascript loaded : cannot start debugger")); }
   if (! m_bDebugging)
   {
      m_bDebugging = true;
      Q_EMIT onDebuggerStateChanged(true);
   }
   return zy::ZyBool(true);
}

void custom_javascript::stopDebugger()
{
   if (! m_bDebugging) { return; }
   m_bDebugging = false;
   Q_EMIT onDebuggerStateChanged(false);
}

void custom_javascript::scriptLog(const QString & text)
{
   Q_EMIT onScriptLog(m_sCurrentAction, text);
   // The plug-in's onMessage signal, emitted by name: its interface lives above the engine.
   if (m_pPluginGuard)
   {
      QMetaObject::invokeMethod(m_pPluginGuard.data(), "onMessage", Qt::DirectConnection,
                                Q_ARG(QString, tr("Custom javascript : %1").arg(text)), Q_ARG(int, 1), Q_ARG(int, 3000));
   }
}

void custom_javascript::scriptBreakpoint(const QString & text)
{
   if (! m_bDebugging) { return; }
   if (m_pWatchdog) { m_pWatchdog->suspend(); }
   QElapsedTimer paused;
   paused.start();
   Q_EMIT onScriptBreakpoint(m_sCurrentAction, text);
   m_iPausedMs += paused.elapsed();
   if (m_pWatchdog) { m_pWatchdog->resume(callTimeLimit()); }
}

} // namespace tools

