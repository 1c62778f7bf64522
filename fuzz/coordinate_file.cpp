// A coordinate file, by tables of columns that the last bytes choose. What is written reads back.
#include <algorithm>
#include <sstream>
#include <type_traits>

#include "fuzz/points_use.h"
#include "zu/photo/detect_files.h"
#include "zu/points/table.h"

namespace {

// A name with a quote inside has no form in a file, a line above 1999 bytes is read as several.
bool IsWritable(const ZuPointList& list) {
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    if (p->GetName().contains('"') || p->GetName().length() > 1000) return false;
    if (!IsKept(p->GetId())) return false;
  }
  return true;
}

bool IsSame(float a, float b) { return (std::isnan(a) && std::isnan(b)) || a == b; }

// Gives the fields that no column has filled values that differ from each other.
void FillFields(ZuPoint* p) {
  int* const apiFields[] = {&p->m_iPhoto, &p->m_iCamera, &p->m_iColor};
  double* const apdFields[] = {&p->m_dX,  &p->m_dY,     &p->m_dZ,     &p->m_dDX,   &p->m_dDY,
                               &p->m_dDZ, &p->m_dRedu1, &p->m_dRedu2, &p->m_dRedu3};
  float* const apfFields[] = {&p->m_fVX, &p->m_fVY, &p->m_fVZ};
  int n = 0;
  const auto fill = [&n](auto* pField) {
    ++n;
    if (*pField == 0) *pField = static_cast<std::decay_t<decltype(*pField)>>(n);
  };
  for (int* pi : apiFields) fill(pi);
  for (double* pd : apdFields) fill(pd);
  for (float* pf : apfFields) fill(pf);
  fill(&p->m_snImo);
  fill(&p->m_sControl);
}

// Every column that keeps what it reads; the code, which may be blank, by digits or as a number.
void CheckRoundTrip(const ZuPointList& list, bool bDigits) {
  const eZuPointRWMask aeColumns[] = {
      eZuPointRWDX,     eZuPointRWDY,
      eZuPointRWDZ,     eZuPointRWName,
      eZuPointRWX,      eZuPointRWY,
      eZuPointRWZ,      eZuPointRWFlag,
      eZuPointRWPhoto,  eZuPointRWRedu1,
      eZuPointRWCamera, eZuPointRWRedu2,
      eZuPointRWRedu3,  eZuPointRWColor,
      eZuPointRWNImo,   eZuPointRWVX,
      eZuPointRWVY,     eZuPointRWVZ,
      eZuPointRWId,     bDigits ? eZuPointRWCode : eZuPointRWCodeNum,
      eZuPointRWEnd};
  const int iCodeBits = bDigits ? 7 : -1;
  if (!IsWritable(list)) return;
  ZuPointList written(list), again;
  for (ZuPoint* p = written.First(); p != nullptr; p = p->Next()) FillFields(p);
  Require(written.WriteFile(Input::OutputPath(), Columns(aeColumns)) == 1);
  Require(again.ReadFile(Input::OutputPath(), Columns(aeColumns)) == list.Count());
  RequireSamePoints(written, again);
  const ZuPoint* q = again.First();
  for (const ZuPoint* p = written.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(IsClose(p->m_dDX, q->m_dDX) && IsClose(p->m_dDY, q->m_dDY));
    Require(IsClose(p->m_dDZ, q->m_dDZ) && IsClose(p->m_dRedu1, q->m_dRedu1));
    Require(IsClose(p->m_dRedu2, q->m_dRedu2) && IsClose(p->m_dRedu3, q->m_dRedu3));
    Require(IsSame(p->m_fVX, q->m_fVX) && IsSame(p->m_fVY, q->m_fVY));
    Require(IsSame(p->m_fVZ, q->m_fVZ) && p->m_iColor == q->m_iColor);
    Require(p->GetFlag() == q->GetFlag() && p->m_iPhoto == q->m_iPhoto);
    Require(p->m_iCamera == q->m_iCamera && p->m_snImo == q->m_snImo);
    Require((p->m_sControl & iCodeBits) == (q->m_sControl & iCodeBits));
  }
}

// Held to their columns: a tolerant reading goes on behind the points of a strict one, and what
// either took is written so that all of it is taken again.
void ReadStrictly(const Input& input, const Columns& columns) {
  constexpr eZuPointRWMask kWritten[] = {eZuPointRWId, eZuPointRWName, eZuPointRWX,
                                         eZuPointRWY,  eZuPointRWZ,    eZuPointRWEnd};
  ZuPointList strict, tolerant, again;
  const ZuCoordinateReading reading = ZuReadCoordinates(input.Path(), columns, strict);
  const ZuCoordinateReading all =
      ZuReadCoordinates(input.Path(), columns, tolerant, eZuReadTolerant);
  Require(reading.m_aLines.size() <= all.m_aLines.size());
  Require(std::equal(reading.m_aLines.begin(), reading.m_aLines.end(), all.m_aLines.begin()));
  Require(all.m_aLines.size() == static_cast<std::size_t>(tolerant.Count()));
  if (!IsWritable(tolerant)) return;
  Require(tolerant.WriteFile(Input::OutputPath(), Columns(kWritten)) == 1);
  const ZuCoordinateReading back = ZuReadCoordinates(Input::OutputPath(), Columns(kWritten), again);
  Require(back.m_Findings.IsWhole());
  RequireSamePoints(tolerant, again);
}

// By what its first lines tell: points are what a line gave, and the form writes them.
void ReadAsTable(const Input& input) {
  for (const eZuReadMode eMode : {eZuReadStrict, eZuReadTolerant}) {
    ZuPointList points;
    const ZuTableReading reading = ZuReadTable(input.Path(), {}, points, eMode);
    Require(reading.m_aLines.size() == static_cast<std::size_t>(points.Count()));
    Require(reading.m_Form.m_aTitles.empty() ||
            reading.m_Form.m_aTitles.size() == reading.m_Form.m_aColumns.size());
    std::ostringstream os;
    ZuWriteTable(os, points, reading.m_Form);
    const std::string strText = os.str();
    Require(std::count(strText.begin(), strText.end(), '\n') >= points.Count());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const Columns columns = TakeColumns(input);
  const char* const szPath = input.Path();
  const ZuDetectZuvoFiles kind(szPath);
  Require(GetZuvoFileText(kind.GetType()) != nullptr);

  ZuPointList list;
  const int iCount = list.ReadFile(szPath, columns);
  Require(iCount == list.Count());
  std::ostringstream os;
  list.Write(os);
  const std::string strText = os.str();
  Require(strText.empty() || iCount > 0);
  Require(std::count(strText.begin(), strText.end(), '\n') >= std::max(0, iCount - 1));
  UsePoints(list);
  CheckRoundTrip(list, uSize % 2 == 0);
  ReadStrictly(input, columns);
  ReadAsTable(input);
  return 0;
}
