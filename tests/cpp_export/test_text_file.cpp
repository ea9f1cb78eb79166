#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "cpp_export/tools/text_file.h"

namespace {

QString writeBytes(const QTemporaryDir & tmp, const QString & name, const QByteArray & bytes)
{
   const QString path = tmp.filePath(name);
   QFile file(path);
   if (! file.open(QIODevice::WriteOnly) || (file.write(bytes) != bytes.size())) { return QString(); }
   return path;
}

} // namespace

TEST(TextFile, MissingOrDirectoryIsEmpty)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   EXPECT_EQ(tools::readTextFile(tmp.filePath("missing.txt")), QString());
   EXPECT_EQ(tools::readTextFile(tmp.path()), QString());
}

TEST(TextFile, LineEndsDroppedOrKept)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString path = writeBytes(tmp, "crlf.txt", "a\r\nb\rc\n");
   ASSERT_FALSE(path.isEmpty());
   EXPECT_EQ(tools::readTextFile(path), QString("a\nbc\n"));
   EXPECT_EQ(tools::readTextFile(path, tools::line_ends::as_written), QString("a\r\nb\rc\n"));
}

TEST(TextFile, Utf8WithoutMarkAndUtf16WithMark)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString sText = QString::fromUtf8("caf\xC3\xA9 \xE2\x82\xAC");
   const QString pathUtf8 = writeBytes(tmp, "utf8.txt", sText.toUtf8());
   ASSERT_FALSE(pathUtf8.isEmpty());
   EXPECT_EQ(tools::readTextFile(pathUtf8), sText);

   QByteArray utf16("\xFF\xFE", 2);
   for (QChar c : sText) { utf16.append(char(c.unicode() & 0xFF)); utf16.append(char(c.unicode() >> 8)); }
   const QString pathUtf16 = writeBytes(tmp, "utf16.txt", utf16);
   ASSERT_FALSE(pathUtf16.isEmpty());
   EXPECT_EQ(tools::readTextFile(pathUtf16), sText);
}

TEST(TextFile, ResourceTemplateReadWhole)
{
   const QString sText = tools::readTextFile(":/cpp_export/documents/template_custom_header.h");
   EXPECT_FALSE(sText.isEmpty());
   EXPECT_FALSE(sText.contains(QLatin1Char('\r')));
}
