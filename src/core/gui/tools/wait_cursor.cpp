#include "gui/tools/wait_cursor.h"

#include <QCursor>
#include <QGuiApplication>
#include <QThread>

namespace tools {

wait_cursor::wait_cursor()
{
   // Cursors belong to the GUI thread of a GUI application; elsewhere this is a no-op.
   QGuiApplication * app = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
   if (! app || (QThread::currentThread() != app->thread())) { return; }
   QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
   m_bActive = true;
}

wait_cursor::~wait_cursor()
{
   if (m_bActive && QCoreApplication::instance()) { QGuiApplication::restoreOverrideCursor(); }
}

} // namespace tools
