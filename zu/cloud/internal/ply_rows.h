// The rows of a PLY file behind its header: those of the element `vertex` become points, those of
// other elements are walked over.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "zu/cloud/cloud_reading.h"
#include "zu/cloud/internal/ply_layout.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/raw_values.h"
#include "zu/cloud/internal/text_line.h"
#include "zu/foundation/progress.h"

class ZuPlyRows {
 public:
  ZuPlyRows(ZuPlySource& source, ZuProgress& progress, const ZuPlyHeader& header,
            const ZuPlyLayout& layout, ZuCloudReading& reading, eZuReadMode eMode);

  // Reads the rows of all elements, the vertices into the feed, as far as they can be read.
  void Run(const ZuPlyElement& vertex, ZuPointFeed& feed);

  // Gives the points what only the whole file tells, and reports what was counted.
  void Finish(ZuPointFeed& feed);

 private:
  using Values = std::array<double, eZuPlyFields>;
  // Columns of the values in a line of text; 0 in a binary file.
  using Columns = std::array<std::uint64_t, eZuPlyFields>;

  bool IsAscii() const { return m_header.eForm == eZuPlyAscii; }
  bool IsBig() const { return m_header.eForm == eZuPlyBinaryBig; }
  std::size_t InHand() const { return static_cast<std::size_t>(m_source.End() - m_source.Begin()); }
  // From 1; 0 in a binary file.
  std::uint64_t Line() const { return IsAscii() ? m_line.GetNumber() : 0; }

  // Those below are false where reading has to end.
  bool SkipElement(const ZuPlyElement& element);
  bool ReadVertices(const ZuPlyElement& vertex, ZuPointFeed& feed);
  bool Cut(const ZuPlyElement& element, std::uint64_t uRow);
  bool Fault(std::string strText) {
    m_findings.Add(eZuReadFault, Line(), 0, std::move(strText));
    return false;
  }

  // ply_text_rows.cpp
  bool NextTextRow();
  bool ReadTextRows(const ZuPlyElement& vertex, ZuPointFeed& feed);
  bool TakeTextRow(const ZuPlyElement& vertex, ZuPointFeed& feed);

  // ply_binary_rows.cpp
  bool Need(std::uint64_t uBytes);
  bool SkipBytes(std::uint64_t uBytes);
  bool SkipList(const ZuPlyProperty& list);
  bool WalkRow(const ZuPlyElement& element, Values* pValues);
  bool ReadBinaryRows(const ZuPlyElement& vertex, ZuPointFeed& feed);

  void TellRest();
  void AddPoint(const Values& v, const Columns& columns, ZuPointFeed& feed);
  void SetColor(const Values& v, const Columns& columns, ZuScanPoint3d& p);

  ZuPlySource& m_source;
  ZuProgress& m_progress;
  const ZuPlyHeader& m_header;
  const ZuPlyLayout& m_layout;
  ZuReadFindings& m_findings;
  eZuIntensityScale& m_eScale;
  ZuTextLine m_line;  // of an ASCII file
  ZuRawIntensities m_intensities;
  ZuRawColors m_colors;
  ZuTally m_surplus;  // lines with more values than properties
  ZuTally m_limitedColors, m_notFinite;
  bool m_bListFault = false;  // a list has less than no values
};
