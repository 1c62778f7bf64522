#include "zu/exchange/internal/plan_extent.h"
#include "zu/exchange/plan_drawing.h"

namespace zu::internal {

namespace {

std::string SvgText(const std::string& strName) {
  std::string strText;
  for (const char c : strName) {
    strText += c == '<'                             ? "&lt;"
               : c == '&'                           ? "&amp;"
               : c == '>'                           ? "&gt;"
               : static_cast<unsigned char>(c) < 32 ? " "
                                                    : std::string(1, c);
  }
  return strText;
}

}  // namespace

}  // namespace zu::internal

std::size_t ZuWriteSvg(std::ostream& stream, const ZuPlanDrawing& drawing, ZuPlanView view) {
  using zu::internal::IsDrawn;
  using zu::internal::PlanNumber;
  const zu::internal::PlanExtent extent(drawing);
  const std::size_t uRight = view == ZuPlanView::Side ? 1 : 0;
  const std::size_t uUp = view == ZuPlanView::Top ? 1 : 2;
  const double dHeight = extent.TextHeight(drawing), dEdge = 5.0 * dHeight;
  const auto place = [&](const std::array<double, 3>& p) {
    return std::array<std::string, 2>{PlanNumber(p[uRight]), PlanNumber(-p[uUp])};
  };
  const double dWidth = extent.Most(uRight) - extent.Least(uRight) + 2.0 * dEdge;
  const double dTall = extent.Most(uUp) - extent.Least(uUp) + 2.0 * dEdge;
  const std::string strStroke = PlanNumber(dHeight / 10.0);
  stream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\""
         << PlanNumber(extent.Least(uRight) - dEdge) << ' ' << PlanNumber(-extent.Most(uUp) - dEdge)
         << ' ' << PlanNumber(dWidth) << ' ' << PlanNumber(dTall)
         << "\" font-family=\"sans-serif\" font-size=\"" << PlanNumber(2.0 * dHeight) << "\">\n";
  std::size_t uLeftOut = 0;
  for (const ZuPlanLine& line : drawing.lines) {
    if (!IsDrawn(line)) {
      ++uLeftOut;
      continue;
    }
    stream << (line.bClosed ? "<polygon" : "<polyline")
           << " fill=\"none\" stroke=\"#1f5fa8\" stroke-width=\"" << strStroke << "\" points=\"";
    for (std::size_t i = 0; i < line.corners.size(); ++i) {
      const auto text = place(line.corners[i]);
      stream << (i > 0 ? " " : "") << text[0] << ',' << text[1];
    }
    stream << "\"/>\n";
  }
  for (const ZuPlanPoint& point : drawing.points) {
    if (!IsDrawn(point.adPosition)) {
      ++uLeftOut;
      continue;
    }
    const auto text = place(point.adPosition);
    stream << "<circle cx=\"" << text[0] << "\" cy=\"" << text[1] << "\" r=\""
           << PlanNumber(dHeight / 2.0) << "\" fill=\"#222222\"/>\n";
    if (point.strName.empty()) continue;
    stream << "<text x=\"" << text[0] << "\" y=\"" << text[1] << "\" dx=\"" << PlanNumber(dHeight)
           << "\">" << zu::internal::SvgText(point.strName) << "</text>\n";
  }
  stream << "</svg>\n";
  return uLeftOut;
}
