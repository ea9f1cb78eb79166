#include "db_import/catalog_reader.h"

#include <QRegularExpression>
#include <QVariant>

#include "model/sql_meta.h"

namespace db_import {

namespace {

// InnoDB checks a key at once whether it says RESTRICT or NO ACTION, and its catalog says
// RESTRICT for a key declared without an action: both are the default.
QString actionOf(const QString & sRule)
{
   const QString s = model::sql_meta::foreignKeyAction(sRule);
   return ((s == QLatin1String("RESTRICT")) ? QString() : s);
}

// MariaDB reports a text default with its own escapes ('a\\b', 'it\'s'); the mapping reads the
// standard form, where only a doubled quote is escaped.
QString standardLiteral(const QString & s)
{
   if ((s.size() < 2) || ! s.startsWith('\'') || ! s.endsWith('\'')) { return s; }
   QString r;
   for (qsizetype i = 1; i < s.size() - 1; ++i)
   {
      QChar c = s.at(i);
      const bool bEscaped = ((c == '\\') && (i + 2 < s.size()));
      if (bEscaped)
      {
         c = s.at(++i);
         if (c == 'n') { c = '\n'; } else if (c == 't') { c = '\t'; } else if (c == 'r') { c = '\r'; } else if (c == '0') { c = QChar(0); }
      }
      // A quote doubled in the report stays one doubled quote.
      else if ((c == '\'') && (i + 2 < s.size()) && (s.at(i + 1) == '\'')) { ++i; }
      r += ((c == '\'') ? QString("''") : QString(c));
   }
   return '\'' + r + '\'';
}

// "enum('a','b')" (or "set(...)" with sKind "set"): the quoted values, quotes undoubled (the
// catalog doubles them).
QStringList enumValues(const QString & sDeclared, const QString & sKind = QStringLiteral("enum"))
{
   static const QRegularExpression reValue("'((?:[^']|'')*)'");
   QStringList lst;
   if (! sDeclared.startsWith(sKind + "(", Qt::CaseInsensitive)) { return lst; }
   for (auto it = reValue.globalMatch(sDeclared, sKind.size() + 1); it.hasNext(); ) { lst.append(it.next().captured(1).replace("''", "'")); }
   return lst;
}

const char * const k_sColumns =
   "SELECT c.TABLE_SCHEMA, c.TABLE_NAME, t.TABLE_TYPE, c.COLUMN_NAME, c.COLUMN_TYPE, c.IS_NULLABLE, c.COLUMN_DEFAULT, c.EXTRA, c.COLUMN_COMMENT, t.TABLE_COMMENT "
   "FROM information_schema.COLUMNS c JOIN information_schema.TABLES t "
   "ON t.TABLE_SCHEMA = c.TABLE_SCHEMA AND t.TABLE_NAME = c.TABLE_NAME "
   "WHERE t.TABLE_TYPE IN ('BASE TABLE', 'VIEW') AND c.TABLE_SCHEMA IN (%1) "
   "ORDER BY c.TABLE_SCHEMA, c.TABLE_NAME, c.ORDINAL_POSITION";

// Every index, the primary key's ("PRIMARY") and the unique constraints' among them; not a
// FULLTEXT or SPATIAL one, which made again as a plain index would fail or say something else.
const char * const k_sIndexes =
   "SELECT TABLE_SCHEMA, TABLE_NAME, INDEX_NAME, NON_UNIQUE, COLUMN_NAME, SUB_PART FROM information_schema.STATISTICS "
   "WHERE TABLE_SCHEMA IN (%1) AND INDEX_TYPE NOT IN ('FULLTEXT', 'SPATIAL') ORDER BY TABLE_SCHEMA, TABLE_NAME, INDEX_NAME, SEQ_IN_INDEX";

const char * const k_sForeignKeys =
   "SELECT k.TABLE_SCHEMA, k.TABLE_NAME, k.CONSTRAINT_NAME, k.COLUMN_NAME, k.REFERENCED_TABLE_SCHEMA, k.REFERENCED_TABLE_NAME, k.REFERENCED_COLUMN_NAME, "
   "r.DELETE_RULE, r.UPDATE_RULE FROM information_schema.KEY_COLUMN_USAGE k "
   "LEFT JOIN information_schema.REFERENTIAL_CONSTRAINTS r ON r.CONSTRAINT_SCHEMA = k.CONSTRAINT_SCHEMA AND r.TABLE_NAME = k.TABLE_NAME AND r.CONSTRAINT_NAME = k.CONSTRAINT_NAME "
   "WHERE k.TABLE_SCHEMA IN (%1) AND k.REFERENCED_TABLE_NAME IS NOT NULL "
   "ORDER BY k.TABLE_SCHEMA, k.TABLE_NAME, k.CONSTRAINT_NAME, k.ORDINAL_POSITION";

// A view over a table that is gone has no column rows; the server says why in its comment.
const char * const k_sViews =
   "SELECT TABLE_SCHEMA, TABLE_NAME, TABLE_COMMENT FROM information_schema.TABLES "
   "WHERE TABLE_TYPE = 'VIEW' AND TABLE_SCHEMA IN (%1) ORDER BY TABLE_SCHEMA, TABLE_NAME";

} // namespace

bool catalog_reader::reportBrokenViews(QSqlQuery & q, const QString & sSchemas, const import_options & options, db_catalog & catalog, QString & sError)
{
   if (! exec(q, QString(k_sViews).arg(sSchemas), sError)) { return false; }
   while (q.next())
   {
      if (catalog.find(q.value(0).toString(), q.value(1).toString()) || ! options.accepts(q.value(1).toString())) { continue; }
      const QString sWhat = QString("view %1 cannot be read: %2").arg(q.value(1).toString(), q.value(2).toString().simplified());
      if (options.bStrict) { sError = sWhat; return false; }
      catalog.lstWarnings.append(sWhat + ", left out");
   }
   return true;
}

bool catalog_reader::readMariadb(const QSqlDatabase & database, const QStringList & lstSchemas, const import_options & options, db_catalog & catalog, QString & sError)
{
   const QString sSchemas = quotedList(lstSchemas);
   QSqlQuery q(database);
   if (! exec(q, QString(k_sColumns).arg(sSchemas), sError)) { return false; }
   while (q.next())
   {
      db_table & t = catalog.table(q.value(0).toString(), q.value(1).toString());
      t.bView = (q.value(2).toString() == "VIEW");
      db_column c;
      c.sName = q.value(3).toString();
      setDeclaredType(c, q.value(4).toString());
      c.bNotNull = (q.value(5).toString() == "NO");
      // "NULL" is how the catalog writes a null default; a text default comes quoted.
      if (! q.value(6).isNull() && (q.value(6).toString() != "NULL")) { c.sDefault = standardLiteral(q.value(6).toString()); }
      c.lstValues = enumValues(c.sDeclared);
      c.lstSetValues = enumValues(c.sDeclared, QStringLiteral("set"));
      if (q.value(7).toString().contains("auto_increment", Qt::CaseInsensitive)) { c.sGenerator = QStringLiteral("autoincrement"); }
      c.sComment = q.value(8).toString();
      // A view's comment is the word VIEW, or why it cannot be read.
      if (! t.bView) { t.sComment = q.value(9).toString(); }
      t.lstColumns.append(c);
   }
   return (reportBrokenViews(q, sSchemas, options, catalog, sError) && readMariadbKeys(q, sSchemas, catalog, sError));
}

bool catalog_reader::readMariadbKeys(QSqlQuery & q, const QString & sSchemas, db_catalog & catalog, QString & sError)
{
   if (! exec(q, QString(k_sIndexes).arg(sSchemas), sError)) { return false; }
   while (q.next())
   {
      if (! catalog.find(q.value(0).toString(), q.value(1).toString())) { continue; }
      db_table & t = catalog.table(q.value(0).toString(), q.value(1).toString());
      const QString sIndex = q.value(2).toString();
      if (sIndex == "PRIMARY") { t.lstPrimaryKey.append(q.value(4).toString()); continue; }
      t.addIndexColumn(sIndex, (q.value(3).toInt() == 0), q.value(4).toString(), q.value(5).toInt());
   }
   if (! exec(q, QString(k_sForeignKeys).arg(sSchemas), sError)) { return false; }
   QString sLast;
   QHash<QString, QStringList> hashKeyColumns;
   while (q.next())
   {
      if (! catalog.find(q.value(0).toString(), q.value(1).toString())) { continue; }
      db_table & t = catalog.table(q.value(0).toString(), q.value(1).toString());
      const QString sKey = db_catalog::keyOf(t.sSchema, t.sName) + "/" + q.value(2).toString();
      if (sKey != sLast)
      {
         t.lstForeignKeys.append(db_foreign_key { {}, q.value(4).toString(), q.value(5).toString(), {},
                                                  actionOf(q.value(7).toString()), actionOf(q.value(8).toString()) });
         sLast = sKey;
      }
      t.lstForeignKeys.last().lstColumns.append(q.value(3).toString());
      t.lstForeignKeys.last().lstTargetColumns.append(q.value(6).toString());
      hashKeyColumns[db_catalog::keyOf(db_catalog::keyOf(t.sSchema, t.sName), q.value(2).toString())].append(q.value(3).toString());
   }
   // The index MariaDB makes for a foreign key by itself bears the key's name, or its first
   // column's when the key has none of its own: no one declared it.
   for (db_table & t : catalog.lstTables)
   {
      const QString sTable = db_catalog::keyOf(t.sSchema, t.sName);
      t.lstIndexes.removeIf([&](const db_index & i)
      {
         if (i.bUnique) { return false; }
         if (hashKeyColumns.value(db_catalog::keyOf(sTable, i.sName)) == i.lstColumns) { return true; }
         for (const db_foreign_key & k : t.lstForeignKeys) { if ((k.lstColumns == i.lstColumns) && (i.sName == k.lstColumns.first())) { return true; } }
         return false;
      });
   }
   return true;
}

} // namespace db_import
