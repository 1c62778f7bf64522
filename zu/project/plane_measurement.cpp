#include "zu/project/plane_measurement.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "zu/foundation/progress.h"
#include "zu/foundation/sort_helper.h"
#include "zu/project/internal/photo_run.h"
#include "zu/project/project.h"
#include "zu/rectify/calc_plane.h"

namespace {

constexpr unsigned kNeeds = eZuNeedPixels | eZuNeedCamera | eZuNeedOrientation;

struct Sums {
  double dX = 0.0, dY = 0.0, dZ = 0.0, dPixels = 0.0;
  int n = 0;

  void Add(const ZuMeasuredPoint& p) {
    dX += p.m_dDX * p.m_dDX;
    dY += p.m_dDY * p.m_dDY;
    dZ += p.m_dDZ * p.m_dDZ;
    dPixels += p.m_dResPixelX * p.m_dResPixelX + p.m_dResPixelY * p.m_dResPixelY;
    ++n;
  }
  void Store(ZuMeasureQuality* pQuality) const {
    *pQuality = ZuMeasureQuality();
    if (n == 0) return;
    pQuality->m_dRmsX = std::sqrt(dX / n);
    pQuality->m_dRmsY = std::sqrt(dY / n);
    pQuality->m_dRmsZ = std::sqrt(dZ / n);
    pQuality->m_dRms = std::sqrt((dX + dY + dZ) / n);
    pQuality->m_dRmsPixels = std::sqrt(dPixels / n);
    pQuality->m_iChecked = n;
  }
};

// Mean over the photos, and how far they scatter about it.
struct MeanSums {
  double x = 0.0, y = 0.0, z = 0.0;     // sums about the first
  double x2 = 0.0, y2 = 0.0, z2 = 0.0;  // sums of squares about it
  const ZuMeasuredPoint* pFirst = nullptr;
  int n = 0;

  void Add(const ZuMeasuredPoint& p) {
    if (pFirst == nullptr) pFirst = &p;
    const double dx = p.m_dX - pFirst->m_dX, dy = p.m_dY - pFirst->m_dY, dz = p.m_dZ - pFirst->m_dZ;
    x += dx;
    y += dy;
    z += dz;
    x2 += dx * dx;
    y2 += dy * dy;
    z2 += dz * dz;
    ++n;
  }
  ZuMeanMeasuredPoint Mean() const {
    const double dSquare = (x2 + y2 + z2) / n - (x * x + y * y + z * z) / n / n;
    return {pFirst->m_uId,        n,
            pFirst->m_dX + x / n, pFirst->m_dY + y / n,
            pFirst->m_dZ + z / n, std::sqrt(std::max(dSquare, 0.0))};
  }
};

// Lines of the first two places of each id that stands more than once.
std::map<unsigned, std::string> DoubledIds(const std::vector<ZuDoubledRow>& rows) {
  std::map<unsigned, std::string> doubled;
  for (const ZuDoubledRow& row : rows) {
    doubled.emplace(row.m_uId, "it is measured twice (lines " + std::to_string(row.m_uFirstLine) +
                                   " and " + std::to_string(row.m_uLine) + ")");
  }
  return doubled;
}

}  // namespace

double ZuMeasuredPoint::Length() const {
  return std::sqrt(m_dDX * m_dDX + m_dDY * m_dDY + m_dDZ * m_dDZ);
}

const ZuMeasuredPoint* ZuMeasuredPhoto::Worst() const {
  return m_iWorst < 0 ? nullptr : &m_points[static_cast<size_t>(m_iWorst)];
}

const ZuMeasuredPhoto* ZuPlaneMeasurement::WorstPhoto() const {
  return m_iWorstPhoto < 0 ? nullptr : &m_photos[static_cast<size_t>(m_iWorstPhoto)];
}

bool ZuPlaneMeasurement::FitPlane(ZuPointList& points) {
  ZuCalcPlane calc;
  const bool bFitted = calc.CalcPlaneFromFilteredPoints(&points, true, false);
  m_plane = calc.GetPlane();
  if (!bFitted || m_plane.IsValid() == 0 ||
      !std::isfinite(m_plane.A() + m_plane.B() + m_plane.C() + m_plane.D())) {
    return false;
  }
  SetPlane(m_plane, points);
  m_dPlaneSigma0 = calc.GetZuPlaneSigma0();
  return true;
}

void ZuPlaneMeasurement::SetPlane(const ZuPlane& plane, const ZuPointList& points) {
  m_plane = plane;
  m_iPlanePoints = points.Count();
  m_dPlaneSigma0 = m_dPlaneDeviation = 0.0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    m_dPlaneDeviation = std::max(m_dPlaneDeviation, std::fabs(m_plane.Dist(*p)));
  }
}

bool ZuPlaneMeasurement::Measure(ZuProject& project, const ZuPointList& known, bool bFlip,
                                 bool bExact) {
  m_photos.clear();
  m_leftOut.clear();
  m_refused.clear();
  std::int64_t nDone = 0, nAll = 0;
  for (const auto& [uPhoto, measured] : project.GetMeasurements()) nAll += measured.Count();
  const ZuSortHelper<ZuPoint> index(&known);
  ZuProgress progress("measuring");
  for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuPointList* const pMeasured = project.FindMeasurements(p->GetId());
    if (pMeasured == nullptr || pMeasured->IsEmpty()) continue;
    if (!progress.SetPosition(nDone, nAll)) break;
    nDone += pMeasured->Count();
    const std::string strLacks = project.Lacks(*p, kNeeds);
    if (strLacks.empty()) {
      MeasurePhoto(project, *p, index, bFlip, bExact);
    } else {
      m_leftOut.push_back({p->GetId(), pMeasured->Count(), strLacks});
    }
  }
  Summarize();
  return m_iPoints > 0;
}

void ZuPlaneMeasurement::MeasurePhoto(ZuProject& project, ZuPhoto& photo,
                                      const ZuSortHelper<ZuPoint>& known, bool bFlip, bool bExact) {
  ZuMeasuredPhoto result;
  result.m_pPhoto = &photo;
  const unsigned uPhoto = photo.GetId();
  const ZuPointList& measured = *project.FindMeasurements(uPhoto);
  auto doubled = DoubledIds(project.GetDoubled(uPhoto));
  zu::internal::PhotoRun run(photo, m_plane, bFlip, bExact);
  result.m_points.reserve(static_cast<size_t>(measured.Count()));
  for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
    const unsigned uId = p->GetId();
    const auto twice = doubled.find(uId);
    if (twice != doubled.end()) {
      if (twice->second.empty()) continue;  // told
      m_refused.push_back({uPhoto, uId, eZuMeasureDoubled, twice->second});
      twice->second.clear();
      continue;
    }
    ZuMeasuredPoint point;
    eZuMeasureRefusal eWhy = eZuMeasureDoubled;
    if (run.Meet(*p, known.Find(uId), &point, &eWhy)) {
      result.m_points.push_back(point);
    } else {
      m_refused.push_back({uPhoto, uId, eWhy, zu::internal::RefusalText(eWhy)});
    }
  }
  m_photos.push_back(std::move(result));
}

void ZuPlaneMeasurement::Summarize() {
  m_iPoints = 0;
  m_iWorstPhoto = -1;
  Sums all;
  for (size_t i = 0; i < m_photos.size(); ++i) {
    ZuMeasuredPhoto& photo = m_photos[i];
    Sums sums;
    for (size_t j = 0; j < photo.m_points.size(); ++j) {
      const ZuMeasuredPoint& point = photo.m_points[j];
      if (!point.m_bChecked) continue;
      sums.Add(point);
      all.Add(point);
      if (photo.m_iWorst < 0 || point.Length() > photo.Worst()->Length()) {
        photo.m_iWorst = static_cast<int>(j);
      }
    }
    sums.Store(&photo);
    m_iPoints += static_cast<int>(photo.m_points.size());
    const ZuMeasuredPhoto* const pWorst = WorstPhoto();
    if (photo.m_iWorst >= 0 &&
        (pWorst == nullptr || photo.Worst()->Length() > pWorst->Worst()->Length())) {
      m_iWorstPhoto = static_cast<int>(i);
    }
  }
  all.Store(this);
}

int ZuPlaneMeasurement::CountLonger(double dLength) const {
  int n = 0;
  for (const ZuMeasuredPhoto& photo : m_photos) {
    for (const ZuMeasuredPoint& p : photo.m_points) {
      if (p.m_bChecked && p.Length() > dLength) ++n;
    }
  }
  return n;
}

std::vector<ZuMeanMeasuredPoint> ZuPlaneMeasurement::MeanPoints() const {
  std::map<unsigned, MeanSums> sums;
  for (const ZuMeasuredPhoto& photo : m_photos) {
    for (const ZuMeasuredPoint& point : photo.m_points) sums[point.m_uId].Add(point);
  }
  std::vector<ZuMeanMeasuredPoint> points;
  points.reserve(sums.size());
  for (const auto& [uId, sum] : sums) points.push_back(sum.Mean());
  return points;
}
