// The private implementation structure of an entity class and the copy and move operations that
// carry it. Without the PIMPL setting every piece says so, so that a template using these
// keywords by mistake still compiles and shows why the piece is missing.

#include "cpp_export/plugin/generators/generators.h"

#include <QStringBuilder>

#include "model/entity.h"
#include "model/property.h"
#include "cpp_export/plugin/cpp_builder.h"

namespace plugin {
namespace generators {

namespace {

// True when the piece may be written; otherwise the notice has been appended.
bool checkPImpl(const cpp_builder & b, QString & out)
{
   if (isPImpl(b)) { return true; }
   out += QLatin1String("/* 'PIMPL idiom' setting is not enabled */");
   return false;
}

} // namespace

void PIMPL_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (! checkPImpl(b, out)) { return; }
   const QString name = e.getName();
   out += QLatin1String("\nprivate:\n\n   struct ") % name % QLatin1String("_impl;\n");
   out += QLatin1String("   std::unique_ptr<") % name % QLatin1String("_impl> m_pImpl; //!< Private implementation idiom\n");
}

void PIMPL_IMPLEMENTATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (! checkPImpl(b, out)) { return; }
   const model::list_of_property lst = e.getListOfProperty(false, true, true);
   if (lst.isEmpty()) { return; }
   const QString name = e.getName();
   const model::property_ptr pId = e.getPropertyId(true);

   out += QLatin1String("struct Q_DECL_HIDDEN ") % name % QLatin1String("::") % name % QLatin1String("_impl\n{\n");
   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty) { continue; }
      out += QLatin1String("   ") % pProperty->getTypeDesc(false, pProperty->hasRelationship(), QString())
             % QLatin1String(" m_") % pProperty->getName() % QLatin1Char(';');
      const QString description = pProperty->getDescription();
      if (! description.isEmpty()) { out += QLatin1String(" //!< ") % description; }
      out += QLatin1Char('\n');
   }

   bool bFirst = true;
   out += QLatin1String("\n   ") % name % QLatin1String("_impl()");
   appendMemberInitialisers(out, e, bFirst, model::property_ptr());
   out += QLatin1String(" { ; }\n");

   bFirst = true;
   const QString idType = (pId ? pId->getTypeDesc(false, false, QString()) : QString(QLatin1String("long")));
   out += QLatin1String("   ") % name % QLatin1String("_impl(const ") % idType % QLatin1String(" & id)");
   appendMemberInitialisers(out, e, bFirst, pId);
   out += QLatin1String(" { ; }\n");

   out += QLatin1String("   ~") % name % QLatin1String("_impl() { ; }\n};");
}

void PIMPL_COPYABLE_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (! checkPImpl(b, out)) { return; }
   const QString name = e.getName();
   out += QLatin1String("   ") % name % QLatin1String("(const ") % name % QLatin1String(" & other);\n");
   out += QLatin1String("   ") % name % QLatin1String(" & operator=(const ") % name % QLatin1String(" & other);");
}

void PIMPL_COPYABLE_IMPLEMENTATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (! checkPImpl(b, out)) { return; }
   const QString name = e.getName();
   // A deep copy: the structure's own copy operations do the member work.
   out += name % QLatin1String("::") % name % QLatin1String("(const ") % name % QLatin1String(" & other) : m_pImpl(new ")
          % name % QLatin1String("_impl(* other.m_pImpl)) { ; }\n\n");
   out += name % QLatin1String(" & ") % name % QLatin1String("::operator=(const ") % name % QLatin1String(" & other)\n");
   out += QLatin1String("{\n"
                        "   if (this != (& other)) { (* m_pImpl) = (* other.m_pImpl); }\n"
                        "   return (* this);\n"
                        "}");
}

void PIMPL_MOVABLE_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (! checkPImpl(b, out)) { return; }
   const QString name = e.getName();
   out += QLatin1String("\n#ifdef Q_COMPILER_RVALUE_REFS\n");
   out += QLatin1String("   ") % name % QLatin1Char('(') % name % QLatin1String(" && other) Q_DECL_NOEXCEPT;\n");
   out += QLatin1String("   ") % name % QLatin1String(" & operator=(") % name % QLatin1String(" && other) Q_DECL_NOEXCEPT;\n");
   out += QLatin1String("#endif // Q_COMPILER_RVALUE_REFS");
}

void PIMPL_MOVABLE_IMPLEMENTATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   if (! checkPImpl(b, out)) { return; }
   const QString name = e.getName();
   out += QLatin1String("\n#ifdef Q_COMPILER_RVALUE_REFS\n");
   out += name % QLatin1String("::") % name % QLatin1Char('(') % name
          % QLatin1String(" && other) Q_DECL_NOEXCEPT : m_pImpl(std::move(other.m_pImpl)) { ; }\n");
   // The ";" after the inner block stays: generated files have always carried it.
   out += name % QLatin1String(" & ") % name % QLatin1String("::operator=(") % name
          % QLatin1String(" && other) Q_DECL_NOEXCEPT { if (this != (& other)) { m_pImpl = std::move(other.m_pImpl); }; return (* this); }\n");
   out += QLatin1String("#endif // Q_COMPILER_RVALUE_REFS");
}

} // namespace generators
} // namespace plugin
