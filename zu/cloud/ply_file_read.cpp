// PLY files by their header: rows of the element `vertex` become points, those of other elements
// are walked over.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/internal/ply_header.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/raw_values.h"
#include "zu/cloud/internal/strict_number.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/progress.h"

namespace {

// What a property is for a point.
enum Field { eX, eY, eZ, eNX, eNY, eNZ, eRed, eGreen, eBlue, eIntensity, eFields, eNoField };

Field FieldOf(const std::string& strName) {
  static const struct {
    const char* szName;
    Field eField;
  } names[] = {{"x", eX},
               {"y", eY},
               {"z", eZ},
               {"nx", eNX},
               {"ny", eNY},
               {"nz", eNZ},
               {"red", eRed},
               {"green", eGreen},
               {"blue", eBlue},
               {"r", eRed},
               {"g", eGreen},
               {"b", eBlue},
               {"diffuse_red", eRed},
               {"diffuse_green", eGreen},
               {"diffuse_blue", eBlue},
               {"intensity", eIntensity},
               {"scalar_intensity", eIntensity}};
  for (const auto& name : names) {
    if (strName == name.szName) return name.eField;
  }
  return eNoField;
}

// The value whose bytes stand at p.
template <class T>
double Load(const unsigned char* p, bool bBig) {
  unsigned char aBytes[sizeof(T)];
  if (bBig) {
    std::reverse_copy(p, p + sizeof(T), aBytes);
    p = aBytes;
  }
  return static_cast<double>(ZuLoadLittle<T>(p));
}

double LoadValue(const unsigned char* p, eZuPlyType eType, bool bBig) {
  switch (eType) {
    case eZuPlyInt8:
      return Load<std::int8_t>(p, false);
    case eZuPlyUint8:
      return Load<std::uint8_t>(p, false);
    case eZuPlyInt16:
      return Load<std::int16_t>(p, bBig);
    case eZuPlyUint16:
      return Load<std::uint16_t>(p, bBig);
    case eZuPlyInt32:
      return Load<std::int32_t>(p, bBig);
    case eZuPlyUint32:
      return Load<std::uint32_t>(p, bBig);
    case eZuPlyFloat32:
      return Load<float>(p, bBig);
    case eZuPlyFloat64:
      return Load<double>(p, bBig);
    default:
      return 0.0;
  }
}

// What the properties of the element `vertex` mean.
struct Layout {
  std::vector<Field> fields;                     // of each property
  std::array<eZuPlyType, eFields> types;         // of each field, none where it is missing
  std::array<std::uint64_t, eFields> offsets{};  // in a row of a binary file without lists

  Layout() { types.fill(eZuPlyNoType); }
  bool Has(Field eField) const { return types[eField] != eZuPlyNoType; }
  bool HasColor() const { return Has(eRed) || Has(eGreen) || Has(eBlue); }
};

// Reads the rows of one file.
class RowReader {
 public:
  RowReader(ZuPlySource& source, ZuProgress& progress, const ZuPlyHeader& header,
            ZuCloudReading& reading)
      : m_source(source),
        m_progress(progress),
        m_header(header),
        m_findings(reading.m_Findings),
        m_eScale(reading.m_eIntensity),
        m_uLine(header.uLines) {}

  // Finds what the properties mean; false, with a fault, where x, y or z is missing.
  bool TakeLayout(const ZuPlyElement& vertex);

  // False where reading has to end.
  bool SkipElement(const ZuPlyElement& element);
  bool ReadVertices(const ZuPlyElement& vertex, ZuPointFeed& feed);

  // What stands behind the last element.
  void TellRest();

  // Gives the points what only the whole file tells, and reports what was counted.
  void Finish(ZuPointFeed& feed);

 private:
  using Values = std::array<double, eFields>;

  bool IsAscii() const { return m_header.eForm == eZuPlyAscii; }
  bool IsBig() const { return m_header.eForm == eZuPlyBinaryBig; }
  std::size_t InHand() const { return static_cast<std::size_t>(m_source.End() - m_source.Begin()); }

  bool Cut(const ZuPlyElement& element, std::uint64_t uRow);
  bool Fault(std::uint64_t uColumn, std::string strText) {
    m_findings.Add(eZuCloudFault, m_uLine, uColumn, std::move(strText));
    return false;
  }

  bool NextTextRow(const char** ppBegin, const char** ppEnd);
  bool ParseTextRow(const ZuPlyElement& vertex, const char* pBegin, const char* pEnd, Values& v);
  bool ReadTextRows(const ZuPlyElement& vertex, ZuPointFeed& feed);

  bool Need(std::uint64_t uBytes);
  bool SkipBytes(std::uint64_t uBytes);
  bool SkipList(const ZuPlyProperty& list);
  bool WalkRow(const ZuPlyElement& element, Values* pValues);
  bool ReadBinaryRows(const ZuPlyElement& vertex, ZuPointFeed& feed);

  void AddPoint(const Values& v, ZuPointFeed& feed);
  void SetColor(const Values& v, ZuScanPoint3d& p);

  ZuPlySource& m_source;
  ZuProgress& m_progress;
  const ZuPlyHeader& m_header;
  ZuCloudFindings& m_findings;
  eZuIntensityScale& m_eScale;
  Layout m_layout;
  ZuRawIntensities m_intensities;
  ZuRawColors m_colors;
  std::uint64_t m_uLine;             // of the text; 0 in a binary file
  std::uint64_t m_uSurplusLine = 0;  // the first line with more values than properties
  std::uint64_t m_uLimited = 0;      // colours that had to be limited
  std::uint64_t m_uNotFinite = 0;
  bool m_bLineEnds = true;
  bool m_bListFault = false;  // a list has less than no values
};

bool RowReader::TakeLayout(const ZuPlyElement& vertex) {
  std::uint64_t uOffset = 0;
  std::string strOther;
  for (const ZuPlyProperty& property : vertex.properties) {
    Field eField = property.IsList() ? eNoField : FieldOf(property.strName);
    if (eField != eNoField && m_layout.Has(eField)) eField = eNoField;  // the first one counts
    m_layout.fields.push_back(eField);
    if (eField == eNoField) {
      strOther += (strOther.empty() ? "" : ", ") + property.strName;
    } else {
      m_layout.types[eField] = property.eType;
      m_layout.offsets[eField] = uOffset;
    }
    uOffset += ZuPlySize(property.IsList() ? property.eCountType : property.eType);
  }
  if (!strOther.empty()) {
    if (strOther.size() > 200) strOther = strOther.substr(0, 200) + "...";
    m_findings.Add(eZuCloudDropped, 0, 0, "properties that a cloud does not keep: " + strOther);
  }
  if (!IsAscii()) m_uLine = 0;
  if (m_layout.Has(eX) && m_layout.Has(eY) && m_layout.Has(eZ)) return true;
  return Fault(0, "the element vertex has no properties x, y and z");
}

bool RowReader::Cut(const ZuPlyElement& element, std::uint64_t uRow) {
  std::string strText = "element " + element.strName + ": " + std::to_string(element.uRows) +
                        " rows are announced, " + std::to_string(uRow) + " are there";
  if (m_progress.IsStopped()) strText = "reading was stopped here";
  m_findings.Add(eZuCloudCut, m_uLine, 0, std::move(strText));
  return false;
}

// ---- text

// The next line with anything in it; false at the end of the file.
bool RowReader::NextTextRow(const char** ppBegin, const char** ppEnd) {
  while (const char* pEnd = ZuNextLine(m_source, m_progress, kZuPlyLongestLine)) {
    ++m_uLine;
    const char* p = m_source.Begin();
    m_bLineEnds = pEnd != m_source.End();
    const char* const pText = pEnd > p && pEnd[-1] == '\r' ? pEnd - 1 : pEnd;
    *ppBegin = p;
    *ppEnd = pText;
    m_source.SetBegin(pEnd + 1);
    while (p != pText && ZuPlyDelimiter()(*p)) ++p;
    if (p != pText) return true;
  }
  return false;
}

// The values of a line that the point needs; false, with a fault, where one is missing or none.
bool RowReader::ParseTextRow(const ZuPlyElement& vertex, const char* pBegin, const char* pEnd,
                             Values& v) {
  const char* p = pBegin;
  ZuTextToken token = {};
  const auto next = [&] {
    while (p != pEnd && ZuPlyDelimiter()(*p)) ++p;
    token.pBegin = p;
    while (p != pEnd && !ZuPlyDelimiter()(*p)) ++p;
    token.pEnd = p;
    return token.pBegin != p;
  };
  const auto wrong = [&](std::string strText) {
    if (m_bLineEnds) {
      return Fault(static_cast<std::uint64_t>(token.pBegin - pBegin) + 1, std::move(strText));
    }
    m_findings.Add(eZuCloudCut, m_uLine, 0, "the file ends within a line: " + strText);
    return false;
  };
  for (std::size_t i = 0; i < vertex.properties.size(); ++i) {
    const ZuPlyProperty& property = vertex.properties[i];
    const Field eField = m_layout.fields[i];
    if (!next()) {
      return wrong("the line ends before the value of " + property.strName);
    }
    double dValue = 0.0;
    if ((eField != eNoField || property.IsList()) && !ZuStrictNumber(token, &dValue)) {
      return wrong(ZuWhyNoNumber(token) + ", for " + property.strName);
    }
    if (eField != eNoField) v[eField] = dValue;
    if (!property.IsList()) continue;
    for (double d = 0.0; d < dValue; d += 1.0) {
      if (!next()) return wrong("the list " + property.strName + " has too few values");
    }
  }
  if (next() && m_uSurplusLine == 0) m_uSurplusLine = m_uLine;
  return true;
}

bool RowReader::ReadTextRows(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  Values v{};
  const char *pBegin = nullptr, *pEnd = nullptr;
  for (std::uint64_t i = 0; i < vertex.uRows; ++i) {
    if (!NextTextRow(&pBegin, &pEnd)) return Cut(vertex, i);
    if (!ParseTextRow(vertex, pBegin, pEnd, v)) return false;
    AddPoint(v, feed);
  }
  return true;
}

// ---- binary

// Brings so many bytes in hand; false where the file ends before.
bool RowReader::Need(std::uint64_t uBytes) {
  while (InHand() < uBytes) {
    if (m_source.IsComplete() || !m_source.Refill(m_progress)) return false;
  }
  return true;
}

bool RowReader::SkipBytes(std::uint64_t uBytes) {
  while (uBytes > InHand()) {
    uBytes -= InHand();
    m_source.SetBegin(m_source.End());
    if (m_source.IsComplete() || !m_source.Refill(m_progress)) return false;
  }
  m_source.SetBegin(m_source.Begin() + uBytes);
  return true;
}

bool RowReader::SkipList(const ZuPlyProperty& list) {
  const unsigned int uSize = ZuPlySize(list.eCountType);
  if (!Need(uSize)) return false;
  const double dCount =
      LoadValue(reinterpret_cast<const unsigned char*>(m_source.Begin()), list.eCountType, IsBig());
  m_bListFault = dCount < 0.0;
  return !m_bListFault &&
         SkipBytes(uSize + static_cast<std::uint64_t>(dCount) * ZuPlySize(list.eType));
}

// Moves over a row with lists, value by value; keeps what a point needs where there are values to
// fill.
bool RowReader::WalkRow(const ZuPlyElement& element, Values* pValues) {
  for (std::size_t i = 0; i < element.properties.size(); ++i) {
    const ZuPlyProperty& property = element.properties[i];
    if (property.IsList()) {
      if (!SkipList(property)) return false;
      continue;
    }
    const unsigned int uSize = ZuPlySize(property.eType);
    if (!Need(uSize)) return false;
    if (pValues && m_layout.fields[i] != eNoField) {
      (*pValues)[m_layout.fields[i]] = LoadValue(
          reinterpret_cast<const unsigned char*>(m_source.Begin()), property.eType, IsBig());
    }
    m_source.SetBegin(m_source.Begin() + uSize);
  }
  return true;
}

bool RowReader::ReadBinaryRows(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  Values v{};
  const std::uint64_t uRow = vertex.RowSize();
  const bool bLists = vertex.HasLists();
  for (std::uint64_t i = 0; i < vertex.uRows; ++i) {
    if (bLists ? !WalkRow(vertex, &v) : !Need(uRow)) {
      return m_bListFault
                 ? Fault(0, "a list of vertex " + std::to_string(i) + " has less than no values")
                 : Cut(vertex, i);
    }
    if (!bLists) {
      const auto* const pRow = reinterpret_cast<const unsigned char*>(m_source.Begin());
      for (int f = 0; f < eFields; ++f) {
        if (!m_layout.Has(static_cast<Field>(f))) continue;
        v[f] = LoadValue(pRow + m_layout.offsets[f], m_layout.types[f], IsBig());
      }
      m_source.SetBegin(m_source.Begin() + uRow);
    }
    AddPoint(v, feed);
  }
  return true;
}

// ---- both

bool RowReader::ReadVertices(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  const std::uint64_t uLeast = IsAscii() ? 2 * vertex.properties.size() : vertex.RowSize();
  feed.Expect(vertex.uRows, m_source.GetRest() / uLeast + 1);
  return IsAscii() ? ReadTextRows(vertex, feed) : ReadBinaryRows(vertex, feed);
}

bool RowReader::SkipElement(const ZuPlyElement& element) {
  if (element.properties.empty() || element.uRows == 0) return true;
  m_findings.Add(eZuCloudDropped, 0, 0,
                 "element " + element.strName + ": " + std::to_string(element.uRows) +
                     " rows that a cloud does not keep");
  const char *pBegin = nullptr, *pEnd = nullptr;
  if (!IsAscii() && !element.HasLists()) {
    const std::uint64_t uRow = element.RowSize();
    const bool bFits = element.uRows <= ~std::uint64_t{0} / uRow;
    return SkipBytes(bFits ? element.uRows * uRow : ~std::uint64_t{0}) || Cut(element, 0);
  }
  for (std::uint64_t i = 0; i < element.uRows; ++i) {
    if (IsAscii() ? NextTextRow(&pBegin, &pEnd) : WalkRow(element, nullptr)) continue;
    return m_bListFault
               ? Fault(0, "a list of element " + element.strName + " has less than no values")
               : Cut(element, i);
  }
  return true;
}

void RowReader::TellRest() {
  const char *pBegin = nullptr, *pEnd = nullptr;
  if (IsAscii() ? NextTextRow(&pBegin, &pEnd) : Need(1)) {
    m_findings.Add(eZuCloudDropped, m_uLine, 0,
                   "more stands behind the rows that the header announces");
  }
}

void RowReader::SetColor(const Values& v, ZuScanPoint3d& p) {
  const eZuPlyType eType = m_layout.types[m_layout.Has(eRed)     ? eRed
                                          : m_layout.Has(eGreen) ? eGreen
                                                                 : eBlue];
  if (eType == eZuPlyFloat32 || eType == eZuPlyFloat64) {
    return m_colors.Put(p, v[eRed], v[eGreen], v[eBlue]);
  }
  const double dFactor = eType == eZuPlyUint16 ? 255.0 / 65535.0 : 1.0;
  p.SetColor(ZuRawColors::Byte(v[eRed] * dFactor, &m_uLimited) |
             ZuRawColors::Byte(v[eGreen] * dFactor, &m_uLimited) << 8 |
             ZuRawColors::Byte(v[eBlue] * dFactor, &m_uLimited) << 16);
}

void RowReader::AddPoint(const Values& v, ZuPointFeed& feed) {
  ZuScanPoint3d p(v[eX], v[eY], v[eZ], 0);
  p.m_fNX = static_cast<float>(v[eNX]);
  p.m_fNY = static_cast<float>(v[eNY]);
  p.m_fNZ = static_cast<float>(v[eNZ]);
  if (m_layout.HasColor()) SetColor(v, p);
  if (m_layout.Has(eIntensity)) m_intensities.Put(p, v[eIntensity]);
  if (!std::isfinite(p.x + p.y + p.z)) ++m_uNotFinite;
  feed.Add(p);
}

void RowReader::Finish(ZuPointFeed& feed) {
  const eZuPlyType eType = m_layout.types[eIntensity];
  m_eScale = eType == eZuPlyUint8    ? eZuIntensity255
             : eType == eZuPlyUint16 ? eZuIntensity65535
                                     : m_intensities.Scale();
  const std::uint64_t uIntensities = m_intensities.Settle(feed.GetAdded(), m_eScale);
  m_uLimited += m_colors.Settle(feed.GetAdded());
  const auto report = [this](eZuCloudFinding eKind, std::uint64_t uCount, const char* szWhat) {
    if (uCount > 0) m_findings.Add(eKind, 0, 0, std::to_string(uCount) + szWhat);
  };
  report(eZuCloudClamped, uIntensities, " intensities are limited to their scale");
  report(eZuCloudClamped, m_uLimited, " colour values are limited to 0 to 255");
  report(eZuCloudAssumed, m_uNotFinite, " points have coordinates that are not finite");
  if (m_layout.types[eRed] == eZuPlyUint16) {
    m_findings.Add(eZuCloudAssumed, 0, 0, "colours of 0 to 65535 are taken as 0 to 255");
  }
  if (m_uSurplusLine > 0) {
    m_findings.Add(eZuCloudDropped, m_uSurplusLine, 0,
                   "more values than the header has properties");
  }
}

// Reads the rows of all elements, the vertices into the feed.
bool ReadElements(const ZuPlyHeader& header, const ZuPlyElement& vertex, RowReader& rows,
                  ZuPointFeed& feed) {
  for (const ZuPlyElement& element : header.elements) {
    if (!(&element == &vertex ? rows.ReadVertices(element, feed) : rows.SkipElement(element))) {
      return false;
    }
  }
  rows.TellRest();
  return true;
}

void Read(std::FILE* fp, ZuPointCloudContainer& clouds, ZuCloudReading& reading) {
  ZuProgress progress("Reading PLY file");
  ZuPlySource source(ZuStdioInput{fp}, ZuStdioRest(fp));
  ZuPlyHeader header;
  if (!ZuReadPlyHeader(source, progress, header, reading.m_Findings)) return;
  const auto isVertex = [](const ZuPlyElement& e) { return e.strName == "vertex"; };
  const auto vertex = std::find_if(header.elements.begin(), header.elements.end(), isVertex);
  if (vertex == header.elements.end()) {
    reading.m_Findings.Add(eZuCloudFault, header.uLines, 0,
                           "the header has no element vertex, which holds the points");
    return;
  }
  RowReader rows(source, progress, header, reading);
  if (!rows.TakeLayout(*vertex)) return;
  reading.m_pCloud = clouds.AddCloud();
  ZuPointFeed feed(*reading.m_pCloud);
  try {
    ReadElements(header, *vertex, rows, feed);
  } catch (const std::bad_alloc&) {
    rows.Finish(feed);
    throw;
  }
  rows.Finish(feed);
  if (std::ferror(fp) != 0) {
    reading.m_Findings.Add(eZuCloudCut, 0, 0, "not all bytes could be read");
  }
}

}  // namespace

ZuCloudReading ZuReadPly(std::FILE* fp, ZuPointCloudContainer& clouds) {
  ZuCloudReading reading;
  if (!fp) return reading;
  try {
    Read(fp, clouds, reading);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  clouds.UpdateCenterAndBox(reading.m_pCloud);
  return reading;
}

ZuCloudReading ZuReadPly(const char* szPath, ZuPointCloudContainer& clouds) {
  ZuCloudReading reading;
  try {
    const ZuStdioFile file(szPath, "rb");
    if (!file.Get()) reading.m_Findings.Add(eZuCloudFault, 0, 0, "cannot be opened");
    if (file.Get()) reading = ZuReadPly(file.Get(), clouds);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
