// Memory grows with the file and no faster, whatever the file holds. Times stand in
// docs/reliability.md; bench/bench_hostile.cpp measures them.
#include "tests/support/count_allocations.h"
#include "tests/support/file_readers.h"
#include "tests/support/hostile_inputs.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/reader.h"

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

// Handlers in handlers, and a line without an end, give a fault of their line and end there.
TEST(Bounds, DepthAndLengthAreFaultsOfTheirLine) {
  struct Nest : LinkHdl {
    int Open(ZuReaderObject* pObject) {
      ++iOpened;
      ZuReaderObject inner("A", Link(this, &Nest::Open));
      pObject->RegisterObject(inner);
      return pObject->DoProcess();
    }
    int iOpened = 0;
  };
  std::string strDeep = "X 1\n", strLong = "X 1\n";
  for (int i = 0; i < 1000; ++i) strDeep += "A {\n";
  strLong += "X 1\n" + std::string(20000, 'x') + "\nX 1\n";
  for (const auto& [strText, eStatus, uLine] : Cases<std::string, eZuParserStatus, unsigned int>{
           {strDeep, ParserErrorNotSpecifiedToken, 67}, {strLong, ParserErrorStream, 3}}) {
    const TempFile file(strText);
    Nest nest;
    struct Note : LinkHdl {
      long Fault(ZuReader* pReader) {
        if (faults++ == 0) first = *pReader->GetReaderErrorList().Last();
        return 0;
      }
      int faults = 0;
      ZuParserStatus first;
    } note;
    ZuReader reader(file.Path());
    ZuReaderObject object("A", Link(&nest, &Nest::Open));
    reader.RegisterObject(object);
    reader.SetParserErrorHdl(Link(&note, &Note::Fault));
    reader.DoProcess(false);
    EXPECT_EQ(note.first.m_eStatus, eStatus);
    EXPECT_EQ(note.first.m_uLine, uLine);
    EXPECT_LE(nest.iOpened, 66);
  }
}

}  // namespace
