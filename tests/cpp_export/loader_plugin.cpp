#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <gtest/gtest.h>

#include "gui/plugin/export_interface.h"
#include "test_support.h"

namespace {

QString pluginFile()
{
   QDir dir(test_support::binaryDir() + "/bin/plugins");
   const QStringList files = dir.entryList(QStringList() << "*TavrelCppExport*", QDir::Files);
   return (files.isEmpty() ? QString() : dir.absoluteFilePath(files.first()));
}

} // namespace

TEST(PluginLoader, MetadataDeclaresTheInterfaceClassAndKeys)
{
   const QString file = pluginFile();
   ASSERT_FALSE(file.isEmpty());
   QPluginLoader loader(file);
   const QJsonObject meta = loader.metaData();
   EXPECT_EQ(meta.value("IID").toString(), QString("TavrelCppExport"));
   EXPECT_EQ(meta.value("className").toString(), QString("cpp_export"));
   const QJsonArray keys = meta.value("MetaData").toObject().value("Keys").toArray();
   ASSERT_EQ(keys.size(), 1);
   EXPECT_EQ(keys.at(0).toString(), QString("TavrelCppExport"));
   // The Qt version the plug-in was built against, as the plug-in macro records it (major and
   // minor, the patch level left out).
   EXPECT_EQ(meta.value("version").toInt(), (QT_VERSION_MAJOR << 16) | (QT_VERSION_MINOR << 8));
   EXPECT_FALSE(meta.value("debug").toBool());
}

TEST(PluginLoader, InstanceIsOneGuardedExportPlugin)
{
   QPluginLoader loader(pluginFile());
   QObject * pInstance = loader.instance();
   ASSERT_NE(pInstance, nullptr) << loader.errorString().toStdString();
   auto * pPlugin = qobject_cast<plugin::export_interface *>(pInstance);
   ASSERT_NE(pPlugin, nullptr);
   EXPECT_EQ(pPlugin->getName(), QString("TavrelCppExport"));
   EXPECT_EQ(pPlugin->getVersion(), QString("1.2.3"));
   EXPECT_EQ(pPlugin->getShortDesc(), QString("Export to C++ project"));
   EXPECT_TRUE(pPlugin->hasSettings());
   EXPECT_STREQ(pInstance->metaObject()->className(), "plugin::cpp_export");

   // A second loader of the same file hands out the same instance.
   QPluginLoader other(pluginFile());
   EXPECT_EQ(other.instance(), pInstance);
}
