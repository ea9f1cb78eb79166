#include "cpp_export/plugin/cpp_builder.h"

#include "cpp_export/plugin/keyword_registry.h"

namespace plugin {

// A literal piece is copied; a keyword writes through its generator for the side at hand; a user
// keyword, a keyword without a generator on that side and an unknown code write nothing.

void cpp_builder::dispatch(QString & out, model::project & project, model::entity & entity, const QString & piece, int code)
{
   if (code == tools::template_parser::action_none) { out += piece; return; }
   const template_keyword * pKeyword = findTemplateKeyword(code);
   if (pKeyword && pKeyword->forEntity) { pKeyword->forEntity(* this, out, project, entity); }
}

void cpp_builder::dispatch(QString & out, model::project & project, model::enumeration & enumeration, const QString & piece, int code)
{
   if (code == tools::template_parser::action_none) { out += piece; return; }
   const template_keyword * pKeyword = findTemplateKeyword(code);
   if (pKeyword && pKeyword->forEnumeration) { pKeyword->forEnumeration(* this, out, project, enumeration); }
}

} // namespace plugin
