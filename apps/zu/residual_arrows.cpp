#include "residual_arrows.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace cli {
namespace {

constexpr double kTypicalLength = 24.0;  // of the 95 % quantile, drawn [px]
constexpr size_t kCutLabels = 8;         // of a drawing
constexpr Style kCut = Pen(Ink::kYellow, 1.6);
constexpr Style kBar = Pen(Ink::kText, 2.0);

}  // namespace

double Quantile(std::vector<double> values, double dShare) {
  if (values.empty()) return 0.0;
  const auto n = static_cast<std::ptrdiff_t>(dShare * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + n, values.end());
  return values[static_cast<size_t>(n)];
}

double FactorFor(double dTypical, double dScale) {
  const double dFactor = SvgRoundDown(kTypicalLength / (dTypical * dScale));
  return dFactor > 0.0 && std::isfinite(dFactor) ? dFactor : 1.0;
}

std::vector<Drawn> Thinned(std::vector<Drawn> all, size_t uMost, double dWidth, double dHeight) {
  if (all.size() <= uMost) return all;
  const double dCell = std::sqrt(dWidth * dHeight / static_cast<double>(uMost));
  std::unordered_map<long long, Drawn> longest;
  for (const Drawn& drawn : all) {
    const auto iColumn = static_cast<long long>(std::floor(drawn.segment.x1 / dCell));
    const auto iRow = static_cast<long long>(std::floor(drawn.segment.y1 / dCell));
    const auto [place, bNew] = longest.emplace(iRow * 1000003 + iColumn, drawn);
    if (!bNew && drawn.dLength > place->second.dLength) place->second = drawn;
  }
  std::vector<Drawn> result;
  for (const auto& [iCell, drawn] : longest) result.push_back(drawn);
  std::sort(result.begin(), result.end(), [](const Drawn& a, const Drawn& b) {
    return std::pair(a.segment.y1, a.segment.x1) < std::pair(b.segment.y1, b.segment.x1);
  });
  return result;
}

void DrawResiduals(Drawing& drawing, const std::vector<Drawn>& residuals, const Style& style,
                   double dRight) {
  std::vector<Drawing::Segment> arrows, cut;
  std::vector<const Drawn*> labelled;
  for (const Drawn& drawn : residuals) {
    const double dPixels = drawn.Pixels();
    if (!std::isfinite(dPixels)) continue;
    if (dPixels <= kCutLength) {
      arrows.push_back(drawn.segment);
      continue;
    }
    labelled.push_back(&drawn);
  }
  drawing.Arrows(arrows, style);
  std::sort(labelled.begin(), labelled.end(),
            [](const Drawn* a, const Drawn* b) { return a->dLength > b->dLength; });
  std::string strLabels;
  for (size_t i = 0; i < labelled.size(); ++i) {
    Drawing::Segment s = labelled[i]->segment;
    const double dShare = kCutLength / labelled[i]->Pixels();
    s.x2 = s.x1 + dShare * (s.x2 - s.x1);
    s.y2 = s.y1 + dShare * (s.y2 - s.y1);
    cut.push_back(s);
    if (i >= kCutLabels) continue;
    const bool bLeft = s.x2 > dRight - 50.0;
    drawing.Text(s.x2 + (bLeft ? -4.0 : 4.0), s.y2 + 4.0, Significant(labelled[i]->dLength), 12.0,
                 bLeft ? Anchor::eEnd : Anchor::eStart, 0.0, Rimmed(Ink::kText));
  }
  if (!cut.empty()) drawing.Arrows(cut, kCut);
}

void ScaleBar(Drawing& drawing, double dRight, double y, double dUnit, const std::string& strUnit) {
  const double dLength = SvgRoundDown(45.0 / dUnit);
  if (!(dLength > 0.0)) return;
  const double dLeft = dRight - dLength * dUnit;
  drawing.Line(dLeft, y, dRight, y, kBar);
  for (const double x : {dLeft, dRight}) drawing.Line(x, y - 3.0, x, y + 3.0, kBar);
  drawing.Text(dLeft - 5.0, y + 4.0, SvgNumber(dLength) + " " + strUnit, 12.0, Anchor::eEnd);
}

}  // namespace cli
