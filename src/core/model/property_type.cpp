#include "model/property_type.h"

namespace model {

namespace {

QString wrapType(const char * szTemplate, const QString & sInner)
{
   // "QList<std::optional<int> >": the blank keeps ">>" out of nested template arguments.
   const bool bNested = sInner.endsWith(QChar('>'));
   return (QString::fromLatin1(szTemplate) + "<" + sInner + (bNested ? QString(" >") : QString(">")));
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
