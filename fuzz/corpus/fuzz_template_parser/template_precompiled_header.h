@@COMMENT_FILE_CREATED_BY@@

#ifndef _@@PROJECT_NAME_UPPER@@_PRECOMPILED_HEADER_H_
#define _@@PROJECT_NAME_UPPER@@_PRECOMPILED_HEADER_H_

#ifdef _MSC_VER
#pragma once
#endif

#include <Lumor.h>

#include "../include/@@PROJECT_NAME@@_export.gen.h"

#include "../custom/include/@@PROJECT_NAME@@_precompiled_header.h"

#endif // _@@PROJECT_NAME_UPPER@@_PRECOMPILED_HEADER_H_
