#include "storage/json_object_reader.h"

#include <QJsonDocument>
#include <QList>
#include <QLocale>

#include <cmath>

#include "model/model_names.h"
#include "model/persistable.h"

namespace storage {
namespace json_read {

namespace {

const int k_iMaxReportedErrors = 100;
const qsizetype k_iMaxSharedTexts = 4096;
// 2^53: every integer up to it is exact in a double.
const double k_dMaxExactInteger = 9007199254740992.0;

QString identifierError(const QString & s)
{
   if (s.isEmpty()) { return "must not be empty"; }
   return QString("'%1' %2").arg(s, model::model_names::identifierProblem(s));
}

} // namespace

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

QString json_reader::shared(const QString & s)
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

void json_reader::error(const QString & sPath, const QString & sReason)
{
   m_lstErrors.append(sPath.isEmpty() ? QString("%1: %2").arg(m_sFile, sReason) : QString("%1: %2: %3").arg(m_sFile, sPath, sReason));
}

void json_reader::errorAt(int iLine, int iColumn, const QString & sReason)
{
   m_lstErrors.append(QString("%1:%2:%3: %4").arg(m_sFile).arg(iLine).arg(iColumn).arg(sReason));
}

QString json_reader::text() const
{
   QStringList lst = m_lstErrors.mid(0, k_iMaxReportedErrors);
   if (m_lstErrors.size() > k_iMaxReportedErrors) { lst.append(QString("... and %1 more errors").arg(m_lstErrors.size() - k_iMaxReportedErrors)); }
   return lst.join("\n");
}

object_reader::object_reader(json_reader & reader, const QJsonObject & object, const QString & sPath, const QStringList & lstAllowed)
   : m_reader(reader), m_object(object), m_sPath(sPath)
{
   for (auto itr = m_object.constBegin(); itr != m_object.constEnd(); ++itr)
   {
      if (! lstAllowed.contains(itr.key())) { m_reader.error(joinPath(m_sPath, itr.key()), "unknown field"); }
   }
}

bool object_reader::require(const QString & sKey)
{
   if (has(sKey)) { return true; }
   m_reader.error(m_sPath, QString("missing field '%1'").arg(sKey));
   return false;
}

bool object_reader::wrongType(const QString & sKey, const QString & sExpected)
{
   m_reader.error(path(sKey), QString("expected %1, got %2").arg(sExpected, kindOf(value(sKey))));
   return false;
}

bool object_reader::readString(const QString & sKey, QString & sOut)
{
   return readTyped(sKey, "a string", & QJsonValue::isString, [this, & sOut](const QJsonValue & v) { sOut = m_reader.shared(v.toString()); });
}

bool object_reader::readBool(const QString & sKey, bool & bOut)
{
   return readTyped(sKey, "a boolean", & QJsonValue::isBool, [& bOut](const QJsonValue & v) { bOut = v.toBool(); });
}

bool object_reader::readArray(const QString & sKey, QJsonArray & out)
{
   return readTyped(sKey, "an array", & QJsonValue::isArray, [& out](const QJsonValue & v) { out = v.toArray(); });
}

bool object_reader::readObject(const QString & sKey, QJsonObject & out)
{
   return readTyped(sKey, "an object", & QJsonValue::isObject, [& out](const QJsonValue & v) { out = v.toObject(); });
}

bool object_reader::readInteger(const QString & sKey, qint64 & iOut, qint64 iMin)
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

bool object_reader::readLong(const QString & sKey, long & lOut, qint64 iMin)
{
   qint64 i = 0;
   if (! readInteger(sKey, i, iMin)) { return false; }
   lOut = long(i);
   return true;
}

bool object_reader::readCode(const QString & sKey, int & iOut, int (* pCodeOf)(const QString &), QString (* pNameOf)(int), int iCount)
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

bool object_reader::readScalar(const QString & sKey, QVariant & vOut)
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

bool object_reader::readLength(const QString & sKey, QVariant & vOut)
{
   if (! has(sKey)) { return false; }
   if (value(sKey).isString()) { vOut = value(sKey).toString(); return true; }
   if (! value(sKey).isDouble()) { return wrongType(sKey, "a whole number or a string"); }
   qint64 i = 0;
   if (! readInteger(sKey, i, 0)) { return false; }
   vOut = QVariant(qlonglong(i));
   return true;
}

bool object_reader::readIdentifier(const QString & sKey, QString & sOut, bool bAllowEmpty)
{
   if (! readString(sKey, sOut)) { return false; }
   if (bAllowEmpty && sOut.isEmpty()) { return true; }
   if (model::model_names::isCppIdentifier(sOut)) { return true; }
   m_reader.error(path(sKey), identifierError(sOut));
   return false;
}

bool object_reader::readNamespace(const QString & sKey, QString & sOut)
{
   if (! readString(sKey, sOut)) { return false; }
   // Empty parts are kept (checkSchema reports them); written parts must be identifiers.
   const QString sProblem = model::model_names::namespacePartProblem(sOut);
   if (sProblem.isEmpty()) { return true; }
   m_reader.error(path(sKey), QString("namespace '%1' : %2").arg(sOut, sProblem));
   return false;
}

bool object_reader::readMeta(model::persistable & item)
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

} // namespace json_read
} // namespace storage
