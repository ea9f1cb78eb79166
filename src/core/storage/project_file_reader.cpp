#include "storage/project_file_reader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
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

// Bounds are stored as JSON texts: a number comes back a number, a text a text. Anything else
// was not written by Tavrel and is refused, as the JSON import refuses it: an empty string.
QString boundFromColumn(const QVariant & v, bool bLength, QVariant & out)
{
   out = QVariant();
   if (v.isNull()) { return QString(); }
   QJsonParseError error;
   const QJsonArray arr = QJsonDocument::fromJson("[" + v.toString().toUtf8() + "]", & error).array();
   const QString sWhat = (bLength ? QStringLiteral("a whole number of at least 0 or a text") : QStringLiteral("a number or a text"));
   if ((error.error != QJsonParseError::NoError) || (arr.size() != 1))
   { return QString("stored value '%1' is not %2").arg(v.toString().left(80), sWhat); }
   const QJsonValue value = arr.at(0);
   if (value.isString()) { out = QVariant(value.toString()); return QString(); }
   if (value.isDouble())
   {
      const double d = value.toDouble();
      const bool bWhole = ((double(qlonglong(d)) == d) && (std::abs(d) <= k_dMaxExactInteger));
      if (bLength && (! bWhole || (d < 0))) { return QString("stored value '%1' is not %2").arg(v.toString().left(80), sWhat); }
      out = (bWhole ? QVariant(qlonglong(d)) : QVariant(d));
      return QString();
   }
   return QString("stored value '%1' is not %2").arg(v.toString().left(80), sWhat);
}

// Equal texts of a large model (types, property names, namespaces) share one copy, as the JSON
// import shares them. Bounded: texts met once would otherwise fill the table.
QString sharedText(QSet<QString> & set, const QString & s)
{
   // An empty column reads as an empty, not a null, text: null keeps a property's rarely set
   // fields unallocated, as the JSON import leaves them.
   if (s.isEmpty()) { return QString(); }
   const auto itr = set.constFind(s);
   if (itr != set.constEnd()) { return (* itr); }
   if (set.size() >= 4096) { set.clear(); }
   set.insert(s);
   return s;
}

// Hands the columns of a row, one after the other from a first column, to an item's setters.
template <class T>
class row_setter
{
   const QSqlQuery & m_q;
   T & m_item;
   int m_iColumn;
   QSet<QString> & m_setTexts;

   QVariant next() { return m_q.value(m_iColumn++); }

public:
   row_setter(const QSqlQuery & q, T & item, int iFirstColumn, QSet<QString> & setTexts)
      : m_q(q), m_item(item), m_iColumn(iFirstColumn), m_setTexts(setTexts) { ; }

   row_setter & text(void (T::* pSet)(const QString &)) { (m_item.*pSet)(sharedText(m_setTexts, next().toString())); return (* this); }
   row_setter & flag(void (T::* pSet)(bool)) { (m_item.*pSet)(next().toBool()); return (* this); }
   row_setter & number(void (T::* pSet)(long)) { (m_item.*pSet)(long(next().toLongLong())); return (* this); }
   row_setter & code(void (T::* pSet)(int)) { (m_item.*pSet)(next().toInt()); return (* this); }
   // A bound; a refused value leaves its reason in sError (the first one).
   row_setter & bound(void (T::* pSet)(const QVariant &), bool bLength, const char * szField, QString & sError)
   {
      QVariant v;
      const QString sProblem = boundFromColumn(next(), bLength, v);
      if (! sProblem.isEmpty() && sError.isEmpty()) { sError = QLatin1String(szField) + QLatin1Char(' ') + sProblem; }
      (m_item.*pSet)(v);
      return (* this);
   }
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

void model_loader::applyMeta(const char * szKind, qlonglong lSeq, model::persistable & item)
{
   auto itrKind = m_hashMeta.constFind(QString(szKind));
   if (itrKind == m_hashMeta.constEnd()) { return; }
   auto itr = itrKind->constFind(lSeq);
   if (itr == itrKind->constEnd()) { return; }
   for (const auto & pair : (* itr)) { item.setMetaData(pair.first, pair.second); }
   m_setMetaPlaced.insert(qMakePair(QString(szKind), lSeq));
}

bool model_loader::load(model::project & project)
{
   if (! loadProjectRow(project) || ! loadMeta()) { return false; }
   applyMeta("project", 1, project);
   // Relationships first: they are few, and each is handed to its property as it is read, so
   // no table of every property is needed.
   return (loadEnumerations(project) && loadEnumerationValues() && loadEntities(project) && loadRelations() && loadProperties()
           && checkMetaOwners());
}

bool model_loader::orphan(const char * szRow, const QString & sName, const char * szOwner, const QVariant & vOwnerSeq)
{
   m_sError = QString("%1 '%2' belongs to %3 %4, which the file does not hold (the file was edited or damaged)")
                 .arg(QLatin1String(szRow), sName.left(80), QLatin1String(szOwner), vOwnerSeq.toString());
   return false;
}

// Meta data of an item the file does not hold: refused like the other rows without their owner.
bool model_loader::checkMetaOwners()
{
   for (auto itrKind = m_hashMeta.constBegin(); itrKind != m_hashMeta.constEnd(); ++itrKind)
   {
      for (auto itr = itrKind->constBegin(); itr != itrKind->constEnd(); ++itr)
      {
         if (m_setMetaPlaced.contains(qMakePair(itrKind.key(), itr.key()))) { continue; }
         const QString sKey = (itr->isEmpty() ? QString() : itr->first().first);
         return orphan("meta data", sKey, qPrintable(itrKind.key().left(40)), itr.key());
      }
   }
   return true;
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
   while (q.next())
   {
      m_hashMeta[q.value(0).toString()][q.value(1).toLongLong()].append(
         qMakePair(sharedText(m_setTexts, q.value(2).toString()), sharedText(m_setTexts, q.value(3).toString())));
   }
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
      row_setter<E>(q, * pEnum, 1, m_setTexts).number(& E::setId).text(& E::setName).text(& E::setNamespace).text(& E::setEnumName)
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
      if (! pEnum) { return orphan("enumeration value", q.value(1).toString(), "enumeration", q.value(0)); }
      if (! pEnum->addKeyValue(q.value(1).toString(), sharedText(m_setTexts, q.value(2).toString())))
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
      row_setter<E>(q, e, 1, m_setTexts).number(& E::setId).text(& E::setName).text(& E::setNamespace).number(& E::setVersion)
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
      if (! pEntity) { return orphan("property", q.value(3).toString(), "entity", q.value(1)); }
      auto pProperty = std::make_shared<P>();
      P & p = (* pProperty);
      const qlonglong lSeq = q.value(0).toLongLong();
      row_setter<P>(q, p, 2, m_setTexts).number(& P::setId).text(& P::setName);
      if (q.value(4).toBool())
      {
         auto pType = std::make_shared<model::property_type>();
         pType->setId(p.getId());
         pType->setPrimitiveType(sharedText(m_setTexts, q.value(5).toString()));
         // No stored text: the type comes from the enumeration (resolveLinks fills it in).
         pType->setFromEnumeration(q.value(5).isNull());
         pType->setDecoration(q.value(6).toInt());
         pType->setCollection(q.value(7).toInt());
         pType->setDefaultValue(q.value(8).toString());
         p.setType(pType);
      }
      QString sBound;
      row_setter<P>(q, p, 9, m_setTexts).text(& P::setEnumerationKey).flag(& P::setPrimaryKey).text(& P::setColumnName).text(& P::setDescription)
         .number(& P::setVersion).code(& P::setAccessibility).flag(& P::setWriteAccessors).flag(& P::setObsolete).flag(& P::setReadOnly)
         .text(& P::setGetMethod).text(& P::setSetMethod).flag(& P::setTransient).flag(& P::setSerializable).flag(& P::setIndex)
         .flag(& P::setUnique).flag(& P::setAllowNull).bound(& P::setMinValue, false, "min value", sBound)
         .bound(& P::setMaxValue, false, "max value", sBound).bound(& P::setMinLength, true, "min length", sBound)
         .bound(& P::setMaxLength, true, "max length", sBound).text(& P::setRegExp).text(& P::setForceSqlType).text(& P::setForceSqlAlias).text(& P::setFormat);
      if (! sBound.isEmpty())
      { m_sError = QString("Entity '%1' : property '%2' : %3").arg(pEntity->getKey(), p.getName(), sBound); return false; }
      applyMeta("property", lSeq, p);
      auto itrRelation = m_hashRelations.find(lSeq);
      if (itrRelation != m_hashRelations.end()) { pProperty->setRelation(itrRelation.value()); m_hashRelations.erase(itrRelation); }
      pEntity->addProperty(pProperty);
   }
   if (! finished()) { return false; }
   if (! m_hashRelations.isEmpty())
   {
      const auto itr = m_hashRelations.constBegin();
      return orphan("relationship", itr.value()->getTargetKey(), "property", itr.key());
   }
   return true;
}

bool model_loader::loadRelations()
{
   using R = model::relationship;
   QSqlQuery & q = m_query;
   if (! select("SELECT property_seq, id, kind, target_key, foreign_key, foreign_key_owner, extra_table FROM t_relationship ORDER BY seq"))
   { return false; }
   while (q.next())
   {
      auto pRelation = std::make_shared<R>();
      row_setter<R>(q, * pRelation, 1, m_setTexts).number(& R::setId).code(& R::setType).text(& R::setTargetKey).text(& R::setForeignKey)
         .text(& R::setForeignKeyOwner).text(& R::setExtraTable);
      m_hashRelations.insert(q.value(0).toLongLong(), pRelation);
   }
   return finished();
}

} // namespace storage
