#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

#include "sql_export/schema/sql_dialect.h"

namespace sql_test {

// A database the series is applied to: runs a script, reads the first column of a query's rows.
struct migration_target
{
   std::function<bool(const QString & sScript, QString & sError)> run;
   std::function<QStringList(const QString & sQuery)> values;
   QString sUrl;   // for the import
};

// The versions of the migration series, oldest first: add an entity, rename a property, change
// types, add a many-to-many relation, drop a column.
QList<QByteArray> migrationSeries();
// Creates the first version with rows, then migrates version by version; after each step the
// database read back gives the new version's script and the rows are still there. Fails the
// calling test on the way.
void runMigrationSeries(sql_export::enum_dialect eDialect, const migration_target & target);
// The benchmark's generated model migrated to its edited version (renamed columns, other types,
// nullability, indexes) reads back like the edited version made from nothing (two empty
// databases: migrated and fresh).
void runGeneratedMigration(sql_export::enum_dialect eDialect, const migration_target & migrated, const migration_target & fresh);

} // namespace sql_test
