// zu compare: which points moved between two measurements.
#include <cmath>
#include <memory>
#include <utility>

#include "commands.h"
#include "point_input.h"
#include "report_output.h"
#include "similarity_page.h"
#include "similarity_report.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/adjust/epochs.h"

namespace cli {
namespace {

struct Values {
  std::string strA, strB;
  PointFormat format;
  SimilarityValues adjust;
  unsigned uSeed = 1;
};

void WriteMoves(const ZuEpochResult& result, const ZuSortHelper<ZuPoint>& names,
                std::ostream& stream) {
  double dLargest = 0.0;
  for (const ZuEpochPoint& p : result.points) {
    dLargest = std::max(dLargest, std::hypot(p.adMove[0], p.adMove[1], p.adMove[2]));
  }
  const int iDecimals = DecimalsFor(dLargest);
  TextTable table;
  for (const char* szTitle :
       {"point", "dx", "dy", "dz", "length", "sd x", "y", "z", "T", "limit"}) {
    table.AddColumn(szTitle);
  }
  table.AddColumn("", TextTable::eLeft);
  for (const ZuEpochPoint& p : result.points) {
    std::vector<std::string> row = {PointLabel(*names.Find(p.uId))};
    for (double d : p.adMove) row.push_back(Fixed(d, iDecimals));
    row.push_back(Fixed(std::hypot(p.adMove[0], p.adMove[1], p.adMove[2]), iDecimals));
    for (double d : p.adMoveSd) row.push_back(Fixed(d, iDecimals));
    row.push_back(Fixed(p.dTest, 2));
    row.push_back(Fixed(p.dLimit, 2));
    row.push_back(p.bMoved ? "moved" : "stable");
    table.AddRow(row);
  }
  table.Write(stream);
}

Json MovesJson(const ZuEpochResult& result, const ZuSortHelper<ZuPoint>& names) {
  Json points = Json::array();
  for (const ZuEpochPoint& p : result.points) {
    const ZuPoint& point = *names.Find(p.uId);
    Json json = {{"id", p.uId}};
    if (!point.GetName().empty()) json["name"] = point.GetName().chars();
    json["dx"] = p.adMove[0];
    json["dy"] = p.adMove[1];
    json["dz"] = p.adMove[2];
    json["sd"] = {p.adMoveSd[0], p.adMoveSd[1], p.adMoveSd[2]};
    AddTestJson(result.similarity.Find(p.uId), &json);
    json["test"] = p.dTest;
    json["limit"] = p.dLimit;
    json["moved"] = p.bMoved;
    points.push_back(std::move(json));
  }
  return points;
}

std::string MovedVerdict(const ZuEpochResult& result, const ZuSortHelper<ZuPoint>& names,
                         const std::string& strUnit) {
  const ZuEpochPoint* pFarthest = nullptr;
  const auto length = [](const ZuEpochPoint& p) {
    return std::hypot(p.adMove[0], p.adMove[1], p.adMove[2]);
  };
  for (const ZuEpochPoint& p : result.points) {
    if (p.bMoved && (pFarthest == nullptr || length(p) > length(*pFarthest))) pFarthest = &p;
  }
  std::string strText = std::to_string(result.Moved()) + " of " +
                        Counted(static_cast<long long>(result.points.size()), "common point") +
                        " moved";
  if (pFarthest == nullptr) return strText;
  return strText + ", point " + PointLabel(*names.Find(pFarthest->uId)) + " the farthest, by " +
         ShortLength(length(*pFarthest)) + " " + strUnit;
}

ExitCode Run(const Values& values, Context& context) {
  ZuPointList first, second;
  ReadPoints(values.strA, values.format, context, &first);
  ReadPoints(values.strB, values.format, context, &second);
  CheckAccuracies(NameInMessages(values.strA), first, values.format.strColumns);
  CheckAccuracies(NameInMessages(values.strB), second, values.format.strColumns);
  GiveCommonIds(NameInMessages(values.strB), context, &first, &second);
  ZuEpochOptions options;
  if (!values.adjust.strFixed.empty()) options.kind = values.adjust.Kind();
  options.tests = TestsOf(values.adjust, true);
  options.dSigmaFirst = options.dSigmaSecond = values.adjust.dSigma;
  options.uSeed = values.uSeed;
  const ZuEpochResult result = ZuCompareEpochs(first, second, options);
  if (!result.IsGood()) {
    throw CommandError(kUndetermined, NameInMessages(values.strA) + " and " +
                                          NameInMessages(values.strB) + ": " +
                                          result.similarity.strReason);
  }
  for (const std::string& strWarning : result.similarity.warnings) context.Warn(strWarning);
  if (!result.similarity.bSigmaGiven) {
    context.Warn(
        "the accuracies are not told (--sigma, columns dx,dy,dz): a point counts as moved "
        "where the others agree far better");
  }

  const ZuSortHelper<ZuPoint> names(&first);
  const int iCommon = static_cast<int>(result.points.size());
  std::ostream& text = context.Text();
  text << result.Moved() << " of " << Counted(iCommon, "common point")
       << " moved; differences: " << NameInMessages(values.strB) << " minus carried "
       << NameInMessages(values.strA) << "\n\n";
  WriteMoves(result, names, text);
  text << '\n';
  WriteSimilarity(result.similarity, names, values.adjust.strUnit, text);

  Json& root = context.Root();
  root["common"] = iCommon;
  Json moved = Json::array(), stable = Json::array();
  for (const ZuEpochPoint& p : result.points) {
    (p.bMoved ? moved : stable).push_back(JsonLabel(*names.Find(p.uId)));
  }
  root["moved"] = std::move(moved);
  root["stable"] = std::move(stable);
  AddSimilarity(result.similarity, names, &root);
  root["points"] = MovesJson(result, names);
  if (context.WantsReport()) {
    const SimilarityPage page = {"Two epochs",
                                 MovedVerdict(result, names, values.adjust.strUnit),
                                 values.adjust.strUnit,
                                 {{"first epoch", NameInMessages(values.strA)},
                                  {"second epoch", NameInMessages(values.strB)}}};
    context.Report().report = PageOf(page, result.similarity, ZuSortHelper<ZuPoint>(&second));
  }
  return result.Moved() == 0 ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineCompare(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("A", &pValues->strA, "coordinate file of the first epoch");
  options.Positional("B", &pValues->strB, "coordinate file of the second epoch");
  options.Choice("--fixed", {"scale", "levelled", "shift"}, &pValues->adjust.strFixed,
                 "between the two systems: scale 1 (without the option too); turned about the z "
                 "axis only; not turned");
  AddAdjustOptions(options, &pValues->adjust);
  options.Option("--seed", "S", &pValues->uSeed,
                 "of the random samples; the same seed gives the same result");
  AddPointOptions(options, &pValues->format);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
