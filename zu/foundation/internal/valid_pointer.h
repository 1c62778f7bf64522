#pragma once

#include <cstdint>

// Whether a pointer can be one to an object: null and the addresses of the first 64 KiB, which no
// system gives to objects (a member of a null record, a small number), are not.
inline bool IsValidPointer(void const* p) { return reinterpret_cast<std::uintptr_t>(p) >= 0x10000; }
