#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace storage {

// The text of a JSON document, a byte-order mark left out. A file is mapped rather than read, so
// that the parts already parsed can be given back while the model grows.
class json_text
{
   QFile m_file;
   uchar * m_pMap = nullptr;
   QByteArray m_data;
   QByteArray m_view;

public:
   json_text() = default;
   explicit json_text(QByteArray && data);
   json_text(const json_text &) = delete;
   json_text & operator=(const json_text &) = delete;

   bool open(const QString & sFile, QString & sError);
   const QByteArray & bytes() const { return m_view; }
   // The pages entirely inside [iBegin, iEnd) leave the process; they are read again if needed.
   void giveBack(qsizetype iBegin, qsizetype iEnd);
   void release();
};

} // namespace storage
