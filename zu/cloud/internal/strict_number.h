// Numbers of text files that are held to their format: all of a token, or an account of it.
#pragma once

#include <cmath>
#include <cstring>

#include "zu/cloud/internal/plain_scan.h"
#include "zu/cloud/internal/token_split.h"
#include "zu/foundation/number_text.h"

// The whole token as a number; "inf" and "nan" are numbers here. False for anything else,
// hexadecimal texts included. The text must be readable for 64 bytes behind the token, as that of
// a ZuLineSource is, or end in a line end.
[[gnu::always_inline]] inline bool ZuStrictNumber(const ZuTextToken& token, double* pdValue) {
  const char* p = token.pBegin;
  if (ZuPlainScan::Double(&p, pdValue) && p == token.pEnd) return true;
  *pdValue = ZuAtof(token.pBegin, token.pEnd, &p);
  return p == token.pEnd && p != token.pBegin &&
         std::memchr(token.pBegin, 'x', static_cast<std::size_t>(p - token.pBegin)) == nullptr &&
         std::memchr(token.pBegin, 'X', static_cast<std::size_t>(p - token.pBegin)) == nullptr;
}

// Why a token is no number, and what would be right.
ZuTextFault ZuWhyNoNumber(const ZuTextToken& token);
