#include "db_import/catalog_reader.h"

#include <QMap>
#include <QVariant>

namespace db_import {

namespace {

const char * const k_sColumns =
   "SELECT m.name, m.type, p.name, p.type, p.\"notnull\", p.dflt_value, p.pk "
   "FROM sqlite_schema m JOIN pragma_table_info(m.name) p "
   "WHERE m.type IN ('table', 'view') AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY m.name, p.cid";

const char * const k_sForeignKeys =
   "SELECT m.name, f.id, f.\"table\", f.\"from\", f.\"to\" "
   "FROM sqlite_schema m JOIN pragma_foreign_key_list(m.name) f "
   "WHERE m.type = 'table' AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY m.name, f.id, f.seq";

// origin "pk" is the primary key's own index: the key is read from table_info.
const char * const k_sIndexes =
   "SELECT m.name, il.name, il.\"unique\", ii.name "
   "FROM sqlite_schema m JOIN pragma_index_list(m.name) il JOIN pragma_index_info(il.name) ii "
   "WHERE m.type = 'table' AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' AND il.origin <> 'pk' ORDER BY m.name, il.name, ii.seqno";

} // namespace

bool catalog_reader::readSqlite(const QSqlDatabase & database, db_catalog & catalog, QString & sError)
{
   QSqlQuery q(database);
   if (! exec(q, k_sColumns, sError)) { return false; }
   QMap<int, QString> mapKey;
   QString sLast;
   auto flushKey = [&]()
   {
      if (! sLast.isEmpty()) { catalog.table("main", sLast).lstPrimaryKey = mapKey.values(); }
      mapKey.clear();
   };
   while (q.next())
   {
      const QString sTable = q.value(0).toString();
      if (sTable != sLast) { flushKey(); sLast = sTable; }
      db_table & t = catalog.table("main", sTable);
      t.bView = (q.value(1).toString() == "view");
      db_column c;
      c.sName = q.value(2).toString();
      setDeclaredType(c, q.value(3).toString());
      c.bNotNull = q.value(4).toBool();
      if (! q.value(5).isNull()) { c.sDefault = q.value(5).toString(); }
      if (q.value(6).toInt() > 0) { mapKey.insert(q.value(6).toInt(), c.sName); }
      t.lstColumns.append(c);
   }
   flushKey();

   if (! exec(q, k_sForeignKeys, sError)) { return false; }
   QString sLastKey;
   while (q.next())
   {
      db_table & t = catalog.table("main", q.value(0).toString());
      const QString sKey = q.value(0).toString() + "/" + q.value(1).toString();
      if (sKey != sLastKey) { t.lstForeignKeys.append(db_foreign_key { {}, "main", q.value(2).toString(), {} }); sLastKey = sKey; }
      t.lstForeignKeys.last().lstColumns.append(q.value(3).toString());
      if (! q.value(4).isNull()) { t.lstForeignKeys.last().lstTargetColumns.append(q.value(4).toString()); }
   }

   if (! exec(q, k_sIndexes, sError)) { return false; }
   while (q.next())
   {
      db_table & t = catalog.table("main", q.value(0).toString());
      const QString sIndex = q.value(1).toString();
      t.addIndexColumn(sIndex, q.value(2).toBool(), q.value(3).toString());
   }
   return true;
}

} // namespace db_import
