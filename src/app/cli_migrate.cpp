#include "cli_migrate.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include "cli_diagram.h"
#include "model/project.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_export/schema/script_file.h"
#include "tools/terminal_text.h"

namespace app {

const char * cli_migrate::usageText()
{
   return "Usage: tavrel migrate OLD NEW --dialect sqlite|postgresql|mariadb [-o FILE]\n"
          "                      [--allow-destructive] [--check] [--include-obsolete]\n"
          "Writes the SQL that turns a database made for the model OLD into one for the model NEW\n"
          "(each a .tavrel or .json file). Entities and properties are matched by id, so a renamed\n"
          "one is renamed in the database. Steps that lose data (dropping a table or a column,\n"
          "narrowing a type) are refused unless --allow-destructive. --check writes nothing and\n"
          "exits 1 when the database needs a migration, 0 when it does not.\n";
}

int cli_migrate::message(const QString & text, int iExit, bool bHint)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n";
   if (bHint) { m_err << "Try 'tavrel migrate --help'.\n"; }
   m_err.flush();
   return iExit;
}

int cli_migrate::run(const QStringList & args)
{
   QCommandLineParser parser;
   parser.setApplicationDescription(usageText());
   parser.addOptions({
      { QStringList { "h", "help" }, "Show this help." },
      { "dialect", "sqlite, postgresql or mariadb.", "DIALECT" },
      { QStringList { "o", "output" }, "The file to write (default: standard output).", "FILE" },
      { "allow-destructive", "Write the steps that lose data too." },
      { "check", "Write nothing; exit 1 when a migration is needed." },
      { "include-obsolete", "Keep the columns of obsolete properties." } });
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
   for (int i = 0; i < 2; ++i)
   {
      model::project_ptr & p = (i == 0 ? pOld : pNew);
      const zy::ZyBool ok = cli_diagram::readModel(lstFiles.at(i), p);
      if (! ok || ! p) { return message(ok.getDesc().isEmpty() ? "cannot read '" + lstFiles.at(i) + "'" : ok.getDesc(), 1); }
   }
   if (! sql_export::schema_migration::shareIds(* pOld, * pNew))
   { return message("'" + lstFiles.at(0) + "' and '" + lstFiles.at(1) + "' are not versions of one model: they share no entity or property id", 1); }

   const sql_export::sql_dialect dialect(eDialect);
   sql_export::schema_options options;
   options.bIncludeObsolete = parser.isSet("include-obsolete");
   const sql_export::sql_schema from = sql_export::schema_builder::build(* pOld, dialect, options);
   const sql_export::sql_schema to = sql_export::schema_builder::build(* pNew, dialect, options);
   for (const QString & s : to.lstWarnings) { message("warning: " + s, 0); }
   const sql_export::migration_plan plan = sql_export::schema_migration::plan(from, to, dialect);
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
   if (sOut.isEmpty()) { m_out << sScript; m_out.flush(); return 0; }
   QString sReason;
   if (sql_export::script_file::write(sOut, sScript, sReason) == sql_export::script_file::outcome_refused) { return message(sReason, 1); }
   m_out << "Wrote a migration of " << plan.lstSteps.size() << " steps to '" << tools::terminal_text::escape(QFileInfo(sOut).absoluteFilePath(), false) << "'\n";
   m_out.flush();
   return 0;
}

} // namespace app
