#include "cpp_export/plugin/keyword_registry.h"

#include <vector>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/generators/generators.h"

namespace plugin {

using tools::template_parser;
namespace gen = generators;

namespace {

// Fragments that read the same for an entity, an enumeration and a project-level file ----------
template <typename Item> void classMacroExport(const cpp_builder &, QString & out, model::project & p, Item &) { out += p.getName().toUpper() + "_EXPORT"; }
template <typename Item> void registerClassHpp(const cpp_builder &, QString & out, model::project & p, Item &) { out += "ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_" + p.getName().toUpper(); }
template <typename Item> void registerClassCpp(const cpp_builder &, QString & out, model::project & p, Item &) { out += "ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_" + p.getName().toUpper(); }
template <typename Item> void fileCreatedBy(const cpp_builder &, QString & out, model::project &, Item &) { gen::COMMENT_FILE_CREATED_BY(out); }
template <typename Item> void projectFileCreatedBy(const cpp_builder &, QString & out, model::project &, Item &) { gen::COMMENT_PRO_FILE_CREATED_BY(out); }
template <typename Item> void projectName(const cpp_builder &, QString & out, model::project & p, Item &) { out += p.getName(); }
template <typename Item> void projectNameUpper(const cpp_builder &, QString & out, model::project & p, Item &) { out += p.getName().toUpper(); }
template <typename Item> void lumorPriFile(const cpp_builder & b, QString & out, model::project &, Item &) { out += b.getLumorPath(false, true) + "Lumor.pri"; }
template <typename Item> void lumorInclude(const cpp_builder & b, QString & out, model::project &, Item &) { out += b.getLumorPath(false, true) + "include"; }
template <typename Item> void lumorLib(const cpp_builder & b, QString & out, model::project &, Item &) { out += b.getLumorPath(false, true) + "lib"; }
template <typename Item> void lumorPath(const cpp_builder & b, QString & out, model::project &, Item &) { out += b.getLumorPath(true, false); }
template <typename Item> void priHeaders(const cpp_builder & b, QString & out, model::project & p, Item &) { gen::LIST_PRI_HEADERS_FILE(b, out, p); }
template <typename Item> void priSources(const cpp_builder & b, QString & out, model::project & p, Item &) { gen::LIST_PRI_SOURCES_FILE(b, out, p); }
template <typename Item> void projectAllInclude(const cpp_builder & b, QString & out, model::project & p, Item &) { gen::LIST_PROJECT_ALL_INCLUDE(b, out, p); }
template <typename Item> void cmakeHeaders(const cpp_builder & b, QString & out, model::project & p, Item &) { gen::LIST_CMAKE_HEADERS_FILE(b, out, p); }
template <typename Item> void cmakeSources(const cpp_builder & b, QString & out, model::project & p, Item &) { gen::LIST_CMAKE_SOURCES_FILE(b, out, p); }
template <typename Item> void includeAllCpp(const cpp_builder & b, QString & out, model::project & p, Item &) { gen::INCLUDE_ALL_CPP(b, out, p); }

// Fragments written from the name, key, version and description of an entity or an enumeration -
template <typename Item> void className(const cpp_builder &, QString & out, model::project &, Item & item) { out += item.getName(); }
template <typename Item> void fullClassName(const cpp_builder &, QString & out, model::project &, Item & item) { out += item.getKey(); }
template <typename Item> void flatClassName(const cpp_builder &, QString & out, model::project &, Item & item) { out += gen::flatKey(item.getKey()); }
template <typename Item> void destructor(const cpp_builder &, QString & out, model::project &, Item & item) { out += item.getName() + "::~" + item.getName() + "() { ; }"; }
template <typename Item> void classVersion(const cpp_builder &, QString & out, model::project &, Item & item) { out += QString::number(item.getVersion(), 10); }
template <typename Item> void classDescription(const cpp_builder &, QString & out, model::project &, Item & item)
{
   if (! item.getDescription().isEmpty()) { out += "/*!\n * \\brief " + item.getDescription() + "\n */"; }
}
template <typename Item> void itemHeader(const cpp_builder &, QString & out, model::project &, Item & item)
{
   out += "#include \"../../include/" + gen::flatKey(item.getKey()) + ".gen.h\"\n";
}
template <typename Item> void itemCustomHeader(const cpp_builder & b, QString & out, model::project &, Item & item)
{
   if (gen::isCustomFilesOn(b)) { out += "#include \"../custom/include/" + gen::flatKey(item.getKey()) + ".h\"\n"; }
}

// Fragments of an entity alone ----------------------------------------------------------------
void constructorWithPrimaryKey(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   model::property_ptr pId = e.getPropertyId(true);
   if (pId) { out += e.getName() + "(const " + pId->getTypeDesc(false, false, QString()) + " & id);"; }
}
void primaryKeyType(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   model::property_ptr pId = e.getPropertyId(true);
   if (pId) { out += pId->getTypeDesc(false, false, QString()); }
}
void registerAbstractClass(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   if (e.isAbstract()) { out += "ZY_REGISTER_ABSTRACT_CLASS(" + e.getKey() + ")"; }
}
void persistableHpp(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   if (! e.isAbstract()) { out += "ZY_PERSISTABLE_HPP(" + e.getKey() + ")"; }
}
void persistableCpp(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   if (! e.isAbstract()) { out += "ZY_PERSISTABLE_CPP(" + e.getName() + ")"; }
}

// Fragments of an enumeration alone -----------------------------------------------------------
void enumIncludeGuard(const cpp_builder &, QString & out, model::project & p, model::enumeration & e) { gen::ENUM_INCLUDE_MACRO_GUARD(out, p, e); }
void enumNamespaceBegin(const cpp_builder &, QString & out, model::project &, model::enumeration & e) { gen::ENUM_NAMESPACE_BEGIN(out, e); }
void enumNamespaceEnd(const cpp_builder &, QString & out, model::project &, model::enumeration & e) { gen::ENUM_NAMESPACE_END(out, e); }
void enumInheritFrom(const cpp_builder &, QString & out, model::project &, model::enumeration & e) { gen::ENUM_INHERIT_FROM(out, e); }
void enumAllValues(const cpp_builder &, QString & out, model::project &, model::enumeration & e) { gen::TYPEDEF_ENUM_ALL_VALUES(out, e); }
void enumQObject(const cpp_builder &, QString & out, model::project &, model::enumeration & e)
{
   if (e.getUseQtEnum()) { out += "   Q_OBJECT"; }
}
void enumQEnums(const cpp_builder &, QString & out, model::project &, model::enumeration & e) { gen::ENUM_MACRO_Q_ENUMS(out, e); }

} // namespace

// The name is the enumerator's without "action_": one macro spells both, so they cannot part.
#define TAVREL_KEYWORD(name) #name, template_parser::action_##name
// A fragment written alike for both kinds.
#define TAVREL_BOTH(fn) & fn<model::entity>, & fn<model::enumeration>

const QList<template_keyword> & templateKeywords()
{
   static const QList<template_keyword> lst = {
      { TAVREL_KEYWORD(CLASS_NAME), TAVREL_BOTH(className) },
      { TAVREL_KEYWORD(INCLUDE_MACRO_GUARD), & gen::INCLUDE_MACRO_GUARD, & enumIncludeGuard },
      { TAVREL_KEYWORD(NAMESPACE_BEGIN), & gen::NAMESPACE_BEGIN, & enumNamespaceBegin },
      { TAVREL_KEYWORD(NAMESPACE_END), & gen::NAMESPACE_END, & enumNamespaceEnd },
      { TAVREL_KEYWORD(CLASS_MACRO_EXPORT), TAVREL_BOTH(classMacroExport) },
      { TAVREL_KEYWORD(INHERIT_FROM), & gen::INHERIT_FROM, & enumInheritFrom },
      { TAVREL_KEYWORD(LIST_PROPERTIES_DEFINITION), & gen::LIST_PROPERTIES_DEFINITION, nullptr },
      { TAVREL_KEYWORD(LIST_PROPERTIES_GETTER), & gen::LIST_PROPERTIES_GETTER, nullptr },
      { TAVREL_KEYWORD(LIST_PROPERTIES_SETTER), & gen::LIST_PROPERTIES_SETTER, nullptr },
      { TAVREL_KEYWORD(LIST_INCLUDE_DEPENDENCIES), & gen::LIST_INCLUDE_DEPENDENCIES, nullptr },
      { TAVREL_KEYWORD(LIST_FORWARD_DECLARATION), & gen::LIST_FORWARD_DECLARATION, nullptr },
      { TAVREL_KEYWORD(FULL_CLASS_NAME), TAVREL_BOTH(fullClassName) },
      { TAVREL_KEYWORD(COMPLEX_CLASS_NAME_HELPER), TAVREL_BOTH(flatClassName) },
      { TAVREL_KEYWORD(IMPLEMENT_ZY_REGISTER_CLASS), & gen::IMPLEMENT_ZY_REGISTER_CLASS, nullptr },
      { TAVREL_KEYWORD(IMPLEMENT_CONSTRUCTOR), & gen::IMPLEMENT_CONSTRUCTOR, nullptr },
      { TAVREL_KEYWORD(IMPLEMENT_DESTRUCTOR), TAVREL_BOTH(destructor) },
      { TAVREL_KEYWORD(IMPLEMENT_LIST_PROPERTIES_GETTER), & gen::IMPLEMENT_LIST_PROPERTIES_GETTER, nullptr },
      { TAVREL_KEYWORD(IMPLEMENT_LIST_PROPERTIES_SETTER), & gen::IMPLEMENT_LIST_PROPERTIES_SETTER, nullptr },
      { TAVREL_KEYWORD(CLASS_VERSION), TAVREL_BOTH(classVersion) },
      { TAVREL_KEYWORD(ZY_REGISTER_BASE_CLASS), & gen::ZY_REGISTER_BASE_CLASS, nullptr },
      { TAVREL_KEYWORD(ZY_REGISTER_PRIMARY_KEY_TYPE), & gen::ZY_REGISTER_PRIMARY_KEY_TYPE, nullptr },
      { TAVREL_KEYWORD(CONSTRUCTOR_WITH_PRIMARY_KEY), & constructorWithPrimaryKey, nullptr },
      { TAVREL_KEYWORD(IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY), & gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY, nullptr },
      { TAVREL_KEYWORD(PRIMARY_KEY_TYPE), & primaryKeyType, nullptr },
      { TAVREL_KEYWORD(REGISTER_ABSTRACT_CLASS), & registerAbstractClass, nullptr },
      { TAVREL_KEYWORD(MACRO_ZY_REGISTER_CLASS_HPP), TAVREL_BOTH(registerClassHpp) },
      { TAVREL_KEYWORD(MACRO_ZY_REGISTER_CLASS_CPP), TAVREL_BOTH(registerClassCpp) },
      { TAVREL_KEYWORD(LIST_INCLUDE_DEPENDENCIES_CPP), & gen::LIST_INCLUDE_DEPENDENCIES_CPP, nullptr },
      { TAVREL_KEYWORD(COMMENT_FILE_CREATED_BY), TAVREL_BOTH(fileCreatedBy) },
      { TAVREL_KEYWORD(COMMENT_CLASS_DESCRIPTION), TAVREL_BOTH(classDescription) },
      { TAVREL_KEYWORD(PROJECT_NAME), TAVREL_BOTH(projectName) },
      { TAVREL_KEYWORD(PROJECT_NAME_UPPER), TAVREL_BOTH(projectNameUpper) },
      { TAVREL_KEYWORD(COMMENT_PRO_FILE_CREATED_BY), TAVREL_BOTH(projectFileCreatedBy) },
      { TAVREL_KEYWORD(LUMOR_LIBRARY_PRI_FILE_PATH), TAVREL_BOTH(lumorPriFile) },
      { TAVREL_KEYWORD(LUMOR_LIBRARY_INCLUDE_PATH), TAVREL_BOTH(lumorInclude) },
      { TAVREL_KEYWORD(LUMOR_LIBRARY_LIB_PATH), TAVREL_BOTH(lumorLib) },
      { TAVREL_KEYWORD(INCLUDE_FORWARD_DECLARATION), & gen::INCLUDE_FORWARD_DECLARATION, nullptr },
      { TAVREL_KEYWORD(LIST_PRI_HEADERS_FILE), TAVREL_BOTH(priHeaders) },
      { TAVREL_KEYWORD(LIST_PRI_SOURCES_FILE), TAVREL_BOTH(priSources) },
      { TAVREL_KEYWORD(TYPEDEF_ENUM_ALL_VALUES), nullptr, & enumAllValues },
      { TAVREL_KEYWORD(MACRO_Q_OBJECT), nullptr, & enumQObject },
      { TAVREL_KEYWORD(MACRO_Q_ENUMS), nullptr, & enumQEnums },
      { TAVREL_KEYWORD(LIST_PROJECT_ALL_INCLUDE), TAVREL_BOTH(projectAllInclude) },
      { TAVREL_KEYWORD(INHERIT_FROM_IX_PERSISTABLE), & gen::INHERIT_FROM_IX_PERSISTABLE, nullptr },
      { TAVREL_KEYWORD(MACRO_ZY_PERSISTABLE_HPP), & persistableHpp, nullptr },
      { TAVREL_KEYWORD(MACRO_ZY_PERSISTABLE_CPP), & persistableCpp, nullptr },
      { TAVREL_KEYWORD(INHERIT_FROM_ZY_PERSISTABLE), & gen::INHERIT_FROM_ZY_PERSISTABLE, nullptr },
      { TAVREL_KEYWORD(INCLUDE_ITEM_HEADER), TAVREL_BOTH(itemHeader) },
      { TAVREL_KEYWORD(INCLUDE_ITEM_HEADER_CUSTOM), TAVREL_BOTH(itemCustomHeader) },
      { TAVREL_KEYWORD(ZY_VALIDATOR_METHOD), & gen::ZY_VALIDATOR_METHOD, nullptr },
      { TAVREL_KEYWORD(LIST_STATIC_RELATIONS_KEYS), & gen::LIST_STATIC_RELATIONS_KEYS, nullptr },
      { TAVREL_KEYWORD(FORWARD_DECLARATION_FOR_TRIGGERS), & gen::FORWARD_DECLARATION_FOR_TRIGGERS, nullptr },
      { TAVREL_KEYWORD(LIST_TRIGGERS_METHODS), & gen::LIST_TRIGGERS_METHODS, nullptr },
      { TAVREL_KEYWORD(LIST_TRIGGERS_SPECIALIZATIONS), & gen::LIST_TRIGGERS_SPECIALIZATIONS, nullptr },
      { TAVREL_KEYWORD(FRIEND_FOR_TRIGGERS), & gen::FRIEND_FOR_TRIGGERS, nullptr },
      { TAVREL_KEYWORD(INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT), & gen::INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT, nullptr },
      { TAVREL_KEYWORD(LIST_RELATIONS_GETTER_WITH_FETCH), & gen::LIST_RELATIONS_GETTER_WITH_FETCH, nullptr },
      { TAVREL_KEYWORD(IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH), & gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH, nullptr },
      { TAVREL_KEYWORD(LIST_STATIC_COLUMNS_KEYS), & gen::LIST_STATIC_COLUMNS_KEYS, nullptr },
      { TAVREL_KEYWORD(STATIC_TABLE_KEY), & gen::STATIC_TABLE_KEY, nullptr },
      { TAVREL_KEYWORD(LIST_RELATIONS_TYPEDEF), & gen::LIST_RELATIONS_TYPEDEF, nullptr },
      { TAVREL_KEYWORD(TYPEDEF_CLASS_PTR), & gen::TYPEDEF_CLASS_PTR, nullptr },
      { TAVREL_KEYWORD(TYPEDEF_LIST_OF_CLASS), & gen::TYPEDEF_LIST_OF_CLASS, nullptr },
      { TAVREL_KEYWORD(TYPEDEF_LIST_OF_CLASS_PTR), & gen::TYPEDEF_LIST_OF_CLASS_PTR, nullptr },
      { TAVREL_KEYWORD(COMMENT_CMAKE_FILE_CREATED_BY), TAVREL_BOTH(projectFileCreatedBy) },
      { TAVREL_KEYWORD(LIST_CMAKE_HEADERS_FILE), TAVREL_BOTH(cmakeHeaders) },
      { TAVREL_KEYWORD(LIST_CMAKE_SOURCES_FILE), TAVREL_BOTH(cmakeSources) },
      { TAVREL_KEYWORD(LUMOR_LIBRARY_PATH), TAVREL_BOTH(lumorPath) },
      { TAVREL_KEYWORD(INCLUDE_ALL_CPP), TAVREL_BOTH(includeAllCpp) },
      { TAVREL_KEYWORD(PIMPL_DEFINITION), & gen::PIMPL_DEFINITION, nullptr },
      { TAVREL_KEYWORD(PIMPL_IMPLEMENTATION), & gen::PIMPL_IMPLEMENTATION, nullptr },
      { TAVREL_KEYWORD(PIMPL_COPYABLE_DEFINITION), & gen::PIMPL_COPYABLE_DEFINITION, nullptr },
      { TAVREL_KEYWORD(PIMPL_COPYABLE_IMPLEMENTATION), & gen::PIMPL_COPYABLE_IMPLEMENTATION, nullptr },
      { TAVREL_KEYWORD(PIMPL_MOVABLE_DEFINITION), & gen::PIMPL_MOVABLE_DEFINITION, nullptr },
      { TAVREL_KEYWORD(PIMPL_MOVABLE_IMPLEMENTATION), & gen::PIMPL_MOVABLE_IMPLEMENTATION, nullptr },
   };
   return lst;
}

#undef TAVREL_BOTH
#undef TAVREL_KEYWORD

const template_keyword * findTemplateKeyword(int code)
{
   // Codes are small and dense: a slot per code makes the lookup of every piece one index.
   static const std::vector<const template_keyword *> byCode = [] {
      std::vector<const template_keyword *> lstByCode;
      for (const template_keyword & k : templateKeywords())
      {
         const auto i = static_cast<std::size_t>(k.code);
         if (i >= lstByCode.size()) { lstByCode.resize(i + 1, nullptr); }
         if (! lstByCode[i]) { lstByCode[i] = & k; }
      }
      return lstByCode;
   }();
   if ((code < 0) || (static_cast<std::size_t>(code) >= byCode.size())) { return nullptr; }
   return byCode[static_cast<std::size_t>(code)];
}

} // namespace plugin
