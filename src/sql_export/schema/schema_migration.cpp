#include "sql_export/schema/schema_migration.h"

#include <QHash>
#include <QSet>

#include <algorithm>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "sql_export/schema/migration_sql.h"
#include "sql_export/schema/schema_script.h"

namespace sql_export {

namespace {

// An index, a unique index or a foreign key: named after its table and column, so a rename
// drops it under the old name and creates it under the new one.
struct derived_object
{
   QString sIdentity;
   QString sTableKey;
   QString sText;
   QString sCreate;
   QString sDrop;
   bool bForeignKey = false;
};

QHash<QString, int> indexBy(const sql_schema & s, bool bByKey)
{
   QHash<QString, int> hash;
   for (int i = 0; i < s.lstTables.size(); ++i) { hash.insert(bByKey ? s.lstTables.at(i).sKey : s.lstTables.at(i).sName, i); }
   return hash;
}

const sql_column * columnOf(const sql_table & t, const QString & sName, bool bByKey)
{
   for (const sql_column & c : t.lstColumns) { if ((bByKey ? c.sKey : c.sName) == sName) { return & c; } }
   return nullptr;
}

QStringList primaryKeys(const sql_table & t)
{
   QStringList lst;
   for (const QString & s : t.lstPrimaryKey) { const sql_column * c = columnOf(t, s, false); lst.append(c ? c->sKey : s); }
   return lst;
}

bool columnChanged(const sql_column & o, const sql_column & n)
{
   return (o.sType != n.sType) || (o.bNotNull != n.bNotNull) || (o.sDefault != n.sDefault);
}

class planner
{
   const sql_schema & m_from;
   const sql_schema & m_to;
   const sql_dialect & m_d;
   const QHash<QString, int> m_hashFrom;
   const QHash<QString, int> m_hashTo;
   const QHash<QString, int> m_hashFromNames;
   const QHash<QString, int> m_hashToNames;
   QSet<QString> m_setRebuilt;
   // Drops whose name nothing new takes: MariaDB runs them last (see run).
   QSet<qsizetype> m_setDeferred;
   migration_plan m_plan;

public:
   planner(const sql_schema & from, const sql_schema & to, const sql_dialect & d)
      : m_from(from), m_to(to), m_d(d), m_hashFrom(indexBy(from, true)), m_hashTo(indexBy(to, true)),
        m_hashFromNames(indexBy(from, false)), m_hashToNames(indexBy(to, false)) { ; }

   migration_plan run();

private:
   void add(const QString & sText, const QString & sSql, bool bDestructive = false)
   { m_plan.lstSteps.append(migration_step { sText, sSql, bDestructive }); }
   // "column key|target table key|target column key": a foreign key whatever its names.
   static QString keyTarget(const sql_table & t, const sql_foreign_key & k, const sql_schema & s, const QHash<QString, int> & hashNames);
   static QSet<QString> keyTargets(const sql_table & t, const sql_schema & s, const QHash<QString, int> & hashNames);
   QList<derived_object> derivedObjects(const sql_schema & s) const;
   bool needsRebuild(const sql_table & o, const sql_table & n) const;
   void changeTable(const sql_table & o, const sql_table & n, bool bSql);
   void changeColumns(const sql_table & o, const sql_table & n, bool bSql);
   void addColumns(const sql_table & o, const sql_table & n, bool bSql);
   QString indexesOf(const QString & sTableKey, const QList<derived_object> & lst) const;
};

QString planner::keyTarget(const sql_table & t, const sql_foreign_key & k, const sql_schema & s, const QHash<QString, int> & hashNames)
{
   const int iTarget = hashNames.value(k.sTargetTable, -1);
   const sql_table * pTarget = ((iTarget >= 0) ? & s.lstTables.at(iTarget) : nullptr);
   QStringList lstColumns, lstTargets;
   for (const QString & sColumn : k.columns())
   {
      const sql_column * pColumn = columnOf(t, sColumn, false);
      lstColumns.append(pColumn ? pColumn->sKey : sColumn);
   }
   for (const QString & sColumn : k.targets())
   {
      const sql_column * pTargetColumn = (pTarget ? columnOf(* pTarget, sColumn, false) : nullptr);
      lstTargets.append(pTargetColumn ? pTargetColumn->sKey : sColumn);
   }
   // A changed action changes the key: it is made again (SQLite: the table is rebuilt).
   return lstColumns.join(',') + '|' + (pTarget ? pTarget->sKey : k.sTargetTable) + '|' + lstTargets.join(',') + '|' + k.sOnDelete + '|' + k.sOnUpdate;
}

QSet<QString> planner::keyTargets(const sql_table & t, const sql_schema & s, const QHash<QString, int> & hashNames)
{
   QSet<QString> set;
   for (const sql_foreign_key & k : t.lstForeignKeys) { set.insert(keyTarget(t, k, s, hashNames)); }
   return set;
}

QList<derived_object> planner::derivedObjects(const sql_schema & s) const
{
   const QHash<QString, int> & hashNames = ((& s == & m_from) ? m_hashFromNames : m_hashToNames);
   QList<derived_object> lst;
   for (const sql_table & t : s.lstTables)
   {
      const QString sTable = m_d.table(t.sName);
      for (const sql_column & c : t.lstColumns)
      {
         for (const QString & sKind : { QString("ux"), QString("ix") })
         {
            if (! ((sKind == "ux") ? c.bUnique : c.bIndex)) { continue; }
            const QString sName = m_d.objectName(sKind, t.sName, c.sName);
            const QString sDrop = "DROP INDEX IF EXISTS " + m_d.indexName(t.sName, sName) + ((m_d.kind() == dialect_mariadb) ? " ON " + sTable : QString()) + ";\n";
            const QString sCreate = ((sKind == "ux") ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + m_d.quote(sName) + " ON " + sTable + " (" + m_d.quote(c.sName) + ");\n";
            const QString sText = ((sKind == "ux") ? "unique index " : "index ") + sName + " of table " + t.sName;
            lst.append(derived_object { sKind + '|' + sName + '|' + t.sKey + '|' + c.sKey, t.sKey, sText, sCreate, sDrop, false });
         }
      }
      for (const sql_index & i : t.lstIndexes)
      {
         const QString sName = schema_script::indexName(t, i, m_d);
         const QString sDrop = "DROP INDEX IF EXISTS " + m_d.quote(sName) + ((m_d.kind() == dialect_mariadb) ? " ON " + sTable : QString()) + ";\n";
         const QString sText = (i.bUnique ? "unique index " : "index ") + sName + " of table " + t.sName;
         lst.append(derived_object { "ixs|" + sName + '|' + t.sKey + '|' + schema_script::createIndex(t, i, m_d), t.sKey, sText, schema_script::createIndex(t, i, m_d), sDrop, false });
      }
      // SQLite changes no key in place: a table whose keys change is rebuilt.
      if (m_d.kind() == dialect_sqlite) { continue; }
      for (const sql_foreign_key & k : t.lstForeignKeys)
      {
         const QString sName = schema_script::foreignKeyName(t, k, m_d);
         QString sDrop = "ALTER TABLE " + sTable + " DROP CONSTRAINT IF EXISTS " + m_d.quote(sName) + ";\n";
         // MariaDB leaves the index it made for the key behind.
         if (m_d.kind() == dialect_mariadb)
         { sDrop = "ALTER TABLE " + sTable + " DROP FOREIGN KEY IF EXISTS " + m_d.quote(sName) + ";\nDROP INDEX IF EXISTS " + m_d.quote(sName) + " ON " + sTable + ";\n"; }
         const QString sCreate = "ALTER TABLE " + sTable + " ADD " + schema_script::foreignKeyClause(t, k, m_d) + ";\n";
         const QString sText = "foreign key " + sName + " of table " + t.sName + " to " + k.sTargetTable;
         lst.append(derived_object { "fk|" + sName + '|' + t.sKey + '|' + keyTarget(t, k, s, hashNames), t.sKey, sText, sCreate, sDrop, true });
      }
   }
   return lst;
}

bool planner::needsRebuild(const sql_table & o, const sql_table & n) const
{
   for (const sql_column & c : o.lstColumns) { if (! columnOf(n, c.sKey, true)) { return true; } }
   for (const sql_column & c : n.lstColumns)
   {
      const sql_column * pOld = columnOf(o, c.sKey, true);
      if (pOld ? columnChanged(* pOld, c) : (c.bNotNull && c.sDefault.isEmpty())) { return true; }
   }
   return (primaryKeys(o) != primaryKeys(n)) || (keyTargets(o, m_from, m_hashFromNames) != keyTargets(n, m_to, m_hashToNames));
}

void planner::changeColumns(const sql_table & o, const sql_table & n, bool bSql)
{
   const QString & t = n.sName;
   for (const sql_column & c : o.lstColumns)
   {
      if (columnOf(n, c.sKey, true)) { continue; }
      add("drop column " + t + '.' + c.sName, bSql ? migration_sql::dropColumn(t, c.sName, m_d) : QString(), true);
      if (! columnOf(n, c.sName, false)) { m_setDeferred.insert(m_plan.lstSteps.size() - 1); }
   }
   for (const sql_column & c : n.lstColumns)
   {
      const sql_column * pOld = columnOf(o, c.sKey, true);
      if (pOld && (pOld->sName != c.sName))
      { add("rename column " + t + '.' + pOld->sName + " to " + c.sName, bSql ? migration_sql::renameColumn(t, pOld->sName, c.sName, m_d) : QString()); }
   }
   addColumns(o, n, bSql);
   for (const sql_column & c : n.lstColumns)
   {
      const sql_column * pOld = columnOf(o, c.sKey, true);
      if (! pOld || ! columnChanged(* pOld, c)) { continue; }
      QStringList lstWhat;
      const bool bNarrowing = migration_sql::isNarrowing(pOld->sType, c.sType, m_d);
      if (pOld->sType != c.sType) { lstWhat.append("type " + pOld->sType + " to " + c.sType + (bNarrowing ? " (narrowing)" : "")); }
      if (pOld->bNotNull != c.bNotNull) { lstWhat.append(c.bNotNull ? "NOT NULL, NULL becomes " + migration_sql::fillValue(c, m_d) : QString("NULL allowed")); }
      if (pOld->sDefault != c.sDefault) { lstWhat.append(c.sDefault.isEmpty() ? QString("no default") : "default " + c.sDefault); }
      add("change column " + t + '.' + c.sName + ": " + lstWhat.join(", "), bSql ? migration_sql::alterColumn(t, * pOld, c, m_d) : QString(), bNarrowing);
   }
   // MariaDB's new definition above carries the description; SQLite keeps none.
   for (const sql_column & c : n.lstColumns)
   {
      const sql_column * pOld = columnOf(o, c.sKey, true);
      if (! bSql || ! pOld || (pOld->sComment == c.sComment) || (m_d.kind() == dialect_sqlite)) { continue; }
      if ((m_d.kind() == dialect_mariadb) && columnChanged(* pOld, c)) { continue; }
      add("change the description of column " + t + '.' + c.sName, migration_sql::columnComment(t, c, m_d));
   }
}

void planner::addColumns(const sql_table & o, const sql_table & n, bool bSql)
{
   for (int k = 0; k < n.lstColumns.size(); ++k)
   {
      const sql_column & c = n.lstColumns.at(k);
      if (columnOf(o, c.sKey, true)) { continue; }
      // MariaDB puts the column where the model has it; the others add it at the end.
      QString sPlace, sNote;
      if (m_d.kind() == dialect_mariadb) { sPlace = ((k == 0) ? QString(" FIRST") : " AFTER " + m_d.quote(n.lstColumns.at(k - 1).sName)); }
      else if (bSql)
      {
         const auto itLater = std::find_if(n.lstColumns.cbegin() + k + 1, n.lstColumns.cend(), [&o](const sql_column & x) { return columnOf(o, x.sKey, true) != nullptr; });
         if (itLater != n.lstColumns.cend()) { sNote = " (at the end of the table, not before " + itLater->sName + ": " + m_d.name() + " adds no column in between)"; }
      }
      add("add column " + n.sName + '.' + c.sName + sNote, bSql ? migration_sql::addColumn(n.sName, c, m_d, sPlace) : QString());
   }
}

void planner::changeTable(const sql_table & o, const sql_table & n, bool bSql)
{
   if (o.sName != n.sName) { add("rename table " + o.sName + " to " + n.sName, bSql ? migration_sql::renameTable(o.sName, n.sName, m_d) : QString()); }
   if ((o.sComment != n.sComment) && (m_d.kind() != dialect_sqlite)) { add("change the description of table " + n.sName, migration_sql::tableComment(n, m_d)); }
   // A column leaves the key before it may change (a key column is always NOT NULL).
   const bool bKey = (primaryKeys(o) != primaryKeys(n));
   if (bKey && ! o.lstPrimaryKey.isEmpty()) { add("drop the primary key of table " + n.sName, bSql ? migration_sql::changePrimaryKey(n, true, m_d) : QString()); }
   changeColumns(o, n, bSql);
   if (bKey && ! n.lstPrimaryKey.isEmpty()) { add("add the primary key of table " + n.sName, bSql ? migration_sql::changePrimaryKey(n, false, m_d) : QString()); }
   if (! bSql && (keyTargets(o, m_from, m_hashFromNames) != keyTargets(n, m_to, m_hashToNames))) { add("change the foreign keys of table " + n.sName, QString()); }
}

QString planner::indexesOf(const QString & sTableKey, const QList<derived_object> & lst) const
{
   QString s;
   for (const derived_object & x : lst) { if (! x.bForeignKey && (x.sTableKey == sTableKey)) { s += x.sCreate; } }
   return s;
}

migration_plan planner::run()
{
   const QList<derived_object> lstOld = derivedObjects(m_from);
   const QList<derived_object> lstNew = derivedObjects(m_to);
   QSet<QString> setOld, setNew;
   for (const derived_object & x : lstOld) { setOld.insert(x.sIdentity); }
   for (const derived_object & x : lstNew) { setNew.insert(x.sIdentity); }
   for (const sql_table & n : m_to.lstTables)
   {
      const int i = m_hashFrom.value(n.sKey, -1);
      if ((m_d.kind() == dialect_sqlite) && (i >= 0) && needsRebuild(m_from.lstTables.at(i), n)) { m_setRebuilt.insert(n.sKey); }
   }
   // Keys and indexes that go, before the tables and columns they name change.
   for (const derived_object & x : lstOld) { if (x.bForeignKey && ! setNew.contains(x.sIdentity)) { add("drop " + x.sText, x.sDrop); } }
   for (const derived_object & x : lstOld)
   {
      if (x.bForeignKey || setNew.contains(x.sIdentity) || ! m_hashTo.contains(x.sTableKey) || m_setRebuilt.contains(x.sTableKey)) { continue; }
      add("drop " + x.sText, x.sDrop);
   }
   for (const sql_table & o : m_from.lstTables)
   {
      if (m_hashTo.contains(o.sKey)) { continue; }
      add("drop table " + o.sName, "DROP TABLE " + m_d.table(o.sName) + ";\n", true);
      if (! m_hashToNames.contains(o.sName)) { m_setDeferred.insert(m_plan.lstSteps.size() - 1); }
   }
   // PostgreSQL's enumeration types before the columns of that type.
   const QString sTypes = schema_script::enumerationTypes(m_to.lstTables, m_d, schema_script::enumerationTypeNames(m_from.lstTables, m_d));
   if (! sTypes.isEmpty()) { add("create the enumeration types", sTypes); }
   for (const sql_table & n : m_to.lstTables)
   {
      const int i = m_hashFrom.value(n.sKey, -1);
      if (i < 0) { continue; }
      const bool bRebuild = m_setRebuilt.contains(n.sKey);
      changeTable(m_from.lstTables.at(i), n, ! bRebuild);
      if (bRebuild)
      {
         add("rebuild table " + n.sName + " with its rows (SQLite alters no column in place)", migration_sql::rebuildTable(m_from.lstTables.at(i), n, indexesOf(n.sKey, lstNew), m_d));
         m_plan.lstRebuilt.append({ m_from.lstTables.at(i).sName, n.sName });
      }
   }
   for (const sql_table & n : m_to.lstTables)
   { if (! m_hashFrom.contains(n.sKey)) { add("create table " + n.sName, schema_script::createTable(n, m_d, {}, m_d.kind() == dialect_sqlite)); } }
   for (const derived_object & x : lstNew)
   {
      if (x.bForeignKey || setOld.contains(x.sIdentity) || ! m_hashFrom.contains(x.sTableKey) || m_setRebuilt.contains(x.sTableKey)) { continue; }
      add("create " + x.sText, x.sCreate);
   }
   for (const derived_object & x : lstNew) { if (x.bForeignKey && ! setOld.contains(x.sIdentity)) { add("add " + x.sText, x.sCreate); } }
   // MariaDB commits step by step: with the drops last, a step that fails leaves every table and
   // column the old version reads, so the database stays usable by it.
   if (m_d.kind() == dialect_mariadb)
   {
      QList<migration_step> lstFirst, lstLast;
      for (qsizetype i = 0; i < m_plan.lstSteps.size(); ++i) { (m_setDeferred.contains(i) ? lstLast : lstFirst).append(m_plan.lstSteps.at(i)); }
      m_plan.lstSteps = lstFirst + lstLast;
   }
   return m_plan;
}

} // namespace

QStringList migration_plan::destructiveSteps() const
{
   QStringList lst;
   for (const migration_step & s : lstSteps) { if (s.bDestructive) { lst.append(s.sText); } }
   return lst;
}

migration_plan schema_migration::plan(const sql_schema & from, const sql_schema & to, const sql_dialect & dialect)
{
   return planner(from, to, dialect).run();
}

namespace {

// What a failing step leaves behind, and what a rebuild cannot keep, for the script's header.
QString failureNote(const migration_plan & plan, const sql_dialect & d)
{
   QString s;
   switch (d.kind())
   {
      case dialect_mariadb:
         s = "-- If a step fails: MariaDB has committed the steps before it and none after it. The database is\n"
             "-- left between the two versions; fix the cause and run the script again from the failing step.\n"
             "-- Tables and columns are dropped last: until then the old version finds what it reads.\n";
         break;
      case dialect_postgresql:
         s = "-- If a step fails, the transaction is rolled back and the database is left as it was\n"
             "-- (psql -v ON_ERROR_STOP=1 stops there).\n";
         break;
      default:
         s = "-- If a step fails, the transaction is rolled back and the database is left as it was, when the\n"
             "-- run stops there: sqlite3 -bail (without it the shell goes on and commits what did run).\n";
         if (! plan.lstRebuilt.isEmpty() && ! plan.bCatalogRead)
         {
            s += "-- A rebuilt table loses what the model does not know of it (other indexes, triggers, CHECK\n"
                 "-- constraints, AUTOINCREMENT): tavrel migrate --database FILE keeps them or names them.\n";
         }
   }
   return s;
}

} // namespace

QString schema_migration::write(const migration_plan & plan, const sql_dialect & d, const migration_end & from, const migration_end & to)
{
   const auto end = [](const migration_end & e) { return "model '" + schema_script::commentText(e.sProject) + "' (" + schema_script::commentText(e.sFile) + ")\n"; };
   QString s = "-- Migration of a database for " + d.name() + ", written by Tavrel\n-- From: " + end(from) + "-- To:   " + end(to);
   if (plan.isEmpty()) { return s + "-- Nothing to change: both versions have the same schema.\n"; }
   s += "-- Steps:\n";
   const auto stepLine = [&plan](int i) {
      const migration_step & step = plan.lstSteps.at(i);
      return QString("%1. %2%3").arg(i + 1).arg(schema_script::commentText(step.sText), step.bDestructive ? " (loses data)" : "");
   };
   for (int i = 0; i < plan.lstSteps.size(); ++i) { s += "--   " + stepLine(i) + '\n'; }
   s += failureNote(plan, d);
   // SQLite checks no key while tables are rebuilt, as its documented procedure asks.
   if (d.kind() == dialect_sqlite) { s += "PRAGMA foreign_keys = OFF;\n"; }
   s += ((d.kind() == dialect_mariadb) ? QString("-- MariaDB commits each schema change on its own: no transaction\n") : QString("BEGIN;\n"));
   for (int i = 0; i < plan.lstSteps.size(); ++i) { s += "\n-- " + stepLine(i) + '\n' + plan.lstSteps.at(i).sSql; }
   if (d.kind() != dialect_mariadb) { s += "\nCOMMIT;\n"; }
   if (d.kind() == dialect_sqlite) { s += "PRAGMA foreign_keys = ON;\n"; }
   return s;
}

void schema_migration::keepCatalogObjects(migration_plan & plan, const sql_schema & to, const QList<catalog_object> & lstObjects)
{
   plan.bCatalogRead = true;
   QHash<QString, QString> hashRebuilt;
   for (const auto & r : plan.lstRebuilt) { hashRebuilt.insert(r.first, r.second); }
   QHash<QString, const sql_table *> hashTo;
   for (const sql_table & t : to.lstTables) { hashTo.insert(t.sName, & t); }
   for (const catalog_object & x : lstObjects)
   {
      if (! hashRebuilt.contains(x.sTable)) { continue; }
      const QString sNew = hashRebuilt.value(x.sTable);
      const sql_table * pTable = hashTo.value(sNew, nullptr);
      bool bKept = ! x.sSql.isEmpty() && pTable;
      // Written for the old table: it must keep its name, and an index all its columns.
      if (sNew != x.sTable) { bKept = false; }
      for (const QString & sColumn : x.lstColumns)
      {
         const bool bThere = pTable && std::any_of(pTable->lstColumns.cbegin(), pTable->lstColumns.cend(), [&sColumn](const sql_column & c) { return c.sName == sColumn; });
         if (! bThere) { bKept = false; }
      }
      const QString sWhat = x.sKind + (x.sName.isEmpty() ? QString() : ' ' + x.sName) + " of table " + x.sTable;
      if (bKept) { plan.lstSteps.append(migration_step { "make " + sWhat + " again", x.sSql.trimmed() + (x.sSql.trimmed().endsWith(';') ? "\n" : ";\n"), false }); }
      else { plan.lstSteps.append(migration_step { "lose " + sWhat + " (the model does not know it)", QString(), true }); }
   }
}

QString schema_migration::keyByName(sql_schema & from, sql_schema & to, const migration_renames & renames)
{
   for (sql_table & t : to.lstTables)
   {
      t.sKey = "t:" + t.sName;
      for (sql_column & c : t.lstColumns) { c.sKey = "c:" + c.sName; }
   }
   QSet<QString> setTables;
   for (sql_table & t : from.lstTables)
   {
      const QString sNew = renames.hashTables.value(t.sName, t.sName);
      if (setTables.contains(sNew)) { return "two tables of the old model would both become table " + sNew; }
      setTables.insert(sNew);
      t.sKey = "t:" + sNew;
      const QHash<QString, QString> hashColumns = renames.hashColumns.value(sNew);
      QSet<QString> setColumns;
      for (sql_column & c : t.lstColumns)
      {
         const QString sColumn = hashColumns.value(c.sName, c.sName);
         if (setColumns.contains(sColumn)) { return "two columns of table " + t.sName + " would both become column " + sColumn; }
         setColumns.insert(sColumn);
         c.sKey = "c:" + sColumn;
      }
   }
   return QString();
}

bool schema_migration::shareIds(const model::project & a, const model::project & b)
{
   QSet<QString> setA;
   for (const model::entity_ptr & e : * a.getListOfAllEntities())
   {
      if (e->getId() != 0) { setA.insert("e" + QString::number(e->getId())); }
      for (const model::property_ptr & p : e->getOwnProperties()) { if (p && (p->getId() != 0)) { setA.insert("p" + QString::number(p->getId())); } }
   }
   bool bAnyInB = false;
   for (const model::entity_ptr & e : * b.getListOfAllEntities())
   {
      if ((e->getId() != 0) && setA.contains("e" + QString::number(e->getId()))) { return true; }
      for (const model::property_ptr & p : e->getOwnProperties())
      {
         if (! p || (p->getId() == 0)) { continue; }
         bAnyInB = true;
         if (setA.contains("p" + QString::number(p->getId()))) { return true; }
      }
      bAnyInB = bAnyInB || (e->getId() != 0);
   }
   // A first version, or a model emptied: nothing to match, nothing contradicts.
   return setA.isEmpty() || ! bAnyInB;
}

} // namespace sql_export
