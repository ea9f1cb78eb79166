#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"

namespace model {

// Base of every stored model item: a row id (0 = not stored) and free text meta data.
class TAVRELCORE_EXPORT persistable
{
protected:
   long m_lId = 0;
   QMap<QString, QString> m_mapMetaData;

public:
   persistable() = default;
   virtual ~persistable();

   long getId() const { return m_lId; }
   void setId(long l) { m_lId = l; }

   // A text value, so that toBool() is true for every text but "", "0" and "false".
   QVariant getMetaData(const QString & key) const;
   QStringList getAllMetaDataKeys() const { return m_mapMetaData.keys(); }
   const QMap<QString, QString> & getAllMetaData() const { return m_mapMetaData; }
   void setMetaData(const QString & key, const QString & value) { m_mapMetaData.insert(key, value); }
   void setAllMetaData(const QMap<QString, QString> & map) { m_mapMetaData = map; }
};

} // namespace model
