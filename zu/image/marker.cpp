#include "zu/image/marker.h"

#include <algorithm>
#include <map>
#include <opencv2/aruco.hpp>
#include <opencv2/aruco/charuco.hpp>

#include "zu/image/image.h"
#include "zu/image/internal/corner_refine.h"
#include "zu/image/internal/quad_fit.h"

namespace {

namespace aruco = cv::aruco;

// Rows of name and number of the dictionary.
const std::map<std::string, int>& Families() {
  static const std::map<std::string, int> families = [] {
    std::map<std::string, int> made;
    int iNext = aruco::DICT_4X4_50;
    for (const char* szBits : {"4x4_", "5x5_", "6x6_", "7x7_"}) {
      for (const char* szCount : {"50", "100", "250", "1000"}) {
        made[std::string(szBits) + szCount] = iNext++;
      }
    }
    made["aruco_original"] = aruco::DICT_ARUCO_ORIGINAL;
    made["apriltag_16h5"] = aruco::DICT_APRILTAG_16h5;
    made["apriltag_25h9"] = aruco::DICT_APRILTAG_25h9;
    made["apriltag_36h10"] = aruco::DICT_APRILTAG_36h10;
    made["apriltag_36h11"] = aruco::DICT_APRILTAG_36h11;
    return made;
  }();
  return families;
}

using Quads = std::vector<std::vector<cv::Point2f>>;

cv::Ptr<aruco::Dictionary> DictionaryOf(const std::string& strFamily) {
  const auto found = Families().find(strFamily);
  if (found == Families().end()) return nullptr;
  return aruco::getPredefinedDictionary(found->second);
}

double ShortestSide(const std::vector<cv::Point2f>& corners) {
  double dShortest = 1e9;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    dShortest = std::min(dShortest, cv::norm(corners[i] - corners[(i + 1) % corners.size()]));
  }
  return dShortest;
}

// Pictures that are smaller than a marker's bits make no sense to the search [pixel].
constexpr int kLeastPicture = 16;

void Search(const cv::Mat& eight, const cv::Ptr<aruco::Dictionary>& pDictionary, Quads* pQuads,
            std::vector<int>* pNumbers) {
  if (std::min(eight.cols, eight.rows) < kLeastPicture) return;
  aruco::detectMarkers(eight, pDictionary, *pQuads, *pNumbers);
}

}  // namespace

std::vector<std::string> ZuMarkerFamilies() {
  std::vector<std::string> names;
  for (const auto& family : Families()) names.push_back(family.first);
  return names;
}

bool ZuDetectMarkers(const ZuImage& image, const std::string& strFamily,
                     std::vector<ZuMarker>* pMarkers, std::string* pstrText, double dSigmaFloor) {
  pMarkers->clear();
  const cv::Ptr<aruco::Dictionary> pDictionary = DictionaryOf(strFamily);
  if (!pDictionary) return false;
  if (image.IsEmpty()) return true;
  const ZuGrey grey = ZuGreyOf(image);
  Quads quads;
  std::vector<int> numbers;
  Search(grey.m_Eight, pDictionary, &quads, &numbers);
  std::map<int, std::size_t> counts;
  for (const int iNumber : numbers) ++counts[iNumber];
  std::map<unsigned, ZuMarker> found;
  for (std::size_t i = 0; i < quads.size(); ++i) {
    if (counts[numbers[i]] > 1) continue;
    ZuMarker marker;
    marker.m_uNumber = static_cast<unsigned>(numbers[i]);
    // A rim of one bit stands around the bits.
    const double dBit = ShortestSide(quads[i]) / (pDictionary->markerSize + 2);
    const std::vector<ZuDetectedPoint> corners = ZuFitQuad(grey.m_Values, quads[i], dBit);
    if (corners.empty()) continue;
    for (unsigned k = 0; k < 4; ++k) {
      marker.m_corners[k] = corners[k];
      marker.m_corners[k].AddDeviation(dSigmaFloor);
      marker.m_corners[k].m_uId = 10 * marker.m_uNumber + k + 1;
    }
    found[marker.m_uNumber] = marker;
  }
  for (const auto& entry : found) pMarkers->push_back(entry.second);
  for (const auto& entry : counts) {
    if (entry.second < 2 || pstrText == nullptr) continue;
    *pstrText += (pstrText->empty() ? "more than once, and left out: marker " : ", ") +
                 std::to_string(entry.first);
  }
  return true;
}

ZuBoardDetection ZuDetectCharuco(const ZuImage& image, const ZuChessboard& board,
                                 const std::string& strFamily, double dMarker, double dSigmaFloor) {
  ZuBoardDetection detection;
  const cv::Ptr<aruco::Dictionary> pDictionary = DictionaryOf(strFamily);
  const int iColumns = board.m_iColumns + 1, iRows = board.m_iRows + 1;  // of squares
  if (!pDictionary || image.IsEmpty() || iColumns < 3 || iRows < 3 || iColumns > 1000 ||
      iRows > 1000 || !(dMarker > 0.0 && dMarker < 1.0) ||
      pDictionary->bytesList.rows < iColumns * iRows / 2) {
    detection.m_strText = "no such board: the family is unknown or has too few markers for it";
    return detection;
  }
  const ZuGrey grey = ZuGreyOf(image);
  Quads quads;
  std::vector<int> numbers, ids;
  Search(grey.m_Eight, pDictionary, &quads, &numbers);
  const auto pBoard =
      aruco::CharucoBoard::create(iColumns, iRows, 1.0F, static_cast<float>(dMarker), pDictionary);
  std::vector<cv::Point2f> corners;
  if (!numbers.empty()) {
    aruco::interpolateCornersCharuco(quads, numbers, grey.m_Eight, pBoard, corners, ids);
  }
  if (corners.empty()) {
    detection.m_strText = "no corner of the board between markers";
    return detection;
  }
  double dSide = 1e9;
  for (const auto& quad : quads) dSide = std::min(dSide, ShortestSide(quad));
  detection.m_points = ZuRefineCorners(grey, corners, dSide * (1.0 / dMarker - 1.0), dSigmaFloor);
  for (std::size_t i = 0; i < ids.size(); ++i) {
    detection.m_points[i].m_uId = static_cast<unsigned>(ids[i]) + 1;
  }
  return detection;
}
