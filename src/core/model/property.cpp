#include "model/property.h"

#include <QSet>
#include <QStringBuilder>

#include "model/entity.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace model {

namespace {

QString primitiveTypeOf(const property_type_ptr & pType)
{
   return (pType ? pType->getPrimitiveType() : QString());
}

const QSet<QString> & stringTypes()
{
   static const QSet<QString> s_set = { "QString", "std::string", "std::wstring", "QByteArray" };
   return s_set;
}

const QSet<QString> & decimalTypes()
{
   static const QSet<QString> s_set = { "float", "double", "long double", "qreal" };
   return s_set;
}

const QSet<QString> & integerTypes()
{
   static const QSet<QString> s_set = {
      "short", "int", "long", "long long", "unsigned", "unsigned short", "unsigned int", "unsigned long",
      "unsigned long long", "qlonglong", "qulonglong", "size_t", "std::size_t", "qint8", "qint16", "qint32",
      "qint64", "quint8", "quint16", "quint32", "quint64", "int8_t", "int16_t", "int32_t", "int64_t",
      "uint8_t", "uint16_t", "uint32_t", "uint64_t" };
   return s_set;
}

} // namespace

QString property::getTypeDesc(bool bTypedefLine, bool bAsRelation, const QString & sUnused) const
{
   Q_UNUSED(sUnused);
   if (! m_pRelation) { return (m_pType ? m_pType->getTypeText() : QString()); }

   if (bAsRelation)
   {
      // Qualified by the class so that it also works in out-of-class definitions.
      entity_ptr pEntity = getEntity();
      return (pEntity ? QString(pEntity->getName() % QLatin1String("::type_") % m_sName) : QString(QLatin1String("type_") % m_sName));
   }

   const QString sFull = m_pRelation->getRelationTypeText();
   if (bTypedefLine) { return (QLatin1String("typedef ") % sFull % QLatin1String(" type_") % m_sName % QLatin1Char(';')); }
   return sFull;
}

// The type text is compared as written: "const int" or "std::int32_t" are not recognised.
bool property::isString(bool, int) const { return stringTypes().contains(primitiveTypeOf(m_pType)); }
bool property::isBoolean(bool, int) const { return (primitiveTypeOf(m_pType) == QLatin1String("bool")); }
bool property::isDecimal(bool, int) const { return decimalTypes().contains(primitiveTypeOf(m_pType)); }

bool property::isNumber(bool, int) const
{
   const QString sType = primitiveTypeOf(m_pType);
   return (decimalTypes().contains(sType) || integerTypes().contains(sType));
}

} // namespace model
