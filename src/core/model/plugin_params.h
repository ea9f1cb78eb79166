#pragma once

#include <QSqlDatabase>
#include <QList>
#include <QPair>
#include <QSqlError>
#include <QString>
#include <QVariant>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyCollection.h"

namespace model {

// One plug-in setting record of table "t_plugin_params".
class TAVRELCORE_EXPORT plugin_params
{
   long m_lId = 0;
   QString m_sGuid;
   QString m_sParamKey;
   QVariant m_vParamValue;

public:
   typedef zy::ZyCollection<long, plugin_params_ptr> list_of_plugin_params;

   long getId() const { return m_lId; }
   QString getGuid() const { return m_sGuid; }
   QString getParamKey() const { return m_sParamKey; }
   QVariant getParamValue() const { return m_vParamValue; }
   void setId(long l) { m_lId = l; }
   void setGuid(const QString & s) { m_sGuid = s; }
   void setParamKey(const QString & s) { m_sParamKey = s; }
   void setParamValue(const QVariant & v) { m_vParamValue = v; }

   // Data access on the database the caller hands over (a context's scope, as a rule); the
   // model knows no context. Without an open database each one fails with a connection error.
   static QSqlError fetchByGuid(const QString & guid, list_of_plugin_params & result, QSqlDatabase * pDatabase);
   static QSqlError deleteByGuid(const QString & guid, QSqlDatabase * pDatabase);
   static QSqlError insert(list_of_plugin_params & items, QSqlDatabase * pDatabase);

   // A plug-in's settings as key and value, in the order their records are written.
   typedef QList<QPair<QString, QVariant> > list_of_values;
   // Replaces every record of the plug-in by these in one session: all or nothing is kept.
   static QSqlError replaceByGuid(const QString & guid, const list_of_values & values, QSqlDatabase * pDatabase);
};

} // namespace model
