#include "catalog_compare.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

#include "db_import/db_importer.h"
#include "db_import/import_options.h"
#include "db_import/type_mapping.h"

namespace sql_test {

namespace {

// One spelling per type: MariaDB's display widths of integers say nothing about the values.
QString typeText(const db_import::db_column & c)
{
   static const QRegularExpression reWidth("^(smallint|mediumint|int|bigint)\\(\\d+\\)");
   return c.sDeclared.toLower().simplified().replace(reWidth, "\\1");
}

// A default as a value: casts, brackets and the scale of a number left out.
QString defaultText(const QString & sDefault)
{
   if (sDefault.isNull()) { return QStringLiteral("(none)"); }
   QString s = db_import::type_mapping::portableDefault(sDefault);
   if (s.isNull()) { return sDefault.trimmed(); }
   bool bNumber = false;
   const double d = s.toDouble(& bNumber);
   return (bNumber ? QString::number(d, 'g', 15) : s);
}

// With the prefix lengths, which only MariaDB has.
QStringList indexTexts(const db_import::db_table & t, bool bLengths)
{
   QSet<QString> set;
   for (const db_import::db_index & i : t.lstIndexes)
   {
      // An index on an expression (a column without a name) is not kept by the import.
      if (i.lstColumns.contains(QString())) { continue; }
      QStringList lst;
      for (qsizetype k = 0; k < i.lstColumns.size(); ++k)
      { lst.append(i.lstColumns.at(k) + ((bLengths && (i.lstLengths.value(k) > 0)) ? QString("(%1)").arg(i.lstLengths.value(k)) : QString())); }
      set.insert((i.bUnique ? "unique (" : "index (") + lst.join(", ") + ")");
   }
   QStringList lst(set.begin(), set.end());
   lst.sort();
   return lst;
}

QStringList foreignKeyTexts(const db_import::db_table & t)
{
   QStringList lst;
   for (const db_import::db_foreign_key & k : t.lstForeignKeys)
   {
      lst.append("(" + k.lstColumns.join(", ") + ") -> " + k.sTargetTable + " (" + k.lstTargetColumns.join(", ") + ")"
                 + (k.sOnDelete.isEmpty() ? QString() : " on delete " + k.sOnDelete) + (k.sOnUpdate.isEmpty() ? QString() : " on update " + k.sOnUpdate));
   }
   lst.sort();
   return lst;
}

void compareColumns(const db_import::db_table & a, const db_import::db_table & b, bool bOther, QStringList & lst)
{
   for (const db_import::db_column & ca : a.lstColumns)
   {
      const db_import::db_column * cb = b.column(ca.sName);
      const QString sWhere = a.sName + "." + ca.sName;
      if (! cb) { lst.append(sWhere + ": missing"); continue; }
      // A key column takes no NULL whatever SQLite's catalog says of it.
      const bool bNotNullA = (ca.bNotNull || a.lstPrimaryKey.contains(ca.sName)), bNotNullB = (cb->bNotNull || b.lstPrimaryKey.contains(cb->sName));
      if (bNotNullA != bNotNullB) { lst.append(sWhere + ": NOT NULL " + QString::number(bNotNullA) + " / " + QString::number(bNotNullB)); }
      if (bOther)
      {
         if (ca.sGenerator.isEmpty() != cb->sGenerator.isEmpty()) { lst.append(sWhere + ": numbered " + QString::number(! ca.sGenerator.isEmpty()) + " / " + QString::number(! cb->sGenerator.isEmpty())); }
         continue;
      }
      if (typeText(ca) != typeText(* cb)) { lst.append(sWhere + ": type " + typeText(ca) + " / " + typeText(* cb)); }
      if (ca.sGenerator != cb->sGenerator) { lst.append(sWhere + ": generator '" + ca.sGenerator + "' / '" + cb->sGenerator + "'"); }
      // A generated column's default names its sequence, made anew with the table.
      if (ca.sGenerator.isEmpty() && (defaultText(ca.sDefault) != defaultText(cb->sDefault)))
      { lst.append(sWhere + ": default " + defaultText(ca.sDefault) + " / " + defaultText(cb->sDefault)); }
      if (ca.lstValues != cb->lstValues) { lst.append(sWhere + ": values " + ca.lstValues.join('|') + " / " + cb->lstValues.join('|')); }
   }
   for (const db_import::db_column & cb : b.lstColumns) { if (! a.column(cb.sName)) { lst.append(a.sName + "." + cb.sName + ": added"); } }
}

void compareList(const QString & sWhat, const QStringList & a, const QStringList & b, QStringList & lst)
{
   if (a != b) { lst.append(sWhat + ": " + a.join("; ") + " / " + b.join("; ")); }
}

} // namespace

bool readCatalog(const QString & sUrl, db_import::db_catalog & catalog, QString & sError)
{
   db_import::db_importer importer { db_import::import_options() };
   return importer.readSource(sUrl, QString(), catalog, sError);
}

namespace {

// The table of the same name in the other catalog: the default schema stands for the other's
// default schema (the two are different databases), any other schema for itself.
const db_import::db_table * sameTable(const db_import::db_catalog & from, const db_import::db_table & t, const db_import::db_catalog & in)
{
   return in.find(((t.sSchema == from.sDefaultSchema) ? in.sDefaultSchema : t.sSchema), t.sName);
}

} // namespace

QStringList catalogDifferences(const db_import::db_catalog & source, const db_import::db_catalog & copy, bool bOtherDatabase)
{
   QStringList lst;
   for (const db_import::db_table & a : source.lstTables)
   {
      // A view is never made again: the copy must not have it as a table either.
      if (a.bView) { if (sameTable(source, a, copy)) { lst.append(a.sName + ": a view made a table"); } continue; }
      const db_import::db_table * b = sameTable(source, a, copy);
      if (! b) { lst.append(a.sName + ": missing"); continue; }
      compareColumns(a, * b, bOtherDatabase, lst);
      compareList(a.sName + " primary key", a.lstPrimaryKey, b->lstPrimaryKey, lst);
      compareList(a.sName + " foreign keys", foreignKeyTexts(a), foreignKeyTexts(* b), lst);
      const QStringList lstCopyIndexes = indexTexts(* b, ! bOtherDatabase);
      QStringList lstKept;
      for (const QString & s : indexTexts(a, ! bOtherDatabase)) { if (! bOtherDatabase || lstCopyIndexes.contains(s)) { lstKept.append(s); } }
      compareList(a.sName + " indexes", indexTexts(a, ! bOtherDatabase), (bOtherDatabase ? lstKept : lstCopyIndexes), lst);
   }
   for (const db_import::db_table & b : copy.lstTables) { if (! sameTable(copy, b, source)) { lst.append(b.sName + ": added"); } }
   return lst;
}

} // namespace sql_test
