#pragma once

#include <QByteArray>
#include <QSqlDatabase>
#include <QString>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace storage {

// The project file: an SQLite database with the model tables and "t_plugin_params", plus the
// JSON model document that imports into it and dumps out of it.
class TAVRELCORE_EXPORT project_storage
{
public:
   // Parses a JSON model document into a model held in memory. Errors name the file, the place
   // (line and column for syntax errors, the JSON path for semantic ones) and the reason.
   static zy::ZyBool parseJson(const QByteArray & json, const QString & fileName, model::project_ptr & result);
   static zy::ZyBool readJsonFile(const QString & jsonFile, model::project_ptr & result);
   // The JSON model document of a project (import of the result gives the same model).
   static QByteArray toJson(const model::project & project);

   // Creates or refreshes a project file from a JSON model: the model tables are replaced and
   // "t_plugin_params" kept. On failure the existing project file is left untouched.
   static zy::ZyBool importJson(const QString & jsonFile, const QString & projectFile);
   // Writes the model tables of a project file from a model (same guarantee as importJson).
   static zy::ZyBool saveProject(const model::project & project, const QString & projectFile);
   // Reads the model of a project file.
   static zy::ZyBool loadProject(const QString & projectFile, model::project_ptr & result);

   // Opens (and creates the schema of) a project database under a connection name of its own.
   static zy::ZyBool openDatabase(const QString & projectFile, QSqlDatabase & database);
   static void closeDatabase(QSqlDatabase & database);
   static zy::ZyBool createSchema(QSqlDatabase & database);
};

} // namespace storage
