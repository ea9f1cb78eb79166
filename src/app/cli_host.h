#pragma once

#include <QObject>
#include <QStringList>
#include <QTextStream>

#include <memory>

#include "model/model_fwd.h"

namespace plugin { class export_interface; class export_files; }
namespace view { class main_wnd; }

namespace app {

class plugin_parameters;

// Exit codes of the command-line host.
enum enum_exit { exit_ok = 0, exit_failure = 1, exit_usage = 2 };

// The options of the export command.
struct export_flags
{
   QString plugin;
   QString lumorPath;
   bool yes = false;
   bool no = false;
   bool dryRun = false;      // also set by check
   bool check = false;
   bool diff = false;
   bool verbose = false;
   bool listOutputs = false; // a dry run that prints only the paths it would write
   bool keepStale = false;
   bool watch = false;
};

// The command-line host: import, dump, check, plugins and unattended export.
class cli_host : public QObject
{
   Q_OBJECT

   QTextStream m_out;
   QTextStream m_err;
   std::unique_ptr<view::main_wnd> m_pMainWnd;
   QStringList m_lstDismissedDialogs;
   // Files the last export read besides the model, as its plug-in reported them.
   QStringList m_lstLastInputs;

public:
   cli_host();
   virtual ~cli_host();

   int run(const QStringList & args);
   // Whether the command line runs a plug-in (export, plugins, check) or can fail before one
   // loads: those need a GUI application, import, dump, --help and --version don't.
   static bool needsWidgets(const QStringList & args);

protected:
   bool eventFilter(QObject * watched, QEvent * event) override;

private:
   int cmdImport(const QStringList & args);
   int cmdDump(const QStringList & args);
   int cmdCheck(const QStringList & args, const QStringList & allArgs);
   int cmdPlugins();
   int cmdExport(const QStringList & positional, const QStringList & allArgs, const export_flags & flags);
   // Exports, then again each time the model, the user script or a template changes, until
   // Ctrl+C.
   int cmdWatch(const QStringList & positional, const QStringList & allArgs, const export_flags & flags);
   // The command-line parameters of every export plug-in found.
   static QList<plugin_parameters> allPluginParameters();
   plugin::export_interface * findExportPlugin(const QString & pluginName, QString & sError);
   // After the plug-in ran successfully: stale files, record, the lines and summary printed.
   int finishExport(plugin::export_interface * pPlugin, const plugin::export_files & files, const export_flags & flags, qint64 iStartMs);

   int usageError(const QString & text);
   int failure(const QString & text);
   bool openProject(const QString & path, model::project_ptr & project);
   // Why an export that returned success did not produce the complete tree (a declined
   // question, a dialog it needed, errors it reported, failed script calls); empty when it did.
   QString incompleteExport(plugin::export_interface * pPlugin, int iErrorMessages);
};

} // namespace app
