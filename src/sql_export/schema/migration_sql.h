#pragma once

#include <QString>
#include <QStringList>

#include "sql_export/schema/schema_model.h"

namespace sql_export {

// The statements of single migration steps, written the way each database accepts them.
class migration_sql
{
public:
   // A value of the column's type that stands in for NULL when a column becomes NOT NULL.
   static QString fillValue(const sql_column & column, const sql_dialect & dialect);
   // True when a value of the old type may not survive in the new one (a shorter text, a smaller
   // number, another kind of value).
   static bool isNarrowing(const QString & sOldType, const QString & sNewType, const sql_dialect & dialect);

   static QString renameTable(const QString & sOld, const QString & sNew, const sql_dialect & dialect);
   static QString renameColumn(const QString & sTable, const QString & sOld, const QString & sNew, const sql_dialect & dialect);
   static QString dropColumn(const QString & sTable, const QString & sColumn, const sql_dialect & dialect);
   // ADD COLUMN; a NOT NULL column without default gets its fill value for the rows already there.
   // sPlace ends the column's definition (MariaDB: " FIRST" or " AFTER name").
   static QString addColumn(const QString & sTable, const sql_column & column, const sql_dialect & dialect, const QString & sPlace = QString());
   // The statement that gives the table its description (none in SQLite, which keeps none).
   static QString tableComment(const sql_table & table, const sql_dialect & dialect);
   // The statement that gives a column its description (MariaDB: the column defined again).
   static QString columnComment(const QString & sTable, const sql_column & column, const sql_dialect & dialect);
   // The statements that turn the old column into the new one, same name (PostgreSQL and MariaDB).
   static QString alterColumn(const QString & sTable, const sql_column & oldColumn, const sql_column & newColumn, const sql_dialect & dialect);
   // Drops the table's primary key (before its columns change; PostgreSQL: the key named
   // "TABLE_pkey"), or adds the new one (after).
   static QString changePrimaryKey(const sql_table & newTable, bool bDrop, const sql_dialect & dialect);
   // The rebuild SQLite documents for changes it cannot ALTER: a new table, the rows copied, the
   // old table dropped and the new one renamed; then its indexes (sIndexes) again.
   static QString rebuildTable(const sql_table & oldTable, const sql_table & newTable, const QString & sIndexes, const sql_dialect & dialect);
};

} // namespace sql_export
