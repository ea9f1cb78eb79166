#include "cpp_export/plugin/generators/generators.h"

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_builder.h"

namespace plugin {
namespace generators {

namespace {

// Flattened keys of the saved items of a collection, in order.
template <typename List>
QStringList savedKeys(const List & pList)
{
   QStringList lst;
   if (! pList) { return lst; }
   lst.reserve(pList->size());
   for (const auto & pItem : * pList) { if (pItem && (pItem->getId() != 0)) { lst.append(flatKey(pItem->getKey())); } }
   return lst;
}

template <typename List>
bool hasItems(const List & pList) { return (pList && ! pList->isEmpty()); }

// The walk shared by the qmake lists and the unity build: generated then custom lines of the
// entities, then of the enumerations, with blank separators that depend on the collections.
void walk(const cpp_builder & b, QString & out, model::project & p, const QString & g1, const QString & g2,
          const QString & c1, const QString & c2)
{
   const bool bCustom = isCustomFilesOn(b);
   const QStringList lstEntities = savedKeys(p.getListOfAllEntities());
   const QStringList lstEnums = savedKeys(p.getListOfAllEnums());
   const bool bHasEntities = hasItems(p.getListOfAllEntities());
   const bool bHasEnums = hasItems(p.getListOfAllEnums());
   for (const QString & f : lstEntities) { out += g1 + f + g2; }
   if (bHasEntities) { out += "\n"; }
   if (bCustom) { for (const QString & f : lstEntities) { out += c1 + f + c2; } }
   if (bHasEnums) { out += "\n"; }
   for (const QString & f : lstEnums) { out += g1 + f + g2; }
   if (bHasEnums) { out += "\n"; }
   if (bCustom) { for (const QString & f : lstEnums) { out += c1 + f + c2; } }
}

} // namespace

void LIST_PRI_HEADERS_FILE(const cpp_builder & b, QString & out, model::project & p)
{
   walk(b, out, p, "HEADERS += $$PWD/include/", ".gen.h\n", "HEADERS += $$PWD/custom/include/", ".h\n");
}

void LIST_PRI_SOURCES_FILE(const cpp_builder & b, QString & out, model::project & p)
{
   out += "contains(DEFINES, _ZY_UNITY_BUILD) {\n\n";
   out += "SOURCES += $$PWD/src/" + p.getName() + "_all.gen.cpp\n\n";
   out += "} else {\n\n";
   walk(b, out, p, "SOURCES += $$PWD/src/", ".gen.cpp\n", "SOURCES += $$PWD/custom/src/", ".cpp\n");
   out += "\n} # contains(DEFINES, _ZY_UNITY_BUILD)";
}

void INCLUDE_ALL_CPP(const cpp_builder & b, QString & out, model::project & p)
{
   walk(b, out, p, "#include \"../src/", ".gen.cpp\"\n", "#include \"../custom/src/", ".cpp\"\n");
   out += "\n#include \"../src/" + p.getName() + "_main.gen.cpp\"\n";
}

void LIST_PROJECT_ALL_INCLUDE(const cpp_builder &, QString & out, model::project & p)
{
   for (const QString & f : savedKeys(p.getListOfAllEntities())) { out += "#include \"../include/" + f + ".gen.h\"\n"; }
   for (const QString & f : savedKeys(p.getListOfAllEnums())) { out += "#include \"../include/" + f + ".gen.h\"\n"; }
}

void LIST_CMAKE_HEADERS_FILE(const cpp_builder & b, QString & out, model::project & p)
{
   const QString P = p.getName();
   const bool bCustom = isCustomFilesOn(b);
   const QStringList lstEntities = savedKeys(p.getListOfAllEntities());
   const QStringList lstEnums = savedKeys(p.getListOfAllEnums());
   out += "set(" + P + "_HEADERS\n";
   out += "    ./include/" + P + "_precompiled_header.gen.h\n";
   out += "    ./include/" + P + "_export.gen.h\n";
   for (const QStringList * pList : { & lstEntities, & lstEnums })
   {
      for (const QString & f : * pList) { out += "    ./include/" + f + ".gen.h\n"; }
      if (bCustom) { for (const QString & f : * pList) { out += "    ./custom/include/" + f + ".h\n"; } }
   }
   out += "   )";
}

void LIST_CMAKE_SOURCES_FILE(const cpp_builder & b, QString & out, model::project & p)
{
   const QString P = p.getName();
   const bool bCustom = isCustomFilesOn(b);
   const QStringList lstEntities = savedKeys(p.getListOfAllEntities());
   const QStringList lstEnums = savedKeys(p.getListOfAllEnums());
   out += "if(_ZY_UNITY_BUILD)\n\n";
   out += "   set(" + P + "_SRCS ./src/" + P + "_all.gen.cpp)\n";
   out += "\nelse() # _ZY_UNITY_BUILD\n\n";
   out += "   set(" + P + "_SRCS\n";
   for (const QStringList * pList : { & lstEntities, & lstEnums })
   {
      for (const QString & f : * pList) { out += "       ./src/" + f + ".gen.cpp\n"; }
      if (bCustom) { for (const QString & f : * pList) { out += "       ./custom/src/" + f + ".cpp\n"; } }
   }
   out += "       ./src/" + P + "_main.gen.cpp\n";
   out += "      )\n\nendif() # _ZY_UNITY_BUILD";
}

} // namespace generators
} // namespace plugin
