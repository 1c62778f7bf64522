#include "zu/photo/ortho_photo.h"

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/reader.h"
#include "zu/photo/rotate_photo_base.h"

namespace {

constexpr char kOrtho[] =
    "ORTHOPHOTO { ID 3 \"facade.tif\" COMMENT \"c\" RECTPIXEL 12 TIME 2.5 PLANEANGLE 5 DIGITALROT "
    "2\n"
    "  MIRROR 1 PIXELSIZE { 0 0 100 50 } OBJECTSIZE { 0 0 20 10 }\n"
    "  PLANEINFO { ZUSPID 1 \"left\" ZUSPTRAFO { 3 3 0.2 0 0 0 0.2 0 0 0 1 }\n"
    "    TRAFO3D { 4 4 1 0 0 5 0 1 0 6 0 0 1 7 0 0 0 1 } VALIDREGION { 0 0 50 50 } }\n"
    "  SCALE 4 }\n";

ZuOrthoPhotoList Read(const char* szText) {
  const TempFile file(szText);
  ZuOrthoPhotoList list;
  ZuReader reader(file.Path());
  ZuReaderObject keyword("ORTHOPHOTO", Link(&list, &ZuOrthoPhotoList::AddPhoto));
  reader.RegisterObject(keyword);
  reader.DoProcess(false);
  return list;
}

TEST(OrthoPhoto, ReadsItsBlock) {
  const ZuOrthoPhotoList list = Read(kOrtho);
  ASSERT_EQ(list.Count(), 1);
  const ZuOrthoPhoto& ortho = *list.First();
  EXPECT_EQ(ortho.GetId(), 3u);
  EXPECT_STREQ(ortho.GetName(), "facade.tif");
  EXPECT_TRUE(ortho.IsOrthoPhoto() && ortho.IsDigital());
  EXPECT_ROW("12 5 4 1", ortho.GetStatPixel(), ortho.GetMaxAngle(), ortho.GetScale(),
             ortho.GetMirrorInfo());
  EXPECT_DOUBLE_EQ(ortho.GetPixelSize(), 0.2);
  EXPECT_EQ(ortho.ZuspPlaneList().Count(), 1);
  const ZuOrthoPhoto copy(ortho);
  EXPECT_ROW("1 0 9", copy.ZuspPlaneList().Count(), ZuOrthoPhoto(1u).GetPixelSize(),
             ZuOrthoPhoto(1u).GetMaxAngle());
}

TEST(OrthoPhoto, PixelsToObject) {
  ZuOrthoPhotoList list = Read(kOrtho);
  ZuOrthoPhoto& ortho = *list.First();
  EXPECT_FALSE(ortho.Transform(nullptr));
  ZuPoint p(1, 30.0, 20.0);
  ASSERT_TRUE(ortho.Transform(&p));  // mirrored to 70, turned to (30, 30)
  EXPECT_DOUBLE_EQ(p.m_dX, 0.2 * 30.0 + 5.0);
  EXPECT_DOUBLE_EQ(p.m_dY, 0.2 * 30.0 + 6.0);
  EXPECT_EQ(p.m_dZ, 7.0);
  ZuPoint a, b, c, d;
  ASSERT_TRUE(ortho.GetImageCorners(&a, &b, &c, &d));
  EXPECT_DOUBLE_EQ(b.m_dX, 25.0);
  EXPECT_DOUBLE_EQ(b.m_dY, 6.0);
  EXPECT_DOUBLE_EQ(d.m_dY, 16.0);
  EXPECT_FALSE(ZuOrthoPhoto(1u).GetImageCorners(&a, &b, &c, &d));
  // Of several planes the one that holds the pixel.
  ortho.SetDigPictRot(0);
  ortho.ToggleMirrorX();
  ZuZuspPlaneInfo* pSecond = ortho.ZuspPlaneList().Add(new ZuZuspPlaneInfo());
  pSecond->GetTrafo().GetRegion().AddPoint(ZuPoint(1, 50.0, 0.0));
  pSecond->GetTrafo().GetRegion().AddPoint(ZuPoint(2, 100.0, 0.0));
  pSecond->GetTrafo().GetRegion().AddPoint(ZuPoint(3, 100.0, 50.0));
  ZuPoint right(1, 90.0, 20.0), nowhere(1, 10.0, 400.0);
  EXPECT_TRUE(ortho.Transform(&right));
  EXPECT_EQ(right.m_dX, 90.0);
  EXPECT_FALSE(ortho.Transform(&nowhere));
}

// The way there adds one pixel in a quarter turn, the way back does not; mirrors never do.
TEST(OrthoPhoto, QuarterTurnsDifferByOnePixel) {
  ZuOrthoPhoto ortho(1u);
  ortho.SetDigiRegion(ZuRegion(0, 0, 100, 50));
  for (const auto& [iRotation, x, y, xBack, yBack] :
       Cases<int, double, double, double, double>{{0, 10, 20, 10, 20},
                                                  {1, 31, 10, 10, 19},
                                                  {2, 91, 31, 9, 19},
                                                  {3, 20, 91, 9, 20},
                                                  {7, 10, 20, 10, 20}}) {
    ortho.SetDigPictRot(iRotation);
    ZuPoint p(1, 10.0, 20.0);
    ortho.AdjustPixelRotation(&p);
    EXPECT_EQ(p.m_dX, x) << iRotation;
    EXPECT_EQ(p.m_dY, y) << iRotation;
    ortho.InvAdjustPixelRotation(&p);
    EXPECT_EQ(p.m_dX, xBack) << iRotation;
    EXPECT_EQ(p.m_dY, yBack) << iRotation;
  }
  ortho.SetDigPictRot(0);
  ortho.ToggleMirrorX();
  ortho.ToggleMirrorY();
  ZuPoint p(1, 10.0, 20.0);
  ortho.AdjustPixelRotation(&p);
  EXPECT_ROW("90 30", p.m_dX, p.m_dY);
  ortho.InvAdjustPixelRotation(&p);
  EXPECT_EQ(p.m_dX, 10.0);
  ortho.ToggleMirrorX();
  EXPECT_EQ(ortho.GetMirrorInfo(), eZuMirrorY);
}

class Rotation : public ZuRotatePhotoBase {
 public:
  using ZuRotatePhotoBase::AdjustReseauOrZuspTrafo;
  using ZuRotatePhotoBase::ZuRotatePhotoBase;
};

TEST(RotatePhoto, QuarterTurnsKeepPreConsistent) {
  for (const int iRotation : {0, 1, 2, 3}) {
    ZuPhoto photo(1, "a.jpg");
    photo.SetActiveFlag(eZuPhotoStateActive);
    photo.SetDigiRegion(ZuRegion(0, 0, 99, 49));
    ZuTrafo2d ident;
    ident.SetIdent();
    photo.SetReseauPreTrafo(ident);
    photo.SetReseauMainTrafo(ident);
    Rotation(&photo).AdjustReseauOrZuspTrafo(0, iRotation);
    const bool bExchanged = iRotation == 1 || iRotation == 3;
    EXPECT_EQ(photo.GetDigiRegion().Width(), bExchanged ? 49.0 : 99.0) << iRotation;
    // The origin of Pre has followed the turn about the image's centre, and so has its x axis.
    const int iTurns = (4 - iRotation) % 4;
    ZuPoint origin(0, 0.0, 0.0), axis(0, 1.0, 0.0);
    photo.ConvertBiko(&origin, ePreToDigi);
    photo.ConvertBiko(&axis, ePreToDigi);
    EXPECT_NEAR(origin.m_dX, iTurns == 1 ? 50.0 : 0.0, 1e-9) << iRotation;
    EXPECT_NEAR(origin.m_dY, iTurns == 3 ? 100.0 : 0.0, 1e-9) << iRotation;
    EXPECT_NEAR(axis.m_dX - origin.m_dX, std::cos(iTurns * std::numbers::pi / 2), 1e-9)
        << iRotation;
    EXPECT_NEAR(axis.m_dY - origin.m_dY, -std::sin(iTurns * std::numbers::pi / 2), 1e-9)
        << iRotation;
    EXPECT_EQ(photo.GetReseauPreTrafo().GetType(), eZuTrafo2DHelmert);
  }
  ZuOrthoPhoto ortho(1u);
  ortho.SetActiveFlag(eZuPhotoStateActive);
  Rotation(&ortho).AdjustReseauOrZuspTrafo(0, 1);
  EXPECT_EQ(ortho.GetReseauPreTrafo().GetType(), eZuTrafo2DNone);
  ZuPhoto inactive(1);
  Rotation(&inactive).AdjustReseauOrZuspTrafo(0, 1);
  EXPECT_EQ(inactive.GetReseauPreTrafo().GetType(), eZuTrafo2DNone);
}

}  // namespace
