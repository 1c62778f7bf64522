#include "rectify_control.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include "adjust_options.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "trafo_check.h"
#include "trafo_report.h"
#include "zu/foundation/sort_helper.h"
#include "zu/photo/photo.h"
#include "zu/rectify/calc_zusp.h"

namespace cli {

namespace {

// What both lists hold, into the definition of the rectification.
void Define(const ZuPhoto& photo, const ZuPointList& measured, const ZuPointList& control,
            ZuZuspTrafo* pTrafo) {
  const ZuSortHelper<ZuPoint> known(&control);
  ZuBikoTransform toBiko(&photo, eDigiToBiko, false);
  for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pKnown = known.Find(p->GetId());
    if (pKnown == nullptr) continue;
    ZuPoint image(p->GetId(), p->m_dX, p->m_dY);
    toBiko.Transform(&image);
    pTrafo->GetBikoList().AddPoint(image);
    pTrafo->GetPPList().AddPoint(*pKnown);
  }
  if (!photo.GetCamera().IsValid()) return;
  pTrafo->SetDistortCameraParam(photo.GetCamera());
  pTrafo->SetDistortCameraFlag(true);
}

// Image points without distortion and control points in the plane. The accuracies of a control
// point are those of its object coordinates, carried into the plane.
std::vector<ZuTrafo2dPair> PairsOf(const ZuZuspTrafo& trafo, const ZuMatrix& fromObject,
                                   const std::string& strColumns) {
  std::vector<ZuTrafo2dPair> pairs;
  const ZuPoint* pKnown = trafo.GetPPList().First();
  for (const ZuPoint* p = trafo.GetBikoList().First(); p != nullptr; p = p->Next()) {
    ZuTrafo2dPair pair;
    pair.uId = p->GetId();
    pair.adSource[0] = p->m_dX;
    pair.adSource[1] = p->m_dY;
    if (trafo.CompensateDistortion()) {
      trafo.GetDistortCameraParam().AdjustExact(pair.adSource, pair.adSource + 1);
    }
    double z = pKnown->m_dZ;
    pair.adTarget[0] = pKnown->m_dX;
    pair.adTarget[1] = pKnown->m_dY;
    fromObject.PTrans3D(pair.adTarget, pair.adTarget + 1, &z);
    double adCov[9] = {};
    AccuracyOf(*pKnown, strColumns, 3, adCov);
    for (int i = 0; i < 4; ++i) {
      for (int k = 0; k < 9; ++k) {
        pair.adTargetCov[i] +=
            fromObject[i / 2 + 1][k / 3 + 1] * adCov[k] * fromObject[i % 2 + 1][k % 3 + 1];
      }
    }
    pairs.push_back(pair);
    pKnown = pKnown->Next();
  }
  return pairs;
}

const char* Remark(const ZuPointTest& test) {
  if (!test.bUsed) return "set aside";
  if (test.IsRejected()) return "beyond the limit";
  return test.bControlled ? "" : "not controlled";
}

}  // namespace

RectifyControl FitRectification(const ZuPhoto& photo, const ZuPointList& measured,
                                const ZuPointList& control, const std::string& strColumns,
                                const ZuTrafo2dOptions& options, const std::string& strWhere,
                                ZuZuspTrafo* pTrafo) {
  Define(photo, measured, control, pTrafo);
  ZuCalcZusp calc;
  if (!calc.Calc(pTrafo)) {
    throw CommandError(kUndetermined, strWhere + ": " + calc.GetStatusText() +
                                          "; four or more measured control points spread over the "
                                          "plane would be right");
  }
  ZuMatrix fromObject(pTrafo->GetTransMat());
  fromObject.Invert();
  RectifyControl result;
  result.pairs = PairsOf(*pTrafo, fromObject, strColumns);
  result.fit = ZuFitTrafo2d(ZuTrafo2dKind::Projective, result.pairs, options);
  if (result.fit.eStatus != ZuAdjustStatus::Good) {
    throw CommandError(kUndetermined,
                       strWhere + ": " + ZuAdjustStatusText(result.fit.eStatus) +
                           (result.fit.strFree.empty() ? "" : "; free is " + result.fit.strFree));
  }
  ZuMatrix matrix(3, 3);
  result.fit.Uncentred().BuildMatrix(&matrix);
  pTrafo->SetZuspMat(matrix);
  TurnResiduals(&result.fit.points);
  return result;
}

void CheckControl(const ZuPhoto& photo, const ZuPointList& measured, const ZuPointList& checks,
                  const PointChoice& choice, const PointRoles& roles, const ZuZuspTrafo& trafo,
                  RectifyControl* pControl, Context& context) {
  ZuMatrix fromObject(trafo.GetTransMat());
  fromObject.Invert();
  const ZuBikoTransform toBiko(&photo, eDigiToBiko, false);
  const ZuSortHelper<ZuPoint> index(&measured);
  ZuPointList inPlane;
  std::vector<Deviation> deviations;
  for (const ZuPoint* p = checks.First(); p != nullptr; p = p->Next()) {
    ZuPoint image(*index.Find(p->GetId())), known(*p);
    toBiko.Transform(&image);
    if (trafo.CompensateDistortion()) {
      trafo.GetDistortCameraParam().AdjustExact(&image.m_dX, &image.m_dY);
    }
    trafo.GetZuspMat().PTrans2D(&image.m_dX, &image.m_dY);
    fromObject.PTrans3D(&known.m_dX, &known.m_dY, &known.m_dZ);
    deviations.push_back(
        {inPlane.Add(known), {image.m_dX - known.m_dX, image.m_dY - known.m_dY, 0}});
  }
  std::ostringstream text;
  text.imbue(std::locale::classic());
  roles.Write(deviations, 2, text);
  pControl->strChecks = text.str();
  roles.AddJson(deviations, 2, &pControl->checks);
  std::vector<std::pair<std::string, double>> lengths;
  std::vector<Residual> residuals;
  ZuPointList used;
  for (size_t i = 0; i < pControl->fit.points.size(); ++i) {
    const ZuPointTest& t = pControl->fit.points[i];
    if (!t.bUsed) continue;
    residuals.push_back({std::to_string(t.uId), t.adResidual[0], t.adResidual[1], 0.0});
    lengths.emplace_back(residuals.back().strLabel, residuals.back().Length());
    used.Add(ZuPoint(t.uId, pControl->pairs[i].adTarget[0], pControl->pairs[i].adTarget[1]));
  }
  if (pControl->fit.iSetAside == 0) WarnOfWrongPoints(residuals, {used, used, nullptr}, context);
  AddLengths(deviations, &lengths);
  pControl->eCode = WithinTolerance(choice, lengths, context,
                                    pControl->fit.iSetAside > 0 ? kNotAcceptable : kGood);
}

void WriteControl(const RectifyControl& control, std::ostream& text) {
  const ZuTrafo2dFit& fit = control.fit;
  double dLargest = 0.0, dSum = 0.0, dLimit = 0.0;
  int iUsed = 0;
  for (const ZuPointTest& t : fit.points) {
    if (!t.bUsed) continue;
    const double d = std::hypot(t.adResidual[0], t.adResidual[1]);
    dLargest = std::max(dLargest, d);
    dSum += d * d;
    dLimit = t.dLimit;
    ++iUsed;
  }
  const int iDecimals = DecimalsFor(dLargest);
  text << Counted(static_cast<long long>(fit.points.size()), "control point")
       << ", residuals in the plane: control minus picture\n\n";
  TextTable table;
  for (const char* szTitle : {"point", "dx", "dy", "length", "wx", "wy", "r"}) {
    table.AddColumn(szTitle);
  }
  table.AddColumn("", TextTable::eLeft);
  for (const ZuPointTest& t : fit.points) {
    table.AddRow({std::to_string(t.uId), Fixed(t.adResidual[0], iDecimals),
                  Fixed(t.adResidual[1], iDecimals),
                  Fixed(std::hypot(t.adResidual[0], t.adResidual[1]), iDecimals),
                  Fixed(t.adW[0], 2), Fixed(t.adW[1], 2), Fixed(t.Redundancy(), 3), Remark(t)});
  }
  table.Write(text);
  text << "\nRMS     " << ShortLength(std::sqrt(dSum / std::max(iUsed, 1))) << "\nsigma0  "
       << SigmaText(fit.dSigma0, fit.sigmaOfResults, fit.iRedundancy) << "\ntest    "
       << ZuSigmaKindText(fit.sigmaOfTests) << ", limit of T "
       << (std::isfinite(dLimit) ? Fixed(dLimit, 2) : "-") << '\n'
       << control.strChecks << '\n';
}

Json ControlJson(const RectifyControl& control) {
  const ZuTrafo2dFit& fit = control.fit;
  Json json = control.checks;
  json["sigma0"] = fit.dSigma0;
  json["sigma_kind"] = ZuSigmaKindText(fit.sigmaOfResults);
  json["redundancy"] = fit.iRedundancy;
  json["set_aside"] = fit.iSetAside;
  json["points"] = Json::array();
  for (size_t i = 0; i < fit.points.size(); ++i) {
    const ZuPointTest& t = fit.points[i];
    Json point{{"id", t.uId},
               {"x", control.pairs[i].adTarget[0]},
               {"y", control.pairs[i].adTarget[1]},
               {"dx", t.adResidual[0]},
               {"dy", t.adResidual[1]},
               {"used", t.bUsed}};
    AddTestJson(&t, &point);
    json["points"].push_back(point);
  }
  return json;
}

}  // namespace cli
