#include <QDir>
#include <QFileInfo>
#include <QList>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

#include "context/ctx_project.h"
#include "model/plugin_params.h"
#include "cpp_export/plugin/cpp_export.h"
#include "test_support.h"

// Readable texts in the failure reports of this file.
static inline void PrintTo(const QString & text, std::ostream * os) { * os << '"' << text.toStdString() << '"'; }

namespace {

using plugin::cpp_export;
using plugin::cpp_template;

const char * const k_sModel = R"({
  "name": "Garden",
  "entities": [
    {"name": "Plant", "namespace": "garden", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "label", "type": "QString"}
    ]}
  ]
})";

const char * const k_sOtherGuid = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";

// The keys of the settings records, in the order they must be written.
const QStringList k_lstKeys = { "CPP_EXPORT_PATH", "CPP_TEMPLATE", "CUSTOM_CPP_TEMPLATE_HEADER", "CUSTOM_CPP_TEMPLATE_SOURCE",
                                "RELATIVE_PATH_LUMOR", "GENERATE_CUSTOM_FILES", "GENERATE_PIMPL", "CUSTOM_JAVASCRIPT" };

// One row of t_plugin_params as SQLite holds it.
struct raw_record
{
   qlonglong id = 0;
   QString guid;
   QString key;
   QVariant value;
   QString sqlType;   // SQLite's typeof(param_value)
   int metaType = 0;  // param_type
};

class SettingsPersistence : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sProjectFile;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      ASSERT_TRUE(test_support::writeAll(m_dir.filePath("garden.json"), QByteArray(k_sModel)));
      zy::ZyBool opened = context::ctx_project::openProject(m_dir.filePath("garden.json"));
      ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
      m_sProjectFile = m_dir.filePath("garden.tavrel");
      ASSERT_TRUE(QFileInfo::exists(m_sProjectFile));
   }

   void TearDown() override { context::ctx_project::closeProject(); }

   static QSqlDatabase db() { return context::ctx_project::getDatabase(); }

   static void exec(const QString & sql)
   {
      QSqlQuery query(db());
      ASSERT_TRUE(query.exec(sql)) << sql.toStdString() << " : " << query.lastError().text().toStdString();
   }

   // Writes a record directly, as another program (or an older version) would have.
   static void insertRaw(const QString & guid, const QString & key, const QVariant & value, int metaType)
   {
      QSqlQuery query(db());
      ASSERT_TRUE(query.prepare("INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) VALUES (?, ?, ?, ?)"));
      query.addBindValue(guid);
      query.addBindValue(key);
      query.addBindValue(value);
      query.addBindValue(metaType);
      ASSERT_TRUE(query.exec()) << query.lastError().text().toStdString();
   }

   static int countRecords(const QString & guid)
   {
      QSqlQuery query(db());
      EXPECT_TRUE(query.prepare("SELECT COUNT(*) FROM t_plugin_params WHERE plugin_guid = ?"));
      query.addBindValue(guid);
      EXPECT_TRUE(query.exec()) << query.lastError().text().toStdString();
      return (query.next() ? query.value(0).toInt() : -1);
   }

   static QList<raw_record> records(const QString & guid)
   {
      QList<raw_record> lst;
      QSqlQuery query(db());
      EXPECT_TRUE(query.prepare("SELECT id, plugin_guid, param_key, param_value, typeof(param_value), param_type "
                                "FROM t_plugin_params WHERE plugin_guid = ? ORDER BY id"));
      query.addBindValue(guid);
      EXPECT_TRUE(query.exec()) << query.lastError().text().toStdString();
      while (query.next())
      {
         raw_record r;
         r.id = query.value(0).toLongLong();
         r.guid = query.value(1).toString();
         r.key = query.value(2).toString();
         r.value = query.value(3);
         r.sqlType = query.value(4).toString();
         r.metaType = query.value(5).toInt();
         lst.append(r);
      }
      return lst;
   }

   static QStringList keysOf(const QList<raw_record> & lst)
   {
      QStringList keys;
      for (const raw_record & r : lst) { keys.append(r.key); }
      return keys;
   }

   // Every setting away from its default.
   static void setNonDefaults(cpp_export & p)
   {
      p.setCppExportPath("keep/me");
      p.setCppTemplate(cpp_template::ix_persistable_and_q_object);
      p.setCustomCppTemplate_HPP("// header kept\n");
      p.setCustomCppTemplate_CPP("// source kept\n");
      p.setRelativePathLumor(true);
      p.setGenerateCustomFiles(false);
      p.setPImpl(true);
      p.setCustomScriptFile("scripts/kept.js");
   }

   static void expectNonDefaults(const cpp_export & p)
   {
      EXPECT_EQ(p.getCppExportPath(false), QString("keep/me"));
      EXPECT_EQ(p.getCppTemplate(), cpp_template::ix_persistable_and_q_object);
      EXPECT_EQ(p.getCustomCppTemplate_HPP(), QString("// header kept\n"));
      EXPECT_EQ(p.getCustomCppTemplate_CPP(), QString("// source kept\n"));
      EXPECT_TRUE(p.getRelativePathLumor());
      EXPECT_FALSE(p.getGenerateCustomFiles());
      EXPECT_TRUE(p.getPImpl());
      EXPECT_EQ(p.getCustomScriptFile(), QString("scripts/kept.js"));
   }

   static void save(cpp_export & p)
   {
      QSqlError err = p.saveSettings();
      ASSERT_FALSE(err.isValid()) << err.text().toStdString();
   }

   static void load(cpp_export & p)
   {
      QSqlError err = p.loadSettings();
      ASSERT_FALSE(err.isValid()) << err.text().toStdString();
   }
};

} // namespace

TEST_F(SettingsPersistence, LoadWithoutRecordsChangesNothing)
{
   cpp_export p;
   ASSERT_EQ(countRecords(p.getGuid()), 0);
   setNonDefaults(p);
   load(p);
   expectNonDefaults(p);

   // The defaults are not restored either.
   cpp_export fresh;
   load(fresh);
   EXPECT_EQ(fresh.getCppExportPath(false), QString());
   EXPECT_EQ(fresh.getCppTemplate(), cpp_template::no_inheritance);
   EXPECT_TRUE(fresh.getGenerateCustomFiles());
}

TEST_F(SettingsPersistence, SavingTwiceLeavesExactlyEightRecords)
{
   cpp_export p;
   // Defaults are written as well: one record per setting, always.
   save(p);
   EXPECT_EQ(countRecords(p.getGuid()), 8);
   setNonDefaults(p);
   save(p);
   EXPECT_EQ(countRecords(p.getGuid()), 8);
   save(p);
   EXPECT_EQ(countRecords(p.getGuid()), 8);
   EXPECT_EQ(keysOf(records(p.getGuid())), k_lstKeys);

   QSqlQuery query(db());
   ASSERT_TRUE(query.exec("SELECT COUNT(*) FROM t_plugin_params"));
   ASSERT_TRUE(query.next());
   EXPECT_EQ(query.value(0).toInt(), 8);
}

TEST_F(SettingsPersistence, KeysAreWrittenInOrderWithTheirValueTypes)
{
   cpp_export p;
   p.setCppExportPath("gen/cpp");
   p.setCppTemplate(cpp_template::zy_persistable);
   p.setCustomCppTemplate_HPP("H");
   p.setCustomCppTemplate_CPP("S");
   p.setRelativePathLumor(true);
   p.setGenerateCustomFiles(false);
   p.setPImpl(true);
   p.setCustomScriptFile("hook.js");
   save(p);

   const QList<raw_record> lst = records(p.getGuid());
   ASSERT_EQ(lst.size(), 8);
   EXPECT_EQ(keysOf(lst), k_lstKeys);
   for (int i = 1; i < lst.size(); ++i) { EXPECT_LT(lst.at(i - 1).id, lst.at(i).id); }

   // Texts stay texts, the style an integer, the flags booleans (1/0 in SQLite).
   const QList<int> lstTypes = { QMetaType::QString, QMetaType::Int, QMetaType::QString, QMetaType::QString,
                                 QMetaType::Bool, QMetaType::Bool, QMetaType::Bool, QMetaType::QString };
   const QStringList lstSqlTypes = { "text", "integer", "text", "text", "integer", "integer", "integer", "text" };
   for (int i = 0; i < 8; ++i)
   {
      SCOPED_TRACE(lst.at(i).key.toStdString());
      EXPECT_EQ(lst.at(i).guid, p.getGuid());
      EXPECT_EQ(lst.at(i).metaType, lstTypes.at(i));
      EXPECT_EQ(lst.at(i).sqlType, lstSqlTypes.at(i));
   }
   EXPECT_EQ(lst.at(0).value.toString(), QString("gen/cpp"));
   EXPECT_EQ(lst.at(1).value.toLongLong(), 2);
   EXPECT_EQ(lst.at(2).value.toString(), QString("H"));
   EXPECT_EQ(lst.at(3).value.toString(), QString("S"));
   EXPECT_EQ(lst.at(4).value.toLongLong(), 1);
   EXPECT_EQ(lst.at(5).value.toLongLong(), 0);
   EXPECT_EQ(lst.at(6).value.toLongLong(), 1);
   EXPECT_EQ(lst.at(7).value.toString(), QString("hook.js"));

   // The host's record class gives the values back with the same types.
   model::plugin_params::list_of_plugin_params fetched;
   QSqlDatabase database = db();
   QSqlError err = model::plugin_params::fetchByGuid(p.getGuid(), fetched, & database);
   ASSERT_FALSE(err.isValid()) << err.text().toStdString();
   ASSERT_EQ(fetched.size(), 8);
   for (int i = 0; i < 8; ++i)
   {
      const model::plugin_params_ptr & item = fetched.getByIndex(i);
      EXPECT_EQ(item->getParamKey(), k_lstKeys.at(i));
      EXPECT_EQ(item->getParamValue().metaType().id(), lstTypes.at(i)) << k_lstKeys.at(i).toStdString();
   }

   // And a fresh plug-in reads every setting back.
   cpp_export q;
   q.clearSettings();
   load(q);
   EXPECT_EQ(q.getCppExportPath(false), QString("gen/cpp"));
   EXPECT_EQ(q.getCppTemplate(), cpp_template::zy_persistable);
   EXPECT_EQ(q.getCustomCppTemplate_HPP(), QString("H"));
   EXPECT_EQ(q.getCustomCppTemplate_CPP(), QString("S"));
   EXPECT_TRUE(q.getRelativePathLumor());
   EXPECT_FALSE(q.getGenerateCustomFiles());
   EXPECT_TRUE(q.getPImpl());
   EXPECT_EQ(q.getCustomScriptFile(), QString("hook.js"));
}

TEST_F(SettingsPersistence, OutOfRangeStyleAndRelativePathAreStoredAsTheyCome)
{
   cpp_export p;
   p.setCppTemplate(static_cast<cpp_template::enum_template>(7));
   p.setCppExportPath("../sibling/out");
   save(p);
   const QList<raw_record> lst = records(p.getGuid());
   ASSERT_EQ(lst.size(), 8);
   EXPECT_EQ(lst.at(1).value.toLongLong(), 7);
   EXPECT_EQ(lst.at(0).value.toString(), QString("../sibling/out"));
   cpp_export q;
   load(q);
   EXPECT_EQ(static_cast<int>(q.getCppTemplate()), 7);
   EXPECT_EQ(q.getCppExportPath(false), QString("../sibling/out"));
}

TEST_F(SettingsPersistence, LongTemplateTextsWithLineBreaksSurviveUnchanged)
{
   QString header;
   QString source;
   for (int i = 0; i < 6000; ++i)
   {
      header += QString("   int m_%1 = %1; // \"quoted\" \\ back\tslash \u00e9\u4e2d\r\n").arg(i);
      source += QString("@@CUSTOM_LINE_%1@@\n").arg(i);
      if ((i % 500) == 0) { header += "\r\n\r\n"; source += "\n\n   \n"; }
   }
   header += "// no line end at the very end";
   ASSERT_GT(header.size(), 300000);

   cpp_export p;
   p.setCustomCppTemplate_HPP(header);
   p.setCustomCppTemplate_CPP(source);
   save(p);

   cpp_export q;
   load(q);
   EXPECT_TRUE(q.getCustomCppTemplate_HPP() == header) << "header text changed, size " << q.getCustomCppTemplate_HPP().size();
   EXPECT_TRUE(q.getCustomCppTemplate_CPP() == source) << "source text changed, size " << q.getCustomCppTemplate_CPP().size();

   // Written again by the reloaded object: still the same texts.
   save(q);
   cpp_export r;
   load(r);
   EXPECT_TRUE(r.getCustomCppTemplate_HPP() == header);
   EXPECT_TRUE(r.getCustomCppTemplate_CPP() == source);
}

TEST_F(SettingsPersistence, RecordsOfAnotherGuidAreNeitherReadNorDeleted)
{
   insertRaw(k_sOtherGuid, "CPP_EXPORT_PATH", QString("other/path"), QMetaType::QString);
   insertRaw(k_sOtherGuid, "CPP_TEMPLATE", 4, QMetaType::Int);
   insertRaw(k_sOtherGuid, "GENERATE_PIMPL", 0, QMetaType::Bool);
   const QList<raw_record> before = records(k_sOtherGuid);
   ASSERT_EQ(before.size(), 3);

   cpp_export p;
   setNonDefaults(p);
   load(p);
   expectNonDefaults(p);

   save(p);
   save(p);
   EXPECT_EQ(countRecords(p.getGuid()), 8);
   const QList<raw_record> after = records(k_sOtherGuid);
   ASSERT_EQ(after.size(), 3);
   for (int i = 0; i < 3; ++i)
   {
      EXPECT_EQ(after.at(i).id, before.at(i).id);
      EXPECT_EQ(after.at(i).key, before.at(i).key);
      EXPECT_EQ(after.at(i).value, before.at(i).value);
   }

   cpp_export q;
   load(q);
   expectNonDefaults(q);
}

TEST_F(SettingsPersistence, LaterDuplicateWinsAndUnknownKeysAreIgnored)
{
   cpp_export p;
   const QString guid = p.getGuid();
   insertRaw(guid, "CPP_EXPORT_PATH", QString("first"), QMetaType::QString);
   insertRaw(guid, "CPP_TEMPLATE", 1, QMetaType::Int);
   insertRaw(guid, "cpp_template", 3, QMetaType::Int);           // keys are case-sensitive
   insertRaw(guid, "CPP_TEMPLATE ", 2, QMetaType::Int);          // and compared whole
   insertRaw(guid, "SOMETHING_ELSE", QString("x"), QMetaType::QString);
   insertRaw(guid, "CPP_EXPORT_PATH", QString("second"), QMetaType::QString);
   insertRaw(guid, "GENERATE_PIMPL", 1, QMetaType::Bool);
   insertRaw(guid, "GENERATE_PIMPL", 0, QMetaType::Bool);

   setNonDefaults(p);
   load(p);
   EXPECT_EQ(p.getCppExportPath(false), QString("second"));
   EXPECT_EQ(p.getCppTemplate(), cpp_template::ix_persistable);
   EXPECT_FALSE(p.getPImpl());
   // No record for these: loaded values stay.
   EXPECT_EQ(p.getCustomCppTemplate_HPP(), QString("// header kept\n"));
   EXPECT_EQ(p.getCustomCppTemplate_CPP(), QString("// source kept\n"));
   EXPECT_TRUE(p.getRelativePathLumor());
   EXPECT_FALSE(p.getGenerateCustomFiles());
   EXPECT_EQ(p.getCustomScriptFile(), QString("scripts/kept.js"));

   // Saving replaces all of them, the unknown ones too, by the eight known ones.
   save(p);
   EXPECT_EQ(keysOf(records(guid)), k_lstKeys);
}

TEST_F(SettingsPersistence, FailingInsertKeepsThePreviousRecords)
{
   cpp_export p;
   setNonDefaults(p);
   save(p);
   const QList<raw_record> before = records(p.getGuid());
   ASSERT_EQ(before.size(), 8);

   // The seventh record is refused, after the delete and six inserts have run.
   exec("CREATE TRIGGER t_refuse_pimpl BEFORE INSERT ON t_plugin_params "
        "WHEN NEW.param_key = 'GENERATE_PIMPL' BEGIN SELECT RAISE(ABORT, 'pimpl setting refused'); END");

   p.setCppExportPath("new/path");
   p.setCppTemplate(cpp_template::custom);
   p.setCustomCppTemplate_HPP("new header");
   p.setPImpl(false);
   QSqlError err = p.saveSettings();
   EXPECT_TRUE(err.isValid());
   EXPECT_TRUE(err.text().contains("pimpl setting refused")) << err.text().toStdString();

   const QList<raw_record> after = records(p.getGuid());
   ASSERT_EQ(after.size(), 8);
   for (int i = 0; i < 8; ++i)
   {
      EXPECT_EQ(after.at(i).id, before.at(i).id);
      EXPECT_EQ(after.at(i).key, before.at(i).key);
      EXPECT_EQ(after.at(i).value, before.at(i).value);
   }
   cpp_export q;
   load(q);
   expectNonDefaults(q);

   // The failed save left no transaction open: the next one goes through.
   exec("DROP TRIGGER t_refuse_pimpl");
   save(p);
   cpp_export r;
   load(r);
   EXPECT_EQ(r.getCppExportPath(false), QString("new/path"));
   EXPECT_EQ(r.getCppTemplate(), cpp_template::custom);
   EXPECT_EQ(r.getCustomCppTemplate_HPP(), QString("new header"));
   EXPECT_FALSE(r.getPImpl());
   EXPECT_EQ(countRecords(p.getGuid()), 8);
}

TEST_F(SettingsPersistence, TextWhereAnIntegerIsExpectedLoadsAsZero)
{
   cpp_export p;
   insertRaw(p.getGuid(), "CPP_TEMPLATE", QString("abc"), QMetaType::QString);
   p.setCppTemplate(cpp_template::ix_persistable_and_q_object);
   load(p);
   EXPECT_EQ(static_cast<int>(p.getCppTemplate()), 0);

   // Also when the record claims to hold an integer.
   exec("DELETE FROM t_plugin_params");
   insertRaw(p.getGuid(), "CPP_TEMPLATE", QString("three"), QMetaType::Int);
   p.setCppTemplate(cpp_template::ix_persistable_and_q_object);
   load(p);
   EXPECT_EQ(static_cast<int>(p.getCppTemplate()), 0);
}

TEST_F(SettingsPersistence, FetchErrorIsReturnedAndFieldsKeepTheirValues)
{
   exec("DROP TABLE t_plugin_params");
   cpp_export p;
   setNonDefaults(p);
   QSqlError err = p.loadSettings();
   EXPECT_TRUE(err.isValid());
   EXPECT_TRUE(err.text().contains("t_plugin_params")) << err.text().toStdString();
   expectNonDefaults(p);

   err = p.saveSettings();
   EXPECT_TRUE(err.isValid());
   EXPECT_TRUE(err.text().contains("t_plugin_params")) << err.text().toStdString();
}

TEST_F(SettingsPersistence, WithoutAnOpenedProjectNothingHappens)
{
   cpp_export p;
   context::ctx_project::closeProject();
   ASSERT_FALSE(context::ctx_project::getProject());

   setNonDefaults(p);
   QSqlError err = p.saveSettings();
   EXPECT_FALSE(err.isValid()) << err.text().toStdString();
   err = p.loadSettings();
   EXPECT_FALSE(err.isValid()) << err.text().toStdString();
   expectNonDefaults(p);

   // Nothing reached the project file.
   zy::ZyBool opened = context::ctx_project::openProject(m_sProjectFile);
   ASSERT_TRUE(opened.getValue()) << opened.getDesc().toStdString();
   EXPECT_EQ(countRecords(p.getGuid()), 0);
}

TEST_F(SettingsPersistence, SettingsLiveInTheProjectFile)
{
   cpp_export p;
   setNonDefaults(p);
   save(p);

   // Another project knows nothing of them.
   QTemporaryDir other;
   ASSERT_TRUE(other.isValid());
   ASSERT_TRUE(test_support::writeAll(other.filePath("other.json"), QByteArray(k_sModel)));
   ASSERT_TRUE(context::ctx_project::openProject(other.filePath("other.json")).getValue());
   cpp_export q;
   load(q);
   EXPECT_EQ(q.getCppExportPath(false), QString());
   EXPECT_TRUE(q.getGenerateCustomFiles());

   // Reopening the first project file, and re-importing its model, finds them again.
   ASSERT_TRUE(context::ctx_project::openProject(m_sProjectFile).getValue());
   cpp_export r;
   load(r);
   expectNonDefaults(r);
   ASSERT_TRUE(context::ctx_project::openProject(m_dir.filePath("garden.json")).getValue());
   cpp_export s;
   load(s);
   expectNonDefaults(s);
}
