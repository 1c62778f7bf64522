// zu rectify: image points through a stored rectification of a photo, and back; with --image the
// picture of a plane.
#include <cmath>
#include <memory>

#include "cmd_rectify_image.h"
#include "commands.h"
#include "id_list.h"
#include "point_input.h"
#include "project_input.h"
#include "text_table.h"

namespace cli {

namespace {

struct Values : RectifyImageValues {
  unsigned uPhoto = 0;
  bool bImage = false, bInverse = false, bLibrary = false, bPartial = false;
};

const ZuZuspTrafo& FindRectification(const ZuPhoto& photo, const Values& values) {
  const ZuZuspTrafo* pTrafo = photo.FindZuspTrafo(values.uZusp);
  if (pTrafo != nullptr) return *pTrafo;
  std::string strIds;
  for (const ZuZuspTrafo* p = photo.FirstZuspTrafo(); p != nullptr; p = p->Next()) {
    strIds += (strIds.empty() ? "" : ", ") + std::to_string(p->GetId());
  }
  throw CommandError(
      kBadInput,
      values.strProject + ": photo " + std::to_string(values.uPhoto) + " has no rectification " +
          std::to_string(values.uZusp) +
          (strIds.empty() ? ", nor any other; --image with --plane or --control needs none"
                          : "; it has " + strIds));
}

void CheckInvertible(const ZuZuspTrafo& trafo, const Values& values) {
  int iPlane = 0, iSpace = 0;
  ZuMatrix(trafo.GetZuspMat()).Invert(&iPlane);
  ZuMatrix(trafo.GetTransMat()).Invert(&iSpace);
  if (iPlane == 0 && iSpace == 0) return;
  throw CommandError(kUndetermined, values.strProject + ": rectification " +
                                        std::to_string(values.uZusp) +
                                        " has a singular matrix and no inverse; one of full rank "
                                        "would be right");
}

bool IsFinite(const ZuPoint& p) {
  return std::isfinite(p.m_dX) && std::isfinite(p.m_dY) && std::isfinite(p.m_dZ);
}

// Carries points as the options ask. Exact: the camera's model to its end, then the record's
// projective maps without their distortion stage.
class Rectifier {
 public:
  Rectifier(const ZuZuspTrafo& trafo, const Values& values)
      : m_trafo(trafo), m_bInverse(values.bInverse) {
    m_bExact = !values.bLibrary && trafo.CompensateDistortion();
    if (m_bExact) m_trafo.SetDistortCameraFlag(false);
  }

  // False, *p undefined: where the camera's model is not one to one. *pImage is the image point.
  bool Carry(ZuPoint* p, ZuPoint* pImage) const {
    const ZuCamera& camera = m_trafo.GetDistortCameraParam();
    *pImage = *p;
    if (!m_bInverse) {
      if (m_bExact && camera.AdjustExact(&p->m_dX, &p->m_dY) != eCameraInverseOk) return false;
      return m_trafo.Transform(p, p);
    }
    m_trafo.InvTransform(p);
    if (m_bExact && camera.InvAdjustExact(&p->m_dX, &p->m_dY) != eCameraInverseOk) return false;
    *pImage = *p;
    return true;
  }

 private:
  ZuZuspTrafo m_trafo;
  bool m_bInverse, m_bExact;
};

ExitCode Run(const Values& values, Context& context) {
  const InputFile file(values.strProject, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  const ZuPhoto& photo = FindPhoto(*pProject, values.uPhoto, file);
  const ZuZuspTrafo& trafo = FindRectification(photo, values);
  const std::string strLacks = pProject->LacksRectification(values.uPhoto, values.uZusp);
  if (!strLacks.empty()) {
    throw CommandError(kUndetermined, values.strProject + ": rectification " +
                                          std::to_string(values.uZusp) + " of photo " +
                                          std::to_string(values.uPhoto) + " " + strLacks);
  }
  if (values.bInverse) CheckInvertible(trafo, values);
  ZuPointList points;
  ReadPoints("-", values.bInverse ? "id,x,y,z" : "id,x,y", context, &points);

  const Rectifier rectifier(trafo, values);
  std::string strLines;
  int iOutside = 0, iRefused = 0;
  Json& json = context.Root();
  json["photo"] = values.uPhoto;
  json["rectification"] = trafo.GetId();
  json["points"] = Json::array();
  for (ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    ZuPoint image;
    if (!rectifier.Carry(p, &image)) {
      context.Warn("point " + std::to_string(p->GetId()) +
                   ": it lies where the camera's model is not one to one; left out");
      ++iRefused;
      continue;
    }
    const bool bInside =
        !trafo.HasRegion() || !trafo.IsRegionActive() || trafo.Overlap(&image) != 0;
    if (!IsFinite(*p)) {
      throw CommandError(kUndetermined, "point " + std::to_string(p->GetId()) +
                                            ": no finite result; points within the valid region "
                                            "would be right");
    }
    if (!bInside) {
      context.Warn("point " + std::to_string(p->GetId()) + ": outside the valid region");
      ++iOutside;
    }
    strLines += std::to_string(p->GetId()) + ' ' + Shortest(p->m_dX) + ' ' + Shortest(p->m_dY) +
                (values.bInverse ? "" : ' ' + Shortest(p->m_dZ)) + '\n';
    json["points"].push_back(Json{
        {"id", p->GetId()}, {"x", p->m_dX}, {"y", p->m_dY}, {"z", p->m_dZ}, {"inside", bInside}});
  }
  WarnOf(*pProject, file, context);
  json["outside"] = iOutside;
  json["refused"] = iRefused;
  context.Text() << strLines;
  if (!values.strOut.empty()) context.NewOutput(values.strOut).Stream() << strLines;
  return iRefused > 0 ? kNotAcceptable : kGood;
}

// What points need, and what they have no use for.
void CheckPoints(Values* pValues) {
  if (pValues->uZusp == 0) throw CommandError(kUsage, "--zusp N is needed, or --image");
  const std::set<unsigned> photos = ParseIds(pValues->strPhotos, "--photo");
  if (photos.size() != 1) throw CommandError(kUsage, "--photo: one photo is needed for points");
  pValues->uPhoto = *photos.begin();
  for (const std::string* p :
       {&pValues->strPlane, &pValues->strControl, &pValues->strRegion, &pValues->strPictures,
        &pValues->strProjectOut, &pValues->strConditions}) {
    if (!p->empty()) throw CommandError(kUsage, *p + " belongs to --image, which is missing");
  }
}

}  // namespace

Runner DefineRectify(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject,
                     "project file; points come on standard input");
  options.Option("--photo", "N", &pValues->strPhotos, "the photo; --image: photos, as 1,4,7-9");
  options.Required();
  options.Option("--zusp", "N", &pValues->uZusp, "its rectification");
  options.Flag("--inverse", &pValues->bInverse, "from object to image coordinates");
  AddLibraryOption(options, &pValues->bLibrary);
  AddPartialOption(options, &pValues->bPartial);
  options.Output("-o,--output", "FILE", &pValues->strOut,
                 "write the points to a file, too; --image: the picture, as .png, .jpg or .tif");
  options.Flag("--image", &pValues->bImage, "make a picture of the plane instead");
  AddRectifyImageOptions(options, pValues.get());
  return [pValues](Context& context) {
    if (pValues->bImage) return RunRectifyImage(*pValues, context);
    CheckPoints(pValues.get());
    return Run(*pValues, context);
  };
}

}  // namespace cli
