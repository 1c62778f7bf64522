#include <array>
#include <new>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/las_points.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/read_cloud_file.h"
#include "zu/cloud/las_file.h"

namespace {

// Blocks into a cloud, and at the end what only the whole file tells.
class LasIntoCloud {
 public:
  LasIntoCloud(ZuLasPoints& points, ZuCloudReading& reading)
      : m_points(points), m_reading(reading), m_feed(*reading.m_pCloud) {}

  void Run(std::uint64_t uAnnounced) {
    m_feed.Expect(uAnnounced, m_points.Room());
    std::array<ZuScanPoint3d, 256> block;
    while (const std::size_t n = m_points.Next(block)) {
      for (std::size_t i = 0; i < n; ++i) m_feed.Add(block[i]);
    }
  }

  void Finish() {
    m_points.Settle(m_feed.GetAdded());
    m_reading.m_eIntensity = m_points.Scale();
    m_points.Finish(m_reading.m_Findings);
  }

 private:
  ZuLasPoints& m_points;
  ZuCloudReading& m_reading;
  ZuPointFeed m_feed;
};

void ReadLasPoints(const char* szPath, ZuPointCloudContainer& clouds, ZuCloudReading& reading) {
  ZuReadFindings& findings = reading.m_Findings;
  ZuFileBuff buff(szPath);
  if (buff.GetError() != eZuFileBuffGood) {
    return findings.Add(eZuReadFault, 0, 0,
                        buff.GetError() == eZuFileBuffEmpty ? "is empty" : "cannot be opened");
  }
  ZuLasHeader header;
  if (!header.Read(buff, findings)) return;
  findings.m_Dialect.m_strForm =
      "LAS 1." + std::to_string(header.uMinor) + ", point format " + std::to_string(header.uFormat);
  findings.m_Dialect.m_strColumns =
      header.Format().uColor != 0 ? "x y z intensity red green blue" : "x y z intensity";
  ZuProgress progress("Reading LAS file");
  ZuLasPoints points(buff, header, progress);
  reading.m_pCloud = clouds.AddCloud();
  LasIntoCloud into(points, reading);
  ZuRunAndFinish(into, [&] { into.Run(header.uPoints); });
}

}  // namespace

ZuCloudReading ZuReadLas(const char* szPath, ZuPointCloudContainer& clouds) {
  ZuCloudReading reading;
  if (szPath == nullptr) return reading;
  try {
    ReadLasPoints(szPath, clouds, reading);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  clouds.UpdateCenterAndBox(reading.m_pCloud);
  return reading;
}
