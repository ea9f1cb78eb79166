#pragma once

#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"

namespace sql_test {

// The catalog of the database at a URL ("sqlite:file", or a server's), read as import-db reads it.
bool readCatalog(const QString & sUrl, db_import::db_catalog & catalog, QString & sError);
// Every way the second catalog differs from the first ("product.price: type numeric(10,2) /
// double precision"): tables, columns, types, nullability, defaults, generators, primary keys,
// foreign keys and indexes (unique or not, by their columns and prefix lengths, whatever their
// names). Tables of the source's default schema are looked for in the copy's default schema
// (they are two databases), tables of any other schema in that schema.
// bOtherDatabase: the copy is of another kind, so types, defaults and values are spelt its way:
// only tables, columns, nullability, whether a column is numbered, keys and indexes count, and
// the copy may have more indexes (MariaDB indexes every foreign key).
QStringList catalogDifferences(const db_import::db_catalog & source, const db_import::db_catalog & copy, bool bOtherDatabase = false);

} // namespace sql_test
