// Paths, digests, calls by name, measures and the stop watch.
#include <filesystem>

#include "tests/support/test.h"
#include "zu/foundation/call_registry.h"
#include "zu/foundation/md5.h"
#include "zu/foundation/measure_unit.h"
#include "zu/foundation/path.h"
#include "zu/foundation/stopwatch.h"

TEST(Path, PartsOfNamesOfAnySystem) {
  const Cases<const char*, const char*, const char*, bool> paths = {
      {"a/b.c.jpg", "a", ".jpg", false},
      {"b.jpg", "", ".jpg", false},
      {"/b", "/", "", true},
      {"/", "/", "", true},
      {"C:\\x.y\\b", "C:\\x.y", "", true},
      {"C:\\b.prj", "C:\\", ".prj", true},
      {"C:b.prj", "C:", ".prj", false},
      {"\\\\host\\a", "\\\\host", "", true},
      {"a//b/", "a//b", "", false},
      {"a//b", "a", "", false},
      {".profile", "", "", false},
      {"a/..", "a", "", false},
      {"\xc3\xa4/\xc3\xb6.", "\xc3\xa4", ".", false},
      {"", "", "", false}};
  for (const auto& [szPath, szParent, szExtension, bAbsolute] : paths) {
    EXPECT_ROW((Row{szParent, szExtension, bAbsolute}.str), ZuParentPath(szPath),
               ZuPathExtension(szPath), ZuIsAbsolutePath(szPath))
        << szPath;
  }
  for (const auto& [szFolder, szName, szJoined] :
       Cases<const char*, const char*, const char*>{{"a", "b", "a/b"},
                                                    {"a/", "b", "a/b"},
                                                    {"C:\\", "b", "C:\\b"},
                                                    {"", "b", "b"},
                                                    {"a", "/b", "/b"},
                                                    {"a", "C:\\b", "C:\\b"},
                                                    {"a", "", "a"}}) {
    EXPECT_EQ(ZuJoinPath(szFolder, szName), szJoined);
  }
}

TEST(Path, FoldersOfTheProcess) {
  const std::string strFormer = ZuCurrentFolder();
  const std::string strFolder = ZuJoinPath(ZuTempFolder(), "zu_\xc3\xbc_folder");
  std::filesystem::create_directory(strFolder);
  ASSERT_TRUE(ZuExistFolder(strFolder) && ZuSetCurrentFolder(strFolder));
  EXPECT_EQ(ZuAbsolutePath("x/../y.prj"), ZuJoinPath(ZuCurrentFolder(), "y.prj"));
  EXPECT_EQ(ZuRelativePath("x/y", "x/z/w"), "../../y");
  EXPECT_EQ(ZuRelativePath(strFolder, strFolder), ".");
  ASSERT_TRUE(ZuSetCurrentFolder(strFormer));
  EXPECT_FALSE(ZuSetCurrentFolder(ZuJoinPath(strFolder, "none")));
  EXPECT_EQ(ZuCurrentFolder(), strFormer);
  EXPECT_EQ(ZuAbsolutePath(""), "");
  std::filesystem::remove(strFolder);
  EXPECT_FALSE(ZuExistFolder(strFolder));
}

// The test suite of RFC 1321, A.5.
TEST(MD5, VectorsOfItsDefinitionInPiecesOfAnyLength) {
  const std::string strDigits = "1234567890";
  std::string strEighty;
  for (int i = 0; i < 8; ++i) strEighty += strDigits;
  for (const auto& [strText, szDigest] : Cases<std::string, const char*>{
           {"", "d41d8cd98f00b204e9800998ecf8427e"},
           {"a", "0cc175b9c0f1b6a831c399e269772661"},
           {"abc", "900150983cd24fb0d6963f7d28e17f72"},
           {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
           {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
           {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
            "d174ab98d277d9f5a5611c2c9f419d9f"},
           {strEighty, "57edf4a22be3c955ac49da2e2107b67a"}}) {
    EXPECT_EQ(ZuCalcMD5(strText.data(), strText.size()), szDigest);
  }
  const std::string strLong(200, 'x');
  for (std::size_t nPiece = 1; nPiece < 130; ++nPiece) {
    ZuMD5 whole, pieces;
    whole.Add(strLong.data(), strLong.size());
    for (std::size_t u = 0; u < strLong.size(); u += nPiece) {
      pieces.GetDigest();
      pieces.Add(strLong.data() + u, std::min(nPiece, strLong.size() - u));
    }
    ASSERT_EQ(whole.GetDigest(), pieces.GetDigest()) << nPiece;
  }
}

namespace {

struct Offer : public LinkHdl {
  ZuCallRegistry* pRegistry = nullptr;
  int Double(int* pi) { return 2 * *pi; }
  int Once(int* pi) { return pRegistry->Unregister("once") ? *pi : 0; }
};

}  // namespace

TEST(CallRegistry, CallsByName) {
  ZuCallRegistry registry;
  Offer offer;
  offer.pRegistry = &registry;
  int i = 21;
  EXPECT_TRUE(registry.Register("twice", Link(&offer, &Offer::Double)));
  EXPECT_TRUE(registry.Register("once", Link(&offer, &Offer::Once)));
  EXPECT_FALSE(registry.Register("twice", Link(&offer, &Offer::Once)) ||
               registry.Register("", Link(&offer, &Offer::Once)) || registry.Register("x", Link()));
  EXPECT_EQ(registry.GetNames(), (std::vector<std::string>{"once", "twice"}));
  EXPECT_EQ(registry.Call("twice", &i), 42);
  EXPECT_EQ(registry.Call("once", &i), 21);
  EXPECT_EQ(registry.Call("once", &i), std::nullopt);
  EXPECT_FALSE(registry.IsRegistered("Twice") || registry.Unregister("once"));
  EXPECT_EQ(&ZuCallRegistry::Application(), &ZuCallRegistry::Application());
}

TEST(Measure, TextsWithUnitsThereAndBack) {
  constexpr double kRadian = 0.017453292519943295;  // of a degree, published
  for (const auto& [szText, eQuantity, dBase] :
       Cases<const char*, eZuQuantity, double>{{"12.5 mm", eZuQuantityLength, 0.0125},
                                               {" -3um ", eZuQuantityLength, -3e-6},
                                               {"1e3 in", eZuQuantityLength, 25.4},
                                               {"10ft", eZuQuantityLength, 3.048},
                                               {"7", eZuQuantityLength, 0.07},
                                               {"2 km", eZuQuantityLength, 2000.0},
                                               {"90deg", eZuQuantityAngle, 90 * kRadian},
                                               {"50 gon", eZuQuantityAngle, 45 * kRadian},
                                               {"3600 arcsec", eZuQuantityAngle, kRadian},
                                               {"1600 mil", eZuQuantityAngle, 90 * kRadian}}) {
    double d = 0.0;
    ASSERT_TRUE(ZuParseMeasure(szText, eQuantity, &d, "cm")) << szText;
    EXPECT_NEAR(d, dBase, 4e-16 * std::fabs(dBase)) << szText;
  }
  double d = 5.0;
  for (const char* szText : {"", "mm", "1", "1 MM", "1 mm 2", "1,5 mm", "1 gon", "nan m", "inf m",
                             "1e308 km", "1 yd", "0x1 m"}) {
    EXPECT_FALSE(ZuParseMeasure(szText, eZuQuantityLength, &d)) << szText;
  }
  EXPECT_EQ(d, 5.0);
  for (const ZuMeasureUnit& unit : ZuMeasureUnits()) {
    EXPECT_EQ(ZuFindMeasureUnit(unit.m_szText), &unit);
    ASSERT_TRUE(ZuParseMeasure(ZuMeasureText(0.0125, unit), unit.m_eQuantity, &d));
    EXPECT_NEAR(d, 0.0125, 1e-17);
  }
  EXPECT_EQ(ZuMeasureText(0.0125, *ZuFindMeasureUnit("mm")), "12.5 mm");
}

namespace {

struct FakeClock {
  using duration = std::chrono::milliseconds;
  using time_point = std::chrono::time_point<std::chrono::steady_clock, duration>;
  static time_point now() { return time_point(duration(iNow)); }
  static inline int iNow = 0;
};

}  // namespace

TEST(Stopwatch, ShowsTheTimeThatItRan) {
  TZuStopwatch<FakeClock> watch;
  FakeClock::iNow += 100;
  watch.Start();
  EXPECT_EQ(watch.GetSeconds(), 0.1);
  watch.Stop();
  FakeClock::iNow += 50;
  watch.Stop();
  EXPECT_ROW("0 0.1", watch.IsRunning(), watch.GetSeconds());
  watch.Start();
  FakeClock::iNow += 25;
  EXPECT_EQ(watch.GetSeconds(), 0.125);
  watch.Restart();
  EXPECT_ROW("1 0", watch.IsRunning(), watch.GetSeconds());
}
