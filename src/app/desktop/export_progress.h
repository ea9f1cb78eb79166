#pragma once

#include <QElapsedTimer>
#include <QPointer>

#include <functional>

#include <QProgressDialog>
class QWidget;

namespace plugin { class export_files; }

namespace desktop {

// An export runs in the window's thread (the plug-in's settings, questions and script engine
// belong there), so it is cut into turns: each step the plug-in reports lets the event loop run
// once the last turn is a few hundredths of a second old. The window repaints, and a window-modal
// dialog shows the files done of the total with a Cancel button, which stops the export's
// writing at once (export_files::stop) while input to the window stays blocked.
class export_progress
{
   plugin::export_files & m_files;
   std::function<void()> m_fnFlush;
   QPointer<QProgressDialog> m_pDialog;
   QElapsedTimer m_tmStart;
   QElapsedTimer m_tmTurn;
   int m_iItems = 0;
   int m_iSteps = 0;
   int m_iTurns = 0;
   bool m_bDryRun = false;

public:
   // iItems: the model's entities and enumerations, for a total before any record is known.
   // fnFlush shows the messages gathered since the last turn.
   export_progress(QWidget * pParent, plugin::export_files & files, int iItems, std::function<void()> fnFlush);
   ~export_progress();
   export_progress(const export_progress &) = delete;
   export_progress & operator=(const export_progress &) = delete;

   // How long an export runs before the dialog shows (tests show it at once).
   static void setShowAfterMs(int iMs);
   // The plug-in made a step (a message): a turn of the event loop when one is due.
   void step();
   // A turn of the event loop now.
   void turn();
   // Files handled so far, and the total expected: the last export's record, else an estimate
   // from the items done; never below the files done.
   int done() const;
   int total() const;
   // Turns of the event loop given so far.
   int turns() const { return m_iTurns; }
   QProgressDialog * dialog() const { return m_pDialog.data(); }
};

} // namespace desktop
