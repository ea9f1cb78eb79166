#pragma once

#include "model/persistable.h"
#include "zy/ZyCollection.h"

namespace model {

class TAVRELCORE_EXPORT enumeration : public persistable
{
   QString m_sName;
   QString m_sNamespace;
   QString m_sEnumName;
   bool m_bUseQtEnum = false;
   QString m_sDescription;
   long m_lVersion = 0;
   zy::ZyCollection<QString, QString> m_lstKeyValue;

public:
   QString getName() const { return m_sName; }
   QString getNamespace() const { return m_sNamespace; }
   // Namespace + "::" + name, or the name alone.
   QString getKey() const;
   // "enum_" + name unless set explicitly.
   QString getEnumName() const;
   bool getUseQtEnum() const { return m_bUseQtEnum; }
   QString getDescription() const { return m_sDescription; }
   long getVersion() const { return m_lVersion; }
   const zy::ZyCollection<QString, QString> & getAllKeyValue() const { return m_lstKeyValue; }
   // Type text of the generated C++ enum: key + "::enum_" + name.
   QString getCppEnumType() const;

   void setName(const QString & s) { m_sName = s; }
   void setNamespace(const QString & s) { m_sNamespace = s; }
   void setEnumName(const QString & s) { m_sEnumName = s; }
   void setUseQtEnum(bool b) { m_bUseQtEnum = b; }
   void setDescription(const QString & s) { m_sDescription = s; }
   void setVersion(long l) { m_lVersion = l; }
   bool addKeyValue(const QString & key, const QString & value) { return m_lstKeyValue.insert(key, value); }
   void clearKeyValues() { m_lstKeyValue.clear(); }
};

} // namespace model
