#include "zu/image/image.h"

#include <stdexcept>

ZuImage::ZuImage(int iWidth, int iHeight, int iChannels, int iBits)
    : m_iWidth(iWidth), m_iHeight(iHeight), m_iChannels(iChannels), m_iBits(iBits) {
  const auto outside = [](int i) { return i < 1 || i > kMostPixels; };
  if (outside(iWidth) || outside(iHeight) || iChannels < 1 || iChannels > 4 ||
      (iBits != 8 && iBits != 16)) {
    throw std::length_error("no such picture");
  }
  m_aSamples.resize(GetRowBytes() * static_cast<std::size_t>(iHeight));
}
