#include "storage/project_storage.h"

#include <QAtomicInt>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

#include <cmath>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_recovery.h"

namespace storage {

namespace {

// Version of the table layout written by this code; newer files are refused, not misread.
const int k_iFormatVersion = 1;
// 2^53: every integer up to it is exact in a double.
const double k_dMaxExactInteger = 9007199254740992.0;

const char * const k_aszModelTables[] = { "t_meta_data", "t_enumeration_value", "t_enumeration", "t_relationship", "t_property", "t_entity", "t_project" };

const char * const k_aszSchema[] = {
   // One row: the project itself.
   "CREATE TABLE IF NOT EXISTS t_project (seq INTEGER PRIMARY KEY, id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', "
   "format_version INTEGER NOT NULL DEFAULT 1)",
   // "seq" is the document order; "id" the model's persistable id (0 = not stored, so not unique).
   "CREATE TABLE IF NOT EXISTS t_entity (seq INTEGER PRIMARY KEY, id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', "
   "namespace TEXT NOT NULL DEFAULT '', version INTEGER NOT NULL DEFAULT 0, description TEXT, table_name TEXT, parent_key TEXT, "
   "is_abstract INTEGER NOT NULL DEFAULT 0, read_only INTEGER NOT NULL DEFAULT 0, soft_delete_column TEXT, validator_method TEXT, "
   "@TRIGGERS@)",
   // type_text is NULL when the type comes from the enumeration (or there is none).
   "CREATE TABLE IF NOT EXISTS t_property (seq INTEGER PRIMARY KEY, entity_seq INTEGER NOT NULL REFERENCES t_entity(seq), "
   "id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', has_type INTEGER NOT NULL DEFAULT 0, type_text TEXT, "
   "decoration INTEGER NOT NULL DEFAULT 0, collection INTEGER NOT NULL DEFAULT 0, default_value TEXT, enumeration_key TEXT, "
   "primary_key INTEGER NOT NULL DEFAULT 0, column_name TEXT, description TEXT, version INTEGER NOT NULL DEFAULT 0, "
   "accessibility INTEGER NOT NULL DEFAULT 1, write_accessors INTEGER NOT NULL DEFAULT 1, obsolete INTEGER NOT NULL DEFAULT 0, "
   "read_only INTEGER NOT NULL DEFAULT 0, get_method TEXT, set_method TEXT, transient INTEGER NOT NULL DEFAULT 0, "
   "serializable INTEGER NOT NULL DEFAULT 1, is_index INTEGER NOT NULL DEFAULT 0, is_unique INTEGER NOT NULL DEFAULT 0, "
   "allow_null INTEGER NOT NULL DEFAULT 1, min_value TEXT, max_value TEXT, min_length TEXT, max_length TEXT, reg_exp TEXT, "
   "force_sql_type TEXT, force_sql_alias TEXT, format TEXT)",
   "CREATE TABLE IF NOT EXISTS t_relationship (seq INTEGER PRIMARY KEY, property_seq INTEGER NOT NULL UNIQUE REFERENCES t_property(seq), "
   "id INTEGER NOT NULL DEFAULT 0, kind INTEGER NOT NULL DEFAULT 0, target_key TEXT NOT NULL DEFAULT '', foreign_key TEXT, "
   "foreign_key_owner TEXT, extra_table TEXT)",
   "CREATE TABLE IF NOT EXISTS t_enumeration (seq INTEGER PRIMARY KEY, id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', "
   "namespace TEXT NOT NULL DEFAULT '', enum_name TEXT, use_qt_enum INTEGER NOT NULL DEFAULT 0, description TEXT, "
   "version INTEGER NOT NULL DEFAULT 0)",
   "CREATE TABLE IF NOT EXISTS t_enumeration_value (seq INTEGER PRIMARY KEY, enumeration_seq INTEGER NOT NULL REFERENCES t_enumeration(seq), "
   "value_key TEXT NOT NULL, value_text TEXT)",
   // owner_kind: 'project', 'entity', 'property' or 'enumeration'; owner_seq: the owner's seq.
   "CREATE TABLE IF NOT EXISTS t_meta_data (seq INTEGER PRIMARY KEY, owner_kind TEXT NOT NULL, owner_seq INTEGER NOT NULL, "
   "meta_key TEXT NOT NULL, meta_value TEXT)",
   "CREATE TABLE IF NOT EXISTS t_plugin_params (id INTEGER PRIMARY KEY AUTOINCREMENT, plugin_guid TEXT NOT NULL, "
   "param_key TEXT NOT NULL, param_value, param_type INTEGER)",
   "CREATE INDEX IF NOT EXISTS idx_plugin_params_guid ON t_plugin_params (plugin_guid)" };

// One column per trigger, named after the trigger: "trigger_before_fetch"...; with a suffix
// such as " INTEGER NOT NULL DEFAULT 0" for the table's definition.
QString triggerColumns(const char * szSuffix = "")
{
   QStringList lst;
   for (const model::entity_trigger & t : model::entityTriggers()) { lst.append(QString("trigger_") + t.key + szSuffix); }
   return lst.join(", ");
}

QString schemaStatement(const char * szSql) { return QString::fromLatin1(szSql).replace("@TRIGGERS@", triggerColumns(" INTEGER NOT NULL DEFAULT 0")); }

QString nextConnectionName()
{
   static QAtomicInt s_iCounter;
   return QString("tavrel_project_%1").arg(s_iCounter.fetchAndAddOrdered(1) + 1);
}

QString dbErrorText(const QSqlError & err)
{
   QString s = err.databaseText();
   if (s.isEmpty()) { s = err.text(); }
   return s;
}

// Refuses, before SQLite touches it, a file that is not an SQLite database (SQLite would only
// fail at the first statement, or treat a text file as garbage pages).
QString fileProblem(const QString & sFile)
{
   const QString sInterrupted = project_recovery::recoverInterruptedWrite(sFile, false);
   if (! sInterrupted.isEmpty()) { return sInterrupted; }
   QFileInfo info(sFile);
   if (! info.exists()) { return QString(); }
   if (! info.isFile()) { return QString("'%1' is not a file").arg(sFile); }
   if (info.size() == 0) { return QString(); }
   QFile f(sFile);
   if (! f.open(QIODevice::ReadOnly)) { return QString("cannot read '%1': %2").arg(sFile, f.errorString()); }
   const QByteArray header = f.read(16);
   if (header != QByteArray("SQLite format 3\0", 16)) { return QString("'%1' is not a Tavrel project file (not an SQLite database)").arg(sFile); }
   return QString();
}

// A database connection of its own, removed when the scope ends.
class scoped_connection
{
   QSqlDatabase m_database;

public:
   scoped_connection(const QString & sFile, bool bReadOnly)
   {
      m_database = QSqlDatabase::addDatabase("QSQLITE", nextConnectionName());
      m_database.setDatabaseName(sFile);
      if (bReadOnly) { m_database.setConnectOptions("QSQLITE_OPEN_READONLY"); }
   }
   ~scoped_connection() { project_storage::closeDatabase(m_database); }
   scoped_connection(const scoped_connection &) = delete;
   scoped_connection & operator=(const scoped_connection &) = delete;
   QSqlDatabase & db() { return m_database; }
};

bool execSql(QSqlDatabase & db, const QString & sql, QString & sError)
{
   QSqlQuery query(db);
   if (query.exec(sql)) { return true; }
   sError = dbErrorText(query.lastError());
   return false;
}

// Lists the tables; also the first real read, where a corrupt file shows.
bool listTables(QSqlDatabase & db, QStringList & lstTables, QString & sError)
{
   QSqlQuery query(db);
   if (! query.exec("SELECT name FROM sqlite_master WHERE type = 'table'")) { sError = dbErrorText(query.lastError()); return false; }
   while (query.next()) { lstTables.append(query.value(0).toString()); }
   if (query.lastError().isValid()) { sError = dbErrorText(query.lastError()); return false; }
   return true;
}

// Bounds are kept as JSON texts so that a number stays a number and a text a text.
QVariant boundToColumn(const QVariant & v)
{
   if (! v.isValid() || v.isNull()) { return QVariant(QMetaType(QMetaType::QString)); }
   QJsonArray arr;
   arr.append(QJsonValue::fromVariant(v));
   const QByteArray text = QJsonDocument(arr).toJson(QJsonDocument::Compact);
   return QVariant(QString::fromUtf8(text.mid(1, text.size() - 2)));
}

QVariant boundFromColumn(const QVariant & v)
{
   if (v.isNull()) { return QVariant(); }
   const QJsonArray arr = QJsonDocument::fromJson("[" + v.toString().toUtf8() + "]").array();
   if (arr.isEmpty()) { return QVariant(); }
   const QJsonValue value = arr.at(0);
   if (value.isString()) { return QVariant(value.toString()); }
   if (value.isDouble())
   {
      const double d = value.toDouble();
      if ((double(qlonglong(d)) == d) && (std::abs(d) <= k_dMaxExactInteger)) { return QVariant(qlonglong(d)); }
      return QVariant(d);
   }
   return value.toVariant();
}

// One line per problem, as the JSON import reports them.
QString refusalText(const QString & sFile, const QStringList & lstProblems)
{
   const qsizetype iMax = 100;
   QStringList lst;
   for (qsizetype i = 0; (i < lstProblems.size()) && (i < iMax); ++i) { lst.append(QString("%1: %2").arg(sFile, lstProblems.at(i))); }
   if (lstProblems.size() > iMax) { lst.append(QString("... and %1 more errors").arg(lstProblems.size() - iMax)); }
   return lst.join("\n");
}

QVariant text(const QString & s) { return QVariant(s.isNull() ? QString("") : s); }
QVariant flag(bool b) { return QVariant(b ? 1 : 0); }

QVariantList triggerFlags(const model::entity & e)
{
   QVariantList lst;
   for (const model::entity_trigger & t : model::entityTriggers()) { lst.append(flag((e.*t.isSet)())); }
   return lst;
}

class model_writer
{
   QSqlDatabase & m_db;
   QString m_sError;
   QSqlQuery m_qEntity, m_qProperty, m_qRelation, m_qEnum, m_qValue, m_qMeta;
   qlonglong m_lMetaSeq = 0;

   bool prepare(QSqlQuery & q, const QString & sql)
   {
      if (q.prepare(sql)) { return true; }
      m_sError = dbErrorText(q.lastError());
      return false;
   }

   bool run(QSqlQuery & q, const QVariantList & values)
   {
      for (int i = 0; i < values.size(); ++i) { q.bindValue(i, values.at(i)); }
      if (q.exec()) { return true; }
      m_sError = dbErrorText(q.lastError());
      return false;
   }

   bool writeMeta(const char * szKind, qlonglong lOwnerSeq, const model::persistable & item)
   {
      const QMap<QString, QString> & map = item.getAllMetaData();
      for (auto itr = map.constBegin(); itr != map.constEnd(); ++itr)
      {
         if (! run(m_qMeta, { ++m_lMetaSeq, QString(szKind), lOwnerSeq, text(itr.key()), text(itr.value()) })) { return false; }
      }
      return true;
   }

public:
   explicit model_writer(QSqlDatabase & db) : m_db(db), m_qEntity(db), m_qProperty(db), m_qRelation(db), m_qEnum(db), m_qValue(db), m_qMeta(db) { ; }
   QString error() const { return m_sError; }

   bool write(const model::project & project)
   {
      for (const char * szTable : k_aszModelTables)
      {
         if (! execSql(m_db, QString("DELETE FROM %1").arg(szTable), m_sError)) { return false; }
      }

      QSqlQuery qProject(m_db);
      if (! prepare(qProject, "INSERT INTO t_project (seq, id, name, format_version) VALUES (1, ?, ?, ?)")) { return false; }
      if (! run(qProject, { qlonglong(project.getId()), text(project.getName()), k_iFormatVersion })) { return false; }
      if (! prepare(m_qMeta, "INSERT INTO t_meta_data (seq, owner_kind, owner_seq, meta_key, meta_value) VALUES (?, ?, ?, ?, ?)")) { return false; }
      if (! writeMeta("project", 1, project)) { return false; }

      if (! prepare(m_qEnum, "INSERT INTO t_enumeration (seq, id, name, namespace, enum_name, use_qt_enum, description, version) "
                             "VALUES (?, ?, ?, ?, ?, ?, ?, ?)")) { return false; }
      if (! prepare(m_qValue, "INSERT INTO t_enumeration_value (seq, enumeration_seq, value_key, value_text) VALUES (?, ?, ?, ?)")) { return false; }
      qlonglong lEnumSeq = 0, lValueSeq = 0;
      for (const model::enumeration_ptr & pEnum : (* project.getListOfAllEnums()))
      {
         if (! pEnum) { continue; }
         ++lEnumSeq;
         // Only an explicit enum name is stored: the default follows the name.
         const QString sEnumName = ((pEnum->getEnumName() == (QString("enum_") + pEnum->getName())) ? QString() : pEnum->getEnumName());
         if (! run(m_qEnum, { lEnumSeq, qlonglong(pEnum->getId()), text(pEnum->getName()), text(pEnum->getNamespace()), text(sEnumName),
                              flag(pEnum->getUseQtEnum()), text(pEnum->getDescription()), qlonglong(pEnum->getVersion()) })) { return false; }
         for (const auto & keyValue : pEnum->getAllKeyValue())
         {
            if (! run(m_qValue, { ++lValueSeq, lEnumSeq, text(keyValue.first), text(keyValue.second) })) { return false; }
         }
         if (! writeMeta("enumeration", lEnumSeq, * pEnum)) { return false; }
      }

      if (! prepare(m_qEntity, "INSERT INTO t_entity (seq, id, name, namespace, version, description, table_name, parent_key, is_abstract, "
                               "read_only, soft_delete_column, validator_method, " + triggerColumns() + ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?"
                               + QString(", ?").repeated(int(model::entityTriggers().size())) + ")"))
      { return false; }
      if (! prepare(m_qProperty, "INSERT INTO t_property (seq, entity_seq, id, name, has_type, type_text, decoration, collection, "
                                 "default_value, enumeration_key, primary_key, column_name, description, version, accessibility, "
                                 "write_accessors, obsolete, read_only, get_method, set_method, transient, serializable, is_index, "
                                 "is_unique, allow_null, min_value, max_value, min_length, max_length, reg_exp, force_sql_type, "
                                 "force_sql_alias, format) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                                 "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"))
      { return false; }
      if (! prepare(m_qRelation, "INSERT INTO t_relationship (seq, property_seq, id, kind, target_key, foreign_key, foreign_key_owner, "
                                 "extra_table) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"))
      { return false; }

      qlonglong lEntitySeq = 0, lPropertySeq = 0, lRelationSeq = 0;
      for (const model::entity_ptr & pEntity : (* project.getListOfAllEntities()))
      {
         if (! pEntity) { continue; }
         const model::entity & e = (* pEntity);
         ++lEntitySeq;
         if (! run(m_qEntity, QVariantList { lEntitySeq, qlonglong(e.getId()), text(e.getName()), text(e.getNamespace()), qlonglong(e.getVersion()),
                                text(e.getDescription()), text(e.getTableName()), text(e.getParentKey()), flag(e.isAbstract()),
                                flag(e.isReadOnly()), text(e.getSoftDeleteColumn()), text(e.getValidatorMethod()) }
                              + triggerFlags(e))) { return false; }
         if (! writeMeta("entity", lEntitySeq, e)) { return false; }

         for (const model::property_ptr & pProperty : e.getOwnProperties())
         {
            if (! pProperty) { continue; }
            const model::property & p = (* pProperty);
            ++lPropertySeq;
            model::property_type_ptr pType = p.getType();
            const QVariant vTypeText = ((pType && ! pType->isFromEnumeration()) ? text(pType->getPrimitiveType()) : QVariant(QMetaType(QMetaType::QString)));
            if (! run(m_qProperty, { lPropertySeq, lEntitySeq, qlonglong(p.getId()), text(p.getName()), flag(pType != nullptr), vTypeText,
                                     (pType ? pType->getDecoration() : 0), (pType ? pType->getCollection() : 0),
                                     text(pType ? pType->getDefaultValue() : QString()), text(p.getEnumerationKey()), flag(p.isPrimaryKey()),
                                     text(p.getColumnName()), text(p.getDescription()), qlonglong(p.getVersion()), p.getAccessibility(),
                                     flag(p.getWriteAccessors()), flag(p.isObsolete()), flag(p.isReadOnly()), text(p.getGetMethod()),
                                     text(p.getSetMethod()), flag(p.isTransient()), flag(p.isSerializable()), flag(p.isIndex()),
                                     flag(p.getUnique()), flag(p.getAllowNull()), boundToColumn(p.getMinValue()),
                                     boundToColumn(p.getMaxValue()), boundToColumn(p.getMinLength()), boundToColumn(p.getMaxLength()),
                                     text(p.getRegExp()), text(p.getForceSqlType()), text(p.getForceSqlAlias()), text(p.getFormat()) }))
            { return false; }
            if (! writeMeta("property", lPropertySeq, p)) { return false; }

            model::relationship_ptr pRelation = p.getRelation();
            if (! pRelation) { continue; }
            if (! run(m_qRelation, { ++lRelationSeq, lPropertySeq, qlonglong(pRelation->getId()), pRelation->getType(),
                                     text(pRelation->getTargetKey()), text(pRelation->getForeignKey()),
                                     text(pRelation->getForeignKeyOwner()), text(pRelation->getExtraTable()) }))
            { return false; }
         }
      }
      return true;
   }
};

class model_loader
{
   QSqlDatabase & m_db;
   QString m_sError;

   bool select(QSqlQuery & q, const QString & sql)
   {
      q.setForwardOnly(true);
      if (q.exec(sql)) { return true; }
      m_sError = dbErrorText(q.lastError());
      return false;
   }

   bool finished(QSqlQuery & q)
   {
      if (! q.lastError().isValid()) { return true; }
      m_sError = dbErrorText(q.lastError());
      return false;
   }

public:
   explicit model_loader(QSqlDatabase & db) : m_db(db) { ; }
   QString error() const { return m_sError; }

   bool load(model::project & project)
   {
      QSqlQuery q(m_db);
      if (! select(q, "SELECT id, name, format_version FROM t_project ORDER BY seq LIMIT 1")) { return false; }
      if (q.next())
      {
         if (q.value(2).toInt() > k_iFormatVersion)
         { m_sError = QString("the file was written by a newer version of Tavrel (format %1)").arg(q.value(2).toInt()); return false; }
         project.setId(long(q.value(0).toLongLong()));
         project.setName(q.value(1).toString());
      }
      if (! finished(q)) { return false; }

      // Meta data of every owner, gathered first and handed out below.
      QHash<QString, QHash<qlonglong, QList<QPair<QString, QString> > > > hashMeta;
      if (! select(q, "SELECT owner_kind, owner_seq, meta_key, meta_value FROM t_meta_data ORDER BY seq")) { return false; }
      while (q.next()) { hashMeta[q.value(0).toString()][q.value(1).toLongLong()].append(qMakePair(q.value(2).toString(), q.value(3).toString())); }
      if (! finished(q)) { return false; }
      auto applyMeta = [& hashMeta](const char * szKind, qlonglong lSeq, model::persistable & item)
      {
         auto itrKind = hashMeta.constFind(QString(szKind));
         if (itrKind == hashMeta.constEnd()) { return; }
         auto itr = itrKind->constFind(lSeq);
         if (itr == itrKind->constEnd()) { return; }
         for (const auto & pair : (* itr)) { item.setMetaData(pair.first, pair.second); }
      };
      applyMeta("project", 1, project);

      QHash<qlonglong, model::enumeration_ptr> hashEnums;
      if (! select(q, "SELECT seq, id, name, namespace, enum_name, use_qt_enum, description, version FROM t_enumeration ORDER BY seq")) { return false; }
      while (q.next())
      {
         auto pEnum = std::make_shared<model::enumeration>();
         const qlonglong lSeq = q.value(0).toLongLong();
         pEnum->setId(long(q.value(1).toLongLong()));
         pEnum->setName(q.value(2).toString());
         pEnum->setNamespace(q.value(3).toString());
         pEnum->setEnumName(q.value(4).toString());
         pEnum->setUseQtEnum(q.value(5).toBool());
         pEnum->setDescription(q.value(6).toString());
         pEnum->setVersion(long(q.value(7).toLongLong()));
         applyMeta("enumeration", lSeq, * pEnum);
         hashEnums.insert(lSeq, pEnum);
         project.addEnumeration(pEnum);
      }
      if (! finished(q)) { return false; }

      if (! select(q, "SELECT enumeration_seq, value_key, value_text FROM t_enumeration_value ORDER BY seq")) { return false; }
      while (q.next())
      {
         model::enumeration_ptr pEnum = hashEnums.value(q.value(0).toLongLong());
         if (pEnum && ! pEnum->addKeyValue(q.value(1).toString(), q.value(2).toString()))
         { m_sError = QString("Enumeration '%1' : value key '%2' is given more than once").arg(pEnum->getKey(), q.value(1).toString()); return false; }
      }
      if (! finished(q)) { return false; }

      QHash<qlonglong, model::entity_ptr> hashEntities;
      if (! select(q, "SELECT seq, id, name, namespace, version, description, table_name, parent_key, is_abstract, read_only, "
                      "soft_delete_column, validator_method, " + triggerColumns() + " FROM t_entity ORDER BY seq")) { return false; }
      while (q.next())
      {
         auto pEntity = std::make_shared<model::entity>();
         model::entity & e = (* pEntity);
         const qlonglong lSeq = q.value(0).toLongLong();
         e.setId(long(q.value(1).toLongLong()));
         e.setName(q.value(2).toString());
         e.setNamespace(q.value(3).toString());
         e.setVersion(long(q.value(4).toLongLong()));
         e.setDescription(q.value(5).toString());
         e.setTableName(q.value(6).toString());
         e.setParentKey(q.value(7).toString());
         e.setAbstract(q.value(8).toBool());
         e.setReadOnly(q.value(9).toBool());
         e.setSoftDeleteColumn(q.value(10).toString());
         e.setValidatorMethod(q.value(11).toString());
         int iColumn = 12;
         for (const model::entity_trigger & t : model::entityTriggers()) { (e.*t.set)(q.value(iColumn++).toBool()); }
         applyMeta("entity", lSeq, e);
         hashEntities.insert(lSeq, pEntity);
         project.addEntity(pEntity);
      }
      if (! finished(q)) { return false; }

      QHash<qlonglong, model::property_ptr> hashProperties;
      if (! select(q, "SELECT seq, entity_seq, id, name, has_type, type_text, decoration, collection, default_value, enumeration_key, "
                      "primary_key, column_name, description, version, accessibility, write_accessors, obsolete, read_only, get_method, "
                      "set_method, transient, serializable, is_index, is_unique, allow_null, min_value, max_value, min_length, "
                      "max_length, reg_exp, force_sql_type, force_sql_alias, format FROM t_property ORDER BY seq")) { return false; }
      while (q.next())
      {
         model::entity_ptr pEntity = hashEntities.value(q.value(1).toLongLong());
         if (! pEntity) { continue; }
         auto pProperty = std::make_shared<model::property>();
         model::property & p = (* pProperty);
         const qlonglong lSeq = q.value(0).toLongLong();
         p.setId(long(q.value(2).toLongLong()));
         p.setName(q.value(3).toString());
         if (q.value(4).toBool())
         {
            auto pType = std::make_shared<model::property_type>();
            pType->setId(p.getId());
            pType->setPrimitiveType(q.value(5).toString());
            // No stored text: the type comes from the enumeration (resolveLinks fills it in).
            pType->setFromEnumeration(q.value(5).isNull());
            pType->setDecoration(q.value(6).toInt());
            pType->setCollection(q.value(7).toInt());
            pType->setDefaultValue(q.value(8).toString());
            p.setType(pType);
         }
         p.setEnumerationKey(q.value(9).toString());
         p.setPrimaryKey(q.value(10).toBool());
         p.setColumnName(q.value(11).toString());
         p.setDescription(q.value(12).toString());
         p.setVersion(long(q.value(13).toLongLong()));
         p.setAccessibility(q.value(14).toInt());
         p.setWriteAccessors(q.value(15).toBool());
         p.setObsolete(q.value(16).toBool());
         p.setReadOnly(q.value(17).toBool());
         p.setGetMethod(q.value(18).toString());
         p.setSetMethod(q.value(19).toString());
         p.setTransient(q.value(20).toBool());
         p.setSerializable(q.value(21).toBool());
         p.setIndex(q.value(22).toBool());
         p.setUnique(q.value(23).toBool());
         p.setAllowNull(q.value(24).toBool());
         p.setMinValue(boundFromColumn(q.value(25)));
         p.setMaxValue(boundFromColumn(q.value(26)));
         p.setMinLength(boundFromColumn(q.value(27)));
         p.setMaxLength(boundFromColumn(q.value(28)));
         p.setRegExp(q.value(29).toString());
         p.setForceSqlType(q.value(30).toString());
         p.setForceSqlAlias(q.value(31).toString());
         p.setFormat(q.value(32).toString());
         applyMeta("property", lSeq, p);
         hashProperties.insert(lSeq, pProperty);
         pEntity->addProperty(pProperty);
      }
      if (! finished(q)) { return false; }

      if (! select(q, "SELECT property_seq, id, kind, target_key, foreign_key, foreign_key_owner, extra_table FROM t_relationship ORDER BY seq"))
      { return false; }
      while (q.next())
      {
         model::property_ptr pProperty = hashProperties.value(q.value(0).toLongLong());
         if (! pProperty) { continue; }
         auto pRelation = std::make_shared<model::relationship>();
         pRelation->setId(long(q.value(1).toLongLong()));
         pRelation->setType(q.value(2).toInt());
         pRelation->setTargetKey(q.value(3).toString());
         pRelation->setForeignKey(q.value(4).toString());
         pRelation->setForeignKeyOwner(q.value(5).toString());
         pRelation->setExtraTable(q.value(6).toString());
         pProperty->setRelation(pRelation);
      }
      return finished(q);
   }
};

} // namespace

zy::ZyBool project_storage::createSchema(QSqlDatabase & database)
{
   QString sError;
   for (const char * szSql : k_aszSchema)
   {
      if (! execSql(database, schemaStatement(szSql), sError)) { return zy::ZyBool(false, "cannot create the project tables: " + sError); }
   }
   return zy::ZyBool(true);
}

void project_storage::closeDatabase(QSqlDatabase & database)
{
   const QString sName = database.connectionName();
   if (database.isOpen()) { database.close(); }
   database = QSqlDatabase();
   if (! sName.isEmpty() && QSqlDatabase::contains(sName)) { QSqlDatabase::removeDatabase(sName); }
}

zy::ZyBool project_storage::openDatabase(const QString & projectFile, QSqlDatabase & database)
{
   const QString sFile = QFileInfo(projectFile).absoluteFilePath();
   const QString sProblem = fileProblem(sFile);
   if (! sProblem.isEmpty()) { return zy::ZyBool(false, sProblem); }

   database = QSqlDatabase::addDatabase("QSQLITE", nextConnectionName());
   database.setDatabaseName(sFile);
   if (! database.open())
   {
      const QString sError = dbErrorText(database.lastError());
      closeDatabase(database);
      return zy::ZyBool(false, QString("cannot open project file '%1': %2").arg(sFile, sError));
   }

   QStringList lstTables;
   QString sError;
   if (! listTables(database, lstTables, sError))
   {
      closeDatabase(database);
      return zy::ZyBool(false, QString("cannot read project file '%1': %2").arg(sFile, sError));
   }
   if (! lstTables.isEmpty() && ! lstTables.contains("t_project"))
   {
      closeDatabase(database);
      return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (an SQLite database without the project tables)").arg(sFile));
   }
   // One transaction: a single sync instead of one per table.
   const bool bTransaction = database.transaction();
   zy::ZyBool ok = createSchema(database);
   if (bTransaction) { if (ok) { database.commit(); } else { database.rollback(); } }
   if (! ok)
   {
      closeDatabase(database);
      return zy::ZyBool(false, QString("project file '%1': %2").arg(sFile, ok.getDesc()));
   }
   return zy::ZyBool(true);
}

zy::ZyBool project_storage::saveProject(const model::project & project, const QString & projectFile)
{
   const QString sFile = QFileInfo(projectFile).absoluteFilePath();
   const QString sProblem = fileProblem(sFile);
   if (! sProblem.isEmpty()) { return zy::ZyBool(false, sProblem); }
   const bool bNewFile = ! QFileInfo::exists(sFile);
   const QString sFailure = QString("cannot write project file '%1': ").arg(sFile);

   QString sError;
   {
      scoped_connection connection(sFile, false);
      QSqlDatabase & db = connection.db();
      if (! db.open()) { sError = dbErrorText(db.lastError()); }

      QStringList lstTables;
      if (sError.isEmpty()) { listTables(db, lstTables, sError); }
      if (sError.isEmpty() && ! lstTables.isEmpty() && ! lstTables.contains("t_project"))
      { return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (an SQLite database without the project tables)").arg(sFile)); }
      if (sError.isEmpty() && lstTables.contains("t_project"))
      {
         QSqlQuery q(db);
         if (q.exec("SELECT MAX(format_version) FROM t_project") && q.next() && (q.value(0).toInt() > k_iFormatVersion))
         { return zy::ZyBool(false, sFailure + "it was written by a newer version of Tavrel"); }
      }

      // One transaction: the schema, the removal of the old model and the new one. On any error
      // the rollback leaves an existing file exactly as it was ("t_plugin_params" is never touched).
      if (sError.isEmpty() && ! db.transaction()) { sError = dbErrorText(db.lastError()); }
      else if (sError.isEmpty())
      {
         zy::ZyBool ok = createSchema(db);
         if (! ok) { sError = ok.getDesc(); }
         else
         {
            model_writer writer(db);
            if (! writer.write(project)) { sError = writer.error(); }
         }
         if (sError.isEmpty() && ! db.commit()) { sError = dbErrorText(db.lastError()); }
         if (! sError.isEmpty()) { db.rollback(); }
      }
   }

   if (sError.isEmpty()) { return zy::ZyBool(true); }
   if (bNewFile) { QFile::remove(sFile); QFile::remove(sFile + "-journal"); }
   return zy::ZyBool(false, sFailure + sError);
}

zy::ZyBool project_storage::importJson(const QString & jsonFile, const QString & projectFile)
{
   model::project_ptr pProject;
   zy::ZyBool ok = readJsonFile(jsonFile, pProject);
   if (! ok) { return ok; }
   return saveProject(* pProject, projectFile);
}

zy::ZyBool project_storage::loadProject(const QString & projectFile, model::project_ptr & result)
{
   result.reset();
   const QFileInfo info(projectFile);
   const QString sFile = info.absoluteFilePath();
   if (! info.exists()) { return zy::ZyBool(false, QString("project file '%1' does not exist").arg(sFile)); }
   const QString sInterrupted = project_recovery::recoverInterruptedWrite(sFile, true);
   if (! sInterrupted.isEmpty()) { return zy::ZyBool(false, sInterrupted); }
   const QString sProblem = fileProblem(sFile);
   if (! sProblem.isEmpty()) { return zy::ZyBool(false, sProblem); }
   if (QFileInfo(sFile).size() == 0) { return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (the file is empty)").arg(sFile)); }

   auto pProject = std::make_shared<model::project>();
   QString sError;
   {
      scoped_connection connection(sFile, true);
      QSqlDatabase & db = connection.db();
      QStringList lstTables;
      if (! db.open()) { sError = dbErrorText(db.lastError()); }
      else if (listTables(db, lstTables, sError) && ! lstTables.contains("t_project"))
      { return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (an SQLite database without the project tables)").arg(sFile)); }
      if (sError.isEmpty())
      {
         model_loader loader(db);
         if (! loader.load(* pProject)) { sError = loader.error(); }
      }
   }
   if (! sError.isEmpty()) { return zy::ZyBool(false, QString("cannot read project file '%1': %2").arg(sFile, sError)); }
   // A hand-edited file meets the rules of the JSON import, or nothing reads it.
   const QStringList lstProblems = model::model_integrity::problems(* pProject);
   if (! lstProblems.isEmpty()) { return zy::ZyBool(false, refusalText(sFile, lstProblems)); }

   // A project file without its project row (only the schema written) is an empty model.
   if (pProject->getName().isEmpty() && pProject->getListOfAllEntities()->isEmpty() && pProject->getListOfAllEnums()->isEmpty())
   { pProject->setName(info.completeBaseName()); }
   pProject->setLocation(info.absolutePath());
   pProject->setFilePath(sFile);
   pProject->resolveLinks();
   // Text that would break out of where the export writes it, as the import refuses it.
   QStringList lstTextProblems;
   for (const auto & problem : model::model_text_rules::projectProblems(* pProject, false)) { lstTextProblems.append(problem.message()); }
   if (! lstTextProblems.isEmpty()) { return zy::ZyBool(false, refusalText(sFile, lstTextProblems)); }
   result = pProject;
   return zy::ZyBool(true);
}

} // namespace storage
