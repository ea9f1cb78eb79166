#include "db_import/model_merger.h"

#include "db_import/model_mapper.h"
#include "db_import/type_mapping.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace db_import {

namespace {

QString yesNo(bool b) { return (b ? QString("true") : QString("false")); }

QString lengthText(const QVariant & v) { return (v.isValid() ? v.toString() : QString("none")); }

QString bareTable(const QString & sTable) { return sTable.section('.', -1); }

} // namespace

model_merger::model_merger(const model::project_ptr & pProject, const import_options & options) : m_pProject(pProject), m_options(options)
{
}

void model_merger::findIds()
{
   for (const model::entity_ptr & e : (* m_pProject->getListOfAllEntities()))
   {
      m_lNextEntity = qMax(m_lNextEntity, e->getId() + 1);
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         m_lNextProperty = qMax(m_lNextProperty, p->getId() + 1);
         if (p->getRelation()) { m_lNextRelation = qMax(m_lNextRelation, p->getRelation()->getId() + 1); }
      }
   }
}

QString model_merger::matchKey(const model::property & property, const model::project & project)
{
   const model::relationship_ptr r = property.getRelation();
   if (! r) { return "c:" + (property.getColumnName().isEmpty() ? property.getName() : property.getColumnName()); }
   if ((r->getType() == model::relationship::many_to_one) || (r->getType() == model::relationship::one_to_one))
   { return (r->getForeignKey().isEmpty() ? ("r:" + property.getName()) : ("c:" + r->getForeignKey())); }
   if (r->getType() == model::relationship::many_to_many) { return "m:" + r->getExtraTable() + "." + r->getForeignKey(); }
   const model::entity_ptr pTarget = project.getEntityByKey(r->getTargetKey());
   return "o:" + (pTarget ? model_mapper::tableOf(* pTarget) : r->getTargetKey()) + "." + r->getForeignKey();
}

QStringList model_merger::merge(const model::project & fresh)
{
   findIds();
   const model::list_of_entity lstOld = (* m_pProject->getListOfAllEntities());
   QHash<QString, model::entity_ptr> hashByTable;
   QSet<QString> setKeys;
   for (const model::entity_ptr & e : lstOld)
   {
      if (! hashByTable.contains(model_mapper::tableOf(* e))) { hashByTable.insert(model_mapper::tableOf(* e), e); }
      setKeys.insert(e->getKey());
   }
   // Keys first: the relations of new items name their targets by the project's keys.
   QList<QPair<model::entity_ptr, model::entity_ptr> > lstPairs;
   for (const model::entity_ptr & f : (* fresh.getListOfAllEntities()))
   {
      const QString sFreshKey = f->getKey();
      const model::entity_ptr pMatch = hashByTable.value(model_mapper::tableOf(* f));
      if (! pMatch)
      {
         // A new table whose class name the user gave to another entity meanwhile.
         const QString sTable = model_mapper::tableOf(* f);
         const QString sName = f->getName();
         for (int i = 2; setKeys.contains(f->getKey()); ++i) { f->setName(sName + QString::number(i)); }
         if (f->getTableName().isEmpty() && (f->getName() != sName)) { f->setTableName(sTable); }
         setKeys.insert(f->getKey());
      }
      m_hashKeys.insert(sFreshKey, (pMatch ? pMatch->getKey() : f->getKey()));
      lstPairs.append(qMakePair(pMatch, f));
   }
   QSet<const model::entity *> setMatched;
   for (const auto & pair : lstPairs)
   {
      if (pair.first) { mergeEntity(pair.first, * pair.second, fresh); setMatched.insert(pair.first.get()); }
      else { addEntity(pair.second); }
   }
   for (const model::entity_ptr & e : lstOld)
   {
      if (setMatched.contains(e.get()) || e->isAbstract() || ! m_options.accepts(bareTable(model_mapper::tableOf(* e)))) { continue; }
      dropTable(e);
   }
   m_pProject->invalidateIndex();
   m_pProject->resolveLinks();
   return m_lstSummary;
}

void model_merger::addEntity(const model::entity_ptr & pFresh)
{
   pFresh->setId(m_lNextEntity++);
   const model::list_of_property lst = pFresh->getOwnProperties();
   pFresh->clearProperties();
   for (const model::property_ptr & p : lst) { adopt(pFresh, p); }
   m_pProject->addEntity(pFresh);
   const QString sTable = model_mapper::tableOf(* pFresh);
   const QString sChoice = m_hashChosenKeys.value(sTable);
   note(QString("+ entity %1 (table %2)").arg(pFresh->getKey(), sTable) + (sChoice.isEmpty() ? QString() : ("; " + sChoice)));
}

// A property of the fresh model joins the project: new ids, targets named by the project's keys.
void model_merger::adopt(const model::entity_ptr & pEntity, const model::property_ptr & pProperty)
{
   QString sName = pProperty->getName();
   for (int i = 2; pEntity->getPropertyByName(sName); ++i) { sName = pProperty->getName() + QString::number(i); }
   if ((sName != pProperty->getName()) && ! pProperty->getRelation() && pProperty->getColumnName().isEmpty()) { pProperty->setColumnName(pProperty->getName()); }
   pProperty->setName(sName);
   pProperty->setId(m_lNextProperty++);
   if (pProperty->getType()) { pProperty->getType()->setId(pProperty->getId()); }
   if (pProperty->getRelation())
   {
      pProperty->getRelation()->setId(m_lNextRelation++);
      pProperty->getRelation()->setTargetKey(m_hashKeys.value(pProperty->getRelation()->getTargetKey(), pProperty->getRelation()->getTargetKey()));
   }
   pProperty->setEntity(pEntity);
   pEntity->addProperty(pProperty);
   m_setAdopted.insert(pProperty.get());
}

void model_merger::mergeEntity(const model::entity_ptr & pEntity, const model::entity & fresh, const model::project & freshProject)
{
   if (type_mapping::followSqlForm(* pEntity, fresh)) { note(QString("~ %1: indexes and keys kept for the SQL export").arg(pEntity->getName())); }
   QHash<QString, model::property_ptr> hashOwn;
   for (const model::property_ptr & p : pEntity->getOwnProperties())
   {
      const QString sKey = matchKey(* p, * m_pProject);
      if (! p->isTransient() && ! hashOwn.contains(sKey)) { hashOwn.insert(sKey, p); }
   }
   QSet<QString> setSeen;
   for (const model::property_ptr & f : fresh.getOwnProperties())
   {
      const QString sKey = matchKey(* f, freshProject);
      setSeen.insert(sKey);
      const model::property_ptr p = hashOwn.value(sKey);
      if (p) { updateProperty(* pEntity, p, * f); continue; }
      adopt(pEntity, f);
      const QString sColumn = (f->getRelation() ? f->getRelation()->getForeignKey() : (f->getColumnName().isEmpty() ? f->getName() : f->getColumnName()));
      note(QString("+ property %1.%2 (column %3)").arg(pEntity->getName(), f->getName(), sColumn));
   }
   dropMissing(pEntity, setSeen);
}

void model_merger::updateProperty(const model::entity & entity, const model::property_ptr & p, const model::property & fresh)
{
   const QString sWhere = entity.getName() + "." + p->getName();
   if (type_mapping::followSqlForm(* p, fresh)) { note(QString("~ %1: SQL type, numbering or default kept for the SQL export").arg(sWhere)); }
   if (p->isObsolete())
   {
      p->setObsolete(false);
      note(QString("+ column %1.%2 (back, no longer obsolete)").arg(model_mapper::tableOf(entity), matchKey(* p, * m_pProject).mid(2)));
   }
   // Relations and enumeration-typed properties are the user's: only plain columns follow.
   if (p->getRelation() || fresh.getRelation() || ! p->getType() || ! fresh.getType() || ! p->getEnumerationKey().isEmpty())
   {
      if (p->getAllowNull() != fresh.getAllowNull()) { note(QString("~ %1: allow_null %2 -> %3").arg(sWhere, yesNo(p->getAllowNull()), yesNo(fresh.getAllowNull()))); p->setAllowNull(fresh.getAllowNull()); }
      return;
   }
   const QString sOld = p->getType()->getPrimitiveType();
   const QString sNew = fresh.getType()->getPrimitiveType();
   if (sOld != sNew) { note(QString("~ %1: %2 -> %3").arg(sWhere, sOld, sNew)); p->getType()->setPrimitiveType(sNew); }
   if (p->getMaxLength() != fresh.getMaxLength())
   { note(QString("~ %1: max_length %2 -> %3").arg(sWhere, lengthText(p->getMaxLength()), lengthText(fresh.getMaxLength()))); p->setMaxLength(fresh.getMaxLength()); }
   if (p->getAllowNull() != fresh.getAllowNull()) { note(QString("~ %1: allow_null %2 -> %3").arg(sWhere, yesNo(p->getAllowNull()), yesNo(fresh.getAllowNull()))); p->setAllowNull(fresh.getAllowNull()); }
   // A key the import chose stays where the user put it.
   if ((p->isPrimaryKey() != fresh.isPrimaryKey()) && ! m_hashChosenKeys.contains(model_mapper::tableOf(entity))) { note(QString("~ %1: primary_key %2 -> %3").arg(sWhere, yesNo(p->isPrimaryKey()), yesNo(fresh.isPrimaryKey()))); p->setPrimaryKey(fresh.isPrimaryKey()); }
   if (p->getUnique() != fresh.getUnique()) { note(QString("~ %1: unique %2 -> %3").arg(sWhere, yesNo(p->getUnique()), yesNo(fresh.getUnique()))); p->setUnique(fresh.getUnique()); }
   if (p->isIndex() != fresh.isIndex()) { note(QString("~ %1: index %2 -> %3").arg(sWhere, yesNo(p->isIndex()), yesNo(fresh.isIndex()))); p->setIndex(fresh.isIndex()); }
}

void model_merger::dropMissing(const model::entity_ptr & pEntity, const QSet<QString> & setSeen)
{
   model::list_of_property lstKept;
   for (const model::property_ptr & p : pEntity->getOwnProperties())
   {
      const QString sKey = matchKey(* p, * m_pProject);
      if (p->isTransient() || m_setAdopted.contains(p.get()) || setSeen.contains(sKey) || sKey.startsWith("r:")) { lstKept.append(p); continue; }
      const QString sWhat = (sKey.startsWith("c:") ? ("column " + model_mapper::tableOf(* pEntity) + "." + sKey.mid(2))
                                                   : ("relation " + pEntity->getName() + "." + p->getName()));
      if (m_options.bPrune) { note(QString("- %1 (removed)").arg(sWhat)); continue; }
      lstKept.append(p);
      if (p->isObsolete()) { continue; }
      p->setObsolete(true);
      note(QString("- %1 (marked obsolete)").arg(sWhat));
   }
   pEntity->clearProperties();
   for (const model::property_ptr & p : lstKept) { pEntity->addProperty(p); }
}

void model_merger::dropTable(const model::entity_ptr & pEntity)
{
   const QString sTable = model_mapper::tableOf(* pEntity);
   if (m_options.bPrune)
   {
      m_pProject->getListOfAllEntities()->removeAll(pEntity);
      m_pProject->invalidateIndex();
      note(QString("- table %1 (removed)").arg(sTable));
      removeRelationsTo(QSet<QString> { pEntity->getKey() });
      return;
   }
   bool bChanged = false;
   for (const model::property_ptr & p : pEntity->getOwnProperties())
   {
      if (p->isTransient() || p->isObsolete()) { continue; }
      p->setObsolete(true);
      bChanged = true;
   }
   if (bChanged) { note(QString("- table %1 (marked obsolete)").arg(sTable)); }
}

void model_merger::removeRelationsTo(const QSet<QString> & setKeys)
{
   for (const model::entity_ptr & e : (* m_pProject->getListOfAllEntities()))
   {
      model::list_of_property lstKept;
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (p->getRelation() && setKeys.contains(p->getRelation()->getTargetKey())) { note(QString("- relation %1.%2 (removed)").arg(e->getName(), p->getName())); continue; }
         lstKept.append(p);
      }
      if (lstKept.size() == e->getOwnProperties().size()) { continue; }
      e->clearProperties();
      for (const model::property_ptr & p : lstKept) { e->addProperty(p); }
   }
}

} // namespace db_import
