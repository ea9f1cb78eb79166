#include "diagram/diagram_graph.h"

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace diagram {

namespace {

bool inNamespace(const model::entity & e, const QString & sNamespace)
{
   if (sNamespace.isEmpty()) { return true; }
   const QString ns = e.getNamespace();
   return ((ns == sNamespace) || ns.startsWith(sNamespace + QLatin1String("::")));
}

box_line lineOf(const model::property & p)
{
   box_line line;
   line.sName = p.getName();
   line.bKey = p.isPrimaryKey();
   model::relationship_ptr pRelation = p.getRelation();
   line.bRelation = (pRelation != nullptr);
   if (pRelation)
   {
      model::entity_ptr pTarget = pRelation->getEntityTarget();
      line.sType = (pTarget ? pTarget->getName() : pRelation->getTargetKey().section(QLatin1String("::"), -1));
      QString sTail, sHead;
      relationEnds(pRelation->getType(), sTail, sHead);
      line.sType += QLatin1String(" (") + sTail + QLatin1Char(':') + sHead + QLatin1Char(')');
   }
   else if (model::property_type_ptr pType = p.getType()) { line.sType = pType->getTypeText(); }
   return line;
}

void addRelationEdges(graph & g, int iFrom, const model::entity & e)
{
   for (const model::property_ptr & p : e.getOwnProperties())
   {
      model::relationship_ptr pRelation = (p ? p->getRelation() : nullptr);
      if (! pRelation) { continue; }
      model::entity_ptr pTarget = pRelation->getEntityTarget();
      const int iTo = g.indexOf(pTarget ? pTarget->getKey() : pRelation->getTargetKey());
      if (iTo < 0) { continue; }
      edge ed;
      ed.iFrom = iFrom;
      ed.iTo = iTo;
      ed.sLabel = p->getName();
      relationEnds(pRelation->getType(), ed.sTail, ed.sHead);
      g.edges.append(ed);
   }
}

} // namespace

int graph::indexOf(const QString & sKey) const
{
   for (int i = 0; i < boxes.size(); ++i) { if (boxes.at(i).sKey == sKey) { return i; } }
   return -1;
}

void relationEnds(int iKind, QString & sTail, QString & sHead)
{
   const bool bManyHere = ((iKind == model::relationship::many_to_one) || (iKind == model::relationship::many_to_many));
   const bool bManyThere = ((iKind == model::relationship::one_to_many) || (iKind == model::relationship::many_to_many));
   sTail = (bManyHere ? QStringLiteral("n") : QStringLiteral("1"));
   sHead = (bManyThere ? QStringLiteral("n") : QStringLiteral("1"));
}

graph buildGraph(const model::project & project, const QString & sNamespace)
{
   graph g;
   QList<model::entity_ptr> shown;
   for (const model::entity_ptr & e : * project.getListOfAllEntities())
   {
      if (! e || ! inNamespace(* e, sNamespace)) { continue; }
      box b;
      b.sKey = e->getKey();
      b.sName = e->getName();
      b.sNamespace = e->getNamespace();
      b.sTable = e->getTableName();
      b.bAbstract = e->isAbstract();
      for (const model::property_ptr & p : e->getOwnProperties()) { if (p) { b.lines.append(lineOf(* p)); } }
      g.boxes.append(b);
      shown.append(e);
   }
   for (int i = 0; i < shown.size(); ++i)
   {
      const model::entity & e = * shown.at(i);
      addRelationEdges(g, i, e);
      model::entity_ptr pParent = e.getParent();
      const int iParent = g.indexOf(pParent ? pParent->getKey() : e.getParentKey());
      if (e.getParentKey().isEmpty() && ! pParent) { continue; }
      if (iParent < 0) { continue; }
      edge ed;
      ed.iFrom = i;
      ed.iTo = iParent;
      ed.bInheritance = true;
      g.edges.append(ed);
   }
   return g;
}

} // namespace diagram
