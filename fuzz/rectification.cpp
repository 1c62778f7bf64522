// Rectifications in both forms, and their definition by lines; both read back as written.
#include "fuzz/photo_use.h"
#include "fuzz/there_and_back.h"

namespace {

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

// RM and others of the camera of the distortion are in no file.
std::string Fields(const ZuZuspTrafo& trafo) {
  ZuZuspTrafo kept(trafo);
  ZuCamera camera(trafo.GetDistortCameraParam());
  camera.m_dRMax = 0.0;
  kept.SetDistortCameraParam(camera);
  return FieldsOf(kept);
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
    CheckThereAndBack(*p, ZuZuspTrafo(), &Fields);
    for (const auto& xy : kImagePoints) CheckMap(*p, xy[0], xy[1]);
  }
  for (const auto& xy : kImagePoints) {
    ZuPoint point(1, xy[0], xy[1]);
    infos.Transform(&point);
  }
  CheckThereAndBack(lines);
  return 0;
}
