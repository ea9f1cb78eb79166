// The catalog of a DDL script's scratch database, read a piece at a time when its schema rows
// are set aside: SQLite then never holds more than a piece in memory.

#include "db_import/catalog_reader.h"
#include "db_import/ddl_loader.h"
#include "db_import/ddl_schema_stash.h"

namespace db_import {

namespace {

// The pieces' tables join the catalog; a name read twice keeps its first reading.
void addPiece(db_catalog & piece, db_catalog & catalog)
{
   for (db_table & t : piece.lstTables)
   {
      if (! catalog.find(t.sSchema, t.sName)) { catalog.table(t.sSchema, t.sName) = std::move(t); }
   }
   catalog.lstWarnings.append(piece.lstWarnings);
   catalog.iFiltered += piece.iFiltered;
}

} // namespace

bool ddl_loader::readCatalog(const import_options & options, db_catalog & catalog, QString & sError,
                             const std::function<void(qsizetype, qsizetype)> & fnPiece)
{
   if (! m_pStash) { return catalog_reader::read(database(), dialect_sqlite, QStringList(), QString(), catalog, sError, options); }
   catalog = db_catalog();
   catalog.eDialect = dialect_sqlite;
   catalog.sDefaultSchema = "main";
   if (! m_pStash->setAside())
   {
      // SQLite refused the stash's own statements: read the whole schema as it is.
      const bool bBack = m_pStash->bringBackAll();
      m_pStash.reset();
      if (! bBack) { sError = "the DDL script's schema could not be read back"; return false; }
      return catalog_reader::read(database(), dialect_sqlite, QStringList(), QString(), catalog, sError, options);
   }
   const QList<ddl_schema_stash::object> lstObjects = m_pStash->objects();
   for (qsizetype iFrom = 0; iFrom < lstObjects.size(); iFrom += k_iPieceObjects)
   {
      if (! readPiece(lstObjects.mid(iFrom, k_iPieceObjects), options, catalog, sError)) { return false; }
      if (fnPiece) { fnPiece(qMin(iFrom + k_iPieceObjects, lstObjects.size()), lstObjects.size()); }
   }
   catalog_reader::sortTables(catalog);
   return true;
}

// One piece: its tables and views back in SQLite with every table its views name, read, and
// set aside again. A view that still misses a table set aside (named in a way the scan of its
// text did not see) gets it back and the piece is read again; each round brings back at least
// one more table, so the rounds end.
bool ddl_loader::readPiece(const QList<ddl_schema_stash_object> & lstPiece, const import_options & options, db_catalog & catalog, QString & sError)
{
   QSet<QString> setNames;
   QSet<QByteArray> setGroups;
   for (const ddl_schema_stash_object & o : lstPiece) { setNames.insert(o.sName); setGroups.insert(o.sGroup); }
   if (! m_pStash->setAside()) { sError = "the DDL script's schema could not be read back"; return false; }
   setGroups = m_pStash->withNamed(setGroups);
   for (;;)
   {
      if (! m_pStash->bringBack(setGroups)) { sError = "the DDL script's schema could not be read back"; return false; }
      db_catalog piece;
      QStringList lstViewReasons;
      QString sPieceError;
      const bool bRead = catalog_reader::readSqlitePiece(database(), options, setNames, piece, lstViewReasons, sPieceError);
      const qsizetype iBefore = setGroups.size();
      for (const QString & sReason : lstViewReasons)
      {
         for (const QByteArray & sKey : ddl_schema_stash::missingKeys(sReason))
         {
            const QByteArray sGroup = m_pStash->groupOf(sKey);
            if (! sGroup.isEmpty()) { setGroups.insert(sGroup); }
         }
      }
      if (setGroups.size() > iBefore)
      {
         // The rows brought back go to the stash again before the wider piece comes back.
         if (! m_pStash->setAside()) { sError = "the DDL script's schema could not be read back"; return false; }
         setGroups = m_pStash->withNamed(setGroups);
         continue;
      }
      if (! bRead) { sError = sPieceError; return false; }
      addPiece(piece, catalog);
      return true;
   }
}

} // namespace db_import
