#pragma once

#include <QString>

#include "tavrelcore_export.h"

namespace zy {

// Result of an operation that can fail: a truth value, a code and a user-facing description.
class TAVRELCORE_EXPORT ZyBool
{
   bool m_bValue = false;
   long m_lCode = 0;
   QString m_sDesc;

public:
   ZyBool() = default;
   ZyBool(bool bValue) : m_bValue(bValue) { ; }
   ZyBool(bool bValue, const QString & sDesc) : m_bValue(bValue), m_sDesc(sDesc) { ; }
   ZyBool(bool bValue, long lCode, const QString & sDesc) : m_bValue(bValue), m_lCode(lCode), m_sDesc(sDesc) { ; }

   bool getValue() const { return m_bValue; }
   long getCode() const { return m_lCode; }
   QString getDesc() const { return m_sDesc; }
   void setValue(bool b) { m_bValue = b; }
   void setCode(long l) { m_lCode = l; }
   void setDesc(const QString & s) { m_sDesc = s; }

   explicit operator bool() const { return m_bValue; }
   bool operator!() const { return ! m_bValue; }
   bool operator==(const ZyBool & other) const
   { return (m_bValue == other.m_bValue) && (m_lCode == other.m_lCode) && (m_sDesc == other.m_sDesc); }
   bool operator!=(const ZyBool & other) const { return ! (*this == other); }
};

} // namespace zy
