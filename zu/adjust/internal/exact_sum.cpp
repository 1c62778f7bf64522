#include "zu/adjust/internal/exact_sum.h"

#include <bit>
#include <cmath>

namespace zu::internal {

namespace {

constexpr int kLeastExponent = -1074;  // of the unit of the first chunk
constexpr std::int64_t kChunkMask = 0xffffffff;

}  // namespace

void ExactSum::Add(double d) {
  const std::uint64_t uBits = std::bit_cast<std::uint64_t>(d);
  const auto uExponent = static_cast<unsigned>(uBits >> 52 & 0x7ff);
  if (uExponent == 0x7ff) {
    m_dSpecial += d;
    return;
  }
  auto iMantissa = static_cast<std::int64_t>(uBits & 0xfffffffffffff);
  if (uExponent != 0) iMantissa |= std::int64_t{1} << 52;
  const unsigned uShift = uExponent == 0 ? 0 : uExponent - 1;
  const size_t uChunk = uShift / 32;
  const unsigned uLow = uShift % 32;
  const auto iFirst =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(iMantissa) << uLow & kChunkMask);
  const std::int64_t iRest = iMantissa >> (32 - uLow);
  if (uBits >> 63 != 0) {
    m_chunks[uChunk] -= iFirst;
    m_chunks[uChunk + 1] -= iRest;
  } else {
    m_chunks[uChunk] += iFirst;
    m_chunks[uChunk + 1] += iRest;
  }
  if (++m_iTerms == kMostTerms) PassCarries();
}

void ExactSum::AddProduct(double a, double b) {
  const double dProduct = a * b;
  Add(dProduct);
  if (std::isfinite(dProduct)) Add(std::fma(a, b, -dProduct));
}

void ExactSum::Add(const ExactSum& other) {
  ExactSum added = other;
  added.PassCarries();
  PassCarries();
  for (size_t u = 0; u < kChunks; ++u) m_chunks[u] += added.m_chunks[u];
  m_dSpecial += added.m_dSpecial;
  PassCarries();
}

void ExactSum::AddScaled(const ExactSum& other, double dFactor) {
  ExactSum factor = other;
  if (factor.MakePositive()) dFactor = -dFactor;
  for (size_t u = 0; u < kChunks; ++u) {
    if (factor.m_chunks[u] == 0) continue;
    const auto dChunk = static_cast<double>(factor.m_chunks[u]);
    AddProduct(std::ldexp(dChunk, kLeastExponent + 32 * static_cast<int>(u)), dFactor);
  }
  if (factor.m_dSpecial != 0.0) Add(factor.m_dSpecial * dFactor);
}

bool ExactSum::MakePositive() {
  PassCarries();
  if (m_chunks[kChunks - 1] >= 0) return false;
  for (std::int64_t& i : m_chunks) i = -i;
  m_dSpecial = -m_dSpecial;
  PassCarries();
  return true;
}

void ExactSum::PassCarries() {
  for (size_t u = 0; u + 1 < kChunks; ++u) {
    m_chunks[u + 1] += m_chunks[u] >> 32;
    m_chunks[u] &= kChunkMask;
  }
  m_iTerms = 0;
}

double ExactSum::Value() const {
  if (m_dSpecial != 0.0) return m_dSpecial;
  ExactSum sum = *this;
  const bool bNegative = sum.MakePositive();
  size_t uTop = kChunks;
  while (uTop > 0 && sum.m_chunks[uTop - 1] == 0) --uTop;
  if (uTop == 0) return 0.0;
  const auto chunk = [&sum, uTop](size_t uBelow) -> std::uint64_t {
    return uBelow < uTop ? static_cast<std::uint64_t>(sum.m_chunks[uTop - 1 - uBelow]) : 0;
  };
  // The first 64 bits of the sum; its lowest bit set where any bit behind them is.
  const int iZeros = std::countl_zero(chunk(0) << 32 | chunk(1));
  std::uint64_t uBits = (chunk(0) << 32 | chunk(1)) << iZeros;
  std::uint64_t uBehind = 0;
  if (iZeros > 0) {  // at most 31: the first chunk is not 0
    uBits |= chunk(2) >> (32 - iZeros);
    uBehind = chunk(2) << (32 + iZeros);
  } else {
    uBehind = chunk(2);
  }
  for (size_t u = 3; u < uTop && uBehind == 0; ++u) uBehind = chunk(u);
  constexpr std::uint64_t kHalf = 1 << 10;  // of the 11 bits that a double does not hold
  const std::uint64_t uRest = uBits & (2 * kHalf - 1);
  std::uint64_t uMantissa = uBits >> 11;
  if (uRest > kHalf || (uRest == kHalf && (uBehind != 0 || uMantissa % 2 != 0))) ++uMantissa;
  const int iExponent =
      kLeastExponent + 32 * (static_cast<int>(uTop) - 2) - iZeros + 11;  // of the mantissa's unit
  const double dValue = std::ldexp(static_cast<double>(uMantissa), iExponent);
  return bNegative ? -dValue : dValue;
}

void ExactSum::Save(std::uint64_t* puWords) const {
  ExactSum sum = *this;
  sum.PassCarries();
  for (size_t u = 0; u < kChunks; ++u) puWords[u] = static_cast<std::uint64_t>(sum.m_chunks[u]);
  puWords[kChunks] = std::bit_cast<std::uint64_t>(m_dSpecial);
}

bool ExactSum::Load(const std::uint64_t* puWords) {
  for (size_t u = 0; u < kChunks; ++u) {
    m_chunks[u] = static_cast<std::int64_t>(puWords[u]);
    const bool bLast = u + 1 == kChunks;
    if (!bLast && puWords[u] > static_cast<std::uint64_t>(kChunkMask)) return false;
    if (bLast && (m_chunks[u] >> 31 != 0 && m_chunks[u] >> 31 != -1)) return false;
  }
  m_dSpecial = std::bit_cast<double>(puWords[kChunks]);
  m_iTerms = 0;
  return true;
}

}  // namespace zu::internal
