// The spatial similarity transformation: adjusted, and as a stored set of parameters.
#include "zu/adjust/similarity.h"

#include <algorithm>
#include <cmath>

#include "tests.h"
#include "zu/transform/trafo3d.h"

namespace {

constexpr py::ssize_t kChunk = 4096;  // points of an array that are lists at a time

const char* const kKinds[] = {"similarity", "rigid", "levelled", "shift", nullptr};

// Rows through an operation on lists of points: three columns of each come back.
template <class Work>
void ThroughLists(const Rows& rows, double* pdResult, const Work& work) {
  ZuPointList list;
  for (py::ssize_t i = 0; i < std::min(rows.n, kChunk); ++i) list.Add(new ZuPoint);
  for (py::ssize_t iFirst = 0; iFirst < rows.n; iFirst += kChunk) {
    const py::ssize_t n = std::min(rows.n - iFirst, kChunk);
    while (list.Count() > n) delete list.SubtractLast();
    const double* pd = rows.Row(iFirst);
    for (ZuPoint* p = list.First(); p != nullptr; p = p->Next(), pd += 3) {
      p->m_dX = pd[0], p->m_dY = pd[1], p->m_dZ = pd[2];
    }
    work(&list);
    for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
      *pdResult++ = p->m_dX, *pdResult++ = p->m_dY, *pdResult++ = p->m_dZ;
    }
  }
}

py::object Apply(const ZuTrafo3dData& data, const py::object& xyz) {
  const Rows rows = AsRows(xyz, 3, "xyz");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 3), &pd);
  ZuTrafo3d trafo;
  static_cast<ZuTrafo3dData&>(trafo) = data;
  const py::gil_scoped_release release;
  ThroughLists(rows, pd, [&trafo](ZuPointList* pList) { trafo.InPlaceTransform(pList); });
  return result;
}

// As Carry, so that an array and a list give the same bits.
py::object ApplyResult(const ZuSimilarityResult& result, const py::object& xyz) {
  const Rows rows = AsRows(xyz, 3, "xyz");
  double* pd = nullptr;
  py::object carried = NewArray(ShapeLike(rows, 3), &pd);
  const py::gil_scoped_release release;
  ThroughLists(rows, pd, [&result](ZuPointList* pList) { result.Carry(pList); });
  return carried;
}

// In closed form, without accuracies.
ZuTrafo3dData TrafoOfPoints(const py::object& source, const py::object& target) {
  const PointsArgument sources(source, "source"), targets(target, "target");
  ZuTrafo3d trafo;
  bool bGood = false;
  {
    const py::gil_scoped_release release;
    bGood = trafo.CalcByControlPoints(&targets.List(), &sources.List(), 3, false);
  }
  if (!bGood) RaiseAdjustment(GetTrafo3DStatusText(trafo.GetStatus()), "", "", py::none());
  return trafo;
}

ZuTrafo3dData MakeTrafo(double dScale, const py::object& rotation, const py::object& sourceCentre,
                        const py::object& targetCentre) {
  ZuTrafo3dData trafo;
  trafo.m_dScale = dScale;
  trafo.m_mRot.SetIdent();
  const Rows source = AsRows(sourceCentre, 3, "source_centre");
  const Rows target = AsRows(targetCentre, 3, "target_centre");
  if (!source.bSingle || !target.bSingle) throw py::value_error("centres: three numbers");
  for (int i = 0; i < 3; ++i) {
    trafo.m_vSource[i + 1] = source.pd[i];
    trafo.m_vTarget[i + 1] = target.pd[i];
  }
  if (rotation.is_none()) return trafo;
  const Rows rows = AsRows(rotation, 3, "rotation");
  if (rows.bSingle || rows.n != 3) throw py::value_error("rotation: shape (3, 3) would be right");
  for (int i = 0; i < 9; ++i) trafo.m_mRot.SetElem(i / 3 + 1, i % 3 + 1, rows.pd[i]);
  return trafo;
}

py::object VectorOf(const ZuVector& v) { return NewArrayOf({3}, v.GetData()); }

py::object MatrixOf(const ZuMatrix& matrix, int n) {
  double* pd = nullptr;
  py::object array = NewArray({n, n}, &pd);
  for (int i = 0; i < n; ++i) {
    for (int k = 0; k < n; ++k) *pd++ = matrix.GetElemZeroIndex(i, k);
  }
  return array;
}

std::vector<ZuPointCovariance> ToCovariances(const py::object& value, const ZuPointList& list,
                                             const char* szArgument) {
  const Rows rows = AsMatrices(value, list.Count(), 3, szArgument);
  std::vector<ZuPointCovariance> covariances(static_cast<std::size_t>(rows.n));
  const ZuPoint* p = list.First();
  for (py::ssize_t i = 0; i < rows.n; ++i, p = p->Next()) {
    covariances[static_cast<std::size_t>(i)].uId = p->GetId();
    std::copy_n(rows.Row(i), 9, covariances[static_cast<std::size_t>(i)].ad);
  }
  return covariances;
}

ZuSimilarityResult Transform(const py::object& source, const py::object& target,
                             const std::string& strKind, double dSigmaSource, double dSigmaTarget,
                             const py::object& sourceCovariances,
                             const py::object& targetCovariances, const std::string& strSigma0,
                             bool bSnoop, double dAlpha, double dAlphaTotal, double dPower,
                             const py::object& startAside) {
  const PointsArgument sources(source, "source"), targets(target, "target");
  if (sources.IsArray() && targets.IsArray() && sources.List().Count() != targets.List().Count()) {
    throw py::value_error("source and target: arrays of the same length would be right");
  }
  ZuSimilarityOptions options;
  options.kind = static_cast<ZuSimilarityKind>(FindWord("kind", strKind, kKinds));
  options.dSigmaSource = dSigmaSource;
  options.dSigmaTarget = dSigmaTarget;
  options.sourceCovariances =
      ToCovariances(sourceCovariances, sources.List(), "source_covariances");
  options.targetCovariances =
      ToCovariances(targetCovariances, targets.List(), "target_covariances");
  options.tests = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  if (!startAside.is_none()) options.startAside = AsIds(startAside, "start_aside");
  ZuSimilarityResult result;
  {
    const py::gil_scoped_release release;
    result = ZuAdjustSimilarity(targets.List(), sources.List(), options);
  }
  if (!result.IsGood()) {
    RaiseAdjustment(ZuAdjustStatusText(result.status), result.strReason, result.strFreeDirection,
                    py::cast(result));
  }
  const py::object warn = py::module_::import("zu._errors").attr("warn");
  for (const std::string& strWarning : result.warnings) warn(ToStr(strWarning));
  return result;
}

std::unique_ptr<PyPoints> Carry(const ZuSimilarityResult& result, PyPoints& points) {
  const Reading reading(points.gate);
  auto carried = std::make_unique<PyPoints>();
  const py::gil_scoped_release release;
  carried->list = points.list;
  carried->form = points.form;
  result.Carry(&carried->list);
  return carried;
}

py::object Angles(const ZuSimilarityResult& result, bool bCovariance) {
  double adAngles[3] = {}, adCovariance[9] = {};
  result.Angles(adAngles, adCovariance);
  return bCovariance ? NewArrayOf({3, 3}, adCovariance) : NewArrayOf({3}, adAngles);
}

PyTests TestsOf(const ZuSimilarityResult& result) {
  return {{result.points.begin(), result.points.end()}, 3};
}

}  // namespace

void BindSimilarity(py::module_& m) {
  using namespace py::literals;
  BindTests(m);

  py::class_<ZuTrafo3dData>(m, "Trafo3d",
                            "Parameters of a spatial similarity transformation, target = scale * "
                            "rotation @ (source - source_centre) + target_centre.")
      .def(py::init(&MakeTrafo), "scale"_a = 1.0, "rotation"_a = py::none(),
           "source_centre"_a = py::make_tuple(0, 0, 0), "target_centre"_a = py::make_tuple(0, 0, 0))
      .def_static("of_points", &TrafoOfPoints, "source"_a, "target"_a,
                  "The closed form over the common points, with the least squares of the "
                  "residuals; zu.transform tells how sure it is.")
      .def_readonly("scale", &ZuTrafo3dData::m_dScale)
      .def_property_readonly(
          "rotation", [](const ZuTrafo3dData& t) { return MatrixOf(t.m_mRot, 3); }, "(3, 3).")
      .def_property_readonly(
          "source_centre", [](const ZuTrafo3dData& t) { return VectorOf(t.m_vSource); }, "(3,).")
      .def_property_readonly(
          "target_centre", [](const ZuTrafo3dData& t) { return VectorOf(t.m_vTarget); }, "(3,).")
      .def_property_readonly(
          "matrix", [](const ZuTrafo3dData& t) { return MatrixOf(t.GetAsMatrix(), 4); },
          "Homogeneous matrix for points as column vectors, (4, 4).")
      .def("apply", &Apply, "xyz"_a, "Transformed points, (n, 3) or (3,) as given.");

  using Result = ZuSimilarityResult;
  py::class_<Result>(m, "Similarity",
                     "A similarity transformation adjusted from common points, and how sure it is. "
                     "Lengths have the unit of the target, angles are radians; standard deviations "
                     "hold sigma0.")
      .def_property_readonly("status", [](const Result& r) { return ZuAdjustStatusText(r.status); })
      .def_property_readonly("kind",
                             [](const Result& r) { return kKinds[static_cast<int>(r.kind)]; })
      .def_property_readonly(
          "trafo", [](const Result& r) { return r.trafo; }, "The parameters, a Trafo3d.")
      .def_property_readonly("scale", [](const Result& r) { return r.trafo.m_dScale; })
      .def_property_readonly("scale_sd",
                             [](const Result& r) { return std::sqrt(r.adCovariance[3 * 8]); })
      .def_property_readonly(
          "rotation", [](const Result& r) { return MatrixOf(r.trafo.m_mRot, 3); }, "(3, 3).")
      .def_property_readonly(
          "angles", [](const Result& r) { return Angles(r, false); },
          "Angles about x, y, z of rotation = Ry Rx Rz, (3,) rad.")
      .def_property_readonly(
          "angles_covariance", [](const Result& r) { return Angles(r, true); }, "(3, 3) rad^2.")
      .def_property_readonly(
          "source_centre", [](const Result& r) { return VectorOf(r.trafo.m_vSource); }, "(3,).")
      .def_property_readonly(
          "target_centre", [](const Result& r) { return VectorOf(r.trafo.m_vTarget); }, "(3,).")
      .def_property_readonly(
          "matrix", [](const Result& r) { return MatrixOf(r.trafo.GetAsMatrix(), 4); },
          "Homogeneous matrix for points as column vectors, (4, 4).")
      .def_property_readonly(
          "covariance",
          [](const Result& r) {
            return NewArrayOf({7, 7}, r.adCovariance);
          },
          "Of the shift x, y, z of target_centre, the scale and the small rotation vector w "
          "(rotation becomes rotation exp[w]), (7, 7); 0 for what is fixed.")
      .def_property_readonly(
          "sd", [](const Result& r) { return SdOf(r.adCovariance, 7); },
          "Square roots of the diagonal of covariance, (7,).")
      .def_readonly("condition", &Result::dCondition)
      .def_readonly("steps", &Result::iSteps)
      .def_readonly("redundancy", &Result::iRedundancy)
      .def_readonly("sigma0", &Result::dSigma0, "What standard deviations and tests are scaled by.")
      .def_property_readonly(
          "sigma0_kind", [](const Result& r) { return ToStr(r.sigmaKind); },
          "\"a priori\" or \"a posteriori\".")
      .def_readonly("sigma0_posteriori", &Result::dSigmaPosteriori)
      .def_readonly("sigma0_fits", &Result::bSigmaFits)
      .def_readonly("test_limit", &Result::dTestLimit)
      .def_property_readonly("tests", &TestsOf,
                             "Tests of the common points by id, target minus transformed source; "
                             "a PointTests with m = 3.")
      .def_property_readonly(
          "ids",
          [](const Result& r) {
            std::vector<unsigned> ids;
            for (const ZuSimilarityPoint& point : r.points) ids.push_back(point.uId);
            return NewIdsOf(ids);
          },
          "Ids of the common points, (n,).")
      .def_property_readonly(
          "residuals",
          [](const Result& r) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(r.points.size()), 3}, &pd);
            for (const ZuSimilarityPoint& point : r.points) {
              pd = std::copy_n(point.adResidual, 3, pd);
            }
            return array;
          },
          "Target minus transformed source, (n, 3).")
      .def_property_readonly(
          "set_aside",
          [](const Result& r) {
            std::vector<unsigned> ids;
            for (const ZuSetAside& point : r.setAside) ids.push_back(point.uId);
            return NewIdsOf(ids);
          },
          "Ids of the points set aside, in that order.")
      .def_property_readonly(
          "set_aside_errors",
          [](const Result& r) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(r.setAside.size()), 3}, &pd);
            for (const ZuSetAside& point : r.setAside) pd = std::copy_n(point.adError, 3, pd);
            return array;
          },
          "Target minus transformed source of these, (k, 3).")
      .def_property_readonly(
          "not_controlled", [](const Result& r) { return NewIdsOf(r.notControlled); },
          "Ids of used points with too little redundancy to be tested.")
      .def_property_readonly(
          "warnings",
          [](const Result& r) {
            py::list texts;
            for (const std::string& strWarning : r.warnings) texts.append(ToStr(strWarning));
            return texts;
          },
          "What should be looked at, list of str.")
      .def("apply", &ApplyResult, "xyz"_a, "Transformed points, (n, 3) or (3,) as given.")
      .def("carry", &Carry, "points"_a,
           "A PointList of the transformed points, with their standard deviations in sd: of common "
           "points with the part they had in the result, of others with their own.");

  m.def("transform", &Transform, "source"_a, "target"_a, py::kw_only(), "kind"_a = "similarity",
        "sigma_source"_a = 0.0, "sigma_target"_a = 0.0, "source_covariances"_a = py::none(),
        "target_covariances"_a = py::none(), "sigma0"_a = "automatic", "snoop"_a = false,
        "alpha"_a = 0.001, "alpha_total"_a = 0.0, "power"_a = 0.8, "start_aside"_a = py::none(),
        "Adjusts the transformation that carries source onto target.\n\nBoth are lists of points "
        "that share ids, or (n, 3) arrays row by row. kind: \"similarity\" (7 parameters), "
        "\"rigid\" (scale 1), \"levelled\" (turned about z only) or \"shift\". sigma_source, "
        "sigma_target: standard deviation of coordinates that do not tell their own, 0 is not "
        "known; covariances: (n, 3, 3) in the order of the points. snoop sets aside what does not "
        "fit, by tests at alpha. Raises AdjustmentError where the points do not decide it.");
}
