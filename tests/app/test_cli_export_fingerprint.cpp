// The fingerprint kept with the export record: an unchanged re-export whose inputs are those of
// the last export trusts every file that still has its recorded hash instead of generating it,
// and says exactly what generating would have said; any other input takes the full way.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QFileInfo>
#include <QSqlDatabase>

#include <gtest/gtest.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "gui/plugin/export_files.h"
#include "storage/export_record.h"
#include "storage/project_storage.h"
#include "cli_shop_workspace.h"
#include "test_support.h"

using test_support::cli_result;

namespace {

const char k_szPlugin[] = "TavrelCppExport";
const QString k_sHandEdit = QStringLiteral("// edited by hand\n");

std::string text(const cli_result & r) { return ("code: " + QString::number(r.code) + "\nout: " + r.out + "\nerr: " + r.err).toStdString(); }

// The output with the summary's duration, the one part that differs between two runs.
QString withoutDuration(const QString & s)
{
   QString result = s;
   result.replace(QRegularExpression("\\(\\d+\\.\\d\\d s\\)"), "(duration)");
   return result;
}

class CliExportFingerprint : public CliShopWorkspace
{
protected:
   QString outDir() const { return QDir(path("out")).absolutePath(); }

   // The header of the entity Customer, relative to the export directory.
   QString customerHeader() const
   {
      const QStringList lst = QDir(path("out/include")).entryList({ "*Customer.gen.h" }, QDir::Files);
      EXPECT_EQ(lst.size(), 1) << lst.join(", ").toStdString();
      return (lst.isEmpty() ? QString() : "include/" + lst.first());
   }

   // Runs f on the record of the last export into "out" and writes back what f leaves.
   void editRecord(const std::function<void(storage::export_record::files &, QByteArray &)> & f)
   {
      QSqlDatabase db;
      ASSERT_TRUE(storage::project_storage::openDatabase(path("shop.tavrel"), db).getValue());
      storage::export_record::files record;
      QByteArray fingerprint;
      ASSERT_TRUE(storage::export_record::read(db, k_szPlugin, outDir(), record, & fingerprint).getValue());
      ASSERT_FALSE(record.isEmpty());
      f(record, fingerprint);
      ASSERT_TRUE(storage::export_record::write(db, k_szPlugin, outDir(), record, fingerprint).getValue());
      storage::project_storage::closeDatabase(db);
   }

   QByteArray recordedFingerprint()
   {
      QByteArray result;
      editRecord([&](storage::export_record::files &, QByteArray & fingerprint) { result = fingerprint; });
      return result;
   }

   // Edits a generated file and gives the record the hash of the edited text, keeping its
   // fingerprint: only generating the file again undoes the edit.
   void editBehindTheRecord(const QString & sRel)
   {
      const QString sPath = path("out/" + sRel);
      const QByteArray edited = test_support::readAll(sPath) + k_sHandEdit.toUtf8();
      ASSERT_TRUE(test_support::writeAll(sPath, edited));
      editRecord([&](storage::export_record::files & record, QByteArray &)
      {
         ASSERT_TRUE(record.contains(sRel));
         record.insert(sRel, plugin::export_files::hashOf(QString::fromUtf8(edited)));
      });
   }

   bool stillEdited(const QString & sRel) const { return QString::fromUtf8(test_support::readAll(path("out/" + sRel))).endsWith(k_sHandEdit); }

   // Exports with extra, edits Customer's header behind the record, then exports with next:
   // true when that export generated the header again.
   bool regeneratedAfter(const QStringList & extra, const QStringList & next, const test_support::cli_options & options = test_support::cli_options())
   {
      const cli_result first = run(extra, options);
      EXPECT_EQ(first.code, 0) << text(first);
      const QString sRel = customerHeader();
      editBehindTheRecord(sRel);
      const cli_result second = run(next, options);
      EXPECT_EQ(second.code, 0) << text(second);
      return ! stillEdited(sRel);
   }

   cli_result run(const QStringList & extra, const test_support::cli_options & options = test_support::cli_options()) const
   {
      return test_support::runTavrel(QStringList({ "export", m_sModel, "--lumor-path", path("lumor"), "--TavrelCppExport_path=out" }) + extra, options);
   }

   // Custom templates: the built-in ones of the plain style, with suffix appended to the header.
   QStringList customTemplates(const QString & sSuffix = QString())
   {
      const QString sDocs = test_support::sourceDir() + "/src/cpp_export/resources/cpp_export/documents/";
      EXPECT_TRUE(test_support::writeAll(path("t.h"), test_support::readAll(sDocs + "template_no_inheritance.h") + sSuffix.toUtf8()));
      EXPECT_TRUE(test_support::writeAll(path("t.cpp"), test_support::readAll(sDocs + "template_no_inheritance.cpp")));
      return { "--TavrelCppExport_template_type=4", "--TavrelCppExport_template_header=" + path("t.h"),
               "--TavrelCppExport_template_source=" + path("t.cpp") };
   }
};

} // namespace

TEST_F(CliExportFingerprint, SameInputsTrustTheRecordedFiles)
{
   const cli_result first = run({});
   ASSERT_EQ(first.code, 0) << text(first);
   EXPECT_FALSE(recordedFingerprint().isEmpty());
   const QString sRel = customerHeader();
   editBehindTheRecord(sRel);
   const cli_result second = run({ "--verbose" });
   EXPECT_EQ(second.code, 0) << text(second);
   // Not generated: the record vouched for it.
   EXPECT_TRUE(stillEdited(sRel));
   EXPECT_TRUE(second.out.contains("  " + sRel)) << text(second);
}

TEST_F(CliExportFingerprint, TrustedReExportSaysWhatAFullOneSays)
{
   ASSERT_EQ(run({}).code, 0);
   for (const QStringList & extra : { QStringList(), QStringList({ "--verbose" }), QStringList({ "--dry-run", "--verbose" }), QStringList({ "--check" }) })
   {
      // Without a fingerprint in the record every file is generated and compared.
      editRecord([](storage::export_record::files &, QByteArray & fingerprint) { fingerprint.clear(); });
      const cli_result full = run(extra);
      ASSERT_EQ(run({}).code, 0);
      ASSERT_FALSE(recordedFingerprint().isEmpty());
      const cli_result trusted = run(extra);
      const std::string sWhat = extra.join(' ').toStdString();
      EXPECT_EQ(full.code, 0) << sWhat << text(full);
      EXPECT_EQ(trusted.code, full.code) << sWhat;
      EXPECT_EQ(withoutDuration(trusted.out), withoutDuration(full.out)) << sWhat;
      EXPECT_EQ(withoutDuration(trusted.err), withoutDuration(full.err)) << sWhat;
   }
}

TEST_F(CliExportFingerprint, EditedOrMissingFileIsGeneratedAgain)
{
   ASSERT_EQ(run({}).code, 0);
   const QString sRel = customerHeader();
   const QByteArray generated = test_support::readAll(path("out/" + sRel));
   ASSERT_TRUE(test_support::writeAll(path("out/" + sRel), generated + k_sHandEdit.toUtf8()));
   cli_result r = run({ "--verbose" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(r.out.contains("M " + sRel)) << text(r);
   EXPECT_FALSE(stillEdited(sRel));

   ASSERT_TRUE(QFile::remove(path("out/" + sRel)));
   r = run({ "--verbose" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(r.out.contains("A " + sRel)) << text(r);
   EXPECT_TRUE(QFile::exists(path("out/" + sRel)));
}

TEST_F(CliExportFingerprint, ChangedModelIsGeneratedAgain)
{
   ASSERT_EQ(run({}).code, 0);
   const QString sRel = customerHeader();
   editBehindTheRecord(sRel);
   // Another entity's description: the edited header itself does not depend on it.
   QByteArray model = test_support::readAll(m_sModel);
   ASSERT_TRUE(model.contains("never changed once written"));
   model.replace("never changed once written", "never changed once sent");
   ASSERT_TRUE(test_support::writeAll(m_sModel, model));
   const cli_result r = run({});
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_FALSE(stillEdited(sRel));
}

TEST_F(CliExportFingerprint, ChangedSettingIsGeneratedAgain)
{
   EXPECT_TRUE(regeneratedAfter({}, { "--TavrelCppExport_generate_pimpl=1" }));
}

TEST_F(CliExportFingerprint, ChangedLumorPathIsGeneratedAgain)
{
   ASSERT_TRUE(QDir().mkpath(path("lumor2")));
   const cli_result first = run({});
   ASSERT_EQ(first.code, 0) << text(first);
   const QString sRel = customerHeader();
   editBehindTheRecord(sRel);
   const cli_result r = test_support::runTavrel({ "export", m_sModel, "--lumor-path", path("lumor2"), "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_FALSE(stillEdited(sRel));
}

TEST_F(CliExportFingerprint, ChangedTemplateIsGeneratedAgain)
{
   const QStringList lstCustom = customTemplates();
   const cli_result first = run(lstCustom);
   ASSERT_EQ(first.code, 0) << text(first);
   // The same templates again: trusted, so the test below is not passed by chance.
   const QString sRel = customerHeader();
   editBehindTheRecord(sRel);
   ASSERT_EQ(run(lstCustom).code, 0);
   ASSERT_TRUE(stillEdited(sRel));
   // The template file edited on disk, its name unchanged.
   customTemplates("// one more line of the template\n");
   const cli_result r = run(lstCustom);
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_FALSE(stillEdited(sRel));
}

TEST_F(CliExportFingerprint, RebuiltPlugInIsGeneratedAgain)
{
   // A copy of the plug-in found first, whose file then changes as a rebuild changes it.
   ASSERT_TRUE(QDir().mkpath(path("plugins")));
   const QString sPlugin = test_support::binaryDir() + "/bin/plugins/libTavrelCppExport.so";
   ASSERT_TRUE(QFile::copy(sPlugin, path("plugins/libTavrelCppExport.so")));
   test_support::cli_options options;
   options.env.insert("TAVREL_PLUGIN_PATH", path("plugins"));
   const cli_result first = run({}, options);
   ASSERT_EQ(first.code, 0) << text(first);
   const QString sRel = customerHeader();
   editBehindTheRecord(sRel);
   ASSERT_EQ(run({}, options).code, 0);
   ASSERT_TRUE(stillEdited(sRel));
   ASSERT_TRUE(QFile::remove(path("plugins/libTavrelCppExport.so")));
   ASSERT_TRUE(QFile::copy(sPlugin, path("plugins/libTavrelCppExport.so")));
   const cli_result r = run({}, options);
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_FALSE(stillEdited(sRel));
}

TEST_F(CliExportFingerprint, UserScriptAlwaysGenerates)
{
   ASSERT_TRUE(test_support::writeAll(path("s.js"), "function execute(params) { return undefined; }\n"));
   const QStringList lstScript({ "--TavrelCppExport_custom_javacript=" + path("s.js") });
   EXPECT_TRUE(regeneratedAfter(lstScript, lstScript));
   EXPECT_TRUE(recordedFingerprint().isEmpty());
}

TEST_F(CliExportFingerprint, DateWhereFilesAreComparedRecordsNoFingerprint)
{
   // The banner runs into the code: its dated line is part of what is compared.
   const QStringList lstCustom = customTemplates();
   QByteArray header = test_support::readAll(path("t.h"));
   const QByteArray banner("@@COMMENT_FILE_CREATED_BY@@\r\n\r\n");
   ASSERT_TRUE(header.startsWith(banner));
   header.replace(0, banner.size(), "@@COMMENT_FILE_CREATED_BY@@// no blank line\r\n");
   ASSERT_TRUE(test_support::writeAll(path("t.h"), header));
   EXPECT_TRUE(regeneratedAfter(lstCustom, lstCustom));
   EXPECT_TRUE(recordedFingerprint().isEmpty());
}

TEST_F(CliExportFingerprint, ModelWithProblemsIsCheckedEveryTime)
{
   ASSERT_TRUE(test_support::writeAll(path("odd.json"),
      R"({"name": "odd", "entities": [{"name": "A", "namespace": "a::::b", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})"));
   const QStringList lstExport({ "export", path("odd.json"), "--lumor-path", path("lumor"), "--TavrelCppExport_path=out" });
   cli_result r = test_support::runTavrel(lstExport + QStringList({ "--yes" }));
   ASSERT_EQ(r.code, 0) << text(r);
   ASSERT_TRUE(r.err.contains("Some errors have been detected in current project")) << text(r);
   // The same model again: the question comes again, and declining it still cancels.
   r = test_support::runTavrel(lstExport + QStringList({ "--no" }));
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains("the question 'Some errors have been detected in current project :' was answered No")) << text(r);
}

TEST_F(CliExportFingerprint, ModelCheckedByTheRecordedExportIsNotCheckedAgain)
{
   // A fingerprint is recorded only after a model without problems: the same one is trusted, an
   // edited one is checked (here it has a problem now, and declining it cancels).
   ASSERT_EQ(run({}).code, 0);
   ASSERT_FALSE(recordedFingerprint().isEmpty());
   cli_result r = run({ "--no" });
   EXPECT_EQ(r.code, 0) << text(r);
   QByteArray model = test_support::readAll(m_sModel);
   const QByteArray invoice("\"name\": \"Invoice\", \"namespace\": \"shop::sales\"");
   ASSERT_TRUE(model.contains(invoice));
   model.replace(invoice, "\"name\": \"Invoice\", \"namespace\": \"shop::::sales\"");
   ASSERT_TRUE(test_support::writeAll(m_sModel, model));
   r = run({ "--no" });
   EXPECT_EQ(r.code, 1) << text(r);
   EXPECT_TRUE(r.err.contains("Some errors have been detected in current project")) << text(r);
}

TEST_F(CliExportFingerprint, ProjectFilesFollowTheSameFingerprint)
{
   ASSERT_EQ(run({}).code, 0);
   editBehindTheRecord("CMakeLists.txt");
   cli_result r = run({ "--verbose" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(stillEdited("CMakeLists.txt"));
   EXPECT_TRUE(r.out.contains("  CMakeLists.txt")) << text(r);
   // Another input: the project file is generated again.
   ASSERT_TRUE(QDir().mkpath(path("lumor2")));
   r = test_support::runTavrel({ "export", m_sModel, "--lumor-path", path("lumor2"), "--TavrelCppExport_path=out" });
   EXPECT_EQ(r.code, 0) << text(r);
   EXPECT_FALSE(stillEdited("CMakeLists.txt"));
}

// A record kept by an older version hashed each text as held in memory (UTF-16). Its hashes
// still tell an untouched stale file from an edited one, no file is taken on trust by them, and
// the next record holds hashes of the files' bytes.
TEST_F(CliExportFingerprint, RecordOfAnOlderVersionIsReadAndReplaced)
{
   ASSERT_EQ(run({}).code, 0);
   ASSERT_TRUE(test_support::writeAll(path("out/include/shop_Gone.gen.h"), "// no longer generated\n"));
   ASSERT_TRUE(test_support::writeAll(path("out/include/shop_Edited.gen.h"), "// edited since\n"));
   auto heldTextHash = [](const QString & sText)
   {
      const XXH64_hash_t h = XXH3_64bits(sText.constData(), static_cast<size_t>(sText.size()) * sizeof(QChar));
      return QByteArray::number(static_cast<qulonglong>(h), 16).rightJustified(16, '0');
   };
   storage::export_record::files record;
   QByteArray fingerprint;
   editRecord([&](storage::export_record::files & r, QByteArray & f) { record = r; fingerprint = f; });
   ASSERT_FALSE(fingerprint.isEmpty());
   QByteArray old = QByteArray("2") + '\0' + fingerprint + '\0';
   for (auto it = record.constBegin(); it != record.constEnd(); ++it)
   {
      const QString sText = (it->isEmpty() ? QString() : QString::fromUtf8(test_support::readAll(path("out/" + it.key()))));
      old += (it->isEmpty() ? QByteArray() : heldTextHash(sText)) + '\0' + it.key().toUtf8() + '\0';
   }
   old += heldTextHash("// no longer generated\n") + '\0' + "include/shop_Gone.gen.h" + '\0';
   old += heldTextHash("// as the export left it\n") + '\0' + "include/shop_Edited.gen.h" + '\0';
   // The row as an older version wrote it (this test's project has one record).
   ASSERT_TRUE(test_support::execOnProject(path("shop.tavrel"), "UPDATE t_export_record SET files = ?", qCompress(old, 1)));

   QStringList before = test_support::treeState(path("out"));
   const cli_result r = run({ "--verbose" });
   ASSERT_EQ(r.code, 0) << text(r);
   EXPECT_TRUE(r.out.contains("D include/shop_Gone.gen.h")) << text(r);
   EXPECT_TRUE((r.out + r.err).contains("include/shop_Edited.gen.h : no longer generated but changed since the last export, kept")) << text(r);
   EXPECT_FALSE(QFileInfo::exists(path("out/include/shop_Gone.gen.h")));
   // Nothing else was written: the files did not change, only their record's kind.
   before.removeIf([](const QString & sLine) { return sLine.startsWith("include/shop_Gone.gen.h|"); });
   EXPECT_EQ(test_support::treeState(path("out")).join("\n").toStdString(), before.join("\n").toStdString());

   // The new record: every hash is that of the file's bytes, and the next export trusts it.
   record.clear();
   editRecord([&](storage::export_record::files & r2, QByteArray &) { record = r2; });
   EXPECT_FALSE(record.contains("include/shop_Gone.gen.h"));
   for (auto it = record.constBegin(); it != record.constEnd(); ++it)
   {
      if (it->isEmpty()) { continue; }
      EXPECT_EQ(* it, plugin::export_files::hashOfBytes(test_support::readAll(path("out/" + it.key())))) << it.key().toStdString();
   }
   const QString sRel = customerHeader();
   editBehindTheRecord(sRel);
   EXPECT_EQ(run({}).code, 0);
   EXPECT_TRUE(stillEdited(sRel));
}
