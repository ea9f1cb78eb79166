// "tavrel diagram": the pictures and texts of the examples, the files it writes, its refusals.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "storage/project_storage.h"
#include "test_support.h"

namespace {

struct svg_content
{
   int nodes = 0;
   int edges = 0;
   QString text;
   QString error;
};

svg_content readSvg(const QByteArray & data)
{
   svg_content r;
   QXmlStreamReader xml(data);
   while (! xml.atEnd())
   {
      xml.readNext();
      if (xml.isCharacters()) { r.text += xml.text().toString() + QLatin1Char('\n'); }
      if (! xml.isStartElement() || (xml.name() != QLatin1String("g"))) { continue; }
      if (xml.attributes().value("class") == QLatin1String("node")) { ++r.nodes; }
      if (xml.attributes().value("class") == QLatin1String("edge")) { ++r.edges; }
   }
   if (xml.hasError()) { r.error = xml.errorString(); }
   return r;
}

model::project_ptr readExample(const QString & name)
{
   model::project_ptr p;
   EXPECT_TRUE(storage::project_storage::readJsonFile(test_support::examplePath(name), p));
   return p;
}

int edgeCount(const model::project & p)
{
   int n = 0;
   for (const auto & e : * p.getListOfAllEntities()) { n += int(e->getListOfRelation().size()) + (e->getParent() ? 1 : 0); }
   return n;
}

} // namespace

TEST(CliDiagram, SvgOfEachExampleHasEveryBoxAndEdge)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   for (const QString & name : { QString("shop.json"), QString("library.json") })
   {
      const QString out = tmp.filePath(name + ".svg");
      const test_support::cli_result r = test_support::runTavrel({ "diagram", test_support::examplePath(name), "-o", out });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      const svg_content svg = readSvg(test_support::readAll(out));
      ASSERT_TRUE(svg.error.isEmpty()) << svg.error.toStdString();
      model::project_ptr p = readExample(name);
      EXPECT_EQ(svg.nodes, p->getListOfAllEntities()->size()) << name.toStdString();
      EXPECT_EQ(svg.edges, edgeCount(* p)) << name.toStdString();
      for (const auto & e : * p->getListOfAllEntities())
      {
         EXPECT_TRUE(svg.text.contains(e->getName() + "\n")) << e->getName().toStdString();
         for (const auto & r : e->getListOfRelation()) { EXPECT_TRUE(svg.text.contains(r->getProperty()->getName() + "\n")); }
      }
   }
}

TEST(CliDiagram, MermaidAndDotOfEachExampleNameEveryEntityAndRelation)
{
   for (const QString & name : { QString("shop.json"), QString("library.json") })
   {
      model::project_ptr p = readExample(name);
      const test_support::cli_result mermaid = test_support::runTavrel({ "diagram", test_support::examplePath(name), "-o", "-", "--format", "mermaid" });
      const test_support::cli_result dot = test_support::runTavrel({ "diagram", test_support::examplePath(name), "-o", "-", "--format", "dot" });
      ASSERT_EQ(mermaid.code, 0) << mermaid.err.toStdString();
      ASSERT_EQ(dot.code, 0) << dot.err.toStdString();
      EXPECT_TRUE(mermaid.out.startsWith("erDiagram\n"));
      EXPECT_EQ(mermaid.out.count(QRegularExpression(R"(^    \w+ (\|\||\}o)(--|\.\.)(\|\||o\{) \w+ : "[^"]*"$)", QRegularExpression::MultilineOption)),
                edgeCount(* p));
      EXPECT_EQ(dot.out.count(" -> "), edgeCount(* p));
      for (const auto & e : * p->getListOfAllEntities())
      {
         const QString id = QString(e->getKey()).replace("::", "__");
         EXPECT_TRUE(mermaid.out.contains("\n    " + id + " {\n")) << id.toStdString();
         EXPECT_TRUE(dot.out.contains("<B>" + e->getName() + "</B>") || dot.out.contains("<I>" + e->getName() + "</I>"));
         for (const auto & r : e->getListOfRelation())
         {
            EXPECT_TRUE(mermaid.out.contains(" : \"" + r->getProperty()->getName() + "\"\n"));
            EXPECT_TRUE(dot.out.contains("label=<" + r->getProperty()->getName() + ">"));
         }
      }
   }
}

// Drawing a JSON model writes the asked file only: no project file appears beside the model.
TEST(CliDiagram, WritesOnlyTheAskedFile)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString model = tmp.filePath("shop.json");
   ASSERT_TRUE(QFile::copy(test_support::examplePath("shop.json"), model));
   const QStringList before = test_support::treeState(tmp.path());
   const test_support::cli_result r = test_support::runTavrel({ "diagram", model, "-o", tmp.filePath("out/../shop.png") });
   ASSERT_NE(r.code, 0);
   EXPECT_EQ(test_support::treeState(tmp.path()), before);
   ASSERT_EQ(test_support::runTavrel({ "diagram", model, "--namespace", "shop::sales", "-o", tmp.filePath("sales.pdf") }).code, 0);
   EXPECT_EQ(QDir(tmp.path()).entryList(QDir::Files, QDir::Name), QStringList({ "sales.pdf", "shop.json" }));
   EXPECT_TRUE(test_support::readAll(tmp.filePath("sales.pdf")).startsWith("%PDF"));
}

TEST(CliDiagram, BadInputGetsAMessageAndLeavesTheOutputAlone)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const QString out = tmp.filePath("old.svg");
   ASSERT_TRUE(test_support::writeAll(out, "old"));
   const QString broken = tmp.filePath("broken.json");
   ASSERT_TRUE(test_support::writeAll(broken, "{ \"name\": \"X\", \"entities\": [ { \"name\": 3 } ] }"));
   const QString shop = test_support::examplePath("shop.json");
   struct bad { QStringList args; int code; const char * message; };
   const QList<bad> cases = {
      { { "diagram", tmp.filePath("missing.json"), "-o", out }, 1, "no such project file" },
      { { "diagram", broken, "-o", out }, 1, "broken.json" },
      { { "diagram", shop, "-o", out, "--namespace", "nowhere" }, 1, "no entity in namespace 'nowhere'" },
      { { "diagram", shop, "-o", out, "--format", "gif" }, 2, "unknown format 'gif'" },
      { { "diagram", shop, "-o", tmp.filePath("picture.xyz") }, 2, "use --format" },
      { { "diagram", shop }, 2, "needs -o FILE" },
      { { "diagram", "-o", out }, 2, "needs PROJECT" },
      { { "diagram", shop, "-o", "-", "--format", "png" }, 2, "only dot and mermaid" },
   };
   for (const bad & c : cases)
   {
      const test_support::cli_result r = test_support::runTavrel(c.args);
      EXPECT_EQ(r.code, c.code) << c.args.join(' ').toStdString();
      EXPECT_TRUE(r.err.contains(c.message)) << r.err.toStdString();
      EXPECT_EQ(test_support::readAll(out), QByteArray("old"));
   }
   EXPECT_FALSE(QFile::exists(tmp.filePath("picture.xyz")));
}

// Like import and dump, diagram starts no GUI application.
TEST(CliDiagram, RunsWithoutAGuiApplication)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   test_support::cli_options noDisplay;
   noDisplay.env.insert("QT_QPA_PLATFORM", "tavrel-no-such-platform");
   const test_support::cli_result r = test_support::runTavrel({ "diagram", test_support::examplePath("shop.json"), "-o", tmp.filePath("a.svg") }, noDisplay);
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(QFile::exists(tmp.filePath("a.svg")));
}

// A model too large for a layout in seconds is refused at once with what to do instead; its
// text formats and one namespace of it are still drawn.
TEST(CliDiagram, GraphTooLargeForALayoutIsRefusedAtOnce)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   QByteArray json = "{\"name\": \"big\", \"entities\": [";
   const int n = 3000;
   auto key = [](int i) { return QString("%1::E%2").arg((i < 10) ? "small" : "large").arg(i); };
   for (int i = 0; i < n; ++i)
   {
      json += QString("%1{\"name\": \"E%2\", \"namespace\": \"%3\", \"properties\": [{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}, "
                      "{\"name\": \"next\", \"relation\": {\"kind\": \"many_to_one\", \"target\": \"%4\"}}, "
                      "{\"name\": \"other\", \"relation\": {\"kind\": \"many_to_one\", \"target\": \"%5\"}}]}")
                 .arg(i ? "," : "").arg(i).arg((i < 10) ? "small" : "large").arg(key((i + 1) % n), key((i + 7) % n)).toUtf8();
   }
   json += "]}";
   const QString model = tmp.filePath("big.json");
   ASSERT_TRUE(test_support::writeAll(model, json));
   ASSERT_EQ(test_support::runTavrel({ "import", model, tmp.filePath("big.tavrel") }).code, 0);

   test_support::cli_result r = test_support::runTavrel({ "diagram", tmp.filePath("big.tavrel"), "-o", tmp.filePath("big.svg") });
   EXPECT_EQ(r.code, 1);
   EXPECT_TRUE(r.err.contains("the diagram has 3000 entities and 6000 relations; a picture is laid out for at most 300 entities")) << r.err.toStdString();
   EXPECT_FALSE(QFileInfo::exists(tmp.filePath("big.svg")));

   r = test_support::runTavrel({ "diagram", tmp.filePath("big.tavrel"), "-o", tmp.filePath("big.mmd") });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.out.contains("3000 entities and 6000 edges")) << r.out.toStdString();

   r = test_support::runTavrel({ "diagram", tmp.filePath("big.tavrel"), "-o", tmp.filePath("small.svg"), "--namespace", "small" });
   EXPECT_EQ(r.code, 0) << r.err.toStdString();
   EXPECT_TRUE(r.err.contains("Laying out 10 entities")) << r.err.toStdString();
   EXPECT_TRUE(QFileInfo::exists(tmp.filePath("small.svg")));
}
