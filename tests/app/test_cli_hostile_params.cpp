#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "storage/export_record.h"
#include "storage/project_storage.h"
#include "cli_shop_workspace.h"
#include "test_support.h"

// Command lines, export directories and project files that cannot give a complete export: each
// is refused with a message naming what is wrong, and leaves the user's files as they were.

namespace {

using test_support::cli_result;
using test_support::runTavrel;

class CliHostile : public CliShopWorkspace
{
protected:
   QString lockFile() const { return path("out/.tavrel_export.lock"); }
};

std::string text(const cli_result & r) { return ("out: " + r.out + "\nerr: " + r.err).toStdString(); }

} // namespace

TEST_F(CliHostile, CustomStyleWithoutTemplatesIsAnError)
{
   for (const QStringList & extra : { QStringList(), QStringList({ "--dry-run" }), QStringList({ "--check" }) })
   {
      const cli_result r = exportWith(QStringList({ "--TavrelCppExport_template_type=4" }) + extra);
      EXPECT_EQ(r.code, 1) << extra.join(' ').toStdString() << text(r);
      EXPECT_TRUE(r.err.contains("Custom templates are selected (TavrelCppExport_template_type=4) but no header template "
                                 "(--TavrelCppExport_template_header=FILE) and no source template (--TavrelCppExport_template_source=FILE) is set"))
         << text(r);
      EXPECT_TRUE(test_support::treeState(path("out")).isEmpty()) << extra.join(' ').toStdString();
   }

   // One template given: the other one is named.
   ASSERT_TRUE(test_support::writeAll(path("t.h"), "// @@ENTITY_NAME@@\n"));
   const cli_result r = exportWith({ "--TavrelCppExport_template_type=4", "--TavrelCppExport_template_header=" + path("t.h") });
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains("but no source template (--TavrelCppExport_template_source=FILE) is set")) << text(r);
   EXPECT_FALSE(r.err.contains("no header template")) << text(r);
}

TEST_F(CliHostile, ParametersNoPluginReadsAreUsageErrors)
{
   struct refused { QStringList args; QString expected; };
   const QList<refused> lst = {
      { { "--TavrelSqlExport_dialect=oracle" }, "plug-in parameter '--TavrelSqlExport_dialect' belongs to the plug-in TavrelSqlExport, not to TavrelCppExport" },
      { { "--Bogus_x=1" }, "unknown plug-in parameter '--Bogus_x'" },
      { { "--tavrelcppexport_path=x" }, "unknown plug-in parameter '--tavrelcppexport_path' (did you mean --TavrelCppExport_path?)" },
      { { "--TavrelCppExport_generate_pimpl=" }, "plug-in parameter --TavrelCppExport_generate_pimpl needs a value" },
      { { "--TavrelCppExport_generate_pimpl" }, "plug-in parameter --TavrelCppExport_generate_pimpl needs a value" },
      { { "--TavrelCppExport_generate_pimpl=yes" }, "bad value 'yes' for --TavrelCppExport_generate_pimpl" } };
   for (const refused & c : lst)
   {
      const cli_result r = exportWith(c.args);
      EXPECT_EQ(r.code, 2) << c.args.join(' ').toStdString() << text(r);
      EXPECT_TRUE(r.err.contains(c.expected)) << text(r);
      EXPECT_TRUE(test_support::treeState(path("out")).isEmpty()) << c.args.join(' ').toStdString();
   }

   // check reads only the PIMPL switch, and only a well-formed one.
   for (const QString & a : { QString("--TavrelCppExport_generate_pimpl=yes"), QString("--TavrelCppExport_generate_pimpl="), QString("--Bogus_generate_pimpl=1") })
   {
      const cli_result r = runTavrel({ "check", m_sModel, a });
      EXPECT_EQ(r.code, 2) << a.toStdString() << text(r);
      EXPECT_TRUE(r.err.contains(a.section('=', 0, 0))) << text(r);
   }
   cli_result r = runTavrel({ "check", m_sModel, "--TavrelCppExport_generate_pimpl=1" });
   EXPECT_EQ(r.code, 0) << text(r);

   // The right plug-in's own parameters, and the C++ ones in full, still export.
   r = runTavrel({ "export", m_sModel, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=sqlite", "--TavrelSqlExport_path=" + path("out/schema.sql") });
   EXPECT_EQ(r.code, 0) << text(r);
   r = exportWith({ "--TavrelCppExport_generate_pimpl=0", "--TavrelCppExport_template_type=1", "--TavrelCppExport_generate_custom_files=0" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(QFileInfo::exists(path("out/include/shop_Customer.gen.h")));
}

TEST_F(CliHostile, EmptyOrDamagedLockIsTakenOver)
{
   for (const QByteArray & content : { QByteArray(), QByteArray("not a lock\n\x01\x02"), QByteArray("0\n\n\n") })
   {
      ASSERT_TRUE(test_support::writeAll(lockFile(), content));
      const cli_result r = exportWith({});
      EXPECT_EQ(r.code, 0) << text(r);
      EXPECT_TRUE(r.err.contains("warning: The lock file '" + lockFile() + "' named no process (empty or damaged) : it was taken over")) << text(r);
      EXPECT_FALSE(QFileInfo::exists(lockFile()));
      EXPECT_TRUE(QFileInfo::exists(path("out/include/shop_Customer.gen.h")));
   }

   // A lock naming (on this machine) a process that cannot exist is one left behind.
   ASSERT_TRUE(test_support::writeAll(lockFile(), "2147483647\ntavrel\n\n"));
   const cli_result r = exportWith({});
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(r.err.contains("of an export that is no longer running was taken over")) << text(r);
   EXPECT_FALSE(QFileInfo::exists(lockFile()));
}

TEST_F(CliHostile, LinkedLockIsReplacedNotWrittenThrough)
{
   // The link points at a file of the user's holding no valid lock, and at one that does not exist.
   ASSERT_TRUE(test_support::writeAll(path("mine.txt"), "my own notes\n"));
   for (const QString & target : { path("mine.txt"), path("nowhere.txt") })
   {
      ASSERT_TRUE(QFile::link(target, lockFile()));
      const cli_result r = exportWith({});
      EXPECT_EQ(r.code, 0) << text(r);
      EXPECT_TRUE(r.err.contains("warning: The lock file '" + lockFile() + "' was a symbolic link (to '" + target + "') : the link was removed")) << text(r);
      EXPECT_FALSE(QFileInfo(lockFile()).isSymLink());
      EXPECT_FALSE(QFileInfo::exists(lockFile()));
      EXPECT_EQ(test_support::readAll(path("mine.txt")), QByteArray("my own notes\n"));
      EXPECT_FALSE(QFileInfo::exists(path("nowhere.txt")));
   }
}

TEST_F(CliHostile, DryRunAndCheckMakeNoDirectoryNorLock)
{
   for (const QString & option : { QString("--dry-run"), QString("--check") })
   {
      const cli_result r = exportWith({ option }, "fresh/deeper");
      EXPECT_EQ(r.code, (option == "--check") ? 1 : 0) << text(r);
      EXPECT_TRUE(r.out.contains("A include/shop_Customer.gen.h\n")) << text(r);
      EXPECT_TRUE(r.out.contains(" to write, ")) << text(r);
      EXPECT_TRUE(r.err.contains("a dry run does not create it")) << text(r);
      EXPECT_FALSE(QFileInfo::exists(path("fresh"))) << option.toStdString();
   }

   // After a real export, a dry run of a changed model leaves the record as it was.
   ASSERT_EQ(exportWith({}).code, 0);
   auto record = [this]()
   {
      QSqlDatabase db;
      storage::export_record::files files;
      EXPECT_TRUE(storage::project_storage::openDatabase(path("shop.tavrel"), db).getValue());
      EXPECT_TRUE(storage::export_record::read(db, "TavrelCppExport", QDir(path("out")).absolutePath(), files).getValue());
      storage::project_storage::closeDatabase(db);
      return files;
   };
   const storage::export_record::files before = record();
   ASSERT_FALSE(before.isEmpty());
   QByteArray json = test_support::readAll(m_sModel);
   ASSERT_TRUE(json.contains("\"Row identifier\""));
   ASSERT_TRUE(test_support::writeAll(m_sModel, json.replace("\"Row identifier\"", "\"Row number\"")));
   const QStringList tree = test_support::treeState(path("out"));
   cli_result r = exportWith({ "--dry-run" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(r.out.contains("M include/shop_Base.gen.h\n")) << text(r);
   EXPECT_EQ(record(), before);
   EXPECT_EQ(test_support::treeState(path("out")), tree);

   // A damaged lock in an existing directory stays as it is: a dry run takes no lock.
   ASSERT_TRUE(test_support::writeAll(lockFile(), "garbage"));
   r = exportWith({ "--dry-run" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_EQ(test_support::readAll(lockFile()), QByteArray("garbage"));
   EXPECT_EQ(test_support::treeState(path("out"), { ".tavrel_export.lock" }), tree);
}

TEST_F(CliHostile, ExportPathBelowAFileNamesTheFile)
{
   ASSERT_TRUE(test_support::writeAll(path("plain"), "a file\n"));
   for (const QString & sOut : { QString("plain/sub"), QString("plain/sub/deeper") })
   {
      for (const QStringList & extra : { QStringList(), QStringList({ "--dry-run" }) })
      {
         const cli_result r = exportWith(extra, sOut);
         EXPECT_EQ(r.code, 1) << text(r);
         EXPECT_TRUE(r.err.contains("tavrel: Cannot export : the export path '" + path(sOut) + "' lies below '" + path("plain") + "', which is a file, not a directory")) << text(r);
         EXPECT_FALSE(r.err.contains("dialog")) << text(r);
      }
   }
   // The file itself as the export path, in a dry run too.
   const cli_result r = exportWith({ "--dry-run" }, "plain");
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains("the export path '" + path("plain") + "' is an existing file, not a directory")) << text(r);
   EXPECT_EQ(test_support::readAll(path("plain")), QByteArray("a file\n"));
}

TEST_F(CliHostile, LumorPathEndingInABackslashIsRefused)
{
   // Such directories exist, so only the path's text can refuse them.
   ASSERT_TRUE(QDir().mkpath(path("lib\\")));
   cli_result r = runTavrel({ "export", m_sModel, "--lumor-path", path("lib\\"), "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains("Lumor library path is not valid : " + path("lib\\"))) << text(r);
   EXPECT_TRUE(r.err.contains("ends with a backslash")) << text(r);
   EXPECT_TRUE(test_support::treeState(path("out")).isEmpty());

   // A backslash inside is read as '/' by the project files: that must still be the directory.
   ASSERT_TRUE(QDir().mkpath(path("a\\b")));
   r = runTavrel({ "export", m_sModel, "--lumor-path", path("a\\b"), "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains("With its backslashes read as '/', as the generated project files read them, it names no directory")) << text(r);
   EXPECT_TRUE(test_support::treeState(path("out")).isEmpty());
}

TEST_F(CliHostile, RecordedFileOutsideTheExportDirectoryIsLeftAlone)
{
   ASSERT_EQ(exportWith({}).code, 0);
   const QString sProject = path("shop.tavrel");
   const QString sOut = QDir(path("out")).absolutePath();
   ASSERT_TRUE(test_support::writeAll(path("x.h"), "beside the export\n"));
   ASSERT_TRUE(test_support::writeAll(path("abs.h"), "elsewhere\n"));
   {
      QSqlDatabase db;
      ASSERT_TRUE(storage::project_storage::openDatabase(sProject, db).getValue());
      storage::export_record::files record;
      ASSERT_TRUE(storage::export_record::read(db, "TavrelCppExport", sOut, record).getValue());
      ASSERT_FALSE(record.isEmpty());
      // The hashes are those of the files as they are: only where they lie can keep them.
      record.insert("../x.h", QByteArray());
      record.insert(path("abs.h"), QByteArray());
      record.insert("include/../../x.h", QByteArray());
      ASSERT_TRUE(storage::export_record::write(db, "TavrelCppExport", sOut, record).getValue());
      storage::project_storage::closeDatabase(db);
   }
   const QStringList before = test_support::treeState(m_tmp.path(), { "out", "shop.tavrel" });
   const cli_result r = exportWith({});
   EXPECT_EQ(r.code, 0) << text(r);
   for (const QString & sRel : { QString("../x.h"), path("abs.h"), QString("include/../../x.h") })
   {
      EXPECT_TRUE(r.err.contains("kept: " + sRel + " : recorded, but outside the export directory : left alone")) << text(r);
   }
   EXPECT_FALSE(r.err.contains("changed since the last export")) << text(r);
   EXPECT_EQ(test_support::treeState(m_tmp.path(), { "out", "shop.tavrel" }), before);
}

TEST_F(CliHostile, FileNameLongerThanTheSystemTakesIsRefusedBeforeWriting)
{
   const QString sName = "E" + QString(299, QLatin1Char('n'));
   const QString sModel = path("long.json");
   ASSERT_TRUE(test_support::writeAll(sModel, ("{\"name\": \"LONG\", \"entities\": [{\"name\": \"" + sName + "\", \"namespace\": \"big\", "
                                               "\"properties\": [{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}]}]}").toUtf8()));
   const QString sExpected = "Entity 'big::" + sName + "' gives the generated file name 'big_" + sName + ".gen.cpp', 312 bytes long : "
                             "a file name may have at most 255 bytes";
   cli_result r = runTavrel({ "check", sModel });
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.out.contains("error: " + sExpected)) << text(r);

   r = runTavrel({ "export", sModel, "--yes", "--lumor-path", path("lumor"), "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains(sExpected)) << text(r);
   EXPECT_FALSE(r.err.contains("File name too long")) << text(r);
   EXPECT_TRUE(test_support::treeState(path("out")).isEmpty());

   // At the limit the name still exports.
   const QString sFits = "E" + QString(255 - 8 - 4 - 1, QLatin1Char('n'));
   ASSERT_TRUE(test_support::writeAll(sModel, ("{\"name\": \"LONG\", \"entities\": [{\"name\": \"" + sFits + "\", \"namespace\": \"big\", "
                                               "\"properties\": [{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}]}]}").toUtf8()));
   r = runTavrel({ "check", sModel });
   EXPECT_EQ(r.code, 0) << text(r);
   r = runTavrel({ "export", sModel, "--lumor-path", path("lumor"), "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(QFileInfo::exists(path("out/src/big_" + sFits + ".gen.cpp")));
}
