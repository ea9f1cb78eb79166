#pragma once

#include <QHash>

#include "model/persistable.h"
#include "zy/ZyInvalidValue.h"

namespace model {

class TAVRELCORE_EXPORT project : public persistable
{
   QString m_sName;
   QString m_sLocation;
   QString m_sFilePath;
   list_of_entity_ptr m_pEntities = std::make_shared<list_of_entity>();
   list_of_enumeration_ptr m_pEnumerations = std::make_shared<list_of_enumeration>();

public:
   // Lookup indexes for the by-id and by-key queries, built on first use (exports ask them for
   // every entity). A list that changed size is re-indexed; a stale hit or a miss is checked
   // against the list itself. Only an item whose id or key changed to one that an earlier item
   // already had needs invalidateIndex() to keep "first in document order".
   struct lookup_index
   {
      QHash<long, qsizetype> byId;
      QHash<QString, qsizetype> byKey;
      qsizetype size = -1;
   };

private:
   mutable lookup_index m_entityIndex;
   mutable lookup_index m_enumIndex;

public:
   QString getName() const { return m_sName; }
   // Directory of the project file.
   QString getLocation() const { return m_sLocation; }
   // Absolute path of the .tavrel file (empty for a project held in memory only).
   QString getFilePath() const { return m_sFilePath; }

   list_of_entity_ptr getListOfAllEntities() const { return m_pEntities; }
   list_of_enumeration_ptr getListOfAllEnums() const { return m_pEnumerations; }
   // First item with that id in document order (also for id 0), or null.
   entity_ptr getEntityById(long id) const;
   enumeration_ptr getEnumerationById(long id) const;
   entity_ptr getEntityByKey(const QString & key) const;
   enumeration_ptr getEnumerationByKey(const QString & key) const;

   // Schema problems, one invalid value per problem, each message naming the item.
   zy::ZyInvalidValueX checkSchema() const;
   // Models that are valid but whose generated code cannot build as written; without
   // bWithPImpl the warnings that only hold with the PIMPL idiom on are left out.
   QStringList checkWarnings(bool bWithPImpl) const;
   // All of them, PIMPL ones included.
   QStringList checkWarnings() const { return checkWarnings(true); }

   void setName(const QString & s) { m_sName = s; }
   void setLocation(const QString & s) { m_sLocation = s; }
   void setFilePath(const QString & s) { m_sFilePath = s; }
   void addEntity(const entity_ptr & p) { m_pEntities->append(p); invalidateIndex(); }
   void addEnumeration(const enumeration_ptr & p) { m_pEnumerations->append(p); invalidateIndex(); }
   // Drops the lookup indexes; call after changing ids or keys of items already in the project.
   void invalidateIndex() const;

   // Re-links parents, relation targets and enumeration types by key after a load or edit; also
   // sets the properties' entity and the relationships' property back pointers, and gives a
   // property that names an enumeration without a type text the enumeration's C++ type.
   void resolveLinks();
};

} // namespace model
