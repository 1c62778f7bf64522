#include "zu/points/update_points.h"

#include <cmath>
#include <map>
#include <set>
#include <string_view>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/sort_helper.h"

namespace {

using UpdateNames = std::map<std::string_view, ZuPoint*>;

std::string_view NameView(const ZuPoint& point) {
  return {point.GetName().chars(), static_cast<std::size_t>(point.GetName().length())};
}

// The points of a list by name, the first of each, and by id.
class UpdateIndex {
 public:
  explicit UpdateIndex(const ZuPointList& points) : m_ids(&points) {
    for (ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      if (!p->GetName().empty()) m_names.emplace(NameView(*p), p);
    }
  }

  ZuPoint* Find(const ZuPoint& wanted) const {
    const auto named = wanted.GetName().empty() ? m_names.end() : m_names.find(NameView(wanted));
    if (named != m_names.end()) return named->second;
    ZuPoint* const pFound = m_ids.Find(wanted.GetId());
    const bool bOther =
        pFound != nullptr && !pFound->GetName().empty() && !wanted.GetName().empty();
    return bOther ? nullptr : pFound;
  }

 private:
  UpdateNames m_names;
  ZuSortHelper<ZuPoint> m_ids;
};

bool IsFinitePoint(const ZuPoint& p) {
  return std::isfinite(p.m_dX) && std::isfinite(p.m_dY) && std::isfinite(p.m_dZ);
}

// Half the way where a standard deviation is not known; true where it is.
bool TakeMean(double dNew, double dSigmaNew, double* pdOld, double* pdSigmaOld) {
  const bool bKnown = dSigmaNew > 0.0 && *pdSigmaOld > 0.0;
  // With the ratio of the deviations no square leaves the range of numbers.
  const double q = bKnown ? *pdSigmaOld / dSigmaNew : 1.0;
  const double dShare = q < 1.0 ? q * q / (1.0 + q * q) : 1.0 / (1.0 + 1.0 / (q * q));
  *pdOld += dShare * (dNew - *pdOld);
  const double dSmall = std::fmin(*pdSigmaOld, dSigmaNew);
  const double dLarge = std::fmax(*pdSigmaOld, dSigmaNew);
  *pdSigmaOld = bKnown ? dSmall / std::hypot(1.0, dSmall / dLarge) : 0.0;
  return bKnown;
}

void SetMean(const ZuPoint& news, const ZuUpdateOptions& options, ZuUpdatedPoint* pUpdated) {
  ZuPoint& p = *pUpdated->m_pPoint;
  const struct {
    double dNew, dSigmaNew;
    double *pdOld, *pdSigmaOld;
  } axes[] = {{news.m_dX, news.m_dDX, &p.m_dX, &p.m_dDX},
              {news.m_dY, news.m_dDY, &p.m_dY, &p.m_dDY},
              {news.m_dZ, news.m_dDZ, &p.m_dZ, &p.m_dDZ}};
  for (const auto& axis : axes) {
    if (!(*axis.pdSigmaOld > 0.0)) *axis.pdSigmaOld = options.m_dSigmaOld;
    const double dSigmaNew = axis.dSigmaNew > 0.0 ? axis.dSigmaNew : options.m_dSigmaNew;
    if (!TakeMean(axis.dNew, dSigmaNew, axis.pdOld, axis.pdSigmaOld)) {
      pUpdated->m_bEqualWeights = true;
    }
  }
}

void ReplaceCoordinate(const ZuPoint& news, double dSigmaNew, ZuPoint* pPoint) {
  pPoint->m_dX = news.m_dX;
  pPoint->m_dY = news.m_dY;
  pPoint->m_dZ = news.m_dZ;
  pPoint->m_dDX = news.m_dDX > 0.0 ? news.m_dDX : dSigmaNew;
  pPoint->m_dDY = news.m_dDY > 0.0 ? news.m_dDY : dSigmaNew;
  pPoint->m_dDZ = news.m_dDZ > 0.0 ? news.m_dDZ : dSigmaNew;
}

void ApplyCoordinate(const ZuPoint& news, const ZuUpdateOptions& options,
                     ZuUpdatedPoint* pUpdated) {
  ZuPoint& p = *pUpdated->m_pPoint;
  pUpdated->m_adDifference[0] = news.m_dX - p.m_dX;
  pUpdated->m_adDifference[1] = news.m_dY - p.m_dY;
  pUpdated->m_adDifference[2] = news.m_dZ - p.m_dZ;
  pUpdated->m_dDistance = std::hypot(pUpdated->m_adDifference[0], pUpdated->m_adDifference[1],
                                     pUpdated->m_adDifference[2]);
  pUpdated->m_bMoved = pUpdated->m_dDistance > options.m_dTolerance;
  const bool bEqual = news == p;
  if (options.m_eMode == eZuUpdateKeep) {
    pUpdated->m_eStatus = bEqual ? eZuUpdateSame : eZuUpdateKept;
    return;
  }
  pUpdated->m_eStatus = bEqual ? eZuUpdateSame : eZuUpdateChanged;
  if (options.m_eMode == eZuUpdateMean) {
    SetMean(news, options, pUpdated);
  } else {
    ReplaceCoordinate(news, options.m_dSigmaNew, &p);
  }
}

}  // namespace

const char* GetZuUpdateText(eZuUpdateStatus eStatus) {
  constexpr const char* kTexts[] = {"changed", "same",   "kept",       "added",
                                    "unknown", "double", "not finite", "no id"};
  const auto u = static_cast<unsigned>(eStatus);
  return u < std::size(kTexts) ? kTexts[u] : "none";
}

ZuUpdateResult ZuUpdatePoints(ZuPointList* pPoints, const ZuPointList& news,
                              const ZuUpdateOptions& options) {
  const UpdateIndex index(*pPoints), tolds(news);
  std::set<const ZuPoint*> seen;  // points of the list that a new coordinate was told for
  ZuUpdateResult result;
  for (const ZuPoint* p = news.First(); p != nullptr; p = p->Next()) {
    ZuUpdatedPoint updated;
    updated.m_pNew = p;
    updated.m_pPoint = index.Find(*p);
    const ZuPoint* const pSame = updated.m_pPoint != nullptr ? updated.m_pPoint : tolds.Find(*p);
    if (p->GetId() == 0) {
      updated.m_eStatus = eZuUpdateNoId;
    } else if (!IsFinitePoint(*p) ||
               (updated.m_pPoint != nullptr && !IsFinitePoint(*updated.m_pPoint))) {
      updated.m_eStatus = eZuUpdateNotFinite;
    } else if (!seen.insert(pSame != nullptr ? pSame : p).second) {
      updated.m_eStatus = eZuUpdateDouble;
    } else if (updated.m_pPoint != nullptr) {
      ApplyCoordinate(*p, options, &updated);
    } else if (options.m_bAdd) {
      updated.m_eStatus = eZuUpdateAdded;
      updated.m_pPoint = zu::internal::Taken(pPoints->Add(*p));
      ReplaceCoordinate(*p, options.m_dSigmaNew, updated.m_pPoint);
    } else {
      updated.m_eStatus = eZuUpdateUnknown;
    }
    result.m_Points.push_back(updated);
  }
  return result;
}
