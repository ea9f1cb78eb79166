#pragma once

#include <QDialog>
#include <QMap>

#include "desktop/field_marks.h"

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QTableWidget;
class QVBoxLayout;

namespace desktop {

// What the model item editors share: a form of marked fields, the problem line, OK and Cancel
// (OK is off while a field is marked).
class item_dialog : public QDialog
{
   Q_OBJECT

protected:
   QVBoxLayout * m_pLayout = nullptr;
   QFormLayout * m_pForm = nullptr;
   QLabel * m_lblProblem = nullptr;
   QDialogButtonBox * m_pButtons = nullptr;
   field_marks * m_pMarks = nullptr;
   QTableWidget * m_tblMeta = nullptr;

public:
   item_dialog(const QString & sTitle, QWidget * parent);

   field_marks * getMarks() const { return m_pMarks; }
   QDialogButtonBox * getButtons() const { return m_pButtons; }
   QLabel * getProblemLabel() const { return m_lblProblem; }

   // The meta data table's rows as a map (rows with an empty key are left out).
   QMap<QString, QString> metaData() const;

protected:
   QLineEdit * addLine(QFormLayout * pForm, const char * szName, const QString & sLabel, const QString & sText, const field_marks::rule & fnRule);
   QCheckBox * addCheck(QFormLayout * pForm, const char * szName, const QString & sLabel, bool bChecked);
   QComboBox * addCombo(QFormLayout * pForm, const char * szName, const QString & sLabel, const QStringList & lstItems, bool bEditable);
   // A key/value table with add and remove buttons, below the form.
   QTableWidget * addKeyValueTable(const char * szName, const QString & sTitle, const QStringList & lstHeaders, const QList<QPair<QString, QString> > & lstRows);
   void addMetaTable(const QMap<QString, QString> & map);
   // Adds the problem line and the buttons, and marks the fields once.
   void finish();
   // Rows of a key/value table, rows with an empty first cell left out.
   static QList<QPair<QString, QString> > rowsOf(const QTableWidget * tbl);
   // The first repeated or NUL-holding key of a table, as a reason.
   static QString keysProblem(const QTableWidget * tbl, const QString & sWhat);
};

} // namespace desktop
