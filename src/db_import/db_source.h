#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"

namespace db_import {

// Where the model comes from: "sqlite:path.db", "postgresql://user@host:port/db?schema=a,b" or
// "mysql://user@host:port/db" ("postgres://" and "mariadb://" are read alike).
class db_source
{
   enum_dialect m_eDialect = dialect_sqlite;
   QString m_sHost;
   int m_iPort = -1;
   QString m_sUser;
   QString m_sPassword;
   bool m_bPasswordInUrl = false;
   QString m_sDatabase;
   QStringList m_lstSchemas;
   QString m_sConnection;

public:
   db_source() = default;
   ~db_source();
   db_source(const db_source &) = delete;
   db_source & operator=(const db_source &) = delete;

   // Reads a URL; false with the reason when it is not one of the forms above.
   bool parse(const QString & sUrl, QString & sError);

   enum_dialect getDialect() const { return m_eDialect; }
   QString getDatabase() const { return m_sDatabase; }
   QStringList getSchemas() const { return m_lstSchemas; }
   bool hasPasswordInUrl() const { return m_bPasswordInUrl; }
   void setPassword(const QString & s) { m_sPassword = s; }
   // The URL without its password, for messages.
   QString displayUrl() const;

   // Opens the connection (an SQLite file read-only); the reason names a missing driver's
   // Debian package, a missing file or what the server answered.
   bool open(QSqlDatabase & database, QString & sError);
   void close();

   static QString driverName(enum_dialect eDialect);
   static QString driverPackage(enum_dialect eDialect);
   // The password from the environment: TAVREL_DB_PASSWORD, else PGPASSWORD or MYSQL_PWD.
   static QString environmentPassword(enum_dialect eDialect);
};

} // namespace db_import
