#pragma once

// Shared set-up of the builder tests: a temporary export directory and library directory, a
// plug-in object with its builder, the messages the builder emits and a fixed banner clock.

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QMap>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

#include <memory>

#include "context/ctx_global.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/global_params.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/generators/generators.h"
#include "storage/project_storage.h"
#include "test_support.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "cpp_export/tools/template_parser.h"

#include <ostream>

// Readable texts in the failure reports of these tests (internal to each test file).
static inline void PrintTo(const QString & text, std::ostream * os) { * os << '"' << text.toStdString() << '"'; }

namespace builder_test {

// One entity with a key and nothing else: the smallest model that exports.
inline const QByteArray k_personJson = R"json({
  "name": "shop",
  "entities": [
    {"name": "Person", "namespace": "ns", "properties": [{"name": "id", "type": "long", "primary_key": true}]}
  ]
})json";

// Reaches the builder's protected steps.
class builder_probe : public plugin::cpp_builder
{
public:
   using plugin::cpp_builder::cpp_builder;
   using plugin::cpp_builder::getParser;
   using plugin::cpp_builder::checkParserContent;
   using plugin::cpp_builder::buildHelper;
   using plugin::cpp_builder::build_Generic;
   using plugin::cpp_builder::build_CustomFile;
   using plugin::cpp_builder::executeScript;
   using plugin::cpp_builder::build_PriFile;
   using plugin::cpp_builder::build_ProFile;
   using plugin::cpp_builder::build_CMakeListsFile;
   using plugin::cpp_builder::build_AllCppFile;
   using plugin::cpp_builder::build_PrecompiledHeader;
   using plugin::cpp_builder::build_ExportFile;
   using plugin::cpp_builder::build_MainFile;
   using plugin::cpp_builder::build_AllIcludes;
};

struct message
{
   QString text;
   int kind = 0;
   int duration = 0;
};

inline model::project_ptr parseModel(const QByteArray & json)
{
   model::project_ptr p;
   zy::ZyBool ok = storage::project_storage::parseJson(json, "test.json", p);
   EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   return p;
}

// The model the golden files were recorded from: the shop example as it was then (project
// "Shop"), frozen here so that the shipped example may change.
inline model::project_ptr loadShop()
{
   model::project_ptr p;
   zy::ZyBool ok = storage::project_storage::readJsonFile(test_support::sourceDir() + "/tests/cpp_export/golden_model_shop.json", p);
   EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   return p;
}

// Reads a file as the tests expect it: bytes as UTF-8, nothing converted.
inline QString readText(const QString & path) { return QString::fromUtf8(test_support::readAll(path)); }

inline bool writeText(const QString & path, const QString & text) { return test_support::writeAll(path, text.toUtf8()); }

// Relative path of every file under a directory, with its modification time in milliseconds.
inline QMap<QString, qint64> fileTimes(const QString & dir)
{
   QMap<QString, qint64> result;
   QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
   while (it.hasNext())
   {
      it.next();
      result.insert(QDir(dir).relativeFilePath(it.filePath()), it.fileInfo().lastModified().toMSecsSinceEpoch());
   }
   return result;
}

// Relative path and bytes of every file under a directory.
inline QMap<QString, QByteArray> fileContents(const QString & dir)
{
   QMap<QString, QByteArray> result;
   QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
   while (it.hasNext())
   {
      it.next();
      result.insert(QDir(dir).relativeFilePath(it.filePath()), test_support::readAll(it.filePath()));
   }
   return result;
}

// The date the banners carry while a test runs.
inline QDateTime fixedClock() { return QDateTime(QDate(2024, 5, 6), QTime(7, 8)); }

// The C++ banner for a date, written from the host's name and version.
inline QString cppBanner(const QString & date)
{
   const QString app = context::ctx_global::getAppName() + " " + context::ctx_global::getAppVersionStr();
   return "/" + QString(96, '*') + "\n"
        + "** File created by " + app + " (" + date + ") : please, do NOT modify this file ! **\n"
        + QString(96, '*') + "/\n";
}

inline QString hashBanner(const QString & date)
{
   const QString app = context::ctx_global::getAppName() + " " + context::ctx_global::getAppVersionStr();
   return QString(97, '#') + "\n"
        + "## File created by " + app + " (" + date + ") : please, do NOT modify this file ! ##\n"
        + QString(97, '#') + "\n";
}

class export_fixture : public ::testing::Test
{
protected:
   QTemporaryDir m_tmp;
   QString m_sExportDir;
   QString m_sLumorDir;
   std::shared_ptr<model::global_params> m_pParams;
   plugin::cpp_export m_plugin;
   std::unique_ptr<builder_probe> m_pBuilder;
   QList<message> m_lstMessages;

   void SetUp() override
   {
      ASSERT_TRUE(m_tmp.isValid());
      tools::message_box::reset();
      tools::message_box::clearHistory();
      m_sExportDir = m_tmp.path() + "/out";
      m_sLumorDir = m_tmp.path() + "/lumor";
      ASSERT_TRUE(QDir().mkpath(m_sExportDir));
      ASSERT_TRUE(QDir().mkpath(m_sLumorDir));
      m_pParams = std::make_shared<model::global_params>();
      m_pParams->setLumorPath(m_sLumorDir);
      context::ctx_global::setGlobalParams(m_pParams);
      m_plugin.setCppExportPath(m_sExportDir);
      plugin::generators::setBannerClock([] { return fixedClock(); });
      m_pBuilder = std::make_unique<builder_probe>(& m_plugin);
      QObject::connect(m_pBuilder.get(), & plugin::cpp_builder::onMessage,
                       [this](const QString & text, int kind, int duration) { m_lstMessages.append({ text, kind, duration }); });
   }

   void TearDown() override
   {
      plugin::generators::setBannerClock({});
      m_plugin.setCustomScript(nullptr);
      tools::message_box::reset();
   }

   QString out(const QString & relative) const { return m_sExportDir + "/" + relative; }
   QString outText(const QString & relative) const { return readText(out(relative)); }

   zy::ZyBool exportProject(model::project & project) { return m_pBuilder->build(project); }

   // Loads a script file written for the test.
   std::shared_ptr<tools::custom_javascript> useScript(const QString & fileName, const QString & source)
   {
      const QString path = m_tmp.path() + "/" + fileName;
      EXPECT_TRUE(writeText(path, source));
      auto pScript = std::make_shared<tools::custom_javascript>();
      zy::ZyBool ok = pScript->initEngine(path, & m_plugin);
      EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
      m_plugin.setCustomScript(pScript);
      return pScript;
   }

   // Texts of the messages emitted so far.
   QStringList messageTexts() const
   {
      QStringList lst;
      for (const message & m : m_lstMessages) { lst.append(m.text); }
      return lst;
   }

   // Expands a header template of the custom style for one entity, as the preview does.
   QString expandHeader(model::project & project, model::entity & entity, const QString & templateText)
   {
      m_plugin.setCppTemplate(plugin::cpp_template::custom);
      m_plugin.setCustomCppTemplate_HPP(templateText);
      return m_pBuilder->buildHeader(project, entity);
   }

   QString expandSource(model::project & project, model::entity & entity, const QString & templateText)
   {
      m_plugin.setCppTemplate(plugin::cpp_template::custom);
      m_plugin.setCustomCppTemplate_CPP(templateText);
      return m_pBuilder->buildSource(project, entity);
   }
};

} // namespace builder_test
