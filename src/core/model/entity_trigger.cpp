#include "model/entity_trigger.h"

namespace model {

const QList<entity_trigger> & entityTriggers()
{
   static const QList<entity_trigger> lst = {
      { "before_fetch", "BeforeFetch", & entity::isTriggerBeforeFetch, & entity::setTriggerBeforeFetch },
      { "after_fetch", "AfterFetch", & entity::isTriggerAfterFetch, & entity::setTriggerAfterFetch },
      { "before_insert", "BeforeInsert", & entity::isTriggerBeforeInsert, & entity::setTriggerBeforeInsert },
      { "after_insert", "AfterInsert", & entity::isTriggerAfterInsert, & entity::setTriggerAfterInsert },
      { "before_update", "BeforeUpdate", & entity::isTriggerBeforeUpdate, & entity::setTriggerBeforeUpdate },
      { "after_update", "AfterUpdate", & entity::isTriggerAfterUpdate, & entity::setTriggerAfterUpdate },
      { "before_delete", "BeforeDelete", & entity::isTriggerBeforeDelete, & entity::setTriggerBeforeDelete },
      { "after_delete", "AfterDelete", & entity::isTriggerAfterDelete, & entity::setTriggerAfterDelete },
   };
   return lst;
}

QStringList triggerKeys()
{
   QStringList lst;
   for (const entity_trigger & t : entityTriggers()) { lst.append(QString::fromLatin1(t.key)); }
   return lst;
}

QStringList triggerKeys(const entity & e)
{
   QStringList lst;
   for (const entity_trigger & t : entityTriggers()) { if ((e.*t.isSet)()) { lst.append(QString::fromLatin1(t.key)); } }
   return lst;
}

} // namespace model
