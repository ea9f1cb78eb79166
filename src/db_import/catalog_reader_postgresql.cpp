#include "db_import/catalog_reader.h"

#include <QVariant>

namespace db_import {

namespace {

// The user's schemas: everything but the system ones.
const char * const k_sUserSchemas =
   "SELECT nspname FROM pg_catalog.pg_namespace WHERE nspname NOT IN ('pg_catalog', 'information_schema') "
   "AND nspname NOT LIKE 'pg\\_toast%' AND nspname NOT LIKE 'pg\\_temp\\_%' ORDER BY nspname";

// Straight from pg_catalog: information_schema.columns checks privileges row by row and takes
// seconds on thousands of tables. format_type() writes the type as declared ("character
// varying(40)", "integer[]", an enumeration's name). A partition is part of its partitioned
// table, which is the entity.
const char * const k_sColumns =
   "SELECT n.nspname, c.relname, c.relkind, a.attname, pg_catalog.format_type(a.atttypid, a.atttypmod), a.attnotnull, "
   "pg_catalog.pg_get_expr(d.adbin, d.adrelid) "
   "FROM pg_catalog.pg_class c "
   "JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace "
   "JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT a.attisdropped "
   "LEFT JOIN pg_catalog.pg_attrdef d ON d.adrelid = c.oid AND d.adnum = a.attnum "
   "WHERE c.relkind IN ('r', 'p', 'v', 'm') AND NOT c.relispartition AND n.nspname IN (%1) "
   "ORDER BY n.nspname, c.relname, a.attnum";

// Primary keys, unique constraints and foreign keys, one row per column of each, in key order;
// the catalog's arrays give the column pairs of a foreign key.
const char * const k_sConstraints =
   "SELECT n.nspname, c.relname, con.conname, con.contype, a.attname, fn.nspname, fc.relname, fa.attname "
   "FROM pg_catalog.pg_constraint con "
   "JOIN pg_catalog.pg_class c ON c.oid = con.conrelid "
   "JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace "
   "CROSS JOIN LATERAL unnest(con.conkey) WITH ORDINALITY AS k(attnum, ord) "
   "JOIN pg_catalog.pg_attribute a ON a.attrelid = con.conrelid AND a.attnum = k.attnum "
   "LEFT JOIN pg_catalog.pg_class fc ON fc.oid = con.confrelid "
   "LEFT JOIN pg_catalog.pg_namespace fn ON fn.oid = fc.relnamespace "
   "LEFT JOIN pg_catalog.pg_attribute fa ON fa.attrelid = con.confrelid AND fa.attnum = con.confkey[k.ord] "
   "WHERE con.contype IN ('p', 'u', 'f') AND n.nspname IN (%1) "
   "ORDER BY n.nspname, c.relname, con.contype, con.conname, k.ord";

// Indexes that no constraint made; an expression column has no name and is skipped later.
const char * const k_sIndexes =
   "SELECT n.nspname, t.relname, i.relname, ix.indisunique, a.attname "
   "FROM pg_catalog.pg_index ix "
   "JOIN pg_catalog.pg_class i ON i.oid = ix.indexrelid "
   "JOIN pg_catalog.pg_class t ON t.oid = ix.indrelid "
   "JOIN pg_catalog.pg_namespace n ON n.oid = t.relnamespace "
   "CROSS JOIN LATERAL unnest(ix.indkey::int2[]) WITH ORDINALITY AS k(attnum, ord) "
   "LEFT JOIN pg_catalog.pg_attribute a ON a.attrelid = t.oid AND a.attnum = k.attnum AND k.attnum > 0 "
   "WHERE n.nspname IN (%1) AND NOT ix.indisprimary "
   "AND NOT EXISTS (SELECT 1 FROM pg_catalog.pg_constraint con WHERE con.conindid = ix.indexrelid AND con.contype IN ('p', 'u')) "
   "ORDER BY n.nspname, t.relname, i.relname, k.ord";

} // namespace

bool catalog_reader::readPostgresql(const QSqlDatabase & database, const QStringList & lstSchemas, db_catalog & catalog, QString & sError)
{
   QSqlQuery q(database);
   QStringList lst = lstSchemas;
   if (lst.isEmpty())
   {
      if (! exec(q, k_sUserSchemas, sError)) { return false; }
      while (q.next()) { lst.append(q.value(0).toString()); }
   }
   if (lst.isEmpty()) { return true; }
   const QString sSchemas = quotedList(lst);

   if (! exec(q, QString(k_sColumns).arg(sSchemas), sError)) { return false; }
   while (q.next())
   {
      db_table & t = catalog.table(q.value(0).toString(), q.value(1).toString());
      // Views and materialized views are read-only entities.
      t.bView = ((q.value(2).toString() == "v") || (q.value(2).toString() == "m"));
      db_column c;
      c.sName = q.value(3).toString();
      setDeclaredType(c, q.value(4).toString());
      c.bNotNull = q.value(5).toBool();
      if (! q.value(6).isNull()) { c.sDefault = q.value(6).toString(); }
      t.lstColumns.append(c);
   }
   if (! readPostgresqlKeys(q, sSchemas, catalog, sError)) { return false; }

   if (! exec(q, QString(k_sIndexes).arg(sSchemas), sError)) { return false; }
   while (q.next())
   {
      const db_table * pTable = catalog.find(q.value(0).toString(), q.value(1).toString());
      if (! pTable) { continue; }
      db_table & t = catalog.table(q.value(0).toString(), q.value(1).toString());
      const QString sIndex = q.value(2).toString();
      t.addIndexColumn(sIndex, q.value(3).toBool(), q.value(4).toString());
   }
   return true;
}

bool catalog_reader::readPostgresqlKeys(QSqlQuery & q, const QString & sSchemas, db_catalog & catalog, QString & sError)
{
   if (! exec(q, QString(k_sConstraints).arg(sSchemas), sError)) { return false; }
   QString sLast;
   while (q.next())
   {
      if (! catalog.find(q.value(0).toString(), q.value(1).toString())) { continue; }
      db_table & t = catalog.table(q.value(0).toString(), q.value(1).toString());
      const QString sName = q.value(2).toString();
      const QString sKind = q.value(3).toString();
      const QString sColumn = q.value(4).toString();
      const QString sKey = catalog.keyOf(t.sSchema, t.sName) + "/" + sName;
      const bool bNew = (sKey != sLast);
      sLast = sKey;
      if (sKind == "p") { t.lstPrimaryKey.append(sColumn); }
      else if (sKind == "u")
      {
         if (bNew) { t.lstIndexes.append(db_index { sName, {}, true }); }
         t.lstIndexes.last().lstColumns.append(sColumn);
      }
      else
      {
         if (bNew) { t.lstForeignKeys.append(db_foreign_key { {}, q.value(5).toString(), q.value(6).toString(), {} }); }
         t.lstForeignKeys.last().lstColumns.append(sColumn);
         t.lstForeignKeys.last().lstTargetColumns.append(q.value(7).toString());
      }
   }
   return true;
}

} // namespace db_import
