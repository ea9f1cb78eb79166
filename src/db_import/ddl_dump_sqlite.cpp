#include "db_import/ddl_dump.h"

#include "db_import/ddl_dump_tokens.h"
#include "model/sql_meta.h"

#include <QRegularExpression>

#include <algorithm>

namespace db_import {

namespace {

const char * const k_sTypePrefix = "tavrel_type_";

QString quoted(const QString & s) { return '"' + QString(s).replace('"', "\"\"") + '"'; }

QString quotedList(const QStringList & lst)
{
   QStringList lstQuoted;
   for (const QString & s : lst) { lstQuoted.append(quoted(s)); }
   return lstQuoted.join(", ");
}

// PostgreSQL sorts constraint names byte by byte, MariaDB's catalog without case.
bool before(const QString & a, const QString & b, bool bNoCase)
{
   const int i = (bNoCase ? a.compare(b, Qt::CaseInsensitive) : a.compare(b));
   return (i < 0);
}

} // namespace

QString ddl_dump::sqliteName(const QString & sSchema, const QString & sTable) const
{
   return ((sSchema == defaultSchema()) ? sTable : (sSchema + "." + sTable));
}

// The catalog's order: PostgreSQL's unique constraints, then its other indexes, each by name;
// MariaDB's indexes by name. Foreign keys by name. MariaDB's own index for a foreign key is left
// out as its catalog reader leaves it out.
void ddl_dump::finishTables()
{
   const bool bMariadb = (m_eDialect == dialect_mariadb);
   for (table & t : m_lstTables)
   {
      if (t.bDropped || t.t.bView) { continue; }
      for (db_foreign_key & k : t.t.lstForeignKeys)
      {
         const table * pTarget = find({ k.sTargetSchema, k.sTargetTable });
         if (k.lstTargetColumns.isEmpty() && pTarget) { k.lstTargetColumns = pTarget->t.lstPrimaryKey; }
      }
      QList<std::pair<QString, db_foreign_key>> lstKeys;
      for (qsizetype i = 0; i < t.t.lstForeignKeys.size(); ++i) { lstKeys.append({ t.lstForeignKeyNames.value(i), t.t.lstForeignKeys.at(i) }); }
      std::stable_sort(lstKeys.begin(), lstKeys.end(), [bMariadb](const auto & a, const auto & b) { return before(a.first, b.first, bMariadb); });
      t.t.lstForeignKeys.clear();
      t.lstForeignKeyNames.clear();
      for (const auto & k : lstKeys) { t.t.lstForeignKeys.append(k.second); t.lstForeignKeyNames.append(k.first); }
      if (bMariadb)
      {
         t.t.lstIndexes.removeIf([&t](const db_index & i)
         {
            if (i.bUnique) { return false; }
            for (qsizetype k = 0; k < t.t.lstForeignKeys.size(); ++k)
            {
               const db_foreign_key & key = t.t.lstForeignKeys.at(k);
               if ((key.lstColumns == i.lstColumns) && ((i.sName == t.lstForeignKeyNames.at(k)) || (i.sName == key.lstColumns.first()))) { return true; }
            }
            return false;
         });
      }
      auto byName = [bMariadb](const db_index & a, const db_index & b) { return before(a.sName, b.sName, bMariadb); };
      std::stable_sort(t.lstUniqueConstraints.begin(), t.lstUniqueConstraints.end(), byName);
      std::stable_sort(t.t.lstIndexes.begin(), t.t.lstIndexes.end(), byName);
      t.t.lstIndexes = t.lstUniqueConstraints + t.t.lstIndexes;
      t.lstUniqueConstraints.clear();
   }
}

// Tables first, with their keys; views after them, in the order the dump made them. Every
// column's type names its entry in m_lstTypes, which a view's column takes over.
QList<ddl_loader::statement> ddl_dump::translate() const
{
   QList<ddl_loader::statement> lst;
   m_lstTypes.clear();
   for (const table & t : m_lstTables)
   {
      if (t.bDropped || t.t.bView) { continue; }
      QStringList lstParts;
      for (const db_column & c : t.t.lstColumns)
      {
         lstParts.append(quoted(c.sName) + " " + k_sTypePrefix + QString::number(m_lstTypes.size()));
         m_lstTypes.append(c);
      }
      if (! t.t.lstPrimaryKey.isEmpty()) { lstParts.append("PRIMARY KEY (" + quotedList(t.t.lstPrimaryKey) + ")"); }
      for (const db_foreign_key & k : t.t.lstForeignKeys)
      {
         lstParts.append("FOREIGN KEY (" + quotedList(k.lstColumns) + ") REFERENCES " + quoted(sqliteName(k.sTargetSchema, k.sTargetTable)) +
                         (k.lstTargetColumns.isEmpty() ? QString() : (" (" + quotedList(k.lstTargetColumns) + ")")) +
                         // The actions are the reader's own SQL words, never the dump's text.
                         (k.sOnDelete.isEmpty() ? QString() : " ON DELETE " + model::sql_meta::foreignKeyAction(k.sOnDelete)) +
                         (k.sOnUpdate.isEmpty() ? QString() : " ON UPDATE " + model::sql_meta::foreignKeyAction(k.sOnUpdate)));
      }
      lst.append(ddl_loader::statement { t.iLine, 1, "CREATE TABLE " + quoted(sqliteName(t.t.sSchema, t.t.sName)) + " (" + lstParts.join(", ") + ")" });
   }
   for (const table & t : m_lstTables)
   {
      if (t.bDropped || ! t.t.bView) { continue; }
      lst.append(ddl_loader::statement { t.iLine, 1, "CREATE VIEW " + quoted(sqliteName(t.t.sSchema, t.t.sName)) + " " + viewForSqlite(t.sViewSql) });
   }
   return lst;
}

// A view's text as SQLite reads it: "schema.table" names the table SQLite holds, casts
// ("::character varying") are left out. What SQLite still cannot read leaves the view out.
QString ddl_dump::viewForSqlite(const QString & sBody) const
{
   const QList<dump_token> lst = tokenize(sBody, m_eDialect == dialect_mariadb);
   dump_cursor c(lst, sBody, m_eDialect == dialect_postgresql);
   static const QStringList lstTypeWords { "varying", "precision", "without", "with", "time", "zone" };
   QString s;
   qsizetype iLast = 0;
   while (! c.atEnd())
   {
      const qsizetype iFrom = c.i;
      const dump_token & t = c.peek();
      s += sBody.mid(iLast, t.iPos - iLast);
      if (t.isPunct("::"))
      {
         c.next();
         c.qualifiedName();
         while ((c.peek().eKind == dump_token::word) && lstTypeWords.contains(c.peek().sText.toLower())) { c.next(); }
         c.skipGroup();
         while (c.peek().isPunct("[") && c.peek(1).isPunct("]")) { c.i += 2; }
      }
      else if (t.isName())
      {
         const QStringList lstName = c.qualifiedName();
         QString sSchema, sTable;
         const bool bTable = ((lstName.size() >= 2) && const_cast<ddl_dump *>(this)->find(lstName.mid(0, 2)));
         if (bTable)
         {
            resolve(lstName.mid(0, 2), sSchema, sTable);
            s += quoted(sqliteName(sSchema, sTable)) + ((lstName.size() > 2) ? ("." + quotedList(lstName.mid(2)).replace(", ", ".")) : QString());
         }
         else { s += c.textBetween(iFrom, c.i); }
      }
      else { c.next(); s += t.sText; }
      iLast = lst.at(c.i - 1).iEnd;
   }
   return s;
}

bool ddl_dump::toCatalog(const db_catalog & sqlite, db_catalog & catalog) const
{
   catalog = db_catalog();
   catalog.eDialect = m_eDialect;
   catalog.sDefaultSchema = defaultSchema();
   catalog.iFiltered = sqlite.iFiltered;
   QHash<QString, const table *> hash;
   for (const table & t : m_lstTables) { if (! t.bDropped) { hash.insert(sqliteName(t.t.sSchema, t.t.sName), & t); } }
   static const QRegularExpression reType(QString("^%1(\\d+)$").arg(k_sTypePrefix));
   for (const db_table & read : sqlite.lstTables)
   {
      const table * pTable = hash.value(read.sName);
      if (! pTable) { continue; }
      db_table & t = catalog.table(pTable->t.sSchema, pTable->t.sName);
      t = pTable->t;
      auto comment = [pTable](db_column & column) { if (pTable->hashColumnComments.contains(column.sName)) { column.sComment = pTable->hashColumnComments.value(column.sName); } };
      if (! t.bView) { for (db_column & column : t.lstColumns) { comment(column); } continue; }
      t.lstColumns.clear();
      for (const db_column & c : read.lstColumns)
      {
         const QRegularExpressionMatch m = reType.match(c.sDeclared);
         db_column column = (m.hasMatch() ? m_lstTypes.value(m.captured(1).toInt()) : c);
         column.sName = c.sName;
         // PostgreSQL: a view's column is nullable and has no default. MariaDB's keeps its table
         // column's nullability and default, and a numbered column's default is 0.
         if (m_eDialect == dialect_postgresql) { column.bNotNull = false; column.sDefault = QString(); }
         else if (! column.sGenerator.isEmpty()) { column.sDefault = "0"; }
         column.sGenerator.clear();
         column.sComment.clear();
         comment(column);
         t.lstColumns.append(column);
      }
   }
   std::stable_sort(catalog.lstTables.begin(), catalog.lstTables.end(), [](const db_table & a, const db_table & b)
   {
      return ((a.sSchema != b.sSchema) ? (a.sSchema < b.sSchema) : (a.sName < b.sName));
   });
   catalog.hashIndex.clear();
   for (qsizetype i = 0; i < catalog.lstTables.size(); ++i) { catalog.hashIndex.insert(db_catalog::keyOf(catalog.lstTables.at(i).sSchema, catalog.lstTables.at(i).sName), i); }
   return true;
}

} // namespace db_import
