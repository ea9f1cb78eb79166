#pragma once

#include <QStringList>

#include "tavrelcore_export.h"
#include "model/entity.h"

namespace model {

// One event an entity can ask to be told about. Every list of triggers (model file, project
// file, scripts, generated code) is read from this one table, in its order.
struct entity_trigger
{
   const char * key;       // "before_insert": model file, scripts, project column "trigger_" + key
   const char * cppName;   // "BeforeInsert": the event in generated code
   bool (entity::*isSet)() const;
   void (entity::*set)(bool);
};

TAVRELCORE_EXPORT const QList<entity_trigger> & entityTriggers();

// The keys of every trigger, or of those the entity has.
TAVRELCORE_EXPORT QStringList triggerKeys();
TAVRELCORE_EXPORT QStringList triggerKeys(const entity & e);

} // namespace model
