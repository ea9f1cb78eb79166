#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "model/model_fwd.h"
#include "sql_export/schema/sql_dialect.h"

namespace sql_export {

struct sql_column
{
   // What the column stands for across model versions: its property's id ("p12"), the role of
   // a join table's key, or the soft-delete column.
   QString sKey;
   QString sName;
   QString sType;
   bool bNotNull = false;
   bool bUnique = false;
   bool bIndex = false;
   QString sDefault;   // an SQL literal, or empty
   QString sComment;
   // How the database numbers new rows ("autoincrement", "identity", "identity always",
   // "serial"), empty when it does not.
   QString sGenerator;
   // The only values the column takes (an enumeration type of the database it was read from).
   QStringList lstValues;
   // The values a MariaDB SET column holds any combination of.
   QStringList lstSetValues;
};

struct sql_foreign_key
{
   QString sColumn;
   QString sTargetTable;
   QString sTargetColumn;
   // A key of several columns: the columns after the first, and the target's, in their order.
   QStringList lstMoreColumns;
   QStringList lstMoreTargets;
   // "CASCADE", "SET NULL", "SET DEFAULT" or "RESTRICT"; empty for the default NO ACTION.
   QString sOnDelete;
   QString sOnUpdate;

   QStringList columns() const { return QStringList { sColumn } + lstMoreColumns; }
   QStringList targets() const { return QStringList { sTargetColumn } + lstMoreTargets; }
};

// An index no column flag holds: of several columns, or of a column's first characters.
struct sql_index
{
   bool bUnique = false;
   QStringList lstColumns;
   QList<int> lstLengths;   // per column: the prefix length (MariaDB only), 0 for the whole column
};

struct sql_table
{
   // The entity's id ("e3") or, for a join table, the ids of the two entities it joins ("m2-3").
   QString sKey;
   QString sName;
   QString sComment;
   QList<sql_column> lstColumns;
   QStringList lstPrimaryKey;
   QList<sql_foreign_key> lstForeignKeys;
   QList<sql_index> lstIndexes;
};

struct sql_schema
{
   QList<sql_table> lstTables;   // by table name
   QStringList lstWarnings;      // "Entity.property: ..."
   QStringList lstViews;         // tables of entities that are views of the database, left out
};

struct schema_options
{
   bool bIncludeObsolete = false;
   // Descriptions as comments of tables and columns (a database read back has none).
   bool bComments = true;
};

// The tables that the generated classes read and write, one per entity that is not abstract
// plus the join table of every many-to-many relation.
class schema_builder
{
public:
   static sql_schema build(const model::project & project, const sql_dialect & dialect, const schema_options & options);
   // The table of one entity alone (the preview), or an empty table for an abstract one.
   static sql_table tableOf(const model::entity & entity, const sql_dialect & dialect, const schema_options & options, QStringList & lstWarnings);
   static QString tableName(const model::entity & entity);
   // The column of a property, or empty when it has none (transient, one-to-many, many-to-many).
   static QString columnName(const model::property & property);
};

} // namespace sql_export
