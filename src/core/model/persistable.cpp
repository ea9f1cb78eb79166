#include "model/persistable.h"

namespace model {

persistable::~persistable() { ; }

QVariant persistable::getMetaData(const QString & key) const
{
   // A missing key gives an invalid variant: toBool() false, toString() empty.
   auto itr = m_mapMetaData.constFind(key);
   return ((itr == m_mapMetaData.constEnd()) ? QVariant() : QVariant(itr.value()));
}

} // namespace model
