#pragma once

#include <QLatin1String>
#include <QString>

namespace model {

// Meta data of a property that tells the SQL export what the C++ side of the model cannot: set
// by import-db, kept in the project file and the JSON model like any meta data.
namespace sql_meta {

// How the database numbers new rows: "autoincrement", "identity", "identity always" or "serial".
inline const QLatin1String k_sAutoIncrement("TAVREL_AUTO_INCREMENT");
// The database ("sqlite", "postgresql", "mariadb") whose spelling the forced SQL type is in.
inline const QLatin1String k_sTypeDialect("TAVREL_SQL_DIALECT");
// A default the C++ default cannot hold: a quoted text ('' too), a number or CURRENT_TIMESTAMP,
// CURRENT_DATE, CURRENT_TIME; also the default of a foreign-key column.
inline const QLatin1String k_sDefault("TAVREL_SQL_DEFAULT");
// The database ("sqlite", "postgresql", "mariadb") a default that calls a function without
// arguments (gen_random_uuid(), uuid(), random()) in TAVREL_SQL_DEFAULT is kept for; the
// others have no such function and get no default.
inline const QLatin1String k_sDefaultDialect("TAVREL_SQL_DEFAULT_DIALECT");
// The values a column allows (an enumeration type of the database), one a line.
inline const QLatin1String k_sValues("TAVREL_SQL_VALUES");
// The values a MariaDB SET column holds any combination of, one a line; other databases get
// the C++ type's column.
inline const QLatin1String k_sSetValues("TAVREL_SQL_SET_VALUES");
// "true" on a many-to-many relation: its join table's primary key starts with the
// foreign_key_owner column (without it, with the foreign_key column).
inline const QLatin1String k_sOwnerFirst("TAVREL_SQL_OWNER_FIRST");

// What the database does to the rows of a foreign key when the row it points at is deleted or
// its key changed: "CASCADE", "SET NULL", "SET DEFAULT" or "RESTRICT" (NO ACTION is the
// default and kept by no meta data). On a relation's property; "on_delete" and "on_update" in
// an entry of TAVREL_SQL_FOREIGN_KEYS.
inline const QLatin1String k_sOnDelete("TAVREL_SQL_ON_DELETE");
inline const QLatin1String k_sOnUpdate("TAVREL_SQL_ON_UPDATE");

// The action as SQL writes it ("set  null" gives "SET NULL"); empty for NO ACTION and for any
// other text, which must never reach a statement.
inline QString foreignKeyAction(const QString & sAction)
{
   const QString s = sAction.simplified().toUpper();
   for (const char * sWord : { "CASCADE", "SET NULL", "SET DEFAULT", "RESTRICT" }) { if (s == QLatin1String(sWord)) { return s; } }
   return QString();
}
// True when the text is one of the five actions (NO ACTION too) or empty.
inline bool isForeignKeyAction(const QString & sAction)
{
   return (sAction.isEmpty() || ! foreignKeyAction(sAction).isEmpty() || (sAction.simplified().toUpper() == QLatin1String("NO ACTION")));
}

// Entity meta data: the indexes no property flag holds (of several columns, or of a prefix), as
// a JSON array of {"unique": bool, "columns": [names], "lengths": [prefix lengths, 0 for whole]}.
inline const QLatin1String k_sIndexes("TAVREL_SQL_INDEXES");
// Entity meta data: foreign keys no relation holds (on the primary-key column itself, or of
// several columns), as a JSON array of {"column": name, "table": target table, "target": target
// column} or {"columns": [names], "table": target table, "targets": [target columns]}, with
// "on_delete" and "on_update" when the key has such an action.
inline const QLatin1String k_sForeignKeys("TAVREL_SQL_FOREIGN_KEYS");
// Entity meta data "true": the entity is a view of the database; the SQL export and migrations
// never make it a table.
inline const QLatin1String k_sView("TAVREL_VIEW");
// Entity meta data "true": the table has no primary key in the database (import-db chose the
// model's key); the SQL export writes the table without one. Remove it to have the key written.
inline const QLatin1String k_sNoKey("TAVREL_SQL_NO_KEY");

// True when the property is the key import-db chose for a table its database keeps without one.
template <typename Property>
bool isChosenKey(const Property & property)
{
   const auto pEntity = property.getEntity();
   return (property.isPrimaryKey() && pEntity && (pEntity->getMetaData(k_sNoKey).toString() == QLatin1String("true")));
}

} // namespace sql_meta

} // namespace model
