#pragma once

#include <QProcess>
#include <QSqlDatabase>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace db_support {

// A throw-away database server for the tests: its own data directory in a temporary folder, a
// free port on 127.0.0.1, its socket in that folder. The server runs as the package's system
// user (the tests run as root, which neither server accepts) and dies with the test program.
class db_server
{
public:
   enum enum_kind { kind_postgresql, kind_mariadb };

   static const char * const k_sUser;
   static const char * const k_sPassword;
   static const char * const k_sDatabase;

private:
   enum_kind m_eKind;
   std::unique_ptr<QTemporaryDir> m_pDir;
   QProcess m_process;
   int m_iPort = 0;
   QString m_sLog;

public:
   explicit db_server(enum_kind eKind);
   ~db_server();
   db_server(const db_server &) = delete;
   db_server & operator=(const db_server &) = delete;

   // Creates the data directory, starts the server, waits until it takes connections and creates
   // the test database and user. On failure the reason names what is missing or went wrong.
   bool start(QString & sError);
   void stop();

   enum_kind getKind() const { return m_eKind; }
   int getPort() const { return m_iPort; }
   QString getDriver() const { return ((m_eKind == kind_postgresql) ? QString("QPSQL") : QString("QMYSQL")); }
   // "postgresql://tavrel@127.0.0.1:PORT/tavrel_test" or the "mysql://" form.
   QString getUrl(const QString & sDatabase = QString(k_sDatabase)) const;
   // A connection to a database of the server as the test user (password set), open or not.
   QSqlDatabase connect(const QString & sConnection, const QString & sDatabase = QString(k_sDatabase)) const;
   // Runs the statements of a script (split at ";" ending a line) on a database; false with the
   // failing statement and the server's reason in sError.
   bool execScript(const QString & sScript, QString & sError, const QString & sDatabase = QString(k_sDatabase)) const;
   // A fresh, empty database of that name (dropped first when it exists).
   bool recreateDatabase(const QString & sDatabase, QString & sError) const;

   // Kills the servers and removes the folders that a test program killed before its clean-up
   // left behind.
   static void removeLeftovers();
   // Where the server folders go: /tmp when running as root, since the service user must reach
   // the folder and root's own temporary folder may be closed to it.
   static QString baseDir();

private:
   bool initDataDir(QString & sError);
   bool launch(QString & sError);
   bool waitReady(QString & sError);
   void stopProcess();
   bool createTestUser(QString & sError);
   QSqlDatabase adminConnection(const QString & sConnection) const;
   QString serviceUser() const;
   QString dataDir() const;
   QString runAsServiceUser(const QString & sProgram, const QStringList & lstArgs, int & iExit) const;
};

} // namespace db_support
