// Conversion between 8-bit text, which is UTF-8 throughout, and wide text.
//
//   open(UniToAnsi(szWidePath)());
//
// Bytes and wide characters that are no character become U+FFFD. A sequence that is cut by the end
// of the text stops there.
//
// Required: a copy, by constructor or assignment, takes the pointer to the converted text and
// nothing else, and the destructor frees that text. Of two such objects only one may be destroyed,
// and the other must not be used after it. Applications hand the text on this way.
#pragma once

#include <string>

#include "zu/export.h"

class ZU_API AnsiToUni {
 public:
  AnsiToUni(char const* szText);
  AnsiToUni(std::string const& strText);
  AnsiToUni(AnsiToUni const&) = default;
  AnsiToUni& operator=(AnsiToUni const&) = default;
  virtual ~AnsiToUni();

  // The converted text; null where the source was null or empty.
  wchar_t const* operator()() const { return m_pBuffer; }

 protected:
  wchar_t* m_pBuffer = nullptr;
};

class ZU_API UniToAnsi {
 public:
  UniToAnsi(wchar_t const* szText);
  UniToAnsi(std::wstring const& strText);
  UniToAnsi(UniToAnsi const&) = default;
  UniToAnsi& operator=(UniToAnsi const&) = default;
  virtual ~UniToAnsi();

  // The converted text; null where the source was null or empty.
  char const* operator()() const { return m_pBuffer; }

 protected:
  char* m_pBuffer = nullptr;
};
