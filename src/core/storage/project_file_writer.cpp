#include "storage/project_file_writer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QSqlError>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_file_schema.h"

namespace storage {

namespace {

// Bounds are kept as JSON texts so that a number stays a number and a text a text.
QVariant boundToColumn(const QVariant & v)
{
   if (! v.isValid() || v.isNull()) { return QVariant(QMetaType(QMetaType::QString)); }
   QJsonArray arr;
   arr.append(QJsonValue::fromVariant(v));
   const QByteArray text = QJsonDocument(arr).toJson(QJsonDocument::Compact);
   return QVariant(QString::fromUtf8(text.mid(1, text.size() - 2)));
}

QVariant text(const QString & s) { return QVariant(s.isNull() ? QString("") : s); }
QVariant flag(bool b) { return QVariant(b ? 1 : 0); }

QVariantList triggerFlags(const model::entity & e)
{
   QVariantList lst;
   for (const model::entity_trigger & t : model::entityTriggers()) { lst.append(flag((e.*t.isSet)())); }
   return lst;
}

} // namespace

model_writer::model_writer(QSqlDatabase & db) : m_db(db), m_qEntity(db), m_qProperty(db), m_qRelation(db), m_qEnum(db), m_qValue(db), m_qMeta(db) { ; }

bool model_writer::prepare(QSqlQuery & q, const QString & sql)
{
   if (q.prepare(sql)) { return true; }
   m_sError = project_file::dbErrorText(q.lastError());
   return false;
}

bool model_writer::run(QSqlQuery & q, const QVariantList & values)
{
   for (int i = 0; i < values.size(); ++i) { q.bindValue(i, values.at(i)); }
   if (q.exec()) { return true; }
   m_sError = project_file::dbErrorText(q.lastError());
   return false;
}

bool model_writer::writeMeta(const char * szKind, qlonglong lOwnerSeq, const model::persistable & item)
{
   const QMap<QString, QString> & map = item.getAllMetaData();
   for (auto itr = map.constBegin(); itr != map.constEnd(); ++itr)
   {
      if (! run(m_qMeta, { ++m_lMetaSeq, QString(szKind), lOwnerSeq, text(itr.key()), text(itr.value()) })) { return false; }
   }
   return true;
}

bool model_writer::write(const model::project & project)
{
   if (! clearTables() || ! writeProjectRow(project) || ! writeEnumerations(project) || ! prepareEntityQueries()) { return false; }
   qlonglong lEntitySeq = 0;
   for (const model::entity_ptr & pEntity : (* project.getListOfAllEntities()))
   {
      if (! pEntity) { continue; }
      if (! writeEntity(* pEntity, ++lEntitySeq)) { return false; }
   }
   return true;
}

bool model_writer::clearTables()
{
   for (const QString & sTable : project_file::modelTables())
   {
      if (! project_file::execSql(m_db, QString("DELETE FROM %1").arg(sTable), m_sError)) { return false; }
   }
   return true;
}

bool model_writer::writeProjectRow(const model::project & project)
{
   QSqlQuery qProject(m_db);
   if (! prepare(qProject, "INSERT INTO t_project (seq, id, name, format_version) VALUES (1, ?, ?, ?)")) { return false; }
   if (! run(qProject, { qlonglong(project.getId()), text(project.getName()), project_file::k_iFormatVersion })) { return false; }
   if (! prepare(m_qMeta, "INSERT INTO t_meta_data (seq, owner_kind, owner_seq, meta_key, meta_value) VALUES (?, ?, ?, ?, ?)")) { return false; }
   return writeMeta("project", 1, project);
}

bool model_writer::writeEnumerations(const model::project & project)
{
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
   return true;
}

bool model_writer::prepareEntityQueries()
{
   if (! prepare(m_qEntity, "INSERT INTO t_entity (seq, id, name, namespace, version, description, table_name, parent_key, is_abstract, "
                            "read_only, soft_delete_column, validator_method, " + project_file::triggerColumns() + ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?"
                            + QString(", ?").repeated(int(model::entityTriggers().size())) + ")"))
   { return false; }
   if (! prepare(m_qProperty, "INSERT INTO t_property (seq, entity_seq, id, name, has_type, type_text, decoration, collection, "
                              "default_value, enumeration_key, primary_key, column_name, description, version, accessibility, "
                              "write_accessors, obsolete, read_only, get_method, set_method, transient, serializable, is_index, "
                              "is_unique, allow_null, min_value, max_value, min_length, max_length, reg_exp, force_sql_type, "
                              "force_sql_alias, format) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                              "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"))
   { return false; }
   return prepare(m_qRelation, "INSERT INTO t_relationship (seq, property_seq, id, kind, target_key, foreign_key, foreign_key_owner, "
                               "extra_table) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
}

bool model_writer::writeEntity(const model::entity & e, qlonglong lEntitySeq)
{
   if (! run(m_qEntity, QVariantList { lEntitySeq, qlonglong(e.getId()), text(e.getName()), text(e.getNamespace()), qlonglong(e.getVersion()),
                          text(e.getDescription()), text(e.getTableName()), text(e.getParentKey()), flag(e.isAbstract()),
                          flag(e.isReadOnly()), text(e.getSoftDeleteColumn()), text(e.getValidatorMethod()) }
                        + triggerFlags(e))) { return false; }
   if (! writeMeta("entity", lEntitySeq, e)) { return false; }
   for (const model::property_ptr & pProperty : e.getOwnProperties())
   {
      if (! pProperty) { continue; }
      if (! writeProperty(* pProperty, lEntitySeq)) { return false; }
   }
   return true;
}

bool model_writer::writeProperty(const model::property & p, qlonglong lEntitySeq)
{
   const qlonglong lPropertySeq = ++m_lPropertySeq;
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
   if (! pRelation) { return true; }
   return run(m_qRelation, { ++m_lRelationSeq, lPropertySeq, qlonglong(pRelation->getId()), pRelation->getType(),
                             text(pRelation->getTargetKey()), text(pRelation->getForeignKey()),
                             text(pRelation->getForeignKeyOwner()), text(pRelation->getExtraTable()) });
}

} // namespace storage
