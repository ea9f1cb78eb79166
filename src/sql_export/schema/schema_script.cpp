#include "sql_export/schema/schema_script.h"

#include <QSet>

namespace sql_export {

namespace {

QString foreignKeyClause(const sql_table & table, const sql_foreign_key & k, const sql_dialect & d)
{
   return "CONSTRAINT " + d.quote(d.objectName("fk", table.sName, k.sColumn)) + " FOREIGN KEY (" + d.quote(k.sColumn)
          + ") REFERENCES " + d.quote(k.sTargetTable) + " (" + d.quote(k.sTargetColumn) + ")";
}

QString columnLine(const sql_column & c, const sql_dialect & d)
{
   QString s = "   " + d.quote(c.sName) + ' ' + c.sType;
   if (c.bNotNull) { s += " NOT NULL"; }
   if (! c.sDefault.isEmpty()) { s += " DEFAULT " + c.sDefault; }
   if ((d.kind() == dialect_mariadb) && ! c.sComment.isEmpty()) { s += " COMMENT " + d.literal(c.sComment); }
   return s;
}

QString indexes(const sql_table & t, const sql_dialect & d)
{
   QString s;
   for (const sql_column & c : t.lstColumns)
   {
      if (c.bUnique)
      { s += "CREATE UNIQUE INDEX " + d.quote(d.objectName("ux", t.sName, c.sName)) + " ON " + d.quote(t.sName) + " (" + d.quote(c.sName) + ");\n"; }
      if (c.bIndex)
      { s += "CREATE INDEX " + d.quote(d.objectName("ix", t.sName, c.sName)) + " ON " + d.quote(t.sName) + " (" + d.quote(c.sName) + ");\n"; }
   }
   return s;
}

QString comments(const sql_table & t, const sql_dialect & d)
{
   if (d.kind() != dialect_postgresql) { return QString(); }
   QString s;
   if (! t.sComment.isEmpty()) { s += "COMMENT ON TABLE " + d.quote(t.sName) + " IS " + d.literal(t.sComment) + ";\n"; }
   for (const sql_column & c : t.lstColumns)
   {
      if (! c.sComment.isEmpty()) { s += "COMMENT ON COLUMN " + d.quote(t.sName) + '.' + d.quote(c.sName) + " IS " + d.literal(c.sComment) + ";\n"; }
   }
   return s;
}

} // namespace

QString schema_script::commentText(const QString & s)
{
   QString r = s;
   for (QChar & c : r) { if (c.unicode() < 0x20 || c == QChar(0x2028) || c == QChar(0x2029)) { c = ' '; } }
   return r;
}

QString schema_script::createTable(const sql_table & t, const sql_dialect & d, const QStringList & lstInline)
{
   QStringList lstLines;
   for (const sql_column & c : t.lstColumns) { lstLines.append(columnLine(c, d)); }
   if (! t.lstPrimaryKey.isEmpty())
   {
      QStringList lstKey;
      for (const QString & k : t.lstPrimaryKey) { lstKey.append(d.quote(k)); }
      lstLines.append("   PRIMARY KEY (" + lstKey.join(", ") + ")");
   }
   for (const sql_foreign_key & k : t.lstForeignKeys)
   {
      if (lstInline.contains(k.sTargetTable)) { lstLines.append("   " + foreignKeyClause(t, k, d)); }
   }
   QString s = "CREATE TABLE " + d.quote(t.sName) + " (\n" + lstLines.join(",\n") + "\n)";
   if ((d.kind() == dialect_mariadb) && ! t.sComment.isEmpty()) { s += " COMMENT=" + d.literal(t.sComment); }
   return s + ";\n" + indexes(t, d) + comments(t, d);
}

QList<int> schema_script::creationOrder(const sql_schema & schema)
{
   QList<int> lstOrder;
   QSet<QString> setCreated;
   QSet<QString> setAll;
   for (const sql_table & t : schema.lstTables) { setAll.insert(t.sName); }
   QList<bool> lstDone(schema.lstTables.size(), false);
   while (lstOrder.size() < schema.lstTables.size())
   {
      int iNext = -1;
      for (int i = 0; (i < schema.lstTables.size()) && (iNext < 0); ++i)
      {
         if (lstDone.at(i)) { continue; }
         bool bReady = true;
         for (const sql_foreign_key & k : schema.lstTables.at(i).lstForeignKeys)
         {
            if ((k.sTargetTable != schema.lstTables.at(i).sName) && setAll.contains(k.sTargetTable) && ! setCreated.contains(k.sTargetTable)) { bReady = false; }
         }
         if (bReady) { iNext = i; }
      }
      // Every table left waits for another: a cycle, broken at the first table by name.
      if (iNext < 0) { iNext = static_cast<int>(lstDone.indexOf(false)); }
      lstDone[iNext] = true;
      lstOrder.append(iNext);
      setCreated.insert(schema.lstTables.at(iNext).sName);
   }
   return lstOrder;
}

QString schema_script::write(const sql_schema & schema, const sql_dialect & d, const QString & sProjectName)
{
   QString s = "-- Schema of the model '" + commentText(sProjectName) + "' for " + d.name() + ", written by Tavrel\n";
   // MariaDB commits each CREATE on its own: a transaction would promise what it cannot keep.
   const bool bTransaction = (d.kind() != dialect_mariadb);
   s += (bTransaction ? QString("BEGIN;\n") : QString("-- MariaDB cannot run a schema change in one transaction\n"));
   QStringList lstCreated;
   QString sLater;
   for (int i : creationOrder(schema))
   {
      const sql_table & t = schema.lstTables.at(i);
      lstCreated.append(t.sName);
      // SQLite checks a key's target when rows are written, not when the table is made.
      QStringList lstInline = lstCreated;
      if (d.kind() == dialect_sqlite) { for (const sql_table & o : schema.lstTables) { lstInline.append(o.sName); } }
      s += '\n' + createTable(t, d, lstInline);
      for (const sql_foreign_key & k : t.lstForeignKeys)
      {
         if (! lstInline.contains(k.sTargetTable)) { sLater += "ALTER TABLE " + d.quote(t.sName) + " ADD " + foreignKeyClause(t, k, d) + ";\n"; }
      }
   }
   if (! sLater.isEmpty()) { s += '\n' + sLater; }
   if (bTransaction) { s += "\nCOMMIT;\n"; }
   return s;
}

} // namespace sql_export
