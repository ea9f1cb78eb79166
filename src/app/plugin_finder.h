#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

namespace plugin { class export_interface; }

namespace app {

// One plug-in library found in the host's plug-in directory.
struct plugin_info
{
   QString file;
   QString iid;
   QString className;
   QStringList keys;
   QPointer<QObject> instance;
   plugin::export_interface * exportPlugin = nullptr;
   QString error;
};

// Plug-in discovery shared by the command-line and the desktop hosts.
class plugin_finder
{
public:
   // The host's own plug-in directory: $TAVREL_PLUGIN_DIR, else "plugins" beside the program
   // (build tree), else the installed plug-in folder relative to the program.
   static QString pluginDirectory();
   // Every folder scanned: those of $TAVREL_PLUGIN_PATH (list separator ':') first, then
   // pluginDirectory(); folders of the variable that do not exist are left out, duplicates once.
   static QStringList pluginDirectories();
   // Loads every plug-in library of the directory (in file name order); a library that fails
   // to load, or is no Tavrel export plug-in, is listed with its error.
   static QList<plugin_info> findPlugins(const QString & dir);
   // The plug-ins of every folder of pluginDirectories(); a plug-in whose name was found in an
   // earlier folder is left out, so a folder of $TAVREL_PLUGIN_PATH can override the host's.
   static QList<plugin_info> findPlugins();
};

} // namespace app
