#pragma once

#include <QString>
#include <QTextStream>

#include "tavrelcore_export.h"

namespace tools {

class TAVRELCORE_EXPORT string_helper
{
public:
   // Every generated file is written in UTF-8 without a byte-order mark.
   static void initTextStream(QTextStream * pStream);
   // Body of a C++ string literal: backslash, quote, CR, LF and tab escaped, any other control
   // character as a three-digit octal escape, a "?" after a "?" as "\\?".
   static QString toCppString(const QString & s);
};

} // namespace tools
