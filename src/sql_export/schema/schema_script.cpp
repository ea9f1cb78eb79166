#include "sql_export/schema/schema_script.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <queue>
#include <vector>

#include "model/sql_meta.h"

namespace sql_export {

namespace {

QString foreignKeyClause(const sql_table & table, const sql_foreign_key & k, const sql_dialect & d)
{
   return schema_script::foreignKeyClause(table, k, d);
}

QString columnLine(const sql_column & c, const sql_dialect & d)
{
   return "   " + schema_script::columnDefinition(c, d);
}

QString indexes(const sql_table & t, const sql_dialect & d)
{
   QString s;
   for (const sql_column & c : t.lstColumns)
   {
      if (c.bUnique)
      { s += "CREATE UNIQUE INDEX " + d.quote(d.objectName("ux", t.sName, c.sName)) + " ON " + d.table(t.sName) + " (" + d.quote(c.sName) + ");\n"; }
      if (c.bIndex)
      { s += "CREATE INDEX " + d.quote(d.objectName("ix", t.sName, c.sName)) + " ON " + d.table(t.sName) + " (" + d.quote(c.sName) + ");\n"; }
   }
   for (const sql_index & i : t.lstIndexes) { s += schema_script::createIndex(t, i, d); }
   return s;
}

QString comments(const sql_table & t, const sql_dialect & d)
{
   if (d.kind() != dialect_postgresql) { return QString(); }
   QString s;
   if (! t.sComment.isEmpty()) { s += "COMMENT ON TABLE " + d.table(t.sName) + " IS " + d.literal(t.sComment) + ";\n"; }
   for (const sql_column & c : t.lstColumns)
   {
      if (! c.sComment.isEmpty()) { s += "COMMENT ON COLUMN " + d.table(t.sName) + '.' + d.quote(c.sName) + " IS " + d.literal(c.sComment) + ";\n"; }
   }
   return s;
}

// A PostgreSQL column of an enumeration type read from PostgreSQL: the type, not a CHECK, holds
// its values.
bool enumerationType(const sql_column & c, const sql_dialect & d)
{
   if ((d.kind() != dialect_postgresql) || c.lstValues.isEmpty()) { return false; }
   const QString t = c.sType.toLower();
   return ! (t.startsWith("text") || t.startsWith("char") || t.startsWith("varchar") || t.startsWith("character"));
}

// PostgreSQL's serial types stand for the integer type and its sequence together.
QString serialType(const QString & sType)
{
   const QString t = sType.toLower();
   if ((t == "integer") || (t == "int") || (t == "int4")) { return QStringLiteral("serial"); }
   if ((t == "bigint") || (t == "int8")) { return QStringLiteral("bigserial"); }
   if ((t == "smallint") || (t == "int2")) { return QStringLiteral("smallserial"); }
   return QString();
}

} // namespace

QString schema_script::typeOf(const sql_column & c, const sql_dialect & d)
{
   if ((d.kind() == dialect_postgresql) && (c.sGenerator == "serial") && ! serialType(c.sType).isEmpty()) { return serialType(c.sType); }
   if ((d.kind() != dialect_mariadb) || (c.lstValues.isEmpty() && c.lstSetValues.isEmpty())) { return c.sType; }
   QStringList lst;
   for (const QString & v : (c.lstValues.isEmpty() ? c.lstSetValues : c.lstValues)) { lst.append(d.literal(v)); }
   return (c.lstValues.isEmpty() ? "SET(" : "ENUM(") + lst.join(", ") + ")";
}

QString schema_script::enumerationTypes(const QList<sql_table> & lstTables, const sql_dialect & d, const QSet<QString> & setExisting)
{
   QString s;
   QSet<QString> setDone = setExisting;
   for (const sql_table & t : lstTables)
   {
      for (const sql_column & c : t.lstColumns)
      {
         if (! enumerationType(c, d) || setDone.contains(c.sType)) { continue; }
         setDone.insert(c.sType);
         QStringList lst;
         for (const QString & v : c.lstValues) { lst.append(d.literal(v)); }
         s += "CREATE TYPE " + c.sType + " AS ENUM (" + lst.join(", ") + ");\n";
      }
   }
   return s;
}

QSet<QString> schema_script::enumerationTypeNames(const QList<sql_table> & lstTables, const sql_dialect & d)
{
   QSet<QString> set;
   for (const sql_table & t : lstTables) { for (const sql_column & c : t.lstColumns) { if (enumerationType(c, d)) { set.insert(c.sType); } } }
   return set;
}

QString schema_script::indexName(const sql_table & t, const sql_index & i, const sql_dialect & d)
{
   QString sColumns = i.lstColumns.join('_');
   // A prefix index beside the whole column's index of the same kind: the lengths tell them apart.
   for (const sql_column & c : t.lstColumns)
   {
      if ((i.lstColumns.size() != 1) || (c.sName != i.lstColumns.first()) || ! (i.bUnique ? c.bUnique : c.bIndex)) { continue; }
      for (int iLength : i.lstLengths) { sColumns += '_' + QString::number(iLength); }
   }
   return d.objectName(i.bUnique ? "ux" : "ix", t.sName, sColumns);
}

QString schema_script::createIndex(const sql_table & t, const sql_index & i, const sql_dialect & d)
{
   QStringList lst;
   for (qsizetype k = 0; k < i.lstColumns.size(); ++k)
   {
      const int iLength = i.lstLengths.value(k);
      lst.append(d.quote(i.lstColumns.at(k)) + (((d.kind() == dialect_mariadb) && (iLength > 0)) ? QString("(%1)").arg(iLength) : QString()));
   }
   return (i.bUnique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + d.quote(indexName(t, i, d)) + " ON " + d.table(t.sName) + " (" + lst.join(", ") + ");\n";
}

QString schema_script::generatorClause(const sql_column & c, const sql_dialect & d)
{
   if (c.sGenerator.isEmpty()) { return QString(); }
   switch (d.kind())
   {
      case dialect_mariadb: return QStringLiteral(" AUTO_INCREMENT");
      case dialect_postgresql:
         if ((c.sGenerator == "serial") && ! serialType(c.sType).isEmpty()) { return QString(); }
         return ((c.sGenerator == "identity always") ? QStringLiteral(" GENERATED ALWAYS AS IDENTITY") : QStringLiteral(" GENERATED BY DEFAULT AS IDENTITY"));
      // Written with the key itself (createTable): SQLite takes the word nowhere else.
      default: return QString();
   }
}

QString schema_script::columnDefinition(const sql_column & c, const sql_dialect & d)
{
   QString s = d.quote(c.sName) + ' ' + typeOf(c, d);
   if (c.bNotNull) { s += " NOT NULL"; }
   s += generatorClause(c, d);
   if (! c.sDefault.isEmpty()) { s += " DEFAULT " + c.sDefault; }
   if (! c.lstValues.isEmpty() && (d.kind() != dialect_mariadb) && ! enumerationType(c, d))
   {
      QStringList lst;
      for (const QString & v : c.lstValues) { lst.append(d.literal(v)); }
      s += " CHECK (" + d.quote(c.sName) + " IN (" + lst.join(", ") + "))";
   }
   if ((d.kind() == dialect_mariadb) && ! c.sComment.isEmpty()) { s += " COMMENT " + d.literal(c.sComment); }
   return s;
}

QString schema_script::foreignKeyName(const sql_table & table, const sql_foreign_key & k, const sql_dialect & d)
{
   return d.objectName("fk", table.sName, k.columns().join('_'));
}

QString schema_script::foreignKeyClause(const sql_table & table, const sql_foreign_key & k, const sql_dialect & d)
{
   QStringList lstColumns, lstTargets;
   for (const QString & s : k.columns()) { lstColumns.append(d.quote(s)); }
   for (const QString & s : k.targets()) { lstTargets.append(d.quote(s)); }
   QString s = "CONSTRAINT " + d.quote(foreignKeyName(table, k, d)) + " FOREIGN KEY (" + lstColumns.join(", ")
               + ") REFERENCES " + d.table(k.sTargetTable) + " (" + lstTargets.join(", ") + ")";
   // Through the check again: only the SQL words are ever written.
   const QString sOnDelete = model::sql_meta::foreignKeyAction(k.sOnDelete);
   const QString sOnUpdate = model::sql_meta::foreignKeyAction(k.sOnUpdate);
   if (! sOnDelete.isEmpty()) { s += " ON DELETE " + sOnDelete; }
   if (! sOnUpdate.isEmpty()) { s += " ON UPDATE " + sOnUpdate; }
   return s;
}

QString schema_script::commentText(const QString & s)
{
   QString r = s;
   for (QChar & c : r) { if (c.unicode() < 0x20 || c == QChar(0x2028) || c == QChar(0x2029)) { c = ' '; } }
   return r;
}

QString schema_script::createTable(const sql_table & t, const sql_dialect & d, const QSet<QString> & setInline, bool bAllInline)
{
   QStringList lstLines;
   // SQLite numbers rows of an INTEGER PRIMARY KEY AUTOINCREMENT, declared on the column itself.
   const bool bInlineKey = ((d.kind() == dialect_sqlite) && (t.lstPrimaryKey.size() == 1));
   bool bKeyWritten = false;
   for (const sql_column & c : t.lstColumns)
   {
      lstLines.append(columnLine(c, d));
      if (bInlineKey && ! c.sGenerator.isEmpty() && (c.sName == t.lstPrimaryKey.first())) { lstLines.last() += " PRIMARY KEY AUTOINCREMENT"; bKeyWritten = true; }
   }
   if (! t.lstPrimaryKey.isEmpty() && ! bKeyWritten)
   {
      QStringList lstKey;
      for (const QString & k : t.lstPrimaryKey) { lstKey.append(d.quote(k)); }
      lstLines.append("   PRIMARY KEY (" + lstKey.join(", ") + ")");
   }
   for (const sql_foreign_key & k : t.lstForeignKeys)
   {
      if (bAllInline || setInline.contains(k.sTargetTable)) { lstLines.append("   " + foreignKeyClause(t, k, d)); }
   }
   // PostgreSQL makes no schema on its own; MariaDB's schema is a database, left to the user.
   const QString sSchema = ((d.kind() == dialect_postgresql) ? d.schemaOf(t.sName) : QString());
   QString s = (sSchema.isEmpty() ? QString() : "CREATE SCHEMA IF NOT EXISTS " + d.quote(sSchema) + ";\n");
   s += "CREATE TABLE " + d.table(t.sName) + " (\n" + lstLines.join(",\n") + "\n)";
   if ((d.kind() == dialect_mariadb) && ! t.sComment.isEmpty()) { s += " COMMENT=" + d.literal(t.sComment); }
   return s + ";\n" + indexes(t, d) + comments(t, d);
}

QList<int> schema_script::creationOrder(const sql_schema & schema)
{
   const qsizetype n = schema.lstTables.size();
   QHash<QString, int> hashIndex;
   for (int i = 0; i < n; ++i) { hashIndex.insert(schema.lstTables.at(i).sName, i); }
   // How many other tables each one waits for, and who waits for it.
   std::vector<int> lstWaiting(n, 0);
   std::vector<std::vector<int> > lstWaiters(n);
   for (int i = 0; i < n; ++i)
   {
      QSet<int> setTargets;
      for (const sql_foreign_key & k : schema.lstTables.at(i).lstForeignKeys)
      {
         const int iTarget = hashIndex.value(k.sTargetTable, -1);
         if ((iTarget >= 0) && (iTarget != i) && ! setTargets.contains(iTarget)) { setTargets.insert(iTarget); lstWaiters[iTarget].push_back(i); }
      }
      lstWaiting[i] = int(setTargets.size());
   }
   // The ready table first by name; when none is ready, a cycle is broken at the first left.
   std::priority_queue<int, std::vector<int>, std::greater<int> > ready;
   for (int i = 0; i < n; ++i) { if (lstWaiting[i] == 0) { ready.push(i); } }
   std::vector<bool> lstDone(n, false);
   QList<int> lstOrder;
   int iFirstLeft = 0;
   while (lstOrder.size() < n)
   {
      int iNext = -1;
      while (! ready.empty() && (iNext < 0)) { iNext = ready.top(); ready.pop(); if (lstDone[iNext]) { iNext = -1; } }
      if (iNext < 0) { while (lstDone[iFirstLeft]) { ++iFirstLeft; } iNext = iFirstLeft; }
      lstDone[iNext] = true;
      lstOrder.append(iNext);
      for (int w : lstWaiters[iNext]) { if (! lstDone[w] && (--lstWaiting[w] == 0)) { ready.push(w); } }
   }
   return lstOrder;
}

QString schema_script::write(const sql_schema & schema, const sql_dialect & d, const QString & sProjectName)
{
   QString s = "-- Schema of the model '" + commentText(sProjectName) + "' for " + d.name() + ", written by Tavrel\n";
   // MariaDB commits each CREATE on its own: a transaction would promise what it cannot keep.
   const bool bTransaction = (d.kind() != dialect_mariadb);
   s += (bTransaction ? QString("BEGIN;\n") : QString("-- MariaDB cannot run a schema change in one transaction\n"));
   for (const QString & sView : schema.lstViews) { s += "-- " + commentText(sView) + " is a view of the database: no table is made for it\n"; }
   const QString sTypes = enumerationTypes(schema.lstTables, d, {});
   if (! sTypes.isEmpty()) { s += '\n' + sTypes; }
   QSet<QString> setCreated;
   QString sLater;
   // SQLite checks a key's target when rows are written, not when the table is made.
   const bool bAllInline = (d.kind() == dialect_sqlite);
   for (int i : creationOrder(schema))
   {
      const sql_table & t = schema.lstTables.at(i);
      setCreated.insert(t.sName);
      s += '\n' + createTable(t, d, setCreated, bAllInline);
      for (const sql_foreign_key & k : t.lstForeignKeys)
      {
         if (! bAllInline && ! setCreated.contains(k.sTargetTable)) { sLater += "ALTER TABLE " + d.table(t.sName) + " ADD " + foreignKeyClause(t, k, d) + ";\n"; }
      }
   }
   if (! sLater.isEmpty()) { s += '\n' + sLater; }
   if (bTransaction) { s += "\nCOMMIT;\n"; }
   return s;
}

} // namespace sql_export
