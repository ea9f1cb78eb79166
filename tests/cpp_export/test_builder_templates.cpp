#include "builder_test_support.h"

using namespace builder_test;

namespace {

// A built-in template as the parser keeps it: CR LF turned into LF.
QString resourceText(const QString & name)
{
   QString text = QString::fromUtf8(test_support::readAll(":/cpp_export/documents/" + name));
   return text.replace("\r\n", "\n");
}

const QByteArray k_twoEntities = R"json({
  "name": "shop",
  "entities": [
    {"name": "Person", "properties": [{"name": "id", "type": "long", "primary_key": true}, {"name": "age", "type": "int"}]},
    {"name": "Pet", "properties": [{"name": "id", "type": "long", "primary_key": true}]}
  ]
})json";

const QString k_headerWarning = "When you enable 'PIMPL idiom' setting in C++ export plugin, your template for *.HPP files must contain "
                                "'@@PIMPL_DEFINITION@@' or '@@CUSTOM_PIMPL_DEFINITION' placeholder to define the private implementation pointer.";
const QString k_sourceWarning = "When you enable 'PIMPL idiom' setting in C++ export plugin, your template for *.CPP files must contain "
                                "'@@PIMPL_IMPLEMENTATION@@' or '@@CUSTOM_PIMPL_IMPLEMENTATION' placeholder to implement the private implementation pointer.";

class TemplateSelection : public export_fixture
{
protected:
   // The warnings shown so far.
   QStringList warnings() const
   {
      QStringList lst;
      for (const tools::message_box::record & r : tools::message_box::history())
      {
         EXPECT_EQ(r.kind, tools::message_box::kind_critical);
         EXPECT_EQ(r.title, QString("Tavrel - TavrelCppExport"));
         lst.append(r.text);
      }
      return lst;
   }
};

} // namespace

TEST_F(TemplateSelection, EachStyleAndPImplFlagReadsItsResource)
{
   const struct { plugin::cpp_template::enum_template style; const char * name; } styles[] = {
      { plugin::cpp_template::no_inheritance, "template_no_inheritance" },
      { plugin::cpp_template::ix_persistable, "template_ix_persistable" },
      { plugin::cpp_template::zy_persistable, "template_zy_persistable" },
      { plugin::cpp_template::ix_persistable_and_q_object, "template_ix_persistable_and_q_object" } };
   for (bool pimpl : { false, true })
   {
      m_plugin.setPImpl(pimpl);
      for (const auto & s : styles)
      {
         m_plugin.setCppTemplate(s.style);
         const QString base = QString(s.name) + (pimpl ? "_pimpl" : "");
         auto header = m_pBuilder->getParser(true);
         auto source = m_pBuilder->getParser(false);
         ASSERT_TRUE(header && source) << base.toStdString();
         EXPECT_FALSE(header->getInputText().isEmpty());
         EXPECT_EQ(header->getInputText(), resourceText(base + ".h")) << base.toStdString();
         EXPECT_EQ(source->getInputText(), resourceText(base + ".cpp")) << base.toStdString();
      }
   }
}

TEST_F(TemplateSelection, BuiltInParsersAreCachedUntilThePImplFlagChanges)
{
   m_plugin.setCppTemplate(plugin::cpp_template::ix_persistable);
   auto first = m_pBuilder->getParser(true);
   auto firstSource = m_pBuilder->getParser(false);
   EXPECT_EQ(m_pBuilder->getParser(true), first);
   EXPECT_EQ(m_pBuilder->getParser(false), firstSource);
   EXPECT_NE(first, firstSource);

   m_plugin.setPImpl(true);
   auto pimpl = m_pBuilder->getParser(true);
   EXPECT_NE(pimpl, first);
   EXPECT_EQ(pimpl->getInputText(), resourceText("template_ix_persistable_pimpl.h"));

   m_plugin.setPImpl(false);
   auto again = m_pBuilder->getParser(true);
   EXPECT_NE(again, first);
   EXPECT_EQ(again->getInputText(), resourceText("template_ix_persistable.h"));
}

TEST_F(TemplateSelection, CustomStyleReusesItsParserUntilTheTextChanges)
{
   m_plugin.setCppTemplate(plugin::cpp_template::custom);
   m_plugin.setCustomCppTemplate_HPP("// header @@CLASS_NAME@@\n");
   m_plugin.setCustomCppTemplate_CPP("// source @@CLASS_NAME@@\n");
   auto header = m_pBuilder->getParser(true);
   auto source = m_pBuilder->getParser(false);
   ASSERT_TRUE(header && source);
   EXPECT_EQ(header->getInputText(), QString("// header @@CLASS_NAME@@\n"));
   EXPECT_EQ(source->getInputText(), QString("// source @@CLASS_NAME@@\n"));
   EXPECT_EQ(m_pBuilder->getParser(true), header);
   EXPECT_EQ(m_pBuilder->getParser(false), source);

   m_plugin.setCustomCppTemplate_HPP("// changed @@CLASS_NAME@@\n");
   auto changed = m_pBuilder->getParser(true);
   EXPECT_NE(changed, header);
   EXPECT_EQ(changed->getInputText(), QString("// changed @@CLASS_NAME@@\n"));
   EXPECT_EQ(m_pBuilder->getParser(false), source);

   // The custom style has no PIMPL variant: the same text is used.
   m_plugin.setPImpl(true);
   EXPECT_EQ(m_pBuilder->getParser(true), changed);
}

TEST_F(TemplateSelection, EditedCustomTemplateTakesEffectAtNextPreview)
{
   model::project_ptr p = parseModel(k_twoEntities);
   ASSERT_TRUE(p);
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(expandHeader(* p, * person, "first @@CLASS_NAME@@"), QString("first Person"));
   EXPECT_EQ(expandHeader(* p, * person, "second @@CLASS_NAME@@"), QString("second Person"));
}

TEST_F(TemplateSelection, UnknownStyleOrNoPluginGivesNoTemplate)
{
   m_plugin.setCppTemplate(static_cast<plugin::cpp_template::enum_template>(9));
   EXPECT_FALSE(m_pBuilder->getParser(true));
   EXPECT_FALSE(m_pBuilder->getParser(false));
   model::project_ptr p = parseModel(k_twoEntities);
   ASSERT_TRUE(p);
   model::entity_ptr person = p->getEntityByKey("Person");
   EXPECT_EQ(m_pBuilder->buildHeader(* p, * person), QString());
   EXPECT_EQ(m_pBuilder->buildSource(* p, * person), QString());

   builder_probe alone(nullptr);
   EXPECT_FALSE(alone.getParser(true));
   EXPECT_TRUE(alone.checkParserContent(std::make_shared<tools::template_parser>(QString("x")), true));
   EXPECT_EQ(alone.buildHeader(* p, * person), QString());
}

TEST_F(TemplateSelection, CheckWarnsOnceForHeaderAndOnceForSource)
{
   m_plugin.setPImpl(true);
   auto plain = std::make_shared<tools::template_parser>(QString("class @@CLASS_NAME@@ {};\n"));
   EXPECT_FALSE(m_pBuilder->checkParserContent(plain, true));
   EXPECT_TRUE(m_pBuilder->checkParserContent(plain, true));
   EXPECT_EQ(warnings(), QStringList({ k_headerWarning }));

   EXPECT_FALSE(m_pBuilder->checkParserContent(plain, false));
   EXPECT_TRUE(m_pBuilder->checkParserContent(plain, false));
   EXPECT_EQ(warnings(), QStringList({ k_headerWarning, k_sourceWarning }));
}

TEST_F(TemplateSelection, CheckPassesWithThePImplKeywords)
{
   m_plugin.setPImpl(true);
   EXPECT_TRUE(m_pBuilder->checkParserContent(std::make_shared<tools::template_parser>(QString("a @@PIMPL_DEFINITION@@ b")), true));
   EXPECT_TRUE(m_pBuilder->checkParserContent(std::make_shared<tools::template_parser>(QString("a @@CUSTOM_PIMPL_DEFINITION_X@@ b")), true));
   EXPECT_TRUE(m_pBuilder->checkParserContent(std::make_shared<tools::template_parser>(QString("a @@PIMPL_IMPLEMENTATION@@ b")), false));
   EXPECT_TRUE(m_pBuilder->checkParserContent(std::make_shared<tools::template_parser>(QString("a @@CUSTOM_PIMPL_IMPLEMENTATION_Y@@ b")), false));
   EXPECT_TRUE(m_pBuilder->checkParserContent(nullptr, true));
   EXPECT_TRUE(warnings().isEmpty());
   // The header keyword does not satisfy the source check.
   EXPECT_FALSE(m_pBuilder->checkParserContent(std::make_shared<tools::template_parser>(QString("@@PIMPL_DEFINITION@@")), false));
   EXPECT_EQ(warnings(), QStringList({ k_sourceWarning }));
}

TEST_F(TemplateSelection, CheckIsSilentWithoutPImpl)
{
   m_plugin.setPImpl(false);
   auto plain = std::make_shared<tools::template_parser>(QString("nothing"));
   EXPECT_TRUE(m_pBuilder->checkParserContent(plain, true));
   EXPECT_TRUE(m_pBuilder->checkParserContent(plain, false));
   EXPECT_TRUE(warnings().isEmpty());
}

TEST_F(TemplateSelection, CustomTemplateWithoutPImplKeywordWarnsOnceAcrossEntitiesAndExports)
{
   model::project_ptr p = parseModel(k_twoEntities);
   ASSERT_TRUE(p);
   m_plugin.setCppTemplate(plugin::cpp_template::custom);
   m_plugin.setCustomCppTemplate_HPP("class @@CLASS_NAME@@;\n");
   m_plugin.setCustomCppTemplate_CPP("// @@CLASS_NAME@@ @@CUSTOM_PIMPL_IMPLEMENTATION@@\n");
   m_plugin.setPImpl(true);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(warnings(), QStringList({ k_headerWarning }));
   // The warning does not stop the expansion.
   EXPECT_EQ(outText("include/Person.gen.h"), QString("class Person;\n"));
   EXPECT_EQ(outText("include/Pet.gen.h"), QString("class Pet;\n"));

   // Off: no warning; on again: one more.
   tools::message_box::clearHistory();
   m_plugin.setPImpl(false);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(warnings().isEmpty());
   m_plugin.setPImpl(true);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_EQ(warnings(), QStringList({ k_headerWarning }));
}

TEST_F(TemplateSelection, SwitchingPImplBetweenExportsUsesTheRightTemplates)
{
   model::project_ptr p = parseModel(k_twoEntities);
   ASSERT_TRUE(p);
   m_plugin.setCppTemplate(plugin::cpp_template::ix_persistable);
   const QString plainCtor = "Person::Person(const long & id) : m_id(id), m_age(0) { ; }\n";
   const QString pimplCtor = "Person::Person(const long & id) : m_pImpl(new Person_impl(id)) { ; }\n";

   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(outText("src/Person.gen.cpp").contains(plainCtor));
   EXPECT_FALSE(outText("src/Person.gen.cpp").contains("_impl"));

   m_plugin.setPImpl(true);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(outText("src/Person.gen.cpp").contains(pimplCtor));
   EXPECT_FALSE(outText("src/Person.gen.cpp").contains(plainCtor));

   m_plugin.setPImpl(false);
   ASSERT_TRUE(static_cast<bool>(exportProject(* p)));
   EXPECT_TRUE(outText("src/Person.gen.cpp").contains(plainCtor));
   EXPECT_FALSE(outText("src/Person.gen.cpp").contains("_impl"));
   // The built-in templates hold the PIMPL keywords: no warning at all.
   EXPECT_TRUE(warnings().isEmpty());
}
