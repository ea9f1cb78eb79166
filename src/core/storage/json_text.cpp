#include "storage/json_text.h"

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace storage {

namespace {

QByteArray withoutByteOrderMark(const char * p, qsizetype n)
{
   const bool bMark = ((n >= 3) && (p[0] == '\xEF') && (p[1] == '\xBB') && (p[2] == '\xBF'));
   return (bMark ? QByteArray::fromRawData(p + 3, n - 3) : QByteArray::fromRawData(p, n));
}

} // namespace

json_text::json_text(QByteArray && data) : m_data(std::move(data))
{
   if (m_data.startsWith("\xEF\xBB\xBF")) { m_data.remove(0, 3); }
   m_view = m_data;
}

bool json_text::open(const QString & sFile, QString & sError)
{
   release();
   m_file.setFileName(sFile);
   if (! m_file.open(QIODevice::ReadOnly)) { sError = m_file.errorString(); return false; }
   const qint64 iSize = m_file.size();
   m_pMap = ((iSize > 0) ? m_file.map(0, iSize) : nullptr);
   if (m_pMap) { m_view = withoutByteOrderMark(reinterpret_cast<const char *>(m_pMap), qsizetype(iSize)); return true; }
   // Not mappable (a pipe, an empty file): read as a whole.
   QByteArray data = m_file.readAll();
   if (m_file.error() != QFileDevice::NoError) { sError = m_file.errorString(); m_file.close(); return false; }
   m_file.close();
   m_data = std::move(data);
   if (m_data.startsWith("\xEF\xBB\xBF")) { m_data.remove(0, 3); }
   m_view = m_data;
   return true;
}

void json_text::giveBack(qsizetype iBegin, qsizetype iEnd)
{
#ifdef Q_OS_LINUX
   if (! m_pMap || (iEnd <= iBegin)) { return; }
   const quintptr iPage = quintptr(sysconf(_SC_PAGESIZE));
   const quintptr iFrom = (quintptr(m_view.constData() + iBegin) + iPage - 1) / iPage * iPage;
   const quintptr iTo = quintptr(m_view.constData() + iEnd) / iPage * iPage;
   if (iTo > iFrom) { madvise(reinterpret_cast<void *>(iFrom), size_t(iTo - iFrom), MADV_DONTNEED); }
#else
   Q_UNUSED(iBegin); Q_UNUSED(iEnd);
#endif
}

void json_text::release()
{
   m_view = QByteArray();
   m_data = QByteArray();
   if (m_pMap) { m_file.unmap(m_pMap); m_pMap = nullptr; }
   if (m_file.isOpen()) { m_file.close(); }
}

} // namespace storage
