#include "storage/project_storage.h"

#include <QAtomicInt>
#include <QFile>
#include <QDir>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "storage/project_file_reader.h"
#include "storage/project_file_schema.h"
#include "storage/project_file_writer.h"
#include "storage/project_recovery.h"

namespace storage {

namespace {

using project_file::dbErrorText;
using project_file::listTables;

QString nextConnectionName()
{
   static QAtomicInt s_iCounter;
   return QString("tavrel_project_%1").arg(s_iCounter.fetchAndAddOrdered(1) + 1);
}

// Refuses, before SQLite touches it, a file that is not an SQLite database (SQLite would only
// fail at the first statement, or treat a text file as garbage pages).
QString fileProblem(const QString & sFile)
{
   const QString sInterrupted = project_recovery::recoverInterruptedWrite(sFile, false);
   if (! sInterrupted.isEmpty()) { return sInterrupted; }
   QFileInfo info(sFile);
   if (! info.exists()) { return QString(); }
   if (! info.isFile()) { return QString("'%1' is not a file").arg(sFile); }
   if (info.size() == 0) { return QString(); }
   QFile f(sFile);
   if (! f.open(QIODevice::ReadOnly)) { return QString("cannot read '%1': %2").arg(sFile, f.errorString()); }
   const QByteArray header = f.read(16);
   if (header != QByteArray("SQLite format 3\0", 16)) { return QString("'%1' is not a Tavrel project file (not an SQLite database)").arg(sFile); }
   return QString();
}

// A project file is written in place: through a link it would replace another project (or
// any file) the link points to. SQLite's journal beside it is written the same way.
QString linkProblem(const QString & sFile)
{
   for (const QString & sPath : { sFile, sFile + "-journal", sFile + "-wal", sFile + "-shm" })
   {
      const QFileInfo info(sPath);
      if (info.isSymLink())
      {
         return QString("'%1' is a symbolic link (to '%2'); a project file is not written through a link: remove the link or name the file it points to")
            .arg(QDir::toNativeSeparators(sPath), QDir::toNativeSeparators(info.symLinkTarget()));
      }
   }
   return QString();
}

// A database connection of its own, removed when the scope ends.
class scoped_connection
{
   QSqlDatabase m_database;

public:
   scoped_connection(const QString & sFile, bool bReadOnly)
   {
      m_database = QSqlDatabase::addDatabase("QSQLITE", nextConnectionName());
      m_database.setDatabaseName(sFile);
      if (bReadOnly) { m_database.setConnectOptions("QSQLITE_OPEN_READONLY"); }
   }
   ~scoped_connection() { project_storage::closeDatabase(m_database); }
   scoped_connection(const scoped_connection &) = delete;
   scoped_connection & operator=(const scoped_connection &) = delete;
   QSqlDatabase & db() { return m_database; }
};

// One line per problem, as the JSON import reports them.
QString refusalText(const QString & sFile, const QStringList & lstProblems)
{
   const qsizetype iMax = 100;
   QStringList lst;
   for (qsizetype i = 0; (i < lstProblems.size()) && (i < iMax); ++i) { lst.append(QString("%1: %2").arg(sFile, lstProblems.at(i))); }
   if (lstProblems.size() > iMax) { lst.append(QString("... and %1 more errors").arg(lstProblems.size() - iMax)); }
   return lst.join("\n");
}

} // namespace

void project_storage::closeDatabase(QSqlDatabase & database)
{
   const QString sName = database.connectionName();
   if (database.isOpen()) { database.close(); }
   database = QSqlDatabase();
   if (! sName.isEmpty() && QSqlDatabase::contains(sName)) { QSqlDatabase::removeDatabase(sName); }
}

zy::ZyBool project_storage::openDatabase(const QString & projectFile, QSqlDatabase & database)
{
   const QString sFile = QFileInfo(projectFile).absoluteFilePath();
   const QString sLink = linkProblem(sFile);
   if (! sLink.isEmpty()) { return zy::ZyBool(false, sLink); }
   const QString sProblem = fileProblem(sFile);
   if (! sProblem.isEmpty()) { return zy::ZyBool(false, sProblem); }

   database = QSqlDatabase::addDatabase("QSQLITE", nextConnectionName());
   database.setDatabaseName(sFile);
   if (! database.open())
   {
      const QString sError = dbErrorText(database.lastError());
      closeDatabase(database);
      return zy::ZyBool(false, QString("cannot open project file '%1': %2").arg(sFile, sError));
   }

   QStringList lstTables;
   QString sError;
   if (! listTables(database, lstTables, sError))
   {
      closeDatabase(database);
      return zy::ZyBool(false, QString("cannot read project file '%1': %2").arg(sFile, sError));
   }
   if (! lstTables.isEmpty() && ! lstTables.contains("t_project"))
   {
      closeDatabase(database);
      return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (an SQLite database without the project tables)").arg(sFile));
   }
   // One transaction: a single sync instead of one per table.
   const bool bTransaction = database.transaction();
   zy::ZyBool ok = createSchema(database);
   if (bTransaction) { if (ok) { database.commit(); } else { database.rollback(); } }
   if (! ok)
   {
      closeDatabase(database);
      return zy::ZyBool(false, QString("project file '%1': %2").arg(sFile, ok.getDesc()));
   }
   return zy::ZyBool(true);
}

zy::ZyBool project_storage::saveProject(const model::project & project, const QString & projectFile)
{
   const QString sFile = QFileInfo(projectFile).absoluteFilePath();
   const QString sLink = linkProblem(sFile);
   if (! sLink.isEmpty()) { return zy::ZyBool(false, sLink); }
   const QString sProblem = fileProblem(sFile);
   if (! sProblem.isEmpty()) { return zy::ZyBool(false, sProblem); }
   const bool bNewFile = ! QFileInfo::exists(sFile);
   const QString sFailure = QString("cannot write project file '%1': ").arg(sFile);

   QString sError;
   {
      scoped_connection connection(sFile, false);
      QSqlDatabase & db = connection.db();
      if (! db.open()) { sError = dbErrorText(db.lastError()); }

      QStringList lstTables;
      if (sError.isEmpty()) { listTables(db, lstTables, sError); }
      if (sError.isEmpty() && ! lstTables.isEmpty() && ! lstTables.contains("t_project"))
      { return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (an SQLite database without the project tables)").arg(sFile)); }
      if (sError.isEmpty() && lstTables.contains("t_project"))
      {
         QSqlQuery q(db);
         if (q.exec("SELECT MAX(format_version) FROM t_project") && q.next() && (q.value(0).toInt() > project_file::k_iFormatVersion))
         { return zy::ZyBool(false, sFailure + "it was written by a newer version of Tavrel"); }
      }

      // One transaction: the schema, the removal of the old model and the new one. On any error
      // the rollback leaves an existing file exactly as it was ("t_plugin_params" is never touched).
      if (sError.isEmpty() && ! db.transaction()) { sError = dbErrorText(db.lastError()); }
      else if (sError.isEmpty())
      {
         zy::ZyBool ok = createSchema(db);
         if (! ok) { sError = ok.getDesc(); }
         else
         {
            model_writer writer(db);
            if (! writer.write(project)) { sError = writer.error(); }
         }
         if (sError.isEmpty() && ! db.commit()) { sError = dbErrorText(db.lastError()); }
         if (! sError.isEmpty()) { db.rollback(); }
      }
   }

   if (sError.isEmpty()) { return zy::ZyBool(true); }
   if (bNewFile) { QFile::remove(sFile); QFile::remove(sFile + "-journal"); }
   return zy::ZyBool(false, sFailure + sError);
}

zy::ZyBool project_storage::importJson(const QString & jsonFile, const QString & projectFile)
{
   model::project_ptr pProject;
   zy::ZyBool ok = readJsonFile(jsonFile, pProject);
   if (! ok) { return ok; }
   return saveProject(* pProject, projectFile);
}

zy::ZyBool project_storage::loadProject(const QString & projectFile, model::project_ptr & result)
{
   result.reset();
   const QFileInfo info(projectFile);
   const QString sFile = info.absoluteFilePath();
   if (! info.exists()) { return zy::ZyBool(false, QString("project file '%1' does not exist").arg(sFile)); }
   const QString sInterrupted = project_recovery::recoverInterruptedWrite(sFile, true);
   if (! sInterrupted.isEmpty()) { return zy::ZyBool(false, sInterrupted); }
   const QString sProblem = fileProblem(sFile);
   if (! sProblem.isEmpty()) { return zy::ZyBool(false, sProblem); }
   if (QFileInfo(sFile).size() == 0) { return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (the file is empty)").arg(sFile)); }

   auto pProject = std::make_shared<model::project>();
   QString sError;
   {
      scoped_connection connection(sFile, true);
      QSqlDatabase & db = connection.db();
      QStringList lstTables;
      if (! db.open()) { sError = dbErrorText(db.lastError()); }
      else if (listTables(db, lstTables, sError) && ! lstTables.contains("t_project"))
      { return zy::ZyBool(false, QString("'%1' is not a Tavrel project file (an SQLite database without the project tables)").arg(sFile)); }
      if (sError.isEmpty())
      {
         model_loader loader(db);
         if (! loader.load(* pProject)) { sError = loader.error(); }
      }
   }
   if (! sError.isEmpty()) { return zy::ZyBool(false, QString("cannot read project file '%1': %2").arg(sFile, sError)); }
   // A hand-edited file meets the rules of the JSON import, or nothing reads it.
   const QStringList lstProblems = model::model_integrity::problems(* pProject);
   if (! lstProblems.isEmpty()) { return zy::ZyBool(false, refusalText(sFile, lstProblems)); }

   // A project file without its project row (only the schema written) is an empty model.
   if (pProject->getName().isEmpty() && pProject->getListOfAllEntities()->isEmpty() && pProject->getListOfAllEnums()->isEmpty())
   { pProject->setName(info.completeBaseName()); }
   pProject->setLocation(info.absolutePath());
   pProject->setFilePath(sFile);
   pProject->resolveLinks();
   // Text that would break out of where the export writes it, as the import refuses it.
   QStringList lstTextProblems;
   for (const auto & problem : model::model_text_rules::projectProblems(* pProject, false)) { lstTextProblems.append(problem.message()); }
   if (! lstTextProblems.isEmpty()) { return zy::ZyBool(false, refusalText(sFile, lstTextProblems)); }
   result = pProject;
   return zy::ZyBool(true);
}

} // namespace storage
