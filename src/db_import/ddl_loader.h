#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace db_import {

// A schema kept as a SQL script: its statements run one by one on an in-memory SQLite database,
// which is then read like any other. A statement SQLite cannot run is reported with the line it
// starts on and skipped, or ends the load when strict.
class ddl_loader
{
public:
   struct statement
   {
      int iLine = 0;
      QString sText;
   };

   ddl_loader() = default;
   ~ddl_loader();
   ddl_loader(const ddl_loader &) = delete;
   ddl_loader & operator=(const ddl_loader &) = delete;

   bool load(const QString & sFile, bool bStrict, QString & sError);
   QSqlDatabase database() const;
   // "schema.sql:12: statement skipped: reason", one per skipped statement.
   QStringList getWarnings() const { return m_lstWarnings; }

   // The statements of a script: split at ";" outside quotes, comments and trigger bodies.
   static QList<statement> split(const QString & sScript);

private:
   QString m_sConnection;
   QStringList m_lstWarnings;
};

} // namespace db_import
