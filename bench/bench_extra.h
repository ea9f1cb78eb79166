#pragma once

#include <QString>

namespace bench {

// Wall time of reading every file below dir once (open, read whole, close), as a re-export
// that compares must at least do; the number of bytes read goes to bytes.
double readTreeMs(const QString & dir, qint64 & bytes);

// Median wall time of the command-line host exporting a one-entity model into an empty folder,
// the whole process from start to exit; 0 when the program is not there.
double oneEntityStartMs(const QString & program, const QString & workDir, int repeat);

} // namespace bench
