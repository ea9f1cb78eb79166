#pragma once

#include <QList>
#include <QString>

namespace zy {

// One problem found by a validation: the message names the item and says what is wrong.
class ZyInvalidValue
{
   QString m_sMessage;
   QString m_sPath;

public:
   ZyInvalidValue() = default;
   explicit ZyInvalidValue(const QString & sMessage, const QString & sPath = QString())
      : m_sMessage(sMessage), m_sPath(sPath) { ; }

   QString getMessage() const { return m_sMessage; }
   QString getPath() const { return m_sPath; }
};

typedef QList<ZyInvalidValue> ZyInvalidValueX;

} // namespace zy
