// Imports random bytes as a JSON model and writes its schema script for every database. Model
// text must stay inside the name, literal or comment it is written in: the script, read by a
// small tokenizer that follows each database's quoting, holds exactly the statements the
// model's tables imply, each starting as the export starts it.

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

#include "fuzz_support.h"
#include "model/project.h"
#include "sql_export/schema/schema_model.h"
#include "sql_export/schema/schema_script.h"
#include "storage/project_storage.h"

namespace {

using sql_export::enum_dialect;

// The statements of a script: each one's leading words (upper case) and its quoted or bare
// names in order, with their quotes taken off.
struct statement
{
   QStringList lstWords;
   QStringList lstNames;
   QString sHead() const { return lstWords.mid(0, 3).join(' '); }
};

class sql_tokens
{
   const QString & m_s;
   const enum_dialect m_e;
   qsizetype m_i = 0;
   QList<statement> m_lst;
   statement m_current;

   [[noreturn]] void fail(const char * what) const
   { fuzz_support::fail(what, QString("at %1 of the script:\n%2").arg(m_i).arg(m_s)); }

   // A quoted text from the opening quote; the quote doubled stands for itself, and with
   // bBackslash a backslash escapes the next character. Returns the text without its quotes.
   QString quoted(QChar cQuote, bool bBackslash)
   {
      QString sText;
      for (++m_i; m_i < m_s.size(); ++m_i)
      {
         const QChar c = m_s.at(m_i);
         if (bBackslash && (c == QLatin1Char('\\')))
         {
            if (++m_i >= m_s.size()) { break; }
            sText += m_s.at(m_i);
            continue;
         }
         if (c != cQuote) { sText += c; continue; }
         if ((m_i + 1 < m_s.size()) && (m_s.at(m_i + 1) == cQuote)) { sText += c; ++m_i; continue; }
         ++m_i;
         return sText;
      }
      fail("a quoted name or literal is left open at the end of the script");
   }

public:
   sql_tokens(const QString & s, enum_dialect e) : m_s(s), m_e(e) { ; }

   QList<statement> statements()
   {
      const bool bMaria = (m_e == sql_export::dialect_mariadb);
      while (m_i < m_s.size())
      {
         const QChar c = m_s.at(m_i);
         const ushort u = c.unicode();
         if (u == 0) { fail("a NUL character in the script"); }
         if (c.isSpace()) { ++m_i; continue; }
         if (m_s.mid(m_i, 2) == QLatin1String("--"))
         {
            const qsizetype iEnd = m_s.indexOf(QLatin1Char('\n'), m_i);
            m_i = ((iEnd < 0) ? m_s.size() : iEnd + 1);
            continue;
         }
         if (m_s.mid(m_i, 2) == QLatin1String("/*")) { fail("a block comment opens outside any quote"); }
         if (bMaria && (c == QLatin1Char('#'))) { fail("a '#' comment opens outside any quote"); }
         if (c == QLatin1Char(';'))
         {
            if (m_current.lstWords.isEmpty()) { fail("an empty statement"); }
            m_lst.append(m_current);
            m_current = statement();
            ++m_i;
            continue;
         }
         if (c == QLatin1Char('\''))
         {
            // PostgreSQL reads backslashes only in E'' (the export writes no other kind with one).
            const bool bEscape = (bMaria || ((m_e == sql_export::dialect_postgresql) && (m_i > 0) && (m_s.at(m_i - 1) == QLatin1Char('E'))));
            const qsizetype iStart = m_i;
            quoted(c, bEscape);
            if ((m_e == sql_export::dialect_postgresql) && ! bEscape && m_s.mid(iStart, m_i - iStart).contains(QLatin1Char('\\')))
            { fail("a backslash in a plain PostgreSQL literal, an escape where standard_conforming_strings is off"); }
            m_current.lstWords.append(QStringLiteral("<literal>"));
            continue;
         }
         if (c == QLatin1Char('"'))
         {
            if (bMaria) { fail("a double quote in a MariaDB script, where it opens a string"); }
            m_current.lstNames.append(quoted(c, false));
            m_current.lstWords.append(QStringLiteral("<name>"));
            continue;
         }
         if (c == QLatin1Char('`'))
         {
            if (! bMaria) { fail("a backquote outside any quote"); }
            m_current.lstNames.append(quoted(c, false));
            m_current.lstWords.append(QStringLiteral("<name>"));
            continue;
         }
         if (c.isLetterOrNumber() || (c == QLatin1Char('_')))
         {
            const qsizetype iStart = m_i;
            while ((m_i < m_s.size()) && (m_s.at(m_i).isLetterOrNumber() || (m_s.at(m_i) == QLatin1Char('_')) || (m_s.at(m_i) == QLatin1Char('.')))) { ++m_i; }
            // E'...' is one literal in PostgreSQL.
            if ((m_i - iStart == 1) && (m_s.at(iStart) == QLatin1Char('E')) && (m_i < m_s.size()) && (m_s.at(m_i) == QLatin1Char('\''))) { continue; }
            const QString sWord = m_s.mid(iStart, m_i - iStart);
            m_current.lstWords.append(sWord.toUpper());
            m_current.lstNames.append(sWord);
            continue;
         }
         if (QStringLiteral("(),=-+.[]").contains(c)) { ++m_i; continue; }
         fail("a character outside any quote that the export never writes there");
      }
      if (! m_current.lstWords.isEmpty()) { fail("the script ends inside a statement"); }
      return m_lst;
   }
};

void checkScript(const model::project & project, enum_dialect e)
{
   const sql_export::sql_dialect dialect(e);
   const sql_export::sql_schema schema = sql_export::schema_builder::build(project, dialect, sql_export::schema_options());
   const QString sScript = sql_export::schema_script::write(schema, dialect, project.getName());
   const QList<statement> lst = sql_tokens(sScript, e).statements();

   // What the tables imply: one CREATE TABLE each, an index per unique or indexed column, the
   // comments (PostgreSQL), the keys added after the tables they point at (not SQLite).
   QHash<QString, int> hashExpected;
   QStringList lstTables;
   QSet<QString> setCreated;
   for (int i : sql_export::schema_script::creationOrder(schema))
   {
      const sql_export::sql_table & t = schema.lstTables.at(i);
      setCreated.insert(t.sName);
      lstTables.append(t.sName);
      ++hashExpected["CREATE TABLE <name>"];
      if ((e == sql_export::dialect_postgresql) && ! t.sComment.isEmpty()) { ++hashExpected["COMMENT ON TABLE"]; }
      for (const sql_export::sql_column & c : t.lstColumns)
      {
         if (c.bUnique) { ++hashExpected["CREATE UNIQUE INDEX"]; }
         if (c.bIndex) { ++hashExpected["CREATE INDEX <name>"]; }
         if ((e == sql_export::dialect_postgresql) && ! c.sComment.isEmpty()) { ++hashExpected["COMMENT ON COLUMN"]; }
      }
      for (const sql_export::sql_foreign_key & k : t.lstForeignKeys)
      { if ((e != sql_export::dialect_sqlite) && ! setCreated.contains(k.sTargetTable)) { ++hashExpected["ALTER TABLE <name>"]; } }
   }
   if (e != sql_export::dialect_mariadb) { hashExpected["BEGIN"] = 1; hashExpected["COMMIT"] = 1; }

   QHash<QString, int> hashFound;
   QStringList lstCreated;
   for (const statement & s : lst)
   {
      QString sHead = s.sHead();
      // Names of bare words read as <name> too, as the export writes plain names bare.
      if (sHead.startsWith("CREATE TABLE ") || sHead.startsWith("CREATE INDEX ") || sHead.startsWith("ALTER TABLE "))
      { sHead = s.lstWords.mid(0, 2).join(' ') + " <name>"; }
      if (sHead.startsWith("COMMENT ON ")) { sHead = s.lstWords.mid(0, 3).join(' '); }
      if ((sHead == "BEGIN <literal>") || s.lstWords == QStringList("BEGIN")) { sHead = "BEGIN"; }
      if (s.lstWords == QStringList("COMMIT")) { sHead = "COMMIT"; }
      ++hashFound[sHead];
      if (sHead == "CREATE TABLE <name>") { lstCreated.append(s.lstNames.value(2)); }
   }
   fuzz_support::check(hashFound == hashExpected, "the script's statements are not those of the model's tables", sScript);
   fuzz_support::check(lstCreated == lstTables, "the tables created are not the model's, in its order", sScript);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
   fuzz_support::ensureApplication();
   return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t * data, size_t size)
{
   const QByteArray json(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
   model::project_ptr project;
   if (! storage::project_storage::parseJson(json, QStringLiteral("fuzz.json"), project) || ! project) { return 0; }
   for (enum_dialect e : { sql_export::dialect_sqlite, sql_export::dialect_postgresql, sql_export::dialect_mariadb }) { checkScript(* project, e); }
   return 0;
}
