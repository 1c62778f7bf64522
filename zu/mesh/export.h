// Visibility of the interface of zu::mesh. All symbols are hidden unless marked
// ZU_MESH_API.
#pragma once

#include "zu/export.h"

#if defined(ZU_STATIC)
#define ZU_MESH_API
#elif defined(_WIN32)
#if defined(ZU_MESH_BUILDING)
#define ZU_MESH_API __declspec(dllexport)
#else
#define ZU_MESH_API __declspec(dllimport)
#endif
#else
#define ZU_MESH_API __attribute__((visibility("default")))
#endif
