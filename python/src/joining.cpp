// Lists of points joined, compared, and put into a system of their own.
#include <cmath>

#include "columns.h"
#include "tests.h"
#include "zu/adjust/epochs.h"
#include "zu/adjust/lokal_deviation.h"
#include "zu/adjust/merge.h"
#include "zu/foundation/sort_helper.h"
#include "zu/transform/lokal_system.h"

namespace {

void WarnOfJoining(const std::string& strText) {
  py::module_::import("zu._errors").attr("warn")(ToStr(strText));
}

ZuSimilarityKind KindOfJoin(const std::string& strKind) {
  static const char* const kJoinKinds[] = {"similarity", "rigid", "levelled", "shift", nullptr};
  return static_cast<ZuSimilarityKind>(FindWord("kind", strKind, kJoinKinds));
}

// --- Merge ---------------------------------------------------------------------------------------

std::unique_ptr<PyPoints> NewPoints(const ZuPointList& list) {
  auto points = std::make_unique<PyPoints>();
  points->list = list;
  return points;
}

ZuMergeResult Merge(const py::object& first, const py::object& second, double dTolerance,
                    bool bRelative, double dBlend, int iMinPoints, int iExtraPoints,
                    const std::string& strSearch, unsigned uSeed, bool bAdjust,
                    const std::string& strKind, double dSigma, const std::string& strSigma0,
                    bool bSnoop, double dAlpha, double dAlphaTotal, double dPower) {
  static const char* const kSearches[] = {"automatic", "exhaustive", "random", nullptr};
  if (!(dTolerance > 0.0) || !(dBlend >= 0.0 && dBlend <= 1.0) || iMinPoints < 3 ||
      iExtraPoints < 0) {
    throw py::value_error(
        "tolerance above 0, blend from 0 to 1, min_points from 3 and extra_points from 0 would be "
        "right");
  }
  const PointsArgument a(first, "first"), b(second, "second");
  ZuMergeOptions options;
  options.dTolerance = dTolerance;
  options.bRelative = bRelative;
  options.dBlend = dBlend;
  options.iMinPoints = iMinPoints;
  options.iExtraPoints = iExtraPoints;
  options.search = static_cast<ZuConsensusSearch>(FindWord("search", strSearch, kSearches));
  options.uSeed = uSeed;
  options.similarity.kind = KindOfJoin(strKind);
  options.similarity.dSigmaSource = options.similarity.dSigmaTarget = dSigma;
  options.similarity.tests = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  options.bAdjust =
      bAdjust || bSnoop || dSigma > 0.0 || options.similarity.kind != ZuSimilarityKind::Similarity;
  ZuMergeResult merged;
  {
    const py::gil_scoped_release release;
    merged = ZuMergePoints(a.List(), b.List(), options);
  }
  if (!merged.IsGood() || !merged.adjusted.IsGood()) {
    const ZuSimilarityResult& adjusted = merged.adjusted;
    RaiseAdjustment(ZuAdjustStatusText(merged.IsGood() ? adjusted.status : merged.status),
                    merged.IsGood() ? adjusted.strReason : merged.strReason,
                    adjusted.strFreeDirection, py::none());
  }
  for (const std::string& strWarning : merged.adjusted.warnings) WarnOfJoining(strWarning);
  return merged;
}

void BindMerge(py::module_& m) {
  using namespace py::literals;
  using M = ZuMergeResult;
  py::class_<M> merged(m, "Merge",
                       "Two lists joined in the system of the first. Residuals of the points are "
                       "first minus carried second.");
  AddColumns<M>(
      merged,
      {{"common", [](const M& r) -> py::object { return py::int_(r.iCommon); }, "Common points."},
       {"tolerance", [](const M& r) -> py::object { return py::float_(r.dTolerance); },
        "Absolute, in the unit of the first list."},
       {"trafo", [](const M& r) { return py::cast(static_cast<const ZuTrafo3dData&>(r.trafo)); },
        "Of the second list into the system of the first, a Trafo3d."},
       {"points", [](const M& r) -> py::object { return py::cast(NewPoints(r.joined)); },
        "The agreeing points, those of the second list alone, those of the first alone, with their "
        "standard deviations; a PointList."},
       {"rejected", [](const M& r) -> py::object { return py::cast(NewPoints(r.rejected)); },
        "Rejected points of the second list, carried."},
       {"rejected_ids", [](const M& r) -> py::object { return NewIdsOf(r.aside); }, "Ascending."},
       {"similarity", [](const M& r) { return py::cast(r.adjusted); },
        "Least squares over the points that agree, a Similarity."},
       {"samples", [](const M& r) -> py::object { return py::int_(r.consensus.iSamples); },
        "Looked at by the search."},
       {"exhaustive", [](const M& r) -> py::object { return py::bool_(r.consensus.bExhaustive); },
        "All samples were looked at."},
       {"missed", [](const M& r) -> py::object { return py::float_(r.consensus.dMissed); },
        "Chance of having missed the best."}});
  m.def("merge", &Merge, "first"_a, "second"_a, py::kw_only(), "tolerance"_a, "relative"_a = false,
        "blend"_a = 0.0, "min_points"_a = 3, "extra_points"_a = 1, "search"_a = "automatic",
        "seed"_a = 1, "adjust"_a = false, "kind"_a = "similarity", "sigma"_a = 0.0,
        "sigma0"_a = "automatic", "snoop"_a = false, "alpha"_a = 0.001, "alpha_total"_a = 0.0,
        "power"_a = 0.8,
        "Joins two lists although some of the common points are wrong.\n\ntolerance: longest "
        "residual of a point that agrees; relative: as a share of the extent of the common points. "
        "blend moves agreeing points towards the first list's, 0 to 1. search: \"automatic\", "
        "\"exhaustive\" or \"random\"; the time of exhaustive ones grows with the fourth power of "
        "the common points. adjust, and sigma, snoop or a kind: least squares carry the "
        "points, and reject what they leave beyond the tolerance; else the closed form does. "
        "Raises AdjustmentError where no transformation can be trusted.");
}

// --- Epochs --------------------------------------------------------------------------------------

ZuEpochResult CompareEpochs(const py::object& first, const py::object& second,
                            const std::string& strKind, double dSigmaFirst, double dSigmaSecond,
                            const std::string& strSigma0, double dAlpha, double dAlphaTotal,
                            double dPower, unsigned uSeed) {
  const PointsArgument a(first, "first"), b(second, "second");
  ZuEpochOptions options;
  options.kind = KindOfJoin(strKind);
  options.dSigmaFirst = dSigmaFirst;
  options.dSigmaSecond = dSigmaSecond;
  options.tests = ToTests(strSigma0, true, dAlpha, dAlphaTotal, dPower);
  options.uSeed = uSeed;
  ZuEpochResult result;
  {
    const py::gil_scoped_release release;
    result = ZuCompareEpochs(a.List(), b.List(), options);
  }
  if (!result.IsGood()) {
    RaiseAdjustment(ZuAdjustStatusText(result.similarity.status), result.similarity.strReason,
                    result.similarity.strFreeDirection, py::none());
  }
  for (const std::string& strWarning : result.similarity.warnings) WarnOfJoining(strWarning);
  if (!result.similarity.bSigmaGiven) {
    WarnOfJoining(
        "the accuracies are not told (sigma_first, sigma_second, sd of the points): a point counts "
        "as moved where the others agree far better");
  }
  return result;
}

void BindEpochs(py::module_& m) {
  using namespace py::literals;
  using E = ZuEpochResult;
  using P = ZuEpochPoint;
  py::class_<E> epochs(m, "Epochs",
                       "Which of n common points moved between two measurements, by id.");
  epochs.def("__len__", [](const E& e) { return e.points.size(); });
  AddColumns<E>(
      epochs,
      {{"ids", [](const E& e) { return IdsBy(e.points, [](const P& p) { return p.uId; }); },
        "(n,)."},
       {"moved", [](const E& e) { return BoolsBy(e.points, [](const P& p) { return p.bMoved; }); },
        "(n,)."},
       {"moves",
        [](const E& e) {
          return NumbersBy(e.points, {3},
                           [](const P& p, double* pd) { std::copy_n(p.adMove, 3, pd); });
        },
        "Second minus carried first epoch, (n, 3)."},
       {"moves_sd",
        [](const E& e) {
          return NumbersBy(e.points, {3},
                           [](const P& p, double* pd) { std::copy_n(p.adMoveSd, 3, pd); });
        },
        "(n, 3)."},
       {"test", [](const E& e) { return NumberBy(e.points, [](const P& p) { return p.dTest; }); },
        "T against the datum of the stable points, (n,)."},
       {"limit", [](const E& e) { return NumberBy(e.points, [](const P& p) { return p.dLimit; }); },
        "(n,); infinite where there is no test."},
       {"similarity", [](const E& e) { return py::cast(e.similarity); },
        "Of the first epoch onto the second over the stable points, a Similarity."}});
  m.def("compare_epochs", &CompareEpochs, "first"_a, "second"_a, py::kw_only(), "kind"_a = "rigid",
        "sigma_first"_a = 0.0, "sigma_second"_a = 0.0, "sigma0"_a = "automatic", "alpha"_a = 0.001,
        "alpha_total"_a = 0.0, "power"_a = 0.8, "seed"_a = 1,
        "Tells which points moved between two measurements of the same points.\n\nkind: what may "
        "lie between the two systems, \"rigid\", \"levelled\", \"shift\" or \"similarity\". "
        "sigma_first, sigma_second: standard deviation of coordinates that tell none.");
}

// --- Local system --------------------------------------------------------------------------------

struct PyLocalSystem {
  ZuLokalSystem system;
  ZuTrafo3d trafo;
  ZuPointList points;
  bool bSure = false;
  ZuLokalDeviation deviation;
  struct Scale {
    unsigned uIdA, uIdB;
    double dDistance, dScale, dSd, dDifferenceSd;
    bool bBad;
  };
  std::vector<Scale> scales;
};

unsigned ToPointId(const py::handle& value, const ZuPointList& points) {
  const ZuPoint* p = nullptr;
  if (py::isinstance<py::str>(value)) {
    p = points.Find(ToString(value));
  } else {
    p = points.Find(value.cast<unsigned>());
  }
  if (p != nullptr) return p->GetId();
  throw py::value_error("point " + py::str(value).cast<std::string>() + " is not in the list");
}

void SetOrigin(const py::object& origin, const ZuPointList& points, ZuLokalSystem* pSystem) {
  pSystem->m_uIdOrigin = pSystem->m_uIdA;
  if (origin.is_none()) return;
  if (!py::isinstance<py::tuple>(origin)) {
    pSystem->m_uIdOrigin = ToPointId(origin, points);
    return;
  }
  const auto parts = origin.cast<py::tuple>();
  if (parts.size() != 2) throw py::value_error("origin: (point, (x, y, z)) would be right");
  pSystem->m_uIdOrigin = ToPointId(parts[0], points);
  const Rows place = AsRows(parts[1], 3, "origin");
  if (!place.bSingle) throw py::value_error("origin: (point, (x, y, z)) would be right");
  pSystem->m_dOffsetX = place.pd[0];
  pSystem->m_dOffsetY = place.pd[1];
  pSystem->m_dOffsetZ = place.pd[2];
}

struct ScalePlace {
  unsigned int ZuLokalSystem::*pA;
  unsigned int ZuLokalSystem::*pB;
  double ZuLokalSystem::*pDistance;
};
constexpr ScalePlace kScalePlaces[] = {
    {&ZuLokalSystem::m_uScale1IdA, &ZuLokalSystem::m_uScale1IdB, &ZuLokalSystem::m_dScale1Dist},
    {&ZuLokalSystem::m_uScale2IdA, &ZuLokalSystem::m_uScale2IdB, &ZuLokalSystem::m_dScale2Dist},
    {&ZuLokalSystem::m_uScale3IdA, &ZuLokalSystem::m_uScale3IdB, &ZuLokalSystem::m_dScale3Dist}};

ZuLokalSystem ToSystem(const py::tuple& axis, const py::tuple& plane, const py::object& origin,
                       const py::sequence& scales, const ZuPointList& points) {
  static const char* const kAxes[] = {"x", "y", "z", nullptr};
  static const char* const kPlanes[] = {"xy", "yz", "xz", nullptr};
  if (axis.size() != 3 || plane.size() != 2 || scales.size() > 3) {
    throw py::value_error(
        "axis (\"x\", a, b), plane (\"xy\", c) and up to three scales (a, b, distance) would be "
        "right");
  }
  ZuLokalSystem system;
  system.m_iAxisMode =
      eLokalAxisX + FindWord("axis", py::object(axis[0]).cast<std::string>(), kAxes);
  system.m_iPlaneMode =
      eLokalPlaneXY + FindWord("plane", py::object(plane[0]).cast<std::string>(), kPlanes);
  ZuLokalSystem turned(system);
  turned.AdjustPlanebyAxisMode();
  if (turned.m_iPlaneMode != system.m_iPlaneMode) {
    throw py::value_error("plane: one that holds the axis would be right");
  }
  system.m_uIdA = ToPointId(axis[1], points);
  system.m_uIdB = ToPointId(axis[2], points);
  system.m_uIdC = ToPointId(plane[1], points);
  SetOrigin(origin, points, &system);
  std::size_t i = 0;
  for (const py::handle& handle : scales) {
    const py::tuple scale(py::reinterpret_borrow<py::object>(handle));
    if (scale.size() != 3) throw py::value_error("scales: (a, b, distance) would be right");
    const ScalePlace& place = kScalePlaces[i++];
    system.*place.pA = ToPointId(scale[0], points);
    system.*place.pB = ToPointId(scale[1], points);
    system.*place.pDistance = py::object(scale[2]).cast<double>();
  }
  return system;
}

void FindScales(PyLocalSystem* pLocal) {
  const bool abBad[] = {pLocal->trafo.IsScale1Bad(), pLocal->trafo.IsScale2Bad(),
                        pLocal->trafo.IsScale3Bad()};
  for (std::size_t i = 0; i < 3; ++i) {
    const ScalePlace& place = kScalePlaces[i];
    PyLocalSystem::Scale scale{pLocal->system.*place.pA,
                               pLocal->system.*place.pB,
                               pLocal->system.*place.pDistance,
                               0.0,
                               0.0,
                               0.0,
                               abBad[i]};
    if (scale.uIdA == 0 || scale.uIdB == 0) continue;
    scale.dScale =
        ZuTrafo3d::CalcScale(pLocal->points.Find(scale.uIdA)->GetAsVector(),
                             pLocal->points.Find(scale.uIdB)->GetAsVector(), scale.dDistance);
    pLocal->scales.push_back(scale);
  }
}

// Puts the standard deviations in the local system into the points.
void FindDeviations(const ZuLokalAccuracy& accuracy, PyLocalSystem* pLocal) {
  pLocal->bSure = pLocal->deviation.Calc(pLocal->system, pLocal->points, pLocal->trafo, accuracy);
  if (!pLocal->bSure) return;
  const std::vector<ZuLokalScale>& scales = pLocal->deviation.Scales();
  for (std::size_t i = 0; i < scales.size() && i < pLocal->scales.size(); ++i) {
    pLocal->scales[i].dSd = scales[i].dSd;
    pLocal->scales[i].dDifferenceSd = scales[i].dDifferenceSd;
  }
  double adCovariance[9];
  for (ZuPoint* p = pLocal->points.First(); p != nullptr; p = p->Next()) {
    pLocal->deviation.PointCovariance(*p, adCovariance);
    p->m_dDX = std::sqrt(adCovariance[0]);
    p->m_dDY = std::sqrt(adCovariance[4]);
    p->m_dDZ = std::sqrt(adCovariance[8]);
  }
}

std::unique_ptr<PyLocalSystem> MakeLocal(const py::object& points, const py::tuple& axis,
                                         const py::tuple& plane, const py::object& origin,
                                         const py::sequence& scales, double dScaleTolerance,
                                         double dSigma, double dSigmaDistance) {
  auto local = std::make_unique<PyLocalSystem>();
  local->points = PointsArgument(points, "points").List();
  local->system = ToSystem(axis, plane, origin, scales, local->points);
  eTrafo3DStatus eStatus = eTrafo3DOk;
  if (!local->system.IsValid(eStatus, &local->points, scales.size() > 0)) {
    throw py::value_error(GetTrafo3DStatusText(eStatus));
  }
  ZuTrafo3d& trafo = local->trafo;
  bool bGood = trafo.CalcByLocalSystem(local->system, &local->points, scales.empty() ? 1.0 : 0.0,
                                       dScaleTolerance);
  FindScales(local.get());
  const bool bMismatch = !bGood && trafo.GetStatus() == eTrafo3DScaleMismatch;
  if (bMismatch) {
    bGood = trafo.CalcByLocalSystem(local->system, &local->points, trafo.m_dScale, 0.0);
  }
  if (!bGood) RaiseAdjustment(GetTrafo3DStatusText(trafo.GetStatus()), "", "", py::none());
  FindDeviations({dSigma, dSigmaDistance}, local.get());
  trafo.InPlaceTransform(&local->points);
  if (bMismatch) {
    WarnOfJoining("the scales disagree by more than scale_tolerance; their mean was taken");
  }
  if (local->bSure && local->deviation.FilledIn() > 0) {
    WarnOfJoining(std::to_string(local->deviation.FilledIn()) +
                  " coordinates without a standard deviation took the root mean square of the "
                  "others; sigma tells another");
  }
  return local;
}

void BindLocal(py::module_& m) {
  using namespace py::literals;
  using L = PyLocalSystem;
  using S = L::Scale;
  py::class_<L> local(m, "LocalSystem",
                      "A system that named points define, and all points in it. Standard "
                      "deviations are NaN or 0 where no accuracy is told.");
  AddColumns<L>(
      local,
      {{"trafo", [](const L& l) { return py::cast(static_cast<const ZuTrafo3dData&>(l.trafo)); },
        "Into the local system, a Trafo3d."},
       {"points", [](const L& l) -> py::object { return py::cast(NewPoints(l.points)); },
        "All points in the local system with their standard deviations, a PointList."},
       {"covariance",
        [](const L& l) {
          double ad[49];
          std::fill_n(ad, 49, std::numeric_limits<double>::quiet_NaN());
          return NewArrayOf({7, 7}, l.bSure ? l.deviation.Covariance() : ad);
        },
        "Of target_centre, the scale and the small rotation vector, (7, 7)."},
       {"scale_ids",
        [](const L& l) {
          py::list ids;
          for (const S& s : l.scales) ids.append(py::make_tuple(s.uIdA, s.uIdB));
          return py::object(ids);
        },
        "Pairs of points with a known distance, list of (a, b)."},
       {"scales",
        [](const L& l) { return NumberBy(l.scales, [](const S& s) { return s.dScale; }); },
        "The scale that each pair tells by itself, (k,)."},
       {"scales_sd",
        [](const L& l) { return NumberBy(l.scales, [](const S& s) { return s.dSd; }); }, "(k,)."},
       {"scales_difference_sd",
        [](const L& l) { return NumberBy(l.scales, [](const S& s) { return s.dDifferenceSd; }); },
        "Of their differences from the mean, (k,)."},
       {"scales_bad",
        [](const L& l) { return BoolsBy(l.scales, [](const S& s) { return s.bBad; }); },
        "Which differ from the mean by more than the tolerance, (k,)."}});
  m.def("local_system", &MakeLocal, "points"_a, "axis"_a, "plane"_a, "origin"_a = py::none(),
        "scales"_a = py::list(), py::kw_only(), "scale_tolerance"_a = 0.01, "sigma"_a = 0.0,
        "sigma_distance"_a = 0.0,
        "Puts points into a local system that some of them define.\n\naxis: (\"x\", a, b), from "
        "point a to point b; plane: (\"xy\", c), through c on the positive side of its other axis; "
        "origin: a point, or (point, (x, y, z)) with its local coordinates, else a; scales: up to "
        "three (a, b, distance), without them scale 1. Points by id or name. sigma: standard "
        "deviation of coordinates that tell none; sigma_distance: of the distances.");
}

}  // namespace

void BindJoining(py::module_& m) {
  BindMerge(m);
  BindEpochs(m);
  BindLocal(m);
}
