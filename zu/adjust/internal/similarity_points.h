// Common points of two lists with their accuracies, and sentences about them.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/internal/similarity_model.h"

namespace zu::internal {

struct CommonPoints {
  std::vector<CommonPoint> points;                    // by id
  double dSourceLargest = 0.0, dTargetLargest = 0.0;  // |coordinate|
  bool bSigmaGiven = false;
  double dOwnVariance = 0.0;  // of a source coordinate that is not told
  double dOwnTargetVariance = 0.0;
  std::string strFault;               // a number that cannot be used; empty if none
  std::vector<std::string> warnings;  // accuracies that had to be filled in
};

CommonPoints FindCommonPoints(const ZuSortHelper<ZuPoint>& target, const ZuPointList& source,
                              const ZuSimilarityOptions& options);

// The name of a point, else its id.
std::string LabelOf(const ZuPoint& point);

// "point 3", "points 3, 7 and 12", "points 3, 7, 12 and 9 more"
std::string LabelsOf(const std::vector<CommonPoint>& points, const std::vector<char>& used);

}  // namespace zu::internal
