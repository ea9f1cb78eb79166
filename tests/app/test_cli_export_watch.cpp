#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <signal.h>

#include "test_support.h"

namespace {

// A running "tavrel export --watch" whose output the test reads as it comes.
struct watch_run
{
   QProcess proc;
   QString out;
   QString err;

   // Reads until the standard output holds the text count times; false when the bound is over
   // (a guard against a hang, not a measure).
   bool waitFor(const QString & text, int count)
   {
      for (int i = 0; (i < 600) && (out.count(text) < count); ++i)
      {
         proc.waitForReadyRead(200);
         out += QString::fromUtf8(proc.readAllStandardOutput());
         err += QString::fromUtf8(proc.readAllStandardError());
         if (proc.state() == QProcess::NotRunning) { break; }
      }
      return (out.count(text) >= count);
   }
};

// Saves as editors do that write a new file and rename it over the old one.
void saveByRename(const QString & path, const QByteArray & data)
{
   const QString tmp = path + ".new";
   ASSERT_TRUE(test_support::writeAll(tmp, data));
   QFile::remove(path);
   ASSERT_TRUE(QFile::rename(tmp, path));
}

void startWatch(watch_run & w, const QStringList & args)
{
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.insert("QT_QPA_PLATFORM", "offscreen");
   env.insert("XDG_CONFIG_HOME", QDir::tempPath() + "/tavrel-test-config");
   w.proc.setProcessEnvironment(env);
   w.proc.start(test_support::binaryDir() + "/bin/tavrel", args);
}

void stopWatch(watch_run & w)
{
   ::kill(static_cast<pid_t>(w.proc.processId()), SIGINT);
   ASSERT_TRUE(w.proc.waitForFinished(60000));
   w.out += QString::fromUtf8(w.proc.readAllStandardOutput());
   EXPECT_EQ(w.proc.exitStatus(), QProcess::NormalExit);
   EXPECT_EQ(w.proc.exitCode(), 0);
   EXPECT_TRUE(w.out.endsWith("Watch ended\n")) << w.out.toStdString();
}

} // namespace

TEST(CliExportWatch, ExportsAgainAfterAModelEditAndSurvivesABrokenModel)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("shop.json");
   const QByteArray original = test_support::readAll(test_support::examplePath("shop.json"));
   ASSERT_TRUE(test_support::writeAll(model, original));
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("out"));

   watch_run w;
   startWatch(w, { "export", model, "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=out", "--watch" });
   ASSERT_TRUE(w.waitFor(" files: ", 1)) << w.out.toStdString() << w.err.toStdString();
   ASSERT_TRUE(w.waitFor("Watching ", 1));

   QByteArray edited = original;
   edited.replace("\"description\": \"An article for sale\"", "\"description\": \"Sold by the piece\"");
   ASSERT_NE(edited, original);
   saveByRename(model, edited);
   ASSERT_TRUE(w.waitFor("Watching ", 2)) << w.out.toStdString() << w.err.toStdString();
   EXPECT_TRUE(w.out.contains(" files: 2 written, ")) << w.out.toStdString();
   EXPECT_TRUE(test_support::readAll(tmp.filePath("out/include/shop_Product.gen.h")).contains("Sold by the piece"));

   // A model that does not import prints the error and the watch goes on.
   saveByRename(model, "{ \"name\": ");
   ASSERT_TRUE(w.waitFor("Watching ", 3)) << w.out.toStdString() << w.err.toStdString();
   EXPECT_TRUE(w.err.contains("tavrel: ")) << w.err.toStdString();
   saveByRename(model, original);
   ASSERT_TRUE(w.waitFor("Watching ", 4)) << w.out.toStdString() << w.err.toStdString();
   EXPECT_EQ(w.out.count(" files: "), 3) << w.out.toStdString();
   EXPECT_FALSE(test_support::readAll(tmp.filePath("out/include/shop_Product.gen.h")).contains("Sold by the piece"));

   // Ctrl+C ends it cleanly.
   stopWatch(w);
}

TEST(CliExportWatch, FollowsTheUserScriptOfTheStoredSettings)
{
   QTemporaryDir tmp;
   const QString project = tmp.filePath("shop.tavrel");
   const QString script = tmp.filePath("user_script.js");
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("out"));
   ASSERT_EQ(test_support::runTavrel({ "import", test_support::examplePath("shop.json"), project }).code, 0);
   ASSERT_TRUE(test_support::execOnProject(project, "INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) "
                                                    "VALUES ('7C3E9A52-4B1D-4F86-9E27-5D0A8C61B3F4', 'CUSTOM_JAVASCRIPT', ?, 10)", QString("user_script.js")));
   const QByteArray original = test_support::readAll(test_support::examplePath("user_script.js"));
   ASSERT_TRUE(test_support::writeAll(script, original));

   watch_run w;
   startWatch(w, { "export", project, "--lumor-path", tmp.filePath("lumor"), "--TavrelCppExport_path=out", "--watch" });
   ASSERT_TRUE(w.waitFor("Watching ", 1)) << w.out.toStdString() << w.err.toStdString();
   // The project file and the script it names, though no command-line parameter names it.
   EXPECT_TRUE(w.out.contains("Watching 2 file(s)")) << w.out.toStdString();

   saveByRename(script, original + "\n// edited\n");
   ASSERT_TRUE(w.waitFor("Watching ", 2)) << w.out.toStdString() << w.err.toStdString();
   EXPECT_EQ(w.out.count(" files: "), 2) << w.out.toStdString();
   stopWatch(w);
}
