// The examples on the pages of docs/files are what the readers take.
#include <fstream>

#include "tests/support/project_file.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/reseau_file.h"
#include "zu/points/point_list.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo2d.h"

namespace {

// The fenced blocks of a page.
std::vector<std::string> Examples(const char* szPage) {
  std::ifstream stream(std::string(ZU_SOURCE_DIR "/docs/files/") + szPage);
  std::vector<std::string> blocks;
  bool bInside = false;
  for (std::string strLine; std::getline(stream, strLine);) {
    if (strLine.compare(0, 3, "```") == 0) {
      bInside = !bInside;
      if (bInside) blocks.emplace_back();
    } else if (bInside) {
      blocks.back() += strLine + "\n";
    }
  }
  return blocks;
}

TEST(FilePages, Cameras) {
  const auto examples = Examples("camera.md");
  ASSERT_GE(examples.size(), 2U);
  const TempFile full(examples[0]), simple(examples[1]);
  const ZuCameraList fullList(full.Path()), simpleList(simple.Path());
  ASSERT_EQ(fullList.Count(), 1);
  EXPECT_EQ(fullList.First()->m_dC2, -0.000285451769);
  ASSERT_EQ(simpleList.Count(), 1);
  EXPECT_EQ(simpleList.First()->m_dRMax, 2.1 * 2.5);
}

TEST(FilePages, Reseaus) {
  const auto examples = Examples("reseau.md");
  ASSERT_EQ(examples.size(), 2U);
  const TempFile reseau(examples[0]), digital(examples[1]);
  ZuReseaufileList list;
  EXPECT_ROW("1 1 4", list.ReadReseauFile(String(reseau.Path())),
             list.ReadReseauFile(String(digital.Path())), list.First()->GetCrossList().Count());
}

TEST(FilePages, Projects) {
  const auto examples = Examples("project.md");
  ASSERT_EQ(examples.size(), 2U);
  const TempFile photo(examples[0]);
  ProjectFile project(photo.Path());
  EXPECT_EQ(project.Faults(), 0);
  ASSERT_EQ(project.Photos().Count(), 1);
  EXPECT_EQ(project.Photos().First()->GetPosAOR()[3], 374.336515);

  const TempFile nested("PHOTO { PHOTOID 1 \"a.jpg\"\n" + examples[1] + "STATE 0 }\n");
  ProjectFile rectified(nested.Path());
  EXPECT_EQ(rectified.Faults(), 0);
  ASSERT_EQ(rectified.Photos().First()->CountZuspTrafo(), 1);
  const ZuZuspTrafo& trafo = *rectified.Photos().First()->FirstZuspTrafo();
  EXPECT_ROW("4 4 1", trafo.GetPPList().Count(), trafo.GetRegion().Count(),
             trafo.GetParallelDef().GetConstraints().Count());
  EXPECT_TRUE(rectified.Photos().First()->IsActive());
}

// Reads the example as a record that stands behind the keyword X.
template <class T>
void ReadRecord(const std::string& strText, T* pRecord) {
  const TempFile file("X {" + strText + "}\n");
  ZuReader reader(file.Path());
  ZuReaderObject record("X", Link(pRecord, &T::Read));
  reader.RegisterObject(record);
  reader.DoProcess(false);
  EXPECT_EQ(reader.GetReaderErrorList().Count(), 0);
}

TEST(FilePages, Points) {
  const TempFile coordinates(Examples("coordinate_file.md").at(0));
  const TempFile gsi(Examples("gsi.md").at(0));
  ZuPointList list, station;
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ASSERT_EQ(list.ReadFile(coordinates.Path(), columns), 2);
  ASSERT_EQ(station.ReadGsiFile(gsi.Path()), 2);
  EXPECT_EQ(station.First()->m_dY, 2000.0);
  // Both pages show the same station: to a millimetre here, to a tenth there.
  EXPECT_NEAR(station.Last()->m_dX, list.First()->m_dX, 5.1e-4);
  EXPECT_NEAR(station.Last()->m_dZ, list.First()->m_dZ, 5.1e-4);
}

TEST(FilePages, Records) {
  ZuLokalSystem system;
  std::string strLocal = Examples("local_system.md").at(0);
  strLocal = strLocal.substr(strLocal.find('{') + 1);
  ReadRecord(strLocal.substr(0, strLocal.rfind('}')), &system);
  EXPECT_ROW("103 5.25", system.m_uIdC, system.m_dScale1Dist);

  ZuTrafo2d trafo;
  ReadRecord(Examples("trafo2d.md").at(0), &trafo);
  EXPECT_EQ(trafo.GetType(), eZuTrafo2DAffin);
  EXPECT_EQ(trafo.GetCoef(5), 0.9999999999);
}

}  // namespace
