#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace db_import {

// A token of one dump statement; sText is as written, iPos/iEnd its place in the statement.
struct dump_token
{
   enum enum_kind { word, quoted_name, string, number, punct, body };
   enum_kind eKind = punct;
   QString sText;
   qsizetype iPos = 0;
   qsizetype iEnd = 0;

   // A bare word, compared without case.
   bool is(const char * s) const { return ((eKind == word) && (sText.compare(QLatin1String(s), Qt::CaseInsensitive) == 0)); }
   bool isPunct(const char * s) const { return ((eKind == punct) && (sText == QLatin1String(s))); }
   bool isName() const { return ((eKind == word) || (eKind == quoted_name)); }
};

QList<dump_token> tokenize(const QString & sText, bool bMariadb);

// Reads tokens in order; past the end every token is an empty punctuation.
class dump_cursor
{
   const QList<dump_token> & m_lst;
   const QString & m_sText;
   const bool m_bFold;
   const dump_token m_end;

public:
   qsizetype i = 0;

   // bFold: unquoted names are folded to lower case (PostgreSQL).
   dump_cursor(const QList<dump_token> & lst, const QString & sText, bool bFold) : m_lst(lst), m_sText(sText), m_bFold(bFold) { ; }

   bool atEnd() const { return (i >= m_lst.size()); }
   const dump_token & peek(qsizetype k = 0) const { return (((i + k) < m_lst.size()) ? m_lst.at(i + k) : m_end); }
   const dump_token & next() { const dump_token & t = peek(); if (! atEnd()) { ++i; } return t; }
   bool accept(const char * s) { if (! peek().is(s)) { return false; } ++i; return true; }
   // Several words in a row, all or none.
   bool acceptAll(std::initializer_list<const char *> lst);
   bool acceptPunct(const char * s) { if (! peek().isPunct(s)) { return false; } ++i; return true; }

   // A name's value: quotes removed, bare words folded when the dialect folds them.
   QString nameOf(const dump_token & t) const;
   // "a.b.c" as its parts; empty when no name is next.
   QStringList qualifiedName();
   // From "(" to its ")"; false when no "(" is next. The cursor ends after the ")".
   bool skipGroup();
   // "(a, b(10) DESC, ...)": names and prefix lengths; false when something else is in it.
   bool columnList(QStringList & lstNames, QList<int> * pLengths = nullptr);
   // Skips to the next "," or the end at this depth, or to a stop word; the text skipped.
   QString textUntilStop(std::initializer_list<const char *> lstStops);
   // The statement text from token iFrom up to (not with) token iTo, as written.
   QString textBetween(qsizetype iFrom, qsizetype iTo) const;
   QString rest() const { return textBetween(i, m_lst.size()); }
};

} // namespace db_import
