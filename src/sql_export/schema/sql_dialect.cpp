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
   // Words reserved by at least one of the three databases: quoting them everywhere keeps one
   // model's scripts alike.
   static const QSet<QString> s_set {
      "add", "all", "alter", "analyze", "and", "any", "array", "as", "asc", "between", "both", "by", "case", "cast",
      "change", "check", "collate", "column", "constraint", "create", "cross", "current_date", "current_time",
      "current_timestamp", "current_user", "database", "default", "delete", "desc", "describe", "distinct", "div",
      "do", "drop", "else", "end", "except", "exists", "explain", "false", "fetch", "for", "foreign", "from", "full",
      "grant", "group", "having", "if", "in", "index", "inner", "insert", "interval", "intersect", "into", "is",
      "join", "key", "keys", "leading", "left", "like", "limit", "lock", "match", "natural", "not", "null", "offset",
      "on", "only", "or", "order", "outer", "primary", "range", "read", "references", "rename", "replace",
      "restrict", "right", "row", "rows", "schema", "select", "set", "show", "table", "then", "to", "trailing",
      "transaction", "trigger", "true", "union", "unique", "update", "usage", "user", "using", "values", "when",
      "where", "window", "with", "write" };
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
   const QString s = sPrefix + '_' + sTable + '_' + sColumn;
   if (s.size() <= maxNameLength()) { return s; }
   const QByteArray sum = QCryptographicHash::hash(s.toUtf8(), QCryptographicHash::Sha1).toHex().left(8);
   return s.left(maxNameLength() - 9) + '_' + QString::fromLatin1(sum);
}

} // namespace sql_export
