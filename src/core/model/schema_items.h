#pragma once

#include <QHashFunctions>
#include <QString>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyInvalidValue.h"

namespace model {

// The checks of one item, in the words and order of project::checkSchema. Keys are looked up in
// the first-index tables of firstIndexOfKeys (key_table).
namespace schema_items {

// First index of every key, in document order. It holds a hash and an index per item and asks
// the list for the key text only to confirm a match: a table of the key texts themselves is a
// good part of the memory a check of a large model needs.
class key_table
{
public:
   // The key of item i, or nothing when there is no item at i.
   typedef std::function<std::optional<QString>(qsizetype)> key_at;

   key_table(qsizetype iCount, key_at fctKeyAt);
   bool contains(const QString & sKey) const { return (indexOf(sKey) >= 0); }
   qsizetype value(const QString & sKey, qsizetype iDefault = -1) const
   {
      const qsizetype i = indexOf(sKey);
      return ((i >= 0) ? i : iDefault);
   }

private:
   qsizetype indexOf(const QString & sKey) const;

   key_at m_fctKeyAt;
   // Seeded per process as QHash is, so crafted keys cannot pile up on one hash.
   size_t m_iSeed;
   std::vector<std::pair<size_t, qsizetype>> m_lstByHash;
};

// "Entity 'a::B'", or "Entity #3" for an entity without a name.
QString entityLabel(const entity_ptr & p, qsizetype i);
QString entityPath(qsizetype i);

// "Project has no name" or a name that is no identifier.
void checkProjectName(zy::ZyInvalidValueX & lst, const QString & sName);
// Each inheritance cycle once, at its first member in document order.
void appendParentCycles(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities);
// Two entities, or an entity and a many-to-many join table, on one table (names compared as
// SQLite does, without case): each at its second user. The SQL export and migrate refuse so too.
TAVRELCORE_EXPORT void appendSharedTables(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities);
// A property named like its own class, or like a class or enumeration of its class's namespace:
// the generated member changes what that name means inside the class, which does not compile.
// It looks across items, so the incremental check runs it every time too.
void appendClassNameClashes(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities, const list_of_enumeration & lstEnums,
                            const key_table & hashEntities, const key_table & hashEnums);
// Name, namespace, repeated key, parent, validator and every property of the entity at index i.
void checkEntity(zy::ZyInvalidValueX & lst, const entity_ptr & pEntity, qsizetype i,
                 const key_table & hashEntities, const key_table & hashEnums);
// Name, namespace, repeated key, a key an entity has too, and the value keys.
void checkEnumeration(zy::ZyInvalidValueX & lst, const enumeration_ptr & pEnum, qsizetype i,
                      const key_table & hashEntities, const key_table & hashEnums);

// The table of a list of entities or enumerations; the list must outlive it.
template <typename List>
key_table firstIndexOfKeys(const List & lst)
{
   return key_table(lst.size(), [&lst](qsizetype i) -> std::optional<QString> {
      if (! lst.at(i)) { return std::nullopt; }
      return lst.at(i)->getKey();
   });
}

} // namespace schema_items

} // namespace model
