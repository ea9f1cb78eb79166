#include "db_import/ddl_dump_split.h"

#include <QRegularExpression>

namespace db_import {

namespace {

bool isWord(QChar c) { return (c.isLetterOrNumber() || (c == '_') || (c == '$')); }

// Walks the script once; every step moves forward, so the walk ends.
class dump_splitter
{
   const QString & m_s;
   const bool m_bMariadb;
   qsizetype m_i = 0;
   int m_iLine = 1;
   qsizetype m_iLineStart = 0;
   QString m_sDelimiter = ";";
   bool m_bConditional = false;
   dump_statement m_current;

public:
   QList<dump_statement> lst;
   QString sError;

   dump_splitter(const QString & s, enum_dialect e) : m_s(s), m_bMariadb(e == dialect_mariadb) { ; }

   void run()
   {
      while ((m_i < m_s.size()) && sError.isEmpty()) { step(); }
      if (sError.isEmpty()) { finish(); }
   }

private:
   // Blanks are never added to an empty statement.
   bool blank() const { return m_current.sText.isEmpty(); }
   bool at(const char * s) const { return QStringView(m_s).mid(m_i).startsWith(QLatin1String(s)); }

   void advanceTo(qsizetype iEnd, bool bKeep)
   {
      for (; m_i < iEnd; ++m_i)
      {
         if (bKeep) { add(m_s.at(m_i)); }
         if (m_s.at(m_i) == '\n') { ++m_iLine; m_iLineStart = m_i + 1; }
      }
   }
   void add(QChar c)
   {
      if (blank() && c.isSpace()) { return; }
      if (blank()) { m_current.iLine = m_iLine; m_current.iColumn = int(m_i - m_iLineStart) + 1; }
      m_current.sText += c;
   }
   void fail(const QString & sWhat) { sError = QString("%1:%2: %3").arg(m_iLine).arg(m_i - m_iLineStart + 1).arg(sWhat); }
   qsizetype lineEnd() const { const qsizetype e = m_s.indexOf('\n', m_i); return ((e < 0) ? m_s.size() : e); }

   void finish()
   {
      m_current.sText = m_current.sText.trimmed();
      if (! m_current.sText.isEmpty()) { lst.append(m_current); }
      m_current = dump_statement();
   }

   void step()
   {
      const QChar c = m_s.at(m_i);
      if (blank() && ((c == '\\') || (c.toUpper() == 'D')) && QStringView(m_s).mid(m_iLineStart, m_i - m_iLineStart).trimmed().isEmpty())
      {
         if (c == '\\') { return meta(); }
         if (m_bMariadb && (m_s.mid(m_i, 10).toUpper().startsWith("DELIMITER")) && ((m_i + 9 >= m_s.size()) || m_s.at(m_i + 9).isSpace())) { return delimiter(); }
      }
      if (at("--") && (! m_bMariadb || (m_i + 2 >= m_s.size()) || m_s.at(m_i + 2).isSpace())) { advanceTo(lineEnd(), false); return; }
      if (m_bMariadb && (c == '#')) { advanceTo(lineEnd(), false); return; }
      if (m_bMariadb && (at("/*!") || at("/*M!")))
      {
         qsizetype j = m_i + (at("/*!") ? 3 : 4);
         while ((j < m_s.size()) && m_s.at(j).isDigit()) { ++j; }
         // "/*M!999999\- ... */": a command for the client inside a conditional comment.
         if (blank() && (j < m_s.size()) && (m_s.at(j) == '\\')) { return conditionalMeta(j); }
         m_bConditional = true;
         advanceTo(j, false);
         add(' ');
         return;
      }
      if (m_bConditional && at("*/")) { m_bConditional = false; advanceTo(m_i + 2, false); add(' '); return; }
      if (at("/*"))
      {
         const qsizetype e = m_s.indexOf("*/", m_i + 2);
         if (e < 0) { return fail("comment opened here is never closed"); }
         advanceTo(e + 2, false);
         add(' ');
         return;
      }
      if ((c == '\'') || (c == '"') || (c == '`')) { return quoted(c); }
      if (! m_bMariadb && (c == '$') && ((m_i == 0) || ! isWord(m_s.at(m_i - 1)))) { if (dollar()) { return; } }
      if (QStringView(m_s).mid(m_i).startsWith(m_sDelimiter)) { return end(); }
      advanceTo(m_i + 1, true);
   }

   void quoted(QChar c)
   {
      // MariaDB strings take backslash escapes; PostgreSQL's only with the E prefix.
      const bool bBackslash = ((c == '\'') && (m_bMariadb || ((m_i > 0) && (m_s.at(m_i - 1).toLower() == 'e') && ((m_i < 2) || ! isWord(m_s.at(m_i - 2))))));
      qsizetype j = m_i + 1;
      while (j < m_s.size())
      {
         if (bBackslash && (m_s.at(j) == '\\')) { j += 2; continue; }
         if (m_s.at(j) == c)
         {
            if (((j + 1) < m_s.size()) && (m_s.at(j + 1) == c)) { j += 2; continue; }
            advanceTo(j + 1, true);
            return;
         }
         ++j;
      }
      fail((c == '\'') ? QString("string literal opened here is never closed") : QString("quoted name (%1) opened here is never closed").arg(c));
   }

   bool dollar()
   {
      static const QRegularExpression reTag("\\G\\$([A-Za-z_][A-Za-z_0-9]*)?\\$");
      const QRegularExpressionMatch m = reTag.match(m_s, m_i);
      if (! m.hasMatch()) { return false; }
      const qsizetype e = m_s.indexOf(m.captured(0), m_i + m.capturedLength());
      if (e < 0) { fail("body opened here by " + m.captured(0) + " is never closed"); return true; }
      advanceTo(e + m.capturedLength(), true);
      return true;
   }

   void meta()
   {
      m_current.iLine = m_iLine;
      m_current.iColumn = int(m_i - m_iLineStart) + 1;
      m_current.sText = m_s.mid(m_i, lineEnd() - m_i).trimmed();
      m_current.bMeta = true;
      advanceTo(lineEnd(), false);
      finish();
   }

   void conditionalMeta(qsizetype iCommand)
   {
      const qsizetype e = m_s.indexOf("*/", iCommand);
      if (e < 0) { return fail("comment opened here is never closed"); }
      m_current.iLine = m_iLine;
      m_current.iColumn = int(m_i - m_iLineStart) + 1;
      m_current.sText = m_s.mid(iCommand, e - iCommand).trimmed();
      m_current.bMeta = true;
      advanceTo(e + 2, false);
      finish();
   }

   void delimiter()
   {
      const QString sLine = m_s.mid(m_i, lineEnd() - m_i).trimmed();
      m_sDelimiter = sLine.mid(9).trimmed();
      if (m_sDelimiter.isEmpty()) { return fail("DELIMITER without a delimiter"); }
      advanceTo(lineEnd(), false);
   }

   void end()
   {
      advanceTo(m_i + m_sDelimiter.size(), false);
      static const QRegularExpression reCopy("^copy\\b.*\\bfrom\\s+stdin\\b", QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
      const bool bCopy = (! m_bMariadb && reCopy.match(m_current.sText).hasMatch());
      finish();
      if (bCopy) { copyRows(); }
   }

   // The rows of COPY ... FROM stdin start on the next line and end with a line "\.".
   void copyRows()
   {
      dump_statement & s = lst.last();
      const int iLine = s.iLine;
      advanceTo(lineEnd(), false);
      advanceTo(qMin(m_i + 1, m_s.size()), false);
      while (m_i < m_s.size())
      {
         const qsizetype e = lineEnd();
         const bool bEnd = (QStringView(m_s).mid(m_i, e - m_i).trimmed() == QLatin1String("\\."));
         advanceTo(qMin(e + 1, m_s.size()), false);
         if (bEnd) { return; }
         ++s.iRows;
      }
      sError = QString("%1:%2: the rows of COPY ... FROM stdin starting here never end with a line \\.").arg(iLine).arg(s.iColumn);
   }
};

} // namespace

QList<dump_statement> splitDump(const QString & sScript, enum_dialect eDialect, QString & sError)
{
   dump_splitter splitter(sScript, eDialect);
   splitter.run();
   sError = splitter.sError;
   return splitter.lst;
}

} // namespace db_import
