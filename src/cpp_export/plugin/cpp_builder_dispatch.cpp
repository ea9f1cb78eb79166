#include "cpp_export/plugin/cpp_builder.h"

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/generators/generators.h"

namespace plugin {

using tools::template_parser;
namespace gen = generators;

namespace {

// Fragments that read the same for entities, enumerations and project files; false when the
// code is not one of them.
bool dispatchCommon(const cpp_builder & b, QString & out, model::project & project, const QString & piece, int code)
{
   switch (code)
   {
      case template_parser::action_none: out += piece; return true;
      case template_parser::action_CLASS_MACRO_EXPORT: out += project.getName().toUpper() + "_EXPORT"; return true;
      case template_parser::action_MACRO_ZY_REGISTER_CLASS_HPP: out += "ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_" + project.getName().toUpper(); return true;
      case template_parser::action_MACRO_ZY_REGISTER_CLASS_CPP: out += "ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_" + project.getName().toUpper(); return true;
      case template_parser::action_COMMENT_FILE_CREATED_BY: gen::COMMENT_FILE_CREATED_BY(out); return true;
      case template_parser::action_PROJECT_NAME: out += project.getName(); return true;
      case template_parser::action_PROJECT_NAME_UPPER: out += project.getName().toUpper(); return true;
      case template_parser::action_COMMENT_PRO_FILE_CREATED_BY:
      case template_parser::action_COMMENT_CMAKE_FILE_CREATED_BY: gen::COMMENT_PRO_FILE_CREATED_BY(out); return true;
      case template_parser::action_LUMOR_LIBRARY_PRI_FILE_PATH: out += b.getLumorPath(false, true) + "Lumor.pri"; return true;
      case template_parser::action_LUMOR_LIBRARY_INCLUDE_PATH: out += b.getLumorPath(false, true) + "include"; return true;
      case template_parser::action_LUMOR_LIBRARY_LIB_PATH: out += b.getLumorPath(false, true) + "lib"; return true;
      case template_parser::action_LUMOR_LIBRARY_PATH: out += b.getLumorPath(true, false); return true;
      case template_parser::action_LIST_PRI_HEADERS_FILE: gen::LIST_PRI_HEADERS_FILE(b, out, project); return true;
      case template_parser::action_LIST_PRI_SOURCES_FILE: gen::LIST_PRI_SOURCES_FILE(b, out, project); return true;
      case template_parser::action_LIST_PROJECT_ALL_INCLUDE: gen::LIST_PROJECT_ALL_INCLUDE(b, out, project); return true;
      case template_parser::action_LIST_CMAKE_HEADERS_FILE: gen::LIST_CMAKE_HEADERS_FILE(b, out, project); return true;
      case template_parser::action_LIST_CMAKE_SOURCES_FILE: gen::LIST_CMAKE_SOURCES_FILE(b, out, project); return true;
      case template_parser::action_INCLUDE_ALL_CPP: gen::INCLUDE_ALL_CPP(b, out, project); return true;
      case template_parser::action_CUSTOM: return true;
      default: return false;
   }
}

// Fragments written the same way from the name, key, version and description of an entity
// or an enumeration; false when the code is not one of them.
template <typename Item>
bool dispatchItem(const cpp_builder & b, QString & out, const Item & item, int code)
{
   switch (code)
   {
      case template_parser::action_CLASS_NAME: out += item.getName(); return true;
      case template_parser::action_FULL_CLASS_NAME: out += item.getKey(); return true;
      case template_parser::action_COMPLEX_CLASS_NAME_HELPER: out += gen::flatKey(item.getKey()); return true;
      case template_parser::action_IMPLEMENT_DESTRUCTOR: out += item.getName() + "::~" + item.getName() + "() { ; }"; return true;
      case template_parser::action_CLASS_VERSION: out += QString::number(item.getVersion(), 10); return true;
      case template_parser::action_COMMENT_CLASS_DESCRIPTION:
         if (! item.getDescription().isEmpty()) { out += "/*!\n * \\brief " + item.getDescription() + "\n */"; }
         return true;
      case template_parser::action_INCLUDE_ITEM_HEADER: out += "#include \"../../include/" + gen::flatKey(item.getKey()) + ".gen.h\"\n"; return true;
      case template_parser::action_INCLUDE_ITEM_HEADER_CUSTOM:
         if (gen::isCustomFilesOn(b)) { out += "#include \"../custom/include/" + gen::flatKey(item.getKey()) + ".h\"\n"; }
         return true;
      default: return false;
   }
}

} // namespace

void cpp_builder::dispatch(QString & out, model::project & project, model::entity & entity, const QString & piece, int code)
{
   if (dispatchCommon(* this, out, project, piece, code)) { return; }
   if (dispatchItem(* this, out, entity, code)) { return; }
   const cpp_builder & b = (* this);
   switch (code)
   {
      case template_parser::action_INCLUDE_MACRO_GUARD: gen::INCLUDE_MACRO_GUARD(b, out, project, entity); break;
      case template_parser::action_NAMESPACE_BEGIN: gen::NAMESPACE_BEGIN(b, out, project, entity); break;
      case template_parser::action_NAMESPACE_END: gen::NAMESPACE_END(b, out, project, entity); break;
      case template_parser::action_INHERIT_FROM: gen::INHERIT_FROM(b, out, project, entity); break;
      case template_parser::action_LIST_PROPERTIES_DEFINITION: gen::LIST_PROPERTIES_DEFINITION(b, out, project, entity); break;
      case template_parser::action_LIST_PROPERTIES_GETTER: gen::LIST_PROPERTIES_GETTER(b, out, project, entity); break;
      case template_parser::action_LIST_PROPERTIES_SETTER: gen::LIST_PROPERTIES_SETTER(b, out, project, entity); break;
      case template_parser::action_LIST_INCLUDE_DEPENDENCIES: gen::LIST_INCLUDE_DEPENDENCIES(b, out, project, entity); break;
      case template_parser::action_LIST_FORWARD_DECLARATION: gen::LIST_FORWARD_DECLARATION(b, out, project, entity); break;
      case template_parser::action_IMPLEMENT_ZY_REGISTER_CLASS: gen::IMPLEMENT_ZY_REGISTER_CLASS(b, out, project, entity); break;
      case template_parser::action_IMPLEMENT_CONSTRUCTOR: gen::IMPLEMENT_CONSTRUCTOR(b, out, project, entity); break;
      case template_parser::action_IMPLEMENT_LIST_PROPERTIES_GETTER: gen::IMPLEMENT_LIST_PROPERTIES_GETTER(b, out, project, entity); break;
      case template_parser::action_IMPLEMENT_LIST_PROPERTIES_SETTER: gen::IMPLEMENT_LIST_PROPERTIES_SETTER(b, out, project, entity); break;
      case template_parser::action_ZY_REGISTER_BASE_CLASS: gen::ZY_REGISTER_BASE_CLASS(b, out, project, entity); break;
      case template_parser::action_ZY_REGISTER_PRIMARY_KEY_TYPE: gen::ZY_REGISTER_PRIMARY_KEY_TYPE(b, out, project, entity); break;
      case template_parser::action_CONSTRUCTOR_WITH_PRIMARY_KEY:
      {
         model::property_ptr pId = entity.getPropertyId(true);
         if (pId) { out += entity.getName() + "(const " + pId->getTypeDesc(false, false, QString()) + " & id);"; }
         break;
      }
      case template_parser::action_IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY: gen::IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY(b, out, project, entity); break;
      case template_parser::action_PRIMARY_KEY_TYPE:
      {
         model::property_ptr pId = entity.getPropertyId(true);
         if (pId) { out += pId->getTypeDesc(false, false, QString()); }
         break;
      }
      case template_parser::action_REGISTER_ABSTRACT_CLASS:
         if (entity.isAbstract()) { out += "ZY_REGISTER_ABSTRACT_CLASS(" + entity.getKey() + ")"; }
         break;
      case template_parser::action_LIST_INCLUDE_DEPENDENCIES_CPP: gen::LIST_INCLUDE_DEPENDENCIES_CPP(b, out, project, entity); break;
      case template_parser::action_INCLUDE_FORWARD_DECLARATION: gen::INCLUDE_FORWARD_DECLARATION(b, out, project, entity); break;
      case template_parser::action_INHERIT_FROM_IX_PERSISTABLE: gen::INHERIT_FROM_IX_PERSISTABLE(b, out, project, entity); break;
      case template_parser::action_MACRO_ZY_PERSISTABLE_HPP:
         if (! entity.isAbstract()) { out += "ZY_PERSISTABLE_HPP(" + entity.getKey() + ")"; }
         break;
      case template_parser::action_MACRO_ZY_PERSISTABLE_CPP:
         if (! entity.isAbstract()) { out += "ZY_PERSISTABLE_CPP(" + entity.getName() + ")"; }
         break;
      case template_parser::action_INHERIT_FROM_ZY_PERSISTABLE: gen::INHERIT_FROM_ZY_PERSISTABLE(b, out, project, entity); break;
      case template_parser::action_ZY_VALIDATOR_METHOD: gen::ZY_VALIDATOR_METHOD(b, out, project, entity); break;
      case template_parser::action_LIST_STATIC_RELATIONS_KEYS: gen::LIST_STATIC_RELATIONS_KEYS(b, out, project, entity); break;
      case template_parser::action_FORWARD_DECLARATION_FOR_TRIGGERS: gen::FORWARD_DECLARATION_FOR_TRIGGERS(b, out, project, entity); break;
      case template_parser::action_LIST_TRIGGERS_METHODS: gen::LIST_TRIGGERS_METHODS(b, out, project, entity); break;
      case template_parser::action_LIST_TRIGGERS_SPECIALIZATIONS: gen::LIST_TRIGGERS_SPECIALIZATIONS(b, out, project, entity); break;
      case template_parser::action_FRIEND_FOR_TRIGGERS: gen::FRIEND_FOR_TRIGGERS(b, out, project, entity); break;
      case template_parser::action_INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT: gen::INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT(b, out, project, entity); break;
      case template_parser::action_LIST_RELATIONS_GETTER_WITH_FETCH: gen::LIST_RELATIONS_GETTER_WITH_FETCH(b, out, project, entity); break;
      case template_parser::action_IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH: gen::IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH(b, out, project, entity); break;
      case template_parser::action_LIST_STATIC_COLUMNS_KEYS: gen::LIST_STATIC_COLUMNS_KEYS(b, out, project, entity); break;
      case template_parser::action_STATIC_TABLE_KEY: gen::STATIC_TABLE_KEY(b, out, project, entity); break;
      case template_parser::action_LIST_RELATIONS_TYPEDEF: gen::LIST_RELATIONS_TYPEDEF(b, out, project, entity); break;
      case template_parser::action_TYPEDEF_CLASS_PTR: gen::TYPEDEF_CLASS_PTR(b, out, project, entity); break;
      case template_parser::action_TYPEDEF_LIST_OF_CLASS: gen::TYPEDEF_LIST_OF_CLASS(b, out, project, entity); break;
      case template_parser::action_TYPEDEF_LIST_OF_CLASS_PTR: gen::TYPEDEF_LIST_OF_CLASS_PTR(b, out, project, entity); break;
      case template_parser::action_PIMPL_DEFINITION: gen::PIMPL_DEFINITION(b, out, project, entity); break;
      case template_parser::action_PIMPL_IMPLEMENTATION: gen::PIMPL_IMPLEMENTATION(b, out, project, entity); break;
      case template_parser::action_PIMPL_COPYABLE_DEFINITION: gen::PIMPL_COPYABLE_DEFINITION(b, out, project, entity); break;
      case template_parser::action_PIMPL_COPYABLE_IMPLEMENTATION: gen::PIMPL_COPYABLE_IMPLEMENTATION(b, out, project, entity); break;
      case template_parser::action_PIMPL_MOVABLE_DEFINITION: gen::PIMPL_MOVABLE_DEFINITION(b, out, project, entity); break;
      case template_parser::action_PIMPL_MOVABLE_IMPLEMENTATION: gen::PIMPL_MOVABLE_IMPLEMENTATION(b, out, project, entity); break;
      default: break;
   }
}

void cpp_builder::dispatch(QString & out, model::project & project, model::enumeration & enumeration, const QString & piece, int code)
{
   if (dispatchCommon(* this, out, project, piece, code)) { return; }
   if (dispatchItem(* this, out, enumeration, code)) { return; }
   switch (code)
   {
      case template_parser::action_INCLUDE_MACRO_GUARD: gen::ENUM_INCLUDE_MACRO_GUARD(out, project, enumeration); break;
      case template_parser::action_NAMESPACE_BEGIN: gen::ENUM_NAMESPACE_BEGIN(out, enumeration); break;
      case template_parser::action_NAMESPACE_END: gen::ENUM_NAMESPACE_END(out, enumeration); break;
      case template_parser::action_INHERIT_FROM: gen::ENUM_INHERIT_FROM(out, enumeration); break;
      case template_parser::action_TYPEDEF_ENUM_ALL_VALUES: gen::TYPEDEF_ENUM_ALL_VALUES(out, enumeration); break;
      case template_parser::action_MACRO_Q_OBJECT:
         if (enumeration.getUseQtEnum()) { out += "   Q_OBJECT"; }
         break;
      case template_parser::action_MACRO_Q_ENUMS: gen::ENUM_MACRO_Q_ENUMS(out, enumeration); break;
      default: break;
   }
}

} // namespace plugin
