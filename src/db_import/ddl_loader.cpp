#include "db_import/ddl_loader.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

namespace db_import {

namespace {

// Where a quoted name, literal or comment that starts at i ends (the index after it).
qsizetype skipQuoted(const QString & s, qsizetype i)
{
   const QChar c = s.at(i);
   if ((c == '-') && (s.mid(i, 2) == "--")) { const qsizetype e = s.indexOf('\n', i); return ((e < 0) ? s.size() : e); }
   if ((c == '/') && (s.mid(i, 2) == "/*")) { const qsizetype e = s.indexOf("*/", i + 2); return ((e < 0) ? s.size() : (e + 2)); }
   const QChar cEnd = ((c == '[') ? QChar(']') : c);
   qsizetype j = i + 1;
   while (j < s.size())
   {
      if (s.at(j) == cEnd)
      {
         // A doubled quote is one quote character inside.
         if ((cEnd != ']') && ((j + 1) < s.size()) && (s.at(j + 1) == cEnd)) { j += 2; continue; }
         return (j + 1);
      }
      ++j;
   }
   return s.size();
}

bool startsQuoted(const QString & s, qsizetype i)
{
   const QChar c = s.at(i);
   return ((c == '\'') || (c == '"') || (c == '`') || (c == '[') || ((c == '-') && (s.mid(i, 2) == "--")) || ((c == '/') && (s.mid(i, 2) == "/*")));
}

// A trigger's body holds statements of its own: its ";" ends the trigger only after END.
bool insideTrigger(const QString & sStatement)
{
   static const QRegularExpression reTrigger("^\\s*create\\s+(temp\\w*\\s+)?trigger\\b", QRegularExpression::CaseInsensitiveOption);
   static const QRegularExpression reEnd("\\bend\\s*$", QRegularExpression::CaseInsensitiveOption);
   return (reTrigger.match(sStatement).hasMatch() && ! reEnd.match(sStatement).hasMatch());
}

} // namespace

ddl_loader::~ddl_loader()
{
   if (m_sConnection.isEmpty()) { return; }
   {
      QSqlDatabase db = QSqlDatabase::database(m_sConnection, false);
      if (db.isOpen()) { db.close(); }
   }
   QSqlDatabase::removeDatabase(m_sConnection);
}

QList<ddl_loader::statement> ddl_loader::split(const QString & sScript)
{
   QList<statement> lst;
   // A statement's line is that of its first character outside blanks and comments.
   auto append = [&lst, &sScript](qsizetype iStart, qsizetype iEnd)
   {
      qsizetype iFirst = iStart;
      while (iFirst < iEnd)
      {
         if (sScript.at(iFirst).isSpace()) { ++iFirst; continue; }
         if ((sScript.mid(iFirst, 2) != "--") && (sScript.mid(iFirst, 2) != "/*")) { break; }
         iFirst = qMin(skipQuoted(sScript, iFirst), iEnd);
      }
      const QString sText = sScript.mid(iFirst, iEnd - iFirst).trimmed();
      if (! sText.isEmpty()) { lst.append(statement { int(sScript.left(iFirst).count('\n')) + 1, sText }); }
   };
   qsizetype iStart = 0;
   qsizetype i = 0;
   while (i < sScript.size())
   {
      if (startsQuoted(sScript, i)) { i = skipQuoted(sScript, i); continue; }
      if ((sScript.at(i) == ';') && ! insideTrigger(sScript.mid(iStart, i - iStart)))
      {
         append(iStart, i);
         iStart = i + 1;
      }
      ++i;
   }
   append(iStart, sScript.size());
   return lst;
}

bool ddl_loader::load(const QString & sFile, bool bStrict, QString & sError)
{
   QFile f(sFile);
   if (! f.open(QIODevice::ReadOnly)) { sError = "cannot read DDL file '" + sFile + "': " + f.errorString(); return false; }
   const QString sScript = QString::fromUtf8(f.readAll());
   m_sConnection = "tavrel_ddl_" + QUuid::createUuid().toString(QUuid::Id128);
   QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_sConnection);
   db.setDatabaseName(":memory:");
   if (! db.open()) { sError = "cannot open an in-memory SQLite database: " + db.lastError().text(); return false; }
   QSqlQuery q(db);
   q.exec("PRAGMA foreign_keys = OFF");
   const QString sName = QFileInfo(sFile).fileName();
   int iRun = 0;
   for (const statement & s : split(sScript))
   {
      if (q.exec(s.sText)) { ++iRun; continue; }
      const QString sLine = QString("%1:%2: ").arg(sName).arg(s.iLine);
      if (bStrict) { sError = sLine + "statement failed: " + q.lastError().text().trimmed(); return false; }
      m_lstWarnings.append(sLine + "statement skipped: " + q.lastError().text().trimmed());
   }
   if (iRun == 0) { sError = "DDL file '" + sFile + "' has no statement SQLite could run"; return false; }
   return true;
}

QSqlDatabase ddl_loader::database() const
{
   return QSqlDatabase::database(m_sConnection, false);
}

} // namespace db_import
