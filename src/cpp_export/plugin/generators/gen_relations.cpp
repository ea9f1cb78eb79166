// What an entity class adds for its relationships: relation types, getters that load the related
// objects on demand, and the static relation key functions.

#include "cpp_export/plugin/generators/generators.h"

#include <QStringBuilder>

#include "model/entity.h"
#include "model/property.h"
#include "model/relationship.h"
#include "cpp_export/plugin/cpp_builder.h"

namespace plugin {
namespace generators {

namespace {

const QLatin1String kFetchParameters("(bool bLoadFromDatabase, const QString & sAppendRelations = QString(), QSqlDatabase * pDatabase = NULL, QSqlError * pDaoError = NULL);\n");
// In the definition the default values stand in comments.
const QLatin1String kFetchParametersImpl("(bool bLoadFromDatabase, const QString & sAppendRelations /* = QString() */, QSqlDatabase * pDatabase /* = NULL */, QSqlError * pDaoError /* = NULL */)\n");

bool hasFetchingGetter(const model::property & p)
{
   return (p.getWriteAccessors() && ! p.isObsolete());
}

bool hasReferenceAccessors(const model::relationship & r)
{
   return ((r.getType() == 1) || (r.getType() == 3));
}

// Loads the relation into a temporary copy fetched by id and keeps the related member when the
// fetch succeeded. Needs a primary key to fetch by.
void appendFetchBlock(const cpp_builder & b, QString & out, const model::entity & e, const model::relationship & r)
{
   const model::property_ptr pId = e.getPropertyId(true);
   const model::property_ptr pProperty = r.getProperty();
   if (! pId || ! pProperty || ! hasFetchingGetter(* pProperty)) { return; }

   const QString name = pProperty->getName();
   const QString idMember = memberName(b, pId->getName());
   const QString relationMember = memberName(b, name);
   out += QLatin1String("   QString sRelation = \"{") % pId->getName() % QLatin1String("} | ") % name % QLatin1String("\";\n");
   out += QLatin1String("   if (! sAppendRelations.isEmpty() && ! sAppendRelations.startsWith(\"->\") && ! sAppendRelations.startsWith(\">>\")) { sRelation += \"->\" + sAppendRelations; }\n");
   out += QLatin1String("   else if (! sAppendRelations.isEmpty()) { sRelation += sAppendRelations; }\n");
   out += QLatin1String("   ") % e.getKey() % QLatin1String(" tmp;\n");
   out += QLatin1String("   tmp.") % idMember % QLatin1String(" = this->") % idMember % QLatin1String(";\n");
   out += QLatin1String("   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);\n");
   out += QLatin1String("   if (! daoError.isValid()) { this->") % relationMember % QLatin1String(" = tmp.") % relationMember % QLatin1String("; }\n");
   out += QLatin1String("   if (pDaoError) { (* pDaoError) = daoError; }\n");
}

// Body shared by both fetching getters; they differ only in the plain accessor they fall back to.
void appendFetchingBody(const cpp_builder & b, QString & out, const model::entity & e, const model::relationship & r,
                        const QString & plainAccessor, const QString & member)
{
   out += QLatin1String("{\n");
   out += QLatin1String("   if (pDaoError) { (* pDaoError) = QSqlError(); }\n");
   out += QLatin1String("   if (! bLoadFromDatabase) { return ") % plainAccessor % QLatin1String("(); }\n");
   appendFetchBlock(b, out, e, r);
   out += QLatin1String("   return ") % member % QLatin1String(";\n");
   out += QLatin1String("}\n\n");
}

// The property of each relation that has one, in the entity's order.
model::list_of_property relationProperties(const model::list_of_relationship & lst)
{
   model::list_of_property lstProperties;
   for (const model::relationship_ptr & pRelation : lst)
   {
      const model::property_ptr pProperty = (pRelation ? pRelation->getProperty() : model::property_ptr());
      if (pProperty) { lstProperties.append(pProperty); }
   }
   return lstProperties;
}

} // namespace

void LIST_RELATIONS_TYPEDEF(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const model::list_of_relationship lst = e.getListOfRelation();
   if (lst.isEmpty()) { return; }
   out += QLatin1String("public:\n");
   for (const model::property_ptr & pProperty : relationProperties(lst))
   {
      out += QLatin1String("\n   ") % pProperty->getTypeDesc(true, false, QString());
   }
   out += QLatin1String("\n\n");
}

void LIST_RELATIONS_GETTER_WITH_FETCH(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(b); Q_UNUSED(p);
   const model::list_of_relationship lst = e.getListOfRelation();
   for (const model::relationship_ptr & pRelation : lst)
   {
      const model::property_ptr pProperty = (pRelation ? pRelation->getProperty() : model::property_ptr());
      if (! pProperty || ! hasFetchingGetter(* pProperty)) { continue; }
      const QString name = pProperty->getName();
      const QString type = pProperty->getTypeDesc(false, true, QString());
      out += QLatin1String("   ") % type % QLatin1String(" get") % name % kFetchParameters;
      if (hasReferenceAccessors(* pRelation)) { out += QLatin1String("   ") % type % QLatin1String(" & ") % name % kFetchParameters; }
   }
}

void IMPLEMENT_LIST_RELATIONS_GETTER_WITH_FETCH(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   const model::list_of_relationship lst = e.getListOfRelation();
   if (lst.isEmpty()) { return; }
   const QString entityName = e.getName();
   for (const model::relationship_ptr & pRelation : lst)
   {
      const model::property_ptr pProperty = (pRelation ? pRelation->getProperty() : model::property_ptr());
      if (! pProperty || ! hasFetchingGetter(* pProperty)) { continue; }
      const QString name = pProperty->getName();
      const QString type = pProperty->getTypeDesc(false, true, QString());
      const QString member = memberName(b, name);

      out += type % QLatin1Char(' ') % entityName % QLatin1String("::get") % name % kFetchParametersImpl;
      appendFetchingBody(b, out, e, * pRelation, QLatin1String("get") % name, member);

      if (hasReferenceAccessors(* pRelation))
      {
         out += type % QLatin1String(" & ") % entityName % QLatin1String("::") % name % kFetchParametersImpl;
         appendFetchingBody(b, out, e, * pRelation, name, member);
      }
   }
}

void LIST_STATIC_RELATIONS_KEYS(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   const model::list_of_relationship lst = e.getListOfRelation();
   if (lst.isEmpty()) { return; }
   out += QLatin1String("public:\n");
   for (const model::property_ptr & pProperty : relationProperties(lst))
   {
      const QString name = pProperty->getName();
      QString column = pProperty->getColumnName();
      if (column.isEmpty()) { column = name; }
      out += QLatin1String("\n   static QString relation_") % name % QLatin1String("(bool key = false) ");
      appendNameFunctionBody(out, name, column);
   }
}

} // namespace generators
} // namespace plugin
