#pragma once

#include <QMetaType>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"

// The model pointers travel through signals (also queued ones) and variants.
Q_DECLARE_METATYPE(model::project_ptr)
Q_DECLARE_METATYPE(model::entity_ptr)
Q_DECLARE_METATYPE(model::enumeration_ptr)

namespace model {

// Registers the model pointer types with Qt's meta-type system (done by main_wnd; idempotent).
TAVRELCORE_EXPORT void registerModelMetaTypes();

} // namespace model
