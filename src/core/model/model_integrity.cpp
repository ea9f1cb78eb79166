#include "model/model_integrity.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include <QHash>
#include <QSet>
#include <QVector>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_names.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace model {

namespace {

QString nameProblem(const QString & sName)
{
   if (sName.isEmpty()) { return QString("has no name"); }
   if (model_names::isCppIdentifier(sName)) { return QString(); }
   return QString(": name '%1' %2").arg(sName, model_names::identifierProblem(sName));
}

// Labels are made only for a message: nearly every item of a large model is fine.
template <typename Label>
void checkNamed(QStringList & lst, const Label & label, const QString & sName, const QString & sNamespace)
{
   const QString sNameProblem = nameProblem(sName);
   if (! sNameProblem.isEmpty()) { lst.append(label() + " " + sNameProblem); }
   const QString sNamespaceProblem = model_names::namespacePartProblem(sNamespace);
   if (! sNamespaceProblem.isEmpty()) { lst.append(QString("%1 : namespace '%2' : %3").arg(label(), sNamespace, sNamespaceProblem)); }
}

template <typename Label>
void checkOptionalIdentifier(QStringList & lst, const Label & label, const char * szWhat, const QString & sValue)
{
   if (sValue.isEmpty() || model_names::isCppIdentifier(sValue)) { return; }
   lst.append(QString("%1 : %2 '%3' %4").arg(label(), QString::fromLatin1(szWhat), sValue, model_names::identifierProblem(sValue)));
}

// Ids of one kind: 0 means "not stored" and may repeat, any other id names one item. The hash
// keeps the first owner's position, its label is made when a repeat is reported.
template <typename Position, typename Label, typename LabelOf>
void checkId(QStringList & lst, QHash<long, Position> & hashIds, long lId, const Position & pos, const Label & label,
             const LabelOf & labelOf, const char * szKindPlural)
{
   if (lId < 0) { lst.append(QString("%1 : id %2 is negative").arg(label()).arg(lId)); return; }
   if (lId == 0) { return; }
   auto itr = hashIds.constFind(lId);
   if (itr != hashIds.constEnd())
   {
      lst.append(QString("%1 : id %2 is already used by %3 (ids of %4 must be unique)").arg(label()).arg(lId).arg(labelOf(itr.value()), QString::fromLatin1(szKindPlural)));
      return;
   }
   hashIds.insert(lId, pos);
}

template <typename Label>
void checkCode(QStringList & lst, const Label & label, const char * szWhat, int iCode, int iLast)
{
   if ((iCode < 0) || (iCode > iLast)) { lst.append(QString("%1 has an invalid %2 code %3").arg(label(), QString::fromLatin1(szWhat)).arg(iCode)); }
}


// The checks of problems(), in the order their messages come: the project's name, the
// enumerations, the entities' keys, then what the entities refer to, then inheritance cycles.
class integrity_check
{
   const project & m_project;
   const list_of_entity & m_lstEntities;
   const list_of_enumeration & m_lstEnums;
   QStringList m_lst;
   QHash<long, qsizetype> m_hashEnumIds, m_hashEntityIds;
   // Properties whose id repeats an earlier one's: their place, packed, and the first owner's.
   QHash<quint64, quint64> m_hashRepeatedPropertyIds;
   QHash<QString, qsizetype> m_hashEnumKeys;
   // Entity keys by their hash, each compared with its entity's key: a copy of every key would
   // cost more than the entity itself on large models.
   std::unordered_multimap<size_t, qsizetype> m_mapEntityKeys;

   static quint64 pack(const QPair<qsizetype, qsizetype> & pos) { return (quint64(pos.first) << 24) | quint64(pos.second); }
   static QPair<qsizetype, qsizetype> unpack(quint64 u) { return QPair<qsizetype, qsizetype>(qsizetype(u >> 24), qsizetype(u & 0xFFFFFF)); }

   bool isEntityKey(const QString & sKey) const
   {
      const auto range = m_mapEntityKeys.equal_range(qHash(sKey));
      for (auto itr = range.first; itr != range.second; ++itr) { if (m_lstEntities.at(itr->second)->getKey() == sKey) { return true; } }
      return false;
   }

   // One sorted copy of the positive ids (16 bytes a property) instead of a table of all.
   void findRepeatedPropertyIds()
   {
      std::vector<std::pair<long, quint64> > lstIds;
      for (qsizetype i = 0; i < m_lstEntities.size(); ++i)
      {
         if (! m_lstEntities.at(i)) { continue; }
         const list_of_property & lstProperties = m_lstEntities.at(i)->getOwnProperties();
         for (qsizetype j = 0; (j < lstProperties.size()) && (j < 0xFFFFFF); ++j)
         {
            if (lstProperties.at(j) && (lstProperties.at(j)->getId() > 0)) { lstIds.emplace_back(lstProperties.at(j)->getId(), pack({ i, j })); }
         }
      }
      std::sort(lstIds.begin(), lstIds.end());
      for (size_t k = 1; k < lstIds.size(); ++k)
      {
         if (lstIds[k].first != lstIds[k - 1].first) { continue; }
         size_t iFirst = k - 1;
         while ((iFirst > 0) && (lstIds[iFirst - 1].first == lstIds[k].first)) { --iFirst; }
         m_hashRepeatedPropertyIds.insert(lstIds[k].second, lstIds[iFirst].second);
      }
   }

public:
   explicit integrity_check(const project & p)
      : m_project(p), m_lstEntities(* p.getListOfAllEntities()), m_lstEnums(* p.getListOfAllEnums()) { ; }

   QStringList problems()
   {
      // First, so that its sorted copy is freed before the key tables are made.
      findRepeatedPropertyIds();
      checkProjectName();
      for (qsizetype i = 0; i < m_lstEnums.size(); ++i) { if (m_lstEnums.at(i)) { checkEnumeration(i); } }
      for (qsizetype i = 0; i < m_lstEntities.size(); ++i) { if (m_lstEntities.at(i)) { checkEntityKey(i); } }
      for (qsizetype i = 0; i < m_lstEntities.size(); ++i) { if (m_lstEntities.at(i)) { checkEntityReferences(i); } }
      for (const QList<qsizetype> & lstCycle : model_integrity::parentCycles(m_lstEntities))
      {
         const entity_ptr & pFirst = m_lstEntities.at(lstCycle.first());
         m_lst.append(QString("Entity '%1' : inheritance cycle %2").arg(pFirst->getKey(), model_integrity::cycleText(m_lstEntities, lstCycle)));
      }
      return m_lst;
   }

private:
   QString enumLabel(qsizetype i) const
   {
      const enumeration_ptr & pEnum = m_lstEnums.at(i);
      return (pEnum->getName().isEmpty() ? QString("Enumeration #%1").arg(i + 1) : QString("Enumeration '%1'").arg(pEnum->getKey()));
   }

   QString entityLabel(qsizetype i) const
   {
      const entity_ptr & pEntity = m_lstEntities.at(i);
      return (pEntity->getName().isEmpty() ? QString("Entity #%1").arg(i + 1) : QString("Entity '%1'").arg(pEntity->getKey()));
   }

   QString propertyLabel(const QPair<qsizetype, qsizetype> & pos) const
   {
      const QString sName = m_lstEntities.at(pos.first)->getOwnProperties().at(pos.second)->getName();
      return (sName.isEmpty() ? QString("%1 : property #%2").arg(entityLabel(pos.first)).arg(pos.second + 1)
                              : QString("%1 : property '%2'").arg(entityLabel(pos.first), sName));
   }

   void checkProjectName()
   {
      const QString sProjectName = m_project.getName();
      // A file holding only the tables (no model yet) takes its name from the file.
      if (sProjectName.isEmpty()) { if (! m_lstEntities.isEmpty() || ! m_lstEnums.isEmpty()) { m_lst.append("Project has no name"); } }
      else if (! model_names::isCppIdentifier(sProjectName))
      { m_lst.append(QString("Project name '%1' %2").arg(sProjectName, model_names::identifierProblem(sProjectName))); }
   }

   void checkEnumeration(qsizetype i)
   {
      const enumeration_ptr & pEnum = m_lstEnums.at(i);
      auto label = [this, i] { return enumLabel(i); };
      checkNamed(m_lst, label, pEnum->getName(), pEnum->getNamespace());
      checkId(m_lst, m_hashEnumIds, pEnum->getId(), i, label, [this](qsizetype k) { return enumLabel(k); }, "enumerations");
      checkOptionalIdentifier(m_lst, label, "enum name", pEnum->getEnumName());
      for (const auto & keyValue : pEnum->getAllKeyValue())
      {
         if (! model_names::isCppIdentifier(keyValue.first))
         { m_lst.append(QString("%1 : value key '%2' %3").arg(label(), keyValue.first, model_names::identifierProblem(keyValue.first))); }
      }
      if (pEnum->getName().isEmpty()) { return; }
      if (m_hashEnumKeys.contains(pEnum->getKey())) { m_lst.append(QString("%1 is defined more than once").arg(label())); }
      else { m_hashEnumKeys.insert(pEnum->getKey(), i); }
   }

   void checkEntityKey(qsizetype i)
   {
      const entity & e = (* m_lstEntities.at(i));
      auto label = [this, i] { return entityLabel(i); };
      checkNamed(m_lst, label, e.getName(), e.getNamespace());
      checkId(m_lst, m_hashEntityIds, e.getId(), i, label, [this](qsizetype k) { return entityLabel(k); }, "entities");
      checkOptionalIdentifier(m_lst, label, "validator method", e.getValidatorMethod());
      if (e.getName().isEmpty()) { return; }
      const QString sKey = e.getKey();
      if (isEntityKey(sKey)) { m_lst.append(QString("%1 is defined more than once").arg(label())); }
      else if (m_hashEnumKeys.contains(sKey)) { m_lst.append(QString("%1 has the same key as %2").arg(label(), enumLabel(m_hashEnumKeys.value(sKey)))); }
      else { m_mapEntityKeys.emplace(qHash(sKey), i); }
   }

   void checkEntityReferences(qsizetype i)
   {
      const entity_ptr & pEntity = m_lstEntities.at(i);
      const QString sParentKey = pEntity->getParentKey();
      if (! sParentKey.isEmpty() && ! isEntityKey(sParentKey))
      { m_lst.append(QString("%1 : parent '%2' is not an entity of the project").arg(entityLabel(i), sParentKey)); }

      QSet<QString> setNames;
      const list_of_property & lstProperties = pEntity->getOwnProperties();
      for (qsizetype j = 0; j < lstProperties.size(); ++j)
      {
         if (lstProperties.at(j)) { checkProperty(* lstProperties.at(j), QPair<qsizetype, qsizetype>(i, j), setNames); }
      }
   }

   void checkProperty(const property & prop, const QPair<qsizetype, qsizetype> & pos, QSet<QString> & setNames)
   {
      auto label = [this, pos] { return propertyLabel(pos); };
      const QString sName = prop.getName();
      const QString sProblem = nameProblem(sName);
      if (! sProblem.isEmpty()) { m_lst.append(label() + " " + sProblem); }
      else if (setNames.contains(sName)) { m_lst.append(label() + " is defined more than once"); }
      setNames.insert(sName);
      if (prop.getId() < 0) { m_lst.append(QString("%1 : id %2 is negative").arg(label()).arg(prop.getId())); }
      const auto itrRepeat = m_hashRepeatedPropertyIds.constFind(pack(pos));
      if (itrRepeat != m_hashRepeatedPropertyIds.constEnd())
      {
         m_lst.append(QString("%1 : id %2 is already used by %3 (ids of properties must be unique)")
                         .arg(label()).arg(prop.getId()).arg(propertyLabel(unpack(itrRepeat.value()))));
      }
      checkCode(m_lst, label, "accessibility", prop.getAccessibility(), property::access_private);
      if (property_type_ptr pType = prop.getType())
      {
         checkCode(m_lst, label, "decoration", pType->getDecoration(), property_type::decoration_optional);
         checkCode(m_lst, label, "collection", pType->getCollection(), property_type::collection_std_vector);
      }
      const QString sEnumKey = prop.getEnumerationKey();
      if (! sEnumKey.isEmpty() && ! m_hashEnumKeys.contains(sEnumKey))
      { m_lst.append(QString("%1 : enumeration '%2' is not an enumeration of the project").arg(label(), sEnumKey)); }
      if (relationship_ptr pRelation = prop.getRelation())
      {
         checkCode(m_lst, label, "relation kind", pRelation->getType(), relationship::many_to_many);
         const QString sTarget = pRelation->getTargetKey();
         if (sTarget.isEmpty()) { m_lst.append(label() + " has a relation without target"); }
         else if (! isEntityKey(sTarget))
         { m_lst.append(QString("%1 : relation target '%2' is not an entity of the project").arg(label(), sTarget)); }
      }
   }
};

// A file system takes at most 255 bytes a name: a longer one fails halfway through an export.
// The source file is the longest of an item's names, the precompiled header the project's.
QStringList longFileNames(const project & p, bool bForExport)
{
   const qsizetype k_iMaxName = 255;
   QStringList lst;
   auto check = [&](const QString & sWho, const QString & sFile)
   {
      const qsizetype iBytes = sFile.toUtf8().size();
      if (iBytes <= k_iMaxName) { return; }
      lst.append(QString("%1 gives the generated file name '%2', %3 bytes long : a file name may have at most %4 bytes")
                    .arg(sWho, sFile).arg(iBytes).arg(k_iMaxName));
   };
   auto flat = [](const QString & sKey) { return QString(sKey).replace(QLatin1String("::"), QLatin1String("_")); };
   for (const entity_ptr & pEntity : (* p.getListOfAllEntities()))
   {
      if (pEntity && (! bForExport || (pEntity->getId() != 0))) { check("Entity '" + pEntity->getKey() + "'", flat(pEntity->getKey()) + ".gen.cpp"); }
   }
   for (const enumeration_ptr & pEnum : (* p.getListOfAllEnums()))
   {
      if (pEnum && (! bForExport || (pEnum->getId() != 0))) { check("Enumeration '" + pEnum->getKey() + "'", flat(pEnum->getKey()) + ".gen.cpp"); }
   }
   check("Project '" + p.getName() + "'", p.getName() + "_precompiled_header.gen.h");
   return lst;
}

} // namespace

QList<QList<qsizetype> > model_integrity::parentCycles(const list_of_entity & lstEntities)
{
   // No parent, no cycle: a large model then needs no key table.
   if (std::none_of(lstEntities.cbegin(), lstEntities.cend(), [](const entity_ptr & p) { return (p && ! p->getParentKey().isEmpty()); })) { return {}; }
   QHash<QString, qsizetype> hashFirst;
   hashFirst.reserve(lstEntities.size());
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      if (lstEntities.at(i) && ! hashFirst.contains(lstEntities.at(i)->getKey())) { hashFirst.insert(lstEntities.at(i)->getKey(), i); }
   }

   // Every entity is walked at most once (state 2 = known to end outside a cycle or reported).
   QList<QList<qsizetype> > lstResult;
   QVector<char> lstState(lstEntities.size(), 0);
   for (qsizetype i = 0; i < lstEntities.size(); ++i)
   {
      if (lstState.at(i) != 0) { continue; }
      QList<qsizetype> lstPath;
      qsizetype iCurrent = i;
      while ((iCurrent >= 0) && (lstState.at(iCurrent) == 0))
      {
         lstState[iCurrent] = 1;
         lstPath.append(iCurrent);
         const entity_ptr & p = lstEntities.at(iCurrent);
         const QString sParentKey = (p ? p->getParentKey() : QString());
         iCurrent = (sParentKey.isEmpty() ? -1 : hashFirst.value(sParentKey, -1));
      }
      if ((iCurrent >= 0) && (lstState.at(iCurrent) == 1))
      {
         const QList<qsizetype> lstCycle = lstPath.mid(lstPath.indexOf(iCurrent));
         qsizetype iMin = 0;
         for (qsizetype k = 1; k < lstCycle.size(); ++k) { if (lstCycle.at(k) < lstCycle.at(iMin)) { iMin = k; } }
         QList<qsizetype> lstOrdered;
         for (qsizetype k = 0; k < lstCycle.size(); ++k) { lstOrdered.append(lstCycle.at((iMin + k) % lstCycle.size())); }
         lstResult.append(lstOrdered);
      }
      for (qsizetype k : lstPath) { lstState[k] = 2; }
   }
   return lstResult;
}

QString model_integrity::cycleText(const list_of_entity & lstEntities, const QList<qsizetype> & lstCycle)
{
   QStringList lstKeys;
   for (qsizetype i : lstCycle) { lstKeys.append(lstEntities.at(i)->getKey()); }
   if (! lstCycle.isEmpty()) { lstKeys.append(lstEntities.at(lstCycle.first())->getKey()); }
   return lstKeys.join(" -> ");
}

namespace {

// The entities and enumerations whose generated files may clash. A hash per item first, texts
// only for the items whose hashes meet: large models have hardly any clash, and a few texts
// per item would outgrow the model itself.
class file_items
{
   struct item { const char * szKind; bool bEnum; qsizetype iIndex; };
   const list_of_entity & m_lstEntities;
   const list_of_enumeration & m_lstEnums;
   QList<item> m_lstItems;
   std::vector<bool> m_lstCandidate;

   // Nameless and repeated keys are schema errors of their own: left out unless exporting.
   void collect(bool bForExport)
   {
      std::unordered_multimap<size_t, qsizetype> mapKeys;
      auto add = [&](const char * szKind, bool bEnum, qsizetype iIndex, const QString & sKey)
      {
         if (! bForExport)
         {
            if (sKey.isEmpty()) { return; }
            const size_t h = qHash(sKey);
            const auto range = mapKeys.equal_range(h);
            for (auto itr = range.first; itr != range.second; ++itr) { if (key(itr->second) == sKey) { return; } }
            mapKeys.emplace(h, m_lstItems.size());
         }
         m_lstItems.append(item { szKind, bEnum, iIndex });
      };
      for (qsizetype i = 0; i < m_lstEntities.size(); ++i)
      {
         const entity_ptr & pEntity = m_lstEntities.at(i);
         if (pEntity && (! bForExport || (pEntity->getId() != 0))) { add("entity", false, i, pEntity->getKey()); }
      }
      for (qsizetype i = 0; i < m_lstEnums.size(); ++i)
      {
         const enumeration_ptr & pEnum = m_lstEnums.at(i);
         if (pEnum && (! bForExport || (pEnum->getId() != 0))) { add("enumeration", true, i, pEnum->getKey()); }
      }
   }

   // Items whose folded names' hashes meet another's, or a project file's.
   void markCandidates(const QStringList & lstProjectFlats)
   {
      std::unordered_map<size_t, qsizetype> mapFolds;   // -1: a project file
      for (const QString & sFlat : lstProjectFlats) { mapFolds.emplace(qHash(sFlat.toLower()), -1); }
      m_lstCandidate.assign(size_t(m_lstItems.size()), false);
      for (qsizetype i = 0; i < m_lstItems.size(); ++i)
      {
         const auto ins = mapFolds.emplace(qHash(flat(i).toLower()), i);
         if (ins.second) { continue; }
         m_lstCandidate[size_t(i)] = true;
         if (ins.first->second >= 0) { m_lstCandidate[size_t(ins.first->second)] = true; }
      }
   }

public:
   file_items(const project & p, bool bForExport, const QStringList & lstProjectFlats)
      : m_lstEntities(* p.getListOfAllEntities()), m_lstEnums(* p.getListOfAllEnums())
   {
      collect(bForExport);
      markCandidates(lstProjectFlats);
   }

   qsizetype size() const { return m_lstItems.size(); }
   bool isCandidate(qsizetype i) const { return m_lstCandidate[size_t(i)]; }
   QString key(qsizetype i) const
   {
      const item & x = m_lstItems.at(i);
      return (x.bEnum ? m_lstEnums.at(x.iIndex)->getKey() : m_lstEntities.at(x.iIndex)->getKey());
   }
   QString flat(qsizetype i) const { return key(i).replace(QLatin1String("::"), QLatin1String("_")); }
   QString label(qsizetype i) const { return QString("%1 '%2'").arg(QString::fromLatin1(m_lstItems.at(i).szKind), key(i)); }
};

} // namespace

QStringList model_integrity::fileCollisions(const project & p, bool bForExport)
{
   const char * const aszProjectFiles[] = { "include/%1_precompiled_header.gen.h", "include/%1_export.gen.h",
                                            "include/%1_all_include.gen.h", "src/%1_all.gen.cpp", "src/%1_main.gen.cpp" };
   const QString sProject = p.getName();
   QStringList lstProjectFlats;
   if (! sProject.isEmpty())
   {
      for (const char * szFile : aszProjectFiles) { lstProjectFlats.append(QString::fromLatin1(szFile).arg(sProject).section('/', 1).section('.', 0, 0)); }
   }
   const file_items items(p, bForExport, lstProjectFlats);
   auto label = [&items](qsizetype i) { return items.label(i); };

   // Grouped without letter case, in document order of the group's first item.
   QList<QList<qsizetype> > lstGroups;
   QHash<QString, qsizetype> hashGroup;
   for (qsizetype i = 0; i < items.size(); ++i)
   {
      if (! items.isCandidate(i)) { continue; }
      const QString sFold = items.flat(i).toLower();
      auto itr = hashGroup.constFind(sFold);
      if (itr == hashGroup.constEnd()) { hashGroup.insert(sFold, lstGroups.size()); lstGroups.append(QList<qsizetype>({ i })); }
      else { lstGroups[itr.value()].append(i); }
   }

   QStringList lst;
   for (const QList<qsizetype> & lstGroup : std::as_const(lstGroups))
   {
      if (lstGroup.size() < 2) { continue; }
      QStringList lstLabels, lstFlats;
      for (qsizetype i : lstGroup)
      {
         lstLabels.append(label(i));
         const QString sFlat = items.flat(i);
         if (! lstFlats.contains(sFlat)) { lstFlats.append(sFlat); }
      }
      QString sWho = lstLabels.mid(0, lstLabels.size() - 1).join(", ") + " and " + lstLabels.last();
      sWho[0] = sWho.at(0).toUpper();
      if (lstFlats.size() == 1)
      { lst.append(QString("%1 all give the same generated files 'include/%2.gen.h' and 'src/%2.gen.cpp'").arg(sWho, lstFlats.first())); }
      else
      {
         lst.append(QString("%1 give generated files whose names differ only in letter case ('%2'): they share an include "
                            "guard and are one file on a case-insensitive disk").arg(sWho, lstFlats.join("', '")));
      }
   }

   // The project-level files live beside the entities' ones.
   if (! sProject.isEmpty())
   {
      for (const char * szFile : aszProjectFiles)
      {
         const QString sFile = QString::fromLatin1(szFile).arg(sProject);
         const QString sFlat = sFile.section('/', 1).section('.', 0, 0);
         const qsizetype iGroup = hashGroup.value(sFlat.toLower(), -1);
         if (iGroup < 0) { continue; }
         for (qsizetype i : lstGroups.at(iGroup))
         {
            QString sWho = label(i);
            sWho[0] = sWho.at(0).toUpper();
            lst.append(QString("%1 gives a generated file of the same name as the project file '%2'").arg(sWho, sFile));
         }
      }
   }
   lst.append(longFileNames(p, bForExport));
   return lst;
}

QStringList model_integrity::problems(const project & p)
{
   return integrity_check(p).problems();
}

} // namespace model
