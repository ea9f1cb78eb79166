#pragma once

#include <QString>

namespace sql_export {

enum enum_dialect { dialect_sqlite = 0, dialect_postgresql = 1, dialect_mariadb = 2 };

// What differs between the databases a schema script is written for: names, quoting, literals.
class sql_dialect
{
   enum_dialect m_eDialect = dialect_sqlite;

public:
   explicit sql_dialect(enum_dialect e = dialect_sqlite) : m_eDialect(e) { ; }

   enum_dialect kind() const { return m_eDialect; }
   QString name() const;
   // "sqlite", "postgresql", "mariadb" (and "mysql", "postgres", "pgsql"); false for another text.
   static bool parse(const QString & sText, enum_dialect & eResult);
   static QString knownNames() { return QStringLiteral("sqlite, postgresql, mariadb"); }

   // The name as written in the script: left bare when plain and no keyword, else quoted.
   QString quote(const QString & sIdentifier) const;
   // A table's name as written in the script: "schema.table" (two plain names) is a table of
   // another schema in PostgreSQL and MariaDB, written "schema"."table"; one name in SQLite.
   QString table(const QString & sTable) const;
   // The schema part of a table's name, or empty (always in SQLite).
   QString schemaOf(const QString & sTable) const;
   // The table's name without its schema.
   QString bareTable(const QString & sTable) const;
   // An index of the table, by the name its database looks it up by (PostgreSQL keeps an index
   // in its table's schema).
   QString indexName(const QString & sTable, const QString & sIndex) const;
   // A text literal; no character of the text can end it early.
   QString literal(const QString & sText) const;
   // The longest name the database keeps (longer constraint and index names are shortened).
   int maxNameLength() const { return ((m_eDialect == dialect_mariadb) ? 64 : 63); }
   // A constraint or index name from its parts, shortened with a checksum when too long.
   QString objectName(const QString & sPrefix, const QString & sTable, const QString & sColumn) const;

   static bool isKeyword(const QString & sIdentifier);
};

} // namespace sql_export
