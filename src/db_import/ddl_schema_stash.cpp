#include "db_import/ddl_schema_stash.h"

#include <QRegularExpression>

#include <sqlite3.h>

#include <algorithm>
#include <cctype>

namespace db_import {

namespace {

// SQLite's own tables stay: an AUTOINCREMENT insert needs sqlite_sequence in memory.
const char * const k_sOthers = "tbl_name NOT LIKE 'sqlite\\_%' ESCAPE '\\'";

// The stash's own statements: the schema table writable, the script's guards let them through.
class internal_scope
{
   sqlite3 * m_pDb;
   bool * m_pInternal;

public:
   internal_scope(sqlite3 * pDb, bool * pInternal) : m_pDb(pDb), m_pInternal(pInternal)
   {
      * m_pInternal = true;
      sqlite3_db_config(m_pDb, SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
      sqlite3_db_config(m_pDb, SQLITE_DBCONFIG_WRITABLE_SCHEMA, 1, nullptr);
   }
   ~internal_scope()
   {
      sqlite3_db_config(m_pDb, SQLITE_DBCONFIG_WRITABLE_SCHEMA, 0, nullptr);
      sqlite3_db_config(m_pDb, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
      * m_pInternal = false;
   }
   internal_scope(const internal_scope &) = delete;
   internal_scope & operator=(const internal_scope &) = delete;
};

QByteArray columnBytes(sqlite3_stmt * p, int i)
{
   return QByteArray(static_cast<const char *>(sqlite3_column_blob(p, i)), sqlite3_column_bytes(p, i));
}

// A name as SQLite reads it: quotes taken off, doubled quotes made one.
QByteArray unquoted(const QString & s)
{
   if (s.size() < 2) { return s.toUtf8(); }
   const QChar c = s.at(0);
   if (c == '[') { return s.mid(1, s.size() - 2).toUtf8(); }
   if ((c == '"') || (c == '`') || (c == '\''))
   {
      QString sInner = s.mid(1, s.size() - 2);
      sInner.replace(QString(2, c), QString(c));
      return sInner.toUtf8();
   }
   return s.toUtf8();
}

} // namespace

ddl_schema_stash::ddl_schema_stash(sqlite3 * pDb, bool * pInternal) : m_pDb(pDb), m_pInternal(pInternal)
{
}

bool ddl_schema_stash::exec(const char * sSql)
{
   return (sqlite3_exec(m_pDb, sSql, nullptr, nullptr, nullptr) == SQLITE_OK);
}

// The rows still in the schema table join the stash, in their order, and leave the table.
bool ddl_schema_stash::takeRows()
{
   sqlite3_stmt * p = nullptr;
   const QByteArray sSelect = QByteArray("SELECT type, name, tbl_name, rootpage, sql FROM main.sqlite_master WHERE ") + k_sOthers + " ORDER BY rowid";
   if (sqlite3_prepare_v2(m_pDb, sSelect.constData(), -1, & p, nullptr) != SQLITE_OK) { return false; }
   int rc = SQLITE_ROW;
   while ((rc = sqlite3_step(p)) == SQLITE_ROW)
   {
      row r;
      r.sType = columnBytes(p, 0);
      r.sName = columnBytes(p, 1);
      r.sTable = columnBytes(p, 2);
      r.iRoot = sqlite3_column_int64(p, 3);
      r.bNoSql = (sqlite3_column_type(p, 4) == SQLITE_NULL);
      r.sSql = columnBytes(p, 4);
      const QByteArray sGroup = r.sTable.toLower();
      m_hashNames.insert(keyOf(r.sType == "trigger", r.sName), sGroup);
      m_hashGroups[sGroup].append(m_lstRows.size());
      m_lstRows.append(r);
   }
   sqlite3_finalize(p);
   return ((rc == SQLITE_DONE) && exec((QByteArray("DELETE FROM main.sqlite_master WHERE ") + k_sOthers).constData()));
}

bool ddl_schema_stash::insertRows(const QList<qsizetype> & lstRows)
{
   sqlite3_stmt * p = nullptr;
   if (sqlite3_prepare_v2(m_pDb, "INSERT INTO main.sqlite_master (type, name, tbl_name, rootpage, sql) VALUES (?, ?, ?, ?, ?)", -1, & p, nullptr) != SQLITE_OK) { return false; }
   bool bOk = true;
   for (const qsizetype i : lstRows)
   {
      row & r = m_lstRows[i];
      if (r.bBack) { continue; }
      sqlite3_bind_text(p, 1, r.sType.constData(), int(r.sType.size()), SQLITE_STATIC);
      sqlite3_bind_text(p, 2, r.sName.constData(), int(r.sName.size()), SQLITE_STATIC);
      sqlite3_bind_text(p, 3, r.sTable.constData(), int(r.sTable.size()), SQLITE_STATIC);
      sqlite3_bind_int64(p, 4, r.iRoot);
      if (r.bNoSql) { sqlite3_bind_null(p, 5); } else { sqlite3_bind_text(p, 5, r.sSql.constData(), int(r.sSql.size()), SQLITE_STATIC); }
      bOk = (bOk && (sqlite3_step(p) == SQLITE_DONE));
      sqlite3_reset(p);
      r.bBack = true;
      m_hashNames.remove(keyOf(r.sType == "trigger", r.sName));
   }
   sqlite3_finalize(p);
   return bOk;
}

// A new schema version makes SQLite drop its schema and read the table again, here and now.
bool ddl_schema_stash::reload()
{
   sqlite3_stmt * p = nullptr;
   if (sqlite3_prepare_v2(m_pDb, "PRAGMA main.schema_version", -1, & p, nullptr) != SQLITE_OK) { return false; }
   const bool bRead = (sqlite3_step(p) == SQLITE_ROW);
   const qint64 iVersion = sqlite3_column_int64(p, 0);
   sqlite3_finalize(p);
   if (! bRead || ! exec(QByteArray("PRAGMA main.schema_version = " + QByteArray::number(iVersion + 1)).constData())) { return false; }
   return exec("SELECT 1 FROM main.sqlite_master LIMIT 1");
}

bool ddl_schema_stash::setAside()
{
   internal_scope scope(m_pDb, m_pInternal);
   m_iVisible = 0;
   return (takeRows() && reload());
}

bool ddl_schema_stash::bringBack(const QSet<QByteArray> & setGroups)
{
   internal_scope scope(m_pDb, m_pInternal);
   if (! takeRows()) { return false; }
   QList<qsizetype> lstRows;
   for (const QByteArray & sGroup : setGroups) { lstRows.append(m_hashGroups.take(sGroup)); }
   // Within one table the order they were made in: the table before its indexes and triggers.
   std::sort(lstRows.begin(), lstRows.end());
   m_iVisible = lstRows.size();
   return (insertRows(lstRows) && reload());
}

bool ddl_schema_stash::bringBackAll()
{
   internal_scope scope(m_pDb, m_pInternal);
   QList<qsizetype> lstRows;
   lstRows.reserve(m_lstRows.size());
   for (qsizetype i = 0; i < m_lstRows.size(); ++i) { lstRows.append(i); }
   const bool bOk = (insertRows(lstRows) && reload());
   m_lstRows.clear();
   m_hashGroups.clear();
   m_hashNames.clear();
   m_iVisible = lstRows.size();
   return bOk;
}

QList<ddl_schema_stash::object> ddl_schema_stash::objects() const
{
   QList<const row *> lstRows;
   for (const row & r : m_lstRows)
   {
      if (! r.bBack && ((r.sType == "table") || (r.sType == "view"))) { lstRows.append(& r); }
   }
   std::sort(lstRows.begin(), lstRows.end(), [](const row * a, const row * b) { return (a->sName < b->sName); });
   QList<object> lst;
   lst.reserve(lstRows.size());
   for (const row * r : lstRows) { lst.append(object { QString::fromUtf8(r->sName), r->sTable.toLower(), (r->sType == "view") }); }
   return lst;
}

QSet<QByteArray> ddl_schema_stash::withNamed(const QSet<QByteArray> & setGroups) const
{
   QSet<QByteArray> setAll = setGroups;
   QList<QByteArray> lstToScan(setGroups.cbegin(), setGroups.cend());
   // Each group is scanned once: the work is bounded by the text of the views.
   while (! lstToScan.isEmpty())
   {
      const QByteArray sGroup = lstToScan.takeLast();
      for (const qsizetype i : m_hashGroups.value(sGroup))
      {
         const row & r = m_lstRows.at(i);
         if (r.bBack || (r.sType != "view")) { continue; }
         for (const QByteArray & sWord : namesIn(r.sSql))
         {
            const QByteArray sNamed = m_hashNames.value(keyOf(false, sWord));
            if (! sNamed.isEmpty() && ! setAll.contains(sNamed)) { setAll.insert(sNamed); lstToScan.append(sNamed); }
         }
      }
   }
   return setAll;
}

QList<QByteArray> ddl_schema_stash::namesIn(const QByteArray & sSql)
{
   QList<QByteArray> lst;
   const char * p = sSql.constData();
   const char * const pEnd = p + sSql.size();
   auto isWord = [](char c) { return ((static_cast<unsigned char>(c) >= 0x80) || std::isalnum(static_cast<unsigned char>(c)) || (c == '_') || (c == '$')); };
   while (p < pEnd)
   {
      const char c = * p;
      if ((c == '"') || (c == '`') || (c == '[') || (c == '\''))
      {
         const char cEnd = ((c == '[') ? ']' : c);
         QByteArray sName;
         for (++p; p < pEnd; ++p)
         {
            if (* p != cEnd) { sName += * p; continue; }
            if ((cEnd != ']') && ((p + 1) < pEnd) && (p[1] == cEnd)) { sName += cEnd; ++p; continue; }
            ++p;
            break;
         }
         if (c != '\'') { lst.append(sName); }
         continue;
      }
      if (! isWord(c)) { ++p; continue; }
      const char * const pStart = p;
      while ((p < pEnd) && isWord(* p)) { ++p; }
      lst.append(QByteArray(pStart, int(p - pStart)));
   }
   return lst;
}

QList<QByteArray> ddl_schema_stash::missingKeys(const QString & sMessage)
{
   static const QRegularExpression re("no such (table|view|index|trigger): (.+)$");
   const QRegularExpressionMatch m = re.match(sMessage);
   if (! m.hasMatch()) { return {}; }
   const bool bTrigger = (m.captured(1) == "trigger");
   const QByteArray sName = m.captured(2).toUtf8();
   QList<QByteArray> lst { keyOf(bTrigger, sName) };
   if (sName.toLower().startsWith("main.")) { lst.append(keyOf(bTrigger, sName.mid(5))); }
   return lst;
}

QByteArray ddl_schema_stash::dropIfExistsKey(const char * p, const char * pEnd)
{
   static const QString sName = "(\"(?:[^\"]|\"\")*\"|`(?:[^`]|``)*`|'(?:[^']|'')*'|\\[[^\\]]*\\]|[\\w$\\x{80}-\\x{10FFFF}]+)";
   static const QRegularExpression reDrop("^drop\\s+(table|view|index|trigger)\\s+if\\s+exists\\b", QRegularExpression::CaseInsensitiveOption);
   static const QRegularExpression reName("^drop\\s+(table|view|index|trigger)\\s+if\\s+exists\\s+(?:" + sName + "\\s*\\.\\s*)?" + sName,
                                          QRegularExpression::CaseInsensitiveOption);
   // Only the start matters: a bounded look keeps a huge statement linear.
   const QString s = QString::fromUtf8(p, int(std::min<qsizetype>(pEnd - p, 2048)));
   if (! reDrop.match(s).hasMatch()) { return {}; }
   const QRegularExpressionMatch m = reName.match(s);
   if (! m.hasMatch()) { return "*"; }
   if (! m.captured(2).isEmpty() && (unquoted(m.captured(2)).toLower() != "main")) { return {}; }
   return keyOf(m.captured(1).compare("trigger", Qt::CaseInsensitive) == 0, unquoted(m.captured(3)));
}

} // namespace db_import
