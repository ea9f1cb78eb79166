#include <gtest/gtest.h>

#include <QSqlQuery>
#include <QTemporaryDir>

#include "model/global_params.h"
#include "model/model_text_rules.h"
#include "test_model_helpers.h"
#include "test_support.h"

using namespace model_test;
using model::model_text_rules;

namespace {

QByteArray withEntity(const QByteArray & fields, const QByteArray & property = "{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}")
{
   return "{\"name\": \"Shop\", \"entities\": [{\"name\": \"Order\", \"namespace\": \"shop\", " + fields + "\"properties\": [" + property + "]}]}";
}

QByteArray withProperty(const QByteArray & property) { return withEntity(QByteArray(), property); }

QByteArray withEnumValue(const QByteArray & value)
{
   return "{\"name\": \"Shop\", \"enumerations\": [{\"name\": \"Status\", \"values\": [{\"key\": \"A\", \"value\": " + value + "}]}]}";
}

using test_support::hostile_value;
using test_support::hostileValues;

} // namespace

TEST(ModelTextRules, LiteralsCommentsAndNumbers)
{
   EXPECT_EQ(str(model_text_rules::literalProblem("t_order")), "");
   EXPECT_NE(str(model_text_rules::literalProblem("t\"); system(\"id\"); //")), "");
   EXPECT_NE(str(model_text_rules::literalProblem("a\\b")), "");
   EXPECT_NE(str(model_text_rules::literalProblem("a\nb")), "");
   EXPECT_NE(str(model_text_rules::literalProblem(QString("a") + QChar(0))), "");
   EXPECT_NE(str(model_text_rules::literalProblem("a\x01")), "");

   EXPECT_EQ(str(model_text_rules::lineCommentProblem("Full name, with \"quotes\" and /* */ \\ inside")), "");
   EXPECT_NE(str(model_text_rules::lineCommentProblem("x\n#error injected")), "");
   EXPECT_NE(str(model_text_rules::lineCommentProblem("x\r")), "");
   EXPECT_NE(str(model_text_rules::lineCommentProblem("continues \\")), "");
   EXPECT_NE(str(model_text_rules::lineCommentProblem("continues \\  ")), "");

   EXPECT_EQ(str(model_text_rules::blockCommentProblem("Several\nlines, a // and a /* inside")), "");
   EXPECT_NE(str(model_text_rules::blockCommentProblem("ends */ here")), "");
   EXPECT_NE(str(model_text_rules::blockCommentProblem(QString("nul") + QChar(0))), "");

   for (const char * s : { "0", "-5", "1.5", "1e+20", "0x1F", "10'000", "42u", "MAX_NAME", "::limits::MAX * 2 - (1 + OFFSET)", ".5f", "1 << 3 | ~MASK & 0xFF ^ 7 % 2 >> 1" })
   {
      EXPECT_EQ(str(model_text_rules::numberTextProblem(s)), "") << s;
      EXPECT_EQ(str(model_text_rules::numberProblem(s, false)), "") << s;
   }
   for (const char * s : { "1\"", "1); system(\"x\"); int y = (2", "1, 2", "1 // x", "1 /* x */", "(1", "1)", "a;b", "x'", "1\n" })
   { EXPECT_NE(str(model_text_rules::numberTextProblem(s)), "") << s; }
   // Break-out free, but no number: reported by the schema check only.
   for (const char * s : { "abc def", "1 2", "1..2", "+", "a::", "0x", "1 < 2", "a<int>" })
   {
      EXPECT_EQ(str(model_text_rules::numberTextProblem(s)), "") << s;
      EXPECT_NE(str(model_text_rules::numberProblem(s, false)), "") << s;
   }
   EXPECT_EQ(str(model_text_rules::numberProblem("0x10 + A::B", true)), "");
   EXPECT_EQ(str(model_text_rules::numberProblem("-1", true)), "");
   EXPECT_NE(str(model_text_rules::numberProblem("1.5", true)), "");
   EXPECT_NE(str(model_text_rules::numberProblem("", true)), "");
}

TEST(ModelTextRules, AccessorBodiesAndDefaultExpressions)
{
   for (const char * s : { "return m_x;", "if (m_x) { return 1; } return 2;", "return QString(\"}\");", "return '}';",
                           "return m_x; // done\n", "/* } */ return m_x;", "return R\"x(})x\";", "return 1'000;",
                           "m_x = val;\n#if 1\nm_y = 0;\n#endif\n", "return m_x; \\" })
   { EXPECT_EQ(str(model_text_rules::bodyProblem(s)), "") << s; }
   for (const char * s : { "return 1; } void evil() {", "return 1; {", "return m_x; // hides the brace", "return \"}", "return '}",
                           "/* } ", "return R\"x(})\";", "}{", "x;\n#if 0\n", "x;\n#endif\n", "return m_x; // a \\\n b" })
   { EXPECT_NE(str(model_text_rules::bodyProblem(s)), "") << s; }
   EXPECT_NE(str(model_text_rules::bodyProblem(QString("return 0;") + QChar(0))), "");

   for (const char * s : { "QDateTime::currentDateTime()", "{}", "std::vector<int>{1, 2}", "a[0]", "QString(\")\")" })
   { EXPECT_EQ(str(model_text_rules::expressionProblem(s)), "") << s; }
   for (const char * s : { "0) { system(\"x\"); } int f(int y", "(", "]", "0 // x", "\")" })
   { EXPECT_NE(str(model_text_rules::expressionProblem(s)), "") << s; }
}

TEST(ModelTextRules, JsonImportRefusesBreakOutText)
{
   EXPECT_EQ(str(parseError(withEntity("\"table\": \"t\\\"); system(\\\"id\\\"); //\", "))),
             "model.json: entities[0].table: table name 't\"); system(\"id\"); //' holds a double quote, which would end the C++ string literal it is written in");
   EXPECT_EQ(str(parseError(withEntity("\"description\": \"a */ b\", "))),
             "model.json: entities[0].description: description 'a */ b' holds \"*/\", which would end the comment it is written in");
   EXPECT_EQ(str(parseError(withEntity("\"soft_delete_column\": \"del\\\\x\", "))),
             "model.json: entities[0].soft_delete_column: soft delete column 'del\\x' holds a backslash, which would start an escape sequence in the C++ string literal it is written in");
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "id", "type": "long", "description": "x\n#error injected"})J"))),
             "model.json: entities[0].properties[0].description: description 'x\\n#error injected' holds a line break, which would end the one-line comment it is written in");
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "column": "a\"b"})J")).startsWith("model.json: entities[0].properties[0].column: column name"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "column": "a\\b"})J")).startsWith("model.json: entities[0].properties[0].column: column name"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "min_value": "1\""})J")).startsWith("model.json: entities[0].properties[0].min_value: min value '1\"'"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "max_length": "MAX;"})J")).startsWith("model.json: entities[0].properties[0].max_length: max length 'MAX;'"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "default": "0) { f(); } int g(int y"})J")).startsWith("model.json: entities[0].properties[0].default: default value"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "get_method": "return 1; } void evil() {"})J")).startsWith("model.json: entities[0].properties[0].get_method: get method"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "r", "relation": {"kind": "one_to_many", "target": "shop::Order", "foreign_key": "fk\")"}})J")).startsWith("model.json: entities[0].properties[0].relation.foreign_key: relation foreign key"));
   EXPECT_TRUE(parseError(withEnumValue(R"J("1); system(\"x\"); int y = (2")J")).startsWith("model.json: enumerations[0].values[0].value: value of 'A'"));
}

// Table names reach the SQL the ORM runs: no statement end, quote or comment opener; names
// with spaces (quoted by the database) and schema prefixes stay.
TEST(ModelTextRules, TableNamesStayOneSqlName)
{
   typedef model::model_text_rules rules;
   EXPECT_EQ(str(parseError(withEntity("\"table\": \"t order; drop\", "))),
             "model.json: entities[0].table: table name 't order; drop' holds ';', which would end the SQL statement it is written in");
   EXPECT_FALSE(rules::sqlNameProblem("t'x").isEmpty());
   EXPECT_FALSE(rules::sqlNameProblem("t`x").isEmpty());
   EXPECT_FALSE(rules::sqlNameProblem("t -- x").isEmpty());
   EXPECT_FALSE(rules::sqlNameProblem("t /* x").isEmpty());
   EXPECT_FALSE(rules::sqlNameProblem("t\"x").isEmpty());
   EXPECT_TRUE(rules::sqlNameProblem("user group").isEmpty());
   EXPECT_TRUE(rules::sqlNameProblem("sales.t_order").isEmpty());
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "r", "relation": {"kind": "many_to_many", "target": "shop::Order", "extra_table": "a;b"}})J")).startsWith("model.json: entities[0].properties[0].relation.extra_table: relation extra table 'a;b' holds ';'"));
}

TEST(ModelTextRules, NulNeverReachesTheModel)
{
   EXPECT_TRUE(parseError(withEntity("\"description\": \"a\\u0000b\", ")).contains("entities[0].description: description 'a\\x00b' holds a NUL character"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "reg_exp": "a\u0000"})J")).contains("properties[0].reg_exp: reg exp"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "QString", "default": "a\u0000"})J")).contains("properties[0].default: default value"));
   EXPECT_TRUE(parseError(withEntity("\"meta\": {\"k\": \"v\\u0000\"}, ")).contains("entities[0].meta.k: meta data 'k'"));
   EXPECT_TRUE(parseError(withProperty(R"J({"name": "id", "type": "long", "format": "%1\u0000"})J")).contains("properties[0].format: format"));
}

// A foreign key's action is written into the SQL export's statement: only the SQL words pass the
// JSON reader and the check, on a relation and in an entry of the entity's keys.
TEST(ModelTextRules, ForeignKeyActionsAreTheSqlWordsOnly)
{
   const QByteArray relation = R"J({"name": "id", "type": "long", "primary_key": true}, {"name": "up", "relation": {"kind": "many_to_one", "target": "shop::Order"}, "meta": {"TAVREL_SQL_ON_DELETE": "ACTION"}})J";
   EXPECT_NE(parseModel(withProperty(QByteArray(relation).replace("ACTION", "set null"))), nullptr);
   EXPECT_NE(parseModel(withProperty(QByteArray(relation).replace("ACTION", "NO ACTION"))), nullptr);
   const QString sBad = parseError(withProperty(QByteArray(relation).replace("ACTION", "CASCADE; DROP TABLE x")));
   EXPECT_TRUE(sBad.contains("entities[0].properties[1].meta.TAVREL_SQL_ON_DELETE: meta data 'TAVREL_SQL_ON_DELETE' 'CASCADE; DROP TABLE x' is not an SQL action")) << sBad.toStdString();
   const QString sKeys = parseError(withEntity(R"J("meta": {"TAVREL_SQL_FOREIGN_KEYS": "[{\"column\":\"id\",\"table\":\"t\",\"target\":\"id\",\"on_update\":\"SET NULL); DROP TABLE x\"}]"}, )J"));
   EXPECT_TRUE(sKeys.contains("meta.TAVREL_SQL_FOREIGN_KEYS: meta data 'TAVREL_SQL_FOREIGN_KEYS'")) << sKeys.toStdString();
   EXPECT_TRUE(sKeys.contains("holds on_update 'SET NULL); DROP TABLE x', which is not an SQL action")) << sKeys.toStdString();
   // A model made in memory: the check refuses it as well.
   model::project_ptr p = parseModel(withProperty(QByteArray(relation).replace("ACTION", "RESTRICT")));
   ASSERT_NE(p, nullptr);
   EXPECT_EQ(model_text_rules::checkProject(* p, false).size(), 0);
   p->getListOfAllEntities()->at(0)->getOwnProperties().at(1)->setMetaData("TAVREL_SQL_ON_UPDATE", "CASCADE --");
   EXPECT_EQ(model_text_rules::checkProject(* p, false).size(), 1);
   EXPECT_TRUE(lines(messages(p->checkSchema())).find("'CASCADE --' is not an SQL action") != std::string::npos) << lines(messages(p->checkSchema()));
}

TEST(ModelTextRules, AccessorBodiesAndTextLengthsImportAsWritten)
{
   model::project_ptr p = parseModel(withProperty(R"J({"name": "x", "type": "QString", "get_method": "return m_x.trimmed();",
                                                       "set_method": "if (val != m_x) { m_x = val; }", "min_length": "MIN_NAME",
                                                       "max_length": "MAX_NAME * 2"})J"));
   ASSERT_NE(p, nullptr);
   model::property_ptr x = p->getListOfAllEntities()->at(0)->getOwnProperties().at(0);
   EXPECT_EQ(str(x->getGetMethod()), "return m_x.trimmed();");
   EXPECT_EQ(str(x->getSetMethod()), "if (val != m_x) { m_x = val; }");
   EXPECT_EQ(x->getMinLength(), QVariant(QString("MIN_NAME")));
   EXPECT_EQ(x->getMaxLength(), QVariant(QString("MAX_NAME * 2")));
   // Numbers stay whole numbers.
   p = parseModel(withProperty(R"J({"name": "x", "type": "QString", "min_length": 2, "max_length": 80})J"));
   ASSERT_NE(p, nullptr);
   x = p->getListOfAllEntities()->at(0)->getOwnProperties().at(0);
   EXPECT_EQ(x->getMaxLength(), QVariant(qlonglong(80)));
   EXPECT_EQ(str(parseError(withProperty(R"J({"name": "x", "type": "int", "min_length": true})J"))),
             "model.json: entities[0].properties[0].min_length: expected a whole number or a string, got a boolean");
   EXPECT_EQ(p->checkSchema().size(), 0);

   // Text lengths survive the project file.
   QTemporaryDir dir;
   const QString sFile = dir.filePath("p.tavrel");
   ASSERT_TRUE(test_support::writeAll(dir.filePath("p.json"), withProperty(R"J({"name": "x", "type": "QString", "max_length": "MAX_NAME", "get_method": "return m_x;"})J")));
   ASSERT_TRUE(storage::project_storage::importJson(dir.filePath("p.json"), sFile).getValue());
   model::project_ptr reread;
   ASSERT_TRUE(storage::project_storage::loadProject(sFile, reread).getValue());
   x = reread->getListOfAllEntities()->at(0)->getOwnProperties().at(0);
   EXPECT_EQ(x->getMaxLength(), QVariant(QString("MAX_NAME")));
   EXPECT_EQ(str(x->getGetMethod()), "return m_x;");
}

TEST(ModelTextRules, SchemaCheckReportsNumbersBodiesAndBreakOuts)
{
   model::project_ptr p = parseModel(R"J({"name": "SHOP",
      "entities": [{"name": "Order", "namespace": "shop", "properties": [
         {"name": "id", "type": "long", "primary_key": true, "min_value": "abc def", "get_method": "return m_id;"},
         {"name": "n", "type": "int", "max_length": "1 2"}]}],
      "enumerations": [{"name": "Status", "values": [{"key": "A", "value": "1.5"}, {"key": "B", "value": "abc def"},
                                                      {"key": "C", "value": "0x10 + A"}]}]})J");
   ASSERT_NE(p, nullptr);
   const QStringList lst = messages(p->checkSchema());
   EXPECT_EQ(lines(lst), lines({
      "Entity 'shop::Order' : property 'id' : min value 'abc def' has 'def' after a complete value: not a numeric literal or a constant expression",
      "Entity 'shop::Order' : property 'n' : max length '1 2' has '2' after a complete value: not a numeric literal or a constant expression",
      "Enumeration 'Status' : value of 'A' '1.5' holds '1.5', which is not an integer",
      "Enumeration 'Status' : value of 'B' 'abc def' has 'def' after a complete value: not an integer literal or a constant expression" }));

   // A hand-made model: the break-out rules and the body rule are errors of the check too.
   model::entity_ptr e = p->getListOfAllEntities()->at(0);
   e->setTableName("t\"x");
   e->getOwnProperties().at(0)->setGetMethod("return 1; }");
   e->getOwnProperties().at(0)->setMinValue(QVariant());
   const zy::ZyInvalidValueX lstErrors = p->checkSchema();
   const QStringList lstMessages = messages(lstErrors);
   EXPECT_TRUE(lstMessages.contains("Entity 'shop::Order' : table name 't\"x' holds a double quote, which would end the C++ string literal it is written in")) << lines(lstMessages);
   EXPECT_TRUE(lstMessages.contains("Entity 'shop::Order' : property 'id' : get method 'return 1; }' has a '}' that does not close a bracket of its own, which would end the code it is written in early")) << lines(lstMessages);
   EXPECT_EQ(model_text_rules::checkProject(* p, false).size(), 2);
}

TEST(ModelTextRules, ProjectFileEditedWithSqlIsRefused)
{
   for (const hostile_value & h : hostileValues())
   {
      QTemporaryDir dir;
      const QString sFile = dir.filePath("shop.tavrel");
      ASSERT_TRUE(storage::project_storage::importJson(test_support::examplePath("shop.json"), sFile).getValue());
      ASSERT_TRUE(test_support::execOnProject(sFile, h.sql, h.value)) << h.sql;
      model::project_ptr p;
      const zy::ZyBool ok = storage::project_storage::loadProject(sFile, p);
      EXPECT_FALSE(ok.getValue()) << h.expected;
      EXPECT_EQ(p, nullptr);
      EXPECT_TRUE(ok.getDesc().contains(h.expected)) << ok.getDesc().toStdString();
      EXPECT_TRUE(ok.getDesc().contains(sFile)) << ok.getDesc().toStdString();
   }
}

TEST(ModelTextRules, LumorPathCharactersAndUnsetVariables)
{
   qputenv("TAVREL_TEST_LUMOR_SET", "/opt/lumor");
   qunsetenv("TAVREL_TEST_LUMOR_UNSET");
   qunsetenv("TAVREL_TEST_LUMOR_UNSET2");
   auto problem = [](const QString & s) { model::global_params p; p.setLumorPath(s); return p.getLumorPathProblem(); };
   for (const char * s : { "", "/opt/lumor", "C:\\libs\\lumor", "$$(TAVREL_TEST_LUMOR_SET)/x", "${TAVREL_TEST_LUMOR_SET}", "$TAVREL_TEST_LUMOR_SET/a b" })
   { EXPECT_EQ(str(problem(s)), "") << s; }
   EXPECT_EQ(str(problem("/x\")\nexecute_process(COMMAND id)\n#")), "holds a double quote, which cannot be written into the generated CMake and qmake files");
   EXPECT_EQ(str(problem("/opt/lu)mor")), "holds ')', which cannot be written into the generated CMake and qmake files");
   EXPECT_EQ(str(problem("/opt/lumor\n")), "holds a line break, which cannot be written into the generated CMake and qmake files");
   EXPECT_EQ(str(problem("/opt/#lumor")), "holds '#', which cannot be written into the generated CMake and qmake files");
   EXPECT_NE(str(problem("/opt/$/lumor")), "");
   EXPECT_NE(str(problem("$$PWD/lumor")), "");
   EXPECT_EQ(str(problem("$TAVREL_TEST_LUMOR_UNSET/${TAVREL_TEST_LUMOR_UNSET2}")),
             "refers to the environment variable 'TAVREL_TEST_LUMOR_UNSET', which is not set");
   EXPECT_EQ(str(problem("/a/${TAVREL_TEST_LUMOR_UNSET2}")), "refers to the environment variable 'TAVREL_TEST_LUMOR_UNSET2', which is not set");
   qputenv("TAVREL_TEST_LUMOR_SET", "/opt/\")\nexecute_process(COMMAND id)");
   EXPECT_EQ(str(problem("$$(TAVREL_TEST_LUMOR_SET)")),
             "once its environment references are expanded, holds a double quote, which cannot be written into the generated CMake and qmake files");
   qunsetenv("TAVREL_TEST_LUMOR_SET");
}
