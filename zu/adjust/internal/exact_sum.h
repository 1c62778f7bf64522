// Sums of doubles without rounding: the same whatever the order of the terms and however they were
// spread over threads, files or machines.
//
// Source: R. M. Neal, "Fast exact summation using small and large superaccumulators", 2015.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zu::internal {

class ExactSum {
 public:
  // A term that is not finite makes the sum what adding them in any order makes it.
  void Add(double d);
  // Both parts of a product; below 1e-290 its last digits are lost.
  void AddProduct(double a, double b);
  void Add(const ExactSum& other);
  // Adds other * dFactor.
  void AddScaled(const ExactSum& other, double dFactor);

  // The double closest to the sum, the even one of two; infinite above the largest.
  double Value() const;

  // 64-bit words of which a sum consists: what travels between processes. Load refuses words that
  // Save did not make.
  static constexpr size_t kWords = 69;
  void Save(std::uint64_t* puWords) const;
  bool Load(const std::uint64_t* puWords);

 private:
  // The sum is that of m_chunks[i] * 2^(32 i - 1074). A term puts less than 2^53 into a chunk.
  static constexpr size_t kChunks = 68;
  static constexpr int kMostTerms = 1023;  // until carries must be passed on

  // Every chunk from 0 to 2^32 - 1 but the last, which has the sign.
  void PassCarries();
  // The same without its sign, carries passed on; true where that was below 0.
  bool MakePositive();

  std::array<std::int64_t, kChunks> m_chunks = {};
  int m_iTerms = 0;         // since carries were passed on
  double m_dSpecial = 0.0;  // sum of the terms that are not finite
};

}  // namespace zu::internal
