// Text to numbers and numbers to text, fast and independent of the process locale.
//
// Reading gives, bit for bit, what atof and atoi give in the "C" locale: leading white space, a
// sign, the longest number that stands there, whatever follows it. No number gives 0. Doubles are
// rounded correctly; too large ones are infinite, too small ones denormal or 0; "inf", "nan" and
// hexadecimal texts count as they do for atof. Integers saturate at 32 bits.
//
// Writing gives, byte for byte, what printf and an ostream give. The functions write no terminator
// and return the end of the text. The buffer's least size stands at each: bytes behind the text,
// inside it, may be written too.
#pragma once

#include "zu/export.h"

// A terminated text.
ZU_API double ZuAtof(char const* szText);
ZU_API int ZuAtoi(char const* szText);

// The text [pBegin, pEnd), which need not be terminated.
ZU_API double ZuAtof(char const* pBegin, char const* pEnd);
ZU_API int ZuAtoi(char const* pBegin, char const* pEnd);

// An id, which has no sign in a file: as ZuAtoi, but 0 to 4294967295 are read whole and more gives
// 4294967295. A number below 0 is that of ZuAtoi, taken as unsigned: -1 gives 4294967295.
ZU_API unsigned int ZuAtou(char const* pBegin, char const* pEnd);

// As ZuAtof; *ppStop becomes the first character behind the number, or pBegin where there is none.
ZU_API double ZuAtof(char const* pBegin, char const* pEnd, char const** ppStop);

// "%.16g": at most 23 characters, in a buffer of kZuGeneral16Size.
constexpr int kZuGeneral16Size = 40;
ZU_API char* ZuFormatGeneral16(char* pOut, double dValue);

// The shortest text that the readers of keyword files, of coordinate files and ZuAtof take for the
// same double: "0.1", "1e+22", "-0.0", "inf", "-nan". A whole number beyond 32 bits has a point or
// an exponent, since one without is an integer in a keyword file, and limited like one. In a buffer
// of kZuShortestSize.
constexpr int kZuShortestSize = 32;
ZU_API char* ZuFormatShortest(char* pOut, double dValue);

// "%.{iPrecision}g": at most iPrecision + 8 characters. A precision below 0 counts as 6, one of 0
// as 1.
ZU_API char* ZuFormatGeneral(char* pOut, double dValue, int iPrecision);

// "%{iWidth}.9f", right-aligned: in a buffer of kZuFixed9Size, or iWidth if that is more.
constexpr int kZuFixed9Size = 320;
ZU_API char* ZuFormatFixed9(char* pOut, double dValue, int iWidth = 0);

// "%.{iPrecision}f": at most iPrecision + 311 characters. A precision below 0 counts as 6.
ZU_API char* ZuFormatFixed(char* pOut, double dValue, int iPrecision);
