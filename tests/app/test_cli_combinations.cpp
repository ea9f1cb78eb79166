#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

// The example model exported by the real command-line host with every built-in class style,
// with and without the private-implementation idiom.

namespace {

struct combination
{
   int style = 0;
   bool pimpl = false;
};

struct item
{
   QString name;
   QString flatKey;
   bool entity = true;
   bool abstract = false;
};

using run_result = test_support::cli_result;

std::ostream & operator<<(std::ostream & os, const combination & c) { return os << "style " << c.style << (c.pimpl ? " with PIMPL" : " without PIMPL"); }

// Entities and enumerations of the example, read from the model itself.
QList<item> exampleItems()
{
   QList<item> lst;
   const QJsonObject root = QJsonDocument::fromJson(test_support::readAll(test_support::examplePath("shop.json"))).object();
   for (const char * kind : { "entities", "enumerations" })
   {
      for (const QJsonValue & v : root.value(kind).toArray())
      {
         const QJsonObject o = v.toObject();
         const QString ns = o.value("namespace").toString();
         const QString name = o.value("name").toString();
         const QString key = (ns.isEmpty() ? name : ns + "::" + name);
         lst.append({ name, QString(key).replace("::", "_"), (QString(kind) == "entities"), o.value("abstract").toBool() });
      }
   }
   return lst;
}

run_result runExport(const QTemporaryDir & tmp, const combination & c)
{
   const QString model = tmp.filePath("shop.json");
   test_support::writeAll(model, test_support::readAll(test_support::examplePath("shop.json")));
   QDir().mkpath(tmp.filePath("lumor"));
   QDir().mkpath(tmp.filePath("config"));

   test_support::cli_options options;
   options.configHome = tmp.filePath("config");
   return test_support::runTavrel({ "export", model, "--lumor-path", tmp.filePath("lumor"),
                                    "--TavrelCppExport_path=" + tmp.filePath("out"),
                                    "--TavrelCppExport_template_type=" + QString::number(c.style),
                                    "--TavrelCppExport_generate_pimpl=" + QString(c.pimpl ? "1" : "0"),
                                    "--TavrelCppExport_generate_custom_files=1" }, options);
}

class BuiltInStyle : public ::testing::TestWithParam<combination> {};

} // namespace

TEST_P(BuiltInStyle, ExportRunsCleanAndWritesEveryClass)
{
   const combination c = GetParam();
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const run_result r = runExport(tmp, c);
   ASSERT_EQ(r.code, 0) << r.err.toStdString();

   // Script errors come as "error: " lines, template warnings as critical boxes.
   for (const QString & line : r.err.split('\n'))
   {
      EXPECT_FALSE(line.startsWith("error: ")) << line.toStdString();
      EXPECT_FALSE(line.startsWith("[critical]")) << line.toStdString();
   }
   const QString out = tmp.filePath("out");
   EXPECT_TRUE(r.err.contains("All entities have been exported to a C++ project : '" + out + "'")) << r.err.toStdString();

   const QList<item> items = exampleItems();
   ASSERT_EQ(items.size(), 10);
   for (const item & i : items)
   {
      const QString header = out + "/include/" + i.flatKey + ".gen.h";
      const QString source = out + "/src/" + i.flatKey + ".gen.cpp";
      ASSERT_TRUE(QFileInfo::exists(header)) << header.toStdString();
      ASSERT_TRUE(QFileInfo::exists(source)) << source.toStdString();
      EXPECT_TRUE(QFileInfo::exists(out + "/custom/include/" + i.flatKey + ".h")) << i.flatKey.toStdString();
      EXPECT_TRUE(QFileInfo::exists(out + "/custom/src/" + i.flatKey + ".cpp")) << i.flatKey.toStdString();

      const QByteArray text = test_support::readAll(header);
      EXPECT_TRUE(text.contains(("class SHOP_EXPORT " + i.name + " ").toUtf8()) || text.contains(("class SHOP_EXPORT " + i.name + "\n").toUtf8()))
         << header.toStdString();
      EXPECT_TRUE(test_support::readAll(source).contains((i.name + "::").toUtf8())) << source.toStdString();
      // Enumerations have no private implementation whatever the setting.
      EXPECT_EQ(text.contains("m_pImpl"), i.entity && c.pimpl) << header.toStdString();
      if (i.entity)
      {
         // The class style reached the output: persistable macro from style 1 on, Q_OBJECT from style 2 on.
         EXPECT_EQ(text.contains("ZY_PERSISTABLE_HPP("), (c.style != 0) && ! i.abstract) << header.toStdString();
         EXPECT_EQ(text.contains("   Q_OBJECT\n"), c.style >= 2) << header.toStdString();
      }
   }
   // The project files are named after the model's project.
   const QString P = QJsonDocument::fromJson(test_support::readAll(test_support::examplePath("shop.json"))).object().value("name").toString();
   for (const char * file : { "%1.gen.pri", "%1.gen.pro", "CMakeLists.txt", "src/%1_all.gen.cpp", "src/%1_main.gen.cpp",
                              "include/%1_precompiled_header.gen.h", "include/%1_export.gen.h", "include/%1_all_include.gen.h",
                              "custom/%1.pri", "custom/include/%1_precompiled_header.h" })
   {
      const QString sFile = QString::fromLatin1(file).arg(P);
      EXPECT_TRUE(QFileInfo::exists(out + "/" + sFile)) << sFile.toStdString();
   }
}

INSTANTIATE_TEST_SUITE_P(CliCombinations, BuiltInStyle,
   ::testing::Values(combination{ 0, false }, combination{ 0, true }, combination{ 1, false }, combination{ 1, true },
                     combination{ 2, false }, combination{ 2, true }, combination{ 3, false }, combination{ 3, true }),
   [](const ::testing::TestParamInfo<combination> & info)
   { return "Style" + std::to_string(info.param.style) + (info.param.pimpl ? "Pimpl" : "Plain"); });
