#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "zu/foundation/sort_helper.h"
#include "zu/project/internal/check_kinds.h"
#include "zu/project/project.h"

namespace zu::internal {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kFewest = 3, kMost = 50;  // points of a photo
constexpr double kAtFault = 0.05;               // residual over the camera constant
constexpr double kBetter = 0.05;                // residual over that at fault

struct Pair {
  ZuPoint image, object;  // image corrected, in mm
};

// Measured points of a photo that are known in object space.
std::vector<Pair> PairsOf(const ZuPhoto& photo, const ZuPointList& measured,
                          const ZuSortHelper<ZuPoint>& known) {
  std::vector<Pair> pairs;
  for (const ZuPoint* p = measured.First(); p != nullptr && pairs.size() < kMost; p = p->Next()) {
    const ZuPoint* const pKnown = known.Find(p->GetId());
    if (pKnown == nullptr) continue;
    Pair pair{*p, *pKnown};
    photo.ConvertBiko(&pair.image, eDigiToBiko);
    photo.ConvertBiko(&pair.image, eBikoToAdjusted);
    pairs.push_back(pair);
  }
  return pairs;
}

// Of the image points about their collinear places, root mean square over the camera constant.
double Residual(const ZuPhoto& photo, const ZuMatrix& R, const std::vector<Pair>& pairs) {
  const ZuVector& X0 = photo.GetPosAOR();
  const double c = photo.GetCamera().m_dC;
  double dSum = 0.0;
  for (const Pair& pair : pairs) {
    const double d[3] = {pair.object.m_dX - X0[1], pair.object.m_dY - X0[2],
                         pair.object.m_dZ - X0[3]};
    double v[3];
    for (int j = 0; j < 3; ++j) {
      v[j] = R[1][j + 1] * d[0] + R[2][j + 1] * d[1] + R[3][j + 1] * d[2];
    }
    const double ex = pair.image.m_dX / c + v[0] / v[2], ey = pair.image.m_dY / c + v[1] / v[2];
    dSum += ex * ex + ey * ey;
  }
  return std::sqrt(dSum / (2.0 * static_cast<double>(pairs.size())));
}

// The least residual of all triples of angles that give the rotation, each multiplied.
double ResidualOfScaled(const ZuPhoto& photo, double dFactor, const std::vector<Pair>& pairs) {
  double adAngles[3];
  photo.GetRotAOR(&adAngles[0], &adAngles[1], &adAngles[2]);
  double dLeast = HUGE_VAL;
  for (unsigned u = 0; u < 16; ++u) {  // three full turns, and the other form
    double a = adAngles[0], b = adAngles[1], c = adAngles[2];
    if ((u & 8U) != 0) a = kPi - a, b += kPi, c += kPi;
    if ((u & 1U) != 0) a += a < 0.0 ? 2.0 * kPi : -2.0 * kPi;
    if ((u & 2U) != 0) b += b < 0.0 ? 2.0 * kPi : -2.0 * kPi;
    if ((u & 4U) != 0) c += c < 0.0 ? 2.0 * kPi : -2.0 * kPi;
    ZuPhoto turned(1u);
    turned.SetRotAOR(a * dFactor, b * dFactor, c * dFactor);
    dLeast = std::min(dLeast, Residual(photo, turned.GetRotAOR(), pairs));
  }
  return dLeast;
}

}  // namespace

void CheckAngleUnits(const ZuProject& project, const std::string& strFile,
                     ZuFindingList* pFindings) {
  const ZuSortHelper<ZuPoint> known(&project.ObjectPoints());
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuPointList* const pMeasured = project.FindMeasurements(p->GetId());
    const ZuKeywordBlock* const pBlock = project.FindPhotoBlock(p->GetId());
    if (!p->HasAOR() || pMeasured == nullptr || pBlock == nullptr || !pBlock->Has("AORM")) continue;
    const std::vector<Pair> pairs = PairsOf(*p, *pMeasured, known);
    if (pairs.size() < kFewest) continue;
    const double dGiven = Residual(*p, p->GetRotAOR(), pairs);
    if (!(dGiven > kAtFault)) continue;
    const double dDegrees = ResidualOfScaled(*p, 10.0 / 9.0, pairs);
    const double dGon = ResidualOfScaled(*p, 0.9, pairs);
    if (!(std::min(dDegrees, dGon) < kBetter * dGiven)) continue;
    const ZuKeywordPlace place = pBlock->PlaceOf("AORM");
    const bool bGon = dGon < dDegrees;
    pFindings->Add(
        {strFile, place.m_uLine, place.m_uColumn, eZuSeverityWarning, "AORM",
         std::string("the measured points fit where its angles are ") +
             (bGon ? "gon in place of degrees" : "degrees in place of gon"),
         std::string("the rotation of the same numbers in ") + (bGon ? "gon" : "degrees")});
  }
}

}  // namespace zu::internal
