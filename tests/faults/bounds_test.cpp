// Memory grows with the file and no faster, whatever the file holds. Times stand in
// docs/reliability.md; bench/bench_hostile.cpp measures them.
#include "tests/support/count_allocations.h"
#include "tests/support/file_readers.h"
#include "tests/support/hostile_inputs.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/debug.h"

namespace {

constexpr std::size_t kSize = 32 * 1024;  // bytes of the smaller file

const FileReader& ReaderOf(const HostileInput& input) {
  const auto& readers = FileReaders();
  return *std::find_if(readers.begin(), readers.end(), [&](const FileReader& reader) {
    return std::string(reader.szName) == input.szReader;
  });
}

struct Cost {
  std::size_t uAllocations, uPeak;
};

Cost CostOf(const HostileInput& input, std::size_t uSize) {
  const TempFile file(input.make(uSize));
  const auto pRead = ReaderOf(input).make();
  const std::size_t uBefore = CountAllocations(), uLive = LiveBytes();
  ResetPeak();
  pRead->Read(file.Path());
  return {CountAllocations() - uBefore, PeakBytes() - uLive};
}

TEST(Bounds, MemoryGrowsWithTheFile) {
  // What a reader takes for itself, and the factor of a growing array.
  constexpr std::size_t kOwnAllocations = 200, kOwnBytes = 1 << 20;
  constexpr double kFactor = 2.6;
  ZuSetDebugSink({});
  CostOf(HostileInputs()[0], 100);
  for (const HostileInput& input : HostileInputs()) {
    SCOPED_TRACE(std::string(input.szReader) + ", " + input.szName);
    const Cost small = CostOf(input, kSize), large = CostOf(input, 2 * kSize);
    EXPECT_LT(static_cast<double>(large.uAllocations),
              kFactor * static_cast<double>(small.uAllocations) + kOwnAllocations);
    EXPECT_LT(static_cast<double>(large.uPeak),
              kFactor * static_cast<double>(small.uPeak) + kOwnBytes);
    EXPECT_LT((large.uPeak - std::min(large.uPeak, kOwnBytes)) * ((1 << 20) / (2 * kSize)),
              input.uPeak << 20);
  }
}

// A file cut anywhere gives the records before the cut as the whole one does.
TEST(Bounds, CutFilesKeepWhatWasComplete) {
  ZuSetDebugSink({});
  for (const FileReader& reader : FileReaders()) {
    const std::string strWhole = reader.sample();
    const auto read = [&](std::size_t uSize) {
      const TempFile file(strWhole.substr(0, uSize));
      const auto pRead = reader.make();
      pRead->Read(file.Path());
      return pRead->Tell();
    };
    const Lines whole = read(strWhole.size());
    const std::size_t uStep = strWhole.size() > 3000 ? 7 : 1;
    for (std::size_t n = 0, uLast = 0; n < strWhole.size(); n += uStep) {
      SCOPED_TRACE(::testing::Message() << reader.szName << " at " << n);
      const Lines part = read(n);
      ASSERT_LE(uLast, part.size() + 1);
      ASSERT_LE(part.size(), whole.size());
      uLast = part.size();
      const auto uWhole = uLast - std::min<std::size_t>(uLast, 5);  // lines of other records
      EXPECT_TRUE(std::equal(part.begin(), part.begin() + uWhole, whole.begin()));
    }
  }
}

}  // namespace
