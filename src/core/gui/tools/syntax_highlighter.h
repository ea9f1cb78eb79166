#pragma once

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

   struct rule { QRegularExpression pattern; QTextCharFormat format; };
   QVector<rule> m_lstRules;
   QTextCharFormat m_fmtComment;
   QRegularExpression m_rxCommentStart;
   QRegularExpression m_rxCommentEnd;

public:
   explicit syntax_highlighter(QTextDocument * parent);
   virtual ~syntax_highlighter();

protected:
   void highlightBlock(const QString & text) override;
};

} // namespace tools
