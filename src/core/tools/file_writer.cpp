#include "tools/file_writer.h"

#include <QFileInfo>
#include <QSaveFile>

namespace tools {

bool file_writer::write(const QString & path, const QByteArray & data, QString & sError)
{
   const QFileInfo info(path);
   if (info.isSymLink()) { sError = QString("'%1' is a symbolic link; not written").arg(path); return false; }
   if (info.isDir()) { sError = QString("'%1' is a directory").arg(path); return false; }
   QSaveFile file(path);
   // No writing in place when a temporary file cannot be made: the old file stays whole.
   file.setDirectWriteFallback(false);
   if (! file.open(QIODevice::WriteOnly) || (file.write(data) != data.size()) || ! file.commit())
   {
      sError = QString("cannot write '%1': %2").arg(path, file.errorString());
      return false;
   }
   return true;
}

} // namespace tools
