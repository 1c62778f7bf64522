// The report of an adjusted similarity transformation, one HTML file.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "adjust_report.h"
#include "zu/adjust/similarity.h"

namespace cli {

struct SimilarityPage {
  std::string strTitle;    // "Spatial transformation"
  std::string strVerdict;  // begin of a sentence, which the tests end
  std::string strUnit;
  std::vector<std::pair<std::string, std::string>> inputs;  // "source" and its file
};

// `control` holds the target's points of the common ids: the places of the drawings.
AdjustReport PageOf(const SimilarityPage& page, const ZuSimilarityResult& result,
                    const ZuSortHelper<ZuPoint>& control);

}  // namespace cli
