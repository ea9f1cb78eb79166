#include "gui/tools/message_box.h"

#include <QMutex>
#include <QMutexLocker>
#include <QQueue>

#include "tools/terminal_text.h"

#include <cstdio>

namespace tools {

namespace {

struct message_box_state
{
   QMutex mutex;
   bool unattended = false;
   bool print = true;
   QMessageBox::StandardButton fixedAnswer = QMessageBox::NoButton;
   QQueue<QMessageBox::StandardButton> scripted;
   QList<message_box::record> history;
};

message_box_state & state()
{
   static message_box_state s;
   return s;
}

const char * kindName(message_box::enum_kind kind)
{
   switch (kind)
   {
      case message_box::kind_question: return "question";
      case message_box::kind_information: return "information";
      case message_box::kind_warning: return "warning";
      case message_box::kind_critical: return "critical";
   }
   return "message";
}

QString buttonName(QMessageBox::StandardButton b)
{
   switch (b)
   {
      case QMessageBox::Ok: return "OK";
      case QMessageBox::Save: return "Save";
      case QMessageBox::SaveAll: return "Save All";
      case QMessageBox::Open: return "Open";
      case QMessageBox::Yes: return "Yes";
      case QMessageBox::YesToAll: return "Yes to All";
      case QMessageBox::No: return "No";
      case QMessageBox::NoToAll: return "No to All";
      case QMessageBox::Abort: return "Abort";
      case QMessageBox::Retry: return "Retry";
      case QMessageBox::Ignore: return "Ignore";
      case QMessageBox::Close: return "Close";
      case QMessageBox::Cancel: return "Cancel";
      case QMessageBox::Discard: return "Discard";
      case QMessageBox::Help: return "Help";
      case QMessageBox::Apply: return "Apply";
      case QMessageBox::Reset: return "Reset";
      case QMessageBox::RestoreDefaults: return "Restore Defaults";
      case QMessageBox::NoButton: return "none";
      default: break;
   }
   return QString::number(static_cast<int>(b));
}

// What a user pressing Enter would get: the default button, else the first accepting button
// offered, else the first button offered.
QMessageBox::StandardButton defaultAnswer(QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
   if ((defaultButton != QMessageBox::NoButton) && buttons.testFlag(defaultButton)) { return defaultButton; }
   if (buttons.testFlag(QMessageBox::Ok)) { return QMessageBox::Ok; }
   if (buttons.testFlag(QMessageBox::Yes)) { return QMessageBox::Yes; }
   for (unsigned int flag = QMessageBox::FirstButton; flag <= QMessageBox::LastButton; flag <<= 1)
   {
      if (buttons.testFlag(static_cast<QMessageBox::StandardButton>(flag))) { return static_cast<QMessageBox::StandardButton>(flag); }
   }
   return defaultButton;
}

QMessageBox::Icon iconOf(message_box::enum_kind kind)
{
   switch (kind)
   {
      case message_box::kind_question: return QMessageBox::Question;
      case message_box::kind_information: return QMessageBox::Information;
      case message_box::kind_warning: return QMessageBox::Warning;
      case message_box::kind_critical: return QMessageBox::Critical;
   }
   return QMessageBox::NoIcon;
}

thread_local message_box::collector * t_pCollector = nullptr;

QMessageBox::StandardButton show(message_box::enum_kind kind, QWidget * parent, const QString & title, const QString & text,
                                 QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
   if (t_pCollector && (kind != message_box::kind_question))
   {
      t_pCollector->add(text);
      return defaultAnswer(buttons, defaultButton);
   }
   message_box_state & s = state();
   QMessageBox::StandardButton answer = QMessageBox::NoButton;
   bool unattended = false;
   bool print = false;
   {
      QMutexLocker lock(& s.mutex);
      unattended = s.unattended;
      print = s.print;
      if (unattended)
      {
         // Scripted answers belong to boxes that offer a choice; a plain warning with its
         // single OK button must not eat the answer meant for the next question.
         const int bits = buttons.toInt();
         const bool choice = ((bits & (bits - 1)) != 0);
         if (choice && ! s.scripted.isEmpty()) { answer = s.scripted.dequeue(); }
         else if ((s.fixedAnswer != QMessageBox::NoButton) && buttons.testFlag(s.fixedAnswer)) { answer = s.fixedAnswer; }
         else { answer = defaultAnswer(buttons, defaultButton); }
      }
   }

   if (unattended)
   {
      if (print)
      {
         const QString line = QString("[%1] %2: %3 -> %4\n").arg(kindName(kind), terminal_text::escape(title), terminal_text::escape(text), buttonName(answer));
         std::fputs(line.toLocal8Bit().constData(), stderr);
         std::fflush(stderr);
      }
   }
   else
   {
      QMessageBox box(iconOf(kind), title, text, buttons, parent);
      if (defaultButton != QMessageBox::NoButton) { box.setDefaultButton(defaultButton); }
      answer = static_cast<QMessageBox::StandardButton>(box.exec());
   }

   QMutexLocker lock(& s.mutex);
   s.history.append(message_box::record{kind, title, text, answer});
   return answer;
}

} // namespace

QMessageBox::StandardButton message_box::question(QWidget * parent, const QString & title, const QString & text,
                                                  QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
   return show(kind_question, parent, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton message_box::information(QWidget * parent, const QString & title, const QString & text,
                                                     QMessageBox::StandardButtons buttons)
{
   return show(kind_information, parent, title, text, buttons, QMessageBox::NoButton);
}

QMessageBox::StandardButton message_box::warning(QWidget * parent, const QString & title, const QString & text,
                                                 QMessageBox::StandardButtons buttons)
{
   return show(kind_warning, parent, title, text, buttons, QMessageBox::NoButton);
}

QMessageBox::StandardButton message_box::critical(QWidget * parent, const QString & title, const QString & text,
                                                  QMessageBox::StandardButtons buttons)
{
   return show(kind_critical, parent, title, text, buttons, QMessageBox::NoButton);
}

message_box::collector::collector() : m_pOuter(t_pCollector) { t_pCollector = this; }
message_box::collector::~collector() { t_pCollector = m_pOuter; }

void message_box::setUnattended(bool b) { QMutexLocker lock(& state().mutex); state().unattended = b; }
bool message_box::isUnattended() { QMutexLocker lock(& state().mutex); return state().unattended; }
void message_box::setFixedAnswer(QMessageBox::StandardButton answer) { QMutexLocker lock(& state().mutex); state().fixedAnswer = answer; }
void message_box::pushScriptedAnswer(QMessageBox::StandardButton answer) { QMutexLocker lock(& state().mutex); state().scripted.enqueue(answer); }
void message_box::setPrintUnattended(bool b) { QMutexLocker lock(& state().mutex); state().print = b; }
QList<message_box::record> message_box::history() { QMutexLocker lock(& state().mutex); return state().history; }
void message_box::clearHistory() { QMutexLocker lock(& state().mutex); state().history.clear(); }

void message_box::reset()
{
   // The mode (unattended, printing) stays: only answers and history are forgotten.
   QMutexLocker lock(& state().mutex);
   state().fixedAnswer = QMessageBox::NoButton;
   state().scripted.clear();
   state().history.clear();
}

} // namespace tools
