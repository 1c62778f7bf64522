// A file that somebody shortens while it is read: the reader ends earlier, with what it had, and
// the process goes on.
#include <unistd.h>

#include "tests/support/file_readers.h"
#include "tests/support/hostile_inputs.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/progress.h"
#include "zu/foundation/reader.h"

namespace {

// Shortens a file to nothing when reading is at half.
struct Shortener : LinkHdl {
  explicit Shortener(const char* sz) : szPath(sz) {}
  static bool AtHalf(void* pContext, eZuProgress eWhat, const char*, double dPosition) {
    const auto* const pThis = static_cast<Shortener*>(pContext);
    if (eWhat == eZuProgressPosition && dPosition > 0.5 && truncate(pThis->szPath, 0) != 0) {
      ADD_FAILURE();
    }
    return true;
  }
  int OnItem(ZuReaderObject*) {
    if (++iItems == 10000 && truncate(szPath, 0) != 0) ADD_FAILURE();
    return 1;
  }
  const char* szPath;
  int iItems = 0;
};

std::string Many(const char* szPiece, int n, std::string str = "") {
  for (int i = 0; i < n; ++i) str += szPiece;
  return str;
}

std::string CloudFile() {
  ZuPointCloudContainer container;
  ZuPointCloud* const pCloud = container.AddCloud();
  for (int i = 0; i < 50000; ++i) pCloud->AddPoint(ZuScanPoint3d(i, 0.0, 0.0, 0));
  const TempFile file;
  EXPECT_EQ(container.Write(file.Path()), 1);
  return file.Read();
}

TEST(FileThatShrinks, EndsTheCloudEarlier) {
  const std::string strPly = "ply\n" + Many("property float p\n", 9) + "end_header\n";
  const struct {
    std::string strText;
    void (*pfnRead)(ZuPointCloudContainer&, const char*);
  } cases[] = {
      {CloudFile(), [](ZuPointCloudContainer& clouds, const char* sz) { clouds.Read(sz); }},
      {Many("1 2 3\n", 500000),
       [](ZuPointCloudContainer& clouds, const char* sz) { clouds.ReadPtsFile(sz); }},
      {Many("1 2 3 4 5 6 7 8 9\n", 200000, strPly),
       [](ZuPointCloudContainer& clouds, const char* sz) { clouds.ObsolteReadPlyFile(sz); }},
  };
  for (const auto& test : cases) {
    ZuPointCloudContainer whole, part;
    const TempFile file(test.strText);
    test.pfnRead(whole, file.Path());
    Shortener shortener(file.Path());
    const ZuProgressHandler former = ZuSetProgressHandler({&Shortener::AtHalf, &shortener});
    test.pfnRead(part, file.Path());
    ZuSetProgressHandler(former);
    EXPECT_EQ(file.Read(), "");
    EXPECT_LT(part.Size(), whole.Size());
    EXPECT_GT(part.Size(), whole.Size() / 3);
    EXPECT_FALSE(part.IsStopped());
  }
}

// Text readers hold a block or a line at a time in memory of their own.
TEST(FileThatShrinks, EndsTheKeywordFileEarlier) {
  const TempFile file(Many("A { 1 }\n", 200000));
  Shortener shortener(file.Path());
  ZuReader reader(file.Path());
  ZuReaderObject object("A", Link(&shortener, &Shortener::OnItem));
  reader.RegisterObject(object);
  reader.DoProcess(false);
  EXPECT_GE(shortener.iItems, 10000);
  EXPECT_LT(shortener.iItems, 200000);
  EXPECT_EQ(reader.GetReadErrorCount(), 0);
}

}  // namespace
