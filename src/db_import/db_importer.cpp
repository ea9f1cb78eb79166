#include "db_import/db_importer.h"

#include "db_import/catalog_reader.h"
#include "db_import/ddl_dump.h"
#include "db_import/ddl_loader.h"
#include "db_import/db_source.h"
#include "db_import/model_mapper.h"
#include "db_import/model_merger.h"
#include "db_import/name_rules.h"
#include "model/project.h"
#include "storage/project_storage.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace db_import {

namespace {

// Below this many tables an import is quick enough to say nothing on the way.
const qsizetype k_iProgressTables = 500;

} // namespace

bool db_importer::readSource(const QString & sSource, const QString & sDdlFile, db_catalog & catalog, QString & sError)
{
   if (! sDdlFile.isEmpty())
   {
      QFile f(sDdlFile);
      if (! f.open(QIODevice::ReadOnly)) { sError = "cannot read DDL file '" + sDdlFile + "': " + f.errorString(); return false; }
      const QString sScript = QString::fromUtf8(f.readAll());
      const enum_dialect eDialect = ((m_options.iDdlDialect < 0) ? ddl_dump::detect(sScript) : enum_dialect(m_options.iDdlDialect));
      if (eDialect != dialect_sqlite)
      {
         ddl_dump dump(eDialect, QFileInfo(sDdlFile).fileName());
         const bool bOk = dump.load(sScript, m_options, catalog, sError);
         m_lstNotes = dump.getNotes();
         m_lstWarnings.append(dump.getWarnings());
         return bOk;
      }
      ddl_loader loader;
      loader.setProgress([this](qsizetype iDone, qsizetype iAll) { progress(QString("ran %1 of %2 statements").arg(iDone).arg(iAll)); });
      loader.setReadInPieces(true);
      qsizetype iShown = 0;
      auto fnPiece = [this, &iShown](qsizetype iDone, qsizetype iAll)
      {
         if ((iDone - iShown) < ddl_loader::k_iProgressStatements) { return; }
         iShown = iDone;
         progress(QString("read %1 of %2 tables and views").arg(iDone).arg(iAll));
      };
      const bool bOk = (loader.loadText(sScript, QFileInfo(sDdlFile).fileName(), m_options.bStrict, sError) && loader.readCatalog(m_options, catalog, sError, fnPiece));
      m_lstWarnings.append(loader.getWarnings());
      m_lstWarnings.append(catalog.lstWarnings);
      return bOk;
   }
   db_source source;
   if (! source.parse(sSource, sError)) { return false; }
   if (! m_sPassword.isEmpty()) { source.setPassword(m_sPassword); }
   if (source.hasPasswordInUrl())
   {
      m_lstWarnings.append("the URL holds a password, which other users can see in the process list: set TAVREL_DB_PASSWORD or " +
                           QString((source.getDialect() == dialect_postgresql) ? "PGPASSWORD" : "MYSQL_PWD") + " instead");
   }
   bool bOk = false;
   {
      QSqlDatabase database;
      if (! source.open(database, sError)) { return false; }
      bOk = catalog_reader::read(database, source.getDialect(), source.getSchemas(), source.getDatabase(), catalog, sError, m_options);
   }
   source.close();
   m_lstWarnings.append(catalog.lstWarnings);
   // The source is opened read-only: a journal left by a writer that stopped half-way cannot be
   // rolled back here, and the user's file is not for us to change.
   if (! bOk && (source.getDialect() == dialect_sqlite))
   {
      for (const char * szSuffix : { "-journal", "-wal" })
      {
         const QString sJournal = source.getDatabase() + szSuffix;
         if (! QFileInfo::exists(sJournal)) { continue; }
         sError += QString("\n'%1' was left by a program that stopped while writing to the database; tavrel only reads the database "
                           "and does not finish that write. Open the database once with the program that wrote it, or with "
                           "\"sqlite3 '%2' 'PRAGMA quick_check'\", which recovers it, then import again.").arg(sJournal, source.getDatabase());
         break;
      }
   }
   return bOk;
}

bool db_importer::importInto(const db_catalog & catalog, const model::project_ptr & pProject, QString & sError)
{
   const bool bLarge = (catalog.lstTables.size() >= k_iProgressTables);
   if (bLarge) { progress(QString("read %1 tables, mapping them").arg(catalog.lstTables.size())); }
   model_mapper mapper(catalog, m_options);
   const model::project_ptr pFresh = mapper.map(pProject->getName());
   m_lstWarnings.append(mapper.getWarnings());
   if (! mapper.getErrors().isEmpty()) { sError = mapper.getErrors().join("\n"); return false; }
   if (pFresh->getListOfAllEntities()->isEmpty())
   {
      sError = ((catalog.lstTables.isEmpty() && (catalog.iFiltered == 0)) ? QString("the source has no table or view") : QString("no table matches the --tables and --exclude filters"));
      return false;
   }
   if (bLarge) { progress("merging into the project"); }
   model_merger merger(pProject, m_options);
   merger.setChosenKeys(mapper.getChosenKeys());
   m_lstSummary = merger.merge(* pFresh);
   return true;
}

bool db_importer::loadProject(const QString & sFile, model::project_ptr & pProject, QString & sError, const QString & sName)
{
   const QFileInfo info(sFile);
   if (! info.exists())
   {
      pProject = std::make_shared<model::project>();
      pProject->setName(sName.isEmpty() ? projectNameFor(sFile) : sName);
      return true;
   }
   const bool bJson = (info.suffix().toLower() == "json");
   const zy::ZyBool ok = (bJson ? storage::project_storage::readJsonFile(sFile, pProject) : storage::project_storage::loadProject(sFile, pProject));
   if (! ok) { sError = "cannot refresh '" + sFile + "': " + ok.getDesc(); }
   else if (! sName.isEmpty()) { pProject->setName(sName); }
   return bool(ok);
}

QString db_importer::projectNameFor(const QString & sFile)
{
   const QString sBase = QFileInfo(sFile).completeBaseName();
   const bool bDigit = (! sBase.isEmpty() && sBase.at(0).isDigit());
   // Upper case: the generated CMake project reads its file lists under the upper-cased name.
   return name_rules::identifier(bDigit ? ("project_" + sBase) : sBase, name_rules::style_keep, "project_", "project").toUpper();
}

bool db_importer::checkProject(const model::project & project, QString & sError)
{
   const zy::ZyInvalidValueX problems = project.checkSchema();
   if (problems.isEmpty()) { return true; }
   QStringList lst;
   for (const auto & e : problems) { lst.append(e.getMessage()); }
   sError = "the imported model has problems, nothing written:\n" + lst.join("\n");
   return false;
}

bool db_importer::writeProject(const model::project & project, const QString & sFile, QString & sError)
{
   if (! checkProject(project, sError)) { return false; }
   if (QFileInfo(sFile).suffix().toLower() == "tavrel")
   {
      const zy::ZyBool ok = storage::project_storage::saveProject(project, sFile);
      if (! ok) { sError = ok.getDesc(); }
      return bool(ok);
   }
   // Written beside and renamed over: a failed write leaves the old file as it was.
   QSaveFile f(sFile);
   if (f.open(QIODevice::WriteOnly) && (f.write(storage::project_storage::toJson(project)) >= 0) && f.commit()) { return true; }
   sError = "cannot write '" + sFile + "': " + f.errorString();
   return false;
}

} // namespace db_import
