// zu camera: the cameras of a file, their distortion forward and back, drawn, and as lines of the
// adjustment program.
#include <cmath>
#include <locale>
#include <memory>
#include <sstream>

#include "camera_plot.h"
#include "commands.h"
#include "point_input.h"
#include "project_input.h"
#include "report_output.h"
#include "text_table.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/photo_view.h"
#include "zu/points/point.h"

namespace cli {

namespace {

const char* ModeText(int iMode) {
  switch (iMode) {
    case eCameraModeZuvo:
      return "radial, a1 a2";
    case eCameraModeViva:
      return "total station";
    case eCameraModeCap:
      return "CAP, a1 a2 a3 b1 b2 c1 c2";
    case eCameraModePinhole:
      return "pinhole";
    default:
      return "unknown";
  }
}

const ZuCamera& FindCamera(const ZuCameraList& cameras, unsigned uId, const std::string& strPath) {
  const ZuCamera* pCamera = cameras.Find(uId);
  if (pCamera != nullptr) return *pCamera;
  std::string strIds;
  for (const ZuCamera* p = cameras.First(); p != nullptr; p = p->Next()) {
    strIds += (strIds.empty() ? "" : ", ") + std::to_string(p->GetId());
  }
  throw CommandError(kBadInput,
                     strPath + ": no camera " + std::to_string(uId) + "; the file has " + strIds);
}

// Names, values and units of the parameters, in the order of the file form.
struct Parameter {
  const char* szKey;
  double ZuCamera::*pValue;
  const char* szUnit;
};
constexpr Parameter kParameters[] = {
    {"c", &ZuCamera::m_dC, "mm"},        {"xh", &ZuCamera::m_dXh, "mm"},
    {"yh", &ZuCamera::m_dYh, "mm"},      {"r0", &ZuCamera::m_dR0, "mm"},
    {"rm", &ZuCamera::m_dRMax, "mm"},    {"a1", &ZuCamera::m_dA1, "mm^-2"},
    {"a2", &ZuCamera::m_dA2, "mm^-4"},   {"a3", &ZuCamera::m_dA3, "mm^-6"},
    {"b1", &ZuCamera::m_dB1, ""},        {"b2", &ZuCamera::m_dB2, ""},
    {"c1", &ZuCamera::m_dC1, "mm^-1"},   {"c2", &ZuCamera::m_dC2, "mm^-1"},
    {"cv", &ZuCamera::m_dCViva, "mm"},   {"xhv", &ZuCamera::m_dXhViva, "mm"},
    {"yhv", &ZuCamera::m_dYhViva, "mm"},
};

Json CameraJson(const ZuCamera& camera) {
  Json json;
  json["id"] = camera.GetId();
  json["name"] = camera.GetName().chars();
  json["mode"] = camera.m_iMode;
  json["model"] = ModeText(camera.m_iMode);
  for (const Parameter& parameter : kParameters) json[parameter.szKey] = camera.*parameter.pValue;
  json["valid_radius"] = camera.GetValidRadius();
  json["valid"] = camera.IsValid();
  return json;
}

void PrintCamera(const ZuCamera& camera, std::ostream& stream) {
  stream << "Camera " << camera.GetId() << " \"" << camera.GetName().chars() << "\", model "
         << camera.m_iMode << " (" << ModeText(camera.m_iMode) << ")\n";
  TextTable table;
  table.AddColumn("parameter", TextTable::eLeft);
  table.AddColumn("value");
  table.AddColumn("unit", TextTable::eLeft);
  for (const Parameter& parameter : kParameters) {
    const double dValue = camera.*parameter.pValue;
    if (dValue != 0.0) table.AddRow({parameter.szKey, Shortest(dValue), parameter.szUnit});
  }
  table.AddRow({"one to one up to r", Fixed(camera.GetValidRadius(), 4), "mm"});
  table.Write(stream);
  if (!camera.IsValid()) stream << "not usable: id or camera constant is 0\n";
}

}  // namespace

Runner DefineCameraInfo(Options& options) {
  auto pPath = std::make_shared<std::string>();
  options.Positional("FILE", pPath.get(), "camera file, either form");
  return [pPath](Context& context) {
    const ZuCameraList cameras = ReadCameras(*pPath, context);
    context.Root()["cameras"] = Json::array();
    for (const ZuCamera* p = cameras.First(); p != nullptr; p = p->Next()) {
      if (p != cameras.First()) context.Text() << '\n';
      PrintCamera(*p, context.Text());
      context.Root()["cameras"].push_back(CameraJson(*p));
    }
    return kGood;
  };
}

namespace {

struct CorrectValues {
  std::string strPath, strOut;
  unsigned uId = 0;
  bool bInverse = false, bTable = false, bLibrary = false;
};

struct AdjustedPoint {
  unsigned uId;
  double x, y;
  bool bGood;
  const char* szWhy;
};

// The quick correction, and its inverse by table.
const char* AdjustByLibrary(const ZuCamera& camera, bool bInverse, const ZuPoint& point, double* x,
                            double* y) {
  if (bInverse) {
    const bool bGood = camera.InvAdjust(x, y) &&
                       (camera.m_iMode == eCameraModePinhole || ZuIsInCameraDomain(camera, *x, *y));
    return bGood ? "" : "outside the inverse table";
  }
  if (!camera.Adjust(x, y)) return "no forward model";
  if (!ZuIsInCameraDomain(camera, point.m_dX, point.m_dY)) {
    return "outside the image that the camera is meant for";
  }
  return "";
}

const char* AdjustExactly(const ZuCamera& camera, bool bInverse, double* x, double* y) {
  const eCameraInverse eStatus = bInverse ? camera.InvAdjustExact(x, y) : camera.AdjustExact(x, y);
  if (eStatus != eCameraInverseOk) return GetCameraInverseText(eStatus);
  if (bInverse) return "";
  double xBack = *x, yBack = *y;
  return camera.InvAdjustExact(&xBack, &yBack) == eCameraInverseOk
             ? ""
             : "outside the image that the camera is meant for";
}

AdjustedPoint AdjustOne(const ZuCamera& camera, const CorrectValues& values, const ZuPoint& point) {
  AdjustedPoint result{point.GetId(), point.m_dX, point.m_dY, true, ""};
  const bool bLibrary = values.bLibrary || (values.bInverse && values.bTable);
  result.szWhy = bLibrary ? AdjustByLibrary(camera, values.bInverse, point, &result.x, &result.y)
                          : AdjustExactly(camera, values.bInverse, &result.x, &result.y);
  result.bGood = *result.szWhy == 0;
  return result;
}

ExitCode RunAdjust(const CorrectValues& values, Context& context) {
  const ZuCameraList cameras = ReadCameras(values.strPath, context);
  const ZuCamera& camera = FindCamera(cameras, values.uId, values.strPath);
  int iRefused = 0;
  std::string strLines;
  Json& json = context.Root();
  json["camera"] = camera.GetId();
  json["inverse"] = values.bInverse;
  json["points"] = Json::array();
  ZuPointList points;
  ReadPoints("-", "id,x,y", context, &points);
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    const AdjustedPoint result = AdjustOne(camera, values, *p);
    Json entry;
    entry["id"] = result.uId;
    entry["x"] = result.bGood ? Json(result.x) : Json();
    entry["y"] = result.bGood ? Json(result.y) : Json();
    if (!result.bGood) entry["reason"] = result.szWhy;
    json["points"].push_back(entry);
    if (result.bGood) {
      strLines +=
          std::to_string(result.uId) + " " + Shortest(result.x) + " " + Shortest(result.y) + "\n";
    } else {
      context.Warn("point " + std::to_string(result.uId) + ": " + result.szWhy);
      ++iRefused;
    }
  }
  json["refused"] = iRefused;
  context.Text() << strLines;
  if (!values.strOut.empty()) context.NewOutput(values.strOut).Stream() << strLines;
  return iRefused > 0 ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefineCameraAdjust(Options& options) {
  auto pValues = std::make_shared<CorrectValues>();
  options.Positional("FILE", &pValues->strPath, "camera file, either form");
  options.Option("--id", "N", &pValues->uId, "the camera");
  options.Required();
  options.Flag("--inverse", &pValues->bInverse, "from corrected to measured coordinates");
  options.Flag("--table", &pValues->bTable,
               "with --inverse: by the interpolated table that the library uses in bulk");
  AddLibraryOption(options, &pValues->bLibrary);
  options.Output("-o,--output", "FILE", &pValues->strOut, "write the points to a file, too");
  return [pValues](Context& context) { return RunAdjust(*pValues, context); };
}

namespace {

struct PlotValues {
  std::string strPath, strOut;
  unsigned uId = 0, uPhoto = 0;
  double dWidth = 0.0, dHeight = 0.0;
  bool bId = false, bPhoto = false, bWidth = false, bHeight = false;
};

void CheckSide(const char* szOption, double dSide) {
  if (dSide > 0.0 && std::isfinite(dSide)) return;
  throw CommandError(kUsage, std::string(szOption) + ": " + Shortest(dSide) +
                                 " is no length; mm above 0 would be right");
}

ZuCamera CameraOfFile(const PlotValues& values, Context& context, ImageExtent* pImage) {
  const ZuCameraList cameras = ReadCameras(values.strPath, context);
  const ZuCamera& camera = FindCamera(cameras, values.uId, values.strPath);
  *pImage = CameraExtent(camera);
  return camera;
}

ZuCamera CameraOfPhoto(const PlotValues& values, Context& context, ImageExtent* pImage) {
  const InputFile file(values.strPath, kProjectFile);
  const auto pProject = OpenProject(file, false);
  const ZuPhoto& photo = FindPhoto(*pProject, values.uPhoto, file);
  CheckNothingLacks(*pProject, photo, eZuNeedCamera | eZuNeedPixels, file);
  WarnOf(*pProject, file, context);
  *pImage = PhotoExtent(photo);
  return photo.GetCamera();
}

ExitCode RunPlot(const PlotValues& values, Context& context) {
  if (values.bId == values.bPhoto) {
    throw CommandError(
        kUsage,
        "--id N tells the camera of a camera file, --photo N the photo of a project; "
        "one of the two would be right");
  }
  if (values.bWidth) CheckSide("--width", values.dWidth);
  if (values.bHeight) CheckSide("--height", values.dHeight);
  ImageExtent image{};
  const ZuCamera camera = values.bPhoto ? CameraOfPhoto(values, context, &image)
                                        : CameraOfFile(values, context, &image);
  double x = camera.m_dXh, y = camera.m_dYh;
  if (!camera.Adjust(&x, &y)) {
    throw CommandError(kUndetermined, NameInMessages(values.strPath) + ": camera " +
                                          std::to_string(camera.GetId()) +
                                          " has no forward model to draw (id 0, pinhole or an "
                                          "unknown mode); modes 0, 1 and 2 have one");
  }
  if (values.bWidth) {
    image.dLeft = -0.5 * values.dWidth;
    image.dRight = 0.5 * values.dWidth;
  }
  if (values.bHeight) {
    image.dBottom = -0.5 * values.dHeight;
    image.dTop = 0.5 * values.dHeight;
  }
  if (values.bWidth && values.bHeight) image.szWhat = "image";
  const double dWidth = image.dRight - image.dLeft, dHeight = image.dTop - image.dBottom;
  const Drawing drawing = CameraPlot(camera, image);
  context.NewOutput(values.strOut).Stream() << SvgFileOf(drawing);
  if (context.WantsReport()) context.Report().drawings = {drawing};
  context.Text() << "Distortion of camera " << camera.GetId() << " over " << Fixed(dWidth, 3)
                 << " x " << Fixed(dHeight, 3) << " mm (" << image.szWhat << ") drawn to "
                 << values.strOut << '\n';
  context.Root()["file"] = values.strOut;
  context.Root()["camera"] = camera.GetId();
  context.Root()["image"] = {dWidth, dHeight};
  return kGood;
}

}  // namespace

Runner DefineCameraPlot(Options& options) {
  auto pValues = std::make_shared<PlotValues>();
  options.Positional("FILE", &pValues->strPath, "camera file, either form, or a project");
  options.Option("--id", "N", &pValues->uId, "the camera of a camera file");
  options.Option("--photo", "N", &pValues->uPhoto,
                 "the photo of a project, whose image is drawn to its borders");
  options.Option("--width", "MM", &pValues->dWidth,
                 "width of the image around the axis; a camera file does not tell it");
  options.Above(0.0);
  options.Option("--height", "MM", &pValues->dHeight, "height of the image");
  options.Above(0.0);
  options.Output("-o,--output", "FILE", &pValues->strOut, "the drawing, SVG");
  options.Required();
  return [pValues, options](Context& context) {
    pValues->bId = options.Given("--id");
    pValues->bPhoto = options.Given("--photo");
    pValues->bWidth = options.Given("--width");
    pValues->bHeight = options.Given("--height");
    return RunPlot(*pValues, context);
  };
}

Runner DefineCameraGentri(Options& options) {
  struct Values {
    std::string strPath, strOut;
  };
  auto pValues = std::make_shared<Values>();
  options.Positional("FILE", &pValues->strPath, "camera file, either form");
  options.Output("-o,--output", "FILE", &pValues->strOut, "write the lines to a file, too");
  return [pValues](Context& context) {
    const ZuCameraList cameras = ReadCameras(pValues->strPath, context);
    std::ostringstream lines;
    lines.imbue(std::locale::classic());
    cameras.WriteFile(lines, true);
    context.Text() << lines.str();
    if (!pValues->strOut.empty()) context.NewOutput(pValues->strOut).Stream() << lines.str();
    context.Root()["cameras"] = Json::array();
    for (const ZuCamera* p = cameras.First(); p != nullptr; p = p->Next()) {
      std::ostringstream line;
      line.imbue(std::locale::classic());
      p->WriteGentriFormat(line);
      context.Root()["cameras"].push_back(Json{{"id", p->GetId()}, {"line", line.str()}});
    }
    return kGood;
  };
}

}  // namespace cli
