// Blocks of String representations: sizes, making, freeing.
#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <new>

#include "zu/foundation/str_rep.h"

namespace zu::internal {

constexpr std::size_t kStrMinBlock = 16;  // smallest size class
constexpr std::size_t kStrSlack = 10;     // size class less capacity
constexpr std::size_t kStrUnused = 4;     // size class less bytes allocated
constexpr std::uint16_t kStrTop = 65526;  // capacity told by every block for 65526 and more

inline bool IsNil(StrRep const* p) { return p == nullptr || p == &_nilStrRep; }

inline StrRep* NilRep() { return const_cast<StrRep*>(&_nilStrRep); }

// Length of an argument text; n below 0 asks for the terminator. A null text is empty.
inline std::size_t TextLength(char const* t, int n) {
  if (t == nullptr) return 0;
  return n >= 0 ? static_cast<std::size_t>(n) : std::strlen(t);
}

inline std::size_t SizeClass(std::size_t n) {
  std::size_t size = kStrMinBlock;
  while (size < n + kStrSlack) size *= 2;
  return size;
}

// Characters that a block made for n holds.
inline std::size_t RoomFor(std::size_t n) { return SizeClass(n) - kStrSlack; }

// A block that holds n characters and the terminator, whatever its 16-bit capacity then tells.
inline StrRep* NewRep(std::size_t n) {
  const std::size_t size = SizeClass(n);
  auto* p = static_cast<StrRep*>(::operator new(size - kStrUnused));
  p->sz = static_cast<std::uint16_t>(size - kStrSlack);
  return p;
}

inline void FreeRep(StrRep* p) {
  if (!IsNil(p)) ::operator delete(p);
}

// The text ends at the stored length, also where that has wrapped.
inline void SetLength(StrRep* p, std::size_t n) {
  p->len = static_cast<std::uint16_t>(n);
  p->s[p->len] = '\0';
}

// Whether a text starts in the block.
inline bool LiesIn(StrRep const* p, char const* t) {
  const std::less_equal<char const*> isAtOrBefore;  // an order of all pointers
  return !IsNil(p) && isAtOrBefore(p->s, t) && isAtOrBefore(t, p->s + p->sz);
}

}  // namespace zu::internal
