#include "tools/string_helper.h"

#include <QStringConverter>

namespace tools {

void string_helper::initTextStream(QTextStream * pStream)
{
   if (! pStream) { return; }
   pStream->setEncoding(QStringConverter::Utf8);
   pStream->setGenerateByteOrderMark(false);
}

QString string_helper::toCppString(const QString & s)
{
   QString result;
   result.reserve(s.size() + (s.size() / 8) + 4);
   for (const QChar & c : s)
   {
      const char16_t code = c.unicode();
      switch (code)
      {
         case u'\\': result += QLatin1String("\\\\"); break;
         case u'"': result += QLatin1String("\\\""); break;
         case u'\r': result += QLatin1String("\\r"); break;
         case u'\n': result += QLatin1String("\\n"); break;
         case u'\t': result += QLatin1String("\\t"); break;
         // "??" would start a trigraph where a compiler still reads them ("??/" is a backslash).
         case u'?':
            if (! result.isEmpty() && (result.back() == QLatin1Char('?'))) { result += QLatin1String("\\?"); }
            else { result += c; }
            break;
         default:
            // Always three octal digits: a following digit can't be read as part of the escape.
            if ((code < 0x20) || (code == 0x7f)) { result += QString("\\%1").arg(static_cast<int>(code), 3, 8, QChar('0')); }
            else { result += c; }
            break;
      }
   }
   return result;
}

} // namespace tools
