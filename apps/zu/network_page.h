// The report of an adjusted network, one HTML file.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "adjust_report.h"
#include "zu/adjust/network_project.h"

class ZuPhoto;
class ZuProject;

namespace cli {

struct NetworkPage {
  std::string strUnit;   // of the object coordinates
  std::string strSigma;  // of an image coordinate, "0.1px"
  double dAlpha = 0.001;
  std::vector<std::pair<std::string, std::string>> inputs;  // "project" and its file
  // The picture of a photo, small, as the bytes of a JPEG file; may be empty.
  std::function<std::string(const ZuPhoto&)> picture = {};
};

// `project` tells the frames of the images; `result` is good.
AdjustReport NetworkReport(const NetworkPage& page, const ZuNetworkOfProject& made,
                           const ZuNetworkResult& result, const ZuProject& project);

}  // namespace cli
