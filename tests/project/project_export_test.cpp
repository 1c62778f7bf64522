// A project is written as it was read: records, unknown keywords, order.
#include <filesystem>
#include <sstream>

#include "tests/support/project_fields.h"
#include "tests/support/test.h"
#include "zu/project/project_edit.h"

namespace {

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
    SIGMA {
        4294967295 0.1 0.25
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
COVARIANCE {
    CAMERAID 7
    PARAMETERS "c xh"
    MATRIX {
        2 2
        4e-06 1e-07
        1e-07 9e-06
    }
    NEWER 1
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

// In the order and layout in which they are written, without what is written besides.
constexpr const char* kCommented = R"(; the house
! second line
PHOTO { ; the first one
    PHOTOID 1 "a" ; south
    DIGITAL 1
    ; camera of the year before
    CAMDATA { ; calibrated
        ID 1
        C 4 ! mm
        ; no distortion
        XH 0
        NEW 1 ; added
        ; end of the camera
    } ; CAMDATA
    ; exact
    AORV { 3 0 0 0 } ; m
    ZUSPPLANE {
        ZUSPID 1 "f"
        PARALLELDEF { ; lines
            DEFLINE { 1 1 2 0 0 } ; sill
            ; the door
            DEFLINE { 2 3 4 0 0 }
            WEIGHT 2
        }
    }
    ; unknown
    LAST 9 ; kept
    ; end
} ; PHOTO
MEASURE {
    PHOTOID 1
    POINTS { ; pixels
        1 0.5 2 ; corner
        ; doubtful
        3 4 5
        ; no more
    }
}
; a point
POINTS { ; m
    7 1 2 3 ; bolt
}
; wall
PLANE {
    3 "wall" 0 0 1 -12.25
} ; fitted
; lone one
END 2 ; ended
; bye
)";

// All of it stays in its order, and a second time nothing changes any more.
TEST(ProjectExport, CommentsStayBesideWhatTheyBelongTo) {
  ZuProject project, again;
  ReadText(kCommented, &project);
  const std::string strOnce = Exported(project);
  std::istringstream lines(kCommented), written(strOnce);
  for (std::string strLine, strWritten; std::getline(lines, strLine);) {
    while (strWritten != strLine && std::getline(written, strWritten)) {
    }
    EXPECT_TRUE(written.good()) << strLine;
  }
  ReadText(strOnce, &again);
  EXPECT_EQ(Exported(again), strOnce);
  // Rows that have come or gone leave the comments with their ids.
  delete again.Measurements(1).SubtractFirst();
  again.ObjectPoints().Add(ZuPoint(8, 0.0, 0.0, 0.0));
  const std::string strFewer = Exported(again);
  EXPECT_NE(strFewer.find("; doubtful\n        3 4 5\n"), std::string::npos);
  EXPECT_NE(strFewer.find("7 1 2 3 ; bolt\n    8 0 0 0\n"), std::string::npos);
}

// Where a comment has no line of its own, where its item is not written, where the line is full.
TEST(ProjectExport, OtherCommentsStayNear) {
  const std::string strLong = "; " + std::string(8500, 'x');
  const std::string strText = R"(PHOTO { SCREENSIZE 0 ; zero
  CAMDATA ; cam
  { ID 1
C 4)" + strLong + R"(
  } AORM { 3 3 1 0 0 ; row
    0 1 0 0 0 1 } PHOTOID ; id
  1 "a" } ; photo
ORTHOPHOTO { ID 1 "b" PLANEINFO { ZUSPID 1 "p" PARALLELDEF { NEW 1 ; new
} } }
LOKAL { 1 ; axis
  1 2 4 3 1 0 0 0 0 0 0 0 0 0 0 0 0 }
POINTS { 1 2 3 4 }
POINTS { 2 2 3 4 ; second
}
LONE ; last)";
  ZuProject project, again;
  ReadText(strText, &project);
  const std::string strOnce = Exported(project);
  for (const char* szPart :
       {"    ; zero\n}", "CAMDATA { ; cam\n", "    ; row\n    AORM {", "    ; id\n    PHOTOID",
        "} ; photo\n", "            NEW 1 ; new\n        }", "; axis\nLOKAL {", "}\n; second\n",
        "\nLONE ; last\n", strLong.c_str()}) {
    EXPECT_TRUE(strOnce.find(szPart) != strOnce.npos) << std::string_view(szPart).substr(0, 40);
  }
  ReadText(strOnce, &again);
  EXPECT_EQ(again.GetFindings().GetErrorCount(), project.GetFindings().GetErrorCount());
  EXPECT_EQ(Exported(again), strOnce);
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

// A keyword without value would take the next keyword for its value.
TEST(ProjectExport, KeywordsWithoutValueEndTheirBlock) {
  ZuProject project, again;
  ReadText("PHOTO { PHOTOID 1 \"a\" DIGITAL 1 CAMDATA { C 4 LONE } ALONE } ENDING", &project);
  project.PlaneList().Add(ZuPlane());
  const std::string strOnce = Exported(project);
  ReadText(strOnce, &again);
  EXPECT_EQ(FieldsOfProject(again), FieldsOfProject(project));
  EXPECT_EQ(Exported(again), strOnce);
  EXPECT_NE(strOnce.find("    ALONE\n}\n"), std::string::npos);
}

// Three photos of two cameras; 1 and 2 share theirs.
TEST(ProjectExport, CovariancesFollowTheirPhotos) {
  const auto block = [](unsigned uPhoto, unsigned uWith, int n, double dStart) {
    ZuCovariance covariance;
    covariance.m_uPhoto = uPhoto;
    covariance.m_uWith = uWith;
    covariance.m_iRows = covariance.m_iColumns = n;
    for (int i = 0; i < n * n; ++i) covariance.m_matrix.push_back(dStart + i);
    if (uWith == 0 && n > 6) covariance.m_parameters = {"c"};
    return covariance;
  };
  ZuProject project, again;
  for (const unsigned u : {1U, 2U, 3U}) project.PhotoList().Add(ZuPhoto(u, String("x")));
  for (const ZuCovariance& c : {block(1, 0, 7, 100.0), block(2, 0, 7, 200.0), block(3, 0, 7, 300.0),
                                block(1, 2, 6, 0.0), block(3, 1, 7, 0.5)}) {
    project.Covariances().Set(c);
  }
  const auto cross = project.Covariances().Cross(1, 2), turned = project.Covariances().Cross(2, 1);
  // An orientation with the other's; with the camera, each as its own matrix has it.
  EXPECT_ROW("49 8 113 243 248", cross.size(), cross[7 + 2], cross[7 + 6], cross[42 + 1],
             cross[48]);
  EXPECT_EQ(turned[14 + 1], 8);
  EXPECT_EQ(project.Covariances().Cross(1, 3)[7 * 2 + 5], 0.5 + 7 * 5 + 2);
  EXPECT_TRUE(project.Covariances().Cross(2, 3).empty());
  EXPECT_TRUE(ZuRenumberPhotos(&project, {{1, 3}, {3, 1}}));
  ReadText(Exported(project), &again);
  EXPECT_EQ(again.Covariances().Cross(2, 3), turned);
  EXPECT_EQ(again.Covariances().All().size(), 5U);
  ZuKeepPhotos(&again, {2, 3});
  EXPECT_EQ(again.Covariances().All().size(), 3U);
  delete again.PhotoList().Subtract(again.PhotoList().Find(3U));
  EXPECT_EQ(Exported(again).find("WITH"), std::string::npos);
}

TEST(ProjectEdit, PhotosChangeTheirIdsInPlace) {
  ZuProject project, swapped;
  const std::string strPhoto =
      "PHOTO { PHOTOID 1 \"a\" } MEASURE { PHOTOID 1 POINTS { 7 1 2 } NEW 1 } "
      "PHOTO { PHOTOID 2 \"b\" } MEASURE { PHOTOID 2 POINTS { 8 3 4 } }";
  ReadText(strPhoto, &project);
  const std::string strBefore = Exported(project);
  EXPECT_FALSE(ZuRenumberPhotos(&project, {{1, 2}}));
  EXPECT_FALSE(ZuRenumberPhotos(&project, {{3, 4}}));
  EXPECT_EQ(Exported(project), strBefore);
  ASSERT_TRUE(ZuRenumberPhotos(&project, {{1, 2}, {2, 1}}));
  ReadText(Exported(project), &swapped);
  EXPECT_EQ(swapped.PhotoList().First()->GetId(), 2u);
  EXPECT_EQ(swapped.Measurements(2).First()->GetId(), 7u);
  EXPECT_EQ(swapped.GetItems()[1].m_pBlock->m_unknown.size(), 1u);
  EXPECT_FALSE(ZuOffsetPointIds(&swapped, -7));
  EXPECT_EQ(swapped.Measurements(1).First()->GetId(), 8u);
}

TEST(ProjectEdit, RescalingKeepsEveryMeasurementInTheImage) {
  for (const char* szPre : {"{ 0 }", "{ 1 0.5 1 0 0 }", "{ 2 0.5 1 0.1 479.5 0.2 -1 }"}) {
    SCOPED_TRACE(szPre);
    ZuProject project;
    ReadText(std::string("PHOTO { PHOTOID 1 \"a\" DIGITAL 1 DIGIREGION { 0 0 639 479 } "
                         "MAINRESTRAFO { 1 -3 0.01 -2 0.001 } PRERESTRAFO ") +
                 szPre + " } MEASURE { PHOTOID 1 POINTS { 1 17 320.5 } }",
             &project);
    const ZuPhoto& photo = *project.PhotoList().First();
    ZuPoint before = *project.Measurements(1).First();
    photo.ConvertBiko(&before, eDigiToBiko);
    ASSERT_TRUE(ZuRescalePhoto(&project, 1, 0.3));
    ZuPoint after = *project.Measurements(1).First();
    EXPECT_EQ(after.m_dX, 17 * 0.3);
    photo.ConvertBiko(&after, eDigiToBiko);
    EXPECT_NEAR(after.m_dX, before.m_dX, 1e-13);
    EXPECT_NEAR(after.m_dY, before.m_dY, 1e-13);
    EXPECT_FALSE(ZuRescalePhoto(&project, 2, 0.3) || ZuRescalePhoto(&project, 1, 0.0));
  }
}

}  // namespace
