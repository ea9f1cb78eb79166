#pragma once

#include "model/persistable.h"

namespace model {

class TAVRELCORE_EXPORT entity : public persistable
{
   QString m_sName;
   QString m_sNamespace;
   long m_lVersion = 0;
   QString m_sDescription;
   QString m_sTableName;
   QString m_sParentKey;
   std::weak_ptr<entity> m_pParent;
   bool m_bAbstract = false;
   bool m_bReadOnly = false;
   QString m_sSoftDeleteColumn;
   QString m_sValidatorMethod;
   bool m_bTriggerBeforeFetch = false;
   bool m_bTriggerAfterFetch = false;
   bool m_bTriggerBeforeInsert = false;
   bool m_bTriggerAfterInsert = false;
   bool m_bTriggerBeforeUpdate = false;
   bool m_bTriggerAfterUpdate = false;
   bool m_bTriggerBeforeDelete = false;
   bool m_bTriggerAfterDelete = false;
   list_of_property m_lstProperty;

public:
   QString getName() const { return m_sName; }
   QString getNamespace() const { return m_sNamespace; }
   // Namespace + "::" + name, or the name alone.
   QString getKey() const;
   long getVersion() const { return m_lVersion; }
   QString getDescription() const { return m_sDescription; }
   QString getTableName() const { return m_sTableName; }
   QString getParentKey() const { return m_sParentKey; }
   entity_ptr getParent() const { return m_pParent.lock(); }
   bool isAbstract() const { return m_bAbstract; }
   bool isReadOnly() const { return m_bReadOnly; }
   QString getSoftDeleteColumn() const { return m_sSoftDeleteColumn; }
   QString getValidatorMethod() const { return m_sValidatorMethod; }

   bool hasTriggers() const;
   bool isTriggerBeforeFetch() const { return m_bTriggerBeforeFetch; }
   bool isTriggerAfterFetch() const { return m_bTriggerAfterFetch; }
   bool isTriggerBeforeInsert() const { return m_bTriggerBeforeInsert; }
   bool isTriggerAfterInsert() const { return m_bTriggerAfterInsert; }
   bool isTriggerBeforeUpdate() const { return m_bTriggerBeforeUpdate; }
   bool isTriggerAfterUpdate() const { return m_bTriggerAfterUpdate; }
   bool isTriggerBeforeDelete() const { return m_bTriggerBeforeDelete; }
   bool isTriggerAfterDelete() const { return m_bTriggerAfterDelete; }

   // Own properties in document order; withParents puts the ancestors' first (outermost first),
   // withRelations keeps relationship properties, withObsolete keeps obsolete ones.
   list_of_property getListOfProperty(bool bWithParents, bool bWithRelations, bool bWithObsolete) const;
   const list_of_property & getOwnProperties() const { return m_lstProperty; }
   // Relationships of the own properties, in property order.
   list_of_relationship getListOfRelation() const;
   // The own primary-key property; with true, the nearest ancestor's when there is none.
   property_ptr getPropertyId(bool bWithParents) const;
   property_ptr getPropertyByName(const QString & name) const;

   void setName(const QString & s) { m_sName = s; }
   void setNamespace(const QString & s) { m_sNamespace = s; }
   void setVersion(long l) { m_lVersion = l; }
   void setDescription(const QString & s) { m_sDescription = s; }
   void setTableName(const QString & s) { m_sTableName = s; }
   void setParentKey(const QString & s) { m_sParentKey = s; }
   void setParent(const entity_ptr & p) { m_pParent = p; }
   void setAbstract(bool b) { m_bAbstract = b; }
   void setReadOnly(bool b) { m_bReadOnly = b; }
   void setSoftDeleteColumn(const QString & s) { m_sSoftDeleteColumn = s; }
   void setValidatorMethod(const QString & s) { m_sValidatorMethod = s; }
   void setTriggerBeforeFetch(bool b) { m_bTriggerBeforeFetch = b; }
   void setTriggerAfterFetch(bool b) { m_bTriggerAfterFetch = b; }
   void setTriggerBeforeInsert(bool b) { m_bTriggerBeforeInsert = b; }
   void setTriggerAfterInsert(bool b) { m_bTriggerAfterInsert = b; }
   void setTriggerBeforeUpdate(bool b) { m_bTriggerBeforeUpdate = b; }
   void setTriggerAfterUpdate(bool b) { m_bTriggerAfterUpdate = b; }
   void setTriggerBeforeDelete(bool b) { m_bTriggerBeforeDelete = b; }
   void setTriggerAfterDelete(bool b) { m_bTriggerAfterDelete = b; }
   void addProperty(const property_ptr & p) { m_lstProperty.append(p); }
   void clearProperties() { m_lstProperty.clear(); }
};

} // namespace model
