#include "script/script_model_views.h"

#include <QStringList>

#include "model/entity.h"
#include "model/entity_trigger.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace tools {

namespace script_views {

namespace {

QVariant metaField(const model::persistable & item)
{
   QVariantMap meta;
   const QMap<QString, QString> & map = item.getAllMetaData();
   for (auto itr = map.cbegin(); itr != map.cend(); ++itr) { meta.insert(itr.key(), itr.value()); }
   return meta;
}

} // namespace

QVariantMap fieldNames()
{
   QVariantMap fields;
   fields.insert("project", QStringList{"id", "name", "location", "file_path", "entities", "enumerations", "meta"});
   fields.insert("entity", QStringList{"id", "name", "namespace", "key", "version", "description", "table_name", "parent_key",
                                       "abstract", "read_only", "soft_delete_column", "validator_method", "triggers",
                                       "properties", "relations", "primary_key", "meta"});
   fields.insert("property", QStringList{"id", "name", "entity", "type", "primitive_type", "decoration", "collection",
                                         "default_value", "enumeration", "primary_key", "column_name", "description",
                                         "version", "accessibility", "read_only", "obsolete", "transient", "serializable",
                                         "index", "unique", "allow_null", "relation", "meta"});
   fields.insert("enumeration", QStringList{"id", "name", "namespace", "key", "enum_name", "use_qt_enum", "description",
                                            "version", "values", "meta"});
   return fields;
}

QVariant field(const model::project & p, const QString & name)
{
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(p.getId())); }
   if (name == QLatin1String("name")) { return p.getName(); }
   if (name == QLatin1String("location")) { return p.getLocation(); }
   if (name == QLatin1String("file_path")) { return p.getFilePath(); }
   if (name == QLatin1String("entities"))
   {
      QStringList keys;
      for (const model::entity_ptr & e : * p.getListOfAllEntities()) { if (e) { keys << e->getKey(); } }
      return keys;
   }
   if (name == QLatin1String("enumerations"))
   {
      QStringList keys;
      for (const model::enumeration_ptr & e : * p.getListOfAllEnums()) { if (e) { keys << e->getKey(); } }
      return keys;
   }
   if (name == QLatin1String("meta")) { return metaField(p); }
   return QVariant();
}

QVariant field(const model::entity & e, const QString & name)
{
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(e.getId())); }
   if (name == QLatin1String("name")) { return e.getName(); }
   if (name == QLatin1String("namespace")) { return e.getNamespace(); }
   if (name == QLatin1String("key")) { return e.getKey(); }
   if (name == QLatin1String("version")) { return QVariant(static_cast<qlonglong>(e.getVersion())); }
   if (name == QLatin1String("description")) { return e.getDescription(); }
   if (name == QLatin1String("table_name")) { return e.getTableName(); }
   if (name == QLatin1String("parent_key")) { return e.getParentKey(); }
   if (name == QLatin1String("abstract")) { return e.isAbstract(); }
   if (name == QLatin1String("read_only")) { return e.isReadOnly(); }
   if (name == QLatin1String("soft_delete_column")) { return e.getSoftDeleteColumn(); }
   if (name == QLatin1String("validator_method")) { return e.getValidatorMethod(); }
   if (name == QLatin1String("triggers"))
   {
      return model::triggerKeys(e);
   }
   if ((name == QLatin1String("properties")) || (name == QLatin1String("relations")))
   {
      const bool onlyRelations = (name == QLatin1String("relations"));
      QStringList names;
      for (const model::property_ptr & p : e.getOwnProperties())
      {
         if (p && (! onlyRelations || p->hasRelationship())) { names << p->getName(); }
      }
      return names;
   }
   if (name == QLatin1String("primary_key"))
   {
      const model::property_ptr pk = e.getPropertyId(true);
      return (pk ? pk->getName() : QString());
   }
   if (name == QLatin1String("meta")) { return metaField(e); }
   return QVariant();
}

QVariant field(const model::property & p, const QString & name)
{
   const model::property_type_ptr type = p.getType();
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(p.getId())); }
   if (name == QLatin1String("name")) { return p.getName(); }
   if (name == QLatin1String("entity")) { const model::entity_ptr owner = p.getEntity(); return (owner ? owner->getKey() : QString()); }
   if (name == QLatin1String("type")) { return p.getTypeDesc(false, false); }
   if (name == QLatin1String("primitive_type")) { return (type ? type->getPrimitiveType() : QString()); }
   if (name == QLatin1String("decoration")) { return (type ? type->getDecoration() : 0); }
   if (name == QLatin1String("collection")) { return (type ? type->getCollection() : 0); }
   if (name == QLatin1String("default_value")) { return (type ? type->getDefaultValue() : QString()); }
   if (name == QLatin1String("enumeration")) { return p.getEnumerationKey(); }
   if (name == QLatin1String("primary_key")) { return p.isPrimaryKey(); }
   if (name == QLatin1String("column_name")) { return p.getColumnName(); }
   if (name == QLatin1String("description")) { return p.getDescription(); }
   if (name == QLatin1String("version")) { return QVariant(static_cast<qlonglong>(p.getVersion())); }
   if (name == QLatin1String("accessibility")) { return p.getAccessibility(); }
   if (name == QLatin1String("read_only")) { return p.isReadOnly(); }
   if (name == QLatin1String("obsolete")) { return p.isObsolete(); }
   if (name == QLatin1String("transient")) { return p.isTransient(); }
   if (name == QLatin1String("serializable")) { return p.isSerializable(); }
   if (name == QLatin1String("index")) { return p.isIndex(); }
   if (name == QLatin1String("unique")) { return p.getUnique(); }
   if (name == QLatin1String("allow_null")) { return p.getAllowNull(); }
   if (name == QLatin1String("relation"))
   {
      const model::relationship_ptr rel = p.getRelation();
      if (! rel) { return QVariant::fromValue(nullptr); }
      QVariantMap r;
      r.insert("kind", rel->getType());
      r.insert("target", rel->getTargetKey());
      r.insert("foreign_key", rel->getForeignKey());
      r.insert("foreign_key_owner", rel->getForeignKeyOwner());
      r.insert("extra_table", rel->getExtraTable());
      return r;
   }
   if (name == QLatin1String("meta")) { return metaField(p); }
   return QVariant();
}

QVariant field(const model::enumeration & e, const QString & name)
{
   if (name == QLatin1String("id")) { return QVariant(static_cast<qlonglong>(e.getId())); }
   if (name == QLatin1String("name")) { return e.getName(); }
   if (name == QLatin1String("namespace")) { return e.getNamespace(); }
   if (name == QLatin1String("key")) { return e.getKey(); }
   if (name == QLatin1String("enum_name")) { return e.getEnumName(); }
   if (name == QLatin1String("use_qt_enum")) { return e.getUseQtEnum(); }
   if (name == QLatin1String("description")) { return e.getDescription(); }
   if (name == QLatin1String("version")) { return QVariant(static_cast<qlonglong>(e.getVersion())); }
   if (name == QLatin1String("values"))
   {
      QVariantList values;
      const auto & kv = e.getAllKeyValue();
      for (qsizetype i = 0; i < kv.size(); ++i)
      {
         QVariantMap item;
         item.insert("key", kv.getKeyByIndex(i));
         item.insert("value", kv.getByIndex(i));
         values.append(item);
      }
      return values;
   }
   if (name == QLatin1String("meta")) { return metaField(e); }
   return QVariant();
}

} // namespace script_views

} // namespace tools
