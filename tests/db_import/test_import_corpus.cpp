// The corpus (tests/db_import/corpus): an application-shaped schema with rows per dialect, loaded
// into a fresh database, imported with the real program, its C++ export compiled in every class
// style, then refreshed twice.

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

#include "db_environment.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_storage.h"
#include "test_support.h"

using db_import::enum_dialect;
using import_test::propertyOf;
using test_support::cli_result;
using test_support::runTavrel;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// The compile check's driver (tests/compile_check) on a model in one class style, unity build;
// empty when the export compiled, else the end of what the driver said.
QString compileCheck(const QString & sModel, const QString & sWorkDir, int iStyle)
{
   QProcess proc;
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.insert("XDG_CONFIG_HOME", sWorkDir + "/config");
   env.insert("QT_QPA_PLATFORM", "offscreen");
   proc.setProcessEnvironment(env);
   proc.setProcessChannelMode(QProcess::MergedChannels);
   proc.start("cmake", { "-DTAVREL=" + test_support::binaryDir() + "/bin/tavrel", "-DMODEL=" + sModel,
                         "-DLUMOR=" + test_support::sourceDir() + "/tests/compile_check/lumor", "-DWORK_DIR=" + sWorkDir,
                         "-DSTYLE=" + QString::number(iStyle), "-DPIMPL=0", "-DCUSTOM=0", "-DBUILD_MODES=unity",
                         "-P", test_support::sourceDir() + "/tests/compile_check/run_compile_check.cmake" });
   // A guard against a hung compiler, far above what a compile takes.
   if (! proc.waitForFinished(900000)) { proc.kill(); proc.waitForFinished(); return "the compile check did not end"; }
   const QString sOut = QString::fromUtf8(proc.readAll());
   return (((proc.exitStatus() == QProcess::NormalExit) && (proc.exitCode() == 0)) ? QString() : ("failed:\n" + sOut.right(6000)));
}

class ImportCorpus : public ::testing::TestWithParam<enum_dialect>
{
protected:
   QTemporaryDir m_dir;
};

// What the corpus must come out as in every dialect.
void expectShape(const model::project_ptr & p, enum_dialect eDialect)
{
   EXPECT_GE(p->getListOfAllEntities()->size(), 40);
   const model::property_ptr pKey = propertyOf(p, "StockLevel", "id");
   ASSERT_TRUE(pKey);
   EXPECT_TRUE(pKey->isPrimaryKey());
   EXPECT_EQ(pKey->getColumnName(), "warehouse_id|product_id");
   EXPECT_TRUE(pKey->getType()->getPrimitiveType().startsWith("std::pair<"));
   EXPECT_TRUE(propertyOf(p, "Enrollment", "id")->getType()->getPrimitiveType().startsWith("std::tuple<"));
   // Keyless tables and views have a key; views are marked.
   for (const char * szEntity : { "AuditLog", "PageView", "LoginEvent", "AlbumSummary", "InvoiceTotal" })
   {
      ASSERT_TRUE(p->getEntityByKey(szEntity)) << szEntity;
      EXPECT_TRUE(p->getEntityByKey(szEntity)->getPropertyId(false)) << szEntity;
   }
   EXPECT_TRUE(propertyOf(p, "LoginEvent", "event_uuid")->isPrimaryKey());
   EXPECT_EQ(p->getEntityByKey("AlbumSummary")->getMetaData("TAVREL_VIEW").toString(), "true");
   EXPECT_EQ(propertyOf(p, "Staff", "ReportsTo")->getRelation()->getType(), model::relationship::many_to_one);
   EXPECT_EQ(propertyOf(p, "Artist", "Albums")->getRelation()->getType(), model::relationship::one_to_many);
   // A foreign key of several columns (on key columns too) is kept for the SQL export.
   EXPECT_EQ(p->getEntityByKey("Shipment")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"columns":["po_id","line_no"],"table":"purchase_order_line","targets":["po_id","line_no"]}])");
   EXPECT_EQ(p->getEntityByKey("LineNote")->getMetaData("TAVREL_SQL_FOREIGN_KEYS").toString(),
             R"([{"columns":["po_id","line_no"],"on_delete":"CASCADE","table":"purchase_order_line","targets":["po_id","line_no"]}])");
   // A key's actions other than NO ACTION stay with its relation.
   EXPECT_EQ(propertyOf(p, "TimeEntry", "task")->getMetaData("TAVREL_SQL_ON_DELETE").toString(), "CASCADE");
   EXPECT_FALSE(propertyOf(p, "TimeEntry", "task")->getAllMetaData().contains("TAVREL_SQL_ON_UPDATE"));
   EXPECT_EQ(propertyOf(p, "Project", "department")->getMetaData("TAVREL_SQL_ON_DELETE").toString(), "SET NULL");
   EXPECT_EQ(propertyOf(p, "Project", "department")->getMetaData("TAVREL_SQL_ON_UPDATE").toString(), "CASCADE");
   EXPECT_FALSE(propertyOf(p, "TimeEntry", "staff")->getAllMetaData().contains("TAVREL_SQL_ON_DELETE"));
   if (eDialect == db_import::dialect_postgresql)
   {
      // The partitioned table is one entity, its partitions none.
      EXPECT_TRUE(p->getEntityByKey("Measurement"));
      EXPECT_FALSE(p->getEntityByKey("Measurement2023"));
      EXPECT_FALSE(p->getEntityByKey("Measurement2024"));
      EXPECT_TRUE(p->getEntityByKey("hr::Position"));
      EXPECT_TRUE(p->getEntityByKey("billing::Invoice"));
   }
}

TEST_P(ImportCorpus, CompilesInEveryClassStyleAndOneRefreshIsFinal)
{
   QString sUrl, sError;
   ASSERT_TRUE(import_test::prepareSource(GetParam(), "corpus", m_dir.path(), sUrl, sError)) << sError.toStdString();
   const QString sModel = m_dir.path() + "/corpus.json";
   const cli_result first = runTavrel({ "import-db", sUrl, sModel });
   ASSERT_EQ(first.code, 0) << first.err.toStdString();
   EXPECT_TRUE(first.out.contains("Project name: CORPUS")) << first.out.toStdString();
   model::project_ptr pProject;
   ASSERT_TRUE(bool(storage::project_storage::readJsonFile(sModel, pProject)));
   expectShape(pProject, GetParam());

   const cli_result check = runTavrel({ "check", sModel });
   EXPECT_EQ(check.code, 0) << check.out.toStdString() << check.err.toStdString();
   EXPECT_TRUE(check.out.contains("0 error(s), 0 warning(s)")) << check.out.toStdString() << check.err.toStdString();
   for (int iStyle = 0; iStyle < 4; ++iStyle)
   {
      EXPECT_EQ(compileCheck(sModel, m_dir.path() + "/style" + QString::number(iStyle), iStyle).toStdString(), "") << "style " << iStyle;
   }

   for (int iRun = 0; iRun < 2; ++iRun)
   {
      const cli_result again = runTavrel({ "import-db", sUrl, sModel });
      ASSERT_EQ(again.code, 0) << again.err.toStdString();
      EXPECT_TRUE(again.out.contains("(0 change(s))")) << "refresh " << iRun << ":\n" << again.out.toStdString();
   }
}

INSTANTIATE_TEST_SUITE_P(Sqlite, ImportCorpus, ::testing::Values(db_import::dialect_sqlite));
INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportCorpus, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportCorpus, ::testing::Values(db_import::dialect_mariadb));

} // namespace
