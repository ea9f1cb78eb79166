#pragma once

#include <QHash>
#include <QSet>
#include <QStringList>

#include "db_import/db_catalog.h"
#include "db_import/import_options.h"
#include "model/model_fwd.h"

namespace db_import {

// Turns a catalog into a new model: a table or view per entity, a column per property, foreign
// keys as relations and pure join tables as many-to-many relations (see the user guide).
class model_mapper
{
   const db_catalog & m_catalog;
   const import_options & m_options;
   QStringList m_lstWarnings;
   // Names the model cannot hold, when import_options::bStrict makes them errors.
   QStringList m_lstErrors;
   model::project_ptr m_pProject;
   // Catalog key of a table -> its entity; join tables have none.
   QHash<QString, model::entity_ptr> m_hashEntities;
   QSet<QString> m_setJoinTables;
   QHash<const model::entity *, QSet<QString> > m_hashTakenNames;
   // Class names taken, per namespace.
   QHash<QString, QSet<QString> > m_hashTakenClasses;
   // Inverse relations wait until every entity has its columns, so that columns come first.
   struct pending_inverse
   {
      const db_table * pTable;
      model::entity_ptr pHolder;
      const db_foreign_key * pKey;
      QString sRelation;
   };
   QList<pending_inverse> m_lstInverses;
   // Table -> the key chosen for a table or view that has none (see chooseKey).
   QHash<QString, QString> m_hashChosenKeys;
   long m_lNextProperty = 1;
   long m_lNextRelation = 1;

public:
   model_mapper(const db_catalog & catalog, const import_options & options);

   model::project_ptr map(const QString & sProjectName);
   // One line per table or column the model cannot hold as it is, naming it.
   QStringList getWarnings() const { return m_lstWarnings; }
   QStringList getErrors() const { return m_lstErrors; }
   // Table -> "no primary key: ... chosen as its key", for each table and view given a key here.
   QHash<QString, QString> getChosenKeys() const { return m_hashChosenKeys; }

   // The table an entity stands for: its "table", else its name.
   static QString tableOf(const model::entity & entity);
   // "schema.table" outside the default schema, the bare name inside it.
   static QString qualifiedName(const db_catalog & catalog, const QString & sSchema, const QString & sTable);

private:
   bool isJoinTable(const db_table & table) const;
   // The foreign key that a single column holds towards an imported entity, or null.
   const db_foreign_key * relationKey(const db_table & table, const QString & sColumn) const;
   model::entity_ptr targetOf(const db_foreign_key & key) const;
   void addEntity(const db_table & table);
   void addColumns(const db_table & table);
   // The column that stands for the key of a table or view without one: its first unique
   // not-null column, else its first column that is no foreign key, else its first column.
   QString chooseKey(const db_table & table, const model::entity & entity);
   // A primary key over several columns: one key property of a std::pair (two columns) or
   // std::tuple type, its column "a|b"; the columns keep their own properties.
   void addCompositeKey(const db_table & table, const model::entity_ptr & pEntity);
   model::property_ptr newProperty(const model::entity_ptr & pEntity, const QString & sName, const QString & sColumn);
   model::property_ptr plainProperty(const db_table & table, const model::entity_ptr & pEntity, const db_column & column, bool bKey);
   void addManyToOne(const db_table & table, const model::entity_ptr & pEntity, const db_column & column, const db_foreign_key & key);
   void addInverse(const db_table & table, const model::entity_ptr & pHolder, const db_foreign_key & key, const QString & sRelation);
   void addManyToMany(const db_table & table);
   model::property_ptr addRelation(const model::entity_ptr & pEntity, const QString & sName, int iKind,
                                   const model::entity_ptr & pTarget, const QString & sForeignKey);
   QString styledPropertyName(const QString & s) const;
   void warn(const QString & s) { m_lstWarnings.append(s); }
   void describe(const model::entity & entity, const db_column & column, model::property & property);
   // A table or column left out: a warning, an error when strict.
   void leaveOut(const QString & s) { (m_options.bStrict ? m_lstErrors : m_lstWarnings).append(s); }
   // Why the model cannot hold the table's (or the column's) name; empty when it can.
   bool representable(const db_table & table);
   bool representable(const db_table & table, const db_column & column);
};

} // namespace db_import
