// Projects: reading, checking, writing, measuring on a plane, intersecting.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fstream>
#include <limits>

#include "project_types.h"
#include "tests.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/adjust/intersection_project.h"
#include "zu/adjust/plane_point_accuracy.h"
#include "zu/photo/camera_list.h"
#include "zu/project/camera_file.h"
#include "zu/project/check.h"
#include "zu/project/plane_measurement.h"

namespace {

std::unique_ptr<PyProject> ReadProject(const py::object& path, bool bPartial, bool bTolerant) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  auto project = std::make_unique<PyProject>();
  {
    const py::gil_scoped_release release;
    project->project.Read(strPath.c_str(), bPartial ? eZuProjectPartial : eZuProjectWhole);
  }
  if (!bTolerant) TellFindings(project->project.GetFindings().GetFindings(), strPath);
  return project;
}

void WriteProject(PyProject& project, const py::object& path) {
  ResultFile file(ToPath(path));
  bool bWritten = false;
  {
    const Reading reading(project.gate);
    const py::gil_scoped_release release;
    const std::lock_guard lock(WriterMutex());
    bWritten = project.project.Export(file.Path().c_str());
  }
  file.Finish(bWritten);
}

py::list ToFindings(const ZuFindingList& findings) {
  py::list all;
  for (const ZuFinding& finding : findings) all.append(ToFinding(finding));
  return all;
}

py::list CheckFile(const py::object& path, const py::object& columns) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  ZuFindingList findings;
  bool bKnown = false;
  std::vector<eZuPointRWMask> table =
      ToColumns(columns.is_none() ? "id,x,y,z" : columns.cast<std::string>());
  table.push_back(eZuPointRWEnd);
  {
    const py::gil_scoped_release release;
    bKnown = ZuCheckFile(strPath.c_str(), table.data(), &findings);
  }
  if (!bKnown) throw py::value_error(strPath + ": no kind of file that is checked");
  return ToFindings(findings);
}

py::list ReadCameras(const py::object& path) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  ZuCameraFile file;
  {
    const py::gil_scoped_release release;
    file.Read(strPath.c_str());
  }
  TellFindings(file.GetFindings().GetFindings(), strPath);
  return CopiesOf(file.CameraList());
}

py::list Photos(const py::object& self) {
  PyProject& project = self.cast<PyProject&>();
  py::list photos;
  for (ZuPhoto* p = project.project.PhotoList().First(); p != nullptr; p = p->Next()) {
    photos.append(py::cast(PyPhoto{self, &project, p}));
  }
  return photos;
}

py::object FindPhoto(const py::object& self, unsigned uId) {
  PyProject& project = self.cast<PyProject&>();
  ZuPhoto* const p = project.project.PhotoList().Find(uId);
  return p == nullptr ? py::none() : py::cast(PyPhoto{self, &project, p});
}

std::unique_ptr<PyPoints> CopyPoints(const ZuPointList* pList) {
  auto points = std::make_unique<PyPoints>();
  if (pList != nullptr) points->list = *pList;
  return points;
}

// --- Measuring on a plane ------------------------------------------------------------------------

// The result names photos of the project, which lives as long.
struct PyMeasurement {
  py::object project;
  ZuPlaneMeasurement result;

  py::ssize_t Count() const { return result.m_iPoints; }
};

std::unique_ptr<PyMeasurement> Measure(const py::object& projectObject, const py::object& plane,
                                       const py::object& known, bool bFlip, bool bExact,
                                       const py::object& progress) {
  PyProject& project = projectObject.cast<PyProject&>();
  auto measurement = std::make_unique<PyMeasurement>();
  measurement->project = projectObject;
  ZuPlaneMeasurement& result = measurement->result;
  if (py::isinstance<ZuPlane>(plane)) {
    result.SetPlane(plane.cast<ZuPlane&>());
  } else {
    const PointsArgument points(plane, "plane");
    ZuPointList copy(points.List());
    if (!result.FitPlane(copy)) RaiseAdjustment("no plane", "the points span none", "", py::none());
  }
  std::optional<PointsArgument> knownPoints;
  if (!known.is_none()) knownPoints.emplace(known, "known");
  const ZuPointList none;
  const ZuPointList& knownList = knownPoints ? knownPoints->List() : none;
  const Writing writing(project.gate);  // a photo keeps what was derived
  Operation operation(progress);
  if (bExact) {
    const py::gil_scoped_release release;
    result.Measure(project.project, knownList, bFlip, true);
  } else {
    // The inverse tables of cameras are those of the process: one call at a time.
    result.Measure(project.project, knownList, bFlip, false);
  }
  operation.Finish();
  return measurement;
}

using PointField = double ZuMeasuredPoint::*;

// One row of fields of each measured point; where only checked points have them, NaN elsewhere.
py::object Columns(const PyMeasurement& m, const std::vector<PointField>& fields, bool bChecked) {
  double* pd = nullptr;
  py::object array = NewArray({m.Count(), static_cast<py::ssize_t>(fields.size())}, &pd);
  for (const ZuMeasuredPhoto& photo : m.result.m_photos) {
    for (const ZuMeasuredPoint& point : photo.m_points) {
      for (const PointField pField : fields) {
        *pd++ = bChecked && !point.m_bChecked ? std::numeric_limits<double>::quiet_NaN()
                                              : point.*pField;
      }
    }
  }
  return array;
}

py::object MeasuredIds(const PyMeasurement& m, bool bPhotos) {
  std::vector<unsigned> ids;
  for (const ZuMeasuredPhoto& photo : m.result.m_photos) {
    for (const ZuMeasuredPoint& point : photo.m_points) {
      ids.push_back(bPhotos ? photo.m_pPhoto->GetId() : point.m_uId);
    }
  }
  return NewIdsOf(ids);
}

py::dict QualityOf(const ZuMeasureQuality& quality) {
  py::dict figures;
  figures["checked"] = quality.m_iChecked;
  figures["rms"] = quality.m_dRms;
  const double ad[] = {quality.m_dRmsX, quality.m_dRmsY, quality.m_dRmsZ};
  figures["rms_xyz"] = NewArrayOf({3}, ad);
  figures["rms_pixels"] = quality.m_dRmsPixels;
  return figures;
}

py::list PhotoFigures(const PyMeasurement& m) {
  py::list photos;
  for (const ZuMeasuredPhoto& photo : m.result.m_photos) {
    py::dict figures = QualityOf(photo);
    figures["photo"] = photo.m_pPhoto->GetId();
    figures["points"] = photo.m_points.size();
    const ZuMeasuredPoint* const pWorst = photo.Worst();
    figures["worst_point"] = pWorst == nullptr ? py::none() : py::object(py::int_(pWorst->m_uId));
    figures["worst"] = pWorst == nullptr ? py::none() : py::object(py::float_(pWorst->Length()));
    photos.append(figures);
  }
  return photos;
}

py::list LeftOut(const PyMeasurement& m) {
  py::list all;
  for (const ZuLeftOutPhoto& photo : m.result.m_leftOut) {
    all.append(py::make_tuple(photo.m_uPhoto, ToStr(photo.m_strWhy)));
  }
  return all;
}

py::list Refused(const PyMeasurement& m) {
  py::list all;
  for (const ZuRefusedMeasurement& refused : m.result.m_refused) {
    all.append(py::make_tuple(refused.m_uPhoto, refused.m_uId, ToStr(refused.m_strWhy)));
  }
  return all;
}

std::unique_ptr<PyPoints> MeanPoints(const PyMeasurement& m) {
  auto points = std::make_unique<PyPoints>();
  for (const ZuMeanMeasuredPoint& mean : m.result.MeanPoints()) {
    points->list.Add(new ZuPoint(mean.m_uId, mean.m_dX, mean.m_dY, mean.m_dZ));
  }
  points->list.SetMask(TZuFormatTable<eZuPointRWMask>(kIdXyz));
  return points;
}

// n x 3 x 3; NaN where the chain has no answer.
py::object CovariancesOf(const PyMeasurement& m, const py::object& fit, double dSigma,
                         const std::string& strUnit, bool bFlip) {
  static const char* const kUnits[] = {"px", "mm", nullptr};
  ZuPlanePointOptions options;
  if (!(dSigma > 0.0)) throw py::value_error("sigma: a standard deviation above 0 would be right");
  options.dSigma = dSigma;
  options.bSigmaInPixels = FindWord("unit", strUnit, kUnits) == 0;
  options.bFlip = bFlip;
  const ZuPlaneFit* const pFit = fit.is_none() ? nullptr : &fit.cast<const ZuPlaneFit&>();
  PyProject& project = m.project.cast<PyProject&>();
  double* pd = nullptr;
  py::object array = NewArray({m.Count(), 3, 3}, &pd);
  const Writing writing(project.gate);
  const py::gil_scoped_release release;
  for (const ZuMeasuredPhoto& photo : m.result.m_photos) {
    const ZuPlanePointChain chain(project.project, *photo.m_pPhoto, m.result.m_plane, pFit,
                                  options);
    for (const ZuMeasuredPoint& p : photo.m_points) {
      ZuPoint pixel(p.m_uId, p.m_dPixelX, p.m_dPixelY);
      pixel.m_dDX = p.m_dPixelSdX;
      pixel.m_dDY = p.m_dPixelSdY;
      ZuPlanePointAccuracy accuracy;
      if (!chain.Of(pixel, &accuracy)) {
        std::fill_n(accuracy.adCov, 9, std::numeric_limits<double>::quiet_NaN());
      }
      pd = std::copy_n(accuracy.adCov, 9, pd);
    }
  }
  return array;
}

void BindMeasurement(py::module_& m) {
  using namespace py::literals;
  using P = ZuMeasuredPoint;
  py::class_<PyMeasurement>(m, "PlaneMeasurement",
                            "Object points on a plane from measurements in single photos, n of "
                            "them, photo by photo.")
      .def_property_readonly("plane", [](const PyMeasurement& p) { return p.result.m_plane; })
      .def("__len__", &PyMeasurement::Count)
      .def_property_readonly(
          "photo_ids", [](const PyMeasurement& p) { return MeasuredIds(p, true); }, "(n,).")
      .def_property_readonly(
          "ids", [](const PyMeasurement& p) { return MeasuredIds(p, false); }, "(n,).")
      .def_property_readonly(
          "pixels",
          [](const PyMeasurement& p) {
            return Columns(p, {&P::m_dPixelX, &P::m_dPixelY}, false);
          },
          "As measured, (n, 2).")
      .def_property_readonly(
          "xyz",
          [](const PyMeasurement& p) {
            return Columns(p, {&P::m_dX, &P::m_dY, &P::m_dZ}, false);
          },
          "On the plane, (n, 3).")
      .def_property_readonly(
          "differences",
          [](const PyMeasurement& p) {
            return Columns(p, {&P::m_dDX, &P::m_dDY, &P::m_dDZ}, true);
          },
          "Met less known point, (n, 3); NaN without a known point.")
      .def_property_readonly(
          "pixel_residuals",
          [](const PyMeasurement& p) {
            return Columns(p, {&P::m_dResPixelX, &P::m_dResPixelY}, true);
          },
          "Measured less known point in the image, (n, 2) pixels; NaN without a known point.")
      .def_property_readonly(
          "quality", [](const PyMeasurement& p) { return QualityOf(p.result); },
          "checked, rms, rms_xyz and rms_pixels over the checked points.")
      .def_property_readonly("photos", &PhotoFigures,
                             "The same of each photo, with photo, points, worst_point and worst.")
      .def_property_readonly("left_out", &LeftOut, "Photos left out: (photo, why).")
      .def_property_readonly("refused", &Refused, "Measurements left out: (photo, id, why).")
      .def("covariances", &CovariancesOf, py::kw_only(), "fit"_a = py::none(), "sigma"_a = 0.1,
           "unit"_a = "px", "flip"_a = false,
           "Of the points on the plane, (n, 3, 3): from the pixel, the camera and the orientation "
           "as far as the project tells of them, and the plane of a PlaneFit.\n\nsigma: standard "
           "deviation of a measured coordinate that tells none, in unit, \"px\" or \"mm\".")
      .def("mean_points", &MeanPoints, "Each point in the mean of its photos, a PointList.");
}

// --- Intersection --------------------------------------------------------------------------------

ZuProjectIntersection Intersect(PyProject& project, double dSigma, const std::string& strUnit,
                                const std::string& strSigma0, bool bSnoop, double dAlpha,
                                double dAlphaTotal, double dPower) {
  static const char* const kUnits[] = {"px", "mm", nullptr};
  ZuProjectIntersectionOptions options;
  options.bSigmaGiven = dSigma > 0.0;
  if (options.bSigmaGiven) options.dSigma = dSigma;
  options.bSigmaInPixels = FindWord("unit", strUnit, kUnits) == 0;
  options.tests = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  ZuProjectIntersection result;
  {
    const Writing writing(project.gate);
    const py::gil_scoped_release release;
    result = ZuIntersectProject(project.project, options);
  }
  const py::object warn = py::module_::import("zu._errors").attr("warn");
  for (const std::string& strWarning : result.warnings) warn(ToStr(strWarning));
  return result;
}

void BindIntersection(py::module_& m) {
  using Result = ZuProjectIntersection;
  py::class_<Result>(m, "Intersection",
                     "Points measured in two or more oriented photos, n of them by id.")
      .def("__len__", [](const Result& r) { return r.points.size(); })
      .def_readonly("sigma0", &Result::dSigma0)
      .def_property_readonly("sigma0_kind", [](const Result& r) { return ToStr(r.sigmaKind); })
      .def_readonly("redundancy", &Result::iRedundancy)
      .def_readonly("rms_pixels", &Result::dRmsPixels)
      .def_property_readonly(
          "ids",
          [](const Result& r) {
            std::vector<unsigned> ids;
            for (const ZuIntersectedPoint& p : r.points) ids.push_back(p.uId);
            return NewIdsOf(ids);
          },
          "(n,).")
      .def_property_readonly(
          "good",
          [](const Result& r) {
            bool* pb = nullptr;
            py::object array = NewBools(static_cast<py::ssize_t>(r.points.size()), &pb);
            for (const ZuIntersectedPoint& p : r.points) *pb++ = p.IsGood();
            return array;
          },
          "Which points are determined, (n,).")
      .def_property_readonly(
          "why",
          [](const Result& r) {
            py::list all;
            for (const ZuIntersectedPoint& p : r.points) all.append(ToStr(p.strWhy));
            return all;
          },
          "Why not, n of str.")
      .def_property_readonly(
          "xyz",
          [](const Result& r) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(r.points.size()), 3}, &pd);
            for (const ZuIntersectedPoint& p : r.points) {
              for (int k = 0; k < 3; ++k) {
                *pd++ = p.IsGood() ? p.position[static_cast<std::size_t>(k)]
                                   : std::numeric_limits<double>::quiet_NaN();
              }
            }
            return array;
          },
          "(n, 3); NaN where it is not determined.")
      .def_property_readonly(
          "covariance",
          [](const Result& r) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(r.points.size()), 3, 3}, &pd);
            for (const ZuIntersectedPoint& p : r.points) {
              pd = std::copy_n(p.covariance.data(), 9, pd);
            }
            return array;
          },
          "(n, 3, 3).")
      .def_property_readonly(
          "rays",
          [](const Result& r) {
            int* pi = nullptr;
            py::object array = NewInts(static_cast<py::ssize_t>(r.points.size()), &pi);
            for (const ZuIntersectedPoint& p : r.points) *pi++ = p.iRays;
            return array;
          },
          "Rays used, (n,).")
      .def_property_readonly(
          "angles",
          [](const Result& r) {
            double* pd = nullptr;
            py::object array = NewArray({static_cast<py::ssize_t>(r.points.size())}, &pd);
            for (const ZuIntersectedPoint& p : r.points) *pd++ = p.dAngle;
            return array;
          },
          "Largest angle between two of them, (n,) rad.");
}

}  // namespace

void BindProjects(py::module_& m) {
  using namespace py::literals;
  BindPhotos(m);

  py::class_<PyProject>(m, "Project",
                        "A project file: photos with their measurements, cameras, planes, object "
                        "points.")
      .def(py::init<>(), "One without anything.")
      .def_property_readonly("photos", &Photos, "Photos in the order of the file.")
      .def("photo", &FindPhoto, "id"_a, "The photo of that id, or None.")
      .def_property_readonly(
          "cameras", [](PyProject& p) { return CopiesOf(p.project.CameraList()); },
          "Copies of the cameras.")
      .def_property_readonly(
          "planes",
          [](PyProject& p) {
            py::list planes;
            for (const ZuPlane* q = p.project.PlaneList().First(); q != nullptr; q = q->Next()) {
              planes.append(py::cast(*q, py::return_value_policy::copy));
            }
            return planes;
          },
          "Copies of the planes.")
      .def_property_readonly(
          "object_points",
          [](PyProject& p) {
            const Reading reading(p.gate);
            return CopyPoints(&p.project.ObjectPoints());
          },
          "A copy of the object points, a PointList.")
      .def(
          "measurements",
          [](PyProject& p, unsigned uPhoto) {
            const Reading reading(p.gate);
            return CopyPoints(p.project.FindMeasurements(uPhoto));
          },
          "photo"_a,
          "A copy of the pixels measured in the photo of that id, a PointList; sd where told.")
      .def(
          "set_measurements",
          [](PyProject& p, unsigned uPhoto, PyPoints& points) {
            if (p.project.PhotoList().Find(uPhoto) == nullptr) {
              throw py::value_error("no photo " + std::to_string(uPhoto));
            }
            const Reading reading(points.gate);
            const Writing writing(p.gate);
            p.project.Measurements(uPhoto) = points.list;
          },
          "photo"_a, "points"_a, "Replaces the pixels measured in the photo of that id.")
      .def_property_readonly(
          "findings", [](PyProject& p) { return ToFindings(p.project.GetFindings()); },
          "What the reading found.")
      .def(
          "write", &WriteProject, "path"_a,
          "Writes the project so that it reads back to the last bit, unknown keywords and comments "
          "in their places. The file is whole or not there; raises WriteError.");

  BindMeasurement(m);
  BindIntersection(m);
  m.def("read_project", &ReadProject, "path"_a, py::kw_only(), "partial"_a = false,
        "tolerant"_a = false,
        "Reads a project file.\n\npartial: a file that ends inside a block is a warning. tolerant: "
        "errors raise nothing, what was read is there, findings tell. Raises ReadError.");
  m.def("read_cameras", &ReadCameras, "path"_a, "Reads a camera file, a list of Cameras.");
  m.def("check_file", &CheckFile, "path"_a, "columns"_a = py::none(),
        "What is wrong or not plausible in a project, camera, reseau, plane, GSI or coordinate "
        "file, a list of Findings; columns: of a coordinate file.");
  m.def("measure_on_plane", &Measure, "project"_a, "plane"_a, "known"_a = py::none(), py::kw_only(),
        "flip"_a = false, "exact"_a = true, "progress"_a = py::none(),
        "Meets every measured pixel of the project's photos with a plane.\n\nplane: a Plane, or "
        "points that it is fitted to as CalcPlane does; known: points to compare with, by id. "
        "flip: y of the pixels counts the other way. exact: distortion is taken off to the end, "
        "else by the stop rule of measuring applications.");
  m.def("intersect", &Intersect, "project"_a, py::kw_only(), "sigma"_a = 0.0, "unit"_a = "px",
        "sigma0"_a = "automatic", "snoop"_a = false, "alpha"_a = 0.001, "alpha_total"_a = 0.0,
        "power"_a = 0.8,
        "Object points from the rays of two and more photos.\n\nsigma: standard deviation of a "
        "measured coordinate in unit, \"px\" or \"mm\"; 0: not known, sigma0 follows from the "
        "residuals. snoop sets aside rays that do not fit.");
}
