// A rectification from what is known of the lines between measured points: parallel, at right
// angles, of known ratio of lengths or known length. The camera constant need not be known.
//
//   ZuZuspConditions conditions(trafo);           // points, lines and constraints of the record
//   conditions.Add(equalSides);
//   if (conditions.Calc() == eConditionsOk) conditions.Store(&trafo);
//
// The image points are corrected by the record's camera where it takes part. Then the horizon, the
// shear and the ratio of the axes are found by ZuPlaneConditions, by least squares with conditions;
// a length gives the scale and a marked line the direction of the x axis. Where the photo's camera
// is known, ZuFitZuspLines (adjust) needs fewer lines.
#pragma once

#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/numerics/matrix.h"
#include "zu/transform/condition_line.h"

class ZuZuspTrafo;

class ZU_API ZuZuspConditions {
 public:
  // The record must outlive this. Of its definition by lines the constraints are conditions, the
  // values above 0 lengths, the first line that is marked so the x axis.
  explicit ZuZuspConditions(const ZuZuspTrafo& trafo);

  // The points of a line are named by their ids as text. False, nothing added, where one is not
  // measured.
  bool Add(const ZuConditionLine& line);

  // Not finite, too, where the camera's model is not one to one at a point. Any thread.
  eConditionsStatus Calc();

  // The rest after a good Calc alone. Matrices into the record, which then carries image points to
  // the plane (Z stays); inverses formed before are let go. Without a length the unit is the mm of
  // the image at the centre of the points, without an x axis it runs as in the image.
  void Store(ZuZuspTrafo* pTrafo) const;
  const ZuMatrix& GetZuspMat() const { return m_zusp; }
  bool IsScaled() const { return !m_lengths.empty(); }

  struct Result {
    ZuConditionLine line;    // as told; a second length is a ratio of the first one
    bool bUsed = false;      // false: others hold it already
    double dResidual = 0.0;  // of the measured points: angle [rad], or share of the ratio [-]
  };
  const std::vector<Result>& GetResults() const { return m_results; }
  struct Move {
    unsigned uId;
    double dX, dY;  // adjusted less measured, in the image [mm]
  };
  const std::vector<Move>& GetMoves() const { return m_moves; }
  // Of an image coordinate [mm]; 0 without redundancy.
  double GetSigma0() const { return m_dSigma0; }
  int GetRedundancy() const { return m_iRedundancy; }
  // What no condition decides, with eConditionsOpen.
  const std::string& GetFree() const { return m_strFree; }

 private:
  struct Measured {
    unsigned uId;
    double x, y;     // [mm]
    size_t uNumber;  // among those of the conditions
  };
  struct Length {
    unsigned auId[2];
    double dLength;
  };

  Measured* Find(const std::string& strId);
  void TakeDefinition();
  std::vector<ZuConditionLine> LengthRatios() const;

  const ZuZuspTrafo& m_trafo;
  std::vector<Measured> m_points;
  std::vector<ZuConditionLine> m_conditions;
  std::vector<Length> m_lengths;
  unsigned m_auXAxis[2] = {};
  ZuMatrix m_zusp = ZuMatrix(3, 3);
  std::vector<Result> m_results;
  std::vector<Move> m_moves;
  double m_dSigma0 = 0.0;
  int m_iRedundancy = 0;
  std::string m_strFree;
};
