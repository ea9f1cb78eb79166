#pragma once

#include <QString>

#include "sql_export/schema/sql_dialect.h"

namespace sql_export {

// The column type of a C++ type, one table per database (the import's table read backwards, so
// that an exported schema imports to the same types; see the user guide).
class sql_types
{
public:
   struct result
   {
      QString sType;
      // False for a C++ type outside the table (written as text, with a warning).
      bool bKnown = true;
   };

   // iMaxLength > 0 gives a text type of that length; bKeyed asks for a type that a key or an
   // index accepts (MariaDB indexes no unbounded text).
   static result map(const sql_dialect & dialect, const QString & sCppType, int iMaxLength, bool bKeyed);
   // The model's default as an SQL literal of that C++ type, or empty when it has none.
   static QString defaultLiteral(const sql_dialect & dialect, const QString & sCppType, const QString & sDefault);
};

} // namespace sql_export
