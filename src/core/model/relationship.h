#pragma once

#include "model/persistable.h"

namespace model {

class TAVRELCORE_EXPORT relationship : public persistable
{
public:
   enum enum_relation { one_to_one = 0, one_to_many = 1, many_to_one = 2, many_to_many = 3 };

private:
   int m_iType = one_to_one;
   QString m_sTargetKey;
   std::weak_ptr<entity> m_pEntityTarget;
   std::weak_ptr<property> m_pProperty;
   QString m_sForeignKey;
   QString m_sForeignKeyOwner;
   QString m_sExtraTable;

public:
   int getType() const { return m_iType; }
   QString getTargetKey() const { return m_sTargetKey; }
   entity_ptr getEntityTarget() const { return m_pEntityTarget.lock(); }
   property_ptr getProperty() const { return m_pProperty.lock(); }
   QString getForeignKey() const { return m_sForeignKey; }
   QString getForeignKeyOwner() const { return m_sForeignKeyOwner; }
   QString getExtraTable() const { return m_sExtraTable; }
   // The relation's full C++ type (shared pointer, or keyed collection of shared pointers).
   QString getRelationTypeText() const;

   void setType(int i) { m_iType = i; }
   void setTargetKey(const QString & s) { m_sTargetKey = s; }
   void setEntityTarget(const entity_ptr & p) { m_pEntityTarget = p; }
   void setProperty(const property_ptr & p) { m_pProperty = p; }
   void setForeignKey(const QString & s) { m_sForeignKey = s; }
   void setForeignKeyOwner(const QString & s) { m_sForeignKeyOwner = s; }
   void setExtraTable(const QString & s) { m_sExtraTable = s; }
};

} // namespace model
