// Visibility of the interface of zu::geo. All symbols are hidden unless marked
// ZU_GEO_API.
#pragma once

#include "zu/export.h"

#if defined(ZU_STATIC)
#define ZU_GEO_API
#elif defined(_WIN32)
#if defined(ZU_GEO_BUILDING)
#define ZU_GEO_API __declspec(dllexport)
#else
#define ZU_GEO_API __declspec(dllimport)
#endif
#else
#define ZU_GEO_API __attribute__((visibility("default")))
#endif
