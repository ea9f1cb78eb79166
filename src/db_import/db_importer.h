#pragma once

#include <QString>
#include <QStringList>

#include <functional>

#include "db_import/db_catalog.h"
#include "db_import/import_options.h"
#include "model/model_fwd.h"

namespace db_import {

// The whole import: a database URL or a DDL script read into a catalog, the catalog mapped to a
// model and merged into a project (an empty one for a first import).
class db_importer
{
   import_options m_options;
   QString m_sPassword;
   QStringList m_lstWarnings;
   QStringList m_lstSummary;
   QStringList m_lstNotes;
   std::function<void(const QString &)> m_fnProgress;

public:
   explicit db_importer(const import_options & options) : m_options(options) { ; }

   // A password given by the user (the desktop host asks for it); else the environment's.
   void setPassword(const QString & s) { m_sPassword = s; }
   // Called with a short line before each step of a large import (thousands of tables).
   void setProgress(const std::function<void(const QString &)> & fn) { m_fnProgress = fn; }

   // sDdlFile set: the script is read instead of sSource. False with the reason (a missing
   // driver names its package, a refused connection what the server said).
   bool readSource(const QString & sSource, const QString & sDdlFile, db_catalog & catalog, QString & sError);
   // Maps the catalog and merges the result into pProject; false when nothing was imported.
   bool importInto(const db_catalog & catalog, const model::project_ptr & pProject, QString & sError);

   // The project a file holds (.tavrel or .json), or a new one named after the file when it does
   // not exist yet (see projectNameFor); sName, when given, names it either way.
   static bool loadProject(const QString & sFile, model::project_ptr & pProject, QString & sError, const QString & sName = QString());
   // A C++ identifier in upper case made from the file's name (the generated CMake project reads
   // its file lists under the upper-cased name): "my-project.tavrel" -> "MY_PROJECT",
   // "2024 shop.json" -> "PROJECT_2024_SHOP".
   static QString projectNameFor(const QString & sFile);
   // The schema check a write makes: false with every problem when the project cannot be written.
   static bool checkProject(const model::project & project, QString & sError);
   // Writes through the storage entry points: an existing file stays as it was on failure, and a
   // model with schema errors is not written.
   static bool writeProject(const model::project & project, const QString & sFile, QString & sError);

   QStringList getWarnings() const { return m_lstWarnings; }
   QStringList getSummary() const { return m_lstSummary; }
   // What a dump file held that was skipped on purpose, one line per kind with its count.
   QStringList getNotes() const { return m_lstNotes; }

private:
   void progress(const QString & s) const { if (m_fnProgress) { m_fnProgress(s); } }
};

} // namespace db_import
