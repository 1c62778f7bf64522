// What a photo can see, against the plain statement of each test.
#include "zu/photo/photo_view.h"

#include <gtest/gtest.h>

#include <cmath>

#include "zu/numerics/rotation_defect.h"
#include "zu/photo/photo.h"

namespace {

ZuPhoto ObliquePhoto() {
  ZuPhoto photo(1, "a.jpg");
  photo.SetDigiRegion(ZuRegion(0, 0, 639, 479));
  photo.SetHasAOR(true);
  photo.SetRotAOR(0.3, -0.7, 1.1);
  photo.SetPosAOR(10.0, 20.0, 30.0);
  ZuTrafo2d trafo;
  trafo.SetIdent();
  photo.SetReseauMainTrafo(trafo);
  photo.SetCamera(ZuCamera(1, 8.0, 0.1, -0.1, -1e-3, 0.0, 2.5, "a"));
  return photo;
}

TEST(PhotoView, APointOnARayIsBeforeTheCameraAndItsMirrorImageBehind) {
  const ZuPhoto photo = ObliquePhoto();
  for (const double d : {1e-6, 1.0, 1e6}) {
    const ZuPoint image(0, 3.0, -2.0);
    ZuPoint before, behind;
    photo.CalcRayEndPoint(&before, &image, d);
    photo.CalcRayEndPoint(&behind, &image, -d);
    EXPECT_TRUE(ZuIsBeforeCamera(photo, before)) << d;
    EXPECT_FALSE(ZuIsBeforeCamera(photo, behind)) << d;
  }
}

TEST(PhotoView, TheImageReachesHalfAPixelBeyondItsOuterCentres) {
  const ZuPhoto photo = ObliquePhoto();
  EXPECT_TRUE(ZuIsInImage(photo, -0.5, 479.5) && ZuIsInImage(photo, 639.5, -0.5));
  for (const auto& [x, y] :
       {std::pair{-0.6, 1.0}, {640.0, 1.0}, {1.0, -0.6}, {1.0, 480.0}, {std::nan(""), 1.0}}) {
    EXPECT_FALSE(ZuIsInImage(photo, x, y)) << x << ' ' << y;
  }
  EXPECT_TRUE(ZuIsInImage(ZuPhoto(1), 1e9, -1e9));  // nothing is known of its size
}

TEST(PhotoView, ASingularTransformationMapsNoPixels) {
  ZuPhoto photo = ObliquePhoto();
  EXPECT_TRUE(ZuMapsPixels(photo));
  ZuMatrix flat(3, 3);
  flat.SetIdent();
  flat[2][2] = 0.0;
  ZuTrafo2d trafo;
  trafo.SetFromMatrix(flat, eZuTrafo2DAffin);
  photo.SetReseauMainTrafo(trafo);
  EXPECT_FALSE(ZuMapsPixels(photo));
}

// Adjust may be trusted exactly where the exact inverse gives the point back.
TEST(PhotoView, TheDomainOfACameraIsThatOfItsInverse) {
  ZuCamera camera(1, 8.0, 0.1, -0.1, 0.02, 0.0, 2.5, "a");  // folds inside its table
  camera.m_dRMax = 6.0;
  for (double r = 0.0; r < 9.0; r += 0.0625) {
    for (const double a : {0.2, 1.9, 4.0}) {
      const double x = 0.1 + r * std::cos(a), y = -0.1 + r * std::sin(a);
      double xBack = x, yBack = y;
      const bool bBack = camera.Adjust(&xBack, &yBack) &&
                         camera.InvAdjustExact(&xBack, &yBack) == eCameraInverseOk &&
                         std::hypot(xBack - x, yBack - y) < 1e-6;
      EXPECT_EQ(ZuIsInCameraDomain(camera, x, y), bBack) << x << ' ' << y;
    }
  }
}

TEST(RotationDefect, IsTheErrorOfARoundedRotationAndInfiniteForNone) {
  ZuMatrix R = ObliquePhoto().GetRotAOR();
  EXPECT_LT(ZuRotationDefect(R), 1e-15);
  R[1][1] += 1e-5;
  EXPECT_NEAR(ZuRotationDefect(R), 2e-5, 2e-5);
  R[1][1] = std::nan("");
  EXPECT_EQ(ZuRotationDefect(R), HUGE_VAL);
  R.SetIdent();
  R[3][3] = -1.0;
  EXPECT_EQ(ZuRotationDefect(R), HUGE_VAL);
  EXPECT_EQ(ZuRotationDefect(ZuMatrix(2, 2)), HUGE_VAL);
}

}  // namespace
