// The drawings of a measurement report.
//
// Residuals are drawn exaggerated, by a factor for which the 95 % quantile of their lengths fills
// its place: one blunder leaves the others readable. Longer ones are cut and labelled. Where more
// residuals fall into a drawing than can be seen, the longest of each small cell is drawn.
#pragma once

#include <string>

#include "drawing.h"
#include "measure_run.h"

namespace cli {

// The photos' drawings: residuals over the frame of each image [pixels].
class PhotoFigures {
 public:
  explicit PhotoFigures(const ZuPlaneMeasurement& result);

  // Times as long as in the image, the same in every photo, so that they can be compared.
  double Factor() const { return m_dFactor; }
  // The photos that are drawn: all, or those with the largest RMS, in the order of the project.
  const std::vector<const ZuMeasuredPhoto*>& Photos() const { return m_photos; }
  bool IsThinned() const { return m_bThinned; }

  Drawing Figure(const ZuMeasuredPhoto& photo) const;

 private:
  std::vector<const ZuMeasuredPhoto*> m_photos;
  double m_dFactor = 1.0;
  double m_dTypical = 0.0;  // 95 % quantile of the lengths [pixels]
  size_t m_uMost = 0;       // arrows of a photo
  bool m_bThinned = false;
};

// Plan of the check points with the residuals of all photos and their mean, in the two axes in
// which the points spread most.
Drawing PlanFigure(const ZuPlaneMeasurement& result, const ZuPointList& check,
                   const std::string& strUnit);

// How often residuals of a length occur; those beyond five times the 95 % quantile in one bar.
Drawing HistogramFigure(const ZuPlaneMeasurement& result, const std::string& strUnit);

}  // namespace cli
