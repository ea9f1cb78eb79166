#pragma once

#include <QByteArray>
#include <QStringList>

#include "diagram/diagram_graph.h"

namespace diagram {

// Positions every box, edge and end label with Graphviz's "dot" layout (points, y downwards,
// the top left corner of the picture at 0,0). False with a reason when Graphviz fails.
bool layout(graph & g, QString & sError);

// The formats writeFile knows: svg, png, pdf (rendered by Graphviz), dot and mermaid (text).
QStringList formats();

// The picture or text of a graph in one of formats().
bool renderData(const graph & g, const QString & sFormat, QByteArray & data, QString & sError);

// Writes renderData's result to sPath, replacing the file only once it is complete; refuses a
// symbolic link. A failure leaves an existing file as it was.
bool writeFile(const graph & g, const QString & sFormat, const QString & sPath, QString & sError);

} // namespace diagram
