#include <QDir>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QResource>
#include <QStringList>

#include <gtest/gtest.h>

#include "cpp_export/tools/template_parser.h"

namespace {

using tools::template_parser;

struct template_shape
{
   const char * name;
   qint64 size;     // bytes
   int lines;       // every line ended
   bool crlf;       // CR LF line ends, else LF
};

const template_shape kTemplates[] = {
   { "template_no_inheritance.h", 1261, 58, true },
   { "template_no_inheritance.cpp", 667, 35, true },
   { "template_no_inheritance_pimpl.h", 1314, 61, true },
   { "template_no_inheritance_pimpl.cpp", 808, 43, true },
   { "template_ix_persistable.h", 1309, 59, true },
   { "template_ix_persistable.cpp", 699, 37, true },
   { "template_ix_persistable_pimpl.h", 1362, 62, true },
   { "template_ix_persistable_pimpl.cpp", 840, 45, true },
   { "template_ix_persistable_and_q_object.h", 1578, 66, true },
   { "template_ix_persistable_and_q_object.cpp", 699, 37, true },
   { "template_ix_persistable_and_q_object_pimpl.h", 1631, 69, true },
   { "template_ix_persistable_and_q_object_pimpl.cpp", 840, 45, true },
   { "template_zy_persistable.h", 1565, 66, true },
   { "template_zy_persistable.cpp", 662, 37, false },
   { "template_zy_persistable_pimpl.h", 1618, 69, true },
   { "template_zy_persistable_pimpl.cpp", 795, 45, false },
   { "template_enumeration.h", 718, 36, true },
   { "template_enumeration.cpp", 313, 15, true },
   { "template_custom_header.h", 247, 14, true },
   { "template_custom_source.cpp", 207, 11, true },
   { "template_custom_qmake_pri.pri", 39, 1, true },
   { "template_custom_precompiled_header.h", 269, 10, true },
   { "template_qmake_pri.pri", 444, 14, true },
   { "template_qmake_pro.pro", 693, 29, true },
   { "template_cmake_lists.txt", 2401, 49, true },
   { "template_all.cpp", 76, 5, true },
   { "template_all_include.h", 319, 14, true },
   { "template_export.h", 2233, 44, true },
   { "template_dll_main.cpp", 852, 26, true },
   { "template_precompiled_header.h", 388, 16, true },
};

const char * const kCompressed[] = { "template_export.h", "template_cmake_lists.txt" };

const char * const kImages[] = { "ok.png", "cpp_export.png", "cancel.png", "debug.png", "help_manual.png" };

QString documentPath(const char * name) { return QStringLiteral(":/cpp_export/documents/") + QString::fromLatin1(name); }

QByteArray readResource(const QString & path)
{
   QFile file(path);
   if (!file.open(QIODevice::ReadOnly)) { return QByteArray(); }
   return file.readAll();
}

// Non-overlapping, left to right, as the parser cuts
qsizetype countMarkers(const QByteArray & data)
{
   qsizetype count = 0;
   for (qsizetype pos = data.indexOf("@@"); pos >= 0; pos = data.indexOf("@@", pos + 2)) { ++count; }
   return count;
}

bool isCompressed(const char * name)
{
   for (const char * c : kCompressed) { if (qstrcmp(c, name) == 0) { return true; } }
   return false;
}

} // namespace

TEST(Resources, DocumentsDirectoryHoldsExactlyTheTemplates)
{
   QStringList expected;
   for (const auto & t : kTemplates) { expected.append(QString::fromLatin1(t.name)); }
   expected.sort();
   ASSERT_EQ(expected.size(), 30);
   ASSERT_EQ(expected.removeDuplicates(), 0);
   QStringList found = QDir(QStringLiteral(":/cpp_export/documents")).entryList(QDir::Files);
   found.sort();
   EXPECT_EQ(found.join(QLatin1Char('\n')).toStdString(), expected.join(QLatin1Char('\n')).toStdString());
}

TEST(Resources, TemplatesHaveTheirSizeLineCountAndLineEnds)
{
   for (const auto & t : kTemplates)
   {
      SCOPED_TRACE(t.name);
      QFile file(documentPath(t.name));
      ASSERT_TRUE(file.exists());
      ASSERT_TRUE(file.open(QIODevice::ReadOnly));
      const QByteArray data = file.readAll();
      EXPECT_EQ(data.size(), t.size);
      EXPECT_EQ(data.count('\n'), t.lines);
      EXPECT_TRUE(data.endsWith('\n'));
      const qsizetype crlf = data.count("\r\n");
      EXPECT_EQ(data.count('\r'), crlf) << "lone CR";
      EXPECT_EQ(crlf, t.crlf ? t.lines : 0);
      EXPECT_FALSE(data.contains('\t'));
   }
}

TEST(Resources, TemplatesParseIntoParallelLists)
{
   for (const auto & t : kTemplates)
   {
      SCOPED_TRACE(t.name);
      QFile file(documentPath(t.name));
      template_parser parser(file);
      const QByteArray data = readResource(documentPath(t.name));
      ASSERT_FALSE(parser.getListOfText().isEmpty());
      EXPECT_EQ(parser.getListOfText().size(), parser.getListOfAction().size());
      EXPECT_EQ(parser.getListOfText().size(), countMarkers(data) + 1);
      EXPECT_FALSE(parser.getInputText().contains(QLatin1Char('\r')));
      EXPECT_EQ(parser.getInputTextSize(), t.size - (t.crlf ? t.lines : 0));
      EXPECT_EQ(parser.getListOfText().join(QStringLiteral("@@")), parser.getInputText());
   }
}

TEST(Resources, EveryMarkedNameInTheTemplatesIsABuiltInKeyword)
{
   // Built-in templates pair their markers, so every odd piece is a keyword name.
   for (const auto & t : kTemplates)
   {
      SCOPED_TRACE(t.name);
      template_parser parser(QString::fromUtf8(readResource(documentPath(t.name))));
      const auto & text = parser.textList();
      const auto & actions = parser.actionList();
      EXPECT_EQ(text.size() % 2, 1);
      for (qsizetype i = 0; i < text.size(); ++i)
      {
         if (i % 2 == 1)
         {
            EXPECT_NE(actions.at(i), template_parser::action_none) << qPrintable(text.at(i));
            EXPECT_NE(actions.at(i), template_parser::action_CUSTOM) << qPrintable(text.at(i));
         }
         else
         {
            EXPECT_EQ(actions.at(i), template_parser::action_none) << qPrintable(text.at(i));
         }
      }
   }
}

TEST(Resources, CustomQmakeTemplateIsOneLineWithoutKeyword)
{
   QFile file(QStringLiteral(":/cpp_export/documents/template_custom_qmake_pri.pri"));
   template_parser parser(file);
   EXPECT_EQ(parser.getListOfText(), QStringList({ "## -- Put your custom code here -- ##\n" }));
   EXPECT_EQ(parser.getListOfAction(), QList<template_parser::enum_action>({ template_parser::action_none }));
}

TEST(Resources, UnityBuildTemplateStartsWithItsGuard)
{
   const QByteArray data = readResource(QStringLiteral(":/cpp_export/documents/template_all.cpp"));
   EXPECT_TRUE(data.startsWith("#ifdef _ZY_UNITY_BUILD\r\n"));
   template_parser parser(QString::fromUtf8(data));
   EXPECT_EQ(parser.getListOfText(), QStringList({ "#ifdef _ZY_UNITY_BUILD\n\n", "INCLUDE_ALL_CPP", "\n\n#endif // _ZY_UNITY_BUILD\n" }));
   EXPECT_EQ(parser.getListOfAction(), QList<template_parser::enum_action>(
                { template_parser::action_none, template_parser::action_INCLUDE_ALL_CPP, template_parser::action_none }));
}

TEST(Resources, PersistableHeaderAndSourceParseToTheSameLineEnds)
{
   // The two source templates of this style ship with LF, their headers with CR LF.
   const char * const names[] = { "template_zy_persistable.h", "template_zy_persistable.cpp",
                                   "template_zy_persistable_pimpl.h", "template_zy_persistable_pimpl.cpp" };
   for (const char * name : names)
   {
      SCOPED_TRACE(name);
      QFile file(documentPath(name));
      template_parser parser(file);
      EXPECT_FALSE(parser.getInputText().isEmpty());
      EXPECT_FALSE(parser.getInputText().contains(QLatin1Char('\r')));
   }
}

TEST(Resources, CompressionIsAsDeclared)
{
   for (const auto & t : kTemplates)
   {
      SCOPED_TRACE(t.name);
      QResource resource(documentPath(t.name));
      ASSERT_TRUE(resource.isValid());
      if (isCompressed(t.name))
      {
         EXPECT_EQ(resource.compressionAlgorithm(), QResource::ZlibCompression);
         EXPECT_LT(resource.size(), t.size);
      }
      else
      {
         EXPECT_EQ(resource.compressionAlgorithm(), QResource::NoCompression);
         EXPECT_EQ(resource.size(), t.size);
      }
      EXPECT_EQ(resource.uncompressedSize(), t.size);
      EXPECT_EQ(resource.uncompressedData(), readResource(documentPath(t.name)));
   }
}

TEST(Resources, ImagesLoad)
{
   for (const char * name : kImages)
   {
      SCOPED_TRACE(name);
      const QString path = QStringLiteral(":/cpp_export/images/") + QString::fromLatin1(name);
      ASSERT_TRUE(QFile::exists(path));
      QImage image(path);
      ASSERT_FALSE(image.isNull());
      EXPECT_GE(image.width(), 16);
      EXPECT_EQ(image.width(), image.height());
      EXPECT_TRUE(image.hasAlphaChannel());
      QIcon icon(path);
      EXPECT_FALSE(icon.isNull());
      EXPECT_FALSE(icon.pixmap(16, 16).isNull());
   }
}

TEST(Resources, PluginIconIsThirtyTwoPixels)
{
   QImage image(QStringLiteral(":/cpp_export/images/cpp_export.png"));
   EXPECT_EQ(image.size(), QSize(32, 32));
}
