#pragma once

#include <QString>

namespace sql_export {

// The one file an SQL export writes, behind the same guard as the C++ export's files.
class script_file
{
public:
   enum enum_outcome { outcome_written, outcome_unchanged, outcome_refused };

   // Why the script may not be written there (a folder that does not exist, a directory in
   // place of the file, a symbolic link as the file or its folder); empty when it may.
   static QString refusedPath(const QString & sFile);
   // The script's text as it is on disk; bExists false (and an empty text) when there is none.
   static QString currentText(const QString & sFile, bool & bExists);
   // Writes the text in one piece (a failed write leaves the former file whole); a file that
   // already holds that text is not touched.
   static enum_outcome write(const QString & sFile, const QString & sText, QString & sReason);
};

} // namespace sql_export
