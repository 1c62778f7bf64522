#include "measure_run.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "exit_code.h"
#include "progress_line.h"
#include "project_input.h"
#include "zu/photo/photo_view.h"
#include "zu/rectify/calc_plane.h"

namespace cli {

namespace {

constexpr unsigned kNeeds = Project::eNeedPixels | Project::eNeedCamera | Project::eNeedOrientation;
constexpr int kProgressStep = 4096;  // measurements

struct Sums {
  double dX = 0.0, dY = 0.0, dZ = 0.0, dPixels = 0.0;
  int n = 0;

  void Add(const MeasuredPoint& p) {
    dX += p.dx * p.dx;
    dY += p.dy * p.dy;
    dZ += p.dz * p.dz;
    dPixels += p.rx * p.rx + p.ry * p.ry;
    ++n;
  }
  void Store(Quality* pQuality) const {
    if (n == 0) return;
    pQuality->dRmsX = std::sqrt(dX / n);
    pQuality->dRmsY = std::sqrt(dY / n);
    pQuality->dRmsZ = std::sqrt(dZ / n);
    pQuality->dRms = std::sqrt((dX + dY + dZ) / n);
    pQuality->dRmsPixels = std::sqrt(dPixels / n);
    pQuality->iChecked = n;
  }
};

// The measurements of one photo.
class PhotoRun {
 public:
  PhotoRun(ZuPhoto& photo, const ZuPlane& plane, bool bFlip, bool bLibrary)
      : m_photo(photo),
        m_plane(plane),
        m_bFlip(bFlip),
        m_bLibrary(bLibrary),
        m_dReach(ZuValidImageRadius(photo)),
        m_project(&photo, eObjectToAdjusted, false) {
    m_project.SetExact(!bLibrary);
  }

  // Null and the point met; else why not.
  const char* Meet(const ZuPoint& pixel, const ZuPoint* pCheck, MeasuredPoint* pPoint) {
    ZuPoint turned(pixel);
    if (m_bFlip) turned.m_dY = ZuTurnPixelY(m_photo, pixel.m_dY);
    if (!ZuIsInImage(m_photo, turned.m_dX, turned.m_dY)) return "it lies outside the image";
    ZuPoint adjusted(turned), object;
    if (!Adjust(&adjusted)) return "it lies where the camera's model is not one to one";
    if (!m_photo.CalcSip(&object, m_plane, &adjusted) || !std::isfinite(object.m_dX) ||
        !std::isfinite(object.m_dY) || !std::isfinite(object.m_dZ)) {
      return "its ray is parallel to the plane";
    }
    if (!ZuIsBeforeCamera(m_photo, object)) return "its ray meets the plane behind the camera";
    pPoint->uId = pixel.GetId();
    pPoint->px = pixel.m_dX;
    pPoint->py = pixel.m_dY;
    pPoint->x = object.m_dX;
    pPoint->y = object.m_dY;
    pPoint->z = object.m_dZ;
    if (pCheck != nullptr) Compare(*pCheck, turned, adjusted, pPoint);
    return nullptr;
  }

 private:
  bool Adjust(ZuPoint* p) const {
    m_photo.ConvertBiko(p, eDigiToBiko);
    const ZuCamera& camera = m_photo.GetCamera();
    if (!m_bLibrary) return camera.AdjustExact(&p->m_dX, &p->m_dY) == eCameraInverseOk;
    if (std::hypot(p->m_dX - camera.m_dXh, p->m_dY - camera.m_dYh) > m_dReach) return false;
    m_photo.ConvertBiko(p, eBikoToAdjusted);
    return true;
  }

  // The difference in the image is short: carried to pixels by the derivative at the measured
  // place.
  void Compare(const ZuPoint& check, const ZuPoint& pixel, const ZuPoint& adjusted,
               MeasuredPoint* p) const {
    p->bChecked = true;
    p->dx = p->x - check.m_dX;
    p->dy = p->y - check.m_dY;
    p->dz = p->z - check.m_dZ;
    ZuPoint image(check);
    m_project.Transform(&image);
    const ZuPoint u = Slope(pixel, 0.5, 0.0), v = Slope(pixel, 0.0, 0.5);
    const double ex = adjusted.m_dX - image.m_dX, ey = adjusted.m_dY - image.m_dY;
    const double dDet = u.m_dX * v.m_dY - u.m_dY * v.m_dX;
    p->rx = (ex * v.m_dY - ey * v.m_dX) / dDet;
    p->ry = (u.m_dX * ey - u.m_dY * ex) / dDet * (m_bFlip ? -1.0 : 1.0);
  }

  // The adjusted point's change from the pixel less (dx, dy) to the pixel plus (dx, dy); where one
  // of these lies beyond the camera's model, twice the change to the other.
  ZuPoint Slope(const ZuPoint& pixel, double dx, double dy) const {
    ZuPoint ends[2] = {pixel, pixel};
    double dFactor = 1.0;
    for (const int i : {0, 1}) {
      ends[i].m_dX += i == 0 ? -dx : dx;
      ends[i].m_dY += i == 0 ? -dy : dy;
      if (Adjust(&ends[i])) continue;
      ends[i] = pixel;
      Adjust(&ends[i]);
      dFactor = 2.0;
    }
    ZuPoint change = ends[1] - ends[0];
    change.m_dX *= dFactor;
    change.m_dY *= dFactor;
    return change;
  }

  ZuPhoto& m_photo;
  const ZuPlane& m_plane;
  bool m_bFlip, m_bLibrary;
  double m_dReach;
  ZuBikoTransform m_project;
};

// Lines of the first two places of each id that stands more than once.
std::map<unsigned, std::string> DoubledIds(const std::vector<Project::Row>& rows) {
  std::map<unsigned, std::string> doubled;
  for (const Project::Row& row : rows) {
    doubled.emplace(row.uId, "it is measured twice (lines " + std::to_string(row.uFirstLine) +
                                 " and " + std::to_string(row.uLine) + ")");
  }
  return doubled;
}

MeasuredPhoto MeasurePhoto(ZuPhoto& photo, Project& project, const ZuSortHelper<ZuPoint>& check,
                           bool bFlip, bool bLibrary, ProgressLine* pProgress,
                           Measurement* pResult) {
  MeasuredPhoto result;
  result.pPhoto = &photo;
  const ZuPointList& measured = project.Pixels(photo.GetId());
  auto doubled = DoubledIds(project.Doubled(photo.GetId()));
  PhotoRun run(photo, pResult->plane, bFlip, bLibrary);
  result.points.reserve(static_cast<size_t>(measured.Count()));
  int n = 0;
  for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
    if (++n % kProgressStep == 0) pProgress->Update(static_cast<double>(n) / measured.Count());
    const auto twice = doubled.find(p->GetId());
    if (twice != doubled.end()) {
      if (twice->second.empty()) continue;  // told
      pResult->refused.push_back({photo.GetId(), p->GetId(), twice->second});
      twice->second.clear();
      continue;
    }
    MeasuredPoint point;
    const char* szWhy = run.Meet(*p, check.Find(p->GetId()), &point);
    if (szWhy == nullptr) {
      result.points.push_back(point);
    } else {
      pResult->refused.push_back({photo.GetId(), p->GetId(), szWhy});
    }
  }
  return result;
}

void Summarize(Measurement* pResult) {
  Sums all;
  for (MeasuredPhoto& photo : pResult->photos) {
    Sums sums;
    for (const MeasuredPoint& point : photo.points) {
      if (!point.bChecked) continue;
      sums.Add(point);
      all.Add(point);
      if (photo.pWorst == nullptr || point.Length() > photo.pWorst->Length()) {
        photo.pWorst = &point;
      }
    }
    sums.Store(&photo);
    pResult->iPoints += static_cast<int>(photo.points.size());
    const MeasuredPhoto* pWorst = pResult->pWorstPhoto;
    if (photo.pWorst != nullptr &&
        (pWorst == nullptr || photo.pWorst->Length() > pWorst->pWorst->Length())) {
      pResult->pWorstPhoto = &photo;
    }
  }
  all.Store(pResult);
}

void FitPlane(ZuPointList& points, Measurement* pResult) {
  ZuCalcPlane calc;
  const bool bFitted = calc.CalcPlaneFromFilteredPoints(&points, true, false);
  pResult->plane = calc.GetPlane();
  const ZuPlane& plane = pResult->plane;
  if (!bFitted || plane.IsValid() == 0 ||
      !std::isfinite(plane.A() + plane.B() + plane.C() + plane.D())) {
    throw CommandError(kUndetermined,
                       "no plane fits the points given with --plane; three or more that are not on "
                       "one line would do");
  }
  pResult->iPlanePoints = points.Count();
  pResult->dSigma0 = calc.GetZuPlaneSigma0();
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    pResult->dPlaneDeviation = std::max(pResult->dPlaneDeviation, std::fabs(plane.Dist(*p)));
  }
}

std::string Text(const LeftOutPhoto& photo) {
  return "photo " + std::to_string(photo.uPhoto) + " " + photo.strWhy;
}

std::string Text(const RefusedPoint& point) {
  return "photo " + std::to_string(point.uPhoto) + ", point " + std::to_string(point.uId) + ": " +
         point.strWhy;
}

// The first reasons, in at most three lines.
[[noreturn]] void FailWithout(const Measurement& result) {
  std::string strText = "nothing to measure";
  if (result.leftOut.empty() && result.refused.empty()) {
    strText +=
        ": the project has no measurements; MEASURE { PHOTOID n POINTS { id x y ... } } would "
        "be right";
  }
  if (!result.leftOut.empty()) {
    strText += "\n" + Text(result.leftOut[0]);
    if (result.leftOut.size() > 1) {
      strText += " (and " + Counted(result.leftOut.size() - 1, "more photo") + ")";
    }
  }
  if (!result.refused.empty()) {
    strText += "\n" + Text(result.refused[0]);
    if (result.refused.size() > 1) {
      strText += " (and " + Counted(result.refused.size() - 1, "more measurement") + ")";
    }
  }
  throw CommandError(kUndetermined, strText);
}

}  // namespace

void WarnOf(const Measurement& result, const Context& context) {
  constexpr size_t kTold = 20;  // of each kind
  for (size_t i = 0; i < std::min(kTold, result.leftOut.size()); ++i) {
    context.Warn(Text(result.leftOut[i]) + "; its " +
                 Counted(result.leftOut[i].uMeasurements, "measurement") + " left out");
  }
  for (size_t i = 0; i < std::min(kTold, result.refused.size()); ++i) {
    context.Warn(Text(result.refused[i]));
  }
  if (result.leftOut.size() > kTold) {
    context.Warn("and " + Counted(result.leftOut.size() - kTold, "more photo") + " left out");
  }
  if (result.refused.size() > kTold) {
    context.Warn("and " + Counted(result.refused.size() - kTold, "more measurement") + " left out");
  }
}

double MeasuredPoint::Length() const { return std::sqrt(dx * dx + dy * dy + dz * dz); }

Measurement MeasureProject(Project& project, ZuPointList& planePoints, const ZuPointList& check,
                           bool bFlip, bool bLibrary, bool bQuiet) {
  Measurement result;
  FitPlane(planePoints, &result);
  const ZuSortHelper<ZuPoint> index(&check);
  {
    ProgressLine progress("measuring", bQuiet);
    for (ZuPhoto* p = project.Photos().First(); p != nullptr; p = p->Next()) {
      const ZuPointList& measured = project.Pixels(p->GetId());
      if (measured.IsEmpty()) continue;
      const std::string strLacks = project.Lacks(*p, kNeeds);
      if (!strLacks.empty()) {
        result.leftOut.push_back({p->GetId(), static_cast<size_t>(measured.Count()), strLacks});
        continue;
      }
      result.photos.push_back(
          MeasurePhoto(*p, project, index, bFlip, bLibrary, &progress, &result));
    }
  }
  Summarize(&result);  // after the last photo was added: points stay where they are
  if (result.iPoints == 0) FailWithout(result);
  return result;
}

}  // namespace cli
