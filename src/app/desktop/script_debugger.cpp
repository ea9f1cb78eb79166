#include "desktop/script_debugger.h"

#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QColor>
#include <QCoreApplication>
#include <QEvent>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTextCursor>
#include <QTreeWidget>

#include <algorithm>

#include "context/ctx_global.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"

namespace desktop {

namespace {

enum enum_column { col_index, col_action, col_input, col_answer, col_result };
const int k_roleInput = Qt::UserRole;
const int k_roleAnswer = Qt::UserRole + 1;
const int k_iRefreshMs = 100;

// One line of a possibly long text, for a list column.
QString summary(const QString & text)
{
   QString s = text.simplified();
   if (s.size() > 100) { s = s.left(100) + QStringLiteral("..."); }
   return s;
}

} // namespace

script_debugger::script_debugger(QWidget * parent) : QWidget(parent, Qt::Window)
{
   setObjectName("script_debugger");
   setWindowTitle(context::ctx_global::getAppName() + " - Script debugger");
   setAttribute(Qt::WA_DeleteOnClose, false);
   resize(960, 640);

   m_lblState = new QLabel(this);
   m_lblState->setObjectName("m_lblState");
   m_lblState->setWordWrap(true);

   m_treeCalls = new QTreeWidget(this);
   m_treeCalls->setObjectName("m_treeCalls");
   m_treeCalls->setHeaderLabels({ tr("#"), tr("Action"), tr("Input (default value)"), tr("Answer"), tr("Result") });
   m_treeCalls->setRootIsDecorated(false);
   m_treeCalls->setUniformRowHeights(true);
   m_treeCalls->setAlternatingRowColors(true);
   m_treeCalls->header()->resizeSection(col_index, 50);
   m_treeCalls->header()->resizeSection(col_action, 200);
   m_treeCalls->header()->resizeSection(col_input, 280);
   m_treeCalls->header()->resizeSection(col_answer, 280);

   const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
   auto makeText = [this, & fixed](const char * name)
   {
      QPlainTextEdit * p = new QPlainTextEdit(this);
      p->setObjectName(name);
      p->setReadOnly(true);
      p->setFont(fixed);
      p->setLineWrapMode(QPlainTextEdit::NoWrap);
      return p;
   };
   m_txtInput = makeText("m_txtInput");
   m_txtAnswer = makeText("m_txtAnswer");
   m_txtLog = makeText("m_txtLog");
   m_txtLog->setMaximumBlockCount(5000);

   auto titled = [this](const QString & title, QWidget * w)
   {
      QWidget * box = new QWidget(this);
      QVBoxLayout * l = new QVBoxLayout(box);
      l->setContentsMargins(0, 0, 0, 0);
      l->addWidget(new QLabel(title, box));
      l->addWidget(w);
      return box;
   };

   QSplitter * pDetails = new QSplitter(Qt::Horizontal, this);
   pDetails->addWidget(titled(tr("Input of the selected call"), m_txtInput));
   pDetails->addWidget(titled(tr("Answer of the selected call"), m_txtAnswer));

   QSplitter * pMain = new QSplitter(Qt::Vertical, this);
   pMain->addWidget(m_treeCalls);
   pMain->addWidget(pDetails);
   pMain->addWidget(titled(tr("Script log (tavrel.log) and breakpoints (tavrel.breakpoint)"), m_txtLog));
   pMain->setStretchFactor(0, 3);
   pMain->setStretchFactor(1, 2);
   pMain->setStretchFactor(2, 1);
   pMain->setSizes({ 340, 240, 100 });

   m_btnClear = new QPushButton(tr("Clear list"), this);
   m_btnClear->setObjectName("m_btnClear");
   m_btnStop = new QPushButton(tr("Stop debugging and close"), this);
   m_btnStop->setObjectName("m_btnStop");
   QHBoxLayout * pButtons = new QHBoxLayout();
   pButtons->addWidget(m_btnClear);
   pButtons->addStretch(1);
   pButtons->addWidget(m_btnStop);

   QVBoxLayout * pLayout = new QVBoxLayout(this);
   pLayout->addWidget(m_lblState);
   pLayout->addWidget(pMain, 1);
   pLayout->addLayout(pButtons);

   connect(m_treeCalls, & QTreeWidget::currentItemChanged, this, & script_debugger::doCurrentCallChanged);
   connect(m_btnClear, & QPushButton::clicked, this, & script_debugger::doBtnClear);
   connect(m_btnStop, & QPushButton::clicked, this, & script_debugger::doBtnStop);
   updateState();
}

script_debugger::~script_debugger() { ; }

void script_debugger::attach(tools::custom_javascript * pScript)
{
   if (m_pScript == pScript) { updateState(); return; }
   if (m_pScript) { QObject::disconnect(m_pScript, nullptr, this, nullptr); }
   m_pScript = pScript;
   m_treeCalls->clear();
   m_txtInput->clear();
   m_txtAnswer->clear();
   if (m_pScript)
   {
      // Calls made before the window knew the engine are kept by the engine.
      const QList<tools::custom_javascript::call_record> lst = m_pScript->getCallHistory();
      for (const auto & c : lst) { addCall(c.action, c.input, c.answer, c.ok); }
      connect(m_pScript, & tools::custom_javascript::onScriptCall, this, & script_debugger::doScriptCall);
      connect(m_pScript, & tools::custom_javascript::onScriptLog, this, & script_debugger::doScriptLog);
      connect(m_pScript, & tools::custom_javascript::onScriptBreakpoint, this, & script_debugger::doScriptBreakpoint);
      connect(m_pScript, & tools::custom_javascript::onDebuggerStateChanged, this, & script_debugger::doDebuggerStateChanged);
      m_txtLog->appendPlainText(tr("Debugger attached to '%1'").arg(m_pScript->getFile()));
      setWindowTitle(context::ctx_global::getAppName() + " - Script debugger : " + QFileInfo(m_pScript->getFile()).fileName());
   }
   updateState();
}

int script_debugger::getCallCount() const { return m_treeCalls->topLevelItemCount(); }

QString script_debugger::getLogText() const { return m_txtLog->toPlainText(); }

bool script_debugger::selectCall(const QString & action, bool bChangedOnly)
{
   for (int i = 0; i < m_treeCalls->topLevelItemCount(); ++i)
   {
      QTreeWidgetItem * pItem = m_treeCalls->topLevelItem(i);
      if (pItem->text(col_action) != action) { continue; }
      if (bChangedOnly && (pItem->data(col_index, k_roleInput) == pItem->data(col_index, k_roleAnswer))) { continue; }
      m_treeCalls->setCurrentItem(pItem);
      m_treeCalls->scrollToItem(pItem);
      return true;
   }
   return false;
}

void script_debugger::addCall(const QString & action, const QString & input, const QString & answer, bool ok)
{
   QTreeWidgetItem * pItem = new QTreeWidgetItem();
   pItem->setText(col_index, QString::number(m_treeCalls->topLevelItemCount() + 1));
   pItem->setText(col_action, action);
   pItem->setText(col_input, summary(input));
   pItem->setText(col_answer, summary(answer));
   pItem->setText(col_result, ok ? tr("ok") : tr("error"));
   pItem->setData(col_index, k_roleInput, input);
   pItem->setData(col_index, k_roleAnswer, answer);
   if (! ok) { for (int i = 0; i <= col_result; ++i) { pItem->setForeground(i, QColor(200, 0, 0)); } }
   else if (input != answer) { pItem->setForeground(col_answer, QColor(0, 110, 0)); }
   m_treeCalls->addTopLevelItem(pItem);
}

void script_debugger::doScriptCall(const QString & action, const QString & input, const QString & answer, bool ok)
{
   addCall(action, input, answer, ok);
   refreshWhileBusy(false);
}

void script_debugger::doScriptLog(const QString & action, const QString & text)
{
   // No event processing here: the script is still running.
   m_txtLog->appendPlainText("[" + action + "] " + text);
}

void script_debugger::doScriptBreakpoint(const QString & action, const QString & text)
{
   ++m_iBreakpoints;
   m_txtLog->appendPlainText("[" + action + "] " + tr("breakpoint : ") + text);
   if (isHidden()) { show(); }
   raise();
   refreshWhileBusy(true);

   const QString sTitle = context::ctx_global::getAppName() + " - Script debugger";
   const QString sText = tr("The custom script stopped at a breakpoint.\n\nAction : %1\nCalls so far : %2\n\n%3")
                            .arg(action).arg(getCallCount()).arg(text);
   if (tools::message_box::isUnattended())
   {
      // Nobody to click: the breakpoint is recorded and the script goes on.
      tools::message_box::information(this, sTitle, sText, QMessageBox::Ok);
      return;
   }
   QMessageBox box(QMessageBox::Information, sTitle, sText, QMessageBox::NoButton, this);
   box.setWindowModality(Qt::ApplicationModal);
   QPushButton * pContinue = box.addButton(tr("Continue"), QMessageBox::AcceptRole);
   QPushButton * pStop = box.addButton(tr("Stop debugging"), QMessageBox::RejectRole);
   box.setDefaultButton(pContinue);
   box.setEscapeButton(pContinue);
   box.exec();
   if (box.clickedButton() == pStop) { doBtnStop(); }
}

void script_debugger::doDebuggerStateChanged(bool debugging)
{
   m_txtLog->appendPlainText(debugging ? tr("Debugging started") : tr("Debugging stopped"));
   updateState();
}

void script_debugger::doCurrentCallChanged()
{
   QTreeWidgetItem * pItem = m_treeCalls->currentItem();
   const QString sInput = (pItem ? pItem->data(col_index, k_roleInput).toString() : QString());
   const QString sAnswer = (pItem ? pItem->data(col_index, k_roleAnswer).toString() : QString());
   m_txtInput->setPlainText(sInput);
   m_txtAnswer->setPlainText(sAnswer);
   // A script often changes a few lines of a whole file: both panes go to the first difference.
   qsizetype iDiff = 0;
   const qsizetype iCommon = std::min(sInput.size(), sAnswer.size());
   while ((iDiff < iCommon) && (sInput.at(iDiff) == sAnswer.at(iDiff))) { ++iDiff; }
   if ((iDiff == sInput.size()) && (iDiff == sAnswer.size())) { iDiff = 0; }
   for (QPlainTextEdit * pText : { m_txtInput, m_txtAnswer })
   {
      QTextCursor cursor = pText->textCursor();
      cursor.setPosition(static_cast<int>(std::min<qsizetype>(iDiff, pText->document()->characterCount() - 1)));
      pText->setTextCursor(cursor);
      pText->centerCursor();
   }
}

void script_debugger::doBtnClear()
{
   m_treeCalls->clear();
   m_txtInput->clear();
   m_txtAnswer->clear();
   if (m_pScript) { m_pScript->clearCallHistory(); }
}

void script_debugger::doBtnStop() { close(); }

void script_debugger::closeEvent(QCloseEvent * event)
{
   // Detaches the export from the debugger: the next export runs the script normally.
   if (m_pScript && m_pScript->isDebugging()) { m_pScript->stopDebugger(); }
   QWidget::closeEvent(event);
}

void script_debugger::updateState()
{
   QString sText;
   if (! m_pScript) { sText = tr("No custom script attached."); }
   else if (m_pScript->isDebugging())
   {
      sText = tr("Debugging '%1' : every call of the script during an export is listed below. "
                 "Select a call to see its whole input and answer. Close this window to stop debugging.")
                 .arg(m_pScript->getFile());
   }
   else { sText = tr("Debugging of '%1' has stopped.").arg(m_pScript->getFile()); }
   m_lblState->setText(sText);
   m_btnStop->setEnabled(m_pScript && m_pScript->isDebugging());
}

void script_debugger::refreshWhileBusy(bool bForce)
{
   if (! bForce && m_tmRefresh.isValid() && (m_tmRefresh.elapsed() < k_iRefreshMs)) { return; }
   m_treeCalls->scrollToBottom();
   if (isVisible()) { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }
   m_tmRefresh.restart();
}

script_watcher::script_watcher(QObject * parent) : QObject(parent)
{
   if (qApp) { qApp->installEventFilter(this); }
}

script_watcher::~script_watcher()
{
   if (qApp) { qApp->removeEventFilter(this); }
}

bool script_watcher::eventFilter(QObject * watched, QEvent * event)
{
   // A new engine is seen when it creates its first child object, before it can start debugging.
   if (event->type() == QEvent::ChildAdded)
   {
      if (tools::custom_javascript * pScript = qobject_cast<tools::custom_javascript *>(watched))
      {
         connect(pScript, & tools::custom_javascript::onDebuggerStateChanged, this, & script_watcher::doDebuggerStateChanged, Qt::UniqueConnection);
      }
   }
   return QObject::eventFilter(watched, event);
}

void script_watcher::doDebuggerStateChanged(bool debugging)
{
   tools::custom_javascript * pScript = qobject_cast<tools::custom_javascript *>(sender());
   if (debugging && pScript) { Q_EMIT debuggingStarted(pScript); }
}

} // namespace desktop
