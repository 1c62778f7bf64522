// A project is written as it was read: records, unknown keywords, order.
#include <filesystem>
#include <sstream>

#include "tests/support/project_fields.h"
#include "tests/support/test.h"

namespace {

std::string Exported(const ZuProject& project) {
  std::ostringstream os;
  project.Export(os);
  return os.str();
}

void ReadText(const std::string& strText, ZuProject* pProject) {
  std::istringstream stream(strText);
  pProject->Read(stream);
}

TEST(ProjectExport, SamplesAreWrittenAsTheyAreRead) {
  int iSamples = 0;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(ZU_SOURCE_DIR "/samples")) {
    if (entry.path().extension() != ".prj") continue;
    SCOPED_TRACE(entry.path());
    ++iSamples;
    ZuProject project, again;
    ASSERT_TRUE(project.Read(entry.path().c_str()));
    const std::string strOnce = Exported(project);
    ReadText(strOnce, &again);
    EXPECT_EQ(again.GetFindings().GetErrorCount(), 0u);
    EXPECT_EQ(FieldsOfProject(again), FieldsOfProject(project));
    EXPECT_EQ(Exported(again), strOnce);
  }
  EXPECT_GE(iSamples, 5);
}

// In the layout in which it is written; every block in another place than that of new records.
constexpr const char* kAllBlocks = R"(FIRST 1
MEASURE {
    PHOTOID 2
    WEIGHT 0.5
    POINTS {
        1 0.1 -0.0
        4294967295 1e+300 3
    }
    AFTER { a { b } ; "kept as it stands
    }
}
POINTS {
    1 0.1 0.2 0.30000000000000004
}
PHOTO {
    FRONT "x"
    PHOTOID 2 "two"
    DIGITAL 1
    DIGITIZERID 1
    STATE 1
    ROTATION 0
    SCALE 0
    NEWER { 1 2
      3 }
    ORIENTED 0
    DIGIREGION { 0 0 0 0 }
    CAMDATA {
        ID 1
        MD 0
        C 4
        K1 0.25
        XH 0
        YH 0
        R0 0
        RM 1
    }
    AORM {
        3 3
        1 0 0
        0 1 0
        0 0 1
    }
    AORV { 3 0 0 0 }
    LAST 9
}
LOKAL {
    1 1 2
    4 3
    1 0 0 0
    0 0 0
    0 0 0
    0 0 0
}
UNKNOWN {
  PHOTO { 1 }
}
PLANE {
    3 "wall" 0 0 1 -12.25
}
CAMERA {
    ID 7
    NAME "left"
    MD 3
    C 4
    XH 0
    YH 0
    R0 0
    RM 1
}
END 2
)";

TEST(ProjectExport, UnknownKeywordsAndTheOrderStay) {
  ZuProject project;
  ReadText(kAllBlocks, &project);
  EXPECT_EQ(Exported(project), kAllBlocks);
}

TEST(ProjectExport, RecordsMayComeAndGo) {
  ZuProject project;
  ReadText(kAllBlocks, &project);
  delete project.PhotoList().SubtractFirst();
  project.Measurements(2).Destroy();
  project.PhotoList().Add(ZuPhoto(5, String("five")));
  project.Measurements(5).Add(ZuPoint(1, 2.0, 3.0));
  project.LocalSystems().emplace_back();
  const std::string strText = Exported(project);
  EXPECT_EQ(strText.find("PHOTOID 2 \"two\""), std::string::npos);
  ZuProject again;
  ReadText(strText, &again);
  EXPECT_EQ(FieldsOfProject(again), FieldsOfProject(project));
  EXPECT_EQ(again.LocalSystems().size(), 2u);
  EXPECT_NE(strText.find("UNKNOWN"), std::string::npos);
}

}  // namespace
