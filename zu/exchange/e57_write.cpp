// Writing an E57 file front to back: all sizes follow from the numbers of points and the columns,
// which a first pass over the points tells.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/exchange/e57_file.h"
#include "zu/exchange/internal/e57_pages.h"
#include "zu/exchange/internal/e57_rotation.h"
#include "zu/exchange/internal/e57_scan.h"
#include "zu/exchange/internal/xml_tree.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/md5.h"
#include "zu/foundation/progress.h"

namespace zu::internal {

namespace {

constexpr std::uint64_t kE57FileHeader = 48, kE57Section = 32, kE57Index = 32;
constexpr std::uint64_t kMostOfPacket = 60000;  // bytes of values; a packet holds 65,536
constexpr double kWholeInDouble = 9007199254740992.0;

std::string E57Text(double dValue) {
  char ac[40];
  return std::string(ac, std::to_chars(ac, ac + 40, dValue).ptr);
}

// A number, or a whole one.
XmlElement& AddValue(XmlElement& parent, const char* szName, const std::string& strValue,
                     const char* szType = "Float") {
  XmlElement& element = parent.Add(szName, strValue);
  element.attributes.emplace_back("type", szType);
  return element;
}

XmlElement& AddPart(XmlElement& parent, const char* szName, const char* szType = "Structure") {
  return AddValue(parent, szName, "", szType);
}

// Text as XML has it: no control characters.
std::string XmlText(const char* szText) {
  std::string strText = szText;
  for (char& c : strText) {
    if (static_cast<unsigned char>(c) < 32) c = ' ';
  }
  return strText;
}

// One scan to be written.
class ScanToWrite {
 public:
  ScanToWrite(const ZuPointCloud& cloud, const ZuE57Pose& pose, const ZuE57Options& options);

  std::string Fault() const { return m_strFault; }
  std::uint64_t SectionSize() const;
  void Describe(std::uint64_t uPhysical, std::size_t uNumber, XmlElement* pScans) const;
  // Writes the section that begins at the writer's place.
  bool Write(E57Writer& writer, ZuProgress& progress, std::int64_t* pnDone,
             std::int64_t nAll) const;

 private:
  void Survey();
  void AddField(E57Meaning eMeaning, E57Field::Kind eKind, std::int64_t iMost);
  ZuScanPoint3d InFrame(ZuScanPoint3d p) const;
  std::uint64_t PacketSize(std::uint64_t uRecords) const;
  std::uint64_t Raw(const E57Field& field, const ZuScanPoint3d& p) const;
  void DescribeField(const E57Field& field, XmlElement* pPrototype) const;
  std::vector<unsigned char> Packet(std::size_t uFirst, std::size_t uRecords) const;

  const ZuPointCloud& m_cloud;
  const ZuE57Pose m_pose;
  const double m_dResolution;
  const eZuIntensityScale m_eScale;
  std::vector<E57Field> m_fields;
  std::uint64_t m_uAtOnce = 0;  // records of a full packet, a multiple of 8
  double m_adLeast[3], m_adMost[3];
  double m_adRotation[9];
  bool m_bMoves, m_bFinite = true;
  std::string m_strFault;
};

ScanToWrite::ScanToWrite(const ZuPointCloud& cloud, const ZuE57Pose& pose,
                         const ZuE57Options& options)
    : m_cloud(cloud),
      m_pose(pose),
      m_dResolution(options.m_dResolution > 0.0 ? options.m_dResolution : 0.0),
      m_eScale(options.m_eIntensity == eZuIntensity65535 ? eZuIntensity65535 : eZuIntensity255),
      m_bMoves(pose.adRotation != ZuE57Pose().adRotation ||
               pose.adTranslation != ZuE57Pose().adTranslation) {
  RotationOf(pose, m_adRotation);
  Survey();
  std::uint64_t uBits = 0;
  for (const E57Field& field : m_fields) uBits += field.Bits();
  m_uAtOnce = 8 * std::max<std::uint64_t>(1, kMostOfPacket / std::max<std::uint64_t>(1, uBits));
}

void ScanToWrite::Survey() {
  bool bNormals = false, bIntensities = false;
  std::uint32_t uColors = 0;
  std::fill_n(m_adLeast, 3, 0.0);
  std::fill_n(m_adMost, 3, 0.0);
  bool bFirst = true;
  for (const ZuScanPoint3d& point : m_cloud.GetPoints()) {
    const ZuScanPoint3d p = InFrame(point);
    double ad[] = {p.x, p.y, p.z};
    for (std::size_t i = 0; i < 3; ++i) {
      if (!std::isfinite(ad[i])) m_bFinite = false;
      if (m_dResolution > 0.0) ad[i] = std::nearbyint(ad[i] / m_dResolution) * m_dResolution;
      if (bFirst || ad[i] < m_adLeast[i]) m_adLeast[i] = ad[i];
      if (bFirst || ad[i] > m_adMost[i]) m_adMost[i] = ad[i];
    }
    bFirst = false;
    bNormals = bNormals || p.HasNormVector();
    bIntensities = bIntensities || ZuIntensityOf(p, m_eScale) != 0;
    uColors |= p.m_uColor;
  }
  const E57Field::Kind eKind = m_dResolution > 0.0 ? E57Field::eScaled : E57Field::eDouble;
  if (eKind == E57Field::eScaled && !m_bFinite) {
    m_strFault = "a coordinate that is not finite has no place in steps of " +
                 E57Text(m_dResolution) + "; it has one without a resolution";
    return;
  }
  for (const E57Meaning e : {eE57X, eE57Y, eE57Z}) AddField(e, eKind, 0);
  if (bIntensities) {
    AddField(eE57Intensity, E57Field::eInteger, m_eScale == eZuIntensity65535 ? 65535 : 255);
  }
  if ((uColors & 0xFFFFFF) != 0) {
    for (const E57Meaning e : {eE57Red, eE57Green, eE57Blue}) {
      AddField(e, E57Field::eInteger, 255);
    }
  }
  if (bNormals) {
    for (const E57Meaning e : {eE57NormalX, eE57NormalY, eE57NormalZ}) {
      AddField(e, E57Field::eSingle, 0);
    }
  }
}

void ScanToWrite::AddField(E57Meaning eMeaning, E57Field::Kind eKind, std::int64_t iMost) {
  E57Field field;
  field.eMeaning = eMeaning;
  field.eKind = eKind;
  field.iLeast = 0;
  field.iMost = iMost;
  if (eKind == E57Field::eScaled) {
    field.dScale = m_dResolution;
    const double dLeast = std::nearbyint(m_adLeast[eMeaning] / m_dResolution);
    const double dMost = std::nearbyint(m_adMost[eMeaning] / m_dResolution);
    if (!(std::max(std::fabs(dLeast), std::fabs(dMost)) < kWholeInDouble)) {
      m_strFault = "the coordinates are too large for steps of " + E57Text(m_dResolution) + "; " +
                   E57Text(m_dResolution * 1e6) + " would be possible";
      return;
    }
    field.iLeast = static_cast<std::int64_t>(dLeast);
    // A point takes a byte at least, so that a reader can weigh their number against the file.
    field.iMost = std::max(static_cast<std::int64_t>(dMost), field.iLeast + 7);
  }
  m_fields.push_back(field);
}

// Into the frame of the scanner: q = R' (p - t).
ZuScanPoint3d ScanToWrite::InFrame(ZuScanPoint3d p) const {
  if (!m_bMoves) return p;
  const double* const R = m_adRotation;
  const auto& t = m_pose.adTranslation;
  const double x = p.x - t[0], y = p.y - t[1], z = p.z - t[2];
  p.x = R[0] * x + R[3] * y + R[6] * z;
  p.y = R[1] * x + R[4] * y + R[7] * z;
  p.z = R[2] * x + R[5] * y + R[8] * z;
  const double nx = p.m_fNX, ny = p.m_fNY, nz = p.m_fNZ;
  p.m_fNX = static_cast<float>(R[0] * nx + R[3] * ny + R[6] * nz);
  p.m_fNY = static_cast<float>(R[1] * nx + R[4] * ny + R[7] * nz);
  p.m_fNZ = static_cast<float>(R[2] * nx + R[5] * ny + R[8] * nz);
  return p;
}

std::uint64_t ScanToWrite::PacketSize(std::uint64_t uRecords) const {
  std::uint64_t uSize = 6 + 2 * m_fields.size();
  for (const E57Field& field : m_fields) uSize += (uRecords * field.Bits() + 7) / 8;
  return (uSize + 3) / 4 * 4;
}

std::uint64_t ScanToWrite::SectionSize() const {
  const std::uint64_t uCount = m_cloud.GetPoints().size(), uRest = uCount % m_uAtOnce;
  return kE57Section + uCount / m_uAtOnce * PacketSize(m_uAtOnce) +
         (uRest > 0 ? PacketSize(uRest) : 0) + kE57Index;
}

std::uint64_t ScanToWrite::Raw(const E57Field& field, const ZuScanPoint3d& p) const {
  const double ad[] = {p.x, p.y, p.z};
  const float af[] = {p.m_fNX, p.m_fNY, p.m_fNZ};
  switch (field.eMeaning) {
    case eE57X:
    case eE57Y:
    case eE57Z: {
      const double dValue = ad[field.eMeaning];
      if (field.eKind == E57Field::eDouble) return std::bit_cast<std::uint64_t>(dValue);
      const auto iValue = static_cast<std::int64_t>(std::nearbyint(dValue / field.dScale));
      return static_cast<std::uint64_t>(iValue - field.iLeast);
    }
    case eE57Intensity:
      return static_cast<std::uint64_t>(ZuIntensityOf(p, m_eScale));
    case eE57Red:
    case eE57Green:
    case eE57Blue:
      return p.m_uColor >> (8 * (field.eMeaning - eE57Red)) & 0xFF;
    default:
      return std::bit_cast<std::uint32_t>(af[field.eMeaning - eE57NormalX]);
  }
}

std::vector<unsigned char> ScanToWrite::Packet(std::size_t uFirst, std::size_t uRecords) const {
  std::vector<unsigned char> packet(static_cast<std::size_t>(PacketSize(uRecords)));
  packet[0] = 1;
  unsigned char* p =
      ZuStoreLittle(packet.data() + 2, static_cast<std::uint16_t>(packet.size() - 1));
  p = ZuStoreLittle(p, static_cast<std::uint16_t>(m_fields.size()));
  std::vector<std::size_t> places;
  std::size_t uAt = 6 + 2 * m_fields.size();
  for (const E57Field& field : m_fields) {
    const std::size_t uLength = (uRecords * field.Bits() + 7) / 8;
    p = ZuStoreLittle(p, static_cast<std::uint16_t>(uLength));
    places.push_back(8 * uAt);
    uAt += uLength;
  }
  for (std::size_t i = 0; i < uRecords; ++i) {
    const ZuScanPoint3d point = InFrame(m_cloud.GetPoints()[uFirst + i]);
    for (std::size_t k = 0; k < m_fields.size(); ++k) {
      std::uint64_t u = Raw(m_fields[k], point);
      // The lowest bits first, into what the first byte has left and the bytes behind it.
      for (unsigned int uLeft = m_fields[k].Bits(); uLeft > 0;) {
        const auto uShift = static_cast<unsigned int>(places[k] % 8);
        const unsigned int n = std::min(uLeft, 8 - uShift);
        const auto uPart = static_cast<unsigned int>(u & ((1u << n) - 1));
        packet[places[k] / 8] |= static_cast<unsigned char>(uPart << uShift);
        u >>= n;
        uLeft -= n;
        places[k] += n;
      }
    }
  }
  return packet;
}

bool ScanToWrite::Write(E57Writer& writer, ZuProgress& progress, std::int64_t* pnDone,
                        std::int64_t nAll) const {
  const std::uint64_t uStart = writer.Logical(), uSize = SectionSize();
  const std::uint64_t uData = E57Physical(uStart + kE57Section);
  unsigned char aHeader[kE57Section] = {1};
  ZuStoreLittle(aHeader + 8, uSize);
  ZuStoreLittle(aHeader + 16, uData);
  ZuStoreLittle(aHeader + 24, E57Physical(uStart + uSize - kE57Index));
  bool bGood = writer.Write(aHeader, sizeof aHeader);
  const std::size_t uCount = m_cloud.GetPoints().size();
  for (std::size_t i = 0; i < uCount && bGood; i += static_cast<std::size_t>(m_uAtOnce)) {
    const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(m_uAtOnce, uCount - i));
    const std::vector<unsigned char> packet = Packet(i, n);
    *pnDone += static_cast<std::int64_t>(n);
    bGood = writer.Write(packet.data(), packet.size()) && progress.SetPosition(*pnDone, nAll);
  }
  // An index of one entry: record 0 stands in the first packet.
  unsigned char aIndex[kE57Index] = {0};
  ZuStoreLittle(aIndex + 2, static_cast<std::uint16_t>(kE57Index - 1));
  ZuStoreLittle(aIndex + 4, static_cast<std::uint16_t>(uCount > 0 ? 1 : 0));
  ZuStoreLittle(aIndex + 24, uData);
  return bGood && writer.Write(aIndex, sizeof aIndex);
}

void ScanToWrite::DescribeField(const E57Field& field, XmlElement* pPrototype) const {
  const char* const aszKinds[] = {"Float", "Float", "Integer", "ScaledInteger"};
  XmlElement& element = AddPart(*pPrototype, E57FieldName(field.eMeaning), aszKinds[field.eKind]);
  const auto add = [&element](const char* szName, const std::string& strValue) {
    element.attributes.emplace_back(szName, strValue);
  };
  if (field.eKind == E57Field::eSingle) add("precision", "single");
  if (field.eKind == E57Field::eInteger || field.eKind == E57Field::eScaled) {
    add("minimum", std::to_string(field.iLeast));
    add("maximum", std::to_string(field.iMost));
  }
  if (field.eKind == E57Field::eScaled) add("scale", E57Text(field.dScale));
}

void ScanToWrite::Describe(std::uint64_t uPhysical, std::size_t uNumber, XmlElement* pScans) const {
  XmlElement& scan = AddPart(*pScans, "vectorChild");
  const std::string strName = XmlText(m_cloud.GetName().chars());
  // The same points and name give the same mark, others another.
  const auto& points = m_cloud.GetPoints();
  ZuMD5 md5;
  md5.Add(strName.data(), strName.size());
  for (const ZuScanPoint3d& p : points) md5.Add(&p.x, 3 * sizeof(double));
  const auto digest = md5.GetDigest();
  const std::string strMark = std::to_string(uNumber) + ZuCalcMD5(digest.data(), digest.size());
  AddValue(scan, "guid", "{" + strMark + "}", "String");
  AddValue(scan, "name", strName, "String");
  if (m_bMoves) {
    XmlElement& pose = AddPart(scan, "pose");
    XmlElement& rotation = AddPart(pose, "rotation");
    const char* const aszNames[] = {"w", "x", "y", "z"};
    for (std::size_t i = 0; i < 4; ++i) {
      AddValue(rotation, aszNames[i], E57Text(m_pose.adRotation[i]));
    }
    XmlElement& translation = AddPart(pose, "translation");
    for (std::size_t i = 0; i < 3; ++i) {
      AddValue(translation, aszNames[i + 1], E57Text(m_pose.adTranslation[i]));
    }
  }
  if (m_bFinite && !points.empty()) {
    XmlElement& bounds = AddPart(scan, "cartesianBounds");
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string strAxis(1, "xyz"[i]);
      AddValue(bounds, (strAxis + "Minimum").c_str(), E57Text(m_adLeast[i]));
      AddValue(bounds, (strAxis + "Maximum").c_str(), E57Text(m_adMost[i]));
    }
  }
  for (const E57Field& field : m_fields) {
    if (field.eMeaning == eE57Intensity) {
      XmlElement& limits = AddPart(scan, "intensityLimits");
      AddValue(limits, "intensityMinimum", "0", "Integer");
      AddValue(limits, "intensityMaximum", std::to_string(field.iMost), "Integer");
    } else if (field.eMeaning == eE57Red) {
      XmlElement& limits = AddPart(scan, "colorLimits");
      for (const char* szColor : {"Red", "Green", "Blue"}) {
        const std::string strColor = std::string("color") + szColor;
        AddValue(limits, (strColor + "Minimum").c_str(), "0", "Integer");
        AddValue(limits, (strColor + "Maximum").c_str(), "255", "Integer");
      }
    }
  }
  XmlElement& section = AddPart(scan, "points", "CompressedVector");
  section.attributes.emplace_back("fileOffset", std::to_string(uPhysical));
  section.attributes.emplace_back("recordCount", std::to_string(points.size()));
  XmlElement& prototype = AddPart(section, "prototype");
  for (const E57Field& field : m_fields) DescribeField(field, &prototype);
  AddPart(section, "codecs", "Vector").attributes.emplace_back("allowHeterogeneousChildren", "1");
}

XmlElement E57Root() {
  XmlElement root;
  root.strName = "e57Root";
  root.attributes = {{"type", "Structure"},
                     {"xmlns", "http://www.astm.org/COMMIT/E57/2010-e57-v1.0"},
                     {"xmlns:nor", "http://www.libe57.org/E57_NOR_surface_normals.txt"}};
  AddValue(root, "formatName", "ASTM E57 3D Imaging Data File", "String");
  AddValue(root, "guid", "{00000000000000000000000000000000}", "String");
  AddValue(root, "versionMajor", "1", "Integer");
  AddValue(root, "versionMinor", "0", "Integer");
  AddValue(root, "e57LibraryVersion", "zu", "String");
  AddValue(root, "coordinateMetadata", "", "String");
  return root;
}

ZuE57Writing WriteE57(const char* szPath, const ZuPointCloudContainer& clouds,
                      const ZuE57Options& options) {
  ZuE57Writing writing;
  std::vector<ScanToWrite> scans;
  std::int64_t nAll = 0;
  XmlElement root = E57Root();
  XmlElement& vector = AddPart(root, "data3D", "Vector");
  vector.attributes.emplace_back("allowHeterogeneousChildren", "1");
  std::uint64_t uLogical = kE57FileHeader;
  for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next()) {
    const std::size_t i = scans.size();
    scans.emplace_back(*p, i < options.m_aPoses.size() ? options.m_aPoses[i] : ZuE57Pose(),
                       options);
    writing.m_strFault = scans.back().Fault();
    if (!writing.m_strFault.empty()) return writing;
    scans.back().Describe(E57Physical(uLogical), i, &vector);
    uLogical += scans.back().SectionSize();
    nAll += static_cast<std::int64_t>(p->GetPoints().size());
  }
  AddPart(root, "images2D", "Vector").attributes.emplace_back("allowHeterogeneousChildren", "1");
  const std::string strXml = WriteXml(root);

  std::FILE* const fp = szPath != nullptr ? std::fopen(szPath, "wb") : nullptr;
  if (fp == nullptr) return writing;
  ZuProgress progress("Writing E57 file");
  E57Writer writer(fp);
  const std::uint64_t uEnd = uLogical + strXml.size();
  unsigned char aHeader[kE57FileHeader] = {};
  std::memcpy(aHeader, "ASTM-E57", 8);
  ZuStoreLittle(aHeader + 8, std::uint32_t{1});
  ZuStoreLittle(aHeader + 16, (uEnd + kE57PageData - 1) / kE57PageData * kE57Page);
  ZuStoreLittle(aHeader + 24, E57Physical(uLogical));
  ZuStoreLittle(aHeader + 32, static_cast<std::uint64_t>(strXml.size()));
  ZuStoreLittle(aHeader + 40, kE57Page);
  bool bGood = writer.Write(aHeader, sizeof aHeader);
  std::int64_t nDone = 0;
  for (const ScanToWrite& scan : scans) bGood = bGood && scan.Write(writer, progress, &nDone, nAll);
  bGood = bGood && writer.Write(strXml.data(), strXml.size()) && writer.Finish();
  writing.m_bGood = std::fclose(fp) == 0 && bGood;
  return writing;
}

}  // namespace

}  // namespace zu::internal

ZuE57Writing ZuWriteE57(const char* szPath, const ZuPointCloudContainer& clouds,
                        const ZuE57Options& options) {
  const auto write = [&] { return zu::internal::WriteE57(szPath, clouds, options); };
  return zu::internal::OrWithoutMemory(write, ZuE57Writing());
}
