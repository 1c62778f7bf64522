// Planes, frames, and shapes fitted to points.
#include <algorithm>

#include "tests.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/plane_frame.h"

namespace {

// --- Plane ---------------------------------------------------------------------------------------

py::object Distances(const ZuPlane& plane, const py::object& xyz) {
  const Rows rows = AsRows(xyz, 3, "xyz");
  double* pd = nullptr;
  py::object result = rows.bSingle ? NewArray({}, &pd) : NewArray({rows.n}, &pd);
  const py::gil_scoped_release release;
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    pd[i] = plane.Dist(rows.Row(i)[0], rows.Row(i)[1], rows.Row(i)[2]);
  }
  return result;
}

py::object Project(const ZuPlane& plane, const py::object& xyz) {
  if (!plane.IsValid()) throw py::value_error("the plane has no normal");
  const Rows rows = AsRows(xyz, 3, "xyz");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 3), &pd);
  const py::gil_scoped_release release;
  ZuPoint foot;
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    plane.ProjectPoint(&foot, ZuPoint(1, rows.Row(i)[0], rows.Row(i)[1], rows.Row(i)[2]));
    *pd++ = foot.m_dX, *pd++ = foot.m_dY, *pd++ = foot.m_dZ;
  }
  return result;
}

ZuPlane MakePlane(double a, double b, double c, double d, unsigned uId, const py::object& name) {
  ZuPlane plane;
  plane.A() = a, plane.B() = b, plane.C() = c, plane.D() = d;
  plane.SetId(uId);
  if (!name.is_none()) plane.SetName(ToString(name));
  return plane;
}

void BindPlane(py::module_& m) {
  using namespace py::literals;
  py::class_<ZuPlane>(m, "Plane",
                      "A plane a x + b y + c z + d = 0 in object space. The normal need not have "
                      "length 1.")
      .def(py::init(&MakePlane), "a"_a, "b"_a, "c"_a, "d"_a, py::kw_only(), "id"_a = 0u,
           "name"_a = py::none())
      .def_property_readonly("id", [](const ZuPlane& p) { return p.GetId(); })
      .def_property_readonly("name", [](const ZuPlane& p) { return ToStr(p.GetName()); })
      .def_property_readonly(
          "normal",
          [](const ZuPlane& p) {
            const double ad[] = {p.A(), p.B(), p.C()};
            return NewArrayOf({3}, ad);
          },
          "(a, b, c), shape (3,).")
      .def_property_readonly("d", [](const ZuPlane& p) { return p.D(); })
      .def("distance", &Distances, "xyz"_a,
           "Signed distances of points (n, 3) -> (n,), positive on the side of the normal.")
      .def("project", &Project, "xyz"_a,
           "Foot points (n, 3) of points on the plane, whose normal has length 1.")
      .def("angle", &ZuPlane::CalcAngle, "other"_a, "Angle of the normals, 0 to pi.");
}

// --- Frame ---------------------------------------------------------------------------------------

ZuPoint3d ToPoint(const py::object& value, const char* szArgument) {
  const Rows rows = AsRows(value, 3, szArgument);
  if (!rows.bSingle) throw py::value_error(std::string(szArgument) + ": three numbers");
  return ZuPoint3d(rows.pd[0], rows.pd[1], rows.pd[2]);
}

ZuVector3d ToVector(const py::object& value, const char* szArgument) {
  return ToPoint(value, szArgument).AsVector();
}

py::object FromVector(const _MVector& v) {
  const double ad[] = {v.x, v.y, v.z};
  return NewArrayOf({3}, ad);
}

py::object Mapped(const ZuAffinMap3d& map, const py::object& xyz) {
  const Rows rows = AsRows(xyz, 3, "xyz");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 3), &pd);
  const py::gil_scoped_release release;
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    const ZuPoint3d p = map.Transform(ZuPoint3d(rows.Row(i)[0], rows.Row(i)[1], rows.Row(i)[2]));
    *pd++ = p.x, *pd++ = p.y, *pd++ = p.z;
  }
  return result;
}

py::object FromWorld(const ZuFrame3d& frame, const py::object& xyz) {
  ZuAffinMap3d map(frame);
  if (map.Invert() != 0) throw py::value_error("the axes of the frame lie in a plane");
  return Mapped(map, xyz);
}

ZuFrame3d FrameOf(const ZuPlane& plane) {
  ZuMatrix matrix(4, 4);
  if (!ZuMakePlaneFrame(plane, &matrix)) throw py::value_error("the plane has no normal");
  const auto column = [&matrix](int k) {
    return ZuVector3d(matrix.GetElem(1, k), matrix.GetElem(2, k), matrix.GetElem(3, k));
  };
  return ZuFrame3d(column(4).AsPoint(), column(1), column(2), column(3));
}

void BindFrame(py::module_& m) {
  using namespace py::literals;
  py::class_<ZuFrame3d>(m, "Frame",
                        "An origin with three axes, which need be neither of length 1 nor "
                        "perpendicular.")
      .def(py::init([](const py::object& origin, const py::object& x, const py::object& y,
                       const py::object& z) {
             return ZuFrame3d(ToPoint(origin, "origin"), ToVector(x, "x"), ToVector(y, "y"),
                              ToVector(z, "z"));
           }),
           "origin"_a = py::make_tuple(0, 0, 0), "x"_a = py::make_tuple(1, 0, 0),
           "y"_a = py::make_tuple(0, 1, 0), "z"_a = py::make_tuple(0, 0, 1))
      .def_static("of_plane", &FrameOf, "plane"_a,
                  "Coordinates in a plane: x horizontal and y upwards for who looks against the "
                  "normal, z along it; of a plane within a degree of the horizontal x and y are "
                  "those of object space.")
      .def_property_readonly("origin", [](const ZuFrame3d& f) { return FromVector(f.Origin()); })
      .def_property_readonly("x", [](const ZuFrame3d& f) { return FromVector(f.v1()); })
      .def_property_readonly("y", [](const ZuFrame3d& f) { return FromVector(f.v2()); })
      .def_property_readonly("z", [](const ZuFrame3d& f) { return FromVector(f.v3()); })
      .def(
          "to_world",
          [](const ZuFrame3d& f, const py::object& xyz) { return Mapped(ZuAffinMap3d(f), xyz); },
          "xyz"_a, "Points of the frame in world coordinates, (n, 3) or (3,) as given.")
      .def("from_world", &FromWorld, "xyz"_a,
           "Points of the world in coordinates of the frame, (n, 3) or (3,) as given.");
}

// --- Fits ----------------------------------------------------------------------------------------

std::unique_ptr<ZuCalcPlane> CalcPlane(const py::object& value, bool bForce) {
  const PointsArgument points(value, "points");
  auto calc = std::make_unique<ZuCalcPlane>();
  bool bGood = false;
  {
    const py::gil_scoped_release release;
    ZuPointList copy(points.List());  // the fit clears deviations of its list
    bGood = calc->CalcPlaneFromFilteredPoints(&copy, false, bForce);
  }
  if (!bGood) RaiseAdjustment(calc->GetZuPlaneStatusAsText(), "", "", py::none());
  return calc;
}

std::vector<ZuFitPoint> ToFitPoints(const py::object& value, const py::object& covariances) {
  const PointsArgument argument(value, "points");
  std::vector<ZuFitPoint> points;
  for (const ZuPoint* p = argument.List().First(); p != nullptr; p = p->Next()) {
    ZuFitPoint point;
    point.uId = p->GetId();
    const double adX[] = {p->m_dX, p->m_dY, p->m_dZ}, adSd[] = {p->m_dDX, p->m_dDY, p->m_dDZ};
    std::copy_n(adX, 3, point.adX);
    for (int k = 0; k < 3; ++k) point.adCov[4 * k] = adSd[k] * adSd[k];
    points.push_back(point);
  }
  const Rows rows =
      AsMatrices(covariances, static_cast<py::ssize_t>(points.size()), 3, "covariances");
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    std::copy_n(rows.Row(i), 9, points[static_cast<std::size_t>(i)].adCov);
  }
  return points;
}

const ZuFitResult& Checked(const ZuFitResult& fit) {
  if (fit.eStatus != ZuAdjustStatus::Good) {
    RaiseAdjustment(ZuAdjustStatusText(fit.eStatus), "", fit.strFree, py::cast(fit));
  }
  return fit;
}

PyTests TestsOfFit(const ZuFitResult& fit) {
  PyTests tests;
  for (const ZuFittedPoint& point : fit.points) tests.tests.push_back(point.test);
  tests.iDimension = tests.tests.empty() ? 1 : std::max(tests.tests.front().iDimension, 1);
  return tests;
}

void BindFitResult(py::module_& m) {
  py::class_<ZuFitResult>(m, "FitResult", "What a fit tells of itself and its n points.")
      .def_property_readonly("status",
                             [](const ZuFitResult& f) { return ZuAdjustStatusText(f.eStatus); })
      .def_readonly("redundancy", &ZuFitResult::iRedundancy)
      .def_readonly("sigma0", &ZuFitResult::dSigma0,
                    "A factor to the standard deviations told; where none were told the standard "
                    "deviation of a coordinate.")
      .def_property_readonly("sigma0_kind",
                             [](const ZuFitResult& f) { return ToStr(f.sigmaOfResults); })
      .def_readonly("rms", &ZuFitResult::dRms, "Of the distances of the points used.")
      .def_readonly("flatness", &ZuFitResult::dFlatness, "From the lowest to the highest of them.")
      .def_readonly("condition", &ZuFitResult::dCondition)
      .def_readonly("set_aside", &ZuFitResult::iSetAside, "Number of points set aside.")
      .def_property_readonly(
          "used",
          [](const ZuFitResult& f) {
            bool* pb = nullptr;
            py::object array = NewBools(static_cast<py::ssize_t>(f.points.size()), &pb);
            for (const ZuFittedPoint& point : f.points) *pb++ = point.bUsed;
            return array;
          },
          "False: set aside, (n,).")
      .def_property_readonly(
          "distances",
          [](const ZuFitResult& f) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(f.points.size())}, &pd);
            for (const ZuFittedPoint& point : f.points) *pd++ = point.dDistance;
            return array;
          },
          "Signed distances from the shape, (n,); of a line without sign.")
      .def_property_readonly(
          "residuals",
          [](const ZuFitResult& f) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(f.points.size()), 3}, &pd);
            for (const ZuFittedPoint& point : f.points) pd = std::copy_n(point.adResidual, 3, pd);
            return array;
          },
          "Adjusted minus observed, (n, 3).")
      .def_property_readonly("tests", &TestsOfFit, "Of the conditions, a PointTests.");
}

ZuFitOptions ToFitOptions(double dSigma, bool bSnoop, const std::string& strSigma0, double dAlpha,
                          double dAlphaTotal, double dPower, unsigned uSeed) {
  ZuFitOptions options;
  options.dSigma = dSigma;
  options.tests = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  options.uSeed = uSeed;
  return options;
}

// Each of the four fits with the same arguments.
template <class Shape>
void BindFit(py::module_& m, const char* szName,
             Shape (*pfnFit)(const std::vector<ZuFitPoint>&, const ZuFitOptions&),
             const char* szDoc) {
  using namespace py::literals;
  m.def(
      szName,
      [pfnFit](const py::object& points, double dSigma, const py::object& covariances, bool bSnoop,
               const std::string& strSigma0, double dAlpha, double dAlphaTotal, double dPower,
               unsigned uSeed) {
        const auto fitPoints = ToFitPoints(points, covariances);
        const ZuFitOptions options =
            ToFitOptions(dSigma, bSnoop, strSigma0, dAlpha, dAlphaTotal, dPower, uSeed);
        Shape shape;
        {
          const py::gil_scoped_release release;
          shape = pfnFit(fitPoints, options);
        }
        Checked(shape.fit);
        return shape;
      },
      "points"_a, py::kw_only(), "sigma"_a = 0.0, "covariances"_a = py::none(), "snoop"_a = true,
      "sigma0"_a = "automatic", "alpha"_a = 0.001, "alpha_total"_a = 0.0, "power"_a = 0.8,
      "seed"_a = 1u, szDoc);
}

void BindFits(py::module_& m) {
  using namespace py::literals;
  BindFitResult(m);

  py::class_<ZuPlaneFit>(m, "PlaneFit", "A plane fitted by orthogonal distances.")
      .def_readonly("fit", &ZuPlaneFit::fit)
      .def_property_readonly(
          "plane", [](const ZuPlaneFit& f) { return f.plane; }, "Normal of length 1.")
      .def_property_readonly(
          "sd", [](const ZuPlaneFit& f) { return NewArrayOf({4}, f.adSd); }, "Of a, b, c, d.")
      .def_property_readonly(
          "covariance",
          [](const ZuPlaneFit& f) {
            return NewArrayOf({4, 4}, f.adCov);
          },
          "Of a, b, c, d.")
      .def_property_readonly(
          "centre", [](const ZuPlaneFit& f) { return NewArrayOf({3}, f.adCentre); },
          "Of the points: normal . (x - centre) = height.")
      .def_readonly("height", &ZuPlaneFit::dHeight)
      .def_readonly("height_sd", &ZuPlaneFit::dHeightSd);
  py::class_<ZuLineFit>(m, "LineFit", "A line fitted by orthogonal distances.")
      .def_readonly("fit", &ZuLineFit::fit)
      .def_property_readonly("start",
                             [](const ZuLineFit& f) { return FromVector(f.line.getStart()); })
      .def_property_readonly("end", [](const ZuLineFit& f) { return FromVector(f.line.getEnd()); })
      .def_property_readonly("direction",
                             [](const ZuLineFit& f) { return FromVector(f.line.getDirection()); })
      .def_property_readonly(
          "point", [](const ZuLineFit& f) { return NewArrayOf({3}, f.adPoint); },
          "The point of the line nearest to the centre of the points.")
      .def_property_readonly(
          "covariance",
          [](const ZuLineFit& f) {
            return NewArrayOf({6, 6}, f.adCov);
          },
          "Of point and direction.");
  py::class_<ZuSphereFit>(m, "SphereFit", "A sphere fitted by orthogonal distances.")
      .def_readonly("fit", &ZuSphereFit::fit)
      .def_property_readonly("centre",
                             [](const ZuSphereFit& f) { return NewArrayOf({3}, f.adCentre); })
      .def_readonly("radius", &ZuSphereFit::dRadius)
      .def_property_readonly(
          "covariance",
          [](const ZuSphereFit& f) {
            return NewArrayOf({4, 4}, f.adCov);
          },
          "Of centre and radius.");
  py::class_<ZuCylinderFit>(m, "CylinderFit", "A cylinder fitted by orthogonal distances.")
      .def_readonly("fit", &ZuCylinderFit::fit)
      .def_property_readonly("start",
                             [](const ZuCylinderFit& f) { return FromVector(f.axis.getStart()); })
      .def_property_readonly("end",
                             [](const ZuCylinderFit& f) { return FromVector(f.axis.getEnd()); })
      .def_property_readonly(
          "direction", [](const ZuCylinderFit& f) { return FromVector(f.axis.getDirection()); })
      .def_readonly("radius", &ZuCylinderFit::dRadius)
      .def_property_readonly(
          "covariance",
          [](const ZuCylinderFit& f) {
            return NewArrayOf({7, 7}, f.adCov);
          },
          "Of the axis' point, its direction and the radius.");

  BindFit<ZuPlaneFit>(m, "fit_plane", &ZuFitPlane,
                      "Fits a plane to a PointList or an (n, 3) array by orthogonal "
                      "distances.\n\nsigma: standard deviation of coordinates that tell none, 0 is "
                      "not told; covariances: (n, 3, 3). snoop sets aside what does not fit. "
                      "Raises AdjustmentError where the points do not decide it.");
  BindFit<ZuLineFit>(m, "fit_line", &ZuFitLine, "Fits a line; arguments as fit_plane.");
  BindFit<ZuSphereFit>(m, "fit_sphere", &ZuFitSphere, "Fits a sphere; arguments as fit_plane.");
  BindFit<ZuCylinderFit>(m, "fit_cylinder", &ZuFitCylinder,
                         "Fits a cylinder; arguments as fit_plane.");

  py::class_<ZuCalcPlane>(m, "CalcPlane",
                          "A plane fitted along the coordinate axis closest to its normal, without "
                          "tests: the fit of measuring applications.\n\npoints: a PointList or an "
                          "(n, 3) array. force takes points that are close to a line. Raises "
                          "AdjustmentError.")
      .def(py::init(&CalcPlane), "points"_a, py::kw_only(), "force"_a = false)
      .def_property_readonly(
          "plane", [](const ZuCalcPlane& c) { return c.GetPlane(); }, "Normal of length 1.")
      .def_property_readonly("sigma0", &ZuCalcPlane::GetZuPlaneSigma0,
                             "Of the residual of the last point alone, over n + 1.")
      .def_property_readonly("medium_distance", &ZuCalcPlane::GetZuPlaneMediumPointDist,
                             "Root of the sum of the squared residuals, not over their count.")
      .def_property_readonly(
          "foot_points",
          [](ZuCalcPlane& c) {
            auto feet = std::make_unique<PyPoints>();
            feet->list = *c.GetPointsInZuPlane();
            return feet;
          },
          "The points put into the plane, a PointList; residuals[:, 0] is how far they stood off.");
}

}  // namespace

void BindPlanes(py::module_& m) {
  BindPlane(m);
  BindFrame(m);
  BindFits(m);
}
