// zu merge: a point list into the system of another one although some common points are wrong.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

#include "commands.h"
#include "point_choice.h"
#include "point_input.h"
#include "report_output.h"
#include "save_trafo.h"
#include "similarity_page.h"
#include "similarity_report.h"
#include "svg.h"
#include "text_table.h"
#include "trafo_report.h"
#include "zu/adjust/merge.h"

namespace cli {
namespace {

constexpr double kProper = 1e-6;      // |det R - 1| of a rotation at most [-]
constexpr int kSampleSize = 4;        // of the library's search, without extra points
constexpr int kMostExhaustive = 200;  // common points; more take minutes

struct Values {
  std::string strA, strB;
  std::string strOutput, strRejected;
  PointFormat format;
  double dTolerance = 0.0;
  bool bRelative = false;
  double dBlend = 0.0;
  int iMinPoints = 3;
  int iExtraPoints = 1;
  int iExtraSample = 0;
  unsigned uSeed = 1;
  std::string strSearch;  // "": exhaustive for few common points, else random
  SimilarityValues adjust;
  SaveValues save;
  PointChoice choice;

  bool IsLibrary() const { return strSearch == "library"; }
};

struct Lists {
  ZuPointList listA, listB;
  ZuPointList result, rejected, rejectedControl;
  int iCommon = 0;
  ZuSimilarityResult adjusted;  // over those that agree; not good with the library's own search
};

// The points of the result: agreeing ones, then those only B has, then those only A has.
struct Groups {
  std::vector<const ZuPoint*> agreeing, onlyB, onlyA;
};

void CheckUsage(const Values& values) {
  if (values.IsLibrary() && values.iMinPoints - kSampleSize > values.iExtraSample) {
    throw CommandError(kUsage, "--min-points " + std::to_string(values.iMinPoints) +
                                   " is more than a sample has; --extra-sample " +
                                   std::to_string(values.iMinPoints - kSampleSize) +
                                   " or more would be right");
  }
}

int CountCommon(const Lists& lists) {
  ZuIdTable ids;
  ZuTrafo3d::GetCommonIds(ids, const_cast<ZuPointList*>(&lists.listA),
                          const_cast<ZuPointList*>(&lists.listB));
  return ids.Count();
}

std::string Files(const Values& values) {
  return NameInMessages(values.strA) + " and " + NameInMessages(values.strB);
}

// Throws CommandError (undetermined) where the common points of a list are on one line.
void CheckLine(const Values& values, const Lists& lists) {
  ZuPointList commonA, commonB;
  const ZuSortHelper<ZuPoint> indexA(&lists.listA);
  for (const ZuPoint* p = lists.listB.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* const pA = indexA.Find(p->GetId());
    if (pA == nullptr) continue;
    commonA.Add(*pA);
    commonB.Add(*p);
  }
  if (!AreCollinear(commonA) && !AreCollinear(commonB)) return;
  throw CommandError(kUndetermined,
                     Files(values) + ": the " + Counted(lists.iCommon, "common point") +
                         " do not determine a transformation\nthree that are not on one straight "
                         "line are needed");
}

// Throws CommandError (undetermined) where no transformation can be trusted.
void MergeByConsensus(const Values& values, Context& context, Lists* pLists, ZuTrafo3d* pTrafo) {
  const std::string strHave =
      Files(values) + " have " + Counted(pLists->iCommon, "point") + " in common";
  if (pLists->iCommon < values.iMinPoints) {
    throw CommandError(kUndetermined, strHave + ", " + std::to_string(values.iMinPoints) +
                                          " are needed" +
                                          OwnPoints(NameInMessages(values.strA), pLists->listA,
                                                    NameInMessages(values.strB), pLists->listB));
  }
  ZuMergeOptions options;
  options.dTolerance = values.dTolerance;
  options.bRelative = values.bRelative;
  options.dBlend = values.dBlend;
  options.iMinPoints = values.iMinPoints;
  options.iExtraPoints = values.iExtraPoints;
  options.uSeed = values.uSeed;
  if (values.strSearch == "exhaustive") options.search = ZuConsensusSearch::Exhaustive;
  if (values.strSearch == "random") options.search = ZuConsensusSearch::Random;
  options.bAdjust = values.adjust.IsAsked() || HasAccuracies(values.format.strColumns);
  options.similarity = values.adjust.OptionsOf();
  options.similarity.dSigmaSource = options.similarity.dSigmaTarget = values.adjust.dSigma;
  if (options.search == ZuConsensusSearch::Exhaustive && pLists->iCommon > kMostExhaustive) {
    throw CommandError(kUsage, "--search exhaustive looks at up to " +
                                   std::to_string(kMostExhaustive) + " common points, there are " +
                                   std::to_string(pLists->iCommon));
  }
  const ZuMergeResult merged = ZuMergePoints(pLists->listA, pLists->listB, options);
  const ZuConsensusResult& consensus = merged.consensus;
  if (!consensus.IsGood()) {
    if (consensus.status != ZuAdjustStatus::RankDefect) {
      throw CommandError(kUndetermined, Files(values) + ": " + consensus.strReason);
    }
    CheckLine(values, *pLists);
    const bool bFew = pLists->iCommon < values.iMinPoints + values.iExtraPoints;
    throw CommandError(
        kUndetermined,
        bFew ? strHave + ", which do not agree\nto find the wrong ones " +
                   std::to_string(values.iMinPoints + values.iExtraPoints) +
                   " are needed (--min-points and --extra-points)"
             : strHave +
                   ", no sample of which agrees\na larger --tolerance, or points that are "
                   "not on one line may help");
  }
  if (!merged.IsGood()) {
    throw CommandError(kUndetermined, Files(values) + ": " + merged.strReason);
  }
  if (!merged.adjusted.IsGood()) {
    context.Warn("no standard deviations: " + merged.adjusted.strReason);
  }
  for (const std::string& strWarning : merged.adjusted.warnings) context.Warn(strWarning);
  pLists->result = merged.joined;
  pLists->rejected = merged.rejected;
  pLists->rejectedControl = merged.rejectedControl;
  pLists->adjusted = merged.adjusted;
  *pTrafo = merged.trafo;
  Json& search = context.Root()["search"];
  search = {{"kind", consensus.bExhaustive ? "exhaustive" : "random"},
            {"samples", consensus.iSamples},
            {"missed", consensus.dMissed}};
  context.Text() << Counted(consensus.iSamples, "sample") << ", "
                 << (consensus.bExhaustive
                         ? std::string("all there are")
                         : "chance of having missed the best " + Significant(consensus.dMissed))
                 << '\n';
}

// The same by the library's own merge.
void Merge(const Values& values, Lists* pLists, ZuTrafo3d* pTrafo) {
  const int iCommon = pLists->iCommon;
  const std::string strHave = Files(values) + " have " + Counted(iCommon, "point") + " in common";
  if (values.iExtraSample > 0 && values.iExtraSample > iCommon / 2 - kSampleSize) {
    throw CommandError(kUndetermined, strHave + "; samples of " + std::to_string(kSampleSize) +
                                          " + " + std::to_string(values.iExtraSample) +
                                          " need twice as many");
  }
  std::srand(values.uSeed);
  const eTrafo3DStatus eStatus = pTrafo->RobustCalcByControlPointsAndTransform(
      &pLists->result, &pLists->rejected, &pLists->rejectedControl, pLists->listA, pLists->listB,
      values.dTolerance, !values.bRelative, values.dBlend, values.iMinPoints, false,
      values.iExtraPoints, values.iExtraSample);
  if (eStatus == eTrafo3DTooFewPoints) {
    if (iCommon < values.iMinPoints) {
      throw CommandError(kUndetermined,
                         strHave + ", " + std::to_string(values.iMinPoints) + " are needed");
    }
    throw CommandError(kUndetermined, strHave + ", which do not agree\nto find the wrong ones " +
                                          std::to_string(values.iMinPoints + values.iExtraPoints) +
                                          " are needed (--min-points and --extra-points)");
  }
  if (eStatus != eTrafo3DOk) {
    throw CommandError(kUndetermined,
                       strHave +
                           ", no sample of which agrees\na larger --tolerance, another "
                           "--seed, or points that are not on one line may help");
  }
}

Groups GroupsOf(const Lists& lists, int iCommon) {
  Groups groups;
  const int iAgreeing = iCommon - lists.rejected.Count();
  const int iOnlyB = lists.listB.Count() - iCommon;
  int i = 0;
  for (const ZuPoint* p = lists.result.First(); p != nullptr; p = p->Next(), ++i) {
    (i < iAgreeing            ? groups.agreeing
     : i < iAgreeing + iOnlyB ? groups.onlyB
                              : groups.onlyA)
        .push_back(p);
  }
  return groups;
}

void CheckGeometry(const Values& values, const Lists& lists, const Groups& groups,
                   const ZuTrafo3d& trafo) {
  ZuPointList agreeingA, agreeingB;
  const ZuSortHelper<ZuPoint> indexA(&lists.listA), indexB(&lists.listB);
  for (const ZuPoint* p : groups.agreeing) {
    agreeingA.Add(*indexA.Find(p->GetId()));
    agreeingB.Add(*indexB.Find(p->GetId()));
  }
  const bool bProper = std::fabs(trafo.m_mRot.Sarrus() - 1.0) < kProper;
  if (bProper && !AreCollinear(agreeingA) && !AreCollinear(agreeingB)) return;
  throw CommandError(kUndetermined,
                     Files(values) + ": the " + std::to_string(groups.agreeing.size()) +
                         " common points that agree do not determine a transformation\nthree "
                         "that are not on one straight line are needed");
}

Residual ResidualOf(const ZuPoint& p) {
  return {PointLabel(p), p.m_dRedu1, p.m_dRedu2, p.m_dRedu3};
}

void Report(const Values& values, const Lists& lists, const Groups& groups, const ZuTrafo3d& trafo,
            Context& context) {
  std::vector<Residual> agreeing, rejected;
  std::vector<const ZuPoint*> rejectedPoints;
  Json points = Json::array();
  const auto addJson = [&](const ZuPoint& p, const Residual* pResidual) {
    points.push_back(ToJson(p, pResidual));
    if (values.IsLibrary()) return;
    const bool bSure = lists.adjusted.IsGood();
    points.back()["sd"] = bSure ? Json{p.m_dDX, p.m_dDY, p.m_dDZ} : Json();
    AddTestJson(bSure ? lists.adjusted.Find(p.GetId()) : nullptr, &points.back());
  };
  const auto addPoint = [&](const ZuPoint& p, std::vector<Residual>* pResiduals) {
    pResiduals->push_back(ResidualOf(p));
    addJson(p, &pResiduals->back());
  };
  for (const ZuPoint* p : groups.agreeing) addPoint(*p, &agreeing);
  for (const ZuPoint* p = lists.rejected.First(); p != nullptr; p = p->Next()) {
    addPoint(*p, &rejected);
    rejectedPoints.push_back(p);
  }
  for (const auto* pGroup : {&groups.onlyB, &groups.onlyA}) {
    for (const ZuPoint* p : *pGroup) addJson(*p, nullptr);
  }

  std::ostream& text = context.Text();
  text << Counted(static_cast<long long>(agreeing.size() + rejected.size()), "common point") << ", "
       << groups.onlyA.size() << " only in " << NameInMessages(values.strA) << ", "
       << groups.onlyB.size() << " only in " << NameInMessages(values.strB) << "\n"
       << rejected.size() << " rejected; residuals: A minus carried B\n";
  if (!rejected.empty()) {
    text << "\nrejected\n";
    WriteResiduals(rejected, text);
  }
  text << "\nagreeing\n";
  WriteResiduals(agreeing, text);
  text << '\n';
  WriteParameters(trafo, text);
  const ZuSortHelper<ZuPoint> names(&lists.listB);
  if (lists.adjusted.IsGood()) {
    text << '\n';
    WriteSimilarity(lists.adjusted, names, values.adjust.strUnit, text);
  }

  Json& root = context.Root();
  root["common"] = agreeing.size() + rejected.size();
  root["rejected"] = JsonLabels(rejectedPoints);
  AddParameters(trafo, &root);
  root["rms"] = ToJson(RmsOf(agreeing));
  root["only_a"] = JsonLabels(groups.onlyA);
  root["only_b"] = JsonLabels(groups.onlyB);
  if (!values.IsLibrary()) AddSimilarity(lists.adjusted, names, &root);
  root["points"] = std::move(points);
}

void WritePage(const Values& values, const Lists& lists, Context& context) {
  const ZuSimilarityResult& adjusted = lists.adjusted;
  const ZuSortHelper<ZuPoint> indexA(&lists.listA);
  const SimilarityPage page = {
      "Merge of two lists",
      std::to_string(adjusted.Used()) + " of " + Counted(lists.iCommon, "common point") + " agree",
      values.adjust.strUnit,
      {{"A", NameInMessages(values.strA)}, {"B", NameInMessages(values.strB)}}};
  context.Report().report = PageOf(page, adjusted, indexA);
}

void Save(const Values& values, const Lists& lists, const Groups& groups, const ZuTrafo3d& trafo,
          Context& context) {
  SaveValues save = values.save;
  for (const ZuPoint* p : groups.agreeing) save.used.push_back(PointLabel(*p));
  for (const ZuPoint* p = lists.rejected.First(); p != nullptr; p = p->Next()) {
    save.setAside.push_back(PointLabel(*p));
  }
  save.strSource = NameInMessages(values.strB);
  save.strTarget = NameInMessages(values.strA);
  SaveSimilarity(save, trafo, &lists.adjusted, values.format, context);
}

// Common points without part: those of --without leave both lists, check points that of B alone,
// which are returned.
ZuPointList TakeOut(const PointRoles& roles, Lists* pLists) {
  ZuPointList checks, restA, restB;
  const ZuSortHelper<ZuPoint> indexA(&pLists->listA), indexB(&pLists->listB);
  for (const ZuPoint* p = pLists->listA.First(); p != nullptr; p = p->Next()) {
    if (!roles.IsWithout(p->GetId()) || indexB.Find(p->GetId()) == nullptr) restA.Add(*p);
  }
  for (const ZuPoint* p = pLists->listB.First(); p != nullptr; p = p->Next()) {
    const bool bCommon = indexA.Find(p->GetId()) != nullptr;
    if (!bCommon || roles.TakesPart(p->GetId())) {
      restB.Add(*p);
    } else if (roles.IsCheck(p->GetId())) {
      checks.Add(*p);
    }
  }
  pLists->listA = restA;
  pLists->listB = restB;
  return checks;
}

// Of check points of B, carried over, against A.
ExitCode TellChecks(const Values& values, const PointRoles& roles, const ZuPointList& listA,
                    const ZuPointList& carried, Context& context) {
  std::vector<Deviation> checks;
  const ZuSortHelper<ZuPoint> indexA(&listA);
  for (const ZuPoint* p = carried.First(); p != nullptr; p = p->Next()) {
    const ZuPoint& a = *indexA.Find(p->GetId());
    checks.push_back({&a, {p->m_dX - a.m_dX, p->m_dY - a.m_dY, p->m_dZ - a.m_dZ}});
  }
  roles.Write(checks, 3, context.Text());
  roles.AddJson(checks, 3, &context.Root());
  if (values.bRelative) return kGood;
  PointChoice choice;
  choice.dTolerance = values.dTolerance;
  std::vector<std::pair<std::string, double>> lengths;
  AddLengths(checks, &lengths);
  return WithinTolerance(choice, lengths, context, kGood);
}

ExitCode Run(const Values& values, Context& context) {
  CheckUsage(values);
  Lists lists;
  ReadPoints(values.strA, values.format, context, &lists.listA);
  ReadPoints(values.strB, values.format, context, &lists.listB);
  CheckAccuracies(NameInMessages(values.strA), lists.listA, values.format.strColumns);
  CheckAccuracies(NameInMessages(values.strB), lists.listB, values.format.strColumns);
  GiveCommonIds(NameInMessages(values.strB), context, &lists.listA, &lists.listB);
  const PointRoles roles(values.choice, Files(values), {&lists.listA, &lists.listB});
  ZuPointList checkPoints = TakeOut(roles, &lists);
  lists.iCommon = CountCommon(lists);
  ZuTrafo3d trafo;
  if (values.IsLibrary()) {
    Merge(values, &lists, &trafo);
  } else {
    MergeByConsensus(values, context, &lists, &trafo);
  }
  const Groups groups = GroupsOf(lists, lists.iCommon);
  CheckGeometry(values, lists, groups, trafo);
  Report(values, lists, groups, trafo, context);
  trafo.InPlaceTransform(&checkPoints);
  const ExitCode eChecks = TellChecks(values, roles, lists.listA, checkPoints, context);

  if (context.WantsReport() && lists.adjusted.IsGood() && !values.IsLibrary()) {
    WritePage(values, lists, context);
  }
  if (!values.save.strFile.empty()) Save(values, lists, groups, trafo, context);
  const bool bRejected = !lists.rejected.IsEmpty();
  if (!values.strOutput.empty()) {
    WritePoints(&lists.result, values.format, &context.NewOutput(values.strOutput));
  }
  if (!values.strRejected.empty()) {
    WritePoints(&lists.rejected, values.format, &context.NewOutput(values.strRejected));
  }
  return bRejected && (context.IsStrict() || values.adjust.bTest) ? kNotAcceptable : eChecks;
}

}  // namespace

Runner DefineMerge(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("A", &pValues->strA, "coordinate file whose system stays");
  options.Positional("B", &pValues->strB, "coordinate file to be carried over");
  options.Option("--tolerance", "T", &pValues->dTolerance,
                 "longest residual of a point that agrees, in the unit of A");
  options.Required();
  options.Above(0.0);
  options.Flag("--relative", &pValues->bRelative,
               "T is a share of the longest side of the common points' box in A");
  options.Option("--blend", "F", &pValues->dBlend,
                 "move agreeing points towards A's, from 0 (not at all) to 1 (all the way)");
  options.AtLeast(0.0);
  options.AtMost(1.0);
  options.Option("--min-points", "N", &pValues->iMinPoints, "common points needed");
  options.AtLeast(3.0);
  options.Option("--extra-points", "N", &pValues->iExtraPoints,
                 "common points needed beyond these to look for wrong ones");
  options.AtLeast(0.0);
  options.Option("--extra-sample", "N", &pValues->iExtraSample,
                 "points of a sample beyond 4 (--search library)");
  options.AtLeast(0.0);
  options.Option("--seed", "S", &pValues->uSeed,
                 "of the random samples; the same seed gives the same result");
  options.AlsoStrict("end with exit code 1 where points are rejected");
  options.Choice("--search", {"exhaustive", "random", "library"}, &pValues->strSearch,
                 "all samples, random ones, or the library's own merge; without it all samples of "
                 "up to 15 common points, else random ones");
  AddTestFlag(options, &pValues->adjust);
  AddAdjustOptions(options, &pValues->adjust);
  AddPointChoice(options, &pValues->choice, false);
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of both lists in the system of A, without rejected points");
  AddSaveOption(options, &pValues->save);
  options.Output("--rejected", "FILE", &pValues->strRejected,
                 "coordinate file of the rejected points of B, in the system of A");
  return [pValues, options](Context& context) {
    for (const char* szName : {"--sigma", "--alpha", "--alpha-total", "--test"}) {
      if (!pValues->IsLibrary() || !options.Given(szName)) continue;
      throw CommandError(
          kUsage, std::string("--search library tests nothing: not together with ") + szName);
    }
    return Run(*pValues, context);
  };
}

}  // namespace cli
