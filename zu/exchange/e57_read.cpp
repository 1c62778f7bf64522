#include <algorithm>
#include <cstring>
#include <new>

#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/exchange/e57_file.h"
#include "zu/exchange/internal/e57_points.h"
#include "zu/foundation/progress.h"

namespace zu::internal {

namespace {

constexpr std::size_t kE57Header = 48;

// The XML section; false with a fault.
bool ReadE57Xml(const char* szPath, std::string* pstrXml, ZuReadFindings& findings) {
  const auto fault = [&findings](std::string strText, std::string strRight = "") {
    findings.Add(eZuReadFault, 0, 0, std::move(strText), std::move(strRight));
    return false;
  };
  E57Reader start(szPath, 0);
  const std::uint64_t uSize = start.FileSize();
  if (uSize == 0) return fault("cannot be opened, or is empty");
  unsigned char aHeader[kE57Header] = {};
  if (!start.Read(aHeader, sizeof aHeader)) {
    return fault(start.IsDamaged() ? "page 1 does not match its checksum"
                                   : "ends within its first page");
  }
  if (std::memcmp(aHeader, "ASTM-E57", 8) != 0) return fault("does not start with \"ASTM-E57\"");
  const auto word = [&aHeader](std::size_t u) { return ZuLoadLittle<std::uint64_t>(aHeader + u); };
  if (ZuLoadLittle<std::uint32_t>(aHeader + 8) != 1) {
    return fault("is of version " + std::to_string(ZuLoadLittle<std::uint32_t>(aHeader + 8)), "1");
  }
  if (word(40) != kE57Page) {
    return fault("has pages of " + std::to_string(word(40)) + " bytes", "1024");
  }
  if (word(16) != uSize) {
    findings.Add(
        eZuReadCut, 0, 0,
        std::to_string(word(16)) + " bytes are announced, " + std::to_string(uSize) + " are there");
  }
  if (word(24) >= uSize || word(32) > uSize - word(24)) {
    return fault("the XML is said to stand beyond the end of the file");
  }
  E57Reader reader(szPath, word(24));
  pstrXml->resize(static_cast<std::size_t>(word(32)));
  if (reader.Read(pstrXml->data(), pstrXml->size())) return true;
  return fault(reader.IsDamaged()
                   ? "page " + std::to_string(reader.Page()) + " does not match its checksum"
                   : "ends within its XML");
}

void ReadE57Scan(const char* szPath, const E57Scan& scan, std::size_t uScan,
                 ZuPointCloudContainer& clouds, ZuProgress& progress, ZuE57Reading& reading) {
  ZuPointCloud* const pCloud = clouds.AddCloud();
  if (reading.m_pCloud == nullptr) reading.m_pCloud = pCloud;
  reading.m_aPoses.push_back(scan.pose);
  pCloud->SetName(String(scan.strName.c_str()));
  E57Points points(szPath, scan, reading.m_eIntensity == eZuIntensity65535);
  {
    ZuPointFeed feed(*pCloud);
    feed.Expect(scan.uRecords, points.Room());
    while (progress.SetPosition(static_cast<std::int64_t>(points.Records()),
                                static_cast<std::int64_t>(scan.uRecords))) {
      const auto& block = points.Next();
      if (block.empty()) break;
      for (const ZuScanPoint3d& p : block) feed.Add(p);
    }
  }
  points.Finish(uScan, progress.IsStopped(), reading.m_Findings);
  clouds.UpdateCenterAndBox(pCloud);
}

void ReadE57(const char* szPath, ZuPointCloudContainer& clouds, ZuE57Reading& reading) {
  std::string strXml;
  if (!ReadE57Xml(szPath, &strXml, reading.m_Findings)) return;
  const std::vector<E57Scan> scans = ReadE57Scans(strXml, reading.m_Findings);
  reading.m_Findings.m_Dialect.m_strForm = "E57, " + std::to_string(scans.size()) + " scans";
  const auto has = [](const E57Scan& scan) { return scan.Find(eE57Intensity) != nullptr; };
  reading.m_eIntensity = std::none_of(scans.begin(), scans.end(), has)          ? eZuIntensityNone
                         : std::all_of(scans.begin(), scans.end(), HasE57Bytes) ? eZuIntensity255
                                                                                : eZuIntensity65535;
  for (std::size_t i = 0; i < scans.size(); ++i) {
    ZuProgress progress("Reading E57 file");
    ReadE57Scan(szPath, scans[i], i + 1, clouds, progress, reading);
    if (progress.IsStopped()) return;
  }
}

}  // namespace

}  // namespace zu::internal

ZuE57Reading ZuReadE57(const char* szPath, ZuPointCloudContainer& clouds) {
  ZuE57Reading reading;
  if (szPath == nullptr) return reading;
  try {
    zu::internal::ReadE57(szPath, clouds, reading);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
