#include <QDirIterator>

#include <set>

#include "builder_test_support.h"
#include "cpp_export/plugin/keyword_registry.h"

using namespace builder_test;
using plugin::template_keyword;
using tools::template_parser;

namespace {

const QByteArray k_itemsJson = R"json({
  "name": "shop",
  "entities": [
    {"name": "Person", "namespace": "ns", "description": "Someone", "validator_method": "check",
     "triggers": ["before_insert"],
     "properties": [{"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString"}]}
  ],
  "enumerations": [{"name": "Color", "namespace": "ns", "use_qt_enum": true, "values": [{"key": "Red", "value": "1"}]}]
})json";

// Keywords that write nothing for an enumeration, and those that write nothing for an entity.
const std::set<QString> k_entityOnly = {
   "LIST_PROPERTIES_DEFINITION", "LIST_PROPERTIES_GETTER", "LIST_PROPERTIES_SETTER", "LIST_INCLUDE_DEPENDENCIES",
   "LIST_FORWARD_DECLARATION", "IMPLEMENT_ZY_REGISTER_CLASS", "IMPLEMENT_CONSTRUCTOR", "IMPLEMENT_LIST_PROPERTIES_GETTER",
   "IMPLEMENT_LIST_PROPERTIES_SETTER", "ZY_REGISTER_BASE_CLASS", "ZY_REGISTER_PRIMARY_KEY_TYPE", "CONSTRUCTOR_WITH_PRIMARY_KEY",
   "IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY", "PRIMARY_KEY_TYPE", "REGISTER_ABSTRACT_CLASS", "LIST_INCLUDE_DEPENDENCIES_CPP",
   "INCLUDE_FORWARD_DECLARATION", "INHERIT_FROM_IX_PERSISTABLE", "MACRO_ZY_PERSISTABLE_HPP", "MACRO_ZY_PERSISTABLE_CPP",
   "INHERIT_FROM_ZY_PERSISTABLE", "ZY_VALIDATOR_METHOD", "LIST_STATIC_RELATIONS_KEYS", "FORWARD_DECLARATION_FOR_TRIGGERS",
   "LIST_TRIGGERS_METHODS", "LIST_TRIGGERS_SPECIALIZATIONS", "FRIEND_FOR_TRIGGERS", "INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT",
   "LIST_RELATIONS_GETTER_WITH_FETCH", "IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH", "LIST_STATIC_COLUMNS_KEYS",
   "STATIC_TABLE_KEY", "LIST_RELATIONS_TYPEDEF", "TYPEDEF_CLASS_PTR", "TYPEDEF_LIST_OF_CLASS", "TYPEDEF_LIST_OF_CLASS_PTR",
   "PIMPL_DEFINITION", "PIMPL_IMPLEMENTATION", "PIMPL_COPYABLE_DEFINITION", "PIMPL_COPYABLE_IMPLEMENTATION",
   "PIMPL_MOVABLE_DEFINITION", "PIMPL_MOVABLE_IMPLEMENTATION" };
const std::set<QString> k_enumerationOnly = { "TYPEDEF_ENUM_ALL_VALUES", "MACRO_Q_OBJECT", "MACRO_Q_ENUMS" };

// What the expansion makes of a generated text.
QString collapsed(QString text)
{
   while (text.contains("\n\n\n")) { text.replace("\n\n\n", "\n\n"); }
   return text;
}

class KeywordDispatch : public export_fixture { };

} // namespace

TEST(KeywordRegistry, EveryNameBetweenMarkersOfTheBuiltInTemplatesIsAKeyword)
{
   int iTemplates = 0;
   int iKeywords = 0;
   QDirIterator it(QStringLiteral(":/cpp_export/documents"), QDir::Files);
   while (it.hasNext())
   {
      const QString path = it.next();
      ++iTemplates;
      const QStringList lstPieces = QString::fromUtf8(test_support::readAll(path)).split(QStringLiteral("@@"));
      EXPECT_EQ(lstPieces.size() % 2, 1) << path.toStdString() << ": a marker without its pair";
      for (int i = 1; i < lstPieces.size(); i += 2)
      {
         const QString & piece = lstPieces.at(i);
         if (piece.startsWith(template_parser::customPrefix())) { continue; }
         ++iKeywords;
         const int iCode = template_parser::classify(piece);
         EXPECT_NE(plugin::findTemplateKeyword(iCode), nullptr) << path.toStdString() << ": " << piece.toStdString();
      }
   }
   EXPECT_EQ(iTemplates, 30);
   EXPECT_GT(iKeywords, 0);
}

TEST(KeywordRegistry, NamesAndCodesAreUniqueAndEachKeywordWritesSomewhere)
{
   std::set<QString> names;
   std::set<int> codes;
   for (const template_keyword & k : plugin::templateKeywords())
   {
      const QString name = QString::fromLatin1(k.name);
      EXPECT_FALSE(name.isEmpty());
      EXPECT_FALSE(name.startsWith(template_parser::customPrefix())) << k.name;
      EXPECT_TRUE(names.insert(name).second) << k.name;
      EXPECT_TRUE(codes.insert(k.code).second) << k.name;
      EXPECT_NE(k.code, template_parser::action_none) << k.name;
      EXPECT_NE(k.code, template_parser::action_CUSTOM) << k.name;
      EXPECT_TRUE(k.forEntity || k.forEnumeration) << k.name;
      EXPECT_EQ(plugin::findTemplateKeyword(k.code), & k) << k.name;
   }
   EXPECT_EQ(plugin::findTemplateKeyword(template_parser::action_none), nullptr);
   EXPECT_EQ(plugin::findTemplateKeyword(template_parser::action_CUSTOM), nullptr);
   EXPECT_EQ(plugin::findTemplateKeyword(-1), nullptr);
   EXPECT_EQ(plugin::findTemplateKeyword(10000), nullptr);
}

TEST(KeywordRegistry, EachKeywordWritesForTheKindsOfTheDispatchTable)
{
   for (const template_keyword & k : plugin::templateKeywords())
   {
      const QString name = QString::fromLatin1(k.name);
      EXPECT_EQ(k.forEnumeration == nullptr, k_entityOnly.count(name) == 1) << k.name;
      EXPECT_EQ(k.forEntity == nullptr, k_enumerationOnly.count(name) == 1) << k.name;
   }
}

TEST_F(KeywordDispatch, ExpansionWritesWhatTheKeywordsGeneratorWrites)
{
   model::project_ptr p = parseModel(k_itemsJson);
   ASSERT_TRUE(p);
   model::entity_ptr pEntity = p->getEntityByKey("ns::Person");
   model::enumeration_ptr pEnumeration = p->getEnumerationByKey("ns::Color");
   ASSERT_TRUE(pEntity);
   ASSERT_TRUE(pEnumeration);
   int iFile = 0;
   for (const template_keyword & k : plugin::templateKeywords())
   {
      auto parser = std::make_shared<template_parser>("<@@" + QString::fromLatin1(k.name) + "@@>");
      QString sEntity = "<";
      if (k.forEntity) { k.forEntity(* m_pBuilder, sEntity, * p, * pEntity); }
      QString sEnumeration = "<";
      if (k.forEnumeration) { k.forEnumeration(* m_pBuilder, sEnumeration, * p, * pEnumeration); }

      const QString entityFile = out(QString::number(++iFile) + ".txt");
      ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* p, parser, entityFile, pEntity.get(), nullptr))) << k.name;
      EXPECT_EQ(readText(entityFile), collapsed(sEntity + ">")) << k.name;
      const QString enumerationFile = out(QString::number(++iFile) + ".txt");
      ASSERT_TRUE(static_cast<bool>(m_pBuilder->build_Generic(* p, parser, enumerationFile, nullptr, pEnumeration.get()))) << k.name;
      EXPECT_EQ(readText(enumerationFile), collapsed(sEnumeration + ">")) << k.name;
   }
}
