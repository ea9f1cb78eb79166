#include "db_import/model_mapper.h"

#include "model/sql_meta.h"

#include <functional>

#include "db_import/name_rules.h"
#include "db_import/type_mapping.h"
#include "model/entity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace db_import {

namespace {

bool singleColumnIndex(const db_table & table, const QString & sColumn, bool bUnique)
{
   for (const db_index & i : table.lstIndexes)
   {
      if ((i.lstColumns.size() == 1) && (i.lstColumns.first() == sColumn) && (i.bUnique == bUnique) && ! i.hasPrefix()) { return true; }
   }
   return false;
}

} // namespace


model_mapper::model_mapper(const db_catalog & catalog, const import_options & options) : m_catalog(catalog), m_options(options)
{
}

QString model_mapper::tableOf(const model::entity & entity)
{
   return (entity.getTableName().isEmpty() ? entity.getName() : entity.getTableName());
}

QString model_mapper::qualifiedName(const db_catalog & catalog, const QString & sSchema, const QString & sTable)
{
   return ((sSchema == catalog.sDefaultSchema) ? sTable : (sSchema + "." + sTable));
}

QString model_mapper::styledPropertyName(const QString & s) const
{
   return name_rules::propertyName(s, (m_options.ePropertyNames == import_options::property_names_camel) ? name_rules::style_camel : name_rules::style_keep);
}

model::project_ptr model_mapper::map(const QString & sProjectName)
{
   m_pProject = std::make_shared<model::project>();
   m_pProject->setName(sProjectName);
   for (const db_table & t : m_catalog.lstTables)
   {
      if (! m_options.accepts(t.sName) || ! representable(t)) { continue; }
      if (isJoinTable(t)) { m_setJoinTables.insert(db_catalog::keyOf(t.sSchema, t.sName)); continue; }
      addEntity(t);
   }
   for (const db_table & t : m_catalog.lstTables)
   {
      if (m_hashEntities.contains(db_catalog::keyOf(t.sSchema, t.sName))) { addColumns(t); }
   }
   for (const pending_inverse & i : m_lstInverses) { addInverse(* i.pTable, i.pHolder, * i.pKey, i.sRelation); }
   for (const db_table & t : m_catalog.lstTables)
   {
      if (m_setJoinTables.contains(db_catalog::keyOf(t.sSchema, t.sName))) { addManyToMany(t); }
   }
   m_pProject->resolveLinks();
   return m_pProject;
}

bool model_mapper::representable(const db_table & table)
{
   const QString sTable = qualifiedName(m_catalog, table.sSchema, table.sName);
   const QString sProblem = model::model_text_rules::sqlNameProblem(sTable);
   if (sProblem.isEmpty()) { return true; }
   leaveOut(QString("table %1 left out: its name %2").arg(model::model_text_rules::shown(sTable), sProblem));
   return false;
}

bool model_mapper::representable(const db_table & table, const db_column & column)
{
   const QString sProblem = model::model_text_rules::literalProblem(column.sName);
   if (sProblem.isEmpty()) { return true; }
   const QString sTable = qualifiedName(m_catalog, table.sSchema, table.sName);
   const QString s = QString("column %1 of table %2 left out: its name %3").arg(model::model_text_rules::shown(column.sName), model::model_text_rules::shown(sTable), sProblem);
   leaveOut(s);
   return false;
}

// Its primary key is two single-column foreign keys to imported tables and it has no other column.
bool model_mapper::isJoinTable(const db_table & table) const
{
   if (table.bView || (table.lstColumns.size() != 2) ||
       ! model::model_text_rules::literalProblem(table.lstColumns.at(0).sName).isEmpty() || ! model::model_text_rules::literalProblem(table.lstColumns.at(1).sName).isEmpty() || (table.lstPrimaryKey.size() != 2) || (table.lstForeignKeys.size() != 2)) { return false; }
   if (table.lstForeignKeys.at(0).lstColumns == table.lstForeignKeys.at(1).lstColumns) { return false; }
   for (const db_foreign_key & k : table.lstForeignKeys)
   {
      if ((k.lstColumns.size() != 1) || ! table.lstPrimaryKey.contains(k.lstColumns.first())) { return false; }
      const db_table * pTarget = m_catalog.find(k.sTargetSchema, k.sTargetTable);
      if (! pTarget || pTarget->bView || ! m_options.accepts(pTarget->sName) || (pTarget->lstPrimaryKey.size() != 1) ||
          ! model::model_text_rules::sqlNameProblem(qualifiedName(m_catalog, pTarget->sSchema, pTarget->sName)).isEmpty()) { return false; }
   }
   return true;
}

model::entity_ptr model_mapper::targetOf(const db_foreign_key & key) const
{
   return m_hashEntities.value(db_catalog::keyOf(key.sTargetSchema, key.sTargetTable));
}

const db_foreign_key * model_mapper::relationKey(const db_table & table, const QString & sColumn) const
{
   for (const db_foreign_key & k : table.lstForeignKeys)
   {
      if ((k.lstColumns.size() == 1) && (k.lstColumns.first() == sColumn) && targetOf(k)) { return & k; }
   }
   return nullptr;
}

void model_mapper::addEntity(const db_table & table)
{
   auto pEntity = std::make_shared<model::entity>();
   pEntity->setId(m_pProject->getListOfAllEntities()->size() + 1);
   QString sNamespace = m_options.sNamespace;
   if (! m_options.bFixedNamespace && (table.sSchema != m_catalog.sDefaultSchema)) { sNamespace = name_rules::propertyName(table.sSchema, name_rules::style_keep); }
   pEntity->setNamespace(sNamespace);
   const name_rules::enum_style eStyle = ((m_options.eClassNames == import_options::class_names_pascal) ? name_rules::style_pascal : name_rules::style_keep);
   const QString sWanted = name_rules::className(table.sName, eStyle);
   const QString sName = name_rules::unique(sWanted, m_hashTakenClasses[sNamespace]);
   const QString sTable = qualifiedName(m_catalog, table.sSchema, table.sName);
   if (sName != sWanted) { warn(QString("table %1: class name %2 is taken, named %3").arg(sTable, sWanted, sName)); }
   pEntity->setName(sName);
   if (sName != sTable) { pEntity->setTableName(sTable); }
   pEntity->setReadOnly(table.bView);
   const QString sCommentProblem = model::model_text_rules::blockCommentProblem(table.sComment);
   if (sCommentProblem.isEmpty()) { pEntity->setDescription(table.sComment); }
   else { warn(QString("table %1: comment not taken as the description: %2").arg(sTable, sCommentProblem)); }
   m_pProject->addEntity(pEntity);
   m_hashEntities.insert(db_catalog::keyOf(table.sSchema, table.sName), pEntity);
   // A view is never created by the SQL export, and its rows cannot be written.
   if (table.bView) { pEntity->setMetaData(model::sql_meta::k_sView, "true"); return; }
   for (const db_foreign_key & k : table.lstForeignKeys)
   {
      if (k.lstColumns.size() > 1)
      { warn(QString("table %1: foreign key (%2) over several columns kept as plain columns and entity meta data %3").arg(sTable, k.lstColumns.join(", "), model::sql_meta::k_sForeignKeys)); }
   }
}

model::property_ptr model_mapper::newProperty(const model::entity_ptr & pEntity, const QString & sName, const QString & sColumn)
{
   auto pProperty = std::make_shared<model::property>();
   pProperty->setId(m_lNextProperty++);
   // Never named like a class of its namespace (its own included): see name_rules::avoiding.
   const QString sWanted = name_rules::avoiding(sName, m_hashTakenClasses.value(pEntity->getNamespace()));
   const QString sUnique = name_rules::unique(sWanted, m_hashTakenNames[pEntity.get()]);
   if (sUnique != sWanted) { warn(QString("%1.%2: property name %3 is taken, named %4").arg(tableOf(* pEntity), sColumn, sWanted, sUnique)); }
   pProperty->setName(sUnique);
   pProperty->setEntity(pEntity);
   pEntity->addProperty(pProperty);
   return pProperty;
}

void model_mapper::addColumns(const db_table & table)
{
   const model::entity_ptr pEntity = m_hashEntities.value(db_catalog::keyOf(table.sSchema, table.sName));
   type_mapping::keepTableForm(m_catalog, table, * pEntity);
   QString sKey = ((table.lstPrimaryKey.size() == 1) ? table.lstPrimaryKey.first() : QString());
   if (table.lstPrimaryKey.isEmpty()) { sKey = (m_options.bChooseKeys ? chooseKey(table, * pEntity) : QString()); }
   // The database keeps its keyless table: the SQL export writes no key for it either.
   if (table.lstPrimaryKey.isEmpty() && ! sKey.isEmpty() && ! table.bView) { pEntity->setMetaData(model::sql_meta::k_sNoKey, "true"); }
   else if (table.lstPrimaryKey.size() > 1) { addCompositeKey(table, pEntity); }
   for (const db_column & c : table.lstColumns)
   {
      if (! representable(table, c)) { continue; }
      const bool bKey = (c.sName == sKey);
      const db_foreign_key * pKey = (bKey ? nullptr : relationKey(table, c.sName));
      if (pKey) { addManyToOne(table, pEntity, c, * pKey); }
      else { plainProperty(table, pEntity, c, bKey); }
   }
}

QString model_mapper::chooseKey(const db_table & table, const model::entity & entity)
{
   auto first = [&table](const std::function<bool(const db_column &)> & fctFits) -> const db_column *
   {
      for (const db_column & c : table.lstColumns) { if (model::model_text_rules::literalProblem(c.sName).isEmpty() && fctFits(c)) { return & c; } }
      return nullptr;
   };
   QString sWhy = "its first unique not-null column";
   const db_column * pChosen = first([&table](const db_column & c) { return (c.bNotNull && singleColumnIndex(table, c.sName, true)); });
   if (! pChosen)
   {
      sWhy = "its first column that is no foreign key";
      pChosen = first([this, &table](const db_column & c) { return ! relationKey(table, c.sName); });
   }
   if (! pChosen)
   {
      sWhy = "its first column";
      pChosen = first([](const db_column &) { return true; });
   }
   if (! pChosen) { return QString(); }
   const QString sTable = tableOf(entity);
   m_hashChosenKeys.insert(sTable, QString("%1 %2 has no primary key: column %3 (%4) is its key in the model; choose another with "
                                           "\"primary_key\" (a refresh keeps the choice)").arg(table.bView ? "view" : "table", sTable, pChosen->sName, sWhy));
   return pChosen->sName;
}

void model_mapper::addCompositeKey(const db_table & table, const model::entity_ptr & pEntity)
{
   QStringList lstTypes;
   QSet<QString> setColumns;
   for (const QString & sColumn : table.lstPrimaryKey)
   {
      const db_column * pColumn = table.column(sColumn);
      lstTypes.append(pColumn ? type_mapping::map(m_catalog.eDialect, * pColumn, m_options).sType : QString("QString"));
   }
   for (const db_column & c : table.lstColumns) { setColumns.insert(styledPropertyName(c.sName)); }
   QString sName = "id";
   if (setColumns.contains(sName)) { sName = "key"; }
   for (int i = 2; setColumns.contains(sName); ++i) { sName = "key" + QString::number(i); }
   model::property_ptr p = newProperty(pEntity, sName, table.lstPrimaryKey.join('|'));
   p->setColumnName(table.lstPrimaryKey.join('|'));
   p->setPrimaryKey(true);
   auto pType = std::make_shared<model::property_type>();
   pType->setId(p->getId());
   pType->setPrimitiveType(((lstTypes.size() == 2) ? QString("std::pair<%1>") : QString("std::tuple<%1>")).arg(lstTypes.join(", ")));
   p->setType(pType);
}

model::property_ptr model_mapper::plainProperty(const db_table & table, const model::entity_ptr & pEntity, const db_column & column, bool bKey)
{
   model::property_ptr p = newProperty(pEntity, styledPropertyName(column.sName), column.sName);
   if (p->getName() != column.sName) { p->setColumnName(column.sName); }
   const type_mapping::result type = type_mapping::map(m_catalog.eDialect, column, m_options);
   if (column.sDeclared.isEmpty()) { warn(QString("%1.%2: no declared type, mapped to QString").arg(tableOf(* pEntity), column.sName)); }
   else if (! type.bKnown) { warn(QString("%1.%2: type '%3' is not in the type table, mapped to QString").arg(tableOf(* pEntity), column.sName, column.sDeclared)); }
   auto pType = std::make_shared<model::property_type>();
   pType->setId(p->getId());
   pType->setPrimitiveType(type.sType);
   pType->setDefaultValue(type_mapping::defaultValue(column.sDefault, type.sType));
   p->setPrimaryKey(bKey);
   // A key the import chose keeps what the database says of nulls: the table is written without it.
   if (column.bNotNull && (! bKey || table.lstPrimaryKey.isEmpty())) { p->setAllowNull(false); }
   if (m_options.bNullableOptional && ! column.bNotNull && ! bKey && ! table.bView) { pType->setDecoration(model::property_type::decoration_optional); }
   if (type.bLength) { p->setMaxLength(column.iLength); }
   // A key the import chose keeps its unique index: the table is written without the key.
   if (! bKey || table.lstPrimaryKey.isEmpty()) { p->setUnique(singleColumnIndex(table, column.sName, true)); }
   p->setIndex(singleColumnIndex(table, column.sName, false));
   p->setType(pType);
   type_mapping::keepColumnForm(m_catalog.eDialect, column, * p);
   describe(* pEntity, column, * p);
   return p;
}

// The column's comment, unless the model's text rules refuse it (it ends up in a C++ comment).
void model_mapper::describe(const model::entity & entity, const db_column & column, model::property & property)
{
   const QString sProblem = model::model_text_rules::lineCommentProblem(column.sComment);
   if (sProblem.isEmpty()) { property.setDescription(column.sComment); return; }
   warn(QString("%1.%2: comment not taken as the description: %3").arg(tableOf(entity), column.sName, sProblem));
}

model::property_ptr model_mapper::addRelation(const model::entity_ptr & pEntity, const QString & sName, int iKind,
                                              const model::entity_ptr & pTarget, const QString & sForeignKey)
{
   model::property_ptr p = newProperty(pEntity, sName, sForeignKey);
   auto pRelation = std::make_shared<model::relationship>();
   pRelation->setId(m_lNextRelation++);
   pRelation->setType(iKind);
   pRelation->setTargetKey(pTarget->getKey());
   pRelation->setForeignKey(sForeignKey);
   p->setRelation(pRelation);
   return p;
}

void model_mapper::addManyToOne(const db_table & table, const model::entity_ptr & pEntity, const db_column & column, const db_foreign_key & key)
{
   const model::entity_ptr pTarget = targetOf(key);
   const QString sRelation = styledPropertyName(name_rules::relationBase(column.sName));
   model::property_ptr p = addRelation(pEntity, sRelation, model::relationship::many_to_one, pTarget, column.sName);
   // The generated classes read the key from the column named like the data member.
   if (p->getName() != column.sName) { p->setColumnName(column.sName); }
   if (column.bNotNull) { p->setAllowNull(false); }
   p->setUnique(singleColumnIndex(table, column.sName, true));
   p->setIndex(singleColumnIndex(table, column.sName, false));
   type_mapping::keepColumnForm(m_catalog.eDialect, column, * p);
   if (! key.sOnDelete.isEmpty()) { p->setMetaData(model::sql_meta::k_sOnDelete, key.sOnDelete); }
   if (! key.sOnUpdate.isEmpty()) { p->setMetaData(model::sql_meta::k_sOnUpdate, key.sOnUpdate); }
   describe(* pEntity, column, * p);
   if (m_options.bInverse) { m_lstInverses.append(pending_inverse { & table, pEntity, & key, p->getName() }); }
}

void model_mapper::addInverse(const db_table & table, const model::entity_ptr & pHolder, const db_foreign_key & key, const QString & sRelation)
{
   int iSameTarget = 0;
   for (const db_foreign_key & k : table.lstForeignKeys)
   {
      if ((k.lstColumns.size() == 1) && (k.sTargetSchema == key.sTargetSchema) && (k.sTargetTable == key.sTargetTable)) { ++iSameTarget; }
   }
   // Two keys towards the same table, or a name the target already has: the collection is told
   // apart by the relation's name ("employee_manager").
   const model::entity_ptr pTarget = targetOf(key);
   QString sName = styledPropertyName(name_rules::plural(table.sName));
   if ((iSameTarget > 1) || m_hashTakenNames.value(pTarget.get()).contains(sName)) { sName = styledPropertyName(table.sName + "_" + sRelation); }
   addRelation(pTarget, sName, model::relationship::one_to_many, pHolder, key.lstColumns.first());
}

void model_mapper::addManyToMany(const db_table & table)
{
   const QString sExtra = qualifiedName(m_catalog, table.sSchema, table.sName);
   for (int i = 0; i < 2; ++i)
   {
      const db_foreign_key & own = table.lstForeignKeys.at(i);
      const db_foreign_key & other = table.lstForeignKeys.at(1 - i);
      const model::entity_ptr pOwner = targetOf(own);
      const model::entity_ptr pTarget = targetOf(other);
      // Both columns lead to the same table: each side is named from its own column.
      const QString sBase = ((pOwner == pTarget) ? name_rules::relationBase(other.lstColumns.first()) : name_rules::plural(other.sTargetTable));
      model::property_ptr p = addRelation(pOwner, styledPropertyName(sBase), model::relationship::many_to_many, pTarget, own.lstColumns.first());
      p->getRelation()->setExtraTable(sExtra);
      p->getRelation()->setForeignKeyOwner(other.lstColumns.first());
      // Either side may write the join table: each says where its key starts.
      if (table.lstPrimaryKey.first() != own.lstColumns.first()) { p->setMetaData(model::sql_meta::k_sOwnerFirst, "true"); }
   }
}

} // namespace db_import
