// Database import benchmark: a generated schema of N tables in SQLite and PostgreSQL, imported
// (catalog reading, mapping, writing the project), beside a plain SELECT of the catalog's rows.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QUuid>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>

#include "db_import/db_importer.h"
#include "db_import/ddl_loader.h"
#include "model/project.h"
#include "storage/project_storage.h"

#ifdef TAVREL_BENCH_DB_SERVER
#include "db_server.h"
#endif

namespace {

// N tables of 10 to 30 columns, one to three foreign keys each towards earlier tables, an index
// on every fifth, and a join table for every fiftieth. The same N always gives the same schema.
QStringList schemaStatements(int iTables)
{
   std::mt19937 random(20261123u);
   auto between = [&random](int a, int b) { return std::uniform_int_distribution<int>(a, b)(random); };
   static const char * const k_types[] = { "VARCHAR(40)", "INTEGER", "DOUBLE PRECISION", "BOOLEAN", "DATE", "TIMESTAMP", "TEXT DEFAULT 'none'", "BIGINT NOT NULL" };
   QStringList lst;
   for (int i = 0; i < iTables; ++i)
   {
      QStringList lstColumns { "id BIGINT PRIMARY KEY" };
      const int iColumns = between(10, 30);
      const int iKeys = ((i == 0) ? 0 : between(1, 3));
      for (int k = 0; k < iKeys; ++k) { lstColumns.append(QString("ref%1_id BIGINT REFERENCES t%2 (id)").arg(k).arg(between(0, i - 1))); }
      for (int c = int(lstColumns.size()); c < iColumns; ++c) { lstColumns.append(QString("c%1 %2").arg(c).arg(k_types[between(0, 7)])); }
      lst.append(QString("CREATE TABLE t%1 (%2)").arg(i).arg(lstColumns.join(", ")));
      if ((i % 5) == 0) { lst.append(QString("CREATE INDEX t%1_c%2 ON t%1 (c%2)").arg(i).arg(iColumns - 1)); }
      if ((i > 1) && ((i % 50) == 0))
      {
         lst.append(QString("CREATE TABLE j%1 (a_id BIGINT REFERENCES t%1 (id), b_id BIGINT REFERENCES t%2 (id), PRIMARY KEY (a_id, b_id))").arg(i).arg(i - 1));
      }
   }
   return lst;
}

bool execAll(QSqlDatabase & db, const QStringList & lst, QString & sError)
{
   // Batches: one transaction over thousands of tables runs out of PostgreSQL's lock table.
   QSqlQuery q(db);
   for (qsizetype i = 0; i < lst.size(); i += 500)
   {
      db.transaction();
      for (const QString & s : lst.mid(i, 500))
      {
         if (! q.exec(s)) { sError = s + ": " + q.lastError().text(); db.rollback(); return false; }
      }
      if (! db.commit()) { sError = db.lastError().text(); return false; }
   }
   return true;
}

// The catalog rows the import reads, selected plainly: every column, key and index.
QStringList plainSelects(db_import::enum_dialect eDialect)
{
   if (eDialect == db_import::dialect_sqlite)
   {
      return { "SELECT m.name, p.* FROM sqlite_schema m JOIN pragma_table_info(m.name) p WHERE m.type IN ('table', 'view')",
               "SELECT m.name, f.* FROM sqlite_schema m JOIN pragma_foreign_key_list(m.name) f WHERE m.type = 'table'",
               "SELECT m.name, il.*, ii.* FROM sqlite_schema m JOIN pragma_index_list(m.name) il JOIN pragma_index_info(il.name) ii WHERE m.type = 'table'" };
   }
   return { "SELECT c.relname, a.* FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace "
            "JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 WHERE n.nspname = 'public'",
            "SELECT * FROM pg_catalog.pg_constraint",
            "SELECT * FROM pg_catalog.pg_index" };
}

qint64 timeSelects(QSqlDatabase & db, const QStringList & lstSql, qint64 & iRows)
{
   QElapsedTimer t;
   t.start();
   iRows = 0;
   QSqlQuery q(db);
   q.setForwardOnly(true);
   for (const QString & s : lstSql)
   {
      q.exec(s);
      const int iFields = q.record().count();
      while (q.next()) { for (int f = 0; f < iFields; ++f) { q.value(f); } ++iRows; }
   }
   return t.elapsed();
}

struct figures
{
   qint64 iSelect = 0;
   qint64 iRows = 0;
   qint64 iRead = 0;
   qint64 iMap = 0;
   qint64 iWrite = 0;
   int iEntities = 0;
};

// One import of the URL into a new project file, each step timed.
bool timeImport(const QString & sUrl, const QString & sProject, figures & f, QString & sError)
{
   db_import::db_importer importer { db_import::import_options() };
   db_import::db_catalog catalog;
   QElapsedTimer t;
   t.start();
   if (! importer.readSource(sUrl, QString(), catalog, sError)) { return false; }
   f.iRead = t.restart();
   auto pProject = std::make_shared<model::project>();
   pProject->setName("bench");
   if (! importer.importInto(catalog, pProject, sError)) { return false; }
   f.iMap = t.restart();
   QFile::remove(sProject);
   const zy::ZyBool ok = storage::project_storage::saveProject(* pProject, sProject);
   f.iWrite = t.elapsed();
   f.iEntities = int(pProject->getListOfAllEntities()->size());
   if (! ok) { sError = ok.getDesc(); }
   return bool(ok);
}

qint64 median(std::vector<qint64> v)
{
   std::sort(v.begin(), v.end());
   return (v.empty() ? 0 : v.at(v.size() / 2));
}

// The median of each figure over the runs.
figures run(QSqlDatabase & db, db_import::enum_dialect eDialect, const QString & sUrl, const QString & sProject, int iRepeat, QString & sError)
{
   std::vector<qint64> select, read, map, write;
   figures f;
   for (int r = 0; r < iRepeat; ++r)
   {
      select.push_back(timeSelects(db, plainSelects(eDialect), f.iRows));
      if (! timeImport(sUrl, sProject, f, sError)) { return f; }
      read.push_back(f.iRead);
      map.push_back(f.iMap);
      write.push_back(f.iWrite);
   }
   f.iSelect = median(select);
   f.iRead = median(read);
   f.iMap = median(map);
   f.iWrite = median(write);
   return f;
}

void print(const char * sDatabase, int iTables, const figures & f)
{
   std::printf("| %s | %d | %d | %lld | %lld | %lld | %lld | %lld | %lld |\n", sDatabase, iTables, f.iEntities, (long long) f.iRows, (long long) f.iSelect,
               (long long) f.iRead, (long long) f.iMap, (long long) f.iWrite, (long long) (f.iRead + f.iMap + f.iWrite));
   std::fflush(stdout);
}

bool benchSqlite(int iTables, int iRepeat, const QString & sDir, QString & sError)
{
   const QString sFile = sDir + QString("/bench%1.db").arg(iTables);
   const QString sName = "bench_" + QUuid::createUuid().toString(QUuid::Id128);
   bool bOk = false;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sName);
      db.setDatabaseName(sFile);
      bOk = (db.open() && execAll(db, schemaStatements(iTables), sError));
      const figures f = (bOk ? run(db, db_import::dialect_sqlite, "sqlite:" + sFile, sDir + "/sqlite.tavrel", iRepeat, sError) : figures());
      bOk = (bOk && sError.isEmpty());
      if (bOk) { print("SQLite", iTables, f); }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return bOk;
}

// The splitting of a script into placed statements alone (tavrel's own pass over the text).
qint64 timeSplit(int iTables, int iRepeat)
{
   const QString sScript = schemaStatements(iTables).join(";\n") + ";\n";
   std::vector<qint64> v;
   for (int r = 0; r < iRepeat; ++r)
   {
      QElapsedTimer t;
      t.start();
      const qsizetype n = db_import::ddl_loader::split(sScript).size();
      v.push_back(t.elapsed() + ((n < 0) ? 1 : 0));
   }
   return median(v);
}

struct ddl_figures
{
   qint64 iLoad = 0;      // the script run into SQLite, ms
   qint64 iImport = 0;    // the whole import: load, catalog read and mapping, ms
   qint64 iImportCpu = 0; // its processor time (user and system), ms: less sensitive to a busy machine
   long long iSteps = 0;  // SQLite steps of the load
};

// With --without-set-aside: a comment naming a rollback, for which the loader never sets schema
// rows aside (to compare).
bool g_bWithoutSetAside = false;

QString writeScript(int iTables, const QString & sDir, QString & sError)
{
   const QString sFile = sDir + QString("/bench%1.sql").arg(iTables);
   QFile f(sFile);
   if (! f.open(QIODevice::WriteOnly)) { sError = f.errorString(); return QString(); }
   f.write(schemaStatements(iTables).join(";\n").toUtf8() + ";\n" + (g_bWithoutSetAside ? "-- rollback\n" : ""));
   return sFile;
}

// The same schema as a DDL script read by "import-db --ddl": the script's load alone, then the
// whole import (load, catalog read and mapping); the median of the runs.
bool timeDdl(int iTables, int iRepeat, const QString & sDir, ddl_figures & f, QString & sError)
{
   const QString sFile = writeScript(iTables, sDir, sError);
   if (sFile.isEmpty()) { return false; }
   std::vector<qint64> load, import, importCpu;
   for (int r = 0; r < iRepeat; ++r)
   {
      QElapsedTimer t;
      t.start();
      const std::clock_t cpu = std::clock();
      {
         db_import::ddl_loader loader;
         loader.setStepsPerCheck(100);
         // As import-db loads: the rows stay set aside for the catalog read.
         loader.setReadInPieces(true);
         if (! loader.load(sFile, false, sError)) { return false; }
         f.iSteps = loader.getSteps();
      }
      load.push_back(t.restart());
      db_import::db_importer importer { db_import::import_options() };
      db_import::db_catalog catalog;
      auto pProject = std::make_shared<model::project>();
      pProject->setName("bench");
      if (! importer.readSource(QString(), sFile, catalog, sError) || ! importer.importInto(catalog, pProject, sError)) { return false; }
      import.push_back(t.elapsed());
      importCpu.push_back(qint64(1000.0 * double(std::clock() - cpu) / CLOCKS_PER_SEC));
   }
   f.iLoad = median(load);
   f.iImport = median(import);
   f.iImportCpu = median(importCpu);
   return true;
}

// Time and SQLite steps per table at each size, and their ratio to the first size's.
int benchDdl(const QStringList & lstSizes, int iRepeat, const QString & sDir)
{
   std::printf("| tables | load ms | load us/table | ratio | import ms | import us/table | ratio | import CPU us/table | ratio | SQLite steps/table | ratio |\n");
   std::printf("|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
   double dLoad0 = 0, dImport0 = 0, dCpu0 = 0, dSteps0 = 0;
   for (const QString & s : lstSizes)
   {
      const int iTables = s.toInt();
      ddl_figures f;
      QString sError;
      if (! timeDdl(iTables, iRepeat, sDir, f, sError)) { std::fprintf(stderr, "DDL: %s\n", qPrintable(sError)); return 1; }
      const double dLoad = 1000.0 * double(f.iLoad) / iTables;
      const double dImport = 1000.0 * double(f.iImport) / iTables;
      const double dSteps = double(f.iSteps) / iTables;
      const double dCpu = 1000.0 * double(f.iImportCpu) / iTables;
      if (dSteps0 == 0) { dLoad0 = qMax(dLoad, 1.0); dImport0 = qMax(dImport, 1.0); dCpu0 = qMax(dCpu, 1.0); dSteps0 = qMax(dSteps, 1.0); }
      std::printf("| %d | %lld | %.0f | %.2f | %lld | %.0f | %.2f | %.0f | %.2f | %.0f | %.2f |\n", iTables, (long long) f.iLoad, dLoad, dLoad / dLoad0,
                  (long long) f.iImport, dImport, dImport / dImport0, dCpu, dCpu / dCpu0, dSteps, dSteps / dSteps0);
      std::fflush(stdout);
   }
   return 0;
}

#ifdef TAVREL_BENCH_DB_SERVER
bool benchPostgresql(db_support::db_server & server, int iTables, int iRepeat, const QString & sDir, QString & sError)
{
   const QString sDatabase = QString("bench%1").arg(iTables);
   if (! server.recreateDatabase(sDatabase, sError)) { return false; }
   qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
   bool bOk = false;
   {
      QSqlDatabase db = server.connect("bench_pg", sDatabase);
      bOk = (db.open() && execAll(db, schemaStatements(iTables), sError));
      QSqlQuery(db).exec("ANALYZE");
      const figures f = (bOk ? run(db, db_import::dialect_postgresql, server.getUrl(sDatabase), sDir + "/postgresql.tavrel", iRepeat, sError) : figures());
      bOk = (bOk && sError.isEmpty());
      if (bOk) { print("PostgreSQL", iTables, f); }
      db.close();
   }
   QSqlDatabase::removeDatabase("bench_pg");
   return bOk;
}
#endif

} // namespace

int main(int argc, char ** argv)
{
   QCoreApplication app(argc, argv);
   QCommandLineParser parser;
   parser.setApplicationDescription("Times import-db on generated schemas in SQLite and PostgreSQL (medians).");
   parser.addHelpOption();
   parser.addOptions({ { "sizes", "Table counts, comma separated (default 100,1000,5000).", "LIST", "100,1000,5000" },
                       { "repeat", "Runs per figure (default 3).", "N", "3" },
                       { "sqlite-only", "Leave PostgreSQL out." },
                       { "without-set-aside", "With --ddl: scripts the loader runs without setting schema rows aside." },
                       { "ddl", "Time DDL scripts instead (--sizes, default 1000,4000,16000,64000): time and SQLite steps per table, and their ratio to the first size's (1 when linear)." } });
   parser.process(app);
   QTemporaryDir dir;
   const int iRepeat = qMax(1, parser.value("repeat").toInt());
   if (parser.isSet("ddl"))
   {
      g_bWithoutSetAside = parser.isSet("without-set-aside");
      const QStringList lstSizes = (parser.isSet("sizes") ? parser.value("sizes") : QString("1000,4000,16000,64000")).split(',', Qt::SkipEmptyParts);
      if (benchDdl(lstSizes, iRepeat, dir.path()) != 0) { return 1; }
      const qint64 iSplitSmall = timeSplit(2000, iRepeat);
      const qint64 iSplitLarge = timeSplit(8000, iRepeat);
      std::printf("splitting alone, 2,000 tables: %lld ms; 8,000 tables: %lld ms; ratio %.1f\n", (long long) iSplitSmall, (long long) iSplitLarge,
                  double(iSplitLarge) / double(qMax<qint64>(iSplitSmall, 1)));
      return 0;
   }
   std::printf("| database | tables | entities | catalog rows | plain SELECT ms | catalog read ms | mapping ms | writing ms | import-db ms |\n");
   std::printf("|---|---:|---:|---:|---:|---:|---:|---:|---:|\n");
#ifdef TAVREL_BENCH_DB_SERVER
   std::unique_ptr<db_support::db_server> pServer;
#endif
   QString sError;
   for (const QString & s : parser.value("sizes").split(',', Qt::SkipEmptyParts))
   {
      const int iTables = s.toInt();
      if (! benchSqlite(iTables, iRepeat, dir.path(), sError)) { std::fprintf(stderr, "SQLite: %s\n", qPrintable(sError)); return 1; }
#ifdef TAVREL_BENCH_DB_SERVER
      if (parser.isSet("sqlite-only")) { continue; }
      if (! pServer)
      {
         pServer = std::make_unique<db_support::db_server>(db_support::db_server::kind_postgresql);
         if (! pServer->start(sError)) { std::fprintf(stderr, "PostgreSQL: %s\n", qPrintable(sError)); return 1; }
      }
      if (! benchPostgresql(* pServer, iTables, iRepeat, dir.path(), sError)) { std::fprintf(stderr, "PostgreSQL: %s\n", qPrintable(sError)); return 1; }
#endif
   }
   return 0;
}
