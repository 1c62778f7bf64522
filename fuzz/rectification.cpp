// Rectifications in both forms, and their definition by lines, which reads back as written.
#include "fuzz/photo_use.h"
#include "fuzz/points_use.h"

namespace {

// Whether a keyword file gives back all its numbers.
bool IsKept(const ZuZuspParallelDef& def) {
  bool bKept = true;
  for (const ZuZuspDefLine* p = def.GetLines().First(); p != nullptr; p = p->Next()) {
    bKept = bKept && ::IsKept(p->GetId()) && ::IsKept(p->m_dValue);
    bKept = bKept && ::IsKept(p->m_uBikoId1) && ::IsKept(p->m_uBikoId2);
  }
  const auto& constraints = def.GetConstraints();
  for (const ZuZuspDefLineConstraint* p = constraints.First(); p != nullptr; p = p->Next()) {
    bKept = bKept && ::IsKept(p->m_dValue);
    bKept = bKept && ::IsKept(p->m_uLineId1) && ::IsKept(p->m_uLineId2);
  }
  return bKept;
}

void CheckRoundTrip(const ZuZuspParallelDef& lines) {
  if (!IsKept(lines)) return;
  std::ostringstream os;
  lines.Write(os << "DEF {\n") << "}\n";
  ZuZuspParallelDef again;
  ZuReaderObject keywords[] = {{"DEF", Link(&again, &ZuZuspParallelDef::Read)}};
  ReadKeywords(Input::Path(os.str()), keywords, false);
  Require(again.GetLines().Count() == lines.GetLines().Count());
  Require(again.GetConstraints().Count() == lines.GetConstraints().Count());
  const ZuZuspDefLine* q = again.GetLines().First();
  for (const ZuZuspDefLine* p = lines.GetLines().First(); p; p = p->Next(), q = q->Next()) {
    Require(p->GetId() == q->GetId() && p->m_iXAxis == q->m_iXAxis);
    Require(p->m_uBikoId1 == q->m_uBikoId1 && p->m_uBikoId2 == q->m_uBikoId2);
    Require(IsClose(p->m_dValue, q->m_dValue));
  }
  const ZuZuspDefLineConstraint* r = again.GetConstraints().First();
  for (const auto* p = lines.GetConstraints().First(); p; p = p->Next(), r = r->Next()) {
    Require(p->m_uLineId1 == r->m_uLineId1 && p->m_uLineId2 == r->m_uLineId2);
    Require(p->m_eType == r->m_eType && IsClose(p->m_dValue, r->m_dValue));
  }
}

// A row of a matrix with the homogeneous point, and what the sum may be off by.
struct Row {
  double dSum = 0.0, dError = 0.0;
};
Row Apply(const ZuMatrix& m, int iRow, const double (&adPoint)[4], int n) {
  Row row;
  for (int j = 0; j < n; ++j) {
    const double d = m.GetElem(iRow, j + 1) * adPoint[j];
    row.dSum += d;
    row.dError += 1e-15 * std::fabs(d);
  }
  return row;
}

// The map without distortion, by a second method where that is well determined: the plane map, then
// the one in space.
void CheckMap(const ZuZuspTrafo& trafo, double x, double y) {
  if (trafo.CompensateDistortion()) return;
  const ZuMatrix &plane = trafo.GetZuspMat(), &space = trafo.GetTransMat();
  const double adIn[4] = {x, y, 1.0, 0.0};
  const Row w = Apply(plane, 3, adIn, 3);
  if (!(std::fabs(w.dSum) > 1e-6 + 1e6 * w.dError)) return;
  const double adFlat[4] = {Apply(plane, 1, adIn, 3).dSum / w.dSum,
                            Apply(plane, 2, adIn, 3).dSum / w.dSum, 0.0, 1.0};
  const Row v = Apply(space, 4, adFlat, 4);
  ZuPoint point(1, x, y);
  trafo.Transform(&point, &point);
  const double adOut[] = {point.m_dX, point.m_dY, point.m_dZ};
  for (int i = 0; i < 3; ++i) {
    const Row row = Apply(space, i + 1, adFlat, 4);
    // What the plane map loses by cancellation is lost here too.
    double dLost = 0.0;
    for (int j = 0; j < 2; ++j) {
      dLost += std::fabs(space.GetElem(i + 1, j + 1)) * Apply(plane, j + 1, adIn, 3).dError;
    }
    const double dExpected = row.dSum / v.dSum;
    if (!std::isfinite(dExpected) || !(std::fabs(v.dSum) > 1e-6 + 1e6 * v.dError)) continue;
    const double dError = (row.dError + dLost / std::fabs(w.dSum)) / std::fabs(v.dSum);
    Require(std::fabs(adOut[i] - dExpected) <= 1e-5 * std::fabs(dExpected) + 100.0 * dError);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const char* const szPath = input.Path();
  ZuZuspTrafoList list;
  ZuZuspPlaneInfoList infos;
  ZuZuspParallelDef lines;
  ZuReaderObject keywords[] = {{"ZUSPPLANE", Link(&list, &ZuZuspTrafoList::AddTrafo)},
                               {"ZUSPTRAFO", Link(&list, &ZuZuspTrafoList::AddTrafoV50)},
                               {"PLANEINFO", Link(&infos, &ZuZuspPlaneInfoList::AddPlane)},
                               {"PARALLELDEF", Link(&lines, &ZuZuspParallelDef::Read)}};
  ReadKeywords(szPath, keywords, (input.Option() & 4U) != 0);

  ZuPhoto photo(1);
  photo.SetDigiRegion(ZuRegion(0.0, 0.0, 640.0, 480.0));
  photo.SetPhototype(eZuPhototypeDigital);
  photo.SetActiveFlag(eZuPhotoStateActive);
  int iLeft = 8;
  for (ZuZuspTrafo* p = list.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    Require(p->GetZuspMat().GetZeilen() == 3 && p->GetTransMat().GetZeilen() == 4);
    UseRectification(*p, &photo);
    CheckRoundTrip(p->GetParallelDef());
    for (const auto& xy : kImagePoints) CheckMap(*p, xy[0], xy[1]);
  }
  for (const auto& xy : kImagePoints) {
    ZuPoint point(1, xy[0], xy[1]);
    infos.Transform(&point);
  }
  CheckRoundTrip(lines);
  return 0;
}
