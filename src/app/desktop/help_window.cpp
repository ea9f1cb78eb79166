#include "desktop/help_window.h"

#include <QApplication>
#include <QDesktopServices>
#include <QScreen>
#include <QImage>
#include <QResizeEvent>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextFrame>
#include <QTextImageFormat>
#include <QTextList>
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
   connect(m_txtGuide, & QTextBrowser::sourceChanged, this, & help_window::fitImages);
}

void help_window::fitImages()
{
   // The guide's pictures are screenshots as wide as the program's window: at their full size
   // they leave blank screens around them and a sideways scroll. Each is shown as wide as the
   // text at most, with its own proportions.
   QTextDocument * pDoc = m_txtGuide->document();
   const QTextFrameFormat fmtRoot = pDoc->rootFrame()->frameFormat();
   const qreal dText = m_txtGuide->viewport()->width() - fmtRoot.leftMargin() - fmtRoot.rightMargin() - 2 * fmtRoot.padding()
                       - 2 * fmtRoot.border() - 2 * pDoc->documentMargin() - 8;
   if (dText < 50) { return; }
   const int iMaxBlocks = 100000;
   int iBlocks = 0;
   for (QTextBlock block = pDoc->begin(); block.isValid() && (iBlocks < iMaxBlocks); block = block.next(), ++iBlocks)
   {
      bool bImage = false;
      const qreal dIndent = block.blockFormat().leftMargin() + block.blockFormat().rightMargin()
                            + (block.textList() ? block.textList()->format().indent() * pDoc->indentWidth() : 0);
      const qreal dWidthMax = qMax<qreal>(50, dText - dIndent);
      for (QTextBlock::iterator itr = block.begin(); ! itr.atEnd(); ++itr)
      {
         const QTextFragment fragment = itr.fragment();
         if (! fragment.isValid() || ! fragment.charFormat().isImageFormat()) { continue; }
         QTextImageFormat fmt = fragment.charFormat().toImageFormat();
         const QImage image = pDoc->resource(QTextDocument::ImageResource, QUrl(fmt.name())).value<QImage>();
         if (image.isNull()) { continue; }
         bImage = true;
         const qreal dWidth = qMin<qreal>(image.width(), dWidthMax);
         const qreal dHeight = dWidth * image.height() / image.width();
         if (qFuzzyCompare(fmt.width(), dWidth) && qFuzzyCompare(fmt.height(), dHeight)) { continue; }
         fmt.setWidth(dWidth);
         fmt.setHeight(dHeight);
         QTextCursor cursor(pDoc);
         cursor.setPosition(fragment.position());
         cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
         cursor.setCharFormat(fmt);
      }
      // The text's line spacing (a share of the line's height) would add half a picture of
      // blank above each one.
      if (bImage && (block.blockFormat().lineHeightType() != QTextBlockFormat::SingleHeight))
      {
         QTextBlockFormat fmtBlock = block.blockFormat();
         fmtBlock.setLineHeight(0, QTextBlockFormat::SingleHeight);
         QTextCursor(block).setBlockFormat(fmtBlock);
      }
   }
}

void help_window::resizeEvent(QResizeEvent * event)
{
   QWidget::resizeEvent(event);
   fitImages();
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
