#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "gui/plugin/export_files.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstring>

namespace plugin {

namespace {

// The text the system gives for an error number, with the path it concerns.
QString systemReason(int iError, const QString & path)
{
   return QString::fromLocal8Bit(std::strerror(iError)) + " : " + QDir::toNativeSeparators(path);
}

} // namespace

QString cpp_builder::refusedPath(const QString & path) const
{
   if (m_sWriteRoot.isEmpty()) { return QString(); }
   const QString sRoot = QDir(m_sWriteRoot).absolutePath();
   const QString sPrefix = (sRoot.endsWith('/') ? sRoot : (sRoot + '/'));
   const QString sPath = QFileInfo(path).absoluteFilePath();
   // Both the path as given and its normalised form must stay below the root: a name holding
   // ".." is judged by where it leads, not by how it starts.
   if (! sPath.startsWith(sPrefix) || ! QDir::cleanPath(sPath).startsWith(sPrefix))
   { return "Cannot write outside the export directory '" + QDir::toNativeSeparators(sRoot) + "' : " + QDir::toNativeSeparators(path); }

   // No step below the root may be a link: writing would reach whatever it points to. The steps
   // are checked from the root down, so each one is seen where the system would look for it.
   QString sStep = sRoot;
   const QStringList lstParts = sPath.mid(sPrefix.size()).split('/');
   for (const QString & sPart : lstParts)
   {
      if (sPart.isEmpty()) { continue; }
      sStep += '/' + sPart;
      if (QFileInfo(sStep).isSymLink())
      {
         return "Cannot write through the symbolic link '" + QDir::toNativeSeparators(sStep) + "' (it points to '" +
                QDir::toNativeSeparators(QFileInfo(sStep).symLinkTarget()) + "'; remove it and export again) : " +
                QDir::toNativeSeparators(path);
      }
   }
   return QString();
}

bool cpp_builder::makeDirectory(const QString & path)
{
   const QString sRefused = refusedPath(path);
   if (! sRefused.isEmpty()) { m_sLastFailureReason = sRefused; return false; }
   if (QFileInfo(path).isDir()) { return true; }
   // A dry run leaves the tree as it is, folders included.
   if (isDryRun()) { return true; }
   if (QDir().mkpath(path)) { return true; }

   // Find the step that failed and ask the system why.
   const QString sPath = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
   QString sStep;
   const QStringList lstParts = sPath.split('/');
   for (int i = 0; i < lstParts.size(); ++i)
   {
      sStep += ((i == 0) ? lstParts.at(i) : ('/' + lstParts.at(i)));
      if (sStep.isEmpty()) { continue; }
      QFileInfo info(sStep);
      if (info.isDir()) { continue; }
      if (info.exists()) { m_sLastFailureReason = systemReason(ENOTDIR, sStep); return false; }
      if (::mkdir(QFile::encodeName(sStep).constData(), 0777) != 0)
      {
         const int iError = errno;
         m_sLastFailureReason = systemReason(iError, sStep);
         return false;
      }
   }
   return QFileInfo(path).isDir();
}

bool cpp_builder::isDryRun() const
{
   return (m_pCppExport && m_pCppExport->getExportFiles() && m_pCppExport->getExportFiles()->isDryRun());
}

bool cpp_builder::putFile(const QString & path, const QString & oldText, const QString & newText, bool bExists)
{
   const bool bSame = isSame(oldText, newText);
   export_files * pFiles = (m_pCppExport ? m_pCppExport->getExportFiles() : nullptr);
   if (! pFiles) { return (bSame || writeFile(path, newText, & m_sLastFailureReason)); }
   if (! pFiles->report(path, bExists, oldText, newText, bSame)) { return true; }
   return writeFile(path, newText, & m_sLastFailureReason);
}

bool cpp_builder::userFileExists(const QString & path)
{
   if (! QFileInfo::exists(path)) { return false; }
   export_files * pFiles = (m_pCppExport ? m_pCppExport->getExportFiles() : nullptr);
   if (pFiles) { pFiles->reportKept(path); }
   return true;
}

} // namespace plugin
