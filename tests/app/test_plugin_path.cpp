#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

// `tavrel plugins` with the host's own plug-in folder replaced by an empty one, and the given
// TAVREL_PLUGIN_PATH.
QString listPlugins(const QString & ownDir, const QString & extraPath, int & iCode)
{
   QProcess proc;
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.insert("QT_QPA_PLATFORM", "offscreen");
   env.insert("TAVREL_PLUGIN_DIR", ownDir);
   if (extraPath.isEmpty()) { env.remove("TAVREL_PLUGIN_PATH"); }
   else { env.insert("TAVREL_PLUGIN_PATH", extraPath); }
   proc.setProcessEnvironment(env);
   proc.start(test_support::binaryDir() + "/bin/tavrel", { "plugins" });
   if (! proc.waitForFinished(120000)) { proc.kill(); proc.waitForFinished(); }
   iCode = proc.exitCode();
   return QString::fromUtf8(proc.readAllStandardOutput() + proc.readAllStandardError());
}

} // namespace

TEST(PluginPath, FoldersOfTheVariableAreSearchedToo)
{
   QTemporaryDir empty;
   ASSERT_TRUE(empty.isValid());
   int iCode = -1;
   QString out = listPlugins(empty.path(), QString(), iCode);
   EXPECT_EQ(iCode, 1);
   EXPECT_TRUE(out.contains("no plug-in found")) << out.toStdString();

   const QString built = test_support::binaryDir() + "/bin/plugins";
   out = listPlugins(empty.path(), "/does/not/exist" + QString(QDir::listSeparator()) + built, iCode);
   EXPECT_EQ(iCode, 0) << out.toStdString();
   EXPECT_TRUE(out.contains("Name : TavrelCppExport")) << out.toStdString();
   EXPECT_EQ(out.count("Name : TavrelCppExport"), 1);
}
