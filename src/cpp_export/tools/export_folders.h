#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>

namespace tools {

// The folders of an export opened once, so that every generated file is read and created
// relative to its folder's handle: no walk down the path per file, no link followed on the way.
// Anything out of the ordinary (a link, a directory in a file's place, a name with a slash) is
// left to the caller's path-based code, which says what is wrong.
class export_folders
{
   int m_iRoot = -1;
   QHash<QString, int> m_hashFolders;

public:
   explicit export_folders(const QString & root);
   ~export_folders();
   export_folders(const export_folders &) = delete;
   export_folders & operator=(const export_folders &) = delete;

   // Opens root/relative one step at a time, refusing links; -1 when it cannot (missing folder,
   // a link, no permission). Not thread-safe: open every folder before handing the handles out.
   int open(const QString & relative);

   // A single file name: no separator, not "." nor "..", nothing the handle could escape by.
   static bool isPlainName(const QString & name);

   // The names in a folder that stand for something there (a link only when its target exists,
   // as QFileInfo::exists), read in one pass: false when the folder cannot be listed.
   static bool presentNames(int iFolder, QSet<QString> & names);

   enum class outcome { done, missing, fallback, failed };
   // The bytes of a regular file: done, missing (no such entry), or fallback (anything else).
   static outcome read(int iFolder, const QString & name, QByteArray & bytes);
   // Creates a new file and writes it in one call: done, fallback (it exists or cannot be
   // created; nothing was written), or failed (the write failed; iError holds the reason and
   // the partial file is gone).
   static outcome create(int iFolder, const QString & name, const QByteArray & data, int & iError);
};

} // namespace tools
