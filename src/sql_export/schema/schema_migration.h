#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include "model/model_fwd.h"
#include "sql_export/schema/schema_model.h"

namespace sql_export {

struct migration_step
{
   QString sText;   // what it does, as listed at the top of the script
   QString sSql;    // its statements; empty for a change a later step carries out
   bool bDestructive = false;
};

struct migration_plan
{
   QList<migration_step> lstSteps;
   bool isEmpty() const { return lstSteps.isEmpty(); }
   QStringList destructiveSteps() const;
};

// One version of the model a migration goes from or to, as the script's top names it.
struct migration_end
{
   QString sProject;
   QString sFile;
};

// The renames a user gives for models without ids: old table name to new table name, and for
// each new table name old column name to new column name.
struct migration_renames
{
   QHash<QString, QString> hashTables;
   QHash<QString, QHash<QString, QString> > hashColumns;
};

// The changes that bring a database made for one version of a model to the next. Tables and
// columns are matched by their keys: their items' ids, so a renamed entity or property is
// renamed in place, or their names (keyByName).
class schema_migration
{
public:
   static migration_plan plan(const sql_schema & from, const sql_schema & to, const sql_dialect & dialect);
   static QString write(const migration_plan & plan, const sql_dialect & dialect, const migration_end & from, const migration_end & to);
   // Keys every table and column by its name (a renamed one by its new name) for models whose
   // ids were not given by the user: ids numbered in document order would match by position.
   // Returns why the renames cannot be followed (two old tables or columns given one name), or
   // an empty text.
   static QString keyByName(sql_schema & from, sql_schema & to, const migration_renames & renames);
   // False when both models hold items and none of their entity and property ids is in the other.
   static bool shareIds(const model::project & a, const model::project & b);
};

} // namespace sql_export
