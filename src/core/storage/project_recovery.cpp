#include "storage/project_recovery.h"

#include <QAtomicInt>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace storage {

namespace {

QString nextRecoveryConnectionName()
{
   static QAtomicInt s_iCounter;
   return QString("tavrel_recovery_%1").arg(s_iCounter.fetchAndAddOrdered(1) + 1);
}

// The first read of a connection that may write rolls a hot journal back (and drops the
// journal of a first import, which leaves the file empty).
QString rollBack(const QString & sFile)
{
   const QString sName = nextRecoveryConnectionName();
   QString sError;
   {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", sName);
      db.setDatabaseName(sFile);
      if (! db.open()) { sError = db.lastError().text(); }
      else
      {
         QSqlQuery q(db);
         if (! q.exec("SELECT COUNT(*) FROM sqlite_master")) { sError = q.lastError().databaseText(); }
      }
      db.close();
   }
   QSqlDatabase::removeDatabase(sName);
   return sError;
}

} // namespace

QString project_recovery::recoverInterruptedWrite(const QString & sFile, bool bReading)
{
   const QString sJournal = sFile + "-journal";
   const QFileInfo journal(sJournal);
   if (! journal.exists() || ! journal.isFile() || ! QFileInfo(sFile).isFile()) { return QString(); }
   // Only a journal that begins with its header holds changes to undo (a finished write may leave
   // an emptied or zeroed one behind).
   {
      QFile f(sJournal);
      if (f.open(QIODevice::ReadOnly) && (f.read(8) != QByteArray("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8))) { return QString(); }
   }

   const bool bWasEmpty = (QFileInfo(sFile).size() == 0);
   const QString sError = rollBack(sFile);
   if (QFileInfo::exists(sJournal))
   {
      // Left in place: another program is writing the file right now, or this one may not write it.
      if (! QFileInfo(sFile).isWritable() || ! QFileInfo(journal.absolutePath()).isWritable())
      {
         return QString("project file '%1' was left by a write that did not finish (journal '%2'); it needs write access to "
                        "the file and its directory once, to be rolled back: give that access and run the command again").arg(sFile, sJournal);
      }
      if (! sError.isEmpty()) { return QString("project file '%1' is being written by another program (%2); try again when it is done").arg(sFile, sError); }
      return QString();
   }
   if (bReading && (QFileInfo(sFile).size() == 0))
   {
      return QString("project file '%1' is empty: its first import did not finish%2; import the model into it again "
                     "(tavrel import MODEL.json PROJECT.tavrel)").arg(sFile, bWasEmpty ? QString() : QString(" and was rolled back"));
   }
   return QString();
}

} // namespace storage
