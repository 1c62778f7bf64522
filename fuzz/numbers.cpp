// Any text reads as the run-time reads it, and any eight bytes write as it writes them.
#include "zu/foundation/numbers.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

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

void CheckWrite(double d) {
  char szExpected[400], szOwn[400];
  std::snprintf(szExpected, sizeof(szExpected), "%.16g", d);
  Require(std::string(szOwn, ZuFormatGeneral16(szOwn, d)) == szExpected);
  std::snprintf(szExpected, sizeof(szExpected), "%18.9f", d);
  Require(std::string(szOwn, ZuFormatFixed9(szOwn, d, 18)) == szExpected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
  CheckRead(std::string(reinterpret_cast<char const*>(pData), nSize));
  double d;
  for (std::size_t i = 0; i + sizeof(d) <= nSize && i < 64; i += sizeof(d)) {
    std::memcpy(&d, pData + i, sizeof(d));
    CheckWrite(d);
  }
  return 0;
}
