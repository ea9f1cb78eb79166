#include "sql_export/schema/sql_types.h"

#include <QHash>
#include <QRegularExpression>

namespace sql_export {

namespace {

enum enum_kind { kind_int, kind_long, kind_longlong, kind_bool, kind_double, kind_text, kind_bytes,
                 kind_date, kind_time, kind_datetime, kind_uuid };

const QHash<QString, enum_kind> & cppKinds()
{
   static const QHash<QString, enum_kind> s_hash {
      { "int", kind_int }, { "short", kind_int }, { "qint32", kind_int }, { "qint16", kind_int }, { "qint8", kind_int },
      { "unsigned int", kind_longlong }, { "uint", kind_longlong }, { "quint32", kind_longlong },
      { "unsigned short", kind_int }, { "quint16", kind_int }, { "quint8", kind_int }, { "char", kind_int },
      { "long", kind_long }, { "qlonglong", kind_longlong }, { "qint64", kind_longlong }, { "long long", kind_longlong },
      { "bool", kind_bool }, { "double", kind_double }, { "float", kind_double }, { "qreal", kind_double },
      { "QString", kind_text }, { "std::string", kind_text }, { "QByteArray", kind_bytes },
      { "QDate", kind_date }, { "QTime", kind_time }, { "QDateTime", kind_datetime }, { "QUuid", kind_uuid } };
   return s_hash;
}

QString textType(const sql_dialect & dialect, int iMaxLength, bool bKeyed)
{
   if (iMaxLength > 0) { return QString((dialect.kind() == dialect_postgresql) ? "character varying(%1)" : "VARCHAR(%1)").arg(iMaxLength); }
   if (dialect.kind() == dialect_postgresql) { return "text"; }
   return (((dialect.kind() == dialect_mariadb) && bKeyed) ? "VARCHAR(255)" : "TEXT");
}

QString typeOf(const sql_dialect & dialect, enum_kind eKind)
{
   const int i = static_cast<int>(dialect.kind());
   // One row per kind: SQLite, PostgreSQL, MariaDB.
   static const char * const s_table[][3] = {
      { "INT", "integer", "INT" },
      { "INTEGER", "bigint", "BIGINT" },
      { "BIGINT", "bigint", "BIGINT" },
      { "BOOLEAN", "boolean", "BOOLEAN" },
      { "REAL", "double precision", "DOUBLE" },
      { "TEXT", "text", "TEXT" },
      { "BLOB", "bytea", "LONGBLOB" },
      { "DATE", "date", "DATE" },
      { "TIME", "time", "TIME" },
      { "DATETIME", "timestamp", "DATETIME" },
      { "UUID", "uuid", "UUID" } };
   return QString::fromLatin1(s_table[eKind][i]);
}

struct type_forms
{
   const char * sForms[3];   // SQLite, PostgreSQL, MariaDB; "%p" stands for the parameters read
   const char * sLoss[3];    // what each loses, or null
};

// The types import-db forces, by their base name, lower case, without parameters.
const QHash<QString, type_forms> & typeForms()
{
   static const char * const k_sZone = "the time zone is not kept";
   static const QHash<QString, type_forms> s_hash {
      { "tinyint", { { "TINYINT", "smallint", "TINYINT" }, {} } },
      { "smallint", { { "SMALLINT", "smallint", "SMALLINT" }, {} } },
      { "int2", { { "SMALLINT", "smallint", "SMALLINT" }, {} } },
      { "mediumint", { { "MEDIUMINT", "integer", "MEDIUMINT" }, {} } },
      { "int", { { "INT", "integer", "INT" }, {} } },
      { "integer", { { "INTEGER", "integer", "INT" }, {} } },
      { "int4", { { "INT", "integer", "INT" }, {} } },
      { "bigint", { { "BIGINT", "bigint", "BIGINT" }, {} } },
      { "int8", { { "BIGINT", "bigint", "BIGINT" }, {} } },
      { "year", { { "SMALLINT", "smallint", "YEAR" }, { "a year is a plain number", "a year is a plain number", nullptr } } },
      { "numeric", { { "NUMERIC%p", "numeric%p", "DECIMAL%p" }, {} } },
      { "decimal", { { "DECIMAL%p", "numeric%p", "DECIMAL%p" }, {} } },
      { "money", { { "NUMERIC(19,2)", "money", "DECIMAL(19,2)" }, { "the currency format is not kept", nullptr, "the currency format is not kept" } } },
      { "real", { { "REAL", "real", "FLOAT" }, {} } },
      { "float4", { { "REAL", "real", "FLOAT" }, {} } },
      { "float", { { "FLOAT", "real", "FLOAT" }, {} } },
      { "double", { { "DOUBLE", "double precision", "DOUBLE" }, {} } },
      { "double precision", { { "DOUBLE PRECISION", "double precision", "DOUBLE" }, {} } },
      { "float8", { { "DOUBLE", "double precision", "DOUBLE" }, {} } },
      { "char", { { "CHAR%p", "character%p", "CHAR%p" }, {} } },
      { "character", { { "CHARACTER%p", "character%p", "CHAR%p" }, {} } },
      { "varchar", { { "VARCHAR%p", "character varying%p", "VARCHAR%p" }, {} } },
      { "character varying", { { "VARCHAR%p", "character varying%p", "VARCHAR%p" }, {} } },
      { "tinytext", { { "TEXT", "text", "TINYTEXT" }, {} } },
      { "mediumtext", { { "TEXT", "text", "MEDIUMTEXT" }, {} } },
      { "longtext", { { "TEXT", "text", "LONGTEXT" }, {} } },
      { "text", { { "TEXT", "text", "TEXT" }, {} } },
      { "binary", { { "BLOB", "bytea", "BINARY%p" }, {} } },
      { "varbinary", { { "BLOB", "bytea", "VARBINARY%p" }, {} } },
      { "tinyblob", { { "BLOB", "bytea", "TINYBLOB" }, {} } },
      { "blob", { { "BLOB", "bytea", "BLOB" }, {} } },
      { "mediumblob", { { "BLOB", "bytea", "MEDIUMBLOB" }, {} } },
      { "longblob", { { "BLOB", "bytea", "LONGBLOB" }, {} } },
      { "bytea", { { "BLOB", "bytea", "LONGBLOB" }, {} } },
      { "date", { { "DATE", "date", "DATE" }, {} } },
      { "time", { { "TIME", "time%p", "TIME%p" }, {} } },
      { "time without time zone", { { "TIME", "time%p", "TIME%p" }, {} } },
      { "time with time zone", { { "TIME", "time%p with time zone", "TIME%p" }, { k_sZone, nullptr, k_sZone } } },
      { "timetz", { { "TIME", "time%p with time zone", "TIME%p" }, { k_sZone, nullptr, k_sZone } } },
      { "datetime", { { "DATETIME", "timestamp%p", "DATETIME%p" }, {} } },
      { "timestamp", { { "TIMESTAMP", "timestamp%p", "DATETIME%p" }, {} } },
      { "timestamp without time zone", { { "DATETIME", "timestamp%p", "DATETIME%p" }, {} } },
      { "timestamp with time zone", { { "DATETIME", "timestamp%p with time zone", "DATETIME%p" }, { k_sZone, nullptr, k_sZone } } },
      { "timestamptz", { { "DATETIME", "timestamp%p with time zone", "DATETIME%p" }, { k_sZone, nullptr, k_sZone } } },
      { "boolean", { { "BOOLEAN", "boolean", "BOOLEAN" }, {} } },
      { "bool", { { "BOOLEAN", "boolean", "BOOLEAN" }, {} } },
      { "uuid", { { "UUID", "uuid", "UUID" }, {} } },
      { "json", { { "JSON", "json", "JSON" }, {} } },
      { "jsonb", { { "JSON", "jsonb", "JSON" }, { "the binary form is not kept", nullptr, "the binary form is not kept" } } } };
   return s_hash;
}

// An unsigned integer goes to the next wider signed type where the database has no unsigned one.
QString unsignedForm(const QString & sBase, enum_dialect eTarget)
{
   if (eTarget == dialect_mariadb) { return QString(); }
   static const QHash<QString, QStringList> s_hash {
      { "tinyint", { "SMALLINT", "smallint" } }, { "smallint", { "INT", "integer" } }, { "mediumint", { "INT", "integer" } },
      { "int", { "BIGINT", "bigint" } }, { "integer", { "BIGINT", "bigint" } }, { "bigint", { "NUMERIC(20)", "numeric(20)" } } };
   return s_hash.value(sBase).value(int(eTarget));
}

} // namespace

sql_types::translation sql_types::translate(const sql_dialect & target, const QString & sType)
{
   static const QRegularExpression reType("^([a-z][a-z0-9 ]*)(\\(\\s*\\d+\\s*(?:,\\s*\\d+\\s*)?\\))?([a-z ]*)$");
   translation t;
   QString s = sType.toLower().simplified();
   bool bUnsigned = false;
   for (const char * sWord : { " zerofill", " unsigned" })
   {
      if (s.endsWith(QLatin1String(sWord))) { s.chop(int(qstrlen(sWord))); bUnsigned = bUnsigned || (QLatin1String(sWord) == QLatin1String(" unsigned")); }
   }
   const QRegularExpressionMatch m = reType.match(s);
   if (! m.hasMatch()) { return t; }
   // "timestamp(3) with time zone": the words after the parameters belong to the name.
   const QString sBase = (m.captured(1) + ' ' + m.captured(3)).simplified();
   QString sParameters = m.captured(2).remove(' ');
   const int i = static_cast<int>(target.kind());
   if (bUnsigned)
   {
      const QString sWider = unsignedForm(sBase, target.kind());
      if (! sWider.isEmpty()) { t.sType = sWider; return t; }
      if (target.kind() == dialect_mariadb && typeForms().contains(sBase)) { t.sType = QString::fromLatin1(typeForms().value(sBase).sForms[i]) + " UNSIGNED"; return t; }
   }
   auto it = typeForms().constFind(sBase);
   if (it == typeForms().constEnd()) { return t; }
   // MariaDB's VARCHAR needs a length; an unbounded PostgreSQL numeric has MariaDB's widest form.
   if (sParameters.isEmpty() && (target.kind() == dialect_mariadb) && sBase.contains("char")) { sParameters = "(255)"; t.sLoss = "no length given, 255 taken"; }
   if (sParameters.isEmpty() && (target.kind() == dialect_mariadb) && ((sBase == "numeric") || (sBase == "decimal"))) { sParameters = "(65,30)"; t.sLoss = "unbounded, written with 65 digits"; }
   t.sType = QString::fromLatin1(it.value().sForms[i]).replace("%p", sParameters);
   if (it.value().sLoss[i]) { t.sLoss = QString::fromLatin1(it.value().sLoss[i]); }
   return t;
}

QString sql_types::sqlDefaultLiteral(const sql_dialect & dialect, const QString & sDefault)
{
   static const QRegularExpression reText("^'((?:[^']|'')*)'$");
   static const QRegularExpression reNumber("^[-+]?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?$");
   const QString s = sDefault.trimmed();
   const QRegularExpressionMatch m = reText.match(s);
   // Quoted again by the dialect: the kept text never ends the literal early.
   if (m.hasMatch()) { return dialect.literal(m.captured(1).replace("''", "'")); }
   if (reNumber.match(s).hasMatch()) { return s; }
   const QString sUpper = s.toUpper();
   if ((sUpper == "CURRENT_TIMESTAMP") || (sUpper == "CURRENT_DATE") || (sUpper == "CURRENT_TIME")) { return sUpper; }
   if ((sUpper == "TRUE") || (sUpper == "FALSE")) { return sUpper; }
   return QString();
}

sql_types::result sql_types::map(const sql_dialect & dialect, const QString & sCppType, int iMaxLength, bool bKeyed)
{
   result r;
   QString sType = sCppType.simplified();
   if (sType.startsWith("const ")) { sType = sType.mid(6); }
   auto it = cppKinds().constFind(sType);
   r.bKnown = (it != cppKinds().constEnd());
   const enum_kind eKind = (r.bKnown ? it.value() : kind_text);
   r.sType = ((eKind == kind_text) ? textType(dialect, iMaxLength, bKeyed) : typeOf(dialect, eKind));
   return r;
}

QString sql_types::defaultLiteral(const sql_dialect & dialect, const QString & sCppType, const QString & sDefault)
{
   static const QRegularExpression s_reNumber("^[-+]?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?$");
   static const QRegularExpression s_reInteger("^[-+]?\\d+$");
   if (sDefault.isEmpty()) { return QString(); }
   auto it = cppKinds().constFind(sCppType.simplified());
   if (it == cppKinds().constEnd()) { return QString(); }
   QString s = sDefault.trimmed();
   switch (it.value())
   {
      case kind_text:
         // The model holds the bare text, spaces included.
         return dialect.literal(sDefault);
      case kind_bool:
         if (s == "true") { return ((dialect.kind() == dialect_postgresql) ? "true" : "1"); }
         if (s == "false") { return ((dialect.kind() == dialect_postgresql) ? "false" : "0"); }
         return QString();
      case kind_int: case kind_long: case kind_longlong:
         return (s_reInteger.match(s).hasMatch() ? s : QString());
      case kind_double:
         return (s_reNumber.match(s).hasMatch() ? QString::number(s.toDouble(), 'g', 15) : QString());
      default: return QString();
   }
}

} // namespace sql_export
