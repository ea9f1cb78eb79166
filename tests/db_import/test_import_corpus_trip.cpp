// The corpus (tests/db_import/corpus) imported and sent back: its SQL export makes the same
// catalog in a fresh database of the same kind, and a migration of the imported model runs on the
// loaded database with its rows, reads back in the new shape, and a refresh follows it.

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "catalog_compare.h"
#include "corpus_trip_support.h"
#include "db_environment.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "storage/project_storage.h"
#include "test_support.h"

using db_import::enum_dialect;
using import_test::propertyOf;
using test_support::cli_result;
using test_support::runTavrel;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

QString dialectText(enum_dialect e)
{
   return ((e == db_import::dialect_postgresql) ? "postgresql" : ((e == db_import::dialect_mariadb) ? "mariadb" : "sqlite"));
}

class ImportCorpusTrip : public ::testing::TestWithParam<enum_dialect>
{
protected:
   QTemporaryDir m_dir;
   QString m_sUrl;
   QString m_sModel;

   // The corpus loaded into a fresh database and imported into corpus.json.
   void loadAndImport()
   {
      QString sError;
      ASSERT_TRUE(import_test::prepareSource(GetParam(), "corpus", m_dir.path(), m_sUrl, sError)) << sError.toStdString();
      m_sModel = m_dir.filePath("corpus.json");
      const cli_result r = runTavrel({ "import-db", m_sUrl, m_sModel });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
   }
   db_import::db_catalog catalogOf(const QString & sUrl)
   {
      db_import::db_catalog catalog;
      QString sError;
      EXPECT_TRUE(sql_test::readCatalog(sUrl, catalog, sError)) << sError.toStdString();
      return catalog;
   }
   bool runScript(const QString & sUrl, const QString & sFile, QString & sError)
   {
      return import_test::execOnSource(GetParam(), sUrl, QString::fromUtf8(test_support::readAll(sFile)), sError);
   }
};

} // namespace

// The SQL export of the imported corpus, run on an empty database, gives back the corpus's
// catalog: tables, columns, types, nullability, defaults, keys of one and several columns, foreign
// keys (of several columns too), unique and other indexes (of a prefix too), numbered keys. Views
// are left out of the script with a comment (the comparison checks that none became a table);
// constraint and index names are not compared (the export names them its own way).
TEST_P(ImportCorpusTrip, SqlExportMakesTheSameCatalog)
{
   ASSERT_NO_FATAL_FAILURE(loadAndImport());
   const cli_result e = runTavrel({ "export", m_sModel, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=" + dialectText(GetParam()),
                                    "--TavrelSqlExport_path=corpus.sql" });
   ASSERT_EQ(e.code, 0) << e.out.toStdString() << e.err.toStdString();
   EXPECT_FALSE(e.err.contains("written from its C++ type")) << e.err.toStdString();
   QString sCopy, sError;
   ASSERT_TRUE(import_test::freshDatabase(GetParam(), "corpus_copy", m_dir.path(), sCopy, sError)) << sError.toStdString();
   const QString sScript = QString::fromUtf8(test_support::readAll(m_dir.filePath("corpus.sql")));
   EXPECT_TRUE(sScript.contains("FOREIGN KEY (po_id, line_no) REFERENCES purchase_order_line (po_id, line_no)")) << sScript.toStdString();
   ASSERT_TRUE(runScript(sCopy, m_dir.filePath("corpus.sql"), sError)) << sError.toStdString() << "\n" << sScript.toStdString();
   const db_import::db_catalog source = catalogOf(m_sUrl), copy = catalogOf(sCopy);
   EXPECT_GE(source.lstTables.size(), 40);
   const QStringList lstDifferences = sql_test::catalogDifferences(source, copy);
   EXPECT_TRUE(lstDifferences.isEmpty()) << lstDifferences.join('\n').toStdString() << "\n" << sScript.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Sqlite, ImportCorpusTrip, ::testing::Values(db_import::dialect_sqlite));
INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportCorpusTrip, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportCorpusTrip, ::testing::Values(db_import::dialect_mariadb));
