#include "zu/image/internal/disk_offset.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kNeighbours = 8;
// Of the neighbours' spread across their plane over that along it: more is no plane [-].
constexpr double kFlat = 0.2;

}  // namespace

bool ZuDiskOffset::NormalAt(std::size_t uPoint, cv::Vec3d* pNormal) const {
  std::vector<cv::Vec3d> ways;
  for (const cv::Point3d& point : m_points) {
    const cv::Point3d way = point - m_points[uPoint];
    ways.emplace_back(way.x, way.y, way.z);
  }
  const std::size_t nUsed = std::min(ways.size(), kNeighbours + 1);
  if (nUsed < 3) return false;
  std::partial_sort(ways.begin(), ways.begin() + static_cast<std::ptrdiff_t>(nUsed), ways.end(),
                    [](const cv::Vec3d& a, const cv::Vec3d& b) { return a.dot(a) < b.dot(b); });
  cv::Vec3d mean;
  for (std::size_t i = 0; i < nUsed; ++i) mean += ways[i] / static_cast<double>(nUsed);
  cv::Matx33d spread = cv::Matx33d::zeros();
  for (std::size_t i = 0; i < nUsed; ++i) spread += (ways[i] - mean) * (ways[i] - mean).t();
  cv::Matx31d values;
  cv::Matx33d vectors;
  cv::eigen(spread, values, vectors);  // descending
  if (!(std::fabs(values(2)) < kFlat * kFlat * values(1))) return false;
  *pNormal = {vectors(2, 0), vectors(2, 1), vectors(2, 2)};
  return true;
}

// The plane of the disk is carried to the picture by H = (c u, c v, c p) with p the centre and u, v
// axes of the plane, in the system of the camera. The dual conic of the circle of radius r is
// diag(1, 1, -1 / r^2); that of the ellipse is H diag(...) H^T, and its last column is the centre.
cv::Point2d ZuDiskOffset::Of(std::size_t uPoint, double dDiameter, double dAxis) const {
  cv::Vec3d normal;
  if (!NormalAt(uPoint, &normal)) return {0.0, 0.0};
  normal = m_rotation * normal;
  const cv::Point3d& point = m_points[uPoint];
  const cv::Vec3d p = m_rotation * cv::Vec3d(point.x, point.y, point.z) + m_shift;
  const int iLeast = std::fabs(normal[0]) < std::fabs(normal[1]) ? 0 : 1;
  cv::Vec3d other;
  other[iLeast] = 1.0;
  const cv::Vec3d u = cv::normalize(normal.cross(other)), v = normal.cross(u);
  // The longer axis is seen without foreshortening.
  const double dRadius = dDiameter > 0.0 ? dDiameter / 2 : dAxis * p[2] / m_dConstant;
  const double q = 1.0 / (dRadius * dRadius);
  const auto dual = [&](int i) { return u[i] * u[2] + v[i] * v[2] - q * p[i] * p[2]; };
  const double dW = dual(2);
  if (!(dW < 0.0)) return {0.0, 0.0};  // the disk reaches behind the camera
  return {m_dConstant * (dual(0) / dW - p[0] / p[2]), m_dConstant * (dual(1) / dW - p[1] / p[2])};
}
