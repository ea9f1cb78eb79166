#pragma once

#include <QByteArray>
#include <QHash>
#include <QSqlDatabase>
#include <QString>

#include "tavrelcore_export.h"
#include "zy/ZyBool.h"

namespace storage {

// The files the last export of a plug-in generated into a directory, with a hash of the text it
// left there; kept in the project file (table "t_export_record", one row per plug-in and
// directory) so that the export directory holds only what the generator writes.
class TAVRELCORE_EXPORT export_record
{
public:
   // Relative path (with '/') to the hash of its text.
   typedef QHash<QString, QByteArray> files;
   // Marks a hash read from a record of an older version, made from the text as held in memory
   // (UTF-16) rather than from its bytes.
   static constexpr char k_szHeldTextHash[] = "u16:";

   // The record of plug-in into exportDir (absolute); empty when there is none. pFingerprint,
   // when given, gets the fingerprint stored with it (empty when none was).
   static zy::ZyBool read(QSqlDatabase & db, const QString & plugin, const QString & exportDir, files & result,
                          QByteArray * pFingerprint = nullptr);
   // Replaces the record of plug-in into exportDir in one transaction. fingerprint names what
   // the plug-in made the files from (empty: it vouches for nothing).
   static zy::ZyBool write(QSqlDatabase & db, const QString & plugin, const QString & exportDir, const files & record,
                           const QByteArray & fingerprint = QByteArray());
};

} // namespace storage
