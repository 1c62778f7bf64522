#include "measure_run.h"

#include <algorithm>
#include <cmath>

#include "exit_code.h"
#include "zu/rectify/calc_plane.h"

namespace cli {

namespace {

// Differences of Bikos as differences of pixels, taken at the centre of the image: a residual is
// short, and the transformations are nearly linear over it.
class BikoToPixels {
 public:
  BikoToPixels(const ZuPhoto& photo, bool bFlip) {
    const ZuBikoTransform transform(&photo, eBikoToDigi, bFlip);
    const auto pixel = [&transform](double x, double y) {
      ZuPoint p(0, x, y);
      transform.Transform(&p);
      return p;
    };
    const ZuPoint origin = pixel(0.0, 0.0);
    m_alongX = pixel(1.0, 0.0) - origin;
    m_alongY = pixel(0.0, 1.0) - origin;
  }
  void Convert(double dx, double dy, MeasuredPoint* p) const {
    p->rx = m_alongX.m_dX * dx + m_alongY.m_dX * dy;
    p->ry = m_alongX.m_dY * dx + m_alongY.m_dY * dy;
  }

 private:
  ZuPoint m_alongX, m_alongY;
};

void Compare(const ZuPhoto& photo, const ZuPoint& check, const BikoToPixels& pixels,
             const ZuPoint& adjusted, MeasuredPoint* p) {
  p->bChecked = true;
  p->dx = p->x - check.m_dX;
  p->dy = p->y - check.m_dY;
  p->dz = p->z - check.m_dZ;
  ZuPoint image(check);
  photo.ConvertBiko(&image, eObjectToAdjusted);
  pixels.Convert(adjusted.m_dX - image.m_dX, adjusted.m_dY - image.m_dY, p);
}

struct Sums {
  double dX = 0.0, dY = 0.0, dZ = 0.0;
  int n = 0;

  void Add(const MeasuredPoint& p) {
    dX += p.dx * p.dx;
    dY += p.dy * p.dy;
    dZ += p.dz * p.dz;
    ++n;
  }
  template <class Result>
  void Store(Result* pResult) const {
    if (n == 0) return;
    pResult->dRmsX = std::sqrt(dX / n);
    pResult->dRmsY = std::sqrt(dY / n);
    pResult->dRmsZ = std::sqrt(dZ / n);
    pResult->dRms = std::sqrt((dX + dY + dZ) / n);
    pResult->iChecked = n;
  }
};

// The measurements of one photo; those whose ray does not meet the plane are counted in *piNotMet.
MeasuredPhoto MeasurePhoto(ZuPhoto& photo, const ZuPointList& measured, const ZuPlane& plane,
                           const ZuSortHelper<ZuPoint>& check, bool bFlip, int* piNotMet) {
  MeasuredPhoto result;
  result.pPhoto = &photo;
  const ZuBikoTransform flipped(&photo, eDigiToAdjusted, true);
  const BikoToPixels pixels(photo, bFlip);
  for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
    ZuPoint adjusted(*p), object;
    bFlip ? flipped.Transform(&adjusted) : photo.ConvertBiko(&adjusted, eDigiToAdjusted);
    const bool bMet = photo.CalcSip(&object, plane, &adjusted);
    if (!bMet || !std::isfinite(object.m_dX) || !std::isfinite(object.m_dY) ||
        !std::isfinite(object.m_dZ)) {
      ++*piNotMet;
      continue;
    }
    MeasuredPoint point;
    point.uId = p->GetId();
    point.px = p->m_dX;
    point.py = p->m_dY;
    point.x = object.m_dX;
    point.y = object.m_dY;
    point.z = object.m_dZ;
    const ZuPoint* pCheck = check.Find(p->GetId());
    if (pCheck != nullptr) Compare(photo, *pCheck, pixels, adjusted, &point);
    result.points.push_back(point);
  }
  return result;
}

void Summarize(MeasuredPhoto* pPhoto, Sums* pAll) {
  Sums sums;
  for (const MeasuredPoint& point : pPhoto->points) {
    if (!point.bChecked) continue;
    sums.Add(point);
    pAll->Add(point);
    if (pPhoto->pWorst == nullptr || point.Length() > pPhoto->pWorst->Length()) {
      pPhoto->pWorst = &point;
    }
  }
  sums.Store(pPhoto);
}

void FitPlane(ZuPointList& points, Measurement* pResult) {
  ZuCalcPlane calc;
  const bool bFitted = calc.CalcPlaneFromFilteredPoints(&points, true, false);
  pResult->plane = calc.GetPlane();
  const ZuPlane& plane = pResult->plane;
  if (!bFitted || plane.IsValid() == 0 ||
      !std::isfinite(plane.A() + plane.B() + plane.C() + plane.D())) {
    throw CommandError(kUndetermined, std::string("no plane fits the points given with --plane (") +
                                          calc.GetZuPlaneStatusAsText() +
                                          "); three or more that are not on one line would do");
  }
  pResult->iPlanePoints = points.Count();
  pResult->dSigma0 = calc.GetZuPlaneSigma0();
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    pResult->dPlaneDeviation = std::max(pResult->dPlaneDeviation, std::fabs(plane.Dist(*p)));
  }
}

}  // namespace

double MeasuredPoint::Length() const { return std::sqrt(dx * dx + dy * dy + dz * dz); }

Measurement MeasureProject(Project& project, ZuPointList& planePoints, const ZuPointList& check,
                           bool bFlip, Context& context) {
  Measurement result;
  FitPlane(planePoints, &result);
  const ZuSortHelper<ZuPoint> index(&check);
  for (ZuPhoto* p = project.Photos().First(); p != nullptr; p = p->Next()) {
    const ZuPointList& measured = project.Pixels(p->GetId());
    if (measured.IsEmpty()) continue;
    if (!p->HasAOR()) {
      context.Warn("photo " + std::to_string(p->GetId()) + " is not oriented, its " +
                   std::to_string(measured.Count()) + " measurements are left out");
      continue;
    }
    int iNotMet = 0;
    result.photos.push_back(MeasurePhoto(*p, measured, result.plane, index, bFlip, &iNotMet));
    result.iNotMet += iNotMet;
    if (iNotMet > 0) {
      context.Warn("photo " + std::to_string(p->GetId()) + ": " + std::to_string(iNotMet) +
                   " rays do not meet the plane");
    }
  }
  Sums all;
  for (MeasuredPhoto& photo : result.photos) {  // after the last one was added: points stay put
    Summarize(&photo, &all);
    result.iPoints += static_cast<int>(photo.points.size());
    if (photo.pWorst != nullptr &&
        (result.pWorstPhoto == nullptr ||
         photo.pWorst->Length() > result.pWorstPhoto->pWorst->Length())) {
      result.pWorstPhoto = &photo;
    }
  }
  all.Store(&result);
  if (result.iPoints == 0) {
    throw CommandError(kUndetermined,
                       "nothing to measure: no oriented photo of the project has measurements that "
                       "meet the plane\nORIENTED 1 with AORM and AORV, and MEASURE blocks would be "
                       "right");
  }
  return result;
}

}  // namespace cli
