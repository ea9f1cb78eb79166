#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "db_environment.h"
#include "model/entity.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "test_support.h"

using test_support::cli_result;
using test_support::runTavrel;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

const char * const k_sDdl =
   "CREATE TABLE customer (id BIGINT PRIMARY KEY, name VARCHAR(40) NOT NULL);\n"
   "CREATE TABLE invoice (id BIGINT PRIMARY KEY, customer_id BIGINT REFERENCES customer (id), total DOUBLE);\n";

// A port on which nothing listens.
int closedPort()
{
   const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
   sockaddr_in addr {};
   addr.sin_family = AF_INET;
   addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
   socklen_t len = sizeof(addr);
   ::bind(fd, reinterpret_cast<sockaddr *>(& addr), sizeof(addr));
   ::getsockname(fd, reinterpret_cast<sockaddr *>(& addr), & len);
   ::close(fd);
   return ntohs(addr.sin_port);
}

// A project made by a first import, which every failing import afterwards must leave as it is.
class ImportDbCli : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sProject;
   QStringList m_lstState;

   QString write(const QString & sName, const QString & sText)
   {
      const QString sFile = m_dir.path() + "/" + sName;
      test_support::writeAll(sFile, sText.toUtf8());
      // Input files are no part of what a failing import must leave alone.
      m_lstState = test_support::treeState(m_dir.path());
      return sFile;
   }

   void SetUp() override
   {
      m_sProject = m_dir.path() + "/shop.tavrel";
      const cli_result r = runTavrel({ "import-db", "--ddl", write("schema.sql", k_sDdl), m_sProject });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      m_lstState = test_support::treeState(m_dir.path());
   }

   void expectFailure(const cli_result & r, const QString & sMessage)
   {
      EXPECT_EQ(r.code, 1) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains(sMessage)) << r.err.toStdString();
      EXPECT_EQ(test_support::treeState(m_dir.path()), m_lstState);
   }
};

TEST_F(ImportDbCli, UsageErrorsExitWithTwo)
{
   const QString sDdl = m_dir.path() + "/schema.sql";
   const QList<QStringList> lstCalls {
      { "import-db" }, { "import-db", "sqlite:x.db" }, { "import-db", "sqlite:x.db", "out.txt" },
      { "import-db", "--ddl", sDdl, "sqlite:x.db", "out.tavrel" }, { "import-db", "--class-names", "snake", "--ddl", sDdl, "out.tavrel" },
      { "import-db", "--name", "a-b", "--ddl", sDdl, "out.tavrel" }, { "import-db", "--bogus", "--ddl", sDdl, "out.tavrel" } };
   for (const QStringList & args : lstCalls)
   {
      const cli_result r = runTavrel(args);
      EXPECT_EQ(r.code, 2) << args.join(' ').toStdString() << "\n" << r.err.toStdString();
      EXPECT_TRUE(r.err.contains("Try 'tavrel import-db --help'")) << r.err.toStdString();
   }
   EXPECT_EQ(test_support::treeState(m_dir.path()), m_lstState);
}

TEST_F(ImportDbCli, HelpListsTheOptionsAndTheMainHelpTheCommand)
{
   cli_result r = runTavrel({ "import-db", "--help" });
   EXPECT_EQ(r.code, 0);
   EXPECT_TRUE(r.out.startsWith("Usage: tavrel import-db SOURCE OUT")) << r.out.toStdString();
   for (const char * s : { "--ddl", "--strict", "--class-names", "--property-names", "--namespace", "--decimal-as", "--nullable",
                           "--no-inverse", "--tables", "--exclude", "--prune", "--dry-run", "--name", "TAVREL_DB_PASSWORD" })
   { EXPECT_TRUE(r.out.contains(s)) << s; }
   r = runTavrel({ "--help" });
   EXPECT_TRUE(r.out.contains("import-db SOURCE OUT")) << r.out.toStdString();
}

TEST_F(ImportDbCli, TheResultIsANormalProject)
{
   const cli_result r = runTavrel({ "dump", m_sProject });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("\"name\": \"Invoice\"")) << r.out.toStdString();
   EXPECT_EQ(runTavrel({ "check", m_sProject }).code, 0);
}

TEST_F(ImportDbCli, JsonOutputIsWrittenAndRefreshed)
{
   const QString sJson = m_dir.path() + "/shop.json";
   cli_result r = runTavrel({ "import-db", "--ddl", m_dir.path() + "/schema.sql", sJson });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   r = runTavrel({ "import-db", "--ddl", write("v2.sql", QString(k_sDdl) + "CREATE TABLE note (id BIGINT PRIMARY KEY);\n"), sJson });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.startsWith("+ entity Note (table note)\n")) << r.out.toStdString();
   model::project_ptr p;
   ASSERT_TRUE(bool(storage::project_storage::readJsonFile(sJson, p)));
   EXPECT_EQ(p->getListOfAllEntities()->size(), 3);
}

TEST_F(ImportDbCli, AFailingDdlStatementIsSkippedWithItsLineOrFailsWhenStrict)
{
   const QString sBad = write("bad.sql", QString(k_sDdl) + "\nCREATE TABLE broken (id BIGINT PRIMARY KEY,, x);\nCREATE TABLE note (id BIGINT PRIMARY KEY);\n");
   expectFailure(runTavrel({ "import-db", "--strict", "--ddl", sBad, m_sProject }), "bad.sql:4:44: statement failed: near \",\": syntax error: CREATE TABLE broken");
   const cli_result r = runTavrel({ "import-db", "--ddl", sBad, m_sProject, "--dry-run" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("warning: bad.sql:4:44: statement skipped")) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("+ entity Note (table note)")) << r.out.toStdString();
}

TEST_F(ImportDbCli, AKeywordAsATableNameIsReportedUnlessQuoted)
{
   const QString sKeyword = write("keyword.sql", "CREATE TABLE order (id BIGINT PRIMARY KEY);\n");
   expectFailure(runTavrel({ "import-db", "--strict", "--ddl", sKeyword, m_sProject }), "keyword.sql:1:14: statement failed: near \"order\"");
   expectFailure(runTavrel({ "import-db", "--ddl", sKeyword, m_sProject }), "has no statement SQLite could run");
   const cli_result r = runTavrel({ "import-db", "--ddl", write("quoted.sql", "CREATE TABLE \"order\" (id BIGINT PRIMARY KEY);\n"),
                                   m_dir.path() + "/quoted.json" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("+ entity Order (table order)")) << r.out.toStdString();
}

TEST_F(ImportDbCli, UnreachableServerMissingFileAndBrokenProjectFail)
{
   expectFailure(runTavrel({ "import-db", QString("postgresql://tavrel@127.0.0.1:%1/shop").arg(closedPort()), m_sProject }), "cannot connect to postgresql://tavrel@127.0.0.1:");
   expectFailure(runTavrel({ "import-db", QString("mysql://tavrel@127.0.0.1:%1/shop").arg(closedPort()), m_sProject }), "cannot connect to mysql://tavrel@127.0.0.1:");
   expectFailure(runTavrel({ "import-db", "sqlite:" + m_dir.path() + "/missing.db", m_sProject }), "missing.db' does not exist");
   const QString sBroken = write("broken.tavrel", "not a project");
   expectFailure(runTavrel({ "import-db", "--ddl", m_dir.path() + "/schema.sql", sBroken }), "cannot refresh '" + sBroken + "'");
}

// The program copied beside a qt.conf that points at an empty plug-in folder: no SQL driver.
TEST_F(ImportDbCli, AMissingDriverNamesTheDebianPackage)
{
   const QString sBin = m_dir.path() + "/bin";
   ASSERT_TRUE(QDir().mkpath(sBin + "/plugins"));
   ASSERT_TRUE(QFile::copy(test_support::binaryDir() + "/bin/tavrel", sBin + "/tavrel"));
   test_support::writeAll(sBin + "/qt.conf", "[Paths]\nPlugins = plugins\n");
   m_lstState = test_support::treeState(m_dir.path());
   QProcess p;
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.insert("QT_QPA_PLATFORM", "offscreen");
   env.insert("QT_QPA_PLATFORM_PLUGIN_PATH", QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
   env.remove("QT_PLUGIN_PATH");
   p.setProcessEnvironment(env);
   for (const QString & sUrl : { QString("postgresql://tavrel@127.0.0.1/shop"), QString("mysql://tavrel@127.0.0.1/shop") })
   {
      p.start(sBin + "/tavrel", { "import-db", sUrl, m_sProject });
      ASSERT_TRUE(p.waitForFinished(60000));
      const QString sErr = QString::fromUtf8(p.readAllStandardError());
      cli_result r;
      r.code = p.exitCode();
      r.err = sErr;
      expectFailure(r, QString("install the Debian package ") + (sUrl.startsWith("postgresql") ? "libqt6sql6-psql" : "libqt6sql6-mysql"));
   }
}

// Against the real servers: what they refuse and what they accept.
class ImportDbServers : public ImportDbCli, public ::testing::WithParamInterface<db_support::db_server::enum_kind> { };

TEST_P(ImportDbServers, AWrongPasswordFailsAndLeavesTheProjectAlone)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   test_support::cli_options options;
   options.env.insert("TAVREL_DB_PASSWORD", "wrong");
   expectFailure(runTavrel({ "import-db", pServer->getUrl(), m_sProject }, options), "cannot connect to " + pServer->getUrl());
}

TEST_P(ImportDbServers, APasswordInTheUrlWorksWithAWarning)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase("cli_password", sError)) << sError.toStdString();
   ASSERT_TRUE(pServer->execScript("CREATE TABLE item (id BIGINT PRIMARY KEY);\n", sError, "cli_password")) << sError.toStdString();
   const QString sUrl = pServer->getUrl("cli_password").replace("tavrel@", QString("tavrel:%1@").arg(db_support::db_server::k_sPassword));
   test_support::cli_options options;
   options.unset = QStringList { "TAVREL_DB_PASSWORD", "PGPASSWORD", "MYSQL_PWD" };
   const cli_result r = runTavrel({ "import-db", sUrl, m_dir.path() + "/item.json" }, options);
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("warning: the URL holds a password")) << r.err.toStdString();
   EXPECT_FALSE(r.out.contains(db_support::db_server::k_sPassword)) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("+ entity Item (table item)")) << r.out.toStdString();
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportDbServers, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportDbServers, ::testing::Values(db_support::db_server::kind_mariadb));

} // namespace
