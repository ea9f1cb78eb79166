#pragma once

#include <QString>

#include "diagram/diagram_graph.h"

namespace diagram {

// Graphs larger than this get a simpler layout (bounded passes, straight edges): written into
// the dot text, so Graphviz run by hand on it is bounded too.
constexpr int k_iSimpleLayoutBoxes = 60;
constexpr int k_iSimpleLayoutEdges = 80;

// The Graphviz description of a graph (nodes "n<index>", edges carrying id "e<index>"); every
// model text is escaped, so no name can end a label or add an attribute.
QString toDot(const graph & g);

// A Mermaid "erDiagram"; identifiers are made of letters, digits and '_' only, texts quoted
// without a quote inside.
QString toMermaid(const graph & g);

// The text of a box row as every output shows it ("PK id : long").
QString lineText(const box_line & line);

} // namespace diagram
