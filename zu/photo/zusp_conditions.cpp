#include "zu/photo/zusp_conditions.h"

#include <cmath>

#include "zu/foundation/strict_number.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

constexpr size_t kNoNumber = static_cast<size_t>(-1);

ZuMatrix Similarity(double c, double s, double x, double y) {
  const double ad[] = {c, s, -c * x - s * y, -s, c, s * x - c * y, 0.0, 0.0, 1.0};
  return ZuMatrix(ad, 3, 3);
}

}  // namespace

ZuZuspConditions::ZuZuspConditions(const ZuZuspTrafo& trafo) : m_trafo(trafo) {
  for (const ZuPoint* p = trafo.GetBikoList().First(); p != nullptr; p = p->Next()) {
    m_points.push_back({p->GetId(), p->m_dX, p->m_dY, kNoNumber});
  }
  TakeDefinition();
}

ZuZuspConditions::Measured* ZuZuspConditions::Find(const std::string& strId) {
  unsigned uId = 0;
  if (!ZuParseId(strId, &uId)) return nullptr;
  for (Measured& p : m_points) {
    if (p.uId == uId) return &p;
  }
  return nullptr;
}

void ZuZuspConditions::TakeDefinition() {
  const ZuZuspParallelDef& def = m_trafo.GetParallelDef();
  for (const ZuZuspDefLine* p = def.GetLines().First(); p != nullptr; p = p->Next()) {
    ZuConditionLine line;
    line.points = {std::to_string(p->m_uBikoId1), std::to_string(p->m_uBikoId2)};
    line.kind = ZuConditionLine::eXAxis;
    if (p->m_iXAxis != 0 && m_auXAxis[0] == 0) Add(line);
    line.kind = ZuConditionLine::eLength;
    line.dValue = p->m_dValue;
    if (p->m_dValue > 0.0 && std::isfinite(p->m_dValue)) Add(line);
  }
  const auto& constraints = def.GetConstraints();
  for (const ZuZuspDefLineConstraint* p = constraints.First(); p != nullptr; p = p->Next()) {
    const ZuZuspDefLine* a = def.GetLines().Find(p->m_uLineId1);
    const ZuZuspDefLine* b = def.GetLines().Find(p->m_uLineId2);
    if (!p->IsValid() || a == nullptr || b == nullptr) continue;
    ZuConditionLine line;
    line.kind = p->IsParallel() ? ZuConditionLine::eParallel : ZuConditionLine::eRightAngle;
    line.points = {std::to_string(a->m_uBikoId1), std::to_string(a->m_uBikoId2),
                   std::to_string(b->m_uBikoId1), std::to_string(b->m_uBikoId2)};
    Add(line);
  }
}

bool ZuZuspConditions::Add(const ZuConditionLine& line) {
  unsigned auId[4] = {};
  for (int i = 0; i < line.Points(); ++i) {
    const Measured* p = Find(line.points[static_cast<size_t>(i)]);
    if (p == nullptr) return false;
    auId[i] = p->uId;
  }
  if (line.kind == ZuConditionLine::eLength) {
    m_lengths.push_back({{auId[0], auId[1]}, line.dValue});
  } else if (line.kind == ZuConditionLine::eXAxis) {
    m_auXAxis[0] = auId[0];
    m_auXAxis[1] = auId[1];
  } else if (line.IsOfLines()) {
    m_conditions.push_back(line);
  }
  return true;
}

// Each length but the first as a ratio to that one.
std::vector<ZuConditionLine> ZuZuspConditions::LengthRatios() const {
  std::vector<ZuConditionLine> ratios;
  for (size_t i = 1; i < m_lengths.size(); ++i) {
    const Length &a = m_lengths[i], &b = m_lengths[0];
    ZuConditionLine line;
    line.kind = ZuConditionLine::eRatio;
    line.points = {std::to_string(a.auId[0]), std::to_string(a.auId[1]), std::to_string(b.auId[0]),
                   std::to_string(b.auId[1])};
    line.dValue = a.dLength / b.dLength;
    ratios.push_back(line);
  }
  return ratios;
}

eConditionsStatus ZuZuspConditions::Calc() {
  std::vector<ZuConditionLine> all = m_conditions;
  for (const ZuConditionLine& line : LengthRatios()) all.push_back(line);
  ZuPlaneConditions solver(eZuTrafo2DProjektiv);
  std::vector<const Measured*> used;
  for (Measured& p : m_points) p.uNumber = kNoNumber;
  const auto take = [&](Measured* p) {
    if (p->uNumber != kNoNumber) return true;
    double x = p->x, y = p->y;
    if (m_trafo.CompensateDistortion() &&
        m_trafo.GetDistortCameraParam().AdjustExact(&x, &y) != eCameraInverseOk) {
      return false;
    }
    p->uNumber = solver.AddPoint(ZuPoint2d(x, y));
    used.push_back(p);
    return true;
  };
  const auto found = [&](unsigned uId) { return Find(std::to_string(uId)); };
  for (const ZuConditionLine& line : all) {
    std::array<size_t, 4> numbers = {};
    for (size_t k = 0; k < 4; ++k) {
      Measured* p = Find(line.points[k]);
      if (!take(p)) return eConditionsNotFinite;
      numbers[k] = p->uNumber;
    }
    solver.Add(line.Condition(numbers));
  }
  std::vector<unsigned> ends;
  if (!m_lengths.empty()) ends.insert(ends.end(), {m_lengths[0].auId[0], m_lengths[0].auId[1]});
  if (m_auXAxis[0] != 0) ends.insert(ends.end(), {m_auXAxis[0], m_auXAxis[1]});
  for (const unsigned uId : ends) {
    if (!take(found(uId))) return eConditionsNotFinite;
  }
  const eConditionsStatus eStatus = solver.Calc();
  m_strFree = solver.GetFree();
  if (eStatus != eConditionsOk) return eStatus;

  m_results.clear();
  for (size_t i = 0; i < all.size(); ++i) {
    const ZuPlaneCondition& c = solver.GetConditions()[i];
    m_results.push_back({all[i], c.bUsed, c.dResidual});
  }
  m_moves.clear();
  std::vector<ZuPoint2d> adjusted;  // in the plane
  for (size_t i = 0; i < used.size(); ++i) {
    const ZuVector2d move = solver.GetMoves()[i];
    m_moves.push_back({used[i]->uId, move.x, move.y});
    double x = used[i]->x, y = used[i]->y;
    if (m_trafo.CompensateDistortion()) m_trafo.GetDistortCameraParam().AdjustExact(&x, &y);
    adjusted.push_back(solver.Transform(ZuPoint2d(x, y) + move));
  }
  m_dSigma0 = solver.GetSigma0();
  m_iRedundancy = solver.GetRedundancy();
  const auto between = [&](const unsigned* puId) {
    return adjusted[found(puId[1])->uNumber] - adjusted[found(puId[0])->uNumber];
  };
  double dScale = 1.0;
  if (!m_lengths.empty()) dScale = m_lengths[0].dLength / between(m_lengths[0].auId).Norm();
  ZuVector2d axis(1.0, 0.0);
  ZuPoint2d origin(0.0, 0.0);
  if (m_auXAxis[0] != 0) {
    axis = between(m_auXAxis);
    origin = adjusted[found(m_auXAxis[0])->uNumber];
  }
  const double dLength = axis.Norm();
  double adMap[9];
  solver.GetMap(adMap);
  m_zusp = Similarity(dScale * axis.x / dLength, dScale * axis.y / dLength, origin.x, origin.y) *
           ZuMatrix(adMap, 3, 3);
  for (int i = 0; i < 9; ++i) {
    if (!std::isfinite(m_zusp.GetData()[i])) return eConditionsNotFinite;
  }
  return eConditionsOk;
}

void ZuZuspConditions::Store(ZuZuspTrafo* pTrafo) const {
  ZuMatrix identity(4, 4);
  identity.SetIdent();
  pTrafo->SetMatrices(m_zusp, identity);
}
