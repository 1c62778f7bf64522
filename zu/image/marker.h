// Square markers with a number in a picture: ArUco and AprilTag, alone or between the squares of a
// chessboard (ChArUco).
#pragma once

#include <array>
#include <string>
#include <vector>

#include "zu/image/board.h"
#include "zu/image/detected_point.h"
#include "zu/image/export.h"

class ZuImage;

// Corners of the black square, clockwise from the upper left one as the marker is drawn. Marker m
// has points 10 m + 1 to 10 m + 4.
struct ZuMarker {
  unsigned m_uNumber = 0;
  std::array<ZuDetectedPoint, 4> m_corners;
};

// The families of markers: "4x4_50" to "7x7_1000" (bits a side, and how many), "aruco_original",
// "apriltag_16h5", "apriltag_25h9", "apriltag_36h10", "apriltag_36h11".
ZU_IMAGE_API std::vector<std::string> ZuMarkerFamilies();

// Finds the markers of a family, by number. A number that is seen more than once is left out, and
// *pstrText tells it, where not null. False, list empty, for an unknown family. The floor of the
// standard deviations is in pixels.
ZU_IMAGE_API bool ZuDetectMarkers(const ZuImage& image, const std::string& strFamily,
                                  std::vector<ZuMarker>* pMarkers, std::string* pstrText = nullptr,
                                  double dSigmaFloor = kZuSigmaFloor);

// Finds the inner corners of a chessboard whose bright squares hold markers 0, 1, ... row by row
// from the upper left; the side of a marker is dMarker of that of a square, between 0 and 1.
// Numbered as ZuChessboard tells, seen as the board is drawn. The board need not be whole in the
// picture: the corners that two markers or more lie about are there.
ZU_IMAGE_API ZuBoardDetection ZuDetectCharuco(const ZuImage& image, const ZuChessboard& board,
                                              const std::string& strFamily, double dMarker,
                                              double dSigmaFloor = kZuSigmaFloor);
