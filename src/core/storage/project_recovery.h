#pragma once

#include <QString>

namespace storage {

// A write that was killed leaves a "-journal" file beside the project file: until SQLite rolls it
// back, read-only connections fail ("attempt to write a readonly database") and the database
// header may not be written yet. Rolls it back before anything reads the file.
class project_recovery
{
public:
   // Empty when the file can be used now, else why not and what to do. bReading: a file that the
   // roll-back left empty (a first import that was killed) is explained too.
   static QString recoverInterruptedWrite(const QString & sFile, bool bReading);
};

} // namespace storage
