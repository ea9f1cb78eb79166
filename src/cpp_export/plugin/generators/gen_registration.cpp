// Body of the ORM registration function of an entity, its default constructor and the forward
// declarations of the classes its relationships point to.

#include "cpp_export/plugin/generators/generators.h"

#include <QSet>
#include <QStringBuilder>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "tools/string_helper.h"

namespace plugin {
namespace generators {

namespace {

using tools::string_helper;

// One "PREFIX setPropertyBag(key, value);" line per meta data key, in the host's key order.
void appendPropertyBag(QString & out, const model::persistable & item, QLatin1String prefix, QLatin1String suffix)
{
   const QStringList keys = item.getAllMetaDataKeys();
   for (const QString & key : keys)
   {
      out += prefix % string_helper::toCppString(key) % QLatin1String("\", \"")
             % string_helper::toCppString(item.getMetaData(key).toString()) % suffix;
   }
}

// The lines that follow a t.id or t.data mapping.
void appendDataMemberDetails(QString & out, const model::property & p)
{
   const QString name = p.getName();
   const QString column = p.getColumnName();
   if (! column.isEmpty() && (column != name))
   {
      out += QLatin1String("\n   pData->setName(\"") % string_helper::toCppString(column) % QLatin1String("\");");
   }
   const QString description = p.getDescription();
   if (! description.isEmpty())
   {
      out += QLatin1String("\n   pData->setDescription(\"") % string_helper::toCppString(description) % QLatin1String("\");");
   }
   appendPropertyBag(out, p, QLatin1String("\n   pData->setPropertyBag(\""), QLatin1String("\");"));
   const QString sqlType = p.getForceSqlType();
   if (! sqlType.isEmpty()) { out += QLatin1String("\n   pData->setSqlType(\"") % string_helper::toCppString(sqlType) % QLatin1String("\");"); }
   const QString sqlAlias = p.getForceSqlAlias();
   if (! sqlAlias.isEmpty()) { out += QLatin1String("\n   pData->setSqlAlias(\"") % string_helper::toCppString(sqlAlias) % QLatin1String("\");"); }
   const QString format = p.getFormat();
   if (! format.isEmpty()) { out += QLatin1String("\n   pData->setFormat(\"") % string_helper::toCppString(format) % QLatin1String("\");"); }
}

void appendRelation(QString & out, const model::relationship & r, const model::property & p, const QString & owner, QLatin1String pimplArg)
{
   const QString name = p.getName();
   const QString version = QString::number(p.getVersion());
   const QString member = owner % QLatin1String("::m_") % name;
   // What stands between the relation's name and its version differs by kind.
   const char * sMethod = nullptr;
   QString sBetween;
   switch (r.getType())
   {
      case 0: sMethod = "relationOneToOne"; break;
      case 1:
         sMethod = "relationOneToMany";
         sBetween = QLatin1Char('"') % r.getForeignKey() % QLatin1String("\", ");
         break;
      case 2: sMethod = "relationManyToOne"; break;
      case 3:
         sMethod = "relationManyToMany";
         sBetween = QLatin1Char('"') % r.getExtraTable() % QLatin1String("\", \"") % r.getForeignKey() % QLatin1String("\", \"")
                    % r.getForeignKeyOwner() % QLatin1String("\", ");
         break;
      default: break;
   }
   if (sMethod)
   {
      out += QLatin1String("\n   pRelation = t.") % QLatin1String(sMethod) % QLatin1String("(& ") % member % QLatin1String(", \"") % name
             % QLatin1String("\", ") % sBetween % version % pimplArg % QLatin1String(");");
   }

   const QString column = p.getColumnName();
   if (! column.isEmpty() && (column != name))
   {
      out += QLatin1String("\n   pRelation->getDataMember()->setName(\"") % string_helper::toCppString(column) % QLatin1String("\");");
   }
   const QString description = p.getDescription();
   if (! description.isEmpty())
   {
      out += QLatin1String("\n   pRelation->getDataMember()->setDescription(\"") % string_helper::toCppString(description)
             % QLatin1String("\");");
   }
   appendPropertyBag(out, p, QLatin1String("\n   pRelation->setPropertyBag(\""), QLatin1String("\");"));
   if (! p.isSerializable()) { out += QLatin1String("\n   pRelation->getDataMember()->setSerialize(false);"); }
   if (p.isIndex()) { out += QLatin1String("\n   pRelation->getDataMember()->setIsIndex(true);"); }
}

void appendValidators(QString & out, const model::property & p, bool bPrimaryKey)
{
   const QString name = p.getName();
   const QString minValue = p.getMinValue().toString();
   if (! minValue.isEmpty()) { out += QLatin1String("\n   pAllValidator->add_MinDecimal(\"") % name % QLatin1String("\", ") % minValue % QLatin1String(");"); }
   const QString maxValue = p.getMaxValue().toString();
   if (! maxValue.isEmpty()) { out += QLatin1String("\n   pAllValidator->add_MaxDecimal(\"") % name % QLatin1String("\", ") % maxValue % QLatin1String(");"); }
   const QString minLength = p.getMinLength().toString();
   if (! minLength.isEmpty()) { out += QLatin1String("\n   pAllValidator->add_MinLength(\"") % name % QLatin1String("\", ") % minLength % QLatin1String(");"); }
   const QString maxLength = p.getMaxLength().toString();
   if (! maxLength.isEmpty()) { out += QLatin1String("\n   pAllValidator->add_MaxLength(\"") % name % QLatin1String("\", ") % maxLength % QLatin1String(");"); }
   const QString regExp = p.getRegExp();
   if (! regExp.isEmpty())
   {
      out += QLatin1String("\n   pAllValidator->add_RegExp(\"") % name % QLatin1String("\", \"") % string_helper::toCppString(regExp)
             % QLatin1String("\");");
   }
   if (! bPrimaryKey && ! p.getAllowNull()) { out += QLatin1String("\n   pAllValidator->add_NotNull(\"") % name % QLatin1String("\");"); }
}

} // namespace

void IMPLEMENT_ZY_REGISTER_CLASS(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(p);
   const bool bPImpl = isPImpl(b);
   const QString key = e.getKey();
   const QString name = e.getName();
   // With PIMPL the members live in the private structure nested in the class.
   const QString owner = (bPImpl ? QString(key % QLatin1String("::") % name % QLatin1String("_impl")) : key);
   const QLatin1String pimplArg = (bPImpl ? QLatin1String(", pImpl") : QLatin1String(""));

   out += QLatin1String("   zy::IxDataMember * pData = NULL; Q_UNUSED(pData);\n"
                        "   zy::IxSqlRelation * pRelation = NULL; Q_UNUSED(pRelation);\n"
                        "   zy::IxFunction * pFct = NULL; Q_UNUSED(pFct);\n"
                        "   zy::IxValidator * pValidator = NULL; Q_UNUSED(pValidator);\n");
   if (bPImpl)
   {
      out += QLatin1String("   zy::IxDataMember * pImpl = NULL; Q_UNUSED(pImpl);\n\n");
      out += QLatin1String("   pImpl = t.pimpl(& ") % key % QLatin1String("::m_pImpl);\n\n");
   }

   QString table = e.getTableName();
   if (table.isEmpty()) { table = name; }
   out += QLatin1String("\n   t.setName(\"") % table % QLatin1String("\");\n");
   const QString description = e.getDescription();
   if (! description.isEmpty()) { out += QLatin1String("   t.setDescription(\"") % string_helper::toCppString(description) % QLatin1String("\");\n"); }
   const QString softDelete = e.getSoftDeleteColumn();
   if (! softDelete.isEmpty()) { out += QLatin1String("   t.setSoftDelete(zy::ZySoftDelete(\"") % softDelete % QLatin1String("\"));\n"); }
   if (e.isReadOnly()) { out += QLatin1String("   t.setDaoReadOnly(true);\n"); }
   appendPropertyBag(out, e, QLatin1String("   t.setPropertyBag(\""), QLatin1String("\");\n"));

   const model::property_ptr pId = e.getPropertyId(false);
   if (pId && ! pId->getMetaData(QLatin1String("TAVREL_NO_ID")).toBool())
   {
      const QString idName = pId->getName();
      out += QLatin1String("\n   pData = t.id(& ") % owner % QLatin1String("::m_") % idName % QLatin1String(", \"") % idName
             % QLatin1String("\", ") % QString::number(pId->getVersion()) % pimplArg % QLatin1String(");");
      appendDataMemberDetails(out, * pId);
   }

   const model::list_of_property lstProperty = e.getListOfProperty(false, false, false);
   if (! lstProperty.isEmpty()) { out += QLatin1Char('\n'); }
   for (const model::property_ptr & pProperty : lstProperty)
   {
      if (! pProperty || (pId && (pProperty->getId() == pId->getId()))) { continue; }
      const QString propertyName = pProperty->getName();
      out += QLatin1String("\n   pData = t.data(& ") % owner % QLatin1String("::m_") % propertyName % QLatin1String(", \"") % propertyName
             % QLatin1String("\", ") % QString::number(pProperty->getVersion())
             % (pProperty->isSerializable() ? QLatin1String(", true") : QLatin1String(", false"))
             % (pProperty->isTransient() ? QLatin1String(", false") : QLatin1String(", true")) % pimplArg % QLatin1String(");");
      appendDataMemberDetails(out, * pProperty);
      if (pProperty->isIndex()) { out += QLatin1String("\n   pData->setIsIndex(true);"); }
      if (pProperty->getUnique()) { out += QLatin1String("\n   pData->setIsUnique(true);"); }
   }

   const model::list_of_relationship lstRelation = e.getListOfRelation();
   if (! lstRelation.isEmpty()) { out += QLatin1Char('\n'); }
   for (const model::relationship_ptr & pRelation : lstRelation)
   {
      const model::property_ptr pProperty = (pRelation ? pRelation->getProperty() : model::property_ptr());
      if (! pProperty) { continue; }
      appendRelation(out, * pRelation, * pProperty, owner, pimplArg);
   }

   out += QLatin1String("\n\n   zy::ZyValidatorX<") % key % QLatin1String("> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);");
   const QString validatorMethod = e.getValidatorMethod();
   if (! validatorMethod.isEmpty())
   {
      out += QLatin1String("\n   pAllValidator->add_CustomValidator(std::mem_fn(& ") % key % QLatin1String("::") % validatorMethod
             % QLatin1String("));");
   }
   for (const model::property_ptr & pProperty : lstProperty)
   {
      if (! pProperty) { continue; }
      appendValidators(out, * pProperty, (pId && (pProperty->getId() == pId->getId())));
   }
}

void IMPLEMENT_CONSTRUCTOR(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   const QString name = e.getName();
   out += name % QLatin1String("::") % name % QLatin1String("()");
   bool bFirst = true;
   const model::entity_ptr pParent = savedParent(p, e);
   if (pParent)
   {
      out += QLatin1String(" : ") % pParent->getKey() % QLatin1String("()");
      bFirst = false;
   }
   if (isPImpl(b))
   {
      // Member defaults belong to the private structure's own constructor.
      out += (bFirst ? QLatin1String(" : ") : QLatin1String(", ")) % QLatin1String("m_pImpl(new ") % name % QLatin1String("_impl()) { ; }");
      return;
   }
   appendMemberInitialisers(out, e, bFirst, model::property_ptr());
   out += QLatin1String(" { ; }");
}

void LIST_FORWARD_DECLARATION(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   Q_UNUSED(b); Q_UNUSED(p);
   const model::list_of_property lst = e.getListOfProperty(false, true, false);
   QSet<QString> declared;
   for (const model::property_ptr & pProperty : lst)
   {
      if (! pProperty || ! pProperty->hasRelationship()) { continue; }
      const model::entity_ptr pTarget = pProperty->getRelation()->getEntityTarget();
      if (! pTarget) { continue; }
      const QString targetKey = pTarget->getKey();
      if (declared.contains(targetKey)) { continue; }
      const QString ns = pTarget->getNamespace();
      if (! ns.isEmpty()) { out += namespaceBegin(ns) % QLatin1Char('\n'); }
      out += QLatin1String("class ") % pTarget->getName() % QLatin1String(";\n");
      if (! ns.isEmpty()) { out += namespaceEnd(ns) % QLatin1Char('\n'); }
      declared.insert(targetKey);
   }
}

} // namespace generators
} // namespace plugin
