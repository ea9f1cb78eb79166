#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "db_environment.h"

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

class DbServer : public ::testing::TestWithParam<db_support::db_server::enum_kind> { };

TEST_P(DbServer, TakesQueriesThroughTheQtDriver)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   {
      QSqlDatabase db = pServer->connect("db_servers_query");
      ASSERT_TRUE(db.open()) << db.lastError().text().toStdString();
      QSqlQuery q(db);
      ASSERT_TRUE(q.exec("SELECT version()")) << q.lastError().text().toStdString();
      ASSERT_TRUE(q.next());
      const QString sExpected = ((GetParam() == db_support::db_server::kind_postgresql) ? "PostgreSQL" : "MariaDB");
      EXPECT_TRUE(q.value(0).toString().contains(sExpected)) << q.value(0).toString().toStdString();
      ASSERT_TRUE(q.exec("CREATE TABLE probe (id INTEGER PRIMARY KEY, label VARCHAR(20))")) << q.lastError().text().toStdString();
      ASSERT_TRUE(q.exec("INSERT INTO probe (id, label) VALUES (1, 'one'), (2, 'two')")) << q.lastError().text().toStdString();
      ASSERT_TRUE(q.exec("SELECT label FROM probe ORDER BY id DESC"));
      ASSERT_TRUE(q.next());
      EXPECT_EQ(q.value(0).toString(), "two");
      EXPECT_TRUE(q.exec("DROP TABLE probe"));
      db.close();
   }
   QSqlDatabase::removeDatabase("db_servers_query");
}

TEST_P(DbServer, RefusesAWrongPassword)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   {
      QSqlDatabase db = pServer->connect("db_servers_password");
      db.setPassword("not-the-password");
      EXPECT_FALSE(db.open());
   }
   QSqlDatabase::removeDatabase("db_servers_password");
}

TEST_P(DbServer, RecreatesADatabaseEmpty)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   QString sError;
   ASSERT_TRUE(pServer->recreateDatabase("db_servers_fresh", sError)) << sError.toStdString();
   ASSERT_TRUE(pServer->execScript("CREATE TABLE leftover (id INTEGER);\n", sError, "db_servers_fresh")) << sError.toStdString();
   ASSERT_TRUE(pServer->recreateDatabase("db_servers_fresh", sError)) << sError.toStdString();
   EXPECT_TRUE(pServer->execScript("CREATE TABLE leftover (id INTEGER);\n", sError, "db_servers_fresh")) << sError.toStdString();
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, DbServer, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, DbServer, ::testing::Values(db_support::db_server::kind_mariadb));

// A folder whose test program was killed is cleared by the next start; a live one is left alone.
TEST(DbServerLeftovers, FoldersOfDeadProgramsAreRemoved)
{
   QProcess done;
   done.start("true");
   ASSERT_TRUE(done.waitForFinished(10000));
   const qint64 iDeadPid = done.processId() ? done.processId() : 999999;
   QTemporaryDir dead(db_support::db_server::baseDir() + "/tavrel-dbtest-XXXXXX");
   QTemporaryDir alive(db_support::db_server::baseDir() + "/tavrel-dbtest-XXXXXX");
   QFile fDead(dead.path() + "/owner.pid");
   ASSERT_TRUE(fDead.open(QIODevice::WriteOnly));
   fDead.write(QByteArray::number(iDeadPid));
   fDead.close();
   QFile fAlive(alive.path() + "/owner.pid");
   ASSERT_TRUE(fAlive.open(QIODevice::WriteOnly));
   fAlive.write(QByteArray::number(QCoreApplication::applicationPid()));
   fAlive.close();

   db_support::db_server::removeLeftovers();
   EXPECT_FALSE(QDir(dead.path()).exists());
   EXPECT_TRUE(QDir(alive.path()).exists());
}

} // namespace
