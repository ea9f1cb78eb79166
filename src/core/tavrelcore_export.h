#pragma once

#include <QtCore/qglobal.h>

#ifdef TAVRELCORE_BUILD
#define TAVRELCORE_EXPORT Q_DECL_EXPORT
#else
#define TAVRELCORE_EXPORT Q_DECL_IMPORT
#endif
