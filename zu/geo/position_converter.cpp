#include "zu/geo/position_converter.h"

#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/TransverseMercator.hpp>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
// Beyond limits that a position stands on, for the rounding on the way back [degrees].
constexpr double kSlack = 1e-9;
constexpr double kWidestGrid = 30.0;  // from the central meridian; series good to 35 [degrees]
constexpr double kUtmSouth = -80.5, kUtmNorth = 84.5;  // [degrees]
constexpr double kUtmWidth = 1e6;                      // easting at most [m]
constexpr double kInnermost = 1.0 / 64.0;              // of a; the evolute ends at a / 75
constexpr double kOutermost = 100.0;                   // of a; beyond, metres lose micrometres

struct Place {
  double dLatitude, dLongitude, dHeight;  // [degrees], [m]
};
struct Space {
  double X, Y, Z;  // [m]
};

// East, north and up at the origin, as rows, in the geocentric system.
struct LocalAxes {
  Space origin{};
  double aadRow[3][3] = {};
};

bool IsFinitePosition(double x, double y, double z) {
  return std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
}

// Degrees pass as they are; by way of radians their last digit would go.
double DegreesOf(double d, eZuAngleUnit eUnit) {
  return eUnit == eZuAngleUnitDegree ? d : ConvertAngle(d, eUnit, eZuAngleUnitDegree);
}
double FromDegrees(double d, eZuAngleUnit eUnit) {
  return eUnit == eZuAngleUnitDegree ? d : ConvertAngle(d, eZuAngleUnitDegree, eUnit);
}

// One system on its ellipsoid, both ways.
class Side {
 public:
  Side(const ZuEllipsoid& ellipsoid, const ZuPositionSystem& system)
      : m_System(system), m_dA(ellipsoid.m_dA), m_Earth(ellipsoid.m_dA, Flattening(ellipsoid)) {
    if (system.m_eKind == eZuPositionTransverse) {
      m_Grid.emplace(ellipsoid.m_dA, Flattening(ellipsoid), system.m_dScale);
      double x = 0.0;
      m_Grid->Forward(0.0, system.m_dParallel, 0.0, x, m_dParallelNorthing);
    }
    if (system.m_eKind == eZuPositionLocal) SetAxes();
  }

  bool IsInSpace() const {
    return m_System.m_eKind == eZuPositionGeocentric || m_System.m_eKind == eZuPositionLocal;
  }
  bool IsGrid() const { return m_System.m_eKind == eZuPositionTransverse; }

  eZuPositionStatus ToPlace(const Space& in, Place* pPlace, ZuGridFigures* pGrid) const {
    switch (m_System.m_eKind) {
      case eZuPositionGeographic:
        return FromAngles(in, pPlace);
      case eZuPositionTransverse:
        return FromGrid(in, pPlace, pGrid);
      default:
        return FootPoint(ToGeocentric(in), pPlace);
    }
  }

  eZuPositionStatus FromPlace(const Place& place, Space* pOut, ZuGridFigures* pGrid) const {
    if (!IsOnEarth(place)) return eZuPositionOutside;
    switch (m_System.m_eKind) {
      case eZuPositionGeographic:
        pOut->X = FromDegrees(place.dLatitude, m_System.m_eUnit);
        pOut->Y = FromDegrees(place.dLongitude, m_System.m_eUnit);
        pOut->Z = place.dHeight;
        return eZuPositionOk;
      case eZuPositionTransverse:
        return ToGrid(place, pOut, pGrid);
      default:
        break;
    }
    Space s{};
    m_Earth.Forward(place.dLatitude, place.dLongitude, place.dHeight, s.X, s.Y, s.Z);
    const eZuPositionStatus eStatus = Reach(s);
    if (eStatus == eZuPositionOk) *pOut = FromGeocentric(s);
    return eStatus;
  }

  // Of systems in space.
  Space ToGeocentric(const Space& in) const {
    if (m_System.m_eKind == eZuPositionGeocentric) return in;
    const auto& r = m_Axes.aadRow;
    return {m_Axes.origin.X + r[0][0] * in.X + r[1][0] * in.Y + r[2][0] * in.Z,
            m_Axes.origin.Y + r[0][1] * in.X + r[1][1] * in.Y + r[2][1] * in.Z,
            m_Axes.origin.Z + r[0][2] * in.X + r[1][2] * in.Y + r[2][2] * in.Z};
  }
  Space FromGeocentric(const Space& in) const {
    if (m_System.m_eKind == eZuPositionGeocentric) return in;
    const auto& r = m_Axes.aadRow;
    const double dX = in.X - m_Axes.origin.X, dY = in.Y - m_Axes.origin.Y,
                 dZ = in.Z - m_Axes.origin.Z;
    return {r[0][0] * dX + r[0][1] * dY + r[0][2] * dZ, r[1][0] * dX + r[1][1] * dY + r[1][2] * dZ,
            r[2][0] * dX + r[2][1] * dY + r[2][2] * dZ};
  }

  eZuPositionStatus Reach(const Space& s) const {
    const double dRadius = std::hypot(s.X, s.Y, s.Z);
    if (!(dRadius <= kOutermost * m_dA)) return eZuPositionOutside;
    return dRadius < kInnermost * m_dA ? eZuPositionNearCentre : eZuPositionOk;
  }

 private:
  static double Flattening(const ZuEllipsoid& ellipsoid) {
    return ellipsoid.m_dInverseFlattening == 0.0 ? 0.0 : 1.0 / ellipsoid.m_dInverseFlattening;
  }

  bool IsOnEarth(const Place& place) const {
    return std::fabs(place.dLatitude) <= 90.0 && std::fabs(place.dLongitude) <= 360.0 &&
           place.dHeight > -m_dA && place.dHeight < kOutermost * m_dA;
  }

  void SetAxes() {
    const double dLat = m_System.m_dOriginLatitude, dLon = m_System.m_dOriginLongitude;
    Space& o = m_Axes.origin;
    m_Earth.Forward(dLat, dLon, m_System.m_dOriginHeight, o.X, o.Y, o.Z);
    const double s = std::sin(dLat * kDegree), c = std::cos(dLat * kDegree);
    const double sl = std::sin(dLon * kDegree), cl = std::cos(dLon * kDegree);
    const double aadRow[3][3] = {{-sl, cl, 0.0}, {-s * cl, -s * sl, c}, {c * cl, c * sl, s}};
    for (int i = 0; i < 3; ++i) std::copy_n(aadRow[i], 3, m_Axes.aadRow[i]);
  }

  eZuPositionStatus FromAngles(const Space& in, Place* pPlace) const {
    const Place place = {DegreesOf(in.X, m_System.m_eUnit), DegreesOf(in.Y, m_System.m_eUnit),
                         in.Z};
    if (!IsOnEarth(place)) {
      // A pole told in radians may be a rounding beyond itself.
      if (!(std::fabs(place.dLatitude) <= 90.0 + kSlack)) return eZuPositionOutside;
      *pPlace = {std::copysign(90.0, place.dLatitude), place.dLongitude, place.dHeight};
      return IsOnEarth(*pPlace) ? eZuPositionOk : eZuPositionOutside;
    }
    *pPlace = place;
    return eZuPositionOk;
  }

  eZuPositionStatus FootPoint(const Space& s, Place* pPlace) const {
    const eZuPositionStatus eStatus = Reach(s);
    if (eStatus != eZuPositionOk) return eStatus;
    m_Earth.Reverse(s.X, s.Y, s.Z, pPlace->dLatitude, pPlace->dLongitude, pPlace->dHeight);
    return eZuPositionOk;
  }

  // `dEasting` with the false one.
  bool IsInGrid(const Place& place, double dEasting) const {
    const double dFrom = std::remainder(place.dLongitude - m_System.m_dMeridian, 360.0);
    if (!(std::fabs(dFrom) <= kWidestGrid + kSlack)) return false;
    return m_System.m_iZone == 0 ||
           (place.dLatitude >= kUtmSouth - kSlack && place.dLatitude <= kUtmNorth + kSlack &&
            dEasting >= 0.0 && dEasting <= kUtmWidth);
  }

  static void SetFigures(double dDegrees, double dScale, ZuGridFigures* pGrid) {
    if (pGrid != nullptr) *pGrid = {dDegrees * kDegree, dScale};
  }

  eZuPositionStatus FromGrid(const Space& in, Place* pPlace, ZuGridFigures* pGrid) const {
    double dConvergence = 0.0, dScale = 1.0;
    m_Grid->Reverse(m_System.m_dMeridian, in.X - m_System.m_dEasting,
                    in.Y - m_System.m_dNorthing + m_dParallelNorthing, pPlace->dLatitude,
                    pPlace->dLongitude, dConvergence, dScale);
    pPlace->dHeight = in.Z;
    if (!IsOnEarth(*pPlace) || !IsInGrid(*pPlace, in.X)) return eZuPositionOutside;
    // The series turns back upon itself far outside; what lies there comes back elsewhere.
    double dEast = 0.0, dNorth = 0.0;
    m_Grid->Forward(m_System.m_dMeridian, pPlace->dLatitude, pPlace->dLongitude, dEast, dNorth);
    const double dOff = std::hypot(dEast + m_System.m_dEasting - in.X,
                                   dNorth - m_dParallelNorthing + m_System.m_dNorthing - in.Y);
    if (!(dOff <= 1e-13 * m_dA)) return eZuPositionOutside;
    SetFigures(dConvergence, dScale, pGrid);
    return eZuPositionOk;
  }

  eZuPositionStatus ToGrid(const Place& place, Space* pOut, ZuGridFigures* pGrid) const {
    double dEast = 0.0, dNorth = 0.0, dConvergence = 0.0, dScale = 1.0;
    m_Grid->Forward(m_System.m_dMeridian, place.dLatitude, place.dLongitude, dEast, dNorth,
                    dConvergence, dScale);
    const Space out = {dEast + m_System.m_dEasting,
                       dNorth - m_dParallelNorthing + m_System.m_dNorthing, place.dHeight};
    if (!IsInGrid(place, out.X)) return eZuPositionOutsideTarget;
    SetFigures(dConvergence, dScale, pGrid);
    *pOut = out;
    return eZuPositionOk;
  }

  ZuPositionSystem m_System;
  double m_dA;
  GeographicLib::Geocentric m_Earth;
  std::optional<GeographicLib::TransverseMercator> m_Grid;
  double m_dParallelNorthing = 0.0;
  LocalAxes m_Axes;
};

}  // namespace

struct ZuPositionConverter::Impl {
  Side from, to;
};

const char* ZuPositionStatusText(eZuPositionStatus eStatus) {
  switch (eStatus) {
    case eZuPositionOk:
      return "";
    case eZuPositionNotFinite:
      return "a coordinate is not finite";
    case eZuPositionOutside:
      return "there is no such place in the system it is told in";
    case eZuPositionOutsideTarget:
      return "the target system does not reach there";
    case eZuPositionNearCentre:
      return "too near the centre of the earth";
    case eZuPositionBadSystem:
      break;
  }
  return "the system is not defined";
}

ZuPositionConverter::ZuPositionConverter(const ZuEllipsoid& ellipsoid, const ZuPositionSystem& from,
                                         const ZuPositionSystem& to) {
  if (!ellipsoid.IsValid() || !from.IsValid() || !to.IsValid()) return;
  m_pImpl = std::make_unique<Impl>(Impl{Side(ellipsoid, from), Side(ellipsoid, to)});
  m_eStatus = eZuPositionOk;
}

ZuPositionConverter::~ZuPositionConverter() = default;
ZuPositionConverter::ZuPositionConverter(ZuPositionConverter&&) noexcept = default;
ZuPositionConverter& ZuPositionConverter::operator=(ZuPositionConverter&&) noexcept = default;

eZuPositionStatus ZuPositionConverter::Convert(double* x, double* y, double* z,
                                               ZuGridFigures* pGrid) const {
  if (m_pImpl == nullptr) return eZuPositionBadSystem;
  if (!IsFinitePosition(*x, *y, *z)) return eZuPositionNotFinite;
  const Side &from = m_pImpl->from, &to = m_pImpl->to;
  const Space in = {*x, *y, *z};
  Space out{};
  ZuGridFigures figures;
  if (from.IsInSpace() && to.IsInSpace()) {
    const Space space = from.ToGeocentric(in);
    const eZuPositionStatus eStatus = from.Reach(space);
    if (eStatus != eZuPositionOk) return eStatus;
    out = to.FromGeocentric(space);
  } else {
    Place place{};
    eZuPositionStatus eStatus = from.ToPlace(in, &place, &figures);
    if (eStatus == eZuPositionOk) eStatus = to.FromPlace(place, &out, &figures);
    if (eStatus != eZuPositionOk) return eStatus;
  }
  *x = out.X;
  *y = out.Y;
  *z = out.Z;
  if (pGrid != nullptr) *pGrid = figures;
  return eZuPositionOk;
}

eZuPositionStatus ZuFindUtmZone(const ZuEllipsoid& ellipsoid, const ZuPositionSystem& from,
                                double x, double y, double z, ZuPositionSystem* pUtm) {
  const ZuPositionConverter converter(ellipsoid, from, ZuPositionSystem::Geographic());
  const eZuPositionStatus eStatus = converter.Convert(&x, &y, &z);
  if (eStatus != eZuPositionOk) return eStatus;
  const int iZone = ZuUtmZone(x, y);
  if (iZone == 0) return eZuPositionOutsideTarget;
  *pUtm = ZuPositionSystem::Utm(iZone, x < 0.0);
  return eZuPositionOk;
}
