// cameras points observations
// camera point x y               an observation, ids from 0, from the middle of the image, y up
// r1 r2 r3 t1 t2 t3 f k1 k2      a camera: P = R X + t, p = -(Px, Py) / Pz,
// X Y Z                          a point      pixel = f (1 + k1 |p|^2 + k2 |p|^4) p
//
// Source: S. Agarwal, N. Snavely, S. M. Seitz, R. Szeliski, "Bundle Adjustment in the Large", 2010.
#include "zu/exchange/internal/bal.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "zu/exchange/internal/text_scan.h"

namespace zu::internal {

namespace {

constexpr char kBalModel[] = "BAL";
constexpr double kBalFarthest = 5e5;  // of an observation from the middle [px]

// The camera of the file looks along -z with y up; this goes there and back.
ZuPoseOpenCv LookedBack(ZuPoseOpenCv pose) {
  for (size_t i = 3; i < 9; ++i) pose.R.r[i] = 0.0 - pose.R.r[i];
  for (size_t i = 1; i < 3; ++i) pose.t[i] = 0.0 - pose.t[i];
  return pose;
}

struct BalPose {
  ZuVectorOpenCv r;
  std::array<double, 3> t{};
};

ZuCameraPose PoseOfBal(const BalPose& pose) {
  return ZuFromOpenCv(LookedBack({ZuRotationCast<ZuMatrixOpenCv>(pose.r), pose.t}));
}

BalPose BalPoseOf(const ZuCameraPose& pose) {
  const ZuPoseOpenCv back = LookedBack(ZuToOpenCv(pose));
  return {ZuRotationCast<ZuVectorOpenCv>(back.R), back.t};
}

ZuCameraPose ThroughBalPose(const ZuCameraPose& pose) { return PoseOfBal(BalPoseOf(pose)); }

// Where the coordinates of an axis lie about its middle.
struct Reach {
  double dLow = 0.0, dHigh = 0.0;

  void Take(double d) {
    dLow = std::min(dLow, d);
    dHigh = std::max(dHigh, d);
  }
  double Largest() const { return std::max(-dLow, dHigh); }
};

// The even side that takes the coordinates, and takes them also once they were counted from the
// first pixel and back, where some lose their last digit.
double SideOf(Reach reach) {
  constexpr int kSideTurns = 8;
  double dSide = 0.0;
  for (int i = 0; i < kSideTurns; ++i) {
    const double dNext = 2.0 * std::ceil(std::max(1.0, reach.Largest()));
    if (dNext == dSide) break;
    dSide = dNext;
    const double dMiddle = 0.5 * dSide - 0.5;
    reach = {(reach.dLow + dMiddle) - dMiddle, (reach.dHigh + dMiddle) - dMiddle};
  }
  return dSide;
}

class BalReader {
 public:
  BalReader(const ZuExchangeFile& file, const ZuImportOptions& options, ZuExchangeReport* pReport)
      : m_file(file), m_options(options), m_pReport(pReport), m_scan(file) {}

  PhotoBlock Read() {
    const std::uint64_t uCameras = Count("cameras", 2 * 9);
    const std::uint64_t uPoints = Count("points", 2 * 3);
    const std::uint64_t uObservations = Count("observations", 2 * 4);
    m_block.images.resize(uCameras);
    m_reaches.resize(uCameras);
    for (std::uint64_t u = 0; u < uObservations; ++u) ReadObservation(uPoints);
    for (std::uint64_t u = 0; u < uCameras; ++u) ReadCamera(u);
    for (std::uint64_t u = 0; u < uPoints; ++u) {
      BlockPoint point{IdOf(u), {}};
      for (double& d : point.X) d = Finite();
      m_block.points.push_back(point);
    }
    if (!m_scan.Word().empty()) {
      m_scan.Fail("more numbers than the counts of the first line tell",
                  "cameras, points and observations as many as there are");
    }
    TakeMeasures();
    return std::move(m_block);
  }

 private:
  static unsigned IdOf(std::uint64_t u) { return static_cast<unsigned>(u + 1); }

  // Weighed against the bytes of the file before any of them is asked for.
  std::uint64_t Count(const char* szWhat, std::uint64_t uBytes) {
    const std::uint64_t u = m_scan.Whole(m_scan.Word());
    const std::uint64_t uRoom = m_file.strText.size() / uBytes;
    if (u > uRoom) {
      m_scan.Fail(std::to_string(u) + ' ' + szWhat + ", but the file has room for " +
                      std::to_string(uRoom) + " at most",
                  "as many as there are");
    }
    return u;
  }

  double Finite() {
    const double d = m_scan.Number(m_scan.Word());
    if (!std::isfinite(d)) m_scan.Fail("a number is not finite", "a finite number");
    return d;
  }

  std::uint64_t Index(const char* szWhat, std::uint64_t uCount) {
    const std::uint64_t u = m_scan.Whole(m_scan.Word());
    if (u >= uCount) {
      m_scan.Fail("an observation has " + std::string(szWhat) + ' ' + std::to_string(u) + " of " +
                      std::to_string(uCount),
                  "numbers from 0 below the count");
    }
    return u;
  }

  void ReadObservation(std::uint64_t uPoints) {
    const std::uint64_t uCamera = Index("camera", m_block.images.size());
    const std::uint64_t uPoint = Index("point", uPoints);
    const double x = Finite(), y = Finite();
    if (!(std::max(std::fabs(x), std::fabs(y)) <= kBalFarthest)) {
      m_scan.Fail("an observation lies " + std::to_string(std::max(std::fabs(x), std::fabs(y))) +
                      " pixels from the middle of its image",
                  "500000 at most");
    }
    m_reaches[uCamera].first.Take(x);
    m_reaches[uCamera].second.Take(y);
    m_block.images[uCamera].measures.push_back({IdOf(uPoint), ZuPixel(x, y)});
  }

  void ReadCamera(std::uint64_t u) {
    BalPose pose;
    for (double& d : pose.r.v) d = Finite();
    for (double& d : pose.t) d = Finite();
    BlockCamera camera;
    camera.uId = IdOf(u);
    camera.strModel = kBalModel;
    camera.model.fx = camera.model.fy = Finite();
    if (!(camera.model.fx > 0.0)) {
      m_scan.Fail("a focal length of " + std::to_string(camera.model.fx), "one above 0");
    }
    camera.model.k[0] = Finite();
    camera.model.k[1] = Finite();
    BlockImage& image = m_block.images[u];
    image.uId = image.uCamera = camera.uId;
    image.strName = std::to_string(u);
    image.pose = SettledPose(PoseOfBal(pose), ThroughBalPose);
    if (!IsFinitePose(image.pose)) {
      m_scan.Fail("camera " + std::to_string(u) + " leaves the range of numbers",
                  "rotation and translation that can be turned into a position");
    }
    m_block.cameras.push_back(camera);
  }

  // Sizes of the images, and measurements counted from their first pixels.
  void TakeMeasures() {
    const bool bTold = m_options.imageSize.dWidth > 0.0 && m_options.imageSize.dHeight > 0.0;
    ZuImageSize largest{2.0, 2.0};
    for (size_t u = 0; u < m_reaches.size(); ++u) {
      ZuImageSize& size = m_block.cameras[u].size;
      size = bTold ? m_options.imageSize
                   : ZuImageSize{SideOf(m_reaches[u].first), SideOf(m_reaches[u].second)};
      largest = {std::max(largest.dWidth, size.dWidth), std::max(largest.dHeight, size.dHeight)};
    }
    std::size_t uDropped = 0;
    for (size_t u = 0; u < m_reaches.size(); ++u) {
      BlockCamera& camera = m_block.cameras[u];
      BlockImage& image = m_block.images[u];
      if (image.measures.empty()) camera.size = largest;
      CheckImageSize(camera.size, m_file.strName, 0);
      camera.model.cx = 0.5 * camera.size.dWidth - 0.5;
      camera.model.cy = 0.5 * camera.size.dHeight - 0.5;
      for (BlockMeasure& measure : image.measures) {
        measure.pixel =
            ZuPixel(measure.pixel.x + camera.model.cx, camera.model.cy - measure.pixel.y);
      }
      uDropped += DropSecondMeasures(&image);
    }
    WarnSecondMeasures(m_file.strName, uDropped, m_pReport);
    if (bTold || m_reaches.empty()) return;
    NoteExchange(m_file.strName,
                 "the file tells no size of its images; that which the observations take, up to " +
                     std::to_string(static_cast<int>(largest.dWidth)) + " x " +
                     std::to_string(static_cast<int>(largest.dHeight)) +
                     " pixels, stands for it; --image-size W,H tells it",
                 m_pReport);
  }

  const ZuExchangeFile& m_file;
  const ZuImportOptions& m_options;
  ZuExchangeReport* m_pReport;
  TextScan m_scan;
  PhotoBlock m_block;
  std::vector<std::pair<Reach, Reach>> m_reaches;  // x and y, of the images
};

}  // namespace

const BlockNeeds kBalNeeds{{kFitFocal | kFitOneFocal | kFitK1 | kFitK2}};

PhotoBlock ReadBal(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                   ZuExchangeReport* pReport) {
  return BalReader(OneFile(files), options, pReport).Read();
}

std::vector<ZuExchangeFile> WriteBal(const PhotoBlock& block, const ZuExportOptions& options,
                                     ZuExchangeReport* pReport) {
  std::map<unsigned, const PinholeModel*> models;
  for (const BlockCamera& camera : block.cameras) models[camera.uId] = &camera.model;
  std::map<unsigned, std::size_t> places;
  bool bSame = true;  // the ids are those of the places
  for (const BlockPoint& point : block.points) {
    const std::size_t u = places.size();
    bSame = bSame && point.uId == u + 1;
    places[point.uId] = u;
  }
  for (ZuExchangedCamera& camera : pReport->cameras) camera.strModel = kBalModel;
  std::string strObservations, strCameras, strPoints;
  std::size_t uImage = 0;
  for (const BlockImage& image : block.images) {
    const PinholeModel& model = *models[image.uCamera];
    for (const BlockMeasure& measure : image.measures) {
      strObservations += std::to_string(uImage) + ' ' + std::to_string(places[measure.uPoint]);
      AppendNumber(measure.pixel.x - model.cx, &strObservations);
      AppendNumber(model.cy - measure.pixel.y, &strObservations);
      strObservations += '\n';
    }
    ++uImage;
    bSame = bSame && image.uId == uImage;
    const BalPose pose = BalPoseOf(image.pose);
    for (const double d : {pose.r.v[0], pose.r.v[1], pose.r.v[2], pose.t[0], pose.t[1], pose.t[2],
                           model.fx, model.k[0], model.k[1]}) {
      AppendNumber(d, &strCameras);
      strCameras += '\n';
    }
  }
  for (const BlockPoint& point : block.points) {
    for (const double d : point.X) {
      AppendNumber(d, &strPoints);
      strPoints += '\n';
    }
  }
  if (!bSame) {
    WarnExchange("", "photos and points are numbered anew, in their order; the file has no ids",
                 pReport);
  }
  const std::string strCounts = std::to_string(block.images.size()) + ' ' +
                                std::to_string(block.points.size()) + ' ' +
                                std::to_string(pReport->uMeasurements) + '\n';
  return {{options.strName, strCounts + strObservations + strCameras + strPoints}};
}

}  // namespace zu::internal
