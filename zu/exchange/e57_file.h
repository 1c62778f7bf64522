// E57 files of point clouds (ASTM E2807, 3D Imaging Data Exchange).
//
// A file has scans, each with its points in the frame of the scanner and a pose that carries them
// into the common frame: p = R q + t. Pages of 1,024 bytes end with a checksum each.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "zu/cloud/cloud_reading.h"
#include "zu/exchange/export.h"

class ZuPointCloudContainer;

// Where a scanner stood: a rotation as quaternion w, x, y, z and a translation.
struct ZuE57Pose {
  std::array<double, 4> adRotation = {1.0, 0.0, 0.0, 0.0};
  std::array<double, 3> adTranslation = {};
};

// m_pCloud is the first cloud; those of further scans follow in the list.
struct ZuE57Reading : ZuCloudReading {
  std::vector<ZuE57Pose> m_aPoses;  // by cloud
};

// Reads each scan into a new cloud of its name, in the common frame: cartesian coordinates,
// colours, intensities, and normals of the extension for surface normals.
//
// Intensities of 0 to 255 and of 0 to 65535 are taken as they are, those of other limits are spread
// over 0 to 65535. Points marked as invalid are left out; what a cloud does not keep is told in a
// finding. A scan with spherical coordinates alone is a fault, as are XML that is not well-formed
// or has a document type, strings among the points, and numbers that contradict each other. A page
// that does not match its checksum, and fewer points than announced, are cuts. What was read until
// then stays.
//
// Takes linear time and the memory of the XML and the points, whatever the file announces. Stopped
// by the progress handler, it ends with a cut. Throws nothing: without memory it ends with a fault.
ZU_EXCHANGE_API ZuE57Reading ZuReadE57(const char* szPath, ZuPointCloudContainer& clouds);

struct ZuE57Options {
  // Step of the coordinates; 0: doubles, which lose nothing.
  double m_dResolution = 0.0;
  // That of ZuCloudReading; eZuIntensityNone and that of -2000 to 2000 count as 0 to 255.
  eZuIntensityScale m_eIntensity = eZuIntensity255;
  // By cloud; those behind the last one have none. Points are written in the frames of these.
  std::vector<ZuE57Pose> m_aPoses;
};

struct ZuE57Writing {
  bool m_bGood = false;
  std::string m_strFault;  // why not, and what would do; empty where a write failed
};

// Writes each cloud as a scan: coordinates, and where any point of it has one its normal, colour
// and intensity. Nothing in the file tells of time and machine: the same points give the same
// bytes. Not good: the file cannot be opened, not all bytes could be written, the progress handler
// wanted no more, the resolution is too fine for the extent, or a coordinate is not finite and a
// resolution is given.
ZU_EXCHANGE_API ZuE57Writing ZuWriteE57(const char* szPath, const ZuPointCloudContainer& clouds,
                                        const ZuE57Options& options = {});
