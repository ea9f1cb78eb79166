#include "export_lifecycle.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QTemporaryFile>

#include "context/ctx_project.h"
#include "gui/plugin/export_files.h"
#include "storage/export_record.h"

namespace app {

namespace {

// The text of a file as a plug-in compares it ('\r' dropped); empty when unreadable.
QString diskText(const QString & path)
{
   QFile file(path);
   if (! file.open(QIODevice::ReadOnly)) { return QString(); }
   QString text = QString::fromUtf8(file.readAll());
   text.remove(QLatin1Char('\r'));
   return text;
}

// Folders a removal emptied go too, up to (not including) the export directory.
void dropEmptiedFolders(const QString & root, const QString & removedFile)
{
   QDir dir = QFileInfo(removedFile).dir();
   const QString sRoot = QDir::cleanPath(root);
   while (QDir::cleanPath(dir.absolutePath()).startsWith(sRoot + '/') && ! QFileInfo(dir.absolutePath()).isSymLink())
   {
      const QString sName = dir.dirName();
      if (! dir.cdUp() || ! dir.rmdir(sName)) { break; }
   }
}

// A recorded file the export no longer produces: what becomes of it.
enum stale_kind { stale_gone, stale_outside, stale_custom, stale_edited, stale_removable };

stale_kind judge(const QString & root, const QString & relPath, const QByteArray & hash)
{
   // A record that names a place outside the export directory was not written by an export
   // (a tampered or damaged project file): that place is not even looked at.
   const QString sClean = QDir::cleanPath(relPath);
   if (relPath.isEmpty() || QDir::isAbsolutePath(relPath) || (sClean == QLatin1String(".")) || (sClean == QLatin1String("..")) ||
       sClean.startsWith(QLatin1String("../")))
   { return stale_outside; }
   const QString sPath = root + '/' + relPath;
   const QFileInfo info(sPath);
   if (! info.exists() && ! info.isSymLink()) { return stale_gone; }
   // Nothing reached through a link is ever removed.
   const QString sParent = QFileInfo(QDir::cleanPath(sPath)).path();
   if (QDir(sParent).canonicalPath() != QDir::cleanPath(QDir(root).canonicalPath() + '/' + QFileInfo(relPath).path()))
   { return stale_edited; }
   // The user's own files are never removed.
   if (relPath.startsWith(QLatin1String("custom/"))) { return stale_custom; }
   // A link or a changed text is no longer what the export left there.
   if (info.isSymLink() || ! info.isFile() || ! plugin::export_files::hasHash(diskText(sPath), hash)) { return stale_edited; }
   return stale_removable;
}

} // namespace

void export_lifecycle::attachRecord(const QString & plugin, plugin::export_files & files, const std::function<void()> & fnOnBegin)
{
   // The plug-in asks for the fingerprint before it begins, then begin() wants the record: both
   // come from one read of the project file, kept here in between.
   struct read_record
   {
      QString sKey;
      bool bHeld = false;
      zy::ZyBool ok = zy::ZyBool(true);
      plugin::export_files::recorded_files files;
      QByteArray fingerprint;
   };
   auto pHeld = std::make_shared<read_record>();
   auto readInto = [plugin](const QString & recordKey, read_record & r)
   {
      r = read_record();
      r.sKey = recordKey;
      r.bHeld = true;
      QSqlDatabase db = context::ctx_project::getDatabase();
      if (recordKey.isEmpty() || ! db.isValid()) { r.ok = zy::ZyBool(false, "no project file"); return; }
      r.ok = storage::export_record::read(db, plugin, recordKey, r.files, & r.fingerprint);
   };
   // The reader belongs to files: the pointer lives as long as it.
   plugin::export_files * pFiles = & files;
   files.setRecordReader([fnOnBegin, pFiles, pHeld, readInto](const QString & recordKey, plugin::export_files::recorded_files & result)
   {
      if (fnOnBegin) { fnOnBegin(); }
      if (! pHeld->bHeld || (pHeld->sKey != recordKey)) { readInto(recordKey, * pHeld); }
      read_record r = std::move(* pHeld);
      * pHeld = read_record();
      result = std::move(r.files);
      pFiles->setPreviousFingerprint(r.ok.getValue() ? r.fingerprint : QByteArray());
      return r.ok;
   });
   files.setFingerprintReader([pHeld, readInto](const QString & recordKey)
   {
      if (! pHeld->bHeld || (pHeld->sKey != recordKey)) { readInto(recordKey, * pHeld); }
      return (pHeld->ok.getValue() ? pHeld->fingerprint : QByteArray());
   });
}

zy::ZyBool export_lifecycle::finish(const QString & plugin, const plugin::export_files & files, bool bDryRun, bool bKeepStale,
                                    export_outcome & outcome)
{
   const QString sRoot = files.root();
   const QDir root(sRoot);
   storage::export_record::files newRecord;
   newRecord.reserve(files.files().size());
   for (const plugin::export_files::file & f : files.files())
   {
      const QString sRel = files.relativePath(f.path);
      newRecord.insert(sRel, f.hash);
      if (f.status == plugin::export_files::status_unchanged) { ++outcome.unchanged; outcome.lines.append("  " + sRel); continue; }
      ++outcome.written;
      outcome.lines.append(((f.status == plugin::export_files::status_created) ? "A " : "M ") + sRel);
   }
   QSqlDatabase db = context::ctx_project::getDatabase();
   // A model held in memory has no project file to keep a record in.
   if (sRoot.isEmpty() || ! db.isValid()) { return zy::ZyBool(true); }

   storage::export_record::files oldRecord = files.previousRecord();
   QByteArray oldFingerprint = files.previousFingerprint();
   if (! files.previousRecordRead())
   {
      zy::ZyBool ok = storage::export_record::read(db, plugin, files.recordKey(), oldRecord, & oldFingerprint);
      if (! ok) { return ok; }
   }
   QStringList lstStale;
   for (auto it = oldRecord.constBegin(); it != oldRecord.constEnd(); ++it)
   {
      if (! newRecord.contains(it.key())) { lstStale.append(it.key()); }
   }
   lstStale.sort();
   for (const QString & sRel : lstStale)
   {
      switch (judge(sRoot, sRel, oldRecord.value(sRel)))
      {
         case stale_gone: break;
         case stale_outside: outcome.kept.append(sRel + " : recorded, but outside the export directory : left alone"); break;
         case stale_custom: outcome.kept.append(sRel + " : user file no longer used by the model, kept"); break;
         case stale_edited: outcome.kept.append(sRel + " : no longer generated but changed since the last export, kept"); break;
         case stale_removable:
            if (bKeepStale) { outcome.kept.append(sRel + " : no longer generated, kept (--keep-stale)"); newRecord.insert(sRel, oldRecord.value(sRel)); break; }
            ++outcome.removed;
            outcome.lines.append("D " + sRel);
            if (bDryRun) { break; }
            if (! QFile::remove(root.filePath(sRel))) { return zy::ZyBool(false, "cannot remove the stale file '" + QDir::toNativeSeparators(root.filePath(sRel)) + "'"); }
            dropEmptiedFolders(sRoot, root.filePath(sRel));
            break;
      }
   }
   // An export that changed nothing leaves the project file alone (no write, no sync to disk).
   const QByteArray fingerprint = (files.isStopped() ? QByteArray() : files.fingerprint());
   if (bDryRun || ((newRecord == oldRecord) && (fingerprint == oldFingerprint))) { return zy::ZyBool(true); }
   return storage::export_record::write(db, plugin, files.recordKey(), newRecord, fingerprint);
}

zy::ZyBool export_lifecycle::finishStopped(const QString & plugin, const plugin::export_files & files, export_outcome & outcome)
{
   const QString sRoot = files.root();
   QSqlDatabase db = context::ctx_project::getDatabase();
   storage::export_record::files record = files.previousRecord();
   if (! sRoot.isEmpty() && db.isValid() && ! files.previousRecordRead())
   {
      zy::ZyBool ok = storage::export_record::read(db, plugin, files.recordKey(), record);
      if (! ok) { return ok; }
   }
   const storage::export_record::files oldRecord = record;
   for (const plugin::export_files::file & f : files.files())
   {
      const QString sRel = files.relativePath(f.path);
      record.insert(sRel, f.hash);
      if (f.status == plugin::export_files::status_unchanged) { ++outcome.unchanged; outcome.lines.append("  " + sRel); continue; }
      ++outcome.written;
      outcome.lines.append(((f.status == plugin::export_files::status_created) ? "A " : "M ") + sRel);
   }
   // Nothing written: the record, fingerprint included, still says what is on disk. Otherwise
   // the files not reached were made from other inputs than those written: no fingerprint.
   if (sRoot.isEmpty() || ! db.isValid() || files.isDryRun() || (record == oldRecord)) { return zy::ZyBool(true); }
   return storage::export_record::write(db, plugin, files.recordKey(), record, QByteArray());
}

QString export_lifecycle::summary(const export_outcome & outcome, double dSeconds, bool bDryRun)
{
   const int iTotal = (outcome.written + outcome.unchanged + outcome.removed);
   return QString::number(iTotal) + " files: " + QString::number(outcome.written) + (bDryRun ? " to write, " : " written, ") +
          QString::number(outcome.unchanged) + " unchanged, " + QString::number(outcome.removed) + (bDryRun ? " to remove (" : " removed (") +
          QString::number(dSeconds, 'f', 2) + " s)";
}

zy::ZyBool export_lifecycle::unifiedDiff(const QString & relPath, const QString & oldText, const QString & newText,
                                         const QString & ignoredLine, QString & result)
{
   QTemporaryFile oldFile, newFile;
   if (! oldFile.open() || ! newFile.open()) { return zy::ZyBool(false, "cannot create a temporary file for the diff"); }
   oldFile.write(oldText.toUtf8());
   newFile.write(newText.toUtf8());
   oldFile.flush();
   newFile.flush();
   QStringList args { "-u", "--label", "a/" + relPath, "--label", "b/" + relPath };
   if (! ignoredLine.isEmpty()) { args << "-I" << ignoredLine; }
   args << oldFile.fileName() << newFile.fileName();
   QProcess diff;
   diff.start("diff", args);
   if (! diff.waitForStarted()) { return zy::ZyBool(false, "cannot run 'diff' (install diffutils) : " + diff.errorString()); }
   diff.closeWriteChannel();
   if (! diff.waitForFinished(-1)) { return zy::ZyBool(false, "'diff' did not finish : " + diff.errorString()); }
   // 0: the same, 1: different, anything else: trouble.
   if ((diff.exitStatus() != QProcess::NormalExit) || (diff.exitCode() > 1))
   { return zy::ZyBool(false, "'diff' failed : " + QString::fromLocal8Bit(diff.readAllStandardError())); }
   result = QString::fromUtf8(diff.readAllStandardOutput());
   return zy::ZyBool(true);
}

} // namespace app
