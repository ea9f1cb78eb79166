// Model text that would break out of the generated code, and Lumor library paths that would
// break out of the generated project files, through the real command-line program.

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "storage/project_storage.h"
#include "test_support.h"

namespace {

using cli_run = test_support::cli_result;

cli_run runTavrel(const QStringList & args, const QStringList & lstUnset = QStringList())
{
   test_support::cli_options options;
   options.unset = lstUnset;
   return test_support::runTavrel(args, options);
}

using test_support::hostile_value;

// Imports entity A with the given members: refused with exit 1, naming the field, no file made.
void expectImportRefused(const QByteArray & members, const QString & sExpected)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(model, "{\"name\": \"M\", \"entities\": [{\"name\": \"A\", " + members + "}]}"));
   const cli_run r = runTavrel({ "import", model, tmp.filePath("m.tavrel") });
   EXPECT_EQ(r.code, 1) << sExpected.toStdString();
   EXPECT_TRUE(r.err.contains(sExpected)) << r.err.toStdString().substr(0, 2000);
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("m.tavrel")));
}
using test_support::hostileValues;

} // namespace

TEST(CliTextRules, EditedProjectFileIsRefusedByCheckAndExport)
{
   for (const hostile_value & h : hostileValues())
   {
      QTemporaryDir tmp;
      const QString project = tmp.filePath("work/shop.tavrel");
      QDir().mkpath(tmp.filePath("work/out"));
      QDir().mkpath(tmp.filePath("lumor"));
      cli_run r = runTavrel({ "import", test_support::examplePath("shop.json"), project });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      ASSERT_TRUE(test_support::execOnProject(project, h.sql, h.value)) << h.sql;

      r = runTavrel({ "check", project });
      EXPECT_EQ(r.code, 1) << h.expected;
      EXPECT_TRUE(r.err.contains(h.expected)) << r.err.toStdString();

      const QStringList before = test_support::treeState(tmp.filePath("work"));
      r = runTavrel({ "export", project, "--lumor-path", tmp.filePath("lumor"), "--yes", "--TavrelCppExport_path=" + tmp.filePath("work/out") });
      EXPECT_EQ(r.code, 1) << h.expected;
      EXPECT_TRUE(r.err.contains(h.expected)) << r.err.toStdString();
      // Nothing in or beside the export directory changed.
      EXPECT_EQ(test_support::treeState(tmp.filePath("work")), before) << h.expected;
      EXPECT_TRUE(QDir(tmp.filePath("work/out")).isEmpty()) << h.expected;
   }
}

TEST(CliTextRules, JsonImportRefusesHostileText)
{
   const QList<QPair<QByteArray, QString> > lstCases = {
      { R"J("table": "t\"); system(\"id\"); //")J", "entities[0].table: table name" },
      { R"J("description": "a */ b")J", "entities[0].description: description" },
      { R"J("properties": [{"name": "id", "type": "long", "description": "x\n#error injected"}])J", "entities[0].properties[0].description: description" },
      { R"J("properties": [{"name": "id", "type": "long", "column": "a\"b"}])J", "entities[0].properties[0].column: column name" },
      { R"J("properties": [{"name": "id", "type": "long", "column": "a\\b"}])J", "entities[0].properties[0].column: column name" },
      { R"J("properties": [{"name": "id", "type": "long", "min_value": "1\""}])J", "entities[0].properties[0].min_value: min value" },
      { R"J("properties": [{"name": "id", "type": "long", "description": "a\u0000b"}])J", "entities[0].properties[0].description: description" },
   };
   for (const auto & c : lstCases) { expectImportRefused(c.first, c.second); }
   QTemporaryDir tmp;
   const QString model = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(model, R"J({"name": "M", "enumerations": [{"name": "E", "values": [{"key": "A", "value": "1); system(\"x\"); int y = (2"}]}]})J"));
   const cli_run r = runTavrel({ "import", model, tmp.filePath("m.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("enumerations[0].values[0].value: value of 'A'")) << r.err.toStdString();
}

TEST(CliTextRules, JsonImportRefusesTypesCommentSplicesAndDeepNesting)
{
   const QByteArray deep = QByteArray(40000, '(') + "1" + QByteArray(40000, ')');
   const QByteArray signs = QByteArray(40000, '-') + "1";
   const QList<QPair<QByteArray, QString> > lstCases = {
      { R"J("properties": [{"name": "id", "type": "int; }; void evil() { system(\"id\"); } struct Z { int"}])J", "entities[0].properties[0].type: type" },
      { R"J("properties": [{"name": "id", "type": "int\n#define private public\n"}])J", "entities[0].properties[0].type: type" },
      { R"J("properties": [{"name": "id", "type": "int //"}])J", "entities[0].properties[0].type: type" },
      { R"J("properties": [{"name": "id", "type": "std::vector<int"}])J", "entities[0].properties[0].type: type" },
      { R"J("properties": [{"name": "id", "type": "int> x; int"}])J", "entities[0].properties[0].type: type" },
      { R"J("description": "a *\\\n/ static_assert(false,\"x\"); /*")J", "entities[0].description: description" },
      { R"J("description": "ends in a trigraph ??/")J", "entities[0].description: description" },
      { R"J("properties": [{"name": "id", "type": "long", "description": "next member swallowed ??/"}])J", "entities[0].properties[0].description: description" },
      { R"J("properties": [{"name": "id", "type": "long", "description": "ends in a splice \\ "}])J", "entities[0].properties[0].description: description" },
      { R"J("properties": [{"name": "id", "type": "long", "column": "c??/"}])J", "entities[0].properties[0].column: column name" },
      { "\"properties\": [{\"name\": \"id\", \"type\": \"long\", \"min_value\": \"" + deep + "\"}]", "entities[0].properties[0].min_value: min value" },
      { "\"properties\": [{\"name\": \"id\", \"type\": \"QString\", \"max_length\": \"" + deep + "\"}]", "entities[0].properties[0].max_length: max length" },
   };
   for (const auto & c : lstCases) { expectImportRefused(c.first, c.second); }
   // An enumeration value nested past the reader's depth, and a long run of signs that the
   // characters alone allow: refused with a message, never a crash.
   for (const QByteArray & value : { deep, signs })
   {
      QTemporaryDir tmp;
      const QString model = tmp.filePath("m.json");
      ASSERT_TRUE(test_support::writeAll(model, "{\"name\": \"M\", \"enumerations\": [{\"name\": \"E\", \"values\": [{\"key\": \"A\", \"value\": \"" + value + "\"}]}]}"));
      cli_run r = runTavrel({ "check", model });
      EXPECT_EQ(r.code, 1) << r.err.toStdString().substr(0, 2000);
      EXPECT_TRUE((r.out + r.err).contains("deeper than 256 levels")) << (r.out + r.err).toStdString().substr(0, 2000);
      r = runTavrel({ "export", model, "--yes", "--TavrelCppExport_path=" + tmp.filePath("out") });
      EXPECT_EQ(r.code, 1) << r.err.toStdString().substr(0, 2000);
   }
}

TEST(CliTextRules, TextOverTheSizeLimitIsRefusedWithItsPlace)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("m.json");
   const QByteArray big(1024 * 1024 + 1, 'x');
   ASSERT_TRUE(test_support::writeAll(model, "{\"name\": \"M\",\n \"entities\": [{\"name\": \"A\", \"description\": \"" + big + "\"}]}"));
   cli_run r = runTavrel({ "import", model, tmp.filePath("m.tavrel") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("m.json:2:44: ")) << r.err.left(300).toStdString();
   EXPECT_TRUE(r.err.contains("a model text holds at most 1048576 bytes (1 MiB)")) << r.err.left(300).toStdString();
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("m.tavrel")));
   // At the limit it is a text like any other.
   ASSERT_TRUE(test_support::writeAll(model, "{\"name\": \"M\",\n \"entities\": [{\"name\": \"A\", \"description\": \"" + big.left(1024 * 1024) + "\"}]}"));
   r = runTavrel({ "import", model, tmp.filePath("m.tavrel") });
   EXPECT_EQ(r.code, 0) << r.err.left(300).toStdString();
}

TEST(CliTextRules, TypesUsersWriteAreAccepted)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(model, R"J({"name": "M", "entities": [{"name": "A", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "a", "type": "unsigned long long"},
      {"name": "b", "type": "std::pair<long, QString>"},
      {"name": "c", "type": "QMap<QString, QList<int>>"},
      {"name": "d", "type": "std::array<int, 4>"},
      {"name": "e", "type": "std::function<void(int, const QString &)>"},
      {"name": "f", "type": "const char *"},
      {"name": "g", "type": "::std::shared_ptr<QObject>"}]}]})J"));
   const cli_run r = runTavrel({ "import", model, tmp.filePath("m.tavrel") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
}

TEST(CliTextRules, CheckReportsEnumerationValuesThatAreNoNumbers)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(model, R"J({"name": "M", "enumerations": [{"name": "E", "values": [
      {"key": "A", "value": "1.5"}, {"key": "B", "value": "abc def"}, {"key": "C", "value": "LIMIT + 1"}]}]})J"));
   const cli_run r = runTavrel({ "check", model });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.out.contains("error: Enumeration 'E' : value of 'A' '1.5'")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("error: Enumeration 'E' : value of 'B' 'abc def'")) << r.out.toStdString();
   EXPECT_FALSE(r.out.contains("value of 'C'")) << r.out.toStdString();
   EXPECT_TRUE(r.out.contains("2 error(s)")) << r.out.toStdString();
}

TEST(CliTextRules, LumorPathThatWouldBreakOutIsRefusedBeforeWriting)
{
   QTemporaryDir tmp;
   const QString model = tmp.filePath("work/shop.json");
   QDir().mkpath(tmp.filePath("work/out"));
   ASSERT_TRUE(test_support::writeAll(model, test_support::readAll(test_support::examplePath("shop.json"))));
   // The project file is created by the first run; the checksum covers the runs after it.
   cli_run r = runTavrel({ "import", model, tmp.filePath("work/shop.tavrel") });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QString project = tmp.filePath("work/shop.tavrel");

   // A directory of that name exists, so only the characters can refuse it.
   const QString hostile = tmp.filePath("lumor\")\nexecute_process(COMMAND touch " + tmp.filePath("pwned") + ")\n#");
   QDir().mkpath(hostile);
   const QStringList before = test_support::treeState(tmp.filePath("work"));
   r = runTavrel({ "export", project, "--lumor-path", hostile, "--yes", "--TavrelCppExport_path=" + tmp.filePath("work/out") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("Lumor library path is not valid : ")) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("The Lumor library path holds a double quote")) << r.err.toStdString();
   EXPECT_EQ(test_support::treeState(tmp.filePath("work")), before);

   // Unset variables are named, not expanded to nothing ("/" exists).
   r = runTavrel({ "export", project, "--lumor-path", "$TAVREL_TEST_FOO/${TAVREL_TEST_BAR}", "--yes", "--TavrelCppExport_path=" + tmp.filePath("work/out") },
                 { "TAVREL_TEST_FOO", "TAVREL_TEST_BAR" });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("environment variable 'TAVREL_TEST_FOO', which is not set")) << r.err.toStdString();
   EXPECT_EQ(test_support::treeState(tmp.filePath("work")), before);
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("pwned")));
}

TEST(CliTextRules, AccessorBodiesAndTextLengthsAreWrittenAsTheyRead)
{
   QTemporaryDir tmp;
   QDir().mkpath(tmp.filePath("lumor"));
   const QString model = tmp.filePath("m.json");
   ASSERT_TRUE(test_support::writeAll(model, R"J({"name": "M", "entities": [{"name": "A", "properties": [
      {"name": "id", "type": "long", "primary_key": true},
      {"name": "x", "type": "QString", "get_method": "return m_x.trimmed();", "set_method": "if (val != m_x) { m_x = val; }",
       "min_length": 2, "max_length": "MAX_NAME"}]}]})J"));
   const cli_run r = runTavrel({ "export", model, "--lumor-path", tmp.filePath("lumor"), "--yes", "--TavrelCppExport_path=" + tmp.filePath("out") });
   ASSERT_EQ(r.code, 0) << r.err.toStdString();
   const QString source = QString::fromUtf8(test_support::readAll(tmp.filePath("out/src/A.gen.cpp")));
   EXPECT_TRUE(source.contains("QString A::getx() const { return m_x.trimmed(); }")) << source.toStdString();
   EXPECT_TRUE(source.contains("void A::setx(const QString & val) { if (val != m_x) { m_x = val; } }")) << source.toStdString();
   EXPECT_TRUE(source.contains("pAllValidator->add_MinLength(\"x\", 2);")) << source.toStdString();
   EXPECT_TRUE(source.contains("pAllValidator->add_MaxLength(\"x\", MAX_NAME);")) << source.toStdString();
}
