#include "sql_export/schema/script_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "tools/file_writer.h"

namespace sql_export {

QString script_file::refusedPath(const QString & sFile)
{
   const QFileInfo info(sFile);
   const QString sNative = QDir::toNativeSeparators(info.absoluteFilePath());
   if (sFile.isEmpty() || info.fileName().isEmpty()) { return "No file name for the SQL script"; }
   if (info.isSymLink())
   { return "Cannot write through the symbolic link '" + sNative + "' (it points to '" + QDir::toNativeSeparators(info.symLinkTarget()) + "')"; }
   if (info.isDir()) { return "Cannot write the SQL script '" + sNative + "' : it is a directory"; }
   const QFileInfo folder(info.absolutePath());
   if (folder.isSymLink())
   { return "Cannot write through the symbolic link '" + QDir::toNativeSeparators(folder.absoluteFilePath()) + "' : " + sNative; }
   if (! folder.isDir()) { return "The folder of the SQL script '" + sNative + "' does not exist"; }
   return QString();
}

QString script_file::currentText(const QString & sFile, bool & bExists)
{
   QFile file(sFile);
   bExists = file.exists();
   if (! bExists || ! file.open(QIODevice::ReadOnly)) { return QString(); }
   return QString::fromUtf8(file.readAll());
}

script_file::enum_outcome script_file::write(const QString & sFile, const QString & sText, QString & sReason)
{
   sReason = refusedPath(sFile);
   if (! sReason.isEmpty()) { return outcome_refused; }
   const QByteArray data = sText.toUtf8();
   QFile current(sFile);
   if (current.exists() && current.open(QIODevice::ReadOnly) && (current.readAll() == data)) { return outcome_unchanged; }
   current.close();
   if (! tools::file_writer::replace(sFile, data, sReason))
   {
      sReason = "Cannot write the SQL script '" + QDir::toNativeSeparators(sFile) + "' : " + sReason;
      return outcome_refused;
   }
   return outcome_written;
}

} // namespace sql_export
