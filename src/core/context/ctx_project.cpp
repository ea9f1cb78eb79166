#include "context/ctx_project.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QList>

#include "model/project.h"
#include "storage/project_storage.h"

namespace context {

namespace {

struct project_state
{
   model::project_ptr project;
   QSqlDatabase database;
   QString projectFile;
   QList<QSqlDatabase> scopes;
   bool cleanupRegistered = false;
};

project_state & state()
{
   static project_state s;
   return s;
}

// The connection must be closed while Qt still runs, not by a static destructor.
void closeAtExit() { ctx_project::closeProject(); }

void registerCleanup()
{
   if (state().cleanupRegistered || ! QCoreApplication::instance()) { return; }
   qAddPostRoutine(closeAtExit);
   state().cleanupRegistered = true;
}

} // namespace

model::project_ptr ctx_project::getProject() { return state().project; }

zy::ZyBool ctx_project::openProject(const QString & path)
{
   if (path.trimmed().isEmpty()) { return zy::ZyBool(false, QObject::tr("Cannot open project : no project file given")); }
   const QFileInfo info(path);
   const QString absPath = QDir::cleanPath(info.absoluteFilePath());
   if (info.isDir()) { return zy::ZyBool(false, QObject::tr("Cannot open project : '%1' is a directory, not a project file").arg(absPath)); }
   if (! info.exists()) { return zy::ZyBool(false, QObject::tr("Cannot open project : file '%1' doesn't exist").arg(absPath)); }

   const QString suffix = info.suffix().toLower();
   QString projectFile;
   if (suffix == QLatin1String("tavrel")) { projectFile = absPath; }
   else if (suffix == QLatin1String("json"))
   {
      // A model document is imported into the project file of the same base name beside it.
      projectFile = QDir::cleanPath(info.absolutePath() + "/" + info.completeBaseName() + ".tavrel");
      zy::ZyBool imported = storage::project_storage::importJson(absPath, projectFile);
      if (! imported) { return imported; }
   }
   else
   {
      return zy::ZyBool(false, QObject::tr("Cannot open project : unknown file type '%1' (expected a '.tavrel' project file or a '.json' model document)").arg(absPath));
   }

   model::project_ptr project;
   zy::ZyBool loaded = storage::project_storage::loadProject(projectFile, project);
   if (! loaded) { return loaded; }
   if (! project) { return zy::ZyBool(false, QObject::tr("Cannot open project : no model read from '%1'").arg(projectFile)); }

   QSqlDatabase database;
   zy::ZyBool opened = storage::project_storage::openDatabase(projectFile, database);
   if (! opened) { return opened; }

   if (project->getFilePath().isEmpty()) { project->setFilePath(projectFile); }
   if (project->getLocation().isEmpty()) { project->setLocation(QFileInfo(projectFile).absolutePath()); }

   // The previous project stays open until the new one is known to be good.
   closeProject();
   state().project = project;
   state().database = database;
   state().projectFile = projectFile;
   registerCleanup();
   return zy::ZyBool(true);
}

void ctx_project::setProject(const model::project_ptr & p)
{
   closeProject();
   state().project = p;
   state().projectFile = ((p && ! p->getFilePath().isEmpty()) ? QDir::cleanPath(QFileInfo(p->getFilePath()).absoluteFilePath()) : QString());
}

void ctx_project::closeProject()
{
   project_state & s = state();
   if (s.database.isValid()) { storage::project_storage::closeDatabase(s.database); }
   s.database = QSqlDatabase();
   s.project.reset();
   s.projectFile.clear();
}

QString ctx_project::getProjectFile() { return state().projectFile; }

QSqlDatabase ctx_project::getDatabase() { return state().database; }

QString ctx_project::getPathFromProjectFile(const QString & path)
{
   if (path.isEmpty()) { return path; }
   if (QDir::isAbsolutePath(path)) { return QDir::cleanPath(path); }
   QString base;
   const project_state & s = state();
   if (! s.projectFile.isEmpty()) { base = QFileInfo(s.projectFile).absolutePath(); }
   else if (s.project && ! s.project->getLocation().isEmpty()) { base = s.project->getLocation(); }
   else { base = QDir::currentPath(); }
   return QDir::cleanPath(QDir(base).absoluteFilePath(path));
}

ctx_scoped::ctx_scoped() : m_database(ctx_project::getDatabase())
{
   m_sPrevious = current().connectionName();
   state().scopes.append(m_database);
}

ctx_scoped::~ctx_scoped()
{
   QList<QSqlDatabase> & scopes = state().scopes;
   if (! scopes.isEmpty()) { scopes.removeLast(); }
}

QSqlDatabase ctx_scoped::current()
{
   const QList<QSqlDatabase> & scopes = state().scopes;
   return (scopes.isEmpty() ? ctx_project::getDatabase() : scopes.last());
}

} // namespace context
