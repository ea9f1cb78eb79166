#pragma once

#include <QHash>
#include <QList>
#include <QPair>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include "model/model_fwd.h"

namespace storage {

// Reads the model tables of an open project database into a project, in document order.
class model_loader
{
   QSqlDatabase & m_db;
   QString m_sError;
   QSqlQuery m_query;
   // Meta data by owner kind and owner seq, gathered first and handed out as the items are read.
   QHash<QString, QHash<qlonglong, QList<QPair<QString, QString> > > > m_hashMeta;
   QHash<qlonglong, model::enumeration_ptr> m_hashEnums;
   QHash<qlonglong, model::entity_ptr> m_hashEntities;
   // Relationships by the seq of their property, until the property is read.
   QHash<qlonglong, model::relationship_ptr> m_hashRelations;
   // The (kind, seq) of the meta data handed to an item.
   QSet<QPair<QString, qlonglong> > m_setMetaPlaced;
   QSet<QString> m_setTexts;

   bool select(const QString & sql);
   bool finished();
   void applyMeta(const char * szKind, qlonglong lSeq, model::persistable & item);

   bool loadProjectRow(model::project & project);
   bool loadMeta();
   bool loadEnumerations(model::project & project);
   bool loadEnumerationValues();
   bool loadEntities(model::project & project);
   bool loadProperties();
   bool loadRelations();
   bool checkMetaOwners();
   // Refuses a row whose owner row is missing; false.
   bool orphan(const char * szRow, const QString & sName, const char * szOwner, const QVariant & vOwnerSeq);

public:
   explicit model_loader(QSqlDatabase & db);
   QString error() const { return m_sError; }

   bool load(model::project & project);
};

} // namespace storage
