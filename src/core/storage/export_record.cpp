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
   // Read once, front to back: no cache of the rows already read.
   query.setForwardOnly(true);
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
   // Many rows per statement: an export of thousands of files records them in a few milliseconds.
   const int k_iRowsPerInsert = 200;
   const QList<QString> lstPaths = record.keys();
   for (qsizetype iFirst = 0; iFirst < lstPaths.size(); iFirst += k_iRowsPerInsert)
   {
      const qsizetype iCount = qMin<qsizetype>(k_iRowsPerInsert, lstPaths.size() - iFirst);
      QStringList lstRows;
      for (qsizetype i = 0; i < iCount; ++i) { lstRows << QStringLiteral("(?, ?, ?, ?)"); }
      if (! query.prepare("INSERT INTO t_export_file (plugin_name, export_dir, file_path, content_hash) VALUES " + lstRows.join(", "))) { return rollback("write"); }
      for (qsizetype i = iFirst; i < (iFirst + iCount); ++i)
      {
         query.addBindValue(plugin);
         query.addBindValue(exportDir);
         query.addBindValue(lstPaths.at(i));
         // A file left to the user has no hash: an empty text, not NULL.
         const QByteArray hash = record.value(lstPaths.at(i));
         query.addBindValue(hash.isEmpty() ? QStringLiteral("") : QString::fromLatin1(hash));
      }
      if (! query.exec()) { return rollback("write"); }
   }
   if (! db.commit()) { return zy::ZyBool(false, "cannot write the record of generated files: " + project_file::dbErrorText(db.lastError())); }
   return zy::ZyBool(true);
}

} // namespace storage
