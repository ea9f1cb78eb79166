#ifndef _@@PROJECT_NAME_UPPER@@_PRECOMPILED_HEADER_H_CUSTOM
#define _@@PROJECT_NAME_UPPER@@_PRECOMPILED_HEADER_H_CUSTOM

#ifdef _MSC_VER
#pragma once
#endif

/* -- Put your custom code here -- */

#endif // _@@PROJECT_NAME_UPPER@@_PRECOMPILED_HEADER_H_CUSTOM
