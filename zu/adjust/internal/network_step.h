// How a network takes a step of its adjustment.
#pragma once

#include <vector>

#include "zu/adjust/internal/network_model.h"

namespace zu::internal {

// Moves a state by a step of reduced unknowns and of points. What of it moves the network as a
// whole is done by a motion, which image points don't feel at all; a sum of unknowns would bend the
// network by the square of the turn, and where control is much weaker than images the steps would
// have to creep along that bend.
void TakeStep(const NetworkModel& model, const std::vector<double>& reduced,
              const std::vector<Vec3>& points, NetworkState* pState);

}  // namespace zu::internal
