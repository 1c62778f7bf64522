// Reseau files and digital camera files; both forms, written, read back.
#include <sstream>

#include "fuzz/there_and_back.h"
#include "zu/photo/bundle_aob.h"
#include "zu/photo/photo.h"
#include "zu/photo/reseau_data_desc.h"
#include "zu/photo/reseau_file.h"
#include "zu/rectify/polygon.h"

namespace {

constexpr double kDigits6 = 1e-5;   // relative, of six digits and the rounding of the last
constexpr int kLongestText = 2000;  // leaves a line room for two of them

bool IsWritable(const String& text) { return text.length() <= kLongestText && !text.contains('"'); }

std::string Fields(const ZuReseauFile& reseau) {
  FieldText text;
  text(reseau.GetComment(), reseau.GetPhotoRegion(), reseau.GetBoxRegion());
  for (const ZuPoint* p = reseau.GetCrossList().First(); p != nullptr; p = p->Next()) {
    text(p->GetId(), p->m_dX, p->m_dY, static_cast<int>(p->GetControlFlags()));
  }
  return text.Text();
}

std::string Exported(const ZuReseauFile& reseau) {
  std::ostringstream os;
  reseau.Export(os);
  return os.str();
}

void CheckReseauForm(const ZuReseauFile& reseau) {
  const std::string strText = Exported(reseau);
  if (!HasLinesToRead(strText)) return;
  ZuReseauFile again;
  again.ReadFile(String(Input::Path(strText)));
  Require(again.IsValid() && again.GetReadErrorCount() == 0);
  Require(Fields(again) == Fields(reseau));
  Require(Exported(again) == strText);
}

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
  reseau.WriteDigitalCameraFormat(os);
  ZuReseauFile copy(reseau);
  copy.GenerateDummyData();
  Require(copy.IsValid() == reseau.IsValid());
  CheckReseauForm(reseau);
}

ZuPolygon Frame(const ZuReseauFile& reseau) {
  ZuPointList crosses(reseau.GetCrossList());
  return ZuPolygon(&crosses, eLPolygonXY);
}

// Whether a line of the digital form gives this format back.
bool IsDigital(const ZuReseauFile& reseau) {
  if (reseau.GetCrossList().Count() != 4) return false;
  const ZuPolygon frame = Frame(reseau);
  return IsWritable(reseau.GetName()) && IsWritable(reseau.GetComment()) &&
         std::isfinite(1e6 * frame.Width()) && std::isfinite(1e6 * frame.Height());
}

bool IsNear(double a, double b) { return std::fabs(a - b) <= kDigits6 * std::fabs(a) + 1e-320; }

void CheckDigitalForm(ZuReseaufileList& list) {
  ZuReseaufileList digital, again;
  for (ZuReseauFile* p = list.First(); p != nullptr; p = p->Next()) {
    if (IsDigital(*p)) digital.Add(*p);
  }
  Require(digital.WriteDigitalCameraFormat(Input::OutputPath()));
  Require(again.ReadReseauFile(String(Input::OutputPath())) == digital.Count());
  ZuReseauFile* q = again.First();
  for (ZuReseauFile* p = digital.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(p->GetName() == q->GetName() && p->GetSubId() == q->GetSubId());
    Require(p->GetComment() == q->GetComment());
    Require(p->GetExifPixelWidth() == q->GetExifPixelWidth());
    Require(p->GetExifPixelHeight() == q->GetExifPixelHeight());
    Require(IsNear(Frame(*p).Width(), Frame(*q).Width()));
    Require(IsNear(Frame(*p).Height(), Frame(*q).Height()));
    Require(again.FindReseauFile(ZuReseauDataDesc(q)) != nullptr);
  }
}

// The same text as orientations: what is written reads back.
void CheckOrientations(const char* szPath) {
  ZuBundleAOBList list, again;
  list.ReadFile(szPath);
  std::ostringstream first, second;
  list.Export(first);
  Require(again.ReadFile(Input::Path(first.str())));
  again.Export(second);
  Require(first.str() == second.str() && again.Count() == list.Count());
  ZuPhoto photo(1);
  const double adCovariance[36] = {1e-6, 0.5, -2.0};
  for (ZuBundleAOB* p = list.First(); p != nullptr; p = p->Next()) {
    if (p->ApplyTo(&photo)) ZuBundleAOB(photo).SetSigmas(adCovariance);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const char* const szPath = input.Path();

  ZuReseauFile reseau;
  Require(reseau.ReadFile(String(szPath)) == 1);
  ZuReseaufileList list;
  Require(list.ReadReseauFile(String(szPath)) == list.Count());
  Use(reseau);
  int iLeft = 8;
  for (ZuReseauFile* p = list.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    Use(*p);
    Require(list.FindReseauFile(ZuReseauDataDesc(p)) != nullptr);
  }
  const ZuReseaufileList copy(list);
  Require(copy.Count() == list.Count());
  CheckDigitalForm(list);
  CheckOrientations(input.Path());
  return 0;
}
