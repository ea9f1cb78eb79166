#include "db_import/import_options.h"

#include <QRegularExpression>

namespace db_import {

namespace {

bool matchesAny(const QStringList & lstGlobs, const QString & s)
{
   for (const QString & sGlob : lstGlobs)
   {
      const QRegularExpression re(QRegularExpression::wildcardToRegularExpression(sGlob, QRegularExpression::UnanchoredWildcardConversion),
                                  QRegularExpression::CaseInsensitiveOption);
      if (re.match(s).hasMatch() && (re.match(s).capturedLength() == s.size())) { return true; }
   }
   return false;
}

} // namespace

bool import_options::accepts(const QString & sTable) const
{
   if (! lstTables.isEmpty() && ! matchesAny(lstTables, sTable)) { return false; }
   return ! matchesAny(lstExclude, sTable);
}

} // namespace db_import
