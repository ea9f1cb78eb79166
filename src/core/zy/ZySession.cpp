#include "zy/ZySession.h"

namespace zy {

ZySession::ZySession(const QSqlDatabase & database) : m_database(database)
{
   if (! m_database.isOpen()) { (* this) += QSqlError(QString(), "database is not open", QSqlError::ConnectionError); return; }
   m_bTransaction = m_database.transaction();
   if (! m_bTransaction) { (* this) += m_database.lastError(); }
}

ZySession::~ZySession()
{
   if (! m_bTransaction) { return; }
   if (isValid()) { if (! m_database.commit()) { m_database.rollback(); } }
   else { m_database.rollback(); }
}

ZySession & ZySession::operator+=(const QSqlError & err)
{
   if (err.isValid()) { m_lstErrors.append(err); }
   return (* this);
}

} // namespace zy
