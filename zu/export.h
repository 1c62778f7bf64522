// Visibility of the exported interface. All symbols are hidden unless marked ZU_API.
#pragma once

#if defined(_MSVC_LANG) ? _MSVC_LANG < 202002L : __cplusplus < 202002L
#error "Zu needs C++20: compile with -std=c++20"
// There is no such file: the compiler stops here, with nothing else to say.
#include <zu/compiled_as_cxx20>
#endif

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
