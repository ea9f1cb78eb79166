#include "cli_migrate.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include "cli_diagram.h"
#include "db_import/db_importer.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/schema_items.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_export/schema/script_file.h"
#include "tools/terminal_text.h"

namespace app {

const char * cli_migrate::usageText()
{
   return "Usage: tavrel migrate OLD NEW --dialect sqlite|postgresql|mariadb [-o FILE]\n"
          "                      [--rename ENTITY=NEW_ENTITY] [--rename ENTITY.PROPERTY=NEW_PROPERTY]\n"
          "                      [--allow-destructive] [--check] [--include-obsolete] [--database DB]\n"
          "Writes the SQL that turns a database made for the model OLD into one for the model NEW\n"
          "(each a .tavrel or .json file). When both models carry their ids (a project file, or a\n"
          "JSON model that writes them), entities and properties are matched by id, so a renamed\n"
          "one is renamed in the database. Otherwise tables and columns are matched by name, and a\n"
          "rename is one only when --rename says so (else it is a drop and an add). Steps that lose\n"
          "data (dropping a table or a column, narrowing a type) are refused unless\n"
          "--allow-destructive. --check writes nothing and exits 1 when the database needs a\n"
          "migration, 0 when it does not. --database (an SQLite file or a database URL, as\n"
          "import-db reads them) names the database the script is for: it must hold the tables\n"
          "and columns of OLD and none of those the script makes, and (MariaDB) the keys the\n"
          "script adds must match the columns they point at, or nothing is written. With SQLite\n"
          "what a rebuilt table holds beyond the model is made again or named as lost.\n"
          "PostgreSQL and SQLite run the script in one transaction; MariaDB commits each step,\n"
          "so a failing step leaves the steps before it done.\n";
}

bool cli_migrate::carriesIds(const QString & sFile)
{
   if (! sFile.endsWith(QLatin1String(".json"), Qt::CaseInsensitive)) { return true; }
   QFile file(sFile);
   if (! file.open(QIODevice::ReadOnly)) { return false; }
   const QJsonArray lstEntities = QJsonDocument::fromJson(file.readAll()).object().value("entities").toArray();
   for (const QJsonValue & e : lstEntities)
   {
      if (e.toObject().contains("id")) { return true; }
      for (const QJsonValue & p : e.toObject().value("properties").toArray()) { if (p.toObject().contains("id")) { return true; } }
   }
   return false;
}

namespace {

model::entity_ptr findEntity(const model::project & p, const QString & sName)
{
   if (const model::entity_ptr pByKey = p.getEntityByKey(sName)) { return pByKey; }
   model::entity_ptr pFound;
   for (const model::entity_ptr & e : * p.getListOfAllEntities())
   {
      if (! e || (e->getName() != sName)) { continue; }
      if (pFound) { return model::entity_ptr(); }   // two namespaces hold that name: the key is needed
      pFound = e;
   }
   return pFound;
}

// The column of a property of the entity or of its ancestors, by property or column name.
QString columnOf(const model::entity & e, const QString & sName)
{
   for (const model::entity * p = & e; p; p = p->getParent().get())
   {
      for (const model::property_ptr & x : p->getOwnProperties())
      {
         if (! x) { continue; }
         const QString sColumn = sql_export::schema_builder::columnName(* x);
         if (! sColumn.isEmpty() && ((x->getName() == sName) || (sColumn == sName))) { return sColumn; }
      }
   }
   return QString();
}

} // namespace

QString cli_migrate::addRename(const model::project & oldModel, const model::project & newModel, const QString & sRename,
                               sql_export::migration_renames & renames)
{
   const qsizetype iEqual = sRename.indexOf('=');
   const QString sFrom = sRename.left(iEqual).trimmed(), sTo = sRename.mid(iEqual + 1).trimmed();
   if ((iEqual < 0) || sFrom.isEmpty() || sTo.isEmpty())
   { return "--rename '" + sRename + "' is not OLD=NEW (Entity=NewEntity or Entity.old=new)"; }
   // "Entity.old=new": a property of one entity; "Old=New": an entity. "::" joins namespaces.
   const qsizetype iDot = sFrom.lastIndexOf('.');
   if (iDot < 0)
   {
      const model::entity_ptr pOld = findEntity(oldModel, sFrom), pNew = findEntity(newModel, sTo);
      if (! pOld) { return "--rename '" + sRename + "': no single entity '" + sFrom + "' in the old model"; }
      if (! pNew) { return "--rename '" + sRename + "': no single entity '" + sTo + "' in the new model"; }
      renames.hashTables.insert(sql_export::schema_builder::tableName(* pOld), sql_export::schema_builder::tableName(* pNew));
      return QString();
   }
   const QString sEntity = sFrom.left(iDot), sProperty = sFrom.mid(iDot + 1);
   model::entity_ptr pNew = findEntity(newModel, sEntity), pOld = findEntity(oldModel, sEntity);
   // The entity by its new name: the old one is the one renamed to it.
   if (pNew && ! pOld)
   {
      const QString sNewTable = sql_export::schema_builder::tableName(* pNew);
      for (auto itr = renames.hashTables.cbegin(); itr != renames.hashTables.cend(); ++itr)
      { if (itr.value() == sNewTable) { for (const model::entity_ptr & e : * oldModel.getListOfAllEntities()) { if (e && (sql_export::schema_builder::tableName(* e) == itr.key())) { pOld = e; } } } }
   }
   if (! pOld || ! pNew) { return "--rename '" + sRename + "': no single entity '" + sEntity + "' in both models (rename the entity first with --rename Old=New)"; }
   const QString sOldColumn = columnOf(* pOld, sProperty), sNewColumn = columnOf(* pNew, sTo);
   if (sOldColumn.isEmpty()) { return "--rename '" + sRename + "': entity '" + sEntity + "' of the old model has no column for '" + sProperty + "'"; }
   if (sNewColumn.isEmpty()) { return "--rename '" + sRename + "': entity '" + sEntity + "' of the new model has no column for '" + sTo + "'"; }
   renames.hashColumns[sql_export::schema_builder::tableName(* pNew)].insert(sOldColumn, sNewColumn);
   return QString();
}

int cli_migrate::message(const QString & text, int iExit, bool bHint)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n";
   if (bHint) { m_err << "Try 'tavrel migrate --help'.\n"; }
   m_err.flush();
   return iExit;
}

int cli_migrate::readModels(const QStringList & lstFiles, model::project_ptr & pOld, model::project_ptr & pNew)
{
   for (int i = 0; i < 2; ++i)
   {
      model::project_ptr & p = (i == 0 ? pOld : pNew);
      const zy::ZyBool ok = cli_diagram::readModel(lstFiles.at(i), p);
      if (! ok || ! p) { return message(ok.getDesc().isEmpty() ? "cannot read '" + lstFiles.at(i) + "'" : ok.getDesc(), 1); }
      // Two entities on one table: no database holds that model.
      zy::ZyInvalidValueX lstShared;
      model::schema_items::appendSharedTables(lstShared, * p->getListOfAllEntities());
      if (! lstShared.isEmpty()) { return message("'" + lstFiles.at(i) + "': " + lstShared.first().getMessage(), 1); }
   }
   return -1;
}

bool cli_migrate::readSqliteCatalog(const QString & sFile, const sql_export::sql_schema & from, QList<sql_export::catalog_object> & lst, QString & sError)
{
   if (! QFileInfo(sFile).isFile()) { sError = "--database: no SQLite database '" + sFile + "'"; return false; }
   // The indexes the old model made itself are no extra.
   const sql_export::sql_dialect d(sql_export::dialect_sqlite);
   QSet<QString> setKnown;
   for (const sql_export::sql_table & t : from.lstTables)
   {
      for (const sql_export::sql_column & c : t.lstColumns) { setKnown << d.objectName("ux", t.sName, c.sName) << d.objectName("ix", t.sName, c.sName); }
   }
   static const QRegularExpression s_reCheck("\\bCHECK\\s*\\(", QRegularExpression::CaseInsensitiveOption);
   static const QRegularExpression s_reAutoIncrement("\\bAUTOINCREMENT\\b", QRegularExpression::CaseInsensitiveOption);
   const QString sConnection = "tavrel_migrate_catalog";
   bool bOk = false;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sConnection);
      db.setDatabaseName(sFile);
      db.setConnectOptions("QSQLITE_OPEN_READONLY");
      QSqlQuery q(db);
      bOk = db.open() && q.exec("SELECT type, name, tbl_name, sql FROM sqlite_master WHERE type IN ('table', 'index', 'trigger') AND sql IS NOT NULL ORDER BY type, name");
      if (! bOk) { sError = "--database: cannot read '" + sFile + "': " + q.lastError().text() + db.lastError().text(); }
      while (bOk && q.next())
      {
         const QString sType = q.value(0).toString(), sName = q.value(1).toString(), sTable = q.value(2).toString(), sSql = q.value(3).toString();
         if (sType == "table")
         {
            if (sSql.contains(s_reCheck)) { lst.append({ sTable, "CHECK constraint", QString(), QString(), {} }); }
            if (sSql.contains(s_reAutoIncrement)) { lst.append({ sTable, "AUTOINCREMENT", QString(), QString(), {} }); }
            continue;
         }
         if ((sType == "index") && setKnown.contains(sName)) { continue; }
         sql_export::catalog_object x { sTable, sType, sName, sSql, {} };
         QSqlQuery info(db);
         if ((sType == "index") && info.exec("PRAGMA index_info(" + d.literal(sName) + ")")) { while (info.next()) { x.lstColumns.append(info.value(2).toString()); } }
         lst.append(x);
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sConnection);
   return bOk;
}

namespace {

const db_import::db_table * catalogTable(const db_import::db_catalog & catalog, const sql_export::sql_dialect & d, const QString & sTable)
{
   const QString sSchema = (d.schemaOf(sTable).isEmpty() ? catalog.sDefaultSchema : d.schemaOf(sTable));
   for (const db_import::db_table & t : catalog.lstTables)
   {
      if (! t.bView && (t.sSchema.compare(sSchema, Qt::CaseInsensitive) == 0) && (t.sName.compare(d.bareTable(sTable), Qt::CaseInsensitive) == 0)) { return & t; }
   }
   return nullptr;
}

const db_import::db_column * catalogColumn(const db_import::db_table * pTable, const QString & sColumn)
{
   if (! pTable) { return nullptr; }
   for (const db_import::db_column & c : pTable->lstColumns) { if (c.sName.compare(sColumn, Qt::CaseInsensitive) == 0) { return & c; } }
   return nullptr;
}

const sql_export::sql_table * tableByKey(const sql_export::sql_schema & s, const QString & sKey, bool bByName = false)
{
   for (const sql_export::sql_table & t : s.lstTables) { if ((bByName ? t.sName : t.sKey) == sKey) { return & t; } }
   return nullptr;
}

const sql_export::sql_column * columnByKey(const sql_export::sql_table * pTable, const QString & sKey, bool bByName = false)
{
   if (! pTable) { return nullptr; }
   for (const sql_export::sql_column & c : pTable->lstColumns) { if ((bByName ? c.sName : c.sKey) == sKey) { return & c; } }
   return nullptr;
}

// An integer type's name, lower case without its display width: MariaDB keys join equal ones.
QString integerType(const QString & sType)
{
   const QString s = sType.toLower().section('(', 0, 0).trimmed();
   return (s.endsWith("int") || (s == "integer")) ? ((s == "integer") ? QString("int") : s) : QString();
}

} // namespace

QStringList cli_migrate::databaseProblems(const db_import::db_catalog & catalog, const sql_export::sql_schema & from, const sql_export::sql_schema & to, const sql_export::sql_dialect & d)
{
   QStringList lst;
   for (const sql_export::sql_table & o : from.lstTables)
   {
      const db_import::db_table * pTable = catalogTable(catalog, d, o.sName);
      if (! pTable) { lst.append("table " + o.sName + " of the old model is not in the database"); continue; }
      for (const sql_export::sql_column & c : o.lstColumns) { if (! catalogColumn(pTable, c.sName)) { lst.append("column " + o.sName + '.' + c.sName + " of the old model is not in the database"); } }
   }
   for (const sql_export::sql_table & n : to.lstTables)
   {
      const sql_export::sql_table * pOld = tableByKey(from, n.sKey);
      if ((! pOld || (pOld->sName.compare(n.sName, Qt::CaseInsensitive) != 0)) && catalogTable(catalog, d, n.sName) && ! tableByKey(from, n.sName, true))
      { lst.append("table " + n.sName + ", which the script makes, is in the database already"); }
      const db_import::db_table * pTable = (pOld ? catalogTable(catalog, d, pOld->sName) : nullptr);
      for (const sql_export::sql_column & c : n.lstColumns)
      {
         if (pOld && ! columnByKey(pOld, c.sKey) && catalogColumn(pTable, c.sName) && ! columnByKey(pOld, c.sName, true))
         { lst.append("column " + pOld->sName + '.' + c.sName + ", which the script adds, is in the database already"); }
      }
      if (d.kind() != sql_export::dialect_mariadb) { continue; }
      // A key to a table the script leaves as it is must match the column in the database.
      for (const sql_export::sql_foreign_key & k : n.lstForeignKeys)
      {
         const sql_export::sql_table * pTarget = tableByKey(to, k.sTargetTable, true);
         const sql_export::sql_table * pTargetOld = (pTarget ? tableByKey(from, pTarget->sKey) : nullptr);
         const sql_export::sql_column * pTo = columnByKey(pTarget, k.sTargetColumn, true);
         const sql_export::sql_column * pToOld = (pTo && pTargetOld ? columnByKey(pTargetOld, pTo->sKey) : nullptr);
         const db_import::db_column * pDb = (pToOld ? catalogColumn(catalogTable(catalog, d, pTargetOld->sName), pToOld->sName) : nullptr);
         const sql_export::sql_column * pColumn = columnByKey(& n, k.sColumn, true);
         if (! pDb || ! pColumn || (pToOld->sType != pTo->sType)) { continue; }
         const QString sOurs = integerType(pColumn->sType), sTheirs = integerType(pDb->sDeclared.isEmpty() ? pDb->sType : pDb->sDeclared);
         if (! sOurs.isEmpty() && ! sTheirs.isEmpty() && (sOurs != sTheirs))
         { lst.append("key " + n.sName + '.' + k.sColumn + " is " + pColumn->sType + " but " + pTargetOld->sName + '.' + pToOld->sName + " in the database is " + pDb->sDeclared + ": MariaDB would refuse the foreign key"); }
      }
   }
   return lst;
}

int cli_migrate::checkDatabase(const QString & sDatabase, const sql_export::sql_schema & from, const sql_export::sql_schema & to,
                               const sql_export::sql_dialect & d, sql_export::migration_plan & plan)
{
   const bool bSqlite = (d.kind() == sql_export::dialect_sqlite);
   const QString sUrl = ((bSqlite && ! sDatabase.startsWith("sqlite:")) ? "sqlite:" + sDatabase : sDatabase);
   db_import::db_importer importer { db_import::import_options() };
   db_import::db_catalog catalog;
   QString sError;
   if (! importer.readSource(sUrl, QString(), catalog, sError)) { return message("--database: " + sError, 1); }
   if (int(catalog.eDialect) != int(d.kind())) { return message("--database: '" + sDatabase + "' is no " + d.name() + " database", 2, true); }
   const QStringList lstProblems = databaseProblems(catalog, from, to, d);
   if (! lstProblems.isEmpty()) { return message("the database is not ready for this migration, nothing written:\n  " + lstProblems.join("\n  "), 1); }
   if (! bSqlite) { return -1; }
   QList<sql_export::catalog_object> lstObjects;
   if (! readSqliteCatalog(sUrl.mid(7), from, lstObjects, sError)) { return message(sError, 1); }
   sql_export::schema_migration::keepCatalogObjects(plan, to, lstObjects);
   return -1;
}

int cli_migrate::run(const QStringList & args)
{
   QCommandLineParser parser;
   parser.setApplicationDescription(usageText());
   parser.addOptions({
      { QStringList { "h", "help" }, "Show this help." },
      { "dialect", "sqlite, postgresql or mariadb.", "DIALECT" },
      { QStringList { "o", "output" }, "The file to write (default: standard output).", "FILE" },
      { "rename", "Match by name, with this entity or property renamed (OLD=NEW, Entity.old=new); repeatable.", "RENAME" },
      { "allow-destructive", "Write the steps that lose data too." },
      { "check", "Write nothing; exit 1 when a migration is needed." },
      { "include-obsolete", "Keep the columns of obsolete properties." },
      { "database", "The database the migration is for (SQLite file or URL), checked before anything is written.", "DB" } });
   parser.addPositionalArgument("OLD", "The model the database was made for, .tavrel or .json.");
   parser.addPositionalArgument("NEW", "The model it is to follow, .tavrel or .json.");
   if (! parser.parse(QStringList("tavrel") + args)) { return message(parser.errorText(), 2, true); }
   if (parser.isSet("help")) { m_out << parser.helpText().section('\n', 1); m_out.flush(); return 0; }
   const QStringList lstFiles = parser.positionalArguments();
   if (lstFiles.size() != 2) { return message("migrate needs OLD and NEW", 2, true); }
   if (! parser.isSet("dialect")) { return message("migrate needs --dialect (" + sql_export::sql_dialect::knownNames() + ")", 2, true); }
   sql_export::enum_dialect eDialect = sql_export::dialect_sqlite;
   if (! sql_export::sql_dialect::parse(parser.value("dialect"), eDialect))
   { return message("unknown dialect '" + parser.value("dialect") + "' (" + sql_export::sql_dialect::knownNames() + ")", 2, true); }
   const QString sOut = parser.value("output");
   if (! sOut.isEmpty() && ! parser.isSet("check"))
   {
      const QString sRefused = sql_export::script_file::refusedPath(sOut);
      if (! sRefused.isEmpty()) { return message(sRefused, 1); }
   }

   model::project_ptr pOld, pNew;
   const int iRead = readModels(lstFiles, pOld, pNew);
   if (iRead >= 0) { return iRead; }
   const QStringList lstRenames = parser.values("rename");
   const bool bByName = (! lstRenames.isEmpty() || ! carriesIds(lstFiles.at(0)) || ! carriesIds(lstFiles.at(1)));
   if (! bByName && ! sql_export::schema_migration::shareIds(* pOld, * pNew))
   { return message("'" + lstFiles.at(0) + "' and '" + lstFiles.at(1) + "' are not versions of one model: they share no entity or property id", 1); }

   const sql_export::sql_dialect dialect(eDialect);
   sql_export::schema_options options;
   options.bIncludeObsolete = parser.isSet("include-obsolete");
   sql_export::sql_schema from = sql_export::schema_builder::build(* pOld, dialect, options);
   sql_export::sql_schema to = sql_export::schema_builder::build(* pNew, dialect, options);
   if (bByName)
   {
      sql_export::migration_renames renames;
      for (const QString & sRename : lstRenames)
      {
         const QString sError = addRename(* pOld, * pNew, sRename, renames);
         if (! sError.isEmpty()) { return message(sError, 2, true); }
      }
      const QString sConflict = sql_export::schema_migration::keyByName(from, to, renames);
      if (! sConflict.isEmpty()) { return message("--rename: " + sConflict, 2, true); }
   }
   for (const QString & s : to.lstWarnings) { message("warning: " + s, 0); }
   sql_export::migration_plan plan = sql_export::schema_migration::plan(from, to, dialect);
   if (parser.isSet("database"))
   {
      const int iChecked = checkDatabase(parser.value("database"), from, to, dialect, plan);
      if (iChecked >= 0) { return iChecked; }
   }
   if (parser.isSet("check"))
   {
      m_out << (plan.isEmpty() ? QString("No migration needed\n") : QString("A migration of %1 steps is needed\n").arg(plan.lstSteps.size()));
      m_out.flush();
      return (plan.isEmpty() ? 0 : 1);
   }
   const QStringList lstDestructive = plan.destructiveSteps();
   if (! lstDestructive.isEmpty() && ! parser.isSet("allow-destructive"))
   {
      QString sList;
      for (const QString & s : lstDestructive) { sList += "\n  " + s; }
      return message("refused: these steps lose data (give --allow-destructive to write them):" + sList, 1);
   }
   const QString sScript = sql_export::schema_migration::write(plan, dialect, { pOld->getName(), QFileInfo(lstFiles.at(0)).fileName() },
                                                               { pNew->getName(), QFileInfo(lstFiles.at(1)).fileName() });
   return writeScript(sOut, sScript, plan.lstSteps.size());
}

int cli_migrate::writeScript(const QString & sOut, const QString & sScript, qsizetype iSteps)
{
   if (sOut.isEmpty())
   {
      m_out << sScript;
      m_out.flush();
      // Standard output sent to a file on a full disk: the script is not whole.
      if (m_out.status() != QTextStream::Ok)
      {
         const QFileDevice * pDevice = qobject_cast<const QFileDevice *>(m_out.device());
         return message("cannot write the migration to standard output: " + (pDevice ? pDevice->errorString() : QString("write error")), 1);
      }
      return 0;
   }
   QString sReason;
   if (sql_export::script_file::write(sOut, sScript, sReason) == sql_export::script_file::outcome_refused) { return message(sReason, 1); }
   m_out << "Wrote a migration of " << iSteps << " steps to '" << tools::terminal_text::escape(QFileInfo(sOut).absoluteFilePath(), false) << "'\n";
   m_out.flush();
   return 0;
}

} // namespace app
