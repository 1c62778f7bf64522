// COLMAP's models: cameras, images and points with their tracks, in the text and the binary form.
#pragma once

#include <set>
#include <string_view>
#include <vector>

#include "zu/exchange/internal/photo_block.h"

namespace zu::internal {

// A camera model of COLMAP. Its parameters are the file's, in the file's order.
struct ColmapModel {
  int iId;
  const char* szName;
  size_t uParameters;
  PinholeModel (*FromFile)(const double* pd);
  std::vector<double> (*ToFile)(const PinholeModel& model);  // null: not written
};

const ColmapModel* FindColmapModel(int iId);
const ColmapModel* FindColmapModel(std::string_view name);
// What the models are, for messages.
std::string ColmapModelNames();
// The one of that name where it holds the model, else the first that does, the plainest first; null
// where none does.
const ColmapModel* ChooseColmapModel(const PinholeModel& model, const std::string& strName);
// Parameters that can be fitted, and the way through a file.
extern const BlockNeeds kColmapNeeds;
PinholeModel ThroughColmap(const PinholeModel& model);

// As the files have it: with the places in tracks, and features without a point.
struct ColmapImage {
  BlockImage image;
  std::vector<std::uint64_t> features;  // their points, kNoColmapPoint for none
};
inline constexpr std::uint64_t kNoColmapPoint = ~std::uint64_t{0};

struct ColmapTrack {
  struct Element {
    std::uint64_t uImage, uFeature;
  };
  std::uint64_t uLine = 0;
  std::vector<Element> elements;
};

// Puts a model together; checks what it gets, with the file and the line of each record. Throws
// ExchangeFault.
class ColmapBuilder {
 public:
  void AddCamera(const std::string& strFile, std::uint64_t uLine, std::uint64_t uId,
                 const ColmapModel& model, const ZuImageSize& size, const double* pdParameters);
  struct Image {
    std::uint64_t uId, uCamera;
    ZuQuaternionColmap q;
    std::array<double, 3> t;
    std::string strName;
  };
  // The features of the image follow it.
  void AddImage(const std::string& strFile, std::uint64_t uLine, const Image& image);
  void AddFeature(const std::string& strFile, std::uint64_t uLine, ZuPixelFromCorner pixel,
                  std::uint64_t uPoint);
  void AddPoint(const std::string& strFile, std::uint64_t uLine, std::uint64_t uId,
                const std::array<double, 3>& X);
  // Of the point added last.
  void AddTrack(ColmapTrack::Element element);

  // Checks that tracks and features tell the same.
  PhotoBlock Finish(const std::string& strImages, const std::string& strPoints,
                    ZuExchangeReport* pReport);

 private:
  unsigned IdOf(const std::string& strFile, std::uint64_t uLine, const char* szWhat,
                std::uint64_t uId, std::set<std::uint64_t>* pSeen) const;
  void CheckTracks(const std::string& strImages, const std::string& strPoints) const;

  PhotoBlock m_block;
  std::vector<ColmapImage> m_images;
  std::vector<ColmapTrack> m_tracks;  // parallel to the points
  std::set<std::uint64_t> m_cameraIds, m_imageIds, m_pointIds;
};

void ReadColmapText(const ZuExchangeFile& cameras, const ZuExchangeFile& images,
                    const ZuExchangeFile& points, ColmapBuilder* pBuilder);
void ReadColmapBinary(const ZuExchangeFile& cameras, const ZuExchangeFile& images,
                      const ZuExchangeFile& points, ColmapBuilder* pBuilder);
PhotoBlock ReadColmap(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                      ZuExchangeReport* pReport);

// The features of the images become the measurements in their order.
std::vector<ZuExchangeFile> WriteColmap(const PhotoBlock& block, const ZuExportOptions& options,
                                        ZuExchangeReport* pReport);

}  // namespace zu::internal
