#include "db_import/db_source.h"

#include <QFileInfo>
#include <QSqlError>
#include <QUrl>
#include <QUrlQuery>
#include <QUuid>

namespace db_import {

db_source::~db_source()
{
   close();
}

QString db_source::driverName(enum_dialect eDialect)
{
   switch (eDialect)
   {
      case dialect_postgresql: return "QPSQL";
      case dialect_mariadb: return "QMYSQL";
      default: return "QSQLITE";
   }
}

QString db_source::driverPackage(enum_dialect eDialect)
{
   switch (eDialect)
   {
      case dialect_postgresql: return "libqt6sql6-psql";
      case dialect_mariadb: return "libqt6sql6-mysql";
      default: return "libqt6sql6-sqlite";
   }
}

QString db_source::environmentPassword(enum_dialect eDialect)
{
   if (qEnvironmentVariableIsSet("TAVREL_DB_PASSWORD")) { return qEnvironmentVariable("TAVREL_DB_PASSWORD"); }
   if (eDialect == dialect_postgresql) { return qEnvironmentVariable("PGPASSWORD"); }
   if (eDialect == dialect_mariadb) { return qEnvironmentVariable("MYSQL_PWD"); }
   return QString();
}

bool db_source::parse(const QString & sUrl, QString & sError)
{
   if (sUrl.startsWith("sqlite:"))
   {
      m_eDialect = dialect_sqlite;
      QString sPath = sUrl.mid(7);
      if (sPath.startsWith("//")) { sPath = sPath.mid(2); }
      if (sPath.isEmpty()) { sError = "'" + sUrl + "' names no SQLite file (write sqlite:path.db)"; return false; }
      m_sDatabase = sPath;
      return true;
   }
   const QUrl url(sUrl, QUrl::StrictMode);
   const QString sScheme = url.scheme().toLower();
   if ((sScheme == "postgresql") || (sScheme == "postgres")) { m_eDialect = dialect_postgresql; }
   else if ((sScheme == "mysql") || (sScheme == "mariadb")) { m_eDialect = dialect_mariadb; }
   else
   {
      sError = "'" + sUrl + "' is not a database URL (sqlite:FILE, postgresql://USER@HOST:PORT/DB or mysql://USER@HOST/DB)";
      return false;
   }
   if (! url.isValid() || url.host().isEmpty()) { sError = "'" + sUrl + "' is not a valid URL: " + (url.isValid() ? QString("no host") : url.errorString()); return false; }
   m_sHost = url.host();
   m_iPort = url.port((m_eDialect == dialect_postgresql) ? 5432 : 3306);
   m_sUser = url.userName(QUrl::FullyDecoded);
   if (m_sUser.isEmpty()) { m_sUser = ((m_eDialect == dialect_postgresql) ? qEnvironmentVariable("PGUSER") : QString()); }
   if (m_sUser.isEmpty()) { m_sUser = qEnvironmentVariable("USER"); }
   m_bPasswordInUrl = ! url.password().isEmpty();
   m_sPassword = (m_bPasswordInUrl ? url.password(QUrl::FullyDecoded) : environmentPassword(m_eDialect));
   m_sDatabase = url.path(QUrl::FullyDecoded).mid(1);
   if (m_sDatabase.isEmpty()) { sError = "'" + displayUrl() + "' names no database (add /DATABASE)"; return false; }
   for (const QString & s : QUrlQuery(url).queryItemValue("schema", QUrl::FullyDecoded).split(',', Qt::SkipEmptyParts)) { m_lstSchemas.append(s.trimmed()); }
   return true;
}

QString db_source::displayUrl() const
{
   if (m_eDialect == dialect_sqlite) { return "sqlite:" + m_sDatabase; }
   QUrl url;
   url.setScheme((m_eDialect == dialect_postgresql) ? "postgresql" : "mysql");
   url.setUserName(m_sUser);
   url.setHost(m_sHost);
   url.setPort(m_iPort);
   url.setPath("/" + m_sDatabase);
   if (! m_lstSchemas.isEmpty()) { url.setQuery("schema=" + m_lstSchemas.join(',')); }
   return url.toString();
}

bool db_source::open(QSqlDatabase & database, QString & sError)
{
   const QString sDriver = driverName(m_eDialect);
   if (! QSqlDatabase::isDriverAvailable(sDriver))
   {
      sError = "the Qt SQL driver " + sDriver + " is not installed: install the Debian package " + driverPackage(m_eDialect);
      return false;
   }
   if ((m_eDialect == dialect_sqlite) && ! QFileInfo(m_sDatabase).isFile())
   {
      sError = "SQLite file '" + m_sDatabase + "' does not exist";
      return false;
   }
   close();
   m_sConnection = "tavrel_db_import_" + QUuid::createUuid().toString(QUuid::Id128);
   database = QSqlDatabase::addDatabase(sDriver, m_sConnection);
   database.setDatabaseName(m_sDatabase);
   if (m_eDialect == dialect_sqlite) { database.setConnectOptions("QSQLITE_OPEN_READONLY"); }
   else
   {
      database.setHostName(m_sHost);
      database.setPort(m_iPort);
      database.setUserName(m_sUser);
      database.setPassword(m_sPassword);
      database.setConnectOptions((m_eDialect == dialect_postgresql) ? "connect_timeout=10" : "MYSQL_OPT_CONNECT_TIMEOUT=10");
   }
   if (database.open()) { return true; }
   sError = "cannot connect to " + displayUrl() + ": " + database.lastError().text().trimmed();
   database = QSqlDatabase();
   close();
   return false;
}

void db_source::close()
{
   if (m_sConnection.isEmpty()) { return; }
   {
      QSqlDatabase db = QSqlDatabase::database(m_sConnection, false);
      if (db.isOpen()) { db.close(); }
   }
   QSqlDatabase::removeDatabase(m_sConnection);
   m_sConnection.clear();
}

} // namespace db_import
