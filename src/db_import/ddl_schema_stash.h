#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

struct sqlite3;

namespace db_import {

// A table or view set aside, with its group (the lower-case name bringBack takes).
struct ddl_schema_stash_object
{
   QString sName;
   QByteArray sGroup;
   bool bView = false;
};

// The schema rows of a DDL script's scratch database, set aside while the script runs.
//
// After every CREATE, SQLite reads the new object's rows back with a scan of the whole schema
// table, and walks every table it holds in memory; a script of n tables costs it n * n. So
// every few dozen objects the rows are taken out of the schema table and SQLite reloads a
// schema that is nearly empty: the tables keep their pages and rows, SQLite only forgets them.
// A statement that names a table set aside gets that table's rows back first (with its
// indexes and triggers), and at the end every row goes back and SQLite reads the whole schema
// once.
//
// Keys are "t:" (tables, views and indexes share one name space) or "r:" (triggers) and the
// name in ASCII lower case, as SQLite compares names.
class ddl_schema_stash
{
public:
   // pInternal is raised while the stash runs its own statements, which the script's
   // authorizer and step limit let through.
   ddl_schema_stash(sqlite3 * pDb, bool * pInternal);

   // How many objects were created or brought back since the rows were last set aside.
   qsizetype visible() const { return m_iVisible; }
   void addVisible(qsizetype n) { m_iVisible += n; }
   bool isEmpty() const { return m_hashNames.isEmpty(); }
   qsizetype held() const { return m_hashNames.size(); }

   // Every row but SQLite's own tables out of the schema table; SQLite reloads what is left.
   bool setAside();
   // The tables (lower-case names) whose rows are set aside back, alone in SQLite's memory.
   bool bringBack(const QSet<QByteArray> & setGroups);
   bool bringBackAll();
   // The tables and views set aside, in the order SQLite sorts their names (bytes).
   using object = ddl_schema_stash_object;
   QList<object> objects() const;
   // The groups and those of every table or view a view among them names, and so on: what
   // SQLite needs in memory to read those views. A word that only looks like a table name
   // brings that table back too, which costs nothing but time.
   QSet<QByteArray> withNamed(const QSet<QByteArray> & setGroups) const;
   // The table whose rows hold the object of that key, empty when it is not set aside.
   QByteArray groupOf(const QByteArray & sKey) const { return m_hashNames.value(sKey); }

   static QByteArray keyOf(bool bTrigger, const QByteArray & sName) { return (bTrigger ? "r:" : "t:") + sName.toLower(); }
   // The object a "no such table: main.x" message names, as keys to try.
   static QList<QByteArray> missingKeys(const QString & sMessage);
   // The object "DROP ... IF EXISTS name" names; empty when it names none, "*" when the name
   // cannot be read (then every row must come back).
   static QByteArray dropIfExistsKey(const char * p, const char * pEnd);
   // The names and words of an SQL text, quotes taken off, literals left out.
   static QList<QByteArray> namesIn(const QByteArray & sSql);

private:
   struct row
   {
      QByteArray sType;
      QByteArray sName;
      QByteArray sTable;
      qint64 iRoot = 0;
      QByteArray sSql;
      bool bNoSql = false;
      bool bBack = false;   // brought back since
   };

   bool exec(const char * sSql);
   bool takeRows();
   bool insertRows(const QList<qsizetype> & lstRows);
   bool reload();

   sqlite3 * m_pDb;
   bool * m_pInternal;
   qsizetype m_iVisible = 0;
   QList<row> m_lstRows;
   QHash<QByteArray, QList<qsizetype>> m_hashGroups;   // lower-case table name -> rows
   QHash<QByteArray, QByteArray> m_hashNames;           // key -> lower-case table name
};

} // namespace db_import
