#pragma once

#include <QHash>
#include <QSet>
#include <QStringList>

#include "db_import/import_options.h"
#include "model/model_fwd.h"

namespace db_import {

// Brings a fresh import into a project without losing what the user changed: entities are
// matched by table and properties by column (relations by their foreign key), so renamed items
// stay renamed, and everything the database does not describe is kept as it is. New tables and
// columns are added, changed column facts updated, what disappeared marked obsolete (or removed
// when pruning). Kept items keep their ids; new ones get ids after the highest in use.
class model_merger
{
   model::project_ptr m_pProject;
   const import_options & m_options;
   QStringList m_lstSummary;
   // Key of an entity of the fresh model -> key of the same entity in the project.
   QHash<QString, QString> m_hashKeys;
   // Table -> why its key was chosen by the import (the database has none): the user may move it.
   QHash<QString, QString> m_hashChosenKeys;
   // Properties this run added: seen in the database by definition, whatever their target is yet.
   QSet<const model::property *> m_setAdopted;
   long m_lNextEntity = 1;
   long m_lNextProperty = 1;
   long m_lNextRelation = 1;

public:
   model_merger(const model::project_ptr & pProject, const import_options & options);

   // Merges and returns the summary, one line per change ("+ entity sales::Invoice (table
   // invoice)", "~ Order.total: int -> double", "- column order.legacy (marked obsolete)").
   QStringList merge(const model::project & fresh);
   // The keys model_mapper chose for tables without one (model_mapper::getChosenKeys).
   void setChosenKeys(const QHash<QString, QString> & hash) { m_hashChosenKeys = hash; }

private:
   void findIds();
   void mergeEntity(const model::entity_ptr & pEntity, const model::entity & fresh, const model::project & freshProject);
   void updateProperty(const model::entity & entity, const model::property_ptr & pProperty, const model::property & fresh);
   void addEntity(const model::entity_ptr & pFresh);
   void adopt(const model::entity_ptr & pEntity, const model::property_ptr & pProperty);
   void dropMissing(const model::entity_ptr & pEntity, const QSet<QString> & setSeen);
   void dropTable(const model::entity_ptr & pEntity);
   void removeRelationsTo(const QSet<QString> & setKeys);
   // What a property stands for in the database: "c:column", "o:table.fk" or "m:table.fk".
   static QString matchKey(const model::property & property, const model::project & project);
   void note(const QString & s) { m_lstSummary.append(s); }
};

} // namespace db_import
