#ifndef @@INCLUDE_MACRO_GUARD@@CUSTOM
#define @@INCLUDE_MACRO_GUARD@@CUSTOM

#ifdef _MSC_VER
#pragma once
#endif

@@NAMESPACE_BEGIN@@

/* -- Put your custom code here -- */

@@NAMESPACE_END@@

#endif // @@INCLUDE_MACRO_GUARD@@CUSTOM
