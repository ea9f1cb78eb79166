#include <QBuffer>
#include <QGuiApplication>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextStream>

#include <gtest/gtest.h>

#include "gui/tools/message_box.h"
#include "tools/string_helper.h"
#include "gui/tools/syntax_highlighter.h"
#include "gui/tools/wait_cursor.h"

using tools::message_box;
using tools::string_helper;

TEST(ToolsStringHelper, EscapesQuotesAndBackslashes)
{
   EXPECT_EQ(string_helper::toCppString(QString("say \"hi\"")), QString("say \\\"hi\\\""));
   EXPECT_EQ(string_helper::toCppString(QString("C:\\dir\\file")), QString("C:\\\\dir\\\\file"));
   EXPECT_EQ(string_helper::toCppString(QString("\\\"")), QString("\\\\\\\""));
}

TEST(ToolsStringHelper, EscapesLineBreaksAndTab)
{
   EXPECT_EQ(string_helper::toCppString(QString("a\r\nb")), QString("a\\r\\nb"));
   EXPECT_EQ(string_helper::toCppString(QString("col1\tcol2")), QString("col1\\tcol2"));
}

TEST(ToolsStringHelper, OtherControlCharactersBecomeThreeDigitOctal)
{
   EXPECT_EQ(string_helper::toCppString(QString(QChar(0x01))), QString("\\001"));
   // The three digits keep a following digit out of the escape.
   EXPECT_EQ(string_helper::toCppString(QString(QChar(0x1b)) + "7"), QString("\\0337"));
   EXPECT_EQ(string_helper::toCppString(QString(QChar(0x7f))), QString("\\177"));
   EXPECT_EQ(string_helper::toCppString(QString(QChar(0x00))), QString("\\000"));
   EXPECT_EQ(string_helper::toCppString(QString("a") + QChar(0x0b) + QChar(0x0c) + "b"), QString("a\\013\\014b"));
}

TEST(ToolsStringHelper, PrintableAndNonAsciiTextUnchanged)
{
   const QString text = QString::fromUtf8("Année été ✓ 日本 'quote' ? % $");
   EXPECT_EQ(string_helper::toCppString(text), text);
   EXPECT_EQ(string_helper::toCppString(QString()), QString());
}

TEST(ToolsStringHelper, TextStreamWritesUtf8WithoutBom)
{
   QByteArray bytes;
   {
      QBuffer buffer(& bytes);
      ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
      QTextStream stream(& buffer);
      // A BOM asked for earlier must be switched off again.
      stream.setGenerateByteOrderMark(true);
      string_helper::initTextStream(& stream);
      stream << QString::fromUtf8("é€");
      stream.flush();
   }
   EXPECT_EQ(bytes, QByteArray("\xc3\xa9\xe2\x82\xac"));
}

TEST(ToolsWaitCursor, NestingRestoresTheCursor)
{
   ASSERT_EQ(QGuiApplication::overrideCursor(), nullptr);
   {
      tools::wait_cursor outer;
      ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
      EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
      {
         tools::wait_cursor inner;
         EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
      }
      // The inner guard only undoes its own cursor.
      ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
      EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
   }
   EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

class ToolsMessageBox : public ::testing::Test
{
protected:
   void SetUp() override { message_box::reset(); }
   void TearDown() override { message_box::reset(); }
};

TEST_F(ToolsMessageBox, TestsRunUnattended)
{
   EXPECT_TRUE(message_box::isUnattended());
}

TEST_F(ToolsMessageBox, AnswersWithTheDefaultButton)
{
   EXPECT_EQ(message_box::question(nullptr, "T", "Create it?"), QMessageBox::Yes);
   EXPECT_EQ(message_box::question(nullptr, "T", "Create it?", QMessageBox::Yes | QMessageBox::No, QMessageBox::No), QMessageBox::No);
   EXPECT_EQ(message_box::question(nullptr, "T", "Save?", QMessageBox::Save | QMessageBox::Cancel), QMessageBox::Save);
   EXPECT_EQ(message_box::warning(nullptr, "T", "Careful"), QMessageBox::Ok);
   EXPECT_EQ(message_box::critical(nullptr, "T", "Broken", QMessageBox::Ok | QMessageBox::Cancel), QMessageBox::Ok);
}

TEST_F(ToolsMessageBox, FixedYesAnswersQuestions)
{
   message_box::setFixedAnswer(QMessageBox::Yes);
   EXPECT_EQ(message_box::question(nullptr, "T", "Create it?", QMessageBox::Yes | QMessageBox::No, QMessageBox::No), QMessageBox::Yes);
   // Not offered: the default button answers.
   EXPECT_EQ(message_box::information(nullptr, "T", "Done"), QMessageBox::Ok);
}

TEST_F(ToolsMessageBox, FixedNoAnswersQuestions)
{
   message_box::setFixedAnswer(QMessageBox::No);
   EXPECT_EQ(message_box::question(nullptr, "T", "Create it?"), QMessageBox::No);
   EXPECT_EQ(message_box::question(nullptr, "T", "Create it?", QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes), QMessageBox::No);
   EXPECT_EQ(message_box::warning(nullptr, "T", "Careful"), QMessageBox::Ok);
}

TEST_F(ToolsMessageBox, ScriptedAnswersComeFirstInOrder)
{
   message_box::setFixedAnswer(QMessageBox::Yes);
   message_box::pushScriptedAnswer(QMessageBox::No);
   message_box::pushScriptedAnswer(QMessageBox::Cancel);
   // A single-button box doesn't use a scripted answer.
   EXPECT_EQ(message_box::warning(nullptr, "T", "Careful"), QMessageBox::Ok);
   EXPECT_EQ(message_box::question(nullptr, "T", "First?"), QMessageBox::No);
   EXPECT_EQ(message_box::question(nullptr, "T", "Second?", QMessageBox::Yes | QMessageBox::Cancel), QMessageBox::Cancel);
   EXPECT_EQ(message_box::question(nullptr, "T", "Third?"), QMessageBox::Yes);
}

TEST_F(ToolsMessageBox, HistoryRecordsEveryBox)
{
   message_box::pushScriptedAnswer(QMessageBox::No);
   message_box::question(nullptr, "Export", "Create directory?");
   message_box::warning(nullptr, "Export", "Directory doesn't exist");
   message_box::information(nullptr, "Info", "Done");
   message_box::critical(nullptr, "Error", "Failed");

   const QList<message_box::record> h = message_box::history();
   ASSERT_EQ(h.size(), 4);
   EXPECT_EQ(h.at(0).kind, message_box::kind_question);
   EXPECT_EQ(h.at(0).title, QString("Export"));
   EXPECT_EQ(h.at(0).text, QString("Create directory?"));
   EXPECT_EQ(h.at(0).answer, QMessageBox::No);
   EXPECT_EQ(h.at(1).kind, message_box::kind_warning);
   EXPECT_EQ(h.at(1).text, QString("Directory doesn't exist"));
   EXPECT_EQ(h.at(1).answer, QMessageBox::Ok);
   EXPECT_EQ(h.at(2).kind, message_box::kind_information);
   EXPECT_EQ(h.at(3).kind, message_box::kind_critical);

   message_box::clearHistory();
   EXPECT_TRUE(message_box::history().isEmpty());
}

namespace {

QColor foregroundAt(const QTextBlock & block, int pos)
{
   for (const QTextLayout::FormatRange & r : block.layout()->formats())
   {
      if ((pos >= r.start) && (pos < (r.start + r.length))) { return r.format.foreground().color(); }
   }
   return QColor();
}

} // namespace

TEST(ToolsSyntaxHighlighter, CommentsSpanLinesAndStringsHideCommentMarks)
{
   QTextDocument doc;
   doc.setPlainText("int x = 1; /* start\nstill comment */ return \"// not a comment\";\n#include <QString>");
   tools::syntax_highlighter highlighter(& doc);
   highlighter.rehighlight();

   const QTextBlock first = doc.findBlockByNumber(0);
   const QTextBlock second = doc.findBlockByNumber(1);
   const QTextBlock third = doc.findBlockByNumber(2);
   EXPECT_EQ(first.userState(), 1);
   EXPECT_EQ(second.userState(), 0);

   const QColor comment = foregroundAt(first, static_cast<int>(first.text().indexOf("start")));
   const QColor keyword = foregroundAt(first, 0);
   const QColor number = foregroundAt(first, static_cast<int>(first.text().indexOf('1')));
   ASSERT_TRUE(comment.isValid());
   ASSERT_TRUE(keyword.isValid());
   ASSERT_TRUE(number.isValid());
   EXPECT_NE(comment, keyword);
   EXPECT_NE(number, keyword);
   EXPECT_EQ(foregroundAt(second, 0), comment);

   const int inString = static_cast<int>(second.text().indexOf("not a comment"));
   const QColor string = foregroundAt(second, inString);
   ASSERT_TRUE(string.isValid());
   EXPECT_NE(string, comment);
   EXPECT_EQ(foregroundAt(second, static_cast<int>(second.text().indexOf("//"))), string);

   const QColor macro = foregroundAt(third, 0);
   ASSERT_TRUE(macro.isValid());
   EXPECT_NE(macro, comment);
   EXPECT_NE(macro, string);
}
