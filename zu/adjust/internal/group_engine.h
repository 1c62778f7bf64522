// Least squares by groups of observations of a point: few parameters, any number of small groups,
// one pass over the groups a step, nothing stored for each.
//
//   e = w + A dx      misclosures of a group after the adjustment, cov(w) = M for sigma0 = 1
//
// Observations l with conditions f(l, x) = 0 (the general case): w = f, A = df/dx, M = B Q B' with
// B = df/dl. Observation equations are the case w = f(x) - l, M = Q. Sum of e' M^-1 e -> minimum.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/internal/small_matrix.h"
#include "zu/adjust/point_test.h"

namespace zu::internal {

// The equations of one group at the present parameters.
struct GroupEquation {
  int m = 0;                        // 1 to kMaxGroup
  double w[kMaxGroup];              // misclosures
  double M[kMaxGroup * kMaxGroup];  // their covariance, m x m
  std::vector<double> A;            // m x u, row by row; the engine gives it its size
};

// The smallest eigenvalue of the normal matrix, with parameters in their units and the largest
// eigenvalue 1, down to which it counts as regular [-]. 1e-12 is a millionth in length.
inline constexpr double kSingular = 1e-12;

// Share of its covariance that a group must keep in a direction to be tested there [-]: below it
// the residual is rounding.
inline constexpr double kTestable = 1e-6;

// The same for the redundancy of one axis.
inline constexpr double kSeen = 1e-12;

// The sums of the normal equations over the groups used: N = A' M^-1 A (u x u, both triangles),
// h = A' M^-1 w, w' M^-1 w and the number of equations.
struct GroupNormals {
  explicit GroupNormals(int u)
      : N(static_cast<std::size_t>(u) * static_cast<std::size_t>(u)),
        h(static_cast<std::size_t>(u)) {}

  std::vector<double> N, h;
  double dSquares = 0.0;
  int iObservations = 0;
};

// What is adjusted. Groups are numbered from 0 in an order that does not depend on the input's.
class GroupModel {
 public:
  virtual ~GroupModel() = default;
  virtual int Parameters() const = 0;  // u
  virtual int Groups() const = 0;
  // Groups that take part; the others are only tested.
  virtual bool IsUsed(int iGroup) const = 0;
  virtual void Linearize(int iGroup, GroupEquation* pEquation) const = 0;
  // Adds all groups used to sums that are 0; here from their equations, one by one. False where a
  // covariance M has no inverse.
  virtual bool AddNormals(GroupNormals* pNormals);
  // Adds a correction to the parameters.
  virtual void Step(const double* pdCorrection) = 0;
  // The unit in which parameter j is judged where the normal matrix is looked at for a defect;
  // 0: the parameter's own, 1 / sqrt(Njj). A model that gives units that do not depend on the
  // choice of axes gets a verdict that does not.
  virtual double Unit(int) const { return 0.0; }
  // See kSingular; larger where the coordinates have less digits than that needs.
  virtual double Singular() const { return kSingular; }
};

struct EngineResult {
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  int iSteps = 0;
  int iObservations = 0;           // equations of the groups used
  int iRedundancy = 0;             // less the parameters
  double dSquares = 0.0;           // e' M^-1 e
  std::vector<double> covariance;  // u x u, for sigma0 = 1; empty unless good
  // The same along axes of the normal matrix, columns of u x u, and in these; empty before Refresh.
  std::vector<double> axes, principal;
  double dCondition = 0.0;            // smallest over largest eigenvalue, see kSingular
  int iDefect = 0;                    // eigenvalues below kSingular
  std::vector<double> freeDirection;  // of a rank defect: the direction in the parameters, length 1
                                      // in their units

  // sqrt(dSquares / r); 1 for r < 1.
  double SigmaPosteriori() const;
};

// Adjusts from the present parameters of the model to convergence: largest change of a parameter
// below 1e-6 of its standard deviation. The parameters keep what they have where it fails.
EngineResult Adjust(GroupModel& model, int iMaxSteps = 100);

// Forms covariance and squares of a good result anew, at the present parameters, which the last
// step may have left by 1e-6 of their standard deviations, and in sums along the axes: what is
// known badly beside what is known well keeps its digits. The redundancy numbers then sum to the
// redundancy to rounding. Another status where that fails.
void Refresh(GroupModel& model, EngineResult* pResult);

// The sigma0 that scales standard deviations and tests.
struct Sigma {
  double dSigma0 = 1.0;
  ZuSigmaKind kind = ZuSigmaKind::APriori;  // never Automatic
};
Sigma ChooseSigma(const EngineResult& result, ZuSigmaKind kind, bool bGivenByUser);

// Tests groups against a good result. Limits are formed once, where they are needed: for one thread
// at a time.
class GroupTester {
 public:
  GroupTester(const EngineResult& result, const Sigma& sigma, const ZuTestOptions& options,
              int iTests);

  // The equations must be those of the result's parameters. All of *pTest but its id; pdAQA gets
  // A Qxx A', m x m, if it is given.
  void Test(const GroupEquation& equation, bool bUsed, ZuPointTest* pTest,
            double* pdAQA = nullptr) const;
  // The same where A Qxx A' is known: of the equation only w and M are looked at.
  void TestWith(const GroupEquation& equation, const double* pdAQA, bool bUsed,
                ZuPointTest* pTest) const;

  double Sigma0() const { return m_dSigma0; }
  double LeastError() const { return m_dLeastError; }
  double LeastRedundancy() const { return m_dLeastRedundancy; }
  // Of the group test of m observations that were used; infinite for none.
  double Limit(int m) const;

 private:
  void TestUsed(const GroupEquation& equation, const double* pdAQA, ZuPointTest* pTest) const;
  bool TestWhole(const GroupEquation& equation, const double* pdQ, ZuPointTest* pTest) const;
  void TestByDirections(const GroupEquation& equation, const double* pdQ, ZuPointTest* pTest) const;
  void TestOther(const GroupEquation& equation, const double* pdAQA, ZuPointTest* pTest) const;

  const EngineResult& m_result;
  double NewLimit(int m) const;  // of a group that took no part

  bool m_bPriori;
  double m_dAlpha;
  double m_dSigma0;
  double m_dLeastError;
  double m_dLeastRedundancy;
  mutable double m_adLimit[kMaxGroup + 1] = {}, m_adNewLimit[kMaxGroup + 1] = {};  // 0: not formed
};

// Room for the equations of a model of that many parameters.
GroupEquation EquationFor(int iParameters);

// Tests all groups of a model; the ids stay 0.
std::vector<ZuPointTest> TestGroups(const GroupModel& model, const GroupTester& tester);

}  // namespace zu::internal
