#include "diagram/diagram_text.h"

#include <QHash>
#include <QSet>

namespace diagram {

namespace {

// Text for an HTML-like Graphviz label: markup characters become entities, control characters
// (line breaks included) spaces.
QString html(const QString & s)
{
   QString r;
   r.reserve(s.size());
   for (const QChar c : s)
   {
      if (c == QLatin1Char('&')) { r += QLatin1String("&amp;"); }
      else if (c == QLatin1Char('<')) { r += QLatin1String("&lt;"); }
      else if (c == QLatin1Char('>')) { r += QLatin1String("&gt;"); }
      else if (c == QLatin1Char('"')) { r += QLatin1String("&quot;"); }
      else if (c.category() == QChar::Other_Control) { r += QLatin1Char(' '); }
      else { r += c; }
   }
   return r;
}

QString boxLabel(const box & b)
{
   QString s = QLatin1String("<<TABLE BORDER=\"0\" CELLBORDER=\"1\" CELLSPACING=\"0\" CELLPADDING=\"4\">"
                             "<TR><TD BGCOLOR=\"#dbe7f3\">");
   s += (b.bAbstract ? QLatin1String("<I>") + html(b.sName) + QLatin1String("</I>") : QLatin1String("<B>") + html(b.sName) + QLatin1String("</B>"));
   if (! b.sNamespace.isEmpty()) { s += QLatin1String("<BR/><FONT POINT-SIZE=\"9\">") + html(b.sNamespace) + QLatin1String("</FONT>"); }
   s += QLatin1String("</TD></TR>");
   if (! b.lines.isEmpty())
   {
      s += QLatin1String("<TR><TD ALIGN=\"LEFT\" BALIGN=\"LEFT\">");
      for (int i = 0; i < b.lines.size(); ++i)
      {
         const box_line & line = b.lines.at(i);
         if (i > 0) { s += QLatin1String("<BR/>"); }
         const QString t = html(lineText(line));
         s += (line.bRelation ? QLatin1String("<I>") + t + QLatin1String("</I>") : t);
      }
      s += QLatin1String("</TD></TR>");
   }
   return s + QLatin1String("</TABLE>>");
}

// Mermaid identifiers: letters, digits and '_', starting with a letter.
QString mermaidWord(const QString & s)
{
   QString r;
   for (const QChar c : s) { r += ((c.isLetterOrNumber() && (c.unicode() < 128)) ? c : QLatin1Char('_')); }
   if (r.isEmpty() || ! r.at(0).isLetter()) { r.prepend(QLatin1Char('T')); }
   return r;
}

// A quoted Mermaid text is rendered as HTML: markup signs become Mermaid's entity codes
// ("#60;"), so no model text can open a tag; '#' too, so none can write a code of its own.
QString mermaidQuoted(const QString & s)
{
   QString r;
   r.reserve(s.size() + 2);
   r += QLatin1Char('"');
   for (const QChar c : s)
   {
      switch (c.unicode())
      {
         case '"': case '<': case '>': case '&': case '#': case '\'':
            r += QLatin1Char('#') + QString::number(c.unicode()) + QLatin1Char(';');
            break;
         default: r += ((c.category() == QChar::Other_Control) ? QChar(QLatin1Char(' ')) : c); break;
      }
   }
   return r + QLatin1Char('"');
}

QStringList mermaidIds(const graph & g)
{
   QStringList ids;
   QSet<QString> used;
   for (const box & b : g.boxes)
   {
      const QString base = mermaidWord(QString(b.sKey).replace(QLatin1String("::"), QLatin1String("__")));
      QString id = base;
      for (int n = 2; used.contains(id); ++n) { id = base + QLatin1Char('_') + QString::number(n); }
      used.insert(id);
      ids.append(id);
   }
   return ids;
}

QString mermaidEnds(const edge & e)
{
   if (e.bInheritance) { return QStringLiteral("||..||"); }
   const QString left = (e.sTail == QLatin1String("n") ? QStringLiteral("}o") : QStringLiteral("||"));
   const QString right = (e.sHead == QLatin1String("n") ? QStringLiteral("o{") : QStringLiteral("||"));
   return left + QLatin1String("--") + right;
}

} // namespace

QString lineText(const box_line & line)
{
   QString s = (line.bKey ? QStringLiteral("PK ") : QString());
   return s + line.sName + QLatin1String(" : ") + line.sType;
}

QString toDot(const graph & g)
{
   QString s = QLatin1String("digraph model {\n"
                             "  graph [rankdir=TB, nodesep=0.5, ranksep=0.6, fontname=\"Helvetica\"];\n");
   // Past a few dozen crossing relations the layout's crossing and placement passes and its
   // curved edges take minutes: bounded passes and straight edges keep it to seconds.
   if ((g.boxes.size() > k_iSimpleLayoutBoxes) || (g.edges.size() > k_iSimpleLayoutEdges))
   { s += QLatin1String("  graph [nslimit=1, nslimit1=1, mclimit=0.1, splines=line];\n"); }
   s += QLatin1String(
                             "  node [shape=plain, fontname=\"Helvetica\", fontsize=10];\n"
                             "  edge [fontname=\"Helvetica\", fontsize=9, arrowsize=0.7, labeldistance=1.8];\n");
   for (int i = 0; i < g.boxes.size(); ++i)
   { s += QLatin1String("  n") + QString::number(i) + QLatin1String(" [label=") + boxLabel(g.boxes.at(i)) + QLatin1String("];\n"); }
   for (int i = 0; i < g.edges.size(); ++i)
   {
      const edge & e = g.edges.at(i);
      s += QString("  n%1 -> n%2 [id=\"e%3\"").arg(e.iFrom).arg(e.iTo).arg(i);
      if (e.bInheritance) { s += QLatin1String(", arrowhead=empty, style=dashed"); }
      else
      {
         s += QLatin1String(", arrowhead=vee, label=<") + html(e.sLabel) + QLatin1String(">, taillabel=<") + html(e.sTail)
            + QLatin1String(">, headlabel=<") + html(e.sHead) + QLatin1Char('>');
      }
      s += QLatin1String("];\n");
   }
   return s + QLatin1String("}\n");
}

QString toMermaid(const graph & g)
{
   const QStringList ids = mermaidIds(g);
   QString s = QLatin1String("erDiagram\n");
   for (int i = 0; i < g.boxes.size(); ++i)
   {
      const box & b = g.boxes.at(i);
      if (b.lines.isEmpty()) { s += QLatin1String("    ") + ids.at(i) + QLatin1Char('\n'); continue; }
      s += QLatin1String("    ") + ids.at(i) + QLatin1String(" {\n");
      for (const box_line & line : b.lines)
      {
         const QString type = mermaidWord(line.sType.section(QLatin1String(" ("), 0, 0));
         s += QLatin1String("        ") + type + QLatin1Char(' ') + mermaidWord(line.sName);
         if (line.bKey) { s += QLatin1String(" PK"); }
         else if (line.bRelation) { s += QLatin1String(" FK"); }
         // The exact type as a comment when the identifier had to change it.
         if (type != line.sType) { s += QLatin1Char(' ') + mermaidQuoted(line.sType); }
         s += QLatin1Char('\n');
      }
      s += QLatin1String("    }\n");
   }
   for (const edge & e : g.edges)
   {
      s += QLatin1String("    ") + ids.at(e.iFrom) + QLatin1Char(' ') + mermaidEnds(e) + QLatin1Char(' ') + ids.at(e.iTo)
         + QLatin1String(" : ") + mermaidQuoted(e.bInheritance ? QStringLiteral("extends") : e.sLabel) + QLatin1Char('\n');
   }
   return s;
}

} // namespace diagram
