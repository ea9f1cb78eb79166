#include "storage/project_file_reader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSqlError>

#include <cmath>

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

// 2^53: every integer up to it is exact in a double.
const double k_dMaxExactInteger = 9007199254740992.0;

// Bounds are stored as JSON texts: a number comes back a number, a text a text.
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

// Hands the columns of a row, one after the other from a first column, to an item's setters.
template <class T>
class row_setter
{
   const QSqlQuery & m_q;
   T & m_item;
   int m_iColumn;

   QVariant next() { return m_q.value(m_iColumn++); }

public:
   row_setter(const QSqlQuery & q, T & item, int iFirstColumn) : m_q(q), m_item(item), m_iColumn(iFirstColumn) { ; }

   row_setter & text(void (T::* pSet)(const QString &)) { (m_item.*pSet)(next().toString()); return (* this); }
   row_setter & flag(void (T::* pSet)(bool)) { (m_item.*pSet)(next().toBool()); return (* this); }
   row_setter & number(void (T::* pSet)(long)) { (m_item.*pSet)(long(next().toLongLong())); return (* this); }
   row_setter & code(void (T::* pSet)(int)) { (m_item.*pSet)(next().toInt()); return (* this); }
   row_setter & bound(void (T::* pSet)(const QVariant &)) { (m_item.*pSet)(boundFromColumn(next())); return (* this); }
};

} // namespace

model_loader::model_loader(QSqlDatabase & db) : m_db(db), m_query(db) { ; }

bool model_loader::select(const QString & sql)
{
   m_query.setForwardOnly(true);
   if (m_query.exec(sql)) { return true; }
   m_sError = project_file::dbErrorText(m_query.lastError());
   return false;
}

bool model_loader::finished()
{
   if (! m_query.lastError().isValid()) { return true; }
   m_sError = project_file::dbErrorText(m_query.lastError());
   return false;
}

void model_loader::applyMeta(const char * szKind, qlonglong lSeq, model::persistable & item) const
{
   auto itrKind = m_hashMeta.constFind(QString(szKind));
   if (itrKind == m_hashMeta.constEnd()) { return; }
   auto itr = itrKind->constFind(lSeq);
   if (itr == itrKind->constEnd()) { return; }
   for (const auto & pair : (* itr)) { item.setMetaData(pair.first, pair.second); }
}

bool model_loader::load(model::project & project)
{
   if (! loadProjectRow(project) || ! loadMeta()) { return false; }
   applyMeta("project", 1, project);
   return (loadEnumerations(project) && loadEnumerationValues() && loadEntities(project) && loadProperties() && loadRelations());
}

bool model_loader::loadProjectRow(model::project & project)
{
   QSqlQuery & q = m_query;
   if (! select("SELECT id, name, format_version FROM t_project ORDER BY seq LIMIT 1")) { return false; }
   if (q.next())
   {
      if (q.value(2).toInt() > project_file::k_iFormatVersion)
      { m_sError = QString("the file was written by a newer version of Tavrel (format %1)").arg(q.value(2).toInt()); return false; }
      project.setId(long(q.value(0).toLongLong()));
      project.setName(q.value(1).toString());
   }
   return finished();
}

bool model_loader::loadMeta()
{
   QSqlQuery & q = m_query;
   if (! select("SELECT owner_kind, owner_seq, meta_key, meta_value FROM t_meta_data ORDER BY seq")) { return false; }
   while (q.next()) { m_hashMeta[q.value(0).toString()][q.value(1).toLongLong()].append(qMakePair(q.value(2).toString(), q.value(3).toString())); }
   return finished();
}

bool model_loader::loadEnumerations(model::project & project)
{
   using E = model::enumeration;
   QSqlQuery & q = m_query;
   if (! select("SELECT seq, id, name, namespace, enum_name, use_qt_enum, description, version FROM t_enumeration ORDER BY seq")) { return false; }
   while (q.next())
   {
      auto pEnum = std::make_shared<E>();
      const qlonglong lSeq = q.value(0).toLongLong();
      row_setter<E>(q, * pEnum, 1).number(& E::setId).text(& E::setName).text(& E::setNamespace).text(& E::setEnumName)
         .flag(& E::setUseQtEnum).text(& E::setDescription).number(& E::setVersion);
      applyMeta("enumeration", lSeq, * pEnum);
      m_hashEnums.insert(lSeq, pEnum);
      project.addEnumeration(pEnum);
   }
   return finished();
}

bool model_loader::loadEnumerationValues()
{
   QSqlQuery & q = m_query;
   if (! select("SELECT enumeration_seq, value_key, value_text FROM t_enumeration_value ORDER BY seq")) { return false; }
   while (q.next())
   {
      model::enumeration_ptr pEnum = m_hashEnums.value(q.value(0).toLongLong());
      if (pEnum && ! pEnum->addKeyValue(q.value(1).toString(), q.value(2).toString()))
      { m_sError = QString("Enumeration '%1' : value key '%2' is given more than once").arg(pEnum->getKey(), q.value(1).toString()); return false; }
   }
   return finished();
}

bool model_loader::loadEntities(model::project & project)
{
   using E = model::entity;
   QSqlQuery & q = m_query;
   if (! select("SELECT seq, id, name, namespace, version, description, table_name, parent_key, is_abstract, read_only, "
                "soft_delete_column, validator_method, " + project_file::triggerColumns() + " FROM t_entity ORDER BY seq")) { return false; }
   while (q.next())
   {
      auto pEntity = std::make_shared<E>();
      E & e = (* pEntity);
      const qlonglong lSeq = q.value(0).toLongLong();
      row_setter<E>(q, e, 1).number(& E::setId).text(& E::setName).text(& E::setNamespace).number(& E::setVersion)
         .text(& E::setDescription).text(& E::setTableName).text(& E::setParentKey).flag(& E::setAbstract).flag(& E::setReadOnly)
         .text(& E::setSoftDeleteColumn).text(& E::setValidatorMethod);
      int iColumn = 12;
      for (const model::entity_trigger & t : model::entityTriggers()) { (e.*t.set)(q.value(iColumn++).toBool()); }
      applyMeta("entity", lSeq, e);
      m_hashEntities.insert(lSeq, pEntity);
      project.addEntity(pEntity);
   }
   return finished();
}

bool model_loader::loadProperties()
{
   using P = model::property;
   QSqlQuery & q = m_query;
   if (! select("SELECT seq, entity_seq, id, name, has_type, type_text, decoration, collection, default_value, enumeration_key, "
                "primary_key, column_name, description, version, accessibility, write_accessors, obsolete, read_only, get_method, "
                "set_method, transient, serializable, is_index, is_unique, allow_null, min_value, max_value, min_length, "
                "max_length, reg_exp, force_sql_type, force_sql_alias, format FROM t_property ORDER BY seq")) { return false; }
   while (q.next())
   {
      model::entity_ptr pEntity = m_hashEntities.value(q.value(1).toLongLong());
      if (! pEntity) { continue; }
      auto pProperty = std::make_shared<P>();
      P & p = (* pProperty);
      const qlonglong lSeq = q.value(0).toLongLong();
      row_setter<P>(q, p, 2).number(& P::setId).text(& P::setName);
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
      row_setter<P>(q, p, 9).text(& P::setEnumerationKey).flag(& P::setPrimaryKey).text(& P::setColumnName).text(& P::setDescription)
         .number(& P::setVersion).code(& P::setAccessibility).flag(& P::setWriteAccessors).flag(& P::setObsolete).flag(& P::setReadOnly)
         .text(& P::setGetMethod).text(& P::setSetMethod).flag(& P::setTransient).flag(& P::setSerializable).flag(& P::setIndex)
         .flag(& P::setUnique).flag(& P::setAllowNull).bound(& P::setMinValue).bound(& P::setMaxValue).bound(& P::setMinLength)
         .bound(& P::setMaxLength).text(& P::setRegExp).text(& P::setForceSqlType).text(& P::setForceSqlAlias).text(& P::setFormat);
      applyMeta("property", lSeq, p);
      m_hashProperties.insert(lSeq, pProperty);
      pEntity->addProperty(pProperty);
   }
   return finished();
}

bool model_loader::loadRelations()
{
   using R = model::relationship;
   QSqlQuery & q = m_query;
   if (! select("SELECT property_seq, id, kind, target_key, foreign_key, foreign_key_owner, extra_table FROM t_relationship ORDER BY seq"))
   { return false; }
   while (q.next())
   {
      model::property_ptr pProperty = m_hashProperties.value(q.value(0).toLongLong());
      if (! pProperty) { continue; }
      auto pRelation = std::make_shared<R>();
      row_setter<R>(q, * pRelation, 1).number(& R::setId).code(& R::setType).text(& R::setTargetKey).text(& R::setForeignKey)
         .text(& R::setForeignKeyOwner).text(& R::setExtraTable);
      pProperty->setRelation(pRelation);
   }
   return finished();
}

} // namespace storage
