// Transformations kept in files, and projects of other programs.
#include <filesystem>
#include <fstream>

#include "columns.h"
#include "project_types.h"
#include "zu/adjust/similarity.h"
#include "zu/adjust/trafo2d_fit.h"
#include "zu/exchange/photo_exchange.h"
#include "zu/exchange/transformation.h"
#include "zu/project/project_transform.h"
#include "zu/version.h"

namespace {

// --- Transformation ------------------------------------------------------------------------------

const char* const kTransformationKinds[] = {"similarity", "affine", "plane", nullptr};

ZuTransformation OfSimilarity(const ZuSimilarityResult& sure) {
  ZuTransformation t;
  t.kind = ZuTransformationKind::Similarity;
  t.similarity = sure.trafo;
  t.covariance.assign(sure.adCovariance, sure.adCovariance + 49);
  t.dSigma0 = sure.dSigma0;
  t.iRedundancy = sure.iRedundancy;
  t.strSigmaKind = ZuSigmaKindText(sure.sigmaKind);
  if (sure.bSigmaGiven) t.dAccuracyFactor = sure.dSigma0;
  t.dSourceSd = std::sqrt(sure.dOwnVariance);
  for (const ZuSimilarityPoint& point : sure.points) {
    (point.bUsed ? t.origin.used : t.origin.setAside).push_back(std::to_string(point.uId));
  }
  return t;
}

std::unique_ptr<ZuTransformation> MakeTransformation(const py::object& value) {
  auto t = std::make_unique<ZuTransformation>();
  if (py::isinstance<ZuSimilarityResult>(value)) {
    *t = OfSimilarity(value.cast<ZuSimilarityResult&>());
  } else if (py::isinstance<ZuTrafo3dData>(value)) {
    t->kind = ZuTransformationKind::Similarity;
    t->similarity = value.cast<ZuTrafo3dData&>();
  } else {
    const Rows rows = AsRows(value, 4, "matrix");
    if (rows.bSingle || rows.n != 4) throw py::value_error("matrix: shape (4, 4) would be right");
    for (int i = 0; i < 16; ++i) t->affine[i / 4][i % 4] = rows.pd[i];
  }
  t->origin.strCommand = "zu.Transformation";
  t->origin.strVersion = ZuVersion();
  return t;
}

std::unique_ptr<ZuTransformation> ReadTransformationFile(const py::object& path) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  auto t = std::make_unique<ZuTransformation>();
  ZuFindingList findings;
  {
    const py::gil_scoped_release release;
    std::ifstream stream(strPath, std::ios::binary);
    ZuReadTransformation(stream, t.get(), &findings, strPath);
  }
  TellFindings(findings.GetFindings(), strPath);
  return t;
}

void WriteTransformation(const ZuTransformation& t, const py::object& path) {
  ResultFile file(ToPath(path));
  std::ofstream stream(file.Path(), std::ios::binary);
  ZuExportTransformation(stream, t);
  stream.close();
  file.Finish(!stream.fail());
}

// Points that have no image are NaN.
py::object CarryPoints(const ZuTransformation& t, const py::object& value) {
  auto carried = std::make_unique<PyPoints>();
  const bool bList = py::isinstance<PyPoints>(value);
  {
    const PointsArgument points(value, "points");
    const py::gil_scoped_release release;
    carried->list = points.List();
    for (const unsigned uId : t.Carry(&carried->list)) {
      constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
      ZuPoint* const p = carried->list.Find(uId);
      if (p != nullptr) p->m_dX = p->m_dY = p->m_dZ = dNone;
    }
  }
  if (bList) return py::cast(std::move(carried));
  const auto n = static_cast<py::ssize_t>(carried->list.Count());
  double* pd = nullptr;
  py::object array = NewArray({n, 3}, &pd);
  for (const ZuPoint* p = carried->list.First(); p != nullptr; p = p->Next()) {
    *pd++ = p->m_dX, *pd++ = p->m_dY, *pd++ = p->m_dZ;
  }
  return array;
}

ZuTransformation InverseOf(const ZuTransformation& t) {
  ZuTransformation back(t);
  if (!back.Invert()) throw py::value_error("the transformation has no inverse");
  return back;
}

py::object MapOf(const ZuTransformation& t) {
  ZuAffinMap3d map;
  if (!t.AsMap(&map)) throw py::value_error("a plane transformation is no map of space");
  double* pd = nullptr;
  py::object array = NewArray({4, 4}, &pd);
  for (int i = 0; i < 16; ++i) pd[i] = map[i / 4][i % 4];
  return array;
}

void ApplyToProject(const ZuTransformation& t, PyProject& project) {
  ZuTrafo3dData similarity;
  double dOff = 0.0;
  if (!t.AsSimilarity(&similarity, &dOff)) {
    throw py::value_error("photos need a similarity; this transformation would bend them");
  }
  bool bGood = false;
  {
    const Writing writing(project.gate);
    const py::gil_scoped_release release;
    bGood = ZuTransformProject(&project.project, similarity);
  }
  if (!bGood) throw py::value_error("photos need a scale above 0 and a proper rotation");
}

void BindTransformation(py::module_& m) {
  using namespace py::literals;
  using T = ZuTransformation;
  py::class_<T> transformation(
      m, "Transformation",
      "A transformation with what is known of its accuracy, as files keep it.\n\nvalue: a "
      "Similarity, a Trafo3d or a (4, 4) matrix for points as column vectors.");
  transformation.def(py::init(&MakeTransformation), "value"_a)
      .def_readwrite("unit", &T::strUnit, "Unit of the target, \"mm\" or the like; \"\": not told.")
      .def("apply", &CarryPoints, "points"_a,
           "The points carried over: of a PointList a PointList with their standard deviations, of "
           "an (n, 3) array an array; NaN for a point without an image.")
      .def(
          "apply_to_project", &ApplyToProject, "project"_a,
          "Carries a project with its photos, planes and points, in place; a similarity alone can.")
      .def("inverse", &InverseOf, "The way back, with its accuracy.")
      .def("write", &WriteTransformation, "path"_a, "Writes JSON, as the program reads it.");
  AddColumns<T>(
      transformation,
      {{"kind",
        [](const T& t) -> py::object {
          return py::str(kTransformationKinds[static_cast<int>(t.kind)]);
        },
        "\"similarity\", \"affine\" or \"plane\"."},
       {"matrix", &MapOf, "Homogeneous matrix for points as column vectors, (4, 4)."},
       {"sigma0", [](const T& t) -> py::object { return py::float_(t.dSigma0); }, ""},
       {"redundancy", [](const T& t) -> py::object { return py::int_(t.iRedundancy); }, ""},
       {"covariance",
        [](const T& t) -> py::object {
          auto n = static_cast<py::ssize_t>(t.covariance.size());
          py::ssize_t k = 0;
          while ((k + 1) * (k + 1) <= n) ++k;
          return k == 0 ? py::object(py::none()) : NewArrayOf({k, k}, t.covariance.data());
        },
        "Of the parameters, (k, k); None: not known. Of a similarity as Similarity.covariance."}});
  m.def("read_transformation", &ReadTransformationFile, "path"_a,
        "Reads a transformation from JSON, or a 4 x 4 matrix from text; raises ReadError.");
}

// --- Projects of other programs ------------------------------------------------------------------

eZuExchange ToFormat(const std::string& strFormat) {
  static const char* const kFormats[] = {"colmap", "bal", "metashape", "opencv", nullptr};
  return static_cast<eZuExchange>(FindWord("format", strFormat, kFormats));
}

py::dict ReportOf(const ZuExchangeReport& report, bool bExport) {
  py::dict told;
  told["photos"] = report.uPhotos;
  told["points"] = report.uPoints;
  told["measurements"] = report.uMeasurements;
  if (bExport) told["rms_pixels"] = report.dRms;
  py::list cameras;
  for (const ZuExchangedCamera& camera : report.cameras) {
    py::dict row;
    row["id"] = camera.uId;
    row["model"] = ToStr(camera.strModel);
    row["fitted"] = camera.bFitted;
    row["largest_error"] = camera.dError;
    cameras.append(row);
  }
  told["cameras"] = cameras;
  return told;
}

py::tuple ImportPhotos(const py::object& path, const std::string& strFormat, double dMaxError,
                       double dPixelSize) {
  const eZuExchange eFormat = ToFormat(strFormat);
  const std::string strPath = ToPath(path);
  auto project = std::make_unique<PyProject>();
  ZuExchangeReport report;
  ZuImportOptions options;
  options.dMaxError = dMaxError;
  if (dPixelSize > 0.0) options.dPixelSize = dPixelSize;
  {
    const py::gil_scoped_release release;
    std::vector<ZuExchangeFile> files;
    if (ZuReadExchangeFiles(eFormat, strPath, &files, &report.findings)) {
      ZuImportPhotos(eFormat, files, options, &project->project, &report);
    }
  }
  TellFindings(report.findings.GetFindings(), strPath);
  return py::make_tuple(py::cast(std::move(project)), ReportOf(report, false));
}

py::dict ExportPhotos(PyProject& project, const py::object& path, const py::object& points,
                      const std::string& strFormat, double dMaxError, bool bBinary) {
  const eZuExchange eFormat = ToFormat(strFormat);
  const std::string strPath = ToPath(path);
  std::optional<PointsArgument> given;
  if (!points.is_none()) given.emplace(points, "points");
  const ZuPointList none;
  std::vector<ZuExchangeFile> files;
  ZuExchangeReport report;
  ZuExportOptions options;
  options.dMaxError = dMaxError;
  options.bBinary = bBinary;
  {
    const Reading reading(project.gate);
    const py::gil_scoped_release release;
    ZuExportPhotos(eFormat, project.project, given ? given->List() : none, options, &files,
                   &report);
  }
  TellFindings(report.findings.GetFindings(), strPath);
  const bool bFolder = ZuIsFolderExchange(eFormat);
  std::error_code error;
  if (bFolder) std::filesystem::create_directory(strPath, error);
  for (const ZuExchangeFile& each : files) {
    ResultFile file(bFolder ? (std::filesystem::path(strPath) / each.strName).string() : strPath);
    std::ofstream stream(file.Path(), std::ios::binary);
    stream << each.strText;
    stream.close();
    file.Finish(!stream.fail());
  }
  return ReportOf(report, true);
}

}  // namespace

void BindExchange(py::module_& m) {
  using namespace py::literals;
  BindTransformation(m);
  m.def("import_photos", &ImportPhotos, "path"_a, py::kw_only(), "format"_a = "colmap",
        "max_error"_a = 0.05, "pixel_size"_a = 0.0,
        "A project from the files of another program: (Project, dict of what came).\n\nformat: "
        "\"colmap\", a folder, \"bal\", \"opencv\" or \"metashape\", a file; max_error: "
        "largest error of a camera that is fitted [px]; pixel_size [mm], where the files tell "
        "none.");
  m.def("export_photos", &ExportPhotos, "project"_a, "path"_a, "points"_a = py::none(),
        py::kw_only(), "format"_a = "colmap", "max_error"_a = 0.05, "binary"_a = false,
        "Writes oriented photos, cameras, measurements and points for another program; a dict "
        "tells what went.\n\npoints: coordinates, else the project's object "
        "points.");
}
