// Umbrella header for applications; the library itself never includes it.
#pragma once

#include "zu/version.h"
