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
   // Directory scanned for plug-ins: $TAVREL_PLUGIN_DIR, else "plugins" beside the program.
   static QString pluginDirectory();
   // Loads every plug-in library of the directory (in file name order); a library that fails
   // to load, or is no Tavrel export plug-in, is listed with its error.
   static QList<plugin_info> findPlugins(const QString & dir);
};

} // namespace app
