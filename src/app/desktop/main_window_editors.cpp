// The item editors opened from the model tree and the property table; each accepted editor is
// one undo step.

#include "desktop/main_window.h"
#include "desktop/entity_dialog.h"
#include "desktop/enumeration_dialog.h"
#include "desktop/property_dialog.h"
#include "model/sql_meta_edit.h"

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"

namespace desktop {

// How the editors of entities and enumerations differ: where the items are, how one is copied,
// numbered and followed by its references, and the name a new one starts from.
template <typename T>
struct item_kind
{
   QList<std::shared_ptr<T> > model_state::* pList;
   std::shared_ptr<T> (* fnClone)(const T &);
   long (* fnNextId)(const model_state &);
   void (* fnRenameReferences)(model_state &, const QString &, const QString &);
   const char * szBaseName;
   // What else follows an edited item (the kept keys that point at an entity's table); or none.
   void (* fnFollowEdit)(model_state &, const T & before, const T & after);
};

namespace {

template <typename T>
QStringList namesOf(const T & lst)
{
   QStringList lstNames;
   for (const auto & p : lst) { if (p) { lstNames.append(p->getName()); } }
   return lstNames;
}

void followTable(model_state & s, const model::entity & before, const model::entity & after)
{
   model_edit::renameTableReferences(s, model::sql_meta::tableOf(before), model::sql_meta::tableOf(after));
}

const item_kind<model::entity> k_entityKind { & model_state::entities, & model_edit::cloneEntity, & model_edit::nextEntityId,
                                              & model_edit::renameEntityReferences, "Entity", & followTable };
const item_kind<model::enumeration> k_enumerationKind { & model_state::enumerations, & model_edit::cloneEnumeration, & model_edit::nextEnumerationId,
                                                        & model_edit::renameEnumerationReferences, "Enumeration", nullptr };

} // namespace

template <typename Dialog, typename T>
bool main_window::editItem(const std::shared_ptr<T> & pItem, const item_kind<T> & kind, const QStringList & lstTexts)
{
   if (! m_pProject) { return false; }
   model_state after = model_edit::stateOf(* m_pProject);
   QList<std::shared_ptr<T> > & lst = (after.* kind.pList);
   std::shared_ptr<T> pCopy;
   if (pItem) { pCopy = kind.fnClone(* pItem); }
   else
   {
      pCopy = std::make_shared<T>();
      pCopy->setId(kind.fnNextId(after));
      pCopy->setNamespace(currentNamespace());
      pCopy->setName(model_edit::freeName(namesOf(lst), kind.szBaseName));
   }
   const QString sOldKey = (pItem ? pItem->getKey() : QString());
   Dialog dlg(* pCopy, after, sOldKey, this);
   if (dlg.exec() != QDialog::Accepted) { return false; }
   dlg.applyTo(* pCopy);
   if (! pItem) { lst.append(pCopy); }
   else
   {
      lst.replace(lst.indexOf(pItem), pCopy);
      // A rename or a move takes the items naming it along (parents, relation targets, types).
      if (sOldKey != pCopy->getKey()) { kind.fnRenameReferences(after, sOldKey, pCopy->getKey()); }
      if (kind.fnFollowEdit) { kind.fnFollowEdit(after, * pItem, * pCopy); }
   }
   QString sText = (! pItem ? lstTexts.at(0).arg(pCopy->getKey()) : lstTexts.at(1).arg(sOldKey));
   if (pItem && (sOldKey != pCopy->getKey())) { sText = lstTexts.at(2).arg(sOldKey, pCopy->getKey()); }
   pushEdit(sText, after, model_place { pCopy->getKey(), QString() });
   return true;
}

bool main_window::editEntity(const model::entity_ptr & pEntity)
{
   return editItem<entity_dialog>(pEntity, k_entityKind, { tr("New entity %1"), tr("Edit entity %1"), tr("Rename entity %1 to %2") });
}

bool main_window::editEnumeration(const model::enumeration_ptr & pEnumeration)
{
   return editItem<enumeration_dialog>(pEnumeration, k_enumerationKind, { tr("New enumeration %1"), tr("Edit enumeration %1"), tr("Rename enumeration %1 to %2") });
}

bool main_window::editProperty(const model::entity_ptr & pEntity, const model::property_ptr & pProperty)
{
   if (! m_pProject || ! pEntity) { return false; }
   model_state after = model_edit::stateOf(* m_pProject);
   const qsizetype i = after.entities.indexOf(pEntity);
   if (i < 0) { return false; }
   model::entity_ptr pEntityCopy = model_edit::cloneEntity(* pEntity);
   const qsizetype j = (pProperty ? pEntity->getOwnProperties().indexOf(pProperty) : -1);
   model::property_ptr pCopy = ((j >= 0) ? pEntityCopy->getOwnProperties().at(j) : std::make_shared<model::property>());
   QStringList lstTaken = namesOf(pEntity->getOwnProperties());
   if (j >= 0) { lstTaken.removeAt(j); }
   else
   {
      pCopy->setId(model_edit::nextPropertyId(after));
      pCopy->setName(model_edit::freeName(lstTaken, "property"));
      auto pType = std::make_shared<model::property_type>();
      pType->setId(pCopy->getId());
      pType->setPrimitiveType("QString");
      pCopy->setType(pType);
   }
   property_dialog dlg(* pCopy, after, lstTaken, this);
   if (dlg.exec() != QDialog::Accepted) { return false; }
   dlg.applyTo(* pCopy);
   if (j < 0) { pCopy->setEntity(pEntityCopy); pEntityCopy->addProperty(pCopy); }
   after.entities.replace(i, pEntityCopy);
   if (j >= 0) { model_edit::renameColumnReferences(after, i, model::sql_meta::columnOf(* pProperty), model::sql_meta::columnOf(* pCopy)); }
   const QString sText = ((j < 0) ? tr("New property %1::%2") : tr("Edit property %1::%2"));
   pushEdit(sText.arg(pEntity->getKey(), pCopy->getName()), after, model_place { pEntity->getKey(), pCopy->getName() });
   return true;
}

} // namespace desktop
