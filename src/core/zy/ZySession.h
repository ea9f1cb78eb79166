#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QSqlError>

#include "tavrelcore_export.h"

namespace zy {

// One database transaction: opened with the session, committed when the session ends without
// error, rolled back otherwise.
class TAVRELCORE_EXPORT ZySession
{
   QSqlDatabase m_database;
   QList<QSqlError> m_lstErrors;
   bool m_bTransaction = false;

public:
   explicit ZySession(const QSqlDatabase & database);
   ~ZySession();

   ZySession(const ZySession &) = delete;
   ZySession & operator=(const ZySession &) = delete;

   QSqlDatabase * database() { return (& m_database); }
   bool isValid() const { return m_lstErrors.isEmpty(); }
   QSqlError firstError() const { return (m_lstErrors.isEmpty() ? QSqlError() : m_lstErrors.first()); }
   QList<QSqlError> allErrors() const { return m_lstErrors; }

   // Records an error (an invalid error is ignored); returns the session for chaining.
   ZySession & operator+=(const QSqlError & err);
};

} // namespace zy
