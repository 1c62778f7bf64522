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

// What the equation of a common point is made of, all in the target's frame but S.
struct SimilarityTerms {
  double z[3], e[3];          // s R x at the adjusted point; target minus transformed source
  double S[9], T[9];          // covariances of source and target
  double C[9], M[9], P[9];    // s^2 R S R', T + C, M^-1
  bool bExactSource = false;  // S = 0
};

class CovarianceFactor;

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

  bool AddNormals(GroupNormals* pNormals) override;

  // All that is told about the points, in one pass; the parameters are those of the engine's
  // result. False where a number is not finite.
  bool Test(const EngineResult& engine, const GroupTester& tester,
            std::vector<ZuSimilarityPoint>* pPoints) const;

  // Target minus transformed source of point i.
  void Misclosure(int i, double* pdE) const;
  void StoreTo(ZuTrafo3dData* pTrafo) const;
  // What the parameters are: 0 to 2 shift x, y, z, 3 the scale's relative change, 4 to 6 rotation.
  const std::vector<int>& Columns() const { return m_columns; }
  bool IsMirrored() const { return m_bMirrored; }
  double Scale() const { return m_s; }
  // R' v: from the target's frame into the source's.
  void TurnBack(const double* pdV, double* pd) const {
    for (int k = 0; k < 3; ++k) pd[k] = m_R[k] * pdV[0] + m_R[3 + k] * pdV[1] + m_R[6 + k] * pdV[2];
  }

 private:
  void CovarianceOf(const CommonPoint& point, double* pdSource, double* pdTarget) const;
  double WeightOf(const CommonPoint& point, double dScale) const;
  // z of the observed point, and e.
  void Misclosure(const CommonPoint& p, double* pdZ, double* pdE) const {
    const double x[3] = {p.x[0] - m_xs[0], p.x[1] - m_xs[1], p.x[2] - m_xs[2]};
    for (int k = 0; k < 3; ++k) {
      pdZ[k] = m_s * Dot3(m_R + 3 * k, x);
      pdE[k] = p.y[k] - m_yc[k] - m_t[k] - pdZ[k];
    }
  }
  // False where M has no inverse; z is then that of the observed point.
  bool FindTerms(const CommonPoint& point, SimilarityTerms* pTerms) const;
  // The same where all covariances are multiples of the identity.
  bool TestScalar(const EngineResult& engine, const GroupTester& tester,
                  std::vector<ZuSimilarityPoint>* pPoints) const;
  bool TestBlocks(const EngineResult& engine, const GroupTester& tester,
                  std::vector<ZuSimilarityPoint>* pPoints) const;
  bool TestWide(const EngineResult& engine, const GroupTester& tester,
                std::vector<ZuSimilarityPoint>* pPoints) const;
  void TestPoint(const CovarianceFactor& factor, const GroupTester& tester, std::size_t uPoint,
                 ZuSimilarityPoint* pPoint) const;
  // Residuals of both sides and the covariance of the transformed source point.
  void Complete(const SimilarityTerms& terms, const double* pdAQA, double dSigma0,
                ZuSimilarityPoint* pPoint) const;

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
  bool m_bScalar = true;  // all covariances are multiples of the identity
  bool m_bEqual = true;   // and all points have the same
  // With these, of the last normal equations: the sum of the weights and the mean of z.
  double m_dWeight = 0.0, m_z[3] = {};
};

}  // namespace zu::internal
