// zu photo undistort: the picture of a photo without distortion, and the photo that fits it.
#include <algorithm>
#include <cmath>
#include <memory>

#include "commands.h"
#include "picture_files.h"
#include "project_files.h"
#include "project_input.h"
#include "text_table.h"
#include "zu/image/photo_map.h"
#include "zu/image/undistort.h"

namespace cli {

namespace {

struct Values {
  std::string strProject, strImage, strOut, strProjectOut;
  unsigned uPhoto = 0;
  bool bFlip = false, bWhole = false;
  PictureOptions picture;
};

// Tables of the quick correction belong to id and constant: the new camera gets an id of its own.
unsigned FreeCameraId(const ZuProject& project) {
  unsigned uId = 0;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    uId = std::max(uId, p->GetCamera().GetId());
  }
  for (const ZuCamera* p = project.CameraList().First(); p != nullptr; p = p->Next()) {
    uId = std::max(uId, p->GetId());
  }
  return uId + 1;
}

// Carries image points [mm] of the old photo to the new one. False where one of them cannot be.
bool CarryImagePoints(const ZuPhoto& photo, const ZuPhoto& plain, ZuPolygon* pPolygon) {
  ZuBikoTransform toRay(&photo, eBikoToAdjusted, false), toImage(&plain, eAdjustedToBiko, false);
  toRay.SetExact(true);
  toImage.SetExact(true);
  ZuPolygon carried(pPolygon->GetMode());
  for (const ZuPoint* p = pPolygon->First(); p != nullptr; p = p->Next()) {
    ZuPoint point(*p);
    if (!toRay.Transform(&point) || !toImage.Transform(&point)) return false;
    carried.AddPoint(point);
  }
  *pPolygon = carried;
  return true;
}

// A rectification that takes the photo's own distortion off goes on with the new camera; any other
// one was made for distorted points and is left out.
void CarryRectifications(const ZuPhoto& photo, const ZuPhoto& plain, ZuPhoto* pTarget,
                         Context& context) {
  for (ZuZuspTrafo *p = pTarget->FirstZuspTrafo(), *pNext; p != nullptr; p = pNext) {
    pNext = p->Next();
    if (p->CompensateDistortion() && CarryImagePoints(photo, plain, &p->GetBikoList()) &&
        CarryImagePoints(photo, plain, &p->GetRegion())) {
      p->SetDistortCameraParam(plain.GetCamera());
      continue;
    }
    context.Warn("rectification " + std::to_string(p->GetId()) + " of photo " +
                 std::to_string(photo.GetId()) +
                 " is left out of the project: it belongs to the distorted picture");
    delete pTarget->SubtractZuspTrafo(p);
  }
}

// The project with the new picture in place of the old one. Returns how many measurements were
// left out.
int Replace(const ZuPhoto& photo, const ZuPhoto& plain, const Values& values, ZuProject* pProject,
            Context& context) {
  const ZuPhotoToPhotoMap carry(photo, plain, values.bFlip);
  // Measurements count as the pictures do, whatever the transformations take.
  const ZuPhotoPixels from(photo, false), to(plain, false);
  ZuPointList& measured = pProject->Measurements(photo.GetId());
  int iLeftOut = 0;
  for (ZuPoint *p = measured.First(), *pNext; p != nullptr; p = pNext) {
    pNext = p->Next();
    from.FromPhoto(&p->m_dX, &p->m_dY);
    if (carry.Map(&p->m_dX, &p->m_dY)) {
      to.ToPhoto(&p->m_dX, &p->m_dY);
      continue;
    }
    delete measured.Subtract(p);
    ++iLeftOut;
  }
  ZuPhoto* pTarget = pProject->PhotoList().Find(photo.GetId());
  CarryRectifications(photo, plain, pTarget, context);
  pTarget->SetName(values.strOut.substr(values.strOut.find_last_of('/') + 1).c_str());
  pTarget->SetCamera(plain.GetCamera());
  pTarget->SetReseauPreTrafo(plain.GetReseauPreTrafo());
  pTarget->SetReseauMainTrafo(plain.GetReseauMainTrafo());
  pTarget->SetPolyInvTrafo(plain.GetReseauPolyInv());
  pTarget->SetDigiRegion(plain.GetDigiRegion());
  pProject->Covariances().ErasePhoto(photo.GetId());
  return iLeftOut;
}

Json RegionJson(const ZuRegion& region) {
  return {region.Left(), region.Bottom(), region.Right(), region.Top()};
}

ExitCode Run(const Values& values, Context& context) {
  CheckPictureEnding(values.strOut);
  if (!values.strProjectOut.empty()) CheckProjectEnding(values.strProjectOut);
  const InputFile file(values.strProject, kProjectFile);
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  const ZuPhoto photo(FindPhoto(project, values.uPhoto, file));
  CheckNothingLacks(project, *project.PhotoList().Find(values.uPhoto),
                    eZuNeedPixels | eZuNeedCamera, file);
  ZuPhoto plain;
  if (!ZuMakeUndistortedPhoto(photo, values.bWhole ? eZuUndistortWhole : eZuUndistortSame,
                              values.bFlip, &plain)) {
    throw CommandError(kUndetermined,
                       file.Name() + ": the camera of photo " + std::to_string(values.uPhoto) +
                           " is not one to one over its image, or DIGIREGION is missing" +
                           (values.bWhole ? "; without --whole its middle would do" : ""));
  }
  plain.GetCamera().SetId(FreeCameraId(project));
  const ZuImage image = ReadPicture(values.strImage, photo, context);
  const ZuPhotoToPhotoMap map(plain, photo, values.bFlip);
  const int iWidth = static_cast<int>(std::lround(std::fabs(plain.GetDigiRegion().Width()))) + 1;
  const int iHeight = static_cast<int>(std::lround(std::fabs(plain.GetDigiRegion().Height()))) + 1;
  ZuResampler resampler(iWidth, iHeight, values.picture.Kernel());
  resampler.SetAveraging(false);
  resampler.AddSource(&image, &map);
  WritePicture(&resampler, values.strOut, {}, values.picture, context);

  int iLeftOut = 0;
  if (!values.strProjectOut.empty()) {
    iLeftOut = Replace(photo, plain, values, &project, context);
    if (iLeftOut > 0) {
      context.Warn(Counted(iLeftOut, "measurement") +
                   " where the camera's model is not one to one; left out of the project");
    }
    WriteProjectFile(values.strProjectOut, context, project);
  }
  const ZuCamera& camera = plain.GetCamera();
  const double dFilled = static_cast<double>(resampler.GetUsed()[0]) / iWidth / iHeight;
  context.Text() << values.strOut << ": " << iWidth << " x " << iHeight << " pixels, "
                 << Fixed(100.0 * dFilled, 1) << " % of them filled\ncamera " << camera.GetId()
                 << " without distortion: c " << Shortest(camera.m_dC) << ", principal point "
                 << Shortest(camera.m_dXh) << ' ' << Shortest(camera.m_dYh) << '\n';
  Json& root = context.Root();
  root["photo"] = values.uPhoto;
  root["width"] = iWidth;
  root["height"] = iHeight;
  root["filled"] = dFilled;
  root["digital_region"] = RegionJson(plain.GetDigiRegion());
  root["camera"] = {
      {"id", camera.GetId()}, {"c", camera.m_dC}, {"xh", camera.m_dXh}, {"yh", camera.m_dYh}};
  root["left_out"] = iLeftOut;
  return iLeftOut > 0 ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefinePhotoUndistort(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file, or its JSON");
  options.Option("--photo", "N", &pValues->uPhoto, "the photo");
  options.Required();
  options.Option("--image", "FILE", &pValues->strImage, "its picture, JPEG, PNG or TIFF");
  options.Required();
  options.Output("-o,--output", "FILE", &pValues->strOut,
                 "the picture without distortion, as .png, .jpg or .tif");
  options.Required();
  options.Flag("--whole", &pValues->bWhole, "as large as all pixels of the picture need");
  AddPictureOptions(options, &pValues->picture);
  options.Flag("--flip", &pValues->bFlip,
               "y of the pixels counts the other way than the photo's transformations take it");
  options.Output("--project-out", "FILE", &pValues->strProjectOut,
                 "the project with this picture in place of the other, as .prj or .json");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
