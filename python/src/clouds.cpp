// Point clouds: read-only views on the points themselves, operations, files.
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>

#include "types.h"
#include "zu/cloud/cloud_file.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/cloud/pts_file.h"
#include "zu/foundation/file_name.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/select_volume3d.h"

namespace {

struct PyCloud {
  std::unique_ptr<ZuPointCloud> cloud = std::make_unique<ZuPointCloud>();
  eZuIntensityScale eIntensity = eZuIntensityNone;  // of the file it was read from
  Gate gate;
  int iViews = 0;  // arrays that show the memory of the points
};

// For work that may move the points in memory. Raises BufferError where an array shows them.
class Resizing : public Writing {
 public:
  explicit Resizing(PyCloud& cloud) : Writing(cloud.gate) {
    if (cloud.iViews == 0) return;
    throw py::buffer_error(std::to_string(cloud.iViews) +
                           " arrays show the points: their number cannot change while one lives");
  }
};

// --- Views ---------------------------------------------------------------------------------------

struct ViewHold {
  py::object cloud;  // lives as long as the view
  PyCloud* p;
};

void EndView(void* p) {
  auto* const pHold = static_cast<ViewHold*>(p);
  --pHold->p->iViews;
  delete pHold;
}

// uOffset: of the first number in a point; iColumns 0: one number a point.
py::object View(const py::object& self, const py::object& dtype, std::size_t uOffset, int iColumns,
                py::ssize_t iStep) {
  PyCloud& cloud = self.cast<PyCloud&>();
  const Reading reading(cloud.gate);
  const auto& points = cloud.cloud->GetPoints();
  static const ZuScanPoint3d none;
  const void* const pFirst =
      reinterpret_cast<const std::byte*>(points.empty() ? &none : points.data()) + uOffset;
  const py::capsule base(new ViewHold{self, &cloud}, &EndView);
  ++cloud.iViews;
  const auto n = static_cast<py::ssize_t>(points.size());
  const auto iStride = static_cast<py::ssize_t>(sizeof(ZuScanPoint3d));
  if (iColumns == 0) return NewView(dtype, {n}, {iStride}, pFirst, base);
  return NewView(dtype, {n, iColumns}, {iStride, iStep}, pFirst, base);
}

py::object Dtype(const char* szType) { return py::module_::import("numpy").attr("dtype")(szType); }

// The record as it stands in memory.
py::object RecordType() {
  py::list names, formats, offsets;
  const auto add = [&](const char* szName, const char* szFormat, std::size_t uOffset) {
    names.append(szName);
    formats.append(szFormat);
    offsets.append(uOffset);
  };
  add("x", "f8", offsetof(ZuScanPoint3d, x));
  add("y", "f8", offsetof(ZuScanPoint3d, y));
  add("z", "f8", offsetof(ZuScanPoint3d, z));
  add("w", "f8", offsetof(ZuScanPoint3d, w));
  add("dx", "f4", offsetof(ZuScanPoint3d, m_fDX));
  add("dy", "f4", offsetof(ZuScanPoint3d, m_fDY));
  add("dz", "f4", offsetof(ZuScanPoint3d, m_fDZ));
  add("nx", "f4", offsetof(ZuScanPoint3d, m_fNX));
  add("ny", "f4", offsetof(ZuScanPoint3d, m_fNY));
  add("nz", "f4", offsetof(ZuScanPoint3d, m_fNZ));
  add("flags", "u2", offsetof(ZuScanPoint3d, m_sFlags));
  const char* const kBytes[] = {"red", "green", "blue", "intensity"};
  for (std::size_t i = 0; i < 4; ++i) add(kBytes[i], "u1", offsetof(ZuScanPoint3d, m_uColor) + i);
  py::dict layout;
  layout["names"] = names;
  layout["formats"] = formats;
  layout["offsets"] = offsets;
  layout["itemsize"] = sizeof(ZuScanPoint3d);
  return py::module_::import("numpy").attr("dtype")(layout);
}

py::object GetPoints(const py::object& self) { return View(self, RecordType(), 0, 0, 0); }
py::object GetXyz(const py::object& self) {
  return View(self, Dtype("f8"), offsetof(ZuScanPoint3d, x), 3, sizeof(double));
}
py::object GetNormals(const py::object& self) {
  return View(self, Dtype("f4"), offsetof(ZuScanPoint3d, m_fNX), 3, sizeof(float));
}
py::object GetRgb(const py::object& self) {
  return View(self, Dtype("u1"), offsetof(ZuScanPoint3d, m_uColor), 3, 1);
}
py::object GetIntensity(const py::object& self) {
  return View(self, Dtype("u1"), offsetof(ZuScanPoint3d, m_uColor) + 3, 0, 0);
}

// --- Making --------------------------------------------------------------------------------------

Rows Optional(const py::object& value, py::ssize_t n, int iColumns, const char* szArgument) {
  if (value.is_none()) return Rows();
  const Rows rows = AsRows(value, iColumns, szArgument);
  if (rows.n == n) return rows;
  throw py::value_error(std::string(szArgument) + ": " + std::to_string(rows.n) + " rows for " +
                        std::to_string(n) + " points");
}

std::uint32_t ToByte(double d, const char* szArgument) {
  if (d >= 0.0 && d <= 255.0) return static_cast<std::uint32_t>(d);
  throw py::value_error(std::string(szArgument) + ": 0 to 255 would be right");
}

void Append(PyCloud& self, const py::object& xyz, const py::object& rgb,
            const py::object& intensity, const py::object& normals) {
  const Rows places = AsRows(xyz, 3, "xyz");
  const Rows colors = Optional(rgb, places.n, 3, "rgb");
  const Rows levels = Optional(intensity, places.n, 0, "intensity");
  const Rows directions = Optional(normals, places.n, 3, "normals");
  for (py::ssize_t i = 0; i < 3 * colors.n; ++i) ToByte(colors.pd[i], "rgb");
  for (py::ssize_t i = 0; i < levels.n; ++i) ToByte(levels.pd[i], "intensity");
  const Resizing resizing(self);
  const py::gil_scoped_release release;
  if (places.n > static_cast<py::ssize_t>(ZuPointCloud::MaxPoints)) {
    throw std::length_error("a cloud holds at most 67,108,863 points");
  }
  self.cloud->Reserve(static_cast<unsigned>(places.n));
  for (py::ssize_t i = 0; i < places.n; ++i) {
    const double* const pd = places.Row(i);
    std::uint32_t uColor = 0;
    for (int k = 2; k >= 0 && colors.n != 0; --k) {
      uColor = uColor << 8 | ToByte(colors.Row(i)[k], "rgb");
    }
    if (levels.n != 0) uColor |= ToByte(levels.pd[i], "intensity") << 24;
    ZuScanPoint3d p(pd[0], pd[1], pd[2], static_cast<int>(uColor));
    if (directions.n != 0) {
      p.m_fNX = static_cast<float>(directions.Row(i)[0]);
      p.m_fNY = static_cast<float>(directions.Row(i)[1]);
      p.m_fNZ = static_cast<float>(directions.Row(i)[2]);
    }
    self.cloud->AddPoint(p);
  }
}

std::unique_ptr<PyCloud> MakeCloud(const py::object& xyz, const py::object& rgb,
                                   const py::object& intensity, const py::object& normals,
                                   const py::str& name) {
  auto cloud = std::make_unique<PyCloud>();
  cloud->cloud->SetName(ToString(name));
  if (!xyz.is_none()) Append(*cloud, xyz, rgb, intensity, normals);
  if (!intensity.is_none()) cloud->eIntensity = eZuIntensity255;
  return cloud;
}

// The places of an array of them or of a mask; raises IndexError or ValueError.
std::vector<std::size_t> ToPlaces(const py::object& chosen, std::size_t uCount) {
  const py::module_ numpy = py::module_::import("numpy");
  py::object array = numpy.attr("asarray")(chosen);
  if (array.attr("dtype").attr("kind").cast<std::string>() == "b") {
    if (py::len(array) != uCount) {
      throw py::value_error("chosen: a mask of " + std::to_string(py::len(array)) + " for " +
                            std::to_string(uCount) + " points");
    }
    array = numpy.attr("flatnonzero")(array);
  }
  if (py::len(array) == 0) return {};
  std::vector<std::size_t> places;
  for (const py::handle value : numpy.attr("ascontiguousarray")(array, "int64")) {
    const auto i = value.cast<std::int64_t>();
    if (i < 0 || static_cast<std::size_t>(i) >= uCount) {
      throw py::index_error("chosen: " + std::to_string(i) + " of " + std::to_string(uCount));
    }
    places.push_back(static_cast<std::size_t>(i));
  }
  return places;
}

std::unique_ptr<PyCloud> Taken(PyCloud& self, const py::object& chosen) {
  const Reading reading(self.gate);
  const auto& points = self.cloud->GetPoints();
  const std::vector<std::size_t> places = ToPlaces(chosen, points.size());
  auto taken = std::make_unique<PyCloud>();
  const py::gil_scoped_release release;
  taken->cloud->SetName(self.cloud->GetName());
  taken->eIntensity = self.eIntensity;
  taken->cloud->Reserve(static_cast<unsigned>(places.size()));
  for (const std::size_t u : places) taken->cloud->AddPoint(points[u]);
  return taken;
}

// --- Operations ----------------------------------------------------------------------------------

ZuAffinMap3d ToMap(const py::object& value) {
  const Rows rows = AsRows(value, 4, "matrix");
  if (rows.bSingle || rows.n != 4) throw py::value_error("matrix: shape (4, 4) would be right");
  ZuAffinMap3d map;
  for (int i = 0; i < 4; ++i) {
    for (int k = 0; k < 4; ++k) map[i][k] = rows.Row(i)[k];
  }
  return map;
}

ZuPoint3d ToPlace(const py::object& value, const char* szArgument) {
  const Rows rows = AsRows(value, 3, szArgument);
  if (!rows.bSingle) throw py::value_error(std::string(szArgument) + ": three numbers");
  return ZuPoint3d(rows.pd[0], rows.pd[1], rows.pd[2]);
}

void TransformCloud(PyCloud& self, const py::object& matrix, bool bNormals) {
  const ZuAffinMap3d map = ToMap(matrix);
  const Writing writing(self.gate);
  bool bGood = true;
  {
    const py::gil_scoped_release release;
    if (bNormals) bGood = self.cloud->TransformNormals(map);
    if (bGood) self.cloud->Transform(map);
  }
  if (!bGood) throw py::value_error("matrix: without an inverse it turns no normals");
}

unsigned SelectPyramid(PyCloud& self, const py::object& eye, const py::sequence& planes) {
  if (planes.size() != 4) throw py::value_error("planes: four would be right");
  Zu3dSelectVolume volume;
  volume.SetEye(ToPlace(eye, "eye"));
  for (int i = 0; i < 4; ++i) {
    volume.GetPlane(i) = planes[static_cast<std::size_t>(i)].cast<ZuPlane&>();
  }
  volume.StartPyramid();
  const Writing writing(self.gate);
  const py::gil_scoped_release release;
  return self.cloud->Select(volume);
}

py::object BoxOf(PyCloud& self, bool bSelected) {
  const Reading reading(self.gate);
  const ZuBoundingBox3d& box = bSelected ? self.cloud->GetSelBox() : self.cloud->GetBox();
  const double ad[] = {box.Xmin(), box.Ymin(), box.Zmin(), box.Xmax(), box.Ymax(), box.Zmax()};
  return NewArrayOf({2, 3}, ad);
}

py::object PlaceOf(const ZuPoint3d& p) {
  const double ad[] = {p.x, p.y, p.z};
  return NewArrayOf({3}, ad);
}

// --- Files ---------------------------------------------------------------------------------------

py::list ReadClouds(const py::object& path, bool bTolerant, bool bPartial,
                    const py::object& progress) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  ZuPointCloudContainer container;
  ZuCloudFileReading file;
  Operation operation(progress);
  {
    const py::gil_scoped_release release;
    file =
        ZuReadClouds(strPath.c_str(), container, {}, bTolerant ? eZuReadTolerant : eZuReadStrict);
  }
  operation.Finish();
  TellFindings(file.m_Findings, strPath, bPartial);
  py::list clouds;
  while (ZuPointCloud* const p = container.First()) {
    auto cloud = std::make_unique<PyCloud>();
    cloud->cloud.reset(container.GetClouds().Subtract(p));
    cloud->eIntensity = file.m_eIntensity;
    if (p->GetName().empty()) p->SetName(ZuGetFilenameNoExt(strPath.c_str()));
    clouds.append(py::cast(std::move(cloud)));
  }
  return clouds;
}

bool WriteCloudFile(const std::string& strTemp, const std::string& strEnding,
                    const std::string& strPly, eZuIntensityScale eIntensity,
                    ZuPointCloudContainer* pClouds) {
  if (strEnding == ".zpc") return pClouds->Write(strTemp.c_str()) != 0;
  if (strEnding == ".pts") {
    ZuPtsOptions options;
    if (eIntensity != eZuIntensityNone) options.m_eIntensity = eIntensity;
    return ZuWritePts(strTemp.c_str(), *pClouds, options);
  }
  if (strEnding == ".xyz") {
    return ZuWritePts(strTemp.c_str(), *pClouds, {eZuPtsPlain, eZuIntensityNone, false});
  }
  if (strEnding == ".las") {
    return ZuWriteLas(strTemp.c_str(), *pClouds, {0.0, eIntensity, 0}).m_bGood;
  }
  const eZuPlyForm eForm = strPly == "ascii"    ? eZuPlyAscii
                           : strPly == "binary" ? eZuPlyBinaryLittle
                                                : eZuPlyBinaryBig;
  return ZuWritePly(strTemp.c_str(), *pClouds, eForm,
                    eIntensity == eZuIntensityNone ? eZuIntensity255 : eIntensity);
}

// The clouds stand in a container as long as they are written.
class Gathered {
 public:
  explicit Gathered(const py::iterable& clouds) {
    for (const py::handle& handle : clouds) {
      PyCloud& cloud = handle.cast<PyCloud&>();
      m_objects.append(handle);
      m_uses.push_back(std::make_unique<Writing>(cloud.gate));  // refuses one that is there twice
      m_container.GetClouds().Add(cloud.cloud.get());
      if (m_eIntensity == eZuIntensityNone) m_eIntensity = cloud.eIntensity;
    }
  }
  ~Gathered() { m_container.GetClouds().SubtractAll(); }
  Gathered(const Gathered&) = delete;
  Gathered& operator=(const Gathered&) = delete;

  ZuPointCloudContainer m_container;
  eZuIntensityScale m_eIntensity = eZuIntensityNone;

 private:
  py::list m_objects;
  std::vector<std::unique_ptr<Writing>> m_uses;
};

void WriteClouds(const py::object& path, const py::iterable& clouds, const std::string& strPly,
                 const py::object& progress) {
  static const char* const kForms[] = {"ascii", "binary", "binary-big", nullptr};
  static const char* const kEndings[] = {".zpc", ".ply", ".pts", ".las", ".xyz", nullptr};
  FindWord("ply", strPly, kForms);
  const std::string strPath = ToPath(path), strEnding = ZuGetFileEnding(strPath);
  FindWord("path: ending", strEnding, kEndings);
  ResultFile file(strPath);
  Operation operation(progress);
  bool bWritten = false;
  {
    Gathered gathered(clouds);
    const py::gil_scoped_release release;
    bWritten = WriteCloudFile(file.Path(), strEnding, strPly, gathered.m_eIntensity,
                              &gathered.m_container);
  }
  operation.Finish();
  file.Finish(bWritten);
}

}  // namespace

void BindClouds(py::module_& m) {
  using namespace py::literals;

  py::class_<PyCloud>(
      m, "PointCloud",
      "One scan: points with colour, intensity and normal, a selection, an undo stack.\n\nArrays "
      "of the points show the memory of the cloud itself, read-only, and keep it alive. While one "
      "lives the number of points cannot change: BufferError. transform and sort_z change what it "
      "shows. xyz: (n, 3); rgb: (n, 3), 0 to 255; intensity: (n,), 0 to 255; normals: (n, 3).")
      .def(py::init(&MakeCloud), "xyz"_a = py::none(), py::kw_only(), "rgb"_a = py::none(),
           "intensity"_a = py::none(), "normals"_a = py::none(), "name"_a = "")
      .def("__len__", [](const PyCloud& c) { return c.cloud->GetPointCount(); })
      .def_property_readonly("points", &GetPoints,
                             "The records, (n,), with the fields x y z w dx dy dz nx ny nz flags "
                             "red green blue intensity; no copy.")
      .def_property_readonly("xyz", &GetXyz, "Coordinates, (n, 3) float64; no copy.")
      .def_property_readonly("normals", &GetNormals,
                             "Normals, (n, 3) float32, 0 where there is none; no copy.")
      .def_property_readonly("rgb", &GetRgb, "Colours, (n, 3) uint8; no copy.")
      .def_property_readonly("intensity", &GetIntensity, "Intensities, (n,) uint8; no copy.")
      .def_property_readonly(
          "selected",
          [](PyCloud& c) {
            const Reading reading(c.gate);
            bool* pb = nullptr;
            py::object array = NewBools(static_cast<py::ssize_t>(c.cloud->GetPointCount()), &pb);
            for (const ZuScanPoint3d& p : c.cloud->GetPoints()) *pb++ = p.IsSelected();
            return array;
          },
          "Which points are selected, (n,); a copy.")
      .def_property(
          "name", [](const PyCloud& c) { return ToStr(c.cloud->GetName()); },
          [](PyCloud& c, const py::str& name) { c.cloud->SetName(ToString(name)); })
      .def_property_readonly(
          "box", [](PyCloud& c) { return BoxOf(c, false); },
          "Lowest and highest coordinates, (2, 3).")
      .def_property_readonly(
          "selection_box", [](PyCloud& c) { return BoxOf(c, true); },
          "Of the selected points, (2, 3).")
      .def_property_readonly(
          "centre",
          [](PyCloud& c) {
            const Reading reading(c.gate);
            return PlaceOf(c.cloud->GetCenter().Point());
          },
          "Mean of the points, (3,).")
      .def_property_readonly("eye", [](PyCloud& c) { return PlaceOf(c.cloud->GetEye()); })
      .def_property_readonly("has_undo", [](const PyCloud& c) { return c.cloud->HasUndoData(); })
      .def("append", &Append, "xyz"_a, py::kw_only(), "rgb"_a = py::none(),
           "intensity"_a = py::none(), "normals"_a = py::none(), "Appends points.")
      .def(
          "insert",
          [](PyCloud& c, PyCloud& other) {
            const Resizing resizing(c);
            const Reading reading(other.gate);
            const py::gil_scoped_release release;
            c.cloud->Insert(other.cloud.get());
          },
          "other"_a, "Appends all points of another cloud.")
      .def(
          "copy",
          [](PyCloud& c) {
            const Reading reading(c.gate);
            auto copy = std::make_unique<PyCloud>();
            const py::gil_scoped_release release;
            *copy->cloud = *c.cloud;
            copy->eIntensity = c.eIntensity;
            return copy;
          },
          "A cloud of its own with copies of points, selection and undo stack.")
      .def("take", &Taken, "chosen"_a,
           "A cloud of its own with the points of a mask (n,) or of indices, all fields with them.")
      .def("transform", &TransformCloud, "matrix"_a, py::kw_only(), "normals"_a = true,
           "Moves the points by a (4, 4) matrix for column vectors, and turns the normals.")
      .def(
          "estimate_normals",
          [](PyCloud& c, const py::object& eye) {
            const ZuPoint3d place = ToPlace(eye, "eye");
            const Writing writing(c.gate);
            const py::gil_scoped_release release;
            c.cloud->EstimateNormals(place);
          },
          "eye"_a, "Turns the normal of every point to the eye, which is kept.")
      .def("select_pyramid", &SelectPyramid, "eye"_a, "planes"_a,
           "Adds to the selection the points on the positive side of four Planes whose coordinates "
           "are relative to the eye; how many points are selected then.")
      .def(
          "deselect",
          [](PyCloud& c) {
            const Writing writing(c.gate);
            c.cloud->Deselect();
          },
          "Empties the selection.")
      .def(
          "delete_selected",
          [](PyCloud& c) {
            const Resizing resizing(c);
            const py::gil_scoped_release release;
            return c.cloud->DeleteSelected();
          },
          "Moves the selected points to the undo stack and tells their number; box and centre stay "
          "those before.")
      .def(
          "undo_delete",
          [](PyCloud& c) {
            const Resizing resizing(c);
            return c.cloud->UndoDelete();
          },
          "Appends the points of the last deletion; False where there is none.")
      .def(
          "sort_z",
          [](PyCloud& c, bool bAscending) {
            const Writing writing(c.gate);
            const py::gil_scoped_release release;
            c.cloud->ZSort(bAscending);
          },
          "ascending"_a = true, "Sorts the points by z in place.")
      .def(
          "write",
          [](const py::object& self, const py::object& path, const std::string& strPly,
             const py::object& progress) {
            py::list clouds;
            clouds.append(self);
            WriteClouds(path, clouds, strPly, progress);
          },
          "path"_a, py::kw_only(), "ply"_a = "binary", "progress"_a = py::none(),
          "Writes a cloud file, as write_clouds.");

  m.def(
      "read_clouds", &ReadClouds, "path"_a, py::kw_only(), "tolerant"_a = false,
      "partial"_a = false, "progress"_a = py::none(),
      "Reads the clouds of a file, whose kind its content tells: binary cloud file, PTS, PLY, LAS, "
      "lines of x y z, coordinate file.\n\ntolerant leaves out lines that are no points and "
      "warns; partial takes the points of a file that ends too early and warns. Raises "
      "ReadError.");
  m.def("write_clouds", &WriteClouds, "path"_a, "clouds"_a, py::kw_only(), "ply"_a = "binary",
        "progress"_a = py::none(),
        "Writes clouds to one file, by its ending .zpc (all of them, whole), .ply, .pts, .las or "
        ".xyz "
        "(their points one behind the other).\n\nply: \"ascii\", \"binary\" or \"binary-big\". The "
        "file is whole or not there; raises WriteError.");
}
