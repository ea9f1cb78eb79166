#include "cli_host.h"

#include <QFileInfo>
#include <QRegularExpression>

#include "gui/plugin/export_interface.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "tools/terminal_text.h"

namespace app {

namespace {

bool isDecline(QMessageBox::StandardButton answer)
{
   return ((answer == QMessageBox::No) || (answer == QMessageBox::NoToAll) || (answer == QMessageBox::Cancel) ||
           (answer == QMessageBox::Abort) || (answer == QMessageBox::Close));
}

// A quoted path of a question that names an existing file where a directory was expected.
QString quotedFile(const QString & text)
{
   const QRegularExpression quoted("'([^'\\n]+)'");
   for (QRegularExpressionMatchIterator itr = quoted.globalMatch(text); itr.hasNext(); )
   {
      const QString path = itr.next().captured(1);
      const QFileInfo info(path);
      if (info.isAbsolute() && info.exists() && ! info.isDir()) { return path; }
   }
   return QString();
}

} // namespace

QString cli_host::incompleteExport(plugin::export_interface * pPlugin, int iErrorMessages)
{
   const QList<tools::message_box::record> lstAsked = tools::message_box::history();
   for (const tools::message_box::record & r : lstAsked)
   {
      if ((r.kind == tools::message_box::kind_question) && isDecline(r.answer))
      { return "export cancelled : the question '" + r.text.section('\n', 0, 0) + "' was answered No"; }
   }

   if (! m_lstDismissedDialogs.isEmpty())
   {
      // The plug-in offered to create its directory, was told Yes, and still had none: a file
      // stands where the directory should be.
      for (const tools::message_box::record & r : lstAsked)
      {
         const QString path = ((r.kind == tools::message_box::kind_question) ? quotedFile(r.text) : QString());
         if (! path.isEmpty()) { return "export cancelled : the export path '" + path + "' is an existing file, not a directory"; }
      }
      return "export cancelled : the plug-in needed its dialog '" + m_lstDismissedDialogs.first() +
             "', which an unattended run cannot show; give its settings on the command line (see 'tavrel plugins')";
   }

   std::shared_ptr<tools::custom_javascript> pScript = (pPlugin ? pPlugin->getCustomScript() : nullptr);
   const int iScriptFailures = (pScript ? pScript->getFailedCallCount() : 0);
   // Failures the plug-in passed over without a message (start and end of the export, after a
   // file was closed) are shown here, or nobody would learn of them.
   if (iScriptFailures > iErrorMessages)
   {
      m_err << "error: " << tools::terminal_text::escape(pScript->getLastFailure()) << "\n";
      m_err.flush();
   }
   if ((iErrorMessages == 0) && (iScriptFailures == 0)) { return QString(); }
   QString text = "export incomplete : " + QString::number(iErrorMessages) + " error(s) reported";
   if (iScriptFailures > 0) { text += ", " + QString::number(iScriptFailures) + " user-script call(s) failed"; }
   return text + "; the generated files are not what the model asks for";
}

} // namespace app
