#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "zu/exchange/internal/colmap.h"

namespace zu::internal {

namespace {

ZuCameraPose FromColmap(const ZuQuaternionColmap& q, const std::array<double, 3>& t) {
  return ZuFromOpenCv({ZuRotationCast<ZuMatrixOpenCv>(q), t});
}

// Through quaternion and translation.
ZuCameraPose ThroughColmapPose(const ZuCameraPose& pose) {
  return FromColmap(ZuQuaternionColmap::From(pose.R), ZuToOpenCv(pose).t);
}

std::string Numbered(const char* szWhat, std::uint64_t uId) {
  return szWhat + (' ' + std::to_string(uId));
}

}  // namespace

unsigned ColmapBuilder::IdOf(const std::string& strFile, std::uint64_t uLine, const char* szWhat,
                             std::uint64_t uId, std::set<std::uint64_t>* pSeen) const {
  if (uId == 0 || uId > 0xffffffffU) {
    FailExchange(strFile, uLine, Numbered(szWhat, uId) + " has no place in a project",
                 "an id from 1 to 4294967295");
  }
  if (!pSeen->insert(uId).second) {
    FailExchange(strFile, uLine, Numbered(szWhat, uId) + " stands there twice", "each id once");
  }
  return static_cast<unsigned>(uId);
}

void ColmapBuilder::AddCamera(const std::string& strFile, std::uint64_t uLine, std::uint64_t uId,
                              const ColmapModel& model, const ZuImageSize& size,
                              const double* pdParameters) {
  BlockCamera camera;
  camera.uId = IdOf(strFile, uLine, "camera", uId, &m_cameraIds);
  camera.strModel = model.szName;
  camera.size = size;
  camera.model = model.FromFile(pdParameters);
  CheckImageSize(size, strFile, uLine);
  if (!camera.model.IsFinite() || !(camera.model.fx > 0.0) || !(camera.model.fy > 0.0)) {
    FailExchange(strFile, uLine, "camera " + std::to_string(uId) + " has parameters that are none",
                 "focal lengths above 0 and finite numbers");
  }
  m_block.cameras.push_back(camera);
}

void ColmapBuilder::AddImage(const std::string& strFile, std::uint64_t uLine, const Image& image) {
  ColmapImage added;
  BlockImage& block = added.image;
  block.uId = IdOf(strFile, uLine, "image", image.uId, &m_imageIds);
  if (m_cameraIds.count(image.uCamera) == 0) {
    FailExchange(strFile, uLine,
                 Numbered("image", image.uId) + Numbered(" has camera", image.uCamera) +
                     ", which the cameras have not",
                 "the id of one of the cameras");
  }
  block.uCamera = static_cast<unsigned>(image.uCamera);
  CheckPhotoName(image.strName, strFile, uLine);
  block.strName = image.strName;
  block.pose = SettledPose(FromColmap(image.q, image.t), ThroughColmapPose);
  if (!IsFinitePose(block.pose)) {
    FailExchange(strFile, uLine, Numbered("image", image.uId) + " has no orientation",
                 "a quaternion that is not 0 and finite numbers");
  }
  m_images.push_back(std::move(added));
}

void ColmapBuilder::AddFeature(const std::string& strFile, std::uint64_t uLine,
                               ZuPixelFromCorner pixel, std::uint64_t uPoint) {
  ColmapImage& image = m_images.back();
  image.features.push_back(uPoint);
  if (uPoint == kNoColmapPoint) return;
  if (uPoint == 0 || uPoint > 0xffffffffU || !std::isfinite(pixel.x) || !std::isfinite(pixel.y)) {
    FailExchange(strFile, uLine,
                 "a feature of " + Numbered("image", image.image.uId) + " has " +
                     Numbered("point", uPoint) + " and coordinates, not all of which have a place",
                 "finite numbers, and -1 or an id from 1 to 4294967295");
  }
  image.image.measures.push_back(
      {static_cast<unsigned>(uPoint), ZuPixelCast<ZuPixel>(pixel, ZuImageSize{})});
}

void ColmapBuilder::AddPoint(const std::string& strFile, std::uint64_t uLine, std::uint64_t uId,
                             const std::array<double, 3>& X) {
  const unsigned uPoint = IdOf(strFile, uLine, "point", uId, &m_pointIds);
  if (!std::isfinite(X[0] + X[1] + X[2])) {
    FailExchange(strFile, uLine, Numbered("point", uId) + " is not finite", "finite coordinates");
  }
  m_block.points.push_back({uPoint, X});
  m_tracks.emplace_back();
  m_tracks.back().uLine = uLine;
}

void ColmapBuilder::AddTrack(ColmapTrack::Element element) {
  m_tracks.back().elements.push_back(element);
}

// Each element names a feature that names the point, and all features of points are named.
void ColmapBuilder::CheckTracks(const std::string& strImages, const std::string& strPoints) const {
  std::map<std::uint64_t, const ColmapImage*> images;
  std::size_t uFeatures = 0, uElements = 0;
  for (const ColmapImage& image : m_images) {
    images[image.image.uId] = &image;
    uFeatures += image.image.measures.size();
    for (const BlockMeasure& measure : image.image.measures) {
      if (m_pointIds.count(measure.uPoint) > 0) continue;
      FailExchange(strImages, 0,
                   Numbered("image", image.image.uId) + " sees " +
                       Numbered("point", measure.uPoint) + ", which " + strPoints + " has not",
                   "the files of one model");
    }
  }
  std::set<std::pair<std::uint64_t, std::uint64_t>> named;
  for (std::size_t i = 0; i < m_tracks.size(); ++i) {
    for (const ColmapTrack::Element& element : m_tracks[i].elements) {
      const auto at = images.find(element.uImage);
      const bool bGood = at != images.end() && element.uFeature < at->second->features.size() &&
                         at->second->features[element.uFeature] == m_block.points[i].uId &&
                         named.insert({element.uImage, element.uFeature}).second;
      if (!bGood) {
        FailExchange(strPoints, m_tracks[i].uLine,
                     Numbered("the track of point", m_block.points[i].uId) + " names feature " +
                         std::to_string(element.uFeature) + Numbered(" of image", element.uImage) +
                         ", which is none of its",
                     "the files of one model");
      }
      ++uElements;
    }
  }
  if (uElements < uFeatures) {
    FailExchange(strPoints, 0,
                 "the tracks name " + std::to_string(uElements) +
                     " features, but the images have " + std::to_string(uFeatures) +
                     " with a point",
                 "the files of one model");
  }
}

PhotoBlock ColmapBuilder::Finish(const std::string& strImages, const std::string& strPoints,
                                 ZuExchangeReport* pReport) {
  CheckTracks(strImages, strPoints);
  std::size_t uFree = 0, uDoubled = 0;
  for (ColmapImage& image : m_images) {
    uFree += image.features.size() - image.image.measures.size();
    uDoubled += DropSecondMeasures(&image.image);
    m_block.images.push_back(std::move(image.image));
  }
  if (uFree > 0) {
    WarnExchange(strImages, std::to_string(uFree) + " features without a point; left out", pReport);
  }
  WarnSecondMeasures(strImages, uDoubled, pReport);
  std::sort(m_block.cameras.begin(), m_block.cameras.end(),
            [](const BlockCamera& a, const BlockCamera& b) { return a.uId < b.uId; });
  return std::move(m_block);
}

PhotoBlock ReadColmap(const std::vector<ZuExchangeFile>& files, const ZuImportOptions&,
                      ZuExchangeReport* pReport) {
  const auto Find = [&](const std::string& strName) -> const ZuExchangeFile* {
    const auto at = std::find_if(files.begin(), files.end(), [&](const ZuExchangeFile& file) {
      return file.strName == strName;
    });
    return at == files.end() ? nullptr : &*at;
  };
  for (const std::string& strEnding : {std::string(".bin"), std::string(".txt")}) {
    const ZuExchangeFile* apFiles[] = {Find("cameras" + strEnding), Find("images" + strEnding),
                                       Find("points3D" + strEnding)};
    if (apFiles[0] == nullptr || apFiles[1] == nullptr || apFiles[2] == nullptr) continue;
    ColmapBuilder builder;
    (strEnding == ".bin" ? ReadColmapBinary : ReadColmapText)(*apFiles[0], *apFiles[1], *apFiles[2],
                                                              &builder);
    return builder.Finish(apFiles[1]->strName, apFiles[2]->strName, pReport);
  }
  FailExchange("", 0, "no model of COLMAP",
               "a folder with cameras, images and points3D, all .bin or all .txt");
}

}  // namespace zu::internal
