#include "storage/json_layout.h"

#include <cstring>

namespace storage {
namespace json_layout {

namespace {

// Deeper items are left to the whole-document parser, whose nesting limit counts from the root.
const int k_iMaxDepth = 64;

class scanner
{
   const char * m_p;
   qsizetype m_n;
   qsizetype m_i = 0;

public:
   scanner(const char * p, qsizetype n) : m_p(p), m_n(n) { ; }

   qsizetype pos() const { return m_i; }
   bool atEnd() const { return (m_i >= m_n); }
   char peek() const { return (atEnd() ? '\0' : m_p[m_i]); }

   void skipBlanks()
   {
      while (! atEnd())
      {
         const char c = m_p[m_i];
         if ((c != ' ') && (c != '\t') && (c != '\n') && (c != '\r')) { return; }
         ++m_i;
      }
   }

   bool take(char c)
   {
      skipBlanks();
      if (peek() != c) { return false; }
      ++m_i;
      return true;
   }

   // From the opening quote to past the closing one; false for an escape when bPlain.
   bool skipString(bool bPlain)
   {
      if (peek() != '"') { return false; }
      for (++m_i; m_i < m_n; ++m_i)
      {
         const char c = m_p[m_i];
         if (c == '"') { ++m_i; return true; }
         if (c == '\\')
         {
            if (bPlain) { return false; }
            ++m_i;
         }
      }
      return false;
   }

   // An object or array: brackets balanced outside strings, no more.
   bool skipNested()
   {
      int iDepth = 0;
      while (m_i < m_n)
      {
         const char c = m_p[m_i];
         if (c == '"') { if (! skipString(false)) { return false; } continue; }
         ++m_i;
         if ((c == '{') || (c == '['))
         {
            if (++iDepth > k_iMaxDepth) { return false; }
         }
         else if ((c == '}') || (c == ']'))
         {
            if (--iDepth == 0) { return true; }
            if (iDepth < 0) { return false; }
         }
      }
      return false;
   }

   // An array of objects, each one's span appended.
   bool readObjects(QList<span> & lst)
   {
      if (! take('[')) { return false; }
      skipBlanks();
      if (peek() == ']') { ++m_i; return true; }
      for (;;)
      {
         skipBlanks();
         if (peek() != '{') { return false; }
         span s;
         s.iBegin = m_i;
         if (! skipNested()) { return false; }
         s.iEnd = m_i;
         lst.append(s);
         skipBlanks();
         if (peek() == ']') { ++m_i; return true; }
         if (peek() != ',') { return false; }
         ++m_i;
      }
   }

   bool isKey(qsizetype iBegin, const char * sz) const
   {
      const qsizetype iLength = qsizetype(std::strlen(sz));
      return ((m_i - iBegin == iLength + 2) && (std::memcmp(m_p + iBegin + 1, sz, size_t(iLength)) == 0));
   }
};

} // namespace

bool split(const char * pText, qsizetype iSize, layout & out)
{
   out = layout();
   scanner scan(pText, iSize);
   bool bName = false;
   bool bSchema = false;
   if (! scan.take('{')) { return false; }
   for (;;)
   {
      scan.skipBlanks();
      const qsizetype iKey = scan.pos();
      if (! scan.skipString(true)) { return false; }
      const bool bIsName = scan.isKey(iKey, "name");
      const bool bIsEntities = scan.isKey(iKey, "entities");
      const bool bIsEnumerations = scan.isKey(iKey, "enumerations");
      const bool bIsSchema = scan.isKey(iKey, "$schema");
      if (! scan.take(':')) { return false; }
      scan.skipBlanks();
      if (bIsSchema && ! bSchema)
      {
         // Only for editors: the reader has no use for it.
         if (! scan.skipString(false)) { return false; }
         bSchema = true;
      }
      else if (bIsName && ! bName)
      {
         out.name.iBegin = scan.pos();
         if (! scan.skipString(false)) { return false; }
         out.name.iEnd = scan.pos();
         bName = true;
      }
      else if (bIsEntities && ! out.bEntities)
      {
         if (! scan.readObjects(out.lstEntities)) { return false; }
         out.bEntities = true;
      }
      else if (bIsEnumerations && ! out.bEnumerations)
      {
         if (! scan.readObjects(out.lstEnumerations)) { return false; }
         out.bEnumerations = true;
      }
      else { return false; }   // an unknown or repeated member
      if (scan.take('}')) { break; }
      if (! scan.take(',')) { return false; }
   }
   scan.skipBlanks();
   return (bName && scan.atEnd());
}

} // namespace json_layout
} // namespace storage
