#pragma once

#include "model/persistable.h"

namespace model {

class TAVRELCORE_EXPORT property : public persistable
{
public:
   enum enum_accessibility { access_public = 0, access_protected = 1, access_private = 2 };

private:
   // The fields most properties leave unset, held apart and made on the first set: a model of a
   // million entities has millions of properties, and these would triple the size of each.
   struct rare_fields
   {
      QString sEnumerationKey;
      QString sColumnName;
      QString sGetMethod;
      QString sSetMethod;
      QVariant vMinValue;
      QVariant vMaxValue;
      QVariant vMinLength;
      QVariant vMaxLength;
      QString sRegExp;
      QString sForceSqlType;
      QString sForceSqlAlias;
      QString sFormat;
   };

   // Copies its fields along with the property.
   class rare_holder
   {
      std::unique_ptr<rare_fields> m_p;

   public:
      rare_holder() = default;
      rare_holder(const rare_holder & other) : m_p(other.m_p ? std::make_unique<rare_fields>(* other.m_p) : nullptr) { ; }
      rare_holder & operator=(const rare_holder & other)
      {
         if (this != & other) { m_p = (other.m_p ? std::make_unique<rare_fields>(* other.m_p) : nullptr); }
         return (* this);
      }
      const rare_fields * get() const { return m_p.get(); }
      rare_fields & make() { if (! m_p) { m_p = std::make_unique<rare_fields>(); } return (* m_p); }
   };

   QString m_sName;
   std::weak_ptr<entity> m_pEntity;
   property_type_ptr m_pType;
   relationship_ptr m_pRelation;
   bool m_bPrimaryKey = false;
   QString m_sDescription;
   long m_lVersion = 0;
   int m_iAccessibility = access_protected;
   bool m_bWriteAccessors = true;
   bool m_bObsolete = false;
   bool m_bReadOnly = false;
   bool m_bTransient = false;
   bool m_bSerializable = true;
   bool m_bIndex = false;
   bool m_bUnique = false;
   bool m_bAllowNull = true;
   rare_holder m_rare;

   // A field not made yet reads as its default (null text, invalid value).
   template <typename T> T rare(T rare_fields::* pField) const { return (m_rare.get() ? (m_rare.get()->*pField) : T()); }
   void setRare(QString rare_fields::* pField, const QString & s) { if (m_rare.get() || ! s.isNull()) { m_rare.make().*pField = s; } }
   void setRare(QVariant rare_fields::* pField, const QVariant & v) { if (m_rare.get() || v.isValid()) { m_rare.make().*pField = v; } }

public:
   QString getName() const { return m_sName; }
   entity_ptr getEntity() const { return m_pEntity.lock(); }
   // Null when the property has no type text (neither given nor derived from an enumeration).
   property_type_ptr getType() const { return m_pType; }
   relationship_ptr getRelation() const { return m_pRelation; }
   bool hasRelationship() const { return (m_pRelation != nullptr); }
   QString getEnumerationKey() const { return rare(& rare_fields::sEnumerationKey); }
   bool isPrimaryKey() const { return m_bPrimaryKey; }
   QString getColumnName() const { return rare(& rare_fields::sColumnName); }
   QString getDescription() const { return m_sDescription; }
   long getVersion() const { return m_lVersion; }
   int getAccessibility() const { return m_iAccessibility; }
   bool getWriteAccessors() const { return m_bWriteAccessors; }
   bool isObsolete() const { return m_bObsolete; }
   bool isReadOnly() const { return m_bReadOnly; }
   QString getGetMethod() const { return rare(& rare_fields::sGetMethod); }
   QString getSetMethod() const { return rare(& rare_fields::sSetMethod); }
   bool isTransient() const { return m_bTransient; }
   bool isSerializable() const { return m_bSerializable; }
   bool isIndex() const { return m_bIndex; }
   bool getUnique() const { return m_bUnique; }
   bool getAllowNull() const { return m_bAllowNull; }
   QVariant getMinValue() const { return rare(& rare_fields::vMinValue); }
   QVariant getMaxValue() const { return rare(& rare_fields::vMaxValue); }
   QVariant getMinLength() const { return rare(& rare_fields::vMinLength); }
   QVariant getMaxLength() const { return rare(& rare_fields::vMaxLength); }
   QString getRegExp() const { return rare(& rare_fields::sRegExp); }
   QString getForceSqlType() const { return rare(& rare_fields::sForceSqlType); }
   QString getForceSqlAlias() const { return rare(& rare_fields::sForceSqlAlias); }
   QString getFormat() const { return rare(& rare_fields::sFormat); }

   // C++ type text of the member (see the host documentation for the relation forms);
   // the third argument is accepted and ignored.
   QString getTypeDesc(bool bTypedefLine, bool bAsRelation, const QString & sUnused = QString()) const;
   // Kind tests on the primitive type text; both arguments are accepted and ignored.
   bool isString(bool bUnused = true, int iUnused = -1) const;
   bool isBoolean(bool bUnused = true, int iUnused = -1) const;
   bool isDecimal(bool bUnused = true, int iUnused = -1) const;
   bool isNumber(bool bUnused = true, int iUnused = -1) const;

   void setName(const QString & s) { m_sName = s; }
   void setEntity(const entity_ptr & p) { m_pEntity = p; }
   void setType(const property_type_ptr & p) { m_pType = p; }
   void setRelation(const relationship_ptr & p) { m_pRelation = p; }
   void setEnumerationKey(const QString & s) { setRare(& rare_fields::sEnumerationKey, s); }
   void setPrimaryKey(bool b) { m_bPrimaryKey = b; }
   void setColumnName(const QString & s) { setRare(& rare_fields::sColumnName, s); }
   void setDescription(const QString & s) { m_sDescription = s; }
   void setVersion(long l) { m_lVersion = l; }
   void setAccessibility(int i) { m_iAccessibility = i; }
   void setWriteAccessors(bool b) { m_bWriteAccessors = b; }
   void setObsolete(bool b) { m_bObsolete = b; }
   void setReadOnly(bool b) { m_bReadOnly = b; }
   void setGetMethod(const QString & s) { setRare(& rare_fields::sGetMethod, s); }
   void setSetMethod(const QString & s) { setRare(& rare_fields::sSetMethod, s); }
   void setTransient(bool b) { m_bTransient = b; }
   void setSerializable(bool b) { m_bSerializable = b; }
   void setIndex(bool b) { m_bIndex = b; }
   void setUnique(bool b) { m_bUnique = b; }
   void setAllowNull(bool b) { m_bAllowNull = b; }
   void setMinValue(const QVariant & v) { setRare(& rare_fields::vMinValue, v); }
   void setMaxValue(const QVariant & v) { setRare(& rare_fields::vMaxValue, v); }
   void setMinLength(const QVariant & v) { setRare(& rare_fields::vMinLength, v); }
   void setMaxLength(const QVariant & v) { setRare(& rare_fields::vMaxLength, v); }
   void setRegExp(const QString & s) { setRare(& rare_fields::sRegExp, s); }
   void setForceSqlType(const QString & s) { setRare(& rare_fields::sForceSqlType, s); }
   void setForceSqlAlias(const QString & s) { setRare(& rare_fields::sForceSqlAlias, s); }
   void setFormat(const QString & s) { setRare(& rare_fields::sFormat, s); }
};

} // namespace model
