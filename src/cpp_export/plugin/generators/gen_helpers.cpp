#include "plugin/generators/generators.h"

#include <QStringList>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "plugin/cpp_builder.h"
#include "plugin/cpp_export.h"
#include "tools/string_helper.h"

namespace plugin {
namespace generators {

QString flatKey(const QString & key)
{
   QString s = key;
   return s.replace("::", "_");
}

model::entity_ptr resolvedParent(model::project & project, const model::entity & entity)
{
   model::entity_ptr pParent = entity.getParent();
   return (pParent ? project.getEntityById(pParent->getId()) : model::entity_ptr());
}

model::entity_ptr savedParent(model::project & project, const model::entity & entity)
{
   model::entity_ptr pParent = resolvedParent(project, entity);
   return ((pParent && (pParent->getId() != 0)) ? pParent : model::entity_ptr());
}

bool isPImpl(const cpp_builder & builder)
{
   return (builder.getPlugin() && builder.getPlugin()->getPImpl());
}

bool isCustomFilesOn(const cpp_builder & builder)
{
   return (! builder.getPlugin() || builder.getPlugin()->getGenerateCustomFiles());
}

QString memberName(const cpp_builder & builder, const QString & propertyName)
{
   return (isPImpl(builder) ? QString("m_pImpl->m_") : QString("m_")) + propertyName;
}

QString namespaceBegin(const QString & ns)
{
   if (ns.isEmpty()) { return QString(); }
   const QStringList parts = ns.split("::", Qt::KeepEmptyParts, Qt::CaseSensitive);
   if (parts.isEmpty() || parts.first().isEmpty()) { return QString(); }
   QString out;
   for (qsizetype i = 0; i < parts.size(); ++i)
   {
      if (i > 0) { out += "\n"; }
      out += "namespace " + parts.at(i) + " {";
   }
   return out;
}

QString namespaceEnd(const QString & ns)
{
   if (ns.isEmpty()) { return QString(); }
   const QStringList parts = ns.split("::", Qt::KeepEmptyParts, Qt::CaseSensitive);
   if (parts.isEmpty() || parts.first().isEmpty()) { return QString(); }
   QString out;
   for (qsizetype i = parts.size() - 1; i >= 0; --i)
   {
      if (i < (parts.size() - 1)) { out += "\n"; }
      out += "} // namespace " + parts.at(i);
   }
   return out;
}

void appendMemberInitialisers(QString & out, const model::entity & entity, bool & bFirst, const model::property_ptr & pIdProperty)
{
   const model::list_of_property lst = entity.getListOfProperty(false, true, true);
   for (const model::property_ptr & p : lst)
   {
      if (! p) { continue; }
      model::property_type_ptr pType = p->getType();
      if (! pType) { continue; }
      const QString sep = (bFirst ? QStringLiteral(" : ") : QStringLiteral(", "));
      const QString member = "m_" + p->getName();
      if (pIdProperty && (p->getId() == pIdProperty->getId()))
      {
         out += sep + member + "(id)";
         bFirst = false;
         continue;
      }
      const QString def = pType->getDefaultValue();
      QString init;
      if (p->isString(true, -1) && ! def.isEmpty()) { init = "(\"" + tools::string_helper::toCppString(def) + "\")"; }
      else if (p->isBoolean(true, -1) && def.isEmpty()) { init = "(false)"; }
      else if (p->isDecimal(true, -1) && def.isEmpty()) { init = "(0.0)"; }
      else if (p->isNumber(true, -1) && def.isEmpty()) { init = "(0)"; }
      else if (! def.isEmpty()) { init = "(" + def + ")"; }
      if (init.isEmpty()) { continue; }
      out += sep + member + init;
      bFirst = false;
   }
}

} // namespace generators
} // namespace plugin
