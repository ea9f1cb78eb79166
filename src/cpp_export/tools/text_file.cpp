#include "cpp_export/tools/text_file.h"

#include <QByteArray>
#include <QFile>
#include <QTextStream>

namespace tools {

QString readTextFile(const QString & path, line_ends eLineEnds, bool * pExists)
{
   QFile file(path);
   // Opening tells a missing file too: no separate look-up per generated file.
   const bool bOpen = file.open(QIODevice::ReadOnly);
   if (pExists) { * pExists = bOpen; }
   if (! bOpen) { return QString(); }
   // Read whole and filtered here rather than in text mode: its byte-by-byte filter costs more
   // than the rest of reading.
   return decodeText(file.readAll(), eLineEnds);
}

QString decodeText(QByteArray bytes, line_ends eLineEnds)
{
   if ((eLineEnds == line_ends::lf_only) && bytes.contains('\r')) { bytes.removeIf([](char c) { return (c == '\r'); }); }
   // A byte-order mark chooses the encoding, which the text stream detects. Without one the
   // stream decodes UTF-8, which the direct conversion does several times faster.
   const bool bMark = (bytes.startsWith("\xEF\xBB\xBF") || bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")
                       || bytes.startsWith(QByteArrayView("\0\0\xFE\xFF", 4)));
   if (bMark)
   {
      QTextStream stream(bytes);
      return stream.readAll();
   }
   return QString::fromUtf8(bytes);
}

} // namespace tools
