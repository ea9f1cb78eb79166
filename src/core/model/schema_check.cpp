#include "model/schema_check.h"

#include <type_traits>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "model/schema_items.h"

namespace model {

namespace {

typedef QHash<QString, qsizetype> key_table;

// What the problems of an entity depend on besides the entity itself: its index if it has no
// name (the labels name it by index), where its key is first defined, whether its parent and
// relation targets exist, and which enumeration each property names (it gives the type text).
QList<qintptr> entitySignature(const entity & e, qsizetype i, const key_table & entities, const key_table & enums, const list_of_enumeration & lstEnums)
{
   QList<qintptr> sig;
   sig.append(e.getName().isEmpty() ? i : -1);
   const qsizetype iFirst = entities.value(e.getKey(), i);
   sig.append((iFirst == i) ? -1 : iFirst);
   const QString sParent = e.getParentKey();
   sig.append(sParent.isEmpty() ? -1 : (entities.contains(sParent) ? 1 : 0));
   for (const property_ptr & p : e.getOwnProperties())
   {
      if (! p) { continue; }
      if (p->getRelation()) { sig.append(entities.contains(p->getRelation()->getTargetKey()) ? 1 : 0); }
      const QString sEnum = p->getEnumerationKey();
      if (sEnum.isEmpty()) { continue; }
      const qsizetype k = enums.value(sEnum, -1);
      sig.append((k < 0) ? 0 : reinterpret_cast<qintptr>(lstEnums.at(k).get()));
   }
   return sig;
}

QList<qintptr> enumerationSignature(const enumeration & e, qsizetype i, const key_table & entities, const key_table & enums)
{
   const bool bNamed = ! e.getName().isEmpty();
   const qsizetype iFirst = enums.value(e.getKey(), i);
   return QList<qintptr> { bNamed ? -1 : i, (iFirst == i) ? -1 : iFirst, bNamed ? entities.value(e.getKey(), -1) : -1 };
}

zy::ZyInvalidValueX invalidValues(const QList<model_text_rules::problem> & lst)
{
   zy::ZyInvalidValueX lstResult;
   for (const model_text_rules::problem & x : lst) { lstResult.append(zy::ZyInvalidValue(x.message(), x.sPath)); }
   return lstResult;
}

// A kept problem of an item that moved in its list: its path names the new index.
void movePaths(zy::ZyInvalidValueX & lst, const QString & sList, qsizetype iOld, qsizetype iNew)
{
   const QString sOld = QString("%1[%2]").arg(sList).arg(iOld);
   const QString sNew = QString("%1[%2]").arg(sList).arg(iNew);
   for (zy::ZyInvalidValue & x : lst)
   {
      const QString sPath = x.getPath();
      if (sPath.startsWith(sOld)) { x = zy::ZyInvalidValue(x.getMessage(), sNew + sPath.mid(sOld.size())); }
   }
}

} // namespace

void schema_check::clear()
{
   m_entities.clear();
   m_enumerations.clear();
}

template <typename Ptr, typename Check>
const schema_check::entry & schema_check::lookup(cache & next, const cache & previous, const Ptr & p, qsizetype i, const QList<qintptr> & signature, Check check)
{
   auto itr = previous.constFind(p.get());
   if ((itr != previous.constEnd()) && (itr->signature == signature))
   {
      entry & kept = (next[p.get()] = itr.value());
      if (kept.i != i)
      {
         const QString sList = (std::is_same<Ptr, entity_ptr>::value ? QStringLiteral("entities") : QStringLiteral("enumerations"));
         movePaths(kept.problems, sList, kept.i, i);
         movePaths(kept.texts, sList, kept.i, i);
         kept.i = i;
      }
      return kept;
   }
   ++m_iChecked;
   entry & fresh = next[p.get()];
   fresh.pItem = p;
   fresh.signature = signature;
   fresh.i = i;
   check(fresh);
   return fresh;
}

zy::ZyInvalidValueX schema_check::run(const project & p)
{
   using namespace schema_items;
   m_iChecked = 0;
   zy::ZyInvalidValueX lstResult;
   const list_of_entity & lstEntities = (* p.getListOfAllEntities());
   const list_of_enumeration & lstEnums = (* p.getListOfAllEnums());
   checkProjectName(lstResult, p.getName());

   const key_table hashEntities = firstIndexOfKeys(lstEntities);
   const key_table hashEnums = firstIndexOfKeys(lstEnums);
   cache nextEntities;
   nextEntities.reserve(lstEntities.size());
   zy::ZyInvalidValueX lstTexts = invalidValues(model_text_rules::projectTextProblems(p));
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      const entity_ptr & pEntity = lstEntities.at(i);
      if (! pEntity) { continue; }
      const entry & e = lookup(nextEntities, m_entities, pEntity, i, entitySignature(* pEntity, i, hashEntities, hashEnums, lstEnums), [&](entry & x) {
         checkEntity(x.problems, pEntity, i, hashEntities, hashEnums);
         x.texts = invalidValues(model_text_rules::entityProblems(* pEntity, i, true));
      });
      lstResult.append(e.problems);
      lstTexts.append(e.texts);
   }
   appendParentCycles(lstResult, lstEntities);

   cache nextEnums;
   for (qsizetype i = 0; i < lstEnums.size(); ++i)
   {
      const enumeration_ptr & pEnum = lstEnums.at(i);
      if (! pEnum) { continue; }
      const entry & e = lookup(nextEnums, m_enumerations, pEnum, i, enumerationSignature(* pEnum, i, hashEntities, hashEnums), [&](entry & x) {
         checkEnumeration(x.problems, pEnum, i, hashEntities, hashEnums);
         x.texts = invalidValues(model_text_rules::enumerationProblems(* pEnum, i, true));
      });
      lstResult.append(e.problems);
      lstTexts.append(e.texts);
   }

   lstResult.append(lstTexts);
   for (const QString & sCollision : model_integrity::fileCollisions(p, false)) { lstResult.append(zy::ZyInvalidValue(sCollision, "name")); }
   // The items of the previous run are dropped only now: no new item has the address of one.
   m_entities.swap(nextEntities);
   m_enumerations.swap(nextEnums);
   return lstResult;
}

} // namespace model
