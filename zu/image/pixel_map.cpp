#include "zu/image/pixel_map.h"

ZuPixelMap::~ZuPixelMap() = default;
