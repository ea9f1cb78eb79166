#include "model/project.h"

#include <thread>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "model/schema_items.h"

namespace model {

namespace {

template <typename List>
void rebuildIndex(const List & lst, project::lookup_index & idx)
{
   idx.byId.clear();
   idx.byKey.clear();
   idx.byId.reserve(lst.size());
   idx.byKey.reserve(lst.size());
   for (qsizetype i = 0; i < lst.size(); ++i)
   {
      const auto & p = lst.at(i);
      if (! p) { continue; }
      // The first item in document order wins.
      if (! idx.byId.contains(p->getId())) { idx.byId.insert(p->getId(), i); }
      const QString sKey = p->getKey();
      if (! idx.byKey.contains(sKey)) { idx.byKey.insert(sKey, i); }
   }
   idx.size = lst.size();
}

template <typename List, typename Value, typename Match>
typename List::value_type findIndexed(const List & lst, project::lookup_index & idx, const QHash<Value, qsizetype> & (* pHash)(const project::lookup_index &), const Value & value, Match isMatch)
{
   typedef typename List::value_type item_ptr;
   if (idx.size != lst.size()) { rebuildIndex(lst, idx); }

   const QHash<Value, qsizetype> & hash = pHash(idx);
   auto itr = hash.constFind(value);
   if (itr != hash.constEnd())
   {
      const qsizetype i = itr.value();
      if ((i < lst.size()) && lst.at(i) && isMatch(lst.at(i), value)) { return lst.at(i); }
   }

   // Not indexed, or the indexed item changed: the list itself decides.
   for (const item_ptr & p : lst)
   {
      if (p && isMatch(p, value)) { rebuildIndex(lst, idx); return p; }
   }
   if (itr != hash.constEnd()) { rebuildIndex(lst, idx); }
   return item_ptr();
}

const QHash<long, qsizetype> & hashById(const project::lookup_index & idx) { return idx.byId; }
const QHash<QString, qsizetype> & hashByKey(const project::lookup_index & idx) { return idx.byKey; }

template <typename Ptr> bool matchId(const Ptr & p, const long & id) { return (p->getId() == id); }
template <typename Ptr> bool matchKey(const Ptr & p, const QString & key) { return (p->getKey() == key); }

} // namespace

void project::invalidateIndex() const
{
   m_entityIndex = lookup_index();
   m_enumIndex = lookup_index();
}

entity_ptr project::getEntityById(long id) const
{
   return findIndexed(* m_pEntities, m_entityIndex, & hashById, id, & matchId<entity_ptr>);
}

enumeration_ptr project::getEnumerationById(long id) const
{
   return findIndexed(* m_pEnumerations, m_enumIndex, & hashById, id, & matchId<enumeration_ptr>);
}

entity_ptr project::getEntityByKey(const QString & key) const
{
   return findIndexed(* m_pEntities, m_entityIndex, & hashByKey, key, & matchKey<entity_ptr>);
}

enumeration_ptr project::getEnumerationByKey(const QString & key) const
{
   return findIndexed(* m_pEnumerations, m_enumIndex, & hashByKey, key, & matchKey<enumeration_ptr>);
}

void project::resolveLinks()
{
   invalidateIndex();
   const list_of_entity & lstEntities = (* m_pEntities);
   const list_of_enumeration & lstEnums = (* m_pEnumerations);

   // Built on the first parent or relation target: a large model without either needs no table.
   QHash<QString, entity_ptr> hashEntities;
   bool bEntitiesHashed = false;
   auto entityByKey = [&](const QString & sKey) -> entity_ptr
   {
      if (! bEntitiesHashed)
      {
         hashEntities.reserve(lstEntities.size());
         for (const entity_ptr & p : lstEntities) { if (p && ! hashEntities.contains(p->getKey())) { hashEntities.insert(p->getKey(), p); } }
         bEntitiesHashed = true;
      }
      return hashEntities.value(sKey);
   };
   QHash<QString, enumeration_ptr> hashEnums;
   for (const enumeration_ptr & p : lstEnums) { if (p && ! hashEnums.contains(p->getKey())) { hashEnums.insert(p->getKey(), p); } }

   for (const entity_ptr & pEntity : lstEntities)
   {
      if (! pEntity) { continue; }
      const QString sParentKey = pEntity->getParentKey();
      pEntity->setParent(sParentKey.isEmpty() ? entity_ptr() : entityByKey(sParentKey));

      for (const property_ptr & pProperty : pEntity->getOwnProperties())
      {
         if (! pProperty) { continue; }
         pProperty->setEntity(pEntity);

         relationship_ptr pRelation = pProperty->getRelation();
         if (pRelation)
         {
            pRelation->setProperty(pProperty);
            pRelation->setEntityTarget(entityByKey(pRelation->getTargetKey()));
         }

         const QString sEnumKey = pProperty->getEnumerationKey();
         property_type_ptr pType = pProperty->getType();
         if (sEnumKey.isEmpty())
         {
            if (pType) { pType->setEnumeration(enumeration_ptr()); pType->setFromEnumeration(false); }
            continue;
         }

         enumeration_ptr pEnum = hashEnums.value(sEnumKey);
         if (! pType && pEnum)
         {
            pType = std::make_shared<property_type>();
            pType->setId(pProperty->getId());
            pType->setFromEnumeration(true);
            pProperty->setType(pType);
         }
         if (! pType) { continue; }
         // A derived type text follows the enumeration; an explicit one is kept as written.
         if (pEnum && (pType->isFromEnumeration() || pType->getPrimitiveType().isEmpty()))
         {
            pType->setPrimitiveType(pEnum->getCppEnumType());
            pType->setFromEnumeration(true);
         }
         pType->setEnumeration(pEnum);
      }
   }
}

zy::ZyInvalidValueX project::checkSchema() const
{
   zy::ZyInvalidValueX lstResult;
   const list_of_entity & lstEntities = (* m_pEntities);
   const list_of_enumeration & lstEnums = (* m_pEnumerations);

   using namespace schema_items;
   // The texts the export writes as they are (accessor bodies, literals, comments, numbers) and
   // the generated file names are checked on a thread of their own while this one checks the
   // items: both only read the model, once the look-up tables are built here.
   zy::ZyInvalidValueX lstTexts;
   QStringList lstCollisions;
   auto checkTexts = [this, &lstTexts, &lstCollisions]
   {
      lstTexts = model_text_rules::checkProject(* this, true);
      lstCollisions = model_integrity::fileCollisions(* this, false);
   };
   std::thread texts;
   if ((lstEntities.size() + lstEnums.size()) >= 64)
   {
      invalidateIndex();
      getEntityById(0);
      getEnumerationById(0);
      texts = std::thread(checkTexts);
   }
   checkProjectName(lstResult, m_sName);
   {
      // Freed before the checks below build tables of their own: on large models the key
      // tables are a good part of the memory a check needs.
      const key_table hashEntities = firstIndexOfKeys(lstEntities);
      const key_table hashEnums = firstIndexOfKeys(lstEnums);
      for (qsizetype i = 0; i < lstEntities.size(); ++i)
      {
         if (lstEntities.at(i)) { checkEntity(lstResult, lstEntities.at(i), i, hashEntities, hashEnums); }
      }
      appendParentCycles(lstResult, lstEntities);
      appendSharedTables(lstResult, lstEntities);
      appendClassNameClashes(lstResult, lstEntities, lstEnums, hashEntities, hashEnums);
      for (qsizetype i = 0; i < lstEnums.size(); ++i)
      {
         if (lstEnums.at(i)) { checkEnumeration(lstResult, lstEnums.at(i), i, hashEntities, hashEnums); }
      }
   }

   if (texts.joinable()) { texts.join(); } else { checkTexts(); }
   lstResult.append(lstTexts);
   for (const QString & sCollision : std::as_const(lstCollisions)) { lstResult.append(zy::ZyInvalidValue(sCollision, "name")); }
   return lstResult;
}

QStringList project::checkWarnings(bool bWithPImpl) const
{
   QStringList lstResult;
   const list_of_entity & lstEntities = (* m_pEntities);

   if ((! lstEntities.isEmpty() || ! m_pEnumerations->isEmpty()) && (m_sName != m_sName.toUpper()))
   {
      const QString sUpper = m_sName.toUpper();
      lstResult.append(QString("Project '%1' : the generated CMakeLists.txt sets its file lists as %1_HEADERS and %1_SRCS "
                               "but reads them as %2_HEADERS and %2_SRCS (the upper-cased project name), so the CMake build "
                               "of the generated code finds no files; rename the project from '%1' to '%2' (the \"name\" of "
                               "the JSON model) to build with CMake")
                       .arg(m_sName, sUpper));
   }

   for (const entity_ptr & pEntity : lstEntities)
   {
      if (! pEntity) { continue; }
      const QString sKey = pEntity->getKey();
      const list_of_property & lstOwn = pEntity->getOwnProperties();
      for (const property_ptr & pProperty : lstOwn)
      {
         property_type_ptr pType = (pProperty ? pProperty->getType() : property_type_ptr());
         if (! pType || pProperty->hasRelationship()) { continue; }
         // std::optional takes its value's default as written; pointers and collections do not.
         const bool bWrapped = (((pType->getDecoration() != 0) && (pType->getDecoration() != property_type::decoration_optional)) || (pType->getCollection() != 0));
         if (bWrapped && ! pType->getDefaultValue().isEmpty())
         {
            lstResult.append(QString("Entity '%1' : property '%2' has a default value but a wrapped or collection type ('%3'); the "
                                     "generated constructors initialise the member with the default as written, which does not compile")
                             .arg(sKey, pProperty->getName(), pProperty->getTypeDesc(false, false)));
         }
         if ((pType->getDecoration() == 3) && (pType->getCollection() == 0) && pType->getPrimitiveType().trimmed().contains(QLatin1Char(' ')))
         {
            lstResult.append(QString("Entity '%1' : nullable property '%2' has the type '%3' of several words; the generated getter's "
                                     "fallback '%3(...)' does not compile (use a one-word type such as qlonglong or uint)")
                             .arg(sKey, pProperty->getName(), pType->getPrimitiveType()));
         }
      }
      if (bWithPImpl && pEntity->getListOfProperty(false, true, true).isEmpty())
      {
         lstResult.append(QString("Entity '%1' has no property of its own: with the PIMPL idiom on, its private implementation "
                                  "structure is declared but never defined, so the generated code does not compile").arg(sKey));
      }
      property_ptr pOwnId = pEntity->getPropertyId(false);
      property_ptr pId = (pOwnId ? pOwnId : pEntity->getPropertyId(true));
      if (! pId)
      {
         lstResult.append(QString("Entity '%1' has no primary key, neither its own nor inherited: the generated persistence "
                                  "code (keyed lists, fetch by id, relation loading) needs one").arg(pEntity->getKey()));
         continue;
      }
      if (pOwnId) { continue; }

      QStringList lstRelations;
      for (const property_ptr & pProperty : pEntity->getOwnProperties())
      {
         if (pProperty && pProperty->hasRelationship()) { lstRelations.append("'" + pProperty->getName() + "'"); }
      }
      if (lstRelations.isEmpty()) { continue; }
      entity_ptr pOwner = pId->getEntity();
      if (pId->getAccessibility() == property::access_private)
      {
         lstResult.append(QString("Entity '%1' : the generated relation code of %2 copies the primary key '%3', which is private "
                                  "in '%4'; the generated code does not compile (make the key protected or public)")
                          .arg(pEntity->getKey(), lstRelations.join(", "), pId->getName(), (pOwner ? pOwner->getKey() : QString("a base class"))));
      }
      if (! bWithPImpl) { continue; }
      lstResult.append(QString("Entity '%1' : with the PIMPL idiom on, the generated relation code of %2 uses the primary key '%3' "
                               "inherited from '%4', which is not a member of this class's private implementation; the "
                               "generated code does not compile with PIMPL (it does without)")
                       .arg(pEntity->getKey(), lstRelations.join(", "), pId->getName(), (pOwner ? pOwner->getKey() : QString("a base class"))));
   }

   return lstResult;
}

} // namespace model
