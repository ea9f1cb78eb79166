#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "db_environment.h"
#include "db_import/db_importer.h"
#include "db_import/ddl_dump.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "storage/project_storage.h"
#include "test_support.h"

using db_import::enum_dialect;
using test_support::cli_result;
using test_support::runTavrel;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

QString dumpFile(const QString & sName) { return test_support::sourceDir() + "/tests/db_import/dumps/" + sName; }

const QStringList k_lstDumps { "lending.postgresql.schema.sql", "lending.postgresql.full.sql", "lending.mariadb.schema.sql", "lending.mariadb.full.sql" };

// The catalog a dump file is read into, before any mapping.
db_import::db_catalog catalogOf(const QString & sFile, QStringList * pNotes = nullptr)
{
   db_import::db_importer importer { db_import::import_options() };
   db_import::db_catalog catalog;
   QString sError;
   EXPECT_TRUE(importer.readSource(QString(), sFile, catalog, sError)) << sError.toStdString();
   if (pNotes) { * pNotes = importer.getNotes(); }
   return catalog;
}

void expectRelation(const model::project_ptr & pProject, const QString & sEntity, const QString & sProperty, const QString & sTarget)
{
   const model::property_ptr p = import_test::propertyOf(pProject, sEntity, sProperty);
   ASSERT_TRUE(p) << (sEntity + "." + sProperty).toStdString();
   ASSERT_TRUE(p->getRelation()) << (sEntity + "." + sProperty).toStdString();
   EXPECT_EQ(p->getRelation()->getTargetKey(), sTarget) << (sEntity + "." + sProperty).toStdString();
}

TEST(ImportDump, TheDialectIsToldByTheFilesOwnMarks)
{
   EXPECT_EQ(db_import::ddl_dump::detect(QString::fromUtf8(test_support::readAll(dumpFile("lending.postgresql.schema.sql")))), db_import::dialect_postgresql);
   EXPECT_EQ(db_import::ddl_dump::detect(QString::fromUtf8(test_support::readAll(dumpFile("lending.postgresql.full.sql")))), db_import::dialect_postgresql);
   EXPECT_EQ(db_import::ddl_dump::detect(QString::fromUtf8(test_support::readAll(dumpFile("lending.mariadb.schema.sql")))), db_import::dialect_mariadb);
   EXPECT_EQ(db_import::ddl_dump::detect(QString::fromUtf8(test_support::readAll(dumpFile("lending.mariadb.full.sql")))), db_import::dialect_mariadb);
   EXPECT_EQ(db_import::ddl_dump::detect("CREATE TABLE a (id INTEGER PRIMARY KEY, `name` TEXT);"), db_import::dialect_sqlite);
}

TEST(ImportDump, EveryDumpFileImportsWithItsForeignKeysAsRelations)
{
   for (const QString & sDump : k_lstDumps)
   {
      SCOPED_TRACE(sDump.toStdString());
      QTemporaryDir dir;
      const QString sOut = dir.path() + "/lending.json";
      const cli_result r = runTavrel({ "import-db", "--ddl", dumpFile(sDump), sOut });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      model::project_ptr pProject;
      ASSERT_TRUE(storage::project_storage::readJsonFile(sOut, pProject));
      EXPECT_EQ(import_test::entityNames(pProject).size(), sDump.contains("postgresql") ? 7 : 6);
      expectRelation(pProject, "Member", "branch", "Branch");
      expectRelation(pProject, "CopyItem", "branch", "Branch");
      expectRelation(pProject, "CopyItem", "isbn", "Title");
      expectRelation(pProject, "Loan", "member", "Member");
      if (sDump.contains("postgresql")) { expectRelation(pProject, "archive::OldLoan", "member", "Member"); }
      // Comments are the descriptions.
      EXPECT_EQ(pProject->getEntityByKey("Member")->getDescription(), "People who borrow");
      EXPECT_EQ(import_test::propertyOf(pProject, "Member", "nick")->getDescription(), "Shown at the desk; it's short");
      if (sDump.contains("postgresql")) { EXPECT_EQ(import_test::propertyOf(pProject, "OpenLoan", "due")->getDescription(), "Day it comes back"); }
      // The foreign key over two columns is no relation of the model: the import says so.
      EXPECT_TRUE(r.err.contains("table loan: foreign key (branch_id, copy_no) over several columns")) << r.err.toStdString();
   }
}

TEST(ImportDump, ForeignKeysOverSeveralColumnsAndThoseAddedLaterAreInTheCatalog)
{
   for (const QString & sDump : k_lstDumps)
   {
      SCOPED_TRACE(sDump.toStdString());
      const db_import::db_catalog catalog = catalogOf(dumpFile(sDump));
      const db_import::db_table * pLoan = catalog.find(catalog.sDefaultSchema, "loan");
      ASSERT_TRUE(pLoan);
      ASSERT_EQ(pLoan->lstForeignKeys.size(), 2);
      EXPECT_EQ(pLoan->lstForeignKeys.at(0).lstColumns, QStringList({ "branch_id", "copy_no" }));
      EXPECT_EQ(pLoan->lstForeignKeys.at(0).lstTargetColumns, QStringList({ "branch_id", "copy_no" }));
      EXPECT_EQ(pLoan->lstForeignKeys.at(0).sTargetTable, "copy_item");
      EXPECT_EQ(pLoan->lstForeignKeys.at(1).lstColumns, QStringList({ "member_id" }));
      // ON DELETE CASCADE is read; a key without an action has none.
      EXPECT_EQ(pLoan->lstForeignKeys.at(0).sOnDelete, "CASCADE");
      EXPECT_EQ(pLoan->lstForeignKeys.at(0).sOnUpdate, "");
      EXPECT_EQ(pLoan->lstForeignKeys.at(1).sOnDelete, "");
      EXPECT_EQ(pLoan->lstPrimaryKey, QStringList({ "id" }));
      const db_import::db_table * pCopy = catalog.find(catalog.sDefaultSchema, "copy_item");
      ASSERT_TRUE(pCopy);
      EXPECT_EQ(pCopy->lstPrimaryKey, QStringList({ "branch_id", "copy_no" }));
   }
}

TEST(ImportDump, PostgresqlDefaultsTypesDomainsAndEnumerationsAreRead)
{
   const db_import::db_catalog catalog = catalogOf(dumpFile("lending.postgresql.full.sql"));
   EXPECT_EQ(catalog.eDialect, db_import::dialect_postgresql);
   const db_import::db_table * pBranch = catalog.find("public", "branch");
   ASSERT_TRUE(pBranch);
   EXPECT_EQ(pBranch->column("id")->sDefault, "nextval('branch_id_seq'::regclass)");
   EXPECT_EQ(pBranch->column("id")->sGenerator, "serial");
   EXPECT_EQ(pBranch->column("city")->sDeclared, "character varying(60)");
   ASSERT_EQ(pBranch->lstIndexes.size(), 1);
   EXPECT_TRUE(pBranch->lstIndexes.at(0).bUnique);
   const db_import::db_table * pTitle = catalog.find("public", "title");
   ASSERT_TRUE(pTitle);
   // A domain's column is its base type, NOT NULL from the domain.
   EXPECT_EQ(pTitle->column("isbn")->sDeclared, "character varying(17)");
   EXPECT_TRUE(pTitle->column("isbn")->bNotNull);
   EXPECT_EQ(pTitle->column("state")->lstValues, QStringList({ "open", "returned", "lost" }));
   EXPECT_EQ(pTitle->column("state")->sDeclared, "loan_state");
   const db_import::db_table * pLoan = catalog.find("public", "loan");
   EXPECT_EQ(pLoan->column("id")->sGenerator, "identity");
   EXPECT_EQ(pLoan->column("state")->sDefault, "'open'::loan_state");
   const db_import::db_table * pView = catalog.find("public", "open_loan");
   ASSERT_TRUE(pView);
   EXPECT_TRUE(pView->bView);
   ASSERT_EQ(pView->lstColumns.size(), 3);
   EXPECT_EQ(pView->lstColumns.at(2).sDeclared, "character varying(80)");
   EXPECT_TRUE(catalog.find("archive", "old_loan"));
}

TEST(ImportDump, MariadbTypesDefaultsIndexesAndViewsAreRead)
{
   const db_import::db_catalog catalog = catalogOf(dumpFile("lending.mariadb.full.sql"));
   EXPECT_EQ(catalog.eDialect, db_import::dialect_mariadb);
   const db_import::db_table * pMember = catalog.find(catalog.sDefaultSchema, "member");
   ASSERT_TRUE(pMember);
   EXPECT_EQ(pMember->column("id")->sGenerator, "autoincrement");
   EXPECT_EQ(pMember->column("branch_id")->sDeclared, "int(10) unsigned");
   EXPECT_EQ(pMember->column("level")->lstValues, QStringList({ "basic", "plus" }));
   EXPECT_EQ(pMember->column("nick")->sDefault, "'the  reader'");
   EXPECT_TRUE(pMember->column("email")->sDefault.isNull());
   // The index the server made for the foreign key is left out, the prefix index kept.
   ASSERT_EQ(pMember->lstIndexes.size(), 1);
   EXPECT_EQ(pMember->lstIndexes.at(0).sName, "member_name");
   EXPECT_EQ(pMember->lstIndexes.at(0).lstLengths, QList<int>({ 190 }));
   // The stand-in view is replaced by the real one.
   const db_import::db_table * pView = catalog.find(catalog.sDefaultSchema, "open_loan");
   ASSERT_TRUE(pView);
   ASSERT_EQ(pView->lstColumns.size(), 3);
   EXPECT_EQ(pView->lstColumns.at(0).sDeclared, "int(11)");
   EXPECT_EQ(pView->lstColumns.at(0).sDefault, "0");
}

TEST(ImportDump, WhatIsSkippedIsCountedPerKind)
{
   QStringList lstNotes;
   catalogOf(dumpFile("lending.postgresql.full.sql"), & lstNotes);
   EXPECT_TRUE(lstNotes.contains("lending.postgresql.full.sql: skipped 12 session settings")) << lstNotes.join("\n").toStdString();
   EXPECT_TRUE(lstNotes.contains("lending.postgresql.full.sql: skipped 14 ownership changes")) << lstNotes.join("\n").toStdString();
   EXPECT_TRUE(lstNotes.contains("lending.postgresql.full.sql: skipped 6 data statements (COPY, INSERT, LOCK TABLES)")) << lstNotes.join("\n").toStdString();
   EXPECT_TRUE(lstNotes.contains("lending.postgresql.full.sql: skipped 2 functions and procedures")) << lstNotes.join("\n").toStdString();
   EXPECT_TRUE(lstNotes.contains("lending.postgresql.full.sql: skipped 3 grants")) << lstNotes.join("\n").toStdString();
   catalogOf(dumpFile("lending.mariadb.full.sql"), & lstNotes);
   EXPECT_TRUE(lstNotes.contains("lending.mariadb.full.sql: skipped 25 data statements (COPY, INSERT, LOCK TABLES)")) << lstNotes.join("\n").toStdString();
   EXPECT_TRUE(lstNotes.contains("lending.mariadb.full.sql: skipped 1 triggers")) << lstNotes.join("\n").toStdString();
   EXPECT_TRUE(lstNotes.contains("lending.mariadb.full.sql: skipped 1 functions and procedures")) << lstNotes.join("\n").toStdString();
}

} // namespace
