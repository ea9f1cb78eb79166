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

} // namespace

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
