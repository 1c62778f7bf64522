// The text form of a plane and the file of planes.
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/reader.h"
#include "zu/rectify/plane_list.h"

namespace {

TEST(PlaneText, RecordIsOneRowOfFixedFields) {
  ZuPlane plane;
  plane.SetId(3);
  plane.SetName("facade west");
  plane.A() = 0.5;
  plane.B() = -0.1;
  plane.C() = 1.0 / 3.0;
  plane.D() = -1234.5;
  std::ostringstream os;
  plane.Write(os) << "|";
  EXPECT_EQ(os.str(),
            "    3 \"facade west\""
            "                   0.5"
            "                  -0.1"
            "    0.3333333333333333"
            "               -1234.5|");
  EXPECT_EQ(os.precision(), 16);
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
