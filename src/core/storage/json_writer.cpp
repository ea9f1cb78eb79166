#include "storage/json_writer.h"

#include <QBuffer>

#include <cstring>

#include <QList>
#include <QLocale>
#include <QMap>
#include <QPair>
#include <QVariant>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/json_model_codes.h"

namespace storage {
namespace json_write {

namespace {

namespace codes = json_model_codes;

// A text built by appends: QByteArray's own append goes through its general insert (aliasing
// checks, growth on each call), a large share of the time when the export's fingerprint writes
// every field of the model.
class text_out
{
   QByteArray m_buf;
   qsizetype m_iSize = 0;

public:
   explicit text_out(qsizetype iReserve = 0) { m_buf.resize(iReserve); }
   qsizetype size() const { return m_iSize; }
   // Room for n more characters at the end, to write directly.
   char * grow(qsizetype n)
   {
      if ((m_iSize + n) > m_buf.size()) { m_buf.resize(qMax(2 * m_buf.size(), m_iSize + n + 64)); }
      char * p = m_buf.data() + m_iSize;
      m_iSize += n;
      return p;
   }
   text_out & append(QByteArrayView v)
   {
      if (! v.isEmpty()) { ::memcpy(grow(v.size()), v.data(), static_cast<size_t>(v.size())); }
      return (* this);
   }
   text_out & append(char c) { * grow(1) = c; return (* this); }
   QByteArray take()
   {
      m_buf.resize(m_iSize);
      m_iSize = 0;
      return std::move(m_buf);
   }
};

char * growBy(text_out & out, qsizetype n) { return out.grow(n); }
char * growBy(QByteArray & out, qsizetype n)
{
   const qsizetype iAt = out.size();
   out.resize(iAt + n);
   return (out.data() + iAt);
}

// JSON string of UTF-8 bytes. Most texts need no escape: those are copied in one piece (the
// dump and the export's fingerprint write every name and description of the model).
template <typename Out>
void appendQuotedUtf8(Out & out, QByteArrayView utf8)
{
   const char * const pBegin = utf8.data();
   const char * const pEnd = pBegin + utf8.size();
   const char * pPlain = pBegin;
   while ((pPlain != pEnd) && (static_cast<unsigned char>(* pPlain) >= 0x20) && (* pPlain != '"') && (* pPlain != '\\')) { ++pPlain; }
   char * pOut = growBy(out, (pPlain - pBegin) + 1);
   * pOut = '"';
   if (pPlain != pBegin) { ::memcpy(pOut + 1, pBegin, static_cast<size_t>(pPlain - pBegin)); }
   for (const char * pAt = pPlain; pAt != pEnd; ++pAt)
   {
      const char c = * pAt;
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
}

// A key written in this file: plain ASCII, no escape.
void appendKey(text_out & out, const char * szKey)
{
   const qsizetype n = qsizetype(::strlen(szKey));
   char * p = out.grow(n + 4);
   * p = '"';
   ::memcpy(p + 1, szKey, static_cast<size_t>(n));
   ::memcpy(p + 1 + n, "\": ", 3);
}

QByteArray quotedUtf8(QByteArrayView utf8)
{
   QByteArray out;
   out.reserve(utf8.size() + 2);
   appendQuotedUtf8(out, utf8);
   return out;
}

// A text of plain ASCII without escapes (most names and types) goes without its UTF-8 copy.
template <typename Out>
void appendQuoted(Out & out, const QString & s)
{
   const QChar * pBegin = s.constData();
   const QChar * const pEnd = pBegin + s.size();
   for (const QChar * p = pBegin; p != pEnd; ++p)
   {
      const char16_t c = p->unicode();
      if ((c < 0x20) || (c >= 0x80) || (c == u'"') || (c == u'\\')) { appendQuotedUtf8(out, s.toUtf8()); return; }
   }
   char * pOut = growBy(out, s.size() + 2);
   * pOut++ = '"';
   for (const QChar * p = pBegin; p != pEnd; ++p) { * pOut++ = static_cast<char>(p->unicode()); }
   * pOut = '"';
}

QByteArray quoted(const QString & s)
{
   QByteArray out;
   out.reserve(s.size() + 2);
   appendQuoted(out, s);
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

// Fields of one JSON object, written in the order they are added, straight into its text: on one
// line ("{a, b}") or, given an indent, one field per line.
class object_writer
{
   text_out m_out { 256 };
   const QByteArray * m_pIndent = nullptr;
   bool m_bEmpty = true;

   // The separator before a field, and its indent.
   void next()
   {
      if (m_pIndent)
      {
         if (! m_bEmpty) { m_out.append(",\n"); }
         m_out.append(* m_pIndent).append("  ");
      }
      else if (! m_bEmpty) { m_out.append(", "); }
      m_bEmpty = false;
   }

public:
   explicit object_writer(const QByteArray * pIndent = nullptr) : m_pIndent(pIndent)
   {
      m_out.append(pIndent ? "{\n" : "{");
   }

   // Each returns the writer, so that a run of fields reads as one statement.
   object_writer & add(const char * szKey, QByteArrayView value)
   {
      next();
      appendKey(m_out, szKey);
      m_out.append(value);
      return (* this);
   }
   object_writer & addQuotedKey(QByteArrayView quotedKey, QByteArrayView value) { next(); m_out.append(quotedKey).append(": ").append(value); return (* this); }
   object_writer & addString(const char * szKey, const QString & s)
   {
      next();
      appendKey(m_out, szKey);
      appendQuoted(m_out, s);
      return (* this);
   }
   object_writer & addStringIf(const char * szKey, const QString & s) { return (s.isEmpty() ? (* this) : addString(szKey, s)); }
   object_writer & addBoolIf(const char * szKey, bool b, bool bDefault) { return ((b == bDefault) ? (* this) : add(szKey, b ? "true" : "false")); }
   object_writer & addNumberIf(const char * szKey, qint64 i) { return ((i == 0) ? (* this) : add(szKey, number(i))); }
   object_writer & addScalarIf(const char * szKey, const QVariant & v) { return ((v.isValid() && ! v.isNull()) ? add(szKey, scalar(v)) : (* this)); }
   object_writer & addCodeIf(const char * szKey, int i, int iDefault, QString (* pNameOf)(int))
   {
      if (i == iDefault) { return (* this); }
      const QString sName = pNameOf(i);
      return add(szKey, sName.isEmpty() ? number(i) : quoted(sName));
   }
   void addMetaIf(const model::persistable & item)
   {
      const QMap<QString, QString> & map = item.getAllMetaData();
      if (map.isEmpty()) { return; }
      object_writer meta;
      for (auto itr = map.constBegin(); itr != map.constEnd(); ++itr) { meta.addQuotedKey(quoted(itr.key()), quoted(itr.value())); }
      add("meta", meta.text());
   }

   // The finished text; the writer is then done.
   QByteArray text()
   {
      if (m_pIndent)
      {
         if (! m_bEmpty) { m_out.append('\n'); }
         m_out.append(* m_pIndent);
      }
      m_out.append('}');
      return m_out.take();
   }
};

QByteArray arrayBlock(const QList<QByteArray> & lstItems, const QByteArray & indent)
{
   if (lstItems.isEmpty()) { return "[]"; }
   qsizetype iSize = 4 + indent.size();
   for (const QByteArray & s : lstItems) { iSize += s.size() + indent.size() + 4; }
   text_out out(iSize);
   out.append("[\n");
   for (qsizetype i = 0; i < lstItems.size(); ++i)
   {
      out.append(indent).append("  ").append(lstItems.at(i));
      out.append((i + 1 < lstItems.size()) ? ",\n" : "\n");
   }
   out.append(indent).append(']');
   return out.take();
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
      w.add("relation", r.text());
   }
   w.addStringIf("column", p.getColumnName()).addStringIf("description", p.getDescription()).addNumberIf("version", p.getVersion())
      .addCodeIf("accessibility", p.getAccessibility(), model::property::access_protected, & codes::accessibilityName)
      .addBoolIf("write_accessors", p.getWriteAccessors(), true).addBoolIf("obsolete", p.isObsolete(), false)
      .addBoolIf("read_only", p.isReadOnly(), false).addStringIf("get_method", p.getGetMethod()).addStringIf("set_method", p.getSetMethod())
      .addBoolIf("transient", p.isTransient(), false).addBoolIf("serializable", p.isSerializable(), true)
      .addBoolIf("index", p.isIndex(), false).addBoolIf("unique", p.getUnique(), false).addBoolIf("allow_null", p.getAllowNull(), true)
      .addScalarIf("min_value", p.getMinValue()).addScalarIf("max_value", p.getMaxValue())
      .addScalarIf("min_length", p.getMinLength()).addScalarIf("max_length", p.getMaxLength())
      .addStringIf("reg_exp", p.getRegExp()).addStringIf("force_sql_type", p.getForceSqlType())
      .addStringIf("force_sql_alias", p.getForceSqlAlias()).addStringIf("format", p.getFormat());
   w.addMetaIf(p);
   return w.text();
}

QByteArray entityText(const model::entity & e, const QByteArray & indent)
{
   object_writer w(& indent);
   w.add("id", number(e.getId())).addString("name", e.getName()).addStringIf("namespace", e.getNamespace())
      .addNumberIf("version", e.getVersion()).addStringIf("description", e.getDescription()).addStringIf("table", e.getTableName())
      .addStringIf("parent", e.getParentKey()).addBoolIf("abstract", e.isAbstract(), false).addBoolIf("read_only", e.isReadOnly(), false)
      .addStringIf("soft_delete_column", e.getSoftDeleteColumn()).addStringIf("validator_method", e.getValidatorMethod());

   QList<QByteArray> lstTriggers;
   for (const QString & sKey : model::triggerKeys(e)) { lstTriggers.append(quoted(sKey)); }
   if (! lstTriggers.isEmpty()) { w.add("triggers", "[" + lstTriggers.join(", ") + "]"); }
   w.addMetaIf(e);

   QList<QByteArray> lstProperties;
   for (const model::property_ptr & p : e.getOwnProperties()) { if (p) { lstProperties.append(propertyText(* p)); } }
   w.add("properties", arrayBlock(lstProperties, indent + "  "));
   return w.text();
}

QByteArray enumerationText(const model::enumeration & e, const QByteArray & indent)
{
   object_writer w(& indent);
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
      lstValues.append(v.text());
   }
   w.add("values", arrayBlock(lstValues, indent + "  "));
   return w.text();
}

} // namespace

QByteArray itemText(const model::entity & entity) { return entityText(entity, QByteArray()); }
QByteArray itemText(const model::enumeration & enumeration) { return enumerationText(enumeration, QByteArray()); }

// Items are written one at a time: the text of a large model is never held twice.
template <class T, class F>
bool writeArray(QIODevice & out, const QList<std::shared_ptr<T> > & lst, const QByteArray & indent, F itemText)
{
   qsizetype iLeft = 0;
   for (const auto & p : lst) { if (p) { ++iLeft; } }
   if (iLeft == 0) { return (out.write("[]") == 2); }
   if (out.write("[\n") != 2) { return false; }
   for (const auto & p : lst)
   {
      if (! p) { continue; }
      QByteArray text = indent + "  " + itemText(* p, indent + "  ");
      text.append((--iLeft > 0) ? ",\n" : "\n");
      if (out.write(text) != text.size()) { return false; }
   }
   const QByteArray end = indent + "]";
   return (out.write(end) == end.size());
}

bool writeProject(const model::project & project, QIODevice & out)
{
   const QByteArray indent("  ");
   const QByteArray head = "{\n" + indent + "\"name\": " + quoted(project.getName()) + ",\n" + indent + "\"entities\": ";
   if (out.write(head) != head.size()) { return false; }
   if (! writeArray(out, * project.getListOfAllEntities(), indent, & entityText)) { return false; }
   const QByteArray middle = ",\n" + indent + "\"enumerations\": ";
   if (out.write(middle) != middle.size()) { return false; }
   if (! writeArray(out, * project.getListOfAllEnums(), indent, & enumerationText)) { return false; }
   return (out.write("\n}\n") == 3);
}

QByteArray projectText(const model::project & project)
{
   QByteArray text;
   QBuffer buffer(& text);
   buffer.open(QIODevice::WriteOnly);
   writeProject(project, buffer);
   return text;
}

} // namespace json_write
} // namespace storage
