// From the measurements of a total station to coordinates.
#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/number_text.h"
#include "zu/foundation/sort_helper.h"
#include "zu/points/gsi_survey.h"
#include "zu/points/internal/gsi_word.h"

namespace {

ZuPoint GsiNamedPoint(const std::string& strName) {
  constexpr double adNone[3] = {};
  return zu::internal::GsiPointOf(strName, adNone);
}

// A line with a number, and what the lines before it told.
struct GsiSight {
  const ZuGsiRecord* pRecord;
  std::size_t uSetup;  // from 1; 0: no station before it
  std::optional<double> targetHeight, prism;

  // Direction to the target as seen in the first face [rad].
  double Direction() const {
    const bool bSecondFace = pRecord->m_zenith && std::sin(*pRecord->m_zenith) < 0.0;
    return *pRecord->m_direction + (bSecondFace ? std::numbers::pi : 0.0);
  }
  bool IsPolar() const {
    return pRecord->m_direction && pRecord->m_zenith && pRecord->m_distance &&
           *pRecord->m_distance > 0.0;
  }
};

class GsiPoints {
 public:
  GsiPoints(const std::vector<ZuGsiRecord>& records, const ZuGsiOptions& options,
            ZuGsiReading& reading)
      : m_records(records), m_options(options), m_reading(reading) {
    if (options.m_pKnown != nullptr) m_known.Set(options.m_pKnown);
  }

  void Run(ZuPointList* pPoints);

 private:
  void Split();
  void TakeStation(const ZuGsiRecord& record);
  void Place(ZuGsiSetup* pSetup, const ZuGsiRecord& record);
  void Orient(std::size_t uSetup, const GsiSight* pFirst, const GsiSight* pEnd);
  const ZuPoint* Known(const std::string& strName) const;
  bool Calc(const GsiSight& sight, ZuPoint* pPoint) const;
  void SetDeviations(double s, double z, double t, ZuPoint* pPoint) const;
  void TellWithout(const GsiSight& sight);
  void TellHeights();
  void Add(const GsiSight& sight, const ZuPoint& point, ZuPointList* pPoints) {
    zu::internal::Taken(pPoints->Add(point));
    m_reading.m_aLines.push_back(sight.pRecord->m_uLine);
  }

  const std::vector<ZuGsiRecord>& m_records;
  const ZuGsiOptions& m_options;
  ZuGsiReading& m_reading;
  ZuSortHelper<ZuPoint> m_known;
  std::vector<GsiSight> m_sights;
  std::uint64_t m_uWithoutHeight[2] = {};  // first line that needed that of instrument, reflector
};

const ZuPoint* GsiPoints::Known(const std::string& strName) const {
  if (strName.empty()) return nullptr;
  const ZuPoint wanted = GsiNamedPoint(strName);
  const ZuPoint* const pFound = m_known.Find(wanted.GetId());
  // The id of a name is not its alone.
  const bool bSame = pFound != nullptr && (wanted.GetName().empty() || pFound->GetName().empty() ||
                                           pFound->GetName() == wanted.GetName());
  return bSame ? pFound : nullptr;
}

// The coordinates of a station, from its line or by its number.
void GsiPoints::Place(ZuGsiSetup* pSetup, const ZuGsiRecord& record) {
  if (record.m_station[0] && record.m_station[1] && record.m_station[2]) {
    pSetup->m_bPlaced = true;
    for (int i = 0; i < 3; ++i) pSetup->m_adStation[i] = *record.m_station[i];
  } else if (const ZuPoint* const pKnown = Known(pSetup->m_strName)) {
    pSetup->m_bPlaced = true;
    pSetup->m_adStation[0] = pKnown->m_dX;
    pSetup->m_adStation[1] = pKnown->m_dY;
    pSetup->m_adStation[2] = pKnown->m_dZ;
  }
}

// A station begins, or more is told of the one that has begun.
void GsiPoints::TakeStation(const ZuGsiRecord& record) {
  std::vector<ZuGsiSetup>& setups = m_reading.m_Setups;
  ZuGsiSetup setup;
  setup.m_uLine = record.m_uLine;
  const bool bStationLine = !record.IsMeasured() && !record.HasTarget();
  if (bStationLine) setup.m_strName = record.m_strPoint;
  setup.m_instrumentHeight = record.m_instrumentHeight;
  Place(&setup, record);
  if (!setups.empty()) {
    ZuGsiSetup& last = setups.back();
    const bool bUsed = !m_sights.empty() && m_sights.back().uSetup == setups.size();
    const bool bNamed = !setup.m_strName.empty() && setup.m_strName != last.m_strName;
    const bool bMoved = setup.m_bPlaced && last.m_bPlaced &&
                        !std::equal(last.m_adStation, last.m_adStation + 3, setup.m_adStation);
    const bool bRaised = setup.m_instrumentHeight && last.m_instrumentHeight &&
                         *setup.m_instrumentHeight != *last.m_instrumentHeight;
    const bool bAgain = bStationLine && bUsed && !setup.m_strName.empty();
    if (!bNamed && !bMoved && !bRaised && !bAgain) {
      if (setup.m_bPlaced) {
        last.m_bPlaced = true;
        std::copy_n(setup.m_adStation, 3, last.m_adStation);
      }
      if (setup.m_instrumentHeight) last.m_instrumentHeight = setup.m_instrumentHeight;
      return;
    }
    // The same place with another height of the instrument.
    if (!bNamed && !setup.m_bPlaced && !record.HasStation()) {
      setup.m_strName = last.m_strName;
      setup.m_bPlaced = last.m_bPlaced;
      std::copy_n(last.m_adStation, 3, setup.m_adStation);
      if (!setup.m_instrumentHeight) setup.m_instrumentHeight = last.m_instrumentHeight;
    }
  }
  setups.push_back(setup);
}

// Stations, and the lines of points that belong to each.
void GsiPoints::Split() {
  std::optional<double> targetHeight, prism;
  for (const ZuGsiRecord& record : m_records) {
    if (record.HasStation() || record.m_instrumentHeight) TakeStation(record);
    if (record.m_targetHeight) targetHeight = record.m_targetHeight;
    if (record.m_prism) prism = record.m_prism;
    if (record.m_strPoint.empty() || !(record.IsMeasured() || record.HasTarget())) continue;
    m_sights.push_back({&record, m_reading.m_Setups.size(), targetHeight, prism});
  }
}

// The bearing of the circle's zero from the sights [pFirst, pEnd) to known points.
void GsiPoints::Orient(std::size_t uSetup, const GsiSight* pFirst, const GsiSight* pEnd) {
  ZuGsiSetup& setup = m_reading.m_Setups[uSetup - 1];
  setup.m_dOrientation = m_options.m_dOrientation;
  if (!setup.m_bPlaced) return;
  double dSin = 0.0, dCos = 0.0;
  const auto each = [&](auto use) {
    for (const GsiSight* p = pFirst; p != pEnd; ++p) {
      const ZuPoint* const pKnown =
          p->pRecord->m_direction ? Known(p->pRecord->m_strPoint) : nullptr;
      if (pKnown == nullptr) continue;
      const double dE = pKnown->m_dX - setup.m_adStation[0];
      const double dN = pKnown->m_dY - setup.m_adStation[1];
      const double dLength = std::hypot(dE, dN);
      if (!std::isfinite(dLength) || dLength == 0.0) continue;
      use(std::atan2(dE, dN) - p->Direction(), dLength);
    }
  };
  each([&](double dZero, double dLength) {
    dSin += dLength * std::sin(dZero);
    dCos += dLength * std::cos(dZero);
    ++setup.m_iSights;
  });
  if (setup.m_iSights == 0) return;
  setup.m_dOrientation = std::atan2(dSin, dCos);
  each([&](double dZero, double dLength) {
    const double dTurn = std::remainder(dZero - setup.m_dOrientation, 2.0 * std::numbers::pi);
    setup.m_dLargestMisfit = std::max(setup.m_dLargestMisfit, dLength * std::fabs(dTurn));
  });
}

void GsiPoints::SetDeviations(double s, double z, double t, ZuPoint* pPoint) const {
  const ZuGsiOptions& o = m_options;
  const double dDistance = std::hypot(o.m_dSigmaDistance, o.m_dSigmaDistancePpm * 1e-6 * s);
  const double dSin = std::sin(z), dCos = std::cos(z);
  const double dAlong = std::hypot(dSin * dDistance, s * dCos * o.m_dSigmaZenith);
  const double dAcross = s * dSin * o.m_dSigmaDirection;
  pPoint->m_dDX = std::hypot(dAlong * std::sin(t), dAcross * std::cos(t));
  pPoint->m_dDY = std::hypot(dAlong * std::cos(t), dAcross * std::sin(t));
  pPoint->m_dDZ = std::hypot(std::hypot(dCos * dDistance, s * dSin * o.m_dSigmaZenith),
                             std::numbers::sqrt2 * o.m_dSigmaHeight);
}

// False where measurement or station is not complete.
bool GsiPoints::Calc(const GsiSight& sight, ZuPoint* pPoint) const {
  if (!sight.IsPolar() || sight.uSetup == 0) return false;
  const ZuGsiSetup& setup = m_reading.m_Setups[sight.uSetup - 1];
  if (!setup.m_bPlaced) return false;
  const ZuGsiOptions& o = m_options;
  const double s =
      *sight.pRecord->m_distance + (o.m_prism ? *o.m_prism - sight.prism.value_or(0.0) : 0.0);
  const double z = *sight.pRecord->m_zenith;
  const double t = *sight.pRecord->m_direction + setup.m_dOrientation;
  // In the second face Y is negative, and the circle reads the opposite direction.
  const double X = s * std::cos(z), Y = s * std::sin(z);
  const double A = (1.0 - o.m_dRefraction / 2.0) / o.m_dEarthRadius;
  const double B = (1.0 - o.m_dRefraction) / (2.0 * o.m_dEarthRadius);
  const double d = Y - A * X * Y;
  const double h = X + B * Y * Y;
  pPoint->m_dX = setup.m_adStation[0] + d * std::sin(t);
  pPoint->m_dY = setup.m_adStation[1] + d * std::cos(t);
  pPoint->m_dZ = setup.m_adStation[2] + h + setup.m_instrumentHeight.value_or(0.0) -
                 sight.targetHeight.value_or(0.0);
  SetDeviations(s, z, t, pPoint);
  return true;
}

void GsiPoints::TellWithout(const GsiSight& sight) {
  const std::string strPoint = "point " + ZuQuoted(sight.pRecord->m_strPoint) + " ";
  const ZuGsiSetup* const pSetup =
      sight.uSetup > 0 ? &m_reading.m_Setups[sight.uSetup - 1] : nullptr;
  ZuReadFindings& findings = m_reading.m_Findings;
  if (!sight.IsPolar()) {
    findings.Add(eZuReadNote, sight.pRecord->m_uLine, 0,
                 strPoint + "has no coordinates: no direction, zenith angle and distance");
    return;
  }
  const std::string strStation =
      pSetup == nullptr || pSetup->m_strName.empty() ? "" : " " + ZuQuoted(pSetup->m_strName);
  findings.AddDroppedLine(
      sight.pRecord->m_uLine, 0,
      strPoint + "has no coordinates: those of its station" + strStation + " are not told",
      "words 84 to 86 before it" + (strStation.empty() ? "" : ", or a known point" + strStation));
}

void GsiPoints::TellHeights() {
  const char* const aszWhat[] = {"no height of the instrument (word 88), taken as 0",
                                 "no height of the reflector (word 87), taken as 0"};
  for (int i = 0; i < 2; ++i) {
    if (m_uWithoutHeight[i] == 0) continue;
    m_reading.m_Findings.Add(eZuReadAssumed, m_uWithoutHeight[i], 0, aszWhat[i]);
  }
}

void GsiPoints::Run(ZuPointList* pPoints) {
  Split();
  for (auto p = m_sights.begin(); p != m_sights.end();) {
    const auto end =
        std::find_if(p, m_sights.end(), [&](const GsiSight& s) { return s.uSetup != p->uSetup; });
    if (p->uSetup > 0) Orient(p->uSetup, &*p, &*p + (end - p));
    p = end;
  }
  for (const GsiSight& sight : m_sights) {
    const ZuGsiRecord& record = *sight.pRecord;
    ZuPoint point = GsiNamedPoint(record.m_strPoint);
    if (!(record.HasTarget() && !m_options.m_bMeasured) && Calc(sight, &point)) {
      const bool abLacks[] = {!m_reading.m_Setups[sight.uSetup - 1].m_instrumentHeight,
                              !sight.targetHeight};
      for (int i = 0; i < 2; ++i) {
        if (abLacks[i] && m_uWithoutHeight[i] == 0) m_uWithoutHeight[i] = record.m_uLine;
      }
      Add(sight, point, pPoints);
    } else if (record.HasTarget()) {
      point.m_dX = record.m_target[0].value_or(0.0);
      point.m_dY = record.m_target[1].value_or(0.0);
      point.m_dZ = record.m_target[2].value_or(0.0);
      Add(sight, point, pPoints);
    } else {
      TellWithout(sight);
    }
  }
  TellHeights();
  m_reading.m_Findings.EndDroppedLines();
}

}  // namespace

ZuGsiReading ZuGsiSurvey::CalcPoints(const ZuGsiOptions& options, ZuPointList* pPoints) const {
  ZuGsiReading reading;
  try {
    reading.m_Findings.m_Dialect = m_Findings.m_Dialect;
    GsiPoints(m_Records, options, reading).Run(pPoints);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
