// The similarity transformation as a model of the engine.
#pragma once

#include <vector>

#include "zu/adjust/internal/group_engine.h"
#include "zu/adjust/similarity.h"

namespace zu::internal {

// A common point, coordinates as read.
struct CommonPoint {
  const ZuPoint* pSource;
  const ZuPoint* pTarget;
  unsigned uId;
  double x[3], y[3];    // source, target
  double sx[3], sy[3];  // standard deviations; ignored where there are covariances
  int iSourceCovariance = -1, iTargetCovariance = -1;  // among the options'
};

class SimilarityModel final : public GroupModel {
 public:
  // The points and options must outlive the model.
  SimilarityModel(const std::vector<CommonPoint>& points, const ZuSimilarityOptions& options);

  // Centres, then the closed form over the points used, weighted by the traces of the covariances.
  // Where they decide no rotation, what they are: all in one place, on one line, one above the
  // other. With the last two a target alone may be so.
  enum class Defect { None, NotFinite, OnePlace, Line, Vertical };
  Defect Start(const std::vector<char>& used);

  int Parameters() const override { return static_cast<int>(m_columns.size()); }
  int Groups() const override { return static_cast<int>(m_points.size()); }
  bool IsUsed(int i) const override { return m_used[static_cast<std::size_t>(i)] != 0; }
  void Linearize(int i, GroupEquation* pEquation) const override;
  void Step(const double* pdCorrection) override;
  double Unit(int j) const override;
  double Singular() const override { return m_dSingular; }

  // Residuals of both sides and the covariance of the transformed source point.
  void Complete(int i, const double* pdAQA, double dSigma0, ZuSimilarityPoint* pPoint) const;

  // Target minus transformed source of point i.
  void Misclosure(int i, double* pdE) const;
  void StoreTo(ZuTrafo3dData* pTrafo) const;
  // What the parameters are: 0 to 2 shift x, y, z, 3 the scale's relative change, 4 to 6 rotation.
  const std::vector<int>& Columns() const { return m_columns; }
  bool IsMirrored() const { return m_bMirrored; }
  double Scale() const { return m_s; }

 private:
  void CovarianceOf(const CommonPoint& point, double* pdSource, double* pdTarget) const;
  double WeightOf(const CommonPoint& point, double dScale) const;

  const std::vector<CommonPoint>& m_points;
  const ZuSimilarityOptions& m_options;
  std::vector<int> m_columns;
  std::vector<char> m_used;
  double m_xs[3] = {}, m_yc[3] = {}, m_t[3] = {};  // xt = yc + t
  double m_R[9] = {};
  double m_s = 1.0;
  double m_dShiftUnit = 1.0, m_dTurnUnit = 1.0;
  double m_dSingular = kSingular;
  bool m_bMirrored = false;
};

}  // namespace zu::internal
