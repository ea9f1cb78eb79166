#pragma once

#include <QString>
#include <QStringList>

namespace db_import {

// How tables and columns become a model (the command-line options of import-db).
struct import_options
{
   enum enum_class_names { class_names_pascal, class_names_keep };
   enum enum_property_names { property_names_keep, property_names_camel };

   enum_class_names eClassNames = class_names_pascal;
   enum_property_names ePropertyNames = property_names_keep;
   // Every entity in this namespace instead of one per schema.
   QString sNamespace;
   bool bFixedNamespace = false;
   // numeric/decimal columns as QString instead of double.
   bool bDecimalAsString = false;
   // Nullable columns that are not keys get decoration "optional".
   bool bNullableOptional = false;
   bool bInverse = true;
   // A table or view without a primary key gets one chosen (model_mapper::chooseKey); false
   // keeps it keyless, as in the database (its generated C++ then does not compile).
   bool bChooseKeys = true;
   QStringList lstTables;
   QStringList lstExclude;
   // Refresh: remove what disappeared from the database instead of marking it obsolete.
   bool bPrune = false;
   // The dialect a DDL script is written in; -1: told by the script's own marks (ddl_dump::detect).
   int iDdlDialect = -1;
   // A DDL statement that SQLite cannot run fails the import instead of being skipped.
   bool bStrict = false;

   // True when the table name passes --tables and --exclude.
   bool accepts(const QString & sTable) const;
};

} // namespace db_import
