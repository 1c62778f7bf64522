// What the worst inputs of one megabyte cost in each reader: seconds, and the memory at its peak
// above what was there before. The column `doubling` tells the growth of the time from half of the
// input to all of it; 2 is linear. docs/reliability.md has the figures.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "tests/support/count_allocations.h"
#include "tests/support/file_readers.h"
#include "tests/support/hostile_inputs.h"
#include "tests/support/temp_file.h"
#include "zu/foundation/debug.h"

namespace {

constexpr std::size_t kSize = 1 << 20;  // bytes

const FileReader& ReaderOf(const HostileInput& input) {
  const auto& readers = FileReaders();
  return *std::find_if(readers.begin(), readers.end(), [&](const FileReader& reader) {
    return std::string(reader.szName) == input.szReader;
  });
}

// Seconds of a run; the end of the objects belongs to it.
double Run(const HostileInput& input, const TempFile& file, double* pdPeak) {
  const std::size_t uLive = LiveBytes();
  ResetPeak();
  const auto start = std::chrono::steady_clock::now();
  {
    const auto pRead = ReaderOf(input).make();
    pRead->Read(file.Path());
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  *pdPeak = static_cast<double>(PeakBytes() - uLive) / (1 << 20);
  return time.count();
}

void BM_Hostile(benchmark::State& state, const HostileInput* pInput) {
  const TempFile whole(pInput->make(kSize)), half(pInput->make(kSize / 2));
  double dPeak = 0.0, dHalf = 1e9, dWhole = 1e9;
  for (auto _ : state) {
    dHalf = std::min(dHalf, Run(*pInput, half, &dPeak));
    const double dTime = Run(*pInput, whole, &dPeak);
    dWhole = std::min(dWhole, dTime);
    state.SetIterationTime(dTime);
  }
  state.counters["MB"] = dPeak;
  state.counters["doubling"] = dWhole / dHalf;
}

}  // namespace

int main(int argc, char** argv) {
  ZuSetDebugSink({});
  for (const HostileInput& input : HostileInputs()) {
    const std::string strName = std::string(input.szReader) + "/" + input.szName;
    benchmark::RegisterBenchmark(strName.c_str(), BM_Hostile, &input)
        ->UseManualTime()
        ->Iterations(3)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
