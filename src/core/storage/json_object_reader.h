#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <limits>

#include "model/model_fwd.h"

// Reading a JSON model document: the errors of one document and the typed reading of its objects.
namespace storage {
namespace json_read {

QString joinPath(const QString & sPath, const QString & sKey);
QString indexPath(const QString & sPath, qsizetype i);
// "a string", "an array"...: the kind of a value, as an error names it.
QString kindOf(const QJsonValue & v);

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
   QString shared(const QString & s);

   void error(const QString & sPath, const QString & sReason);
   void errorAt(int iLine, int iColumn, const QString & sReason);

   bool hasErrors() const { return ! m_lstErrors.isEmpty(); }
   QString text() const;
};

// One JSON object of the document: reports unknown fields on construction and reads typed fields.
// Absent fields leave the output untouched; a field of the wrong type is an error.
class object_reader
{
   json_reader & m_reader;
   const QJsonObject & m_object;
   QString m_sPath;

   // A field of one JSON type, handed to take() when it has that type.
   template <typename F>
   bool readTyped(const QString & sKey, const char * szKind, bool (QJsonValue::* pIs)() const, F take)
   {
      if (! has(sKey)) { return false; }
      const QJsonValue v = value(sKey);
      if (! (v.*pIs)()) { return wrongType(sKey, szKind); }
      take(v);
      return true;
   }

public:
   object_reader(json_reader & reader, const QJsonObject & object, const QString & sPath, const QStringList & lstAllowed);

   QString path() const { return m_sPath; }
   QString path(const QString & sKey) const { return joinPath(m_sPath, sKey); }
   bool has(const QString & sKey) const { return m_object.contains(sKey); }
   QJsonValue value(const QString & sKey) const { return m_object.value(sKey); }

   bool require(const QString & sKey);
   bool wrongType(const QString & sKey, const QString & sExpected);

   bool readString(const QString & sKey, QString & sOut);
   bool readBool(const QString & sKey, bool & bOut);
   bool readInteger(const QString & sKey, qint64 & iOut, qint64 iMin = std::numeric_limits<qint32>::min());
   bool readLong(const QString & sKey, long & lOut, qint64 iMin = std::numeric_limits<qint32>::min());
   // A coded value given by its name or by its code.
   bool readCode(const QString & sKey, int & iOut, int (* pCodeOf)(const QString &), QString (* pNameOf)(int), int iCount);
   // Free values (bounds): a number or a text; whole numbers are kept as integers.
   bool readScalar(const QString & sKey, QVariant & vOut);
   // A length: a whole number from 0, or a text (a constant's name), kept as written.
   bool readLength(const QString & sKey, QVariant & vOut);
   bool readIdentifier(const QString & sKey, QString & sOut, bool bAllowEmpty);
   bool readNamespace(const QString & sKey, QString & sOut);
   bool readArray(const QString & sKey, QJsonArray & out);
   bool readObject(const QString & sKey, QJsonObject & out);
   bool readMeta(model::persistable & item);
};

// QJsonDocument keeps the last of repeated members silently; this pass over the (already valid)
// text reports them with their path.
void reportDuplicateMembers(const QByteArray & data, json_reader & reader);

} // namespace json_read
} // namespace storage
