// A facade that the tests draw, photographed with distortion and rectified again.
#include "zu/image/rectify.h"

#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>

#include "tests/support/cameras.h"
#include "tests/support/test.h"
#include "zu/image/image_file.h"
#include "zu/image/resample.h"
#include "zu/image/undistort.h"
#include "zu/photo/photo_view.h"
#include "zu/rectify/calc_zusp.h"
#include "zu/rectify/plane_frame.h"

namespace {

// Pixels of the photo in a row; ZU_FULL_FACADE=1 takes the size of a real one.
int Columns() { return std::getenv("ZU_FULL_FACADE") != nullptr ? 4000 : 800; }

// The facade in m, 24 x 18, lower left corner (0, 0); grey from 0 to 1: courses and piers whose
// edges are as soft as a lens draws them, some pixels of the photo wide.
double Facade(double x, double y) {
  const auto soft = [](double d) { return 0.5 + 0.5 * std::tanh(2.0 * std::sin(d)); };
  return 0.1 + 0.5 * soft(1.1 * x) * soft(1.3 * y) + 0.3 * soft(0.7 * x + 0.4 * y);
}

// A wide camera on 36 x 27 mm, before a wall that runs to the north east, looking at it slantingly.
struct Scene {
  explicit Scene(const ZuCamera& camera) : photo(7, "facade.png") {
    const int iWidth = Columns(), iHeight = iWidth * 3 / 4;
    const double dPixel = 36.0 / iWidth;
    photo.SetDigiRegion(ZuRegion(0, 0, iWidth - 1, iHeight - 1));
    const double ad[] = {
        dPixel, 0, -0.5 * dPixel * (iWidth - 1), 0, -dPixel, 0.5 * dPixel * (iHeight - 1), 0, 0, 1};
    ZuTrafo2d trafo;
    trafo.SetFromMatrix(ZuMatrix(ad, 3, 3), eZuTrafo2DAffin);
    photo.SetReseauPreTrafo(trafo);
    trafo.SetIdent();
    photo.SetReseauMainTrafo(trafo);
    photo.SetCamera(camera);
    // n turned to the viewer; X to the right along the wall, Y up.
    const double n[3] = {0.6, -0.8, 0.0};
    plane.A() = n[0], plane.B() = n[1], plane.C() = n[2];
    plane.D() = -(n[0] * 1000.0 + n[1] * 2000.0);
    ZuMakePlaneFrame(plane, &toObject);
    x0 = 0.8 * 1000.0 + 0.6 * 2000.0;
    y0 = 100.0;
    // R maps image axes to object space: x right, y up, z to the back.
    const double a = 0.35, b = 0.12;  // off the normal
    const double z[3] = {n[0] * std::cos(a) + 0.8 * std::sin(a),
                         n[1] * std::cos(a) + 0.6 * std::sin(a), 0.0};
    const double x[3] = {-z[1], z[0], 0.0};
    double R[9];
    for (int i = 0; i < 3; ++i) {
      R[3 * i] = x[i];
      R[3 * i + 1] = -std::sin(b) * z[i] + (i == 2 ? std::cos(b) : 0.0);
      R[3 * i + 2] = std::cos(b) * z[i] + (i == 2 ? std::sin(b) : 0.0);
    }
    photo.SetRotAOR(ZuMatrix(R, 3, 3));
    const double dFar = 17.5;
    const double adMiddle[3] = {1000.0 + 0.8 * 11.0, 2000.0 + 0.6 * 11.0, y0 + 9.0};
    photo.SetPosAOR(adMiddle[0] + dFar * R[2], adMiddle[1] + dFar * R[5],
                    adMiddle[2] + dFar * R[8]);
    photo.SetHasAOR(true);
  }

  // By the rays of the core.
  template <class T>
  ZuImage Photograph() {
    const auto iWidth = static_cast<int>(photo.GetDigiRegion().Width()) + 1;
    const auto iHeight = static_cast<int>(photo.GetDigiRegion().Height()) + 1;
    ZuImage image(iWidth, iHeight, 1, 8 * static_cast<int>(sizeof(T)));
    ZuBikoTransform toRay(&photo, eDigiToAdjusted, false);
    toRay.SetExact(true);
    for (int j = 0; j < iHeight; ++j) {
      for (int i = 0; i < iWidth; ++i) {
        ZuPoint pixel(0, i, j), object;
        EXPECT_TRUE(toRay.Transform(&pixel) && photo.CalcSip(&object, plane, &pixel));
        const double x = 0.8 * object.m_dX + 0.6 * object.m_dY - x0, y = object.m_dZ - y0;
        image.GetRow<T>(j)[i] = static_cast<T>(Facade(x, y) * std::numeric_limits<T>::max() + 0.5);
      }
    }
    return image;
  }

  ZuPhoto photo;
  ZuPlane plane;
  ZuMatrix toObject = ZuMatrix(4, 4);
  double x0, y0;  // the facade's corner in the plane
};

ZuCamera Wide() { return test_cameras::Make(3, 0, 24.6, -0.05, 0.11, -1.6e-4, 1.7e-7, 12.0, 26.0); }

template <class T>
double WorstGrey(const Scene& scene, const ZuImage& picture, const ZuPlaneRaster& raster) {
  double dWorst = 0.0;
  for (int j = 0; j < raster.m_iHeight; ++j) {
    for (int i = 0; i < raster.m_iWidth; ++i) {
      const T* p = picture.GetRow<T>(j) + 2 * i;
      if (p[1] == 0) continue;
      double x = i, y = j;
      raster.ToPlane(&x, &y);
      const double d = Facade(x - scene.x0, y - scene.y0) * std::numeric_limits<T>::max();
      dWorst = std::max(dWorst, std::fabs(p[0] - d));
    }
  }
  return dWorst * 255.0 / std::numeric_limits<T>::max();
}

TEST(Rectify, GivesTheGreyValuesOfTheFacade) {
  Scene scene(Wide());
  ZuPlaneRaster raster;
  raster.m_toObject = scene.toObject;
  const double dPixel = 24.0 / Columns();
  ASSERT_TRUE(raster.SetRegion(
      ZuRegion(scene.x0 + 1.0, scene.y0 + 2.0, scene.x0 + 21.0, scene.y0 + 16.0), dPixel));
  const ZuPlaneToPhotoMap map(raster, scene.photo, false);
  const ZuImage image8 = scene.Photograph<std::uint8_t>();
  const ZuImage image16 = scene.Photograph<std::uint16_t>();
  for (const ZuImage* pImage : {&image8, &image16}) {
    ZuResampler resampler(raster.m_iWidth, raster.m_iHeight, eZuInterpolationCubic);
    ASSERT_TRUE(resampler.AddSource(pImage, &map));
    ZuImage picture = resampler.MakeRows(raster.m_iHeight);
    resampler.Resample(0, &picture);
    EXPECT_EQ(resampler.GetUsed()[0],
              static_cast<std::int64_t>(raster.m_iWidth) * raster.m_iHeight);
    if (pImage == &image16) {
      EXPECT_LE(WorstGrey<std::uint16_t>(scene, picture, raster), 0.1);
    } else {  // the rounding of source and result on top
      EXPECT_LE(WorstGrey<std::uint8_t>(scene, picture, raster), 1.25);
    }
  }
  // The photo shows the middle of the facade, its footprint holds the region.
  ZuRegion footprint;
  ASSERT_TRUE(ZuPhotoFootprint(scene.photo, scene.plane, scene.toObject, false, &footprint));
  EXPECT_TRUE(footprint.Overlap(ZuPoint(0, scene.x0 + 1.0, scene.y0 + 2.0)));
  EXPECT_LT(footprint.Width(), 60.0);
  // An orthophoto of the picture carries its pixels to the wall.
  const ZuOrthoPhoto ortho = ZuMakeOrthoPhoto(9, "a.tif", raster);
  EXPECT_NEAR(ortho.GetPixelSize(), dPixel, 1e-12);
  double x = 100.0, y = 50.0, P[3];
  ZuPoint pixel(0, x, y);
  ASSERT_TRUE(ortho.Transform(&pixel));
  raster.ToPlane(&x, &y);
  raster.ToObject(x, y, P);
  EXPECT_NEAR(std::hypot(pixel.m_dX - P[0], pixel.m_dY - P[1], pixel.m_dZ - P[2]), 0.0, 1e-9);
  ZuPoint a, b, c, d;
  ASSERT_TRUE(ortho.GetImageCorners(&a, &b, &c, &d));
  EXPECT_NEAR(scene.plane.Dist(c), 0.0, 1e-9);
  EXPECT_NEAR(d.m_dZ, raster.GetRegion().Bottom(), 1e-9);
}

// Corners of the rectified picture from control points measured to 0.1 pixel.
TEST(Rectify, PutsCornersWhereTheControlSays) {
  for (const ZuCamera& camera :
       {Wide(), test_cameras::Make(4, eCameraModePinhole, 24.6, 0, 0, 0, 0, 0, 26)}) {
    Scene scene(camera);
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0.0, 0.1);
    ZuBikoTransform toPixel(&scene.photo, eObjectToDigi, false);
    toPixel.SetExact(true);
    const auto object = [&](double x, double y) {
      return ZuPoint(1, 1000.0 + 0.8 * x, 2000.0 + 0.6 * x, scene.y0 + y);
    };
    ZuZuspTrafo trafo;
    trafo.SetDistortCameraParam(camera);
    trafo.SetDistortCameraFlag(true);
    for (unsigned i = 0; i < 24; ++i) {
      ZuPoint known = object(2.0 + 3.4 * (i % 6), 3.0 + 3.7 * (i / 6));
      known.SetId(i + 1);
      ZuPoint pixel(known);
      ASSERT_TRUE(toPixel.Transform(&pixel) && ZuIsInImage(scene.photo, pixel.m_dX, pixel.m_dY));
      pixel.m_dX += noise(random);
      pixel.m_dY += noise(random);
      scene.photo.ConvertBiko(&pixel, eDigiToBiko);
      trafo.GetPPList().AddPoint(known);
      trafo.GetBikoList().AddPoint(ZuPoint(i + 1, pixel.m_dX, pixel.m_dY));
    }
    ZuCalcZusp calc;
    ASSERT_TRUE(calc.Calc(&trafo)) << calc.GetStatusText();
    ZuPlaneRaster raster;
    ZuRegion region;
    ASSERT_TRUE(ZuZuspFootprint(scene.photo, trafo, &region));
    ASSERT_TRUE(raster.SetRegion(region, 24.0 / Columns()));
    const ZuZuspToPhotoMap map(raster, trafo, scene.photo, false);
    ASSERT_TRUE(map.IsValid());
    double dSum = 0.0;
    int n = 0;
    for (double x = 2.5; x < 19.0; x += 2.0) {
      for (double y = 3.5; y < 14.0; y += 2.0, ++n) {
        // Where the picture has the corner's place, it must show the pixel that sees the corner.
        ZuPoint pixel = object(x, y);
        ASSERT_TRUE(toPixel.Transform(&pixel));
        double i = (x + scene.x0 - raster.m_dLeft) / raster.m_dPixel - 0.5;
        double j = (raster.m_dTop - y - scene.y0) / raster.m_dPixel - 0.5, dLong, dShort;
        ASSERT_TRUE(ZuPixelScaleAt(map, i, j, &dLong, &dShort) && map.Map(&i, &j));
        dSum += std::pow(dLong * std::hypot(i - pixel.m_dX, j - pixel.m_dY), 2);
      }
    }
    EXPECT_LE(std::sqrt(dSum / n), 0.1);
    EXPECT_GE(n, 40);
  }
}

// A real photo without distortion and distorted again.
TEST(Undistort, ComesBackToTheSameGreyValues) {
  ZuImage image;
  ZuFindingList findings;
  ASSERT_TRUE(
      ZuReadImage(ZU_SOURCE_DIR "/samples/chessboard/left01.jpg", &image, nullptr, &findings));
  Scene scene(test_cameras::ChessboardRadial());
  scene.photo.SetDigiRegion(ZuRegion(0, 0, 639, 479));
  const double ad[] = {0.0099, 0, -3.16305, 0, -0.0099, 2.37105, 0, 0, 1};
  ZuTrafo2d pre;
  pre.SetFromMatrix(ZuMatrix(ad, 3, 3), eZuTrafo2DAffin);
  scene.photo.SetReseauPreTrafo(pre);
  ZuPhoto plain;
  ASSERT_TRUE(ZuMakeUndistortedPhoto(scene.photo, eZuUndistortWhole, false, &plain));
  const ZuPhotoToPhotoMap there(plain, scene.photo, false), back(scene.photo, plain, false);
  ZuResampler first(static_cast<int>(plain.GetDigiRegion().Width()) + 1,
                    static_cast<int>(plain.GetDigiRegion().Height()) + 1, eZuInterpolationLanczos);
  first.AddSource(&image, &there);
  ZuImage flat = first.MakeRows(first.GetHeight());
  first.Resample(0, &flat);
  ZuResampler second(640, 480, eZuInterpolationLanczos);
  second.AddSource(&flat, &back);
  ZuImage again = second.MakeRows(480);
  second.Resample(0, &again);
  double dSum = 0.0;
  int n = 0;
  for (int y = 8; y < 472; ++y) {
    for (int x = 8; x < 632; ++x, ++n) {
      const auto* p = again.GetRow<std::uint8_t>(y) + 2 * x;
      ASSERT_EQ(p[1], 255);
      dSum += std::pow(p[0] - image.GetRow<std::uint8_t>(y)[x], 2);
    }
  }
  EXPECT_LT(std::sqrt(dSum / n), 1.0);
}

}  // namespace
