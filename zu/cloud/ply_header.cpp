#include "zu/cloud/internal/ply_header.h"

#include <algorithm>
#include <charconv>

#include "zu/cloud/internal/strict_number.h"

namespace {

constexpr std::size_t kMostTokens = 5;  // of a line that is looked at: property list T T name

eZuPlyType TypeOf(const std::string& strName) {
  static const struct {
    const char* szName;
    eZuPlyType eType;
  } types[] = {{"char", eZuPlyInt8},      {"int8", eZuPlyInt8},       {"uchar", eZuPlyUint8},
               {"uint8", eZuPlyUint8},    {"short", eZuPlyInt16},     {"int16", eZuPlyInt16},
               {"ushort", eZuPlyUint16},  {"uint16", eZuPlyUint16},   {"int", eZuPlyInt32},
               {"int32", eZuPlyInt32},    {"uint", eZuPlyUint32},     {"uint32", eZuPlyUint32},
               {"float", eZuPlyFloat32},  {"float32", eZuPlyFloat32}, {"double", eZuPlyFloat64},
               {"float64", eZuPlyFloat64}};
  for (const auto& type : types) {
    if (strName == type.szName) return type.eType;
  }
  return eZuPlyNoType;
}

// A token, ASCII letters as lower case.
std::string Lower(const ZuTextToken& token) {
  std::string strText(token.pBegin, token.pEnd);
  for (char& c : strText) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  return strText;
}

class HeaderReader {
 public:
  HeaderReader(ZuPlyHeader& header, ZuReadFindings& findings)
      : m_header(header), m_findings(findings) {}

  bool Run(ZuPlySource& source, ZuProgress& progress) {
    while (!m_bEnded) {
      const char* const pEnd = ZuNextLine(source, progress, kZuPlyLongestLine);
      if (!pEnd) return End(source, progress);
      ++m_header.uLines;
      m_bLineEnds = pEnd != source.End();
      const char* const pBegin = source.Begin();
      const bool bCarriageReturn = pEnd > pBegin && pEnd[-1] == '\r';
      if (m_bLineEnds) m_findings.m_Dialect.AddLineEnd(bCarriageReturn);
      if (!TakeLine(pBegin, bCarriageReturn ? pEnd - 1 : pEnd)) return false;
      source.SetBegin(pEnd + 1);
    }
    return m_bFormat || Fault("the header has no line \"format\"");
  }

 private:
  bool Fault(std::string strText) {
    // A file that was cut ends within a line.
    const eZuReadKind eKind = m_bLineEnds ? eZuReadFault : eZuReadCut;
    if (!m_bLineEnds) strText = "the file ends within its header: " + strText;
    m_findings.Add(eKind, m_header.uLines, 0, std::move(strText));
    return false;
  }

  // No further line: the end of the file, or a line that never ends.
  bool End(const ZuPlySource& source, const ZuProgress& progress) {
    ++m_header.uLines;
    m_bLineEnds = true;
    if (!source.IsComplete() && !progress.IsStopped()) {
      return Fault("no line end within a megabyte; a header of lines would be right");
    }
    m_findings.Add(eZuReadCut, m_header.uLines, 0, "the file ends within its header");
    return false;
  }

  bool TakeLine(const char* pBegin, const char* pEnd) {
    ZuTextToken t[kMostTokens];
    const std::size_t n = ZuSplitTokens(pBegin, pEnd, ZuPlyDelimiter(), t, kMostTokens);
    const std::string strWord = n > 0 ? Lower(t[0]) : std::string();
    if (m_header.uLines == 1) {
      return strWord == "ply" || Fault(ZuQuoted(ZuTextToken{pBegin, pEnd}.View()) +
                                       " starts the file, \"ply\" would be right");
    }
    if (n == 0 || strWord == "comment" || strWord == "obj_info") return true;
    if (strWord == "format") return TakeFormat(t, n);
    if (strWord == "element") return TakeElement(t, n);
    if (strWord == "property") return TakeProperty(t, n);
    m_bEnded = strWord == "end_header";
    return m_bEnded || Fault(ZuQuoted(t[0].View()) +
                             " is no word of a header; format, comment, element, property or "
                             "end_header would be right");
  }

  bool TakeFormat(const ZuTextToken* t, std::size_t n) {
    const std::string strForm = n > 1 ? Lower(t[1]) : std::string();
    if (strForm == "ascii") {
      m_header.eForm = eZuPlyAscii;
    } else if (strForm == "binary_little_endian") {
      m_header.eForm = eZuPlyBinaryLittle;
    } else if (strForm == "binary_big_endian") {
      m_header.eForm = eZuPlyBinaryBig;
    } else {
      return Fault(
          "the format is unknown; ascii, binary_little_endian or binary_big_endian would be right");
    }
    m_bFormat = true;
    return true;
  }

  bool TakeElement(const ZuTextToken* t, std::size_t n) {
    ZuPlyElement element;
    if (n != 3) return Fault("\"element NAME NUMBER\" would be right");
    const auto result = std::from_chars(t[2].pBegin, t[2].pEnd, element.uRows);
    if (result.ec != std::errc() || result.ptr != t[2].pEnd) {
      return Fault(ZuQuoted(t[2].View()) + " is no number of rows");
    }
    element.strName = Lower(t[1]);
    m_header.elements.push_back(std::move(element));
    return true;
  }

  bool TakeProperty(const ZuTextToken* t, std::size_t n) {
    if (m_header.elements.empty()) return Fault("a property stands before the first element");
    const bool bList = n > 1 && Lower(t[1]) == "list";
    if (n != (bList ? 5u : 3u)) {
      return Fault("\"property TYPE NAME\" or \"property list TYPE TYPE NAME\" would be right");
    }
    ZuPlyProperty property;
    property.strName = Lower(t[n - 1]);
    property.eType = TypeOf(Lower(t[n - 2]));
    if (bList) property.eCountType = TypeOf(Lower(t[2]));
    if (property.eType == eZuPlyNoType || (bList && property.eCountType >= eZuPlyFloat32)) {
      return Fault(
          "the type is unknown; char, uchar, short, ushort, int, uint, float or double would be "
          "right");
    }
    m_header.elements.back().properties.push_back(std::move(property));
    return true;
  }

  ZuPlyHeader& m_header;
  ZuReadFindings& m_findings;
  bool m_bFormat = false;
  bool m_bEnded = false;
  bool m_bLineEnds = true;  // of the line in hand
};

}  // namespace

std::uint64_t ZuPlyElement::RowSize() const {
  std::uint64_t uSize = 0;
  for (const ZuPlyProperty& p : properties) uSize += ZuPlySize(p.IsList() ? p.eCountType : p.eType);
  return uSize;
}

bool ZuPlyElement::HasLists() const {
  return std::any_of(properties.begin(), properties.end(),
                     [](const auto& p) { return p.IsList(); });
}

bool ZuReadPlyHeader(ZuPlySource& source, ZuProgress& progress, ZuPlyHeader& header,
                     ZuReadFindings& findings) {
  return HeaderReader(header, findings).Run(source, progress);
}
