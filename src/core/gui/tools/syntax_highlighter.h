#pragma once

#include <QColor>
#include <QRegularExpression>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QVector>

#include "tavrelgui_export.h"

namespace tools {

// C++ highlighting: keywords, strings, comments and preprocessor lines.
class TAVRELGUI_EXPORT syntax_highlighter : public QSyntaxHighlighter
{
   Q_OBJECT

public:
   enum enum_kind { kind_keyword, kind_type, kind_number, kind_macro, kind_comment, kind_string, kind_count };

private:
   struct rule { QRegularExpression pattern; enum_kind kind; };
   QVector<rule> m_lstRules;
   QTextCharFormat m_fmt[kind_count];
   QColor m_base;   // the editors' background the colours were chosen for
   QRegularExpression m_rxCommentStart;
   QRegularExpression m_rxCommentEnd;

public:
   explicit syntax_highlighter(QTextDocument * parent);
   virtual ~syntax_highlighter();

   // The format of a kind for the current palette.
   QTextCharFormat format(enum_kind kind);
   // Contrast ratio of two colours (1 to 21; text is readable from 4.5).
   static double contrast(const QColor & a, const QColor & b);

protected:
   void highlightBlock(const QString & text) override;

private:
   void updateColours();
};

} // namespace tools
