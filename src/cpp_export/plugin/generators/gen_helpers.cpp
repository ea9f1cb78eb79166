#include "cpp_export/plugin/generators/generators.h"

#include <QStringBuilder>
#include <QStringList>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "tools/string_helper.h"

namespace plugin {
namespace generators {

QString flatKey(const QString & key)
{
   // Left to right like QString::replace, in one pass: keys are flattened for every file and line.
   const qsizetype iSize = key.size();
   const QChar * pKey = key.constData();
   qsizetype i = 0;
   while ((i + 1 < iSize) && ! ((pKey[i] == QLatin1Char(':')) && (pKey[i + 1] == QLatin1Char(':')))) { ++i; }
   if (i + 1 >= iSize) { return key; }
   QString s(iSize, Qt::Uninitialized);
   QChar * pOut = s.data();
   qsizetype n = 0;
   for (qsizetype j = 0; j < iSize; ++j)
   {
      if ((pKey[j] == QLatin1Char(':')) && (j + 1 < iSize) && (pKey[j + 1] == QLatin1Char(':'))) { pOut[n++] = QLatin1Char('_'); ++j; }
      else { pOut[n++] = pKey[j]; }
   }
   s.truncate(n);
   return s;
}

void appendNameFunctionBody(QString & out, const QString & name, const QString & sqlName)
{
   if (sqlName == name) { out += QLatin1String("{ Q_UNUSED(key); return \"") % sqlName % QLatin1String("\"; }"); }
   else
   {
      out += QLatin1String("{ return (key ? QString(\"") % name % QLatin1String("\") : QString(\"") % sqlName
             % QLatin1String("\")); }");
   }
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
   return ((isPImpl(builder) ? QLatin1String("m_pImpl->m_") : QLatin1String("m_")) % propertyName);
}

QString namespaceBegin(const QString & ns)
{
   if (ns.isEmpty()) { return QString(); }
   const QList<QStringView> parts = QStringView(ns).split(QStringView(u"::"), Qt::KeepEmptyParts, Qt::CaseSensitive);
   if (parts.isEmpty() || parts.first().isEmpty()) { return QString(); }
   QString out;
   for (qsizetype i = 0; i < parts.size(); ++i)
   {
      if (i > 0) { out += QLatin1Char('\n'); }
      out += QLatin1String("namespace ") % parts.at(i) % QLatin1String(" {");
   }
   return out;
}

QString namespaceEnd(const QString & ns)
{
   if (ns.isEmpty()) { return QString(); }
   const QList<QStringView> parts = QStringView(ns).split(QStringView(u"::"), Qt::KeepEmptyParts, Qt::CaseSensitive);
   if (parts.isEmpty() || parts.first().isEmpty()) { return QString(); }
   QString out;
   for (qsizetype i = parts.size() - 1; i >= 0; --i)
   {
      if (i < (parts.size() - 1)) { out += QLatin1Char('\n'); }
      out += QLatin1String("} // namespace ") % parts.at(i);
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
      const QLatin1String sep = (bFirst ? QLatin1String(" : ") : QLatin1String(", "));
      const QString name = p->getName();
      if (pIdProperty && (p->getId() == pIdProperty->getId()))
      {
         out += sep % QLatin1String("m_") % name % QLatin1String("(id)");
         bFirst = false;
         continue;
      }
      const QString def = pType->getDefaultValue();
      QString init;
      if (p->isString(true, -1) && ! def.isEmpty()) { init = QLatin1String("(\"") % tools::string_helper::toCppString(def) % QLatin1String("\")"); }
      else if (p->isBoolean(true, -1) && def.isEmpty()) { init = QStringLiteral("(false)"); }
      else if (p->isDecimal(true, -1) && def.isEmpty()) { init = QStringLiteral("(0.0)"); }
      else if (p->isNumber(true, -1) && def.isEmpty()) { init = QStringLiteral("(0)"); }
      else if (! def.isEmpty()) { init = QLatin1Char('(') % def % QLatin1Char(')'); }
      if (init.isEmpty()) { continue; }
      out += sep % QLatin1String("m_") % name % init;
      bFirst = false;
   }
}

} // namespace generators
} // namespace plugin
