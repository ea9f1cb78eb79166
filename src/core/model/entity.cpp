#include "model/entity.h"
#include "model/entity_trigger.h"

#include <QStringBuilder>
#include <QVarLengthArray>

#include "model/property.h"
#include "model/relationship.h"

namespace model {

namespace {

// Ancestors, nearest first. Stops at the first entity seen twice so that an inheritance cycle
// (reported by project::checkSchema) cannot hang the generators.
typedef QVarLengthArray<entity_ptr, 8> ancestor_list;

void collectAncestors(const entity * pSelf, ancestor_list & lst)
{
   entity_ptr pParent = pSelf->getParent();
   while (pParent)
   {
      if (pParent.get() == pSelf) { break; }
      bool bSeen = false;
      for (const entity_ptr & p : lst) { if (p == pParent) { bSeen = true; break; } }
      if (bSeen) { break; }
      lst.append(pParent);
      pParent = pParent->getParent();
   }
}

void appendFiltered(const list_of_property & lstSource, bool bWithRelations, bool bWithObsolete, list_of_property & lstResult)
{
   for (const property_ptr & p : lstSource)
   {
      if (! p) { continue; }
      if (! bWithRelations && p->hasRelationship()) { continue; }
      if (! bWithObsolete && p->isObsolete()) { continue; }
      lstResult.append(p);
   }
}

property_ptr ownPrimaryKey(const list_of_property & lst)
{
   for (const property_ptr & p : lst) { if (p && p->isPrimaryKey()) { return p; } }
   return property_ptr();
}

} // namespace

QString entity::getKey() const
{
   // One allocation: keys are asked for many times per generated file.
   return (m_sNamespace.isEmpty() ? m_sName : QString(m_sNamespace % QLatin1String("::") % m_sName));
}

bool entity::hasTriggers() const
{
   for (const entity_trigger & t : entityTriggers()) { if ((this->*t.isSet)()) { return true; } }
   return false;
}

list_of_property entity::getListOfProperty(bool bWithParents, bool bWithRelations, bool bWithObsolete) const
{
   list_of_property lstResult;
   ancestor_list lstAncestors;
   if (bWithParents) { collectAncestors(this, lstAncestors); }
   // Own properties only and none filtered out: the list itself is shared, not copied (the
   // generators ask for it many times per file).
   if (lstAncestors.isEmpty())
   {
      bool bAllKept = true;
      for (const property_ptr & p : m_lstProperty)
      {
         if (! p || (! bWithRelations && p->hasRelationship()) || (! bWithObsolete && p->isObsolete())) { bAllKept = false; break; }
      }
      if (bAllKept) { return m_lstProperty; }
   }
   for (qsizetype i = lstAncestors.size() - 1; i >= 0; --i)
   { appendFiltered(lstAncestors.at(i)->getOwnProperties(), bWithRelations, bWithObsolete, lstResult); }
   appendFiltered(m_lstProperty, bWithRelations, bWithObsolete, lstResult);
   return lstResult;
}

list_of_relationship entity::getListOfRelation() const
{
   list_of_relationship lstResult;
   for (const property_ptr & p : m_lstProperty)
   {
      if (p && p->hasRelationship()) { lstResult.append(p->getRelation()); }
   }
   return lstResult;
}

property_ptr entity::getPropertyId(bool bWithParents) const
{
   property_ptr pId = ownPrimaryKey(m_lstProperty);
   if (pId || ! bWithParents) { return pId; }

   ancestor_list lstAncestors;
   collectAncestors(this, lstAncestors);
   for (const entity_ptr & pAncestor : lstAncestors)
   {
      pId = ownPrimaryKey(pAncestor->getOwnProperties());
      if (pId) { return pId; }
   }
   return property_ptr();
}

property_ptr entity::getPropertyByName(const QString & name) const
{
   for (const property_ptr & p : m_lstProperty) { if (p && (p->getName() == name)) { return p; } }
   return property_ptr();
}

} // namespace model
