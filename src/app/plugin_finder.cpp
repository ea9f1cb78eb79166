#include "plugin_finder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

#include "gui/plugin/export_interface.h"
#include "tavrel_paths.h"

namespace app {

QString plugin_finder::pluginDirectory()
{
   QString dir = qEnvironmentVariable("TAVREL_PLUGIN_DIR");
   if (! dir.isEmpty()) { return QDir(dir).absolutePath(); }
   const QDir appDir(QCoreApplication::applicationDirPath());
   const QString buildTree = appDir.absoluteFilePath("plugins");
   if (QFileInfo(buildTree).isDir()) { return buildTree; }
   return QDir::cleanPath(appDir.absoluteFilePath(TAVREL_REL_PLUGIN_DIR));
}

QStringList plugin_finder::pluginDirectories()
{
   QStringList lst;
   const QStringList extra = qEnvironmentVariable("TAVREL_PLUGIN_PATH").split(QDir::listSeparator(), Qt::SkipEmptyParts);
   for (const QString & d : extra)
   {
      const QString abs = QDir::cleanPath(QDir(d).absolutePath());
      if (QFileInfo(abs).isDir() && ! lst.contains(abs)) { lst.append(abs); }
   }
   // Always listed, so that a message about a missing plug-in names where it was looked for.
   const QString own = pluginDirectory();
   if (! lst.contains(own)) { lst.append(own); }
   return lst;
}

QList<plugin_info> plugin_finder::findPlugins()
{
   QList<plugin_info> lst;
   QStringList names;
   for (const QString & dir : pluginDirectories())
   {
      for (const plugin_info & info : findPlugins(dir))
      {
         const QString name = (info.exportPlugin ? info.exportPlugin->getName() : info.file);
         if (names.contains(name)) { continue; }
         names.append(name);
         lst.append(info);
      }
   }
   return lst;
}

QList<plugin_info> plugin_finder::findPlugins(const QString & dir)
{
   QList<plugin_info> lst;
   QDir d(dir);
   const QStringList files = d.entryList(QDir::Files, QDir::Name);
   for (const QString & file : files)
   {
      QString path = d.absoluteFilePath(file);
      if (! QLibrary::isLibrary(path)) { continue; }
      QPluginLoader loader(path);
      plugin_info info;
      info.file = path;
      QJsonObject meta = loader.metaData();
      if (meta.isEmpty()) { continue; }
      info.iid = meta.value("IID").toString();
      info.className = meta.value("className").toString();
      const QJsonArray keys = meta.value("MetaData").toObject().value("Keys").toArray();
      for (const auto & k : keys) { info.keys.append(k.toString()); }
      info.instance = loader.instance();
      if (! info.instance) { info.error = loader.errorString(); }
      else { info.exportPlugin = qobject_cast<plugin::export_interface *>(info.instance.data()); }
      if (info.instance && ! info.exportPlugin) { info.error = "not a Tavrel export plug-in"; }
      lst.append(info);
   }
   return lst;
}

} // namespace app
