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

// What a table of the database holds besides what the model knows: an index or a trigger (its
// SQL, made again after a rebuild), or a CHECK constraint or AUTOINCREMENT (sSql empty: lost).
struct catalog_object
{
   QString sTable;
   QString sKind;      // "index", "trigger", "CHECK constraint", "AUTOINCREMENT"
   QString sName;
   QString sSql;
   QStringList lstColumns;   // an index's columns
};

struct migration_plan
{
   QList<migration_step> lstSteps;
   // SQLite tables rebuilt: old name to new name.
   QList<QPair<QString, QString> > lstRebuilt;
   bool bCatalogRead = false;   // the objects above were looked up in the database
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
   // The objects of rebuilt tables that the model does not know, as the database's catalog
   // lists them: indexes whose columns stay and triggers are made again after the rebuilds,
   // the rest become destructive steps naming what is lost.
   static void keepCatalogObjects(migration_plan & plan, const sql_schema & to, const QList<catalog_object> & lstObjects);
   // Keys every table and column by its name (a renamed one by its new name) for models whose
   // ids were not given by the user: ids numbered in document order would match by position.
   // Returns why the renames cannot be followed (two old tables or columns given one name), or
   // an empty text.
   static QString keyByName(sql_schema & from, sql_schema & to, const migration_renames & renames);
   // False when both models hold items and none of their entity and property ids is in the other.
   static bool shareIds(const model::project & a, const model::project & b);
};

} // namespace sql_export
