// Points and lists of points as columns, coordinate files and tables.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>

#include "types.h"
#include "zu/photo/detect_files.h"
#include "zu/points/column_names.h"

// --- Files that are whole ------------------------------------------------------------------------

ResultFile::ResultFile(const std::string& strPath) : m_strPath(strPath), m_strTemp(strPath) {
  struct stat status = {};
  // A device or a pipe is written to as it is.
  if (stat(strPath.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return;
  m_strTemp += '.' + std::to_string(getpid()) + ".part";
}

ResultFile::~ResultFile() {
  if (!m_bDone && m_strTemp != m_strPath) unlink(m_strTemp.c_str());
}

void ResultFile::Finish(bool bWritten) {
  const int iErrno = errno;
  if (!bWritten) RaiseWrite(m_strPath, iErrno);
  if (m_strTemp != m_strPath && std::rename(m_strTemp.c_str(), m_strPath.c_str()) != 0) {
    RaiseWrite(m_strPath, errno);
  }
  m_bDone = true;
}

// --- Points of an argument -----------------------------------------------------------------------

namespace {

void AppendRows(const Rows& rows, const std::vector<unsigned>& ids, ZuPointList* pList) {
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    const double* const pd = rows.Row(i);
    const unsigned uId =
        ids.empty() ? static_cast<unsigned>(i + 1) : ids[static_cast<std::size_t>(i)];
    pList->Add(new ZuPoint(uId, pd[0], pd[1], pd[2]));
  }
}

const eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                   eZuPointRWEnd};

}  // namespace

PointsArgument::PointsArgument(const py::object& value, const char* szArgument) : m_keep(value) {
  if (py::isinstance<PyPoints>(value)) {
    PyPoints& points = value.cast<PyPoints&>();
    m_reading.emplace(points.gate);
    m_pList = &points.list;
    return;
  }
  m_own.emplace();
  AppendRows(AsRows(value, 3, szArgument), {}, &*m_own);
  m_pList = &*m_own;
}

std::vector<eZuPointRWMask> ToColumns(const std::string& strColumns) {
  std::vector<eZuPointRWMask> columns;
  for (std::size_t uStart = 0; uStart <= strColumns.size();) {
    const std::size_t uEnd = std::min(strColumns.find(',', uStart), strColumns.size());
    const std::string strName = strColumns.substr(uStart, uEnd - uStart);
    const eZuPointRWMask eColumn = FindZuColumn(strName);
    if (eColumn == eZuPointRWEnd) {
      throw py::value_error("columns: \"" + strName + "\"; names of " + GetZuColumnNames() +
                            " between commas would be right");
    }
    columns.push_back(eColumn);
    uStart = uEnd + 1;
  }
  return columns;
}

// --- The list ------------------------------------------------------------------------------------

namespace {

using Triple = double ZuPoint::*const[3];
constexpr Triple kXyz = {&ZuPoint::m_dX, &ZuPoint::m_dY, &ZuPoint::m_dZ};
constexpr Triple kSd = {&ZuPoint::m_dDX, &ZuPoint::m_dDY, &ZuPoint::m_dDZ};
constexpr Triple kResiduals = {&ZuPoint::m_dRedu1, &ZuPoint::m_dRedu2, &ZuPoint::m_dRedu3};

py::object GetTriples(PyPoints& points, const Triple& fields) {
  const Reading reading(points.gate);
  double* pd = nullptr;
  py::object array = NewArray({points.list.Count(), 3}, &pd);
  for (const ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) {
    for (double ZuPoint::*const pField : fields) *pd++ = p->*pField;
  }
  return array;
}

void CheckCount(const ZuPointList& list, py::ssize_t n, const char* szArgument) {
  if (n == list.Count()) return;
  throw py::value_error(std::string(szArgument) + ": " + std::to_string(n) + " rows for " +
                        std::to_string(list.Count()) + " points");
}

void SetTriples(PyPoints& points, const Triple& fields, const py::object& value,
                const char* szName) {
  const Rows rows = AsRows(value, 3, szName);
  const Writing writing(points.gate);
  CheckCount(points.list, rows.n, szName);
  const double* pd = rows.pd;
  for (ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) {
    for (double ZuPoint::*const pField : fields) p->*pField = *pd++;
  }
}

using IntGetter = int (*)(const ZuPoint&);
using IntSetter = void (*)(ZuPoint*, int);

py::object GetInts(PyPoints& points, IntGetter pfnGet) {
  const Reading reading(points.gate);
  int* pi = nullptr;
  py::object array = NewInts(points.list.Count(), &pi);
  for (const ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) *pi++ = pfnGet(*p);
  return array;
}

void SetInts(PyPoints& points, IntSetter pfnSet, const py::object& value, const char* szName) {
  const std::vector<int> numbers = AsInts(value, szName);
  const Writing writing(points.gate);
  CheckCount(points.list, static_cast<py::ssize_t>(numbers.size()), szName);
  auto next = numbers.begin();
  for (ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) pfnSet(p, *next++);
}

void SetControl(ZuPoint* p, int i) { p->SetControlFlags(static_cast<short>(i)); }
void SetPhoto(ZuPoint* p, int i) { p->m_iPhoto = i; }
void SetCamera(ZuPoint* p, int i) { p->m_iCamera = i; }

py::object GetIds(PyPoints& points) {
  const Reading reading(points.gate);
  unsigned* pu = nullptr;
  py::object array = NewIds(points.list.Count(), &pu);
  for (const ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) *pu++ = p->GetId();
  return array;
}

void SetIds(PyPoints& points, const py::object& value) {
  const std::vector<unsigned> ids = AsIds(value, "ids");
  const Writing writing(points.gate);
  CheckCount(points.list, static_cast<py::ssize_t>(ids.size()), "ids");
  auto next = ids.begin();
  for (ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) p->SetId(*next++);
}

py::object GetNames(PyPoints& points) {
  const Reading reading(points.gate);
  py::list names;
  for (const ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) {
    names.append(ToStr(p->GetName()));
  }
  return py::module_::import("numpy").attr("array")(names, "str");
}

void SetNames(PyPoints& points, const py::object& value) {
  std::vector<String> names;
  for (const py::handle& name : value) names.push_back(ToString(py::str(name)));
  const Writing writing(points.gate);
  CheckCount(points.list, static_cast<py::ssize_t>(names.size()), "names");
  auto next = names.begin();
  for (ZuPoint* p = points.list.First(); p != nullptr; p = p->Next()) p->SetName(*next++);
}

std::unique_ptr<PyPoints> MakePoints(const py::object& xyz, const py::object& ids,
                                     const py::object& names, const py::object& sd,
                                     const py::object& control) {
  auto points = std::make_unique<PyPoints>();
  points->list.SetMask(kColumns);
  if (!xyz.is_none()) {
    const Rows rows = AsRows(xyz, 3, "xyz");
    AppendRows(rows, {}, &points->list);
  }
  if (!ids.is_none()) SetIds(*points, ids);
  if (!names.is_none()) SetNames(*points, names);
  if (!sd.is_none()) SetTriples(*points, kSd, sd, "sd");
  if (!control.is_none()) SetInts(*points, SetControl, control, "control");
  return points;
}

ZuPoint* PointAt(PyPoints& points, py::ssize_t i) {
  const py::ssize_t n = points.list.Count();
  if (i < 0) i += n;
  if (i < 0 || i >= n) throw py::index_error("no such point");
  return points.list.Get(static_cast<int>(i));
}

py::object CopyOf(const ZuPoint* p) {
  return p == nullptr ? py::none() : py::object(py::cast(*p, py::return_value_policy::copy));
}

void WritePoints(PyPoints& points, const py::object& path, const py::object& columns,
                 int iDecimals) {
  ZuTableForm form = points.form.value_or(ZuTableForm());
  std::vector<eZuPointRWMask> table;
  if (!columns.is_none()) table = ToColumns(columns.cast<std::string>());
  ResultFile file(ToPath(path));
  bool bWritten = false;
  {
    const Writing writing(points.gate);
    const py::gil_scoped_release release;
    const std::lock_guard lock(WriterMutex());
    std::ofstream stream(file.Path(), std::ios::binary);
    const bool bTable = iDecimals >= 0 || (table.empty() && points.form &&
                                           (form.m_cDelimiter != '\0' || !form.m_aTitles.empty()));
    if (bTable) {
      if (!table.empty() || form.m_aColumns.empty()) {
        form = ZuTableForm();
        form.m_aColumns = table.empty() ? ToColumns("id,x,y,z") : table;
      }
      ZuWriteTable(stream, points.list, form, iDecimals);
    } else {
      const TZuFormatTable<eZuPointRWMask> kept = points.list.GetMask();
      if (!table.empty()) {
        table.push_back(eZuPointRWEnd);
        points.list.SetMask(table.data());
      }
      points.list.Write(stream);
      if (points.list.First() != nullptr) stream << '\n';
      points.list.SetMask(kept);
    }
    stream.close();
    bWritten = !stream.fail();
  }
  file.Finish(bWritten);
}

std::unique_ptr<PyPoints> ReadPoints(const py::object& path, const py::object& columns,
                                     const std::string& strDelimiter, bool bDecimalComma,
                                     unsigned uSkipLines, bool bTolerant,
                                     const py::object& progress) {
  const std::string strPath = ToPath(path);
  const eZuReadMode eMode = bTolerant ? eZuReadTolerant : eZuReadStrict;
  ZuTableOptions options;
  if (!columns.is_none()) options.m_aColumns = ToColumns(columns.cast<std::string>());
  if (strDelimiter.size() > 1) throw py::value_error("delimiter: one character would be right");
  options.m_cDelimiter = strDelimiter.empty() ? '\0' : strDelimiter[0];
  options.m_bDecimalComma = bDecimalComma;
  options.m_uSkipLines = uSkipLines;
  options.m_bIds = false;
  CheckReadable(strPath);
  auto points = std::make_unique<PyPoints>();
  ZuTableReading reading;
  Operation operation(progress);
  {
    const py::gil_scoped_release release;
    if (columns.is_none() && ZuDetectZuvoFiles(strPath.c_str()).IsType(eZuvoFileGsi)) {
      static_cast<ZuCoordinateReading&>(reading) = ZuReadGsi(strPath.c_str(), points->list, eMode);
    } else {
      reading = ZuReadTable(strPath.c_str(), options, points->list, eMode);
      points->form = reading.m_Form;
    }
  }
  operation.Finish();
  TellFindings(reading.m_Findings, strPath);
  return points;
}

}  // namespace

void BindPoints(py::module_& m) {
  using namespace py::literals;

  py::class_<ZuPoint> point(m, "Point",
                            "A measured or computed point: id, coordinates, accuracies, control "
                            "code.\n\nA point taken from a list is a copy.");
  point
      .def(py::init([](unsigned uId, double x, double y, double z, const py::object& name) {
             ZuPoint p(uId, x, y, z);
             if (!name.is_none()) p.SetName(ToString(name));
             return p;
           }),
           "id"_a, "x"_a, "y"_a, "z"_a = 0.0, py::kw_only(), "name"_a = py::none())
      .def_property(
          "id", [](const ZuPoint& p) { return p.GetId(); },
          [](ZuPoint& p, unsigned uId) { p.SetId(uId); })
      .def_property(
          "name", [](const ZuPoint& p) { return ToStr(p.GetName()); },
          [](ZuPoint& p, const py::str& name) { p.SetName(ToString(name)); })
      .def_readwrite("x", &ZuPoint::m_dX)
      .def_readwrite("y", &ZuPoint::m_dY)
      .def_readwrite("z", &ZuPoint::m_dZ)
      .def_readwrite("photo", &ZuPoint::m_iPhoto, "Id of the photo.")
      .def_readwrite("camera", &ZuPoint::m_iCamera, "Id of the camera.")
      .def_property(
          "control", [](const ZuPoint& p) { return static_cast<int>(p.m_sControl); }, SetControl,
          "Control code, bits 1 X, 2 Y, 4 Z.");
  const auto triple = [&point](const char* szName, const Triple& fields, const char* szDoc) {
    point.def_property(
        szName,
        [&fields](const ZuPoint& p) {
          const double ad[3] = {p.*fields[0], p.*fields[1], p.*fields[2]};
          return NewArrayOf({3}, ad);
        },
        [&fields, szName](ZuPoint& p, const py::object& value) {
          const Rows rows = AsRows(value, 3, szName);
          if (!rows.bSingle) throw py::value_error(std::string(szName) + ": three numbers");
          for (int i = 0; i < 3; ++i) p.*fields[i] = rows.pd[i];
        },
        szDoc);
  };
  triple("xyz", kXyz, "Coordinates, shape (3,).");
  triple("sd", kSd, "Standard deviations of the coordinates, shape (3,); 0 is not told.");
  triple("residual", kResiduals, "Residuals, shape (3,).");

  py::class_<PyPoints>(m, "PointList",
                       "Points in their order, seen as columns.\n\nThe columns are copies: change "
                       "one and assign it to change the list. xyz: (n, 3), or None for an empty "
                       "list; ids: (n,), 1 to n where they are not given; names: n of str; sd: (n, "
                       "3), 0 where not told; control: (n,) of codes, bits 1 X, 2 Y, 4 Z.")
      .def(py::init(&MakePoints), "xyz"_a = py::none(), "ids"_a = py::none(), py::kw_only(),
           "names"_a = py::none(), "sd"_a = py::none(), "control"_a = py::none())
      .def("__len__", [](PyPoints& points) { return points.list.Count(); })
      .def(
          "__getitem__",
          [](PyPoints& points, py::ssize_t i) {
            const Reading reading(points.gate);
            return *PointAt(points, i);
          },
          "A copy of the point at a position.")
      .def("__setitem__",
           [](PyPoints& points, py::ssize_t i, const ZuPoint& p) {
             const Writing writing(points.gate);
             *PointAt(points, i) = p;
           })
      .def("__delitem__",
           [](PyPoints& points, py::ssize_t i) {
             const Writing writing(points.gate);
             delete points.list.Subtract(PointAt(points, i));
           })
      .def(
          "__iter__",
          [](PyPoints& points) {
            const Reading reading(points.gate);
            py::list copies;
            for (const ZuPoint* p = points.list.First(); p; p = p->Next()) copies.append(CopyOf(p));
            return py::iter(copies);
          },
          "Copies of the points as they stand at the call: the list may change meanwhile.")
      .def(
          "append",
          [](PyPoints& points, const ZuPoint& p) {
            const Writing writing(points.gate);
            points.list.Add(new ZuPoint(p));
          },
          "point"_a, "Appends a copy.")
      .def(
          "find",
          [](PyPoints& points, unsigned uId) {
            const Reading reading(points.gate);
            return CopyOf(points.list.Find(uId));
          },
          "id"_a, "A copy of the first point of that id, or None.")
      .def(
          "find_name",
          [](PyPoints& points, const py::str& name) {
            const Reading reading(points.gate);
            return CopyOf(points.list.Find(ToString(name)));
          },
          "name"_a, "A copy of the first point of that name, case counts, or None.")
      .def(
          "copy",
          [](PyPoints& points) {
            const Reading reading(points.gate);
            auto copy = std::make_unique<PyPoints>();
            copy->list = points.list;
            copy->form = points.form;
            return copy;
          },
          "A list of its own with copies of the points.")
      .def_property("ids", &GetIds, &SetIds, "Ids, (n,) uint32; 0 has no partner.")
      .def_property("names", &GetNames, &SetNames, "Names, (n,) str.")
      .def_property(
          "xyz", [](PyPoints& points) { return GetTriples(points, kXyz); },
          [](PyPoints& points, const py::object& v) { SetTriples(points, kXyz, v, "xyz"); },
          "Coordinates, (n, 3).")
      .def_property(
          "sd", [](PyPoints& points) { return GetTriples(points, kSd); },
          [](PyPoints& points, const py::object& v) { SetTriples(points, kSd, v, "sd"); },
          "Standard deviations of the coordinates, (n, 3); 0 is not told.")
      .def_property(
          "residuals", [](PyPoints& points) { return GetTriples(points, kResiduals); },
          [](PyPoints& points, const py::object& v) {
            SetTriples(points, kResiduals, v, "residuals");
          },
          "Residuals, (n, 3).")
      .def_property(
          "control",
          [](PyPoints& points) {
            return GetInts(points, [](const ZuPoint& p) { return int{p.m_sControl}; });
          },
          [](PyPoints& points, const py::object& v) { SetInts(points, SetControl, v, "control"); },
          "Control codes, (n,) int32, bits 1 X, 2 Y, 4 Z.")
      .def_property(
          "photos",
          [](PyPoints& points) {
            return GetInts(points, [](const ZuPoint& p) { return p.m_iPhoto; });
          },
          [](PyPoints& points, const py::object& v) { SetInts(points, SetPhoto, v, "photos"); },
          "Ids of the photos, (n,) int32.")
      .def_property(
          "cameras",
          [](PyPoints& points) {
            return GetInts(points, [](const ZuPoint& p) { return p.m_iCamera; });
          },
          [](PyPoints& points, const py::object& v) { SetInts(points, SetCamera, v, "cameras"); },
          "Ids of the cameras, (n,) int32.")
      .def("write", &WritePoints, "path"_a, "columns"_a = py::none(), py::kw_only(),
           "decimals"_a = -1,
           "Writes a coordinate file, or a table where the list was read from one.\n\ncolumns: "
           "\"id,x,y,z\" and the like; without, those of the file it came from. decimals: a table "
           "in fixed notation. The file is whole or not there; raises WriteError.");

  m.def("read_points", &ReadPoints, "path"_a, "columns"_a = py::none(), py::kw_only(),
        "delimiter"_a = "", "decimal_comma"_a = false, "skip_lines"_a = 0, "tolerant"_a = false,
        "progress"_a = py::none(),
        "Reads a coordinate file, a table with titles or a GSI file.\n\ncolumns: \"id,x,y,z\" and "
        "the like; without, they are found by the titles or the first point. A line that is no "
        "point raises ReadError with file, line and column; tolerant leaves it out and warns. "
        "progress: a callable (title, done), done from 0 to 1.");
}
