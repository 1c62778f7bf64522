// zu transform: a point list into the system of control points, by a similarity transformation over
// the ids that both lists hold.
#include <cmath>
#include <memory>
#include <set>
#include <utility>

#include "adjust_options.h"
#include "commands.h"
#include "geo_run.h"
#include "point_choice.h"
#include "point_columns.h"
#include "point_input.h"
#include "report_output.h"
#include "save_trafo.h"
#include "similarity_page.h"
#include "similarity_report.h"
#include "text_table.h"
#include "trafo_check.h"
#include "trafo_report.h"
#include "zu/transform/trafo3d.h"

namespace cli {
namespace {

constexpr double kProper = 1e-6;  // |det R - 1| of a rotation at most [-]

struct Values {
  GeoValues geo;
  std::string strSource;
  std::string strControl;
  std::string strOutput;
  PointFormat format;
  SimilarityValues adjust;
  SaveValues save;
  PointChoice choice;
  bool bUnitScale = false;
  int iMinPoints = 3;
};

struct Lists {
  ZuPointList source;
  ZuPointList control;
  ZuPointList commonSource;  // the points that both hold, as each has them
  ZuPointList commonControl;
};

void FindCommon(const ZuSortHelper<ZuPoint>& control, Lists* pLists) {
  for (const ZuPoint* p = pLists->source.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pControl = control.Find(p->GetId());
    if (pControl == nullptr) continue;
    pLists->commonSource.Add(*p);
    pLists->commonControl.Add(*pControl);
  }
}

std::string Files(const Values& values) {
  return NameInMessages(values.strSource) + " and " + NameInMessages(values.strControl);
}

// Throws CommandError (undetermined) where there is no trustworthy transformation.
void Estimate(const Values& values, const Lists& lists, const ZuSortHelper<ZuPoint>& control,
              ZuTrafo3d* pTrafo) {
  const bool bGood = pTrafo->CalcByControlPoints(control, &lists.source, values.iMinPoints, false);
  const std::string strFiles = Files(values);
  if (!bGood && pTrafo->GetStatus() == eTrafo3DTooFewPoints) {
    throw CommandError(kUndetermined,
                       strFiles + " have " + Counted(pTrafo->GetCommonPoints(), "point") +
                           " in common, " + std::to_string(values.iMinPoints) + " are needed" +
                           OwnPoints(NameInMessages(values.strSource), lists.source,
                                     NameInMessages(values.strControl), lists.control));
  }
  const std::string strCommon = Counted(lists.commonSource.Count(), "common point");
  if (AreCollinear(lists.commonSource) || AreCollinear(lists.commonControl)) {
    throw CommandError(kUndetermined, strFiles + ": the " + strCommon +
                                          " do not determine a transformation\nthree that are not "
                                          "on one straight line are needed");
  }
  CheckMirrored(strFiles, NameInMessages(values.strSource), SimilarityRms, lists.commonSource,
                lists.commonControl);
  if (!bGood || !(std::fabs(pTrafo->m_mRot.Sarrus() - 1.0) < kProper)) {
    throw CommandError(kUndetermined, strFiles + ": no rotation carries the " + strCommon +
                                          " over (" + GetTrafo3DStatusText(pTrafo->GetStatus()) +
                                          ")\nif one of them is wrong, zu merge " +
                                          NameInMessages(values.strControl) + " " +
                                          NameInMessages(values.strSource) +
                                          " --tolerance T finds it");
  }
  // The best rotation does not depend on the scale; what is left is not to apply it.
  if (values.bUnitScale || values.adjust.strFixed == "scale") pTrafo->m_dScale = 1.0;
}

// The adjustment; its parameters take the place of the closed form's where it was asked for or the
// points have weights. Throws CommandError (undetermined) then, else warns.
ZuSimilarityResult AdjustTrafo(const Values& values, const Lists& lists,
                               const ZuSortHelper<ZuPoint>& control, Context& context,
                               ZuTrafo3d* pTrafo) {
  ZuSimilarityOptions options = values.adjust.OptionsOf();
  if (values.bUnitScale && values.adjust.strFixed.empty()) options.kind = ZuSimilarityKind::Rigid;
  ZuSimilarityResult result = ZuAdjustSimilarity(control, lists.source, options);
  const bool bAsked = values.adjust.IsAsked() || HasAccuracies(values.format.strColumns);
  if (!result.IsGood()) {
    if (bAsked) throw CommandError(kUndetermined, Files(values) + ": " + result.strReason);
    context.Warn("no standard deviations: " + result.strReason);
  } else if (bAsked) {
    static_cast<ZuTrafo3dData&>(*pTrafo) = result.trafo;
  }
  for (const std::string& strWarning : result.warnings) context.Warn(strWarning);
  return result;
}

// The residuals of the points of `out` that the control list holds, in the order of `out`; they are
// control minus transformed point, also where a control code put the control coordinate in its
// place.
std::vector<Residual> ResidualsOf(const ZuPointList& out, int iSourcePoints,
                                  const ZuSortHelper<ZuPoint>& control) {
  std::vector<Residual> residuals;
  const ZuPoint* p = out.First();
  for (int i = 0; i < iSourcePoints && p != nullptr; ++i, p = p->Next()) {
    if (control.Find(p->GetId()) == nullptr) continue;
    residuals.push_back({PointLabel(*p), p->m_dRedu1, p->m_dRedu2, p->m_dRedu3});
  }
  return residuals;
}

void AddPoints(const ZuPointList& out, int iSourcePoints, const ZuSortHelper<ZuPoint>& control,
               const std::vector<Residual>& residuals, const ZuSimilarityResult& result,
               Json* pRoot) {
  Json points = Json::array();
  std::vector<const ZuPoint*> onlySource, onlyControl;
  size_t uResidual = 0;
  int i = 0;
  for (const ZuPoint* p = out.First(); p != nullptr; p = p->Next(), ++i) {
    const bool bSource = i < iSourcePoints;
    const bool bCommon = bSource && control.Find(p->GetId()) != nullptr;
    points.push_back(ToJson(*p, bCommon ? &residuals[uResidual++] : nullptr));
    const bool bSure = bSource && result.IsGood();
    points.back()["sd"] = bSure ? Json{p->m_dDX, p->m_dDY, p->m_dDZ} : Json();
    AddTestJson(bCommon && bSure ? result.Find(p->GetId()) : nullptr, &points.back());
    if (!bSource) onlyControl.push_back(p);
    if (bSource && !bCommon) onlySource.push_back(p);
  }
  (*pRoot)["points"] = std::move(points);
  (*pRoot)["only_source"] = JsonLabels(onlySource);
  (*pRoot)["only_control"] = JsonLabels(onlyControl);
}

// What the transformation leaves to the check points, which stand in `out` carried over.
std::vector<Deviation> ChecksOf(const ZuPointList& checks, const ZuPointList& out) {
  std::vector<Deviation> deviations;
  const ZuSortHelper<ZuPoint> carried(&out);
  for (const ZuPoint* p = checks.First(); p != nullptr; p = p->Next()) {
    const ZuPoint& q = *carried.Find(p->GetId());
    deviations.push_back({p, {q.m_dX - p->m_dX, q.m_dY - p->m_dY, q.m_dZ - p->m_dZ}});
  }
  return deviations;
}

// Empty where a shell would take the names apart, or the one of a pipe is none.
std::string MergeCommand(const Values& values) {
  const std::string strNames = values.strControl + " " + values.strSource;
  const bool bFiles = values.strControl != "-" && values.strSource != "-";
  const bool bPlain = strNames.find_first_of("'\"\\$&;()<>|*?~#`") == std::string::npos &&
                      std::count(strNames.begin(), strNames.end(), ' ') == 1;
  return bFiles && bPlain ? "zu merge " + strNames : "";
}

ExitCode Run(const Values& values, Context& context) {
  const bool bGeo = !values.geo.strFrom.empty() || !values.geo.strTo.empty();
  if (bGeo == !values.strControl.empty()) {
    throw CommandError(kUsage,
                       bGeo ? "--from and --to need no --control; leave it out"
                            : "--control is required: points of the target system; or --from "
                              "and --to, where both systems are known on the earth");
  }
  if (bGeo && !values.save.strFile.empty()) {
    throw CommandError(kUsage, "--save keeps what --control gives; --from and --to say it all");
  }
  if (bGeo) {
    return RunGeo(values.geo, values.strSource, values.format, values.strOutput, context);
  }
  Lists lists;
  ReadPoints(values.strSource, values.format, context, &lists.source);
  ReadControlPoints(values.strControl, values.format, context, &lists.control);
  CheckAccuracies(NameInMessages(values.strSource), lists.source, values.format.strColumns);
  CheckAccuracies(NameInMessages(values.strControl), lists.control, values.format.strColumns);
  GiveCommonIds(NameInMessages(values.strControl), context, &lists.source, &lists.control);
  const PointRoles roles(values.choice, Files(values), {&lists.source, &lists.control});
  const ZuPointList checkPoints = roles.TakeOut(lists.source, &lists.control);
  const ZuSortHelper<ZuPoint> control(&lists.control);
  FindCommon(control, &lists);

  ZuTrafo3d trafo;
  // With the tilt fixed fewer points will do, of which the closed form knows nothing.
  const bool bUpright = values.adjust.Kind() == ZuSimilarityKind::Levelled ||
                        values.adjust.Kind() == ZuSimilarityKind::Shift;
  if (!bUpright) Estimate(values, lists, control, &trafo);
  if (values.adjust.Kind() == ZuSimilarityKind::Levelled && lists.commonSource.Count() > 2) {
    CheckMirrored(Files(values), NameInMessages(values.strSource), HelmertRms, lists.commonSource,
                  lists.commonControl);
  }
  const ZuSimilarityResult result = AdjustTrafo(values, lists, control, context, &trafo);
  ZuPointList out;
  trafo.Transform(out, lists.source, control, false);
  if (result.IsGood()) SetCarriedSds(result, lists.source, &out);
  const int iSourcePoints = lists.source.Count();
  const std::vector<Residual> residuals = ResidualsOf(out, iSourcePoints, control);

  context.Text() << Counted(static_cast<long long>(residuals.size()), "common point") << ", "
                 << iSourcePoints - static_cast<int>(residuals.size()) << " only in "
                 << NameInMessages(values.strSource) << ", " << out.Count() - iSourcePoints
                 << " only in " << NameInMessages(values.strControl)
                 << "\nresiduals: control minus transformed source\n\n";
  WriteResiduals(residuals, context.Text());
  if (result.setAside.empty()) {
    WarnOfWrongPoints(residuals, {lists.commonSource, lists.commonControl, SimilarityRms}, context,
                      MergeCommand(values));
  }
  const std::vector<Deviation> checks = ChecksOf(checkPoints, out);
  roles.Write(checks, 3, context.Text());
  context.Text() << '\n';
  WriteParameters(trafo, context.Text());
  const ZuSortHelper<ZuPoint> names(&lists.commonSource);
  if (result.IsGood()) {
    context.Text() << '\n';
    WriteSimilarity(result, names, values.adjust.strUnit, context.Text());
  }

  Json& root = context.Root();
  root["common"] = residuals.size();
  AddParameters(trafo, &root);
  root["unit_scale"] = values.bUnitScale;
  root["rms"] = ToJson(RmsOf(residuals));
  AddSimilarity(result, names, &root);
  roles.AddJson(checks, 3, &root);
  if (context.WantsRoot()) AddPoints(out, iSourcePoints, control, residuals, result, &root);

  if (!values.save.strFile.empty()) {
    SaveValues save = values.save;
    std::vector<unsigned> aside;
    for (const ZuSetAside& point : result.setAside) aside.push_back(point.uId);
    NotePoints(lists.commonSource, aside, &save);
    save.strSource = NameInMessages(values.strSource);
    save.strTarget = NameInMessages(values.strControl);
    SaveSimilarity(save, trafo, &result, values.format, context);
  }
  const SimilarityValues& adjust = values.adjust;
  if (context.WantsReport() && result.IsGood()) {
    const double dRms = RmsOf(residuals).Length();
    const SimilarityPage page = {
        "Spatial transformation",
        std::to_string(result.Used()) + " of " +
            Counted(static_cast<long long>(residuals.size()), "common point") +
            " used, RMS of all " + Fixed(dRms, DecimalsFor(dRms)) + " " + adjust.strUnit,
        adjust.strUnit,
        {{"source", NameInMessages(values.strSource)},
         {"control", NameInMessages(values.strControl)}}};
    context.Report().report = PageOf(page, result, control);
  }
  if (!values.strOutput.empty()) {
    WritePoints(&out, values.format, &context.NewOutput(values.strOutput));
  }
  std::set<std::string> aside;
  for (const ZuSetAside& point : result.setAside) aside.insert(LabelOf(point.uId, out));
  std::vector<std::pair<std::string, double>> lengths;
  for (const Residual& r : residuals) {
    if (aside.count(r.strLabel) == 0) lengths.emplace_back(r.strLabel, r.Length());
  }
  AddLengths(checks, &lengths);
  return WithinTolerance(values.choice, lengths, context,
                         result.setAside.empty() ? kGood : kNotAcceptable);
}

}  // namespace

Runner DefineTransform(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddSourceOptions(options, &pValues->strSource, &pValues->strControl, false);
  AddGeoOptions(options, &pValues->geo);
  options.Flag("--unit-scale", &pValues->bUnitScale, "rotate and shift only, scale 1");
  options.Choice("--fixed", {"scale", "levelled", "shift"}, &pValues->adjust.strFixed,
                 "scale 1; turned about the z axis only, scale 1; not turned, scale 1");
  AddTestFlag(options, &pValues->adjust);
  AddAdjustOptions(options, &pValues->adjust, kSigmaOfControl);
  options.Option("--min-points", "N", &pValues->iMinPoints, "common points needed");
  options.AtLeast(3);
  AddPointChoice(options, &pValues->choice);
  AddPointOptions(options, &pValues->format);
  AddControlColumns(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of all points in the target system");
  AddSaveOption(options, &pValues->save);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
