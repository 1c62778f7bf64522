#include "measure_run.h"

#include <algorithm>

#include "exit_code.h"
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

ZuPlaneMeasurement MeasureProject(ZuProject& project, ZuPointList& planePoints,
                                  const ZuPointList& check, bool bFlip, bool bLibrary,
                                  bool bQuiet) {
  ZuPlaneMeasurement result;
  if (!result.FitPlane(planePoints)) {
    throw CommandError(kUndetermined,
                       "no plane fits the points given with --plane; three or more that are not on "
                       "one line would do");
  }
  const LibraryProgress progress(bQuiet);
  if (!result.Measure(project, check, bFlip, !bLibrary)) FailWithout(result);
  return result;
}

}  // namespace cli
