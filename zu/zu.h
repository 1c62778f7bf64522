// Umbrella header for applications; the library itself never includes it.
#pragma once

#include "zu/version.h"
#include "zu/cloud/scan_point3d.h"
#include "zu/numerics/angle.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/mmatrix.h"
#include "zu/numerics/solver.h"
#include "zu/numerics/vector.h"
