// What a similarity transformation is worth: options of the adjustment, and its figures as text and
// JSON.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "adjust_options.h"
#include "commands.h"
#include "zu/adjust/similarity.h"

namespace cli {

struct SimilarityValues : AdjustValues {
  std::string strFixed;  // "", "scale", "levelled" or "shift"

  // Takes part in the parameters: the closed form alone would not do.
  bool IsAsked() const { return dSigma > 0.0 || bTest || !strFixed.empty(); }
  ZuSimilarityKind Kind() const;
  ZuSimilarityOptions OptionsOf() const;
};

struct SimilarityParameter {
  std::string strName, strValue, strSd, strUnit;  // strUnit is empty for the scale and for lengths
};
std::vector<SimilarityParameter> SimilarityParameters(const ZuSimilarityResult& result);

// Table of the parameters with standard deviations.
void WriteSds(const ZuSimilarityResult& result, std::ostream& stream);

// Parameters with standard deviations, the test of each common point, what was set aside.
// `names` holds the common points.
void WriteSimilarity(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& names,
                     const std::string& strUnit, std::ostream& stream);

// The same as JSON, beside the keys of the transformation; not_controlled and set_aside by point.
void AddSimilarity(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& names,
                   Json* pRoot);

// Puts the standard deviations of carried points into the copies in `out`, which start with those
// of `source` in its order.
void SetCarriedSds(const ZuSimilarityResult& result, const ZuPointList& source, ZuPointList* pOut);

}  // namespace cli
