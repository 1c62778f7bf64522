// Pictures made from other pictures: each pixel of the result is looked up in its source.
//
//   ZuResampler resampler(iWidth, iHeight, eZuInterpolationCubic);
//   resampler.AddSource(&photo, &map);             // both are kept by the caller
//   ZuImage rows = resampler.MakeRows(64);
//   resampler.Resample(0, &rows);                  // the first 64 rows
//
// The result has an alpha channel behind the source's colours: 0 where no source has a pixel, and
// all colours are 0 there. Pixels beyond a border of the source that a kernel reaches repeat those
// of the border. The work is shared by tiles of 64 x 64 pixels among the threads of OpenMP, and
// the bits of the result are the same on any number of them.
//
// A map is asked at the nodes of a grid over each tile, 16 pixels apart or down to 4, and is
// interpolated by parabolas between them where that is good to 0.002 pixels by its third
// differences, doubled; where it is not, or a node has no source, it is asked for each pixel.
#pragma once

#include <cstdint>
#include <vector>

#include "zu/image/export.h"
#include "zu/image/image.h"
#include "zu/image/pixel_map.h"

class ZuImageWriter;

// Kernels; none of them blurs a source that is taken pixel by pixel.
enum eZuInterpolation : int {
  eZuInterpolationBilinear,
  // 4 x 4 pixels, a = -0.5: exact for parabolas (R. G. Keys: Cubic convolution interpolation for
  // digital image processing, 1981).
  eZuInterpolationCubic,
  // 8 x 8 pixels, the sinc under its own first lobe, weights of sum 1 (C. E. Duchon: Lanczos
  // filtering in one and two dimensions, 1979).
  eZuInterpolationLanczos
};

class ZU_IMAGE_API ZuResampler {
 public:
  ZuResampler(int iWidth, int iHeight, eZuInterpolation eKernel);

  // A source of 1 to 4 channels. Of several sources each pixel of the result takes the one with the
  // best ground resolution: the most source pixels to a result pixel in the direction that has the
  // fewest, so that a slanting view yields to a straight one; of equal ones the first. False:
  // channels or bits differ from those of the first source, or the image is empty.
  bool AddSource(const ZuImage* pImage, const ZuPixelMap* pMap);

  // A source that is finer than the result by a factor of 1.5 or more is averaged over as many
  // positions in each direction as its pixels fit into one of the result, at most 8. On by default.
  void SetAveraging(bool bAveraging) { m_bAveraging = bAveraging; }

  int GetWidth() const { return m_iWidth; }
  int GetHeight() const { return m_iHeight; }
  // 2 or 4, alpha included; 0 without a source.
  int GetChannels() const { return m_iColors == 0 ? 0 : m_iColors + 1; }
  int GetBits() const { return m_iBits; }

  // An image for a band of the result, of at most iRows rows.
  ZuImage MakeRows(int iRows) const;
  // The rows from iFirst on into *pRows, which has come from MakeRows; as many as it has and the
  // result still holds. Needs a source.
  void Resample(int iFirst, ZuImage* pRows);
  // All rows into a writer that was opened for the result's size, channels and bits. Memory: the
  // sources and bands of 64 rows. Tells its progress as szTitle. False: the writer failed, or the
  // progress handler asked to stop (then the writer has no error).
  bool Write(ZuImageWriter* pWriter, const char* szTitle);

  // Pixels of the rows made so far that came from each source, in the order of AddSource.
  const std::vector<std::int64_t>& GetUsed() const { return m_used; }

 private:
  struct Source {
    const ZuImage* m_pImage;
    const ZuPixelMap* m_pMap;
  };

  int m_iWidth, m_iHeight;
  eZuInterpolation m_eKernel;
  bool m_bAveraging = true;
  int m_iColors = 0, m_iBits = 0;
  std::vector<Source> m_sources;
  std::vector<std::int64_t> m_used;
};
