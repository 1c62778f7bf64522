// Pictures as arrays: read, rectified, without distortion, and what is detected in them.
#include <cmath>
#include <cstring>

#include "columns.h"
#include "project_types.h"
#include "zu/image/board.h"
#include "zu/image/image_file.h"
#include "zu/image/image_writer.h"
#include "zu/image/marker.h"
#include "zu/image/photo_map.h"
#include "zu/image/photo_start.h"
#include "zu/image/rectify.h"
#include "zu/image/resample.h"
#include "zu/image/target_numbers.h"
#include "zu/image/undistort.h"
#include "zu/photo/camera_list.h"
#include "zu/rectify/plane_frame.h"

namespace {

// --- Arrays and images ---------------------------------------------------------------------------

void* FirstOf(const py::object& array) {
  const py::tuple data = array.attr("__array_interface__")["data"];
  return reinterpret_cast<void*>(py::object(data[0]).cast<std::uintptr_t>());
}

// (h, w) or (h, w, channels) of uint8 or uint16.
ZuImage ToImage(const py::handle& value, const char* szArgument) {
  const py::object array = py::module_::import("numpy").attr("ascontiguousarray")(value);
  const auto shape = array.attr("shape").cast<std::vector<int>>();
  const auto strType = py::str(array.attr("dtype")).cast<std::string>();
  const bool bShape = shape.size() == 2 || (shape.size() == 3 && shape[2] >= 1 && shape[2] <= 4);
  if (!bShape || (strType != "uint8" && strType != "uint16")) {
    throw py::value_error(std::string(szArgument) +
                          ": (rows, columns) or (rows, columns, 1 to 4) of uint8 or uint16 would "
                          "be right");
  }
  ZuImage image(shape[1], shape[0], shape.size() == 2 ? 1 : shape[2], strType == "uint8" ? 8 : 16);
  std::memcpy(image.GetData(), FirstOf(array),
              image.GetRowBytes() * static_cast<std::size_t>(image.GetHeight()));
  return image;
}

py::object FromImage(const ZuImage& image) {
  std::vector<int> shape = {image.GetHeight(), image.GetWidth()};
  if (image.GetChannels() > 1) shape.push_back(image.GetChannels());
  const py::object array = py::module_::import("numpy").attr("empty")(
      py::tuple(py::cast(shape)), image.GetBits() == 8 ? "uint8" : "uint16");
  std::memcpy(FirstOf(array), image.GetData(),
              image.GetRowBytes() * static_cast<std::size_t>(image.GetHeight()));
  return array;
}

py::dict InfoOf(const ZuImageInfo& info) {
  static const char* const kFormats[] = {"", "jpeg", "png", "tiff"};
  py::dict told;
  told["format"] = kFormats[info.m_eFormat];
  told["width"] = info.m_iWidth;
  told["height"] = info.m_iHeight;
  told["channels"] = info.m_iChannels;
  told["bits"] = info.m_iBits;
  told["make"] = ToStr(info.m_Exif.m_strMake);
  told["model"] = ToStr(info.m_Exif.m_strModel);
  told["time"] = ToStr(info.m_Exif.m_strTime);
  told["focal_length"] = info.m_Exif.m_dFocalLength;
  told["focal_length_35mm"] = info.m_Exif.m_dFocalLength35;
  told["orientation"] = info.m_Exif.m_iOrientation;
  return told;
}

py::object ReadPixels(const py::object& path) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  ZuImage image;
  ZuFindingList findings;
  {
    const py::gil_scoped_release release;
    ZuReadImage(strPath, &image, nullptr, &findings);
  }
  TellFindings(findings.GetFindings(), strPath);
  return FromImage(image);
}

ZuImageInfo ReadInfo(const py::object& path) {
  const std::string strPath = ToPath(path);
  CheckReadable(strPath);
  ZuImageInfo info;
  ZuFindingList findings;
  {
    const py::gil_scoped_release release;
    ZuReadImageInfo(strPath, &info, &findings);
  }
  TellFindings(findings.GetFindings(), strPath);
  return info;
}

void WritePixels(const py::object& path, const py::object& pixels, const py::object& grid,
                 int iEpsg, int iQuality) {
  const std::string strPath = ToPath(path);
  if (ZuImageFormatOf(strPath) == eZuImageNone) {
    throw py::value_error(strPath + ": an ending .png, .jpg or .tif would be right");
  }
  const ZuImage image = ToImage(pixels, "pixels");
  ZuImageWriteOptions options;
  options.m_iWidth = image.GetWidth();
  options.m_iHeight = image.GetHeight();
  options.m_iChannels = image.GetChannels();
  options.m_iBits = image.GetBits();
  options.m_iQuality = iQuality;
  options.m_iEpsg = iEpsg;
  if (!grid.is_none()) {
    const Rows rows = AsRows(grid, 3, "grid");
    options.m_map = ZuImageGrid{rows.pd[0], rows.pd[1], rows.pd[2]};
  }
  std::string strError;
  {
    const py::gil_scoped_release release;
    ZuImageWriter writer;
    if (!writer.Open(strPath, options) || !writer.Write(image, image.GetHeight()) ||
        !writer.Close()) {
      strError = writer.GetError();
    }
  }
  if (!strError.empty()) RaiseWrite(strPath, strError);
}

// --- Resampling ----------------------------------------------------------------------------------

eZuInterpolation ToKernel(const std::string& strKernel) {
  static const char* const kKernels[] = {"bilinear", "cubic", "lanczos", nullptr};
  return static_cast<eZuInterpolation>(FindWord("interpolation", strKernel, kKernels));
}

// Band by band, so that Ctrl-C is seen. An empty image where it was stopped.
ZuImage ResampleAll(ZuResampler* pResampler, Operation* pOperation) {
  constexpr int kBand = 64;
  const int iHeight = pResampler->GetHeight();
  ZuImage all(pResampler->GetWidth(), iHeight, pResampler->GetChannels(), pResampler->GetBits());
  for (int y = 0; y < iHeight; y += kBand) {
    ZuImage rows = pResampler->MakeRows(kBand);
    pResampler->Resample(y, &rows);
    const int n = std::min(kBand, iHeight - y);
    std::memcpy(all.GetData() + static_cast<std::size_t>(y) * all.GetRowBytes(), rows.GetData(),
                static_cast<std::size_t>(n) * all.GetRowBytes());
    if (!pOperation->Notify("resampling", static_cast<double>(y + n) / iHeight)) return ZuImage();
  }
  return all;
}

struct PyRectified {
  ZuPlaneRaster raster;
  py::object pixels;
  std::vector<unsigned> photos;
  std::vector<std::int64_t> used;
  ZuPlane plane;
};

// A single one or a sequence of them.
std::vector<py::object> AsList(const py::object& value, bool bSingle) {
  if (bSingle) return {value};
  std::vector<py::object> all;
  for (const py::handle& handle : value) all.push_back(py::reinterpret_borrow<py::object>(handle));
  return all;
}

std::unique_ptr<PyRectified> Rectify(const py::object& photos, const py::object& pictures,
                                     const ZuPlane& plane, double dPixel, const py::object& region,
                                     const std::string& strKernel, bool bFlip,
                                     const py::object& progress) {
  const bool bOne = py::isinstance<PyPhoto>(photos);
  const std::vector<py::object> photoList = AsList(photos, bOne);
  const std::vector<py::object> pictureList = AsList(pictures, bOne);
  if (photoList.empty() || photoList.size() != pictureList.size()) {
    throw py::value_error("photos and pictures: as many of each would be right");
  }
  const eZuInterpolation eKernel = ToKernel(strKernel);
  if (!(dPixel > 0.0)) throw py::value_error("pixel: a size above 0 would be right");
  if (!plane.IsValid()) throw py::value_error("the plane has no normal");
  auto result = std::make_unique<PyRectified>();
  std::vector<const PyPhoto*> sources;
  std::vector<ZuImage> images;
  for (std::size_t i = 0; i < photoList.size(); ++i) {
    const auto& photo = photoList[i].cast<const PyPhoto&>();
    const std::string strLacks =
        photo.pProject->project.Lacks(*photo.p, eZuNeedPixels | eZuNeedCamera | eZuNeedOrientation);
    if (!strLacks.empty()) {
      throw py::value_error("photo " + std::to_string(photo.p->GetId()) + ": " + strLacks);
    }
    sources.push_back(&photo);
    images.push_back(ToImage(pictureList[i], "pictures"));
    result->photos.push_back(photo.p->GetId());
  }
  // A wall is looked at against its normal.
  result->plane = plane;
  double dSide = 0.0;
  for (const PyPhoto* p : sources) {
    const ZuVector& X0 = p->p->GetPosAOR();
    dSide += plane.Dist(X0[1], X0[2], X0[3]);
  }
  if (dSide < 0.0) {
    ZuPlane& turned = result->plane;
    for (double* pd : {&turned.A(), &turned.B(), &turned.C(), &turned.D()}) *pd = -*pd;
  }
  ZuPlaneRaster& raster = result->raster;
  if (!ZuMakePlaneFrame(result->plane, &raster.m_toObject)) {
    throw py::value_error("the plane is not finite");
  }
  ZuRegion all;
  if (!region.is_none()) {
    const Rows rows = AsRows(region, 4, "region");
    all.Set(rows.pd[0], rows.pd[1], rows.pd[2], rows.pd[3]);
    all.Sort();
  }
  for (std::size_t i = 0; i < sources.size() && region.is_none(); ++i) {
    ZuRegion footprint;
    if (!ZuPhotoFootprint(*sources[i]->p, result->plane, raster.m_toObject, bFlip, &footprint)) {
      throw py::value_error("photo " + std::to_string(result->photos[i]) +
                            " sees beyond the plane; a region would be right");
    }
    all = i == 0 ? footprint : all.Union(footprint);
    all.Sort();
  }
  if (!raster.SetRegion(all, dPixel)) {
    throw py::value_error("pixel: the region would have no pixel, or more than a million in a row");
  }
  std::vector<std::unique_ptr<ZuPixelMap>> maps;
  ZuResampler resampler(raster.m_iWidth, raster.m_iHeight, eKernel);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    maps.push_back(std::make_unique<ZuPlaneToPhotoMap>(raster, *sources[i]->p, bFlip));
    if (!resampler.AddSource(&images[i], maps.back().get())) {
      throw py::value_error("pictures: other colours or bits than the ones before");
    }
  }
  std::vector<std::unique_ptr<Writing>> uses;
  for (const PyPhoto* p : sources) {
    const auto same = [p](const PyPhoto* other) { return other->pProject == p->pProject; };
    if (std::find_if(sources.begin(), sources.end(), same) ==
        std::find(sources.begin(), sources.end(), p)) {
      uses.push_back(std::make_unique<Writing>(p->pProject->gate));
    }
  }
  Operation operation(progress);
  ZuImage image;
  {
    const py::gil_scoped_release release;
    image = ResampleAll(&resampler, &operation);
  }
  operation.Finish();
  result->pixels = FromImage(image);
  result->used = resampler.GetUsed();
  return result;
}

struct PyUndistorted {
  py::object pixels;
  ZuPhoto photo;
};

std::unique_ptr<PyUndistorted> Undistort(const PyPhoto& photo, const py::object& pixels,
                                         bool bWhole, const std::string& strKernel, bool bFlip,
                                         const py::object& progress) {
  const eZuInterpolation eKernel = ToKernel(strKernel);
  const ZuImage image = ToImage(pixels, "pixels");
  auto result = std::make_unique<PyUndistorted>();
  const Writing writing(photo.pProject->gate);
  if (!ZuMakeUndistortedPhoto(*photo.p, bWhole ? eZuUndistortWhole : eZuUndistortSame, bFlip,
                              &result->photo)) {
    throw py::value_error("photo " + std::to_string(photo.p->GetId()) +
                          ": its camera is missing or not one to one over the image, or it has no "
                          "digital region");
  }
  const ZuRegion& region = result->photo.GetDigiRegion();
  const ZuPhotoToPhotoMap map(result->photo, *photo.p, bFlip);
  ZuResampler resampler(static_cast<int>(std::lround(std::fabs(region.Width()))) + 1,
                        static_cast<int>(std::lround(std::fabs(region.Height()))) + 1, eKernel);
  resampler.SetAveraging(false);
  if (!resampler.AddSource(&image, &map)) throw py::value_error("pixels: an empty picture");
  Operation operation(progress);
  ZuImage plain;
  {
    const py::gil_scoped_release release;
    plain = ResampleAll(&resampler, &operation);
  }
  operation.Finish();
  result->pixels = FromImage(plain);
  return result;
}

py::object FourOf(const ZuRegion& region) {
  const double ad[] = {region.Left(), region.Bottom(), region.Right(), region.Top()};
  return NewArrayOf({4}, ad);
}

void BindResampling(py::module_& m) {
  using namespace py::literals;
  using R = PyRectified;
  py::class_<R> rectified(m, "Rectified", "The picture of a plane.");
  AddColumns<R>(
      rectified,
      {{"pixels", [](const R& r) { return r.pixels; },
        "(rows, columns, channels), alpha last: 0 where no photo shows the plane."},
       {"pixel", [](const R& r) -> py::object { return py::float_(r.raster.m_dPixel); },
        "Size of a pixel, unit of the project."},
       {"region", [](const R& r) { return FourOf(r.raster.GetRegion()); },
        "Left, bottom, right, top in the plane, to the outer edges, (4,)."},
       {"grid",
        [](const R& r) {
          const ZuPlaneRaster& raster = r.raster;
          const double ad[] = {raster.m_dLeft + 0.5 * raster.m_dPixel,
                               raster.m_dTop - 0.5 * raster.m_dPixel, raster.m_dPixel};
          return NewArrayOf({3}, ad);
        },
        "x and y of the centre of the first pixel and the size of a pixel, as write_image takes "
        "it, (3,)."},
       {"to_object",
        [](const R& r) {
          return NewArrayOf({4, 4}, r.raster.m_toObject.GetData());
        },
        "Matrix from (x, y, z, 1), x and y in the plane, to object space, (4, 4)."},
       {"plane", [](const R& r) { return py::cast(r.plane); }, "Its normal towards the photos."},
       {"photo_ids", [](const R& r) { return NewIdsOf(r.photos); }, "Of the photos, (k,)."},
       {"shares",
        [](const R& r) {
          const double dAll = static_cast<double>(r.raster.m_iWidth) * r.raster.m_iHeight;
          return NumberBy(r.used, [dAll](std::int64_t n) { return static_cast<double>(n) / dAll; });
        },
        "Share of the pixels that each photo gave, (k,)."}});
  m.def("rectify", &Rectify, "photos"_a, "pictures"_a, "plane"_a, py::kw_only(), "pixel"_a,
        "region"_a = py::none(), "interpolation"_a = "cubic", "flip"_a = false,
        "progress"_a = py::none(),
        "The picture of a plane from one oriented photo and its picture, or lists of both.\n\n"
        "pictures: (rows, columns) or (rows, columns, channels) of uint8 or uint16; pixel: size of "
        "a pixel of the result in the unit of the project; region: left, bottom, right, top in the "
        "plane, else all that the photos show; interpolation: \"bilinear\", \"cubic\" or "
        "\"lanczos\". Of several photos each pixel takes the one that shows it best.");

  using U = PyUndistorted;
  py::class_<U> undistorted(m, "Undistorted", "A picture without distortion, and what fits it.");
  AddColumns<U>(undistorted,
                {{"pixels", [](const U& u) { return u.pixels; },
                  "(rows, columns, channels), alpha last: 0 where the photo shows nothing."},
                 {"camera", [](const U& u) { return py::cast(ZuCamera(u.photo.GetCamera())); },
                  "The camera of the picture, without distortion; its id is that of the photo's."},
                 {"digi_region", [](const U& u) { return FourOf(u.photo.GetDigiRegion()); },
                  "Left, bottom, right, top in pixels, (4,)."}});
  m.def("undistort", &Undistort, "photo"_a, "pixels"_a, py::kw_only(), "whole"_a = false,
        "interpolation"_a = "cubic", "flip"_a = false, "progress"_a = py::none(),
        "The picture of a photo without distortion.\n\nwhole: as large as all its pixels need, "
        "else of the same size.");
}

// --- Detection -----------------------------------------------------------------------------------

std::unique_ptr<PyPoints> ToPoints(const std::vector<ZuDetectedPoint>& found) {
  auto points = std::make_unique<PyPoints>();
  for (const ZuDetectedPoint& d : found) {
    auto* const p = new ZuPoint(d.m_uId, d.m_dX, d.m_dY, 0.0);
    p->m_dDX = d.m_dDX;
    p->m_dDY = d.m_dDY;
    points->list.Add(p);
  }
  return points;
}

void WarnOfDetection(const std::string& strText) {
  if (!strText.empty()) py::module_::import("zu._errors").attr("warn")(ToStr(strText));
}

ZuChessboard ToBoard(int iColumns, int iRows) {
  if (iColumns < 3 || iRows < 3 || iColumns > 1000 || iRows > 1000) {
    throw py::value_error("columns and rows: 3 to 1000 inner corners would be right");
  }
  return {iColumns, iRows};
}

std::unique_ptr<PyPoints> DetectBoard(const py::object& pixels, int iColumns, int iRows,
                                      double dSigmaFloor) {
  const ZuChessboard board = ToBoard(iColumns, iRows);
  const ZuImage image = ToImage(pixels, "pixels");
  ZuBoardDetection found;
  {
    const py::gil_scoped_release release;
    found = ZuDetectChessboard(image, board, dSigmaFloor);
  }
  WarnOfDetection(found.m_strText);
  return ToPoints(found.m_points);
}

std::unique_ptr<PyPoints> DetectCharuco(const py::object& pixels, int iColumns, int iRows,
                                        const std::string& strFamily, double dMarker,
                                        double dSigmaFloor) {
  const ZuChessboard board = ToBoard(iColumns, iRows);
  const ZuImage image = ToImage(pixels, "pixels");
  ZuBoardDetection found;
  {
    const py::gil_scoped_release release;
    found = ZuDetectCharuco(image, board, strFamily, dMarker, dSigmaFloor);
  }
  WarnOfDetection(found.m_strText);
  return ToPoints(found.m_points);
}

std::unique_ptr<PyPoints> DetectMarkers(const py::object& pixels, const std::string& strFamily,
                                        double dSigmaFloor) {
  const ZuImage image = ToImage(pixels, "pixels");
  std::vector<ZuMarker> markers;
  std::string strText;
  bool bKnown = false;
  {
    const py::gil_scoped_release release;
    bKnown = ZuDetectMarkers(image, strFamily, &markers, &strText, dSigmaFloor);
  }
  if (!bKnown) throw py::value_error("family: \"" + strFamily + "\"; see marker_families()");
  WarnOfDetection(strText);
  std::vector<ZuDetectedPoint> corners;
  for (const ZuMarker& marker : markers) {
    corners.insert(corners.end(), marker.m_corners.begin(), marker.m_corners.end());
  }
  return ToPoints(corners);
}

struct PyTargets {
  std::vector<ZuTarget> targets;
};

PyTargets DetectTargets(const py::object& pixels, bool bBright, double dLeast, double dMost,
                        double dContrast, double dSigmaFloor) {
  const ZuImage image = ToImage(pixels, "pixels");
  ZuTargetOptions options;
  options.m_bBright = bBright;
  options.m_dLeastDiameter = dLeast;
  options.m_dMostDiameter = dMost;
  options.m_dLeastContrast = dContrast;
  options.m_dSigmaFloor = dSigmaFloor;
  const py::gil_scoped_release release;
  return {ZuDetectTargets(image, options)};
}

// Returns how many got a number.
int NumberTargets(PyTargets& targets, const PyPhoto& photo, const py::object& points,
                  double dDiameter, double dReach) {
  const PointsArgument known(points, "points");
  ZuNumberingOptions options;
  options.m_dDiameter = dDiameter;
  options.m_dReach = dReach;
  const Writing writing(photo.pProject->gate);
  ZuNumbering numbering;
  {
    const py::gil_scoped_release release;
    numbering = ZuNumberTargets(*photo.p, known.List(), options, &targets.targets);
  }
  WarnOfDetection(numbering.m_strText);
  return numbering.m_iNumbered;
}

std::unique_ptr<PyPoints> NumberedPoints(const PyTargets& t) {
  std::vector<ZuDetectedPoint> numbered;
  for (const ZuTarget& target : t.targets) {
    if (target.m_uId != 0) numbered.push_back(target);
  }
  return ToPoints(numbered);
}

void BindDetection(py::module_& m) {
  using namespace py::literals;
  using T = PyTargets;
  py::class_<T> targets(m, "Targets",
                        "Circular targets of a picture, n of them, in pixels: whole numbers are "
                        "pixel centres, y counts down.");
  targets.def("__len__", [](const T& t) { return t.targets.size(); })
      .def("number", &NumberTargets, "photo"_a, "points"_a, py::kw_only(), "diameter"_a = 0.0,
           "reach"_a = 0.15,
           "Gives targets the ids of points where an approximately oriented photo shows them, and "
           "returns how many; none, and a warning, where nothing is certain. diameter: of the "
           "disks in object units, above 0: from the centre of the ellipse to that of the disk.");
  AddColumns<T>(
      targets,
      {{"ids",
        [](const T& t) { return IdsBy(t.targets, [](const ZuTarget& p) { return p.m_uId; }); },
        "0 without a number, (n,)."},
       {"xy",
        [](const T& t) {
          return NumbersBy(t.targets, {2},
                           [](const ZuTarget& p, double* pd) { pd[0] = p.m_dX, pd[1] = p.m_dY; });
        },
        "(n, 2)."},
       {"sd",
        [](const T& t) {
          return NumbersBy(t.targets, {2},
                           [](const ZuTarget& p, double* pd) { pd[0] = p.m_dDX, pd[1] = p.m_dDY; });
        },
        "(n, 2)."},
       {"axes",
        [](const T& t) {
          return NumbersBy(t.targets, {2},
                           [](const ZuTarget& p, double* pd) { pd[0] = p.m_dA, pd[1] = p.m_dB; });
        },
        "Longer and shorter half axis of the ellipse, (n, 2)."},
       {"angles",
        [](const T& t) {
          return NumberBy(t.targets, [](const ZuTarget& p) { return p.m_dAngle; });
        },
        "Of the longer one from x towards y (down), (n,) rad."},
       {"points", [](const T& t) -> py::object { return py::cast(NumberedPoints(t)); },
        "Those with a number, a PointList."}});

  m.def("detect_chessboard", &DetectBoard, "pixels"_a, "columns"_a, "rows"_a, py::kw_only(),
        "sigma_floor"_a = kZuSigmaFloor,
        "Inner corners of a chessboard of columns x rows of them in a picture, a PointList in "
        "pixels with standard deviations; empty, and a warning, where it is not whole.");
  m.def("detect_charuco", &DetectCharuco, "pixels"_a, "columns"_a, "rows"_a, "family"_a, "marker"_a,
        py::kw_only(), "sigma_floor"_a = kZuSigmaFloor,
        "The same of a board with markers in its bright squares; marker: their side over that of a "
        "square. The board need not be whole.");
  m.def("detect_markers", &DetectMarkers, "pixels"_a, "family"_a, py::kw_only(),
        "sigma_floor"_a = kZuSigmaFloor,
        "Corners of square markers, a PointList in pixels: ids 10 m + 1 to 10 m + 4 of marker m, "
        "clockwise from the upper left.");
  m.def("marker_families", &ZuMarkerFamilies, "Names of the families of markers.");
  m.def("detect_targets", &DetectTargets, "pixels"_a, py::kw_only(), "bright"_a = false,
        "least_diameter"_a = 8.0, "most_diameter"_a = 200.0, "least_contrast"_a = 0.06,
        "sigma_floor"_a = kZuSigmaFloor,
        "Circular targets, dark on bright ground or bright ones on dark, Targets in rows from the "
        "top.");
  m.def(
      "chessboard_points",
      [](int iColumns, int iRows, double dSquare) {
        auto points = std::make_unique<PyPoints>();
        ToBoard(iColumns, iRows).AddPoints(dSquare, &points->list);
        return points;
      },
      "columns"_a, "rows"_a, "square"_a,
      "The inner corners of a board with squares of this side, a PointList with ids from 1.");
}

// --- A photo from a picture ----------------------------------------------------------------------

// Cameras of the same numbers are one.
unsigned CameraFor(const ZuProject& project, const ZuPhotoStart& start) {
  unsigned uLast = 0;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuCamera& camera = p->GetCamera();
    if (camera.m_dC == start.m_dConstant && camera.GetName() == String(start.m_strCamera.c_str()) &&
        p->GetDigiRegion().Width() + 1.0 == start.m_iWidth &&
        p->GetDigiRegion().Height() + 1.0 == start.m_iHeight) {
      return camera.GetId();
    }
    uLast = std::max(uLast, camera.GetId());
  }
  return uLast + 1;
}

py::object AddPhoto(const py::object& self, const py::object& path, const py::object& points,
                    double dPixelSize, double dFocalLength, const py::object& name) {
  PyProject& project = self.cast<PyProject&>();
  const ZuImageInfo info = ReadInfo(path);
  const String strName =
      ToString(name.is_none() ? py::module_::import("os.path").attr("basename")(path) : name);
  const Writing writing(project.gate);
  ZuPhotoStart start = ZuStartPhoto(info, dPixelSize, dFocalLength);
  start.m_uCamera = CameraFor(project.project, start);
  unsigned uId = 0;
  for (const ZuPhoto* p = project.project.PhotoList().First(); p != nullptr; p = p->Next()) {
    uId = std::max(uId, p->GetId());
  }
  ZuPhoto photo(++uId, strName.chars());
  start.SetUp(&photo);
  project.project.PhotoList().Add(photo);
  if (!points.is_none()) {
    const PointsArgument measured(points, "points");
    project.project.Measurements(uId) = measured.List();
  }
  WarnOfDetection(start.m_strNote);
  return py::cast(PyPhoto{self, &project, project.project.PhotoList().Find(uId)});
}

}  // namespace

void BindPictures(py::module_& m) {
  using namespace py::literals;
  m.def("read_image", &ReadPixels, "path"_a,
        "The pixels of a JPEG, PNG or TIFF file as stored, (rows, columns) or (rows, columns, "
        "channels) of uint8 or uint16; raises ReadError.");
  m.def(
      "image_info", [](const py::object& path) { return InfoOf(ReadInfo(path)); }, "path"_a,
      "Size, form and what the camera noted in a picture file, a dict.");
  m.def("write_image", &WritePixels, "path"_a, "pixels"_a, py::kw_only(), "grid"_a = py::none(),
        "epsg"_a = 0, "quality"_a = 92,
        "Writes .png, .jpg or .tif.\n\ngrid: of a map, x and y of the centre of the first pixel "
        "and the size of a pixel, kept in TIFF files; epsg: code of the projected system; quality: "
        "of a JPEG, 1 to 100.");
  m.def("add_photo", &AddPhoto, "project"_a, "path"_a, "points"_a = py::none(), py::kw_only(),
        "pixel_size"_a = 0.0, "focal_length"_a = 0.0, "name"_a = py::none(),
        "Adds the photo of a picture file to a project, with a camera as far as the file tells "
        "it, which calibrations start from.\n\npoints: measured pixels; pixel_size, focal_length "
        "[mm]: stand over the file's.");
  BindResampling(m);
  BindDetection(m);
}
