#include "model/property_type.h"

#include <QStringBuilder>

namespace model {

namespace {

QString wrapType(const char * szTemplate, const QString & sInner)
{
   // "QList<std::optional<int> >": the blank keeps ">>" out of nested template arguments.
   // Built in one allocation: type texts are asked for several times per property and file.
   const bool bNested = sInner.endsWith(QChar('>'));
   return (QLatin1String(szTemplate) % QLatin1Char('<') % sInner % (bNested ? QLatin1String(" >") : QLatin1String(">")));
}

} // namespace

QString property_type::getTypeText() const
{
   QString sType = m_sPrimitiveType;
   if (sType.isEmpty()) { return sType; }

   switch (m_iDecoration)
   {
      case decoration_shared_ptr: sType = wrapType("std::shared_ptr", sType); break;
      case decoration_qsharedpointer: sType = wrapType("QSharedPointer", sType); break;
      case decoration_optional: sType = wrapType("std::optional", sType); break;
      default: break;
   }

   switch (m_iCollection)
   {
      case collection_qlist: sType = wrapType("QList", sType); break;
      case collection_std_vector: sType = wrapType("std::vector", sType); break;
      default: break;
   }

   return sType;
}

} // namespace model
