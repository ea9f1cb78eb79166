#include "sql_test_support.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include "db_import/db_importer.h"
#include "db_import/ddl_loader.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "sql_export/schema/schema_script.h"
#include "storage/project_storage.h"
#include "test_support.h"

namespace sql_test {

model::project_ptr modelFromJson(const QByteArray & json)
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::parseJson(json, "test.json", p);
   return (ok ? p : model::project_ptr());
}

model::project_ptr exampleModel(const QString & sName)
{
   return modelFromJson(test_support::readAll(test_support::examplePath(sName + ".json")));
}

void clearForcedTypes(model::project & project)
{
   for (const model::entity_ptr & pEntity : * project.getListOfAllEntities())
   {
      for (const model::property_ptr & p : pEntity->getOwnProperties()) { if (p) { p->setForceSqlType(QString()); } }
   }
}

QString scriptOf(const model::project & project, sql_export::enum_dialect eDialect, bool bComments, QStringList * pWarnings)
{
   sql_export::schema_options options;
   options.bComments = bComments;
   const sql_export::sql_dialect dialect(eDialect);
   const sql_export::sql_schema schema = sql_export::schema_builder::build(project, dialect, options);
   if (pWarnings) { * pWarnings = schema.lstWarnings; }
   return sql_export::schema_script::write(schema, dialect, project.getName());
}

bool runOnSqlite(const QString & sFile, const QString & sScript, QString & sError)
{
   bool bOk = true;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "sql_test_sqlite");
      db.setDatabaseName(sFile);
      bOk = db.open();
      QSqlQuery q(db);
      if (bOk) { q.exec("PRAGMA foreign_keys = ON"); }
      for (const db_import::ddl_loader::statement & s : db_import::ddl_loader::split(sScript))
      {
         if (bOk && ! q.exec(s.sText)) { sError = s.sText + "\n" + q.lastError().text(); bOk = false; }
      }
      db.close();
   }
   QSqlDatabase::removeDatabase("sql_test_sqlite");
   return bOk;
}

model::project_ptr importFrom(const QString & sUrl, const QString & sName, QString & sError)
{
   // As import-db does: a keyless table gets a key in the model, and stays keyless in SQL.
   db_import::import_options options;
   db_import::db_importer importer { options };
   db_import::db_catalog catalog;
   auto pProject = std::make_shared<model::project>();
   pProject->setName(sName);
   if (! importer.readSource(sUrl, QString(), catalog, sError) || ! importer.importInto(catalog, pProject, sError)) { return nullptr; }
   return pProject;
}

bool runStatements(const QString & sFile, const QStringList & lstStatements, QString * pResult)
{
   bool bOk = true;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "run_statements");
      db.setDatabaseName(sFile);
      bOk = db.open();
      QSqlQuery q(db);
      for (const QString & s : lstStatements) { bOk = bOk && q.exec(s); }
      if (pResult && bOk && q.isSelect() && q.next()) { * pResult = q.value(0).toString(); }
      db.close();
   }
   QSqlDatabase::removeDatabase("run_statements");
   return bOk;
}

} // namespace sql_test
