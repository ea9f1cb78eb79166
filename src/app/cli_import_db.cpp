#include "cli_import_db.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include "db_import/db_importer.h"
#include "model/entity.h"
#include "model/model_names.h"
#include "model/project.h"
#include "tools/terminal_text.h"

namespace app {

namespace {

// Options whose value is one of a few words.
bool readChoice(const QCommandLineParser & parser, const QString & sOption, const QStringList & lstWords, int & iChoice, QString & sError)
{
   if (! parser.isSet(sOption)) { return true; }
   const QString s = parser.value(sOption);
   iChoice = int(lstWords.indexOf(s));
   if (iChoice >= 0) { return true; }
   sError = QString("--%1 takes %2, not '%3'").arg(sOption, lstWords.join(" or "), s);
   return false;
}

bool readOptions(const QCommandLineParser & parser, db_import::import_options & options, QString & sError)
{
   int iClass = options.eClassNames;
   int iProperty = options.ePropertyNames;
   int iDecimal = 0;
   int iNullable = 0;
   int iKeyless = 0;
   if (! readChoice(parser, "class-names", { "pascal", "keep" }, iClass, sError)) { return false; }
   if (! readChoice(parser, "property-names", { "keep", "camel" }, iProperty, sError)) { return false; }
   if (! readChoice(parser, "decimal-as", { "double", "QString" }, iDecimal, sError)) { return false; }
   if (! readChoice(parser, "nullable", { "allow_null", "optional" }, iNullable, sError)) { return false; }
   if (! readChoice(parser, "keyless", { "choose", "none" }, iKeyless, sError)) { return false; }
   if (! readChoice(parser, "dialect", { "sqlite", "postgresql", "mariadb" }, options.iDdlDialect, sError)) { return false; }
   if (parser.isSet("dialect") && ! parser.isSet("ddl")) { sError = "--dialect is for a DDL script (--ddl FILE)"; return false; }
   options.bChooseKeys = (iKeyless == 0);
   options.eClassNames = db_import::import_options::enum_class_names(iClass);
   options.ePropertyNames = db_import::import_options::enum_property_names(iProperty);
   options.bDecimalAsString = (iDecimal == 1);
   options.bNullableOptional = (iNullable == 1);
   options.bFixedNamespace = parser.isSet("namespace");
   options.sNamespace = parser.value("namespace");
   options.bInverse = ! parser.isSet("no-inverse");
   options.lstTables = parser.values("tables");
   options.lstExclude = parser.values("exclude");
   options.bPrune = parser.isSet("prune");
   options.bStrict = parser.isSet("strict");
   return true;
}

} // namespace

const char * cli_import_db::usageText()
{
   return "Usage: tavrel import-db SOURCE OUT [options]\n"
          "       tavrel import-db --ddl SCHEMA.sql OUT [options]\n"
          "SOURCE is sqlite:FILE, postgresql://USER@HOST:PORT/DB[?schema=A,B] or mysql://USER@HOST:PORT/DB;\n"
          "the password comes from TAVREL_DB_PASSWORD, else PGPASSWORD or MYSQL_PWD. OUT is a .tavrel or\n"
          ".json file: created, or refreshed when it exists (edits, ids and plug-in settings are kept).\n";
}

int cli_import_db::usageError(const QString & text)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n" << "Try 'tavrel import-db --help'.\n";
   m_err.flush();
   return 2;
}

int cli_import_db::failure(const QString & text)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n";
   m_err.flush();
   return 1;
}

void cli_import_db::warning(const QString & text)
{
   m_err << "warning: " << tools::terminal_text::escape(text, false) << "\n";
   m_err.flush();
}

int cli_import_db::run(const QStringList & args)
{
   QCommandLineParser parser;
   parser.setApplicationDescription(usageText());
   parser.addOptions({
      { QStringList { "h", "help" }, "Show this help." },
      { "ddl", "Read the schema from a SQL script (run in an in-memory SQLite database).", "FILE" },
      { "dialect", "The DDL script's dialect: sqlite, postgresql (a plain dump) or mariadb (a dump); default: told by the "
                   "script's own marks, else sqlite.", "DIALECT" },
      { "strict", "A DDL statement that fails, a view that cannot be read or a name the model cannot hold ends the import "
                  "(default: reported and left out)." },
      { "name", "The project's name (a C++ identifier; default: made from OUT's file name).", "NAME" },
      { "class-names", "Class names: pascal (order_item -> OrderItem, default) or keep.", "RULE" },
      { "property-names", "Property names: keep (default) or camel (unit_price -> unitPrice).", "RULE" },
      { "namespace", "Every entity in this namespace (default: one per schema).", "NS" },
      { "decimal-as", "numeric/decimal columns as double (default) or QString.", "TYPE" },
      { "nullable", "Nullable columns: allow_null (default) or optional (std::optional members).", "RULE" },
      { "no-inverse", "No one-to-many relation on the target of a foreign key." },
      { "keyless", "Tables and views without a primary key: choose (a key the summary names, default) or none "
                   "(kept keyless; their C++ does not compile).", "RULE" },
      { "tables", "Only tables matching the pattern (repeatable).", "GLOB" },
      { "exclude", "Leave out tables matching the pattern (repeatable).", "GLOB" },
      { "prune", "Remove what disappeared from the database (default: mark it obsolete)." },
      { "dry-run", "Print the changes and write nothing." } });
   parser.addPositionalArgument("SOURCE", "Database URL (not with --ddl).");
   parser.addPositionalArgument("OUT", "Project file, .tavrel or .json.");
   if (! parser.parse(QStringList("tavrel") + args)) { return usageError(parser.errorText()); }
   // The parser's own first line names the program's path; the description has the usage.
   if (parser.isSet("help")) { m_out << parser.helpText().section('\n', 1); m_out.flush(); return 0; }

   const QString sDdl = parser.value("ddl");
   const QStringList lstPositional = parser.positionalArguments();
   const int iExpected = (sDdl.isEmpty() ? 2 : 1);
   if (lstPositional.size() != iExpected) { return usageError(sDdl.isEmpty() ? "import-db needs SOURCE and OUT" : "import-db --ddl FILE needs OUT only"); }
   const QString sSource = (sDdl.isEmpty() ? lstPositional.at(0) : QString());
   const QString sOut = lstPositional.last();
   const QString sSuffix = QFileInfo(sOut).suffix().toLower();
   if ((sSuffix != "tavrel") && (sSuffix != "json")) { return usageError("OUT must be a .tavrel or a .json file: '" + sOut + "'"); }
   db_import::import_options options;
   QString sError;
   if (! readOptions(parser, options, sError)) { return usageError(sError); }
   const QString sName = parser.value("name");
   if (parser.isSet("name") && ! model::model_names::isCppIdentifier(sName)) { return usageError("--name takes a C++ identifier, not '" + sName + "'"); }

   db_import::db_importer importer(options);
   importer.setProgress([this](const QString & s) { m_err << "tavrel: " << s << "...\n"; m_err.flush(); });
   db_import::db_catalog catalog;
   const bool bRead = importer.readSource(sSource, sDdl, catalog, sError);
   for (const QString & w : importer.getWarnings()) { warning(w); }
   for (const QString & s : importer.getNotes()) { m_err << "tavrel: " << tools::terminal_text::escape(s, false) << "\n"; }
   m_err.flush();
   if (! bRead) { return failure(sError); }

   model::project_ptr pProject;
   const bool bNew = ! QFileInfo::exists(sOut);
   if (! db_import::db_importer::loadProject(sOut, pProject, sError, sName)) { return failure(sError); }
   const qsizetype iWarnings = importer.getWarnings().size();
   if (! importer.importInto(catalog, pProject, sError)) { return failure(sError); }
   for (const QString & w : importer.getWarnings().mid(iWarnings)) { warning(w); }
   for (const QString & s : importer.getSummary()) { m_out << tools::terminal_text::escape(s, false) << "\n"; }
   if (bNew || ! sName.isEmpty())
   {
      m_out << "Project name: " << pProject->getName() << ((bNew && sName.isEmpty()) ? " (from the file name, in upper case as the generated CMake project needs; "
                                                                         "rename with --name NAME, also on a refresh, or the model's \"name\")" : "") << "\n";
   }

   // The dry run checks what the write would check: it fails where the run would.
   if (parser.isSet("dry-run"))
   {
      if (! db_import::db_importer::checkProject(* pProject, sError)) { return failure(sError); }
      m_out << "Dry run: " << importer.getSummary().size() << " change(s), nothing written\n";
      m_out.flush();
      return 0;
   }
   if (! db_import::db_importer::writeProject(* pProject, sOut, sError)) { return failure(sError); }
   m_out << "Imported " << pProject->getListOfAllEntities()->size() << " entities into '" << QFileInfo(sOut).absoluteFilePath() << "' ("
         << importer.getSummary().size() << " change(s))\n";
   m_out.flush();
   return 0;
}

} // namespace app
