#include "storage/project_file_schema.h"

#include <QSqlQuery>

#include "model/entity_trigger.h"
#include "storage/project_storage.h"

namespace storage {
namespace project_file {

namespace {

const char * const k_aszSchema[] = {
   // One row: the project itself.
   "CREATE TABLE IF NOT EXISTS t_project (seq INTEGER PRIMARY KEY, id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', "
   "format_version INTEGER NOT NULL DEFAULT 1)",
   // "seq" is the document order; "id" the model's persistable id (0 = not stored, so not unique).
   "CREATE TABLE IF NOT EXISTS t_entity (seq INTEGER PRIMARY KEY, id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', "
   "namespace TEXT NOT NULL DEFAULT '', version INTEGER NOT NULL DEFAULT 0, description TEXT, table_name TEXT, parent_key TEXT, "
   "is_abstract INTEGER NOT NULL DEFAULT 0, read_only INTEGER NOT NULL DEFAULT 0, soft_delete_column TEXT, validator_method TEXT, "
   "@TRIGGERS@)",
   // type_text is NULL when the type comes from the enumeration (or there is none).
   "CREATE TABLE IF NOT EXISTS t_property (seq INTEGER PRIMARY KEY, entity_seq INTEGER NOT NULL REFERENCES t_entity(seq), "
   "id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', has_type INTEGER NOT NULL DEFAULT 0, type_text TEXT, "
   "decoration INTEGER NOT NULL DEFAULT 0, collection INTEGER NOT NULL DEFAULT 0, default_value TEXT, enumeration_key TEXT, "
   "primary_key INTEGER NOT NULL DEFAULT 0, column_name TEXT, description TEXT, version INTEGER NOT NULL DEFAULT 0, "
   "accessibility INTEGER NOT NULL DEFAULT 1, write_accessors INTEGER NOT NULL DEFAULT 1, obsolete INTEGER NOT NULL DEFAULT 0, "
   "read_only INTEGER NOT NULL DEFAULT 0, get_method TEXT, set_method TEXT, transient INTEGER NOT NULL DEFAULT 0, "
   "serializable INTEGER NOT NULL DEFAULT 1, is_index INTEGER NOT NULL DEFAULT 0, is_unique INTEGER NOT NULL DEFAULT 0, "
   "allow_null INTEGER NOT NULL DEFAULT 1, min_value TEXT, max_value TEXT, min_length TEXT, max_length TEXT, reg_exp TEXT, "
   "force_sql_type TEXT, force_sql_alias TEXT, format TEXT)",
   "CREATE TABLE IF NOT EXISTS t_relationship (seq INTEGER PRIMARY KEY, property_seq INTEGER NOT NULL UNIQUE REFERENCES t_property(seq), "
   "id INTEGER NOT NULL DEFAULT 0, kind INTEGER NOT NULL DEFAULT 0, target_key TEXT NOT NULL DEFAULT '', foreign_key TEXT, "
   "foreign_key_owner TEXT, extra_table TEXT)",
   "CREATE TABLE IF NOT EXISTS t_enumeration (seq INTEGER PRIMARY KEY, id INTEGER NOT NULL DEFAULT 0, name TEXT NOT NULL DEFAULT '', "
   "namespace TEXT NOT NULL DEFAULT '', enum_name TEXT, use_qt_enum INTEGER NOT NULL DEFAULT 0, description TEXT, "
   "version INTEGER NOT NULL DEFAULT 0)",
   "CREATE TABLE IF NOT EXISTS t_enumeration_value (seq INTEGER PRIMARY KEY, enumeration_seq INTEGER NOT NULL REFERENCES t_enumeration(seq), "
   "value_key TEXT NOT NULL, value_text TEXT)",
   // owner_kind: 'project', 'entity', 'property' or 'enumeration'; owner_seq: the owner's seq.
   "CREATE TABLE IF NOT EXISTS t_meta_data (seq INTEGER PRIMARY KEY, owner_kind TEXT NOT NULL, owner_seq INTEGER NOT NULL, "
   "meta_key TEXT NOT NULL, meta_value TEXT)",
   "CREATE TABLE IF NOT EXISTS t_plugin_params (id INTEGER PRIMARY KEY AUTOINCREMENT, plugin_guid TEXT NOT NULL, "
   "param_key TEXT NOT NULL, param_value, param_type INTEGER)",
   "CREATE INDEX IF NOT EXISTS idx_plugin_params_guid ON t_plugin_params (plugin_guid)",
   // The files each plug-in's last export generated per directory (path relative to it), with
   // a hash of the text it left: the next export removes those it no longer produces. One row
   // per export, the file list in a single value: thousands of files are read and written at
   // the cost of one row.
   "CREATE TABLE IF NOT EXISTS t_export_record (id INTEGER PRIMARY KEY, plugin_name TEXT NOT NULL, export_dir TEXT NOT NULL, "
   "files BLOB NOT NULL, UNIQUE (plugin_name, export_dir))" };

QString schemaStatement(const char * szSql) { return QString::fromLatin1(szSql).replace("@TRIGGERS@", triggerColumns(" INTEGER NOT NULL DEFAULT 0")); }

} // namespace

const QStringList & modelTables()
{
   static const QStringList s { "t_meta_data", "t_enumeration_value", "t_enumeration", "t_relationship", "t_property", "t_entity", "t_project" };
   return s;
}

QStringList schemaStatements()
{
   QStringList lst;
   for (const char * szSql : k_aszSchema) { lst.append(schemaStatement(szSql)); }
   return lst;
}

QString triggerColumns(const char * szSuffix)
{
   QStringList lst;
   for (const model::entity_trigger & t : model::entityTriggers()) { lst.append(QString("trigger_") + t.key + szSuffix); }
   return lst.join(", ");
}

QString dbErrorText(const QSqlError & err)
{
   QString s = err.databaseText();
   if (s.isEmpty()) { s = err.text(); }
   return s;
}

bool execSql(QSqlDatabase & db, const QString & sql, QString & sError)
{
   QSqlQuery query(db);
   if (query.exec(sql)) { return true; }
   sError = dbErrorText(query.lastError());
   return false;
}

bool listTables(QSqlDatabase & db, QStringList & lstTables, QString & sError)
{
   QSqlQuery query(db);
   if (! query.exec("SELECT name FROM sqlite_master WHERE type = 'table'")) { sError = dbErrorText(query.lastError()); return false; }
   while (query.next()) { lstTables.append(query.value(0).toString()); }
   if (query.lastError().isValid()) { sError = dbErrorText(query.lastError()); return false; }
   return true;
}

} // namespace project_file

zy::ZyBool project_storage::createSchema(QSqlDatabase & database)
{
   QString sError;
   for (const QString & sql : project_file::schemaStatements())
   {
      if (! project_file::execSql(database, sql, sError)) { return zy::ZyBool(false, "cannot create the project tables: " + sError); }
   }
   return zy::ZyBool(true);
}

} // namespace storage
