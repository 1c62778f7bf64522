#include "zu/numerics/angle.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTurn = 2.0 * kPi;

// Turns up to which single steps are taken [-]; above, the remainder is taken first, since the cost
// of the steps grows with the angle and their rounding adds up.
constexpr double kStepTurns = 1024.0;

}  // namespace

double ConvertAngle(const double& a, eZuAngleUnit from, eZuAngleUnit to) {
  double dRadians = a;
  if (from == eZuAngleUnitDegree) dRadians = a / 180.0 * kPi;
  if (from == eZuAngleUnitGon) dRadians = a / 200.0 * kPi;

  if (to == eZuAngleUnitDegree) return dRadians / kPi * 180.0;
  if (to == eZuAngleUnitGon) return dRadians / kPi * 200.0;
  return dRadians;
}

double NormAngle(const double& a) {
  if (!std::isfinite(a)) return a;
  double dAngle = a;
  if (std::fabs(dAngle) > kStepTurns * kTurn) dAngle = std::fmod(dAngle, kTurn);
  while (dAngle > kTurn) dAngle -= kTurn;
  while (dAngle < 0.0) dAngle += kTurn;
  return dAngle;
}
