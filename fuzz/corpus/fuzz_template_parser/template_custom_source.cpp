#include "../../include/@@PROJECT_NAME@@_precompiled_header.gen.h"

@@INCLUDE_ITEM_HEADER@@

#include <Lumor_Impl.h>

@@NAMESPACE_BEGIN@@

/* -- Put your custom code here -- */

@@NAMESPACE_END@@
