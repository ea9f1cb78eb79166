@@COMMENT_FILE_CREATED_BY@@

#include "../include/@@PROJECT_NAME@@_precompiled_header.gen.h"

#include "../include/@@COMPLEX_CLASS_NAME_HELPER@@.gen.h"

#include <Lumor_Impl.h>

@@NAMESPACE_BEGIN@@

@@CLASS_NAME@@::@@CLASS_NAME@@() { ; }

@@CLASS_NAME@@::~@@CLASS_NAME@@() { ; }

@@NAMESPACE_END@@
