#include "model_generator.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "storage/project_storage.h"

namespace bench {

namespace {

// Small, portable, deterministic generator: the benchmark must build the same model everywhere.
class lcg
{
   quint64 m_state;

public:
   explicit lcg(unsigned seed) : m_state(seed * 6364136223846793005ULL + 1442695040888963407ULL) { ; }
   unsigned next()
   {
      m_state = (m_state * 6364136223846793005ULL) + 1442695040888963407ULL;
      return static_cast<unsigned>(m_state >> 33);
   }
   int below(int n) { return ((n <= 0) ? 0 : static_cast<int>(next() % static_cast<unsigned>(n))); }
   bool chance(int percent) { return (below(100) < percent); }
};

const char * const k_namespaces[] = { "bench::core", "bench::sales", "bench::stock", "bench::hr",
                                      "bench::crm::contacts", "bench::crm::campaigns", "bench::billing",
                                      "bench::logistics::fleet" };
const int k_namespaceCount = 8;

const char * const k_words[] = { "Order", "Customer", "Invoice", "Product", "Supplier", "Shipment", "Employee",
                                  "Contract", "Payment", "Vehicle", "Campaign", "Contact", "Warehouse", "Ticket" };
const int k_wordCount = 14;

const char * const k_propertyWords[] = { "label", "amount", "code", "note", "state", "count", "ratio", "since",
                                         "flag", "title", "weight", "owner", "score", "tag" };
const int k_propertyWordCount = 14;

QString namespaceOf(int i) { return QString::fromLatin1(k_namespaces[i % k_namespaceCount]); }

QJsonObject relation(const char * kind, const QString & target, const QString & fk, const QString & fkOwner, const QString & extraTable)
{
   QJsonObject r{ { "kind", kind }, { "target", target } };
   if (! fk.isEmpty()) { r.insert("foreign_key", fk); }
   if (! fkOwner.isEmpty()) { r.insert("foreign_key_owner", fkOwner); }
   if (! extraTable.isEmpty()) { r.insert("extra_table", extraTable); }
   return r;
}

// One ordinary property of kind k (a plain column, enumeration or collection).
QJsonObject plainProperty(lcg & rng, int k, const QString & name, const QStringList & enumKeys)
{
   QJsonObject p{ { "name", name } };
   switch (k % 17)
   {
      case 0: p.insert("type", "QString"); p.insert("description", "Free text of " + name); break;
      case 1: p.insert("type", "QString"); p.insert("default", QString("Dear \"valued\" %1 \\ tab\t").arg(name)); break;
      case 2: p.insert("type", "bool"); if (rng.chance(50)) { p.insert("default", rng.chance(50) ? "true" : "false"); } break;
      case 3: p.insert("type", "int"); p.insert("default", QString::number(rng.below(100))); p.insert("min_value", 0); break;
      case 4: p.insert("type", "long"); p.insert("index", true); break;
      case 5: p.insert("type", "double"); p.insert("default", "0.0"); p.insert("min_value", 0); p.insert("max_value", 1000000); break;
      case 6: p.insert("type", "QDateTime"); p.insert("description", "Date of the last change"); break;
      case 7: p.insert("type", "QDate"); p.insert("decoration", "optional"); break;
      case 8: p.insert("type", "QString"); p.insert("decoration", "optional"); p.insert("description", "Unknown for most rows"); break;
      case 9: p.insert("type", "int"); p.insert("decoration", "optional"); break;
      case 10: p.insert("type", "QString"); p.insert("collection", "qlist"); p.insert("transient", true); break;
      case 11:
         if (enumKeys.isEmpty()) { p.insert("type", "int"); }
         else { p.insert("enumeration", enumKeys.at(rng.below(enumKeys.size()))); }
         break;
      case 12: p.insert("type", "QByteArray"); p.insert("serializable", false); break;
      case 13: p.insert("type", "qint64"); p.insert("column", "col_" + name); break;
      case 14:
         p.insert("type", "QString"); p.insert("allow_null", false); p.insert("max_length", 120); p.insert("min_length", 2);
         p.insert("reg_exp", "^[A-Z][a-z]+$"); p.insert("unique", true);
         break;
      case 15: p.insert("type", "int"); p.insert("collection", "std_vector"); break;
      default:
         p.insert("type", "QString"); p.insert("decoration", "shared_ptr"); p.insert("accessibility", "public");
         p.insert("meta", QJsonObject{ { "ui_label", "Label of " + name } });
         break;
   }
   if (rng.chance(8)) { p.insert("read_only", true); }
   if (rng.chance(5)) { p.insert("obsolete", true); }
   if (rng.chance(5)) { p.insert("write_accessors", false); }
   if (rng.chance(4)) { p.insert("accessibility", "private"); }
   if (rng.chance(6)) { p.insert("version", 1 + rng.below(3)); }
   return p;
}

} // namespace

QByteArray generateModelJson(const model_options & options)
{
   lcg rng(options.seed);
   const int n = std::max(1, options.entities);

   // Enumerations first: properties refer to them by key.
   QJsonArray enums;
   QStringList enumKeys;
   const int enumCount = std::max(4, n / 25);
   for (int e = 0; e < enumCount; ++e)
   {
      const QString ns = namespaceOf(e);
      const QString name = QString("Status%1").arg(e);
      QJsonArray values;
      const int valueCount = 3 + rng.below(6);
      for (int v = 0; v < valueCount; ++v) { values.append(QJsonObject{ { "key", QString("Value%1").arg(v) }, { "value", QString::number(v * 10) } }); }
      QJsonObject en{ { "name", name }, { "namespace", ns }, { "values", values } };
      if (e % 2 == 0) { en.insert("use_qt_enum", true); }
      if (e % 3 == 0) { en.insert("description", "Life cycle of a row"); }
      enums.append(en);
      enumKeys.append(ns + "::" + name);
   }

   // One abstract base per namespace (as many as fit), then the concrete entities.
   const int baseCount = std::min(k_namespaceCount, std::max(0, n / 10));
   QStringList keys;
   QStringList names;
   for (int i = 0; i < n; ++i)
   {
      const QString name = (i < baseCount) ? QString("Base") : QString("%1%2").arg(k_words[i % k_wordCount]).arg(i);
      names.append(name);
      keys.append(namespaceOf(i) + "::" + name);
   }

   QJsonArray entities;
   for (int i = 0; i < n; ++i)
   {
      const bool bBase = (i < baseCount);
      QJsonObject ent{ { "name", names.at(i) }, { "namespace", namespaceOf(i) } };
      QJsonArray props;
      bool bOwnId = true;
      if (bBase)
      {
         ent.insert("abstract", true);
         ent.insert("description", "Common root of the classes of a namespace");
         props.append(QJsonObject{ { "name", "id" }, { "type", "long" }, { "primary_key", true }, { "description", "Row identifier" } });
         props.append(QJsonObject{ { "name", "created_at" }, { "type", "QDateTime" } });
         props.append(QJsonObject{ { "name", "updated_at" }, { "type", "QDateTime" }, { "decoration", "optional" } });
      }
      else
      {
         if ((baseCount > 0) && rng.chance(40)) { ent.insert("parent", keys.at(i % baseCount)); bOwnId = false; }
         if (bOwnId)
         {
            if (i % 10 == 3) { props.append(QJsonObject{ { "name", "code" }, { "type", "QString" }, { "primary_key", true } }); }
            else { props.append(QJsonObject{ { "name", "id" }, { "type", "long" }, { "primary_key", true } }); }
         }
         if (i % 3 == 0) { ent.insert("table", "t_" + names.at(i).toLower()); }
         if (i % 4 == 0) { ent.insert("description", QString("Rows of %1, generated for the benchmark").arg(names.at(i))); }
         if (i % 7 == 0) { ent.insert("triggers", QJsonArray{ "before_insert", "after_fetch", "before_update" }); }
         if (i % 11 == 0) { ent.insert("validator_method", "validate" + names.at(i)); }
         if (i % 5 == 0) { ent.insert("meta", QJsonObject{ { "audit", "true" }, { "ui_icon", names.at(i).toLower() + ".png" } }); }
         if (i % 13 == 0) { ent.insert("soft_delete_column", "deleted_at"); }
         if (i % 17 == 0) { ent.insert("read_only", true); }
         ent.insert("version", i % 4);

         const int propCount = 10 + rng.below(21);
         const int relationCount = (n > 1) ? (1 + rng.below(4)) : 0;
         for (int j = props.size(); j < propCount - relationCount; ++j)
         {
            const QString pname = QString("%1_%2").arg(k_propertyWords[j % k_propertyWordCount]).arg(j);
            props.append(plainProperty(rng, rng.below(17), pname, enumKeys));
         }
         for (int r = 0; r < relationCount; ++r)
         {
            int t = baseCount + rng.below(std::max(1, n - baseCount));
            if (t == i) { t = (t + 1 < n) ? t + 1 : baseCount; }
            const QString target = keys.at(t);
            const QString fk = names.at(i).toLower() + "_id";
            const int kind = (i + r) % 4;
            QJsonObject p{ { "name", QString("rel%1_%2").arg(r).arg(names.at(t).toLower()) } };
            if (kind == 0) { p.insert("relation", relation("one_to_one", target, QString(), QString(), QString())); }
            else if (kind == 1) { p.insert("relation", relation("one_to_many", target, fk, QString(), QString())); }
            else if (kind == 2) { p.insert("relation", relation("many_to_one", target, names.at(t).toLower() + "_id", QString(), QString())); }
            else
            {
               p.insert("relation", relation("many_to_many", target, fk, names.at(t).toLower() + "_id",
                                             QString("t_%1_%2_%3").arg(names.at(i).toLower(), names.at(t).toLower()).arg(r)));
            }
            if (r == 0) { p.insert("description", "Related rows"); }
            if (r == 1) { p.insert("column", "rel_col_" + QString::number(r)); }
            props.append(p);
         }
      }
      ent.insert("properties", props);
      entities.append(ent);
   }

   QJsonObject root{ { "name", "BENCH" }, { "entities", entities }, { "enumerations", enums } };
   return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

model::project_ptr generateModel(const model_options & options)
{
   model::project_ptr p;
   zy::ZyBool ok = storage::project_storage::parseJson(generateModelJson(options), "bench.json", p);
   if (! ok) { qFatal("benchmark model refused by the import: %s", qPrintable(ok.getDesc())); }
   return p;
}

int editModel(model::project & project, int iEvery)
{
   int iSeen = 0, iEdited = 0;
   for (const model::entity_ptr & pEntity : * project.getListOfAllEntities())
   {
      for (const model::property_ptr & p : pEntity->getOwnProperties())
      {
         if (! p || p->isPrimaryKey() || p->hasRelationship() || (++iSeen % iEvery != 0)) { continue; }
         switch (iEdited++ % 4)
         {
            case 0: p->setName(p->getName() + "_renamed"); if (! p->getColumnName().isEmpty()) { p->setColumnName(p->getColumnName() + "_renamed"); } break;
            case 1: p->setForceSqlType("VARCHAR(500)"); break;
            case 2: p->setAllowNull(! p->getAllowNull()); break;
            default: p->setIndex(! p->isIndex()); break;
         }
      }
   }
   return iEdited;
}

} // namespace bench
