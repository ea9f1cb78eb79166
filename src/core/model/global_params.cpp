#include "model/global_params.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace model {

namespace {

// "$$(NAME)", "${NAME}" and "$NAME" read the environment; "$$NAME" and "$$[NAME]" are qmake's
// own variables and properties, left as written.
QString expandEnvironment(const QString & s)
{
   static const QRegularExpression rx(
      QStringLiteral(R"(\$\$\(([A-Za-z_][A-Za-z0-9_]*)\)|\$\{([A-Za-z_][A-Za-z0-9_]*)\}|\$\$(?:[A-Za-z_][A-Za-z0-9_]*|\[[^\]]*\])|\$([A-Za-z_][A-Za-z0-9_]*))"));
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

QString global_params::getLumorPath(bool bResolved) const
{
   if (! bResolved) { return m_sLumorPath; }
   const QString expanded = expandEnvironment(m_sLumorPath).trimmed();
   if (expanded.isEmpty()) { return QString(); }
   return QDir::cleanPath(QFileInfo(expanded).absoluteFilePath());
}

} // namespace model
