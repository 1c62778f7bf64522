#include <filesystem>
#include <random>

#include "cloud_support.h"
#include "reference_reader.h"
#include "tests/support/temp_file.h"
#include "zu/foundation/progress.h"

namespace {

// Offsets in a file of FillContainer's clouds.
constexpr std::size_t kFirstCloud = 12;
constexpr std::size_t kHeader = kFirstCloud + 4 + 60 + 4;
constexpr std::size_t kCount = kHeader + 472;
constexpr std::size_t kPoints = kCount + 4;

std::string CloudFile(const std::vector<std::size_t>& sizes) {
  ZuPointCloudContainer container;
  FillContainer(container, sizes);
  const TempFile file;
  EXPECT_EQ(container.Write(file.Path()), 1);
  return file.Read();
}

void SetWord(std::string& strBytes, std::size_t uOffset, std::uint32_t uWord) {
  ASSERT_LE(uOffset + 4, strBytes.size());
  std::memcpy(strBytes.data() + uOffset, &uWord, 4);
}

// The header record as it stands in a file; time stamps are not read.
std::string HeaderBytes(const ZuScanHeader& header) {
  char acBytes[ZuScanHeader::FileSize];
  std::FILE* const fp = fmemopen(acBytes, sizeof acBytes, "wb");
  std::setvbuf(fp, nullptr, _IONBF, 0);
  header.Write(fp);
  std::fclose(fp);
  return std::string(acBytes, sizeof acBytes);
}

// Reads the bytes both ways and compares all there is.
void ExpectAsReference(const std::string& strBytes) {
  const MemoryFile file(strBytes);
  OpenContainer container;
  const int iResult = container.Read(file.Path());
  bool bRefused = false;
  const auto expected = ReferenceReader(strBytes).Read(&bRefused);
  ASSERT_EQ(iResult, static_cast<int>(expected.size()));
  ASSERT_EQ(container.GetDirty(), 0);
  const ZuPointCloud* p = container.First();
  unsigned int uId = 0;
  ZuBoundingBox3d box;
  for (const ReferenceCloud& cloud : expected) {
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(p->GetId(), ++uId);
    ASSERT_EQ(std::string(p->GetName().chars()), cloud.strName);
    ASSERT_EQ(p->GetFlag(), cloud.iFlag);
    ASSERT_EQ(HeaderBytes(p->GetHeader()), HeaderBytes(cloud.header));
    ASSERT_TRUE(SamePoints(p->GetPoints(), cloud.points));
    box.Union(p->GetBox());
    p = p->Next();
  }
  ASSERT_EQ(p, nullptr);
  ASSERT_EQ(BoxValues(container.GetBox()), BoxValues(box));
}

}  // namespace

TEST(CloudFile, WrittenCloudsComeBack) {
  ZuPointCloudContainer container;
  FillContainer(container, {3, 0, 500});
  EXPECT_GT(container.GetDirty(), 0);
  const TempFile file;
  ASSERT_EQ(container.Write(file.Path()), 1);
  EXPECT_EQ(container.GetDirty(), 0);

  ZuPointCloudContainer back;
  ASSERT_EQ(back.Read(file.Path()), 3);
  EXPECT_EQ(back.Size(), 503u);
  EXPECT_EQ(back.GetDirty(), 0);
  EXPECT_EQ(back.GetBox().GetCount(), 3u);
  EXPECT_EQ(back.GetCenter().GetCount(), 503);
  const ZuPointCloud* pBack = back.First();
  for (const ZuPointCloud* p = container.First(); p; p = p->Next(), pBack = pBack->Next()) {
    EXPECT_TRUE(SamePoints(pBack->GetPoints(), p->GetPoints()));
    EXPECT_EQ(BoxValues(pBack->GetBox()), BoxValues(p->GetBox()));
    EXPECT_EQ(BoxValues(pBack->GetSelBox()), BoxValues(p->GetSelBox()));
    EXPECT_EQ(CenterValues(pBack->GetCenter()), CenterValues(p->GetCenter()));
    EXPECT_STREQ(pBack->GetName().chars(), p->GetName().chars());
    EXPECT_EQ(pBack->GetFlag(), p->GetFlag());
    EXPECT_STREQ(pBack->GetHeader().m_aszTexts[1], p->GetHeader().m_aszTexts[1]);
    EXPECT_EQ(pBack->GetHeader().m_iImportStart, 0);  // time stamps are not taken from the file
  }
  // A second file behind the first: ids run on from 1.
  ASSERT_EQ(back.Read(file.Path()), 6);
  EXPECT_EQ(back.GetClouds().Last()->GetId(), 6u);
}

TEST(CloudFile, CutAtEveryLengthOfItsFirstRecords) {
  const std::string strFile = CloudFile({3, 2});
  const std::size_t uSecond = kPoints + 3 * 58;
  for (std::size_t n = 0; n <= strFile.size(); ++n) {
    if (n > kPoints + 2 * 58 && n < uSecond) continue;  // as in the first two points
    SCOPED_TRACE(n);
    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(strFile.substr(0, n)));
  }
}

// A page-sized file has nothing behind its last byte; the window of the reader has, and ends
// within points as well.
TEST(CloudFile, SizesAtPagesAndWindows) {
  const std::string strFile = CloudFile({12000});
  for (const std::size_t uSize : {4096u, 8192u, 262144u, 524288u}) {
    for (const std::size_t n : {uSize - 1, uSize, uSize + 1}) {
      SCOPED_TRACE(n);
      ASSERT_NO_FATAL_FAILURE(ExpectAsReference(strFile.substr(0, n)));
    }
  }
}

// A cloud that is no cloud takes its magic word alone; the good ones around it stay.
TEST(CloudFile, BadCloudBetweenGoodOnes) {
  const std::string strFile = CloudFile({3, 2});
  const std::size_t uSecond = kPoints + 3 * 58;
  std::string strMixed = strFile.substr(0, uSecond) + "bad!" + strFile.substr(uSecond) + "end!";
  SetWord(strMixed, 8, 7);
  ExpectAsReference(strMixed);
  OpenContainer container;
  EXPECT_EQ(container.Read(MemoryFile(strMixed).Path()), 2);
  EXPECT_EQ(container.Size(), 5u);
}

TEST(CloudFile, CountsAreHints) {
  const std::string strFile = CloudFile({3});
  for (const std::uint32_t uCount : {0u, 2u, 4u, 1000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(uCount);
    std::string strCounts = strFile;
    SetWord(strCounts, kCount, uCount);
    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(strCounts));
    const TempFile file(strCounts);
    ZuPointCloudContainer container;
    ASSERT_EQ(container.Read(file.Path()), 1);
    EXPECT_LE(container.First()->GetPoints().capacity(), 8u);

    strCounts = strFile;
    SetWord(strCounts, 8, uCount);
    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(strCounts));
  }
}

TEST(CloudFile, RandomDamage) {
  const std::string strFile = CloudFile({5, 4, 3});
  constexpr unsigned int kSeed = 20;
  std::mt19937 random(kSeed);
  for (int i = 0; i < 1500; ++i) {
    SCOPED_TRACE(::testing::Message() << "seed " << kSeed << ", round " << i);
    std::string strDamaged = strFile;
    for (unsigned int n = 1 + random() % 4; n > 0; --n) {
      strDamaged[random() % strDamaged.size()] = static_cast<char>(random());
    }
    if (random() % 2) strDamaged.resize(random() % strDamaged.size());
    if (random() % 4 == 0) strDamaged.erase(random() % strDamaged.size(), random() % 100);
    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(strDamaged));
  }
}

TEST(CloudFile, RefusedFilesLeaveTheContainerAlone) {
  std::string strFile = CloudFile({3});
  ZuPointCloudContainer container;
  FillContainer(container, {2});
  const int iDirty = container.GetDirty();
  for (const std::uint32_t uVersion : {1u, 0u, 0x80000000u}) {
    SetWord(strFile, 4, uVersion);
    EXPECT_EQ(container.Read(TempFile(strFile).Path()), 0);
  }
  EXPECT_EQ(container.Read("/nowhere/at/all"), 0);
  EXPECT_EQ(container.Read("/tmp"), 0);
  EXPECT_EQ(container.Read(TempFile().Path()), 0);
  EXPECT_EQ(container.Read(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(container.Size(), 2u);
  EXPECT_EQ(container.GetDirty(), iDirty);
  EXPECT_EQ(ZuFileBuff("/nowhere").GetError(), eZuFileBuffNotOpen);
  EXPECT_EQ(ZuFileBuff("/tmp").GetError(), eZuFileBuffNotOpen);
  EXPECT_EQ(ZuFileBuff(TempFile().Path()).GetError(), eZuFileBuffEmpty);
}

// The branch without a header record: files of version 1, read cloud by cloud.
TEST(CloudFile, CloudOfVersionOneHasNoHeader) {
  std::string strFile = CloudFile({3});
  strFile.erase(kHeader, 472);
  const TempFile file(strFile.substr(kFirstCloud));
  ZuFileBuff buff(file.Path());
  ZuPointCloud cloud;
  EXPECT_EQ(cloud.Read(buff, 1), 1);
  EXPECT_EQ(cloud.GetPointCount(), 3u);
  EXPECT_TRUE(buff.IsEnd());
}

// Names have 60 bytes in the file; wide paths are UTF-8.
TEST(CloudFile, NamesAndWidePaths) {
  const TempFile file;
  const std::string strPath = std::string(file.Path()) + "_\xC3\xA4\xE2\x82\xAC.zpc";
  std::wstring strWide(file.Path(), file.Path() + std::strlen(file.Path()));
  strWide += L"_\u00E4\u20AC.zpc";
  for (const std::size_t n : {0u, 59u, 60u, 61u, 200u}) {
    ZuPointCloudContainer container, back;
    const std::string strName(n, 'n');
    container.AddCloud(0, strName.c_str());
    ASSERT_EQ(container.Write(strWide.c_str()), 1);
    ASSERT_EQ(back.Read(n % 2 ? strPath.c_str() : file.Path()), n % 2);
    ASSERT_EQ(back.Read(strWide.c_str()), n % 2 + 1);
    EXPECT_EQ(std::string(back.First()->GetName().chars()), strName.substr(0, 60));
  }
  std::filesystem::remove(strPath);
}

TEST(CloudFile, FullDiskLeavesTheContainerDirty) {
  OpenContainer container;
  FillContainer(container, {3, 5000});
  const int iDirty = container.GetDirty();
  EXPECT_EQ(container.Write("/nowhere/at/all.zpc"), 0);
  EXPECT_EQ(container.Write("/dev/full"), 0);
  EXPECT_EQ(container.Write(static_cast<std::FILE*>(nullptr)), 0);
  std::FILE* fp = std::fopen("/dev/full", "wb");
  ASSERT_NE(fp, nullptr);
  EXPECT_EQ(container.Write(fp), 1);  // the stream itself tells of the bytes it lost
  EXPECT_TRUE(std::ferror(fp) != 0);
  std::fclose(fp);
  EXPECT_EQ(container.GetDirty(), iDirty);
  EXPECT_EQ(container.ExportPtsFile("/dev/full"), 0);
  EXPECT_EQ(container.ExportPlyFile("/dev/full"), 0);
}

// The handler stops an operation: a reader keeps what it has, a writer says that it failed.
TEST(CloudFile, ProgressHandlerStops) {
  OpenContainer container;
  FillContainer(container, {30000, 30000});
  const TempFile binary, text;
  ASSERT_EQ(container.Write(binary.Path()), 1);
  ASSERT_EQ(container.ExportPtsFile(text.Path()), 1);

  struct Watch {
    double dLast = 0.0;
    bool bRising = true;
    static bool Notify(void* pContext, eZuProgress eWhat, const char*, double dPosition) {
      auto& watch = *static_cast<Watch*>(pContext);
      if (eWhat != eZuProgressPosition) return true;
      watch.bRising = watch.bRising && dPosition >= watch.dLast;
      watch.dLast = dPosition;
      return dPosition < 0.6;
    }
  } watch;
  const ZuProgressHandler former = ZuSetProgressHandler({Watch::Notify, &watch});
  const auto stopped = [&watch](ZuPointCloudContainer& clouds) {
    EXPECT_TRUE(clouds.IsStopped() && watch.bRising);
    EXPECT_GT(clouds.Size(), 30000u);
    EXPECT_LT(clouds.Size(), 60000u);
    watch.dLast = 0.0;
  };
  ZuPointCloudContainer fromBinary, fromText;
  EXPECT_EQ(fromBinary.Read(binary.Path()), 2);
  EXPECT_FALSE(fromBinary.GetFindings().IsWhole());
  stopped(fromBinary);
  fromText.ReadPtsFile(text.Path());
  EXPECT_EQ(fromText.GetBox().GetCount(), 1u);
  stopped(fromText);
  container.SetDirty();
  EXPECT_EQ(container.Write(binary.Path()), 0);
  EXPECT_TRUE(container.IsStopped());
  EXPECT_EQ(container.GetDirty(), 1);
  ZuSetProgressHandler(former);
}
