#pragma once

#include "zu/cloud/point_cloud.h"
