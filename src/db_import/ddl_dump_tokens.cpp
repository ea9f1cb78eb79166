#include "db_import/ddl_dump_tokens.h"

namespace db_import {

namespace {

bool startsWord(QChar c) { return (c.isLetter() || (c == '_')); }
bool inWord(QChar c) { return (c.isLetterOrNumber() || (c == '_') || (c == '$')); }

// Where the quote that opens at i closes (the index after it); the text's end when it does not.
qsizetype quoteEnd(const QString & s, qsizetype i, bool bBackslash)
{
   const QChar c = s.at(i);
   qsizetype j = i + 1;
   while (j < s.size())
   {
      if (bBackslash && (s.at(j) == '\\')) { j += 2; continue; }
      if (s.at(j) == c)
      {
         if (((j + 1) < s.size()) && (s.at(j + 1) == c)) { j += 2; continue; }
         return (j + 1);
      }
      ++j;
   }
   return s.size();
}

} // namespace

QList<dump_token> tokenize(const QString & s, bool bMariadb)
{
   QList<dump_token> lst;
   qsizetype i = 0;
   while (i < s.size())
   {
      const QChar c = s.at(i);
      if (c.isSpace()) { ++i; continue; }
      dump_token t;
      t.iPos = i;
      qsizetype j = i + 1;
      if (startsWord(c))
      {
         while ((j < s.size()) && inWord(s.at(j))) { ++j; }
         t.eKind = dump_token::word;
      }
      else if (c.isDigit())
      {
         while ((j < s.size()) && (s.at(j).isDigit() || (s.at(j) == '.'))) { ++j; }
         t.eKind = dump_token::number;
      }
      else if ((c == '"') || (c == '`')) { j = quoteEnd(s, i, false); t.eKind = dump_token::quoted_name; }
      else if (c == '\'')
      {
         const bool bE = (! lst.isEmpty() && lst.last().is("E") && (lst.last().iEnd == i));
         j = quoteEnd(s, i, bMariadb || bE);
         t.eKind = dump_token::string;
      }
      else if ((c == '$') && ! bMariadb && (s.indexOf('$', i + 1) > i))
      {
         const qsizetype iTag = s.indexOf('$', i + 1);
         const QString sTag = s.mid(i, iTag - i + 1);
         const qsizetype e = s.indexOf(sTag, iTag + 1);
         j = ((e < 0) ? s.size() : (e + sTag.size()));
         t.eKind = dump_token::body;
      }
      else if ((c == ':') && (s.mid(i, 2) == "::")) { j = i + 2; }
      t.sText = s.mid(i, j - i);
      t.iEnd = j;
      lst.append(t);
      i = j;
   }
   return lst;
}

bool dump_cursor::acceptAll(std::initializer_list<const char *> lst)
{
   qsizetype k = 0;
   for (const char * s : lst) { if (! peek(k).is(s)) { return false; } ++k; }
   i += k;
   return true;
}

QString dump_cursor::nameOf(const dump_token & t) const
{
   if (t.eKind == dump_token::quoted_name)
   {
      const QChar c = t.sText.at(0);
      return t.sText.mid(1, t.sText.size() - 2).replace(QString(2, c), QString(c));
   }
   return (m_bFold ? t.sText.toLower() : t.sText);
}

QStringList dump_cursor::qualifiedName()
{
   QStringList lst;
   if (! peek().isName()) { return lst; }
   lst.append(nameOf(next()));
   while (peek().isPunct(".") && peek(1).isName()) { ++i; lst.append(nameOf(next())); }
   return lst;
}

bool dump_cursor::skipGroup()
{
   if (! peek().isPunct("(")) { return false; }
   int iDepth = 0;
   while (! atEnd())
   {
      const dump_token & t = next();
      if (t.isPunct("(")) { ++iDepth; }
      else if (t.isPunct(")") && (--iDepth == 0)) { return true; }
   }
   return true;
}

bool dump_cursor::columnList(QStringList & lstNames, QList<int> * pLengths)
{
   if (! acceptPunct("(")) { return false; }
   while (! atEnd())
   {
      if (! peek().isName()) { return false; }
      lstNames.append(nameOf(next()));
      int iLength = 0;
      if (peek().isPunct("(") && (peek(1).eKind == dump_token::number) && peek(2).isPunct(")")) { iLength = peek(1).sText.toInt(); i += 3; }
      if (pLengths) { pLengths->append(iLength); }
      // An operator class and the order are no part of which columns the index covers.
      while (peek().eKind == dump_token::word) { ++i; }
      if (acceptPunct(")")) { return true; }
      if (! acceptPunct(",")) { return false; }
   }
   return false;
}

QString dump_cursor::textUntilStop(std::initializer_list<const char *> lstStops)
{
   const qsizetype iFrom = i;
   int iDepth = 0;
   while (! atEnd())
   {
      const dump_token & t = peek();
      if ((iDepth == 0) && (t.isPunct(",") || t.isPunct(")"))) { break; }
      if (iDepth == 0)
      {
         bool bStop = false;
         for (const char * s : lstStops) { if (t.is(s)) { bStop = true; break; } }
         if (bStop && (i > iFrom)) { break; }
      }
      if (t.isPunct("(")) { ++iDepth; }
      else if (t.isPunct(")")) { --iDepth; }
      ++i;
   }
   return textBetween(iFrom, i);
}

QString dump_cursor::textBetween(qsizetype iFrom, qsizetype iTo) const
{
   iTo = qMin(iTo, m_lst.size());
   if (iFrom >= iTo) { return QString(); }
   // As written: a literal keeps its blanks.
   return m_sText.mid(m_lst.at(iFrom).iPos, m_lst.at(iTo - 1).iEnd - m_lst.at(iFrom).iPos);
}

} // namespace db_import
