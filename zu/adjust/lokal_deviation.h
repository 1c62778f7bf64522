// How sure the points of a local system are, by the accuracies of all points that make it.
//
//   local = s R (point - origin) + offset
//
// An error of a point of the definition moves, turns or scales the whole system. It is carried to
// first order through axis, plane, origin and scale into every point, together with the point's
// own; a point of the definition is its own part of both. What the definition sets by itself has no
// deviation: the origin's coordinates, the directions of axis and plane, a scale without pairs.
#pragma once

#include <map>
#include <vector>

#include "zu/adjust/export.h"
#include "zu/points/point_list.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo3d_data.h"

struct ZuLokalAccuracy {
  // Standard deviation of the coordinates whose point tells none (m_dDX, m_dDY, m_dDZ; 0 is not
  // told) [unit of the points]; 0: the root mean square of those told takes its place.
  double dSigma = 0.0;
  double dSigmaDistance = 0.0;  // of the distances of the scale pairs [unit of the local system]
};

// A scale pair of the definition.
struct ZuLokalScale {
  unsigned int uIdA = 0, uIdB = 0;
  double dSd = 0.0;            // of the scale that the pair tells by itself [-]
  double dDifferenceSd = 0.0;  // of its difference from the mean of all pairs [-]
};

class ZU_ADJUST_API ZuLokalDeviation {
 public:
  // trafo is what ZuTrafo3d::CalcByLocalSystem made of system and points. False, nothing of the
  // rest told, where no accuracy is known, or a number is not finite, or the points do not make a
  // system.
  bool Calc(const ZuLokalSystem& system, const ZuPointList& points, const ZuTrafo3dData& trafo,
            const ZuLokalAccuracy& accuracy);

  // Of the local coordinates of a point of the list as it was given, 3 x 3 by rows.
  void PointCovariance(const ZuPoint& point, double* pdCovariance) const;

  // Of m_vTarget, m_dScale and the small rotation vector w of trafo (R becomes R exp[w]), 7 x 7 by
  // rows [unit of the local system, -, rad].
  const double* Covariance() const { return m_adCovariance; }

  const std::vector<ZuLokalScale>& Scales() const { return m_scales; }
  // Coordinates that tell nothing and took the root mean square of the others.
  int FilledIn() const { return m_iFilledIn; }

 private:
  // What an error of the point does: rotation vector in the local system, scale, origin.
  struct Influence {
    double adVariance[3] = {};  // of its coordinates
    double adTurn[9] = {};
    double adScale[3] = {};
    bool bOrigin = false;
  };

  void FillAccuracies(const ZuPointList& points, const ZuLokalAccuracy& accuracy);
  void Variances(const ZuPoint& point, double* pdVariance) const;
  Influence& Of(const ZuPoint& point);
  bool Turn(const ZuPoint& a, const ZuPoint& b, const ZuPoint& c);
  bool Scale(const ZuLokalSystem& system, const ZuPointList& points, double dSigmaDistance);
  void Parameters();
  // The derivatives of the local coordinates (3 x 3) by those of a point of the definition; adFrom:
  // the place in the local system less the offset.
  void ByDefinition(const Influence& influence, const double* pdFrom, double* pd) const;

  ZuTrafo3dData m_trafo;
  ZuPoint m_origin;
  double m_dFillIn = 0.0;
  int m_iFilledIn = 0;
  std::map<unsigned int, Influence> m_influences;  // by id
  double m_dScaleVariance = 0.0;                   // from the distances of the pairs
  std::vector<ZuLokalScale> m_scales;
  double m_adCovariance[49] = {};
};
