#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace {

// `tavrel plugins` with the host's own plug-in folder replaced by an empty one, and the given
// TAVREL_PLUGIN_PATH.
QString listPlugins(const QString & ownDir, const QString & extraPath, int & iCode)
{
   test_support::cli_options options;
   options.env.insert("TAVREL_PLUGIN_DIR", ownDir);
   if (extraPath.isEmpty()) { options.unset.append("TAVREL_PLUGIN_PATH"); }
   else { options.env.insert("TAVREL_PLUGIN_PATH", extraPath); }
   const test_support::cli_result r = test_support::runTavrel({ "plugins" }, options);
   iCode = r.code;
   return r.out + r.err;
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
