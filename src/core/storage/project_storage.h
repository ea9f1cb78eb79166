#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QSqlDatabase>
#include <QString>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace storage {

// The project file: an SQLite database with the model tables and "t_plugin_params", plus the
// JSON model document that imports into it and dumps out of it.
//
// Tables (column "seq" is the document order, "id" the model's persistable id, 0 = not stored):
//   t_project (seq, id, name, format_version)
//   t_entity (seq, id, name, namespace, version, description, table_name, parent_key, is_abstract,
//             read_only, soft_delete_column, validator_method, trigger_before_fetch ... trigger_after_delete)
//   t_property (seq, entity_seq, id, name, has_type, type_text (NULL: from the enumeration), decoration,
//               collection, default_value, enumeration_key, primary_key, column_name, ... , format)
//   t_relationship (seq, property_seq, id, kind, target_key, foreign_key, foreign_key_owner, extra_table)
//   t_enumeration (seq, id, name, namespace, enum_name, use_qt_enum, description, version)
//   t_enumeration_value (seq, enumeration_seq, value_key, value_text)
//   t_meta_data (seq, owner_kind ('project', 'entity', 'property', 'enumeration'), owner_seq, meta_key, meta_value)
//   t_plugin_params (id AUTOINCREMENT, plugin_guid, param_key, param_value, param_type (QMetaType id))
//   t_export_record (id, plugin_name, export_dir, files): see export_record
//
// JSON errors read "FILE: PATH: reason" (PATH like "entities[2].properties[0].name"), one per line;
// syntax errors read "FILE:LINE:COLUMN: JSON syntax error: reason".
class TAVRELCORE_EXPORT project_storage
{
public:
   // Parses a JSON model document into a model held in memory. Errors name the file, the place
   // (line and column for syntax errors, the JSON path for semantic ones) and the reason.
   static zy::ZyBool parseJson(const QByteArray & json, const QString & fileName, model::project_ptr & result);
   // The same, freeing the text once it is parsed (a large model needs the memory for its items).
   static zy::ZyBool parseJson(QByteArray && json, const QString & fileName, model::project_ptr & result);
   static zy::ZyBool readJsonFile(const QString & jsonFile, model::project_ptr & result);
   // The JSON model document of a project (import of the result gives the same model).
   static QByteArray toJson(const model::project & project);
   // The same text written to a device as it is made (a large model's text is never whole in
   // memory); false when a write fails.
   static bool writeJson(const model::project & project, QIODevice & out);

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
