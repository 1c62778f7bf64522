// Any text reads as the run-time reads it, and any eight bytes write as it writes them, with any
// number of digits.
#include "zu/foundation/numbers.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void Require(bool bGood) {
  if (!bGood) std::abort();
}

void CheckRead(std::string const& text) {
  char* pStop = nullptr;
  const double dExpected = std::strtod(text.c_str(), &pStop);
  char const* pOwnStop = nullptr;
  const double dOwn = ZuAtof(text.data(), text.data() + std::strlen(text.c_str()), &pOwnStop);
  const double dTerminated = ZuAtof(text.c_str());
  Require(std::memcmp(&dOwn, &dExpected, sizeof(dOwn)) == 0);
  Require(std::memcmp(&dTerminated, &dExpected, sizeof(dOwn)) == 0);
  Require(pOwnStop == pStop);

  const long n = std::strtol(text.c_str(), nullptr, 10);
  const int i = ZuAtoi(text.c_str());
  Require(n > INT32_MAX ? i == INT32_MAX : n < INT32_MIN ? i == INT32_MIN : i == n);
}

// A formatter against printf; the buffer is as large as the formatter asks for and no larger.
template <class Format>
void CheckFormat(double d, int iSize, char const* szFormat, int iArgument, Format&& format) {
  char szExpected[600];
  const int n = std::snprintf(szExpected, sizeof(szExpected), szFormat, iArgument, d);
  std::vector<char> own(static_cast<std::size_t>(iSize));
  char const* const pEnd = format(own.data());
  Require(pEnd - own.data() == n && std::equal(szExpected, szExpected + n, own.data()));
}

void CheckWrite(double d, unsigned uByte) {
  const int iPrecision = static_cast<int>(uByte % 64) - 1;  // below 0 counts as 6
  const int iDigits = iPrecision < 0 ? 6 : iPrecision;
  CheckFormat(d, kZuGeneral16Size, "%.*g", 16, [d](char* p) { return ZuFormatGeneral16(p, d); });
  CheckFormat(d, kZuFixed9Size, "%*.9f", 18, [d](char* p) { return ZuFormatFixed9(p, d, 18); });
  CheckFormat(d, std::max(iDigits, 1) + 8, "%.*g", iPrecision,
              [=](char* p) { return ZuFormatGeneral(p, d, iPrecision); });
  CheckFormat(d, iDigits + 311, "%.*f", iPrecision,
              [=](char* p) { return ZuFormatFixed(p, d, iPrecision); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
  CheckRead(std::string(reinterpret_cast<char const*>(pData), nSize));
  double d;
  for (std::size_t i = 0; i + sizeof(d) <= nSize && i < 64; i += sizeof(d)) {
    std::memcpy(&d, pData + i, sizeof(d));
    CheckWrite(d, pData[(i + sizeof(d)) % nSize]);
  }
  return 0;
}
