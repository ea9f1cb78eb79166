#include "cpp_export/tools/export_folders.h"

#include <QFile>
#include <QStringList>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tools {

namespace {

int openFolder(int iParent, const QByteArray & name)
{
   int fd = -1;
   do { fd = ::openat(iParent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); } while ((fd < 0) && (errno == EINTR));
   return fd;
}

} // namespace

export_folders::export_folders(const QString & root)
{
   const QByteArray path = QFile::encodeName(root);
   // Links above the export folder are the user's choice; only what lies below is guarded.
   if (! path.isEmpty()) { m_iRoot = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }
}

export_folders::~export_folders()
{
   for (int fd : std::as_const(m_hashFolders)) { if (fd >= 0) { ::close(fd); } }
   if (m_iRoot >= 0) { ::close(m_iRoot); }
}

bool export_folders::isPlainName(const QString & name)
{
   return (! name.isEmpty() && (name != QLatin1String(".")) && (name != QLatin1String("..")) && ! name.contains(QLatin1Char('/'))
           && ! name.contains(QChar(0)));
}

int export_folders::open(const QString & relative)
{
   if (m_iRoot < 0) { return -1; }
   const auto it = m_hashFolders.constFind(relative);
   if (it != m_hashFolders.constEnd()) { return * it; }
   int iParent = m_iRoot;
   int fd = -1;
   const QStringList lstSteps = relative.split(QLatin1Char('/'));
   // Bounded by the steps of the path; each intermediate handle is closed once the next is open.
   for (const QString & sStep : lstSteps)
   {
      fd = (isPlainName(sStep) ? openFolder(iParent, QFile::encodeName(sStep)) : -1);
      if (iParent != m_iRoot) { ::close(iParent); }
      if (fd < 0) { break; }
      iParent = fd;
   }
   m_hashFolders.insert(relative, fd);
   return fd;
}

bool export_folders::presentNames(int iFolder, QSet<QString> & names)
{
   names.clear();
   if (iFolder < 0) { return false; }
   // A handle of its own: the listing moves its position, which a duplicate would share.
   int fd = -1;
   do { fd = ::openat(iFolder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); } while ((fd < 0) && (errno == EINTR));
   if (fd < 0) { return false; }
   DIR * pDir = ::fdopendir(fd);
   if (! pDir) { ::close(fd); return false; }
   // Bounded by the folder's entries.
   while (const dirent * pEntry = ::readdir(pDir))
   {
      const char * szName = pEntry->d_name;
      if ((::strcmp(szName, ".") == 0) || (::strcmp(szName, "..") == 0)) { continue; }
      if ((pEntry->d_type == DT_LNK) || (pEntry->d_type == DT_UNKNOWN))
      {
         struct stat st;
         if (::fstatat(iFolder, szName, & st, 0) != 0) { continue; }
      }
      names.insert(QFile::decodeName(szName));
   }
   ::closedir(pDir);
   return true;
}

export_folders::outcome export_folders::read(int iFolder, const QString & name, QByteArray & bytes)
{
   bytes.clear();
   if ((iFolder < 0) || ! isPlainName(name)) { return outcome::fallback; }
   int fd = -1;
   do { fd = ::openat(iFolder, QFile::encodeName(name).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); } while ((fd < 0) && (errno == EINTR));
   if (fd < 0) { return ((errno == ENOENT) ? outcome::missing : outcome::fallback); }
   struct stat st;
   if ((::fstat(fd, & st) != 0) || ! S_ISREG(st.st_mode)) { ::close(fd); return outcome::fallback; }
   // One read for the size the file had, one byte more: a regular file reads short only at its
   // end, so that read is the last unless the file grew meanwhile.
   qsizetype iUsed = 0;
   bytes.resize(static_cast<qsizetype>(st.st_size) + 1);
   while (true)
   {
      const qsizetype iAsked = bytes.size() - iUsed;
      const ssize_t n = ::read(fd, bytes.data() + iUsed, static_cast<size_t>(iAsked));
      if ((n < 0) && (errno == EINTR)) { continue; }
      if (n < 0) { ::close(fd); bytes.clear(); return outcome::fallback; }
      iUsed += n;
      if ((n == 0) || (n < iAsked)) { break; }
      bytes.resize(bytes.size() * 2);
   }
   ::close(fd);
   bytes.truncate(iUsed);
   return outcome::done;
}

export_folders::outcome export_folders::create(int iFolder, const QString & name, const QByteArray & data, int & iError)
{
   iError = 0;
   if ((iFolder < 0) || ! isPlainName(name)) { return outcome::fallback; }
   const QByteArray sName = QFile::encodeName(name);
   // O_EXCL: an entry of that name, a link included, is never opened; the caller's code replaces it.
   int fd = -1;
   do { fd = ::openat(iFolder, sName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666); } while ((fd < 0) && (errno == EINTR));
   if (fd < 0) { return outcome::fallback; }
   qsizetype iDone = 0;
   while (iDone < data.size())
   {
      const ssize_t n = ::write(fd, data.constData() + iDone, static_cast<size_t>(data.size() - iDone));
      if ((n < 0) && (errno == EINTR)) { continue; }
      if (n <= 0) { iError = ((n < 0) ? errno : ENOSPC); break; }
      iDone += n;
   }
   if ((::close(fd) != 0) && (iError == 0) && (errno != EINTR)) { iError = errno; }
   if (iError == 0) { return outcome::done; }
   // A new file had nothing before it: a partial one is removed rather than left behind.
   ::unlinkat(iFolder, sName.constData(), 0);
   return outcome::failed;
}

} // namespace tools
