#include "model/plugin_params.h"

#include <QBuffer>
#include <QDataStream>
#include <QSqlQuery>

#include "zy/ZySession.h"

namespace model {

namespace {

// Values are stored in "param_value" with their QMetaType id in "param_type". SQLite keeps
// integers, reals, texts and blobs as they are; any other type is kept as a QDataStream image of
// the variant, so that every type survives the round trip.
bool isStoredAsIs(int iType)
{
   switch (iType)
   {
      case QMetaType::Bool: case QMetaType::Int: case QMetaType::UInt: case QMetaType::LongLong: case QMetaType::ULongLong:
      case QMetaType::Long: case QMetaType::ULong: case QMetaType::Short: case QMetaType::UShort:
      case QMetaType::Char: case QMetaType::SChar: case QMetaType::UChar:
      case QMetaType::Double: case QMetaType::Float:
      case QMetaType::QString: case QMetaType::QByteArray:
         return true;
      default:
         return false;
   }
}

QVariant toStored(const QVariant & value)
{
   if (! value.isValid()) { return QVariant(); }
   const int iType = value.metaType().id();
   if (iType == QMetaType::Bool) { return QVariant(qlonglong(value.toBool() ? 1 : 0)); }
   if (isStoredAsIs(iType)) { return value; }
   QByteArray image;
   QDataStream stream(& image, QIODevice::WriteOnly);
   stream << value;
   return QVariant(image);
}

QVariant fromStored(const QVariant & stored, const QVariant & typeId)
{
   if (typeId.isNull() || ! typeId.isValid()) { return (stored.isNull() ? QVariant() : stored); }
   const int iType = typeId.toInt();
   if (iType == QMetaType::UnknownType) { return QVariant(); }
   if (isStoredAsIs(iType))
   {
      QVariant result = stored;
      if (stored.isNull()) { return QVariant(QMetaType(iType)); }
      // A value that does not convert becomes the type's default (0, false, empty).
      if (! result.convert(QMetaType(iType))) { return QVariant(QMetaType(iType)); }
      return result;
   }
   QVariant result;
   QByteArray image = stored.toByteArray();
   QDataStream stream(& image, QIODevice::ReadOnly);
   stream >> result;
   return ((stream.status() == QDataStream::Ok) ? result : QVariant(QMetaType(iType)));
}

QSqlDatabase databaseOf(QSqlDatabase * pDatabase)
{
   return (pDatabase ? (* pDatabase) : QSqlDatabase());
}

QSqlError noDatabaseError()
{
   return QSqlError(QString(), "no project database is open", QSqlError::ConnectionError);
}

} // namespace

QSqlError plugin_params::fetchByGuid(const QString & guid, list_of_plugin_params & result, QSqlDatabase * pDatabase)
{
   result.clear();
   QSqlDatabase database = databaseOf(pDatabase);
   if (! database.isValid() || ! database.isOpen()) { return noDatabaseError(); }

   QSqlQuery query(database);
   query.setForwardOnly(true);
   if (! query.prepare("SELECT id, plugin_guid, param_key, param_value, param_type FROM t_plugin_params "
                       "WHERE plugin_guid = ? ORDER BY id")) { return query.lastError(); }
   query.addBindValue(guid);
   if (! query.exec()) { return query.lastError(); }
   while (query.next())
   {
      auto pItem = std::make_shared<plugin_params>();
      pItem->setId(long(query.value(0).toLongLong()));
      pItem->setGuid(query.value(1).toString());
      pItem->setParamKey(query.value(2).toString());
      pItem->setParamValue(fromStored(query.value(3), query.value(4)));
      result.insert(pItem->getId(), pItem);
   }
   return query.lastError();
}

QSqlError plugin_params::deleteByGuid(const QString & guid, QSqlDatabase * pDatabase)
{
   QSqlDatabase database = databaseOf(pDatabase);
   if (! database.isValid() || ! database.isOpen()) { return noDatabaseError(); }

   QSqlQuery query(database);
   if (! query.prepare("DELETE FROM t_plugin_params WHERE plugin_guid = ?")) { return query.lastError(); }
   query.addBindValue(guid);
   if (! query.exec()) { return query.lastError(); }
   return QSqlError();
}

QSqlError plugin_params::insert(list_of_plugin_params & items, QSqlDatabase * pDatabase)
{
   QSqlDatabase database = databaseOf(pDatabase);
   if (! database.isValid() || ! database.isOpen()) { return noDatabaseError(); }

   // All or nothing, also when the caller has no transaction of its own: a savepoint nests
   // inside an open transaction and acts as one outside.
   QSqlQuery savepoint(database);
   if (! savepoint.exec("SAVEPOINT tavrel_plugin_params_insert")) { return savepoint.lastError(); }

   QSqlError error;
   QList<long> lstNewIds;
   {
      QSqlQuery query(database);
      if (! query.prepare("INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) VALUES (?, ?, ?, ?)"))
      { error = query.lastError(); }
      for (const auto & item : items)
      {
         if (error.isValid()) { break; }
         const plugin_params_ptr & pItem = item.second;
         if (! pItem) { continue; }
         const QVariant value = pItem->getParamValue();
         query.addBindValue(pItem->getGuid());
         query.addBindValue(pItem->getParamKey());
         query.addBindValue(toStored(value));
         query.addBindValue(value.isValid() ? QVariant(value.metaType().id()) : QVariant(int(QMetaType::UnknownType)));
         if (! query.exec()) { error = query.lastError(); break; }
         lstNewIds.append(long(query.lastInsertId().toLongLong()));
      }
   }

   if (error.isValid())
   {
      savepoint.exec("ROLLBACK TO tavrel_plugin_params_insert");
      savepoint.exec("RELEASE tavrel_plugin_params_insert");
      return error;
   }
   if (! savepoint.exec("RELEASE tavrel_plugin_params_insert")) { return savepoint.lastError(); }

   // The records take the ids of their rows, as after any insert.
   qsizetype i = 0;
   for (const auto & item : items)
   {
      if (! item.second) { continue; }
      item.second->setId(lstNewIds.at(i++));
   }
   return QSqlError();
}

QSqlError plugin_params::replaceByGuid(const QString & guid, const list_of_values & values, QSqlDatabase * pDatabase)
{
   if (! pDatabase) { return deleteByGuid(guid, pDatabase); }
   zy::ZySession session(* pDatabase);
   list_of_plugin_params lst;
   for (const auto & value : values)
   {
      auto p = std::make_shared<plugin_params>();
      p->setGuid(guid);
      p->setParamKey(value.first);
      p->setParamValue(value.second);
      lst.insert(lst.count() + 1, p);
   }
   if (session.isValid()) { session += deleteByGuid(guid, session.database()); }
   if (session.isValid()) { session += insert(lst, session.database()); }
   return session.firstError();
}

} // namespace model
