#include "db_import/catalog_reader.h"

#include <QRegularExpression>
#include <QSqlError>

#include <algorithm>

namespace db_import {

bool catalog_reader::read(const QSqlDatabase & database, enum_dialect eDialect, const QStringList & lstSchemas,
                          const QString & sDatabase, db_catalog & catalog, QString & sError, const import_options & options)
{
   catalog = db_catalog();
   catalog.eDialect = eDialect;
   bool bOk = false;
   switch (eDialect)
   {
      case dialect_sqlite:
         catalog.sDefaultSchema = "main";
         bOk = readSqlite(database, options, catalog, sError);
         break;
      case dialect_postgresql:
         catalog.sDefaultSchema = "public";
         bOk = readPostgresql(database, lstSchemas, catalog, sError);
         break;
      case dialect_mariadb:
         catalog.sDefaultSchema = sDatabase;
         bOk = readMariadb(database, (lstSchemas.isEmpty() ? QStringList(sDatabase) : lstSchemas), options, catalog, sError);
         break;
   }
   if (bOk) { sortTables(catalog); }
   return bOk;
}

void catalog_reader::sortTables(db_catalog & catalog)
{
   std::stable_sort(catalog.lstTables.begin(), catalog.lstTables.end(), [](const db_table & a, const db_table & b)
   {
      if (a.sSchema != b.sSchema) { return (a.sSchema < b.sSchema); }
      return (a.sName < b.sName);
   });
   catalog.hashIndex.clear();
   for (qsizetype i = 0; i < catalog.lstTables.size(); ++i)
   { catalog.hashIndex.insert(db_catalog::keyOf(catalog.lstTables.at(i).sSchema, catalog.lstTables.at(i).sName), i); }
}

void catalog_reader::setDeclaredType(db_column & column, const QString & sDeclared)
{
   static const QRegularExpression reLength("\\(\\s*(\\d+)\\s*(?:,\\s*\\d+\\s*)?\\)");
   column.sDeclared = sDeclared.trimmed();
   QString s = column.sDeclared.toLower();
   const QRegularExpressionMatch m = reLength.match(s);
   if (m.hasMatch())
   {
      column.iLength = m.captured(1).toInt();
      s.remove(m.capturedStart(), m.capturedLength());
   }
   column.sType = s.simplified();
}

bool catalog_reader::exec(QSqlQuery & query, const QString & sql, QString & sError)
{
   query.setForwardOnly(true);
   if (query.exec(sql)) { return true; }
   sError = "reading the catalog failed: " + query.lastError().text().trimmed();
   return false;
}

QString catalog_reader::quotedList(const QStringList & lst)
{
   QStringList lstQuoted;
   for (const QString & s : lst) { lstQuoted.append("'" + QString(s).replace("'", "''") + "'"); }
   return lstQuoted.join(", ");
}

} // namespace db_import
