// DDL scripts of many tables: the loader sets schema rows aside while the script runs, and the
// scratch database it leaves is the one SQLite builds without that, for every kind of statement
// that reaches back to a table set aside long before.

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

#include "db_import/ddl_loader.h"

namespace {

using db_import::ddl_loader;

struct loaded
{
   bool bOk = false;
   QString sError;
   QStringList lstWarnings;
   QStringList lstSchema;   // schema rows, columns, foreign keys and indexes, one line each
   long long iSteps = 0;
};

QStringList rows(const QSqlDatabase & db, const QString & sSql)
{
   QStringList lst;
   QSqlQuery q(db);
   if (! q.exec(sSql)) { return { "failed: " + sSql }; }
   while (q.next())
   {
      QStringList lstFields;
      for (int i = 0; i < q.record().count(); ++i) { lstFields.append(q.value(i).isNull() ? QString("NULL") : q.value(i).toString()); }
      lst.append(lstFields.join(" | "));
   }
   return lst;
}

loaded load(const QString & sScript, int iStepsPerCheck = ddl_loader::k_iStepsPerCheck)
{
   loaded r;
   ddl_loader loader;
   loader.setStepsPerCheck(iStepsPerCheck);
   r.bOk = loader.loadText(sScript, "many.sql", false, r.sError);
   r.lstWarnings = loader.getWarnings();
   r.iSteps = loader.getSteps();
   if (! r.bOk) { return r; }
   const QSqlDatabase db = loader.database();
   r.lstSchema = rows(db, "SELECT type, name, tbl_name, sql FROM sqlite_schema ORDER BY type, name");
   r.lstSchema += rows(db, "SELECT m.name, c.* FROM sqlite_schema m JOIN pragma_table_info(m.name) c WHERE m.type = 'table' ORDER BY m.name, c.cid");
   r.lstSchema += rows(db, "SELECT m.name, f.* FROM sqlite_schema m JOIN pragma_foreign_key_list(m.name) f WHERE m.type = 'table' ORDER BY m.name, f.id, f.seq");
   r.lstSchema += rows(db, "SELECT m.name, i.name, i.\"unique\", i.origin FROM sqlite_schema m JOIN pragma_index_list(m.name) i "
                           "WHERE m.type = 'table' ORDER BY m.name, i.name");
   return r;
}

// The same script run without setting rows aside: the loader never does for a script that
// names a rollback, a comment will do.
loaded loadPlain(const QString & sScript)
{
   return load(sScript + "\n-- rollback\n");
}

// Tables t<from> to t<to - 1>, each with a key to the one before and a row.
QString tables(int iFrom, int iTo)
{
   QString s;
   for (int i = iFrom; i < iTo; ++i)
   {
      s += QString("CREATE TABLE t%1 (id INTEGER PRIMARY KEY, name TEXT, ref INTEGER REFERENCES t%2 (id));\n").arg(i).arg(qMax(0, i - 1));
      s += QString("INSERT INTO t%1 (name) VALUES ('n%1');\n").arg(i);
   }
   return s;
}

// Far more objects than the loader holds before it sets their rows aside.
const int k_iMany = 4 * int(ddl_loader::k_iSetAsideObjects);

TEST(DdlSetAside, StatementsOnTablesSetAsideLongBeforeGiveTheSameSchema)
{
   QString sScript = tables(0, k_iMany);
   sScript += "DROP TABLE IF EXISTS t20;\n"
              "DROP TABLE IF EXISTS main.\"T21\";\n"
              "DROP TABLE IF EXISTS /* the name after a comment */ t22;\n"
              "INSERT INTO t2 (name) VALUES ('n2');\n"                                  // a duplicate for the unique index below
              "CREATE INDEX t1_name ON t1 (name);\n"                                     // indexes at the end, as dumps put them
              "CREATE UNIQUE INDEX t2_name ON t2 (name);\n"                              // fails: the rows are still there
              "CREATE TABLE t3 (id INTEGER PRIMARY KEY);\n"                              // fails: it exists
              "CREATE TABLE IF NOT EXISTS t4 (other TEXT);\n"                            // does nothing
              "CREATE INDEX t5 ON t0 (name);\n"                                          // fails: a table has that name
              "DROP TABLE IF EXISTS t5;\n"
              "DROP TABLE t6;\n"
              "DROP INDEX t1_name;\n"
              "CREATE TABLE audit (what TEXT);\n"
              "CREATE TRIGGER t7_log AFTER INSERT ON t7 BEGIN INSERT INTO t8 (name) VALUES (new.name); END;\n"
              "INSERT INTO t7 (name) VALUES ('fires');\n"
              "INSERT INTO t9 (name) SELECT name FROM t10;\n"
              "CREATE VIEW both_names AS SELECT a.name, b.name AS other FROM t11 a JOIN t12 b ON b.ref = a.id;\n"
              "ALTER TABLE t15 ADD COLUMN extra TEXT DEFAULT 'x';\n";
   sScript += tables(k_iMany, k_iMany + 10);
   const loaded aside = load(sScript);
   ASSERT_TRUE(aside.bOk) << aside.sError.toStdString();
   const loaded plain = loadPlain(sScript);
   ASSERT_TRUE(plain.bOk) << plain.sError.toStdString();
   EXPECT_EQ(aside.lstWarnings, plain.lstWarnings);
   EXPECT_EQ(aside.lstSchema, plain.lstSchema);

   const QString sWarnings = aside.lstWarnings.join('\n');
   EXPECT_EQ(aside.lstWarnings.size(), 3) << sWarnings.toStdString();
   EXPECT_TRUE(sWarnings.contains("UNIQUE constraint failed: t2.name")) << sWarnings.toStdString();
   EXPECT_TRUE(sWarnings.contains("table t3 already exists")) << sWarnings.toStdString();
   EXPECT_TRUE(sWarnings.contains("there is already a table named t5")) << sWarnings.toStdString();
   const QString sSchema = aside.lstSchema.join('\n');
   EXPECT_TRUE(sSchema.contains("t14 | 0 | 0 | t13 | ref | id")) << sSchema.toStdString();
   EXPECT_TRUE(sSchema.contains("t15 | 3 | extra | TEXT | 0 | 'x' | 0")) << sSchema.toStdString();
   EXPECT_TRUE(sSchema.contains("trigger | t7_log | t7")) << sSchema.toStdString();
   EXPECT_TRUE(sSchema.contains("view | both_names")) << sSchema.toStdString();
   for (const char * sGone : { "table | t5 |", "table | t6 |", "table | t20 |", "table | t21 |", "table | t22 |", "index | t1_name |", "index | t2_name |" })
   { EXPECT_FALSE(sSchema.contains(sGone)) << sGone; }
}

TEST(DdlSetAside, TheRowsOfTablesSetAsideAreKept)
{
   const QString sScript = tables(0, k_iMany) + "INSERT INTO t0 (name) VALUES ('again');\n";
   ddl_loader loader;
   QString sError;
   ASSERT_TRUE(loader.loadText(sScript, "rows.sql", false, sError)) << sError.toStdString();
   EXPECT_EQ(rows(loader.database(), "SELECT count(*) FROM t0"), QStringList { "2" });
   EXPECT_EQ(rows(loader.database(), QString("SELECT name FROM t%1").arg(k_iMany - 1)), QStringList { QString("n%1").arg(k_iMany - 1) });
   EXPECT_EQ(rows(loader.database(), "SELECT count(*) FROM sqlite_schema WHERE type = 'table'"), QStringList { QString::number(k_iMany) });
}

// A script that reads the schema table sees every row in it.
TEST(DdlSetAside, AScriptReadingTheSchemaTableSeesEveryRow)
{
   const QString sScript = tables(0, k_iMany) + "CREATE TABLE names AS SELECT name FROM sqlite_schema WHERE type = 'table';\n";
   ddl_loader loader;
   QString sError;
   ASSERT_TRUE(loader.loadText(sScript, "names.sql", false, sError)) << sError.toStdString();
   EXPECT_EQ(rows(loader.database(), "SELECT count(*) FROM names"), QStringList { QString::number(k_iMany) });
}

// A rolled-back transaction takes its tables with it, however many there were.
TEST(DdlSetAside, ARollbackUndoesItsTables)
{
   const QString sScript = "CREATE TABLE kept (id INTEGER PRIMARY KEY);\nBEGIN;\n" + tables(0, k_iMany) + "ROLLBACK;\nCREATE TABLE after (id INTEGER PRIMARY KEY);\n";
   const loaded r = load(sScript);
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   EXPECT_TRUE(r.lstWarnings.isEmpty()) << r.lstWarnings.join('\n').toStdString();
   EXPECT_EQ(r.lstSchema.filter(QRegularExpression("^table \\|")), (QStringList { "table | after | after | CREATE TABLE after (id INTEGER PRIMARY KEY)",
                                                                            "table | kept | kept | CREATE TABLE kept (id INTEGER PRIMARY KEY)" }));
}

// A savepoint rolled back takes the tables made since, rows set aside or not.
TEST(DdlSetAside, ASavepointRolledBackUndoesItsTables)
{
   const int iHalf = int(ddl_loader::k_iSetAsideObjects);
   const QString sScript = tables(0, iHalf) + "SAVEPOINT a;\n" + tables(iHalf, 2 * iHalf) + "ROLLBACK TO a;\nRELEASE a;\n";
   const loaded aside = load(sScript);
   ASSERT_TRUE(aside.bOk) << aside.sError.toStdString();
   const loaded plain = loadPlain(sScript);
   EXPECT_EQ(aside.lstSchema, plain.lstSchema);
   EXPECT_EQ(aside.lstSchema.filter(QRegularExpression("^table \\|")).size(), iHalf);
}

// A virtual table's module finds its own tables by name: their rows stay where SQLite reads them.
TEST(DdlSetAside, AVirtualTableAmongManyTablesWorksAsWithoutSettingRowsAside)
{
   const QString sScript = tables(0, k_iMany) + "CREATE VIRTUAL TABLE docs USING fts5(title, body);\n" + tables(k_iMany, 2 * k_iMany) +
                           "INSERT INTO docs VALUES ('a', 'b');\nDROP TABLE t1;\n";
   const loaded aside = load(sScript);
   ASSERT_TRUE(aside.bOk) << aside.sError.toStdString();
   const loaded plain = loadPlain(sScript);
   EXPECT_EQ(aside.lstWarnings, plain.lstWarnings);
   EXPECT_EQ(aside.lstSchema, plain.lstSchema);
   EXPECT_TRUE(aside.lstSchema.join('\n').contains("table | docs_data | docs_data"));
}

// SQLite reads a large schema back after the last statement, which takes a while: the
// progress says the script ran before.
TEST(DdlSetAside, ALargeSchemaSaysTheScriptRanBeforeItIsReadBack)
{
   const qsizetype iViews = ddl_loader::k_iProgressStatements;
   QString sScript;
   for (qsizetype i = 0; i < iViews; ++i) { sScript += QString("CREATE VIEW v%1 AS SELECT %1 AS n;\n").arg(i); }
   ddl_loader loader;
   QList<std::pair<qsizetype, qsizetype>> lstCalls;
   loader.setProgress([&lstCalls](qsizetype iDone, qsizetype iAll) { lstCalls.append({ iDone, iAll }); });
   QString sError;
   ASSERT_TRUE(loader.loadText(sScript, "views.sql", false, sError)) << sError.toStdString();
   EXPECT_EQ(lstCalls, (QList<std::pair<qsizetype, qsizetype>> { { iViews, iViews } }));
   EXPECT_EQ(rows(loader.database(), "SELECT count(*) FROM sqlite_schema WHERE type = 'view'"), QStringList { QString::number(iViews) });
}

// SQLite's work counted in steps (exact, unlike time): per table it stays the same from 500 to
// 4,000 tables. Without the rows set aside each CREATE scans every schema row before it, and
// the steps per table grow with the number of tables.
TEST(DdlSetAside, SqliteWorkPerTableStaysFlat)
{
   auto script = [](int iTables)
   {
      QString s = tables(0, iTables);
      for (int i = 0; i < iTables; i += 5) { s += QString("CREATE INDEX t%1_name ON t%1 (name);\n").arg(i); }
      return s;
   };
   const loaded small = load(script(500), 1);
   const loaded large = load(script(4000), 1);
   ASSERT_TRUE(small.bOk && large.bOk) << small.sError.toStdString() << large.sError.toStdString();
   const double dSmall = double(small.iSteps) / 500.0;
   const double dLarge = double(large.iSteps) / 4000.0;
   EXPECT_GT(dSmall, 10.0);
   EXPECT_LT(dLarge / dSmall, 1.5) << dSmall << " steps per table for 500 tables, " << dLarge << " for 4,000";
}

} // namespace
