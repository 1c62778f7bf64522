// Pictures made anew: kernels, maps of tiles, files written in bands, photos without distortion.
#include "zu/image/resample.h"

#include <omp.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>

#include "tests/support/cameras.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/progress.h"
#include "zu/image/image_file.h"
#include "zu/image/image_writer.h"
#include "zu/image/photo_map.h"
#include "zu/image/undistort.h"

namespace {

using Field = std::function<double(double, double, int)>;  // x, y, channel: 0 to 1

class FieldMap : public ZuPixelMap {
 public:
  explicit FieldMap(std::function<bool(double*, double*)> map) : m_map(std::move(map)) {}
  bool Map(double* x, double* y) const override { return m_map(x, y); }

 private:
  std::function<bool(double*, double*)> m_map;
};

template <class T>
double MaxOf() {
  return std::numeric_limits<T>::max();
}

template <class T>
ZuImage Render(int iWidth, int iHeight, int iChannels, const Field& field) {
  ZuImage image(iWidth, iHeight, iChannels, 8 * static_cast<int>(sizeof(T)));
  for (int y = 0; y < iHeight; ++y) {
    T* p = image.GetRow<T>(y);
    for (int x = 0; x < iWidth; ++x) {
      for (int c = 0; c < iChannels; ++c) {
        *p++ = static_cast<T>(field(x, y, c) * MaxOf<T>() + 0.5);
      }
    }
  }
  return image;
}

// A wave of 24 pixels or more, as sharp as a picture that a lens has drawn.
double Wave(double x, double y, int c) {
  return 0.5 + 0.22 * std::sin(0.26 * x + 0.05 * y + c) + 0.22 * std::cos(0.21 * y - 0.06 * x);
}

ZuImage Resampled(const ZuImage& source, const ZuPixelMap& map, int iWidth, int iHeight,
                  eZuInterpolation eKernel, int iBand = 1000) {
  ZuResampler resampler(iWidth, iHeight, eKernel);
  EXPECT_TRUE(resampler.AddSource(&source, &map));
  ZuImage result = resampler.MakeRows(iHeight), band = resampler.MakeRows(iBand);
  for (int y = 0; y < iHeight; y += band.GetHeight()) {
    resampler.Resample(y, &band);
    const int iRows = std::min(band.GetHeight(), iHeight - y);
    std::copy_n(band.GetData(), static_cast<size_t>(iRows) * band.GetRowBytes(),
                result.GetRow<std::uint8_t>(y));
  }
  return result;
}

// Largest difference of the opaque pixels to the field at their places, in grey values of T,
// without those where a kernel reaches beyond the border.
template <class T>
double Worst(const ZuImage& image, const ZuPixelMap& map, const Field& field) {
  const int iColors = image.GetChannels() - 1;
  double dWorst = 0.0;
  int iOpaque = 0;
  for (int j = 0; j < image.GetHeight(); ++j) {
    for (int i = 0; i < image.GetWidth(); ++i) {
      const T* p = image.GetRow<T>(j) + i * image.GetChannels();
      double x = i, y = j;
      if (p[iColors] == 0 || !map.Map(&x, &y) || x < 4.0 || y < 4.0) continue;
      ++iOpaque;
      for (int c = 0; c < iColors; ++c) {
        dWorst = std::max(dWorst, std::fabs(p[c] - field(x, y, c) * MaxOf<T>()));
      }
    }
  }
  EXPECT_GT(iOpaque, 1000);
  return dWorst;
}

// Turned, shrunk by a little and bent; the last columns have no source.
const FieldMap kBent([](double* x, double* y) {
  const double u = *x, v = *y;
  *x = 8.3 + 0.91 * u - 0.12 * v + 2e-4 * u * v;
  *y = 6.7 + 0.13 * u + 0.93 * v - 1e-4 * u * u;
  return u < 150.0;
});

TEST(Resample, GivesTheFieldBetweenThePixelsWhateverTheForm) {
  for (const int iChannels : {1, 3}) {
    const ZuImage source8 = Render<std::uint8_t>(200, 180, iChannels, Wave);
    const ZuImage source16 = Render<std::uint16_t>(200, 180, iChannels, Wave);
    for (const eZuInterpolation e : {eZuInterpolationCubic, eZuInterpolationLanczos}) {
      // Half a grey value of the source under weights of both signs, and the rounding of the
      // result.
      EXPECT_LE(Worst<std::uint8_t>(Resampled(source8, kBent, 170, 130, e), kBent, Wave), 1.5);
      EXPECT_LE(Worst<std::uint16_t>(Resampled(source16, kBent, 170, 130, e), kBent, Wave), 128.0);
    }
    // A parabola has its middle between two pixels that a line misses: f'' / 8 in both directions.
    EXPECT_LE(Worst<std::uint8_t>(Resampled(source8, kBent, 170, 130, eZuInterpolationBilinear),
                                  kBent, Wave),
              0.22 * 255 * (0.26 * 0.26 + 0.05 * 0.05 + 0.21 * 0.21 + 0.06 * 0.06) / 8 + 1.0);
  }
  // Pixels without a source are transparent and black; the others are whole.
  const ZuImage result =
      Resampled(Render<std::uint8_t>(200, 180, 1, Wave), kBent, 170, 130, eZuInterpolationCubic);
  for (int i = 0; i < 170; ++i) {
    EXPECT_EQ(result.GetRow<std::uint8_t>(64)[2 * i + 1], i < 150 ? 255 : 0) << i;
  }
  EXPECT_EQ(result.GetRow<std::uint8_t>(64)[2 * 160], 0);
}

// A picture continued by the pixels of its border gives the same bits inside of itself, where no
// kernel reaches beyond it any more; and the same values as with 16 bits, which are not rounded.
TEST(Resample, QuickRowsAgreeWithPlainOnes) {
  const FieldMap shifted([](double* x, double* y) {
    const bool bThere = kBent.Map(x, y);
    *x += 16.0, *y += 16.0;
    return bThere;
  });
  for (const int iChannels : {1, 3}) {
    const auto pixel = [](double x, double y, int c) {
      const int i = int(std::clamp(x, 0.0, 158.0)) * 7 + int(std::clamp(y, 0.0, 138.0)) * 31 + c;
      return i * i % 256 / 255.0;
    };
    const auto bordered = [&](double x, double y, int c) { return pixel(x - 16, y - 16, c); };
    const ZuImage small = Render<std::uint8_t>(159, 139, iChannels, pixel);
    const ZuImage large = Render<std::uint8_t>(191, 171, iChannels, bordered);
    const ZuImage fine = Render<std::uint16_t>(159, 139, iChannels, pixel);
    for (const auto e :
         {eZuInterpolationBilinear, eZuInterpolationCubic, eZuInterpolationLanczos}) {
      const ZuImage a = Resampled(small, kBent, 157, 133, e);
      const ZuImage b = Resampled(large, shifted, 157, 133, e);
      const ZuImage c = Resampled(fine, kBent, 157, 133, e);
      int iInside = 0;
      for (int k = 0; k < 157 * 133 * (iChannels + 1); ++k) {
        if (a.GetData()[k / (iChannels + 1) * (iChannels + 1) + iChannels] == 0) continue;
        ++iInside;
        ASSERT_EQ(a.GetData()[k], b.GetData()[k]) << e << ' ' << k;
        ASSERT_NEAR(a.GetData()[k], c.GetRow<std::uint16_t>(0)[k] / 257.0, 1.3) << e << ' ' << k;
      }
      EXPECT_GT(iInside, 10000);
    }
  }
}

// The source tells where it was asked: 100 grey values a pixel.
TEST(Resample, AsksEveryCameraToAHundredthOfAPixel) {
  for (const auto& named : test_cameras::Calibrations()) {
    SCOPED_TRACE(named.strName);
    const double dPixel = 2.0 * named.camera.m_dRMax / 700.0;
    ZuPhoto photo(1, "a.png");
    photo.SetDigiRegion(ZuRegion(0, 0, 599, 359));
    ZuMatrix m(3, 3);
    m.SetIdent();
    m[1][1] = dPixel, m[2][2] = -dPixel;
    m[1][3] = -299.5 * dPixel, m[2][3] = 179.5 * dPixel;
    ZuTrafo2d pre;
    pre.SetFromMatrix(m, eZuTrafo2DAffin);
    photo.SetReseauPreTrafo(pre);
    ZuTrafo2d main;
    main.SetIdent();
    photo.SetReseauMainTrafo(main);
    photo.SetCamera(named.camera);
    ZuPhoto plain;
    ASSERT_TRUE(ZuMakeUndistortedPhoto(photo, eZuUndistortSame, false, &plain));
    const ZuImage ramp = Render<std::uint16_t>(
        600, 360, 3, [](double x, double y, int c) { return 100.0 * (c == 0 ? x : y) / 65535.0; });
    const ZuPhotoToPhotoMap there(plain, photo, false), back(photo, plain, false);
    const ZuImage result = Resampled(ramp, there, 600, 360, eZuInterpolationBilinear);
    double dWorst = 0.0;
    int iSeen = 0;
    for (int j = 0; j < 360; ++j) {
      for (int i = 0; i < 600; ++i) {
        const auto* p = result.GetRow<std::uint16_t>(j) + 4 * i;
        double x = i, y = j;
        const bool bThere = there.Map(&x, &y) && x > 0 && y > 0 && x < 599 && y < 359;
        if (!bThere || p[3] == 0) continue;
        ++iSeen;
        dWorst = std::max({dWorst, std::fabs(p[0] / 100.0 - x), std::fabs(p[1] / 100.0 - y)});
        ASSERT_TRUE(back.Map(&x, &y));
        EXPECT_NEAR(std::hypot(x - i, y - j), 0.0, 1e-9);
      }
    }
    EXPECT_GT(iSeen, 600 * 360 / 2);
    EXPECT_LT(dWorst, 0.01);
  }
}

// Same bits for any bands and threads; finer sources are averaged; the better source is taken.
TEST(Resample, TilesAverageAndJoin) {
  const ZuImage source = Render<std::uint8_t>(300, 300, 3, Wave);
  const int iThreads = omp_get_max_threads();
  omp_set_num_threads(1);
  const ZuImage one = Resampled(source, kBent, 170, 130, eZuInterpolationCubic);
  omp_set_num_threads(3);
  const ZuImage many = Resampled(source, kBent, 170, 130, eZuInterpolationCubic, 37);
  omp_set_num_threads(iThreads);
  EXPECT_TRUE(std::equal(one.GetData(), one.GetData() + 130 * one.GetRowBytes(), many.GetData()));

  const ZuImage stripes =
      Render<std::uint8_t>(300, 300, 1, [](double x, double, int) { return int(x) % 2; });
  const FieldMap quarter([](double* x, double* y) {
    *x = 4.0 * *x + 1.5;
    *y = 4.0 * *y + 1.5;
    return true;
  });
  const ZuImage grey = Resampled(stripes, quarter, 75, 75, eZuInterpolationBilinear);
  EXPECT_NEAR(grey.GetRow<std::uint8_t>(40)[2 * 40], 128, 1);

  const ZuImage dark = Render<std::uint8_t>(300, 300, 1, [](double, double, int) { return 0.2; });
  const ZuImage light = Render<std::uint8_t>(300, 300, 1, [](double, double, int) { return 0.8; });
  const FieldMap finer([](double* x, double* y) {  // twice as fine to the right of column 100
    *x = *x < 100.0 ? 100.0 + 0.5 * *x : 2.0 * *x - 50.0;
    return *y < 70.0;
  });
  const FieldMap plain([](double* x, double*) { return *x > 10.0; });
  ZuResampler resampler(170, 100, eZuInterpolationBilinear);
  ASSERT_TRUE(resampler.AddSource(&dark, &plain) && resampler.AddSource(&light, &finer));
  EXPECT_FALSE(resampler.AddSource(&source, &plain));  // of other channels
  ZuImage rows = resampler.MakeRows(100);
  resampler.Resample(0, &rows);
  const auto at = [&](int x, int y) { return int(rows.GetRow<std::uint8_t>(y)[2 * x]); };
  EXPECT_EQ(at(50, 40), 51);
  EXPECT_EQ(at(5, 40), 204);
  EXPECT_EQ(at(5, 90), 0);
  EXPECT_EQ(resampler.GetUsed()[0] + resampler.GetUsed()[1], 170 * 100 - 11 * 30);
}

TEST(Writer, ReadsBackWhatItWrote) {
  for (const char* szName : {".png", ".tif", ".jpg"}) {
    const TempFile file("", szName);
    for (const int iBits : {8, 16}) {
      for (const int iChannels : {1, 2, 3, 4}) {
        SCOPED_TRACE(std::string(szName) + std::to_string(iBits) + std::to_string(iChannels));
        const bool bJpeg = szName == std::string(".jpg");
        if (bJpeg && iBits == 16) continue;
        const auto wave = [](double x, double y, int c) { return c % 2 ? 1.0 : Wave(x, y, c); };
        const ZuImage image = iBits == 8 ? Render<std::uint8_t>(70, 50, iChannels, wave)
                                         : Render<std::uint16_t>(70, 50, iChannels, wave);
        ZuImageWriteOptions options{70, 50, iChannels, iBits};
        options.m_dPerInch = 300.0;
        options.m_map = ZuImageGrid{1000.0, 2000.0, 0.5};
        options.m_iEpsg = 25832;
        const std::string strPath = file.Path();
        ZuImageWriter writer;
        ASSERT_TRUE(writer.Open(strPath, options)) << writer.GetError();
        ASSERT_TRUE(writer.Write(image, 50) && writer.Close()) << writer.GetError();
        ZuImage back;
        ZuFindingList findings;
        ASSERT_TRUE(ZuReadImage(strPath, &back, nullptr, &findings));
        EXPECT_TRUE(findings.begin() == findings.end());
        ASSERT_EQ(back.GetChannels(), bJpeg ? (iChannels - 1) / 2 * 2 + 1 : iChannels);
        if (bJpeg) continue;
        ASSERT_EQ(back.GetRowBytes(), image.GetRowBytes());
        EXPECT_TRUE(std::equal(image.GetData(), image.GetData() + 50 * image.GetRowBytes(),
                               back.GetData()));
      }
    }
  }
  EXPECT_EQ(ZuWorldFileName("x/facade.v2.TIFF"), "x/facade.v2.tfw");
  EXPECT_EQ(ZuWorldFileText({1000.25, 2000.75, 0.5}), "0.5\n0\n0\n-0.5\n1000.25\n2000.75\n");
}

TEST(Writer, LeavesNothingThatIsNotWhole) {
  const ZuImage rows = Render<std::uint8_t>(70, 50, 3, Wave);
  for (const char* szName : {".png", ".tif", ".jpg"}) {
    for (const bool bClose : {false, true}) {
      const TempFile file("", szName);
      {
        ZuImageWriter writer;
        ASSERT_TRUE(writer.Open(file.Path(), {70, 100, 3, 8}) && writer.Write(rows, 50));
        EXPECT_FALSE(bClose && writer.Close());
      }
      EXPECT_FALSE(std::ifstream(file.Path()).is_open());
    }
  }
  // A run that is stopped.
  const TempFile file("", ".png");
  const FieldMap same([](double*, double*) { return true; });
  ZuResampler resampler(70, 1000, eZuInterpolationBilinear);
  resampler.AddSource(&rows, &same);
  const ZuProgressHandler former = ZuSetProgressHandler(
      {[](void*, eZuProgress, const char*, double dPosition) { return dPosition < 0.3; }, nullptr});
  {
    ZuImageWriter stopped;
    ASSERT_TRUE(stopped.Open(file.Path(), {70, 1000, 4, 8}));
    EXPECT_FALSE(resampler.Write(&stopped, "stopped"));
    EXPECT_EQ(stopped.GetError(), "");
  }
  ZuSetProgressHandler(former);
  EXPECT_FALSE(std::ifstream(file.Path()).is_open());

  ZuImageWriter writer;
  EXPECT_FALSE(writer.Open("b.bmp", {70, 100, 3, 8}));
  EXPECT_NE(writer.GetError().find(".png, .jpg or .tif"), std::string::npos);
  EXPECT_FALSE(writer.Open("b.jpg", {70, 100, 3, 16}));
  EXPECT_FALSE(writer.Open("b.jpg", {70000, 1, 3, 8}));
  EXPECT_FALSE(writer.Open("/none/b.tif", {70, 100, 3, 8}));
  EXPECT_NE(writer.GetError().find("No such file"), std::string::npos);
}

}  // namespace
