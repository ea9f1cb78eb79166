#include "diagram/diagram_layout.h"
#include "diagram/diagram_text.h"

#include <QFileInfo>

#include <graphviz/gvc.h>

#include "tools/file_writer.h"

namespace diagram {

namespace {

// One Graphviz context for the whole process, never freed: the text renderer keeps a pointer to
// the last font name it measured, which lives in the context, and reads it at the next layout.
GVC_t * sharedContext()
{
   static GVC_t * s_pContext = gvContext();
   return s_pContext;
}

// The parsed graph and its layout, released on every path.
class gv_graph
{
   GVC_t * m_pContext = nullptr;
   Agraph_t * m_pGraph = nullptr;
   bool m_bLaidOut = false;

public:
   explicit gv_graph(const QString & sDot)
   {
      agseterr(AGMAX);
      m_pContext = sharedContext();
      const QByteArray text = sDot.toUtf8();
      if (m_pContext) { m_pGraph = agmemread(text.constData()); }
   }
   ~gv_graph()
   {
      if (m_bLaidOut) { gvFreeLayout(m_pContext, m_pGraph); }
      if (m_pGraph) { agclose(m_pGraph); }
   }
   gv_graph(const gv_graph &) = delete;
   gv_graph & operator=(const gv_graph &) = delete;

   bool layout(QString & sError)
   {
      if (! m_pGraph) { sError = QStringLiteral("Graphviz could not read the graph"); return false; }
      if (gvLayout(m_pContext, m_pGraph, "dot") != 0) { sError = QStringLiteral("Graphviz could not lay out the graph"); return false; }
      m_bLaidOut = true;
      return true;
   }
   GVC_t * context() const { return m_pContext; }
   Agraph_t * get() const { return m_pGraph; }
};

QPointF flipped(const pointf & p, double dTop) { return QPointF(p.x, dTop - p.y); }

void readEdge(Agedge_t * e, double dTop, edge & ed)
{
   ed.points.clear();
   if (splines * spl = ED_spl(e))
   {
      for (int i = 0; i < spl->size; ++i)
      {
         const bezier & bz = spl->list[i];
         for (int j = 0; j < bz.size; ++j) { ed.points.append(flipped(bz.list[j], dTop)); }
         if (bz.eflag) { ed.points.append(flipped(bz.ep, dTop)); }
      }
   }
   if (ED_tail_label(e)) { ed.tailPos = flipped(ED_tail_label(e)->pos, dTop); }
   if (ED_head_label(e)) { ed.headPos = flipped(ED_head_label(e)->pos, dTop); }
   if (ED_label(e)) { ed.labelPos = flipped(ED_label(e)->pos, dTop); }
}

void readPositions(Agraph_t * pGraph, graph & g)
{
   const boxf bb = GD_bb(pGraph);
   const double dTop = bb.UR.y;
   g.bounds = QRectF(0.0, 0.0, bb.UR.x - bb.LL.x, bb.UR.y - bb.LL.y);
   for (Agnode_t * n = agfstnode(pGraph); n; n = agnxtnode(pGraph, n))
   {
      const int i = QString::fromUtf8(agnameof(n)).mid(1).toInt();
      if ((i < 0) || (i >= g.boxes.size())) { continue; }
      const double w = ND_width(n) * 72.0;
      const double h = ND_height(n) * 72.0;
      const QPointF c = flipped(ND_coord(n), dTop);
      g.boxes[i].rect = QRectF(c.x() - w / 2.0, c.y() - h / 2.0, w, h);
      for (Agedge_t * e = agfstout(pGraph, n); e; e = agnxtout(pGraph, e))
      {
         char * id = agget(e, const_cast<char *>("id"));
         const int k = (id ? QString::fromUtf8(id).mid(1).toInt() : -1);
         if ((k >= 0) && (k < g.edges.size())) { readEdge(e, dTop, g.edges[k]); }
      }
   }
}

} // namespace

QString layoutSizeProblem(const graph & g)
{
   if ((g.boxes.size() <= k_iMaxLaidOutBoxes) && (g.edges.size() <= k_iMaxLaidOutEdges)) { return QString(); }
   return QString("the diagram has %1 entities and %2 relations; a picture is laid out for at most %3 entities and %4 relations "
                  "(one namespace at a time with --namespace, or the dot or mermaid text, which has no such bound)")
      .arg(g.boxes.size()).arg(g.edges.size()).arg(k_iMaxLaidOutBoxes).arg(k_iMaxLaidOutEdges);
}

bool layout(graph & g, QString & sError)
{
   sError = layoutSizeProblem(g);
   if (! sError.isEmpty()) { return false; }
   gv_graph gv(toDot(g));
   if (! gv.layout(sError)) { return false; }
   readPositions(gv.get(), g);
   return true;
}

QStringList formats()
{
   return { QStringLiteral("svg"), QStringLiteral("png"), QStringLiteral("pdf"), QStringLiteral("dot"), QStringLiteral("mermaid") };
}

bool renderData(const graph & g, const QString & sFormat, QByteArray & data, QString & sError)
{
   data.clear();
   if (sFormat == QLatin1String("dot")) { data = toDot(g).toUtf8(); return true; }
   if (sFormat == QLatin1String("mermaid")) { data = toMermaid(g).toUtf8(); return true; }
   if (! formats().contains(sFormat)) { sError = QString("unknown diagram format '%1' (known: %2)").arg(sFormat, formats().join(", ")); return false; }
   sError = layoutSizeProblem(g);
   if (! sError.isEmpty()) { return false; }
   gv_graph gv(toDot(g));
   if (! gv.layout(sError)) { return false; }
   char * pResult = nullptr;
   unsigned int iLength = 0;
   const QByteArray format = sFormat.toLatin1();
   if ((gvRenderData(gv.context(), gv.get(), format.constData(), & pResult, & iLength) != 0) || ! pResult || (iLength == 0))
   {
      if (pResult) { gvFreeRenderData(pResult); }
      sError = QString("Graphviz could not render %1 (is its %1 plug-in installed?)").arg(sFormat);
      return false;
   }
   data = QByteArray(pResult, int(iLength));
   gvFreeRenderData(pResult);
   return true;
}

bool writeFile(const graph & g, const QString & sFormat, const QString & sPath, QString & sError)
{
   // Refused before anything is rendered.
   const QFileInfo info(sPath);
   if (info.isSymLink()) { sError = QString("'%1' is a symbolic link; not written").arg(sPath); return false; }
   QByteArray data;
   if (! renderData(g, sFormat, data, sError)) { return false; }
   return tools::file_writer::write(sPath, data, sError);
}

} // namespace diagram
