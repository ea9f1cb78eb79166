#pragma once

#include <QList>
#include <QString>

#include "model/model_fwd.h"
#include "cpp_export/tools/template_parser.h"

namespace plugin {

class cpp_builder;

// One built-in keyword of the templates: the name written between "@@" markers, its action code
// and what it appends for an entity (also used for project-level files) and for an enumeration.
// A null generator appends nothing on that side.
struct template_keyword
{
   typedef void (* entity_generator)(const cpp_builder & b, QString & out, model::project & p, model::entity & e);
   typedef void (* enumeration_generator)(const cpp_builder & b, QString & out, model::project & p, model::enumeration & e);

   const char * name;                          // "CLASS_NAME"
   tools::template_parser::enum_action code;   // action_CLASS_NAME, the value templates and scripts know
   entity_generator forEntity;
   enumeration_generator forEnumeration;
};

// Every built-in keyword, in the order a piece is compared with them. The literal piece (0) and
// the "CUSTOM_" prefix (62) are not keywords of this table: the parser and the dispatch handle
// them themselves.
const QList<template_keyword> & templateKeywords();

// The keyword of a code; null for a literal piece, a user keyword or an unknown code.
const template_keyword * findTemplateKeyword(int code);

} // namespace plugin
