// zu photo convert: points along the chain of image coordinate systems.
#include <cmath>
#include <map>
#include <memory>

#include "commands.h"
#include "point_input.h"
#include "project_input.h"
#include "text_table.h"
#include "zu/photo/photo_view.h"

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

struct ConvertValues {
  std::string strPath, strMode, strOut;
  unsigned uPhoto = 0;
  bool bFlip = false, bLibrary = false, bPartial = false;
};

// A mode is one step or several along digi, pre, biko, adjusted, object.
struct Chain {
  eConvertBikoMode eMode;
  bool bFromDigi, bToDigi, bFromObject, bCamera;

  explicit Chain(const std::string& strMode)
      : eMode(Modes().at(strMode)),
        bFromDigi(strMode.rfind("digi-", 0) == 0),
        bToDigi(strMode.size() > 5 && strMode.compare(strMode.size() - 5, 5, "-digi") == 0),
        bFromObject(strMode.rfind("object-", 0) == 0),
        bCamera(bFromObject || strMode.find("adjusted") != std::string::npos) {}

  unsigned Needs() const {
    const bool bPixels = eMode != eBikoToAdjusted && eMode != eAdjustedToBiko &&
                         eMode != eObjectToAdjusted && eMode != eObjectToBiko;
    return (bPixels ? eZuNeedPixels : 0U) | (bCamera ? eZuNeedCamera : 0U) |
           (bFromObject ? eZuNeedOrientation : 0U);
  }
  // Pre-transformations are told for pixels as the photo counts them.
  bool CanTurn() const { return (bFromDigi && eMode != eDigiToPre) || bToDigi; }
};

// The camera's correction, or its inverse, can be trusted at the point; a chain goes on without.
bool IsInCamera(const ZuPhoto& photo, const Chain& chain, const ZuPoint& point) {
  const ZuCamera& camera = photo.GetCamera();
  ZuPoint p(point);
  if (chain.eMode == eAdjustedToBiko || chain.eMode == eAdjustedToDigi) {
    return camera.InvAdjust(&p);
  }
  if (camera.m_iMode == eCameraModePinhole) return true;
  if (chain.eMode == eBikoToAdjusted) return ZuIsInCameraDomain(camera, p.m_dX, p.m_dY);
  photo.ConvertBiko(&p, eDigiToBiko);
  return std::hypot(p.m_dX - camera.m_dXh, p.m_dY - camera.m_dYh) <= ZuValidImageRadius(photo);
}

// By the photo's own conversion, the camera's quick correction and its table.
const char* ConvertByLibrary(const ZuPhoto& photo, const Chain& chain, ZuPoint* p) {
  if (chain.bCamera && !chain.bFromObject && !IsInCamera(photo, chain, *p)) {
    return "outside the domain of the camera";
  }
  return photo.ConvertBiko(p, chain.eMode) ? nullptr : "outside the domain of the camera's inverse";
}

const char* ConvertExactly(const ZuPhoto& photo, const Chain& chain, ZuPoint* p) {
  ZuBikoTransform transform(&photo, chain.eMode, false);
  transform.SetExact(true);
  if (!transform.Transform(p)) {
    return chain.bFromObject ? "outside the domain of the camera's inverse"
                             : "outside the domain of the camera";
  }
  if (chain.eMode == eBikoToAdjusted) {  // the image is not known: that of the camera stands for it
    double x = p->m_dX, y = p->m_dY;
    if (photo.GetCamera().InvAdjustExact(&x, &y) != eCameraInverseOk) {
      return "outside the domain of the camera";
    }
  }
  return nullptr;
}

// Null and the point converted, or why it is not.
const char* Convert(const ZuPhoto& photo, const Chain& chain, bool bFlip, bool bLibrary,
                    ZuPoint* p) {
  if (chain.bFromDigi) {
    if (bFlip) p->m_dY = ZuTurnPixelY(photo, p->m_dY);
    if (!ZuIsInImage(photo, p->m_dX, p->m_dY)) return "outside the image";
  }
  if (chain.bFromObject && !ZuIsBeforeCamera(photo, *p)) return "behind the camera";
  const char* szWhy =
      bLibrary ? ConvertByLibrary(photo, chain, p) : ConvertExactly(photo, chain, p);
  if (szWhy != nullptr) return szWhy;
  if (!std::isfinite(p->m_dX) || !std::isfinite(p->m_dY)) return "no finite result";
  if (chain.bFromObject && chain.bToDigi && !ZuIsInImage(photo, p->m_dX, p->m_dY)) {
    return "outside the image";
  }
  if (chain.bToDigi && bFlip) p->m_dY = ZuTurnPixelY(photo, p->m_dY);
  return nullptr;
}

ExitCode RunConvert(const ConvertValues& values, Context& context) {
  const Chain chain(values.strMode);
  if (values.bFlip && !chain.CanTurn()) {
    throw CommandError(kUsage, "--flip turns y of pixels, and " + values.strMode +
                                   " has none to turn; leave it out");
  }
  const InputFile file(values.strPath, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  const ZuPhoto& photo = FindPhoto(*pProject, values.uPhoto, file);
  CheckNothingLacks(*pProject, photo, chain.Needs(), file);
  ZuPointList points;
  ReadPoints("-", chain.bFromObject ? "id,x,y,z" : "id,x,y", context, &points);

  std::string strLines;
  int iRefused = 0;
  Json& json = context.Root();
  json["photo"] = photo.GetId();
  json["mode"] = values.strMode;
  json["points"] = Json::array();
  for (ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    const char* szWhy = Convert(photo, chain, values.bFlip, values.bLibrary, p);
    Json point{{"id", p->GetId()}};
    point["x"] = szWhy == nullptr ? Json(p->m_dX) : Json();
    point["y"] = szWhy == nullptr ? Json(p->m_dY) : Json();
    if (szWhy == nullptr) {
      strLines +=
          std::to_string(p->GetId()) + ' ' + Shortest(p->m_dX) + ' ' + Shortest(p->m_dY) + '\n';
    } else {
      context.Warn("photo " + std::to_string(photo.GetId()) + ", point " +
                   std::to_string(p->GetId()) + ": " + szWhy);
      point["reason"] = szWhy;
      ++iRefused;
    }
    json["points"].push_back(point);
  }
  WarnOf(*pProject, file, context);
  json["refused"] = iRefused;
  context.Text() << strLines;
  if (!values.strOut.empty()) context.NewOutput(values.strOut).Stream() << strLines;
  return iRefused > 0 ? kNotAcceptable : kGood;
}

}  // namespace

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
  AddLibraryOption(options, &pValues->bLibrary);
  AddPartialOption(options, &pValues->bPartial);
  options.Output("-o,--output", "FILE", &pValues->strOut, "write the points to a file, too");
  return [pValues](Context& context) { return RunConvert(*pValues, context); };
}

}  // namespace cli
