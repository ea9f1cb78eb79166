#include "cpp_export/plugin/generators/generators.h"

#include <QStringList>

#include "model/enumeration.h"
#include "model/project.h"

namespace plugin {
namespace generators {

namespace {
// Enumeration namespaces drop empty parts ("::a::::b" is a and b).
QStringList namespaceParts(const model::enumeration & e)
{
   return e.getNamespace().split("::", Qt::SkipEmptyParts, Qt::CaseSensitive);
}
} // namespace

void ENUM_INCLUDE_MACRO_GUARD(QString & out, model::project & p, model::enumeration & e)
{
   out += "_" + p.getName().toUpper() + "_" + flatKey(e.getKey().toUpper()) + "_H_";
}

void ENUM_NAMESPACE_BEGIN(QString & out, model::enumeration & e)
{
   const QStringList parts = namespaceParts(e);
   for (qsizetype i = 0; i < parts.size(); ++i)
   {
      if (i > 0) { out += "\n"; }
      out += "namespace " + parts.at(i) + " {";
   }
}

void ENUM_NAMESPACE_END(QString & out, model::enumeration & e)
{
   const QStringList parts = namespaceParts(e);
   for (qsizetype i = parts.size() - 1; i >= 0; --i)
   {
      if (i < (parts.size() - 1)) { out += "\n"; }
      out += "} // namespace " + parts.at(i);
   }
}

void ENUM_INHERIT_FROM(QString & out, model::enumeration & e)
{
   if (e.getUseQtEnum()) { out += "QObject"; return; }
   if (out.endsWith(QLatin1String(" : public "))) { out.chop(10); }
   else if (out.endsWith(QLatin1String(": public "))) { out.chop(9); }
   else if (out.endsWith(QLatin1String(", public "))) { out.chop(9); }
}

void ENUM_MACRO_Q_ENUMS(QString & out, model::enumeration & e)
{
   if (e.getUseQtEnum()) { out += "   Q_ENUMS(" + e.getEnumName() + ")"; }
}

void TYPEDEF_ENUM_ALL_VALUES(QString & out, model::enumeration & e)
{
   out += "   enum enum_" + e.getName() + "\n";
   out += "   {\n";
   const auto & values = e.getAllKeyValue();
   const qsizetype n = values.size();
   for (qsizetype i = 0; i < n; ++i)
   {
      out += "      " + values.getKeyByIndex(i) + " = " + values.getByIndex(i);
      if (i < (n - 1)) { out += ","; }
      out += "\n";
   }
   out += "   };\n";
}

} // namespace generators
} // namespace plugin
