// Static table and column name functions, the typedefs that follow the class, the validator
// declaration and the glue between the class and the ORM's trigger mechanism.

#include "cpp_export/plugin/generators/generators.h"

#include <QStringBuilder>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/project.h"
#include "model/property.h"
#include "cpp_export/plugin/cpp_builder.h"

namespace plugin {
namespace generators {

namespace {

const QLatin1String kNoId("TAVREL_NO_ID");
const QLatin1String kDummyColumn("TAVREL_DUMMY_COLUMN");

const QLatin1String kZyNamespacesBegin("\nnamespace zy {\nnamespace dao {\nnamespace detail {\n");
const QLatin1String kZyNamespacesEnd("} // namespace detail\n} // namespace dao\n} // namespace zy");

} // namespace

void STATIC_TABLE_KEY(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const QString name = e.getName();
   QString table = e.getTableName();
   if (table.isEmpty()) { table = name; }
   out += QLatin1String("\npublic:\n");
   out += QLatin1String("\n   static QString table_name(bool key = false) ");
   appendNameFunctionBody(out, name, table);
}

void LIST_STATIC_COLUMNS_KEYS(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const model::list_of_property lst = e.getListOfProperty(true, false, false);
   if (lst.isEmpty()) { return; }
   out += QLatin1String("\npublic:\n");
   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty) { continue; }
      if (pProperty->getMetaData(kNoId).toBool() || pProperty->getMetaData(kDummyColumn).toBool()) { continue; }
      const QString name = pProperty->getName();
      QString column = pProperty->getColumnName();
      if (column.isEmpty()) { column = name; }
      out += QLatin1String("\n   static QString column_") % name % QLatin1String("(bool key = false) ");
      appendNameFunctionBody(out, name, column);
   }
}

void TYPEDEF_CLASS_PTR(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const QString name = e.getName();
   out += QLatin1String("typedef std::shared_ptr<") % name % QLatin1String("> ") % name % QLatin1String("_ptr;");
}

void TYPEDEF_LIST_OF_CLASS(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const QString name = e.getName();
   const model::property_ptr pId = e.getPropertyId(true);
   if (pId && ! pId->getMetaData(kNoId).toBool())
   {
      out += QLatin1String("typedef zy::ZyCollection<") % pId->getTypeDesc(false, false, QString()) % QLatin1String(", ")
             % name % QLatin1String("_ptr> list_of_") % name % QLatin1Char(';');
   }
   else { out += QLatin1String("typedef QList<") % name % QLatin1String("_ptr> list_of_") % name % QLatin1Char(';'); }
}

void TYPEDEF_LIST_OF_CLASS_PTR(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const QString name = e.getName();
   out += QLatin1String("typedef std::shared_ptr<list_of_") % name % QLatin1String("> list_of_") % name % QLatin1String("_ptr;");
}

void ZY_VALIDATOR_METHOD(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const QString method = e.getValidatorMethod();
   if (method.isEmpty()) { return; }
   out += QLatin1String("private:\n");
   out += QLatin1String("\n   // The following validator method must be implemented in a custom code");
   out += QLatin1String("\n   void ") % method % QLatin1String("(zy::ZyInvalidValueX & invalidValues);");
}

void LIST_TRIGGERS_METHODS(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   if (! e.hasTriggers()) { return; }
   out += QLatin1String("protected:\n");
   out += QLatin1String("\n   // The following triggers methods must be implemented in a custom code");
   for (const model::entity_trigger & event : model::entityTriggers())
   {
      if (! (e.*event.isSet)()) { continue; }
      out += QLatin1String("\n   virtual void on") % QLatin1String(event.cppName) % QLatin1String("(zy::dao::detail::IxDao_Helper * dao);");
   }
}

void FRIEND_FOR_TRIGGERS(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   if (e.hasTriggers())
   {
      out += QLatin1String("friend struct zy::dao::detail::ZyDao_Trigger<") % e.getKey() % QLatin1String(">;");
      return;
   }
   // Without triggers the marker's indentation would stay behind on an otherwise empty line.
   qsizetype size = out.size();
   while ((size > 0) && (out.at(size - 1) == QLatin1Char(' '))) { --size; }
   out.truncate(size);
}

void FORWARD_DECLARATION_FOR_TRIGGERS(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   if (! e.hasTriggers()) { return; }
   const QString ns = e.getNamespace();
   if (! ns.isEmpty()) { out += namespaceBegin(ns) % QLatin1Char('\n'); }
   out += QLatin1String("class ") % e.getName() % QLatin1String(";\n");
   if (! ns.isEmpty()) { out += namespaceEnd(ns) % QLatin1Char('\n'); }
   out += kZyNamespacesBegin;
   out += QLatin1String("\ntemplate <>\nstruct ZyDao_Trigger<") % e.getKey() % QLatin1String(">;\n");
   out += QLatin1Char('\n') % kZyNamespacesEnd;
}

void LIST_TRIGGERS_SPECIALIZATIONS(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(b);
   if (! e.hasTriggers()) { return; }
   const QString key = e.getKey();
   const model::entity_ptr pParent = savedParent(p, e);
   const QString parentKey = (pParent ? pParent->getKey() : QString());

   out += kZyNamespacesBegin;
   out += QLatin1String("\ntemplate <>\nstruct ZyDao_Trigger<") % key % QLatin1String(">\n{\n");
   for (const model::entity_trigger & event : model::entityTriggers())
   {
      const QLatin1String eventName(event.cppName);
      out += QLatin1String("\n   static inline void on") % eventName % QLatin1Char('(') % key
             % QLatin1String(" * t, zy::dao::detail::IxDao_Helper * dao)  { ");
      if ((e.*event.isSet)()) { out += QLatin1String("if (t) { t->on") % eventName % QLatin1String("(dao); } }"); }
      else if (pParent)
      {
         // Events the class does not handle itself go to its base class's specialisation.
         out += QLatin1String("zy::dao::detail::ZyDao_Trigger<") % parentKey % QLatin1String(">::on") % eventName
                % QLatin1String("(static_cast<") % parentKey % QLatin1String(" *>(t), dao); }");
      }
      else { out += QLatin1String("Q_UNUSED(t); Q_UNUSED(dao); }"); }
   }
   out += QLatin1String("\n\n};\n\n") % kZyNamespacesEnd;
}

} // namespace generators
} // namespace plugin
