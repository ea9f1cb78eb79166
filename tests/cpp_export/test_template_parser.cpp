#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <vector>

#include "test_support.h"
#include "cpp_export/tools/template_parser.h"

namespace {

using tools::template_parser;

// Raw integer codes keep the expectations independent of the enumerator names.
std::vector<int> codes(const template_parser & parser)
{
   std::vector<int> result;
   for (auto action : parser.getListOfAction()) { result.push_back(static_cast<int>(action)); }
   return result;
}

struct keyword_code { const char * name; int code; };

// The built-in keywords in comparison order; "CUSTOM_" (62) is a prefix and is checked apart.
const keyword_code kExpectedKeywords[] = {
      { "CLASS_NAME", 1 },
      { "INCLUDE_MACRO_GUARD", 2 },
      { "NAMESPACE_BEGIN", 3 },
      { "NAMESPACE_END", 4 },
      { "CLASS_MACRO_EXPORT", 5 },
      { "INHERIT_FROM", 6 },
      { "LIST_PROPERTIES_DEFINITION", 7 },
      { "LIST_PROPERTIES_GETTER", 8 },
      { "LIST_PROPERTIES_SETTER", 9 },
      { "LIST_INCLUDE_DEPENDENCIES", 10 },
      { "LIST_FORWARD_DECLARATION", 11 },
      { "FULL_CLASS_NAME", 12 },
      { "COMPLEX_CLASS_NAME_HELPER", 13 },
      { "IMPLEMENT_ZY_REGISTER_CLASS", 14 },
      { "IMPLEMENT_CONSTRUCTOR", 15 },
      { "IMPLEMENT_DESTRUCTOR", 16 },
      { "IMPLEMENT_LIST_PROPERTIES_GETTER", 17 },
      { "IMPLEMENT_LIST_PROPERTIES_SETTER", 18 },
      { "CLASS_VERSION", 19 },
      { "ZY_REGISTER_BASE_CLASS", 20 },
      { "ZY_REGISTER_PRIMARY_KEY_TYPE", 21 },
      { "CONSTRUCTOR_WITH_PRIMARY_KEY", 22 },
      { "IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY", 23 },
      { "PRIMARY_KEY_TYPE", 24 },
      { "REGISTER_ABSTRACT_CLASS", 25 },
      { "MACRO_ZY_REGISTER_CLASS_HPP", 26 },
      { "MACRO_ZY_REGISTER_CLASS_CPP", 27 },
      { "LIST_INCLUDE_DEPENDENCIES_CPP", 28 },
      { "COMMENT_FILE_CREATED_BY", 29 },
      { "COMMENT_CLASS_DESCRIPTION", 30 },
      { "PROJECT_NAME", 31 },
      { "PROJECT_NAME_UPPER", 32 },
      { "COMMENT_PRO_FILE_CREATED_BY", 33 },
      { "LUMOR_LIBRARY_PRI_FILE_PATH", 34 },
      { "LUMOR_LIBRARY_INCLUDE_PATH", 35 },
      { "LUMOR_LIBRARY_LIB_PATH", 36 },
      { "INCLUDE_FORWARD_DECLARATION", 37 },
      { "LIST_PRI_HEADERS_FILE", 38 },
      { "LIST_PRI_SOURCES_FILE", 39 },
      { "TYPEDEF_ENUM_ALL_VALUES", 40 },
      { "MACRO_Q_OBJECT", 41 },
      { "MACRO_Q_ENUMS", 42 },
      { "LIST_PROJECT_ALL_INCLUDE", 43 },
      { "INHERIT_FROM_IX_PERSISTABLE", 44 },
      { "MACRO_ZY_PERSISTABLE_HPP", 45 },
      { "MACRO_ZY_PERSISTABLE_CPP", 46 },
      { "INHERIT_FROM_ZY_PERSISTABLE", 47 },
      { "INCLUDE_ITEM_HEADER", 48 },
      { "INCLUDE_ITEM_HEADER_CUSTOM", 49 },
      { "ZY_VALIDATOR_METHOD", 50 },
      { "LIST_STATIC_RELATIONS_KEYS", 51 },
      { "FORWARD_DECLARATION_FOR_TRIGGERS", 52 },
      { "LIST_TRIGGERS_METHODS", 53 },
      { "LIST_TRIGGERS_SPECIALIZATIONS", 54 },
      { "FRIEND_FOR_TRIGGERS", 55 },
      { "INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT", 56 },
      { "LIST_RELATIONS_GETTER_WITH_FETCH", 57 },
      { "IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH", 58 },
      { "LIST_STATIC_COLUMNS_KEYS", 59 },
      { "STATIC_TABLE_KEY", 60 },
      { "LIST_RELATIONS_TYPEDEF", 61 },
      { "TYPEDEF_CLASS_PTR", 63 },
      { "TYPEDEF_LIST_OF_CLASS", 64 },
      { "TYPEDEF_LIST_OF_CLASS_PTR", 65 },
      { "COMMENT_CMAKE_FILE_CREATED_BY", 66 },
      { "LIST_CMAKE_HEADERS_FILE", 67 },
      { "LIST_CMAKE_SOURCES_FILE", 68 },
      { "LUMOR_LIBRARY_PATH", 69 },
      { "INCLUDE_ALL_CPP", 70 },
      { "PIMPL_DEFINITION", 71 },
      { "PIMPL_IMPLEMENTATION", 72 },
      { "PIMPL_COPYABLE_DEFINITION", 73 },
      { "PIMPL_COPYABLE_IMPLEMENTATION", 74 },
      { "PIMPL_MOVABLE_DEFINITION", 75 },
      { "PIMPL_MOVABLE_IMPLEMENTATION", 76 },
};

} // namespace

TEST(TemplateParser, EmptyTemplateGivesOneEmptyLiteralPiece)
{
   template_parser parser(QString{});
   EXPECT_EQ(parser.getListOfText(), QStringList({ QString() }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0 }));
   EXPECT_TRUE(parser.getInputText().isEmpty());
   EXPECT_EQ(parser.getInputTextSize(), 0L);
}

TEST(TemplateParser, TextWithoutMarkerIsOneLiteralPiece)
{
   template_parser parser(QStringLiteral("class Foo {};\n"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "class Foo {};\n" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0 }));
}

TEST(TemplateParser, KeywordBetweenMarkersGivesThreePieces)
{
   template_parser parser(QStringLiteral("@@CLASS_NAME@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "CLASS_NAME", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 1, 0 }));
}

TEST(TemplateParser, KeywordsInsideText)
{
   template_parser parser(QStringLiteral("class @@CLASS_MACRO_EXPORT@@ @@CLASS_NAME@@ : public @@INHERIT_FROM@@\n{"));
   EXPECT_EQ(parser.getListOfText(),
             QStringList({ "class ", "CLASS_MACRO_EXPORT", " ", "CLASS_NAME", " : public ", "INHERIT_FROM", "\n{" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 5, 0, 1, 0, 6, 0 }));
}

TEST(TemplateParser, CustomPrefixGivesUserKeyword)
{
   template_parser parser(QStringLiteral("@@CUSTOM_MY_PART@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "CUSTOM_MY_PART", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 62, 0 }));
   EXPECT_EQ(parser.getListOfAction().at(1), template_parser::action_CUSTOM);
}

TEST(TemplateParser, CustomPrefixAloneIsUserKeyword)
{
   template_parser parser(QStringLiteral("@@CUSTOM_@@"));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 62, 0 }));
}

TEST(TemplateParser, CustomPrefixIsCaseSensitive)
{
   template_parser parser(QStringLiteral("@@custom_x@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "custom_x", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0 }));
}

TEST(TemplateParser, CustomPrefixMustStartThePiece)
{
   template_parser parser(QStringLiteral("@@MY_CUSTOM_X@@ CUSTOM_A@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "MY_CUSTOM_X", " CUSTOM_A", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0, 0 }));
}

TEST(TemplateParser, UnknownNameStaysAsLiteralText)
{
   template_parser parser(QStringLiteral("@@UNKNOWN@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "UNKNOWN", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0 }));
}

TEST(TemplateParser, KeywordsAreCaseSensitive)
{
   template_parser parser(QStringLiteral("@@class_name@@@@Class_Name@@"));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0, 0, 0 }));
}

TEST(TemplateParser, CrLfBecomesLf)
{
   template_parser parser(QStringLiteral("first\r\n@@CLASS_NAME@@\r\nlast\r\n"));
   EXPECT_EQ(parser.getInputText(), QStringLiteral("first\n@@CLASS_NAME@@\nlast\n"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "first\n", "CLASS_NAME", "\nlast\n" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 1, 0 }));
}

TEST(TemplateParser, LoneCarriageReturnIsKept)
{
   template_parser parser(QStringLiteral("a\rb\n\rc\r"));
   EXPECT_EQ(parser.getInputText(), QStringLiteral("a\rb\n\rc\r"));
}

TEST(TemplateParser, KeywordNameOutsideMarkersIsStillAKeyword)
{
   // PROJECT_NAME stands between the closing and the opening marker of its neighbours.
   template_parser parser(QStringLiteral("@@CLASS_NAME@@PROJECT_NAME@@CLASS_NAME@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "CLASS_NAME", "PROJECT_NAME", "CLASS_NAME", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 1, 31, 1, 0 }));
}

TEST(TemplateParser, AdjacentMarkersKeepEmptyPieces)
{
   template_parser parser(QStringLiteral("@@A@@@@B@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "A", "", "B", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0, 0, 0 }));
}

TEST(TemplateParser, UnpairedMarkerClassifiesEachPieceAlone)
{
   template_parser parser(QStringLiteral("a @@CLASS_NAME@@ b @@ c"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "a ", "CLASS_NAME", " b ", " c" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 1, 0, 0 }));

   template_parser trailing(QStringLiteral("x@@NAMESPACE_END"));
   EXPECT_EQ(trailing.getListOfText(), QStringList({ "x", "NAMESPACE_END" }));
   EXPECT_EQ(codes(trailing), std::vector<int>({ 0, 4 }));
}

TEST(TemplateParser, ThreeAtSignsSplitAtTheFirstPair)
{
   template_parser parser(QStringLiteral("@@@CLASS_NAME@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", "@CLASS_NAME", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0 }));
}

TEST(TemplateParser, MarkerCannotBeEscaped)
{
   template_parser parser(QStringLiteral("mail\\@@CLASS_NAME@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "mail\\", "CLASS_NAME", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 1, 0 }));
}

TEST(TemplateParser, NamesAreNotTrimmed)
{
   template_parser parser(QStringLiteral("@@ CLASS_NAME@@CLASS_NAME @@\nCLASS_NAME@@"));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "", " CLASS_NAME", "CLASS_NAME ", "\nCLASS_NAME", "" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 0, 0, 0, 0 }));
}

TEST(TemplateParser, ListsHaveOnePieceMoreThanMarkers)
{
   const QString text = QStringLiteral("#ifndef @@INCLUDE_MACRO_GUARD@@\n#define @@INCLUDE_MACRO_GUARD@@\n@@CUSTOM_X@@ @@@@ end");
   template_parser parser(text);
   EXPECT_EQ(parser.getListOfText().size(), 9);
   EXPECT_EQ(parser.getListOfAction().size(), 9);
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 2, 0, 2, 0, 62, 0, 0, 0 }));
}

TEST(TemplateParser, InputTextSizeCountsCharactersAfterNormalisation)
{
   template_parser parser(QStringLiteral("ab\r\ncd"));
   EXPECT_EQ(parser.getInputTextSize(), 5L);

   // Characters, not bytes: two accented letters are two characters.
   template_parser accented(QString::fromUtf8("\xc3\xa9\xc3\xa8@@CLASS_NAME@@"));
   EXPECT_EQ(accented.getInputTextSize(), 16L);
}

TEST(TemplateParser, SeparatorIsDoubleAt)
{
   template_parser parser(QStringLiteral("x"));
   EXPECT_EQ(parser.getSeparator(), QStringLiteral("@@"));
}

TEST(TemplateParser, ReferenceAccessorsMatchCopies)
{
   template_parser parser(QStringLiteral("a@@FULL_CLASS_NAME@@b@@CUSTOM_Z@@"));
   EXPECT_EQ(parser.textList(), parser.getListOfText());
   EXPECT_EQ(parser.actionList(), parser.getListOfAction());
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 12, 0, 62, 0 }));
}

TEST(TemplateParser, SharedParserIsReadOnly)
{
   auto parser = std::make_shared<const template_parser>(QStringLiteral("@@CLASS_NAME@@"));
   QList<QString> copy = parser->getListOfText();
   copy[1] = QStringLiteral("changed");
   EXPECT_EQ(parser->getListOfText().at(1), QStringLiteral("CLASS_NAME"));
}

TEST(TemplateParserFile, MissingFileGivesEmptyLists)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   QFile file(dir.filePath(QStringLiteral("no_such_template.h")));
   template_parser parser(file);
   EXPECT_TRUE(parser.getListOfText().isEmpty());
   EXPECT_TRUE(parser.getListOfAction().isEmpty());
   EXPECT_TRUE(parser.getInputText().isEmpty());
   EXPECT_EQ(parser.getInputTextSize(), 0L);
   EXPECT_FALSE(file.isOpen());
}

TEST(TemplateParserFile, DirectoryCannotBeReadAsTemplate)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   QFile file(dir.path());
   template_parser parser(file);
   EXPECT_TRUE(parser.getListOfText().isEmpty());
   EXPECT_TRUE(parser.getListOfAction().isEmpty());
}

TEST(TemplateParserFile, RealFileIsReadAndNormalised)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString path = dir.filePath(QStringLiteral("my_template.h"));
   const QByteArray bytes("// \xc3\xa9t\xc3\xa9\r\nclass @@CLASS_NAME@@\r\n{\r\n@@CUSTOM_BODY@@\r\n};\r\n");
   ASSERT_TRUE(test_support::writeAll(path, bytes));

   QFile file(path);
   template_parser parser(file);
   EXPECT_FALSE(file.isOpen());
   EXPECT_EQ(parser.getInputText(), QString::fromUtf8("// \xc3\xa9t\xc3\xa9\nclass @@CLASS_NAME@@\n{\n@@CUSTOM_BODY@@\n};\n"));
   EXPECT_EQ(parser.getListOfText(),
             QStringList({ QString::fromUtf8("// \xc3\xa9t\xc3\xa9\nclass "), "CLASS_NAME", "\n{\n", "CUSTOM_BODY", "\n};\n" }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0, 1, 0, 62, 0 }));
}

TEST(TemplateParserFile, FileAndTextGiveTheSameParse)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString path = dir.filePath(QStringLiteral("t.cpp"));
   const QByteArray bytes("@@COMMENT_FILE_CREATED_BY@@\r\n\r\n#include \"@@INCLUDE_ITEM_HEADER@@\"\r\n@@NAMESPACE_BEGIN@@");
   ASSERT_TRUE(test_support::writeAll(path, bytes));
   QFile file(path);
   template_parser fromFile(file);
   template_parser fromText(QString::fromUtf8(bytes));
   EXPECT_EQ(fromFile.getInputText(), fromText.getInputText());
   EXPECT_EQ(fromFile.getListOfText(), fromText.getListOfText());
   EXPECT_EQ(fromFile.getListOfAction(), fromText.getListOfAction());
   EXPECT_EQ(codes(fromFile), std::vector<int>({ 0, 29, 0, 48, 0, 3, 0 }));
}

TEST(TemplateParserFile, EmptyFileGivesOneEmptyPiece)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString path = dir.filePath(QStringLiteral("empty.h"));
   ASSERT_TRUE(test_support::writeAll(path, QByteArray()));
   QFile file(path);
   template_parser parser(file);
   EXPECT_EQ(parser.getListOfText(), QStringList({ QString() }));
   EXPECT_EQ(codes(parser), std::vector<int>({ 0 }));
}

TEST(TemplateParserKeywords, TableHasEveryKeywordWithItsCodeInOrder)
{
   const auto & table = template_parser::keywordTable();
   const int expectedCount = static_cast<int>(std::size(kExpectedKeywords));
   ASSERT_EQ(expectedCount, 75);
   ASSERT_EQ(table.size(), expectedCount);
   for (int i = 0; i < expectedCount; ++i)
   {
      EXPECT_EQ(table.at(i).first, QString::fromLatin1(kExpectedKeywords[i].name)) << "row " << i;
      EXPECT_EQ(static_cast<int>(table.at(i).second), kExpectedKeywords[i].code) << kExpectedKeywords[i].name;
   }
}

TEST(TemplateParserKeywords, CodesCoverOneToSeventySixExceptCustom)
{
   std::set<int> seen;
   for (const auto & entry : kExpectedKeywords) { EXPECT_TRUE(seen.insert(entry.code).second) << entry.name; }
   std::set<int> expected;
   for (int code = 1; code <= 76; ++code) { if (code != 62) { expected.insert(code); } }
   EXPECT_EQ(seen, expected);
}

TEST(TemplateParserKeywords, EachKeywordIsRecognisedBetweenMarkers)
{
   for (const auto & entry : kExpectedKeywords)
   {
      const QString name = QString::fromLatin1(entry.name);
      template_parser parser(QStringLiteral("x @@") + name + QStringLiteral("@@ y"));
      ASSERT_EQ(parser.getListOfAction().size(), 3) << entry.name;
      EXPECT_EQ(static_cast<int>(parser.getListOfAction().at(1)), entry.code) << entry.name;
      EXPECT_EQ(parser.getListOfText().at(1), name);
      EXPECT_EQ(static_cast<int>(template_parser::classify(name)), entry.code) << entry.name;
   }
}

TEST(TemplateParserKeywords, KeywordNameRoundTrip)
{
   for (const auto & entry : kExpectedKeywords)
   {
      EXPECT_EQ(template_parser::keywordName(static_cast<template_parser::enum_action>(entry.code)),
                QString::fromLatin1(entry.name));
   }
   EXPECT_EQ(template_parser::keywordName(template_parser::action_CUSTOM), QStringLiteral("CUSTOM_"));
   EXPECT_TRUE(template_parser::keywordName(template_parser::action_none).isEmpty());
   EXPECT_TRUE(template_parser::keywordName(static_cast<template_parser::enum_action>(77)).isEmpty());
}

TEST(TemplateParserKeywords, KeywordWithSuffixOrPrefixIsLiteral)
{
   // Names that extend a keyword must not be taken for it: matching is on the whole piece.
   EXPECT_EQ(static_cast<int>(template_parser::classify(QStringLiteral("LIST_INCLUDE_DEPENDENCIES_CPP"))), 28);
   EXPECT_EQ(static_cast<int>(template_parser::classify(QStringLiteral("LIST_INCLUDE_DEPENDENCIES"))), 10);
   EXPECT_EQ(static_cast<int>(template_parser::classify(QStringLiteral("INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT"))), 56);
   EXPECT_EQ(static_cast<int>(template_parser::classify(QStringLiteral("CLASS_NAME_X"))), 0);
   EXPECT_EQ(static_cast<int>(template_parser::classify(QStringLiteral("X_CLASS_NAME"))), 0);
   EXPECT_EQ(static_cast<int>(template_parser::classify(QString())), 0);
}

TEST(TemplateParserKeywords, EnumeratorsCarryTheirCodes)
{
   EXPECT_EQ(static_cast<int>(template_parser::action_none), 0);
   EXPECT_EQ(static_cast<int>(template_parser::action_CLASS_NAME), 1);
   EXPECT_EQ(static_cast<int>(template_parser::action_PROJECT_NAME), 31);
   EXPECT_EQ(static_cast<int>(template_parser::action_LIST_RELATIONS_TYPEDEF), 61);
   EXPECT_EQ(static_cast<int>(template_parser::action_CUSTOM), 62);
   EXPECT_EQ(static_cast<int>(template_parser::action_TYPEDEF_CLASS_PTR), 63);
   EXPECT_EQ(static_cast<int>(template_parser::action_PIMPL_MOVABLE_IMPLEMENTATION), 76);
}
