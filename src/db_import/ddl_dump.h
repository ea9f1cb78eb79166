#pragma once

#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"
#include "db_import/ddl_loader.h"
#include "db_import/ddl_dump_split.h"
#include "db_import/import_options.h"

namespace db_import {

class dump_cursor;

// A PostgreSQL or MariaDB dump file (what the servers' dump tools print) read as a schema.
// Each statement is read (tables, columns, keys, foreign keys, defaults, enumeration types,
// domains, indexes, views), skipped on purpose (settings, ownership, grants, data, functions,
// triggers, ...; counted per kind) or refused with its line. What is read becomes SQLite
// statements run by the DDL loader in its sandbox; its catalog, with the facts SQLite cannot
// keep (declared types, defaults, numbering, schemas), is the dump's.
class ddl_dump
{
public:
   // The dialect a script's own marks show (a dump header, "SET search_path", "/*!40101",
   // "ENGINE=", ...); dialect_sqlite when none does.
   static enum_dialect detect(const QString & sScript);

   ddl_dump(enum_dialect eDialect, const QString & sName) : m_eDialect(eDialect), m_sName(sName) { ; }

   bool load(const QString & sScript, const import_options & options, db_catalog & catalog, QString & sError);
   QStringList getWarnings() const { return m_lstWarnings; }
   // "schema.sql: skipped 12 session settings", one per kind, in the order first met.
   QStringList getNotes() const;

   struct table
   {
      db_table t;
      int iLine = 0;
      // Made by ALTER TABLE ... ADD CONSTRAINT ... UNIQUE: listed before the indexes (PostgreSQL).
      QList<db_index> lstUniqueConstraints;
      QStringList lstForeignKeyNames;
      QString sViewSql;
      // COMMENT ON COLUMN, by column: a view's columns are known only once SQLite has read it.
      QHash<QString, QString> hashColumnComments;
      bool bDropped = false;
   };
   struct domain
   {
      QString sDeclared;
      bool bNotNull = false;
      QString sDefault;
   };

private:
   enum enum_verdict { read, skip, refuse };
   enum_verdict classify(const dump_statement & s, QString & sKind);
   enum_verdict classifyPostgresql(dump_cursor & c, const dump_statement & s, QString & sKind);
   enum_verdict classifyMariadb(dump_cursor & c, QString & sKind);
   enum_verdict classifyCommon(dump_cursor & c, QString & sKind);
   bool readStatement(const dump_statement & s, QString & sError);

   // ddl_dump_table.cpp
   bool readCreateTable(dump_cursor & c, int iLine, QString & sError);
   bool readColumn(dump_cursor & c, table & t, QString & sError);
   bool readTableConstraint(dump_cursor & c, table & t, bool bAltered, QString & sError);
   bool readForeignKey(dump_cursor & c, table & t, const QString & sName, QString & sError);
   bool readAlterTable(dump_cursor & c, QString & sError);
   bool readCreateIndex(dump_cursor & c, QString & sError);
   bool readCreateView(dump_cursor & c, const dump_statement & s, QString & sError);
   bool readEnumOrDomain(dump_cursor & c, bool bDomain, QString & sError);
   bool readDrop(dump_cursor & c);
   bool readComment(dump_cursor & c, QString & sError);
   // A string literal's text: quotes taken off, escapes read as the dialect writes them.
   QString literal(const QString & s) const;
   void setColumnType(db_column & column, const QString & sWritten) const;
   QString normalDefault(const QString & sDefault) const;
   // ddl_dump_sqlite.cpp
   void finishTables();
   QList<ddl_loader::statement> translate() const;
   QString viewForSqlite(const QString & sBody) const;
   QString sqliteName(const QString & sSchema, const QString & sTable) const;
   bool toCatalog(const db_catalog & sqlite, db_catalog & catalog) const;

   // The table a qualified name names, or null; schema and name resolved.
   table * find(const QStringList & lstName);
   void resolve(const QStringList & lstName, QString & sSchema, QString & sTable) const;
   // The schema of a name without one: the current database of a MariaDB dump (USE changes it).
   QString currentSchema() const { return ((m_eDialect == dialect_postgresql) ? QStringLiteral("public") : m_sDatabase); }
   // The schema whose tables get no namespace: MariaDB's database of the first table.
   QString defaultSchema() const { return (((m_eDialect == dialect_postgresql) || m_sHome.isEmpty()) ? currentSchema() : m_sHome); }
   void note(const QString & sKind, qsizetype iCount = 1);

   enum_dialect m_eDialect;
   QString m_sName;
   QString m_sDatabase = "main";
   QString m_sHome;
   QList<table> m_lstTables;
   QHash<QString, qsizetype> m_hashTables;
   QHash<QString, QStringList> m_hashEnums;
   QHash<QString, domain> m_hashDomains;
   QSet<QString> m_setSchemas;
   // Every column of a table, by the type SQLite is given for it ("tavrel_type_12").
   mutable QList<db_column> m_lstTypes;
   QStringList m_lstWarnings;
   QMap<QString, qsizetype> m_mapSkipped;
   QStringList m_lstKinds;
};

} // namespace db_import
