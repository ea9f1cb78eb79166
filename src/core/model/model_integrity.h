#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"

namespace model {

// The rules a model must meet before anything reads it (the JSON import refuses a document that
// breaks them, the project file reader refuses a file): names that are identifiers, unique ids
// and keys, references that resolve, and an acyclic inheritance.
class TAVRELCORE_EXPORT model_integrity
{
public:
   // Every parent cycle once, as entity indexes in walking order from its first member in
   // document order (the cycle closes back on the first index).
   static QList<QList<qsizetype> > parentCycles(const list_of_entity & lstEntities);
   // "a::A -> a::B -> a::A" for a cycle of parentCycles().
   static QString cycleText(const list_of_entity & lstEntities, const QList<qsizetype> & lstCycle);

   // Entities and enumerations whose generated files would be one file: the same flattened key
   // ("::" replaced by "_"), keys that differ only in letter case (one include guard, one file on
   // a case-insensitive disk), or a project-level file's name. One message per clash, naming the
   // keys and the file. bForExport: items of id 0 (never exported) are left out and a repeated
   // key counts too (checkSchema reports those on their own). Also every generated file name
   // longer than a file system takes (255 bytes).
   static QStringList fileCollisions(const project & p, bool bForExport);

   // One message per broken rule, each naming the item ("Entity 'a::B' : name ..."). Empty
   // namespace parts are left to checkSchema, as the import keeps them.
   static QStringList problems(const project & p);
};

} // namespace model
