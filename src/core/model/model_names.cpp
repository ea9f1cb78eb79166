#include "model/model_names.h"

#include <QSet>
#include <QStringList>

namespace model {

namespace {

const QSet<QString> & cppKeywords()
{
   static const QSet<QString> s_set = {
      "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break",
      "case", "catch", "char", "char8_t", "char16_t", "char32_t", "class", "compl", "concept",
      "const", "consteval", "constexpr", "constinit", "const_cast", "continue", "co_await",
      "co_return", "co_yield", "decltype", "default", "delete", "do", "double", "dynamic_cast",
      "else", "enum", "explicit", "export", "extern", "false", "float", "for", "friend", "goto",
      "if", "inline", "int", "long", "mutable", "namespace", "new", "noexcept", "not", "not_eq",
      "nullptr", "operator", "or", "or_eq", "private", "protected", "public", "register",
      "reinterpret_cast", "requires", "return", "short", "signed", "sizeof", "static",
      "static_assert", "static_cast", "struct", "switch", "template", "this", "thread_local",
      "throw", "true", "try", "typedef", "typeid", "typename", "union", "unsigned", "using",
      "virtual", "void", "volatile", "wchar_t", "while", "xor", "xor_eq" };
   return s_set;
}

bool isIdentifierSyntax(const QString & s)
{
   if (s.isEmpty()) { return false; }
   for (qsizetype i = 0; i < s.size(); ++i)
   {
      const ushort c = s.at(i).unicode();
      const bool bLetter = (((c >= 'a') && (c <= 'z')) || ((c >= 'A') && (c <= 'Z')) || (c == '_'));
      const bool bDigit = ((c >= '0') && (c <= '9'));
      if (! bLetter && ! (bDigit && (i > 0))) { return false; }
   }
   return true;
}

} // namespace

bool model_names::isCppKeyword(const QString & s) { return cppKeywords().contains(s); }

bool model_names::isCppIdentifier(const QString & s) { return (isIdentifierSyntax(s) && ! isCppKeyword(s)); }

QString model_names::identifierProblem(const QString & s)
{
   if (s.isEmpty()) { return QString("is empty"); }
   if (isCppKeyword(s)) { return QString("is a C++ keyword"); }
   if (! isIdentifierSyntax(s)) { return QString("is not a valid C++ identifier"); }
   return QString();
}

QString model_names::namespacePartProblem(const QString & sNamespace)
{
   const QStringList lst = sNamespace.split("::");
   for (const QString & part : lst)
   {
      if (part.isEmpty()) { continue; }
      if (! isCppIdentifier(part)) { return QString("part '%1' %2").arg(part, identifierProblem(part)); }
   }
   return QString();
}

QString model_names::namespaceProblem(const QString & sNamespace)
{
   if (sNamespace.isEmpty()) { return QString(); }
   const QStringList lst = sNamespace.split("::");
   for (const QString & part : lst)
   {
      if (part.isEmpty()) { return QString("has an empty part"); }
   }
   return namespacePartProblem(sNamespace);
}

} // namespace model
