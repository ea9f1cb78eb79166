#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include "script/custom_javascript.h"

class QCloseEvent;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;


namespace desktop {

// Watches the user script of an export: every call (action, input, answer, success) is listed
// as it happens, tavrel.log() lines are shown, and tavrel.breakpoint() holds the export in a
// "Continue" prompt. Closing the window stops debugging.
class script_debugger : public QWidget
{
   Q_OBJECT

   QPointer<tools::custom_javascript> m_pScript;
   QLabel * m_lblState = nullptr;
   QTreeWidget * m_treeCalls = nullptr;
   QPlainTextEdit * m_txtInput = nullptr;
   QPlainTextEdit * m_txtAnswer = nullptr;
   QPlainTextEdit * m_txtLog = nullptr;
   QPushButton * m_btnClear = nullptr;
   QPushButton * m_btnStop = nullptr;
   QElapsedTimer m_tmRefresh;
   int m_iBreakpoints = 0;

public:
   explicit script_debugger(QWidget * parent = nullptr);
   virtual ~script_debugger();

   // Follows this engine from now on; the calls it made while debugging before are listed first.
   void attach(tools::custom_javascript * pScript);
   tools::custom_javascript * getScript() const { return m_pScript.data(); }

   int getCallCount() const;
   QTreeWidget * getCallList() const { return m_treeCalls; }
   QString getLogText() const;
   int getBreakpointCount() const { return m_iBreakpoints; }
   // Selects the first listed call of that action (whose answer differs from its input, when
   // asked), as a click would; false when there is none.
   bool selectCall(const QString & action, bool bChangedOnly);

public Q_SLOTS:
   void doScriptCall(const QString & action, const QString & input, const QString & answer, bool ok);
   void doScriptLog(const QString & action, const QString & text);
   void doScriptBreakpoint(const QString & action, const QString & text);
   void doDebuggerStateChanged(bool debugging);
   void doCurrentCallChanged();
   void doBtnClear();
   void doBtnStop();

protected:
   void closeEvent(QCloseEvent * event) override;

private:
   void addCall(const QString & action, const QString & input, const QString & answer, bool ok);
   void updateState();
   // The export runs on this thread: without this the list would only appear once it ends.
   void refreshWhileBusy(bool bForce);
};

// Notices the script engines that a plug-in creates (e.g. during an export started with the
// Shift key) so that the host can show the debugger as soon as one starts debugging. Active
// while the object lives.
class script_watcher : public QObject
{
   Q_OBJECT

public:
   explicit script_watcher(QObject * parent = nullptr);
   virtual ~script_watcher();

Q_SIGNALS:
   void debuggingStarted(tools::custom_javascript * pScript);

protected:
   bool eventFilter(QObject * watched, QEvent * event) override;

private Q_SLOTS:
   void doDebuggerStateChanged(bool debugging);
};

} // namespace desktop
