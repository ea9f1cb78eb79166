#include "model/sql_meta_edit.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

#include "model/entity.h"
#include "model/property.h"
#include "model/relationship.h"
#include "model/sql_meta.h"

namespace model {
namespace sql_meta {

namespace {

// A name, or each name of an array, renamed; true when one was.
bool renameIn(QJsonObject & o, const char * szKey, const QString & sOld, const QString & sNew)
{
   const QJsonValue v = o.value(QLatin1String(szKey));
   if (v.isString()) { if (v.toString() != sOld) { return false; } o.insert(QLatin1String(szKey), sNew); return true; }
   if (! v.isArray()) { return false; }
   QJsonArray lst = v.toArray();
   bool bChanged = false;
   for (qsizetype i = 0; i < lst.size(); ++i)
   {
      if (lst.at(i).toString() == sOld) { lst.replace(i, sNew); bChanged = true; }
   }
   if (bChanged) { o.insert(QLatin1String(szKey), lst); }
   return bChanged;
}

// Each object of the JSON array kept under sMeta, given to fn; written back when fn changed one.
bool editEntries(entity & e, const QString & sMeta, const std::function<bool(QJsonObject &)> & fn)
{
   const QString sText = e.getMetaData(sMeta).toString();
   if (sText.isEmpty()) { return false; }
   QJsonParseError error;
   const QJsonDocument doc = QJsonDocument::fromJson(sText.toUtf8(), & error);
   if ((error.error != QJsonParseError::NoError) || ! doc.isArray()) { return false; }
   QJsonArray lst = doc.array();
   bool bChanged = false;
   for (qsizetype i = 0; i < lst.size(); ++i)
   {
      if (! lst.at(i).isObject()) { continue; }
      QJsonObject o = lst.at(i).toObject();
      if (fn(o)) { lst.replace(i, o); bChanged = true; }
   }
   if (bChanged) { e.setMetaData(sMeta, QString::fromUtf8(QJsonDocument(lst).toJson(QJsonDocument::Compact))); }
   return bChanged;
}

} // namespace

QString tableOf(const entity & e) { return (e.getTableName().isEmpty() ? e.getName() : e.getTableName()); }

QString columnOf(const property & p)
{
   if (p.isTransient()) { return QString(); }
   const QString sColumn = (p.getColumnName().isEmpty() ? p.getName() : p.getColumnName());
   const relationship_ptr pRelation = p.getRelation();
   if (! pRelation) { return sColumn; }
   // The generated classes read a relation's key from the column named like its data member; a
   // one-to-one relation has one only when the model names its foreign key (else the two tables
   // share the primary key).
   switch (pRelation->getType())
   {
      case relationship::many_to_one: return sColumn;
      case relationship::one_to_one: return (pRelation->getForeignKey().isEmpty() ? QString() : sColumn);
      default: return QString();
   }
}

bool renameColumn(entity & e, const QString & sOld, const QString & sNew)
{
   if (sOld.isEmpty() || sNew.isEmpty() || (sOld == sNew)) { return false; }
   const bool bIndexes = editEntries(e, k_sIndexes, [&](QJsonObject & o) { return renameIn(o, "columns", sOld, sNew); });
   const bool bKeys = editEntries(e, k_sForeignKeys, [&](QJsonObject & o)
   {
      const bool bOne = renameIn(o, "column", sOld, sNew);
      const bool bSeveral = renameIn(o, "columns", sOld, sNew);
      return (bOne || bSeveral);
   });
   return (bIndexes || bKeys);
}

bool renameTargetColumn(entity & e, const QString & sTable, const QString & sOld, const QString & sNew)
{
   if (sOld.isEmpty() || sNew.isEmpty() || (sOld == sNew)) { return false; }
   return editEntries(e, k_sForeignKeys, [&](QJsonObject & o)
   {
      if (o.value(QLatin1String("table")).toString() != sTable) { return false; }
      const bool bOne = renameIn(o, "target", sOld, sNew);
      const bool bSeveral = renameIn(o, "targets", sOld, sNew);
      return (bOne || bSeveral);
   });
}

bool renameTargetTable(entity & e, const QString & sOld, const QString & sNew)
{
   if (sOld.isEmpty() || sNew.isEmpty() || (sOld == sNew)) { return false; }
   return editEntries(e, k_sForeignKeys, [&](QJsonObject & o) { return renameIn(o, "table", sOld, sNew); });
}

} // namespace sql_meta
} // namespace model
