#pragma once

#include <functional>

#include <QList>
#include <QObject>
#include <QString>

class QLabel;
class QLineEdit;
class QComboBox;

namespace desktop {

// The validation marks of an editor's fields: each text field has the rule of the place the
// export writes it (the functions the JSON import and "tavrel check" use), is marked while
// typing (red frame, the reason as its tool tip and in the editor's problem line) and keeps the
// editor's OK button off while any field is marked.
class field_marks : public QObject
{
   Q_OBJECT

public:
   typedef std::function<QString(const QString &)> rule;
   // Name of the widget property holding the reason of a marked field (empty when valid).
   static const char * const k_szProblem;

private:
   struct field { QWidget * pWidget; QString sLabel; rule fnRule; };
   QList<field> m_lstFields;
   QLabel * m_lblProblem = nullptr;
   QList<std::function<QString()> > m_lstChecks;

public:
   explicit field_marks(QLabel * lblProblem, QObject * parent);

   void add(QLineEdit * txt, const QString & sLabel, const rule & fnRule);
   // An editable combo box's text.
   void add(QComboBox * cbo, const QString & sLabel, const rule & fnRule);
   // A rule over several fields (a key already taken, a relation without a target): its reason
   // is shown in the problem line and keeps the editor from applying.
   void addCheck(const std::function<QString()> & fnCheck);

   // The first reason, "label : reason", or empty when every field is valid.
   QString firstProblem() const;
   bool isValid() const { return firstProblem().isEmpty(); }

public Q_SLOTS:
   void update();

Q_SIGNALS:
   void validityChanged(bool bValid);

private:
   static QString textOf(QWidget * pWidget);
};

// The rules of the model's text fields, by the place a text is written.
namespace field_rules {
QString name(const QString & s);
QString namespaceName(const QString & s);
QString optionalName(const QString & s);
QString tableName(const QString & s);
QString literal(const QString & s);
QString blockComment(const QString & s);
QString lineComment(const QString & s);
QString escaped(const QString & s);
QString number(const QString & s);
QString wholeNumber(const QString & s);
QString body(const QString & s);
QString expression(const QString & s);
QString typeText(const QString & s);
// An optional C++ type, an optional forced SQL type: empty, or by the import's rule.
QString cppType(const QString & s);
QString sqlType(const QString & s);
} // namespace field_rules

} // namespace desktop
