#include "corpus_trip_support.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>

#include "db_environment.h"
#include "import_test_support.h"

namespace import_test {

QString quoted(db_import::enum_dialect eDialect, const QString & sName)
{
   const QChar c = ((eDialect == db_import::dialect_mariadb) ? QChar('`') : QChar('"'));
   QString s = sName;
   s.replace(c, QString(2, c));
   return c + s + c;
}

bool freshDatabase(db_import::enum_dialect eDialect, const QString & sName, const QString & sWorkDir, QString & sUrl, QString & sError)
{
   if (eDialect == db_import::dialect_sqlite)
   {
      const QString sFile = sWorkDir + "/" + sName + ".db";
      QFile::remove(sFile);
      sUrl = "sqlite:" + sFile;
      return true;
   }
   db_support::db_server * pServer = serverOf(eDialect, sError);
   if (! pServer || ! pServer->recreateDatabase(sName, sError)) { return false; }
   sUrl = pServer->getUrl(sName);
   return true;
}

QStringList queryValues(db_import::enum_dialect eDialect, const QString & sUrl, const QString & sQuery, QString & sError)
{
   QStringList lst;
   const QString sConnection = "corpus_trip_query";
   {
      QSqlDatabase db;
      if (eDialect == db_import::dialect_sqlite)
      {
         db = QSqlDatabase::addDatabase("QSQLITE", sConnection);
         db.setDatabaseName(sUrl.mid(7));
      }
      else
      {
         db_support::db_server * pServer = serverOf(eDialect, sError);
         if (! pServer) { return lst; }
         db = pServer->connect(sConnection, QUrl(sUrl).path().mid(1));
      }
      if (! db.isOpen() && ! db.open()) { sError = db.lastError().text(); }
      else
      {
         QSqlQuery q(db);
         if (! q.exec(sQuery)) { sError = sQuery + ": " + q.lastError().text(); }
         while (sError.isEmpty() && q.next()) { lst.append(q.value(0).isNull() ? QString("(null)") : q.value(0).toString()); }
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sConnection);
   return lst;
}

QString quotedTable(db_import::enum_dialect eDialect, const db_import::db_catalog & catalog, const db_import::db_table & table)
{
   const QString sTable = quoted(eDialect, table.sName);
   return ((table.sSchema == catalog.sDefaultSchema) ? sTable : (quoted(eDialect, table.sSchema) + "." + sTable));
}

QMap<QString, qlonglong> rowCounts(const QString & sUrl, const db_import::db_catalog & catalog, QString & sError)
{
   QMap<QString, qlonglong> map;
   for (const db_import::db_table & t : catalog.lstTables)
   {
      if (t.bView) { continue; }
      const QStringList lst = queryValues(catalog.eDialect, sUrl, "SELECT COUNT(*) FROM " + quotedTable(catalog.eDialect, catalog, t), sError);
      if (! sError.isEmpty()) { return map; }
      map.insert(((t.sSchema == catalog.sDefaultSchema) ? t.sName : (t.sSchema + "." + t.sName)), lst.value(0).toLongLong());
   }
   return map;
}

} // namespace import_test
