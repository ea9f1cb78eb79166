#include "gui/plugin/export_files.h"

#include <cstring>

#include <QDir>

#include <xxhash.h>

#include "storage/export_record.h"

namespace plugin {

namespace {

// Plug-ins build their paths from a clean root and plain names: only those that hold a step to
// fold ("//", "/./", "/../", a trailing "/", "/." or "/..", a backslash) need the general
// clean-up, which costs more than the rest of a report. One pass tells, rather than a search
// per step.
bool isPlainPath(const QString & path)
{
   const qsizetype n = path.size();
   const QChar * const p = path.constData();
   if ((n == 0) || (p[n - 1] == QLatin1Char('/'))) { return false; }
   for (qsizetype i = 0; i < n; ++i)
   {
      const char16_t c = p[i].unicode();
      if (c == u'\\') { return false; }
      if ((c != u'/') || ((i + 1) >= n)) { continue; }
      if (p[i + 1] == QLatin1Char('/')) { return false; }
      if (p[i + 1] != QLatin1Char('.')) { continue; }
      qsizetype j = i + 2;
      if ((j < n) && (p[j] == QLatin1Char('.'))) { ++j; }
      if ((j == n) || (p[j] == QLatin1Char('/'))) { return false; }
   }
   return true;
}

QString cleanPathOf(const QString & path)
{
   return (isPlainPath(path) ? path : QDir::cleanPath(path));
}

} // namespace

void export_files::begin(const QString & root, const QString & ignoredLine, const QString & recordKey)
{
   m_sRoot = QDir(root).absolutePath();
   m_sRootPrefix = (QDir::cleanPath(m_sRoot) + '/');
   m_sIgnoredLine = ignoredLine;
   m_sRecordKey = (recordKey.isEmpty() ? QString() : QDir::cleanPath(QDir(root).absoluteFilePath(recordKey)));
   m_lstFiles.clear();
   m_hashPrevious.clear();
   m_fingerprint.clear();
   m_previousFingerprint.clear();
   m_previousRead = (m_fnReadRecord ? m_fnReadRecord(this->recordKey(), m_hashPrevious) : zy::ZyBool(false, "no record was read"));
}

QByteArray export_files::recordedFingerprint(const QString & root, const QString & recordKey) const
{
   if (! m_fnReadFingerprint) { return QByteArray(); }
   // The key begin() would use for the same arguments.
   const QString sKey = (recordKey.isEmpty() ? QDir(root).absolutePath() : QDir::cleanPath(QDir(root).absoluteFilePath(recordKey)));
   return m_fnReadFingerprint(sKey);
}

QString export_files::relativePath(const QString & path) const
{
   // Reported paths are clean and absolute, below the root but for a plug-in's odd one out.
   return (path.startsWith(m_sRootPrefix) ? path.mid(m_sRootPrefix.size()) : QDir(m_sRoot).relativeFilePath(path));
}

bool export_files::report(const QString & path, bool bExists, const QString & oldText, const QString & newText, bool bSame,
                          const QByteArray & newHash)
{
   if (m_bStopped) { return false; }
   return append(path, bExists, oldText, newText, bSame, newHash);
}

void export_files::reportWritten(const QString & path, bool bExists, const QString & oldText, const QString & newText, const QByteArray & newHash)
{
   append(path, bExists, oldText, newText, false, newHash);
}

bool export_files::append(const QString & path, bool bExists, const QString & oldText, const QString & newText, bool bSame,
                          const QByteArray & newHash)
{
   file f;
   f.path = cleanPathOf(path);
   f.status = bSame ? status_unchanged : (bExists ? status_changed : status_created);
   // A dry run records nothing, so it needs no hash.
   if (! m_bDryRun)
   {
      if (f.status != status_unchanged) { f.hash = (newHash.isEmpty() ? hashOf(newText) : newHash); }
      else
      {
         // An unchanged file still holds what the last export left there (banner included), so its
         // recorded hash stands. A user's edit that happens to match the new text keeps the old
         // hash: at worst the file is kept rather than removed once it goes stale.
         // A hash of an older kind is made anew, so that the next export can check the file.
         const auto it = m_hashPrevious.constFind(relativePath(f.path));
         const bool bRecorded = ((it != m_hashPrevious.constEnd()) && ! it->isEmpty() && ! it->startsWith(storage::export_record::k_szHeldTextHash));
         f.hash = (bRecorded ? * it : hashOf(oldText));
      }
   }
   if (m_bKeepTexts && (f.status != status_unchanged)) { f.oldText = oldText; f.newText = newText; }
   m_lstFiles.append(f);
   return ((f.status != status_unchanged) && ! m_bDryRun);
}

void export_files::reportKept(const QString & path)
{
   if (m_bStopped) { return; }
   file f;
   f.path = QDir::cleanPath(path);
   m_lstFiles.append(f);
}

void export_files::reportInput(const QString & path)
{
   const QString sPath = QDir::cleanPath(QDir(path).absolutePath());
   if (! m_lstInputs.contains(sPath)) { m_lstInputs.append(sPath); }
}

void export_files::clear()
{
   m_bStopped = false;
   m_lstInputs.clear();
   m_sRoot.clear();
   m_sRootPrefix.clear();
   m_sIgnoredLine.clear();
   m_sRecordKey.clear();
   m_lstFiles.clear();
   m_hashPrevious.clear();
   m_fingerprint.clear();
   m_previousFingerprint.clear();
   m_previousRead = zy::ZyBool(false, "no record was read");
}

namespace {

QByteArray hexOf(XXH64_hash_t h) { return QByteArray::number(static_cast<qulonglong>(h), 16).rightJustified(16, '0'); }

} // namespace

QByteArray export_files::hashOfBytes(QByteArrayView bytes)
{
   // A fast hash: it only tells whether the user changed a file since the export wrote it, and
   // it costs an export of thousands of files next to nothing.
   return hexOf(XXH3_64bits(bytes.data(), static_cast<size_t>(bytes.size())));
}

QByteArray export_files::hashOf(const QString & text) { return hashOfBytes(text.toUtf8()); }

bool export_files::hasHash(const QString & text, const QByteArray & recorded)
{
   if (recorded.startsWith(storage::export_record::k_szHeldTextHash))
   {
      const XXH64_hash_t h = XXH3_64bits(text.constData(), static_cast<size_t>(text.size()) * sizeof(QChar));
      return (recorded.mid(qsizetype(::strlen(storage::export_record::k_szHeldTextHash))) == hexOf(h));
   }
   return (hashOf(text) == recorded);
}

} // namespace plugin
