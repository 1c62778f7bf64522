// What the readers that hold a text file to its format give: a new cloud in the container, the
// scale of its intensities, and all that the file left open or that is wrong with it.
#pragma once

#include "zu/cloud/intensity_scale.h"
#include "zu/foundation/read_findings.h"

class ZuPointCloud;

struct ZuCloudReading {
  // In the container's list, without a name. Null: the file cannot be opened, or its header is at
  // fault.
  ZuPointCloud* m_pCloud = nullptr;
  eZuIntensityScale m_eIntensity = eZuIntensityNone;
  ZuReadFindings m_Findings;
};
