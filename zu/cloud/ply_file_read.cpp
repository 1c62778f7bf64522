// PLY files by their header.
#include <algorithm>

#include "zu/cloud/internal/ply_rows.h"
#include "zu/cloud/internal/read_cloud_file.h"
#include "zu/cloud/ply_file.h"

namespace {

// Adds the points to a new cloud, and makes the findings whole.
class RowsIntoCloud {
 public:
  RowsIntoCloud(ZuPlyRows& rows, ZuPointCloud& cloud) : m_rows(rows), m_feed(cloud) {}
  void Run(const ZuPlyElement& vertex) { m_rows.Run(vertex, m_feed); }
  void Finish() { m_rows.Finish(m_feed); }

 private:
  ZuPlyRows& m_rows;
  ZuPointFeed m_feed;
};

void TellHeader(const ZuPlyHeader& header, const ZuPlyLayout& layout, ZuReadFindings& findings) {
  constexpr const char* kForms[] = {"PLY ascii", "PLY binary_little_endian",
                                    "PLY binary_big_endian"};
  findings.m_Dialect.m_strForm = kForms[header.eForm];
  findings.m_Dialect.m_strColumns = layout.strColumns;
  if (layout.strOther.empty()) return;
  findings.Add(eZuReadDropped, 0, 0, "properties that a cloud does not keep: " + layout.strOther);
}

// Reads an open file into a new cloud.
class Reading {
 public:
  Reading(ZuPointCloudContainer& clouds, eZuReadMode eMode) : m_clouds(clouds), m_eMode(eMode) {}

  void operator()(std::FILE* fp, ZuCloudReading& reading) const {
    ZuProgress progress("Reading PLY file");
    ZuPlySource source(ZuStdioInput{fp}, ZuStdioRest(fp));
    ZuPlyHeader header;
    if (!ZuReadPlyHeader(source, progress, header, reading.m_Findings)) return;
    const auto fault = [&](std::uint64_t uLine, const char* szText) {
      reading.m_Findings.Add(eZuReadFault, uLine, 0, szText);
    };
    const auto isVertex = [](const ZuPlyElement& e) { return e.strName == "vertex"; };
    const auto vertex = std::find_if(header.elements.begin(), header.elements.end(), isVertex);
    if (vertex == header.elements.end()) {
      return fault(header.uLines, "the header has no element vertex, which holds the points");
    }
    const ZuPlyLayout layout(*vertex);
    TellHeader(header, layout, reading.m_Findings);
    if (!layout.HasPosition()) {
      return fault(header.eForm == eZuPlyAscii ? header.uLines : 0,
                   "the element vertex has no properties x, y and z");
    }
    ZuPlyRows rows(source, progress, header, layout, reading, m_eMode);
    reading.m_pCloud = m_clouds.AddCloud();
    RowsIntoCloud intoCloud(rows, *reading.m_pCloud);
    ZuRunAndFinish(intoCloud, [&] { intoCloud.Run(*vertex); });
  }

 private:
  ZuPointCloudContainer& m_clouds;
  eZuReadMode m_eMode;
};

}  // namespace

ZuCloudReading ZuReadPly(std::FILE* fp, ZuPointCloudContainer& clouds, eZuReadMode eMode) {
  return ZuReadCloudStream(fp, clouds, Reading(clouds, eMode));
}

ZuCloudReading ZuReadPly(const char* szPath, ZuPointCloudContainer& clouds, eZuReadMode eMode) {
  return ZuReadCloudFile(szPath, clouds, Reading(clouds, eMode));
}
