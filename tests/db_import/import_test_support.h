#pragma once

#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"
#include "db_import/import_options.h"
#include "model/model_fwd.h"

namespace db_support { class db_server; }

namespace import_test {

// The name of a dialect as the test instantiations are named.
QString dialectName(db_import::enum_dialect eDialect);

// A database of that dialect holding tests/db_import/schemas/SCHEMA.DIALECT.sql, else
// tests/db_import/corpus/SCHEMA.DIALECT.sql (an SQLite file
// in sWorkDir, a fresh database named SCHEMA on the test server) and its URL. The servers'
// password is put in TAVREL_DB_PASSWORD for this process.
bool prepareSource(db_import::enum_dialect eDialect, const QString & sSchema, const QString & sWorkDir, QString & sUrl, QString & sError);
// The test server of a dialect (PostgreSQL or MariaDB), started once; its password is put in
// TAVREL_DB_PASSWORD for this process. Null with sError when it cannot be started.
db_support::db_server * serverOf(db_import::enum_dialect eDialect, QString & sError);
// Runs more statements (";" at a line's end ends one) on the database behind a URL.
bool execOnSource(db_import::enum_dialect eDialect, const QString & sUrl, const QString & sScript, QString & sError);

struct import_run
{
   bool bOk = false;
   QString sError;
   model::project_ptr pProject;
   QStringList lstWarnings;
   QStringList lstSummary;
};

// An import into pExisting, or into a new project when null.
import_run importSource(const QString & sUrl, const db_import::import_options & options = db_import::import_options(),
                        const model::project_ptr & pExisting = nullptr);
import_run importDdl(const QString & sFile, const db_import::import_options & options = db_import::import_options(),
                     const model::project_ptr & pExisting = nullptr);
// Writes sText to a file in sDir and imports it as a DDL script.
import_run importDdlText(const QString & sDir, const QString & sText, const db_import::import_options & options = db_import::import_options(),
                         const model::project_ptr & pExisting = nullptr);

// Entity by key and property by name, or null.
model::property_ptr propertyOf(const model::project_ptr & pProject, const QString & sEntity, const QString & sProperty);
// "Name" of every entity, sorted.
QStringList entityNames(const model::project_ptr & pProject);
// True when one warning contains all the given parts.
bool hasWarning(const QStringList & lstWarnings, const QStringList & lstParts);

} // namespace import_test
