// The definition of a local system on the command line.
#pragma once

#include <string>
#include <vector>

#include "zu/points/point_list.h"
#include "zu/transform/lokal_system.h"

namespace cli {

struct LokalOptions {
  std::string strAxis;                 // "X:1,2"
  std::string strPlane;                // "XY:3"
  std::string strOrigin;               // "1" or "1:x,y,z"
  std::vector<std::string> strScales;  // "1,2:5.000"
  std::string strDefinition;           // a file with a LOKAL { ... } block
};

// The definition: that of the file, if one is given, with what the options tell in its place.
// Points are told by name or id. Throws CommandError: (usage) for an option that cannot be
// understood or is missing, (bad input) for a file without definition and for points that the list
// does not have.
ZuLokalSystem ReadLokalSystem(const LokalOptions& options, const std::string& strPoints,
                              const ZuPointList& points);

}  // namespace cli
