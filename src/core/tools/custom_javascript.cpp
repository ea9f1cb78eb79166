#include "tools/custom_javascript.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <new>
#include <thread>

#ifdef Q_OS_LINUX
#include <unistd.h>
#endif

#include "context/ctx_project.h"
#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "plugin/base_interface.h"

namespace tools {

namespace {

// Resident size of the process in bytes, -1 when unknown (the memory check is then off).
qint64 residentBytes()
{
#ifdef Q_OS_LINUX
   std::FILE * f = std::fopen("/proc/self/statm", "r");
   if (! f) { return -1; }
   long long total = 0, resident = 0;
   const int n = std::fscanf(f, "%lld %lld", & total, & resident);
   std::fclose(f);
   if (n != 2) { return -1; }
   return static_cast<qint64>(resident) * static_cast<qint64>(sysconf(_SC_PAGESIZE));
#else
   return -1;
#endif
}

} // namespace

// Interrupts the engine when a call outlives its deadline or makes the process grow past its
// memory limit. One thread per script engine, idle between calls: an export runs the script
// for every generated fragment, so starting a thread per call would cost more than the calls.
class script_watchdog
{
   typedef std::chrono::steady_clock clock;

public:
   enum enum_stop { stop_none, stop_time, stop_memory };

private:
   // Often enough that a script filling memory as fast as it can overshoots by little.
   static constexpr std::chrono::milliseconds k_poll{10};

   std::mutex m_mutex;
   std::condition_variable m_cond;
   QJSEngine * m_pEngine = nullptr;
   clock::time_point m_deadline;
   qint64 m_iMemoryBase = -1;
   qint64 m_iMemoryLimit = 0;
   bool m_bArmed = false;
   enum_stop m_eFired = stop_none;
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

   void arm(QJSEngine * pEngine, int ms, int memoryMb)
   {
      const qint64 base = ((memoryMb > 0) ? residentBytes() : -1);
      {
         std::lock_guard<std::mutex> lock(m_mutex);
         m_pEngine = pEngine;
         m_eFired = stop_none;
         m_iMemoryBase = base;
         m_iMemoryLimit = ((base >= 0) ? (static_cast<qint64>(memoryMb) * 1024 * 1024) : 0);
         setDeadline(ms);
      }
      m_cond.notify_all();
   }

   // Once this returns the engine can't be interrupted any more; tells why it was, if it was.
   enum_stop disarm()
   {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_bArmed = false;
      m_iMemoryLimit = 0;
      return m_eFired;
   }

   // Stops the clock while a breakpoint holds the call, then grants a full time limit again.
   void suspend() { std::lock_guard<std::mutex> lock(m_mutex); m_bArmed = false; }
   void resume(int ms)
   {
      { std::lock_guard<std::mutex> lock(m_mutex); if ((m_eFired == stop_none) && m_pEngine) { setDeadline(ms); } }
      m_cond.notify_all();
   }

private:
   void setDeadline(int ms)
   {
      m_bArmed = ((ms > 0) || (m_iMemoryLimit > 0));
      m_deadline = ((ms > 0) ? (clock::now() + std::chrono::milliseconds(ms)) : clock::time_point::max());
   }

   void fire(enum_stop reason)
   {
      // Thread-safe by QJSEngine's contract; the engine stops at its next check.
      m_pEngine->setInterrupted(true);
      m_eFired = reason;
      m_bArmed = false;
   }

   void run()
   {
      std::unique_lock<std::mutex> lock(m_mutex);
      while (! m_bStop)
      {
         if (! m_bArmed) { m_cond.wait(lock); continue; }
         const clock::time_point now = clock::now();
         const clock::time_point wake = ((m_iMemoryLimit > 0) ? std::min(m_deadline, now + k_poll) : m_deadline);
         m_cond.wait_until(lock, wake);
         if (! m_bArmed || m_bStop) { continue; }
         if (clock::now() >= m_deadline) { fire(stop_time); continue; }
         if (m_iMemoryLimit > 0)
         {
            const qint64 resident = residentBytes();
            if ((resident >= 0) && ((resident - m_iMemoryBase) > m_iMemoryLimit)) { fire(stop_memory); }
         }
      }
   }
};

// The engine's way back into the host. The script never gets this object itself (it would
// reach QObject's own slots), only plain functions that call it.
class script_host_api : public QObject
{
   Q_OBJECT

   custom_javascript * m_pOwner;

public:
   explicit script_host_api(custom_javascript * pOwner) : QObject(pOwner), m_pOwner(pOwner) { ; }

   Q_INVOKABLE QVariant field(int serial, const QString & kind, const QString & name) const
   { return m_pOwner->viewField(serial, kind, name); }
   Q_INVOKABLE void log(const QString & text) { m_pOwner->scriptLog(text); }
   Q_INVOKABLE void breakpoint(const QString & text) { m_pOwner->scriptBreakpoint(text); }
};

namespace {

const int k_maxCallHistory = 10000;

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

QVariantMap viewFields()
{
   QVariantMap fields;
   fields.insert("project", QStringList{"id", "name", "location", "file_path", "entities", "enumerations", "meta"});
   fields.insert("entity", QStringList{"id", "name", "namespace", "key", "version", "description", "table_name", "parent_key",
                                       "abstract", "read_only", "soft_delete_column", "validator_method", "triggers",
                                       "properties", "relations", "primary_key", "meta"});
   fields.insert("property", QStringList{"id", "name", "entity", "type", "primitive_type", "decoration", "collection",
                                         "default_value", "enumeration", "primary_key", "column_name", "description",
                                         "version", "accessibility", "read_only", "obsolete", "transient", "serializable",
                                         "index", "unique", "allow_null", "relation", "meta"});
   fields.insert("enumeration", QStringList{"id", "name", "namespace", "key", "enum_name", "use_qt_enum", "description",
                                            "version", "values", "meta"});
   return fields;
}

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

QVariant metaField(const model::persistable & item)
{
   QVariantMap meta;
   const QMap<QString, QString> & map = item.getAllMetaData();
   for (auto itr = map.cbegin(); itr != map.cend(); ++itr) { meta.insert(itr.key(), itr.value()); }
   return meta;
}

QVariant projectField(const model::project & p, const QString & name)
{
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(p.getId())); }
   if (name == QLatin1String("name")) { return p.getName(); }
   if (name == QLatin1String("location")) { return p.getLocation(); }
   if (name == QLatin1String("file_path")) { return p.getFilePath(); }
   if (name == QLatin1String("entities"))
   {
      QStringList keys;
      for (const model::entity_ptr & e : * p.getListOfAllEntities()) { if (e) { keys << e->getKey(); } }
      return keys;
   }
   if (name == QLatin1String("enumerations"))
   {
      QStringList keys;
      for (const model::enumeration_ptr & e : * p.getListOfAllEnums()) { if (e) { keys << e->getKey(); } }
      return keys;
   }
   if (name == QLatin1String("meta")) { return metaField(p); }
   return QVariant();
}

QVariant entityField(const model::entity & e, const QString & name)
{
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(e.getId())); }
   if (name == QLatin1String("name")) { return e.getName(); }
   if (name == QLatin1String("namespace")) { return e.getNamespace(); }
   if (name == QLatin1String("key")) { return e.getKey(); }
   if (name == QLatin1String("version")) { return QVariant(static_cast<qlonglong>(e.getVersion())); }
   if (name == QLatin1String("description")) { return e.getDescription(); }
   if (name == QLatin1String("table_name")) { return e.getTableName(); }
   if (name == QLatin1String("parent_key")) { return e.getParentKey(); }
   if (name == QLatin1String("abstract")) { return e.isAbstract(); }
   if (name == QLatin1String("read_only")) { return e.isReadOnly(); }
   if (name == QLatin1String("soft_delete_column")) { return e.getSoftDeleteColumn(); }
   if (name == QLatin1String("validator_method")) { return e.getValidatorMethod(); }
   if (name == QLatin1String("triggers"))
   {
      return model::triggerKeys(e);
   }
   if ((name == QLatin1String("properties")) || (name == QLatin1String("relations")))
   {
      const bool onlyRelations = (name == QLatin1String("relations"));
      QStringList names;
      for (const model::property_ptr & p : e.getOwnProperties())
      {
         if (p && (! onlyRelations || p->hasRelationship())) { names << p->getName(); }
      }
      return names;
   }
   if (name == QLatin1String("primary_key"))
   {
      const model::property_ptr pk = e.getPropertyId(true);
      return (pk ? pk->getName() : QString());
   }
   if (name == QLatin1String("meta")) { return metaField(e); }
   return QVariant();
}

QVariant propertyField(const model::property & p, const QString & name)
{
   const model::property_type_ptr type = p.getType();
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(p.getId())); }
   if (name == QLatin1String("name")) { return p.getName(); }
   if (name == QLatin1String("entity")) { const model::entity_ptr owner = p.getEntity(); return (owner ? owner->getKey() : QString()); }
   if (name == QLatin1String("type")) { return p.getTypeDesc(false, false); }
   if (name == QLatin1String("primitive_type")) { return (type ? type->getPrimitiveType() : QString()); }
   if (name == QLatin1String("decoration")) { return (type ? type->getDecoration() : 0); }
   if (name == QLatin1String("collection")) { return (type ? type->getCollection() : 0); }
   if (name == QLatin1String("default_value")) { return (type ? type->getDefaultValue() : QString()); }
   if (name == QLatin1String("enumeration")) { return p.getEnumerationKey(); }
   if (name == QLatin1String("primary_key")) { return p.isPrimaryKey(); }
   if (name == QLatin1String("column_name")) { return p.getColumnName(); }
   if (name == QLatin1String("description")) { return p.getDescription(); }
   if (name == QLatin1String("version")) { return QVariant(static_cast<qlonglong>(p.getVersion())); }
   if (name == QLatin1String("accessibility")) { return p.getAccessibility(); }
   if (name == QLatin1String("read_only")) { return p.isReadOnly(); }
   if (name == QLatin1String("obsolete")) { return p.isObsolete(); }
   if (name == QLatin1String("transient")) { return p.isTransient(); }
   if (name == QLatin1String("serializable")) { return p.isSerializable(); }
   if (name == QLatin1String("index")) { return p.isIndex(); }
   if (name == QLatin1String("unique")) { return p.getUnique(); }
   if (name == QLatin1String("allow_null")) { return p.getAllowNull(); }
   if (name == QLatin1String("relation"))
   {
      const model::relationship_ptr rel = p.getRelation();
      if (! rel) { return QVariant::fromValue(nullptr); }
      QVariantMap r;
      r.insert("kind", rel->getType());
      r.insert("target", rel->getTargetKey());
      r.insert("foreign_key", rel->getForeignKey());
      r.insert("foreign_key_owner", rel->getForeignKeyOwner());
      r.insert("extra_table", rel->getExtraTable());
      return r;
   }
   if (name == QLatin1String("meta")) { return metaField(p); }
   return QVariant();
}

QVariant enumerationField(const model::enumeration & e, const QString & name)
{
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(e.getId())); }
   if (name == QLatin1String("name")) { return e.getName(); }
   if (name == QLatin1String("namespace")) { return e.getNamespace(); }
   if (name == QLatin1String("key")) { return e.getKey(); }
   if (name == QLatin1String("enum_name")) { return e.getEnumName(); }
   if (name == QLatin1String("use_qt_enum")) { return e.getUseQtEnum(); }
   if (name == QLatin1String("description")) { return e.getDescription(); }
   if (name == QLatin1String("version")) { return QVariant(static_cast<qlonglong>(e.getVersion())); }
   if (name == QLatin1String("values"))
   {
      QVariantList values;
      const auto & kv = e.getAllKeyValue();
      for (qsizetype i = 0; i < kv.size(); ++i)
      {
         QVariantMap item;
         item.insert("key", kv.getKeyByIndex(i));
         item.insert("value", kv.getByIndex(i));
         values.append(item);
      }
      return values;
   }
   if (name == QLatin1String("meta")) { return metaField(e); }
   return QVariant();
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
   const QJSValue setup = m_pEngine->evaluate(QString::fromLatin1(k_setup));
   const QJSValue tools = setup.call(QJSValueList() << m_pEngine->newQObject(m_pHostApi) << m_pEngine->toScriptValue(viewFields()));
   m_fctRun = tools.property("run");
   m_fctMakeParams = tools.property("makeParams");
   m_objHostApi = tools.property("host");
   if (! m_fctRun.isCallable() || ! m_fctMakeParams.isCallable() || ! m_objHostApi.isObject())
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Cannot initialise the custom javascript engine"));
   }
   m_pEngine->globalObject().setProperty("tavrel", m_objHostApi);
   m_pWatchdog = std::make_unique<script_watchdog>();

   // The file's top level runs under the limits too, and so does the reading of its error or of
   // "execute": a thrown object's toString, or a getter, is script code that may never end.
   QStringList stack;
   QJSValue result;
   bool outOfMemory = false;
   bool failed = false;
   int line = 0;
   QString message;
   m_bRunning = true;
   m_sCurrentAction.clear();
   m_pWatchdog->arm(m_pEngine.get(), m_iTimeLimitMs, m_iMemoryLimitMb);
   try
   {
      result = m_pEngine->evaluate(code, path, 1, & stack);
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
   m_bRunning = false;

   if (stop == script_watchdog::stop_memory)
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : memory limit of %1 MB exceeded while loading '%2'").arg(m_iMemoryLimitMb).arg(path));
   }
   if ((stop == script_watchdog::stop_time) || m_pEngine->isInterrupted())
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : time limit of %1 ms exceeded while loading '%2'").arg(m_iTimeLimitMs).arg(path));
   }
   if (outOfMemory)
   {
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript ran out of memory while loading '%1'").arg(path));
   }
   if (failed)
   {
      if ((line <= 0) && ! stack.isEmpty())
      {
         // Entries read "function:line:file".
         const QStringList parts = stack.first().split(QLatin1Char(':'));
         if (parts.size() > 1) { line = parts.at(1).toInt(); }
      }
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript error in '%1' at line %2 : %3").arg(path).arg(line).arg(message));
   }

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

      m_pWatchdog->arm(m_pEngine.get(), m_iTimeLimitMs, m_iMemoryLimitMb);
      result = m_fctRun.call(QJSValueList() << m_fctExecute << jsParams << maxResultLength());
      // Reading a thrown value may run script code (its toString, a getter): still watched.
      outcome = readOutcome(result, action, params.value("default_value").toString());
      stop = m_pWatchdog->disarm();
   }
   catch (const std::bad_alloc &)
   {
      stop = m_pWatchdog->disarm();
      outOfMemory = true;
   }
   m_bRunning = false;
   m_sCurrentAction.clear();
   m_pCurProject = nullptr;
   m_pCurEntity = nullptr;
   m_pCurProperty = nullptr;
   m_pCurEnumeration = nullptr;

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
      m_sStopReason = tr("time limit of %1 ms exceeded for action '%2'").arg(m_iTimeLimitMs).arg(action);
      result = QJSValue();
      releaseEngine();
      return zy::ZyBool(false, tr("Custom javascript execution interrupted : %1").arg(m_sStopReason));
   }
   return outcome;
}

QVariant custom_javascript::viewField(int serial, const QString & kind, const QString & name) const
{
   if (! m_bRunning || (serial != m_iCallSerial)) { return QVariant(); }
   if ((kind == QLatin1String("project")) && m_pCurProject) { return projectField(* m_pCurProject, name); }
   if ((kind == QLatin1String("entity")) && m_pCurEntity) { return entityField(* m_pCurEntity, name); }
   if ((kind == QLatin1String("property")) && m_pCurProperty) { return propertyField(* m_pCurProperty, name); }
   if ((kind == QLatin1String("enumeration")) && m_pCurEnumeration) { return enumerationField(* m_pCurEnumeration, name); }
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
