// What the commands of `zu detect` share: pictures in, a project with what was found in them out.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "context.h"
#include "exit_code.h"
#include "options.h"
#include "zu/image/detected_point.h"
#include "zu/image/image.h"
#include "zu/image/photo_start.h"
#include "zu/project/project.h"

namespace cli {

struct DetectValues {
  std::vector<std::string> pictures;
  std::string strOut, strOverlay;
  double dPixelSize = 0.0, dFocalLength = 0.0;  // [mm]; 0: from the picture
  double dSigmaFloor = kZuSigmaFloor;           // of the standard deviations [pixel]
};

// Declares the pictures, -o, --overlay, --pixel, --focal and --sigma-floor.
void AddDetectOptions(Options& options, DetectValues* pValues);

// A picture and the photo it becomes.
struct Picture {
  std::string strPath;  // as the caller named it
  ZuImage image;
  ZuImageInfo info;
  ZuPhoto* pPhoto;  // in the project
};

struct Found {
  std::vector<ZuDetectedPoint> points;
  std::string strText;         // why there are none, or what is not certain; may be empty
  Json more = Json::object();  // for the JSON of the picture
};

// Reads the pictures one by one, gives each to `detect`, and puts photo and measurements into the
// project; photos it holds already, found by the name of their file, keep what they have and get
// the measurements in place of theirs. Prints a table, fills JSON and writes project and overlays.
// Good where something was found in every picture. Throws CommandError: (bad input) a picture that
// cannot be read or is not whole, (undetermined) nothing was found in any.
ExitCode DetectPictures(const DetectValues& values, Context& context, ZuProject* pProject,
                        const std::function<Found(const Picture&)>& detect);

// Throws CommandError (usage) that lists the families of markers there are.
void CheckMarkerFamily(const std::string& strFamily);

}  // namespace cli
