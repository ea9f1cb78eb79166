#pragma once

#include <QString>

#include "tavrelcore_export.h"

namespace model {

// Name rules shared by the schema check and the JSON import: the names of the model end up as
// C++ class, member and enumerator names, so they must be plain identifiers.
class TAVRELCORE_EXPORT model_names
{
public:
   // ASCII letter or underscore, then letters, digits or underscores; not a C++ keyword.
   static bool isCppIdentifier(const QString & s);
   static bool isCppKeyword(const QString & s);
   // Empty when the namespace is usable in generated code ("" is fine), else the reason.
   // Empty parts ("a::::b", "::a") and parts that are not identifiers are problems.
   static QString namespaceProblem(const QString & sNamespace);
   // Only the non-empty parts must be identifiers (what the import accepts).
   static QString namespacePartProblem(const QString & sNamespace);
   // Why a name is not an identifier ("is empty", "is a C++ keyword", ...).
   static QString identifierProblem(const QString & s);
};

} // namespace model
