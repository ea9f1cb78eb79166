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
   // A default as import-db keeps it when the C++ default cannot hold it ('text', a number,
   // CURRENT_TIMESTAMP, CURRENT_DATE, CURRENT_TIME) written for the database; empty for another text.
   static QString sqlDefaultLiteral(const sql_dialect & dialect, const QString & sDefault);

   struct translation
   {
      QString sType;   // empty when the type has no form in the target database
      QString sLoss;   // what the target's type does not keep, empty when nothing
   };
   // A type read from another database (its own spelling, as import-db forces it) in the target's.
   static translation translate(const sql_dialect & target, const QString & sType);
};

} // namespace sql_export
