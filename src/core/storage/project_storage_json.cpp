#include "storage/project_storage.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QStringList>

#include <cmath>
#include <limits>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/model_integrity.h"
#include "model/model_names.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/json_key_table.h"
#include "storage/json_layout.h"
#include "storage/json_model_codes.h"
#include "storage/json_text.h"

namespace storage {

namespace {

namespace codes = json_model_codes;

const int k_iMaxReportedErrors = 100;
const qsizetype k_iMaxSharedTexts = 4096;
// 2^53: every integer up to it is exact in a double.
const double k_dMaxExactInteger = 9007199254740992.0;

const QStringList & triggerNames()
{
   static const QStringList s = model::triggerKeys();
   return s;
}

QString joinPath(const QString & sPath, const QString & sKey) { return (sPath.isEmpty() ? sKey : (sPath + "." + sKey)); }
QString indexPath(const QString & sPath, qsizetype i) { return QString("%1[%2]").arg(sPath).arg(i); }

QString kindOf(const QJsonValue & v)
{
   switch (v.type())
   {
      case QJsonValue::Null: return "null";
      case QJsonValue::Bool: return "a boolean";
      case QJsonValue::Double: return "a number";
      case QJsonValue::String: return "a string";
      case QJsonValue::Array: return "an array";
      case QJsonValue::Object: return "an object";
      default: return "nothing";
   }
}

QString identifierError(const QString & s)
{
   if (s.isEmpty()) { return "must not be empty"; }
   return QString("'%1' %2").arg(s, model::model_names::identifierProblem(s));
}

// Collects the errors of one document; every message names the file, the JSON path and the reason.
class json_reader
{
   QString m_sFile;
   QStringList m_lstErrors;
   QSet<QString> m_setTexts;

public:
   explicit json_reader(const QString & sFile) : m_sFile(sFile) { ; }

   // Equal texts of the document share one copy in the model: names, types and descriptions
   // repeat over thousands of items.
   QString shared(const QString & s)
   {
      if (s.isEmpty()) { return s; }
      const auto itr = m_setTexts.constFind(s);
      if (itr != m_setTexts.constEnd()) { return (* itr); }
      // Bounded: texts met once (names, descriptions) would otherwise fill it; frequent ones
      // come back right after a clear.
      if (m_setTexts.size() >= k_iMaxSharedTexts) { m_setTexts.clear(); }
      m_setTexts.insert(s);
      return s;
   }

   void error(const QString & sPath, const QString & sReason)
   {
      m_lstErrors.append(sPath.isEmpty() ? QString("%1: %2").arg(m_sFile, sReason) : QString("%1: %2: %3").arg(m_sFile, sPath, sReason));
   }
   void errorAt(int iLine, int iColumn, const QString & sReason)
   { m_lstErrors.append(QString("%1:%2:%3: %4").arg(m_sFile).arg(iLine).arg(iColumn).arg(sReason)); }

   bool hasErrors() const { return ! m_lstErrors.isEmpty(); }
   QString text() const
   {
      QStringList lst = m_lstErrors.mid(0, k_iMaxReportedErrors);
      if (m_lstErrors.size() > k_iMaxReportedErrors) { lst.append(QString("... and %1 more errors").arg(m_lstErrors.size() - k_iMaxReportedErrors)); }
      return lst.join("\n");
   }
};

// One JSON object of the document: reports unknown fields on construction and reads typed fields.
// Absent fields leave the output untouched; a field of the wrong type is an error.
class object_reader
{
   json_reader & m_reader;
   const QJsonObject & m_object;
   QString m_sPath;

public:
   object_reader(json_reader & reader, const QJsonObject & object, const QString & sPath, const QStringList & lstAllowed)
      : m_reader(reader), m_object(object), m_sPath(sPath)
   {
      for (auto itr = m_object.constBegin(); itr != m_object.constEnd(); ++itr)
      {
         if (! lstAllowed.contains(itr.key())) { m_reader.error(joinPath(m_sPath, itr.key()), "unknown field"); }
      }
   }

   QString path() const { return m_sPath; }
   QString path(const QString & sKey) const { return joinPath(m_sPath, sKey); }
   bool has(const QString & sKey) const { return m_object.contains(sKey); }
   QJsonValue value(const QString & sKey) const { return m_object.value(sKey); }

   bool require(const QString & sKey)
   {
      if (has(sKey)) { return true; }
      m_reader.error(m_sPath, QString("missing field '%1'").arg(sKey));
      return false;
   }

   bool wrongType(const QString & sKey, const QString & sExpected)
   {
      m_reader.error(path(sKey), QString("expected %1, got %2").arg(sExpected, kindOf(value(sKey))));
      return false;
   }

   bool readString(const QString & sKey, QString & sOut)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      if (! v.isString()) { return wrongType(sKey, "a string"); }
      sOut = m_reader.shared(v.toString());
      return true;
   }

   bool readBool(const QString & sKey, bool & bOut)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      if (! v.isBool()) { return wrongType(sKey, "a boolean"); }
      bOut = v.toBool();
      return true;
   }

   bool readInteger(const QString & sKey, qint64 & iOut, qint64 iMin = std::numeric_limits<qint32>::min())
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      const double d = v.toDouble();
      if (! v.isDouble() || (std::floor(d) != d) || (std::fabs(d) > k_dMaxExactInteger)) { return wrongType(sKey, "an integer"); }
      if ((d < double(iMin)) || (d > double(std::numeric_limits<qint32>::max())))
      {
         m_reader.error(path(sKey), QString("%1 is out of range").arg(qint64(d)));
         return false;
      }
      iOut = qint64(d);
      return true;
   }

   bool readLong(const QString & sKey, long & lOut, qint64 iMin = std::numeric_limits<qint32>::min())
   {
      qint64 i = 0;
      if (! readInteger(sKey, i, iMin)) { return false; }
      lOut = long(i);
      return true;
   }

   // A coded value given by its name or by its code.
   bool readCode(const QString & sKey, int & iOut, int (* pCodeOf)(const QString &), QString (* pNameOf)(int), int iCount)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      QStringList lstNames;
      for (int i = 0; i < iCount; ++i) { lstNames.append("\"" + pNameOf(i) + "\""); }
      const QString sExpected = QString("%1 (or a code from 0 to %2)").arg(lstNames.join(", ")).arg(iCount - 1);
      if (v.isString())
      {
         const int i = pCodeOf(v.toString());
         if (i < 0) { m_reader.error(path(sKey), QString("unknown value '%1', expected one of %2").arg(v.toString(), sExpected)); return false; }
         iOut = i;
         return true;
      }
      const double d = v.toDouble();
      if (v.isDouble() && (std::floor(d) == d))
      {
         if ((d < 0) || (d >= iCount))
         {
            // A huge code doesn't fit an integer: converting it would be undefined.
            const QString sCode = ((std::fabs(d) <= k_dMaxExactInteger) ? QString::number(qint64(d)) : QString::number(d, 'g', QLocale::FloatingPointShortest));
            m_reader.error(path(sKey), QString("unknown code %1, expected one of %2").arg(sCode, sExpected));
            return false;
         }
         iOut = int(d);
         return true;
      }
      return wrongType(sKey, "a name or an integer code");
   }

   // Free values (bounds): a number or a text; whole numbers are kept as integers.
   bool readScalar(const QString & sKey, QVariant & vOut)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      if (v.isString()) { vOut = v.toString(); return true; }
      if (v.isDouble())
      {
         const double d = v.toDouble();
         if ((std::floor(d) == d) && (std::fabs(d) <= k_dMaxExactInteger)) { vOut = QVariant(qlonglong(d)); }
         else { vOut = QVariant(d); }
         return true;
      }
      return wrongType(sKey, "a number or a string");
   }

   // A length: a whole number from 0, or a text (a constant's name), kept as written.
   bool readLength(const QString & sKey, QVariant & vOut)
   {
      if (! has(sKey)) { return false; }
      if (value(sKey).isString()) { vOut = value(sKey).toString(); return true; }
      if (! value(sKey).isDouble()) { return wrongType(sKey, "a whole number or a string"); }
      qint64 i = 0;
      if (! readInteger(sKey, i, 0)) { return false; }
      vOut = QVariant(qlonglong(i));
      return true;
   }

   bool readIdentifier(const QString & sKey, QString & sOut, bool bAllowEmpty)
   {
      if (! readString(sKey, sOut)) { return false; }
      if (bAllowEmpty && sOut.isEmpty()) { return true; }
      if (model::model_names::isCppIdentifier(sOut)) { return true; }
      m_reader.error(path(sKey), identifierError(sOut));
      return false;
   }

   bool readNamespace(const QString & sKey, QString & sOut)
   {
      if (! readString(sKey, sOut)) { return false; }
      // Empty parts are kept (checkSchema reports them); written parts must be identifiers.
      const QString sProblem = model::model_names::namespacePartProblem(sOut);
      if (sProblem.isEmpty()) { return true; }
      m_reader.error(path(sKey), QString("namespace '%1' : %2").arg(sOut, sProblem));
      return false;
   }

   bool readArray(const QString & sKey, QJsonArray & out)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      if (! v.isArray()) { return wrongType(sKey, "an array"); }
      out = v.toArray();
      return true;
   }

   bool readObject(const QString & sKey, QJsonObject & out)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      if (! v.isObject()) { return wrongType(sKey, "an object"); }
      out = v.toObject();
      return true;
   }

   bool readMeta(model::persistable & item)
   {
      QJsonObject obj;
      if (! readObject("meta", obj)) { return false; }
      for (auto itr = obj.constBegin(); itr != obj.constEnd(); ++itr)
      {
         if (! itr.value().isString())
         { m_reader.error(joinPath(path("meta"), itr.key()), QString("expected a string, got %1").arg(kindOf(itr.value()))); continue; }
         item.setMetaData(itr.key(), itr.value().toString());
      }
      return true;
   }
};

// QJsonDocument keeps the last of repeated members silently; this pass over the (already valid)
// text reports them with their path.
void reportDuplicateMembers(const QByteArray & data, json_reader & reader)
{
   struct frame
   {
      bool bObject = false;
      bool bExpectKey = false;
      QString sPath;
      QString sKey;
      qsizetype iIndex = 0;
      QSet<QString> setKeys;
   };
   QList<frame> stack;

   auto childPath = [& stack]() -> QString
   {
      if (stack.isEmpty()) { return QString(); }
      const frame & top = stack.last();
      return (top.bObject ? joinPath(top.sPath, top.sKey) : indexPath(top.sPath, top.iIndex));
   };

   const qsizetype n = data.size();
   for (qsizetype i = 0; i < n; ++i)
   {
      const char c = data.at(i);
      if ((c == '{') || (c == '['))
      {
         frame f;
         f.bObject = (c == '{');
         f.bExpectKey = f.bObject;
         f.sPath = childPath();
         stack.append(f);
      }
      else if ((c == '}') || (c == ']')) { if (! stack.isEmpty()) { stack.removeLast(); } }
      else if (c == ',')
      {
         if (stack.isEmpty()) { continue; }
         if (stack.last().bObject) { stack.last().bExpectKey = true; } else { ++stack.last().iIndex; }
      }
      else if (c == '"')
      {
         const qsizetype iStart = i + 1;
         bool bEscaped = false;
         for (++i; i < n; ++i)
         {
            const char d = data.at(i);
            if (d == '\\') { bEscaped = true; ++i; continue; }
            if (d == '"') { break; }
         }
         if (stack.isEmpty() || ! stack.last().bObject || ! stack.last().bExpectKey) { continue; }
         const QByteArray raw = data.mid(iStart, i - iStart);
         QString sKey;
         if (! bEscaped) { sKey = QString::fromUtf8(raw); }
         else { sKey = QJsonDocument::fromJson("[\"" + raw + "\"]").array().at(0).toString(); }
         frame & top = stack.last();
         top.bExpectKey = false;
         top.sKey = sKey;
         if (top.setKeys.contains(sKey)) { reader.error(joinPath(top.sPath, sKey), "field given more than once"); }
         top.setKeys.insert(sKey);
      }
   }
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
      object_reader obj(m_reader, root, QString(), { "name", "entities", "enumerations" });
      readName(obj);

      QJsonArray lstEnums;
      if (obj.readArray("enumerations", lstEnums))
      {
         root.remove("enumerations");
         for (qsizetype i = 0; i < lstEnums.size(); ++i)
         {
            const QString sPath = indexPath("enumerations", i);
            if (! lstEnums.at(i).isObject()) { m_reader.error(sPath, QString("expected an object, got %1").arg(kindOf(lstEnums.at(i)))); continue; }
            readEnumeration(lstEnums.at(i).toObject(), i);
            lstEnums[i] = QJsonValue();
         }
      }

      QJsonArray lstEntities;
      if (obj.readArray("entities", lstEntities))
      {
         root.remove("entities");
         for (qsizetype i = 0; i < lstEntities.size(); ++i)
         {
            const QString sPath = indexPath("entities", i);
            if (! lstEntities.at(i).isObject()) { m_reader.error(sPath, QString("expected an object, got %1").arg(kindOf(lstEntities.at(i)))); continue; }
            readEntity(lstEntities.at(i).toObject(), i);
            // Frees the item's part of the document: the model grows while the document shrinks.
            lstEntities[i] = QJsonValue();
         }
      }
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

      QString s; bool b = false; long l = 0;
      const bool bNameOk = (obj.require("name") && obj.readIdentifier("name", s, false));
      pEnum->setName(s);
      s.clear();
      const bool bNamespaceOk = (! obj.has("namespace") || obj.readNamespace("namespace", s));
      pEnum->setNamespace(s);
      s.clear();
      if (obj.readIdentifier("enum_name", s, true)) { pEnum->setEnumName(s); }
      if (obj.readBool("use_qt_enum", b)) { pEnum->setUseQtEnum(b); }
      s.clear();
      if (obj.readString("description", s)) { pEnum->setDescription(s); }
      if (obj.readLong("version", l)) { pEnum->setVersion(l); }
      obj.readMeta(* pEnum);

      QJsonArray lstValues;
      if (obj.readArray("values", lstValues))
      {
         QHash<QString, qsizetype> hashValueKeys;
         for (qsizetype i = 0; i < lstValues.size(); ++i)
         {
            const QString sValuePath = indexPath(obj.path("values"), i);
            if (! lstValues.at(i).isObject()) { m_reader.error(sValuePath, QString("expected an object, got %1").arg(kindOf(lstValues.at(i)))); continue; }
            const QJsonObject jsonValue = lstValues.at(i).toObject();
            object_reader value(m_reader, jsonValue, sValuePath, { "key", "value" });
            QString sKey, sValue;
            if (! value.require("key") || ! value.readIdentifier("key", sKey, false)) { continue; }
            value.readString("value", sValue);
            if (hashValueKeys.contains(sKey))
            { m_reader.error(value.path("key"), QString("key '%1' is already used by values[%2]").arg(sKey).arg(hashValueKeys.value(sKey))); continue; }
            hashValueKeys.insert(sKey, i);
            pEnum->addKeyValue(sKey, sValue);
         }
      }

      if (bNameOk && bNamespaceOk)
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

      QString s; bool b = false; long l = 0;
      const bool bNameOk = (obj.require("name") && obj.readIdentifier("name", s, false));
      pEntity->setName(s);
      s.clear();
      const bool bNamespaceOk = (! obj.has("namespace") || obj.readNamespace("namespace", s));
      pEntity->setNamespace(s);
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

      QJsonArray lstProperties;
      if (obj.readArray("properties", lstProperties))
      {
         QHash<QString, qsizetype> hashNames;
         for (qsizetype i = 0; i < lstProperties.size(); ++i)
         {
            const QString sPropertyPath = indexPath(obj.path("properties"), i);
            if (! lstProperties.at(i).isObject()) { m_reader.error(sPropertyPath, QString("expected an object, got %1").arg(kindOf(lstProperties.at(i)))); continue; }
            model::property_ptr pProperty = readProperty(lstProperties.at(i).toObject(), sPropertyPath);
            const QString sName = pProperty->getName();
            if (! sName.isEmpty())
            {
               if (hashNames.contains(sName))
               { m_reader.error(joinPath(sPropertyPath, "name"), QString("property '%1' is already defined by properties[%2]").arg(sName).arg(hashNames.value(sName))); }
               else { hashNames.insert(sName, i); }
            }
            pEntity->addProperty(pProperty);
         }
      }

      if (bNameOk && bNamespaceOk)
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

// ---------------------------------------------------------------------------------------------
// Writer: a fixed field order, non-default values only (ids and names always), one property or
// enumeration value per line so that dumps diff well.

QByteArray quoted(const QString & s)
{
   QByteArray out;
   out.reserve(s.size() + 2);
   out.append('"');
   const QByteArray utf8 = s.toUtf8();
   for (char c : utf8)
   {
      switch (c)
      {
         case '"': out.append("\\\""); break;
         case '\\': out.append("\\\\"); break;
         case '\b': out.append("\\b"); break;
         case '\f': out.append("\\f"); break;
         case '\n': out.append("\\n"); break;
         case '\r': out.append("\\r"); break;
         case '\t': out.append("\\t"); break;
         default:
            if ((unsigned char)(c) < 0x20) { out.append(QString::asprintf("\\u%04x", int(c)).toLatin1()); }
            else { out.append(c); }
            break;
      }
   }
   out.append('"');
   return out;
}

QByteArray number(qint64 i) { return QByteArray::number(i); }

QByteArray scalar(const QVariant & v)
{
   switch (v.metaType().id())
   {
      case QMetaType::QString: return quoted(v.toString());
      case QMetaType::Bool: return (v.toBool() ? "true" : "false");
      case QMetaType::Double: case QMetaType::Float: return QByteArray::number(v.toDouble(), 'g', QLocale::FloatingPointShortest);
      case QMetaType::Int: case QMetaType::LongLong: case QMetaType::Long: case QMetaType::Short:
      case QMetaType::UInt: case QMetaType::ULongLong: case QMetaType::ULong: case QMetaType::UShort:
         return number(v.toLongLong());
      default: return quoted(v.toString());
   }
}

// Fields of one JSON object, written in the order they are added.
class object_writer
{
   QList<QPair<QByteArray, QByteArray> > m_lstFields;

public:
   void add(const char * szKey, const QByteArray & value) { m_lstFields.append(qMakePair(QByteArray(szKey), value)); }
   void addString(const char * szKey, const QString & s) { add(szKey, quoted(s)); }
   void addStringIf(const char * szKey, const QString & s) { if (! s.isEmpty()) { addString(szKey, s); } }
   void addBoolIf(const char * szKey, bool b, bool bDefault) { if (b != bDefault) { add(szKey, b ? "true" : "false"); } }
   void addNumberIf(const char * szKey, qint64 i) { if (i != 0) { add(szKey, number(i)); } }
   void addScalarIf(const char * szKey, const QVariant & v) { if (v.isValid() && ! v.isNull()) { add(szKey, scalar(v)); } }
   void addCodeIf(const char * szKey, int i, int iDefault, QString (* pNameOf)(int))
   {
      if (i == iDefault) { return; }
      const QString sName = pNameOf(i);
      add(szKey, sName.isEmpty() ? number(i) : quoted(sName));
   }
   void addMetaIf(const model::persistable & item)
   {
      const QMap<QString, QString> & map = item.getAllMetaData();
      if (map.isEmpty()) { return; }
      object_writer meta;
      for (auto itr = map.constBegin(); itr != map.constEnd(); ++itr) { meta.m_lstFields.append(qMakePair(quoted(itr.key()), quoted(itr.value()))); }
      add("meta", meta.inlineText(true));
   }

   QByteArray inlineText(bool bKeysQuoted = false) const
   {
      QByteArray out("{");
      for (qsizetype i = 0; i < m_lstFields.size(); ++i)
      {
         if (i > 0) { out.append(", "); }
         out.append(bKeysQuoted ? m_lstFields.at(i).first : quoted(QString::fromUtf8(m_lstFields.at(i).first)));
         out.append(": ");
         out.append(m_lstFields.at(i).second);
      }
      out.append("}");
      return out;
   }

   QByteArray blockText(const QByteArray & indent) const
   {
      QByteArray out("{\n");
      for (qsizetype i = 0; i < m_lstFields.size(); ++i)
      {
         out.append(indent + "  " + quoted(QString::fromUtf8(m_lstFields.at(i).first)) + ": " + m_lstFields.at(i).second);
         out.append((i + 1 < m_lstFields.size()) ? ",\n" : "\n");
      }
      out.append(indent + "}");
      return out;
   }
};

QByteArray arrayBlock(const QList<QByteArray> & lstItems, const QByteArray & indent)
{
   if (lstItems.isEmpty()) { return "[]"; }
   QByteArray out("[\n");
   for (qsizetype i = 0; i < lstItems.size(); ++i)
   {
      out.append(indent + "  " + lstItems.at(i));
      out.append((i + 1 < lstItems.size()) ? ",\n" : "\n");
   }
   out.append(indent + "]");
   return out;
}

QByteArray propertyText(const model::property & p)
{
   object_writer w;
   w.add("id", number(p.getId()));
   w.addString("name", p.getName());
   model::property_type_ptr pType = p.getType();
   if (pType && ! pType->isFromEnumeration()) { w.addStringIf("type", pType->getPrimitiveType()); }
   w.addStringIf("enumeration", p.getEnumerationKey());
   if (pType)
   {
      w.addCodeIf("decoration", pType->getDecoration(), model::property_type::decoration_none, & codes::decorationName);
      w.addCodeIf("collection", pType->getCollection(), model::property_type::collection_none, & codes::collectionName);
      w.addStringIf("default", pType->getDefaultValue());
   }
   w.addBoolIf("primary_key", p.isPrimaryKey(), false);
   model::relationship_ptr pRelation = p.getRelation();
   if (pRelation)
   {
      object_writer r;
      const QString sKind = codes::relationName(pRelation->getType());
      r.add("kind", sKind.isEmpty() ? number(pRelation->getType()) : quoted(sKind));
      r.addString("target", pRelation->getTargetKey());
      r.addStringIf("foreign_key", pRelation->getForeignKey());
      r.addStringIf("foreign_key_owner", pRelation->getForeignKeyOwner());
      r.addStringIf("extra_table", pRelation->getExtraTable());
      w.add("relation", r.inlineText());
   }
   w.addStringIf("column", p.getColumnName());
   w.addStringIf("description", p.getDescription());
   w.addNumberIf("version", p.getVersion());
   w.addCodeIf("accessibility", p.getAccessibility(), model::property::access_protected, & codes::accessibilityName);
   w.addBoolIf("write_accessors", p.getWriteAccessors(), true);
   w.addBoolIf("obsolete", p.isObsolete(), false);
   w.addBoolIf("read_only", p.isReadOnly(), false);
   w.addStringIf("get_method", p.getGetMethod());
   w.addStringIf("set_method", p.getSetMethod());
   w.addBoolIf("transient", p.isTransient(), false);
   w.addBoolIf("serializable", p.isSerializable(), true);
   w.addBoolIf("index", p.isIndex(), false);
   w.addBoolIf("unique", p.getUnique(), false);
   w.addBoolIf("allow_null", p.getAllowNull(), true);
   w.addScalarIf("min_value", p.getMinValue());
   w.addScalarIf("max_value", p.getMaxValue());
   w.addScalarIf("min_length", p.getMinLength());
   w.addScalarIf("max_length", p.getMaxLength());
   w.addStringIf("reg_exp", p.getRegExp());
   w.addStringIf("force_sql_type", p.getForceSqlType());
   w.addStringIf("force_sql_alias", p.getForceSqlAlias());
   w.addStringIf("format", p.getFormat());
   w.addMetaIf(p);
   return w.inlineText();
}

QByteArray entityText(const model::entity & e, const QByteArray & indent)
{
   object_writer w;
   w.add("id", number(e.getId()));
   w.addString("name", e.getName());
   w.addStringIf("namespace", e.getNamespace());
   w.addNumberIf("version", e.getVersion());
   w.addStringIf("description", e.getDescription());
   w.addStringIf("table", e.getTableName());
   w.addStringIf("parent", e.getParentKey());
   w.addBoolIf("abstract", e.isAbstract(), false);
   w.addBoolIf("read_only", e.isReadOnly(), false);
   w.addStringIf("soft_delete_column", e.getSoftDeleteColumn());
   w.addStringIf("validator_method", e.getValidatorMethod());

   QList<QByteArray> lstTriggers;
   for (const QString & sKey : model::triggerKeys(e)) { lstTriggers.append(quoted(sKey)); }
   if (! lstTriggers.isEmpty()) { w.add("triggers", "[" + lstTriggers.join(", ") + "]"); }
   w.addMetaIf(e);

   QList<QByteArray> lstProperties;
   for (const model::property_ptr & p : e.getOwnProperties()) { if (p) { lstProperties.append(propertyText(* p)); } }
   w.add("properties", arrayBlock(lstProperties, indent + "  "));
   return w.blockText(indent);
}

QByteArray enumerationText(const model::enumeration & e, const QByteArray & indent)
{
   object_writer w;
   w.add("id", number(e.getId()));
   w.addString("name", e.getName());
   w.addStringIf("namespace", e.getNamespace());
   // Only an explicit enum name is written: the default follows the name.
   if (e.getEnumName() != (QString("enum_") + e.getName())) { w.addString("enum_name", e.getEnumName()); }
   w.addBoolIf("use_qt_enum", e.getUseQtEnum(), false);
   w.addStringIf("description", e.getDescription());
   w.addNumberIf("version", e.getVersion());
   w.addMetaIf(e);
   QList<QByteArray> lstValues;
   for (const auto & keyValue : e.getAllKeyValue())
   {
      object_writer v;
      v.addString("key", keyValue.first);
      v.addString("value", keyValue.second);
      lstValues.append(v.inlineText());
   }
   w.add("values", arrayBlock(lstValues, indent + "  "));
   return w.blockText(indent);
}

// Line and column (both from 1) of a byte offset of UTF-8 text; the column counts characters.
void lineAndColumn(const QByteArray & data, qsizetype iOffset, int & iLine, int & iColumn)
{
   iOffset = qBound(qsizetype(0), iOffset, data.size());
   const qsizetype iLineStart = data.lastIndexOf('\n', iOffset - 1) + 1;
   iLine = int(data.left(iOffset).count('\n')) + 1;
   iColumn = int(QString::fromUtf8(data.mid(iLineStart, iOffset - iLineStart)).size()) + 1;
}

// Whole-document parse, or item by item when the layout of the text allows it; both give the
// same model and the same messages.
zy::ZyBool parseText(json_text & text, const QString & fileName, model::project_ptr & result, bool bPiecewise)
{
   result.reset();
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

} // namespace

zy::ZyBool project_storage::parseJson(const QByteArray & json, const QString & fileName, model::project_ptr & result)
{
   return parseJson(QByteArray(json), fileName, result);
}

zy::ZyBool project_storage::parseJson(QByteArray && json, const QString & fileName, model::project_ptr & result)
{
   json_text text(std::move(json));
   return parseText(text, fileName, result, true);
}

zy::ZyBool json_layout::parseWhole(const QByteArray & json, const QString & fileName, model::project_ptr & result)
{
   json_text text { QByteArray(json) };
   return parseText(text, fileName, result, false);
}

zy::ZyBool project_storage::readJsonFile(const QString & jsonFile, model::project_ptr & result)
{
   result.reset();
   json_text text;
   QString sError;
   if (! text.open(jsonFile, sError)) { return zy::ZyBool(false, QString("%1: cannot read the file: %2").arg(jsonFile, sError)); }
   zy::ZyBool ok = parseText(text, jsonFile, result, true);
   if (ok && result) { result->setLocation(QFileInfo(jsonFile).absolutePath()); }
   return ok;
}

QByteArray project_storage::toJson(const model::project & project)
{
   const QByteArray indent("  ");
   QList<QByteArray> lstEntities;
   for (const model::entity_ptr & p : (* project.getListOfAllEntities())) { if (p) { lstEntities.append(entityText(* p, indent + "  ")); } }
   QList<QByteArray> lstEnums;
   for (const model::enumeration_ptr & p : (* project.getListOfAllEnums())) { if (p) { lstEnums.append(enumerationText(* p, indent + "  ")); } }

   QByteArray out("{\n");
   out.append(indent + "\"name\": " + quoted(project.getName()) + ",\n");
   out.append(indent + "\"entities\": " + arrayBlock(lstEntities, indent) + ",\n");
   out.append(indent + "\"enumerations\": " + arrayBlock(lstEnums, indent) + "\n");
   out.append("}\n");
   return out;
}

} // namespace storage
