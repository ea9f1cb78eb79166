// Copy-on-write edits of the model and the undo command that puts back the items an edit replaced.

#include "desktop/model_edit.h"

#include <algorithm>

#include <QObject>
#include <QSet>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "model/sql_meta.h"
#include "model/sql_meta_edit.h"

namespace desktop {

namespace model_edit {

model_state stateOf(const model::project & p)
{
   return model_state { * p.getListOfAllEntities(), * p.getListOfAllEnums() };
}

void restore(model::project & p, const model_state & s)
{
   * p.getListOfAllEntities() = s.entities;
   * p.getListOfAllEnums() = s.enumerations;
   p.resolveLinks();
}

model::property_ptr cloneProperty(const model::property & p)
{
   model::property_ptr pCopy = std::make_shared<model::property>(p);
   if (p.getType()) { pCopy->setType(std::make_shared<model::property_type>(* p.getType())); }
   if (p.getRelation())
   {
      pCopy->setRelation(std::make_shared<model::relationship>(* p.getRelation()));
      pCopy->getRelation()->setProperty(pCopy);
   }
   return pCopy;
}

model::entity_ptr cloneEntity(const model::entity & e)
{
   model::entity_ptr pCopy = std::make_shared<model::entity>(e);
   pCopy->clearProperties();
   for (const model::property_ptr & p : e.getOwnProperties())
   {
      if (! p) { continue; }
      model::property_ptr pProperty = cloneProperty(* p);
      pProperty->setEntity(pCopy);
      pCopy->addProperty(pProperty);
   }
   return pCopy;
}

model::enumeration_ptr cloneEnumeration(const model::enumeration & e)
{
   return std::make_shared<model::enumeration>(e);
}

namespace {

template <typename T>
long nextId(const T & lst)
{
   long lMax = 0;
   for (const auto & p : lst) { if (p) { lMax = qMax(lMax, p->getId()); } }
   return (lMax + 1);
}

} // namespace

long nextEntityId(const model_state & s) { return nextId(s.entities); }
long nextEnumerationId(const model_state & s) { return nextId(s.enumerations); }

long nextPropertyId(const model_state & s)
{
   long lMax = 0;
   for (const model::entity_ptr & e : s.entities)
   {
      if (e) { lMax = qMax(lMax, nextId(e->getOwnProperties()) - 1); }
   }
   return (lMax + 1);
}

void renameEntityReferences(model_state & s, const QString & sOld, const QString & sNew)
{
   for (model::entity_ptr & e : s.entities)
   {
      if (! e) { continue; }
      bool bRefers = (e->getParentKey() == sOld);
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         bRefers = bRefers || (p && p->getRelation() && (p->getRelation()->getTargetKey() == sOld));
      }
      if (! bRefers) { continue; }
      e = cloneEntity(* e);
      if (e->getParentKey() == sOld) { e->setParentKey(sNew); }
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (p->getRelation() && (p->getRelation()->getTargetKey() == sOld)) { p->getRelation()->setTargetKey(sNew); }
      }
   }
}

void renameColumnReferences(model_state & s, qsizetype iEntity, const QString & sOld, const QString & sNew)
{
   if ((iEntity < 0) || (iEntity >= s.entities.size()) || ! s.entities.at(iEntity)) { return; }
   model::entity & edited = * s.entities[iEntity];
   model::sql_meta::renameColumn(edited, sOld, sNew);
   const QString sTable = model::sql_meta::tableOf(edited);
   for (qsizetype k = 0; k < s.entities.size(); ++k)
   {
      model::entity_ptr & e = s.entities[k];
      if (! e || e->getMetaData(model::sql_meta::k_sForeignKeys).toString().isEmpty()) { continue; }
      if (k == iEntity) { model::sql_meta::renameTargetColumn(* e, sTable, sOld, sNew); continue; }
      // Only an entity whose kept keys change is replaced: the others stay shared with the undo.
      model::entity_ptr pCopy = cloneEntity(* e);
      if (model::sql_meta::renameTargetColumn(* pCopy, sTable, sOld, sNew)) { e = pCopy; }
   }
}

void renameTableReferences(model_state & s, const QString & sOld, const QString & sNew)
{
   if (sOld.isEmpty() || sNew.isEmpty() || (sOld == sNew)) { return; }
   for (model::entity_ptr & e : s.entities)
   {
      if (! e || e->getMetaData(model::sql_meta::k_sForeignKeys).toString().isEmpty()) { continue; }
      model::entity_ptr pCopy = cloneEntity(* e);
      if (model::sql_meta::renameTargetTable(* pCopy, sOld, sNew)) { e = pCopy; }
   }
}

void renameEnumerationReferences(model_state & s, const QString & sOld, const QString & sNew)
{
   for (model::entity_ptr & e : s.entities)
   {
      if (! e) { continue; }
      bool bRefers = false;
      for (const model::property_ptr & p : e->getOwnProperties()) { bRefers = bRefers || (p && (p->getEnumerationKey() == sOld)); }
      if (! bRefers) { continue; }
      e = cloneEntity(* e);
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (p->getEnumerationKey() == sOld) { p->setEnumerationKey(sNew); }
      }
   }
}

namespace {

bool aimsAt(const model::property_ptr & p, const QString & sKey) { return (p && p->getRelation() && (p->getRelation()->getTargetKey() == sKey)); }
bool typedBy(const model::property_ptr & p, const QString & sKey) { return (p && (p->getEnumerationKey() == sKey)); }

// Each entity holding a property that matches loses those properties (a clone takes its place).
template <typename Match>
void dropProperties(model_state & s, const Match & match)
{
   for (model::entity_ptr & e : s.entities)
   {
      if (! e) { continue; }
      const model::list_of_property & lstOwn = e->getOwnProperties();
      if (std::none_of(lstOwn.cbegin(), lstOwn.cend(), match)) { continue; }
      e = cloneEntity(* e);
      const model::list_of_property lstKept = e->getOwnProperties();
      e->clearProperties();
      for (const model::property_ptr & p : lstKept) { if (! match(p)) { e->addProperty(p); } }
   }
}

} // namespace

QStringList entityReferences(const model_state & s, const QString & sKey)
{
   QStringList lst;
   for (const model::entity_ptr & e : s.entities)
   {
      if (! e || (e->getKey() == sKey)) { continue; }
      if (e->getParentKey() == sKey) { lst.append(QObject::tr("%1 (derived entity)").arg(e->getKey())); }
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (aimsAt(p, sKey)) { lst.append(QObject::tr("%1::%2 (relation)").arg(e->getKey(), p->getName())); }
      }
   }
   return lst;
}

void dropEntityReferences(model_state & s, const QString & sKey)
{
   dropProperties(s, [&sKey](const model::property_ptr & p) { return aimsAt(p, sKey); });
   for (model::entity_ptr & e : s.entities)
   {
      if (! e || (e->getParentKey() != sKey)) { continue; }
      e = cloneEntity(* e);
      e->setParentKey(QString());
   }
}

QStringList enumerationReferences(const model_state & s, const QString & sKey)
{
   QStringList lst;
   for (const model::entity_ptr & e : s.entities)
   {
      if (! e) { continue; }
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (typedBy(p, sKey)) { lst.append(QObject::tr("%1::%2 (property)").arg(e->getKey(), p->getName())); }
      }
   }
   return lst;
}

void dropEnumerationReferences(model_state & s, const QString & sKey)
{
   dropProperties(s, [&sKey](const model::property_ptr & p) { return typedBy(p, sKey); });
}

QString freeName(const QStringList & lstTaken, const QString & sBase)
{
   const QSet<QString> taken(lstTaken.cbegin(), lstTaken.cend());
   for (int i = 1; ; ++i)
   {
      const QString s = sBase + QString::number(i);
      if (! taken.contains(s)) { return s; }
   }
}

qsizetype indexOfEntity(const model_state & s, const QString & sKey)
{
   for (qsizetype i = 0; i < s.entities.size(); ++i) { if (s.entities.at(i) && (s.entities.at(i)->getKey() == sKey)) { return i; } }
   return -1;
}

qsizetype indexOfEnumeration(const model_state & s, const QString & sKey)
{
   for (qsizetype i = 0; i < s.enumerations.size(); ++i) { if (s.enumerations.at(i) && (s.enumerations.at(i)->getKey() == sKey)) { return i; } }
   return -1;
}

} // namespace model_edit

namespace {

// The runs of items that differ between two lists: items compare by identity, as an edit puts
// new items in place of the ones it changes.
template <typename T>
QList<model_change::piece<T> > piecesBetween(const QList<T> & a, const QList<T> & b)
{
   QList<model_change::piece<T> > lst;
   const qsizetype n = qMin(a.size(), b.size());
   qsizetype iHead = 0;
   while ((iHead < n) && (a.at(iHead) == b.at(iHead))) { ++iHead; }
   qsizetype iTail = 0;
   while ((iTail < n - iHead) && (a.at(a.size() - 1 - iTail) == b.at(b.size() - 1 - iTail))) { ++iTail; }
   if (a.size() != b.size())
   {
      lst.append({ iHead, a.mid(iHead, a.size() - iHead - iTail), b.mid(iHead, b.size() - iHead - iTail) });
      return lst;
   }
   // Same length: each run of replaced items on its own (a rename touches a few items far apart).
   for (qsizetype i = iHead; i < a.size() - iTail; ++i)
   {
      if (a.at(i) == b.at(i)) { continue; }
      if (! lst.isEmpty() && (lst.last().at + lst.last().before.size() == i)) { lst.last().before.append(a.at(i)); lst.last().after.append(b.at(i)); }
      else { lst.append({ i, QList<T> { a.at(i) }, QList<T> { b.at(i) } }); }
   }
   return lst;
}

template <typename T>
void applyPieces(QList<T> & lst, const QList<model_change::piece<T> > & pieces, bool bForward)
{
   for (qsizetype k = 0; k < pieces.size(); ++k)
   {
      const model_change::piece<T> & x = pieces.at(bForward ? k : (pieces.size() - 1 - k));
      lst.remove(x.at, (bForward ? x.before : x.after).size());
      const QList<T> & lstPut = (bForward ? x.after : x.before);
      for (qsizetype i = 0; i < lstPut.size(); ++i) { lst.insert(x.at + i, lstPut.at(i)); }
   }
}

template <typename T>
void addPut(QList<const void *> & lst, const QList<model_change::piece<T> > & pieces, bool bForward)
{
   for (const model_change::piece<T> & x : pieces)
   {
      for (const T & p : (bForward ? x.after : x.before)) { lst.append(p.get()); }
   }
}

} // namespace

model_change model_change::between(const model_state & before, const model_state & after)
{
   return model_change { piecesBetween(before.entities, after.entities), piecesBetween(before.enumerations, after.enumerations) };
}

void model_change::apply(model_state & s, bool bForward) const
{
   applyPieces(s.entities, entities, bForward);
   applyPieces(s.enumerations, enumerations, bForward);
}

QList<const void *> model_change::itemsPut(bool bForward) const
{
   QList<const void *> lst;
   addPut(lst, entities, bForward);
   addPut(lst, enumerations, bForward);
   return lst;
}

model_command::model_command(const QString & sText, const model_state & before, const model_state & after,
                             const model_place & placeBefore, const model_place & placeAfter, const applier & fnApply)
   : QUndoCommand(sText), m_change(model_change::between(before, after)), m_placeBefore(placeBefore), m_placeAfter(placeAfter), m_fnApply(fnApply)
{
   ;
}

void model_command::undo() { m_fnApply(m_change, false, m_placeBefore); }

void model_command::redo() { m_fnApply(m_change, true, m_placeAfter); }

} // namespace desktop
