#pragma once

#include <QString>

#include <memory>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "cpp_export/plugin/cpp_builder.h"

// A model held in memory for the generator tests; ids are given in creation order. Call
// project->resolveLinks() once the model is complete.
struct gen_test_model
{
   model::project_ptr project = std::make_shared<model::project>();
   long lastEntityId = 0;
   long lastPropertyId = 0;

   model::entity_ptr addEntity(const QString & name, const QString & ns = QString())
   {
      auto p = std::make_shared<model::entity>();
      p->setId(++lastEntityId);
      p->setName(name);
      p->setNamespace(ns);
      project->addEntity(p);
      return p;
   }

   // A property with a type text (none when empty), a default value, a wrapper and a collection.
   model::property_ptr addProperty(const model::entity_ptr & e, const QString & name, const QString & type,
                                   const QString & def = QString(), int decoration = 0, int collection = 0)
   {
      auto p = std::make_shared<model::property>();
      p->setId(++lastPropertyId);
      p->setName(name);
      if (! type.isEmpty())
      {
         auto t = std::make_shared<model::property_type>();
         t->setPrimitiveType(type);
         t->setDefaultValue(def);
         t->setDecoration(decoration);
         t->setCollection(collection);
         p->setType(t);
      }
      e->addProperty(p);
      return p;
   }

   model::property_ptr addRelation(const model::entity_ptr & e, const QString & name, int kind, const QString & target)
   {
      model::property_ptr p = addProperty(e, name, QString());
      auto r = std::make_shared<model::relationship>();
      r->setId(p->getId());
      r->setType(kind);
      r->setTargetKey(target);
      p->setRelation(r);
      return p;
   }
};

typedef void (* entity_generator)(const plugin::cpp_builder &, QString &, model::project &, model::entity &);
