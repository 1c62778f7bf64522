#include "zu/adjust/cloud_moments.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/exact_sum.h"

namespace {

using zu::internal::ExactSum;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kFlatSpread = 1e-12;  // of the second spread over the largest, squared [-]
constexpr double kRoundSpread = 1e-9;  // by which the second square must be above the least [-]
constexpr size_t kMomentWords = 1 + 6 + 9 * ExactSum::kWords;
constexpr size_t kDistanceWords = 11;

// The places of the products in the matrix of second moments.
constexpr int kPair[6][2] = {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2}, {2, 2}};

std::string ToBytes(const std::vector<std::uint64_t>& words) {
  std::string bytes;
  bytes.reserve(8 * words.size());
  for (const std::uint64_t u : words) {
    for (int i = 0; i < 64; i += 8) bytes += static_cast<char>(u >> i & 0xff);
  }
  return bytes;
}

std::vector<std::uint64_t> ToWords(std::string_view bytes) {
  std::vector<std::uint64_t> words(bytes.size() / 8);
  for (size_t u = 0; u < 8 * words.size(); ++u) {
    words[u / 8] |= std::uint64_t{static_cast<unsigned char>(bytes[u])} << 8 * (u % 8);
  }
  return words;
}

// Of the plane n . (p - c) = 0: that of A, B, C and D, from the second moments about the centre.
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

// The normal is the axis of the least spread, its largest component above 0.
void StorePlane(const double* pdVectors, ZuCloudPlane* p) {
  double adNormal[3] = {pdVectors[0], pdVectors[3], pdVectors[6]};
  const auto smaller = [](double a, double b) { return std::fabs(a) < std::fabs(b); };
  if (*std::max_element(adNormal, adNormal + 3, smaller) < 0.0) {
    for (double& d : adNormal) d = -d;
  }
  p->plane.A() = adNormal[0];
  p->plane.B() = adNormal[1];
  p->plane.C() = adNormal[2];
  const double* const c = p->adCentre;
  p->plane.D() = -(adNormal[0] * c[0] + adNormal[1] * c[1] + adNormal[2] * c[2]);
}

// The sum of the squared distances. Far less than the moments it is the difference of: a cloud of a
// kilometre has it to the micrometre only because nothing is rounded on the way.
double SquaresAlong(const ZuPlane& plane, const std::array<ExactSum, 6>& moments) {
  const double N[3] = {plane.A(), plane.B(), plane.C()};
  ExactSum squares;
  for (size_t k = 0; k < 6; ++k) {
    const int i = kPair[k][0], j = kPair[k][1];
    ExactSum row;
    row.AddScaled(moments[k], N[i]);
    squares.AddScaled(row, i == j ? N[j] : 2.0 * N[j]);
  }
  return std::max(squares.Value(), 0.0);
}

}  // namespace

// --- Moments -------------------------------------------------------------------------------------

struct ZuCloudMoments::Sums {
  size_t uCount = 0;
  std::array<double, 3> adLow = {kInfinity, kInfinity, kInfinity};
  std::array<double, 3> adHigh = {-kInfinity, -kInfinity, -kInfinity};
  std::array<ExactSum, 3> first;
  std::array<ExactSum, 6> second;  // of the products, as in kPair

  void Take(const double* pd) {
    ++uCount;
    if (std::isfinite(pd[0]) && std::isfinite(pd[1]) && std::isfinite(pd[2])) {
      for (size_t i = 0; i < 3; ++i) {
        adLow[i] = std::min(adLow[i], pd[i]);
        adHigh[i] = std::max(adHigh[i], pd[i]);
      }
    }
    for (size_t i = 0; i < 3; ++i) first[i].Add(pd[i]);
    for (size_t k = 0; k < 6; ++k) second[k].AddProduct(pd[kPair[k][0]], pd[kPair[k][1]]);
  }

  // The second moments about c, as in kPair.
  std::array<ExactSum, 6> About(const double* c) const {
    std::array<ExactSum, 6> moments = second;
    for (size_t k = 0; k < 6; ++k) {
      const int i = kPair[k][0], j = kPair[k][1];
      moments[k].AddScaled(first[static_cast<size_t>(i)], -c[j]);
      moments[k].AddScaled(first[static_cast<size_t>(j)], -c[i]);
      ExactSum shift;
      shift.AddProduct(c[i], c[j]);
      moments[k].AddScaled(shift, static_cast<double>(uCount));
    }
    return moments;
  }
};

ZuCloudMoments::ZuCloudMoments() : m_pSums(std::make_unique<Sums>()) {}
ZuCloudMoments::~ZuCloudMoments() = default;
ZuCloudMoments::ZuCloudMoments(const ZuCloudMoments& other)
    : m_pSums(std::make_unique<Sums>(*other.m_pSums)) {}
ZuCloudMoments& ZuCloudMoments::operator=(const ZuCloudMoments& other) {
  if (this != &other) m_pSums = std::make_unique<Sums>(*other.m_pSums);
  return *this;
}
ZuCloudMoments::ZuCloudMoments(ZuCloudMoments&& other) noexcept = default;
ZuCloudMoments& ZuCloudMoments::operator=(ZuCloudMoments&& other) noexcept = default;

void ZuCloudMoments::Add(const ZuScanPoint3d* pPoints, size_t uCount) {
  for (size_t u = 0; u < uCount; ++u) {
    const double ad[3] = {pPoints[u].x, pPoints[u].y, pPoints[u].z};
    m_pSums->Take(ad);
  }
}

void ZuCloudMoments::AddRows(const double* pdRows, size_t uCount) {
  for (size_t u = 0; u < uCount; ++u) m_pSums->Take(pdRows + 3 * u);
}

void ZuCloudMoments::Add(const ZuCloudMoments& other) {
  const Sums added = *other.m_pSums;  // may be the own ones
  m_pSums->uCount += added.uCount;
  for (size_t i = 0; i < 3; ++i) {
    m_pSums->adLow[i] = std::min(m_pSums->adLow[i], added.adLow[i]);
    m_pSums->adHigh[i] = std::max(m_pSums->adHigh[i], added.adHigh[i]);
    m_pSums->first[i].Add(added.first[i]);
  }
  for (size_t k = 0; k < 6; ++k) m_pSums->second[k].Add(added.second[k]);
}

size_t ZuCloudMoments::Count() const { return m_pSums->uCount; }

bool ZuCloudMoments::Box(double adLow[3], double adHigh[3]) const {
  if (!(m_pSums->adLow[0] <= m_pSums->adHigh[0])) return false;
  std::copy_n(m_pSums->adLow.data(), 3, adLow);
  std::copy_n(m_pSums->adHigh.data(), 3, adHigh);
  return true;
}

bool ZuCloudMoments::Centre(double adCentre[3]) const {
  if (m_pSums->uCount == 0) return false;
  for (size_t i = 0; i < 3; ++i) {
    adCentre[i] = m_pSums->first[i].Value() / static_cast<double>(m_pSums->uCount);
  }
  return true;
}

ZuCloudPlane ZuCloudMoments::Plane() const {
  ZuCloudPlane result;
  result.uPoints = m_pSums->uCount;
  if (result.uPoints < 3) return result;
  Centre(result.adCentre);
  double adMatrix[9] = {}, adValues[3] = {}, adVectors[9] = {};
  const std::array<ExactSum, 6> moments = m_pSums->About(result.adCentre);
  for (size_t k = 0; k < 6; ++k) {
    const double d = moments[k].Value();
    if (!std::isfinite(d)) {
      result.eStatus = ZuAdjustStatus::NotFinite;
      return result;
    }
    adMatrix[3 * kPair[k][0] + kPair[k][1]] = adMatrix[3 * kPair[k][1] + kPair[k][0]] = d;
  }
  zu::internal::SymmetricEigen(3, adMatrix, adValues, adVectors);
  if (!(adValues[1] > kFlatSpread * adValues[2]) ||
      !(adValues[1] - adValues[0] > kRoundSpread * adValues[2])) {
    result.eStatus = ZuAdjustStatus::RankDefect;
    return result;
  }
  StorePlane(adVectors, &result);
  const double dSquares = SquaresAlong(result.plane, moments);
  const auto n = static_cast<double>(result.uPoints);
  result.dRms = std::sqrt(dSquares / n);
  result.dSigma0 = result.uPoints > 3 ? std::sqrt(dSquares / (n - 3.0)) : 0.0;
  result.adSpread[0] = result.dRms;
  for (int i = 1; i < 3; ++i) result.adSpread[i] = std::sqrt(adValues[i] / n);
  StoreCovariance(adValues, adVectors, &result);
  result.eStatus = ZuAdjustStatus::Good;
  return result;
}

std::string ZuCloudMoments::Save() const {
  std::vector<std::uint64_t> words = {m_pSums->uCount};
  for (const double d : m_pSums->adLow) words.push_back(std::bit_cast<std::uint64_t>(d));
  for (const double d : m_pSums->adHigh) words.push_back(std::bit_cast<std::uint64_t>(d));
  const auto append = [&words](const ExactSum& sum) {
    words.resize(words.size() + ExactSum::kWords);
    sum.Save(&words[words.size() - ExactSum::kWords]);
  };
  for (const ExactSum& sum : m_pSums->first) append(sum);
  for (const ExactSum& sum : m_pSums->second) append(sum);
  return ToBytes(words);
}

bool ZuCloudMoments::Load(std::string_view bytes) {
  if (bytes.size() != 8 * kMomentWords) return false;
  const std::vector<std::uint64_t> words = ToWords(bytes);
  Sums sums;
  sums.uCount = words[0];
  for (size_t i = 0; i < 3; ++i) {
    sums.adLow[i] = std::bit_cast<double>(words[1 + i]);
    sums.adHigh[i] = std::bit_cast<double>(words[4 + i]);
  }
  size_t u = 7;
  const auto take = [&words, &u](ExactSum* pSum) {
    u += ExactSum::kWords;
    return pSum->Load(&words[u - ExactSum::kWords]);
  };
  for (ExactSum& sum : sums.first) {
    if (!take(&sum)) return false;
  }
  for (ExactSum& sum : sums.second) {
    if (!take(&sum)) return false;
  }
  *m_pSums = sums;
  return true;
}

// --- Distances -----------------------------------------------------------------------------------

ZuCloudDistances::ZuCloudDistances(const ZuCloudPlane& plane)
    : m_adNormal{plane.plane.A(), plane.plane.B(), plane.plane.C()},
      m_adCentre{plane.adCentre[0], plane.adCentre[1], plane.adCentre[2]},
      m_dLow(kInfinity),
      m_dHigh(-kInfinity) {}

void ZuCloudDistances::Take(double x, double y, double z) {
  const double d = m_adNormal[0] * (x - m_adCentre[0]) + m_adNormal[1] * (y - m_adCentre[1]) +
                   m_adNormal[2] * (z - m_adCentre[2]);
  m_dLow = std::min(m_dLow, d);
  m_dHigh = std::max(m_dHigh, d);
  if (std::fabs(d) > std::fabs(m_dFarthest)) {
    m_dFarthest = d;
    m_uFarthest = m_uCount;
  }
  ++m_uCount;
}

void ZuCloudDistances::Add(const ZuScanPoint3d* pPoints, size_t uCount) {
  for (size_t u = 0; u < uCount; ++u) Take(pPoints[u].x, pPoints[u].y, pPoints[u].z);
}

void ZuCloudDistances::AddRows(const double* pdRows, size_t uCount) {
  for (size_t u = 0; u < 3 * uCount; u += 3) Take(pdRows[u], pdRows[u + 1], pdRows[u + 2]);
}

void ZuCloudDistances::Add(const ZuCloudDistances& other) {
  m_dLow = std::min(m_dLow, other.m_dLow);
  m_dHigh = std::max(m_dHigh, other.m_dHigh);
  if (std::fabs(other.m_dFarthest) > std::fabs(m_dFarthest)) {
    m_dFarthest = other.m_dFarthest;
    m_uFarthest = m_uCount + other.m_uFarthest;
  }
  m_uCount += other.m_uCount;
}

void ZuCloudDistances::Store(ZuCloudPlane* pPlane) const {
  pPlane->dLow = m_uCount == 0 ? 0.0 : m_dLow;
  pPlane->dHigh = m_uCount == 0 ? 0.0 : m_dHigh;
  pPlane->uFarthest = m_uFarthest;
  pPlane->dFarthest = m_dFarthest;
}

std::string ZuCloudDistances::Save() const {
  std::vector<std::uint64_t> words = {m_uCount, m_uFarthest};
  for (const double d : {m_adNormal[0], m_adNormal[1], m_adNormal[2], m_adCentre[0], m_adCentre[1],
                         m_adCentre[2], m_dLow, m_dHigh, m_dFarthest}) {
    words.push_back(std::bit_cast<std::uint64_t>(d));
  }
  return ToBytes(words);
}

bool ZuCloudDistances::Load(std::string_view bytes) {
  if (bytes.size() != 8 * kDistanceWords) return false;
  const std::vector<std::uint64_t> words = ToWords(bytes);
  m_uCount = words[0];
  m_uFarthest = words[1];
  double* const apd[] = {&m_adNormal[0], &m_adNormal[1], &m_adNormal[2],
                         &m_adCentre[0], &m_adCentre[1], &m_adCentre[2],
                         &m_dLow,        &m_dHigh,       &m_dFarthest};
  for (size_t u = 0; u < 9; ++u) *apd[u] = std::bit_cast<double>(words[2 + u]);
  return true;
}
