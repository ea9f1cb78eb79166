#include "model/relationship.h"

#include <QStringBuilder>

#include "model/entity.h"
#include "model/property.h"
#include "model/property_type.h"

namespace model {

QString relationship::getRelationTypeText() const
{
   entity_ptr pTarget = getEntityTarget();
   const QString sTargetKey = (pTarget ? pTarget->getKey() : m_sTargetKey);
   const QString sPointer = QLatin1String("std::shared_ptr<") % sTargetKey % QLatin1Char('>');
   if ((m_iType != one_to_many) && (m_iType != many_to_many)) { return sPointer; }

   // The target's key type is read from its property type directly (not through getTypeDesc):
   // a key that is itself a relation must not send two entities into endless recursion.
   QString sIdType;
   property_ptr pId = (pTarget ? pTarget->getPropertyId(true) : property_ptr());
   property_type_ptr pIdType = (pId ? pId->getType() : property_type_ptr());
   if (pIdType) { sIdType = pIdType->getTypeText(); }
   if (sIdType.isEmpty()) { sIdType = "long"; }
   return (QLatin1String("zy::ZyCollection<") % sIdType % QLatin1String(", ") % sPointer % QLatin1String(" >"));
}

} // namespace model
