// What a pass over the points of a cloud keeps: number, box, centre, plane of closest fit.
#include <algorithm>
#include <cmath>

#include "types.h"
#include "zu/adjust/cloud_moments.h"

namespace {

ZuCloudMoments& AddPoints(ZuCloudMoments& self, const py::object& xyz) {
  const Rows rows = AsRows(xyz, 3, "xyz");
  const py::gil_scoped_release release;
  self.AddRows(rows.pd, static_cast<std::size_t>(rows.n));
  return self;
}

ZuCloudPlane PlaneOf(const ZuCloudMoments& moments) {
  ZuCloudPlane plane = moments.Plane();
  if (plane.eStatus == ZuAdjustStatus::Good) return plane;
  RaiseAdjustment(ZuAdjustStatusText(plane.eStatus),
                  std::to_string(plane.uPoints) + " points determine no plane", "", py::none());
}

py::object CentreOf(const ZuCloudMoments& moments) {
  double ad[3] = {};
  if (!moments.Centre(ad)) throw py::value_error("no points yet");
  return NewArrayOf({3}, ad);
}

py::object BoxOfMoments(const ZuCloudMoments& moments) {
  double ad[6] = {};
  if (!moments.Box(ad, ad + 3)) throw py::value_error("no finite points yet");
  return NewArrayOf({2, 3}, ad);
}

template <class Kind>
Kind Loaded(Kind object, const py::bytes& state) {
  if (!object.Load(static_cast<std::string>(state))) {
    throw py::value_error("these bytes were not made by pickling");
  }
  return object;
}

void BindMoments(py::module_& m) {
  using namespace py::literals;
  py::class_<ZuCloudMoments>(
      m, "CloudMoments",
      "Number, box, centre and plane of points that come in parts: the same to the bit in whatever "
      "order and parts they come.\n\nPickles travel between processes and machines.")
      .def(py::init<>())
      .def("__len__", &ZuCloudMoments::Count)
      .def("add", &AddPoints, "xyz"_a, py::return_value_policy::reference_internal,
           "Takes points (n, 3) in and returns itself; slices of a large array one by one need the "
           "least memory.")
      .def(
          "join",
          [](ZuCloudMoments& self, const ZuCloudMoments& other) -> ZuCloudMoments& {
            self.Add(other);
            return self;
          },
          "other"_a, py::return_value_policy::reference_internal,
          "Takes in all that another has seen and returns itself.")
      .def_property_readonly("box", &BoxOfMoments,
                             "Lowest and highest coordinates, (2, 3), of the finite points.")
      .def_property_readonly("centre", &CentreOf, "Mean of the points, (3,).")
      .def("plane", &PlaneOf,
           "The CloudPlane of closest fit, without low, high and farthest. Raises AdjustmentError "
           "for points in one place, on a line, or as far spread across the plane as along it.")
      .def(py::pickle([](const ZuCloudMoments& self) { return py::bytes(self.Save()); },
                      [](const py::bytes& state) { return Loaded(ZuCloudMoments(), state); }));
}

void BindDistances(py::module_& m) {
  using namespace py::literals;
  py::class_<ZuCloudDistances>(m, "CloudDistances",
                               "The second pass over points of which the plane is known.")
      .def(py::init<const ZuCloudPlane&>(), "plane"_a)
      .def(
          "add",
          [](ZuCloudDistances& self, const py::object& xyz) -> ZuCloudDistances& {
            const Rows rows = AsRows(xyz, 3, "xyz");
            const py::gil_scoped_release release;
            self.AddRows(rows.pd, static_cast<std::size_t>(rows.n));
            return self;
          },
          "xyz"_a, py::return_value_policy::reference_internal, "Takes points (n, 3) in.")
      .def(
          "join",
          [](ZuCloudDistances& self, const ZuCloudDistances& other) -> ZuCloudDistances& {
            self.Add(other);
            return self;
          },
          "other"_a, py::return_value_policy::reference_internal,
          "Takes in what another has seen, behind the own points.")
      .def(
          "complete",
          [](const ZuCloudDistances& self, ZuCloudPlane plane) {
            self.Store(&plane);
            return plane;
          },
          "plane"_a, "The CloudPlane with low, high and farthest.")
      .def(py::pickle(
          [](const ZuCloudDistances& self) { return py::bytes(self.Save()); },
          [](const py::bytes& state) { return Loaded(ZuCloudDistances(ZuCloudPlane()), state); }));
}

py::tuple PlaneState(const ZuCloudPlane& p) {
  std::vector<double> values = {p.plane.A(), p.plane.B(), p.plane.C(), p.plane.D()};
  values.insert(values.end(), p.adCentre, p.adCentre + 3);
  values.insert(values.end(), p.adSpread, p.adSpread + 3);
  values.insert(values.end(), p.adCov, p.adCov + 16);
  values.insert(values.end(), {p.dSigma0, p.dRms, p.dLow, p.dHigh, p.dFarthest});
  return py::make_tuple(NewArrayOf({static_cast<py::ssize_t>(values.size())}, values.data()),
                        p.uPoints, p.uFarthest);
}

ZuCloudPlane PlaneFromState(const py::tuple& state) {
  const Rows rows = AsRows(state[0], 31, "state");
  const double* pd = rows.pd;
  ZuCloudPlane p;
  p.eStatus = ZuAdjustStatus::Good;
  p.plane.A() = pd[0], p.plane.B() = pd[1], p.plane.C() = pd[2], p.plane.D() = pd[3];
  std::copy_n(pd + 4, 3, p.adCentre);
  std::copy_n(pd + 7, 3, p.adSpread);
  std::copy_n(pd + 10, 16, p.adCov);
  p.dSigma0 = pd[26], p.dRms = pd[27], p.dLow = pd[28], p.dHigh = pd[29], p.dFarthest = pd[30];
  p.uPoints = state[1].cast<std::size_t>();
  p.uFarthest = state[2].cast<std::size_t>();
  return p;
}

void BindCloudPlane(py::module_& m) {
  py::class_<ZuCloudPlane>(m, "CloudPlane",
                           "The plane of closest fit to a cloud, all points with one weight.")
      .def_property_readonly("plane", [](const ZuCloudPlane& p) { return p.plane; })
      .def("__len__", [](const ZuCloudPlane& p) { return p.uPoints; })
      .def_property_readonly(
          "centre", [](const ZuCloudPlane& p) { return NewArrayOf({3}, p.adCentre); },
          "Mean of the points, (3,).")
      .def_property_readonly(
          "covariance",
          [](const ZuCloudPlane& p) {
            return NewArrayOf({4, 4}, p.adCov);
          },
          "Of a, b, c, d, (4, 4).")
      .def_property_readonly(
          "spread", [](const ZuCloudPlane& p) { return NewArrayOf({3}, p.adSpread); },
          "Root mean squares of the coordinates along three axes at right angles, that of the "
          "normal first, (3,).")
      .def_readonly("sigma0", &ZuCloudPlane::dSigma0, "Of a distance.")
      .def_readonly("rms", &ZuCloudPlane::dRms, "Of the distances.")
      .def_readonly("low", &ZuCloudPlane::dLow, "Least signed distance.")
      .def_readonly("high", &ZuCloudPlane::dHigh, "Largest signed distance.")
      .def_property_readonly(
          "farthest",
          [](const ZuCloudPlane& p) { return py::make_tuple(p.uFarthest, p.dFarthest); },
          "The farthest point, counted from 0 over all of them, and its signed distance.")
      .def(py::pickle(&PlaneState, &PlaneFromState));
}

}  // namespace

void BindCloudMoments(py::module_& m) {
  BindCloudPlane(m);
  BindMoments(m);
  BindDistances(m);
}
