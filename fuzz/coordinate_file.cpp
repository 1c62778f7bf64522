// A coordinate file, by tables of columns that the last bytes choose. What is written reads back.
#include <algorithm>
#include <sstream>

#include "fuzz/points_use.h"
#include "zu/photo/detect_files.h"

namespace {

// A name with a quote inside has no form in a file.
bool IsWritable(const ZuPointList& list) {
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    if (p->GetName().contains('"')) return false;
  }
  return true;
}

void CheckRoundTrip(const ZuPointList& list) {
  static constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWName, eZuPointRWX,
                                                eZuPointRWY,  eZuPointRWZ,    eZuPointRWEnd};
  ZuPointList written(list), again;
  if (!IsWritable(list)) return;
  written.Renumber(1, nullptr, 1);  // a point without id has no line of its own
  Require(written.WriteFile(Input::OutputPath(), Columns(kColumns)) == 1);
  Require(again.ReadFile(Input::OutputPath(), Columns(kColumns)) == list.Count());
  const ZuPoint* q = again.First();
  for (const ZuPoint* p = written.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(p->GetId() == q->GetId() && p->GetName() == q->GetName());
    Require(IsClose(p->m_dX, q->m_dX) && IsClose(p->m_dY, q->m_dY) && IsClose(p->m_dZ, q->m_dZ));
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
  CheckRoundTrip(list);
  return 0;
}
