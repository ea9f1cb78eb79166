#pragma once

#include <QString>

#include "db_import/db_catalog.h"
#include "model/model_fwd.h"

namespace db_import {

struct import_options;

// The C++ type of a column, from one table per database (see the user guide).
class type_mapping
{
public:
   struct result
   {
      QString sType;
      // False for a type outside the table (mapped to QString, with a warning).
      bool bKnown = true;
      // The declared length carries over to max_length (text types only).
      bool bLength = false;
   };

   static result map(enum_dialect eDialect, const db_column & column, const import_options & options);
   // The column default as the model's "default" text, or null when it is no C++ literal of that
   // type (functions, sequences, dates...).
   static QString defaultValue(const QString & sDefault, const QString & sCppType);

   // What the SQL export needs to write the column back as it was read (see model/sql_meta.h):
   // its generator, its own SQL type when the C++ type maps back to another one, the values an
   // enumeration type allows, and a default the C++ default cannot hold. Call it once the
   // property's type, length, key, unique and index flags are set.
   static void keepColumnForm(enum_dialect eDialect, const db_column & column, model::property & property);
   // The indexes no property flag holds (several columns, a prefix) and the foreign keys no
   // relation holds (on the primary-key column itself, or of several columns), as entity meta
   // data for the SQL export.
   static void keepTableForm(const db_catalog & catalog, const db_table & table, model::entity & entity);
   // On a refresh, what import-db keeps for the SQL export follows the database as the type does;
   // a forced type the user gave (without TAVREL_SQL_DIALECT) stays. True when something changed.
   static bool followSqlForm(model::property & kept, const model::property & fresh);
   static bool followSqlForm(model::entity & kept, const model::entity & fresh);
   // The column type the SQL export writes for a C++ type, spelt as the catalog reads it back.
   static QString exportedType(enum_dialect eDialect, const QString & sCppType, int iMaxLength, bool bKeyed);
   // A default as the export can write it on any database ('text', a number, CURRENT_TIMESTAMP...),
   // or null.
   static QString portableDefault(const QString & sDefault);
   static QString dialectName(enum_dialect eDialect);
};

} // namespace db_import
