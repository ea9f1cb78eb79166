#include "storage/json_writer.h"

#include <QBuffer>

#include <charconv>
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

void appendNumber(text_out & out, qint64 i)
{
   char buf[24];
   const std::to_chars_result r = std::to_chars(buf, buf + sizeof(buf), i);
   out.append(QByteArrayView(buf, r.ptr - buf));
}

// Fields of one JSON object, written in the order they are added straight into the text of the
// whole item (a nested object goes in place, not through a text of its own): on one line
// ("{a, b}") or, given an indent, one field per line.
class object_writer
{
   text_out & m_out;
   const QByteArray * m_pIndent = nullptr;
   bool m_bEmpty = true;

   // The separator before a field, its indent and its key.
   void next(const char * szKey)
   {
      if (m_pIndent)
      {
         if (! m_bEmpty) { m_out.append(",\n"); }
         m_out.append(* m_pIndent).append("  ");
      }
      else if (! m_bEmpty) { m_out.append(", "); }
      m_bEmpty = false;
      appendKey(m_out, szKey);
   }

public:
   object_writer(text_out & out, const QByteArray * pIndent = nullptr) : m_out(out), m_pIndent(pIndent)
   {
      m_out.append(pIndent ? "{\n" : "{");
   }

   // Each returns the writer, so that a run of fields reads as one statement.
   object_writer & add(const char * szKey, QByteArrayView value) { next(szKey); m_out.append(value); return (* this); }
   // A value that writes itself into the text (an array, a nested object).
   template <typename F>
   object_writer & addWritten(const char * szKey, F fnWrite) { next(szKey); fnWrite(m_out); return (* this); }
   object_writer & addNumber(const char * szKey, qint64 i) { next(szKey); appendNumber(m_out, i); return (* this); }
   object_writer & addString(const char * szKey, const QString & s) { next(szKey); appendQuoted(m_out, s); return (* this); }
   object_writer & addStringIf(const char * szKey, const QString & s) { return (s.isEmpty() ? (* this) : addString(szKey, s)); }
   object_writer & addBoolIf(const char * szKey, bool b, bool bDefault) { return ((b == bDefault) ? (* this) : add(szKey, b ? "true" : "false")); }
   object_writer & addNumberIf(const char * szKey, qint64 i) { return ((i == 0) ? (* this) : addNumber(szKey, i)); }
   object_writer & addScalarIf(const char * szKey, const QVariant & v) { return ((v.isValid() && ! v.isNull()) ? add(szKey, scalar(v)) : (* this)); }
   // A code by its name, or its number when it has none.
   object_writer & addCode(const char * szKey, int i, QString (* pNameOf)(int))
   {
      const QString sName = pNameOf(i);
      return (sName.isEmpty() ? addNumber(szKey, i) : addString(szKey, sName));
   }
   object_writer & addCodeIf(const char * szKey, int i, int iDefault, QString (* pNameOf)(int)) { return ((i == iDefault) ? (* this) : addCode(szKey, i, pNameOf)); }
   void addMetaIf(const model::persistable & item)
   {
      const QMap<QString, QString> & map = item.getAllMetaData();
      if (map.isEmpty()) { return; }
      addWritten("meta", [&map](text_out & out)
      {
         out.append('{');
         for (auto itr = map.constBegin(); itr != map.constEnd(); ++itr)
         {
            if (itr != map.constBegin()) { out.append(", "); }
            appendQuoted(out, itr.key());
            out.append(": ");
            appendQuoted(out, itr.value());
         }
         out.append('}');
      });
   }

   // Ends the object; the writer is then done.
   void close()
   {
      if (m_pIndent)
      {
         if (! m_bEmpty) { m_out.append('\n'); }
         m_out.append(* m_pIndent);
      }
      m_out.append('}');
   }
};

// An array of items one per line at indent + 2, each written by fnItem (which skips nothing):
// "[]" when there is none.
template <typename List, typename F>
void appendBlock(text_out & out, const List & lst, qsizetype iCount, const QByteArray & indent, F fnItem)
{
   if (iCount == 0) { out.append("[]"); return; }
   out.append("[\n");
   qsizetype iLeft = iCount;
   for (const auto & item : lst)
   {
      if (! fnItem(item, nullptr)) { continue; }
      out.append(indent).append("    ");
      fnItem(item, & out);
      out.append((--iLeft > 0) ? ",\n" : "\n");
   }
   out.append(indent).append("  ]");
}

void writeProperty(text_out & out, const model::property & p)
{
   object_writer w(out);
   w.addNumber("id", p.getId());
   w.addString("name", p.getName());
   const model::property_type_ptr pType = p.getType();
   if (pType && ! pType->isFromEnumeration()) { w.addStringIf("type", pType->getPrimitiveType()); }
   w.addStringIf("enumeration", p.getEnumerationKey());
   if (pType)
   {
      w.addCodeIf("decoration", pType->getDecoration(), model::property_type::decoration_none, & codes::decorationName);
      w.addCodeIf("collection", pType->getCollection(), model::property_type::collection_none, & codes::collectionName);
      w.addStringIf("default", pType->getDefaultValue());
   }
   w.addBoolIf("primary_key", p.isPrimaryKey(), false);
   const model::relationship_ptr pRelation = p.getRelation();
   if (pRelation)
   {
      w.addWritten("relation", [&pRelation](text_out & o)
      {
         object_writer r(o);
         r.addCode("kind", pRelation->getType(), & codes::relationName);
         r.addString("target", pRelation->getTargetKey());
         r.addStringIf("foreign_key", pRelation->getForeignKey());
         r.addStringIf("foreign_key_owner", pRelation->getForeignKeyOwner());
         r.addStringIf("extra_table", pRelation->getExtraTable());
         r.close();
      });
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
   w.close();
}

void writeEntity(text_out & out, const model::entity & e, const QByteArray & indent)
{
   object_writer w(out, & indent);
   w.addNumber("id", e.getId()).addString("name", e.getName()).addStringIf("namespace", e.getNamespace())
      .addNumberIf("version", e.getVersion()).addStringIf("description", e.getDescription()).addStringIf("table", e.getTableName())
      .addStringIf("parent", e.getParentKey()).addBoolIf("abstract", e.isAbstract(), false).addBoolIf("read_only", e.isReadOnly(), false)
      .addStringIf("soft_delete_column", e.getSoftDeleteColumn()).addStringIf("validator_method", e.getValidatorMethod());

   const QStringList lstTriggers = model::triggerKeys(e);
   if (! lstTriggers.isEmpty())
   {
      w.addWritten("triggers", [&lstTriggers](text_out & o)
      {
         o.append('[');
         for (qsizetype i = 0; i < lstTriggers.size(); ++i) { if (i > 0) { o.append(", "); } appendQuoted(o, lstTriggers.at(i)); }
         o.append(']');
      });
   }
   w.addMetaIf(e);

   const auto & lstProperties = e.getOwnProperties();
   qsizetype iCount = 0;
   for (const model::property_ptr & p : lstProperties) { if (p) { ++iCount; } }
   w.addWritten("properties", [&](text_out & o)
   {
      appendBlock(o, lstProperties, iCount, indent, [](const model::property_ptr & p, text_out * pOut)
      {
         if (p && pOut) { writeProperty(* pOut, * p); }
         return (p != nullptr);
      });
   });
   w.close();
}

void writeEnumeration(text_out & out, const model::enumeration & e, const QByteArray & indent)
{
   object_writer w(out, & indent);
   w.addNumber("id", e.getId());
   w.addString("name", e.getName());
   w.addStringIf("namespace", e.getNamespace());
   // Only an explicit enum name is written: the default follows the name.
   if (e.getEnumName() != (QString("enum_") + e.getName())) { w.addString("enum_name", e.getEnumName()); }
   w.addBoolIf("use_qt_enum", e.getUseQtEnum(), false);
   w.addStringIf("description", e.getDescription());
   w.addNumberIf("version", e.getVersion());
   w.addMetaIf(e);
   const auto & lstValues = e.getAllKeyValue();
   w.addWritten("values", [&](text_out & o)
   {
      appendBlock(o, lstValues, qsizetype(lstValues.size()), indent, [](const auto & keyValue, text_out * pOut)
      {
         if (pOut)
         {
            object_writer v(* pOut);
            v.addString("key", keyValue.first);
            v.addString("value", keyValue.second);
            v.close();
         }
         return true;
      });
   });
   w.close();
}

QByteArray entityText(const model::entity & e, const QByteArray & indent)
{
   text_out out(4096);
   writeEntity(out, e, indent);
   return out.take();
}

QByteArray enumerationText(const model::enumeration & e, const QByteArray & indent)
{
   text_out out(1024);
   writeEnumeration(out, e, indent);
   return out.take();
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
