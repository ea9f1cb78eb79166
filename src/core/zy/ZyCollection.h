#pragma once

#include <QHash>
#include <QList>
#include <QPair>

namespace zy {

// Ordered keyed collection: insertion order is kept, lookup by key is constant time.
template <typename Key, typename Value>
class ZyCollection
{
   QList<QPair<Key, Value> > m_lstItems;
   QHash<Key, qsizetype> m_hashIndex;

public:
   typedef typename QList<QPair<Key, Value> >::const_iterator const_iterator;

   qsizetype size() const { return m_lstItems.size(); }
   qsizetype count() const { return m_lstItems.size(); }
   bool empty() const { return m_lstItems.isEmpty(); }
   bool exist(const Key & key) const { return m_hashIndex.contains(key); }
   void clear() { m_lstItems.clear(); m_hashIndex.clear(); }
   void reserve(qsizetype n) { m_lstItems.reserve(n); m_hashIndex.reserve(n); }

   // Returns false when the key is already there (the collection is left unchanged).
   bool insert(const Key & key, const Value & value)
   {
      if (m_hashIndex.contains(key)) { return false; }
      m_hashIndex.insert(key, m_lstItems.size());
      m_lstItems.append(qMakePair(key, value));
      return true;
   }

   // Replaces the value of an existing key in place, or appends a new one.
   void insertOrReplace(const Key & key, const Value & value)
   {
      auto itr = m_hashIndex.constFind(key);
      if (itr == m_hashIndex.constEnd()) { insert(key, value); }
      else { m_lstItems[itr.value()].second = value; }
   }

   bool remove(const Key & key)
   {
      auto itr = m_hashIndex.find(key);
      if (itr == m_hashIndex.end()) { return false; }
      qsizetype idx = itr.value();
      m_lstItems.removeAt(idx);
      m_hashIndex.erase(itr);
      for (auto & i : m_hashIndex) { if (i > idx) { --i; } }
      return true;
   }

   Value getByKey(const Key & key) const
   {
      auto itr = m_hashIndex.constFind(key);
      return ((itr == m_hashIndex.constEnd()) ? Value() : m_lstItems.at(itr.value()).second);
   }

   const Value & getByIndex(qsizetype idx) const { return m_lstItems.at(idx).second; }
   const Key & getKeyByIndex(qsizetype idx) const { return m_lstItems.at(idx).first; }
   qsizetype getIndexByKey(const Key & key) const { return m_hashIndex.value(key, -1); }

   const_iterator begin() const { return m_lstItems.cbegin(); }
   const_iterator end() const { return m_lstItems.cend(); }
};

} // namespace zy
