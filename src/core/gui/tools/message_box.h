#pragma once

#include <QList>
#include <QMessageBox>
#include <QString>
#include <QStringList>

#include "tavrelgui_export.h"

namespace tools {

// Message boxes of the plug-ins and hosts. Unattended (command-line host, tests), nothing is
// shown: the text goes to standard error and the question is answered by a scripted answer,
// else by the fixed answer (--yes / --no), else by the default button.
class TAVRELGUI_EXPORT message_box
{
public:
   enum enum_kind { kind_question, kind_information, kind_warning, kind_critical };

   struct record
   {
      enum_kind kind;
      QString title;
      QString text;
      QMessageBox::StandardButton answer;
   };

   static QMessageBox::StandardButton question(QWidget * parent, const QString & title, const QString & text,
                                               QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No,
                                               QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);
   static QMessageBox::StandardButton information(QWidget * parent, const QString & title, const QString & text,
                                                  QMessageBox::StandardButtons buttons = QMessageBox::Ok);
   static QMessageBox::StandardButton warning(QWidget * parent, const QString & title, const QString & text,
                                              QMessageBox::StandardButtons buttons = QMessageBox::Ok);
   static QMessageBox::StandardButton critical(QWidget * parent, const QString & title, const QString & text,
                                               QMessageBox::StandardButtons buttons = QMessageBox::Ok);

   // While one lives, the information, warning and critical boxes of its thread are not shown
   // but kept for the caller to show in its own window (a preview that says why it is empty).
   // Questions are still asked.
   class TAVRELGUI_EXPORT collector
   {
      QStringList m_lstTexts;
      collector * m_pOuter = nullptr;

   public:
      collector();
      ~collector();
      collector(const collector &) = delete;
      collector & operator=(const collector &) = delete;
      const QStringList & texts() const { return m_lstTexts; }
      void add(const QString & text) { if (! m_lstTexts.contains(text)) { m_lstTexts.append(text); } }
   };

   static void setUnattended(bool b);
   static bool isUnattended();
   // Answer for every later question (NoButton: the default button).
   static void setFixedAnswer(QMessageBox::StandardButton answer);
   // Answers used once each, in order, before the fixed answer, by the boxes that offer more
   // than one button (a box with a single button just gets that button).
   static void pushScriptedAnswer(QMessageBox::StandardButton answer);
   // Unattended boxes print to standard error unless silenced (tests).
   static void setPrintUnattended(bool b);
   static QList<record> history();
   static void clearHistory();
   static void reset();
};

} // namespace tools
