// Validation marks of the editors' fields, from the model's own text and name rules.

#include "desktop/field_marks.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "model/model_names.h"
#include "model/model_text_rules.h"

namespace desktop {

const char * const field_marks::k_szProblem = "tavrelProblem";

field_marks::field_marks(QLabel * lblProblem, QObject * parent) : QObject(parent), m_lblProblem(lblProblem)
{
   if (m_lblProblem) { m_lblProblem->setStyleSheet("color: #b00020;"); m_lblProblem->setWordWrap(true); }
}

void field_marks::add(QLineEdit * txt, const QString & sLabel, const rule & fnRule)
{
   m_lstFields.append(field { txt, sLabel, fnRule });
   connect(txt, & QLineEdit::textChanged, this, & field_marks::update);
}

void field_marks::add(QComboBox * cbo, const QString & sLabel, const rule & fnRule)
{
   m_lstFields.append(field { cbo, sLabel, fnRule });
   connect(cbo, & QComboBox::currentTextChanged, this, & field_marks::update);
}

void field_marks::addCheck(const std::function<QString()> & fnCheck) { m_lstChecks.append(fnCheck); }

QString field_marks::textOf(QWidget * pWidget)
{
   if (QLineEdit * txt = qobject_cast<QLineEdit *>(pWidget)) { return txt->text(); }
   if (QComboBox * cbo = qobject_cast<QComboBox *>(pWidget)) { return cbo->currentText(); }
   return QString();
}

QString field_marks::firstProblem() const
{
   for (const field & f : m_lstFields)
   {
      const QString sReason = f.pWidget->property(k_szProblem).toString();
      if (! sReason.isEmpty()) { return f.sLabel + " : " + sReason; }
   }
   for (const auto & fnCheck : m_lstChecks)
   {
      const QString sReason = fnCheck();
      if (! sReason.isEmpty()) { return sReason; }
   }
   return QString();
}

void field_marks::update()
{
   for (const field & f : std::as_const(m_lstFields))
   {
      const QString sValue = textOf(f.pWidget);
      const QString sReason = (f.pWidget->isEnabled() ? f.fnRule(sValue) : QString());
      f.pWidget->setProperty(k_szProblem, sReason);
      f.pWidget->setToolTip(sReason.isEmpty() ? QString() : ("'" + model::model_text_rules::shown(sValue) + "' " + sReason));
      f.pWidget->setStyleSheet(sReason.isEmpty() ? QString() : QStringLiteral("border: 2px solid #b00020;"));
   }
   const QString sProblem = firstProblem();
   if (m_lblProblem) { m_lblProblem->setText(sProblem); }
   Q_EMIT validityChanged(sProblem.isEmpty());
}

namespace field_rules {

typedef model::model_text_rules text;

QString name(const QString & s) { return model::model_names::identifierProblem(s); }
QString namespaceName(const QString & s) { return model::model_names::namespaceProblem(s); }
QString optionalName(const QString & s) { return (s.isEmpty() ? QString() : name(s)); }
QString tableName(const QString & s) { return text::sqlNameProblem(s); }
QString literal(const QString & s) { return text::literalProblem(s); }
QString blockComment(const QString & s) { return text::blockCommentProblem(s); }
QString lineComment(const QString & s) { return text::lineCommentProblem(s); }
QString escaped(const QString & s) { return text::nulProblem(s); }
QString body(const QString & s) { return (s.isEmpty() ? QString() : text::bodyProblem(s)); }
QString expression(const QString & s) { return (s.isEmpty() ? QString() : text::expressionProblem(s)); }

QString number(const QString & s)
{
   if (s.isEmpty()) { return QString(); }
   const QString sReason = text::numberTextProblem(s);
   return (sReason.isEmpty() ? text::numberProblem(s, false) : sReason);
}

QString wholeNumber(const QString & s)
{
   const QString sReason = text::numberTextProblem(s);
   return (sReason.isEmpty() ? text::numberProblem(s, true) : sReason);
}

QString typeText(const QString & s) { return (s.trimmed().isEmpty() ? QObject::tr("is empty") : text::typeProblem(s)); }
QString cppType(const QString & s) { return (s.isEmpty() ? QString() : text::typeProblem(s)); }
QString sqlType(const QString & s) { return (s.isEmpty() ? QString() : text::sqlTypeProblem(s)); }

} // namespace field_rules

} // namespace desktop
