#include "plugin_finder.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

#include "plugin/export_interface.h"

namespace app {

QString plugin_finder::pluginDirectory()
{
   QString dir = qEnvironmentVariable("TAVREL_PLUGIN_DIR");
   if (! dir.isEmpty()) { return QDir(dir).absolutePath(); }
   return QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("plugins");
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
