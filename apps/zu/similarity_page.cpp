#include "similarity_page.h"

#include <algorithm>
#include <cmath>

#include "adjust_options.h"
#include "adjust_report.h"
#include "point_names.h"
#include "similarity_report.h"
#include "text_table.h"

namespace cli {
namespace {

double Length(const ZuSimilarityPoint& p) {
  return std::hypot(p.adResidual[0], p.adResidual[1], p.adResidual[2]);
}

AdjustReport::Table PointTable(const SimilarityPage& page, const ZuSimilarityResult& result,
                               const ZuSortHelper<ZuPoint>& control) {
  std::vector<const ZuSimilarityPoint*> sorted;
  for (const auto& p : result.points) sorted.push_back(&p);
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) {
    return a->bUsed != b->bUsed ? !a->bUsed : Length(*a) > Length(*b);
  });
  const int iDecimals = DecimalsFor(sorted.empty() ? 0.0 : Length(*sorted.front()));
  const std::string strIn = " [" + page.strUnit + "]";
  AdjustReport::Table table;
  table.strTitle = "Common points";
  table.strNote =
      "Target minus carried source, the longest first, those set aside before the others. r: "
      "redundancy of the three coordinates; T: group test; nabla: largest of the smallest errors "
      "by axis that the test finds.";
  table.columns = {{"point"}, {"dx" + strIn}, {"dy" + strIn},    {"dz" + strIn}, {"length" + strIn},
                   {"T"},     {"r"},          {"nabla" + strIn}, {"", true}};
  for (const ZuSimilarityPoint* p : sorted) {
    std::vector<std::string> row = {PointLabel(*control.Find(p->uId))};
    for (double d : p->adResidual) row.push_back(Fixed(d, iDecimals));
    row.push_back(Fixed(Length(*p), iDecimals));
    row.push_back(Fixed(p->dTest, 2));
    row.push_back(Fixed(p->Redundancy(), 2));
    row.push_back(Fixed(*std::max_element(p->adNabla, p->adNabla + 3), iDecimals));
    row.push_back(!p->bUsed ? "set aside" : p->bControlled ? "" : "not controlled");
    table.rows.push_back(std::move(row));
  }
  return table;
}

// The two axes given of the points.
ReportView View(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& control, int iX,
                int iY) {
  constexpr const char* kAxes[] = {"X", "Y", "Z"};
  ReportView view;
  view.strTitle = std::string("Residuals in ") + kAxes[iX] + kAxes[iY];
  view.strAxisX = kAxes[iX];
  view.strAxisY = kAxes[iY];
  view.strNote =
      "Arrow: from where the source comes to lie to the point of the target. Ellipse: the carried "
      "point.";
  for (const auto& p : result.points) {
    const ZuPoint& point = *control.Find(p.uId);
    const double ad[] = {point.m_dX, point.m_dY, point.m_dZ};
    ReportView::Item item;
    item.x = ad[iX];
    item.y = ad[iY];
    item.dx = p.adResidual[iX];
    item.dy = p.adResidual[iY];
    item.cxx = p.adCarried[4 * iX];
    item.cxy = p.adCarried[3 * iX + iY];
    item.cyy = p.adCarried[4 * iY];
    item.bUsed = p.bUsed;
    item.strLabel = PointLabel(point);
    view.items.push_back(std::move(item));
  }
  return view;
}

}  // namespace

AdjustReport PageOf(const SimilarityPage& page, const ZuSimilarityResult& result,
                    const ZuSortHelper<ZuPoint>& control) {
  AdjustReport report;
  report.strTitle = page.strTitle;
  std::vector<Tested> tested;
  for (const auto& p : result.points) tested.push_back({PointLabel(*control.Find(p.uId)), &p});
  report.strVerdict = page.strVerdict + "; " + std::to_string(result.setAside.size()) +
                      " set aside; " + TestVerdict(tested, page.strUnit) + ".";
  report.strUnit = page.strUnit;
  report.inputs = page.inputs;
  report.facts.emplace_back("sigma0",
                            SigmaText(result.dSigma0, result.sigmaKind, result.iRedundancy));
  if (!result.bSigmaFits) {
    report.facts.emplace_back("sigma0 a posteriori",
                              Fixed(result.dSigmaPosteriori, 4) + ", which does not agree with 1");
  }
  report.strParameters = "target = s R (source - xs) + xt, R = Ry Rx Rz.";
  for (const SimilarityParameter& p : SimilarityParameters(result)) {
    const bool bShift = p.strName[0] == 't';
    const std::string strUnit = bShift ? page.strUnit : p.strUnit.empty() ? "-" : p.strUnit;
    report.parameters.push_back({p.strName, p.strValue, p.strSd, strUnit});
  }
  report.tables.push_back(PointTable(page, result, control));
  report.views.push_back(View(result, control, 0, 1));
  report.views.push_back(View(result, control, 0, 2));
  for (const auto& p : result.points) {
    if (p.bUsed) report.w.insert(report.w.end(), p.adW, p.adW + 3);
  }
  report.dLimit = result.dTestLimit;
  report.strTest = std::string("w of x, y and z, ") + ZuSigmaKindText(result.sigmaKind);
  return report;
}

}  // namespace cli
