#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

#include "model/model_fwd.h"

namespace diagram {

// One row of a box: a property, its key and relation marks.
struct box_line
{
   QString sName;
   QString sType;
   bool bKey = false;
   bool bRelation = false;
};

// An entity. The rectangle is filled by the layout (points, y growing downwards).
struct box
{
   QString sKey;
   QString sName;
   QString sNamespace;
   QString sTable;
   bool bAbstract = false;
   QList<box_line> lines;
   QRectF rect;
};

// A relation (from the entity holding the property to its target, "1" or "n" at each end) or an
// inheritance (from the child to its parent). Points and label positions come from the layout.
struct edge
{
   int iFrom = -1;
   int iTo = -1;
   bool bInheritance = false;
   QString sLabel;
   QString sTail;
   QString sHead;
   QList<QPointF> points;
   QPointF tailPos;
   QPointF headPos;
   QPointF labelPos;
};

struct graph
{
   QList<box> boxes;
   QList<edge> edges;
   QRectF bounds;

   int indexOf(const QString & sKey) const;
};

// The entities of a project (only those of a namespace and the namespaces below it when
// sNamespace is not empty) and the relations and inheritances between the boxes shown.
graph buildGraph(const model::project & project, const QString & sNamespace = QString());

// The "1"/"n" marks of a relation kind at the holder's end and at the target's end.
void relationEnds(int iKind, QString & sTail, QString & sHead);

} // namespace diagram
