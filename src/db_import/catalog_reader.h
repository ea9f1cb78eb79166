#pragma once

#include <QSqlDatabase>
#include <QSet>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"
#include "db_import/import_options.h"

namespace db_import {

// Reads tables, views, columns, keys, indexes and foreign keys from a database's catalog, a few
// set-based queries per dialect (SQLite: one prepared column query per table, so that a broken
// view fails alone).
class catalog_reader
{
public:
   // lstSchemas empty: every schema of the user (PostgreSQL), the URL's database (MariaDB).
   // SQLite: tables options does not accept are never read, nor SQLite's own and virtual tables;
   // a view the database cannot read (SQLite, MariaDB) is a warning in catalog.lstWarnings (an
   // error when strict).
   static bool read(const QSqlDatabase & database, enum_dialect eDialect, const QStringList & lstSchemas,
                    const QString & sDatabase, db_catalog & catalog, QString & sError,
                    const import_options & options = import_options());

   // "varchar(40)" -> type "varchar", length 40; "double precision" stays as it is.
   static void setDeclaredType(db_column & column, const QString & sDeclared);
   // Runs a query forward-only; false with the statement's reason.
   static bool exec(QSqlQuery & query, const QString & sql, QString & sError);
   // "'a', 'b'": each text quoted (quotes doubled), for the schema lists built into the statements.
   static QString quotedList(const QStringList & lst);

   // SQLite, only the tables and views named in setOnly, into an empty piece: a large scratch
   // database is read a piece at a time (tables brought back only for a view's sake are not
   // read twice). Why a view could not be read also goes to lstViewReasons ("no such table:
   // main.x"), so that the caller can bring the table back and read the piece again.
   static bool readSqlitePiece(const QSqlDatabase & database, const import_options & options, const QSet<QString> & setOnly,
                               db_catalog & piece, QStringList & lstViewReasons, QString & sError);
   // Name order and the index, once every piece is read.
   static void sortTables(db_catalog & catalog);

private:
   static bool readSqlite(const QSqlDatabase & database, const import_options & options, db_catalog & catalog, QString & sError,
                          const QSet<QString> * pOnly = nullptr, QStringList * pViewReasons = nullptr);
   static bool readSqliteKeys(const QSqlDatabase & database, db_catalog & catalog, QString & sError);
   static bool readPostgresql(const QSqlDatabase & database, const QStringList & lstSchemas, db_catalog & catalog, QString & sError);
   static bool readPostgresqlKeys(QSqlQuery & query, const QString & sSchemas, db_catalog & catalog, QString & sError);
   static bool readMariadb(const QSqlDatabase & database, const QStringList & lstSchemas, const import_options & options, db_catalog & catalog, QString & sError);
   // Views the server lists but cannot read (a table they name is gone): warnings, errors when strict.
   static bool reportBrokenViews(QSqlQuery & query, const QString & sSchemas, const import_options & options, db_catalog & catalog, QString & sError);
   static bool readMariadbKeys(QSqlQuery & query, const QString & sSchemas, db_catalog & catalog, QString & sError);
};

} // namespace db_import
