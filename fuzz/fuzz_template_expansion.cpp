// Expands random text as the custom class template (style 4) of a fixed model: header and
// source of every entity and enumeration, with and without PIMPL, nothing written to disk.

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

#include "fuzz_support.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/cpp_template.h"
#include "cpp_export/plugin/generators/generators.h"
#include "storage/project_storage.h"
#include "gui/tools/message_box.h"

namespace {

// Small, but with every kind of member a generator looks at: parent, abstract class, triggers,
// validator, decorations, collections, enumerations, the four relations, a private text key.
const char k_model[] = R"json({
  "name": "Fuzz",
  "entities": [
    {"name": "Base", "namespace": "fz", "abstract": true,
     "properties": [{"name": "id", "type": "long", "primary_key": true}, {"name": "created", "type": "QDateTime", "decoration": "optional"}]},
    {"name": "Order", "namespace": "fz::sales", "parent": "fz::Base", "table": "t_order", "description": "An order",
     "triggers": ["before_insert", "after_fetch", "before_delete"], "validator_method": "check", "soft_delete_column": "deleted",
     "meta": {"k": "v"},
     "properties": [
       {"name": "note", "type": "QString", "decoration": "shared_ptr", "default": "\"x\"", "description": "free text"},
       {"name": "tags", "type": "QString", "collection": "std_vector", "transient": true},
       {"name": "total", "type": "double", "min_value": 0, "max_value": 10, "get_method": "computeTotal", "write_accessors": false},
       {"name": "status", "enumeration": "fz::Status"},
       {"name": "items", "relation": {"kind": "one_to_many", "target": "fz::sales::Item", "foreign_key": "order_id"}},
       {"name": "labels", "relation": {"kind": "many_to_many", "target": "fz::Label", "extra_table": "t_order_label",
                                       "foreign_key": "order_id", "foreign_key_owner": "label_id"}}
     ]},
    {"name": "Item", "namespace": "fz::sales", "parent": "fz::Base",
     "properties": [
       {"name": "qty", "type": "int", "decoration": "qsharedpointer", "collection": "qlist"},
       {"name": "order", "relation": {"kind": "many_to_one", "target": "fz::sales::Order", "foreign_key": "order_id"}}
     ]},
    {"name": "Label", "namespace": "fz", "read_only": true,
     "properties": [
       {"name": "code", "type": "QString", "primary_key": true, "accessibility": "private"},
       {"name": "old", "type": "int", "obsolete": true},
       {"name": "twin", "relation": {"kind": "one_to_one", "target": "fz::Label"}}
     ]}
  ],
  "enumerations": [
    {"name": "Status", "namespace": "fz", "use_qt_enum": true, "values": [{"key": "A", "value": "0"}, {"key": "B", "value": "2"}]},
    {"name": "Plain", "values": [{"key": "X", "value": ""}]}
  ]
})json";

model::project_ptr & fixedModel()
{
   static model::project_ptr project;
   return project;
}

// What the builder does to a template without keywords: CR LF to LF, then runs of three or
// more line feeds cut to two.
QString plainExpansion(const QString & text)
{
   QString normalised = text;
   normalised.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
   QString result;
   int run = 0;
   for (const QChar c : std::as_const(normalised))
   {
      if (c == QLatin1Char('\n')) { if (++run > 2) { continue; } }
      else { run = 0; }
      result.append(c);
   }
   return result;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
   fuzz_support::ensureApplication();
   tools::message_box::setUnattended(true);
   tools::message_box::setPrintUnattended(false);
   plugin::generators::setBannerClock([] { return QDateTime(QDate(2024, 1, 2), QTime(3, 4)); });

   model::project_ptr & project = fixedModel();
   const zy::ZyBool ok = storage::project_storage::parseJson(QByteArray(k_model), QStringLiteral("fuzz_model.json"), project);
   fuzz_support::check(static_cast<bool>(ok) && project, "the fixed model doesn't import", ok.getDesc());
   return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t * data, size_t size)
{
   model::project & project = * fixedModel();
   // A plug-in and builder per input: nothing cached survives it, so the leak check of
   // libFuzzer (run when an input allocates more than it frees) stays quiet.
   plugin::cpp_export exporter;
   plugin::cpp_builder builder(& exporter);
   exporter.setCppTemplate(plugin::cpp_template::custom);
   const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
   exporter.setCustomCppTemplate_HPP(text);
   exporter.setCustomCppTemplate_CPP(text);
   const bool bKeywordFree = ! text.contains(QStringLiteral("@@"));
   const QString plain = (bKeywordFree ? plainExpansion(text) : QString());

   for (const bool bPImpl : { false, true })
   {
      exporter.setPImpl(bPImpl);
      for (const model::entity_ptr & e : * project.getListOfAllEntities())
      {
         const QString header = builder.buildHeader(project, * e);
         const QString source = builder.buildSource(project, * e);
         if (bKeywordFree)
         {
            fuzz_support::check(header == plain, "a template without keywords doesn't expand to itself", header);
            fuzz_support::check(source == plain, "a template without keywords doesn't expand to itself", source);
         }
      }
      for (const model::enumeration_ptr & e : * project.getListOfAllEnums())
      {
         builder.buildHeader(project, * e);
         builder.buildSource(project, * e);
      }
   }
   // Unattended boxes (the PIMPL warnings) are recorded: forget them with the input.
   tools::message_box::clearHistory();
   return 0;
}
