#include <fstream>
#include <set>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/alnum_id.h"
#include "zu/foundation/crc32.h"
#include "zu/foundation/file_name.h"
#include "zu/foundation/internal/valid_pointer.h"
#include "zu/foundation/profiler.h"
#include "zu/foundation/progress.h"

namespace {

TEST(FileName, Parts) {
  for (const auto& [szPath, szName, szNoExt] :
       Cases<char const*, char const*, char const*>{{"a/b.c.jpg", "b.c.jpg", "b.c"},
                                                    {"C:\\dir.x\\photo", "photo", "photo"},
                                                    {"/a/.profile", ".profile", ".profile"},
                                                    {"dir/", "", ""},
                                                    {"", "", ""},
                                                    {"x.", "x.", "x"}}) {
    EXPECT_EQ(ZuGetFilename(szPath), szName);
    EXPECT_EQ(ZuGetFilenameNoExt(szPath), szNoExt);
  }
  EXPECT_EQ(ZuGetFilenameNoExt(L"a\\\u00E4.pts"), L"\u00E4");
  EXPECT_TRUE(ZuGetFilename(static_cast<char const*>(nullptr)).empty());
}

TEST(FileName, ExistsAsAFile) {
  auto pFile = std::make_unique<TempFile>("x", "\xC3\xA4.txt");
  const std::string path = pFile->Path();
  EXPECT_TRUE(ZuExistFile(path.c_str()));
  EXPECT_TRUE(ZuExistFile((std::wstring(path.begin(), path.end() - 6) + L"\u00E4.txt").c_str()));
  pFile.reset();
  EXPECT_FALSE(ZuExistFile(path.c_str()) || ZuExistFile(::testing::TempDir().c_str()));
  EXPECT_FALSE(ZuExistFile("") || ZuExistFile(static_cast<wchar_t const*>(nullptr)));
}

// The check value of the CRC catalogues, at once and in pieces.
TEST(Crc32, CheckValue) {
  EXPECT_EQ(ZuCalcCRC32("123456789", 9), 0xCBF43926u);
  EXPECT_EQ(ZuCalcCRC32("6789", 4, ZuCalcCRC32("12345", 5)), 0xCBF43926u);
  EXPECT_EQ(ZuCalcCRC32(nullptr, 0), 0u);
}

// Ids stand in files: they are the same for ever.
TEST(AlnumId, IsStableAndApart) {
  EXPECT_EQ(GetIdFromAlphaNumericString("P12a"), GetIdFromAlphaNumericString("P12a"));
  EXPECT_EQ(GetIdFromAlphaNumericString(""), 0x411C9DC7u);
  EXPECT_EQ(GetIdFromAlphaNumericString(nullptr), 0x411C9DC7u);
  std::set<unsigned> ids;
  for (char c = 'A'; c <= 'Z'; ++c) {
    for (int i = 0; i < 100; ++i)
      ids.insert(GetIdFromAlphaNumericString((c + std::to_string(i)).c_str()));
  }
  EXPECT_EQ(ids.size(), 2600u);
  EXPECT_GE(*ids.begin(), 1u << 30);
  EXPECT_LT(*ids.rbegin(), 1u << 31);
}

TEST(ValidPointer, SmallAddressesAreNone) {
  int i = 0;
  EXPECT_TRUE(IsValidPointer(&i) && !IsValidPointer(nullptr) &&
              !IsValidPointer(reinterpret_cast<void*>(0xFFFF)));
}

TEST(Profiler, ReportsToItsSinkAlone) {
  std::vector<std::string> names;
  { const ZuProfiler silent("before"); }
  const ZuProfilerSink former =
      ZuSetProfilerSink({[](void* p, char const* szName, std::int64_t i) {
                           EXPECT_GE(i, 0);
                           static_cast<std::vector<std::string>*>(p)->emplace_back(szName);
                         },
                         &names});
  {
    const ZuProfiler outer("outer");
    const ZuProfiler inner("inner");
  }
  ZuSetProfilerSink(former);
  { const ZuProfiler silent("after"); }
  EXPECT_EQ(names, (std::vector<std::string>{"inner", "outer"}));
}

struct ProgressLog {
  std::vector<eZuProgress> events;
  double dLast = -1.0;
  double dStopAt = 2.0;
};

bool Note(void* pContext, eZuProgress eWhat, char const* szTitle, double dPosition) {
  auto* const pLog = static_cast<ProgressLog*>(pContext);
  EXPECT_STREQ(szTitle, "work");
  EXPECT_GE(dPosition, pLog->dLast);
  pLog->dLast = dPosition;
  pLog->events.push_back(eWhat);
  return dPosition < pLog->dStopAt;
}

TEST(Progress, TellsAHundredSteps) {
  ProgressLog log;
  const ZuProgressHandler former = ZuSetProgressHandler({Note, &log});
  {
    ZuProgress progress("work");
    for (int i = 0; i <= 100000; ++i) ASSERT_TRUE(progress.SetPosition(i, 100000));
  }
  EXPECT_EQ(log.events.front(), eZuProgressShow);
  EXPECT_EQ(log.events.back(), eZuProgressHide);
  EXPECT_GE(log.events.size(), 90u);
  EXPECT_LE(log.events.size(), 110u);

  log = ProgressLog();
  log.dStopAt = 0.5;
  {
    ZuProgress progress("work");
    int i = 0;
    while (i < 100000 && progress.SetPosition(i, 100000)) ++i;
    EXPECT_GE(i, 50000);
    EXPECT_LE(i, 51100);
    EXPECT_TRUE(progress.IsStopped() && !progress.SetPosition(99999, 100000));
  }
  EXPECT_EQ(log.events.back(), eZuProgressHide);
  ZuSetProgressHandler(former);

  ZuProgress silent("other");
  EXPECT_TRUE(silent.SetPosition(5, 0) && !silent.IsStopped());
}

}  // namespace
