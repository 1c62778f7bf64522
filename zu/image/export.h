// Visibility of the interface of zu::image. All symbols are hidden unless marked
// ZU_IMAGE_API.
#pragma once

#include "zu/export.h"

#if defined(ZU_STATIC)
#define ZU_IMAGE_API
#elif defined(_WIN32)
#if defined(ZU_IMAGE_BUILDING)
#define ZU_IMAGE_API __declspec(dllexport)
#else
#define ZU_IMAGE_API __declspec(dllimport)
#endif
#else
#define ZU_IMAGE_API __attribute__((visibility("default")))
#endif
