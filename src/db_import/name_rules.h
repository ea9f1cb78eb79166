#pragma once

#include <QSet>
#include <QString>

namespace db_import {

// Database names to C++ identifiers. The rules are deterministic, so a refresh names a new
// table or column as the first import would have:
//   - a name is cut into words at every character that is not an ASCII letter or digit, after
//     accents are dropped ("unit price" -> unit, price; "café" -> cafe);
//   - pascal: "order_item" -> "OrderItem"; camel: "unit_price" -> "unitPrice"; keep: a name of
//     ASCII letters, digits and "_" stays as it is, any other has its words joined by "_";
//   - a leading digit gets "T" (classes) or "c" (properties) in front, no word at all gives
//     "Table" or "column", a C++ keyword gets "_" appended ("class" -> "class_").
class name_rules
{
public:
   enum enum_style { style_keep, style_pascal, style_camel };

   static QString className(const QString & sTable, enum_style eStyle);
   static QString propertyName(const QString & sColumn, enum_style eStyle);
   // A relation named from its column: "customer_id" -> "customer", "authorId" -> "author".
   static QString relationBase(const QString & sColumn);
   // The plural of a name's last word: "book" -> "books", "category" -> "categories", "box" -> "boxes".
   static QString plural(const QString & sName);
   // sName, or a name that no type of setTypes has: a member named like a class changes what the
   // class's name means inside the generated class ("Author" -> "author", "author" -> "author_").
   static QString avoiding(const QString & sName, const QSet<QString> & setTypes);
   // sName, or sName2, sName3... the first not in setTaken (which gets it).
   static QString unique(const QString & sName, QSet<QString> & setTaken);

   // sDigitPrefix before a leading digit, sEmpty when s has no word.
   static QString identifier(const QString & s, enum_style eStyle, const QString & sDigitPrefix, const QString & sEmpty);
};

} // namespace db_import
