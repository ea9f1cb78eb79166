#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "cpp_export/tools/export_folders.h"
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

TEST(ExportFolders, PresentNamesCountLinksOnlyWhenTheirTargetIsThere)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   ASSERT_TRUE(QDir(tmp.path()).mkpath("f/folder.h"));
   ASSERT_FALSE(writeBytes(tmp, "f/plain.h", "x").isEmpty());
   ASSERT_TRUE(QFile::link(tmp.filePath("f/plain.h"), tmp.filePath("f/link.h")));
   ASSERT_TRUE(QFile::link(tmp.filePath("outside.h"), tmp.filePath("f/dangling.h")));
   tools::export_folders folders(tmp.path());
   const int iFolder = folders.open("f");
   ASSERT_GE(iFolder, 0);
   QSet<QString> names { "stale" };
   ASSERT_TRUE(tools::export_folders::presentNames(iFolder, names));
   EXPECT_EQ(names, QSet<QString>({ "plain.h", "folder.h", "link.h" }));
   // Whatever each name is, the listing says what a look-up of that name says.
   for (const QString & sName : { "plain.h", "folder.h", "link.h", "dangling.h", "gone.h" })
   { EXPECT_EQ(names.contains(sName), QFileInfo::exists(tmp.filePath("f/" + sName))) << sName.toStdString(); }
   // A second listing through the same handle sees the same (the handle's position is not moved).
   QSet<QString> again;
   ASSERT_TRUE(tools::export_folders::presentNames(iFolder, again));
   EXPECT_EQ(again, names);
   EXPECT_FALSE(tools::export_folders::presentNames(-1, names));
   EXPECT_TRUE(names.isEmpty());
}

TEST(ExportFolders, ReadGivesTheWholeFileWhateverItsSize)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   ASSERT_TRUE(QDir(tmp.path()).mkdir("f"));
   tools::export_folders folders(tmp.path());
   const int iFolder = folders.open("f");
   ASSERT_GE(iFolder, 0);
   for (int iSize : { 0, 1, 4095, 4096, 65537, 1 << 20 })
   {
      QByteArray data(iSize, '\0');
      for (int i = 0; i < iSize; ++i) { data[i] = char('a' + (i * 7) % 26); }
      ASSERT_FALSE(writeBytes(tmp, "f/file.txt", data).isEmpty());
      QByteArray bytes("old");
      ASSERT_EQ(tools::export_folders::read(iFolder, "file.txt", bytes), tools::export_folders::outcome::done) << iSize;
      EXPECT_EQ(bytes, data) << iSize;
   }
   QByteArray bytes;
   EXPECT_EQ(tools::export_folders::read(iFolder, "none.txt", bytes), tools::export_folders::outcome::missing);
   ASSERT_TRUE(QDir(tmp.path()).mkdir("f/sub"));
   EXPECT_EQ(tools::export_folders::read(iFolder, "sub", bytes), tools::export_folders::outcome::fallback);
}
