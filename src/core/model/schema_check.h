#pragma once

#include <QHash>
#include <QList>
#include <QStringList>

#include <memory>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyInvalidValue.h"

namespace model {

// The schema check of a model that is edited item by item (the desktop host checks after each
// edit). An edited model gets new entities and enumerations for the ones an edit changes, never
// changes them in place: so the problems of an item are kept while the item, and what its
// problems depend on (its index when it has no name, the keys it refers to), stay the same.
// The rules over the whole model (inheritance cycles, file names) run every time.
class TAVRELCORE_EXPORT schema_check
{
   // One item's part of the check: what the item itself says (read once while it lives: its key,
   // whether it has a name, the keys it names) and the problems found for a signature.
   struct entry
   {
      std::shared_ptr<const void> pItem;   // held so that its address names no other item
      QString sKey;
      bool bNamed = false;
      QString sParent;
      QStringList lstTargets;
      QStringList lstEnums;
      bool bChecked = false;
      QList<qintptr> signature;
      qsizetype i = 0;
      zy::ZyInvalidValueX problems;
      zy::ZyInvalidValueX texts;
   };
   typedef QHash<const void *, entry> cache;

   cache m_entities;
   cache m_enumerations;
   qsizetype m_iChecked = 0;

public:
   // The list project::checkSchema gives, in the same order.
   zy::ZyInvalidValueX run(const project & p);
   // Entities and enumerations the last run checked again (the others were kept).
   qsizetype checkedItems() const { return m_iChecked; }
   // Forgets every kept result (after items were changed in place).
   void clear();

private:
   // The entries of a list's items in order: kept ones from the cache, new ones with their facts.
   template <typename List> QList<entry> entriesOf(const List & lst, const cache & previous) const;
   // Checks the entry again unless it was checked for that signature; paths follow its index.
   template <typename Check> void update(entry & e, qsizetype i, const QList<qintptr> & signature, const QString & sList, Check check);
   static cache cacheOf(const QList<entry> & lst);
};

} // namespace model
