#pragma once

#include <QString>

#include "model/model_fwd.h"
#include "tavrelcore_export.h"

namespace model {
namespace sql_meta {

// The table an entity is stored in: its table name, or its name.
TAVRELCORE_EXPORT QString tableOf(const entity & e);
// The column of its entity's table a property is stored in: its column name or its name; a
// relation's only when that table holds the key (many-to-one, one-to-one with a foreign key);
// none for a transient property.
TAVRELCORE_EXPORT QString columnOf(const property & p);

// A column renamed: what import-db kept of the entity's table (the columns of the indexes in
// TAVREL_SQL_INDEXES, of the foreign keys in TAVREL_SQL_FOREIGN_KEYS) follows it. True when
// anything changed; meta data that is no JSON array is left as it is.
TAVRELCORE_EXPORT bool renameColumn(entity & e, const QString & sOld, const QString & sNew);
// The same for the kept foreign keys of an entity that point at that column of table sTable.
TAVRELCORE_EXPORT bool renameTargetColumn(entity & e, const QString & sTable, const QString & sOld, const QString & sNew);
// A table renamed: the kept foreign keys of an entity that point at it follow.
TAVRELCORE_EXPORT bool renameTargetTable(entity & e, const QString & sOld, const QString & sNew);

} // namespace sql_meta
} // namespace model
