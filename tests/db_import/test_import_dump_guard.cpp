#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "db_environment.h"
#include "import_test_support.h"
#include "model/entity.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "test_support.h"

using db_import::enum_dialect;
using test_support::cli_result;
using test_support::runTavrel;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// Six lines a PostgreSQL dump starts with; the statement under test is on line 7.
const char * const k_sPostgresqlHead =
   "--\n-- PostgreSQL database dump\n--\n\nSET client_encoding = 'UTF8';\nCREATE TABLE public.a (id integer NOT NULL);\n";
// Two lines of a MariaDB dump; the statement under test is on line 3.
const char * const k_sMariadbHead = "/*!40101 SET NAMES utf8mb4 */;\nCREATE TABLE `a` (`id` int(11) NOT NULL) ENGINE=InnoDB;\n";

// A dump file that must not reach anything: refused at its line, no file made, no project written.
class ImportDumpGuard : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;

   void expectRefused(const QString & sHead, const QString & sStatement, int iLine, const QString & sReason, int iColumn = 1)
   {
      SCOPED_TRACE(sStatement.toStdString());
      const QString sTarget = m_dir.path() + "/reached";
      const QString sFile = m_dir.path() + "/dump.sql";
      test_support::writeAll(sFile, (sHead + QString(sStatement).replace("TARGET", sTarget) + "\n").toUtf8());
      const cli_result r = runTavrel({ "import-db", "--ddl", sFile, m_dir.path() + "/out.json" });
      EXPECT_EQ(r.code, 1) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains(QString("dump.sql:%1:%2: statement refused").arg(iLine).arg(iColumn))) << r.err.toStdString();
      EXPECT_TRUE(r.err.contains(sReason)) << r.err.toStdString();
      EXPECT_FALSE(QFile::exists(sTarget));
      EXPECT_FALSE(QFile::exists(m_dir.path() + "/out.json"));
   }
};

TEST_F(ImportDumpGuard, PostgresqlStatementsThatReachOutsideAreRefusedWithTheirLine)
{
   expectRefused(k_sPostgresqlHead, "COPY public.a TO 'TARGET';", 7, "COPY may only read rows that follow it");
   expectRefused(k_sPostgresqlHead, "COPY public.a (id) FROM 'TARGET';", 7, "COPY may only read rows that follow it");
   expectRefused(k_sPostgresqlHead, "COPY public.a FROM PROGRAM 'touch TARGET';", 7, "COPY may only read rows that follow it");
   expectRefused(k_sPostgresqlHead, "\\! touch TARGET", 7, "a client command runs outside the database");
   expectRefused(k_sPostgresqlHead, "\\i TARGET", 7, "a client command runs outside the database");
   expectRefused(k_sPostgresqlHead, "\\copy a to 'TARGET'", 7, "a client command runs outside the database");
   expectRefused(k_sPostgresqlHead, "ATTACH DATABASE 'TARGET' AS other;", 7, "not part of a schema dump");
   expectRefused(k_sPostgresqlHead, "DO $$ BEGIN\n  PERFORM 1;\nEND $$;", 7, "not part of a schema dump");
   expectRefused(k_sPostgresqlHead, "SELECT pg_catalog.pg_read_file('TARGET');", 7, "not part of a schema dump");
}

TEST_F(ImportDumpGuard, AViewIsReadInTheSandboxOnly)
{
   // SQLite refuses the call when it reads the view's columns: the view is left out, an error with --strict.
   const QString sFile = m_dir.path() + "/dump.sql";
   const QString sTarget = m_dir.path() + "/reached";
   test_support::writeAll(sFile, (QString(k_sPostgresqlHead) + "CREATE VIEW public.v AS SELECT load_extension('" + sTarget + "') AS e;\n").toUtf8());
   const cli_result r = runTavrel({ "import-db", "--ddl", sFile, m_dir.path() + "/out.json" });
   EXPECT_TRUE(r.err.contains("view v cannot be read: unsafe use of load_extension()")) << r.err.toStdString();
   const cli_result rStrict = runTavrel({ "import-db", "--strict", "--ddl", sFile, m_dir.path() + "/strict.json" });
   EXPECT_EQ(rStrict.code, 1) << rStrict.err.toStdString();
   EXPECT_FALSE(QFile::exists(m_dir.path() + "/strict.json"));
   EXPECT_FALSE(QFile::exists(sTarget));
}

TEST_F(ImportDumpGuard, MariadbStatementsThatReachOutsideAreRefusedWithTheirLine)
{
   expectRefused(k_sMariadbHead, "\\! touch TARGET", 3, "a client command runs outside the database");
   expectRefused(k_sMariadbHead, "system touch TARGET;", 3, "not part of a schema dump");
   expectRefused(k_sMariadbHead, "source TARGET;", 3, "not part of a schema dump");
   expectRefused(k_sMariadbHead, "SELECT * FROM a INTO OUTFILE 'TARGET';", 3, "not part of a schema dump");
   expectRefused(k_sMariadbHead, "LOAD DATA INFILE 'TARGET' INTO TABLE a;", 3, "not part of a schema dump");
   // The statement inside a conditional comment starts after its mark.
   expectRefused(k_sMariadbHead, "/*!50001 ATTACH DATABASE 'TARGET' AS o */;", 3, "not part of a schema dump", 10);
}

TEST_F(ImportDumpGuard, AForeignKeyThatCannotBeReadEndsTheImport)
{
   // Never left out silently: a key on a table the dump never made, or of a form not read.
   expectRefused(k_sPostgresqlHead, "ALTER TABLE ONLY public.missing\n    ADD CONSTRAINT f FOREIGN KEY (a) REFERENCES public.a(id);", 7,
                 "table public.missing is not created before");
   expectRefused(k_sPostgresqlHead, "ALTER TABLE ONLY public.a\n    ADD CONSTRAINT f FOREIGN KEY (id) REFERENCES;", 7, "a foreign key");
   expectRefused(k_sPostgresqlHead, "CREATE RULE keep AS ON DELETE TO public.a DO INSTEAD NOTHING;", 7, "not part of a schema dump");
}

TEST_F(ImportDumpGuard, CopyRowsWithoutTheirEndAreAnError)
{
   const QString sFile = m_dir.path() + "/dump.sql";
   test_support::writeAll(sFile, (QString(k_sPostgresqlHead) + "COPY public.a (id) FROM stdin;\n1\n2\n").toUtf8());
   const cli_result r = runTavrel({ "import-db", "--ddl", sFile, m_dir.path() + "/out.json" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("dump.sql:7:1: the rows of COPY ... FROM stdin starting here never end")) << r.err.toStdString();
}

TEST_F(ImportDumpGuard, TheDialectOptionReadsAScriptWithoutMarksAsADump)
{
   const QString sFile = m_dir.path() + "/plain.sql";
   test_support::writeAll(sFile, "CREATE TABLE a (id serial PRIMARY KEY);\nALTER TABLE a OWNER TO someone;\n");
   const cli_result rSqlite = runTavrel({ "import-db", "--ddl", sFile, m_dir.path() + "/sqlite.json" });
   // Read as SQLite, the ownership change is a statement SQLite cannot run and the type unknown.
   EXPECT_TRUE(rSqlite.err.contains("plain.sql:2:15: statement skipped")) << rSqlite.err.toStdString();
   EXPECT_TRUE(rSqlite.err.contains("type 'serial' is not in the type table")) << rSqlite.err.toStdString();
   const cli_result r = runTavrel({ "import-db", "--ddl", sFile, "--dialect", "postgresql", m_dir.path() + "/out.json" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("plain.sql: skipped 1 ownership changes")) << r.err.toStdString();
   EXPECT_FALSE(r.err.contains("warning")) << r.err.toStdString();
   // Told to read a dump as SQLite, the loader refuses its first client command.
   const QString sDump = test_support::sourceDir() + "/tests/db_import/dumps/lending.postgresql.schema.sql";
   const cli_result rForced = runTavrel({ "import-db", "--ddl", sDump, "--dialect", "sqlite", m_dir.path() + "/forced.json" });
   EXPECT_EQ(rForced.code, 1);
   EXPECT_TRUE(rForced.err.contains("lending.postgresql.schema.sql:5:1: statement refused: \\restrict")) << rForced.err.toStdString();
   const cli_result rNoScript = runTavrel({ "import-db", "--dialect", "postgresql", "sqlite:" + sFile, m_dir.path() + "/out3.json" });
   EXPECT_EQ(rNoScript.code, 2);
   EXPECT_TRUE(rNoScript.err.contains("--dialect is for a DDL script")) << rNoScript.err.toStdString();
   const cli_result rWrong = runTavrel({ "import-db", "--ddl", sFile, "--dialect", "oracle", m_dir.path() + "/out2.json" });
   EXPECT_EQ(rWrong.code, 2);
   EXPECT_TRUE(rWrong.err.contains("--dialect takes sqlite or postgresql or mariadb")) << rWrong.err.toStdString();
}

TEST_F(ImportDumpGuard, ACommentTheModelCannotHoldIsLeftOutWithAWarning)
{
   const import_test::import_run r = import_test::importDdlText(m_dir.path(), QString(k_sPostgresqlHead) +
      "COMMENT ON TABLE public.a IS 'closes */ the comment';\nCOMMENT ON COLUMN public.a.id IS 'two\nlines';\n");
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   EXPECT_TRUE(r.pProject->getEntityByKey("A")->getDescription().isEmpty());
   EXPECT_TRUE(import_test::hasWarning(r.lstWarnings, { "table a: comment not taken as the description" })) << r.lstWarnings.join("\n").toStdString();
   EXPECT_TRUE(import_test::hasWarning(r.lstWarnings, { "a.id: comment not taken as the description" })) << r.lstWarnings.join("\n").toStdString();
}

TEST_F(ImportDumpGuard, PartitionsAndTableSettingsAreSkipped)
{
   const import_test::import_run r = import_test::importDdlText(m_dir.path(), QString(k_sPostgresqlHead) +
      "CREATE TABLE public.measure (\n    id integer NOT NULL,\n    taken date NOT NULL\n)\nPARTITION BY RANGE (taken);\n"
      "CREATE TABLE public.measure_2024 (\n    id integer NOT NULL,\n    taken date NOT NULL\n);\n"
      "ALTER TABLE ONLY public.measure ATTACH PARTITION public.measure_2024 FOR VALUES FROM ('2024-01-01') TO ('2025-01-01');\n"
      "ALTER TABLE public.measure ENABLE ROW LEVEL SECURITY;\nALTER TABLE ONLY public.measure REPLICA IDENTITY FULL;\n"
      "CREATE POLICY own_rows ON public.measure USING ((id > 0));\n"
      "ALTER TABLE ONLY public.measure\n    ADD CONSTRAINT no_overlap EXCLUDE USING gist (id WITH =);\n"
      "CREATE COLLATION public.loose (provider = icu, locale = 'und');\nCREATE PUBLICATION everything FOR ALL TABLES;\n"
      "CREATE MATERIALIZED VIEW public.counted AS\n SELECT count(*) AS n\n   FROM public.measure\n  WITH NO DATA;\n"
      "REFRESH MATERIALIZED VIEW public.counted;\nSELECT pg_catalog.lo_create('16385');\n");
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "A", "Counted", "Measure" }));
}

TEST_F(ImportDumpGuard, MariadbSequencesAndDatabaseSettingsAreSkipped)
{
   const import_test::import_run r = import_test::importDdlText(m_dir.path(), QString(k_sMariadbHead) +
      "CREATE SEQUENCE `ticket` start with 1 minvalue 1 maxvalue 9999 increment by 1 cache 10 nocycle ENGINE=InnoDB;\n"
      "SELECT SETVAL(`ticket`, 41, 0);\n/*!50003 ALTER DATABASE `lending` CHARACTER SET latin1 COLLATE latin1_swedish_ci */ ;\n"
      "USE `lending`;\n");
   ASSERT_TRUE(r.bOk) << r.sError.toStdString();
   EXPECT_EQ(import_test::entityNames(r.pProject), QStringList({ "A" }));
}

// The same schema read from the test server and from its dump files gives the same model: the
// project's JSON, byte for byte, but for the project's name.
class ImportDumpLive : public ::testing::TestWithParam<enum_dialect> { };

TEST_P(ImportDumpLive, ADumpFileGivesTheModelTheServerGives)
{
   QTemporaryDir dir;
   QString sUrl, sError;
   ASSERT_TRUE(import_test::prepareSource(GetParam(), "lending", dir.path(), sUrl, sError)) << sError.toStdString();
   const import_test::import_run live = import_test::importSource(sUrl);
   ASSERT_TRUE(live.bOk) << live.sError.toStdString();
   const QString sDialect = ((GetParam() == db_import::dialect_postgresql) ? "postgresql" : "mariadb");
   for (const char * szKind : { "schema", "full" })
   {
      const QString sFile = test_support::sourceDir() + "/tests/db_import/dumps/lending." + sDialect + "." + szKind + ".sql";
      SCOPED_TRACE(sFile.toStdString());
      const import_test::import_run dump = import_test::importDdl(sFile);
      ASSERT_TRUE(dump.bOk) << dump.sError.toStdString();
      EXPECT_EQ(dump.pProject->getName(), live.pProject->getName());
      EXPECT_EQ(storage::project_storage::toJson(* dump.pProject).toStdString(), storage::project_storage::toJson(* live.pProject).toStdString());
   }
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, ImportDumpLive, ::testing::Values(db_import::dialect_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDB, ImportDumpLive, ::testing::Values(db_import::dialect_mariadb));

} // namespace
