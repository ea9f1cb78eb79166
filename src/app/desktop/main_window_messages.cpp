// The message area: the host's and the plug-ins' messages with the time they came.

#include "desktop/main_window.h"

#include <QAction>
#include <QDockWidget>
#include <QListWidget>
#include <QStatusBar>
#include <QStyle>
#include <QTime>

#include <algorithm>

#include "desktop/export_progress.h"
#include "script/custom_javascript.h"

namespace desktop {

namespace {

// An export of thousands of entities adds a line for each: the oldest lines go beyond this.
const int k_iMaxMessageLines = 20000;
// Width of the "hh:mm:ss  " stamp before each message.
const int k_iStampChars = 10;

} // namespace

void main_window::createMessagesDock()
{
   m_lstMessages = new QListWidget(this);
   m_lstMessages->setObjectName("m_lstMessages");
   // One line per item, all of one height: adding a line costs the same whatever the list holds
   // (wrapped items made the list measure every line's text again at each addition). A message
   // of several lines gets one item per line; the tool tip holds the whole message.
   m_lstMessages->setWordWrap(false);
   m_lstMessages->setUniformItemSizes(true);
   m_lstMessages->setIconSize(QSize(16, 16));
   m_lstMessages->setContextMenuPolicy(Qt::ActionsContextMenu);
   QAction * pClear = new QAction(tr("Clear messages"), m_lstMessages);
   connect(pClear, & QAction::triggered, this, & main_window::clearMessages);
   m_lstMessages->addAction(pClear);
   m_dockMessages = new QDockWidget(tr("Messages"), this);
   m_dockMessages->setObjectName("m_dockMessages");
   m_dockMessages->setWidget(m_lstMessages);
   m_dockMessages->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable | QDockWidget::DockWidgetClosable);
   addDockWidget(Qt::BottomDockWidgetArea, m_dockMessages);
}

void main_window::doPluginMessage(const QString & text, int kind, int duration)
{
   // The plug-in reports a dry run's files as created and exported: the host's summary says
   // what the dry run did instead. Its notes about the dry run itself are kept.
   const bool bWrittenClaim = (m_bDryRunning && (kind <= 1) && ! text.contains(QLatin1String("dry run"), Qt::CaseInsensitive));
   if (! bWrittenClaim)
   {
      addMessage(text, kind);
      statusBar()->showMessage(text, std::max(duration, 0));
   }
   if (! isExecutingPlugin()) { return; }
   attachRunningDebugger();
   const std::shared_ptr<tools::custom_javascript> pScript = (m_pPlugin ? m_pPlugin->getCustomScript() : nullptr);
   // A script stopped in the debugger has the debugger's own loop: only the list is drawn.
   if (m_pExportProgress && ! (pScript && pScript->isDebugging())) { m_pExportProgress->step(); return; }
   if (! m_tmRefresh.isValid() || (m_tmRefresh.elapsed() >= 100))
   {
      flushMessages();
      m_lstMessages->viewport()->repaint();
      m_tmRefresh.restart();
   }
}

void main_window::addMessage(const QString & text, int kind)
{
   m_lstPendingMessages.append({ QTime::currentTime().toString("hh:mm:ss") + "  " + text, kind });
   if (! isExecutingPlugin()) { flushMessages(); }
}

void main_window::flushMessages()
{
   if (m_lstPendingMessages.isEmpty()) { return; }
   QStyle * pStyle = style();
   const QIcon iconError = pStyle->standardIcon(QStyle::SP_MessageBoxCritical);
   const QIcon iconWarning = pStyle->standardIcon(QStyle::SP_MessageBoxWarning);
   const QIcon iconInfo = pStyle->standardIcon(QStyle::SP_MessageBoxInformation);
   for (const QPair<QString, int> & message : std::as_const(m_lstPendingMessages))
   {
      const int kind = message.second;
      const QString sText = message.first.mid(k_iStampChars);
      const QStringList lstLines = message.first.split('\n');
      for (int i = 0; i < lstLines.size(); ++i)
      {
         QListWidgetItem * pItem = new QListWidgetItem((i == 0) ? lstLines.at(i) : QString(k_iStampChars, ' ') + lstLines.at(i));
         pItem->setToolTip(sText);
         pItem->setData(Qt::UserRole, kind);
         if (kind == 3) { pItem->setForeground(QColor(200, 0, 0)); }
         else if (kind == 2) { pItem->setForeground(QColor(170, 100, 0)); }
         pItem->setIcon((i > 0) ? QIcon() : ((kind == 3) ? iconError : ((kind == 2) ? iconWarning : iconInfo)));
         m_lstMessages->addItem(pItem);
      }
   }
   m_lstPendingMessages.clear();
   const int iExcess = m_lstMessages->count() - k_iMaxMessageLines;
   if (iExcess > 0) { m_lstMessages->model()->removeRows(0, iExcess); }
   // Scrolling lays the whole list out: once per turn of the event loop, not once per message.
   if (m_bScrollPending) { return; }
   m_bScrollPending = true;
   QMetaObject::invokeMethod(this, [this]() { m_bScrollPending = false; m_lstMessages->scrollToBottom(); }, Qt::QueuedConnection);
}

void main_window::clearMessages()
{
   m_lstPendingMessages.clear();
   m_lstMessages->clear();
}

} // namespace desktop
