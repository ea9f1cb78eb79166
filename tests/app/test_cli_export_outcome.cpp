#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "cli_shop_workspace.h"
#include "test_support.h"

// Exit codes and last lines of 'tavrel export' when the export cannot give the complete tree.

namespace {

using outcome = test_support::cli_result;
using test_support::runTavrel;

class CliOutcome : public CliShopWorkspace
{
protected:
   QString script(const QString & body)
   {
      const QString path = m_tmp.filePath("hook.js");
      EXPECT_TRUE(test_support::writeAll(path, body.toUtf8()));
      return "--TavrelCppExport_custom_javacript=" + path;
   }

   static QString lastLine(const QString & text) { return text.trimmed().section('\n', -1); }
};

} // namespace

TEST_F(CliOutcome, ScriptErrorInAClassFileExitsOne)
{
   outcome r = exportWith({ script("function execute(p) { if (p.action === 'CLASS_NAME') { throw new Error('boom'); } return undefined; }\n") });
   EXPECT_EQ(r.code, 1) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("error: ")) << r.err.toStdString();
   EXPECT_TRUE(lastLine(r.err).startsWith("tavrel: export incomplete : ")) << r.err.toStdString();
}

TEST_F(CliOutcome, ScriptErrorAtTheEndOfTheExportExitsOne)
{
   outcome r = exportWith({ script("function execute(p) { if (p.action === 'PLUGIN_EXPORT_END') { throw new Error('end failed'); } return undefined; }\n") });
   EXPECT_EQ(r.code, 1) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("end failed")) << r.err.toStdString();
   EXPECT_TRUE(lastLine(r.err).contains("1 user-script call(s) failed")) << r.err.toStdString();
}

TEST_F(CliOutcome, UnknownClassStyleExitsOneAndWritesNothing)
{
   for (const char * value : { "99", "-1" })
   {
      outcome r = exportWith({ QString("--TavrelCppExport_template_type=") + value });
      EXPECT_EQ(r.code, 1) << value << r.err.toStdString();
      EXPECT_TRUE(lastLine(r.err).contains(QString("--TavrelCppExport_template_type=") + value + " is none of the values it accepts (0=no_inheritance"))
         << r.err.toStdString();
      EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("out/include"))) << value;
   }
}

TEST_F(CliOutcome, CustomStyleWithUnusableTemplateFilesExitsOne)
{
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("good.cpp"), "// @@CLASS_NAME@@\n"));
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("empty.h"), QByteArray()));
   ASSERT_TRUE(QDir().mkpath(m_tmp.filePath("dir.h")));
   const struct { const char * file; const char * reason; } cases[] = {
      { "missing.h", "No such file or directory" }, { "empty.h", "the file is empty" }, { "dir.h", "Is a directory" } };
   for (const auto & c : cases)
   {
      outcome r = exportWith({ "--TavrelCppExport_template_type=4", "--TavrelCppExport_template_header=" + m_tmp.filePath(c.file),
                               "--TavrelCppExport_template_source=" + m_tmp.filePath("good.cpp") });
      EXPECT_EQ(r.code, 1) << c.file << r.err.toStdString();
      EXPECT_TRUE(lastLine(r.err).contains("'" + m_tmp.filePath(c.file) + "' cannot be used : " + c.reason)) << r.err.toStdString();
      EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("out/include"))) << c.file;
   }
}

TEST_F(CliOutcome, UnknownParametersAndBadValuesAreUsageErrors)
{
   outcome r = exportWith({ "--TavrelCppExport_bogus=1" });
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("unknown plug-in parameter '--TavrelCppExport_bogus' (accepted : --TavrelCppExport_path, --TavrelCppExport_template_type"))
      << r.err.toStdString();

   r = exportWith({ "--TavrelCppExport_generate_pimpl=yes" });
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("bad value 'yes' for --TavrelCppExport_generate_pimpl (accepted : 0 or 1)")) << r.err.toStdString();

   r = exportWith({ "--TavrelCppExport_template_type=abc" });
   EXPECT_EQ(r.code, 2);
   EXPECT_TRUE(r.err.contains("bad value 'abc' for --TavrelCppExport_template_type (accepted : 0=no_inheritance, 1=ix_persistable, "
                              "2=zy_persistable, 3=ix_persistable_and_q_object, 4=custom)")) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("out/include")));
}

TEST_F(CliOutcome, SystemReasonsFollowTheMessages)
{
   // A file where the directory must go.
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("out/include"), "x"));
   outcome r = exportWith({});
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("tavrel: Cannot create 'include' directory\nNot a directory : " + m_tmp.filePath("out/include") + "\n")) << r.err.toStdString();

   // A directory where the file must go.
   ASSERT_TRUE(QFile::remove(m_tmp.filePath("out/include")));
   ASSERT_TRUE(QDir().mkpath(m_tmp.filePath("out/include/shop_Base.gen.h")));
   r = exportWith({});
   EXPECT_EQ(r.code, 1);
   const QString header = m_tmp.filePath("out/include/shop_Base.gen.h");
   EXPECT_TRUE(r.err.contains("tavrel: An error occurred opening header file : " + header + "\nIs a directory : " + header + "\n")) << r.err.toStdString();
}

TEST_F(CliOutcome, FailedItemOnAnyThreadCountGivesTheSameRun)
{
   // A directory where a later entity's source goes: the workers have started the items after
   // it, yet the run says what one thread says, and stops there.
   test_support::cli_result lstRuns[2];
   int i = 0;
   for (const char * sThreads : { "1", "4" })
   {
      const QString sOut = QString("out%1").arg(sThreads);
      ASSERT_TRUE(QDir().mkpath(m_tmp.filePath(sOut + "/src/shop_sales_OrderItem.gen.cpp")));
      test_support::cli_options options;
      options.env.insert("TAVREL_EXPORT_THREADS", sThreads);
      lstRuns[i++] = test_support::runTavrel({ "export", m_sModel, "--lumor-path", path("lumor"), "--TavrelCppExport_path=" + sOut }, options);
   }
   for (test_support::cli_result & r : lstRuns)
   {
      EXPECT_EQ(r.code, 1) << r.err.toStdString();
      r.out.replace("out4", "out1");
      r.err.replace("out4", "out1");
   }
   const QString sSource = m_tmp.filePath("out1/src/shop_sales_OrderItem.gen.cpp");
   EXPECT_TRUE(lstRuns[1].err.contains("tavrel: An error occurred opening source file : " + sSource + "\nIs a directory : " + sSource + "\n"))
      << lstRuns[1].err.toStdString();
   // The messages of the items before it, and none after.
   EXPECT_TRUE(lstRuns[1].err.contains("Entity 'shop::sales::Order' exported")) << lstRuns[1].err.toStdString();
   EXPECT_FALSE(lstRuns[1].err.contains("Entity 'shop::sales::OrderItem' exported")) << lstRuns[1].err.toStdString();
   EXPECT_FALSE(lstRuns[1].err.contains("Entity 'shop::sales::Invoice' exported")) << lstRuns[1].err.toStdString();
   EXPECT_EQ(lstRuns[0].out, lstRuns[1].out);
   EXPECT_EQ(lstRuns[0].err, lstRuns[1].err);
}

TEST_F(CliOutcome, ExportPathThatIsAFile)
{
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("plain"), "x"));
   outcome r = runTavrel({ "export", m_sModel, "--lumor-path", m_tmp.filePath("lumor"), "--yes", "--TavrelCppExport_path=plain" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(lastLine(r.err).contains("the export path '" + m_tmp.filePath("plain") + "' is an existing file, not a directory")) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("needed its dialog")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(m_tmp.filePath("plain")), QByteArray("x"));
}

TEST_F(CliOutcome, StoredExportPathThatIsAFile)
{
   // The path comes from the project's saved settings, as the desktop host stores it.
   const QString project = m_tmp.filePath("shop.tavrel");
   ASSERT_EQ(runTavrel({ "import", m_sModel, project }).code, 0);
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("plain"), "x"));
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "stored_path");
      db.setDatabaseName(project);
      ASSERT_TRUE(db.open());
      QSqlQuery query(db);
      ASSERT_TRUE(query.prepare("INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) VALUES (?, ?, ?, ?)"));
      query.addBindValue(QString("7C3E9A52-4B1D-4F86-9E27-5D0A8C61B3F4"));
      query.addBindValue(QString("CPP_EXPORT_PATH"));
      query.addBindValue(m_tmp.filePath("plain"));
      query.addBindValue(static_cast<int>(QMetaType::QString));
      ASSERT_TRUE(query.exec()) << query.lastError().text().toStdString();
      db.close();
   }
   QSqlDatabase::removeDatabase("stored_path");
   outcome r = runTavrel({ "export", project, "--lumor-path", m_tmp.filePath("lumor"), "--yes" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(lastLine(r.err).contains("the export path '" + m_tmp.filePath("plain") + "' is an existing file, not a directory")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(m_tmp.filePath("plain")), QByteArray("x"));
}

TEST_F(CliOutcome, DeclinedQuestionsSaySo)
{
   outcome r = runTavrel({ "export", m_sModel, "--lumor-path", m_tmp.filePath("lumor"), "--no", "--TavrelCppExport_path=missing" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(lastLine(r.err).startsWith("tavrel: export cancelled : the question 'Export directory '" + m_tmp.filePath("missing") +
                                          "' doesn't exist.' was answered No")) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("needed its dialog")) << r.err.toStdString();

   // Schema errors answered No: nothing is written and the command fails.
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("odd.json"),
      R"({"name": "odd", "entities": [{"name": "A", "namespace": "a::::b", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})"));
   r = runTavrel({ "export", m_tmp.filePath("odd.json"), "--lumor-path", m_tmp.filePath("lumor"), "--no", "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 1) << r.err.toStdString();
   EXPECT_TRUE(lastLine(r.err).startsWith("tavrel: export cancelled : the question 'Some errors have been detected in current project :' was answered No"))
      << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("out/include")));
}

TEST_F(CliOutcome, ControlCharactersAreShownEscaped)
{
   outcome r = exportWith({ script("function execute(p) { if (p.action === 'PLUGIN_EXPORT_START') { tavrel.log('\\u001b[2J\\rred\\u0007'); } return undefined; }\n") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("Custom javascript : \\x1b[2J\\rred\\x07")) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains(QChar(0x1b))) << r.err.toStdString();

   // A project name read from the model, printed by check.
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("esc.json"),
      "{\"name\": \"x\\u001b]0;owned\\u0007\", \"entities\": [{\"name\": \"A\", \"properties\": [{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}]}]}"));
   r = runTavrel({ "check", m_tmp.filePath("esc.json") });
   EXPECT_FALSE(r.out.contains(QChar(0x1b))) << r.out.toStdString() << r.err.toStdString();
   EXPECT_FALSE(r.err.contains(QChar(0x1b))) << r.err.toStdString();
}

TEST_F(CliOutcome, LockOfARunningExportAndAKilledOne)
{
   QProcess holder;
   holder.setProgram(test_support::binaryDir() + "/bin/test_lock_holder");
   holder.setArguments({ m_tmp.filePath("out") });
   holder.start();
   ASSERT_TRUE(holder.waitForStarted());
   QByteArray said;
   while (! said.contains("locked\n") && holder.waitForReadyRead(120000)) { said += holder.readAllStandardOutput(); }
   ASSERT_TRUE(said.contains("locked\n")) << said.constData();

   // The directory is taken: the export is refused and writes nothing.
   outcome r = exportWith({});
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("tavrel: Another export into this directory is running (process " + QString::number(holder.processId())))
      << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("out/include")));

   // Killed, the holder leaves its lock behind; the next export takes it over.
   holder.kill();
   holder.waitForFinished();
   ASSERT_TRUE(QFileInfo::exists(m_tmp.filePath("out/.tavrel_export.lock")));
   r = exportWith({});
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(QFileInfo::exists(m_tmp.filePath("out/include/shop_Base.gen.h")));
   EXPECT_FALSE(QFileInfo::exists(m_tmp.filePath("out/.tavrel_export.lock")));
}
