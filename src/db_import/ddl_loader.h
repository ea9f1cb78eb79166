#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include "db_import/db_catalog.h"
#include "db_import/import_options.h"

#include <functional>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace db_import {

class ddl_schema_stash;
struct ddl_schema_stash_object;

// A schema kept as a SQL script: its statements run one by one on an in-memory SQLite database,
// which is then read like any other. A statement SQLite cannot run is reported with its line and
// column and skipped, or ends the load when strict.
//
// The script is not trusted: it may only create, change and drop schema objects of its scratch
// database and insert rows into it. Anything else (ATTACH, DETACH, VACUUM, PRAGMA, SELECT,
// UPDATE, DELETE, temporary objects, load_extension(), virtual tables of unknown modules) is
// refused and ends the load, and no statement may run more than k_iStepLimit SQLite steps, nor
// the whole script more than k_iScriptStepLimit.
class ddl_loader
{
public:
   // About a second of work for SQLite; a schema statement needs a tiny fraction of it.
   static constexpr long long k_iStepLimit = 100'000'000;
   // The whole script: rows inserted by many statements just under the limit add up.
   static constexpr long long k_iScriptStepLimit = 5 * k_iStepLimit;
   // How many steps run between two checks of the limit.
   static constexpr int k_iStepsPerCheck = 10'000;

   struct statement
   {
      int iLine = 0;
      int iColumn = 0;
      QString sText;
   };
   // A comment, quoted name or literal the script opens and never closes.
   struct split_error
   {
      int iLine = 0;
      int iColumn = 0;
      QString sWhat;   // empty when the script has none
   };

   ddl_loader();
   ~ddl_loader();
   ddl_loader(const ddl_loader &) = delete;
   ddl_loader & operator=(const ddl_loader &) = delete;

   bool load(const QString & sFile, bool bStrict, QString & sError);
   // The script itself; sName is the file name the messages give.
   bool loadText(const QString & sScript, const QString & sName, bool bStrict, QString & sError);
   // Statements made elsewhere (a dump file's translation): the lines they give are the file's.
   bool loadStatements(const QList<statement> & lstStatements, const QString & sName, bool bStrict, QString & sError);
   // Every object the script made, unless the rows are kept set aside (setReadInPieces).
   QSqlDatabase database() const;

   // Keeps the schema rows set aside after the script, for readCatalog to read a piece at a
   // time: a schema of many tables is then never whole in SQLite's memory, where every name
   // look-up walks a list as long as the schema.
   void setReadInPieces(bool b) { m_bReadInPieces = b; }
   // The catalog of what the script made (as catalog_reader reads it), in pieces when the rows
   // are set aside. fnPiece, when given, is called after each piece with the tables and views
   // read so far and their number.
   bool readCatalog(const import_options & options, db_catalog & catalog, QString & sError,
                    const std::function<void(qsizetype, qsizetype)> & fnPiece = {});
   // Tables and views per piece, besides those a view of the piece needs.
   static constexpr qsizetype k_iPieceObjects = 64;
   // "schema.sql:12:5: statement skipped: reason", one per skipped statement.
   QStringList getWarnings() const { return m_lstWarnings; }
   // Called every k_iProgressStatements statements with the count run so far.
   void setProgress(const std::function<void(qsizetype, qsizetype)> & fn) { m_fnProgress = fn; }
   static constexpr qsizetype k_iProgressStatements = 20'000;
   // How many objects SQLite holds in memory before their schema rows are set aside (see
   // ddl_schema_stash): each CREATE costs SQLite time in proportion to them.
   static constexpr qsizetype k_iSetAsideObjects = 64;

   // SQLite steps are counted every n steps (k_iStepsPerCheck unless set, before a load).
   void setStepsPerCheck(int n) { m_iStepsPerCheck = qMax(1, n); }
   // The SQLite steps the last load took, the script's and the loader's own, to the count's
   // precision.
   long long getSteps() const;

   // The statements of a script: split at ";" outside quotes, comments and trigger bodies. An
   // unclosed comment, quoted name or literal ends the list and is described in pError.
   static QList<statement> split(const QString & sScript, split_error * pError = nullptr);

   struct guard;

private:
   bool run(const QList<statement> & lstStatements, const QString & sName, bool bStrict, bool bSetAside, QString & sError);
   bool runStatement(sqlite3 * pDb, const statement & s, const QString & sName, bool bStrict, qsizetype & iRun, QString & sError);
   int prepare(sqlite3 * pDb, const char * p, const char * pEnd, sqlite3_stmt ** ppStatement, const char ** ppTail);
   bool afterStatement();
   bool readPiece(const QList<ddl_schema_stash_object> & lstPiece, const import_options & options, db_catalog & catalog, QString & sError);
   void closeConnection();

   QString m_sConnection;
   QStringList m_lstWarnings;
   std::unique_ptr<guard> m_pGuard;
   std::unique_ptr<ddl_schema_stash> m_pStash;
   // SQLite refused the stash's own statements: the script runs again without setting rows aside.
   bool m_bRestart = false;
   bool m_bReadInPieces = false;
   int m_iStepsPerCheck = k_iStepsPerCheck;
   std::function<void(qsizetype, qsizetype)> m_fnProgress;
};

} // namespace db_import
