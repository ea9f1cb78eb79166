#include "model/schema_check.h"

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

using schema_items::key_table;

// What an item says itself: read once, while the item lives.
void readFacts(const entity & e, QString & sKey, bool & bNamed, QString & sParent, QStringList & lstTargets, QStringList & lstEnums)
{
   sKey = e.getKey();
   bNamed = ! e.getName().isEmpty();
   sParent = e.getParentKey();
   for (const property_ptr & p : e.getOwnProperties())
   {
      if (! p) { continue; }
      if (p->getRelation()) { lstTargets.append(p->getRelation()->getTargetKey()); }
      if (! p->getEnumerationKey().isEmpty()) { lstEnums.append(p->getEnumerationKey()); }
   }
}

void readFacts(const enumeration & e, QString & sKey, bool & bNamed, QString &, QStringList &, QStringList &)
{
   sKey = e.getKey();
   bNamed = ! e.getName().isEmpty();
}

// First index of each key, in document order; the entries outlive the table.
template <typename Entry>
key_table firstIndexes(const QList<Entry> & lst)
{
   return key_table(lst.size(), [&lst](qsizetype i) -> std::optional<QString> {
      if (! lst.at(i).pItem) { return std::nullopt; }
      return lst.at(i).sKey;
   });
}

// What the problems of an entity depend on besides the entity itself: its index if it has no
// name (labels name it by index), where its key is first defined, whether its parent and
// relation targets exist, and which enumeration each property names (it gives the type text).
template <typename Entry>
QList<qintptr> entitySignature(const Entry & e, qsizetype i, const key_table & entities, const key_table & enums, const list_of_enumeration & lstEnums)
{
   QList<qintptr> sig;
   sig.reserve(3 + e.lstTargets.size() + e.lstEnums.size());
   sig.append(e.bNamed ? -1 : i);
   const qsizetype iFirst = entities.value(e.sKey, i);
   sig.append((iFirst == i) ? -1 : iFirst);
   sig.append(e.sParent.isEmpty() ? -1 : (entities.contains(e.sParent) ? 1 : 0));
   for (const QString & sTarget : e.lstTargets) { sig.append(entities.contains(sTarget) ? 1 : 0); }
   for (const QString & sEnum : e.lstEnums)
   {
      const qsizetype k = enums.value(sEnum, -1);
      sig.append((k < 0) ? 0 : reinterpret_cast<qintptr>(lstEnums.at(k).get()));
   }
   return sig;
}

template <typename Entry>
QList<qintptr> enumerationSignature(const Entry & e, qsizetype i, const key_table & entities, const key_table & enums)
{
   const qsizetype iFirst = enums.value(e.sKey, i);
   return QList<qintptr> { e.bNamed ? -1 : i, (iFirst == i) ? -1 : iFirst, e.bNamed ? entities.value(e.sKey, -1) : -1 };
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

template <typename List>
QList<schema_check::entry> schema_check::entriesOf(const List & lst, const cache & previous) const
{
   QList<entry> lstEntries(lst.size());
   for (qsizetype i = 0; i < lst.size(); ++i)
   {
      if (! lst.at(i)) { continue; }
      auto itr = previous.constFind(lst.at(i).get());
      entry & e = lstEntries[i];
      if (itr != previous.constEnd()) { e = itr.value(); continue; }
      e.pItem = lst.at(i);
      readFacts(* lst.at(i), e.sKey, e.bNamed, e.sParent, e.lstTargets, e.lstEnums);
   }
   return lstEntries;
}

template <typename Check>
void schema_check::update(entry & e, qsizetype i, const QList<qintptr> & signature, const QString & sList, Check check)
{
   if (e.bChecked && (e.signature == signature))
   {
      if (e.i == i) { return; }
      movePaths(e.problems, sList, e.i, i);
      movePaths(e.texts, sList, e.i, i);
      e.i = i;
      return;
   }
   ++m_iChecked;
   e.bChecked = true;
   e.signature = signature;
   e.i = i;
   e.problems.clear();
   check(e);
}

schema_check::cache schema_check::cacheOf(const QList<entry> & lst)
{
   cache hash;
   hash.reserve(lst.size());
   for (const entry & e : lst) { if (e.pItem) { hash.insert(e.pItem.get(), e); } }
   return hash;
}

zy::ZyInvalidValueX schema_check::run(const project & p)
{
   using namespace schema_items;
   m_iChecked = 0;
   zy::ZyInvalidValueX lstResult;
   const list_of_entity & lstEntities = (* p.getListOfAllEntities());
   const list_of_enumeration & lstEnums = (* p.getListOfAllEnums());
   checkProjectName(lstResult, p.getName());

   QList<entry> lstEntityEntries = entriesOf(lstEntities, m_entities);
   QList<entry> lstEnumEntries = entriesOf(lstEnums, m_enumerations);
   const key_table hashEntities = firstIndexes(lstEntityEntries);
   const key_table hashEnums = firstIndexes(lstEnumEntries);
   zy::ZyInvalidValueX lstTexts = invalidValues(model_text_rules::projectTextProblems(p));
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      entry & e = lstEntityEntries[i];
      if (! e.pItem) { continue; }
      update(e, i, entitySignature(e, i, hashEntities, hashEnums, lstEnums), QStringLiteral("entities"), [&](entry & x) {
         checkEntity(x.problems, lstEntities.at(i), i, hashEntities, hashEnums);
         x.texts = invalidValues(model_text_rules::entityProblems(* lstEntities.at(i), i, true));
      });
      lstResult.append(e.problems);
      lstTexts.append(e.texts);
   }
   appendParentCycles(lstResult, lstEntities);
   appendSharedTables(lstResult, lstEntities);
   appendClassNameClashes(lstResult, lstEntities, lstEnums, hashEntities, hashEnums);

   for (qsizetype i = 0; i < lstEnums.size(); ++i)
   {
      entry & e = lstEnumEntries[i];
      if (! e.pItem) { continue; }
      update(e, i, enumerationSignature(e, i, hashEntities, hashEnums), QStringLiteral("enumerations"), [&](entry & x) {
         checkEnumeration(x.problems, lstEnums.at(i), i, hashEntities, hashEnums);
         x.texts = invalidValues(model_text_rules::enumerationProblems(* lstEnums.at(i), i, true));
      });
      lstResult.append(e.problems);
      lstTexts.append(e.texts);
   }

   lstResult.append(lstTexts);
   for (const QString & sCollision : model_integrity::fileCollisions(p, false)) { lstResult.append(zy::ZyInvalidValue(sCollision, "name")); }
   // The items of the previous run are dropped only now: no new item has the address of one.
   m_entities = cacheOf(lstEntityEntries);
   m_enumerations = cacheOf(lstEnumEntries);
   return lstResult;
}

} // namespace model
