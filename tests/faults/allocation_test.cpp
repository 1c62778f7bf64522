// Every allocation of a reader or a writer fails in turn, once and for good: nothing leaves it,
// nothing leaks, what was complete stays, and the next call works as ever.
#include <clocale>
#include <filesystem>

#include "tests/support/count_allocations.h"
#include "tests/support/file_readers.h"
#include "tests/support/file_writers.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/debug.h"

namespace {

// What a call gives back at its end, whatever happens in it.
struct Process {
  std::string strLocale = std::setlocale(LC_ALL, nullptr);
  std::ptrdiff_t iFiles = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  bool operator==(const Process&) const = default;
};

std::size_t CountedRun(const std::function<void()>& run) {
  const std::size_t uBefore = CountAllocations();
  run();
  return CountAllocations() - uBefore;
}

Lines ReadAll(const FileReader& reader, const TempFile& file) {
  const auto pRead = reader.make();
  pRead->Read(file.Path());
  return pRead->Tell();
}

TEST(AllocationFault, ReadersKeepWhatWasComplete) {
  ZuSetDebugSink({});
  for (const FileReader& reader : FileReaders()) {
    const TempFile file(reader.sample());
    const Lines whole = ReadAll(reader, file);
    ASSERT_FALSE(whole.empty()) << reader.szName;
    const auto pCounted = reader.make();
    const std::size_t uAll = CountedRun([&] { pCounted->Read(file.Path()); });
    const Process process;
    for (std::size_t i = 0; i < 2 * uAll; ++i) {
      SCOPED_TRACE(::testing::Message() << reader.szName << ", allocation " << i / 2 << " of "
                                        << uAll << (i % 2 != 0 ? " and all that follow" : ""));
      const std::size_t uLive = LiveAllocations();
      {
        const auto pRead = reader.make();
        {
          const AllocationFault fault(i / 2, i % 2 != 0);
          EXPECT_NO_THROW(pRead->Read(file.Path()));
          ASSERT_TRUE(fault.HasStruck());
        }
        const Lines part = pRead->Tell();
        ASSERT_LE(part.size(), whole.size());
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin()))
            << *std::mismatch(part.begin(), part.end(), whole.begin()).first;
      }
      EXPECT_EQ(LiveAllocations(), uLive);
    }
    EXPECT_EQ(process, Process());
    EXPECT_EQ(ReadAll(reader, file), whole);
  }
}

TEST(AllocationFault, WritersSayWhatTheyWrote) {
  for (const FileWriter& writer : FileWriters()) {
    const TempFile file;
    ASSERT_NE(writer.write(file.Path()), 0);
    const std::string strWhole = file.Read();
    ASSERT_FALSE(strWhole.empty()) << writer.szName;
    const std::size_t uAll = CountedRun([&] { writer.write(file.Path()); });
    const Process process;
    for (std::size_t i = 0; i < 2 * uAll; ++i) {
      SCOPED_TRACE(::testing::Message() << writer.szName << ", allocation " << i / 2 << " of "
                                        << uAll << (i % 2 != 0 ? " and all that follow" : ""));
      const std::size_t uLive = LiveAllocations();
      int iSaid = 0;
      {
        const AllocationFault fault(i / 2, i % 2 != 0);
        EXPECT_NO_THROW(iSaid = writer.write(file.Path()));
      }
      EXPECT_EQ(LiveAllocations(), uLive);
      if (writer.bTells && iSaid != 0) {
        EXPECT_EQ(file.Read(), strWhole);
      }
    }
    EXPECT_EQ(process, Process());
    EXPECT_NE(writer.write(file.Path()), 0);
    EXPECT_EQ(file.Read(), strWhole);
  }
}

}  // namespace
