// How a construction in the plane ended, and the figures that constructions from more than the
// least number of measurements have in common.
#pragma once

#include "zu/export.h"

enum eCadStatus : int {
  eCadOk = 0,
  eCadTooFew = 1,           // points or measurements, or none so far
  eCadCoincident = 2,       // points that must be apart are one
  eCadCollinear = 3,        // points stand in a line
  eCadParallel = 4,         // directions do not meet
  eCadNoIntersection = 5,   // circles do not meet, or directions meet behind a station
  eCadDangerousCircle = 6,  // the point sought stands on the circle of the known ones
  eCadUndetermined = 7,     // what is given leaves the direction open
  eCadNotFinite = 8,        // a number given, or the result
  eCadNotConverged = 9,     // no end of the search
  eCadTooMany = 10,         // points
};

// "ok", "the points stand in a line", ...; static text.
ZU_API const char* ZuCadStatusText(eCadStatus eStatus);

// Points that are this share of their extent apart count as one, and their heights over a line as
// none [-].
constexpr double kZuCadSmall = 1e-10;

struct ZuCadFit {
  bool IsOk() const { return eStatus == eCadOk; }

  eCadStatus eStatus = eCadTooFew;
  int iRedundancy = 0;
  // Root of the sum of squares over the redundancy: the standard deviation of a coordinate, or a
  // factor to the standard deviations told; 0 without redundancy.
  double dSigma0 = 0.0;
  // What the standard deviations of the result are based on: the one told, else dSigma0.
  double dSigma = 0.0;
  double dRms = 0.0;      // of the residuals
  double dLargest = 0.0;  // of their sizes
};
