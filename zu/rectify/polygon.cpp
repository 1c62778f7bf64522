#include "zu/rectify/polygon.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <ostream>

#include "zu/foundation/debug.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/reader_object.h"
#include "zu/rectify/polygon_tools.h"
#include "zu/rectify/region.h"

namespace {

// Columns of the modes 0 to 3, then of any other.
constexpr eZuPointRWMask kColumns[][5] = {{eZuPointRWX, eZuPointRWY},
                                          {eZuPointRWId, eZuPointRWX, eZuPointRWY},
                                          {eZuPointRWX, eZuPointRWY, eZuPointRWZ},
                                          {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ},
                                          {eZuPointRWEnd}};

const eZuPointRWMask* ColumnsOf(ELPolygonMode eMode) {
  return kColumns[eMode >= eLPolygonXY && eMode <= eLPolygonIdXYZ ? eMode : 4];
}

bool IsBetween(double d, double dMin, double dMax) { return dMin <= d && d <= dMax; }

}  // namespace

ZuPolygon::ZuPolygon(ELPolygonMode eMode) : m_eMode(eMode) {}

ZuPolygon::ZuPolygon(ZuPointList* pPoints, ELPolygonMode eMode) : m_eMode(eMode) {
  AddPoint(pPoints);
}

ZuPolygon::ZuPolygon(const ZuPoint& p1, const ZuPoint& p2, ELPolygonMode eMode) : m_eMode(eMode) {
  MakePolygon(p1, p2);
}

ZuPolygon::ZuPolygon(const ZuRegion& region) : m_eMode(eLPolygonXY) {
  MakePolygon(region.GetLL(), region.GetUR());
}

bool ZuPolygon::AddPoint(const ZuPoint& point) {
  const bool bFirst = m_points.IsEmpty();
  zu::internal::Taken(m_points.Add(point));
  if (bFirst) m_ptMin = m_ptMax = point;
  UpdateMinMax(point);
  return true;
}

bool ZuPolygon::AddPoint(const ZuPointList* pPoints) {
  if (pPoints == nullptr) return true;
  const ZuPoint* pLast = pPoints->Last();  // the list may be the ring itself
  for (const ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    AddPoint(*p);
    if (p == pLast) break;
  }
  return true;
}

void ZuPolygon::MakePolygon(const ZuPoint& p1, const ZuPoint& p2) {
  m_ptMin = m_ptMax = p1;
  UpdateMinMax(p2);
  const double adX[] = {m_ptMin.m_dX, m_ptMax.m_dX, m_ptMax.m_dX, m_ptMin.m_dX};
  const double adY[] = {m_ptMin.m_dY, m_ptMin.m_dY, m_ptMax.m_dY, m_ptMax.m_dY};
  for (int i = 0; i < 4; ++i) {
    zu::internal::Taken(m_points.Add(ZuPoint(0, adX[i], adY[i])));
  }
  m_points.Renumber(1, nullptr, 1);
}

void ZuPolygon::UpdateMinMax(const ZuPoint& point) {
  m_ptMin.m_dX = std::min(m_ptMin.m_dX, point.m_dX);
  m_ptMin.m_dY = std::min(m_ptMin.m_dY, point.m_dY);
  m_ptMin.m_dZ = std::min(m_ptMin.m_dZ, point.m_dZ);
  m_ptMax.m_dX = std::max(m_ptMax.m_dX, point.m_dX);
  m_ptMax.m_dY = std::max(m_ptMax.m_dY, point.m_dY);
  m_ptMax.m_dZ = std::max(m_ptMax.m_dZ, point.m_dZ);
}

void ZuPolygon::UpdateMinMax() {
  if (m_points.IsEmpty()) return;
  m_ptMin = m_ptMax = *m_points.First();
  for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next()) UpdateMinMax(*p);
}

ZuRegion ZuPolygon::GetRegion() const { return ZuRegion(m_ptMin, m_ptMax); }

ZuPoint ZuPolygon::Center() const { return ZuCalcGravitycenter(m_points); }

bool ZuPolygon::IsInBox(const ZuPoint& point) const {
  const bool bInXY = IsBetween(point.m_dX, m_ptMin.m_dX, m_ptMax.m_dX) &&
                     IsBetween(point.m_dY, m_ptMin.m_dY, m_ptMax.m_dY);
  switch (m_eMode) {
    case eLPolygonXY:
    case eLPolygonIdXY:
      return bInXY;
    case eLPolygonXYZ:
    case eLPolygonIdXYZ:
      return bInXY && IsBetween(point.m_dZ, m_ptMin.m_dZ, m_ptMax.m_dZ);
  }
  return false;
}

double ZuPolygon::Area(bool /*bClosed*/) const {
  if (!m_points.CountMoreThan(2)) return -1.0;
  double dSum = 0.0;
  for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pNext = p->Next() != nullptr ? p->Next() : m_points.First();
    dSum += (pNext->m_dY + p->m_dY) * (pNext->m_dX - p->m_dX) * 0.5;
  }
  return std::fabs(dSum);
}

double ZuPolygon::Length(bool bClosed) const {
  if (!m_points.CountMoreThan(1)) return -1.0;
  const ZuPoint& first = *m_points.First();
  const ZuPoint& last = *m_points.Last();
  double dSum = 0.0;
  for (const ZuPoint* p = &first; p->Next() != nullptr; p = p->Next()) {
    dSum += p->Distance(*p->Next());
  }
  if (bClosed && m_points.CountMoreThan(2) && !(first == last)) dSum += last.Distance(first);
  return dSum;
}

// 0 0  10 0  10 5  0 5
int ZuPolygon::Read(ZuReaderObject* pObject) {
  m_points.Destroy();
  ZuPointList rows{TZuFormatTable<eZuPointRWMask>(ColumnsOf(m_eMode))};
  const auto takeRows = [this, &rows] {
    if (rows.Count() == 2) {
      MakePolygon(*rows.First(), *rows.Last());
    } else {
      AddPoint(&rows);
    }
  };
  try {
    rows.Read(pObject);
  } catch (const ZuParserStatus&) {
    takeRows();
    throw;
  } catch (const std::bad_alloc&) {
    AddPoint(&rows);  // the two rows there are may be the first ones of more
    throw;
  }
  takeRows();
  return 1;
}

std::ostream& ZuPolygon::Write(std::ostream& os) const { return os; }

std::ostream& ZuPolygon::Export(std::ostream& os) const {
  return m_points.Export(os, TZuFormatTable<eZuPointRWMask>(ColumnsOf(m_eMode)));
}

void ZuPolygon::DbgPrintf(const char* szTitle, bool bPoints) const {
  dbgprintf("%s: mode %d, %d points, %.4f %.4f %.4f  %.4f %.4f %.4f\n",
            szTitle != nullptr ? szTitle : "Polygon", static_cast<int>(m_eMode), m_points.Count(),
            m_ptMin.m_dX, m_ptMin.m_dY, m_ptMin.m_dZ, m_ptMax.m_dX, m_ptMax.m_dY, m_ptMax.m_dZ);
  if (bPoints) m_points.DbgPrintf(szTitle);
}
