#include "storage/export_record.h"

#include <QSqlQuery>

#include "storage/project_file_schema.h"

namespace storage {

namespace {

zy::ZyBool failed(const QString & sWhat, const QSqlQuery & query)
{
   return zy::ZyBool(false, "cannot " + sWhat + " the record of generated files: " + project_file::dbErrorText(query.lastError()));
}

} // namespace

zy::ZyBool export_record::read(QSqlDatabase & db, const QString & plugin, const QString & exportDir, files & result)
{
   result.clear();
   QStringList lstTables;
   QString sError;
   if (! project_file::listTables(db, lstTables, sError)) { return zy::ZyBool(false, "cannot read the project file: " + sError); }
   // A project file written before the record existed has none yet.
   if (! lstTables.contains("t_export_file")) { return zy::ZyBool(true); }
   QSqlQuery query(db);
   if (! query.prepare("SELECT file_path, content_hash FROM t_export_file WHERE plugin_name = ? AND export_dir = ?")) { return failed("read", query); }
   query.addBindValue(plugin);
   query.addBindValue(exportDir);
   if (! query.exec()) { return failed("read", query); }
   while (query.next()) { result.insert(query.value(0).toString(), query.value(1).toString().toLatin1()); }
   return zy::ZyBool(true);
}

zy::ZyBool export_record::write(QSqlDatabase & db, const QString & plugin, const QString & exportDir, const files & record)
{
   QString sError;
   // Older project files get the table the first time they record an export.
   for (const QString & sql : project_file::schemaStatements())
   {
      if (sql.contains("t_export_file") && ! project_file::execSql(db, sql, sError)) { return zy::ZyBool(false, "cannot create the record of generated files: " + sError); }
   }
   if (! db.transaction()) { return zy::ZyBool(false, "cannot write the record of generated files: " + project_file::dbErrorText(db.lastError())); }
   QSqlQuery query(db);
   auto rollback = [&](const QString & sWhat) { zy::ZyBool ko = failed(sWhat, query); db.rollback(); return ko; };
   if (! query.prepare("DELETE FROM t_export_file WHERE plugin_name = ? AND export_dir = ?")) { return rollback("write"); }
   query.addBindValue(plugin);
   query.addBindValue(exportDir);
   if (! query.exec()) { return rollback("write"); }
   if (! query.prepare("INSERT INTO t_export_file (plugin_name, export_dir, file_path, content_hash) VALUES (?, ?, ?, ?)")) { return rollback("write"); }
   for (auto itr = record.constBegin(); itr != record.constEnd(); ++itr)
   {
      query.addBindValue(plugin);
      query.addBindValue(exportDir);
      query.addBindValue(itr.key());
      // A file left to the user has no hash: an empty text, not NULL.
      query.addBindValue(itr.value().isEmpty() ? QStringLiteral("") : QString::fromLatin1(itr.value()));
      if (! query.exec()) { return rollback("write"); }
   }
   if (! db.commit()) { return zy::ZyBool(false, "cannot write the record of generated files: " + project_file::dbErrorText(db.lastError())); }
   return zy::ZyBool(true);
}

} // namespace storage
