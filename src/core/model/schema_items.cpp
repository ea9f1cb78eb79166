// The checks of one entity or enumeration that the schema check runs for each item: shared by
// project::checkSchema and the schema check that keeps the results of items an edit left alone.
#include "model/schema_items.h"

#include <QSet>

#include <algorithm>
#include <functional>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_names.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace model {

namespace schema_items {

key_table::key_table(qsizetype iCount, key_at fctKeyAt) : m_fctKeyAt(std::move(fctKeyAt)), m_iSeed(QHashSeed::globalSeed())
{
   m_lstByHash.reserve(static_cast<size_t>(iCount));
   for (qsizetype i = 0; i < iCount; ++i)
   {
      const std::optional<QString> sKey = m_fctKeyAt(i);
      if (sKey) { m_lstByHash.emplace_back(qHash(* sKey, m_iSeed), i); }
   }
   // Equal hashes in document order, so the first match found is the first index.
   std::sort(m_lstByHash.begin(), m_lstByHash.end());
}

qsizetype key_table::indexOf(const QString & sKey) const
{
   const size_t iHash = qHash(sKey, m_iSeed);
   auto it = std::lower_bound(m_lstByHash.begin(), m_lstByHash.end(), std::make_pair(iHash, qsizetype(-1)));
   for (; (it != m_lstByHash.end()) && (it->first == iHash); ++it)
   {
      const std::optional<QString> sFound = m_fctKeyAt(it->second);
      if (sFound && (* sFound == sKey)) { return it->second; }
   }
   return -1;
}

QString entityLabel(const entity_ptr & p, qsizetype i)
{
   const QString sKey = p->getKey();
   return (p->getName().isEmpty() ? QString("Entity #%1").arg(i + 1) : QString("Entity '%1'").arg(sKey));
}

namespace {

QString enumerationLabel(const enumeration_ptr & p, qsizetype i)
{
   return (p->getName().isEmpty() ? QString("Enumeration #%1").arg(i + 1) : QString("Enumeration '%1'").arg(p->getKey()));
}

} // namespace

QString entityPath(qsizetype i) { return QString("entities[%1]").arg(i); }

namespace {

QString propertyPath(qsizetype i, qsizetype j) { return QString("entities[%1].properties[%2]").arg(i).arg(j); }
QString enumerationPath(qsizetype i) { return QString("enumerations[%1]").arg(i); }

void checkName(zy::ZyInvalidValueX & lst, const QString & sLabel, const QString & sName, const QString & sPath)
{
   if (sName.isEmpty()) { lst.append(zy::ZyInvalidValue(sLabel + " has no name", sPath)); return; }
   if (! model_names::isCppIdentifier(sName))
   { lst.append(zy::ZyInvalidValue(QString("%1 : name '%2' %3").arg(sLabel, sName, model_names::identifierProblem(sName)), sPath)); }
}

void checkNamespace(zy::ZyInvalidValueX & lst, const QString & sLabel, const QString & sNamespace, const QString & sPath)
{
   const QString sProblem = model_names::namespaceProblem(sNamespace);
   if (! sProblem.isEmpty())
   { lst.append(zy::ZyInvalidValue(QString("%1 : namespace '%2' %3").arg(sLabel, sNamespace, sProblem), sPath)); }
}

void checkOptionalIdentifier(zy::ZyInvalidValueX & lst, const QString & sLabel, const QString & sWhat, const QString & sValue, const QString & sPath)
{
   if (sValue.isEmpty() || model_names::isCppIdentifier(sValue)) { return; }
   lst.append(zy::ZyInvalidValue(QString("%1 : %2 '%3' %4").arg(sLabel, sWhat, sValue, model_names::identifierProblem(sValue)), sPath));
}

// Formatted on first use: nearly every property is valid, and formatting labels and paths that
// no message needs would be most of the schema check on large models.
class lazy_text
{
   std::function<QString()> m_fctMake;
   QString m_sText;
   bool m_bMade = false;

public:
   explicit lazy_text(std::function<QString()> fctMake) : m_fctMake(std::move(fctMake)) { ; }
   const QString & operator()()
   {
      if (! m_bMade) { m_sText = m_fctMake(); m_bMade = true; }
      return m_sText;
   }
};

void checkProperty(zy::ZyInvalidValueX & lst, const QString & sEntityLabel, const property_ptr & p, qsizetype j, lazy_text & sPath,
                   const key_table & hashEntities, const key_table & hashEnums)
{
   const QString sName = p->getName();
   lazy_text sLabel([&] { return (sName.isEmpty() ? QString("%1 : property #%2").arg(sEntityLabel).arg(j + 1)
                                                  : QString("%1 : property '%2'").arg(sEntityLabel, sName)); });
   if (sName.isEmpty()) { lst.append(zy::ZyInvalidValue(sLabel() + " has no name", sPath())); }
   else if (! model_names::isCppIdentifier(sName))
   { lst.append(zy::ZyInvalidValue(QString("%1 : name %2").arg(sLabel(), model_names::identifierProblem(sName)), sPath())); }

   property_type_ptr pType = p->getType();
   const bool bHasTypeText = (pType && ! pType->getPrimitiveType().isEmpty());
   const QString sEnumKey = p->getEnumerationKey();
   const bool bEnumKnown = (! sEnumKey.isEmpty() && hashEnums.contains(sEnumKey));
   if (! p->hasRelationship() && ! bHasTypeText && sEnumKey.isEmpty()) { lst.append(zy::ZyInvalidValue(sLabel() + " has no type", sPath())); }
   if (! sEnumKey.isEmpty() && ! bEnumKnown)
   { lst.append(zy::ZyInvalidValue(QString("%1 refers to enumeration '%2' which does not exist").arg(sLabel(), sEnumKey), sPath())); }

   if (pType)
   {
      const int iDecoration = pType->getDecoration();
      if ((iDecoration < property_type::decoration_none) || (iDecoration > property_type::decoration_optional))
      { lst.append(zy::ZyInvalidValue(QString("%1 has an invalid decoration code %2").arg(sLabel()).arg(iDecoration), sPath())); }
      const int iCollection = pType->getCollection();
      if ((iCollection < property_type::collection_none) || (iCollection > property_type::collection_std_vector))
      { lst.append(zy::ZyInvalidValue(QString("%1 has an invalid collection code %2").arg(sLabel()).arg(iCollection), sPath())); }
   }

   const int iAccess = p->getAccessibility();
   if ((iAccess < property::access_public) || (iAccess > property::access_private))
   { lst.append(zy::ZyInvalidValue(QString("%1 has an invalid accessibility code %2").arg(sLabel()).arg(iAccess), sPath())); }

   relationship_ptr pRelation = p->getRelation();
   if (! pRelation) { return; }
   const int iKind = pRelation->getType();
   if ((iKind < relationship::one_to_one) || (iKind > relationship::many_to_many))
   { lst.append(zy::ZyInvalidValue(QString("%1 has an invalid relation kind %2").arg(sLabel()).arg(iKind), sPath())); }
   const QString sTarget = pRelation->getTargetKey();
   if (sTarget.isEmpty()) { lst.append(zy::ZyInvalidValue(sLabel() + " has a relation without target", sPath())); }
   else if (! hashEntities.contains(sTarget))
   { lst.append(zy::ZyInvalidValue(QString("%1 has relation target '%2' which does not exist").arg(sLabel(), sTarget), sPath())); }
}


// What entities and enumerations share: a name, a namespace and a key given once.
template <typename Ptr>
void checkKeyedItem(zy::ZyInvalidValueX & lst, const QString & sLabel, const Ptr & p, qsizetype i, const QString & sPath,
                    const key_table & hashKeys, const char * szKind)
{
   checkName(lst, sLabel, p->getName(), sPath);
   checkNamespace(lst, sLabel, p->getNamespace(), sPath);
   const qsizetype iFirst = hashKeys.value(p->getKey(), i);
   if (iFirst != i)
   { lst.append(zy::ZyInvalidValue((QString("%1 is defined more than once (first as ") + szKind + " #%2)").arg(sLabel).arg(iFirst + 1), sPath)); }
}

} // namespace

void checkProjectName(zy::ZyInvalidValueX & lst, const QString & sName)
{
   if (sName.isEmpty()) { lst.append(zy::ZyInvalidValue("Project has no name", "name")); }
   else if (! model_names::isCppIdentifier(sName))
   { lst.append(zy::ZyInvalidValue(QString("Project name '%1' %2").arg(sName, model_names::identifierProblem(sName)), "name")); }
}

void appendParentCycles(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities)
{
   for (const QList<qsizetype> & lstCycle : model_integrity::parentCycles(lstEntities))
   {
      const qsizetype iFirst = lstCycle.first();
      lst.append(zy::ZyInvalidValue(QString("%1 : inheritance cycle %2").arg(entityLabel(lstEntities.at(iFirst), iFirst), model_integrity::cycleText(lstEntities, lstCycle)), entityPath(iFirst)));
   }
}

void appendSharedTables(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities)
{
   // An entity defined twice is reported as such, not as two users of its table.
   const key_table keys = firstIndexOfKeys(lstEntities);
   const key_table tables(lstEntities.size(), [&](qsizetype i) -> std::optional<QString> {
      const entity_ptr & p = lstEntities.at(i);
      if (! p || p->isAbstract() || (p->getName().isEmpty() && p->getTableName().isEmpty())) { return std::nullopt; }
      if (keys.value(p->getKey()) != i) { return std::nullopt; }
      return (p->getTableName().isEmpty() ? p->getName() : p->getTableName()).toLower();
   });
   const auto report = [&](qsizetype i, qsizetype iFirst, const QString & sWhat) {
      lst.append(zy::ZyInvalidValue(QString("%1 : %2 is also the table of %3").arg(entityLabel(lstEntities.at(i), i), sWhat,
                                                                                entityLabel(lstEntities.at(iFirst), iFirst)), entityPath(i)));
   };
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      const entity_ptr & p = lstEntities.at(i);
      if (! p || p->isAbstract() || (p->getName().isEmpty() && p->getTableName().isEmpty()) || (keys.value(p->getKey()) != i)) { continue; }
      const QString sTable = (p->getTableName().isEmpty() ? p->getName() : p->getTableName());
      const qsizetype iFirst = tables.value(sTable.toLower());
      if ((iFirst >= 0) && (iFirst != i)) { report(i, iFirst, "table '" + sTable + "'"); }
   }
   // Both sides of a relation may name its join table: only an entity's table clashes with it.
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      if (! lstEntities.at(i)) { continue; }
      for (const property_ptr & pProperty : lstEntities.at(i)->getOwnProperties())
      {
         const relationship_ptr pRelation = (pProperty ? pProperty->getRelation() : relationship_ptr());
         if (! pRelation || (pRelation->getType() != relationship::many_to_many) || pRelation->getExtraTable().isEmpty()) { continue; }
         const qsizetype iFirst = tables.value(pRelation->getExtraTable().toLower());
         if (iFirst >= 0) { report(i, iFirst, "join table '" + pRelation->getExtraTable() + "' of '" + pProperty->getName() + "'"); }
      }
   }
}

void appendClassNameClashes(zy::ZyInvalidValueX & lst, const list_of_entity & lstEntities, const list_of_enumeration & lstEnums,
                            const key_table & hashEntities, const key_table & hashEnums)
{
   // Every end of a class's key after a "::" (and the key itself): a property whose name is none
   // of them names no class of any namespace, which is what nearly every property is.
   QSet<QString> setEnds;
   auto addEnds = [&setEnds](const QString & sKey)
   {
      setEnds.insert(sKey);
      // Bounded by the key's length.
      for (qsizetype iAt = sKey.indexOf(QLatin1String("::")); iAt >= 0; iAt = sKey.indexOf(QLatin1String("::"), iAt + 1))
      { setEnds.insert(sKey.mid(iAt + 2)); }
   };
   for (const entity_ptr & p : lstEntities) { if (p) { addEnds(p->getKey()); } }
   for (const enumeration_ptr & p : lstEnums) { if (p) { addEnds(p->getKey()); } }
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      const entity_ptr & pEntity = lstEntities.at(i);
      if (! pEntity) { continue; }
      // The key a property's name would have in the entity's namespace, in one buffer per entity:
      // a model of thousands of entities has a hundred thousand properties to look up.
      QString sKey = (pEntity->getNamespace().isEmpty() ? QString() : pEntity->getNamespace() + QLatin1String("::"));
      const qsizetype iPrefix = sKey.size();
      const QString sEntityName = pEntity->getName();
      const list_of_property & lstProperties = pEntity->getOwnProperties();
      for (qsizetype j = 0; j < lstProperties.size(); ++j)
      {
         const QString sName = (lstProperties.at(j) ? lstProperties.at(j)->getName() : QString());
         if (sName.isEmpty()) { continue; }
         const bool bOwn = (sName == sEntityName);
         if (! bOwn && ! setEnds.contains(sName)) { continue; }
         sKey.resize(iPrefix);
         sKey.append(sName);
         const bool bEnum = (! bOwn && hashEnums.contains(sKey));
         if (! bOwn && ! bEnum && ! hashEntities.contains(sKey)) { continue; }
         const QString sLower = sName.left(1).toLower() + sName.mid(1);
         const QString sWhat = (bOwn ? QString("its own class") : (QString("the ") + (bEnum ? "enumeration" : "class") + " '" + sName + "' of its namespace"));
         lst.append(zy::ZyInvalidValue(QString("%1 : property '%2' is named like %3; the generated class does not compile (rename the property, "
                                               "for instance to '%4')").arg(entityLabel(pEntity, i), sName, sWhat, ((sLower != sName) ? sLower : (sName + "_"))),
                                       propertyPath(i, j)));
      }
   }
}

void checkEntity(zy::ZyInvalidValueX & lst, const entity_ptr & pEntity, qsizetype i,
                 const key_table & hashEntities, const key_table & hashEnums)
{
   const QString sLabel = entityLabel(pEntity, i);
   const QString sPath = entityPath(i);
   checkKeyedItem(lst, sLabel, pEntity, i, sPath, hashEntities, "entity");

   const QString sParentKey = pEntity->getParentKey();
   if (! sParentKey.isEmpty() && ! hashEntities.contains(sParentKey))
   { lst.append(zy::ZyInvalidValue(QString("%1 : parent '%2' does not exist").arg(sLabel, sParentKey), sPath)); }
   checkOptionalIdentifier(lst, sLabel, "validator method", pEntity->getValidatorMethod(), sPath);

   QStringList lstPrimaryKeys;
   QSet<QString> setNames;
   const list_of_property & lstProperties = pEntity->getOwnProperties();
   for (qsizetype j = 0; j < lstProperties.size(); ++j)
   {
      const property_ptr & pProperty = lstProperties.at(j);
      if (! pProperty) { continue; }
      lazy_text sPropertyPath([i, j] { return propertyPath(i, j); });
      checkProperty(lst, sLabel, pProperty, j, sPropertyPath, hashEntities, hashEnums);
      const QString sName = pProperty->getName();
      if (! sName.isEmpty())
      {
         if (setNames.contains(sName))
         { lst.append(zy::ZyInvalidValue(QString("%1 : property '%2' is defined more than once").arg(sLabel, sName), sPropertyPath())); }
         setNames.insert(sName);
      }
      if (pProperty->isPrimaryKey()) { lstPrimaryKeys.append("'" + sName + "'"); }
   }
   if (lstPrimaryKeys.size() > 1)
   { lst.append(zy::ZyInvalidValue(QString("%1 has more than one primary key (%2)").arg(sLabel, lstPrimaryKeys.join(", ")), sPath)); }
}

void checkEnumeration(zy::ZyInvalidValueX & lst, const enumeration_ptr & pEnum, qsizetype i,
                      const key_table & hashEntities, const key_table & hashEnums)
{
   const QString sLabel = enumerationLabel(pEnum, i);
   const QString sPath = enumerationPath(i);
   checkKeyedItem(lst, sLabel, pEnum, i, sPath, hashEnums, "enumeration");
   if (! pEnum->getName().isEmpty() && hashEntities.contains(pEnum->getKey()))
   { lst.append(zy::ZyInvalidValue(QString("%1 has the same key as entity #%2").arg(sLabel).arg(hashEntities.value(pEnum->getKey()) + 1), sPath)); }
   checkOptionalIdentifier(lst, sLabel, "enum name", pEnum->getEnumName(), sPath);

   qsizetype iValue = 0;
   for (const auto & keyValue : pEnum->getAllKeyValue())
   {
      const QString & sKey = keyValue.first;
      const QString sValuePath = QString("%1.values[%2]").arg(sPath).arg(iValue);
      if (sKey.isEmpty()) { lst.append(zy::ZyInvalidValue(QString("%1 : value #%2 has no key").arg(sLabel).arg(iValue + 1), sValuePath)); }
      else if (! model_names::isCppIdentifier(sKey))
      { lst.append(zy::ZyInvalidValue(QString("%1 : value key '%2' %3").arg(sLabel, sKey, model_names::identifierProblem(sKey)), sValuePath)); }
      ++iValue;
   }
}

} // namespace schema_items

} // namespace model
