// Data members of an entity class, the declarations of its accessors and their definitions.

#include "cpp_export/plugin/generators/generators.h"

#include <QStringBuilder>

#include "model/entity.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "cpp_export/plugin/cpp_builder.h"

namespace plugin {
namespace generators {

namespace {

// Relation kinds that hold a collection get accessors returning a reference.
bool hasReferenceAccessors(const model::property & p)
{
   const model::relationship_ptr pRelation = p.getRelation();
   if (! pRelation) { return false; }
   const int type = pRelation->getType();
   return ((type == 1) || (type == 3));
}

// A member holding an optional value: its getter returns the bare value, another one the wrapper.
bool isNullableWrapper(const model::property & p)
{
   if (p.hasRelationship()) { return false; }
   const model::property_type_ptr pType = p.getType();
   return (pType && (pType->getDecoration() == 3) && (pType->getCollection() == 0));
}

// Accessors exist only for properties that ask for them and are still in use.
bool hasGetter(const model::property & p)
{
   return (p.getWriteAccessors() && ! p.isObsolete());
}

bool hasSetter(const model::property & p)
{
   return (hasGetter(p) && ! p.isReadOnly());
}

} // namespace

void LIST_PROPERTIES_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (isPImpl(b))
   {
      out += QLatin1String("/* 'PIMPL idiom' setting is enabled : properties will be defined in the private implementation structure */");
      return;
   }

   const model::list_of_property lst = e.getListOfProperty(false, true, true);
   if (lst.isEmpty()) { return; }

   out += QLatin1String("protected:\n\n");
   int current = 1;
   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty) { continue; }
      const int access = pProperty->getAccessibility();
      if (access != current)
      {
         current = access;
         if (access == 0) { out += QLatin1String("\npublic:\n\n"); }
         else if (access == 1) { out += QLatin1String("\nprotected:\n\n"); }
         else if (access == 2) { out += QLatin1String("\nprivate:\n\n"); }
      }
      out += QLatin1String("   ") % pProperty->getTypeDesc(false, pProperty->hasRelationship(), QString())
             % QLatin1String(" m_") % pProperty->getName() % QLatin1Char(';');
      const QString description = pProperty->getDescription();
      if (! description.isEmpty()) { out += QLatin1String(" //!< ") % description; }
      out += QLatin1Char('\n');
   }
}

void LIST_PROPERTIES_GETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(b); Q_UNUSED(p);
   const model::list_of_property lst = e.getListOfProperty(false, true, true);
   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty || ! hasGetter(* pProperty)) { continue; }
      const QString name = pProperty->getName();
      if (pProperty->hasRelationship())
      {
         const QString type = pProperty->getTypeDesc(false, true, QString());
         out += QLatin1String("   ") % type % QLatin1String(" get") % name % QLatin1String("() const;\n");
         if (hasReferenceAccessors(* pProperty))
         {
            out += QLatin1String("   ") % type % QLatin1String(" & ") % name % QLatin1String("();\n");
            out += QLatin1String("   const ") % type % QLatin1String(" & ") % name % QLatin1String("() const;\n");
         }
      }
      else if (isNullableWrapper(* pProperty))
      {
         const QString type = pProperty->getTypeDesc(false, false, QString());
         out += QLatin1String("   ") % pProperty->getType()->getPrimitiveType() % QLatin1String(" get") % name % QLatin1String("() const;\n");
         out += QLatin1String("   ") % type % QLatin1String(" get") % name % QLatin1String("_() const;\n");
      }
      else
      {
         out += QLatin1String("   ") % pProperty->getTypeDesc(false, false, QString()) % QLatin1String(" get") % name % QLatin1String("() const;\n");
      }
   }
}

void LIST_PROPERTIES_SETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(b); Q_UNUSED(p);
   const model::list_of_property lst = e.getListOfProperty(false, true, true);
   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty || ! hasSetter(* pProperty)) { continue; }
      out += QLatin1String("   void set") % pProperty->getName() % QLatin1String("(const ")
             % pProperty->getTypeDesc(false, pProperty->hasRelationship(), QString()) % QLatin1String(" & val);\n");
   }
}

void IMPLEMENT_LIST_PROPERTIES_GETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   const model::list_of_property lst = e.getListOfProperty(false, true, true);
   if (lst.isEmpty()) { return; }
   const QString entityName = e.getName();
   const bool bPImpl = isPImpl(b);
   const QLatin1String memberPrefix = (bPImpl ? QLatin1String("m_pImpl->m_") : QLatin1String("m_"));

   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty || ! hasGetter(* pProperty)) { continue; }
      const QString name = pProperty->getName();
      const QString member = memberPrefix % name;
      const QString userGet = pProperty->getGetMethod();
      const QString userBody = (userGet.isEmpty() ? QString() : QString(QLatin1String(" { ") % userGet % QLatin1String(" }\n\n")));

      if (pProperty->hasRelationship())
      {
         const QString type = pProperty->getTypeDesc(false, true, QString());
         out += type % QLatin1Char(' ') % entityName % QLatin1String("::get") % name % QLatin1String("() const");
         if (userBody.isEmpty()) { out += QLatin1String(" { return ") % member % QLatin1String("; }\n\n"); }
         else { out += userBody; }
         if (hasReferenceAccessors(* pProperty))
         {
            out += type % QLatin1String(" & ") % entityName % QLatin1String("::") % name
                   % QLatin1String("() { return ") % member % QLatin1String("; }\n\n");
            out += QLatin1String("const ") % type % QLatin1String(" & ") % entityName % QLatin1String("::") % name
                   % QLatin1String("() const { return ") % member % QLatin1String("; }\n\n");
         }
      }
      else if (isNullableWrapper(* pProperty))
      {
         const QString primitive = pProperty->getType()->getPrimitiveType();
         QLatin1String fallback("");
         if (pProperty->isBoolean(true, -1)) { fallback = QLatin1String("false"); }
         else if (pProperty->isDecimal(true, -1)) { fallback = QLatin1String("0.0"); }
         else if (pProperty->isNumber(true, -1)) { fallback = QLatin1String("0"); }
         out += primitive % QLatin1Char(' ') % entityName % QLatin1String("::get") % name % QLatin1String("() const");
         if (userBody.isEmpty())
         {
            out += QLatin1String(" { return (") % member % QLatin1String(" ? (* ") % member % QLatin1String(") : ")
                   % primitive % QLatin1Char('(') % fallback % QLatin1String(")); }\n\n");
         }
         else { out += userBody; }
         out += pProperty->getTypeDesc(false, false, QString()) % QLatin1Char(' ') % entityName % QLatin1String("::get") % name
                % QLatin1String("_() const { return ") % member % QLatin1String("; }\n\n");
      }
      else
      {
         out += pProperty->getTypeDesc(false, false, QString()) % QLatin1Char(' ') % entityName % QLatin1String("::get") % name
                % QLatin1String("() const");
         if (userBody.isEmpty()) { out += QLatin1String(" { return ") % member % QLatin1String("; }\n\n"); }
         else { out += userBody; }
      }
   }
}

void IMPLEMENT_LIST_PROPERTIES_SETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   const model::list_of_property lst = e.getListOfProperty(false, true, true);
   if (lst.isEmpty()) { return; }
   const QString entityName = e.getName();
   const QLatin1String memberPrefix = (isPImpl(b) ? QLatin1String("m_pImpl->m_") : QLatin1String("m_"));

   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty || ! hasSetter(* pProperty)) { continue; }
      const QString name = pProperty->getName();
      out += QLatin1String("void ") % entityName % QLatin1String("::set") % name % QLatin1String("(const ")
             % pProperty->getTypeDesc(false, pProperty->hasRelationship(), QString()) % QLatin1String(" & val)");
      const QString userSet = pProperty->getSetMethod();
      if (userSet.isEmpty()) { out += QLatin1String(" { ") % memberPrefix % name % QLatin1String(" = val; }\n\n"); }
      else { out += QLatin1String(" { ") % userSet % QLatin1String(" }\n\n"); }
   }
}

} // namespace generators
} // namespace plugin
