#pragma once

#include <QList>
#include <QString>

#include <functional>

#include "tavrelcore_export.h"

namespace storage {

// Keys of the items read so far, with no copy of the key texts: a slot holds the key's hash and
// where the item is; equal hashes are told apart by asking the item for its key. A million
// entities then take 24 MB here instead of a text and a hash node each.
class TAVRELCORE_EXPORT json_key_table
{
   struct slot
   {
      quint32 iHash = 0;
      qint32 iItem = -1;    // -1: free
      qint32 iIndex = -1;
   };

   QList<slot> m_lstSlots;
   qsizetype m_iCount = 0;
   std::function<QString (qint32)> m_keyOf;

   void grow();

public:
   explicit json_key_table(std::function<QString (qint32)> keyOf) : m_keyOf(std::move(keyOf)) { ; }

   // A key not inserted yet; iItem is handed to keyOf, iIndex is what find() gives back.
   void insert(const QString & sKey, qint32 iItem, qint32 iIndex);
   // The iIndex of the first item inserted with that key, or -1.
   qint32 find(const QString & sKey) const;
   bool contains(const QString & sKey) const { return (find(sKey) >= 0); }
};

} // namespace storage
