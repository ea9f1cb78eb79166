#include "sql_export/schema/schema_model.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "model/sql_meta.h"
#include "model/sql_meta_edit.h"
#include "sql_export/schema/sql_types.h"

namespace sql_export {

namespace {

QString cppTypeOf(const model::property & p)
{
   const model::property_type_ptr pType = p.getType();
   if (! pType) { return QString(); }
   // An enumeration is stored as its number.
   if (pType->getEnumeration() || ! p.getEnumerationKey().isEmpty()) { return QStringLiteral("int"); }
   if (pType->getCollection() != model::property_type::collection_none) { return pType->getTypeText(); }
   return pType->getPrimitiveType();
}

// The dialect as import-db names it in the model.
QString dialectKey(const sql_dialect & dialect)
{
   switch (dialect.kind())
   {
      case dialect_postgresql: return QStringLiteral("postgresql");
      case dialect_mariadb: return QStringLiteral("mariadb");
      default: return QStringLiteral("sqlite");
   }
}

// What import-db kept of the column beyond the C++ side: its generator, its allowed values, a
// default the C++ default cannot hold (the only default of a foreign-key column).
void keepColumnForm(sql_column & c, const model::property & p, const sql_dialect & dialect)
{
   c.sGenerator = p.getMetaData(model::sql_meta::k_sAutoIncrement).toString();
   if (c.sGenerator == "0" || c.sGenerator == "false") { c.sGenerator.clear(); }
   const QString sValues = p.getMetaData(model::sql_meta::k_sValues).toString();
   if (! sValues.isEmpty()) { c.lstValues = sValues.split('\n'); }
   const QString sSet = p.getMetaData(model::sql_meta::k_sSetValues).toString();
   if (! sSet.isEmpty() && (dialect.kind() == dialect_mariadb)) { c.lstSetValues = sSet.split('\n'); }
   // A numbered column takes its values from its generator alone.
   if (! c.sGenerator.isEmpty()) { c.sDefault.clear(); return; }
   const QString sKept = sql_types::sqlDefaultLiteral(dialect, p.getMetaData(model::sql_meta::k_sDefault).toString());
   // TRUE and FALSE as SQLite's catalog spelt them, rather than the 1 and 0 a bool is written as.
   if (c.sDefault.isEmpty() || (sKept == "TRUE") || (sKept == "FALSE")) { c.sDefault = sKept; }
   // A function called without arguments, in brackets as SQLite needs, for its own database only.
   static const QRegularExpression reCall("^[A-Za-z_][A-Za-z0-9_]*\\(\\)$");
   const QString sCall = p.getMetaData(model::sql_meta::k_sDefault).toString();
   if (c.sDefault.isEmpty() && reCall.match(sCall).hasMatch() && (p.getMetaData(model::sql_meta::k_sDefaultDialect).toString() == dialectKey(dialect)))
   { c.sDefault = '(' + sCall + ')'; }
}

QString entityLabel(const model::property & p)
{
   const model::entity_ptr pEntity = p.getEntity();
   return (pEntity ? pEntity->getName() : QString()) + '.' + p.getName();
}

// A kept foreign-key action as the dialect writes it: only the SQL words reach the statement.
QString keptAction(const QString & sKept, const sql_dialect & dialect, const QString & sWhere, QStringList & lstWarnings)
{
   if (sKept.isEmpty()) { return QString(); }
   const QString s = model::sql_meta::foreignKeyAction(sKept);
   if (! model::sql_meta::isForeignKeyAction(sKept))
   { lstWarnings.append(QString("%1: foreign-key action '%2' is not an SQL action (CASCADE, SET NULL, SET DEFAULT, RESTRICT, NO ACTION), left out").arg(sWhere, sKept)); }
   // InnoDB refuses SET DEFAULT: the table would not be made at all.
   if ((s == QLatin1String("SET DEFAULT")) && (dialect.kind() == dialect_mariadb))
   { lstWarnings.append(QString("%1: foreign-key action SET DEFAULT has no form in %2, left out").arg(sWhere, dialect.name())); return QString(); }
   return s;
}

void keepActions(sql_foreign_key & k, const QString & sOnDelete, const QString & sOnUpdate, const sql_dialect & dialect, const QString & sWhere, QStringList & lstWarnings)
{
   k.sOnDelete = keptAction(sOnDelete, dialect, sWhere, lstWarnings);
   k.sOnUpdate = keptAction(sOnUpdate, dialect, sWhere, lstWarnings);
}

// The type of a column, and a warning naming the property when its type has no SQL form.
QString columnType(const model::property & p, const sql_dialect & dialect, bool bKeyed, QStringList & lstWarnings)
{
   const QString sForced = p.getForceSqlType();
   const QString sFrom = p.getMetaData(model::sql_meta::k_sTypeDialect).toString();
   // A type read from another database is written in this one's spelling.
   if (! sForced.isEmpty() && (sFrom.isEmpty() || (sFrom == dialectKey(dialect)))) { return sForced; }
   const sql_types::translation t = (sForced.isEmpty() ? sql_types::translation() : sql_types::translate(dialect, sForced));
   if (! t.sType.isEmpty() && ! t.sLoss.isEmpty())
   { lstWarnings.append(QString("%1: type '%2' of %3 written as %4: %5").arg(entityLabel(p), sForced, sFrom, t.sType, t.sLoss)); }
   if (! t.sType.isEmpty()) { return t.sType; }
   const QString sCpp = cppTypeOf(p);
   // An enumeration type of another database: its values are written instead (see keepColumnForm).
   if (! sForced.isEmpty() && p.getMetaData(model::sql_meta::k_sValues).toString().isEmpty())
   { lstWarnings.append(QString("%1: type '%2' of %3 has no form in %4, written from its C++ type").arg(entityLabel(p), sForced, sFrom, dialect.name())); }
   const sql_types::result r = sql_types::map(dialect, sCpp, p.getMaxLength().toInt(), bKeyed);
   if (! r.bKnown) { lstWarnings.append(QString("%1: type '%2' has no SQL mapping, written as text").arg(entityLabel(p), sCpp)); }
   return r.sType;
}

// Ids are unique among the items of one kind; an item never stored (id 0) goes by its name.
QString itemKey(const char * sKind, long lId, const QString & sName)
{
   return QLatin1String(sKind) + ((lId != 0) ? QString::number(lId) : ':' + sName);
}

model::property_ptr keyOf(const model::entity_ptr & pEntity)
{
   return (pEntity ? pEntity->getPropertyId(true) : model::property_ptr());
}

// The key column of a foreign key: its type follows the primary key it points to.
void addKeyColumn(sql_table & table, const model::property & p, const QString & sColumn, const model::entity_ptr & pTarget,
                  const sql_dialect & dialect, QStringList & lstWarnings)
{
   model::property_ptr pTargetKey = keyOf(pTarget);
   // A key of several columns takes several to point at: no one-column foreign key can.
   if (pTargetKey && schema_builder::columnName(* pTargetKey).contains(QLatin1Char('|'))) { pTargetKey.reset(); }
   sql_column c;
   c.sKey = itemKey("p", p.getId(), sColumn);
   c.sName = sColumn;
   c.sType = (pTargetKey ? columnType(* pTargetKey, dialect, true, lstWarnings) : sql_types::map(dialect, "long", 0, true).sType);
   // A foreign key may be part of a key of several columns.
   c.bNotNull = (p.isPrimaryKey() || ! p.getAllowNull());
   c.bUnique = (p.getUnique() && (! p.isPrimaryKey() || model::sql_meta::isChosenKey(p)));
   c.bIndex = p.isIndex();
   c.sComment = p.getDescription();
   keepColumnForm(c, p, dialect);
   table.lstColumns.append(c);
   if (p.isPrimaryKey()) { table.lstPrimaryKey.append(sColumn); }
   if (pTarget && ! pTarget->isAbstract() && pTargetKey)
   {
      sql_foreign_key k { sColumn, schema_builder::tableName(* pTarget), schema_builder::columnName(* pTargetKey) };
      keepActions(k, p.getMetaData(model::sql_meta::k_sOnDelete).toString(), p.getMetaData(model::sql_meta::k_sOnUpdate).toString(), dialect, entityLabel(p), lstWarnings);
      table.lstForeignKeys.append(k);
   }
}

void addColumn(sql_table & table, const model::property & p, const sql_dialect & dialect, QStringList & lstWarnings)
{
   const QString sColumn = schema_builder::columnName(p);
   if (sColumn.isEmpty()) { return; }
   if (const model::relationship_ptr pRelation = p.getRelation())
   { addKeyColumn(table, p, sColumn, pRelation->getEntityTarget(), dialect, lstWarnings); return; }
   sql_column c;
   c.sKey = itemKey("p", p.getId(), sColumn);
   c.sName = sColumn;
   c.sType = columnType(p, dialect, (p.isPrimaryKey() && ! model::sql_meta::isChosenKey(p)) || p.getUnique() || p.isIndex(), lstWarnings);
   c.bNotNull = (p.isPrimaryKey() || ! p.getAllowNull());
   c.bUnique = (p.getUnique() && (! p.isPrimaryKey() || model::sql_meta::isChosenKey(p)));
   c.bIndex = p.isIndex();
   if (p.getType()) { c.sDefault = sql_types::defaultLiteral(dialect, cppTypeOf(p), p.getType()->getDefaultValue()); }
   c.sComment = p.getDescription();
   keepColumnForm(c, p, dialect);
   // SQLite numbers rows only in a column declared exactly INTEGER PRIMARY KEY.
   if (! c.sGenerator.isEmpty() && (dialect.kind() == dialect_sqlite)) { c.sType = QStringLiteral("INTEGER"); }
   table.lstColumns.append(c);
   if (p.isPrimaryKey()) { table.lstPrimaryKey.append(sColumn); }
}

// The join table of a many-to-many relation: both keys, together the primary key.
sql_table joinTable(const model::entity_ptr & pOwner, const model::property & p, const sql_dialect & dialect, QStringList & lstWarnings)
{
   const model::relationship & r = * p.getRelation();
   sql_table t;
   t.sName = r.getExtraTable();
   QString sFirstKey;
   QList<QPair<QString, model::entity_ptr> > lstKeys { { r.getForeignKey(), pOwner }, { r.getForeignKeyOwner(), r.getEntityTarget() } };
   // The key's order as its database has it (import-db marks the relation).
   if (p.getMetaData(model::sql_meta::k_sOwnerFirst).toString() == QLatin1String("true")) { lstKeys.swapItemsAt(0, 1); }
   for (const auto & k : lstKeys)
   {
      const model::property_ptr pKey = keyOf(k.second);
      sql_column c;
      // Each key column by the entity it points at, whichever side of the relation wrote it.
      c.sKey = itemKey("to-e", (k.second ? k.second->getId() : 0), k.first);
      if (c.sKey == sFirstKey) { c.sKey += ":2"; }
      sFirstKey = c.sKey;
      c.sName = k.first;
      c.sType = (pKey ? columnType(* pKey, dialect, true, lstWarnings) : sql_types::map(dialect, "long", 0, true).sType);
      c.bNotNull = true;
      t.lstColumns.append(c);
      t.lstPrimaryKey.append(k.first);
      if (k.second && ! k.second->isAbstract() && pKey)
      { t.lstForeignKeys.append(sql_foreign_key { k.first, schema_builder::tableName(* k.second), schema_builder::columnName(* pKey) }); }
   }
   return t;
}

// The properties in the order the generated registration lists them: ancestors first, each
// class with its key, its data members, then its relations.
model::list_of_property registeredProperties(const model::entity & entity, const schema_options & options)
{
   QList<const model::entity *> lstChain;
   for (const model::entity * p = & entity; p; p = p->getParent().get()) { lstChain.prepend(p); }
   model::list_of_property lstResult;
   for (const model::entity * pEntity : lstChain)
   {
      const model::property_ptr pId = pEntity->getPropertyId(false);
      // A key the model marks as not registered is no column of the classes either.
      if (pId && ! pId->getMetaData("TAVREL_NO_ID").toBool()) { lstResult.append(pId); }
      model::list_of_property lstRelations;
      for (const model::property_ptr & p : pEntity->getOwnProperties())
      {
         if (! p || (p == pId) || (p->isObsolete() && ! options.bIncludeObsolete)) { continue; }
         if (p->hasRelationship()) { lstRelations.append(p); } else { lstResult.append(p); }
      }
      lstResult += lstRelations;
   }
   return lstResult;
}

// A key of several columns in the order the model declares them (relations are registered last).
QStringList declaredKeyOrder(const model::entity & entity, const QStringList & lstKey)
{
   QList<const model::entity *> lstChain;
   for (const model::entity * p = & entity; p && (lstChain.size() <= 1000); p = p->getParent().get()) { lstChain.prepend(p); }
   QStringList lst;
   for (const model::entity * pEntity : lstChain)
   {
      for (const model::property_ptr & p : pEntity->getOwnProperties())
      {
         const QString sColumn = (p ? schema_builder::columnName(* p) : QString());
         if (lstKey.contains(sColumn) && ! lst.contains(sColumn)) { lst.append(sColumn); }
      }
   }
   return lst;
}

QStringList jsonNames(const QJsonValue & v)
{
   QStringList lst;
   for (const QJsonValue & s : v.toArray()) { lst.append(s.toString()); }
   return lst;
}

// What import-db kept of the table beyond its properties: indexes of several columns or of a
// prefix, foreign keys on the key column itself or of several columns. Columns the table does not
// have are passed over.
void keepTableForm(sql_table & t, const model::entity & entity, const sql_dialect & dialect, QStringList & lstWarnings)
{
   const auto hasColumn = [&t](const QString & s) { for (const sql_column & c : t.lstColumns) { if (c.sName == s) { return true; } } return false; };
   const QJsonArray lstIndexes = QJsonDocument::fromJson(entity.getMetaData(model::sql_meta::k_sIndexes).toString().toUtf8()).array();
   for (const QJsonValue & v : lstIndexes)
   {
      sql_index i;
      i.bUnique = v.toObject().value("unique").toBool();
      const QJsonArray lstLengths = v.toObject().value("lengths").toArray();
      bool bKnown = true;
      for (const QJsonValue & c : v.toObject().value("columns").toArray())
      {
         bKnown = bKnown && hasColumn(c.toString());
         i.lstColumns.append(c.toString());
         const int iLength = lstLengths.at(i.lstLengths.size()).toInt();
         i.lstLengths.append(((iLength > 0) && (iLength <= 65535)) ? iLength : 0);
      }
      if (! bKnown || i.lstColumns.isEmpty()) { continue; }
      if ((dialect.kind() != dialect_mariadb) && i.lstLengths.count(0) != i.lstLengths.size())
      { lstWarnings.append(QString("%1: index (%2) of a prefix is made on the whole columns in %3").arg(entity.getName(), i.lstColumns.join(", "), dialect.name())); }
      t.lstIndexes.append(i);
   }
   const QJsonArray lstKeys = QJsonDocument::fromJson(entity.getMetaData(model::sql_meta::k_sForeignKeys).toString().toUtf8()).array();
   for (const QJsonValue & v : lstKeys)
   {
      // One column ("column", "target") or several ("columns", "targets").
      const QJsonObject o = v.toObject();
      QStringList lstColumns = (o.contains("columns") ? jsonNames(o.value("columns")) : QStringList { o.value("column").toString() });
      QStringList lstTargets = (o.contains("targets") ? jsonNames(o.value("targets")) : QStringList { o.value("target").toString() });
      bool bKnown = (! lstColumns.isEmpty() && (lstColumns.size() == lstTargets.size()) && ! o.value("table").toString().isEmpty());
      for (qsizetype i = 0; bKnown && (i < lstColumns.size()); ++i) { bKnown = (hasColumn(lstColumns.at(i)) && ! lstTargets.at(i).isEmpty()); }
      if (! bKnown) { continue; }
      sql_foreign_key k { lstColumns.takeFirst(), o.value("table").toString(), lstTargets.takeFirst(), lstColumns, lstTargets };
      keepActions(k, o.value("on_delete").toString(), o.value("on_update").toString(), dialect, entity.getName(), lstWarnings);
      t.lstForeignKeys.append(k);
   }
}

// The key columns of a composite key, in its order; each is part of the key, so not null.
void applyCompositeKey(sql_table & t, const QStringList & lstColumns)
{
   t.lstPrimaryKey.clear();
   for (const QString & sColumn : lstColumns)
   {
      for (sql_column & c : t.lstColumns)
      {
         if (c.sName != sColumn) { continue; }
         t.lstPrimaryKey.append(sColumn);
         c.bNotNull = true;
      }
   }
}

// The table has no key in its database: the model's key is only the one import-db chose.
void dropChosenKey(sql_table & t, const model::entity & entity)
{
   for (sql_column & c : t.lstColumns)
   {
      if (! t.lstPrimaryKey.contains(c.sName)) { continue; }
      for (const model::property_ptr & p : entity.getOwnProperties())
      {
         if (p && (schema_builder::columnName(* p) == c.sName)) { c.bNotNull = ! p->getAllowNull(); }
      }
   }
   t.lstPrimaryKey.clear();
}

} // namespace

QString schema_builder::tableName(const model::entity & entity) { return model::sql_meta::tableOf(entity); }

QString schema_builder::columnName(const model::property & property) { return model::sql_meta::columnOf(property); }

sql_table schema_builder::tableOf(const model::entity & entity, const sql_dialect & dialect, const schema_options & options, QStringList & lstWarnings)
{
   sql_table t;
   if (entity.isAbstract()) { return t; }
   t.sName = tableName(entity);
   t.sKey = itemKey("e", entity.getId(), t.sName);
   if (options.bComments) { t.sComment = entity.getDescription(); }
   QSet<QString> setColumns;
   QStringList lstCompositeKey;
   for (const model::property_ptr & p : registeredProperties(entity, options))
   {
      const QString sColumn = columnName(* p);
      if (sColumn.isEmpty() || setColumns.contains(sColumn)) { continue; }
      // A key over several columns names them "a|b"; the columns are properties of their own.
      if (p->isPrimaryKey() && sColumn.contains(QLatin1Char('|'))) { lstCompositeKey = sColumn.split(QLatin1Char('|')); continue; }
      setColumns.insert(sColumn);
      addColumn(t, * p, dialect, lstWarnings);
      if (! options.bComments) { t.lstColumns.last().sComment.clear(); }
   }
   if (t.lstPrimaryKey.size() > 1) { t.lstPrimaryKey = declaredKeyOrder(entity, t.lstPrimaryKey); }
   if (! lstCompositeKey.isEmpty()) { applyCompositeKey(t, lstCompositeKey); }
   if (entity.getMetaData(model::sql_meta::k_sNoKey).toString() == QLatin1String("true")) { dropChosenKey(t, entity); }
   keepTableForm(t, entity, dialect, lstWarnings);
   const QString sSoftDelete = entity.getSoftDeleteColumn();
   if (! sSoftDelete.isEmpty() && ! setColumns.contains(sSoftDelete))
   {
      sql_column c;
      c.sKey = QStringLiteral("soft-delete");
      c.sName = sSoftDelete;
      c.sType = sql_types::map(dialect, "QString", 0, false).sType;
      t.lstColumns.append(c);
   }
   return t;
}

sql_schema schema_builder::build(const model::project & project, const sql_dialect & dialect, const schema_options & options)
{
   sql_schema schema;
   const model::list_of_entity_ptr pEntities = project.getListOfAllEntities();
   QList<QPair<model::entity_ptr, model::property_ptr> > lstManyToMany;
   for (const model::entity_ptr & pEntity : * pEntities)
   {
      if (! pEntity || pEntity->isAbstract()) { continue; }
      if (pEntity->getMetaData(model::sql_meta::k_sView).toString() == QLatin1String("true"))
      {
         schema.lstViews.append(tableName(* pEntity));
         continue;
      }
      schema.lstTables.append(tableOf(* pEntity, dialect, options, schema.lstWarnings));
      for (const model::property_ptr & p : pEntity->getOwnProperties())
      {
         const model::relationship_ptr pRelation = (p ? p->getRelation() : model::relationship_ptr());
         if (! pRelation || (pRelation->getType() != model::relationship::many_to_many) || p->isTransient()) { continue; }
         if ((p->isObsolete() && ! options.bIncludeObsolete) || pRelation->getExtraTable().isEmpty()) { continue; }
         lstManyToMany.append({ pEntity, p });
      }
   }
   QSet<QString> setJoinTables, setJoinKeys;
   for (const auto & m : lstManyToMany)
   {
      const model::relationship_ptr pRelation = m.second->getRelation();
      if (setJoinTables.contains(pRelation->getExtraTable())) { continue; }
      setJoinTables.insert(pRelation->getExtraTable());
      schema.lstTables.append(joinTable(m.first, * m.second, dialect, schema.lstWarnings));
      // A join table goes by the two entities it joins, whichever side declares it and whatever
      // its name; by its name too when two join the same entities.
      const model::entity_ptr pTarget = pRelation->getEntityTarget();
      const long lA = m.first->getId(), lB = (pTarget ? pTarget->getId() : 0);
      QString sKey = QString("m%1-%2").arg(qMin(lA, lB)).arg(qMax(lA, lB));
      if ((lA == 0) || (lB == 0) || setJoinKeys.contains(sKey)) { sKey += ':' + pRelation->getExtraTable(); }
      setJoinKeys.insert(sKey);
      schema.lstTables.last().sKey = sKey;
   }
   // Sorted by name: a database read back lists its tables so, and the script stays the same.
   std::stable_sort(schema.lstTables.begin(), schema.lstTables.end(), [](const sql_table & a, const sql_table & b) { return a.sName < b.sName; });
   return schema;
}

} // namespace sql_export
