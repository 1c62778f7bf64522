#include "rectify_conditions.h"

#include <algorithm>
#include <cmath>

#include "condition_file.h"
#include "exit_code.h"
#include "input_file.h"
#include "svg.h"
#include "text_table.h"
#include "zu/photo/photo.h"

namespace cli {

namespace {

// The length of a line is told among the ratios: over the first one.
std::string KindOf(const ZuConditionLine& line) {
  const std::string strText = ZuConditionLineText(line);
  return strText.substr(0, strText.find(' '));
}

}  // namespace

void DefineByMeasured(const ZuPhoto& photo, const ZuPointList& measured, ZuZuspTrafo* pTrafo) {
  ZuBikoTransform toBiko(&photo, eDigiToBiko, false);
  for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
    ZuPoint image(p->GetId(), p->m_dX, p->m_dY);
    toBiko.Transform(&image);
    pTrafo->GetBikoList().AddPoint(image);
  }
  if (!photo.GetCamera().IsValid()) return;
  pTrafo->SetDistortCameraParam(photo.GetCamera());
  pTrafo->SetDistortCameraFlag(true);
}

RectifyConditions FitConditionsOf(const std::string& strFile, const std::string& strWhere,
                                  ZuZuspTrafo* pTrafo) {
  ZuZuspConditions solver(*pTrafo);
  for (const ConditionOfFile& line : ReadConditions(strFile)) {
    if (solver.Add(line.condition)) continue;
    throw CommandError(kBadInput, line.strPlace + ": a point of \"" +
                                      ZuConditionLineText(line.condition) +
                                      "\" is not measured in " + strWhere +
                                      "; ids of measured points would be right");
  }
  const eConditionsStatus eStatus = solver.Calc();
  if (eStatus != eConditionsOk) {
    throw CommandError(kUndetermined,
                       NameInMessages(strFile) + ": " + ZuConditionsStatusText(eStatus) +
                           (solver.GetFree().empty() ? "" : "\nfree is: " + solver.GetFree()));
  }
  solver.Store(pTrafo);
  RectifyConditions made;
  made.results = solver.GetResults();
  made.moves = solver.GetMoves();
  made.dSigma0 = solver.GetSigma0();
  made.iRedundancy = solver.GetRedundancy();
  made.bScaled = solver.IsScaled();
  for (const ZuZuspConditions::Move& move : made.moves) {
    made.dLargest = std::max(made.dLargest, std::hypot(move.dX, move.dY));
    ZuPoint p(*pTrafo->GetBikoList().GetPoints().TZuListHeader<ZuPoint>::Find(move.uId));
    pTrafo->Transform(&p, &p);
    made.points.push_back({move.uId, p.m_dX, p.m_dY});
  }
  return made;
}

void WriteConditions(const RectifyConditions& conditions, std::ostream& text) {
  text << Counted(static_cast<long long>(conditions.results.size()), "condition")
       << ", and how far the measured points are from them\n\n";
  TextTable table;
  table.AddColumn("condition", TextTable::eLeft);
  table.AddColumn("off by");
  table.AddColumn("", TextTable::eLeft);
  for (const ZuZuspConditions::Result& r : conditions.results) {
    table.AddRow({ZuConditionLineText(r.line),
                  r.line.kind >= ZuConditionLine::eEqual ? Fixed(100.0 * r.dResidual, 4) + " %"
                                                         : Angle(r.dResidual),
                  r.bUsed ? "" : "others hold it"});
  }
  table.Write(text);
  text << "\nlargest move of a point in the image  " << Significant(conditions.dLargest)
       << " mm\nsigma0  " << Significant(conditions.dSigma0) << " mm, " << conditions.iRedundancy
       << " redundant"
       << (conditions.bScaled ? "" : "\nno length is told: the unit is the mm of the image")
       << "\n\n";
}

Json ConditionsJson(const RectifyConditions& conditions) {
  Json list = Json::array(), points = Json::array();
  for (const ZuZuspConditions::Result& r : conditions.results) {
    Json names = Json::array();
    for (const std::string& strId : r.line.points) names.push_back(strId);
    const bool bRatio = r.line.kind == ZuConditionLine::eRatio;
    list.push_back({{"kind", KindOf(r.line)},
                    {"points", std::move(names)},
                    {"ratio", bRatio ? Json(r.line.dValue) : Json()},
                    {bRatio ? "residual" : "residual_rad", r.dResidual},
                    {"used", r.bUsed}});
  }
  for (size_t i = 0; i < conditions.points.size(); ++i) {
    const RectifyConditions::Point& p = conditions.points[i];
    points.push_back({{"id", p.uId},
                      {"x", p.x},
                      {"y", p.y},
                      {"moved", {conditions.moves[i].dX, conditions.moves[i].dY}}});
  }
  return {{"sigma0", conditions.dSigma0},
          {"redundancy", conditions.iRedundancy},
          {"scaled", conditions.bScaled},
          {"conditions", std::move(list)},
          {"points", std::move(points)}};
}

}  // namespace cli
