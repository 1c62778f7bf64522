// zu photo: the photos of a project, and points along the chain of image coordinate systems.
#include <map>
#include <memory>

#include "commands.h"
#include "point_input.h"
#include "project.h"
#include "text_table.h"

namespace cli {

namespace {

const std::map<std::string, eConvertBikoMode>& Modes() {
  static const std::map<std::string, eConvertBikoMode> modes = {
      {"digi-pre", eDigiToPre},
      {"digi-biko", eDigiToBiko},
      {"pre-biko", ePreToBiko},
      {"digi-adjusted", eDigiToAdjusted},
      {"biko-adjusted", eBikoToAdjusted},
      {"biko-digi", eBikoToDigi},
      {"pre-digi", ePreToDigi},
      {"biko-pre", eBikoToPre},
      {"adjusted-biko", eAdjustedToBiko},
      {"adjusted-digi", eAdjustedToDigi},
      {"object-adjusted", eObjectToAdjusted},
      {"object-biko", eObjectToBiko},
      {"object-digi", eObjectToDigi}};
  return modes;
}

struct Angles {
  double a = 0.0, b = 0.0, c = 0.0;
};

Angles AnglesOf(const ZuPhoto& photo) {
  Angles angles;
  photo.GetRotAOR(&angles.a, &angles.b, &angles.c);
  return angles;
}

Json RegionJson(const ZuRegion& region) {
  return {region.Left(), region.Bottom(), region.Right(), region.Top()};
}

Json PhotoJson(const ZuPhoto& photo, int iMeasured) {
  Json json;
  json["id"] = photo.GetId();
  json["name"] = photo.GetName().chars();
  json["comment"] = photo.GetComment().chars();
  json["digital"] = photo.IsDigital();
  json["state"] = photo.GetActiveFlag();
  json["oriented"] = photo.HasAOR();
  json["camera"] = photo.GetCamera().GetId();
  json["reseau"] = photo.GetReseauData().GetName().chars();
  json["digital_region"] = RegionJson(photo.GetDigiRegion());
  json["biko_region"] = RegionJson(photo.GetBikoRegion());
  json["pixel_size"] = photo.GetPixelSize();
  json["transformation"] = photo.GetReseauTrafoName();
  const ZuVector& X0 = photo.GetPosAOR();
  json["position"] = {X0[1], X0[2], X0[3]};
  const Angles angles = AnglesOf(photo);
  json["angles"] = {{"x", angles.a}, {"y", angles.b}, {"z", angles.c}};
  json["measured"] = iMeasured;
  json["rectifications"] = Json::array();
  for (const ZuZuspTrafo* p = photo.FirstZuspTrafo(); p != nullptr; p = p->Next()) {
    json["rectifications"].push_back(
        Json{{"id", p->GetId()}, {"name", p->GetName().chars()}, {"active", p->IsActive()}});
  }
  return json;
}

void PrintPhoto(const ZuPhoto& photo, int iMeasured, std::ostream& stream) {
  stream << "Photo " << ZuPhotoGuiString(&photo, false).chars();
  if (!photo.GetComment().empty()) stream << " (" << photo.GetComment().chars() << ")";
  stream << "\n  " << (photo.IsDigital() ? "digital" : "analog") << ", "
         << (photo.IsActive()   ? "active"
             : photo.IsExtern() ? "external"
                                : "inactive")
         << ", " << (photo.HasAOR() ? "oriented" : "not oriented") << ", camera "
         << photo.GetCamera().GetId() << " \"" << photo.GetCamera().GetName().chars()
         << "\", reseau \"" << photo.GetReseauData().GetName().chars() << "\" "
         << photo.GetReseauData().GetId() << '\n';
  const ZuRegion& digi = photo.GetDigiRegion();
  const ZuRegion& biko = photo.GetBikoRegion();
  stream << "  image " << Shortest(digi.Width() + 1.0) << " x " << Shortest(digi.Height() + 1.0)
         << " pixels, " << Fixed(std::fabs(biko.Width()), 4) << " x "
         << Fixed(std::fabs(biko.Height()), 4) << " mm between the outer pixels, pixel "
         << Fixed(photo.GetPixelSize() * 1000.0, 3) << " um\n";
  if (photo.HasAOR()) {
    const ZuVector& X0 = photo.GetPosAOR();
    const Angles angles = AnglesOf(photo);
    stream << "  position " << Fixed(X0[1], 4) << ' ' << Fixed(X0[2], 4) << ' ' << Fixed(X0[3], 4)
           << "\n  angles, R = Ry(b) Rx(a) Rz(c): about X a " << Angle(angles.a)
           << "\n                                 about Y b " << Angle(angles.b)
           << "\n                                 about Z c " << Angle(angles.c) << '\n';
  }
  stream << "  " << iMeasured << " measured points, " << photo.CountZuspTrafo()
         << " rectifications\n";
}

ExitCode RunInfo(const std::string& strPath, Context& context) {
  Project project(strPath, context);
  Json& json = context.Root();
  json["photos"] = Json::array();
  for (ZuPhoto* p = project.Photos().First(); p != nullptr; p = p->Next()) {
    const int iMeasured = project.Pixels(p->GetId()).Count();
    PrintPhoto(*p, iMeasured, context.Text());
    json["photos"].push_back(PhotoJson(*p, iMeasured));
  }
  json["orthophotos"] = Json::array();
  for (ZuOrthoPhoto* p = project.OrthoPhotos().First(); p != nullptr; p = p->Next()) {
    context.Text() << "Orthophoto " << ZuPhotoGuiString(p, false).chars() << ", "
                   << p->ZuspPlaneList().Count() << " planes, " << Shortest(p->GetPixelSize())
                   << " object units a pixel\n";
    json["orthophotos"].push_back(Json{{"id", p->GetId()},
                                       {"name", p->GetName().chars()},
                                       {"planes", p->ZuspPlaneList().Count()},
                                       {"pixel_size", p->GetPixelSize()}});
  }
  return kGood;
}

struct ConvertValues {
  std::string strPath, strMode, strOut;
  unsigned uPhoto = 0;
  bool bFlip = false;
};

bool NeedsOrientation(eConvertBikoMode eMode) { return eMode >= eObjectToAdjusted; }

ExitCode RunConvert(const ConvertValues& values, Context& context) {
  const auto mode = Modes().find(values.strMode);
  const bool bObject = NeedsOrientation(mode->second);
  Project project(values.strPath, context);
  const ZuPhoto& photo = project.Photo(values.uPhoto);
  if (bObject && !photo.HasAOR()) {
    throw CommandError(kUndetermined, values.strPath + ": photo " + std::to_string(values.uPhoto) +
                                          " has no exterior orientation; ORIENTED 1 with AORM and "
                                          "AORV would be right");
  }
  ZuPointList points;
  ReadPoints("-", bObject ? "id,x,y,z" : "id,x,y", context, &points);

  // The photo's own chain; with a turned y the prepared conversion, which knows of it.
  const ZuBikoTransform flipped(&photo, mode->second, true);
  std::string strLines;
  int iRefused = 0;
  Json& json = context.Root();
  json["photo"] = photo.GetId();
  json["mode"] = values.strMode;
  json["points"] = Json::array();
  for (ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    const bool bGood = values.bFlip ? flipped.Transform(p) : photo.ConvertBiko(p, mode->second);
    if (!bGood) {
      context.Warn("point " + std::to_string(p->GetId()) +
                   ": outside the image, or of the camera's inverse");
      ++iRefused;
    } else {
      strLines +=
          std::to_string(p->GetId()) + ' ' + Shortest(p->m_dX) + ' ' + Shortest(p->m_dY) + '\n';
    }
    json["points"].push_back(Json{{"id", p->GetId()},
                                  {"x", bGood ? Json(p->m_dX) : Json()},
                                  {"y", bGood ? Json(p->m_dY) : Json()}});
  }
  json["refused"] = iRefused;
  context.Text() << strLines;
  if (!values.strOut.empty()) context.NewOutput(values.strOut).Stream() << strLines;
  return iRefused > 0 ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefinePhotoInfo(Options& options) {
  auto pPath = std::make_shared<std::string>();
  options.Positional("PROJECT", pPath.get(), "project file");
  return [pPath](Context& context) { return RunInfo(*pPath, context); };
}

Runner DefinePhotoConvert(Options& options) {
  auto pValues = std::make_shared<ConvertValues>();
  options.Positional("PROJECT", &pValues->strPath, "project file; points come on standard input");
  options.Option("--photo", "N", &pValues->uPhoto, "the photo");
  options.Required();
  options.Choice("--mode",
                 {"digi-pre", "digi-biko", "pre-biko", "digi-adjusted", "biko-adjusted",
                  "biko-digi", "pre-digi", "biko-pre", "adjusted-biko", "adjusted-digi",
                  "object-adjusted", "object-biko", "object-digi"},
                 &pValues->strMode,
                 "from and to: digi [pixels], pre, biko [mm], adjusted [mm], object");
  options.Required();
  options.Flag("--flip", &pValues->bFlip,
               "y of the pixels counts the other way than the photo's transformations take it");
  options.Option("-o,--output", "FILE", &pValues->strOut, "write the points to a file, too");
  return [pValues](Context& context) { return RunConvert(*pValues, context); };
}

}  // namespace cli
