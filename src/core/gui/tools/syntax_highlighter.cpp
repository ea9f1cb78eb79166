#include "gui/tools/syntax_highlighter.h"

#include <QApplication>
#include <QColor>
#include <QFont>
#include <QPalette>
#include <QStringList>
#include <QTextDocument>
#include <QWidget>

#include <algorithm>
#include <cmath>

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

double luminance(const QColor & c)
{
   auto channel = [](double v) { return ((v <= 0.03928) ? (v / 12.92) : std::pow((v + 0.055) / 1.055, 2.4)); };
   return ((0.2126 * channel(c.redF())) + (0.7152 * channel(c.greenF())) + (0.0722 * channel(c.blueF())));
}

// The colour of the same hue, made lighter on a dark background (darker on a light one) until
// it reads against it.
QColor readableOn(const QColor & color, const QColor & base)
{
   const bool bDarkBase = (luminance(base) < 0.18);
   QColor c = color.toHsl();
   for (int i = 0; (i < 32) && (syntax_highlighter::contrast(c, base) < 4.5); ++i)
   {
      const int iLight = std::clamp(c.lightness() + (bDarkBase ? 8 : -8), 0, 255);
      c = QColor::fromHsl(c.hslHue(), c.hslSaturation(), iLight);
   }
   return c.toRgb();
}

// The background of the editor showing the document, else of editors in general.
QColor editorBase(const QTextDocument * pDocument)
{
   for (QObject * p = (pDocument ? pDocument->parent() : nullptr); p; p = p->parent())
   {
      if (const QWidget * pWidget = qobject_cast<const QWidget *>(p)) { return pWidget->palette().color(QPalette::Active, QPalette::Base); }
   }
   return QApplication::palette("QTextEdit").color(QPalette::Active, QPalette::Base);
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

   m_lstRules.append(rule{QRegularExpression(QString("\\b(?:%1)\\b").arg(keywords.join('|'))), kind_keyword});
   m_lstRules.append(rule{QRegularExpression(QString("\\b(?:%1)\\b").arg(types.join('|'))), kind_type});
   m_lstRules.append(rule{QRegularExpression("\\bQ[A-Z][A-Za-z0-9_]*\\b"), kind_type});
   m_lstRules.append(rule{QRegularExpression("\\b(?:std|zy)::[A-Za-z_][A-Za-z0-9_]*\\b"), kind_type});
   m_lstRules.append(rule{QRegularExpression(
      "\\b(?:0[xX][0-9A-Fa-f']+|0[bB][01']+|[0-9][0-9']*(?:\\.[0-9']*)?(?:[eE][+-]?[0-9]+)?)[uUlLfF]*\\b"), kind_number});
   m_lstRules.append(rule{QRegularExpression("^\\s*#.*$"), kind_macro});
   updateColours();
   m_rxCommentStart = QRegularExpression("/\\*");
   m_rxCommentEnd = QRegularExpression("\\*/");
}

syntax_highlighter::~syntax_highlighter() { ; }

double syntax_highlighter::contrast(const QColor & a, const QColor & b)
{
   const double la = luminance(a);
   const double lb = luminance(b);
   return ((std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05));
}

void syntax_highlighter::updateColours()
{
   // Chosen for the usual light background, then made readable on the palette's own.
   const QColor base = editorBase(document());
   if (m_base.isValid() && (base == m_base)) { return; }
   m_base = base;
   m_fmt[kind_keyword] = makeFormat(readableOn(QColor(0x00, 0x00, 0xa0), base), true);
   m_fmt[kind_type] = makeFormat(readableOn(QColor(0x80, 0x00, 0x80), base));
   m_fmt[kind_number] = makeFormat(readableOn(QColor(0x9c, 0x5d, 0x00), base));
   m_fmt[kind_macro] = makeFormat(readableOn(QColor(0x6b, 0x4f, 0x00), base));
   m_fmt[kind_comment] = makeFormat(readableOn(QColor(0x00, 0x80, 0x00), base), false, true);
   m_fmt[kind_string] = makeFormat(readableOn(QColor(0xa3, 0x15, 0x15), base));
}

QTextCharFormat syntax_highlighter::format(enum_kind kind)
{
   updateColours();
   return m_fmt[(kind >= 0) && (kind < kind_count) ? kind : kind_keyword];
}

void syntax_highlighter::highlightBlock(const QString & text)
{
   // A palette changed since the last block (a dark theme chosen) gives its colours to the next.
   updateColours();
   const QTextCharFormat & fmtComment = m_fmt[kind_comment];
   for (const rule & r : std::as_const(m_lstRules))
   {
      auto itr = r.pattern.globalMatch(text);
      while (itr.hasNext())
      {
         const QRegularExpressionMatch m = itr.next();
         setFormat(static_cast<int>(m.capturedStart()), static_cast<int>(m.capturedLength()), m_fmt[r.kind]);
      }
   }

   // Strings, character literals and comments are read left to right, so that "//" inside a
   // string is text and a quote inside a comment is comment.
   setCurrentBlockState(state_none);
   int i = 0;
   const int n = static_cast<int>(text.size());
   if (previousBlockState() == state_in_comment)
   {
      const QRegularExpressionMatch m = m_rxCommentEnd.match(text, 0);
      if (! m.hasMatch()) { setFormat(0, n, fmtComment); setCurrentBlockState(state_in_comment); return; }
      i = static_cast<int>(m.capturedEnd());
      setFormat(0, i, fmtComment);
   }
   while (i < n)
   {
      const QChar c = text.at(i);
      if (c == QLatin1Char('"') || c == QLatin1Char('\''))
      {
         const int end = endOfLiteral(text, i, c);
         setFormat(i, end - i, m_fmt[kind_string]);
         i = end;
      }
      else if ((c == QLatin1Char('/')) && (i + 1 < n) && (text.at(i + 1) == QLatin1Char('/')))
      {
         setFormat(i, n - i, fmtComment);
         return;
      }
      else if ((c == QLatin1Char('/')) && (i + 1 < n) && (text.at(i + 1) == QLatin1Char('*')))
      {
         const QRegularExpressionMatch m = m_rxCommentEnd.match(text, i + 2);
         if (! m.hasMatch()) { setFormat(i, n - i, fmtComment); setCurrentBlockState(state_in_comment); return; }
         const int end = static_cast<int>(m.capturedEnd());
         setFormat(i, end - i, fmtComment);
         i = end;
      }
      else { ++i; }
   }
}

} // namespace tools
