#pragma once

#include <QByteArray>
#include <QString>

#include "tavrelcore_export.h"

namespace tools {

// A whole file written the safe way: never through a symbolic link or over a directory, and
// replaced only once complete (a failure leaves the old file as it was).
class TAVRELCORE_EXPORT file_writer
{
public:
   // sError: "cannot write '<path>': <the system's reason>".
   static bool write(const QString & path, const QByteArray & data, QString & sError);
   // The replacement alone (the caller checked the path): the data in a temporary file beside
   // it, every write and the flush checked, renamed over the old file only when complete;
   // sReason is the system's reason ("No space left on device", "File too large").
   static bool replace(const QString & path, const QByteArray & data, QString & sReason);
};

} // namespace tools
