#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"

namespace import_test {

// A fresh, empty database of the dialect beside the corpus (an SQLite file in sWorkDir, or a
// database named sName on the test server) and its URL.
bool freshDatabase(db_import::enum_dialect eDialect, const QString & sName, const QString & sWorkDir, QString & sUrl, QString & sError);
// The first column of every row a query gives, as text; sError set when it failed.
QStringList queryValues(db_import::enum_dialect eDialect, const QString & sUrl, const QString & sQuery, QString & sError);
// A name quoted for a query of that dialect.
QString quoted(db_import::enum_dialect eDialect, const QString & sName);
// A table name quoted for a query ("schema"."table" when it is in another schema).
QString quotedTable(db_import::enum_dialect eDialect, const db_import::db_catalog & catalog, const db_import::db_table & table);
// How many rows each table (not view) of the catalog holds, by "schema.table" ("table" in the
// default schema).
QMap<QString, qlonglong> rowCounts(const QString & sUrl, const db_import::db_catalog & catalog, QString & sError);

} // namespace import_test
