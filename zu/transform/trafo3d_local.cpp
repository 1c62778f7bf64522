// The transformation into a local system defined by named points.
#include <cmath>

#include "zu/numerics/internal/finite.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo3d.h"

using zu::internal::AreFinite;

namespace {

// The permutation that puts the frame of the three points into the axes of the local system: for
// each row the column that holds its entry; entries in column 3 have the sign, the others are 1.
struct AxisPermutation {
  int aiColumn[3];
  double dSign;
};

// Null for an axis mode other than X, Y and Z.
const AxisPermutation* PermutationOf(const ZuLokalSystem& system) {
  static constexpr AxisPermutation kX[] = {{{1, 2, 3}, 1.0}, {{1, 3, 2}, -1.0}};
  static constexpr AxisPermutation kY[] = {{{2, 1, 3}, -1.0}, {{3, 1, 2}, 1.0}};
  static constexpr AxisPermutation kZ[] = {{{2, 3, 1}, 1.0}, {{3, 2, 1}, -1.0}};
  switch (system.m_iAxisMode) {
    case eLokalAxisX:
      return &kX[system.m_iPlaneMode == eLokalPlaneXY ? 0 : 1];
    case eLokalAxisY:
      return &kY[system.m_iPlaneMode == eLokalPlaneXY ? 0 : 1];
    case eLokalAxisZ:
      return &kZ[system.m_iPlaneMode == eLokalPlaneXZ ? 0 : 1];
    default:
      return nullptr;
  }
}

ZuMatrix PermutationMatrix(const AxisPermutation& permutation) {
  ZuMatrix p(3, 3);
  for (int i = 0; i < 3; ++i) {
    const int j = permutation.aiColumn[i];
    p[i + 1][j] = j == 3 ? permutation.dSign : 1.0;
  }
  return p;
}

const ZuPoint* FindPoint(const ZuPointList* pPoints, unsigned int uId) {
  return pPoints != nullptr && uId != 0 ? pPoints->Find(uId) : nullptr;
}

ZuVector Vector(const ZuPoint& p) { return ZuVector(p.m_dX, p.m_dY, p.m_dZ); }

// A scale pair with its points, null where they are not in the list.
struct FoundPair {
  const ZuPoint *pA, *pB;
  double dDistance;
  bool* pbBad;
  double dScale = 0.0;

  bool IsFound() const { return pA != nullptr && pB != nullptr; }
};

// The mean scale of the pairs found; marks those that differ from it by more than the tolerance.
// False if any was marked.
bool MeanScale(FoundPair (&pairs)[3], double dTolerance, double* pdMean) {
  double dSum = 0.0;
  int n = 0;
  for (FoundPair& pair : pairs) {
    if (!pair.IsFound()) continue;
    pair.dScale = ZuTrafo3d::CalcScale(Vector(*pair.pA), Vector(*pair.pB), pair.dDistance);
    dSum += pair.dScale;
    ++n;
  }
  *pdMean = dSum / n;
  bool bGood = true;
  for (const FoundPair& pair : pairs) {
    if (!pair.IsFound()) continue;
    *pair.pbBad = std::fabs(*pdMean - pair.dScale) / *pdMean > dTolerance;
    bGood = bGood && !*pair.pbBad;
  }
  return bGood;
}

ZuVector MeanOf(const ZuPointList& points) {
  double dX = 0.0, dY = 0.0, dZ = 0.0;
  int n = 0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next(), ++n) {
    dX += p->m_dX;
    dY += p->m_dY;
    dZ += p->m_dZ;
  }
  return ZuVector(dX / n, dY / n, dZ / n);
}

}  // namespace

bool ZuTrafo3d::CalcByLocalSystem(const ZuLokalSystem& system, const ZuPointList* pPoints,
                                  double dFixedScale, double dScaleTolerance) {
  const ZuPoint* pA = FindPoint(pPoints, system.m_uIdA);
  const ZuPoint* pB = FindPoint(pPoints, system.m_uIdB);
  const ZuPoint* pC = FindPoint(pPoints, system.m_uIdC);
  const ZuPoint* pOrigin = FindPoint(pPoints, system.m_uIdOrigin);
  FoundPair pairs[3] = {
      {FindPoint(pPoints, system.m_uScale1IdA), FindPoint(pPoints, system.m_uScale1IdB),
       system.m_dScale1Dist, &m_bScale1Bad},
      {FindPoint(pPoints, system.m_uScale2IdA), FindPoint(pPoints, system.m_uScale2IdB),
       system.m_dScale2Dist, &m_bScale2Bad},
      {FindPoint(pPoints, system.m_uScale3IdA), FindPoint(pPoints, system.m_uScale3IdB),
       system.m_dScale3Dist, &m_bScale3Bad}};
  const auto fail = [this](eTrafo3DStatus eStatus) {
    m_eStatus = eStatus;
    return false;
  };

  // A scale that the definition lacks may be made up for by the fixed one.
  eTrafo3DStatus eDefinition = eTrafo3DOk;
  if (!system.IsValid(eDefinition, nullptr, true) && eDefinition != eTrafo3DScaleUndefined) {
    return fail(eDefinition);
  }
  const bool bPair = pairs[0].IsFound() || pairs[1].IsFound() || pairs[2].IsFound();
  const AxisPermutation* pPermutation = PermutationOf(system);
  if ((!bPair && dFixedScale == 0.0) || pA == nullptr || pB == nullptr || pC == nullptr ||
      pOrigin == nullptr || pPermutation == nullptr) {
    return fail(eTrafo3DBadDefinition);
  }

  ZuMatrix frame(3, 3);
  bool bFrame = false;
  frame.MakeRotMatrix(Vector(*pA), Vector(*pB), Vector(*pC), &bFrame);
  if (!bFrame) return fail(eTrafo3DNoSolution);
  m_mRot = PermutationMatrix(*pPermutation) * frame.Transpose();

  m_bScale1Bad = m_bScale2Bad = m_bScale3Bad = false;
  m_dScale = dFixedScale;
  bool bScales = true;
  if (dFixedScale == 0.0) {
    bScales = MeanScale(pairs, dScaleTolerance, &m_dScale);
    if (!(m_dScale > 0.0)) return fail(eTrafo3DScaleUndefined);
  }
  if (!std::isfinite(m_dScale)) return fail(eTrafo3DScaleUndefined);
  if (!bScales) return fail(eTrafo3DScaleMismatch);

  m_vSource = MeanOf(*pPoints);
  const ZuVector offset(system.m_dOffsetX, system.m_dOffsetY, system.m_dOffsetZ);
  m_vTarget = (m_mRot * -m_dScale) * (Vector(*pOrigin) - m_vSource) + offset;
  if (!AreFinite(m_vSource) || !AreFinite(m_vTarget)) return fail(eTrafo3DNoSolution);
  m_eStatus = eTrafo3DOk;
  return true;
}
