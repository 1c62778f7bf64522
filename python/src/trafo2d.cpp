// Plane transformations: adjusted, and stored ones.
#include "zu/transform/trafo2d.h"

#include <algorithm>

#include "tests.h"
#include "zu/adjust/trafo2d_fit.h"
#include "zu/foundation/sort_helper.h"

namespace {

const char* const kKinds2d[] = {"congruence", "helmert",    "affine",
                                "projective", "polynomial", nullptr};

// Points of a plane: of a PointList x and y with their standard deviations, or an n x 2 array.
struct PlanePoint {
  unsigned uId;
  double adX[2], adCov[4];
};

std::vector<PlanePoint> ToPlanePoints(const py::object& value, const py::object& covariances,
                                      const char* szArgument, const char* szCovariances) {
  std::vector<PlanePoint> points;
  if (py::isinstance<PyPoints>(value)) {
    const PointsArgument argument(value, szArgument);
    for (const ZuPoint* p = argument.List().First(); p != nullptr; p = p->Next()) {
      points.push_back(
          {p->GetId(), {p->m_dX, p->m_dY}, {p->m_dDX * p->m_dDX, 0.0, 0.0, p->m_dDY * p->m_dDY}});
    }
  } else {
    const Rows rows = AsRows(value, 2, szArgument);
    for (py::ssize_t i = 0; i < rows.n; ++i) {
      points.push_back({static_cast<unsigned>(i + 1), {rows.Row(i)[0], rows.Row(i)[1]}, {}});
    }
  }
  const Rows rows =
      AsMatrices(covariances, static_cast<py::ssize_t>(points.size()), 2, szCovariances);
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    std::copy_n(rows.Row(i), 4, points[static_cast<std::size_t>(i)].adCov);
  }
  return points;
}

// In the order of the source; of equal ids of the target the first counts, id 0 has no partner.
std::vector<ZuTrafo2dPair> ToPairs(const std::vector<PlanePoint>& sources,
                                   std::vector<PlanePoint> targets) {
  const auto less = [](const PlanePoint& a, const PlanePoint& b) { return a.uId < b.uId; };
  std::stable_sort(targets.begin(), targets.end(), less);
  std::vector<ZuTrafo2dPair> pairs;
  for (const PlanePoint& source : sources) {
    const auto found = std::lower_bound(targets.begin(), targets.end(), source, less);
    if (source.uId == 0 || found == targets.end() || found->uId != source.uId) continue;
    ZuTrafo2dPair pair;
    pair.uId = source.uId;
    std::copy_n(source.adX, 2, pair.adSource);
    std::copy_n(source.adCov, 4, pair.adSourceCov);
    std::copy_n(found->adX, 2, pair.adTarget);
    std::copy_n(found->adCov, 4, pair.adTargetCov);
    pairs.push_back(pair);
  }
  return pairs;
}

ZuTrafo2dFit Fit(const py::object& source, const py::object& target, const std::string& strKind,
                 double dSigma, const py::object& sourceCovariances,
                 const py::object& targetCovariances, const std::string& strSigma0, bool bSnoop,
                 double dAlpha, double dAlphaTotal, double dPower) {
  const ZuTrafo2dKind kind = static_cast<ZuTrafo2dKind>(FindWord("kind", strKind, kKinds2d));
  const auto sources = ToPlanePoints(source, sourceCovariances, "source", "source_covariances");
  const auto targets = ToPlanePoints(target, targetCovariances, "target", "target_covariances");
  if (!py::isinstance<PyPoints>(source) && !py::isinstance<PyPoints>(target) &&
      sources.size() != targets.size()) {
    throw py::value_error("source and target: arrays of the same length would be right");
  }
  ZuTrafo2dOptions options;
  options.dSigma = dSigma;
  options.tests = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  ZuTrafo2dFit fit;
  {
    const py::gil_scoped_release release;
    fit = ZuFitTrafo2d(kind, ToPairs(sources, targets), options);
  }
  if (fit.eStatus != ZuAdjustStatus::Good) {
    RaiseAdjustment(ZuAdjustStatusText(fit.eStatus), "", fit.strFree, py::cast(fit));
  }
  return fit;
}

// Each point in place; the pointer to a covariance moves along where one is asked for.
py::object ApplyFit(const ZuTrafo2dFit& fit, const py::object& xy, const py::object& covariances,
                    bool bCovariances) {
  const Rows rows = AsRows(xy, 2, "xy");
  const Rows given = AsMatrices(covariances, rows.n, 2, "covariances");
  double *pd = nullptr, *pdCov = nullptr;
  py::object result = NewArray(ShapeLike(rows, 2), &pd), carried = py::none();
  if (bCovariances) carried = NewArray({rows.n, 2, 2}, &pdCov);
  {
    const py::gil_scoped_release release;
    for (py::ssize_t i = 0; i < rows.n; ++i, pd += 2) {
      pd[0] = rows.Row(i)[0], pd[1] = rows.Row(i)[1];
      if (pdCov != nullptr) {
        std::fill_n(pdCov, 4, 0.0);
        if (given.n != 0) std::copy_n(given.Row(i), 4, pdCov);
      }
      fit.Transform(&pd[0], &pd[1], pdCov);
      if (pdCov != nullptr) pdCov += 4;
    }
  }
  if (!bCovariances) return result;
  return py::make_tuple(result, carried);
}

class FilledTrafo2d : public ZuTrafo2d {
 public:
  FilledTrafo2d(const std::string& strName, const py::object& coefficients) {
    static const char* const kNames[] = {"None",       "Helmert",      "Affin", "Projektiv",
                                         "Polynomial", "Inv. Helmert", nullptr};
    m_eType = static_cast<eZuTrafo2DType>(FindWord("name", strName, kNames));
    const Rows rows = AsRows(coefficients, 0, "coefficients");
    if (rows.n > kCoefficients) throw py::value_error("coefficients: at most 20 would be right");
    std::copy_n(rows.pd, rows.n, m_adCoef);
  }
};

ZuTrafo2d MakeTrafo2d(const std::string& strName, const py::object& coefficients) {
  return FilledTrafo2d(strName, coefficients);
}

py::object ApplyStored(const ZuTrafo2d& trafo, const py::object& xy) {
  const Rows rows = AsRows(xy, 2, "xy");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 2), &pd);
  const py::gil_scoped_release release;
  for (py::ssize_t i = 0; i < rows.n; ++i, pd += 2) {
    pd[0] = rows.Row(i)[0], pd[1] = rows.Row(i)[1];
    trafo.Transform(&pd[0], &pd[1]);
  }
  return result;
}

py::ssize_t Coefficients(const ZuTrafo2dFit& fit) {
  return static_cast<py::ssize_t>(fit.coefficients.size());
}

}  // namespace

void BindTrafo2d(py::module_& m) {
  using namespace py::literals;

  py::class_<ZuTrafo2d>(m, "Trafo2d", "A stored plane transformation.")
      .def(py::init(&MakeTrafo2d), "name"_a, "coefficients"_a)
      .def_property_readonly("name", [](const ZuTrafo2d& t) { return t.GetTrafoName(); })
      .def_property_readonly(
          "coefficients",
          [](const ZuTrafo2d& t) {
            double* pd = nullptr;
            py::object array = NewArray({ZuTrafo2d::kCoefficients}, &pd);
            for (int i = 0; i < ZuTrafo2d::kCoefficients; ++i) pd[i] = t.GetCoef(i);
            return array;
          },
          "a0 to a19, (20,).")
      .def("apply", &ApplyStored, "xy"_a,
           "Transformed points, (n, 2) or (2,) as given; as they are where there is no kind.");

  py::class_<ZuTrafo2dFit>(m, "Trafo2dFit",
                           "A plane transformation adjusted from common points, and how sure it "
                           "is.")
      .def_property_readonly("status",
                             [](const ZuTrafo2dFit& f) { return ZuAdjustStatusText(f.eStatus); })
      .def_property_readonly(
          "kind", [](const ZuTrafo2dFit& f) { return kKinds2d[static_cast<int>(f.kind)]; })
      .def_readonly("redundancy", &ZuTrafo2dFit::iRedundancy)
      .def_readonly("sigma0", &ZuTrafo2dFit::dSigma0,
                    "A factor to the standard deviations told; where none were told the standard "
                    "deviation of a target coordinate.")
      .def_property_readonly("sigma0_kind",
                             [](const ZuTrafo2dFit& f) { return ToStr(f.sigmaOfResults); })
      .def_readonly("condition", &ZuTrafo2dFit::dCondition)
      .def_readonly("set_aside", &ZuTrafo2dFit::iSetAside, "Number of points set aside.")
      .def_property_readonly(
          "source_centre", [](const ZuTrafo2dFit& f) { return NewArrayOf({2}, f.adSourceCentre); })
      .def_property_readonly(
          "target_centre", [](const ZuTrafo2dFit& f) { return NewArrayOf({2}, f.adTargetCentre); })
      .def_property_readonly(
          "coefficients",
          [](const ZuTrafo2dFit& f) {
            return NewArrayOf({Coefficients(f)}, f.coefficients.data());
          },
          "a0 and on, for coordinates less the centres.")
      .def_property_readonly(
          "covariance",
          [](const ZuTrafo2dFit& f) {
            return NewArrayOf({Coefficients(f), Coefficients(f)}, f.covariance.data());
          },
          "Of the coefficients, (k, k).")
      .def_property_readonly(
          "sd",
          [](const ZuTrafo2dFit& f) {
            return SdOf(f.covariance.data(), static_cast<int>(Coefficients(f)));
          },
          "Standard deviations of the coefficients, (k,).")
      .def_property_readonly(
          "tests",
          [](const ZuTrafo2dFit& f) {
            return PyTests{f.points, 2};
          },
          "Tests of the common points in the order of the source, transformed source less target; "
          "a PointTests with m = 2.")
      .def(
          "apply",
          [](const ZuTrafo2dFit& f, const py::object& xy) {
            return ApplyFit(f, xy, py::none(), false);
          },
          "xy"_a, "Transformed points, (n, 2) or (2,) as given.")
      .def(
          "apply_with_covariance",
          [](const ZuTrafo2dFit& f, const py::object& xy, const py::object& covariances) {
            return ApplyFit(f, xy, covariances, true);
          },
          "xy"_a, "covariances"_a = py::none(),
          "Transformed points and their covariances (n, 2, 2), with that of the parameters; "
          "covariances: of the points given, exact without.")
      .def("uncentred", &ZuTrafo2dFit::Uncentred,
           "The same for coordinates as they are, a Trafo2d.");

  m.def("trafo2d", &Fit, "source"_a, "target"_a, py::kw_only(), "kind"_a = "helmert",
        "sigma"_a = 0.0, "source_covariances"_a = py::none(), "target_covariances"_a = py::none(),
        "sigma0"_a = "automatic", "snoop"_a = false, "alpha"_a = 0.001, "alpha_total"_a = 0.0,
        "power"_a = 0.8,
        "Adjusts the plane transformation that carries source onto target.\n\nBoth are lists of "
        "points that share ids, or (n, 2) arrays row by row. kind: \"congruence\", \"helmert\", "
        "\"affine\", \"projective\" or \"polynomial\". sigma: standard deviation of target "
        "coordinates that tell none; covariances: (n, 2, 2). Raises AdjustmentError where the "
        "points do not decide it.");
}
