// The message area: the host's and the plug-ins' messages with the time they came.

#include "desktop/main_window.h"

#include <QAction>
#include <QDockWidget>
#include <QListWidget>
#include <QStatusBar>
#include <QStyle>
#include <QTime>

#include <algorithm>

namespace desktop {

namespace {

const int k_iRefreshMs = 100;

} // namespace

void main_window::createMessagesDock()
{
   m_lstMessages = new QListWidget(this);
   m_lstMessages->setObjectName("m_lstMessages");
   m_lstMessages->setWordWrap(true);
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
   addMessage(text, kind);
   statusBar()->showMessage(text, std::max(duration, 0));
   if (isExecutingPlugin())
   {
      attachRunningDebugger();
      // The export holds the event loop: draw the new line now, at most every few tenths of a
      // second. Painting only: the message may come from a running script.
      if (! m_tmRefresh.isValid() || (m_tmRefresh.elapsed() >= k_iRefreshMs))
      {
         m_lstMessages->doItemsLayout();
         m_lstMessages->scrollToBottom();
         m_lstMessages->viewport()->repaint();
         m_tmRefresh.restart();
      }
   }
}

void main_window::addMessage(const QString & text, int kind)
{
   QStyle * pStyle = style();
   QListWidgetItem * pItem = new QListWidgetItem(QTime::currentTime().toString("hh:mm:ss") + "  " + text);
   pItem->setToolTip(text);
   pItem->setData(Qt::UserRole, kind);
   if (kind == 3)
   {
      pItem->setForeground(QColor(200, 0, 0));
      pItem->setIcon(pStyle->standardIcon(QStyle::SP_MessageBoxCritical));
   }
   else if (kind == 2)
   {
      pItem->setForeground(QColor(170, 100, 0));
      pItem->setIcon(pStyle->standardIcon(QStyle::SP_MessageBoxWarning));
   }
   else { pItem->setIcon(pStyle->standardIcon(QStyle::SP_MessageBoxInformation)); }
   m_lstMessages->addItem(pItem);
   m_lstMessages->scrollToBottom();
}

void main_window::clearMessages() { m_lstMessages->clear(); }

} // namespace desktop
