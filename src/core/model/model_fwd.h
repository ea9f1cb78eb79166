#pragma once

#include <memory>

#include <QList>

namespace model {

class persistable;
class project;
class entity;
class property;
class property_type;
class relationship;
class enumeration;
class global_params;
class plugin_params;

typedef std::shared_ptr<project> project_ptr;
typedef std::shared_ptr<entity> entity_ptr;
typedef std::shared_ptr<property> property_ptr;
typedef std::shared_ptr<property_type> property_type_ptr;
typedef std::shared_ptr<relationship> relationship_ptr;
typedef std::shared_ptr<enumeration> enumeration_ptr;
typedef std::shared_ptr<global_params> global_params_ptr;
typedef std::shared_ptr<plugin_params> plugin_params_ptr;

typedef QList<entity_ptr> list_of_entity;
typedef QList<enumeration_ptr> list_of_enumeration;
typedef QList<property_ptr> list_of_property;
typedef QList<relationship_ptr> list_of_relationship;
typedef std::shared_ptr<list_of_entity> list_of_entity_ptr;
typedef std::shared_ptr<list_of_enumeration> list_of_enumeration_ptr;
typedef std::shared_ptr<list_of_property> list_of_property_ptr;

} // namespace model
