#include "zu/geo/ellipsoid.h"

#include "zu/foundation/strict_number.h"

namespace {

double InverseFlattening(double dA, double dB) { return dA / (dA - dB); }

std::string PlainName(std::string_view name) {
  std::string strPlain;
  for (const char c : name) {
    if (c == ' ' || c == '-' || c == '_') continue;
    strPlain += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return strPlain;
}

}  // namespace

bool ZuEllipsoid::IsValid() const {
  return m_dA >= 1e5 && m_dA <= 1e9 &&
         (m_dInverseFlattening == 0.0 ||
          (m_dInverseFlattening >= 150.0 && m_dInverseFlattening <= 1e12));
}

const std::vector<ZuEllipsoid>& ZuEllipsoids() {
  static const std::vector<ZuEllipsoid> ellipsoids = {
      {"wgs84", "WGS 84", 6378137.0, 298.257223563},
      {"grs80", "GRS 1980", 6378137.0, 298.257222101},
      {"bessel1841", "Bessel 1841", 6377397.155, 299.1528128},
      {"krassowski1940", "Krassowski 1940", 6378245.0, 298.3},
      {"hayford", "International 1924 (Hayford)", 6378388.0, 297.0},
      {"airy1830", "Airy 1830", 6377563.396, 299.3249646},
      {"airymodified", "Airy modified 1849", 6377340.189, 299.3249646},
      {"clarke1866", "Clarke 1866", 6378206.4, InverseFlattening(6378206.4, 6356583.8)},
      {"clarke1880", "Clarke 1880 (RGS)", 6378249.145, 293.465},
      {"clarke1880ign", "Clarke 1880 (IGN)", 6378249.2, InverseFlattening(6378249.2, 6356515.0)},
      {"everest1830", "Everest 1830 modified", 6377304.063, 300.8017},
      {"helmert1906", "Helmert 1906", 6378200.0, 298.3},
      {"grs67", "GRS 1967", 6378160.0, 298.247167427},
      {"australian", "Australian National", 6378160.0, 298.25},
      {"wgs72", "WGS 72", 6378135.0, 298.26}};
  return ellipsoids;
}

const ZuEllipsoid* ZuFindEllipsoid(std::string_view name) {
  const std::string strName = PlainName(name);
  for (const ZuEllipsoid& ellipsoid : ZuEllipsoids()) {
    if (ellipsoid.m_strName == strName) return &ellipsoid;
  }
  return nullptr;
}

bool ZuParseEllipsoid(std::string_view text, ZuEllipsoid* pEllipsoid) {
  if (const ZuEllipsoid* pFound = ZuFindEllipsoid(text)) {
    *pEllipsoid = *pFound;
    return true;
  }
  const size_t uComma = text.find(',');
  if (uComma == text.npos) return false;
  ZuEllipsoid own{"own", std::string(text), 0.0, 0.0};
  if (!ZuParseNumber(text.substr(0, uComma), &own.m_dA) ||
      !ZuParseNumber(text.substr(uComma + 1), &own.m_dInverseFlattening) || !own.IsValid()) {
    return false;
  }
  *pEllipsoid = own;
  return true;
}
