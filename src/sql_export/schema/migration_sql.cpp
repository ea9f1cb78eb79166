#include "sql_export/schema/migration_sql.h"

#include <QRegularExpression>

#include <algorithm>
#include <climits>

#include "sql_export/schema/schema_script.h"

namespace sql_export {

namespace {

struct type_class
{
   enum enum_family { family_text, family_number, family_other };
   enum_family eFamily = family_other;
   int iSize = 0;   // the length of a text, the rank of a number
};

type_class classify(const QString & sType, const sql_dialect & d)
{
   static const QRegularExpression s_reLength("\\((\\d+)\\)");
   const QString t = sType.trimmed().toLower();
   type_class c;
   if (t.startsWith("varchar") || t.startsWith("character varying") || t.startsWith("char"))
   {
      const QRegularExpressionMatch m = s_reLength.match(t);
      return { type_class::family_text, (m.hasMatch() ? m.captured(1).toInt() : INT_MAX) };
   }
   if (t.contains("text") || (t == "clob")) { return { type_class::family_text, INT_MAX }; }
   if (t.startsWith("bool")) { return { type_class::family_number, 0 }; }
   // SQLite keeps every integer in 64 bits.
   if (t == "bigint" || (t.contains("int") && (d.kind() == dialect_sqlite))) { return { type_class::family_number, 3 }; }
   if (t == "smallint" || t == "tinyint") { return { type_class::family_number, 1 }; }
   if (t.contains("int")) { return { type_class::family_number, 2 }; }
   if (t == "real" || t.startsWith("double") || t == "float") { return { type_class::family_number, 4 }; }
   return c;
}

} // namespace

QString migration_sql::fillValue(const sql_column & c, const sql_dialect & d)
{
   if (! c.sDefault.isEmpty()) { return c.sDefault; }
   const QString t = c.sType.toLower();
   if (t.contains("char") || t.contains("text")) { return "''"; }
   if (t.startsWith("bool")) { return ((d.kind() == dialect_postgresql) ? "false" : "0"); }
   if (t.contains("int") || t == "real" || t.startsWith("double") || t == "float" || t.startsWith("numeric") || t.startsWith("decimal")) { return "0"; }
   if (t.startsWith("timestamp") || t == "datetime") { return "'1970-01-01 00:00:00'"; }
   if (t == "date") { return "'1970-01-01'"; }
   if (t.startsWith("time")) { return "'00:00:00'"; }
   if (t == "uuid") { return "'00000000-0000-0000-0000-000000000000'"; }
   return ((d.kind() == dialect_sqlite) && (t == "blob")) ? "X''" : "''";
}

bool migration_sql::isNarrowing(const QString & sOldType, const QString & sNewType, const sql_dialect & d)
{
   if (sOldType.compare(sNewType, Qt::CaseInsensitive) == 0) { return false; }
   const type_class o = classify(sOldType, d);
   const type_class n = classify(sNewType, d);
   if (n.eFamily == type_class::family_text)
   {
      // Any value fits in a text long enough for its written form.
      if (o.eFamily == type_class::family_text) { return (n.iSize < o.iSize); }
      return (n.iSize < 64);
   }
   if ((n.eFamily == type_class::family_number) && (o.eFamily == type_class::family_number)) { return (n.iSize < o.iSize); }
   return true;
}

QString migration_sql::renameTable(const QString & sOld, const QString & sNew, const sql_dialect & d)
{
   if (d.kind() != dialect_postgresql) { return "ALTER TABLE " + d.table(sOld) + " RENAME TO " + d.table(sNew) + ";\n"; }
   // PostgreSQL renames within the schema: a move is its own statement, to the default schema
   // when the new name has none.
   QString s;
   const QString sOldSchema = d.schemaOf(sOld), sNewSchema = d.schemaOf(sNew);
   const QString sOldBare = d.bareTable(sOld), sNewBare = d.bareTable(sNew);
   if (sOldSchema != sNewSchema)
   {
      const QString sTo = (sNewSchema.isEmpty() ? QString("public") : sNewSchema);
      if (! sNewSchema.isEmpty()) { s += "CREATE SCHEMA IF NOT EXISTS " + d.quote(sNewSchema) + ";\n"; }
      s += "ALTER TABLE " + d.table(sOld) + " SET SCHEMA " + d.quote(sTo) + ";\n";
   }
   const QString sMoved = (sNewSchema.isEmpty() ? sOldBare : sNewSchema + '.' + sOldBare);
   if (sOldBare == sNewBare) { return s; }
   s += "ALTER TABLE " + d.table(sMoved) + " RENAME TO " + d.quote(sNewBare) + ";\n";
   // PostgreSQL names the primary key after the table it was made with: the name follows the
   // table, so that a later change of the key finds it.
   return s + "ALTER INDEX IF EXISTS " + d.indexName(sNew, sOldBare + "_pkey") + " RENAME TO " + d.quote(sNewBare + "_pkey") + ";\n";
}

QString migration_sql::renameColumn(const QString & sTable, const QString & sOld, const QString & sNew, const sql_dialect & d)
{
   return "ALTER TABLE " + d.table(sTable) + " RENAME COLUMN " + d.quote(sOld) + " TO " + d.quote(sNew) + ";\n";
}

QString migration_sql::dropColumn(const QString & sTable, const QString & sColumn, const sql_dialect & d)
{
   return "ALTER TABLE " + d.table(sTable) + " DROP COLUMN " + d.quote(sColumn) + ";\n";
}

QString migration_sql::tableComment(const sql_table & t, const sql_dialect & d)
{
   if (d.kind() == dialect_mariadb) { return "ALTER TABLE " + d.table(t.sName) + " COMMENT = " + d.literal(t.sComment) + ";\n"; }
   if (d.kind() != dialect_postgresql) { return QString(); }
   return "COMMENT ON TABLE " + d.table(t.sName) + " IS " + (t.sComment.isEmpty() ? QString("NULL") : d.literal(t.sComment)) + ";\n";
}

QString migration_sql::columnComment(const QString & sTable, const sql_column & c, const sql_dialect & d)
{
   if (d.kind() == dialect_mariadb) { return "ALTER TABLE " + d.table(sTable) + " MODIFY COLUMN " + schema_script::columnDefinition(c, d) + ";\n"; }
   if (d.kind() != dialect_postgresql) { return QString(); }
   return "COMMENT ON COLUMN " + d.table(sTable) + '.' + d.quote(c.sName) + " IS " + (c.sComment.isEmpty() ? QString("NULL") : d.literal(c.sComment)) + ";\n";
}

QString migration_sql::addColumn(const QString & sTable, const sql_column & c, const sql_dialect & d, const QString & sPlace)
{
   const QString sAlter = "ALTER TABLE " + d.table(sTable);
   sql_column added = c;
   const bool bFill = (c.bNotNull && c.sDefault.isEmpty());
   if (bFill) { added.sDefault = fillValue(c, d); }
   QString s = sAlter + " ADD COLUMN " + schema_script::columnDefinition(added, d) + sPlace + ";\n";
   // The rows already there got the fill value; new rows must give one, as the model says.
   if (bFill && (d.kind() != dialect_sqlite)) { s += sAlter + " ALTER COLUMN " + d.quote(c.sName) + " DROP DEFAULT;\n"; }
   if ((d.kind() == dialect_postgresql) && ! c.sComment.isEmpty()) { s += columnComment(sTable, c, d); }
   return s;
}

QString migration_sql::alterColumn(const QString & sTable, const sql_column & o, const sql_column & n, const sql_dialect & d)
{
   const QString sAlter = "ALTER TABLE " + d.table(sTable);
   const QString sColumn = d.quote(n.sName);
   QString s;
   // Rows without a value get one before the column refuses NULL.
   if (n.bNotNull && ! o.bNotNull) { s += "UPDATE " + d.table(sTable) + " SET " + sColumn + " = " + fillValue(n, d) + " WHERE " + sColumn + " IS NULL;\n"; }
   if (d.kind() == dialect_mariadb) { return s + sAlter + " MODIFY COLUMN " + schema_script::columnDefinition(n, d) + ";\n"; }
   const QString sAlterColumn = sAlter + " ALTER COLUMN " + sColumn;
   const bool bType = (o.sType != n.sType);
   // The old default may not convert to the new type: it goes first and comes back after.
   if (bType && ! o.sDefault.isEmpty()) { s += sAlterColumn + " DROP DEFAULT;\n"; }
   if (bType)
   {
      // PostgreSQL turns a boolean into integer only, and a number from there.
      const QString sFrom = (o.sType.startsWith("bool") ? sColumn + "::integer" : sColumn);
      s += sAlterColumn + " TYPE " + n.sType + " USING " + sFrom + "::" + n.sType + ";\n";
   }
   if ((bType || (o.sDefault != n.sDefault)) && ! n.sDefault.isEmpty()) { s += sAlterColumn + " SET DEFAULT " + n.sDefault + ";\n"; }
   else if (! bType && (o.sDefault != n.sDefault)) { s += sAlterColumn + " DROP DEFAULT;\n"; }
   if (n.bNotNull != o.bNotNull) { s += sAlterColumn + (n.bNotNull ? " SET NOT NULL;\n" : " DROP NOT NULL;\n"); }
   return s;
}

QString migration_sql::changePrimaryKey(const sql_table & t, bool bDrop, const sql_dialect & d)
{
   const QString sAlter = "ALTER TABLE " + d.table(t.sName);
   if (bDrop)
   { return sAlter + ((d.kind() == dialect_mariadb) ? QString(" DROP PRIMARY KEY;\n") : " DROP CONSTRAINT IF EXISTS " + d.quote(d.bareTable(t.sName) + "_pkey") + ";\n"); }
   QStringList lstKey;
   for (const QString & k : t.lstPrimaryKey) { lstKey.append(d.quote(k)); }
   return (lstKey.isEmpty() ? QString() : sAlter + " ADD PRIMARY KEY (" + lstKey.join(", ") + ");\n");
}

QString migration_sql::rebuildTable(const sql_table & o, const sql_table & n, const QString & sIndexes, const sql_dialect & d)
{
   const QString sTemporary = "tavrel_new_" + n.sName;
   sql_table bare = n;
   for (sql_column & c : bare.lstColumns) { c.bUnique = false; c.bIndex = false; }
   QString sCreate = schema_script::createTable(bare, d, {}, true);
   sCreate = "CREATE TABLE " + d.quote(sTemporary) + sCreate.mid(QString("CREATE TABLE " + d.table(n.sName)).size());
   QStringList lstTo, lstFrom;
   for (const sql_column & c : n.lstColumns)
   {
      const auto it = std::find_if(o.lstColumns.cbegin(), o.lstColumns.cend(), [&c](const sql_column & x) { return x.sKey == c.sKey; });
      const bool bOld = (it != o.lstColumns.cend());
      const bool bFill = c.bNotNull && (! bOld || ! it->bNotNull);
      // A new column without a value to give takes its default.
      if (! bOld && ! bFill) { continue; }
      lstTo.append(d.quote(c.sName));
      if (! bOld) { lstFrom.append(fillValue(c, d)); }
      else { lstFrom.append(bFill ? "COALESCE(" + d.quote(it->sName) + ", " + fillValue(c, d) + ")" : d.quote(it->sName)); }
   }
   QString s = sCreate;
   if (! lstTo.isEmpty())
   { s += "INSERT INTO " + d.quote(sTemporary) + " (" + lstTo.join(", ") + ") SELECT " + lstFrom.join(", ") + " FROM " + d.table(o.sName) + ";\n"; }
   s += "DROP TABLE " + d.table(o.sName) + ";\n";
   // A view that reads the table would stop the rename (its table is gone for a moment): the
   // legacy rename leaves views and triggers as written, reading the new table by its name.
   return s + "PRAGMA legacy_alter_table = ON;\n" + renameTable(sTemporary, n.sName, d) + "PRAGMA legacy_alter_table = OFF;\n" + sIndexes;
}

} // namespace sql_export
