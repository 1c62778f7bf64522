// Orientation of photos as other commands use it.
#pragma once

#include <vector>

#include "context.h"
#include "zu/adjust/network_project.h"
#include "zu/adjust/orientation_project.h"

namespace cli {

// Orients the photos of the project that are not, and tells so in the text and under "oriented".
// The result holds no photo where all were oriented.
ZuProjectOrientation OrientUnoriented(ZuProject* pProject, const ZuPointList& control,
                                      const ZuPointList& approximations,
                                      const ZuNetworkInput& input, Context& context);

// Puts the reason why a photo could not be oriented in the place of the warning that it is not.
void TellUnoriented(const ZuProjectOrientation& orientation, ZuNetworkOfProject* pMade);

// "photo 7 could not be oriented: ...".
std::string UnorientedText(const ZuPhotoOrientation& photo);

}  // namespace cli
