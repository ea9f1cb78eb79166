#pragma once

#include <QStringList>
#include <QTextStream>

#include "db_import/db_catalog.h"
#include "model/model_fwd.h"
#include "sql_export/schema/schema_migration.h"

namespace app {

// "tavrel migrate OLD NEW --dialect D [-o FILE] [--allow-destructive] [--check]": the SQL that
// brings a database made for one version of a model to the next.
class cli_migrate
{
   QTextStream & m_out;
   QTextStream & m_err;

public:
   cli_migrate(QTextStream & out, QTextStream & err) : m_out(out), m_err(err) { ; }

   // The arguments after the command name; returns the exit code (0, 1 failure, refusal or a
   // migration needed under --check, 2 usage).
   int run(const QStringList & args);

   static const char * usageText();
   // Whether the ids of a model file were the user's: a project file keeps its items' ids, a
   // JSON model has them only when it writes an "id" for an entity or a property.
   static bool carriesIds(const QString & sFile);

private:
   int message(const QString & text, int iExit, bool bHint = false);
   // Both models, each without two entities on one table; -1, or the exit code of the failure.
   int readModels(const QStringList & lstFiles, model::project_ptr & pOld, model::project_ptr & pNew);
   // Reads the database the migration is for and checks it before anything is written: -1, or the
   // exit code. With SQLite the plan keeps what rebuilt tables hold beyond the model.
   int checkDatabase(const QString & sDatabase, const sql_export::sql_schema & from, const sql_export::sql_schema & to,
                     const sql_export::sql_dialect & dialect, sql_export::migration_plan & plan);
   // What stops the migration on that database: tables and columns of the old model missing,
   // tables and columns the script makes there already, (MariaDB) keys of another integer type
   // than the column they point at.
   static QStringList databaseProblems(const db_import::db_catalog & catalog, const sql_export::sql_schema & from,
                                       const sql_export::sql_schema & to, const sql_export::sql_dialect & dialect);
   // Indexes and triggers of an SQLite database, and the CHECK constraints and AUTOINCREMENT of
   // its tables, that the old model (from) did not make.
   static bool readSqliteCatalog(const QString & sFile, const sql_export::sql_schema & from, QList<sql_export::catalog_object> & lst, QString & sError);
   // The script on standard output or into sOut; the exit code.
   int writeScript(const QString & sOut, const QString & sScript, qsizetype iSteps);
   // Adds one "--rename" value; the reason it names nothing of the models, or empty.
   static QString addRename(const model::project & oldModel, const model::project & newModel, const QString & sRename,
                            sql_export::migration_renames & renames);
};

} // namespace app
