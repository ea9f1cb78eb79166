// Times the SQL schema script of generated models (schema built and written, per database), and
// the migration between two versions of a model.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "model/project.h"
#include "model_generator.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_export/schema/schema_script.h"

namespace {

struct timing
{
   qint64 iBuild = 0;   // model to tables, in microseconds
   qint64 iWrite = 0;   // tables to text
   int iTables = 0;
   qsizetype iChars = 0;
};

timing once(const model::project & project, const sql_export::sql_dialect & dialect)
{
   timing t;
   QElapsedTimer clock;
   clock.start();
   const sql_export::sql_schema schema = sql_export::schema_builder::build(project, dialect, sql_export::schema_options());
   t.iBuild = clock.nsecsElapsed() / 1000;
   clock.restart();
   const QString sText = sql_export::schema_script::write(schema, dialect, project.getName());
   t.iWrite = clock.nsecsElapsed() / 1000;
   t.iTables = int(schema.lstTables.size());
   t.iChars = sText.size();
   return t;
}

qint64 median(std::vector<qint64> v)
{
   std::sort(v.begin(), v.end());
   return (v.empty() ? 0 : v.at(v.size() / 2));
}

// The migration of one model to its edited version per database: both schemas, the plan, the script.
void benchMigration(int iEntities, int iRepeat)
{
   bench::model_options options;
   options.entities = iEntities;
   const model::project_ptr pOld = bench::generateModel(options);
   const model::project_ptr pNew = bench::generateModel(options);
   if (! pOld || ! pNew) { return; }
   const int iEdited = bench::editModel(* pNew, 20);
   std::printf("\n| entities | database | edited properties | steps | schemas ms | plan ms | text ms | migration ms |\n");
   std::printf("|---:|---|---:|---:|---:|---:|---:|---:|\n");
   for (sql_export::enum_dialect e : { sql_export::dialect_sqlite, sql_export::dialect_postgresql, sql_export::dialect_mariadb })
   {
      const sql_export::sql_dialect dialect(e);
      std::vector<qint64> schemas, plans, texts, totals;
      qsizetype iSteps = 0;
      for (int r = 0; r < iRepeat; ++r)
      {
         QElapsedTimer clock;
         clock.start();
         const sql_export::sql_schema from = sql_export::schema_builder::build(* pOld, dialect, sql_export::schema_options());
         const sql_export::sql_schema to = sql_export::schema_builder::build(* pNew, dialect, sql_export::schema_options());
         schemas.push_back(clock.nsecsElapsed() / 1000);
         const sql_export::migration_plan plan = sql_export::schema_migration::plan(from, to, dialect);
         plans.push_back(clock.nsecsElapsed() / 1000 - schemas.back());
         const QString sText = sql_export::schema_migration::write(plan, dialect, { pOld->getName(), "old.json" }, { pNew->getName(), "new.json" });
         totals.push_back(clock.nsecsElapsed() / 1000);
         texts.push_back(totals.back() - schemas.back() - plans.back());
         iSteps = plan.lstSteps.size();
      }
      std::printf("| %d | %s | %d | %lld | %.1f | %.1f | %.1f | %.1f |\n", iEntities, qPrintable(dialect.name()), iEdited, static_cast<long long>(iSteps),
                  median(schemas) / 1000.0, median(plans) / 1000.0, median(texts) / 1000.0, median(totals) / 1000.0);
   }
}

} // namespace

int main(int argc, char ** argv)
{
   QCoreApplication app(argc, argv);
   QCommandLineParser parser;
   parser.setApplicationDescription("Times the SQL schema script of generated models (medians).");
   parser.addHelpOption();
   parser.addOptions({ { "sizes", "Entity counts, comma separated (default 1000,5000).", "LIST", "1000,5000" },
                       { "repeat", "Runs per figure (default 5).", "N", "5" },
                       { "migration", "Entity count of the migration benchmark (default 1000, 0: none).", "N", "1000" } });
   parser.process(app);
   const int iRepeat = qMax(1, parser.value("repeat").toInt());
   std::printf("| entities | database | tables | script chars | tables ms | text ms | script ms |\n");
   std::printf("|---:|---|---:|---:|---:|---:|---:|\n");
   for (const QString & s : parser.value("sizes").split(',', Qt::SkipEmptyParts))
   {
      bench::model_options options;
      options.entities = s.toInt();
      const model::project_ptr pProject = bench::generateModel(options);
      if (! pProject) { std::fprintf(stderr, "no model of %s entities\n", qPrintable(s)); return 1; }
      for (sql_export::enum_dialect e : { sql_export::dialect_sqlite, sql_export::dialect_postgresql, sql_export::dialect_mariadb })
      {
         const sql_export::sql_dialect dialect(e);
         std::vector<qint64> build, write, total;
         timing t;
         for (int r = 0; r < iRepeat; ++r)
         {
            t = once(* pProject, dialect);
            build.push_back(t.iBuild);
            write.push_back(t.iWrite);
            total.push_back(t.iBuild + t.iWrite);
         }
         std::printf("| %d | %s | %d | %lld | %.1f | %.1f | %.1f |\n", options.entities, qPrintable(dialect.name()), t.iTables,
                     static_cast<long long>(t.iChars), median(build) / 1000.0, median(write) / 1000.0, median(total) / 1000.0);
      }
   }
   if (parser.value("migration").toInt() > 0) { benchMigration(parser.value("migration").toInt(), iRepeat); }
   return 0;
}
