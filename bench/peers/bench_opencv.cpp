// Cameras, plane projective transformations, polygons and pictures beside OpenCV, on one thread.
#include <benchmark/benchmark.h>
#include <omp.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "bench/photo_sample.h"
#include "bench/ring_sample.h"
#include "zu/image/photo_map.h"
#include "zu/image/resample.h"
#include "zu/image/undistort.h"
#include "zu/transform/calc_trafo2d.h"

namespace {

const bool kOneThread = (cv::setNumThreads(1), true);

void CheckNear(double a, double b, double dTolerance, const char* szWhat) {
  if (std::fabs(a - b) <= dTolerance) return;
  std::fprintf(stderr, "bench_opencv: %s differs by %g\n", szWhat, a - b);
  std::exit(1);
}

// --- Object point to image point ----------------------------------------------------------------

// Both look along their own axis; OpenCV's is turned by half a turn about the first one.
struct Projection {
  explicit Projection(const ZuPhoto& photo) {
    const double* r = photo.GetRotAOR().GetData();
    const ZuVector& eye = photo.GetPosAOR();
    const cv::Matx33d turned(r[0], r[3], r[6], -r[1], -r[4], -r[7], -r[2], -r[5], -r[8]);
    cv::Rodrigues(turned, rotation);
    shift = -(turned * cv::Vec3d(eye[1], eye[2], eye[3]));
    const double c = std::fabs(photo.GetCamera().m_dC);
    camera = cv::Matx33d(c, 0, 0, 0, -c, 0, 0, 0, 1);
  }
  void Run(const std::vector<cv::Point3d>& points, std::vector<cv::Point2d>& image) const {
    cv::projectPoints(points, rotation, shift, camera, cv::noArray(), image);
  }
  cv::Vec3d rotation, shift;
  cv::Matx33d camera;
};

void ObjectToAdjusted_ours(benchmark::State& state) {
  const ZuPhoto photo = photo_sample::MakePhoto();
  const ZuBikoTransform transform(&photo, eObjectToAdjusted, false);
  const auto points = photo_sample::Points(100.0, 0.1);
  std::vector<cv::Point3d> copies;
  for (const ZuPoint& p : points) copies.emplace_back(p.m_dX, p.m_dY, p.m_dZ);
  std::vector<cv::Point2d> image;
  Projection(photo).Run(copies, image);
  for (std::size_t i = 0; i < points.size(); ++i) {
    double x = points[i].m_dX, y = points[i].m_dY, z = points[i].m_dZ;
    transform.Transform(&x, &y, &z);
    CheckNear(x, image[i].x, 1e-9, "projection");
    CheckNear(y, image[i].y, 1e-9, "projection");
  }
  for (auto _ : state) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      double x = points[i].m_dX, y = points[i].m_dY, z = points[i].m_dZ;
      transform.Transform(&x, &y, &z);
      image[i] = {x, y};
    }
    benchmark::ClobberMemory();
  }
}

void ObjectToAdjusted_opencv(benchmark::State& state) {
  const Projection projection(photo_sample::MakePhoto());
  std::vector<cv::Point3d> points;
  for (const ZuPoint& p : photo_sample::Points(100.0, 0.1)) {
    points.emplace_back(p.m_dX, p.m_dY, p.m_dZ);
  }
  std::vector<cv::Point2d> image;
  for (auto _ : state) {
    projection.Run(points, image);
    benchmark::DoNotOptimize(image.data());
  }
}

// --- The inverse of a distortion polynomial -----------------------------------------------------

// x (1 - a1 (r^2 - r0^2) - a2 (r^4 - r0^4)) is OpenCV's k x (1 + k1 r^2 + k2 r^4), lengths in mm.
struct Lens {
  explicit Lens(const ZuCamera& c) : xh(c.m_dXh), yh(c.m_dYh) {
    const double r02 = c.m_dR0 * c.m_dR0;
    const double k = 1.0 + c.m_dA1 * r02 + c.m_dA2 * r02 * r02;
    camera = cv::Matx33d(k, 0, 0, 0, k, 0, 0, 0, 1);
    distortion = cv::Vec4d(-c.m_dA1 / k, -c.m_dA2 / k, 0.0, 0.0);
  }
  void Run(const std::vector<cv::Point2d>& points, std::vector<cv::Point2d>& image) const {
    cv::undistortPoints(points, image, camera, distortion);
  }
  double xh, yh;
  cv::Matx33d camera;
  cv::Vec4d distortion;
};

std::vector<cv::Point2d> ImagePoints() {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> image(-2.0, 2.0);
  std::vector<cv::Point2d> points(1 << 16);
  for (auto& p : points) p = {image(random), image(random)};
  return points;
}

void CameraInverse_ours(benchmark::State& state) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  const Lens lens(camera);
  const auto points = ImagePoints();
  std::vector<cv::Point2d> image;
  lens.Run(points, image);
  for (std::size_t i = 0; i < points.size(); ++i) {
    double x = points[i].x, y = points[i].y;
    camera.InvAdjust(&x, &y);
    // The table is good to a part of its step of 0.011 mm, five rounds are to about 0.001 mm.
    CheckNear(x, image[i].x + lens.xh, 2e-3, "inverse");
    CheckNear(y, image[i].y + lens.yh, 2e-3, "inverse");
  }
  for (auto _ : state) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      image[i] = points[i];
      camera.InvAdjust(&image[i].x, &image[i].y);
    }
    benchmark::ClobberMemory();
  }
}

void CameraInverse_opencv(benchmark::State& state) {
  const Lens lens(test_cameras::ChessboardRadial());
  const auto points = ImagePoints();
  std::vector<cv::Point2d> image;
  for (auto _ : state) {
    lens.Run(points, image);
    benchmark::DoNotOptimize(image.data());
  }
}

// --- Plane projective transformation ------------------------------------------------------------

struct Rectification {
  explicit Rectification(int n) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    for (int i = 0; i < n; ++i) {
      // The first four are the corners, so that any number determines it.
      const double x = i < 4 ? (i % 2 * 2 - 1) : unit(random);
      const double y = i < 4 ? (i / 2 * 2 - 1) : unit(random);
      const double w = 1.0 + 0.1 * x - 0.05 * y;
      const auto X = static_cast<float>((0.8 * x - 0.3 * y + 0.2) / w);
      const auto Y = static_cast<float>((0.3 * x + 0.9 * y - 0.1) / w);
      from.emplace_back(x, y);
      to.emplace_back(X, Y);
      const auto uId = static_cast<unsigned int>(i + 1);
      source.Add(ZuPoint(uId, x, y));
      target.Add(ZuPoint(uId, X, Y));
    }
  }
  cv::Mat Theirs() const {
    return from.size() == 4 ? cv::getPerspectiveTransform(from, to) : cv::findHomography(from, to);
  }
  std::vector<cv::Point2f> from, to;
  ZuPointList source, target;
};

void Projective_ours(benchmark::State& state) {
  Rectification data(static_cast<int>(state.range(0)));
  ZuCalcTrafo2D trafo(&data.target);
  if (!trafo.CalcTrafoProjectiv(&data.source)) std::exit(1);
  const cv::Mat expected = data.Theirs();
  for (int i = 0; i < 8; ++i) {
    CheckNear(trafo.GetCoef(i), expected.at<double>(i / 3, i % 3), 1e-5, "projective estimate");
  }
  for (auto _ : state) benchmark::DoNotOptimize(trafo.CalcTrafoProjectiv(&data.source));
}

void Projective_opencv(benchmark::State& state) {
  const Rectification data(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(data.Theirs());
}

void Perspective_ours(benchmark::State& state) {
  Rectification data(100);
  ZuCalcTrafo2D trafo(&data.target);
  if (!trafo.CalcTrafoProjectiv(&data.source)) std::exit(1);
  const auto points = ImagePoints();
  std::vector<cv::Point2d> mapped(points.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      mapped[i] = points[i];
      trafo.Transform(&mapped[i].x, &mapped[i].y);
    }
    benchmark::ClobberMemory();
  }
  std::vector<cv::Point2d> expected;
  cv::perspectiveTransform(points, expected, data.Theirs());
  for (std::size_t i = 0; i < points.size(); ++i) {
    CheckNear(mapped[i].x, expected[i].x, 1e-4, "perspective");
  }
}

void Perspective_opencv(benchmark::State& state) {
  const cv::Mat matrix = Rectification(100).Theirs();
  const auto points = ImagePoints();
  std::vector<cv::Point2d> mapped;
  for (auto _ : state) {
    cv::perspectiveTransform(points, mapped, matrix);
    benchmark::DoNotOptimize(mapped.data());
  }
}

// --- Point in a ring ----------------------------------------------------------------------------

// Numbers that fit into a float, as OpenCV's contours have them.
struct FloatRing {
  FloatRing() {
    ring = ring_sample::Star(1000);
    for (std::size_t i = 0; i < ring.x.size(); ++i) {
      contour.emplace_back(static_cast<float>(ring.x[i]), static_cast<float>(ring.y[i]));
      ring.x[i] = contour[i].x;
      ring.y[i] = contour[i].y;
    }
    for (ZuPoint p : ring_sample::Queries()) {
      queries.emplace_back(static_cast<float>(p.m_dX), static_cast<float>(p.m_dY));
    }
  }
  ring_sample::Ring ring;
  std::vector<cv::Point2f> contour, queries;
};

void PointInRing_ours(benchmark::State& state) {
  const FloatRing data;
  const ZuPolygon polygon = ring_sample::AsPolygon(data.ring);
  std::vector<ZuPoint> queries;
  for (const auto& q : data.queries) {
    queries.emplace_back(1, q.x, q.y);
    if (polygon.Overlap(queries.back()) != (cv::pointPolygonTest(data.contour, q, false) > 0.0)) {
      std::fprintf(stderr, "bench_opencv: a point lies elsewhere\n");
      std::exit(1);
    }
  }
  for (auto _ : state) {
    for (const ZuPoint& p : queries) benchmark::DoNotOptimize(polygon.Overlap(p));
  }
}

void PointInRing_opencv(benchmark::State& state) {
  const FloatRing data;
  for (auto _ : state) {
    for (const auto& q : data.queries) {
      benchmark::DoNotOptimize(cv::pointPolygonTest(data.contour, q, false));
    }
  }
}

// --- Pictures -----------------------------------------------------------------------------------

// A photo of 12 megapixels through a wide lens whose distortion OpenCV knows as k1, k2. Argument:
// the kernel (0 bilinear, 1 cubic, 2 Lanczos) and the channels.
struct Picture {
  static constexpr int kWidth = 4000, kHeight = 3000;
  static constexpr double kPixel = 0.006, kConstant = 24.0;

  explicit Picture(int iChannels) : image(kWidth, kHeight, iChannels, 8), photo(1, "a.png") {
    for (int y = 0; y < kHeight; ++y) {
      auto* p = image.GetRow<std::uint8_t>(y);
      for (int x = 0; x < kWidth * iChannels; ++x) {
        p[x] = static_cast<std::uint8_t>(128 + 100 * std::sin(0.01 * x) * std::cos(0.07 * y));
      }
    }
    mat = cv::Mat(kHeight, kWidth, CV_8UC(iChannels), image.GetData());
    photo.SetDigiRegion(ZuRegion(0, 0, kWidth - 1, kHeight - 1));
    const double ad[] = {
        kPixel, 0, -0.5 * kPixel * (kWidth - 1), 0, -kPixel, 0.5 * kPixel * (kHeight - 1), 0, 0, 1};
    ZuTrafo2d trafo;
    trafo.SetFromMatrix(ZuMatrix(ad, 3, 3), eZuTrafo2DAffin);
    photo.SetReseauPreTrafo(trafo);
    trafo.SetIdent();
    photo.SetReseauMainTrafo(trafo);
    ZuCamera camera(1, kConstant, 0.05, -0.03, -9e-5, 1e-7, 9.0, "");
    camera.m_dRMax = 17.0;
    photo.SetCamera(camera);
    const double f = kConstant / kPixel;
    lens = cv::Matx33d(f, 0, 0.5 * (kWidth - 1), 0, f, 0.5 * (kHeight - 1), 0, 0, 1);
  }
  template <class Map>
  void Ours(benchmark::State& state, const Map& map) {
    ZuResampler resampler(kWidth, kHeight, static_cast<eZuInterpolation>(state.range(0)));
    resampler.AddSource(&image, &map);
    ZuImage rows = resampler.MakeRows(kHeight);
    for (auto _ : state) resampler.Resample(0, &rows);
  }
  static int Kernel(const benchmark::State& state) {
    constexpr int kKernels[] = {cv::INTER_LINEAR, cv::INTER_CUBIC, cv::INTER_LANCZOS4};
    return kKernels[state.range(0)];
  }

  ZuImage image;
  ZuPhoto photo;
  cv::Mat mat;
  cv::Matx33d lens;
};

void Undistort_ours(benchmark::State& state) {
  omp_set_num_threads(1);
  Picture picture(static_cast<int>(state.range(1)));
  ZuPhoto plain;
  if (!ZuMakeUndistortedPhoto(picture.photo, eZuUndistortSame, false, &plain)) std::exit(1);
  picture.Ours(state, ZuPhotoToPhotoMap(plain, picture.photo, false));
}

// The two steps of cv::undistort, which has no kernel to choose.
void Undistort_opencv(benchmark::State& state) {
  Picture picture(static_cast<int>(state.range(1)));
  cv::Mat x, y, result;
  const cv::Vec4d distortion(-0.05, 0.01, 0.0, 0.0);
  for (auto _ : state) {
    cv::initUndistortRectifyMap(picture.lens, distortion, cv::Mat(), picture.lens,
                                picture.mat.size(), CV_16SC2, x, y);
    cv::remap(picture.mat, result, x, y, Picture::Kernel(state));
  }
}

// Ours takes the distortion out in the same step.
void RectifyPicture_ours(benchmark::State& state) {
  omp_set_num_threads(1);
  Picture picture(static_cast<int>(state.range(1)));
  picture.photo.SetRotAOR(0.1, 0.2, 0.05);
  picture.photo.SetPosAOR(3.0, -1.5, 14.0);
  picture.photo.SetHasAOR(true);
  ZuPlaneRaster raster;
  if (!raster.SetRegion(ZuRegion(-7.0, -5.25, 7.0, 5.25), 0.0035)) std::exit(1);
  picture.Ours(state, ZuPlaneToPhotoMap(raster, picture.photo, false));
}

void RectifyPicture_opencv(benchmark::State& state) {
  Picture picture(static_cast<int>(state.range(1)));
  const cv::Matx33d matrix(0.9, 0.05, 100.0, -0.04, 0.95, 150.0, 2e-5, 3e-5, 1.0);
  cv::Mat result;
  for (auto _ : state) {
    cv::warpPerspective(picture.mat, result, matrix, picture.mat.size(),
                        Picture::Kernel(state) | cv::WARP_INVERSE_MAP);
  }
}

BENCHMARK(Undistort_ours)->ArgsProduct({{0, 1, 2}, {1, 3}})->Unit(benchmark::kMillisecond);
BENCHMARK(Undistort_opencv)->ArgsProduct({{0, 1, 2}, {1, 3}})->Unit(benchmark::kMillisecond);
BENCHMARK(RectifyPicture_ours)->ArgsProduct({{0, 1, 2}, {1, 3}})->Unit(benchmark::kMillisecond);
BENCHMARK(RectifyPicture_opencv)->ArgsProduct({{0, 1, 2}, {1, 3}})->Unit(benchmark::kMillisecond);
BENCHMARK(ObjectToAdjusted_ours);
BENCHMARK(ObjectToAdjusted_opencv);
BENCHMARK(CameraInverse_ours);
BENCHMARK(CameraInverse_opencv);
BENCHMARK(Projective_ours)->Arg(4)->Arg(100);
BENCHMARK(Projective_opencv)->Arg(4)->Arg(100);
BENCHMARK(Perspective_ours);
BENCHMARK(Perspective_opencv);
BENCHMARK(PointInRing_ours);
BENCHMARK(PointInRing_opencv);

}  // namespace
