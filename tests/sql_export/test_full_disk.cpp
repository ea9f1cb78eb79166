// A full disk, played by a file size limit of zero (every write to a file then fails with
// "File too large"): each command that writes a file exits 1 with the system's reason and
// leaves the former file byte for byte as it was.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "sql_cli_fixture.h"
#include "test_support.h"

namespace {

const QByteArray k_oldText = "-- the former file, which must stay as it is\n";

class FullDisk : public sql_test::sql_cli_fixture
{
protected:
   // The program under a file size limit of iBlocks KiB with SIGXFSZ ignored, in the model's folder; its
   // standard output goes to sStdout when given (a file beside the model).
   test_support::cli_result runLimited(const QStringList & args, const QString & sStdout = QString(), int iBlocks = 0)
   {
      QProcess proc;
      proc.setProgram("/bin/bash");
      const QString sRedirect = (sStdout.isEmpty() ? QString() : QStringLiteral(" > \"$TAVREL_TEST_STDOUT\""));
      proc.setArguments(QStringList { "-c", "ulimit -f " + QString::number(iBlocks) + " && trap '' XFSZ && exec \"$0\" \"$@\"" + sRedirect, test_support::binaryDir() + "/bin/tavrel" } + args);
      proc.setWorkingDirectory(m_dir.path());
      QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
      env.remove("LUMOR_DIR");
      env.insert("QT_QPA_PLATFORM", "offscreen");
      env.insert("XDG_CONFIG_HOME", m_dir.filePath("config"));
      env.insert("TAVREL_TEST_STDOUT", sStdout);
      proc.setProcessEnvironment(env);
      proc.start();
      test_support::cli_result r;
      if (! proc.waitForFinished(180000)) { proc.kill(); proc.waitForFinished(); return r; }
      r.code = ((proc.exitStatus() == QProcess::NormalExit) ? proc.exitCode() : -2);
      r.out = QString::fromUtf8(proc.readAllStandardOutput());
      r.err = QString::fromUtf8(proc.readAllStandardError());
      return r;
   }

   QString oldFile(const QString & sName)
   {
      const QString s = m_dir.filePath(sName);
      EXPECT_TRUE(test_support::writeAll(s, k_oldText));
      return s;
   }

   QString project()
   {
      const QString s = m_dir.filePath("garden.tavrel");
      EXPECT_EQ(test_support::runTavrel({ "import", m_sModel, s }).code, 0);
      return s;
   }
};

} // namespace

TEST_F(FullDisk, SchemaScriptStaysWholeAndTheReasonIsGiven)
{
   const QString sProject = project();
   const QString sScript = oldFile("garden.sql");
   const test_support::cli_result r = runLimited({ "export", sProject, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=sqlite",
                                                   "--TavrelSqlExport_path=garden.sql" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("Cannot write the SQL script") && r.err.contains("File too large")) << r.err.toStdString();
   EXPECT_FALSE(r.out.contains("Written")) << r.out.toStdString();
   EXPECT_EQ(test_support::readAll(sScript), k_oldText);
   EXPECT_EQ(QDir(m_dir.path()).entryList({ "garden.sql*" }, QDir::Files | QDir::Hidden), QStringList("garden.sql"));
}

TEST_F(FullDisk, MigrationFileStaysWholeAndTheReasonIsGiven)
{
   const QString sScript = oldFile("garden.migration.sql");
   const test_support::cli_result r = runLimited({ "migrate", m_sModel, m_sModel, "--dialect", "postgresql", "-o", sScript });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("File too large")) << r.err.toStdString();
   EXPECT_FALSE(r.out.contains("Wrote")) << r.out.toStdString();
   EXPECT_EQ(test_support::readAll(sScript), k_oldText);
}

TEST_F(FullDisk, MigrationToStandardOutputReportsTheFailedWrite)
{
   const QString sOut = m_dir.filePath("migration.sql");
   const test_support::cli_result r = runLimited({ "migrate", m_sModel, m_sModel, "--dialect", "sqlite" }, sOut);
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("standard output") && r.err.contains("File too large")) << r.err.toStdString();
}

TEST_F(FullDisk, DumpToStandardOutputReportsTheFailedWrite)
{
   const QString sProject = project();
   const test_support::cli_result r = runLimited({ "dump", sProject }, m_dir.filePath("dump.json"));
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("standard output") && r.err.contains("File too large")) << r.err.toStdString();
}

TEST_F(FullDisk, DiagramFileStaysWholeAndTheReasonIsGiven)
{
   const QString sProject = project();
   const QString sDiagram = oldFile("garden.dot");
   const test_support::cli_result r = runLimited({ "diagram", sProject, "-o", sDiagram, "--format", "dot" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("File too large")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(sDiagram), k_oldText);
}

// The script fits under the limit, the record of the export in the project file does not: a
// failure, and the project file as it was.
TEST_F(FullDisk, RecordOfTheExportThatCannotBeWrittenIsAFailure)
{
   const QString sProject = project();
   const QByteArray before = test_support::readAll(sProject);
   const test_support::cli_result r = runLimited({ "export", sProject, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=sqlite",
                                                   "--TavrelSqlExport_path=garden.sql" }, QString(), 1);
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("record")) << r.err.toStdString();
   EXPECT_EQ(test_support::readAll(sProject), before);
}
