// The catalog of a DDL script of many tables read a piece at a time: the same catalog as read
// whole, with SQLite never holding more than a piece of the schema in memory.

#include <gtest/gtest.h>

#include <QSqlQuery>
#include <QStringList>

#include "db_import/ddl_loader.h"

namespace {

using db_import::db_catalog;
using db_import::ddl_loader;

// Everything the import takes from a catalog, one line each.
QStringList described(const db_catalog & catalog)
{
   QStringList lst;
   for (const db_import::db_table & t : catalog.lstTables)
   {
      lst.append(QString("%1 %2.%3 key(%4)").arg(t.bView ? "view" : "table", t.sSchema, t.sName, t.lstPrimaryKey.join(',')));
      for (const db_import::db_column & c : t.lstColumns)
      {
         lst.append(QString("  column %1 %2 [%3] notnull=%4 default=%5 generator=%6")
                       .arg(c.sName, c.sType, c.sDeclared).arg(c.bNotNull).arg(c.sDefault, c.sGenerator));
      }
      for (const db_import::db_foreign_key & f : t.lstForeignKeys)
      { lst.append(QString("  fk (%1) -> %2.%3 (%4)").arg(f.lstColumns.join(','), f.sTargetSchema, f.sTargetTable, f.lstTargetColumns.join(','))); }
      for (const db_import::db_index & i : t.lstIndexes) { lst.append(QString("  index %1 unique=%2 (%3)").arg(i.sName).arg(i.bUnique).arg(i.lstColumns.join(','))); }
   }
   for (const QString & s : catalog.lstWarnings) { lst.append("warning " + s); }
   lst.append(QString("filtered %1").arg(catalog.iFiltered));
   return lst;
}

struct read_result
{
   bool bOk = false;
   QString sError;
   db_catalog catalog;
   qsizetype iPieces = 0;
   qsizetype iMostRows = 0;   // schema rows in SQLite after a piece, at most
};

read_result readScript(const QString & sScript, bool bInPieces, const db_import::import_options & options = {})
{
   read_result r;
   ddl_loader loader;
   loader.setReadInPieces(bInPieces);
   if (! loader.loadText(sScript, "pieces.sql", options.bStrict, r.sError)) { return r; }
   auto fnPiece = [&r, &loader](qsizetype, qsizetype)
   {
      ++r.iPieces;
      QSqlQuery q(loader.database());
      if (q.exec("SELECT count(*) FROM sqlite_schema") && q.next()) { r.iMostRows = qMax(r.iMostRows, qsizetype(q.value(0).toLongLong())); }
   };
   r.bOk = loader.readCatalog(options, r.catalog, r.sError, fnPiece);
   return r;
}

// Tables t0 to t<n - 1>, each pointing to the one before, every third with an index.
QString tables(int n)
{
   QString s;
   for (int i = 0; i < n; ++i)
   {
      s += QString("CREATE TABLE t%1 (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL DEFAULT '', ref INTEGER REFERENCES t%2 (id));\n")
              .arg(i).arg(qMax(0, i - 1));
      if ((i % 3) == 0) { s += QString("CREATE UNIQUE INDEX t%1_name ON t%1 (name, ref);\n").arg(i); }
   }
   return s;
}

const int k_iTables = 12 * int(ddl_loader::k_iPieceObjects);

// Views whose tables lie in other pieces, a view of a view of those, quoted and mixed-case
// names, a view over a table that is gone, a trigger and a key over two columns.
QString viewsFarFromTheirTables()
{
   return "CREATE TABLE \"Odd Name\" (\"Key\" INTEGER, part TEXT, PRIMARY KEY (\"Key\", part));\n"
          "CREATE TRIGGER t9_log AFTER INSERT ON t9 BEGIN INSERT INTO t8 (name) VALUES (new.name); END;\n"
          "CREATE VIEW a_far AS SELECT a.name, b.name AS other FROM T700 a JOIN main.\"t500\" b ON b.ref = a.id;\n"
          "CREATE VIEW aa_top AS SELECT f.name, o.part FROM zz_mid f, [Odd Name] o;\n"
          "CREATE VIEW zz_mid AS SELECT name FROM `a_far` UNION ALL SELECT name FROM t3;\n"
          "CREATE VIEW b_broken AS SELECT * FROM t5 JOIN gone ON gone.id = t5.id;\n";
}

TEST(DdlReadInPieces, GivesTheCatalogReadWhole)
{
   const QString sScript = tables(k_iTables) + viewsFarFromTheirTables();
   const read_result whole = readScript(sScript, false);
   ASSERT_TRUE(whole.bOk) << whole.sError.toStdString();
   const read_result pieces = readScript(sScript, true);
   ASSERT_TRUE(pieces.bOk) << pieces.sError.toStdString();
   EXPECT_EQ(described(pieces.catalog), described(whole.catalog));
   EXPECT_EQ(pieces.catalog.lstTables.size(), k_iTables + 4);

   // The views read through tables of other pieces have their columns.
   for (const char * szView : { "a_far", "zz_mid", "aa_top" })
   {
      const db_import::db_table * pView = pieces.catalog.find("main", szView);
      ASSERT_TRUE(pView) << szView;
      EXPECT_TRUE(pView->bView);
      EXPECT_FALSE(pView->lstColumns.isEmpty()) << szView;
   }
   EXPECT_EQ(pieces.catalog.find("main", "aa_top")->lstColumns.size(), 2);
   EXPECT_EQ(pieces.catalog.lstWarnings.filter("b_broken").size(), 1) << pieces.catalog.lstWarnings.join('\n').toStdString();
   EXPECT_EQ(pieces.catalog.find("main", "Odd Name")->lstPrimaryKey, (QStringList { "Key", "part" }));
   EXPECT_EQ(pieces.catalog.find("main", "t300")->lstColumns.first().sGenerator, "autoincrement");
}

TEST(DdlReadInPieces, FiltersAndStrictnessAsReadWhole)
{
   const QString sScript = tables(k_iTables) + viewsFarFromTheirTables();
   db_import::import_options options;
   options.lstExclude = QStringList { "t1*", "a_far" };
   const read_result whole = readScript(sScript, false, options);
   const read_result pieces = readScript(sScript, true, options);
   ASSERT_TRUE(whole.bOk && pieces.bOk) << whole.sError.toStdString() << pieces.sError.toStdString();
   EXPECT_EQ(described(pieces.catalog), described(whole.catalog));
   EXPECT_GT(pieces.catalog.iFiltered, 100);

   options = db_import::import_options();
   options.bStrict = true;
   const read_result strict = readScript(tables(k_iTables) + "CREATE VIEW b_broken AS SELECT * FROM t5 JOIN gone ON gone.id = t5.id;\n", true, options);
   EXPECT_FALSE(strict.bOk);
   EXPECT_TRUE(strict.sError.contains("b_broken") && strict.sError.contains("gone")) << strict.sError.toStdString();
}

// What SQLite holds while the catalog is read stays one piece (its tables, their indexes, the
// tables its views name), not the whole schema, however many tables the script made.
TEST(DdlReadInPieces, SqliteHoldsOnePieceAtATime)
{
   const QString sScript = tables(k_iTables) + viewsFarFromTheirTables();
   const read_result r = readScript(sScript, true);
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   const qsizetype iObjects = k_iTables + 5;
   EXPECT_EQ(r.iPieces, (iObjects + ddl_loader::k_iPieceObjects - 1) / ddl_loader::k_iPieceObjects);
   EXPECT_GT(r.iMostRows, 0);
   EXPECT_LE(r.iMostRows, 2 * ddl_loader::k_iPieceObjects) << r.iMostRows << " schema rows of " << (k_iTables + k_iTables / 3 + 6);
}

} // namespace
