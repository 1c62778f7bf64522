#include "zu/geo/position_system.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "zu/foundation/numbers.h"
#include "zu/foundation/strict_number.h"

namespace {

constexpr char kSystemsRight[] =
    "geographic[:deg|gon|rad], geocentric, utm[:ZONE[n|s]], gk:STRIP, "
    "tm:LON[,SCALE[,EASTING[,NORTHING[,LAT]]]] or local:LAT,LON,HEIGHT";

struct UnitWord {
  const char* szWord;
  eZuAngleUnit eUnit;
};
constexpr UnitWord kUnitWords[] = {
    {"deg", eZuAngleUnitDegree}, {"gon", eZuAngleUnitGon}, {"rad", eZuAngleUnitRadian}};

// Numbers between commas. -1: one is none, or there are more than iMost.
int NumbersOf(std::string_view text, double* pdNumbers, int iMost) {
  for (int i = 0; i < iMost; ++i) {
    const size_t uComma = text.find(',');
    if (!ZuParseNumber(text.substr(0, uComma), &pdNumbers[i])) return -1;
    if (uComma == text.npos) return i + 1;
    text.remove_prefix(uComma + 1);
  }
  return -1;
}

bool ParseUnit(std::string_view text, ZuPositionSystem* pSystem) {
  for (const UnitWord& word : kUnitWords) {
    if (text != word.szWord) continue;
    *pSystem = ZuPositionSystem::Geographic(word.eUnit);
    return true;
  }
  return false;
}

bool ParseZone(std::string_view text, ZuPositionSystem* pSystem) {
  bool bSouth = false;
  if (!text.empty() && (text.back() == 'n' || text.back() == 's')) {
    bSouth = text.back() == 's';
    text.remove_suffix(1);
  }
  unsigned uZone = 0;
  if (!ZuParseId(text, &uZone) || uZone > 60) return false;
  *pSystem = ZuPositionSystem::Utm(static_cast<int>(uZone), bSouth);
  return true;
}

bool ParseStrip(std::string_view text, ZuPositionSystem* pSystem) {
  int iStrip = 0;
  if (!ZuParseWhole(text, &iStrip) || iStrip < 0 || iStrip > 119) return false;
  *pSystem = ZuPositionSystem::GaussKrueger(iStrip);
  return true;
}

bool ParseTransverse(std::string_view text, ZuPositionSystem* pSystem) {
  double ad[5] = {0.0, 1.0, 0.0, 0.0, 0.0};
  if (NumbersOf(text, ad, 5) < 1) return false;
  pSystem->m_eKind = eZuPositionTransverse;
  pSystem->m_dMeridian = ad[0];
  pSystem->m_dScale = ad[1];
  pSystem->m_dEasting = ad[2];
  pSystem->m_dNorthing = ad[3];
  pSystem->m_dParallel = ad[4];
  return true;
}

bool ParseLocal(std::string_view text, ZuPositionSystem* pSystem) {
  double ad[3] = {0.0, 0.0, 0.0};
  if (NumbersOf(text, ad, 3) != 3) return false;
  *pSystem = ZuPositionSystem::Local(ad[0], ad[1], ad[2]);
  return true;
}

struct SystemWord {
  const char* szWord;
  bool (*pfnParse)(std::string_view, ZuPositionSystem*);
};
constexpr SystemWord kSystemWords[] = {{"geographic", ParseUnit},
                                       {"utm", ParseZone},
                                       {"gk", ParseStrip},
                                       {"tm", ParseTransverse},
                                       {"local", ParseLocal}};

std::string JoinNumbers(const char* szWord, std::initializer_list<double> numbers) {
  std::string strText = szWord;
  char szNumber[kZuShortestSize];
  for (const double d : numbers) {
    strText += strText.back() == ':' ? "" : ",";
    strText.append(szNumber, ZuFormatShortest(szNumber, d));
  }
  return strText;
}

bool IsPlace(double dLatitude, double dLongitude) {
  return std::fabs(dLatitude) <= 90.0 && std::fabs(dLongitude) <= 360.0;
}

}  // namespace

ZuPositionSystem ZuPositionSystem::Geographic(eZuAngleUnit eUnit) {
  ZuPositionSystem system;
  system.m_eUnit = eUnit;
  return system;
}

ZuPositionSystem ZuPositionSystem::Geocentric() {
  ZuPositionSystem system;
  system.m_eKind = eZuPositionGeocentric;
  return system;
}

ZuPositionSystem ZuPositionSystem::Utm(int iZone, bool bSouth) {
  ZuPositionSystem system;
  system.m_eKind = eZuPositionTransverse;
  system.m_iZone = iZone;
  system.m_bSouth = bSouth;
  system.m_dMeridian = 6.0 * iZone - 183.0;
  system.m_dScale = 0.9996;
  system.m_dEasting = 500000.0;
  system.m_dNorthing = bSouth ? 10000000.0 : 0.0;
  return system;
}

ZuPositionSystem ZuPositionSystem::Utm() {
  ZuPositionSystem system;
  system.m_eKind = eZuPositionTransverse;
  system.m_iZone = kZoneToFind;
  return system;
}

ZuPositionSystem ZuPositionSystem::GaussKrueger(int iStrip) {
  ZuPositionSystem system;
  system.m_eKind = eZuPositionTransverse;
  system.m_dMeridian = 3.0 * iStrip;
  system.m_dEasting = 1e6 * iStrip + 500000.0;
  return system;
}

ZuPositionSystem ZuPositionSystem::Local(double dLatitude, double dLongitude, double dHeight) {
  ZuPositionSystem system;
  system.m_eKind = eZuPositionLocal;
  system.m_dOriginLatitude = dLatitude;
  system.m_dOriginLongitude = dLongitude;
  system.m_dOriginHeight = dHeight;
  return system;
}

bool ZuPositionSystem::IsValid() const {
  switch (m_eKind) {
    case eZuPositionGeographic:
    case eZuPositionGeocentric:
      return true;
    case eZuPositionTransverse:
      return m_iZone >= 0 && m_iZone <= 60 && IsPlace(m_dParallel, m_dMeridian) &&
             m_dScale >= 0.5 && m_dScale <= 2.0 && std::fabs(m_dEasting) < 1e9 &&
             std::fabs(m_dNorthing) < 1e9;
    case eZuPositionLocal:
      return IsPlace(m_dOriginLatitude, m_dOriginLongitude) && std::fabs(m_dOriginHeight) <= 1e6;
  }
  return false;
}

bool ZuParsePositionSystem(std::string_view text, ZuPositionSystem* pSystem,
                           std::string* pstrRight) {
  const size_t uColon = text.find(':');
  const std::string_view word = text.substr(0, uColon);
  ZuPositionSystem system;
  bool bGood = false;
  if (uColon == text.npos) {
    bGood = word == "geographic" || word == "geocentric" || word == "utm";
    if (word == "geocentric") system = ZuPositionSystem::Geocentric();
    if (word == "utm") system = ZuPositionSystem::Utm();
  } else {
    for (const SystemWord& known : kSystemWords) {
      if (word == known.szWord) bGood = known.pfnParse(text.substr(uColon + 1), &system);
    }
    bGood = bGood && system.IsValid();
  }
  if (bGood) {
    *pSystem = system;
  } else if (pstrRight != nullptr) {
    *pstrRight = kSystemsRight;
  }
  return bGood;
}

std::string ZuPositionSystemText(const ZuPositionSystem& system) {
  switch (system.m_eKind) {
    case eZuPositionGeographic:
      for (const UnitWord& word : kUnitWords) {
        if (word.eUnit == system.m_eUnit) return std::string("geographic:") + word.szWord;
      }
      return "geographic:rad";
    case eZuPositionGeocentric:
      return "geocentric";
    case eZuPositionLocal:
      return JoinNumbers(
          "local:", {system.m_dOriginLatitude, system.m_dOriginLongitude, system.m_dOriginHeight});
    case eZuPositionTransverse:
      break;
  }
  if (system.m_iZone == ZuPositionSystem::kZoneToFind) return "utm";
  if (system.m_iZone > 0) {
    return "utm:" + std::to_string(system.m_iZone) + (system.m_bSouth ? "s" : "n");
  }
  return JoinNumbers("tm:", {system.m_dMeridian, system.m_dScale, system.m_dEasting,
                             system.m_dNorthing, system.m_dParallel});
}

int ZuUtmZone(double dLatitude, double dLongitude) {
  if (!(dLatitude >= -80.0 && dLatitude < 84.0) || !std::isfinite(dLongitude)) return 0;
  const double dEast = dLongitude - 360.0 * std::floor((dLongitude + 180.0) / 360.0) + 180.0;
  const int iZone = std::min(static_cast<int>(dEast / 6.0), 59) + 1;
  if (dLatitude >= 56.0 && dLatitude < 64.0 && iZone == 31 && dEast >= 183.0) return 32;
  if (dLatitude < 72.0 || iZone < 31 || iZone > 37) return iZone;
  // Svalbard: 31, 33, 35 and 37 share what is from 0 to 42 degrees.
  return dEast < 189.0 ? 31 : dEast < 201.0 ? 33 : dEast < 213.0 ? 35 : dEast < 222.0 ? 37 : iZone;
}
