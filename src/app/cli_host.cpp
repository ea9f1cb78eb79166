#include "cli_host.h"
#include "cli_diagram.h"
#include "cli_import_db.h"
#include "cli_migrate.h"
#include "export_lifecycle.h"
#include "pimpl_setting.h"
#include "plugin_finder.h"
#include "plugin_parameters.h"

#include <QFile>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "gui/plugin/export_files.h"
#include "gui/plugin/export_interface.h"
#include "storage/project_storage.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "tools/terminal_text.h"
#include "gui/view/main_wnd.h"

namespace app {

namespace {

const char * const k_sCommands =
   "Commands:\n"
   "  import MODEL.json PROJECT.tavrel   Create or refresh a project file from a JSON model\n"
   "                                     (plug-in settings stored in the project are kept).\n"
   "  dump PROJECT                       Print the model of a project as JSON.\n"
   "  check PROJECT [--PluginName_generate_pimpl=0|1]\n"
   "                                     Print the schema problems (exit 1 when there are any)\n"
   "                                     and the warnings (which do not fail); the PIMPL ones\n"
   "                                     when the export would use PIMPL (stored or given).\n"
   "  import-db SOURCE OUT [options]     Create or refresh a project from a database or a DDL\n"
   "                                     script (see 'tavrel import-db --help').\n"
   "  diagram PROJECT -o FILE [--format svg|png|pdf|dot|mermaid] [--namespace NS]\n"
   "                                     Draw the model's entities and relations (Graphviz).\n"
   "  migrate OLD NEW --dialect sqlite|postgresql|mariadb [-o FILE] [--allow-destructive] [--check]\n"
   "                                     Write the SQL that moves a database from one version\n"
   "                                     of a model to the next (see 'tavrel migrate --help').\n"
   "  plugins                            List the plug-ins and their command-line parameters.\n"
   "  export PROJECT [options] [plug-in parameters]\n"
   "                                     Export the project with a plug-in, unattended.\n"
   "\n"
   "PROJECT is a .tavrel project file, or a .json model that is first imported into the\n"
   ".tavrel file of the same base name beside it.\n"
   "Plug-in parameters are written --PluginName_parameter=value (see 'tavrel plugins').\n";

// Plug-in parameters are "--<plug-in>_<name>[=value]"; they are handed to the plug-in untouched.
bool isPluginParameter(const QString & arg)
{
   if (! arg.startsWith("--")) { return false; }
   QString name = arg.mid(2).section('=', 0, 0);
   return name.contains('_');
}

QStringList withoutPluginParameters(const QStringList & args)
{
   QStringList parserArgs;
   for (const QString & a : args) { if (! isPluginParameter(a)) { parserArgs.append(a); } }
   return parserArgs;
}

// The options of the command line, added to the parser they are built with.
struct cli_options
{
   QCommandLineOption help{QStringList() << "h" << "help", "Show this help."};
   QCommandLineOption version{QStringList() << "v" << "version", "Show the version."};
   QCommandLineOption plugin{"plugin", "Export plug-in to use (default: the only one, or TavrelCppExport).", "NAME"};
   QCommandLineOption lumor{"lumor-path", "Lumor library directory (else $LUMOR_DIR, else the saved global settings).", "DIR"};
   QCommandLineOption yes{"yes", "Answer Yes to every question of the export."};
   QCommandLineOption no{"no", "Answer No to every question of the export."};
   QCommandLineOption dryRun{"dry-run", "Export without writing: list the files that would be added (A), changed (M) or removed (D)."};
   QCommandLineOption check{"check", "Like --dry-run, and exit 1 when the generated files are not up to date (for CI)."};
   QCommandLineOption diff{"diff", "With --dry-run or --check: the unified diff of each changed file."};
   QCommandLineOption verbose{"verbose", "Also list the unchanged files."};
   QCommandLineOption listOutputs{"list-outputs", "Write nothing; print the absolute path of every file the export would generate, one per line (for build systems)."};
   QCommandLineOption watch{"watch", "Export, then export again whenever the model, the user script or a template changes (Ctrl+C ends)."};
   QCommandLineOption keepStale{"keep-stale", "Keep the files the last export generated and this one no longer does."};

   explicit cli_options(QCommandLineParser & parser)
   {
      parser.setApplicationDescription("Tavrel command-line host: import, check and export entity models.\n\n" + QString(k_sCommands));
      parser.addOptions({ help, version, plugin, lumor, yes, no, dryRun, check, diff, verbose, listOutputs, keepStale, watch });
      parser.addPositionalArgument("command", "import, dump, check, diagram, migrate, plugins or export.");
      parser.addPositionalArgument("arguments", "Arguments of the command.", "[arguments...]");
   }
};

} // namespace

cli_host::cli_host() : m_out(stdout), m_err(stderr)
{
   QCoreApplication::instance()->installEventFilter(this);
}

cli_host::~cli_host()
{
   if (QCoreApplication::instance()) { QCoreApplication::instance()->removeEventFilter(this); }
   if (context::ctx_global::getMainWnd() == m_pMainWnd.get()) { context::ctx_global::setMainWnd(nullptr); }
}

// No dialog may wait for a user who is not there: every dialog a plug-in opens is dismissed
// as soon as it shows, and reported.
bool cli_host::eventFilter(QObject * watched, QEvent * event)
{
   if ((event->type() == QEvent::Show) && watched->isWidgetType())
   {
      QDialog * pDialog = qobject_cast<QDialog *>(watched);
      if (pDialog && pDialog->isModal())
      {
         QString title = pDialog->windowTitle();
         m_lstDismissedDialogs.append(title);
         m_err << "tavrel: dialog '" << tools::terminal_text::escape(title, false) << "' dismissed (unattended run)\n";
         m_err.flush();
         QTimer::singleShot(0, pDialog, & QDialog::reject);
      }
   }
   return QObject::eventFilter(watched, event);
}

int cli_host::usageError(const QString & text)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n" << "Try 'tavrel --help'.\n";
   m_err.flush();
   return exit_usage;
}

int cli_host::failure(const QString & text)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n";
   m_err.flush();
   return exit_failure;
}

bool cli_host::needsWidgets(const QStringList & args)
{
   if ((args.size() > 1) && ((args.at(1) == "diagram") || (args.at(1) == "migrate"))) { return false; }
   QCommandLineParser parser;
   const cli_options opt(parser);
   if (! parser.parse(withoutPluginParameters(args))) { return true; }
   if (parser.isSet(opt.help) || parser.isSet(opt.version)) { return false; }
   const QStringList positional = parser.positionalArguments();
   return (positional.isEmpty() || ((positional.first() != QLatin1String("import")) && (positional.first() != QLatin1String("dump"))));
}

int cli_host::run(const QStringList & args)
{
   // import-db reads options of its own.
   if ((args.size() > 1) && (args.at(1) == "import-db")) { return cli_import_db(m_out, m_err).run(args.mid(2)); }
   if ((args.size() > 1) && (args.at(1) == "diagram")) { return cli_diagram(m_out, m_err).run(args.mid(2)); }
   if ((args.size() > 1) && (args.at(1) == "migrate")) { return cli_migrate(m_out, m_err).run(args.mid(2)); }
   QCommandLineParser parser;
   const cli_options opt(parser);
   if (! parser.parse(withoutPluginParameters(args))) { return usageError(parser.errorText()); }
   if (parser.isSet(opt.help)) { m_out << parser.helpText(); m_out.flush(); return exit_ok; }
   if (parser.isSet(opt.version))
   {
      m_out << "tavrel " << context::ctx_global::getAppVersionStr() << "\n";
      m_out.flush();
      return exit_ok;
   }

   QStringList positional = parser.positionalArguments();
   if (positional.isEmpty()) { return usageError("no command given"); }
   QString command = positional.takeFirst();
   bool bExport = (command == "export");
   if (! bExport)
   {
      for (const QCommandLineOption * o : { & opt.plugin, & opt.lumor, & opt.yes, & opt.no, & opt.dryRun, & opt.check, & opt.diff, & opt.verbose, & opt.listOutputs, & opt.keepStale, & opt.watch })
      {
         if (parser.isSet(* o)) { return usageError("option --" + o->names().first() + " belongs to the export command"); }
      }
      for (const QString & a : args)
      {
         // check shows the PIMPL warnings as the export would use it.
         if ((command == "check") && pimpl_setting::isPImplParameter(a)) { continue; }
         if (isPluginParameter(a)) { return usageError("plug-in parameter '" + a + "' belongs to the export command"); }
      }
   }
   if (parser.isSet(opt.yes) && parser.isSet(opt.no)) { return usageError("--yes and --no exclude each other"); }

   if (command == "import") { return cmdImport(positional); }
   if (command == "dump") { return cmdDump(positional); }
   if (command == "check") { return cmdCheck(positional, args); }
   if (command == "plugins")
   {
      if (! positional.isEmpty()) { return usageError("plugins takes no argument"); }
      return cmdPlugins();
   }
   if (bExport)
   {
      export_flags flags;
      flags.plugin = parser.value(opt.plugin);
      flags.lumorPath = parser.value(opt.lumor);
      flags.yes = parser.isSet(opt.yes);
      flags.no = parser.isSet(opt.no);
      flags.check = parser.isSet(opt.check);
      flags.listOutputs = parser.isSet(opt.listOutputs);
      flags.dryRun = (flags.check || flags.listOutputs || parser.isSet(opt.dryRun));
      flags.diff = parser.isSet(opt.diff);
      flags.verbose = parser.isSet(opt.verbose);
      flags.keepStale = parser.isSet(opt.keepStale);
      flags.watch = parser.isSet(opt.watch);
      if (flags.diff && ! flags.dryRun) { return usageError("--diff goes with --dry-run or --check"); }
      if (flags.watch && flags.check) { return usageError("--watch and --check exclude each other"); }
      if (flags.listOutputs && (flags.check || flags.diff || flags.watch || parser.isSet(opt.dryRun)))
      { return usageError("--list-outputs goes with none of --dry-run, --check, --diff and --watch"); }
      return (flags.watch ? cmdWatch(positional, args.mid(1), flags) : cmdExport(positional, args.mid(1), flags));
   }
   return usageError("unknown command '" + command + "'");
}

bool cli_host::openProject(const QString & path, model::project_ptr & project)
{
   zy::ZyBool ok = context::ctx_project::openProject(path);
   if (! ok) { failure(ok.getDesc()); return false; }
   project = context::ctx_project::getProject();
   if (! project) { failure("cannot open project '" + path + "'"); return false; }
   return true;
}

int cli_host::cmdImport(const QStringList & args)
{
   if (args.size() != 2) { return usageError("import needs MODEL.json and PROJECT.tavrel"); }
   zy::ZyBool ok = storage::project_storage::importJson(args.at(0), args.at(1));
   if (! ok) { return failure(ok.getDesc()); }
   m_out << "Imported '" << args.at(0) << "' into '" << QDir::toNativeSeparators(QFileInfo(args.at(1)).absoluteFilePath()) << "'\n";
   m_out.flush();
   return exit_ok;
}

int cli_host::cmdDump(const QStringList & args)
{
   if (args.size() != 1) { return usageError("dump needs PROJECT"); }
   QString sPath = args.at(0);
   // A text conversion (git diff) may hand over a temporary copy without the extension: the
   // content tells what it is, and a renamed copy is opened, the given file left untouched.
   QTemporaryDir tmpDir;
   const QFileInfo info(sPath);
   const QString sSuffix = info.suffix().toLower();
   if (info.isFile() && (sSuffix != QLatin1String("tavrel")) && (sSuffix != QLatin1String("json")))
   {
      QFile file(sPath);
      if (! file.open(QIODevice::ReadOnly)) { return failure("cannot read '" + sPath + "' : " + file.errorString()); }
      const QByteArray head = file.read(64);
      const QString sKind = (head.startsWith(QByteArrayLiteral("SQLite format 3\0")) ? QStringLiteral("tavrel")
                             : (head.trimmed().startsWith('{') ? QStringLiteral("json") : QString()));
      if (sKind.isEmpty()) { return failure("cannot dump '" + sPath + "' : neither a project file nor a JSON model"); }
      const QString sCopy = tmpDir.filePath("project." + sKind);
      if (! tmpDir.isValid() || ! QFile::copy(sPath, sCopy)) { return failure("cannot copy '" + sPath + "' to a temporary folder"); }
      sPath = sCopy;
   }
   model::project_ptr project;
   if (! openProject(sPath, project)) { return exit_failure; }
   m_out.flush();
   // Straight to the output as it is made: the text of a large model is never whole in memory.
   // On a full disk the dump is not whole: say why.
   QFile out;
   if (! out.open(stdout, QIODevice::WriteOnly) || ! storage::project_storage::writeJson(* project, out) || ! out.flush())
   { return failure("cannot write the dump to standard output: " + out.errorString()); }
   return exit_ok;
}

int cli_host::cmdCheck(const QStringList & args, const QStringList & allArgs)
{
   if (args.size() != 1) { return usageError("check needs PROJECT"); }
   // Only a plug-in's PIMPL switch changes what check says; it must be one a plug-in reads.
   const QList<plugin_parameters> lstParams = allPluginParameters();
   for (const QString & a : allArgs)
   {
      if (! isPluginParameter(a)) { continue; }
      const plugin_parameters * pOwner = nullptr;
      for (const plugin_parameters & params : lstParams) { if (params.concerns(a)) { pOwner = & params; break; } }
      if (! pOwner) { return usageError("unknown plug-in parameter '" + plugin_parameters::nameOf(a) + "' (check reads only --<plug-in>_generate_pimpl=0|1)"); }
      const QString why = pOwner->usageError(a);
      if (! why.isEmpty()) { return usageError(why); }
   }
   model::project_ptr project;
   if (! openProject(args.at(0), project)) { return exit_failure; }
   const zy::ZyInvalidValueX errors = project->checkSchema();
   const bool bPImpl = pimpl_setting::isOn(plugin_finder::findPlugins(), allArgs);
   const QStringList warnings = project->checkWarnings(bPImpl);
   // One line per problem, whatever the model's names hold.
   for (const auto & e : errors) { m_out << "error: " << tools::terminal_text::escape(e.getMessage(), false) << "\n"; }
   for (const auto & w : warnings) { m_out << "warning: " << tools::terminal_text::escape(w, false) << "\n"; }
   m_out << "Project '" << tools::terminal_text::escape(project->getName(), false) << "' : " << project->getListOfAllEntities()->size() << " entities, "
         << project->getListOfAllEnums()->size() << " enumerations, " << errors.size() << " error(s), "
         << warnings.size() << " warning(s)\n";
   m_out.flush();
   return (errors.isEmpty() ? exit_ok : exit_failure);
}

int cli_host::cmdPlugins()
{
   QString dir = plugin_finder::pluginDirectories().join(QDir::listSeparator());
   QList<plugin_info> lst = plugin_finder::findPlugins();
   if (lst.isEmpty()) { return failure("no plug-in found in '" + QDir::toNativeSeparators(dir) + "'"); }
   for (const plugin_info & info : lst)
   {
      m_out << "Plug-in file : " << QDir::toNativeSeparators(info.file) << "\n";
      m_out << "  IID : " << info.iid << "\n";
      m_out << "  Class : " << info.className << "\n";
      m_out << "  Keys : " << info.keys.join(", ") << "\n";
      if (! info.exportPlugin) { m_out << "  Error : " << info.error << "\n\n"; continue; }
      plugin::export_interface * p = info.exportPlugin;
      m_out << "  Name : " << p->getName() << "\n";
      m_out << "  Version : " << p->getVersion() << "\n";
      m_out << "  Short description : " << p->getShortDesc() << "\n";
      m_out << "  Description : " << p->getDescription() << "\n";
      m_out << "  GUID : " << p->getGuid() << "\n";
      m_out << "  Command line : " << p->getCommandLineInfos() << "\n\n";
   }
   m_out.flush();
   return exit_ok;
}

QList<plugin_parameters> cli_host::allPluginParameters()
{
   QList<plugin_parameters> lst;
   for (const plugin_info & info : plugin_finder::findPlugins())
   {
      if (info.exportPlugin) { lst.append(plugin_parameters(info.exportPlugin->getName(), info.exportPlugin->getCommandLineInfos())); }
   }
   return lst;
}

plugin::export_interface * cli_host::findExportPlugin(const QString & pluginName, QString & sError)
{
   QList<plugin_info> lst = plugin_finder::findPlugins();
   plugin::export_interface * pPlugin = nullptr;
   QStringList names;
   for (const plugin_info & info : lst)
   {
      if (! info.exportPlugin) { continue; }
      names.append(info.exportPlugin->getName());
      if (pluginName.isEmpty() ? (pPlugin == nullptr) : (info.exportPlugin->getName() == pluginName)) { pPlugin = info.exportPlugin; }
   }
   if (pPlugin) { return pPlugin; }
   if (names.isEmpty()) { sError = "no export plug-in found in '" + QDir::toNativeSeparators(plugin_finder::pluginDirectories().join(QDir::listSeparator())) + "'"; }
   else { sError = "no export plug-in named '" + pluginName + "' (available : " + names.join(", ") + ")"; }
   return nullptr;
}

int cli_host::cmdExport(const QStringList & positional, const QStringList & allArgs, const export_flags & flags)
{
   if (positional.size() != 1) { return usageError("export needs exactly one PROJECT"); }
   QString sNoPlugin;
   plugin::export_interface * pPlugin = findExportPlugin(flags.plugin, sNoPlugin);
   if (! pPlugin) { return failure(sNoPlugin); }

   // The plug-in's parameters are checked against its own description before anything is opened;
   // a parameter it would not read is a mistake too, not something to pass over.
   const plugin_parameters params(pPlugin->getName(), pPlugin->getCommandLineInfos());
   for (const QString & a : allArgs)
   {
      if (! isPluginParameter(a)) { continue; }
      const QString why = (params.concerns(a) ? params.usageError(a) : params.foreignError(a, allPluginParameters()));
      if (! why.isEmpty()) { return usageError(why); }
   }

   model::project_ptr project;
   if (! openProject(positional.at(0), project)) { return exit_failure; }
   // Text that would break out of the generated code is refused whatever --yes says.
   const QString sTextProblems = model::model_text_rules::problemText(* project);
   if (! sTextProblems.isEmpty()) { return failure("export refused, the model holds text that would break out of the generated code :\n" + sTextProblems); }

   // Values of the right form that still cannot give a complete export stop it before it starts.
   for (const QString & a : allArgs)
   {
      if (! params.concerns(a)) { continue; }
      const QString why = params.exportError(a, [](const QString & dir) { return context::ctx_project::getPathFromProjectFile(dir); });
      if (! why.isEmpty()) { return failure("export not started : " + why); }
   }

   context::ctx_global::initGlobalParams(flags.lumorPath);
   tools::message_box::setUnattended(true);
   tools::message_box::setFixedAnswer(flags.yes ? QMessageBox::Yes : (flags.no ? QMessageBox::No : QMessageBox::NoButton));

   m_pMainWnd = std::make_unique<view::main_wnd>();
   m_pMainWnd->setAppArgs(allArgs);
   context::ctx_global::setMainWnd(m_pMainWnd.get());

   int iErrorMessages = 0;
   QObject::connect(pPlugin, & plugin::base_interface::onMessage, this, [this, & iErrorMessages](const QString & text, int kind, int)
   {
      const char * prefix = ((kind == 3) ? "error: " : ((kind == 2) ? "warning: " : ""));
      if (kind == 3) { ++iErrorMessages; }
      m_err << prefix << tools::terminal_text::escape(text) << "\n";
      m_err.flush();
   });

   m_lstDismissedDialogs.clear();
   tools::message_box::clearHistory();
   const qint64 iStartMs = QDateTime::currentMSecsSinceEpoch();
   plugin::export_files files;
   files.setDryRun(flags.dryRun);
   files.setKeepTexts(flags.diff);
   export_lifecycle::attachRecord(pPlugin->getName(), files);
   pPlugin->setExportFiles(& files);
   m_pMainWnd->setExecutingPlugin(true);
   zy::ZyBool result = pPlugin->exportProject(* project);
   m_pMainWnd->setExecutingPlugin(false);
   pPlugin->setExportFiles(nullptr);
   m_lstLastInputs = files.inputs();
   QObject::disconnect(pPlugin, nullptr, this, nullptr);

   if (! result) { return failure(result.getDesc().isEmpty() ? QString("export failed") : result.getDesc()); }
   const QString sIncomplete = incompleteExport(pPlugin, iErrorMessages);
   if (! sIncomplete.isEmpty()) { return failure(sIncomplete); }
   if (! result.getDesc().isEmpty()) { m_err << tools::terminal_text::escape(result.getDesc()) << "\n"; m_err.flush(); }
   return finishExport(pPlugin, files, flags, iStartMs);
}

} // namespace app
