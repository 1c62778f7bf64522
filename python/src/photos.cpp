// Photos and cameras: image coordinates both ways, rays, orientation.
#include <cmath>
#include <limits>

#include "project_types.h"
#include "zu/numerics/line3d.h"
#include "zu/photo/biko_transform.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// --- Camera --------------------------------------------------------------------------------------

using CameraMap = eCameraInverse (ZuCamera::*)(double*, double*) const;

py::object MapExact(const ZuCamera& camera, const py::object& xy, CameraMap pfnMap) {
  const Rows rows = AsRows(xy, 2, "xy");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 2), &pd);
  const py::gil_scoped_release release;
  for (py::ssize_t i = 0; i < rows.n; ++i, pd += 2) {
    pd[0] = rows.Row(i)[0], pd[1] = rows.Row(i)[1];
    if ((camera.*pfnMap)(&pd[0], &pd[1]) != eCameraInverseOk) pd[0] = pd[1] = kNan;
  }
  return result;
}

// As measuring applications do, with tables of the process: the interpreter's lock stays.
py::object MapByTable(const ZuCamera& camera, const py::object& xy,
                      bool (ZuCamera::*pfnMap)(double*, double*) const) {
  const Rows rows = AsRows(xy, 2, "xy");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 2), &pd);
  for (py::ssize_t i = 0; i < rows.n; ++i, pd += 2) {
    pd[0] = rows.Row(i)[0], pd[1] = rows.Row(i)[1];
    if (!(camera.*pfnMap)(&pd[0], &pd[1])) pd[0] = pd[1] = kNan;
  }
  return result;
}

py::object AdjustXy(const ZuCamera& camera, const py::object& xy, bool bExact) {
  return bExact ? MapExact(camera, xy, &ZuCamera::AdjustExact)
                : MapByTable(camera, xy, &ZuCamera::Adjust);
}

py::object InverseXy(const ZuCamera& camera, const py::object& xy, bool bExact) {
  return bExact ? MapExact(camera, xy, &ZuCamera::InvAdjustExact)
                : MapByTable(camera, xy, &ZuCamera::InvAdjust);
}

const char* const kModes[] = {"zuvo", "viva", "cap", "pinhole", nullptr};

py::object ModeOf(const ZuCamera& camera) {
  if (camera.m_iMode < 0 || camera.m_iMode > eCameraModePinhole) return py::int_(camera.m_iMode);
  return py::str(kModes[camera.m_iMode]);
}

void BindCamera(py::module_& m) {
  using namespace py::literals;
  py::class_<ZuCamera>(m, "Camera",
                       "Interior orientation: camera constant, principal point, lens distortion. "
                       "Lengths are mm on the image plane.\n\nA camera taken from a project or a "
                       "photo is a copy.")
      .def(py::init([](unsigned uId, double c, double xh, double yh, double a1, double a2,
                       double r0, const std::string& strMode, const py::str& name) {
             ZuCamera camera(uId, c, xh, yh, a1, a2, r0);
             camera.SetName(ToString(name));
             camera.m_iMode = FindWord("mode", strMode, kModes);
             return camera;
           }),
           "id"_a, "c"_a, "xh"_a = 0.0, "yh"_a = 0.0, "a1"_a = 0.0, "a2"_a = 0.0, "r0"_a = 0.0,
           py::kw_only(), "mode"_a = "zuvo", "name"_a = "")
      .def_property_readonly("id", [](const ZuCamera& c) { return c.GetId(); })
      .def_property_readonly("name", [](const ZuCamera& c) { return ToStr(c.GetName()); })
      .def_property_readonly("mode", &ModeOf,
                             "\"zuvo\", \"viva\", \"cap\" or \"pinhole\"; another number as it is.")
      .def_readwrite("c", &ZuCamera::m_dC, "Camera constant.")
      .def_readwrite("xh", &ZuCamera::m_dXh, "Principal point.")
      .def_readwrite("yh", &ZuCamera::m_dYh, "Principal point.")
      .def_readwrite("a1", &ZuCamera::m_dA1, "Radial coefficient of r^2.")
      .def_readwrite("a2", &ZuCamera::m_dA2, "Radial coefficient of r^4.")
      .def_readwrite("a3", &ZuCamera::m_dA3, "Radial coefficient of r^6 (cap).")
      .def_readwrite("r0", &ZuCamera::m_dR0, "Radius of zero distortion.")
      .def_readwrite("b1", &ZuCamera::m_dB1, "Affinity (cap).")
      .def_readwrite("b2", &ZuCamera::m_dB2, "Affinity (cap).")
      .def_readwrite("c1", &ZuCamera::m_dC1, "Tangential coefficient (cap).")
      .def_readwrite("c2", &ZuCamera::m_dC2, "Tangential coefficient (cap).")
      .def("adjust", &AdjustXy, "xy"_a, py::kw_only(), "exact"_a = true,
           "Measured points (n, 2) without distortion and principal point; NaN where the camera "
           "refuses one. exact: each is the other's inverse to 1e-12 mm, else as measuring "
           "applications compute, by stop rule and table.")
      .def("inv_adjust", &InverseXy, "xy"_a, py::kw_only(), "exact"_a = true,
           "The measured points (n, 2) of corrected ones; NaN where the camera refuses one.")
      .def("valid_radius", &ZuCamera::GetValidRadius, "search"_a = 0.0,
           "Largest distance from the distortion centre up to which the model is one to one.");
}

// --- Photo ---------------------------------------------------------------------------------------

eConvertBikoMode ModeOf(const std::string& strFrom, const std::string& strTo) {
  static const char* const kSystems[] = {"digi", "pre", "biko", "adjusted", "object", nullptr};
  // Rows from, columns to; 0: no way.
  static const int kModesBetween[5][5] = {{0, eDigiToPre, eDigiToBiko, eDigiToAdjusted, 0},
                                          {ePreToDigi, 0, ePreToBiko, 0, 0},
                                          {eBikoToDigi, eBikoToPre, 0, eBikoToAdjusted, 0},
                                          {eAdjustedToDigi, 0, eAdjustedToBiko, 0, 0},
                                          {eObjectToDigi, 0, eObjectToBiko, eObjectToAdjusted, 0}};
  const int iMode =
      kModesBetween[FindWord("source", strFrom, kSystems)][FindWord("target", strTo, kSystems)];
  if (iMode != 0) return static_cast<eConvertBikoMode>(iMode);
  throw py::value_error("no way from \"" + strFrom + "\" to \"" + strTo + '"');
}

py::object Convert(const PyPhoto& photo, const py::object& points, const std::string& strFrom,
                   const std::string& strTo, bool bFlip, bool bExact) {
  const eConvertBikoMode eMode = ModeOf(strFrom, strTo);
  const Rows rows = AsRows(points, strFrom == "object" ? 3 : 2, "points");
  if (strFrom == "object" && !photo.p->HasAOR()) throw py::value_error("the photo is not oriented");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 2), &pd);
  const Writing writing(photo.pProject->gate);
  ZuBikoTransform transform(photo.p, eMode, bFlip);
  transform.SetExact(bExact);
  const auto convert = [&] {
    for (py::ssize_t i = 0; i < rows.n; ++i, pd += 2) {
      const double* const pdRow = rows.Row(i);
      ZuPoint point(1, pdRow[0], pdRow[1], rows.iColumns == 3 ? pdRow[2] : 0.0);
      const bool bGood =
          bExact || bFlip ? transform.Transform(&point) : photo.p->ConvertBiko(&point, eMode);
      pd[0] = bGood ? point.m_dX : kNan;
      pd[1] = bGood ? point.m_dY : kNan;
    }
  };
  if (bExact) {
    const py::gil_scoped_release release;
    convert();
  } else {
    convert();  // tables of the process take part
  }
  return result;
}

py::object Rays(const PyPhoto& photo, const py::object& adjusted) {
  const Rows rows = AsRows(adjusted, 2, "adjusted");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 3), &pd);
  const Writing writing(photo.pProject->gate);
  const py::gil_scoped_release release;
  ZuLine3d line;
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    const ZuPoint point(1, rows.Row(i)[0], rows.Row(i)[1]);
    photo.p->CalcRay(line, &point);
    const ZuVector3d& v = line.getDirection();
    *pd++ = v.x, *pd++ = v.y, *pd++ = v.z;
  }
  return result;
}

py::object Meet(const PyPhoto& photo, const ZuPlane& plane, const py::object& adjusted) {
  if (!photo.p->HasAOR()) throw py::value_error("the photo is not oriented");
  if (!plane.IsValid()) throw py::value_error("the plane has no normal");
  const Rows rows = AsRows(adjusted, 2, "adjusted");
  double* pd = nullptr;
  py::object result = NewArray(ShapeLike(rows, 3), &pd);
  const Writing writing(photo.pProject->gate);
  const py::gil_scoped_release release;
  ZuPoint point(1, 0.0, 0.0), met(1, 0.0, 0.0);
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    point.m_dX = rows.Row(i)[0], point.m_dY = rows.Row(i)[1];
    met.m_dX = met.m_dY = met.m_dZ = kNan;
    photo.p->CalcSip(&met, plane, &point);
    *pd++ = met.m_dX, *pd++ = met.m_dY, *pd++ = met.m_dZ;
  }
  return result;
}

py::object RotationOf(const PyPhoto& photo) {
  double* pd = nullptr;
  py::object array = NewArray({3, 3}, &pd);
  for (int i = 0; i < 9; ++i) pd[i] = photo.p->GetRotAOR().GetElemZeroIndex(i / 3, i % 3);
  return array;
}

void SetRotation(PyPhoto& photo, const py::object& value) {
  const Rows rows = AsRows(value, 3, "rotation");
  if (rows.bSingle || rows.n != 3) throw py::value_error("rotation: shape (3, 3) would be right");
  ZuMatrix rotation(3, 3);
  for (int i = 0; i < 9; ++i) rotation.SetElem(i / 3 + 1, i % 3 + 1, rows.pd[i]);
  const Writing writing(photo.pProject->gate);
  photo.p->SetRotAOR(rotation);
}

void SetPosition(PyPhoto& photo, const py::object& value) {
  const Rows rows = AsRows(value, 3, "position");
  if (!rows.bSingle) throw py::value_error("position: three numbers");
  const Writing writing(photo.pProject->gate);
  photo.p->SetPosAOR(rows.pd[0], rows.pd[1], rows.pd[2]);
}

py::object RegionOf(const ZuRegion& region) {
  const double ad[] = {region.Left(), region.Bottom(), region.Right(), region.Top()};
  return NewArrayOf({2, 2}, ad);
}

}  // namespace

py::list CopiesOf(const ZuCameraList& cameras) {
  py::list copies;
  for (const ZuCamera* p = cameras.First(); p != nullptr; p = p->Next()) {
    copies.append(py::cast(*p, py::return_value_policy::copy));
  }
  return copies;
}

void BindPhotos(py::module_& m) {
  using namespace py::literals;
  BindCamera(m);

  py::class_<PyPhoto>(m, "Photo",
                      "A photo of a project.\n\nImage coordinates are in one of the systems "
                      "\"digi\" (pixels), \"pre\", \"biko\" (mm, distorted), \"adjusted\" (mm from "
                      "the principal point, without distortion); \"object\" is that of the "
                      "project. rotation maps image vectors (x, y, -|c|) to object space.")
      .def_property_readonly("id", [](const PyPhoto& p) { return p.p->GetId(); })
      .def_property_readonly("name", [](const PyPhoto& p) { return ToStr(p.p->GetName()); })
      .def_property_readonly("active", [](const PyPhoto& p) { return p.p->IsActive(); })
      .def_property_readonly("digital", [](const PyPhoto& p) { return p.p->IsDigital(); })
      .def_property(
          "oriented", [](const PyPhoto& p) { return p.p->HasAOR(); },
          [](PyPhoto& p, bool bOriented) { p.p->SetHasAOR(bOriented); })
      .def_property(
          "camera", [](const PyPhoto& p) { return ZuCamera(p.p->GetCamera()); },
          [](PyPhoto& p, const ZuCamera& camera) {
            const Writing writing(p.pProject->gate);
            p.p->SetCamera(camera);
          },
          "A copy of the photo's camera; assign one to change it.")
      .def_property(
          "position", [](const PyPhoto& p) { return NewArrayOf({3}, p.p->GetPosAOR().GetData()); },
          &SetPosition, "Projection centre, (3,).")
      .def_property("rotation", &RotationOf, &SetRotation, "(3, 3).")
      .def_property_readonly(
          "angles",
          [](const PyPhoto& p) {
            double ad[3];
            p.p->GetRotAOR(&ad[0], &ad[1], &ad[2]);
            return NewArrayOf({3}, ad);
          },
          "a, b, c of rotation = Ry(b) Rx(a) Rz(c), (3,) rad.")
      .def_property_readonly(
          "pixel_size", [](const PyPhoto& p) { return p.p->GetPixelSize(); }, "mm.")
      .def_property_readonly(
          "digi_region", [](const PyPhoto& p) { return RegionOf(p.p->GetDigiRegion()); },
          "Two corners in pixels, (2, 2).")
      .def_property_readonly(
          "biko_region", [](const PyPhoto& p) { return RegionOf(p.p->GetBikoRegion()); },
          "The same in mm, corner by corner, (2, 2).")
      .def("convert", &Convert, "points"_a, "source"_a, "target"_a, py::kw_only(), "flip"_a = false,
           "exact"_a = true,
           "Points (n, 2), from \"object\" (n, 3), of one system in another, (n, 2); NaN where "
           "there is no answer. flip: y of the pixels counts the other way. exact: the whole chain "
           "to the end, forth and back to 1e-12 mm, else as measuring applications compute.")
      .def("rays", &Rays, "adjusted"_a,
           "Unit directions (n, 3) in object space of adjusted points (n, 2); they start at "
           "position.")
      .def("meet", &Meet, "plane"_a, "adjusted"_a,
           "Where the rays of adjusted points (n, 2) meet a Plane, (n, 3); NaN for a ray parallel "
           "to it.");
}
