// The text form of a plane and the file of planes.
#include <locale>

#include "tests/support/random_geometry.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/reader.h"
#include "zu/rectify/plane_list.h"

namespace {

// Decimal comma and grouping, as in some locales.
class Comma : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(PlaneText, RecordIsOneRowOfFixedFields) {
  ZuPlane plane;
  plane.SetId(3);
  plane.SetName("facade west");
  plane.A() = 0.5;
  plane.B() = -0.1;
  plane.C() = 1.0 / 3.0;
  plane.D() = -1234.5;
  std::ostringstream os;
  os.imbue(std::locale(std::locale::classic(), new Comma));
  plane.Write(os) << "|";
  EXPECT_EQ(os.str(),
            "    3 \"facade west\""
            "                   0.5"
            "                  -0.1"
            "    0.3333333333333333"
            "               -1234.5|");
  EXPECT_EQ(os.precision(), 16);
}

TEST(PlaneText, FileOfBlocksIsReadToItsEnd) {
  RandomGeometry random(73);
  ZuPlaneList written;
  std::ostringstream os;
  for (unsigned int u = 1; u <= 20; ++u) {
    ZuPlane plane;
    plane.SetId(u);
    plane.SetName(String("plane ") + String(static_cast<int>(u)));
    for (double* pd : {&plane.A(), &plane.B(), &plane.C(), &plane.D()}) *pd = random.Value(1e3);
    written.Add(plane);
    os << "{";
    plane.Write(os) << " }\n";
  }
  const TempFile file(os.str());
  const ZuPlaneList read{String(file.Path())};
  ASSERT_EQ(read.Count(), 20);
  const ZuPlane* q = written.First();
  for (const ZuPlane* p = read.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    EXPECT_EQ(p->GetId(), q->GetId());
    EXPECT_STREQ(p->GetName().chars(), q->GetName().chars());
    EXPECT_NEAR(p->A(), q->A(), 1e-12);
    EXPECT_NEAR(p->D(), q->D(), 1e-12);
  }
}

TEST(PlaneText, SampleHoldsItsWalls) {
  const ZuPlaneList list{String(ZU_SOURCE_DIR "/samples/planes/walls.pln")};
  ASSERT_EQ(list.Count(), 3);
  const ZuPlane* pEast = list.Find("WALL EAST");
  ASSERT_NE(pEast, nullptr);
  EXPECT_NEAR(pEast->Dist(ZuPoint(1, 1.0, 2.0, 3.0)), 5.05, 1e-14);
  EXPECT_TRUE(list.First()->IsNormal(*pEast));
}

// Whatever is cut off, complete planes stay and the cut one never enters the list.
TEST(PlaneText, FileCutAnywhereKeepsCompletePlanes) {
  const std::string text = "{ 1 \"a\" 1 0 0 -5 }\n{ 2 \"b\" 0 1.5 0 6 }\n{ 3 \"c\" 0 0 1 1e999 }\n";
  std::size_t auNumbersEnd[] = {text.find("-5") + 2, text.find("6 }") + 1, text.find("e999") + 4};
  for (std::size_t u = 0; u <= text.size(); ++u) {
    const TempFile file(text.substr(0, u));
    ZuPlaneList list;
    EXPECT_EQ(list.ReadFile(String(file.Path())), 1);
    int iComplete = 0;
    for (const std::size_t uEnd : auNumbersEnd) iComplete += u >= uEnd;
    // A number cut inside is a shorter number: "-" alone is none.
    EXPECT_GE(list.Count(), iComplete) << u;
    EXPECT_LE(list.Count(), iComplete + 1) << u;
    for (const ZuPlane* p = list.First(); p != nullptr; p = p->Next()) EXPECT_TRUE(p->IsValid());
  }
}

TEST(PlaneText, DamagedPlanesLeaveNoTrace) {
  for (const auto& [szText, iCount] : Cases<const char*, int>{
           {"", 0},
           {"{ 1 \"a\" 1 0 0 5 }", 1},
           {"{ 1 \"a\" 1 0 0 }", 0},
           {"{ 1 \"a\" 1 0 \"x\" 5 }", 0},
           {"{ 1 2 1 0 0 5 }", 0},
           {"{ 1 \"a\" 1 0 0 5 99 \"more\" { 4 } }\n{ 2 \"b\" 0 1 0 6 }", 2},
           {"12 13", 0},
       }) {
    const TempFile file(szText);
    ZuPlaneList list;
    list.ReadFile(String(file.Path()));
    EXPECT_EQ(list.Count(), iCount) << szText;
  }
  ZuPlaneList list;
  EXPECT_ROW("1 0", list.ReadFile(String("/no/such/file")), list.Count());
}

// A record that registers a plane keyword hands the row to AddPlane.
TEST(PlaneText, KeywordOfARecordAppendsPlanes) {
  const TempFile file("PLANE 1 \"a\" 1 0 0 5\nN 7\nPLANE { 2 \"b\" 0 1 0 6 }\nN 8\n");
  ZuReader reader(file.Path());
  ZuPlaneList list;
  int n = 0;
  ZuReaderObject plane("PLANE", Link(&list, &ZuPlaneList::AddPlane));
  ZuReaderObject number("N", &n);
  reader.RegisterObject(plane);
  reader.RegisterObject(number);
  reader.DoProcess(false);
  EXPECT_ROW("2 8 0", list.Count(), n, reader.GetReadErrorCount());
}

}  // namespace
