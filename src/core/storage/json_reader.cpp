#include "storage/json_reader.h"

#include <QHash>
#include <QJsonDocument>
#include <QSet>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/json_key_table.h"
#include "storage/json_layout.h"
#include "storage/json_model_codes.h"
#include "storage/json_object_reader.h"
#include "storage/json_text.h"

namespace storage {
namespace json_read {

namespace {

namespace codes = json_model_codes;

const QStringList & triggerNames()
{
   static const QStringList s = model::triggerKeys();
   return s;
}

struct reference
{
   QString sPath;
   QString sKey;
   QString sWhat;
};

class model_reader
{
   json_reader & m_reader;
   model::project_ptr m_pProject;

   // Key -> index of the first entity or enumeration in its array.
   json_key_table m_entityKeys { [this](qint32 i) { return m_pProject->getListOfAllEntities()->at(i)->getKey(); } };
   json_key_table m_enumKeys { [this](qint32 i) { return m_pProject->getListOfAllEnums()->at(i)->getKey(); } };
   QList<reference> m_lstEntityRefs;
   QList<reference> m_lstEnumRefs;

   // Explicit ids, to report repeats and to skip them when numbering the others.
   QHash<long, QString> m_hashEntityIds, m_hashEnumIds, m_hashPropertyIds;
   QList<model::persistable *> m_lstEntitiesWithoutId, m_lstEnumsWithoutId, m_lstPropertiesWithoutId;
   QList<model::relationship_ptr> m_lstRelations;

public:
   model_reader(json_reader & reader, const model::project_ptr & pProject) : m_reader(reader), m_pProject(pProject) { ; }

   // Takes the document's only reference, so that each item can be freed once read.
   void readProject(QJsonObject root)
   {
      // "$schema" names the schema an editor checks the document with.
      object_reader obj(m_reader, root, QString(), { "$schema", "name", "entities", "enumerations" });
      QString sSchema;
      obj.readString("$schema", sSchema);
      readName(obj);
      readItemList(root, obj, "enumerations", & model_reader::readEnumeration);
      readItemList(root, obj, "entities", & model_reader::readEntity);
      finish();
   }

   // The same reading, each item parsed from its own part of the text and freed once read;
   // false when a part does not parse (the whole document then tells where and why).
   bool readPieces(json_text & text, const json_layout::layout & layout)
   {
      const QByteArray & data = text.bytes();
      const QJsonDocument name = QJsonDocument::fromJson("[" + data.mid(layout.name.iBegin, layout.name.iEnd - layout.name.iBegin) + "]");
      if (! name.isArray() || (name.array().size() != 1)) { return false; }
      QJsonObject root;
      root.insert("name", name.array().at(0));
      object_reader obj(m_reader, root, QString(), { "name", "entities", "enumerations" });
      readName(obj);
      if (! readPieceList(text, layout.lstEnumerations, & model_reader::readEnumeration)) { return false; }
      if (! readPieceList(text, layout.lstEntities, & model_reader::readEntity)) { return false; }
      finish();
      return true;
   }

private:
   // The item of an array that must be an object; false, with an error, when it is not.
   bool isObjectItem(const QJsonArray & lst, qsizetype i, const QString & sPath)
   {
      if (lst.at(i).isObject()) { return true; }
      m_reader.error(sPath, QString("expected an object, got %1").arg(kindOf(lst.at(i))));
      return false;
   }

   void readItemList(QJsonObject & root, object_reader & obj, const QString & sKey, void (model_reader::* pRead)(const QJsonObject &, qsizetype))
   {
      QJsonArray lst;
      if (! obj.readArray(sKey, lst)) { return; }
      root.remove(sKey);
      for (qsizetype i = 0; i < lst.size(); ++i)
      {
         if (! isObjectItem(lst, i, indexPath(sKey, i))) { continue; }
         (this->*pRead)(lst.at(i).toObject(), i);
         // Frees the item's part of the document: the model grows while the document shrinks.
         lst[i] = QJsonValue();
      }
   }

   // Each object of an array field, with its index and path; an item that is not an object is an error.
   template <typename F>
   void forEachObject(object_reader & obj, const QString & sKey, F readItem)
   {
      QJsonArray lst;
      if (! obj.readArray(sKey, lst)) { return; }
      for (qsizetype i = 0; i < lst.size(); ++i)
      {
         const QString sItemPath = indexPath(obj.path(sKey), i);
         if (isObjectItem(lst, i, sItemPath)) { readItem(lst.at(i).toObject(), i, sItemPath); }
      }
   }

   // Name and namespace of an entity or an enumeration; true when both make a key.
   template <class T>
   bool readNameAndNamespace(object_reader & obj, T & item)
   {
      QString s;
      const bool bNameOk = (obj.require("name") && obj.readIdentifier("name", s, false));
      item.setName(s);
      s.clear();
      const bool bNamespaceOk = (! obj.has("namespace") || obj.readNamespace("namespace", s));
      item.setNamespace(s);
      return (bNameOk && bNamespaceOk);
   }

   void readName(object_reader & obj)
   {
      QString sName;
      if (obj.require("name") && obj.readIdentifier("name", sName, false)) { m_pProject->setName(sName); }
   }

   bool readPieceList(json_text & text, const QList<json_layout::span> & lst, void (model_reader::* pRead)(const QJsonObject &, qsizetype))
   {
      // Given back in slices: one call per item would cost more than it saves.
      const qsizetype k_iSlice = 8 * 1024 * 1024;
      qsizetype iFrom = (lst.isEmpty() ? 0 : lst.first().iBegin);
      for (qsizetype i = 0; i < lst.size(); ++i)
      {
         const json_layout::span & s = lst.at(i);
         QJsonParseError error;
         const QJsonDocument doc = QJsonDocument::fromJson(QByteArray::fromRawData(text.bytes().constData() + s.iBegin, s.iEnd - s.iBegin), & error);
         if ((error.error != QJsonParseError::NoError) || ! doc.isObject()) { return false; }
         (this->*pRead)(doc.object(), i);
         if ((s.iEnd - iFrom >= k_iSlice) || (i + 1 == lst.size())) { text.giveBack(iFrom, s.iEnd); iFrom = s.iEnd; }
      }
      return true;
   }

   void finish()
   {
      checkReferences();
      checkParentCycles();
      assignIds();
   }

   void readId(object_reader & obj, model::persistable & item, QHash<long, QString> & hashIds, QList<model::persistable *> & lstWithoutId, const QString & sKindPlural)
   {
      long lId = 0;
      if (! obj.has("id")) { lstWithoutId.append(& item); return; }
      if (! obj.readLong("id", lId, 0)) { return; }
      item.setId(lId);
      if (lId == 0) { return; }
      if (hashIds.contains(lId)) { m_reader.error(obj.path("id"), QString("id %1 is already used by %2 (ids of %3 must be unique)").arg(lId).arg(hashIds.value(lId), sKindPlural)); return; }
      hashIds.insert(lId, obj.path());
   }

   void readEnumeration(const QJsonObject & json, qsizetype iIndex)
   {
      const QString sPath = indexPath("enumerations", iIndex);
      object_reader obj(m_reader, json, sPath, { "id", "name", "namespace", "enum_name", "use_qt_enum", "description", "version", "values", "meta" });
      auto pEnum = std::make_shared<model::enumeration>();
      readId(obj, * pEnum, m_hashEnumIds, m_lstEnumsWithoutId, "enumerations");

      const bool bKeyOk = readNameAndNamespace(obj, * pEnum);
      QString s; bool b = false; long l = 0;
      if (obj.readIdentifier("enum_name", s, true)) { pEnum->setEnumName(s); }
      if (obj.readBool("use_qt_enum", b)) { pEnum->setUseQtEnum(b); }
      s.clear();
      if (obj.readString("description", s)) { pEnum->setDescription(s); }
      if (obj.readLong("version", l)) { pEnum->setVersion(l); }
      obj.readMeta(* pEnum);

      QHash<QString, qsizetype> hashValueKeys;
      forEachObject(obj, "values", [this, & hashValueKeys, & pEnum](const QJsonObject & jsonValue, qsizetype i, const QString & sValuePath)
      {
         object_reader value(m_reader, jsonValue, sValuePath, { "key", "value" });
         QString sKey, sValue;
         if (! value.require("key") || ! value.readIdentifier("key", sKey, false)) { return; }
         value.readString("value", sValue);
         if (hashValueKeys.contains(sKey))
         { m_reader.error(value.path("key"), QString("key '%1' is already used by values[%2]").arg(sKey).arg(hashValueKeys.value(sKey))); return; }
         hashValueKeys.insert(sKey, i);
         pEnum->addKeyValue(sKey, sValue);
      });

      if (bKeyOk)
      {
         const QString sKey = pEnum->getKey();
         const qint32 iFirst = m_enumKeys.find(sKey);
         if (iFirst >= 0) { m_reader.error(sPath, QString("key '%1' is already used by %2").arg(sKey, indexPath("enumerations", iFirst))); }
         else { m_enumKeys.insert(sKey, qint32(m_pProject->getListOfAllEnums()->size()), qint32(iIndex)); }
      }
      m_pProject->addEnumeration(pEnum);
   }

   void readEntity(const QJsonObject & json, qsizetype iIndex)
   {
      const QString sPath = indexPath("entities", iIndex);
      object_reader obj(m_reader, json, sPath, { "id", "name", "namespace", "version", "description", "table", "parent", "abstract", "read_only",
                                                 "soft_delete_column", "validator_method", "triggers", "meta", "properties" });
      auto pEntity = std::make_shared<model::entity>();
      readId(obj, * pEntity, m_hashEntityIds, m_lstEntitiesWithoutId, "entities");

      const bool bKeyOk = readNameAndNamespace(obj, * pEntity);
      QString s; bool b = false; long l = 0;
      if (obj.readLong("version", l)) { pEntity->setVersion(l); }
      s.clear(); if (obj.readString("description", s)) { pEntity->setDescription(s); }
      s.clear(); if (obj.readString("table", s)) { pEntity->setTableName(s); }
      s.clear();
      if (obj.readString("parent", s) && ! s.isEmpty())
      {
         pEntity->setParentKey(s);
         m_lstEntityRefs.append(reference { obj.path("parent"), s, "parent" });
      }
      if (obj.readBool("abstract", b)) { pEntity->setAbstract(b); }
      if (obj.readBool("read_only", b)) { pEntity->setReadOnly(b); }
      s.clear(); if (obj.readString("soft_delete_column", s)) { pEntity->setSoftDeleteColumn(s); }
      s.clear(); if (obj.readIdentifier("validator_method", s, true)) { pEntity->setValidatorMethod(s); }
      readTriggers(obj, * pEntity);
      obj.readMeta(* pEntity);

      QHash<QString, qsizetype> hashNames;
      forEachObject(obj, "properties", [this, & hashNames, & pEntity](const QJsonObject & jsonProperty, qsizetype i, const QString & sPropertyPath)
      {
         model::property_ptr pProperty = readProperty(jsonProperty, sPropertyPath);
         const QString sName = pProperty->getName();
         if (! sName.isEmpty())
         {
            if (hashNames.contains(sName))
            { m_reader.error(joinPath(sPropertyPath, "name"), QString("property '%1' is already defined by properties[%2]").arg(sName).arg(hashNames.value(sName))); }
            else { hashNames.insert(sName, i); }
         }
         pEntity->addProperty(pProperty);
      });

      if (bKeyOk)
      {
         const QString sKey = pEntity->getKey();
         const qint32 iFirst = m_entityKeys.find(sKey);
         const qint32 iEnum = ((iFirst >= 0) ? -1 : m_enumKeys.find(sKey));
         if (iFirst >= 0) { m_reader.error(sPath, QString("key '%1' is already used by %2").arg(sKey, indexPath("entities", iFirst))); }
         else if (iEnum >= 0) { m_reader.error(sPath, QString("key '%1' is already used by %2").arg(sKey, indexPath("enumerations", iEnum))); }
         else { m_entityKeys.insert(sKey, qint32(m_pProject->getListOfAllEntities()->size()), qint32(iIndex)); }
      }
      m_pProject->addEntity(pEntity);
   }

   void readTriggers(object_reader & obj, model::entity & e)
   {
      QJsonArray lst;
      if (! obj.readArray("triggers", lst)) { return; }
      QSet<QString> setSeen;
      for (qsizetype i = 0; i < lst.size(); ++i)
      {
         const QString sPath = indexPath(obj.path("triggers"), i);
         if (! lst.at(i).isString()) { m_reader.error(sPath, QString("expected a string, got %1").arg(kindOf(lst.at(i)))); continue; }
         const QString s = lst.at(i).toString();
         const int iTrigger = int(triggerNames().indexOf(s));
         if (iTrigger < 0) { m_reader.error(sPath, QString("unknown trigger '%1', expected one of %2").arg(s, triggerNames().join(", "))); continue; }
         if (setSeen.contains(s)) { m_reader.error(sPath, QString("trigger '%1' given more than once").arg(s)); continue; }
         setSeen.insert(s);
         (e.*model::entityTriggers().at(iTrigger).set)(true);
      }
   }

   model::property_ptr readProperty(const QJsonObject & json, const QString & sPath)
   {
      object_reader obj(m_reader, json, sPath, { "id", "name", "type", "primary_key", "column", "description", "version", "accessibility",
                                                 "write_accessors", "obsolete", "read_only", "get_method", "set_method", "transient",
                                                 "serializable", "index", "unique", "allow_null", "min_value", "max_value", "min_length",
                                                 "max_length", "reg_exp", "force_sql_type", "force_sql_alias", "format", "default",
                                                 "decoration", "collection", "enumeration", "relation", "meta" });
      auto pProperty = std::make_shared<model::property>();
      readId(obj, * pProperty, m_hashPropertyIds, m_lstPropertiesWithoutId, "properties");

      QString s; bool b = false; long l = 0; int i = 0; QVariant v;
      if (obj.require("name") && obj.readIdentifier("name", s, false)) { pProperty->setName(s); }
      if (obj.readBool("primary_key", b)) { pProperty->setPrimaryKey(b); }
      s.clear(); if (obj.readString("column", s)) { pProperty->setColumnName(s); }
      s.clear(); if (obj.readString("description", s)) { pProperty->setDescription(s); }
      if (obj.readLong("version", l)) { pProperty->setVersion(l); }
      if (obj.readCode("accessibility", i, & codes::accessibilityCode, & codes::accessibilityName, 3)) { pProperty->setAccessibility(i); }
      if (obj.readBool("write_accessors", b)) { pProperty->setWriteAccessors(b); }
      if (obj.readBool("obsolete", b)) { pProperty->setObsolete(b); }
      if (obj.readBool("read_only", b)) { pProperty->setReadOnly(b); }
      s.clear(); if (obj.readString("get_method", s)) { pProperty->setGetMethod(s); }
      s.clear(); if (obj.readString("set_method", s)) { pProperty->setSetMethod(s); }
      if (obj.readBool("transient", b)) { pProperty->setTransient(b); }
      if (obj.readBool("serializable", b)) { pProperty->setSerializable(b); }
      if (obj.readBool("index", b)) { pProperty->setIndex(b); }
      if (obj.readBool("unique", b)) { pProperty->setUnique(b); }
      if (obj.readBool("allow_null", b)) { pProperty->setAllowNull(b); }
      if (obj.readScalar("min_value", v)) { pProperty->setMinValue(v); }
      if (obj.readScalar("max_value", v)) { pProperty->setMaxValue(v); }
      if (obj.readLength("min_length", v)) { pProperty->setMinLength(v); }
      if (obj.readLength("max_length", v)) { pProperty->setMaxLength(v); }
      s.clear(); if (obj.readString("reg_exp", s)) { pProperty->setRegExp(s); }
      s.clear(); if (obj.readString("force_sql_type", s)) { pProperty->setForceSqlType(s); }
      s.clear(); if (obj.readString("force_sql_alias", s)) { pProperty->setForceSqlAlias(s); }
      s.clear(); if (obj.readString("format", s)) { pProperty->setFormat(s); }
      obj.readMeta(* pProperty);

      QString sType, sEnumKey, sDefault;
      int iDecoration = model::property_type::decoration_none;
      int iCollection = model::property_type::collection_none;
      obj.readString("type", sType);
      if (obj.readString("enumeration", sEnumKey) && ! sEnumKey.isEmpty())
      {
         pProperty->setEnumerationKey(sEnumKey);
         m_lstEnumRefs.append(reference { obj.path("enumeration"), sEnumKey, "enumeration" });
      }
      const bool bDecoration = obj.readCode("decoration", iDecoration, & codes::decorationCode, & codes::decorationName, 4);
      const bool bCollection = obj.readCode("collection", iCollection, & codes::collectionCode, & codes::collectionName, 3);
      const bool bDefault = obj.readString("default", sDefault);

      if (! sType.isEmpty() || ! sEnumKey.isEmpty())
      {
         auto pType = std::make_shared<model::property_type>();
         pType->setPrimitiveType(sType);
         // Without a type text the enumeration's C++ type is filled in by resolveLinks().
         pType->setFromEnumeration(sType.isEmpty());
         pType->setDecoration(iDecoration);
         pType->setCollection(iCollection);
         pType->setDefaultValue(sDefault);
         pProperty->setType(pType);
      }
      else
      {
         // A property without type text has no property type to hold these.
         const QString sReason = "needs a type: give \"type\" or \"enumeration\"";
         if (bDecoration && (iDecoration != model::property_type::decoration_none)) { m_reader.error(obj.path("decoration"), sReason); }
         if (bCollection && (iCollection != model::property_type::collection_none)) { m_reader.error(obj.path("collection"), sReason); }
         if (bDefault && ! sDefault.isEmpty()) { m_reader.error(obj.path("default"), sReason); }
      }

      QJsonObject jsonRelation;
      if (obj.readObject("relation", jsonRelation)) { readRelation(jsonRelation, obj.path("relation"), pProperty); }
      return pProperty;
   }

   void readRelation(const QJsonObject & json, const QString & sPath, const model::property_ptr & pProperty)
   {
      object_reader obj(m_reader, json, sPath, { "kind", "target", "foreign_key", "foreign_key_owner", "extra_table" });
      auto pRelation = std::make_shared<model::relationship>();
      int iKind = 0;
      QString s;
      if (obj.require("kind") && obj.readCode("kind", iKind, & codes::relationCode, & codes::relationName, 4)) { pRelation->setType(iKind); }
      if (obj.require("target") && obj.readString("target", s))
      {
         if (s.isEmpty()) { m_reader.error(obj.path("target"), "must not be empty"); }
         else
         {
            pRelation->setTargetKey(s);
            m_lstEntityRefs.append(reference { obj.path("target"), s, "relation target" });
         }
      }
      s.clear(); if (obj.readString("foreign_key", s)) { pRelation->setForeignKey(s); }
      s.clear(); if (obj.readString("foreign_key_owner", s)) { pRelation->setForeignKeyOwner(s); }
      s.clear(); if (obj.readString("extra_table", s)) { pRelation->setExtraTable(s); }
      pProperty->setRelation(pRelation);
      m_lstRelations.append(pRelation);
   }

   void checkReferences()
   {
      for (const reference & ref : m_lstEntityRefs)
      {
         if (! m_entityKeys.contains(ref.sKey)) { m_reader.error(ref.sPath, QString("%1 '%2' is not an entity of the document").arg(ref.sWhat, ref.sKey)); }
      }
      for (const reference & ref : m_lstEnumRefs)
      {
         if (! m_enumKeys.contains(ref.sKey)) { m_reader.error(ref.sPath, QString("%1 '%2' is not an enumeration of the document").arg(ref.sWhat, ref.sKey)); }
      }
   }

   void checkParentCycles()
   {
      const model::list_of_entity & lst = (* m_pProject->getListOfAllEntities());
      for (const QList<qsizetype> & lstCycle : model::model_integrity::parentCycles(lst))
      { m_reader.error(joinPath(indexPath("entities", lstCycle.first()), "parent"), "inheritance cycle " + model::model_integrity::cycleText(lst, lstCycle)); }
   }

   // Items without "id" get 1, 2, 3... in document order, skipping the ids given explicitly.
   static void numberItems(const QList<model::persistable *> & lst, const QHash<long, QString> & hashTaken)
   {
      long lNext = 1;
      for (model::persistable * p : lst)
      {
         while (hashTaken.contains(lNext)) { ++lNext; }
         p->setId(lNext++);
      }
   }

   void assignIds()
   {
      numberItems(m_lstEntitiesWithoutId, m_hashEntityIds);
      numberItems(m_lstEnumsWithoutId, m_hashEnumIds);
      numberItems(m_lstPropertiesWithoutId, m_hashPropertyIds);
      long lRelation = 1;
      for (const model::relationship_ptr & p : m_lstRelations) { p->setId(lRelation++); }
      for (const model::entity_ptr & pEntity : (* m_pProject->getListOfAllEntities()))
      {
         for (const model::property_ptr & pProperty : pEntity->getOwnProperties())
         {
            if (pProperty->getType()) { pProperty->getType()->setId(pProperty->getId()); }
         }
      }
   }
};

// Line and column (both from 1) of a byte offset of UTF-8 text; the column counts characters.
void lineAndColumn(const QByteArray & data, qsizetype iOffset, int & iLine, int & iColumn)
{
   iOffset = qBound(qsizetype(0), iOffset, data.size());
   const qsizetype iLineStart = data.lastIndexOf('\n', iOffset - 1) + 1;
   iLine = int(data.left(iOffset).count('\n')) + 1;
   iColumn = int(QString::fromUtf8(data.mid(iLineStart, iOffset - iLineStart)).size()) + 1;
}

// Offset of the first string of the document whose text is longer than iMax bytes (an escape
// counts as one), -1 when there is none. One pass over the bytes: a huge text is refused before
// the parser makes copies of it.
qsizetype longStringOffset(const QByteArray & data, qsizetype iMax)
{
   const char * p = data.constData();
   const qsizetype n = data.size();
   for (qsizetype i = 0; i < n; ++i)
   {
      if (p[i] != '"') { continue; }
      const qsizetype iStart = i;
      qsizetype iLength = 0;
      for (++i; (i < n) && (p[i] != '"'); ++i)
      {
         if (p[i] == '\\')
         {
            ++i;
            if ((i < n) && (p[i] == 'u')) { i += 4; }
         }
         if (++iLength > iMax) { return iStart; }
      }
   }
   return -1;
}

} // namespace

zy::ZyBool parseText(json_text & text, const QString & fileName, model::project_ptr & result, bool bPiecewise)
{
   result.reset();
   {
      const QByteArray & data = text.bytes();
      const qsizetype iLong = longStringOffset(data, model::model_text_rules::k_iMaxTextBytes);
      if (iLong >= 0)
      {
         json_reader reader(fileName);
         int iLine = 0, iColumn = 0;
         lineAndColumn(data, iLong, iLine, iColumn);
         reader.errorAt(iLine, iColumn, QString("a text longer than %1 bytes starts here: a model text holds at most %1 bytes (%2 MiB)")
                                           .arg(model::model_text_rules::k_iMaxTextBytes).arg(model::model_text_rules::k_iMaxTextBytes / (1024 * 1024)));
         return zy::ZyBool(false, reader.text());
      }
   }
   auto finishProject = [& result](json_reader & reader, const model::project_ptr & pProject) -> zy::ZyBool
   {
      // Texts that would break out of the generated code where the export writes them.
      if (! reader.hasErrors()) { for (const auto & x : model::model_text_rules::projectProblems(* pProject, false)) { reader.error(x.sPath, x.detail()); } }
      if (reader.hasErrors()) { return zy::ZyBool(false, reader.text()); }
      pProject->resolveLinks();
      result = pProject;
      return zy::ZyBool(true);
   };

   json_layout::layout layout;
   if (bPiecewise && json_layout::split(text.bytes().constData(), text.bytes().size(), layout))
   {
      json_reader reader(fileName);
      auto pProject = std::make_shared<model::project>();
      reportDuplicateMembers(text.bytes(), reader);
      text.giveBack(0, text.bytes().size());
      bool bRead = false;
      {
         model_reader modelReader(reader, pProject);
         bRead = modelReader.readPieces(text, layout);
      }
      if (bRead)
      {
         layout = json_layout::layout();
         text.release();
         return finishProject(reader, pProject);
      }
   }
   layout = json_layout::layout();

   json_reader reader(fileName);
   const QByteArray & data = text.bytes();
   QJsonParseError parseError;
   QJsonDocument doc = QJsonDocument::fromJson(data, & parseError);
   if (parseError.error != QJsonParseError::NoError)
   {
      // The parser reports the offset just past the character it stopped at, sometimes after
      // the blanks that follow it: step back onto that character.
      qsizetype iPos = qBound(qsizetype(0), qsizetype(parseError.offset) - 1, qMax(qsizetype(0), data.size() - 1));
      while ((iPos > 0) && (iPos < data.size()) && QChar(data.at(iPos)).isSpace()) { --iPos; }
      int iLine = 0, iColumn = 0;
      lineAndColumn(data, iPos, iLine, iColumn);
      reader.errorAt(iLine, iColumn, "JSON syntax error: " + parseError.errorString());
      return zy::ZyBool(false, reader.text());
   }
   if (! doc.isObject())
   {
      reader.error(QString(), "the document must be a JSON object with \"name\", \"entities\" and \"enumerations\"");
      return zy::ZyBool(false, reader.text());
   }

   reportDuplicateMembers(data, reader);
   // From here on the document is read alone, and its items are freed as they are read.
   text.release();
   QJsonObject root = doc.object();
   doc = QJsonDocument();
   auto pProject = std::make_shared<model::project>();
   {
      model_reader modelReader(reader, pProject);
      modelReader.readProject(std::move(root));
   }
   return finishProject(reader, pProject);
}

} // namespace json_read
} // namespace storage
