// The graph of a model, its dot and Mermaid texts, the Graphviz layout and the written files.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include "diagram/diagram_graph.h"
#include "diagram/diagram_layout.h"
#include "diagram/diagram_text.h"
#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_storage.h"
#include "test_support.h"

namespace {

model::project_ptr readExample(const QString & name)
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::readJsonFile(test_support::examplePath(name), p);
   EXPECT_TRUE(ok) << ok.getDesc().toStdString();
   return p;
}

model::property_ptr addProperty(const model::entity_ptr & e, const QString & name, const QString & type)
{
   auto p = std::make_shared<model::property>();
   p->setName(name);
   auto t = std::make_shared<model::property_type>();
   t->setPrimitiveType(type);
   p->setType(t);
   p->setEntity(e);
   e->addProperty(p);
   return p;
}

model::entity_ptr addEntity(model::project & project, const QString & ns, const QString & name)
{
   auto e = std::make_shared<model::entity>();
   e->setNamespace(ns);
   e->setName(name);
   project.addEntity(e);
   return e;
}

void addRelation(const model::entity_ptr & from, const QString & name, const model::entity_ptr & to, int kind)
{
   model::property_ptr p = addProperty(from, name, QString());
   auto r = std::make_shared<model::relationship>();
   r->setType(kind);
   r->setTargetKey(to->getKey());
   r->setEntityTarget(to);
   r->setProperty(p);
   p->setRelation(r);
}

// Texts that would end a dot label or string, open a tag, or end a Mermaid comment or line.
const QString k_sHostileType = QStringLiteral("QMap<a, \"b\"> ]; n9 [label=x]; } & %% \n x");

model::project_ptr hostileModel()
{
   auto p = std::make_shared<model::project>();
   model::entity_ptr a = addEntity(* p, "evil::ns", "A");
   model::entity_ptr b = addEntity(* p, "evil", "B");
   addProperty(a, "id", "long")->setPrimaryKey(true);
   addProperty(a, "odd", k_sHostileType);
   addRelation(a, "bees", b, model::relationship::one_to_many);
   b->setParentKey(a->getKey());
   b->setParent(a);
   return p;
}

int relationCount(const model::project & project)
{
   int n = 0;
   for (const auto & e : * project.getListOfAllEntities())
   {
      n += int(e->getListOfRelation().size());
      if (e->getParent()) { ++n; }
   }
   return n;
}

} // namespace

TEST(DiagramGraph, EveryEntityRelationAndParentOfTheExamples)
{
   for (const QString & name : { QString("shop.json"), QString("library.json") })
   {
      model::project_ptr p = readExample(name);
      ASSERT_TRUE(p);
      const diagram::graph g = diagram::buildGraph(* p);
      EXPECT_EQ(g.boxes.size(), p->getListOfAllEntities()->size()) << name.toStdString();
      EXPECT_EQ(g.edges.size(), relationCount(* p)) << name.toStdString();
      for (const auto & e : * p->getListOfAllEntities())
      {
         const int i = g.indexOf(e->getKey());
         ASSERT_GE(i, 0) << e->getKey().toStdString();
         EXPECT_EQ(g.boxes.at(i).lines.size(), e->getOwnProperties().size());
      }
   }
}

TEST(DiagramGraph, RelationKindsGiveTheEnds)
{
   model::project_ptr p = readExample("shop.json");
   const diagram::graph g = diagram::buildGraph(* p);
   QStringList found;
   for (const diagram::edge & e : g.edges)
   {
      if (e.bInheritance) { continue; }
      found << g.boxes.at(e.iFrom).sName + "." + e.sLabel + "=" + e.sTail + ":" + e.sHead;
   }
   EXPECT_TRUE(found.contains("Customer.orders=1:n")) << found.join(' ').toStdString();
   EXPECT_TRUE(found.contains("Order.customer=n:1"));
   EXPECT_TRUE(found.contains("Category.products=n:n"));
   EXPECT_TRUE(found.contains("Customer.profile=1:1"));
}

TEST(DiagramGraph, NamespaceFilterKeepsItsEntitiesAndTheEdgesBetweenThem)
{
   model::project_ptr p = readExample("shop.json");
   const diagram::graph g = diagram::buildGraph(* p, "shop::sales");
   QStringList keys;
   for (const diagram::box & b : g.boxes) { keys << b.sKey; }
   keys.sort();
   EXPECT_EQ(keys, QStringList({ "shop::sales::Invoice", "shop::sales::Order", "shop::sales::OrderItem" }));
   // Order.items, OrderItem.order, Invoice.order; the edges leaving the namespace are left out.
   EXPECT_EQ(g.edges.size(), 3);
   EXPECT_TRUE(diagram::buildGraph(* p, "sho").boxes.isEmpty());
   EXPECT_EQ(diagram::buildGraph(* p, "shop").boxes.size(), p->getListOfAllEntities()->size());
}

TEST(DiagramLayout, EveryBoxAndEdgeIsPlaced)
{
   model::project_ptr p = readExample("shop.json");
   diagram::graph g = diagram::buildGraph(* p);
   QString sError;
   ASSERT_TRUE(diagram::layout(g, sError)) << sError.toStdString();
   EXPECT_GT(g.bounds.width(), 0.0);
   for (int i = 0; i < g.boxes.size(); ++i)
   {
      const QRectF r = g.boxes.at(i).rect;
      EXPECT_GT(r.width(), 20.0);
      EXPECT_GT(r.height(), 20.0);
      EXPECT_TRUE(g.bounds.adjusted(-1, -1, 1, 1).contains(r)) << g.boxes.at(i).sKey.toStdString();
      for (int j = i + 1; j < g.boxes.size(); ++j) { EXPECT_FALSE(r.intersects(g.boxes.at(j).rect)); }
   }
   for (const diagram::edge & e : g.edges)
   {
      ASSERT_GE(e.points.size(), 2);
      // An edge starts at its source box and ends at its target (Graphviz clips at the border).
      EXPECT_TRUE(g.boxes.at(e.iFrom).rect.adjusted(-12, -12, 12, 12).contains(e.points.first()));
      EXPECT_TRUE(g.boxes.at(e.iTo).rect.adjusted(-12, -12, 12, 12).contains(e.points.last()));
   }
}

TEST(DiagramText, DotKeepsHostileTextInsideItsLabel)
{
   diagram::graph g = diagram::buildGraph(* hostileModel());
   QString sError;
   ASSERT_TRUE(diagram::layout(g, sError)) << sError.toStdString();
   QByteArray svg;
   ASSERT_TRUE(diagram::renderData(g, "svg", svg, sError)) << sError.toStdString();
   // The SVG is well-formed and shows the type as it is written (line break as a space).
   QXmlStreamReader xml(svg);
   QString text;
   int nodes = 0;
   while (! xml.atEnd())
   {
      xml.readNext();
      if (xml.isCharacters()) { text += xml.text(); }
      if (xml.isStartElement() && (xml.name() == QLatin1String("g")) && (xml.attributes().value("class") == QLatin1String("node"))) { ++nodes; }
   }
   ASSERT_FALSE(xml.hasError()) << xml.errorString().toStdString();
   EXPECT_EQ(nodes, 2);
   EXPECT_TRUE(text.contains("QMap<a, \"b\"> ]; n9 [label=x]; } & %%")) << text.toStdString();
}

TEST(DiagramText, MermaidLinesFollowItsGrammar)
{
   const QString text = diagram::toMermaid(diagram::buildGraph(* hostileModel()));
   const QStringList lines = text.split('\n', Qt::SkipEmptyParts);
   ASSERT_EQ(lines.first(), "erDiagram");
   const QRegularExpression entity(R"(^    [A-Za-z]\w*( \{)?$)");
   const QRegularExpression attribute(R"(^        [A-Za-z]\w* [A-Za-z]\w*( PK| FK)?( "[^"\n]*")?$)");
   const QRegularExpression relation(R"(^    [A-Za-z]\w* (\|\||\}o)(--|\.\.)(\|\||o\{) [A-Za-z]\w* : "[^"\n]*"$)");
   for (const QString & line : lines.mid(1))
   {
      const bool ok = entity.match(line).hasMatch() || attribute.match(line).hasMatch() || relation.match(line).hasMatch() || (line == "    }");
      EXPECT_TRUE(ok) << line.toStdString();
   }
   EXPECT_TRUE(text.contains("    evil__ns__A ||--o{ evil__B : \"bees\"\n")) << text.toStdString();
   EXPECT_TRUE(text.contains("    evil__B ||..|| evil__ns__A : \"extends\"\n"));
}

TEST(DiagramText, MermaidTextsOpenNoTag)
{
   auto p = std::make_shared<model::project>();
   model::entity_ptr a = addEntity(* p, "web", "Page");
   addProperty(a, "id", "long")->setPrimaryKey(true);
   addProperty(a, "s", "x<script>alert(1)</script>");
   addProperty(a, "i", "y<img src=x onerror=alert(1)> & #60;");
   const QString text = diagram::toMermaid(diagram::buildGraph(* p));
   EXPECT_FALSE(text.contains('<')) << text.toStdString();
   EXPECT_FALSE(text.contains('>')) << text.toStdString();
   EXPECT_FALSE(text.contains('&')) << text.toStdString();
   // The exact type is still there, as entity codes.
   EXPECT_TRUE(text.contains("\"x#60;script#62;alert(1)#60;/script#62;\"")) << text.toStdString();
   EXPECT_TRUE(text.contains("#38; #35;60;\"")) << text.toStdString();
}

TEST(DiagramFile, WritesEachFormatAndRefusesALink)
{
   QTemporaryDir tmp;
   ASSERT_TRUE(tmp.isValid());
   const diagram::graph g = diagram::buildGraph(* readExample("shop.json"));
   const QList<QPair<QString, QByteArray>> heads = { { "svg", "<?xml" }, { "png", "\x89PNG" }, { "pdf", "%PDF" },
                                                     { "dot", "digraph" }, { "mermaid", "erDiagram" } };
   QString sError;
   for (const auto & h : heads)
   {
      const QString path = tmp.filePath("shop." + h.first);
      ASSERT_TRUE(diagram::writeFile(g, h.first, path, sError)) << sError.toStdString();
      EXPECT_TRUE(test_support::readAll(path).startsWith(h.second)) << h.first.toStdString();
   }
   // A link is not followed; an unknown format leaves the file as it was.
   const QString target = tmp.filePath("target.txt");
   ASSERT_TRUE(test_support::writeAll(target, "kept"));
   ASSERT_TRUE(QFile::link(target, tmp.filePath("link.svg")));
   EXPECT_FALSE(diagram::writeFile(g, "svg", tmp.filePath("link.svg"), sError));
   EXPECT_TRUE(sError.contains("symbolic link"));
   EXPECT_FALSE(diagram::writeFile(g, "jpeg2", target, sError));
   EXPECT_EQ(test_support::readAll(target), QByteArray("kept"));
}
