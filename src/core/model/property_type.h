#pragma once

#include "model/persistable.h"

namespace model {

// C++ type of a property: primitive type text, optional wrapper (decoration) and collection.
class TAVRELCORE_EXPORT property_type : public persistable
{
public:
   enum enum_decoration { decoration_none = 0, decoration_shared_ptr = 1, decoration_qsharedpointer = 2, decoration_optional = 3 };
   enum enum_collection { collection_none = 0, collection_qlist = 1, collection_std_vector = 2 };

private:
   QString m_sPrimitiveType;
   int m_iDecoration = decoration_none;
   int m_iCollection = collection_none;
   QString m_sDefaultValue;
   std::weak_ptr<enumeration> m_pEnumeration;
   bool m_bFromEnumeration = false;

public:
   QString getPrimitiveType() const { return m_sPrimitiveType; }
   int getDecoration() const { return m_iDecoration; }
   int getCollection() const { return m_iCollection; }
   QString getDefaultValue() const { return m_sDefaultValue; }
   enumeration_ptr getEnumeration() const { return m_pEnumeration.lock(); }
   // The decorated, collected type text, for example "QList<std::optional<int> >". When the
   // inner text ends with ">" a blank goes before the closing ">" (valid in every C++ dialect and
   // the form the generated code has always used).
   QString getTypeText() const;
   // True when the primitive type text was derived from the property's enumeration (no "type"
   // was given); such a text follows the enumeration when it is renamed and is not dumped.
   bool isFromEnumeration() const { return m_bFromEnumeration; }

   void setPrimitiveType(const QString & s) { m_sPrimitiveType = s; }
   void setDecoration(int i) { m_iDecoration = i; }
   void setCollection(int i) { m_iCollection = i; }
   void setDefaultValue(const QString & s) { m_sDefaultValue = s; }
   void setEnumeration(const enumeration_ptr & p) { m_pEnumeration = p; }
   void setFromEnumeration(bool b) { m_bFromEnumeration = b; }
};

} // namespace model
