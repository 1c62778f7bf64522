// Visibility of the interface of zu::adjust. All symbols are hidden unless marked ZU_ADJUST_API.
#pragma once

#include "zu/export.h"

#if defined(ZU_STATIC)
#define ZU_ADJUST_API
#elif defined(_WIN32)
#if defined(ZU_ADJUST_BUILDING)
#define ZU_ADJUST_API __declspec(dllexport)
#else
#define ZU_ADJUST_API __declspec(dllimport)
#endif
#else
#define ZU_ADJUST_API __attribute__((visibility("default")))
#endif
