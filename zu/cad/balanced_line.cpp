#include "zu/cad/balanced_line.h"

#include "zu/cad/internal/cad_numbers.h"
#include "zu/cad/internal/scatter.h"

namespace {

using zu::internal::CadReduction;
using zu::internal::Scatter;

// Sums over the points before each one, so that the scatter of any run takes no loop.
class RunSums {
 public:
  RunSums(const std::vector<ZuPoint2d>& points, const CadReduction& reduction)
      : m_points(points), m_sums(points.size() + 1) {
    for (size_t i = 0; i < points.size(); ++i) {
      const ZuVector2d d = points[i] - reduction.centre;
      const Sums& s = m_sums[i];
      m_sums[i + 1] = {s.x + d.x, s.y + d.y, s.xx + d.x * d.x, s.yy + d.y * d.y, s.xy + d.x * d.y};
    }
  }

  // Least sum of the squares of the run's distances, as far as the sums tell it.
  double Squares(size_t uFirst, size_t uEnd) const {
    const Sums &a = m_sums[uFirst], &b = m_sums[uEnd];
    const double n = static_cast<double>(uEnd - uFirst), x = b.x - a.x, y = b.y - a.y;
    const double xx = b.xx - a.xx - x * x / n, yy = b.yy - a.yy - y * y / n;
    const double xy = b.xy - a.xy - x * y / n;
    return std::max(0.0, 0.5 * (xx + yy) - std::hypot(0.5 * (xx - yy), xy));
  }

  // No point of the run is farther off its best line.
  bool IsWithin(size_t uFirst, size_t uEnd, double dTolerance) const {
    const Scatter scatter(&m_points[uFirst], uEnd - uFirst);
    const ZuVector2d along = scatter.Along();
    for (size_t i = uFirst; i < uEnd; ++i) {
      if (!(std::fabs(along % (m_points[i] - scatter.centre)) <= dTolerance)) return false;
    }
    return true;
  }

 private:
  struct Sums {
    double x = 0, y = 0, xx = 0, yy = 0, xy = 0;
  };
  const std::vector<ZuPoint2d>& m_points;
  std::vector<Sums> m_sums;
};

// Where the parts begin, by the tolerance. Empty: no parts of two points or more hold it.
std::vector<size_t> FindParts(const std::vector<ZuPoint2d>& points, const CadReduction& reduction,
                              double dTolerance) {
  struct Best {
    size_t uParts = 0;  // of the points before; 0: none but of no points
    double dSquares = 0.0;
    size_t uFrom = 0;  // where the last of these parts begins
  };
  const size_t n = points.size();
  const RunSums sums(points, reduction);
  std::vector<Best> best(n + 1);
  for (size_t uEnd = 2; uEnd <= n; ++uEnd) {
    Best& b = best[uEnd];
    for (size_t uFirst = 0; uFirst + 2 <= uEnd; ++uFirst) {
      if (uFirst > 0 && best[uFirst].uParts == 0) continue;
      const size_t uParts = best[uFirst].uParts + 1;
      if (b.uParts != 0 && uParts > b.uParts) continue;
      const double dRun = sums.Squares(uFirst, uEnd);
      const double dSquares = best[uFirst].dSquares + dRun;
      if (uParts == b.uParts && !(dSquares < b.dSquares)) continue;
      const double dCount = static_cast<double>(uEnd - uFirst);
      // Rounding of the sums, and no more than all points at the limit.
      if (dRun > dCount * dTolerance * dTolerance + 1e-12 * reduction.dExtent * reduction.dExtent) {
        continue;
      }
      if (uEnd - uFirst > 2 && !sums.IsWithin(uFirst, uEnd, dTolerance)) continue;
      b = {uParts, dSquares, uFirst};
    }
  }
  std::vector<size_t> starts;
  if (best[n].uParts == 0) return starts;
  for (size_t u = n; u > 0; u = best[u].uFrom) starts.insert(starts.begin(), best[u].uFrom);
  return starts;
}

eCadStatus StartsOf(const std::vector<ZuPoint2d>& points, const ZuCadLineOptions& options,
                    const CadReduction& reduction, std::vector<size_t>* pStarts) {
  pStarts->assign(1, 0);
  if (!options.breaks.empty()) {
    for (const size_t u : options.breaks) {
      if (u <= pStarts->back()) return eCadNotFinite;
      pStarts->push_back(u);
    }
  } else if (options.dTolerance > 0.0) {
    if (points.size() > kZuCadMostParted) return eCadTooMany;
    *pStarts = FindParts(points, reduction, options.dTolerance);
    if (pStarts->empty()) return eCadTooFew;
  }
  return pStarts->back() + 2 > points.size() ? eCadTooFew : eCadOk;
}

// The best line of a run, from the foot of its first point to that of its last.
eCadStatus FitPart(const std::vector<ZuPoint2d>& points, size_t uFirst, size_t uEnd,
                   ZuCadLinePart* pPart) {
  const size_t n = uEnd - uFirst;
  const Scatter scatter(&points[uFirst], n);
  if (!(scatter.Large() > 0.0)) return eCadCoincident;
  if (scatter.Small() > (1.0 - kZuCadSmall) * scatter.Large()) return eCadUndetermined;
  ZuVector2d along = scatter.Along();
  const auto at = [&](size_t i) { return (points[i] - scatter.centre) * along; };
  double dFrom = at(uFirst), dTo = at(uEnd - 1);
  if (dTo < dFrom) {
    along = -along;
    dFrom = -dFrom;
    dTo = -dTo;
  }
  if (dFrom == dTo) {  // a closed run: as far as the points reach
    for (size_t i = uFirst; i < uEnd; ++i) {
      dFrom = std::min(dFrom, at(i));
      dTo = std::max(dTo, at(i));
    }
  }
  pPart->uFirst = uFirst;
  pPart->uCount = n;
  const ZuPoint2d end = scatter.centre + dTo * along;
  pPart->line = ZuLine2d(scatter.centre + dFrom * along, along);
  pPart->line.setEnd(end);
  pPart->dDirection = along.Direction();
  // Cofactors, for the standard deviation of a coordinate to be put to them.
  pPart->dDirectionSd = 1.0 / std::sqrt(scatter.Large());
  pPart->dOffsetSd = 1.0 / std::sqrt(static_cast<double>(n));
  double dLow = 0.0, dHigh = 0.0, dSquares = 0.0;
  for (size_t i = uFirst; i < uEnd; ++i) {
    const double d = along % (points[i] - scatter.centre);
    dLow = std::min(dLow, d);
    dHigh = std::max(dHigh, d);
    dSquares += d * d;
  }
  pPart->dStraightness = dHigh - dLow;
  pPart->dRms = std::sqrt(dSquares / static_cast<double>(n));
  return eCadOk;
}

}  // namespace

ZuCadBalancedLine ZuCadBalancedLine::BestFit(const std::vector<ZuPoint2d>& points,
                                             const ZuCadLineOptions& options) {
  ZuCadBalancedLine result;
  const auto fail = [&result](eCadStatus eStatus) {
    result = {};
    result.fit.eStatus = eStatus;
    return result;
  };
  if (!zu::internal::AreFinite(points) || !(options.dTolerance >= 0.0) ||
      !std::isfinite(options.dSigma)) {
    return fail(eCadNotFinite);
  }
  if (points.size() < 2) return fail(eCadTooFew);
  const CadReduction reduction(points);
  std::vector<size_t> starts;
  eCadStatus eStatus = StartsOf(points, options, reduction, &starts);
  if (eStatus != eCadOk) return fail(eStatus);
  for (size_t k = 0; k < starts.size(); ++k) {
    const size_t uEnd = k + 1 < starts.size() ? starts[k + 1] : points.size();
    if (uEnd - starts[k] < 2) return fail(eCadTooFew);
    result.parts.emplace_back();
    ZuCadLinePart& part = result.parts.back();
    eStatus = FitPart(points, starts[k], uEnd, &part);
    if (eStatus != eCadOk) return fail(eStatus);
    for (size_t i = starts[k]; i < uEnd; ++i) result.distances.push_back(part.line.Dist(points[i]));
  }
  const int iUnknowns = 2 * static_cast<int>(starts.size());
  zu::internal::SetFigures(result.distances, iUnknowns, options.dSigma, &result.fit);
  for (ZuCadLinePart& part : result.parts) {
    part.dDirectionSd *= result.fit.dSigma;
    part.dOffsetSd *= result.fit.dSigma;
  }
  result.corners.push_back(result.parts.front().line.getStart());
  for (size_t k = 1; k < result.parts.size(); ++k) {
    const ZuLine2d &a = result.parts[k - 1].line, &b = result.parts[k].line;
    ZuPoint2d corner = a.getEnd().MiddlePoint(b.getStart());
    a.Intersect(b, corner);
    result.corners.push_back(corner);
  }
  result.corners.push_back(result.parts.back().line.getEnd());
  if (!zu::internal::AreFinite(result.corners)) return fail(eCadNotFinite);
  result.fit.eStatus = eCadOk;
  return result;
}
