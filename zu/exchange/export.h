// Visibility of the interface of zu::exchange. All symbols are hidden unless marked
// ZU_EXCHANGE_API.
#pragma once

#include "zu/export.h"

#if defined(ZU_STATIC)
#define ZU_EXCHANGE_API
#elif defined(_WIN32)
#if defined(ZU_EXCHANGE_BUILDING)
#define ZU_EXCHANGE_API __declspec(dllexport)
#else
#define ZU_EXCHANGE_API __declspec(dllimport)
#endif
#else
#define ZU_EXCHANGE_API __attribute__((visibility("default")))
#endif
