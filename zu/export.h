// Visibility of the exported interface. All symbols are hidden unless marked ZU_API.
#pragma once

#if defined(ZU_STATIC)
#define ZU_API
#elif defined(_WIN32)
#if defined(ZU_BUILDING)
#define ZU_API __declspec(dllexport)
#else
#define ZU_API __declspec(dllimport)
#endif
#else
#define ZU_API __attribute__((visibility("default")))
#endif
