#include "zu/rectify/region.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "zu/foundation/debug.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/points/format_table.h"
#include "zu/rectify/polygon_tools.h"

namespace {

constexpr eZuPointRWMask kColumns[] = {eZuPointRWX, eZuPointRWY, eZuPointRWEnd};

// The interval whose low bound is lower reaches the other's low bound.
bool OverlapInterval(double dLow1, double dHigh1, double dLow2, double dHigh2) {
  return dLow1 <= dLow2 ? dHigh1 >= dLow2 : dHigh2 >= dLow1;
}

bool IsBetween(double d, double dBound1, double dBound2) {
  return std::min(dBound1, dBound2) <= d && d <= std::max(dBound1, dBound2);
}

}  // namespace

ZuRegion::ZuRegion(const ZuPoint& p1, const ZuPoint& p2)
    : ZuRegion(p1.m_dX, p1.m_dY, p2.m_dX, p2.m_dY) {}

ZuRegion::ZuRegion(double x1, double y1, double x2, double y2) {
  Set(x1, y1, x2, y2);
  Sort();
}

bool ZuRegion::operator==(const ZuRegion& region) const {
  return Left() == region.Left() && Bottom() == region.Bottom() && Right() == region.Right() &&
         Top() == region.Top();
}

ZuPoint ZuRegion::GetUL() const { return ZuPoint(0, Left(), Top()); }

ZuPoint ZuRegion::GetLR() const { return ZuPoint(0, Right(), Bottom()); }

ZuPoint ZuRegion::GetCenter() const {
  return ZuPoint(0, (Left() + Right()) * 0.5, (Bottom() + Top()) * 0.5);
}

void ZuRegion::Get(double& x1, double& y1, double& x2, double& y2) const {
  x1 = Left();
  y1 = Bottom();
  x2 = Right();
  y2 = Top();
}

void ZuRegion::Set(const ZuRegion& region) { *this = region; }

void ZuRegion::Set(double x1, double y1, double x2, double y2) {
  Left() = x1;
  Bottom() = y1;
  Right() = x2;
  Top() = y2;
}

void ZuRegion::Sort() {
  if (Left() > Right()) std::swap(Left(), Right());
  if (Bottom() > Top()) std::swap(Bottom(), Top());
}

ZuRegion ZuRegion::Intersect(const ZuRegion& region) const {
  ZuRegion common;
  ZuIntervall(common.Bottom(), common.Top(), Bottom(), Top(), region.Bottom(), region.Top());
  ZuIntervall(common.Left(), common.Right(), Left(), Right(), region.Left(), region.Right());
  common.Sort();
  return common;
}

ZuRegion ZuRegion::Union(const ZuRegion& region) const {
  ZuRegion both;
  both.Set(std::max({Left(), Right(), region.Left(), region.Right()}),
           std::max({Bottom(), Top(), region.Bottom(), region.Top()}),
           std::min({Left(), Right(), region.Left(), region.Right()}),
           std::min({Bottom(), Top(), region.Bottom(), region.Top()}));
  return both;
}

bool ZuRegion::Overlap(const ZuRegion* pRegion) const {
  return OverlapInterval(Left(), Right(), pRegion->Left(), pRegion->Right()) &&
         OverlapInterval(Bottom(), Top(), pRegion->Bottom(), pRegion->Top());
}

bool ZuRegion::Overlap(const ZuPoint* pPoint) const {
  return IsBetween(pPoint->m_dX, Left(), Right()) && IsBetween(pPoint->m_dY, Bottom(), Top());
}

ZuRegion ZuRegion::operator+(const ZuRegion& region) const {
  ZuRegion sum;
  sum.Set(Left() + region.Left(), Bottom() + region.Bottom(), Right() + region.Right(),
          Top() + region.Top());
  return sum;
}

ZuRegion ZuRegion::operator-(const ZuRegion& region) const {
  ZuRegion difference;
  difference.Set(Left() - region.Left(), Bottom() - region.Bottom(), Right() - region.Right(),
                 Top() - region.Top());
  return difference;
}

ZuRegion& ZuRegion::operator+=(double d) {
  Set(Left() - d, Bottom() - d, Right() + d, Top() + d);
  return *this;
}

ZuRegion& ZuRegion::operator-=(double d) {
  Set(Left() + d, Bottom() + d, Right() - d, Top() - d);
  return *this;
}

// -11.5 -8.0 11.5 8.0
int ZuRegion::Read(ZuReaderObject* pObject) {
  const TZuFormatTable<eZuPointRWMask> columns(kColumns);
  m_ptLL.Read(pObject, columns);
  m_ptUR.Read(pObject, columns);
  return 1;
}

std::ostream& ZuRegion::Write(std::ostream& os) const { return os; }

std::ostream& ZuRegion::Export(std::ostream& os) const {
  zu::internal::WriteValues(os, Left(), Bottom(), Right(), Top());
  return os;
}

void ZuRegion::DbgPrintf(const char* szTitle) const {
  dbgprintf("%s: %.4f %.4f  %.4f %.4f\n", szTitle != nullptr ? szTitle : "Region", Left(), Bottom(),
            Right(), Top());
}

void ConvertUnit(ZuRegion* pRegion, eZuUnit eFrom, eZuUnit eTo) {
  if (pRegion == nullptr) return;
  for (double* pd : {&pRegion->Left(), &pRegion->Bottom(), &pRegion->Right(), &pRegion->Top()}) {
    ConvertUnit(pd, eFrom, eTo);
  }
}
