#include "cpp_export/tools/template_parser.h"

#include <QHash>

#include "cpp_export/plugin/keyword_registry.h"
#include "cpp_export/tools/text_file.h"

namespace tools {

namespace {

// Names are unique, so a hash gives the same answer as comparing in table order.
const QHash<QString, template_parser::enum_action> & keywordIndex()
{
   static const QHash<QString, template_parser::enum_action> index = [] {
      QHash<QString, template_parser::enum_action> result;
      const auto & keywords = plugin::templateKeywords();
      result.reserve(keywords.size());
      for (const plugin::template_keyword & k : keywords)
      {
         const QString sName = QString::fromLatin1(k.name);
         if (! result.contains(sName)) { result.insert(sName, k.code); }
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
   static const QList<QPair<QString, enum_action>> table = [] {
      QList<QPair<QString, enum_action>> result;
      for (const plugin::template_keyword & k : plugin::templateKeywords()) { result.append(qMakePair(QString::fromLatin1(k.name), k.code)); }
      return result;
   }();
   return table;
}

QString template_parser::keywordName(enum_action action)
{
   if (action == action_CUSTOM) { return customPrefix(); }
   const plugin::template_keyword * pKeyword = plugin::findTemplateKeyword(action);
   return (pKeyword ? QString::fromLatin1(pKeyword->name) : QString());
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
