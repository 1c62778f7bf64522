// Photo records as project files hold them: current and older keywords, lists in blocks, shapes.
#include "tests/support/project_file.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/photo/ortho_photo.h"

namespace {

std::string Sample(const char* szName) { return std::string(ZU_SOURCE_DIR "/samples/") + szName; }

TEST(Project, ReadsEveryFieldOfTheCurrentForm) {
  ProjectFile project(Sample("chessboard/left_cap.prj"));
  const ZuPhoto& photo = *project.Photos().First();
  EXPECT_ROW("1 left01.jpg chessboard, left camera, photo 01 1", photo.GetId(), photo.GetName(),
             photo.GetComment(), photo.GetScale());
  EXPECT_TRUE(photo.IsDigital() && photo.IsActive() && photo.HasAOR());
  EXPECT_EQ(photo.GetDigiRegion(), ZuRegion(0, 0, 639, 479));
  EXPECT_ROW("2 4.4 OPENCV-STEREO 1", photo.GetCamera().m_iMode, photo.GetCamera().m_dRMax,
             photo.GetReseauData().GetName(), photo.GetReseauData().GetId());
  EXPECT_EQ(photo.GetReseauPreTrafo().GetType(), eZuTrafo2DAffin);
  EXPECT_ROW("0.0099 0.1646965087008276 374.088176", photo.GetReseauMainTrafo().GetCoef(1),
             photo.GetRotAOR()[2][3], photo.GetPosAOR()[3]);
  double a, b, c;
  photo.GetRotAOR(&a, &b, &c);
  EXPECT_NEAR(a, -0.16545031033379032, 1e-14);
  EXPECT_NEAR(b, 0.278440402049404, 1e-14);
  EXPECT_NEAR(c, -0.010259965857034745, 1e-14);
  EXPECT_EQ(project.Pixels(1).Last()->GetId(), 54u);
  // With y counting down the first corner is the upper left one.
  EXPECT_NEAR(photo.GetBikoRegion().Left(), -3.16305, 1e-12);
  EXPECT_NEAR(photo.GetBikoRegion().Bottom(), 2.37105, 1e-12);
  EXPECT_NEAR(photo.GetPixelSize(), 0.0099, 1e-12);
}

TEST(Project, MigratesTheOlderForm) {
  ProjectFile project(Sample("older/facade.prj"));
  ASSERT_EQ(project.Photos().Count(), 1);
  ZuPhoto& photo = *project.Photos().First();
  EXPECT_TRUE(photo.GetName().empty());  // of an analog photo it goes to the comment
  EXPECT_ROW("west facade reseau 36x24 3 0 7", photo.GetComment(), photo.GetReseauData().GetName(),
             photo.GetDigPictPage(), photo.GetDigPictRot(), photo.GetDigitizerId());
  EXPECT_TRUE(photo.IsAnalog() && photo.IsFlagSet(eZuFlagActive) != 0 && photo.HasAOR());
  EXPECT_ROW("35.2 25.200000000000003 2 1 0", photo.GetCamera().m_dC, photo.GetCamera().m_dRMax,
             static_cast<int>(photo.GetReseauPreTrafo().GetType()),
             static_cast<int>(photo.GetReseauMainTrafo().GetType()),
             static_cast<int>(photo.GetReseauPolyInv().GetType()));
  // What stands behind blocks with lists is not lost.
  EXPECT_ROW("2 0.04 1 80 5", photo.GetRegoiList().Count(), photo.GetRegoiList().Last()->m_dDY,
             photo.GetLastZuspId(), photo.GetScreenPos().m_dY, photo.GetScreenFlags());
  EXPECT_ROW("2 -1 101.5", project.Pixels(1).Count(), photo.GetRotAOR()[2][3],
             photo.GetPosAOR()[1]);
}

TEST(Project, OlderRectificationDerivesWhatItLacks) {
  ProjectFile project(Sample("older/facade.prj"));
  ASSERT_EQ(project.Photos().First()->CountZuspTrafo(), 1);
  const ZuZuspTrafo& trafo = *project.Photos().First()->FirstZuspTrafo();
  const double columns[3][3] = {{0.5, 0.02, 2.5}, {-0.01, 0.5, 1.25}, {0.002, 0.001, 1.0}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_EQ(trafo.GetZuspMat()[i + 1][j + 1], columns[i][j]);
  }
  EXPECT_TRUE(trafo.IsActive() && trafo.IsRegionActive() && !trafo.GetDistortCameraFlag());
  EXPECT_ROW("4 1", trafo.GetRegion().Count(), trafo.GetBikoList().First()->GetId());
  EXPECT_EQ(trafo.GetBikoList().GetMode(), eLPolygonIdXY);
  EXPECT_EQ(trafo.GetPPList().GetMode(), eLPolygonIdXYZ);
  ZuPoint corner(0, -12.0, -8.0);
  trafo.Transform(&corner, &corner);
  EXPECT_EQ(*trafo.GetPPList().First(), corner);
  EXPECT_EQ(trafo.GetPPList().First()->GetId(), 1u);
}

TEST(Project, KeywordsOfBothFormsOverwriteEachOther) {
  const TempFile file(
      "PHOTO { PHOTOID 5 \"a.jpg\" DIGITAL 1 CAMERA { 1 35 0 0 0 0 5 \"x\" } CAMDATA { ID 2 C 50 "
      "}\n"
      "  AORM { 3 3 1 2 3 4 5 6 7 8 } STATE 2 AORV { 4 1 2 3 4 } SCALE 3 }\n"
      "PHOTO { PHOTOID 6 \"b.jpg\" AORM { 2 2 4 5 6 7 } DIGIREGION { 0 0 100 100 } CAMDATA { ID 3 "
      "C 20 } }\n");
  ProjectFile project(file.Path());
  ASSERT_EQ(project.Photos().Count(), 2);
  const ZuPhoto& first = *project.Photos().First();
  EXPECT_ROW("2 50", first.GetCamera().GetId(), first.GetCamera().m_dC);
  EXPECT_EQ(first.GetCamera().m_dR0, 5.0);  // the keyword form left it
  EXPECT_ROW("10.5 8", first.GetCamera().m_dRMax, first.GetRotAOR()[3][2]);
  EXPECT_EQ(first.GetRotAOR()[3][3], 0.0);  // missing values are 0
  EXPECT_EQ(first.GetPosAOR()[1], 0.0);     // four elements are refused
  EXPECT_TRUE(first.IsExtern() && first.IsInactive());
  EXPECT_EQ(first.GetScale(), 3.0);
  const ZuPhoto& second = *project.Photos().Last();
  EXPECT_EQ(second.GetRotAOR()[2][2], 1.0);  // 2 x 2 is refused, the record goes on
  EXPECT_EQ(second.GetRotAOR()[1][2], 0.0);
  EXPECT_NEAR(second.GetCamera().m_dRMax, 0.5 * std::hypot(100.0, 100.0) * 1.1, 1e-9);
}

TEST(Project, CopiesCarryTheRecordWithoutItsLists) {
  ProjectFile project(Sample("older/facade.prj"));
  ZuPhoto& photo = *project.Photos().First();
  photo.AddImo(ZuPoint(1, 2.0, 3.0), static_cast<eConvertBikoMode>(0));
  photo.AddAttribute(new ZuAttribute(7u));
  photo.SetLayer(3);
  ZuPhoto assigned(9);
  assigned.AddImo(ZuPoint(5, 0.0, 0.0), static_cast<eConvertBikoMode>(0));
  assigned = photo;
  const ZuPhoto copy(photo);
  for (const ZuPhoto* p : {&copy, static_cast<const ZuPhoto*>(&assigned)}) {
    EXPECT_EQ(p->FirstAttribute(), nullptr);
    EXPECT_ROW("0 0 1 3 101.5", p->CountImo(), p->CountZuspTrafo(), p->GetId(), p->GetLayer(),
               p->GetPosAOR()[1]);
    EXPECT_EQ(p->GetReseauMainTrafo().GetCoef(1), photo.GetReseauMainTrafo().GetCoef(1));
    EXPECT_EQ(p->GetCamera().m_dA1, photo.GetCamera().m_dA1);
  }
}

TEST(Project, TextsAndTypes) {
  EXPECT_TRUE(ZuPhoto(5).IsAnalog() && ZuPhoto(5, "a.jpg").IsDigital() && ZuPhoto(5).IsInactive());
  ZuPhoto photo(5, "a.jpg");
  photo.SetComment("text");
  photo.SetHasAOR(true);
  EXPECT_STREQ(ZuPhotoGuiString(&photo, true), ":: 5 - a.jpg");
  photo.SetType(eZuPhototypeAnalog);
  EXPECT_STREQ(ZuPhotoGuiString(&photo, false), "5 - text");
  EXPECT_STREQ(ZuPhotoGuiString(nullptr, true), "??");
  ZuOrthoPhoto ortho(3u);
  const ZuPhotoDesc desc(&ortho);
  EXPECT_TRUE(desc.m_bIsOrtho && !desc.m_bIsViva && desc.m_uId == 3);
  EXPECT_EQ(ZuPhotoDesc(nullptr).m_uId, 0u);
  EXPECT_EQ(ZuPhoto::cast(static_cast<ZuObject*>(&photo)), &photo);

  // R = Ry(b) Rx(a) Rz(c), and its angles again.
  photo.SetRotAOR(0.3, -1.1, 2.0);
  ZuMatrix x(3, 3), y(3, 3), z(3, 3);
  const ZuMatrix product = y.RotYAxis(-1.1) * x.RotXAxis(0.3) * z.RotZAxis(2.0);
  for (int i = 0; i < 9; ++i) {
    EXPECT_NEAR(photo.GetRotAOR().GetData()[i], product.GetData()[i], 1e-15);
  }
  ZuPoint aor;
  photo.SetPosAOR(1.0, 2.0, 3.0);
  photo.GetAOR(&aor, true);
  EXPECT_NEAR(aor.m_dDX, 0.3 * 63.66197723675813, 1e-12);
  EXPECT_NEAR(aor.m_dDY, -1.1 * 63.66197723675813, 1e-12);
  EXPECT_EQ(aor.m_iPhoto, 5);
  ZuMatrix map(4, 4);
  photo.GetAOR(&map);
  EXPECT_ROW("2 1", map[2][4], map[4][4]);
}

}  // namespace
