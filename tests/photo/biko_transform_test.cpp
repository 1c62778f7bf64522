// The thirteen conversions against products formed by hand, plain and polynomial, with and without
// a turned y.
#include "zu/photo/biko_transform.h"

#include "tests/support/cameras.h"
#include "tests/support/test.h"
#include "zu/photo/photo.h"
#include "zu/transform/calc_trafo2d.h"

namespace {

constexpr double kHeight = 480.0;  // of the image, one added

ZuTrafo2d FromCoefficients(eZuTrafo2DType eType, std::initializer_list<double> values) {
  class Settable : public ZuTrafo2d {
   public:
    Settable(eZuTrafo2DType eSet, std::initializer_list<double> set) {
      m_eType = eSet;
      int i = 0;
      for (const double d : set) m_adCoef[i++] = d;
    }
  };
  return Settable(eType, values);
}

// A photo with affine pre- and Helmert or slightly bent polynomial main transformation.
ZuPhoto MakePhoto(bool bPolynomial) {
  ZuPhoto photo(1, "a.jpg");
  photo.SetDigiRegion(ZuRegion(0, 0, 639, 479));
  photo.SetReseauPreTrafo(FromCoefficients(eZuTrafo2DAffin, {0.5, 1, 0.001, 479.5, 0.002, -1}));
  if (bPolynomial) {
    photo.SetReseauMainTrafo(FromCoefficients(
        eZuTrafo2DPolynomial,
        {-3.168, 0.0099, 1e-5, 1e-8, 0, 0, 0, 0, 0, 0, -2.376, 0, 0.0099, 0, 2e-8, 0, 0, 0, 0, 0}));
    photo.SetPolyInvTrafo(
        FromCoefficients(eZuTrafo2DPolynomial,
                         {320, 101, 0, 0, 0, 0, 0, 0, 0, 0, 240, 0, 101, 0, 0, 0, 0, 0, 0, 0}));
  } else {
    photo.SetReseauMainTrafo(FromCoefficients(eZuTrafo2DHelmert, {-3.168, 0.0099, -2.376, 1e-5}));
  }
  photo.SetCamera(test_cameras::ChessboardRadial());
  photo.SetRotAOR(-0.16, 0.27, -0.01);
  photo.SetPosAOR(183.0, 84.0, 374.0);
  photo.SetHasAOR(true);
  return photo;
}

// One step after the other, by the photo's own objects; inverses of the plane transformations by
// the matrices one at a time.
bool ByHand(const ZuPhoto& photo, int iMode, bool bFlip, double* x, double* y, double* z) {
  const bool bPoly = photo.GetReseauMainTrafo().GetType() == eZuTrafo2DPolynomial;
  const auto flip = [&] { *y = bFlip ? kHeight - *y : *y; };
  const auto inverse = [&](const ZuTrafo2d& trafo) {
    ZuMatrix m(3, 3);
    trafo.BuildMatrix(&m);
    m.Invert(nullptr).PTrans2D(x, y);
  };
  const auto pre = [&] { photo.GetReseauPreTrafo().Transform(x, y); };
  const auto main = [&] { photo.GetReseauMainTrafo().Transform(x, y); };
  const auto preInverse = [&] { inverse(photo.GetReseauPreTrafo()); };
  const auto mainInverse = [&] {
    bPoly ? static_cast<void>(photo.GetReseauPolyInv().Transform(x, y))
          : inverse(photo.GetReseauMainTrafo());
  };
  switch (iMode) {
    case 1:
      pre();
      return true;
    case 2:
      flip(), pre(), main();
      return true;
    case 3:
      main();
      return true;
    case 4:
      flip(), pre();
      if (!bPoly) main();  // required: a polynomial is left out here
      return photo.GetCamera().Adjust(x, y), true;
    case 5:
      return photo.GetCamera().Adjust(x, y), true;
    case 10:
      photo.GetCamera().InvAdjust(x, y);
      [[fallthrough]];
    case 6:
      mainInverse(), preInverse(), flip();
      return true;
    case 7:
      preInverse(), flip();
      return true;
    case 8:
      mainInverse();
      return true;
    case 9:
      return photo.GetCamera().InvAdjust(x, y), true;
    default:
      break;
  }
  const ZuVector v = photo.GetRotAOR().Transpose() *
                     (ZuVector(*x, *y, *z) - photo.GetPosAOR());  // the image vector
  *x = -photo.GetCamera().m_dC * v[1] / v[3];
  *y = -photo.GetCamera().m_dC * v[2] / v[3];
  *z = 0.0;
  if (iMode >= 12) photo.GetCamera().InvAdjust(x, y);
  if (iMode == 13) mainInverse(), preInverse();
  flip();
  return !bFlip || (*x >= 1.0 && *y >= 1.0 && *x < 639.0 && *y < kHeight - 1.0);
}

TEST(BikoTransform, EveryModeEqualsItsSteps) {
  const struct {
    double x, y, z;
  } images[] = {{250.3, 95.5, 0}, {10, 470, 0}, {600.25, 20, 0}},
    bikos[] = {{-0.7, 1.4, 0}, {1.5, -1.9, 0}, {0.2278, 0.0657, 0}},
    objects[] = {{0, 125, 0}, {200, 0, 3}, {100, 75, -2}};
  for (const bool bPolynomial : {false, true}) {
    const ZuPhoto photo = MakePhoto(bPolynomial);
    for (const bool bFlip : {false, true}) {
      for (int iMode = 0; iMode <= 14; ++iMode) {
        const ZuBikoTransform transform(&photo, static_cast<eConvertBikoMode>(iMode), bFlip);
        EXPECT_EQ(transform.IsPolyTrafo(), bPolynomial);
        const bool bFromDigi = iMode <= 4 || iMode == 7;
        for (int i = 0; i < 3; ++i) {
          const auto& p = iMode >= 11 ? objects[i] : bFromDigi ? images[i] : bikos[i];
          SCOPED_TRACE(::testing::Message() << "mode " << iMode << " polynomial " << bPolynomial
                                            << " flip " << bFlip << " point " << i);
          double x = p.x, y = p.y, z = p.z, xh = p.x, yh = p.y, zh = p.z;
          const bool bResult = transform.Transform(&x, &y, &z);
          if (iMode == 0 || iMode == 14) {
            EXPECT_TRUE(bResult && x == p.x && y == p.y);
            continue;
          }
          EXPECT_EQ(bResult, ByHand(photo, iMode, bFlip, &xh, &yh, &zh));
          EXPECT_NEAR(x, xh, 1e-9 * std::max(1.0, std::fabs(xh)));
          EXPECT_NEAR(y, yh, 1e-9 * std::max(1.0, std::fabs(yh)));
          // The photo's own conversion is the same without flip, but for the polynomial.
          if (bFlip || (bPolynomial && iMode == 4)) continue;
          ZuPoint own(0, p.x, p.y, p.z);
          EXPECT_EQ(photo.ConvertBiko(&own, static_cast<eConvertBikoMode>(iMode)), bResult);
          EXPECT_NEAR(own.m_dX, x, 1e-9 * std::max(1.0, std::fabs(x)));
          EXPECT_NEAR(own.m_dY, y, 1e-9 * std::max(1.0, std::fabs(y)));
        }
      }
    }
  }
}

TEST(BikoTransform, PolynomialIsAppliedByThePhotoAlone) {
  const ZuPhoto photo = MakePhoto(true);
  ZuPoint prepared(0, 250.0, 90.0), own(prepared), list(prepared);
  ZuBikoTransform(&photo, eDigiToAdjusted, false).Transform(&prepared);
  photo.ConvertBiko(&own, eDigiToAdjusted);
  EXPECT_GT(std::fabs(prepared.m_dX), 100.0);  // still pixels, run through the camera
  EXPECT_LT(std::fabs(own.m_dX), 4.0);
  ZuPointList points;
  points.Add(list);
  photo.ConvertList(&points, eDigiToAdjusted);
  EXPECT_EQ(points.First()->m_dX, prepared.m_dX);
}

TEST(BikoTransform, BordersAndRefusals) {
  ZuPhoto photo = MakePhoto(false);
  photo.SetCamera(ZuCamera(1, 5.0));
  photo.GetCamera().SetPinholeCamera();
  photo.SetReseauPreTrafo(FromCoefficients(eZuTrafo2DHelmert, {0, 1, 0, 0}));
  photo.SetReseauMainTrafo(FromCoefficients(eZuTrafo2DHelmert, {0, 1, 0, 0}));
  photo.SetRotAOR(0.0, 0.0, 0.0);
  photo.SetPosAOR(0.0, 0.0, 10.0);
  // The object point (2 x, 2 y, 0) projects to (x, y).
  const struct {
    double x, y;
    bool bInside;
  } rows[] = {{0.5, 100, false},   {1.0, 100, true},  {638.9, 100, true},
              {639.0, 100, false}, {5, 479.5, false}, {5, 479.0, true},
              {5, 1.5, true},      {5, 1.0, false},   {5, 0.5, false}};
  for (const auto& row : rows) {
    double x = 2.0 * row.x, y = 2.0 * row.y, z = 0.0;
    EXPECT_EQ(ZuBikoTransform(&photo, eObjectToDigi, true).Transform(&x, &y, &z), row.bInside)
        << row.x << " " << row.y;
    EXPECT_NEAR(y, 480.0 - row.y, 1e-12);
    x = 2.0 * row.x, y = 2.0 * row.y, z = 0.0;
    EXPECT_TRUE(ZuBikoTransform(&photo, eObjectToDigi, false).Transform(&x, &y, &z));
  }
  // At the height of the projection centre: 1e-8 instead of 0.
  double x = 1e-8, y = 0.0, z = 10.0;
  EXPECT_TRUE(ZuBikoTransform(&photo, eObjectToAdjusted, false).Transform(&x, &y, &z));
  EXPECT_DOUBLE_EQ(x, -5.0);

  // The camera's table ends at its half-width: refused, and left in Adjusted.
  photo.SetCamera(test_cameras::Make(21, 0, 5.0, 0, 0, 0, 0, 1.0, 2.0));
  x = 6.0, y = 0.0, z = 0.0;
  EXPECT_FALSE(ZuBikoTransform(&photo, eObjectToDigi, true).Transform(&x, &y, &z));
  EXPECT_EQ(x, 3.0);
  x = 3.0, y = 0.0;
  EXPECT_TRUE(ZuBikoTransform(&photo, eAdjustedToBiko, false).Transform(&x, &y, &z));
  EXPECT_EQ(x, 3.0);  // a refusal is ignored here

  const ZuBikoTransform view(&photo, eObjectToAdjusted, false);
  EXPECT_TRUE(view.IsInPhotoView(0.0, 0.0, 0.0));
  EXPECT_TRUE(view.IsInPhotoView(17.0, 0.0, 15.0 - 0.01));  // about 120 degrees off the axis
  EXPECT_FALSE(view.IsInPhotoView(0.0, 0.0, 20.0));
}

}  // namespace
