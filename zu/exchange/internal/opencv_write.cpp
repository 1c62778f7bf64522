#include <algorithm>
#include <cmath>
#include <map>

#include "zu/exchange/internal/opencv_file.h"
#include "zu/exchange/internal/storage_node.h"
#include "zu/foundation/path.h"

namespace zu::internal {

namespace {

StorageForm FormOf(const std::string& strName) {
  std::string strEnding = ZuPathExtension(strName);
  for (char& c : strEnding) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  if (strEnding == ".yml" || strEnding == ".yaml") return StorageForm::Yaml;
  if (strEnding == ".xml") return StorageForm::Xml;
  if (strEnding == ".json") return StorageForm::Json;
  FailExchange("", 0, "the name of the result does not tell its form",
               ".yml, .xml or .json at its end");
}

StorageItem WholeItem(const char* szName, double d) {
  return {szName, StorageItem::Kind::Whole, d, {}, 1, 1, {}, {}};
}

StorageItem MatrixItem(const char* szName, std::vector<double> values, std::size_t uColumns = 1,
                       std::size_t uChannels = 1) {
  return {szName, StorageItem::Kind::Matrix, 0.0, {}, uColumns, uChannels, std::move(values), {}};
}

std::vector<double> CoefficientsOf(const PinholeModel& m) {
  std::vector<double> D{m.k[0], m.k[1], m.p[0], m.p[1]};
  const bool bRational = m.k[3] != 0.0 || m.k[4] != 0.0 || m.k[5] != 0.0;
  if (m.k[2] != 0.0 || bRational) D.push_back(m.k[2]);
  if (bRational) D.insert(D.end(), {m.k[3], m.k[4], m.k[5]});
  return D;
}

// The images of one camera with their measurements.
class OpenCvWriter {
 public:
  OpenCvWriter(const PhotoBlock& block, const BlockCamera& camera) : m_camera(camera) {
    for (const BlockPoint& point : block.points) m_points[point.uId] = &point;
    for (const BlockImage& image : block.images) {
      if (image.uCamera == camera.uId) m_images.push_back(&image);
    }
    AddCamera();
    AddViews();
    AddPoints(block);
  }

  std::string Text(StorageForm eForm) const { return WriteStorage(m_items, eForm); }

 private:
  void AddCamera() {
    const PinholeModel& m = m_camera.model;
    m_items.push_back(WholeItem("image_width", m_camera.size.dWidth));
    m_items.push_back(WholeItem("image_height", m_camera.size.dHeight));
    m_items.push_back(WholeItem("camera_id", m_camera.uId));
    const std::string strName = PlainName(m_camera.strModel);
    if (!strName.empty())
      m_items.push_back({"camera_name", StorageItem::Kind::Text, 0.0, {strName}, 1, 1, {}, {}});
    m_items.push_back(
        MatrixItem("camera_matrix", {m.fx, 0.0, m.cx, 0.0, m.fy, m.cy, 0.0, 0.0, 1.0}, 3));
    m_items.push_back(MatrixItem("distortion_coefficients", CoefficientsOf(m)));
  }

  void AddViews() {
    std::vector<double> ids, poses, errors;
    StorageItem names{"image_names", StorageItem::Kind::Texts, 0.0, {}, 1, 1, {}, {}};
    StorageItem pixels{"image_points", StorageItem::Kind::Sequence, 0.0, {}, 1, 1, {}, {}};
    StorageItem pointIds = pixels;
    pointIds.strName = "point_ids";
    double dSquares = 0.0, dAll = 0.0;
    for (const BlockImage* pImage : m_images) {
      CheckPhotoName(pImage->strName, "photo " + std::to_string(pImage->uId), 0);
      ids.push_back(pImage->uId);
      names.texts.push_back(pImage->strName);
      const ZuPoseOpenCv pose = ZuToOpenCv(pImage->pose);
      const auto turn = ZuRotationCast<ZuVectorOpenCv>(pose.R).v;
      if (pImage->bOriented) poses.insert(poses.end(), turn.begin(), turn.end());
      if (pImage->bOriented) poses.insert(poses.end(), pose.t.begin(), pose.t.end());
      std::vector<double> xy, seenIds;
      double dImage = 0.0, dSeen = 0.0;
      for (const BlockMeasure& measure : pImage->measures) {
        xy.insert(xy.end(), {measure.pixel.x, measure.pixel.y});
        seenIds.push_back(measure.uPoint);
        const auto point = m_points.find(measure.uPoint);
        ZuPixel at;
        if (!pImage->bOriented || point == m_points.end() ||
            !SeePoint(*pImage, m_camera.model, *point->second, &at)) {
          continue;
        }
        dImage += std::pow(at.x - measure.pixel.x, 2) + std::pow(at.y - measure.pixel.y, 2);
        dSeen += 1.0;
      }
      errors.push_back(dSeen > 0.0 ? std::sqrt(dImage / dSeen) : 0.0);
      dSquares += dImage;
      dAll += dSeen;
      pixels.items.push_back(MatrixItem("", xy, 1, 2));
      pointIds.items.push_back(MatrixItem("", seenIds));
    }
    if (dAll > 0.0) {
      m_items.push_back({"avg_reprojection_error",
                         StorageItem::Kind::Number,
                         std::sqrt(dSquares / dAll),
                         {},
                         1,
                         1,
                         {},
                         {}});
      m_items.push_back(MatrixItem("per_view_reprojection_errors", errors));
    }
    if (!poses.empty()) m_items.push_back(MatrixItem("extrinsic_parameters", poses, 6));
    m_items.push_back(MatrixItem("photo_ids", ids));
    m_items.push_back(std::move(names));
    m_items.push_back(std::move(pixels));
    m_items.push_back(std::move(pointIds));
  }

  void AddPoints(const PhotoBlock& block) {
    std::vector<double> ids, coordinates;
    for (const BlockPoint& point : block.points) {
      ids.push_back(point.uId);
      coordinates.insert(coordinates.end(), point.X.begin(), point.X.end());
    }
    if (ids.empty()) return;
    m_items.push_back(MatrixItem("object_point_ids", ids));
    m_items.push_back(MatrixItem("object_points", coordinates, 1, 3));
  }

  const BlockCamera& m_camera;
  std::map<unsigned, const BlockPoint*> m_points;
  std::vector<const BlockImage*> m_images;
  std::vector<StorageItem> m_items;
};

// The file has orientations of all photos or of none.
PhotoBlock OrientedAlike(PhotoBlock block, ZuExchangeReport* pReport) {
  const auto IsOriented = [](const BlockImage& image) { return image.bOriented; };
  if (std::none_of(block.images.begin(), block.images.end(), IsOriented)) return block;
  const std::size_t uDropped =
      std::erase_if(block.images, [](const BlockImage& image) { return !image.bOriented; });
  if (uDropped == 0) return block;
  WarnExchange("", std::to_string(uDropped) + " photos without orientation; left out", pReport);
  pReport->uPhotos = block.images.size();
  pReport->uMeasurements = 0;
  for (const BlockImage& image : block.images) pReport->uMeasurements += image.measures.size();
  std::erase_if(block.cameras, [&](const BlockCamera& camera) {
    return std::none_of(block.images.begin(), block.images.end(),
                        [&](const BlockImage& image) { return image.uCamera == camera.uId; });
  });
  std::erase_if(pReport->cameras, [&](const ZuExchangedCamera& told) {
    return std::none_of(block.cameras.begin(), block.cameras.end(),
                        [&](const BlockCamera& camera) { return camera.uId == told.uId; });
  });
  return block;
}

}  // namespace

const BlockNeeds kOpenCvNeeds{
    {kFitFocal | kFitK1 | kFitK2 | kFitTangential,
     kFitFocal | kFitK1 | kFitK2 | kFitK3 | kFitTangential,
     kFitFocal | kFitK1 | kFitK2 | kFitK3 | kFitRational | kFitTangential},
    false,
    false};

std::vector<ZuExchangeFile> WriteOpenCv(const PhotoBlock& block, const ZuExportOptions& options,
                                        ZuExchangeReport* pReport) {
  const StorageForm eForm = FormOf(options.strName);
  const PhotoBlock alike = OrientedAlike(block, pReport);
  const std::size_t uEnding = options.strName.size() - ZuPathExtension(options.strName).size();
  std::vector<ZuExchangeFile> files;
  std::size_t u = 0;
  for (const BlockCamera& camera : alike.cameras) {
    pReport->cameras[u++].strModel =
        "OPENCV_" + std::to_string(CoefficientsOf(camera.model).size());
    std::string strName = options.strName;
    if (alike.cameras.size() > 1) strName.insert(uEnding, "_" + std::to_string(camera.uId));
    files.push_back({strName, OpenCvWriter(alike, camera).Text(eForm)});
  }
  return files;
}

}  // namespace zu::internal
