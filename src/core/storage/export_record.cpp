#include "storage/export_record.h"

#include <QByteArray>
#include <QList>
#include <QSqlQuery>

#include "storage/project_file_schema.h"

namespace storage {

namespace {

// The row's value: a format mark, then the fingerprint, then hash and path (UTF-8) of each
// file, all ended by NUL, which no path holds; compressed, as the paths repeat their folders.
// "3": the hashes are of the files' bytes. Older versions wrote "1" (no fingerprint) and "2",
// whose hashes were of the text as held in memory: read, those are marked as such.
const char k_szFormatNoFingerprint[] = "1";
const char k_szFormatWithFingerprint[] = "2";
const char k_szFormat[] = "3";

zy::ZyBool failed(const QString & sWhat, const QSqlQuery & query)
{
   return zy::ZyBool(false, "cannot " + sWhat + " the record of generated files: " + project_file::dbErrorText(query.lastError()));
}

QByteArray encode(const export_record::files & record, const QByteArray & fingerprint)
{
   QByteArray bytes(k_szFormat, sizeof(k_szFormat));
   if (! fingerprint.contains('\0')) { bytes += fingerprint; }
   bytes += '\0';
   for (auto it = record.constBegin(); it != record.constEnd(); ++it)
   {
      bytes += it.value();
      bytes += '\0';
      bytes += it.key().toUtf8();
      bytes += '\0';
   }
   // The fastest level: the record is small next to the export it follows either way.
   return qCompress(bytes, 1);
}

// A value that does not read back whole counts as no record: the next export then removes
// nothing and records anew.
export_record::files decode(const QByteArray & value, QByteArray & fingerprint)
{
   export_record::files record;
   fingerprint.clear();
   const QByteArray bytes = qUncompress(value);
   const qsizetype iMark = qsizetype(sizeof(k_szFormat));
   const QByteArrayView mark(bytes.constData(), qMin(iMark, bytes.size()));
   const bool bCurrent = (mark == QByteArrayView(k_szFormat, iMark));
   const bool bHeldText = ((mark == QByteArrayView(k_szFormatWithFingerprint, iMark)) || (mark == QByteArrayView(k_szFormatNoFingerprint, iMark)));
   if (! bCurrent && ! bHeldText) { return record; }
   qsizetype iHead = iMark;
   if (mark != QByteArrayView(k_szFormatNoFingerprint, iMark))
   {
      const qsizetype iEnd = bytes.indexOf('\0', iHead);
      if (iEnd < 0) { return record; }
      fingerprint = bytes.mid(iHead, iEnd - iHead);
      iHead = iEnd + 1;
   }
   if (bytes.size() == iHead) { return record; }
   if (! bytes.endsWith('\0')) { fingerprint.clear(); return record; }
   const QByteArray prefix = (bHeldText ? QByteArray(export_record::k_szHeldTextHash) : QByteArray());
   // Read in place: pairs of NUL-ended hash and path.
   for (qsizetype iAt = iHead; iAt < bytes.size();)
   {
      const qsizetype iHashEnd = bytes.indexOf('\0', iAt);
      const qsizetype iPathEnd = ((iHashEnd < 0) ? -1 : bytes.indexOf('\0', iHashEnd + 1));
      if (iPathEnd < 0) { fingerprint.clear(); return export_record::files(); }
      QByteArray hash = bytes.mid(iAt, iHashEnd - iAt);
      if (bHeldText && ! hash.isEmpty() && ! hash.startsWith(prefix)) { hash.prepend(prefix); }
      record.insert(QString::fromUtf8(bytes.constData() + iHashEnd + 1, iPathEnd - iHashEnd - 1), hash);
      iAt = iPathEnd + 1;
   }
   return record;
}

} // namespace

namespace {

// The stored (compressed) record of a plug-in's export directory; bFound false when the project
// file has none (one written before the record existed has not even the table).
zy::ZyBool readStored(QSqlDatabase & db, const QString & plugin, const QString & exportDir, QByteArray & stored, bool & bFound)
{
   bFound = false;
   QStringList lstTables;
   QString sError;
   if (! project_file::listTables(db, lstTables, sError)) { return zy::ZyBool(false, "cannot read the project file: " + sError); }
   if (! lstTables.contains("t_export_record")) { return zy::ZyBool(true); }
   QSqlQuery query(db);
   query.setForwardOnly(true);
   if (! query.prepare("SELECT files FROM t_export_record WHERE plugin_name = ? AND export_dir = ?")) { return failed("read", query); }
   query.addBindValue(plugin);
   query.addBindValue(exportDir);
   if (! query.exec()) { return failed("read", query); }
   if (! query.next()) { return zy::ZyBool(true); }
   stored = query.value(0).toByteArray();
   bFound = true;
   return zy::ZyBool(true);
}

} // namespace

zy::ZyBool export_record::read(QSqlDatabase & db, const QString & plugin, const QString & exportDir, files & result,
                              QByteArray * pFingerprint)
{
   result.clear();
   if (pFingerprint) { pFingerprint->clear(); }
   QByteArray stored;
   bool bFound = false;
   const zy::ZyBool ok = readStored(db, plugin, exportDir, stored, bFound);
   if (! ok.getValue() || ! bFound) { return ok; }
   QByteArray fingerprint;
   result = decode(stored, fingerprint);
   if (pFingerprint) { * pFingerprint = fingerprint; }
   return zy::ZyBool(true);
}

zy::ZyBool export_record::write(QSqlDatabase & db, const QString & plugin, const QString & exportDir, const files & record,
                               const QByteArray & fingerprint)
{
   QString sError;
   // Older project files get the table the first time they record an export.
   for (const QString & sql : project_file::schemaStatements())
   {
      if (sql.contains("t_export_record") && ! project_file::execSql(db, sql, sError)) { return zy::ZyBool(false, "cannot create the record of generated files: " + sError); }
   }
   // One statement: it replaces the row whole or leaves it as it was.
   QSqlQuery query(db);
   if (! query.prepare("INSERT OR REPLACE INTO t_export_record (plugin_name, export_dir, files) VALUES (?, ?, ?)")) { return failed("write", query); }
   query.addBindValue(plugin);
   query.addBindValue(exportDir);
   query.addBindValue(encode(record, fingerprint));
   if (! query.exec()) { return failed("write", query); }
   return zy::ZyBool(true);
}

} // namespace storage
