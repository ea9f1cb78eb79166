#pragma once

#include <QString>

#include "tavrelcore_export.h"

namespace tools {

// Text from a model or a script on its way to a terminal: control characters are shown escaped
// ("\x1b", "\r", "\u0085"...), so that no name can move the cursor, recolour or rewrite what the
// terminal shows. Generated files never go through this.
class TAVRELCORE_EXPORT terminal_text
{
public:
   // Line feeds stay when bKeepLineFeeds is set (multi-line messages), else they are escaped too.
   static QString escape(const QString & text, bool bKeepLineFeeds = true);
};

} // namespace tools
