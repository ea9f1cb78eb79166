#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

#include "model/model_fwd.h"

namespace storage {

// Replaces the model tables of an open project database with a model; the caller holds the
// transaction that makes it all or nothing.
class model_writer
{
   QSqlDatabase & m_db;
   QString m_sError;
   QSqlQuery m_qEntity, m_qProperty, m_qRelation, m_qEnum, m_qValue, m_qMeta;
   qlonglong m_lMetaSeq = 0;
   qlonglong m_lPropertySeq = 0;
   qlonglong m_lRelationSeq = 0;

   bool prepare(QSqlQuery & q, const QString & sql);
   bool run(QSqlQuery & q, const QVariantList & values);
   bool writeMeta(const char * szKind, qlonglong lOwnerSeq, const model::persistable & item);

   bool clearTables();
   bool writeProjectRow(const model::project & project);
   bool writeEnumerations(const model::project & project);
   bool prepareEntityQueries();
   bool writeEntity(const model::entity & e, qlonglong lEntitySeq);
   bool writeProperty(const model::property & p, qlonglong lEntitySeq);

public:
   explicit model_writer(QSqlDatabase & db);
   QString error() const { return m_sError; }

   bool write(const model::project & project);
};

} // namespace storage
