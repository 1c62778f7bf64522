// Umbrella header for applications; the library itself never includes it.
#pragma once

#include "zu/version.h"
#include "zu/cloud/scan_point3d.h"
#include "zu/numerics/angle.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/mmatrix.h"
#include "zu/numerics/solver.h"
#include "zu/numerics/vector.h"
#include "zu/foundation/array.h"
#include "zu/foundation/id_table.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/foundation/listnode.h"
#include "zu/foundation/object.h"
#include "zu/foundation/observer.h"
#include "zu/foundation/sort_helper.h"
#include "zu/foundation/value_array2d.h"
