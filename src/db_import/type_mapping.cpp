#include "db_import/type_mapping.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include "db_import/import_options.h"
#include "model/entity.h"
#include "model/model_text_rules.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/sql_meta.h"

namespace db_import {

namespace {

enum enum_kind { kind_int, kind_long, kind_longlong, kind_bool, kind_double, kind_decimal, kind_text, kind_bytes,
                 kind_date, kind_time, kind_datetime, kind_uuid, kind_json };

typedef QHash<QString, enum_kind> type_table;

const type_table & sqliteTypes()
{
   // SQLite keeps any declared text: the usual names of every database are read.
   static const type_table s_table {
      { "integer", kind_long }, { "int", kind_int }, { "int2", kind_int }, { "int4", kind_int }, { "smallint", kind_int },
      { "tinyint", kind_int }, { "mediumint", kind_int }, { "bigint", kind_longlong }, { "int8", kind_longlong },
      { "unsigned big int", kind_longlong }, { "boolean", kind_bool }, { "bool", kind_bool },
      { "real", kind_double }, { "double", kind_double }, { "double precision", kind_double }, { "float", kind_double },
      { "numeric", kind_decimal }, { "decimal", kind_decimal },
      { "text", kind_text }, { "varchar", kind_text }, { "char", kind_text }, { "character", kind_text },
      { "varying character", kind_text }, { "character varying", kind_text }, { "nchar", kind_text },
      { "native character", kind_text }, { "nvarchar", kind_text }, { "clob", kind_text },
      { "blob", kind_bytes }, { "date", kind_date }, { "time", kind_time }, { "datetime", kind_datetime },
      { "timestamp", kind_datetime }, { "uuid", kind_uuid }, { "json", kind_json } };
   return s_table;
}

// A type SQLite's table above does not list is read as SQLite itself reads it, by the words in
// its name (the column's affinity): "BIGINT UNSIGNED" and "INT8 SIGNED" hold integers,
// "NVARCHAR2" text, "FLOAT8" doubles. Other names (NUMERIC affinity) stay unknown.
bool sqliteAffinity(const QString & sType, enum_kind & eKind)
{
   if (sType.contains("int")) { eKind = (sType.contains("big") ? kind_longlong : kind_long); return true; }
   if (sType.contains("char") || sType.contains("clob") || sType.contains("text")) { eKind = kind_text; return true; }
   if (sType.contains("blob")) { eKind = kind_bytes; return true; }
   if (sType.contains("real") || sType.contains("floa") || sType.contains("doub")) { eKind = kind_double; return true; }
   return false;
}

const type_table & postgresqlTypes()
{
   static const type_table s_table {
      { "smallint", kind_int }, { "integer", kind_int }, { "bigint", kind_longlong }, { "boolean", kind_bool },
      { "real", kind_double }, { "double precision", kind_double }, { "numeric", kind_decimal }, { "money", kind_decimal },
      { "text", kind_text }, { "character varying", kind_text }, { "character", kind_text }, { "citext", kind_text },
      { "bytea", kind_bytes }, { "date", kind_date }, { "time without time zone", kind_time }, { "time with time zone", kind_time },
      { "timestamp without time zone", kind_datetime }, { "timestamp with time zone", kind_datetime },
      { "uuid", kind_uuid }, { "json", kind_json }, { "jsonb", kind_json } };
   return s_table;
}

const type_table & mariadbTypes()
{
   static const type_table s_table {
      { "tinyint", kind_int }, { "smallint", kind_int }, { "mediumint", kind_int }, { "int", kind_int }, { "integer", kind_int },
      { "bigint", kind_longlong }, { "bool", kind_bool }, { "boolean", kind_bool }, { "bit", kind_bool },
      { "float", kind_double }, { "double", kind_double }, { "real", kind_double }, { "decimal", kind_decimal }, { "numeric", kind_decimal },
      { "char", kind_text }, { "varchar", kind_text }, { "tinytext", kind_text }, { "text", kind_text }, { "mediumtext", kind_text },
      { "longtext", kind_text }, { "enum", kind_text }, { "set", kind_text },
      { "binary", kind_bytes }, { "varbinary", kind_bytes }, { "tinyblob", kind_bytes }, { "blob", kind_bytes },
      { "mediumblob", kind_bytes }, { "longblob", kind_bytes },
      { "date", kind_date }, { "time", kind_time }, { "datetime", kind_datetime }, { "timestamp", kind_datetime },
      { "year", kind_int }, { "uuid", kind_uuid }, { "json", kind_json } };
   return s_table;
}

// MariaDB writes "int(11) unsigned", "tinyint(1)" (its boolean) and "enum('a','b')".
enum_kind mariadbKind(const db_column & column, enum_kind eKind, QString & sType)
{
   const bool bUnsigned = sType.endsWith(" unsigned") || sType.endsWith(" unsigned zerofill");
   if (bUnsigned) { sType = sType.section(' ', 0, 0); }
   if ((sType == "tinyint") && (column.iLength == 1)) { return kind_bool; }
   if ((sType == "bit") && (column.iLength > 1)) { return kind_longlong; }
   if (bUnsigned && (sType == "int" || sType == "integer")) { return kind_longlong; }
   return eKind;
}

QString cppType(enum_kind eKind, bool bDecimalAsString)
{
   switch (eKind)
   {
      case kind_int: return "int";
      case kind_long: return "long";
      case kind_longlong: return "qlonglong";
      case kind_bool: return "bool";
      case kind_double: return "double";
      case kind_decimal: return (bDecimalAsString ? "QString" : "double");
      case kind_bytes: return "QByteArray";
      case kind_date: return "QDate";
      case kind_time: return "QTime";
      case kind_datetime: return "QDateTime";
      case kind_uuid: return "QUuid";
      default: return "QString";
   }
}

// The declared type as the export's would be read back: lower case, MariaDB's display widths of
// integers left out ("int(11) unsigned" is "int unsigned"), but its boolean "tinyint(1)" kept.
QString comparableType(enum_dialect eDialect, const QString & sDeclared)
{
   static const QRegularExpression reWidth("^(tinyint|smallint|mediumint|int|integer|bigint)\\(\\d+\\)");
   QString s = sDeclared.toLower().simplified();
   if ((eDialect == dialect_mariadb) && ! s.startsWith("tinyint(1)")) { s.replace(reWidth, "\\1"); }
   return s;
}

} // namespace

QString type_mapping::dialectName(enum_dialect eDialect)
{
   switch (eDialect)
   {
      case dialect_postgresql: return QStringLiteral("postgresql");
      case dialect_mariadb: return QStringLiteral("mariadb");
      default: return QStringLiteral("sqlite");
   }
}

QString type_mapping::exportedType(enum_dialect eDialect, const QString & sCppType, int iMaxLength, bool bKeyed)
{
   const int i = static_cast<int>(eDialect);
   // One row per C++ type: SQLite, PostgreSQL, MariaDB (as the SQL export writes them).
   static const QHash<QString, QList<const char *> > s_hash {
      { "int", { "int", "integer", "int" } }, { "long", { "integer", "bigint", "bigint" } },
      { "qlonglong", { "bigint", "bigint", "bigint" } }, { "bool", { "boolean", "boolean", "tinyint(1)" } },
      { "double", { "real", "double precision", "double" } }, { "QByteArray", { "blob", "bytea", "longblob" } },
      { "QDate", { "date", "date", "date" } }, { "QTime", { "time", "time without time zone", "time" } },
      { "QDateTime", { "datetime", "timestamp without time zone", "datetime" } }, { "QUuid", { "uuid", "uuid", "uuid" } } };
   auto it = s_hash.constFind(sCppType);
   if (it != s_hash.constEnd()) { return QString::fromLatin1(it.value().at(i)); }
   if (iMaxLength > 0) { return QString((eDialect == dialect_postgresql) ? "character varying(%1)" : "varchar(%1)").arg(iMaxLength); }
   if (eDialect == dialect_postgresql) { return QStringLiteral("text"); }
   return (((eDialect == dialect_mariadb) && bKeyed) ? QStringLiteral("varchar(255)") : QStringLiteral("text"));
}

QString type_mapping::portableDefault(const QString & sDefault)
{
   static const QRegularExpression reCast("::(?:[a-z ]+|\"?[A-Za-z_][A-Za-z0-9_.]*\"?)(\\[\\])?$");
   static const QRegularExpression reNumber("^[-+]?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?$");
   static const QRegularExpression reText("^'(?:[^']|'')*'$");
   if (sDefault.isNull()) { return QString(); }
   QString s = sDefault.trimmed();
   // PostgreSQL's 'now' cast to a date or time is read when a row is written, as CURRENT_DATE is
   // (the text 'now' written as a default would be read once, when the table is made).
   static const QRegularExpression reNow("^\\(?'now'::text\\)?::(date|timestamp.*)$");
   const QRegularExpressionMatch now = reNow.match(s.toLower());
   if (now.hasMatch()) { return ((now.captured(1) == "date") ? QStringLiteral("CURRENT_DATE") : QStringLiteral("CURRENT_TIMESTAMP")); }
   s.remove(reCast);
   while (s.startsWith('(') && s.endsWith(')')) { s = s.mid(1, s.size() - 2).trimmed(); }
   if (reText.match(s).hasMatch() || reNumber.match(s).hasMatch()) { return s; }
   const QString sLower = s.toLower();
   // SQLite's datetime('now'), date('now') and time('now') give what the three words give.
   if ((sLower == "now()") || sLower.startsWith("current_timestamp") || (sLower == "datetime('now')")) { return QStringLiteral("CURRENT_TIMESTAMP"); }
   if ((sLower == "current_date") || (sLower == "curdate()") || (sLower == "date('now')")) { return QStringLiteral("CURRENT_DATE"); }
   if ((sLower == "current_time") || (sLower == "curtime()") || (sLower == "time('now')")) { return QStringLiteral("CURRENT_TIME"); }
   if ((sLower == "true") || (sLower == "false")) { return sLower.toUpper(); }
   return QString();
}

void type_mapping::keepColumnForm(enum_dialect eDialect, const db_column & column, model::property & property)
{
   if (! column.sGenerator.isEmpty()) { property.setMetaData(model::sql_meta::k_sAutoIncrement, column.sGenerator); }
   const model::property_type_ptr pType = property.getType();
   const QStringList & lstValues = column.lstValues;
   if (! lstValues.isEmpty()) { property.setMetaData(model::sql_meta::k_sValues, lstValues.join('\n')); }
   if (! column.lstSetValues.isEmpty()) { property.setMetaData(model::sql_meta::k_sSetValues, column.lstSetValues.join('\n')); }
   // A relation's column: only its default is kept, the type follows the key it points at.
   // PostgreSQL's enumeration type goes back by its name; MariaDB's ENUM is written from the values.
   if (pType && (lstValues.isEmpty() || (eDialect == dialect_postgresql)))
   {
      const bool bKeyed = ((property.isPrimaryKey() && ! model::sql_meta::isChosenKey(property)) || property.getUnique() || property.isIndex());
      const QString sBack = exportedType(eDialect, pType->getPrimitiveType(), property.getMaxLength().toInt(), bKeyed);
      const QString sOwn = comparableType(eDialect, column.sDeclared);
      if ((sOwn != sBack) && model::model_text_rules::sqlTypeProblem(sOwn).isEmpty())
      {
         // SQLite keeps the declared text as written, so it is given back as written.
         property.setForceSqlType((eDialect == dialect_sqlite) ? column.sDeclared.simplified() : sOwn);
         property.setMetaData(model::sql_meta::k_sTypeDialect, dialectName(eDialect));
      }
   }
   const bool bDefaultKept = (pType && ! pType->getDefaultValue().isEmpty());
   const QString sDefault = portableDefault(column.sDefault);
   // SQLite keeps a default as written: TRUE and FALSE are kept, the export writes a bool as 1 and 0.
   const bool bWord = ((eDialect == dialect_sqlite) && ((sDefault == "TRUE") || (sDefault == "FALSE")));
   if ((! bDefaultKept || bWord) && column.sGenerator.isEmpty() && ! sDefault.isEmpty()) { property.setMetaData(model::sql_meta::k_sDefault, sDefault); }
   // A function called without arguments is kept for its own database only.
   static const QRegularExpression reCall("^\\(?([A-Za-z_][A-Za-z0-9_]*\\(\\))\\)?$");
   const QRegularExpressionMatch call = reCall.match(column.sDefault.trimmed());
   if (! bDefaultKept && column.sGenerator.isEmpty() && sDefault.isEmpty() && call.hasMatch())
   {
      property.setMetaData(model::sql_meta::k_sDefault, call.captured(1));
      property.setMetaData(model::sql_meta::k_sDefaultDialect, dialectName(eDialect));
   }
}

namespace {

// A key's actions other than NO ACTION, beside its columns.
QJsonObject withActions(QJsonObject o, const db_foreign_key & k)
{
   if (! k.sOnDelete.isEmpty()) { o.insert("on_delete", k.sOnDelete); }
   if (! k.sOnUpdate.isEmpty()) { o.insert("on_update", k.sOnUpdate); }
   return o;
}

} // namespace

void type_mapping::keepTableForm(const db_catalog & catalog, const db_table & table, model::entity & entity)
{
   if (table.bView) { return; }
   QJsonArray lstIndexes;
   for (const db_index & i : table.lstIndexes)
   {
      // An expression's column has no name: such an index is left out.
      if (((i.lstColumns.size() < 2) && ! i.hasPrefix()) || i.lstColumns.contains(QString())) { continue; }
      QJsonArray lstLengths;
      for (int iLength : i.lstLengths) { lstLengths.append(iLength); }
      lstIndexes.append(QJsonObject { { "unique", i.bUnique }, { "columns", QJsonArray::fromStringList(i.lstColumns) }, { "lengths", lstLengths } });
   }
   if (! lstIndexes.isEmpty()) { entity.setMetaData(model::sql_meta::k_sIndexes, QString::fromUtf8(QJsonDocument(lstIndexes).toJson(QJsonDocument::Compact))); }
   QJsonArray lstKeys;
   for (const db_foreign_key & k : table.lstForeignKeys)
   {
      const QString sTarget = ((k.sTargetSchema == catalog.sDefaultSchema) ? k.sTargetTable : (k.sTargetSchema + "." + k.sTargetTable));
      if (k.lstColumns.size() > 1)
      {
         // No relation holds a key of several columns; SQLite names the target's key implicitly.
         const db_table * pTarget = catalog.find(k.sTargetSchema, k.sTargetTable);
         const QStringList lstTargets = (k.lstTargetColumns.isEmpty() && pTarget ? pTarget->lstPrimaryKey : k.lstTargetColumns);
         if (lstTargets.size() != k.lstColumns.size()) { continue; }
         lstKeys.append(withActions(QJsonObject { { "columns", QJsonArray::fromStringList(k.lstColumns) }, { "table", sTarget }, { "targets", QJsonArray::fromStringList(lstTargets) } }, k));
         continue;
      }
      if ((table.lstPrimaryKey.size() != 1) || (k.lstColumns != table.lstPrimaryKey) || (k.lstTargetColumns.size() != 1)) { continue; }
      lstKeys.append(withActions(QJsonObject { { "column", k.lstColumns.first() }, { "table", sTarget }, { "target", k.lstTargetColumns.first() } }, k));
   }
   if (! lstKeys.isEmpty()) { entity.setMetaData(model::sql_meta::k_sForeignKeys, QString::fromUtf8(QJsonDocument(lstKeys).toJson(QJsonDocument::Compact))); }
}

namespace {

bool followMeta(model::persistable & kept, const model::persistable & fresh, const QList<QLatin1String> & lstKeys)
{
   QMap<QString, QString> map = kept.getAllMetaData();
   const QMap<QString, QString> & mapFresh = fresh.getAllMetaData();
   bool bChanged = false;
   for (const QLatin1String & k : lstKeys)
   {
      if (map.value(k) == mapFresh.value(k) && (map.contains(k) == mapFresh.contains(k))) { continue; }
      bChanged = true;
      if (mapFresh.contains(k)) { map.insert(k, mapFresh.value(k)); } else { map.remove(k); }
   }
   if (bChanged) { kept.setAllMetaData(map); }
   return bChanged;
}

} // namespace

bool type_mapping::followSqlForm(model::property & kept, const model::property & fresh)
{
   bool bChanged = false;
   const bool bUsers = (! kept.getForceSqlType().isEmpty() && kept.getMetaData(model::sql_meta::k_sTypeDialect).toString().isEmpty());
   if (! bUsers && (kept.getForceSqlType() != fresh.getForceSqlType())) { kept.setForceSqlType(fresh.getForceSqlType()); bChanged = true; }
   QList<QLatin1String> lstKeys { model::sql_meta::k_sAutoIncrement, model::sql_meta::k_sDefault, model::sql_meta::k_sValues, model::sql_meta::k_sSetValues, model::sql_meta::k_sOwnerFirst,
                                  model::sql_meta::k_sDefaultDialect, model::sql_meta::k_sOnDelete, model::sql_meta::k_sOnUpdate };
   if (! bUsers) { lstKeys.append(model::sql_meta::k_sTypeDialect); }
   return followMeta(kept, fresh, lstKeys) || bChanged;
}

bool type_mapping::followSqlForm(model::entity & kept, const model::entity & fresh)
{
   return followMeta(kept, fresh, { model::sql_meta::k_sIndexes, model::sql_meta::k_sForeignKeys, model::sql_meta::k_sNoKey });
}

type_mapping::result type_mapping::map(enum_dialect eDialect, const db_column & column, const import_options & options)
{
   const type_table & table = ((eDialect == dialect_postgresql) ? postgresqlTypes() : ((eDialect == dialect_mariadb) ? mariadbTypes() : sqliteTypes()));
   QString sType = column.sType;
   if (eDialect == dialect_mariadb) { sType.remove(QRegularExpression("\\(.*\\)")); sType = sType.simplified(); }
   if ((eDialect == dialect_mariadb) && (sType.startsWith("enum") || sType.startsWith("set"))) { sType = sType.startsWith("enum") ? "enum" : "set"; }
   auto it = table.constFind(sType);
   bool bKnown = (it != table.constEnd());
   enum_kind eKind = (bKnown ? it.value() : kind_text);
   if (! bKnown && (eDialect == dialect_sqlite)) { bKnown = sqliteAffinity(sType, eKind); }
   if (eDialect == dialect_mariadb)
   {
      const QString sBase = sType.section(' ', 0, 0);
      if (! bKnown && table.contains(sBase)) { bKnown = true; eKind = table.value(sBase); }
      eKind = mariadbKind(column, eKind, sType);
   }
   result r;
   r.sType = cppType(eKind, options.bDecimalAsString);
   r.bKnown = bKnown;
   r.bLength = ((eKind == kind_text) && bKnown && (column.iLength > 0));
   return r;
}

QString type_mapping::defaultValue(const QString & sDefault, const QString & sCppType)
{
   static const QRegularExpression reCast("::(?:[a-z ]+|\"?[A-Za-z_][A-Za-z0-9_.]*\"?)(\\[\\])?$");
   static const QRegularExpression reInteger("^[-+]?\\d+$");
   static const QRegularExpression reNumber("^[-+]?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?$");
   if (sDefault.isNull()) { return QString(); }
   QString s = sDefault.trimmed();
   s.remove(reCast);
   while (s.startsWith('(') && s.endsWith(')')) { s = s.mid(1, s.size() - 2).trimmed(); }
   const bool bQuoted = ((s.size() >= 2) && s.startsWith('\'') && s.endsWith('\''));
   const QString sText = (bQuoted ? s.mid(1, s.size() - 2).replace("''", "'") : s);
   if (sCppType == "QString") { return (bQuoted ? sText : QString()); }
   if (sCppType == "bool")
   {
      const QString b = sText.toLower();
      if ((b == "1") || (b == "true") || (b == "t") || (b == "b'1'")) { return "true"; }
      if ((b == "0") || (b == "false") || (b == "f") || (b == "b'0'")) { return "false"; }
      return QString();
   }
   if ((sCppType == "int") || (sCppType == "long") || (sCppType == "qlonglong")) { return (reInteger.match(sText).hasMatch() ? sText : QString()); }
   // "0.00" (MariaDB writes the scale) and "0" are one default: written the shortest way.
   if (sCppType == "double") { return (reNumber.match(sText).hasMatch() ? QString::number(sText.toDouble(), 'g', 15) : QString()); }
   return QString();
}

} // namespace db_import
