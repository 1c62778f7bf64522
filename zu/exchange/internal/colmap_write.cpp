#include <bit>
#include <cmath>
#include <limits>
#include <map>

#include "zu/exchange/internal/colmap.h"
#include "zu/exchange/internal/text_scan.h"
#include "zu/foundation/number_text.h"

namespace zu::internal {

namespace {

// A record in either form.
class ColmapRecord {
 public:
  explicit ColmapRecord(bool bBinary) : m_bBinary(bBinary) {}

  void Unsigned(std::uint64_t u, int iBytes) {
    if (!m_bBinary) {
      m_strText += ' ' + std::to_string(u);
      return;
    }
    for (int i = 0; i < iBytes; ++i) m_strText += static_cast<char>(u >> (8 * i) & 0xffU);
  }
  void Real(double d) {
    if (m_bBinary) {
      Unsigned(std::bit_cast<std::uint64_t>(d), 8);
    } else {
      AppendNumber(d, &m_strText);
    }
  }
  void Model(const ColmapModel& model) {
    if (m_bBinary) {
      Unsigned(static_cast<std::uint64_t>(model.iId), 4);
    } else {
      m_strText += ' ' + std::string(model.szName);
    }
  }
  void Name(const std::string& strName) {
    if (m_bBinary) {
      m_strText.append(strName.c_str(), strName.size() + 1);
    } else {
      m_strText += ' ' + strName;
    }
  }
  // Of a text alone: numbers of what follows are in the binary form alone.
  void LineEnd() {
    if (!m_bBinary) m_strText += '\n';
  }
  void Count(std::uint64_t u) {
    if (m_bBinary) Unsigned(u, 8);
  }
  void Comment(const char* szText) {
    if (!m_bBinary) m_strText += std::string("# ") + szText + '\n';
  }
  // Lines begin without the blank of their first value.
  std::string Text() {
    std::string strText;
    if (m_bBinary) return std::move(m_strText);
    bool bStart = true;
    for (const char c : m_strText) {
      if (!(bStart && c == ' ')) strText += c;
      bStart = c == '\n';
    }
    return strText;
  }

 private:
  bool m_bBinary;
  std::string m_strText;
};

// Where a point is seen, in the order of the images.
struct Seen {
  unsigned uImage;
  std::size_t uFeature;
  double dError;  // NaN behind the camera
};
using Tracks = std::map<unsigned, std::vector<Seen>>;

Tracks TracksOf(const PhotoBlock& block) {
  std::map<unsigned, const BlockPoint*> points;
  for (const BlockPoint& point : block.points) points[point.uId] = &point;
  std::map<unsigned, const PinholeModel*> models;
  for (const BlockCamera& camera : block.cameras) models[camera.uId] = &camera.model;
  Tracks tracks;
  for (const BlockImage& image : block.images) {
    std::size_t uFeature = 0;
    for (const BlockMeasure& measure : image.measures) {
      ZuPixel at;
      const bool bSeen = SeePoint(image, *models[image.uCamera], *points[measure.uPoint], &at);
      const double d = std::hypot(at.x - measure.pixel.x, at.y - measure.pixel.y);
      tracks[measure.uPoint].push_back(
          {image.uId, uFeature++, bSeen ? d : std::numeric_limits<double>::quiet_NaN()});
    }
  }
  return tracks;
}

// The mean of those before the camera; -1, the format's own word for unknown, without any.
double ErrorOf(const std::vector<Seen>& track) {
  double dSum = 0.0, n = 0.0;
  for (const Seen& seen : track) {
    if (std::isnan(seen.dError)) continue;
    dSum += seen.dError;
    n += 1.0;
  }
  return n > 0.0 ? dSum / n : -1.0;
}

std::string CamerasOf(const PhotoBlock& block, bool bBinary, ZuExchangeReport* pReport) {
  ColmapRecord record(bBinary);
  record.Comment("CAMERA_ID MODEL WIDTH HEIGHT PARAMS[]");
  record.Count(block.cameras.size());
  std::size_t u = 0;
  for (const BlockCamera& camera : block.cameras) {
    const ColmapModel* pModel = ChooseColmapModel(camera.model, camera.strModel);
    if (pModel == nullptr) {
      FailExchange("", 0, "camera " + std::to_string(camera.uId) + " is none of the models",
                   "pixels with axes at right angles");
    }
    pReport->cameras[u++].strModel = pModel->szName;
    record.Unsigned(camera.uId, 4);
    record.Model(*pModel);
    record.Unsigned(static_cast<std::uint64_t>(camera.size.dWidth), 8);
    record.Unsigned(static_cast<std::uint64_t>(camera.size.dHeight), 8);
    for (const double d : pModel->ToFile(camera.model)) record.Real(d);
    record.LineEnd();
  }
  return record.Text();
}

std::string ImagesOf(const PhotoBlock& block, bool bBinary) {
  ColmapRecord record(bBinary);
  record.Comment("IMAGE_ID QW QX QY QZ TX TY TZ CAMERA_ID NAME");
  record.Comment("POINTS2D[] as X Y POINT3D_ID");
  record.Count(block.images.size());
  for (const BlockImage& image : block.images) {
    CheckPhotoName(image.strName, "photo " + std::to_string(image.uId), 0);
    if (!bBinary && image.strName.find(' ') != std::string::npos) {
      FailExchange(
          "photo " + std::to_string(image.uId), 0,
          "its name " + ZuQuoted(image.strName) + " has a blank, where the text form ends it",
          "a name without blanks, or the binary form");
    }
    const auto q = ZuQuaternionColmap::From(image.pose.R);
    const auto t = ZuToOpenCv(image.pose).t;
    record.Unsigned(image.uId, 4);
    for (const double d : {q.w, q.x, q.y, q.z, t[0], t[1], t[2]}) record.Real(d);
    record.Unsigned(image.uCamera, 4);
    record.Name(image.strName);
    record.LineEnd();
    record.Count(image.measures.size());
    for (const BlockMeasure& measure : image.measures) {
      const auto pixel = ZuPixelCast<ZuPixelFromCorner>(measure.pixel, ZuImageSize{});
      record.Real(pixel.x);
      record.Real(pixel.y);
      record.Unsigned(measure.uPoint, 8);
    }
    record.LineEnd();
  }
  return record.Text();
}

std::string PointsOf(const PhotoBlock& block, bool bBinary) {
  constexpr std::uint64_t kGrey = 128;
  Tracks tracks = TracksOf(block);
  ColmapRecord record(bBinary);
  record.Comment("POINT3D_ID X Y Z R G B ERROR TRACK[] as IMAGE_ID POINT2D_IDX");
  record.Count(block.points.size());
  for (const BlockPoint& point : block.points) {
    const std::vector<Seen>& track = tracks[point.uId];
    record.Unsigned(point.uId, 8);
    for (const double d : point.X) record.Real(d);
    for (int i = 0; i < 3; ++i) record.Unsigned(kGrey, 1);
    record.Real(ErrorOf(track));
    record.Count(track.size());
    for (const Seen& seen : track) {
      record.Unsigned(seen.uImage, 4);
      record.Unsigned(seen.uFeature, 4);
    }
    record.LineEnd();
  }
  return record.Text();
}

}  // namespace

std::vector<ZuExchangeFile> WriteColmap(const PhotoBlock& block, const ZuExportOptions& options,
                                        ZuExchangeReport* pReport) {
  const bool bBinary = options.bBinary;
  const std::string strEnding = bBinary ? ".bin" : ".txt";
  return {{"cameras" + strEnding, CamerasOf(block, bBinary, pReport)},
          {"images" + strEnding, ImagesOf(block, bBinary)},
          {"points3D" + strEnding, PointsOf(block, bBinary)}};
}

}  // namespace zu::internal
