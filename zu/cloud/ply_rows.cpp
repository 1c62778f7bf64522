#include "zu/cloud/internal/ply_rows.h"

#include <cmath>

ZuPlyRows::ZuPlyRows(ZuPlySource& source, ZuProgress& progress, const ZuPlyHeader& header,
                     const ZuPlyLayout& layout, ZuCloudReading& reading, eZuReadMode eMode)
    : m_source(source),
      m_progress(progress),
      m_header(header),
      m_layout(layout),
      m_findings(reading.m_Findings),
      m_eScale(reading.m_eIntensity),
      m_line(reading.m_Findings, eMode) {
  m_line.SetNumber(header.uLines);
}

void ZuPlyRows::Run(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  for (const ZuPlyElement& element : m_header.elements) {
    if (!(&element == &vertex ? ReadVertices(element, feed) : SkipElement(element))) return;
  }
  TellRest();
}

bool ZuPlyRows::Cut(const ZuPlyElement& element, std::uint64_t uRow) {
  std::string strText = "element " + element.strName + ": " + std::to_string(element.uRows) +
                        " rows are announced, " + std::to_string(uRow) + " are there";
  if (m_progress.IsStopped()) strText = "reading was stopped here";
  m_findings.Add(eZuReadCut, Line(), 0, std::move(strText));
  return false;
}

bool ZuPlyRows::ReadVertices(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  const std::uint64_t uLeast = IsAscii() ? 2 * vertex.properties.size() : vertex.RowSize();
  feed.Expect(vertex.uRows, m_source.GetRest() / uLeast + 1);
  return IsAscii() ? ReadTextRows(vertex, feed) : ReadBinaryRows(vertex, feed);
}

bool ZuPlyRows::SkipElement(const ZuPlyElement& element) {
  if (element.properties.empty() || element.uRows == 0) return true;
  m_findings.Add(eZuReadDropped, 0, 0,
                 "element " + element.strName + ": " + std::to_string(element.uRows) +
                     " rows that a cloud does not keep");
  if (!IsAscii() && !element.HasLists()) {
    const std::uint64_t uRow = element.RowSize();
    const bool bFits = element.uRows <= ~std::uint64_t{0} / uRow;
    return SkipBytes(bFits ? element.uRows * uRow : ~std::uint64_t{0}) || Cut(element, 0);
  }
  for (std::uint64_t i = 0; i < element.uRows; ++i) {
    if (IsAscii() ? NextTextRow() : WalkRow(element, nullptr)) continue;
    return m_bListFault ? Fault("a list of element " + element.strName + " has less than no values")
                        : Cut(element, i);
  }
  return true;
}

void ZuPlyRows::TellRest() {
  if (IsAscii() ? NextTextRow() : Need(1)) {
    m_findings.Add(eZuReadDropped, Line(), 0,
                   "more stands behind the rows that the header announces");
  }
}

void ZuPlyRows::SetColor(const Values& v, const Columns& columns, ZuScanPoint3d& p) {
  const eZuPlyType eType = m_layout.ColorType();
  if (eType == eZuPlyFloat32 || eType == eZuPlyFloat64) {
    return m_colors.Put(p, v[eZuPlyRed], v[eZuPlyGreen], v[eZuPlyBlue]);
  }
  const double dFactor = eType == eZuPlyUint16 ? 255.0 / 65535.0 : 1.0;
  std::uint32_t uColor = 0;
  for (int i = 0; i < 3; ++i) {
    std::uint64_t uLimited = 0;
    const auto uField = static_cast<std::size_t>(eZuPlyRed + i);
    uColor |= ZuRawColors::Byte(v[uField] * dFactor, &uLimited) << (8 * i);
    if (uLimited > 0) m_limitedColors.Add(Line(), columns[uField]);
  }
  p.SetColor(uColor);
}

void ZuPlyRows::AddPoint(const Values& v, const Columns& columns, ZuPointFeed& feed) {
  ZuScanPoint3d p(v[eZuPlyX], v[eZuPlyY], v[eZuPlyZ], 0);
  p.m_fNX = static_cast<float>(v[eZuPlyNX]);
  p.m_fNY = static_cast<float>(v[eZuPlyNY]);
  p.m_fNZ = static_cast<float>(v[eZuPlyNZ]);
  if (m_layout.HasColor()) SetColor(v, columns, p);
  if (m_layout.Has(eZuPlyIntensity)) {
    m_intensities.Put(p, v[eZuPlyIntensity], Line(), columns[eZuPlyIntensity]);
  }
  if (!std::isfinite(p.x + p.y + p.z)) m_notFinite.Add(Line());
  feed.Add(p);
}

void ZuPlyRows::Finish(ZuPointFeed& feed) {
  const eZuPlyType eType = m_layout.types[eZuPlyIntensity];
  m_eScale = eType == eZuPlyUint8    ? eZuIntensity255
             : eType == eZuPlyUint16 ? eZuIntensity65535
                                     : m_intensities.Scale();
  const ZuTally intensities = m_intensities.Settle(feed.GetAdded(), m_eScale);
  m_limitedColors.uCount += m_colors.Settle(feed.GetAdded());
  m_findings.m_uClampedValues = intensities.uCount + m_limitedColors.uCount;
  intensities.Tell(eZuReadClamped, "intensities limited to their scale", m_findings);
  m_limitedColors.Tell(eZuReadClamped, "colour values limited to 0 to 255", m_findings);
  m_notFinite.Tell(eZuReadAssumed, "points with coordinates that are not finite", m_findings);
  if (m_layout.types[eZuPlyRed] == eZuPlyUint16) {
    m_findings.Add(eZuReadAssumed, 0, 0, "colours of 0 to 65535 are taken as 0 to 255");
  }
  m_surplus.Tell(eZuReadDropped, "lines with more values than the header has properties",
                 m_findings);
  m_line.Finish();
}
