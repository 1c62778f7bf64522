#include "measure_run.h"

#include <algorithm>

#include "adjust_options.h"
#include "exit_code.h"
#include "plane_option.h"
#include "point_input.h"
#include "progress_line.h"
#include "text_table.h"

namespace cli {

namespace {

std::string Text(const ZuLeftOutPhoto& photo) {
  return "photo " + std::to_string(photo.m_uPhoto) + " " + photo.m_strWhy;
}

std::string Text(const ZuRefusedMeasurement& point) {
  return "photo " + std::to_string(point.m_uPhoto) + ", point " + std::to_string(point.m_uId) +
         ": " + point.m_strWhy;
}

// The first reasons, in at most three lines.
[[noreturn]] void FailWithout(const ZuPlaneMeasurement& result) {
  std::string strText = "nothing to measure";
  if (result.m_leftOut.empty() && result.m_refused.empty()) {
    strText +=
        ": the project has no measurements; MEASURE { PHOTOID n POINTS { id x y ... } } would "
        "be right";
  }
  if (!result.m_leftOut.empty()) {
    strText += "\n" + Text(result.m_leftOut[0]);
    if (result.m_leftOut.size() > 1) {
      strText += " (and " + Counted(result.m_leftOut.size() - 1, "more photo") + ")";
    }
  }
  if (!result.m_refused.empty()) {
    strText += "\n" + Text(result.m_refused[0]);
    if (result.m_refused.size() > 1) {
      strText += " (and " + Counted(result.m_refused.size() - 1, "more measurement") + ")";
    }
  }
  throw CommandError(kUndetermined, strText);
}

[[noreturn]] void FailWithoutPlane() {
  throw CommandError(kUndetermined,
                     "no plane fits the points given with --plane; three or more that are not on "
                     "one line would do");
}

}  // namespace

void WarnOf(const ZuPlaneMeasurement& result, const Context& context) {
  constexpr size_t kTold = 20;  // of each kind
  for (size_t i = 0; i < std::min(kTold, result.m_leftOut.size()); ++i) {
    context.Warn(Text(result.m_leftOut[i]) + "; its " +
                 Counted(static_cast<size_t>(result.m_leftOut[i].m_iMeasurements), "measurement") +
                 " left out");
  }
  for (size_t i = 0; i < std::min(kTold, result.m_refused.size()); ++i) {
    context.Warn(Text(result.m_refused[i]));
  }
  if (result.m_leftOut.size() > kTold) {
    context.Warn("and " + Counted(result.m_leftOut.size() - kTold, "more photo") + " left out");
  }
  if (result.m_refused.size() > kTold) {
    context.Warn("and " + Counted(result.m_refused.size() - kTold, "more measurement") +
                 " left out");
  }
}

void AddPlaneOptions(Options& options, MeasurePlane* pPlane) {
  options.Option("--plane", "PLANE", &pPlane->strPoints, kPlaneHelp);
  options.Required();
  options.Option("--plane-columns", "NAMES", &pPlane->strColumns,
                 "columns of the file of --plane, where they are others than --columns; dx, dy, dz "
                 "bring standard deviations");
  options.Option("--plane-sigma", "S", &pPlane->dSigma,
                 "standard deviation of the coordinates of --plane without columns that tell it; "
                 "else their distances from the plane tell it");
  options.Above(0.0);
  options.Flag("--axis", &pPlane->bAxis,
               "fit the plane along the axis closest to its normal, as the library's fit does; it "
               "counts as exact");
}

std::optional<ZuPlaneFit> FitPlane(const MeasurePlane& values, ZuPointList& points,
                                   ZuPlaneMeasurement* pResult) {
  CheckAccuracies(NameInMessages(values.strPoints), points, values.format.strColumns);
  if (values.bAxis) {
    if (!pResult->FitPlane(points)) FailWithoutPlane();
    return std::nullopt;
  }
  ZuFitOptions options;
  options.dSigma = values.dSigma;
  options.tests.bSnoop = false;
  const ZuPlaneFit plane = ZuFitPlane(FitPointsOf(points, values.format.strColumns), options);
  if (plane.fit.eStatus != ZuAdjustStatus::Good) FailWithoutPlane();
  pResult->SetPlane(plane.plane, points);
  pResult->m_dPlaneSigma0 = plane.fit.dSigma0;
  // Three points of which nothing is told tell nothing of the plane either.
  if (!plane.fit.bSigmaTold && plane.fit.iRedundancy == 0) return std::nullopt;
  return plane;
}

void MeasureProject(ZuProject& project, const ZuPointList& check, bool bFlip, bool bLibrary,
                    bool bQuiet, ZuPlaneMeasurement* pResult) {
  const LibraryProgress progress(bQuiet);
  if (!pResult->Measure(project, check, bFlip, !bLibrary)) FailWithout(*pResult);
}

}  // namespace cli
