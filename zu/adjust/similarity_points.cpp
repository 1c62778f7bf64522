#include "zu/adjust/internal/similarity_points.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace zu::internal {
namespace {

constexpr std::size_t kNamed = 4;  // points a sentence names at most

bool IsFinite(const double* pd, int n) {
  return std::all_of(pd, pd + n, [](double d) { return std::isfinite(d); });
}

// What is told about the coordinates of one list.
struct Told {
  double dSquares = 0.0;
  int iTold = 0, iMissing = 0;

  void Add(const double* pdSd) {
    if (pdSd[0] == 0.0 && pdSd[1] == 0.0 && pdSd[2] == 0.0) {
      iMissing += 3;
      return;
    }
    for (int k = 0; k < 3; ++k) {
      iMissing += pdSd[k] == 0.0;
      iTold += pdSd[k] != 0.0;
      dSquares += pdSd[k] * pdSd[k];
    }
  }
  double RootMeanSquare() const { return iTold > 0 ? std::sqrt(dSquares / iTold) : 0.0; }
};

// 0 times a number is 0 only where it is finite.
bool IsUsable(const CommonPoint& p) {
  double dFault = 0.0;
  bool bNegative = false;
  for (int k = 0; k < 3; ++k) {
    dFault += 0.0 * p.x[k] + 0.0 * p.y[k] + 0.0 * p.sx[k] + 0.0 * p.sy[k];
    bNegative = bNegative || p.sx[k] < 0.0 || p.sy[k] < 0.0;
  }
  return dFault == 0.0 && !bNegative;
}

// Of a point whose numbers cannot be used, why.
std::string FaultOf(const CommonPoint& p) {
  const struct {
    const double *pd, *pdSd;
    const char* szList;
  } sides[] = {{p.x, p.sx, "source"}, {p.y, p.sy, "target"}};
  for (const auto& side : sides) {
    const char* szWhat = nullptr;
    if (!IsFinite(side.pd, 3)) szWhat = "a coordinate that is not finite";
    for (int k = 0; k < 3; ++k) {
      if (!(side.pdSd[k] >= 0.0) || !std::isfinite(side.pdSd[k])) {
        szWhat = "a standard deviation that is not finite, or negative";
      }
    }
    if (szWhat != nullptr) {
      return "point " + LabelOf(*p.pSource) + " of the " + side.szList + " has " + szWhat;
    }
  }
  return {};
}

int IndexOf(const std::vector<ZuPointCovariance>& covariances, unsigned uId) {
  const auto it = std::find_if(covariances.begin(), covariances.end(),
                               [uId](const ZuPointCovariance& c) { return c.uId == uId; });
  return it == covariances.end() ? -1 : static_cast<int>(it - covariances.begin());
}

void FillIn(double* pdSd, double dSd) {
  for (int k = 0; k < 3; ++k) {
    if (pdSd[k] == 0.0) pdSd[k] = dSd;
  }
}

// Standard deviations of what is not told.
void FillSigmas(const ZuSimilarityOptions& options, const Told& source, const Told& target,
                CommonPoints* pCommon) {
  const bool bTold = source.iTold + target.iTold > 0 || !options.sourceCovariances.empty() ||
                     !options.targetCovariances.empty();
  pCommon->bSigmaGiven = bTold || options.dSigmaSource > 0.0 || options.dSigmaTarget > 0.0;
  const auto missing = [pCommon](const Told& told, double dOption, const char* szList) {
    if (dOption > 0.0 || told.iTold == 0 || told.iMissing == 0) return;
    pCommon->warnings.push_back(std::to_string(told.iMissing) + " coordinates of the " + szList +
                                " have no standard deviation, the root mean square of the others "
                                "was taken");
  };
  missing(source, options.dSigmaSource, "source");
  missing(target, options.dSigmaTarget, "target");
  const double dSource =
      options.dSigmaSource > 0.0 ? options.dSigmaSource : source.RootMeanSquare();
  double dTarget = options.dSigmaTarget > 0.0 ? options.dSigmaTarget : target.RootMeanSquare();
  if (!pCommon->bSigmaGiven) dTarget = 1.0;
  const bool bSource = source.iMissing > 0 && dSource > 0.0, bTarget = target.iMissing > 0;
  for (CommonPoint& p : pCommon->points) {
    if (bSource) FillIn(p.sx, dSource);
    if (bTarget) FillIn(p.sy, dTarget);
  }
  pCommon->dOwnVariance = dSource * dSource;
  pCommon->dOwnTargetVariance = dTarget * dTarget;
}

}  // namespace

std::string LabelOf(const ZuPoint& point) {
  return point.GetName().empty() ? std::to_string(point.GetId()) : point.GetName().chars();
}

std::string LabelsOf(const std::vector<CommonPoint>& points, const std::vector<char>& used) {
  std::vector<std::string> labels;
  for (std::size_t u = 0; u < points.size(); ++u) {
    if (used[u]) labels.push_back(LabelOf(*points[u].pSource));
  }
  if (labels.size() == 1) return "point " + labels[0];
  std::string strLabels = "points ";
  const std::size_t uNamed = labels.size() <= kNamed ? labels.size() - 1 : kNamed - 1;
  for (std::size_t u = 0; u < uNamed; ++u) strLabels += (u > 0 ? ", " : "") + labels[u];
  return strLabels + " and " +
         (labels.size() <= kNamed ? labels.back()
                                  : std::to_string(labels.size() - uNamed) + " more");
}

CommonPoints FindCommonPoints(const ZuSortHelper<ZuPoint>& target, const ZuPointList& source,
                              const ZuSimilarityOptions& options) {
  CommonPoints common;
  std::vector<CommonPoint>& points = common.points;
  points.reserve(static_cast<std::size_t>(target.Count()));
  bool bAscending = true;
  // As long as the lists agree in their ids, the partner stands behind that of the point before.
  ZuSortHelper<ZuPoint>::Iterator next = target.begin();
  for (const ZuPoint* p = source.First(); p != nullptr; p = p->Next()) {
    const unsigned uId = p->GetId();
    if (uId == 0) continue;
    const ZuPoint* q = nullptr;
    if (next != target.end() && (*next)->GetId() == uId) {
      q = *next;
      ++next;
    } else {
      next = target.end();
      q = target.Find(uId);
    }
    if (q == nullptr) continue;
    bAscending = bAscending && (points.empty() || points.back().uId < p->GetId());
    points.push_back({p,
                      q,
                      p->GetId(),
                      {p->m_dX, p->m_dY, p->m_dZ},
                      {q->m_dX, q->m_dY, q->m_dZ},
                      {p->m_dDX, p->m_dDY, p->m_dDZ},
                      {q->m_dDX, q->m_dDY, q->m_dDZ}});
  }
  const auto byId = [](const CommonPoint& a, const CommonPoint& b) { return a.uId < b.uId; };
  const auto isEqual = [](const CommonPoint& a, const CommonPoint& b) { return a.uId == b.uId; };
  if (!bAscending) {
    std::stable_sort(points.begin(), points.end(), byId);
    points.erase(std::unique(points.begin(), points.end(), isEqual), points.end());
  }
  Told toldSource, toldTarget;
  for (CommonPoint& p : points) {
    toldSource.Add(p.sx);
    toldTarget.Add(p.sy);
    for (int k = 0; k < 3; ++k) {
      common.dSourceLargest = std::max(common.dSourceLargest, std::fabs(p.x[k]));
      common.dTargetLargest = std::max(common.dTargetLargest, std::fabs(p.y[k]));
    }
    if (!IsUsable(p) && common.strFault.empty()) common.strFault = FaultOf(p);
    if (!options.sourceCovariances.empty()) {
      p.iSourceCovariance = IndexOf(options.sourceCovariances, p.uId);
    }
    if (!options.targetCovariances.empty()) {
      p.iTargetCovariance = IndexOf(options.targetCovariances, p.uId);
    }
  }
  FillSigmas(options, toldSource, toldTarget, &common);
  return common;
}

}  // namespace zu::internal
