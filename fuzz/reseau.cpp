// Reseau files and digital camera files.
#include <sstream>

#include "fuzz/input.h"
#include "zu/photo/reseau_data_desc.h"
#include "zu/photo/reseau_file.h"

namespace {

void Use(ZuReseauFile& reseau) {
  reseau.GetReseauWidth();
  reseau.GetReseauArea();
  reseau.GetCCDPixelSize();
  reseau.GetCCDMPixel();
  Require(reseau.GetDescName().OK());
  unsigned int auIds[4] = {};
  reseau.FindCrossId(auIds[0], auIds[1]);
  reseau.SelectCross(auIds, 2);
  Require(reseau.FindUserSelectedCrosses(auIds, 4) <= 4);
  std::ostringstream os;
  reseau.WriteHeaderComment(os);
  reseau.Write(os);
  reseau.WriteDigitalCameraFormat(os);
  ZuReseauFile copy(reseau);
  copy.GenerateDummyData();
  Require(copy.IsValid() == reseau.IsValid());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const char* const szPath = input.Path();

  ZuReseauFile reseau;
  Require(reseau.ReadFile(String(szPath)) == 1);
  Use(reseau);

  ZuReseaufileList list;
  Require(list.ReadReseauFile(String(szPath)) == list.Count());
  int iLeft = 8;
  for (ZuReseauFile* p = list.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    Use(*p);
    Require(list.FindReseauFile(ZuReseauDataDesc(p)) != nullptr);
  }
  const ZuReseaufileList copy(list);
  Require(copy.Count() == list.Count() && list.WriteDigitalCameraFormat(Input::OutputPath()));
  ZuReseaufileList again;
  again.ReadReseauFile(String(Input::OutputPath()));
  again.ReadReseauFile(String(szPath));
  return 0;
}
