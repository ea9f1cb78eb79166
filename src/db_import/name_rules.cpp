#include "db_import/name_rules.h"

#include <QStringList>

#include "model/model_names.h"

namespace db_import {

namespace {

bool isAsciiWordChar(QChar c)
{
   return (((c >= 'a') && (c <= 'z')) || ((c >= 'A') && (c <= 'Z')) || ((c >= '0') && (c <= '9')));
}

// The words of a name: runs of ASCII letters and digits, accents dropped first.
QStringList words(const QString & s)
{
   const QString sPlain = s.normalized(QString::NormalizationForm_KD);
   QStringList lst;
   QString sWord;
   for (QChar c : sPlain)
   {
      if (c.category() == QChar::Mark_NonSpacing) { continue; }
      if (isAsciiWordChar(c)) { sWord += c; continue; }
      if (! sWord.isEmpty()) { lst.append(sWord); sWord.clear(); }
   }
   if (! sWord.isEmpty()) { lst.append(sWord); }
   return lst;
}

// Already an identifier but for a keyword or a leading digit: "keep" keeps it exactly.
bool isPlain(const QString & s)
{
   for (QChar c : s) { if (! isAsciiWordChar(c) && (c != '_')) { return false; } }
   return ! s.isEmpty();
}

QString upperFirst(const QString & s) { return (s.isEmpty() ? s : (s.left(1).toUpper() + s.mid(1))); }
QString lowerFirst(const QString & s) { return (s.isEmpty() ? s : (s.left(1).toLower() + s.mid(1))); }

} // namespace

QString name_rules::identifier(const QString & s, enum_style eStyle, const QString & sDigitPrefix, const QString & sEmpty)
{
   const QStringList lst = words(s);
   QString sName;
   switch (eStyle)
   {
      case style_keep: sName = (isPlain(s) ? s : lst.join('_')); break;
      case style_pascal: for (const QString & w : lst) { sName += upperFirst(w); } break;
      case style_camel:
         for (const QString & w : lst) { sName += (sName.isEmpty() ? lowerFirst(w) : upperFirst(w)); }
         break;
   }
   if (sName.isEmpty()) { return sEmpty; }
   if (sName.at(0).isDigit()) { sName = sDigitPrefix + sName; }
   if (model::model_names::isCppKeyword(sName)) { sName += '_'; }
   return sName;
}

QString name_rules::className(const QString & sTable, enum_style eStyle)
{
   return identifier(sTable, eStyle, "T", "Table");
}

QString name_rules::propertyName(const QString & sColumn, enum_style eStyle)
{
   return identifier(sColumn, eStyle, "c", "column");
}

QString name_rules::relationBase(const QString & sColumn)
{
   for (const char * suffix : { "_id", "_ID", "_Id", "_fk", "_FK", "Id", "ID" })
   {
      const QString s(suffix);
      if ((sColumn.size() > s.size()) && sColumn.endsWith(s)) { return sColumn.left(sColumn.size() - s.size()); }
   }
   return sColumn;
}

QString name_rules::plural(const QString & sName)
{
   if (sName.isEmpty() || ! isAsciiWordChar(sName.back())) { return sName; }
   const bool bUpper = (sName.back().isUpper() && (sName.size() > 1) && sName.at(sName.size() - 2).isUpper());
   const QString sLower = sName.toLower();
   auto suffixed = [&](qsizetype iCut, const char * szSuffix) {
      const QString sSuffix(szSuffix);
      return sName.left(sName.size() - iCut) + (bUpper ? sSuffix.toUpper() : sSuffix);
   };
   const QChar cBefore = ((sLower.size() > 1) ? sLower.at(sLower.size() - 2) : QChar());
   if (sLower.endsWith('y') && ! QString("aeiou").contains(cBefore)) { return suffixed(1, "ies"); }
   for (const char * szEnd : { "s", "x", "z", "ch", "sh" }) { if (sLower.endsWith(szEnd)) { return suffixed(0, "es"); } }
   return suffixed(0, "s");
}

QString name_rules::avoiding(const QString & sName, const QSet<QString> & setTypes)
{
   if (! setTypes.contains(sName)) { return sName; }
   const QString sLower = lowerFirst(sName);
   if ((sLower != sName) && ! setTypes.contains(sLower) && ! model::model_names::isCppKeyword(sLower)) { return sLower; }
   QString s = sName + '_';
   while (setTypes.contains(s)) { s += '_'; }
   return s;
}

QString name_rules::unique(const QString & sName, QSet<QString> & setTaken)
{
   QString s = sName;
   for (int i = 2; setTaken.contains(s); ++i) { s = sName + QString::number(i); }
   setTaken.insert(s);
   return s;
}

} // namespace db_import
