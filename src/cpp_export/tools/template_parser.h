#pragma once

#include <QFile>
#include <QList>
#include <QPair>
#include <QString>

namespace tools {

/*
 * A template is plain text in which keywords are written between two "@@" markers,
 * e.g. "class @@CLASS_MACRO_EXPORT@@ @@CLASS_NAME@@". The parser cuts it at every marker
 * into two parallel lists: the pieces of text and, for each piece, an action code.
 *
 * A piece is a keyword exactly when its whole text equals a keyword name (case-sensitive,
 * no trimming), wherever it stands; otherwise it is a user keyword (code action_CUSTOM)
 * when it starts with "CUSTOM_", else literal text (code action_none). Keyword pieces keep
 * their name in the list of text so that consumers can pass it on (the user script gets it).
 *
 * Naming of enum_action: action_none is the literal piece (0), action_CUSTOM is any piece
 * starting with "CUSTOM_" (62), and every built-in keyword is "action_" + its exact name,
 * e.g. action_CLASS_NAME = 1, action_PIMPL_MOVABLE_IMPLEMENTATION = 76. The values are
 * stable: user templates and scripts rely on them.
 *
 * A parser parses once in its constructor and is read-only afterwards, so it can be
 * shared (std::shared_ptr) and read from any thread.
 */
class template_parser
{

public:

   enum enum_action
   {
      action_none = 0,
      action_CLASS_NAME = 1,
      action_INCLUDE_MACRO_GUARD = 2,
      action_NAMESPACE_BEGIN = 3,
      action_NAMESPACE_END = 4,
      action_CLASS_MACRO_EXPORT = 5,
      action_INHERIT_FROM = 6,
      action_LIST_PROPERTIES_DEFINITION = 7,
      action_LIST_PROPERTIES_GETTER = 8,
      action_LIST_PROPERTIES_SETTER = 9,
      action_LIST_INCLUDE_DEPENDENCIES = 10,
      action_LIST_FORWARD_DECLARATION = 11,
      action_FULL_CLASS_NAME = 12,
      action_COMPLEX_CLASS_NAME_HELPER = 13,
      action_IMPLEMENT_ZY_REGISTER_CLASS = 14,
      action_IMPLEMENT_CONSTRUCTOR = 15,
      action_IMPLEMENT_DESTRUCTOR = 16,
      action_IMPLEMENT_LIST_PROPERTIES_GETTER = 17,
      action_IMPLEMENT_LIST_PROPERTIES_SETTER = 18,
      action_CLASS_VERSION = 19,
      action_ZY_REGISTER_BASE_CLASS = 20,
      action_ZY_REGISTER_PRIMARY_KEY_TYPE = 21,
      action_CONSTRUCTOR_WITH_PRIMARY_KEY = 22,
      action_IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY = 23,
      action_PRIMARY_KEY_TYPE = 24,
      action_REGISTER_ABSTRACT_CLASS = 25,
      action_MACRO_ZY_REGISTER_CLASS_HPP = 26,
      action_MACRO_ZY_REGISTER_CLASS_CPP = 27,
      action_LIST_INCLUDE_DEPENDENCIES_CPP = 28,
      action_COMMENT_FILE_CREATED_BY = 29,
      action_COMMENT_CLASS_DESCRIPTION = 30,
      action_PROJECT_NAME = 31,
      action_PROJECT_NAME_UPPER = 32,
      action_COMMENT_PRO_FILE_CREATED_BY = 33,
      action_LUMOR_LIBRARY_PRI_FILE_PATH = 34,
      action_LUMOR_LIBRARY_INCLUDE_PATH = 35,
      action_LUMOR_LIBRARY_LIB_PATH = 36,
      action_INCLUDE_FORWARD_DECLARATION = 37,
      action_LIST_PRI_HEADERS_FILE = 38,
      action_LIST_PRI_SOURCES_FILE = 39,
      action_TYPEDEF_ENUM_ALL_VALUES = 40,
      action_MACRO_Q_OBJECT = 41,
      action_MACRO_Q_ENUMS = 42,
      action_LIST_PROJECT_ALL_INCLUDE = 43,
      action_INHERIT_FROM_IX_PERSISTABLE = 44,
      action_MACRO_ZY_PERSISTABLE_HPP = 45,
      action_MACRO_ZY_PERSISTABLE_CPP = 46,
      action_INHERIT_FROM_ZY_PERSISTABLE = 47,
      action_INCLUDE_ITEM_HEADER = 48,
      action_INCLUDE_ITEM_HEADER_CUSTOM = 49,
      action_ZY_VALIDATOR_METHOD = 50,
      action_LIST_STATIC_RELATIONS_KEYS = 51,
      action_FORWARD_DECLARATION_FOR_TRIGGERS = 52,
      action_LIST_TRIGGERS_METHODS = 53,
      action_LIST_TRIGGERS_SPECIALIZATIONS = 54,
      action_FRIEND_FOR_TRIGGERS = 55,
      action_INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT = 56,
      action_LIST_RELATIONS_GETTER_WITH_FETCH = 57,
      action_IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH = 58,
      action_LIST_STATIC_COLUMNS_KEYS = 59,
      action_STATIC_TABLE_KEY = 60,
      action_LIST_RELATIONS_TYPEDEF = 61,
      action_CUSTOM = 62,
      action_TYPEDEF_CLASS_PTR = 63,
      action_TYPEDEF_LIST_OF_CLASS = 64,
      action_TYPEDEF_LIST_OF_CLASS_PTR = 65,
      action_COMMENT_CMAKE_FILE_CREATED_BY = 66,
      action_LIST_CMAKE_HEADERS_FILE = 67,
      action_LIST_CMAKE_SOURCES_FILE = 68,
      action_LUMOR_LIBRARY_PATH = 69,
      action_INCLUDE_ALL_CPP = 70,
      action_PIMPL_DEFINITION = 71,
      action_PIMPL_IMPLEMENTATION = 72,
      action_PIMPL_COPYABLE_DEFINITION = 73,
      action_PIMPL_COPYABLE_IMPLEMENTATION = 74,
      action_PIMPL_MOVABLE_DEFINITION = 75,
      action_PIMPL_MOVABLE_IMPLEMENTATION = 76
   };

protected:

   QString m_sInputText;               // Template as last parsed, CR LF turned into LF
   QString m_sSeparator;               // Always "@@"
   QList<QString> m_lstText;           // Pieces between markers, in order
   QList<enum_action> m_lstAction;     // One code per piece, same order as m_lstText

public:

   template_parser(QFile & file);
   template_parser(const QString & text);
   virtual ~template_parser();

   QString getInputText() const { return m_sInputText; }
   long getInputTextSize() const { return static_cast<long>(m_sInputText.size()); }
   QList<QString> getListOfText() const { return m_lstText; }
   QList<enum_action> getListOfAction() const { return m_lstAction; }

   // Same lists without a copy, for the expansion loop
   const QList<QString> & textList() const { return m_lstText; }
   const QList<enum_action> & actionList() const { return m_lstAction; }
   const QString & getSeparator() const { return m_sSeparator; }

   // Names and codes of the built-in keywords in comparison order, as the keyword registry
   // (plugin::templateKeywords) holds them; the "CUSTOM_" prefix is not in it
   static const QList<QPair<QString, enum_action>> & keywordTable();
   // Name of a built-in keyword, "CUSTOM_" for action_CUSTOM, empty for action_none or an unknown value
   static QString keywordName(enum_action action);
   // Code of one piece, as the parser gives it
   static enum_action classify(const QString & piece);
   static QString customPrefix() { return QStringLiteral("CUSTOM_"); }

protected:

   void parseInput(QFile & file);
   void parseInput(const QString & text);

};

} // namespace tools
