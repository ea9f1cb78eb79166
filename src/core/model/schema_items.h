#pragma once

#include <QHash>
#include <QString>

#include "model/model_fwd.h"
#include "zy/ZyInvalidValue.h"

namespace model {

// The checks of one item, in the words and order of project::checkSchema. Keys are looked up in
// the first-index tables of firstIndexOfKeys.
namespace schema_items {

// "Entity 'a::B'", or "Entity #3" for an entity without a name.
QString entityLabel(const entity_ptr & p, qsizetype i);
QString entityPath(qsizetype i);

// "Project has no name" or a name that is no identifier.
void checkProjectName(zy::ZyInvalidValueX & lst, const QString & sName);
// Each inheritance cycle once, at its first member in document order.
void appendParentCycles(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities);
// A property named like its own class, or like a class or enumeration of its class's namespace:
// the generated member changes what that name means inside the class, which does not compile.
// It looks across items, so the incremental check runs it every time too.
void appendClassNameClashes(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities, const list_of_enumeration & lstEnums);
// Name, namespace, repeated key, parent, validator and every property of the entity at index i.
void checkEntity(zy::ZyInvalidValueX & lst, const entity_ptr & pEntity, qsizetype i,
                 const QHash<QString, qsizetype> & hashEntities, const QHash<QString, qsizetype> & hashEnums);
// Name, namespace, repeated key, a key an entity has too, and the value keys.
void checkEnumeration(zy::ZyInvalidValueX & lst, const enumeration_ptr & pEnum, qsizetype i,
                      const QHash<QString, qsizetype> & hashEntities, const QHash<QString, qsizetype> & hashEnums);

// First index of every key, in document order.
template <typename List>
QHash<QString, qsizetype> firstIndexOfKeys(const List & lst)
{
   QHash<QString, qsizetype> hash;
   hash.reserve(lst.size());
   for (qsizetype i = 0; i < lst.size(); ++i)
   {
      if (lst.at(i) && ! hash.contains(lst.at(i)->getKey())) { hash.insert(lst.at(i)->getKey(), i); }
   }
   return hash;
}

} // namespace schema_items

} // namespace model
