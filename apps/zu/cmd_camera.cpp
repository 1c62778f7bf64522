#include <iostream>
#include <locale>
#include <memory>
#include <sstream>

#include "camera_plot.h"
#include "commands.h"
#include "text_table.h"
#include "zu/foundation/file_name.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/detect_files.h"
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

ZuCameraList ReadCameras(const std::string& strPath) {
  const ZuDetectZuvoFiles file(strPath.c_str());
  if (!file.IsType(eZuvoFileCamera) && !file.IsType(eZuvoFileSimpleCamera)) {
    if (!ZuExistFile(strPath.c_str())) {
      throw CommandError(kBadInput, strPath + ": no such file; a camera file is needed");
    }
    throw CommandError(kBadInput,
                       strPath + ": " + GetZuvoFileText(file.GetType()) +
                           "; a camera file with blocks CAMERA { ID 1 C ... } or\n{ id c "
                           "xh yh a1 a2 r0 \"name\" } would be right");
  }
  ZuCameraList cameras(strPath.c_str());
  if (cameras.GetReadErrorCount() > 0) {
    throw CommandError(kBadInput, strPath + ":" + std::to_string(cameras.GetReadErrorLine()) +
                                      ": " + cameras.GetReadErrorText() +
                                      "; numbers, \"names\" and closed blocks would be right");
  }
  if (cameras.IsEmpty()) {
    throw CommandError(kBadInput, strPath +
                                      ": no camera in the file; CAMERA { ID 1 C ... } or { id "
                                      "c xh yh a1 a2 r0 \"name\" } would be right");
  }
  return cameras;
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
    const ZuCameraList cameras = ReadCameras(*pPath);
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

struct AdjustValues {
  std::string strPath, strOut;
  unsigned uId = 0;
  bool bInverse = false, bTable = false;
};

struct AdjustedPoint {
  unsigned uId;
  double x, y;
  bool bGood;
  const char* szWhy;
};

AdjustedPoint AdjustOne(const ZuCamera& camera, const AdjustValues& values, const ZuPoint& point) {
  AdjustedPoint result{point.GetId(), point.m_dX, point.m_dY, true, ""};
  if (!values.bInverse) {
    result.bGood = camera.Adjust(&result.x, &result.y);
    result.szWhy = "no forward model";
  } else if (values.bTable) {
    result.bGood = camera.InvAdjust(&result.x, &result.y);
    result.szWhy = "outside the inverse table";
  } else {
    const eCameraInverse eStatus = camera.InvAdjustExact(&result.x, &result.y);
    result.bGood = eStatus == eCameraInverseOk;
    result.szWhy = GetCameraInverseText(eStatus);
  }
  return result;
}

std::vector<ZuPoint> ReadStandardInput() {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
  const TZuFormatTable<eZuPointRWMask> table(kColumns);
  std::vector<ZuPoint> points;
  std::string strLine;
  for (int iLine = 1; std::getline(std::cin, strLine); ++iLine) {
    const size_t first = strLine.find_first_not_of(" \t\r");
    if (first == std::string::npos || strLine[first] == '#') continue;
    ZuPoint point;
    if (point.Read(strLine.c_str(), table) < 3 || point.GetId() == 0) {
      throw CommandError(kBadInput, "standard input:" + std::to_string(iLine) + ": \"" +
                                        strLine.substr(0, 60) +
                                        "\" is no point; id x y in mm would be right");
    }
    points.push_back(point);
  }
  if (points.empty()) {
    throw CommandError(kBadInput, "standard input: no point; lines of id x y in mm would be right");
  }
  return points;
}

ExitCode RunAdjust(const AdjustValues& values, Context& context) {
  const ZuCameraList cameras = ReadCameras(values.strPath);
  const ZuCamera& camera = FindCamera(cameras, values.uId, values.strPath);
  int iRefused = 0;
  std::string strLines;
  Json& json = context.Root();
  json["camera"] = camera.GetId();
  json["inverse"] = values.bInverse;
  json["points"] = Json::array();
  for (const ZuPoint& point : ReadStandardInput()) {
    const AdjustedPoint result = AdjustOne(camera, values, point);
    Json entry;
    entry["id"] = result.uId;
    entry["x"] = result.bGood ? Json(result.x) : Json();
    entry["y"] = result.bGood ? Json(result.y) : Json();
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
  auto pValues = std::make_shared<AdjustValues>();
  options.Positional("FILE", &pValues->strPath, "camera file, either form");
  options.Option("--id", "N", &pValues->uId, "the camera");
  options.Required();
  options.Flag("--inverse", &pValues->bInverse, "from corrected to measured coordinates");
  options.Flag("--table", &pValues->bTable,
               "with --inverse: by the interpolated table that the library uses in bulk");
  options.Option("-o,--output", "FILE", &pValues->strOut, "write the points to a file, too");
  return [pValues](Context& context) { return RunAdjust(*pValues, context); };
}

namespace {

struct PlotValues {
  std::string strPath, strOut;
  unsigned uId = 0;
  double dWidth = 0.0, dHeight = 0.0;
};

ExitCode RunPlot(const PlotValues& values, Context& context) {
  const ZuCameraList cameras = ReadCameras(values.strPath);
  const ZuCamera& camera = FindCamera(cameras, values.uId, values.strPath);
  double x = camera.m_dXh, y = camera.m_dYh;
  if (!camera.Adjust(&x, &y)) {
    throw CommandError(kUndetermined, values.strPath + ": camera " + std::to_string(values.uId) +
                                          " has no forward model to draw (id 0, pinhole or an "
                                          "unknown mode); modes 0, 1 and 2 have one");
  }
  ImageSize image = DefaultImageSize(camera);
  if (values.dWidth > 0.0) image.dHalfWidth = 0.5 * values.dWidth;
  if (values.dHeight > 0.0) image.dHalfHeight = 0.5 * values.dHeight;
  context.NewOutput(values.strOut).Stream() << CameraPlot(camera, image);
  context.Text() << "Distortion of camera " << camera.GetId() << " over "
                 << Shortest(2.0 * image.dHalfWidth) << " x " << Shortest(2.0 * image.dHalfHeight)
                 << " mm drawn to " << values.strOut << '\n';
  context.Root()["file"] = values.strOut;
  context.Root()["camera"] = camera.GetId();
  context.Root()["image"] = {2.0 * image.dHalfWidth, 2.0 * image.dHalfHeight};
  return kGood;
}

}  // namespace

Runner DefineCameraPlot(Options& options) {
  auto pValues = std::make_shared<PlotValues>();
  options.Positional("FILE", &pValues->strPath, "camera file, either form");
  options.Option("--id", "N", &pValues->uId, "the camera");
  options.Required();
  options.Option("--width", "MM", &pValues->dWidth, "width of the image; twice the camera's RM");
  options.Option("--height", "MM", &pValues->dHeight, "height of the image; twice the camera's RM");
  options.Option("-o,--output", "FILE", &pValues->strOut, "the drawing, SVG");
  options.Required();
  return [pValues](Context& context) { return RunPlot(*pValues, context); };
}

Runner DefineCameraGentri(Options& options) {
  struct Values {
    std::string strPath, strOut;
  };
  auto pValues = std::make_shared<Values>();
  options.Positional("FILE", &pValues->strPath, "camera file, either form");
  options.Option("-o,--output", "FILE", &pValues->strOut, "write the lines to a file, too");
  return [pValues](Context& context) {
    const ZuCameraList cameras = ReadCameras(pValues->strPath);
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
