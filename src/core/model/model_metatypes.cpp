#include "model/model_metatypes.h"

namespace model {

void registerModelMetaTypes()
{
   qRegisterMetaType<model::project_ptr>("model::project_ptr");
   qRegisterMetaType<model::entity_ptr>("model::entity_ptr");
   qRegisterMetaType<model::enumeration_ptr>("model::enumeration_ptr");
}

} // namespace model
