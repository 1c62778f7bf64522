#include "zu/image/canvas.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "zu/image/image_file.h"
#include "zu/image/internal/colours.h"

namespace {

constexpr int kFine = 2;        // pixels drawn for one of the picture, in both directions
constexpr int kSubBits = 4;     // bits of a pixel's fraction in drawing
constexpr double kFar = 1.0e5;  // beyond which a coordinate is cut [pixels]
constexpr double kCapital = 0.72, kCapitalOfFont = 21.0;  // height of a capital letter

cv::Scalar ScalarOf(ZuCanvas::Color color) {
  return cv::Scalar(color.m_iRed, color.m_iGreen, color.m_iBlue);
}

// In the units of OpenCV's drawing, in which whole numbers are centres of pixels.
cv::Point FinePlace(double x, double y) {
  const auto fine = [](double d) {
    return cvRound((std::clamp(d, -kFar, kFar) * kFine - 0.5) * (1 << kSubBits));
  };
  return {fine(x), fine(y)};
}

int FineWidth(double dWidth) { return std::max(1, cvRound(dWidth * kFine)); }

// Letters beyond ASCII in the strokes that there are.
const char* PlainLetters(unsigned uCode) {
  struct Range {
    unsigned uFirst, uLast;
    const char* szText;
  };
  static constexpr Range kRanges[] = {
      {0xA0, 0xA0, " "},     {0xB0, 0xB0, " deg"},    {0xB1, 0xB1, "+-"},    {0xB2, 0xB2, "2"},
      {0xB5, 0xB5, "u"},     {0xB7, 0xB7, "."},       {0xC0, 0xC3, "A"},     {0xC4, 0xC4, "Ae"},
      {0xC5, 0xC5, "A"},     {0xC6, 0xC6, "Ae"},      {0xC7, 0xC7, "C"},     {0xC8, 0xCB, "E"},
      {0xCC, 0xCF, "I"},     {0xD1, 0xD1, "N"},       {0xD2, 0xD5, "O"},     {0xD6, 0xD6, "Oe"},
      {0xD7, 0xD7, "x"},     {0xD8, 0xD8, "O"},       {0xD9, 0xDB, "U"},     {0xDC, 0xDC, "Ue"},
      {0xDD, 0xDD, "Y"},     {0xDF, 0xDF, "ss"},      {0xE0, 0xE3, "a"},     {0xE4, 0xE4, "ae"},
      {0xE5, 0xE5, "a"},     {0xE6, 0xE6, "ae"},      {0xE7, 0xE7, "c"},     {0xE8, 0xEB, "e"},
      {0xEC, 0xEF, "i"},     {0xF1, 0xF1, "n"},       {0xF2, 0xF5, "o"},     {0xF6, 0xF6, "oe"},
      {0xF8, 0xF8, "o"},     {0xF9, 0xFB, "u"},       {0xFC, 0xFC, "ue"},    {0xFD, 0xFD, "y"},
      {0x3BC, 0x3BC, "u"},   {0x3C3, 0x3C3, "sigma"}, {0x2009, 0x2009, " "}, {0x2013, 0x2014, "-"},
      {0x2018, 0x2019, "'"}, {0x2212, 0x2212, "-"}};
  for (const Range& range : kRanges) {
    if (uCode >= range.uFirst && uCode <= range.uLast) return range.szText;
  }
  return "?";
}

std::string PlainText(const std::string& strText) {
  std::string strPlain;
  for (size_t i = 0; i < strText.size();) {
    const auto uFirst = static_cast<unsigned char>(strText[i++]);
    if (uFirst < 0x80) {
      if (uFirst >= 0x20) strPlain += static_cast<char>(uFirst);
      continue;
    }
    unsigned uCode = uFirst & (uFirst >= 0xF0 ? 0x07U : uFirst >= 0xE0 ? 0x0FU : 0x1FU);
    while (i < strText.size() && (static_cast<unsigned char>(strText[i]) & 0xC0U) == 0x80U) {
      uCode = uCode << 6 | (static_cast<unsigned char>(strText[i++]) & 0x3FU);
    }
    strPlain += PlainLetters(uCode);
  }
  return strPlain;
}

}  // namespace

struct ZuCanvas::Pixels {
  cv::Mat fine;  // R, G, B

  // Colours the picture where the mask, whose corner is at (iLeft, iTop), is set.
  void Stamp(const cv::Mat& mask, int iLeft, int iTop, const cv::Scalar& color) {
    const cv::Rect whole(iLeft, iTop, mask.cols, mask.rows);
    const cv::Rect part = whole & cv::Rect(0, 0, fine.cols, fine.rows);
    for (int y = part.y; y < part.y + part.height; ++y) {
      const unsigned char* pMask = mask.ptr(y - iTop) + (part.x - iLeft);
      unsigned char* pTo = fine.ptr(y) + 3 * part.x;
      for (int x = 0; x < part.width; ++x, pTo += 3) {
        const int iShare = pMask[x];
        for (int c = 0; c < 3; ++c) {
          const int iColor = static_cast<int>(color[c]);
          pTo[c] =
              static_cast<unsigned char>((pTo[c] * (255 - iShare) + iColor * iShare + 127) / 255);
        }
      }
    }
  }
};

ZuCanvas::ZuCanvas(int iWidth, int iHeight) : m_pPixels(std::make_unique<Pixels>()) {
  if (iWidth < 1 || iHeight < 1 || iWidth > kMostSide || iHeight > kMostSide) {
    throw std::length_error("a canvas has 1 to 8000 pixels on a side");
  }
  m_pPixels->fine.create(kFine * iHeight, kFine * iWidth, CV_8UC3);
  m_pPixels->fine.setTo(cv::Scalar(255, 255, 255));
}

ZuCanvas::~ZuCanvas() = default;

void ZuCanvas::Lines(const Points& points, double dWidth, Color color) {
  std::vector<cv::Point> line;
  const auto draw = [&] {
    if (line.size() > 1) {
      cv::polylines(m_pPixels->fine, line, false, ScalarOf(color), FineWidth(dWidth), cv::LINE_AA,
                    kSubBits);
    }
    line.clear();
  };
  for (const auto& [x, y] : points) {
    if (std::isfinite(x) && std::isfinite(y)) {
      line.push_back(FinePlace(x, y));
    } else {
      draw();
    }
  }
  draw();
}

void ZuCanvas::Polygon(const Points& points, Color color) {
  std::vector<cv::Point> border;
  for (const auto& [x, y] : points) {
    if (std::isfinite(x) && std::isfinite(y)) border.push_back(FinePlace(x, y));
  }
  if (border.size() < 3) return;
  cv::fillPoly(m_pPixels->fine, std::vector<std::vector<cv::Point>>{border}, ScalarOf(color),
               cv::LINE_AA, kSubBits);
}

void ZuCanvas::Circle(double x, double y, double dRadius, double dWidth, Color color) {
  if (!std::isfinite(x) || !std::isfinite(y) || !(dRadius > 0.0)) return;
  const int iRadius = cvRound(std::min(dRadius, kFar) * kFine * (1 << kSubBits));
  cv::circle(m_pPixels->fine, FinePlace(x, y), iRadius, ScalarOf(color),
             dWidth > 0.0 ? FineWidth(dWidth) : cv::FILLED, cv::LINE_AA, kSubBits);
}

void ZuCanvas::Text(double x, double y, const std::string& strText, double dSize,
                    const Letters& letters, Color color) {
  const std::string strPlain = PlainText(strText);
  if (strPlain.empty() || !(dSize > 0.0) || !std::isfinite(x) || !std::isfinite(y) ||
      std::max(std::fabs(x), std::fabs(y)) > kFar) {
    return;
  }
  const double dFine = std::min(dSize, 1000.0) * kFine;
  const double dScale = kCapital * dFine / kCapitalOfFont;
  const int iThick = std::max(1, cvRound(dFine * (letters.m_bBold ? 0.12 : 0.075)));
  const int iRim = letters.m_dRim > 0.0 ? cvRound(letters.m_dRim * kFine) : 0;
  const int iMargin = cvRound(0.5 * dFine) + 2 * iRim;
  int iBelow = 0;
  const cv::Size size =
      cv::getTextSize(strPlain, cv::FONT_HERSHEY_SIMPLEX, dScale, iThick, &iBelow);
  const cv::Size whole(std::min(size.width + 2 * iMargin, 32000),
                       size.height + iBelow + 2 * iMargin);
  const cv::Point start(iMargin, iMargin + size.height);
  const cv::Point2d place(start.x + letters.m_dAnchor * size.width, start.y);
  for (const bool bRim : {true, false}) {
    if (bRim && iRim == 0) continue;
    cv::Mat mask(whole, CV_8U, cv::Scalar(0));
    cv::putText(mask, strPlain, start, cv::FONT_HERSHEY_SIMPLEX, dScale, cv::Scalar(255),
                bRim ? iThick + 2 * iRim : iThick, cv::LINE_AA);
    cv::Point2d at = place;
    if (letters.m_dTurn != 0.0) {  // about the place, into a square that holds every direction
      const int iSide = 2 * std::max(whole.width, whole.height);
      cv::Mat map = cv::getRotationMatrix2D(cv::Point2f(place), -letters.m_dTurn, 1.0);
      map.at<double>(0, 2) += 0.5 * iSide - place.x;
      map.at<double>(1, 2) += 0.5 * iSide - place.y;
      cv::Mat turned;
      cv::warpAffine(mask, turned, map, cv::Size(iSide, iSide), cv::INTER_LINEAR);
      mask = turned;
      at = {0.5 * iSide, 0.5 * iSide};
    }
    m_pPixels->Stamp(mask, cvRound(x * kFine - at.x), cvRound(y * kFine - at.y),
                     bRim ? cv::Scalar(255, 255, 255) : ScalarOf(color));
  }
}

bool ZuCanvas::Picture(double x, double y, double dWidth, double dHeight,
                       const std::string& strFile, double dOpacity) {
  ZuImage image;
  ZuFindingList findings;
  if (!ZuReadImageBytes(strFile, "picture", &image, nullptr, &findings)) return false;
  const cv::Mat colours = ZuColoursOf(image);
  const auto whole = cv::Rect(cvRound(x * kFine), cvRound(y * kFine), cvRound(dWidth * kFine),
                              cvRound(dHeight * kFine));
  const cv::Rect part = whole & cv::Rect(0, 0, m_pPixels->fine.cols, m_pPixels->fine.rows);
  if (part.empty() || whole.width > 4 * kFine * kMostSide || whole.height > 4 * kFine * kMostSide) {
    return !whole.empty();
  }
  cv::Mat scaled;
  cv::resize(colours, scaled, whole.size(), 0, 0,
             whole.width < colours.cols ? cv::INTER_AREA : cv::INTER_LINEAR);
  cv::Mat target = m_pPixels->fine(part);
  cv::addWeighted(scaled(cv::Rect(part.x - whole.x, part.y - whole.y, part.width, part.height)),
                  dOpacity, target, 1.0 - dOpacity, 0.0, target);
  return true;
}

std::string ZuCanvas::Png() const {
  cv::Mat small;
  const cv::Mat& fine = m_pPixels->fine;
  cv::resize(fine, small, cv::Size(fine.cols / kFine, fine.rows / kFine), 0, 0, cv::INTER_AREA);
  return ZuPngOf(small);
}
