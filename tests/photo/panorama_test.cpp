// Panoramas, and the records of orientations.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "tests/support/planes.h"
#include "tests/support/temp_file.h"
#include "zu/numerics/line3d.h"
#include "zu/photo/bundle_aob.h"
#include "zu/photo/photo_list.h"
#include "zu/photo/photo_viva_pano.h"

namespace {

constexpr double kQuarter = 1.5707963267948966;

// 360 x 180 degrees on 3600 x 1800 pixels of 0.01 mm, standing in (10, 20, 30).
ZuPhotoVivaPano MakePanorama(eZuPanorama eSurface) {
  ZuPhotoVivaPano photo(7, "round.jpg");
  photo.SetPanorama(eSurface);
  photo.SetActiveFlag(eZuPhotoStateActive);
  photo.SetHasAOR(true);
  photo.SetPosAOR(10.0, 20.0, 30.0);
  photo.SetRotAOR(0.4, -1.1, 2.0);
  photo.GetCamera().SetId(1);
  photo.GetCamera().m_iMode = eCameraModePinhole;
  photo.GetCamera().m_dC = 36.0 / (4.0 * kQuarter);
  photo.SetBikoRegion(ZuRegion(-18.0, -9.0, 18.0, 9.0));
  return photo;
}

}  // namespace

// Object points on the ray of an image point, wherever it looks, are projected back to it.
TEST(Panorama, RaysAndProjectionAreInverse) {
  for (const eZuPanorama eSurface : {eZuPanoramaSphere, eZuPanoramaCylinder}) {
    const ZuPhotoVivaPano photo = MakePanorama(eSurface);
    for (double x = -17.9; x < 18.0; x += 2.3) {
      for (double y = -8.5; y < 9.0; y += 1.7) {
        const ZuPoint image(1, x, y);
        ZuPoint object;
        photo.CalcRayEndPoint(&object, &image, 123.0);
        ZuLine3d ray;
        photo.CalcRay(ray, &image);
        const ZuPoint3d end = ray.getStart() + ray.getDirection() * 123.0;
        EXPECT_NEAR(std::hypot(end.x - object.m_dX, end.y - object.m_dY, end.z - object.m_dZ), 0.0,
                    1e-12 * 123.0);
        EXPECT_TRUE(photo.IsInPhotoView(object, true)) << x << ' ' << y;
        ASSERT_TRUE(photo.ConvertBiko(&object, eObjectToBiko));
        EXPECT_NEAR(object.m_dX, x, 1e-12 * 36.0);
        EXPECT_NEAR(object.m_dY, y, 1e-11 * 36.0);
      }
    }
  }
}

// The directions of the middle, a quarter turn to the right, behind, and up; by eye.
TEST(Panorama, LooksWhereItIsTold) {
  for (const eZuPanorama eSurface : {eZuPanoramaSphere, eZuPanoramaCylinder}) {
    ZuPhotoVivaPano photo = MakePanorama(eSurface);
    photo.SetRotAOR(0.0, 0.0, 0.0);
    const double dUp = eSurface == eZuPanoramaSphere ? 4.5 : photo.GetCamera().m_dC;
    const struct {
      double x, y, v[3];
    } cases[] = {{0.0, 0.0, {0, 0, -1}},
                 {9.0, 0.0, {1, 0, 0}},
                 {-9.0, 0.0, {-1, 0, 0}},
                 {18.0, 0.0, {0, 0, 1}},
                 {0.0, dUp, {0, std::sqrt(0.5), -std::sqrt(0.5)}}};
    for (const auto& c : cases) {
      const ZuPoint image(1, c.x, c.y);
      ZuLine3d ray;
      photo.CalcRay(ray, &image);
      EXPECT_NEAR(ray.getDirection().x, c.v[0], 1e-15);
      EXPECT_NEAR(ray.getDirection().y, c.v[1], 1e-15);
      EXPECT_NEAR(ray.getDirection().z, c.v[2], 1e-15);
    }
    // The wall z = 35, behind the middle of the picture; nothing before it.
    const ZuPlane wall = MakePlane(0.0, 0.0, 1.0, -35.0);
    const ZuPoint behind(1, 18.0, 0.0), before(2, 0.0, 0.0), along(3, 9.0, 0.0);
    ZuPoint object;
    ASSERT_TRUE(photo.CalcSip(&object, wall, &behind));
    EXPECT_NEAR(object.m_dX, 10.0, 1e-12);
    EXPECT_NEAR(object.m_dZ, 35.0, 1e-12);
    EXPECT_FALSE(photo.CalcSip(&object, wall, &before));
    EXPECT_EQ(photo.GetSipError(), eZuSipNoPoint);
    EXPECT_FALSE(photo.CalcSip(&object, MakePlane(0.0, 0.0, 0.0, 1.0), &behind));
    EXPECT_EQ(photo.GetSipError(), eZuSipNoPlane);
    ZuPoint centre(1, 10.0, 20.0, 30.0), above(2, 10.0, 25.0, 30.0);
    EXPECT_FALSE(photo.ConvertBiko(&centre, eObjectToBiko));
    EXPECT_EQ(photo.ConvertBiko(&above, eObjectToBiko), eSurface == eZuPanoramaSphere);
  }
}

// Code that knows photos alone gets the panorama's results, and a list as point by point.
TEST(Panorama, IsAPhotoAmongPhotos) {
  ZuPhotoVivaPano round = MakePanorama(eZuPanoramaSphere);
  ZuPhoto* const pPhoto = &round;
  const ZuPlane wall = MakePlane(0.6, -0.48, 0.64, -31.0);
  ZuPointList list;
  for (const double x : {-16.0, -7.0, 1.0, 9.0, 17.0}) {
    const ZuPoint image(list.Count() + 1U, x, 0.3 * x);
    pPhoto->AddImo(image, static_cast<eConvertBikoMode>(0));
    list.Add(image);
  }
  int iMet = 0;
  ASSERT_EQ(pPhoto->CalcSipList(&list, wall, static_cast<eConvertBikoMode>(0)), 5);
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    ZuPoint met;
    EXPECT_EQ(pPhoto->CalcSip(&met, wall, p->GetId(), true), std::isfinite(p->m_dX));
    if (!std::isfinite(p->m_dX)) continue;
    ++iMet;
    EXPECT_EQ(met.m_dX, p->m_dX);
    EXPECT_NEAR(wall.Dist(met), 0.0, 1e-12);
    EXPECT_TRUE(pPhoto->IsInPhotoView(met, true));
    const ZuPoint& image = *pPhoto->FindImo(p->GetId());
    ZuLine3d ray;
    pPhoto->SetBikoTransform(eBikoToAdjusted, false);
    pPhoto->CalcRayDirection(ray, image.m_dX, image.m_dY);
    ZuVector3d toPoint(met.m_dX - 10.0, met.m_dY - 20.0, met.m_dZ - 30.0);
    EXPECT_NEAR(ray.getDirection() * toPoint, toPoint.Norm(), 1e-12 * toPoint.Norm());
    ASSERT_TRUE(ZuBikoTransform(pPhoto, eObjectToBiko, false).Transform(&met));
    EXPECT_NEAR(met.m_dX, image.m_dX, 1e-11);
    EXPECT_NEAR(met.m_dY, image.m_dY, 1e-11);
  }
  EXPECT_GT(iMet, 0);
  EXPECT_LT(iMet, 5);
  EXPECT_TRUE(ZuPhoto(round).IsRound());
}

// The deviations of the angles against differences of the angles themselves; there and back through
// a file to the last bit.
TEST(BundleAOB, CarriesOrientationAndAccuracy) {
  ZuPhotoList photos;
  photos.Add(new ZuPhoto(7));
  ZuPhoto& photo = *photos.First();
  photo.SetPosAOR(1.5, -2.25, 1e-3);
  photo.SetRotAOR(0.4, -1.1, 2.0);
  ZuBundleAOB orientation(photo);
  double adCov[36] = {};
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 6; ++j) adCov[6 * i + j] = i == j ? 1e-6 * (i + 1) : 2e-7;
  }
  ASSERT_TRUE(orientation.SetSigmas(adCov));
  EXPECT_DOUBLE_EQ(orientation.m_adSigmaPosition[1], std::sqrt(2e-6));
  double J[3][3];
  for (int k = 0; k < 3; ++k) {
    double aadAngle[2][3];
    for (int iSide = 0; iSide < 2; ++iSide) {
      const double w = iSide == 0 ? -1e-5 : 1e-5;
      ZuMatrix turn(3, 3);  // exp of w about the image axis k, to second order
      turn.SetIdent();
      const int a = (k + 1) % 3 + 1, b = (k + 2) % 3 + 1;
      turn[a][a] = turn[b][b] = std::cos(w);
      turn[b][a] = std::sin(w);
      turn[a][b] = -std::sin(w);
      ZuPhoto turned(photo);
      turned.SetRotAOR(photo.GetRotAOR() * turn);
      turned.GetRotAOR(&aadAngle[iSide][0], &aadAngle[iSide][1], &aadAngle[iSide][2]);
    }
    for (int i = 0; i < 3; ++i) J[i][k] = (aadAngle[1][i] - aadAngle[0][i]) / 2e-5;
  }
  for (int i = 0; i < 3; ++i) {
    double dVariance = 0.0;
    for (int k = 0; k < 3; ++k) {
      for (int l = 0; l < 3; ++l) dVariance += J[i][k] * adCov[6 * (3 + k) + 3 + l] * J[i][l];
    }
    EXPECT_NEAR(orientation.m_adSigmaAngles[i], std::sqrt(dVariance), 1e-12);
  }
  orientation.m_adAngles[0] = kQuarter;
  EXPECT_FALSE(orientation.SetSigmas(adCov));
  orientation.m_adAngles[0] = 0.4;

  ZuBundleAOBList list;
  list.Add(orientation);
  std::ostringstream text;
  list.Export(text);
  const TempFile file;
  file.Write(text.str());
  ZuBundleAOBList again;
  ASSERT_TRUE(again.ReadFile(file.Path()));
  ASSERT_EQ(again.Count(), 1);
  std::ostringstream second;
  again.Export(second);
  EXPECT_EQ(second.str(), text.str());
  photo.SetPosAOR(0.0, 0.0, 0.0);
  EXPECT_EQ(again.ApplyTo(&photos), 1);
  EXPECT_TRUE(photo.HasAOR());
  EXPECT_EQ(photo.GetPosAOR()[2], -2.25);
  // What is cut keeps what was whole, and says so.
  for (const char* szEnd : {"{ 8 1 2", "{ 8 1 2 }\n", "{ 8 1 2 x 4 5 6 7 8 9 10 11 12 13 }\n"}) {
    file.Write(text.str() + szEnd);
    ZuBundleAOBList cut;
    EXPECT_FALSE(cut.ReadFile(file.Path())) << szEnd;
    EXPECT_EQ(cut.Count(), 1) << szEnd;
    EXPECT_FALSE(cut.ReadFile("no such file"));
  }
}
