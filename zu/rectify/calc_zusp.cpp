#include "zu/rectify/calc_zusp.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "zu/numerics/solver.h"
#include "zu/points/point_list.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/plane_frame.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

constexpr int kUnknowns = 8;
constexpr int kRounds = 20;
constexpr double kStep = 1e-12;  // change of the unknowns that ends the search, coordinates about 1

using Map = std::array<double, 9>;  // row by row, the last element is 1

// A point of both lists: image, object, and the object point in the plane.
struct Pair {
  unsigned uId;
  double x, y;
  double adObject[3], adPlane[3];
};

// Coordinates less their mean, over their mean distance from it.
struct Scaling {
  double cx = 0.0, cy = 0.0, s = 0.0;

  template <class X, class Y>
  Scaling(const std::vector<Pair>& pairs, X x, Y y) {
    for (const Pair& p : pairs) {
      cx += x(p) / static_cast<double>(pairs.size());
      cy += y(p) / static_cast<double>(pairs.size());
    }
    for (const Pair& p : pairs) {
      s += std::hypot(x(p) - cx, y(p) - cy) / static_cast<double>(pairs.size());
    }
  }
};

struct ScaledPair {
  double x, y, X, Y;
};

// One observation a0 h0 + ... + a7 h7 = l into the normal equations.
void AddRow(const double* a, double l, ZuMatrix* pNormal, ZuMatrix* pRight) {
  for (int i = 0; i < kUnknowns; ++i) {
    for (int j = 0; j < kUnknowns; ++j) (*pNormal)[i + 1][j + 1] += a[i] * a[j];
    (*pRight)[i + 1][1] += a[i] * l;
  }
}

// One step from h; bStart: the linear one from nothing, whose w is not divided by. False: not
// determined.
bool Improve(const std::vector<ScaledPair>& pairs, bool bStart, Map* h, double* pdStep) {
  ZuMatrix normal(kUnknowns, kUnknowns), right(kUnknowns, 1);
  const Map& m = *h;
  for (const ScaledPair& p : pairs) {
    const double w = bStart ? 1.0 : m[6] * p.x + m[7] * p.y + 1.0;
    const double X = bStart ? p.X : (m[0] * p.x + m[1] * p.y + m[2]) / w;
    const double Y = bStart ? p.Y : (m[3] * p.x + m[4] * p.y + m[5]) / w;
    const double dX = bStart ? p.X : p.X - X, dY = bStart ? p.Y : p.Y - Y;
    const double u = p.x / w, v = p.y / w, k = 1.0 / w;
    const double aX[] = {u, v, k, 0, 0, 0, -X * u, -X * v};
    const double aY[] = {0, 0, 0, u, v, k, -Y * u, -Y * v};
    AddRow(aX, dX, &normal, &right);
    AddRow(aY, dY, &normal, &right);
  }
  if (GaussLoeserRelMax(normal, right) != 0) return false;
  *pdStep = 0.0;
  for (int i = 0; i < kUnknowns; ++i) {
    (*h)[static_cast<size_t>(i)] += right[i + 1][1];
    *pdStep = std::max(*pdStep, std::fabs(right[i + 1][1]));
  }
  return true;
}

// The projective map of the pairs, both sides as they are.
ZuCalcZusp::eStatus FitMap(const std::vector<Pair>& pairs, ZuMatrix* pMap) {
  const Scaling image(
      pairs, [](const Pair& p) { return p.x; }, [](const Pair& p) { return p.y; });
  const Scaling plane(
      pairs, [](const Pair& p) { return p.adPlane[0]; },
      [](const Pair& p) { return p.adPlane[1]; });
  if (!(image.s > 0.0) || !(plane.s > 0.0)) return ZuCalcZusp::BadPointDistrib;
  std::vector<ScaledPair> scaled;
  for (const Pair& p : pairs) {
    scaled.push_back({(p.x - image.cx) / image.s, (p.y - image.cy) / image.s,
                      (p.adPlane[0] - plane.cx) / plane.s, (p.adPlane[1] - plane.cy) / plane.s});
  }
  Map h = {0, 0, 0, 0, 0, 0, 0, 0, 1};
  double dStep = 0.0;
  if (!Improve(scaled, true, &h, &dStep)) return ZuCalcZusp::BadPointDistrib;
  int n = 0;
  do {
    if (!Improve(scaled, false, &h, &dStep)) return ZuCalcZusp::BadPointDistrib;
    if (!std::isfinite(dStep)) return ZuCalcZusp::NotFinite;
  } while (dStep > kStep && ++n < kRounds);
  if (dStep > kStep * 1e3) return ZuCalcZusp::NotConverged;
  for (const ScaledPair& p : scaled) {  // all points on one side of the horizon
    if (!(h[6] * p.x + h[7] * p.y + 1.0 > 0.0)) return ZuCalcZusp::BadPointDistrib;
  }
  ZuMatrix toScaled(3, 3), fromScaled(3, 3);
  const double adTo[] = {
      1 / image.s, 0, -image.cx / image.s, 0, 1 / image.s, -image.cy / image.s, 0, 0, 1};
  const double adFrom[] = {plane.s, 0, plane.cx, 0, plane.s, plane.cy, 0, 0, 1};
  toScaled.Set(adTo, 3, 3);
  fromScaled.Set(adFrom, 3, 3);
  *pMap = fromScaled * ZuMatrix(h.data(), 3, 3) * toScaled;
  return ZuCalcZusp::StatusOk;
}

// The points in coordinates of the plane.
void ToPlane(const ZuMatrix& toObject, std::vector<Pair>* pPairs) {
  ZuMatrix inverse(toObject);
  inverse.Invert();
  for (Pair& p : *pPairs) {
    for (int i = 0; i < 3; ++i) {
      p.adPlane[i] = inverse[i + 1][4];
      for (int j = 0; j < 3; ++j) p.adPlane[i] += inverse[i + 1][j + 1] * p.adObject[j];
    }
  }
}

// The frame of the plane through the object points. False: they stand in a line.
bool MakeFrame(const std::vector<Pair>& pairs, ZuMatrix* pToObject) {
  pToObject->SetIdent();
  bool bLevel = true;
  ZuPointList points;
  for (const Pair& p : pairs) {
    bLevel = bLevel && p.adObject[2] == pairs[0].adObject[2];
    points.Add(ZuPoint(p.uId, p.adObject[0], p.adObject[1], p.adObject[2]));
  }
  ZuCalcPlane fit;
  if (!fit.CalcPlaneFromFilteredPoints(&points, false, false)) return false;
  if (!bLevel) return ZuMakePlaneFrame(fit.GetPlane(), pToObject);
  (*pToObject)[3][4] = pairs[0].adObject[2];
  return true;
}

// x of the plane to the other side, z with it.
void Turn(ZuMatrix* pToObject) {
  for (int i = 1; i <= 3; ++i) {
    (*pToObject)[i][1] *= -1.0;
    (*pToObject)[i][3] *= -1.0;
  }
}

// The image shows the plane from behind.
bool IsMirrored(const ZuMatrix& map, const Pair& p) {
  const double* m = map.GetData();
  const double w = m[6] * p.x + m[7] * p.y + m[8];
  // Jacobian of a projective map: its determinant over w^3.
  return map.Sarrus() / (w * w * w) < 0.0;
}

ZuCalcZusp::eStatus Collect(const ZuZuspTrafo& trafo, std::vector<Pair>* pPairs) {
  std::map<unsigned, const ZuPoint*> defined;
  for (const ZuPoint* p = trafo.GetPPList().First(); p != nullptr; p = p->Next()) {
    defined.emplace(p->GetId(), p);
  }
  for (const ZuPoint* p = trafo.GetBikoList().First(); p != nullptr; p = p->Next()) {
    const auto found = defined.find(p->GetId());
    if (found == defined.end()) continue;
    Pair pair = {p->GetId(), p->m_dX, p->m_dY, {}, {}};
    const ZuPoint& object = *found->second;
    pair.adObject[0] = object.m_dX;
    pair.adObject[1] = object.m_dY;
    pair.adObject[2] = object.m_dZ;
    for (const double d : {pair.x, pair.y, object.m_dX, object.m_dY, object.m_dZ}) {
      if (!std::isfinite(d)) return ZuCalcZusp::NotFinite;
    }
    if (trafo.CompensateDistortion() &&
        trafo.GetDistortCameraParam().AdjustExact(&pair.x, &pair.y) != eCameraInverseOk) {
      return ZuCalcZusp::NotInCamera;
    }
    pPairs->push_back(pair);
    defined.erase(found);
  }
  return pPairs->size() < 4 ? ZuCalcZusp::TooLessPoints : ZuCalcZusp::StatusOk;
}

}  // namespace

bool ZuCalcZusp::Fail(eStatus eWhy) {
  m_eStatus = eWhy;
  return false;
}

bool ZuCalcZusp::Calc(ZuZuspTrafo* pTrafo) {
  m_residuals.clear();
  m_dSigma0 = 0.0;
  std::vector<Pair> pairs;
  eStatus eResult = Collect(*pTrafo, &pairs);
  if (eResult != StatusOk) return Fail(eResult);
  ZuMatrix toObject(4, 4), map(3, 3);
  if (!MakeFrame(pairs, &toObject)) return Fail(BadPointDistrib);
  ToPlane(toObject, &pairs);
  eResult = FitMap(pairs, &map);
  if (eResult == StatusOk && toObject[3][3] != 1.0 && IsMirrored(map, pairs[0])) {
    Turn(&toObject);
    ToPlane(toObject, &pairs);
    eResult = FitMap(pairs, &map);
  }
  if (eResult != StatusOk) return Fail(eResult);

  double dSum = 0.0;
  const double* m = map.GetData();
  for (const Pair& p : pairs) {
    const double w = m[6] * p.x + m[7] * p.y + m[8];
    const double dX = (m[0] * p.x + m[1] * p.y + m[2]) / w - p.adPlane[0];
    const double dY = (m[3] * p.x + m[4] * p.y + m[5]) / w - p.adPlane[1];
    m_residuals.push_back({p.uId, dX, dY, p.adPlane[2]});
    dSum += dX * dX + dY * dY;
  }
  if (!std::isfinite(dSum)) return Fail(NotFinite);
  const double dRedundancy = 2.0 * static_cast<double>(pairs.size()) - kUnknowns;
  m_dSigma0 = dRedundancy > 0.0 ? std::sqrt(dSum / dRedundancy) : 0.0;
  pTrafo->SetMatrices(map, toObject);
  m_eStatus = StatusOk;
  return true;
}

const char* ZuCalcZusp::GetStatusText() const {
  switch (m_eStatus) {
    case StatusOk:
      return "ok";
    case TooLessPoints:
      return "fewer than four common points";
    case BadPointDistrib:
      return "the points do not determine a projective map: three of four in a line";
    case NotInCamera:
      return "a point lies where the camera's model is not one to one";
    case NotFinite:
      return "a coordinate is not finite";
    case NotConverged:
      return "not converged";
  }
  return "unknown";
}
