#include "tools/file_writer.h"

#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>

namespace tools {

namespace {

// The device's message, or the system's when the device has none of its own.
QString reasonOf(const QSaveFile & file, int iErrno)
{
   const QString s = file.errorString();
   if (! s.isEmpty() && (s != QLatin1String("Unknown error"))) { return s; }
   return QString::fromLocal8Bit(std::strerror((iErrno != 0) ? iErrno : EIO));
}

} // namespace

bool file_writer::replace(const QString & path, const QByteArray & data, QString & sReason)
{
   QSaveFile file(path);
   // No writing in place when a temporary file cannot be made: the old file stays whole.
   file.setDirectWriteFallback(false);
   errno = 0;
   if (! file.open(QIODevice::WriteOnly)) { sReason = reasonOf(file, errno); return false; }
   // commit() renames even when the last buffered write fails: the data must reach the disk first.
   if ((file.write(data) != data.size()) || ! file.flush())
   {
      sReason = reasonOf(file, errno);
      file.cancelWriting();
      return false;
   }
   if (! file.commit()) { sReason = reasonOf(file, errno); return false; }
   return true;
}

bool file_writer::write(const QString & path, const QByteArray & data, QString & sError)
{
   const QFileInfo info(path);
   if (info.isSymLink()) { sError = QString("'%1' is a symbolic link; not written").arg(path); return false; }
   if (info.isDir()) { sError = QString("'%1' is a directory").arg(path); return false; }
   QString sReason;
   if (! replace(path, data, sReason)) { sError = QString("cannot write '%1': %2").arg(path, sReason); return false; }
   return true;
}

} // namespace tools
