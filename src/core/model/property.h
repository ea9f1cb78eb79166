#pragma once

#include "model/persistable.h"

namespace model {

class TAVRELCORE_EXPORT property : public persistable
{
public:
   enum enum_accessibility { access_public = 0, access_protected = 1, access_private = 2 };

private:
   QString m_sName;
   std::weak_ptr<entity> m_pEntity;
   property_type_ptr m_pType;
   relationship_ptr m_pRelation;
   QString m_sEnumerationKey;
   bool m_bPrimaryKey = false;
   QString m_sColumnName;
   QString m_sDescription;
   long m_lVersion = 0;
   int m_iAccessibility = access_protected;
   bool m_bWriteAccessors = true;
   bool m_bObsolete = false;
   bool m_bReadOnly = false;
   QString m_sGetMethod;
   QString m_sSetMethod;
   bool m_bTransient = false;
   bool m_bSerializable = true;
   bool m_bIndex = false;
   bool m_bUnique = false;
   bool m_bAllowNull = true;
   QVariant m_vMinValue;
   QVariant m_vMaxValue;
   QVariant m_vMinLength;
   QVariant m_vMaxLength;
   QString m_sRegExp;
   QString m_sForceSqlType;
   QString m_sForceSqlAlias;
   QString m_sFormat;

public:
   QString getName() const { return m_sName; }
   entity_ptr getEntity() const { return m_pEntity.lock(); }
   // Null when the property has no type text (neither given nor derived from an enumeration).
   property_type_ptr getType() const { return m_pType; }
   relationship_ptr getRelation() const { return m_pRelation; }
   bool hasRelationship() const { return (m_pRelation != nullptr); }
   QString getEnumerationKey() const { return m_sEnumerationKey; }
   bool isPrimaryKey() const { return m_bPrimaryKey; }
   QString getColumnName() const { return m_sColumnName; }
   QString getDescription() const { return m_sDescription; }
   long getVersion() const { return m_lVersion; }
   int getAccessibility() const { return m_iAccessibility; }
   bool getWriteAccessors() const { return m_bWriteAccessors; }
   bool isObsolete() const { return m_bObsolete; }
   bool isReadOnly() const { return m_bReadOnly; }
   QString getGetMethod() const { return m_sGetMethod; }
   QString getSetMethod() const { return m_sSetMethod; }
   bool isTransient() const { return m_bTransient; }
   bool isSerializable() const { return m_bSerializable; }
   bool isIndex() const { return m_bIndex; }
   bool getUnique() const { return m_bUnique; }
   bool getAllowNull() const { return m_bAllowNull; }
   QVariant getMinValue() const { return m_vMinValue; }
   QVariant getMaxValue() const { return m_vMaxValue; }
   QVariant getMinLength() const { return m_vMinLength; }
   QVariant getMaxLength() const { return m_vMaxLength; }
   QString getRegExp() const { return m_sRegExp; }
   QString getForceSqlType() const { return m_sForceSqlType; }
   QString getForceSqlAlias() const { return m_sForceSqlAlias; }
   QString getFormat() const { return m_sFormat; }

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
   void setEnumerationKey(const QString & s) { m_sEnumerationKey = s; }
   void setPrimaryKey(bool b) { m_bPrimaryKey = b; }
   void setColumnName(const QString & s) { m_sColumnName = s; }
   void setDescription(const QString & s) { m_sDescription = s; }
   void setVersion(long l) { m_lVersion = l; }
   void setAccessibility(int i) { m_iAccessibility = i; }
   void setWriteAccessors(bool b) { m_bWriteAccessors = b; }
   void setObsolete(bool b) { m_bObsolete = b; }
   void setReadOnly(bool b) { m_bReadOnly = b; }
   void setGetMethod(const QString & s) { m_sGetMethod = s; }
   void setSetMethod(const QString & s) { m_sSetMethod = s; }
   void setTransient(bool b) { m_bTransient = b; }
   void setSerializable(bool b) { m_bSerializable = b; }
   void setIndex(bool b) { m_bIndex = b; }
   void setUnique(bool b) { m_bUnique = b; }
   void setAllowNull(bool b) { m_bAllowNull = b; }
   void setMinValue(const QVariant & v) { m_vMinValue = v; }
   void setMaxValue(const QVariant & v) { m_vMaxValue = v; }
   void setMinLength(const QVariant & v) { m_vMinLength = v; }
   void setMaxLength(const QVariant & v) { m_vMaxLength = v; }
   void setRegExp(const QString & s) { m_sRegExp = s; }
   void setForceSqlType(const QString & s) { m_sForceSqlType = s; }
   void setForceSqlAlias(const QString & s) { m_sForceSqlAlias = s; }
   void setFormat(const QString & s) { m_sFormat = s; }
};

} // namespace model
