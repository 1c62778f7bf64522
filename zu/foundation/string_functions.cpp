#include "zu/foundation/string_functions.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <string_view>

#include "zu/foundation/internal/str_block.h"

using zu::internal::FreeRep;
using zu::internal::NewRep;
using zu::internal::SetLength;

std::ostream& operator<<(std::ostream& stream, String const& x) {
  return stream << std::string_view(x.chars(), static_cast<std::size_t>(x.length()));
}

std::ostream& operator<<(std::ostream& stream, SubString const& x) {
  return stream << std::string_view(x.chars(), static_cast<std::size_t>(x.Rest()));
}

String join(String const src[], int n, String const& sep) {
  String result;
  for (int i = 0; i < n; ++i) {
    if (i > 0) result += sep;
    result += src[i];
  }
  return result;
}

int split(String const& src, String results[], int n, String const& sep) {
  const String strText(src);  // src and sep may be among the results
  const String strSep(sep);
  int nFields = 0;
  for (int iPos = 0; nFields < n && iPos < strText.length();) {
    const int iEnd = strText.index(strSep, iPos);
    const int iStop = iEnd < 0 ? strText.length() : iEnd;
    results[nFields++] = strText.at(iPos, iStop - iPos);
    iPos = iStop + strSep.length();
    if (iEnd < 0) break;
  }
  return nFields;
}

namespace {

// Gives each token to store, which returns whether it wants another one.
template <class Store>
void CutTokens(String const& src, String const& delims, Store store) {
  const String strText(src);  // src and delims may be among the results
  const String strDelims(delims);
  std::string_view rest(strText.chars());
  const std::string_view set(strDelims.chars());
  for (;;) {
    rest.remove_prefix(std::min(rest.find_first_not_of(set), rest.size()));
    if (rest.empty()) return;
    const std::string_view token = rest.substr(0, rest.find_first_of(set));
    if (!store(String(token.data(), static_cast<int>(token.size())))) return;
    rest.remove_prefix(token.size());
  }
}

}  // namespace

int tokenize(String const& src, String results[], int n, String const& delims) {
  if (n <= 0) return 0;
  int nTokens = 0;
  CutTokens(src, delims, [&](String const& strToken) {
    results[nTokens++] = strToken;
    return nTokens < n;
  });
  return nTokens;
}

int tokenize(String const& src, std::vector<String>& results, String const& delims) {
  CutTokens(src, delims, [&results](String const& strToken) {
    results.push_back(strToken);
    return true;
  });
  return static_cast<int>(results.size());
}

String replicate(char c, int n) {
  String result;
  if (n <= 0) return result;
  result.rep = NewRep(static_cast<std::size_t>(n));
  std::fill_n(result.rep->s, n, c);
  SetLength(result.rep, static_cast<std::size_t>(n));
  return result;
}

String replicate(String const& y, int n) {
  String result;
  if (n <= 0 || y.empty()) return result;
  const std::size_t nLength = static_cast<std::size_t>(y.length());
  StrRep* const p = NewRep(nLength * static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i)
    std::copy_n(y.chars(), nLength, p->s + nLength * static_cast<std::size_t>(i));
  SetLength(p, nLength * static_cast<std::size_t>(n));
  result.rep = p;
  return result;
}

int readline(std::istream& stream, String& x, char terminator, int discard) {
  using Traits = std::streambuf::traits_type;
  constexpr int kRoom = 80;
  if (x.allocation() < kRoom) x.alloc(kRoom);
  // The room is counted here, since a block above 65526 characters cannot tell its own.
  std::size_t nRoom = x.rep->sz;
  std::size_t n = 0;
  struct Finish {  // also when the stream throws
    String& x;
    std::size_t const& n;
    ~Finish() { SetLength(x.rep, n); }
  };
  const Finish finish{x, n};

  std::streambuf* const pBuffer = stream.rdbuf();
  for (bool bTerminator = false; !bTerminator;) {
    const int c = pBuffer ? pBuffer->sbumpc() : Traits::eof();
    if (c == Traits::eof()) {
      stream.setstate(std::ios::eofbit);
      break;
    }
    bTerminator = Traits::to_char_type(c) == terminator;
    if (bTerminator && discard != 0) break;
    if (n == nRoom) {
      StrRep* const p = NewRep(n + 1);
      std::memcpy(p->s, x.rep->s, n);
      FreeRep(x.rep);
      x.rep = p;
      nRoom = zu::internal::RoomFor(n + 1);
    }
    x.rep->s[n++] = Traits::to_char_type(c);
  }
  return static_cast<int>(n);
}

int Sprintf(String& out, String const& format, String const& a1, String const& a2, String const& a3,
            String const& a4, String const& a5) {
  String const* const args[] = {&a1, &a2, &a3, &a4, &a5};
  // An argument that is the target itself counts with the text it had.
  const String strBefore(out);
  out = format;
  int nReplaced = 0;
  for (int iArg = 0; iArg < 5; ++iArg) {
    String const& strArg = args[iArg] == &out ? strBefore : *args[iArg];
    const char szMark[] = {'%', static_cast<char>('1' + iArg), '\0'};
    for (int i = out.index(szMark); i >= 0; i = out.index(szMark)) {
      out.at(i, 2) = strArg;
      ++nReplaced;
    }
  }
  return nReplaced;
}
