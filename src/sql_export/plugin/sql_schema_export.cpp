#include "sql_export/plugin/sql_schema_export.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <utility>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "gui/plugin/export_files.h"
#include "gui/tools/wait_cursor.h"
#include "gui/view/main_wnd.h"
#include "model/plugin_params.h"
#include "model/project.h"
#include "model/schema_items.h"
#include "sql_export/schema/script_file.h"
#include "sql_export/schema/schema_script.h"
#include "sql_export/view/sql_export_preview.h"
#include "sql_export/view/sql_export_settings.h"

namespace plugin {

namespace {

bool s_bFirstExport = true;

// Settings record keys, in the order they are written.
const char * const k_sKeyDialect = "SQL_DIALECT";
const char * const k_sKeyPath = "SQL_SCRIPT_PATH";
const char * const k_sKeyObsolete = "SQL_INCLUDE_OBSOLETE";

QString firstArg(const QStringList & lst) { return (lst.isEmpty() ? QString() : lst.first()); }

} // namespace

sql_schema_export::sql_schema_export(QObject * parent) : export_interface(parent) { ; }
sql_schema_export::~sql_schema_export() { resetPreviewWidget(); }

bool sql_schema_export::isFirstExport() { return s_bFirstExport; }
void sql_schema_export::setFirstExport(bool b) { s_bFirstExport = b; }

QString sql_schema_export::getGuid() const { return QStringLiteral("2E8B41D7-93A6-4C05-B1F2-6A7D0C3E95B8"); }
QString sql_schema_export::getName() const { return QStringLiteral("TavrelSqlExport"); }
QString sql_schema_export::getShortDesc() const { return QStringLiteral("Export to an SQL schema script"); }
QString sql_schema_export::getDescription() const { return QStringLiteral("This plugin writes the tables of the current project as an SQL script for SQLite, PostgreSQL or MariaDB."); }
QString sql_schema_export::getVersion() const { return QStringLiteral("1.0.0"); }
QIcon sql_schema_export::getIcon() const { return QIcon(); }
QIcon sql_schema_export::getIconSettings() const { return getIcon(); }
bool sql_schema_export::hasSettings() const { return true; }

bool sql_schema_export::showSettings()
{
   view::sql_export_settings dlg(context::ctx_global::getMainWnd());
   dlg.setPlugin(this);
   const bool bAccepted = (dlg.exec() != 0);
   if (bAccepted && m_pPreviewWidget) { m_pPreviewWidget->setDialect(m_sDialect); }
   return bAccepted;
}

QWidget * sql_schema_export::getPreviewWidget()
{
   if (m_bTerminated) { return nullptr; }
   if (m_pPreviewWidget) { return m_pPreviewWidget; }
   m_pPreviewWidget = new view::sql_export_preview();
   m_pPreviewWidget->setWindowTitle(tr("SQL preview"));
   m_pPreviewWidget->setDialect(m_sDialect);
   return m_pPreviewWidget;
}

void sql_schema_export::resetPreviewWidget()
{
   // Plug-ins may be destroyed after the application object, when no widget may be touched.
   if (! m_pPreviewWidget || ! QCoreApplication::instance()) { m_pPreviewWidget = nullptr; return; }
   view::sql_export_preview * pWidget = m_pPreviewWidget;
   if (view::main_wnd * pMainWnd = context::ctx_global::getMainWnd()) { QObject::disconnect(pMainWnd, nullptr, pWidget, nullptr); }
   pWidget->setParent(nullptr);
   pWidget->close();
   pWidget->deleteLater();
   m_pPreviewWidget = nullptr;
}

void sql_schema_export::terminate()
{
   export_interface::terminate();
   resetPreviewWidget();
   m_bTerminated = true;
}

QString sql_schema_export::getCommandLineInfos() const
{
   QString s;
   s += "\n  !!! Note : this plugin loads automatically previous parameters values before starting the export process, but you can use following parameters to override them !!!";
   s += "\n  --TavrelSqlExport_dialect=<sqlite|postgresql|mariadb> : [Optional] Database the script is written for (default sqlite)";
   s += "\n  --TavrelSqlExport_path=\"<Script>\" : [Optional] SQL script to write, relative to the project (default <project name>.<dialect>.sql beside the project)";
   s += "\n  --TavrelSqlExport_include_obsolete=0/1 : [Optional] Give obsolete properties their columns";
   return s;
}

QString sql_schema_export::getScriptPath(bool bResolved, const model::project * pProject) const
{
   QString s = m_sScriptPath;
   if (s.isEmpty() && pProject)
   {
      const QString sName = (pProject->getName().isEmpty() ? QString("schema") : pProject->getName());
      s = QDir(pProject->getLocation()).filePath(sName + "." + m_sDialect.toLower() + ".sql");
   }
   return (bResolved ? context::ctx_project::getPathFromProjectFile(s) : s);
}

void sql_schema_export::clearSettings()
{
   m_sDialect = QStringLiteral("sqlite");
   m_sScriptPath.clear();
   m_bIncludeObsolete = false;
}

QSqlError sql_schema_export::loadSettings()
{
   if (! context::ctx_project::getProject()) { return QSqlError(); }
   context::ctx_scoped scope;
   model::plugin_params::list_of_plugin_params lst;
   const QSqlError err = model::plugin_params::fetchByGuid(getGuid(), lst, scope.database());
   QHash<QString, QVariant> values;
   for (const auto & item : lst) { if (item.second) { values.insert(item.second->getParamKey(), item.second->getParamValue()); } }
   // A record that is missing leaves the setting as it is.
   m_sDialect = values.value(k_sKeyDialect, m_sDialect).toString();
   m_sScriptPath = values.value(k_sKeyPath, m_sScriptPath).toString();
   m_bIncludeObsolete = values.value(k_sKeyObsolete, m_bIncludeObsolete).toBool();
   return err;
}

QSqlError sql_schema_export::saveSettings()
{
   if (! context::ctx_project::getProject()) { return QSqlError(); }
   context::ctx_scoped scope;
   const model::plugin_params::list_of_values lst {
      { k_sKeyDialect, QVariant(m_sDialect) }, { k_sKeyPath, QVariant(m_sScriptPath) }, { k_sKeyObsolete, QVariant(m_bIncludeObsolete) } };
   return model::plugin_params::replaceByGuid(getGuid(), lst, scope.database());
}

void sql_schema_export::applyCommandLine()
{
   const view::main_wnd * pMainWnd = context::ctx_global::getMainWnd();
   if (! pMainWnd || ! std::exchange(s_bFirstExport, false)) { return; }
   auto value = [pMainWnd](const char * sName) { return firstArg(pMainWnd->getAppArg(QLatin1String("--TavrelSqlExport_") + QLatin1String(sName))); };
   const QString sDialect = value("dialect");
   const QString sPath = value("path");
   const QString sObsolete = value("include_obsolete");
   if (! sDialect.isEmpty()) { m_sDialect = sDialect; }
   if (! sPath.isEmpty()) { m_sScriptPath = sPath; }
   if (! sObsolete.isEmpty()) { m_bIncludeObsolete = (sObsolete == "1"); }
}

zy::ZyBool sql_schema_export::exportProject(model::project & project)
{
   QSqlError err = loadSettings();
   if (err.isValid()) { return zy::ZyBool(false, tr("Error loading plugin settings : ") + err.text()); }
   applyCommandLine();

   sql_export::enum_dialect eDialect = sql_export::dialect_sqlite;
   if (! sql_export::sql_dialect::parse(m_sDialect, eDialect))
   { return zy::ZyBool(false, "Unknown SQL dialect '" + m_sDialect + "' (known : " + sql_export::sql_dialect::knownNames() + ")"); }
   const sql_export::sql_dialect dialect(eDialect);
   m_sDialect = dialect.name();

   // Two entities on one table would make it twice.
   zy::ZyInvalidValueX lstShared;
   model::schema_items::appendSharedTables(lstShared, * project.getListOfAllEntities());
   if (! lstShared.isEmpty()) { return zy::ZyBool(false, lstShared.first().getMessage()); }

   tools::wait_cursor wait;
   sql_export::schema_options options;
   options.bIncludeObsolete = m_bIncludeObsolete;
   const sql_export::sql_schema schema = sql_export::schema_builder::build(project, dialect, options);
   for (const QString & sWarning : schema.lstWarnings) { Q_EMIT onMessage(sWarning, 2, 0); }
   const QString sText = sql_export::schema_script::write(schema, dialect, project.getName());

   const QString sFile = getScriptPath(true, & project);
   QString sReason = sql_export::script_file::refusedPath(sFile);
   if (! sReason.isEmpty()) { return zy::ZyBool(false, sReason); }
   const QString sNative = QDir::toNativeSeparators(QFileInfo(sFile).absoluteFilePath());
   if (export_files * pFiles = getExportFiles())
   {
      bool bExists = false;
      const QString sOld = sql_export::script_file::currentText(sFile, bExists);
      pFiles->begin(QFileInfo(sFile).absolutePath(), QString(), QFileInfo(sFile).absoluteFilePath());
      if (! pFiles->report(QFileInfo(sFile).absoluteFilePath(), bExists, sOld, sText, (bExists && (sOld == sText))))
      {
         if (! pFiles->isDryRun()) { Q_EMIT onMessage("Unchanged : " + sNative, 1, 0); }
         return zy::ZyBool(true, QString());
      }
   }
   const sql_export::script_file::enum_outcome eOutcome = sql_export::script_file::write(sFile, sText, sReason);
   if (eOutcome == sql_export::script_file::outcome_refused) { return zy::ZyBool(false, sReason); }
   Q_EMIT onMessage(((eOutcome == sql_export::script_file::outcome_unchanged) ? "Unchanged : " : "Written : ") + sNative, 1, 0);
   return zy::ZyBool(true, QString());
}

} // namespace plugin
