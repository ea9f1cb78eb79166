#pragma once

#include <QList>
#include <QString>

#include "tavrelcore_export.h"
#include "zy/ZyInvalidValue.h"

namespace model {

class project;
class entity;
class enumeration;

// Rules for model text that exports paste into generated code as it is: such text must never be
// able to end the string literal, comment, number or body it is written in. Each rule returns
// the reason why a text breaks it, or an empty string.
class TAVRELCORE_EXPORT model_text_rules
{
public:
   // One problem of one field of one item.
   struct problem
   {
      QString sItem;    // "Entity 'shop::Order'" or "Entity 'shop::Order' : property 'x'"
      QString sField;   // "table name", "description", ...
      QString sValue;
      QString sReason;
      QString sPath;    // JSON path of the field: "entities[0].properties[2].description"

      // "<field> '<value>' <reason>", the value's control characters shown escaped.
      QString detail() const;
      // "<item> : <field> '<value>' <reason>".
      QString message() const;
   };

   // Longest text of a model (a name, a description, an accessor body...), in bytes of UTF-8:
   // far above what a model needs, far below what would exhaust memory when it is copied.
   static constexpr qsizetype k_iMaxTextBytes = 1024 * 1024;
   // Deepest nesting of parentheses and signs a number form may have: its reader recurses.
   static constexpr int k_iMaxNesting = 256;

   // A C++ type as written before a member's name: names qualified with "::", template
   // arguments in balanced "<>" (with numbers, and parentheses inside them), "*", "&",
   // cv-qualifiers and blanks; no other sign, no comment, no line break.
   static QString typeProblem(const QString & s);
   // Text between the double quotes of a C++ string literal: no quote, backslash, line break
   // or other control character.
   static QString literalProblem(const QString & s);
   // A table name, written into string literals and into the SQL the ORM runs: a literal's
   // text, and no ';', quote or SQL comment opener (spaces and '.' stay allowed).
   static QString sqlNameProblem(const QString & s);
   // Text after "//": no line break or other control character but tab, no final backslash,
   // no "??/".
   static QString lineCommentProblem(const QString & s);
   // Text inside "/* ... */": no "*/", no control character but tab and line breaks, no
   // backslash at a line's end and no "??/" (both join lines).
   static QString blockCommentProblem(const QString & s);
   // A forced SQL type, written into the column definition as it is: one to six words, at most
   // one list of unsigned integers in parentheses, words such as "WITH TIME ZONE" or "UNSIGNED"
   // after it and "[]" suffixes; no word that would start a constraint, a default or a clause.
   static QString sqlTypeProblem(const QString & s);
   // Text that is escaped where it is written: only a NUL is refused.
   static QString nulProblem(const QString & s);
   // Characters allowed where a number is expected: identifiers, digits, "::", ".", digit
   // separators, the operators + - * / % < > & | ^ ~, parentheses (balanced) and blanks, no
   // comment.
   static QString numberTextProblem(const QString & s);
   // A C++ numeric literal or a constant expression of identifiers (qualified with "::"),
   // numeric literals, the operators + - * / % << >> & | ^ (unary + - ~) and parentheses; with
   // bIntegerOnly the literals are integers.
   static QString numberProblem(const QString & s, bool bIntegerOnly);
   // An accessor body pasted between "{ " and " }": braces balanced outside string literals
   // and comments, no literal or comment left open, preprocessor conditionals closed.
   static QString bodyProblem(const QString & s);
   // A value pasted between "(" and ")": brackets balanced, no literal or comment left open.
   static QString expressionProblem(const QString & s);
   // A value shown in a message on one line: control characters escaped, long text cut.
   static QString shown(const QString & s);

   // Every text of the project that would break out of where the export writes it; with
   // bWithNumberForms also limits and enumeration values that are not numbers or constant
   // expressions (what the schema check adds to the import's rules).
   static QList<problem> projectProblems(const project & p, bool bWithNumberForms);
   // The parts of projectProblems, which lists them in this order: the project's own texts,
   // then each entity, then each enumeration (i: its index in the project's list).
   static QList<problem> projectTextProblems(const project & p);
   static QList<problem> entityProblems(const entity & e, qsizetype i, bool bWithNumberForms);
   static QList<problem> enumerationProblems(const enumeration & e, qsizetype i, bool bWithNumberForms);
   // The same as invalid values, each message naming the item and the field.
   static zy::ZyInvalidValueX checkProject(const project & p, bool bWithNumberForms);
   // The break-out problems of checkProject, one message a line (at most 100 and a count of
   // the others); empty when there is none.
   static QString problemText(const project & p);
};

} // namespace model
