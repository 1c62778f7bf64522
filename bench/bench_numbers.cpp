// Text to numbers and back, beside the standard library's own functions on the same values. Every
// loop checks its result against that of the reference before it is timed.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zu/foundation/numbers.h"

namespace {

constexpr int kCount = 10000;
constexpr int kRoom = 64;

// Coordinates in metres: kDigits16 with all digits of a double, kMillimetres as they are measured.
enum Values { kDigits16, kMillimetres };

std::vector<double> MakeValues(int iValues) {
  std::mt19937_64 random(42);
  std::uniform_real_distribution<double> uniform(-1000.0, 1000.0);
  std::vector<double> values(kCount);
  for (double& d : values) {
    d = uniform(random);
    if (iValues == kMillimetres) d = std::nearbyint(d * 1000.0) / 1000.0;
  }
  return values;
}

char* ReferenceGeneral16(char* p, double d) {
  return std::to_chars(p, p + kRoom, d, std::chars_format::general, 16).ptr;
}

char* ReferenceFixed9(char* p, double d) {
  return std::to_chars(p, p + kRoom, d, std::chars_format::fixed, 9).ptr;
}

char* OwnFixed9(char* p, double d) { return ZuFormatFixed9(p, d); }

template <char* (*Format)(char*, double), char* (*Reference)(char*, double)>
void BM_Write(benchmark::State& state) {
  const auto values = MakeValues(static_cast<int>(state.range(0)));
  std::string text(kCount * 32 + 400, ' ');
  std::int64_t nBytes = 0;
  for (const double d : values) {
    char szA[400], szB[400];
    if (std::string(szA, Format(szA, d)) != std::string(szB, Reference(szB, d))) {
      state.SkipWithError("texts differ");
    }
  }
  for (auto _ : state) {
    char* p = text.data();
    for (const double d : values) {
      p = Format(p, d);
      *p++ = ' ';
    }
    nBytes += p - text.data();
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(nBytes);
}
BENCHMARK(BM_Write<ReferenceGeneral16, ReferenceGeneral16>)
    ->Name("general16/to_chars")
    ->Arg(kDigits16)
    ->Arg(kMillimetres);
BENCHMARK(BM_Write<ZuFormatGeneral16, ReferenceGeneral16>)
    ->Name("general16/zu")
    ->Arg(kDigits16)
    ->Arg(kMillimetres);
BENCHMARK(BM_Write<ReferenceFixed9, ReferenceFixed9>)
    ->Name("fixed9/to_chars")
    ->Arg(kDigits16)
    ->Arg(kMillimetres);
BENCHMARK(BM_Write<OwnFixed9, ReferenceFixed9>)
    ->Name("fixed9/zu")
    ->Arg(kDigits16)
    ->Arg(kMillimetres);

// The texts of the values, each ended by a blank.
std::string MakeText(int iValues) {
  std::string text;
  char sz[64];
  for (const double d : MakeValues(iValues)) {
    text.append(sz, ZuFormatGeneral16(sz, d));
    text += ' ';
  }
  return text;
}

char const* ReadFromChars(char const* p, char const* pEnd, double* pd) {
  return std::from_chars(p, pEnd, *pd).ptr;
}

char const* ReadAtof(char const* p, char const*, double* pd) {
  *pd = std::atof(p);
  return std::strchr(p, ' ');
}

char const* ReadOwn(char const* p, char const* pEnd, double* pd) {
  char const* pStop;
  *pd = ZuAtof(p, pEnd, &pStop);
  return pStop;
}

char const* ReadOwnTerminated(char const* p, char const*, double* pd) {
  *pd = ZuAtof(p);
  return std::strchr(p, ' ');
}

template <char const* (*Read)(char const*, char const*, double*)>
void BM_Read(benchmark::State& state) {
  const std::string text = MakeText(static_cast<int>(state.range(0)));
  char const* const pEnd = text.data() + text.size();
  for (char const* p = text.data(); p != pEnd;) {
    double d = 0.0, dReference = 0.0;
    ReadFromChars(p, pEnd, &dReference);
    p = Read(p, pEnd, &d) + 1;
    if (d != dReference) state.SkipWithError("numbers differ");
  }
  for (auto _ : state) {
    for (char const* p = text.data(); p != pEnd;) {
      double d = 0.0;
      p = Read(p, pEnd, &d) + 1;
      benchmark::DoNotOptimize(d);
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_Read<ReadFromChars>)->Name("read/from_chars")->Arg(kDigits16)->Arg(kMillimetres);
BENCHMARK(BM_Read<ReadOwn>)->Name("read/zu")->Arg(kDigits16)->Arg(kMillimetres);
BENCHMARK(BM_Read<ReadOwnTerminated>)
    ->Name("read/zu terminated")
    ->Arg(kDigits16)
    ->Arg(kMillimetres);
BENCHMARK(BM_Read<ReadAtof>)->Name("read/atof")->Arg(kDigits16)->Arg(kMillimetres);

}  // namespace
