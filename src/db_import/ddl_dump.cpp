#include "db_import/ddl_dump.h"

#include "db_import/catalog_reader.h"
#include "db_import/ddl_dump_tokens.h"

#include <QRegularExpression>

namespace db_import {

namespace {

const qsizetype k_iShown = 70;
const qsizetype k_iClassified = 4096;

QString shown(const QString & s)
{
   const QString sLine = s.section('\n', 0, 0).trimmed();
   return (((sLine.size() > k_iShown) || (sLine.size() < s.trimmed().size())) ? (sLine.left(k_iShown) + " ...") : sLine);
}

// DEFINER=`user`@`host`, ALGORITHM=..., SQL SECURITY ...: who runs a view or trigger, no part of its shape.
void skipMariadbClauses(dump_cursor & c)
{
   for (;;)
   {
      if (c.peek().is("DEFINER") && c.peek(1).isPunct("="))
      {
         c.i += 2;
         c.next();
         if (c.acceptPunct("@")) { c.next(); }
         if (c.acceptPunct("(") ) { c.acceptPunct(")"); }
      }
      else if (c.peek().is("ALGORITHM") && c.peek(1).isPunct("=")) { c.i += 3; }
      else if (c.peek().is("SQL") && c.peek(1).is("SECURITY")) { c.i += 3; }
      else if (c.acceptAll({ "OR", "REPLACE" }) || c.accept("IF") || c.accept("NOT") || c.accept("EXISTS")) { ; }
      else { return; }
   }
}

bool containsWords(const QList<dump_token> & lst, const char * s1, const char * s2)
{
   for (qsizetype i = 0; (i + 1) < lst.size(); ++i) { if (lst.at(i).is(s1) && lst.at(i + 1).is(s2)) { return true; } }
   return false;
}

} // namespace

enum_dialect ddl_dump::detect(const QString & sScript)
{
   // The marks sit near the start of a dump; a bounded look keeps a huge script cheap.
   const QString s = sScript.left(64 * 1024);
   static const QRegularExpression rePostgresql("PostgreSQL database dump|^\\s*SET\\s+(search_path|client_encoding|standard_conforming_strings)\\b|"
                                                "pg_catalog\\.set_config|^\\s*\\\\connect\\b|^\\s*COPY\\s+\\S+.*FROM\\s+stdin;|^\\s*ALTER\\s+TABLE\\s+ONLY\\b",
                                                QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);
   static const QRegularExpression reMariadb("(MariaDB|MySQL) dump|^\\s*/\\*!\\d{5}|\\)\\s*ENGINE\\s*=|^\\s*LOCK\\s+TABLES\\b|^\\s*DELIMITER\\s",
                                             QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);
   const qsizetype iPostgresql = rePostgresql.match(s).capturedStart();
   const qsizetype iMariadb = reMariadb.match(s).capturedStart();
   if ((iPostgresql >= 0) && ((iMariadb < 0) || (iPostgresql < iMariadb))) { return dialect_postgresql; }
   return ((iMariadb >= 0) ? dialect_mariadb : dialect_sqlite);
}

void ddl_dump::note(const QString & sKind, qsizetype iCount)
{
   if (! m_mapSkipped.contains(sKind)) { m_lstKinds.append(sKind); }
   m_mapSkipped[sKind] += iCount;
}

QStringList ddl_dump::getNotes() const
{
   QStringList lst;
   for (const QString & s : m_lstKinds) { lst.append(QString("%1: skipped %2 %3").arg(m_sName).arg(m_mapSkipped.value(s)).arg(s)); }
   return lst;
}

void ddl_dump::resolve(const QStringList & lstName, QString & sSchema, QString & sTable) const
{
   sTable = (lstName.isEmpty() ? QString() : lstName.last());
   sSchema = ((lstName.size() >= 2) ? lstName.at(lstName.size() - 2) : currentSchema());
}

ddl_dump::table * ddl_dump::find(const QStringList & lstName)
{
   QString sSchema, sTable;
   resolve(lstName, sSchema, sTable);
   auto it = m_hashTables.constFind(db_catalog::keyOf(sSchema, sTable));
   if ((it == m_hashTables.constEnd()) || m_lstTables.at(it.value()).bDropped) { return nullptr; }
   return & m_lstTables[it.value()];
}

ddl_dump::enum_verdict ddl_dump::classify(const dump_statement & s, QString & sKind)
{
   if (s.bMeta)
   {
      // Only the commands the dump tools write: which database, and the client's own sandbox.
      static const QRegularExpression rePostgresql("^\\\\(connect|c|restrict|unrestrict|encoding)(\\s|$)");
      static const QRegularExpression reMariadb("^\\\\-(\\s|$)");
      if (((m_eDialect == dialect_postgresql) ? rePostgresql : reMariadb).match(s.sText).hasMatch()) { sKind = "client commands (\\connect, \\restrict, \\-)"; return skip; }
      sKind = "a client command runs outside the database; a dump file may only use " + QString((m_eDialect == dialect_postgresql) ? "\\connect and \\restrict" : "\\-");
      return refuse;
   }
   // The first words tell the kind: a statement of rows is not split into tokens whole.
   const QString sStart = s.sText.left(k_iClassified);
   const QList<dump_token> lst = tokenize(sStart, m_eDialect == dialect_mariadb);
   dump_cursor c(lst, sStart, m_eDialect == dialect_postgresql);
   const enum_verdict e = classifyCommon(c, sKind);
   if ((e != refuse) || ! sKind.isEmpty()) { return e; }
   c.i = 0;
   return ((m_eDialect == dialect_postgresql) ? classifyPostgresql(c, s, sKind) : classifyMariadb(c, sKind));
}

// What both dialects' dumps hold alike. An empty kind with refuse: not decided here.
ddl_dump::enum_verdict ddl_dump::classifyCommon(dump_cursor & c, QString & sKind)
{
   if (c.accept("SET") || c.accept("RESET")) { sKind = "session settings"; return skip; }
   if (c.accept("BEGIN") || c.accept("COMMIT") || c.acceptAll({ "START", "TRANSACTION" }) || c.accept("END")) { sKind = "transaction statements"; return skip; }
   if (c.accept("GRANT") || c.accept("REVOKE") || c.acceptAll({ "ALTER", "DEFAULT", "PRIVILEGES" })) { sKind = "grants"; return skip; }
   if (c.accept("INSERT") || c.accept("REPLACE")) { sKind = "data statements (COPY, INSERT, LOCK TABLES)"; return skip; }
   if (c.accept("DROP"))
   {
      const bool bRead = (c.peek().is("TABLE") || c.peek().is("VIEW") || c.peek().is("TYPE") || c.peek().is("DOMAIN") || c.peek().is("INDEX"));
      sKind = (bRead ? QString("drop") : QString("drops of objects that are not read"));
      return (bRead ? read : skip);
   }
   if (! c.accept("CREATE")) { return refuse; }
   c.acceptAll({ "OR", "REPLACE" });
   if (m_eDialect == dialect_mariadb) { skipMariadbClauses(c); }
   c.accept("UNLOGGED");
   if (c.accept("TABLE"))
   {
      const bool bPartition = (c.qualifiedName().size() && c.acceptAll({ "PARTITION", "OF" }));
      sKind = (bPartition ? QString("partitions (their table is read)") : QString("table"));
      return (bPartition ? skip : read);
   }
   c.accept("UNIQUE");
   c.accept("FULLTEXT");
   c.accept("SPATIAL");
   if (c.accept("INDEX")) { sKind = "index"; return read; }
   c.accept("MATERIALIZED");
   c.accept("RECURSIVE");
   if (c.accept("VIEW")) { sKind = "view"; return read; }
   if (c.accept("FUNCTION") || c.accept("PROCEDURE") || c.accept("AGGREGATE")) { sKind = "functions and procedures"; return skip; }
   c.accept("CONSTRAINT");
   c.accept("EVENT");
   if (c.accept("TRIGGER")) { sKind = "triggers"; return skip; }
   return refuse;
}

ddl_dump::enum_verdict ddl_dump::classifyPostgresql(dump_cursor & c, const dump_statement & s, QString & sKind)
{
   static const QRegularExpression reCopy("^copy\\s+[^;]*\\bfrom\\s+stdin\\s*$", QRegularExpression::CaseInsensitiveOption);
   static const QRegularExpression reConfig("^select\\s+pg_catalog\\.(set_config|setval|lo_\\w+|lowrite)\\s*\\(", QRegularExpression::CaseInsensitiveOption);
   const QRegularExpressionMatch mConfig = reConfig.match(s.sText);
   if (mConfig.hasMatch())
   {
      const QString sFunction = mConfig.captured(1).toLower();
      sKind = ((sFunction == "setval") ? "sequence values" : ((sFunction == "set_config") ? "session settings" : "large objects"));
      return skip;
   }
   if (c.acceptAll({ "REFRESH", "MATERIALIZED", "VIEW" })) { sKind = "data statements (COPY, INSERT, LOCK TABLES)"; return skip; }
   // Objects a model has no place for; none of them is run.
   for (const char * szObject : { "COLLATION", "CAST", "OPERATOR", "TEXT", "CONVERSION", "LANGUAGE", "PROCEDURAL", "FOREIGN", "SERVER", "USER",
                                   "PUBLICATION", "SUBSCRIPTION", "ACCESS", "TRANSFORM", "TRUSTED" })
   {
      if ((c.peek().is("CREATE") || c.peek().is("ALTER")) && (c.peek(1).is(szObject) || (c.peek(1).is("OR") && c.peek(3).is(szObject))))
      {
         sKind = "objects the model does not hold (collations, casts, operators, text search, languages, foreign tables, publications)";
         return skip;
      }
   }
   if (c.peek().is("COPY"))
   {
      if (reCopy.match(s.sText).hasMatch()) { sKind = "data statements (COPY, INSERT, LOCK TABLES)"; return skip; }
      sKind = "COPY may only read rows that follow it in the file (FROM stdin)";
      return refuse;
   }
   const QList<dump_token> lst = tokenize(s.sText.left(k_iClassified), false);
   if (c.peek().is("ALTER") && containsWords(lst, "OWNER", "TO")) { sKind = "ownership changes"; return skip; }
   if (c.acceptAll({ "ALTER", "SEQUENCE" }) || c.acceptAll({ "CREATE", "SEQUENCE" })) { sKind = "sequences (the numbering is read from the defaults)"; return skip; }
   if (c.acceptAll({ "ALTER", "TABLE" }))
   {
      c.acceptAll({ "IF", "EXISTS" });
      c.accept("ONLY");
      c.qualifiedName();
      // Row security, replication, clustering, storage and partitions: none of them shapes the model.
      const bool bSetting = (c.peek().is("ENABLE") || c.peek().is("DISABLE") || c.peek().is("FORCE") || c.peek().is("NO") || c.peek().is("REPLICA") ||
                             c.peek().is("CLUSTER") || c.peek().is("DETACH") || (c.peek().is("SET") && ! c.peek(1).is("DEFAULT")) ||
                             c.peek().is("RESET"));
      sKind = (bSetting ? QString("table settings (row security, replication, clustering, partitions)") : QString("alter"));
      return (bSetting ? skip : read);
   }
   if (c.acceptAll({ "ALTER", "INDEX" }) || c.acceptAll({ "CREATE", "POLICY" }) || c.acceptAll({ "CREATE", "STATISTICS" }))
   {
      sKind = "index settings, policies and statistics";
      return skip;
   }
   if (c.acceptAll({ "CREATE", "SCHEMA" })) { sKind = "schema"; return read; }
   if (c.acceptAll({ "CREATE", "EXTENSION" }) || c.acceptAll({ "COMMENT", "ON", "EXTENSION" })) { sKind = "extensions"; return skip; }
   if (c.acceptAll({ "CREATE", "TYPE" }))
   {
      const bool bEnum = (c.qualifiedName().size() && c.acceptAll({ "AS", "ENUM" }));
      sKind = (bEnum ? QString("enum") : QString("types other than enumerations"));
      return (bEnum ? read : skip);
   }
   if (c.acceptAll({ "CREATE", "DOMAIN" })) { sKind = "domain"; return read; }
   if (c.acceptAll({ "COMMENT", "ON" }))
   {
      const bool bRead = (c.peek().is("TABLE") || c.peek().is("COLUMN") || c.peek().is("VIEW") || c.peek().is("MATERIALIZED"));
      sKind = (bRead ? QString("comment") : QString("comments on other objects"));
      return (bRead ? read : skip);
   }
   sKind = "not part of a schema dump";
   return refuse;
}

ddl_dump::enum_verdict ddl_dump::classifyMariadb(dump_cursor & c, QString & sKind)
{
   if (c.accept("LOCK") || c.accept("UNLOCK")) { sKind = "data statements (COPY, INSERT, LOCK TABLES)"; return skip; }
   if (c.accept("USE"))
   {
      if (c.peek().isName()) { m_sDatabase = c.nameOf(c.peek()); }
      sKind = "database selections (CREATE DATABASE, USE)";
      return skip;
   }
   if (c.acceptAll({ "CREATE", "DATABASE" }) || c.acceptAll({ "CREATE", "SCHEMA" }) || c.acceptAll({ "ALTER", "DATABASE" }))
   { sKind = "database selections (CREATE DATABASE, USE)"; return skip; }
   if (c.acceptAll({ "CREATE", "SEQUENCE" })) { sKind = "sequences (the numbering is read from the defaults)"; return skip; }
   if (c.acceptAll({ "SELECT", "SETVAL" })) { sKind = "sequence values"; return skip; }
   if (c.acceptAll({ "ALTER", "TABLE" }))
   {
      c.qualifiedName();
      const bool bKeys = ((c.peek().is("DISABLE") || c.peek().is("ENABLE")) && c.peek(1).is("KEYS"));
      sKind = (bKeys ? QString("data statements (COPY, INSERT, LOCK TABLES)") : QString("alter"));
      return (bKeys ? skip : read);
   }
   if (c.accept("CREATE"))
   {
      skipMariadbClauses(c);
      if (c.accept("EVENT")) { sKind = "events"; return skip; }
   }
   sKind = "not part of a schema dump";
   return refuse;
}

bool ddl_dump::readStatement(const dump_statement & s, QString & sError)
{
   QString sKind;
   const enum_verdict e = classify(s, sKind);
   const QString sWhere = QString("%1:%2:%3: ").arg(m_sName).arg(s.iLine).arg(s.iColumn);
   if (e == refuse) { sError = sWhere + "statement refused: " + shown(s.sText) + " (" + sKind + ")"; return false; }
   if (e == skip) { note(sKind, 1); return true; }
   const QList<dump_token> lst = tokenize(s.sText, m_eDialect == dialect_mariadb);
   dump_cursor c(lst, s.sText, m_eDialect == dialect_postgresql);
   bool bOk = true;
   QString sWhy;
   if (sKind == "table") { bOk = readCreateTable(c, s.iLine, sWhy); }
   else if (sKind == "alter") { bOk = readAlterTable(c, sWhy); }
   else if (sKind == "index") { bOk = readCreateIndex(c, sWhy); }
   else if (sKind == "view") { bOk = readCreateView(c, s, sWhy); }
   else if ((sKind == "enum") || (sKind == "domain")) { bOk = readEnumOrDomain(c, (sKind == "domain"), sWhy); }
   else if (sKind == "drop") { bOk = readDrop(c); }
   else if (sKind == "comment") { bOk = readComment(c, sWhy); }
   else if (sKind == "schema")
   {
      c.acceptAll({ "CREATE", "SCHEMA" });
      c.acceptAll({ "IF", "NOT", "EXISTS" });
      m_setSchemas.insert(c.nameOf(c.peek()));
   }
   if (! bOk) { sError = sWhere + "statement refused: " + shown(s.sText) + " (" + sWhy + ")"; }
   return bOk;
}

bool ddl_dump::load(const QString & sScript, const import_options & options, db_catalog & catalog, QString & sError)
{
   QString sSplit;
   const QList<dump_statement> lst = splitDump(sScript, m_eDialect, sSplit);
   if (! sSplit.isEmpty()) { sError = m_sName + ":" + sSplit; return false; }
   for (const dump_statement & s : lst)
   {
      if (! readStatement(s, sError)) { return false; }
   }
   finishTables();
   ddl_loader loader;
   // A dump of many tables is read back a piece at a time, as a script is.
   loader.setReadInPieces(true);
   const bool bOk = loader.loadStatements(translate(), m_sName, options.bStrict, sError);
   m_lstWarnings.append(loader.getWarnings());
   if (! bOk) { return false; }
   db_catalog sqlite;
   if (! loader.readCatalog(options, sqlite, sError)) { return false; }
   m_lstWarnings.append(sqlite.lstWarnings);
   return toCatalog(sqlite, catalog);
}

} // namespace db_import
