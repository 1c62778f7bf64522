#include "zu/exchange/internal/e57_points.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "zu/cloud/intensity_scale.h"
#include "zu/cloud/internal/little_endian.h"
#include "zu/exchange/internal/e57_rotation.h"

namespace zu::internal {

namespace {

constexpr std::size_t kE57SectionHeader = 32;
constexpr std::size_t kE57MostAtOnce = 4096;  // points that are handed out together

// Limits of intensities: those the scan tells, else those of the field.
void IntensityLimits(const E57Scan& scan, double* pdLeast, double* pdMost) {
  const E57Field* const pField = scan.Find(eE57Intensity);
  *pdLeast = scan.dIntensityLeast;
  *pdMost = scan.dIntensityMost;
  if (*pdLeast < *pdMost || pField == nullptr) return;
  *pdLeast = pField->dLeast;
  *pdMost = pField->dMost;
}

}  // namespace

unsigned char* E57Bits::Grow(std::size_t uSize) {
  const std::size_t uGone = m_uAt / 8;
  m_acBytes.erase(m_acBytes.begin(), m_acBytes.begin() + static_cast<std::ptrdiff_t>(uGone));
  m_uAt -= 8 * uGone;
  const std::size_t uBefore = m_acBytes.size();
  m_acBytes.resize(uBefore + uSize);
  return m_acBytes.data() + uBefore;
}

std::uint64_t E57Bits::Take(unsigned int uBits) {
  if (uBits == 0) return 0;
  const unsigned char* const p = m_acBytes.data() + m_uAt / 8;
  const auto uShift = static_cast<unsigned int>(m_uAt % 8);
  unsigned char aWord[8] = {};
  std::memcpy(aWord, p, std::min<std::size_t>(8, (uShift + uBits + 7) / 8));
  std::uint64_t u = ZuLoadLittle<std::uint64_t>(aWord) >> uShift;
  if (uShift + uBits > 64) u |= static_cast<std::uint64_t>(p[8]) << (64 - uShift);
  m_uAt += uBits;
  return uBits == 64 ? u : u & ((std::uint64_t{1} << uBits) - 1);
}

bool HasE57Bytes(const E57Scan& scan) {
  double dLeast = 0.0, dMost = 0.0;
  const E57Field* const pField = scan.Find(eE57Intensity);
  if (pField == nullptr) return true;
  IntensityLimits(scan, &dLeast, &dMost);
  const bool bWhole = pField->eKind == E57Field::eInteger;
  return bWhole ? pField->iLeast >= 0 && pField->iMost <= 255 : dLeast == 0.0 && dMost == 255.0;
}

E57Points::E57Points(const char* szPath, const E57Scan& scan, bool bWide)
    : m_scan(scan),
      m_bWide(bWide),
      m_reader(szPath, scan.uPlace),
      m_bits(scan.fields.size()),
      m_bMoves(scan.pose.adRotation != ZuE57Pose().adRotation ||
               scan.pose.adTranslation != ZuE57Pose().adTranslation) {
  RotationOf(scan.pose, m_adRotation);
  unsigned char aHeader[kE57SectionHeader];
  if (scan.uRecords == 0) return;
  if (!m_reader.Read(aHeader, sizeof aHeader) || aHeader[0] != 1) {
    m_szFault = "its points do not begin where they are said to";
    return;
  }
  const auto uLength = ZuLoadLittle<std::uint64_t>(aHeader + 8);
  const auto uData = ZuLoadLittle<std::uint64_t>(aHeader + 16);
  m_uLeft = uLength - std::min<std::uint64_t>(uLength, kE57SectionHeader);
  const std::uint64_t uBehind = E57Physical(E57Logical(scan.uPlace) + kE57SectionHeader);
  if (uData < uBehind || uData > m_reader.FileSize()) {
    m_szFault = "its packets are said to stand outside the section";
  } else {
    const std::uint64_t uGap = E57Logical(uData) - E57Logical(uBehind);
    m_uLeft -= std::min(m_uLeft, uGap);
    m_reader.Skip(uGap);
  }
  unsigned int uAllBits = 0;
  for (const E57Field& field : scan.fields) uAllBits += field.Bits();
  // Points that take no room could be as many as the file says.
  if (uAllBits < 8 && scan.uRecords > kE57PageData) m_szFault = "its points have less than 8 bits";
}

std::uint64_t E57Points::Room() const {
  unsigned int uAllBits = 0;
  for (const E57Field& field : m_scan.fields) uAllBits += field.Bits();
  return uAllBits == 0 ? kE57PageData : m_reader.FileSize() / uAllBits * 8 + 8;
}

// Whole records that have come.
std::uint64_t E57Points::Ready() const {
  std::uint64_t uReady = m_scan.uRecords - m_uRead;
  for (std::size_t i = 0; i < m_bits.size(); ++i) {
    const unsigned int uBits = m_scan.fields[i].Bits();
    if (uBits > 0) uReady = std::min<std::uint64_t>(uReady, m_bits[i].Count() / uBits);
  }
  return uReady;
}

// Packets begin with their kind (0 index, 1 data, 2 empty), flags, and their length less 1.
bool E57Points::ReadPacket() {
  unsigned char aHeader[4];
  if (m_uLeft < sizeof aHeader || !m_reader.Read(aHeader, sizeof aHeader)) return false;
  std::uint64_t uRest = ZuLoadLittle<std::uint16_t>(aHeader + 2) + std::uint64_t{1};
  if (uRest < sizeof aHeader || uRest > m_uLeft || aHeader[0] > 2) return false;
  m_uLeft -= uRest;
  uRest -= sizeof aHeader;
  if (aHeader[0] != 1) return m_reader.Skip(uRest);
  std::vector<unsigned char> lengths(2 + 2 * m_bits.size());
  if (uRest < lengths.size() || !m_reader.Read(lengths.data(), lengths.size())) return false;
  uRest -= lengths.size();
  if (ZuLoadLittle<std::uint16_t>(lengths.data()) != m_bits.size()) return false;
  for (std::size_t i = 0; i < m_bits.size(); ++i) {
    const std::size_t uLength = ZuLoadLittle<std::uint16_t>(lengths.data() + 2 + 2 * i);
    if (uLength > uRest || !m_reader.Read(m_bits[i].Grow(uLength), uLength)) return false;
    uRest -= uLength;
  }
  return m_reader.Skip(uRest);
}

const std::vector<ZuScanPoint3d>& E57Points::Next() {
  m_points.clear();
  while (m_points.empty() && m_szFault == nullptr && m_uRead < m_scan.uRecords) {
    const auto uReady = std::min<std::uint64_t>(Ready(), kE57MostAtOnce);
    if (uReady == 0 && !ReadPacket()) break;
    for (std::uint64_t i = 0; i < uReady; ++i) TakePoint();
  }
  return m_points;
}

double E57Points::ValueOf(std::size_t uField) {
  const E57Field& field = m_scan.fields[uField];
  const std::uint64_t u = m_bits[uField].Take(field.Bits());
  switch (field.eKind) {
    case E57Field::eDouble:
      return std::bit_cast<double>(u);
    case E57Field::eSingle:
      return std::bit_cast<float>(static_cast<std::uint32_t>(u));
    default:
      break;
  }
  const auto iValue = static_cast<std::int64_t>(static_cast<std::uint64_t>(field.iLeast) + u);
  const auto dValue = static_cast<double>(iValue);
  return field.eKind == E57Field::eInteger ? dValue : dValue * field.dScale + field.dOffset;
}

void E57Points::TakePoint() {
  double ad[eE57Meanings] = {};
  for (std::size_t i = 0; i < m_scan.fields.size(); ++i) {
    const double dValue = ValueOf(i);
    if (m_scan.fields[i].eMeaning != eE57Other) ad[m_scan.fields[i].eMeaning] = dValue;
  }
  ++m_uRead;
  if (ad[eE57Invalid] != 0.0) {
    ++m_uInvalid;
    return;
  }
  ZuScanPoint3d p(ad[eE57X], ad[eE57Y], ad[eE57Z], 0);
  SetValues(ad, p);
  if (m_bMoves) {
    const double* const R = m_adRotation;
    const auto& t = m_scan.pose.adTranslation;
    const double x = p.x, y = p.y, z = p.z;
    p.x = R[0] * x + R[1] * y + R[2] * z + t[0];
    p.y = R[3] * x + R[4] * y + R[5] * z + t[1];
    p.z = R[6] * x + R[7] * y + R[8] * z + t[2];
    const double nx = p.m_fNX, ny = p.m_fNY, nz = p.m_fNZ;
    p.m_fNX = static_cast<float>(R[0] * nx + R[1] * ny + R[2] * nz);
    p.m_fNY = static_cast<float>(R[3] * nx + R[4] * ny + R[5] * nz);
    p.m_fNZ = static_cast<float>(R[6] * nx + R[7] * ny + R[8] * nz);
  }
  m_points.push_back(p);
}

void E57Points::SetValues(const double* ad, ZuScanPoint3d& p) const {
  p.m_fNX = static_cast<float>(ad[eE57NormalX]);
  p.m_fNY = static_cast<float>(ad[eE57NormalY]);
  p.m_fNZ = static_cast<float>(ad[eE57NormalZ]);
  if (const E57Field* const pRed = m_scan.Find(eE57Red); pRed && ad[eE57ColorInvalid] == 0.0) {
    double dMost = m_scan.dColorMost > 0.0 ? m_scan.dColorMost : pRed->dMost;
    if (!(dMost > 0.0)) dMost = 255.0;
    std::uint32_t uColor = 0;
    for (int i = 0; i < 3; ++i) {
      const double dByte = std::clamp(ad[eE57Red + i] * (255.0 / dMost) + 0.5, 0.0, 255.0);
      uColor |= (dByte >= 0.0 ? static_cast<std::uint32_t>(dByte) : 0u) << (8 * i);
    }
    p.SetColor(uColor);
  }
  const E57Field* const pIntensity = m_scan.Find(eE57Intensity);
  if (pIntensity == nullptr || ad[eE57IntensityInvalid] != 0.0) return;
  const double dValue = ad[eE57Intensity];
  if (!m_bWide) {
    ZuSetIntensity(p, dValue, eZuIntensity255);
    return;
  }
  double dLeast = 0.0, dMost = 0.0;
  IntensityLimits(m_scan, &dLeast, &dMost);
  const bool bLevels = pIntensity->eKind == E57Field::eInteger && pIntensity->iLeast >= 0 &&
                       pIntensity->iMost <= 65535 && pIntensity->iMost > 255;
  const double dWide =
      bLevels || !(dMost > dLeast) ? dValue : (dValue - dLeast) / (dMost - dLeast) * 65535.0;
  ZuSetIntensity(p, dWide, eZuIntensity65535);
}

void E57Points::Finish(std::size_t uScan, bool bStopped, ZuReadFindings& findings) const {
  const std::string strScan = "scan " + std::to_string(uScan) + ": ";
  if (m_szFault != nullptr) {
    findings.Add(eZuReadFault, 0, 0, strScan + m_szFault);
  } else if (bStopped) {
    findings.Add(eZuReadCut, 0, 0, "reading was stopped here");
  } else if (m_uRead < m_scan.uRecords) {
    findings.Add(eZuReadCut, 0, 0,
                 strScan + std::to_string(m_scan.uRecords) + " points are announced, " +
                     std::to_string(m_uRead) + " are there" +
                     (m_reader.IsDamaged() ? "; page " + std::to_string(m_reader.Page()) +
                                                 " does not match its checksum"
                                           : ""));
  }
  if (m_uInvalid > 0) {
    findings.Add(eZuReadDropped, 0, 0,
                 strScan + "points marked as invalid: " + std::to_string(m_uInvalid));
  }
  double dLeast = 0.0, dMost = 0.0;
  IntensityLimits(m_scan, &dLeast, &dMost);
  const E57Field* const pField = m_scan.Find(eE57Intensity);
  if (pField && m_bWide && pField->eKind != E57Field::eInteger) {
    findings.Add(eZuReadNote, 0, 0, strScan + "intensities are spread over 0 to 65535");
  }
}

}  // namespace zu::internal
