#pragma once

#include <QSet>
#include <QString>

#include "sql_export/schema/schema_model.h"

namespace sql_export {

// The text of a schema script: tables before the keys that point at them, keys of a cycle added
// at the end, the whole in one transaction where the database allows it.
class schema_script
{
public:
   static QString write(const sql_schema & schema, const sql_dialect & dialect, const QString & sProjectName);
   // CREATE TABLE with its indexes and comments; keys to tables outside setInline are left out,
   // unless bAllInline.
   static QString createTable(const sql_table & table, const sql_dialect & dialect, const QSet<QString> & setInline, bool bAllInline = false);
   // The tables in the order they are created: each after those it points at, cycles broken at
   // the first table by name.
   static QList<int> creationOrder(const sql_schema & schema);
   // A column as CREATE TABLE and ALTER TABLE ... ADD write it: name, type, NOT NULL, generator,
   // default, allowed values, and in MariaDB its comment.
   static QString columnDefinition(const sql_column & column, const sql_dialect & dialect);
   // The column's type: PostgreSQL's serial types, MariaDB's ENUM of the allowed values.
   static QString typeOf(const sql_column & column, const sql_dialect & dialect);
   // CREATE TYPE ... AS ENUM of PostgreSQL's enumeration types the tables use, but those named in
   // setExisting; empty in the other databases.
   static QString enumerationTypes(const QList<sql_table> & lstTables, const sql_dialect & dialect, const QSet<QString> & setExisting);
   static QSet<QString> enumerationTypeNames(const QList<sql_table> & lstTables, const sql_dialect & dialect);
   // An index of several columns or of a prefix (its length written for MariaDB only), and its name.
   static QString createIndex(const sql_table & table, const sql_index & index, const sql_dialect & dialect);
   static QString indexName(const sql_table & table, const sql_index & index, const sql_dialect & dialect);
   // " GENERATED ... AS IDENTITY" or " AUTO_INCREMENT"; empty in SQLite (see createTable).
   static QString generatorClause(const sql_column & column, const sql_dialect & dialect);
   // The name of the constraint of a foreign key of a table.
   static QString foreignKeyName(const sql_table & table, const sql_foreign_key & key, const sql_dialect & dialect);
   // "CONSTRAINT name FOREIGN KEY (column) REFERENCES target (key)".
   static QString foreignKeyClause(const sql_table & table, const sql_foreign_key & key, const sql_dialect & dialect);
   // Text that fits in a line comment.
   static QString commentText(const QString & s);
};

} // namespace sql_export
