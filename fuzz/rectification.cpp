// Rectifications in both forms, and their definition by lines, which reads back as written.
#include "fuzz/photo_use.h"
#include "fuzz/points_use.h"

namespace {

int CountLines(const ZuZuspParallelDef& lines) {
  return lines.GetLines().Count() + lines.GetConstraints().Count();
}

// Whether a keyword file gives back all its numbers.
bool IsKept(const ZuZuspParallelDef& def) {
  bool bKept = true;
  for (const ZuZuspDefLine* p = def.GetLines().First(); p != nullptr; p = p->Next()) {
    bKept = bKept && ::IsKept(p->GetId()) && ::IsKept(p->m_dValue);
  }
  const auto& constraints = def.GetConstraints();
  for (const ZuZuspDefLineConstraint* p = constraints.First(); p != nullptr; p = p->Next()) {
    bKept = bKept && ::IsKept(p->m_dValue);
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
  Require(CountLines(again) == CountLines(lines));
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
  }
  for (const auto& xy : kImagePoints) {
    ZuPoint point(1, xy[0], xy[1]);
    infos.Transform(&point);
  }
  CheckRoundTrip(lines);
  return 0;
}
