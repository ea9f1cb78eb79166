#pragma once

// Small builders for the model and storage tests.

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <string>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "storage/project_storage.h"

namespace model_test {

inline std::string str(const QString & s) { return s.toStdString(); }

inline model::entity_ptr makeEntity(const QString & sNamespace, const QString & sName, const QString & sParentKey = QString())
{
   auto p = std::make_shared<model::entity>();
   p->setNamespace(sNamespace);
   p->setName(sName);
   p->setParentKey(sParentKey);
   return p;
}

inline model::property_ptr addProperty(const model::entity_ptr & pEntity, const QString & sName, const QString & sType, bool bPrimaryKey = false)
{
   auto p = std::make_shared<model::property>();
   p->setName(sName);
   if (! sType.isEmpty())
   {
      auto pType = std::make_shared<model::property_type>();
      pType->setPrimitiveType(sType);
      p->setType(pType);
   }
   p->setPrimaryKey(bPrimaryKey);
   pEntity->addProperty(p);
   return p;
}

inline model::property_ptr addRelation(const model::entity_ptr & pEntity, const QString & sName, int iKind, const QString & sTargetKey)
{
   auto p = std::make_shared<model::property>();
   p->setName(sName);
   auto pRelation = std::make_shared<model::relationship>();
   pRelation->setType(iKind);
   pRelation->setTargetKey(sTargetKey);
   p->setRelation(pRelation);
   pEntity->addProperty(p);
   return p;
}

inline model::enumeration_ptr makeEnumeration(const QString & sNamespace, const QString & sName)
{
   auto p = std::make_shared<model::enumeration>();
   p->setNamespace(sNamespace);
   p->setName(sName);
   return p;
}

// Parses a JSON model that must be valid; the failure text shows when it is not.
inline model::project_ptr parseModel(const QByteArray & json)
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::parseJson(json, "test.json", p);
   EXPECT_TRUE(ok.getValue()) << ok.getDesc().toStdString();
   return p;
}

// Parses a JSON model that must be rejected and returns the error text.
inline QString parseError(const QByteArray & json, const QString & sFile = QString("model.json"))
{
   model::project_ptr p;
   const zy::ZyBool ok = storage::project_storage::parseJson(json, sFile, p);
   EXPECT_FALSE(ok.getValue()) << "the document was accepted";
   EXPECT_EQ(p, nullptr);
   return ok.getDesc();
}

// One line per item, so that a failed comparison prints readable text.
inline std::string lines(const QStringList & lst) { return lst.join("\n").toStdString(); }

inline QStringList messages(const zy::ZyInvalidValueX & lst)
{
   QStringList lstResult;
   for (const zy::ZyInvalidValue & v : lst) { lstResult.append(v.getMessage()); }
   return lstResult;
}

} // namespace model_test
