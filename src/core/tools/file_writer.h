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
   static bool write(const QString & path, const QByteArray & data, QString & sError);
};

} // namespace tools
