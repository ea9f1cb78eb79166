#pragma once

#include <QString>
#include <QStringList>

#include "model/model_fwd.h"
#include "sql_export/schema/schema_model.h"

namespace sql_test {

// A model from JSON text (fails the calling test through the result when unreadable).
model::project_ptr modelFromJson(const QByteArray & json);
model::project_ptr exampleModel(const QString & sName);
// Removes every property's forced SQL type (kept by no database in the model's spelling).
void clearForcedTypes(model::project & project);
// The schema script of a model; comments left out when bComments is false.
QString scriptOf(const model::project & project, sql_export::enum_dialect eDialect, bool bComments = true, QStringList * pWarnings = nullptr);
// Runs a script statement by statement on an SQLite file; false with the failing statement.
bool runOnSqlite(const QString & sFile, const QString & sScript, QString & sError);
// Runs statements one by one on an SQLite file (after its script); false when one fails. When the
// last is a query, pResult gets the first value of its first row.
bool runStatements(const QString & sFile, const QStringList & lstStatements, QString * pResult = nullptr);
// The model a database holds, read back by the import (named sName).
model::project_ptr importFrom(const QString & sUrl, const QString & sName, QString & sError);

} // namespace sql_test
