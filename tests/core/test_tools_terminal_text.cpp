#include <gtest/gtest.h>

#include "tools/terminal_text.h"

TEST(TerminalText, ControlCharactersAreShownEscaped)
{
   EXPECT_EQ(tools::terminal_text::escape(QString::fromUtf8("plain \xc3\xa9 text\tand tab")).toStdString(), "plain \xc3\xa9 text\tand tab");
   EXPECT_EQ(tools::terminal_text::escape(QString("a\x1b[31mb\rc") + QChar(0) + "d\x7f").toStdString(), "a\\x1b[31mb\\rc\\0d\\x7f");
   // C1 controls and the marks that reverse the direction of what follows.
   EXPECT_EQ(tools::terminal_text::escape(QString(QChar(0x9b)) + QChar(0x202e) + "x").toStdString(), "\\x9b\\u202ex");
}

TEST(TerminalText, LineFeedsStayOnlyWhenAsked)
{
   EXPECT_EQ(tools::terminal_text::escape("one\ntwo").toStdString(), "one\ntwo");
   EXPECT_EQ(tools::terminal_text::escape("one\ntwo", false).toStdString(), "one\\ntwo");
}
