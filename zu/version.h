// Version of the library: the one place. The build reads the three numbers from here for the shared
// library's name, the package files and `zu --version`.
#pragma once

#include "zu/export.h"

#define ZU_VERSION_MAJOR 0
#define ZU_VERSION_MINOR 1
#define ZU_VERSION_PATCH 0

// "major.minor.patch" of the library that runs, which may differ from the header compiled against.
ZU_API const char* ZuVersion();
