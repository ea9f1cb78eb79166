#include "cli_host.h"
#include "export_lifecycle.h"

#include <QDateTime>
#include <QDir>

#include "gui/plugin/export_files.h"
#include "gui/plugin/export_interface.h"
#include "tools/terminal_text.h"

namespace app {

int cli_host::finishExport(plugin::export_interface * pPlugin, const plugin::export_files & files, const export_flags & flags, qint64 iStartMs)
{
   export_outcome outcome;
   const zy::ZyBool ok = export_lifecycle::finish(pPlugin->getName(), files, flags.dryRun, flags.keepStale, outcome);
   if (! ok) { return failure(ok.getDesc()); }
   if (flags.listOutputs)
   {
      // Nothing but the paths on stdout, so that a build system reads them as they are.
      for (const plugin::export_files::file & f : files.files())
      { m_out << tools::terminal_text::escape(QDir::cleanPath(f.path), false) << "\n"; }
      m_out.flush();
      return exit_ok;
   }

   // A plain export lists what it removed; a dry run what it would change.
   for (const QString & sLine : outcome.lines)
   {
      const bool bUnchanged = sLine.startsWith(QLatin1String("  "));
      if (bUnchanged ? ! flags.verbose : ! (flags.dryRun || flags.verbose || sLine.startsWith('D'))) { continue; }
      m_out << tools::terminal_text::escape(sLine, false) << "\n";
   }
   for (const QString & sKept : outcome.kept) { m_err << "kept: " << tools::terminal_text::escape(sKept, false) << "\n"; }
   if (flags.diff)
   {
      const QDir root(files.root());
      for (const plugin::export_files::file & f : files.files())
      {
         if (f.status != plugin::export_files::status_changed) { continue; }
         QString sDiff;
         const zy::ZyBool okDiff = export_lifecycle::unifiedDiff(root.relativeFilePath(f.path), f.oldText, f.newText, files.ignoredLine(), sDiff);
         if (! okDiff) { return failure(okDiff.getDesc()); }
         m_out << tools::terminal_text::escape(sDiff, true);
      }
   }
   const double dSeconds = (QDateTime::currentMSecsSinceEpoch() - iStartMs) / 1000.0;
   m_out << export_lifecycle::summary(outcome, dSeconds, flags.dryRun) << "\n";
   m_out.flush();
   m_err.flush();
   if (flags.check && ! outcome.upToDate()) { return failure("the generated files are not up to date with the model"); }
   return exit_ok;
}

} // namespace app
