// The heap block behind a String, and the functions that make and change it.
//
// Every function takes `old`, the block in use, consumes it, and returns the block to store in its
// place; the two may be the same. A null `old` and the shared empty block count as no block.
//
// Capacities run 6, 22, 54, 118, 246, ...: a block is sized to a power of two, less 10. Lengths
// have 16 bits: one above 65535 wraps, and the text then ends at the wrapped length. The block
// behind it is always as large as what was written.
#pragma once

#include <cstdint>

#include "zu/export.h"

struct StrRep {
  std::uint16_t len;  // characters in use
  std::uint16_t sz;   // capacity in characters, the terminator not counted
  char s[1];          // `len` characters and a 0 byte
};

// The block of all empty strings: length 0, capacity 1. Never written to and never freed.
extern ZU_API const StrRep _nilStrRep;

// A text as an argument: where it starts and how long it is. A negative length stands for the
// length of the terminated text, a null text being empty.

// Makes the text src of srclen characters, with the length newlen (at least srclen): what lies
// between the two is not set. src may lie in old.
ZU_API StrRep* Salloc(StrRep* old, char const* src, int srclen, int newlen);

// Makes a copy of src. An absent src empties old, which keeps its capacity.
ZU_API StrRep* Scopy(StrRep* old, StrRep const* src);

// Makes s + t, and s + t + u. Each source may lie in old.
ZU_API StrRep* Scat(StrRep* old, char const* s, int slen, char const* t, int tlen);
ZU_API StrRep* Scat(StrRep* old, char const* s, int slen, char const* t, int tlen, char const* u,
                    int ulen);

// Puts t before the text of old. t may lie in old.
ZU_API StrRep* Sprepend(StrRep* old, char const* t, int tlen);

// Upper and lower case by the run-time's islower, isupper, toupper, tolower of each byte.
ZU_API StrRep* Supcase(StrRep const* src, StrRep* dest);
ZU_API StrRep* Sdowncase(StrRep const* src, StrRep* dest);

// Words get one upper-case letter at their start and lower-case letters behind it. Digits belong to
// words, and an apostrophe does not end one: "o'NEILL 2ND" gives "O'neill 2nd".
ZU_API StrRep* Scapitalize(StrRep const* src, StrRep* dest);

// Last character first. In place, like the three above, where src is dest.
ZU_API StrRep* Sreverse(StrRep const* src, StrRep* dest);

// Sets the length to newlen and sees that it fits. Existing text stays in front; neither the
// characters gained nor a terminator behind them are set.
ZU_API StrRep* Sresize(StrRep* old, int newlen);
