#include "db_import/catalog_reader.h"

#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QSqlError>
#include <QVariant>

#include "model/sql_meta.h"

namespace db_import {

namespace {

const char * const k_sObjects =
   "SELECT name, type, sql FROM sqlite_schema WHERE type IN ('table', 'view') AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY name";

// One query per table: a view SQLite cannot expand fails alone and is told by name.
const char * const k_sColumns = "SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info(?) ORDER BY cid";

const char * const k_sForeignKeys =
   "SELECT m.name, f.id, f.\"table\", f.\"from\", f.\"to\", f.on_delete, f.on_update "
   "FROM sqlite_schema m JOIN pragma_foreign_key_list(m.name) f "
   "WHERE m.type = 'table' AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY m.name, f.id, f.seq";

// origin "pk" is the primary key's own index: the key is read from table_info. A partial index
// (WHERE) is not read: made again on all rows it would say something else.
const char * const k_sIndexes =
   "SELECT m.name, il.name, il.\"unique\", ii.name "
   "FROM sqlite_schema m JOIN pragma_index_list(m.name) il JOIN pragma_index_info(il.name) ii "
   "WHERE m.type = 'table' AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' AND il.origin <> 'pk' AND il.partial = 0 ORDER BY m.name, il.name, ii.seqno";

// The tables SQLite keeps a virtual table's data in, by the virtual table's module.
QStringList shadowSuffixes(const QString & sModule)
{
   const QString s = sModule.toLower();
   if (s == "fts5") { return { "data", "idx", "content", "docsize", "config" }; }
   if ((s == "fts3") || (s == "fts4")) { return { "content", "segments", "segdir", "docsize", "stat" }; }
   if ((s == "rtree") || (s == "rtree_i32") || (s == "geopoly")) { return { "node", "rowid", "parent" }; }
   return {};
}

} // namespace

bool catalog_reader::readSqlitePiece(const QSqlDatabase & database, const import_options & options, const QSet<QString> & setOnly,
                                     db_catalog & piece, QStringList & lstViewReasons, QString & sError)
{
   return readSqlite(database, options, piece, sError, & setOnly, & lstViewReasons);
}

bool catalog_reader::readSqlite(const QSqlDatabase & database, const import_options & options, db_catalog & catalog, QString & sError,
                                const QSet<QString> * pOnly, QStringList * pViewReasons)
{
   static const QRegularExpression reVirtual("^\\s*create\\s+virtual\\s+table\\b.*?\\busing\\s+(\\w+)",
                                             QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
   static const QRegularExpression reAutoIncrement("\\bautoincrement\\b", QRegularExpression::CaseInsensitiveOption);
   QSqlQuery q(database);
   if (! exec(q, k_sObjects, sError)) { return false; }
   QList<std::pair<QString, bool>> lstObjects;
   QSet<QString> setShadow, setAutoIncrement;
   while (q.next())
   {
      const QString sName = q.value(0).toString();
      const QRegularExpressionMatch m = reVirtual.match(q.value(2).toString().left(4096));
      // Only an INTEGER PRIMARY KEY takes the word, so the table's text tells which column has it.
      if (reAutoIncrement.match(q.value(2).toString()).hasMatch()) { setAutoIncrement.insert(sName); }
      if (! m.hasMatch()) { lstObjects.append({ sName, (q.value(1).toString() == "view") }); continue; }
      catalog.lstWarnings.append(QString("virtual table %1 (%2) left out, and the tables SQLite keeps its data in").arg(sName, m.captured(1)));
      for (const QString & sSuffix : shadowSuffixes(m.captured(1))) { setShadow.insert(sName + "_" + sSuffix); }
   }

   QSqlQuery qColumns(database);
   qColumns.setForwardOnly(true);
   if (! qColumns.prepare(k_sColumns)) { sError = "reading the catalog failed: " + qColumns.lastError().text().trimmed(); return false; }
   for (const auto & object : lstObjects)
   {
      const QString & sTable = object.first;
      if (setShadow.contains(sTable) || (pOnly && ! pOnly->contains(sTable))) { continue; }
      if (! options.accepts(sTable)) { ++catalog.iFiltered; continue; }
      qColumns.bindValue(0, sTable);
      if (! qColumns.exec())
      {
         const QString sReason = qColumns.lastError().databaseText().trimmed();
         const QString sWhat = QString("%1 %2 cannot be read: %3").arg(object.second ? "view" : "table", sTable, sReason);
         if (pViewReasons && object.second) { pViewReasons->append(sReason); }
         if (! object.second || options.bStrict) { sError = sWhat; return false; }
         catalog.lstWarnings.append(sWhat + ", left out");
         continue;
      }
      db_table & t = catalog.table("main", sTable);
      t.bView = object.second;
      QMap<int, QString> mapKey;
      while (qColumns.next())
      {
         db_column c;
         c.sName = qColumns.value(0).toString();
         setDeclaredType(c, qColumns.value(1).toString());
         c.bNotNull = qColumns.value(2).toBool();
         if (! qColumns.value(3).isNull()) { c.sDefault = qColumns.value(3).toString(); }
         if (qColumns.value(4).toInt() > 0) { mapKey.insert(qColumns.value(4).toInt(), c.sName); }
         t.lstColumns.append(c);
      }
      t.lstPrimaryKey = mapKey.values();
      if (setAutoIncrement.contains(sTable) && (t.lstPrimaryKey.size() == 1))
      {
         for (db_column & c : t.lstColumns) { if ((c.sName == t.lstPrimaryKey.first()) && (c.sType == "integer")) { c.sGenerator = "autoincrement"; } }
      }
   }

   return readSqliteKeys(database, catalog, sError);
}

// Keys and indexes of the tables read into catalog only.
bool catalog_reader::readSqliteKeys(const QSqlDatabase & database, db_catalog & catalog, QString & sError)
{
   QSqlQuery q(database);
   auto tableOf = [&catalog](const QString & sTable) -> db_table *
   {
      auto it = catalog.hashIndex.constFind(db_catalog::keyOf("main", sTable));
      return ((it == catalog.hashIndex.constEnd()) ? nullptr : & catalog.lstTables[it.value()]);
   };
   if (! exec(q, k_sForeignKeys, sError)) { return false; }
   QString sLastKey;
   while (q.next())
   {
      db_table * pTable = tableOf(q.value(0).toString());
      if (! pTable) { continue; }
      const QString sKey = q.value(0).toString() + "/" + q.value(1).toString();
      if (sKey != sLastKey)
      {
         pTable->lstForeignKeys.append(db_foreign_key { {}, "main", q.value(2).toString(), {},
                                                        model::sql_meta::foreignKeyAction(q.value(5).toString()), model::sql_meta::foreignKeyAction(q.value(6).toString()) });
         sLastKey = sKey;
      }
      pTable->lstForeignKeys.last().lstColumns.append(q.value(3).toString());
      if (! q.value(4).isNull()) { pTable->lstForeignKeys.last().lstTargetColumns.append(q.value(4).toString()); }
   }

   if (! exec(q, k_sIndexes, sError)) { return false; }
   while (q.next())
   {
      db_table * pTable = tableOf(q.value(0).toString());
      if (pTable) { pTable->addIndexColumn(q.value(1).toString(), q.value(2).toBool(), q.value(3).toString()); }
   }
   return true;
}

} // namespace db_import
