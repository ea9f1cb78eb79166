#pragma once

#include <QDateTime>
#include <QString>

#include <functional>

#include "model/model_fwd.h"

namespace plugin {

class cpp_builder;
class cpp_export;

// Keyword generators of the builder. Each one appends the text of one keyword for one item to
// the output built so far; some look at or shorten that output. None of them fails: a
// generator whose condition is not met appends nothing.
namespace generators {

// Shared rules ---------------------------------------------------------------------------

// The key with every "::" replaced by "_" (file names, guards, macro names).
QString flatKey(const QString & key);
// The parent as the project knows it now (looked up again by id); null without one.
model::entity_ptr resolvedParent(model::project & project, const model::entity & entity);
// A parent with a non-zero id, else null: the parent that gives a base class.
model::entity_ptr savedParent(model::project & project, const model::entity & entity);
bool isPImpl(const cpp_builder & builder);
bool isCustomFilesOn(const cpp_builder & builder);
// "m_" + name, reached through the private implementation when PIMPL is on.
QString memberName(const cpp_builder & builder, const QString & propertyName);
// Namespace opening and closing lines of an entity namespace (empty parts kept).
QString namespaceBegin(const QString & ns);
QString namespaceEnd(const QString & ns);
// Body of a static name function: "{ Q_UNUSED(key); ... }" when the SQL name is the C++ name,
// else one that gives either.
void appendNameFunctionBody(QString & out, const QString & name, const QString & sqlName);
// Initialisers of a default constructor; bFirst tells whether the next separator is " : ".
void appendMemberInitialisers(QString & out, const model::entity & entity, bool & bFirst, const model::property_ptr & pIdProperty);

// Class skeleton and file comments --------------------------------------------------------
void INCLUDE_MACRO_GUARD(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void NAMESPACE_BEGIN(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void NAMESPACE_END(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void INHERIT_FROM(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void INHERIT_FROM_IX_PERSISTABLE(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void INHERIT_FROM_ZY_PERSISTABLE(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void ZY_REGISTER_BASE_CLASS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void ZY_REGISTER_PRIMARY_KEY_TYPE(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_INCLUDE_DEPENDENCIES(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_INCLUDE_DEPENDENCIES_CPP(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void INCLUDE_FORWARD_DECLARATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
// Banners: C++ files, and qmake / CMake files. The date is the local time of the expansion;
// tests may replace the clock (an empty function restores the real one).
void setBannerClock(const std::function<QDateTime()> & clock);
void COMMENT_FILE_CREATED_BY(QString & out);
void COMMENT_PRO_FILE_CREATED_BY(QString & out);

// Properties: members, getters and setters ------------------------------------------------
void LIST_PROPERTIES_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_PROPERTIES_GETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_PROPERTIES_SETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void IMPLEMENT_LIST_PROPERTIES_GETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void IMPLEMENT_LIST_PROPERTIES_SETTER(const cpp_builder & b, QString & out, model::project & p, model::entity & e);

// Relations: typedefs, getters with fetch, relation keys ----------------------------------
void LIST_RELATIONS_TYPEDEF(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_RELATIONS_GETTER_WITH_FETCH(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_STATIC_RELATIONS_KEYS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);

// Static keys, class typedefs, triggers and validators ------------------------------------
void STATIC_TABLE_KEY(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_STATIC_COLUMNS_KEYS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void TYPEDEF_CLASS_PTR(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void TYPEDEF_LIST_OF_CLASS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void TYPEDEF_LIST_OF_CLASS_PTR(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void ZY_VALIDATOR_METHOD(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_TRIGGERS_METHODS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void FRIEND_FOR_TRIGGERS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void FORWARD_DECLARATION_FOR_TRIGGERS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_TRIGGERS_SPECIALIZATIONS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);

// ORM registration body ----------------------------------------------------------------
void IMPLEMENT_ZY_REGISTER_CLASS(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void IMPLEMENT_CONSTRUCTOR(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void LIST_FORWARD_DECLARATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);

// PIMPL idiom -----------------------------------------------------------------------------
void PIMPL_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void PIMPL_IMPLEMENTATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void PIMPL_COPYABLE_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void PIMPL_COPYABLE_IMPLEMENTATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void PIMPL_MOVABLE_DEFINITION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
void PIMPL_MOVABLE_IMPLEMENTATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e);

// Enumerations ---------------------------------------------------------------------------
void ENUM_INCLUDE_MACRO_GUARD(QString & out, model::project & p, model::enumeration & e);
void ENUM_NAMESPACE_BEGIN(QString & out, model::enumeration & e);
void ENUM_NAMESPACE_END(QString & out, model::enumeration & e);
void ENUM_INHERIT_FROM(QString & out, model::enumeration & e);
void ENUM_MACRO_Q_ENUMS(QString & out, model::enumeration & e);
void TYPEDEF_ENUM_ALL_VALUES(QString & out, model::enumeration & e);

// Project file lists ---------------------------------------------------------------------
void LIST_PRI_HEADERS_FILE(const cpp_builder & b, QString & out, model::project & p);
void LIST_PRI_SOURCES_FILE(const cpp_builder & b, QString & out, model::project & p);
void LIST_CMAKE_HEADERS_FILE(const cpp_builder & b, QString & out, model::project & p);
void LIST_CMAKE_SOURCES_FILE(const cpp_builder & b, QString & out, model::project & p);
void INCLUDE_ALL_CPP(const cpp_builder & b, QString & out, model::project & p);
void LIST_PROJECT_ALL_INCLUDE(const cpp_builder & b, QString & out, model::project & p);

} // namespace generators
} // namespace plugin
