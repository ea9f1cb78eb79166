#include "cpp_export/tools/template_parser.h"

#include <QHash>

#include "cpp_export/tools/text_file.h"

namespace tools {

namespace {

// Keyword names are the enumerators' names without "action_", so one macro keeps both in step.
#define TAVREL_KEYWORD(name) qMakePair(QStringLiteral(#name), template_parser::action_##name)

const QList<QPair<QString, template_parser::enum_action>> & buildKeywordTable()
{
   static const QList<QPair<QString, template_parser::enum_action>> table = {
      TAVREL_KEYWORD(CLASS_NAME),
      TAVREL_KEYWORD(INCLUDE_MACRO_GUARD),
      TAVREL_KEYWORD(NAMESPACE_BEGIN),
      TAVREL_KEYWORD(NAMESPACE_END),
      TAVREL_KEYWORD(CLASS_MACRO_EXPORT),
      TAVREL_KEYWORD(INHERIT_FROM),
      TAVREL_KEYWORD(LIST_PROPERTIES_DEFINITION),
      TAVREL_KEYWORD(LIST_PROPERTIES_GETTER),
      TAVREL_KEYWORD(LIST_PROPERTIES_SETTER),
      TAVREL_KEYWORD(LIST_INCLUDE_DEPENDENCIES),
      TAVREL_KEYWORD(LIST_FORWARD_DECLARATION),
      TAVREL_KEYWORD(FULL_CLASS_NAME),
      TAVREL_KEYWORD(COMPLEX_CLASS_NAME_HELPER),
      TAVREL_KEYWORD(IMPLEMENT_ZY_REGISTER_CLASS),
      TAVREL_KEYWORD(IMPLEMENT_CONSTRUCTOR),
      TAVREL_KEYWORD(IMPLEMENT_DESTRUCTOR),
      TAVREL_KEYWORD(IMPLEMENT_LIST_PROPERTIES_GETTER),
      TAVREL_KEYWORD(IMPLEMENT_LIST_PROPERTIES_SETTER),
      TAVREL_KEYWORD(CLASS_VERSION),
      TAVREL_KEYWORD(ZY_REGISTER_BASE_CLASS),
      TAVREL_KEYWORD(ZY_REGISTER_PRIMARY_KEY_TYPE),
      TAVREL_KEYWORD(CONSTRUCTOR_WITH_PRIMARY_KEY),
      TAVREL_KEYWORD(IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY),
      TAVREL_KEYWORD(PRIMARY_KEY_TYPE),
      TAVREL_KEYWORD(REGISTER_ABSTRACT_CLASS),
      TAVREL_KEYWORD(MACRO_ZY_REGISTER_CLASS_HPP),
      TAVREL_KEYWORD(MACRO_ZY_REGISTER_CLASS_CPP),
      TAVREL_KEYWORD(LIST_INCLUDE_DEPENDENCIES_CPP),
      TAVREL_KEYWORD(COMMENT_FILE_CREATED_BY),
      TAVREL_KEYWORD(COMMENT_CLASS_DESCRIPTION),
      TAVREL_KEYWORD(PROJECT_NAME),
      TAVREL_KEYWORD(PROJECT_NAME_UPPER),
      TAVREL_KEYWORD(COMMENT_PRO_FILE_CREATED_BY),
      TAVREL_KEYWORD(LUMOR_LIBRARY_PRI_FILE_PATH),
      TAVREL_KEYWORD(LUMOR_LIBRARY_INCLUDE_PATH),
      TAVREL_KEYWORD(LUMOR_LIBRARY_LIB_PATH),
      TAVREL_KEYWORD(INCLUDE_FORWARD_DECLARATION),
      TAVREL_KEYWORD(LIST_PRI_HEADERS_FILE),
      TAVREL_KEYWORD(LIST_PRI_SOURCES_FILE),
      TAVREL_KEYWORD(TYPEDEF_ENUM_ALL_VALUES),
      TAVREL_KEYWORD(MACRO_Q_OBJECT),
      TAVREL_KEYWORD(MACRO_Q_ENUMS),
      TAVREL_KEYWORD(LIST_PROJECT_ALL_INCLUDE),
      TAVREL_KEYWORD(INHERIT_FROM_IX_PERSISTABLE),
      TAVREL_KEYWORD(MACRO_ZY_PERSISTABLE_HPP),
      TAVREL_KEYWORD(MACRO_ZY_PERSISTABLE_CPP),
      TAVREL_KEYWORD(INHERIT_FROM_ZY_PERSISTABLE),
      TAVREL_KEYWORD(INCLUDE_ITEM_HEADER),
      TAVREL_KEYWORD(INCLUDE_ITEM_HEADER_CUSTOM),
      TAVREL_KEYWORD(ZY_VALIDATOR_METHOD),
      TAVREL_KEYWORD(LIST_STATIC_RELATIONS_KEYS),
      TAVREL_KEYWORD(FORWARD_DECLARATION_FOR_TRIGGERS),
      TAVREL_KEYWORD(LIST_TRIGGERS_METHODS),
      TAVREL_KEYWORD(LIST_TRIGGERS_SPECIALIZATIONS),
      TAVREL_KEYWORD(FRIEND_FOR_TRIGGERS),
      TAVREL_KEYWORD(INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT),
      TAVREL_KEYWORD(LIST_RELATIONS_GETTER_WITH_FETCH),
      TAVREL_KEYWORD(IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH),
      TAVREL_KEYWORD(LIST_STATIC_COLUMNS_KEYS),
      TAVREL_KEYWORD(STATIC_TABLE_KEY),
      TAVREL_KEYWORD(LIST_RELATIONS_TYPEDEF),
      TAVREL_KEYWORD(TYPEDEF_CLASS_PTR),
      TAVREL_KEYWORD(TYPEDEF_LIST_OF_CLASS),
      TAVREL_KEYWORD(TYPEDEF_LIST_OF_CLASS_PTR),
      TAVREL_KEYWORD(COMMENT_CMAKE_FILE_CREATED_BY),
      TAVREL_KEYWORD(LIST_CMAKE_HEADERS_FILE),
      TAVREL_KEYWORD(LIST_CMAKE_SOURCES_FILE),
      TAVREL_KEYWORD(LUMOR_LIBRARY_PATH),
      TAVREL_KEYWORD(INCLUDE_ALL_CPP),
      TAVREL_KEYWORD(PIMPL_DEFINITION),
      TAVREL_KEYWORD(PIMPL_IMPLEMENTATION),
      TAVREL_KEYWORD(PIMPL_COPYABLE_DEFINITION),
      TAVREL_KEYWORD(PIMPL_COPYABLE_IMPLEMENTATION),
      TAVREL_KEYWORD(PIMPL_MOVABLE_DEFINITION),
      TAVREL_KEYWORD(PIMPL_MOVABLE_IMPLEMENTATION),
   };
   return table;
}

#undef TAVREL_KEYWORD

// Names are unique, so a hash gives the same answer as comparing in table order.
const QHash<QString, template_parser::enum_action> & keywordIndex()
{
   static const QHash<QString, template_parser::enum_action> index = [] {
      QHash<QString, template_parser::enum_action> result;
      const auto & table = buildKeywordTable();
      result.reserve(table.size());
      for (const auto & entry : table)
      {
         if (!result.contains(entry.first)) { result.insert(entry.first, entry.second); }
      }
      return result;
   }();
   return index;
}

} // namespace

template_parser::template_parser(QFile & file) : m_sSeparator(QStringLiteral("@@"))
{
   parseInput(file);
}

template_parser::template_parser(const QString & text) : m_sSeparator(QStringLiteral("@@"))
{
   parseInput(text);
}

template_parser::~template_parser() = default;

const QList<QPair<QString, template_parser::enum_action>> & template_parser::keywordTable()
{
   return buildKeywordTable();
}

QString template_parser::keywordName(enum_action action)
{
   if (action == action_CUSTOM) { return customPrefix(); }
   for (const auto & entry : buildKeywordTable())
   {
      if (entry.second == action) { return entry.first; }
   }
   return QString();
}

template_parser::enum_action template_parser::classify(const QString & piece)
{
   const auto & index = keywordIndex();
   auto itr = index.constFind(piece);
   if (itr != index.constEnd()) { return itr.value(); }
   if (piece.startsWith(customPrefix(), Qt::CaseSensitive)) { return action_CUSTOM; }
   return action_none;
}

void template_parser::parseInput(QFile & file)
{
   m_lstText.clear();
   m_lstAction.clear();
   // A missing template is not an error here: the builder just gets nothing to expand.
   if (!file.exists() || !file.open(QIODevice::ReadOnly)) { return; }
   file.close();
   parseInput(readTextFile(file.fileName()));
}

void template_parser::parseInput(const QString & text)
{
   m_sInputText = text;
   m_sInputText.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
   m_lstText.clear();
   m_lstAction.clear();

   m_lstText = m_sInputText.split(m_sSeparator, Qt::KeepEmptyParts, Qt::CaseSensitive);
   m_lstAction.reserve(m_lstText.size());
   for (const QString & piece : std::as_const(m_lstText))
   {
      m_lstAction.append(classify(piece));
   }
}

} // namespace tools
