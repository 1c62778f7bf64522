// The coordinate update: new coordinates of points applied to a list that has them already.
//
//   ZuUpdateOptions options;
//   options.m_eMode = eZuUpdateMean;
//   options.m_dTolerance = 0.005;
//   const ZuUpdateResult result = ZuUpdatePoints(&project.ObjectPoints(), measured, options);
//   for (const ZuUpdatedPoint& p : result.m_Points) if (p.m_bMoved) show(p);
#pragma once

#include <limits>
#include <vector>

#include "zu/export.h"
#include "zu/points/point_list.h"

enum eZuUpdateMode : int {
  eZuUpdateReplace,  // the new coordinate and accuracy
  eZuUpdateMean,     // the mean by the accuracies of both
  eZuUpdateKeep      // the former one; what differs is told
};

// The values are given out: append, never renumber.
enum eZuUpdateStatus : int {
  eZuUpdateChanged,
  eZuUpdateSame,       // nothing to change
  eZuUpdateKept,       // another coordinate was told and not taken
  eZuUpdateAdded,      // not among the points before
  eZuUpdateUnknown,    // not among the points, and not added
  eZuUpdateDouble,     // told before for the same point; the first one counts
  eZuUpdateNotFinite,  // a coordinate that is not finite, of it or of the former one
  eZuUpdateNoId        // has the id 0
};

// "changed", "same", "kept", "added", "unknown", "double", "not finite", "no id"; "none" for any
// other value.
ZU_API const char* GetZuUpdateText(eZuUpdateStatus eStatus);

struct ZuUpdateOptions {
  eZuUpdateMode m_eMode = eZuUpdateReplace;
  bool m_bAdd = true;  // points that the list does not have yet
  // A new coordinate farther than this from the former one is told as moved.
  double m_dTolerance = std::numeric_limits<double>::infinity();
  // Standard deviations where a point tells none (0 in m_dDX, m_dDY, m_dDZ): of the former and of
  // the new coordinates; 0: not known.
  double m_dSigmaOld = 0.0, m_dSigmaNew = 0.0;
};

struct ZuUpdatedPoint {
  const ZuPoint* m_pNew = nullptr;  // in the list of new coordinates
  ZuPoint* m_pPoint = nullptr;      // in the list that was updated; null: not there
  eZuUpdateStatus m_eStatus = eZuUpdateSame;
  double m_adDifference[3] = {};  // new less former coordinate; 0 where there is no former one
  double m_dDistance = 0.0;       // its length
  bool m_bMoved = false;          // beyond the tolerance
  bool m_bEqualWeights = false;   // a mean without accuracies
};

struct ZuUpdateResult {
  std::vector<ZuUpdatedPoint> m_Points;  // one for each new coordinate, in their order

  int Count(eZuUpdateStatus eStatus) const {
    int iCount = 0;
    for (const ZuUpdatedPoint& p : m_Points) iCount += p.m_eStatus == eStatus ? 1 : 0;
    return iCount;
  }
  int Moved() const {
    int iCount = 0;
    for (const ZuUpdatedPoint& p : m_Points) iCount += p.m_bMoved ? 1 : 0;
    return iCount;
  }
};

// Applies new coordinates to the points of a list. A point is that of the same name, or else of the
// same id, unless both have names that differ. Coordinate and accuracies change, all else stays; a
// point that comes in is a copy, behind the others in the order of the new ones. The mean of an
// axis is weighted by 1 / s^2, and its accuracy 1 / sqrt(1 / s1^2 + 1 / s2^2) (Mikhail, Ackermann:
// Observations and Least Squares, 1976); where one of both is not known the weights are equal and
// the accuracy becomes 0. The lists are two. Takes n log n time.
ZU_API ZuUpdateResult ZuUpdatePoints(ZuPointList* pPoints, const ZuPointList& news,
                                     const ZuUpdateOptions& options);
