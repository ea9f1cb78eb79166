#include "desktop/help_window.h"

#include <QApplication>
#include <QDesktopServices>
#include <QScreen>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <algorithm>

namespace desktop {

help_window::help_window(QWidget * parent) : QWidget(parent, Qt::Window)
{
   setObjectName("help_window");
   setWindowTitle(tr("User guide"));
   m_txtGuide = new QTextBrowser(this);
   m_txtGuide->setObjectName("m_txtGuide");
   m_txtGuide->setOpenExternalLinks(false);
   QVBoxLayout * pLayout = new QVBoxLayout(this);
   pLayout->setContentsMargins(0, 0, 0, 0);
   pLayout->addWidget(m_txtGuide);
   resize(900, 700);
}

void help_window::showUrl(const QUrl & url)
{
   m_txtGuide->setSource(url);
   const bool bFirst = ! isVisible();
   if (bFirst) { placeOnScreen(); }
   show();
   // The frame is known once shown.
   if (bFirst) { placeOnScreen(); }
   raise();
   activateWindow();
}

void help_window::placeOnScreen()
{
   // The whole window on the screen of the window it helps with, over the middle of that window.
   QWidget * pOver = parentWidget();
   QScreen * pScreen = (pOver ? pOver->screen() : screen());
   if (! pScreen) { return; }
   const QRect avail = pScreen->availableGeometry();
   const QSize frame = (frameGeometry().size() - geometry().size());
   resize(QSize(900, 700).boundedTo(avail.size() - frame));
   QRect rect(QPoint(0, 0), size() + frame);
   rect.moveCenter(pOver ? pOver->frameGeometry().center() : avail.center());
   rect.moveLeft(std::clamp(rect.left(), avail.left(), std::max(avail.left(), avail.right() + 1 - rect.width())));
   rect.moveTop(std::clamp(rect.top(), avail.top(), std::max(avail.top(), avail.bottom() + 1 - rect.height())));
   move(rect.topLeft());
}

help_opener::help_opener(QObject * parent) : QObject(parent)
{
   QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
}

help_opener::~help_opener()
{
   QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
   delete m_pWindow.data();
}

void help_opener::openUrl(const QUrl & url)
{
   // The desktop's viewer is asked without this handler in the way, then put back.
   QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
   const bool bOpened = QDesktopServices::openUrl(url);
   QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
   if (bOpened) { return; }
   if (! m_pWindow) { m_pWindow = new help_window(); }
   // A window beside a modal dialog would be blocked behind it: the guide goes with the dialog.
   QWidget * pModal = QApplication::activeModalWidget();
   if (pModal && (m_pWindow->parentWidget() != pModal)) { m_pWindow->setParent(pModal, Qt::Window); }
   else if (! pModal && m_pWindow->parentWidget()) { m_pWindow->setParent(nullptr, Qt::Window); }
   m_pWindow->showUrl(url);
}

} // namespace desktop
