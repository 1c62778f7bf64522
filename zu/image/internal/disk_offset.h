// How far the centre of the ellipse that a disk is seen as lies from the image of the disk's
// centre.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

// The disks lie in the surface of the points: each in the plane that fits it and its neighbours.
class ZuDiskOffset {
 public:
  // X of the camera = R P + t, x right, y down, z forward; the camera constant in pixels.
  ZuDiskOffset(const cv::Matx33d& rotation, const cv::Vec3d& shift, double dConstant,
               const std::vector<cv::Point3d>& points)
      : m_rotation(rotation), m_shift(shift), m_dConstant(dConstant), m_points(points) {}

  // Centre of the ellipse less image of the centre of the disk at a point [pixel]. A diameter of 0:
  // the one that the longer semi-axis [pixel] tells. (0, 0) where the neighbours make no plane.
  cv::Point2d Of(std::size_t uPoint, double dDiameter, double dAxis) const;

 private:
  bool NormalAt(std::size_t uPoint, cv::Vec3d* pNormal) const;

  cv::Matx33d m_rotation;
  cv::Vec3d m_shift;
  double m_dConstant;
  const std::vector<cv::Point3d>& m_points;
};
