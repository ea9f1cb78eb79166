#include "tools/custom_javascript.h"

#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

#include "context/ctx_project.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "plugin/base_interface.h"

namespace tools {

// Interrupts the engine when a call outlives its deadline. One thread per script engine, idle
// between calls: an export runs the script for every generated fragment, so starting a thread
// per call would cost more than the calls themselves.
class script_watchdog
{
   typedef std::chrono::steady_clock clock;

   std::mutex m_mutex;
   std::condition_variable m_cond;
   QJSEngine * m_pEngine = nullptr;
   clock::time_point m_deadline;
   bool m_bArmed = false;
   bool m_bFired = false;
   bool m_bStop = false;
   std::thread m_thread;

public:
   script_watchdog() : m_thread([this]() { run(); }) { ; }

   ~script_watchdog()
   {
      { std::lock_guard<std::mutex> lock(m_mutex); m_bStop = true; }
      m_cond.notify_all();
      m_thread.join();
   }

   void arm(QJSEngine * pEngine, int ms)
   {
      { std::lock_guard<std::mutex> lock(m_mutex); m_pEngine = pEngine; m_bFired = false; setDeadline(ms); }
      m_cond.notify_all();
   }

   // Once this returns the engine can't be interrupted any more; true when it was.
   bool disarm()
   {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_bArmed = false;
      return m_bFired;
   }

   // Stops the clock while a breakpoint holds the call, then grants a full time limit again.
   void suspend() { std::lock_guard<std::mutex> lock(m_mutex); m_bArmed = false; }
   void resume(int ms)
   {
      { std::lock_guard<std::mutex> lock(m_mutex); if (! m_bFired && m_pEngine) { setDeadline(ms); } }
      m_cond.notify_all();
   }

private:
   void setDeadline(int ms)
   {
      m_bArmed = (ms > 0);
      m_deadline = clock::now() + std::chrono::milliseconds(ms);
   }

   void run()
   {
      std::unique_lock<std::mutex> lock(m_mutex);
      while (! m_bStop)
      {
         if (! m_bArmed) { m_cond.wait(lock); continue; }
         m_cond.wait_until(lock, m_deadline);
         if (m_bArmed && ! m_bStop && (clock::now() >= m_deadline))
         {
            // Thread-safe by QJSEngine's contract; the engine stops at its next check.
            m_pEngine->setInterrupted(true);
            m_bFired = true;
            m_bArmed = false;
         }
      }
   }
};

// What the script reaches through the global "tavrel" object (wrapped in a frozen plain
// object, so that the script can't reach QObject's own slots).
class script_host_api : public QObject
{
   Q_OBJECT

   custom_javascript * m_pOwner;

public:
   explicit script_host_api(custom_javascript * pOwner) : QObject(pOwner), m_pOwner(pOwner) { ; }

   Q_INVOKABLE void log(const QString & text) { m_pOwner->scriptLog(text); }
   Q_INVOKABLE void breakpoint(const QString & text) { m_pOwner->scriptBreakpoint(text); }
};

namespace {

const int k_maxCallHistory = 10000;

// Calls execute(params) and reports how it ended, so that a thrown value (even a plain string)
// is told apart from a returned one.
const char * const k_runWrapper =
   "(function (fct, params) {\n"
   "   try { return { ok: true, value: fct(params) }; }\n"
   "   catch (e) { return { ok: false, error: e }; }\n"
   "})";

const char * const k_deepFreeze =
   "(function deepFreeze(o) {\n"
   "   if ((o !== null) && (typeof o === 'object') && ! Object.isFrozen(o)) {\n"
   "      Object.freeze(o);\n"
   "      Object.getOwnPropertyNames(o).forEach(function (k) { deepFreeze(o[k]); });\n"
   "   }\n"
   "   return o;\n"
   "})";

// The project view is kept between calls, and the engine lets push() through on a frozen
// array: its lists are handed out as fresh copies, so that no call sees another's changes.
const char * const k_listProperty =
   "(function (o, name, list) {\n"
   "   Object.freeze(list);\n"
   "   Object.defineProperty(o, name, { enumerable: true, get: function () { return list.slice(); } });\n"
   "})";

const char * const k_hostApiWrapper =
   "(function (api) {\n"
   "   return Object.freeze({\n"
   "      log: function () { api.log(Array.prototype.map.call(arguments, String).join(' ')); },\n"
   "      breakpoint: function (text) { api.breakpoint((text === undefined) ? '' : String(text)); }\n"
   "   });\n"
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

QJSValue stringArray(QJSEngine & engine, const QStringList & lst)
{
   QJSValue array = engine.newArray(static_cast<uint>(lst.size()));
   for (qsizetype i = 0; i < lst.size(); ++i) { array.setProperty(static_cast<quint32>(i), lst.at(i)); }
   return array;
}

QJSValue metaView(QJSEngine & engine, const model::persistable & item)
{
   QJSValue meta = engine.newObject();
   const QMap<QString, QString> & map = item.getAllMetaData();
   for (auto itr = map.cbegin(); itr != map.cend(); ++itr) { meta.setProperty(itr.key(), itr.value()); }
   return meta;
}

QJSValue entityView(QJSEngine & engine, model::entity * pEntity)
{
   if (! pEntity) { return QJSValue(QJSValue::NullValue); }
   QJSValue v = engine.newObject();
   v.setProperty("id", static_cast<double>(pEntity->getId()));
   v.setProperty("name", pEntity->getName());
   v.setProperty("namespace", pEntity->getNamespace());
   v.setProperty("key", pEntity->getKey());
   v.setProperty("version", static_cast<double>(pEntity->getVersion()));
   v.setProperty("description", pEntity->getDescription());
   v.setProperty("table_name", pEntity->getTableName());
   v.setProperty("parent_key", pEntity->getParentKey());
   v.setProperty("abstract", pEntity->isAbstract());
   v.setProperty("read_only", pEntity->isReadOnly());
   v.setProperty("soft_delete_column", pEntity->getSoftDeleteColumn());
   v.setProperty("validator_method", pEntity->getValidatorMethod());

   QStringList triggers;
   if (pEntity->isTriggerBeforeFetch()) { triggers << "before_fetch"; }
   if (pEntity->isTriggerAfterFetch()) { triggers << "after_fetch"; }
   if (pEntity->isTriggerBeforeInsert()) { triggers << "before_insert"; }
   if (pEntity->isTriggerAfterInsert()) { triggers << "after_insert"; }
   if (pEntity->isTriggerBeforeUpdate()) { triggers << "before_update"; }
   if (pEntity->isTriggerAfterUpdate()) { triggers << "after_update"; }
   if (pEntity->isTriggerBeforeDelete()) { triggers << "before_delete"; }
   if (pEntity->isTriggerAfterDelete()) { triggers << "after_delete"; }
   v.setProperty("triggers", stringArray(engine, triggers));

   QStringList properties, relations;
   for (const model::property_ptr & p : pEntity->getOwnProperties())
   {
      if (! p) { continue; }
      properties << p->getName();
      if (p->hasRelationship()) { relations << p->getName(); }
   }
   v.setProperty("properties", stringArray(engine, properties));
   v.setProperty("relations", stringArray(engine, relations));
   const model::property_ptr pk = pEntity->getPropertyId(true);
   v.setProperty("primary_key", (pk ? pk->getName() : QString()));
   v.setProperty("meta", metaView(engine, * pEntity));
   return v;
}

QJSValue propertyView(QJSEngine & engine, model::property * pProperty)
{
   if (! pProperty) { return QJSValue(QJSValue::NullValue); }
   QJSValue v = engine.newObject();
   v.setProperty("id", static_cast<double>(pProperty->getId()));
   v.setProperty("name", pProperty->getName());
   const model::entity_ptr owner = pProperty->getEntity();
   v.setProperty("entity", (owner ? owner->getKey() : QString()));
   const model::property_type_ptr type = pProperty->getType();
   v.setProperty("type", pProperty->getTypeDesc(false, false));
   v.setProperty("primitive_type", (type ? type->getPrimitiveType() : QString()));
   v.setProperty("decoration", (type ? type->getDecoration() : 0));
   v.setProperty("collection", (type ? type->getCollection() : 0));
   v.setProperty("default_value", (type ? type->getDefaultValue() : QString()));
   v.setProperty("enumeration", pProperty->getEnumerationKey());
   v.setProperty("primary_key", pProperty->isPrimaryKey());
   v.setProperty("column_name", pProperty->getColumnName());
   v.setProperty("description", pProperty->getDescription());
   v.setProperty("version", static_cast<double>(pProperty->getVersion()));
   v.setProperty("accessibility", pProperty->getAccessibility());
   v.setProperty("read_only", pProperty->isReadOnly());
   v.setProperty("obsolete", pProperty->isObsolete());
   v.setProperty("transient", pProperty->isTransient());
   v.setProperty("serializable", pProperty->isSerializable());
   v.setProperty("index", pProperty->isIndex());
   v.setProperty("unique", pProperty->getUnique());
   v.setProperty("allow_null", pProperty->getAllowNull());
   const model::relationship_ptr rel = pProperty->getRelation();
   if (! rel) { v.setProperty("relation", QJSValue(QJSValue::NullValue)); }
   else
   {
      QJSValue r = engine.newObject();
      r.setProperty("kind", rel->getType());
      r.setProperty("target", rel->getTargetKey());
      r.setProperty("foreign_key", rel->getForeignKey());
      r.setProperty("foreign_key_owner", rel->getForeignKeyOwner());
      r.setProperty("extra_table", rel->getExtraTable());
      v.setProperty("relation", r);
   }
   v.setProperty("meta", metaView(engine, * pProperty));
   return v;
}

QJSValue enumerationView(QJSEngine & engine, model::enumeration * pEnum)
{
   if (! pEnum) { return QJSValue(QJSValue::NullValue); }
   QJSValue v = engine.newObject();
   v.setProperty("id", static_cast<double>(pEnum->getId()));
   v.setProperty("name", pEnum->getName());
   v.setProperty("namespace", pEnum->getNamespace());
   v.setProperty("key", pEnum->getKey());
   v.setProperty("enum_name", pEnum->getEnumName());
   v.setProperty("use_qt_enum", pEnum->getUseQtEnum());
   v.setProperty("description", pEnum->getDescription());
   v.setProperty("version", static_cast<double>(pEnum->getVersion()));
   const auto & values = pEnum->getAllKeyValue();
   QJSValue array = engine.newArray(static_cast<uint>(values.size()));
   for (qsizetype i = 0; i < values.size(); ++i)
   {
      QJSValue kv = engine.newObject();
      kv.setProperty("key", values.getKeyByIndex(i));
      kv.setProperty("value", values.getByIndex(i));
      array.setProperty(static_cast<quint32>(i), kv);
   }
   v.setProperty("values", array);
   v.setProperty("meta", metaView(engine, * pEnum));
   return v;
}

} // namespace

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
   m_fctFreeze = QJSValue();
   m_fctListProperty = QJSValue();
   m_objHostApi = QJSValue();
   m_objProjectView = QJSValue();
   m_pProjectViewOwner = nullptr;
   m_lstProjectViewKeys.clear();
   m_pEngine.reset();
}

zy::ZyBool custom_javascript::initEngine(const QString & file, plugin::base_interface * plugin)
{
   if (m_bRunning) { return zy::ZyBool(false, tr("Custom javascript is running : cannot load file '%1'").arg(file)); }
   releaseEngine();
   m_sFile = file;
   m_pPlugin = plugin;
   m_pPluginGuard = plugin;

   // A relative path is read from the project's directory, like every path of the settings.
   const QString path = (file.trimmed().isEmpty() ? QString() : context::ctx_project::getPathFromProjectFile(file));
   QFile f(path);
   if (path.isEmpty() || ! QFileInfo(path).isFile() || ! f.open(QIODevice::ReadOnly))
   { return zy::ZyBool(false, tr("Cannot read custom javascript file : %1").arg(path.isEmpty() ? file : path)); }
   const QString code = QString::fromUtf8(f.readAll());
   f.close();

   m_pEngine = std::make_unique<QJSEngine>();
   m_pEngine->installExtensions(QJSEngine::ConsoleExtension);
   m_fctRun = m_pEngine->evaluate(QString::fromLatin1(k_runWrapper));
   m_fctFreeze = m_pEngine->evaluate(QString::fromLatin1(k_deepFreeze));
   m_fctListProperty = m_pEngine->evaluate(QString::fromLatin1(k_listProperty));
   const QJSValue hostApiWrapper = m_pEngine->evaluate(QString::fromLatin1(k_hostApiWrapper));
   m_objHostApi = hostApiWrapper.call(QJSValueList() << m_pEngine->newQObject(m_pHostApi));
   if (! m_fctRun.isCallable() || ! m_fctFreeze.isCallable() || ! m_fctListProperty.isCallable() || ! m_objHostApi.isObject())
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Cannot initialise the custom javascript engine"));
   }
   m_pEngine->globalObject().setProperty("tavrel", m_objHostApi);
   m_pWatchdog = std::make_unique<script_watchdog>();

   // The file's top level runs under the time limit too.
   QStringList stack;
   QJSValue result;
   bool outOfMemory = false;
   m_bRunning = true;
   m_sCurrentAction.clear();
   m_pWatchdog->arm(m_pEngine.get(), m_iTimeLimitMs);
   try { result = m_pEngine->evaluate(code, path, 1, & stack); }
   catch (const std::bad_alloc &) { outOfMemory = true; }
   const bool interrupted = m_pWatchdog->disarm();
   m_bRunning = false;

   if (interrupted || m_pEngine->isInterrupted())
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : time limit of %1 ms exceeded while loading '%2'").arg(m_iTimeLimitMs).arg(path));
   }
   if (outOfMemory)
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript ran out of memory while loading '%1'").arg(path));
   }
   if (result.isError() || ! stack.isEmpty())
   {
      int line = 0;
      if (result.isObject()) { line = result.property("lineNumber").toInt(); }
      if ((line <= 0) && ! stack.isEmpty())
      {
         // Entries read "function:line:file".
         const QStringList parts = stack.first().split(QLatin1Char(':'));
         if (parts.size() > 1) { line = parts.at(1).toInt(); }
      }
      const QString message = result.toString();
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript error in '%1' at line %2 : %3").arg(path).arg(line).arg(message));
   }

   m_fctExecute = m_pEngine->globalObject().property("execute");
   if (! m_fctExecute.isCallable())
   {
      releaseEngine();
      return zy::ZyBool(false, tr("No function 'execute(params)' defined in custom javascript file : %1").arg(path));
   }
   return zy::ZyBool(true);
}

zy::ZyBool custom_javascript::executeScript(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                                            model::enumeration * pEnumeration, const QHash<QString, QVariant> & params)
{
   const zy::ZyBool result = runExecute(pProject, pEntity, pProperty, pEnumeration, params);
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
   if (! isLoaded()) { return zy::ZyBool(false, tr("No custom javascript loaded : cannot execute action '%1'").arg(action)); }
   if (m_bRunning) { return zy::ZyBool(false, tr("Custom javascript is already running : cannot execute action '%1'").arg(action)); }

   QJSEngine & engine = (* m_pEngine);
   QJSValue result;
   bool outOfMemory = false;
   bool interrupted = false;
   m_bRunning = true;
   m_sCurrentAction = action;
   try
   {
      QJSValue jsParams = engine.newObject();
      for (auto itr = params.cbegin(); itr != params.cend(); ++itr) { jsParams.setProperty(itr.key(), engine.toScriptValue(itr.value())); }
      jsParams.setProperty("project", projectView(pProject));
      jsParams.setProperty("entity", m_fctFreeze.call(QJSValueList() << entityView(engine, pEntity)));
      jsParams.setProperty("property", m_fctFreeze.call(QJSValueList() << propertyView(engine, pProperty)));
      jsParams.setProperty("enumeration", m_fctFreeze.call(QJSValueList() << enumerationView(engine, pEnumeration)));

      m_pWatchdog->arm(m_pEngine.get(), m_iTimeLimitMs);
      result = m_fctRun.call(QJSValueList() << m_fctExecute << jsParams);
      interrupted = m_pWatchdog->disarm();
   }
   catch (const std::bad_alloc &)
   {
      interrupted = m_pWatchdog->disarm();
      outOfMemory = true;
   }
   m_bRunning = false;
   m_sCurrentAction.clear();

   if (interrupted || engine.isInterrupted())
   {
      // The flag must go, or every later call would stop at once.
      engine.setInterrupted(false);
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : time limit of %1 ms exceeded for action '%2'").arg(m_iTimeLimitMs).arg(action));
   }
   if (outOfMemory) { return zy::ZyBool(false, tr("Custom javascript ran out of memory for action '%1'").arg(action)); }
   if (result.isError()) { return zy::ZyBool(false, describeError(result)); }
   if (! result.property("ok").toBool()) { return zy::ZyBool(false, describeError(result.property("error"))); }

   const QJSValue value = result.property("value");
   if (value.isUndefined()) { return zy::ZyBool(true, params.value("default_value").toString()); }
   return zy::ZyBool(true, value.toString());
}

QJSValue custom_javascript::projectView(model::project * pProject)
{
   if (! pProject) { return QJSValue(QJSValue::NullValue); }

   // Built once per project state: a project may have hundreds of entities and the script runs
   // for every generated fragment.
   QStringList entityKeys, enumKeys;
   for (const model::entity_ptr & p : * pProject->getListOfAllEntities()) { if (p) { entityKeys << p->getKey(); } }
   for (const model::enumeration_ptr & p : * pProject->getListOfAllEnums()) { if (p) { enumKeys << p->getKey(); } }
   QStringList keys;
   keys << QString::number(pProject->getId()) << pProject->getName() << pProject->getLocation() << pProject->getFilePath()
        << QString::number(entityKeys.size()) << entityKeys << enumKeys;
   if ((m_pProjectViewOwner == pProject) && (m_lstProjectViewKeys == keys) && m_objProjectView.isObject()) { return m_objProjectView; }

   QJSEngine & engine = (* m_pEngine);
   QJSValue v = engine.newObject();
   v.setProperty("id", static_cast<double>(pProject->getId()));
   v.setProperty("name", pProject->getName());
   v.setProperty("location", pProject->getLocation());
   v.setProperty("file_path", pProject->getFilePath());
   m_fctListProperty.call(QJSValueList() << v << QJSValue("entities") << stringArray(engine, entityKeys));
   m_fctListProperty.call(QJSValueList() << v << QJSValue("enumerations") << stringArray(engine, enumKeys));
   v.setProperty("meta", metaView(engine, * pProject));
   m_objProjectView = m_fctFreeze.call(QJSValueList() << v);
   m_pProjectViewOwner = pProject;
   m_lstProjectViewKeys = keys;
   return m_objProjectView;
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
   plugin::base_interface * pPlugin = qobject_cast<plugin::base_interface *>(m_pPluginGuard.data());
   if (pPlugin) { Q_EMIT pPlugin->onMessage(tr("Custom javascript : %1").arg(text), 1, 3000); }
}

void custom_javascript::scriptBreakpoint(const QString & text)
{
   if (! m_bDebugging) { return; }
   if (m_pWatchdog) { m_pWatchdog->suspend(); }
   Q_EMIT onScriptBreakpoint(m_sCurrentAction, text);
   if (m_pWatchdog) { m_pWatchdog->resume(m_iTimeLimitMs); }
}

} // namespace tools

#include "custom_javascript.moc"
