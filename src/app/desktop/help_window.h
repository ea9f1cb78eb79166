#pragma once

#include <QPointer>
#include <QUrl>
#include <QWidget>

class QTextBrowser;

namespace desktop {

// The user guide inside the program, for machines where no web browser can be started.
class help_window : public QWidget
{
   Q_OBJECT

   QTextBrowser * m_txtGuide = nullptr;

public:
   explicit help_window(QWidget * parent = nullptr);

   QTextBrowser * getBrowser() const { return m_txtGuide; }
   void showUrl(const QUrl & url);

protected:
   void resizeEvent(QResizeEvent * event) override;

private:
   void placeOnScreen();
   void fitImages();
};

// Receives every local file the program opens (Help, the plug-in's help buttons): the desktop's
// own viewer when one can be started, the help window otherwise.
class help_opener : public QObject
{
   Q_OBJECT

   QPointer<help_window> m_pWindow;

public:
   explicit help_opener(QObject * parent = nullptr);
   ~help_opener() override;

   help_window * getWindow() const { return m_pWindow.data(); }

public Q_SLOTS:
   void openUrl(const QUrl & url);
};

} // namespace desktop
