#pragma once

#include <QByteArray>
#include <QString>

namespace tools {

// Whole file decoded as the text stream decodes it: UTF-8 unless a byte-order mark says
// otherwise. Empty when the file cannot be read.
enum class line_ends { lf_only, as_written };
// lf_only drops every '\r', as reading in text mode does.
// pExists, when given, tells a missing or unreadable file from an empty one.
QString readTextFile(const QString & path, line_ends eLineEnds = line_ends::lf_only, bool * pExists = nullptr);
// The same decoding of bytes already read.
QString decodeText(QByteArray bytes, line_ends eLineEnds = line_ends::lf_only);

} // namespace tools
