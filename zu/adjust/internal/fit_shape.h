// Plane, line, sphere and cylinder as an adjustment sees them: one or two conditions between the
// coordinates of a point and a few parameters, which are small changes of the present shape:
//
//   plane     normal tilted by (a, b) along (e1, e2); height h along the normal       1 condition
//   line      direction tilted by (a, b); shift (p, q) along (e1, e2)                 2 conditions
//   sphere    centre moved by (x, y, z); radius R                                     1 condition
//   cylinder  axis tilted by (a, b), shifted by (p, q); radius R                      1 condition
//
// A condition is the signed distance of the point from the surface, of the line the two components
// of the distance. Coordinates are those of the fit: reduced to a centre, the extent about 1.
#pragma once

#include <Eigen/Core>
#include <span>

namespace zu::internal {

using Vector3 = Eigen::Vector3d;

enum class FitKind { kPlane, kLine, kSphere, kCylinder };

class FitShape {
 public:
  static constexpr int kMostParameters = 5;
  using Parameters = Eigen::Matrix<double, Eigen::Dynamic, 1, 0, kMostParameters, 1>;

  explicit FitShape(FitKind kind) : m_kind(kind) {}

  FitKind Kind() const { return m_kind; }
  int ParameterCount() const;
  int ConditionCount() const { return m_kind == FitKind::kLine ? 2 : 1; }
  int SampleSize() const;  // points that determine it; of a cylinder with its direction: 3

  // The shape through SampleSize() points; a cylinder along dAxis. False where they do not span
  // one.
  bool FromSample(std::span<const Vector3> points, const Vector3& axis);
  // The best shape of the points in the sense of equal weights, as a start: closed for plane and
  // line (singular value decomposition), algebraic for the sphere and, along `axis`, the cylinder.
  // False where they do not span one.
  bool FromPoints(std::span<const Vector3> points, const Vector3& axis);

  // The distance from the shape, without sign for the line.
  double Distance(const Vector3& x) const;

  // One point: conditions w, their derivatives B by its coordinates and A by the parameters. False
  // on the axis or in the centre, where there are none.
  struct Row {
    Eigen::Vector2d w = Eigen::Vector2d::Zero();
    Eigen::Matrix<double, 2, 3> B = Eigen::Matrix<double, 2, 3>::Zero();
    Eigen::Matrix<double, 2, kMostParameters> A = Eigen::Matrix<double, 2, kMostParameters>::Zero();
  };
  bool Linearize(const Vector3& x, Row* pRow) const;
  // Takes the small changes into the shape; the direction stays of unit length, e1 and e2 normal.
  void Update(const Parameters& dx);

  // Foot point of the origin on plane, line and axis; centre of the sphere.
  Vector3 Point() const;
  const Vector3& Direction() const { return m_n; }
  const Vector3& E1() const { return m_e1; }
  const Vector3& E2() const { return m_e2; }
  double Radius() const { return m_dRadius; }
  double Height() const { return m_dHeight; }  // of the plane: n . x = height
  void SetDirection(const Vector3& n);         // and e1, e2 normal to it
  void Flip();                                 // reverses the direction; the points stay

 private:
  void Tilt(double a, double b);

  FitKind m_kind;
  Vector3 m_n = Vector3::UnitZ(), m_e1 = Vector3::UnitX(), m_e2 = Vector3::UnitY();
  Vector3 m_point = Vector3::Zero();  // of line, axis, sphere
  double m_dHeight = 0.0, m_dRadius = 0.0;
};

}  // namespace zu::internal
