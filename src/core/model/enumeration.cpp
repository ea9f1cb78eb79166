#include "model/enumeration.h"

#include <QStringBuilder>

namespace model {

QString enumeration::getKey() const
{
   return (m_sNamespace.isEmpty() ? m_sName : QString(m_sNamespace % QLatin1String("::") % m_sName));
}

QString enumeration::getEnumName() const
{
   return (m_sEnumName.isEmpty() ? (QString("enum_") + m_sName) : m_sEnumName);
}

QString enumeration::getCppEnumType() const
{
   return (getKey() + "::enum_" + m_sName);
}

} // namespace model
