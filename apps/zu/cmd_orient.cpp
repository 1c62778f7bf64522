#include "cmd_orient.h"

#include "text_table.h"
#include "zu/project/project.h"

namespace cli {

std::string UnorientedText(const ZuPhotoOrientation& photo) {
  return "photo " + std::to_string(photo.uId) + " could not be oriented: " + photo.strWhy;
}

ZuProjectOrientation OrientUnoriented(ZuProject* pProject, const ZuPointList& control,
                                      const ZuPointList& approximations,
                                      const ZuNetworkInput& input, Context& context) {
  bool bLacks = false;
  for (const ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuPointList* pMeasured = pProject->FindMeasurements(p->GetId());
    const bool bMeasured = pMeasured != nullptr && !pMeasured->IsEmpty();
    bLacks = bLacks || (bMeasured && !pProject->Lacks(*p, eZuNeedOrientation).empty());
  }
  if (!bLacks) return {};
  ZuOrientationOptions options;
  options.dSigma = input.dSigma;
  options.bSigmaInPixels = input.bSigmaInPixels;
  const ZuProjectOrientation result = ZuOrientProject(pProject, control, approximations, options);
  Json photos = Json::array();
  for (const ZuPhotoOrientation& photo : result.photos) {
    if (!photo.IsGood() || photo.eWay == ZuOrientationWay::Kept) continue;
    photos.push_back(photo.uId);
  }
  if (!photos.empty()) {
    context.Text() << Counted(static_cast<long long>(photos.size()), "photo")
                   << " oriented first\n";
  }
  context.Root()["oriented"] = photos;
  return result;
}

void TellUnoriented(const ZuProjectOrientation& orientation, ZuNetworkOfProject* pMade) {
  for (const ZuPhotoOrientation& photo : orientation.photos) {
    if (photo.IsGood()) continue;
    const std::string strBegin = "photo " + std::to_string(photo.uId) + " ";
    for (std::string& strWarning : pMade->warnings) {
      if (strWarning.rfind(strBegin, 0) == 0) strWarning = UnorientedText(photo) + "; left out";
    }
  }
}

}  // namespace cli
