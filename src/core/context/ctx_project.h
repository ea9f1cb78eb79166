#pragma once

#include <QSqlDatabase>
#include <QString>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace context {

// The project opened in the host, with the database connection of its project file.
class TAVRELCORE_EXPORT ctx_project
{
public:
   static model::project_ptr getProject();
   // Opens a ".tavrel" project file, or imports a ".json" model beside it and opens the result.
   static zy::ZyBool openProject(const QString & path);
   // Makes a model held in memory the opened project (no database: settings are not stored).
   static void setProject(const model::project_ptr & p);
   static void closeProject();

   // Absolute path of the opened project file, empty without one.
   static QString getProjectFile();
   // Connection to the opened project file; invalid without one.
   static QSqlDatabase getDatabase();

   // An absolute path as it is; a relative one resolved against the directory of the opened
   // project file (the current directory without one).
   static QString getPathFromProjectFile(const QString & path);
};

// Makes the opened project's database the current one for the time of a scope.
class TAVRELCORE_EXPORT ctx_scoped
{
   QSqlDatabase m_database;
   QString m_sPrevious;

public:
   ctx_scoped();
   ~ctx_scoped();
   ctx_scoped(const ctx_scoped &) = delete;
   ctx_scoped & operator=(const ctx_scoped &) = delete;

   QSqlDatabase * database() { return (& m_database); }
   // The database of the innermost scope (the opened project's one outside any scope).
   static QSqlDatabase current();
};

} // namespace context
