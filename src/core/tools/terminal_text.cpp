#include "tools/terminal_text.h"

namespace tools {

namespace {

bool needsEscape(char16_t c, bool bKeepLineFeeds)
{
   if (c == u'\n') { return ! bKeepLineFeeds; }
   if (c == u'\t') { return false; }
   // C0 controls, DEL, C1 controls, and the line and paragraph separators and direction marks
   // that reorder or break what a terminal shows.
   return ((c < 0x20) || ((c >= 0x7f) && (c <= 0x9f)) || (c == 0x2028) || (c == 0x2029) ||
           ((c >= 0x202a) && (c <= 0x202e)) || ((c >= 0x2066) && (c <= 0x2069)));
}

} // namespace

QString terminal_text::escape(const QString & text, bool bKeepLineFeeds)
{
   qsizetype i = 0;
   while ((i < text.size()) && ! needsEscape(text.at(i).unicode(), bKeepLineFeeds)) { ++i; }
   if (i == text.size()) { return text; }

   QString out = text.left(i);
   out.reserve(text.size() + 16);
   for (; i < text.size(); ++i)
   {
      const char16_t c = text.at(i).unicode();
      if (! needsEscape(c, bKeepLineFeeds)) { out += QChar(c); continue; }
      switch (c)
      {
         case u'\n': out += QLatin1String("\\n"); break;
         case u'\r': out += QLatin1String("\\r"); break;
         case u'\0': out += QLatin1String("\\0"); break;
         default:
            if (c <= 0xff) { out += QStringLiteral("\\x%1").arg(static_cast<int>(c), 2, 16, QLatin1Char('0')); }
            else { out += QStringLiteral("\\u%1").arg(static_cast<int>(c), 4, 16, QLatin1Char('0')); }
            break;
      }
   }
   return out;
}

} // namespace tools
