#include "db_import/ddl_dump.h"

#include "db_import/catalog_reader.h"
#include "db_import/ddl_dump_tokens.h"

#include <QRegularExpression>

namespace db_import {

namespace {

// Words that end a column's type and start its constraints.
const std::initializer_list<const char *> k_lstColumnStops {
   "NOT", "NULL", "DEFAULT", "PRIMARY", "UNIQUE", "REFERENCES", "CHECK", "CONSTRAINT", "COLLATE", "GENERATED", "AUTO_INCREMENT",
   "COMMENT", "CHARSET", "ON", "INVISIBLE", "KEY", "STORAGE", "COMPRESSION", "AS", "VIRTUAL", "PERSISTENT", "STORED" };

// How the catalog spells a type a script may write shorter.
QString postgresqlSpelling(const QString & sType)
{
   static const QHash<QString, QString> hash {
      { "int", "integer" }, { "int4", "integer" }, { "int8", "bigint" }, { "int2", "smallint" }, { "varchar", "character varying" },
      { "char", "character" }, { "bool", "boolean" }, { "float8", "double precision" }, { "float4", "real" }, { "decimal", "numeric" },
      { "timestamp", "timestamp without time zone" }, { "timestamptz", "timestamp with time zone" }, { "serial", "integer" },
      { "bigserial", "bigint" }, { "smallserial", "smallint" } };
   static const QRegularExpression reHead("^([a-z0-9]+)(\\s*\\(.*)?$");
   const QRegularExpressionMatch m = reHead.match(sType.toLower());
   if (! m.hasMatch() || ! hash.contains(m.captured(1))) { return sType; }
   return hash.value(m.captured(1)) + m.captured(2).trimmed();
}

} // namespace

void ddl_dump::setColumnType(db_column & column, const QString & sWritten) const
{
   QString s = sWritten.simplified();
   if (m_eDialect == dialect_mariadb)
   {
      // The catalog writes the type's words in lower case; the values of enum(...) keep theirs.
      const qsizetype iOpen = s.indexOf('(');
      const qsizetype iClose = s.lastIndexOf(')');
      s = ((iOpen < 0) ? s.toLower() : (s.left(iOpen).toLower().trimmed() + s.mid(iOpen, iClose - iOpen + 1) + s.mid(iClose + 1).toLower()));
      catalog_reader::setDeclaredType(column, s);
      static const QRegularExpression reValue("'((?:[^'\\\\]|''|\\\\.)*)'");
      // SET(...) as the live catalog reads it: the values any combination of which the column holds.
      QStringList * pValues = (s.startsWith("enum(") ? & column.lstValues : (s.startsWith("set(") ? & column.lstSetValues : nullptr));
      if (pValues) { for (auto it = reValue.globalMatch(s); it.hasNext(); ) { pValues->append(it.next().captured(1).replace("''", "'")); } }
      return;
   }
   if (s.startsWith("serial", Qt::CaseInsensitive) || s.startsWith("bigserial", Qt::CaseInsensitive) || s.startsWith("smallserial", Qt::CaseInsensitive))
   { column.sGenerator = "serial"; }
   s = postgresqlSpelling(s);
   // The catalog names a type of the default schema without it.
   const QString sQualified = (s.contains('.') ? s : (defaultSchema() + "." + s));
   if (s.startsWith(defaultSchema() + ".")) { s = s.mid(defaultSchema().size() + 1); }
   if (m_hashDomains.contains(sQualified))
   {
      const domain & d = m_hashDomains.value(sQualified);
      catalog_reader::setDeclaredType(column, d.sDeclared);
      column.bNotNull = (column.bNotNull || d.bNotNull);
      if (column.sDefault.isNull()) { column.sDefault = d.sDefault; }
      return;
   }
   catalog_reader::setDeclaredType(column, s);
   if (m_hashEnums.contains(sQualified)) { column.lstValues = m_hashEnums.value(sQualified); column.sType = "text"; column.iLength = -1; }
}

// A default as the catalog gives it back: names of the default schema without it.
QString ddl_dump::normalDefault(const QString & sDefault) const
{
   if (sDefault.isNull() || (m_eDialect != dialect_postgresql)) { return sDefault; }
   QString s = sDefault;
   s.replace("'" + defaultSchema() + ".", "'");
   s.replace("::" + defaultSchema() + ".", "::");
   return s;
}

bool ddl_dump::readCreateTable(dump_cursor & c, int iLine, QString & sError)
{
   while (! c.atEnd() && ! c.peek().is("TABLE")) { c.next(); }
   c.accept("TABLE");
   c.acceptAll({ "IF", "NOT", "EXISTS" });
   const QStringList lstName = c.qualifiedName();
   if (lstName.isEmpty()) { sError = "the table has no name"; return false; }
   table t;
   resolve(lstName, t.t.sSchema, t.t.sName);
   t.iLine = iLine;
   if (! c.acceptPunct("(")) { sError = "the table's columns are missing (CREATE TABLE ... AS and LIKE are not read)"; return false; }
   while (! c.atEnd() && ! c.peek().isPunct(")"))
   {
      const bool bConstraint = (c.peek().is("CONSTRAINT") || c.peek().is("EXCLUDE") || c.peek().is("PRIMARY") || c.peek().is("UNIQUE") || c.peek().is("FOREIGN") ||
                                c.peek().is("KEY") || c.peek().is("INDEX") || c.peek().is("FULLTEXT") || c.peek().is("SPATIAL") || c.peek().is("CHECK"));
      if (! (bConstraint ? readTableConstraint(c, t, false, sError) : readColumn(c, t, sError))) { return false; }
      if (! c.acceptPunct(",") && ! c.peek().isPunct(")")) { sError = "unexpected '" + c.peek().sText + "' in the table's columns"; return false; }
   }
   c.acceptPunct(")");
   // MariaDB's table options: only the comment is kept.
   while (! c.atEnd())
   {
      if (c.accept("COMMENT")) { c.acceptPunct("="); t.t.sComment = literal(c.next().sText); continue; }
      c.next();
   }
   const QString sKey = db_catalog::keyOf(t.t.sSchema, t.t.sName);
   if (m_sHome.isEmpty()) { m_sHome = m_sDatabase; }
   if (find(lstName)) { sError = "table " + t.t.sName + " is created twice"; return false; }
   m_hashTables.insert(sKey, m_lstTables.size());
   m_lstTables.append(t);
   return true;
}

bool ddl_dump::readColumn(dump_cursor & c, table & t, QString & sError)
{
   db_column column;
   column.sName = c.nameOf(c.next());
   QString sWritten = c.textUntilStop(k_lstColumnStops).simplified();
   // "varchar(40) CHARACTER SET utf8mb4": the character set is no part of the type.
   static const QRegularExpression reCharset("\\s+character\\s+set\\s+\\S+$", QRegularExpression::CaseInsensitiveOption);
   sWritten.remove(reCharset);
   if (sWritten.isEmpty()) { sError = "column " + column.sName + " has no type"; return false; }
   bool bPrimary = false;
   while (! c.atEnd() && ! c.peek().isPunct(",") && ! c.peek().isPunct(")"))
   {
      if (c.acceptAll({ "NOT", "NULL" })) { column.bNotNull = true; }
      else if (c.accept("NULL")) { ; }
      else if (c.accept("DEFAULT"))
      {
         const QString s = c.textUntilStop(k_lstColumnStops);
         if (! ((m_eDialect == dialect_mariadb) && (s.compare("NULL", Qt::CaseInsensitive) == 0))) { column.sDefault = s; }
      }
      else if (c.acceptAll({ "PRIMARY", "KEY" })) { bPrimary = true; column.bNotNull = true; }
      else if (c.accept("UNIQUE")) { c.accept("KEY"); t.lstUniqueConstraints.append(db_index { (m_eDialect == dialect_postgresql) ? (t.t.sName + "_" + column.sName + "_key") : column.sName, { column.sName }, true, { 0 } }); }
      else if (c.peek().is("REFERENCES"))
      {
         if (! readForeignKey(c, t, t.t.sName + "_" + column.sName + "_fkey", sError)) { return false; }
         t.t.lstForeignKeys.last().lstColumns = QStringList(column.sName);
      }
      else if (c.accept("AUTO_INCREMENT")) { column.sGenerator = "autoincrement"; }
      else if (c.acceptAll({ "GENERATED", "ALWAYS", "AS", "IDENTITY" })) { column.sGenerator = "identity always"; c.skipGroup(); }
      else if (c.acceptAll({ "GENERATED", "BY", "DEFAULT", "AS", "IDENTITY" })) { column.sGenerator = "identity"; c.skipGroup(); }
      else if (c.accept("COMMENT")) { column.sComment = literal(c.next().sText); }
      else if (c.peek().isPunct("(")) { c.skipGroup(); }
      else { c.next(); }
   }
   column.sDefault = normalDefault(column.sDefault);
   setColumnType(column, sWritten);
   if (column.sGenerator.isEmpty() && column.sDefault.startsWith("nextval(") && (m_eDialect == dialect_postgresql)) { column.sGenerator = "serial"; }
   if (bPrimary) { t.t.lstPrimaryKey = QStringList(column.sName); }
   t.t.lstColumns.append(column);
   return true;
}

namespace {

// CASCADE, SET NULL, SET DEFAULT, RESTRICT in the reader's own spelling; NO ACTION (the
// default) and anything else give none and are passed over by the caller.
QString readAction(dump_cursor & c)
{
   if (c.accept("CASCADE")) { return QStringLiteral("CASCADE"); }
   if (c.accept("RESTRICT")) { return QStringLiteral("RESTRICT"); }
   if (c.acceptAll({ "SET", "NULL" })) { return QStringLiteral("SET NULL"); }
   return (c.acceptAll({ "SET", "DEFAULT" }) ? QStringLiteral("SET DEFAULT") : QString());
}

} // namespace

bool ddl_dump::readForeignKey(dump_cursor & c, table & t, const QString & sName, QString & sError)
{
   db_foreign_key k;
   if (c.accept("FOREIGN"))
   {
      c.accept("KEY");
      if (c.peek().isName()) { c.next(); }
      if (! c.columnList(k.lstColumns)) { sError = "a foreign key's columns are not a list of names"; return false; }
   }
   if (! c.accept("REFERENCES")) { sError = "a foreign key without REFERENCES"; return false; }
   const QStringList lstTarget = c.qualifiedName();
   if (lstTarget.isEmpty()) { sError = "a foreign key without its target table"; return false; }
   resolve(lstTarget, k.sTargetSchema, k.sTargetTable);
   if (c.peek().isPunct("(") && ! c.columnList(k.lstTargetColumns)) { sError = "a foreign key's target columns are not a list of names"; return false; }
   // ON DELETE and ON UPDATE are kept; MATCH and DEFERRABLE are not.
   while (! c.atEnd() && ! c.peek().isPunct(",") && ! c.peek().isPunct(")"))
   {
      if (c.acceptAll({ "ON", "DELETE" })) { k.sOnDelete = readAction(c); }
      else if (c.acceptAll({ "ON", "UPDATE" })) { k.sOnUpdate = readAction(c); }
      else { c.next(); }
   }
   // As the MariaDB catalog reads: RESTRICT is its default (see catalog_reader_mariadb.cpp).
   if (m_eDialect == dialect_mariadb)
   {
      if (k.sOnDelete == QLatin1String("RESTRICT")) { k.sOnDelete.clear(); }
      if (k.sOnUpdate == QLatin1String("RESTRICT")) { k.sOnUpdate.clear(); }
   }
   t.t.lstForeignKeys.append(k);
   t.lstForeignKeyNames.append(sName);
   return true;
}

// PRIMARY KEY, UNIQUE, FOREIGN KEY, KEY/INDEX, CHECK, with or without CONSTRAINT name.
bool ddl_dump::readTableConstraint(dump_cursor & c, table & t, bool bAltered, QString & sError)
{
   QString sName;
   if (c.accept("CONSTRAINT") && c.peek().isName() && ! c.peek().is("PRIMARY") && ! c.peek().is("UNIQUE") && ! c.peek().is("FOREIGN") && ! c.peek().is("CHECK") && ! c.peek().is("EXCLUDE"))
   { sName = c.nameOf(c.next()); }
   if (c.acceptAll({ "PRIMARY", "KEY" }))
   {
      if (c.peek().is("USING")) { c.i += 2; }
      if (! c.columnList(t.t.lstPrimaryKey)) { sError = "the primary key's columns are not a list of names"; return false; }
      for (db_column & column : t.t.lstColumns) { if (t.t.lstPrimaryKey.contains(column.sName)) { column.bNotNull = true; } }
   }
   else if (c.peek().is("UNIQUE") || c.peek().is("KEY") || c.peek().is("INDEX") || c.peek().is("FULLTEXT") || c.peek().is("SPATIAL"))
   {
      db_index index;
      index.bUnique = c.accept("UNIQUE");
      c.accept("FULLTEXT");
      c.accept("SPATIAL");
      if (! c.accept("KEY")) { c.accept("INDEX"); }
      if (c.peek().isName() && ! c.peek().is("USING")) { sName = c.nameOf(c.next()); }
      if (c.peek().is("USING")) { c.i += 2; }
      if (! c.columnList(index.lstColumns, & index.lstLengths)) { sError = "an index's columns are not a list of names"; return false; }
      index.sName = (sName.isEmpty() ? ((m_eDialect == dialect_postgresql) ? (t.t.sName + "_" + index.lstColumns.join("_") + "_key") : index.lstColumns.first()) : sName);
      // A PostgreSQL UNIQUE is a constraint, listed apart from the indexes; MariaDB has indexes only.
      if (index.bUnique && (m_eDialect == dialect_postgresql)) { t.lstUniqueConstraints.append(index); } else { t.t.lstIndexes.append(index); }
   }
   else if (c.peek().is("FOREIGN"))
   {
      const QString sDefault = ((m_eDialect == dialect_postgresql) ? (t.t.sName + "_fkey") : (t.t.sName + "_ibfk_" + QString::number(t.t.lstForeignKeys.size() + 1)));
      if (! readForeignKey(c, t, sName.isEmpty() ? sDefault : sName, sError)) { return false; }
   }
   else if (c.accept("CHECK")) { c.skipGroup(); }
   // An exclusion constraint limits rows, it adds no key the model holds.
   else if (c.accept("EXCLUDE")) { if (c.accept("USING")) { c.next(); } c.skipGroup(); }
   else { sError = "a constraint of a kind that is not read"; return false; }
   // NOT VALID, DEFERRABLE, index options and the like follow.
   while (! c.atEnd() && ! c.peek().isPunct(",") && (bAltered || ! c.peek().isPunct(")"))) { if (! c.skipGroup()) { c.next(); } }
   return true;
}

bool ddl_dump::readAlterTable(dump_cursor & c, QString & sError)
{
   c.acceptAll({ "ALTER", "TABLE" });
   c.acceptAll({ "IF", "EXISTS" });
   c.accept("ONLY");
   const QStringList lstName = c.qualifiedName();
   table * pTable = find(lstName);
   if (! pTable) { sError = "table " + lstName.join('.') + " is not created before"; return false; }
   // A partition is part of its table, which is the entity (as the server's catalog is read).
   if (c.acceptAll({ "ATTACH", "PARTITION" }))
   {
      table * pPartition = find(c.qualifiedName());
      if (! pPartition) { sError = "the partition is not created before"; return false; }
      pPartition->bDropped = true;
      return true;
   }
   if (c.acceptAll({ "ADD", "CONSTRAINT" }) || c.peek().is("ADD"))
   {
      if (c.peek().is("ADD")) { c.next(); } else { --c.i; }
      return readTableConstraint(c, * pTable, true, sError);
   }
   if (! c.acceptAll({ "ALTER", "COLUMN" }) && ! c.accept("ALTER")) { sError = "only ADD CONSTRAINT and ALTER COLUMN of an ALTER TABLE are read"; return false; }
   const QString sColumn = c.nameOf(c.next());
   db_column * pColumn = nullptr;
   for (db_column & column : pTable->t.lstColumns) { if (column.sName == sColumn) { pColumn = & column; } }
   if (! pColumn) { sError = "column " + sColumn + " is not in table " + pTable->t.sName; return false; }
   if (c.acceptAll({ "SET", "DEFAULT" }))
   {
      pColumn->sDefault = normalDefault(c.rest());
      if (pColumn->sDefault.startsWith("nextval(") && (m_eDialect == dialect_postgresql)) { pColumn->sGenerator = "serial"; }
      return true;
   }
   if (c.acceptAll({ "ADD", "GENERATED" }))
   {
      pColumn->sGenerator = (c.peek().is("ALWAYS") ? "identity always" : "identity");
      return true;
   }
   if (c.acceptAll({ "SET", "NOT", "NULL" })) { pColumn->bNotNull = true; return true; }
   if (c.acceptAll({ "SET", "STATISTICS" }) || c.acceptAll({ "SET", "STORAGE" })) { return true; }
   sError = "only SET DEFAULT, ADD GENERATED and SET NOT NULL of an ALTER COLUMN are read";
   return false;
}

bool ddl_dump::readCreateIndex(dump_cursor & c, QString & sError)
{
   c.accept("CREATE");
   db_index index;
   index.bUnique = c.accept("UNIQUE");
   c.accept("FULLTEXT");
   c.accept("SPATIAL");
   c.accept("INDEX");
   c.accept("CONCURRENTLY");
   c.acceptAll({ "IF", "NOT", "EXISTS" });
   if (! c.peek().is("ON")) { index.sName = c.nameOf(c.next()); }
   if (! c.accept("ON")) { sError = "an index without ON"; return false; }
   c.accept("ONLY");
   table * pTable = find(c.qualifiedName());
   if (! pTable) { sError = "the index's table is not created before"; return false; }
   if (c.accept("USING")) { c.next(); }
   if (! c.columnList(index.lstColumns, & index.lstLengths))
   {
      m_lstWarnings.append(QString("%1: index %2 on expressions left out").arg(m_sName, index.sName));
      return true;
   }
   pTable->t.lstIndexes.append(index);
   return true;
}

bool ddl_dump::readCreateView(dump_cursor & c, const dump_statement & s, QString & sError)
{
   while (! c.atEnd() && ! c.peek().is("VIEW")) { c.next(); }
   c.accept("VIEW");
   c.acceptAll({ "IF", "NOT", "EXISTS" });
   const QStringList lstName = c.qualifiedName();
   table t;
   resolve(lstName, t.t.sSchema, t.t.sName);
   t.t.bView = true;
   t.iLine = s.iLine;
   const qsizetype iColumns = c.i;
   c.skipGroup();
   if (! c.accept("AS")) { sError = "a view without AS"; return false; }
   static const QRegularExpression reNoData("\\s+with\\s+(no\\s+)?data\\s*$", QRegularExpression::CaseInsensitiveOption);
   // Each name of the view's columns and of the tables it reads is looked at again in translate().
   t.sViewSql = c.textBetween(iColumns, c.i - 1) + " AS " + c.rest().remove(reNoData);
   if (t.sViewSql.startsWith(" AS ")) { t.sViewSql = t.sViewSql.mid(1); }
   // MariaDB's dump tool writes a stand-in view first and the real one later.
   if (table * pOld = find(lstName)) { pOld->bDropped = true; }
   m_hashTables.insert(db_catalog::keyOf(t.t.sSchema, t.t.sName), m_lstTables.size());
   m_lstTables.append(t);
   return true;
}

bool ddl_dump::readEnumOrDomain(dump_cursor & c, bool bDomain, QString & sError)
{
   c.next();
   c.next();
   QString sSchema, sName;
   resolve(c.qualifiedName(), sSchema, sName);
   const QString sKey = sSchema + "." + sName;
   if (! bDomain)
   {
      c.acceptAll({ "AS", "ENUM" });
      QStringList lst;
      if (! c.acceptPunct("(")) { sError = "an enumeration without values"; return false; }
      while (c.peek().eKind == dump_token::string)
      {
         const QString s = c.next().sText;
         lst.append(s.mid(1, s.size() - 2).replace("''", "'"));
         c.acceptPunct(",");
      }
      m_hashEnums.insert(sKey, lst);
      return true;
   }
   c.accept("AS");
   domain d;
   d.sDeclared = postgresqlSpelling(c.textUntilStop(k_lstColumnStops).simplified());
   while (! c.atEnd())
   {
      if (c.acceptAll({ "NOT", "NULL" })) { d.bNotNull = true; }
      else if (c.accept("DEFAULT")) { d.sDefault = normalDefault(c.textUntilStop(k_lstColumnStops)); }
      else if (! c.skipGroup()) { c.next(); }
   }
   m_hashDomains.insert(sKey, d);
   return true;
}

QString ddl_dump::literal(const QString & s) const
{
   if ((s.size() < 2) || (s.at(0) != '\'')) { return QString(); }
   const QString sInner = s.mid(1, s.size() - 2);
   if (m_eDialect != dialect_mariadb) { return QString(sInner).replace("''", "'"); }
   QString r;
   for (qsizetype i = 0; i < sInner.size(); ++i)
   {
      QChar ch = sInner.at(i);
      if ((ch == '\\') && ((i + 1) < sInner.size()))
      {
         ch = sInner.at(++i);
         if (ch == 'n') { ch = '\n'; } else if (ch == 't') { ch = '\t'; } else if (ch == 'r') { ch = '\r'; } else if (ch == '0') { ch = QChar(0); }
      }
      else if ((ch == '\'') && ((i + 1) < sInner.size()) && (sInner.at(i + 1) == '\'')) { ++i; }
      r += ch;
   }
   return r;
}

// COMMENT ON TABLE|VIEW|COLUMN name IS 'text' (or NULL, which takes the comment away).
bool ddl_dump::readComment(dump_cursor & c, QString & sError)
{
   c.acceptAll({ "COMMENT", "ON" });
   const bool bColumn = c.accept("COLUMN");
   if (! bColumn) { c.accept("MATERIALIZED"); c.next(); }
   QStringList lstName = c.qualifiedName();
   const QString sColumn = ((bColumn && ! lstName.isEmpty()) ? lstName.takeLast() : QString());
   table * pTable = find(lstName);
   if (! pTable) { sError = lstName.join('.') + " is not created before"; return false; }
   if (! c.accept("IS")) { sError = "a comment without IS"; return false; }
   const QString sText = literal(c.next().sText);
   if (bColumn) { pTable->hashColumnComments.insert(sColumn, sText); } else { pTable->t.sComment = sText; }
   return true;
}

bool ddl_dump::readDrop(dump_cursor & c)
{
   c.accept("DROP");
   const bool bTable = (c.peek().is("TABLE") || c.peek().is("VIEW"));
   c.next();
   c.acceptAll({ "IF", "EXISTS" });
   // Types, domains and indexes are dropped only by a script that creates them again.
   if (! bTable) { return true; }
   do
   {
      if (table * p = find(c.qualifiedName())) { p->bDropped = true; }
   } while (c.acceptPunct(","));
   return true;
}

} // namespace db_import
