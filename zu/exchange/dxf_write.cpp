// DXF of release 12: pairs of lines, a code and its value.
#include "zu/exchange/internal/plan_extent.h"
#include "zu/exchange/plan_drawing.h"

namespace zu::internal {

namespace {

constexpr const char* kDxfLayers[] = {"POINTS", "NAMES", "LINES", "FACES"};
enum DxfLayer { eDxfPoints, eDxfNames, eDxfLines, eDxfFaces };

// The next character of UTF-8; a byte that begins none is taken as one of Latin-1.
unsigned int NextCharacter(const std::string& strText, std::size_t* pu) {
  const auto byte = [&strText](std::size_t u) {
    return u < strText.size() ? static_cast<unsigned char>(strText[u]) : 0u;
  };
  const unsigned int uFirst = byte((*pu)++);
  const unsigned int uMore = uFirst >= 0xF0 && uFirst < 0xF8   ? 3
                             : uFirst >= 0xE0 && uFirst < 0xF0 ? 2
                             : uFirst >= 0xC2 && uFirst < 0xE0 ? 1
                                                               : 0;
  unsigned int u = uMore == 0 ? uFirst : uFirst & (0x3Fu >> uMore);
  for (unsigned int i = 0; i < uMore; ++i) {
    const unsigned int uNext = byte(*pu + i);
    if (uNext < 0x80 || uNext > 0xBF) return uFirst;
    u = u << 6 | (uNext & 0x3F);
  }
  *pu += uMore;
  return u;
}

// A name in the code page 1252, without what its readers take for orders of their own.
std::string DxfText(const std::string& strName) {
  std::string strText;
  for (std::size_t i = 0; i < strName.size();) {
    const unsigned int u = NextCharacter(strName, &i);
    if (u < 32 || u == 127) {
      strText += ' ';
    } else if (u == '%' && i < strName.size() && strName[i] == '%') {
      strText += "%%%";
    } else if (u < 128 || (u >= 160 && u <= 255)) {
      strText += static_cast<char>(u);
    } else {
      const char* const szDigits = "0123456789ABCDEF";
      strText += "\\U+";
      for (const int iShift : {12, 8, 4, 0})
        strText += szDigits[(u > 0xFFFF ? 0xFFFD : u) >> iShift & 15];
    }
  }
  return strText;
}

class DxfWriter {
 public:
  explicit DxfWriter(std::ostream& stream) : m_stream(stream) {}

  void Pair(int iCode, const std::string& strValue) {
    // Codes stand in three places.
    const std::string strCode = std::to_string(iCode);
    m_stream << std::string(strCode.size() < 3 ? 3 - strCode.size() : 0, ' ') << strCode << '\n'
             << strValue << '\n';
  }
  void Entity(const char* szKind, DxfLayer eLayer) {
    Pair(0, szKind);
    Pair(8, kDxfLayers[eLayer]);
  }
  // The codes of x, y and z are 10 apart.
  void Position(int iCode, const std::array<double, 3>& p) {
    for (int i = 0; i < 3; ++i) Pair(iCode + 10 * i, PlanNumber(p[static_cast<std::size_t>(i)]));
  }
  void Begin(const char* szSection) {
    Pair(0, "SECTION");
    Pair(2, szSection);
  }
  void End() { Pair(0, "ENDSEC"); }

  void Header(const PlanExtent& extent);
  void Tables();
  void Point(const ZuPlanPoint& point, double dHeight);
  void Line(const ZuPlanLine& line);

 private:
  std::ostream& m_stream;
};

void DxfWriter::Header(const PlanExtent& extent) {
  Begin("HEADER");
  Pair(9, "$ACADVER");
  Pair(1, "AC1009");
  Pair(9, "$DWGCODEPAGE");
  Pair(3, "ANSI_1252");
  Pair(9, "$EXTMIN");
  Position(10, {extent.Least(0), extent.Least(1), extent.Least(2)});
  Pair(9, "$EXTMAX");
  Position(10, {extent.Most(0), extent.Most(1), extent.Most(2)});
  Pair(9, "$PDMODE");  // points as crosses
  Pair(70, "2");
  End();
}

void DxfWriter::Tables() {
  Begin("TABLES");
  Pair(0, "TABLE");
  Pair(2, "LTYPE");
  Pair(70, "1");
  Pair(0, "LTYPE");
  Pair(2, "CONTINUOUS");
  Pair(70, "0");
  Pair(3, "Solid line");
  Pair(72, "65");
  Pair(73, "0");
  Pair(40, "0.0");
  Pair(0, "ENDTAB");
  Pair(0, "TABLE");
  Pair(2, "LAYER");
  Pair(70, std::to_string(std::size(kDxfLayers)));
  int iColor = 7;
  for (const char* szLayer : kDxfLayers) {
    Pair(0, "LAYER");
    Pair(2, szLayer);
    Pair(70, "0");
    Pair(62, std::to_string(iColor--));
    Pair(6, "CONTINUOUS");
  }
  Pair(0, "ENDTAB");
  End();
}

void DxfWriter::Point(const ZuPlanPoint& point, double dHeight) {
  Entity("POINT", eDxfPoints);
  Position(10, point.adPosition);
  if (point.strName.empty()) return;
  Entity("TEXT", eDxfNames);
  Position(10, point.adPosition);
  Pair(40, PlanNumber(dHeight));
  Pair(1, DxfText(point.strName));
}

void DxfWriter::Line(const ZuPlanLine& line) {
  const auto& corners = line.corners;
  if (corners.size() == 2) {
    Entity("LINE", eDxfLines);
    Position(10, corners[0]);
    Position(11, corners[1]);
    return;
  }
  Entity("POLYLINE", eDxfLines);
  Pair(66, "1");  // corners follow
  Position(10, {});
  Pair(70, line.bClosed ? "9" : "8");  // in space
  for (const auto& corner : corners) {
    Entity("VERTEX", eDxfLines);
    Position(10, corner);
    Pair(70, "32");
  }
  Entity("SEQEND", eDxfLines);
  if (!line.bClosed || corners.size() > 4) return;
  Entity("3DFACE", eDxfFaces);
  // A triangle has its third corner twice.
  for (std::size_t i = 0; i < 4; ++i) {
    Position(10 + static_cast<int>(i), corners[std::min(i, corners.size() - 1)]);
  }
}

}  // namespace

}  // namespace zu::internal

std::size_t ZuWriteDxf(std::ostream& stream, const ZuPlanDrawing& drawing) {
  const zu::internal::PlanExtent extent(drawing);
  zu::internal::DxfWriter writer(stream);
  std::size_t uLeftOut = 0;
  writer.Header(extent);
  writer.Tables();
  writer.Begin("ENTITIES");
  const double dHeight = extent.TextHeight(drawing);
  for (const ZuPlanPoint& point : drawing.points) {
    if (!zu::internal::IsDrawn(point.adPosition)) {
      ++uLeftOut;
    } else {
      writer.Point(point, dHeight);
    }
  }
  for (const ZuPlanLine& line : drawing.lines) {
    if (!zu::internal::IsDrawn(line)) {
      ++uLeftOut;
    } else {
      writer.Line(line);
    }
  }
  writer.End();
  writer.Pair(0, "EOF");
  return uLeftOut;
}
