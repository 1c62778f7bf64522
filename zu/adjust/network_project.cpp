#include "zu/adjust/network_project.h"

#include <cmath>
#include <map>
#include <optional>

#include "zu/adjust/internal/image_pixel.h"
#include "zu/adjust/internal/small_matrix.h"
#include "zu/project/project.h"

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

// Sums of the point closest to several rays: of I - d d', and of that times the start.
struct RaySums {
  double n[9] = {}, b[3] = {};
  int iRays = 0;

  void Add(const double* pStart, const double* pDirection) {
    ++iRays;
    for (int i = 0; i < 3; ++i) {
      for (int k = 0; k < 3; ++k) {
        const double d = (i == k ? 1.0 : 0.0) - pDirection[i] * pDirection[k];
        n[3 * i + k] += d;
        b[i] += d * pStart[k];
      }
    }
  }
  std::optional<std::array<double, 3>> Point() const {
    double inverse[9];
    if (iRays < 2 || !zu::internal::InvertSpd(3, n, inverse)) return std::nullopt;
    std::array<double, 3> p{};
    for (size_t i = 0; i < 3; ++i) {
      for (size_t k = 0; k < 3; ++k) p[i] += inverse[3 * i + k] * b[k];
    }
    return p;
  }
};

class Maker {
 public:
  Maker(const ZuProject& project, const ZuNetworkInput& input)
      : m_project(project), m_input(input) {}

  ZuNetworkOfProject Make(const ZuPointList& control, const ZuPointList& approximations) {
    AddPoints(approximations);
    AddPoints(m_project.ObjectPoints());
    for (const ZuPoint* p = control.First(); p != nullptr; p = p->Next()) AddControl(*p);
    const ZuPhotoList& photos = m_project.PhotoList();
    for (const ZuPhoto* p = photos.First(); p != nullptr; p = p->Next()) AddPhoto(*p);
    StartOthers();
    return std::move(m_result);
  }

 private:
  void AddPoints(const ZuPointList& points) {
    for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      m_starts.try_emplace(p->GetId(), std::array<double, 3>{p->m_dX, p->m_dY, p->m_dZ});
    }
  }

  void AddControl(const ZuPoint& given) {
    ZuNetworkPoint& point = m_result.network.points[Index(PointOf(given.GetId()))];
    point.iControl = (given.m_sControl & 7) != 0 ? given.m_sControl & 7 : 7;
    point.adGiven = {given.m_dX, given.m_dY, given.m_dZ};
    point.adGivenSd = {given.m_dDX, given.m_dDY, given.m_dDZ};
    if (point.iControl == 7 || m_starts.count(point.uId) == 0) point.adPosition = point.adGiven;
    m_bStarted[Index(m_pointOf[point.uId])] = 1;
  }

  int PointOf(unsigned uId) {
    const int iNext = static_cast<int>(m_result.network.points.size());
    const auto [at, bNew] = m_pointOf.try_emplace(uId, iNext);
    if (!bNew) return at->second;
    ZuNetworkPoint point;
    point.uId = uId;
    const auto start = m_starts.find(uId);
    m_bStarted.push_back(start != m_starts.end());
    if (start != m_starts.end()) point.adPosition = start->second;
    m_result.network.points.push_back(point);
    return iNext;
  }

  int CameraOf(const ZuPhoto& photo) {
    auto& cameras = m_result.network.cameras;
    const ZuCamera& camera = photo.GetCamera();
    for (size_t i = 0; i < cameras.size() && !m_input.bCameraPerPhoto; ++i) {
      const ZuCamera& other = cameras[i].camera;
      if (other.GetId() == camera.GetId() && other.m_iMode == camera.m_iMode &&
          other.m_dR0 == camera.m_dR0) {
        return static_cast<int>(i);
      }
    }
    ZuNetworkCamera added;
    added.camera = camera;
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      const bool bEstimated =
          (m_input.uEstimate >> k & 1U) != 0 && ZuNetworkHasParameter(camera, k);
      added.adSd[Index(k)] = bEstimated ? kZuNetworkFree : 0.0;
    }
    cameras.push_back(added);
    return static_cast<int>(cameras.size()) - 1;
  }

  void AddPhoto(const ZuPhoto& photo) {
    const ZuPointList* pMeasured = m_project.FindMeasurements(photo.GetId());
    if (pMeasured == nullptr || pMeasured->IsEmpty()) return;
    const std::string strLacks =
        m_project.Lacks(photo, eZuNeedPixels | eZuNeedCamera | eZuNeedOrientation);
    if (!strLacks.empty()) {
      m_result.warnings.push_back("photo " + std::to_string(photo.GetId()) + " " + strLacks +
                                  "; left out");
      return;
    }
    ZuNetworkPhoto added;
    added.uId = photo.GetId();
    added.iCamera = CameraOf(photo);
    for (int i = 0; i < 3; ++i) {
      for (int k = 0; k < 3; ++k) {
        added.adRotation[Index(3 * i + k)] = photo.GetRotAOR()[i + 1][k + 1];
      }
    }
    photo.GetPosAOR(&added.adPosition[0], &added.adPosition[1], &added.adPosition[2]);
    const int iPhoto = static_cast<int>(m_result.network.photos.size());
    m_result.network.photos.push_back(added);
    m_result.photoNames.push_back(photo.GetName().chars());
    for (const ZuPoint* p = pMeasured->First(); p != nullptr; p = p->Next()) {
      AddPixel(photo, iPhoto, *p);
    }
  }

  void AddPixel(const ZuPhoto& photo, int iPhoto, const ZuPoint& measured) {
    ZuNetworkPixel pixel;
    pixel.x = measured.m_dX;
    pixel.y = measured.m_dY;
    double x = pixel.x, y = pixel.y;
    pixel.adSlope = zu::internal::PixelToImage(photo, &x, &y);
    ZuNetworkImagePoint image;
    image.iPhoto = iPhoto;
    image.iPoint = PointOf(measured.GetId());
    image.x = x;
    image.y = y;
    const bool bOwn = measured.m_dDX > 0.0 && measured.m_dDY > 0.0;
    if (bOwn || m_input.bSigmaInPixels) {
      const auto q =
          zu::internal::ImageCovariance(pixel.adSlope, bOwn ? measured.m_dDX : m_input.dSigma,
                                        bOwn ? measured.m_dDY : m_input.dSigma);
      image.sxx = q[0];
      image.sxy = q[1];
      image.syy = q[2];
    } else {
      image.sxx = image.syy = m_input.dSigma * m_input.dSigma;
    }
    m_result.network.images.push_back(image);
    m_result.pixels.push_back(pixel);
    if (m_bStarted[Index(image.iPoint)]) return;
    ZuPoint adjusted;
    adjusted.m_dX = x;
    adjusted.m_dY = y;
    photo.ConvertBiko(&adjusted, eBikoToAdjusted);  // a start: the quick correction will do
    const auto& camera = photo.GetCamera();
    double d[3] = {}, start[3] = {}, dLength = 0.0;
    const double v[3] = {adjusted.m_dX, adjusted.m_dY, -std::fabs(camera.m_dC)};
    const ZuNetworkPhoto& added = m_result.network.photos[Index(iPhoto)];
    for (size_t i = 0; i < 3; ++i) {
      for (size_t k = 0; k < 3; ++k) d[i] += added.adRotation[3 * i + k] * v[k];
      start[i] = added.adPosition[i];
      dLength = std::hypot(dLength, d[i]);
    }
    for (double& c : d) c /= dLength;
    m_rays[image.iPoint].Add(start, d);
  }

  // Points without a start get the meeting of their rays; without one they leave with their images.
  void StartOthers() {
    ZuNetwork& network = m_result.network;
    std::vector<int> index(network.points.size(), -1);
    std::vector<ZuNetworkPoint> kept;
    for (size_t i = 0; i < network.points.size(); ++i) {
      if (!m_bStarted[i]) {
        const auto start = m_rays[static_cast<int>(i)].Point();
        if (!start) {
          m_result.warnings.push_back("point " + std::to_string(network.points[i].uId) +
                                      ": no two rays to intersect; left out");
          continue;
        }
        network.points[i].adPosition = *start;
      }
      index[i] = static_cast<int>(kept.size());
      kept.push_back(network.points[i]);
    }
    network.points = std::move(kept);
    size_t uKept = 0;
    for (size_t i = 0; i < network.images.size(); ++i) {
      const int iPoint = index[Index(network.images[i].iPoint)];
      if (iPoint < 0) continue;
      network.images[uKept] = network.images[i];
      network.images[uKept].iPoint = iPoint;
      m_result.pixels[uKept++] = m_result.pixels[i];
    }
    network.images.resize(uKept);
    m_result.pixels.resize(uKept);
  }

  const ZuProject& m_project;
  const ZuNetworkInput& m_input;
  ZuNetworkOfProject m_result;
  std::map<unsigned, std::array<double, 3>> m_starts;
  std::map<unsigned, int> m_pointOf;
  std::vector<char> m_bStarted;
  std::map<int, RaySums> m_rays;
};

}  // namespace

ZuNetworkOfProject ZuMakeNetwork(const ZuProject& project, const ZuPointList& control,
                                 const ZuPointList& approximations, const ZuNetworkInput& input) {
  return Maker(project, input).Make(control, approximations);
}

std::array<double, 2> ZuToPixels(const ZuNetworkPixel& pixel, const double* pdMm) {
  return zu::internal::ToPixels(pixel.adSlope, pdMm[0], pdMm[1]);
}
