#include "zu/adjust/cloud_plane.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "zu/adjust/internal/dense_cholesky.h"

namespace {

constexpr size_t kBlock = 4096;        // points of a partial sum: digits of long sums
constexpr double kFlatSpread = 1e-12;  // of the second spread over the largest, squared [-]
constexpr double kRoundSpread = 1e-9;  // by which the second square must be above the least [-]

using Sums = std::array<double, 6>;

// The sum of fill(point) over all points, gathered in blocks.
template <class Fill>
Sums SumOver(const std::vector<const std::vector<ZuScanPoint3d>*>& clouds, const Fill& fill) {
  Sums total = {};
  for (const std::vector<ZuScanPoint3d>* pCloud : clouds) {
    for (size_t uFirst = 0; uFirst < pCloud->size(); uFirst += kBlock) {
      Sums block = {};
      const size_t uEnd = std::min(pCloud->size(), uFirst + kBlock);
      for (size_t u = uFirst; u < uEnd; ++u) fill((*pCloud)[u], &block);
      for (size_t k = 0; k < total.size(); ++k) total[k] += block[k];
    }
  }
  return total;
}

void StoreCovariance(const double* pdValues, const double* pdVectors, ZuCloudPlane* p) {
  const double dVariance = p->dSigma0 * p->dSigma0;
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) {
      for (int a = 1; a < 3; ++a) {
        p->adCov[4 * i + k] +=
            dVariance * pdVectors[3 * i + a] * pdVectors[3 * k + a] / pdValues[a];
      }
    }
  }
  // D = -n . centre, and the centre along the normal.
  double dLast = dVariance / static_cast<double>(p->uPoints);
  for (int i = 0; i < 3; ++i) {
    double d = 0.0;
    for (int k = 0; k < 3; ++k) d -= p->adCov[4 * i + k] * p->adCentre[k];
    p->adCov[4 * i + 3] = p->adCov[12 + i] = d;
    dLast -= d * p->adCentre[i];
  }
  p->adCov[15] = dLast;
}

}  // namespace

ZuCloudPlane ZuFitCloudPlane(const std::vector<const std::vector<ZuScanPoint3d>*>& clouds) {
  ZuCloudPlane result;
  const ZuScanPoint3d* pFirst = nullptr;
  for (const std::vector<ZuScanPoint3d>* pCloud : clouds) {
    if (pFirst == nullptr && !pCloud->empty()) pFirst = pCloud->data();
    result.uPoints += pCloud->size();
  }
  if (result.uPoints < 3) return result;
  const double n = static_cast<double>(result.uPoints);
  const Sums mean = SumOver(clouds, [&](const ZuScanPoint3d& p, Sums* s) {
    (*s)[0] += p.x - pFirst->x;
    (*s)[1] += p.y - pFirst->y;
    (*s)[2] += p.z - pFirst->z;
  });
  double* const c = result.adCentre;
  c[0] = pFirst->x + mean[0] / n;
  c[1] = pFirst->y + mean[1] / n;
  c[2] = pFirst->z + mean[2] / n;
  const Sums m = SumOver(clouds, [&](const ZuScanPoint3d& p, Sums* s) {
    const double x = p.x - c[0], y = p.y - c[1], z = p.z - c[2];
    (*s)[0] += x * x;
    (*s)[1] += x * y;
    (*s)[2] += x * z;
    (*s)[3] += y * y;
    (*s)[4] += y * z;
    (*s)[5] += z * z;
  });
  double adMatrix[9] = {m[0], m[1], m[2], m[1], m[3], m[4], m[2], m[4], m[5]};
  double adValues[3] = {}, adVectors[9] = {};
  for (const double d : adMatrix) {
    if (!std::isfinite(d)) {
      result.eStatus = ZuAdjustStatus::NotFinite;
      return result;
    }
  }
  zu::internal::SymmetricEigen(3, adMatrix, adValues, adVectors);
  if (!(adValues[1] > kFlatSpread * adValues[2]) ||
      !(adValues[1] - adValues[0] > kRoundSpread * adValues[2])) {
    result.eStatus = ZuAdjustStatus::RankDefect;
    return result;
  }
  double N[3] = {adVectors[0], adVectors[3], adVectors[6]};
  const auto larger = [](double a, double b) { return std::fabs(a) < std::fabs(b); };
  if (*std::max_element(N, N + 3, larger) < 0.0) {
    for (double& d : N) d = -d;
  }
  result.plane.A() = N[0];
  result.plane.B() = N[1];
  result.plane.C() = N[2];
  result.plane.D() = -(N[0] * c[0] + N[1] * c[1] + N[2] * c[2]);
  result.dLow = std::numeric_limits<double>::infinity();
  result.dHigh = -result.dLow;
  size_t uPoint = 0;
  const Sums squares = SumOver(clouds, [&](const ZuScanPoint3d& p, Sums* s) {
    const double d = N[0] * (p.x - c[0]) + N[1] * (p.y - c[1]) + N[2] * (p.z - c[2]);
    (*s)[0] += d * d;
    result.dLow = std::min(result.dLow, d);
    result.dHigh = std::max(result.dHigh, d);
    if (std::fabs(d) > std::fabs(result.dFarthest)) {
      result.dFarthest = d;
      result.uFarthest = uPoint;
    }
    ++uPoint;
  });
  result.dRms = std::sqrt(squares[0] / n);
  result.dSigma0 = result.uPoints > 3 ? std::sqrt(squares[0] / (n - 3.0)) : 0.0;
  for (int i = 0; i < 3; ++i) result.adSpread[i] = std::sqrt(std::max(adValues[i], 0.0) / n);
  StoreCovariance(adValues, adVectors, &result);
  result.eStatus = ZuAdjustStatus::Good;
  return result;
}
