#include "db_import/ddl_loader.h"

#include "db_import/ddl_schema_stash.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <sqlite3.h>

#include <cctype>

namespace db_import {

// What the scratch connection's authorizer and step counter share with the loader.
struct ddl_loader::guard
{
   // Catalog mode: the script has run and the catalog reader asks its pragmas.
   bool bCatalog = false;
   // Why the authorizer refused the statement being prepared; empty when it did not.
   QString sRefused;
   long long iChecks = 0;
   long long iScriptChecks = 0;
   // The loader's own statements (the schema rows set aside and back): let through, counted apart.
   bool bInternal = false;
   long long iInternalChecks = 0;
   int iStepsPerCheck = k_iStepsPerCheck;
   // What the statement being prepared creates (stash keys) and whether it needs every row of
   // the schema table (a virtual table, whose module looks its own tables up).
   QList<QByteArray> lstCreated;
   bool bWholeSchema = false;
   bool bVirtual = false;   // ever
};

namespace {

const qsizetype k_iShownStatement = 70;

// Where a quoted name, literal or comment that starts at i ends (the index after it); -1 when
// it is never closed ("--" ends with the script).
qsizetype skipQuoted(const QString & s, qsizetype i)
{
   const QChar c = s.at(i);
   if ((c == '-') && (s.mid(i, 2) == "--")) { const qsizetype e = s.indexOf('\n', i); return ((e < 0) ? s.size() : e); }
   if ((c == '/') && (s.mid(i, 2) == "/*")) { const qsizetype e = s.indexOf("*/", i + 2); return ((e < 0) ? -1 : (e + 2)); }
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
   return -1;
}

bool startsQuoted(const QString & s, qsizetype i)
{
   const QChar c = s.at(i);
   return ((c == '\'') || (c == '"') || (c == '`') || (c == '[') || ((c == '-') && (s.mid(i, 2) == "--")) || ((c == '/') && (s.mid(i, 2) == "/*")));
}

QString openerName(QChar c)
{
   switch (c.unicode())
   {
      case '\'': return "string literal";
      case '/': return "comment";
      default: return QString("quoted name (%1)").arg(c);
   }
}

bool isWordChar(QChar c) { return (c.isLetterOrNumber() || (c == '_')); }

// A statement whose first words are CREATE [TEMP] TRIGGER.
bool startsTrigger(const QString & s, qsizetype iFirst, qsizetype iEnd)
{
   static const QRegularExpression re("\\Gcreate\\s+(temp\\w*\\s+)?trigger\\b", QRegularExpression::CaseInsensitiveOption);
   // The words are near the start: a bounded look keeps a huge statement linear.
   return re.match(QStringView(s).mid(iFirst, qMin<qsizetype>(iEnd - iFirst, 64))).hasMatch();
}

// The text before i, blanks left out, ends with the word END.
bool endsWithEnd(const QString & s, qsizetype iStart, qsizetype i)
{
   while ((i > iStart) && s.at(i - 1).isSpace()) { --i; }
   if ((i - iStart) < 3) { return false; }
   if (QStringView(s).mid(i - 3, 3).compare(QLatin1String("end"), Qt::CaseInsensitive) != 0) { return false; }
   return (((i - 3) == iStart) || ! isWordChar(s.at(i - 4)));
}

// Line and column (from 1) of positions asked for in increasing order, counted once.
class line_counter
{
   const QString & m_s;
   qsizetype m_iPos = 0;
   qsizetype m_iLineStart = 0;
   int m_iLine = 1;

public:
   explicit line_counter(const QString & s) : m_s(s) { ; }
   void at(qsizetype iPos, int & iLine, int & iColumn)
   {
      for (; m_iPos < iPos; ++m_iPos)
      {
         if (m_s.at(m_iPos) == '\n') { ++m_iLine; m_iLineStart = m_iPos + 1; }
      }
      iLine = m_iLine;
      iColumn = int(iPos - m_iLineStart) + 1;
   }
};

sqlite3 * handleOf(const QSqlDatabase & db)
{
   const QVariant v = db.driver()->handle();
   if (! v.isValid() || (qstrcmp(v.typeName(), "sqlite3*") != 0)) { return nullptr; }
   return * static_cast<sqlite3 * const *>(v.constData());
}

bool isOneOf(const char * s, std::initializer_list<const char *> lst)
{
   if (! s) { return false; }
   for (const char * t : lst) { if (qstricmp(s, t) == 0) { return true; } }
   return false;
}

// What the set-aside of schema rows must know of a statement before it runs.
void noteSchemaUse(ddl_loader::guard & g, int iAction, const char * z1)
{
   switch (iAction)
   {
      case SQLITE_CREATE_INDEX: case SQLITE_CREATE_TABLE: case SQLITE_CREATE_VIEW:
         g.lstCreated.append(ddl_schema_stash::keyOf(false, QByteArray(z1 ? z1 : "")));
         break;
      case SQLITE_CREATE_TRIGGER: g.lstCreated.append(ddl_schema_stash::keyOf(true, QByteArray(z1 ? z1 : ""))); break;
      case SQLITE_CREATE_VTABLE: case SQLITE_DROP_VTABLE: g.bVirtual = true; g.bWholeSchema = true; break;
      default: break;
   }
}

// Everything a script could use to reach past its scratch database is refused here, whatever
// statement it hides in (a view, a trigger, a default value).
int authorize(void * pUser, int iAction, const char * z1, const char * z2, const char * zDatabase, const char *)
{
   auto * pGuard = static_cast<ddl_loader::guard *>(pUser);
   if (pGuard->bInternal) { return SQLITE_OK; }
   if (! pGuard->bCatalog) { noteSchemaUse(* pGuard, iAction, z1); }
   auto refuse = [pGuard](const QString & s) { if (pGuard->sRefused.isEmpty()) { pGuard->sRefused = s; } return SQLITE_DENY; };
   switch (iAction)
   {
      case SQLITE_ATTACH: return refuse("ATTACH reaches files outside the script's database");
      case SQLITE_DETACH: return refuse("DETACH is not part of a schema");
      case SQLITE_PRAGMA:
         // The full-text modules read these (never set them) when they create and fill their tables.
         if (isOneOf(z1, { "page_size", "data_version" }) && ! z2) { return SQLITE_OK; }
         if (pGuard->bCatalog && isOneOf(z1, { "table_info", "table_xinfo", "foreign_key_list", "index_list", "index_info", "index_xinfo" })) { return SQLITE_OK; }
         return refuse(QString("PRAGMA %1 is not part of a schema").arg(QString::fromUtf8(z1 ? z1 : "")));
      case SQLITE_FUNCTION:
         if (isOneOf(z2, { "load_extension", "fts3_tokenizer", "readfile", "writefile", "edit" }))
         { return refuse(QString("%1() is not allowed").arg(QString::fromUtf8(z2))); }
         return SQLITE_OK;
      case SQLITE_CREATE_TEMP_INDEX: case SQLITE_CREATE_TEMP_TABLE: case SQLITE_CREATE_TEMP_TRIGGER: case SQLITE_CREATE_TEMP_VIEW:
      case SQLITE_DROP_TEMP_INDEX: case SQLITE_DROP_TEMP_TABLE: case SQLITE_DROP_TEMP_TRIGGER: case SQLITE_DROP_TEMP_VIEW:
         return refuse("temporary objects are not part of a schema");
      case SQLITE_CREATE_VTABLE: case SQLITE_DROP_VTABLE:
         if (isOneOf(z2, { "fts3", "fts4", "fts5", "rtree", "rtree_i32", "geopoly" })) { break; }
         return refuse(QString("virtual tables of module '%1' are not allowed").arg(QString::fromUtf8(z2 ? z2 : "")));
      case SQLITE_ALTER_TABLE:
         if (! isOneOf(z1, { "main" })) { return refuse("only the script's own database may be changed"); }
         return SQLITE_OK;
      case SQLITE_READ: case SQLITE_SELECT: case SQLITE_RECURSIVE: case SQLITE_TRANSACTION: case SQLITE_SAVEPOINT:
         return SQLITE_OK;
      default: break;
   }
   // Creating, dropping and writing: only in the main database.
   if (zDatabase && ! isOneOf(zDatabase, { "main" })) { return refuse(QString("only the script's own database may be changed, not '%1'").arg(QString::fromUtf8(zDatabase))); }
   return SQLITE_OK;
}

int countSteps(void * pUser)
{
   auto * pGuard = static_cast<ddl_loader::guard *>(pUser);
   if (pGuard->bCatalog) { return 0; }
   if (pGuard->bInternal) { ++pGuard->iInternalChecks; return 0; }
   ++pGuard->iScriptChecks;
   return ((((++pGuard->iChecks) * pGuard->iStepsPerCheck) > ddl_loader::k_iStepLimit) ||
           ((pGuard->iScriptChecks * pGuard->iStepsPerCheck) > ddl_loader::k_iScriptStepLimit)) ? 1 : 0;
}

// Where the text from p on has its first character outside blanks and comments.
const char * skipBlank(const char * p, const char * pEnd)
{
   while (p < pEnd)
   {
      if (std::isspace(static_cast<unsigned char>(* p))) { ++p; continue; }
      if (((pEnd - p) >= 2) && (p[0] == '-') && (p[1] == '-')) { while ((p < pEnd) && (* p != '\n')) { ++p; } continue; }
      if (((pEnd - p) >= 2) && (p[0] == '/') && (p[1] == '*'))
      {
         p += 2;
         while (((pEnd - p) >= 2) && ! ((p[0] == '*') && (p[1] == '/'))) { ++p; }
         p = qMin(p + 2, pEnd);
         continue;
      }
      break;
   }
   return p;
}

QByteArray firstWord(const char * p, const char * pEnd)
{
   const char * pWord = p;
   while ((p < pEnd) && std::isalpha(static_cast<unsigned char>(* p))) { ++p; }
   return QByteArray(pWord, int(p - pWord)).toUpper();
}

// The statements a schema script is made of.
bool isSchemaStatement(const QByteArray & sWord)
{
   for (const char * s : { "CREATE", "ALTER", "DROP", "INSERT", "REPLACE", "BEGIN", "COMMIT", "END", "ROLLBACK", "SAVEPOINT", "RELEASE" })
   { if (sWord == s) { return true; } }
   return false;
}

// "PRAGMA foreign_keys=OFF", which dumps start with: the scratch database never checks keys.
bool isForeignKeysPragma(const QString & s)
{
   static const QRegularExpression re("^\\s*pragma\\s+(main\\s*\\.\\s*)?foreign_keys\\s*(=\\s*\\w+|\\(\\s*\\w+\\s*\\))?\\s*;?\\s*$",
                                      QRegularExpression::CaseInsensitiveOption);
   return re.match(s).hasMatch();
}

// One line of a statement for a message.
QString shownStatement(const QString & s)
{
   QString sLine = s.section('\n', 0, 0).trimmed();
   if ((sLine.size() > k_iShownStatement) || (sLine.size() < s.trimmed().size())) { sLine = sLine.left(k_iShownStatement) + " ..."; }
   return sLine;
}

} // namespace

ddl_loader::ddl_loader() : m_pGuard(std::make_unique<guard>())
{
}

ddl_loader::~ddl_loader()
{
   closeConnection();
}

void ddl_loader::closeConnection()
{
   m_pStash.reset();
   if (m_sConnection.isEmpty()) { return; }
   {
      QSqlDatabase db = QSqlDatabase::database(m_sConnection, false);
      if (db.isOpen()) { db.close(); }
   }
   QSqlDatabase::removeDatabase(m_sConnection);
   m_sConnection.clear();
}

long long ddl_loader::getSteps() const
{
   return ((m_pGuard->iScriptChecks + m_pGuard->iInternalChecks) * m_pGuard->iStepsPerCheck);
}

QList<ddl_loader::statement> ddl_loader::split(const QString & sScript, split_error * pError)
{
   QList<statement> lst;
   line_counter lines(sScript);
   if (pError) { * pError = split_error(); }
   // A statement's line is that of its first character outside blanks and comments.
   auto first = [&sScript](qsizetype iStart, qsizetype iEnd)
   {
      qsizetype iFirst = iStart;
      while (iFirst < iEnd)
      {
         if (sScript.at(iFirst).isSpace()) { ++iFirst; continue; }
         if ((sScript.mid(iFirst, 2) != "--") && (sScript.mid(iFirst, 2) != "/*")) { break; }
         const qsizetype iAfter = skipQuoted(sScript, iFirst);
         iFirst = ((iAfter < 0) ? iEnd : qMin(iAfter, iEnd));
      }
      return iFirst;
   };
   auto append = [&](qsizetype iStart, qsizetype iEnd)
   {
      const qsizetype iFirst = first(iStart, iEnd);
      const QString sText = sScript.mid(iFirst, iEnd - iFirst).trimmed();
      if (sText.isEmpty()) { return; }
      statement s;
      lines.at(iFirst, s.iLine, s.iColumn);
      s.sText = sText;
      lst.append(s);
   };
   qsizetype iStart = 0;
   int iTrigger = -1;   // unknown for the statement at iStart
   qsizetype i = 0;
   while (i < sScript.size())
   {
      if (startsQuoted(sScript, i))
      {
         const qsizetype iAfter = skipQuoted(sScript, i);
         if (iAfter >= 0) { i = iAfter; continue; }
         append(iStart, i);
         if (pError)
         {
            lines.at(i, pError->iLine, pError->iColumn);
            pError->sWhat = openerName(sScript.at(i)) + " opened here is never closed";
         }
         return lst;
      }
      if (sScript.at(i) == ';')
      {
         if (iTrigger < 0) { iTrigger = (startsTrigger(sScript, first(iStart, i), i) ? 1 : 0); }
         if ((iTrigger == 0) || endsWithEnd(sScript, iStart, i))
         {
            append(iStart, i);
            iStart = i + 1;
            iTrigger = -1;
         }
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
   return loadText(QString::fromUtf8(f.readAll()), QFileInfo(sFile).fileName(), bStrict, sError);
}

// False when the load ends (sError says why); a statement SQLite cannot run is a warning unless
// strict.
bool ddl_loader::runStatement(sqlite3 * pDb, const statement & s, const QString & sName, bool bStrict, qsizetype & iRun, QString & sError)
{
   const QByteArray utf8 = s.sText.toUtf8();
   const char * pBegin = utf8.constData();
   const char * pEnd = pBegin + utf8.size();
   const char * p = pBegin;
   // Where a message points: a byte offset in the statement made a line and column.
   auto place = [&](qsizetype iOffset)
   {
      const QString sBefore = QString::fromUtf8(pBegin, qMin<qsizetype>(iOffset, utf8.size()));
      const qsizetype iNewline = sBefore.lastIndexOf('\n');
      const int iLine = s.iLine + int(sBefore.count('\n'));
      const int iColumn = ((iNewline < 0) ? (s.iColumn + int(sBefore.size())) : int(sBefore.size() - iNewline));
      return QString("%1:%2:%3: ").arg(sName).arg(iLine).arg(iColumn);
   };
   // One statement may hold several when the split missed a ";" SQLite sees: each is checked.
   while (p < pEnd)
   {
      p = skipBlank(p, pEnd);
      if (p >= pEnd) { break; }
      const QByteArray sWord = firstWord(p, pEnd);
      const qsizetype iAt = (p - pBegin);
      // Only the start is shown: converting the rest each time would cost its length again.
      const QString sShown = shownStatement(QString::fromUtf8(p, int(qMin<qsizetype>(pEnd - p, 4 * k_iShownStatement))));
      if (! isSchemaStatement(sWord))
      {
         sError = place(iAt) + "statement refused: " + sShown + " (a DDL script may only create, change or drop tables, views, indexes and triggers and insert rows)";
         return false;
      }
      m_pGuard->sRefused.clear();
      m_pGuard->iChecks = 0;
      sqlite3_stmt * pStatement = nullptr;
      const char * pTail = nullptr;
      int rc = prepare(pDb, p, pEnd, & pStatement, & pTail);
      if (m_bRestart) { sqlite3_finalize(pStatement); return false; }
      if ((rc == SQLITE_OK) && pStatement)
      {
         while ((rc = sqlite3_step(pStatement)) == SQLITE_ROW) { ; }
         if (rc == SQLITE_DONE) { rc = SQLITE_OK; }
      }
      const QString sMessage = QString::fromUtf8(sqlite3_errmsg(pDb)).trimmed();
      const int iOffset = ((rc == SQLITE_OK) ? -1 : sqlite3_error_offset(pDb));
      sqlite3_finalize(pStatement);
      if (! m_pGuard->sRefused.isEmpty())
      {
         sError = place(iAt) + "statement refused: " + sShown + " (" + m_pGuard->sRefused + ")";
         return false;
      }
      if (rc == SQLITE_INTERRUPT)
      {
         const bool bScript = ((m_pGuard->iScriptChecks * m_pGuard->iStepsPerCheck) > k_iScriptStepLimit);
         sError = place(iAt) + "statement stopped: " + sShown +
                  (bScript ? QString(" (the script ran %1 SQLite steps in all, the most a DDL script may take)").arg(k_iScriptStepLimit)
                           : QString(" (it ran %1 SQLite steps, the most one statement of a DDL script may take)").arg(k_iStepLimit));
         return false;
      }
      if (rc != SQLITE_OK)
      {
         const QString sWhere = place((iOffset >= 0) ? ((p - pBegin) + iOffset) : iAt);
         if (bStrict) { sError = sWhere + "statement failed: " + sMessage + ": " + sShown; return false; }
         m_lstWarnings.append(sWhere + "statement skipped: " + sMessage + ": " + sShown);
         break;
      }
      ++iRun;
      if (! pStatement || (pTail <= p)) { break; }
      p = pTail;
   }
   return true;
}

// With rows set aside, the objects a statement names come back before it runs: a table it
// reads or writes, one it creates again, one it drops. A virtual table's statement gets every
// row back.
int ddl_loader::prepare(sqlite3 * pDb, const char * p, const char * pEnd, sqlite3_stmt ** ppStatement, const char ** ppTail)
{
   QSet<QByteArray> setNeeded;
   if (m_pStash && ! m_pStash->isEmpty())
   {
      const QByteArray sKey = ddl_schema_stash::dropIfExistsKey(p, pEnd);
      const QByteArray sGroup = m_pStash->groupOf(sKey);
      if (! sGroup.isEmpty()) { setNeeded.insert(sGroup); }
      const bool bBack = ((sKey == "*") ? m_pStash->bringBackAll() : (setNeeded.isEmpty() || m_pStash->bringBack(setNeeded)));
      if (! bBack) { m_bRestart = true; return SQLITE_ERROR; }
   }
   // Each round brings back a table more, or all: the rounds end.
   for (;;)
   {
      m_pGuard->lstCreated.clear();
      m_pGuard->bWholeSchema = false;
      const int rc = sqlite3_prepare_v2(pDb, p, int(pEnd - p), ppStatement, ppTail);
      if (! m_pStash || m_pStash->isEmpty() || ! m_pGuard->sRefused.isEmpty()) { return rc; }
      const qsizetype iBefore = setNeeded.size();
      const QList<QByteArray> lstKeys = ((rc == SQLITE_OK) ? m_pGuard->lstCreated : ddl_schema_stash::missingKeys(QString::fromUtf8(sqlite3_errmsg(pDb))));
      for (const QByteArray & sKey : lstKeys)
      {
         const QByteArray sGroup = m_pStash->groupOf(sKey);
         if (! sGroup.isEmpty()) { setNeeded.insert(sGroup); }
      }
      if (! m_pGuard->bWholeSchema && (setNeeded.size() == iBefore)) { return rc; }
      sqlite3_finalize(* ppStatement);
      * ppStatement = nullptr;
      if (! (m_pGuard->bWholeSchema ? m_pStash->bringBackAll() : m_pStash->bringBack(setNeeded))) { m_bRestart = true; return SQLITE_ERROR; }
   }
}

// After a statement: rows set aside when SQLite holds many objects; none any more once a
// virtual table is made (its module finds its own tables by name). False when SQLite refused
// the stash's own statements.
bool ddl_loader::afterStatement()
{
   if (! m_pStash) { return true; }
   if (m_pGuard->bVirtual)
   {
      const bool bOk = m_pStash->bringBackAll();
      m_pStash.reset();
      return bOk;
   }
   m_pStash->addVisible(m_pGuard->lstCreated.size());
   m_pGuard->lstCreated.clear();
   return ((m_pStash->visible() < k_iSetAsideObjects) || m_pStash->setAside());
}

bool ddl_loader::loadText(const QString & sScript, const QString & sName, bool bStrict, QString & sError)
{
   split_error error;
   const QList<statement> lstStatements = split(sScript, & error);
   if (! error.sWhat.isEmpty()) { sError = QString("%1:%2:%3: %4").arg(sName).arg(error.iLine).arg(error.iColumn).arg(error.sWhat); return false; }
   // A rollback (a statement, a conflict clause, RAISE) puts back schema rows SQLite had
   // while the stash holds them too, and a script that reads the schema table would see it
   // part empty: such scripts run without setting rows aside.
   static const QRegularExpression reAside("rollback|sqlite_(temp_)?(master|schema)", QRegularExpression::CaseInsensitiveOption);
   m_bRestart = false;
   const bool bOk = run(lstStatements, sName, bStrict, ! reAside.match(sScript).hasMatch(), sError);
   if (! m_bRestart) { return bOk; }
   m_lstWarnings.clear();
   sError.clear();
   m_bRestart = false;
   return run(lstStatements, sName, bStrict, false, sError);
}

bool ddl_loader::loadStatements(const QList<statement> & lstStatements, const QString & sName, bool bStrict, QString & sError)
{
   // As in loadText: a rollback or a read of the schema table rules out setting rows aside.
   static const QRegularExpression reAside("rollback|sqlite_(temp_)?(master|schema)", QRegularExpression::CaseInsensitiveOption);
   bool bSetAside = true;
   for (const statement & s : lstStatements) { if (reAside.match(s.sText).hasMatch()) { bSetAside = false; break; } }
   m_bRestart = false;
   const bool bOk = run(lstStatements, sName, bStrict, bSetAside, sError);
   if (! m_bRestart) { return bOk; }
   m_lstWarnings.clear();
   sError.clear();
   m_bRestart = false;
   return run(lstStatements, sName, bStrict, false, sError);
}

bool ddl_loader::run(const QList<statement> & lstStatements, const QString & sName, bool bStrict, bool bSetAside, QString & sError)
{
   closeConnection();
   m_sConnection = "tavrel_ddl_" + QUuid::createUuid().toString(QUuid::Id128);
   QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_sConnection);
   db.setDatabaseName(":memory:");
   if (! db.open()) { sError = "cannot open an in-memory SQLite database: " + db.lastError().text(); return false; }
   sqlite3 * pDb = handleOf(db);
   if (! pDb) { sError = "the Qt SQLite driver gives no SQLite handle: the DDL script cannot be run safely"; return false; }
   QSqlQuery(db).exec("PRAGMA foreign_keys = OFF");
   sqlite3_limit(pDb, SQLITE_LIMIT_ATTACHED, 0);
   sqlite3_db_config(pDb, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
   sqlite3_db_config(pDb, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
   sqlite3_db_config(pDb, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
   * m_pGuard = guard();
   m_pGuard->iStepsPerCheck = m_iStepsPerCheck;
   sqlite3_set_authorizer(pDb, & authorize, m_pGuard.get());
   sqlite3_progress_handler(pDb, m_iStepsPerCheck, & countSteps, m_pGuard.get());
   if (bSetAside) { m_pStash = std::make_unique<ddl_schema_stash>(pDb, & m_pGuard->bInternal); }

   qsizetype iRun = 0;
   qsizetype iDone = 0;
   for (const statement & s : lstStatements)
   {
      if (m_fnProgress && (iDone > 0) && ((iDone % k_iProgressStatements) == 0)) { m_fnProgress(iDone, lstStatements.size()); }
      ++iDone;
      if (isForeignKeysPragma(s.sText)) { continue; }
      if (! runStatement(pDb, s, sName, bStrict, iRun, sError)) { return false; }
      if (! afterStatement()) { m_bRestart = true; return false; }
   }
   // SQLite reads every row back at once, which takes a while for many: say the script ran.
   if (m_fnProgress && m_pStash && ((m_pStash->held() + m_pStash->visible()) >= k_iProgressStatements)) { m_fnProgress(lstStatements.size(), lstStatements.size()); }
   if (m_pStash && ! m_bReadInPieces)
   {
      if (! m_pStash->bringBackAll()) { m_bRestart = true; return false; }
      m_pStash.reset();
   }
   // The catalog reader's pragmas are let through; the script's limit no longer applies.
   m_pGuard->bCatalog = true;
   if (iRun == 0) { sError = "DDL file '" + sName + "' has no statement SQLite could run"; return false; }
   return true;
}

QSqlDatabase ddl_loader::database() const
{
   return QSqlDatabase::database(m_sConnection, false);
}

} // namespace db_import
