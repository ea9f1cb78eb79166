#include "desktop/export_progress.h"

#include <QCoreApplication>
#include <QProgressDialog>

#include <algorithm>

#include "gui/plugin/export_files.h"

namespace desktop {

namespace {

// Well under the 100 ms a user notices; each turn costs far less than that.
const int k_iTurnMs = 30;
// A short export finishes before any dialog could be read.
int s_iShowAfterMs = 250;

} // namespace

export_progress::export_progress(QWidget * pParent, plugin::export_files & files, int iItems, std::function<void()> fnFlush)
   : m_files(files), m_fnFlush(std::move(fnFlush)), m_iItems(std::max(1, iItems)), m_bDryRun(files.isDryRun())
{
   m_pDialog = new QProgressDialog(pParent);
   m_pDialog->setObjectName("export_progress");
   m_pDialog->setWindowTitle(m_bDryRun ? QObject::tr("Export preview") : QObject::tr("Export"));
   m_pDialog->setWindowModality(Qt::WindowModal);
   m_pDialog->setAutoClose(false);
   m_pDialog->setAutoReset(false);
   // Shown by turn() only: the dialog's own timer would show it between two turns.
   m_pDialog->setMinimumDuration(INT_MAX);
   m_pDialog->setRange(0, 0);
   m_pDialog->setLabelText(QObject::tr("Starting..."));
   QObject::connect(m_pDialog, & QProgressDialog::canceled, m_pDialog, [this]() {
      m_files.stop();
      m_pDialog->setLabelText(QObject::tr("Stopping : no further file is written..."));
   });
   m_pDialog->hide();
   m_tmStart.start();
   m_tmTurn.start();
}

void export_progress::setShowAfterMs(int iMs) { s_iShowAfterMs = iMs; }

export_progress::~export_progress()
{
   if (m_pDialog) { m_pDialog->hide(); delete m_pDialog; }
}

int export_progress::done() const { return int(m_files.files().size()); }

int export_progress::total() const
{
   const int iDone = done();
   const int iRecorded = int(m_files.previousRecord().size());
   if (iRecorded > 0) { return std::max(iRecorded, iDone); }
   // No record yet (a first export): files per item so far, times the items.
   const int iSteps = std::min(std::max(1, m_iSteps), m_iItems);
   return std::max(iDone, int((qint64(iDone) * m_iItems) / iSteps));
}

void export_progress::step()
{
   ++m_iSteps;
   if (m_tmTurn.elapsed() >= k_iTurnMs) { turn(); }
}

void export_progress::turn()
{
   if (m_fnFlush) { m_fnFlush(); }
   if (m_pDialog && ! m_files.isStopped())
   {
      const int iDone = done();
      const int iTotal = total();
      m_pDialog->setMaximum(iTotal);
      m_pDialog->setValue(std::min(iDone, iTotal));
      m_pDialog->setLabelText((m_bDryRun ? QObject::tr("Dry run : %1 of %2 files") : QObject::tr("Exporting : %1 of %2 files"))
                                 .arg(iDone).arg(iTotal));
      if (! m_pDialog->isVisible() && (m_tmStart.elapsed() >= s_iShowAfterMs)) { m_pDialog->show(); }
   }
   ++m_iTurns;
   QCoreApplication::processEvents();
   m_tmTurn.restart();
}

} // namespace desktop
