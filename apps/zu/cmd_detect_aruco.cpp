// zu detect aruco: square markers with a number, ArUco and AprilTag, in pictures.
#include <memory>

#include "commands.h"
#include "detect_pictures.h"
#include "zu/image/marker.h"

namespace cli {

void CheckMarkerFamily(const std::string& strFamily) {
  std::string strNames;
  for (const std::string& strName : ZuMarkerFamilies()) {
    if (strName == strFamily) return;
    strNames += (strNames.empty() ? "" : ", ") + strName;
  }
  throw CommandError(kUsage, "--family " + strFamily + ": one of " + strNames + " would be right");
}

Runner DefineDetectAruco(Options& options) {
  struct Values {
    DetectValues detect;
    std::string strFamily;
  };
  auto pValues = std::make_shared<Values>();
  AddDetectOptions(options, &pValues->detect);
  options.Option("--family", "NAME", &pValues->strFamily,
                 "family of the markers: 4x4_50 to 7x7_1000, apriltag_36h11, ...");
  options.Required();
  return [pValues](Context& context) {
    CheckMarkerFamily(pValues->strFamily);
    ZuProject project;
    return DetectPictures(pValues->detect, context, &project, [&](const Picture& picture) {
      Found found;
      std::vector<ZuMarker> markers;
      ZuDetectMarkers(picture.image, pValues->strFamily, &markers, &found.strText,
                      pValues->detect.dSigmaFloor);
      found.more["markers"] = Json::array();
      for (const ZuMarker& marker : markers) {
        found.more["markers"].push_back(marker.m_uNumber);
        found.points.insert(found.points.end(), marker.m_corners.begin(), marker.m_corners.end());
      }
      if (markers.empty()) found.strText += "no marker of family " + pValues->strFamily;
      return found;
    });
  };
}

}  // namespace cli
