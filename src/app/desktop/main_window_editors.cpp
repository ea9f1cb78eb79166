// The item editors opened from the model tree and the property table; each accepted editor is
// one undo step.

#include "desktop/main_window.h"
#include "desktop/entity_dialog.h"
#include "desktop/enumeration_dialog.h"
#include "desktop/property_dialog.h"

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"

namespace desktop {

namespace {

template <typename T>
QStringList namesOf(const T & lst)
{
   QStringList lstNames;
   for (const auto & p : lst) { if (p) { lstNames.append(p->getName()); } }
   return lstNames;
}

} // namespace

bool main_window::editEntity(const model::entity_ptr & pEntity)
{
   if (! m_pProject) { return false; }
   model_state after = model_edit::stateOf(* m_pProject);
   model::entity_ptr pCopy;
   if (pEntity) { pCopy = model_edit::cloneEntity(* pEntity); }
   else
   {
      pCopy = std::make_shared<model::entity>();
      pCopy->setId(model_edit::nextEntityId(after));
      pCopy->setNamespace(currentNamespace());
      pCopy->setName(model_edit::freeName(namesOf(after.entities), "Entity"));
   }
   const QString sOldKey = (pEntity ? pEntity->getKey() : QString());
   entity_dialog dlg(* pCopy, after, sOldKey, this);
   if (dlg.exec() != QDialog::Accepted) { return false; }
   dlg.applyTo(* pCopy);
   if (! pEntity) { after.entities.append(pCopy); }
   else
   {
      after.entities.replace(after.entities.indexOf(pEntity), pCopy);
      // A rename or a move takes the parents and relation targets naming the entity along.
      if (sOldKey != pCopy->getKey()) { model_edit::renameEntityReferences(after, sOldKey, pCopy->getKey()); }
   }
   QString sText = (! pEntity ? tr("New entity %1").arg(pCopy->getKey()) : tr("Edit entity %1").arg(sOldKey));
   if (pEntity && (sOldKey != pCopy->getKey())) { sText = tr("Rename entity %1 to %2").arg(sOldKey, pCopy->getKey()); }
   pushEdit(sText, after, model_place { pCopy->getKey(), QString() });
   return true;
}

bool main_window::editEnumeration(const model::enumeration_ptr & pEnumeration)
{
   if (! m_pProject) { return false; }
   model_state after = model_edit::stateOf(* m_pProject);
   model::enumeration_ptr pCopy;
   if (pEnumeration) { pCopy = model_edit::cloneEnumeration(* pEnumeration); }
   else
   {
      pCopy = std::make_shared<model::enumeration>();
      pCopy->setId(model_edit::nextEnumerationId(after));
      pCopy->setNamespace(currentNamespace());
      pCopy->setName(model_edit::freeName(namesOf(after.enumerations), "Enumeration"));
   }
   const QString sOldKey = (pEnumeration ? pEnumeration->getKey() : QString());
   enumeration_dialog dlg(* pCopy, after, sOldKey, this);
   if (dlg.exec() != QDialog::Accepted) { return false; }
   dlg.applyTo(* pCopy);
   if (! pEnumeration) { after.enumerations.append(pCopy); }
   else
   {
      after.enumerations.replace(after.enumerations.indexOf(pEnumeration), pCopy);
      if (sOldKey != pCopy->getKey()) { model_edit::renameEnumerationReferences(after, sOldKey, pCopy->getKey()); }
   }
   QString sText = (! pEnumeration ? tr("New enumeration %1").arg(pCopy->getKey()) : tr("Edit enumeration %1").arg(sOldKey));
   if (pEnumeration && (sOldKey != pCopy->getKey())) { sText = tr("Rename enumeration %1 to %2").arg(sOldKey, pCopy->getKey()); }
   pushEdit(sText, after, model_place { pCopy->getKey(), QString() });
   return true;
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
   const QString sText = ((j < 0) ? tr("New property %1::%2") : tr("Edit property %1::%2"));
   pushEdit(sText.arg(pEntity->getKey(), pCopy->getName()), after, model_place { pEntity->getKey(), pCopy->getName() });
   return true;
}

} // namespace desktop
