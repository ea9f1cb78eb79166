#include "model/global_params.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace model {

namespace {

const QRegularExpression & referenceExpression()
{
   static const QRegularExpression rx(
      QStringLiteral(R"(\$\$\(([A-Za-z_][A-Za-z0-9_]*)\)|\$\{([A-Za-z_][A-Za-z0-9_]*)\}|\$\$(?:[A-Za-z_][A-Za-z0-9_]*|\[[^\]]*\])|\$([A-Za-z_][A-Za-z0-9_]*))"));
   return rx;
}

// The first character that would end the quoted or bracketed text of a generated CMake or
// qmake file, or start a comment or a variable there.
QString pathCharacterProblem(const QString & s)
{
   for (const QChar & ch : s)
   {
      const ushort c = ch.unicode();
      if ((c == '\n') || (c == '\r')) { return QStringLiteral("holds a line break"); }
      if ((c < 0x20) || (c == 0x7F)) { return QString("holds a control character (\\x%1)").arg(int(c), 2, 16, QLatin1Char('0')); }
      if (c == '"') { return QStringLiteral("holds a double quote"); }
      if (c == ')') { return QStringLiteral("holds ')'"); }
      if (c == '#') { return QStringLiteral("holds '#'"); }
      if (c == '$') { return QStringLiteral("holds a '$' that is not an environment reference ($$(NAME), ${NAME} or $NAME)"); }
   }
   // CMake reads "\"" as a quote inside the text, so the closing quote would be lost.
   if (s.endsWith('\\')) { return QStringLiteral("ends with a backslash, which would escape the quote that closes it"); }
   return QString();
}

// "$$(NAME)", "${NAME}" and "$NAME" read the environment; "$$NAME" and "$$[NAME]" are qmake's
// own variables and properties, left as written.
QString expandEnvironment(const QString & s)
{
   const QRegularExpression & rx = referenceExpression();
   QString result;
   qsizetype last = 0;
   auto itr = rx.globalMatch(s);
   while (itr.hasNext())
   {
      const QRegularExpressionMatch m = itr.next();
      result += s.mid(last, m.capturedStart() - last);
      QString name;
      for (int i = 1; i <= 3; ++i) { if (m.capturedLength(i) > 0) { name = m.captured(i); break; } }
      if (name.isEmpty()) { result += m.captured(0); }
      else { result += qEnvironmentVariable(name.toLocal8Bit().constData()); }
      last = m.capturedEnd();
   }
   result += s.mid(last);
   return result;
}

} // namespace

QString global_params::getLumorPathProblem() const
{
   const QString & s = m_sLumorPath;
   const QString k_sTail = QStringLiteral(", which cannot be written into the generated CMake and qmake files");
   QString sOutside;
   qsizetype last = 0;
   auto itr = referenceExpression().globalMatch(s);
   while (itr.hasNext())
   {
      const QRegularExpressionMatch m = itr.next();
      sOutside += s.mid(last, m.capturedStart() - last);
      last = m.capturedEnd();
      QString name;
      for (int i = 1; i <= 3; ++i) { if (m.capturedLength(i) > 0) { name = m.captured(i); break; } }
      if (name.isEmpty()) { return QString("holds '%1', which is not an environment reference ($$(NAME), ${NAME} or $NAME)").arg(m.captured(0)); }
      if (! qEnvironmentVariableIsSet(name.toLocal8Bit().constData()))
      { return QString("refers to the environment variable '%1', which is not set").arg(name); }
   }
   sOutside += s.mid(last);
   QString sProblem = pathCharacterProblem(sOutside);
   if (! sProblem.isEmpty()) { return sProblem + k_sTail; }
   sProblem = pathCharacterProblem(expandEnvironment(s));
   if (! sProblem.isEmpty()) { return "once its environment references are expanded, " + sProblem + k_sTail; }
   return QString();
}

QString global_params::getLumorPath(bool bResolved) const
{
   if (! bResolved) { return m_sLumorPath; }
   const QString expanded = expandEnvironment(m_sLumorPath).trimmed();
   if (expanded.isEmpty()) { return QString(); }
   return QDir::cleanPath(QFileInfo(expanded).absoluteFilePath());
}

} // namespace model
