// The matrices of a rectification from lines alone: what is parallel, perpendicular or of known
// length in the object tells how the photo is tilted against its plane.
//
//   ZuZuspLineFit fit = ZuFitZuspLines(trafo, photo.GetCamera());
//   if (fit.eStatus == ZuAdjustStatus::Good) fit.Store(&trafo);
//
// Each line of the definition (ZuZuspParallelDef) that a constraint ties to others has one
// condition: its image passes through the vanishing point of their direction. A value above 0 of a
// line is its length, of which the first gives the scale and each further one a condition. The
// image points are adjusted to fulfil all of them (general case of least squares); the start comes
// from vanishing points. Lines that others hold together already, as A to C beside A to B and B to
// C, count once.
//
// Sources: B. Caprile, V. Torre, "Using vanishing points for camera calibration", 1990 (start);
// K.-R. Koch, "Parameter estimation and hypothesis testing in linear models", 1999.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/export.h"
#include "zu/numerics/matrix.h"

class ZuCamera;
class ZuZuspTrafo;

struct ZuZuspLineOptions {
  // The camera constant is estimated, too. Two perpendicular directions that are both inclined to
  // the image decide it.
  bool bEstimateC = false;
  // Standard deviation of an image coordinate [mm], where nothing is redundant, and by which two
  // solutions are told apart.
  double dSigma = 0.001;
};

struct ZuZuspLineResidual {
  unsigned uLine = 0;
  bool bUsed = false;    // it has both ends and a condition
  double dAcross = 0.0;  // the larger of the moves of both ends across the line, in the image [mm]
  double dAngle = 0.0;   // as measured, from its direction in the plane; 0 without one [rad]
  double dLength = 0.0;  // as measured, less the length told; 0 without one
};

struct ZU_ADJUST_API ZuZuspLineFit {
  // Into the record, which then carries image points to the plane (Z stays) and back.
  void Store(ZuZuspTrafo* pTrafo) const;

  ZuAdjustStatus eStatus = ZuAdjustStatus::TooFew;
  std::string strWhy;  // a sentence where the status is not good
  // Measured image points to the plane. X runs along the first line that is marked as X axis, from
  // its first point, the origin; without one along or across the direction with the most lines,
  // closer to the x axis of the image, from the foot of the projection centre. Z, towards the
  // photo.
  ZuMatrix zusp = ZuMatrix(3, 3);
  ZuMatrix rotation = ZuMatrix(3, 3);  // image vectors to the axes of the plane
  double adRotationSd[3] = {};         // of small rotations about these axes [rad]
  double dC = 0.0, dCSd = 0.0;         // camera constant [mm]; sd 0 where it was given
  bool bScaled = false;                // some line has a length
  double dDistance = 1.0;    // of the projection centre from the plane; 1 where nothing is scaled
  double dDistanceSd = 0.0;  // 0 where nothing is scaled
  double dSigma0 = 0.0;      // of an image coordinate [mm]; 0 without redundancy
  int iRedundancy = 0;
  std::vector<ZuZuspLineResidual> lines;  // in the order of the definition
};

// `camera` is the photo's: its constant and, where the record takes off no distortion, its
// principal point. Measured points are corrected exactly (ZuCamera::AdjustExact).
//
// Not good: too few conditions; conditions that leave the tilt, the camera constant or a choice
// between two planes open (rank defect), as lines of one direction alone; constraints that
// contradict each other, lines across the horizon of every plane, more than 300 lines or 30
// directions (not converged). Any thread. Cost: the cube of the lines.
ZU_ADJUST_API ZuZuspLineFit ZuFitZuspLines(const ZuZuspTrafo& trafo, const ZuCamera& camera,
                                           const ZuZuspLineOptions& options = {});
