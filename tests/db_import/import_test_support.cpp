#include "import_test_support.h"

#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>

#include "db_environment.h"
#include "db_import/db_importer.h"
#include "db_import/ddl_loader.h"
#include "model/entity.h"
#include "model/project.h"
#include "test_support.h"

namespace import_test {

namespace {


bool execOnSqlite(const QString & sFile, const QString & sScript, QString & sError)
{
   bool bOk = true;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "import_test_sqlite");
      db.setDatabaseName(sFile);
      bOk = db.open();
      QSqlQuery q(db);
      for (const db_import::ddl_loader::statement & s : db_import::ddl_loader::split(sScript))
      {
         if (bOk && ! q.exec(s.sText)) { sError = s.sText + "\n" + q.lastError().text(); bOk = false; }
      }
      db.close();
   }
   QSqlDatabase::removeDatabase("import_test_sqlite");
   return bOk;
}

} // namespace

QString dialectName(db_import::enum_dialect eDialect)
{
   switch (eDialect)
   {
      case db_import::dialect_postgresql: return "PostgreSQL";
      case db_import::dialect_mariadb: return "MariaDB";
      default: return "Sqlite";
   }
}

bool prepareSource(db_import::enum_dialect eDialect, const QString & sSchema, const QString & sWorkDir, QString & sUrl, QString & sError)
{
   const QString sSuffix = ((eDialect == db_import::dialect_postgresql) ? "postgresql" : ((eDialect == db_import::dialect_mariadb) ? "mariadb" : "sqlite"));
   // The small test schemas, else the corpus of application-shaped schemas.
   QString sScript = QString::fromUtf8(test_support::readAll(test_support::sourceDir() + "/tests/db_import/schemas/" + sSchema + "." + sSuffix + ".sql"));
   if (sScript.isEmpty()) { sScript = QString::fromUtf8(test_support::readAll(test_support::sourceDir() + "/tests/db_import/corpus/" + sSchema + "." + sSuffix + ".sql")); }
   if (sScript.isEmpty()) { sError = "no schema " + sSchema + " for " + sSuffix; return false; }
   if (eDialect == db_import::dialect_sqlite)
   {
      const QString sFile = sWorkDir + "/" + sSchema + ".db";
      QFile::remove(sFile);
      sUrl = "sqlite:" + sFile;
      return execOnSqlite(sFile, sScript, sError);
   }
   db_support::db_server * pServer = serverOf(eDialect, sError);
   if (! pServer) { return false; }
   // The MariaDB schemas are databases of their own, the URL's database the default one.
   QStringList lstDatabases { sSchema };
   if ((eDialect == db_import::dialect_mariadb) && (sSchema == "schemas")) { lstDatabases = QStringList { "sales", "stock" }; }
   for (const QString & s : lstDatabases) { if (! pServer->recreateDatabase(s, sError)) { return false; } }
   sUrl = pServer->getUrl(lstDatabases.first());
   return pServer->execScript(sScript, sError, lstDatabases.first());
}

bool execOnSource(db_import::enum_dialect eDialect, const QString & sUrl, const QString & sScript, QString & sError)
{
   if (eDialect == db_import::dialect_sqlite) { return execOnSqlite(sUrl.mid(7), sScript, sError); }
   db_support::db_server * pServer = serverOf(eDialect, sError);
   return (pServer && pServer->execScript(sScript, sError, QUrl(sUrl).path().mid(1)));
}

namespace {

import_run runImport(const QString & sUrl, const QString & sDdl, const db_import::import_options & options, const model::project_ptr & pExisting)
{
   import_run r;
   db_import::db_importer importer(options);
   db_import::db_catalog catalog;
   r.pProject = pExisting;
   if (! r.pProject) { r.pProject = std::make_shared<model::project>(); r.pProject->setName("imported"); }
   r.bOk = (importer.readSource(sUrl, sDdl, catalog, r.sError) && importer.importInto(catalog, r.pProject, r.sError));
   r.lstWarnings = importer.getWarnings();
   r.lstSummary = importer.getSummary();
   return r;
}

} // namespace

import_run importSource(const QString & sUrl, const db_import::import_options & options, const model::project_ptr & pExisting)
{
   return runImport(sUrl, QString(), options, pExisting);
}

import_run importDdl(const QString & sFile, const db_import::import_options & options, const model::project_ptr & pExisting)
{
   return runImport(QString(), sFile, options, pExisting);
}

import_run importDdlText(const QString & sDir, const QString & sText, const db_import::import_options & options, const model::project_ptr & pExisting)
{
   const QString sFile = sDir + "/schema.sql";
   test_support::writeAll(sFile, sText.toUtf8());
   return importDdl(sFile, options, pExisting);
}

model::property_ptr propertyOf(const model::project_ptr & pProject, const QString & sEntity, const QString & sProperty)
{
   const model::entity_ptr pEntity = (pProject ? pProject->getEntityByKey(sEntity) : nullptr);
   return (pEntity ? pEntity->getPropertyByName(sProperty) : nullptr);
}

QStringList entityNames(const model::project_ptr & pProject)
{
   QStringList lst;
   for (const model::entity_ptr & e : (* pProject->getListOfAllEntities())) { lst.append(e->getKey()); }
   lst.sort();
   return lst;
}

bool hasWarning(const QStringList & lstWarnings, const QStringList & lstParts)
{
   for (const QString & w : lstWarnings)
   {
      bool bAll = true;
      for (const QString & p : lstParts) { bAll = (bAll && w.contains(p)); }
      if (bAll) { return true; }
   }
   return false;
}

db_support::db_server * serverOf(db_import::enum_dialect eDialect, QString & sError)
{
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   return db_support::db_environment::server((eDialect == db_import::dialect_postgresql) ? db_support::db_server::kind_postgresql
                                                                                         : db_support::db_server::kind_mariadb, sError);
}

} // namespace import_test
