#include "zu/photo/reseau_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "zu/foundation/internal/to_int.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/points/point.h"

ZU_INSTANTIATE_LIST(ZuReseauFile);

namespace {

constexpr eZuPointRWMask kCrossFormat[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY,
                                           eZuPointRWCodeNum, eZuPointRWEnd};
constexpr short int kCorner = 2;             // control code of a picture's corner
constexpr int kSelected = 1;                 // flag bit of a cross selected by the user
constexpr double kUnknownPixelSize = 1e-06;  // [mm]
constexpr char kDummyText[] = ">>DUMMY DATA<<";

// Largest minus smallest value, from limits that no image reaches [mm].
template <class Value>
double Extent(const ZuPointList& list, Value value) {
  double dMin = 10000.0, dMax = -10000.0;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    dMin = std::min(dMin, value(*p));
    dMax = std::max(dMax, value(*p));
  }
  return dMax - dMin;
}

}  // namespace

ZuReseauFile::ZuReseauFile() { m_CrossList.SetMask(kCrossFormat); }

ZuReseauFile::ZuReseauFile(const ZuReseauFile& other) : ZuListnode() { *this = other; }

ZuReseauFile::ZuReseauFile(const String& path) : ZuReseauFile() { ReadFile(path); }

ZuReseauFile::~ZuReseauFile() = default;

ZuReseauFile& ZuReseauFile::operator=(const ZuReseauFile& other) {
  if (this == &other) return *this;
  ZuListnode::operator=(other);
  m_uSubId = other.m_uSubId;
  m_sComment = other.m_sComment;
  m_PhotoRegion = other.m_PhotoRegion;
  m_BoxRegion = other.m_BoxRegion;
  m_CrossList.Destroy();
  zu::internal::CopyAll(other.m_CrossList, &m_CrossList);
  m_CrossList.SetMask(kCrossFormat);
  m_bValid = other.m_bValid;
  m_iExifPixelWidth = other.m_iExifPixelWidth;
  m_iExifPixelHeight = other.m_iExifPixelHeight;
  return *this;
}

void ZuReseauFile::AddCross(unsigned int uId, double x, double y, short int sCode) {
  zu::internal::Taken(m_CrossList.Add(ZuPoint(uId, x, y, 0.0, sCode)));
}

void ZuReseauFile::CreateDigitalFormat(int w, int h, double ccdX, double ccdY) {
  m_iExifPixelWidth = w;
  m_iExifPixelHeight = h;
  const double hx = ccdX * 0.5, hy = ccdY * 0.5;
  const double ex = hx / 20.0 + hx, ey = hy / 20.0 + hy;
  m_PhotoRegion.Set(-ex, -ey, ex, ey);
  m_BoxRegion.Set(ex / 6.0, -ey, ex, ey / 6.0 - ey);
  AddCross(11, -hx, hy, kCorner);
  AddCross(12, hx, hy, kCorner);
  AddCross(21, -hx, -hy, kCorner);
  AddCross(22, hx, -hy, kCorner);
  m_bValid = true;
}

void ZuReseauFile::CreateDigitalFormat(const ZuRegion& pixels, const ZuRegion& bikos) {
  m_iExifPixelWidth = zu::internal::ToInt(pixels.Right() - pixels.Left());
  m_iExifPixelHeight = zu::internal::ToInt(pixels.Top() - pixels.Bottom());
  m_PhotoRegion = bikos;
  AddCross(11, bikos.Left(), bikos.Top(), kCorner);
  AddCross(12, bikos.Right(), bikos.Top(), kCorner);
  AddCross(21, bikos.Left(), bikos.Bottom(), kCorner);
  AddCross(22, bikos.Right(), bikos.Bottom(), kCorner);
  m_bValid = true;
}

void ZuReseauFile::GenerateDummyData() {
  if (m_bValid) return;
  SetName(kDummyText);
  m_sComment = kDummyText;
  m_PhotoRegion.Set(-20.0, -14.0, 20.0, 14.0);
  m_BoxRegion.Set(2.0, -14.0, 20.0, -12.0);
  const struct {
    unsigned int uId;
    double x, y;
  } crosses[] = {{11, -15.0, 10.0},  {14, 0.0, 10.0},  {17, 15.0, 10.0},
                 {31, -15.0, 0.0},   {34, 0.0, 0.0},   {37, 15.0, 0.0},
                 {51, -15.0, -10.0}, {54, 0.0, -10.0}, {57, 15.0, -10.0}};
  for (const auto& cross : crosses) AddCross(cross.uId, cross.x, cross.y, 0);
}

double ZuReseauFile::GetReseauWidth() const {
  return Extent(m_CrossList, [](const ZuPoint& p) { return p.m_dX; });
}

double ZuReseauFile::GetReseauHeight() const {
  return Extent(m_CrossList, [](const ZuPoint& p) { return p.m_dY; });
}

double ZuReseauFile::GetReseauArea() const { return GetReseauWidth() * GetReseauHeight(); }

double ZuReseauFile::GetCCDPixelSize() const {
  if (m_iExifPixelWidth == 0 || m_iExifPixelHeight == 0) return kUnknownPixelSize;
  return (GetReseauHeight() / m_iExifPixelHeight + GetReseauWidth() / m_iExifPixelWidth) * 0.5;
}

double ZuReseauFile::GetCCDMPixel() const {
  return static_cast<double>(m_iExifPixelWidth) * static_cast<double>(m_iExifPixelHeight);
}

String ZuReseauFile::GetDescName() const {
  String text = GetName();
  char szPart[64];
  if (m_uSubId != 0) {
    std::snprintf(szPart, sizeof szPart, " (%d)", static_cast<int>(m_uSubId));
    text += szPart;
  }
  if (m_iExifPixelWidth == 0 || m_iExifPixelHeight == 0) return GetName();
  std::snprintf(szPart, sizeof szPart, " %d * %d Pixel", m_iExifPixelWidth, m_iExifPixelHeight);
  text += szPart;
  return text;
}

int ZuReseauFile::FindCrossId(unsigned int& uFirst, unsigned int& uSecond) const {
  const ZuPoint* p =
      FindNearest(ZuPoint(0, m_PhotoRegion.Left(), m_PhotoRegion.Top(), 0.0, 0), nullptr);
  if (p != nullptr) uFirst = p->GetId();
  p = FindNearest(ZuPoint(0, m_PhotoRegion.Right(), m_PhotoRegion.Bottom(), 0.0, 0), nullptr);
  if (p != nullptr) uSecond = p->GetId();
  return p != nullptr ? 1 : 0;
}

ZuPoint* ZuReseauFile::FindNearest(const ZuPoint& point, double* pdDistance) const {
  return m_CrossList.FindNearest(point, pdDistance);
}

int ZuReseauFile::SelectCross(unsigned int* puIds, int n) {
  if (puIds == nullptr || n <= 0) return 0;
  for (ZuPoint* p = m_CrossList.First(); p != nullptr; p = p->Next()) p->ClearFlag(kSelected);
  int iFound = 0;
  for (int i = 0; i < n; ++i) {
    ZuPoint* p = m_CrossList.Find(puIds[i], 0, nullptr);
    if (p == nullptr) continue;
    p->SetFlag(kSelected);
    ++iFound;
  }
  return iFound;
}

int ZuReseauFile::FindUserSelectedCrosses(unsigned int* puIds, int iMax) const {
  int iFound = 0;
  for (const ZuPoint* p = m_CrossList.First(); p != nullptr && iFound < iMax; p = p->Next()) {
    if (p->IsFlagSet(kSelected) != 0) puIds[iFound++] = p->GetId();
  }
  return iFound;
}
