#pragma once

#include <QString>
#include <QStringList>

#include <functional>

#include "zy/ZyBool.h"

namespace plugin { class export_files; }

namespace app {

// What one export did (or would do) to its directory, as the host tells the user.
struct export_outcome
{
   int written = 0;
   int unchanged = 0;
   int removed = 0;
   // "A path", "M path", "D path" and, for unchanged files, "  path" (paths relative to the
   // export directory), in the order the files were reported, removed ones last.
   QStringList lines;
   // Recorded files kept although the export no longer produces them, with the reason.
   QStringList kept;

   bool upToDate() const { return ((written == 0) && (removed == 0)); }
};

// The host's side of an export's life cycle, shared by both hosts: compares the files a plug-in
// reported with the record of its last export into the same directory, removes the stale ones
// and records the new set in the project file.
class export_lifecycle
{
public:
   // Before an export of plugin: lets files read the record of its last export once, when the
   // plug-in names its directory, for finish() and the hashes of unchanged files to share.
   // fnOnBegin, when given, runs first (the plug-in has checked the model and starts writing).
   static void attachRecord(const QString & plugin, plugin::export_files & files, const std::function<void()> & fnOnBegin = {});
   // After a complete export (or dry run) of plugin: fills outcome; unless bDryRun removes the
   // stale files (not with bKeepStale) and writes the new record.
   static zy::ZyBool finish(const QString & plugin, const plugin::export_files & files, bool bDryRun, bool bKeepStale,
                            export_outcome & outcome);
   // After an export the user stopped (files.isStopped()): the files it handled are recorded as
   // they now are, every other recorded file keeps its entry (it was not touched), nothing is
   // removed. The record then describes the directory as the stop left it.
   static zy::ZyBool finishStopped(const QString & plugin, const plugin::export_files & files, export_outcome & outcome);
   // "50 files: 3 written, 45 unchanged, 2 removed (0.12 s)".
   static QString summary(const export_outcome & outcome, double dSeconds, bool bDryRun);
   // The unified diff of a file's former and new text from the system's diff; the lines
   // matching ignoredLine (a dated banner) count as no change.
   static zy::ZyBool unifiedDiff(const QString & relPath, const QString & oldText, const QString & newText,
                                 const QString & ignoredLine, QString & result);
};

} // namespace app
