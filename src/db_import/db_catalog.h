#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace db_import {

enum enum_dialect { dialect_sqlite = 0, dialect_postgresql = 1, dialect_mariadb = 2 };

// What the catalog says about one column; the type is lower-case without its length.
struct db_column
{
   QString sName;
   QString sType;
   // As declared ("varchar(40)", "tinyint(1) unsigned"), for the messages and the width rules.
   QString sDeclared;
   int iLength = -1;
   bool bNotNull = false;
   // The catalog's default expression as text; null when there is none.
   QString sDefault;
   // How the database numbers new rows: "autoincrement" (SQLite AUTOINCREMENT, MariaDB
   // AUTO_INCREMENT), "identity", "identity always" or "serial" (PostgreSQL); empty when it does not.
   QString sGenerator;
   // The values of an enumeration type (PostgreSQL's, MariaDB's ENUM), in their order.
   QStringList lstValues;
   // The database's comment on the column; empty when none.
   QString sComment;
   // The values a MariaDB SET column holds any combination of, in their order.
   QStringList lstSetValues;
};

struct db_index
{
   QString sName;
   QStringList lstColumns;
   bool bUnique = false;
   // Per column, the length of a prefix index (MariaDB's "KEY (name(190))"), 0 for the whole column.
   QList<int> lstLengths;

   bool hasPrefix() const { for (int i : lstLengths) { if (i > 0) { return true; } } return false; }
};

struct db_foreign_key
{
   QStringList lstColumns;
   QString sTargetSchema;
   QString sTargetTable;
   // Empty when the key names the target's primary key implicitly (SQLite).
   QStringList lstTargetColumns;
   // "CASCADE", "SET NULL", "SET DEFAULT" or "RESTRICT"; empty for NO ACTION.
   QString sOnDelete;
   QString sOnUpdate;
};

struct db_table
{
   QString sSchema;
   QString sName;
   bool bView = false;
   QList<db_column> lstColumns;
   QStringList lstPrimaryKey;
   // Unique constraints and indexes alike (the primary key's own index left out).
   QList<db_index> lstIndexes;
   QList<db_foreign_key> lstForeignKeys;
   QString sComment;

   // Catalog rows come one per index column, in index order.
   void addIndexColumn(const QString & sIndex, bool bUnique, const QString & sColumn, int iLength = 0)
   {
      if (lstIndexes.isEmpty() || (lstIndexes.last().sName != sIndex)) { lstIndexes.append(db_index { sIndex, {}, bUnique, {} }); }
      lstIndexes.last().lstColumns.append(sColumn);
      lstIndexes.last().lstLengths.append(iLength);
   }
   const db_column * column(const QString & s) const
   {
      for (const db_column & c : lstColumns) { if (c.sName == s) { return & c; } }
      return nullptr;
   }
};

// The tables and views read from one database, in name order.
struct db_catalog
{
   enum_dialect eDialect = dialect_sqlite;
   // Tables of this schema get no namespace ("main", "public", the database of the URL).
   QString sDefaultSchema;
   QList<db_table> lstTables;
   QHash<QString, qsizetype> hashIndex;
   // What was left out on the way ("virtual table docs (fts5) left out ...").
   QStringList lstWarnings;
   // Tables --tables and --exclude kept from being read at all.
   qsizetype iFiltered = 0;

   static QString keyOf(const QString & sSchema, const QString & sTable) { return sSchema + QChar(0x1f) + sTable; }
   // The table of that name, added (empty) when it is not there yet.
   db_table & table(const QString & sSchema, const QString & sTable)
   {
      const QString sKey = keyOf(sSchema, sTable);
      auto it = hashIndex.constFind(sKey);
      if (it != hashIndex.constEnd()) { return lstTables[it.value()]; }
      hashIndex.insert(sKey, lstTables.size());
      lstTables.append(db_table());
      lstTables.last().sSchema = sSchema;
      lstTables.last().sName = sTable;
      return lstTables.last();
   }
   const db_table * find(const QString & sSchema, const QString & sTable) const
   {
      auto it = hashIndex.constFind(keyOf(sSchema, sTable));
      return ((it == hashIndex.constEnd()) ? nullptr : & lstTables.at(it.value()));
   }
};

} // namespace db_import
