#pragma once

#include <QString>

#include "db_import/db_catalog.h"

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
};

} // namespace db_import
