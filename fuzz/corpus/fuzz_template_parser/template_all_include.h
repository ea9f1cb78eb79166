@@COMMENT_FILE_CREATED_BY@@

#ifndef _@@PROJECT_NAME_UPPER@@_ALL_INCLUDE_H_
#define _@@PROJECT_NAME_UPPER@@_ALL_INCLUDE_H_

#ifdef _MSC_VER
#pragma once
#endif

#include "../include/@@PROJECT_NAME@@_precompiled_header.gen.h"

@@LIST_PROJECT_ALL_INCLUDE@@

#endif // _@@PROJECT_NAME_UPPER@@_ALL_INCLUDE_H_
