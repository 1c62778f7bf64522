#include "zu/project/internal/plausible.h"

#include <algorithm>
#include <cmath>

namespace zu::internal {

namespace {

constexpr double kFar = 200.0;  // times the median distance
constexpr std::size_t kFewest = 4;

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

void CheckUnits(const std::vector<PlacedPoint>& points, const std::string& strFile,
                const char* szWhat, ZuFindingList* pFindings) {
  if (points.size() < kFewest) return;
  double adMedian[3] = {};
  double ZuPoint::*const apCoordinates[] = {&ZuPoint::m_dX, &ZuPoint::m_dY, &ZuPoint::m_dZ};
  std::vector<double> values(points.size());
  for (int i = 0; i < 3; ++i) {
    std::transform(points.begin(), points.end(), values.begin(), [&](const PlacedPoint& p) {
      const double d = p.pPoint->*apCoordinates[i];
      return std::isfinite(d) ? d : 0.0;
    });
    adMedian[i] = Median(values);
  }
  std::transform(points.begin(), points.end(), values.begin(), [&](const PlacedPoint& p) {
    return std::hypot(p.pPoint->m_dX - adMedian[0], p.pPoint->m_dY - adMedian[1],
                      p.pPoint->m_dZ - adMedian[2]);
  });
  const double dTypical = Median(values);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (!(dTypical > 0.0) || values[i] <= kFar * dTypical) continue;
    pFindings->Add({strFile, points[i].place.m_uLine, points[i].place.m_uColumn, eZuSeverityWarning,
                    "",
                    std::string(szWhat) + " " + std::to_string(points[i].pPoint->GetId()) +
                        " lies some hundred times as far out as the others",
                    "the unit of the others"});
  }
}

}  // namespace zu::internal
