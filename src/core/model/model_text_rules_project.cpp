// Which rule applies to which text of the model: the rule of the place where the export writes
// the text as it is (escaped texts only refuse a NUL).

#include "model/model_text_rules.h"

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "model/sql_meta.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace model {

namespace {

typedef QString (* text_rule)(const QString &);
typedef QList<model_text_rules::problem> list_of_problem;

// The item a text belongs to; its label and JSON path are only made for a problem (large
// models are checked at every load).
struct item_ref
{
   const entity * pEntity = nullptr;
   const enumeration * pEnum = nullptr;
   const model::property * pProperty = nullptr;
   qsizetype i = 0;
   qsizetype j = 0;

   QString label() const
   {
      if (pEnum) { return (pEnum->getName().isEmpty() ? QString("Enumeration #%1").arg(i + 1) : QString("Enumeration '%1'").arg(pEnum->getKey())); }
      if (! pEntity) { return QStringLiteral("Project"); }
      const QString sEntity = (pEntity->getName().isEmpty() ? QString("Entity #%1").arg(i + 1) : QString("Entity '%1'").arg(pEntity->getKey()));
      if (! pProperty) { return sEntity; }
      return (pProperty->getName().isEmpty() ? QString("%1 : property #%2").arg(sEntity).arg(j + 1)
                                             : QString("%1 : property '%2'").arg(sEntity, pProperty->getName()));
   }

   QString path(const QString & sField) const
   {
      QString s;
      if (pEnum) { s = QString("enumerations[%1]").arg(i); }
      else if (pEntity) { s = QString("entities[%1]").arg(i); }
      if (pProperty) { s += QString(".properties[%1]").arg(j); }
      return (s.isEmpty() ? sField : (s + "." + sField));
   }
};

// A foreign key's action kept for the SQL export is written into its statement: only the SQL
// words are allowed (see sql_meta.h), on a relation and in the entries of an entity's keys.
QString keyActionProblem(const QString & sKey, const QString & sValue)
{
   static const QString k_sReason = QStringLiteral("is not an SQL action (CASCADE, SET NULL, SET DEFAULT, RESTRICT, NO ACTION)");
   if ((sKey == sql_meta::k_sOnDelete) || (sKey == sql_meta::k_sOnUpdate)) { return (sql_meta::isForeignKeyAction(sValue) ? QString() : k_sReason); }
   if (sKey != sql_meta::k_sForeignKeys) { return QString(); }
   const QJsonArray lst = QJsonDocument::fromJson(sValue.toUtf8()).array();
   for (const QJsonValue & v : lst)
   {
      for (const char * szField : { "on_delete", "on_update" })
      {
         const QString sAction = v.toObject().value(QLatin1String(szField)).toString();
         if (! sql_meta::isForeignKeyAction(sAction)) { return QString("holds %1 '%2', which %3").arg(QLatin1String(szField), model_text_rules::shown(sAction), k_sReason); }
      }
   }
   return QString();
}

class project_walker
{
   list_of_problem & m_lst;
   bool m_bWithNumberForms;

public:
   project_walker(list_of_problem & lst, bool bWithNumberForms) : m_lst(lst), m_bWithNumberForms(bWithNumberForms) { ; }

   void add(const item_ref & item, const QString & sField, const QString & sValue, const QString & sReason, const QString & sJsonField)
   {
      if (sReason.isEmpty()) { return; }
      m_lst.append(model_text_rules::problem { item.label(), sField, sValue, sReason, item.path(sJsonField) });
   }

   void apply(text_rule rule, const item_ref & item, const char * szField, const QString & sValue, const char * szJsonField)
   {
      if (sValue.isEmpty()) { return; }
      // Counted in characters here: at least as many bytes of UTF-8.
      const QString sReason = ((sValue.size() > model_text_rules::k_iMaxTextBytes)
                                  ? QString("is longer than %1 bytes, the most a model text holds").arg(model_text_rules::k_iMaxTextBytes)
                                  : rule(sValue));
      if (! sReason.isEmpty()) { add(item, QLatin1String(szField), sValue, sReason, QLatin1String(szJsonField)); }
   }

   void meta(const persistable & p, const item_ref & item)
   {
      const QMap<QString, QString> & map = p.getAllMetaData();
      for (auto itr = map.constBegin(); itr != map.constEnd(); ++itr)
      {
         const QString sKeyPath = "meta." + itr.key();
         add(item, QStringLiteral("meta data key"), itr.key(), model_text_rules::nulProblem(itr.key()), sKeyPath);
         if (! itr.value().isEmpty())
         { add(item, QString("meta data '%1'").arg(model_text_rules::shown(itr.key())), itr.value(), model_text_rules::nulProblem(itr.value()), sKeyPath); }
         add(item, QString("meta data '%1'").arg(model_text_rules::shown(itr.key())), itr.value(), keyActionProblem(itr.key(), itr.value()), sKeyPath);
      }
   }

   // A value written where a number is expected, as its text.
   void number(const item_ref & item, const QString & sField, const QString & s, const QString & sJsonField, bool bIntegerOnly)
   {
      if (s.isEmpty() && ! bIntegerOnly) { return; }
      const QString sReason = model_text_rules::numberTextProblem(s);
      if (! sReason.isEmpty()) { add(item, sField, s, sReason, sJsonField); return; }
      if (m_bWithNumberForms) { add(item, sField, s, model_text_rules::numberProblem(s, bIntegerOnly), sJsonField); }
   }

   void limit(const item_ref & item, const char * szField, const QVariant & v, const char * szJsonField)
   {
      if (! v.isValid() || v.isNull()) { return; }
      number(item, QLatin1String(szField), v.toString(), QLatin1String(szJsonField), false);
   }

   void property(const model::property & p, const item_ref & item)
   {
      apply(& model_text_rules::literalProblem, item, "column name", p.getColumnName(), "column");
      apply(& model_text_rules::lineCommentProblem, item, "description", p.getDescription(), "description");
      apply(& model_text_rules::bodyProblem, item, "get method", p.getGetMethod(), "get_method");
      apply(& model_text_rules::bodyProblem, item, "set method", p.getSetMethod(), "set_method");
      limit(item, "min value", p.getMinValue(), "min_value");
      limit(item, "max value", p.getMaxValue(), "max_value");
      limit(item, "min length", p.getMinLength(), "min_length");
      limit(item, "max length", p.getMaxLength(), "max_length");
      apply(& model_text_rules::nulProblem, item, "reg exp", p.getRegExp(), "reg_exp");
      // Named in full: the JSON import reports a field by its path only.
      if (! p.getForceSqlType().isEmpty())
      { add(item, QString("forced SQL type of '%1.%2'").arg(item.pEntity->getName(), p.getName()), p.getForceSqlType(), model_text_rules::sqlTypeProblem(p.getForceSqlType()), QStringLiteral("force_sql_type")); }
      apply(& model_text_rules::nulProblem, item, "forced SQL alias", p.getForceSqlAlias(), "force_sql_alias");
      apply(& model_text_rules::nulProblem, item, "format", p.getFormat(), "format");

      const property_type_ptr pType = p.getType();
      if (pType)
      {
         if (! pType->isFromEnumeration()) { apply(& model_text_rules::typeProblem, item, "type", pType->getPrimitiveType(), "type"); }
         // A text default is escaped into a string literal; any other is written as code.
         const text_rule rule = (p.isString(true, -1) ? & model_text_rules::nulProblem : & model_text_rules::expressionProblem);
         apply(rule, item, "default value", pType->getDefaultValue(), "default");
      }

      const relationship_ptr pRelation = p.getRelation();
      if (pRelation)
      {
         apply(& model_text_rules::literalProblem, item, "relation foreign key", pRelation->getForeignKey(), "relation.foreign_key");
         apply(& model_text_rules::literalProblem, item, "relation foreign key owner", pRelation->getForeignKeyOwner(), "relation.foreign_key_owner");
         apply(& model_text_rules::sqlNameProblem, item, "relation extra table", pRelation->getExtraTable(), "relation.extra_table");
      }
      meta(p, item);
   }

   void entity(const model::entity & e, qsizetype i)
   {
      item_ref item;
      item.pEntity = & e;
      item.i = i;
      apply(& model_text_rules::blockCommentProblem, item, "description", e.getDescription(), "description");
      apply(& model_text_rules::sqlNameProblem, item, "table name", e.getTableName(), "table");
      apply(& model_text_rules::literalProblem, item, "soft delete column", e.getSoftDeleteColumn(), "soft_delete_column");
      meta(e, item);
      const list_of_property & lst = e.getOwnProperties();
      for (qsizetype j = 0; j < lst.size(); ++j)
      {
         if (! lst.at(j)) { continue; }
         item.pProperty = lst.at(j).get();
         item.j = j;
         property(* lst.at(j), item);
      }
   }

   void enumeration(const model::enumeration & e, qsizetype i)
   {
      item_ref item;
      item.pEnum = & e;
      item.i = i;
      apply(& model_text_rules::blockCommentProblem, item, "description", e.getDescription(), "description");
      meta(e, item);
      qsizetype k = 0;
      for (const auto & keyValue : e.getAllKeyValue())
      {
         const qsizetype iValue = k++;
         const QString & sValue = keyValue.second;
         if (! sValue.isEmpty() && model_text_rules::numberTextProblem(sValue).isEmpty() && ! m_bWithNumberForms) { continue; }
         number(item, QString("value of '%1'").arg(model_text_rules::shown(keyValue.first)), sValue, QString("values[%1].value").arg(iValue), true);
      }
   }
};

} // namespace

list_of_problem model_text_rules::projectTextProblems(const project & p)
{
   list_of_problem lst;
   project_walker(lst, false).meta(p, item_ref());
   return lst;
}

list_of_problem model_text_rules::entityProblems(const entity & e, qsizetype i, bool bWithNumberForms)
{
   list_of_problem lst;
   project_walker(lst, bWithNumberForms).entity(e, i);
   return lst;
}

list_of_problem model_text_rules::enumerationProblems(const enumeration & e, qsizetype i, bool bWithNumberForms)
{
   list_of_problem lst;
   project_walker(lst, bWithNumberForms).enumeration(e, i);
   return lst;
}

list_of_problem model_text_rules::projectProblems(const project & p, bool bWithNumberForms)
{
   list_of_problem lst;
   project_walker walker(lst, bWithNumberForms);
   walker.meta(p, item_ref());
   const list_of_entity & lstEntities = (* p.getListOfAllEntities());
   for (qsizetype i = 0; i < lstEntities.size(); ++i) { if (lstEntities.at(i)) { walker.entity(* lstEntities.at(i), i); } }
   const list_of_enumeration & lstEnums = (* p.getListOfAllEnums());
   for (qsizetype i = 0; i < lstEnums.size(); ++i) { if (lstEnums.at(i)) { walker.enumeration(* lstEnums.at(i), i); } }
   return lst;
}

zy::ZyInvalidValueX model_text_rules::checkProject(const project & p, bool bWithNumberForms)
{
   zy::ZyInvalidValueX lstResult;
   for (const problem & x : projectProblems(p, bWithNumberForms)) { lstResult.append(zy::ZyInvalidValue(x.message(), x.sPath)); }
   return lstResult;
}

QString model_text_rules::problemText(const project & p)
{
   const qsizetype k_iMaxReported = 100;
   const list_of_problem lst = projectProblems(p, false);
   QStringList lstLines;
   for (qsizetype i = 0; (i < lst.size()) && (i < k_iMaxReported); ++i) { lstLines.append(lst.at(i).message()); }
   if (lst.size() > k_iMaxReported) { lstLines.append(QString("... and %1 more").arg(lst.size() - k_iMaxReported)); }
   return lstLines.join(QLatin1Char('\n'));
}

} // namespace model
