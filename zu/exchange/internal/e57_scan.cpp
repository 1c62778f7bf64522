#include "zu/exchange/internal/e57_scan.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "zu/exchange/internal/photo_block.h"
#include "zu/exchange/internal/xml_tree.h"
#include "zu/foundation/number_text.h"

namespace zu::internal {

namespace {

constexpr const char* kE57FieldNames[] = {
    "cartesianX", "cartesianY",         "cartesianZ",  "cartesianInvalidState",
    "intensity",  "isIntensityInvalid", "colorRed",    "colorGreen",
    "colorBlue",  "isColorInvalid",     "nor:normalX", "nor:normalY",
    "nor:normalZ"};

// A fault of the XML, with its line there.
struct E57Fault {
  std::uint64_t uLine;
  std::string strText, strRight;
};

template <class Number>
Number E57Number(const std::string& strText, std::uint64_t uLine, const char* szWhat) {
  Number value{};
  const char* const pEnd = strText.data() + strText.size();
  const char* const pBegin = strText.data() + (strText.starts_with('+') ? 1 : 0);
  const auto result = std::from_chars(pBegin, pEnd, value);
  if (result.ec != std::errc() || result.ptr != pEnd) {
    throw E57Fault{uLine, std::string(szWhat) + ": " + ZuQuoted(strText) + " is no number in range",
                   "a number"};
  }
  return value;
}

template <class Number>
Number AttributeOf(const XmlElement& element, const char* szName, Number without) {
  const std::string* const pText = element.Attribute(szName);
  return pText ? E57Number<Number>(*pText, element.uLine, szName) : without;
}

// A child with one number; without text it is 0.
double ValueOf(const XmlElement& parent, const char* szName, double dWithout) {
  const XmlElement* const p = parent.Find(szName);
  if (p == nullptr) return dWithout;
  if (p->strText.empty()) return 0.0;
  const double dValue = E57Number<double>(p->strText, p->uLine, szName);
  // Of a scaled integer the raw number stands in the text.
  return dValue * AttributeOf(*p, "scale", 1.0) + AttributeOf(*p, "offset", 0.0);
}

bool IsType(const XmlElement& element, const char* szType) {
  const std::string* const pType = element.Attribute("type");
  return pType && *pType == szType;
}

E57Field FieldOf(const XmlElement& element) {
  E57Field field;
  const auto name =
      std::find(std::begin(kE57FieldNames), std::end(kE57FieldNames), element.strName);
  if (name != std::end(kE57FieldNames)) {
    field.eMeaning = static_cast<E57Meaning>(name - std::begin(kE57FieldNames));
  }
  if (IsType(element, "Float")) {
    const std::string* const pPrecision = element.Attribute("precision");
    field.eKind = pPrecision && *pPrecision == "single" ? E57Field::eSingle : E57Field::eDouble;
    field.dLeast = AttributeOf(element, "minimum", 0.0);
    field.dMost = AttributeOf(element, "maximum", 1.0);
    return field;
  }
  const bool bScaled = IsType(element, "ScaledInteger");
  if (!bScaled && !IsType(element, "Integer")) {
    throw E57Fault{element.uLine, "points have " + ZuQuoted(element.strName) + " that is no number",
                   "Float, Integer or ScaledInteger"};
  }
  field.eKind = bScaled ? E57Field::eScaled : E57Field::eInteger;
  field.iLeast = AttributeOf<std::int64_t>(element, "minimum", INT64_MIN);
  field.iMost = AttributeOf<std::int64_t>(element, "maximum", INT64_MAX);
  if (field.iLeast > field.iMost) {
    throw E57Fault{element.uLine, element.strName + ": the minimum is above the maximum", ""};
  }
  if (bScaled) {
    field.dScale = AttributeOf(element, "scale", 1.0);
    field.dOffset = AttributeOf(element, "offset", 0.0);
  }
  if (!std::isfinite(field.dScale) || !std::isfinite(field.dOffset)) {
    throw E57Fault{element.uLine, element.strName + ": scale or offset is not finite", ""};
  }
  field.dLeast = static_cast<double>(field.iLeast) * field.dScale + field.dOffset;
  field.dMost = static_cast<double>(field.iMost) * field.dScale + field.dOffset;
  return field;
}

ZuE57Pose PoseOf(const XmlElement& pose) {
  ZuE57Pose result;
  if (const XmlElement* const p = pose.Find("rotation")) {
    const char* const aszNames[] = {"w", "x", "y", "z"};
    double dSum = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
      result.adRotation[i] = ValueOf(*p, aszNames[i], 0.0);
      dSum += result.adRotation[i] * result.adRotation[i];
    }
    const double dLength = std::sqrt(dSum);
    if (!std::isfinite(dLength) || dLength < 1e-10) {
      throw E57Fault{p->uLine, "the quaternion of a pose has no length",
                     "w x y z with a length of 1"};
    }
    for (double& d : result.adRotation) d /= dLength;
  }
  if (const XmlElement* const p = pose.Find("translation")) {
    const char* const aszNames[] = {"x", "y", "z"};
    for (std::size_t i = 0; i < 3; ++i) result.adTranslation[i] = ValueOf(*p, aszNames[i], 0.0);
  }
  return result;
}

// What a scan's points have that a cloud does not keep.
void TellOther(const XmlElement& prototype, std::size_t uScan, ZuReadFindings& findings) {
  std::string strOther;
  for (const XmlElement& field : prototype.children) {
    if (FieldOf(field).eMeaning != eE57Other) continue;
    strOther += (strOther.empty() ? "" : ", ") + field.strName;
  }
  if (strOther.empty()) return;
  findings.Add(eZuReadDropped, 0, 0,
               "scan " + std::to_string(uScan) + ": what a cloud does not keep: " + strOther);
}

E57Scan ScanOf(const XmlElement& element, std::size_t uScan, ZuReadFindings& findings) {
  E57Scan scan;
  const std::string strScan = "scan " + std::to_string(uScan);
  if (const XmlElement* const p = element.Find("name")) scan.strName = p->strText;
  if (const XmlElement* const p = element.Find("pose")) scan.pose = PoseOf(*p);
  const XmlElement* const pPoints = element.Find("points");
  const XmlElement* const pPrototype = pPoints ? pPoints->Find("prototype") : nullptr;
  if (pPrototype == nullptr) {
    throw E57Fault{element.uLine, strScan + " has no points", "points with a prototype"};
  }
  scan.uPlace = AttributeOf<std::uint64_t>(*pPoints, "fileOffset", 0);
  scan.uRecords = AttributeOf<std::uint64_t>(*pPoints, "recordCount", 0);
  for (const XmlElement& field : pPrototype->children) scan.fields.push_back(FieldOf(field));
  if (!scan.Find(eE57X) || !scan.Find(eE57Y) || !scan.Find(eE57Z)) {
    const bool bSpherical = pPrototype->Find("sphericalRange") != nullptr;
    throw E57Fault{pPrototype->uLine,
                   strScan + (bSpherical ? " has spherical coordinates alone"
                                         : " has no coordinates x, y and z"),
                   "cartesian coordinates, which the program that wrote the file can export,"};
  }
  if (const XmlElement* const p = element.Find("intensityLimits")) {
    scan.dIntensityLeast = ValueOf(*p, "intensityMinimum", 0.0);
    scan.dIntensityMost = ValueOf(*p, "intensityMaximum", 0.0);
  }
  if (const XmlElement* const p = element.Find("colorLimits")) {
    for (const char* szName : {"colorRedMaximum", "colorGreenMaximum", "colorBlueMaximum"}) {
      scan.dColorMost = std::max(scan.dColorMost, ValueOf(*p, szName, 0.0));
    }
  }
  TellOther(*pPrototype, uScan, findings);
  return scan;
}

}  // namespace

const char* E57FieldName(E57Meaning eMeaning) { return kE57FieldNames[eMeaning]; }

unsigned int E57Field::Bits() const {
  if (eKind == eDouble) return 64;
  if (eKind == eSingle) return 32;
  const auto uRange = static_cast<std::uint64_t>(iMost) - static_cast<std::uint64_t>(iLeast);
  return static_cast<unsigned int>(std::bit_width(uRange));
}

const E57Field* E57Scan::Find(E57Meaning eMeaning) const {
  const auto at = std::find_if(fields.begin(), fields.end(),
                               [eMeaning](const E57Field& f) { return f.eMeaning == eMeaning; });
  return at == fields.end() ? nullptr : &*at;
}

std::vector<E57Scan> ReadE57Scans(const std::string& strXml, ZuReadFindings& findings) {
  std::vector<E57Scan> scans;
  const auto fault = [&findings](const E57Fault& f) {
    findings.Add(eZuReadFault, 0, 0,
                 "line " + std::to_string(f.uLine) + " of the XML: " + f.strText, f.strRight);
  };
  try {
    const XmlElement root = ReadXml({"", strXml});
    if (const XmlElement* const p = root.Find("images2D"); p && !p->children.empty()) {
      findings.Add(eZuReadDropped, 0, 0,
                   "images, which clouds do not keep: " + std::to_string(p->children.size()));
    }
    const XmlElement* const pScans = root.Find("data3D");
    if (root.strName != "e57Root" || pScans == nullptr) {
      throw E57Fault{root.uLine, "the file has no scans", "e57Root with data3D"};
    }
    std::size_t uScan = 0;
    for (const XmlElement& element : pScans->children) {
      try {
        scans.push_back(ScanOf(element, ++uScan, findings));
      } catch (const E57Fault& f) {
        fault(f);
      }
    }
  } catch (const E57Fault& f) {
    fault(f);
  } catch (const ExchangeFault& f) {
    fault({f.finding.m_uLine, f.finding.m_strText, f.finding.m_strRight});
  }
  return scans;
}

}  // namespace zu::internal
