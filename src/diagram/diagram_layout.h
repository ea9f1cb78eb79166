#pragma once

#include <QByteArray>
#include <QStringList>

#include "diagram/diagram_graph.h"

namespace diagram {

// The largest graph laid out by Graphviz: its layout time grows much faster than the graph, and
// past this size one layout takes minutes and gigabytes. Text formats (dot, mermaid) have no
// such bound.
constexpr int k_iMaxLaidOutBoxes = 300;
constexpr int k_iMaxLaidOutEdges = 600;

// Empty when the graph can be laid out, else why not and what to do instead.
QString layoutSizeProblem(const graph & g);

// Positions every box, edge and end label with Graphviz's "dot" layout (points, y downwards,
// the top left corner of the picture at 0,0). False with a reason when Graphviz fails or the
// graph is larger than the bounds above.
bool layout(graph & g, QString & sError);

// The formats writeFile knows: svg, png, pdf (rendered by Graphviz), dot and mermaid (text).
QStringList formats();

// The picture or text of a graph in one of formats().
bool renderData(const graph & g, const QString & sFormat, QByteArray & data, QString & sError);

// Writes renderData's result to sPath, replacing the file only once it is complete; refuses a
// symbolic link. A failure leaves an existing file as it was.
bool writeFile(const graph & g, const QString & sFormat, const QString & sPath, QString & sError);

} // namespace diagram
