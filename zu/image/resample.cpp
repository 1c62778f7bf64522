#include "zu/image/resample.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <mutex>
#include <type_traits>

#include "zu/foundation/progress.h"
#include "zu/image/image_writer.h"
#include "zu/image/internal/sampler.h"
#include "zu/image/internal/tile_map.h"

namespace {

using zu::internal::kTile;
using zu::internal::Sampler;
using zu::internal::TileMap;

constexpr int kBandRows = 64;
constexpr int kMostPositions = 8;  // averaged, in each direction

// Sums over iPositions of colours times alpha, and of alpha, to pixels of the result.
template <class T>
void Store(const float* pf, int n, int iColors, int iPositions, T* pOut) {
  constexpr float kMost = static_cast<float>(std::numeric_limits<T>::max());
  const float fAll = static_cast<float>(iPositions), fShare = 1.0f / fAll;
  for (int i = 0; i < n; ++i, pf += iColors + 1, pOut += iColors + 1) {
    const float fAlpha = pf[iColors];
    const float fScale = fAlpha == fAll ? fShare : fAlpha > 0.0f ? 1.0f / fAlpha : 0.0f;
    for (int c = 0; c < iColors; ++c) {
      pOut[c] = static_cast<T>(std::clamp(pf[c] * fScale + 0.5f, 0.0f, kMost));
    }
    pOut[iColors] = static_cast<T>(std::clamp(fAlpha * fShare * kMost + 0.5f, 0.0f, kMost));
  }
}

// One source over one tile.
struct TileSource {
  TileSource(const Sampler& s, const ZuPixelMap& map, int iLeft, int iTop, int iWidth, int iHeight,
             bool bAveraging)
      : sampler(s), positions(map, iLeft, iTop, iWidth, iHeight) {
    if (!bAveraging) return;
    const double dReduction = positions.Reduction();
    if (dReduction >= 1.5) {
      iAverage = static_cast<int>(std::min(dReduction + 0.5, 1.0 * kMostPositions));
    }
  }

  // Pixels iFirst to iEnd of a row, their sums and how many positions these are of.
  int Sum(int iRow, int iFirst, int iEnd, float* pf) const {
    const int iChannels = sampler.Image().GetChannels();
    std::fill_n(pf, (iEnd - iFirst) * (iChannels + iChannels % 2), 0.0f);
    for (int k = 0; k < iAverage * iAverage; ++k) {
      double adX[kTile], adY[kTile];
      positions.Row(iRow, Shift(k % iAverage), Shift(k / iAverage), adX, adY);
      sampler.Add(adX + iFirst, adY + iFirst, iEnd - iFirst, pf);
    }
    return iAverage * iAverage;
  }
  double Shift(int k) const { return (k + 0.5) / iAverage - 0.5; }

  const Sampler& sampler;
  TileMap positions;
  int iAverage = 1;  // positions in each direction
};

// Which source a row's pixels take; -1: none.
void Choose(const std::vector<TileSource>& sources, int iRow, int iWidth, int* piSource) {
  double adBest[kTile] = {};
  std::fill_n(piSource, iWidth, sources.size() == 1 ? 0 : -1);
  if (sources.size() == 1) return;
  for (size_t s = 0; s < sources.size(); ++s) {
    double adX[kTile], adY[kTile];
    sources[s].positions.Row(iRow, 0.0, 0.0, adX, adY);
    for (int i = 0; i < iWidth; ++i) {
      if (!sources[s].sampler.IsInside(adX[i], adY[i])) continue;
      const double d = sources[s].positions.Resolution(i, iRow);
      if (d <= adBest[i]) continue;
      adBest[i] = d;
      piSource[i] = static_cast<int>(s);
    }
  }
}

// A run of a row's pixels from one source. Returns how many of them have a source.
template <class T>
std::int64_t MakeRun(const TileSource* pSource, int iColors, int iRow, int iFirst, int iEnd,
                     T* pOut) {
  const int n = iEnd - iFirst;
  if (pSource == nullptr) {
    std::fill_n(pOut, n * (iColors + 1), T());
    return 0;
  }
  if constexpr (std::is_same_v<T, std::uint8_t>) {
    if (pSource->iAverage == 1 && pSource->sampler.HasQuick()) {
      double adX[kTile], adY[kTile];
      pSource->positions.Row(iRow, 0.0, 0.0, adX, adY);
      return pSource->sampler.Quick(adX + iFirst, adY + iFirst, n, pOut);
    }
  }
  float af[kTile * 4];
  const int iPositions = pSource->Sum(iRow, iFirst, iEnd, af);
  Store(af, n, iColors, iPositions, pOut);
  std::int64_t nUsed = 0;
  for (int i = 0; i < n; ++i) nUsed += af[i * (iColors + 1) + iColors] > 0.0f;
  return nUsed;
}

}  // namespace

ZuResampler::ZuResampler(int iWidth, int iHeight, eZuInterpolation eKernel)
    : m_iWidth(iWidth), m_iHeight(iHeight), m_eKernel(eKernel) {}

bool ZuResampler::AddSource(const ZuImage* pImage, const ZuPixelMap* pMap) {
  if (pImage == nullptr || pMap == nullptr || pImage->IsEmpty()) return false;
  const int iColors = pImage->GetChannels() < 3 ? 1 : 3;
  if (!m_sources.empty() && (m_iColors != iColors || m_iBits != pImage->GetBits() ||
                             m_sources[0].m_pImage->GetChannels() != pImage->GetChannels())) {
    return false;
  }
  m_iColors = iColors;
  m_iBits = pImage->GetBits();
  m_sources.push_back({pImage, pMap});
  m_used.push_back(0);
  return true;
}

ZuImage ZuResampler::MakeRows(int iRows) const {
  return ZuImage(m_iWidth, std::min(iRows, m_iHeight), GetChannels(), m_iBits);
}

// Tiles stand on a grid of the whole result, so that its bits do not depend on the bands.
void ZuResampler::Resample(int iFirst, ZuImage* pRows) {
  const int iEnd = std::min(iFirst + pRows->GetHeight(), m_iHeight);
  const int iTileTop = iFirst / kTile, iTilesY = (iEnd - 1) / kTile + 1 - iTileTop;
  const int iTilesX = (m_iWidth + kTile - 1) / kTile;
  std::vector<Sampler> samplers;
  for (const Source& source : m_sources) samplers.emplace_back(*source.m_pImage, m_eKernel);

  const auto make = [&](int iTile, auto sample, std::vector<std::int64_t>* pUsed) {
    using T = decltype(sample);
    const int iLeft = iTile % iTilesX * kTile, iTop = (iTileTop + iTile / iTilesX) * kTile;
    const int iWidth = std::min(kTile, m_iWidth - iLeft);
    const int iHeight = std::min(kTile, m_iHeight - iTop);
    std::vector<TileSource> sources;
    sources.reserve(m_sources.size());
    for (size_t s = 0; s < m_sources.size(); ++s) {
      sources.emplace_back(samplers[s], *m_sources[s].m_pMap, iLeft, iTop, iWidth, iHeight,
                           m_bAveraging);
    }
    for (int y = std::max(iTop, iFirst); y < std::min(iTop + iHeight, iEnd); ++y) {
      int aiSource[kTile];
      Choose(sources, y - iTop, iWidth, aiSource);
      T* pOut = pRows->GetRow<T>(y - iFirst) + static_cast<std::ptrdiff_t>(iLeft) * GetChannels();
      for (int i = 0, iRunEnd; i < iWidth; i = iRunEnd) {
        for (iRunEnd = i + 1; iRunEnd < iWidth && aiSource[iRunEnd] == aiSource[i];) ++iRunEnd;
        const auto s = static_cast<size_t>(std::max(aiSource[i], 0));
        (*pUsed)[s] += MakeRun(aiSource[i] < 0 ? nullptr : &sources[s], m_iColors, y - iTop, i,
                               iRunEnd, pOut + i * GetChannels());
      }
    }
  };

  std::exception_ptr fault;
  std::mutex mutex;
#pragma omp parallel for schedule(dynamic)
  for (int iTile = 0; iTile < iTilesX * iTilesY; ++iTile) {
    try {
      std::vector<std::int64_t> used(m_sources.size());
      if (m_iBits == 8) {
        make(iTile, std::uint8_t(), &used);
      } else {
        make(iTile, std::uint16_t(), &used);
      }
      const std::lock_guard lock(mutex);
      for (size_t s = 0; s < used.size(); ++s) m_used[s] += used[s];
    } catch (...) {
      const std::lock_guard lock(mutex);
      fault = std::current_exception();
    }
  }
  if (fault) std::rethrow_exception(fault);
}

bool ZuResampler::Write(ZuImageWriter* pWriter, const char* szTitle) {
  ZuProgress progress(szTitle);
  ZuImage rows = MakeRows(kBandRows);
  for (int iFirst = 0; iFirst < m_iHeight; iFirst += kBandRows) {
    if (!progress.SetPosition(iFirst, m_iHeight)) return false;
    Resample(iFirst, &rows);
    if (!pWriter->Write(rows, std::min(kBandRows, m_iHeight - iFirst))) return false;
  }
  return true;
}
