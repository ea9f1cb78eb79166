#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include "tavrelgui_export.h"
#include "zy/ZyBool.h"

#include <atomic>
#include <functional>

namespace plugin {

// What an export plug-in tells the host about every file it generates, before writing it. The
// host hands one to the plug-in (export_interface::setExportFiles); a plug-in that was given
// none writes its files without reporting them. In a dry run the plug-in reports and writes
// nothing.
class TAVRELGUI_EXPORT export_files
{
public:
   enum file_status { status_unchanged = 0, status_created = 1, status_changed = 2 };

   // Path relative to the root (with '/') to the hash of its text.
   typedef QHash<QString, QByteArray> recorded_files;
   // Reads the record of the last export under a record key; set by the host.
   typedef std::function<zy::ZyBool(const QString & recordKey, recorded_files & result)> record_reader;
   // Reads only the fingerprint of that record; set by the host.
   typedef std::function<QByteArray(const QString & recordKey)> fingerprint_reader;

   struct file
   {
      QString path;          // absolute
      file_status status = status_unchanged;
      QByteArray hash;       // of the text on disk once the export is over; none in a dry run
      QString oldText;       // kept only when texts are asked for
      QString newText;
   };

private:
   bool m_bDryRun = false;
   bool m_bKeepTexts = false;
   // Set by the window's thread, read by the plug-in's writers on any thread.
   std::atomic<bool> m_bStopped { false };
   QString m_sRoot;
   QString m_sRootPrefix;   // the clean root and '/'
   QString m_sIgnoredLine;
   QString m_sRecordKey;
   QList<file> m_lstFiles;
   QStringList m_lstInputs;
   record_reader m_fnReadRecord;
   fingerprint_reader m_fnReadFingerprint;
   recorded_files m_hashPrevious;
   QByteArray m_fingerprint;
   QByteArray m_previousFingerprint;
   zy::ZyBool m_previousRead = zy::ZyBool(false, "no record was read");

   bool append(const QString & path, bool bExists, const QString & oldText, const QString & newText, bool bSame, const QByteArray & newHash);

public:
   void setDryRun(bool b) { m_bDryRun = b; }
   bool isDryRun() const { return m_bDryRun; }
   // Keeps the former and the new text of every created or changed file (for a diff).
   void setKeepTexts(bool b) { m_bKeepTexts = b; }
   // The user cancelled: from now on report() neither lists nor lets the plug-in write a file, so
   // each file is either as it was or as this export wrote it, and files() holds those handled.
   void stop() { m_bStopped = true; }
   bool isStopped() const { return m_bStopped; }
   // A file the plug-in wrote before it saw the stop: listed whatever the state, so the record
   // says what is on disk.
   // newHash, when the plug-in has it, is hashOf(newText) (a worker thread that encoded the text
   // anyway computes it there).
   void reportWritten(const QString & path, bool bExists, const QString & oldText, const QString & newText, const QByteArray & newHash = QByteArray());

   // Called by the plug-in when it starts writing into root. ignoredLine is a regular expression
   // of the lines its rewrite rule does not count as a change (a dated banner), or empty.
   // recordKey names the record of this export in the project (the root when empty): a plug-in
   // that writes one chosen file keys it by that file, so that another file of the same folder
   // is never taken for a stale one.
   void begin(const QString & root, const QString & ignoredLine, const QString & recordKey = QString());
   QString root() const { return m_sRoot; }
   QString recordKey() const { return (m_sRecordKey.isEmpty() ? m_sRoot : m_sRecordKey); }
   QString ignoredLine() const { return m_sIgnoredLine; }

   // One generated file: its text on disk (empty when absent), the text generated, and whether
   // the plug-in takes them as the same. Returns true when the plug-in should write the file.
   bool report(const QString & path, bool bExists, const QString & oldText, const QString & newText, bool bSame,
               const QByteArray & newHash = QByteArray());

   // A file the export still produces but leaves to the user once it exists (no hash).
   void reportKept(const QString & path);

   const QList<file> & files() const { return m_lstFiles; }
   // The path of a reported file relative to the root.
   QString relativePath(const QString & path) const;

   // Lets begin() read the record of the last export, so that an unchanged file recorded there
   // keeps its hash instead of having its text hashed again.
   void setRecordReader(const record_reader & fn) { m_fnReadRecord = fn; }
   // The record begin() read, and whether it could read it.
   const recorded_files & previousRecord() const { return m_hashPrevious; }
   const zy::ZyBool & previousRecordRead() const { return m_previousRead; }

   // What the plug-in made this export's files from (model, settings, templates, its own
   // build), recorded with them; empty when it vouches for nothing (a user script ran). A
   // plug-in that finds the same one in the record may trust every recorded file that still
   // has its recorded hash instead of generating it again.
   void setFingerprint(const QByteArray & fingerprint) { m_fingerprint = fingerprint; }
   const QByteArray & fingerprint() const { return m_fingerprint; }
   // The fingerprint of the record begin() read (set by the record reader); empty when none.
   void setPreviousFingerprint(const QByteArray & fingerprint) { m_previousFingerprint = fingerprint; }
   const QByteArray & previousFingerprint() const { return m_previousFingerprint; }
   // The fingerprint recorded by the last export into root, read before begin() (no side effect):
   // a plug-in whose inputs give the same one may skip the checks that export passed. Empty
   // when there is none or no reader.
   void setFingerprintReader(const fingerprint_reader & fn) { m_fnReadFingerprint = fn; }
   QByteArray recordedFingerprint(const QString & root, const QString & recordKey = QString()) const;

   // A file the export read besides the model (a user script named in the stored settings): a
   // watch follows it too.
   void reportInput(const QString & path);
   const QStringList & inputs() const { return m_lstInputs; }
   void clear();

   // The hash recorded for a file's text (the same whoever computes it): that of its bytes as
   // written (UTF-8), so that a file on disk is checked without decoding it.
   static QByteArray hashOf(const QString & text);
   static QByteArray hashOfBytes(QByteArrayView bytes);
   // Whether a text is the one a recorded hash stands for; a record kept by an older version
   // hashed the text as held in memory, and its hashes are marked so.
   static bool hasHash(const QString & text, const QByteArray & recorded);
};

} // namespace plugin
