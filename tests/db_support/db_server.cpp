#include "db_server.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QUuid>
#include <QVersionNumber>

#include <arpa/inet.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace db_support {

const char * const db_server::k_sUser = "tavrel";
const char * const db_server::k_sPassword = "tavrel-test";
const char * const db_server::k_sDatabase = "tavrel_test";

namespace {

const char * const k_sDirPrefix = "tavrel-dbtest-";
// The test program that owns a server folder; a folder whose owner is gone is a leftover.
const char * const k_sOwnerFile = "owner.pid";

QString postgresBinDir()
{
   QDir root("/usr/lib/postgresql");
   QString sBest;
   QVersionNumber best;
   for (const QString & s : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
   {
      const QVersionNumber v = QVersionNumber::fromString(s);
      if (QFileInfo(root.filePath(s + "/bin/postgres")).isExecutable() && (v > best)) { best = v; sBest = root.filePath(s + "/bin"); }
   }
   return sBest;
}

QString mariadbProgram(const QString & sName)
{
   for (const char * dir : { "/usr/sbin/", "/usr/bin/" })
   {
      const QString s = QString(dir) + sName;
      if (QFileInfo(s).isExecutable()) { return s; }
   }
   return QString();
}

int freePort()
{
   const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
   if (fd < 0) { return 0; }
   sockaddr_in addr {};
   addr.sin_family = AF_INET;
   addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
   addr.sin_port = 0;
   socklen_t len = sizeof(addr);
   int iPort = 0;
   if ((::bind(fd, reinterpret_cast<sockaddr *>(& addr), sizeof(addr)) == 0) && (::getsockname(fd, reinterpret_cast<sockaddr *>(& addr), & len) == 0))
   { iPort = ntohs(addr.sin_port); }
   ::close(fd);
   return iPort;
}

// Runs the child as the service user (neither server starts as root) and has the kernel end it
// when the test program dies, so that a killed test leaves no server running.
void prepareChild(QProcess & process, const QString & sUser, const QString & sDir)
{
   // The caller's temporary folder may be closed to the service user.
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.insert("TMPDIR", sDir);
   process.setProcessEnvironment(env);
   uid_t uid = ::getuid();
   gid_t gid = ::getgid();
   const bool bSwitch = (uid == 0);
   if (bSwitch)
   {
      const passwd * pw = ::getpwnam(sUser.toLocal8Bit().constData());
      if (pw) { uid = pw->pw_uid; gid = pw->pw_gid; }
   }
   process.setChildProcessModifier([bSwitch, uid, gid]()
   {
      if (bSwitch && ((::setgroups(0, nullptr) != 0) || (::setgid(gid) != 0) || (::setuid(uid) != 0))) { ::_exit(126); }
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
   });
}

bool ownerAlive(const QString & sDir)
{
   QFile f(sDir + "/" + k_sOwnerFile);
   if (! f.open(QIODevice::ReadOnly)) { return false; }
   const qint64 pid = f.readAll().trimmed().toLongLong();
   return ((pid > 0) && ((::kill(pid_t(pid), 0) == 0) || (errno == EPERM)));
}

// The pid files both servers write: the first line is the server's process id.
void killServerOf(const QString & sDir)
{
   for (const char * name : { "data/postmaster.pid", "mariadbd.pid" })
   {
      QFile f(sDir + "/" + name);
      if (! f.open(QIODevice::ReadOnly)) { continue; }
      const qint64 pid = f.readLine().trimmed().toLongLong();
      if (pid > 0) { ::kill(pid_t(pid), SIGKILL); }
   }
}

} // namespace

db_server::db_server(enum_kind eKind) : m_eKind(eKind)
{
   m_process.setProcessChannelMode(QProcess::MergedChannels);
}

db_server::~db_server()
{
   stop();
}

QString db_server::serviceUser() const
{
   return ((m_eKind == kind_postgresql) ? QString("postgres") : QString("mysql"));
}

QString db_server::dataDir() const
{
   return (m_pDir ? (m_pDir->path() + "/data") : QString());
}

QString db_server::baseDir()
{
   return ((::getuid() == 0) ? QString("/tmp") : QDir::tempPath());
}

void db_server::removeLeftovers()
{
   QDir tmp(baseDir());
   for (const QString & s : tmp.entryList({ QString(k_sDirPrefix) + "*" }, QDir::Dirs | QDir::NoDotAndDotDot))
   {
      const QString sDir = tmp.filePath(s);
      if (ownerAlive(sDir)) { continue; }
      killServerOf(sDir);
      QDir(sDir).removeRecursively();
   }
}

QString db_server::runAsServiceUser(const QString & sProgram, const QStringList & lstArgs, int & iExit) const
{
   QProcess p;
   p.setProcessChannelMode(QProcess::MergedChannels);
   p.setWorkingDirectory(m_pDir->path());
   prepareChild(p, serviceUser(), m_pDir->path());
   p.start(sProgram, lstArgs);
   const bool bDone = (p.waitForStarted(10000) && p.waitForFinished(120000));
   iExit = ((bDone && (p.exitStatus() == QProcess::NormalExit)) ? p.exitCode() : -1);
   return QString::fromLocal8Bit(p.readAll());
}

bool db_server::start(QString & sError)
{
   const QString sDriver = getDriver();
   if (! QSqlDatabase::isDriverAvailable(sDriver))
   {
      sError = "Qt SQL driver " + sDriver + " missing: install the Debian package " +
               ((m_eKind == kind_postgresql) ? "libqt6sql6-psql" : "libqt6sql6-mysql");
      return false;
   }
   removeLeftovers();
   m_pDir = std::make_unique<QTemporaryDir>(baseDir() + "/" + k_sDirPrefix + "XXXXXX");
   if (! m_pDir->isValid()) { sError = "cannot create a temporary folder: " + m_pDir->errorString(); return false; }
   QFile owner(m_pDir->path() + "/" + k_sOwnerFile);
   if (! owner.open(QIODevice::WriteOnly)) { sError = "cannot write " + owner.fileName(); return false; }
   owner.write(QByteArray::number(QCoreApplication::applicationPid()));
   owner.close();
   // The service user writes its socket and pid file beside the data.
   const passwd * pw = ((::getuid() == 0) ? ::getpwnam(serviceUser().toLocal8Bit().constData()) : nullptr);
   if ((::getuid() == 0) && ! pw)
   {
      sError = "system user '" + serviceUser() + "' missing: install the Debian package " +
               ((m_eKind == kind_postgresql) ? "postgresql" : "mariadb-server");
      return false;
   }
   if (pw && (::chown(m_pDir->path().toLocal8Bit().constData(), pw->pw_uid, pw->pw_gid) != 0)) { sError = "cannot hand " + m_pDir->path() + " to " + serviceUser(); return false; }
   if (! initDataDir(sError)) { return false; }
   // Another program may take the free port before the server binds it: then a new port.
   for (int iTry = 0; iTry < 3; ++iTry)
   {
      m_iPort = freePort();
      if (m_iPort == 0) { sError = "no free local TCP port"; return false; }
      if (launch(sError) && waitReady(sError)) { return createTestUser(sError); }
      stopProcess();
   }
   return false;
}

bool db_server::initDataDir(QString & sError)
{
   int iExit = 0;
   QString sOut;
   if (m_eKind == kind_postgresql)
   {
      const QString sBin = postgresBinDir();
      if (sBin.isEmpty()) { sError = "PostgreSQL server programs (initdb, postgres) not found: install the Debian package postgresql"; return false; }
      const QString sPwFile = m_pDir->path() + "/pwfile";
      QFile pw(sPwFile);
      if (! pw.open(QIODevice::WriteOnly)) { sError = "cannot write " + sPwFile; return false; }
      pw.write(k_sPassword);
      pw.close();
      pw.setPermissions(QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
      sOut = runAsServiceUser(sBin + "/initdb", { "-D", dataDir(), "-U", k_sUser, "--pwfile=" + sPwFile, "--auth-local=trust",
                                                  "--auth-host=scram-sha-256", "-E", "UTF8", "--locale=C", "--no-sync" }, iExit);
   }
   else
   {
      const QString sInstall = mariadbProgram("mariadb-install-db");
      if (sInstall.isEmpty() || mariadbProgram("mariadbd").isEmpty()) { sError = "MariaDB server programs (mariadb-install-db, mariadbd) not found: install the Debian package mariadb-server"; return false; }
      sOut = runAsServiceUser(sInstall, { "--no-defaults", "--datadir=" + dataDir(), "--auth-root-authentication-method=normal", "--skip-test-db" }, iExit);
   }
   if (iExit != 0) { sError = "creating the data directory failed:\n" + sOut; return false; }
   return true;
}

bool db_server::launch(QString & sError)
{
   m_process.setWorkingDirectory(m_pDir->path());
   prepareChild(m_process, serviceUser(), m_pDir->path());
   const QString sPort = QString::number(m_iPort);
   if (m_eKind == kind_postgresql)
   {
      m_process.start(postgresBinDir() + "/postgres", { "-D", dataDir(), "-p", sPort, "-h", "127.0.0.1", "-k", m_pDir->path(),
                                                        "-c", "fsync=off", "-c", "full_page_writes=off", "-c", "synchronous_commit=off" });
   }
   else
   {
      m_process.start(mariadbProgram("mariadbd"), { "--no-defaults", "--datadir=" + dataDir(), "--port=" + sPort, "--bind-address=127.0.0.1",
                                                    "--socket=" + m_pDir->path() + "/mariadbd.sock", "--pid-file=" + m_pDir->path() + "/mariadbd.pid",
                                                    "--skip-log-bin", "--skip-name-resolve", "--innodb-buffer-pool-size=16M",
                                                    "--innodb-flush-log-at-trx-commit=0", "--character-set-server=utf8mb4" });
   }
   if (! m_process.waitForStarted(10000)) { sError = "the server did not start: " + m_process.errorString(); return false; }
   return true;
}

QSqlDatabase db_server::adminConnection(const QString & sConnection) const
{
   QSqlDatabase db = QSqlDatabase::addDatabase(getDriver(), sConnection);
   if (m_eKind == kind_postgresql)
   {
      db.setHostName("127.0.0.1");
      db.setPort(m_iPort);
      db.setUserName(k_sUser);
      db.setPassword(k_sPassword);
      db.setDatabaseName("postgres");
   }
   else
   {
      db.setHostName("localhost");
      db.setUserName("root");
      db.setConnectOptions("UNIX_SOCKET=" + m_pDir->path() + "/mariadbd.sock");
   }
   return db;
}

bool db_server::waitReady(QString & sError)
{
   const QString sName = "db_support_wait_" + QUuid::createUuid().toString(QUuid::Id128);
   bool bOk = false;
   {
      QSqlDatabase db = adminConnection(sName);
      QDeadlineTimer deadline(60000);
      while (! bOk && ! deadline.hasExpired() && (m_process.state() == QProcess::Running))
      {
         bOk = db.open();
         if (! bOk) { m_process.waitForFinished(200); }
      }
      if (! bOk)
      {
         m_sLog += QString::fromLocal8Bit(m_process.readAll());
         sError = "the server did not take connections (" + db.lastError().text() + "):\n" + m_sLog;
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return bOk;
}

bool db_server::createTestUser(QString & sError)
{
   if (m_eKind == kind_postgresql) { return recreateDatabase(k_sDatabase, sError); }
   const QString sName = "db_support_user_" + QUuid::createUuid().toString(QUuid::Id128);
   bool bOk = true;
   {
      QSqlDatabase db = adminConnection(sName);
      bOk = db.open();
      QSqlQuery q(db);
      for (const QString & sql : { QString("CREATE USER '%1'@'%' IDENTIFIED BY '%2'").arg(k_sUser, k_sPassword),
                                   QString("GRANT ALL PRIVILEGES ON *.* TO '%1'@'%' WITH GRANT OPTION").arg(k_sUser) })
      {
         if (bOk && ! q.exec(sql)) { bOk = false; sError = sql + ": " + q.lastError().text(); }
      }
      if (! db.isOpen()) { sError = db.lastError().text(); }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return (bOk && recreateDatabase(k_sDatabase, sError));
}

void db_server::stopProcess()
{
   if (m_process.state() != QProcess::NotRunning)
   {
      // Fast shutdown for PostgreSQL (SIGINT), normal for MariaDB; the data is thrown away anyway.
      ::kill(pid_t(m_process.processId()), (m_eKind == kind_postgresql) ? SIGINT : SIGTERM);
      if (! m_process.waitForFinished(15000)) { m_process.kill(); m_process.waitForFinished(5000); }
   }
}

void db_server::stop()
{
   stopProcess();
   m_pDir.reset();
}

QString db_server::getUrl(const QString & sDatabase) const
{
   const QString sScheme = ((m_eKind == kind_postgresql) ? "postgresql" : "mysql");
   return QString("%1://%2@127.0.0.1:%3/%4").arg(sScheme, k_sUser).arg(m_iPort).arg(sDatabase);
}

QSqlDatabase db_server::connect(const QString & sConnection, const QString & sDatabase) const
{
   QSqlDatabase db = QSqlDatabase::addDatabase(getDriver(), sConnection);
   db.setHostName("127.0.0.1");
   db.setPort(m_iPort);
   db.setUserName(k_sUser);
   db.setPassword(k_sPassword);
   db.setDatabaseName(sDatabase);
   return db;
}

bool db_server::execScript(const QString & sScript, QString & sError, const QString & sDatabase) const
{
   const QString sName = "db_support_exec_" + QUuid::createUuid().toString(QUuid::Id128);
   bool bOk = true;
   {
      QSqlDatabase db = connect(sName, sDatabase);
      if (! db.open()) { sError = db.lastError().text(); bOk = false; }
      QSqlQuery q(db);
      QString sStatement;
      for (const QString & sLine : sScript.split('\n'))
      {
         if (! bOk) { break; }
         if (sLine.trimmed().startsWith("--")) { continue; }
         sStatement += sLine + "\n";
         if (! sLine.trimmed().endsWith(';')) { continue; }
         if (! q.exec(sStatement)) { sError = sStatement.trimmed() + "\n" + q.lastError().text(); bOk = false; }
         sStatement.clear();
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return bOk;
}

bool db_server::recreateDatabase(const QString & sDatabase, QString & sError) const
{
   const QString sName = "db_support_create_" + QUuid::createUuid().toString(QUuid::Id128);
   bool bOk = true;
   {
      QSqlDatabase db = adminConnection(sName);
      bOk = db.open();
      if (! bOk) { sError = db.lastError().text(); }
      QSqlQuery q(db);
      const QString sQuoted = ((m_eKind == kind_postgresql) ? ("\"" + sDatabase + "\"") : ("`" + sDatabase + "`"));
      // PostgreSQL refuses to drop a database others are connected to unless forced.
      const QString sForce = ((m_eKind == kind_postgresql) ? " WITH (FORCE)" : "");
      for (const QString & sql : { "DROP DATABASE IF EXISTS " + sQuoted + sForce, "CREATE DATABASE " + sQuoted })
      {
         if (bOk && ! q.exec(sql)) { bOk = false; sError = sql + ": " + q.lastError().text(); }
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return bOk;
}

} // namespace db_support
