#include "gui/tools/syntax_highlighter.h"

#include <QColor>
#include <QFont>
#include <QStringList>

namespace tools {

namespace {

enum { state_none = 0, state_in_comment = 1 };

QTextCharFormat makeFormat(const QColor & color, bool bold = false, bool italic = false)
{
   QTextCharFormat fmt;
   fmt.setForeground(color);
   if (bold) { fmt.setFontWeight(QFont::Bold); }
   if (italic) { fmt.setFontItalic(true); }
   return fmt;
}

// Index just past the closing quote of the literal opened at "start", or the line's end.
int endOfLiteral(const QString & text, int start, QChar quote)
{
   int i = start + 1;
   while (i < text.size())
   {
      if (text.at(i) == QLatin1Char('\\')) { i += 2; continue; }
      if (text.at(i) == quote) { return (i + 1); }
      ++i;
   }
   return text.size();
}

} // namespace

syntax_highlighter::syntax_highlighter(QTextDocument * parent) : QSyntaxHighlighter(parent)
{
   // Colours readable on the usual light editor background.
   const QTextCharFormat fmtKeyword = makeFormat(QColor(0x00, 0x00, 0xa0), true);
   const QTextCharFormat fmtType = makeFormat(QColor(0x80, 0x00, 0x80));
   const QTextCharFormat fmtNumber = makeFormat(QColor(0x9c, 0x5d, 0x00));
   const QTextCharFormat fmtMacro = makeFormat(QColor(0x6b, 0x4f, 0x00));

   static const QStringList keywords = {
      "alignas", "alignof", "asm", "auto", "break", "case", "catch", "class", "const", "consteval", "constexpr",
      "constinit", "const_cast", "continue", "decltype", "default", "delete", "do", "dynamic_cast", "else", "enum",
      "explicit", "export", "extern", "false", "final", "for", "friend", "goto", "if", "inline", "mutable",
      "namespace", "new", "noexcept", "nullptr", "operator", "override", "private", "protected", "public",
      "register", "reinterpret_cast", "return", "sizeof", "static", "static_assert", "static_cast", "struct",
      "switch", "template", "this", "thread_local", "throw", "true", "try", "typedef", "typeid", "typename",
      "union", "using", "virtual", "volatile", "while", "signals", "slots", "emit", "Q_SIGNALS", "Q_SLOTS",
      "Q_EMIT", "Q_OBJECT", "Q_GADGET", "Q_ENUM", "Q_PROPERTY", "Q_INVOKABLE", "Q_DECLARE_METATYPE"};
   static const QStringList types = {
      "bool", "char", "char8_t", "char16_t", "char32_t", "wchar_t", "short", "int", "long", "float", "double",
      "signed", "unsigned", "void", "size_t", "qint8", "qint16", "qint32", "qint64", "quint8", "quint16",
      "quint32", "quint64", "qlonglong", "qulonglong", "qreal"};

   m_lstRules.append(rule{QRegularExpression(QString("\\b(?:%1)\\b").arg(keywords.join('|'))), fmtKeyword});
   m_lstRules.append(rule{QRegularExpression(QString("\\b(?:%1)\\b").arg(types.join('|'))), fmtType});
   m_lstRules.append(rule{QRegularExpression("\\bQ[A-Z][A-Za-z0-9_]*\\b"), fmtType});
   m_lstRules.append(rule{QRegularExpression("\\b(?:std|zy)::[A-Za-z_][A-Za-z0-9_]*\\b"), fmtType});
   m_lstRules.append(rule{QRegularExpression(
      "\\b(?:0[xX][0-9A-Fa-f']+|0[bB][01']+|[0-9][0-9']*(?:\\.[0-9']*)?(?:[eE][+-]?[0-9]+)?)[uUlLfF]*\\b"), fmtNumber});
   m_lstRules.append(rule{QRegularExpression("^\\s*#.*$"), fmtMacro});

   m_fmtComment = makeFormat(QColor(0x00, 0x80, 0x00), false, true);
   m_rxCommentStart = QRegularExpression("/\\*");
   m_rxCommentEnd = QRegularExpression("\\*/");
}

syntax_highlighter::~syntax_highlighter() { ; }

void syntax_highlighter::highlightBlock(const QString & text)
{
   for (const rule & r : std::as_const(m_lstRules))
   {
      auto itr = r.pattern.globalMatch(text);
      while (itr.hasNext())
      {
         const QRegularExpressionMatch m = itr.next();
         setFormat(static_cast<int>(m.capturedStart()), static_cast<int>(m.capturedLength()), r.format);
      }
   }

   // Strings, character literals and comments are read left to right, so that "//" inside a
   // string is text and a quote inside a comment is comment.
   static const QTextCharFormat fmtString = makeFormat(QColor(0xa3, 0x15, 0x15));
   static const QTextCharFormat fmtChar = makeFormat(QColor(0xa3, 0x15, 0x15));
   setCurrentBlockState(state_none);
   int i = 0;
   const int n = static_cast<int>(text.size());
   if (previousBlockState() == state_in_comment)
   {
      const QRegularExpressionMatch m = m_rxCommentEnd.match(text, 0);
      if (! m.hasMatch()) { setFormat(0, n, m_fmtComment); setCurrentBlockState(state_in_comment); return; }
      i = static_cast<int>(m.capturedEnd());
      setFormat(0, i, m_fmtComment);
   }
   while (i < n)
   {
      const QChar c = text.at(i);
      if (c == QLatin1Char('"') || c == QLatin1Char('\''))
      {
         const int end = endOfLiteral(text, i, c);
         setFormat(i, end - i, ((c == QLatin1Char('"')) ? fmtString : fmtChar));
         i = end;
      }
      else if ((c == QLatin1Char('/')) && (i + 1 < n) && (text.at(i + 1) == QLatin1Char('/')))
      {
         setFormat(i, n - i, m_fmtComment);
         return;
      }
      else if ((c == QLatin1Char('/')) && (i + 1 < n) && (text.at(i + 1) == QLatin1Char('*')))
      {
         const QRegularExpressionMatch m = m_rxCommentEnd.match(text, i + 2);
         if (! m.hasMatch()) { setFormat(i, n - i, m_fmtComment); setCurrentBlockState(state_in_comment); return; }
         const int end = static_cast<int>(m.capturedEnd());
         setFormat(i, end - i, m_fmtComment);
         i = end;
      }
      else { ++i; }
   }
}

} // namespace tools
