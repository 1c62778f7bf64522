// A picture in memory: rows of samples, as a detector measures in them and a resampler fills them.
//
//   ZuImage image(640, 480, 1, 8);
//   std::uint8_t* pRow = image.GetRow<std::uint8_t>(479);  // the lowest row
//
// Row 0 is the uppermost, y counts down; whole numbers are pixel centres, (0, 0) the first one: the
// digital coordinates of photos. Samples of a pixel stand side by side, rows follow each other
// without a gap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zu/image/export.h"

class ZU_IMAGE_API ZuImage {
 public:
  // The largest width and height.
  static constexpr int kMostPixels = 1'000'000;

  ZuImage() = default;
  // Every sample is 0. Channels: 1 grey, 2 grey and alpha, 3 R, G, B, 4 R, G, B, A, in this order;
  // alpha 0 is transparent, the largest value opaque, and colours are not multiplied by it. Bits of
  // a sample: 8, or 16 in the byte order of the machine. Throws std::length_error for anything
  // else, for a width or height outside 1 to kMostPixels, and std::bad_alloc.
  ZuImage(int iWidth, int iHeight, int iChannels, int iBits);

  bool IsEmpty() const { return m_aSamples.empty(); }
  int GetWidth() const { return m_iWidth; }
  int GetHeight() const { return m_iHeight; }
  int GetChannels() const { return m_iChannels; }
  int GetBits() const { return m_iBits; }
  bool HasAlpha() const { return m_iChannels == 2 || m_iChannels == 4; }
  std::size_t GetRowBytes() const {
    return static_cast<std::size_t>(m_iWidth) * static_cast<std::size_t>(m_iChannels * m_iBits / 8);
  }

  std::uint8_t* GetData() { return m_aSamples.data(); }
  const std::uint8_t* GetData() const { return m_aSamples.data(); }
  // The first sample of a row from 0; T is std::uint8_t or std::uint16_t, as the bits are.
  template <class T>
  T* GetRow(int y) {
    return reinterpret_cast<T*>(GetData() + static_cast<std::size_t>(y) * GetRowBytes());
  }
  template <class T>
  const T* GetRow(int y) const {
    return reinterpret_cast<const T*>(GetData() + static_cast<std::size_t>(y) * GetRowBytes());
  }

 private:
  int m_iWidth = 0;
  int m_iHeight = 0;
  int m_iChannels = 0;
  int m_iBits = 0;
  std::vector<std::uint8_t> m_aSamples;
};
