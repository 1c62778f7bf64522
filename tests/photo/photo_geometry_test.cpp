// Rays, intersections, views, rescaling and tiles of oriented photos.
#include "tests/support/cameras.h"
#include "tests/support/planes.h"
#include "tests/support/test.h"
#include "zu/cloud/scan_point3d.h"
#include "zu/numerics/line3d.h"
#include "zu/photo/photo.h"
#include "zu/photo/photo_region_tiles.h"

namespace {

// 10 above the origin, looking down; image 36 x 24 mm, pixels of 0.01 mm, y up.
ZuPhoto MakePhoto() {
  ZuPhoto photo(1, "a.jpg");
  photo.SetDigiRegion(ZuRegion(0, 0, 3600, 2400));
  const double main[9] = {0.01, 0, -18, 0, 0.01, -12, 0, 0, 1};
  ZuTrafo2d trafo;
  trafo.SetFromMatrix(ZuMatrix(main, 3, 3), eZuTrafo2DHelmert);
  photo.SetReseauMainTrafo(trafo);
  trafo.SetIdent();
  photo.SetReseauPreTrafo(trafo);
  photo.SetCamera(ZuCamera(3, 20.0));
  photo.SetRotAOR(0.0, 0.0, 0.0);
  photo.SetPosAOR(0.0, 0.0, 10.0);
  photo.SetHasAOR(true);
  photo.SetActiveFlag(eZuPhotoStateActive);
  return photo;
}

TEST(PhotoGeometry, RefusalsInTheirOrder) {
  ZuPhoto photo = MakePhoto();
  const ZuPlane ground = MakePlane(0, 0, 1, 0);
  ZuPoint result(9, 1.0, 2.0, 3.0), centre(1, 0.0, 0.0);
  photo.SetHasAOR(false);
  EXPECT_FALSE(photo.CalcSip(&result, ZuPlane(), static_cast<ZuPoint*>(nullptr)));
  EXPECT_EQ(photo.GetSipError(), eZuSipNoOrientation);
  photo.SetHasAOR(true);
  EXPECT_FALSE(photo.CalcSip(&result, ZuPlane(), static_cast<ZuPoint*>(nullptr)));
  EXPECT_EQ(photo.GetSipError(), eZuSipNoPlane);
  EXPECT_FALSE(photo.CalcSip(&result, ground, static_cast<ZuPoint*>(nullptr)));
  EXPECT_EQ(photo.GetSipError(), eZuSipNoPoint);
  photo.SetHasAOR(false);
  EXPECT_FALSE(photo.CalcSip(&result, ground, 77u, true));
  EXPECT_EQ(photo.GetSipError(), eZuSipNoPoint);  // looked up before anything else
  EXPECT_EQ(result.m_dY, 2.0);
  photo.SetHasAOR(true);
  EXPECT_TRUE(photo.CalcSip(&result, ground, &centre));
  EXPECT_EQ(photo.GetSipError(), eZuSipNoPoint);  // the last refusal is kept
  EXPECT_ROW("0 0 9", result.m_dX, result.m_dZ, result.GetId());
}

// A second method: the point of the plane whose image is the given one, by the collinearity
// equations; planes of every attitude, those that no coordinate axis meets included.
TEST(PhotoGeometry, IntersectionsProjectBack) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  for (int n = 0; n < 2000; ++n) {
    ZuPhoto photo = MakePhoto();
    photo.SetRotAOR(unit(random), 3.0 * unit(random), 3.0 * unit(random));
    photo.SetPosAOR(10.0 * unit(random), 10.0 * unit(random), 10.0 * unit(random));
    ZuPlane plane = MakePlane(unit(random), unit(random), unit(random), 5.0 * unit(random));
    if (n % 4 == 0) plane = MakePlane(1.0, n % 8 == 0 ? 1.0 : -1.0, 0.0, plane.D());
    ZuPoint image(1, 18.0 * unit(random), 12.0 * unit(random));
    ZuPoint object;
    ASSERT_TRUE(photo.CalcSip(&object, plane, &image));
    ZuLine3d ray;
    photo.CalcRay(ray, &image);
    const ZuVector3d normal(plane.A(), plane.B(), plane.C());
    if (std::fabs(ray.getDirection() * normal) < 0.05) continue;  // nearly along the plane
    EXPECT_NEAR(plane.FastDist(object), 0.0, 1e-9);
    ZuPoint back(object);
    photo.ConvertBiko(&back, eObjectToAdjusted);
    EXPECT_NEAR(back.m_dX, image.m_dX, 1e-8);
    EXPECT_NEAR(back.m_dY, image.m_dY, 1e-8);

    ZuPointList list;
    list.Add(image);
    EXPECT_EQ(photo.CalcSipList(&list, plane, static_cast<eConvertBikoMode>(0)), 1);
    EXPECT_EQ(*list.First(), object);  // to the last bit
  }
}

TEST(PhotoGeometry, RaysAndEndPoints) {
  ZuPhoto photo = MakePhoto();
  const ZuPoint image(1, 3.0, 4.0);
  photo.GetCamera().m_dC = -20.0;  // its sign does not matter to a ray
  double x, y, z;
  ASSERT_TRUE(photo.CalcRayEndPoint(x, y, z, &image, 2.0));
  const double dLength = std::sqrt(9.0 + 16.0 + 400.0);
  EXPECT_NEAR(x, 6.0 / dLength, 1e-15);
  EXPECT_NEAR(z, 10.0 - 40.0 / dLength, 1e-14);
  ZuScanPoint3d scan;
  photo.CalcRayEndPoint(&scan, &image, 2.0);
  EXPECT_EQ(scan.y, y);
  ZuLine3d line;
  photo.SetBikoTransform(eDigiToAdjusted, false);
  photo.SetRayStart(line);
  photo.CalcRayDirection(line, 2100.0, 1600.0);
  EXPECT_NEAR(line.Evaluate(2.0).x, x, 1e-12);
  EXPECT_NEAR(line.Evaluate(2.0).z, z, 1e-12);

  ZuPhoto other = MakePhoto();
  other.SetRotAOR(0.0, 1.2, 0.0);
  other.SetPosAOR(3.0, 4.0, 10.0);
  EXPECT_NEAR(photo.CalcAngle(other), 1.2, 1e-15);
  EXPECT_ROW("0 5 4", photo.CalcAngle(photo), photo.Distance(other),
             photo.Distance2(ZuPoint(1, 0.0, 2.0, 10.0)));
  EXPECT_TRUE(photo.IsLookingInSameDirection(other));
  other.SetRotAOR(0.0, 1.5707963267948966, 0.0);
  EXPECT_FALSE(photo.IsLookingInSameDirection(other));
  other.SetRotAOR(0.0, 1.563, 0.0);  // just below the right angle is not enough
  EXPECT_FALSE(photo.IsLookingInSameDirection(other));
}

TEST(PhotoGeometry, FieldOfView) {
  ZuPhoto photo = MakePhoto();
  ASSERT_TRUE(photo.CalcFieldOfViewPlanes());
  EXPECT_EQ(photo.GetFovCorner(0).m_dX, 18.0);  // the film lies behind the centre
  EXPECT_ROW("30 10", photo.GetFovCorner(0).m_dZ, photo.GetFovCorner(4).m_dZ);
  EXPECT_NEAR(std::fabs(photo.GetFovPlane(4).C()), 1.0, 1e-12);
  // Each side plane holds the centre and separates a point in view from one beside it.
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(photo.GetFovPlane(i).Dist(0.0, 0.0, 10.0), 0.0, 1e-12);
    EXPECT_GT(std::fabs(photo.GetFovPlane(i).Dist(0.0, 0.0, 0.0)), 1.0);
  }
  photo.SetPosAOR(1.0, 0.0, 10.0);
  ASSERT_TRUE(photo.CalcFieldOfViewPlanes());
  EXPECT_EQ(photo.GetFovCorner(4).m_dX, 1.0);
  photo.GetCamera().m_dC = 40.0;  // leaves the pyramid as it was
  photo.CalcFieldOfViewPlanes();
  EXPECT_EQ(photo.GetFovCorner(0).m_dZ, 30.0);
  photo.SetHasAOR(false);
  photo.SetRotAOR(0.0, 0.0, 0.0);
  EXPECT_FALSE(photo.CalcFieldOfViewPlanes());
}

TEST(PhotoGeometry, InPhotoView) {
  ZuPhoto photo = MakePhoto();
  EXPECT_TRUE(photo.IsInPhotoView(ZuPoint(1, 8.9, 5.9, 0.0), true));
  EXPECT_FALSE(photo.IsInPhotoView(ZuPoint(1, 9.1, 0.0, 0.0), true));
  EXPECT_TRUE(photo.IsInPhotoView(ZuPoint(1, 0.0, 0.0, 20.0), false));  // behind the camera
  EXPECT_FALSE(photo.IsInPhotoView(ZuPoint(1, 0.0, 0.0, 20.0), true));
  photo.SetActiveFlag(eZuPhotoStateInactive);
  EXPECT_FALSE(photo.IsInPhotoView(ZuPoint(1, 0.0, 0.0, 0.0), false));
  const ZuPoint pixel(1, 3600.0, 0.0);
  EXPECT_TRUE(photo.Overlap(&pixel));
}

TEST(PhotoGeometry, Rescaling) {
  ZuPhoto photo = MakePhoto();
  EXPECT_FALSE(photo.RescaleTo(0.0));
  ZuPoint before(1, 900.0, 600.0), after(1, 1800.0, 1200.0);
  photo.ConvertBiko(&before, eDigiToBiko);
  photo.SetScale(3.0);
  ASSERT_TRUE(photo.RescaleTo(2.0));
  photo.ConvertBiko(&after, eDigiToBiko);
  EXPECT_NEAR(after.m_dX, before.m_dX, 1e-12);
  EXPECT_ROW("7200 6", photo.GetDigiRegion().Right(), photo.GetScale());

  photo = MakePhoto();
  photo.AddImo(ZuPoint(1, 900.0, 600.0), eDigiToBiko);
  ASSERT_TRUE(photo.RescaleTo(2.0, 3.0));
  EXPECT_NEAR(photo.FirstImo()->m_dX, -18.0, 1e-12);  // twice -9
  EXPECT_NEAR(photo.GetBikoRegion().Top(), 36.0, 1e-12);
  EXPECT_EQ(photo.GetDigiRegion().Right(), 3600.0);
  ZuTrafo2d polynomial;
  polynomial.SetFromMatrix(ZuMatrix(3, 3), eZuTrafo2DPolynomial);
  photo.SetReseauMainTrafo(polynomial);
  EXPECT_FALSE(photo.RescaleTo(2.0, 2.0));
}

TEST(PhotoGeometry, Tiles) {
  ZuPhoto photo = MakePhoto();
  const ZuPhotoRegionTiles tiles(&photo, 6, 4);
  const struct {
    double x, y;
    int ix, iy;
  } rows[] = {{-18, -12, 0, 0}, {-12.01, 0, 0, 2}, {-11.99, -0.01, 1, 1},
              {18, 12, 5, 3},   {99, -99, 5, 0},   {std::nan(""), 1e300, 0, 3}};
  for (const auto& row : rows) {
    ZuPoint p(1, row.x, row.y);
    int ix = -1, iy = -1;
    tiles.GetFieldIndex(ix, iy, &p);
    EXPECT_EQ(ix, row.ix) << row.x;
    EXPECT_EQ(iy, row.iy) << row.y;
  }
}

}  // namespace
