#include "storage/json_key_table.h"

#include <QHash>

namespace storage {

namespace {

quint32 hashOf(const QString & s) { return quint32(qHash(s)); }

} // namespace

void json_key_table::grow()
{
   QList<slot> lstOld;
   lstOld.swap(m_lstSlots);
   m_lstSlots.resize(lstOld.isEmpty() ? 64 : (lstOld.size() * 2));
   const qsizetype iMask = m_lstSlots.size() - 1;
   for (const slot & s : lstOld)
   {
      if (s.iItem < 0) { continue; }
      qsizetype i = (s.iHash & iMask);
      while (m_lstSlots.at(i).iItem >= 0) { i = ((i + 1) & iMask); }
      m_lstSlots[i] = s;
   }
}

void json_key_table::insert(const QString & sKey, qint32 iItem, qint32 iIndex)
{
   if ((m_iCount + 1) * 2 > m_lstSlots.size()) { grow(); }
   const quint32 iHash = hashOf(sKey);
   const qsizetype iMask = m_lstSlots.size() - 1;
   qsizetype i = (iHash & iMask);
   while (m_lstSlots.at(i).iItem >= 0) { i = ((i + 1) & iMask); }
   m_lstSlots[i] = slot { iHash, iItem, iIndex };
   ++m_iCount;
}

qint32 json_key_table::find(const QString & sKey) const
{
   if (m_lstSlots.isEmpty()) { return -1; }
   const quint32 iHash = hashOf(sKey);
   const qsizetype iMask = m_lstSlots.size() - 1;
   // A key is inserted once at most (the reader looks it up first), so any match is the first.
   for (qsizetype i = (iHash & iMask); m_lstSlots.at(i).iItem >= 0; i = ((i + 1) & iMask))
   {
      const slot & s = m_lstSlots.at(i);
      if ((s.iHash == iHash) && (m_keyOf(s.iItem) == sKey)) { return s.iIndex; }
   }
   return -1;
}

} // namespace storage
