#include "sql_export/schema/sql_dialect.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QSet>

namespace sql_export {

QString sql_dialect::name() const
{
   switch (m_eDialect)
   {
      case dialect_postgresql: return QStringLiteral("postgresql");
      case dialect_mariadb: return QStringLiteral("mariadb");
      default: return QStringLiteral("sqlite");
   }
}

bool sql_dialect::parse(const QString & sText, enum_dialect & eResult)
{
   const QString s = sText.trimmed().toLower();
   if (s == "sqlite" || s == "sqlite3") { eResult = dialect_sqlite; return true; }
   if (s == "postgresql" || s == "postgres" || s == "pgsql") { eResult = dialect_postgresql; return true; }
   if (s == "mariadb" || s == "mysql") { eResult = dialect_mariadb; return true; }
   return false;
}

bool sql_dialect::isKeyword(const QString & sIdentifier)
{
   // The words of its own keyword list that one of the three databases refuses as a bare table
   // or column name (tests/sql_export/test_sql_keywords.cpp asks each). Quoting them for all
   // three keeps one model's scripts alike.
   static const QSet<QString> s_set {
      "accessible", "add", "all", "alter", "analyse", "analyze", "and", "any", "array", "as", "asc", "asensitive",
      "asymmetric", "authorization", "autoincrement", "before", "between", "bigint", "binary", "blob", "both", "by",
      "call", "cascade", "case", "cast", "change", "char", "character", "check", "collate", "collation", "column",
      "commit", "concurrently", "condition", "constraint", "continue", "convert", "create", "cross",
      "current_catalog", "current_date", "current_role", "current_schema", "current_time", "current_timestamp",
      "current_user", "cursor", "database", "databases", "day_hour", "day_microsecond", "day_minute", "day_second",
      "dec", "decimal", "declare", "default", "deferrable", "delayed", "delete", "delete_domain_id", "desc",
      "describe", "deterministic", "distinct", "distinctrow", "div", "do", "do_domain_ids", "double", "drop", "dual",
      "each", "else", "elseif", "enclosed", "end", "escape", "escaped", "except", "exists", "exit", "explain",
      "false", "fetch", "float", "float4", "float8", "for", "force", "foreign", "freeze", "from", "full", "fulltext",
      "grant", "group", "having", "high_priority", "hour_microsecond", "hour_minute", "hour_second", "if", "ignore",
      "ignore_domain_ids", "ilike", "in", "index", "infile", "initially", "inner", "inout", "insensitive", "insert",
      "int", "int1", "int2", "int3", "int4", "int8", "integer", "intersect", "interval", "into", "is", "isnull",
      "iterate", "join", "key", "keys", "kill", "lateral", "leading", "leave", "left", "like", "limit", "linear",
      "lines", "load", "localtime", "localtimestamp", "lock", "long", "longblob", "longtext", "loop", "low_priority",
      "master_demote_to_replica", "master_demote_to_slave", "master_ssl_verify_server_cert", "match", "maxvalue",
      "mediumblob", "mediumint", "mediumtext", "middleint", "minute_microsecond", "minute_second", "mod", "modifies",
      "natural", "no_write_to_binlog", "not", "nothing", "notnull", "null", "numeric", "offset", "on", "only",
      "optimize", "optionally", "or", "order", "out", "outer", "outfile", "over", "overlaps", "page_checksum",
      "parse_vcol_expr", "partition", "placing", "portion", "precision", "primary", "procedure", "purge", "raise",
      "range", "read", "read_write", "reads", "real", "recursive", "ref_system_id", "references", "regexp", "release",
      "rename", "repeat", "replace", "require", "resignal", "restrict", "return", "returning", "revoke", "right",
      "rlike", "row", "row_number", "rows", "schema", "schemas", "second_microsecond", "select", "sensitive",
      "separator", "session_user", "set", "show", "signal", "similar", "smallint", "some", "spatial", "specific",
      "sql", "sql_big_result", "sql_calc_found_rows", "sql_small_result", "sqlexception", "sqlstate", "sqlwarning",
      "ssl", "starting", "stats_auto_recalc", "stats_persistent", "stats_sample_pages", "straight_join", "symmetric",
      "table", "tablesample", "terminated", "then", "tinyblob", "tinyint", "tinytext", "to", "trailing",
      "transaction", "trigger", "true", "undo", "union", "unique", "unlock", "unsigned", "update", "usage", "use",
      "user", "using", "utc_date", "utc_time", "utc_timestamp", "values", "varbinary", "varchar", "varcharacter",
      "variadic", "varying", "verbose", "when", "where", "while", "window", "with", "write", "xor", "year_month",
      "zerofill" };
   return s_set.contains(sIdentifier.toLower());
}

QString sql_dialect::quote(const QString & sIdentifier) const
{
   // PostgreSQL folds bare names to lower case: a name with capitals keeps them only quoted.
   static const QRegularExpression s_rePlain("^[A-Za-z_][A-Za-z0-9_]*$");
   static const QRegularExpression s_reLower("^[a-z_][a-z0-9_]*$");
   const QRegularExpression & rePlain = ((m_eDialect == dialect_postgresql) ? s_reLower : s_rePlain);
   if (rePlain.match(sIdentifier).hasMatch() && ! isKeyword(sIdentifier)) { return sIdentifier; }
   const QChar cQuote = ((m_eDialect == dialect_mariadb) ? QChar('`') : QChar('"'));
   QString s = sIdentifier;
   s.replace(cQuote, QString(2, cQuote));
   return cQuote + s + cQuote;
}

QString sql_dialect::schemaOf(const QString & sTable) const
{
   // Only two plain names joined by one dot qualify: another name with a dot is one name.
   static const QRegularExpression s_reQualified("^([A-Za-z_][A-Za-z0-9_]*)\\.[A-Za-z_][A-Za-z0-9_]*$");
   if (m_eDialect == dialect_sqlite) { return QString(); }
   return s_reQualified.match(sTable).captured(1);
}

QString sql_dialect::bareTable(const QString & sTable) const
{
   const QString sSchema = schemaOf(sTable);
   return (sSchema.isEmpty() ? sTable : sTable.mid(sSchema.size() + 1));
}

QString sql_dialect::table(const QString & sTable) const
{
   const QString sSchema = schemaOf(sTable);
   return (sSchema.isEmpty() ? quote(sTable) : quote(sSchema) + '.' + quote(bareTable(sTable)));
}

QString sql_dialect::indexName(const QString & sTable, const QString & sIndex) const
{
   const QString sSchema = ((m_eDialect == dialect_postgresql) ? schemaOf(sTable) : QString());
   return (sSchema.isEmpty() ? quote(sIndex) : quote(sSchema) + '.' + quote(sIndex));
}

QString sql_dialect::literal(const QString & sText) const
{
   QString s = sText;
   // MariaDB reads a backslash as an escape inside a literal by default; PostgreSQL does so too
   // when standard_conforming_strings is off, but never inside E'': both get it doubled.
   const bool bBackslash = s.contains(QLatin1Char('\\'));
   if ((m_eDialect != dialect_sqlite) && bBackslash) { s.replace('\\', "\\\\"); }
   s.replace('\'', "''");
   s.remove(QChar(0));
   const QString sPrefix = (((m_eDialect == dialect_postgresql) && bBackslash) ? QStringLiteral("E") : QString());
   return sPrefix + '\'' + s + '\'';
}

QString sql_dialect::objectName(const QString & sPrefix, const QString & sTable, const QString & sColumn) const
{
   // A schema's dot would read as a qualifier: an index or a key is named within its schema.
   QString s = sPrefix + '_' + sTable + '_' + sColumn;
   s.replace('.', '_');
   if (s.size() <= maxNameLength()) { return s; }
   const QByteArray sum = QCryptographicHash::hash(s.toUtf8(), QCryptographicHash::Sha1).toHex().left(8);
   return s.left(maxNameLength() - 9) + '_' + QString::fromLatin1(sum);
}

} // namespace sql_export
